// Every VC-1 deblocking and overlap smoothing kernel against its scalar rule.
//
// Deblocking areas hold lines drawn near a base value with a step of random
// size across the edge, so that the filter test passes on some lines and
// fails on others and the third-line decision of a segment goes both ways;
// PQUANT covers 1..31 and values outside (0, negative, huge).  Smoothing
// sources are mostly the sample range widened by a few hundred, sometimes
// the whole 16-bit range and values around 4681 where 7 x leaves 16 bits.
// The guard bytes around every area must come out of a kernel as they went
// in.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "check/harness.h"
#include "vc1/vc1filter.h"

namespace {

using namespace zan;
using namespace zan::check;
using namespace zan::vc1filter;

const Kernels& kernels() { return for_path(u8::vc1filter::kernels, n8::vc1filter::kernels); }

// Gives dst the bytes of src from one margin (64) before the area of
// w bytes by h rows to one margin after it.
void copy_area(Region& dst, Region& src, Zan32s w, Zan32s h) {
    auto lowest = [h](Region& r) {
        return r.step() >= 0 ? r.origin() : r.origin() + static_cast<std::ptrdiff_t>(r.step()) * (h - 1);
    };
    const std::size_t span = static_cast<std::size_t>(std::abs(src.step())) * static_cast<std::size_t>(h - 1) +
                             static_cast<std::size_t>(w);
    std::memcpy(lowest(dst) - 64, lowest(src) - 64, span + 128);
}

// PQUANT: mostly 1..31, sometimes at or beyond the ends.
Zan32s draw_quant(Rng& rng) {
    static constexpr Zan32s kOdd[] = {0, -1, -40, 32, 100, 1789, 1790, 40000, 0x7FFFFFFF, -0x7FFFFFFF - 1};
    return rng.range(0, 5) == 0 ? kOdd[rng.below(10)] : rng.range(1, 31);
}

// An 8-bit area of 8 lines across an edge, 8 samples per line (4 each side),
// ch interleaved planes; a line is a row of a vertical edge, else a column.
void fill_edge(Region& r, bool vertical, Zan32s ch, Rng& rng) {
    const Zan32s base = rng.range(0, 3) == 0 ? (rng.below(2) ? 0 : 255) : rng.range(0, 255);
    static constexpr Zan32s kSpreads[] = {0, 0, 1, 2, 3, 6, 12, 40, 255};
    const Zan32s spread = kSpreads[rng.below(9)];
    for (Zan32s c = 0; c < ch; ++c)
        for (Zan32s line = 0; line < 8; ++line) {
            // Per line: no step, a small one, or a large one across the edge.
            const Zan32s k = rng.range(0, 3);
            const Zan32s jump = k == 0 ? 0 : k == 3 ? rng.range(-255, 255) : rng.range(-24, 24);
            const Zan32s lineSpread = rng.below(3) == 0 ? 0 : spread;
            for (Zan32s s = 0; s < 8; ++s) {
                const Zan32s v = std::clamp(base + rng.range(-lineSpread, lineSpread) + (s >= 4 ? jump : 0), 0, 255);
                const Zan32s x = vertical ? s : line, y = vertical ? line : s;
                r.origin()[static_cast<std::ptrdiff_t>(r.step()) * y + x * ch + c] = static_cast<Zan8u>(v);
            }
        }
}

TEST(CheckVc1Filter, Deblock) {
    Rng rng(931);
    for (const auto& e : kernels().deblock) {
        const bool vertical = (e.param & kVertical) != 0;
        const Zan32s ch = (e.param & kTwoChannels) ? 2 : 1;
        const Zan32s widthBytes = 8 * ch;
        const auto steps = steps_for(widthBytes);
        int filtered = 0;
        for (int d = 0; d < 8 * draws(); ++d) {
            const Zan32s align = d % 64, step = steps[static_cast<std::size_t>(d / 5) % steps.size()];
            Region want(widthBytes, 8, step, align), got(widthBytes, 8, step, align);
            want.fill(rng);
            fill_edge(want, vertical, ch, rng);
            copy_area(got, want, widthBytes, 8);
            const Zan32s quant = draw_quant(rng);
            // Segment mask: mostly all on, sometimes any, sometimes stray bits.
            const Zan32u k = rng.below(4);
            const Zan32u mask = k < 2 ? 0u : k == 2 ? rng.below(ch == 2 ? 16 : 4) : static_cast<Zan32u>(rng.next());
            const std::ptrdiff_t at = vertical ? 4 * ch : static_cast<std::ptrdiff_t>(4) * step;
            Region before(widthBytes, 8, step, align);
            copy_area(before, want, widthBytes, 8);
            e.rule(want.origin() + at, step, quant, mask);
            e.simd(got.origin() + at, step, quant, mask);
            ASSERT_TRUE(want.same_as(got)) << e.name << " draw " << d << " align " << align << " step " << step
                                           << " quant " << quant << " mask " << mask << " seed " << seed();
            filtered += !want.same_as(before);
        }
        // The inputs must reach the filter often, not only its early exits.
        EXPECT_GT(filtered, 2 * draws()) << e.name;
    }
}

// Source values: the usual reconstructed range, the whole 16-bit range, or
// values around where 7 x leaves 16 bits.
void fill_source(Region& r, Rng& rng) {
    const Zan32s k = rng.range(0, 5);
    if (k == 0)
        r.fill16(rng, -32768, 32767);
    else if (k == 1)
        r.fill16(rng, 4000, 5400);
    else if (k == 2)
        r.fill16(rng, -5400, -4000);
    else
        r.fill16(rng, -300, 600);
}

// A source of 8 lines of 2 samples; a line is a row (vertical edge) or a
// column (horizontal edge).
struct SourceShape {
    Zan32s widthBytes, height;
};
SourceShape source_shape(bool vertical) { return vertical ? SourceShape{4, 8} : SourceShape{16, 2}; }

TEST(CheckVc1Filter, Smooth) {
    Rng rng(932);
    for (const auto& e : kernels().smooth) {
        const bool vertical = (e.param & kVertical) != 0;
        const SourceShape s = source_shape(vertical);
        const auto srcSteps = steps_for(s.widthBytes, 2);
        const Zan32s dw = vertical ? 4 : 8, dh = vertical ? 8 : 4;
        const auto dstSteps = steps_for(dw);
        for (int d = 0; d < 4 * draws(); ++d) {
            const Zan32s aStep = srcSteps[rng.below(static_cast<Zan32u>(srcSteps.size()))];
            const Zan32s bStep = srcSteps[rng.below(static_cast<Zan32u>(srcSteps.size()))];
            const Zan32s dStep = dstSteps[static_cast<std::size_t>(d / 3) % dstSteps.size()];
            Region a(s.widthBytes, s.height, aStep, rng.range(0, 31) * 2);
            Region b(s.widthBytes, s.height, bStep, rng.range(0, 31) * 2);
            fill_source(a, rng);
            fill_source(b, rng);
            const Zan32s align = d % 64;
            Region want(dw, dh, dStep, align), got(dw, dh, dStep, align);
            want.fill(rng);
            copy_area(got, want, dw, dh);
            const Zan32s kind = rng.range(0, 2);
            const std::ptrdiff_t at = vertical ? 2 : static_cast<std::ptrdiff_t>(2) * dStep;
            e.rule(a.as<Zan16s>(), aStep, b.as<Zan16s>(), bStep, want.origin() + at, dStep, kind);
            e.simd(a.as<Zan16s>(), aStep, b.as<Zan16s>(), bStep, got.origin() + at, dStep, kind);
            ASSERT_TRUE(want.same_as(got)) << e.name << " draw " << d << " align " << align << " steps " << aStep
                                           << " " << bStep << " " << dStep << " kind " << kind << " seed " << seed();
        }
    }
}

TEST(CheckVc1Filter, SmoothTwoPlanes) {
    Rng rng(933);
    for (const auto& e : kernels().smooth2) {
        const bool vertical = (e.param & kVertical) != 0;
        const SourceShape s = source_shape(vertical);
        const auto srcSteps = steps_for(s.widthBytes, 2);
        const Zan32s dw = vertical ? 8 : 16, dh = vertical ? 8 : 4;
        const auto dstSteps = steps_for(dw);
        for (int d = 0; d < 4 * draws(); ++d) {
            Zan32s st[4];
            for (auto& v : st) v = srcSteps[rng.below(static_cast<Zan32u>(srcSteps.size()))];
            Region au(s.widthBytes, s.height, st[0], rng.range(0, 31) * 2);
            Region bu(s.widthBytes, s.height, st[1], rng.range(0, 31) * 2);
            Region av(s.widthBytes, s.height, st[2], rng.range(0, 31) * 2);
            Region bv(s.widthBytes, s.height, st[3], rng.range(0, 31) * 2);
            for (Region* r : {&au, &bu, &av, &bv}) fill_source(*r, rng);
            const Zan32s dStep = dstSteps[static_cast<std::size_t>(d / 3) % dstSteps.size()];
            const Zan32s align = d % 64;
            Region want(dw, dh, dStep, align), got(dw, dh, dStep, align);
            want.fill(rng);
            copy_area(got, want, dw, dh);
            const Zan32s kind = rng.range(0, 2);
            const std::ptrdiff_t at = vertical ? 4 : static_cast<std::ptrdiff_t>(2) * dStep;
            e.rule(au.as<Zan16s>(), st[0], bu.as<Zan16s>(), st[1], av.as<Zan16s>(), st[2], bv.as<Zan16s>(), st[3],
                   want.origin() + at, dStep, kind);
            e.simd(au.as<Zan16s>(), st[0], bu.as<Zan16s>(), st[1], av.as<Zan16s>(), st[2], bv.as<Zan16s>(), st[3],
                   got.origin() + at, dStep, kind);
            ASSERT_TRUE(want.same_as(got)) << e.name << " draw " << d << " align " << align << " dstStep " << dStep
                                           << " kind " << kind << " seed " << seed();
        }
    }
}

}  // namespace
