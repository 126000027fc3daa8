// CAST denoising: the vector frame kernel against the scalar rule over
// sequences of frames, so that the history carried from frame to frame must
// stay identical too.  Frames are built from their predecessor (kept, lightly
// changed, or replaced block-wise) so that still and moving blocks mix;
// parameters, block sizes, steps and alignments vary per draw, and some
// draws are wider than one pass of the kernel (1024 bytes).
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "check/harness.h"
#include "picture/cast.h"

namespace {

using namespace zan;
using namespace zan::check;

const cast::Kernels& kernels() { return for_path(u8::cast::kernels, n8::cast::kernels); }

ZanDenoiseCastParams random_params(Rng& rng, int d) {
    ZanDenoiseCastParams p;
    zaniFilterDenoiseCASTInit(&p);
    if (d % 4 == 0) return p;  // the defaults, with their 4x4 blocks
    p.temporalDifference = static_cast<Zan8u>(rng.below(40));
    p.motionCount = static_cast<Zan8u>(rng.below(d % 3 ? 6 : 256));
    p.edgeLimit = static_cast<Zan8u>(rng.below(256));
    p.blockWidth = static_cast<Zan8u>(d % 11 == 0 ? rng.range(100, 255) : rng.range(1, 9));
    p.blockHeight = static_cast<Zan8u>(d % 13 == 0 ? rng.range(20, 255) : rng.range(1, 9));
    p.edgeWeight = static_cast<Zan8u>(rng.below(256));
    p.flatWeight = static_cast<Zan8u>(rng.below(256));
    p.neighbourLimitY = static_cast<Zan8u>(rng.below(d % 5 ? 40 : 256));
    p.neighbourLimitUV = static_cast<Zan8u>(rng.below(d % 5 ? 40 : 256));
    p.historyWeight = static_cast<Zan8u>(d % 7 == 0 ? 0 : rng.below(256));
    return p;
}

// The next frame from the last: per run of 1 to 8 bytes of a row, kept,
// nudged by up to +-20 (which crosses typical thresholds), or new.
void next_frame(Rng& rng, Region& r, Zan32s rowBytes, Zan32s height, bool first) {
    for (Zan32s y = 0; y < height; ++y) {
        Zan8u* p = r.origin() + static_cast<std::ptrdiff_t>(r.step()) * y;
        if (first) {
            rng.fill(p, static_cast<std::size_t>(rowBytes));
            continue;
        }
        for (Zan32s x = 0; x < rowBytes;) {
            const Zan32s run = std::min(rowBytes - x, rng.range(1, 8));
            const Zan32s mode = rng.range(0, 3);
            for (Zan32s i = x; i < x + run; ++i) {
                if (mode == 1) p[i] = static_cast<Zan8u>(std::clamp(p[i] + rng.range(-20, 20), 0, 255));
                if (mode == 2) p[i] = static_cast<Zan8u>(rng.below(256));
            }
            x += run;
        }
    }
}

void copy_rows(Region& from, Region& to, Zan32s rowBytes, Zan32s height) {
    for (Zan32s y = 0; y < height; ++y)
        std::memcpy(to.origin() + static_cast<std::ptrdiff_t>(to.step()) * y,
                    from.origin() + static_cast<std::ptrdiff_t>(from.step()) * y, static_cast<size_t>(rowBytes));
}

TEST(CheckCast, FrameSequencesWithState) {
    Rng rng(0xCA57);
    for (const auto& e : kernels().frame) {
        const Zan32s L = e.param;  // 1 or 2 bytes per pixel
        const int n = std::max(draws() / 2, 20);
        for (int d = 0; d < n; ++d) {
            const ZanDenoiseCastParams p = random_params(rng, d);
            Zan32s W = rng.range(1, 40);
            if (d % 37 == 5) W = rng.range(1020, 1300) / L;
            if (L == 2) W = 2 * ((W + 1) / 2);
            const Zan32s H = d % 37 == 5 ? rng.range(1, 6) : rng.range(1, 18);
            const Zan32s rowBytes = L * W;
            const auto steps = steps_for(rowBytes);
            const Zan32s srcStep = steps[static_cast<size_t>(d) % steps.size()];
            const Zan32s edgeStep = steps[static_cast<size_t>(d / 2) % steps.size()];
            const Zan32s dstStep = steps[static_cast<size_t>(d / 3) % steps.size()];
            const Zan32s align = d % 16, dstAlign = (d * 7) % 16;
            Region cur(rowBytes, H, srcStep, align), prev(rowBytes, H, srcStep, (align + 5) % 16),
                edge(rowBytes, H, edgeStep, (align + 3) % 16), dstRule(rowBytes, H, dstStep, dstAlign),
                dstSimd(rowBytes, H, dstStep, dstAlign);
            cur.fill(rng);
            edge.fill(rng);
            const Zan32s bw = p.blockWidth, bh = p.blockHeight;
            const size_t blocks = L == 1 ? static_cast<size_t>(((W + bw - 1) / bw) * ((H + bh - 1) / bh))
                                         : static_cast<size_t>(4 * ((2 * W + 4 * bw - 1) / (4 * bw)) * ((H + bh - 1) / bh));
            const bool history = d % 3 != 0;
            std::vector<Zan8u> histRule(blocks + 32), histSimd;
            rng.fill(histRule.data(), histRule.size());
            histSimd = histRule;
            const ZaniSize size{W, H};
            for (int f = 0; f < 5; ++f) {
                if (f > 0) copy_rows(cur, prev, rowBytes, H);  // the last source is the previous frame
                next_frame(rng, cur, rowBytes, H, f == 0);
                if (f % 2) edge.fill(rng);
                dstRule.fill(rng);
                dstSimd.set(0);
                copy_rows(dstRule, dstSimd, rowBytes, H);
                dstRule.set(0);
                copy_rows(dstSimd, dstRule, rowBytes, H);
                const Zan8u* pv = f == 0 ? nullptr : prev.origin();
                e.rule(cur.origin(), pv, srcStep, edge.origin(), edgeStep, size, dstRule.origin(), dstStep,
                       history ? histRule.data() + 16 : nullptr, &p);
                e.simd(cur.origin(), pv, srcStep, edge.origin(), edgeStep, size, dstSimd.origin(), dstStep,
                       history ? histSimd.data() + 16 : nullptr, &p);
                ASSERT_TRUE(dstRule.same_as(dstSimd))
                    << e.name << " draw " << d << " frame " << f << " size " << W << "x" << H << " block "
                    << bw << "x" << bh << " steps " << srcStep << "/" << edgeStep << "/" << dstStep << " seed "
                    << seed();
                ASSERT_EQ(histRule, histSimd) << e.name << " draw " << d << " frame " << f << " seed " << seed();
            }
        }
    }
}

}  // namespace
