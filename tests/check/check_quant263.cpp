// Every quantiser vector kernel against its scalar rule, on random and
// adversarial blocks: the whole Zan16s range, transform-range coefficients,
// values at and beside the multiples of 2 QP, every QP the kernel takes and
// the limits of every sample depth.  The block sits at every 2-byte offset
// inside a guarded buffer, so a kernel that writes outside its coefficients
// fails too.
#include <gtest/gtest.h>

#include <array>

#include "check/harness.h"
#include "h26x_mpeg4/quant263.h"

namespace {

using namespace zan;
using namespace zan::check;
using namespace zan::quant263;

const Kernels& kernels() { return for_path(u8::quant263::kernels, n8::quant263::kernels); }

// A block of 64 coefficients with 16 guard words on each side, placed at an
// element offset 0..7 from a 16-byte boundary.
struct Block {
    alignas(16) std::array<Zan16s, 64 + 40> a;
    Zan32s offset;
    explicit Block(Zan32s off) : offset(16 + off) { a.fill(0x5A5A); }
    Zan16s* data() { return a.data() + offset; }
    bool operator==(const Block& o) const { return a == o.a; }
};

// Limits: a sample depth's, H.263's level limit, or none.
Limits draw_limits(Rng& rng) {
    switch (rng.below(4)) {
        case 0: return {-127, 127};
        case 1: return {-32768, 32767};
        default: return depth_limits(rng.range(4, 12));
    }
}

// Fills a block by one of several input shapes.  step: 2 QP for forward
// quantisers, so that quotients land on and beside their boundaries.
void fill_block(Rng& rng, Zan16s* p, Zan32s step, bool levels) {
    switch (rng.below(5)) {
        case 0: rng.fill16(p, 64, -32768, 32767); break;  // everything, extremes favoured
        case 1: rng.fill16(p, 64, -2048, 2047); break;    // transform range
        case 2:                                           // multiples of the step and their neighbours
            for (int i = 0; i < 64; ++i) {
                Zan32s v = static_cast<Zan32s>(rng.below(levels ? 64 : 1200)) * step + rng.range(-1, 1) +
                           (rng.below(2) ? step / 4 : 0);
                if (v > 32767) v = 32767;
                p[i] = static_cast<Zan16s>(rng.below(2) ? v : -v);
            }
            break;
        case 3:  // small values and many zeros
            for (int i = 0; i < 64; ++i) p[i] = static_cast<Zan16s>(rng.below(3) ? 0 : rng.range(-40, 40));
            break;
        default: rng.fill16(p, 64, levels ? -300 : -8000, levels ? 300 : 8000); break;
    }
}

void fill_weights(Rng& rng, Zan16u* w) {
    bool extremes = rng.below(4) == 0;
    for (int i = 0; i < 64; ++i)
        w[i] = static_cast<Zan16u>(extremes ? (rng.below(2) ? 1 : 255) : rng.range(1, 255));
}

#define WHERE(e, d, qp) (e).name << " draw " << (d) << " QP " << (qp) << " seed " << seed()

TEST(CheckQuant263, Forward) {
    Rng rng(11);
    for (const auto& e : kernels().quant)
        for (int d = 0; d < 4 * draws(); ++d) {
            Zan32s qp = d < e.width ? d + 1 : rng.range(1, e.width);
            Limits lim = draw_limits(rng);
            Block want(d % 8), got(d % 8);
            fill_block(rng, want.data(), 2 * qp, false);
            got = want;
            Zan32s nw = e.rule(want.data(), qp, lim.lo, lim.hi);
            Zan32s ng = e.simd(got.data(), qp, lim.lo, lim.hi);
            ASSERT_TRUE(want == got) << WHERE(e, d, qp);
            ASSERT_EQ(nw, ng) << WHERE(e, d, qp);
        }
}

TEST(CheckQuant263, ForwardWeighted) {
    Rng rng(12);
    for (const auto& e : kernels().quantWeighted)
        for (int d = 0; d < 4 * draws(); ++d) {
            Zan32s qp = rng.below(2) ? rng.range(1, 31) : rng.range(1, e.width);
            Limits lim = draw_limits(rng);
            std::array<Zan16u, 72> w;
            fill_weights(rng, w.data() + d % 8);
            Block want(d % 8), got(d % 8);
            fill_block(rng, want.data(), 2 * qp, false);
            got = want;
            Zan32s nw = e.rule(want.data(), w.data() + d % 8, qp, lim.lo, lim.hi);
            Zan32s ng = e.simd(got.data(), w.data() + d % 8, qp, lim.lo, lim.hi);
            ASSERT_TRUE(want == got) << WHERE(e, d, qp);
            ASSERT_EQ(nw, ng) << WHERE(e, d, qp);
        }
}

TEST(CheckQuant263, Inverse) {
    Rng rng(13);
    for (const auto& e : kernels().inv)
        for (int d = 0; d < 4 * draws(); ++d) {
            Zan32s qp = rng.below(2) ? rng.range(1, 31) : rng.range(1, e.width);
            Zan32s count = 8 * rng.range(0, 8);
            Limits lim = draw_limits(rng);
            Block want(d % 8), got(d % 8);
            fill_block(rng, want.data(), 1, true);
            got = want;
            e.rule(want.data(), count, qp, lim.lo, lim.hi);
            e.simd(got.data(), count, qp, lim.lo, lim.hi);
            ASSERT_TRUE(want == got) << WHERE(e, d, qp) << " count " << count;
        }
    for (const auto& e : kernels().invWrap)
        for (int d = 0; d < draws(); ++d) {
            Zan32s qp = rng.range(1, e.width);
            Zan32s count = 8 * rng.range(0, 8);
            Block want(d % 8), got(d % 8);
            fill_block(rng, want.data(), 1, true);
            got = want;
            e.rule(want.data(), count, qp);
            e.simd(got.data(), count, qp);
            ASSERT_TRUE(want == got) << WHERE(e, d, qp) << " count " << count;
        }
}

TEST(CheckQuant263, InverseWeighted) {
    Rng rng(14);
    for (const auto& e : kernels().invWeighted)
        for (int d = 0; d < 4 * draws(); ++d) {
            Zan32s qp = rng.below(2) ? rng.range(1, 31) : rng.range(1, e.width);
            Zan32s count = 8 * rng.range(0, 8);
            Limits lim = draw_limits(rng);
            std::array<Zan16u, 72> w;
            fill_weights(rng, w.data() + d % 8);
            Block want(d % 8), got(d % 8);
            fill_block(rng, want.data(), 1, true);
            got = want;
            Zan32s sw = e.rule(want.data(), count, w.data() + d % 8, qp, lim.lo, lim.hi);
            Zan32s sg = e.simd(got.data(), count, w.data() + d % 8, qp, lim.lo, lim.hi);
            ASSERT_TRUE(want == got) << WHERE(e, d, qp) << " count " << count;
            ASSERT_EQ(sw, sg) << WHERE(e, d, qp) << " count " << count;
        }
}

// Every magnitude 0..32768 of both signs, in blocks of 64, for every QP and
// both kinds: the kernels equal their rules on the whole input range.
TEST(CheckQuant263, ForwardEveryInput) {
    for (const auto& e : kernels().quant) {
        Zan32s qpStep = e.width > 31 ? 7 : 1;  // every QP for the integer kernels, a spread for the others
        for (Zan32s qp = 1; qp <= e.width; qp += qpStep)
            for (Zan32s base = -32768; base <= 32767; base += 64) {
                Block want(0), got(0);
                for (int i = 0; i < 64; ++i) want.data()[i] = static_cast<Zan16s>(base + i);
                got = want;
                Zan32s nw = e.rule(want.data(), qp, -32768, 32767);
                Zan32s ng = e.simd(got.data(), qp, -32768, 32767);
                ASSERT_TRUE(want == got) << e.name << " QP " << qp << " from " << base;
                ASSERT_EQ(nw, ng);
            }
    }
}

}  // namespace
