// The H.263 decoder of zanvc-h263dec: decodes an H.263 stream (I and P
// pictures, the picture, group-of-blocks and macroblock layers) to raw
// yuv420p pictures, using only the public zanvc interface.  Beyond the
// baseline it reads the extended picture type of H.263 version 2 (standard
// sizes, rounding type, the slice structured mode with slices in
// macroblock order starting at any macroblock) and these optional modes:
//   - unrestricted motion vectors: vectors reaching outside the picture
//     (edge samples repeat), the extended range of version 1 and the
//     single-valued vector-difference code of version 2;
//   - advanced prediction: four vectors per macroblock and overlapped block
//     motion compensation of the luminance (the library's OBMC copy);
//   - advanced intra coding: DC, vertical and horizontal prediction of intra
//     coefficients from neighbouring blocks, the intra table and the two
//     alternate scans, and the quantiser without rounding offset;
//   - modified quantisation: the quantiser step code, the chrominance
//     quantiser and the extended escape of the coefficient code;
//   - the alternative inter VLC (inter blocks coded with the intra table);
//   - the deblocking filter (filters263).
//
// The library does the block work: coefficient decoding (coefdec), inverse
// quantisation (quant263), the inverse DCT (dct), half-sample and
// overlapped motion compensation (mc).  This file parses the headers,
// predicts motion vectors and intra coefficients and keeps the pictures.
#include "h263_decoder.h"
#include "h263_codes.h"

#include <zanvc.h>

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

using Vlc = h263codes::VlcCode;
using h263codes::kCbpy;
using h263codes::kMcbpcInter;
using h263codes::kMcbpcIntra;
using h263codes::kMvd;

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

// Modified quantisation: the chrominance quantiser for each luminance
// quantiser 0..31 (it grows more slowly above 6 and stops at 15).
const std::uint8_t kChromaQp[32] = {0,  1,  2,  3,  4,  5,  6,  6,  7,  8,  9,  9,  10, 10, 11, 11,
                                    12, 12, 12, 13, 13, 13, 14, 14, 14, 14, 14, 15, 15, 15, 15, 15};

// Modified quantisation, the two-bit quantiser step "1x": x 0 lowers the
// quantiser (by 2 from 1, by 1 up to 10, by 2 up to 20, by 3 above), x 1
// raises it (by 1 up to 10, by 2 up to 20, by 3 up to 28, to 31 from 29 and
// 30, and 31 goes down by 5).
int modified_step(int q, int up) {
    if (!up) return q == 1 ? 3 : q <= 10 ? q - 1 : q <= 20 ? q - 2 : q - 3;
    if (q <= 10) return q + 1;
    if (q <= 20) return q + 2;
    if (q <= 28) return q + 3;
    return q == 31 ? 26 : 31;
}

// ------------------------------------------------------------- pictures
// A plane with a replicated border, so that motion vectors reaching past
// the picture edge read the nearest edge sample.  Block positions further
// out are pulled in by clamp_pos, which keeps the samples read the same.
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

// The whole-sample position p of a block of n samples (n + 1 read for a
// half-sample position) pulled into -(n + 1)..size: a block further out
// reads only replicated edge samples, the same ones as at the limit.
int clamp_pos(int p, int size, int n) {
    if (p < -(n + 1)) return -(n + 1);
    if (p > size) return size;
    return p;
}

struct Mv {
    int x = 0, y = 0;
    bool operator==(const Mv& o) const { return x == o.x && y == o.y; }
};

int median3(int a, int b, int c) {
    int mn = a < b ? a : b, mx = a < b ? b : a;
    if (c < mn) mn = c;
    if (c > mx) mx = c;
    return a + b + c - mn - mx;
}

// Chrominance vector component of a four-vector macroblock from the sum of
// its four luminance components: sum / 8 in chrominance half samples, the
// sixteenths of a sample rounded to the nearest half sample (positions 3/16
// to 13/16 to the half).
int chroma_from_sum(int s) {
    static const int kRound[16] = {0, 0, 0, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 2, 2};
    int a = s < 0 ? -s : s;
    int v = 2 * (a >> 4) + kRound[a & 15];
    return s < 0 ? -v : v;
}

// Intra prediction state of one 8x8 block (advanced intra coding): its
// reconstructed DC, first row and first column of coefficients.
struct IntraPred {
    bool avail = false;
    Zan16s row[8] = {};  // row[0] is the DC
    Zan16s col[8] = {};  // col[0] is the DC
};

// Macroblock kinds kept for the vector and intra neighbours.
enum MbKind : std::uint8_t { kSkipped = 0, kInter = 1, kInter4 = 2, kIntra = 3 };

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
    bool decode_mb(Bits& b, int mbx, int mby, std::string& err);
    bool segment_start(Bits& b, std::size_t mbi, std::string& err, bool& found);
    bool same_segment(int mbx, int mby, int nx, int ny) const;
    bool read_mv(Bits& b, int pred, int& v);
    bool read_mv_pair(Bits& b, const Mv& pred, Mv& mv);
    Mv grid(int bx, int by) const;
    Mv predict(int mbx, int mby, int k) const;
    const Zan8u* ref_block(Plane& p, int x, int y, int n, const Mv& v, Zan32s& acc);
    void predict_chroma(int mbx, int mby, const Mv& cv);
    void luma_overlapped(int mbx, int mby);
    void deblock();
    int edge_qp(std::size_t a, std::size_t b) const;
    int chroma_qp(int q) const { return mq_ ? kChromaQp[q] : q; }
    bool intra_block(Bits& b, bool coded, int qp, std::uint8_t* dst, int step, std::string& err);
    bool intra_block_aic(Bits& b, bool coded, int qp, int mode, IntraPred& self, const IntraPred* left,
                         const IntraPred* above, std::uint8_t* dst, int step, std::string& err);
    bool residual(Bits& b, int qp, Zan16s* res, std::string& err);
    bool inter_block(Bits& b, int qp, std::uint8_t* dst, int step, std::string& err);

    Picture pic_[2];
    int cur_ = 0;
    int width_ = 0, height_ = 0, mbw_ = 0, mbh_ = 0, rows_per_gob_ = 1;
    bool intra_pic_ = true;
    bool have_ref_ = false;
    int quant_ = 1;
    int count_ = 0;
    int rounding_ = 0;        // RTYPE: 1 rounds half-sample averages down
    int plus_fmt_ = 0;        // source format of the last PLUSPTYPE with OPPTYPE
    bool plus_ = false;       // this picture has the extended picture type
    bool custom_pcf_ = false; // custom picture clock: CPCFC and ETR are present
    bool deblock_ = false;    // deblocking filter mode
    bool slices_ = false;     // slice structured mode
    bool umv_ = false;        // unrestricted motion vectors
    bool ap_ = false;         // advanced prediction (four vectors, overlapped luminance)
    bool aic_ = false;        // advanced intra coding
    bool mq_ = false;         // modified quantisation
    bool aiv_ = false;        // alternative inter VLC
    int mba_bits_ = 0;        // length of a slice header's macroblock address
    std::vector<std::uint8_t> mbq_;   // quantiser of each macroblock
    std::vector<std::uint8_t> coded_; // 1 for a macroblock with COD 0
    std::vector<std::uint8_t> kind_;  // MbKind of each macroblock
    std::vector<Mv> mv8_;             // vector of each 8x8 luminance block
    std::vector<IntraPred> ipy_, ipcb_, ipcr_;  // intra prediction state
    // Segment of each macroblock: a new one starts at each GOB header and
    // slice header.  Vector and intra prediction do not reach into another.
    std::vector<int> segment_;
    // Overlapped compensation waits for the vector of the macroblock to the
    // right, so the luminance residual of an inter macroblock is kept here
    // (four blocks of 64) and added once the whole picture's vectors are known.
    std::vector<Zan16s> lres_;
    std::vector<std::uint8_t> lcbp_;
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
    plus_ = plus;
    if (plus) {
        // PLUSPTYPE: UFEP, the optional part (OPPTYPE) when UFEP is 1, then
        // the mandatory part (MPPTYPE).  Without OPPTYPE the modes of the
        // last one stay in force.
        int ufep = static_cast<int>(b.get(3));
        if (ufep == 1) {
            fmt = static_cast<int>(b.get(3));
            custom_pcf_ = b.get(1) != 0;
            umv_ = b.get(1) != 0;
            int sac = b.get(1);
            ap_ = b.get(1) != 0;
            aic_ = b.get(1) != 0;
            deblock_ = b.get(1) != 0;
            slices_ = b.get(1) != 0;
            int rps = b.get(1), isd = b.get(1);
            aiv_ = b.get(1) != 0;
            mq_ = b.get(1) != 0;
            if (b.get(4) != 8) {
                err = "bad OPPTYPE marker bits";
                return false;
            }
            if (sac || rps || isd) {
                plus_fmt_ = 0;
                err = std::string("optional mode not supported:") + (sac ? " arithmetic coding" : "") +
                      (rps ? " reference picture selection" : "") + (isd ? " independent segments" : "");
                return false;
            }
            if (fmt < 1 || fmt > 5) {
                plus_fmt_ = 0;
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
            if (ufep == 1) b.skip(8);  // CPCFC
            b.skip(2);                 // ETR
        }
        if (ufep == 1 && umv_ && b.get(1) == 0) b.skip(1);  // UUI: "1" or "01"
        if (ufep == 1 && slices_) b.skip(2);                // SSS
    } else {
        if (fmt < 1 || fmt > 5) {
            err = "forbidden source format " + std::to_string(fmt);
            return false;
        }
        intra_pic_ = b.get(1) == 0;
        umv_ = b.get(1) != 0;
        int sac = b.get(1);
        ap_ = b.get(1) != 0;
        int pb = b.get(1);
        if (sac || pb) {
            err = std::string("optional mode not supported:") + (sac ? " arithmetic coding" : "") +
                  (pb ? " PB-frames" : "");
            return false;
        }
        deblock_ = false;
        slices_ = false;
        aic_ = false;
        mq_ = false;
        aiv_ = false;
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

// One vector component from its prediction: the version 2 unrestricted
// code (a 1 for zero, else 0, then value bits each followed by a 1 to go on
// or a 0 to stop, the last value bit being the sign), or the difference
// table, whose result wraps into -32..31 half samples, or with unrestricted
// vectors of version 1 is moved by 64 only when the prediction lies beyond
// -31..32 and the vector beyond -63..63 on the same side.
bool Decoder::read_mv(Bits& b, int pred, int& v) {
    if (umv_ && plus_) {
        if (b.get(1)) {
            v = pred;
            return true;
        }
        int code = 2 + static_cast<int>(b.get(1));
        while (b.get(1)) {
            code = (code << 1) | static_cast<int>(b.get(1));
            if (code >= 32768 || b.overrun()) return false;
        }
        v = code & 1 ? pred - (code >> 1) : pred + (code >> 1);
        return true;
    }
    int mag;
    if (!read_vlc(b, kMvd, mag)) return false;
    int d = mag != 0 && b.get(1) ? -mag : mag;
    v = pred + d;
    if (umv_) {
        if (pred < -31 && v < -63) v += 64;
        if (pred > 32 && v > 63) v -= 64;
    } else {
        if (v < -32) v += 64;
        if (v > 31) v -= 64;
    }
    return true;
}

// A vector: x then y, then in the version 2 unrestricted code a stuffing 1
// after the pair of differences (+1/2, +1/2), whose codes would otherwise
// imitate a start code.
bool Decoder::read_mv_pair(Bits& b, const Mv& pred, Mv& mv) {
    if (!read_mv(b, pred.x, mv.x) || !read_mv(b, pred.y, mv.y) || b.overrun()) return false;
    if (umv_ && plus_ && mv.x - pred.x == 1 && mv.y - pred.y == 1 && b.get(1) != 1) return false;
    // Far beyond any picture: a damaged stream.
    return mv.x >= -4096 && mv.x <= 4096 && mv.y >= -4096 && mv.y <= 4096;
}

// Vector of the 8x8 luminance block (bx, by) of this picture; zero outside
// the picture and for intra and skipped macroblocks.
Mv Decoder::grid(int bx, int by) const {
    if (bx < 0 || by < 0 || bx >= 2 * mbw_ || by >= 2 * mbh_) return Mv{};
    return mv8_[static_cast<std::size_t>(by) * 2 * mbw_ + bx];
}

// Whether macroblock (nx, ny) lies in the picture and in the segment of
// macroblock (mbx, my).
bool Decoder::same_segment(int mbx, int mby, int nx, int ny) const {
    if (nx < 0 || ny < 0 || nx >= mbw_ || ny >= mbh_) return false;
    return segment_[static_cast<std::size_t>(ny) * mbw_ + nx] == segment_[static_cast<std::size_t>(mby) * mbw_ + mbx];
}

// Vector prediction for block k (0..3, 0 also for a one-vector macroblock):
// the median of the vectors to the left, above and above right (for block
// 3 above left, inside the macroblock).  A left neighbour outside the
// picture or the segment counts as zero; when the macroblock above is
// outside them, blocks 0 and 1 take the left vector alone; an above-right
// neighbour past the right edge counts as zero.
Mv Decoder::predict(int mbx, int mby, int k) const {
    int bx = 2 * mbx + (k & 1), by = 2 * mby + (k >> 1);
    Mv a = (k & 1) || same_segment(mbx, mby, mbx - 1, mby) ? grid(bx - 1, by) : Mv{};
    if (k < 2 && !same_segment(mbx, mby, mbx, mby - 1)) return a;
    static const int kOff[4] = {2, 1, 1, -1};
    Mv bb = grid(bx, by - 1);
    Mv c = grid(bx + kOff[k], by - 1);
    return Mv{median3(a.x, bb.x, c.x), median3(a.y, bb.y, c.y)};
}

// Reference block of n x n samples at (x, y) moved by the half-sample vector
// v: the pointer to read and the half-sample position.
const Zan8u* Decoder::ref_block(Plane& p, int x, int y, int n, const Mv& v, Zan32s& acc) {
    acc = (v.x & 1) | ((v.y & 1) << 1);
    return p.at(clamp_pos(x + (v.x >> 1), p.width, n), clamp_pos(y + (v.y >> 1), p.height, n));
}

// Chrominance prediction of a macroblock at the chrominance vector cv.
void Decoder::predict_chroma(int mbx, int mby, const Mv& cv) {
    Picture& cur = pic_[cur_];
    Picture& ref = pic_[cur_ ^ 1];
    Zan32s acc;
    const Zan8u* s = ref_block(ref.cb, 8 * mbx, 8 * mby, 8, cv, acc);
    zaniCopy8x8HP_8u_C1R(s, ref.cb.stride, cur.cb.at(8 * mbx, 8 * mby), cur.cb.stride, acc, rounding_);
    s = ref_block(ref.cr, 8 * mbx, 8 * mby, 8, cv, acc);
    zaniCopy8x8HP_8u_C1R(s, ref.cr.stride, cur.cr.at(8 * mbx, 8 * mby), cur.cr.stride, acc, rounding_);
}

// Overlapped compensation of the four luminance blocks of an inter or
// skipped macroblock, then its kept residual.  Each block mixes its own
// prediction with those of the vectors of the blocks above or below (top
// and bottom halves) and left or right (left and right halves).  A
// neighbour outside the picture or in an intra macroblock lends the block's
// own vector, a skipped one the zero vector; the macroblock below is not
// decoded yet, so the lower blocks use their own vector there.
void Decoder::luma_overlapped(int mbx, int mby) {
    Picture& cur = pic_[cur_];
    Picture& ref = pic_[cur_ ^ 1];
    std::size_t mbi = static_cast<std::size_t>(mby) * mbw_ + mbx;
    for (int k = 0; k < 4; ++k) {
        int bx = 2 * mbx + (k & 1), by = 2 * mby + (k >> 1);
        Mv own = grid(bx, by);
        auto remote = [&](int nx, int ny) {
            if (nx < 0 || ny < 0 || nx >= 2 * mbw_ || ny >= 2 * mbh_) return own;
            if (kind_[static_cast<std::size_t>(ny / 2) * mbw_ + nx / 2] == kIntra) return own;
            return grid(nx, ny);
        };
        Mv vs[5] = {own, remote(bx - 1, by), remote(bx + 1, by), remote(bx, by - 1),
                    (k >> 1) ? own : remote(bx, by + 1)};
        // Vectors relative to the block, each pulled in as clamp_pos does.
        Zan16s v16[5][2];
        for (int i = 0; i < 5; ++i) {
            int px = clamp_pos(8 * bx + (vs[i].x >> 1), ref.y.width, 8) - 8 * bx;
            int py = clamp_pos(8 * by + (vs[i].y >> 1), ref.y.height, 8) - 8 * by;
            v16[i][0] = static_cast<Zan16s>(2 * px + (vs[i].x & 1));
            v16[i][1] = static_cast<Zan16s>(2 * py + (vs[i].y & 1));
        }
        Zan8u* dst = cur.y.at(8 * bx, 8 * by);
        zaniOBMC8x8HP_MPEG4_8u_C1R(ref.y.at(8 * bx, 8 * by), ref.y.stride, dst, cur.y.stride, v16[0], v16[1], v16[2],
                                   v16[3], v16[4], rounding_);
        if ((lcbp_[mbi] >> k) & 1) zaniAdd8x8_16s8u_C1IRS(&lres_[(mbi * 4 + k) * 64], 16, dst, cur.y.stride);
    }
}

// Prepares a transposed block for the library's inverse DCT and returns the
// count to pass with it.  That transform rounds its output with 5/8 of a unit
// rather than 1/2, lifting samples by 1/8 on average; the DC coefficient adds
// DC/8 to every sample, so taking 1 from it moves the rounding back to
// nearest.  Without this the lift accumulates over P pictures (measured: mean
// difference to ffmpeg's decoding grows by about 0.04 per picture).  The count
// is the last zigzag index (its first 10 positions lie in the 4x4 corner), at
// least 1, since count 0 divides the DC by 8 truncating toward zero; blocks
// stored through another scan or with predicted coefficients pass 63.
Zan32s idct_count(Zan16s* t, Zan32s last) {
    t[0] = static_cast<Zan16s>(t[0] - 1);
    return last < 1 ? 1 : last;
}

// Coefficients in raster order to the transposed layout of the transform.
void transpose(const Zan16s* coef, Zan16s* t) {
    for (int v = 0; v < 8; ++v)
        for (int u = 0; u < 8; ++u) t[8 * u + v] = coef[8 * v + u];
}

// Moves the bit reader to the library's byte cursor.
void sync(Bits& b, const Zan8u* p, Zan32s off) {
    b.pos = static_cast<std::size_t>(p - b.data) * 8 + static_cast<std::size_t>(off);
}

// Intra block: INTRADC, then TCOEF when coded; dequantised, inverse
// transformed straight into the picture.
bool Decoder::intra_block(Bits& b, bool coded, int qp, std::uint8_t* dst, int step, std::string& err) {
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
        st = zaniDecodeCoeffsIntra_H263_1u16s(&p, &off, coef, &last, 0, mq_ ? 1 : 0, 0);
        if (st != zanStsOk) {
            err = "bad intra coefficients (status " + std::to_string(st) + ")";
            return false;
        }
    } else {
        std::memset(coef, 0, sizeof coef);
    }
    coef[0] = dc;
    sync(b, p, off);
    if (b.overrun()) {
        err = "stream ends inside a block";
        return false;
    }
    // Coefficients were stored at raster positions through the zigzag; the
    // inverse quantiser treats rows of 8 up to the one holding the last.
    zaniQuantInvIntra_H263_16s_C1I(coef, coded ? 63 : 0, qp, 0, mq_ ? 1 : 0);
    alignas(16) Zan16s t[64];
    transpose(coef, t);
    zaniDCT8x8Inv_AANTransposed_16s8u_C1R(t, dst, step, idct_count(t, coded ? 63 : 0));
    return true;
}

// Advanced intra coding block: levels of the intra table from index 0
// through the scan of the prediction mode (0 DC: zigzag, 1 vertical:
// alternate horizontal, 2 horizontal: alternate vertical), each level
// becoming 2 * QP * level.  The prediction is then added: mode 0 adds to
// the DC the mean of the left and above blocks' DC (one of them when only
// one is available, 1024 when neither is); mode 1 adds the above block's
// first row, DC included; mode 2 the left block's first column; 1024 to the
// DC when that block is not available.  The DC is kept at 0 and up and made
// odd, the other coefficients are limited to -2048..2047.
bool Decoder::intra_block_aic(Bits& b, bool coded, int qp, int mode, IntraPred& self, const IntraPred* left,
                              const IntraPred* above, std::uint8_t* dst, int step, std::string& err) {
    alignas(16) Zan16s coef[64];
    if (coded) {
        Zan8u* p = const_cast<Zan8u*>(b.data) + (b.pos >> 3);
        Zan32s off = static_cast<Zan32s>(b.pos & 7);
        Zan32s last = -1;
        static const Zan32s kScan[3] = {0, 2, 1};
        ZanStatus st = zaniDecodeCoeffsIntra_H263_1u16s(&p, &off, coef, &last, 1, mq_ ? 1 : 0, kScan[mode]);
        if (st != zanStsOk) {
            err = "bad intra coefficients (status " + std::to_string(st) + ")";
            return false;
        }
        sync(b, p, off);
        if (b.overrun()) {
            err = "stream ends inside a block";
            return false;
        }
        zaniQuantInvIntra_H263_16s_C1I(coef, 63, qp, 1, mq_ ? 1 : 0);
    } else {
        std::memset(coef, 0, sizeof coef);
    }
    bool la = left && left->avail, aa = above && above->avail;
    int dc = coef[0];
    if (mode == 0) {
        dc += la && aa ? (left->row[0] + above->row[0]) >> 1 : la ? left->row[0] : aa ? above->row[0] : 1024;
    } else if (mode == 1) {
        dc += aa ? above->row[0] : 1024;
        if (aa)
            for (int u = 1; u < 8; ++u) coef[u] = static_cast<Zan16s>(coef[u] + above->row[u]);
    } else {
        dc += la ? left->col[0] : 1024;
        if (la)
            for (int v = 1; v < 8; ++v) coef[8 * v] = static_cast<Zan16s>(coef[8 * v] + left->col[v]);
    }
    for (int i = 1; i < 64; ++i) {
        if (coef[i] > 2047) coef[i] = 2047;
        if (coef[i] < -2048) coef[i] = -2048;
    }
    coef[0] = static_cast<Zan16s>(dc < 0 ? 0 : dc | 1);
    self.avail = true;
    for (int i = 0; i < 8; ++i) {
        self.row[i] = coef[i];
        self.col[i] = coef[8 * i];
    }
    alignas(16) Zan16s t[64];
    transpose(coef, t);
    zaniDCT8x8Inv_AANTransposed_16s8u_C1R(t, dst, step, idct_count(t, 63));
    return true;
}

// Inter residual: TCOEF, dequantised, inverse transformed into res (8x8,
// rows of 16 bytes).
bool Decoder::residual(Bits& b, int qp, Zan16s* res, std::string& err) {
    Zan8u* p = const_cast<Zan8u*>(b.data) + (b.pos >> 3);
    Zan32s off = static_cast<Zan32s>(b.pos & 7);
    alignas(16) Zan16s coef[64];
    Zan32s last = -1;
    ZanStatus st = zaniDecodeCoeffsInter_H263_1u16s(&p, &off, coef, &last, mq_ ? 1 : 0, 0);
    // Alternative inter VLC: a block the inter table cannot decode (its runs
    // would pass 64 coefficients) is coded with the advanced intra table.
    if (st != zanStsOk && aiv_) st = zaniDecodeCoeffsIntra_H263_1u16s(&p, &off, coef, &last, 1, mq_ ? 1 : 0, 0);
    if (st != zanStsOk) {
        err = "bad inter coefficients (status " + std::to_string(st) + ")";
        return false;
    }
    sync(b, p, off);
    if (b.overrun()) {
        err = "stream ends inside a block";
        return false;
    }
    zaniQuantInvInter_H263_16s_C1I(coef, 63, qp, mq_ ? 1 : 0);
    alignas(16) Zan16s t[64];
    transpose(coef, t);
    zaniDCT8x8Inv_AANTransposed_16s_C1R(t, res, 16, idct_count(t, last));
    return true;
}

// Inter block: the residual added to the prediction already in dst.
bool Decoder::inter_block(Bits& b, int qp, std::uint8_t* dst, int step, std::string& err) {
    alignas(16) Zan16s res[64];
    if (!residual(b, qp, res, err)) return false;
    zaniAdd8x8_16s8u_C1IRS(res, 16, dst, step);
    return true;
}

bool Decoder::decode_mb(Bits& b, int mbx, int mby, std::string& err) {
    Picture& cur = pic_[cur_];
    Picture& ref = pic_[cur_ ^ 1];
    std::size_t mbi = static_cast<std::size_t>(mby) * mbw_ + mbx;
    std::size_t g0 = static_cast<std::size_t>(2 * mby) * 2 * mbw_ + 2 * mbx;  // block 0 in mv8_ / ipy_
    std::size_t gs[4] = {g0, g0 + 1, g0 + 2 * mbw_, g0 + 2 * mbw_ + 1};
    for (std::size_t g : gs) mv8_[g] = Mv{};
    kind_[mbi] = kSkipped;
    coded_[mbi] = 0;
    lcbp_[mbi] = 0;
    int type = 3, cbpc = 0;
    bool coded = true;
    for (;;) {
        if (!intra_pic_) {
            if (b.get(1)) {  // COD: not coded, predicted with the zero vector
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
        if (!ap_) zaniCopy16x16_8u_C1R(ref.y.at(16 * mbx, 16 * mby), ref.y.stride, ydst, cur.y.stride);
        zaniCopy8x8_8u_C1R(ref.cb.at(8 * mbx, 8 * mby), ref.cb.stride, cbdst, cur.cb.stride);
        zaniCopy8x8_8u_C1R(ref.cr.at(8 * mbx, 8 * mby), ref.cr.stride, crdst, cur.cr.stride);
        return true;
    }
    coded_[mbi] = 1;
    bool intra = type == 3 || type == 4;
    // Four-vector macroblocks belong to advanced prediction; ffmpeg's encoder
    // also writes them without it (-flags +mv4), and its decoder then
    // predicts each block from its own vector without overlapping, as here.
    bool four = type == 2 || type == 5;
    bool left_ok = same_segment(mbx, mby, mbx - 1, mby), above_ok = same_segment(mbx, mby, mbx, mby - 1);
    int aic_mode = 0;
    if (intra && aic_) {
        if (b.get(1)) aic_mode = 1 + static_cast<int>(b.get(1));
    }
    int cbpyv;
    if (!read_vlc(b, kCbpy, cbpyv)) {
        err = "bad CBPY";
        return false;
    }
    // Inter macroblocks invert CBPY, except that with the alternative inter
    // VLC an inter macroblock with both chrominance blocks coded keeps it.
    int cbpy = intra || (aiv_ && cbpc == 3) ? cbpyv : 15 - cbpyv;
    if (type == 1 || type == 4 || type == 5) {
        if (mq_) {
            if (b.get(1)) {
                quant_ = modified_step(quant_, static_cast<int>(b.get(1)));
            } else {
                quant_ = static_cast<int>(b.get(5));
                if (quant_ == 0) {
                    err = "quantiser 0";
                    return false;
                }
            }
        } else {
            static const int kDq[] = {-1, -2, 1, 2};
            quant_ += kDq[b.get(2)];
            if (quant_ < 1) quant_ = 1;
            if (quant_ > 31) quant_ = 31;
        }
    }
    mbq_[mbi] = static_cast<std::uint8_t>(quant_);
    int qy = quant_, qc = chroma_qp(quant_);
    int cbp = (cbpy << 2) | cbpc;  // bit 5 block 0 ... bit 0 block 5
    if (intra) {
        kind_[mbi] = kIntra;
        for (int k = 0; k < 4; ++k) {
            Zan8u* d = ydst + 8 * (k & 1) + 8 * (k >> 1) * cur.y.stride;
            bool c = (cbp >> (5 - k)) & 1;
            bool ok;
            if (aic_) {
                std::size_t g = gs[k];
                const IntraPred* left = (k & 1) || left_ok ? &ipy_[g - 1] : nullptr;
                const IntraPred* above = (k >> 1) || above_ok ? &ipy_[g - 2 * mbw_] : nullptr;
                ok = intra_block_aic(b, c, qy, aic_mode, ipy_[g], left, above, d, cur.y.stride, err);
            } else {
                ok = intra_block(b, c, qy, d, cur.y.stride, err);
            }
            if (!ok) return false;
        }
        std::vector<IntraPred>* ips[2] = {&ipcb_, &ipcr_};
        Zan8u* cds[2] = {cbdst, crdst};
        for (int k = 0; k < 2; ++k) {
            bool c = (cbp >> (1 - k)) & 1;
            bool ok;
            if (aic_) {
                std::vector<IntraPred>& ip = *ips[k];
                const IntraPred* left = left_ok ? &ip[mbi - 1] : nullptr;
                const IntraPred* above = above_ok ? &ip[mbi - mbw_] : nullptr;
                ok = intra_block_aic(b, c, qc, aic_mode, ip[mbi], left, above, cds[k], cur.cb.stride, err);
            } else {
                ok = intra_block(b, c, qc, cds[k], cur.cb.stride, err);
            }
            if (!ok) return false;
        }
        return true;
    }
    // Vectors: one for the macroblock, or one for each luminance block, each
    // predicted as soon as the previous one is known.
    Mv cv;
    if (!four) {
        kind_[mbi] = kInter;
        Mv mv;
        if (!read_mv_pair(b, predict(mbx, mby, 0), mv)) {
            err = "bad MVD";
            return false;
        }
        for (std::size_t g : gs) mv8_[g] = mv;
        // Chrominance at the vector halved, quarter positions moved to the
        // half position.
        cv = Mv{(mv.x >> 1) | (mv.x & 1), (mv.y >> 1) | (mv.y & 1)};
        if (!ap_) {
            Zan32s acc;
            const Zan8u* s = ref_block(ref.y, 16 * mbx, 16 * mby, 16, mv, acc);
            zaniCopy16x16HP_8u_C1R(s, ref.y.stride, ydst, cur.y.stride, acc, rounding_);
        }
    } else {
        kind_[mbi] = kInter4;
        Mv sum;
        for (int k = 0; k < 4; ++k) {
            Mv mv;
            if (!read_mv_pair(b, predict(mbx, mby, k), mv)) {
                err = "bad MVD of block " + std::to_string(k);
                return false;
            }
            mv8_[gs[k]] = mv;
            sum.x += mv.x;
            sum.y += mv.y;
            if (!ap_) {
                Zan32s acc;
                int x = 16 * mbx + 8 * (k & 1), y = 16 * mby + 8 * (k >> 1);
                const Zan8u* s = ref_block(ref.y, x, y, 8, mv, acc);
                zaniCopy8x8HP_8u_C1R(s, ref.y.stride, cur.y.at(x, y), cur.y.stride, acc, rounding_);
            }
        }
        cv = Mv{chroma_from_sum(sum.x), chroma_from_sum(sum.y)};
    }
    predict_chroma(mbx, mby, cv);
    for (int k = 0; k < 4; ++k) {
        if (!((cbp >> (5 - k)) & 1)) continue;
        if (ap_) {
            if (!residual(b, qy, &lres_[(mbi * 4 + k) * 64], err)) return false;
            lcbp_[mbi] = static_cast<std::uint8_t>(lcbp_[mbi] | (1 << k));
        } else if (!inter_block(b, qy, ydst + 8 * (k & 1) + 8 * (k >> 1) * cur.y.stride, cur.y.stride, err)) {
            return false;
        }
    }
    if ((cbp >> 1) & 1 && !inter_block(b, qc, cbdst, cur.cb.stride, err)) return false;
    if (cbp & 1 && !inter_block(b, qc, crdst, cur.cr.stride, err)) return false;
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
// reference.  Horizontal edges first, then vertical ones.  With modified
// quantisation chrominance edges take the chrominance quantiser.
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
                qp = chroma_qp(qp);
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

// Looks for a header before macroblock mbi: in slice structured mode a
// slice may start at any macroblock, otherwise a GOB header may precede the
// first row of each GOB.  Start codes may follow zero stuffing up to a byte
// boundary.  found tells whether a header was read.
bool Decoder::segment_start(Bits& b, std::size_t mbi, std::string& err, bool& found) {
    found = false;
    int mbx = static_cast<int>(mbi % static_cast<std::size_t>(mbw_)), mby = static_cast<int>(mbi / static_cast<std::size_t>(mbw_));
    if (!slices_ && (mbx != 0 || mby % rows_per_gob_ != 0)) return true;
    std::size_t save = b.pos;
    std::size_t aligned = (b.pos + 7) & ~std::size_t{7};
    if (aligned != b.pos && b.peek(static_cast<int>(aligned - b.pos)) == 0) b.pos = aligned;
    if (b.peek(17) != 1) {
        b.pos = save;
        return true;
    }
    b.skip(17);
    found = true;
    if (slices_) {
        // Slice header: SSC, SEPB1, MBA, SEPB2 (long addresses only),
        // SQUANT, SEPB3, GFID.
        int mba = -1;
        if (b.get(1) == 1) mba = static_cast<int>(b.get(mba_bits_));
        if (mba_bits_ > 9 && b.get(1) != 1) mba = -1;
        quant_ = static_cast<int>(b.get(5));
        if (b.get(1) != 1) mba = -1;
        b.skip(2);
        if (mba < 0 || static_cast<std::size_t>(mba) != mbi || quant_ == 0) {
            err = "bad slice header (address " + std::to_string(mba) + " before macroblock " + std::to_string(mbi) +
                  ", quantiser " + std::to_string(quant_) + ")";
            return false;
        }
        return true;
    }
    int gob = mby / rows_per_gob_;
    int gn = static_cast<int>(b.get(5));
    if (gn != gob) {
        err = "GOB " + std::to_string(gob) + " expected, GOB number " + std::to_string(gn) + " found";
        return false;
    }
    b.skip(2);  // GFID (GSBI would precede it with CPM, which these streams do not use)
    quant_ = static_cast<int>(b.get(5));
    if (quant_ == 0) {
        err = "GQUANT 0";
        return false;
    }
    return true;
}

bool Decoder::decode_picture(Bits& b, std::string& err) {
    if (!parse_header(b, err)) return false;
    cur_ ^= 1;
    std::size_t mbs = static_cast<std::size_t>(mbw_) * mbh_;
    mv8_.assign(mbs * 4, Mv{});
    mbq_.assign(mbs, 0);
    coded_.assign(mbs, 0);
    kind_.assign(mbs, kSkipped);
    lcbp_.assign(mbs, 0);
    if (ap_ && !intra_pic_) lres_.resize(mbs * 4 * 64);
    if (aic_) {
        ipy_.assign(mbs * 4, IntraPred{});
        ipcb_.assign(mbs, IntraPred{});
        ipcr_.assign(mbs, IntraPred{});
    }
    if (slices_) {
        // Slice structured mode: the first slice's header is only its
        // macroblock address (0) between two emulation-prevention 1 bits.
        mba_bits_ = mbs <= 48 ? 6 : mbs <= 99 ? 7 : mbs <= 396 ? 9 : mbs <= 1584 ? 11 : 13;
        if (b.get(1) != 1 || b.get(mba_bits_) != 0 || b.get(1) != 1) {
            err = "bad first slice header";
            return false;
        }
    }
    segment_.assign(mbs, 0);
    int segment = 0;
    for (std::size_t mbi = 0; mbi < mbs; ++mbi) {
        int mbx = static_cast<int>(mbi % static_cast<std::size_t>(mbw_)), mby = static_cast<int>(mbi / static_cast<std::size_t>(mbw_));
        bool found = false;
        if (mbi > 0 && !segment_start(b, mbi, err, found)) return false;
        if (found) ++segment;
        segment_[mbi] = segment;
        if (!decode_mb(b, mbx, mby, err)) {
            err = "macroblock (" + std::to_string(mbx) + "," + std::to_string(mby) + "): " + err;
            return false;
        }
        if (b.overrun()) {
            err = "stream ends inside macroblock (" + std::to_string(mbx) + "," + std::to_string(mby) + ")";
            return false;
        }
    }
    if (ap_ && !intra_pic_)
        for (int mby = 0; mby < mbh_; ++mby)
            for (int mbx = 0; mbx < mbw_; ++mbx)
                if (kind_[static_cast<std::size_t>(mby) * mbw_ + mbx] != kIntra) luma_overlapped(mbx, mby);
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

int h263_decode_file(const char* in_path, const char* out_path) {
    std::FILE* in = std::fopen(in_path, "rb");
    if (!in) {
        std::fprintf(stderr, "zanvc-h263dec: cannot open %s\n", in_path);
        return 1;
    }
    std::vector<std::uint8_t> data;
    unsigned char buf[65536];
    std::size_t n;
    while ((n = std::fread(buf, 1, sizeof buf, in)) > 0) data.insert(data.end(), buf, buf + n);
    std::fclose(in);
    std::size_t size = data.size();
    data.resize(size + 16, 0);  // the coefficient decoders may read 4 bytes ahead

    std::FILE* out = std::fopen(out_path, "wb");
    if (!out) {
        std::fprintf(stderr, "zanvc-h263dec: cannot create %s\n", out_path);
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
        std::fprintf(stderr, "zanvc-h263dec: %s: %s\n", in_path, err.c_str());
        return 1;
    }
    return 0;
}
