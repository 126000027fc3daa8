#include "picture.h"

#include <algorithm>
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
int chroma_qp(int qpy, int offset) { return kChromaQp[std::clamp(qpy + offset, 0, 51)]; }

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
// vertical: down the columns; otherwise along the rows.
void accumulate(Zan16s* r, int w, int h, bool vertical) {
    for (int i = 0; i < h; ++i)
        for (int j = 0; j < w; ++j) {
            if (vertical && i > 0) r[i * w + j] = static_cast<Zan16s>(r[i * w + j] + r[(i - 1) * w + j]);
            if (!vertical && j > 0) r[i * w + j] = static_cast<Zan16s>(r[i * w + j] + r[i * w + j - 1]);
        }
}

// Adds an n x n residual to the picture with clipping.
void add_residual(Zan8u* dst, int stride, const Zan16s* r, int w, int h) {
    for (int i = 0; i < h; ++i)
        for (int j = 0; j < w; ++j)
            dst[i * stride + j] = static_cast<Zan8u>(std::clamp(dst[i * stride + j] + r[i * w + j], 0, 255));
}

// Assembles the untransformed residual of a 16x16 luma or 8x8 chroma plane
// from its DC values and AC blocks (lossless macroblocks).
void lossless_plane(const Zan16s* dc, const Zan16s* const* ac, int blocks_w, int blocks_h, Zan16s* r) {
    const int n = 4 * blocks_w;
    for (int by = 0; by < blocks_h; ++by)
        for (int bx = 0; bx < blocks_w; ++bx) {
            const int b = by * blocks_w + bx;
            for (int k = 0; k < 16; ++k) {
                Zan16s v = 0;
                if (k == 0) v = dc ? dc[b] : 0;
                else if (ac[b]) v = ac[b][k];
                r[(4 * by + (k >> 2)) * n + 4 * bx + (k & 3)] = v;
            }
        }
}

}  // namespace

bool Picture::init(const Sps& sps, const Pps& pps) {
    sps_ = sps;
    mbw_ = sps.mb_width;
    mbh_ = sps.mb_height;
    ystride_ = 16 * mbw_;
    cstride_ = 8 * mbw_;
    mbch_ = sps.chroma_format_idc == 2 ? 16 : 8;
    cbh_ = mbch_ / 4;
    y_.assign(static_cast<std::size_t>(ystride_) * 16 * static_cast<std::size_t>(mbh_), 0);
    u_.assign(static_cast<std::size_t>(cstride_ * mbch_) * static_cast<std::size_t>(mbh_), 0);
    v_ = u_;
    info_.assign(static_cast<std::size_t>(mbw_ * mbh_), MbInfo{});
    mode_.assign(static_cast<std::size_t>(16 * mbw_ * mbh_), 2);
    total_.assign(mode_.size(), 0);
    total_c_[0].assign(static_cast<std::size_t>(2 * cbh_ * mbw_ * mbh_), 0);
    total_c_[1] = total_c_[0];
    chroma_qp_offset_[0] = pps.chroma_qp_offset[0];
    chroma_qp_offset_[1] = pps.chroma_qp_offset[1];
    for (int l = 0; l < 3; ++l)
        for (int m = 0; m < 6; ++m)
            for (int k = 0; k < 16; ++k) {
                const int pos = kZigzag4x4[k];
                ls4_[l][m][pos] = static_cast<Zan16s>(pps.scaling4x4[l][k] * norm4(m, pos));
            }
    for (int m = 0; m < 6; ++m)
        for (int k = 0; k < 64; ++k) {
            const int pos = kZigzag8x8[k];
            ls8_[m][pos] = static_cast<Zan16s>(pps.scaling8x8[0][k] * norm8(m, pos));
        }
    return true;
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
    Zan8u* y = y_.data() + static_cast<std::size_t>(16 * mby * ystride_ + 16 * mbx);
    Zan8u* u = u_.data() + static_cast<std::size_t>(mbch_ * mby * cstride_ + 8 * mbx);
    Zan8u* v = v_.data() + static_cast<std::size_t>(mbch_ * mby * cstride_ + 8 * mbx);
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
    in.t8x8 = mb.kind == kMbI8x8;
    if (mb.kind == kMbPcm) {
        in.qp = 0;
        for (int r = 0; r < 16; ++r)
            for (int c = 0; c < 16; ++c) y[r * ystride_ + c] = static_cast<Zan8u>(mb.pcm[16 * r + c]);
        for (int r = 0; r < mbch_; ++r)
            for (int c = 0; c < 8; ++c) {
                u[r * cstride_ + c] = static_cast<Zan8u>(mb.pcm[256 + 8 * r + c]);
                v[r * cstride_ + c] = static_cast<Zan8u>(mb.pcm[256 + 8 * mbch_ + 8 * r + c]);
            }
        in.qpc[0] = chroma_qp(0, chroma_qp_offset_[0]);
        in.qpc[1] = chroma_qp(0, chroma_qp_offset_[1]);
        return true;
    }
    in.qp = mb.qp;
    in.qpc[0] = chroma_qp(mb.qp, pps.chroma_qp_offset[0]);
    in.qpc[1] = chroma_qp(mb.qp, pps.chroma_qp_offset[1]);

    Zan8u edge = 0;
    if (!available(mbx - 1, mby, slice)) edge |= 1;
    if (!available(mbx, mby - 1, slice)) edge |= 4;
    if (!available(mbx - 1, mby - 1, slice)) edge |= 16;
    if (!available(mbx + 1, mby - 1, slice)) edge |= 32;
    const Zan8u bypass = sps_.transform_bypass && mb.qp == 0 ? 1 : 0;

    Zan16s coef[sizeof mb.luma / sizeof mb.luma[0]];
    std::memcpy(coef, mb.luma, sizeof(Zan16s) * static_cast<std::size_t>(mb.luma_used));
    Zan16s* cur = coef;
    const int m = mb.qp % 6;
    ZanStatus st;
    if (bypass && mb.kind != kMbI16x16) {
        const int n = mb.kind == kMbI4x4 ? 4 : 8;
        Zan16s* p = coef;
        for (int b = 0; b < (n == 4 ? 16 : 4); ++b) {
            if (!(mb.pattern >> (n == 4 ? b + 1 : b) & 1)) continue;
            if (mb.modes[b] <= 1) accumulate(p, n, n, mb.modes[b] == 0);
            p += n * n;
        }
    }
    if (mb.kind == kMbI4x4)
        st = zaniReconstructLumaIntra4x4MB_H264_16s8u_C1R(&cur, y, ystride_, mb.modes, mb.pattern, mb.qp, edge,
                                                          ls4_[0][m], bypass);
    else if (mb.kind == kMbI8x8)
        st = zaniReconstructLumaIntra8x8MB_H264_16s8u_C1R(&cur, y, ystride_, mb.modes, mb.pattern & 15, mb.qp, edge,
                                                          ls8_[m], bypass);
    else if (bypass && mb.mode16 <= 1) {
        st = zaniReconstructLumaIntra_16x16MB_H264_16s8u_C1R(&cur, y, ystride_, static_cast<Zan32u>(mb.mode16), 0,
                                                             mb.qp, edge, ls4_[0][m], bypass);
        const Zan16s* dc = (mb.pattern & 1) ? coef : nullptr;
        const Zan16s* ac[16] = {};
        const Zan16s* p = coef + (dc ? 16 : 0);
        for (int b = 0; b < 16; ++b)
            if (mb.pattern >> (b + 1) & 1) {
                ac[block_y(b) * 4 + block_x(b)] = p;
                p += 16;
            }
        Zan16s r[256];
        lossless_plane(dc, ac, 4, 4, r);
        accumulate(r, 16, 16, mb.mode16 == 0);
        add_residual(y, ystride_, r, 16, 16);
    } else
        st = zaniReconstructLumaIntra_16x16MB_H264_16s8u_C1R(&cur, y, ystride_, static_cast<Zan32u>(mb.mode16),
                                                             mb.pattern, mb.qp, edge, ls4_[0][m], bypass);
    if (st != zanStsOk && st != 11) return err = "luma prediction needs a neighbour that is absent", false;

    Zan16s ccoef[sizeof mb.chroma / sizeof mb.chroma[0]];
    std::memcpy(ccoef, mb.chroma, sizeof(Zan16s) * static_cast<std::size_t>(mb.chroma_used));
    cur = ccoef;
    const bool chroma_dpcm = bypass && (mb.chroma_mode == 1 || mb.chroma_mode == 2);
    const bool c422 = mbch_ == 16;
    if (c422) {
        // The residual decoder leaves 4:2:2 DC values in raster order; the
        // reconstruction takes them in coded order.
        static const int kScan422[8] = {0, 2, 1, 4, 6, 3, 5, 7};
        Zan16s* p = ccoef;
        for (int c = 0; c < 2; ++c)
            if (mb.cpat[c] & 1) {
                Zan16s t[8];
                for (int k = 0; k < 8; ++k) t[k] = p[kScan422[k]];
                std::memcpy(p, t, sizeof t);
                p += 8;
            }
    }
    if (c422) {
        ZanReconstructRecord rec[2];
        const ZanReconstructRecord* recs[2] = {&rec[0], &rec[1]};
        void** cursor = reinterpret_cast<void**>(&cur);
        for (int c = 0; c < 2; ++c)
            rec[c] = ZanReconstructRecord{cursor, c == 0 ? u : v, cstride_, chroma_dpcm ? 0u : mb.cpat[c], in.qpc[c],
                                          ls4_[1 + c][in.qpc[c] % 6], bypass, 8};
        st = zaniReconstructChroma422Intra4x4_H264High_16s8u_IP2R(recs, static_cast<Zan32u>(mb.chroma_mode), edge,
                                                                  ls4_[1][(in.qpc[0] + 3) % 6][0],
                                                                  ls4_[2][(in.qpc[1] + 3) % 6][0]);
    } else {
        st = zaniReconstructChromaIntra4x4MB_H264_16s8u_P2R(&cur, u, v, static_cast<Zan32u>(cstride_),
                                                            static_cast<Zan32u>(mb.chroma_mode),
                                                            chroma_dpcm ? 0u : mb.pattern & 0x7fe0000u, in.qpc[0],
                                                            in.qpc[1], edge, ls4_[1][in.qpc[0] % 6],
                                                            ls4_[2][in.qpc[1] % 6], bypass);
    }
    if (st == zanStsOk && chroma_dpcm) {
        const int nblk = 2 * cbh_;
        const Zan16s* p = mb.chroma;
        const Zan16s* dc[2] = {};
        const Zan16s* ac[2][8] = {};
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
            Zan16s r[128];
            lossless_plane(dc[c], ac[c], 2, cbh_, r);
            accumulate(r, 8, mbch_, mb.chroma_mode == 2);
            add_residual(c == 0 ? u : v, cstride_, r, 8, mbch_);
        }
    }
    if (st != zanStsOk) return err = "chroma prediction needs a neighbour that is absent", false;
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
            Zan8u alpha[2], beta[2], bs[16], tc[16];
            const int qps[2] = {qp_outer, qq};
            int ia[2];
            for (int k = 0; k < 2; ++k) {
                ia[k] = std::clamp(qps[k] + sf.alpha_offset, 0, 51);
                const int ib = std::clamp(qps[k] + sf.beta_offset, 0, 51);
                alpha[k] = kAlpha[ia[k]];
                beta[k] = kBeta[ib];
            }
            for (int e = 0; e < 4; ++e) {
                Zan8u s = 3;
                if (e == 0) s = outer ? 4 : 0;
                if (plane == 0 && q.t8x8 && (e & 1)) s = 0;
                for (int k = 0; k < 4; ++k) bs[4 * e + k] = s;
            }
            ZanStatus st;
            if (plane == 0) {
                for (int e = 0; e < 4; ++e)
                    for (int k = 0; k < 4; ++k) tc[4 * e + k] = kTc0[e == 0 ? ia[0] : ia[1]][2];
                Zan8u* p0 = y_.data() + static_cast<std::size_t>(16 * mby * ystride_ + 16 * mbx);
                st = dir == 0 ? zaniFilterDeblockingLuma_VerEdge_H264_8u_C1IR(p0, ystride_, alpha, beta, tc, bs)
                              : zaniFilterDeblockingLuma_HorEdge_H264_8u_C1IR(p0, ystride_, alpha, beta, tc, bs);
            } else {
                Zan8u* p0 = (plane == 1 ? u_ : v_).data() + static_cast<std::size_t>(mbch_ * mby * cstride_ + 8 * mbx);
                if (mbch_ == 16) {
                    // 4:2:2: vertical edges 0 and 4 over 16 rows; horizontal
                    // edges at rows 0, 4, 8 and 12.
                    Zan8u cbs[16] = {}, ctc[16] = {};
                    if (dir == 0) {
                        for (int k = 0; k < 4; ++k) {
                            cbs[k] = bs[k];
                            cbs[8 + k] = 3;
                            ctc[k] = kTc0[ia[0]][2];
                            ctc[4 + k] = kTc0[ia[1]][2];
                        }
                    } else {
                        for (int e = 0; e < 4; ++e)
                            for (int k = 0; k < 4; ++k) {
                                cbs[4 * e + k] = e == 0 ? bs[k] : 3;
                                ctc[4 * e + k] = kTc0[e == 0 ? ia[0] : ia[1]][2];
                            }
                    }
                    const ZanDeblockingRecord rec{p0, cstride_, alpha, beta, ctc, cbs, 8};
                    st = dir == 0 ? zaniFilterDeblockingChroma422VerEdge_H264_8u_C1IR(&rec)
                                  : zaniFilterDeblockingChroma422HorEdge_H264_8u_C1IR(&rec);
                } else {
                    // 4:2:0: chroma edges 0 and 4 follow luma edges 0 and 8.
                    Zan8u cbs[16] = {};
                    for (int k = 0; k < 4; ++k) {
                        cbs[k] = bs[k];
                        cbs[8 + k] = 3;
                    }
                    for (int k = 0; k < 4; ++k) {
                        tc[k] = kTc0[ia[0]][2];
                        tc[4 + k] = kTc0[ia[1]][2];
                    }
                    st = dir == 0 ? zaniFilterDeblockingChroma_VerEdge_H264_8u_C1IR(p0, cstride_, alpha, beta, tc, cbs)
                                  : zaniFilterDeblockingChroma_HorEdge_H264_8u_C1IR(p0, cstride_, alpha, beta, tc, cbs);
                }
            }
            (void)st;
        }
    }
}

void Picture::deblock(const std::vector<SliceFilter>& slices) {
    for (int mby = 0; mby < mbh_; ++mby)
        for (int mbx = 0; mbx < mbw_; ++mbx)
            if (info_[static_cast<std::size_t>(mby * mbw_ + mbx)].slice >= 0) filter_mb(mbx, mby, slices);
}

bool Picture::write(std::FILE* f) const {
    const int w = 16 * mbw_ - sps_.crop_left - sps_.crop_right;
    const int h = 16 * mbh_ - sps_.crop_top - sps_.crop_bottom;
    for (int r = 0; r < h; ++r)
        if (std::fwrite(y_.data() + static_cast<std::size_t>((r + sps_.crop_top) * ystride_ + sps_.crop_left), 1,
                        static_cast<std::size_t>(w), f) != static_cast<std::size_t>(w))
            return false;
    for (const auto* pl : {&u_, &v_})
        for (int r = 0; r < h * mbch_ / 16; ++r)
            if (std::fwrite(pl->data() + static_cast<std::size_t>((r + sps_.crop_top * mbch_ / 16) * cstride_ +
                                                                  sps_.crop_left / 2),
                            1, static_cast<std::size_t>(w / 2), f) != static_cast<std::size_t>(w / 2))
                return false;
    return true;
}

}  // namespace h264ex
