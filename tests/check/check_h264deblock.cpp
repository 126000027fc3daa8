// Every H.264 deblocking kernel against its scalar rule.
//
// Samples are drawn close together (a base value and a small spread) so that
// the alpha and beta tests pass on some lines and fail on others; strengths
// cover every value 0..4, whole groups of 4, 4 beside other values, and
// values above 4.  The area is the block widened by the reach across the
// edges (4 samples for luma, 2 for chroma); the guard bytes around it must
// come out of the kernel as they went in.  The kernels are cheap, so each
// gets eight times the usual number of draws.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "check/harness.h"
#include "h264/h264deblock.h"

namespace {

using namespace zan;
using namespace zan::check;
using namespace zan::h264deblock;

const Kernels& kernels() { return for_path(u8::h264deblock::kernels, n8::h264deblock::kernels); }

// The area a kernel may touch, from the catalogue entry.
struct Geometry {
    bool vertical;
    Zan32s reach, channels, elem;
    Zan32s widthBytes, height;
    Geometry(Zan32s w, Zan32s h, Zan32s param, Zan32s elemBytes)
        : vertical((param & kVertical) != 0),
          reach((param & kLuma) ? 4 : 2),
          channels((param & kTwoChannels) ? 2 : 1),
          elem(elemBytes),
          widthBytes((w + (vertical ? reach : 0)) * channels * elemBytes),
          height(h + (vertical ? 0 : reach)) {}
    // The block's top-left sample inside the area.
    Zan8u* block(Region& r) const {
        return vertical ? r.origin() + reach * channels * elem : r.origin() + static_cast<std::ptrdiff_t>(reach) * r.step();
    }
};

// Lowest byte of a region's area (the origin, or the last row for a negative step).
Zan8u* lowest(Region& r, Zan32s height) {
    return r.step() >= 0 ? r.origin() : r.origin() + static_cast<std::ptrdiff_t>(r.step()) * (height - 1);
}

// Gives dst the bytes of src from one margin before the area to one after.
void clone(Region& dst, Region& src, const Geometry& g) {
    const std::size_t span = static_cast<std::size_t>(std::abs(src.step())) * static_cast<std::size_t>(g.height - 1) +
                             static_cast<std::size_t>(g.widthBytes);
    std::memcpy(lowest(dst, g.height) - 64, lowest(src, g.height) - 64, span + 128);
}

// Area samples: a base value (often an extreme) and a spread that is mostly
// small, sometimes the whole range.
// bands: every sample near 0 or near maxv, for the largest differences.
void fill_area(Region& r, const Geometry& g, Rng& rng, Zan32s maxv, bool bands = false) {
    static constexpr Zan32s kSpreads[] = {0, 1, 2, 3, 5, 8, 12, 20, 40};
    const Zan32s pick = rng.range(0, 11);
    const Zan32s spread = pick < 9 ? kSpreads[pick] * std::max<Zan32s>(1, maxv / 255) : pick == 11 ? 2 : maxv;
    const Zan32s kind = rng.range(0, 3);
    const Zan32s base = kind == 0 || pick == 11 ? (kind == 1 ? maxv : 0) : kind == 1 ? maxv : rng.range(0, maxv);
    // Sometimes a step across the whole area, so that |p0 - q0| is large,
    // now and then nearly the whole range (the largest deltas).
    Zan32s jump = rng.range(0, 3) == 0 ? rng.range(-spread * 3, spread * 3) : 0;
    if (pick == 11) jump = (kind == 1 ? -1 : 1) * (maxv - rng.range(0, 6));
    for (Zan32s y = 0; y < g.height; ++y)
        for (Zan32s x = 0; x < g.widthBytes / g.elem; ++x) {
            const bool qside = g.vertical ? x >= g.reach * g.channels : y >= g.reach;
            Zan32s v = base + rng.range(-spread, spread) + (qside ? jump : 0);
            if (bands) v = rng.below(2) ? maxv - rng.range(0, 3) : rng.range(0, 3);
            v = std::clamp(v, 0, maxv);
            Zan8u* at = r.origin() + static_cast<std::ptrdiff_t>(r.step()) * y + x * g.elem;
            if (g.elem == 1) {
                *at = static_cast<Zan8u>(v);
            } else {
                const Zan16u s = static_cast<Zan16u>(v);
                std::memcpy(at, &s, 2);
            }
        }
}

// Strength bytes: every value 0..4, whole groups of 4, 4 beside 3, {0, 4}
// only, and values above 4.
void fill_bs(std::array<Zan8u, 16>& bs, Rng& rng, int draw) {
    switch (draw % 6) {
        case 0:
            for (auto& b : bs) b = static_cast<Zan8u>(rng.range(0, 4));
            break;
        case 1:
            bs.fill(4);
            break;
        case 2:
            for (auto& b : bs) b = static_cast<Zan8u>(rng.range(0, 1) * 4);
            break;
        case 3:  // each group of 4 either all 4, all zero or mixed 1..4
            for (int k = 0; k < 4; ++k) {
                const Zan32s kind = rng.range(0, 2);
                for (int i = 0; i < 4; ++i)
                    bs[4 * k + i] = static_cast<Zan8u>(kind == 0 ? 4 : kind == 1 ? 0 : rng.range(1, 4));
            }
            break;
        case 4:  // pairs: (4, 4), (4, 3), (3, 4), (0, 0)
            for (int k = 0; k < 8; ++k) {
                const Zan32s kind = rng.range(0, 3);
                bs[2 * k] = static_cast<Zan8u>(kind == 2 ? 3 : kind == 3 ? 0 : 4);
                bs[2 * k + 1] = static_cast<Zan8u>(kind == 1 ? 3 : kind == 3 ? 0 : 4);
            }
            break;
        default:
            for (auto& b : bs) b = static_cast<Zan8u>(rng.range(0, 3) == 0 ? rng.range(0, 255) : rng.range(0, 4));
            break;
    }
}

// alpha, beta, tc0 in their usual ranges, sometimes anywhere, sometimes 0.
Zan32s draw_alpha(Rng& rng, Zan32s scale) {
    const Zan32s k = rng.range(0, 9);
    return k == 0 ? 0 : k < 6 ? rng.range(1, 60) * scale : k == 6 ? 255 * scale : rng.range(0, 255) * scale;
}
Zan32s draw_beta(Rng& rng, Zan32s scale) {
    const Zan32s k = rng.range(0, 9);
    return k == 0 ? 0 : k < 8 ? rng.range(1, 18) * scale : k == 8 ? 255 * scale : rng.range(0, 255) * scale;
}
Zan32s draw_tc0(Rng& rng, Zan32s scale) {
    const Zan32s k = rng.range(0, 7);
    return k == 0 ? rng.range(0, 255) * scale : k == 1 ? rng.range(120, 255) * scale : rng.range(0, 25) * scale;
}

struct Layout {
    Zan32s align, step;
};
Layout layout(int draw, const Geometry& g) {
    const auto steps = steps_for(g.widthBytes, g.elem);
    Zan32s a = draw % 64;
    if (g.elem == 2) a &= ~1;
    return {a, steps[static_cast<std::size_t>(draw / 7) % steps.size()]};
}

#define WHERE(e, d, l) (e).name << " draw " << (d) << " align " << (l).align << " step " << (l).step << " seed " << seed()

TEST(CheckH264Deblock, Edges8u) {
    Rng rng(801);
    for (const auto& e : kernels().edges8)
        for (int d = 0; d < 8 * draws(); ++d) {
            const Geometry g(e.width, e.height, e.param, 1);
            const Layout l = layout(d, g);
            Region want(g.widthBytes, g.height, l.step, l.align), got(g.widthBytes, g.height, l.step, l.align);
            // One draw in ten: samples at both ends of the range with alpha
            // and beta at 255 and large tc0, so that the largest deltas meet
            // the widest clips.
            const bool extreme = d % 10 == 7;
            want.fill(rng);
            fill_area(want, g, rng, 255, extreme);
            clone(got, want, g);
            std::array<Zan8u, 4> alpha, beta;
            std::array<Zan8u, 16> tc0, bs;
            for (auto& a : alpha) a = static_cast<Zan8u>(extreme ? 255 : draw_alpha(rng, 1));
            for (auto& b : beta) b = static_cast<Zan8u>(extreme ? 255 : draw_beta(rng, 1));
            for (auto& t : tc0) t = static_cast<Zan8u>(extreme ? rng.range(100, 255) : draw_tc0(rng, 1));
            fill_bs(bs, rng, d);
            e.rule(g.block(want), l.step, alpha.data(), beta.data(), tc0.data(), bs.data());
            e.simd(g.block(got), l.step, alpha.data(), beta.data(), tc0.data(), bs.data());
            ASSERT_TRUE(want.same_as(got)) << WHERE(e, d, l);
        }
}

TEST(CheckH264Deblock, Mbaff8u) {
    Rng rng(802);
    for (const auto& e : kernels().mbaff8)
        for (int d = 0; d < 8 * draws(); ++d) {
            const Geometry g(e.width, e.height, e.param, 1);
            const Layout l = layout(d, g);
            Region want(g.widthBytes, g.height, l.step, l.align), got(g.widthBytes, g.height, l.step, l.align);
            want.fill(rng);
            fill_area(want, g, rng, 255);
            clone(got, want, g);
            std::array<Zan8u, 16> tc0, bs;
            for (auto& t : tc0) t = static_cast<Zan8u>(draw_tc0(rng, 1));
            fill_bs(bs, rng, d);
            // Values as the caller gives them: usually bytes, sometimes far
            // beyond what an 8-bit difference can reach.
            static constexpr Zan32u kWide[] = {256, 257, 1019, 1020, 1023, 1024, 70000, 0xFFFFFFFFu};
            Zan32u alpha = static_cast<Zan32u>(draw_alpha(rng, 1)), beta = static_cast<Zan32u>(draw_beta(rng, 1));
            if (d % 5 == 3) alpha = kWide[rng.below(8)];
            if (d % 7 == 5) beta = kWide[rng.below(8)];
            e.rule(g.block(want), l.step, alpha, beta, tc0.data(), bs.data());
            e.simd(g.block(got), l.step, alpha, beta, tc0.data(), bs.data());
            ASSERT_TRUE(want.same_as(got)) << WHERE(e, d, l) << " alpha " << alpha << " beta " << beta;
        }
}

TEST(CheckH264Deblock, Edges16u) {
    Rng rng(803);
    static constexpr Zan32s kDepths[] = {8, 9, 10, 12, 14, 16};
    for (const auto& e : kernels().edges16)
        for (int d = 0; d < 8 * draws(); ++d) {
            const Geometry g(e.width, e.height, e.param, 2);
            const Layout l = layout(d, g);
            Region want(g.widthBytes, g.height, l.step, l.align), got(g.widthBytes, g.height, l.step, l.align);
            want.fill(rng);
            Zan32s depth = kDepths[rng.below(6)];
            // Now and then samples above the depth's range, or an odd depth.
            const Zan32s maxv = d % 11 == 4 ? 65535 : (1 << depth) - 1;
            if (d % 13 == 6) depth = static_cast<Zan32s>(rng.range(-2, 20));
            // One draw in ten at both ends of the range with the widest limits.
            const bool extreme = d % 10 == 7;
            fill_area(want, g, rng, maxv, extreme);
            clone(got, want, g);
            const Zan32s scale = 1 << (std::clamp(depth, 8, 16) - 8);
            std::array<Zan16u, 4> alpha, beta;
            std::array<Zan16u, 16> tc0;
            std::array<Zan8u, 16> bs;
            for (auto& a : alpha) a = static_cast<Zan16u>(extreme ? rng.range(60000, 65535) : std::min(draw_alpha(rng, scale), 65535));
            for (auto& b : beta) b = static_cast<Zan16u>(extreme ? rng.range(4000, 65535) : std::min(draw_beta(rng, scale), 65535));
            for (auto& t : tc0) t = static_cast<Zan16u>(extreme ? rng.range(2000, 65535) : std::min(draw_tc0(rng, scale), 65535));
            if (d % 17 == 9) alpha[0] = 65535;
            fill_bs(bs, rng, d);
            auto* pw = reinterpret_cast<Zan16u*>(g.block(want));
            auto* pg = reinterpret_cast<Zan16u*>(g.block(got));
            e.rule(pw, l.step / 2, alpha.data(), beta.data(), tc0.data(), bs.data(), depth);
            e.simd(pg, l.step / 2, alpha.data(), beta.data(), tc0.data(), bs.data(), depth);
            ASSERT_TRUE(want.same_as(got)) << WHERE(e, d, l) << " depth " << depth;
        }
}

// The rules themselves keep to their area: run on a region whose guards are
// a known value, nothing outside the area may change.
TEST(CheckH264Deblock, RulesStayInsideTheirArea) {
    Rng rng(804);
    for (const auto& e : kernels().edges8)
        for (int d = 0; d < 40; ++d) {
            const Geometry g(e.width, e.height, e.param, 1);
            const Layout l = layout(d, g);
            Region r(g.widthBytes, g.height, l.step, l.align), before(g.widthBytes, g.height, l.step, l.align);
            r.set(0x5A);
            fill_area(r, g, rng, 255);
            clone(before, r, g);
            std::array<Zan8u, 4> alpha{255, 255, 255, 255}, beta{255, 255, 255, 255};
            std::array<Zan8u, 16> tc0, bs;
            tc0.fill(25);
            fill_bs(bs, rng, d);
            e.rule(g.block(r), l.step, alpha.data(), beta.data(), tc0.data(), bs.data());
            // Restore the area from the copy: what remains must equal the copy.
            for (Zan32s y = 0; y < g.height; ++y)
                std::memcpy(r.origin() + static_cast<std::ptrdiff_t>(l.step) * y,
                            before.origin() + static_cast<std::ptrdiff_t>(l.step) * y, static_cast<std::size_t>(g.widthBytes));
            ASSERT_TRUE(r.same_as(before)) << WHERE(e, d, l);
        }
}

}  // namespace
