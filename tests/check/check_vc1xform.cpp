// Every VC-1 transform and quantiser kernel against its scalar rule.
//
// Inputs: random coefficients over all 16 bits (extremes favoured, which
// drives every saturation), coefficients in the codec's 12-bit range,
// coefficients made by forward-transforming random residuals, and sparse
// blocks; the reach argument of the inverse transforms sweeps the DC case,
// both column spans and the full block.  Outputs are compared byte for byte
// with guard bands, at every even alignment and with tight, wide, odd and
// negative steps, out of place and in place.
#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "check/harness.h"
#include "vc1/vc1xform.h"

namespace {

using namespace zan;
using namespace zan::check;
using zan::vc1xform::kMaxQuant;
using zan::vc1xform::kMinQuant;

const vc1xform::TransformKernels& transforms() {
    return for_path(u8::vc1xform::transform_kernels, n8::vc1xform::transform_kernels);
}
const vc1xform::QuantKernels& quants() { return for_path(u8::vc1xform::quant_kernels, n8::vc1xform::quant_kernels); }

struct Layout {
    Zan32s srcAlign, dstAlign, srcStep, dstStep;
};
Layout layout(int draw, Zan32s widthBytes) {
    auto s = steps_for(widthBytes, 2);
    return {(draw % 32) * 2, ((draw / 32) % 32) * 2, s[static_cast<size_t>(draw) % s.size()],
            s[static_cast<size_t>(draw / 5) % s.size()]};
}

#define WHERE(e, d, l)                                                                            \
    (e).name << " draw " << (d) << " align " << (l).srcAlign << "/" << (l).dstAlign << " steps " \
             << (l).srcStep << "/" << (l).dstStep << " seed " << seed()

// Copies one region's bytes, guards included, into another of the same
// layout: the same bytes at the same distance from the origin.
void copy_region(Region& to, Region& from) {
    auto& t = to.storage();
    auto& f = from.storage();
    const ptrdiff_t shift = (to.origin() - t.data()) - (from.origin() - f.data());
    for (ptrdiff_t i = 0; i < static_cast<ptrdiff_t>(t.size()); ++i) {
        const ptrdiff_t j = i - shift;
        t[static_cast<size_t>(i)] = j >= 0 && j < static_cast<ptrdiff_t>(f.size()) ? f[static_cast<size_t>(j)] : 0;
    }
}

// A block of coefficients of one of the input kinds, written into region r.
void make_coefficients(Rng& rng, Region& r, Zan32s w, Zan32s h, int kind, const vc1xform::TransformKernels& t) {
    auto* p = r.as<Zan16s>();
    const Zan32s step = r.step();
    auto put = [&](Zan32s x, Zan32s y, Zan32s v) {
        Zan16s s = static_cast<Zan16s>(v);
        std::memcpy(reinterpret_cast<Zan8u*>(p) + static_cast<ptrdiff_t>(step) * y + 2 * x, &s, 2);
    };
    r.fill16(rng, -32768, 32767);  // guards and, for kind 0, the block
    switch (kind) {
        case 0:
            break;
        case 1:  // the codec's coefficient range
            for (Zan32s y = 0; y < h; ++y)
                for (Zan32s x = 0; x < w; ++x) put(x, y, rng.range(-2048, 2047));
            break;
        case 2: {  // forward transform of random residuals
            std::array<Zan16s, 64> res{}, coef{};
            const Zan32s lim = rng.below(2) ? 255 : 511;
            for (auto& v : res) v = static_cast<Zan16s>(rng.range(-lim, lim));
            for (const auto& f : t.fwd)
                if (f.width == w && f.height == h) f.rule(res.data(), 2 * w, coef.data(), 2 * w);
            for (Zan32s y = 0; y < h; ++y)
                for (Zan32s x = 0; x < w; ++x) put(x, y, coef[static_cast<size_t>(y * w + x)]);
            break;
        }
        default: {  // sparse: a few coefficients in a corner, the rest zero
            const Zan32s cw = rng.range(1, w), ch = rng.range(1, h);
            for (Zan32s y = 0; y < h; ++y)
                for (Zan32s x = 0; x < w; ++x)
                    put(x, y, x < cw && y < ch && rng.below(2) ? rng.range(-4096, 4095) : 0);
            break;
        }
    }
}

TEST(CheckVc1xform, InverseTransforms) {
    Rng rng(91);
    const auto& t = transforms();
    for (const auto& e : t.inv)
        for (int d = 0; d < draws(); ++d) {
            Layout l = layout(d, 2 * e.width);
            Region src(2 * e.width, e.height, l.srcStep, l.srcAlign);
            make_coefficients(rng, src, e.width, e.height, d % 4, t);
            // The reach sweeps DC only, both spans and beyond the block.
            ZaniSize nz{rng.range(-1, 9), rng.range(-1, 9)};
            if (d % 3 == 0) nz = {e.width, e.height};
            Region want(2 * e.width, e.height, l.dstStep, l.dstAlign), got(2 * e.width, e.height, l.dstStep, l.dstAlign);
            want.fill(rng);
            copy_region(got, want);
            Region before(2 * e.width, e.height, l.srcStep, l.srcAlign);
            copy_region(before, src);
            e.rule(src.as<Zan16s>(), l.srcStep, want.as<Zan16s>(), l.dstStep, nz);
            e.simd(src.as<Zan16s>(), l.srcStep, got.as<Zan16s>(), l.dstStep, nz);
            ASSERT_TRUE(want.same_as(got)) << WHERE(e, d, l) << " nz " << nz.width << "x" << nz.height;
            ASSERT_TRUE(src.same_as(before)) << WHERE(e, d, l) << ": source changed";
            // In place: the source region itself is the destination.
            Region a(2 * e.width, e.height, l.srcStep, l.srcAlign), b(2 * e.width, e.height, l.srcStep, l.srcAlign);
            copy_region(a, src);
            copy_region(b, src);
            e.rule(a.as<Zan16s>(), l.srcStep, a.as<Zan16s>(), l.srcStep, nz);
            e.simd(b.as<Zan16s>(), l.srcStep, b.as<Zan16s>(), l.srcStep, nz);
            ASSERT_TRUE(a.same_as(b)) << WHERE(e, d, l) << " in place, nz " << nz.width << "x" << nz.height;
        }
}

TEST(CheckVc1xform, ForwardTransforms) {
    Rng rng(92);
    for (const auto& e : transforms().fwd)
        for (int d = 0; d < draws(); ++d) {
            Layout l = layout(d, 2 * e.width);
            Region src(2 * e.width, e.height, l.srcStep, l.srcAlign);
            // Residuals of 8 and 9 bits, and all 16 bits (saturating passes).
            const Zan32s lim = d % 3 == 0 ? 255 : d % 3 == 1 ? 511 : 32767;
            src.fill16(rng, -lim - 1, lim);
            Region want(2 * e.width, e.height, l.dstStep, l.dstAlign), got(2 * e.width, e.height, l.dstStep, l.dstAlign);
            want.fill(rng);
            copy_region(got, want);
            e.rule(src.as<Zan16s>(), l.srcStep, want.as<Zan16s>(), l.dstStep);
            e.simd(src.as<Zan16s>(), l.srcStep, got.as<Zan16s>(), l.dstStep);
            ASSERT_TRUE(want.same_as(got)) << WHERE(e, d, l);
            Region a(2 * e.width, e.height, l.srcStep, l.srcAlign), b(2 * e.width, e.height, l.srcStep, l.srcAlign);
            copy_region(a, src);
            copy_region(b, src);
            e.rule(a.as<Zan16s>(), l.srcStep, a.as<Zan16s>(), l.srcStep);
            e.simd(b.as<Zan16s>(), l.srcStep, b.as<Zan16s>(), l.srcStep);
            ASSERT_TRUE(a.same_as(b)) << WHERE(e, d, l) << " in place";
        }
}

// Every doubleQuant of the kernel's kind, each with several blocks.
TEST(CheckVc1xform, Quantisers) {
    Rng rng(93);
    for (const auto& e : quants().quant) {
        const Zan32s kind = e.param & 3;
        std::vector<Zan32s> ds;
        for (Zan32s q = kMinQuant; q <= kMaxQuant; ++q)
            if (vc1xform::reciprocal(q).kind == kind) ds.push_back(q);
        ASSERT_FALSE(ds.empty()) << e.name;
        const int n = std::max<int>(draws(), 4 * static_cast<int>(ds.size()));
        for (int d = 0; d < n; ++d) {
            const Zan32s q = ds[static_cast<size_t>(d) % ds.size()];
            Layout l = layout(d, 2 * e.width);
            Region a(2 * e.width, e.height, l.srcStep, l.srcAlign);
            // All 16 bits, and small values near the dead zone of the
            // non-uniform forms.
            if (d % 2)
                a.fill16(rng, -32768, 32767);
            else
                a.fill16(rng, -3 * q, 3 * q);
            Region b(2 * e.width, e.height, l.srcStep, l.srcAlign);
            copy_region(b, a);
            e.rule(a.as<Zan16s>(), l.srcStep, q);
            e.simd(b.as<Zan16s>(), l.srcStep, q);
            ASSERT_TRUE(a.same_as(b)) << WHERE(e, d, l) << " doubleQuant " << q;
        }
    }
}

TEST(CheckVc1xform, InverseQuantisers) {
    Rng rng(94);
    for (const auto& e : quants().quantInv)
        for (int d = 0; d < draws(); ++d) {
            // Legal values, and any 32-bit value (the inverse does not check it).
            const Zan32s q = d % 4 == 3 ? static_cast<Zan32s>(rng.next()) : rng.range(kMinQuant, kMaxQuant);
            Layout l = layout(d, 2 * e.width);
            Region src(2 * e.width, e.height, l.srcStep, l.srcAlign);
            if (d % 3 == 0) {
                src.fill16(rng, -32768, 32767);
            } else {
                // Sparse levels, so that the reach varies.
                src.fill16(rng, -64, 64);
                const Zan32s cw = rng.range(0, e.width), ch = rng.range(0, e.height);
                for (Zan32s y = 0; y < e.height; ++y)
                    for (Zan32s x = 0; x < e.width; ++x)
                        if (x >= cw || y >= ch || rng.below(3) == 0) {
                            Zan16s z = 0;
                            std::memcpy(src.origin() + static_cast<ptrdiff_t>(l.srcStep) * y + 2 * x, &z, 2);
                        }
            }
            Region want(2 * e.width, e.height, l.dstStep, l.dstAlign), got(2 * e.width, e.height, l.dstStep, l.dstAlign);
            want.fill(rng);
            copy_region(got, want);
            ZaniSize rw = e.rule(src.as<Zan16s>(), l.srcStep, want.as<Zan16s>(), l.dstStep, q);
            ZaniSize rg = e.simd(src.as<Zan16s>(), l.srcStep, got.as<Zan16s>(), l.dstStep, q);
            ASSERT_TRUE(want.same_as(got)) << WHERE(e, d, l) << " doubleQuant " << q;
            ASSERT_EQ(rw.width, rg.width) << WHERE(e, d, l);
            ASSERT_EQ(rw.height, rg.height) << WHERE(e, d, l);
            ASSERT_TRUE(rw.width >= 0 && rw.width <= e.width && rw.height >= 0 && rw.height <= e.height);
            Region a(2 * e.width, e.height, l.srcStep, l.srcAlign), b(2 * e.width, e.height, l.srcStep, l.srcAlign);
            copy_region(a, src);
            copy_region(b, src);
            rw = e.rule(a.as<Zan16s>(), l.srcStep, a.as<Zan16s>(), l.srcStep, q);
            rg = e.simd(b.as<Zan16s>(), l.srcStep, b.as<Zan16s>(), l.srcStep, q);
            ASSERT_TRUE(a.same_as(b)) << WHERE(e, d, l) << " in place, doubleQuant " << q;
            ASSERT_EQ(rw.width, rg.width) << WHERE(e, d, l) << " in place";
            ASSERT_EQ(rw.height, rg.height) << WHERE(e, d, l) << " in place";
        }
}

}  // namespace
