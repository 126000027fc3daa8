// VC-1 transforms and quantisers through the exported functions: statuses in
// their order, outputs untouched on failure, the inverse transform against a
// plain matrix model of the standard's inverse transform, hand-worked
// saturation and DC cases, the reciprocal division against exact division,
// and the reach that the inverse quantisers report.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <functional>
#include <vector>

#include "zanvc.h"

namespace {

// A W x H block of Zan16s in a picture with room around it; rows kStep bytes apart.
struct Block {
    static constexpr Zan32s kStep = 48;  // bytes, 24 samples
    std::array<Zan16s, 24 * 12> px;
    explicit Block(Zan16s fill = 0) { px.fill(fill); }
    Zan16s* at(Zan32s x, Zan32s y) { return px.data() + (y + 2) * 24 + 4 + x; }
    Zan16s& operator()(Zan32s x, Zan32s y) { return *at(x, y); }
    Zan16s* origin() { return at(0, 0); }
};

// ------------------------------------------------------ matrix model

constexpr int kT8[8][8] = {
    {12, 12, 12, 12, 12, 12, 12, 12},     {16, 15, 9, 4, -4, -9, -15, -16},
    {16, 6, -6, -16, -16, -6, 6, 16},     {15, -4, -16, -9, 9, 16, 4, -15},
    {12, -12, -12, 12, 12, -12, -12, 12}, {9, -16, 4, 15, -15, -4, 16, -9},
    {6, -16, 16, -6, -6, 16, -16, 6},     {4, -9, 15, -16, 16, -15, 9, -4},
};
constexpr int kT4[4][4] = {{17, 17, 17, 17}, {22, 10, -10, -22}, {17, -17, -17, 17}, {10, -22, 22, -10}};

using Matrix = std::vector<std::vector<std::int64_t>>;
Matrix matrix(int rows, int cols) { return Matrix(static_cast<size_t>(rows), std::vector<std::int64_t>(static_cast<size_t>(cols))); }
Matrix tmat(int n) {
    Matrix t = matrix(n, n);
    for (int r = 0; r < n; ++r)
        for (int c = 0; c < n; ++c) t[r][c] = n == 8 ? kT8[r][c] : kT4[r][c];
    return t;
}
Matrix mul(const Matrix& a, const Matrix& b) {
    Matrix m = matrix(static_cast<int>(a.size()), static_cast<int>(b[0].size()));
    for (size_t i = 0; i < a.size(); ++i)
        for (size_t j = 0; j < b[0].size(); ++j)
            for (size_t k = 0; k < b.size(); ++k) m[i][j] += a[i][k] * b[k][j];
    return m;
}
Matrix transpose(const Matrix& a) {
    Matrix m = matrix(static_cast<int>(a[0].size()), static_cast<int>(a.size()));
    for (size_t i = 0; i < a.size(); ++i)
        for (size_t j = 0; j < a[0].size(); ++j) m[j][i] = a[i][j];
    return m;
}
// E = (D T_M + 4) >> 3;  R = (T_N' E + C_N 1_M + 64) >> 7, C_8 = (0 0 0 0 1 1 1 1)',
// C_4 = 0; D is N rows of M coefficients.
Matrix model_inverse(const Matrix& d) {
    const int n = static_cast<int>(d.size()), m = static_cast<int>(d[0].size());
    Matrix e = mul(d, tmat(m));
    for (auto& row : e)
        for (auto& v : row) v = (v + 4) >> 3;
    Matrix r = mul(transpose(tmat(n)), e);
    for (int i = 0; i < n; ++i)
        for (auto& v : r[i]) v = (v + (n == 8 && i >= 4 ? 1 : 0) + 64) >> 7;
    return r;
}

using InvC1R = ZanStatus (*)(const Zan16s*, Zan32s, Zan16s*, Zan32s, ZaniSize);
using InvC1IR = ZanStatus (*)(Zan16s*, Zan32s, ZaniSize);
using FwdC1R = ZanStatus (*)(const Zan16s*, Zan32s, Zan16s*, Zan32s);
using FwdC1IR = ZanStatus (*)(Zan16s*, Zan32s);
struct Shape {
    int w, h;
    InvC1R inv;
    InvC1IR invI;
    FwdC1R fwd;
    FwdC1IR fwdI;
};
const Shape kShapes[] = {
    {8, 8, zaniTransform8x8Inv_VC1_16s_C1R, zaniTransform8x8Inv_VC1_16s_C1IR, zaniTransform8x8Fwd_VC1_16s_C1R,
     zaniTransform8x8Fwd_VC1_16s_C1IR},
    {8, 4, zaniTransform8x4Inv_VC1_16s_C1R, zaniTransform8x4Inv_VC1_16s_C1IR, zaniTransform8x4Fwd_VC1_16s_C1R,
     zaniTransform8x4Fwd_VC1_16s_C1IR},
    {4, 8, zaniTransform4x8Inv_VC1_16s_C1R, zaniTransform4x8Inv_VC1_16s_C1IR, zaniTransform4x8Fwd_VC1_16s_C1R,
     zaniTransform4x8Fwd_VC1_16s_C1IR},
    {4, 4, zaniTransform4x4Inv_VC1_16s_C1R, zaniTransform4x4Inv_VC1_16s_C1IR, zaniTransform4x4Fwd_VC1_16s_C1R,
     zaniTransform4x4Fwd_VC1_16s_C1IR},
};

std::uint64_t g_state = 0x1234567;
Zan32s rnd(Zan32s lo, Zan32s hi) {
    g_state = g_state * 6364136223846793005ull + 1442695040888963407ull;
    return lo + static_cast<Zan32s>((g_state >> 33) % static_cast<std::uint64_t>(hi - lo + 1));
}

// ------------------------------------------------------ transforms

// Coefficients in the standard's range, -2048..2047: no pass saturates, and
// every shape equals the model, out of place and in place, and with the
// reach the inverse quantiser reports for sparse blocks.
TEST(Vc1xform, InverseTransformEqualsMatrixModel) {
    for (const Shape& s : kShapes)
        for (int draw = 0; draw < 200; ++draw) {
            Block src, dst(-1);
            Matrix d = matrix(s.h, s.w);
            const int sparse = draw % 4;  // 0: full; 1..3: a corner of the block
            const int cw = sparse ? rnd(1, s.w) : s.w, ch = sparse ? rnd(1, s.h) : s.h;
            for (int i = 0; i < s.h; ++i)
                for (int j = 0; j < s.w; ++j) {
                    d[i][j] = (i < ch && j < cw) ? rnd(-2048, 2047) : 0;
                    src(j, i) = static_cast<Zan16s>(d[i][j]);
                }
            Matrix want = model_inverse(d);
            ZaniSize full{s.w, s.h};
            ASSERT_EQ(s.inv(src.origin(), Block::kStep, dst.origin(), Block::kStep, full), zanStsOk);
            // The reach of the non-zero coefficients, as the quantiser gives it.
            Block levels;
            ZaniSize reach{-5, -5};
            ASSERT_EQ(zaniQuantInvInterUniform_VC1_16s_C1R(src.origin(), Block::kStep, levels.origin(), Block::kStep, 1,
                                                           ZaniSize{s.w, s.h}, &reach),
                      zanStsOk);
            Block short_(-1);
            ASSERT_EQ(s.inv(src.origin(), Block::kStep, short_.origin(), Block::kStep, reach), zanStsOk);
            Block inplace = src;
            ASSERT_EQ(s.invI(inplace.origin(), Block::kStep, full), zanStsOk);
            for (int i = 0; i < s.h; ++i)
                for (int j = 0; j < s.w; ++j) {
                    ASSERT_EQ(dst(j, i), want[i][j]) << s.w << "x" << s.h << " draw " << draw << " at " << j << "," << i;
                    ASSERT_EQ(short_(j, i), want[i][j]) << s.w << "x" << s.h << " reach " << reach.width << "x"
                                                       << reach.height << " at " << j << "," << i;
                    ASSERT_EQ(inplace(j, i), want[i][j]);
                }
            // Nothing outside the block is written.
            for (int y = -2; y < 10; ++y)
                for (int x = -4; x < 20; ++x)
                    if (x < 0 || y < 0 || x >= s.w || y >= s.h) {
                        ASSERT_EQ(dst(x, y), -1);
                    }
        }
}

TEST(Vc1xform, InverseTransformDcOnly) {
    // 4x4: ((((x * 17 + 4) >> 3) * 17 + 64) >> 7); x = 100: (1704 >> 3) = 213,
    // (3621 + 64) >> 7 = 28.
    Block b;
    b(0, 0) = 100;
    b(1, 0) = 555;  // ignored: the reach says DC only
    ASSERT_EQ(zaniTransform4x4Inv_VC1_16s_C1IR(b.origin(), Block::kStep, ZaniSize{1, 1}), zanStsOk);
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j) EXPECT_EQ(b(j, i), 28);
    EXPECT_EQ(b(4, 0), 0);
    // 8x8, x = -300: (-3600 + 4) >> 3 = -450; (-5400 + 64) >> 7 = -42 (floor).
    Block c;
    c(0, 0) = -300;
    c(7, 7) = 1000;  // ignored
    Block out(7);
    ASSERT_EQ(zaniTransform8x8Inv_VC1_16s_C1R(c.origin(), Block::kStep, out.origin(), Block::kStep, ZaniSize{0, 1}), zanStsOk);
    for (int i = 0; i < 8; ++i)
        for (int j = 0; j < 8; ++j) EXPECT_EQ(out(j, i), -42);
    // 8x4 (12 across, 17 down) and 4x8 (17 across, 12 down), x = 64:
    // (768 + 4) >> 3 = 96, (1632 + 64) >> 7 = 13; (1088 + 4) >> 3 = 136, (1632 + 64) >> 7 = 13.
    Block d1, d2;
    d1(0, 0) = d2(0, 0) = 64;
    ASSERT_EQ(zaniTransform8x4Inv_VC1_16s_C1IR(d1.origin(), Block::kStep, ZaniSize{1, 0}), zanStsOk);
    ASSERT_EQ(zaniTransform4x8Inv_VC1_16s_C1IR(d2.origin(), Block::kStep, ZaniSize{-3, 1}), zanStsOk);
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 8; ++j) EXPECT_EQ(d1(j, i), 13);
    for (int i = 0; i < 8; ++i)
        for (int j = 0; j < 4; ++j) EXPECT_EQ(d2(j, i), 13);
}

TEST(Vc1xform, InverseTransformSaturatesTheRowPass) {
    // 8x8 with DC 32767: the row pass gives (32767 * 12 + 4) >> 3 = 49150,
    // saturated to 32767; the column pass (32767 * 12 + 64) >> 7 = 3072.
    Block b;
    b(0, 0) = 32767;
    Block full(0), dc(0);
    ASSERT_EQ(zaniTransform8x8Inv_VC1_16s_C1R(b.origin(), Block::kStep, full.origin(), Block::kStep, ZaniSize{8, 8}), zanStsOk);
    ASSERT_EQ(zaniTransform8x8Inv_VC1_16s_C1R(b.origin(), Block::kStep, dc.origin(), Block::kStep, ZaniSize{1, 1}), zanStsOk);
    // The DC shortcut keeps the middle value: (49150 * 12 + 64) >> 7 = 4608.
    for (int i = 0; i < 8; ++i)
        for (int j = 0; j < 8; ++j) {
            EXPECT_EQ(full(j, i), 3072);
            EXPECT_EQ(dc(j, i), 4608);
        }
    // 4x4, row 0 = 30000, 30000, 0, 0: row pass 146250 -> 32767, 101250 ->
    // 32767, 26250, -18750; column pass (17 e + 64) >> 7 = 4352, 4352, 3486, -2490.
    Block c;
    c(0, 0) = c(1, 0) = 30000;
    ASSERT_EQ(zaniTransform4x4Inv_VC1_16s_C1IR(c.origin(), Block::kStep, ZaniSize{2, 1}), zanStsOk);
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(c(0, i), 4352);
        EXPECT_EQ(c(1, i), 4352);
        EXPECT_EQ(c(2, i), 3486);
        EXPECT_EQ(c(3, i), -2490);
    }
}

TEST(Vc1xform, InverseTransformReachDropsColumns) {
    // A coefficient in column 5 of an 8x8 block counts only when the reach's
    // width is above 4; in column 3 only when it is above 2.
    Block b;
    b(0, 0) = 200;
    b(5, 1) = 300;
    b(3, 2) = -100;
    Block w4(0), only01(0), want(0);
    Block base;
    base(0, 0) = 200;
    base(3, 2) = -100;
    ASSERT_EQ(zaniTransform8x8Inv_VC1_16s_C1R(b.origin(), Block::kStep, w4.origin(), Block::kStep, ZaniSize{4, 3}), zanStsOk);
    ASSERT_EQ(zaniTransform8x8Inv_VC1_16s_C1R(base.origin(), Block::kStep, want.origin(), Block::kStep, ZaniSize{8, 8}), zanStsOk);
    EXPECT_EQ(w4.px, want.px);
    Block dcOnlyCols;
    dcOnlyCols(0, 0) = 200;
    ASSERT_EQ(zaniTransform8x8Inv_VC1_16s_C1R(b.origin(), Block::kStep, only01.origin(), Block::kStep, ZaniSize{2, 8}), zanStsOk);
    ASSERT_EQ(zaniTransform8x8Inv_VC1_16s_C1R(dcOnlyCols.origin(), Block::kStep, want.origin(), Block::kStep, ZaniSize{8, 8}), zanStsOk);
    EXPECT_EQ(only01.px, want.px);
}

// The forward transform brings residuals to the scale of the inverse: a
// round trip returns 9-bit residuals within two (the largest error seen in 30000 blocks per shape).
TEST(Vc1xform, ForwardThenInverseReturnsTheResidual) {
    for (const Shape& s : kShapes) {
        int worst = 0;
        for (int draw = 0; draw < 2000; ++draw) {
            Block res, coef, back;
            for (int i = 0; i < s.h; ++i)
                for (int j = 0; j < s.w; ++j) res(j, i) = static_cast<Zan16s>(rnd(-511, 511));
            ASSERT_EQ(s.fwd(res.origin(), Block::kStep, coef.origin(), Block::kStep), zanStsOk);
            Block inplace = res;
            ASSERT_EQ(s.fwdI(inplace.origin(), Block::kStep), zanStsOk);
            ASSERT_EQ(inplace.px, coef.px);
            ASSERT_EQ(s.inv(coef.origin(), Block::kStep, back.origin(), Block::kStep, ZaniSize{s.w, s.h}), zanStsOk);
            for (int i = 0; i < s.h; ++i)
                for (int j = 0; j < s.w; ++j) worst = std::max(worst, std::abs(back(j, i) - res(j, i)));
        }
        EXPECT_LE(worst, 2) << s.w << "x" << s.h;
    }
    // A flat 8x8 block of 255: rows (255 * 96 + 4) >> 3 = 3060, columns
    // (96 * 3060 + 32) >> 6 = 4590, scale round(2^34 / 1152^2) = 12945:
    // (4590 * 12945 + 16384) >> 15 = 1813; every other coefficient is 0.
    Block flat;
    for (int i = 0; i < 8; ++i)
        for (int j = 0; j < 8; ++j) flat(j, i) = 255;
    ASSERT_EQ(zaniTransform8x8Fwd_VC1_16s_C1IR(flat.origin(), Block::kStep), zanStsOk);
    EXPECT_EQ(flat(0, 0), 1813);
    for (int i = 0; i < 8; ++i)
        for (int j = 0; j < 8; ++j)
            if (i || j) {
                EXPECT_EQ(flat(j, i), 0) << j << "," << i;
            }
}

TEST(Vc1xform, TransformsCheckOnlyPointers) {
    Block a(5), b(6);
    const Block a0 = a, b0 = b;
    for (const Shape& s : kShapes) {
        EXPECT_EQ(s.inv(nullptr, Block::kStep, b.origin(), Block::kStep, ZaniSize{8, 8}), zanStsNullPtr);
        EXPECT_EQ(s.inv(a.origin(), Block::kStep, nullptr, Block::kStep, ZaniSize{8, 8}), zanStsNullPtr);
        EXPECT_EQ(s.invI(nullptr, Block::kStep, ZaniSize{8, 8}), zanStsNullPtr);
        EXPECT_EQ(s.fwd(nullptr, 0, b.origin(), -1), zanStsNullPtr);
        EXPECT_EQ(s.fwd(a.origin(), 0, nullptr, -1), zanStsNullPtr);
        EXPECT_EQ(s.fwdI(nullptr, 0), zanStsNullPtr);
    }
    EXPECT_EQ(a.px, a0.px);
    EXPECT_EQ(b.px, b0.px);
    // Zero and negative steps and any reach are legal: a zero step reads and
    // writes one row over and over.
    Block c;
    c(0, 0) = 64;
    EXPECT_EQ(zaniTransform4x4Inv_VC1_16s_C1IR(c.origin(), 0, ZaniSize{100, -7}), zanStsOk);
    Block d;
    EXPECT_EQ(zaniTransform8x8Fwd_VC1_16s_C1R(d.at(0, 7), -Block::kStep, d.at(0, 7), -Block::kStep), zanStsOk);
}

// ------------------------------------------------------ quantisers

using QuantInter = ZanStatus (*)(Zan16s*, Zan32s, Zan32s, ZaniSize);

// Uniform division equals x / d truncated toward zero over all 16-bit x, for
// every d but 19, 21, 27, 41 and 55.  Those five keep the reciprocal's value.
TEST(Vc1xform, UniformQuantiserIsExactDivisionExceptFiveValues) {
    const Zan32s kInexact[] = {19, 21, 27, 41, 55};
    for (Zan32s d = 2; d <= 62; ++d) {
        bool inexact = false;
        for (Zan32s q : kInexact) inexact |= q == d;
        int differ = 0;
        for (Zan32s base = -32768; base < 32768; base += 64) {
            Block b;
            for (int k = 0; k < 64; ++k) b(k % 8, k / 8) = static_cast<Zan16s>(base + k);
            ASSERT_EQ(zaniQuantInterUniform_VC1_16s_C1IR(b.origin(), Block::kStep, d, ZaniSize{8, 8}), zanStsOk);
            for (int k = 0; k < 64; ++k) differ += b(k % 8, k / 8) != (base + k) / d;
        }
        if (inexact)
            EXPECT_GT(differ, 1000) << "d " << d;
        else
            EXPECT_EQ(differ, 0) << "d " << d;
    }
}

TEST(Vc1xform, QuantiserKnownAnswers) {
    auto one = [](QuantInter f, Zan32s d, Zan16s x) {
        Block b;
        b(3, 2) = x;
        EXPECT_EQ(f(b.origin(), Block::kStep, d, ZaniSize{4, 4}), zanStsOk);
        return b(3, 2);
    };
    const QuantInter uni = zaniQuantInterUniform_VC1_16s_C1IR, non = zaniQuantInterNonuniform_VC1_16s_C1IR;
    // Kind c (32): a shift with the bias d - 1 for negative values.
    EXPECT_EQ(one(uni, 32, -1), 0);
    EXPECT_EQ(one(uni, 32, -32), -1);
    EXPECT_EQ(one(uni, 32, -33), -1);
    EXPECT_EQ(one(uni, 32, 63), 1);
    // 19 (kind a, m 13797, s 2): 19 * 13797 = 262143, >> 16 = 3, >> 2 = 0,
    // one less than 19 / 19; -19: -4 >> 2 = -1, + 1 = 0.
    EXPECT_EQ(one(uni, 19, 19), 0);
    EXPECT_EQ(one(uni, 19, -19), 0);
    EXPECT_EQ(one(uni, 19, 20), 1);
    // Kind b (7, m -28086, s 2): 100: hi(-2808600) = -43, 57 >> 2 = 14.
    EXPECT_EQ(one(uni, 7, 100), 14);
    EXPECT_EQ(one(uni, 7, -32768), -4681);
    // Non-uniform: half a step toward zero first.  8: 10 - 4 = 6 -> 0;
    // -13 + 4 = -9 -> (-9 + 7) >> 3 = -1; 62: 1 - 31 = -30 -> 0.
    EXPECT_EQ(one(non, 8, 10), 0);
    EXPECT_EQ(one(non, 8, 12), 1);
    EXPECT_EQ(one(non, 8, -13), -1);
    EXPECT_EQ(one(non, 62, 1), 0);
    EXPECT_EQ(one(non, 62, -32768), -528);  // -32737 / 62 = -528.0...
}

TEST(Vc1xform, IntraQuantisersKeepTheFirstSample) {
    for (auto f : {zaniQuantIntraUniform_VC1_16s_C1IR, zaniQuantIntraNonuniform_VC1_16s_C1IR}) {
        Block b(1000);
        ASSERT_EQ(f(b.origin(), Block::kStep, 2), zanStsOk);
        EXPECT_EQ(b(0, 0), 1000);
        const Zan16s other = f == zaniQuantIntraUniform_VC1_16s_C1IR ? 500 : 499;  // (1000 - 1) >> 1
        for (int i = 0; i < 8; ++i)
            for (int j = 0; j < 8; ++j)
                if (i || j) {
                    EXPECT_EQ(b(j, i), other);
                }
        EXPECT_EQ(b(8, 0), 1000);  // outside the block
        EXPECT_EQ(b(0, 8), 1000);
    }
}

TEST(Vc1xform, QuantiserStatusesInOrder) {
    Block b(77);
    const Block b0 = b;
    const QuantInter inter[] = {zaniQuantInterUniform_VC1_16s_C1IR, zaniQuantInterNonuniform_VC1_16s_C1IR};
    for (auto f : {zaniQuantIntraUniform_VC1_16s_C1IR, zaniQuantIntraNonuniform_VC1_16s_C1IR}) {
        EXPECT_EQ(f(nullptr, Block::kStep, 0), zanStsNullPtr);
        EXPECT_EQ(f(b.origin(), Block::kStep, 1), zanStsOutOfRange);
        EXPECT_EQ(f(b.origin(), Block::kStep, 63), zanStsOutOfRange);
        EXPECT_EQ(f(b.origin(), Block::kStep, -4), zanStsOutOfRange);
    }
    for (auto f : inter) {
        EXPECT_EQ(f(nullptr, Block::kStep, 0, ZaniSize{3, 3}), zanStsNullPtr);  // null first
        EXPECT_EQ(f(b.origin(), Block::kStep, 63, ZaniSize{3, 3}), zanStsOutOfRange);  // then doubleQuant
        EXPECT_EQ(f(b.origin(), Block::kStep, 1, ZaniSize{8, 8}), zanStsOutOfRange);
        EXPECT_EQ(f(b.origin(), Block::kStep, 8, ZaniSize{8, 6}), zanStsSizeBad);
        EXPECT_EQ(f(b.origin(), Block::kStep, 8, ZaniSize{6, 8}), zanStsSizeBad);
        EXPECT_EQ(f(b.origin(), Block::kStep, 8, ZaniSize{16, 4}), zanStsSizeBad);
        EXPECT_EQ(f(b.origin(), Block::kStep, 8, ZaniSize{0, 0}), zanStsSizeBad);
    }
    EXPECT_EQ(b.px, b0.px);
    // The inverse quantisers: pointers, then sizes; doubleQuant is not checked.
    Block dst(9);
    const Block dst0 = dst;
    ZaniSize nz{-9, -9};
    EXPECT_EQ(zaniQuantInvIntraUniform_VC1_16s_C1R(nullptr, 16, dst.origin(), 16, 4, &nz), zanStsNullPtr);
    EXPECT_EQ(zaniQuantInvIntraNonuniform_VC1_16s_C1R(b.origin(), 16, nullptr, 16, 4, &nz), zanStsNullPtr);
    EXPECT_EQ(zaniQuantInvIntraUniform_VC1_16s_C1R(b.origin(), 16, dst.origin(), 16, 4, nullptr), zanStsNullPtr);
    EXPECT_EQ(zaniQuantInvIntraUniform_VC1_16s_C1IR(nullptr, 16, 4, &nz), zanStsNullPtr);
    EXPECT_EQ(zaniQuantInvIntraNonuniform_VC1_16s_C1IR(dst.origin(), 16, 4, nullptr), zanStsNullPtr);
    EXPECT_EQ(zaniQuantInvInterUniform_VC1_16s_C1R(b.origin(), 16, dst.origin(), 16, 4, ZaniSize{5, 5}, nullptr),
              zanStsNullPtr);
    EXPECT_EQ(zaniQuantInvInterNonuniform_VC1_16s_C1R(nullptr, 16, dst.origin(), 16, 4, ZaniSize{5, 5}, &nz),
              zanStsNullPtr);
    EXPECT_EQ(zaniQuantInvInterUniform_VC1_16s_C1IR(nullptr, 16, 4, ZaniSize{5, 5}, &nz), zanStsNullPtr);
    EXPECT_EQ(zaniQuantInvInterNonuniform_VC1_16s_C1IR(dst.origin(), 16, 4, ZaniSize{5, 5}, nullptr), zanStsNullPtr);
    EXPECT_EQ(zaniQuantInvInterUniform_VC1_16s_C1R(b.origin(), 16, dst.origin(), 16, 0, ZaniSize{8, 6}, &nz),
              zanStsSizeBad);
    EXPECT_EQ(zaniQuantInvInterNonuniform_VC1_16s_C1R(b.origin(), 16, dst.origin(), 16, 0, ZaniSize{2, 4}, &nz),
              zanStsSizeBad);
    EXPECT_EQ(zaniQuantInvInterUniform_VC1_16s_C1IR(dst.origin(), 16, 4, ZaniSize{4, 9}, &nz), zanStsSizeBad);
    EXPECT_EQ(zaniQuantInvInterNonuniform_VC1_16s_C1IR(dst.origin(), 16, 4, ZaniSize{-8, 8}, &nz), zanStsSizeBad);
    EXPECT_EQ(dst.px, dst0.px);
    EXPECT_EQ(nz.width, -9);
    EXPECT_EQ(nz.height, -9);
    // Any doubleQuant works: 0, 1, 63 and 1000.
    for (Zan32s d : {0, 1, 63, 1000})
        EXPECT_EQ(zaniQuantInvInterUniform_VC1_16s_C1R(b.origin(), Block::kStep, dst.origin(), Block::kStep, d,
                                                       ZaniSize{4, 4}, &nz),
                  zanStsOk);
    EXPECT_EQ(dst(0, 0), static_cast<Zan16s>(77 * 1000 - 65536));
}

TEST(Vc1xform, InverseQuantiserValuesAndWrap) {
    Block src;
    src(0, 0) = 16384;  // * 4 wraps to 0
    src(1, 0) = -3;
    src(2, 0) = 1;
    src(3, 0) = 8191;  // * 4 = 32764
    src(0, 1) = 8192;  // * 4 = 32768 wraps to -32768
    Block uni, non;
    ZaniSize nzU{}, nzN{};
    ASSERT_EQ(zaniQuantInvInterUniform_VC1_16s_C1R(src.origin(), Block::kStep, uni.origin(), Block::kStep, 4,
                                                   ZaniSize{4, 4}, &nzU),
              zanStsOk);
    ASSERT_EQ(zaniQuantInvInterNonuniform_VC1_16s_C1R(src.origin(), Block::kStep, non.origin(), Block::kStep, 4,
                                                      ZaniSize{4, 4}, &nzN),
              zanStsOk);
    EXPECT_EQ(uni(0, 0), 0);
    EXPECT_EQ(uni(1, 0), -12);
    EXPECT_EQ(uni(2, 0), 4);
    EXPECT_EQ(uni(3, 0), 32764);
    EXPECT_EQ(uni(0, 1), -32768);
    EXPECT_EQ(non(0, 0), 2);  // 0 after the wrap, + sign(x) * 2
    EXPECT_EQ(non(1, 0), -14);
    EXPECT_EQ(non(2, 0), 6);
    EXPECT_EQ(non(3, 0), 32766);
    EXPECT_EQ(non(0, 1), -32766);
    EXPECT_EQ(non(1, 1), 0);  // zero stays zero
    EXPECT_EQ(nzU.width, 4);
    EXPECT_EQ(nzU.height, 2);
    EXPECT_EQ(nzN.width, 4);
    EXPECT_EQ(nzN.height, 2);
    // A sample that wraps to zero does not count in the reach.
    Block w;
    w(2, 3) = 16384;
    w(1, 1) = 5;
    ZaniSize nz{};
    ASSERT_EQ(zaniQuantInvInterUniform_VC1_16s_C1IR(w.origin(), Block::kStep, 4, ZaniSize{4, 8}, &nz), zanStsOk);
    EXPECT_EQ(nz.width, 2);
    EXPECT_EQ(nz.height, 2);
    EXPECT_EQ(w(1, 1), 20);
}

TEST(Vc1xform, InverseQuantiserReach) {
    // Non-zero levels at (5, 2) and (1, 6) of an 8x8 block reach 6 wide, 7 high.
    Block src;
    src(5, 2) = 3;
    src(1, 6) = -1;
    src(6, 8) = 9;  // below the block: not read
    for (auto f : {zaniQuantInvInterUniform_VC1_16s_C1R, zaniQuantInvInterNonuniform_VC1_16s_C1R}) {
        Block dst(-1);
        ZaniSize nz{};
        ASSERT_EQ(f(src.origin(), Block::kStep, dst.origin(), Block::kStep, 10, ZaniSize{8, 8}, &nz), zanStsOk);
        EXPECT_EQ(nz.width, 6);
        EXPECT_EQ(nz.height, 7);
        EXPECT_EQ(dst(6, 8), -1);
        // The 8x4 shape sees only rows 0..3.
        ASSERT_EQ(f(src.origin(), Block::kStep, dst.origin(), Block::kStep, 10, ZaniSize{8, 4}, &nz), zanStsOk);
        EXPECT_EQ(nz.width, 6);
        EXPECT_EQ(nz.height, 3);
        // An all-zero block reaches nothing.
        Block zero;
        ASSERT_EQ(f(zero.origin(), Block::kStep, dst.origin(), Block::kStep, 10, ZaniSize{4, 4}, &nz), zanStsOk);
        EXPECT_EQ(nz.width, 0);
        EXPECT_EQ(nz.height, 0);
    }
    // Intra: the sample at (0, 0) is copied unchanged and does not count.
    Block intra;
    intra(0, 0) = 123;
    Block dst;
    ZaniSize nz{-1, -1};
    ASSERT_EQ(zaniQuantInvIntraUniform_VC1_16s_C1R(intra.origin(), Block::kStep, dst.origin(), Block::kStep, 6, &nz),
              zanStsOk);
    EXPECT_EQ(dst(0, 0), 123);
    EXPECT_EQ(nz.width, 0);
    EXPECT_EQ(nz.height, 0);
    intra(0, 3) = 2;
    ASSERT_EQ(zaniQuantInvIntraNonuniform_VC1_16s_C1IR(intra.origin(), Block::kStep, 6, &nz), zanStsOk);
    EXPECT_EQ(intra(0, 0), 123);
    EXPECT_EQ(intra(0, 3), 15);  // 2 * 6 + 3
    EXPECT_EQ(nz.width, 1);
    EXPECT_EQ(nz.height, 4);
}

// Quantise, inverse-quantise, inverse-transform with the reported reach: the
// shortcut gives the full transform's result on every shape.
TEST(Vc1xform, ReachShortcutMatchesTheFullTransform) {
    const QuantInter quant[] = {zaniQuantInterUniform_VC1_16s_C1IR, zaniQuantInterNonuniform_VC1_16s_C1IR};
    using Inv = ZanStatus (*)(const Zan16s*, Zan32s, Zan16s*, Zan32s, Zan32s, ZaniSize, ZaniSize*);
    const Inv inv[] = {zaniQuantInvInterUniform_VC1_16s_C1R, zaniQuantInvInterNonuniform_VC1_16s_C1R};
    for (const Shape& s : kShapes)
        for (int draw = 0; draw < 200; ++draw) {
            const int nonuni = draw & 1;
            const Zan32s d = rnd(2, 62);
            Block res, coef, rec, a, b;
            for (int i = 0; i < s.h; ++i)
                for (int j = 0; j < s.w; ++j) res(j, i) = static_cast<Zan16s>(rnd(-40, 40));
            ASSERT_EQ(s.fwd(res.origin(), Block::kStep, coef.origin(), Block::kStep), zanStsOk);
            ASSERT_EQ(quant[nonuni](coef.origin(), Block::kStep, d, ZaniSize{s.w, s.h}), zanStsOk);
            ZaniSize nz{};
            ASSERT_EQ(inv[nonuni](coef.origin(), Block::kStep, rec.origin(), Block::kStep, d, ZaniSize{s.w, s.h}, &nz),
                      zanStsOk);
            ASSERT_EQ(s.inv(rec.origin(), Block::kStep, a.origin(), Block::kStep, nz), zanStsOk);
            ASSERT_EQ(s.inv(rec.origin(), Block::kStep, b.origin(), Block::kStep, ZaniSize{8, 8}), zanStsOk);
            ASSERT_EQ(a.px, b.px) << s.w << "x" << s.h << " reach " << nz.width << "x" << nz.height;
        }
}

}  // namespace
