// H.261, H.263 and MPEG-4 block filters through the exported functions:
// statuses in their order, outputs untouched on failure, plain models of the
// standards' filters against the library on random inputs, and known answers
// worked out by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

#include "zanvc.h"

namespace {

// A picture of 48 x 48 samples with the block of interest inside.
constexpr int kStep = 48;
using Pic = std::array<Zan8u, kStep * kStep>;

Pic random_pic(std::mt19937& g, int base, int spread) {
    Pic p;
    for (auto& v : p) v = static_cast<Zan8u>(std::clamp(base + static_cast<int>(g() % (2 * spread + 1)) - spread, 0, 255));
    return p;
}

int sgn(int v) { return (v > 0) - (v < 0); }
// a / b with truncation toward zero, and with rounding of halves away from zero.
int div_t0(int a, int b) { return a / b; }
int div_rnd(int a, int b) { return sgn(a) * ((std::abs(a) + b / 2) / b); }

// ------------------------------------------------------------------ models

// H.261 loop filter: out = (sum of wy * wx * p + 8) / 16, with the tap set
// (1, 2, 1) inside the block and (4) at its first and last sample.
void model_h261(const Zan8u* s, int ss, Zan8u* d, int ds) {
    auto taps = [](int i, int k) {  // weight of sample k for output i
        if (i == 0 || i == 7) return k == i ? 4 : 0;
        return k == i ? 2 : std::abs(k - i) == 1 ? 1 : 0;
    };
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            int acc = 0;
            for (int j = 0; j < 8; ++j)
                for (int i = 0; i < 8; ++i) acc += taps(y, j) * taps(x, i) * s[j * ss + i];
            d[y * ds + x] = static_cast<Zan8u>((acc + 8) / 16);
        }
}

int clip255(int v) { return std::clamp(v, 0, 255); }
int up_down_ramp(int x, int s) { return sgn(x) * std::max(0, std::abs(x) - std::max(0, 2 * (std::abs(x) - s))); }
int clipd1(int x, int lim) { return std::clamp(x, -std::abs(lim), std::abs(lim)); }
const int kStrengthTable[32] = {0, 1, 1, 2, 2, 3, 3, 4, 4, 4, 5, 5, 6, 6, 7, 7, 7, 8, 8, 8, 9, 9, 9, 10, 10, 10, 11, 11, 11, 12, 12, 12};

// Annex J on one line; s < 0: no strength limit.
void model_h263_line(Zan8u* a, Zan8u* b, Zan8u* c, Zan8u* dd, int s) {
    const int A = *a, B = *b, C = *c, D = *dd;
    const int d = div_t0(A - 4 * B + 4 * C - D, 8);
    const int d1 = s < 0 ? d : up_down_ramp(d, s);
    const int d2 = clipd1(div_t0(A - D, 4), div_t0(d1, 2));
    *b = static_cast<Zan8u>(clip255(B + d1));
    *c = static_cast<Zan8u>(clip255(C - d1));
    *a = static_cast<Zan8u>(clip255(A - d2));
    *dd = static_cast<Zan8u>(clip255(D + d2));
}

// pos: index of the first sample after the edge; x: distance across, l: along.
void model_h263(Zan8u* pic, int pos, int x, int l, int lines, int s) {
    for (int i = 0; i < lines; ++i) {
        Zan8u* p = pic + pos + i * l;
        model_h263_line(p - 2 * x, p - x, p, p + x, s);
    }
}

void model_bb(Zan8u* pic, int pos, int x, int l) {
    for (int i = 0; i < 16; ++i) {
        Zan8u* p = pic + pos + i * l;
        const int a = p[-x], b = p[0];
        p[-x] = static_cast<Zan8u>((3 * a + b + 2) / 4);
        p[0] = static_cast<Zan8u>((a + 3 * b + 2) / 4);
    }
}

// Annex F deblocking of one line v0..v9.
void model_mpeg4_line(int v[10], int qp, int thr1, int thr2) {
    int eq_cnt = 0;
    for (int i = 0; i < 9; ++i) eq_cnt += std::abs(v[i] - v[i + 1]) <= thr1;
    if (eq_cnt >= thr2) {
        const int mx = *std::max_element(v + 1, v + 9), mn = *std::min_element(v + 1, v + 9);
        if (!(std::abs(mx - mn) < 2 * qp)) return;
        const int b[9] = {1, 1, 2, 2, 4, 2, 2, 1, 1};
        int p[17];  // p[m + 4], m = -4..12
        for (int m = -4; m <= 12; ++m)
            p[m + 4] = m < 1 ? (std::abs(v[0] - v[1]) < qp ? v[0] : v[1])
                       : m > 8 ? (std::abs(v[8] - v[9]) < qp ? v[9] : v[8]) : v[m];
        int out[10];
        for (int n = 1; n <= 8; ++n) {
            int acc = 0;
            for (int k = -4; k <= 4; ++k) acc += b[k + 4] * p[n + k + 4];
            out[n] = div_rnd(acc, 16);
        }
        for (int n = 1; n <= 8; ++n) v[n] = out[n];
    } else {
        auto a3 = [&](int i) { return div_rnd(2 * v[i] - 5 * v[i + 1] + 5 * v[i + 2] - 2 * v[i + 3], 8); };
        const int a30 = a3(3), a31 = a3(1), a32 = a3(5);
        const int a30p = sgn(a30) * std::min({std::abs(a30), std::abs(a31), std::abs(a32)});
        const int q = div_t0(v[4] - v[5], 2);
        int d = div_rnd(5 * (a30p - a30), 8);
        d = q >= 0 ? std::clamp(d, 0, q) : std::clamp(d, q, 0);
        if (!(std::abs(a30) < qp)) d = 0;
        v[4] -= d;
        v[5] += d;
    }
}

void model_mpeg4(Zan8u* pic, int pos, int x, int l, int qp, int thr1, int thr2) {
    for (int i = 0; i < 8; ++i) {
        Zan8u* p = pic + pos + i * l;
        int v[10];
        for (int k = 0; k < 10; ++k) v[k] = p[(k - 5) * x];
        model_mpeg4_line(v, qp, thr1, thr2);
        for (int k = 1; k <= 8; ++k) p[(k - 5) * x] = static_cast<Zan8u>(v[k]);
    }
}

void model_thresholds(const Zan8u* y, int ys, const Zan8u* cb, int cbs, const Zan8u* cr, int crs, Zan32s out[6]) {
    const Zan8u* blk[6] = {y, y + 8, y + 8 * ys, y + 8 * ys + 8, cb, cr};
    const int st[6] = {ys, ys, ys, ys, cbs, crs};
    int range[6];
    for (int k = 0; k < 6; ++k) {
        int mx = 0, mn = 255;
        for (int j = 0; j < 8; ++j)
            for (int i = 0; i < 8; ++i) mx = std::max(mx, int(blk[k][j * st[k] + i])), mn = std::min(mn, int(blk[k][j * st[k] + i]));
        out[k] = (mx + mn + 1) / 2;
        range[k] = mx - mn;
    }
    const int kmax = static_cast<int>(std::max_element(range, range + 4) - range);  // first of the largest
    const int t = out[kmax];
    for (int k = 0; k < 4; ++k)
        if (range[k] < 32) out[k] = t;
}

// Annex F deringing: binary index over the block and its one-sample border,
// then the filter where the 3x3 indices agree, clipped to +-QP/2.
void model_dering(const Zan8u* s, int ss, Zan8u* d, int ds, int qp, int thr) {
    int bin[10][10];
    for (int j = -1; j <= 8; ++j)
        for (int i = -1; i <= 8; ++i) bin[j + 1][i + 1] = s[j * ss + i] >= thr ? 1 : 0;
    const int coef[3][3] = {{1, 2, 1}, {2, 4, 2}, {1, 2, 1}};
    const int max_diff = qp / 2;
    for (int j = 0; j < 8; ++j)
        for (int i = 0; i < 8; ++i) {
            int ones = 0, acc = 0;
            for (int v = -1; v <= 1; ++v)
                for (int h = -1; h <= 1; ++h) {
                    ones += bin[j + 1 + v][i + 1 + h];
                    acc += coef[v + 1][h + 1] * s[(j + v) * ss + i + h];
                }
            const int rec = s[j * ss + i];
            int out = rec;
            if (ones == 0 || ones == 9) {
                const int flt = (acc + 8) >> 4;
                out = flt - rec > max_diff ? rec + max_diff : flt - rec < -max_diff ? rec - max_diff : flt;
            }
            d[j * ds + i] = static_cast<Zan8u>(out);
        }
}

constexpr int kAt = 16 * kStep + 16;  // the block of interest

// ------------------------------------------------------ statuses and checks

TEST(Filters263, NullPointersFirst) {
    Pic p{};
    Zan32s thr[6] = {};
    EXPECT_EQ(zanStsNullPtr, zaniFilter8x8_H261_8u_C1R(nullptr, 8, p.data(), 8));
    EXPECT_EQ(zanStsNullPtr, zaniFilter8x8_H261_8u_C1R(p.data(), 8, nullptr, 8));
    // A null pointer beats a bad QP.
    EXPECT_EQ(zanStsNullPtr, zaniFilterDeblocking8x8HorEdge_H263_8u_C1IR(nullptr, kStep, 0));
    EXPECT_EQ(zanStsNullPtr, zaniFilterDeblocking8x8VerEdge_H263_8u_C1IR(nullptr, kStep, 99));
    EXPECT_EQ(zanStsNullPtr, zaniFilterDeblocking16x16HorEdge_H263_8u_C1IR(nullptr, kStep));
    EXPECT_EQ(zanStsNullPtr, zaniFilterDeblocking16x16VerEdge_H263_8u_C1IR(nullptr, kStep));
    EXPECT_EQ(zanStsNullPtr, zaniFilterBlockBoundaryHorEdge_H263_8u_C1IR(nullptr, kStep));
    EXPECT_EQ(zanStsNullPtr, zaniFilterBlockBoundaryVerEdge_H263_8u_C1IR(nullptr, kStep));
    EXPECT_EQ(zanStsNullPtr, zaniFilterDeblocking8x8HorEdge_MPEG4_8u_C1IR(nullptr, kStep, 0, 2, 6));
    EXPECT_EQ(zanStsNullPtr, zaniFilterDeblocking8x8VerEdge_MPEG4_8u_C1IR(nullptr, kStep, 32, 2, 6));
    EXPECT_EQ(zanStsNullPtr, zaniFilterDeringingSmooth8x8_MPEG4_8u_C1R(nullptr, kStep, p.data(), 8, 0, 5));
    EXPECT_EQ(zanStsNullPtr, zaniFilterDeringingSmooth8x8_MPEG4_8u_C1R(p.data() + kAt, kStep, nullptr, 8, 0, 5));
    const Zan8u* y = p.data();
    EXPECT_EQ(zanStsNullPtr, zaniFilterDeringingThreshold_MPEG4_8u_P3R(nullptr, kStep, y, kStep, y, kStep, thr));
    EXPECT_EQ(zanStsNullPtr, zaniFilterDeringingThreshold_MPEG4_8u_P3R(y, kStep, nullptr, kStep, y, kStep, thr));
    EXPECT_EQ(zanStsNullPtr, zaniFilterDeringingThreshold_MPEG4_8u_P3R(y, kStep, y, kStep, nullptr, kStep, thr));
    EXPECT_EQ(zanStsNullPtr, zaniFilterDeringingThreshold_MPEG4_8u_P3R(y, kStep, y, kStep, y, kStep, nullptr));
    for (Zan32s t : thr) EXPECT_EQ(0, t);
}

TEST(Filters263, QpRangeAndNothingWritten) {
    std::mt19937 g(7);
    const Pic orig = random_pic(g, 128, 60);
    for (Zan32s qp : {0, 32, -1, 1000, -0x7FFFFFFF - 1}) {
        Pic p = orig;
        EXPECT_EQ(zanStsQpBad, zaniFilterDeblocking8x8HorEdge_H263_8u_C1IR(p.data() + kAt, kStep, qp));
        EXPECT_EQ(zanStsQpBad, zaniFilterDeblocking8x8VerEdge_H263_8u_C1IR(p.data() + kAt, kStep, qp));
        EXPECT_EQ(zanStsQpBad, zaniFilterDeblocking8x8HorEdge_MPEG4_8u_C1IR(p.data() + kAt, kStep, qp, 2, 6));
        EXPECT_EQ(zanStsQpBad, zaniFilterDeblocking8x8VerEdge_MPEG4_8u_C1IR(p.data() + kAt, kStep, qp, 2, 6));
        EXPECT_EQ(zanStsQpBad, zaniFilterDeringingSmooth8x8_MPEG4_8u_C1R(p.data() + kAt, kStep, p.data() + 8, kStep, qp, 100));
        EXPECT_EQ(orig, p) << qp;
    }
    // The ends of the range are accepted; THR1, THR2 and threshold are not checked.
    Pic p = orig;
    EXPECT_EQ(zanStsOk, zaniFilterDeblocking8x8HorEdge_H263_8u_C1IR(p.data() + kAt, kStep, 1));
    EXPECT_EQ(zanStsOk, zaniFilterDeblocking8x8VerEdge_H263_8u_C1IR(p.data() + kAt, kStep, 31));
    EXPECT_EQ(zanStsOk, zaniFilterDeblocking8x8HorEdge_MPEG4_8u_C1IR(p.data() + kAt, kStep, 31, -7, 1000));
    EXPECT_EQ(zanStsOk, zaniFilterDeblocking8x8VerEdge_MPEG4_8u_C1IR(p.data() + kAt, kStep, 1, 1 << 30, -5));
    EXPECT_EQ(zanStsOk, zaniFilterDeringingSmooth8x8_MPEG4_8u_C1R(p.data() + kAt, kStep, p.data() + 8, kStep, 31, -100));
    // Unchecked steps: zero and negative are legal.
    EXPECT_EQ(zanStsOk, zaniFilter8x8_H261_8u_C1R(p.data() + kAt, 0, p.data() + 40 * kStep, -kStep));
    EXPECT_EQ(zanStsOk, zaniFilterBlockBoundaryHorEdge_H263_8u_C1IR(p.data() + kAt, -kStep));
}

// --------------------------------------------------- models against library

TEST(Filters263, ModelsAgreeOnRandomPictures) {
    std::mt19937 g(2024);
    for (int draw = 0; draw < 400; ++draw) {
        const int spread = std::array<int, 6>{0, 2, 5, 12, 40, 128}[g() % 6];
        const Pic orig = random_pic(g, static_cast<int>(g() % 256), spread);
        const int qp = 1 + draw % 31;
        // H.261
        {
            Pic want = orig, got = orig;
            model_h261(orig.data() + kAt, kStep, want.data() + 2, kStep);
            ASSERT_EQ(zanStsOk, zaniFilter8x8_H261_8u_C1R(orig.data() + kAt, kStep, got.data() + 2, kStep));
            ASSERT_EQ(want, got) << "H261 draw " << draw;
        }
        // H.263 deblocking and block boundary, both directions.
        for (int vert = 0; vert < 2; ++vert) {
            const int x = vert ? 1 : kStep, l = vert ? kStep : 1;
            Pic want = orig, got = orig;
            model_h263(want.data(), kAt, x, l, 8, kStrengthTable[qp]);
            ASSERT_EQ(zanStsOk, (vert ? zaniFilterDeblocking8x8VerEdge_H263_8u_C1IR : zaniFilterDeblocking8x8HorEdge_H263_8u_C1IR)(
                                    got.data() + kAt, kStep, qp));
            ASSERT_EQ(want, got) << "H263 8x8 vert " << vert << " draw " << draw;
            want = orig, got = orig;
            model_h263(want.data(), kAt, x, l, 16, -1);
            ASSERT_EQ(zanStsOk, (vert ? zaniFilterDeblocking16x16VerEdge_H263_8u_C1IR : zaniFilterDeblocking16x16HorEdge_H263_8u_C1IR)(
                                    got.data() + kAt, kStep));
            ASSERT_EQ(want, got) << "H263 16x16 vert " << vert << " draw " << draw;
            want = orig, got = orig;
            model_bb(want.data(), kAt, x, l);
            ASSERT_EQ(zanStsOk, (vert ? zaniFilterBlockBoundaryVerEdge_H263_8u_C1IR : zaniFilterBlockBoundaryHorEdge_H263_8u_C1IR)(
                                    got.data() + kAt, kStep));
            ASSERT_EQ(want, got) << "block boundary vert " << vert << " draw " << draw;
            const int thr1 = draw % 3 ? 2 : static_cast<int>(g() % 8), thr2 = draw % 3 ? 6 : static_cast<int>(g() % 11);
            want = orig, got = orig;
            model_mpeg4(want.data(), kAt, x, l, qp, thr1, thr2);
            ASSERT_EQ(zanStsOk, (vert ? zaniFilterDeblocking8x8VerEdge_MPEG4_8u_C1IR : zaniFilterDeblocking8x8HorEdge_MPEG4_8u_C1IR)(
                                    got.data() + kAt, kStep, qp, thr1, thr2));
            ASSERT_EQ(want, got) << "MPEG-4 vert " << vert << " draw " << draw << " QP " << qp;
        }
        // Deringing thresholds and smoothing.
        {
            Zan32s want[6], got[6];
            model_thresholds(orig.data() + kAt, kStep, orig.data() + 2, kStep, orig.data() + 40 * kStep + 30, kStep, want);
            ASSERT_EQ(zanStsOk, zaniFilterDeringingThreshold_MPEG4_8u_P3R(orig.data() + kAt, kStep, orig.data() + 2, kStep,
                                                                          orig.data() + 40 * kStep + 30, kStep, got));
            for (int k = 0; k < 6; ++k) ASSERT_EQ(want[k], got[k]) << "threshold " << k << " draw " << draw;
            const int thr = want[g() % 6] + static_cast<int>(g() % 5) - 2;
            Pic wp = orig, gp = orig;
            model_dering(orig.data() + kAt, kStep, wp.data() + 2, kStep, qp, thr);
            ASSERT_EQ(zanStsOk, zaniFilterDeringingSmooth8x8_MPEG4_8u_C1R(orig.data() + kAt, kStep, gp.data() + 2, kStep, qp, thr));
            ASSERT_EQ(wp, gp) << "deringing draw " << draw << " QP " << qp << " thr " << thr;
        }
    }
}

// ----------------------------------------------------------- known answers

TEST(Filters263, H261KnownAnswers) {
    Pic s{}, d{};
    s[3 * kStep + 3] = 160;  // interior impulse
    s[0 * kStep + 5] = 160;  // impulse on the top row
    ASSERT_EQ(zanStsOk, zaniFilter8x8_H261_8u_C1R(s.data(), kStep, d.data(), kStep));
    EXPECT_EQ(40, d[3 * kStep + 3]);  // (4 * 160 + 8) >> 4
    EXPECT_EQ(20, d[3 * kStep + 4]);  // (2 * 160 + 8) >> 4
    EXPECT_EQ(10, d[4 * kStep + 4]);  // (160 + 8) >> 4
    EXPECT_EQ(80, d[0 * kStep + 5]);  // rows 0 and 7 are times 4: (4 * 2 * 160 + 8) >> 4
    EXPECT_EQ(20, d[1 * kStep + 5]);
    EXPECT_EQ(0, d[7 * kStep + 7]);
    // Corners keep their value: (16 p + 8) >> 4 = p.
    Pic c{};
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) c[y * kStep + x] = static_cast<Zan8u>((x * 37 + y * 91) & 255);
    ASSERT_EQ(zanStsOk, zaniFilter8x8_H261_8u_C1R(c.data(), kStep, d.data(), kStep));
    for (int k : {0, 7, 7 * kStep, 7 * kStep + 7}) EXPECT_EQ(c[k], d[k]) << k;
    // In place gives the same as out of place.
    Pic e = c;
    ASSERT_EQ(zanStsOk, zaniFilter8x8_H261_8u_C1R(e.data(), kStep, e.data(), kStep));
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) EXPECT_EQ(d[y * kStep + x], e[y * kStep + x]);
}

// One vertical-edge line A B | C D at row 0, the edge at column 16.
struct Line {
    Pic p{};
    Line(int a, int b, int c, int d) {
        p.fill(77);
        p[14] = static_cast<Zan8u>(a), p[15] = static_cast<Zan8u>(b), p[16] = static_cast<Zan8u>(c), p[17] = static_cast<Zan8u>(d);
    }
    Zan8u* edge() { return p.data() + 16; }
    std::array<int, 4> abcd() const { return {p[14], p[15], p[16], p[17]}; }
};

TEST(Filters263, H263StrengthTable) {
    // A = B = D = 100, C = 100 + 2m gives d = m and d2 = 0: B' - B is d1.
    for (int qp = 1; qp <= 31; ++qp) {
        const int s = kStrengthTable[qp];
        const auto b_after = [&](int m) {
            Line l(100, 100, 100 + 2 * m, 100);
            EXPECT_EQ(zanStsOk, zaniFilterDeblocking8x8VerEdge_H263_8u_C1IR(l.edge(), kStep, qp));
            return l.abcd()[1] - 100;
        };
        EXPECT_EQ(s, b_after(s)) << qp;           // the top of the ramp
        EXPECT_EQ(s - 1, b_after(s + 1)) << qp;   // falling side
        EXPECT_EQ(0, b_after(2 * s)) << qp;       // beyond it nothing moves
        EXPECT_EQ(-s, b_after(-s)) << qp;
    }
    EXPECT_EQ(12, kStrengthTable[31]);
    // QP 1: S = 1, a step with d = 3 is left alone.
    Line l(100, 100, 106, 100);
    ASSERT_EQ(zanStsOk, zaniFilterDeblocking8x8VerEdge_H263_8u_C1IR(l.edge(), kStep, 1));
    EXPECT_EQ((std::array<int, 4>{100, 100, 106, 100}), l.abcd());
}

TEST(Filters263, H263KnownLines) {
    // d = 120 / 8 = 15.  Unlimited: d1 = 15, d2 = -10 limited to -7.
    Line u(100, 100, 140, 140);
    ASSERT_EQ(zanStsOk, zaniFilterDeblocking16x16VerEdge_H263_8u_C1IR(u.edge(), kStep));
    EXPECT_EQ((std::array<int, 4>{107, 115, 125, 133}), u.abcd());
    // QP 31 (S = 12): d1 = 15 - 2 * 3 = 9, d2 limited to -4.
    Line q(100, 100, 140, 140);
    ASSERT_EQ(zanStsOk, zaniFilterDeblocking8x8VerEdge_H263_8u_C1IR(q.edge(), kStep, 31));
    EXPECT_EQ((std::array<int, 4>{104, 109, 131, 136}), q.abcd());
    // d = -7 / 8 truncates to 0 (not -1): the line stays.
    Line t(0, 0, 0, 7);
    ASSERT_EQ(zanStsOk, zaniFilterDeblocking8x8VerEdge_H263_8u_C1IR(t.edge(), kStep, 31));
    EXPECT_EQ((std::array<int, 4>{0, 0, 0, 7}), t.abcd());
    // Saturation: B + d1 and C - d1 clamp.
    Line s(255, 0, 255, 0);  // d = (255 + 1020) / 8 = 159
    ASSERT_EQ(zanStsOk, zaniFilterDeblocking16x16VerEdge_H263_8u_C1IR(s.edge(), kStep));
    EXPECT_EQ((std::array<int, 4>{192, 159, 96, 63}), s.abcd());  // d2 = 63
    // Samples beyond the four are untouched, rows 1..15 too.
    EXPECT_EQ(77, s.p[13]);
    EXPECT_EQ(77, s.p[18]);
    // Block boundary: 0 | 255.
    Line b(9, 0, 255, 9);
    ASSERT_EQ(zanStsOk, zaniFilterBlockBoundaryVerEdge_H263_8u_C1IR(b.edge(), kStep));
    EXPECT_EQ((std::array<int, 4>{9, 64, 191, 9}), b.abcd());
}

// A vertical-edge MPEG-4 line v0..v9 in row 0, v5 at column 16.
std::array<int, 10> mpeg4_line(const std::array<int, 10>& v, int qp, int thr1, int thr2, bool vertical = true) {
    Pic p;
    p.fill(33);
    for (int k = 0; k < 10; ++k) p[static_cast<size_t>(vertical ? 11 + k : (11 + k) * kStep)] = static_cast<Zan8u>(v[static_cast<size_t>(k)]);
    Zan8u* e = vertical ? p.data() + 16 : p.data() + 16 * kStep;
    EXPECT_EQ(zanStsOk, (vertical ? zaniFilterDeblocking8x8VerEdge_MPEG4_8u_C1IR : zaniFilterDeblocking8x8HorEdge_MPEG4_8u_C1IR)(
                            e, kStep, qp, thr1, thr2));
    std::array<int, 10> out;
    for (int k = 0; k < 10; ++k) out[static_cast<size_t>(k)] = p[static_cast<size_t>(vertical ? 11 + k : (11 + k) * kStep)];
    return out;
}

TEST(Filters263, Mpeg4ModeSwitch) {
    const std::array<int, 10> v = {10, 10, 10, 10, 10, 12, 12, 12, 12, 12};
    for (bool vertical : {true, false}) {
        // Nine equal pairs >= THR2 = 6: DC-offset mode, the 9-tap smoothing.
        EXPECT_EQ((std::array<int, 10>{10, 10, 10, 11, 11, 11, 12, 12, 12, 12}), mpeg4_line(v, 2, 2, 6, vertical));
        // THR2 = 10 can never be met: default mode.  a0 = 6 // 8 = 1 (rounded),
        // a0' = 0, d = -5 // 8 = -1 within (10 - 12) / 2 = -1.
        EXPECT_EQ((std::array<int, 10>{10, 10, 10, 10, 11, 11, 12, 12, 12, 12}), mpeg4_line(v, 2, 2, 10, vertical));
        // THR1 = 1 makes the step pair unequal: 8 pairs, still >= 6.
        EXPECT_EQ((std::array<int, 10>{10, 10, 10, 11, 11, 11, 12, 12, 12, 12}), mpeg4_line(v, 2, 1, 6, vertical));
        // DC-offset mode with max - min = 2 not below 2 QP = 2: unchanged.
        EXPECT_EQ(v, mpeg4_line(v, 1, 2, 6, vertical));
        // Default mode with |a0| = 1 not below QP = 1: unchanged.
        EXPECT_EQ(v, mpeg4_line(v, 1, 2, 10, vertical));
    }
    // The end values enter the DC-offset smoothing only when close to v1 / v8.
    const std::array<int, 10> w = {40, 10, 10, 10, 10, 12, 12, 12, 12, 12};
    // |v0 - v1| = 30 >= QP 2: v1 pads, the same result as above.
    EXPECT_EQ((std::array<int, 10>{40, 10, 10, 11, 11, 11, 12, 12, 12, 12}), mpeg4_line(w, 2, 2, 6));
    // QP 31: v0 = 40 pads: v1 = (4*40 + 2*10 + 4*10 + 2*10 ... ) worked out:
    // p(-3..0) = 40, sum for v1 = 40*(1+1+2+2) + 10*(4+2+2+1) + 12 = 240 + 90 + 12 = 342 -> 21.
    EXPECT_EQ(21, mpeg4_line(w, 31, 2, 6)[1]);
}

TEST(Filters263, DeringingThresholdRanges) {
    // Blocks: range 31, 80 (widest), 32, 80 (tie, later); chroma flat.
    Pic y{}, c{};
    c.fill(50);
    auto block = [&](int k, int lo, int hi) {
        Zan8u* b = y.data() + 8 * kStep * (k >> 1) + 8 * (k & 1);
        for (int j = 0; j < 8; ++j)
            for (int i = 0; i < 8; ++i) b[j * kStep + i] = static_cast<Zan8u>(lo + (i + j) % 3);
        b[0] = static_cast<Zan8u>(lo);
        b[kStep + 1] = static_cast<Zan8u>(hi);
    };
    block(0, 100, 131);
    block(1, 20, 100);
    block(2, 200, 232);
    block(3, 0, 80);
    Zan32s t[6];
    ASSERT_EQ(zanStsOk, zaniFilterDeringingThreshold_MPEG4_8u_P3R(y.data(), kStep, c.data(), kStep, c.data() + 8, kStep, t));
    EXPECT_EQ(60, t[0]);   // range 31 takes block 1's (100 + 20 + 1) / 2
    EXPECT_EQ(60, t[1]);
    EXPECT_EQ(216, t[2]);  // range 32 keeps (232 + 200 + 1) / 2
    EXPECT_EQ(40, t[3]);   // its own: (80 + 0 + 1) / 2
    EXPECT_EQ(50, t[4]);   // chroma stands even with range 0
    EXPECT_EQ(50, t[5]);
}

TEST(Filters263, DeringingSmoothKnownAnswers) {
    Pic s;
    s.fill(100);
    s[kAt + 3 * kStep + 3] = 120;
    auto run = [&](int qp, int thr) {
        Pic d;
        d.fill(7);
        EXPECT_EQ(zanStsOk, zaniFilterDeringingSmooth8x8_MPEG4_8u_C1R(s.data() + kAt, kStep, d.data() + 1, kStep, qp, thr));
        EXPECT_EQ(7, d[0]);
        EXPECT_EQ(7, d[9]);
        EXPECT_EQ(7, d[8 * kStep + 1]);
        return d;
    };
    auto at = [](const Pic& d, int x, int y) { return int(d[static_cast<size_t>(1 + y * kStep + x)]); };
    // All indices 1: filtered everywhere.  Centre (4*120 + 12*100 + 8) >> 4 =
    // 105, limited to 120 - QP/2; side 103; diagonal 101.
    Pic d = run(31, 50);
    EXPECT_EQ(105, at(d, 3, 3));
    EXPECT_EQ(103, at(d, 4, 3));
    EXPECT_EQ(101, at(d, 4, 4));
    EXPECT_EQ(100, at(d, 0, 0));
    d = run(10, 50);  // max_diff 5
    EXPECT_EQ(115, at(d, 3, 3));
    EXPECT_EQ(103, at(d, 4, 3));
    d = run(5, 50);  // max_diff 2
    EXPECT_EQ(118, at(d, 3, 3));
    EXPECT_EQ(102, at(d, 4, 3));
    EXPECT_EQ(101, at(d, 4, 4));
    d = run(3, 50);  // max_diff 1
    EXPECT_EQ(119, at(d, 3, 3));
    EXPECT_EQ(101, at(d, 4, 3));
    // QP 1 copies whatever the threshold.
    d = run(1, 50);
    EXPECT_EQ(120, at(d, 3, 3));
    EXPECT_EQ(100, at(d, 4, 3));
    // Threshold 110: the 120 disagrees with its neighbours; every window that
    // holds it is copied, the rest is flat: the block comes out as it went in.
    d = run(31, 110);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) EXPECT_EQ(s[static_cast<size_t>(kAt + y * kStep + x)], at(d, x, y));
    // The sample diagonally outside the block counts in the corner's window.
    s[kAt + 3 * kStep + 3] = 100;
    s[kAt - kStep - 1] = 120;
    d = run(31, 50);
    EXPECT_EQ(101, at(d, 0, 0));
    EXPECT_EQ(100, at(d, 1, 1));
    // A flat block stays flat through every filter.
    s.fill(100);
    d = run(31, 100);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) EXPECT_EQ(100, at(d, x, y));
}

}  // namespace
