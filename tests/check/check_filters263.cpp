// Every H.261, H.263 and MPEG-4 block filter kernel against its scalar rule.
//
// Edge areas hold lines drawn near a base value with a random jump across the
// edge, so that the filters' decisions (Annex J strength ramp, the MPEG-4
// mode choice and its QP tests) go both ways; QP runs through 1..31 in turn.
// Areas are exactly what a filter may read, with guard bands around them that
// must come out unchanged; alignments run through 0..63 and steps through
// tight, odd, wide and negative ones.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "check/harness.h"
#include "h26x_mpeg4/filters263.h"

namespace {

using namespace zan;
using namespace zan::check;
using namespace zan::filters263;

const Kernels& kernels() { return for_path(u8::filters263::kernels, n8::filters263::kernels); }

// Gives dst the bytes of src from one margin (64) before the area of w bytes
// by h rows to one margin after it.
void copy_area(Region& dst, Region& src, Zan32s w, Zan32s h) {
    auto lowest = [h](Region& r) {
        return r.step() >= 0 ? r.origin() : r.origin() + static_cast<std::ptrdiff_t>(r.step()) * (h - 1);
    };
    const std::size_t span = static_cast<std::size_t>(std::abs(src.step())) * static_cast<std::size_t>(h - 1) +
                             static_cast<std::size_t>(w);
    std::memcpy(lowest(dst) - 64, lowest(src) - 64, span + 128);
}

Zan8u& px(Region& r, Zan32s x, Zan32s y) { return r.origin()[static_cast<std::ptrdiff_t>(r.step()) * y + x]; }

// Lines across an edge: `lines` lines of 2 * reach samples, the edge in the
// middle; a line is a row (vertical edge) or a column.
void fill_edge(Region& r, bool vertical, Zan32s lines, Zan32s reach, Rng& rng) {
    const Zan32s base = rng.range(0, 3) == 0 ? (rng.below(2) ? 0 : 255) : rng.range(0, 255);
    static constexpr Zan32s kSpreads[] = {0, 0, 1, 2, 3, 5, 12, 40, 255};
    const Zan32s spread = kSpreads[rng.below(9)];
    for (Zan32s l = 0; l < lines; ++l) {
        const Zan32s k = rng.range(0, 4);
        const Zan32s jump = k == 0 ? 0 : k == 4 ? rng.range(-255, 255) : rng.range(-30, 30);
        const Zan32s ls = rng.below(3) == 0 ? 0 : spread;
        for (Zan32s s = 0; s < 2 * reach; ++s) {
            const Zan32s v = std::clamp(base + rng.range(-ls, ls) + (s >= reach ? jump : 0), 0, 255);
            px(r, vertical ? s : l, vertical ? l : s) = static_cast<Zan8u>(v);
        }
    }
}

TEST(CheckFilters263, H261) {
    Rng rng(2631);
    for (const auto& e : kernels().h261) {
        const auto steps = steps_for(8);
        for (int d = 0; d < 4 * draws(); ++d) {
            const Zan32s ss = steps[rng.below(static_cast<Zan32u>(steps.size()))];
            const Zan32s ds = steps[static_cast<std::size_t>(d / 3) % steps.size()];
            Region src(8, 8, ss, rng.range(0, 63));
            src.fill(rng);
            const Zan32s align = d % 64;
            Region want(8, 8, ds, align), got(8, 8, ds, align);
            want.fill(rng);
            copy_area(got, want, 8, 8);
            e.rule(src.origin(), ss, want.origin(), ds);
            e.simd(src.origin(), ss, got.origin(), ds);
            ASSERT_TRUE(want.same_as(got)) << e.name << " draw " << d << " steps " << ss << " " << ds << " seed "
                                           << seed();
        }
    }
}

TEST(CheckFilters263, H263Edges) {
    Rng rng(2632);
    for (const auto& e : kernels().edge) {
        const bool vertical = (e.param & kVertical) != 0;
        const Zan32s lines = e.width, reach = e.height;
        const Zan32s w = vertical ? 2 * reach : lines, h = vertical ? lines : 2 * reach;
        const auto steps = steps_for(w);
        int changed = 0;
        for (int d = 0; d < 8 * draws(); ++d) {
            const Zan32s align = d % 64, step = steps[static_cast<std::size_t>(d / 5) % steps.size()];
            Region want(w, h, step, align), got(w, h, step, align), before(w, h, step, align);
            want.fill(rng);
            fill_edge(want, vertical, lines, reach, rng);
            copy_area(got, want, w, h);
            copy_area(before, want, w, h);
            const Zan32s qp = 1 + d % 31;
            const std::ptrdiff_t at = vertical ? reach : static_cast<std::ptrdiff_t>(reach) * step;
            e.rule(want.origin() + at, step, qp);
            e.simd(got.origin() + at, step, qp);
            ASSERT_TRUE(want.same_as(got)) << e.name << " draw " << d << " align " << align << " step " << step
                                           << " QP " << qp << " seed " << seed();
            changed += !want.same_as(before);
        }
        EXPECT_GT(changed, 2 * draws()) << e.name;
    }
}

TEST(CheckFilters263, Mpeg4Deblocking) {
    Rng rng(2633);
    static constexpr Zan32s kThr1[] = {-5, -1, 0, 1, 2, 3, 6, 255, 300, 0x7FFFFFFF, -0x7FFFFFFF - 1};
    static constexpr Zan32s kThr2[] = {-3, 0, 1, 5, 6, 7, 9, 10, 11, 0x7FFFFFFF, -0x7FFFFFFF - 1};
    for (const auto& e : kernels().mpeg4) {
        const bool vertical = (e.param & kVertical) != 0;
        const Zan32s w = vertical ? 10 : 8, h = vertical ? 8 : 10;
        const auto steps = steps_for(w);
        int dc = 0, def = 0;
        for (int d = 0; d < 16 * draws(); ++d) {
            const Zan32s align = d % 64, step = steps[static_cast<std::size_t>(d / 5) % steps.size()];
            Region want(w, h, step, align), got(w, h, step, align), before(w, h, step, align);
            want.fill(rng);
            fill_edge(want, vertical, 8, 5, rng);
            copy_area(got, want, w, h);
            copy_area(before, want, w, h);
            const Zan32s qp = 1 + d % 31;
            // Mostly the usual thresholds, sometimes anything.
            const bool usual = rng.below(2) == 0;
            const Zan32s thr1 = usual ? 2 : rng.below(3) ? kThr1[rng.below(11)] : rng.range(-10, 20);
            const Zan32s thr2 = usual ? 6 : rng.below(3) ? kThr2[rng.below(11)] : rng.range(-2, 12);
            const std::ptrdiff_t at = vertical ? 5 : static_cast<std::ptrdiff_t>(5) * step;
            e.rule(want.origin() + at, step, qp, thr1, thr2);
            e.simd(got.origin() + at, step, qp, thr1, thr2);
            ASSERT_TRUE(want.same_as(got)) << e.name << " draw " << d << " align " << align << " step " << step
                                           << " QP " << qp << " thr " << thr1 << " " << thr2 << " seed " << seed();
            // Count draws whose result changed beyond the two edge samples
            // (the smoothing mode) or only at them.
            bool outer = false, inner = false;
            for (Zan32s l = 0; l < 8; ++l)
                for (Zan32s s = 0; s < 10; ++s) {
                    const Zan32s x = vertical ? s : l, y = vertical ? l : s;
                    if (px(want, x, y) != px(before, x, y)) (s == 4 || s == 5 ? inner : outer) = true;
                }
            dc += outer;
            def += inner && !outer;
        }
        EXPECT_GT(dc, draws() / 2) << e.name;
        EXPECT_GT(def, draws() / 2) << e.name;
    }
}

// An 8x8 block of random samples in a random band, so ranges fall on both
// sides of 32 and the widest block sometimes ties.
void fill_block(Zan8u* p, Zan32s step, Rng& rng, Zan32s lo, Zan32s band) {
    for (Zan32s y = 0; y < 8; ++y)
        for (Zan32s x = 0; x < 8; ++x)
            p[static_cast<std::ptrdiff_t>(step) * y + x] = static_cast<Zan8u>(std::min(255, lo + rng.range(0, band)));
}

TEST(CheckFilters263, DeringingThreshold) {
    Rng rng(2634);
    static constexpr Zan32s kBands[] = {0, 5, 30, 31, 32, 33, 63, 64, 100, 255};
    for (const auto& e : kernels().threshold) {
        const auto ysteps = steps_for(16), csteps = steps_for(8);
        for (int d = 0; d < 4 * draws(); ++d) {
            const Zan32s ys = ysteps[rng.below(static_cast<Zan32u>(ysteps.size()))];
            const Zan32s cs = csteps[rng.below(static_cast<Zan32u>(csteps.size()))];
            const Zan32s rs = csteps[rng.below(static_cast<Zan32u>(csteps.size()))];
            Region y(16, 16, ys, d % 64), cb(8, 8, cs, rng.range(0, 63)), cr(8, 8, rs, rng.range(0, 63));
            y.fill(rng);
            cb.fill(rng);
            cr.fill(rng);
            const bool exact = rng.below(2) == 0;  // all blocks set exactly to a drawn band
            const Zan32s common = kBands[rng.below(10)];
            for (int k = 0; k < 4 && exact; ++k) {
                const Zan32s band = rng.below(2) ? common : kBands[rng.below(10)];
                Zan8u* b = y.origin() + static_cast<std::ptrdiff_t>(ys) * 8 * (k >> 1) + 8 * (k & 1);
                fill_block(b, ys, rng, rng.range(0, 255 - band), band);
                b[0] = static_cast<Zan8u>(std::min(255, b[ys * 3 + 5] / 2));  // keep some spread
            }
            Zan32s want[8], got[8];
            for (int k = 0; k < 8; ++k) want[k] = got[k] = -12345;
            e.rule(y.origin(), ys, cb.origin(), cs, cr.origin(), rs, want + 1);
            e.simd(y.origin(), ys, cb.origin(), cs, cr.origin(), rs, got + 1);
            ASSERT_EQ(0, std::memcmp(want, got, sizeof want)) << e.name << " draw " << d << " seed " << seed();
            ASSERT_EQ(-12345, got[0]);
            ASSERT_EQ(-12345, got[7]);
        }
    }
}

TEST(CheckFilters263, DeringingSmooth) {
    Rng rng(2635);
    for (const auto& e : kernels().dering) {
        const auto ssteps = steps_for(10), dsteps = steps_for(8);
        int filtered = 0;
        for (int d = 0; d < 8 * draws(); ++d) {
            const Zan32s ss = ssteps[rng.below(static_cast<Zan32u>(ssteps.size()))];
            const Zan32s ds = dsteps[static_cast<std::size_t>(d / 3) % dsteps.size()];
            Region src(10, 10, ss, rng.range(0, 63));
            src.fill(rng);
            // Smooth areas split by a step, so that indices agree in parts.
            const Zan32s base = rng.range(0, 255), spread = rng.range(0, 6), jump = rng.range(-120, 120);
            const Zan32s cut = rng.range(0, 10), diag = rng.range(0, 2);
            if (rng.below(4) != 0)
                for (Zan32s y = 0; y < 10; ++y)
                    for (Zan32s x = 0; x < 10; ++x) {
                        const bool far = (diag ? x + y / 2 : x) >= cut;
                        px(src, x, y) = static_cast<Zan8u>(std::clamp(base + rng.range(-spread, spread) + (far ? jump : 0), 0, 255));
                    }
            const Zan32s pick = rng.range(0, 5);
            const Zan32s thr = pick == 0 ? rng.range(-300, 600)
                               : pick == 1 ? (rng.below(2) ? 0 : 256)
                                           : base + jump / 2 + rng.range(-3, 3);
            const Zan32s qp = 1 + d % 31;
            const Zan32s align = d % 64;
            Region want(8, 8, ds, align), got(8, 8, ds, align);
            want.fill(rng);
            copy_area(got, want, 8, 8);
            const Zan8u* s = src.origin() + static_cast<std::ptrdiff_t>(ss) + 1;
            e.rule(s, ss, want.origin(), ds, qp, thr);
            e.simd(s, ss, got.origin(), ds, qp, thr);
            ASSERT_TRUE(want.same_as(got)) << e.name << " draw " << d << " steps " << ss << " " << ds << " QP " << qp
                                           << " thr " << thr << " seed " << seed();
            bool any = false;
            for (Zan32s y = 0; y < 8; ++y)
                for (Zan32s x = 0; x < 8; ++x) any |= px(want, x, y) != s[static_cast<std::ptrdiff_t>(ss) * y + x];
            filtered += any;
        }
        EXPECT_GT(filtered, draws()) << e.name;
    }
}

}  // namespace
