// Every block-differencing vector kernel against its scalar rule, for every
// entry of the kernel tables the exported functions index.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>

#include "blocks/diff.h"
#include "check/harness.h"

namespace {

using namespace zan;
using namespace zan::check;

const diff::Kernels& kernels() { return for_path(u8::diff::kernels, n8::diff::kernels); }

constexpr Zan32s kAlignedStores = 16;  // param bit of the kernels that store aligned rows

// A position's extra column (dx bytes) and row.
Zan32s extra_columns(Zan32s pos, Zan32s dx) { return pos == diff::kHF || pos == diff::kHH ? dx : 0; }
Zan32s extra_rows(Zan32s pos) { return pos == diff::kFH || pos == diff::kHH ? 1 : 0; }

// One draw's placement of an input: alignment (origin modulo 64) and step.
struct Place {
    Zan32s align, step;
};
Place input_place(int draw, int salt, Zan32s widthBytes) {
    auto s = steps_for(widthBytes);
    return {(draw * (salt + 1) + draw / 16 * salt) % 16 + 16 * (salt & 1),
            s[static_cast<size_t>(draw / (salt + 1) + salt) % s.size()]};
}
// Outputs: aligned kernels get a 16-byte multiple origin and step (either
// sign); the others anything, odd byte addresses and odd steps included.
Place output_place(int draw, int salt, Zan32s widthBytes, bool aligned) {
    if (aligned) {
        const Zan32s steps[] = {widthBytes, 32 + 16 * ((widthBytes + 15) / 16), -widthBytes, -48 - widthBytes};
        return {16 * ((draw + salt) % 4), steps[(draw / 2 + salt) % 4]};
    }
    auto s = steps_for(widthBytes, 2);
    s.push_back(widthBytes + 1);
    s.push_back(-(widthBytes + 3));
    return {(draw + 3 * salt) % 16, s[static_cast<size_t>(draw / 3 + salt) % s.size()]};
}

// Inputs: random with extremes favoured, and now and then the whole block
// at 0 against 255 and the other way round.
void fill_inputs(Rng& rng, int draw, Region& cur, std::initializer_list<Region*> refs) {
    cur.fill(rng);
    for (Region* r : refs) r->fill(rng);
    if (draw % 17 == 5) {
        cur.set(0);
        for (Region* r : refs) r->set(255);
    } else if (draw % 17 == 11) {
        cur.set(255);
        for (Region* r : refs) r->set(0);
    }
}

#define WHERE(e, d, rc) (e).name << " draw " << (d) << " rc " << (rc) << " seed " << seed()

TEST(CheckDiff, ForwardEveryPositionWithAndWithoutPredictor) {
    Rng rng(101);
    for (const auto& e : kernels().fwd) {
        const Zan32s pos = e.param & 3;
        const bool aligned = (e.param & kAlignedStores) != 0;
        const Zan32s refW = e.width + extra_columns(pos, 1), refH = e.height + extra_rows(pos);
        for (int d = 0; d < draws(); ++d) {
            Place c = input_place(d, 0, e.width), r = input_place(d, 1, refW);
            Place o = output_place(d, 0, 2 * e.width, aligned), p = output_place(d, 1, 2 * e.width, aligned);
            Region cur(e.width, e.height, c.step, c.align), ref(refW, refH, r.step, r.align);
            fill_inputs(rng, d, cur, {&ref});
            Region wantD(2 * e.width, e.height, o.step, o.align), gotD(2 * e.width, e.height, o.step, o.align);
            Region wantP(2 * e.width, e.height, p.step, p.align), gotP(2 * e.width, e.height, p.step, p.align);
            wantD.set(0xEE);
            gotD.set(0xEE);
            wantP.set(0x77);  // kernels without the predictor must leave it as it is
            gotP.set(0x77);
            Zan32s rc = static_cast<Zan32s>(rng.below(2));
            e.rule(ref.origin(), r.step, cur.origin(), c.step, wantD.as<Zan16s>(), o.step, wantP.as<Zan16s>(), p.step, rc);
            e.simd(ref.origin(), r.step, cur.origin(), c.step, gotD.as<Zan16s>(), o.step, gotP.as<Zan16s>(), p.step, rc);
            ASSERT_TRUE(wantD.same_as(gotD)) << WHERE(e, d, rc) << " diff step " << o.step << " align " << o.align;
            ASSERT_TRUE(wantP.same_as(gotP)) << WHERE(e, d, rc) << " predictor step " << p.step << " align " << p.align;
        }
    }
}

TEST(CheckDiff, BidirectionalEveryPositionPair) {
    Rng rng(102);
    // 16 position pairs per shape: half the draws each still sweep every
    // alignment and step.
    const int n = draws() / 2 > 32 ? draws() / 2 : 32;
    for (const auto& e : kernels().bi) {
        const Zan32s pf = e.param & 3, pb = (e.param >> 2) & 3;
        const bool aligned = (e.param & kAlignedStores) != 0;
        const Zan32s fW = e.width + extra_columns(pf, 1), fH = e.height + extra_rows(pf);
        const Zan32s bW = e.width + extra_columns(pb, 1), bH = e.height + extra_rows(pb);
        for (int d = 0; d < n; ++d) {
            Place c = input_place(d, 0, e.width), f = input_place(d, 1, fW), b = input_place(d, 2, bW);
            Place o = output_place(d, 0, 2 * e.width, aligned);
            Region cur(e.width, e.height, c.step, c.align), refF(fW, fH, f.step, f.align), refB(bW, bH, b.step, b.align);
            fill_inputs(rng, d, cur, {&refF, &refB});
            Region want(2 * e.width, e.height, o.step, o.align), got(2 * e.width, e.height, o.step, o.align);
            want.set(0xEE);
            got.set(0xEE);
            Zan32s rc = static_cast<Zan32s>(rng.below(2));
            e.rule(refF.origin(), f.step, refB.origin(), b.step, cur.origin(), c.step, want.as<Zan16s>(), o.step, rc);
            e.simd(refF.origin(), f.step, refB.origin(), b.step, cur.origin(), c.step, got.as<Zan16s>(), o.step, rc);
            ASSERT_TRUE(want.same_as(got)) << WHERE(e, d, rc) << " diff step " << o.step << " align " << o.align;
        }
    }
}

TEST(CheckDiff, InterleavedChannels) {
    Rng rng(103);
    for (const auto& e : kernels().c2) {
        const Zan32s pos = e.param & 3;
        const bool aligned = (e.param & kAlignedStores) != 0;
        const Zan32s refW = 16 + extra_columns(pos, 2), refH = e.height + extra_rows(pos);
        for (int d = 0; d < draws(); ++d) {
            Place c = input_place(d, 0, 16), r = input_place(d, 1, refW);
            Place u = output_place(d, 0, 16, aligned), v = output_place(d, 1, 16, aligned);
            Region cur(16, e.height, c.step, c.align), ref(refW, refH, r.step, r.align);
            fill_inputs(rng, d, cur, {&ref});
            Region wantU(16, e.height, u.step, u.align), gotU(16, e.height, u.step, u.align);
            Region wantV(16, e.height, v.step, v.align), gotV(16, e.height, v.step, v.align);
            for (Region* g : {&wantU, &gotU, &wantV, &gotV}) g->set(0xEE);
            Zan32s rc = static_cast<Zan32s>(rng.below(2));
            e.rule(ref.origin(), r.step, cur.origin(), c.step, wantU.as<Zan16s>(), u.step, wantV.as<Zan16s>(), v.step, rc);
            e.simd(ref.origin(), r.step, cur.origin(), c.step, gotU.as<Zan16s>(), u.step, gotV.as<Zan16s>(), v.step, rc);
            ASSERT_TRUE(wantU.same_as(gotU)) << WHERE(e, d, rc) << " U step " << u.step << " align " << u.align;
            ASSERT_TRUE(wantV.same_as(gotV)) << WHERE(e, d, rc) << " V step " << v.step << " align " << v.align;
        }
    }
    const int n = draws() / 2 > 32 ? draws() / 2 : 32;
    for (const auto& e : kernels().c2b) {
        const Zan32s pf = e.param & 3, pb = (e.param >> 2) & 3;
        const bool aligned = (e.param & kAlignedStores) != 0;
        const Zan32s fW = 16 + extra_columns(pf, 2), fH = e.height + extra_rows(pf);
        const Zan32s bW = 16 + extra_columns(pb, 2), bH = e.height + extra_rows(pb);
        for (int d = 0; d < n; ++d) {
            Place c = input_place(d, 0, 16), f = input_place(d, 1, fW), b = input_place(d, 2, bW);
            Place u = output_place(d, 0, 16, aligned), v = output_place(d, 1, 16, aligned);
            Region cur(16, e.height, c.step, c.align), refF(fW, fH, f.step, f.align), refB(bW, bH, b.step, b.align);
            fill_inputs(rng, d, cur, {&refF, &refB});
            Region wantU(16, e.height, u.step, u.align), gotU(16, e.height, u.step, u.align);
            Region wantV(16, e.height, v.step, v.align), gotV(16, e.height, v.step, v.align);
            for (Region* g : {&wantU, &gotU, &wantV, &gotV}) g->set(0xEE);
            Zan32s rc = static_cast<Zan32s>(rng.below(2));
            e.rule(refF.origin(), f.step, refB.origin(), b.step, cur.origin(), c.step, wantU.as<Zan16s>(), u.step,
                   wantV.as<Zan16s>(), v.step, rc);
            e.simd(refF.origin(), f.step, refB.origin(), b.step, cur.origin(), c.step, gotU.as<Zan16s>(), u.step,
                   gotV.as<Zan16s>(), v.step, rc);
            ASSERT_TRUE(wantU.same_as(gotU)) << WHERE(e, d, rc) << " U step " << u.step;
            ASSERT_TRUE(wantV.same_as(gotV)) << WHERE(e, d, rc) << " V step " << v.step;
        }
    }
}

TEST(CheckDiff, PlainDifferences) {
    Rng rng(104);
    for (const auto& e : kernels().sub8)
        for (int d = 0; d < draws(); ++d) {
            Place a = input_place(d, 0, e.width), b = input_place(d, 1, e.width);
            Place o = output_place(d, 0, 2 * e.width, false);
            Region s1(e.width, e.height, a.step, a.align), s2(e.width, e.height, b.step, b.align);
            fill_inputs(rng, d, s1, {&s2});
            Region want(2 * e.width, e.height, o.step, o.align), got(2 * e.width, e.height, o.step, o.align);
            want.set(0xEE);
            got.set(0xEE);
            e.rule(s1.origin(), a.step, s2.origin(), b.step, want.as<Zan16s>(), o.step);
            e.simd(s1.origin(), a.step, s2.origin(), b.step, got.as<Zan16s>(), o.step);
            ASSERT_TRUE(want.same_as(got)) << e.name << " draw " << d << " seed " << seed();
        }
    for (const auto& e : kernels().sub16)
        for (int d = 0; d < draws(); ++d) {
            const bool aligned = e.param == 16;
            const Zan32s bytes = 2 * e.width;
            Place a = input_place(d, 0, bytes), b = input_place(d, 1, bytes);
            if (aligned) {
                a = output_place(d, 2, bytes, true);
                b = output_place(d, 3, bytes, true);
            } else {  // 16-bit samples on even addresses and steps
                a.align &= ~1;
                b.align &= ~1;
                a.step += a.step & 1;
                b.step -= b.step & 1;
            }
            Place o = output_place(d, 0, bytes, aligned);
            Region s1(bytes, e.height, a.step, a.align), s2(bytes, e.height, b.step, b.align);
            // All of 16 bits, extremes favoured, so that the subtraction wraps.
            s1.fill16(rng, 0, 65535);
            s2.fill16(rng, 0, 65535);
            Region want(bytes, e.height, o.step, o.align), got(bytes, e.height, o.step, o.align);
            want.set(0xEE);
            got.set(0xEE);
            e.rule(s1.as<Zan16u>(), a.step, s2.as<Zan16u>(), b.step, want.as<Zan16s>(), o.step);
            e.simd(s1.as<Zan16u>(), a.step, s2.as<Zan16u>(), b.step, got.as<Zan16s>(), o.step);
            ASSERT_TRUE(want.same_as(got)) << e.name << " draw " << d << " seed " << seed();
        }
}

// Reads stay inside the block and the extra row or column of its position:
// the readable area is put against an inaccessible page (after it, or
// before it with a negative step), so one byte more faults.
class Fenced {
public:
    Fenced(Zan32s widthBytes, Zan32s height, Zan32s step, bool atEnd) {
        const std::size_t page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        const std::size_t span =
            static_cast<std::size_t>(std::abs(step)) * static_cast<std::size_t>(height - 1) + static_cast<std::size_t>(widthBytes);
        size_ = (span + page - 1) / page * page + 2 * page;
        void* m = mmap(nullptr, size_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (m == MAP_FAILED) return;
        map_ = static_cast<Zan8u*>(m);
        Zan8u* rw = map_ + page;
        const std::size_t rwSize = size_ - 2 * page;
        if (mprotect(rw, rwSize, PROT_READ | PROT_WRITE) != 0) return;
        for (std::size_t i = 0; i < rwSize; ++i) rw[i] = static_cast<Zan8u>(i * 37 + 11);
        Zan8u* first = atEnd ? rw + rwSize - span : rw;
        origin_ = step >= 0 ? first : first + static_cast<std::ptrdiff_t>(-step) * (height - 1);
    }
    ~Fenced() {
        if (map_) munmap(map_, size_);
    }
    Fenced(const Fenced&) = delete;
    Fenced& operator=(const Fenced&) = delete;
    Zan8u* origin() const { return origin_; }

private:
    std::size_t size_ = 0;
    Zan8u* map_ = nullptr;
    Zan8u* origin_ = nullptr;
};

TEST(CheckDiff, ReadsOnlyTheBlockAndItsExtraRowOrColumn) {
    alignas(16) Zan16s want[16 * 16], got[16 * 16], wantP[16 * 16], gotP[16 * 16];
    for (int v = 0; v < 4; ++v) {
        const bool atEnd = v % 2 == 0;
        const Zan32s sign = v < 2 ? 1 : -1;
        for (const auto& e : kernels().fwd) {
            const Zan32s pos = e.param & 3;
            const Zan32s refW = e.width + extra_columns(pos, 1), refH = e.height + extra_rows(pos);
            Fenced cur(e.width, e.height, sign * (e.width + 5), !atEnd), ref(refW, refH, sign * (refW + 3), atEnd);
            ASSERT_TRUE(cur.origin() && ref.origin());
            const Zan32s cs = sign * (e.width + 5), rs = sign * (refW + 3), ds = 2 * e.width;
            e.rule(ref.origin(), rs, cur.origin(), cs, want, ds, wantP, ds, 1);
            e.simd(ref.origin(), rs, cur.origin(), cs, got, ds, gotP, ds, 1);
            ASSERT_EQ(0, std::memcmp(want, got, sizeof(Zan16s) * static_cast<size_t>(e.width * e.height))) << e.name;
        }
        for (const auto& e : kernels().bi) {
            const Zan32s pf = e.param & 3, pb = (e.param >> 2) & 3;
            const Zan32s fW = e.width + extra_columns(pf, 1), fH = e.height + extra_rows(pf);
            const Zan32s bW = e.width + extra_columns(pb, 1), bH = e.height + extra_rows(pb);
            Fenced cur(e.width, e.height, sign * e.width, atEnd), refF(fW, fH, sign * fW, atEnd),
                refB(bW, bH, sign * (bW + 2), !atEnd);
            ASSERT_TRUE(cur.origin() && refF.origin() && refB.origin());
            const Zan32s ds = 2 * e.width;
            e.rule(refF.origin(), sign * fW, refB.origin(), sign * (bW + 2), cur.origin(), sign * e.width, want, ds, 0);
            e.simd(refF.origin(), sign * fW, refB.origin(), sign * (bW + 2), cur.origin(), sign * e.width, got, ds, 0);
            ASSERT_EQ(0, std::memcmp(want, got, sizeof(Zan16s) * static_cast<size_t>(e.width * e.height))) << e.name;
        }
        for (const auto& e : kernels().c2b) {
            const Zan32s pf = e.param & 3, pb = (e.param >> 2) & 3;
            const Zan32s fW = 16 + extra_columns(pf, 2), fH = e.height + extra_rows(pf);
            const Zan32s bW = 16 + extra_columns(pb, 2), bH = e.height + extra_rows(pb);
            Fenced cur(16, e.height, sign * 16, !atEnd), refF(fW, fH, sign * fW, atEnd), refB(bW, bH, sign * bW, !atEnd);
            ASSERT_TRUE(cur.origin() && refF.origin() && refB.origin());
            e.rule(refF.origin(), sign * fW, refB.origin(), sign * bW, cur.origin(), sign * 16, want, 16, wantP, 16, 1);
            e.simd(refF.origin(), sign * fW, refB.origin(), sign * bW, cur.origin(), sign * 16, got, 16, gotP, 16, 1);
            ASSERT_EQ(0, std::memcmp(want, got, 16 * static_cast<size_t>(e.height))) << e.name;
            ASSERT_EQ(0, std::memcmp(wantP, gotP, 16 * static_cast<size_t>(e.height))) << e.name;
        }
        for (const auto& e : kernels().c2) {
            const Zan32s pos = e.param & 3;
            const Zan32s refW = 16 + extra_columns(pos, 2), refH = e.height + extra_rows(pos);
            Fenced cur(16, e.height, sign * 16, !atEnd), ref(refW, refH, sign * refW, atEnd);
            ASSERT_TRUE(cur.origin() && ref.origin());
            e.rule(ref.origin(), sign * refW, cur.origin(), sign * 16, want, 16, wantP, 16, 0);
            e.simd(ref.origin(), sign * refW, cur.origin(), sign * 16, got, 16, gotP, 16, 0);
            ASSERT_EQ(0, std::memcmp(want, got, 16 * static_cast<size_t>(e.height))) << e.name;
            ASSERT_EQ(0, std::memcmp(wantP, gotP, 16 * static_cast<size_t>(e.height))) << e.name;
        }
        for (const auto& e : kernels().sub8) {
            Fenced a(e.width, e.height, sign * e.width, atEnd), b(e.width, e.height, sign * (e.width + 1), !atEnd);
            ASSERT_TRUE(a.origin() && b.origin());
            e.rule(a.origin(), sign * e.width, b.origin(), sign * (e.width + 1), want, 2 * e.width);
            e.simd(a.origin(), sign * e.width, b.origin(), sign * (e.width + 1), got, 2 * e.width);
            ASSERT_EQ(0, std::memcmp(want, got, sizeof(Zan16s) * static_cast<size_t>(e.width * e.height))) << e.name;
        }
    }
}

}  // namespace
