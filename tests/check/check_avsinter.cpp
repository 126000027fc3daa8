// The AVS interpolation, weighting and loop-filter kernels against their
// scalar rules: every quarter-sample position of both width classes, every
// alignment, tight, odd, wide and negative steps, guard bands around the
// output, extreme weights, and loop-filter inputs near and far from the
// thresholds with every strength group.
#include <gtest/gtest.h>

#include <vector>

#include <cstring>

#include "avs/avsinter.h"
#include "check/harness.h"

namespace {

using namespace zan;
using namespace zan::check;

const avsinter::Kernels& kernels() { return for_path(u8::avsinter::kernels, n8::avsinter::kernels); }

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

TEST(CheckAvsInter, LumaEveryPosition) {
    Rng rng(401);
    for (const auto& e : kernels().luma) {
        const int n = draws() / 3 > 40 ? draws() / 3 : 40;
        for (int d = 0; d < n; ++d) {
            const Zan32s h = 1 + static_cast<Zan32s>(rng.below(20));
            const auto ss = steps_for(e.width + 5), ds = steps_for(e.width);
            const Zan32s sStep = ss[static_cast<size_t>(d) % ss.size()], dStep = ds[static_cast<size_t>(d / 2) % ds.size()];
            Region src(e.width + 5, h + 5, sStep, d % 64), want(e.width, h, dStep, (d * 7) % 64), got(e.width, h, dStep, (d * 7) % 64);
            src.fill(rng);
            if (d % 11 == 3) src.set(255);
            if (d % 11 == 4) src.set(0);
            want.set(0xA5);
            got.set(0xA5);
            const Zan8u* s = src.origin() + 2 * static_cast<std::ptrdiff_t>(sStep) + 2;
            e.rule(s, sStep, want.origin(), dStep, h);
            e.simd(s, sStep, got.origin(), dStep, h);
            ASSERT_TRUE(want.same_as(got)) << e.name << " draw " << d << " h " << h << " seed " << seed();
        }
    }
}

TEST(CheckAvsInter, WeightEveryWidth) {
    Rng rng(402);
    for (const auto& e : kernels().weight) {
        for (int d = 0; d < draws(); ++d) {
            const Zan32s h = static_cast<Zan32s>(rng.below(17));
            const auto st = steps_for(e.width);
            const Zan32s step = st[static_cast<size_t>(d) % st.size()];
            Region src(e.width, h, step, d % 64), want(e.width, h, step, (d * 5) % 64), got(e.width, h, step, (d * 5) % 64);
            src.fill(rng);
            want.set(0x3C);
            got.set(0x3C);
            Zan32s scale, shift;
            switch (d % 4) {
                case 0: scale = rng.range(0, 255); shift = rng.range(-128, 127); break;
                case 1: scale = rng.range(-70000, 70000); shift = rng.range(-300, 300); break;
                case 2: scale = static_cast<Zan32s>(rng.next()); shift = static_cast<Zan32s>(rng.next()); break;
                default: scale = 32; shift = 0; break;
            }
            e.rule(src.origin(), step, want.origin(), step, scale, shift, h);
            e.simd(src.origin(), step, got.origin(), step, scale, shift, h);
            ASSERT_TRUE(want.same_as(got)) << e.name << " draw " << d << " scale " << scale << " shift " << shift;
        }
    }
}

// Samples around a base with a step at the edge and small noise, so that
// the filter conditions fall on both sides.
void fill_edge_area(Rng& rng, Region& r, int d) {
    r.fill(rng);
    if (d % 4 == 0) return;
    const Zan32s base = rng.range(0, 255), jump = rng.range(-40, 40), noise = 1 + static_cast<Zan32s>(rng.below(d % 4 == 1 ? 3 : 12));
    std::vector<Zan8u>& s = r.storage();
    for (size_t i = 0; i < s.size(); ++i) {
        const Zan32s v = base + ((i / 7) % 2 ? jump : 0) + rng.range(-noise, noise);
        s[i] = static_cast<Zan8u>(v < 0 ? 0 : v > 255 ? 255 : v);
    }
}

TEST(CheckAvsInter, LoopFilterEveryEdgeKind) {
    Rng rng(403);
    for (const auto& e : kernels().deblock) {
        const bool ver = e.param == 0 || e.param == 2;
        const Zan32s areaW = ver ? e.width + 8 : e.width, areaH = ver ? e.height : e.height + 8;
        for (int d = 0; d < draws() * 2; ++d) {
            const auto st = steps_for(areaW);
            const Zan32s step = st[static_cast<size_t>(d) % st.size()];
            Region want(areaW, areaH, step, d % 64), got(areaW, areaH, step, d % 64);
            fill_edge_area(rng, want, d);
            copy_same(want, got);
            Zan8u* pw = want.origin() + (ver ? 4 : 4 * static_cast<std::ptrdiff_t>(step));
            Zan8u* pg = got.origin() + (ver ? 4 : 4 * static_cast<std::ptrdiff_t>(step));
            Zan8u alpha[2], beta[2], c[2], bs[8];
            for (int k = 0; k < 2; ++k) {
                alpha[k] = static_cast<Zan8u>(d % 9 == 0 ? rng.below(256) : rng.below(70));
                beta[k] = static_cast<Zan8u>(d % 9 == 0 ? rng.below(256) : rng.below(30));
                c[k] = static_cast<Zan8u>(d % 9 == 0 ? rng.below(256) : rng.below(12));
            }
            for (int k = 0; k < 8; ++k) bs[k] = (k % 2 == 0) ? static_cast<Zan8u>(rng.below(3)) : 0;
            if (d % 13 == 5) bs[1] = static_cast<Zan8u>(1 + rng.below(255));  // a stray byte in the word
            e.rule(pw, step, alpha, beta, c, bs);
            e.simd(pg, step, alpha, beta, c, bs);
            ASSERT_TRUE(want.same_as(got)) << e.name << " draw " << d << " step " << step << " bs " << int(bs[0]) << int(bs[2])
                                           << int(bs[4]) << int(bs[6]) << " seed " << seed();
        }
    }
}

}  // namespace
