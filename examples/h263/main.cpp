// zanvc-h263dec: decodes an H.263 stream (I and P pictures, the picture,
// group-of-blocks and macroblock layers) to raw yuv420p pictures, using only
// the public zanvc interface.  Beyond the baseline it reads the extended
// picture type of H.263 version 2 (standard sizes, rounding type, the
// slice structured mode with slices that start a row of macroblocks) and the
// deblocking filter mode (filters263).
//
// The library does the block work: coefficient decoding (coefdec), inverse
// quantisation (quant263), the inverse DCT (dct) and half-sample motion
// compensation (mc).  This file parses the headers, predicts motion vectors
// and keeps the pictures.
#include <zanvc.h>

#include "mpeg4_dec.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

// ------------------------------------------------------------ bit reader
// MSB-first reader over a buffer padded with zero bytes, so that the
// library's coefficient decoders may load 4 bytes past the data.
struct Bits {
    const std::uint8_t* data = nullptr;
    std::size_t size = 0;  // bytes of real data
    std::size_t pos = 0;   // bit position

    bool overrun() const { return pos > size * 8; }
    std::uint32_t peek(int n) const {
        std::uint32_t v = 0;
        for (int i = 0; i < n; ++i) {
            std::size_t p = pos + i;
            std::uint32_t bit = p < size * 8 ? (data[p >> 3] >> (7 - (p & 7))) & 1 : 0;
            v = (v << 1) | bit;
        }
        return v;
    }
    std::uint32_t get(int n) {
        std::uint32_t v = peek(n);
        pos += n;
        return v;
    }
    void skip(int n) { pos += n; }
};

// A variable-length code: value, code bits, length.
struct Vlc {
    int value;
    std::uint32_t code;
    int len;
};

// Reads one code of a table; returns false when no entry matches.
template <std::size_t N>
bool read_vlc(Bits& b, const Vlc (&table)[N], int& value) {
    for (const Vlc& e : table) {
        if (b.peek(e.len) == e.code) {
            b.skip(e.len);
            value = e.value;
            return true;
        }
    }
    return false;
}

// MCBPC of I pictures: value = mbtype * 4 + cbpc (mbtype 3 intra, 4 intra
// with DQUANT); -1 is stuffing.
const Vlc kMcbpcIntra[] = {
    {3 * 4 + 0, 0x1, 1},  {3 * 4 + 1, 0x1, 3},  {3 * 4 + 2, 0x2, 3},  {3 * 4 + 3, 0x3, 3},
    {4 * 4 + 0, 0x1, 4},  {4 * 4 + 1, 0x1, 6},  {4 * 4 + 2, 0x2, 6},  {4 * 4 + 3, 0x3, 6},
    {-1, 0x1, 9},
};

// MCBPC of P pictures: mbtype 0 inter, 1 inter with DQUANT, 2 inter with four
// vectors, 3 intra, 4 intra with DQUANT; -1 is stuffing.
const Vlc kMcbpcInter[] = {
    {0 * 4 + 0, 0x1, 1}, {0 * 4 + 1, 0x3, 4}, {0 * 4 + 2, 0x2, 4}, {0 * 4 + 3, 0x5, 6},
    {1 * 4 + 0, 0x3, 3}, {1 * 4 + 1, 0x7, 7}, {1 * 4 + 2, 0x6, 7}, {1 * 4 + 3, 0x5, 9},
    {2 * 4 + 0, 0x2, 3}, {2 * 4 + 1, 0x5, 7}, {2 * 4 + 2, 0x4, 7}, {2 * 4 + 3, 0x5, 8},
    {3 * 4 + 0, 0x3, 5}, {3 * 4 + 1, 0x4, 8}, {3 * 4 + 2, 0x3, 8}, {3 * 4 + 3, 0x3, 7},
    {4 * 4 + 0, 0x4, 6}, {4 * 4 + 1, 0x4, 9}, {4 * 4 + 2, 0x3, 9}, {4 * 4 + 3, 0x2, 9},
    {-1, 0x1, 9},
};

// CBPY as coded for intra macroblocks (inter macroblocks invert it).
const Vlc kCbpy[] = {
    {0, 0x3, 4},  {1, 0x5, 5},  {2, 0x4, 5},  {3, 0x9, 4},  {4, 0x3, 5},  {5, 0x7, 4},
    {6, 0x2, 6},  {7, 0xb, 4},  {8, 0x2, 5},  {9, 0x3, 6},  {10, 0x5, 4}, {11, 0xa, 4},
    {12, 0x4, 4}, {13, 0x8, 4}, {14, 0x6, 4}, {15, 0x3, 2},
};

// MVD magnitude in half samples (0..32); a sign bit follows a nonzero one.
const Vlc kMvd[] = {
    {0, 0x1, 1},   {1, 0x1, 2},   {2, 0x1, 3},   {3, 0x1, 4},   {4, 0x3, 6},   {5, 0x5, 7},
    {6, 0x4, 7},   {7, 0x3, 7},   {8, 0xb, 9},   {9, 0xa, 9},   {10, 0x9, 9},  {11, 0x11, 10},
    {12, 0x10, 10}, {13, 0xf, 10}, {14, 0xe, 10}, {15, 0xd, 10}, {16, 0xc, 10}, {17, 0xb, 10},
    {18, 0xa, 10}, {19, 0x9, 10}, {20, 0x8, 10}, {21, 0x7, 10}, {22, 0x6, 10}, {23, 0x5, 10},
    {24, 0x4, 10}, {25, 0x7, 11}, {26, 0x6, 11}, {27, 0x5, 11}, {28, 0x4, 11}, {29, 0x3, 11},
    {30, 0x2, 11}, {31, 0x3, 12}, {32, 0x2, 12},
};

// ------------------------------------------------------------- pictures
// A plane with a replicated border, so that motion vectors reaching past
// the picture edge read the nearest edge sample.
struct Plane {
    int width = 0, height = 0, border = 0, stride = 0;
    std::vector<std::uint8_t> buf;
    void init(int w, int h, int b) {
        width = w;
        height = h;
        border = b;
        stride = w + 2 * b;
        buf.assign(static_cast<std::size_t>(stride) * (h + 2 * b), 128);
    }
    std::uint8_t* at(int x, int y) { return buf.data() + static_cast<std::ptrdiff_t>(y + border) * stride + x + border; }
    void extend() {
        for (int y = 0; y < height; ++y) {
            std::uint8_t* row = at(0, y);
            std::memset(row - border, row[0], border);
            std::memset(row + width, row[width - 1], border);
        }
        for (int y = 1; y <= border; ++y) {
            std::memcpy(at(-border, -y), at(-border, 0), stride);
            std::memcpy(at(-border, height - 1 + y), at(-border, height - 1), stride);
        }
    }
};

struct Picture {
    Plane y, cb, cr;
    void init(int w, int h) {
        y.init(w, h, 32);
        cb.init(w / 2, h / 2, 16);
        cr.init(w / 2, h / 2, 16);
    }
};

struct Mv {
    int x = 0, y = 0;
};

int median3(int a, int b, int c) {
    int mn = a < b ? a : b, mx = a < b ? b : a;
    if (c < mn) mn = c;
    if (c > mx) mx = c;
    return a + b + c - mn - mx;
}

// Wraps a vector component into the baseline range -32..31 half samples.
int wrap_mv(int v) {
    if (v < -32) v += 64;
    if (v > 31) v -= 64;
    return v;
}

class Decoder {
public:
    // Decodes one picture starting at bit position pos (a picture start code);
    // on success pos is left after the picture's last macroblock.
    bool decode_picture(Bits& b, std::string& err);
    // Writes the last decoded picture as yuv420p.
    bool write(std::FILE* f);
    int pictures() const { return count_; }

private:
    bool parse_header(Bits& b, std::string& err);
    bool decode_mb(Bits& b, int mbx, int mby, bool gob_header_row, std::string& err);
    bool read_mvd(Bits& b, int& v);
    void deblock();
    int edge_qp(std::size_t a, std::size_t b) const;
    bool intra_block(Bits& b, bool coded, std::uint8_t* dst, int step, std::string& err);
    bool inter_block(Bits& b, std::uint8_t* dst, int step, std::string& err);

    Picture pic_[2];
    int cur_ = 0;
    int width_ = 0, height_ = 0, mbw_ = 0, mbh_ = 0, rows_per_gob_ = 1;
    bool intra_pic_ = true;
    bool have_ref_ = false;
    int quant_ = 1;
    int count_ = 0;
    int rounding_ = 0;        // RTYPE: 1 rounds half-sample averages down
    int plus_fmt_ = 0;        // source format of the last PLUSPTYPE with OPPTYPE
    bool custom_pcf_ = false; // custom picture clock: CPCFC and ETR are present
    bool deblock_ = false;    // deblocking filter mode
    bool slices_ = false;     // slice structured mode
    int mba_bits_ = 0;        // length of a slice header's macroblock address
    std::vector<std::uint8_t> mbq_;   // quantiser of each macroblock
    std::vector<std::uint8_t> coded_; // 1 for a macroblock with COD 0
    std::vector<Mv> mvs_;     // vector of each macroblock of this picture
};

bool Decoder::parse_header(Bits& b, std::string& err) {
    if (b.pos + 37 > b.size * 8) {  // PSC, TR, PTYPE, PQUANT, CPM, PEI
        err = "stream ends inside the picture header";
        return false;
    }
    if (b.get(22) != 0x20) {
        err = "picture start code expected";
        return false;
    }
    b.skip(8);  // TR
    if (b.get(1) != 1 || b.get(1) != 0) {
        err = "bad PTYPE marker bits";
        return false;
    }
    b.skip(3);  // split screen, document camera, freeze picture release
    int fmt = static_cast<int>(b.get(3));
    static const int kW[] = {0, 128, 176, 352, 704, 1408};
    static const int kH[] = {0, 96, 144, 288, 576, 1152};
    rounding_ = 0;
    bool plus = fmt == 7;
    if (plus) {
        // PLUSPTYPE: UFEP, the optional part (OPPTYPE) when UFEP is 1, then
        // the mandatory part (MPPTYPE).
        int ufep = static_cast<int>(b.get(3));
        if (ufep == 1) {
            fmt = static_cast<int>(b.get(3));
            custom_pcf_ = b.get(1) != 0;
            int umv = b.get(1), sac = b.get(1), ap = b.get(1), aic = b.get(1);
            deblock_ = b.get(1) != 0;
            slices_ = b.get(1) != 0;
            int rps = b.get(1), isd = b.get(1), aiv = b.get(1), mq = b.get(1);
            if (b.get(4) != 8) {
                err = "bad OPPTYPE marker bits";
                return false;
            }
            if (umv || sac || ap || aic || rps || isd || aiv || mq) {
                err = std::string("optional mode not supported:") + (umv ? " unrestricted vectors" : "") +
                      (sac ? " arithmetic coding" : "") + (ap ? " advanced prediction" : "") +
                      (aic ? " advanced intra coding" : "") + (rps ? " reference picture selection" : "") +
                      (isd ? " independent segments" : "") + (aiv ? " alternative inter VLC" : "") +
                      (mq ? " modified quantisation" : "");
                return false;
            }
            if (fmt < 1 || fmt > 5) {
                err = fmt == 6 ? "custom picture format is not supported"
                               : "forbidden source format " + std::to_string(fmt);
                return false;
            }
            plus_fmt_ = fmt;
        } else if (ufep == 0 && plus_fmt_ != 0) {
            fmt = plus_fmt_;
        } else {
            err = "bad UFEP " + std::to_string(ufep);
            return false;
        }
        int ptype = static_cast<int>(b.get(3));
        int rpr = b.get(1), rru = b.get(1);
        rounding_ = static_cast<int>(b.get(1));
        if (b.get(3) != 1) {
            err = "bad MPPTYPE marker bits";
            return false;
        }
        if (ptype > 1 || rpr || rru) {
            err = "picture type " + std::to_string(ptype) + (rpr ? " with resampling" : "") +
                  (rru ? " with reduced resolution" : "") + " is not supported";
            return false;
        }
        intra_pic_ = ptype == 0;
        if (b.get(1)) b.skip(2);  // CPM, PSBI
        if (custom_pcf_) {
            b.skip(8);  // CPCFC
            b.skip(2);  // ETR
        }
        if (slices_) b.skip(2);  // SSS
    } else {
        if (fmt < 1 || fmt > 5) {
            err = "forbidden source format " + std::to_string(fmt);
            return false;
        }
        intra_pic_ = b.get(1) == 0;
        int umv = b.get(1), sac = b.get(1), ap = b.get(1), pb = b.get(1);
        if (umv || sac || ap || pb) {
            err = std::string("optional mode not supported:") + (umv ? " unrestricted vectors" : "") +
                  (sac ? " arithmetic coding" : "") + (ap ? " advanced prediction" : "") + (pb ? " PB-frames" : "");
            return false;
        }
        deblock_ = false;
        slices_ = false;
        plus_fmt_ = 0;
    }
    quant_ = static_cast<int>(b.get(5));
    if (quant_ == 0) {
        err = "PQUANT 0";
        return false;
    }
    if (!plus && b.get(1)) b.skip(2);  // CPM, PSBI
    while (b.get(1)) {                  // PEI, PSPARE
        b.skip(8);
        if (b.overrun()) break;
    }
    if (b.overrun()) {
        err = "stream ends inside the picture header";
        return false;
    }
    int w = kW[fmt], h = kH[fmt];
    if (w != width_ || h != height_) {
        if (count_ > 0 && !intra_pic_) {
            err = "picture size changes on a P picture";
            return false;
        }
        width_ = w;
        height_ = h;
        mbw_ = w / 16;
        mbh_ = h / 16;
        rows_per_gob_ = h <= 288 ? 1 : (h == 576 ? 2 : 4);
        pic_[0].init(w, h);
        pic_[1].init(w, h);
        have_ref_ = false;
    }
    if (!intra_pic_ && !have_ref_) {
        err = "P picture without a reference picture";
        return false;
    }
    return true;
}

bool Decoder::read_mvd(Bits& b, int& v) {
    int mag;
    if (!read_vlc(b, kMvd, mag)) return false;
    v = mag != 0 && b.get(1) ? -mag : mag;
    return true;
}

// Prepares a transposed block for the library's inverse DCT and returns the
// count to pass with it.  That transform rounds its output with 5/8 of a unit
// rather than 1/2, lifting samples by 1/8 on average; the DC coefficient adds
// DC/8 to every sample, so taking 1 from it moves the rounding back to
// nearest.  Without this the lift accumulates over P pictures (measured: mean
// difference to ffmpeg's decoding grows by about 0.04 per picture).  The count
// is the last zigzag index (its first 10 positions lie in the 4x4 corner), at
// least 1, since count 0 divides the DC by 8 truncating toward zero.
Zan32s idct_count(Zan16s* t, Zan32s last) {
    t[0] = static_cast<Zan16s>(t[0] - 1);
    return last < 1 ? 1 : last;
}

// Intra block: INTRADC, then TCOEF when coded; dequantised, inverse
// transformed straight into the picture.
bool Decoder::intra_block(Bits& b, bool coded, std::uint8_t* dst, int step, std::string& err) {
    Zan8u* p = const_cast<Zan8u*>(b.data) + (b.pos >> 3);
    Zan32s off = static_cast<Zan32s>(b.pos & 7);
    alignas(16) Zan16s coef[64];
    Zan16s dc = 0;
    ZanStatus st = zaniDecodeDCIntra_H263_1u16s(&p, &off, &dc);
    if (st != zanStsOk) {
        err = "bad INTRADC (status " + std::to_string(st) + ")";
        return false;
    }
    Zan32s last = 0;
    if (coded) {
        st = zaniDecodeCoeffsIntra_H263_1u16s(&p, &off, coef, &last, 0, 0, 0);
        if (st != zanStsOk) {
            err = "bad intra coefficients (status " + std::to_string(st) + ")";
            return false;
        }
    } else {
        std::memset(coef, 0, sizeof coef);
    }
    coef[0] = dc;
    b.pos = static_cast<std::size_t>(p - b.data) * 8 + static_cast<std::size_t>(off);
    if (b.overrun()) {
        err = "stream ends inside a block";
        return false;
    }
    // Coefficients were stored at raster positions through the zigzag; the
    // inverse quantiser treats rows of 8 up to the one holding the last.
    zaniQuantInvIntra_H263_16s_C1I(coef, coded ? 63 : 0, quant_, 0, 0);
    alignas(16) Zan16s t[64];
    for (int v = 0; v < 8; ++v)
        for (int u = 0; u < 8; ++u) t[8 * u + v] = coef[8 * v + u];
    zaniDCT8x8Inv_AANTransposed_16s8u_C1R(t, dst, step, idct_count(t, coded ? 63 : 0));
    return true;
}

// Inter block: TCOEF, dequantised, inverse transformed and added to the
// prediction already in dst.
bool Decoder::inter_block(Bits& b, std::uint8_t* dst, int step, std::string& err) {
    Zan8u* p = const_cast<Zan8u*>(b.data) + (b.pos >> 3);
    Zan32s off = static_cast<Zan32s>(b.pos & 7);
    alignas(16) Zan16s coef[64];
    Zan32s last = -1;
    ZanStatus st = zaniDecodeCoeffsInter_H263_1u16s(&p, &off, coef, &last, 0, 0);
    if (st != zanStsOk) {
        err = "bad inter coefficients (status " + std::to_string(st) + ")";
        return false;
    }
    b.pos = static_cast<std::size_t>(p - b.data) * 8 + static_cast<std::size_t>(off);
    if (b.overrun()) {
        err = "stream ends inside a block";
        return false;
    }
    zaniQuantInvInter_H263_16s_C1I(coef, 63, quant_, 0);
    alignas(16) Zan16s t[64];
    for (int v = 0; v < 8; ++v)
        for (int u = 0; u < 8; ++u) t[8 * u + v] = coef[8 * v + u];
    alignas(16) Zan16s res[64];
    zaniDCT8x8Inv_AANTransposed_16s_C1R(t, res, 16, idct_count(t, last));
    zaniAdd8x8_16s8u_C1IRS(res, 16, dst, step);
    return true;
}

bool Decoder::decode_mb(Bits& b, int mbx, int mby, bool gob_header_row, std::string& err) {
    Picture& cur = pic_[cur_];
    Picture& ref = pic_[cur_ ^ 1];
    std::size_t mbi = static_cast<std::size_t>(mby) * mbw_ + mbx;
    Mv& mv = mvs_[mbi];
    mv = Mv{};
    coded_[mbi] = 0;
    int type = 3, cbpc = 0;
    bool coded = true;
    for (;;) {
        if (!intra_pic_) {
            if (b.get(1)) {  // COD: not coded, copied from the reference
                coded = false;
                break;
            }
        }
        int v;
        bool found = intra_pic_ ? read_vlc(b, kMcbpcIntra, v) : read_vlc(b, kMcbpcInter, v);
        if (!found || b.overrun()) {
            err = "bad MCBPC";
            return false;
        }
        if (v < 0) continue;  // stuffing
        type = v >> 2;
        cbpc = v & 3;
        break;
    }
    std::uint8_t* ydst = cur.y.at(16 * mbx, 16 * mby);
    std::uint8_t* cbdst = cur.cb.at(8 * mbx, 8 * mby);
    std::uint8_t* crdst = cur.cr.at(8 * mbx, 8 * mby);
    if (!coded) {
        mbq_[mbi] = static_cast<std::uint8_t>(quant_);
        zaniCopy16x16_8u_C1R(ref.y.at(16 * mbx, 16 * mby), ref.y.stride, ydst, cur.y.stride);
        zaniCopy8x8_8u_C1R(ref.cb.at(8 * mbx, 8 * mby), ref.cb.stride, cbdst, cur.cb.stride);
        zaniCopy8x8_8u_C1R(ref.cr.at(8 * mbx, 8 * mby), ref.cr.stride, crdst, cur.cr.stride);
        return true;
    }
    coded_[mbi] = 1;
    if (type == 2) {
        err = "four-vector macroblock outside advanced prediction mode";
        return false;
    }
    bool intra = type >= 3;
    int cbpyv;
    if (!read_vlc(b, kCbpy, cbpyv)) {
        err = "bad CBPY";
        return false;
    }
    int cbpy = intra ? cbpyv : 15 - cbpyv;
    if (type == 1 || type == 4) {
        static const int kDq[] = {-1, -2, 1, 2};
        quant_ += kDq[b.get(2)];
        if (quant_ < 1) quant_ = 1;
        if (quant_ > 31) quant_ = 31;
    }
    mbq_[mbi] = static_cast<std::uint8_t>(quant_);
    int cbp = (cbpy << 2) | cbpc;  // bit 5 block 0 ... bit 0 block 5
    if (intra) {
        for (int k = 0; k < 4; ++k)
            if (!intra_block(b, (cbp >> (5 - k)) & 1, ydst + 8 * (k & 1) + 8 * (k >> 1) * cur.y.stride, cur.y.stride, err))
                return false;
        if (!intra_block(b, (cbp >> 1) & 1, cbdst, cur.cb.stride, err)) return false;
        if (!intra_block(b, cbp & 1, crdst, cur.cr.stride, err)) return false;
        return true;
    }
    // Vector prediction: the median of left, above and above-right, with the
    // picture edge (and the top of a GOB that has a header) as boundaries.
    bool top = mby == 0 || gob_header_row;
    Mv zero{};
    const Mv& left = mbx > 0 ? mvs_[static_cast<std::size_t>(mby) * mbw_ + mbx - 1] : zero;
    Mv pred;
    if (top) {
        pred = left;
    } else {
        const Mv& above = mvs_[static_cast<std::size_t>(mby - 1) * mbw_ + mbx];
        const Mv& ar = mbx + 1 < mbw_ ? mvs_[static_cast<std::size_t>(mby - 1) * mbw_ + mbx + 1] : zero;
        pred.x = median3(left.x, above.x, ar.x);
        pred.y = median3(left.y, above.y, ar.y);
    }
    int dx, dy;
    if (!read_mvd(b, dx) || !read_mvd(b, dy) || b.overrun()) {
        err = "bad MVD";
        return false;
    }
    mv.x = wrap_mv(pred.x + dx);
    mv.y = wrap_mv(pred.y + dy);
    // Prediction: luma at the vector, chroma at the vector halved with
    // quarter positions moved to the half position.
    int acc = (mv.x & 1) | ((mv.y & 1) << 1);
    zaniCopy16x16HP_8u_C1R(ref.y.at(16 * mbx + (mv.x >> 1), 16 * mby + (mv.y >> 1)), ref.y.stride, ydst,
                           cur.y.stride, acc, rounding_);
    int cx = (mv.x >> 1) | (mv.x & 1), cy = (mv.y >> 1) | (mv.y & 1);
    int cacc = (cx & 1) | ((cy & 1) << 1);
    zaniCopy8x8HP_8u_C1R(ref.cb.at(8 * mbx + (cx >> 1), 8 * mby + (cy >> 1)), ref.cb.stride, cbdst, cur.cb.stride,
                         cacc, rounding_);
    zaniCopy8x8HP_8u_C1R(ref.cr.at(8 * mbx + (cx >> 1), 8 * mby + (cy >> 1)), ref.cr.stride, crdst, cur.cr.stride,
                         cacc, rounding_);
    for (int k = 0; k < 4; ++k)
        if ((cbp >> (5 - k)) & 1)
            if (!inter_block(b, ydst + 8 * (k & 1) + 8 * (k >> 1) * cur.y.stride, cur.y.stride, err)) return false;
    if ((cbp >> 1) & 1 && !inter_block(b, cbdst, cur.cb.stride, err)) return false;
    if (cbp & 1 && !inter_block(b, crdst, cur.cr.stride, err)) return false;
    return true;
}

// The quantiser for the edge between the blocks of macroblocks a (above or
// left) and b (below or right): b's when b is coded, else a's; 0 when
// neither is coded, in which case the edge is left alone.
int Decoder::edge_qp(std::size_t a, std::size_t b) const {
    if (coded_[b]) return mbq_[b];
    if (coded_[a]) return mbq_[a];
    return 0;
}

// Deblocking filter mode: every 8x8 block edge inside the picture, luma and
// chroma, is filtered in the reconstructed picture, which then serves as the
// reference.  Horizontal edges first, then vertical ones.
void Decoder::deblock() {
    Picture& cur = pic_[cur_];
    std::size_t w = static_cast<std::size_t>(mbw_);
    for (int pass = 0; pass < 2; ++pass) {
        bool hor = pass == 0;
        for (int by = 0; by < 2 * mbh_; ++by)
            for (int bx = 0; bx < 2 * mbw_; ++bx) {
                if (hor ? by == 0 : bx == 0) continue;
                std::size_t mb = static_cast<std::size_t>(by / 2) * w + static_cast<std::size_t>(bx / 2);
                std::size_t mbn = hor ? static_cast<std::size_t>((by - 1) / 2) * w + static_cast<std::size_t>(bx / 2)
                                      : static_cast<std::size_t>(by / 2) * w + static_cast<std::size_t>((bx - 1) / 2);
                int qp = edge_qp(mbn, mb);
                if (qp == 0) continue;
                Zan8u* p = cur.y.at(8 * bx, 8 * by);
                if (hor)
                    zaniFilterDeblocking8x8HorEdge_H263_8u_C1IR(p, cur.y.stride, qp);
                else
                    zaniFilterDeblocking8x8VerEdge_H263_8u_C1IR(p, cur.y.stride, qp);
            }
        for (int by = 0; by < mbh_; ++by)
            for (int bx = 0; bx < mbw_; ++bx) {
                if (hor ? by == 0 : bx == 0) continue;
                std::size_t mb = static_cast<std::size_t>(by) * w + static_cast<std::size_t>(bx);
                std::size_t mbn = hor ? mb - w : mb - 1;
                int qp = edge_qp(mbn, mb);
                if (qp == 0) continue;
                for (Plane* c : {&cur.cb, &cur.cr}) {
                    Zan8u* p = c->at(8 * bx, 8 * by);
                    if (hor)
                        zaniFilterDeblocking8x8HorEdge_H263_8u_C1IR(p, c->stride, qp);
                    else
                        zaniFilterDeblocking8x8VerEdge_H263_8u_C1IR(p, c->stride, qp);
                }
            }
    }
}

bool Decoder::decode_picture(Bits& b, std::string& err) {
    if (!parse_header(b, err)) return false;
    cur_ ^= 1;
    mvs_.assign(static_cast<std::size_t>(mbw_) * mbh_, Mv{});
    mbq_.assign(mvs_.size(), 0);
    if (slices_) {
        // Slice structured mode: the first slice's header is only its
        // macroblock address (0) between two emulation-prevention 1 bits.
        mba_bits_ = mvs_.size() <= 48 ? 6 : mvs_.size() <= 99 ? 7 : mvs_.size() <= 396 ? 9 : mvs_.size() <= 1584 ? 11 : 13;
        if (b.get(1) != 1 || b.get(mba_bits_) != 0 || b.get(1) != 1) {
            err = "bad first slice header";
            return false;
        }
    }
    coded_.assign(mvs_.size(), 0);
    int gobs = mbh_ / rows_per_gob_;
    for (int gob = 0; gob < gobs; ++gob) {
        bool header = false;
        if (gob > 0) {
            // GBSC, possibly after stuffing to a byte boundary.
            std::size_t save = b.pos;
            std::size_t aligned = (b.pos + 7) & ~std::size_t{7};
            if (aligned != b.pos && b.peek(static_cast<int>(aligned - b.pos)) == 0) b.pos = aligned;
            if (b.peek(17) == 1 && slices_) {
                // Slice header: SSC, SEPB1, MBA, SEPB2 (long addresses only),
                // SQUANT, SEPB3, GFID.  Only slices that start a row of
                // macroblocks are handled.
                b.skip(17);
                int mba = -1;
                if (b.get(1) == 1) mba = static_cast<int>(b.get(mba_bits_));
                if (mba_bits_ > 9 && b.get(1) != 1) mba = -1;
                quant_ = static_cast<int>(b.get(5));
                if (b.get(1) != 1) mba = -1;
                b.skip(2);
                if (mba != gob * rows_per_gob_ * mbw_ || quant_ == 0) {
                    err = "unsupported or bad slice header (address " + std::to_string(mba) + ")";
                    return false;
                }
                header = true;
            } else if (b.peek(17) == 1) {
                b.skip(17);
                int gn = static_cast<int>(b.get(5));
                if (gn != gob) {
                    err = "GOB " + std::to_string(gob) + " expected, GOB number " + std::to_string(gn) + " found";
                    return false;
                }
                b.skip(2);  // GFID (GSBI would precede it with CPM, which baseline streams do not use)
                quant_ = static_cast<int>(b.get(5));
                if (quant_ == 0) {
                    err = "GQUANT 0";
                    return false;
                }
                header = true;
            } else {
                b.pos = save;
            }
        }
        for (int r = 0; r < rows_per_gob_; ++r) {
            int mby = gob * rows_per_gob_ + r;
            for (int mbx = 0; mbx < mbw_; ++mbx) {
                if (!decode_mb(b, mbx, mby, header && r == 0, err)) {
                    err = "macroblock (" + std::to_string(mbx) + "," + std::to_string(mby) + "): " + err;
                    return false;
                }
                if (b.overrun()) {
                    err = "stream ends inside macroblock (" + std::to_string(mbx) + "," + std::to_string(mby) + ")";
                    return false;
                }
            }
        }
    }
    Picture& cur = pic_[cur_];
    if (deblock_) deblock();
    cur.y.extend();
    cur.cb.extend();
    cur.cr.extend();
    have_ref_ = true;
    ++count_;
    return true;
}

bool Decoder::write(std::FILE* f) {
    Picture& cur = pic_[cur_];
    for (Plane* p : {&cur.y, &cur.cb, &cur.cr})
        for (int y = 0; y < p->height; ++y)
            if (std::fwrite(p->at(0, y), 1, static_cast<std::size_t>(p->width), f) != static_cast<std::size_t>(p->width))
                return false;
    return true;
}

// Next byte-aligned picture start code at or after bit position pos.
bool find_psc(const Bits& b, std::size_t& pos) {
    std::size_t i = (pos + 7) >> 3;
    for (; i + 2 < b.size; ++i)
        if (b.data[i] == 0 && b.data[i + 1] == 0 && (b.data[i + 2] & 0xfc) == 0x80) {
            pos = i * 8;
            return true;
        }
    return false;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: zanvc-h263dec IN.h263 OUT.yuv\n");
        return 2;
    }
    if (int r = mpeg4_try_main(argv[1], argv[2]); r >= 0) return r;  // MPEG-4 visual stream
    std::FILE* in = std::fopen(argv[1], "rb");
    if (!in) {
        std::fprintf(stderr, "zanvc-h263dec: cannot open %s\n", argv[1]);
        return 1;
    }
    std::vector<std::uint8_t> data;
    unsigned char buf[65536];
    std::size_t n;
    while ((n = std::fread(buf, 1, sizeof buf, in)) > 0) data.insert(data.end(), buf, buf + n);
    std::fclose(in);
    std::size_t size = data.size();
    data.resize(size + 16, 0);  // the coefficient decoders may read 4 bytes ahead

    std::FILE* out = std::fopen(argv[2], "wb");
    if (!out) {
        std::fprintf(stderr, "zanvc-h263dec: cannot create %s\n", argv[2]);
        return 1;
    }
    Bits b;
    b.data = data.data();
    b.size = size;
    Decoder dec;
    std::string err;
    bool ok = true;
    std::size_t pos = 0;
    if (!find_psc(b, pos)) {
        err = "no picture start code found";
        ok = false;
    }
    while (ok) {
        b.pos = pos;
        if (!dec.decode_picture(b, err)) {
            err = "picture " + std::to_string(dec.pictures()) + ": " + err;
            ok = false;
            break;
        }
        if (!dec.write(out)) {
            err = "write error";
            ok = false;
            break;
        }
        pos = b.pos;
        if (!find_psc(b, pos)) break;
    }
    if (std::fclose(out) != 0 && ok) {
        err = "write error";
        ok = false;
    }
    if (!ok) {
        std::fprintf(stderr, "zanvc-h263dec: %s: %s\n", argv[1], err.c_str());
        return 1;
    }
    return 0;
}
