// DCT family and scans through the exported functions: statuses in their
// order, outputs untouched on failure, the count shortcuts, the layouts, and
// known answers worked out by hand.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <functional>
#include <vector>

#include "zanvc.h"

namespace {

using Block = std::array<Zan16s, 64>;

// 16-bit output of 8 rows of 16 samples (the widest form), filled with a mark.
struct Out16 {
    alignas(16) std::array<Zan16s, 8 * 16> px;
    explicit Out16(Zan16s mark = 0x5555) { px.fill(mark); }
    Zan16s at(int x, int y) const { return px[static_cast<size_t>(16 * y + x)]; }
    Zan16s* data() { return px.data(); }
    static constexpr Zan32s kStep = 32;
};
struct Out8 {
    alignas(16) std::array<Zan8u, 8 * 16> px;
    explicit Out8(Zan8u mark = 0x55) { px.fill(mark); }
    Zan8u at(int x, int y) const { return px[static_cast<size_t>(16 * y + x)]; }
    Zan8u* data() { return px.data(); }
    static constexpr Zan32s kStep = 16;
};

Block dc(Zan16s v) {
    Block b{};
    b[0] = v;
    return b;
}

TEST(Dct, NullPointersFirstWhateverElseIsWrong) {
    alignas(16) Block s{}, t{};
    Out16 o16;
    Out8 o8;
    const std::vector<std::function<ZanStatus()>> calls = {
        [&] { return zaniDCT8x8Inv_AANTransposed_16s_C1R(nullptr, o16.data(), 0, 64); },
        [&] { return zaniDCT8x8Inv_AANTransposed_16s_C1R(s.data(), nullptr, -1, 64); },
        [&] { return zaniDCT8x8Inv_AANTransposed_16s8u_C1R(nullptr, o8.data(), 0, 0); },
        [&] { return zaniDCT8x8Inv_AANTransposed_16s8u_C1R(s.data(), nullptr, 0, 0); },
        [&] { return zaniDCT8x8Inv_AANTransposed_16s_P2C2R(nullptr, t.data(), o16.data(), 0, 1, 1); },
        [&] { return zaniDCT8x8Inv_AANTransposed_16s_P2C2R(s.data(), nullptr, o16.data(), 0, 1, 1); },
        [&] { return zaniDCT8x8Inv_AANTransposed_16s_P2C2R(s.data(), t.data(), nullptr, 0, 1, 1); },
        [&] { return zaniDCT8x8Inv_AANTransposed_16s8u_P2C2R(nullptr, t.data(), o8.data(), 0, 1, 1); },
        [&] { return zaniDCT8x8Inv_AANTransposed_16s8u_P2C2R(s.data(), nullptr, o8.data(), 0, 1, 1); },
        [&] { return zaniDCT8x8Inv_AANTransposed_16s8u_P2C2R(s.data(), t.data(), nullptr, 0, 1, 1); },
        [&] { return zaniDCT8x8InvOrSet_16s8u_P2C2(nullptr, t.data(), o8.data(), 16, 3); },
        [&] { return zaniDCT8x8InvOrSet_16s8u_P2C2(s.data(), nullptr, o8.data(), 16, 3); },
        [&] { return zaniDCT8x8InvOrSet_16s8u_P2C2(s.data(), t.data(), nullptr, 16, 0); },
        [&] { return zaniDCT8x8Fwd_8u16s_C2P2(nullptr, 16, s.data(), t.data()); },
        [&] { return zaniDCT8x8Fwd_8u16s_C2P2(o8.data(), 16, nullptr, t.data()); },
        [&] { return zaniDCT8x8Fwd_8u16s_C2P2(o8.data(), 16, s.data(), nullptr); },
        [&] { return zaniDCT2x4x8Frw_16s_C1I(nullptr); },
        [&] { return zaniDCT2x4x8Inv_16s_C1I(nullptr); },
        [&] { return zaniDCT8x4x2To4x4Inv_DV_16s_C1I(nullptr); },
        [&] { return zaniScanFwd_16s_C1(nullptr, t.data(), 0, 0); },
        [&] { return zaniScanFwd_16s_C1(s.data(), nullptr, 65, 0); },
        [&] { return zaniScanInv_16s_C1(nullptr, t.data(), -1, 0); },
        [&] { return zaniScanInv_16s_C1(s.data(), nullptr, 64, 0); },
    };
    for (size_t i = 0; i < calls.size(); ++i) EXPECT_EQ(calls[i](), zanStsNullPtr) << "call " << i;
    for (Zan16s v : o16.px) ASSERT_EQ(v, 0x5555);
    for (Zan8u v : o8.px) ASSERT_EQ(v, 0x55);
    for (Zan16s v : t) ASSERT_EQ(v, 0);
}

TEST(Dct, StepBelowOneAndRangesFailWithNothingWritten) {
    alignas(16) Block s = dc(800), t = dc(800);
    Out16 o16;
    Out8 o8;
    for (Zan32s step : {0, -1, -32}) {
        EXPECT_EQ(zaniDCT8x8Inv_AANTransposed_16s_C1R(s.data(), o16.data(), step, 64), zanStsStepBad);
        EXPECT_EQ(zaniDCT8x8Inv_AANTransposed_16s8u_C1R(s.data(), o8.data(), step, 0), zanStsStepBad);
        EXPECT_EQ(zaniDCT8x8Inv_AANTransposed_16s_P2C2R(s.data(), t.data(), o16.data(), step, 0, 0), zanStsStepBad);
        EXPECT_EQ(zaniDCT8x8Inv_AANTransposed_16s8u_P2C2R(s.data(), t.data(), o8.data(), step, -1, 5), zanStsStepBad);
    }
    for (Zan16s v : o16.px) ASSERT_EQ(v, 0x5555);
    for (Zan8u v : o8.px) ASSERT_EQ(v, 0x55);

    Block out;
    out.fill(77);
    for (Zan32s n : {0, -1, 65, 1000}) EXPECT_EQ(zaniScanFwd_16s_C1(s.data(), out.data(), n, 0), zanStsOutOfRange);
    for (Zan32s n : {-1, 64, -100}) EXPECT_EQ(zaniScanInv_16s_C1(s.data(), out.data(), n, 0), zanStsOutOfRange);
    for (Zan16s v : out) ASSERT_EQ(v, 77);
    // The edges of the ranges are accepted.
    EXPECT_EQ(zaniScanFwd_16s_C1(s.data(), out.data(), 1, 0), zanStsOk);
    EXPECT_EQ(zaniScanFwd_16s_C1(s.data(), out.data(), 64, 0), zanStsOk);
    EXPECT_EQ(zaniScanInv_16s_C1(s.data(), out.data(), 0, 0), zanStsOk);
    EXPECT_EQ(zaniScanInv_16s_C1(s.data(), out.data(), 63, 0), zanStsOk);
}

// count 0: DC / 8 truncated toward zero, saturated; the AC coefficients are
// not looked at.
TEST(Dct, DcShortcutTruncatesAndSaturates) {
    struct Case {
        Zan16s dc;
        Zan16s want16, want8;
    } cases[] = {{-9, -1, 0}, {-7, 0, 0}, {15, 1, 1}, {2040, 255, 255}, {4000, 255, 255}, {-4000, -256, 0}, {-2055, -256, 0}};
    for (const auto& c : cases) {
        alignas(16) Block s = dc(c.dc);
        s[9] = 1000;  // ignored
        Out16 o16;
        Out8 o8;
        ASSERT_EQ(zaniDCT8x8Inv_AANTransposed_16s_C1R(s.data(), o16.data(), Out16::kStep, 0), zanStsOk);
        ASSERT_EQ(zaniDCT8x8Inv_AANTransposed_16s8u_C1R(s.data(), o8.data(), Out8::kStep, 0), zanStsOk);
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 8; ++x) {
                ASSERT_EQ(o16.at(x, y), c.want16) << "DC " << c.dc;
                ASSERT_EQ(o8.at(x, y), c.want8) << "DC " << c.dc;
            }
        // Only the 8x8 block is written.
        EXPECT_EQ(o16.at(8, 0), 0x5555);
        EXPECT_EQ(o8.at(8, 7), 0x55);
    }
}

TEST(Dct, NegativeCountClearsOrActsAsDc) {
    alignas(16) Block s = dc(80);
    s[3] = 300;
    Out16 o16;
    Out8 o8;
    ASSERT_EQ(zaniDCT8x8Inv_AANTransposed_16s_C1R(s.data(), o16.data(), Out16::kStep, -1), zanStsOk);
    ASSERT_EQ(zaniDCT8x8Inv_AANTransposed_16s8u_C1R(s.data(), o8.data(), Out8::kStep, -5), zanStsOk);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            EXPECT_EQ(o16.at(x, y), 0);
            EXPECT_EQ(o8.at(x, y), 10);  // 80 / 8
        }
}

// The full transform of a DC-only block, by hand: pass 1 gives
// (2 * 2 * DC * 46340 + 0x8000) >> 16, pass 2 (t * 46340 + 0xA0000) >> 20.
// DC 80: t = 226, 226 * 46340 + 0xA0000 = 11128200 -> 10.
// DC 83: t = 235, 235 * 46340 + 0xA0000 = 11545260 -> 11, where the exact
// value is 10.375: the 0x28000 rounding carries it up; the shortcut gives 10.
// DC -83: t = -235 -> -10234540 >> 20 = -10.
TEST(Dct, FullTransformOfDcOnlyShowsTheRounding) {
    struct Case {
        Zan16s dc;
        Zan16s full, shortcut;
    } cases[] = {{80, 10, 10}, {83, 11, 10}, {-83, -10, -10}};
    for (const auto& c : cases)
        for (Zan32s count : {1, 9, 10, 64}) {
            alignas(16) Block s = dc(c.dc);
            Out16 o;
            ASSERT_EQ(zaniDCT8x8Inv_AANTransposed_16s_C1R(s.data(), o.data(), Out16::kStep, count), zanStsOk);
            for (int i = 0; i < 64; ++i) ASSERT_EQ(o.at(i % 8, i / 8), c.full) << "DC " << c.dc << " count " << count;
            Out16 d;
            ASSERT_EQ(zaniDCT8x8Inv_AANTransposed_16s_C1R(s.data(), d.data(), Out16::kStep, 0), zanStsOk);
            EXPECT_EQ(d.at(3, 3), c.shortcut);
        }
}

// pSrc[8 * u + v]: pSrc[1] is a vertical frequency (rows differ, each row
// flat), pSrc[8] a horizontal one.
TEST(Dct, TransposedLayout) {
    for (int pos : {1, 8}) {
        alignas(16) Block s = dc(512);
        s[static_cast<size_t>(pos)] = 200;
        Out16 o;
        ASSERT_EQ(zaniDCT8x8Inv_AANTransposed_16s_C1R(s.data(), o.data(), Out16::kStep, 10), zanStsOk);
        for (int i = 0; i < 8; ++i)
            for (int j = 1; j < 8; ++j) {
                if (pos == 1) ASSERT_EQ(o.at(j, i), o.at(0, i)) << "row " << i;
                else ASSERT_EQ(o.at(i, j), o.at(i, 0)) << "column " << i;
            }
        // 64 + 200 c(0) cos(pi/16) / 4 = 64 + 34.68 at the first row or
        // column, 64 - 34.68 at the last.
        Zan16s last = pos == 1 ? o.at(0, 7) : o.at(7, 0);
        EXPECT_NEAR(o.at(0, 0), 64 + 34.68, 1.0);
        EXPECT_NEAR(last, 64 - 34.68, 1.0);
    }
}

TEST(Dct, CountUpToNineIgnoresCoefficientsOutsideTheCorner) {
    alignas(16) Block s{};
    s[0] = 400;
    s[1] = -120;
    s[8 + 2] = 60;
    s[3 * 8 + 3] = -30;
    alignas(16) Block t = s;
    t[4] = 500;       // u = 0, v = 4
    t[5 * 8 + 1] = -90;  // u = 5
    Out16 a, b, c;
    ASSERT_EQ(zaniDCT8x8Inv_AANTransposed_16s_C1R(s.data(), a.data(), Out16::kStep, 9), zanStsOk);
    ASSERT_EQ(zaniDCT8x8Inv_AANTransposed_16s_C1R(t.data(), b.data(), Out16::kStep, 9), zanStsOk);
    EXPECT_EQ(a.px, b.px);
    ASSERT_EQ(zaniDCT8x8Inv_AANTransposed_16s_C1R(t.data(), c.data(), Out16::kStep, 10), zanStsOk);
    EXPECT_NE(a.px, c.px);
    // Within the corner, the short and the full path agree exactly.
    Out16 d;
    ASSERT_EQ(zaniDCT8x8Inv_AANTransposed_16s_C1R(s.data(), d.data(), Out16::kStep, 64), zanStsOk);
    EXPECT_EQ(a.px, d.px);
}

// Each plane has its own count; U at even samples, V at odd.
TEST(Dct, InterleavedFormsTakeACountPerPlane) {
    alignas(16) Block u = dc(80), v = dc(16);
    v[1] = 999;  // ignored at count 0 and below
    Out16 o16;
    ASSERT_EQ(zaniDCT8x8Inv_AANTransposed_16s_P2C2R(u.data(), v.data(), o16.data(), Out16::kStep, 0, -1), zanStsOk);
    Out8 o8;
    ASSERT_EQ(zaniDCT8x8Inv_AANTransposed_16s8u_P2C2R(u.data(), v.data(), o8.data(), Out8::kStep, 64, -1), zanStsOk);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            EXPECT_EQ(o16.at(2 * x, y), 10);
            EXPECT_EQ(o16.at(2 * x + 1, y), 0);  // count below 0: zero
            EXPECT_EQ(o8.at(2 * x, y), 10);
            EXPECT_EQ(o8.at(2 * x + 1, y), 2);  // count below 0 acts as 0: 16 / 8
        }
    // Saturation per form: DC 2047 full transform is 256 before saturation.
    alignas(16) Block big = dc(2047), neg = dc(-2048);
    ASSERT_EQ(zaniDCT8x8Inv_AANTransposed_16s_P2C2R(big.data(), neg.data(), o16.data(), Out16::kStep, 64, 64), zanStsOk);
    ASSERT_EQ(zaniDCT8x8Inv_AANTransposed_16s8u_P2C2R(big.data(), neg.data(), o8.data(), Out8::kStep, 64, 64), zanStsOk);
    EXPECT_EQ(o16.at(0, 0), 255);
    EXPECT_EQ(o16.at(1, 0), -256);
    EXPECT_EQ(o8.at(0, 0), 255);
    EXPECT_EQ(o8.at(1, 0), 0);
}

// A DC-only plane is (DC >> 3) & 255 with no saturation; bit 1 of the flag
// is the first plane, bit 0 the second, other bits do not count.
TEST(Dct, InverseOrSetWrapsTheFill) {
    alignas(16) Block u = dc(2056), v = dc(-8);
    for (Zan32s flag : {3, 7, -1}) {
        Out8 o;
        ASSERT_EQ(zaniDCT8x8InvOrSet_16s8u_P2C2(u.data(), v.data(), o.data(), Out8::kStep, flag), zanStsOk);
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 8; ++x) {
                ASSERT_EQ(o.at(2 * x, y), 1) << "flag " << flag;     // 257 & 255
                ASSERT_EQ(o.at(2 * x + 1, y), 255) << "flag " << flag;  // -1 & 255
            }
    }
    // Flag 1: the first plane is transformed (saturating: 2056 / 8 = 257 ->
    // 255), the second filled (80 >> 3).  Flag 2 the other way round, the
    // planes swapped.  Flag 4: both transformed.
    alignas(16) Block w = dc(80);
    Out8 a, b, c;
    ASSERT_EQ(zaniDCT8x8InvOrSet_16s8u_P2C2(u.data(), w.data(), a.data(), Out8::kStep, 1), zanStsOk);
    ASSERT_EQ(zaniDCT8x8InvOrSet_16s8u_P2C2(w.data(), u.data(), b.data(), Out8::kStep, 2), zanStsOk);
    ASSERT_EQ(zaniDCT8x8InvOrSet_16s8u_P2C2(u.data(), w.data(), c.data(), Out8::kStep, 4), zanStsOk);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            EXPECT_EQ(a.at(2 * x, y), 255);
            EXPECT_EQ(a.at(2 * x + 1, y), 10);
            EXPECT_EQ(b.at(2 * x, y), 10);
            EXPECT_EQ(b.at(2 * x + 1, y), 255);
            EXPECT_EQ(c.at(2 * x, y), 255);
            EXPECT_EQ(c.at(2 * x + 1, y), 10);
        }
}

// The plain inverse in the inverse-or-set form takes normal layout: pSrc[1]
// is a horizontal frequency.
TEST(Dct, InverseOrSetTransformsNormalLayout) {
    alignas(16) Block u = dc(1024), v = dc(1024);
    u[1] = 200;
    Out8 o;
    ASSERT_EQ(zaniDCT8x8InvOrSet_16s8u_P2C2(u.data(), v.data(), o.data(), Out8::kStep, 0), zanStsOk);
    for (int y = 1; y < 8; ++y)
        for (int x = 0; x < 8; ++x) ASSERT_EQ(o.at(2 * x, y), o.at(2 * x, 0));
    EXPECT_NEAR(o.at(0, 0), 128 + 34.68, 0.6);
    EXPECT_NEAR(o.at(14, 0), 128 - 34.68, 0.6);
    EXPECT_EQ(o.at(1, 5), 128);
}

TEST(Dct, ForwardSplitsInterleavedSamples) {
    Out8 px;
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            px.px[static_cast<size_t>(16 * y + 2 * x)] = 100;
            px.px[static_cast<size_t>(16 * y + 2 * x + 1)] = static_cast<Zan8u>(y < 4 ? 80 : 20);
        }
    alignas(16) Block u, v;
    ASSERT_EQ(zaniDCT8x8Fwd_8u16s_C2P2(px.data(), Out8::kStep, u.data(), v.data()), zanStsOk);
    EXPECT_EQ(u[0], 800);
    for (int i = 1; i < 64; ++i) EXPECT_EQ(u[static_cast<size_t>(i)], 0) << i;
    // V: mean 50 (DC 400), a vertical step: only v odd, u = 0 terms.
    EXPECT_EQ(v[0], 400);
    EXPECT_EQ(v[1], 0);
    // v = 1, u = 0: c(0) / 4 * 8 * 30 * 2 * (cos(pi/16) + cos(3pi/16) + cos(5pi/16) + cos(7pi/16)) = 217.48.
    EXPECT_NEAR(v[8], 217.48, 0.6);
    for (int i = 1; i < 8; ++i) EXPECT_EQ(v[static_cast<size_t>(i)], 0);
}

TEST(Dct, DvTransformsOfFlatAndFieldBlocks) {
    alignas(16) Block b;
    b.fill(100);
    ASSERT_EQ(zaniDCT2x4x8Frw_16s_C1I(b.data()), zanStsOk);
    EXPECT_EQ(b[0], 800);
    for (int i = 1; i < 64; ++i) EXPECT_EQ(b[static_cast<size_t>(i)], 0) << i;
    ASSERT_EQ(zaniDCT2x4x8Inv_16s_C1I(b.data()), zanStsOk);
    for (Zan16s x : b) EXPECT_EQ(x, 100);

    // Even lines 100, odd lines -100: the fields differ by a constant, which
    // is the first coefficient of the difference rows: 8 * 100.
    for (int i = 0; i < 64; ++i) b[static_cast<size_t>(i)] = static_cast<Zan16s>((i / 8) % 2 ? -100 : 100);
    ASSERT_EQ(zaniDCT2x4x8Frw_16s_C1I(b.data()), zanStsOk);
    for (int i = 0; i < 64; ++i) EXPECT_EQ(b[static_cast<size_t>(i)], i == 32 ? 800 : 0) << i;
    ASSERT_EQ(zaniDCT2x4x8Inv_16s_C1I(b.data()), zanStsOk);
    for (int i = 0; i < 64; ++i) EXPECT_EQ(b[static_cast<size_t>(i)], (i / 8) % 2 ? -100 : 100) << i;

    // To 4x4: the field difference cancels in the 2x2 means; 16 samples
    // packed at the start, the rest untouched.
    for (int i = 0; i < 64; ++i) b[static_cast<size_t>(i)] = static_cast<Zan16s>(i == 0 ? 800 : i == 32 ? 800 : 7);
    for (int i = 1; i < 32; ++i) b[static_cast<size_t>(i)] = 0;
    Block before = b;
    ASSERT_EQ(zaniDCT8x4x2To4x4Inv_DV_16s_C1I(b.data()), zanStsOk);
    for (int i = 0; i < 16; ++i) EXPECT_EQ(b[static_cast<size_t>(i)], 100) << i;
    for (int i = 16; i < 64; ++i) EXPECT_EQ(b[static_cast<size_t>(i)], before[static_cast<size_t>(i)]) << i;
}

// ------------------------------------------------------------------ scans

// Scan index of each raster position, row by row.
// ISO/IEC 13818-2 Figure 7-2, the zigzag scan.
constexpr int kZigzag[64] = {0,  1,  5,  6,  14, 15, 27, 28,  //
                             2,  4,  7,  13, 16, 26, 29, 42,  //
                             3,  8,  12, 17, 25, 30, 41, 43,  //
                             9,  11, 18, 24, 31, 40, 44, 53,  //
                             10, 19, 23, 32, 39, 45, 52, 54,  //
                             20, 22, 33, 38, 46, 51, 55, 60,  //
                             21, 34, 37, 47, 50, 56, 59, 61,  //
                             35, 36, 48, 49, 57, 58, 62, 63};
// ISO/IEC 13818-2 Figure 7-3, the alternate scan (alternate vertical).
constexpr int kAlternate[64] = {0,  4,  6,  20, 22, 36, 38, 52,  //
                                1,  5,  7,  21, 23, 37, 39, 53,  //
                                2,  8,  19, 24, 34, 40, 50, 54,  //
                                3,  9,  18, 25, 35, 41, 51, 55,  //
                                10, 17, 26, 30, 42, 46, 56, 60,  //
                                11, 16, 27, 31, 43, 47, 57, 61,  //
                                12, 15, 28, 32, 44, 48, 58, 62,  //
                                13, 14, 29, 33, 45, 49, 59, 63};
// ISO/IEC 14496-2, the alternate horizontal scan.
constexpr int kAlternateH[64] = {0,  1,  2,  3,  10, 11, 12, 13,  //
                                 4,  5,  8,  9,  17, 16, 15, 14,  //
                                 6,  7,  19, 18, 26, 27, 28, 29,  //
                                 20, 21, 24, 25, 30, 31, 32, 33,  //
                                 22, 23, 34, 35, 42, 43, 44, 45,  //
                                 36, 37, 40, 41, 46, 47, 48, 49,  //
                                 38, 39, 50, 51, 56, 57, 58, 59,  //
                                 52, 53, 54, 55, 60, 61, 62, 63};

TEST(Dct, ScanOrdersMatchTheStandardFigures) {
    struct Case {
        Zan32s scan;
        const int* order;
    } cases[] = {{0, kZigzag}, {-1, kZigzag}, {3, kZigzag}, {0x101, kZigzag}, {1, kAlternate}, {2, kAlternateH}};
    for (const auto& c : cases) {
        Block raster, scanned;
        for (int p = 0; p < 64; ++p) raster[static_cast<size_t>(p)] = static_cast<Zan16s>(c.order[p] + 1);
        ASSERT_EQ(zaniScanFwd_16s_C1(raster.data(), scanned.data(), 64, c.scan), zanStsOk);
        for (int k = 0; k < 64; ++k) ASSERT_EQ(scanned[static_cast<size_t>(k)], k + 1) << "scan " << c.scan << " k " << k;
        Block back;
        back.fill(-1);
        ASSERT_EQ(zaniScanInv_16s_C1(scanned.data(), back.data(), 63, c.scan), zanStsOk);
        EXPECT_EQ(back, raster) << "scan " << c.scan;
    }
}

// With fewer than 20 non-zero values claimed, the first countNonZero in scan
// order are kept and the rest dropped; from 20 up everything is copied.
TEST(Dct, SparseForwardScanKeepsTheFirstValues) {
    Block raster{};
    // 30 non-zero values at every other zigzag position 0, 2, ..., 58.
    for (int p = 0; p < 64; ++p)
        if (kZigzag[p] % 2 == 0 && kZigzag[p] < 60) raster[static_cast<size_t>(p)] = static_cast<Zan16s>(kZigzag[p] + 1);
    Block out19, out20;
    out19.fill(9);
    out20.fill(9);
    ASSERT_EQ(zaniScanFwd_16s_C1(raster.data(), out19.data(), 19, 0), zanStsOk);
    ASSERT_EQ(zaniScanFwd_16s_C1(raster.data(), out20.data(), 20, 0), zanStsOk);
    for (int k = 0; k < 64; ++k) {
        Zan16s all = k % 2 == 0 && k < 60 ? static_cast<Zan16s>(k + 1) : 0;
        EXPECT_EQ(out20[static_cast<size_t>(k)], all) << k;
        EXPECT_EQ(out19[static_cast<size_t>(k)], k <= 36 ? all : 0) << k;  // the 19th value is at k = 36
    }
    // A claim above the real number keeps them all.
    Block few{}, out;
    few[63] = 5;
    few[0] = -3;
    ASSERT_EQ(zaniScanFwd_16s_C1(few.data(), out.data(), 7, 2), zanStsOk);
    EXPECT_EQ(out[0], -3);
    EXPECT_EQ(out[63], 5);
}

TEST(Dct, InverseScanStopsAtLastIndex) {
    Block s;
    for (int k = 0; k < 64; ++k) s[static_cast<size_t>(k)] = static_cast<Zan16s>(100 + k);
    Block out;
    out.fill(-9);
    ASSERT_EQ(zaniScanInv_16s_C1(s.data(), out.data(), 0, 0), zanStsOk);
    EXPECT_EQ(out[0], 100);
    for (int p = 1; p < 64; ++p) EXPECT_EQ(out[static_cast<size_t>(p)], 0);
    ASSERT_EQ(zaniScanInv_16s_C1(s.data(), out.data(), 5, 1), zanStsOk);
    for (int p = 0; p < 64; ++p)
        EXPECT_EQ(out[static_cast<size_t>(p)], kAlternate[p] <= 5 ? 100 + kAlternate[p] : 0) << p;
    // In place the block is cleared before the other values are read: only
    // the DC survives.
    ASSERT_EQ(zaniScanInv_16s_C1(s.data(), s.data(), 63, 0), zanStsOk);
    EXPECT_EQ(s[0], 100);
    for (int p = 1; p < 64; ++p) EXPECT_EQ(s[static_cast<size_t>(p)], 0);
}

}  // namespace
