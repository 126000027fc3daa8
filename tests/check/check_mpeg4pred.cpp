// Every MPEG-4 prediction kernel against its scalar rule: each quarter-sample
// copy (both the SSSE3 and the SSE2 form, in either build) at every position
// 0..15 with both roundings and every source alignment, the OBMC mixing of both
// sizes, the affine warp of a plane (translations, zooms, rotations, shears,
// positions far outside the reference, every accuracy and shift, rectangles
// narrower than the kernel's eight-sample step) and the brightness gain; random sources, sources at the extremes 0 and 255, every alignment
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

// Every position 0..15 with both roundings at every source alignment, each
// with a tight, an odd, a wide and a negative step in turn; the sources
// alternate between random bytes and random 0/255 (which reaches the largest
// and smallest filter sums).
TEST(CheckMpeg4pred, CopyQuarterSampleEveryPosition) {
    Rng rng(0x51C0);
    for (const auto& k : kernels().copyQP) {
        SCOPED_TRACE(k.name);
        const auto srcSteps = steps_for(k.width + 1);
        const auto dstSteps = steps_for(k.width);
        int d = 0;
        for (Zan32s acc = 0; acc < 16; ++acc)
            for (Zan32s rounding = 0; rounding < 2; ++rounding)
                for (Zan32s align = 0; align < 16; ++align, ++d) {
                    Region src(k.width + 1, k.height + 1, pick(srcSteps, d), align);
                    fill_source(src, rng, d % 2 ? 4 : 0);
                    const Zan32s ds = pick(dstSteps, d / 2), da = (align * 5) % 16;
                    Region a(k.width, k.height, ds, da), b(k.width, k.height, ds, da);
                    const Zan8u guard = static_cast<Zan8u>(rng.below(256));
                    a.set(guard);
                    b.set(guard);
                    k.rule(src.origin(), src.step(), a.origin(), a.step(), acc, rounding);
                    k.simd(src.origin(), src.step(), b.origin(), b.step(), acc, rounding);
                    ASSERT_TRUE(a.same_as(b)) << "acc " << acc << " rounding " << rounding << " align " << align
                                              << " seed " << seed();
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

// A random affine warp plane over a reference rectangle of rw x rh samples at
// (rx, ry).  Kinds: 0 translation, 1 zoom and rotation near identity, 2 any
// increments, 3 positions far outside the reference.
WarpPlane random_plane(Rng& rng, int kind, Zan32s rx, Zan32s ry, Zan32s rw, Zan32s rh, Zan32s x0, Zan32s y0) {
    WarpPlane p{};
    p.rho = rng.range(0, 3);
    p.shift = kind == 0 ? rng.range(0, 3) : rng.range(0, 24);
    p.rect[0] = rx, p.rect[1] = ry, p.rect[2] = rw, p.rect[3] = rh;
    p.roundTerm = 128 - (static_cast<Zan32s>(rng.below(2)) << (3 - p.rho));
    const Zan64s s = Zan64s{16} >> p.rho;  // one sample in 1/s units
    const Zan64s unit = s << p.shift;
    // The position of the first destination sample, in 1/s units.
    Zan64s cx = rx + rng.range(-6, rw + 6), cy = ry + rng.range(-6, rh + 6);
    if (kind == 3) cx += rng.range(-40000, 40000), cy += rng.range(-40000, 40000);
    for (int c = 0; c < 2; ++c) {
        const Zan64s start = ((c ? cy : cx) * s + rng.range(0, static_cast<Zan32s>(s) - 1)) << p.shift;
        Zan64s along, across;
        switch (kind) {
            case 0: along = unit, across = 0; break;
            case 1:
                along = unit + rng.range(-static_cast<Zan32s>(unit / 4), static_cast<Zan32s>(unit / 4));
                across = rng.range(-static_cast<Zan32s>(unit / 3), static_cast<Zan32s>(unit / 3));
                break;
            default:
                along = rng.range(-3, 3) * unit + rng.range(-static_cast<Zan32s>(unit), static_cast<Zan32s>(unit));
                across = rng.range(-2, 2) * unit + rng.range(-static_cast<Zan32s>(unit), static_cast<Zan32s>(unit));
        }
        p.dx[c] = c == 0 ? along : across;
        p.dy[c] = c == 0 ? across : along;
        p.off[c] = start + rng.range(0, static_cast<Zan32s>(unit > 1 ? (unit >> 1) : 1)) - p.dx[c] * x0 - p.dy[c] * y0;
    }
    return p;
}

TEST(CheckMpeg4pred, WarpPlane) {
    Rng rng(0x3A7B);
    for (const auto& k : kernels().warp) {
        SCOPED_TRACE(k.name);
        for (int d = 0; d < draws(); ++d) {
            const Zan32s rw = rng.range(1, 48), rh = rng.range(1, 40);
            const Zan32s rx = rng.range(-20, 20), ry = rng.range(-20, 20);
            const auto srcSteps = steps_for(rw);
            // Now and then a step beyond 16 bits, which the kernel addresses
            // without its 16-bit row multiply.
            const Zan32s sstep = d % 25 == 24 ? (d % 2 ? 33001 : -40000) : pick(srcSteps, d / 2);
            Region src(rw, rh, sstep, d % 16);
            fill_source(src, rng, d / 3);
            const Zan32s w = d % 5 == 0 ? rng.range(1, 7) : rng.range(1, k.width);
            const Zan32s h = rng.range(1, k.height);
            const Zan32s x0 = rng.range(-16, 200), y0 = rng.range(-16, 200);
            const WarpPlane p = random_plane(rng, d % 4, rx, ry, rw, rh, x0, y0);
            const auto dstSteps = steps_for(w);
            const Zan32s ds = pick(dstSteps, d / 7), da = (d * 5) % 16;
            Region a(w, h, ds, da), b(w, h, ds, da);
            const Zan8u guard = static_cast<Zan8u>(rng.below(256));
            a.set(guard);
            b.set(guard);
            k.rule(src.origin(), src.step(), a.origin(), a.step(), x0, y0, w, h, p);
            k.simd(src.origin(), src.step(), b.origin(), b.step(), x0, y0, w, h, p);
            ASSERT_TRUE(a.same_as(b)) << "kind " << d % 4 << " shift " << p.shift << " rho " << p.rho << " w " << w
                                      << " draw " << d << " seed " << seed();
        }
    }
}

TEST(CheckMpeg4pred, SpriteBrightness) {
    Rng rng(0xB816);
    for (const auto& k : kernels().brightness) {
        SCOPED_TRACE(k.name);
        const auto steps = steps_for(k.width);
        for (int d = 0; d < draws(); ++d) {
            // The gains of the accepted changes: -123 (b = -112) .. 17901 (b = 1648).
            const Zan32s b = d % 7 == 0 ? (d % 2 ? -112 : 1648) : rng.range(-112, 1648);
            const Zan32s W = ((b << 10) + (b < 0 ? -50 : 50)) / 100 + 1024;
            const Zan32s w = rng.range(1, k.width), h = rng.range(1, k.height);
            // Both regions: the same guard bytes and the same rows.
            const Zan32s st = pick(steps, d / 3);
            Region c(w, h, st, d % 16), e(w, h, st, d % 16);
            const Zan8u guard = static_cast<Zan8u>(rng.below(256));
            c.set(guard);
            e.set(guard);
            std::vector<Zan8u> line(static_cast<size_t>(w));
            for (Zan32s y = 0; y < h; ++y) {
                rng.fill(line.data(), line.size());
                if (d % 3 == 1)
                    for (auto& v : line) v = (v & 1) ? 255 : 0;
                std::memcpy(c.origin() + static_cast<ptrdiff_t>(st) * y, line.data(), line.size());
                std::memcpy(e.origin() + static_cast<ptrdiff_t>(st) * y, line.data(), line.size());
            }
            k.rule(c.origin(), c.step(), w, h, W);
            k.simd(e.origin(), e.step(), w, h, W);
            ASSERT_TRUE(c.same_as(e)) << "b " << b << " draw " << d << " seed " << seed();
        }
    }
}

}  // namespace
