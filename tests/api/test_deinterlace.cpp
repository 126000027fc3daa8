// Deinterlacing through the exported functions: statuses in their order,
// nothing written on failure, the weight-table preparation and known answers
// worked out by hand.
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <vector>

#include "zanvc.h"

namespace {

struct Record {
    alignas(16) std::array<Zan8u, 1056> mem{};
    ZanDeinterlaceBlendState* st = nullptr;
    Record(Zan32s t0, Zan32s t1, double c0, double c1) {
        Zan32s t[2] = {t0, t1};
        double c[2] = {c0, c1};
        EXPECT_EQ(zaniDeinterlaceBlendInit_8u_C1({3, 3}, t, c, &st, mem.data()), zanStsOk);
    }
};

TEST(Deinterlace, BlendRecordLife) {
    Zan32s size = 0;
    EXPECT_EQ(zaniDeinterlaceBlendGetSize_8u_C1(nullptr), zanStsNullPtr);
    EXPECT_EQ(zaniDeinterlaceBlendGetSize_8u_C1(&size), zanStsOk);
    EXPECT_EQ(size, 1056);
    size = 0;
    EXPECT_EQ(zaniDeinterlaceBlendGetSize_8u_C2(&size), zanStsOk);
    EXPECT_EQ(size, 1056);

    Zan32s t[2] = {40, 10};
    double c[2] = {40000.0, -50000.0};
    alignas(16) Zan8u mem[1056];
    ZanDeinterlaceBlendState* st = nullptr;
    // Null pointers beat a bad size; nothing is changed on failure.
    EXPECT_EQ(zaniDeinterlaceBlendInit_8u_C1({1, 1}, t, c, nullptr, mem), zanStsNullPtr);
    EXPECT_EQ(zaniDeinterlaceBlendInit_8u_C2({1, 1}, t, c, &st, nullptr), zanStsNullPtr);
    EXPECT_EQ(zaniDeinterlaceBlendInit_8u_C1({2, 3}, t, c, &st, mem), zanStsSizeBad);
    EXPECT_EQ(zaniDeinterlaceBlendInit_8u_C1({3, 2}, t, c, &st, mem), zanStsSizeBad);
    EXPECT_EQ(st, nullptr);
    EXPECT_EQ(t[0], 40);
    EXPECT_EQ(c[0], 40000.0);
    // The caller's arrays come back sorted and limited.
    ASSERT_EQ(zaniDeinterlaceBlendInit_8u_C2({3, 3}, t, c, &st, mem), zanStsOk);
    EXPECT_EQ(st, reinterpret_cast<ZanDeinterlaceBlendState*>(mem));
    EXPECT_EQ(st->pWeights, reinterpret_cast<Zan16u*>(mem + 32));
    EXPECT_EQ(st->memId, 1);
    EXPECT_EQ(t[0], 10);
    EXPECT_EQ(t[1], 40);
    EXPECT_EQ(c[0], -32768.0);
    EXPECT_EQ(c[1], 32767.0);
    // A record in the caller's memory is not the library's to free.
    EXPECT_EQ(zaniDeinterlaceBlendFree_8u_C1(st), zanStsContextMismatch);
    EXPECT_EQ(zaniDeinterlaceBlendFree_8u_C1(nullptr), zanStsNullPtr);

    Zan32s t2[2] = {10, 50};
    double c2[2] = {0.0, 1.0};
    EXPECT_EQ(zaniDeinterlaceBlendInitAlloc_8u_C1({3, 3}, t2, c2, nullptr), zanStsNullPtr);
    EXPECT_EQ(zaniDeinterlaceBlendInitAlloc_8u_C1({3, 0}, t2, c2, &st), zanStsSizeBad);
    ASSERT_EQ(zaniDeinterlaceBlendInitAlloc_8u_C2({3, 3}, t2, c2, &st), zanStsOk);
    EXPECT_EQ(st->memId, 2);
    EXPECT_EQ(zaniDeinterlaceBlendFree_8u_C2(st), zanStsOk);
}

// s = 1/40, b = 1 - 50/40 = -0.25: B = trunc(-64.5) = -64, S = trunc(6.9) = 6;
// fullMotion = 320 / 6 = 53, zeroMotion = 64 / 6 + 1 = 11.
TEST(Deinterlace, WeightLine) {
    Record r(10, 50, 0.0, 1.0);
    EXPECT_EQ(r.st->slope, 6);
    EXPECT_EQ(r.st->intercept, -64);
    EXPECT_EQ(r.st->fullMotion, 53);
    EXPECT_EQ(r.st->zeroMotion, 11);
    const Zan16u* w = r.st->pWeights;
    EXPECT_EQ(w[10], 0);
    EXPECT_EQ(w[11], 2);
    EXPECT_EQ(w[53], 254);
    EXPECT_EQ(w[54], 256);
    EXPECT_EQ(w[255], 256);
    EXPECT_EQ(w[256 + 11], 254);
    EXPECT_EQ(w[256 + 0], 256);
}

// s = 200, b = 200 - 200 * 101 = -20000: 255 * S + B stays at 256 and 256 - B
// is far beyond 16 bits, so B = 256 - 32767 = -32511 and
// S = trunc((51200 + 32511) / 101) = 828; fullMotion 32767 / 828 = 39,
// zeroMotion 32511 / 828 + 1 = 40.
TEST(Deinterlace, WeightLineKeptInside16Bits) {
    Record r(100, 101, 0.0, 200.0);
    EXPECT_EQ(r.st->intercept, -32511);
    EXPECT_EQ(r.st->slope, 828);
    EXPECT_EQ(r.st->fullMotion, 39);
    EXPECT_EQ(r.st->zeroMotion, 40);
    EXPECT_EQ(r.st->pWeights[39], 0);    // -32511 + 39 * 828 = -219
    EXPECT_EQ(r.st->pWeights[40], 256);  // 609
}

TEST(Deinterlace, WeightSteps) {
    Record zero(0, 0, 0.5, 0.5);
    EXPECT_EQ(zero.st->fullMotion, -1);
    EXPECT_EQ(zero.st->zeroMotion, 0);
    EXPECT_EQ(zero.st->pWeights[0], 256);
    Record full(256, 256, 0.5, 0.5);
    EXPECT_EQ(full.st->zeroMotion, 256);
    EXPECT_EQ(full.st->pWeights[255], 0);
    Record mid(7, 7, 0.5, 0.5);
    EXPECT_EQ(mid.st->pWeights[6], 0);
    EXPECT_EQ(mid.st->pWeights[7], 256);
    // A flat line above 1.0: weight 256 everywhere (B = 512 >= 257).
    Record high(0, 100, 2.0, 2.0);
    EXPECT_EQ(high.st->slope, 0);
    EXPECT_EQ(high.st->intercept, 256);
    EXPECT_EQ(high.st->fullMotion, 255);
    EXPECT_EQ(high.st->zeroMotion, 0);
    // A flat negative line: S 0, B < 0: zeroMotion 256 and B becomes 0.
    Record low(0, 100, -1.0, -1.0);
    EXPECT_EQ(low.st->slope, 0);
    EXPECT_EQ(low.st->intercept, 0);
    EXPECT_EQ(low.st->zeroMotion, 256);
}

// P1 rows 10 20 30 / 100 100 100 / 50 60 70.  Without motion, row 1 is the
// vertical median 50 60 70.  With motion the spatial predictor: edges repeat
// the row above (topField 0), and at x = 1 d1 = |10 - 70| = 60, d2 = |30 - 50| =
// 20, d0 = |20 - 60| = 40: the second diagonal, avg(30, 50) = 40.
TEST(Deinterlace, BlendKnownAnswers) {
    Record step(5, 5, 0.0, 1.0);
    const Zan8u cur[9] = {10, 20, 30, 100, 100, 100, 50, 60, 70};
    Zan8u moved[9];
    std::memcpy(moved, cur, 9);
    moved[3] = moved[4] = moved[5] = 0;
    Zan8u dst[9];
    const Zan8u* still[3] = {cur, cur, cur};
    std::memset(dst, 0xEE, 9);
    ASSERT_EQ(zaniDeinterlaceBlend_8u_C1(still, 3, dst, 3, {3, 3}, 0, 0, 1, step.st), zanStsOk);
    const Zan8u median[9] = {10, 20, 30, 50, 60, 70, 50, 60, 70};
    EXPECT_EQ(0, std::memcmp(dst, median, 9));
    const Zan8u* motion[3] = {moved, cur, cur};  // O is P0: topFirst equals topField
    ASSERT_EQ(zaniDeinterlaceBlend_8u_C1(motion, 3, dst, 3, {3, 3}, 0, 0, 1, step.st), zanStsOk);
    const Zan8u spatial[9] = {10, 20, 30, 10, 40, 30, 50, 60, 70};
    EXPECT_EQ(0, std::memcmp(dst, spatial, 9));
    // O is P2 when topFirst differs: no motion there, the median again.
    ASSERT_EQ(zaniDeinterlaceBlend_8u_C1(motion, 3, dst, 3, {3, 3}, 1, 0, 1, step.st), zanStsOk);
    EXPECT_EQ(0, std::memcmp(dst, median, 9));

    // Height 3 with topField set: row 0 and row 2 (no row below) are copied,
    // row 1 is kept as the caller has it when copyField is 0.
    std::memset(dst, 0xEE, 9);
    ASSERT_EQ(zaniDeinterlaceBlend_8u_C1(motion, 3, dst, 3, {3, 3}, 0, 1, 0, step.st), zanStsOk);
    const Zan8u copied[9] = {10, 20, 30, 0xEE, 0xEE, 0xEE, 50, 60, 70};
    EXPECT_EQ(0, std::memcmp(dst, copied, 9));

    // The weight mixes: W(m) = clamp(-64 + 6m) from the line record; motion 20
    // at every sample gives W = 56: (56 * S + 200 * M) >> 8.
    Record line(10, 50, 0.0, 1.0);
    Zan8u o[9];
    std::memcpy(o, cur, 9);
    o[3] = o[4] = o[5] = 80;
    const Zan8u* mix[3] = {o, cur, cur};
    ASSERT_EQ(zaniDeinterlaceBlend_8u_C1(mix, 3, dst, 3, {3, 3}, 0, 0, 1, line.st), zanStsOk);
    EXPECT_EQ(dst[3], (56 * 10 + 200 * 50) >> 8);
    EXPECT_EQ(dst[4], (56 * 40 + 200 * 60) >> 8);
    EXPECT_EQ(dst[5], (56 * 30 + 200 * 70) >> 8);
}

TEST(Deinterlace, BlendStatuses) {
    Record r(5, 5, 0.0, 1.0);
    Zan8u src[64] = {}, dst[64];
    std::memset(dst, 0x77, sizeof dst);
    const Zan8u* planes[3] = {src, src, src};
    const Zan8u* holed[3] = {src, nullptr, src};
    EXPECT_EQ(zaniDeinterlaceBlend_8u_C1(nullptr, 8, dst, 8, {2, 2}, 0, 0, 1, r.st), zanStsNullPtr);
    EXPECT_EQ(zaniDeinterlaceBlend_8u_C1(planes, 8, nullptr, 8, {2, 2}, 0, 0, 1, r.st), zanStsNullPtr);
    EXPECT_EQ(zaniDeinterlaceBlend_8u_C1(holed, 8, dst, 8, {2, 2}, 0, 0, 1, r.st), zanStsNullPtr);
    EXPECT_EQ(zaniDeinterlaceBlend_8u_C1(planes, 8, dst, 8, {2, 8}, 0, 0, 1, r.st), zanStsSizeBad);
    EXPECT_EQ(zaniDeinterlaceBlend_8u_C1(planes, 8, dst, 8, {8, 2}, 0, 0, 1, r.st), zanStsSizeBad);
    EXPECT_EQ(zaniDeinterlaceBlend_8u_C2(src, 8, src, 8, nullptr, 8, dst, 8, {2, 2}, 0, 0, 1, r.st), zanStsNullPtr);
    EXPECT_EQ(zaniDeinterlaceBlend_8u_C2(src, 8, src, 8, src, 8, dst, 8, {2, 4}, 0, 0, 1, r.st), zanStsSizeBad);
    ZanDeinterlaceBlendState noTable = *r.st;
    noTable.pWeights = nullptr;
    EXPECT_EQ(zaniDeinterlaceBlend_8u_C1(planes, 8, dst, 8, {2, 2}, 0, 0, 1, &noTable), zanStsNullPtr);
    for (Zan8u v : dst) EXPECT_EQ(v, 0x77);
}

// Width 3: only column 1 uses the diagonals; the edge columns repeat the
// source row r (d for fieldNum 0).
TEST(Deinterlace, EdgeDetect) {
    const Zan8u src[9] = {10, 20, 30, 50, 60, 70, 1, 2, 3};
    Zan8u dst[9];
    std::memset(dst, 0xEE, 9);
    // fieldNum 0, border copy: row 0 copied; rows 1, 2 between source rows r-1, r.
    ASSERT_EQ(zaniDeinterlaceEdgeDetect_8u_C1R(src, 3, dst, 3, {3, 3}, 0, 1), zanStsOk);
    // row 1 (u 10 20 30, d 50 60 70): d1 = 60, d2 = 20, d0 = 40 -> avg(30, 50) = 40.
    // row 2 (u 50 60 70, d 1 2 3): d1 = 47, d2 = 69, d0 = 58 -> avg(50, 3) = 27.
    const Zan8u want[9] = {10, 20, 30, 50, 40, 70, 1, 27, 3};
    EXPECT_EQ(0, std::memcmp(dst, want, 9));
    // fieldNum 1 without border: row r between r and r+1; edges repeat u.
    const Zan8u four[12] = {10, 20, 30, 50, 60, 70, 1, 2, 3, 9, 9, 9};
    ASSERT_EQ(zaniDeinterlaceEdgeDetect_8u_C1R(four, 3, dst, 3, {3, 3}, 1, 0), zanStsOk);
    // row 2 (u 1 2 3, d 9 9 9): d1 = 8, d2 = 6, d0 = 7 -> avg(3, 9) = 6.
    const Zan8u want1[9] = {10, 40, 30, 50, 27, 70, 1, 6, 3};
    EXPECT_EQ(0, std::memcmp(dst, want1, 9));
    // Ties go to the vertical: flat rows give their average.
    const Zan8u flat[6] = {100, 100, 100, 101, 101, 101};
    Zan8u out[3];
    ASSERT_EQ(zaniDeinterlaceEdgeDetect_8u_C1R(flat, 3, out, 3, {3, 1}, 1, 0), zanStsOk);
    EXPECT_EQ(out[1], 101);
    EXPECT_EQ(zaniDeinterlaceEdgeDetect_8u_C1R(nullptr, 3, out, 3, {0, 1}, 1, 0), zanStsNullPtr);
    EXPECT_EQ(zaniDeinterlaceEdgeDetect_8u_C1R(flat, 3, out, 3, {0, 1}, 1, 0), zanStsSizeBad);
    EXPECT_EQ(zaniDeinterlaceEdgeDetect_8u_C1R(flat, 3, out, 3, {3, 0}, 1, 0), zanStsSizeBad);
}

TEST(Deinterlace, MedianThreshold) {
    // Rows 0..3, fieldNum 1 with border: rows 0 and 2 kept, row 1 computed,
    // row 3 is the last row and is copied.
    const Zan8u src[16] = {10, 10, 10, 10, 200, 15, 30, 12, 20, 20, 20, 20, 7, 7, 7, 7};
    Zan8u dst[16];
    std::memset(dst, 0xEE, 16);
    ASSERT_EQ(zaniDeinterlaceMedianThreshold_8u_C1R(src, 4, dst, 4, {4, 4}, 5, 1, 1), zanStsOk);
    // medians 20 15 20 12; |m - src| 180 0 10 0 against 5: m, src, m, src.
    const Zan8u want[16] = {10, 10, 10, 10, 20, 15, 20, 12, 20, 20, 20, 20, 7, 7, 7, 7};
    EXPECT_EQ(0, std::memcmp(dst, want, 16));
    // A threshold of 11 keeps the 30 (10 < 11); 256 counts as 0 (low byte).
    ASSERT_EQ(zaniDeinterlaceMedianThreshold_8u_C1R(src, 4, dst, 4, {4, 4}, 11, 1, 1), zanStsOk);
    EXPECT_EQ(dst[6], 30);
    ASSERT_EQ(zaniDeinterlaceMedianThreshold_8u_C1R(src, 4, dst, 4, {4, 4}, 256 + 11, 1, 1), zanStsOk);
    EXPECT_EQ(dst[6], 30);
    ASSERT_EQ(zaniDeinterlaceMedianThreshold_8u_C1R(src, 4, dst, 4, {4, 4}, 256, 1, 1), zanStsOk);
    EXPECT_EQ(dst[5], 15);  // 0 > 0 fails: the median, equal to the sample here
    EXPECT_EQ(dst[6], 20);
    EXPECT_EQ(zaniDeinterlaceMedianThreshold_8u_C1R(src, 4, nullptr, 4, {4, 1}, 5, 1, 1), zanStsNullPtr);
    EXPECT_EQ(zaniDeinterlaceMedianThreshold_8u_C1R(src, 4, dst, 4, {4, 1}, 5, 1, 1), zanStsSizeBad);
    EXPECT_EQ(zaniDeinterlaceMedianThreshold_8u_C1R(src, 4, dst, 4, {0, 4}, 5, 1, 1), zanStsSizeBad);
}

TEST(Deinterlace, MotionAdaptive) {
    // Four still frames, 1 x 3, topField 0: row 1 is computed from K = P1.
    Zan8u f[4][3] = {{100, 50, 102}, {100, 50, 102}, {100, 50, 102}, {100, 50, 102}};
    const Zan8u* planes[4] = {f[0], f[1], f[2], f[3]};
    Zan8u dst[3] = {0xEE, 0xEE, 0xEE};
    // Static, no protection: the weave, v = B[1] = P0[1] = 50.
    ASSERT_EQ(zaniDeinterlaceMotionAdaptive_8u_C1(planes, 1, dst, 1, {1, 3}, 10, 0, 0, 1, 0), zanStsOk);
    EXPECT_EQ(dst[1], 50);
    EXPECT_EQ(dst[0], 100);
    EXPECT_EQ(dst[2], 0xEE);  // h odd, topField 0: the last row is not copied
    // Static with protection: band 30 about 50 is 20..80; U 100, D 102 both
    // above: avg(100, 102) = 101.
    ASSERT_EQ(zaniDeinterlaceMotionAdaptive_8u_C1(planes, 1, dst, 1, {1, 3}, 10, 0, 0, 1, 1), zanStsOk);
    EXPECT_EQ(dst[1], 101);
    // v near the top: hi = min(230 + 30, 235) = 235; U, D 236, 240 above: avg = 238.
    Zan8u g[4][3] = {{236, 230, 240}, {236, 230, 240}, {236, 230, 240}, {236, 230, 240}};
    const Zan8u* gp[4] = {g[0], g[1], g[2], g[3]};
    ASSERT_EQ(zaniDeinterlaceMotionAdaptive_8u_C1(gp, 1, dst, 1, {1, 3}, 10, 0, 0, 1, 1), zanStsOk);
    EXPECT_EQ(dst[1], 238);
    // A threshold of 0: nothing is still; band 6 about 50: avg again.
    ASSERT_EQ(zaniDeinterlaceMotionAdaptive_8u_C1(planes, 1, dst, 1, {1, 3}, 0, 0, 0, 1, 0), zanStsOk);
    EXPECT_EQ(dst[1], 101);
    // U inside the moving band: v.
    f[1][0] = 54;
    ASSERT_EQ(zaniDeinterlaceMotionAdaptive_8u_C1(planes, 1, dst, 1, {1, 3}, 0, 0, 0, 1, 0), zanStsOk);
    EXPECT_EQ(dst[1], 50);
    EXPECT_EQ(zaniDeinterlaceMotionAdaptive_8u_C1(nullptr, 1, dst, 1, {1, 3}, 0, 0, 0, 1, 0), zanStsNullPtr);
    const Zan8u* holed[4] = {f[0], f[1], f[2], nullptr};
    EXPECT_EQ(zaniDeinterlaceMotionAdaptive_8u_C1(holed, 1, dst, 1, {0, 3}, 0, 0, 0, 1, 0), zanStsNullPtr);
    EXPECT_EQ(zaniDeinterlaceMotionAdaptive_8u_C1(planes, 1, dst, 1, {0, 3}, 0, 0, 0, 1, 0), zanStsSizeBad);
}

TEST(Deinterlace, FilterTriangle) {
    Zan8u src[5 * 2], dst[5 * 2];
    for (int i = 0; i < 10; ++i) src[i] = static_cast<Zan8u>(200 - 10 * i);
    // Row pairs: 200 190 / 180 170 / 160 150 / 140 130 / 120 110.
    std::memset(dst, 0xEE, sizeof dst);
    ASSERT_EQ(zaniDeinterlaceFilterTriangle_8u_C1R(src, 2, dst, 2, {2, 5}, 0xFFFFFFFFu, 0), zanStsOk);
    EXPECT_EQ(0, std::memcmp(src, dst, sizeof src));  // 256: the centre row, ends copied
    ASSERT_EQ(zaniDeinterlaceFilterTriangle_8u_C1R(src, 2, dst, 2, {2, 5}, 0, 0), zanStsOk);
    EXPECT_EQ(dst[2], (200 + 160) >> 1);
    // An odd weight loses brightness: c 1, n 127: (360 * 127 + 180) >> 8 = 179.
    ASSERT_EQ(zaniDeinterlaceFilterTriangle_8u_C1R(src, 2, dst, 2, {2, 5}, 1, 0), zanStsOk);
    EXPECT_EQ(dst[2], 179);
    // Layouts: top band leaves the last row; a middle band writes row -1 and
    // not its last row.
    std::memset(dst, 0xEE, sizeof dst);
    ASSERT_EQ(zaniDeinterlaceFilterTriangle_8u_C1R(src, 2, dst, 2, {2, 4}, 128, 1), zanStsOk);
    EXPECT_EQ(dst[0], 200);
    EXPECT_EQ(dst[6], 0xEE);
    std::memset(dst, 0xEE, sizeof dst);
    ASSERT_EQ(zaniDeinterlaceFilterTriangle_8u_C1R(src + 4, 2, dst + 4, 2, {2, 3}, 128, 4), zanStsOk);
    EXPECT_EQ(dst[2], (64 * (200 + 160) + 128 * 180) >> 8);  // row -1 of the band
    EXPECT_EQ(dst[8], 0xEE);
    ASSERT_EQ(zaniDeinterlaceFilterTriangle_8u_C1R(src + 4, 2, dst + 4, 2, {2, 3}, 128, 16), zanStsOk);
    EXPECT_EQ(dst[8], 120);  // the bottom band copies its last row
    EXPECT_EQ(zaniDeinterlaceFilterTriangle_8u_C1R(src, 2, nullptr, 2, {2, 2}, 0, 0), zanStsNullPtr);
    EXPECT_EQ(zaniDeinterlaceFilterTriangle_8u_C1R(src, 2, dst, 2, {2, 2}, 0, 0), zanStsSizeBad);
    EXPECT_EQ(zaniDeinterlaceFilterTriangle_8u_C1R(src, 2, dst, 2, {0, 3}, 0, 0), zanStsSizeBad);
    // The interleaved form returns its layout and touches nothing.
    EXPECT_EQ(zaniDeinterlaceFilterTriangle_8u_C2R(nullptr, 0, nullptr, 0, {0, 0}, 0, 12345), 12345);
    EXPECT_EQ(zaniDeinterlaceFilterTriangle_8u_C2R(src, 2, dst, 2, {2, 3}, 0, -7), -7);
}

}  // namespace
