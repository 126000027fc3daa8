// The support kernels of the active path against plain rules: copy and fill
// against memcpy and memset, the median and the lowpass filter against
// their per-sample rules.  Every destination sits between guard bytes that
// must come back untouched.
#include <gtest/gtest.h>

#include <vector>

#include "check/harness.h"
#include "check/support_paths.h"
#include "support/support.h"
#include "zancore.h"

namespace {

using namespace zan;
using namespace zan::check;

const SupportPath& active() { return for_path(kSupportPaths[0], kSupportPaths[1]); }

constexpr Zan8u kGuard = 0xA5;

// A row of `length` bytes at offset `align` from a 64-byte boundary, with
// 64 guard bytes on each side.
struct Row {
    std::vector<Zan8u> bytes;
    Zan8u* at;
    std::ptrdiff_t length;
    Row(std::ptrdiff_t n, int align) : bytes(static_cast<size_t>(n) + 64 * 4, kGuard), length(n) {
        auto base = reinterpret_cast<std::uintptr_t>(bytes.data()) + 64;
        at = reinterpret_cast<Zan8u*>(((base + 63) & ~std::uintptr_t{63}) + static_cast<std::uintptr_t>(align));
    }
    // The same bytes, guards included.
    bool operator==(const Row& o) const {
        return length == o.length && std::memcmp(at - 64, o.at - 64, static_cast<size_t>(length) + 128) == 0;
    }
};

// Each row kernel in its three forms: the run with ordinary stores, the run
// with non-temporal stores, and the kernel entry that decides and fences.
enum Mode { kPlainStores, kStreamStores, kDeciding };
constexpr Mode kModes[] = {kPlainStores, kStreamStores, kDeciding};

void copy_as(Mode m, const Zan8u* s, Zan8u* d, std::ptrdiff_t n) {
    if (m == kDeciding) active().copy(s, d, n);
    else active().copy_run(s, d, n, m == kStreamStores);
}
void fill_as(Mode m, Zan8u v, Zan8u* d, std::ptrdiff_t n) {
    if (m == kDeciding) active().fill(v, d, n, true);
    else active().fill_run(v, d, n, m == kStreamStores);
}

// One copy and one fill of n bytes at the given alignments, against memcpy
// and memset, guards included.
void check_row(Rng& rng, std::ptrdiff_t n, int srcAlign, int dstAlign, Mode m) {
    Row src(n, srcAlign), want(n, dstAlign), got(n, dstAlign);
    rng.fill(src.at, static_cast<size_t>(n));
    std::memcpy(want.at, src.at, static_cast<size_t>(n));
    copy_as(m, src.at, got.at, n);
    ASSERT_TRUE(want == got) << "copy of " << n << " bytes, align " << srcAlign << "/" << dstAlign
                                         << " mode " << m << " seed " << seed();
    Zan8u v = static_cast<Zan8u>(rng.next());
    std::memset(want.at, v, static_cast<size_t>(n));
    fill_as(m, v, got.at, n);
    ASSERT_TRUE(want == got) << "fill of " << n << " bytes, align " << dstAlign << " mode " << m
                                         << " seed " << seed();
}

TEST(CheckSupport, CopyAndFillShortRowsAtEveryAlignment) {
    Rng rng(101);
    for (std::ptrdiff_t n = 0; n <= 300; ++n)
        for (int sa = 0; sa < 16; ++sa)
            for (int da = 0; da < 16; ++da)
                for (Mode m : kModes) {
                    check_row(rng, n, sa, da, m);
                    if (HasFatalFailure()) return;
                }
}

TEST(CheckSupport, CopyAndFillLongRows) {
    Rng rng(102);
    std::vector<std::ptrdiff_t> lengths = {131071, 131072, 131073, 262144 + 5, (1 << 20) + 7};
    // Around the lengths where the copy would switch to non-temporal stores
    // on a processor that names its cache through leaf 2.
    if (Zan32s cache = active().leaf2_cache(); cache > 0)
        for (std::ptrdiff_t n : {std::ptrdiff_t{cache} / 2, std::ptrdiff_t{cache} / 2 + 1, std::ptrdiff_t{cache} + 33})
            lengths.push_back(n);
    for (std::ptrdiff_t n : lengths)
        for (int a : {0, 1, 15, 8})
            for (Mode m : kModes) {
                check_row(rng, n, (a * 5 + 3) % 16, a, m);
                if (HasFatalFailure()) return;
            }
}

// Row steps for a region `width` bytes wide: as steps_for, plus zero.
std::vector<Zan32s> region_steps(Zan32s width) {
    auto s = steps_for(width);
    s.push_back(0);
    return s;
}

std::vector<Zan32s> widths_to_check() {
    std::vector<Zan32s> w;
    for (Zan32s i = 1; i <= 70; ++i) w.push_back(i);
    for (Zan32s i : {127, 128, 129, 1000, 4099}) w.push_back(i);
    return w;
}

TEST(CheckSupport, CopyAndSetRegions) {
    Rng rng(103);
    for (Zan32s w : widths_to_check()) {
        auto steps = region_steps(w);
        for (int d = 0; d < 24; ++d) {
            Zan32s h = 1 + d % 5;
            Zan32s ss = steps[static_cast<size_t>(d) % steps.size()];
            Zan32s ds = steps[static_cast<size_t>(d / 2 + 1) % steps.size()];
            if (d % 6 == 0) ss = ds = w;  // rows end to end
            Zan32s sa = d % 16, da = (d * 7 + 3) % 16;
            Region src(w, h, ss, sa), want(w, h, ds, da), got(w, h, ds, da);
            src.fill(rng);
            want.set(kGuard);
            got.set(kGuard);
            for (Zan32s y = 0; y < h; ++y)
                std::memcpy(want.origin() + std::ptrdiff_t{ds} * y, src.origin() + std::ptrdiff_t{ss} * y,
                            static_cast<size_t>(w));
            ASSERT_EQ(active().copy_region(src.origin(), ss, got.origin(), ds, {w, h}), zanStsOk);
            ASSERT_TRUE(want.same_as(got)) << "copy " << w << "x" << h << " steps " << ss << "/" << ds
                                           << " align " << sa << "/" << da << " seed " << seed();

            Zan8u v = static_cast<Zan8u>(rng.next());
            for (Zan32s y = 0; y < h; ++y)
                std::memset(want.origin() + std::ptrdiff_t{ds} * y, v, static_cast<size_t>(w));
            ASSERT_EQ(active().set_region(v, got.origin(), ds, {w, h}), zanStsOk);
            ASSERT_TRUE(want.same_as(got)) << "set " << w << "x" << h << " step " << ds << " align " << da
                                           << " seed " << seed();
        }
    }
}

// Regions past the sizes at which the copy asks for the cache (128 KiB) and
// the fill asks for it (512 KiB), and past the fill's cache size where that
// is small enough to try here.
TEST(CheckSupport, LargeRegions) {
    Rng rng(104);
    std::vector<ZaniSize> sizes = {{1024, 129}, {1024, 513}, {4096, 300}, {333, 1601}};
    Zan32s cache = 0;
    if (zanGetMaxCacheSizeB(&cache) == zanStsOk && cache <= (64 << 20)) sizes.push_back({4096, cache / 4096 + 2});
    for (ZaniSize sz : sizes)
        for (Zan32s extra : {0, 48, -1}) {
            // extra -1: a negative step one multiple of 16 wider than the region.
            Zan32s step = extra < 0 ? -((sz.width + 31) & ~15) : sz.width + extra;
            Region src(sz.width, sz.height, step, 5), want(sz.width, sz.height, step, 9), got(sz.width, sz.height, step, 9);
            src.fill(rng);
            want.set(kGuard);
            got.set(kGuard);
            for (Zan32s y = 0; y < sz.height; ++y)
                std::memcpy(want.origin() + std::ptrdiff_t{step} * y, src.origin() + std::ptrdiff_t{step} * y,
                            static_cast<size_t>(sz.width));
            ASSERT_EQ(active().copy_region(src.origin(), step, got.origin(), step, sz), zanStsOk);
            ASSERT_TRUE(want.same_as(got)) << "copy " << sz.width << "x" << sz.height << " step " << step;
            for (Zan32s y = 0; y < sz.height; ++y)
                std::memset(want.origin() + std::ptrdiff_t{step} * y, 0x3E, static_cast<size_t>(sz.width));
            ASSERT_EQ(active().set_region(0x3E, got.origin(), step, sz), zanStsOk);
            ASSERT_TRUE(want.same_as(got)) << "set " << sz.width << "x" << sz.height << " step " << step;
        }
}

// Every pointer at every offset from a 16-byte boundary: the destination's
// alignment runs through 0..15 with the sources sharing it (aligned loads)
// and then with the sources anywhere.
TEST(CheckSupport, MedianOfThreePlanes) {
    Rng rng(105);
    for (Zan32s w : widths_to_check()) {
        auto steps = steps_for(w);
        for (int d = 0; d < 48; ++d) {
            Zan32s h = 1 + d % 3;
            Zan32s ss = steps[static_cast<size_t>(d) % steps.size()];
            Zan32s ds = steps[static_cast<size_t>(d / 3 + 1) % steps.size()];
            Zan32s da = d % 16;
            Zan32s sa[3];
            for (Zan32s& a : sa) a = d < 16 ? da : static_cast<Zan32s>(rng.below(16));
            Region p0(w, h, ss, sa[0]), p1(w, h, ss, sa[1]), p2(w, h, ss, sa[2]);
            Region want(w, h, ds, da), got(w, h, ds, da);
            for (Region* p : {&p0, &p1, &p2}) p->fill(rng);
            if (d % 5 == 0) p2.set(p0.storage()[7]);  // ties between planes
            want.set(kGuard);
            got.set(kGuard);
            const Zan8u* planes[3] = {p0.origin(), p1.origin(), p2.origin()};
            active().median_rule(planes, ss, want.origin(), ds, {w, h});
            ASSERT_EQ(active().median(planes, ss, got.origin(), ds, {w, h}), zanStsOk);
            ASSERT_TRUE(want.same_as(got)) << "median " << w << "x" << h << " steps " << ss << "/" << ds
                                           << " align " << sa[0] << "," << sa[1] << "," << sa[2] << "/" << da
                                           << " seed " << seed();
        }
    }
}

// The source pointer (inside its margin) and the destination each run
// through all sixteen offsets from a 16-byte boundary.
TEST(CheckSupport, LowpassFilter) {
    Rng rng(106);
    for (Zan32s mask : {kMask3x3, kMask5x5}) {
        const Zan32s r = mask == kMask3x3 ? 1 : 2;
        for (Zan32s w : widths_to_check()) {
            const Zan32s sw = w + 2 * r;
            const Zan32s srcSteps[] = {sw, ((sw + 15) & ~15) + 16, sw + 3};
            const Zan32s dstSteps[] = {w, ((w + 15) & ~15) + 16, w + 5};
            for (int d = 0; d < 16; ++d) {
                Zan32s h = 1 + (d * 5) % 7;
                Zan32s ss = srcSteps[d % 3], ds = dstSteps[(d / 3) % 3];
                Zan32s srcAlign = d, dstAlign = (d * 7 + 5) % 16;
                // Region origin offset that puts the filter's pSrc at srcAlign.
                Zan32s regionAlign = ((srcAlign - r * ss - r) % 16 + 16) % 16;
                Region src(sw, h + 2 * r, ss, regionAlign), want(w, h, ds, dstAlign), got(w, h, ds, dstAlign);
                src.fill(rng);
                if (d % 7 == 3) src.set(255);  // the largest window sums
                want.set(kGuard);
                got.set(kGuard);
                const Zan8u* p = src.origin() + std::ptrdiff_t{ss} * r + r;
                active().lowpass_rule(p, ss, want.origin(), ds, {w, h}, mask);
                ASSERT_EQ(active().lowpass(p, ss, got.origin(), ds, {w, h}, mask), zanStsOk);
                ASSERT_TRUE(want.same_as(got)) << "lowpass " << mask << " " << w << "x" << h << " steps " << ss << "/"
                                               << ds << " align " << srcAlign << "/" << dstAlign << " seed " << seed();
            }
        }
    }
}

}  // namespace
