// Motion compensation and block arithmetic through the exported functions:
// null pointers beat everything and write nothing; selectors are masked, so
// every pattern of stray bits selects a valid position; known answers for
// the roundings, the saturations, the 16-bit wrap of the in-place add and the
// interleaved 16x4 forms.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "zanvc.h"

namespace {

constexpr Zan32s kStep = 64;

// A picture with room around its blocks; ref(x, y) is (x, y) from the
// centre, so steps may be negative.
struct Picture {
    alignas(64) std::array<Zan8u, kStep * 48> px{};
    explicit Picture(Zan8u v = 0) { px.fill(v); }
    Zan8u* at(Zan32s x, Zan32s y) { return px.data() + (y + 16) * kStep + x + 16; }
    void random(std::uint32_t seed) {
        for (auto& p : px) {
            seed = seed * 1664525u + 1013904223u;
            p = static_cast<Zan8u>(seed >> 24);
        }
    }
};

// A residual block of Zan16s, rows kStep bytes apart.
struct Residual {
    alignas(16) std::array<Zan16s, kStep / 2 * 16> v{};
    void fill(Zan16s x) { v.fill(x); }
    void random(std::uint32_t seed, Zan32s range) {
        for (auto& r : v) {
            seed = seed * 1664525u + 1013904223u;
            r = static_cast<Zan16s>(static_cast<Zan32s>(seed >> 16) % (2 * range + 1) - range);
        }
    }
    Zan16s* p() { return v.data(); }
    Zan16s& at(Zan32s x, Zan32s y) { return v[static_cast<size_t>(y * kStep / 2 + x)]; }
};

// The reference sample at position pos (mcType >> 2 order: 0 full, 1 half
// in y, 2 half in x, 3 both) with rounding bit rc; d bytes to the
// horizontal neighbour.
Zan32s predicted(Picture& r, Zan32s x, Zan32s y, int pos, int rc, int d) {
    const Zan32s a = *r.at(x, y), b = *r.at(x + d, y), c = *r.at(x, y + 1), e = *r.at(x + d, y + 1);
    switch (pos) {
        case 1: return (a + c + 1 - rc) >> 1;
        case 2: return (a + b + 1 - rc) >> 1;
        case 3: return (a + b + c + e + 2 - rc) >> 2;
        default: return a;
    }
}
Zan8u clamp255(Zan32s v) { return static_cast<Zan8u>(v < 0 ? 0 : v > 255 ? 255 : v); }

// Selector values that must act as their low bits: every low pattern with
// high bits set in many ways.
std::vector<Zan32s> stray(Zan32s low) {
    std::vector<Zan32s> out;
    for (std::uint32_t high : {0u, 0x80000000u, 0xFFFFFFF0u, 0x7FFFFFF0u, 0x10u, 0x30u, 0xF0u, 0x100u, 0x12345670u,
                               0xFFFF0000u, 0x40000000u, 0xAAAAAAA0u})
        out.push_back(static_cast<Zan32s>(high | static_cast<std::uint32_t>(low)));
    return out;
}

// ------------------------------------------------------------- the forms

using Fwd = ZanStatus (*)(const Zan8u*, Zan32s, const Zan16s*, Zan32s, Zan8u*, Zan32s, Zan32s, Zan32s);
using Bi = ZanStatus (*)(const Zan8u*, Zan32s, Zan32s, const Zan8u*, Zan32s, Zan32s, const Zan16s*, Zan32s, Zan8u*,
                         Zan32s, Zan32s);
struct FwdForm {
    const char* name;
    Fwd fn;
    Zan32s w, h, d;  // bytes across, rows, distance to the horizontal neighbour
};
struct BiForm {
    const char* name;
    Bi fn;
    Zan32s w, h, d;
};

const FwdForm kFwd[] = {
    {"MC16x16", zaniMC16x16_8u_C1, 16, 16, 1}, {"MC16x8", zaniMC16x8_8u_C1, 16, 8, 1},
    {"MC16x4", zaniMC16x4_8u_C1, 16, 4, 2},    {"MC16x8UV", zaniMC16x8UV_8u_C1, 16, 8, 2},
    {"MC8x16", zaniMC8x16_8u_C1, 8, 16, 1},    {"MC8x8", zaniMC8x8_8u_C1, 8, 8, 1},
    {"MC8x4", zaniMC8x4_8u_C1, 8, 4, 1},       {"MC4x8", zaniMC4x8_8u_C1, 4, 8, 1},
    {"MC4x4", zaniMC4x4_8u_C1, 4, 4, 1},       {"MC4x2", zaniMC4x2_8u_C1, 4, 2, 1},
    {"MC2x4", zaniMC2x4_8u_C1, 2, 4, 1},       {"MC2x2", zaniMC2x2_8u_C1, 2, 2, 1},
};
const BiForm kBi[] = {
    {"MC16x16B", zaniMC16x16B_8u_C1, 16, 16, 1}, {"MC16x8B", zaniMC16x8B_8u_C1, 16, 8, 1},
    {"MC16x4B", zaniMC16x4B_8u_C1, 16, 4, 2},    {"MC16x8BUV", zaniMC16x8BUV_8u_C1, 16, 8, 2},
    {"MC8x16B", zaniMC8x16B_8u_C1, 8, 16, 1},    {"MC8x8B", zaniMC8x8B_8u_C1, 8, 8, 1},
    {"MC8x4B", zaniMC8x4B_8u_C1, 8, 4, 1},       {"MC4x8B", zaniMC4x8B_8u_C1, 4, 8, 1},
    {"MC4x4B", zaniMC4x4B_8u_C1, 4, 4, 1},       {"MC4x2B", zaniMC4x2B_8u_C1, 4, 2, 1},
    {"MC2x4B", zaniMC2x4B_8u_C1, 2, 4, 1},       {"MC2x2B", zaniMC2x2B_8u_C1, 2, 2, 1},
};

using AccFn = ZanStatus (*)(const Zan8u*, Zan32s, Zan8u*, Zan32s, Zan32s, Zan32s);
struct AccForm {
    const char* name;
    AccFn fn;
    Zan32s w, h;
    bool average;  // interpolate-average: dst = (P + dst + 1) >> 1
};
const AccForm kAcc[] = {
    {"Copy16x16HP", zaniCopy16x16HP_8u_C1R, 16, 16, false},
    {"Copy16x8HP", zaniCopy16x8HP_8u_C1R, 16, 8, false},
    {"Copy8x8HP", zaniCopy8x8HP_8u_C1R, 8, 8, false},
    {"Copy8x4HP", zaniCopy8x4HP_8u_C1R, 8, 4, false},
    {"InterpolateAverage16x16", zaniInterpolateAverage16x16_8u_C1IR, 16, 16, true},
    {"InterpolateAverage16x8", zaniInterpolateAverage16x8_8u_C1IR, 16, 8, true},
    {"InterpolateAverage8x8", zaniInterpolateAverage8x8_8u_C1IR, 8, 8, true},
    {"InterpolateAverage8x4", zaniInterpolateAverage8x4_8u_C1IR, 8, 4, true},
};
// acc bit 0: half sample in x; bit 1: half sample in y.
int pos_of_acc(Zan32s acc) { return ((acc & 1) ? 2 : 0) | ((acc & 2) ? 1 : 0); }

// --------------------------------------------------------------- checks

TEST(Mc, NullPointersFirstAndNothingWritten) {
    Picture ref, ref2, dst(0x5A);
    Residual res, res2;
    const Zan8u* r = ref.at(0, 0);
    const Zan8u* r2 = ref2.at(0, 0);
    const Zan16s* q = res.p();
    const Zan16s* q2 = res2.p();
    Zan8u* o = dst.at(0, 0);
    std::vector<std::function<ZanStatus()>> calls;
    for (const FwdForm& f : kFwd) {
        calls.push_back([=] { return f.fn(nullptr, 0, q, -1, o, 0, 12, 1); });
        calls.push_back([=] { return f.fn(r, kStep, nullptr, kStep, o, kStep, 4, 0); });
        calls.push_back([=] { return f.fn(r, kStep, q, kStep, nullptr, kStep, -1, -1); });
    }
    for (const BiForm& f : kBi) {
        calls.push_back([=] { return f.fn(nullptr, kStep, 12, r2, kStep, 8, q, kStep, o, kStep, 1); });
        calls.push_back([=] { return f.fn(r, kStep, 12, nullptr, kStep, 8, q, kStep, o, kStep, 1); });
        calls.push_back([=] { return f.fn(r, kStep, 12, r2, kStep, 8, nullptr, kStep, o, kStep, 1); });
        calls.push_back([=] { return f.fn(r, kStep, 12, r2, kStep, 8, q, kStep, nullptr, kStep, 1); });
    }
    calls.push_back([=] { return zaniMC8x8_16s8u_P2C2R(nullptr, kStep, q, q2, kStep, o, kStep, 12, 0); });
    calls.push_back([=] { return zaniMC8x8_16s8u_P2C2R(r, kStep, nullptr, q2, kStep, o, kStep, 12, 0); });
    calls.push_back([=] { return zaniMC8x8_16s8u_P2C2R(r, kStep, q, nullptr, kStep, o, kStep, 12, 0); });
    calls.push_back([=] { return zaniMC8x4_16s8u_P2C2R(r, kStep, q, q2, kStep, nullptr, kStep, 12, 0); });
    calls.push_back([=] { return zaniMC8x4_16s8u_P2C2R(r, 0, nullptr, nullptr, 0, nullptr, 0, 0, 0); });
    calls.push_back([=] { return zaniMC8x8B_16s8u_P2C2R(nullptr, kStep, 4, r2, kStep, 8, q, q2, kStep, o, kStep, 1); });
    calls.push_back([=] { return zaniMC8x8B_16s8u_P2C2R(r, kStep, 4, nullptr, kStep, 8, q, q2, kStep, o, kStep, 1); });
    calls.push_back([=] { return zaniMC8x8B_16s8u_P2C2R(r, kStep, 4, r2, kStep, 8, nullptr, q2, kStep, o, kStep, 1); });
    calls.push_back([=] { return zaniMC8x4B_16s8u_P2C2R(r, kStep, 4, r2, kStep, 8, q, nullptr, kStep, o, kStep, 1); });
    calls.push_back([=] { return zaniMC8x4B_16s8u_P2C2R(r, kStep, 4, r2, kStep, 8, q, q2, kStep, nullptr, kStep, 1); });
    for (const AccForm& f : kAcc) {
        calls.push_back([=] { return f.fn(nullptr, kStep, o, kStep, 3, 1); });
        calls.push_back([=] { return f.fn(r, kStep, nullptr, kStep, 3, 1); });
    }
    calls.push_back([=] { return zaniCopy16x16_8u_C1R(nullptr, kStep, o, kStep); });
    calls.push_back([=] { return zaniCopy16x16_8u_C1R(r, kStep, nullptr, kStep); });
    calls.push_back([=] { return zaniCopy8x8_8u_C1R(nullptr, kStep, o, kStep); });
    calls.push_back([=] { return zaniCopy8x8_8u_C1R(r, kStep, nullptr, kStep); });
    calls.push_back([=] { return zaniAverage16x16_8u_C1R(nullptr, kStep, r2, kStep, o, kStep); });
    calls.push_back([=] { return zaniAverage16x16_8u_C1R(r, kStep, nullptr, kStep, o, kStep); });
    calls.push_back([=] { return zaniAverage16x16_8u_C1R(r, kStep, r2, kStep, nullptr, kStep); });
    calls.push_back([=] { return zaniAverage8x8_8u_C1R(nullptr, kStep, r2, kStep, o, kStep); });
    calls.push_back([=] { return zaniAverage8x8_8u_C1R(r, kStep, nullptr, kStep, o, kStep); });
    calls.push_back([=] { return zaniAverage8x8_8u_C1R(r, kStep, r2, kStep, nullptr, kStep); });
    calls.push_back([=] { return zaniAverage16x16_8u_C1IR(nullptr, kStep, o, kStep); });
    calls.push_back([=] { return zaniAverage16x16_8u_C1IR(r, kStep, nullptr, kStep); });
    calls.push_back([=] { return zaniAverage8x8_8u_C1IR(nullptr, kStep, o, kStep); });
    calls.push_back([=] { return zaniAverage8x8_8u_C1IR(r, kStep, nullptr, kStep); });
    calls.push_back([=] { return zaniAdd8x8_16s8u_C1IRS(nullptr, kStep, o, kStep); });
    calls.push_back([=] { return zaniAdd8x8_16s8u_C1IRS(q, kStep, nullptr, kStep); });
    calls.push_back([=] { return zaniAdd8x8HP_16s8u_C1RS(nullptr, kStep, r, kStep, o, kStep, 3, 0); });
    calls.push_back([=] { return zaniAdd8x8HP_16s8u_C1RS(q, kStep, nullptr, kStep, o, kStep, 3, 0); });
    calls.push_back([=] { return zaniAdd8x8HP_16s8u_C1RS(q, kStep, r, kStep, nullptr, kStep, 3, 0); });
    calls.push_back([=] { return zaniAddC8x8_16s8u_C1IR(100, nullptr, kStep); });
    const auto before = dst.px;
    for (size_t i = 0; i < calls.size(); ++i) EXPECT_EQ(calls[i](), zanStsNullPtr) << "call " << i;
    EXPECT_TRUE(dst.px == before);
    // Every export was reached: 12 + 12 forms, 4 two-plane, 8 acc forms, 9 others.
    EXPECT_GE(calls.size(), 45u);
}

// Every mcType and roundControl, and the same with stray high bits, through
// every forward form: the result is the documented position (neighbour 2
// bytes on in the interleaved forms, MC16x4 included), rounding and
// saturation, and untouched outside the block.
TEST(Mc, ForwardFormsAtEveryPositionWithStrayBits) {
    Picture ref;
    ref.random(7);
    Residual res;
    res.random(3, 300);
    for (const FwdForm& f : kFwd)
        for (Zan32s m = 0; m < 16; ++m)
            for (Zan32s rc = 0; rc < 2; ++rc) {
                Picture want(0xC3);
                for (Zan32s y = 0; y < f.h; ++y)
                    for (Zan32s x = 0; x < f.w; ++x)
                        *want.at(x, y) = clamp255(predicted(ref, x, y, (m & 12) >> 2, rc, f.d) + res.at(x, y));
                for (Zan32s mt : stray(m))
                    for (Zan32s r : stray(rc)) {
                        Picture got(0xC3);
                        ASSERT_EQ(f.fn(ref.at(0, 0), kStep, res.p(), kStep, got.at(0, 0), kStep, mt, r), zanStsOk);
                        ASSERT_TRUE(got.px == want.px) << f.name << " mcType " << mt << " roundControl " << r;
                    }
            }
}

TEST(Mc, BidirectionalFormsAtEveryPositionPairWithStrayBits) {
    Picture refF, refB;
    refF.random(11);
    refB.random(12);
    Residual res;
    res.random(5, 300);
    for (const BiForm& f : kBi)
        for (Zan32s mf = 0; mf < 16; mf += 1)
            for (Zan32s mb = 0; mb < 16; mb += 1)
                for (Zan32s rc = 0; rc < 2; ++rc) {
                    Picture want(0x3C);
                    for (Zan32s y = 0; y < f.h; ++y)
                        for (Zan32s x = 0; x < f.w; ++x) {
                            Zan32s pf = predicted(refF, x, y, (mf & 12) >> 2, rc, f.d);
                            Zan32s pb = predicted(refB, x, y, (mb & 12) >> 2, rc, f.d);
                            *want.at(x, y) = clamp255((pf + pb + 2 * res.at(x, y) + 1) / 2);
                        }
                    // Stray bits on all three selectors, a few patterns each.
                    const auto sf = stray(mf), sb = stray(mb), sr = stray(rc);
                    for (size_t k = 0; k < sf.size(); ++k) {
                        Picture got(0x3C);
                        ASSERT_EQ(f.fn(refF.at(0, 0), kStep, sf[k], refB.at(0, 0), kStep, sb[(k * 5) % sb.size()],
                                       res.p(), kStep, got.at(0, 0), kStep, sr[(k * 7) % sr.size()]),
                                  zanStsOk);
                        ASSERT_TRUE(got.px == want.px)
                            << f.name << " mcTypeF " << sf[k] << " mcTypeB " << sb[(k * 5) % sb.size()] << " rc "
                            << sr[(k * 7) % sr.size()];
                    }
                }
}

// Interleaved chroma with the residual in two planes: U to the even bytes,
// V to the odd ones, neighbour two bytes on.
TEST(Mc, TwoPlaneResidualFormsAtEveryPosition) {
    Picture refF, refB;
    refF.random(21);
    refB.random(22);
    Residual u, v;
    u.random(1, 300);
    v.random(2, 300);
    for (Zan32s h : {8, 4})
        for (Zan32s mf = 0; mf < 16; ++mf)
            for (Zan32s mb = 0; mb < 16; mb += 5)
                for (Zan32s rc = 0; rc < 2; ++rc) {
                    Picture wantF(0x77), wantB(0x77);
                    for (Zan32s y = 0; y < h; ++y)
                        for (Zan32s x = 0; x < 16; ++x) {
                            Zan32s r = x % 2 ? v.at(x / 2, y) : u.at(x / 2, y);
                            Zan32s pf = predicted(refF, x, y, (mf & 12) >> 2, rc, 2);
                            Zan32s pb = predicted(refB, x, y, (mb & 12) >> 2, rc, 2);
                            *wantF.at(x, y) = clamp255(pf + r);
                            *wantB.at(x, y) = clamp255((pf + pb + 2 * r + 1) / 2);
                        }
                    for (Zan32s k : {0, 1, 2}) {
                        const Zan32s mt = stray(mf)[static_cast<size_t>(k * 3)], mtb = stray(mb)[static_cast<size_t>(k * 4 + 1)];
                        const Zan32s r = stray(rc)[static_cast<size_t>(k * 5)];
                        Picture gotF(0x77), gotB(0x77);
                        auto fwd = h == 8 ? zaniMC8x8_16s8u_P2C2R : zaniMC8x4_16s8u_P2C2R;
                        auto bi = h == 8 ? zaniMC8x8B_16s8u_P2C2R : zaniMC8x4B_16s8u_P2C2R;
                        ASSERT_EQ(fwd(refF.at(0, 0), kStep, u.p(), v.p(), kStep, gotF.at(0, 0), kStep, mt, r), zanStsOk);
                        ASSERT_EQ(bi(refF.at(0, 0), kStep, mt, refB.at(0, 0), kStep, mtb, u.p(), v.p(), kStep,
                                     gotB.at(0, 0), kStep, r),
                                  zanStsOk);
                        ASSERT_TRUE(gotF.px == wantF.px) << "height " << h << " mcType " << mt << " rc " << r;
                        ASSERT_TRUE(gotB.px == wantB.px) << "height " << h << " mcTypeF " << mt << " mcTypeB " << mtb;
                    }
                }
}

// HP copies, interpolate-average and the add-HP form: acc's two low bits
// and roundControl's low bit only.
TEST(Mc, AccFormsAtEveryPositionWithStrayBits) {
    Picture ref, base;
    ref.random(31);
    base.random(32);
    Residual res;
    res.random(4, 300);
    for (Zan32s acc = 0; acc < 4; ++acc)
        for (Zan32s rc = 0; rc < 2; ++rc) {
            for (const AccForm& f : kAcc) {
                Picture want = base;
                for (Zan32s y = 0; y < f.h; ++y)
                    for (Zan32s x = 0; x < f.w; ++x) {
                        Zan32s p = predicted(ref, x, y, pos_of_acc(acc), rc, 1);
                        *want.at(x, y) = static_cast<Zan8u>(f.average ? (p + *base.at(x, y) + 1) >> 1 : p);
                    }
                for (Zan32s a : stray(acc))
                    for (Zan32s r : {rc, rc | 2, rc | static_cast<Zan32s>(0x80000000u), rc - 2}) {
                        Picture got = base;
                        ASSERT_EQ(f.fn(ref.at(0, 0), kStep, got.at(0, 0), kStep, a, r), zanStsOk);
                        ASSERT_TRUE(got.px == want.px) << f.name << " acc " << a << " roundControl " << r;
                    }
            }
            Picture want(0x11);
            for (Zan32s y = 0; y < 8; ++y)
                for (Zan32s x = 0; x < 8; ++x)
                    *want.at(x, y) = clamp255(predicted(ref, x, y, pos_of_acc(acc), rc, 1) + res.at(x, y));
            for (Zan32s a : stray(acc)) {
                Picture got(0x11);
                ASSERT_EQ(zaniAdd8x8HP_16s8u_C1RS(res.p(), kStep, ref.at(0, 0), kStep, got.at(0, 0), kStep, a,
                                                  rc | static_cast<Zan32s>(0xFFFFFFF0u)),
                          zanStsOk);
                ASSERT_TRUE(got.px == want.px) << "Add8x8HP acc " << a;
            }
        }
}

// ---------------------------------------------------------- known answers

// One 16x16 forward call on a reference that is `a` everywhere except the
// right neighbour column/row, zero residual; returns sample (0, 0).
Zan8u one(Fwd fn, const std::array<Zan8u, 4>& q, Zan32s mcType, Zan32s rc, Zan32s d = 1) {
    Picture ref(0), dst(0);
    *ref.at(0, 0) = q[0];
    *ref.at(d, 0) = q[1];
    *ref.at(0, 1) = q[2];
    *ref.at(d, 1) = q[3];
    Residual res;
    fn(ref.at(0, 0), kStep, res.p(), kStep, dst.at(0, 0), kStep, mcType, rc);
    return *dst.at(0, 0);
}

TEST(Mc, RoundingKnownAnswers) {
    for (Fwd fn : {zaniMC16x16_8u_C1, zaniMC8x8_8u_C1, zaniMC4x4_8u_C1, zaniMC2x2_8u_C1}) {
        // Full-sample position: no rounding, whatever roundControl says.
        EXPECT_EQ(one(fn, {7, 200, 200, 200}, 0, 0), 7);
        EXPECT_EQ(one(fn, {7, 200, 200, 200}, 0, 1), 7);
        // Half sample in x on 1 and 2: 2 to nearest, 1 toward zero.
        EXPECT_EQ(one(fn, {1, 2, 0, 0}, 8, 0), 2);
        EXPECT_EQ(one(fn, {1, 2, 0, 0}, 8, 1), 1);
        // Half sample in y likewise.
        EXPECT_EQ(one(fn, {1, 0, 2, 0}, 4, 0), 2);
        EXPECT_EQ(one(fn, {1, 0, 2, 0}, 4, 1), 1);
        // Both: 1, 1, 1, 2 gives 1 either way; 1, 1, 2, 2 gives 2 and 1.
        EXPECT_EQ(one(fn, {1, 1, 1, 2}, 12, 0), 1);
        EXPECT_EQ(one(fn, {1, 1, 1, 2}, 12, 1), 1);
        EXPECT_EQ(one(fn, {1, 1, 2, 2}, 12, 0), 2);
        EXPECT_EQ(one(fn, {1, 1, 2, 2}, 12, 1), 1);
        // One exact sum of four, not two chained averages: 0, 1, 0, 1 + 2 >> 2 = 1 ...
        EXPECT_EQ(one(fn, {0, 1, 1, 1}, 12, 0), 1);
        // ... and 0, 0, 0, 1 with rounding toward zero stays 0 (chained averages would give 0 too),
        // while 0, 1, 1, 0 to nearest is (2 + 2) >> 2 = 1.
        EXPECT_EQ(one(fn, {0, 1, 1, 0}, 12, 0), 1);
        EXPECT_EQ(one(fn, {0, 0, 0, 1}, 12, 1), 0);
        // mcType 5 acts as 4, 13 as 12.
        EXPECT_EQ(one(fn, {1, 0, 2, 0}, 5, 0), 2);
        EXPECT_EQ(one(fn, {1, 1, 2, 2}, 13, 1), 1);
    }
}

TEST(Mc, SixteenByFourAveragesTwoBytesApartAndSixteenByEightOne) {
    // Row 0: 0, 100, 200, 50 ...: one byte on is 100, two bytes on is 200.
    Picture ref(0), dst(0);
    *ref.at(0, 0) = 0;
    *ref.at(1, 0) = 100;
    *ref.at(2, 0) = 200;
    Residual res;
    ASSERT_EQ(zaniMC16x4_8u_C1(ref.at(0, 0), kStep, res.p(), kStep, dst.at(0, 0), kStep, 8, 0), zanStsOk);
    EXPECT_EQ(*dst.at(0, 0), 100);  // (0 + 200 + 1) >> 1
    ASSERT_EQ(zaniMC16x8_8u_C1(ref.at(0, 0), kStep, res.p(), kStep, dst.at(0, 0), kStep, 8, 0), zanStsOk);
    EXPECT_EQ(*dst.at(0, 0), 50);  // (0 + 100 + 1) >> 1
    ASSERT_EQ(zaniMC16x8UV_8u_C1(ref.at(0, 0), kStep, res.p(), kStep, dst.at(0, 0), kStep, 8, 0), zanStsOk);
    EXPECT_EQ(*dst.at(0, 0), 100);
    Picture refB(0);
    ASSERT_EQ(zaniMC16x4B_8u_C1(ref.at(0, 0), kStep, 8, refB.at(0, 0), kStep, 0, res.p(), kStep, dst.at(0, 0), kStep, 0),
              zanStsOk);
    EXPECT_EQ(*dst.at(0, 0), 50);  // (100 + 0 + 1) >> 1
    ASSERT_EQ(zaniMC16x8B_8u_C1(ref.at(0, 0), kStep, 8, refB.at(0, 0), kStep, 0, res.p(), kStep, dst.at(0, 0), kStep, 0),
              zanStsOk);
    EXPECT_EQ(*dst.at(0, 0), 25);  // (50 + 0 + 1) >> 1
}

TEST(Mc, ResidualsSaturateExactly) {
    Picture white(255), black(0), dst(1);
    Residual res;
    res.fill(-300);
    ASSERT_EQ(zaniMC8x8_8u_C1(white.at(0, 0), kStep, res.p(), kStep, dst.at(0, 0), kStep, 12, 1), zanStsOk);
    EXPECT_EQ(*dst.at(7, 7), 0);
    res.fill(300);
    ASSERT_EQ(zaniMC8x8_8u_C1(black.at(0, 0), kStep, res.p(), kStep, dst.at(0, 0), kStep, 0, 0), zanStsOk);
    EXPECT_EQ(*dst.at(7, 7), 255);
    // The extremes: the exact sum saturates, it does not wrap.
    res.fill(32767);
    ASSERT_EQ(zaniMC16x16_8u_C1(white.at(0, 0), kStep, res.p(), kStep, dst.at(0, 0), kStep, 12, 0), zanStsOk);
    EXPECT_EQ(*dst.at(15, 15), 255);
    ASSERT_EQ(zaniMC2x2_8u_C1(white.at(0, 0), kStep, res.p(), kStep, dst.at(0, 0), kStep, 12, 0), zanStsOk);
    EXPECT_EQ(*dst.at(1, 1), 255);
    ASSERT_EQ(zaniAdd8x8HP_16s8u_C1RS(res.p(), kStep, white.at(0, 0), kStep, dst.at(0, 0), kStep, 3, 0), zanStsOk);
    EXPECT_EQ(*dst.at(7, 7), 255);
    ASSERT_EQ(zaniMC16x16B_8u_C1(white.at(0, 0), kStep, 12, white.at(0, 0), kStep, 12, res.p(), kStep, dst.at(0, 0),
                                 kStep, 0),
              zanStsOk);
    EXPECT_EQ(*dst.at(15, 15), 255);
    res.fill(-32768);
    ASSERT_EQ(zaniMC16x16B_8u_C1(white.at(0, 0), kStep, 0, white.at(0, 0), kStep, 0, res.p(), kStep, dst.at(0, 0),
                                 kStep, 0),
              zanStsOk);
    EXPECT_EQ(*dst.at(0, 0), 0);
    // Bidirectional: (P0 + P1 + 2 r + 1) / 2 with P0 = 1, P1 = 2: r = 0 gives 2, r = -1 gives 1.
    Picture one(1), two(2);
    res.fill(0);
    ASSERT_EQ(zaniMC8x8B_8u_C1(one.at(0, 0), kStep, 0, two.at(0, 0), kStep, 0, res.p(), kStep, dst.at(0, 0), kStep, 1),
              zanStsOk);
    EXPECT_EQ(*dst.at(0, 0), 2);
    res.fill(-1);
    ASSERT_EQ(zaniMC8x8B_8u_C1(one.at(0, 0), kStep, 0, two.at(0, 0), kStep, 0, res.p(), kStep, dst.at(0, 0), kStep, 1),
              zanStsOk);
    EXPECT_EQ(*dst.at(0, 0), 1);
}

// The in-place add wraps in 16 bits before it saturates; the constant add
// and the HP add do not wrap.
TEST(Mc, InPlaceAddWrapsInSixteenBits) {
    Residual res;
    Picture p(255);
    res.fill(32767);  // 255 + 32767 = 33022 wraps to -32514: 0
    ASSERT_EQ(zaniAdd8x8_16s8u_C1IRS(res.p(), kStep, p.at(0, 0), kStep), zanStsOk);
    EXPECT_EQ(*p.at(0, 0), 0);
    EXPECT_EQ(*p.at(7, 7), 0);
    EXPECT_EQ(*p.at(8, 0), 255);  // outside the block
    EXPECT_EQ(*p.at(0, 8), 255);
    Picture q(1);
    res.fill(32767);  // 1 + 32767 = 32768 wraps to -32768: 0
    ASSERT_EQ(zaniAdd8x8_16s8u_C1IRS(res.p(), kStep, q.at(0, 0), kStep), zanStsOk);
    EXPECT_EQ(*q.at(3, 3), 0);
    Picture s(0);
    res.fill(32767);  // 0 + 32767 does not wrap: 255
    ASSERT_EQ(zaniAdd8x8_16s8u_C1IRS(res.p(), kStep, s.at(0, 0), kStep), zanStsOk);
    EXPECT_EQ(*s.at(3, 3), 255);
    Picture t(100);
    res.fill(-101);
    res.at(1, 0) = 155;
    res.at(2, 0) = 156;
    ASSERT_EQ(zaniAdd8x8_16s8u_C1IRS(res.p(), kStep, t.at(0, 0), kStep), zanStsOk);
    EXPECT_EQ(*t.at(0, 0), 0);
    EXPECT_EQ(*t.at(1, 0), 255);
    EXPECT_EQ(*t.at(2, 0), 255);
    // The same through an unaligned residual (the other kernel).
    Picture u(255);
    std::array<Zan16s, 8 * 9 + 1> odd;
    odd.fill(32767);
    ASSERT_EQ(zaniAdd8x8_16s8u_C1IRS(odd.data() + 1, 18, u.at(0, 0), kStep), zanStsOk);
    EXPECT_EQ(*u.at(5, 5), 0);

    Picture c(200);
    ASSERT_EQ(zaniAddC8x8_16s8u_C1IR(32767, c.at(0, 0), kStep), zanStsOk);
    EXPECT_EQ(*c.at(7, 7), 255);
    EXPECT_EQ(*c.at(8, 7), 200);
    ASSERT_EQ(zaniAddC8x8_16s8u_C1IR(-32768, c.at(0, 0), kStep), zanStsOk);
    EXPECT_EQ(*c.at(7, 7), 0);
    ASSERT_EQ(zaniAddC8x8_16s8u_C1IR(37, c.at(0, 0), kStep), zanStsOk);
    EXPECT_EQ(*c.at(0, 0), 37);
    ASSERT_EQ(zaniAddC8x8_16s8u_C1IR(-40, c.at(0, 0), kStep), zanStsOk);
    EXPECT_EQ(*c.at(0, 0), 0);
}

TEST(Mc, CopiesAndAverages) {
    Picture a, b, dst(9);
    a.random(41);
    b.random(42);
    ASSERT_EQ(zaniCopy16x16_8u_C1R(a.at(0, 0), kStep, dst.at(0, 0), kStep), zanStsOk);
    for (Zan32s y = 0; y < 16; ++y) EXPECT_EQ(std::memcmp(dst.at(0, y), a.at(0, y), 16), 0);
    EXPECT_EQ(*dst.at(16, 0), 9);
    EXPECT_EQ(*dst.at(0, 16), 9);
    // A zero step repeats one row; a negative one runs upward.
    ASSERT_EQ(zaniCopy8x8_8u_C1R(a.at(0, 3), 0, dst.at(0, 7), -kStep), zanStsOk);
    for (Zan32s y = 0; y < 8; ++y) EXPECT_EQ(std::memcmp(dst.at(0, y), a.at(0, 3), 8), 0) << y;
    *a.at(0, 0) = 1;
    *b.at(0, 0) = 2;
    *a.at(1, 0) = 254;
    *b.at(1, 0) = 255;
    ASSERT_EQ(zaniAverage16x16_8u_C1R(a.at(0, 0), kStep, b.at(0, 0), kStep, dst.at(0, 0), kStep), zanStsOk);
    EXPECT_EQ(*dst.at(0, 0), 2);
    EXPECT_EQ(*dst.at(1, 0), 255);
    ASSERT_EQ(zaniAverage8x8_8u_C1R(a.at(0, 0), kStep, b.at(0, 0), kStep, dst.at(0, 0), kStep), zanStsOk);
    EXPECT_EQ(*dst.at(0, 0), 2);
    Picture c = b;
    ASSERT_EQ(zaniAverage16x16_8u_C1IR(a.at(0, 0), kStep, c.at(0, 0), kStep), zanStsOk);
    EXPECT_EQ(*c.at(1, 0), 255);
    EXPECT_EQ(*c.at(16, 0), *b.at(16, 0));
    c = b;
    ASSERT_EQ(zaniAverage8x8_8u_C1IR(a.at(0, 0), kStep, c.at(0, 0), kStep), zanStsOk);
    EXPECT_EQ(*c.at(0, 0), 2);
    EXPECT_EQ(*c.at(8, 0), *b.at(8, 0));
    // Interpolate-average: P at half x toward zero on 1, 2 is 1; with a destination of 2: (1 + 2 + 1) >> 1 = 2.
    Picture r(0), d(2);
    *r.at(0, 0) = 1;
    *r.at(1, 0) = 2;
    ASSERT_EQ(zaniInterpolateAverage8x8_8u_C1IR(r.at(0, 0), kStep, d.at(0, 0), kStep, 5, 1), zanStsOk);
    EXPECT_EQ(*d.at(0, 0), 2);
    Picture e(0);
    ASSERT_EQ(zaniCopy8x8HP_8u_C1R(r.at(0, 0), kStep, e.at(0, 0), kStep, 5, 1), zanStsOk);  // acc 5 acts as 1
    EXPECT_EQ(*e.at(0, 0), 1);
    ASSERT_EQ(zaniCopy8x8HP_8u_C1R(r.at(0, 0), kStep, e.at(0, 0), kStep, 1, 0), zanStsOk);
    EXPECT_EQ(*e.at(0, 0), 2);
}

TEST(Mc, ZeroAndNegativeStepsAreLegal) {
    Picture ref;
    ref.random(51);
    Residual res;
    res.random(9, 40);
    Picture a(0), b(0);
    // Reading rows upward with a negative step equals reading a flipped copy.
    Picture flipped(0);
    for (Zan32s y = -2; y < 20; ++y) std::memcpy(flipped.at(-2, y), ref.at(-2, 17 - y), 24);
    ASSERT_EQ(zaniMC16x16_8u_C1(ref.at(0, 17), -kStep, res.p(), kStep, a.at(0, 0), kStep, 12, 1), zanStsOk);
    ASSERT_EQ(zaniMC16x16_8u_C1(flipped.at(0, 0), kStep, res.p(), kStep, b.at(0, 0), kStep, 12, 1), zanStsOk);
    EXPECT_TRUE(a.px == b.px);
    // A zero residual step adds the first residual row to every row.
    ASSERT_EQ(zaniMC8x8_8u_C1(ref.at(0, 0), kStep, res.p(), 0, a.at(0, 0), kStep, 0, 0), zanStsOk);
    for (Zan32s y = 0; y < 8; ++y)
        for (Zan32s x = 0; x < 8; ++x) EXPECT_EQ(*a.at(x, y), clamp255(*ref.at(x, y) + res.at(x, 0)));
}

}  // namespace
