// Every MPEG-4 prediction kernel against its scalar rule: each quarter-sample
// copy at every position 1..15 with both roundings, the OBMC mixing of both
// sizes; random sources, sources at the extremes 0 and 255, every alignment
// 0..15, tight, odd, wide and negative steps, and guard bands around every
// output.
#include <gtest/gtest.h>

#include <vector>

#include "check/harness.h"
#include "h26x_mpeg4/mpeg4pred.h"

namespace {

using namespace zan;
using namespace zan::check;
using namespace zan::mpeg4pred;

const Kernels& kernels() { return for_path(u8::mpeg4pred::kernels, n8::mpeg4pred::kernels); }

Zan32s pick(const std::vector<Zan32s>& v, int d) { return v[static_cast<size_t>(d) % v.size()]; }

// Source contents: random, all 0, all 255, a 0/255 checkerboard, random 0/255.
void fill_source(Region& r, Rng& rng, int d) {
    auto& s = r.storage();
    switch (d % 6) {
        case 1: std::fill(s.begin(), s.end(), Zan8u{0}); break;
        case 2: std::fill(s.begin(), s.end(), Zan8u{255}); break;
        case 3:
            for (size_t i = 0; i < s.size(); ++i) s[i] = static_cast<Zan8u>((i ^ (i / 7)) & 1 ? 255 : 0);
            break;
        case 4:
            for (auto& b : s) b = rng.below(2) ? 255 : 0;
            break;
        default: r.fill(rng); break;
    }
}

TEST(CheckMpeg4pred, CopyQuarterSample) {
    Rng rng(0x4D50);
    for (const auto& k : kernels().copyQP) {
        SCOPED_TRACE(k.name);
        const auto srcSteps = steps_for(k.width + 1);
        const auto dstSteps = steps_for(k.width);
        for (int d = 0; d < draws(); ++d) {
            const Zan32s acc = 1 + d % 15;
            const Zan32s rounding = (d / 15) & 1;
            Region src(k.width + 1, k.height + 1, pick(srcSteps, d / 3), d % 16);
            fill_source(src, rng, d / 2);
            const Zan32s ds = pick(dstSteps, d / 5), da = (d * 7) % 16;
            Region a(k.width, k.height, ds, da), b(k.width, k.height, ds, da);
            const Zan8u guard = static_cast<Zan8u>(rng.below(256));
            a.set(guard);
            b.set(guard);
            k.rule(src.origin(), src.step(), a.origin(), a.step(), acc, rounding);
            k.simd(src.origin(), src.step(), b.origin(), b.step(), acc, rounding);
            ASSERT_TRUE(a.same_as(b)) << "acc " << acc << " rounding " << rounding << " draw " << d << " seed "
                                      << seed();
        }
    }
}

TEST(CheckMpeg4pred, SumOBMC) {
    Rng rng(0x0B3C);
    for (const auto& k : kernels().sumOBMC) {
        SCOPED_TRACE(k.name);
        const auto dstSteps = steps_for(k.width);
        const size_t n = static_cast<size_t>(k.width * k.height);
        for (int d = 0; d < draws(); ++d) {
            std::vector<Zan8u> cur(n), lr(n), ab(n);
            switch (d % 4) {
                case 0:
                    rng.fill(cur.data(), n), rng.fill(lr.data(), n), rng.fill(ab.data(), n);
                    break;
                case 1:
                    std::fill(cur.begin(), cur.end(), 255), std::fill(lr.begin(), lr.end(), 255),
                        std::fill(ab.begin(), ab.end(), 255);
                    break;
                case 2:
                    for (size_t i = 0; i < n; ++i)
                        cur[i] = rng.below(2) ? 255 : 0, lr[i] = rng.below(2) ? 255 : 0,
                        ab[i] = rng.below(2) ? 255 : 0;
                    break;
                default: rng.fill(cur.data(), n), std::fill(lr.begin(), lr.end(), 0), rng.fill(ab.data(), n);
            }
            const Zan32s ds = pick(dstSteps, d / 3), da = d % 16;
            Region a(k.width, k.height, ds, da), b(k.width, k.height, ds, da);
            a.set(0x33);
            b.set(0x33);
            k.rule(cur.data(), lr.data(), ab.data(), a.origin(), a.step());
            k.simd(cur.data(), lr.data(), ab.data(), b.origin(), b.step());
            ASSERT_TRUE(a.same_as(b)) << "draw " << d << " seed " << seed();
        }
    }
}

}  // namespace
