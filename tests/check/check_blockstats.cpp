// Every block-statistics vector kernel against its scalar rule.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "blocks/blockstats.h"
#include "check/harness.h"

namespace {

using namespace zan;
using namespace zan::check;

const blockstats::TransformKernels& transforms() {
    return for_path(u8::blockstats::transform_kernels, n8::blockstats::transform_kernels);
}
const blockstats::VarianceKernels& variances() {
    return for_path(u8::blockstats::variance_kernels, n8::blockstats::variance_kernels);
}
const blockstats::MiscKernels& misc() { return for_path(u8::blockstats::misc_kernels, n8::blockstats::misc_kernels); }

// Alignment and step of the k-th input of one draw: alignments cycle through
// 0..15 (even for 16-bit samples), steps through tight, odd, wide, negative.
struct Place {
    Zan32s align, step;
};
Place place(int draw, int k, Zan32s widthBytes, Zan32s elem) {
    auto steps = steps_for(widthBytes, elem);
    Zan32s align = (draw * (k + 1) + 5 * k) % 16;
    if (elem == 2) align &= ~1;
    return {align, steps[static_cast<size_t>(draw / (k + 1) + k) % steps.size()]};
}

#define WHERE(e, d) (e).name << " draw " << (d) << " seed " << seed()

// Output arrays with guard values on both sides.
template <class T, size_t N>
struct Guarded {
    std::array<T, N + 16> a;
    explicit Guarded(T fill) { a.fill(fill); }
    T* out() { return a.data() + 8; }
    bool operator==(const Guarded& o) const { return a == o.a; }
};

// Fills 8-bit samples by the draw's flavour: extremes (saturation), a narrow
// band (exact sums), smooth ramps with a little noise (few edges), or flat.
void fill8(Region& r, Rng& rng, int flavour) {
    auto& s = r.storage();
    switch (flavour % 4) {
        case 0: r.fill(rng); break;
        case 1: {
            Zan32s base = rng.range(0, 200);
            for (auto& v : s) v = static_cast<Zan8u>(base + rng.range(0, 55));
            break;
        }
        case 2: {
            Zan32s slope = rng.range(0, 7), noise = rng.range(1, 12);
            for (size_t i = 0; i < s.size(); ++i) s[i] = static_cast<Zan8u>(i * slope / 7 + rng.range(0, noise));
            break;
        }
        default: r.set(static_cast<Zan8u>(rng.range(0, 255)));
    }
}

// ---------------------------------------------------------------- transforms

TEST(CheckBlockstats, TransformedDifferences8u) {
    Rng rng(101);
    for (const auto& e : transforms().satd)
        for (int d = 0; d < draws(); ++d) {
            Place a = place(d, 0, e.width, 1), b = place(d, 1, e.width, 1);
            Region r1(e.width, e.height, a.step, a.align), r2(e.width, e.height, b.step, b.align);
            fill8(r1, rng, d);
            fill8(r2, rng, d / 4);
            if (d % 11 == 0) {  // one block white, the other black: the largest differences
                r1.set(255);
                r2.set(0);
            }
            Zan32s want = e.rule(r1.origin(), a.step, r2.origin(), b.step);
            Zan32s got = e.simd(r1.origin(), a.step, r2.origin(), b.step);
            ASSERT_EQ(want, got) << WHERE(e, d);
        }
}

TEST(CheckBlockstats, TransformedDifferences16u) {
    Rng rng(102);
    for (const auto& e : transforms().satd16)
        for (int d = 0; d < draws(); ++d) {
            Place a = place(d, 0, 16, 2), b = place(d, 1, 16, 2);
            Region r1(16, 8, a.step, a.align), r2(16, 8, b.step, b.align);
            // 8-bit range, the defined range, all 16 bits: saturation at every stage.
            Zan32s hi = d % 3 == 0 ? 255 : d % 3 == 1 ? 32767 : 65535;
            r1.fill16(rng, 0, hi);
            r2.fill16(rng, 0, hi);
            Zan32s want = e.rule(r1.as<Zan16u>(), a.step, r2.as<Zan16u>(), b.step);
            Zan32s got = e.simd(r1.as<Zan16u>(), a.step, r2.as<Zan16u>(), b.step);
            ASSERT_EQ(want, got) << WHERE(e, d);
        }
}

TEST(CheckBlockstats, HadamardBlocks) {
    Rng rng(103);
    for (const auto& e : transforms().hadamard8)
        for (int d = 0; d < draws(); ++d) {
            Place a = place(d, 0, 8, 1);
            Region src(8, 8, a.step, a.align);
            fill8(src, rng, d);
            Guarded<Zan16s, 64> want(0x5A5A), got(0x5A5A);
            Zan32s sw = e.rule(src.origin(), a.step, want.out());
            Zan32s sg = e.simd(src.origin(), a.step, got.out());
            ASSERT_EQ(sw, sg) << WHERE(e, d);
            ASSERT_TRUE(want == got) << WHERE(e, d);
        }
    for (const auto& e : transforms().hadamard16)
        for (int d = 0; d < draws(); ++d) {
            Place a = place(d, 0, 16, 2);
            Region src(16, 8, a.step, a.align);
            // Small values (no saturation) and full 16-bit values.
            // Full 16-bit values (saturation at every stage) or small ones.
            if (d % 2) src.fill16(rng, 0, 65535);
            else src.fill16(rng, 0, 511);
            Guarded<Zan16s, 64> want(0x5A5A), got(0x5A5A);
            Zan32s sw = e.rule(src.as<Zan16s>(), a.step, want.out());
            Zan32s sg = e.simd(src.as<Zan16s>(), a.step, got.out());
            ASSERT_EQ(sw, sg) << WHERE(e, d);
            ASSERT_TRUE(want == got) << WHERE(e, d);
        }
}

// ------------------------------------------------ squared differences, variance

TEST(CheckBlockstats, SquaredDifferences) {
    Rng rng(104);
    for (const auto& e : variances().ssd)
        for (int d = 0; d < draws(); ++d) {
            Place a = place(d, 0, e.width, 1), b = place(d, 1, e.width + 1, 1);
            Region src(e.width, e.height, a.step, a.align), ref(e.width + 1, e.height + 1, b.step, b.align);
            fill8(src, rng, d);
            fill8(ref, rng, d + 1);
            Zan32s want = e.rule(src.origin(), a.step, ref.origin(), b.step);
            Zan32s got = e.simd(src.origin(), a.step, ref.origin(), b.step);
            ASSERT_EQ(want, got) << WHERE(e, d);
        }
    for (const auto& e : variances().sqrDiffB)
        for (int d = 0; d < draws() / 4 + 1; ++d) {
            Place a = place(d, 0, 16, 1), b = place(d, 1, 17, 1), c = place(d, 2, 17, 1);
            Region src(16, 16, a.step, a.align), r1(17, 17, b.step, b.align), r2(17, 17, c.step, c.align);
            fill8(src, rng, d);
            fill8(r1, rng, d + 1);
            fill8(r2, rng, d + 2);
            Zan32s want = e.rule(src.origin(), a.step, r1.origin(), b.step, r2.origin(), c.step);
            Zan32s got = e.simd(src.origin(), a.step, r1.origin(), b.step, r2.origin(), c.step);
            ASSERT_EQ(want, got) << WHERE(e, d);
        }
}

TEST(CheckBlockstats, BlockMetrics) {
    Rng rng(105);
    for (const auto& e : variances().block)
        for (int d = 0; d < draws(); ++d) {
            Place a = place(d, 0, e.width, 1);
            Region src(e.width, e.height, a.step, a.align);
            fill8(src, rng, d);
            ASSERT_EQ(e.rule(src.origin(), a.step), e.simd(src.origin(), a.step)) << WHERE(e, d);
        }
}

TEST(CheckBlockstats, VarianceAndSum) {
    Rng rng(106);
    for (const auto& e : variances().varSum8)
        for (int d = 0; d < draws(); ++d) {
            Place a = place(d, 0, 8, 1);
            Region src(8, 8, a.step, a.align);
            fill8(src, rng, d);
            Guarded<Zan32s, 2> want(-9), got(-9);
            e.rule(src.origin(), a.step, want.out(), want.out() + 1);
            e.simd(src.origin(), a.step, got.out(), got.out() + 1);
            ASSERT_TRUE(want == got) << WHERE(e, d) << ": var " << want.out()[0] << "/" << got.out()[0];
        }
    for (const auto& e : variances().varSum16)
        for (int d = 0; d < draws(); ++d) {
            Place a = place(d, 0, 16, 2);
            Region src(16, 8, a.step, a.align);
            // Residual-sized values, and full-range ones whose squares wrap.
            if (d % 2) src.fill16(rng, 0, 65535);
            else {
                src.fill16(rng, 0, 1023);
                auto* p = reinterpret_cast<Zan16s*>(src.storage().data());
                for (size_t i = 0; i < src.storage().size() / 2; ++i) p[i] = static_cast<Zan16s>(p[i] - 512);
            }
            Guarded<Zan32s, 2> want(-9), got(-9);
            e.rule(src.as<Zan16s>(), a.step, want.out(), want.out() + 1);
            e.simd(src.as<Zan16s>(), a.step, got.out(), got.out() + 1);
            ASSERT_TRUE(want == got) << WHERE(e, d) << ": var " << want.out()[0] << "/" << got.out()[0];
        }
}

TEST(CheckBlockstats, VarianceOfDifference) {
    Rng rng(107);
    for (const auto& e : variances().varMeanDiff)
        for (int d = 0; d < draws(); ++d) {
            Place a = place(d, 0, 16, 1), b = place(d, 1, 17, 1);
            Region src(16, e.height, a.step, a.align), ref(17, e.height + 1, b.step, b.align);
            fill8(src, rng, d);
            fill8(ref, rng, d + 2);
            // The caller's sums: the true ones, near them, or anything at all.
            std::array<Zan32s, 4> sums{};
            for (int k = 0; k < 2 * (e.height / 8); ++k) {
                Zan32s s = 0;
                for (int y = 0; y < 8; ++y)
                    for (int x = 0; x < 8; ++x)
                        s += src.origin()[static_cast<ptrdiff_t>(a.step) * (8 * (k / 2) + y) + 8 * (k % 2) + x];
                sums[static_cast<size_t>(k)] = d % 3 == 0 ? s : d % 3 == 1 ? s + rng.range(-40, 40)
                                                                         : static_cast<Zan32s>(rng.next());
            }
            Guarded<Zan32s, 4> wv(-5), wm(-5), gv(-5), gm(-5);
            e.rule(src.origin(), a.step, ref.origin(), b.step, sums.data(), wv.out(), wm.out());
            e.simd(src.origin(), a.step, ref.origin(), b.step, sums.data(), gv.out(), gm.out());
            ASSERT_TRUE(wv == gv) << WHERE(e, d) << ": var " << wv.out()[0] << "/" << gv.out()[0];
            ASSERT_TRUE(wm == gm) << WHERE(e, d) << ": mean " << wm.out()[0] << "/" << gm.out()[0];
        }
}

// ------------------------------------------------------------ sums, edges, zeros

TEST(CheckBlockstats, SumsOfDifferences8u) {
    Rng rng(108);
    for (const auto& e : misc().sums8)
        for (int d = 0; d < draws(); ++d) {
            Place a = place(d, 0, e.width, 1), b = place(d, 1, e.width, 1);
            Region src(e.width, e.height, a.step, a.align), pred(e.width, e.height, b.step, b.align);
            fill8(src, rng, d);
            fill8(pred, rng, d / 2);
            Guarded<Zan16s, 16> ws(0x3C3C), gs(0x3C3C);
            Guarded<Zan16s, 256> wd(0x3C3C), gd(0x3C3C);
            e.rule(src.origin(), a.step, pred.origin(), b.step, ws.out(), wd.out());
            e.simd(src.origin(), a.step, pred.origin(), b.step, gs.out(), gd.out());
            ASSERT_TRUE(ws == gs) << WHERE(e, d);
            ASSERT_TRUE(wd == gd) << WHERE(e, d);
        }
}

TEST(CheckBlockstats, SumsOfDifferences16u) {
    Rng rng(109);
    for (const auto& e : misc().sums16)
        for (int d = 0; d < draws(); ++d) {
            Place a = place(d, 0, 2 * e.width, 2), b = place(d, 1, 2 * e.width, 2);
            Region src(2 * e.width, e.height, a.step, a.align), pred(2 * e.width, e.height, b.step, b.align);
            Zan32s hi = d % 2 ? 65535 : 1023;
            src.fill16(rng, 0, hi);
            pred.fill16(rng, 0, hi);
            Guarded<Zan32s, 16> ws(0x3C3C3C3C), gs(0x3C3C3C3C);
            Guarded<Zan16s, 256> wd(0x3C3C), gd(0x3C3C);
            e.rule(src.as<Zan16u>(), a.step, pred.as<Zan16u>(), b.step, ws.out(), wd.out());
            e.simd(src.as<Zan16u>(), a.step, pred.as<Zan16u>(), b.step, gs.out(), gd.out());
            ASSERT_TRUE(ws == gs) << WHERE(e, d);
            ASSERT_TRUE(wd == gd) << WHERE(e, d);
        }
}

TEST(CheckBlockstats, SumsOfDifferencesTwoChannels) {
    Rng rng(110);
    for (const auto& e : misc().sumsC2)
        for (int d = 0; d < draws(); ++d) {
            Place a = place(d, 0, 16, 1), b = place(d, 1, 8, 1), c = place(d, 2, 8, 1);
            Region src(16, 8, a.step, a.align), pu(8, 8, b.step, b.align), pv(8, 8, c.step, c.align);
            fill8(src, rng, d);
            fill8(pu, rng, d + 1);
            fill8(pv, rng, d + 3);
            Guarded<Zan16s, 4> wsu(7), gsu(7), wsv(7), gsv(7);
            Guarded<Zan16s, 64> wdu(7), gdu(7), wdv(7), gdv(7);
            e.rule(src.origin(), a.step, pu.origin(), b.step, pv.origin(), c.step, wsu.out(), wdu.out(), wsv.out(),
                   wdv.out());
            e.simd(src.origin(), a.step, pu.origin(), b.step, pv.origin(), c.step, gsu.out(), gdu.out(), gsv.out(),
                   gdv.out());
            ASSERT_TRUE(wsu == gsu && wsv == gsv) << WHERE(e, d);
            ASSERT_TRUE(wdu == gdu && wdv == gdv) << WHERE(e, d);
        }
}

TEST(CheckBlockstats, EdgeTest) {
    Rng rng(111);
    for (const auto& e : misc().edges8)
        for (int d = 0; d < draws(); ++d) {
            Place a = place(d, 0, 16, 1);
            if (e.param == 1) {  // the aligned kernel gets what it is chosen for
                a.align = 0;
                a.step = (d % 2 ? 1 : -1) * 16 * rng.range(1, 4);
            }
            Region src(16, 16, a.step, a.align);
            fill8(src, rng, d);
            // Thresholds around the data's differences and above 127; counts
            // around the number of edge samples.
            Zan32u diff = static_cast<Zan32u>(d % 5 == 0 ? rng.range(120, 300) : rng.range(0, 24));
            Zan32u count = static_cast<Zan32u>(d % 7 == 0 ? rng.range(200, 300) : rng.range(0, 225));
            ASSERT_EQ(e.rule(src.origin(), a.step, diff, count), e.simd(src.origin(), a.step, diff, count))
                << WHERE(e, d) << " diff " << diff << " count " << count;
        }
    for (const auto& e : misc().edges16)
        for (int d = 0; d < draws(); ++d) {
            Place a = place(d, 0, 32, 2);
            Region src(32, 16, a.step, a.align);
            Zan32s hi = d % 3 == 0 ? 65535 : d % 3 == 1 ? 255 : 40;
            src.fill16(rng, 0, hi);
            Zan32u diff = static_cast<Zan32u>(d % 3 == 0 ? rng.range(0, 65535) : rng.range(0, hi));
            Zan32u count = static_cast<Zan32u>(rng.range(0, 256));
            ASSERT_EQ(e.rule(src.as<Zan16u>(), a.step, diff, count), e.simd(src.as<Zan16u>(), a.step, diff, count))
                << WHERE(e, d) << " diff " << diff << " count " << count;
        }
}

TEST(CheckBlockstats, ZeroCount) {
    Rng rng(112);
    for (const auto& e : misc().countZeros)
        for (int d = 0; d < draws(); ++d) {
            std::array<Zan16s, 72> v;
            Zan32s keep = rng.range(0, 100);  // percentage of nonzero values
            for (auto& x : v) x = rng.range(0, 99) < keep ? static_cast<Zan16s>(rng.next() | 1) : 0;
            const Zan16s* p = v.data() + d % 8;
            ASSERT_EQ(e.rule(p), e.simd(p)) << WHERE(e, d);
        }
}

// ------------------------------------------------------------- reads in bounds

// A block of widthBytes x height at step, flush against an inaccessible page
// (after its last byte, or before its first), so that any read outside the
// block faults.
class Flush {
public:
    Flush(Zan32s widthBytes, Zan32s height, Zan32s step, bool atEnd) {
        page_ = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        size_t span = static_cast<size_t>(step < 0 ? -step : step) * static_cast<size_t>(height - 1) +
                      static_cast<size_t>(widthBytes);
        size_ = (span + page_ - 1) / page_ * page_ + 2 * page_;
        void* m = mmap(nullptr, size_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (m == MAP_FAILED) return;
        map_ = static_cast<Zan8u*>(m);
        Zan8u* rw = map_ + page_;
        size_t rwSize = size_ - 2 * page_;
        if (mprotect(rw, rwSize, PROT_READ | PROT_WRITE) != 0) return;
        for (size_t i = 0; i < rwSize; ++i) rw[i] = static_cast<Zan8u>(i * 37 + (i >> 7));
        Zan8u* low = atEnd ? rw + rwSize - span : rw;
        origin_ = step >= 0 ? low : low + static_cast<ptrdiff_t>(-step) * (height - 1);
    }
    ~Flush() {
        if (map_) munmap(map_, size_);
    }
    Flush(const Flush&) = delete;
    Flush& operator=(const Flush&) = delete;
    Zan8u* origin() const { return origin_; }
    template <class T> T* as() const { return reinterpret_cast<T*>(origin_); }

private:
    size_t page_ = 0, size_ = 0;
    Zan8u* map_ = nullptr;
    Zan8u* origin_ = nullptr;
};

// Every kernel reads its block (and the extra row and column of a half-sample
// reference) and nothing else: both ends of every input, both step signs.
TEST(CheckBlockstats, ReadsStayInsideTheBlocks) {
    for (int k = 0; k < 8; ++k) {
        bool atEnd = k % 2 == 0;
        Zan32s sign = k & 2 ? -1 : 1;
        Zan32s pad = k & 4 ? 16 : 0;  // tight rows, or rows a multiple of 16 wider
        auto step = [&](Zan32s w) { return sign * (pad ? ((w + 15) & ~15) + pad : w); };
        for (const auto& e : transforms().satd) {
            Flush a(e.width, e.height, step(e.width), atEnd), b(e.width, e.height, step(e.width), !atEnd);
            ASSERT_TRUE(a.origin() && b.origin());
            EXPECT_EQ(e.rule(a.origin(), step(e.width), b.origin(), step(e.width)),
                      e.simd(a.origin(), step(e.width), b.origin(), step(e.width))) << e.name;
        }
        for (const auto& e : transforms().satd16) {
            Flush a(16, 8, step(16), atEnd), b(16, 8, step(16), !atEnd);
            EXPECT_EQ(e.rule(a.as<Zan16u>(), step(16), b.as<Zan16u>(), step(16)),
                      e.simd(a.as<Zan16u>(), step(16), b.as<Zan16u>(), step(16))) << e.name;
        }
        std::array<Zan16s, 64> o1, o2;
        for (const auto& e : transforms().hadamard8) {
            Flush a(8, 8, step(8), atEnd);
            EXPECT_EQ(e.rule(a.origin(), step(8), o1.data()), e.simd(a.origin(), step(8), o2.data())) << e.name;
        }
        for (const auto& e : transforms().hadamard16) {
            Flush a(16, 8, step(16), atEnd);
            EXPECT_EQ(e.rule(a.as<Zan16s>(), step(16), o1.data()), e.simd(a.as<Zan16s>(), step(16), o2.data()))
                << e.name;
        }
        for (const auto& e : variances().ssd) {
            Zan32s rw = e.width + (e.param & 2 ? 1 : 0), rh = e.height + (e.param & 1 ? 1 : 0);
            Flush a(e.width, e.height, step(e.width), atEnd), r(rw, rh, step(rw), !atEnd);
            EXPECT_EQ(e.rule(a.origin(), step(e.width), r.origin(), step(rw)),
                      e.simd(a.origin(), step(e.width), r.origin(), step(rw))) << e.name;
        }
        for (const auto& e : variances().sqrDiffB) {
            int p1 = e.param / 4, p2 = e.param % 4;
            Zan32s w1 = 16 + (p1 & 2 ? 1 : 0), h1 = 16 + (p1 & 1), w2 = 16 + (p2 & 2 ? 1 : 0), h2 = 16 + (p2 & 1);
            Flush a(16, 16, step(16), atEnd), r1(w1, h1, step(w1), !atEnd), r2(w2, h2, step(w2), atEnd);
            EXPECT_EQ(e.rule(a.origin(), step(16), r1.origin(), step(w1), r2.origin(), step(w2)),
                      e.simd(a.origin(), step(16), r1.origin(), step(w1), r2.origin(), step(w2))) << e.name;
        }
        for (const auto& e : variances().block) {
            Flush a(e.width, e.height, step(e.width), atEnd);
            EXPECT_EQ(e.rule(a.origin(), step(e.width)), e.simd(a.origin(), step(e.width))) << e.name;
        }
        Zan32s v1[8] = {}, v2[8] = {};
        for (const auto& e : variances().varSum8) {
            Flush a(8, 8, step(8), atEnd);
            e.rule(a.origin(), step(8), v1, v1 + 1);
            e.simd(a.origin(), step(8), v2, v2 + 1);
            EXPECT_TRUE(v1[0] == v2[0] && v1[1] == v2[1]) << e.name;
        }
        for (const auto& e : variances().varSum16) {
            Flush a(16, 8, step(16), atEnd);
            e.rule(a.as<Zan16s>(), step(16), v1, v1 + 1);
            e.simd(a.as<Zan16s>(), step(16), v2, v2 + 1);
            EXPECT_TRUE(v1[0] == v2[0] && v1[1] == v2[1]) << e.name;
        }
        for (const auto& e : variances().varMeanDiff) {
            Zan32s rw = 16 + (e.param & 2 ? 1 : 0), rh = e.height + (e.param & 1);
            Flush a(16, e.height, step(16), atEnd), r(rw, rh, step(rw), !atEnd);
            const Zan32s sums[4] = {9000, 100, 5000, 0};
            e.rule(a.origin(), step(16), r.origin(), step(rw), sums, v1, v1 + 4);
            e.simd(a.origin(), step(16), r.origin(), step(rw), sums, v2, v2 + 4);
            EXPECT_TRUE(std::equal(v1, v1 + 8, v2)) << e.name;
        }
        std::array<Zan16s, 256> d1, d2;
        std::array<Zan16s, 16> s1, s2;
        for (const auto& e : misc().sums8) {
            Flush a(e.width, e.height, step(e.width), atEnd), b(e.width, e.height, step(e.width), !atEnd);
            e.rule(a.origin(), step(e.width), b.origin(), step(e.width), s1.data(), d1.data());
            e.simd(a.origin(), step(e.width), b.origin(), step(e.width), s2.data(), d2.data());
            EXPECT_TRUE(std::equal(s1.begin(), s1.begin() + e.width * e.height / 16, s2.begin())) << e.name;
        }
        std::array<Zan32s, 16> t1, t2;
        for (const auto& e : misc().sums16) {
            Zan32s w = 2 * e.width;
            Flush a(w, e.height, step(w), atEnd), b(w, e.height, step(w), !atEnd);
            e.rule(a.as<Zan16u>(), step(w), b.as<Zan16u>(), step(w), t1.data(), d1.data());
            e.simd(a.as<Zan16u>(), step(w), b.as<Zan16u>(), step(w), t2.data(), d2.data());
            EXPECT_TRUE(std::equal(t1.begin(), t1.begin() + e.width * e.height / 16, t2.begin())) << e.name;
        }
        for (const auto& e : misc().sumsC2) {
            Flush a(16, 8, step(16), atEnd), u(8, 8, step(8), !atEnd), v(8, 8, step(8), atEnd);
            e.rule(a.origin(), step(16), u.origin(), step(8), v.origin(), step(8), s1.data(), d1.data(),
                   s1.data() + 4, d1.data() + 64);
            e.simd(a.origin(), step(16), u.origin(), step(8), v.origin(), step(8), s2.data(), d2.data(),
                   s2.data() + 4, d2.data() + 64);
            EXPECT_TRUE(std::equal(s1.begin(), s1.begin() + 8, s2.begin())) << e.name;
        }
        for (const auto& e : misc().edges8) {
            if (e.param == 1 && !pad) continue;  // the aligned kernel needs steps of 16
            Flush a(16, 16, step(16), atEnd);
            EXPECT_EQ(e.rule(a.origin(), step(16), 200, 300), e.simd(a.origin(), step(16), 200, 300)) << e.name;
        }
        for (const auto& e : misc().edges16) {
            Flush a(32, 16, step(32), atEnd);
            EXPECT_EQ(e.rule(a.as<Zan16u>(), step(32), 65535, 256), e.simd(a.as<Zan16u>(), step(32), 65535, 256))
                << e.name;
        }
        for (const auto& e : misc().countZeros) {
            Flush a(128, 1, 128, atEnd);
            EXPECT_EQ(e.rule(a.as<Zan16s>()), e.simd(a.as<Zan16s>())) << e.name;
        }
    }
}

}  // namespace
