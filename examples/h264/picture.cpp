#include "picture.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace h264ex {

namespace {

const int kNorm4[6][3] = {{10, 16, 13}, {11, 18, 14}, {13, 20, 16}, {14, 23, 18}, {16, 25, 20}, {18, 29, 23}};
const int kNorm8[6][6] = {{20, 18, 32, 19, 25, 24}, {22, 19, 35, 21, 28, 26}, {26, 23, 42, 24, 33, 31},
                          {28, 25, 45, 26, 35, 33}, {32, 28, 51, 30, 40, 38}, {36, 32, 58, 34, 46, 43}};

int norm4(int m, int pos) {
    const int i = pos >> 2, j = pos & 3;
    if ((i & 1) == 0 && (j & 1) == 0) return kNorm4[m][0];
    if ((i & 1) == 1 && (j & 1) == 1) return kNorm4[m][1];
    return kNorm4[m][2];
}
int norm8(int m, int pos) {
    const int i = pos >> 3, j = pos & 7;
    if (i % 4 == 0 && j % 4 == 0) return kNorm8[m][0];
    if (i % 2 == 1 && j % 2 == 1) return kNorm8[m][1];
    if (i % 4 == 2 && j % 4 == 2) return kNorm8[m][2];
    if ((i % 4 == 0 && j % 2 == 1) || (i % 2 == 1 && j % 4 == 0)) return kNorm8[m][3];
    if ((i % 4 == 0 && j % 4 == 2) || (i % 4 == 2 && j % 4 == 0)) return kNorm8[m][4];
    return kNorm8[m][5];
}

const int kChromaQp[52] = {0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14, 15, 16, 17,
                           18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 29, 30, 31, 32, 32, 33,
                           34, 34, 35, 35, 36, 36, 37, 37, 37, 38, 38, 38, 39, 39, 39, 39};
int chroma_qp(int qpy, int offset, int qp_bd_c) {
    const int qpi = std::clamp(qpy + offset, -qp_bd_c, 51);
    return qpi < 0 ? qpi : kChromaQp[qpi];
}

// Loop-filter thresholds by indexA / indexB, and tc0 by indexA and bS 1..3.
const std::uint8_t kAlpha[52] = {0,  0,  0,  0,  0,  0,  0,  0,  0,   0,   0,   0,   0,   0,   0,   0,   4,   4,
                                 5,  6,  7,  8,  9,  10, 12, 13, 15,  17,  20,  22,  25,  28,  32,  36,  40,  45,
                                 50, 56, 63, 71, 80, 90, 101, 113, 127, 144, 162, 182, 203, 226, 255, 255};
const std::uint8_t kBeta[52] = {0, 0, 0, 0, 0, 0, 0, 0, 0,  0,  0,  0,  0,  0,  0,  0,  2,  2,
                                2, 3, 3, 3, 3, 4, 4, 4, 6,  6,  7,  7,  8,  8,  9,  9,  10, 10,
                                11, 11, 12, 12, 13, 13, 14, 14, 15, 15, 16, 16, 17, 17, 18, 18};
const std::uint8_t kTc0[52][3] = {
    {0, 0, 0},   {0, 0, 0},   {0, 0, 0},   {0, 0, 0},    {0, 0, 0},    {0, 0, 0},    {0, 0, 0},
    {0, 0, 0},   {0, 0, 0},   {0, 0, 0},   {0, 0, 0},    {0, 0, 0},    {0, 0, 0},    {0, 0, 0},
    {0, 0, 0},   {0, 0, 0},   {0, 0, 0},   {0, 0, 1},    {0, 0, 1},    {0, 0, 1},    {0, 0, 1},
    {0, 1, 1},   {0, 1, 1},   {1, 1, 1},   {1, 1, 1},    {1, 1, 1},    {1, 1, 1},    {1, 1, 2},
    {1, 1, 2},   {1, 1, 2},   {1, 1, 2},   {1, 2, 3},    {1, 2, 3},    {2, 2, 3},    {2, 2, 4},
    {2, 3, 4},   {2, 3, 4},   {3, 3, 5},   {3, 4, 6},    {3, 4, 6},    {4, 5, 7},    {4, 5, 8},
    {4, 6, 9},   {5, 7, 10},  {6, 8, 11},  {6, 8, 13},   {7, 10, 14},  {8, 11, 16},  {9, 12, 18},
    {10, 13, 20}, {11, 15, 23}, {13, 17, 25}};

inline int block_x(int b) { return (b & 1) | ((b >> 1) & 2); }
inline int block_y(int b) { return ((b >> 1) & 1) | ((b >> 2) & 2); }

// Lossless macroblocks predicted vertically or horizontally code the residual
// as differences along the prediction direction: sum it up before adding.
template <class C>
void accumulate(C* r, int w, int h, bool vertical) {
    for (int i = 0; i < h; ++i)
        for (int j = 0; j < w; ++j) {
            if (vertical && i > 0) r[i * w + j] = static_cast<C>(r[i * w + j] + r[(i - 1) * w + j]);
            if (!vertical && j > 0) r[i * w + j] = static_cast<C>(r[i * w + j] + r[i * w + j - 1]);
        }
}

// Adds a w x h residual to the picture with clipping to 0..maxv.
template <class P, class C>
void add_residual(P* dst, int stride, const C* r, int w, int h, int maxv) {
    for (int i = 0; i < h; ++i)
        for (int j = 0; j < w; ++j)
            dst[i * stride + j] = static_cast<P>(std::clamp(dst[i * stride + j] + static_cast<int>(r[i * w + j]), 0, maxv));
}

// Assembles the untransformed residual of a 16x16 luma or chroma plane from
// its DC values and AC blocks (lossless macroblocks).
template <class C, class S>
void lossless_plane(const S* dc, const S* const* ac, int blocks_w, int blocks_h, C* r) {
    const int n = 4 * blocks_w;
    for (int by = 0; by < blocks_h; ++by)
        for (int bx = 0; bx < blocks_w; ++bx) {
            const int b = by * blocks_w + bx;
            for (int k = 0; k < 16; ++k) {
                C v = 0;
                if (k == 0) v = dc ? static_cast<C>(dc[b]) : 0;
                else if (ac[b]) v = static_cast<C>(ac[b][k]);
                r[(4 * by + (k >> 2)) * n + 4 * bx + (k & 3)] = v;
            }
        }
}

// The library's reconstruction calls for 8-bit samples (16-bit coefficients)
// and for deeper samples (32-bit coefficients, records), behind one set of
// names.
struct LumaArgs {
    int step;
    Zan32u pattern;
    int qp;  // QP'Y
    const Zan16s* scale;
    Zan8u bypass;
    int depth;
};
ZanStatus luma4x4(Zan16s** cur, Zan8u* y, const LumaArgs& a, const Zan32u* modes, Zan8u edge) {
    return zaniReconstructLumaIntra4x4MB_H264_16s8u_C1R(cur, y, a.step, modes, a.pattern, a.qp, edge, a.scale, a.bypass);
}
ZanStatus luma8x8(Zan16s** cur, Zan8u* y, const LumaArgs& a, const Zan32u* modes, Zan8u edge) {
    return zaniReconstructLumaIntra8x8MB_H264_16s8u_C1R(cur, y, a.step, modes, a.pattern, a.qp, edge, a.scale, a.bypass);
}
ZanStatus luma16x16(Zan16s** cur, Zan8u* y, const LumaArgs& a, Zan32u mode, Zan8u edge) {
    return zaniReconstructLumaIntra_16x16MB_H264_16s8u_C1R(cur, y, a.step, mode, a.pattern, a.qp, edge, a.scale,
                                                           a.bypass);
}
ZanReconstructRecord luma_record(Zan32s** cur, Zan16u* y, const LumaArgs& a) {
    return ZanReconstructRecord{reinterpret_cast<void**>(cur), y, a.step, a.pattern, a.qp, a.scale, a.bypass, a.depth};
}
ZanStatus luma4x4(Zan32s** cur, Zan16u* y, const LumaArgs& a, const Zan32u* modes, Zan8u edge) {
    const ZanReconstructRecord r = luma_record(cur, y, a);
    return zaniReconstructLumaIntra4x4_H264High_32s16u_IP1R(&r, modes, edge);
}
ZanStatus luma8x8(Zan32s** cur, Zan16u* y, const LumaArgs& a, const Zan32u* modes, Zan8u edge) {
    const ZanReconstructRecord r = luma_record(cur, y, a);
    return zaniReconstructLumaIntra8x8_H264High_32s16u_IP1R(&r, modes, edge);
}
ZanStatus luma16x16(Zan32s** cur, Zan16u* y, const LumaArgs& a, Zan32u mode, Zan8u edge) {
    const ZanReconstructRecord r = luma_record(cur, y, a);
    return zaniReconstructLumaIntra16x16_H264High_32s16u_IP1R(&r, mode, edge);
}
ZanStatus chroma420(Zan16s** cur, Zan8u* const* uv, const ZanReconstructRecord* rec, Zan32u mode, Zan8u edge) {
    // 4:2:0, 8-bit: one pattern word with the chroma bits at 17..26.
    Zan32u pattern = 0;
    for (int c = 0; c < 2; ++c) {
        if (rec[c].cbp & 1) pattern |= 1u << (17 + c);
        pattern |= ((rec[c].cbp >> 1) & 15u) << (19 + 4 * c);
    }
    return zaniReconstructChromaIntra4x4MB_H264_16s8u_P2R(cur, uv[0], uv[1], static_cast<Zan32u>(rec[0].srcDstStep),
                                                          mode, pattern, rec[0].QP, rec[1].QP, edge,
                                                          rec[0].pQuantTable, rec[1].pQuantTable, rec[0].bypass);
}
ZanStatus chroma420(Zan32s**, Zan16u* const*, const ZanReconstructRecord* rec, Zan32u mode, Zan8u edge) {
    const ZanReconstructRecord* recs[2] = {&rec[0], &rec[1]};
    return zaniReconstructChromaIntra4x4_H264High_32s16u_IP2R(recs, mode, edge);
}
ZanStatus chroma422(Zan16s**, Zan8u* const*, const ZanReconstructRecord* rec, Zan32u mode, Zan8u edge, Zan16s dcu,
                    Zan16s dcv) {
    const ZanReconstructRecord* recs[2] = {&rec[0], &rec[1]};
    return zaniReconstructChroma422Intra4x4_H264High_16s8u_IP2R(recs, mode, edge, dcu, dcv);
}
ZanStatus chroma422(Zan32s**, Zan16u* const*, const ZanReconstructRecord* rec, Zan32u mode, Zan8u edge, Zan16s dcu,
                    Zan16s dcv) {
    const ZanReconstructRecord* recs[2] = {&rec[0], &rec[1]};
    return zaniReconstructChroma422Intra4x4_H264High_32s16u_IP2R(recs, mode, edge, dcu, dcv);
}

}  // namespace

bool Picture::init(const Sps& sps, const Pps& pps, Frame* f) {
    sps_ = sps;
    f_ = f;
    mbw_ = sps.mb_width;
    mbh_ = sps.mb_height;
    ystride_ = 16 * mbw_;
    cstride_ = 8 * mbw_;
    mbch_ = sps.chroma_format_idc == 2 ? 16 : 8;
    cbh_ = mbch_ / 4;
    hbd_ = sps.bit_depth_luma > 8 || sps.bit_depth_chroma > 8;
    qp_bd_y_ = 6 * (sps.bit_depth_luma - 8);
    qp_bd_c_ = 6 * (sps.bit_depth_chroma - 8);
    const std::size_t ysize = static_cast<std::size_t>(ystride_) * 16 * static_cast<std::size_t>(mbh_);
    const std::size_t csize = static_cast<std::size_t>(cstride_ * mbch_) * static_cast<std::size_t>(mbh_);
    if (hbd_) {
        f_->y16.resize(ysize);
        f_->u16.resize(csize);
        f_->v16.resize(csize);
    } else {
        f_->y.resize(ysize);
        f_->u.resize(csize);
        f_->v.resize(csize);
    }
    f_->motion.resize(static_cast<std::size_t>(16 * mbw_ * mbh_));
    f_->mbw = mbw_;
    f_->mbh = mbh_;
    f_->ystride = ystride_;
    f_->cstride = cstride_;
    f_->mbch = mbch_;
    f_->hbd = hbd_;
    f_->bit_depth_luma = sps.bit_depth_luma;
    f_->bit_depth_chroma = sps.bit_depth_chroma;
    f_->chroma_format = sps.chroma_format_idc;
    f_->crop_left = sps.crop_left;
    f_->crop_right = sps.crop_right;
    f_->crop_top = sps.crop_top;
    f_->crop_bottom = sps.crop_bottom;
    nz_.assign(static_cast<std::size_t>(16 * mbw_ * mbh_), 0);
    info_.assign(static_cast<std::size_t>(mbw_ * mbh_), MbInfo{});
    mode_.assign(static_cast<std::size_t>(16 * mbw_ * mbh_), 2);
    total_.assign(mode_.size(), 0);
    total_c_[0].assign(static_cast<std::size_t>(2 * cbh_ * mbw_ * mbh_), 0);
    total_c_[1] = total_c_[0];
    use_pps(pps);
    return true;
}

void Picture::use_pps(const Pps& pps) {
    chroma_qp_offset_[0] = pps.chroma_qp_offset[0];
    chroma_qp_offset_[1] = pps.chroma_qp_offset[1];
    for (int l = 0; l < 6; ++l)
        for (int m = 0; m < 6; ++m)
            for (int k = 0; k < 16; ++k) {
                const int pos = kZigzag4x4[k];
                ls4_[l][m][pos] = static_cast<Zan16s>(pps.scaling4x4[l][k] * norm4(m, pos));
            }
    for (int l = 0; l < 2; ++l)
        for (int m = 0; m < 6; ++m)
            for (int k = 0; k < 64; ++k) {
                const int pos = kZigzag8x8[k];
                ls8_[l][m][pos] = static_cast<Zan16s>(pps.scaling8x8[l][k] * norm8(m, pos));
            }
}

void Picture::neighbours(int addr, int slice, NeighbourInfo& nb) const {
    const int mbx = addr % mbw_, mby = addr / mbw_;
    const int cw = 4 * mbw_, ccw = 2 * mbw_;
    nb.avail_a = available(mbx - 1, mby, slice);
    nb.avail_b = available(mbx, mby - 1, slice);
    for (int k = 0; k < 4; ++k) {
        nb.mode_a[k] = nb.total_a[k] = nb.mode_b[k] = nb.total_b[k] = 0;
        if (nb.avail_a) {
            const std::size_t c = static_cast<std::size_t>((4 * mby + k) * cw + 4 * mbx - 1);
            nb.mode_a[k] = mode_[c];
            nb.total_a[k] = total_[c];
        }
        if (nb.avail_b) {
            const std::size_t c = static_cast<std::size_t>((4 * mby - 1) * cw + 4 * mbx + k);
            nb.mode_b[k] = mode_[c];
            nb.total_b[k] = total_[c];
        }
        for (int p = 0; p < 2; ++p) {
            nb.total_ca[p][k] = nb.total_cb[p][k] = 0;
            if (k < cbh_ && nb.avail_a)
                nb.total_ca[p][k] = total_c_[p][static_cast<std::size_t>((cbh_ * mby + k) * ccw + 2 * mbx - 1)];
            if (k < 2 && nb.avail_b)
                nb.total_cb[p][k] = total_c_[p][static_cast<std::size_t>((cbh_ * mby - 1) * ccw + 2 * mbx + k)];
        }
    }
}

bool Picture::reconstruct(int addr, int slice, const Macroblock& mb, const Pps& pps, std::string& err) {
    const int mbx = addr % mbw_, mby = addr / mbw_;
    MbInfo& in = info_[static_cast<std::size_t>(addr)];
    const int cw = 4 * mbw_, ccw = 2 * mbw_;
    for (int b = 0; b < 16; ++b) {
        const std::size_t c = static_cast<std::size_t>((4 * mby + block_y(b)) * cw + 4 * mbx + block_x(b));
        total_[c] = mb.total[b];
        int mode = 2;
        if (mb.kind == kMbI4x4) mode = static_cast<int>(mb.modes[b]);
        if (mb.kind == kMbI8x8) mode = static_cast<int>(mb.modes[b >> 2]);
        mode_[c] = static_cast<std::uint8_t>(mode);
    }
    for (int p = 0; p < 2; ++p)
        for (int b = 0; b < 2 * cbh_; ++b)
            total_c_[p][static_cast<std::size_t>((cbh_ * mby + (b >> 1)) * ccw + 2 * mbx + (b & 1))] = mb.total_c[p][b];
    in.slice = slice;
    in.kind = mb.kind;
    in.t8x8 = mb.kind == kMbI8x8 || (!is_intra(mb.kind) && mb.t8x8);
    for (int b = 0; b < 16; ++b) {
        bool nz = mb.total[b] != 0;
        if (in.t8x8) {
            const int b8 = b & ~3;
            nz = (mb.total[b8] | mb.total[b8 + 1] | mb.total[b8 + 2] | mb.total[b8 + 3]) != 0;
        }
        nz_[static_cast<std::size_t>((4 * mby + block_y(b)) * cw + 4 * mbx + block_x(b))] = nz ? 1 : 0;
    }
    if (is_intra(mb.kind)) {
        for (int r = 0; r < 4; ++r)
            for (int c = 0; c < 4; ++c) {
                MotionCell& m = f_->motion[static_cast<std::size_t>((4 * mby + r) * cw + 4 * mbx + c)];
                std::memset(&m, 0, sizeof m);
                m.ref[0] = m.ref[1] = -1;
            }
    }
    if (mb.kind == kMbPcm) {
        in.qp = 0;
        const std::size_t yo = static_cast<std::size_t>(16 * mby * ystride_ + 16 * mbx);
        const std::size_t co = static_cast<std::size_t>(mbch_ * mby * cstride_ + 8 * mbx);
        for (int r = 0; r < 16; ++r)
            for (int c = 0; c < 16; ++c) {
                const std::size_t i = yo + static_cast<std::size_t>(r * ystride_ + c);
                if (hbd_) f_->y16[i] = mb.pcm[16 * r + c];
                else f_->y[i] = static_cast<Zan8u>(mb.pcm[16 * r + c]);
            }
        for (int r = 0; r < mbch_; ++r)
            for (int c = 0; c < 8; ++c) {
                const std::size_t i = co + static_cast<std::size_t>(r * cstride_ + c);
                const std::uint16_t su = mb.pcm[256 + 8 * r + c], sv = mb.pcm[256 + 8 * mbch_ + 8 * r + c];
                if (hbd_) {
                    f_->u16[i] = su;
                    f_->v16[i] = sv;
                } else {
                    f_->u[i] = static_cast<Zan8u>(su);
                    f_->v[i] = static_cast<Zan8u>(sv);
                }
            }
        in.qpc[0] = chroma_qp(0, chroma_qp_offset_[0], qp_bd_c_);
        in.qpc[1] = chroma_qp(0, chroma_qp_offset_[1], qp_bd_c_);
        return true;
    }
    in.qp = mb.qp;
    in.qpc[0] = chroma_qp(mb.qp, pps.chroma_qp_offset[0], qp_bd_c_);
    in.qpc[1] = chroma_qp(mb.qp, pps.chroma_qp_offset[1], qp_bd_c_);
    if (!is_intra(mb.kind)) {
        slice_ = slice;
        if (!motion(mbx, mby, mb, err)) return false;
        const std::size_t yo = static_cast<std::size_t>(16 * mby * ystride_ + 16 * mbx);
        const std::size_t co = static_cast<std::size_t>(mbch_ * mby * cstride_ + 8 * mbx);
        if (hbd_) {
            if (!predict<Zan16u>(mbx, mby, mb, err)) return false;
            if (!inter_residual<Zan16u, Zan32s>(f_->y16.data() + yo, f_->u16.data() + co, f_->v16.data() + co, mb, in))
                return err = "residual reconstruction failed", false;
        } else {
            if (!predict<Zan8u>(mbx, mby, mb, err)) return false;
            if (!inter_residual<Zan8u, Zan16s>(f_->y.data() + yo, f_->u.data() + co, f_->v.data() + co, mb, in))
                return err = "residual reconstruction failed", false;
        }
        return true;
    }

    Zan8u edge = 0;
    if (!available(mbx - 1, mby, slice)) edge |= 1;
    if (!available(mbx, mby - 1, slice)) edge |= 4;
    if (!available(mbx - 1, mby - 1, slice)) edge |= 16;
    if (!available(mbx + 1, mby - 1, slice)) edge |= 32;
    bool ok;
    if (hbd_)
        ok = recon_mb<Zan16u, Zan32s>(f_->y16.data() + static_cast<std::size_t>(16 * mby * ystride_ + 16 * mbx),
                                      f_->u16.data() + static_cast<std::size_t>(mbch_ * mby * cstride_ + 8 * mbx),
                                      f_->v16.data() + static_cast<std::size_t>(mbch_ * mby * cstride_ + 8 * mbx), mb,
                                      in, edge);
    else
        ok = recon_mb<Zan8u, Zan16s>(f_->y.data() + static_cast<std::size_t>(16 * mby * ystride_ + 16 * mbx),
                                     f_->u.data() + static_cast<std::size_t>(mbch_ * mby * cstride_ + 8 * mbx),
                                     f_->v.data() + static_cast<std::size_t>(mbch_ * mby * cstride_ + 8 * mbx), mb, in,
                                     edge);
    if (!ok) return err = "prediction needs a neighbour that is absent", false;
    return true;
}

template <class P, class C>
bool Picture::recon_mb(P* y, P* u, P* v, const Macroblock& mb, const MbInfo& in, Zan8u edge) {
    const int qpy = mb.qp + qp_bd_y_;  // QP'Y
    const Zan8u bypass = sps_.transform_bypass && qpy == 0 ? 1 : 0;
    C coef[sizeof mb.luma / sizeof mb.luma[0]];
    for (int i = 0; i < mb.luma_used; ++i) coef[i] = static_cast<C>(mb.luma[i]);
    C* cur = coef;
    const int m = qpy % 6;
    LumaArgs la{ystride_, mb.pattern, qpy, ls4_[0][m], bypass, sps_.bit_depth_luma};
    const int maxy = (1 << sps_.bit_depth_luma) - 1, maxc = (1 << sps_.bit_depth_chroma) - 1;
    ZanStatus st;
    if (bypass && mb.kind != kMbI16x16) {
        const int n = mb.kind == kMbI4x4 ? 4 : 8;
        C* p = coef;
        for (int b = 0; b < (n == 4 ? 16 : 4); ++b) {
            if (!(mb.pattern >> (n == 4 ? b + 1 : b) & 1)) continue;
            if (mb.modes[b] <= 1) accumulate(p, n, n, mb.modes[b] == 0);
            p += n * n;
        }
    }
    if (mb.kind == kMbI4x4) {
        st = luma4x4(&cur, y, la, mb.modes, edge);
    } else if (mb.kind == kMbI8x8) {
        la.pattern &= 15;
        la.scale = ls8_[0][m];
        st = luma8x8(&cur, y, la, mb.modes, edge);
    } else if (bypass && mb.mode16 <= 1) {
        la.pattern = 0;
        st = luma16x16(&cur, y, la, static_cast<Zan32u>(mb.mode16), edge);
        const C* dc = (mb.pattern & 1) ? coef : nullptr;
        const C* ac[16] = {};
        const C* p = coef + (dc ? 16 : 0);
        for (int b = 0; b < 16; ++b)
            if (mb.pattern >> (b + 1) & 1) {
                ac[block_y(b) * 4 + block_x(b)] = p;
                p += 16;
            }
        Zan32s r[256];
        lossless_plane(dc, ac, 4, 4, r);
        accumulate(r, 16, 16, mb.mode16 == 0);
        add_residual(y, ystride_, r, 16, 16, maxy);
    } else {
        st = luma16x16(&cur, y, la, static_cast<Zan32u>(mb.mode16), edge);
    }
    if (st != zanStsOk && st != 11) return false;

    C ccoef[sizeof mb.chroma / sizeof mb.chroma[0]];
    for (int i = 0; i < mb.chroma_used; ++i) ccoef[i] = static_cast<C>(mb.chroma[i]);
    cur = ccoef;
    const bool chroma_dpcm = bypass && (mb.chroma_mode == 1 || mb.chroma_mode == 2);
    const bool c422 = mbch_ == 16;
    const int qpc[2] = {in.qpc[0] + qp_bd_c_, in.qpc[1] + qp_bd_c_};  // QP'C
    ZanReconstructRecord rec[2];
    P* const uv[2] = {u, v};
    for (int c = 0; c < 2; ++c)
        rec[c] = ZanReconstructRecord{reinterpret_cast<void**>(&cur), uv[c], cstride_, chroma_dpcm ? 0u : mb.cpat[c],
                                      qpc[c], ls4_[1 + c][qpc[c] % 6], bypass, sps_.bit_depth_chroma};
    if (c422)
        st = chroma422(&cur, uv, rec, static_cast<Zan32u>(mb.chroma_mode), edge, ls4_[1][(qpc[0] + 3) % 6][0],
                       ls4_[2][(qpc[1] + 3) % 6][0]);
    else
        st = chroma420(&cur, uv, rec, static_cast<Zan32u>(mb.chroma_mode), edge);
    if (st != zanStsOk) return false;
    if (chroma_dpcm) {
        const int nblk = 2 * cbh_;
        const Zan32s* p = mb.chroma;
        const Zan32s* dc[2] = {};
        const Zan32s* ac[2][8] = {};
        for (int c = 0; c < 2; ++c)
            if (mb.cpat[c] & 1) {
                dc[c] = p;
                p += nblk;
            }
        for (int c = 0; c < 2; ++c)
            for (int b = 0; b < nblk; ++b)
                if (mb.cpat[c] >> (b + 1) & 1) {
                    ac[c][b] = p;
                    p += 16;
                }
        for (int c = 0; c < 2; ++c) {
            Zan32s r[128];
            lossless_plane(dc[c], ac[c], 2, cbh_, r);
            accumulate(r, 8, mbch_, mb.chroma_mode == 2);
            add_residual(uv[c], cstride_, r, 8, mbch_, maxc);
        }
    }
    return true;
}

void Picture::filter_mb(int mbx, int mby, const std::vector<SliceFilter>& slices) {
    const MbInfo& q = info_[static_cast<std::size_t>(mby * mbw_ + mbx)];
    const SliceFilter& sf = slices[static_cast<std::size_t>(q.slice)];
    if (sf.disable == 1) return;
    auto neighbour_ok = [&](int x, int yy) {
        if (x < 0 || yy < 0) return false;
        const MbInfo& p = info_[static_cast<std::size_t>(yy * mbw_ + x)];
        return !(sf.disable == 2 && p.slice != q.slice);
    };
    const bool left = neighbour_ok(mbx - 1, mby), top = neighbour_ok(mbx, mby - 1);
    // Boundary strengths by direction, edge and segment (before the 8x8
    // transform leaves out the luma edges 1 and 3).
    Zan8u strength[2][16];
    for (int dir = 0; dir < 2; ++dir)
        for (int e = 0; e < 4; ++e)
            for (int k = 0; k < 4; ++k) {
                Zan8u s = 0;
                if (e > 0 || (dir == 0 ? left : top)) {
                    const int qx = 4 * mbx + (dir == 0 ? e : k), qy = 4 * mby + (dir == 0 ? k : e);
                    s = static_cast<Zan8u>(edge_strength(dir == 0 ? qx - 1 : qx, dir == 0 ? qy : qy - 1, qx, qy, e == 0));
                }
                strength[dir][4 * e + k] = s;
            }
    // Luma then the two chroma planes; vertical edges, then horizontal.
    for (int plane = 0; plane < 3; ++plane) {
        const int qq = plane == 0 ? q.qp : q.qpc[plane - 1];
        for (int dir = 0; dir < 2; ++dir) {
            const bool outer = dir == 0 ? left : top;
            int qp_outer = qq;
            if (outer) {
                const MbInfo& p = info_[static_cast<std::size_t>(dir == 0 ? mby * mbw_ + mbx - 1 : (mby - 1) * mbw_ + mbx)];
                const int pq = plane == 0 ? p.qp : p.qpc[plane - 1];
                qp_outer = (pq + qq + 1) >> 1;
            }
            Zan8u alpha[2], beta[2], bs[16];
            const int qps[2] = {qp_outer, qq};
            int ia[2];
            for (int k = 0; k < 2; ++k) {
                ia[k] = std::clamp(qps[k] + sf.alpha_offset, 0, 51);
                const int ib = std::clamp(qps[k] + sf.beta_offset, 0, 51);
                alpha[k] = kAlpha[ia[k]];
                beta[k] = kBeta[ib];
            }
            for (int e = 0; e < 4; ++e)
                for (int k = 0; k < 4; ++k)
                    bs[4 * e + k] = plane == 0 && q.t8x8 && (e & 1) ? 0 : strength[dir][4 * e + k];
            auto tc0 = [&](int index_a, int s) -> Zan8u { return s >= 1 && s <= 3 ? kTc0[index_a][s - 1] : 0; };
            // The edge arrays in the layouts of the library's filters.
            Zan8u fbs[16] = {}, ftc[16] = {};
            const int kind = plane == 0 ? 0 : mbch_ == 16 ? 2 : 1;
            if (kind == 0) {
                for (int e = 0; e < 4; ++e)
                    for (int k = 0; k < 4; ++k) {
                        fbs[4 * e + k] = bs[4 * e + k];
                        ftc[4 * e + k] = tc0(e == 0 ? ia[0] : ia[1], bs[4 * e + k]);
                    }
            } else if (kind == 1 || dir == 0) {
                // Chroma edges 0 and 4 (4:2:0 both ways, 4:2:2 vertical)
                // follow luma edges 0 and 8.
                for (int k = 0; k < 4; ++k) {
                    fbs[k] = bs[k];
                    fbs[8 + k] = bs[8 + k];
                    ftc[k] = tc0(ia[0], bs[k]);
                    ftc[4 + k] = tc0(ia[1], bs[8 + k]);
                }
            } else {
                // 4:2:2 horizontal edges at rows 0, 4, 8 and 12.
                for (int e = 0; e < 4; ++e)
                    for (int k = 0; k < 4; ++k) {
                        fbs[4 * e + k] = bs[4 * e + k];
                        ftc[4 * e + k] = tc0(e == 0 ? ia[0] : ia[1], bs[4 * e + k]);
                    }
            }
            const int stride = plane == 0 ? ystride_ : cstride_;
            const std::size_t off = plane == 0 ? static_cast<std::size_t>(16 * mby * ystride_ + 16 * mbx)
                                               : static_cast<std::size_t>(mbch_ * mby * cstride_ + 8 * mbx);
            if (!hbd_) {
                Zan8u* p0 = (plane == 0 ? f_->y : plane == 1 ? f_->u : f_->v).data() + off;
                const ZanDeblockingRecord rec{p0, stride, alpha, beta, ftc, fbs, 8};
                if (kind == 0)
                    dir == 0 ? zaniFilterDeblockingLuma_VerEdge_H264_8u_C1IR(p0, stride, alpha, beta, ftc, fbs)
                             : zaniFilterDeblockingLuma_HorEdge_H264_8u_C1IR(p0, stride, alpha, beta, ftc, fbs);
                else if (kind == 1)
                    dir == 0 ? zaniFilterDeblockingChroma_VerEdge_H264_8u_C1IR(p0, stride, alpha, beta, ftc, fbs)
                             : zaniFilterDeblockingChroma_HorEdge_H264_8u_C1IR(p0, stride, alpha, beta, ftc, fbs);
                else
                    dir == 0 ? zaniFilterDeblockingChroma422VerEdge_H264_8u_C1IR(&rec)
                             : zaniFilterDeblockingChroma422HorEdge_H264_8u_C1IR(&rec);
            } else {
                // Deeper samples: thresholds scaled by 2^(bit depth - 8).
                const int depth = plane == 0 ? sps_.bit_depth_luma : sps_.bit_depth_chroma;
                Zan16u a16[2], b16[2], t16[16];
                for (int k = 0; k < 2; ++k) {
                    a16[k] = static_cast<Zan16u>(alpha[k] << (depth - 8));
                    b16[k] = static_cast<Zan16u>(beta[k] << (depth - 8));
                }
                for (int k = 0; k < 16; ++k) t16[k] = static_cast<Zan16u>(ftc[k] << (depth - 8));
                Zan16u* p0 = (plane == 0 ? f_->y16 : plane == 1 ? f_->u16 : f_->v16).data() + off;
                const ZanDeblockingRecord rec{p0, stride, a16, b16, t16, fbs, depth};
                if (kind == 0)
                    dir == 0 ? zaniFilterDeblockingLumaVerEdge_H264_16u_C1IR(&rec)
                             : zaniFilterDeblockingLumaHorEdge_H264_16u_C1IR(&rec);
                else if (kind == 1)
                    dir == 0 ? zaniFilterDeblockingChromaVerEdge_H264_16u_C1IR(&rec)
                             : zaniFilterDeblockingChromaHorEdge_H264_16u_C1IR(&rec);
                else
                    dir == 0 ? zaniFilterDeblockingChroma422VerEdge_H264_16u_C1IR(&rec)
                             : zaniFilterDeblockingChroma422HorEdge_H264_16u_C1IR(&rec);
            }
        }
    }
}

int Picture::edge_strength(int px, int py, int qx, int qy, bool mb_edge) const {
    const int cw = 4 * mbw_;
    const MbInfo& p = info_[static_cast<std::size_t>((py >> 2) * mbw_ + (px >> 2))];
    const MbInfo& q = info_[static_cast<std::size_t>((qy >> 2) * mbw_ + (qx >> 2))];
    if (is_intra(p.kind) || is_intra(q.kind)) return mb_edge ? 4 : 3;
    const std::size_t pc = static_cast<std::size_t>(py * cw + px), qc = static_cast<std::size_t>(qy * cw + qx);
    if (nz_[pc] || nz_[qc]) return 2;
    if (!mb_edge && q.one_motion) return 0;
    const MotionCell& a = f_->motion[pc];
    const MotionCell& b = f_->motion[qc];
    auto far = [](const std::int16_t* u, const std::int16_t* v) {
        return std::abs(u[0] - v[0]) >= 4 || std::abs(u[1] - v[1]) >= 4;
    };
    const int na = (a.ref[0] >= 0) + (a.ref[1] >= 0), nb = (b.ref[0] >= 0) + (b.ref[1] >= 0);
    if (na != nb) return 1;
    if (na == 1) {
        const int la = a.ref[0] >= 0 ? 0 : 1, lb = b.ref[0] >= 0 ? 0 : 1;
        if (a.uid[la] != b.uid[lb]) return 1;
        return far(a.mv[la], b.mv[lb]) ? 1 : 0;
    }
    // Two vectors each: the same two pictures, then the vectors matched by
    // picture.
    if (!((a.uid[0] == b.uid[0] && a.uid[1] == b.uid[1]) || (a.uid[0] == b.uid[1] && a.uid[1] == b.uid[0]))) return 1;
    if (a.uid[0] != a.uid[1]) {
        if (a.uid[0] == b.uid[0]) return far(a.mv[0], b.mv[0]) || far(a.mv[1], b.mv[1]) ? 1 : 0;
        return far(a.mv[0], b.mv[1]) || far(a.mv[1], b.mv[0]) ? 1 : 0;
    }
    return (far(a.mv[0], b.mv[0]) || far(a.mv[1], b.mv[1])) && (far(a.mv[0], b.mv[1]) || far(a.mv[1], b.mv[0])) ? 1
                                                                                                             : 0;
}

void Picture::deblock(const std::vector<SliceFilter>& slices) {
    for (int mby = 0; mby < mbh_; ++mby)
        for (int mbx = 0; mbx < mbw_; ++mbx)
            if (info_[static_cast<std::size_t>(mby * mbw_ + mbx)].slice >= 0) filter_mb(mbx, mby, slices);
}

template <class P>
static void append_plane(std::vector<unsigned char>& out, const P* base, int stride, int x0, int y0, int w, int h) {
    for (int r = 0; r < h; ++r) {
        const P* row = base + static_cast<std::size_t>((r + y0) * stride + x0);
        if constexpr (sizeof(P) == 1) {
            out.insert(out.end(), row, row + w);
        } else {  // 16-bit little-endian samples
            for (int j = 0; j < w; ++j) {
                out.push_back(static_cast<unsigned char>(row[j] & 0xff));
                out.push_back(static_cast<unsigned char>(row[j] >> 8));
            }
        }
    }
}

void Frame::output(DecodedFrame& f) const {
    const int w = 16 * mbw - crop_left - crop_right;
    const int h = 16 * mbh - crop_top - crop_bottom;
    const int ch = h * mbch / 16, cy = crop_top * mbch / 16;
    f.width = w;
    f.height = h;
    f.bit_depth = bit_depth_luma;
    f.chroma_format = chroma_format;
    f.data.clear();
    f.data.reserve(static_cast<std::size_t>(w * h + 2 * (w / 2) * ch) * (hbd ? 2 : 1));
    if (hbd) {
        append_plane(f.data, y16.data(), ystride, crop_left, crop_top, w, h);
        append_plane(f.data, u16.data(), cstride, crop_left / 2, cy, w / 2, ch);
        append_plane(f.data, v16.data(), cstride, crop_left / 2, cy, w / 2, ch);
    } else {
        append_plane(f.data, y.data(), ystride, crop_left, crop_top, w, h);
        append_plane(f.data, u.data(), cstride, crop_left / 2, cy, w / 2, ch);
        append_plane(f.data, v.data(), cstride, crop_left / 2, cy, w / 2, ch);
    }
}

}  // namespace h264ex
