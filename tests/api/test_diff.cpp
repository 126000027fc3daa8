// Block differencing through the exported functions: the one status and its
// precedence, outputs untouched on failure, masked selectors, and known
// answers worked out by hand.
#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cstring>
#include <functional>
#include <vector>

#include "zanvc.h"

namespace {

// ------------------------------------------------------------------ forms

using FwdFn = ZanStatus (*)(const Zan8u*, Zan32s, const Zan8u*, Zan32s, Zan16s*, Zan32s, Zan16s*, Zan32s, Zan32s,
                            Zan32s);
using BiFn = ZanStatus (*)(const Zan8u*, Zan32s, const Zan8u*, Zan32s, Zan32s, const Zan8u*, Zan32s, Zan32s, Zan16s*,
                           Zan32s, Zan32s);
using C2Fn = ZanStatus (*)(const Zan8u*, Zan32s, const Zan8u*, Zan32s, Zan16s*, Zan32s, Zan16s*, Zan32s, Zan32s,
                           Zan32s);
using C2BFn = ZanStatus (*)(const Zan8u*, Zan32s, const Zan8u*, Zan32s, Zan32s, const Zan8u*, Zan32s, Zan32s, Zan16s*,
                            Zan32s, Zan16s*, Zan32s, Zan32s);
using Sub8Fn = ZanStatus (*)(const Zan8u*, Zan32s, const Zan8u*, Zan32s, Zan16s*, Zan32s);
using Sub16Fn = ZanStatus (*)(const Zan16u*, Zan32s, const Zan16u*, Zan32s, Zan16s*, Zan32s);

template <class Fn>
struct Form {
    const char* name;
    Fn fn;
    int w, h;
};

const Form<FwdFn> kFwd[] = {{"16x16", zaniGetDiff16x16_8u16s_C1, 16, 16},
                            {"16x8", zaniGetDiff16x8_8u16s_C1, 16, 8},
                            {"8x16", zaniGetDiff8x16_8u16s_C1, 8, 16},
                            {"8x8", zaniGetDiff8x8_8u16s_C1, 8, 8},
                            {"8x4", zaniGetDiff8x4_8u16s_C1, 8, 4}};
const Form<BiFn> kBi[] = {{"16x16B", zaniGetDiff16x16B_8u16s_C1, 16, 16},
                          {"16x8B", zaniGetDiff16x8B_8u16s_C1, 16, 8},
                          {"8x16B", zaniGetDiff8x16B_8u16s_C1, 8, 16},
                          {"8x8B", zaniGetDiff8x8B_8u16s_C1, 8, 8},
                          {"8x4B", zaniGetDiff8x4B_8u16s_C1, 8, 4}};
const Form<C2Fn> kC2[] = {{"8x8_C2P2", zaniGetDiff8x8_8u16s_C2P2, 8, 8}, {"8x4_C2P2", zaniGetDiff8x4_8u16s_C2P2, 8, 4}};
const Form<C2BFn> kC2B[] = {{"8x8B_C2P2", zaniGetDiff8x8B_8u16s_C2P2, 8, 8},
                            {"8x4B_C2P2", zaniGetDiff8x4B_8u16s_C2P2, 8, 4}};
const Form<Sub8Fn> kSub8[] = {{"GetDiff4x4", zaniGetDiff4x4_8u16s_C1, 4, 4},
                              {"Sub16x16", zaniSub16x16_8u16s_C1R, 16, 16},
                              {"Sub8x8", zaniSub8x8_8u16s_C1R, 8, 8},
                              {"Sub4x4", zaniSub4x4_8u16s_C1R, 4, 4}};
const Form<Sub16Fn> kSub16[] = {{"Sub8x8_16u", zaniSub8x8_16u16s_C1R, 8, 8}, {"Sub4x4_16u", zaniSub4x4_16u16s_C1R, 4, 4}};

// ------------------------------------------------------------ pictures

// 8-bit samples with room for the extra row and column of every position.
struct Picture {
    static constexpr Zan32s kStep = 48;
    alignas(64) std::array<Zan8u, kStep * 20> px;
    explicit Picture(Zan8u v = 0) { px.fill(v); }
    Zan8u* at(Zan32s x, Zan32s y) { return px.data() + y * kStep + x; }
};

// A block of Zan16s outputs, rows kStep bytes apart, pre-filled with a mark.
struct Out {
    static constexpr Zan32s kStep = 64;  // bytes
    static constexpr Zan16s kMark = -12345;
    alignas(64) std::array<Zan16s, kStep / 2 * 17> v;
    Out() { v.fill(kMark); }
    Zan16s* p() { return v.data(); }
    Zan16s at(Zan32s x, Zan32s y) const { return v[static_cast<size_t>(y * kStep / 2 + x)]; }
    bool untouched() const {
        for (Zan16s s : v)
            if (s != kMark) return false;
        return true;
    }
};

// The reference tile used by the known answers: R(x, y) by the parities of
// x and y:  y even: 10 13 10 13 ...   y odd: 21 30 21 30 ...
// With rounding bit rc, worked by hand:
//   FF  R(x, y)
//   FH  x even (10 + 21 + 1 - rc) >> 1 = 16 / 15;  x odd (13 + 30 + 1 - rc) >> 1 = 22 / 21
//   HF  y even (10 + 13 + 1 - rc) >> 1 = 12 / 11;  y odd (21 + 30 + 1 - rc) >> 1 = 26 / 25
//   HH  (10 + 13 + 21 + 30 + 2 - rc) >> 2 = 19 / 18 everywhere
Zan8u tile(Zan32s x, Zan32s y) {
    static const Zan8u t[2][2] = {{10, 13}, {21, 30}};
    return t[y & 1][x & 1];
}
Zan32s tile_prediction(Zan32s position, Zan32s rc, Zan32s x, Zan32s y) {
    switch (position) {
    case 0: return tile(x, y);
    case 1: return (x & 1) ? 22 - rc : 16 - rc;
    case 2: return (y & 1) ? 26 - rc : 12 - rc;
    default: return 19 - rc;
    }
}
// The tile on one channel of an interleaved picture (sample x is byte 2x + ch).
void put_tile(Picture& pic, Zan32s channel, Zan32s offset) {
    for (Zan32s y = 0; y < 20; ++y)
        for (Zan32s x = 0; x < 20; ++x) *pic.at(2 * x + channel, y) = static_cast<Zan8u>(tile(x, y) + offset);
}

constexpr Zan32s S = Picture::kStep;
constexpr Zan32s O = Out::kStep;

// ------------------------------------------------------------- statuses

// Every tested pointer null in turn, with every other argument as odd as it
// can be: zero and negative steps, selectors with all bits set.  The result is
// zanStsNullPtr and nothing is written, the predictor included.
TEST(Diff, NullPointerIsTheOnlyFailureAndWritesNothing) {
    Picture cur(1), ref(2);
    Out d, p, u, v;
    const Zan8u* c = cur.at(0, 0);
    const Zan8u* r = ref.at(0, 0);
    std::vector<std::function<ZanStatus()>> calls;
    for (const auto& f : kFwd) {
        calls.push_back([&, f] { return f.fn(nullptr, 0, r, -S, d.p(), 0, p.p(), -1, -1, -1); });
        calls.push_back([&, f] { return f.fn(c, -S, nullptr, 0, d.p(), 3, p.p(), 0, INT_MIN, 7); });
        calls.push_back([&, f] { return f.fn(c, 0, r, 0, nullptr, 0, p.p(), 0, 12, 1); });
        calls.push_back([&, f] { return f.fn(nullptr, S, nullptr, S, nullptr, O, nullptr, O, 0, 0); });
    }
    for (const auto& f : kBi) {
        calls.push_back([&, f] { return f.fn(nullptr, 0, r, 0, -1, r, 0, -1, d.p(), 0, -1); });
        calls.push_back([&, f] { return f.fn(c, 0, nullptr, 0, 0, r, 0, 0, d.p(), 0, 0); });
        calls.push_back([&, f] { return f.fn(c, 0, r, 0, 12, nullptr, 0, 12, d.p(), 0, 1); });
        calls.push_back([&, f] { return f.fn(c, -S, r, -S, INT_MAX, r, -S, INT_MIN, nullptr, -O, 3); });
    }
    for (const auto& f : kC2) {
        calls.push_back([&, f] { return f.fn(nullptr, 0, r, 0, u.p(), 0, v.p(), 0, -1, -1); });
        calls.push_back([&, f] { return f.fn(c, 0, nullptr, 0, u.p(), 0, v.p(), 0, 4, 0); });
        calls.push_back([&, f] { return f.fn(c, 0, r, 0, nullptr, 0, v.p(), 0, 8, 1); });
        calls.push_back([&, f] { return f.fn(c, 0, r, 0, u.p(), -O, nullptr, -O, 12, 0); });
    }
    for (const auto& f : kC2B) {
        calls.push_back([&, f] { return f.fn(nullptr, 0, r, 0, -1, r, 0, -1, u.p(), 0, v.p(), 0, -1); });
        calls.push_back([&, f] { return f.fn(c, 0, nullptr, 0, 0, r, 0, 0, u.p(), 0, v.p(), 0, 0); });
        calls.push_back([&, f] { return f.fn(c, 0, r, 0, 4, nullptr, 0, 8, u.p(), 0, v.p(), 0, 1); });
        calls.push_back([&, f] { return f.fn(c, 0, r, 0, 12, r, 0, 12, nullptr, 0, v.p(), 0, 0); });
        calls.push_back([&, f] { return f.fn(c, 0, r, 0, 12, r, 0, 12, u.p(), 0, nullptr, 0, 0); });
    }
    for (const auto& f : kSub8) {
        calls.push_back([&, f] { return f.fn(nullptr, 0, r, -1, d.p(), 0); });
        calls.push_back([&, f] { return f.fn(c, -S, nullptr, 0, d.p(), 1); });
        calls.push_back([&, f] { return f.fn(c, 0, r, 0, nullptr, -O); });
    }
    for (const auto& f : kSub16) {
        const auto* c16 = reinterpret_cast<const Zan16u*>(c);
        const auto* r16 = reinterpret_cast<const Zan16u*>(r);
        calls.push_back([&, f, r16] { return f.fn(nullptr, 0, r16, -1, d.p(), 0); });
        calls.push_back([&, f, c16] { return f.fn(c16, -S, nullptr, 0, d.p(), 1); });
        calls.push_back([&, f, c16, r16] { return f.fn(c16, 0, r16, 0, nullptr, -O); });
    }
    for (size_t i = 0; i < calls.size(); ++i) EXPECT_EQ(calls[i](), zanStsNullPtr) << "call " << i;
    EXPECT_TRUE(d.untouched());
    EXPECT_TRUE(p.untouched());
    EXPECT_TRUE(u.untouched());
    EXPECT_TRUE(v.untouched());
}

// Steps and selectors are never checked: zero and negative steps and any
// selector value succeed.  A zero step repeats one row.
TEST(Diff, StepsAndSelectorsAreNotChecked) {
    Picture cur, ref(100);
    for (Zan32s x = 0; x < 16; ++x) *cur.at(x, 0) = static_cast<Zan8u>(100 + x);
    for (const auto& f : kFwd) {
        Out d;
        ASSERT_EQ(f.fn(cur.at(0, 0), 0, ref.at(0, 18), -S, d.p(), O, nullptr, -7, INT_MIN, INT_MIN), zanStsOk);
        for (Zan32s y = 0; y < f.h; ++y)
            for (Zan32s x = 0; x < f.w; ++x) EXPECT_EQ(d.at(x, y), x) << f.name;
    }
    for (const auto& f : kSub8) {
        Out d;
        // Negative destination step: the first row is the lowest in memory + (h-1) rows.
        Zan16s* last = d.p() + (f.h - 1) * O / 2;
        ASSERT_EQ(f.fn(cur.at(0, 0), 0, ref.at(0, 0), 0, last, -O), zanStsOk);
        for (Zan32s y = 0; y < f.h; ++y)
            for (Zan32s x = 0; x < f.w; ++x) EXPECT_EQ(d.at(x, y), x) << f.name;
    }
}

// ----------------------------------------------------------- known answers

// Every position and rounding on the tiled reference, for every forward
// shape, with the predictor.  The current block is 100 everywhere.
TEST(Diff, ForwardPositionsAndRoundingByHand) {
    Picture cur(100), ref;
    for (Zan32s y = 0; y < 20; ++y)
        for (Zan32s x = 0; x < S; ++x) *ref.at(x, y) = tile(x, y);
    for (const auto& f : kFwd)
        for (Zan32s mc = 0; mc < 16; ++mc)
            for (Zan32s rcArg = 0; rcArg < 4; ++rcArg) {
                Out d, p;
                ASSERT_EQ(f.fn(cur.at(0, 0), S, ref.at(0, 0), S, d.p(), O, p.p(), O, mc, rcArg), zanStsOk);
                const Zan32s pos = (mc >> 2) & 3, rc = rcArg & 1;
                for (Zan32s y = 0; y < f.h; ++y)
                    for (Zan32s x = 0; x < f.w; ++x) {
                        const Zan32s want = tile_prediction(pos, rc, x, y);
                        ASSERT_EQ(p.at(x, y), want) << f.name << " mcType " << mc << " rc " << rcArg << " at " << x << "," << y;
                        ASSERT_EQ(d.at(x, y), 100 - want) << f.name << " mcType " << mc << " rc " << rcArg;
                    }
                // Only the block is written.
                for (Zan32s x = f.w; x < O / 2; ++x) ASSERT_EQ(d.at(x, 0), Out::kMark) << f.name;
                ASSERT_EQ(d.at(0, f.h), Out::kMark) << f.name;
                ASSERT_EQ(p.at(f.w, f.h - 1), Out::kMark) << f.name;
            }
}

// A null predictor is no error; it gives the same differences and no
// predictor.  Sharp cases: vertical half sample of rows 1 and 2 predicts 2
// with rc 0 and 1 with rc 1.
TEST(Diff, PredictorIsOptional) {
    Picture cur(0), ref;
    for (Zan32s y = 0; y < 20; ++y)
        for (Zan32s x = 0; x < S; ++x) *ref.at(x, y) = static_cast<Zan8u>(1 + (y & 1));
    for (const auto& f : kFwd)
        for (Zan32s rc = 0; rc < 2; ++rc) {
            Out withP, p, without;
            ASSERT_EQ(f.fn(cur.at(0, 0), S, ref.at(0, 0), S, withP.p(), O, p.p(), O, 4, rc), zanStsOk);
            ASSERT_EQ(f.fn(cur.at(0, 0), S, ref.at(0, 0), S, without.p(), O, nullptr, O, 4, rc), zanStsOk);
            EXPECT_EQ(withP.v, without.v) << f.name;
            EXPECT_EQ(p.at(0, 0), rc ? 1 : 2) << f.name;
            EXPECT_EQ(without.at(f.w - 1, f.h - 1), rc ? -1 : -2) << f.name;
        }
}

// The largest differences: 0 against 255 and 255 against 0.
TEST(Diff, ExtremeSamples) {
    Picture zero(0), full(255);
    for (const auto& f : kFwd)
        for (Zan32s mc : {0, 4, 8, 12}) {
            Out a, b, p;
            ASSERT_EQ(f.fn(zero.at(0, 0), S, full.at(0, 0), S, a.p(), O, p.p(), O, mc, 1), zanStsOk);
            ASSERT_EQ(f.fn(full.at(0, 0), S, zero.at(0, 0), S, b.p(), O, nullptr, 0, mc, 0), zanStsOk);
            EXPECT_EQ(a.at(f.w - 1, f.h - 1), -255) << f.name;
            EXPECT_EQ(p.at(0, 0), 255) << f.name;
            EXPECT_EQ(b.at(0, 0), 255) << f.name;
        }
    for (const auto& f : kSub8) {
        Out a, b;
        ASSERT_EQ(f.fn(zero.at(0, 0), S, full.at(0, 0), S, a.p(), O), zanStsOk);
        ASSERT_EQ(f.fn(full.at(0, 0), S, zero.at(0, 0), S, b.p(), O), zanStsOk);
        EXPECT_EQ(a.at(f.w - 1, f.h - 1), -255) << f.name;
        EXPECT_EQ(b.at(0, 0), 255) << f.name;
        EXPECT_EQ(a.at(f.w, 0), Out::kMark) << f.name;
    }
}

// Bidirectional: (P0 + P1 + 1) >> 1, both with the same rc.  One reference
// is the tile, the other 51 everywhere (51 at every position), so the result
// follows the tile's selector only.  Values by hand, e.g. HH with rc 0:
// (19 + 51 + 1) >> 1 = 35; with rc 1: (18 + 51 + 1) >> 1 = 35; FH x even
// rc 1: (15 + 51 + 1) >> 1 = 33.
TEST(Diff, BidirectionalAveragesBothPredictions) {
    Picture cur(200), tiled, flat(51);
    for (Zan32s y = 0; y < 20; ++y)
        for (Zan32s x = 0; x < S; ++x) *tiled.at(x, y) = tile(x, y);
    for (const auto& f : kBi)
        for (Zan32s tiledIsForward = 0; tiledIsForward < 2; ++tiledIsForward)
            for (Zan32s mcTile = 0; mcTile < 16; ++mcTile)
                for (Zan32s mcFlat : {0, 7, 9, 14})
                    for (Zan32s rc = 0; rc < 2; ++rc) {
                        Out d;
                        ZanStatus st = tiledIsForward
                                           ? f.fn(cur.at(0, 0), S, tiled.at(0, 0), S, mcTile, flat.at(0, 0), S, mcFlat, d.p(), O, rc)
                                           : f.fn(cur.at(0, 0), S, flat.at(0, 0), S, mcFlat, tiled.at(0, 0), S, mcTile, d.p(), O, rc);
                        ASSERT_EQ(st, zanStsOk);
                        for (Zan32s y = 0; y < f.h; ++y)
                            for (Zan32s x = 0; x < f.w; ++x) {
                                Zan32s want = 200 - ((tile_prediction(mcTile >> 2, rc, x, y) + 51 + 1) >> 1);
                                ASSERT_EQ(d.at(x, y), want) << f.name << " tiled " << (tiledIsForward ? "forward" : "backward")
                                                            << " mcType " << mcTile << " rc " << rc;
                            }
                        ASSERT_EQ(d.at(f.w, 0), Out::kMark);
                        ASSERT_EQ(d.at(0, f.h), Out::kMark);
                    }
    // The average of the two rounds up: 0 and 1 give 1, so 1 - 1 = 0.
    Picture zero(0), one(1), c1(1);
    Out d;
    ASSERT_EQ(zaniGetDiff8x8B_8u16s_C1(c1.at(0, 0), S, zero.at(0, 0), S, 0, one.at(0, 0), S, 0, d.p(), O, 1), zanStsOk);
    EXPECT_EQ(d.at(7, 7), 0);
}

// Interleaved channels: U is the tile, V the tile plus 100 (the half-sample
// neighbour of a channel lies two bytes on).  Current U = 100, V = 250, so
// dU = 100 - P and dV = 250 - (P + 100) = 150 - P with P of the tile.
TEST(Diff, InterleavedChannelsTakeTheNeighbourTwoBytesOn) {
    Picture cur, ref;
    for (Zan32s y = 0; y < 20; ++y)
        for (Zan32s x = 0; x < S; x += 2) {
            *cur.at(x, y) = 100;
            *cur.at(x + 1, y) = 250;
        }
    put_tile(ref, 0, 0);
    put_tile(ref, 1, 100);
    Picture flat(51);
    for (Zan32s mc = 0; mc < 16; ++mc)
        for (Zan32s rc = 0; rc < 2; ++rc) {
            for (const auto& f : kC2) {
                Out u, v;
                ASSERT_EQ(f.fn(cur.at(0, 0), S, ref.at(0, 0), S, u.p(), O, v.p(), O, mc | (rc << 6), rc), zanStsOk);
                for (Zan32s y = 0; y < f.h; ++y)
                    for (Zan32s x = 0; x < 8; ++x) {
                        const Zan32s pv = tile_prediction(mc >> 2, rc, x, y);
                        ASSERT_EQ(u.at(x, y), 100 - pv) << f.name << " mcType " << mc << " rc " << rc << " at " << x << "," << y;
                        ASSERT_EQ(v.at(x, y), 150 - pv) << f.name << " mcType " << mc << " rc " << rc << " at " << x << "," << y;
                    }
                ASSERT_EQ(u.at(8, 0), Out::kMark);
                ASSERT_EQ(v.at(0, f.h), Out::kMark);
            }
            for (const auto& f : kC2B) {
                Out u, v;
                ASSERT_EQ(f.fn(cur.at(0, 0), S, ref.at(0, 0), S, mc, flat.at(0, 0), S, 15 - mc, u.p(), O, v.p(), O, rc),
                          zanStsOk);
                for (Zan32s y = 0; y < f.h; ++y)
                    for (Zan32s x = 0; x < 8; ++x) {
                        const Zan32s pv = tile_prediction(mc >> 2, rc, x, y);
                        ASSERT_EQ(u.at(x, y), 100 - ((pv + 52) >> 1)) << f.name << " mcType " << mc << " rc " << rc;
                        ASSERT_EQ(v.at(x, y), 250 - ((pv + 100 + 52) >> 1)) << f.name << " mcType " << mc << " rc " << rc;
                    }
            }
        }
}

// The 16-bit forms subtract in 16 bits and wrap.
TEST(Diff, SixteenBitSubtractionWraps) {
    struct Case {
        Zan16u a, b;
        Zan16s want;
    };
    const Case cases[] = {{0, 65535, 1},          {65535, 0, -1},         {40000, 0, -25536}, {0, 40000, 25536},
                          {32768, 0, -32768},     {0, 32768, -32768},     {32767, 65535, -32768},
                          {65535, 65535, 0},      {1000, 999, 1},         {999, 1000, -1}};
    for (const auto& f : kSub16)
        for (Zan32s offset : {0, 1}) {  // 16-byte aligned everything, and not
            alignas(16) std::array<Zan16u, 8 * 20> a, b;
            alignas(16) std::array<Zan16s, 8 * 20> d;
            d.fill(Out::kMark);
            for (size_t i = 0; i < a.size(); ++i) {
                a[i] = cases[i % 10].a;
                b[i] = cases[i % 10].b;
            }
            ASSERT_EQ(f.fn(a.data() + offset, 16, b.data() + offset, 16, d.data() + offset, 16), zanStsOk);
            for (Zan32s y = 0; y < f.h; ++y)
                for (Zan32s x = 0; x < f.w; ++x) {
                    const size_t i = static_cast<size_t>(offset + 8 * y + x);
                    ASSERT_EQ(d[i], cases[i % 10].want) << f.name << " offset " << offset << " at " << x << "," << y;
                }
            EXPECT_EQ(d[static_cast<size_t>(offset + f.w)], f.w == 8 ? cases[(offset + 8) % 10].want : Out::kMark);
        }
}

// Aligned stores are taken only when every output row pointer and step is a
// multiple of 16; any one of them off gives the same values (and no fault).
TEST(Diff, AnyOutputAlignment) {
    Picture cur, ref, refB;
    for (size_t i = 0; i < cur.px.size(); ++i) {
        cur.px[i] = static_cast<Zan8u>(i * 7 + 3);
        ref.px[i] = static_cast<Zan8u>(i * 13 + (i >> 5));
        refB.px[i] = static_cast<Zan8u>(i * 5 + 101);
    }
    // Output layouts: offset in samples and step in bytes of the difference
    // and of the predictor (or V plane).
    struct Layout {
        Zan32s dOff, dStep, pOff, pStep;
    };
    const Layout layouts[] = {{1, O, 0, O}, {0, O + 2, 0, O}, {0, O, 3, O}, {0, O, 0, O - 2}, {0, -O, 0, O}};
    alignas(64) std::array<Zan16s, 32 * 40> d, p;
    auto value = [](const std::array<Zan16s, 32 * 40>& a, const Layout& l, bool second, Zan32s x, Zan32s y) {
        const Zan32s off = second ? l.pOff : l.dOff, step = second ? l.pStep : l.dStep;
        return a[static_cast<size_t>(16 * 32 + off + y * step / 2 + x)];
    };
    for (Zan32s mc : {0, 4, 8, 12}) {
        for (const auto& f : kFwd) {
            Out d0, p0;
            ASSERT_EQ(f.fn(cur.at(0, 0), S, ref.at(0, 0), S, d0.p(), O, p0.p(), O, mc, 1), zanStsOk);
            for (const Layout& l : layouts) {
                d.fill(0);
                p.fill(0);
                ASSERT_EQ(f.fn(cur.at(0, 0), S, ref.at(0, 0), S, d.data() + 16 * 32 + l.dOff, l.dStep,
                               p.data() + 16 * 32 + l.pOff, l.pStep, mc, 1),
                          zanStsOk);
                for (Zan32s y = 0; y < f.h; ++y)
                    for (Zan32s x = 0; x < f.w; ++x) {
                        ASSERT_EQ(value(d, l, false, x, y), d0.at(x, y)) << f.name << " mcType " << mc;
                        ASSERT_EQ(value(p, l, true, x, y), p0.at(x, y)) << f.name << " mcType " << mc;
                    }
            }
        }
        for (const auto& f : kBi) {
            Out d0;
            ASSERT_EQ(f.fn(cur.at(0, 0), S, ref.at(0, 0), S, mc, refB.at(0, 0), S, 12 - mc, d0.p(), O, 0), zanStsOk);
            for (const Layout& l : layouts) {
                d.fill(0);
                ASSERT_EQ(f.fn(cur.at(0, 0), S, ref.at(0, 0), S, mc, refB.at(0, 0), S, 12 - mc, d.data() + 16 * 32 + l.dOff,
                               l.dStep, 0),
                          zanStsOk);
                for (Zan32s y = 0; y < f.h; ++y)
                    for (Zan32s x = 0; x < f.w; ++x) ASSERT_EQ(value(d, l, false, x, y), d0.at(x, y)) << f.name;
            }
        }
        for (const auto& f : kC2) {
            Out u0, v0;
            ASSERT_EQ(f.fn(cur.at(0, 0), S, ref.at(0, 0), S, u0.p(), O, v0.p(), O, mc, 0), zanStsOk);
            for (const Layout& l : layouts) {
                d.fill(0);
                p.fill(0);
                ASSERT_EQ(f.fn(cur.at(0, 0), S, ref.at(0, 0), S, d.data() + 16 * 32 + l.dOff, l.dStep,
                               p.data() + 16 * 32 + l.pOff, l.pStep, mc, 0),
                          zanStsOk);
                for (Zan32s y = 0; y < f.h; ++y)
                    for (Zan32s x = 0; x < 8; ++x) {
                        ASSERT_EQ(value(d, l, false, x, y), u0.at(x, y)) << f.name;
                        ASSERT_EQ(value(p, l, true, x, y), v0.at(x, y)) << f.name;
                    }
            }
        }
        for (const auto& f : kC2B) {
            Out u0, v0;
            ASSERT_EQ(f.fn(cur.at(0, 0), S, ref.at(0, 0), S, mc, refB.at(0, 0), S, 12 - mc, u0.p(), O, v0.p(), O, 1),
                      zanStsOk);
            for (const Layout& l : layouts) {
                d.fill(0);
                p.fill(0);
                ASSERT_EQ(f.fn(cur.at(0, 0), S, ref.at(0, 0), S, mc, refB.at(0, 0), S, 12 - mc, d.data() + 16 * 32 + l.dOff,
                               l.dStep, p.data() + 16 * 32 + l.pOff, l.pStep, 1),
                          zanStsOk);
                for (Zan32s y = 0; y < f.h; ++y)
                    for (Zan32s x = 0; x < 8; ++x) {
                        ASSERT_EQ(value(d, l, false, x, y), u0.at(x, y)) << f.name;
                        ASSERT_EQ(value(p, l, true, x, y), v0.at(x, y)) << f.name;
                    }
            }
        }
    }
}

// --------------------------------------------------------------- selectors

// Stray bits above the selectors' bits, and negative values, select what the
// low bits select: mcType & 12 and roundControl & 1.  A selector that indexed
// past its table would crash or differ here (and is caught by the sanitizer
// build).
std::vector<Zan32s> stray_variants(Zan32s base) {
    std::vector<Zan32s> v;
    for (int bit = 4; bit < 32; ++bit) v.push_back(static_cast<Zan32s>(static_cast<Zan32u>(base) | (1u << bit)));
    for (Zan32u high : {0xFFFFFFF0u, 0x7FFFFFF0u, 0x80000000u, 0x55555550u, 0xAAAAAAA0u})
        v.push_back(static_cast<Zan32s>(high | static_cast<Zan32u>(base)));
    return v;
}

TEST(Diff, MaskedSelectorsWithStrayBits) {
    Picture cur, refA, refB;
    for (size_t i = 0; i < cur.px.size(); ++i) {
        cur.px[i] = static_cast<Zan8u>(i * 7 + 3);
        refA.px[i] = static_cast<Zan8u>(i * 13 + (i >> 5));
        refB.px[i] = static_cast<Zan8u>(i * 5 + 101);
    }
    for (Zan32s mc = 0; mc < 16; ++mc)
        for (Zan32s rc = 0; rc < 2; ++rc) {
            const Zan32s rcStray[] = {rc | 2, rc | 0x100, static_cast<Zan32s>(0xFFFFFFFEu | static_cast<Zan32u>(rc))};
            for (const auto& f : kFwd) {
                Out d0, p0;
                ASSERT_EQ(f.fn(cur.at(0, 0), S, refA.at(0, 0), S, d0.p(), O, p0.p(), O, mc & 12, rc), zanStsOk);
                for (Zan32s m : stray_variants(mc)) {
                    Out d, p, dn;
                    ASSERT_EQ(f.fn(cur.at(0, 0), S, refA.at(0, 0), S, d.p(), O, p.p(), O, m, rcStray[m & 1 ? 2 : 0]), zanStsOk);
                    ASSERT_EQ(f.fn(cur.at(0, 0), S, refA.at(0, 0), S, dn.p(), O, nullptr, O, m, rcStray[1]), zanStsOk);
                    ASSERT_EQ(d.v, d0.v) << f.name << " mcType " << m;
                    ASSERT_EQ(p.v, p0.v) << f.name << " mcType " << m;
                    ASSERT_EQ(dn.v, d0.v) << f.name << " mcType " << m << " without predictor";
                }
            }
            for (const auto& f : kC2) {
                Out u0, v0;
                ASSERT_EQ(f.fn(cur.at(0, 0), S, refA.at(0, 0), S, u0.p(), O, v0.p(), O, mc & 12, rc), zanStsOk);
                for (Zan32s m : stray_variants(mc)) {
                    Out u, v;
                    ASSERT_EQ(f.fn(cur.at(0, 0), S, refA.at(0, 0), S, u.p(), O, v.p(), O, m, rcStray[2]), zanStsOk);
                    ASSERT_EQ(u.v, u0.v) << f.name << " mcType " << m;
                    ASSERT_EQ(v.v, v0.v) << f.name << " mcType " << m;
                }
            }
            // Bidirectional: each of the two selectors with stray bits while
            // the other sweeps its four positions.
            for (Zan32s other = 0; other < 16; other += 4) {
                for (const auto& f : kBi) {
                    Out d0;
                    ASSERT_EQ(f.fn(cur.at(0, 0), S, refA.at(0, 0), S, mc & 12, refB.at(0, 0), S, other, d0.p(), O, rc), zanStsOk);
                    Out e0;
                    ASSERT_EQ(f.fn(cur.at(0, 0), S, refA.at(0, 0), S, other, refB.at(0, 0), S, mc & 12, e0.p(), O, rc), zanStsOk);
                    for (Zan32s m : stray_variants(mc)) {
                        Out d, e;
                        ASSERT_EQ(f.fn(cur.at(0, 0), S, refA.at(0, 0), S, m, refB.at(0, 0), S, other, d.p(), O, rcStray[2]), zanStsOk);
                        ASSERT_EQ(f.fn(cur.at(0, 0), S, refA.at(0, 0), S, other, refB.at(0, 0), S, m, e.p(), O, rcStray[1]), zanStsOk);
                        ASSERT_EQ(d.v, d0.v) << f.name << " mcTypeF " << m;
                        ASSERT_EQ(e.v, e0.v) << f.name << " mcTypeB " << m;
                    }
                }
                for (const auto& f : kC2B) {
                    Out u0, v0;
                    ASSERT_EQ(f.fn(cur.at(0, 0), S, refA.at(0, 0), S, other, refB.at(0, 0), S, mc & 12, u0.p(), O, v0.p(), O, rc),
                              zanStsOk);
                    for (Zan32s m : stray_variants(mc)) {
                        Out u, v;
                        ASSERT_EQ(f.fn(cur.at(0, 0), S, refA.at(0, 0), S, other | (m & ~15), refB.at(0, 0), S, m, u.p(), O,
                                       v.p(), O, rcStray[0]),
                                  zanStsOk);
                        ASSERT_EQ(u.v, u0.v) << f.name << " mcTypeB " << m;
                        ASSERT_EQ(v.v, v0.v) << f.name << " mcTypeB " << m;
                    }
                }
            }
        }
}

// The two selectors of a bidirectional form are not interchangeable: the
// forward position goes with the forward reference.
TEST(Diff, BidirectionalSelectorsGoWithTheirReferences) {
    Picture cur(0), tiled, flat(51);
    for (Zan32s y = 0; y < 20; ++y)
        for (Zan32s x = 0; x < S; ++x) *tiled.at(x, y) = tile(x, y);
    // Tiled forward at HF (12 on even rows), flat backward at FF: (12 + 51 + 1) >> 1 = 32.
    Out d;
    ASSERT_EQ(zaniGetDiff16x16B_8u16s_C1(cur.at(0, 0), S, tiled.at(0, 0), S, 8, flat.at(0, 0), S, 0, d.p(), O, 0), zanStsOk);
    EXPECT_EQ(d.at(0, 0), -32);
    EXPECT_EQ(d.at(1, 0), -32);
    // Swapped selectors: tiled forward at FF (10 at 0,0), flat at HF: (10 + 51 + 1) >> 1 = 31.
    ASSERT_EQ(zaniGetDiff16x16B_8u16s_C1(cur.at(0, 0), S, tiled.at(0, 0), S, 0, flat.at(0, 0), S, 8, d.p(), O, 0), zanStsOk);
    EXPECT_EQ(d.at(0, 0), -31);
    EXPECT_EQ(d.at(1, 0), -32);  // 13: (13 + 52) >> 1 = 32
}

}  // namespace
