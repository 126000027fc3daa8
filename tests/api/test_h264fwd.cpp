// H.264 forward transforms and quantisation through the exported functions:
// statuses in their order (a null pointer beats a bad QP), nothing written
// on failure, the level limit of the flat quantisers and what it leaves
// behind, and answers worked out by hand from the transform and
// quantisation rules (core transforms of small blocks, rounding of a third
// against a sixth, the 342 of the 8x8 inter rounding, the QP + 3 of 4:2:2
// chroma, 16-bit saturation against 32-bit levels, the generators for flat
// lists).
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <numeric>
#include <vector>

#include "zanvc.h"

namespace {

using B16 = std::array<Zan16s, 16>;
using B64 = std::array<Zan16s, 64>;

// Raster position -> scan position of the 4x4 zigzag.
constexpr B16 kZigzagPos = {0, 1, 5, 6, 2, 4, 7, 12, 3, 8, 11, 13, 9, 10, 14, 15};

B16 ramp16() {
    B16 b;
    std::iota(b.begin(), b.end(), Zan16s{1});
    return b;
}

// The 1..16 ramp, worked through the row and column butterflies by hand.
constexpr B16 kRampCore = {136, -28, 0, -4, -112, 0, 0, 0, 0, 0, 0, 0, -16, 0, 0, 0};

TEST(H264fwd, Core4x4KnownAnswers) {
    B16 in = ramp16(), out{};
    ASSERT_EQ(zanStsOk, zaniTransformResidual4x4Fwd_H264_16s_C1(in.data(), out.data()));
    EXPECT_EQ(kRampCore, out);
    EXPECT_EQ(ramp16(), in);
    // In place.
    ASSERT_EQ(zanStsOk, zaniTransformResidual4x4Fwd_H264_16s_C1(in.data(), in.data()));
    EXPECT_EQ(kRampCore, in);

    std::array<Zan32s, 16> in32, out32;
    for (int k = 0; k < 16; ++k) in32[k] = k + 1;
    ASSERT_EQ(zanStsOk, zaniTransformResidual4x4Fwd_H264_32s_C1(in32.data(), out32.data()));
    for (int k = 0; k < 16; ++k) EXPECT_EQ(kRampCore[k], out32[k]) << k;

    // 16 x 32767 wraps in 16 bits to -16, not in 32 bits.
    B16 big;
    big.fill(32767);
    ASSERT_EQ(zanStsOk, zaniTransformResidual4x4Fwd_H264_16s_C1(big.data(), out.data()));
    EXPECT_EQ(-16, out[0]);
    for (int k = 1; k < 16; ++k) EXPECT_EQ(0, out[k]);
    in32.fill(32767);
    ASSERT_EQ(zanStsOk, zaniTransformResidual4x4Fwd_H264_32s_C1(in32.data(), out32.data()));
    EXPECT_EQ(16 * 32767, out32[0]);
}

TEST(H264fwd, PredictionTransform) {
    // The ramp as 8-bit samples in a picture with 7-byte rows, then upside
    // down through a negative step.
    std::array<Zan8u, 7 * 4> pic{};
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j) pic[i * 7 + j] = static_cast<Zan8u>(4 * i + j + 1);
    B16 out{};
    ASSERT_EQ(zanStsOk, zaniTransformPrediction_H264_8u16s_C1(pic.data(), 7, out.data()));
    EXPECT_EQ(kRampCore, out);
    ASSERT_EQ(zanStsOk, zaniTransformPrediction_H264_8u16s_C1(pic.data() + 21, -7, out.data()));
    EXPECT_EQ(136, out[0]);
    EXPECT_EQ(112, out[4]);  // the column order reversed flips the sign of odd rows
    EXPECT_EQ(16, out[12]);
    // 255 everywhere: DC 16 * 255.
    std::array<Zan8u, 16> white;
    white.fill(255);
    ASSERT_EQ(zanStsOk, zaniTransformPrediction_H264_8u16s_C1(white.data(), 4, out.data()));
    EXPECT_EQ(4080, out[0]);
    EXPECT_EQ(0, out[15]);
    EXPECT_EQ(zanStsNullPtr, zaniTransformPrediction_H264_8u16s_C1(nullptr, 4, out.data()));
    EXPECT_EQ(zanStsNullPtr, zaniTransformPrediction_H264_8u16s_C1(white.data(), 4, nullptr));
}

TEST(H264fwd, FlatTransformQuantKnownAnswers) {
    // Ramp at QP 0: 136 * 13107, 28 * 8066, ... plus 5461 (inter), >> 15.
    B16 b = ramp16();
    Zan32s num = -1;
    Zan8u last = 99;
    ASSERT_EQ(zanStsOk, zaniTransformQuantResidual_H264_16s_C1I(b.data(), 0, &num, 0, kZigzagPos.data(), &last));
    const B16 want = {54, -7, 0, -1, -27, 0, 0, 0, 0, 0, 0, 0, -4, 0, 0, 0};
    EXPECT_EQ(want, b);
    EXPECT_EQ(5, num);
    EXPECT_EQ(9, last);  // raster 12 is zigzag position 9

    // All-zero residual: count 0, last 0, status 0.
    B16 z{};
    num = -1;
    last = 99;
    ASSERT_EQ(zanStsOk, zaniTransformQuantResidual_H264_16s_C1I(z.data(), 30, &num, 1, kZigzagPos.data(), &last));
    EXPECT_EQ(0, num);
    EXPECT_EQ(0, last);
    EXPECT_EQ(B16{}, z);
}

// A block of 322 with 322 + d first: the DC is 5152 + d and its level at
// QP 0 (inter) is (DC * 13107 + 5461) >> 15: 2063 for d = 7, 2064 for d = 8.
TEST(H264fwd, FlatLevelLimit) {
    auto block = [](Zan16s d) {
        B16 b;
        b.fill(322);
        b[0] = static_cast<Zan16s>(322 + d);
        return b;
    };
    B16 ok = block(7);
    Zan32s num = -1;
    Zan8u last = 99;
    ASSERT_EQ(zanStsOk, zaniTransformQuantResidual_H264_16s_C1I(ok.data(), 0, &num, 0, kZigzagPos.data(), &last));
    EXPECT_EQ(2063, ok[0]);
    EXPECT_EQ(16, num);

    B16 bad = block(8);
    num = -1;
    last = 99;
    EXPECT_EQ(zanStsCoefRange,
              zaniTransformQuantResidual_H264_16s_C1I(bad.data(), 0, &num, 0, kZigzagPos.data(), &last));
    EXPECT_EQ(zanStsRangeCheckFailed, zanStsCoefRange);
    // The block holds the transformed values: 16 * 322 + 8 at DC and
    // a_i * a_j * 8 elsewhere, a = (1, 2, 1, 1); count and last untouched.
    const B16 transformed = {5160, 16, 8, 8, 16, 32, 16, 16, 8, 16, 8, 8, 8, 16, 8, 8};
    EXPECT_EQ(transformed, bad);
    EXPECT_EQ(-1, num);
    EXPECT_EQ(99, last);
    // Negative: the magnitude counts.
    for (auto& v : bad) v = static_cast<Zan16s>(-322);
    bad[0] = -330;
    EXPECT_EQ(zanStsCoefRange,
              zaniTransformQuantResidual_H264_16s_C1I(bad.data(), 0, &num, 0, kZigzagPos.data(), &last));
    EXPECT_EQ(-5160, bad[0]);
}

TEST(H264fwd, FlatDcStages) {
    // Luma DC: an 8 at the first position makes every Hadamard output 8,
    // halved 4.  4 * 13107 = 52428 needs the rounding of a third to reach
    // 65536: the luma DC rounds as intra whatever the flag.
    for (Zan32s intra : {0, 1}) {
        B16 b{}, t{};
        b[0] = 8;
        Zan32s num = -1;
        Zan8u last = 99;
        ASSERT_EQ(zanStsOk,
                  zaniTransformQuantLumaDC_H264_16s_C1I(b.data(), t.data(), 0, &num, intra, kZigzagPos.data(), &last));
        for (int k = 0; k < 16; ++k) {
            EXPECT_EQ(4, t[k]);
            EXPECT_EQ(1, b[k]);
        }
        EXPECT_EQ(16, num);
        EXPECT_EQ(15, last);
    }
    // The luma DC limit at QP 0: the level is ((h >> 1) * 13107 + 21845) >> 16.
    {
        B16 b, t{};
        b.fill(1290);
        Zan32s num = -1;
        Zan8u last = 99;
        // Hadamard DC 20640, halved 10320, QP 0: (10320 * 13107 + 21845) >> 16 = 2064.
        EXPECT_EQ(zanStsCoefRange,
                  zaniTransformQuantLumaDC_H264_16s_C1I(b.data(), t.data(), 0, &num, 1, kZigzagPos.data(), &last));
        EXPECT_EQ(10320, t[0]);
        EXPECT_EQ(1290, b[0]);  // the input stays
        EXPECT_EQ(-1, num);
        b.fill(1290);
        b[0] = 1287;  // DC 20637, halved 10318: level 2063 (10319 still gives 2064)
        EXPECT_EQ(zanStsOk,
                  zaniTransformQuantLumaDC_H264_16s_C1I(b.data(), t.data(), 0, &num, 1, kZigzagPos.data(), &last));
        EXPECT_EQ(2063, b[0]);
    }
    // Chroma DC 2x2: 4 at c0 makes f = (4, 4, 4, 4); intra rounds it up to
    // level 1, inter down to 0.
    for (Zan32s intra : {0, 1}) {
        std::array<Zan16s, 4> c = {4, 0, 0, 0}, t{};
        Zan32s num = -1;
        ASSERT_EQ(zanStsOk, zaniTransformQuantChromaDC_H264_16s_C1I(c.data(), t.data(), 0, &num, intra, 1));
        EXPECT_EQ((std::array<Zan16s, 4>{4, 4, 4, 4}), t);
        EXPECT_EQ((std::array<Zan16s, 4>{Zan16s(intra), Zan16s(intra), Zan16s(intra), Zan16s(intra)}), c);
        EXPECT_EQ(intra ? 4 : 0, num);
    }
    // The transform's signs, and needTransform 0.
    {
        std::array<Zan16s, 4> c = {100, 20, 3, -40}, t{};
        Zan32s num = -1;
        ASSERT_EQ(zanStsOk, zaniTransformQuantChromaDC_H264_16s_C1I(c.data(), t.data(), 39, &num, 0, 1));
        EXPECT_EQ((std::array<Zan16s, 4>{83, 123, 157, 37}), t);
        std::array<Zan16s, 4> d = {83, 123, 157, 37}, u{};
        ASSERT_EQ(zanStsOk, zaniTransformQuantChromaDC_H264_16s_C1I(d.data(), u.data(), 39, &num, 0, 0));
        EXPECT_EQ(t, u);
        std::array<Zan16s, 4> e = {83, 123, 157, 37}, v{};
        ASSERT_EQ(zanStsOk, zaniTransformQuantChromaDC_H264_16s_C1I(e.data(), v.data(), 39, &num, 0, 0));
        EXPECT_EQ(d, e);
    }
}

TEST(H264fwd, FlatStatuses) {
    B16 b = ramp16(), keep = b, t{};
    Zan32s num = -1;
    Zan8u last = 99;
    const Zan16s* scan = kZigzagPos.data();
    // QP out of range, as unsigned: 52 and -1; nothing written.
    for (Zan32s qp : {52, -1, 1000}) {
        EXPECT_EQ(zanStsOutOfRange, zaniTransformQuantResidual_H264_16s_C1I(b.data(), qp, &num, 0, scan, &last));
        EXPECT_EQ(zanStsOutOfRange, zaniTransformQuantLumaDC_H264_16s_C1I(b.data(), t.data(), qp, &num, 0, scan, &last));
    }
    EXPECT_EQ(zanStsOutOfRange, zaniTransformQuantChromaDC_H264_16s_C1I(b.data(), t.data(), 40, &num, 0, 1));
    EXPECT_EQ(zanStsOutOfRange, zaniTransformQuantChromaDC_H264_16s_C1I(b.data(), t.data(), -1, &num, 0, 1));
    EXPECT_EQ(keep, b);
    EXPECT_EQ(B16{}, t);
    EXPECT_EQ(-1, num);
    EXPECT_EQ(99, last);
    // A null pointer beats a bad QP.
    EXPECT_EQ(zanStsNullPtr, zaniTransformQuantResidual_H264_16s_C1I(nullptr, 99, &num, 0, scan, &last));
    EXPECT_EQ(zanStsNullPtr, zaniTransformQuantResidual_H264_16s_C1I(b.data(), 99, nullptr, 0, scan, &last));
    EXPECT_EQ(zanStsNullPtr, zaniTransformQuantResidual_H264_16s_C1I(b.data(), 99, &num, 0, nullptr, &last));
    EXPECT_EQ(zanStsNullPtr, zaniTransformQuantResidual_H264_16s_C1I(b.data(), 99, &num, 0, scan, nullptr));
    EXPECT_EQ(zanStsNullPtr, zaniTransformQuantLumaDC_H264_16s_C1I(b.data(), nullptr, 99, &num, 0, scan, &last));
    EXPECT_EQ(zanStsNullPtr, zaniTransformQuantLumaDC_H264_16s_C1I(b.data(), t.data(), 99, &num, 0, nullptr, &last));
    EXPECT_EQ(zanStsNullPtr, zaniTransformQuantLumaDC_H264_16s_C1I(b.data(), t.data(), 99, &num, 0, scan, nullptr));
    EXPECT_EQ(zanStsNullPtr, zaniTransformQuantChromaDC_H264_16s_C1I(b.data(), nullptr, 99, &num, 0, 1));
    EXPECT_EQ(zanStsNullPtr, zaniTransformQuantChromaDC_H264_16s_C1I(b.data(), t.data(), 99, nullptr, 0, 1));
    EXPECT_EQ(zanStsNullPtr, zaniTransformQuantChromaDC_H264_16s_C1I(nullptr, t.data(), 99, &num, 0, 1));
    EXPECT_EQ(zanStsNullPtr, zaniTransformResidual4x4Fwd_H264_16s_C1(nullptr, b.data()));
    EXPECT_EQ(zanStsNullPtr, zaniTransformResidual4x4Fwd_H264_16s_C1(b.data(), nullptr));
    EXPECT_EQ(keep, b);
    // QP 51 and 39 are accepted.
    EXPECT_EQ(zanStsOk, zaniTransformQuantResidual_H264_16s_C1I(b.data(), 51, &num, 0, scan, &last));
    EXPECT_EQ(zanStsOk, zaniTransformQuantChromaDC_H264_16s_C1I(b.data(), t.data(), 39, &num, 0, 1));
}

TEST(H264fwd, QuantizeResidualKnownAnswers) {
    // Sparse block: 100 at raster 5 (factor 5243) and -50 at raster 10
    // (13107), QP 0 inter: (524300 + 5461) >> 15 = 16, (655350 + 5461) >> 15 = 20.
    B16 src{}, dst;
    src[5] = 100;
    src[10] = -50;
    dst.fill(7);
    Zan32s num = -1, last = -1;
    ASSERT_EQ(zanStsOk, zaniQuantizeResidual4x4Fwd_H264_16s_C1(src.data(), dst.data(), &num, &last, nullptr,
                                                              kZigzagPos.data(), 0, 0));
    B16 want{};
    want[5] = 16;
    want[10] = -20;
    EXPECT_EQ(want, dst);
    EXPECT_EQ(2, num);
    EXPECT_EQ(11, last);  // max(zigzag of 5 = 4, of 10 = 11)

    // Intra rounds with a third: 2 * 13107 = 26214 reaches 32768 with 10922, not with 5461.
    B16 two{};
    two[0] = 2;
    for (Zan32s intra : {0, 1}) {
        ASSERT_EQ(zanStsOk, zaniQuantizeResidual4x4Fwd_H264_16s_C1(two.data(), dst.data(), &num, &last, nullptr,
                                                                  kZigzagPos.data(), 0, intra));
        EXPECT_EQ(intra, dst[0]);
        EXPECT_EQ(intra, num);
        EXPECT_EQ(0, last);
    }
    // intra is a flag: 5 counts as 1.
    ASSERT_EQ(zanStsOk, zaniQuantizeResidual4x4Fwd_H264_16s_C1(two.data(), dst.data(), &num, &last, nullptr,
                                                              kZigzagPos.data(), 0, 5));
    EXPECT_EQ(1, dst[0]);

    // With a scale array: shift 11 + q, rounding 2^(11 + q + intra) / 6
    // (341 for inter at QP 0).
    B16 scale;
    scale.fill(1);
    B16 c{};
    c[3] = 1707;  // 1707 + 341 = 2048: level 1 (inter); 1706 + 341 = 2047: level 0
    c[7] = -1706;
    ASSERT_EQ(zanStsOk, zaniQuantizeResidual4x4Fwd_H264_16s_C1(c.data(), dst.data(), &num, &last, scale.data(),
                                                              kZigzagPos.data(), 0, 0));
    EXPECT_EQ(1, dst[3]);
    EXPECT_EQ(0, dst[7]);
    EXPECT_EQ(1, num);
    EXPECT_EQ(6, last);

    // Saturation: -32768 * 32767 at shift 11 is 524272 in magnitude.
    B16 ext{};
    ext[0] = -32768;
    ext[15] = 32767;
    scale.fill(32767);
    ASSERT_EQ(zanStsOk, zaniQuantizeResidual4x4Fwd_H264_16s_C1(ext.data(), dst.data(), &num, &last, scale.data(),
                                                              kZigzagPos.data(), 0, 0));
    EXPECT_EQ(-32767, dst[0]);
    EXPECT_EQ(32767, dst[15]);
    EXPECT_EQ(2, num);
    EXPECT_EQ(15, last);
    std::array<Zan32s, 16> d32;
    ASSERT_EQ(zanStsOk, zaniQuantizeResidual4x4Fwd_H264_16s32s_C1(ext.data(), d32.data(), &num, &last, scale.data(),
                                                                 kZigzagPos.data(), 0, 0));
    EXPECT_EQ(-524272, d32[0]);
    EXPECT_EQ((32767 * 32767 + 341) >> 11, d32[15]);
    std::array<Zan32s, 16> s32{};
    s32[0] = -2147483647 - 1;  // 2^31 * 13107 needs the 64-bit product
    ASSERT_EQ(zanStsOk, zaniQuantizeResidual4x4Fwd_H264_32s_C1(s32.data(), d32.data(), &num, &last, nullptr,
                                                              kZigzagPos.data(), 0, 0));
    EXPECT_EQ(static_cast<Zan32s>(-(((Zan64s{1} << 31) * 13107 + 5461) >> 15)), d32[0]);
    EXPECT_EQ(1, num);
}

TEST(H264fwd, TransformQuantFwd4x4) {
    // The ramp through the transform and the default factors at QP 0 gives
    // the flat generation's levels; pSrc is left alone.
    B16 src = ramp16(), dst{};
    Zan32s num = -1, last = -1;
    ASSERT_EQ(zanStsOk, zaniTransformQuantFwd4x4_H264_16s_C1(src.data(), dst.data(), 0, &num, 0, kZigzagPos.data(),
                                                            &last, nullptr));
    EXPECT_EQ((B16{54, -7, 0, -1, -27, 0, 0, 0, 0, 0, 0, 0, -4, 0, 0, 0}), dst);
    EXPECT_EQ(ramp16(), src);
    EXPECT_EQ(5, num);
    EXPECT_EQ(9, last);
    // No level limit here: 2064 and beyond are plain levels.
    B16 big;
    big.fill(322);
    big[0] = 330;
    ASSERT_EQ(zanStsOk, zaniTransformQuantFwd4x4_H264_16s_C1(big.data(), dst.data(), 0, &num, 0, kZigzagPos.data(),
                                                            &last, nullptr));
    EXPECT_EQ(2064, dst[0]);
    // 16s32s: QP up to 87 (q = 14, shift 29), and no 16-bit wrap in the transform.
    big.fill(32767);
    std::array<Zan32s, 16> d32;
    ASSERT_EQ(zanStsOk, zaniTransformQuantFwd4x4_H264_16s32s_C1(big.data(), d32.data(), 87, &num, 1,
                                                               kZigzagPos.data(), &last, nullptr));
    // QP 87: q 14, QP % 6 = 3 (factor 9362), intra rounding 2^30 / 6.
    EXPECT_EQ(static_cast<Zan32s>((Zan64s{16 * 32767} * 9362 + (Zan64s{1} << 30) / 6) >> 29), d32[0]);
    EXPECT_EQ(zanStsOutOfRange, zaniTransformQuantFwd4x4_H264_16s32s_C1(big.data(), d32.data(), 88, &num, 1,
                                                                       kZigzagPos.data(), &last, nullptr));
    EXPECT_EQ(zanStsOutOfRange, zaniTransformQuantFwd4x4_H264_16s_C1(big.data(), dst.data(), 52, &num, 1,
                                                                    kZigzagPos.data(), &last, nullptr));
    EXPECT_EQ(zanStsNullPtr, zaniTransformQuantFwd4x4_H264_16s_C1(big.data(), dst.data(), 52, &num, 1, nullptr,
                                                                 &last, nullptr));
}

TEST(H264fwd, HighStatusesLeaveOutputs) {
    B16 src = ramp16(), dst;
    dst.fill(5);
    const B16 keep = dst;
    Zan32s num = -1, last = -1;
    const Zan16s* scan = kZigzagPos.data();
    EXPECT_EQ(zanStsOutOfRange,
              zaniQuantizeResidual4x4Fwd_H264_16s_C1(src.data(), dst.data(), &num, &last, nullptr, scan, 52, 0));
    EXPECT_EQ(zanStsOutOfRange,
              zaniQuantizeResidual4x4Fwd_H264_16s_C1(src.data(), dst.data(), &num, &last, nullptr, scan, -3, 0));
    EXPECT_EQ(zanStsNullPtr,
              zaniQuantizeResidual4x4Fwd_H264_16s_C1(src.data(), dst.data(), nullptr, &last, nullptr, scan, 52, 0));
    EXPECT_EQ(zanStsNullPtr,
              zaniQuantizeResidual4x4Fwd_H264_16s_C1(src.data(), dst.data(), &num, nullptr, nullptr, scan, 52, 0));
    EXPECT_EQ(zanStsNullPtr,
              zaniQuantizeResidual4x4Fwd_H264_16s_C1(src.data(), dst.data(), &num, &last, nullptr, nullptr, 0, 0));
    std::array<Zan32s, 16> s32{}, d32{};
    EXPECT_EQ(zanStsOutOfRange,
              zaniQuantizeResidual4x4Fwd_H264_32s_C1(s32.data(), d32.data(), &num, &last, nullptr, scan, 52, 0));
    EXPECT_EQ(zanStsOutOfRange,
              zaniQuantizeResidual4x4Fwd_H264_16s32s_C1(src.data(), d32.data(), &num, &last, nullptr, scan, 52, 0));
    EXPECT_EQ(keep, dst);
    EXPECT_EQ(-1, num);
    EXPECT_EQ(-1, last);
    // QuantLuma8x8: Qp6 (-192) after pointers; pScaleLevels required.
    B64 s8{}, d8, sc;
    d8.fill(3);
    sc.fill(16);
    B64 scan8;
    std::iota(scan8.begin(), scan8.end(), Zan16s{0});
    EXPECT_EQ(zanStsQpBad, zaniQuantLuma8x8_H264_16s_C1(s8.data(), d8.data(), 9, 0, scan8.data(), sc.data(), &num, &last));
    EXPECT_EQ(zanStsQpBad, zaniQuantLuma8x8_H264_16s_C1(s8.data(), d8.data(), -1, 0, scan8.data(), sc.data(), &num, &last));
    EXPECT_EQ(zanStsNullPtr, zaniQuantLuma8x8_H264_16s_C1(s8.data(), d8.data(), 9, 0, scan8.data(), nullptr, &num, &last));
    std::array<Zan32s, 64> s8w{}, d8w{};
    EXPECT_EQ(zanStsQpBad, zaniQuantLuma8x8_H264_32s_C1(s8w.data(), d8w.data(), 15, 0, scan8.data(), sc.data(), &num, &last));
    for (Zan16s v : d8) EXPECT_EQ(3, v);
    EXPECT_EQ(-1, num);
    EXPECT_EQ(zanStsOk, zaniQuantLuma8x8_H264_16s_C1(s8.data(), d8.data(), 8, 0, scan8.data(), sc.data(), &num, &last));
    EXPECT_EQ(zanStsOk, zaniQuantLuma8x8_H264_32s_C1(s8w.data(), d8w.data(), 14, 0, scan8.data(), sc.data(), &num, &last));
    EXPECT_EQ(0, num);
    EXPECT_EQ(0, last);
}

TEST(H264fwd, HighDcStages) {
    const Zan16s* scan = kZigzagPos.data();
    // Luma DC: 8 at the first position makes all 16 values 4; unlike the
    // flat stage the flag decides: 4 * 13107 + 21845 (intra) passes 65536,
    // + 10922 (inter) does not.
    for (Zan32s intra : {0, 1}) {
        B16 b{}, t{};
        b[0] = 8;
        Zan32s num = -1, last = -1;
        ASSERT_EQ(zanStsOk, zaniTransformQuantFwdLumaDC4x4_H264_16s_C1I(b.data(), t.data(), 0, &num, intra, scan, &last,
                                                                       nullptr));
        EXPECT_EQ(4, t[7]);
        EXPECT_EQ(intra, b[7]);
        EXPECT_EQ(intra ? 16 : 0, num);
        EXPECT_EQ(intra ? 15 : 0, last);
        std::array<Zan32s, 16> w{}, tw{};
        w[0] = 8;
        ASSERT_EQ(zanStsOk, zaniTransformQuantFwdLumaDC4x4_H264_32s_C1I(w.data(), tw.data(), 0, &num, intra, scan,
                                                                       &last, nullptr));
        EXPECT_EQ(intra, w[15]);
    }
    // With a scale: 200 makes all values 100; (100 * 100 + 682) >> 12 = 2.
    {
        B16 b{}, t{};
        b[0] = 200;
        const Zan16s scale[16] = {100};
        Zan32s num = -1, last = -1;
        ASSERT_EQ(zanStsOk, zaniTransformQuantFwdLumaDC4x4_H264_16s_C1I(b.data(), t.data(), 0, &num, 0, scan, &last,
                                                                       scale));
        EXPECT_EQ(2, b[9]);
        EXPECT_EQ(16, num);
    }
    // Chroma: 20 at c0 makes every value 20.  2x2 at QP 0: (20 * 13107 +
    // 10922) >> 16 = 4; 2x4 at QP 0 works at QP 3 (factor 9362): 3; 2x4 at
    // QP 3 works at QP 6 (shift 17, factor 13107): 2.
    {
        std::array<Zan16s, 4> c = {20, 0, 0, 0}, t{};
        Zan32s num = -1;
        ASSERT_EQ(zanStsOk, zaniTransformQuantFwdChromaDC2x2_H264_16s_C1I(c.data(), t.data(), 0, &num, 0, 1, nullptr));
        EXPECT_EQ((std::array<Zan16s, 4>{20, 20, 20, 20}), t);
        EXPECT_EQ((std::array<Zan16s, 4>{4, 4, 4, 4}), c);
        std::array<Zan16s, 8> c8 = {20, 0, 0, 0, 0, 0, 0, 0}, t8{};
        ASSERT_EQ(zanStsOk, zaniTransformQuantFwdChromaDC2x4_H264_16s_C1I(c8.data(), t8.data(), 0, &num, 0, 1, nullptr));
        EXPECT_EQ((std::array<Zan16s, 8>{20, 20, 20, 20, 20, 20, 20, 20}), t8);
        EXPECT_EQ((std::array<Zan16s, 8>{3, 3, 3, 3, 3, 3, 3, 3}), c8);
        EXPECT_EQ(8, num);
        std::array<Zan32s, 8> w8 = {20, 0, 0, 0, 0, 0, 0, 0}, tw8{};
        ASSERT_EQ(zanStsOk, zaniTransformQuantFwdChromaDC2x4_H264_32s_C1I(w8.data(), tw8.data(), 3, &num, 0, 1, nullptr));
        EXPECT_EQ(2, w8[5]);
        EXPECT_EQ(20, tw8[5]);
    }
    // 2x4 signs: rows (a, b) -> (a + b, a - b), then columns through the
    // Hadamard rows (1 1 1 1) (1 1 -1 -1) (1 -1 -1 1) (1 -1 1 -1).
    {
        std::array<Zan32s, 8> c = {1, 2, 3, 4, 5, 6, 7, 8}, t{};
        Zan32s num = -1;
        ASSERT_EQ(zanStsOk, zaniTransformQuantFwdChromaDC2x4_H264_32s_C1I(c.data(), t.data(), 0, &num, 0, 1, nullptr));
        // Row sums 3 7 11 15, differences -1 -1 -1 -1.
        EXPECT_EQ((std::array<Zan32s, 8>{36, -4, -16, 0, 0, 0, -8, 0}), t);
        std::array<Zan32s, 8> u = {36, -4, -16, 0, 0, 0, -8, 0}, tu{};
        ASSERT_EQ(zanStsOk, zaniTransformQuantFwdChromaDC2x4_H264_32s_C1I(u.data(), tu.data(), 0, &num, 0, 0, nullptr));
        EXPECT_EQ(t, tu);  // needTransform 0 takes the values as they are
    }
    // Ranges: 16s chroma 0..39, 32s 0..75; luma 16s 0..51, 32s 0..87.
    std::array<Zan16s, 8> c{}, t{};
    std::array<Zan32s, 16> w{}, tw{};
    Zan32s num = -1, last = -1;
    EXPECT_EQ(zanStsOutOfRange, zaniTransformQuantFwdChromaDC2x2_H264_16s_C1I(c.data(), t.data(), 40, &num, 0, 1, nullptr));
    EXPECT_EQ(zanStsOutOfRange, zaniTransformQuantFwdChromaDC2x4_H264_16s_C1I(c.data(), t.data(), 40, &num, 0, 1, nullptr));
    EXPECT_EQ(zanStsOk, zaniTransformQuantFwdChromaDC2x4_H264_16s_C1I(c.data(), t.data(), 39, &num, 0, 1, nullptr));
    EXPECT_EQ(zanStsOutOfRange, zaniTransformQuantFwdChromaDC2x2_H264_32s_C1I(w.data(), tw.data(), 76, &num, 0, 1, nullptr));
    EXPECT_EQ(zanStsOk, zaniTransformQuantFwdChromaDC2x4_H264_32s_C1I(w.data(), tw.data(), 75, &num, 0, 1, nullptr));
    EXPECT_EQ(zanStsOutOfRange,
              zaniTransformQuantFwdLumaDC4x4_H264_32s_C1I(w.data(), tw.data(), 88, &num, 0, scan, &last, nullptr));
    EXPECT_EQ(zanStsOk, zaniTransformQuantFwdLumaDC4x4_H264_32s_C1I(w.data(), tw.data(), 87, &num, 0, scan, &last, nullptr));
    B16 b{}, tb{};
    EXPECT_EQ(zanStsOutOfRange,
              zaniTransformQuantFwdLumaDC4x4_H264_16s_C1I(b.data(), tb.data(), 52, &num, 0, scan, &last, nullptr));
    EXPECT_EQ(zanStsNullPtr,
              zaniTransformQuantFwdLumaDC4x4_H264_16s_C1I(b.data(), nullptr, 52, &num, 0, scan, &last, nullptr));
    EXPECT_EQ(zanStsNullPtr, zaniTransformQuantFwdChromaDC2x2_H264_16s_C1I(c.data(), t.data(), 40, nullptr, 0, 1, nullptr));
}

// The halved luma DC Hadamard of sixteen 32767: 16 * 32767 >> 1 = 262136,
// whose low 16 bits are -8; the 32-bit form keeps 262136.
TEST(H264fwd, DcTransformsKeep16Bits) {
    const Zan16s* scan = kZigzagPos.data();
    B16 b, t{};
    b.fill(32767);
    Zan32s num = -1, last = -1;
    Zan8u last8 = 0;
    ASSERT_EQ(zanStsOk, zaniTransformQuantLumaDC_H264_16s_C1I(b.data(), t.data(), 51, &num, 0, scan, &last8));
    EXPECT_EQ(-8, t[0]);
    EXPECT_EQ(0, t[1]);
    b.fill(32767);
    ASSERT_EQ(zanStsOk, zaniTransformQuantFwdLumaDC4x4_H264_16s_C1I(b.data(), t.data(), 51, &num, 0, scan, &last,
                                                                   nullptr));
    EXPECT_EQ(-8, t[0]);
    std::array<Zan32s, 16> w, tw{};
    w.fill(32767);
    ASSERT_EQ(zanStsOk, zaniTransformQuantFwdLumaDC4x4_H264_32s_C1I(w.data(), tw.data(), 51, &num, 0, scan, &last,
                                                                   nullptr));
    EXPECT_EQ(262136, tw[0]);
    // Chroma 2x2: 4 * 32767 = 131068 keeps -4.
    std::array<Zan16s, 4> c, ct{};
    c.fill(32767);
    ASSERT_EQ(zanStsOk, zaniTransformQuantChromaDC_H264_16s_C1I(c.data(), ct.data(), 39, &num, 0, 1));
    EXPECT_EQ(-4, ct[0]);
    c.fill(32767);
    ASSERT_EQ(zanStsOk, zaniTransformQuantFwdChromaDC2x2_H264_16s_C1I(c.data(), ct.data(), 39, &num, 0, 1, nullptr));
    EXPECT_EQ(-4, ct[0]);
}

// An impulse of 8 at (0, 0): the row butterfly gives (8, 12, 8, 10, 8, 6, 4, 3)
// and each column r the same shape scaled, with the shifts truncating.
TEST(H264fwd, Forward8x8KnownAnswers) {
    const Zan16s col[8][8] = {
        {8, 12, 8, 10, 8, 6, 4, 3},   {12, 18, 12, 15, 12, 9, 6, 4}, {8, 12, 8, 10, 8, 6, 4, 3},
        {10, 15, 10, 12, 10, 8, 5, 3}, {8, 12, 8, 10, 8, 6, 4, 3},   {6, 9, 6, 7, 6, 5, 3, 2},
        {4, 6, 4, 5, 4, 3, 2, 1},     {3, 4, 3, 3, 3, 3, 1, 1},
    };
    B64 in{}, out{};
    in[0] = 8;
    ASSERT_EQ(zanStsOk, zaniTransformFwdLuma8x8_H264_16s_C1(in.data(), out.data()));
    for (int i = 0; i < 8; ++i)
        for (int j = 0; j < 8; ++j) EXPECT_EQ(col[j][i], out[i * 8 + j]) << i << "," << j;
    std::array<Zan32s, 64> o32{};
    ASSERT_EQ(zanStsOk, zaniTransformFwdLuma8x8_H264_16s32s_C1(in.data(), o32.data()));
    for (int k = 0; k < 64; ++k) EXPECT_EQ(out[k], o32[k]);
    ASSERT_EQ(zanStsOk, zaniTransformLuma8x8Fwd_H264_16s_C1I(in.data()));
    EXPECT_EQ(out, in);
    // A row of -3: the arithmetic shifts round toward minus infinity:
    // a4 = -3 + (-2) = -5, y = (-3, -5, -3, -4, -3, -2, -2, -2).
    B64 neg{};
    neg[0] = -3;
    std::array<Zan32s, 64> n32{};
    ASSERT_EQ(zanStsOk, zaniTransformFwdLuma8x8_H264_16s32s_C1(neg.data(), n32.data()));
    // Column 0 is the column butterfly of -3: the same shape.
    const Zan32s want[8] = {-3, -5, -3, -4, -3, -2, -2, -2};
    for (int i = 0; i < 8; ++i) EXPECT_EQ(want[i], n32[i * 8]) << i;
    // 64 x 32767 wraps to -64 in 16 bits.
    B64 big;
    big.fill(32767);
    ASSERT_EQ(zanStsOk, zaniTransformFwdLuma8x8_H264_16s_C1(big.data(), out.data()));
    EXPECT_EQ(-64, out[0]);
    ASSERT_EQ(zanStsOk, zaniTransformFwdLuma8x8_H264_16s32s_C1(big.data(), o32.data()));
    EXPECT_EQ(64 * 32767, o32[0]);
    EXPECT_EQ(zanStsNullPtr, zaniTransformLuma8x8Fwd_H264_16s_C1I(nullptr));
    EXPECT_EQ(zanStsNullPtr, zaniTransformFwdLuma8x8_H264_16s32s_C1(big.data(), nullptr));
}

TEST(H264fwd, Quant8x8KnownAnswers) {
    // 4 * 853 = 3412: with 342 << 1 = 684 it reaches 4096 (level 1); 341
    // would not.  3 * 1000 = 3000 reaches it only with the intra rounding
    // 682 << 1 = 1364.
    B64 src{}, scale, dst{}, scan;
    scale.fill(853);
    scale[20] = 1000;
    std::iota(scan.begin(), scan.end(), Zan16s{0});
    src[10] = 4;
    src[20] = -3;
    Zan32s num = -1, last = -1;
    ASSERT_EQ(zanStsOk, zaniQuantLuma8x8_H264_16s_C1(src.data(), dst.data(), 0, 0, scan.data(), scale.data(), &num, &last));
    EXPECT_EQ(1, dst[10]);
    EXPECT_EQ(0, dst[20]);
    EXPECT_EQ(1, num);
    EXPECT_EQ(10, last);
    ASSERT_EQ(zanStsOk, zaniQuantLuma8x8_H264_16s_C1(src.data(), dst.data(), 0, 1, scan.data(), scale.data(), &num, &last));
    EXPECT_EQ(-1, dst[20]);
    EXPECT_EQ(1, dst[10]);
    EXPECT_EQ(2, num);
    EXPECT_EQ(20, last);
    scale.fill(853);
    // Qp6 1: shift 13, inter rounding 1368: 8 * 853 = 6824 + 1368 = 8192.
    B64 s2{};
    s2[63] = -8;
    ASSERT_EQ(zanStsOk, zaniQuantLuma8x8_H264_16s_C1(s2.data(), dst.data(), 1, 0, scan.data(), scale.data(), &num, &last));
    EXPECT_EQ(-1, dst[63]);
    EXPECT_EQ(63, last);
    // 32s: the 64-bit product; Qp6 14.
    std::array<Zan32s, 64> w{}, wd{};
    w[1] = 2000000000;
    scale.fill(32767);
    ASSERT_EQ(zanStsOk, zaniQuantLuma8x8_H264_32s_C1(w.data(), wd.data(), 14, 1, scan.data(), scale.data(), &num, &last));
    EXPECT_EQ(static_cast<Zan32s>((Zan64s{2000000000} * 32767 + (682 << 15)) >> 26), wd[1]);
    EXPECT_EQ(1, num);
    EXPECT_EQ(1, last);
}

TEST(H264fwd, ScaleLevelGenerators) {
    std::array<Zan8u, 16> flat;
    flat.fill(16);
    B16 inv, fwd;
    ASSERT_EQ(zanStsOk, zaniGenScaleLevel4x4_H264_8u16s_C1(flat.data(), inv.data(), fwd.data(), 0));
    EXPECT_EQ((B16{160, 208, 160, 208, 208, 256, 208, 256, 160, 208, 160, 208, 208, 256, 208, 256}), inv);
    EXPECT_EQ((B16{13107, 8066, 13107, 8066, 8066, 5243, 8066, 5243, 13107, 8066, 13107, 8066, 8066, 5243, 8066, 5243}),
              fwd);
    ASSERT_EQ(zanStsOk, zaniGenScaleLevel4x4_H264_8u16s_C1(flat.data(), inv.data(), fwd.data(), 3));
    EXPECT_EQ(224, inv[0]);
    EXPECT_EQ(368, inv[5]);
    EXPECT_EQ(288, inv[1]);
    EXPECT_EQ(9362, fwd[0]);
    EXPECT_EQ(3647, fwd[5]);
    EXPECT_EQ(5825, fwd[1]);
    // Other weights: 16 * F / w by exact division, saturated; w = 0 gives 32767.
    std::array<Zan8u, 16> w = {8, 255, 1, 0, 16, 17, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16};
    ASSERT_EQ(zanStsOk, zaniGenScaleLevel4x4_H264_8u16s_C1(w.data(), inv.data(), fwd.data(), 0));
    EXPECT_EQ(26214, fwd[0]);
    EXPECT_EQ(80, inv[0]);
    EXPECT_EQ(8066 * 16 / 255, fwd[1]);
    EXPECT_EQ(255 * 13, inv[1]);
    EXPECT_EQ(32767, fwd[2]);
    EXPECT_EQ(10, inv[2]);
    EXPECT_EQ(32767, fwd[3]);
    EXPECT_EQ(0, inv[3]);
    EXPECT_EQ(5243 * 16 / 17, fwd[5]);

    // 8x8, flat, rows 10 bytes apart with other bytes between.
    std::array<Zan8u, 80> list;
    list.fill(99);
    for (int i = 0; i < 8; ++i)
        for (int j = 0; j < 8; ++j) list[i * 10 + j] = 16;
    B64 inv8, fwd8;
    ASSERT_EQ(zanStsOk, zaniGenScaleLevel8x8_H264_8u16s_D2(list.data(), 10, inv8.data(), fwd8.data(), 0));
    const Zan16s row0inv[8] = {320, 304, 400, 304, 320, 304, 400, 304};
    const Zan16s row0fwd[8] = {13107, 12222, 16777, 12222, 13107, 12222, 16777, 12222};
    for (int j = 0; j < 8; ++j) {
        EXPECT_EQ(row0inv[j], inv8[j]) << j;
        EXPECT_EQ(row0fwd[j], fwd8[j]) << j;
    }
    EXPECT_EQ(18 * 16, inv8[9]);
    EXPECT_EQ(11428, fwd8[9]);
    EXPECT_EQ(32 * 16, inv8[18]);
    EXPECT_EQ(20972, fwd8[18]);
    EXPECT_EQ(24 * 16, inv8[10]);
    EXPECT_EQ(15481, fwd8[10]);
    ASSERT_EQ(zanStsOk, zaniGenScaleLevel8x8_H264_8u16s_D2(list.data(), 10, inv8.data(), fwd8.data(), 5));
    EXPECT_EQ(36 * 16, inv8[0]);
    EXPECT_EQ(7282, fwd8[0]);
    EXPECT_EQ(58 * 16, inv8[18]);
    EXPECT_EQ(11570, fwd8[18]);

    // Statuses: pointers, then QpRem (-11 for 4x4, -192 for 8x8); nothing written.
    inv.fill(1);
    fwd.fill(2);
    EXPECT_EQ(zanStsOutOfRange, zaniGenScaleLevel4x4_H264_8u16s_C1(flat.data(), inv.data(), fwd.data(), 6));
    EXPECT_EQ(zanStsOutOfRange, zaniGenScaleLevel4x4_H264_8u16s_C1(flat.data(), inv.data(), fwd.data(), -1));
    EXPECT_EQ(zanStsNullPtr, zaniGenScaleLevel4x4_H264_8u16s_C1(flat.data(), nullptr, fwd.data(), 6));
    EXPECT_EQ(zanStsQpBad, zaniGenScaleLevel8x8_H264_8u16s_D2(list.data(), 10, inv8.data(), fwd8.data(), 6));
    EXPECT_EQ(zanStsNullPtr, zaniGenScaleLevel8x8_H264_8u16s_D2(nullptr, 10, inv8.data(), fwd8.data(), 6));
    EXPECT_EQ(1, inv[0]);
    EXPECT_EQ(2, fwd[15]);
    EXPECT_EQ(7282, fwd8[0]);
}

// The forward transforms against a plain model of the standard's inverse
// (the 4x4 and 8x8 butterflies with their halvings, dequantisation with
// the flat level scales, (x + 32) >> 6): residuals come back within 2 at
// QP 0, which no transposed, reordered or mis-signed forward matrix does.
namespace inverse_model {

void inv4(Zan32s* x, int s) {
    const Zan32s e0 = x[0] + x[2 * s], e1 = x[0] - x[2 * s];
    const Zan32s e2 = (x[s] >> 1) - x[3 * s], e3 = x[s] + (x[3 * s] >> 1);
    x[0] = e0 + e3;
    x[s] = e1 + e2;
    x[2 * s] = e1 - e2;
    x[3 * s] = e0 - e3;
}

void inv8(Zan32s* x, int s) {
    const Zan32s d0 = x[0], d1 = x[s], d2 = x[2 * s], d3 = x[3 * s], d4 = x[4 * s], d5 = x[5 * s], d6 = x[6 * s],
                 d7 = x[7 * s];
    const Zan32s e0 = d0 + d4, e1 = -d3 + d5 - d7 - (d7 >> 1), e2 = d0 - d4, e3 = d1 + d7 - d3 - (d3 >> 1);
    const Zan32s e4 = (d2 >> 1) - d6, e5 = -d1 + d7 + d5 + (d5 >> 1), e6 = d2 + (d6 >> 1),
                 e7 = d3 + d5 + d1 + (d1 >> 1);
    const Zan32s f0 = e0 + e6, f1 = e1 + (e7 >> 2), f2 = e2 + e4, f3 = e3 + (e5 >> 2), f4 = e2 - e4,
                 f5 = (e3 >> 2) - e5, f6 = e0 - e6, f7 = e7 - (e1 >> 2);
    x[0] = f0 + f7;
    x[s] = f2 + f5;
    x[2 * s] = f4 + f3;
    x[3 * s] = f6 + f1;
    x[4 * s] = f6 - f1;
    x[5 * s] = f4 - f3;
    x[6 * s] = f2 - f5;
    x[7 * s] = f0 - f7;
}

}  // namespace inverse_model

TEST(H264fwd, RoundTripThroughStandardInverse) {
    std::uint32_t seed = 12345;
    auto rnd = [&seed]() {
        seed = seed * 1664525u + 1013904223u;
        return static_cast<Zan32s>((seed >> 8) % 511) - 255;
    };
    std::array<Zan8u, 64> flat;
    flat.fill(16);
    B16 inv4, fwd4;
    ASSERT_EQ(zanStsOk, zaniGenScaleLevel4x4_H264_8u16s_C1(flat.data(), inv4.data(), fwd4.data(), 0));
    B64 inv8, fwd8;
    ASSERT_EQ(zanStsOk, zaniGenScaleLevel8x8_H264_8u16s_D2(flat.data(), 8, inv8.data(), fwd8.data(), 0));
    B64 scale8;  // the 8x8 quantiser shifts by 12 + Qp6: factors over 16
    for (int k = 0; k < 64; ++k) scale8[k] = static_cast<Zan16s>(fwd8[k] >> 4);
    B64 scan;
    std::iota(scan.begin(), scan.end(), Zan16s{0});
    Zan32s worst4 = 0, worst8 = 0;
    for (int round = 0; round < 50; ++round) {
        B16 x4, lev4;
        for (auto& v : x4) v = static_cast<Zan16s>(rnd());
        Zan32s num, last;
        ASSERT_EQ(zanStsOk, zaniTransformQuantFwd4x4_H264_16s_C1(x4.data(), lev4.data(), 0, &num, 1, scan.data(),
                                                                &last, nullptr));
        Zan32s r4[16];
        for (int k = 0; k < 16; ++k) r4[k] = (lev4[k] * inv4[k] + 8) >> 4;  // QP 0: (c * scale + 8) >> 4
        for (int i = 0; i < 4; ++i) inverse_model::inv4(r4 + 4 * i, 1);
        for (int j = 0; j < 4; ++j) inverse_model::inv4(r4 + j, 4);
        for (int k = 0; k < 16; ++k) worst4 = std::max(worst4, std::abs(((r4[k] + 32) >> 6) - x4[k]));

        B64 x8, y8, lev8;
        for (auto& v : x8) v = static_cast<Zan16s>(rnd());
        ASSERT_EQ(zanStsOk, zaniTransformFwdLuma8x8_H264_16s_C1(x8.data(), y8.data()));
        ASSERT_EQ(zanStsOk, zaniQuantLuma8x8_H264_16s_C1(y8.data(), lev8.data(), 0, 1, scan.data(), scale8.data(),
                                                        &num, &last));
        Zan32s r8[64];
        for (int k = 0; k < 64; ++k) r8[k] = (lev8[k] * inv8[k] + 32) >> 6;  // QP 0: (c * scale + 32) >> 6
        for (int i = 0; i < 8; ++i) inverse_model::inv8(r8 + 8 * i, 1);
        for (int j = 0; j < 8; ++j) inverse_model::inv8(r8 + j, 8);
        for (int k = 0; k < 64; ++k) worst8 = std::max(worst8, std::abs(((r8[k] + 32) >> 6) - x8[k]));
    }
    EXPECT_LE(worst4, 2);
    EXPECT_LE(worst8, 2);
}

}  // namespace
