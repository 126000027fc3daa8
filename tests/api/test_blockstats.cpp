// Block statistics through the exported functions: statuses in their order,
// outputs untouched on failure, and known answers worked out by hand.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <bit>
#include <functional>
#include <vector>

#include "zanvc.h"

namespace {

// A picture with room for the extra row and column that half-sample
// positions read.  Samples of 8 or 16 bits, rows kStep bytes apart.
struct Picture {
    static constexpr Zan32s kStep = 64;
    alignas(64) std::array<Zan8u, kStep * 24> px;
    explicit Picture(Zan8u v = 0) { px.fill(v); }
    Zan8u* at(Zan32s x, Zan32s y) { return px.data() + y * kStep + x; }
    Zan16u* at16(Zan32s x, Zan32s y) { return reinterpret_cast<Zan16u*>(px.data() + y * kStep) + x; }
    Zan16s* at16s(Zan32s x, Zan32s y) { return reinterpret_cast<Zan16s*>(at16(x, y)); }
    void fill16(Zan16u v) {
        for (Zan32s y = 0; y < 24; ++y)
            for (Zan32s x = 0; x < kStep / 2; ++x) *at16(x, y) = v;
    }
};
constexpr Zan32s S = Picture::kStep;

// ------------------------------------------------------------------ statuses

TEST(Blockstats, NullPointersFirstAndNothingWritten) {
    Picture a(1), b(2);
    const Zan8u* p = a.at(0, 0);
    const Zan8u* q = b.at(0, 0);
    const Zan16u* p16 = a.at16(0, 0);
    const Zan16s* s16 = a.at16s(0, 0);
    Zan32s r = 777, r2 = 888;
    Zan32u c = 999;
    Zan8u flag = 77;
    std::array<Zan16s, 256> out16;
    out16.fill(55);
    std::array<Zan32s, 16> out32;
    out32.fill(66);
    const Zan32s sums[4] = {0, 0, 0, 0};
    Zan16s* o = out16.data();
    Zan32s* o32 = out32.data();
    // Each pointer in turn; where other arguments are checked they are wrong too.
    const std::vector<std::function<ZanStatus()>> calls = {
        [&] { return zaniSATD4x4_8u32s_C1R(nullptr, S, q, S, &r); },
        [&] { return zaniSATD4x8_8u32s_C1R(p, S, nullptr, S, &r); },
        [&] { return zaniSATD8x4_8u32s_C1R(p, S, q, S, nullptr); },
        [&] { return zaniSATD8x8_8u32s_C1R(nullptr, S, q, S, &r); },
        [&] { return zaniSATD8x16_8u32s_C1R(p, S, nullptr, S, &r); },
        [&] { return zaniSATD16x8_8u32s_C1R(p, S, q, S, nullptr); },
        [&] { return zaniSATD16x16_8u32s_C1R(nullptr, S, q, S, &r); },
        [&] { return zaniSAT8x8D_8u32s_C1R(p, S, nullptr, S, &r); },
        [&] { return zaniSAT8x8D_16u32s_C1R(p16, S, p16, S, nullptr); },
        [&] { return zaniHadamard8x8Sum_VC1_8u16s(nullptr, S, o, &r); },
        [&] { return zaniHadamard8x8Sum_VC1_8u16s(p, S, nullptr, &r); },
        [&] { return zaniHadamard8x8Sum_VC1_16s(s16, S, o, nullptr); },
        [&] { return zaniSSD8x8_8u32s_C1R(nullptr, S, q, S, &r, 0); },
        [&] { return zaniSSD4x4_8u32s_C1R(p, S, q, S, nullptr, 12); },
        [&] { return zaniSqrDiff16x16_8u32s(p, S, nullptr, S, 3, &r); },
        [&] { return zaniSqrDiff16x16_8u32s(p, S, q, S, 0, nullptr); },
        [&] { return zaniSqrDiff16x16B_8u32s(p, S, q, S, 0, nullptr, S, 0, &r); },
        [&] { return zaniSqrDiff16x16B_8u32s(nullptr, S, q, S, 5, q, S, 0, &r); },
        [&] { return zaniVariance16x16_8u32s(nullptr, S, &r); },
        [&] { return zaniVarSum8x8_8u32s_C1R(p, S, &r, nullptr); },
        [&] { return zaniVarSum8x8_16s32s_C1R(s16, S, nullptr, &r2); },
        [&] { return zaniVarMean8x8_8u32s_C1R(nullptr, S, &r, &r2); },
        [&] { return zaniVarMean8x8_16s32s_C1R(s16, S, &r, nullptr); },
        [&] { return zaniVarMeanDiff16x16_8u32s_C1R(p, S, q, S, nullptr, o32, o32 + 4, 3); },
        [&] { return zaniVarMeanDiff16x16_8u32s_C1R(p, S, q, S, sums, o32, nullptr, 0); },
        [&] { return zaniVarMeanDiff16x8_8u32s_C1R(p, S, nullptr, S, sums, o32, o32 + 4, 0); },
        [&] { return zaniVarMeanDiff16x8_8u32s_C1R(p, S, q, S, sums, nullptr, o32 + 4, 0); },
        [&] { return zaniMeanAbsDev8x8_8u32s_C1R(nullptr, S, &r); },
        [&] { return zaniMeanAbsDev16x16_8u32s_C1R(p, S, nullptr); },
        [&] { return zaniSumsDiff8x8Blocks4x4_8u16s_C1(p, S, q, S, nullptr, o); },
        [&] { return zaniSumsDiff16x16Blocks4x4_8u16s_C1(p, S, nullptr, S, o, o + 16); },
        [&] { return zaniSumsDiff8x8Blocks4x4_16u32s_C1R(nullptr, S, p16, S, o32, o); },
        [&] { return zaniSumsDiff16x16Blocks4x4_16u32s_C1R(p16, S, p16, S, nullptr, nullptr); },
        [&] { return zaniSumsDiff8x8Blocks4x4_8u16s_C2P2(p, S, q, S, nullptr, S, o, o + 16, o + 32, o + 48); },
        [&] { return zaniSumsDiff8x8Blocks4x4_8u16s_C2P2(p, S, q, S, q, S, o, nullptr, nullptr, o + 48); },
        [&] { return zaniSumsDiff8x8Blocks4x4_8u16s_C2P2(nullptr, S, q, S, q, S, o, o + 16, o + 32, o + 48); },
        [&] { return zaniEdgesDetect16x16_8u_C1R(p, S, 10, 10, nullptr); },
        [&] { return zaniEdgesDetect16x16_16u_C1R(nullptr, S, 65536, 300, &flag); },
        [&] { return zaniEdgesDetect16x16_16u_C1R(p16, S, 65536, 300, nullptr); },
        [&] { return zaniCountZeros8x8_16s_C1(nullptr, &c); },
        [&] { return zaniCountZeros8x8_16s_C1(s16, nullptr); },
    };
    for (size_t i = 0; i < calls.size(); ++i) EXPECT_EQ(calls[i](), zanStsNullPtr) << "call " << i;
    EXPECT_EQ(r, 777);
    EXPECT_EQ(r2, 888);
    EXPECT_EQ(c, 999u);
    EXPECT_EQ(flag, 77);
    for (auto x : out16) EXPECT_EQ(x, 55);
    for (auto x : out32) EXPECT_EQ(x, 66);
}

// Selectors outside their set: success with nothing written.
TEST(Blockstats, UnknownPositionsWriteNothing) {
    Picture a(9), b(3);
    Zan32s r = 1234;
    for (Zan32s m : {1, 2, 3, 5, 13, 16, -4}) {
        EXPECT_EQ(zaniSqrDiff16x16_8u32s(a.at(0, 0), S, b.at(0, 0), S, m, &r), zanStsOk) << m;
        EXPECT_EQ(zaniSqrDiff16x16B_8u32s(a.at(0, 0), S, b.at(0, 0), S, m, b.at(0, 0), S, 0, &r), zanStsOk) << m;
        EXPECT_EQ(zaniSqrDiff16x16B_8u32s(a.at(0, 0), S, b.at(0, 0), S, 4, b.at(0, 0), S, m, &r), zanStsOk) << m;
    }
    EXPECT_EQ(r, 1234);
    std::array<Zan32s, 4> var, mean;
    var.fill(-1);
    mean.fill(-2);
    const Zan32s sums[4] = {640, 640, 640, 640};
    for (Zan32s m : {1, 7, 16, -12})
        EXPECT_EQ(zaniVarMeanDiff16x16_8u32s_C1R(a.at(0, 0), S, b.at(0, 0), S, sums, var.data(), mean.data(), m),
                  zanStsOk);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(var[i] + mean[i], -3);
    // The 16x8 form takes any value: only the half-sample bits count.
    Zan32s v1[2], m1[2], v2[2], m2[2];
    ASSERT_EQ(zaniVarMeanDiff16x8_8u32s_C1R(a.at(0, 0), S, b.at(0, 0), S, sums, v1, m1, 7), zanStsOk);
    ASSERT_EQ(zaniVarMeanDiff16x8_8u32s_C1R(a.at(0, 0), S, b.at(0, 0), S, sums, v2, m2, 4), zanStsOk);
    EXPECT_EQ(v1[0], v2[0]);
    EXPECT_EQ(m1[1], m2[1]);
    EXPECT_EQ(m1[0], (640 - 64 * 3) / 8);
}

TEST(Blockstats, EdgeTest16uLimitsWriteNothing) {
    Picture a;
    a.fill16(100);
    Zan8u flag = 9;
    EXPECT_EQ(zaniEdgesDetect16x16_16u_C1R(a.at16(0, 0), S, 65536, 0, &flag), zanStsOk);
    EXPECT_EQ(zaniEdgesDetect16x16_16u_C1R(a.at16(0, 0), S, 0, 257, &flag), zanStsOk);
    EXPECT_EQ(flag, 9);
    EXPECT_EQ(zaniEdgesDetect16x16_16u_C1R(a.at16(0, 0), S, 65535, 256, &flag), zanStsOk);
    EXPECT_EQ(flag, 0);
}

// ---------------------------------------------------------- Hadamard family

using SatdFn = ZanStatus (*)(const Zan8u*, Zan32s, const Zan8u*, Zan32s, Zan32s*);
struct SatdSize {
    SatdFn fn;
    Zan32s w, h;
};
const SatdSize kSatd[] = {
    {zaniSATD4x4_8u32s_C1R, 4, 4},   {zaniSATD4x8_8u32s_C1R, 4, 8},   {zaniSATD8x4_8u32s_C1R, 8, 4},
    {zaniSATD8x8_8u32s_C1R, 8, 8},   {zaniSATD8x16_8u32s_C1R, 8, 16}, {zaniSATD16x8_8u32s_C1R, 16, 8},
    {zaniSATD16x16_8u32s_C1R, 16, 16},
};

TEST(Blockstats, SatdKnownAnswers) {
    for (const auto& z : kSatd) {
        Picture a(77), b(77);
        Zan32s r = -1;
        ASSERT_EQ(z.fn(a.at(0, 0), S, b.at(0, 0), S, &r), zanStsOk);
        EXPECT_EQ(r, 0) << z.w << "x" << z.h;
        // One sample of difference v in one tile: all 16 coefficients are +-v.
        *a.at(z.w - 2, z.h - 3) = 77 + 40;
        ASSERT_EQ(z.fn(a.at(0, 0), S, b.at(0, 0), S, &r), zanStsOk);
        EXPECT_EQ(r, 16 * 40) << z.w << "x" << z.h;
        // A flat difference c: only the DC of each tile, 16c per tile.
        Picture c(200), d(5);
        ASSERT_EQ(z.fn(c.at(0, 0), S, d.at(0, 0), S, &r), zanStsOk);
        EXPECT_EQ(r, 16 * 195 * (z.w / 4) * (z.h / 4)) << z.w << "x" << z.h;
        // Negative steps: the rows read upward; and the difference's sign does not matter.
        ASSERT_EQ(z.fn(d.at(0, 20), -S, c.at(0, 20), -S, &r), zanStsOk);
        EXPECT_EQ(r, 16 * 195 * (z.w / 4) * (z.h / 4)) << z.w << "x" << z.h;
    }
    // A 4x4 tile with the vertical pattern +v, -v, +v, -v in one column:
    // coefficients 4v at two positions of one column transform -> 4 * 4v.
    Picture a(100), b(100);
    for (Zan32s y = 0; y < 4; ++y) *a.at(0, y) = static_cast<Zan8u>(y % 2 ? 90 : 110);
    Zan32s r = -1;
    ASSERT_EQ(zaniSATD4x4_8u32s_C1R(a.at(0, 0), S, b.at(0, 0), S, &r), zanStsOk);
    EXPECT_EQ(r, 4 * 4 * 10);
}

// d(x, y) = +-255 by the parity of bits(x & y): every coefficient of the
// 8x8 transform has magnitude 8 * 255 = 2040, so the exact sum is 130560;
// the saturating partial sums stop at 32767, doubled to 65534.
void bent_pattern(Picture& a, Picture& b, Zan32s x0) {
    for (Zan32s y = 0; y < 8; ++y)
        for (Zan32s x = 0; x < 8; ++x) {
            bool plus = std::popcount(static_cast<unsigned>(x & y)) % 2 == 0;
            *a.at(x0 + x, y) = plus ? 255 : 0;
            *b.at(x0 + x, y) = plus ? 0 : 255;
        }
}

TEST(Blockstats, Sat8x8dSaturatesItsPartialSums) {
    Picture a(30), b(30);
    Zan32s r = -1;
    ASSERT_EQ(zaniSAT8x8D_8u32s_C1R(a.at(0, 0), S, b.at(0, 0), S, &r), zanStsOk);
    EXPECT_EQ(r, 0);
    // Flat difference 10: only the DC, 640.
    Picture c(40);
    ASSERT_EQ(zaniSAT8x8D_8u32s_C1R(c.at(0, 0), S, b.at(0, 0), S, &r), zanStsOk);
    EXPECT_EQ(r, 640);
    // One sample: 64 coefficients of magnitude v.
    *a.at(3, 5) = 30 + 7;
    ASSERT_EQ(zaniSAT8x8D_8u32s_C1R(a.at(0, 0), S, b.at(0, 0), S, &r), zanStsOk);
    EXPECT_EQ(r, 64 * 7);
    bent_pattern(a, b, 0);
    ASSERT_EQ(zaniSAT8x8D_8u32s_C1R(a.at(0, 0), S, b.at(0, 0), S, &r), zanStsOk);
    EXPECT_EQ(r, 65534);
    // SATD sums exactly: in each 4x4 tile the pattern is again of this kind,
    // 16 coefficients of 4 * 255, so 4 * 16320.
    ASSERT_EQ(zaniSATD8x8_8u32s_C1R(a.at(0, 0), S, b.at(0, 0), S, &r), zanStsOk);
    EXPECT_EQ(r, 65280);
    // 16-bit samples in the 8-bit range give the same answers.
    Picture a16, b16;
    for (Zan32s y = 0; y < 8; ++y)
        for (Zan32s x = 0; x < 8; ++x) {
            *a16.at16(x, y) = *a.at(x, y);
            *b16.at16(x, y) = *b.at(x, y);
        }
    ASSERT_EQ(zaniSAT8x8D_16u32s_C1R(a16.at16(0, 0), S, b16.at16(0, 0), S, &r), zanStsOk);
    EXPECT_EQ(r, 65534);
    // A flat difference of 1000: the stages before the last reach 32000 and
    // the last is the maximum, doubled: 64000 exactly, no saturation.
    a16.fill16(1000);
    b16.fill16(0);
    ASSERT_EQ(zaniSAT8x8D_16u32s_C1R(a16.at16(0, 0), S, b16.at16(0, 0), S, &r), zanStsOk);
    EXPECT_EQ(r, 64000);
    // 2000: the fifth stage saturates (64000 > 32767): 2 * 32767, not 128000.
    a16.fill16(2000);
    ASSERT_EQ(zaniSAT8x8D_16u32s_C1R(a16.at16(0, 0), S, b16.at16(0, 0), S, &r), zanStsOk);
    EXPECT_EQ(r, 2 * 32767);
    // Samples above 32767 read as negative: 40000 against 0 is a difference
    // of -25536, which saturates just the same.
    a16.fill16(40000);
    ASSERT_EQ(zaniSAT8x8D_16u32s_C1R(a16.at16(0, 0), S, b16.at16(0, 0), S, &r), zanStsOk);
    EXPECT_EQ(r, 2 * 32767);
    // A flat difference of 100: DC 6400, exact.
    a16.fill16(100);
    ASSERT_EQ(zaniSAT8x8D_16u32s_C1R(a16.at16(0, 0), S, b16.at16(0, 0), S, &r), zanStsOk);
    EXPECT_EQ(r, 6400);
}

TEST(Blockstats, HadamardSumVc1) {
    Picture a(10);
    std::array<Zan16s, 72> out;
    out.fill(-99);
    Zan32s sum = -1;
    ASSERT_EQ(zaniHadamard8x8Sum_VC1_8u16s(a.at(0, 0), S, out.data(), &sum), zanStsOk);
    EXPECT_EQ(out[0], 640);
    for (int i = 1; i < 64; ++i) EXPECT_EQ(out[static_cast<size_t>(i)], 0) << i;
    for (int i = 64; i < 72; ++i) EXPECT_EQ(out[static_cast<size_t>(i)], -99) << "written past 64";
    EXPECT_EQ(sum, 640);
    // One sample v at (x0, y0): pDst[8v + u] = v * (-1)^(bits(u & x0) + bits(v & y0)).
    Picture b(0);
    *b.at(5, 3) = 9;
    ASSERT_EQ(zaniHadamard8x8Sum_VC1_8u16s(b.at(0, 0), S, out.data(), &sum), zanStsOk);
    for (unsigned v = 0; v < 8; ++v)
        for (unsigned u = 0; u < 8; ++u) {
            int sign = (std::popcount(u & 5u) + std::popcount(v & 3u)) % 2 ? -1 : 1;
            EXPECT_EQ(out[8 * v + u], 9 * sign) << u << "," << v;
        }
    EXPECT_EQ(sum, 64 * 9);
    // 255 where bits(x & y) is even, else 0: DC 36 * 255 = 9180, the other 63
    // coefficients +-1020; exact sum 73440, saturated at 32767.
    Picture c(0), dummy(0);
    bent_pattern(c, dummy, 0);
    ASSERT_EQ(zaniHadamard8x8Sum_VC1_8u16s(c.at(0, 0), S, out.data(), &sum), zanStsOk);
    EXPECT_EQ(out[0], 9180);
    for (int i = 1; i < 64; ++i) EXPECT_EQ(out[static_cast<size_t>(i)] < 0 ? -out[static_cast<size_t>(i)] : out[static_cast<size_t>(i)], 1020) << i;
    EXPECT_EQ(sum, 32767);
    // 16-bit input: every stage saturates, so a flat 32767 block keeps 32767 at DC.
    Picture d;
    d.fill16(32767);
    ASSERT_EQ(zaniHadamard8x8Sum_VC1_16s(d.at16s(0, 0), S, out.data(), &sum), zanStsOk);
    EXPECT_EQ(out[0], 32767);
    for (int i = 1; i < 64; ++i) EXPECT_EQ(out[static_cast<size_t>(i)], 0) << i;
    EXPECT_EQ(sum, 32767);
    // Negative samples: flat -5 gives DC -320 and a sum of 320.
    d.fill16(static_cast<Zan16u>(-5));
    ASSERT_EQ(zaniHadamard8x8Sum_VC1_16s(d.at16s(0, 0), S, out.data(), &sum), zanStsOk);
    EXPECT_EQ(out[0], -320);
    EXPECT_EQ(sum, 320);
}

// ----------------------------------------------------- squared differences

// A reference whose every 2x2 window holds exactly one 1 (ones at odd x and
// odd y): the diagonal position is (1 + 2) >> 2 = 0 everywhere, where two
// chained averages would give 1; half down is 1 in the odd columns.
TEST(Blockstats, SquaredDifferencesAtHalfSamples) {
    Picture src(0), ref(0);
    for (Zan32s y = 1; y < 24; y += 2)
        for (Zan32s x = 1; x < S; x += 2) *ref.at(x, y) = 1;
    Zan32s r = -1;
    ASSERT_EQ(zaniSSD4x4_8u32s_C1R(src.at(0, 0), S, ref.at(0, 0), S, &r, 12), zanStsOk);
    EXPECT_EQ(r, 0);
    ASSERT_EQ(zaniSSD4x4_8u32s_C1R(src.at(0, 0), S, ref.at(0, 0), S, &r, 4), zanStsOk);
    EXPECT_EQ(r, 8);
    ASSERT_EQ(zaniSSD8x8_8u32s_C1R(src.at(0, 0), S, ref.at(0, 0), S, &r, 15), zanStsOk);
    EXPECT_EQ(r, 0);
    ASSERT_EQ(zaniSSD8x8_8u32s_C1R(src.at(0, 0), S, ref.at(0, 0), S, &r, 0), zanStsOk);
    EXPECT_EQ(r, 16);
    ASSERT_EQ(zaniSqrDiff16x16_8u32s(src.at(0, 0), S, ref.at(0, 0), S, 12, &r), zanStsOk);
    EXPECT_EQ(r, 0);
    ASSERT_EQ(zaniSqrDiff16x16_8u32s(src.at(0, 0), S, ref.at(0, 0), S, 8, &r), zanStsOk);
    EXPECT_EQ(r, 128);  // half right: 1 in the odd rows
    // Only mcType >> 2 counts in the SSD forms: the two low bits are stray.
    for (Zan32s m = 0; m < 16; ++m) {
        Zan32s with = -1, without = -2;
        ASSERT_EQ(zaniSSD8x8_8u32s_C1R(src.at(0, 0), S, ref.at(0, 0), S, &with, m), zanStsOk);
        ASSERT_EQ(zaniSSD8x8_8u32s_C1R(src.at(0, 0), S, ref.at(0, 0), S, &without, m & ~3), zanStsOk);
        EXPECT_EQ(with, without) << m;
        ASSERT_EQ(zaniSSD4x4_8u32s_C1R(src.at(0, 0), S, ref.at(0, 0), S, &with, m), zanStsOk);
        ASSERT_EQ(zaniSSD4x4_8u32s_C1R(src.at(0, 0), S, ref.at(0, 0), S, &without, m & ~3), zanStsOk);
        EXPECT_EQ(with, without) << m;
    }
    // Two references averaged upward: (0 + 1 + 1) >> 1 = 1.
    Picture one(1);
    ASSERT_EQ(zaniSqrDiff16x16B_8u32s(src.at(0, 0), S, src.at(0, 0), S, 0, one.at(0, 0), S, 0, &r), zanStsOk);
    EXPECT_EQ(r, 256);
    // Each reference interpolated first: the diagonal one is 0, the other 1.
    ASSERT_EQ(zaniSqrDiff16x16B_8u32s(one.at(0, 0), S, ref.at(0, 0), S, 12, one.at(0, 0), S, 4, &r), zanStsOk);
    EXPECT_EQ(r, 0);
    // Extremes: 255 against 0 everywhere, 256 * 65025.
    Picture white(255);
    ASSERT_EQ(zaniSqrDiff16x16_8u32s(white.at(0, 0), S, src.at(0, 0), S, 0, &r), zanStsOk);
    EXPECT_EQ(r, 256 * 65025);
    ASSERT_EQ(zaniSSD8x8_8u32s_C1R(src.at(0, 0), S, white.at(0, 0), S, &r, 8), zanStsOk);
    EXPECT_EQ(r, 64 * 65025);
}

// ------------------------------------------------------------------ variances

TEST(Blockstats, Variance16x16IsNotDividedByTheCount) {
    Zan32s r = -1;
    // Flat blocks give 0, also where S * S passes 2^31 (S = 51200).
    for (Zan8u v : {0, 7, 200, 255}) {
        Picture a(v);
        ASSERT_EQ(zaniVariance16x16_8u32s(a.at(0, 0), S, &r), zanStsOk);
        EXPECT_EQ(r, 0) << int(v);
    }
    // Half 0, half 255: Q = 128 * 65025, S * S / 256 = 32640^2 / 256.
    Picture b(0);
    for (Zan32s y = 0; y < 8; ++y)
        for (Zan32s x = 0; x < 16; ++x) *b.at(x, y) = 255;
    ASSERT_EQ(zaniVariance16x16_8u32s(b.at(0, 0), S, &r), zanStsOk);
    EXPECT_EQ(r, 128 * 65025 - 32640 * 32640 / 256);
    // One sample of 1: Q = 1, S * S / 256 = 0 by truncation.
    Picture c(0);
    *c.at(15, 15) = 1;
    ASSERT_EQ(zaniVariance16x16_8u32s(c.at(0, 0), S, &r), zanStsOk);
    EXPECT_EQ(r, 1);
}

// The float steps decide the last bit: 29 samples of 0 and 35 of 171 give
// S = 5985, Q = 1023435; (64Q - S^2) / 4096 = 7245.9998 exactly (and in
// double), but m * m = 8745.4775... rounds in float so that Q / 64 - m * m
// = 7246 exactly.
TEST(Blockstats, VarianceFollowsTheFloatSteps) {
    Picture a(171);
    for (int i = 0; i < 29; ++i) *a.at(i % 8, i / 8) = 0;
    Zan32s var = -1, second = -1;
    ASSERT_EQ(zaniVarSum8x8_8u32s_C1R(a.at(0, 0), S, &var, &second), zanStsOk);
    EXPECT_EQ(var, 7246);
    EXPECT_EQ(second, 5985);
    ASSERT_EQ(zaniVarMean8x8_8u32s_C1R(a.at(0, 0), S, &var, &second), zanStsOk);
    EXPECT_EQ(var, 7246);
    EXPECT_EQ(second, 5985);  // the sum, not a mean
    // 16-bit: 17 samples of -3000 and 47 of -2973: exact 142.8..., float 143.
    Picture b;
    for (int i = 0; i < 64; ++i) *b.at16s(i % 8, i / 8) = static_cast<Zan16s>(i < 17 ? -3000 : -2973);
    ASSERT_EQ(zaniVarSum8x8_16s32s_C1R(b.at16s(0, 0), S, &var, &second), zanStsOk);
    EXPECT_EQ(var, 143);
    EXPECT_EQ(second, -190731);
    ASSERT_EQ(zaniVarMean8x8_16s32s_C1R(b.at16s(0, 0), S, &var, &second), zanStsOk);
    EXPECT_EQ(var, 143);
    EXPECT_EQ(second, -190731);
    // Flat 10: variance 0, second output 640.
    Picture c(10);
    ASSERT_EQ(zaniVarMean8x8_8u32s_C1R(c.at(0, 0), S, &var, &second), zanStsOk);
    EXPECT_EQ(var, 0);
    EXPECT_EQ(second, 640);
    // Flat -32768: the sum of squares (2^36) wraps to 0 in 32 bits, so
    // v = 0 - 32768^2.
    b.fill16(0x8000);
    ASSERT_EQ(zaniVarSum8x8_16s32s_C1R(b.at16s(0, 0), S, &var, &second), zanStsOk);
    EXPECT_EQ(var, -1073741824);
    EXPECT_EQ(second, -64 * 32768);
}

TEST(Blockstats, VarianceAndMeanOfDifference) {
    Picture src(12), ref(10);
    // E = 64 * 4 = 256 per block, R = 640.
    Zan32s var[4], mean[4];
    // 768 - 640 = 128 -> mean 16, 256 is not below E: var 0.  760 -> mean
    // 15 (truncated), var (256 - 225) / 64 = 0.  625 -> -15 / 8 = -1
    // (toward zero), var (256 - 1) / 64 = 3.  0 -> -80, var 0.
    const Zan32s sums[4] = {768, 760, 625, 0};
    ASSERT_EQ(zaniVarMeanDiff16x16_8u32s_C1R(src.at(0, 0), S, ref.at(0, 0), S, sums, var, mean, 0), zanStsOk);
    EXPECT_EQ(mean[0], 16);
    EXPECT_EQ(var[0], 0);
    EXPECT_EQ(mean[1], 15);
    EXPECT_EQ(var[1], 0);
    EXPECT_EQ(mean[2], -1);
    EXPECT_EQ(var[2], 3);
    EXPECT_EQ(mean[3], -80);
    EXPECT_EQ(var[3], 0);
    // The 16x8 form: left and right blocks only.
    Zan32s v2[3] = {-7, -7, -7}, m2[3] = {-7, -7, -7};
    ASSERT_EQ(zaniVarMeanDiff16x8_8u32s_C1R(src.at(0, 0), S, ref.at(0, 0), S, sums + 1, v2, m2, 0), zanStsOk);
    EXPECT_EQ(m2[0], 15);
    EXPECT_EQ(m2[1], -1);
    EXPECT_EQ(v2[1], 3);
    EXPECT_EQ(v2[2], -7);
    EXPECT_EQ(m2[2], -7);
    // Blocks in row order: a different bottom-right block only moves entry 3.
    for (Zan32s y = 8; y < 16; ++y)
        for (Zan32s x = 8; x < 16; ++x) *src.at(x, y) = 14;
    const Zan32s same[4] = {768, 768, 768, 896};
    ASSERT_EQ(zaniVarMeanDiff16x16_8u32s_C1R(src.at(0, 0), S, ref.at(0, 0), S, same, var, mean, 0), zanStsOk);
    EXPECT_EQ(mean[3], 32);
    EXPECT_EQ(var[3], 0);  // E = 64 * 16 = 1024 = 32^2
    EXPECT_EQ(mean[2], 16);
    // The diagonal reference: windows of one 1 round to 0.
    Picture one(0), ones(0);
    for (Zan32s y = 1; y < 24; y += 2)
        for (Zan32s x = 1; x < S; x += 2) *ones.at(x, y) = 1;
    const Zan32s zero[4] = {0, 0, 0, 0};
    ASSERT_EQ(zaniVarMeanDiff16x16_8u32s_C1R(one.at(0, 0), S, ones.at(0, 0), S, zero, var, mean, 12), zanStsOk);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(mean[i] * 1000 + var[i], 0);
    ASSERT_EQ(zaniVarMeanDiff16x16_8u32s_C1R(one.at(0, 0), S, ones.at(0, 0), S, zero, var, mean, 0), zanStsOk);
    // R = 16 ones per block, E = 16: mean = -16 / 8 = -2, 4 < 16, var 12 / 64 = 0.
    EXPECT_EQ(mean[0], -2);
    EXPECT_EQ(var[0], 0);
}

TEST(Blockstats, MeanAbsoluteDeviation) {
    Picture a(0);
    Zan32s r = -1;
    // 32 ones of 64: mean (32 + 32) >> 6 = 1, deviation 32; with 31 ones the
    // mean rounds to 0 and the deviation is 31.
    for (int i = 0; i < 32; ++i) *a.at(i % 8, i / 8) = 1;
    ASSERT_EQ(zaniMeanAbsDev8x8_8u32s_C1R(a.at(0, 0), S, &r), zanStsOk);
    EXPECT_EQ(r, 32);
    *a.at(0, 0) = 0;
    ASSERT_EQ(zaniMeanAbsDev8x8_8u32s_C1R(a.at(0, 0), S, &r), zanStsOk);
    EXPECT_EQ(r, 31);
    // 16x16: 128 samples of 255 and 128 of 0, mean 128: 128 * 127 + 128 * 128.
    Picture b(0);
    for (Zan32s y = 0; y < 16; y += 2)
        for (Zan32s x = 0; x < 16; ++x) *b.at(x, y) = 255;
    ASSERT_EQ(zaniMeanAbsDev16x16_8u32s_C1R(b.at(0, 0), S, &r), zanStsOk);
    EXPECT_EQ(r, 128 * 127 + 128 * 128);
}

// ----------------------------------------------------- sums of differences

TEST(Blockstats, SumsOfDifferencesPerSubBlock) {
    Picture src(100), pred(100);
    // Sub-block k of the 8x8 block gets difference k + 1 at one sample; one
    // sample of sub-block 1 (x 5, y 2) gets -50.
    for (int k = 0; k < 4; ++k) *src.at(4 * (k % 2), 4 * (k / 2)) = static_cast<Zan8u>(101 + k);
    *src.at(5, 2) = 50;
    std::array<Zan16s, 72> diff;
    diff.fill(-1);
    Zan16s sums[5] = {9, 9, 9, 9, 9};
    ASSERT_EQ(zaniSumsDiff8x8Blocks4x4_8u16s_C1(src.at(0, 0), S, pred.at(0, 0), S, sums, diff.data()), zanStsOk);
    EXPECT_EQ(sums[0], 1);
    EXPECT_EQ(sums[1], 2 - 50);
    EXPECT_EQ(sums[2], 3);
    EXPECT_EQ(sums[3], 4);
    EXPECT_EQ(sums[4], 9);
    EXPECT_EQ(diff[16 * 1 + 4 * 2 + 1], -50);
    EXPECT_EQ(diff[16 * 3], 4);
    EXPECT_EQ(diff[64], -1);
    // No pDiff: the same sums.
    Zan16s sums2[4];
    ASSERT_EQ(zaniSumsDiff8x8Blocks4x4_8u16s_C1(src.at(0, 0), S, pred.at(0, 0), S, sums2, nullptr), zanStsOk);
    for (int k = 0; k < 4; ++k) EXPECT_EQ(sums2[k], sums[k]);
    // 16x16: sub-block 4 * row + column; extremes do not saturate (16 * 255).
    Picture white(255), black(0);
    std::array<Zan16s, 16> s16;
    std::array<Zan16s, 256> d16;
    ASSERT_EQ(zaniSumsDiff16x16Blocks4x4_8u16s_C1(black.at(0, 0), S, white.at(0, 0), S, s16.data(), d16.data()),
              zanStsOk);
    for (auto v : s16) EXPECT_EQ(v, -4080);
    for (auto v : d16) EXPECT_EQ(v, -255);
    *white.at(13, 6) = 0;  // sub-block 4 * 1 + 3 = 7, position 4 * 2 + 1
    ASSERT_EQ(zaniSumsDiff16x16Blocks4x4_8u16s_C1(black.at(0, 0), S, white.at(0, 0), S, s16.data(), d16.data()),
              zanStsOk);
    EXPECT_EQ(s16[7], -4080 + 255);
    EXPECT_EQ(d16[16 * 7 + 9], 0);
}

TEST(Blockstats, SumsOfDifferences16Bit) {
    Picture src, pred;
    src.fill16(65535);
    pred.fill16(0);
    std::array<Zan32s, 16> sums;
    std::array<Zan16s, 256> diff;
    // The sums are exact; the stored differences wrap to 16 bits.
    ASSERT_EQ(zaniSumsDiff16x16Blocks4x4_16u32s_C1R(src.at16(0, 0), S, pred.at16(0, 0), S, sums.data(), diff.data()),
              zanStsOk);
    for (auto v : sums) EXPECT_EQ(v, 16 * 65535);
    for (auto v : diff) EXPECT_EQ(v, -1);
    ASSERT_EQ(zaniSumsDiff8x8Blocks4x4_16u32s_C1R(pred.at16(0, 0), S, src.at16(0, 0), S, sums.data(), nullptr),
              zanStsOk);
    for (int k = 0; k < 4; ++k) EXPECT_EQ(sums[static_cast<size_t>(k)], -16 * 65535);
}

TEST(Blockstats, SumsOfDifferencesTwoChannels) {
    Picture src(0), pu(10), pv(3);
    for (Zan32s y = 0; y < 8; ++y)
        for (Zan32s x = 0; x < 16; ++x) *src.at(x, y) = x % 2 ? 5 : 20;  // U 20, V 5
    *src.at(2 * 6 + 1, 5) = 0;  // V sample (6, 5): sub-block 3, position 4 * 1 + 2
    Zan16s su[4], sv[4];
    std::array<Zan16s, 64> dv;
    ASSERT_EQ(zaniSumsDiff8x8Blocks4x4_8u16s_C2P2(src.at(0, 0), S, pu.at(0, 0), S, pv.at(0, 0), S, su, nullptr, sv,
                                                  dv.data()),
              zanStsOk);
    for (int k = 0; k < 4; ++k) EXPECT_EQ(su[k], 160);
    EXPECT_EQ(sv[0], 32);
    EXPECT_EQ(sv[3], 32 - 5);
    EXPECT_EQ(dv[16 * 3 + 6], -3);
    EXPECT_EQ(dv[16 * 3 + 5], 2);
}

// ---------------------------------------------------------------- edge test

TEST(Blockstats, EdgeTestCountsAndThresholds) {
    Picture flat(90);
    Zan8u res = 7;
    for (Zan32u count : {0u, 5u, 224u, 300u}) {
        ASSERT_EQ(zaniEdgesDetect16x16_8u_C1R(flat.at(0, 0), S, 127, count, &res), zanStsOk);
        EXPECT_EQ(res, 0) << count;
    }
    // 128 reads as -128: every one of the 15 x 15 samples counts.
    ASSERT_EQ(zaniEdgesDetect16x16_8u_C1R(flat.at(0, 0), S, 128, 224, &res), zanStsOk);
    EXPECT_EQ(res, 1);
    ASSERT_EQ(zaniEdgesDetect16x16_8u_C1R(flat.at(0, 0), S, 255, 225, &res), zanStsOk);
    EXPECT_EQ(res, 0);
    // One step of 200 between columns 9 and 10 in row 4: one sample counts
    // (x 9, y 4: d1 = 200, limited to 127) where the threshold is below 127.
    Picture a(20);
    for (Zan32s x = 10; x < 16; ++x) *a.at(x, 4) = 220;
    // Row 4's step also makes vertical differences with rows 3 and 5 in
    // columns 10..14 (x 15 is left out): samples (10..14, 3) and (10..14, 4).
    ASSERT_EQ(zaniEdgesDetect16x16_8u_C1R(a.at(0, 0), S, 127, 0, &res), zanStsOk);
    EXPECT_EQ(res, 0);  // 127 is not exceeded: differences stop at 127
    ASSERT_EQ(zaniEdgesDetect16x16_8u_C1R(a.at(0, 0), S, 126, 0, &res), zanStsOk);
    EXPECT_EQ(res, 1);
    ASSERT_EQ(zaniEdgesDetect16x16_8u_C1R(a.at(0, 0), S, 126, 10, &res), zanStsOk);
    EXPECT_EQ(res, 1);  // 11 samples: (9, 4), (10..14, 3), (10..14, 4)
    ASSERT_EQ(zaniEdgesDetect16x16_8u_C1R(a.at(0, 0), S, 126, 11, &res), zanStsOk);
    EXPECT_EQ(res, 0);
    // The last column and the last row are not samples of their own.
    Picture b(20);
    for (Zan32s y = 0; y < 16; ++y) *b.at(15, y) = 250;
    for (Zan32s x = 0; x < 16; ++x) *b.at(x, 15) = 250;
    ASSERT_EQ(zaniEdgesDetect16x16_8u_C1R(b.at(0, 0), S, 100, 29, &res), zanStsOk);
    EXPECT_EQ(res, 0);  // (14, y) for y < 15 and (x, 14) for x < 15: 29 samples
    ASSERT_EQ(zaniEdgesDetect16x16_8u_C1R(b.at(0, 0), S, 100, 28, &res), zanStsOk);
    EXPECT_EQ(res, 1);
    // The 16-bit form compares unsigned differences without a limit.
    Picture c;
    c.fill16(1000);
    *c.at16(3, 3) = 41000;
    ASSERT_EQ(zaniEdgesDetect16x16_16u_C1R(c.at16(0, 0), S, 39999, 2, &res), zanStsOk);
    EXPECT_EQ(res, 1);  // (3, 3), (2, 3), (3, 2)
    ASSERT_EQ(zaniEdgesDetect16x16_16u_C1R(c.at16(0, 0), S, 40000, 0, &res), zanStsOk);
    EXPECT_EQ(res, 0);
}

// Once the count exceeds edgeCount the scan ends: rows past the next one
// are never read.  Rows 0 and 1 lie on a readable page, row 2 on a page
// that faults.
TEST(Blockstats, EdgeTestStopsEarly) {
    const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    void* m = mmap(nullptr, 3 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(m, MAP_FAILED);
    auto* base = static_cast<Zan8u*>(m);
    ASSERT_EQ(mprotect(base + 2 * page, page, PROT_NONE), 0);
    const auto step = static_cast<Zan32s>(page);
    for (Zan8u* p : {base, base + 3}) {  // aligned and unaligned loops
        for (Zan32s x = 0; x < 16; ++x) {
            p[x] = static_cast<Zan8u>(x % 2 ? 200 : 0);  // row 0: every sample counts
            p[step + x] = 0;
        }
        Zan8u res = 7;
        ASSERT_EQ(zaniEdgesDetect16x16_8u_C1R(p, step, 50, 14, &res), zanStsOk);
        EXPECT_EQ(res, 1);
    }
    auto* p16 = reinterpret_cast<Zan16u*>(base);
    for (Zan32s x = 0; x < 16; ++x) {
        p16[x] = static_cast<Zan16u>(x % 2 ? 60000 : 0);
        reinterpret_cast<Zan16u*>(base + step)[x] = 0;
    }
    Zan8u res = 7;
    ASSERT_EQ(zaniEdgesDetect16x16_16u_C1R(p16, step, 50, 14, &res), zanStsOk);
    EXPECT_EQ(res, 1);
    munmap(m, 3 * page);
}

TEST(Blockstats, ZeroCount) {
    std::array<Zan16s, 80> v;
    v.fill(0);
    Zan32u n = 0;
    ASSERT_EQ(zaniCountZeros8x8_16s_C1(v.data() + 8, &n), zanStsOk);
    EXPECT_EQ(n, 64u);
    v[8] = -32768;
    v[8 + 63] = 1;
    v[8 + 30] = -1;
    v[7] = 5;
    v[72] = 5;  // outside the 64
    ASSERT_EQ(zaniCountZeros8x8_16s_C1(v.data() + 8, &n), zanStsOk);
    EXPECT_EQ(n, 61u);
    for (auto& x : v) x = 3;
    ASSERT_EQ(zaniCountZeros8x8_16s_C1(v.data() + 1, &n), zanStsOk);
    EXPECT_EQ(n, 0u);
}

}  // namespace
