// The AVS dequantise, inverse transform and add kernels against their
// scalar rules: random and extreme coefficients at every QP, predictions of
// every value, tight, odd, wide and negative steps, guard bands around the
// block.
#include <gtest/gtest.h>

#include <vector>

#include "avs/avsblock.h"
#include "check/harness.h"

namespace {

using namespace zan;
using namespace zan::check;

const avsblock::Kernels& kernels() { return for_path(u8::avsblock::kernels, n8::avsblock::kernels); }

// Gives `to` the same bytes as `from` around its own origin (two regions of
// the same shape may sit at different offsets in their storage).
void copy_same(Region& from, Region& to) {
    const std::ptrdiff_t shift = (to.origin() - to.storage().data()) - (from.origin() - from.storage().data());
    std::vector<Zan8u>& a = from.storage();
    std::vector<Zan8u>& b = to.storage();
    for (std::size_t i = 0; i < b.size(); ++i) {
        const std::ptrdiff_t j = static_cast<std::ptrdiff_t>(i) - shift;
        b[i] = j >= 0 && j < static_cast<std::ptrdiff_t>(a.size()) ? a[static_cast<std::size_t>(j)] : 0x5A;
    }
}

// Dequantisation rows of three QPs that span both shifts and the largest
// scale (copied from the standard's table).
struct Dq {
    Zan32s scale, shift;
};
constexpr Dq kDq[] = {{32768, 14}, {36061, 14}, {60424, 14}, {65535, 13}, {35734, 12},
                      {42577, 12}, {32809, 11}, {65535, 10}, {35744, 9},  {32771, 7}, {60099, 7}};

// Coefficients: small levels, large levels, extremes, or sparse blocks.
void fill_coeffs(Rng& rng, int draw, Zan16s* c) {
    const int kind = draw % 5;
    for (int k = 0; k < 64; ++k) {
        Zan32s v;
        switch (kind) {
            case 0: v = rng.range(-8, 8); break;
            case 1: v = rng.range(-300, 300); break;
            case 2: v = rng.below(2) ? 32767 : -32768; break;
            case 3: v = rng.below(6) == 0 ? rng.range(-2000, 2000) : 0; break;
            default: v = static_cast<Zan16s>(rng.next()); break;
        }
        c[k] = static_cast<Zan16s>(v);
    }
}

TEST(CheckAvsBlock, InverseTransformAddEveryKernel) {
    Rng rng(301);
    for (const auto& e : kernels().invAdd) {
        const auto steps = steps_for(8);
        for (int d = 0; d < draws(); ++d) {
            alignas(16) Zan16s coeffs[64];
            fill_coeffs(rng, d, coeffs);
            const Dq q = kDq[static_cast<size_t>(d) % (sizeof kDq / sizeof kDq[0])];
            const Zan32s step = steps[static_cast<size_t>(d) % steps.size()];
            const Zan32s align = d % 64;
            Region want(8, 8, step, align), got(8, 8, step, align);
            want.fill(rng);
            if (d % 7 == 3) want.set(0);
            if (d % 7 == 4) want.set(255);
            copy_same(want, got);
            e.rule(coeffs, want.origin(), step, q.scale, q.shift);
            e.simd(coeffs, got.origin(), step, q.scale, q.shift);
            ASSERT_TRUE(want.same_as(got)) << e.name << " draw " << d << " step " << step << " scale " << q.scale
                                           << " seed " << seed();
        }
    }
}

}  // namespace
