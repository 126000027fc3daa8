// The support functions of both builds: statuses in their order with
// nothing written on failure, and known answers.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "check/support_paths.h"

namespace {

using namespace zan;

using check::SupportPath;
const auto& kApis = check::kSupportPaths;

bool aligned64(const void* p) { return (reinterpret_cast<std::uintptr_t>(p) & 63) == 0; }

// ------------------------------------------------------------- allocation

TEST(Support, AllocationCountsElementsAndRefusesEmptyOrOversizedBlocks) {
    for (const SupportPath& a : kApis) {
        SCOPED_TRACE(a.path);
        for (Zan32s n : {0, -1, INT_MIN}) {
            EXPECT_EQ(a.malloc8u(n), nullptr) << n;
            EXPECT_EQ(a.malloc8s(n), nullptr) << n;
            EXPECT_EQ(a.malloc16u(n), nullptr) << n;
        }
        // Twice these lengths does not fit the allocator's argument.
        EXPECT_EQ(a.malloc16u(INT_MAX / 2 + 1), nullptr);
        EXPECT_EQ(a.malloc16u(INT_MAX), nullptr);

        Zan8u* b = a.malloc8u(1);
        Zan8s* s = a.malloc8s(77);
        Zan16u* w = a.malloc16u(1000);
        ASSERT_TRUE(b && s && w);
        EXPECT_TRUE(aligned64(b) && aligned64(s) && aligned64(w));
        // The whole of each block is there to write (the sanitizer build
        // would catch a short one).
        b[0] = 1;
        std::fill(s, s + 77, Zan8s{-3});
        std::fill(w, w + 1000, Zan16u{0xBEEF});
        EXPECT_EQ(w[999], 0xBEEF);
        a.sfree(b);
        a.ifree(s);
        a.sfree(w);
        a.sfree(nullptr);
    }
}

// -------------------------------------------------------- copy and fill

TEST(Support, RowCopyAndFillStatusesInOrder) {
    for (const SupportPath& a : kApis) {
        SCOPED_TRACE(a.path);
        std::array<Zan8u, 32> src{}, dst;
        dst.fill(0x77);
        const Zan16s* s16 = reinterpret_cast<const Zan16s*>(src.data());
        Zan16s* d16 = reinterpret_cast<Zan16s*>(dst.data());
        struct Case {
            ZanStatus got, want;
        };
        const Case cases[] = {
            {a.copy8u(nullptr, dst.data(), 0), zanStsNullPtr},  // null before length
            {a.copy8u(src.data(), nullptr, -4), zanStsNullPtr},
            {a.copy8u(src.data(), dst.data(), 0), zanStsSizeBad},
            {a.copy8u(src.data(), dst.data(), -1), zanStsSizeBad},
            {a.copy16s(nullptr, d16, 4), zanStsNullPtr},
            {a.copy16s(s16, nullptr, 0), zanStsNullPtr},
            {a.copy16s(s16, d16, 0), zanStsSizeBad},
            {a.set8u(9, nullptr, 0), zanStsNullPtr},
            {a.set8u(9, dst.data(), 0), zanStsSizeBad},
            {a.set8u(9, dst.data(), INT_MIN), zanStsSizeBad},
            {a.zero8u(nullptr, -1), zanStsNullPtr},
            {a.zero8u(dst.data(), 0), zanStsSizeBad},
            {a.copy_region(nullptr, 4, dst.data(), 4, {0, 0}), zanStsNullPtr},
            {a.copy_region(src.data(), 4, nullptr, 4, {4, 4}), zanStsNullPtr},
            {a.copy_region(src.data(), 4, dst.data(), 4, {0, 4}), zanStsSizeBad},
            {a.copy_region(src.data(), 4, dst.data(), 4, {4, -1}), zanStsSizeBad},
            {a.set_region(1, nullptr, 4, {0, 4}), zanStsNullPtr},
            {a.set_region(1, dst.data(), 4, {-2, 4}), zanStsSizeBad},
            {a.set_region(1, dst.data(), 4, {4, 0}), zanStsSizeBad},
        };
        for (size_t i = 0; i < std::size(cases); ++i) EXPECT_EQ(cases[i].got, cases[i].want) << "case " << i;
        for (Zan8u v : dst) ASSERT_EQ(v, 0x77);
    }
}

TEST(Support, SixteenBitCopyMovesTwiceTheBytes) {
    for (const SupportPath& a : kApis) {
        std::array<Zan16s, 40> src, dst;
        for (size_t i = 0; i < src.size(); ++i) src[i] = static_cast<Zan16s>(-1000 * static_cast<int>(i) + 7);
        dst.fill(0x1111);
        ASSERT_EQ(a.copy16s(src.data(), dst.data(), 37), zanStsOk);
        for (size_t i = 0; i < 37; ++i) ASSERT_EQ(dst[i], src[i]) << a.path << " " << i;
        for (size_t i = 37; i < 40; ++i) ASSERT_EQ(dst[i], 0x1111) << a.path << " " << i;
        std::array<Zan8u, 20> bytes;
        bytes.fill(5);
        ASSERT_EQ(a.zero8u(bytes.data() + 1, 18), zanStsOk);
        EXPECT_EQ(bytes[0], 5);
        EXPECT_EQ(bytes[19], 5);
        EXPECT_EQ(std::count(bytes.begin(), bytes.end(), 0), 18);
    }
}

// Rows 10, 11, 12 of a source hold 10.., 11.., 12..: the steps pick them.
TEST(Support, RegionCopyTakesZeroAndNegativeSteps) {
    for (const SupportPath& a : kApis) {
        SCOPED_TRACE(a.path);
        std::array<Zan8u, 64> src;
        for (int y = 0; y < 4; ++y)
            for (int x = 0; x < 16; ++x) src[static_cast<size_t>(16 * y + x)] = static_cast<Zan8u>(10 * (y + 1) + x);
        std::array<Zan8u, 80> dst;

        // A zero source step repeats the first row.
        dst.fill(0);
        ASSERT_EQ(a.copy_region(src.data(), 0, dst.data(), 20, {5, 3}), zanStsOk);
        for (int y = 0; y < 3; ++y)
            for (int x = 0; x < 5; ++x) EXPECT_EQ(dst[static_cast<size_t>(20 * y + x)], 10 + x);
        EXPECT_EQ(dst[5], 0);

        // A negative destination step stacks the rows upward.
        dst.fill(0);
        ASSERT_EQ(a.copy_region(src.data(), 16, dst.data() + 60, -20, {4, 4}), zanStsOk);
        for (int y = 0; y < 4; ++y)
            for (int x = 0; x < 4; ++x) EXPECT_EQ(dst[static_cast<size_t>(60 - 20 * y + x)], 10 * (y + 1) + x);

        // A zero destination step leaves the last row on top.
        dst.fill(0);
        ASSERT_EQ(a.copy_region(src.data(), 16, dst.data(), 0, {3, 4}), zanStsOk);
        EXPECT_EQ(dst[0], 40);
        EXPECT_EQ(dst[2], 42);
        EXPECT_EQ(dst[3], 0);
    }
}

// --------------------------------------------------------- cache lookup

// Answers of CPUID leaf 2 as a processor could give them.
TEST(Support, LargestCacheFromLeafTwoDescriptors) {
    struct Case {
        std::array<Zan32u, 4> regs;
        Zan32s want;
    };
    const Case cases[] = {
        {{0x665B5001, 0, 0, 0x007A7000}, 256 << 10},          // 8 KiB L1, 256 KiB L2, TLB and trace entries
        {{0x55035A01, 0xF0B2FF, 0, 0x00CA0000}, -1},          // 0xFF: the sizes are in leaf 4
        {{0x00000001, 0x80000049, 0, 0x2C}, 32 << 10},        // a register with bit 31 set holds nothing
        {{0x000000EC, 0, 0, 0}, 0},                           // the low byte of EAX is a count, not a cache
        {{0x0D490001, 0x0000EC00, 0x00000043, 0}, 24 << 20},  // the largest of several
        {{0x00000001, 0, 0, 0}, 0},
    };
    for (const SupportPath& a : kApis)
        for (const Case& c : cases) EXPECT_EQ(a.leaf2(c.regs.data()), c.want) << a.path << " " << std::hex << c.regs[0];
}

// ---------------------------------------------------------------- median

TEST(Support, MedianStatusesInOrder) {
    for (const SupportPath& a : kApis) {
        SCOPED_TRACE(a.path);
        std::array<Zan8u, 16> p{}, dst;
        dst.fill(0x42);
        const Zan8u* good[3] = {p.data(), p.data(), p.data()};
        const Zan8u* hole0[3] = {nullptr, p.data(), p.data()};
        const Zan8u* hole2[3] = {p.data(), p.data(), nullptr};
        EXPECT_EQ(a.median(nullptr, 4, dst.data(), 4, {0, 0}), zanStsNullPtr);
        EXPECT_EQ(a.median(hole0, 4, dst.data(), 4, {0, 4}), zanStsNullPtr);
        EXPECT_EQ(a.median(hole2, 4, dst.data(), 4, {4, 4}), zanStsNullPtr);
        EXPECT_EQ(a.median(good, 4, nullptr, 4, {4, 4}), zanStsNullPtr);
        EXPECT_EQ(a.median(good, 4, dst.data(), 4, {0, 4}), zanStsSizeBad);
        EXPECT_EQ(a.median(good, 4, dst.data(), 4, {4, -3}), zanStsSizeBad);
        for (Zan8u v : dst) ASSERT_EQ(v, 0x42);
    }
}

// --------------------------------------------------------------- lowpass

struct Image {
    static constexpr Zan32s kStep = 48;
    std::array<Zan8u, kStep * 24> px;
    explicit Image(Zan8u v) { px.fill(v); }
    Zan8u* at(Zan32s x, Zan32s y) { return px.data() + y * kStep + x; }
};

TEST(Support, LowpassStatusesInOrder) {
    for (const SupportPath& a : kApis) {
        SCOPED_TRACE(a.path);
        Image src(9), dst(0x6B);
        const Zan8u* s = src.at(2, 2);
        Zan8u* d = dst.at(0, 0);
        constexpr Zan32s S = Image::kStep;
        struct Case {
            ZanStatus got, want;
        };
        const Case cases[] = {
            {a.lowpass(s, S, nullptr, S, {8, 8}, 44), zanStsNullPtr},  // null before a bad mask
            {a.lowpass(nullptr, 0, d, 0, {0, 0}, 44), zanStsNullPtr},
            {a.lowpass(s, 0, d, 0, {0, 4}, 33), zanStsSizeBad},  // size before step
            {a.lowpass(s, S, d, -S, {4, 0}, 44), zanStsSizeBad},
            {a.lowpass(s, 0, d, S, {4, 4}, 33), zanStsStepBad},
            {a.lowpass(s, S, d, 0, {4, 4}, 55), zanStsStepBad},
            {a.lowpass(s, -S, d, S, {4, 4}, 44), zanStsStepBad},  // step before mask
            {a.lowpass(s, S, d, S, {8, 8}, 44), zanStsMaskSizeBad},
            {a.lowpass(s, S, d, S, {8, 8}, 3), zanStsMaskSizeBad},
            {a.lowpass(s, S, d, S, {8, 8}, 0), zanStsMaskSizeBad},
        };
        for (size_t i = 0; i < std::size(cases); ++i) EXPECT_EQ(cases[i].got, cases[i].want) << "case " << i;
        for (Zan8u v : dst.px) ASSERT_EQ(v, 0x6B);
    }
}

// One sample of 255 on black: every output whose window covers it becomes
// (255 + 4) / 9 = 28 (3x3) or (255 + 12) / 25 = 10 (5x5), the rest stay 0.
TEST(Support, BrightSampleSpreadsOverItsWindow) {
    struct Case {
        Zan32s mask, reach, level;
    };
    for (const SupportPath& a : kApis)
        for (Case c : {Case{kMask3x3, 1, 28}, Case{kMask5x5, 2, 10}})
            for (Zan32s bx : {0, 7, 20, 33})  // inside the vector part and in the tail
            {
                Image src(0), dst(0xEE);
                const Zan32s by = 6;
                *src.at(bx + 2, by + 2) = 255;
                ASSERT_EQ(a.lowpass(src.at(2, 2), Image::kStep, dst.at(0, 0), Image::kStep, {40, 16}, c.mask), zanStsOk);
                for (Zan32s y = 0; y < 16; ++y)
                    for (Zan32s x = 0; x < 40; ++x) {
                        bool covered = std::abs(x - bx) <= c.reach && std::abs(y - by) <= c.reach;
                        ASSERT_EQ(*dst.at(x, y), covered ? c.level : 0)
                            << a.path << " mask " << c.mask << " bright " << bx << " at " << x << "," << y;
                    }
            }
}

// The filter itself for every window sum: columns repeat with the window's
// width as period, so every window of the row holds the same sum, and the
// 16 outputs (one vector turn) and the 3 after them (the tail) must all be
// the rounded mean.
TEST(Support, LowpassGivesTheRoundedMeanForEverySum) {
    for (const SupportPath& a : kApis)
        for (Zan32s n : {3, 5}) {
            const Zan32s mask = n == 3 ? kMask3x3 : kMask5x5, area = n * n, r = n / 2;
            constexpr Zan32s W = 19;
            Image src(0), dst(0);
            for (Zan32s sum = 0; sum <= area * 255; ++sum) {
                // Split the sum into n column sums and each column sum into n samples.
                for (Zan32s k = 0, left = sum; k < n; ++k) {
                    Zan32s col = std::min(left, n * 255);
                    left -= col;
                    for (Zan32s j = 0; j < n; ++j) {
                        Zan8u v = static_cast<Zan8u>(std::min(col, 255));
                        col -= v;
                        for (Zan32s x = k; x < W + 2 * r; x += n) *src.at(x, j) = v;
                    }
                }
                ASSERT_EQ(a.lowpass(src.at(r, r), Image::kStep, dst.at(0, 0), Image::kStep, {W, 1}, mask), zanStsOk);
                for (Zan32s x = 0; x < W; ++x)
                    ASSERT_EQ(*dst.at(x, 0), (sum + area / 2) / area) << a.path << " " << n << "x" << n << " sum " << sum;
            }
        }
}

}  // namespace
