// zanvc-dvdec: a DV decoder (25 Mb/s 4:1:1 and 4:2:0, 50 Mb/s 4:2:2) written
// against the public zanvc interface only.
//
//   zanvc-dvdec IN.dv OUT.yuv [--reduce 2|4|8]
//
// Reads raw DIF frames, finds each video segment (five DIF blocks), decodes
// it with the library, dequantises and weights every block, runs the 8x8 or
// 2-4-8 inverse transform by the block's DCT mode, and writes packed 4:2:2
// (Y Cb Y Cr, "yuyv422") frames, or frames reduced by 2, 4 or 8.
// DV100 is not handled: the program says so and stops.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "zanvc.h"

namespace {

// Quantisation step exponents by (QNO + class offset) and area, and the
// class offsets, from the quantisation table of the DV format.
const int kShift[22][4] = {{3, 3, 4, 4}, {3, 3, 4, 4}, {2, 3, 3, 4}, {2, 3, 3, 4}, {2, 2, 3, 3}, {2, 2, 3, 3},
                           {1, 2, 2, 3}, {1, 2, 2, 3}, {1, 1, 2, 2}, {1, 1, 2, 2}, {0, 1, 1, 2}, {0, 1, 1, 2},
                           {0, 0, 1, 1}, {0, 0, 1, 1}, {0, 0, 0, 1}, {0, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 0},
                           {0, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}};
const int kClassOffset[4] = {6, 3, 0, 1};

const int kZigzag[64] = {0,  1,  8,  16, 9,  2,  3,  10, 17, 24, 32, 25, 18, 11, 4,  5,  12, 19, 26, 33, 40, 48,
                         41, 34, 27, 20, 13, 6,  7,  14, 21, 28, 35, 42, 49, 56, 57, 50, 43, 36, 29, 22, 15, 23,
                         30, 37, 44, 51, 58, 59, 52, 45, 38, 31, 39, 46, 53, 60, 61, 54, 47, 55, 62, 63};
const int kScan248[64] = {0,  32, 1,  33, 8,  40, 2,  34, 9,  41, 16, 48, 24, 56, 17, 49, 10, 42, 3,  35, 4,  36,
                          11, 43, 18, 50, 25, 57, 26, 58, 19, 51, 12, 44, 5,  37, 6,  38, 13, 45, 20, 52, 27, 59,
                          28, 60, 21, 53, 14, 46, 7,  39, 15, 47, 22, 54, 29, 61, 30, 62, 23, 55, 31, 63};

// Weighting of the DV format: w(0) = 1, w(1) = CS4 / (4 CS7 CS2),
// w(2) = CS4 / (2 CS6), w(3) = 1 / (2 CS5), w(4) = 7 / 8, w(5) = CS4 / CS3,
// w(6) = CS4 / CS2, w(7) = CS4 / CS1, CSk = cos(k pi / 16).
double w(int k) {
    auto cs = [](int i) { return std::cos(i * M_PI / 16.0); };
    switch (k) {
        case 0: return 1.0;
        case 1: return cs(4) / (4 * cs(7) * cs(2));
        case 2: return cs(4) / (2 * cs(6));
        case 3: return 1.0 / (2 * cs(5));
        case 4: return 7.0 / 8.0;
        case 5: return cs(4) / cs(3);
        case 6: return cs(4) / cs(2);
        default: return cs(4) / cs(1);
    }
}

// Dequantisation tables per (DCT mode, class, QNO): the library computes
// ((x >> 3) * a) * b >> 16, x being the DC times 128 or the level times 64.
struct Dequant {
    Zan16s a[2][4][16][64];
    Zan16s b[2][4][16][64];
    Dequant() {
        for (int mode = 0; mode < 2; ++mode)
            for (int cls = 0; cls < 4; ++cls)
                for (int q = 0; q < 16; ++q)
                    for (int k = 0; k < 64; ++k) {
                        const int r = mode ? kScan248[k] : kZigzag[k];
                        const int area = k < 6 ? 0 : k < 21 ? 1 : k < 43 ? 2 : 3;
                        const int h = r & 7, v = r >> 3;
                        double weight;
                        if (mode == 0) {
                            weight = w(h) * w(v) / 2;
                        } else {
                            // Rows 0-3: sum field, rows 4-7: difference field;
                            // both take w(h) w(2v) / 2 for their vertical frequency v.
                            weight = w(h) * w(2 * (v & 3)) / 2;
                        }
                        if (k == 0) {
                            // DC: the 9-bit DC is the coefficient / 4.
                            a[mode][cls][q][r] = 1;
                            b[mode][cls][q][r] = 16384;
                        } else {
                            a[mode][cls][q][r] = Zan16s(1 << (kShift[q + kClassOffset[cls]][area] + (cls == 3)));
                            b[mode][cls][q][r] = Zan16s(std::lround(8192.0 / weight));
                        }
                    }
    }
};

struct Format {
    int width, height;
    int seqs;      // DIF sequences per channel
    int channels;  // 1 (25 Mb/s) or 2 (50 Mb/s)
    int sampling;  // 411, 420 or 422
};

bool find_format(const std::vector<Zan8u>& data, Format& f) {
    if (data.size() < 6 * 80) return false;
    const bool pal = (data[3] & 0x80) != 0;
    int stype = -1;
    // The source pack (0x60) in the VAUX DIF blocks 3..5 of the first sequence.
    for (int blk = 3; blk < 6 && stype < 0; ++blk)
        for (int p = 0; p < 15; ++p) {
            const Zan8u* pack = data.data() + 80 * blk + 3 + 5 * p;
            if (pack[0] == 0x60) {
                stype = pack[3] & 0x1F;
                break;
            }
        }
    f.seqs = pal ? 12 : 10;
    f.width = 720;
    f.height = pal ? 576 : 480;
    if (stype == 0 || stype < 0) {
        f.channels = 1;
        f.sampling = pal ? 420 : 411;
    } else if (stype == 4) {
        f.channels = 2;
        f.sampling = 422;
    } else {
        return false;
    }
    return true;
}

struct MbPos {
    int x, y;  // in pixels
    bool edge;
};

// Position of macroblock m (0..4) of segment `slot` of DIF sequence `seq` in
// channel `chan`: the five macroblocks come from superblock rows seq + 2,
// seq + 6, seq + 8, seq, seq + 4 (modulo the sequence count) and superblock
// columns 2, 1, 3, 0, 4; within a superblock the macroblocks run in a
// serpentine down and up its columns.
MbPos mb_position(const Format& f, int chan, int seq, int slot, int m) {
    static const int kRowOff[5] = {2, 6, 8, 0, 4};
    static const int kCol[5] = {2, 1, 3, 0, 4};
    const int row = (seq + kRowOff[m]) % f.seqs;
    if (f.sampling == 411) {
        // Superblocks of 4.5 macroblock columns (32 pixels) by 6 rows (8
        // lines); columns start at 0, 4, 9, 13, 18; those of columns 1 and 3
        // begin halfway down their first column.
        static const int kStart[5] = {0, 4, 9, 13, 18};
        const int col = kCol[m];
        const int k = slot + ((col == 1 || col == 3) ? 3 : 0);
        const int cx = kStart[col] + k / 6;
        int r = k % 6;
        if ((k / 6) & 1) r = 5 - r;
        if (cx > 21) return {704, (row * 6 + 2 * r) * 8, true};  // the 16x16 right-edge macroblocks
        return {cx * 32, (row * 6 + r) * 8, false};
    }
    // Superblocks of 9 macroblock columns (16 pixels) by 3 rows.
    int r = slot % 3;
    if ((slot / 3) & 1) r = 2 - r;
    const int x = (kCol[m] * 9 + slot / 3) * 16;
    if (f.sampling == 420) return {x, (row * 3 + r) * 16, false};
    return {x, ((row * 2 + chan) * 3 + r) * 8, false};  // 4:2:2: 16x8 macroblocks
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3 && !(argc == 5 && std::strcmp(argv[3], "--reduce") == 0)) {
        std::fprintf(stderr, "usage: %s IN.dv OUT.yuv [--reduce 2|4|8]\n", argv[0]);
        return 2;
    }
    const int reduce = argc == 5 ? std::atoi(argv[4]) : 1;
    if (reduce != 1 && reduce != 2 && reduce != 4 && reduce != 8) {
        std::fprintf(stderr, "--reduce takes 2, 4 or 8\n");
        return 2;
    }
    FILE* in = std::fopen(argv[1], "rb");
    if (!in) {
        std::perror(argv[1]);
        return 1;
    }
    std::vector<Zan8u> data;
    Zan8u chunk[65536];
    size_t got;
    while ((got = std::fread(chunk, 1, sizeof chunk, in)) > 0) data.insert(data.end(), chunk, chunk + got);
    std::fclose(in);
    Format f;
    if (!find_format(data, f)) {
        std::fprintf(stderr, "%s: not a DV 25 or 50 Mb/s stream (DV100 and other kinds are not handled)\n", argv[1]);
        return 1;
    }
    const size_t frameBytes = size_t(f.seqs) * f.channels * 150 * 80;
    const size_t frames = data.size() / frameBytes;
    if (frames == 0 || data.size() % frameBytes != 0) {
        std::fprintf(stderr, "%s: %zu bytes is not a whole number of %zu-byte DV frames\n", argv[1], data.size(),
                     frameBytes);
        return 1;
    }
    FILE* out = std::fopen(argv[2], "wb");
    if (!out) {
        std::perror(argv[2]);
        return 1;
    }
    static const Dequant dq;
    const int ow = f.width / reduce, oh = f.height / reduce;
    const Zan32s step = ow * 2;
    std::vector<Zan8u> pic(size_t(step) * oh);
    alignas(16) static Zan16s blocks[30 * 64];
    alignas(16) Zan16s t[64];
    Zan32u param[30];
    for (size_t fr = 0; fr < frames; ++fr) {
        const Zan8u* frame = data.data() + fr * frameBytes;
        for (int chan = 0; chan < f.channels; ++chan)
            for (int seq = 0; seq < f.seqs; ++seq) {
                const Zan8u* s0 = frame + size_t((chan * f.seqs + seq) * 150) * 80;
                for (int slot = 0; slot < 27; ++slot) {
                    const int v = slot * 5;
                    const Zan8u* seg = s0 + size_t(6 + (v / 15) * 16 + 1 + v % 15) * 80;
                    if ((seg[0] >> 5) != 4) {
                        std::fprintf(stderr, "frame %zu: DIF block at sequence %d segment %d is not video\n", fr, seq,
                                     slot);
                        std::fclose(out);
                        return 1;
                    }
                    std::memset(blocks, 0, sizeof blocks);
                    zaniHuffmanDecodeSegment_DV_8u16s(seg, nullptr, nullptr, blocks, param);
                    for (int i = 0; i < 30; ++i) {
                        Zan16s* b = blocks + 64 * i;
                        const int mode = (param[i] >> 6) & 1, cls = (param[i] >> 4) & 3, q = (param[i] >> 16) & 15;
                        zaniQuantWeightBlockInv_DV_16s_C1I(b, dq.a[mode][cls][q], dq.b[mode][cls][q]);
                        if (reduce == 8) {
                            // The eighth-size output reads the first sample of each
                            // block: the block's mean, DC / 8.
                            b[0] = Zan16s(b[0] / 8);
                        } else if (mode) {
                            zaniDCT2x4x8Inv_16s_C1I(b);
                        } else {
                            for (int y = 0; y < 8; ++y)
                                for (int x = 0; x < 8; ++x) t[8 * x + y] = b[8 * y + x];
                            zaniDCT8x8Inv_AANTransposed_16s_C1R(t, b, 16, 10);
                        }
                    }
                    const Zan16s* src[5] = {};
                    Zan8u* dst[5] = {};
                    int n = 0;
                    for (int m = 0; m < 5; ++m) {
                        const MbPos p = mb_position(f, chan, seq, slot, m);
                        Zan8u* d = pic.data() + size_t(p.y / reduce) * size_t(step) + size_t(p.x / reduce) * 2;
                        const Zan16s* mb = blocks + 6 * 64 * m;
                        if (p.edge) {
                            if (reduce == 1) zaniYCrCb411ToYCbCr422_EdgeDV_16s8u_P3C2R(mb, d, step);
                            else if (reduce == 2) zaniYCrCb411ToYCbCr422_ZoomOut2_EdgeDV_16s8u_P3C2R(mb, d, step);
                            else if (reduce == 4) zaniYCrCb411ToYCbCr422_ZoomOut4_EdgeDV_16s8u_P3C2R(mb, d, step);
                            else zaniYCrCb411ToYCbCr422_ZoomOut8_EdgeDV_16s8u_P3C2R(mb, d, step);
                            continue;
                        }
                        src[n] = mb;
                        dst[n++] = d;
                    }
                    if (f.sampling == 411) {
                        if (reduce == 1) zaniYCrCb411ToYCbCr422_5MBDV_16s8u_P3C2R(src, dst, step);
                        else if (reduce == 2) zaniYCrCb411ToYCbCr422_ZoomOut2_5MBDV_16s8u_P3C2R(src, dst, step);
                        else if (reduce == 4) zaniYCrCb411ToYCbCr422_ZoomOut4_5MBDV_16s8u_P3C2R(src, dst, step);
                        else zaniYCrCb411ToYCbCr422_ZoomOut8_5MBDV_16s8u_P3C2R(src, dst);
                    } else if (f.sampling == 420) {
                        if (reduce == 1) zaniYCrCb420ToYCbCr422_5MBDV_16s8u_P3C2R(src, dst, step);
                        else if (reduce == 2) zaniYCrCb420ToYCbCr422_ZoomOut2_5MBDV_16s8u_P3C2R(src, dst, step);
                        else if (reduce == 4) zaniYCrCb420ToYCbCr422_ZoomOut4_5MBDV_16s8u_P3C2R(src, dst, step);
                        else zaniYCrCb420ToYCbCr422_ZoomOut8_5MBDV_16s8u_P3C2R(src, dst, step);
                    } else {
                        if (reduce == 1) zaniYCrCb422ToYCbCr422_5MBDV_16s8u_P3C2R(src, dst, step);
                        else if (reduce == 2) zaniYCrCb422ToYCbCr422_ZoomOut2_5MBDV_16s8u_P3C2R(src, dst, step);
                        else if (reduce == 4) zaniYCrCb422ToYCbCr422_ZoomOut4_5MBDV_16s8u_P3C2R(src, dst, step);
                        else zaniYCrCb422ToYCbCr422_ZoomOut8_5MBDV_16s8u_P3C2R(src, dst);
                    }
                }
            }
        if (std::fwrite(pic.data(), 1, pic.size(), out) != pic.size()) {
            std::perror(argv[2]);
            std::fclose(out);
            return 1;
        }
    }
    std::fclose(out);
    return 0;
}
