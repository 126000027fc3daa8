// H.263 resampling and PB backward prediction through the exported
// functions: statuses in their order, outputs untouched on failure, known
// answers worked out by hand.
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <vector>

#include "zanvc.h"

namespace {

constexpr Zan32s kStep = 64;
struct Plane {
    std::array<Zan8u, kStep * 48> px;
    explicit Plane(Zan8u v) { px.fill(v); }
    Zan8u* p() { return px.data(); }
    Zan8u& at(int x, int y) { return px[static_cast<size_t>(y * kStep + x)]; }
};

TEST(Resample263, StatusesInOrderAndNothingWritten) {
    Plane s(10), d(77);
    const Plane d0 = d;
    // Null beats a bad size.
    EXPECT_EQ(zaniUpsampleFour_H263_8u_C1R(nullptr, kStep, {5, 4}, d.p(), kStep, 0, -1), zanStsNullPtr);
    EXPECT_EQ(zaniUpsampleFour_H263_8u_C1R(s.p(), kStep, {4, 4}, nullptr, kStep, 0, -1), zanStsNullPtr);
    EXPECT_EQ(zaniUpsampleFour_H263_8u_C1R(s.p(), kStep, {5, 4}, d.p(), kStep, 0, -1), zanStsSizeBad);
    EXPECT_EQ(zaniUpsampleFour_H263_8u_C1R(s.p(), kStep, {4, 2}, d.p(), kStep, 0, -1), zanStsSizeBad);
    EXPECT_EQ(zaniUpsampleFour_H263_8u_C1R(s.p(), kStep, {4, 7}, d.p(), kStep, 0, -1), zanStsSizeBad);
    EXPECT_EQ(zaniSpatialInterpolation_H263_8u_C1R(nullptr, kStep, {3, 4}, d.p(), kStep, 3), zanStsNullPtr);
    EXPECT_EQ(zaniSpatialInterpolation_H263_8u_C1R(s.p(), kStep, {6, 5}, d.p(), kStep, 2), zanStsSizeBad);
    EXPECT_EQ(zaniSpatialInterpolation_H263_8u_C1R(s.p(), kStep, {2, 8}, d.p(), kStep, 1), zanStsSizeBad);
    EXPECT_EQ(zaniDownsampleFour_H263_8u_C1R(s.p(), kStep, {0, 4}, nullptr, kStep, 0), zanStsNullPtr);
    EXPECT_EQ(zaniDownsampleFour_H263_8u_C1R(s.p(), kStep, {0, 4}, d.p(), kStep, 0), zanStsSizeBad);
    EXPECT_EQ(zaniDownsampleFour_H263_8u_C1R(s.p(), kStep, {4, -1}, d.p(), kStep, 0), zanStsSizeBad);
    EXPECT_EQ(zaniAddBackPredPB_H263_8u_C1R(nullptr, kStep, {0, 0}, d.p(), kStep, 0), zanStsNullPtr);
    EXPECT_EQ(zaniAddBackPredPB_H263_8u_C1R(s.p(), kStep, {8, 0}, d.p(), kStep, 3), zanStsSizeBad);
    EXPECT_EQ(zaniAddBackPredPB_H263_8u_C1R(s.p(), kStep, {0, 8}, d.p(), kStep, 3), zanStsSizeBad);
    EXPECT_EQ(d.px, d0.px);
    Zan16s b[256] = {};
    EXPECT_EQ(zaniUpsampleFour8x8_H263_16s_C1R(nullptr, 16, b, 32), zanStsNullPtr);
    EXPECT_EQ(zaniUpsampleFour8x8_H263_16s_C1R(b, 16, nullptr, 32), zanStsNullPtr);
    EXPECT_EQ(zaniDownsampleFour16x16_H263_16s_C1R(nullptr, 32, b, 16), zanStsNullPtr);
    EXPECT_EQ(zaniDownsampleFour16x16_H263_16s_C1R(b, 32, nullptr, 16), zanStsNullPtr);
    // Smallest accepted sizes.
    EXPECT_EQ(zaniUpsampleFour_H263_8u_C1R(s.p(), kStep, {4, 4}, d.p(), kStep, 0, -1), zanStsOk);
    EXPECT_EQ(zaniDownsampleFour_H263_8u_C1R(s.p(), kStep, {1, 1}, d.p(), kStep, 0), zanStsOk);
    EXPECT_EQ(zaniAddBackPredPB_H263_8u_C1R(s.p(), kStep, {1, 1}, d.p(), kStep, 0), zanStsOk);
}

TEST(Resample263, FlatStaysFlat) {
    for (Zan8u v : {0, 1, 128, 254, 255})
        for (Zan32s r : {0, 1}) {
            Plane s(v), d(3);
            ASSERT_EQ(zaniUpsampleFour_H263_8u_C1R(s.p(), kStep, {20, 6}, d.p(), kStep, r, -1), zanStsOk);
            for (int y = 0; y < 12; ++y)
                for (int x = 0; x < 40; ++x) ASSERT_EQ(d.at(x, y), v) << x << "," << y;
            EXPECT_EQ(d.at(40, 0), 3);  // beyond the destination
            EXPECT_EQ(d.at(0, 12), 3);
            Plane e(3);
            ASSERT_EQ(zaniDownsampleFour_H263_8u_C1R(s.p(), kStep, {20, 6}, e.p(), kStep, r), zanStsOk);
            for (int y = 0; y < 3; ++y)
                for (int x = 0; x < 10; ++x) ASSERT_EQ(e.at(x, y), v);
            EXPECT_EQ(e.at(10, 0), 3);
            EXPECT_EQ(e.at(0, 3), 3);
            for (Zan32s t : {1, 2, 3, 7}) {
                Plane f(3);
                ASSERT_EQ(zaniSpatialInterpolation_H263_8u_C1R(s.p(), kStep, {16, 4}, f.p(), kStep, t), zanStsOk);
                Zan32s ow = t == 2 ? 16 : 32, oh = t == 2 || t == 3 ? 8 : 4;
                for (int y = 0; y < oh; ++y)
                    for (int x = 0; x < ow; ++x) ASSERT_EQ(f.at(x, y), v);
                EXPECT_EQ(f.at(ow, 0), 3);
                EXPECT_EQ(f.at(0, oh), 3);
            }
            Plane g(v);
            ASSERT_EQ(zaniAddBackPredPB_H263_8u_C1R(s.p(), kStep, {16, 16}, g.p(), kStep, 3), zanStsOk);
            EXPECT_EQ(g.at(15, 15), v);
        }
}

TEST(Resample263, UpsampleKnownAnswers) {
    // A single bright sample at (1, 1) of a 4x4 zero plane.
    Plane s(0), d(0);
    s.at(1, 1) = 160;
    ASSERT_EQ(zaniUpsampleFour_H263_8u_C1R(s.p(), kStep, {4, 4}, d.p(), kStep, 0, -1), zanStsOk);
    EXPECT_EQ(d.at(2, 2), (9 * 160 + 7) >> 4);  // 90
    EXPECT_EQ(d.at(3, 3), (9 * 160 + 7) >> 4);
    EXPECT_EQ(d.at(1, 2), (3 * 160 + 7) >> 4);  // 30
    EXPECT_EQ(d.at(1, 1), (160 + 7) >> 4);      // 10
    EXPECT_EQ(d.at(0, 0), 0);
    // Rounding: 16 * a + 7 + r with a sum of 8 / 16.
    Plane s1(0), d0(0), d1(0);
    s1.at(0, 0) = 8;  // output (1, 1) sees it with weight 1 as d... output (0,0) with weight 9 + 3 + 3 + 1 replicated
    ASSERT_EQ(zaniUpsampleFour_H263_8u_C1R(s1.p(), kStep, {4, 4}, d0.p(), kStep, 0, -1), zanStsOk);
    ASSERT_EQ(zaniUpsampleFour_H263_8u_C1R(s1.p(), kStep, {4, 4}, d1.p(), kStep, 1, -1), zanStsOk);
    EXPECT_EQ(d0.at(0, 0), 8);           // edge replicated: 16 * 8 / 16
    EXPECT_EQ(d0.at(2, 2), (8 + 7) >> 4);  // 0
    EXPECT_EQ(d1.at(2, 2), (8 + 8) >> 4);  // 1
    EXPECT_EQ(d0.at(1, 0), (12 * 8 + 7) >> 4);  // 6 (row replicated above)
    // Rounding uses its low bit only.
    Plane d3(0);
    ASSERT_EQ(zaniUpsampleFour_H263_8u_C1R(s1.p(), kStep, {4, 4}, d3.p(), kStep, 3, -1), zanStsOk);
    EXPECT_EQ(d3.px, d1.px);
    // A fill value stands beyond the edge: a zero plane with fill 255.
    Plane z(0), f(0);
    ASSERT_EQ(zaniUpsampleFour_H263_8u_C1R(z.p(), kStep, {4, 4}, f.p(), kStep, 0, 255), zanStsOk);
    EXPECT_EQ(f.at(0, 0), (7 * 255 + 7) >> 4);  // b, c, d beyond: 3 + 3 + 1
    EXPECT_EQ(f.at(3, 0), (4 * 255 + 7) >> 4);  // only the row above
    EXPECT_EQ(f.at(3, 3), 0);
    EXPECT_EQ(f.at(7, 7), (7 * 255 + 7) >> 4);
    // fill takes its low byte: 256 + 255.
    Plane f2(0);
    ASSERT_EQ(zaniUpsampleFour_H263_8u_C1R(z.p(), kStep, {4, 4}, f2.p(), kStep, 0, 511), zanStsOk);
    EXPECT_EQ(f2.px, f.px);
}

TEST(Resample263, SpatialInterpolationDirections) {
    Plane s(0);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 4; ++x) s.at(x, y) = static_cast<Zan8u>(10 * x + 100 * y);
    Plane h(0), h7(0), v(0), two(0), up(0);
    ASSERT_EQ(zaniSpatialInterpolation_H263_8u_C1R(s.p(), kStep, {4, 4}, h.p(), kStep, 1), zanStsOk);
    ASSERT_EQ(zaniSpatialInterpolation_H263_8u_C1R(s.p(), kStep, {4, 4}, h7.p(), kStep, 7), zanStsOk);
    ASSERT_EQ(zaniSpatialInterpolation_H263_8u_C1R(s.p(), kStep, {4, 4}, v.p(), kStep, 2), zanStsOk);
    ASSERT_EQ(zaniSpatialInterpolation_H263_8u_C1R(s.p(), kStep, {4, 4}, two.p(), kStep, 3), zanStsOk);
    ASSERT_EQ(zaniUpsampleFour_H263_8u_C1R(s.p(), kStep, {4, 4}, up.p(), kStep, 1, -1), zanStsOk);
    EXPECT_EQ(h7.px, h.px);
    EXPECT_EQ(two.px, up.px);
    // Horizontal: 0 10 20 30 -> 0 3 8 13 18 23 28 30 (3a + b + 2) >> 2.
    const int wantH[8] = {0, 3, 8, 13, 18, 23, 28, 30};
    for (int x = 0; x < 8; ++x) EXPECT_EQ(h.at(x, 1), wantH[x] + 100) << x;
    EXPECT_EQ(h.at(8, 0), 0);
    EXPECT_EQ(h.at(0, 4), 0);
    // Vertical on column 0: 0 100 200 300&255=44 ... use column 1 rows 0..1: 10, 110.
    EXPECT_EQ(v.at(1, 0), 10);
    EXPECT_EQ(v.at(1, 1), (3 * 10 + 110 + 2) >> 2);  // 35
    EXPECT_EQ(v.at(1, 2), (3 * 110 + 10 + 2) >> 2);  // 85
    EXPECT_EQ(v.at(4, 0), 0);
}

TEST(Resample263, DownsampleKnownAnswers) {
    Plane s(0), d0(9), d1(9);
    s.at(0, 0) = 1;
    s.at(1, 0) = 0;
    s.at(0, 1) = 0;
    s.at(1, 1) = 0;  // sum 1: +1 -> 0, +2 -> 0
    s.at(2, 0) = 1;
    s.at(3, 0) = 1;  // sum 2: +1 -> 0, +2 -> 1
    s.at(4, 0) = 255;
    s.at(5, 0) = 255;
    s.at(4, 1) = 255;
    s.at(5, 1) = 255;
    s.at(6, 0) = 7;  // odd last column, not read
    ASSERT_EQ(zaniDownsampleFour_H263_8u_C1R(s.p(), kStep, {7, 3}, d0.p(), kStep, 0), zanStsOk);
    ASSERT_EQ(zaniDownsampleFour_H263_8u_C1R(s.p(), kStep, {7, 3}, d1.p(), kStep, 1), zanStsOk);
    EXPECT_EQ(d0.at(0, 0), 0);
    EXPECT_EQ(d0.at(1, 0), 0);
    EXPECT_EQ(d1.at(1, 0), 1);
    EXPECT_EQ(d0.at(2, 0), 255);
    EXPECT_EQ(d1.at(2, 0), 255);
    EXPECT_EQ(d0.at(3, 0), 9);  // width 7 gives 3 columns
    EXPECT_EQ(d0.at(0, 1), 9);  // height 3 gives 1 row
}

TEST(Resample263, Blocks16sKnownAnswers) {
    Zan16s s[256], d[256];
    for (int i = 0; i < 256; ++i) s[i] = static_cast<Zan16s>(i % 2 ? 32767 : -32768);
    std::fill(std::begin(d), std::end(d), Zan16s{5});
    // Destination rows 32 bytes apart: 8 results, then 8 untouched samples.
    ASSERT_EQ(zaniDownsampleFour16x16_H263_16s_C1R(s, 32, d, 32), zanStsOk);
    EXPECT_EQ(d[0], (-32768 + 32767 - 32768 + 32767 + 2) >> 2);  // 0
    EXPECT_EQ(d[8], 5);
    for (auto& v : s) v = 32767;
    ASSERT_EQ(zaniDownsampleFour16x16_H263_16s_C1R(s, 32, d, 32), zanStsOk);
    EXPECT_EQ(d[7 * 16 + 7], 32767);
    for (auto& v : s) v = -3;
    ASSERT_EQ(zaniDownsampleFour16x16_H263_16s_C1R(s, 32, d, 32), zanStsOk);
    EXPECT_EQ(d[7], (-12 + 2) >> 2);  // -3 (arithmetic shift)
    EXPECT_EQ(d[15], 5);
    EXPECT_EQ(d[8 * 16], 5);          // below the 8 rows
    // Upsampling: one sample -16 at (0, 0) of a zero block, edge replicated.
    Zan16s u[64] = {};
    u[0] = -16;
    Zan16s o[256];
    ASSERT_EQ(zaniUpsampleFour8x8_H263_16s_C1R(u, 16, o, 32), zanStsOk);
    EXPECT_EQ(o[0], -16);                          // all four replicated from it
    EXPECT_EQ(o[1], (12 * -16 + 8) >> 4);          // -12
    EXPECT_EQ(o[16 + 1], (9 * -16 + 8) >> 4);      // -9 (row 1, column 1)
    EXPECT_EQ(o[2 * 16 + 2], (-16 + 8) >> 4);      // -1 (arithmetic shift)
    EXPECT_EQ(o[15 * 16 + 15], 0);
    for (auto& v : u) v = 32767;
    ASSERT_EQ(zaniUpsampleFour8x8_H263_16s_C1R(u, 16, o, 32), zanStsOk);
    EXPECT_EQ(o[100], 32767);
}

TEST(Resample263, BackPredKnownAnswers) {
    Plane s(0), d(0);
    s.at(0, 0) = 10;
    s.at(1, 0) = 21;
    s.at(0, 1) = 30;
    s.at(1, 1) = 41;
    const Zan8u start = 101;
    const int ref[4] = {10, (10 + 30 + 1) >> 1, (10 + 21 + 1) >> 1, (10 + 21 + 30 + 41 + 2) >> 2};
    for (int pos = 0; pos < 4; ++pos) {
        Plane o(start);
        ASSERT_EQ(zaniAddBackPredPB_H263_8u_C1R(s.p(), kStep, {1, 1}, o.p(), kStep, pos), zanStsOk);
        EXPECT_EQ(o.at(0, 0), (start + ref[pos]) >> 1) << pos;
        EXPECT_EQ(o.at(1, 0), start);
        EXPECT_EQ(o.at(0, 1), start);
    }
    // (d + r) >> 1 truncates: 255 and 254 give 254, 1 and 0 give 0.
    Plane a(255), b(254);
    ASSERT_EQ(zaniAddBackPredPB_H263_8u_C1R(a.p(), kStep, {16, 8}, b.p(), kStep, 0), zanStsOk);
    EXPECT_EQ(b.at(15, 7), 254);
    EXPECT_EQ(b.at(16, 7), 254);  // untouched beyond
    EXPECT_EQ(b.at(3, 7), 254);
    Plane c(1), e(0);
    ASSERT_EQ(zaniAddBackPredPB_H263_8u_C1R(c.p(), kStep, {13, 3}, e.p(), kStep, 2), zanStsOk);
    EXPECT_EQ(e.at(12, 2), 0);
}

}  // namespace
