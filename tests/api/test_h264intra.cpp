// H.264 intra prediction through the exported functions: statuses in their
// order, nothing written on failure, the 128 substitution of the 4x4
// predictor and its warning, stray availability bits, and answers worked out
// by hand from the standard's formulas (DC by availability, chroma DC by
// quadrant, plane prediction with clamping at both ends).
#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "zanvc.h"

namespace {

constexpr Zan32s kAbove = 1, kLeft = 2, kCorner = 32, kAboveRight = 64, kAll = 99;

// A small picture with the block at (2, 1): the left column, the corner and
// the row above (with room above-right) inside it.
struct Picture {
    static constexpr Zan32s kStep = 40;
    std::array<Zan8u, kStep * 20> px;
    explicit Picture(Zan8u v = 0) { px.fill(v); }
    Zan8u* block() { return px.data() + kStep + 2; }
    Zan8u& at(Zan32s x, Zan32s y) { return block()[y * kStep + x]; }
    void above(std::initializer_list<int> v) {
        int x = 0;
        for (int s : v) at(x++, -1) = static_cast<Zan8u>(s);
    }
    void left(std::initializer_list<int> v) {
        int y = 0;
        for (int s : v) at(-1, y++) = static_cast<Zan8u>(s);
    }
    void corner(int v) { at(-1, -1) = static_cast<Zan8u>(v); }
    // Every sample of the w x h block equals v.
    bool flat(Zan32s w, Zan32s h, int v) {
        for (Zan32s y = 0; y < h; ++y)
            for (Zan32s x = 0; x < w; ++x)
                if (at(x, y) != v) return false;
        return true;
    }
    std::vector<int> row(Zan32s y, Zan32s w) {
        std::vector<int> r;
        for (Zan32s x = 0; x < w; ++x) r.push_back(at(x, y));
        return r;
    }
    std::vector<int> column(Zan32s x, Zan32s h) {
        std::vector<int> c;
        for (Zan32s y = 0; y < h; ++y) c.push_back(at(x, y));
        return c;
    }
};

// A picture of distinct values, for "nothing was written" checks.
Picture patterned() {
    Picture p;
    for (size_t i = 0; i < p.px.size(); ++i) p.px[i] = static_cast<Zan8u>(i * 37 + 11);
    return p;
}

constexpr Zan32s S = Picture::kStep;

TEST(H264Intra, NullPointerComesFirst) {
    EXPECT_EQ(zaniPredictIntra_4x4_H264_8u_C1IR(nullptr, S, 99, 0), zanStsNullPtr);
    EXPECT_EQ(zaniPredictIntra_4x4_H264_8u_C1IR(nullptr, S, 0, 0), zanStsNullPtr);
    EXPECT_EQ(zaniPredictIntra_16x16_H264_8u_C1IR(nullptr, S, 7, 0), zanStsNullPtr);
    EXPECT_EQ(zaniPredictIntra_16x16_H264_8u_C1IR(nullptr, S, 0, 0), zanStsNullPtr);
    EXPECT_EQ(zaniPredictIntraChroma8x8_H264_8u_C1IR(nullptr, 0, 9, 0), zanStsNullPtr);
    EXPECT_EQ(zaniPredictIntraChroma8x8_H264_8u_C1IR(nullptr, S, 2, 0), zanStsNullPtr);
}

TEST(H264Intra, ChromaStepBeforeModeAndEdges) {
    Picture p = patterned();
    const auto before = p.px;
    for (Zan32s step : {7, 0, -40, -1}) {
        EXPECT_EQ(zaniPredictIntraChroma8x8_H264_8u_C1IR(p.block(), step, 0, kAll), zanStsStepBad) << step;
        EXPECT_EQ(zaniPredictIntraChroma8x8_H264_8u_C1IR(p.block(), step, 9, kAll), zanStsStepBad) << step;
        EXPECT_EQ(zaniPredictIntraChroma8x8_H264_8u_C1IR(p.block(), step, 3, 0), zanStsStepBad) << step;
    }
    EXPECT_TRUE(p.px == before);
    // Step 8 is the least accepted.
    EXPECT_EQ(zaniPredictIntraChroma8x8_H264_8u_C1IR(p.block(), 8, 0, 0), zanStsOk);
}

TEST(H264Intra, ModeOutOfRangeAndNothingWritten) {
    Picture p = patterned();
    const auto before = p.px;
    for (Zan32s mode : {9, 10, -1, 0x7fffffff, static_cast<Zan32s>(0x80000000u)})
        EXPECT_EQ(zaniPredictIntra_4x4_H264_8u_C1IR(p.block(), S, mode, kAll), zanStsOutOfRange) << mode;
    // An unknown mode is -11 whatever the availability, never -117.
    for (Zan32s mode : {4, 5, -1, 100})
        for (Zan32s avail : {0, kAll}) {
            EXPECT_EQ(zaniPredictIntra_16x16_H264_8u_C1IR(p.block(), S, mode, avail), zanStsOutOfRange) << mode;
            EXPECT_EQ(zaniPredictIntraChroma8x8_H264_8u_C1IR(p.block(), S, mode, avail), zanStsOutOfRange) << mode;
        }
    EXPECT_TRUE(p.px == before);
}

TEST(H264Intra, MissingEdgeRefusedByEachMode) {
    Picture p = patterned();
    const auto before = p.px;
    struct Case {
        Zan32s mode16, modeChroma, avail;
    };
    // Vertical without the row above, horizontal without the left column,
    // plane missing any of the three.
    const Case cases[] = {
        {0, 2, kLeft | kCorner | kAboveRight}, {0, 2, 0},
        {1, 1, kAbove | kCorner | kAboveRight}, {1, 1, 0},
        {3, 3, kAbove | kLeft}, {3, 3, kAbove | kCorner}, {3, 3, kLeft | kCorner}, {3, 3, 0},
        {3, 3, kAbove | kLeft | kAboveRight | 0x7fffff00},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(zaniPredictIntra_16x16_H264_8u_C1IR(p.block(), S, c.mode16, c.avail), zanStsEdgeUnavailable)
            << c.mode16 << " " << c.avail;
        EXPECT_EQ(zaniPredictIntraChroma8x8_H264_8u_C1IR(p.block(), S, c.modeChroma, c.avail), zanStsEdgeUnavailable)
            << c.modeChroma << " " << c.avail;
    }
    EXPECT_TRUE(p.px == before);
    // DC never refuses; each mode with exactly the edges it needs succeeds.
    EXPECT_EQ(zaniPredictIntra_16x16_H264_8u_C1IR(p.block(), S, 2, 0), zanStsOk);
    EXPECT_EQ(zaniPredictIntraChroma8x8_H264_8u_C1IR(p.block(), S, 0, 0), zanStsOk);
    EXPECT_EQ(zaniPredictIntra_16x16_H264_8u_C1IR(p.block(), S, 0, kAbove), zanStsOk);
    EXPECT_EQ(zaniPredictIntra_16x16_H264_8u_C1IR(p.block(), S, 1, kLeft), zanStsOk);
    EXPECT_EQ(zaniPredictIntra_16x16_H264_8u_C1IR(p.block(), S, 3, kAbove | kLeft | kCorner), zanStsOk);
    EXPECT_EQ(zaniPredictIntraChroma8x8_H264_8u_C1IR(p.block(), S, 2, kAbove), zanStsOk);
    EXPECT_EQ(zaniPredictIntraChroma8x8_H264_8u_C1IR(p.block(), S, 1, kLeft), zanStsOk);
    EXPECT_EQ(zaniPredictIntraChroma8x8_H264_8u_C1IR(p.block(), S, 3, kAbove | kLeft | kCorner), zanStsOk);
}

// Neighbours used by the 4x4 cases.
Picture four() {
    Picture p(7);
    p.above({10, 20, 30, 40, 50, 60, 70, 80});
    p.left({100, 110, 120, 130});
    p.corner(90);
    return p;
}

ZanStatus pred4(Picture& p, Zan32s mode, Zan32s avail) {
    return zaniPredictIntra_4x4_H264_8u_C1IR(p.block(), S, mode, avail);
}

TEST(H264Intra, Luma4x4DcByAvailability) {
    Picture p = four();
    EXPECT_EQ(pred4(p, 2, kAll), zanStsOk);
    EXPECT_TRUE(p.flat(4, 4, (100 + 460 + 4) >> 3));  // 70
    p = four();
    EXPECT_EQ(pred4(p, 2, kAbove), zanStsOk);
    EXPECT_TRUE(p.flat(4, 4, 25));  // (100 + 2) >> 2
    p = four();
    EXPECT_EQ(pred4(p, 2, kLeft | kCorner), zanStsOk);
    EXPECT_TRUE(p.flat(4, 4, 115));  // (460 + 2) >> 2
    p = four();
    EXPECT_EQ(pred4(p, 2, kCorner | kAboveRight), zanStsOk);  // neither edge: 128, no warning
    EXPECT_TRUE(p.flat(4, 4, 128));
}

TEST(H264Intra, Luma4x4SubstitutesAndWarns) {
    // The mode's edge absent: a block of 128 and status 11.
    const struct {
        Zan32s mode, avail;
    } fills[] = {{0, kLeft | kCorner | kAboveRight}, {1, kAbove | kCorner | kAboveRight},
                 {8, kAbove | kCorner | kAboveRight}, {3, kLeft | kCorner}, {7, kLeft | kCorner}};
    for (const auto& f : fills) {
        Picture p = four();
        EXPECT_EQ(pred4(p, f.mode, f.avail), zanStsEdgeSubstituted) << f.mode;
        EXPECT_TRUE(p.flat(4, 4, 128)) << f.mode;
    }
    // With the edges present the same modes predict as the standard says.
    Picture p = four();
    EXPECT_EQ(pred4(p, 0, kAbove), zanStsOk);
    EXPECT_EQ(p.row(3, 4), (std::vector<int>{10, 20, 30, 40}));
    p = four();
    EXPECT_EQ(pred4(p, 1, kLeft), zanStsOk);
    EXPECT_EQ(p.column(3, 4), (std::vector<int>{100, 110, 120, 130}));
    p = four();
    EXPECT_EQ(pred4(p, 8, kLeft), zanStsOk);
    EXPECT_EQ(p.at(0, 0), 105);  // (100 + 110 + 1) >> 1
    EXPECT_EQ(p.at(1, 2), 128);  // (120 + 3 * 130 + 2) >> 2, the last filtered sample
    EXPECT_EQ(p.at(3, 3), 130);
}

TEST(H264Intra, Luma4x4DiagonalsWithPartialEdges) {
    // Above present, above-right absent: the fourth sample is repeated, no warning.
    Picture p = four();
    EXPECT_EQ(pred4(p, 3, kAbove), zanStsOk);
    EXPECT_EQ(p.row(0, 4), (std::vector<int>{20, 30, 38, 40}));
    EXPECT_EQ(p.at(3, 3), 40);
    // Above absent, above-right present: 128 for the row above, above-right read, warning.
    p = four();
    EXPECT_EQ(pred4(p, 3, kAboveRight), zanStsEdgeSubstituted);
    EXPECT_EQ(p.row(0, 4), (std::vector<int>{128, 128, 109, 72}));
    EXPECT_EQ(p.at(3, 3), 78);  // (70 + 3 * 80 + 2) >> 2
    // Vertical-left, same case: row 0 is (t[x] + t[x+1] + 1) >> 1.
    p = four();
    EXPECT_EQ(pred4(p, 7, kAboveRight), zanStsEdgeSubstituted);
    EXPECT_EQ(p.row(0, 4), (std::vector<int>{128, 128, 128, 89}));
    // Down-right: an absent corner becomes 128 and warns; present it does not.
    p = four();
    EXPECT_EQ(pred4(p, 4, kAbove | kLeft), zanStsEdgeSubstituted);
    EXPECT_EQ(p.at(2, 2), 92);  // (10 + 2 * 128 + 100 + 2) >> 2
    p = four();
    EXPECT_EQ(pred4(p, 4, kAbove | kLeft | kCorner), zanStsOk);
    EXPECT_EQ(p.at(2, 2), 73);  // (10 + 180 + 100 + 2) >> 2
    // Vertical-right without the left column: the left samples are 128.
    p = four();
    EXPECT_EQ(pred4(p, 5, kAbove | kCorner), zanStsEdgeSubstituted);
    EXPECT_EQ(p.at(0, 0), 50);   // (90 + 10 + 1) >> 1
    EXPECT_EQ(p.at(0, 3), 128);  // (l2 + 2 l1 + l0 + 2) >> 2 on 128s
    EXPECT_EQ(p.at(0, 2), 119);  // (l1 + 2 l0 + c + 2) >> 2 = (128 + 256 + 90 + 2) >> 2
    // Horizontal-down without the row above.
    p = four();
    EXPECT_EQ(pred4(p, 6, kLeft | kCorner), zanStsEdgeSubstituted);
    EXPECT_EQ(p.at(0, 0), 95);   // (90 + 100 + 1) >> 1
    EXPECT_EQ(p.at(3, 0), 128);  // (t2 + 2 t1 + t0 + 2) >> 2 on 128s
}

TEST(H264Intra, Luma4x4IgnoresStrayAvailabilityBits) {
    const Zan32s stray = ~kAll;  // every bit but 1, 2, 32 and 64
    Picture p = four();
    EXPECT_EQ(pred4(p, 0, stray), zanStsEdgeSubstituted);
    EXPECT_TRUE(p.flat(4, 4, 128));
    p = four();
    EXPECT_EQ(pred4(p, 2, stray), zanStsOk);
    EXPECT_TRUE(p.flat(4, 4, 128));
    p = four();
    EXPECT_EQ(pred4(p, 2, stray | kAbove), zanStsOk);
    EXPECT_TRUE(p.flat(4, 4, 25));
}

TEST(H264Intra, Luma4x4WritesOnlyItsBlock) {
    for (Zan32s mode = 0; mode < 9; ++mode)
        for (Zan32s avail : {0, kAll, kAbove | kLeft}) {
            Picture p = patterned();
            Picture q = p;
            pred4(p, mode, avail);
            for (Zan32s y = 0; y < 4; ++y)
                for (Zan32s x = 0; x < 4; ++x) p.at(x, y) = q.at(x, y);
            EXPECT_TRUE(p.px == q.px) << mode << " " << avail;
        }
}

TEST(H264Intra, Luma16x16DcByAvailability) {
    Picture p(0);
    for (Zan32s i = 0; i < 16; ++i) {
        p.at(i, -1) = static_cast<Zan8u>(i < 8 ? 10 : 11);  // sum 168
        p.at(-1, i) = static_cast<Zan8u>(i < 8 ? 21 : 22);  // sum 344
    }
    const Picture base = p;
    EXPECT_EQ(zaniPredictIntra_16x16_H264_8u_C1IR(p.block(), S, 2, kAll), zanStsOk);
    EXPECT_TRUE(p.flat(16, 16, (168 + 344 + 16) >> 5));  // 16
    p = base;
    EXPECT_EQ(zaniPredictIntra_16x16_H264_8u_C1IR(p.block(), S, 2, kAbove), zanStsOk);
    EXPECT_TRUE(p.flat(16, 16, 11));  // (168 + 8) >> 4
    p = base;
    EXPECT_EQ(zaniPredictIntra_16x16_H264_8u_C1IR(p.block(), S, 2, kLeft), zanStsOk);
    EXPECT_TRUE(p.flat(16, 16, 22));  // (344 + 8) >> 4
    p = base;
    EXPECT_EQ(zaniPredictIntra_16x16_H264_8u_C1IR(p.block(), S, 2, kCorner | kAboveRight), zanStsOk);
    EXPECT_TRUE(p.flat(16, 16, 128));
}

// Plane: the row above (corner included) 0 up to sample 7 and 255 from 8 on,
// the left column 0: H = 255 * (1 + ... + 8) = 9180, b = (5 H + 32) >> 6 =
// 717, V = 0, c = 0, a = 16 * 255 = 4080; sample (4096 + 717 (x - 7)) >> 5,
// clamped: both ends clamp, and the negative sums round toward minus infinity.
TEST(H264Intra, Luma16x16PlaneClamps) {
    const std::vector<int> ramp = {0, 0, 15, 38, 60, 83, 105, 128, 150, 172, 195, 217, 240, 255, 255, 255};
    Picture p(0);
    for (Zan32s x = 8; x < 16; ++x) p.at(x, -1) = 255;
    EXPECT_EQ(zaniPredictIntra_16x16_H264_8u_C1IR(p.block(), S, 3, kAbove | kLeft | kCorner), zanStsOk);
    for (Zan32s y = 0; y < 16; ++y) EXPECT_EQ(p.row(y, 16), ramp) << y;
    // The same edges turned down the left column give the ramp down every column.
    Picture q(0);
    for (Zan32s y = 8; y < 16; ++y) q.at(-1, y) = 255;
    EXPECT_EQ(zaniPredictIntra_16x16_H264_8u_C1IR(q.block(), S, 3, kAll), zanStsOk);
    for (Zan32s x = 0; x < 16; ++x) EXPECT_EQ(q.column(x, 16), ramp) << x;
}

TEST(H264Intra, Luma16x16VerticalHorizontal) {
    Picture p(0);
    for (Zan32s i = 0; i < 16; ++i) {
        p.at(i, -1) = static_cast<Zan8u>(3 * i);
        p.at(-1, i) = static_cast<Zan8u>(200 - i);
    }
    Picture q = p;
    EXPECT_EQ(zaniPredictIntra_16x16_H264_8u_C1IR(p.block(), S, 0, kAbove), zanStsOk);
    for (Zan32s y = 0; y < 16; ++y)
        for (Zan32s x = 0; x < 16; ++x) ASSERT_EQ(p.at(x, y), 3 * x);
    EXPECT_EQ(zaniPredictIntra_16x16_H264_8u_C1IR(q.block(), S, 1, kLeft), zanStsOk);
    for (Zan32s y = 0; y < 16; ++y)
        for (Zan32s x = 0; x < 16; ++x) ASSERT_EQ(q.at(x, y), 200 - y);
}

// Chroma DC by quadrant: above 10 10 10 10 | 50 50 50 50, left 20 x4 | 90 x4.
TEST(H264Intra, ChromaDcByQuadrant) {
    Picture base(0);
    base.above({10, 10, 10, 10, 50, 50, 50, 50});
    base.left({20, 20, 20, 20, 90, 90, 90, 90});
    struct {
        Zan32s avail;
        int tl, tr, bl, br;
    } cases[] = {
        {kAbove | kLeft, 15, 50, 90, 70},  // (40 + 80 + 4) >> 3, above, left, (200 + 360 + 4) >> 3
        {kAbove, 10, 50, 10, 50},
        {kLeft, 20, 20, 90, 90},
        {kCorner | kAboveRight, 128, 128, 128, 128},
    };
    for (const auto& c : cases) {
        Picture p = base;
        EXPECT_EQ(zaniPredictIntraChroma8x8_H264_8u_C1IR(p.block(), S, 0, c.avail), zanStsOk);
        for (Zan32s y = 0; y < 8; ++y)
            for (Zan32s x = 0; x < 8; ++x) {
                const int want = y < 4 ? (x < 4 ? c.tl : c.tr) : (x < 4 ? c.bl : c.br);
                ASSERT_EQ(p.at(x, y), want) << "avail " << c.avail << " at " << x << "," << y;
            }
    }
}

// Chroma plane: H = 255 * (1 + 2 + 3 + 4) = 2550 and b = (17 H + 16) >> 5 =
// 1355 with the right half of the row above 255; the mirror gives b = -1355.
TEST(H264Intra, ChromaPlaneClamps) {
    Picture p(0);
    p.above({0, 0, 0, 0, 255, 255, 255, 255});
    EXPECT_EQ(zaniPredictIntraChroma8x8_H264_8u_C1IR(p.block(), S, 3, kAll), zanStsOk);
    for (Zan32s y = 0; y < 8; ++y) EXPECT_EQ(p.row(y, 8), (std::vector<int>{0, 43, 85, 128, 170, 212, 255, 255})) << y;
    Picture q(255);
    q.above({255, 255, 255, 255, 0, 0, 0, 0});
    EXPECT_EQ(zaniPredictIntraChroma8x8_H264_8u_C1IR(q.block(), S, 3, kAll), zanStsOk);
    for (Zan32s y = 0; y < 8; ++y) EXPECT_EQ(q.row(y, 8), (std::vector<int>{255, 212, 170, 128, 85, 43, 0, 0})) << y;
}

TEST(H264Intra, ChromaVerticalHorizontalAndBlockBounds) {
    Picture p = patterned();
    const Picture before = p;
    EXPECT_EQ(zaniPredictIntraChroma8x8_H264_8u_C1IR(p.block(), S, 2, kAbove), zanStsOk);
    for (Zan32s y = 0; y < 8; ++y) EXPECT_EQ(p.row(y, 8), Picture(before).row(-1, 8));
    EXPECT_EQ(zaniPredictIntraChroma8x8_H264_8u_C1IR(p.block(), S, 1, kLeft), zanStsOk);
    for (Zan32s y = 0; y < 8; ++y) EXPECT_EQ(p.row(y, 8), std::vector<int>(8, Picture(before).at(-1, y)));
    for (Zan32s y = 0; y < 8; ++y)
        for (Zan32s x = 0; x < 8; ++x) p.at(x, y) = Picture(before).at(x, y);
    EXPECT_TRUE(p.px == before.px);
}

}  // namespace
