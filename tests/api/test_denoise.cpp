// The adaptive and smoothing denoisers through the exported functions:
// statuses in their order, nothing written on failure, and known answers
// worked out by hand.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "zanvc.h"

namespace {

struct State {
    ZanDenoiseAdaptiveState* st = nullptr;
    State(ZaniSize roi, ZaniSize mask) { EXPECT_EQ(zaniFilterDenoiseAdaptiveInitAlloc_8u_C1(&st, roi, mask), zanStsOk); }
    ~State() { zaniFilterDenoiseAdaptiveFree_8u_C1(st); }
};

TEST(Denoise, AdaptiveRecord) {
    ZanDenoiseAdaptiveState* st = nullptr;
    EXPECT_EQ(zaniFilterDenoiseAdaptiveInitAlloc_8u_C1(nullptr, {0, 0}, {1, 1}), zanStsNullPtr);
    EXPECT_EQ(zaniFilterDenoiseAdaptiveInitAlloc_8u_C1(&st, {0, 4}, {1, 1}), zanStsSizeBad);
    EXPECT_EQ(zaniFilterDenoiseAdaptiveInitAlloc_8u_C1(&st, {4, 4}, {1, 0}), zanStsSizeBad);
    EXPECT_EQ(zaniFilterDenoiseAdaptiveInitAlloc_8u_C1(&st, {4, 4}, {5, 1}), zanStsSizeBad);
    EXPECT_EQ(zaniFilterDenoiseAdaptiveInitAlloc_8u_C1(&st, {4, 2}, {1, 3}), zanStsSizeBad);
    EXPECT_EQ(st, nullptr);
    EXPECT_EQ(zaniFilterDenoiseAdaptiveFree_8u_C1(nullptr), zanStsNullPtr);

    State s({16, 8}, {1, 1});
    EXPECT_EQ(s.st->maskSize.width, 1);
    EXPECT_EQ(s.st->roiSize.width, 16);
    EXPECT_EQ(s.st->roiSize.height, 8);
    const Zan16u* R = s.st->pRecip;
    EXPECT_EQ(R[0], 1);
    EXPECT_EQ(R[1], 65535);
    EXPECT_EQ(R[2], 32768);   // 32767.5 + 0.5
    EXPECT_EQ(R[3], 21845);
    EXPECT_EQ(R[9], 7282);    // 7281.67
    EXPECT_EQ(R[27], 2427);   // the last of 3 * 9 + 1 entries
    State big({8, 8}, {2, 1});  // r = 2: 76 entries
    EXPECT_EQ(big.st->pRecip[16], 4096);
    EXPECT_EQ(big.st->pRecip[75], 874);  // 873.8
}

// A picture of value 10y + x.  Threshold 0: the plain mean of the current
// frame's window, cut at the picture's edge.
TEST(Denoise, AdaptivePlainMean) {
    std::vector<Zan8u> cur(25), other(25, 0), dst(25, 0xEE);
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 5; ++x) cur[y * 5 + x] = static_cast<Zan8u>(10 * y + x);
    const Zan8u* planes[3] = {other.data(), cur.data(), other.data()};
    State s({5, 5}, {2, 2});
    ASSERT_EQ(zaniFilterDenoiseAdaptive_8u_C1R(planes, 5, dst.data(), 5, {5, 5}, {2, 2}, {0, 0}, {5, 5}, 0, 3, s.st),
              zanStsOk);
    // (1, 1): rows 0..3, columns 0..3, n = 16, sum 264: 264 * 4096 >> 16 = 16.
    EXPECT_EQ(dst[1 * 5 + 1], 16);
    // (2, 2): the whole 5x5, n = 25, sum 550: 550 * R[25] (2621) >> 16 = 21.
    EXPECT_EQ(dst[2 * 5 + 2], (550 * 2621) >> 16);
    // The picture's outer rows and columns are the current frame.
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(dst[i], cur[i]);
        EXPECT_EQ(dst[20 + i], cur[20 + i]);
        EXPECT_EQ(dst[i * 5], cur[i * 5]);
        EXPECT_EQ(dst[i * 5 + 4], cur[i * 5 + 4]);
    }
}

// 3x3 picture of 100s; the previous frame is 0 but for one neighbour of 100
// (it passes a threshold of 1), the next frame is 0.  Only the centre is
// filtered.  Sc 900, Sp 100, cp 1, cn 0, p = q = 0.
TEST(Denoise, AdaptiveModes) {
    std::vector<Zan8u> cur(9, 100), prev(9, 0), next(9, 0), dst(9);
    prev[0] = 100;
    const Zan8u* planes[3] = {prev.data(), cur.data(), next.data()};
    const int want[4] = {(900 * 5958) >> 16,    // mode 0: Sc + p + q over n + 2 = 11
                         (1000 * 5958) >> 16,   // mode 1: Sc + Sp + q over n + cp + 1 = 11
                         (900 * 6554) >> 16,    // mode 2: Sc + p + Sn over n + cn + 1 = 10
                         (1000 * 6554) >> 16};  // mode 3: Sc + Sp + Sn over n + cp + cn = 10
    // The 3x3 window (fast form) and a 3x5 window cut to 3x3 by the picture
    // (general form) agree.
    State fast({3, 3}, {1, 1}), general({3, 3}, {1, 2});
    for (int mode = 0; mode < 4; ++mode) {
        ASSERT_EQ(zaniFilterDenoiseAdaptive_8u_C1R(planes, 3, dst.data(), 3, {3, 3}, {1, 1}, {0, 0}, {3, 3}, 1, mode,
                                                   fast.st),
                  zanStsOk);
        EXPECT_EQ(dst[4], want[mode]) << "mode " << mode;
        dst[4] = 0;
        ASSERT_EQ(zaniFilterDenoiseAdaptive_8u_C1R(planes, 3, dst.data(), 3, {3, 3}, {1, 2}, {0, 0}, {3, 3}, 1, mode,
                                                   general.st),
                  zanStsOk);
        EXPECT_EQ(dst[4], want[mode]) << "general mode " << mode;
    }
    EXPECT_EQ(want[0], 81);
    EXPECT_EQ(want[3], 100);
    // Threshold 0: nothing passes, 900 * R[9] >> 16 = 100 whatever the mode.
    ASSERT_EQ(zaniFilterDenoiseAdaptive_8u_C1R(planes, 3, dst.data(), 3, {3, 3}, {1, 1}, {0, 0}, {3, 3}, 0, 0, fast.st),
              zanStsOk);
    EXPECT_EQ(dst[4], 100);

    // An unknown mode: the general form writes nothing and returns 1; the 3x3
    // form does the border copies only and returns 0.
    std::vector<Zan8u> untouched(9, 0xEE);
    dst = untouched;
    EXPECT_EQ(zaniFilterDenoiseAdaptive_8u_C1R(planes, 3, dst.data(), 3, {3, 3}, {1, 2}, {0, 0}, {3, 3}, 1, 4,
                                               general.st),
              zanStsModeUnknown);
    EXPECT_EQ(dst, untouched);
    EXPECT_EQ(zaniFilterDenoiseAdaptive_8u_C1R(planes, 3, dst.data(), 3, {3, 3}, {1, 1}, {0, 0}, {3, 3}, 1, 4, fast.st),
              zanStsOk);
    EXPECT_EQ(dst[4], 0xEE);
    EXPECT_EQ(dst[0], 100);
    EXPECT_EQ(dst[8], 100);
}

TEST(Denoise, AdaptiveStatuses) {
    std::vector<Zan8u> p(64, 1), dst(64, 0xEE);
    const Zan8u* planes[3] = {p.data(), p.data(), p.data()};
    const Zan8u* holed[3] = {p.data(), p.data(), nullptr};
    State s({4, 4}, {1, 1});
    auto call = [&](const Zan8u** pl, Zan8u* d, ZaniSize img, ZaniSize mask, ZaniPoint off, ZaniSize roi,
                    ZanDenoiseAdaptiveState* st) {
        return zaniFilterDenoiseAdaptive_8u_C1R(pl, 8, d, 8, img, mask, off, roi, 5, 9, st);
    };
    EXPECT_EQ(call(nullptr, dst.data(), {0, 0}, {1, 1}, {0, 0}, {4, 4}, s.st), zanStsNullPtr);
    EXPECT_EQ(call(planes, dst.data(), {8, 8}, {1, 1}, {0, 0}, {4, 4}, nullptr), zanStsNullPtr);
    EXPECT_EQ(call(holed, dst.data(), {0, 0}, {1, 1}, {0, 0}, {4, 4}, s.st), zanStsNullPtr);
    EXPECT_EQ(call(planes, dst.data(), {0, 8}, {1, 1}, {0, 0}, {4, 4}, s.st), zanStsSizeBad);
    EXPECT_EQ(call(planes, dst.data(), {8, 8}, {1, 1}, {5, 0}, {4, 4}, s.st), zanStsSizeBad);   // past the picture
    EXPECT_EQ(call(planes, dst.data(), {8, 8}, {1, 1}, {-1, 0}, {4, 4}, s.st), zanStsSizeBad);
    EXPECT_EQ(call(planes, dst.data(), {8, 8}, {1, 1}, {0, 0}, {4, 3}, s.st), zanStsSizeBad);   // not the state's
    EXPECT_EQ(call(planes, dst.data(), {8, 8}, {2, 1}, {0, 0}, {4, 4}, s.st), zanStsSizeBad);
    EXPECT_EQ(call(planes, dst.data(), {8, 8}, {1, 0}, {0, 0}, {4, 4}, s.st), zanStsSizeBad);
    EXPECT_EQ(dst, std::vector<Zan8u>(64, 0xEE));
}

struct Smooth {
    Zan32s W, H;
    std::vector<Zan8u> buf;
    Smooth(Zan32s w, Zan32s h, ZaniSize roi, Zan8u fill = 0)
        : W(w), H(h), buf(static_cast<size_t>(2 * (roi.height + 3) * (roi.width + 3)), fill) {}
    ZanStatus run(const std::vector<Zan8u>& src, std::vector<Zan8u>& dst, Zan32s t, ZaniPoint off, ZaniSize roi) {
        return zaniFilterDenoiseSmooth_8u_C1R(src.data(), W, dst.data(), W, {W, H}, t, off, roi, buf.data());
    }
};

TEST(Denoise, SmoothFlatAndEdges) {
    for (int v : {0, 1, 100, 254, 255}) {
        std::vector<Zan8u> src(64, static_cast<Zan8u>(v)), dst(64, 0xEE);
        Smooth s(8, 8, {8, 8});
        ASSERT_EQ(s.run(src, dst, 10, {0, 0}, {8, 8}), zanStsOk);
        EXPECT_EQ(dst, src) << v;  // 9v * 7282 >> 16 = v; 255 stays 255
    }
    // A bump of 110 in 100s: the samples whose windows hold it become
    // 910 * 7282 >> 16 = 101; the others stay.
    std::vector<Zan8u> src(64, 100), dst(64, 0);
    src[3 * 8 + 3] = 110;
    Smooth s(8, 8, {8, 8});
    ASSERT_EQ(s.run(src, dst, 30, {0, 0}, {8, 8}), zanStsOk);
    EXPECT_EQ(dst[3 * 8 + 3], 101);
    EXPECT_EQ(dst[2 * 8 + 2], 101);
    EXPECT_EQ(dst[4 * 8 + 4], 101);
    EXPECT_EQ(dst[5 * 8 + 5], 100);
    // A strong vertical edge: the mask stops the mean at it, both sides keep
    // their values.
    std::vector<Zan8u> edge(64), out(64);
    for (int i = 0; i < 64; ++i) edge[i] = (i % 8) < 4 ? 20 : 200;
    Smooth e(8, 8, {8, 8});
    ASSERT_EQ(e.run(edge, out, 30, {0, 0}, {8, 8}), zanStsOk);
    EXPECT_EQ(out, edge);
}

TEST(Denoise, SmoothThresholdZero) {
    // The covered part of the mask is set: rows 1..4 pass through unchanged
    // whatever the picture holds.
    std::vector<Zan8u> src(64), dst(64, 0);
    for (int i = 0; i < 64; ++i) src[i] = static_cast<Zan8u>((i * 73 + 11) % 256);
    Smooth s(8, 8, {8, 8}, 0);
    ASSERT_EQ(s.run(src, dst, 0, {0, 0}, {8, 8}), zanStsOk);
    for (int i = 8; i < 5 * 8; ++i) EXPECT_EQ(dst[i], src[i]) << i;
    // With the buffer all set beforehand the whole region is unchanged.
    Smooth full(8, 8, {8, 8}, 255);
    ASSERT_EQ(full.run(src, dst, 0, {0, 0}, {8, 8}), zanStsOk);
    EXPECT_EQ(dst, src);
}

// A region away from the picture's edges is filtered as the same samples of
// the whole picture are: its first row's windows reach outside the region.
TEST(Denoise, SmoothInnerRegion) {
    std::vector<Zan8u> src(100), whole(100, 0), part(100, 0xEE);
    for (int i = 0; i < 100; ++i) src[i] = static_cast<Zan8u>(((i * 37) % 23) * 3 + 80 + ((i % 10) > 6 ? 60 : 0));
    Smooth a(10, 10, {10, 10}), b(10, 10, {4, 4});
    ASSERT_EQ(a.run(src, whole, 12, {0, 0}, {10, 10}), zanStsOk);
    ASSERT_EQ(b.run(src, part, 12, {3, 3}, {4, 4}), zanStsOk);
    int changed = 0;
    for (int y = 0; y < 10; ++y)
        for (int x = 0; x < 10; ++x) {
            bool inside = y >= 3 && y < 7 && x >= 3 && x < 7;
            if (inside) {
                EXPECT_EQ(part[y * 10 + x], whole[y * 10 + x]) << y << "," << x;
                changed += part[y * 10 + x] != src[y * 10 + x];
            } else {
                EXPECT_EQ(part[y * 10 + x], 0xEE);
            }
        }
    EXPECT_GT(changed, 0);
}

TEST(Denoise, SmoothStatuses) {
    std::vector<Zan8u> src(64, 9), dst(64, 0xEE), buf(200);
    EXPECT_EQ(zaniFilterDenoiseSmooth_8u_C1R(nullptr, 8, dst.data(), 8, {8, 8}, 5, {0, 0}, {8, 2}, buf.data()),
              zanStsNullPtr);
    EXPECT_EQ(zaniFilterDenoiseSmooth_8u_C1R(src.data(), 8, dst.data(), 8, {8, 8}, 5, {0, 0}, {8, 8}, nullptr),
              zanStsNullPtr);
    EXPECT_EQ(zaniFilterDenoiseSmooth_8u_C1R(src.data(), 8, dst.data(), 8, {8, 0}, 5, {0, 0}, {8, 2}, buf.data()),
              zanStsSizeBad);
    EXPECT_EQ(zaniFilterDenoiseSmooth_8u_C1R(src.data(), 8, dst.data(), 8, {8, 8}, 5, {0, 0}, {8, 2}, buf.data()),
              zanStsErr);
    EXPECT_EQ(zaniFilterDenoiseSmooth_8u_C1R(src.data(), 8, dst.data(), 8, {8, 8}, 5, {0, 7}, {8, 3}, buf.data()),
              zanStsSizeBad);
    EXPECT_EQ(zaniFilterDenoiseSmooth_8u_C1R(src.data(), 8, dst.data(), 8, {8, 8}, 5, {1, 0}, {8, 3}, buf.data()),
              zanStsSizeBad);
    EXPECT_EQ(dst, std::vector<Zan8u>(64, 0xEE));
}

}  // namespace
