// Every VC-1 interpolation and range-mapping kernel against its scalar rule.
//
// Interpolation kernels run at their fixed position with both rounding
// controls, on random samples (a third of the draws only near 0 and 255),
// and on planes of 0 and 255 alone; the source and destination origins sweep
// every alignment, the steps are tight, odd, wide and negative, and the
// destination carries guard bands.  A second run of each vector kernel on a
// source whose samples outside the area the filter may read are different
// must give the same block: the kernels read only what they may.
#include <gtest/gtest.h>

#include <vector>

#include "check/harness.h"
#include "vc1/vc1interp.h"

namespace {

using namespace zan;
using namespace zan::check;
using vc1interp::InterpFn;

const vc1interp::Kernels& kernels() { return for_path(u8::vc1interp::kernels, n8::vc1interp::kernels); }

// The area an interpolation kernel may read: columns and rows before and
// after the block, in bytes and rows.
struct Reach {
    Zan32s left, right, top, bottom;
};
Reach bicubic_reach(Zan32s param) {
    const bool x = (param >> 2) != 0, y = (param & 3) != 0;
    return {x ? 1 : 0, x ? 2 : 0, y ? 1 : 0, y ? 2 : 0};
}
Reach bilinear_reach(Zan32s param, Zan32s neighbour) {
    return {0, (param >> 2) != 0 ? neighbour : 0, 0, (param & 3) != 0 ? 1 : 0};
}

// Gives `to` the bytes of `from` (same layout) at the same distances from
// the origin, guards included.
void clone(Region& to, Region& from) {
    auto& t = to.storage();
    auto& f = from.storage();
    const ptrdiff_t shift = (to.origin() - t.data()) - (from.origin() - f.data());
    for (ptrdiff_t i = 0; i < static_cast<ptrdiff_t>(t.size()); ++i) {
        const ptrdiff_t j = i - shift;
        t[static_cast<size_t>(i)] = j >= 0 && j < static_cast<ptrdiff_t>(f.size()) ? f[static_cast<size_t>(j)] : 0;
    }
}

// Copies the area [x0, x0 + w) x [y0, y0 + h) of a's rows into b's.
void copy_area(Region& a, Region& b, Zan32s w, Zan32s h) {
    for (Zan32s y = 0; y < h; ++y)
        std::memcpy(b.origin() + static_cast<ptrdiff_t>(b.step()) * y, a.origin() + static_cast<ptrdiff_t>(a.step()) * y,
                    static_cast<size_t>(w));
}

void check_interp(KernelList<InterpFn> list, Reach (*reach)(const KernelPair<InterpFn>&), const char* what) {
    ASSERT_FALSE(list.empty()) << what;
    Rng rng(0x7631 + static_cast<std::uint64_t>(list.size()));
    const int n = draws();
    for (const auto& e : list) {
        const Reach r = reach(e);
        const Zan32s areaW = e.width + r.left + r.right, areaH = e.height + r.top + r.bottom;
        const auto srcSteps = steps_for(areaW);
        const auto dstSteps = steps_for(e.width);
        for (int draw = 0; draw < n; ++draw) {
            const Zan32s ss = srcSteps[static_cast<size_t>(draw) % srcSteps.size()];
            const Zan32s ds = dstSteps[static_cast<size_t>(draw / 3) % dstSteps.size()];
            const Zan32s sa = draw % 64, da = (draw * 7) % 64;
            const Zan32s rc = draw & 1;
            Region src(areaW, areaH, ss, sa), other(areaW, areaH, ss, sa);
            Region want(e.width, e.height, ds, da), got(e.width, e.height, ds, da), got2(e.width, e.height, ds, da);
            src.fill(rng);
            if (draw % 8 == 5)  // only the extremes
                for (auto& b : src.storage()) b = (rng.next() & 1) ? 255 : 0;
            other.fill(rng);
            copy_area(src, other, areaW, areaH);
            want.fill(rng);
            clone(got, want);
            clone(got2, want);
            const ptrdiff_t at = static_cast<ptrdiff_t>(ss) * r.top + r.left;
            e.rule(src.origin() + at, ss, want.origin(), ds, rc);
            e.simd(src.origin() + at, ss, got.origin(), ds, rc);
            ASSERT_TRUE(got.same_as(want)) << what << " " << e.name << " draw " << draw << " rc " << rc << " steps "
                                           << ss << "/" << ds << " align " << sa << "/" << da << " seed " << seed();
            e.simd(other.origin() + at, ss, got2.origin(), ds, rc);
            ASSERT_TRUE(got2.same_as(want)) << what << " " << e.name << " reads outside its area, draw " << draw
                                            << " seed " << seed();
        }
    }
}

TEST(CheckVc1interp, BicubicKernelsEqualTheRule) {
    check_interp(kernels().bicubic, [](const KernelPair<InterpFn>& e) { return bicubic_reach(e.param); }, "bicubic");
    EXPECT_EQ(kernels().bicubic.size(), 45u);
}

TEST(CheckVc1interp, BilinearKernelsEqualTheRule) {
    check_interp(kernels().bilinear, [](const KernelPair<InterpFn>& e) { return bilinear_reach(e.param, 1); },
                 "bilinear");
    EXPECT_EQ(kernels().bilinear.size(), 48u);
}

TEST(CheckVc1interp, InterleavedBilinearKernelsEqualTheRule) {
    check_interp(kernels().bilinearC2, [](const KernelPair<InterpFn>& e) { return bilinear_reach(e.param, 2); },
                 "bilinear C2");
    EXPECT_EQ(kernels().bilinearC2.size(), 48u);
}

TEST(CheckVc1interp, RangeMapKernelEqualsTheRule) {
    Rng rng(0x524D);
    const int n = draws();
    for (const auto& e : kernels().rangeMap) {
        for (int draw = 0; draw < n; ++draw) {
            const Zan32s w = 8 * rng.range(1, 6), h = rng.range(1, 5), k = draw % 8;
            const auto steps = steps_for(w);
            const Zan32s ss = steps[static_cast<size_t>(draw) % steps.size()];
            const Zan32s ds = steps[static_cast<size_t>(draw / 4) % steps.size()];
            Region src(w, h, ss, draw % 64), want(w, h, ds, (draw * 5) % 64), got(w, h, ds, (draw * 5) % 64);
            src.fill(rng);
            want.fill(rng);
            clone(got, want);
            e.rule(src.origin(), ss, want.origin(), ds, {w, h}, k);
            e.simd(src.origin(), ss, got.origin(), ds, {w, h}, k);
            ASSERT_TRUE(got.same_as(want)) << e.name << " " << w << "x" << h << " k " << k << " steps " << ss << "/"
                                           << ds << " seed " << seed();
        }
        // In place, every input value, every k.
        for (Zan32s k = 0; k < 8; ++k) {
            Region a(256, 1, 256, 0), b(256, 1, 256, 0);
            for (int i = 0; i < 256; ++i) a.origin()[i] = b.origin()[i] = static_cast<Zan8u>(i);
            e.rule(a.origin(), 256, a.origin(), 256, {256, 1}, k);
            e.simd(b.origin(), 256, b.origin(), 256, {256, 1}, k);
            ASSERT_TRUE(a.same_as(b)) << e.name << " in place k " << k;
        }
    }
}

}  // namespace
