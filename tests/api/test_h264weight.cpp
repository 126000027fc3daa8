// H.264 weighted prediction through the exported functions: statuses in
// their order, outputs untouched on failure, and samples worked out by hand
// from the formulas of H.264 clause 8.4.2.3 (rounding, the log2wd = 0 case,
// floor of negative sums, clamping at 0, 255 and the 16-bit maximum).
#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <vector>

#include "zanvc.h"

namespace {

constexpr ZaniSize size(Zan32s w, Zan32s h) { return ZaniSize{w, h}; }

// An 8-bit plane of 32 x 20 samples.
struct Plane {
    static constexpr Zan32s kStep = 32;
    std::array<Zan8u, kStep * 20> px;
    explicit Plane(Zan8u v = 0) { px.fill(v); }
    Zan8u* at(Zan32s x, Zan32s y) { return px.data() + y * kStep + x; }
    Zan8u& operator()(Zan32s x, Zan32s y) { return *at(x, y); }
};
// A 16-bit plane of 24 x 20 samples; steps count samples.
struct Plane16 {
    static constexpr Zan32s kStep = 24;
    std::array<Zan16u, kStep * 20> px;
    explicit Plane16(Zan16u v = 0) { px.fill(v); }
    Zan16u* at(Zan32s x, Zan32s y) { return px.data() + y * kStep + x; }
    Zan16u& operator()(Zan32s x, Zan32s y) { return *at(x, y); }
};
constexpr Zan32s S = Plane::kStep;
constexpr Zan32s S16 = Plane16::kStep;

ZanBidirRecord record16(Plane16& a, Plane16& b, Plane16& d, Zan32s w, Zan32s h, Zan32s bitDepth) {
    return ZanBidirRecord{a.at(0, 0), S16, b.at(0, 0), S16, d.at(0, 0), S16, bitDepth, w, h};
}

// ------------------------------------------------------------ statuses

TEST(H264Weight, NullPointersFirstWhateverElseIsWrong) {
    Plane a(1), b(2), d(3);
    Plane16 a16(1), b16(2), d16(3);
    const ZaniSize bad = size(3, 0);  // and every step below is below the width too
    ZanWeightRecord wr{0, 1, 1, 0, 0};
    ZanWeightBlockRecord blk{a.at(0, 0), -1, b.at(0, 0), -1, nullptr, -1, 3, 0};
    ZanWeightBlockRecord blk2{nullptr, -1, b.at(0, 0), -1, d.at(0, 0), -1, 3, 0};
    ZanWeightBlockRecord blk3{a.at(0, 0), -1, nullptr, -1, d.at(0, 0), -1, 3, 0};
    ZanBidirRecord r16{a16.at(0, 0), -1, b16.at(0, 0), -1, nullptr, -1, 8, 3, 0};
    ZanBidirRecord r16b{a16.at(0, 0), -1, nullptr, -1, d16.at(0, 0), -1, 8, 3, 0};
    ZanBidirRecord r16c{nullptr, -1, b16.at(0, 0), -1, d16.at(0, 0), -1, 8, 99, 0};
    const std::vector<std::function<ZanStatus()>> calls = {
        [&] { return zaniUniDirWeightBlock_H264_8u_C1R(nullptr, -1, 0, 1, 0, bad); },
        [&] { return zaniUniDirWeightBlock_H264_8u_C1IR(nullptr, -1, 0, 1, 0, bad); },
        [&] { return zaniUniDirWeightBlock_H264_8u_C2R(nullptr, &wr); },
        [&] { return zaniUniDirWeightBlock_H264_8u_C2R(&blk, nullptr); },
        [&] { return zaniUniDirWeightBlock_H264_8u_C2R(&blk, &wr); },
        [&] { return zaniUniDirWeightBlock_H264_8u_C2R(&blk2, &wr); },
        [&] { return zaniBiDirWeightBlock_H264_8u_P2P1R(nullptr, b.at(0, 0), d.at(0, 0), -1, -1, 0, 1, 0, 1, 0, bad); },
        [&] { return zaniBiDirWeightBlock_H264_8u_P2P1R(a.at(0, 0), nullptr, d.at(0, 0), -1, -1, 0, 1, 0, 1, 0, bad); },
        [&] { return zaniBiDirWeightBlock_H264_8u_P2P1R(a.at(0, 0), b.at(0, 0), nullptr, -1, -1, 0, 1, 0, 1, 0, bad); },
        [&] { return zaniBiDirWeightBlock_H264_8u_P3P1R(nullptr, b.at(0, 0), d.at(0, 0), -1, -1, -1, 0, 1, 0, 1, 0, bad); },
        [&] { return zaniBiDirWeightBlock_H264_8u_P3P1R(a.at(0, 0), nullptr, d.at(0, 0), -1, -1, -1, 0, 1, 0, 1, 0, bad); },
        [&] { return zaniBiDirWeightBlock_H264_8u_P3P1R(a.at(0, 0), b.at(0, 0), nullptr, -1, -1, -1, 0, 1, 0, 1, 0, bad); },
        [&] { return zaniBiDirWeightBlock_H264_8u_C2R(nullptr, &wr, &wr); },
        [&] { return zaniBiDirWeightBlock_H264_8u_C2R(&blk, nullptr, &wr); },
        [&] { return zaniBiDirWeightBlock_H264_8u_C2R(&blk, &wr, nullptr); },
        [&] { return zaniBiDirWeightBlock_H264_8u_C2R(&blk, &wr, &wr); },
        [&] { return zaniBiDirWeightBlock_H264_8u_C2R(&blk2, &wr, &wr); },
        [&] { return zaniBiDirWeightBlock_H264_8u_C2R(&blk3, &wr, &wr); },
        [&] { return zaniBiDirWeightBlockImplicit_H264_8u_P2P1R(nullptr, b.at(0, 0), d.at(0, 0), -1, -1, 32, 32, bad); },
        [&] { return zaniBiDirWeightBlockImplicit_H264_8u_P2P1R(a.at(0, 0), b.at(0, 0), nullptr, -1, -1, 32, 32, bad); },
        [&] { return zaniBiDirWeightBlockImplicit_H264_8u_P3P1R(a.at(0, 0), nullptr, d.at(0, 0), -1, -1, -1, 32, 32, bad); },
        [&] { return zaniBiDirWeightBlockImplicit_H264_8u_P3P1R(a.at(0, 0), b.at(0, 0), nullptr, -1, -1, -1, 32, 32, bad); },
        [&] { return zaniWeightedAverage_H264_8u_C1IR(nullptr, b.at(0, 0), -1, 1, 1, 1, 0, bad); },
        [&] { return zaniWeightedAverage_H264_8u_C1IR(a.at(0, 0), nullptr, -1, 1, 1, 1, 0, bad); },
        [&] { return zaniUnidirWeight_H264_16u_IP2P1R(nullptr, -1, 0, 1, 0, bad, 10); },
        [&] { return zaniBidirWeight_H264_16u_P2P1R(nullptr, 0, 1, 0, 1, 0); },
        [&] { return zaniBidirWeight_H264_16u_P2P1R(&r16, 0, 1, 0, 1, 0); },
        [&] { return zaniBidirWeight_H264_16u_P2P1R(&r16b, 0, 1, 0, 1, 0); },
        [&] { return zaniBidirWeightImplicit_H264_16u_P2P1R(nullptr, 32, 32); },
        [&] { return zaniBidirWeightImplicit_H264_16u_P2P1R(&r16c, 32, 32); },
        [&] { return zaniBidir_H264_16u_P2P1R(nullptr); },
        [&] { return zaniBidir_H264_16u_P2P1R(&r16); },
        [&] { return zaniBidir_H264_16u_P2P1R(&r16b); },
        [&] { return zaniBidir_H264_16u_P2P1R(&r16c); },
    };
    for (size_t i = 0; i < calls.size(); ++i) EXPECT_EQ(calls[i](), zanStsNullPtr) << "call " << i;
    for (auto v : a.px) ASSERT_EQ(v, 1);
    for (auto v : b.px) ASSERT_EQ(v, 2);
    for (auto v : d.px) ASSERT_EQ(v, 3);
    for (auto v : b16.px) ASSERT_EQ(v, 2);
    for (auto v : d16.px) ASSERT_EQ(v, 3);
}

// Steps are tested before sizes: a step below a width that is itself bad
// gives zanStsStepBad; then a bad size with good steps gives zanStsSizeBad.
TEST(H264Weight, StepsBeforeSizesAndNothingWrittenOnFailure) {
    Plane a(1), b(2), d(3);
    Plane16 a16(1), b16(2), d16(3);
    EXPECT_EQ(zaniUniDirWeightBlock_H264_8u_C1R(d.at(0, 0), 16, 0, 1, 0, size(32, 3)), zanStsStepBad);
    EXPECT_EQ(zaniUniDirWeightBlock_H264_8u_C1R(d.at(0, 0), -S, 0, 1, 0, size(4, 4)), zanStsStepBad);
    EXPECT_EQ(zaniUniDirWeightBlock_H264_8u_C1R(d.at(0, 0), 7, 0, 1, 0, size(8, 4)), zanStsStepBad);
    EXPECT_EQ(zaniUniDirWeightBlock_H264_8u_C1R(d.at(0, 0), S, 0, 1, 0, size(4, 0)), zanStsSizeBad);
    EXPECT_EQ(zaniUniDirWeightBlock_H264_8u_C1IR(d.at(0, 0), S, 0, 1, 0, size(6, 4)), zanStsSizeBad);
    EXPECT_EQ(zaniUniDirWeightBlock_H264_8u_C1IR(d.at(0, 0), S, 0, 1, 0, size(4, 12)), zanStsSizeBad);
    EXPECT_EQ(zaniUniDirWeightBlock_H264_8u_C1IR(d.at(0, 0), S, 0, 1, 0, size(1, 4)), zanStsSizeBad);
    // Each step of the three-plane form on its own.
    const Zan8u *pa = a.at(0, 0), *pb = b.at(0, 0);
    Zan8u* pd = d.at(0, 0);
    EXPECT_EQ(zaniBiDirWeightBlock_H264_8u_P3P1R(pa, pb, pd, 7, S, S, 0, 1, 0, 1, 0, size(8, 8)), zanStsStepBad);
    EXPECT_EQ(zaniBiDirWeightBlock_H264_8u_P3P1R(pa, pb, pd, S, 7, S, 0, 1, 0, 1, 0, size(8, 8)), zanStsStepBad);
    EXPECT_EQ(zaniBiDirWeightBlock_H264_8u_P3P1R(pa, pb, pd, S, S, 7, 0, 1, 0, 1, 0, size(8, 8)), zanStsStepBad);
    EXPECT_EQ(zaniBiDirWeightBlock_H264_8u_P3P1R(pa, pb, pd, S, S, S, 0, 1, 0, 1, 0, size(8, 32)), zanStsSizeBad);
    EXPECT_EQ(zaniBiDirWeightBlock_H264_8u_P2P1R(pa, pb, pd, 1, S, 0, 1, 0, 1, 0, size(24, 2)), zanStsStepBad);
    EXPECT_EQ(zaniBiDirWeightBlock_H264_8u_P2P1R(pa, pb, pd, S, 1, 0, 1, 0, 1, 0, size(2, 2)), zanStsStepBad);
    EXPECT_EQ(zaniBiDirWeightBlock_H264_8u_P2P1R(pa, pb, pd, S, S, 0, 1, 0, 1, 0, size(2, 3)), zanStsSizeBad);
    EXPECT_EQ(zaniBiDirWeightBlockImplicit_H264_8u_P2P1R(pa, pb, pd, S, 3, 32, 32, size(4, 4)), zanStsStepBad);
    EXPECT_EQ(zaniBiDirWeightBlockImplicit_H264_8u_P2P1R(pa, pb, pd, S, S, 32, 32, size(12, 4)), zanStsSizeBad);
    EXPECT_EQ(zaniBiDirWeightBlockImplicit_H264_8u_P3P1R(pa, pb, pd, S, 0, S, 32, 32, size(2, 2)), zanStsStepBad);
    EXPECT_EQ(zaniBiDirWeightBlockImplicit_H264_8u_P3P1R(pa, pb, pd, S, S, S, 32, 32, size(16, 0)), zanStsSizeBad);
    EXPECT_EQ(zaniWeightedAverage_H264_8u_C1IR(pa, pd, 15, 1, 1, 1, 0, size(16, 16)), zanStsStepBad);
    EXPECT_EQ(zaniWeightedAverage_H264_8u_C1IR(pa, pd, S, 1, 1, 1, 0, size(16, 5)), zanStsSizeBad);
    // Interleaved: the steps are compared with the width in pairs.
    ZanWeightRecord wr{0, 1, 1, 0, 0};
    ZanWeightBlockRecord blk{pa, 7, pb, S, pd, S, 8, 4};
    EXPECT_EQ(zaniUniDirWeightBlock_H264_8u_C2R(&blk, &wr), zanStsStepBad);
    EXPECT_EQ(zaniBiDirWeightBlock_H264_8u_C2R(&blk, &wr, &wr), zanStsStepBad);
    blk = {pa, S, pb, 7, pd, S, 8, 4};
    EXPECT_EQ(zaniUniDirWeightBlock_H264_8u_C2R(&blk, &wr), zanStsOk) << "the second source is not used";
    d.px.fill(3);
    EXPECT_EQ(zaniBiDirWeightBlock_H264_8u_C2R(&blk, &wr, &wr), zanStsStepBad);
    blk = {pa, S, pb, S, pd, 7, 8, 4};
    EXPECT_EQ(zaniUniDirWeightBlock_H264_8u_C2R(&blk, &wr), zanStsStepBad);
    EXPECT_EQ(zaniBiDirWeightBlock_H264_8u_C2R(&blk, &wr, &wr), zanStsStepBad);
    blk = {pa, S, pb, S, pd, S, 32, 4};  // 32 pairs: a step of 32 bytes passes, the size fails
    EXPECT_EQ(zaniUniDirWeightBlock_H264_8u_C2R(&blk, &wr), zanStsSizeBad);
    EXPECT_EQ(zaniBiDirWeightBlock_H264_8u_C2R(&blk, &wr, &wr), zanStsSizeBad);
    // 16-bit: steps in samples.
    EXPECT_EQ(zaniUnidirWeight_H264_16u_IP2P1R(d16.at(0, 0), 15, 0, 1, 0, size(16, 2), 10), zanStsStepBad);
    EXPECT_EQ(zaniUnidirWeight_H264_16u_IP2P1R(d16.at(0, 0), 16, 0, 1, 0, size(16, 3), 10), zanStsSizeBad);
    ZanBidirRecord r = record16(a16, b16, d16, 8, 8, 10);
    for (int which = 0; which < 3; ++which) {
        ZanBidirRecord q = r;
        (which == 0 ? q.src1Step : which == 1 ? q.src2Step : q.dstStep) = 7;
        EXPECT_EQ(zaniBidirWeight_H264_16u_P2P1R(&q, 0, 1, 0, 1, 0), zanStsStepBad) << which;
        EXPECT_EQ(zaniBidirWeightImplicit_H264_16u_P2P1R(&q, 32, 32), zanStsStepBad) << which;
        q.width = 5;  // the steps pass now, the size does not
        EXPECT_EQ(zaniBidirWeight_H264_16u_P2P1R(&q, 0, 1, 0, 1, 0), zanStsSizeBad) << which;
    }
    r.height = 1;
    EXPECT_EQ(zaniBidirWeight_H264_16u_P2P1R(&r, 0, 1, 0, 1, 0), zanStsSizeBad);
    EXPECT_EQ(zaniBidirWeightImplicit_H264_16u_P2P1R(&r, 32, 32), zanStsSizeBad);
    EXPECT_EQ(zaniBidir_H264_16u_P2P1R(&r), zanStsSizeBad);
    r.height = 17;
    EXPECT_EQ(zaniBidir_H264_16u_P2P1R(&r), zanStsSizeBad);
    r.height = 2;
    r.width = 17;
    EXPECT_EQ(zaniBidir_H264_16u_P2P1R(&r), zanStsSizeBad);
    r.width = 1;
    EXPECT_EQ(zaniBidir_H264_16u_P2P1R(&r), zanStsSizeBad);
    for (auto v : d.px) ASSERT_EQ(v, 3);
    for (auto v : d16.px) ASSERT_EQ(v, 3);
}

TEST(H264Weight, EverySizeOfTheSetIsAccepted) {
    const Zan32s sizes[] = {2, 4, 8, 16};
    for (Zan32s w : sizes)
        for (Zan32s h : sizes) {
            Plane p(10);
            // w = 1, o = 5: 15 inside the block only.
            ASSERT_EQ(zaniUniDirWeightBlock_H264_8u_C1R(p.at(1, 1), S, 0, 1, 5, size(w, h)), zanStsOk);
            for (Zan32s y = 0; y < 20; ++y)
                for (Zan32s x = 0; x < S; ++x) {
                    bool inside = x >= 1 && x < 1 + w && y >= 1 && y < 1 + h;
                    ASSERT_EQ(p(x, y), inside ? 15 : 10) << w << "x" << h << " at " << x << "," << y;
                }
        }
}

// ------------------------------------------------------- known answers

TEST(H264Weight, UniDirectionalRoundingAndClamping) {
    Plane p;
    auto one = [&](Zan32s s, Zan32s l, Zan32s w, Zan32s o) {
        p.px.fill(static_cast<Zan8u>(s));
        EXPECT_EQ(zaniUniDirWeightBlock_H264_8u_C1R(p.at(0, 0), S, l, w, o, size(4, 2)), zanStsOk);
        Zan32s v = p(3, 1);
        EXPECT_EQ(p(0, 0), v);
        return v;
    };
    EXPECT_EQ(one(100, 0, 2, -3), 197);     // log2wd 0: no rounding term
    EXPECT_EQ(one(101, 0, 1, 0), 101);
    EXPECT_EQ(one(100, 5, 40, 3), 128);     // (4000 + 16) >> 5 = 125, + 3
    EXPECT_EQ(one(1, 5, 16, 0), 1);         // (16 + 16) >> 5: the half rounds up
    EXPECT_EQ(one(1, 5, 15, 0), 0);         // (15 + 16) >> 5
    EXPECT_EQ(one(200, 2, -5, 300), 50);    // (-1000 + 2) >> 2 = -250 (floor), + 300
    EXPECT_EQ(one(200, 2, -5, 127), 0);     // negative weight clamps to 0
    EXPECT_EQ(one(255, 0, 127, 127), 255);  // clamps to 255
    EXPECT_EQ(one(3, 7, -128, -128), 0);
    EXPECT_EQ(one(255, 7, 127, 0), 253);    // (32385 + 64) >> 7
    // Weights beyond a 16-bit lane still follow the formula in 32 bits.
    EXPECT_EQ(one(2, 10, 100000, 0), 195);  // (200000 + 512) >> 10
    EXPECT_EQ(one(250, 20, -100000, 30), 6); // (-25000000 + 524288) >> 20 = -24, + 30
    // A shift count of 32 or more leaves the sign: -1 or 0 before the offset.
    EXPECT_EQ(one(10, 40, -3, 5), 4);
    EXPECT_EQ(one(10, 40, 3, 5), 5);
    // The in-place form is the same function.
    p.px.fill(100);
    EXPECT_EQ(zaniUniDirWeightBlock_H264_8u_C1IR(p.at(0, 0), S, 5, 40, 3, size(16, 2)), zanStsOk);
    EXPECT_EQ(p(15, 1), 128);
    EXPECT_EQ(p(16, 1), 100);
    EXPECT_EQ(p(0, 2), 100);
}

TEST(H264Weight, BiDirectionalExplicit) {
    Plane a, b, d(7);
    auto one = [&](Zan32s sa, Zan32s sb, Zan32s l, Zan32s w1, Zan32s o1, Zan32s w2, Zan32s o2) {
        a.px.fill(static_cast<Zan8u>(sa));
        b.px.fill(static_cast<Zan8u>(sb));
        EXPECT_EQ(zaniBiDirWeightBlock_H264_8u_P2P1R(a.at(0, 0), b.at(0, 0), d.at(0, 0), S, S, l, w1, o1, w2, o2,
                                                     size(8, 4)),
                  zanStsOk);
        Zan32s v = d(7, 3);
        EXPECT_EQ(d(8, 3), 7);
        return v;
    };
    EXPECT_EQ(one(100, 50, 2, 3, 10, 5, -3), 73);   // (300 + 250 + 4) >> 3 = 69, + (10 - 3 + 1) >> 1
    EXPECT_EQ(one(100, 50, 2, 3, -3, 5, 0), 68);    // offset (-3 + 0 + 1) >> 1 = -1
    EXPECT_EQ(one(3, 0, 0, 1, 0, 1, 0), 2);         // log2wd 0: (3 + 0 + 1) >> 1
    EXPECT_EQ(one(255, 255, 5, 64, 127, 64, 127), 255);
    EXPECT_EQ(one(255, 255, 5, -128, 0, 127, 0), 0); // (-255 + 32) >> 6 = -4
    EXPECT_EQ(one(10, 0, 5, 127, 0, -128, 0), 20);  // (1270 + 32) >> 6
    // The three-plane form with its own steps.
    a.px.fill(0);
    b.px.fill(0);
    a(0, 1) = 40;    // row 1 of the first source at step S
    b(0, 2) = 80;    // row 1 of the second source at step 2S
    ASSERT_EQ(zaniBiDirWeightBlock_H264_8u_P3P1R(a.at(0, 0), b.at(0, 0), d.at(0, 0), S, 2 * S, 3, 0, 1, 0, 1, 0,
                                                 size(2, 2)),
              zanStsOk);
    EXPECT_EQ(d(0, 0), 0);
    EXPECT_EQ(d(3, 0), 60);  // (40 + 80 + 1) >> 1: row 1 lies 3 bytes on
    EXPECT_EQ(d(4, 0), 0);
}

TEST(H264Weight, Implicit) {
    Plane a, b, d;
    auto one = [&](Zan32s sa, Zan32s sb, Zan32s w1, Zan32s w2, bool p3) {
        a.px.fill(static_cast<Zan8u>(sa));
        b.px.fill(static_cast<Zan8u>(sb));
        ZanStatus st = p3 ? zaniBiDirWeightBlockImplicit_H264_8u_P3P1R(a.at(0, 0), b.at(0, 0), d.at(0, 0), S, S, S, w1,
                                                                       w2, size(16, 16))
                          : zaniBiDirWeightBlockImplicit_H264_8u_P2P1R(a.at(0, 0), b.at(0, 0), d.at(0, 0), S, S, w1,
                                                                       w2, size(16, 16));
        EXPECT_EQ(st, zanStsOk);
        EXPECT_EQ(d(0, 0), d(15, 15));
        return static_cast<Zan32s>(d(15, 15));
    };
    for (bool p3 : {false, true}) {
        EXPECT_EQ(one(100, 202, 32, 32, p3), 151);  // (3200 + 6464 + 32) >> 6: 151.5 floors
        EXPECT_EQ(one(100, 200, 32, 32, p3), 150);  // (3200 + 6400 + 32) >> 6: 150.5 floors
        EXPECT_EQ(one(100, 100, 16, 48, p3), 100);  // (1600 + 4800 + 32) >> 6
        EXPECT_EQ(one(255, 0, 80, -16, p3), 255);   // 319 clamps
        EXPECT_EQ(one(10, 255, 80, -16, p3), 0);    // (800 - 4080 + 32) >> 6 = -51
        EXPECT_EQ(one(64, 0, 1, 0, p3), 1);         // (64 + 32) >> 6
        EXPECT_EQ(one(31, 0, 1, 0, p3), 0);         // (31 + 32) >> 6
    }
}

TEST(H264Weight, WeightedAverageOverTheSecondSource) {
    Plane a(10), b(20);
    ASSERT_EQ(zaniWeightedAverage_H264_8u_C1IR(a.at(0, 0), b.at(0, 0), S, 3, 5, 3, -2, size(4, 8)), zanStsOk);
    EXPECT_EQ(b(3, 7), 14);  // (30 + 4 + 100) >> 3 = 16, - 2
    EXPECT_EQ(b(4, 7), 20);
    EXPECT_EQ(b(3, 8), 20);
    EXPECT_EQ(a(3, 7), 10);
    b.px.fill(20);
    ASSERT_EQ(zaniWeightedAverage_H264_8u_C1IR(a.at(0, 0), b.at(0, 0), S, 1, 1, 0, 7, size(2, 2)), zanStsOk);
    EXPECT_EQ(b(1, 1), 37);  // shift 0: no rounding, 30 + 7
    b.px.fill(21);
    ASSERT_EQ(zaniWeightedAverage_H264_8u_C1IR(a.at(0, 0), b.at(0, 0), S, 1, 1, 1, 0, size(2, 2)), zanStsOk);
    EXPECT_EQ(b(1, 1), 16);  // (10 + 1 + 21) >> 1
    b.px.fill(250);
    ASSERT_EQ(zaniWeightedAverage_H264_8u_C1IR(a.at(0, 0), b.at(0, 0), S, 1, 2, 1, 0, size(2, 2)), zanStsOk);
    EXPECT_EQ(b(1, 1), 255);
}

TEST(H264Weight, InterleavedChannelsHaveTheirOwnWeights) {
    Plane a, b, d(9);
    for (Zan32s y = 0; y < 20; ++y)
        for (Zan32s x = 0; x < S; ++x) {
            a(x, y) = x % 2 ? 20 : 10;
            b(x, y) = x % 2 ? 100 : 30;
        }
    // Uni: only the low 4 bits of the denominator count (2 here).
    ZanWeightRecord w{0xFFFFFFF2u, 4, -1, 1, 100};
    ZanWeightBlockRecord blk{a.at(0, 0), S, nullptr, 0, d.at(0, 0), S, 4, 2};
    ASSERT_EQ(zaniUniDirWeightBlock_H264_8u_C2R(&blk, &w), zanStsOk);
    EXPECT_EQ(d(0, 0), 11);  // U: (40 + 2) >> 2, + 1
    EXPECT_EQ(d(7, 1), 95);  // V: (-20 + 2) >> 2 = -5, + 100
    EXPECT_EQ(d(8, 1), 9);   // 4 pairs are 8 bytes
    EXPECT_EQ(d(0, 2), 9);
    // Bi: log2wd from the list-0 record (1), that of list 1 ignored.
    d.px.fill(9);
    ZanWeightRecord w0{1, 2, 1, 5, -7}, w1{7, 1, 1, 6, 0};
    for (Zan32s x = 0; x < S; x += 2) b(x, 0) = 30, b(x + 1, 0) = 100, a(x + 1, 0) = 200;
    blk = {a.at(0, 0), S, b.at(0, 0), S, d.at(0, 0), S, 16, 2};
    ASSERT_EQ(zaniBiDirWeightBlock_H264_8u_C2R(&blk, &w0, &w1), zanStsOk);
    EXPECT_EQ(d(0, 0), 19);   // U: (20 + 30 + 2) >> 2 = 13, + (5 + 6 + 1) >> 1
    EXPECT_EQ(d(31, 0), 72);  // V: (200 + 100 + 2) >> 2 = 75, + (-7 + 0 + 1) >> 1
    EXPECT_EQ(d(1, 1), 27);   // V of row 1: (20 + 100 + 2) >> 2 = 30, - 3
    EXPECT_EQ(d(0, 2), 9);
}

TEST(H264Weight, SixteenBitUniDirectional) {
    Plane16 p;
    auto one = [&](Zan32s s, Zan32s l, Zan32s w, Zan32s o, Zan32s depth) {
        p.px.fill(static_cast<Zan16u>(s));
        EXPECT_EQ(zaniUnidirWeight_H264_16u_IP2P1R(p.at(0, 0), S16, l, w, o, size(16, 4), depth), zanStsOk);
        EXPECT_EQ(p(0, 0), p(15, 3));
        EXPECT_EQ(p(16, 3), s);
        return static_cast<Zan32s>(p(15, 3));
    };
    EXPECT_EQ(one(1000, 0, 2, 0, 10), 1023);          // clamps to 10 bits
    EXPECT_EQ(one(1000, 6, 64, -5, 10), 995);         // (64000 + 32) >> 6, - 5
    EXPECT_EQ(one(1000, 6, -64, 500, 10), 0);
    EXPECT_EQ(one(16383, 0, 127, 0, 14), 16383);
    EXPECT_EQ(one(65535, 0, 1, 0, 16), 65535);
    EXPECT_EQ(one(40000, 0, -1, 50000, 16), 10000);   // samples are unsigned
    EXPECT_EQ(one(40000, 1, 3, 0, 16), 60000);        // (120000 + 1) >> 1
    EXPECT_EQ(one(300, 0, 1, 0, 8), 255);
    EXPECT_EQ(one(5, 3, 70000, 1, 20), 43751);       // wide weight: (350000 + 4) >> 3 + 1, in 20 bits
}

TEST(H264Weight, SixteenBitBiDirectionalAndImplicit) {
    Plane16 a, b, d(7);
    auto fill = [&](Zan32s sa, Zan32s sb) {
        a.px.fill(static_cast<Zan16u>(sa));
        b.px.fill(static_cast<Zan16u>(sb));
    };
    ZanBidirRecord r = record16(a, b, d, 8, 2, 12);
    fill(4000, 4095);
    ASSERT_EQ(zaniBidirWeight_H264_16u_P2P1R(&r, 6, 64, 100, 64, 100), zanStsOk);
    EXPECT_EQ(d(7, 1), 4095);  // (256000 + 262080 + 64) >> 7 = 4048, + 100, clamps to 12 bits
    EXPECT_EQ(d(8, 1), 7);
    fill(1000, 3000);
    ASSERT_EQ(zaniBidirWeight_H264_16u_P2P1R(&r, 1, 1, 0, 3, -1), zanStsOk);
    EXPECT_EQ(d(0, 0), 2500);  // (1000 + 9000 + 2) >> 2, + (0 - 1 + 1) >> 1
    fill(1023, 0);
    r.bitDepth = 10;
    ASSERT_EQ(zaniBidirWeightImplicit_H264_16u_P2P1R(&r, 48, 16), zanStsOk);
    EXPECT_EQ(d(7, 1), 767);  // (49104 + 32) >> 6
    fill(1023, 1023);
    ASSERT_EQ(zaniBidirWeightImplicit_H264_16u_P2P1R(&r, 96, -32), zanStsOk);
    EXPECT_EQ(d(7, 1), 1023);  // (98208 - 32736 + 32) >> 6 = 1023
    fill(60000, 50000);
    r.bitDepth = 16;
    ASSERT_EQ(zaniBidirWeightImplicit_H264_16u_P2P1R(&r, 32, 32), zanStsOk);
    EXPECT_EQ(d(0, 0), 55000);
}

TEST(H264Weight, SixteenBitPlainAverage) {
    Plane16 a(1), b(2), d(7);
    // Any width and height in 2..16, steps unchecked (a zero step repeats a row).
    ZanBidirRecord r{a.at(0, 0), 0, b.at(0, 10), -S16, d.at(0, 0), S16, 10, 3, 5};
    b(0, 10) = 6;
    ASSERT_EQ(zaniBidir_H264_16u_P2P1R(&r), zanStsOk);
    EXPECT_EQ(d(0, 0), 4);  // (1 + 6 + 1) >> 1
    EXPECT_EQ(d(2, 4), 2);  // (1 + 2 + 1) >> 1
    EXPECT_EQ(d(3, 0), 7);
    EXPECT_EQ(d(0, 5), 7);
    // Averages above the depth's maximum clamp.
    a.px.fill(300);
    b.px.fill(301);
    r = {a.at(0, 0), S16, b.at(0, 0), S16, d.at(0, 0), S16, 8, 16, 16};
    ASSERT_EQ(zaniBidir_H264_16u_P2P1R(&r), zanStsOk);
    EXPECT_EQ(d(15, 15), 255);
    r.bitDepth = 16;
    a.px.fill(65535);
    b.px.fill(65534);
    ASSERT_EQ(zaniBidir_H264_16u_P2P1R(&r), zanStsOk);
    EXPECT_EQ(d(15, 15), 65535);
    EXPECT_EQ(d(16, 15), 7);
}

}  // namespace
