// CAST denoising through the exports: statuses in order, nothing written on
// failure, and known answers worked out by hand from the rules (the spatial
// mean with clamped neighbours and edge weights, the temporal blend, the
// history's climb and fall, cut blocks that weigh like whole ones, and the
// 4:2:2 history order).
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "zanvc.h"

namespace {

ZanDenoiseCastParams defaults() {
    ZanDenoiseCastParams p;
    EXPECT_EQ(zaniFilterDenoiseCASTInit(&p), zanStsOk);
    return p;
}

TEST(Cast, InitWritesTheDefaults) {
    EXPECT_EQ(zaniFilterDenoiseCASTInit(nullptr), zanStsNullPtr);
    ZanDenoiseCastParams p;
    std::memset(&p, 0xEE, sizeof p);
    ASSERT_EQ(zaniFilterDenoiseCASTInit(&p), zanStsOk);
    EXPECT_EQ(sizeof p, 10u);
    EXPECT_EQ(p.temporalDifference, 16);
    EXPECT_EQ(p.motionCount, 0);
    EXPECT_EQ(p.edgeLimit, 8);
    EXPECT_EQ(p.blockWidth, 4);
    EXPECT_EQ(p.blockHeight, 4);
    EXPECT_EQ(p.edgeWeight, 128);
    EXPECT_EQ(p.flatWeight, 16);
    EXPECT_EQ(p.neighbourLimitY, 12);
    EXPECT_EQ(p.neighbourLimitUV, 6);
    EXPECT_EQ(p.historyWeight, 192);
}

using CastFn = decltype(&zaniFilterDenoiseCAST_8u_C1R);

TEST(Cast, StatusesInOrderAndNothingWritten) {
    std::vector<Zan8u> src(64, 100), edge(64, 0), dst(64, 7), hist(16, 55);
    for (CastFn fn : {zaniFilterDenoiseCAST_8u_C1R, zaniFilterDenoiseCASTYUV422_8u_C2R}) {
        // a null pointer beats a bad size
        EXPECT_EQ(fn(nullptr, src.data(), 8, edge.data(), 8, {0, 0}, dst.data(), 8, hist.data(), nullptr), zanStsNullPtr);
        EXPECT_EQ(fn(src.data(), src.data(), 8, nullptr, 8, {4, 4}, dst.data(), 8, hist.data(), nullptr), zanStsNullPtr);
        EXPECT_EQ(fn(src.data(), src.data(), 8, edge.data(), 8, {4, 4}, nullptr, 8, hist.data(), nullptr), zanStsNullPtr);
        EXPECT_EQ(fn(src.data(), src.data(), 8, edge.data(), 8, {0, 4}, dst.data(), 8, hist.data(), nullptr), zanStsSizeBad);
        EXPECT_EQ(fn(src.data(), src.data(), 8, edge.data(), 8, {4, 0}, dst.data(), 8, hist.data(), nullptr), zanStsSizeBad);
        EXPECT_EQ(fn(src.data(), nullptr, 8, edge.data(), 8, {4, -1}, dst.data(), 8, hist.data(), nullptr), zanStsSizeBad);
    }
    // the 4:2:2 form takes even widths only
    EXPECT_EQ(zaniFilterDenoiseCASTYUV422_8u_C2R(src.data(), nullptr, 8, edge.data(), 8, {3, 2}, dst.data(), 8,
                                                 hist.data(), nullptr),
              zanStsSizeBad);
    EXPECT_EQ(zaniFilterDenoiseCAST_8u_C1R(src.data(), nullptr, 8, edge.data(), 8, {3, 2}, dst.data(), 8,
                                           hist.data(), nullptr),
              zanStsOk);
    for (size_t i = 0; i < dst.size(); ++i) {
        if (i % 8 < 3 && i < 16) continue;  // the one successful call's 3x2 picture
        ASSERT_EQ(dst[i], 7) << i;
    }
    for (size_t i = 1; i < hist.size(); ++i) EXPECT_EQ(hist[i], 55) << i;  // one block, one history byte
    EXPECT_EQ(hist[0], 192);
}

// A 3x3 picture of 100 with 110 in the centre, on its first frame.
TEST(Cast, SpatialMeanWithClampedNeighboursAndEdgeWeight) {
    Zan8u src[9] = {100, 100, 100, 100, 110, 100, 100, 100, 100};
    Zan8u edge[9] = {0, 0, 0, 0, 9, 0, 0, 0, 0};
    Zan8u dst[9] = {};
    Zan8u hist[1] = {3};
    ASSERT_EQ(zaniFilterDenoiseCAST_8u_C1R(src, nullptr, 3, edge, 3, {3, 3}, dst, 3, hist, nullptr), zanStsOk);
    EXPECT_EQ(hist[0], 192);  // the first frame sets the history to historyWeight
    // centre: all eight neighbours within 12, m = (800 + 4) / 8 = 100; edge
    // 9 > 8: a = 128: (110 * 128 + 100 * 128 + 128) >> 8 = 105
    EXPECT_EQ(dst[4], 105);
    // corner: its neighbours, clamped, are seven 100s and the centre:
    // m = (810 + 4) / 8 = 101; flat: (100 * 16 + 101 * 240 + 128) >> 8 = 101
    EXPECT_EQ(dst[0], 101);
    EXPECT_EQ(dst[8], 101);
    // edge middle (0, 1): neighbours 100 x7 and 110: the same
    EXPECT_EQ(dst[1], 101);
    edge[4] = 8;  // not above edgeLimit: flat weight: (110 * 16 + 100 * 240 + 128) >> 8 = 101
    ASSERT_EQ(zaniFilterDenoiseCAST_8u_C1R(src, nullptr, 3, edge, 3, {3, 3}, dst, 3, nullptr, nullptr), zanStsOk);
    EXPECT_EQ(dst[4], 101);
    // a sample with every neighbour beyond the limit keeps its value
    src[4] = 112;
    ASSERT_EQ(zaniFilterDenoiseCAST_8u_C1R(src, nullptr, 3, edge, 3, {3, 3}, dst, 3, nullptr, nullptr), zanStsOk);
    EXPECT_EQ(dst[4], 112);
}

// Two 4x4 blocks side by side: one differing sample makes the left block
// move (motionCount 0); the right block is still and blended.
TEST(Cast, MotionDecisionBlendAndHistory) {
    std::vector<Zan8u> prev(32, 100), cur(32, 100), edge(32, 0), dst(32, 0);
    for (int y = 0; y < 4; ++y)
        for (int x = 4; x < 8; ++x) cur[static_cast<size_t>(y * 8 + x)] = 104;  // differs by 4: still
    cur[9] = 117;                                                               // differs by 17 > 16
    Zan8u hist[2] = {192, 192};
    ASSERT_EQ(zaniFilterDenoiseCAST_8u_C1R(cur.data(), prev.data(), 8, edge.data(), 8, {8, 4}, dst.data(), 8, hist,
                                           nullptr),
              zanStsOk);
    EXPECT_EQ(hist[0], 96);   // moving: 192 >> 1
    EXPECT_EQ(hist[1], 196);  // still: 192 + 4
    // still: ((100 - 104) * 196 + 104 * 256 + 128) >> 8 = 25968 >> 8 = 101
    EXPECT_EQ(dst[4], 101);
    EXPECT_EQ(dst[31], 101);
    // moving: 117 has no neighbour within 12 and keeps its value; its
    // neighbour (0, 0) averages 100s only
    EXPECT_EQ(dst[9], 117);
    EXPECT_EQ(dst[0], 100);
    // (1, 3), beside the still block: neighbours 100, 100, 104, 100, 104,
    // 100, 100, 104 within 12: m = (812 + 4) / 8 = 102;
    // (100 * 16 + 102 * 240 + 128) >> 8 = 102
    EXPECT_EQ(dst[11], 102);

    // the climb and the fall of one block's history
    struct Step {
        Zan8u before;
        bool moving;
        Zan8u after;
    } steps[] = {{100, false, 128}, {128, false, 132}, {198, false, 200}, {200, false, 200},
                 {150, true, 75},   {100, true, 128},  {128, true, 64},   {0, false, 128}};
    for (const Step& s : steps) {
        std::vector<Zan8u> p(16, 50), c(16, 50), e(16, 0), o(16, 0);
        if (s.moving) c[5] = 200;
        Zan8u h = s.before;
        ASSERT_EQ(zaniFilterDenoiseCAST_8u_C1R(c.data(), p.data(), 4, e.data(), 4, {4, 4}, o.data(), 4, &h, nullptr),
                  zanStsOk);
        EXPECT_EQ(h, s.after) << int(s.before) << (s.moving ? " moving" : " still");
    }
}

TEST(Cast, NoHistoryUsesHistoryWeightAndZeroMeansSpatial) {
    std::vector<Zan8u> prev(16, 100), cur(16, 110), edge(16, 0), dst(16, 0);
    cur[0] = 90;  // differs by 10: still
    ZanDenoiseCastParams p = defaults();
    ASSERT_EQ(zaniFilterDenoiseCAST_8u_C1R(cur.data(), prev.data(), 4, edge.data(), 4, {4, 4}, dst.data(), 4, nullptr, &p),
              zanStsOk);
    // w = 192: ((100 - 110) * 192 + 110 * 256 + 128) >> 8 = 26368 >> 8 = 103
    EXPECT_EQ(dst[5], ((100 - 110) * 192 + 110 * 256 + 128) >> 8);
    EXPECT_EQ(dst[5], 103);
    EXPECT_EQ(dst[0], ((100 - 90) * 192 + 90 * 256 + 128) >> 8);
    p.historyWeight = 0;  // a still block goes to the spatial filter
    ASSERT_EQ(zaniFilterDenoiseCAST_8u_C1R(cur.data(), prev.data(), 4, edge.data(), 4, {4, 4}, dst.data(), 4, nullptr, &p),
              zanStsOk);
    EXPECT_EQ(dst[15], 110);  // all neighbours 110
    // (0, 1): neighbours 90 (twice, clamped) and six 110s; |90 - 110| = 20
    // is beyond 12, so the six 110s join: m = 110, out = 110
    EXPECT_EQ(dst[1], 110);
    // (0, 0): clamping shows it itself three times; those join, m = 90
    EXPECT_EQ(dst[0], 90);
}

// Width 5 with 4x4 blocks: the second block has one real column, and its
// flag counts four times per row; height 5: the last row counts four times.
TEST(Cast, CutBlocksWeighLikeWholeOnes) {
    for (Zan8u mc : {Zan8u{3}, Zan8u{4}}) {
        std::vector<Zan8u> prev(25, 60), cur(25, 60), edge(25, 0), dst(25, 0);
        cur[2 * 5 + 4] = 90;  // one differing sample in the one-column block
        ZanDenoiseCastParams p = defaults();
        p.motionCount = mc;
        Zan8u hist[4] = {192, 192, 192, 192};
        ASSERT_EQ(zaniFilterDenoiseCAST_8u_C1R(cur.data(), prev.data(), 5, edge.data(), 5, {5, 5}, dst.data(), 5, hist, &p),
                  zanStsOk);
        EXPECT_EQ(hist[0], 196);
        EXPECT_EQ(hist[1], mc == 3 ? 96 : 196) << "count 4 against motionCount " << int(mc);
        EXPECT_EQ(hist[2], 196);
        EXPECT_EQ(hist[3], 196);
    }
    for (Zan8u mc : {Zan8u{3}, Zan8u{4}}) {
        std::vector<Zan8u> prev(20, 60), cur(20, 60), edge(20, 0), dst(20, 0);
        cur[4 * 4 + 1] = 90;  // in the last row of a 4x5 picture: a one-row block
        ZanDenoiseCastParams p = defaults();
        p.motionCount = mc;
        Zan8u hist[2] = {192, 192};
        ASSERT_EQ(zaniFilterDenoiseCAST_8u_C1R(cur.data(), prev.data(), 4, edge.data(), 4, {4, 5}, dst.data(), 4, hist, &p),
                  zanStsOk);
        EXPECT_EQ(hist[0], 196);
        EXPECT_EQ(hist[1], mc == 3 ? 96 : 196);
    }
}

// 4:2:2: a group of 16 bytes holds the blocks first luma, Cb, second luma,
// Cr, in that history order.
TEST(Cast, Packed422HistoryOrderAndChannels) {
    // byte offset of one sample in each block of an 8x4 picture (one group)
    const struct {
        int byte;
        int block;
    } cases[] = {{2, 0}, {5, 1}, {12, 2}, {15, 3}};
    for (const auto& c : cases) {
        std::vector<Zan8u> prev(64, 80), cur(64, 80), edge(64, 0), dst(64, 0);
        cur[static_cast<size_t>(16 + c.byte)] = 120;
        Zan8u hist[4] = {150, 150, 150, 150};
        ASSERT_EQ(zaniFilterDenoiseCASTYUV422_8u_C2R(cur.data(), prev.data(), 16, edge.data(), 16, {8, 4}, dst.data(),
                                                     16, hist, nullptr),
                  zanStsOk);
        for (int b = 0; b < 4; ++b) EXPECT_EQ(hist[b], b == c.block ? 75 : 154) << "byte " << c.byte << " block " << b;
        EXPECT_EQ(dst[static_cast<size_t>(16 + c.byte)], 120);  // no neighbour of its channel within the limit
    }
    // chroma neighbours lie 4 bytes apart: a Cb sample of 110 among Cb 106
    // (within 6) and luma and Cr far away; first frame, spatial throughout
    std::vector<Zan8u> cur(16), edge(16, 0), dst(16, 0);
    for (int i = 0; i < 16; ++i) cur[static_cast<size_t>(i)] = i % 4 == 1 ? 106 : 10;
    cur[5] = 110;
    ASSERT_EQ(zaniFilterDenoiseCASTYUV422_8u_C2R(cur.data(), nullptr, 16, edge.data(), 16, {8, 1}, dst.data(), 16,
                                                 nullptr, nullptr),
              zanStsOk);
    // (1, 5): rows clamp to itself; neighbours Cb at bytes 1, 5, 9 in three
    // rows: 106, 110, 106 / 106, 106 / 106, 110, 106 -> all within 6:
    // S = 6 * 106 + 2 * 110 = 856, m = (856 + 4) / 8 = 107;
    // (110 * 16 + 107 * 240 + 128) >> 8 = 107
    EXPECT_EQ(dst[5], 107);
    EXPECT_EQ(dst[0], 10);
    EXPECT_EQ(dst[3], 10);
}

}  // namespace
