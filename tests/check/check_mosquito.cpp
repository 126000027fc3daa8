// Mosquito filter: the vector frame-difference count against its rule, and
// the whole call with the vector count against the whole call with the rule
// over sequences of frames on two states, so that the outputs, the per-block
// records, the edge map and the class map (which carry over from call to
// call) must stay identical.  Regions vary in size and offset within the
// picture, steps and alignments vary, and the previous frame is either the
// last source or a nudged copy of the current one.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "check/harness.h"
#include "picture/mosquito.h"

namespace {

using namespace zan;
using namespace zan::check;

const mosquito::Kernels& kernels() { return for_path(u8::mosquito::kernels, n8::mosquito::kernels); }

TEST(CheckMosquito, FrameDifferenceCount) {
    Rng rng(0x3051);
    for (const auto& e : kernels().count)
        for (int d = 0; d < draws() * 4; ++d) {
            Zan8u cur[144], prev[144];
            rng.fill(cur, sizeof cur);
            if (d % 2) {
                for (int i = 0; i < 144; ++i) prev[i] = static_cast<Zan8u>(std::clamp(cur[i] + rng.range(-30, 30), 0, 255));
            } else {
                rng.fill(prev, sizeof prev);
            }
            const Zan32s limit = d % 9 == 0 ? rng.range(-300, 300) : rng.range(0, 40);
            ASSERT_EQ(e.rule(cur, prev, limit), e.simd(cur, prev, limit)) << e.name << " draw " << d << " limit " << limit
                                                                         << " seed " << seed();
        }
}

struct State {
    ZanDenoiseMosquitoState* s = nullptr;
    explicit State(ZaniSize roi) { EXPECT_EQ(zaniFilterDenoiseMosquitoInitAlloc_8u_C1(&s, roi), zanStsOk); }
    ~State() { zaniFilterDenoiseMosquitoFree_8u_C1(s); }
    State(const State&) = delete;
    State& operator=(const State&) = delete;
};

// The state's records, edge map and class map must agree.
bool same_state(const ZanDenoiseMosquitoState* a, const ZanDenoiseMosquitoState* b) {
    const Zan32s W = a->roiSize.width, H = a->roiSize.height;
    const size_t recs = static_cast<size_t>((W / 8 + 1) * (H / 8 + 1) * 5) * sizeof(Zan32s);
    const size_t map = static_cast<size_t>((W + 8) * (H + 8));
    return std::memcmp(a->pWork->pBlockInfo, b->pWork->pBlockInfo, recs) == 0 &&
           std::memcmp(a->pWork->pEdgeMap, b->pWork->pEdgeMap, map) == 0 &&
           std::memcmp(a->pWork->pClassMap, b->pWork->pClassMap, 64) == 0;
}

void copy_rows(Region& from, Region& to, Zan32s rowBytes, Zan32s height) {
    for (Zan32s y = 0; y < height; ++y)
        std::memcpy(to.origin() + static_cast<std::ptrdiff_t>(to.step()) * y,
                    from.origin() + static_cast<std::ptrdiff_t>(from.step()) * y, static_cast<size_t>(rowBytes));
}

// Blocky content with edges and ringing-like noise, so that every class and
// kernel is reached.
void picture(Rng& rng, Region& r, Zan32s w, Zan32s h) {
    const Zan32s a = rng.range(0, 255), b = rng.range(0, 255), split = rng.range(0, w), noise = rng.range(0, 12);
    for (Zan32s y = 0; y < h; ++y) {
        Zan8u* p = r.origin() + static_cast<std::ptrdiff_t>(r.step()) * y;
        for (Zan32s x = 0; x < w; ++x) {
            const Zan32s base = (x < split + (y % 8 < 4 ? 0 : 3)) ? a : b;
            p[x] = static_cast<Zan8u>(
                rng.below(23) == 0 ? rng.below(256) : std::clamp(base + rng.range(-noise, noise), 0, 255));
        }
    }
}

TEST(CheckMosquito, FrameSequencesWithState) {
    Rng rng(0x3052);
    for (const auto& e : kernels().frame) {
        const int n = std::max(draws() / 4, 20);
        int ran = 0;
        for (int d = 0; d < n; ++d) {
            const Zan32s iw = rng.range(12, 64), ih = rng.range(12, 48);
            const Zan32s ox = rng.range(0, std::min(4, iw - 12)), oy = rng.range(0, std::min(4, ih - 12));
            const ZaniSize roi{rng.range(12, iw - ox), rng.range(12, ih - oy)};
            const ZaniSize img{iw, ih};
            const ZaniPoint off{ox, oy};
            const auto steps = steps_for(iw);
            const Zan32s srcStep = steps[static_cast<size_t>(d) % steps.size()];
            const Zan32s dstStep = steps[static_cast<size_t>(d / 2) % steps.size()];
            Region prev(iw, ih, srcStep, d % 16), cur(iw, ih, srcStep, (d + 3) % 16), dstRule(iw, ih, dstStep, (d * 5) % 16),
                dstSimd(iw, ih, dstStep, (d * 5) % 16);
            State a(roi), b(roi);
            {  // only regions that take at least one block
                State probe(roi);
                picture(rng, cur, iw, ih);
                const Zan8u* src[2] = {cur.origin(), cur.origin()};
                if (zaniFilterDenoiseMosquito_8u_C1R(src, srcStep, dstRule.origin(), dstStep, img, probe.s, off, roi) !=
                    zanStsOk)
                    continue;
            }
            ++ran;
            for (int f = 0; f < 4; ++f) {
                copy_rows(cur, prev, iw, ih);
                if (f % 2 == 0) picture(rng, cur, iw, ih);
                else  // a little motion and noise on the same content
                    for (Zan32s y = 0; y < ih; ++y)
                        for (Zan32s x = 0; x < iw; ++x) {
                            Zan8u* p = cur.origin() + static_cast<std::ptrdiff_t>(srcStep) * y + x;
                            *p = static_cast<Zan8u>(std::clamp(*p + rng.range(-25, 25), 0, 255));
                        }
                dstRule.fill(rng);
                dstSimd.set(0);
                copy_rows(dstRule, dstSimd, iw, ih);
                dstRule.set(0);
                copy_rows(dstSimd, dstRule, iw, ih);
                const Zan8u* src[2] = {prev.origin(), cur.origin()};
                e.rule(src, srcStep, dstRule.origin(), dstStep, img, a.s, off, roi);
                e.simd(src, srcStep, dstSimd.origin(), dstStep, img, b.s, off, roi);
                ASSERT_TRUE(dstRule.same_as(dstSimd)) << e.name << " draw " << d << " frame " << f << " picture " << iw
                                                      << "x" << ih << " region " << roi.width << "x" << roi.height
                                                      << " at " << ox << "," << oy << " seed " << seed();
                ASSERT_TRUE(same_state(a.s, b.s)) << e.name << " draw " << d << " frame " << f << " seed " << seed();
            }
        }
        EXPECT_GT(ran, n / 4) << "too few draws with a valid region";
    }
}

}  // namespace
