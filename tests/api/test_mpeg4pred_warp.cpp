// MPEG-4 global motion compensation and sprite warping through the exported
// functions: statuses in their order, records and outputs untouched on
// failure, known answers (identity warp, whole and half sample translations,
// the vector clamp, the brightness gains), and a plain model of the codec's
// warping written from its formulas (sprite points, virtual points, the
// unreduced affine and projective forms, the bilinear interpolation in 1/s
// units with s * s / 2 - rounding_control) against which every warp is run.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <vector>

#include "zanvc.h"

namespace {

using i64 = long long;

// ------------------------------------------------------------------ model

i64 floor_div(i64 a, i64 b) {
    i64 q = a / b;
    if ((a % b != 0) && ((a < 0) != (b < 0))) --q;
    return q;
}
// "//": nearest, half away from zero (b > 0).
i64 round_div(i64 a, i64 b) { return a >= 0 ? (a + b / 2) / b : -((-a + b / 2) / b); }
i64 pow2(int e) { return e >= 0 ? (i64{1} << e) : 0; }

struct Warp {
    int n = 0, spriteType = 0, accuracy = 0, rounding = 0;
    int i0 = 0, j0 = 0, W = 16, H = 16;
    int du[4] = {0, 0, 0, 0}, dv[4] = {0, 0, 0, 0};
};

struct Model {
    Warp w;
    i64 s, r, rho, alpha = 0, beta = 0, Wp = 1, Hp = 1;
    i64 ip[4], jp[4];            // sprite points, 1/s units
    i64 i1v = 0, j1v = 0, i2v = 0, j2v = 0;  // virtual points, 1/16 units
    int rc;

    explicit Model(const Warp& warp) : w(warp) {
        s = i64{2} << w.accuracy;
        r = 16 / s;
        rho = 3 - w.accuracy;
        rc = (w.spriteType != 1 && w.rounding) ? 1 : 0;
        const i64 ci[4] = {w.i0, w.i0 + w.W, w.i0, w.i0 + w.W};
        const i64 cj[4] = {w.j0, w.j0, w.j0 + w.H, w.j0 + w.H};
        const int su[4] = {w.du[0], w.du[0] + w.du[1], w.du[0] + w.du[2], w.du[0] + w.du[1] + w.du[2] + w.du[3]};
        const int sv[4] = {w.dv[0], w.dv[0] + w.dv[1], w.dv[0] + w.dv[2], w.dv[0] + w.dv[1] + w.dv[2] + w.dv[3]};
        for (int k = 0; k < 4; ++k) {
            ip[k] = (s / 2) * (2 * ci[k] + su[k]);
            jp[k] = (s / 2) * (2 * cj[k] + sv[k]);
        }
        while (Wp < w.W) Wp *= 2, ++alpha;
        while (Hp < w.H) Hp *= 2, ++beta;
        const i64 i0 = w.i0, j0 = w.j0, W = w.W, H = w.H;
        i1v = 16 * (i0 + Wp) + round_div((W - Wp) * (r * ip[0] - 16 * i0) + Wp * (r * ip[1] - 16 * (i0 + W)), W);
        j1v = 16 * j0 + round_div((W - Wp) * (r * jp[0] - 16 * j0) + Wp * (r * jp[1] - 16 * j0), W);
        i2v = 16 * i0 + round_div((H - Hp) * (r * ip[0] - 16 * i0) + Hp * (r * ip[2] - 16 * i0), H);
        j2v = 16 * (j0 + Hp) + round_div((H - Hp) * (r * jp[0] - 16 * j0) + Hp * (r * jp[2] - 16 * (j0 + H)), H);
    }

    // Projective coefficients (exact integers for the small pictures here).
    void projective(i64& a, i64& b, i64& c, i64& d, i64& e, i64& f, i64& g, i64& h, i64& DWH) const {
        const i64 W = w.W, H = w.H;
        g = ((ip[0] - ip[1] - ip[2] + ip[3]) * (jp[2] - jp[3]) - (ip[2] - ip[3]) * (jp[0] - jp[1] - jp[2] + jp[3])) * H;
        h = ((ip[1] - ip[3]) * (jp[0] - jp[1] - jp[2] + jp[3]) - (ip[0] - ip[1] - ip[2] + ip[3]) * (jp[1] - jp[3])) * W;
        const i64 D = (ip[1] - ip[3]) * (jp[2] - jp[3]) - (ip[2] - ip[3]) * (jp[1] - jp[3]);
        a = D * (ip[1] - ip[0]) * H + g * ip[1];
        b = D * (ip[2] - ip[0]) * W + h * ip[2];
        c = D * ip[0] * W * H;
        d = D * (jp[1] - jp[0]) * H + g * jp[1];
        e = D * (jp[2] - jp[0]) * W + h * jp[2];
        f = D * jp[0] * W * H;
        DWH = D * W * H;
    }

    // Luma position of the absolute picture sample (i, j), 1/s units.
    void luma(i64 i, i64 j, i64& F, i64& G) const {
        const i64 x = i - w.i0, y = j - w.j0;
        switch (w.n) {
            case 0: F = s * i, G = s * j; return;
            case 1: F = ip[0] + s * x, G = jp[0] + s * y; return;
            case 2: {
                const i64 sh = alpha + rho;
                F = floor_div((ip[0] << sh) + (-r * ip[0] + i1v) * x + (r * jp[0] - j1v) * y + pow2(int(sh) - 1), i64{1} << sh);
                G = floor_div((jp[0] << sh) + (-r * jp[0] + j1v) * x + (-r * ip[0] + i1v) * y + pow2(int(sh) - 1), i64{1} << sh);
                return;
            }
            case 3: {
                const i64 sh = alpha + beta + rho;
                F = floor_div((ip[0] << sh) + (-r * ip[0] + i1v) * Hp * x + (-r * ip[0] + i2v) * Wp * y + pow2(int(sh) - 1),
                              i64{1} << sh);
                G = floor_div((jp[0] << sh) + (-r * jp[0] + j1v) * Hp * x + (-r * jp[0] + j2v) * Wp * y + pow2(int(sh) - 1),
                              i64{1} << sh);
                return;
            }
            default: {
                i64 a, b, c, d, e, f, g, h, DWH;
                projective(a, b, c, d, e, f, g, h, DWH);
                F = floor_div(a * x + b * y + c, g * x + h * y + DWH);
                G = floor_div(d * x + e * y + f, g * x + h * y + DWH);
            }
        }
    }

    // Chroma position of the chroma sample (xc, yc) counted from (i0/2, j0/2)
    // (even origins here), 1/s units.
    void chroma(i64 xc, i64 yc, i64& F, i64& G) const {
        const i64 ic = xc + w.i0 / 2, jc = yc + w.j0 / 2;
        const i64 X = 4 * ic - 2 * w.i0 + 1, Y = 4 * jc - 2 * w.j0 + 1;
        switch (w.n) {
            case 0: F = s * ic, G = s * jc; return;
            case 1: {
                auto half = [&](i64 p) { return w.spriteType == 1 ? (p + 1) >> 1 : (p >> 1) | (p & 1); };
                F = s * xc + half(ip[0]), G = s * yc + half(jp[0]);
                return;
            }
            case 2: {
                const i64 sh = alpha + rho + 2;
                F = floor_div((-r * ip[0] + i1v) * X + (r * jp[0] - j1v) * Y + 2 * Wp * r * ip[0] - 16 * Wp + pow2(int(sh) - 1),
                              i64{1} << sh);
                G = floor_div((-r * jp[0] + j1v) * X + (-r * ip[0] + i1v) * Y + 2 * Wp * r * jp[0] - 16 * Wp + pow2(int(sh) - 1),
                              i64{1} << sh);
                return;
            }
            case 3: {
                const i64 sh = alpha + beta + rho + 2;
                F = floor_div((-r * ip[0] + i1v) * Hp * X + (-r * ip[0] + i2v) * Wp * Y + 2 * Wp * Hp * r * ip[0] -
                                  16 * Wp * Hp + pow2(int(sh) - 1),
                              i64{1} << sh);
                G = floor_div((-r * jp[0] + j1v) * Hp * X + (-r * jp[0] + j2v) * Wp * Y + 2 * Wp * Hp * r * jp[0] -
                                  16 * Wp * Hp + pow2(int(sh) - 1),
                              i64{1} << sh);
                return;
            }
            default: {
                i64 a, b, c, d, e, f, g, h, DWH;
                projective(a, b, c, d, e, f, g, h, DWH);
                const i64 t = g * X + h * Y + 2 * DWH;
                F = floor_div(2 * a * X + 2 * b * Y + 4 * c - t * s, 4 * t);
                G = floor_div(2 * d * X + 2 * e * Y + 4 * f - t * s, 4 * t);
            }
        }
    }

    // Interpolated value at (F, G) in 1/s units over a reference whose samples
    // ref(X, Y) are given in absolute coordinates, with the border repeated.
    template <class Ref>
    int value(i64 F, i64 G, Ref ref) const {
        const i64 X = floor_div(F, s), Y = floor_div(G, s), ri = F - X * s, rj = G - Y * s;
        const i64 v = (s - rj) * ((s - ri) * ref(X, Y) + ri * ref(X + 1, Y)) +
                      rj * ((s - ri) * ref(X, Y + 1) + ri * ref(X + 1, Y + 1));
        return static_cast<int>((v + s * s / 2 - rc) / (s * s));
    }
};

// A reference plane: samples at absolute (x, y) inside rect, border repeated.
struct Plane {
    int x, y, w, h, step;
    std::vector<Zan8u> s;
    Plane(int x_, int y_, int w_, int h_, std::mt19937& g) : x(x_), y(y_), w(w_), h(h_), step(w_ + 3) {
        s.resize(static_cast<size_t>(step * h));
        for (auto& b : s) b = static_cast<Zan8u>(g() % 5 == 0 ? (g() & 1) * 255 : g() & 255);
    }
    int at(i64 X, i64 Y) const {
        const i64 cx = X < x ? x : (X >= x + w ? x + w - 1 : X);
        const i64 cy = Y < y ? y : (Y >= y + h ? y + h - 1 : Y);
        return s[static_cast<size_t>((cy - y) * step + (cx - x))];
    }
    const Zan8u* data() const { return s.data(); }
};

// The caller's block for a record, with room to misalign it.
struct RecordBlock {
    std::vector<Zan8u> bytes = std::vector<Zan8u>(384 + 16);
    ZanWarpSpec* at(int offset) { return reinterpret_cast<ZanWarpSpec*>(bytes.data() + offset); }
};

ZanStatus init(ZanWarpSpec* rec, const Warp& w, int fcode, int quarter, const ZaniRect& sprite) {
    const ZaniRect vop{w.i0, w.j0, w.W, w.H};
    return zaniWarpInit_MPEG4(rec, w.du, w.dv, w.n, w.spriteType, w.accuracy, w.rounding, quarter, fcode, &sprite,
                              &vop);
}

// Runs the luma and chroma warps of rectangle rc (luma) and rcC (chroma)
// against the model.
void check_warp(const Warp& w, ZanWarpSpec* rec, const Plane& Y, const Plane& Cb, const Plane& Cr,
                const ZaniRect& rc, const ZaniRect& rcC) {
    const Model m(w);
    const int dstStep = rc.width + 5;
    std::vector<Zan8u> dst(static_cast<size_t>(dstStep * rc.height), 7);
    ASSERT_EQ(zaniWarpLuma_MPEG4_8u_C1R(Y.data(), Y.step, dst.data(), dstStep, &rc, rec), zanStsOk);
    for (int y = 0; y < rc.height; ++y)
        for (int x = 0; x < rc.width; ++x) {
            i64 F, G;
            m.luma(w.i0 + rc.x + x, w.j0 + rc.y + y, F, G);
            const int want = m.value(F, G, [&](i64 X, i64 Yy) { return Y.at(X, Yy); });
            ASSERT_EQ(dst[static_cast<size_t>(y * dstStep + x)], want)
                << "luma (" << x << ", " << y << ") n " << w.n << " acc " << w.accuracy << " type " << w.spriteType
                << " rounding " << w.rounding;
        }
    for (int y = 0; y < rc.height; ++y)
        for (int x = rc.width; x < dstStep; ++x) ASSERT_EQ(dst[static_cast<size_t>(y * dstStep + x)], 7);
    const int cStep = rcC.width + 3;
    std::vector<Zan8u> cb(static_cast<size_t>(cStep * rcC.height), 9), cr(cb.size(), 9);
    ASSERT_EQ(zaniWarpChroma_MPEG4_8u_P2R(Cb.data(), Cb.step, Cr.data(), Cr.step, cb.data(), cStep, cr.data(),
                                          cStep, &rcC, rec),
              zanStsOk);
    for (int y = 0; y < rcC.height; ++y)
        for (int x = 0; x < rcC.width; ++x) {
            i64 F, G;
            m.chroma(rcC.x + x, rcC.y + y, F, G);
            const int wantB = m.value(F, G, [&](i64 X, i64 Yy) { return Cb.at(X, Yy); });
            const int wantR = m.value(F, G, [&](i64 X, i64 Yy) { return Cr.at(X, Yy); });
            ASSERT_EQ(cb[static_cast<size_t>(y * cStep + x)], wantB)
                << "Cb (" << x << ", " << y << ") n " << w.n << " acc " << w.accuracy << " type " << w.spriteType;
            ASSERT_EQ(cr[static_cast<size_t>(y * cStep + x)], wantR) << "Cr (" << x << ", " << y << ")";
        }
}

// ------------------------------------------------------------------ tests

TEST(Mpeg4pred, WarpGetSize) {
    EXPECT_EQ(zaniWarpGetSize_MPEG4(nullptr), zanStsNullPtr);
    Zan32s size = 0;
    ASSERT_EQ(zaniWarpGetSize_MPEG4(&size), zanStsOk);
    EXPECT_EQ(size, 384);
}

TEST(Mpeg4pred, WarpInitStatusesInOrder) {
    RecordBlock b;
    ZanWarpSpec* rec = b.at(3);
    const Zan32s du[4] = {1, 2, 3, 4}, dv[4] = {-1, -2, -3, -4};
    const ZaniRect good{0, 0, 32, 32}, bad{0, 0, 32, 0}, badW{0, 0, 0, 32};
    auto call = [&](ZanWarpSpec* s, const Zan32s* u, const Zan32s* v, int n, int type, int acc, int fcode,
                    const ZaniRect* sr, const ZaniRect* vr) {
        return zaniWarpInit_MPEG4(s, u, v, n, type, acc, 0, 0, fcode, sr, vr);
    };
    // Null pointers first, whatever else is wrong.
    EXPECT_EQ(call(nullptr, du, dv, 9, 0, 9, 0, &bad, &bad), zanStsNullPtr);
    EXPECT_EQ(call(rec, du, dv, 9, 0, 9, 0, nullptr, &bad), zanStsNullPtr);
    EXPECT_EQ(call(rec, du, dv, 9, 0, 9, 0, &bad, nullptr), zanStsNullPtr);
    // Then the count of points, the 4-point sprite rule, accuracy and fcode.
    EXPECT_EQ(call(rec, du, dv, 5, 1, 0, 1, &bad, &bad), zanStsOutOfRange);
    EXPECT_EQ(call(rec, du, dv, -1, 1, 0, 1, &good, &good), zanStsOutOfRange);
    EXPECT_EQ(call(rec, du, dv, 4, 0, 0, 1, &good, &good), zanStsOutOfRange);
    EXPECT_EQ(call(rec, du, dv, 4, 2, 0, 1, &good, &good), zanStsOutOfRange);
    EXPECT_EQ(call(rec, du, dv, 2, 0, 4, 1, &bad, &good), zanStsOutOfRange);
    EXPECT_EQ(call(rec, du, dv, 2, 0, -1, 1, &good, &good), zanStsOutOfRange);
    EXPECT_EQ(call(rec, du, dv, 2, 0, 0, 0, &bad, &good), zanStsOutOfRange);
    EXPECT_EQ(call(rec, du, dv, 2, 0, 0, 8, &good, &good), zanStsOutOfRange);
    // Then the rectangles' sizes, before the point arrays are looked at.
    EXPECT_EQ(call(rec, nullptr, nullptr, 2, 0, 3, 7, &bad, &good), zanStsSizeBad);
    EXPECT_EQ(call(rec, du, dv, 2, 0, 3, 7, &good, &badW), zanStsSizeBad);
    // None of these touched the caller's block.
    for (auto v : b.bytes) ASSERT_EQ(v, 0);
    // Points needed but absent: -8 after the plain fields, and the record is
    // not usable.
    EXPECT_EQ(call(rec, nullptr, dv, 1, 0, 0, 1, &good, &good), zanStsNullPtr);
    EXPECT_EQ(call(rec, du, nullptr, 3, 0, 0, 1, &good, &good), zanStsNullPtr);
    Zan16s mv[2] = {5, 5};
    EXPECT_EQ(zaniCalcGlobalMV_MPEG4(0, 0, mv, rec), zanStsContextMismatch);
    // Zero points need no arrays; four points with a static sprite are fine.
    EXPECT_EQ(call(rec, nullptr, nullptr, 0, 0, 0, 1, &good, &good), zanStsOk);
    EXPECT_EQ(zaniCalcGlobalMV_MPEG4(0, 0, mv, rec), zanStsOk);
    EXPECT_EQ(call(rec, du, dv, 4, 1, 3, 7, &good, &good), zanStsOk);
}

TEST(Mpeg4pred, WarpStatusesAndNothingWritten) {
    RecordBlock b;
    ZanWarpSpec* rec = b.at(0);
    std::vector<Zan8u> src(64 * 64, 50), dst(64 * 64, 1), dst2(64 * 64, 2);
    const ZaniRect rc{0, 0, 16, 16};
    // An uninitialised block is refused, nulls first.
    EXPECT_EQ(zaniWarpLuma_MPEG4_8u_C1R(src.data(), 64, dst.data(), 64, &rc, rec), zanStsContextMismatch);
    EXPECT_EQ(zaniWarpLuma_MPEG4_8u_C1R(nullptr, 64, dst.data(), 64, &rc, rec), zanStsNullPtr);
    EXPECT_EQ(zaniWarpLuma_MPEG4_8u_C1R(src.data(), 64, nullptr, 64, &rc, rec), zanStsNullPtr);
    EXPECT_EQ(zaniWarpLuma_MPEG4_8u_C1R(src.data(), 64, dst.data(), 64, nullptr, rec), zanStsNullPtr);
    EXPECT_EQ(zaniWarpLuma_MPEG4_8u_C1R(src.data(), 64, dst.data(), 64, &rc, nullptr), zanStsNullPtr);
    EXPECT_EQ(zaniWarpChroma_MPEG4_8u_P2R(src.data(), 64, src.data(), 64, dst.data(), 64, dst2.data(), 64, &rc, rec),
              zanStsContextMismatch);
    EXPECT_EQ(zaniWarpChroma_MPEG4_8u_P2R(src.data(), 64, nullptr, 64, dst.data(), 64, dst2.data(), 64, &rc, rec),
              zanStsNullPtr);
    EXPECT_EQ(zaniWarpChroma_MPEG4_8u_P2R(src.data(), 64, src.data(), 64, dst.data(), 64, nullptr, 64, &rc, rec),
              zanStsNullPtr);
    Zan16s mv[2] = {3, 4};
    EXPECT_EQ(zaniCalcGlobalMV_MPEG4(0, 0, nullptr, rec), zanStsNullPtr);
    EXPECT_EQ(zaniCalcGlobalMV_MPEG4(0, 0, mv, nullptr), zanStsNullPtr);
    EXPECT_EQ(zaniCalcGlobalMV_MPEG4(0, 0, mv, rec), zanStsContextMismatch);
    EXPECT_EQ(mv[0], 3);
    EXPECT_EQ(mv[1], 4);
    for (auto v : dst) ASSERT_EQ(v, 1);
    for (auto v : dst2) ASSERT_EQ(v, 2);
    // The identifier is found at the first 16-byte boundary of any block.
    const ZaniRect pic{0, 0, 64, 64};
    for (int off = 0; off < 16; ++off) {
        RecordBlock c;
        ZanWarpSpec* s = c.at(off);
        ASSERT_EQ(zaniWarpInit_MPEG4(s, nullptr, nullptr, 0, 0, 0, 0, 0, 1, &pic, &pic), zanStsOk);
        ASSERT_EQ(zaniWarpLuma_MPEG4_8u_C1R(src.data(), 64, dst.data(), 64, &rc, s), zanStsOk);
    }
    // An empty rectangle writes nothing.
    std::fill(dst.begin(), dst.end(), Zan8u{1});
    ASSERT_EQ(zaniWarpInit_MPEG4(rec, nullptr, nullptr, 0, 0, 0, 0, 0, 1, &pic, &pic), zanStsOk);
    const ZaniRect empty{0, 0, 0, 16};
    EXPECT_EQ(zaniWarpLuma_MPEG4_8u_C1R(src.data(), 64, dst.data(), 64, &empty, rec), zanStsOk);
    for (auto v : dst) ASSERT_EQ(v, 1);
}

// Zero points: a plain copy of the co-located samples, the border repeated
// beyond the reference rectangle.
TEST(Mpeg4pred, WarpIdentityCopies) {
    std::mt19937 g(11);
    const Plane Y(0, 0, 48, 32, g);
    RecordBlock b;
    ZanWarpSpec* rec = b.at(5);
    const ZaniRect sprite{0, 0, 48, 32}, vop{0, 0, 48, 32};
    ASSERT_EQ(zaniWarpInit_MPEG4(rec, nullptr, nullptr, 0, 0, 2, 1, 0, 2, &sprite, &vop), zanStsOk);
    for (const ZaniRect rc : {ZaniRect{16, 16, 16, 16}, ZaniRect{3, 5, 11, 7}, ZaniRect{40, 24, 16, 16}}) {
        std::vector<Zan8u> dst(static_cast<size_t>(rc.width * rc.height));
        ASSERT_EQ(zaniWarpLuma_MPEG4_8u_C1R(Y.data(), Y.step, dst.data(), rc.width, &rc, rec), zanStsOk);
        for (int y = 0; y < rc.height; ++y)
            for (int x = 0; x < rc.width; ++x)
                ASSERT_EQ(dst[static_cast<size_t>(y * rc.width + x)], Y.at(rc.x + x, rc.y + y)) << x << "," << y;
    }
}

// One point at whole and half sample displacements: the half-sample copy
// with the rounding control (GMC) or without it (static sprite).
TEST(Mpeg4pred, WarpTranslationsAreCopies) {
    std::mt19937 g(12);
    const Plane Y(-16, -16, 80, 80, g);
    const ZaniRect sprite{-16, -16, 80, 80}, vop{0, 0, 48, 48};
    for (int type : {0, 1})
        for (int rounding : {0, 1})
            for (int du : {6, 7, -3, -10})
                for (int dv : {4, 5, -1, -8}) {
                    RecordBlock b;
                    ZanWarpSpec* rec = b.at(1);
                    const Zan32s u[1] = {du}, v[1] = {dv};
                    ASSERT_EQ(zaniWarpInit_MPEG4(rec, u, v, 1, type, 1, rounding, 0, 3, &sprite, &vop), zanStsOk);
                    const ZaniRect rc{16, 16, 16, 16};
                    std::vector<Zan8u> dst(256);
                    ASSERT_EQ(zaniWarpLuma_MPEG4_8u_C1R(Y.data(), Y.step, dst.data(), 16, &rc, rec), zanStsOk);
                    const int r = (type != 1 && rounding) ? 1 : 0;
                    for (int y = 0; y < 16; ++y)
                        for (int x = 0; x < 16; ++x) {
                            const int X = 16 + x + (du >> 1), Yy = 16 + y + (dv >> 1), hx = du & 1, hy = dv & 1;
                            const int a = Y.at(X, Yy), bb = Y.at(X + hx, Yy), c = Y.at(X, Yy + hy),
                                      d = Y.at(X + hx, Yy + hy);
                            int want;
                            if (hx && hy) want = (a + bb + c + d + 2 - r) >> 2;
                            else if (hx) want = (a + bb + 1 - r) >> 1;
                            else if (hy) want = (a + c + 1 - r) >> 1;
                            else want = a;
                            ASSERT_EQ(dst[static_cast<size_t>(y * 16 + x)], want)
                                << "du " << du << " dv " << dv << " type " << type << " rounding " << rounding;
                        }
                }
}

// Every number of points, accuracy, sprite type and rounding against the
// model, over whole macroblocks, odd rectangles, and rectangles reaching past
// the reference.
TEST(Mpeg4pred, WarpAgreesWithModel) {
    std::mt19937 g(13);
    for (int n = 0; n <= 4; ++n)
        for (int acc = 0; acc <= 3; ++acc)
            for (int type = 0; type <= 1; ++type) {
                if (n == 4 && type != 1) continue;
                for (int trial = 0; trial < 3; ++trial) {
                    Warp w;
                    w.n = n, w.spriteType = type, w.accuracy = acc, w.rounding = static_cast<int>(g() & 1);
                    const int sizes[3][2] = {{48, 32}, {45, 27}, {33, 64}};
                    w.W = sizes[trial][0], w.H = sizes[trial][1];
                    w.i0 = trial == 1 ? 4 : 0, w.j0 = trial == 1 ? -2 : 0;
                    for (int k = 0; k < 4; ++k) {
                        const int span = k == 0 ? 21 : 9;
                        w.du[k] = static_cast<int>(g() % (2 * span + 1)) - span;
                        w.dv[k] = static_cast<int>(g() % (2 * span + 1)) - span;
                    }
                    const ZaniRect sprite{w.i0 - 8, w.j0 - 6, w.W + 14, w.H + 10};
                    const Plane Y(sprite.x, sprite.y, sprite.width, sprite.height, g);
                    const Plane Cb(sprite.x / 2, sprite.y / 2, (sprite.width + 1) >> 1, (sprite.height + 1) >> 1, g);
                    const Plane Cr(sprite.x / 2, sprite.y / 2, (sprite.width + 1) >> 1, (sprite.height + 1) >> 1, g);
                    RecordBlock b;
                    ZanWarpSpec* rec = b.at(static_cast<int>(g() % 16));
                    ASSERT_EQ(init(rec, w, 2, 0, sprite), zanStsOk);
                    SCOPED_TRACE(testing::Message() << "n " << n << " acc " << acc << " type " << type << " trial "
                                                    << trial);
                    check_warp(w, rec, Y, Cb, Cr, ZaniRect{16, 16, 16, 16}, ZaniRect{8, 8, 8, 8});
                    check_warp(w, rec, Y, Cb, Cr, ZaniRect{0, 0, 16, 16}, ZaniRect{0, 0, 8, 8});
                    check_warp(w, rec, Y, Cb, Cr, ZaniRect{3, 7, 29, 5}, ZaniRect{1, 2, 13, 3});
                    check_warp(w, rec, Y, Cb, Cr, ZaniRect{w.W - 10, w.H - 9, 16, 16}, ZaniRect{w.W / 2 - 5, w.H / 2 - 3, 8, 8});
                }
            }
}

// The global vector: 0 points gives (0, 0); 1 point the first point's
// displacement clamped to the fcode range; 2 and 3 points the rounded mean
// of the luma displacement over the macroblock, from the model.
TEST(Mpeg4pred, GlobalMotionVector) {
    RecordBlock b;
    ZanWarpSpec* rec = b.at(2);
    const ZaniRect pic{0, 0, 64, 48};
    Zan16s mv[2] = {9, 9};
    ASSERT_EQ(zaniWarpInit_MPEG4(rec, nullptr, nullptr, 0, 0, 3, 1, 1, 1, &pic, &pic), zanStsOk);
    ASSERT_EQ(zaniCalcGlobalMV_MPEG4(123, -77, mv, rec), zanStsOk);
    EXPECT_EQ(mv[0], 0);
    EXPECT_EQ(mv[1], 0);
    // fcode 1: -32..31 in half samples.
    const Zan32s u1[1] = {100}, v1[1] = {-100};
    ASSERT_EQ(zaniWarpInit_MPEG4(rec, u1, v1, 1, 0, 0, 0, 0, 1, &pic, &pic), zanStsOk);
    ASSERT_EQ(zaniCalcGlobalMV_MPEG4(0, 0, mv, rec), zanStsOk);
    EXPECT_EQ(mv[0], 31);
    EXPECT_EQ(mv[1], -32);
    const Zan32s u2[1] = {7}, v2[1] = {-5};
    for (int q : {0, 1}) {
        ASSERT_EQ(zaniWarpInit_MPEG4(rec, u2, v2, 1, 0, 2, 0, q, 1, &pic, &pic), zanStsOk);
        ASSERT_EQ(zaniCalcGlobalMV_MPEG4(16, 32, mv, rec), zanStsOk);
        EXPECT_EQ(mv[0], q ? 14 : 7);
        EXPECT_EQ(mv[1], q ? -10 : -5);
    }
    std::mt19937 g(14);
    for (int n = 2; n <= 3; ++n)
        for (int acc = 0; acc <= 3; ++acc)
            for (int q = 0; q <= 1; ++q)
                for (int trial = 0; trial < 4; ++trial) {
                    Warp w;
                    w.n = n, w.accuracy = acc, w.W = 64, w.H = 48;
                    for (int k = 0; k < 4; ++k) {
                        w.du[k] = static_cast<int>(g() % 61) - 30;
                        w.dv[k] = static_cast<int>(g() % 61) - 30;
                    }
                    const int fcode = trial == 3 ? 1 : 5;
                    ASSERT_EQ(init(rec, w, fcode, q, pic), zanStsOk);
                    const Model m(w);
                    for (int mbx = 0; mbx < 64; mbx += 16)
                        for (int mby = 0; mby < 48; mby += 16) {
                            i64 sx = 0, sy = 0;
                            for (int j = 0; j < 16; ++j)
                                for (int i = 0; i < 16; ++i) {
                                    i64 F, G;
                                    m.luma(mbx + i, mby + j, F, G);
                                    sx += F - m.s * (mbx + i);
                                    sy += G - m.s * (mby + j);
                                }
                            auto round = [&](i64 v) {
                                i64 r = (v - (v < 0 ? 1 : 0) + (i64{1} << (acc + 7 - q))) >> (acc + 8 - q);
                                const i64 lo = -(16 << fcode), hi = (16 << fcode) - 1;
                                return r < lo ? lo : (r > hi ? hi : r);
                            };
                            ASSERT_EQ(zaniCalcGlobalMV_MPEG4(mbx, mby, mv, rec), zanStsOk);
                            ASSERT_EQ(mv[0], round(sx)) << "n " << n << " acc " << acc << " q " << q;
                            ASSERT_EQ(mv[1], round(sy)) << "n " << n << " acc " << acc << " q " << q;
                        }
                }
}

TEST(Mpeg4pred, SpriteBrightness) {
    std::vector<Zan8u> p(40 * 5);
    for (size_t i = 0; i < p.size(); ++i) p[i] = static_cast<Zan8u>(i * 37);
    const auto orig = p;
    EXPECT_EQ(zaniChangeSpriteBrightness_MPEG4_8u_C1IR(nullptr, 40, 33, 5, 2000), zanStsNullPtr);
    EXPECT_EQ(zaniChangeSpriteBrightness_MPEG4_8u_C1IR(p.data(), 40, 33, 5, -113), zanStsOutOfRange);
    EXPECT_EQ(zaniChangeSpriteBrightness_MPEG4_8u_C1IR(p.data(), 40, 33, 5, 1649), zanStsOutOfRange);
    EXPECT_EQ(zaniChangeSpriteBrightness_MPEG4_8u_C1IR(p.data(), 40, 33, 5, 0), zanStsOk);
    EXPECT_EQ(p, orig);
    // b = 100: W = 2048, (s * 2048 + 520) >> 10 = 2 s, saturated.
    ASSERT_EQ(zaniChangeSpriteBrightness_MPEG4_8u_C1IR(p.data(), 40, 33, 5, 100), zanStsOk);
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 40; ++x) {
            const int s = orig[static_cast<size_t>(y * 40 + x)];
            const int want = x < 33 ? (2 * s > 255 ? 255 : 2 * s) : s;
            ASSERT_EQ(p[static_cast<size_t>(y * 40 + x)], want);
        }
    // b = -112: W = -123, every sample falls to 0.
    p = orig;
    ASSERT_EQ(zaniChangeSpriteBrightness_MPEG4_8u_C1IR(p.data(), 40, 40, 5, -112), zanStsOk);
    for (auto v : p) ASSERT_EQ(v, 0);
    // b = -7: W = (-7168 - 50) / 100 + 1024 = 952 (truncated toward zero).
    p = orig;
    ASSERT_EQ(zaniChangeSpriteBrightness_MPEG4_8u_C1IR(p.data(), 40, 40, 5, -7), zanStsOk);
    for (size_t i = 0; i < p.size(); ++i) ASSERT_EQ(p[i], (orig[i] * 952 + 520) >> 10);
    // b = 1648: W = (1687552 + 50) / 100 + 1024 = 17900.
    p = orig;
    ASSERT_EQ(zaniChangeSpriteBrightness_MPEG4_8u_C1IR(p.data(), 40, 40, 5, 1648), zanStsOk);
    for (size_t i = 0; i < p.size(); ++i) ASSERT_EQ(p[i], std::min(255, (orig[i] * 17900 + 520) >> 10));
    // A negative step works upward from the last row.
    p = orig;
    ASSERT_EQ(zaniChangeSpriteBrightness_MPEG4_8u_C1IR(p.data() + 4 * 40, -40, 11, 5, 50), zanStsOk);
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 40; ++x) {
            const int s = orig[static_cast<size_t>(y * 40 + x)];
            const int want = x < 11 ? std::min(255, (s * 1536 + 520) >> 10) : s;
            ASSERT_EQ(p[static_cast<size_t>(y * 40 + x)], want);
        }
}

}  // namespace
