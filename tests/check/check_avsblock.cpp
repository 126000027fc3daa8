// The AVS dequantise, inverse transform and add kernels against their
// scalar rules: random and extreme coefficients at every QP, predictions of
// every value, tight, odd, wide and negative steps, guard bands around the
// block.  The encoder-side forward transform and quantiser kernels against
// theirs: residuals, full-range and extreme values, forward-transformed
// blocks, sparse blocks for the count, in place and apart, every even
// alignment, guard bands.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "avs/avsblock.h"
#include "check/harness.h"

namespace {

using namespace zan;
using namespace zan::check;

const avsblock::Kernels& kernels() { return for_path(u8::avsblock::kernels, n8::avsblock::kernels); }
const avsblock::FwdKernels& fwd_kernels() {
    return for_path(u8::avsblock::fwd_kernels, n8::avsblock::fwd_kernels);
}

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

// Transform inputs: residuals of 8-bit samples (the encoder's case), flat
// and extreme residuals, sparse blocks, or any 16-bit values (which reach
// the saturations of both passes and the residual kernel's hand-over to the
// general one).
void fill_residual(Rng& rng, int draw, Zan16s* x) {
    const int kind = draw % 6;
    // Flat blocks include the largest residuals, +-255, where the folded
    // sums of the residual kernel reach their limits.
    const Zan32s flat = draw % 12 == 2 ? 255 : (draw % 12 == 8 ? -255 : rng.range(-255, 255));
    for (int k = 0; k < 64; ++k) {
        Zan32s v;
        switch (kind) {
            case 0: v = rng.range(-255, 255); break;
            case 1: v = rng.below(2) ? 255 : -255; break;
            case 2: v = flat; break;
            case 3: v = rng.below(8) == 0 ? rng.range(-255, 255) : 0; break;
            case 4: v = rng.below(2) ? 32767 : -32768; break;
            default: v = static_cast<Zan16s>(rng.next()); break;
        }
        x[k] = static_cast<Zan16s>(v);
    }
}

// A packed block of 64 Zan16s inside guard bands, at an even byte offset
// from a 64-byte boundary.
Region block16(Zan32s align) { return Region(16, 8, 16, align & ~1); }

TEST(CheckAvsBlock, ForwardTransformEveryKernel) {
    Rng rng(302);
    for (const auto& e : fwd_kernels().fwd) {
        for (int d = 0; d < draws(); ++d) {
            alignas(16) Zan16s x[64];
            fill_residual(rng, d, x);
            const Zan32s align = static_cast<Zan32s>(rng.below(64));
            const bool inPlace = d % 3 == 0;
            Region src(16, 8, 16, ((align + 18) % 64) & ~1);
            Region want = block16(align), got = block16(align);
            want.fill(rng);
            copy_same(want, got);
            std::memcpy(src.origin(), x, sizeof x);
            if (inPlace) {
                std::memcpy(want.origin(), x, sizeof x);
                std::memcpy(got.origin(), x, sizeof x);
                e.rule(want.as<Zan16s>(), want.as<Zan16s>());
                e.simd(got.as<Zan16s>(), got.as<Zan16s>());
            } else {
                e.rule(src.as<Zan16s>(), want.as<Zan16s>());
                e.simd(src.as<Zan16s>(), got.as<Zan16s>());
            }
            ASSERT_TRUE(want.same_as(got)) << e.name << " draw " << d << " in place " << inPlace << " seed " << seed();
            ASSERT_EQ(std::memcmp(src.origin(), x, sizeof x), 0) << e.name << " wrote its source";
        }
    }
}

TEST(CheckAvsBlock, QuantiseEveryKernel) {
    Rng rng(303);
    const auto& fwd = fwd_kernels().fwd;
    for (const auto& e : fwd_kernels().quant) {
        for (int d = 0; d < draws(); ++d) {
            alignas(16) Zan16s f[64];
            const int kind = d % 5;
            if (kind <= 1) {
                // A transformed residual: the quantiser's usual input.
                alignas(16) Zan16s x[64];
                fill_residual(rng, d / 5, x);
                for (auto& v : x) v = static_cast<Zan16s>(v < -255 ? -255 : (v > 255 ? 255 : v));
                fwd[0].rule(x, f);
            } else if (kind == 2) {
                for (auto& v : f) v = static_cast<Zan16s>(rng.next());
            } else if (kind == 3) {
                // One or a few non-zero values anywhere: the count must find the last.
                for (auto& v : f) v = 0;
                const int n = static_cast<int>(rng.below(4));
                for (int i = 0; i < n; ++i) f[rng.below(64)] = static_cast<Zan16s>(rng.range(-3000, 3000));
            } else {
                for (auto& v : f) v = static_cast<Zan16s>(rng.below(3) == 0 ? (rng.below(2) ? 32767 : -32768) : 0);
            }
            const Zan32s qp = d < 128 ? d % 64 : static_cast<Zan32s>(rng.below(64));
            const Zan32s align = static_cast<Zan32s>(rng.below(64));
            Region want = block16(align), got = block16(align);
            want.fill(rng);
            copy_same(want, got);
            std::memcpy(want.origin(), f, sizeof f);
            std::memcpy(got.origin(), f, sizeof f);
            const Zan32s nWant = e.rule(want.as<Zan16s>(), qp);
            const Zan32s nGot = e.simd(got.as<Zan16s>(), qp);
            ASSERT_EQ(nWant, nGot) << e.name << " count, draw " << d << " qp " << qp << " seed " << seed();
            ASSERT_TRUE(want.same_as(got)) << e.name << " draw " << d << " qp " << qp << " seed " << seed();
        }
    }
}

}  // namespace
