// DV vector kernels against their scalar rules: dequantisation and the
// macroblock output conversions.
#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "check/harness.h"
#include "dv/dvdecode.h"
#include "dv/dvoutput.h"

namespace {

using namespace zan;
using namespace zan::check;

const dvdecode::Kernels& dec() { return for_path(u8::dvdecode::kernels, n8::dvdecode::kernels); }
const dvoutput::Kernels& out() { return for_path(u8::dvoutput::kernels, n8::dvoutput::kernels); }

TEST(CheckDv, DequantMatchesRule) {
    Rng rng(71);
    for (const auto& e : dec().dequant)
        for (int d = 0; d < draws(); ++d) {
            alignas(16) std::array<Zan16s, 64 + 16> a, b, x, y;
            rng.fill16(a.data(), a.size(), -32768, 32767);
            rng.fill16(b.data(), b.size(), -32768, 32767);
            rng.fill16(x.data(), x.size(), -32768, 32767);
            if (d % 3 == 1) rng.fill16(x.data(), x.size(), -2048, 2047);  // coefficient range of a real block
            y = x;
            // Unaligned blocks as often as aligned ones.
            const int off = d % 2;
            const Zan32s qp = rng.range(-40000, 40000);
            e.rule(x.data() + 8 + off, a.data() + off, b.data() + off, qp);
            e.simd(y.data() + 8 + off, a.data() + off, b.data() + off, qp);
            ASSERT_EQ(x, y) << e.name << " draw " << d << " qp " << qp << " seed " << seed();
        }
}

TEST(CheckDv, OutputConversionMatchesRule) {
    Rng rng(72);
    for (const auto& e : out().mb) {
        const auto steps = steps_for(e.width);
        for (int d = 0; d < draws(); ++d) {
            std::vector<Zan16s> src(64 * static_cast<size_t>(e.param) + 8);
            // Extremes and the range of real inverse-transform output.
            if (d % 2) rng.fill16(src.data(), src.size(), -32768, 32767);
            else rng.fill16(src.data(), src.size(), -300, 300);
            const Zan32s step = steps[static_cast<size_t>(d) % steps.size()];
            const Zan32s align = d % 32;
            Region want(e.width, e.height, step, align), got(e.width, e.height, step, align);
            const Zan8u guard = Zan8u(rng.below(256));
            want.set(guard);
            got.set(guard);
            e.rule(src.data() + (d % 4), want.origin(), step);
            e.simd(src.data() + (d % 4), got.origin(), step);
            ASSERT_TRUE(want.same_as(got)) << e.name  << " draw " << d << " step " << step << " align " << align
                                           << " seed " << seed();
        }
    }
}

}  // namespace
