// Camera tools through the exports: statuses in their documented order,
// nothing written on failure, and known answers worked out by hand: the
// colour anchors, the avg trees' rounding (pair against single pixel), the
// nearest-sample picks, the crossed steps of the planar source.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "zanvc.h"

namespace {

TEST(Camera, ResizeStatusesInOrder) {
    std::vector<Zan8u> src(64 * 16, 128);
    std::vector<Zan16u> dst(64, 0x1234);
    Zan8u* s = src.data();
    Zan16u* d = dst.data();
    EXPECT_EQ(zaniResizeCCRotate_8u_C2R(nullptr, 64, {1, 1}, d, 64, 3, 0, 0, 9), zanStsNullPtr);
    EXPECT_EQ(zaniResizeCCRotate_8u_C2R(s, 64, {16, 16}, nullptr, 64, 2, 1, 0, 0), zanStsNullPtr);
    // the size check comes before the factor: a wrong factor on a tiny picture is a size error
    EXPECT_EQ(zaniResizeCCRotate_8u_C2R(s, 64, {2, 16}, d, 64, 3, 0, 0, 9), zanStsSizeBad);
    EXPECT_EQ(zaniResizeCCRotate_8u_C2R(s, 64, {16, 7}, d, 64, 8, 1, 0, 0), zanStsSizeBad);
    EXPECT_EQ(zaniResizeCCRotate_8u_C2R(s, 64, {16, 16}, d, 64, 3, 0, 0, 9), zanStsResizeFactorBad);
    EXPECT_EQ(zaniResizeCCRotate_8u_C2R(s, 64, {16, 16}, d, 64, 16, 1, 0, 0), zanStsResizeFactorBad);
    EXPECT_EQ(zaniResizeCCRotate_8u_C2R(s, 64, {16, 16}, d, 64, 4, 0, 0, 9), zanStsInterpolationBad);
    EXPECT_EQ(zaniResizeCCRotate_8u_C2R(s, 64, {16, 16}, d, 64, 4, 3, 0, 0), zanStsInterpolationBad);
    EXPECT_EQ(zaniResizeCCRotate_8u_C2R(s, 64, {16, 16}, d, 64, 4, 2, 0, 4), zanStsBadArg);
    EXPECT_EQ(zaniResizeCCRotate_8u_C2R(s, 64, {16, 16}, d, 64, 4, 2, 0, -1), zanStsBadArg);
    for (Zan16u v : dst) ASSERT_EQ(v, 0x1234);
}

// Every source pixel Y, Cb, Cr.
std::vector<Zan8u> flat422(int w, int h, Zan8u y, Zan8u cb, Zan8u cr) {
    std::vector<Zan8u> s(static_cast<size_t>(2 * w * h));
    for (size_t i = 0; i < s.size(); i += 4) {
        s[i] = cb;
        s[i + 1] = y;
        s[i + 2] = cr;
        s[i + 3] = y;
    }
    return s;
}

TEST(Camera, ColourAnchors) {
    // Y 235, Cb = Cr = 128: L = 261048, every component saturates at >> 13
    auto white = flat422(4, 2, 235, 128, 128);
    Zan16u out[2] = {};
    ASSERT_EQ(zaniResizeCCRotate_8u_C2R(white.data(), 8, {4, 2}, out, 4, 2, 1, 0, 0), zanStsOk);
    // B = 261048 >> 13 = 31, R = 31, G = 261048 >> 12 = 63
    EXPECT_EQ(out[0], 0xFFFF);
    EXPECT_EQ(out[1], 0xFFFF);
    ASSERT_EQ(zaniResizeCCRotate_8u_C2R(white.data(), 8, {4, 2}, out, 4, 2, 1, 1, 0), zanStsOk);
    EXPECT_EQ(out[0], 0x7FFF);  // 5-5-5, bit 15 zero
    // Y 16: L = 0, all components 0
    auto black = flat422(4, 2, 16, 128, 128);
    ASSERT_EQ(zaniResizeCCRotate_8u_C2R(black.data(), 8, {4, 2}, out, 4, 2, 2, 0, 0), zanStsOk);
    EXPECT_EQ(out[0], 0);
    EXPECT_EQ(out[1], 0);
    // Y 100, Cb 90, Cr 200: L = 100 * 1192 - 19072 = 100128, u = -38, v = 72
    // B = (100128 - 78470) >> 13 = 21658 >> 13 = 2
    // R = (100128 + 117648) >> 13 = 217776 >> 13 = 26
    // G = 100128 + 15238 - 59976 = 55390: >> 12 = 13 (565), >> 13 = 6 (555)
    auto c = flat422(4, 2, 100, 90, 200);
    ASSERT_EQ(zaniResizeCCRotate_8u_C2R(c.data(), 8, {4, 2}, out, 4, 2, 1, 0, 0), zanStsOk);
    EXPECT_EQ(out[0], 2 | 13 << 5 | 26 << 11);
    ASSERT_EQ(zaniResizeCCRotate_8u_C2R(c.data(), 8, {4, 2}, out, 4, 2, 1, 1, 0), zanStsOk);
    EXPECT_EQ(out[0], 2 | 6 << 5 | 26 << 10);
    // negative sums shift arithmetically and clamp at 0: Y 16, Cb 0 gives
    // B = (0 - 264320) >> 13 = -33 -> 0; G = 51328 >> 12 = 12
    auto neg = flat422(4, 2, 16, 0, 128);
    ASSERT_EQ(zaniResizeCCRotate_8u_C2R(neg.data(), 8, {4, 2}, out, 4, 2, 1, 0, 0), zanStsOk);
    EXPECT_EQ(out[0], 0 | 12 << 5 | 0 << 11);
}

// At z = 4 the pair joins its rows by a tree of avg, the single last
// pixel by a rounded sum.  Luma rows 19, 20, 19, 19: the tree gives
// avg(avg(19, 20), avg(19, 19)) = avg(20, 19) = 20, the sum
// (19 + 20 + 19 + 19 + 2) >> 2 = 19.  L(20) = 4768 gives G = 1 (>> 12);
// L(19) = 3576 gives 0.  A width of 3z: one pair and one single pixel.
TEST(Camera, PairTreeAndSingleSumRoundDifferently) {
    const int w = 12, h = 4;
    const Zan8u rows[4] = {19, 20, 19, 19};
    std::vector<Zan8u> s;
    for (int r = 0; r < h; ++r) {
        auto row = flat422(w, 1, rows[r], 128, 128);
        s.insert(s.end(), row.begin(), row.end());
    }
    Zan16u out[4] = {9, 9, 9, 9};
    ASSERT_EQ(zaniResizeCCRotate_8u_C2R(s.data(), 2 * w, {w, h}, out, 6, 4, 2, 0, 0), zanStsOk);
    EXPECT_EQ(out[0], 1 << 5);
    EXPECT_EQ(out[1], 1 << 5);
    EXPECT_EQ(out[2], 0);
    EXPECT_EQ(out[3], 9);
}

// Nearest: Y from bytes 1 and 1 + 2z of the first row only, chroma from
// bytes 0 and 2; with an odd width and height the work is done and 35 comes
// back.
TEST(Camera, NearestPicksAndOddSize) {
    const int z = 8, w = 2 * z + 1, h = 8 + 1;
    auto s = flat422(w + 1, h, 235, 128, 128);  // rows after the first: white
    const int step = 2 * (w + 1);
    for (int b = 0; b < step; ++b) s[static_cast<size_t>(b)] = b % 2 ? 16 : 128;  // first row black
    s[static_cast<size_t>(1 + 2 * z)] = 235;                                   // the second pixel's pick
    Zan16u out[2] = {7, 7};
    ASSERT_EQ(zaniResizeCCRotate_8u_C2R(s.data(), step, {w, h}, out, 4, z, 1, 0, 0), zanStsOddSize);
    EXPECT_EQ(out[0], 0);
    EXPECT_EQ(out[1], 0xFFFF);
    // 15 x 15 at z = 8: one single pixel, then 35
    Zan16u one[2] = {7, 7};
    ASSERT_EQ(zaniResizeCCRotate_8u_C2R(s.data(), step, {15, 15}, one, 4, z, 2, 0, 3), zanStsOddSize);
    EXPECT_NE(one[0], 7);
    EXPECT_EQ(one[1], 7);
}

TEST(Camera, To420StatusesAndOddSizes) {
    std::vector<Zan8u> src(6 * 3, 0), y(16, 0xEE), u(4, 0xEE), v(4, 0xEE);
    Zan8u* dst[3] = {y.data(), u.data(), v.data()};
    Zan32s dstStep[3] = {2, 1, 1};
    Zan8u* nulls[3] = {y.data(), nullptr, v.data()};
    EXPECT_EQ(zaniCbYCr422ToYCbCr420_Rotate_8u_C2P3R(nullptr, 6, {1, 1}, dst, dstStep, 0), zanStsNullPtr);
    EXPECT_EQ(zaniCbYCr422ToYCbCr420_Rotate_8u_C2P3R(src.data(), 6, {1, 1}, nullptr, dstStep, 0), zanStsNullPtr);
    EXPECT_EQ(zaniCbYCr422ToYCbCr420_Rotate_8u_C2P3R(src.data(), 6, {1, 1}, nulls, dstStep, 0), zanStsNullPtr);
    EXPECT_EQ(zaniCbYCr422ToYCbCr420_Rotate_8u_C2P3R(src.data(), 6, {1, 3}, dst, dstStep, 0), zanStsSizeBad);
    EXPECT_EQ(zaniCbYCr422ToYCbCr420_Rotate_8u_C2P3R(src.data(), 6, {3, 1}, dst, dstStep, 0), zanStsSizeBad);
    // a rotation outside 0..3 writes nothing and returns what a valid call would
    EXPECT_EQ(zaniCbYCr422ToYCbCr420_Rotate_8u_C2P3R(src.data(), 6, {3, 3}, dst, dstStep, 4), zanStsOddSize);
    EXPECT_EQ(zaniCbYCr422ToYCbCr420_Rotate_8u_C2P3R(src.data(), 6, {2, 2}, dst, dstStep, -1), zanStsOk);
    for (Zan8u b : y) ASSERT_EQ(b, 0xEE);
    for (Zan8u b : u) ASSERT_EQ(b, 0xEE);
    // 3 x 3: the top-left 2 x 2 is converted, then 35
    const Zan8u c2[18] = {10, 20, 30, 21, 11, 99, 31, 99, 99, 99, 99, 99,
                          13, 22, 33, 23, 14, 99};
    Zan8u c2b[18];
    std::memcpy(c2b, c2, sizeof c2);
    ASSERT_EQ(zaniCbYCr422ToYCbCr420_Rotate_8u_C2P3R(c2b, 6, {3, 3}, dst, dstStep, 0), zanStsOddSize);
    // rows 0 and 1 (step 6): Y 20, 21 / 99, 99 ... row 1 starts at byte 6
    EXPECT_EQ(y[0], 20);
    EXPECT_EQ(y[1], 21);
    EXPECT_EQ(y[2], c2[7]);
    EXPECT_EQ(y[3], c2[9]);
    EXPECT_EQ(u[0], (10 + c2[6] + 1) / 2);
    EXPECT_EQ(v[0], (30 + c2[8] + 1) / 2);
    EXPECT_EQ(u[1], 0xEE);

    // planar: the source planes are checked after the destination planes
    const Zan8u* srcs[3] = {src.data(), nullptr, src.data()};
    Zan32s srcStep[3] = {2, 2, 2};
    EXPECT_EQ(zaniCbYCr422ToYCbCr420_Rotate_8u_P3R(srcs, srcStep, {0, 0}, dst, dstStep, 0), zanStsNullPtr);
    EXPECT_EQ(zaniCbYCr422ToYCbCr420_Rotate_8u_P3R(nullptr, srcStep, {2, 2}, dst, dstStep, 0), zanStsNullPtr);
}

// The planar source crosses the steps of its first two planes on the second
// row of each pair: Y row 1 is Y row 0 plus srcStep[0], Cb row 1 is Cb row
// 0 plus srcStep[1].
TEST(Camera, PlanarSourceCrossesItsSteps) {
    std::vector<Zan8u> cb(64), yp(64), cr(64);
    for (int i = 0; i < 64; ++i) {
        cb[static_cast<size_t>(i)] = static_cast<Zan8u>(i);
        yp[static_cast<size_t>(i)] = static_cast<Zan8u>(100 + i);
        cr[static_cast<size_t>(i)] = static_cast<Zan8u>(200 + i / 2);
    }
    const Zan8u* src[3] = {cb.data(), yp.data(), cr.data()};
    Zan32s srcStep[3] = {3, 10, 5};  // Cb step 3, Y step 10, Cr step 5
    Zan8u y[8] = {}, u[2] = {}, v[2] = {};
    Zan8u* dst[3] = {y, u, v};
    Zan32s dstStep[3] = {4, 2, 2};
    ASSERT_EQ(zaniCbYCr422ToYCbCr420_Rotate_8u_P3R(src, srcStep, {4, 2}, dst, dstStep, 0), zanStsOk);
    // Y row 0 at yp[0..3]; row 1 at yp[0 + 3] (Cb's step), not yp[10]
    EXPECT_EQ(y[0], 100);
    EXPECT_EQ(y[3], 103);
    EXPECT_EQ(y[4], 103);
    EXPECT_EQ(y[7], 106);
    // Cb row 0 at cb[0], row 1 at cb[0 + 10] (Y's step): avg(0, 10) = 5, avg(1, 11) = 6
    EXPECT_EQ(u[0], 5);
    EXPECT_EQ(u[1], 6);
    // Cr uses its own step for both rows: avg(cr[0], cr[5]) = avg(200, 202) = 201
    EXPECT_EQ(v[0], 201);
    EXPECT_EQ(v[1], (cr[1] + cr[6] + 1) / 2);
}

// Rotations 1 and 2 are inverse to each other when applied twice with
// swapped sizes (through a picture whose luma is its own index).
TEST(Camera, RotationsOneAndTwoUndoEachOther) {
    const int w = 6, h = 4;
    std::vector<Zan8u> s(static_cast<size_t>(2 * w * h));
    for (int i = 0; i < w * h; ++i) s[static_cast<size_t>(2 * i + 1)] = static_cast<Zan8u>(i);
    Zan8u y1[24], u1[6], v1[6], y2[24], u2[6], v2[6];
    Zan8u* d1[3] = {y1, u1, v1};
    Zan32s st1[3] = {h, h / 2, h / 2};
    ASSERT_EQ(zaniCbYCr422ToYCbCr420_Rotate_8u_C2P3R(s.data(), 2 * w, {w, h}, d1, st1, 1), zanStsOk);
    // the rotated picture is h wide and w high; feed its luma back as 4:2:2
    std::vector<Zan8u> t(static_cast<size_t>(2 * w * h));
    for (int i = 0; i < w * h; ++i) t[static_cast<size_t>(2 * i + 1)] = y1[i];
    Zan8u* d2[3] = {y2, u2, v2};
    Zan32s st2[3] = {w, w / 2, w / 2};
    ASSERT_EQ(zaniCbYCr422ToYCbCr420_Rotate_8u_C2P3R(t.data(), 2 * h, {h, w}, d2, st2, 2), zanStsOk);
    for (int i = 0; i < w * h; ++i) EXPECT_EQ(y2[i], i);
}

}  // namespace
