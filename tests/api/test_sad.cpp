// Sums of absolute differences through the exported functions: statuses in
// their order, outputs untouched on failure, and sharp known answers.
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <functional>
#include <vector>

#include "zanvc.h"

namespace {

// A picture with room around the blocks for the extra row and column that
// interpolated positions read, and for the candidate rows.
struct Picture {
    static constexpr Zan32s kStep = 96;
    alignas(64) std::array<Zan8u, kStep * 40> px;
    explicit Picture(Zan8u v = 0) { px.fill(v); }
    Zan8u* at(Zan32s x, Zan32s y) { return px.data() + y * kStep + x; }
};

TEST(Sad, NullPointersFirstWhateverElseIsWrong) {
    Picture cur, ref;
    Zan32s r = 12345, u = 1, v = 2, idx = 99;
    std::array<Zan16u, 16> out16;
    out16.fill(7);
    std::array<Zan32u, 16> out32;
    out32.fill(7);
    const Zan8u* c = cur.at(0, 0);
    const Zan8u* f = ref.at(0, 0);
    const auto* c16 = reinterpret_cast<const Zan16u*>(c);
    const auto* f16 = reinterpret_cast<const Zan16u*>(f);
    constexpr Zan32s S = Picture::kStep;
    // Every pointer argument in turn, with every other argument also wrong
    // where the function checks it (zero steps, a count of 0).
    const std::vector<std::function<ZanStatus()>> calls = {
        [&] { return zaniSAD16x16_8u32s(nullptr, S, f, S, &r, 0); },
        [&] { return zaniSAD16x16_8u32s(c, S, nullptr, S, &r, 0); },
        [&] { return zaniSAD16x16_8u32s(c, S, f, S, nullptr, 0); },
        [&] { return zaniSAD16x8_8u32s_C1R(c, S, f, S, nullptr, 4); },
        [&] { return zaniSAD8x8_8u32s_C1R(nullptr, S, f, S, &r, 8); },
        [&] { return zaniSAD8x16_8u32s_C1R(c, S, nullptr, S, &r); },
        [&] { return zaniSAD8x4_8u32s_C1R(c, S, f, S, nullptr); },
        [&] { return zaniSAD4x8_8u32s_C1R(nullptr, S, f, S, &r); },
        [&] { return zaniSAD4x4_8u32s(c, S, nullptr, S, &r); },
        [&] { return zaniSAD16x16_16u32s_C1R(c16, S, f16, S, nullptr, 0); },
        [&] { return zaniSAD8x8_16u32s_C1R(nullptr, S, f16, S, &r, 0); },
        [&] { return zaniSAD4x4_16u32s_C1R(c16, S, nullptr, S, &r, 0); },
        [&] { return zaniSAD8x8_8u32s_C2R(c, 0, f, 0, &u, nullptr, 0); },
        [&] { return zaniSAD8x8_8u32s_C2R(c, 0, f, 0, nullptr, &v, 0); },
        [&] { return zaniSAD8x8_8u32s_C2R(nullptr, 0, f, 0, &u, &v, 0); },
        [&] { return zaniSAD16x16Blocks8x8_8u16u(c, S, f, S, nullptr); },
        [&] { return zaniSAD16x16Blocks4x4_8u16u(nullptr, S, f, S, out16.data()); },
        [&] { return zaniSAD16x16Blocks8x8_16u32u_C1R(c16, S, nullptr, S, out32.data()); },
        [&] { return zaniSAD16x16Blocks4x4_16u32u_C1R(c16, S, f16, S, nullptr); },
        [&] { return zaniSAD2x2xN_8u16u_C1R(c, S, f, S, nullptr, 0); },
        [&] { return zaniSAD4x4xN_8u16u_C1R(nullptr, S, f, S, out16.data(), 0); },
        [&] { return zaniSAD8x8xN_8u16u_C1R(c, S, nullptr, S, out16.data(), 7); },
        [&] { return zaniSAD16x16xN_8u16u_C1R(c, S, f, S, nullptr, -8); },
        [&] { return zaniSAD4x4xNI_8u16u_C1R(c, S, f, S, out16.data(), 0, nullptr); },
        [&] { return zaniSAD8x8xNI_8u16u_C1R(c, S, f, S, nullptr, 0, &idx); },
        [&] { return zaniSAD16x16xNI_8u16u_C1R(nullptr, S, f, S, out16.data(), 3, &idx); },
        [&] { return zaniSubSAD8x8_8u16s_C1R(c, S, f, S, nullptr, 16, &r); },
        [&] { return zaniSubSAD8x8_8u16s_C1R(c, S, nullptr, S, reinterpret_cast<Zan16s*>(out16.data()), 16, &r); },
        [&] { return zaniFrameFieldSAD16x16_8u32s_C1R(nullptr, S, &r, &u); },
        [&] { return zaniFrameFieldSAD16x16_8u32s_C1R(c, S, &r, nullptr); },
        [&] { return zaniFrameFieldSAD16x16_16s32s_C1R(reinterpret_cast<const Zan16s*>(c), S, nullptr, &u); },
    };
    for (size_t i = 0; i < calls.size(); ++i) EXPECT_EQ(calls[i](), zanStsNullPtr) << "call " << i;
    EXPECT_EQ(r, 12345);
    EXPECT_EQ(u, 1);
    EXPECT_EQ(v, 2);
    EXPECT_EQ(idx, 99);
    for (auto x : out16) EXPECT_EQ(x, 7);
    for (auto x : out32) EXPECT_EQ(x, 7u);
}

TEST(Sad, TwoChannelFormAloneChecksItsSteps) {
    Picture cur(10), ref(0);
    Zan32s u = -1, v = -1;
    EXPECT_EQ(zaniSAD8x8_8u32s_C2R(cur.at(0, 0), 0, ref.at(0, 0), 16, &u, &v, 0), zanStsStepBad);
    EXPECT_EQ(zaniSAD8x8_8u32s_C2R(cur.at(0, 0), 16, ref.at(0, 0), -16, &u, &v, 0), zanStsStepBad);
    EXPECT_EQ(u, -1);
    EXPECT_EQ(v, -1);
    // The others take zero and negative steps: a zero step repeats one row.
    Zan32s r = -1;
    EXPECT_EQ(zaniSAD16x16_8u32s(cur.at(0, 0), 0, ref.at(0, 20), -Picture::kStep, &r, 0), zanStsOk);
    EXPECT_EQ(r, 2560);
    EXPECT_EQ(zaniSAD4x4_8u32s(cur.at(0, 0), 0, ref.at(0, 0), 0, &r), zanStsOk);
    EXPECT_EQ(r, 160);
}

TEST(Sad, TwoChannelsSplitEvenAndOddBytes) {
    Picture cur, ref(0);
    for (Zan32s y = 0; y < 8; ++y)
        for (Zan32s x = 0; x < 16; ++x) *cur.at(x, y) = x % 2 ? 20 : 10;
    Zan32s u = 0, v = 0;
    ASSERT_EQ(zaniSAD8x8_8u32s_C2R(cur.at(0, 0), Picture::kStep, ref.at(0, 0), Picture::kStep, &u, &v, 0), zanStsOk);
    EXPECT_EQ(u, 640);
    EXPECT_EQ(v, 1280);
    // Half a sample to the right is 2 bytes on: U of 0 and 30 averages to 15.
    for (Zan32s y = 0; y < 9; ++y)
        for (Zan32s x = 0; x < 18; ++x) *ref.at(x, y) = (x / 2) % 2 ? 30 : 0;
    ASSERT_EQ(zaniSAD8x8_8u32s_C2R(cur.at(0, 0), Picture::kStep, ref.at(0, 0), Picture::kStep, &u, &v, 8), zanStsOk);
    EXPECT_EQ(u, 64 * 5);
    EXPECT_EQ(v, 64 * 5);
}

// Only mcType >> 2 counts, and the half-sample average rounds upward.
TEST(Sad, LowBitsOfThePositionSelectorAreIgnored) {
    Picture cur(0), ref;
    for (Zan32s y = 0; y < 20; ++y)
        for (Zan32s x = 0; x < 20; ++x) *ref.at(x, y) = static_cast<Zan8u>(y % 2);  // rows 0, 1, 0, 1...
    Zan32s r[16];
    for (Zan32s m = 0; m < 16; ++m)
        ASSERT_EQ(zaniSAD16x16_8u32s(cur.at(0, 0), Picture::kStep, ref.at(0, 0), Picture::kStep, &r[m], m), zanStsOk);
    for (Zan32s m = 0; m < 16; ++m) EXPECT_EQ(r[m], r[m & ~3]) << "mcType " << m;
    EXPECT_EQ(r[0], 128);  // plain: half the rows are 1
    EXPECT_EQ(r[4], 256);  // (0 + 1 + 1) >> 1 = 1 everywhere
    EXPECT_EQ(r[8], 128);  // horizontal average of equal samples
    EXPECT_EQ(r[12], 256); // (0 + 0 + 1 + 1 + 2) >> 2 = 1
}

// The diagonal position is one sum of four with one shift: windows that sum
// to 1 give 0, where two chained averages would give 1.
TEST(Sad, DiagonalPositionIsOneExactSum) {
    Picture cur(0), ref(0);
    for (Zan32s y = 0; y < 18; y += 2)
        for (Zan32s x = 0; x < 18; ++x) *ref.at(x, y) = static_cast<Zan8u>(x % 2);
    Zan32s r = -1;
    ASSERT_EQ(zaniSAD16x16_8u32s(cur.at(0, 0), Picture::kStep, ref.at(0, 0), Picture::kStep, &r, 12), zanStsOk);
    EXPECT_EQ(r, 0);
    ASSERT_EQ(zaniSAD8x8_8u32s_C1R(cur.at(0, 0), Picture::kStep, ref.at(0, 0), Picture::kStep, &r, 12), zanStsOk);
    EXPECT_EQ(r, 0);
    ASSERT_EQ(zaniSAD16x8_8u32s_C1R(cur.at(0, 0), Picture::kStep, ref.at(0, 0), Picture::kStep, &r, 15), zanStsOk);
    EXPECT_EQ(r, 0);
}

// All differences 255: 65280 for a 16x16 block, without wrap, in every form.
TEST(Sad, LargestEightBitSums) {
    Picture cur(255), ref(0);
    constexpr Zan32s S = Picture::kStep;
    Zan32s r = 0;
    ASSERT_EQ(zaniSAD16x16_8u32s(cur.at(0, 0), S, ref.at(0, 0), S, &r, 0), zanStsOk);
    EXPECT_EQ(r, 65280);
    ASSERT_EQ(zaniSAD16x16_8u32s(cur.at(0, 0), S, ref.at(0, 0), S, &r, 12), zanStsOk);
    EXPECT_EQ(r, 65280);
    std::array<Zan16u, 16> res;
    Zan32s idx = -1;
    ASSERT_EQ(zaniSAD16x16xNI_8u16u_C1R(cur.at(0, 0), S, ref.at(0, 0), S, res.data(), 16, &idx), zanStsOk);
    for (auto x : res) EXPECT_EQ(x, 65280);
    EXPECT_EQ(idx, 0);
    ASSERT_EQ(zaniSAD16x16xN_8u16u_C1R(cur.at(0, 0), S, ref.at(1, 0), S, res.data(), 8), zanStsOk);
    for (int i = 0; i < 8; ++i) EXPECT_EQ(res[static_cast<size_t>(i)], 65280);
    ASSERT_EQ(zaniSAD16x16Blocks8x8_8u16u(cur.at(0, 0), S, ref.at(0, 0), S, res.data()), zanStsOk);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(res[static_cast<size_t>(i)], 16320);
    ASSERT_EQ(zaniSAD16x16Blocks4x4_8u16u(cur.at(0, 0), S, ref.at(0, 0), S, res.data()), zanStsOk);
    for (auto x : res) EXPECT_EQ(x, 4080);
}

// A difference above 32767 is summed as a negative 16-bit value.
TEST(Sad, SixteenBitFormsSumSigned16BitMagnitudes) {
    std::vector<Zan16u> cur(17 * 17, 40000), ref(17 * 17, 0);
    Zan32s r = 0;
    ASSERT_EQ(zaniSAD16x16_16u32s_C1R(cur.data(), 34, ref.data(), 34, &r, 0), zanStsOk);
    EXPECT_EQ(r, 256 * (40000 - 65536));
    ASSERT_EQ(zaniSAD4x4_16u32s_C1R(cur.data(), 34, ref.data(), 34, &r, 0), zanStsOk);
    EXPECT_EQ(r, 16 * (40000 - 65536));
    std::fill(cur.begin(), cur.end(), 1000);
    ASSERT_EQ(zaniSAD8x8_16u32s_C1R(cur.data(), 34, ref.data(), 34, &r, 0), zanStsOk);
    EXPECT_EQ(r, 64000);
    // Interpolation saturates at 65535 before the shift: (65535 + 65535 + 1)
    // saturates to 65535, >> 1 = 32767.
    std::fill(ref.begin(), ref.end(), 65535);
    std::fill(cur.begin(), cur.end(), 0);
    ASSERT_EQ(zaniSAD4x4_16u32s_C1R(cur.data(), 34, ref.data(), 34, &r, 4), zanStsOk);
    EXPECT_EQ(r, 16 * 32767);
    ASSERT_EQ(zaniSAD4x4_16u32s_C1R(cur.data(), 34, ref.data(), 34, &r, 12), zanStsOk);
    EXPECT_EQ(r, 16 * 16383);
}

// The 16-bit sub-block forms take the wrapped signed difference's magnitude.
TEST(Sad, SixteenBitSubBlocksUseWrappedDifferences) {
    std::vector<Zan16u> cur(16 * 16), ref(16 * 16, 0);
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x) cur[static_cast<size_t>(16 * y + x)] = x < 8 ? 32768 : (y < 8 ? 1 : 40000);
    std::array<Zan32u, 16> r;
    r.fill(0xDEADBEEF);
    ASSERT_EQ(zaniSAD16x16Blocks8x8_16u32u_C1R(cur.data(), 32, ref.data(), 32, r.data()), zanStsOk);
    EXPECT_EQ(r[0], 64u * 32768);
    EXPECT_EQ(r[1], 64u);
    EXPECT_EQ(r[2], 64u * 32768);
    EXPECT_EQ(r[3], 64u * (65536 - 40000));
    EXPECT_EQ(r[4], 0xDEADBEEF);  // four results only
    ASSERT_EQ(zaniSAD16x16Blocks4x4_16u32u_C1R(cur.data(), 32, ref.data(), 32, r.data()), zanStsOk);
    EXPECT_EQ(r[0], 16u * 32768);
    EXPECT_EQ(r[2], 16u);
    EXPECT_EQ(r[15], 16u * (65536 - 40000));
}

TEST(Sad, SubBlocksInRasterOrder) {
    Picture cur(0), ref(0);
    for (Zan32s y = 0; y < 16; ++y)
        for (Zan32s x = 0; x < 16; ++x) *cur.at(x, y) = static_cast<Zan8u>(4 * (y / 4) + x / 4);
    std::array<Zan16u, 17> r;
    r.fill(0xBEEF);
    ASSERT_EQ(zaniSAD16x16Blocks4x4_8u16u(cur.at(0, 0), Picture::kStep, ref.at(0, 0), Picture::kStep, r.data()), zanStsOk);
    for (int i = 0; i < 16; ++i) EXPECT_EQ(r[static_cast<size_t>(i)], 16 * i);
    EXPECT_EQ(r[16], 0xBEEF);
    ASSERT_EQ(zaniSAD16x16Blocks8x8_8u16u(cur.at(0, 0), Picture::kStep, ref.at(0, 0), Picture::kStep, r.data()), zanStsOk);
    // Top left holds blocks 0, 1, 4, 5 of the 4x4 grid.
    EXPECT_EQ(r[0], 16 * (0 + 1 + 4 + 5));
    EXPECT_EQ(r[1], 16 * (2 + 3 + 6 + 7));
    EXPECT_EQ(r[2], 16 * (8 + 9 + 12 + 13));
    EXPECT_EQ(r[3], 16 * (10 + 11 + 14 + 15));
}

// The count is rounded down to a multiple of 8; below 8 is an error with
// nothing written.
TEST(Sad, CandidateCountRoundsDown) {
    Picture cur(9), ref(0);
    constexpr Zan32s S = Picture::kStep;
    std::array<Zan16u, 24> r;
    r.fill(0x7777);
    Zan32s idx = -1;
    EXPECT_EQ(zaniSAD4x4xNI_8u16u_C1R(cur.at(0, 0), S, ref.at(0, 0), S, r.data(), 7, &idx), zanStsSizeBad);
    EXPECT_EQ(zaniSAD8x8xN_8u16u_C1R(cur.at(0, 0), S, ref.at(0, 0), S, r.data(), -1), zanStsSizeBad);
    EXPECT_EQ(idx, -1);
    EXPECT_EQ(r[0], 0x7777);
    for (Zan32s x = 0; x < 40; ++x)
        for (Zan32s y = 0; y < 16; ++y) *ref.at(x, y) = static_cast<Zan8u>(x == 5 ? 9 : 0);
    ASSERT_EQ(zaniSAD4x4xNI_8u16u_C1R(cur.at(0, 0), S, ref.at(2, 0), S, r.data(), 15, &idx), zanStsOk);
    // Candidates 0..7 start at x = 2..9; column 5 matches the current block.
    EXPECT_EQ(r[0], 16 * 9 - 4 * 9);
    EXPECT_EQ(r[7], 16 * 9);
    EXPECT_EQ(r[8], 0x7777);
    EXPECT_EQ(idx, 0);  // candidates 0..3 all contain column 5: the first wins
    for (Zan32s n : {8, 9, 15}) {
        r.fill(0x7777);
        ASSERT_EQ(zaniSAD2x2xN_8u16u_C1R(cur.at(0, 0), S, ref.at(0, 0), S, r.data(), n), zanStsOk);
        EXPECT_EQ(r[4], 2 * 9);
        EXPECT_EQ(r[5], 2 * 9 * 2 - 2 * 9);
        EXPECT_EQ(r[8], 0x7777) << n;
    }
}

// Reference rows ramp by one per column and three per row above a zero
// current block, so candidate i at column x0 sums to
// B * B * (x0 + i) + 2 * B * B * (B - 1).  That holds at every offset of pRef
// in its 16-byte unit, with the result array aligned or not, and with a
// reference step that is a multiple of 16 or not.
TEST(Sad, CandidateSumsAtEveryAlignment) {
    Picture cur(0);
    alignas(64) std::array<Zan8u, 112 * 20> ref;
    alignas(16) std::array<Zan16u, 40> r;
    for (Zan32s step : {96, 104}) {
        for (Zan32s y = 0; y < 20; ++y)
            for (Zan32s x = 0; x < step; ++x) ref[static_cast<size_t>(y * step + x)] = static_cast<Zan8u>(x + 3 * y);
        for (Zan32s size : {4, 8, 16})
            for (Zan32s x0 = 0; x0 < 16; ++x0)
                for (Zan32s offset : {0, 1, 8}) {
                    r.fill(0x7777);
                    Zan16u* out = r.data() + offset;
                    Zan32s idx = -1;
                    const Zan8u* p = ref.data() + x0;
                    const Zan8u* c = cur.at(0, 0);
                    ZanStatus st = size == 4   ? zaniSAD4x4xNI_8u16u_C1R(c, 4, p, step, out, 24, &idx)
                                   : size == 8 ? zaniSAD8x8xNI_8u16u_C1R(c, 8, p, step, out, 24, &idx)
                                               : zaniSAD16x16xNI_8u16u_C1R(c, 16, p, step, out, 24, &idx);
                    ASSERT_EQ(st, zanStsOk);
                    for (Zan32s i = 0; i < 24; ++i)
                        ASSERT_EQ(out[i], size * size * (x0 + i) + 2 * size * size * (size - 1))
                            << size << "x" << size << " x0 " << x0 << " offset " << offset << " step " << step;
                    EXPECT_EQ(r[static_cast<size_t>(offset + 24)], 0x7777);
                    EXPECT_TRUE(offset == 0 || r[0] == 0x7777);
                    EXPECT_EQ(idx, 0);
                }
    }
}

// Equal results: the lowest index wins, within a lane and across lanes.
TEST(Sad, BestCandidateTiesGoToTheLowestIndex) {
    constexpr Zan32s S = Picture::kStep;
    Picture cur(0);
    std::array<Zan16u, 32> r;
    auto best = [&](Picture& ref, Zan32s n, int size) {
        Zan32s idx = -1;
        ZanStatus st = size == 4    ? zaniSAD4x4xNI_8u16u_C1R(cur.at(0, 0), S, ref.at(0, 0), S, r.data(), n, &idx)
                       : size == 8 ? zaniSAD8x8xNI_8u16u_C1R(cur.at(0, 0), S, ref.at(0, 0), S, r.data(), n, &idx)
                                   : zaniSAD16x16xNI_8u16u_C1R(cur.at(0, 0), S, ref.at(0, 0), S, r.data(), n, &idx);
        EXPECT_EQ(st, zanStsOk);
        return idx;
    };
    for (int size : {4, 8, 16}) {
        // Zero-SAD windows start at x = 11 and at x = 27: lanes 3 and 3 of
        // passes 1 and 3, and a tie across lanes with x = 19 (lane 3 too) is
        // avoided by making the ref nonzero elsewhere.
        Picture ref(1);
        for (Zan32s x : {11, 27, 19 + 32})
            for (Zan32s y = 0; y < 16; ++y)
                for (Zan32s k = 0; k < size; ++k) *ref.at(x + k, y) = 0;
        EXPECT_EQ(best(ref, 32, size), 11) << size;
        // Across lanes: zero windows at 13 (lane 5) and 10 (lane 2), later and
        // earlier lanes.
        Picture ref2(1);
        for (Zan32s x : {13, 10})
            for (Zan32s y = 0; y < 16; ++y)
                for (Zan32s k = 0; k < size; ++k) *ref2.at(x + k, y) = 0;
        EXPECT_EQ(best(ref2, 24, size), 10) << size;
        // Everything equal: index 0.
        Picture flat(3);
        EXPECT_EQ(best(flat, 16, size), 0) << size;
    }
}

// 16x16 sums reach 65280: those of 32768 and above still rank above the
// smaller ones.  Columns 0..19 of the reference are 0, the rest 255, against
// a current block of 255: candidate i has 16 * 255 * (20 - i) while i < 20,
// from 65280 at i <= 4 down through 32640 at i = 12, and 0 from i = 20 on.
TEST(Sad, BestSixteenBySixteenUsesAllSixteenBits) {
    Picture cur(255), ref(255);
    constexpr Zan32s S = Picture::kStep;
    for (Zan32s y = 0; y < 16; ++y)
        for (Zan32s x = 0; x < 20; ++x) *ref.at(x, y) = 0;
    alignas(16) std::array<Zan16u, 32> r;
    for (Zan32s offset : {0, 1}) {
        Zan32s idx = -1;
        ASSERT_EQ(zaniSAD16x16xNI_8u16u_C1R(cur.at(0, 0), S, ref.at(0, 0), S, r.data() + offset, 24, &idx), zanStsOk);
        for (Zan32s i = 0; i < 24; ++i)
            EXPECT_EQ(r[static_cast<size_t>(offset + i)], 16 * 255 * (i < 4 ? 16 : i < 20 ? 20 - i : 0)) << i;
        EXPECT_EQ(idx, 20);
        ASSERT_EQ(zaniSAD16x16xNI_8u16u_C1R(cur.at(0, 0), S, ref.at(0, 0), S, r.data() + offset, 8, &idx), zanStsOk);
        EXPECT_EQ(idx, 7);  // 16 * 255 * 13 = 53040, the smallest of the first eight
    }
}

TEST(Sad, DifferenceBlockAndItsSum) {
    Picture cur, ref;
    for (Zan32s y = 0; y < 8; ++y)
        for (Zan32s x = 0; x < 8; ++x) {
            *cur.at(x, y) = static_cast<Zan8u>(x * 30);
            *ref.at(x, y) = static_cast<Zan8u>(y * 30);
        }
    std::array<Zan16s, 10 * 12> diff;
    diff.fill(-1234);
    Zan32s r = -1, want = 0;
    ASSERT_EQ(zaniSubSAD8x8_8u16s_C1R(cur.at(0, 0), Picture::kStep, ref.at(0, 0), Picture::kStep, diff.data() + 1, 24, &r), zanStsOk);
    for (Zan32s y = 0; y < 8; ++y)
        for (Zan32s x = 0; x < 8; ++x) {
            EXPECT_EQ(diff[static_cast<size_t>(1 + 12 * y + x)], 30 * (x - y));
            want += 30 * std::abs(x - y);
        }
    EXPECT_EQ(r, want);
    EXPECT_EQ(diff[0], -1234);
    EXPECT_EQ(diff[9], -1234);
    // pResult is not checked: a null one leaves only the difference block.
    diff.fill(0);
    ASSERT_EQ(zaniSubSAD8x8_8u16s_C1R(cur.at(0, 0), Picture::kStep, ref.at(0, 0), Picture::kStep, diff.data(), 24, nullptr), zanStsOk);
    EXPECT_EQ(diff[12 * 7], -210);
    // Rows 16-byte aligned, 32 bytes apart: the same block, the gaps untouched.
    alignas(16) std::array<Zan16s, 16 * 8> wide;
    wide.fill(-1234);
    r = -1;
    ASSERT_EQ(zaniSubSAD8x8_8u16s_C1R(cur.at(0, 0), Picture::kStep, ref.at(0, 0), Picture::kStep, wide.data(), 32, &r), zanStsOk);
    EXPECT_EQ(r, want);
    for (Zan32s y = 0; y < 8; ++y)
        for (Zan32s x = 0; x < 16; ++x)
            EXPECT_EQ(wide[static_cast<size_t>(16 * y + x)], x < 8 ? 30 * (x - y) : -1234) << x << "," << y;
}

TEST(Sad, FrameFieldLeavesOutTheMiddlePair) {
    Picture src(0);
    for (Zan32s y = 8; y < 16; ++y)
        for (Zan32s x = 0; x < 16; ++x) *src.at(x, y) = 255;
    Zan32s frame = -1, field = -1;
    ASSERT_EQ(zaniFrameFieldSAD16x16_8u32s_C1R(src.at(0, 0), Picture::kStep, &frame, &field), zanStsOk);
    EXPECT_EQ(frame, 0);              // only rows 7 and 8 differ, and they are not compared
    EXPECT_EQ(field, 2 * 16 * 255);   // pairs (6, 8) and (7, 9)
    // Alternating rows: every frame pair differs, no field pair does.
    for (Zan32s y = 0; y < 16; ++y)
        for (Zan32s x = 0; x < 16; ++x) *src.at(x, y) = y % 2 ? 255 : 0;
    ASSERT_EQ(zaniFrameFieldSAD16x16_8u32s_C1R(src.at(0, 0), Picture::kStep, &frame, &field), zanStsOk);
    EXPECT_EQ(frame, 14 * 16 * 255);  // 57120, the largest, still in 16 bits
    EXPECT_EQ(field, 0);
}

// Differences are those of wrapping 16-bit subtraction and the sums keep
// their low 16 bits.
TEST(Sad, FrameFieldSixteenBitWraps) {
    std::vector<Zan16s> src(16 * 16);
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x) src[static_cast<size_t>(16 * y + x)] = y % 2 ? -32768 : 32767;
    Zan32s frame = -1, field = -1;
    ASSERT_EQ(zaniFrameFieldSAD16x16_16s32s_C1R(src.data(), 32, &frame, &field), zanStsOk);
    EXPECT_EQ(frame, 14 * 16 * 1);  // 32767 - -32768 wraps to -1, its negation to 1
    EXPECT_EQ(field, 0);
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x) src[static_cast<size_t>(16 * y + x)] = static_cast<Zan16s>(y % 2 ? 20000 : 0);
    ASSERT_EQ(zaniFrameFieldSAD16x16_16s32s_C1R(src.data(), 32, &frame, &field), zanStsOk);
    EXPECT_EQ(frame, (14 * 16 * 20000) & 0xFFFF);
}

}  // namespace
