// Every denoising row kernel against its scalar rule, and the adaptive
// filter over a sequence of frames: the pictures built from the rule's rows
// equal the exported calls' pictures frame after frame, with the record
// unchanged by every call.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "check/harness.h"
#include "picture/denoise.h"

namespace {

using namespace zan;
using namespace zan::check;

const denoise::Kernels& kernels() { return for_path(u8::denoise::kernels, n8::denoise::kernels); }

struct Band {
    Region r;
    Band(Zan32s bytes, Zan32s rows, Zan32s step, Zan32s align) : r(bytes + 2, rows + 2, step, align) {}
    // Row y, column x of the band; columns -1..bytes and rows -1..rows exist.
    Zan8u* at(Zan32s y, Zan32s x = 0) { return r.origin() + static_cast<std::ptrdiff_t>(r.step()) * (y + 1) + 1 + x; }
};

Zan32s draw_count(Rng& rng, int d) {
    if (d < 20) return d + 1;
    return rng.range(1, 90);
}

struct Recip {
    ZanDenoiseAdaptiveState* st = nullptr;
    Recip() { EXPECT_EQ(zaniFilterDenoiseAdaptiveInitAlloc_8u_C1(&st, {1408, 8}, {1, 1}), zanStsOk); }
    ~Recip() { zaniFilterDenoiseAdaptiveFree_8u_C1(st); }
};

TEST(CheckDenoise, AdaptiveRows) {
    Rng rng(201);
    Recip rec;
    for (const auto& e : kernels().adaptive)
        for (int d = 0; d < draws(); ++d) {
            Zan32s n = draw_count(rng, d);
            Zan32s step = steps_for(n + 2)[static_cast<size_t>(d) % 6];
            Band p(n, 1, step, d % 64), c(n, 1, step, (d * 3) % 64), q(n, 1, step, (d * 5) % 64);
            c.r.fill(rng);
            p.r.fill(rng);
            q.r.fill(rng);
            if (d & 1)  // near frames: some samples pass the threshold test, some not
                for (Zan32s y = -1; y <= 1; ++y)
                    for (Zan32s x = -1; x <= n; ++x) {
                        p.at(y, x)[0] = static_cast<Zan8u>(c.at(y, x)[0] + rng.range(-9, 9));
                        q.at(y, x)[0] = static_cast<Zan8u>(c.at(y, x)[0] + rng.range(-9, 9));
                    }
            Zan32s t = d < 12 ? d * 3 - 3 : rng.range(-5, 300);
            if (d % 17 == 0) t = 100000;
            const Zan8u* rows[3] = {p.at(0), c.at(0), q.at(0)};
            Region want(n, 1, n, d % 64), got(n, 1, n, d % 64);
            want.set(9);
            got.set(9);
            e.rule(rows, step, want.origin(), n, t, rec.st->pRecip);
            e.simd(rows, step, got.origin(), n, t, rec.st->pRecip);
            ASSERT_TRUE(want.same_as(got)) << e.name << " draw " << d << " count " << n << " threshold " << t
                                           << " seed " << seed();
        }
}

TEST(CheckDenoise, SmoothMask) {
    Rng rng(202);
    for (const auto& e : kernels().mask)
        for (int d = 0; d < draws(); ++d) {
            Zan32s cols = draw_count(rng, d), rows = rng.range(1, 4), step = cols + 1 + rng.range(0, 20);
            std::vector<Zan8u> L(static_cast<size_t>(step) * (rows + 1));
            rng.fill(L.data(), L.size());
            if (d & 1)
                for (auto& v : L) v = static_cast<Zan8u>(100 + (v & 15));
            Zan32s t = d < 10 ? d * 29 - 30 : rng.range(-10, 300);
            std::vector<Zan8u> want(static_cast<size_t>(step) * (rows + 1) + 32, 0x3C), got(want);
            e.rule(L.data(), step, want.data() + 16, rows, cols, t);
            e.simd(L.data(), step, got.data() + 16, rows, cols, t);
            ASSERT_EQ(want, got) << e.name << " draw " << d << " " << cols << "x" << rows << " threshold " << t
                                 << " seed " << seed();
        }
}

TEST(CheckDenoise, SmoothAverage) {
    Rng rng(203);
    for (const auto& e : kernels().average)
        for (int d = 0; d < draws(); ++d) {
            Zan32s n = draw_count(rng, d);
            Zan32s step = steps_for(n + 2)[static_cast<size_t>(d) % 6];
            Band src(n, 1, step, d % 64), mask(n, 1, -step, (d * 11) % 64);
            src.r.fill(rng);
            // Masks from all-clear to all-set, with stray non-zero values.
            const Zan32s density = d % 5;
            for (Zan32s y = -1; y <= 1; ++y)
                for (Zan32s x = -1; x <= n; ++x)
                    mask.at(y, x)[0] = static_cast<Zan8u>(static_cast<Zan32s>(rng.below(4)) < density ? (rng.below(2) ? 255 : rng.range(1, 254)) : 0);
            Region want(n, 1, n, d % 64), got(n, 1, n, d % 64);
            want.set(4);
            got.set(4);
            e.rule(src.at(0), step, mask.at(0), -step, want.origin(), n);
            e.simd(src.at(0), step, mask.at(0), -step, got.origin(), n);
            ASSERT_TRUE(want.same_as(got)) << e.name << " draw " << d << " count " << n << " seed " << seed();
        }
}

// Frames of a moving ramp with noise.
std::vector<Zan8u> noisy(Rng& rng, Zan32s w, Zan32s h, int f) {
    std::vector<Zan8u> p(static_cast<size_t>(w) * h);
    for (Zan32s y = 0; y < h; ++y)
        for (Zan32s x = 0; x < w; ++x)
            p[static_cast<size_t>(y) * w + x] = static_cast<Zan8u>(((x + f) * 5 + y * 2) % 200 + 20 + rng.range(-8, 8));
    return p;
}

TEST(CheckDenoise, AdaptiveSequences) {
    Rng rng(204);
    for (const auto& e : kernels().adaptive)
        for (int run = 0; run < draws() / 20 + 2; ++run) {
            // The first run: a region wider than 1408, which an unknown mode
            // treats as the general window, filtered all the same.
            const bool wide = run == 0;
            const Zan32s W = wide ? 1500 : rng.range(3, 60), H = wide ? 4 : rng.range(3, 16);
            const ZaniSize roi = wide ? ZaniSize{W, H} : ZaniSize{rng.range(1, W), rng.range(1, H)};
            const ZaniPoint off = wide ? ZaniPoint{0, 0} : ZaniPoint{rng.range(0, W - roi.width), rng.range(0, H - roi.height)};
            ZanDenoiseAdaptiveState* st = nullptr;
            ASSERT_EQ(zaniFilterDenoiseAdaptiveInitAlloc_8u_C1(&st, roi, {1, 1}), zanStsOk);
            const ZanDenoiseAdaptiveState saved = *st;
            const std::vector<Zan16u> table(st->pRecip, st->pRecip + 28);
            const Zan32s T = rng.range(0, 20);
            std::vector<Zan8u> f0 = noisy(rng, W, H, 0), f1 = noisy(rng, W, H, 1), f2;
            for (int f = 2; f < 6; ++f) {
                f2 = noisy(rng, W, H, f);
                std::vector<Zan8u> want(static_cast<size_t>(W) * H, 0xA5), got(want);
                // Reference: border copies, then the rule's rows.
                const bool top = off.y == 0, bottom = off.y + roi.height == H, left = off.x == 0,
                           right = off.x + roi.width == W;
                for (Zan32s y = off.y; y < off.y + roi.height; ++y)
                    for (Zan32s x = off.x; x < off.x + roi.width; ++x)
                        if ((top && y == 0) || (bottom && y == H - 1) || (left && x == 0) || (right && x == W - 1))
                            want[static_cast<size_t>(y) * W + x] = f1[static_cast<size_t>(y) * W + x];
                const Zan32s x0 = off.x + left, x1 = off.x + roi.width - right;
                for (Zan32s y = off.y + top; y < off.y + roi.height - bottom && x0 < x1; ++y) {
                    const size_t i = static_cast<size_t>(y) * W + x0;
                    const Zan8u* rows[3] = {&f0[i], &f1[i], &f2[i]};
                    e.rule(rows, W, &want[i], x1 - x0, T, st->pRecip);
                }
                const Zan8u* planes[3] = {f0.data(), f1.data(), f2.data()};
                ASSERT_EQ(zaniFilterDenoiseAdaptive_8u_C1R(planes, W, got.data(), W, {W, H}, {1, 1}, off, roi, T,
                                                           e.param, st),
                          zanStsOk);
                ASSERT_EQ(want, got) << e.name << " run " << run << " frame " << f << " picture " << W << "x" << H
                                     << " seed " << seed();
                ASSERT_EQ(0, std::memcmp(&saved, st, sizeof saved));
                if (wide) {
                    std::vector<Zan8u> kept(got);
                    EXPECT_EQ(zaniFilterDenoiseAdaptive_8u_C1R(planes, W, got.data(), W, {W, H}, {1, 1}, off, roi, T, 4, st),
                              zanStsModeUnknown);
                    EXPECT_EQ(kept, got);
                }
                ASSERT_TRUE(std::equal(table.begin(), table.end(), st->pRecip));
                f0 = std::move(f1);
                f1 = std::move(f2);
            }
            zaniFilterDenoiseAdaptiveFree_8u_C1(st);
        }
}

}  // namespace
