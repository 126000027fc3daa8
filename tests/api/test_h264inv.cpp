// H.264 inverse transforms and dequantisation through the exported
// functions: statuses in their documented order, outputs untouched on
// failure, the AC word's bit rule, and known answers worked out by hand
// (DC-only blocks, quantiser boundaries, wrap-around and saturation of the
// 16-bit stages, clipping at 0, 255 and the high bit depth maximum).
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <functional>
#include <vector>

#include "zanvc.h"

namespace {

template <class T, size_t N>
std::array<T, N> filled(T v) {
    std::array<T, N> a;
    a.fill(v);
    return a;
}

// ------------------------------------------------------------- statuses

TEST(H264Inv, NullPointersComeFirst) {
    auto c16 = filled<Zan16s, 64>(7);
    auto c32 = filled<Zan32s, 64>(7);
    auto p8 = filled<Zan8u, 64>(9);
    auto p16 = filled<Zan16u, 64>(9);
    Zan16s dc16 = 1;
    Zan32s dc32 = 1;
    const auto scale = filled<Zan16s, 64>(16);
    // Every pointer in turn, with the other arguments also wrong where they are checked.
    const std::vector<std::function<ZanStatus()>> calls = {
        [&] { return zaniDequantTransformResidualAndAdd_H264_16s_C1I(nullptr, c16.data(), &dc16, p8.data(), 4, 4, 99, 1); },
        [&] { return zaniDequantTransformResidualAndAdd_H264_16s_C1I(p8.data(), c16.data(), &dc16, nullptr, 4, 4, -1, 1); },
        [&] { return zaniDequantTransformResidual_H264_16s_C1I(nullptr, 0, &dc16, 1, 99); },
        [&] { return zaniDequantTransformResidual_SISP_H264_16s_C1I(nullptr, c16.data(), &dc16, 1, 1, 1, 0); },
        [&] { return zaniDequantTransformResidual_SISP_H264_16s_C1I(c16.data(), nullptr, &dc16, 1, 1, 1, 0); },
        [&] { return zaniTransformDequantLumaDC_H264_16s_C1I(nullptr, 99); },
        [&] { return zaniTransformDequantChromaDC_H264_16s_C1I(nullptr, -5); },
        [&] { return zaniTransformDequantChromaDC_SISP_H264_16s_C1I(nullptr, c16.data(), 1, 1, 0); },
        [&] { return zaniTransformDequantChromaDC_SISP_H264_16s_C1I(c16.data(), nullptr, 1, 1, 0); },
        [&] { return zaniTransformQuantInvLumaDC4x4_H264_16s_C1I(nullptr, 52, scale.data()); },
        [&] { return zaniTransformQuantInvLumaDC4x4_H264_32s_C1I(nullptr, 88, nullptr); },
        [&] { return zaniTransformQuantInvChromaDC2x2_H264_16s_C1I(nullptr, 40, nullptr); },
        [&] { return zaniTransformQuantInvChromaDC2x2_H264_32s_C1I(nullptr, 76, nullptr); },
        [&] { return zaniTransformQuantInvChromaDC2x4_H264_16s_C1I(nullptr, 40, nullptr); },
        [&] { return zaniTransformQuantInvChromaDC2x4_H264_32s_C1I(nullptr, 76, nullptr); },
        [&] { return zaniTransformQuantInvAddPred4x4_H264_16s_C1IR(nullptr, 4, c16.data(), &dc16, p8.data(), 4, 52, 1, nullptr); },
        [&] { return zaniTransformQuantInvAddPred4x4_H264_16s_C1IR(p8.data(), 4, nullptr, &dc16, p8.data(), 4, 52, 0, nullptr); },
        [&] { return zaniTransformQuantInvAddPred4x4_H264_16s_C1IR(p8.data(), 4, c16.data(), &dc16, nullptr, 4, 52, 1, nullptr); },
        [&] { return zaniTransformQuantInvAddPred4x4_H264_32s_C1IR(nullptr, 8, c32.data(), &dc32, p16.data(), 8, 88, 1, 8, nullptr); },
        [&] { return zaniTransformQuantInvAddPred4x4_H264_32s_C1IR(p16.data(), 8, nullptr, &dc32, p16.data(), 8, 88, 0, 15, nullptr); },
        [&] { return zaniTransformQuantInvAddPred4x4_H264_32s_C1IR(p16.data(), 8, c32.data(), &dc32, nullptr, 8, 1, 1, 8, nullptr); },
        [&] { return zaniTransformResidual4x4Inv_H264_16s_C1(nullptr, c16.data()); },
        [&] { return zaniTransformResidual4x4Inv_H264_16s_C1(c16.data(), nullptr); },
        [&] { return zaniTransformResidual4x4Inv_H264_32s_C1(nullptr, c32.data()); },
        [&] { return zaniTransformResidual4x4Inv_H264_32s_C1(c32.data(), nullptr); },
        [&] { return zaniQuantLuma8x8Inv_H264_16s_C1I(nullptr, 9, scale.data()); },
        [&] { return zaniQuantLuma8x8Inv_H264_16s_C1I(c16.data(), 9, nullptr); },
        [&] { return zaniQuantInvLuma8x8_H264_32s_C1I(nullptr, 15, scale.data()); },
        [&] { return zaniQuantInvLuma8x8_H264_32s_C1I(c32.data(), -1, nullptr); },
        [&] { return zaniTransformLuma8x8InvAddPred_H264_16s8u_C1R(nullptr, 8, c16.data(), p8.data(), 8); },
        [&] { return zaniTransformLuma8x8InvAddPred_H264_16s8u_C1R(p8.data(), 8, nullptr, p8.data(), 8); },
        [&] { return zaniTransformLuma8x8InvAddPred_H264_16s8u_C1R(p8.data(), 8, c16.data(), nullptr, 8); },
        [&] { return zaniTransformInvAddPredLuma8x8_H264_32s16u_C1R(nullptr, 16, c32.data(), p16.data(), 16, 10); },
        [&] { return zaniTransformInvAddPredLuma8x8_H264_32s16u_C1R(p16.data(), 16, nullptr, p16.data(), 16, 10); },
        [&] { return zaniTransformInvAddPredLuma8x8_H264_32s16u_C1R(p16.data(), 16, c32.data(), nullptr, 16, 10); },
    };
    for (size_t i = 0; i < calls.size(); ++i) EXPECT_EQ(calls[i](), zanStsNullPtr) << "call " << i;
    for (auto v : c16) EXPECT_EQ(v, 7);
    for (auto v : c32) EXPECT_EQ(v, 7);
    for (auto v : p8) EXPECT_EQ(v, 9);
    for (auto v : p16) EXPECT_EQ(v, 9);
}

TEST(H264Inv, QuantiserRangesAndTheirBoundaries) {
    auto c16 = filled<Zan16s, 16>(3);
    auto c32 = filled<Zan32s, 16>(3);
    auto p8 = filled<Zan8u, 16>(100);
    auto p16 = filled<Zan16u, 16>(100);
    // (function, largest valid QP); each must accept 0 and max, refuse max + 1
    // and -1 with -11 and leave its block alone when refusing.
    struct Case {
        const char* name;
        Zan32s max;
        std::function<ZanStatus(Zan32s)> call;
    };
    const std::vector<Case> cases = {
        {"ResidualAndAdd", 51, [&](Zan32s qp) { return zaniDequantTransformResidualAndAdd_H264_16s_C1I(p8.data(), c16.data(), nullptr, p8.data(), 4, 4, qp, 1); }},
        {"Residual", 51, [&](Zan32s qp) { return zaniDequantTransformResidual_H264_16s_C1I(c16.data(), 8, nullptr, 1, qp); }},
        {"LumaDC", 51, [&](Zan32s qp) { return zaniTransformDequantLumaDC_H264_16s_C1I(c16.data(), qp); }},
        {"ChromaDC", 51, [&](Zan32s qp) { return zaniTransformDequantChromaDC_H264_16s_C1I(c16.data(), qp); }},
        {"LumaDC4x4_16s", 51, [&](Zan32s qp) { return zaniTransformQuantInvLumaDC4x4_H264_16s_C1I(c16.data(), qp, nullptr); }},
        {"LumaDC4x4_32s", 87, [&](Zan32s qp) { return zaniTransformQuantInvLumaDC4x4_H264_32s_C1I(c32.data(), qp, nullptr); }},
        {"ChromaDC2x2_16s", 39, [&](Zan32s qp) { return zaniTransformQuantInvChromaDC2x2_H264_16s_C1I(c16.data(), qp, nullptr); }},
        {"ChromaDC2x2_32s", 75, [&](Zan32s qp) { return zaniTransformQuantInvChromaDC2x2_H264_32s_C1I(c32.data(), qp, nullptr); }},
        {"ChromaDC2x4_16s", 39, [&](Zan32s qp) { return zaniTransformQuantInvChromaDC2x4_H264_16s_C1I(c16.data(), qp, nullptr); }},
        {"ChromaDC2x4_32s", 75, [&](Zan32s qp) { return zaniTransformQuantInvChromaDC2x4_H264_32s_C1I(c32.data(), qp, nullptr); }},
        {"AddPred4x4_16s", 51, [&](Zan32s qp) { return zaniTransformQuantInvAddPred4x4_H264_16s_C1IR(p8.data(), 4, c16.data(), nullptr, p8.data(), 4, qp, 1, nullptr); }},
        {"AddPred4x4_32s", 87, [&](Zan32s qp) { return zaniTransformQuantInvAddPred4x4_H264_32s_C1IR(p16.data(), 8, c32.data(), nullptr, p16.data(), 8, qp, 1, 10, nullptr); }},
    };
    for (const Case& c : cases) {
        for (Zan32s bad : {c.max + 1, -1, Zan32s{-2147483647 - 1}}) {
            auto s16 = c16;
            auto s32 = c32;
            auto s8 = p8;
            auto sp = p16;
            EXPECT_EQ(c.call(bad), zanStsOutOfRange) << c.name << " QP " << bad;
            EXPECT_EQ(c16, s16) << c.name;
            EXPECT_EQ(c32, s32) << c.name;
            EXPECT_EQ(p8, s8) << c.name;
            EXPECT_EQ(p16, sp) << c.name;
        }
        for (Zan32s good : {Zan32s{0}, c.max}) {
            c16.fill(3);
            c32.fill(3);
            EXPECT_EQ(c.call(good), zanStsOk) << c.name << " QP " << good;
        }
    }
}

TEST(H264Inv, StepBitDepthAndQp6Checks) {
    auto c16 = filled<Zan16s, 64>(5);
    const auto before = c16;
    // The flat residual: QP is checked before the step; step 7 fails alone.
    EXPECT_EQ(zaniDequantTransformResidual_H264_16s_C1I(c16.data(), 7, nullptr, 1, 60), zanStsOutOfRange);
    EXPECT_EQ(zaniDequantTransformResidual_H264_16s_C1I(c16.data(), 7, nullptr, 1, 20), zanStsStepBad);
    EXPECT_EQ(zaniDequantTransformResidual_H264_16s_C1I(c16.data(), -8, nullptr, 1, 20), zanStsStepBad);
    EXPECT_EQ(c16, before);
    EXPECT_EQ(zaniDequantTransformResidual_H264_16s_C1I(c16.data(), 8, nullptr, 1, 20), zanStsOk);

    // The high bit depth 4x4: bitDepth 9..14 only.
    auto c32 = filled<Zan32s, 16>(5);
    auto p16 = filled<Zan16u, 16>(100);
    const auto c32b = c32;
    const auto p16b = p16;
    for (Zan32s bits : {8, 15, -1, 0})
        EXPECT_EQ(zaniTransformQuantInvAddPred4x4_H264_32s_C1IR(p16.data(), 8, c32.data(), nullptr, p16.data(), 8, 10, 1,
                                                                bits, nullptr),
                  zanStsOutOfRange)
            << bits;
    EXPECT_EQ(c32, c32b);
    EXPECT_EQ(p16, p16b);
    for (Zan32s bits : {9, 14})
        EXPECT_EQ(zaniTransformQuantInvAddPred4x4_H264_32s_C1IR(p16.data(), 8, c32.data(), nullptr, p16.data(), 8, 10, 1,
                                                                bits, nullptr),
                  zanStsOk);

    // 8x8 dequantisation: Qp6 0..8 (16s), 0..14 (32s), zanStsQpBad outside.
    auto scale = filled<Zan16s, 64>(16);
    auto d16 = filled<Zan16s, 64>(1);
    auto d32 = filled<Zan32s, 64>(1);
    EXPECT_EQ(zaniQuantLuma8x8Inv_H264_16s_C1I(d16.data(), 9, scale.data()), zanStsQpBad);
    EXPECT_EQ(zaniQuantLuma8x8Inv_H264_16s_C1I(d16.data(), -1, scale.data()), zanStsQpBad);
    EXPECT_EQ(zaniQuantInvLuma8x8_H264_32s_C1I(d32.data(), 15, scale.data()), zanStsQpBad);
    EXPECT_EQ(zaniQuantInvLuma8x8_H264_32s_C1I(d32.data(), -1, scale.data()), zanStsQpBad);
    for (auto v : d16) EXPECT_EQ(v, 1);
    for (auto v : d32) EXPECT_EQ(v, 1);
    EXPECT_EQ(zaniQuantLuma8x8Inv_H264_16s_C1I(d16.data(), 8, scale.data()), zanStsOk);
    EXPECT_EQ(zaniQuantInvLuma8x8_H264_32s_C1I(d32.data(), 14, scale.data()), zanStsOk);
}

// The flat add form checks pSrcDst only after QP, and only when it will read it.
TEST(H264Inv, FlatAddNeedsCoefficientsOnlyWhenItReadsThem) {
    auto pred = filled<Zan8u, 16>(100);
    auto dst = filled<Zan8u, 16>(0);
    Zan16s dc = 640;  // residual (640 + 32) >> 6 = 10
    EXPECT_EQ(zaniDequantTransformResidualAndAdd_H264_16s_C1I(pred.data(), nullptr, &dc, dst.data(), 4, 4, 20, 0), zanStsOk);
    for (auto v : dst) EXPECT_EQ(v, 110);
    dst.fill(0);
    EXPECT_EQ(zaniDequantTransformResidualAndAdd_H264_16s_C1I(pred.data(), nullptr, &dc, dst.data(), 4, 4, 20, 1), zanStsNullPtr);
    EXPECT_EQ(zaniDequantTransformResidualAndAdd_H264_16s_C1I(pred.data(), nullptr, nullptr, dst.data(), 4, 4, 20, 0), zanStsNullPtr);
    EXPECT_EQ(zaniDequantTransformResidualAndAdd_H264_16s_C1I(pred.data(), nullptr, nullptr, dst.data(), 4, 4, 52, 0), zanStsOutOfRange);
    for (auto v : dst) EXPECT_EQ(v, 0);
}

// ---------------------------------------------------------- known answers

TEST(H264Inv, DcOnlyBlocksAndClipping) {
    // Flat: coefficient 5 at QP 28 (factor 16 << 4 = 256) gives DC 1280 and a
    // residual (1280 + 32) >> 6 = 20 everywhere, by the DC path (AC 0) and
    // through the transform (AC 1) alike.
    std::array<Zan8u, 16> pred = {100, 250, 5, 0, 100, 250, 5, 0, 100, 250, 5, 0, 100, 250, 5, 0};
    for (Zan32s ac : {0, 1}) {
        auto c = filled<Zan16s, 16>(0);
        c[0] = 5;
        std::array<Zan8u, 16> dst{};
        ASSERT_EQ(zaniDequantTransformResidualAndAdd_H264_16s_C1I(pred.data(), c.data(), nullptr, dst.data(), 4, 4, 28, ac), zanStsOk);
        for (int y = 0; y < 4; ++y) {
            EXPECT_EQ(dst[4 * y + 0], 120);
            EXPECT_EQ(dst[4 * y + 1], 255);  // 270 clipped
            EXPECT_EQ(dst[4 * y + 2], 25);
            EXPECT_EQ(dst[4 * y + 3], 20);
        }
        if (ac) {
            for (auto v : c) EXPECT_EQ(v, 20);  // residuals stored back
        } else {
            EXPECT_EQ(c[0], 5);  // not written
        }
    }
    // A negative DC clips at 0.
    Zan16s dc = -64 * 30;
    std::array<Zan8u, 16> dst{};
    ASSERT_EQ(zaniDequantTransformResidualAndAdd_H264_16s_C1I(pred.data(), nullptr, &dc, dst.data(), 4, 4, 0, 0), zanStsOk);
    EXPECT_EQ(dst[0], 70);
    EXPECT_EQ(dst[2], 0);
    EXPECT_EQ(dst[3], 0);

    // Level-scale 8-bit form at QP 0 (q 0: (p + 8) >> 4) with the default
    // scale 160: coefficient 4 gives 40, residual (40 + 32) >> 6 = 1.
    auto c = filled<Zan16s, 16>(0);
    c[0] = 4;
    ASSERT_EQ(zaniTransformQuantInvAddPred4x4_H264_16s_C1IR(pred.data(), 4, c.data(), nullptr, dst.data(), 4, 0, 0, nullptr), zanStsOk);
    EXPECT_EQ(dst[0], 101);
    EXPECT_EQ(dst[1], 251);
    EXPECT_EQ(dst[3], 1);
    // QP 51 (q 8, shift left by 4): coefficient 1 with scale 16*14 = 224 gives
    // 3584, residual 56.
    c[0] = 1;
    ASSERT_EQ(zaniTransformQuantInvAddPred4x4_H264_16s_C1IR(pred.data(), 4, c.data(), nullptr, dst.data(), 4, 51, 0, nullptr), zanStsOk);
    EXPECT_EQ(dst[0], 156);
    EXPECT_EQ(dst[1], 255);

    // High bit depth: clip at (1 << bitDepth) - 1 and at 0.
    std::array<Zan16u, 16> p16 = {1020, 3, 500, 0, 1020, 3, 500, 0, 1020, 3, 500, 0, 1020, 3, 500, 0};
    std::array<Zan16u, 16> d16{};
    Zan32s dc32 = 640;  // residual 10
    auto c32 = filled<Zan32s, 16>(0);
    ASSERT_EQ(zaniTransformQuantInvAddPred4x4_H264_32s_C1IR(p16.data(), 8, c32.data(), &dc32, d16.data(), 8, 30, 0, 10, nullptr), zanStsOk);
    EXPECT_EQ(d16[0], 1023);
    EXPECT_EQ(d16[1], 13);
    EXPECT_EQ(d16[2], 510);
    dc32 = -640;
    ASSERT_EQ(zaniTransformQuantInvAddPred4x4_H264_32s_C1IR(p16.data(), 8, c32.data(), &dc32, d16.data(), 8, 30, 0, 14, nullptr), zanStsOk);
    EXPECT_EQ(d16[0], 1010);
    EXPECT_EQ(d16[1], 0);
}

// Only bit 0 of AC counts in the level-scale forms; the flat forms test the
// whole word.
TEST(H264Inv, AcWordBits) {
    auto pred = filled<Zan8u, 16>(100);
    std::array<Zan8u, 16> dst{};
    auto c = filled<Zan16s, 16>(0);
    c[0] = 4;   // DC 40 at QP 0: residual 1
    c[5] = 100; // an AC coefficient that AC 2 must ignore
    const auto before = c;
    ASSERT_EQ(zaniTransformQuantInvAddPred4x4_H264_16s_C1IR(pred.data(), 4, c.data(), nullptr, dst.data(), 4, 0, 2, nullptr), zanStsOk);
    for (auto v : dst) EXPECT_EQ(v, 101);
    EXPECT_EQ(c, before);
    // The flat form takes AC 2 as "AC present": the block goes through the
    // transform and the residuals are stored back.
    ASSERT_EQ(zaniDequantTransformResidualAndAdd_H264_16s_C1I(pred.data(), c.data(), nullptr, dst.data(), 4, 4, 0, 2), zanStsOk);
    EXPECT_NE(c, before);
}

// The 32 of the saturating transform enters the even terms before the last
// butterfly: with d[0] = 32767 and d[4] = -90 every column is
// (32767, -90, 0, 0); e0 = e1 = sat(32767 + 32) = 32767, e2 = -45, e3 = -90,
// so row 0 is (32767 - 90) >> 6 = 510 and the rest saturate to 511.
// Adding 32 after the butterfly would give 511 in row 0.
TEST(H264Inv, SaturatingTransformRoundsTheEvenTerms) {
    auto c = filled<Zan16s, 16>(0);
    c[0] = 32767;
    c[4] = -90;
    std::array<Zan16s, 16> out{};
    ASSERT_EQ(zaniTransformResidual4x4Inv_H264_16s_C1(c.data(), out.data()), zanStsOk);
    for (int x = 0; x < 4; ++x) {
        EXPECT_EQ(out[x], 510) << x;
        for (int y = 1; y < 4; ++y) EXPECT_EQ(out[4 * y + x], 511) << x << "," << y;
    }
    // A row sum past 32767 saturates: d0 = d2 = 32767 in row 0 gives
    // (511, 0, 0, 511) in every row, where exact arithmetic gives 1024.
    c.fill(0);
    c[0] = 32767;
    c[2] = 32767;
    ASSERT_EQ(zaniTransformResidual4x4Inv_H264_16s_C1(c.data(), out.data()), zanStsOk);
    for (int y = 0; y < 4; ++y) {
        EXPECT_EQ(out[4 * y], 511);
        EXPECT_EQ(out[4 * y + 1], 0);
        EXPECT_EQ(out[4 * y + 2], 0);
        EXPECT_EQ(out[4 * y + 3], 511);
    }
    // The 32-bit form wraps nowhere here and gives the exact 1024.
    std::array<Zan32s, 16> c32{}, o32{};
    c32[0] = 32767;
    c32[2] = 32767;
    ASSERT_EQ(zaniTransformResidual4x4Inv_H264_32s_C1(c32.data(), o32.data()), zanStsOk);
    EXPECT_EQ(o32[0], 1024);
    EXPECT_EQ(o32[5], 0);
    EXPECT_EQ(o32[15], 1024);
}

// The in-place flat residual wraps in 16 bits: DC 20000 and coefficient 2000
// at position 2 (times 10 at QP 0) make row 0's even sum 40000, which wraps
// to -25536; every row becomes (-399, 0, 0, -399).
TEST(H264Inv, FlatResidualWrapsAndUsesTheStep) {
    constexpr Zan32s kStep = 24;  // bytes: 12 samples a row
    std::array<Zan16s, 12 * 4> buf;
    buf.fill(77);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 4; ++x) buf[12 * y + x] = 0;
    buf[2] = 2000;
    buf[5] = 123;  // row 0, column 5: beside the block
    Zan16s dc = 20000;
    ASSERT_EQ(zaniDequantTransformResidual_H264_16s_C1I(buf.data(), kStep, &dc, 1, 0), zanStsOk);
    for (int y = 0; y < 4; ++y) {
        EXPECT_EQ(buf[12 * y], -399) << y;
        EXPECT_EQ(buf[12 * y + 1], 0);
        EXPECT_EQ(buf[12 * y + 2], 0);
        EXPECT_EQ(buf[12 * y + 3], -399);
        for (int x = 4; x < 12; ++x) {
            Zan16s want = (y == 0 && x == 5) ? 123 : 77;
            EXPECT_EQ(buf[12 * y + x], want) << x << "," << y;
        }
    }
    // AC 0: the DC alone, wrapped: 32767 * 3584 + 32 keeps -3552 in 16 bits,
    // and -3552 >> 6 = -56 fills the block.
    std::array<Zan16s, 16> c{};
    c[0] = 32767;
    ASSERT_EQ(zaniDequantTransformResidual_H264_16s_C1I(c.data(), 8, nullptr, 0, 51), zanStsOk);
    for (auto v : c) EXPECT_EQ(v, -56);
}

TEST(H264Inv, LumaDcStages) {
    // Flat: 16 ones give f[0] = 16 and zeros; QP 0: (16 * 10 + 2) >> 2 = 40,
    // QP 12: 160, QP 51: 16 * 896 = 14336.
    for (auto [qp, want] : {std::pair{0, 40}, {12, 160}, {51, 14336}}) {
        auto c = filled<Zan16s, 16>(1);
        ASSERT_EQ(zaniTransformDequantLumaDC_H264_16s_C1I(c.data(), qp), zanStsOk);
        EXPECT_EQ(c[0], want) << qp;
        for (int k = 1; k < 16; ++k) EXPECT_EQ(c[k], 0) << qp;
    }
    // Level scale, 16-bit: one at position 0 spreads to 16 ones; QP 0 with the
    // default 160: (160 + 32) >> 6 = 3; QP 36 (q 6): 160 << 0 = 160;
    // QP 51 (q 8, scale 224): 224 << 2 = 896.
    for (auto [qp, want] : {std::pair{0, 3}, {36, 160}, {51, 896}}) {
        auto c = filled<Zan16s, 16>(0);
        c[0] = 1;
        ASSERT_EQ(zaniTransformQuantInvLumaDC4x4_H264_16s_C1I(c.data(), qp, nullptr), zanStsOk);
        for (auto v : c) EXPECT_EQ(v, want) << qp;
    }
    // The 16-bit Hadamard saturates: 16 values of 32767 give 32767 at
    // position 0 and 0 elsewhere (the exact sum is 524272); with scale 64
    // at QP 36 the product keeps its low 16 bits: 32767 * 64 = 2097088,
    // which is -64 in 16 bits.
    auto c = filled<Zan16s, 16>(32767);
    Zan16s s = 64;
    ASSERT_EQ(zaniTransformQuantInvLumaDC4x4_H264_16s_C1I(c.data(), 36, &s), zanStsOk);
    EXPECT_EQ(c[0], -64);
    for (int k = 1; k < 16; ++k) EXPECT_EQ(c[k], 0);
    // The 32-bit form at QP 87 (q 14, scale 16 * 14): 224 << 8 = 57344 everywhere.
    std::array<Zan32s, 16> c32{};
    c32[0] = 1;
    ASSERT_EQ(zaniTransformQuantInvLumaDC4x4_H264_32s_C1I(c32.data(), 87, nullptr), zanStsOk);
    for (auto v : c32) EXPECT_EQ(v, 57344);
}

TEST(H264Inv, ChromaDcStages) {
    // Flat 2x2: (1, 0, 0, 0) at QP 0 gives f = 1 everywhere, (1 * 10) >> 1 = 5.
    std::array<Zan16s, 4> c = {1, 0, 0, 0};
    ASSERT_EQ(zaniTransformDequantChromaDC_H264_16s_C1I(c.data(), 0), zanStsOk);
    for (auto v : c) EXPECT_EQ(v, 5);
    // f0..f3 order: (1, 2, 3, 4) -> f0 = 10, f1 = 1-2+3-4 = -2, f2 = 1+2-3-4 = -4,
    // f3 = 1-2-3+4 = 0; times 20 (QP 6) >> 1.
    c = {1, 2, 3, 4};
    ASSERT_EQ(zaniTransformDequantChromaDC_H264_16s_C1I(c.data(), 6), zanStsOk);
    EXPECT_EQ(c, (std::array<Zan16s, 4>{100, -20, -40, 0}));

    // Level scale 2x2, 16-bit: four times 32767 give f0 = 131068.  QP 29
    // (q 4, scale 288): 131068 * 288 >> 1 = 18873792, kept to 16 bits: -576.
    // QP 30 (q 5, scale 160): 131068 * 160 saturates to 32767.
    c.fill(32767);
    ASSERT_EQ(zaniTransformQuantInvChromaDC2x2_H264_16s_C1I(c.data(), 29, nullptr), zanStsOk);
    EXPECT_EQ(c, (std::array<Zan16s, 4>{-576, 0, 0, 0}));
    c.fill(32767);
    ASSERT_EQ(zaniTransformQuantInvChromaDC2x2_H264_16s_C1I(c.data(), 30, nullptr), zanStsOk);
    EXPECT_EQ(c, (std::array<Zan16s, 4>{32767, 0, 0, 0}));
    // 32-bit: the left-shift branch does not saturate: QP 75 (q 12, scale 224):
    // 4 * 224 << 7 = 114688.
    std::array<Zan32s, 4> c32 = {1, 1, 1, 1};
    ASSERT_EQ(zaniTransformQuantInvChromaDC2x2_H264_32s_C1I(c32.data(), 75, nullptr), zanStsOk);
    EXPECT_EQ(c32, (std::array<Zan32s, 4>{114688, 0, 0, 0}));

    // 4:2:2: QP 39 reads its tables at 42 (q 7, scale 160): (1, 0, ...) gives
    // f = 1 everywhere, 160 << 1 = 320.  QP 0 reads at 3 (q 0, scale 224):
    // (224 + 32) >> 6 = 4.  QP 40 is refused.
    std::array<Zan16s, 8> c8{};
    c8[0] = 1;
    ASSERT_EQ(zaniTransformQuantInvChromaDC2x4_H264_16s_C1I(c8.data(), 39, nullptr), zanStsOk);
    for (auto v : c8) EXPECT_EQ(v, 320);
    c8.fill(0);
    c8[0] = 1;
    ASSERT_EQ(zaniTransformQuantInvChromaDC2x4_H264_16s_C1I(c8.data(), 0, nullptr), zanStsOk);
    for (auto v : c8) EXPECT_EQ(v, 4);
    EXPECT_EQ(zaniTransformQuantInvChromaDC2x4_H264_16s_C1I(c8.data(), 40, nullptr), zanStsOutOfRange);
    // Transform layout, four rows of two: value 1 at row 1, column 1 (index 3)
    // gives f[i][j] = A[i][1] * B[1][j] = (1,1,-1,-1) down times (1,-1) across,
    // scaled by 64 at QP 33 (reads 36: q 6, shift 0).
    c8.fill(0);
    c8[3] = 1;
    Zan16s s = 64;
    ASSERT_EQ(zaniTransformQuantInvChromaDC2x4_H264_16s_C1I(c8.data(), 33, &s), zanStsOk);
    EXPECT_EQ(c8, (std::array<Zan16s, 8>{64, -64, 64, -64, -64, 64, -64, 64}));
    // The row sums saturate before the wrapping Hadamard: (32767, 32767) in
    // row 0 gives 32767 (not the wrapped -2) in column 0 of every row; for
    // row 1 the negated sum saturates on its own: (-32768, -32768) gives
    // -32768 in rows 0 and 1 and 32767 in rows 2 and 3.
    c8 = {32767, 32767, 0, 0, 0, 0, 0, 0};
    s = 1;
    ASSERT_EQ(zaniTransformQuantInvChromaDC2x4_H264_16s_C1I(c8.data(), 33, &s), zanStsOk);
    EXPECT_EQ(c8, (std::array<Zan16s, 8>{32767, 0, 32767, 0, 32767, 0, 32767, 0}));
    c8 = {0, 0, -32768, -32768, 0, 0, 0, 0};
    ASSERT_EQ(zaniTransformQuantInvChromaDC2x4_H264_16s_C1I(c8.data(), 33, &s), zanStsOk);
    EXPECT_EQ(c8, (std::array<Zan16s, 8>{-32768, 0, -32768, 0, 32767, 0, 32767, 0}));
    s = 64;
    std::array<Zan32s, 8> c8w{};
    c8w[3] = 1;
    ASSERT_EQ(zaniTransformQuantInvChromaDC2x4_H264_32s_C1I(c8w.data(), 33, &s), zanStsOk);
    EXPECT_EQ(c8w, (std::array<Zan32s, 8>{64, -64, 64, -64, -64, 64, -64, 64}));
}

TEST(H264Inv, Dequant8x8) {
    auto s = filled<Zan16s, 64>(320);
    // Qp6 0: (c * 320 + 32) >> 6; Qp6 6: c * 320; Qp6 8: c * 320 << 2.
    for (auto [qp6, want] : {std::pair{0, 5}, {6, 320}, {8, 1280}}) {
        auto c = filled<Zan16s, 64>(1);
        ASSERT_EQ(zaniQuantLuma8x8Inv_H264_16s_C1I(c.data(), qp6, s.data()), zanStsOk);
        for (auto v : c) EXPECT_EQ(v, want) << qp6;
    }
    // 16-bit: the left-shift branch wraps (1000 * 320 << 2 = 1280000 -> -30720),
    // the rounding branch saturates (32767 * 32767 >> 1 -> 32767).
    auto c = filled<Zan16s, 64>(1000);
    ASSERT_EQ(zaniQuantLuma8x8Inv_H264_16s_C1I(c.data(), 8, s.data()), zanStsOk);
    EXPECT_EQ(c[17], -30720);
    auto big = filled<Zan16s, 64>(32767);
    c.fill(32767);
    ASSERT_EQ(zaniQuantLuma8x8Inv_H264_16s_C1I(c.data(), 5, big.data()), zanStsOk);
    EXPECT_EQ(c[63], 32767);
    // 32-bit: Qp6 14 shifts left by 8 without saturation.
    auto c32 = filled<Zan32s, 64>(1000);
    ASSERT_EQ(zaniQuantInvLuma8x8_H264_32s_C1I(c32.data(), 14, s.data()), zanStsOk);
    EXPECT_EQ(c32[0], 1000 * 320 * 256);
}

// An 8x8 block with only d[0] = X gives X at every position before the
// rounding: pred + (X + 32) >> 6.  The coefficient block is left alone.
TEST(H264Inv, Inverse8x8AddToPrediction) {
    auto c = filled<Zan16s, 64>(0);
    c[0] = 640;  // residual 10
    const auto before = c;
    std::array<Zan8u, 8 * 16> pred;
    for (size_t i = 0; i < pred.size(); ++i) pred[i] = static_cast<Zan8u>(i % 3 == 0 ? 250 : i % 3 == 1 ? 100 : 0);
    std::array<Zan8u, 8 * 16> dst;
    dst.fill(33);
    ASSERT_EQ(zaniTransformLuma8x8InvAddPred_H264_16s8u_C1R(pred.data(), 16, c.data(), dst.data(), 16), zanStsOk);
    EXPECT_EQ(c, before);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 16; ++x) {
            Zan8u p = pred[16 * y + x];
            Zan8u want = x < 8 ? static_cast<Zan8u>(p + 10 > 255 ? 255 : p + 10) : 33;
            EXPECT_EQ(dst[16 * y + x], want) << x << "," << y;
        }
    // Negative: pred 0 stays at 0.
    c[0] = -640;
    ASSERT_EQ(zaniTransformLuma8x8InvAddPred_H264_16s8u_C1R(pred.data(), 16, c.data(), dst.data(), 16), zanStsOk);
    EXPECT_EQ(dst[0], 240);
    EXPECT_EQ(dst[1], 90);
    EXPECT_EQ(dst[2], 0);

    // High bit depth, steps in bytes: clip at 1023 for 10 bits.
    std::array<Zan32s, 64> c32{};
    c32[0] = 640;
    std::array<Zan16u, 8 * 8> p16, d16;
    for (size_t i = 0; i < p16.size(); ++i) p16[i] = static_cast<Zan16u>(i % 2 ? 1020 : 3);
    ASSERT_EQ(zaniTransformInvAddPredLuma8x8_H264_32s16u_C1R(p16.data(), 16, c32.data(), d16.data(), 16, 10), zanStsOk);
    for (size_t i = 0; i < d16.size(); ++i) EXPECT_EQ(d16[i], i % 2 ? 1023 : 13) << i;
    c32[0] = -640;
    ASSERT_EQ(zaniTransformInvAddPredLuma8x8_H264_32s16u_C1R(p16.data(), 16, c32.data(), d16.data(), 16, 10), zanStsOk);
    EXPECT_EQ(d16[0], 0);
    EXPECT_EQ(d16[1], 1010);
}

// Zero prediction, one level: t = (1 * 16 * 256) >> 6 = 64 at QP 28,
// m = (64 * 8192 + 2^18) >> 19 = 1, back to 256, and (256 + 32) >> 6 = 4
// everywhere.  A flat prediction of 100 (transformed DC 1600) with no
// levels comes back as 100.
TEST(H264Inv, SwitchingSlices) {
    std::array<Zan16s, 16> lv{}, pr{};
    lv[0] = 1;
    ASSERT_EQ(zaniDequantTransformResidual_SISP_H264_16s_C1I(lv.data(), pr.data(), nullptr, 0, 28, 28, 0), zanStsOk);
    for (auto v : lv) EXPECT_EQ(v, 4);
    lv.fill(0);
    pr[0] = 1600;
    ASSERT_EQ(zaniDequantTransformResidual_SISP_H264_16s_C1I(lv.data(), pr.data(), nullptr, 0, 10, 28, 1), zanStsOk);
    for (auto v : lv) EXPECT_EQ(v, 100);
    // A given DC stands in for position 0: 6400 gives 100 as well.
    lv.fill(5);
    pr.fill(0);
    Zan16s dc = 6400;
    ASSERT_EQ(zaniDequantTransformResidual_SISP_H264_16s_C1I(lv.data(), pr.data(), &dc, 0, 28, 28, 0), zanStsOk);
    for (auto v : lv) EXPECT_EQ(v, 100);

    // Chroma DC: level (1, 0, 0, 0), zero prediction, QP 28:
    // t0 = (1 * 4096) >> 5 = 128, m = (128 * 8192 + 2^19) >> 20 = 1,
    // v0 = 256, and the 2x2 transform halved gives 128 everywhere.
    std::array<Zan16s, 4> c = {1, 0, 0, 0}, p4{};
    ASSERT_EQ(zaniTransformDequantChromaDC_SISP_H264_16s_C1I(c.data(), p4.data(), 28, 28, 0), zanStsOk);
    EXPECT_EQ(c, (std::array<Zan16s, 4>{128, 128, 128, 128}));
}

}  // namespace
