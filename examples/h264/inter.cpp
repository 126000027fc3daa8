// Inter macroblocks of the H.264 example decoder: motion vector prediction,
// P_Skip, spatial and temporal direct prediction, motion-compensated
// prediction through the library's block interpolation (which reads through
// the picture boundary) and weighting, and the inter residual through the
// library's reconstruction.
#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "picture.h"

namespace h264ex {

namespace {

inline int median3(int a, int b, int c) { return std::max(std::min(a, b), std::min(std::max(a, b), c)); }
inline int min_positive(int a, int b) { return a >= 0 && b >= 0 ? std::min(a, b) : std::max(a, b); }

bool same_motion(const MotionCell& a, const MotionCell& b) {
    for (int l = 0; l < 2; ++l) {
        if (a.ref[l] != b.ref[l]) return false;
        if (a.ref[l] >= 0 && (a.uid[l] != b.uid[l] || a.mv[l][0] != b.mv[l][0] || a.mv[l][1] != b.mv[l][1]))
            return false;
    }
    return true;
}

// The implicit weights of a pair of reference pictures.
void implicit_weights(int poc, const Frame* f0, const Frame* f1, int& w0, int& w1) {
    w0 = w1 = 32;
    const int diff = f1->poc - f0->poc;
    if (diff == 0 || f0->long_ref || f1->long_ref) return;
    const int tb = std::clamp(poc - f0->poc, -128, 127), td = std::clamp(diff, -128, 127);
    const int tx = (16384 + std::abs(td / 2)) / td;
    const int dsf = std::clamp((tb * tx + 32) >> 6, -1024, 1023);
    if ((dsf >> 2) < -64 || (dsf >> 2) > 128) return;
    w0 = 64 - (dsf >> 2);
    w1 = dsf >> 2;
}

// Motion-compensated block from one reference through the library, luma
// and chroma (4:2:0), 8-bit and deeper samples.
ZanStatus interp_luma(const Frame* f, Zan8u* dst, int dstep, int px, int py, int w, int h, const std::int16_t* mv) {
    ZanInterpolateBlockRecord r{};
    r.pSrc[0] = f->y.data();
    r.srcStep = f->ystride;
    r.pDst[0] = dst;
    r.dstStep = dstep;
    r.sizeFrame = {16 * f->mbw, 16 * f->mbh};
    r.sizeBlock = {w, h};
    r.pointBlockPos = {px, py};
    r.pointVector = {mv[0], mv[1]};
    return zaniInterpolateLumaBlock_H264_8u_P1R(&r);
}
ZanStatus interp_luma(const Frame* f, Zan16u* dst, int dstep, int px, int py, int w, int h, const std::int16_t* mv) {
    ZanInterpolateBlockRecord_16u r{};
    r.pSrc[0] = f->y16.data();
    r.srcStep = f->ystride;
    r.pDst[0] = dst;
    r.dstStep = dstep;
    r.sizeFrame = {16 * f->mbw, 16 * f->mbh};
    r.sizeBlock = {w, h};
    r.pointBlockPos = {px, py};
    r.pointVector = {mv[0], mv[1]};
    r.bitDepth = f->bit_depth_luma;
    return zaniInterpolateLumaBlock_H264_16u_P1R(&r);
}
ZanStatus interp_chroma(const Frame* f, Zan8u* du, Zan8u* dv, int dstep, int px, int py, int w, int h,
                        const std::int16_t* mv) {
    ZanInterpolateBlockRecord r{};
    r.pSrc[0] = f->u.data();
    r.pSrc[1] = f->v.data();
    r.srcStep = f->cstride;
    r.pDst[0] = du;
    r.pDst[1] = dv;
    r.dstStep = dstep;
    r.sizeFrame = {8 * f->mbw, 8 * f->mbh};
    r.sizeBlock = {w, h};
    r.pointBlockPos = {px, py};
    r.pointVector = {mv[0], mv[1]};
    return zaniInterpolateChromaBlock_H264_8u_P2R(&r);
}
ZanStatus interp_chroma(const Frame* f, Zan16u* du, Zan16u* dv, int dstep, int px, int py, int w, int h,
                        const std::int16_t* mv) {
    ZanInterpolateBlockRecord_16u r{};
    r.pSrc[0] = f->u16.data();
    r.pSrc[1] = f->v16.data();
    r.srcStep = f->cstride;
    r.pDst[0] = du;
    r.pDst[1] = dv;
    r.dstStep = dstep;
    r.sizeFrame = {8 * f->mbw, 8 * f->mbh};
    r.sizeBlock = {w, h};
    r.pointBlockPos = {px, py};
    r.pointVector = {mv[0], mv[1]};
    r.bitDepth = f->bit_depth_chroma;
    return zaniInterpolateChromaBlock_H264_16u_P2R(&r);
}

// Combination of two predictions (t0 list 0, t1 list 1, row step ts) into
// dst: 0 plain average, 1 explicit weights, 2 implicit weights.
ZanStatus combine(const Zan8u* t0, const Zan8u* t1, int ts, Zan8u* dst, int dstep, int w, int h, int mode,
                  int log2wd, int w0, int o0, int w1, int o1, int) {
    if (mode == 0)
        return zaniInterpolateBlock_H264_8u_P3P1R(t0, t1, dst, static_cast<Zan32u>(w), static_cast<Zan32u>(h), ts, ts,
                                                  dstep);
    if (mode == 1) return zaniBiDirWeightBlock_H264_8u_P3P1R(t0, t1, dst, ts, ts, dstep, log2wd, w0, o0, w1, o1, {w, h});
    return zaniBiDirWeightBlockImplicit_H264_8u_P3P1R(t0, t1, dst, ts, ts, dstep, w0, w1, {w, h});
}
ZanStatus combine(const Zan16u* t0, const Zan16u* t1, int ts, Zan16u* dst, int dstep, int w, int h, int mode,
                  int log2wd, int w0, int o0, int w1, int o1, int depth) {
    const ZanBidirRecord r{t0, ts, t1, ts, dst, dstep, depth, w, h};
    if (mode == 0) return zaniBidir_H264_16u_P2P1R(&r);
    if (mode == 1) return zaniBidirWeight_H264_16u_P2P1R(&r, log2wd, w0, o0, w1, o1);
    return zaniBidirWeightImplicit_H264_16u_P2P1R(&r, w0, w1);
}
ZanStatus weight_one(Zan8u* dst, int dstep, int w, int h, int log2wd, int wt, int o, int) {
    return zaniUniDirWeightBlock_H264_8u_C1R(dst, dstep, log2wd, wt, o, {w, h});
}
ZanStatus weight_one(Zan16u* dst, int dstep, int w, int h, int log2wd, int wt, int o, int depth) {
    return zaniUnidirWeight_H264_16u_IP2P1R(dst, dstep, log2wd, wt, o, {w, h}, depth);
}

template <class P>
P* plane_of(Frame* f, int c);
template <>
Zan8u* plane_of<Zan8u>(Frame* f, int c) {
    return (c == 0 ? f->y : c == 1 ? f->u : f->v).data();
}
template <>
Zan16u* plane_of<Zan16u>(Frame* f, int c) {
    return (c == 0 ? f->y16 : c == 1 ? f->u16 : f->v16).data();
}

}  // namespace

void Picture::skipped(int qp, Macroblock& mb) {
    mb.kind = kMbSkip;
    mb.shape = kPart16x16;
    mb.t8x8 = false;
    mb.pattern = 0;
    mb.cpat[0] = mb.cpat[1] = 0;
    mb.cbp_luma = mb.cbp_chroma = 0;
    mb.luma_used = mb.chroma_used = 0;
    std::memset(mb.total, 0, sizeof mb.total);
    std::memset(mb.total_c, 0, sizeof mb.total_c);
    mb.qp = qp;
}

Picture::Nb Picture::neighbour(int mbx, int mby, int x, int y, int list) const {
    Nb n{false, -1, {0, 0}};
    if (x >= 16) {
        if (y >= 0) return n;  // right of the macroblock: not decoded yet
        if (!available(mbx + 1, mby - 1, slice_)) return n;
    } else if (x >= 0 && y >= 0) {
        if (!done_[(y >> 2) * 4 + (x >> 2)]) return n;
    } else if (!available(mbx + (x < 0 ? -1 : 0), mby + (y < 0 ? -1 : 0), slice_)) {
        return n;
    }
    n.avail = true;
    const MotionCell& c =
        f_->motion[static_cast<std::size_t>(((16 * mby + y) >> 2) * 4 * mbw_ + ((16 * mbx + x) >> 2))];
    n.ref = c.ref[list];
    if (n.ref >= 0) {
        n.mv[0] = c.mv[list][0];
        n.mv[1] = c.mv[list][1];
    }
    return n;
}

// Motion vector predictor of the partition at (x, y), w x h in the
// macroblock; hint 1 for a 16x8 partition, 2 for an 8x16 one.
void Picture::predict_mv(int mbx, int mby, int x, int y, int w, int h, int list, int ref, int hint, int mv[2]) const {
    (void)h;
    const Nb a = neighbour(mbx, mby, x - 1, y, list), b = neighbour(mbx, mby, x, y - 1, list);
    Nb c = neighbour(mbx, mby, x + w, y - 1, list);
    if (!c.avail) c = neighbour(mbx, mby, x - 1, y - 1, list);
    const Nb* pick = nullptr;
    if (hint == 1) pick = y == 0 ? (b.ref == ref ? &b : nullptr) : (a.ref == ref ? &a : nullptr);
    if (hint == 2) pick = x == 0 ? (a.ref == ref ? &a : nullptr) : (c.ref == ref ? &c : nullptr);
    if (!pick && !b.avail && !c.avail && a.avail) pick = &a;
    if (!pick) {
        const int match = (a.ref == ref) + (b.ref == ref) + (c.ref == ref);
        if (match == 1) pick = a.ref == ref ? &a : b.ref == ref ? &b : &c;
    }
    if (pick) {
        mv[0] = pick->mv[0];
        mv[1] = pick->mv[1];
    } else {
        mv[0] = median3(a.mv[0], b.mv[0], c.mv[0]);
        mv[1] = median3(a.mv[1], b.mv[1], c.mv[1]);
    }
}

bool Picture::set_cells(int mbx, int mby, int x, int y, int w, int h, const int ref[2], const int mv[2][2],
                        std::string& err) {
    MotionCell m;
    std::memset(&m, 0, sizeof m);
    for (int l = 0; l < 2; ++l) {
        m.ref[l] = static_cast<std::int8_t>(ref[l] < 0 ? -1 : ref[l]);
        if (ref[l] < 0) continue;
        const std::vector<Frame*>& list = sc_->list[l];
        if (ref[l] >= static_cast<int>(list.size()) || !list[static_cast<std::size_t>(ref[l])])
            return err = "reference picture missing", false;
        m.uid[l] = list[static_cast<std::size_t>(ref[l])]->uid;
        if (mv[l][0] < -32768 || mv[l][0] > 32767 || mv[l][1] < -32768 || mv[l][1] > 32767)
            return err = "motion vector out of range", false;
        m.mv[l][0] = static_cast<std::int16_t>(mv[l][0]);
        m.mv[l][1] = static_cast<std::int16_t>(mv[l][1]);
    }
    for (int r = y >> 2; r < (y + h) >> 2; ++r)
        for (int c = x >> 2; c < (x + w) >> 2; ++c) {
            f_->motion[static_cast<std::size_t>((4 * mby + r) * 4 * mbw_ + 4 * mbx + c)] = m;
            done_[r * 4 + c] = true;
        }
    return true;
}

// Reference indices and vector predictors of spatial direct prediction (the
// whole macroblock's neighbours); true when both indices are absent, so
// that the prediction is from index 0 of both lists with zero vectors.
bool Picture::spatial_predictors(int mbx, int mby, int sref[2], int smv[2][2]) const {
    for (int l = 0; l < 2; ++l) {
        const Nb a = neighbour(mbx, mby, -1, 0, l), b = neighbour(mbx, mby, 0, -1, l);
        Nb c = neighbour(mbx, mby, 16, -1, l);
        if (!c.avail) c = neighbour(mbx, mby, -1, -1, l);
        sref[l] = min_positive(a.ref, min_positive(b.ref, c.ref));
    }
    smv[0][0] = smv[0][1] = smv[1][0] = smv[1][1] = 0;
    if (sref[0] < 0 && sref[1] < 0) {
        sref[0] = sref[1] = 0;
        return true;
    }
    for (int l = 0; l < 2; ++l)
        if (sref[l] >= 0) predict_mv(mbx, mby, 0, 0, 16, 16, l, sref[l], 0, smv[l]);
    return false;
}

// Direct prediction of the 8x8 quarter b8 of a macroblock.
bool Picture::direct(int mbx, int mby, int b8, const int sref[2], const int smv[2][2], bool zero, std::string& err) {
    if (sc_->list[1].empty() || !sc_->list[1][0]) return err = "reference picture missing", false;
    const Frame* col = sc_->list[1][0];
    const int x8 = (b8 & 1) * 8, y8 = (b8 >> 1) * 8;
    // With 8x8 inference the co-located corner block decides the whole 8x8.
    const int blocks = sc_->direct_8x8_inference ? 1 : 4, size = sc_->direct_8x8_inference ? 8 : 4;
    for (int j = 0; j < blocks; ++j) {
        const int cx = x8 / 4 + (j & 1), cy = y8 / 4 + (j >> 1);
        const int ccx = sc_->direct_8x8_inference ? (b8 & 1) * 3 : cx;
        const int ccy = sc_->direct_8x8_inference ? (b8 >> 1) * 3 : cy;
        const MotionCell& cc = col->motion[static_cast<std::size_t>((4 * mby + ccy) * 4 * mbw_ + 4 * mbx + ccx)];
        int ref_col = -1, uid_col = 0, mv_col[2] = {0, 0};
        for (int l = 0; l < 2 && ref_col < 0; ++l)
            if (cc.ref[l] >= 0) {
                ref_col = cc.ref[l];
                uid_col = cc.uid[l];
                mv_col[0] = cc.mv[l][0];
                mv_col[1] = cc.mv[l][1];
            }
        int ref[2], mv[2][2] = {{0, 0}, {0, 0}};
        if (sc_->direct_spatial) {
            const bool col_zero = !col->long_ref && ref_col == 0 && std::abs(mv_col[0]) <= 1 && std::abs(mv_col[1]) <= 1;
            for (int l = 0; l < 2; ++l) {
                ref[l] = sref[l];
                if (ref[l] < 0 || zero || (ref[l] == 0 && col_zero)) continue;
                mv[l][0] = smv[l][0];
                mv[l][1] = smv[l][1];
            }
        } else {
            ref[0] = 0;
            ref[1] = 0;
            // The lowest list-0 index of the picture the co-located block
            // referred to; a stream whose list 0 lacks that picture gets
            // index 0.
            if (ref_col >= 0)
                for (std::size_t i = 0; i < sc_->list[0].size(); ++i)
                    if (sc_->list[0][i] && sc_->list[0][i]->uid == uid_col) {
                        ref[0] = static_cast<int>(i);
                        break;
                    }
            const Frame* f0 = sc_->list[0].empty() ? nullptr : sc_->list[0][static_cast<std::size_t>(ref[0])];
            if (!f0) return err = "reference picture missing", false;
            const int diff = col->poc - f0->poc;
            if (diff == 0 || f0->long_ref) {
                mv[0][0] = mv_col[0];
                mv[0][1] = mv_col[1];
            } else {
                const int tb = std::clamp(sc_->poc - f0->poc, -128, 127), td = std::clamp(diff, -128, 127);
                const int tx = (16384 + std::abs(td / 2)) / td;
                const int dsf = std::clamp((tb * tx + 32) >> 6, -1024, 1023);
                for (int k = 0; k < 2; ++k) {
                    mv[0][k] = (dsf * mv_col[k] + 128) >> 8;
                    mv[1][k] = mv[0][k] - mv_col[k];
                }
            }
        }
        if (!set_cells(mbx, mby, 4 * cx, 4 * cy, size, size, ref, mv, err)) return false;
    }
    return true;
}

bool Picture::motion(int mbx, int mby, const Macroblock& mb, std::string& err) {
    std::fill(done_, done_ + 16, false);
    const bool b_slice = sc_->type == kSliceB;
    if (mb.kind == kMbSkip && !b_slice) {  // P_Skip
        const Nb a = neighbour(mbx, mby, -1, 0, 0), b = neighbour(mbx, mby, 0, -1, 0);
        int mv[2][2] = {{0, 0}, {0, 0}};
        const int ref[2] = {0, -1};
        if (a.avail && b.avail && !(a.ref == 0 && a.mv[0] == 0 && a.mv[1] == 0) &&
            !(b.ref == 0 && b.mv[0] == 0 && b.mv[1] == 0))
            predict_mv(mbx, mby, 0, 0, 16, 16, 0, 0, 0, mv[0]);
        return set_cells(mbx, mby, 0, 0, 16, 16, ref, mv, err);
    }
    int sref[2] = {-1, -1}, smv[2][2] = {{0, 0}, {0, 0}};
    bool zero = false;
    const bool any_direct = mb.kind == kMbSkip || mb.kind == kMbDirect16x16 ||
                            (mb.shape == kPart8x8 && (!mb.pred[0] || !mb.pred[1] || !mb.pred[2] || !mb.pred[3]));
    if (b_slice && any_direct && sc_->direct_spatial) zero = spatial_predictors(mbx, mby, sref, smv);
    if (mb.kind == kMbSkip || mb.kind == kMbDirect16x16) {
        for (int b8 = 0; b8 < 4; ++b8)
            if (!direct(mbx, mby, b8, sref, smv, zero, err)) return false;
        return true;
    }
    auto part = [&](int x, int y, int w, int h, int pred, int k, int j, int hint) {
        int ref[2], mv[2][2] = {{0, 0}, {0, 0}};
        for (int l = 0; l < 2; ++l) {
            ref[l] = (pred >> l & 1) ? mb.ref[l][k] : -1;
            if (ref[l] < 0) continue;
            predict_mv(mbx, mby, x, y, w, h, l, ref[l], hint, mv[l]);
            const int idx = mb.shape == kPart8x8 ? 4 * k + j : k;
            mv[l][0] += mb.mvd[l][idx][0];
            mv[l][1] += mb.mvd[l][idx][1];
        }
        return set_cells(mbx, mby, x, y, w, h, ref, mv, err);
    };
    switch (mb.shape) {
    case kPart16x16:
        return part(0, 0, 16, 16, mb.pred[0], 0, 0, 0);
    case kPart16x8:
        return part(0, 0, 16, 8, mb.pred[0], 0, 0, 1) && part(0, 8, 16, 8, mb.pred[1], 1, 0, 1);
    case kPart8x16:
        return part(0, 0, 8, 16, mb.pred[0], 0, 0, 2) && part(8, 0, 8, 16, mb.pred[1], 1, 0, 2);
    case kPart8x8:
        for (int k = 0; k < 4; ++k) {
            const int x8 = (k & 1) * 8, y8 = (k >> 1) * 8;
            if (!mb.pred[k]) {
                if (!direct(mbx, mby, k, sref, smv, zero, err)) return false;
                continue;
            }
            bool ok = true;
            switch (mb.sub[k]) {
            case kSub8x8:
                ok = part(x8, y8, 8, 8, mb.pred[k], k, 0, 0);
                break;
            case kSub8x4:
                ok = part(x8, y8, 8, 4, mb.pred[k], k, 0, 0) && part(x8, y8 + 4, 8, 4, mb.pred[k], k, 1, 0);
                break;
            case kSub4x8:
                ok = part(x8, y8, 4, 8, mb.pred[k], k, 0, 0) && part(x8 + 4, y8, 4, 8, mb.pred[k], k, 1, 0);
                break;
            case kSub4x4:
                for (int j = 0; j < 4 && ok; ++j)
                    ok = part(x8 + 4 * (j & 1), y8 + 4 * (j >> 1), 4, 4, mb.pred[k], k, j, 0);
                break;
            }
            if (!ok) return false;
        }
        return true;
    }
    return true;
}

template <class P>
bool Picture::predict_block(int mbx, int mby, int x, int y, int w, int h, std::string& err) {
    const MotionCell& c = f_->motion[static_cast<std::size_t>((4 * mby + (y >> 2)) * 4 * mbw_ + 4 * mbx + (x >> 2))];
    const int px = 16 * mbx + x, py = 16 * mby + y;
    P* dy = plane_of<P>(f_, 0) + static_cast<std::size_t>(py * ystride_ + px);
    const std::size_t co = static_cast<std::size_t>((py / 2) * cstride_ + px / 2);
    P* du = plane_of<P>(f_, 1) + co;
    P* dv = plane_of<P>(f_, 2) + co;
    const Frame* ref[2] = {nullptr, nullptr};
    for (int l = 0; l < 2; ++l)
        if (c.ref[l] >= 0) ref[l] = sc_->list[l][static_cast<std::size_t>(c.ref[l])];
    const SliceHeader& sh = *sc_->sh;
    const int dl = sps_.bit_depth_luma - 8, dc = sps_.bit_depth_chroma - 8;
    bool ok = true;
    if (ref[0] && ref[1]) {
        alignas(16) P t0[256], t1[256], c0[2][64], c1[2][64];
        ok &= interp_luma(ref[0], t0, 16, px, py, w, h, c.mv[0]) == zanStsOk;
        ok &= interp_luma(ref[1], t1, 16, px, py, w, h, c.mv[1]) == zanStsOk;
        ok &= interp_chroma(ref[0], c0[0], c0[1], 8, px / 2, py / 2, w / 2, h / 2, c.mv[0]) == zanStsOk;
        ok &= interp_chroma(ref[1], c1[0], c1[1], 8, px / 2, py / 2, w / 2, h / 2, c.mv[1]) == zanStsOk;
        int mode = 0, w0 = 0, w1 = 0;
        const int r0 = c.ref[0], r1 = c.ref[1];
        if (sc_->weights == 2) {
            implicit_weights(sc_->poc, ref[0], ref[1], w0, w1);
            if (w0 != 32) mode = 2;
        }
        if (sc_->weights == 1) {
            mode = 1;
            ok &= combine(t0, t1, 16, dy, ystride_, w, h, 1, sh.luma_log2_wd, sh.luma_weight[0][r0],
                          sh.luma_offset[0][r0] << dl, sh.luma_weight[1][r1], sh.luma_offset[1][r1] << dl,
                          sps_.bit_depth_luma) == zanStsOk;
            for (int k = 0; k < 2; ++k)
                ok &= combine(c0[k], c1[k], 8, k ? dv : du, cstride_, w / 2, h / 2, 1, sh.chroma_log2_wd,
                              sh.chroma_weight[0][r0][k], sh.chroma_offset[0][r0][k] << dc, sh.chroma_weight[1][r1][k],
                              sh.chroma_offset[1][r1][k] << dc, sps_.bit_depth_chroma) == zanStsOk;
        } else {
            ok &= combine(t0, t1, 16, dy, ystride_, w, h, mode, 5, w0, 0, w1, 0, sps_.bit_depth_luma) == zanStsOk;
            for (int k = 0; k < 2; ++k)
                ok &= combine(c0[k], c1[k], 8, k ? dv : du, cstride_, w / 2, h / 2, mode, 5, w0, 0, w1, 0,
                              sps_.bit_depth_chroma) == zanStsOk;
        }
    } else {
        const int l = ref[0] ? 0 : 1;
        if (!ref[l]) return err = "reference picture missing", false;
        ok &= interp_luma(ref[l], dy, ystride_, px, py, w, h, c.mv[l]) == zanStsOk;
        ok &= interp_chroma(ref[l], du, dv, cstride_, px / 2, py / 2, w / 2, h / 2, c.mv[l]) == zanStsOk;
        if (sc_->weights == 1) {
            const int r = c.ref[l];
            if (sh.luma_weight[l][r] != 1 << sh.luma_log2_wd || sh.luma_offset[l][r] != 0)
                ok &= weight_one(dy, ystride_, w, h, sh.luma_log2_wd, sh.luma_weight[l][r], sh.luma_offset[l][r] << dl,
                                 sps_.bit_depth_luma) == zanStsOk;
            for (int k = 0; k < 2; ++k)
                if (sh.chroma_weight[l][r][k] != 1 << sh.chroma_log2_wd || sh.chroma_offset[l][r][k] != 0)
                    ok &= weight_one(k ? dv : du, cstride_, w / 2, h / 2, sh.chroma_log2_wd, sh.chroma_weight[l][r][k],
                                     sh.chroma_offset[l][r][k] << dc, sps_.bit_depth_chroma) == zanStsOk;
        }
    }
    if (!ok) return err = "inter prediction failed", false;
    return true;
}

template <class P>
bool Picture::predict(int mbx, int mby, const Macroblock&, std::string& err) {
    const std::size_t base = static_cast<std::size_t>(4 * mby * 4 * mbw_ + 4 * mbx);
    auto cell = [&](int x, int y) -> const MotionCell& {
        return f_->motion[base + static_cast<std::size_t>(y * 4 * mbw_ + x)];
    };
    // Regions of one motion are predicted as one block: the prediction of a
    // sample depends only on its position and motion.
    auto uniform = [&](int x0, int y0, int w, int h) {
        for (int y = y0; y < y0 + h; ++y)
            for (int x = x0; x < x0 + w; ++x)
                if (!same_motion(cell(x, y), cell(x0, y0))) return false;
        return true;
    };
    info_[static_cast<std::size_t>(mby * mbw_ + mbx)].one_motion = uniform(0, 0, 4, 4);
    if (uniform(0, 0, 4, 4)) return predict_block<P>(mbx, mby, 0, 0, 16, 16, err);
    if (uniform(0, 0, 4, 2) && uniform(0, 2, 4, 2))
        return predict_block<P>(mbx, mby, 0, 0, 16, 8, err) && predict_block<P>(mbx, mby, 0, 8, 16, 8, err);
    if (uniform(0, 0, 2, 4) && uniform(2, 0, 2, 4))
        return predict_block<P>(mbx, mby, 0, 0, 8, 16, err) && predict_block<P>(mbx, mby, 8, 0, 8, 16, err);
    for (int k = 0; k < 4; ++k) {
        const int x = (k & 1) * 2, y = (k >> 1) * 2;
        bool ok;
        if (uniform(x, y, 2, 2)) {
            ok = predict_block<P>(mbx, mby, 4 * x, 4 * y, 8, 8, err);
        } else if (uniform(x, y, 2, 1) && uniform(x, y + 1, 2, 1)) {
            ok = predict_block<P>(mbx, mby, 4 * x, 4 * y, 8, 4, err) &&
                 predict_block<P>(mbx, mby, 4 * x, 4 * y + 4, 8, 4, err);
        } else if (uniform(x, y, 1, 2) && uniform(x + 1, y, 1, 2)) {
            ok = predict_block<P>(mbx, mby, 4 * x, 4 * y, 4, 8, err) &&
                 predict_block<P>(mbx, mby, 4 * x + 4, 4 * y, 4, 8, err);
        } else {
            ok = true;
            for (int j = 0; j < 4 && ok; ++j)
                ok = predict_block<P>(mbx, mby, 4 * (x + (j & 1)), 4 * (y + (j >> 1)), 4, 4, err);
        }
        if (!ok) return false;
    }
    return true;
}

template <class P, class C>
bool Picture::inter_residual(P* y, P* u, P* v, const Macroblock& mb, const MbInfo& in) {
    if (mb.kind == kMbSkip || (mb.cbp_luma == 0 && mb.cbp_chroma == 0)) return true;
    const int qpy = mb.qp + qp_bd_y_;  // QP'Y
    const Zan8u bypass = sps_.transform_bypass && qpy == 0 ? 1 : 0;
    const int m = qpy % 6;
    C coef[sizeof mb.luma / sizeof mb.luma[0]];
    for (int i = 0; i < mb.luma_used; ++i) coef[i] = static_cast<C>(mb.luma[i]);
    C* cur = coef;
    const Zan32u lpat = mb.t8x8 ? (mb.pattern & 15u) : (mb.pattern & 0x1fffeu);
    const Zan16s* lscale = mb.t8x8 ? ls8_[1][m] : ls4_[3][m];
    const int qpc[2] = {in.qpc[0] + qp_bd_c_, in.qpc[1] + qp_bd_c_};  // QP'C
    C ccoef[sizeof mb.chroma / sizeof mb.chroma[0]];
    for (int i = 0; i < mb.chroma_used; ++i) ccoef[i] = static_cast<C>(mb.chroma[i]);
    C* ccur = ccoef;
    ZanStatus st, stc;
    if constexpr (sizeof(P) == 1) {
        st = mb.t8x8 ? zaniReconstructLumaInter8x8MB_H264_16s8u_C1R(&cur, y, static_cast<Zan32u>(ystride_), lpat, qpy,
                                                                    lscale, bypass)
                     : zaniReconstructLumaInter4x4MB_H264_16s8u_C1R(&cur, y, static_cast<Zan32u>(ystride_), lpat, qpy,
                                                                    lscale, bypass);
        stc = zaniReconstructChromaInter4x4MB_H264_16s8u_P2R(&ccur, u, v, static_cast<Zan32u>(cstride_),
                                                             mb.pattern & 0x7fe0000u, qpc[0], qpc[1],
                                                             ls4_[4][qpc[0] % 6], ls4_[5][qpc[1] % 6], bypass);
    } else {
        const ZanReconstructRecord r{reinterpret_cast<void**>(&cur), y, ystride_, lpat, qpy, lscale, bypass,
                                     sps_.bit_depth_luma};
        st = mb.t8x8 ? zaniReconstructLumaInter8x8_H264High_32s16u_IP1R(&r)
                     : zaniReconstructLumaInter4x4_H264High_32s16u_IP1R(&r);
        ZanReconstructRecord rc[2];
        P* const uv[2] = {u, v};
        for (int c = 0; c < 2; ++c)
            rc[c] = ZanReconstructRecord{reinterpret_cast<void**>(&ccur), uv[c], cstride_, mb.cpat[c], qpc[c],
                                         ls4_[4 + c][qpc[c] % 6], bypass, sps_.bit_depth_chroma};
        const ZanReconstructRecord* recs[2] = {&rc[0], &rc[1]};
        stc = zaniReconstructChromaInter4x4_H264High_32s16u_IP2R(recs);
    }
    return st == zanStsOk && stc == zanStsOk;
}

template bool Picture::predict<Zan8u>(int, int, const Macroblock&, std::string&);
template bool Picture::predict<Zan16u>(int, int, const Macroblock&, std::string&);
template bool Picture::inter_residual<Zan8u, Zan16s>(Zan8u*, Zan8u*, Zan8u*, const Macroblock&, const MbInfo&);
template bool Picture::inter_residual<Zan16u, Zan32s>(Zan16u*, Zan16u*, Zan16u*, const Macroblock&, const MbInfo&);

}  // namespace h264ex
