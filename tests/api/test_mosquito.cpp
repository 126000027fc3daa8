// Mosquito filter through the exports: the state's life and its defaults,
// statuses in their documented order with nothing written on failure, and
// sharp cases worked out by hand: which samples a block may filter, the
// first block origin chosen by the offset, the unfiltered strip at the
// right when the grid cannot grow, a picture with no strong block, and the
// 3x3 weighted mean on a checkerboard.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "zanvc.h"

namespace {

TEST(Mosquito, StateLifeAndDefaults) {
    ZanDenoiseMosquitoState* s = nullptr;
    EXPECT_EQ(zaniFilterDenoiseMosquitoInitAlloc_8u_C1(nullptr, {0, 0}), zanStsNullPtr);
    EXPECT_EQ(zaniFilterDenoiseMosquitoInitAlloc_8u_C1(&s, {0, 8}), zanStsSizeBad);
    EXPECT_EQ(zaniFilterDenoiseMosquitoInitAlloc_8u_C1(&s, {8, 0}), zanStsSizeBad);
    EXPECT_EQ(s, nullptr);
    EXPECT_EQ(zaniFilterDenoiseMosquitoInitAlloc_8u_C1(&s, {0x7FFFFFF0, 0x7FFFFFF0}), zanStsNoMem);
    ASSERT_EQ(zaniFilterDenoiseMosquitoInitAlloc_8u_C1(&s, {20, 17}), zanStsOk);
    ASSERT_NE(s, nullptr);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(s) % 16, 0u);
    EXPECT_EQ(s->roiSize.width, 20);
    EXPECT_EQ(s->roiSize.height, 17);
    const Zan32s want[] = {8, 8, 4, 12, 16, 4, 32, 1, 32, 20, 2, 16, 6};
    const Zan32s got[] = {s->blockWidth,  s->blockHeight,  s->edgeCountLimit, s->edgeGradient, s->strongGradient,
                          s->flatGradient, s->unusedLimit, s->flatRatio,      s->flatCountLimit, s->motionHigh,
                          s->changedCountLimit, s->changedDifference, s->motionLow};
    for (size_t i = 0; i < sizeof want / sizeof want[0]; ++i) EXPECT_EQ(got[i], want[i]) << i;
    ASSERT_NE(s->pWork, nullptr);
    EXPECT_EQ(s->pWork->edgeMapStep, 28);
    EXPECT_EQ(s->pWork->blockStep, 12);
    EXPECT_EQ(s->pAllocated, static_cast<void*>(s));
    // zeroed work areas: records (3 * 3 of them) and the edge map
    for (int i = 0; i < 3 * 3 * 5; ++i) EXPECT_EQ(s->pWork->pBlockInfo[i], 0);
    for (int i = 0; i < 28 * 25; ++i) ASSERT_EQ(s->pWork->pEdgeMap[i], 0);
    for (int i = 0; i < 64; ++i) ASSERT_EQ(s->pWork->pClassMap[i], 0);

    EXPECT_EQ(zaniFilterDenoiseMosquitoFree_8u_C1(nullptr), zanStsNullPtr);
    void* keep = s->pAllocated;
    s->pAllocated = nullptr;
    EXPECT_EQ(zaniFilterDenoiseMosquitoFree_8u_C1(s), zanStsNullPtr);
    s->pAllocated = keep;
    EXPECT_EQ(zaniFilterDenoiseMosquitoFree_8u_C1(s), zanStsOk);
}

struct State {
    ZanDenoiseMosquitoState* s = nullptr;
    explicit State(ZaniSize roi) { EXPECT_EQ(zaniFilterDenoiseMosquitoInitAlloc_8u_C1(&s, roi), zanStsOk); }
    ~State() { zaniFilterDenoiseMosquitoFree_8u_C1(s); }
};

TEST(Mosquito, StatusesInOrderAndNothingWritten) {
    std::vector<Zan8u> pic(32 * 32, 50), dst(32 * 32, 7);
    const Zan8u* src[2] = {pic.data(), pic.data()};
    State st({16, 16});
    // a null state beats a bad size
    EXPECT_EQ(zaniFilterDenoiseMosquito_8u_C1R(src, 32, dst.data(), 32, {0, 0}, nullptr, {0, 0}, {0, 0}), zanStsNullPtr);
    ZanDenoiseMosquitoWork* w = st.s->pWork;
    st.s->pWork = nullptr;
    EXPECT_EQ(zaniFilterDenoiseMosquito_8u_C1R(src, 32, dst.data(), 32, {32, 32}, st.s, {0, 0}, {16, 16}), zanStsNullPtr);
    st.s->pWork = w;
    // the region beyond the picture, or a negative offset
    EXPECT_EQ(zaniFilterDenoiseMosquito_8u_C1R(src, 32, dst.data(), 32, {32, 32}, st.s, {17, 0}, {16, 16}), zanStsSizeBad);
    EXPECT_EQ(zaniFilterDenoiseMosquito_8u_C1R(src, 32, dst.data(), 32, {32, 20}, st.s, {0, 5}, {16, 16}), zanStsSizeBad);
    EXPECT_EQ(zaniFilterDenoiseMosquito_8u_C1R(src, 32, dst.data(), 32, {32, 32}, st.s, {-1, 0}, {16, 16}), zanStsSizeBad);
    // a region other than the state's
    EXPECT_EQ(zaniFilterDenoiseMosquito_8u_C1R(src, 32, dst.data(), 32, {32, 32}, st.s, {0, 0}, {16, 24}), zanStsSizeBad);
    // a spoilt state size
    st.s->roiSize.height = 0;
    EXPECT_EQ(zaniFilterDenoiseMosquito_8u_C1R(src, 32, dst.data(), 32, {32, 32}, st.s, {0, 0}, {16, 0}), zanStsSizeBad);
    st.s->roiSize.height = 16;
    for (Zan8u v : dst) ASSERT_EQ(v, 7);
    // too small for one block: 12 x 11 in a picture of just that size:
    // ye = -1 cannot grow by 9, so it lies below ys = 0
    State small({12, 11});
    EXPECT_EQ(zaniFilterDenoiseMosquito_8u_C1R(src, 32, dst.data(), 32, {12, 11}, small.s, {0, 0}, {12, 11}), zanStsErr);
    for (Zan8u v : dst) ASSERT_EQ(v, 7);
    // with room below the same region takes a block: ye grows to 8
    EXPECT_EQ(zaniFilterDenoiseMosquito_8u_C1R(src, 32, dst.data(), 32, {12, 20}, small.s, {0, 0}, {12, 11}), zanStsOk);
}

// A picture whose left part is a +-3 checkerboard around 50 and whose right
// part (from column 8 of the region on) is 200: a strong vertical edge, so
// the block is edgy and filtered.  Samples at region columns 2..4 lie far
// enough from the edge that their map entries stay 0, and with no motion
// their class is 0: the weighted mean (8 c + 8 neighbours) >> 4 gives
// (8 * 53 + 4 * 47 + 4 * 53) >> 4 = 51 on a 53 and
// (8 * 47 + 4 * 53 + 4 * 47) >> 4 = 48 on a 47.
Zan8u board(int x, int y) { return static_cast<Zan8u>(x >= 8 ? 200 : ((x + y) % 2 ? 47 : 53)); }

std::vector<Zan8u> board_picture(int w, int h, int ox, int oy, int step) {
    std::vector<Zan8u> p(static_cast<size_t>(step * h), 0);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) p[static_cast<size_t>(y * step + x)] = board(x - ox, y - oy);
    return p;
}

TEST(Mosquito, OneBlockFiltersItsInnerSamples) {
    // a region of 12 x 12 at (0, 0): one block, first origin 0, filtering the
    // 8 x 8 at (2, 2); then the rows from the next block row's origin (8) to
    // the bottom are copied from the current frame, and so are columns 8..11
    // above them: rows 8 and 9 end unfiltered
    auto pic = board_picture(12, 12, 0, 0, 12);
    std::vector<Zan8u> dst(144, 0);
    const Zan8u* src[2] = {pic.data(), pic.data()};
    State st({12, 12});
    ASSERT_EQ(zaniFilterDenoiseMosquito_8u_C1R(src, 12, dst.data(), 12, {12, 12}, st.s, {0, 0}, {12, 12}), zanStsOk);
    EXPECT_EQ(st.s->pWork->pBlockInfo[2], 1);  // edgy
    for (int y = 0; y < 12; ++y)
        for (int x = 0; x < 12; ++x) {
            const Zan8u got = dst[static_cast<size_t>(y * 12 + x)];
            if (x >= 2 && x <= 4 && y >= 2 && y <= 7) {
                EXPECT_EQ(got, board(x, y) == 53 ? 51 : 48) << x << "," << y;
            } else if (x < 2 || y < 2 || y >= 8 || x >= 8) {
                EXPECT_EQ(got, board(x, y)) << x << "," << y;
            }
        }
}

// The offset picks the first block origin: 1 gives -1 (the block filters
// region columns 1..8), 2 or more gives -2 (columns 0..7).  Rows likewise.
TEST(Mosquito, OffsetChoosesTheFirstOrigin) {
    for (int off : {1, 2, 3}) {
        const int iw = 12 + off + 8, ih = 12 + off + 8;
        auto pic = board_picture(iw, ih, off, off, iw);
        std::vector<Zan8u> dst(static_cast<size_t>(iw * ih), 0);
        const Zan8u* src[2] = {pic.data(), pic.data()};
        State st({12, 12});
        ASSERT_EQ(zaniFilterDenoiseMosquito_8u_C1R(src, iw, dst.data(), iw, {iw, ih}, st.s, {off, off}, {12, 12}),
                  zanStsOk);
        const int first = off == 1 ? 1 : 0;  // first filtered region column and row
        for (int y = first; y < first + 3; ++y)
            for (int x = first; x < first + 3; ++x) {
                const Zan8u want = board(x, y) == 53 ? 51 : 48;
                EXPECT_EQ(dst[static_cast<size_t>((y + off) * iw + x + off)], want) << "offset " << off << " at " << x << "," << y;
            }
        if (off == 1) {
            EXPECT_EQ(dst[static_cast<size_t>((2 + off) * iw + off)], board(0, 2));  // column 0 unfiltered
        }
        // outside the region nothing is written
        EXPECT_EQ(dst[0], 0);
        EXPECT_EQ(dst[static_cast<size_t>(iw * ih - 1)], 0);
    }
}

// A region of width 17 in a picture of just that width: xe = 5 cannot grow
// to 8 (17 + 3 > 17), so the last block origin is 0 and columns 8..16 are
// copied unfiltered by the remainder (column 12 too, which no block area
// reaches); with a checkerboard everywhere the
// weak content makes no block edgy or strong, so no filter runs at all and
// the destination holds the copy of the current frame.
TEST(Mosquito, NoStrongBlockMeansCopyAndRightStrip) {
    const int w = 17, h = 20;
    std::vector<Zan8u> pic(static_cast<size_t>(w * h));
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) pic[static_cast<size_t>(y * w + x)] = static_cast<Zan8u>((x + y) % 2 ? 47 : 53);
    std::vector<Zan8u> dst(pic.size(), 0);
    const Zan8u* src[2] = {pic.data(), pic.data()};
    State st({w, h});
    ASSERT_EQ(zaniFilterDenoiseMosquito_8u_C1R(src, w, dst.data(), w, {w, h}, st.s, {0, 0}, {w, h}), zanStsOk);
    EXPECT_EQ(dst, pic);
}

}  // namespace
