// AVS interpolation, weighting and loop filter through the exported
// functions: a separable model of the standard's quarter-sample filters on
// an endlessly padded plane against the block function at random
// positions and vectors (inside, across and far outside the frame); a plain
// model of the loop-filter formulas; weighting known answers; statuses.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <vector>

#include "zanvc.h"

namespace {

// ---------------------------------------------------------- interpolation

struct Plane {
    int w, h, step;
    std::vector<Zan8u> s;
    Plane(int w_, int h_, std::mt19937& rng) : w(w_), h(h_), step(w_ + 7), s(static_cast<size_t>(step * h_)) {
        for (auto& v : s) v = static_cast<Zan8u>(rng());
    }
    // Endless padding: the nearest plane sample.
    int at(int y, int x) const { return s[static_cast<size_t>(std::clamp(y, 0, h - 1) * step + std::clamp(x, 0, w - 1))]; }
};

// 1-D filters of a fraction: taps from offset `first`, and their scale.
struct Taps {
    int first;
    std::vector<int> t;
    int scale;
};
Taps taps_of(int f) {
    switch (f) {
        case 0: return {0, {1}, 1};
        case 1: return {-2, {-1, -2, 96, 42, -7}, 128};
        case 2: return {-1, {-1, 5, 5, -1}, 8};
        default: return {-1, {-7, 42, 96, -2, -1}, 128};
    }
}

int model_sample(const Plane& p, int y, int x, int dx, int dy) {
    auto sep = [&](int fx, int fy, int yy, int xx) {
        const Taps tx = taps_of(fx), ty = taps_of(fy);
        long long s = 0;
        for (size_t i = 0; i < ty.t.size(); ++i)
            for (size_t k = 0; k < tx.t.size(); ++k)
                s += static_cast<long long>(ty.t[i]) * tx.t[k] * p.at(yy + ty.first + static_cast<int>(i), xx + tx.first + static_cast<int>(k));
        return s;
    };
    long long v;
    int scale;
    if (dx % 2 == 1 && dy % 2 == 1) {
        // The four diagonal quarter positions: the mean of j and the nearest
        // integer sample.
        const int ny = y + (dy == 3 ? 1 : 0), nx = x + (dx == 3 ? 1 : 0);
        v = sep(2, 2, y, x) + 64LL * p.at(ny, nx);
        scale = 128;
    } else {
        v = sep(dx, dy, y, x);
        scale = taps_of(dx).scale * taps_of(dy).scale;
    }
    if (scale == 1) return static_cast<int>(v);
    const long long r = (v + scale / 2) >> __builtin_ctz(static_cast<unsigned>(scale));
    return static_cast<int>(std::clamp<long long>(r, 0, 255));
}

TEST(AvsInter, InterpolationAgreesWithTheSeparableModel) {
    std::mt19937 rng(11);
    for (int draw = 0; draw < 1500; ++draw) {
        // The plane is at least as tall as the rows a 24-row block reads (29).
        Plane p(24 + static_cast<int>(rng() % 40), 29 + static_cast<int>(rng() % 40), rng);
        const int w = rng() % 2 ? 16 : 8, h = 8 * (1 + static_cast<int>(rng() % 3));
        std::vector<Zan8u> out(static_cast<size_t>(24 * h), 0xCC);
        ZanInterpolateBlockRecord r{};
        r.pSrc[0] = p.s.data();
        r.srcStep = p.step;
        r.pDst[0] = out.data();
        r.dstStep = 24;
        r.sizeFrame = {p.w, p.h};
        r.sizeBlock = {w, h};
        // Positions inside the frame; vectors small, across the edges, or far.
        r.pointBlockPos = {static_cast<int>(rng() % static_cast<unsigned>(p.w - w + 1)) & ~3,
                           static_cast<int>(rng() % static_cast<unsigned>(p.h - h + 1)) & ~3};
        const int range = draw % 5 == 0 ? 600 : draw % 5 == 1 ? 160 : 40;
        r.pointVector = {static_cast<int>(rng() % static_cast<unsigned>(2 * range + 1)) - range,
                         static_cast<int>(rng() % static_cast<unsigned>(2 * range + 1)) - range};
        if (draw % 17 == 0) r.pointVector = {0, 0};
        ASSERT_EQ(zaniInterpolateLumaBlock_AVS_8u_P1R(&r), zanStsOk);
        const int dx = r.pointVector.x & 3, dy = r.pointVector.y & 3;
        const int ix = r.pointBlockPos.x + (r.pointVector.x >> 2), iy = r.pointBlockPos.y + (r.pointVector.y >> 2);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < 24; ++x) {
                const int want = x < w ? model_sample(p, iy + y, ix + x, dx, dy) : 0xCC;
                ASSERT_EQ(out[static_cast<size_t>(y * 24 + x)], want)
                    << "draw " << draw << " vector " << r.pointVector.x << "," << r.pointVector.y << " at " << y << "," << x;
            }
    }
}

TEST(AvsInter, InterpolationQuirksAndStatuses) {
    std::mt19937 rng(12);
    Plane p(32, 32, rng);
    Zan8u out[16 * 16];
    ZanInterpolateBlockRecord r{};
    r.pSrc[0] = p.s.data();
    r.srcStep = p.step;
    r.pDst[0] = out;
    r.dstStep = 16;
    r.sizeFrame = {32, 32};
    r.sizeBlock = {8, 8};
    // Far to the top-left: every sample is the plane's first.
    r.pointBlockPos = {0, 0};
    r.pointVector = {-4000 + 1, -4000 + 2};
    ASSERT_EQ(zaniInterpolateLumaBlock_AVS_8u_P1R(&r), zanStsOk);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) EXPECT_EQ(out[y * 16 + x], p.s[0]);
    // Statuses.
    EXPECT_EQ(zaniInterpolateLumaBlock_AVS_8u_P1R(nullptr), zanStsNullPtr);
    r.sizeBlock = {4, 8};
    EXPECT_EQ(zaniInterpolateLumaBlock_AVS_8u_P1R(&r), zanStsSizeBad);
    r.sizeBlock = {12, 8};
    EXPECT_EQ(zaniInterpolateLumaBlock_AVS_8u_P1R(&r), zanStsSizeBad);
    r.sizeBlock = {8, 4};
    EXPECT_EQ(zaniInterpolateLumaBlock_AVS_8u_P1R(&r), zanStsSizeBad);
    r.pDst[0] = nullptr;
    EXPECT_EQ(zaniInterpolateLumaBlock_AVS_8u_P1R(&r), zanStsNullPtr);  // null beats the size
}

// The standard's formulas taken literally on a lattice of half samples, all
// held unrounded at the scale of 64: integer samples 64 A, the half samples
// b and h 8 times their 4-tap sums (-1, 5, 5, -1), j the 4-tap sum of the
// vertical run of unrounded b.  A quarter sample between two lattice points
// is the (1, 7, 7, 1) sum of the lattice points around it along its axis
// (scale 1024); the four diagonal quarters average j with the nearest
// integer sample (scale 128).  Nothing here uses the combined 5-tap form.
int lattice_model(const Plane& p, int y, int x, int dx, int dy) {
    auto A = [&](int yy, int xx) { return static_cast<long long>(p.at(yy, xx)); };
    auto b1 = [&](int yy, int xx) { return -A(yy, xx - 1) + 5 * A(yy, xx) + 5 * A(yy, xx + 1) - A(yy, xx + 2); };
    auto h1 = [&](int yy, int xx) { return -A(yy - 1, xx) + 5 * A(yy, xx) + 5 * A(yy + 1, xx) - A(yy + 2, xx); };
    auto j1 = [&](int yy, int xx) { return -b1(yy - 1, xx) + 5 * b1(yy, xx) + 5 * b1(yy + 1, xx) - b1(yy + 2, xx); };
    // Lattice point (v, u) in half samples, scale 64.
    auto L = [&](int v, int u) -> long long {
        const int yy = v >> 1, xx = u >> 1;  // floor halves
        if (v % 2 == 0 && u % 2 == 0) return 64 * A(yy, xx);
        if (v % 2 == 0) return 8 * b1(yy, xx);
        if (u % 2 == 0) return 8 * h1(yy, xx);
        return j1(yy, xx);
    };
    auto clip = [](long long v) { return static_cast<int>(std::clamp<long long>(v, 0, 255)); };
    const int v0 = 2 * y, u0 = 2 * x;
    if (dx % 2 == 0 && dy % 2 == 0) {
        const long long l = L(v0 + dy / 2, u0 + dx / 2);
        if (dx == 0 && dy == 0) return static_cast<int>(l / 64);
        if (dx == 2 && dy == 2) return clip((l + 32) >> 6);
        return clip((l / 8 + 4) >> 3);  // b or h
    }
    if (dx % 2 == 1 && dy % 2 == 1) {
        const long long d = 64 * A(y + (dy == 3), x + (dx == 3));
        return clip((d + j1(y, x) + 64) >> 7);
    }
    long long s = 0;
    static constexpr int w[4] = {1, 7, 7, 1};
    if (dx % 2 == 1) {  // a, c on rows of integers or of h (i, k on the rows of j)
        const int first = dx == 1 ? u0 - 1 : u0;
        for (int k = 0; k < 4; ++k) s += w[k] * L(v0 + dy / 2, first + k);
    } else {  // d, n down columns of integers, f, q down the columns of b
        const int first = dy == 1 ? v0 - 1 : v0;
        for (int k = 0; k < 4; ++k) s += w[k] * L(first + k, u0 + dx / 2);
    }
    return clip((s + 512) >> 10);
}

TEST(AvsInter, InterpolationFollowsTheHalfAndQuarterSampleFormulas) {
    std::mt19937 rng(21);
    for (int draw = 0; draw < 320; ++draw) {
        Plane p(40, 40, rng);
        if (draw % 8 == 1)  // extremes, so that every clamp is reached
            for (auto& v : p.s) v = (rng() & 1) ? 255 : 0;
        const int w = draw % 2 ? 16 : 8, h = draw % 3 ? 8 : 16;
        std::vector<Zan8u> out(static_cast<size_t>(16 * h), 0xCC);
        ZanInterpolateBlockRecord r{};
        r.pSrc[0] = p.s.data();
        r.srcStep = p.step;
        r.pDst[0] = out.data();
        r.dstStep = 16;
        r.sizeFrame = {40, 40};
        r.sizeBlock = {w, h};
        r.pointBlockPos = {8, 8};
        const int pos = draw % 16;  // every quarter position, inside and across the edges
        const int reach = draw % 5 == 0 ? 120 : 24;
        r.pointVector = {4 * (static_cast<int>(rng() % static_cast<unsigned>(2 * reach + 1)) - reach) + (pos & 3),
                         4 * (static_cast<int>(rng() % static_cast<unsigned>(2 * reach + 1)) - reach) + (pos >> 2)};
        ASSERT_EQ(zaniInterpolateLumaBlock_AVS_8u_P1R(&r), zanStsOk);
        const int ix = 8 + (r.pointVector.x >> 2), iy = 8 + (r.pointVector.y >> 2);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x)
                ASSERT_EQ(out[static_cast<size_t>(y * 16 + x)], lattice_model(p, iy + y, ix + x, pos & 3, pos >> 2))
                    << "draw " << draw << " position " << pos << " at " << y << "," << x;
    }
    // Hand-worked: a row 0 0 0 0 64 0 0 0 (the 64 at column 4) gives at
    // quarter a of column 4: (96 * 64 + 64) >> 7 = 48; of column 3: (42 * 64
    // + 64) >> 7 = 21; of column 2: (-2 * 64 + 64) >> 7 < 0, clamped to 0.
    std::vector<Zan8u> plane(16 * 16, 0), out(8 * 8, 0xCC);
    for (int y = 0; y < 16; ++y) plane[static_cast<size_t>(y * 16 + 4)] = 64;
    ZanInterpolateBlockRecord r{};
    r.pSrc[0] = plane.data();
    r.srcStep = 16;
    r.pDst[0] = out.data();
    r.dstStep = 8;
    r.sizeFrame = {16, 16};
    r.sizeBlock = {8, 8};
    r.pointBlockPos = {0, 4};
    r.pointVector = {1, 0};
    ASSERT_EQ(zaniInterpolateLumaBlock_AVS_8u_P1R(&r), zanStsOk);
    EXPECT_EQ(out[4], 48);
    EXPECT_EQ(out[3], 21);
    EXPECT_EQ(out[2], 0);
    EXPECT_EQ(out[5], 0);  // (-1 * 64 + 64) >> 7
    // Half sample b of column 3 and 4: (5 * 64 + 4) >> 3 = 40.
    r.pointVector = {2, 0};
    ASSERT_EQ(zaniInterpolateLumaBlock_AVS_8u_P1R(&r), zanStsOk);
    EXPECT_EQ(out[3], 40);
    EXPECT_EQ(out[4], 40);
    EXPECT_EQ(out[2], 0);  // (-64 + 4) >> 3 = -8, clamped
}

TEST(AvsInter, InterpolationRegionTallerThanThePlane) {
    // A frame of 20 rows inside storage of 40 rows: a 24-row block with a
    // vertical fraction reads 29 rows; from 4 rows above the frame the region
    // also ends below it.  Such a region is clamped at its top only: its
    // rows below the frame come from the memory after it, for the whole
    // block (also for the rows of its second band of 16).
    std::mt19937 rng(22);
    const int W = 24, H = 20, step = 32;
    std::vector<Zan8u> mem(static_cast<size_t>(step * 40));
    for (auto& v : mem) v = static_cast<Zan8u>(rng());
    std::vector<Zan8u> out(static_cast<size_t>(8 * 24), 0xCC);
    ZanInterpolateBlockRecord r{};
    r.pSrc[0] = mem.data();
    r.srcStep = step;
    r.pDst[0] = out.data();
    r.dstStep = 8;
    r.sizeFrame = {W, H};
    r.sizeBlock = {8, 24};
    r.pointBlockPos = {8, 0};
    r.pointVector = {0, -6};  // dy 2, integer row -2: region rows -4 .. 24
    ASSERT_EQ(zaniInterpolateLumaBlock_AVS_8u_P1R(&r), zanStsOk);
    auto A = [&](int y, int x) { return static_cast<int>(mem[static_cast<size_t>(std::max(y, 0) * step + x)]); };
    for (int y = 0; y < 24; ++y)
        for (int x = 0; x < 8; ++x) {
            const int yy = y - 2, xx = 8 + x;
            const int v = -A(yy - 1, xx) + 5 * A(yy, xx) + 5 * A(yy + 1, xx) - A(yy + 2, xx);
            ASSERT_EQ(out[static_cast<size_t>(y * 8 + x)], std::clamp((v + 4) >> 3, 0, 255)) << y << "," << x;
        }
}

TEST(AvsInter, InterpolationFarPositionsDoNotWrap) {
    // A block position at the top of the 32-bit range and a vector further
    // right: the region lies wholly right of the frame, so every sample is
    // the frame's last column (a quarter filter over equal samples gives the
    // sample).  Computed in 32 bits the position would wrap to the left.
    std::mt19937 rng(23);
    Plane p(32, 32, rng);
    Zan8u out[8 * 8];
    ZanInterpolateBlockRecord r{};
    r.pSrc[0] = p.s.data();
    r.srcStep = p.step;
    r.pDst[0] = out;
    r.dstStep = 8;
    r.sizeFrame = {32, 32};
    r.sizeBlock = {8, 8};
    r.pointBlockPos = {0x7FFFFFF0, 4};
    r.pointVector = {0x7FFFFFF1, 0};  // dx 1
    ASSERT_EQ(zaniInterpolateLumaBlock_AVS_8u_P1R(&r), zanStsOk);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) ASSERT_EQ(out[y * 8 + x], p.at(4 + y, 31)) << y << "," << x;
    // The same far to the left and above: the frame's first sample.
    r.pointBlockPos = {-0x7FFFFFF0, -0x7FFFFFF0};
    r.pointVector = {-0x7FFFFFF0 + 3, -0x7FFFFFF0 + 1};
    ASSERT_EQ(zaniInterpolateLumaBlock_AVS_8u_P1R(&r), zanStsOk);
    for (int i = 0; i < 64; ++i) ASSERT_EQ(out[i], p.s[0]) << i;
}

// ---------------------------------------------------------------- weighting

TEST(AvsInter, WeightKnownAnswers) {
    Zan8u src[4 * 16], dst[4 * 16];
    for (int i = 0; i < 64; ++i) src[i] = static_cast<Zan8u>(i * 4);
    // scale 32, shift 0: the samples themselves.
    ASSERT_EQ(zaniWeightPrediction_AVS_8u_C1R(src, 16, dst, 16, 32, 0, {16, 4}), zanStsOk);
    EXPECT_EQ(std::memcmp(src, dst, sizeof src), 0);
    // scale 48 (1.5), shift -10, saturating at both ends.
    ASSERT_EQ(zaniWeightPrediction_AVS_8u_C1R(src, 16, dst, 16, 48, -10, {16, 4}), zanStsOk);
    for (int i = 0; i < 64; ++i) EXPECT_EQ(dst[i], std::clamp(((src[i] * 48 + 16) >> 5) - 10, 0, 255)) << i;
    // Width 4 writes 8 samples a row; the rest of the row stays.
    std::memset(dst, 0xEE, sizeof dst);
    ASSERT_EQ(zaniWeightPrediction_AVS_8u_C1R(src, 16, dst, 16, 32, 1, {4, 4}), zanStsOk);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 16; ++x) EXPECT_EQ(dst[y * 16 + x], x < 8 ? std::min(src[y * 16 + x] + 1, 255) : 0xEE);
    // Statuses.
    EXPECT_EQ(zaniWeightPrediction_AVS_8u_C1R(nullptr, 16, dst, 16, 32, 0, {3, 3}), zanStsNullPtr);
    EXPECT_EQ(zaniWeightPrediction_AVS_8u_C1R(src, 16, dst, 16, 32, 0, {2, 4}), zanStsSizeBad);
    EXPECT_EQ(zaniWeightPrediction_AVS_8u_C1R(src, 16, dst, 16, 32, 0, {8, 6}), zanStsSizeBad);
}

// ------------------------------------------------------------- loop filter

// Plain model of one line of the standard's loop filter.
void model_line(int* v /* p2 p1 p0 q0 q1 q2 */, int alpha, int beta, int c, int bs, bool luma) {
    int p2 = v[0], p1 = v[1], p0 = v[2], q0 = v[3], q1 = v[4], q2 = v[5];
    if (!(std::abs(p0 - q0) < alpha && std::abs(p1 - p0) < beta && std::abs(q1 - q0) < beta)) return;
    if (bs == 2) {
        if (luma && std::abs(p2 - p0) < beta && std::abs(p0 - q0) < (alpha >> 2) + 2) {
            v[2] = (p1 + 2 * p0 + q0 + 2) >> 2;
            v[1] = (2 * p1 + p0 + q0 + 2) >> 2;
        } else {
            v[2] = (2 * p1 + p0 + q0 + 2) >> 2;
        }
        if (luma && std::abs(q2 - q0) < beta && std::abs(p0 - q0) < (alpha >> 2) + 2) {
            v[3] = (q1 + 2 * q0 + p0 + 2) >> 2;
            v[4] = (2 * q1 + p0 + q0 + 2) >> 2;
        } else {
            v[3] = (2 * q1 + p0 + q0 + 2) >> 2;
        }
        return;
    }
    const int d = std::clamp((3 * (q0 - p0) + p1 - q1 + 4) >> 3, -c, c);
    v[2] = std::clamp(p0 + d, 0, 255);
    v[3] = std::clamp(q0 - d, 0, 255);
    if (!luma) return;
    if (std::abs(p2 - p0) < beta) v[1] = std::clamp(p1 + std::clamp((3 * (v[2] - p1) + p2 - v[3] + 4) >> 3, -c, c), 0, 255);
    if (std::abs(q2 - q0) < beta) v[4] = std::clamp(q1 - std::clamp((3 * (q1 - v[3]) + v[2] - q2 + 4) >> 3, -c, c), 0, 255);
}

TEST(AvsInter, LoopFilterAgreesWithTheModel) {
    std::mt19937 rng(13);
    for (int draw = 0; draw < 3000; ++draw) {
        const int kind = draw % 4;  // luma ver, luma hor, chroma ver, chroma hor
        const bool luma = kind < 2, ver = kind % 2 == 0;
        const int n = luma ? 16 : 8;
        Zan8u pic[32 * 32];
        const int base = static_cast<int>(rng() % 256), jump = static_cast<int>(rng() % 41) - 20;
        for (int i = 0; i < 32 * 32; ++i)
            pic[i] = static_cast<Zan8u>(std::clamp(base + ((ver ? i % 32 : i / 32) >= 8 ? jump : 0) +
                                                       static_cast<int>(rng() % 7) - 3, 0, 255));
        int model[32 * 32];
        for (int i = 0; i < 32 * 32; ++i) model[i] = pic[i];
        Zan8u alpha[2] = {static_cast<Zan8u>(rng() % 65), static_cast<Zan8u>(rng() % 65)};
        Zan8u beta[2] = {static_cast<Zan8u>(rng() % 28), static_cast<Zan8u>(rng() % 28)};
        Zan8u thr[2] = {static_cast<Zan8u>(rng() % 10), static_cast<Zan8u>(rng() % 10)};
        Zan8u bs[8] = {static_cast<Zan8u>(rng() % 3), 0, static_cast<Zan8u>(rng() % 3), 0,
                       static_cast<Zan8u>(rng() % 3), 0, static_cast<Zan8u>(rng() % 3), 0};
        const int edges = luma ? 2 : 1;
        for (int e = 0; e < edges; ++e) {
            const Zan8u* g = bs + 4 * e;
            if (!g[0] && !g[2]) continue;
            const bool strong = g[0] == 2 && g[2] == 2;
            for (int i = 0; i < n; ++i) {
                const int s = strong ? 2 : (g[i < n / 2 ? 0 : 2] ? 1 : 0);
                if (!s) continue;
                int v[6];
                for (int k = 0; k < 6; ++k) {
                    const int a = 8 + 8 * e + k - 3;
                    v[k] = ver ? model[(8 + i) * 32 + a] : model[a * 32 + 8 + i];
                }
                model_line(v, alpha[e], beta[e], thr[e], s, luma);
                for (int k = 0; k < 6; ++k) {
                    const int a = 8 + 8 * e + k - 3;
                    (ver ? model[(8 + i) * 32 + a] : model[a * 32 + 8 + i]) = v[k];
                }
            }
        }
        ZanDeblockingRecord r{&pic[8 * 32 + 8], 32, alpha, beta, thr, bs, 8};
        ZanStatus st = kind == 0 ? zaniFilterDeblockingLuma_VerEdge_AVS_8u_C1IR(&r)
                       : kind == 1 ? zaniFilterDeblockingLuma_HorEdge_AVS_8u_C1IR(&r)
                       : kind == 2 ? zaniFilterDeblockingChroma_VerEdge_AVS_8u_C1IR(&r)
                                   : zaniFilterDeblockingChroma_HorEdge_AVS_8u_C1IR(&r);
        ASSERT_EQ(st, zanStsOk);
        for (int i = 0; i < 32 * 32; ++i) ASSERT_EQ(pic[i], model[i]) << "draw " << draw << " kind " << kind << " at " << i;
    }
}

TEST(AvsInter, LoopFilterKnownAnswersAndStatuses) {
    // A luma vertical edge, strong on both segments: rows of 10 10 10 | 20 20 20.
    Zan8u pic[16 * 32];
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 32; ++x) pic[y * 32 + x] = static_cast<Zan8u>(x < 8 ? 10 : 20);
    Zan8u keep[16 * 32];
    std::memcpy(keep, pic, sizeof pic);
    Zan8u alpha[2] = {20, 20}, beta[2] = {5, 5}, thr[2] = {3, 3};
    Zan8u bs[8] = {2, 0, 2, 0, 0, 0, 0, 0};
    ZanDeblockingRecord r{&pic[8], 32, alpha, beta, thr, bs, 0};
    ASSERT_EQ(zaniFilterDeblockingLuma_VerEdge_AVS_8u_C1IR(&r), zanStsOk);
    // |p0 - q0| = 10 is not below (20 >> 2) + 2 = 7: p0' = (2*10 + 10 + 20 + 2) >> 2 = 13, q0' = (40 + 32) >> 2 = 18.
    for (int y = 0; y < 16; ++y) {
        EXPECT_EQ(pic[y * 32 + 7], 13);
        EXPECT_EQ(pic[y * 32 + 8], 18);
        EXPECT_EQ(pic[y * 32 + 6], 10);
        EXPECT_EQ(pic[y * 32 + 9], 20);
    }
    // All strengths zero: nothing changes.
    std::memcpy(pic, keep, sizeof pic);
    Zan8u none[8] = {};
    r.pBS = none;
    ASSERT_EQ(zaniFilterDeblockingLuma_HorEdge_AVS_8u_C1IR(&r), zanStsOk);
    ASSERT_EQ(zaniFilterDeblockingChroma_VerEdge_AVS_8u_C1IR(&r), zanStsOk);
    EXPECT_EQ(std::memcmp(pic, keep, sizeof pic), 0);
    // Statuses: the record or any pointer in it.
    EXPECT_EQ(zaniFilterDeblockingLuma_VerEdge_AVS_8u_C1IR(nullptr), zanStsNullPtr);
    r.pThresholds = nullptr;
    EXPECT_EQ(zaniFilterDeblockingChroma_HorEdge_AVS_8u_C1IR(&r), zanStsNullPtr);
    r.pThresholds = thr;
    r.pBS = nullptr;
    EXPECT_EQ(zaniFilterDeblockingLuma_HorEdge_AVS_8u_C1IR(&r), zanStsNullPtr);
}

// The loop filter's thresholds of GB/T 20090.2 (its tables of alpha and
// beta, indexed by IndexA and IndexB = clip(0, 63, average QP + offset),
// and of the clip value C, indexed by IndexA).  The library takes alpha,
// beta and C from the caller; these give the known answers below realistic
// inputs.
constexpr Zan8u kAlphaTable[64] = {0,  0,  0,  0,  0,  0,  1,  1,  1,  1,  1,  2,  2,  2,  3,  3,
                                   4,  4,  5,  5,  6,  7,  8,  9,  10, 11, 12, 13, 15, 16, 18, 20,
                                   22, 24, 26, 28, 30, 33, 33, 35, 35, 36, 37, 37, 39, 39, 42, 44,
                                   46, 48, 50, 52, 53, 54, 55, 56, 57, 58, 59, 60, 61, 62, 63, 64};
constexpr Zan8u kBetaTable[64] = {0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1,  1,  1,  2,  2,  2,  2,  2,  3,  3,  3,  3,
                                  4, 4, 4, 4, 5, 5, 5, 5, 6, 6, 6,  7,  7,  7,  8,  8,  8,  9,  9,  10, 10, 11,
                                  11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 23, 24, 24, 25, 25, 26, 27};
constexpr Zan8u kCTable[64] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1,
                               1, 1, 1, 1, 1, 1, 1, 1, 2, 2, 2, 2, 2, 2, 2, 2, 3, 3, 3, 3, 3, 3,
                               3, 4, 4, 4, 5, 5, 5, 6, 6, 6, 7, 7, 7, 7, 8, 8, 8, 9, 9, 9};

// A 32x32 picture whose lines across one edge all read `line` (p2 p1 p0
// q0 q1 q2, the edge between the third and fourth) with the edge at
// column (ver) or row `at`; other samples 128.
struct EdgePicture {
    Zan8u s[32 * 32];
    bool ver;
    int at;
    EdgePicture(bool v, int a, const int (&line)[6]) : ver(v), at(a) {
        std::memset(s, 128, sizeof s);
        for (int i = 0; i < 32; ++i)
            for (int k = 0; k < 6; ++k) px(i, k) = static_cast<Zan8u>(line[k]);
    }
    Zan8u& px(int i, int k) { return ver ? s[i * 32 + at - 3 + k] : s[(at - 3 + k) * 32 + i]; }
    // True when lines first..last-1 read `want` and every other line is
    // unchanged from `line`.
    bool lines_are(int first, int last, const int (&want)[6], const int (&line)[6]) {
        for (int i = 0; i < 32; ++i)
            for (int k = 0; k < 6; ++k)
                if (px(i, k) != (i >= first && i < last ? want[k] : line[k])) return false;
        return true;
    }
};

TEST(AvsInter, LoopFilterKnownAnswersFromTheTables) {
    const int qp = 40;  // alpha 35, beta 9, C 3; strong threshold (35 >> 2) + 2 = 10
    ASSERT_EQ(kAlphaTable[qp], 35);
    ASSERT_EQ(kBetaTable[qp], 9);
    ASSERT_EQ(kCTable[qp], 3);
    const Zan8u off = 0;  // an element that must not be used: alpha 0 filters nothing
    {
        // Luma, outer vertical edge, strength 1 on both segments.  delta =
        // clip3(-3, 3, (3 * 16 + 56 - 80 + 4) >> 3 = 3): p0 63, q0 73; then
        // p1 from the filtered p0 and q0: (3 * (63 - 56) + 58 - 73 + 4) >> 3 =
        // 1 (the unfiltered ones would give -1), q1: (3 * (80 - 73) + 63 - 78
        // + 4) >> 3 = 1.
        const int line[6] = {58, 56, 60, 76, 80, 78}, want[6] = {58, 57, 63, 73, 79, 78};
        EdgePicture pic(true, 8, line);
        Zan8u alpha[2] = {kAlphaTable[qp], off}, beta[2] = {kBetaTable[qp], off}, c[2] = {kCTable[qp], off};
        Zan8u bs[8] = {1, 0, 1, 0, 0, 0, 0, 0};
        ZanDeblockingRecord r{&pic.s[8 * 32 + 8], 32, alpha, beta, c, bs, 0};
        ASSERT_EQ(zaniFilterDeblockingLuma_VerEdge_AVS_8u_C1IR(&r), zanStsOk);
        EXPECT_TRUE(pic.lines_are(8, 24, want, line));
        // Strength 1 on the second segment only: lines 16..23.
        EdgePicture pic2(true, 8, line);
        Zan8u bs2[8] = {0, 0, 1, 0, 0, 0, 0, 0};
        r.pSrcDstPlane = &pic2.s[8 * 32 + 8];
        r.pBS = bs2;
        ASSERT_EQ(zaniFilterDeblockingLuma_VerEdge_AVS_8u_C1IR(&r), zanStsOk);
        EXPECT_TRUE(pic2.lines_are(16, 24, want, line));
    }
    {
        // Luma, inner horizontal edge (row 8 of the macroblock, element 1 of
        // the pairs), strength 2: |p0 - q0| = 6 < 10 and |p2 - p0|, |q2 - q0|
        // below beta: p0 = (62 + 128 + 70 + 2) >> 2 = 65, p1 = (124 + 64 + 70
        // + 2) >> 2 = 65, q0 = (72 + 140 + 64 + 2) >> 2 = 69, q1 = (144 + 64 +
        // 70 + 2) >> 2 = 70.
        const int line[6] = {60, 62, 64, 70, 72, 74}, want[6] = {60, 65, 65, 69, 70, 74};
        EdgePicture pic(false, 16, line);
        Zan8u alpha[2] = {off, kAlphaTable[qp]}, beta[2] = {off, kBetaTable[qp]}, c[2] = {off, kCTable[qp]};
        Zan8u bs[8] = {0, 0, 0, 0, 2, 0, 2, 0};
        ZanDeblockingRecord r{&pic.s[8 * 32 + 8], 32, alpha, beta, c, bs, 0};
        ASSERT_EQ(zaniFilterDeblockingLuma_HorEdge_AVS_8u_C1IR(&r), zanStsOk);
        EXPECT_TRUE(pic.lines_are(8, 24, want, line));
        // q2 far from q0: only q0 changes, by (2 q1 + p0 + q0 + 2) >> 2 = 70
        // (with q0 and p0, not p1).
        const int line2[6] = {60, 62, 64, 70, 72, 90}, want2[6] = {60, 65, 65, 70, 72, 90};
        EdgePicture pic2(false, 16, line2);
        r.pSrcDstPlane = &pic2.s[8 * 32 + 8];
        ASSERT_EQ(zaniFilterDeblockingLuma_HorEdge_AVS_8u_C1IR(&r), zanStsOk);
        EXPECT_TRUE(pic2.lines_are(8, 24, want2, line2));
    }
    {
        // Chroma, strength 2 on both segments: p0 = (2 p1 + p0 + q0 + 2) >> 2
        // = 65, q0 = (2 q1 + p0 + q0 + 2) >> 2 = 70; p1 and q1 stay.
        const int line[6] = {60, 62, 64, 70, 72, 74}, want[6] = {60, 62, 65, 70, 72, 74};
        EdgePicture pic(true, 8, line);
        Zan8u alpha[2] = {kAlphaTable[qp], off}, beta[2] = {kBetaTable[qp], off}, c[2] = {kCTable[qp], off};
        Zan8u bs[4] = {2, 0, 2, 0};
        ZanDeblockingRecord r{&pic.s[8 * 32 + 8], 32, alpha, beta, c, bs, 0};
        ASSERT_EQ(zaniFilterDeblockingChroma_VerEdge_AVS_8u_C1IR(&r), zanStsOk);
        EXPECT_TRUE(pic.lines_are(8, 16, want, line));
        // Strengths 2 and 1: the group is not both 2, so both segments take
        // the normal filter: delta = (3 * 6 + 62 - 72 + 4) >> 3 = 1, p0 65,
        // q0 69.
        const int want1[6] = {60, 62, 65, 69, 72, 74};
        EdgePicture pic2(false, 8, line);
        Zan8u bs2[4] = {2, 0, 1, 0};
        r.pSrcDstPlane = &pic2.s[8 * 32 + 8];
        r.pBS = bs2;
        ASSERT_EQ(zaniFilterDeblockingChroma_HorEdge_AVS_8u_C1IR(&r), zanStsOk);
        EXPECT_TRUE(pic2.lines_are(8, 16, want1, line));
    }
    {
        // At QP 10 (alpha 1, beta 1) a step of 6 is left alone, also strong.
        const int line[6] = {60, 62, 64, 70, 72, 74};
        EdgePicture pic(true, 8, line);
        Zan8u alpha[2] = {kAlphaTable[10], kAlphaTable[10]}, beta[2] = {kBetaTable[10], kBetaTable[10]},
              c[2] = {kCTable[10], kCTable[10]};
        Zan8u bs[8] = {2, 0, 2, 0, 2, 0, 2, 0};
        ZanDeblockingRecord r{&pic.s[8 * 32 + 8], 32, alpha, beta, c, bs, 0};
        ASSERT_EQ(zaniFilterDeblockingLuma_VerEdge_AVS_8u_C1IR(&r), zanStsOk);
        EXPECT_TRUE(pic.lines_are(0, 0, line, line));
    }
}

}  // namespace
