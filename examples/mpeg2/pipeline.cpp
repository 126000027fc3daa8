#include "pipeline.h"

#include <algorithm>
#include <cstring>

namespace mpeg2 {

namespace {

inline int transpose(int p) { return (p & 7) * 8 + (p >> 3); }

// Where block b (0-3 luma, 4 Cb, 5 Cr) of the macroblock lies, and its line step.
struct BlockPlace {
    Zan8u* p;
    int step;
};
inline BlockPlace place(Frame& f, int b, int mbx, int mby, bool fieldDct) {
    if (b < 4) {
        const int s = f.lumaStride;
        const int x = mbx * 16 + (b & 1) * 8;
        if (fieldDct) return {f.y.data() + (mby * 16 + (b >> 1)) * s + x, 2 * s};
        return {f.y.data() + (mby * 16 + (b >> 1) * 8) * s + x, s};
    }
    const int s = f.chromaStride;
    return {f.plane(b - 3) + mby * 8 * s + mbx * 8, s};
}

inline int component(int b) { return b < 4 ? 0 : b - 3; }

}  // namespace

void Frame::allocate(int w, int h, int mbRows) {
    width = w;
    height = h;
    mbWidth = (w + 15) / 16;
    mbHeight = mbRows;
    lumaStride = mbWidth * 16;
    chromaStride = mbWidth * 8;
    y.assign(static_cast<size_t>(lumaStride) * mbHeight * 16, 0);
    u.assign(static_cast<size_t>(chromaStride) * mbHeight * 8, 128);
    v.assign(static_cast<size_t>(chromaStride) * mbHeight * 8, 128);
}

bool Frame::write(std::FILE* f) const {
    const int cw = (width + 1) / 2, ch = (height + 1) / 2;
    for (int r = 0; r < height; ++r)
        if (std::fwrite(y.data() + static_cast<size_t>(r) * lumaStride, 1, static_cast<size_t>(width), f) !=
            static_cast<size_t>(width))
            return false;
    for (const auto* pl : {&u, &v})
        for (int r = 0; r < ch; ++r)
            if (std::fwrite(pl->data() + static_cast<size_t>(r) * chromaStride, 1, static_cast<size_t>(cw), f) !=
                static_cast<size_t>(cw))
                return false;
    return true;
}

bool Frame::read(std::FILE* f) {
    const int cw = (width + 1) / 2, ch = (height + 1) / 2;
    auto readPlane = [f](Zan8u* base, int stride, int w, int h, int padW, int padH) {
        for (int r = 0; r < h; ++r) {
            Zan8u* row = base + static_cast<size_t>(r) * stride;
            if (std::fread(row, 1, static_cast<size_t>(w), f) != static_cast<size_t>(w)) return false;
            std::fill(row + w, row + padW, row[w - 1]);
        }
        for (int r = h; r < padH; ++r)
            std::memcpy(base + static_cast<size_t>(r) * stride, base + static_cast<size_t>(h - 1) * stride,
                        static_cast<size_t>(padW));
        return true;
    };
    return readPlane(y.data(), lumaStride, width, height, mbWidth * 16, mbHeight * 16) &&
           readPlane(u.data(), chromaStride, cw, ch, mbWidth * 8, mbHeight * 8) &&
           readPlane(v.data(), chromaStride, cw, ch, mbWidth * 8, mbHeight * 8);
}

void BlockContext::set(const uint8_t* weightsRaster, int alternateScan, int intraVlc, int dcPrecision) {
    const uint8_t* scan = alternateScan ? kAlternate : kZigzag;
    for (int i = 0; i < 64; ++i) {
        scanT[i] = transpose(scan[i]);
        weightsT[transpose(i)] = static_cast<Zan16s>(weightsRaster[i]);
    }
    for (int i = 0; i < 64; ++i) invWeightsT[i] = 1.0f / static_cast<float>(weightsT[i]);
    lastInCorner = 0;
    while (lastInCorner + 1 < 64 && (scan[lastInCorner + 1] & 7) < 4 && (scan[lastInCorner + 1] >> 3) < 4)
        ++lastInCorner;
    acTable = intraVlc ? 1 : 0;
    dcShift = 3 - dcPrecision;
    dcReset = 1 << (7 + dcPrecision);
}

bool decode_macroblock(BitReader& r, const CodeTables& t, const BlockContext& c, int quantiserScale, bool fieldDct,
                       Zan16s pred[3], Frame& f, int mbx, int mby) {
    alignas(16) Zan16s blk[64];
    for (int b = 0; b < 6; ++b) {
        const int cc = component(b);
        Zan32s offset = 0, last = 0;
        Zan32u* cur = r.cursor(&offset);
        if (zaniReconstructDCTBlockIntra_MPEG2_32s(&cur, &offset, t.dcSize[cc ? 1 : 0], t.ac[c.acTable], c.scanT,
                                                   quantiserScale, c.weightsT, &pred[cc], c.dcShift, blk,
                                                   &last) != zanStsOk)
            return false;
        r.set_cursor(cur, offset);
        if (r.overrun()) return false;
        const BlockPlace at = place(f, b, mbx, mby, fieldDct && b < 4);
        zaniDCT8x8Inv_AANTransposed_16s8u_C1R(blk, at.p, at.step, c.idct_count(last));
    }
    return true;
}

bool read_macroblock_levels(BitReader& r, const CodeTables& t, const BlockContext& c, Zan16s pred[3],
                            MacroblockLevels& m) {
    // With quantiser scale 2, flat weights 16 and a DC shift of 1 the
    // reconstruction yields twice each level; mismatch control then always
    // adds 1 to entry 63 (the sum being even), which the halving drops.
    alignas(16) static const Zan16s flat[64] = {16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16,
                                                16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16,
                                                16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16,
                                                16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16};
    for (int b = 0; b < 6; ++b) {
        const int cc = component(b);
        Zan32s offset = 0, last = 0;
        Zan32u* cur = r.cursor(&offset);
        Zan16s* blk = m.block[b];
        if (zaniReconstructDCTBlockIntra_MPEG2_32s(&cur, &offset, t.dcSize[cc ? 1 : 0], t.ac[c.acTable], c.scanT, 2,
                                                   flat, &pred[cc], 1, blk, &last) != zanStsOk)
            return false;
        r.set_cursor(cur, offset);
        if (r.overrun()) return false;
        Zan32s count = 0;
        for (int i = 0; i < 64; ++i) {
            blk[i] = static_cast<Zan16s>(blk[i] >> 1);
            count += i > 0 && blk[i] != 0;
        }
        m.count[b] = count;
    }
    return true;
}

bool write_macroblock_levels(BitWriter& w, const CodeTables& t, const BlockContext& c, const MacroblockLevels& m,
                             Zan32s pred[3]) {
    for (int b = 0; b < 6; ++b) {
        const int cc = component(b);
        Zan32s freeBits = 0;
        Zan32u* cur = w.cursor(&freeBits);
        if (zaniPutIntraBlock(&cur, &freeBits, m.block[b], &pred[cc], t.dcPut[cc ? 1 : 0], t.acPut[c.acTable],
                              c.scanT, t.eobLen[c.acTable], t.eobCode[c.acTable], m.count[b]) != zanStsOk)
            return false;
        w.set_cursor(cur, freeBits);
    }
    return true;
}

bool encode_macroblock(const Frame& src, int mbx, int mby, const BlockContext& c, int quantiserScale,
                       MacroblockLevels& m, Frame& recon) {
    const int dcMax = (1 << (11 - c.dcShift)) - 1;
    for (int pair = 0; pair < 3; ++pair) {
        // Two blocks interleaved sample by sample, each transposed, so the
        // forward DCT yields transposed coefficients.
        alignas(16) Zan8u in[8 * 16];
        for (int k = 0; k < 2; ++k) {
            const int b = 2 * pair + k, step = src.stride(component(b));
            const Zan8u* p = b < 4 ? src.y.data() + (mby * 16 + (b >> 1) * 8) * step + mbx * 16 + (b & 1) * 8
                                   : (b == 4 ? src.u : src.v).data() + mby * 8 * step + mbx * 8;
            for (int yy = 0; yy < 8; ++yy)
                for (int xx = 0; xx < 8; ++xx) in[16 * xx + 2 * yy + k] = p[yy * step + xx];
        }
        if (zaniDCT8x8Fwd_8u16s_C2P2(in, 16, m.block[2 * pair], m.block[2 * pair + 1]) != zanStsOk) return false;
    }
    for (int b = 0; b < 6; ++b) {
        Zan16s* blk = m.block[b];
        const int half = c.dcShift ? 1 << (c.dcShift - 1) : 0;
        const int dc = std::min(dcMax, std::max(0, (blk[0] + half) >> c.dcShift));
        if (zaniQuantIntra_MPEG2_16s_C1I(blk, quantiserScale, c.invWeightsT, &m.count[b]) != zanStsOk) return false;
        blk[0] = static_cast<Zan16s>(dc);
        // The decoder's view of the block.
        alignas(16) Zan16s rec[64];
        std::memcpy(rec, blk, sizeof rec);
        rec[0] = static_cast<Zan16s>(dc << c.dcShift);
        if (zaniQuantInvIntra_MPEG2_16s_C1I(rec, quantiserScale, c.weightsT) != zanStsOk) return false;
        Zan32s last = 0;
        for (int i = 63; i > 0; --i)
            if (blk[c.scanT[i]] != 0) {
                last = i;
                break;
            }
        const BlockPlace at = place(recon, b, mbx, mby, false);
        zaniDCT8x8Inv_AANTransposed_16s8u_C1R(rec, at.p, at.step, c.idct_count(last));
    }
    return true;
}

}  // namespace mpeg2
