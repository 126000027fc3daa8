// Every H.264 intra vector kernel against its scalar rule, on random pictures
// around the block, every availability pattern (with stray bits), every
// alignment and tight, odd, wide and negative steps; the whole picture
// buffer, guards included, must come out the same.  Then: the values of
// absent neighbours never matter, absent neighbours are never read (a
// protected page stands where they would be), and hand-worked answers for
// the 8x8 edge preparation and predictors, which have no vector kernel.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "check/harness.h"
#include "h264/h264intra.h"

namespace {

using namespace zan;
using namespace zan::check;
using namespace zan::h264intra;

const Kernels& kernels() { return for_path(u8::h264intra::kernels, n8::h264intra::kernels); }

// Where a kernel's block and neighbours lie: lead bytes of left column (and
// corner) before the block, topBytes of the row above from the block's first
// byte, the block widthBytes x height.
struct Shape {
    Zan32s lead, topBytes, widthBytes, height;
    Zan32s span() const { return lead + (topBytes > widthBytes ? topBytes : widthBytes); }
};
Shape shape4x4() { return {1, 8, 4, 4}; }
template <class Fn>
Shape shape_of(const KernelPair<Fn>& e) {
    if (e.width == 4) return shape4x4();
    return {e.param & 16 ? 2 : 1, e.width, e.width, e.height};
}

// Availability patterns: the four bits in every combination, in half of
// the draws with stray bits that must be ignored.
Zan32s availability(int draw, Rng& rng) {
    Zan32s a = (draw & 1 ? kAbove : 0) | (draw & 2 ? kLeft : 0) | (draw & 4 ? kCorner : 0) | (draw & 8 ? kAboveRight : 0);
    if (draw & 16) a |= static_cast<Zan32s>(rng.next()) & ~kAvailMask;
    return a;
}

struct Layout {
    Zan32s step, align;
};
Layout layout(int draw, const Shape& sh) {
    auto steps = steps_for(sh.span());
    return {steps[static_cast<size_t>(draw / 32) % steps.size()], (draw * 7) % 64};
}

#define WHERE(e, d, l, a) \
    (e).name << " draw " << (d) << " avail " << (a) << " step " << (l).step << " align " << (l).align << " seed " << seed()

// Makes dst a copy of src byte for byte around the region, guards included
// (two regions' storage may start at different offsets from their origins).
void copy_region(Region& dst, Region& src, Zan32s widthBytes, Zan32s height) {
    const Zan32s step = src.step();
    const ptrdiff_t low = step >= 0 ? 0 : static_cast<ptrdiff_t>(step) * (height - 1);
    const size_t span = static_cast<size_t>(std::abs(step)) * static_cast<size_t>(height - 1) + static_cast<size_t>(widthBytes);
    std::memcpy(dst.origin() + low - 64, src.origin() + low - 64, span + 128);
}

// The block origin inside a region of height + 1 rows: one row down, lead bytes in.
Zan8u* block_in(Region& r, const Shape& sh) { return r.origin() + r.step() + sh.lead; }

template <class Fn>
void check_equal(const KernelList<Fn>& list, std::uint64_t salt) {
    Rng rng(salt);
    for (const auto& e : list) {
        const Shape sh = shape_of(e);
        for (int d = 0; d < draws(); ++d) {
            const Layout l = layout(d, sh);
            const Zan32s a = availability(d, rng);
            Region want(sh.span(), sh.height + 1, l.step, l.align), got(sh.span(), sh.height + 1, l.step, l.align);
            want.fill(rng);
            copy_region(got, want, sh.span(), sh.height + 1);
            const Zan32s rw = e.rule(block_in(want, sh), l.step, a);
            const Zan32s rg = e.simd(block_in(got, sh), l.step, a);
            ASSERT_EQ(rw != 0, rg != 0) << WHERE(e, d, l, a);
            ASSERT_TRUE(want.same_as(got)) << WHERE(e, d, l, a);
        }
    }
}

TEST(CheckH264Intra, Luma4x4KernelsEqualRules) { check_equal(kernels().pred4x4, 1); }
TEST(CheckH264Intra, Luma16x16KernelsEqualRules) { check_equal(kernels().pred16x16, 2); }
TEST(CheckH264Intra, ChromaKernelsEqualRules) { check_equal(kernels().chroma, 3); }

// Chroma DC with a separate left availability for the lower half: every
// pair of availability words.
TEST(CheckH264Intra, ChromaSplitDcKernelsEqualRules) {
    Rng rng(14);
    for (const auto& e : kernels().chromaDcSplit) {
        const Shape sh = shape_of(e);
        for (int d = 0; d < draws(); ++d) {
            const Layout l = layout(d, sh);
            const Zan32s top = availability(d, rng), bottom = availability(d / 4 + (d & 3) * 5, rng);
            Region want(sh.span(), sh.height + 1, l.step, l.align), got(sh.span(), sh.height + 1, l.step, l.align);
            want.fill(rng);
            copy_region(got, want, sh.span(), sh.height + 1);
            ASSERT_EQ(0, e.rule(block_in(want, sh), l.step, top, bottom));
            ASSERT_EQ(0, e.simd(block_in(got, sh), l.step, top, bottom));
            ASSERT_TRUE(want.same_as(got)) << e.name << " draw " << d << " avail " << top << "/" << bottom;
        }
    }
}

// With the two words equal the split DC is the DC mode.
TEST(CheckH264Intra, ChromaSplitDcWithEqualWordsIsDc) {
    Rng rng(15);
    for (int layout2 = 0; layout2 < 2; ++layout2) {
        const Shape sh{layout2 + 1, 8 * (layout2 + 1), 8 * (layout2 + 1), 8};
        const auto split = for_path(u8::h264intra::chroma_dc_split, n8::h264intra::chroma_dc_split)[layout2];
        const auto dc = layout2 ? for_path(u8::h264intra::chroma_nv12, n8::h264intra::chroma_nv12)[kChromaDc]
                                : for_path(u8::h264intra::chroma, n8::h264intra::chroma)[kChromaDc];
        for (int d = 0; d < 64; ++d) {
            const Zan32s a = availability(d, rng);
            Region one(sh.span(), 9, 40, 0), two(sh.span(), 9, 40, 0);
            one.fill(rng);
            copy_region(two, one, sh.span(), 9);
            split(block_in(one, sh), 40, a, a);
            dc(block_in(two, sh), 40, a);
            ASSERT_TRUE(one.same_as(two)) << layout2 << " " << a;
        }
    }
}

// Hand-worked: above 10 10 10 10 | 50 50 50 50, left 20 x4 | 90 x4.
TEST(CheckH264Intra, ChromaSplitDcKnownAnswers) {
    const auto split = for_path(u8::h264intra::chroma_dc_split, n8::h264intra::chroma_dc_split)[0];
    struct {
        Zan32s top, bottom;
        int tl, tr, bl, br;
    } cases[] = {
        {kAbove | kLeft, kAbove, 15, 50, 10, 50},      // lower half without its left column
        {kAbove, kAbove | kLeft, 10, 50, 90, 70},      // only the lower half has one
        {0, kLeft, 128, 128, 90, 90},                  // no row above: the lower half uses its left
        {kLeft, kAbove | kLeft, 20, 20, 90, 90},       // the row above follows the upper word
    };
    for (const auto& c : cases) {
        std::array<Zan8u, 16 * 10> pic{};
        Zan8u* b = pic.data() + 16 + 1;
        for (int x = 0; x < 8; ++x) b[-16 + x] = static_cast<Zan8u>(x < 4 ? 10 : 50);
        for (int y = 0; y < 8; ++y) b[16 * y - 1] = static_cast<Zan8u>(y < 4 ? 20 : 90);
        EXPECT_EQ(split(b, 16, c.top, c.bottom), 0);
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 8; ++x)
                ASSERT_EQ(b[16 * y + x], y < 4 ? (x < 4 ? c.tl : c.tr) : (x < 4 ? c.bl : c.br))
                    << c.top << "/" << c.bottom << " at " << x << "," << y;
    }
}

// 8x16 chroma blocks of 4:2:2 pictures, worked by hand.
struct Chroma422 {
    static constexpr Zan32s kStep = 16;
    std::array<Zan8u, kStep * 18> px{};
    Zan8u* block() { return px.data() + kStep + 1; }
    int at(int x, int y) { return block()[kStep * y + x]; }
};
zan::h264intra::PredBlockFn chroma422(int mode) {
    return for_path(u8::h264intra::chroma422, n8::h264intra::chroma422)[mode];
}

TEST(CheckH264Intra, Chroma8x16DcKnownAnswers) {
    // above 10 x4 | 50 x4; left bands 20, 90, 30, 70
    Chroma422 c;
    for (int x = 0; x < 8; ++x) c.block()[-Chroma422::kStep + x] = static_cast<Zan8u>(x < 4 ? 10 : 50);
    const int band[4] = {20, 90, 30, 70};
    for (int y = 0; y < 16; ++y) c.block()[Chroma422::kStep * y - 1] = static_cast<Zan8u>(band[y / 4]);
    ASSERT_EQ(chroma422(kChromaDc)(c.block(), Chroma422::kStep, kAbove | kLeft), 0);
    // first block both edges, top-right the row above, left column blocks the
    // left, the others both: (200 + 4 * band + 4) >> 3
    const int want[4][2] = {{15, 50}, {90, 70}, {30, 40}, {70, 60}};
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 8; ++x) ASSERT_EQ(c.at(x, y), want[y / 4][x / 4]) << x << "," << y;
    // Above only: each column of blocks takes its part of the row above.
    ASSERT_EQ(chroma422(kChromaDc)(c.block(), Chroma422::kStep, kAbove), 0);
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 8; ++x) ASSERT_EQ(c.at(x, y), x < 4 ? 10 : 50);
}

TEST(CheckH264Intra, Chroma8x16PlaneKnownAnswers) {
    // The left column 0 above row 8 and 255 from row 8 on, the rest 0:
    // V = 255 * (1 + ... + 8) = 9180, c = (5 V + 32) >> 6 = 717, b = 0,
    // a = 16 * 255; sample (4096 + 717 (y - 7)) >> 5 clamped.
    Chroma422 c;
    for (int y = 8; y < 16; ++y) c.block()[Chroma422::kStep * y - 1] = 255;
    ASSERT_EQ(chroma422(kChromaPlane)(c.block(), Chroma422::kStep, kAbove | kLeft | kCorner), 0);
    const int ramp[16] = {0, 0, 15, 38, 60, 83, 105, 128, 150, 172, 195, 217, 240, 255, 255, 255};
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 8; ++x) ASSERT_EQ(c.at(x, y), ramp[y]) << x << "," << y;
    // Missing corner: refused, nothing written.
    Chroma422 d;
    for (size_t i = 0; i < d.px.size(); ++i) d.px[i] = static_cast<Zan8u>(i * 13);
    const auto before = d.px;
    ASSERT_NE(chroma422(kChromaPlane)(d.block(), Chroma422::kStep, kAbove | kLeft), 0);
    ASSERT_TRUE(d.px == before);
}

// 8x8 predictors: a random edge record (any bytes, any availability) and an
// output block inside guards.
TEST(CheckH264Intra, Luma8x8KernelsEqualRules) {
    Rng rng(12);
    for (const auto& e : kernels().pred8x8)
        for (int d = 0; d < draws(); ++d) {
            Edge8x8 edge;
            rng.fill(&edge, sizeof edge);
            edge.avail = availability(d, rng);
            auto steps = steps_for(8);
            const Zan32s step = steps[static_cast<size_t>(d) % steps.size()], align = (d * 5) % 64;
            Region want(8, 8, step, align), got(8, 8, step, align);
            want.fill(rng);
            copy_region(got, want, 8, 8);
            e.rule(&edge, want.origin(), step);
            e.simd(&edge, got.origin(), step);
            ASSERT_TRUE(want.same_as(got)) << e.name << " draw " << d << " step " << step << " seed " << seed();
        }
}

// The 8x8 edge preparation: the picture around the block is random, the
// record is compared whole (both records start from the same bytes, so
// padding compares equal too), and the picture must be left as it was.
TEST(CheckH264Intra, EdgeFilter8x8KernelEqualsRule) {
    Rng rng(13);
    const Shape sh{1, 16, 8, 8};
    for (const auto& e : kernels().filter8x8)
        for (int d = 0; d < draws(); ++d) {
            const Layout l = layout(d, sh);
            const Zan32s a = availability(d, rng);
            Region pic(sh.span(), sh.height + 1, l.step, l.align), copy(sh.span(), sh.height + 1, l.step, l.align);
            pic.fill(rng);
            copy_region(copy, pic, sh.span(), sh.height + 1);
            Edge8x8 want, got;
            std::memset(&want, 0x5A, sizeof want);
            std::memset(&got, 0x5A, sizeof got);
            e.rule(&want, block_in(pic, sh), l.step, a);
            e.simd(&got, block_in(pic, sh), l.step, a);
            ASSERT_EQ(0, std::memcmp(&want, &got, sizeof want)) << WHERE(e, d, l, a);
            ASSERT_TRUE(pic.same_as(copy)) << WHERE(e, d, l, a);
        }
}

// Flat pictures and ramps reach the clamping of the plane modes and the
// rounding edges of the averages more often than random bytes do.
template <class Fn>
void check_equal_on_patterns(const KernelList<Fn>& list, std::uint64_t salt) {
    Rng rng(salt);
    for (const auto& e : list) {
        const Shape sh = shape_of(e);
        for (int d = 0; d < 64; ++d) {
            const Zan32s step = sh.span() + 5;
            const Zan32s a = availability(d % 16, rng);
            Region want(sh.span(), sh.height + 1, step, 0), got(sh.span(), sh.height + 1, step, 0);
            // a ramp of random slope and offset in each direction, or one flat value
            const Zan32s base = rng.range(0, 255), sx = rng.range(-40, 40), sy = rng.range(-40, 40);
            for (Zan32s y = 0; y <= sh.height; ++y)
                for (Zan32s x = 0; x < sh.span(); ++x) {
                    Zan32s v = d % 4 == 0 ? base : base + sx * x + sy * y;
                    want.origin()[y * step + x] = static_cast<Zan8u>(v < 0 ? 0 : v > 255 ? 255 : v);
                }
            copy_region(got, want, sh.span(), sh.height + 1);
            const Zan32s rw = e.rule(block_in(want, sh), step, a);
            const Zan32s rg = e.simd(block_in(got, sh), step, a);
            ASSERT_EQ(rw != 0, rg != 0) << e.name << " draw " << d;
            ASSERT_TRUE(want.same_as(got)) << e.name << " draw " << d << " seed " << seed();
        }
    }
}

TEST(CheckH264Intra, KernelsEqualRulesOnRampsAndFlats) {
    check_equal_on_patterns(kernels().pred4x4, 4);
    check_equal_on_patterns(kernels().pred16x16, 5);
    check_equal_on_patterns(kernels().chroma, 6);
}

// Changes every neighbour byte whose bit is clear (the row above and the
// row above-right by their bits, the left column, the corner), plus the
// bytes beyond the above-right samples.
void scramble_absent(Zan8u* p, Zan32s step, const Shape& sh, Zan32s a, Rng& rng) {
    const Zan32s right = sh.widthBytes;  // first byte of the above-right part
    for (Zan32s x = 0; x < sh.topBytes; ++x) {
        const bool present = x < right ? (a & kAbove) : (a & kAboveRight) && sh.widthBytes == 4;
        if (!present) p[-step + x] = static_cast<Zan8u>(rng.next());
    }
    for (Zan32s k = 1; k <= sh.lead; ++k) {
        if (!(a & kCorner)) p[-step - k] = static_cast<Zan8u>(rng.next());
        if (!(a & kLeft))
            for (Zan32s y = 0; y < sh.height; ++y) p[static_cast<ptrdiff_t>(step) * y - k] = static_cast<Zan8u>(rng.next());
    }
}

template <class Fn>
void check_absent_values_ignored(const KernelList<Fn>& list, std::uint64_t salt) {
    Rng rng(salt);
    for (const auto& e : list) {
        const Shape sh = shape_of(e);
        for (int d = 0; d < 128; ++d) {
            const Layout l = layout(d, sh);
            const Zan32s a = availability(d % 16, rng);
            for (Fn fn : {e.rule, e.simd}) {
                Region one(sh.span(), sh.height + 1, l.step, l.align), two(sh.span(), sh.height + 1, l.step, l.align);
                one.fill(rng);
                copy_region(two, one, sh.span(), sh.height + 1);
                scramble_absent(block_in(two, sh), l.step, sh, a, rng);
                const Zan32s r1 = fn(block_in(one, sh), l.step, a), r2 = fn(block_in(two, sh), l.step, a);
                ASSERT_EQ(r1, r2) << e.name;
                for (Zan32s y = 0; y < sh.height; ++y)
                    ASSERT_EQ(0, std::memcmp(block_in(one, sh) + y * l.step, block_in(two, sh) + y * l.step,
                                             static_cast<size_t>(sh.widthBytes)))
                        << e.name << (fn == e.rule ? " rule" : " kernel") << " draw " << d << " avail " << a;
            }
        }
    }
}

TEST(CheckH264Intra, AbsentNeighbourValuesDoNotMatter) {
    check_absent_values_ignored(kernels().pred4x4, 7);
    check_absent_values_ignored(kernels().pred16x16, 8);
    check_absent_values_ignored(kernels().chroma, 9);
}

// A block whose row above lies in an inaccessible page: with the row above,
// the corner and the row above-right marked absent, no kernel may fault.
// With a negative step the row above lies after the block in memory.
class GuardedPlane {
public:
    GuardedPlane(Zan32s step, Zan32s rows) {
        page_ = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        const std::size_t bytes = static_cast<std::size_t>(std::abs(step)) * static_cast<std::size_t>(rows);
        rw_ = (bytes + page_ - 1) / page_ * page_;
        size_ = rw_ + 2 * page_;
        void* m = mmap(nullptr, size_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (m == MAP_FAILED) return;
        map_ = static_cast<Zan8u*>(m);
        if (mprotect(map_ + page_, rw_, PROT_READ | PROT_WRITE) != 0) {
            munmap(map_, size_);
            map_ = nullptr;
            return;
        }
        // First row at the start of the readable area, or the last row at its end.
        first_ = step > 0 ? map_ + page_ : map_ + page_ + rw_ + step;
        std::memset(map_ + page_, 77, rw_);
    }
    ~GuardedPlane() {
        if (map_) munmap(map_, size_);
    }
    GuardedPlane(const GuardedPlane&) = delete;
    GuardedPlane& operator=(const GuardedPlane&) = delete;
    bool ok() const { return map_ != nullptr; }
    Zan8u* first_row() { return first_; }

private:
    std::size_t page_ = 0, size_ = 0, rw_ = 0;
    Zan8u* map_ = nullptr;
    Zan8u* first_ = nullptr;
};

template <class Fn>
void check_top_row_not_read(const KernelList<Fn>& list) {
    for (const auto& e : list) {
        const Shape sh = shape_of(e);
        for (Zan32s step : {sh.span() + 16, -(sh.span() + 16)})
            for (Zan32s a : {0, static_cast<Zan32s>(kLeft)}) {
                GuardedPlane plane(step, sh.height);
                ASSERT_TRUE(plane.ok());
                Zan8u* p = plane.first_row() + sh.lead;
                e.rule(p, step, a);
                e.simd(p, step, a);
            }
    }
}

TEST(CheckH264Intra, AbsentRowAboveIsNeverRead) {
    for (const auto& e : kernels().filter8x8)
        for (Zan32s step : {40, -40})
            for (Zan32s a : {0, static_cast<Zan32s>(kLeft)}) {
                GuardedPlane plane(step, 8);
                ASSERT_TRUE(plane.ok());
                Edge8x8 edge;
                e.rule(&edge, plane.first_row() + 1, step, a);
                e.simd(&edge, plane.first_row() + 1, step, a);
            }
    check_top_row_not_read(kernels().pred4x4);
    check_top_row_not_read(kernels().pred16x16);
    check_top_row_not_read(kernels().chroma);
}

// The 8x8 edge preparation and predictors have no vector kernel; here are
// answers worked out by hand from the standard's filter and formulas.
struct Plane8x8 {
    static constexpr Zan32s kStep = 32;
    std::array<Zan8u, kStep * 10> px{};
    Zan8u* block() { return px.data() + kStep + 1; }
    void set_above(const std::array<Zan8u, 16>& v) {
        for (int x = 0; x < 16; ++x) block()[-kStep + x] = v[static_cast<size_t>(x)];
    }
    void set_left(const std::array<Zan8u, 8>& v) {
        for (int y = 0; y < 8; ++y) block()[y * kStep - 1] = v[static_cast<size_t>(y)];
    }
    void set_corner(Zan8u v) { block()[-kStep - 1] = v; }
};

const EdgeFilterFn& filter8x8() { return for_path(u8::h264intra::filter_edges_8x8, n8::h264intra::filter_edges_8x8); }
Pred8x8Fn pred8x8(int mode) { return active_path() ? n8::h264intra::pred8x8[mode] : u8::h264intra::pred8x8[mode]; }

TEST(CheckH264Intra, EdgeFilter8x8AllPresent) {
    Plane8x8 pl;
    pl.set_above({10, 20, 30, 40, 50, 60, 70, 80, 100, 100, 100, 100, 100, 100, 0, 255});
    pl.set_left({200, 100, 200, 100, 200, 100, 200, 100});
    pl.set_corner(0);
    Edge8x8 e;
    filter8x8()(&e, pl.block(), Plane8x8::kStep, kAbove | kLeft | kCorner | kAboveRight);
    EXPECT_EQ(e.raw.corner, 0);
    EXPECT_EQ(e.raw.above[15], 255);
    EXPECT_EQ(e.raw.left[7], 100);
    // above[0] = (0 + 20 + 20 + 2) >> 2 = 10; above[1] = (10 + 40 + 30 + 2) >> 2 = 20
    EXPECT_EQ(e.filtered.above[0], 10);
    EXPECT_EQ(e.filtered.above[1], 20);
    // above[7] = (70 + 160 + 100 + 2) >> 2 = 83; above[14] = (100 + 0 + 255 + 2) >> 2 = 89
    EXPECT_EQ(e.filtered.above[7], 83);
    EXPECT_EQ(e.filtered.above[14], 89);
    // above[15] = (0 + 765 + 2) >> 2 = 191
    EXPECT_EQ(e.filtered.above[15], 191);
    // left[0] = (0 + 400 + 100 + 2) >> 2 = 125; left[1] = (200 + 200 + 200 + 2) >> 2 = 150
    EXPECT_EQ(e.filtered.left[0], 125);
    EXPECT_EQ(e.filtered.left[1], 150);
    // left[7] = (200 + 300 + 2) >> 2 = 125
    EXPECT_EQ(e.filtered.left[7], 125);
    // corner = (200 + 0 + 10 + 2) >> 2 = 53
    EXPECT_EQ(e.filtered.corner, 53);
}

TEST(CheckH264Intra, EdgeFilter8x8Substitutions) {
    Plane8x8 pl;
    pl.set_above({10, 20, 30, 40, 50, 60, 70, 80, 1, 2, 3, 4, 5, 6, 7, 8});
    pl.set_left({200, 100, 200, 100, 200, 100, 200, 100});
    pl.set_corner(40);
    Edge8x8 e;
    // No above-right, no corner: above[7] repeated; first samples use 3 * p[0] + p[1].
    filter8x8()(&e, pl.block(), Plane8x8::kStep, kAbove | kLeft);
    for (int x = 8; x < 16; ++x) EXPECT_EQ(e.raw.above[x], 80);
    EXPECT_EQ(e.raw.corner, 128);
    EXPECT_EQ(e.filtered.above[0], (30 + 20 + 2) >> 2);
    EXPECT_EQ(e.filtered.left[0], (600 + 100 + 2) >> 2);
    EXPECT_EQ(e.filtered.above[15], 80);
    EXPECT_EQ(e.filtered.corner, 128);  // absent: stays 128
    // Only the left column and the corner: the row above is 128 everywhere and
    // unfiltered, the corner (3 * 40 + 200 + 2) >> 2 = 80.
    filter8x8()(&e, pl.block(), Plane8x8::kStep, kLeft | kCorner);
    for (int x = 0; x < 16; ++x) {
        EXPECT_EQ(e.raw.above[x], 128);
        EXPECT_EQ(e.filtered.above[x], 128);
    }
    EXPECT_EQ(e.filtered.corner, 80);
    EXPECT_EQ(e.filtered.left[0], (40 + 400 + 100 + 2) >> 2);
    // Above-right without the row above: read as it is, and not smoothed.
    filter8x8()(&e, pl.block(), Plane8x8::kStep, kLeft | kAboveRight);
    for (int x = 0; x < 8; ++x) EXPECT_EQ(e.filtered.above[x], 128);
    for (int x = 8; x < 16; ++x) {
        EXPECT_EQ(e.raw.above[x], x - 7);
        EXPECT_EQ(e.filtered.above[x], x - 7);
    }
    // Only the corner: it keeps its value.
    filter8x8()(&e, pl.block(), Plane8x8::kStep, kCorner);
    EXPECT_EQ(e.filtered.corner, 40);
    for (int y = 0; y < 8; ++y) EXPECT_EQ(e.filtered.left[y], 128);
    // Above and corner only: (3 * 40 + 10 + 2) >> 2 = 33.
    filter8x8()(&e, pl.block(), Plane8x8::kStep, kAbove | kCorner);
    EXPECT_EQ(e.filtered.corner, 33);
}

// An edge record written by hand, so the predictors are tested apart from the filter.
Edge8x8 ramp_edge(Zan32s avail) {
    Edge8x8 e{};
    e.avail = avail;
    e.filtered.corner = 100;
    for (int i = 0; i < 16; ++i) e.filtered.above[i] = static_cast<Zan8u>(104 + 4 * i);  // 104, 108, ...
    for (int i = 0; i < 8; ++i) e.filtered.left[i] = static_cast<Zan8u>(96 - 8 * i);     // 96, 88, ...
    e.raw = e.filtered;
    return e;
}

TEST(CheckH264Intra, Predict8x8KnownAnswers) {
    const Edge8x8 e = ramp_edge(kAbove | kLeft | kCorner | kAboveRight);
    std::array<Zan8u, 8 * 8> b{};
    auto at = [&](int x, int y) { return static_cast<int>(b[static_cast<size_t>(8 * y + x)]); };
    pred8x8(kVertical)(&e, b.data(), 8);
    EXPECT_EQ(at(5, 7), 124);
    pred8x8(kHorizontal)(&e, b.data(), 8);
    EXPECT_EQ(at(7, 3), 72);
    // DC: above 104..132 sums 944, left 96..40 sums 544: (1488 + 8) >> 4 = 93
    pred8x8(kDc)(&e, b.data(), 8);
    EXPECT_EQ(at(0, 0), 93);
    EXPECT_EQ(at(7, 7), 93);
    // Down-left: (a[x+y] + 2 a[x+y+1] + a[x+y+2] + 2) >> 2 on a ramp = a[x+y+1];
    // the last sample (a[14] + 3 a[15] + 2) >> 2 = (160 + 492 + 2) >> 2 = 163.
    pred8x8(kDiagDownLeft)(&e, b.data(), 8);
    EXPECT_EQ(at(0, 0), 108);
    EXPECT_EQ(at(6, 7), 160);
    EXPECT_EQ(at(7, 7), 163);
    // Down-right diagonal: (l0 + 2 c + a0 + 2) >> 2 = (96 + 200 + 104 + 2) >> 2 = 100.
    pred8x8(kDiagDownRight)(&e, b.data(), 8);
    EXPECT_EQ(at(3, 3), 100);
    EXPECT_EQ(at(2, 0), 108);  // a[1]
    EXPECT_EQ(at(0, 3), 80);   // l[2]
    // Vertical-right, x = 0, y = 3: z = -3: (l[2] + 2 l[1] + l[0] + 2) >> 2 = 88.
    pred8x8(kVerticalRight)(&e, b.data(), 8);
    EXPECT_EQ(at(0, 3), 88);
    EXPECT_EQ(at(0, 0), 102);  // (c + a0 + 1) >> 1
    // Horizontal-down, x = 3, y = 0: z = -3: (a[2] + 2 a[1] + a[0] + 2) >> 2 = 108.
    pred8x8(kHorizontalDown)(&e, b.data(), 8);
    EXPECT_EQ(at(3, 0), 108);
    EXPECT_EQ(at(0, 0), 98);  // (c + l0 + 1) >> 1
    // Vertical-left, x = 7, y = 7: (a[10] + 2 a[11] + a[12] + 2) >> 2 = 148.
    pred8x8(kVerticalLeft)(&e, b.data(), 8);
    EXPECT_EQ(at(7, 7), 148);
    EXPECT_EQ(at(7, 6), 146);  // (a[10] + a[11] + 1) >> 1
    // Horizontal-up: z = 13 at (7, 3) and (1, 6): (l6 + 3 l7 + 2) >> 2 = 42;
    // above 13 the last left sample, 40.
    pred8x8(kHorizontalUp)(&e, b.data(), 8);
    EXPECT_EQ(at(7, 3), 42);
    EXPECT_EQ(at(1, 6), 42);
    EXPECT_EQ(at(2, 6), 40);
    EXPECT_EQ(at(7, 7), 40);
    EXPECT_EQ(at(0, 0), 92);  // (l0 + l1 + 1) >> 1
}

TEST(CheckH264Intra, Predict8x8DcByAvailability) {
    std::array<Zan8u, 8 * 8> b{};
    Edge8x8 e = ramp_edge(kAbove);
    pred8x8(kDc)(&e, b.data(), 8);
    EXPECT_EQ(b[0], (944 + 4) >> 3);
    e = ramp_edge(kLeft);
    pred8x8(kDc)(&e, b.data(), 8);
    EXPECT_EQ(b[63], (544 + 4) >> 3);
    e = ramp_edge(kCorner | kAboveRight);
    pred8x8(kDc)(&e, b.data(), 8);
    EXPECT_EQ(b[9], 128);
}

// The 8x8 predictors write their 64 samples and nothing else.
TEST(CheckH264Intra, Predict8x8StaysInsideItsBlock) {
    Rng rng(11);
    for (int mode = 0; mode < 9; ++mode)
        for (Zan32s step : {8, 13, -24}) {
            Region r(8, 8, step, 3);
            r.fill(rng);
            std::vector<Zan8u> before = r.storage();
            Edge8x8 e = ramp_edge(static_cast<Zan32s>(rng.below(128)));
            pred8x8(mode)(&e, r.origin(), step);
            // restore the block itself; what remains must be unchanged
            for (Zan32s y = 0; y < 8; ++y) {
                const auto off = static_cast<size_t>(r.origin() + y * step - r.storage().data());
                std::memcpy(r.storage().data() + off, before.data() + off, 8);
            }
            EXPECT_TRUE(r.storage() == before) << "mode " << mode << " step " << step;
        }
}

TEST(CheckH264Intra, PositionTables) {
    // Raster position of each coding-order block, and the decode order it implies.
    for (int n = 0; n < 16; ++n) {
        const int blockX = (n & 1) | ((n >> 1) & 2), blockY = ((n >> 1) & 1) | ((n >> 2) & 2);
        EXPECT_EQ(kBlockSubblockMapping[n], 4 * blockY + blockX) << n;
    }
    // The above-right 4x4 block is decoded before block n exactly where the table says.
    for (int n = 0; n < 16; ++n) {
        const int pos = kBlockSubblockMapping[n], x = pos % 4, y = pos / 4;
        bool before;
        if (y == 0) before = true;  // the macroblocks above and above right are decoded
        else if (x == 3) before = false;  // would lie in the macroblock to the right
        else {
            int m = 0;
            while (kBlockSubblockMapping[m] != 4 * (y - 1) + x + 1) ++m;
            before = m < n;
        }
        EXPECT_EQ(kAboveRightAvail4x4[n] != 0, before) << n;
    }
}

}  // namespace
