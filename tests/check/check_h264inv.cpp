// Every H.264 inverse-transform and dequantisation kernel against its
// scalar rule: random coefficients over the whole 16- or 32-bit range (where
// the saturating and wrapping stages show), small and realistic levels (made
// by a forward transform and quantisation of a random residual), every
// quantiser, optional DC and scale pointers, AC words with stray bits, and
// predictions and destinations at every alignment and step, in place and
// apart, with guard bands around every output.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>

#include "check/harness.h"
#include "h264/h264inv.h"

namespace {

using namespace zan;
using namespace zan::check;
using namespace zan::h264inv;

const Kernels& kernels() { return for_path(u8::h264inv::kernels, n8::h264inv::kernels); }

// An output array with guard elements on both sides.
template <class T, size_t N>
struct Guarded {
    std::array<T, N + 16> a;
    explicit Guarded(T fill) { a.fill(fill); }
    T* out() { return a.data() + 8; }
    bool operator==(const Guarded& o) const { return a == o.a; }
};

// The lowest byte of a region (whose first row may be at the bottom).
Zan8u* lowest(Region& r, Zan32s height) {
    return r.step() >= 0 ? r.origin() : r.origin() + static_cast<std::ptrdiff_t>(r.step()) * (height - 1);
}
// Makes `to` (built with the same arguments) hold the same bytes as `from`,
// guard margins included.
void mirror(Region& from, Region& to, Zan32s widthBytes, Zan32s height) {
    std::size_t span = static_cast<std::size_t>(std::abs(from.step())) * static_cast<std::size_t>(height - 1) +
                       static_cast<std::size_t>(widthBytes);
    std::memcpy(lowest(to, height) - 64, lowest(from, height) - 64, span + 128);
}

// Fills 16-bit samples of a region's rows with values in [lo, hi].
template <class T>
void fill_rows(Region& r, Zan32s width, Zan32s height, Rng& rng, Zan32s lo, Zan32s hi) {
    for (Zan32s y = 0; y < height; ++y)
        for (Zan32s x = 0; x < width; ++x) {
            T v = static_cast<T>(rng.range(lo, hi));
            std::memcpy(r.origin() + static_cast<std::ptrdiff_t>(r.step()) * y + sizeof(T) * x, &v, sizeof(T));
        }
}

// Forward core transform of a random residual and quantisation at QP, as an
// encoder makes levels: values that the inverse path meets in real streams.
void realistic_levels(Rng& rng, Zan32s QP, Zan32s out[16], Zan32s residualRange) {
    Zan32s r[16], t[16];
    for (Zan32s& v : r) v = rng.range(-residualRange, residualRange);
    for (int i = 0; i < 4; ++i) {  // rows
        const Zan32s* a = r + 4 * i;
        Zan32s s03 = a[0] + a[3], d03 = a[0] - a[3], s12 = a[1] + a[2], d12 = a[1] - a[2];
        t[4 * i] = s03 + s12;
        t[4 * i + 1] = 2 * d03 + d12;
        t[4 * i + 2] = s03 - s12;
        t[4 * i + 3] = d03 - 2 * d12;
    }
    for (int j = 0; j < 4; ++j) {  // columns
        Zan32s a0 = t[j], a1 = t[4 + j], a2 = t[8 + j], a3 = t[12 + j];
        Zan32s s03 = a0 + a3, d03 = a0 - a3, s12 = a1 + a2, d12 = a1 - a2;
        r[j] = s03 + s12;
        r[4 + j] = 2 * d03 + d12;
        r[8 + j] = s03 - s12;
        r[12 + j] = d03 - 2 * d12;
    }
    Zan32s q = (QP > 51 ? 51 : QP) / 6, m = (QP > 51 ? 51 : QP) % 6;
    for (int k = 0; k < 16; ++k) {
        Zan64s mag = r[k] < 0 ? -Zan64s{r[k]} : r[k];
        Zan64s level = (mag * kQuantCoefClass[m][kClass4x4[k]] + (Zan64s{1} << (15 + q)) / 3) >> (15 + q);
        out[k] = static_cast<Zan32s>(r[k] < 0 ? -level : level);
    }
}

// A value in [lo, hi]; the whole 32-bit range is drawn directly.
Zan32s draw(Rng& rng, Zan32s lo, Zan32s hi) {
    if (Zan64s{hi} - lo >= 0x7FFFFFFF) return static_cast<Zan32s>(rng.next());
    return rng.range(lo, hi);
}

// Coefficients for draw d: full range, small, or realistic.
template <class T>
void coefficients(Rng& rng, int d, Zan32s QP, T* c, int n, Zan32s lo, Zan32s hi) {
    switch (d % 4) {
        case 0:  // whole range, extremes favoured
            for (int k = 0; k < n; ++k) c[k] = static_cast<T>(rng.below(4) == 0 ? (rng.below(2) ? hi : lo) : draw(rng, lo, hi));
            break;
        case 1:
            for (int k = 0; k < n; ++k) c[k] = static_cast<T>(rng.range(-64, 64));
            break;
        case 2: {
            Zan32s lv[16];
            for (int k = 0; k < n; k += 16) {
                realistic_levels(rng, QP, lv, 255);
                for (int j = 0; j < 16 && k + j < n; ++j) c[k + j] = static_cast<T>(lv[j]);
            }
            break;
        }
        default:  // mostly zero with a few large values
            for (int k = 0; k < n; ++k) c[k] = static_cast<T>(rng.below(5) == 0 ? draw(rng, lo, hi) : 0);
    }
}

Zan32s ac_word(Rng& rng, int d) {
    switch (d % 5) {
        case 0: return 0;
        case 1: return 1;
        case 2: return 2;  // bit 0 clear, other bits set
        case 3: return static_cast<Zan32s>(rng.next());
        default: return 3;
    }
}

Zan32s pick_step(const std::vector<Zan32s>& steps, int d) { return steps[static_cast<size_t>(d) % steps.size()]; }

#define WHERE(e, d) (e).name << " draw " << (d) << " seed " << seed()

// ---------------------------------------------------------------- 4x4 forms

TEST(CheckH264Inv, FlatAddToPrediction) {
    Rng rng(701);
    for (const auto& e : kernels().addFlat)
        for (int d = 0; d < draws(); ++d) {
            Zan32s QP = rng.range(0, e.param), AC = ac_word(rng, d);
            Zan32s predStep = pick_step(steps_for(4), d), dstStep = pick_step(steps_for(4), d / 3);
            bool inPlace = d % 7 == 3;
            Region pred(4, 4, predStep, d % 16), dstA(4, 4, dstStep, (d / 16) % 16), dstB(4, 4, dstStep, (d / 16) % 16);
            pred.fill(rng);
            dstA.fill(rng);
            mirror(dstA, dstB, 4, 4);
            Guarded<Zan16s, 16> coefA(0x5A5A), coefB(0x5A5A);
            coefficients(rng, d, QP, coefA.out(), 16, -32768, 32767);
            coefB = coefA;
            Zan16s dc = static_cast<Zan16s>(rng.range(-32768, 32767));
            const Zan16s* pDC = d % 3 == 0 ? nullptr : &dc;
            e.rule(inPlace ? dstA.origin() : pred.origin(), inPlace ? dstStep : predStep, coefA.out(), pDC, dstA.origin(),
                   dstStep, QP, AC);
            e.simd(inPlace ? dstB.origin() : pred.origin(), inPlace ? dstStep : predStep, coefB.out(), pDC, dstB.origin(),
                   dstStep, QP, AC);
            ASSERT_TRUE(coefA == coefB) << WHERE(e, d) << " QP " << QP << " AC " << AC;
            ASSERT_TRUE(dstA.same_as(dstB)) << WHERE(e, d) << " QP " << QP << " AC " << AC;
        }
}

TEST(CheckH264Inv, FlatResidualThroughStep) {
    Rng rng(702);
    const std::vector<Zan32s> steps = {8, 10, 16, 9, 24, 40, 64};
    for (const auto& e : kernels().residualFlat)
        for (int d = 0; d < draws(); ++d) {
            Zan32s QP = rng.range(0, e.param), AC = ac_word(rng, d), step = pick_step(steps, d);
            Zan32s align = 2 * (d % 8);
            Region a(8, 4, step, align), b(8, 4, step, align);
            a.fill(rng);
            Zan16s c[16];
            coefficients(rng, d, QP, c, 16, -32768, 32767);
            for (int k = 0; k < 16; ++k)
                std::memcpy(a.origin() + static_cast<std::ptrdiff_t>(step) * (k / 4) + 2 * (k % 4), &c[k], 2);
            mirror(a, b, 8, 4);
            Zan16s dc = static_cast<Zan16s>(rng.range(-32768, 32767));
            const Zan16s* pDC = d % 3 == 0 ? nullptr : &dc;
            e.rule(a.as<Zan16s>(), step, pDC, AC, QP);
            e.simd(b.as<Zan16s>(), step, pDC, AC, QP);
            ASSERT_TRUE(a.same_as(b)) << WHERE(e, d) << " QP " << QP << " AC " << AC << " step " << step;
        }
}

// A level-scale row: the flat default, realistic (list entry times the
// normalisation), or any 16-bit values.
template <size_t N>
const Zan16s* scale_row(Rng& rng, int d, std::array<Zan16s, N>& row, Zan32s maxNorm) {
    switch (d % 3) {
        case 0: return nullptr;
        case 1:
            for (auto& v : row) v = static_cast<Zan16s>(rng.range(1, 255) * rng.range(10, maxNorm));
            return row.data();
        default:
            for (auto& v : row) v = static_cast<Zan16s>(rng.range(-32768, 32767));
            return row.data();
    }
}

TEST(CheckH264Inv, LevelScaleAddToPrediction8Bit) {
    Rng rng(703);
    for (const auto& e : kernels().add16)
        for (int d = 0; d < draws(); ++d) {
            Zan32s QP = rng.range(0, e.param), AC = ac_word(rng, d / 2);
            Zan32s predStep = pick_step(steps_for(4), d), dstStep = pick_step(steps_for(4), d / 5);
            bool inPlace = d % 7 == 3;
            Region pred(4, 4, predStep, d % 16), dstA(4, 4, dstStep, (d / 16) % 16), dstB(4, 4, dstStep, (d / 16) % 16);
            pred.fill(rng);
            dstA.fill(rng);
            mirror(dstA, dstB, 4, 4);
            Guarded<Zan16s, 16> coefA(0x5A5A), coefB(0x5A5A);
            coefficients(rng, d / 3, QP, coefA.out(), 16, -32768, 32767);
            coefB = coefA;
            std::array<Zan16s, 16> scale;
            const Zan16s* pScale = scale_row(rng, d / 4, scale, 29);
            Zan16s dc = static_cast<Zan16s>(rng.range(-32768, 32767));
            const Zan16s* pDC = d % 3 == 0 ? nullptr : &dc;
            e.rule(inPlace ? dstA.origin() : pred.origin(), inPlace ? dstStep : predStep, coefA.out(), pDC, dstA.origin(),
                   dstStep, QP, AC, pScale);
            e.simd(inPlace ? dstB.origin() : pred.origin(), inPlace ? dstStep : predStep, coefB.out(), pDC, dstB.origin(),
                   dstStep, QP, AC, pScale);
            ASSERT_TRUE(coefA == coefB) << WHERE(e, d) << " QP " << QP << " AC " << AC;
            ASSERT_TRUE(dstA.same_as(dstB)) << WHERE(e, d) << " QP " << QP << " AC " << AC;
        }
}

TEST(CheckH264Inv, LevelScaleAddToPredictionHighBitDepth) {
    Rng rng(704);
    for (const auto& e : kernels().add32)
        for (int d = 0; d < draws(); ++d) {
            // Bit depths 9..14, and now and then 16 (beyond what the export accepts,
            // for callers of the shared kernel): the wide clamp path.
            Zan32s QP = rng.range(0, e.param), AC = ac_word(rng, d / 2), bitDepth = d % 10 == 9 ? 16 : rng.range(9, 14);
            Zan32s predStep = pick_step(steps_for(8, 2), d), dstStep = pick_step(steps_for(8, 2), d / 5);
            bool inPlace = d % 7 == 3;
            Zan32s align = 2 * (d % 8);
            Region pred(8, 4, predStep, align), dstA(8, 4, dstStep, align), dstB(8, 4, dstStep, align);
            pred.fill(rng);
            if (d % 2) fill_rows<Zan16u>(pred, 4, 4, rng, 0, (1 << bitDepth) - 1);
            dstA.fill(rng);
            if (inPlace) fill_rows<Zan16u>(dstA, 4, 4, rng, 0, (1 << bitDepth) - 1);
            mirror(dstA, dstB, 8, 4);
            Guarded<Zan32s, 16> coefA(0x5A5A5A5A), coefB(0x5A5A5A5A);
            Zan32s lim = d % 8 < 4 ? (1 << (bitDepth + 8)) : 0x7FFFFFFF;
            coefficients(rng, d / 3, QP, coefA.out(), 16, -lim - (lim == 0x7FFFFFFF), lim);
            coefB = coefA;
            std::array<Zan16s, 16> scale;
            const Zan16s* pScale = scale_row(rng, d / 4, scale, 29);
            Zan32s dc = d % 8 < 4 ? rng.range(-(1 << 20), 1 << 20) : static_cast<Zan32s>(rng.next());
            const Zan32s* pDC = d % 3 == 0 ? nullptr : &dc;
            const Zan16u* pp = inPlace ? dstA.as<Zan16u>() : pred.as<Zan16u>();
            const Zan16u* pq = inPlace ? dstB.as<Zan16u>() : pred.as<Zan16u>();
            Zan32s ps = inPlace ? dstStep : predStep;
            e.rule(pp, ps, coefA.out(), pDC, dstA.as<Zan16u>(), dstStep, QP, AC, bitDepth, pScale);
            e.simd(pq, ps, coefB.out(), pDC, dstB.as<Zan16u>(), dstStep, QP, AC, bitDepth, pScale);
            ASSERT_TRUE(coefA == coefB) << WHERE(e, d) << " QP " << QP << " AC " << AC;
            ASSERT_TRUE(dstA.same_as(dstB)) << WHERE(e, d) << " QP " << QP << " AC " << AC << " bits " << bitDepth;
        }
}

TEST(CheckH264Inv, PlainInverse4x4) {
    Rng rng(705);
    for (const auto& e : kernels().inv16)
        for (int d = 0; d < draws(); ++d) {
            Guarded<Zan16s, 16> src(0x1234), a(0x5A5A), b(0x5A5A);
            coefficients(rng, d, 28, src.out(), 16, -32768, 32767);
            if (d % 5 == 4) {  // in place
                a = src;
                b = src;
                e.rule(a.out(), a.out());
                e.simd(b.out(), b.out());
            } else {
                e.rule(src.out(), a.out());
                e.simd(src.out(), b.out());
            }
            ASSERT_TRUE(a == b) << WHERE(e, d);
        }
    for (const auto& e : kernels().inv32)
        for (int d = 0; d < draws(); ++d) {
            Guarded<Zan32s, 16> src(0x1234), a(0x5A5A), b(0x5A5A);
            Zan32s lim = d % 2 ? 0x7FFFFFFF : 1 << 20;
            coefficients(rng, d / 2, 28, src.out(), 16, -lim, lim);
            e.rule(src.out(), a.out());
            e.simd(src.out(), b.out());
            ASSERT_TRUE(a == b) << WHERE(e, d);
        }
}

// DC stages in place: 16 values (8 used by the 4:2:2 stage), now and then
// all at one extreme so that every sum saturates or wraps.
template <class T, class Fn>
void check_dc(KernelList<Fn> list, Rng& rng, Zan32s lim) {
    for (const auto& e : list)
        for (int d = 0; d < draws(); ++d) {
            Zan32s QP = rng.range(0, e.param);
            Guarded<T, 16> a(0x5A5A), b(0x5A5A);
            coefficients(rng, d, QP, a.out(), 16, -lim - 1, lim);
            if (d % 6 == 5)
                for (int k = 0; k < 16; ++k)
                    a.out()[k] = static_cast<T>(rng.below(4) ? (d % 12 == 5 ? lim : -lim - 1) : draw(rng, -lim - 1, lim));
            b = a;
            std::array<Zan16s, 1> scale;
            const Zan16s* pScale = scale_row(rng, d / 4, scale, 29);
            e.rule(a.out(), QP, pScale);
            e.simd(b.out(), QP, pScale);
            ASSERT_TRUE(a == b) << WHERE(e, d) << " QP " << QP;
        }
}

TEST(CheckH264Inv, DcStages) {
    Rng rng(706);
    check_dc<Zan16s>(kernels().dc16, rng, 32767);
    check_dc<Zan32s>(kernels().dc32, rng, 0x7FFFFFFF);
}

// ---------------------------------------------------------------- 8x8 forms

// 8x8 dequantisation: every Qp6 in turn, then random ones; realistic or
// any 16-bit scale rows.
template <class T, class Fn>
void check_dequant(KernelList<Fn> list, Rng& rng, Zan32s lim) {
    for (const auto& e : list)
        for (int d = 0; d < draws(); ++d) {
            Zan32s n = e.param + 1, qp6 = d < 3 * n ? d % n : rng.range(0, e.param);
            Guarded<T, 64> a(0x5A5A), b(0x5A5A);
            Zan32s range = (d / n) % 2 ? lim : 1 << 12;
            coefficients(rng, d / n, 6 * qp6, a.out(), 64, -range - (range == lim), range);
            b = a;
            std::array<Zan16s, 64> scale;
            const Zan16s* sc = scale_row(rng, 1 + (d / 7) % 2, scale, 58);
            e.rule(a.out(), qp6, sc);
            e.simd(b.out(), qp6, sc);
            ASSERT_TRUE(a == b) << WHERE(e, d) << " Qp6 " << qp6;
        }
}

TEST(CheckH264Inv, Dequant8x8) {
    Rng rng(707);
    check_dequant<Zan16s>(kernels().dequant16, rng, 32767);
    check_dequant<Zan32s>(kernels().dequant32, rng, 0x7FFFFFFF);
}

TEST(CheckH264Inv, Inverse8x8AddToPrediction) {
    Rng rng(708);
    for (const auto& e : kernels().add8x8_16)
        for (int d = 0; d < draws(); ++d) {
            Zan32s predStep = pick_step(steps_for(8), d), dstStep = pick_step(steps_for(8), d / 5);
            bool inPlace = d % 7 == 3;
            Region pred(8, 8, predStep, d % 16), dstA(8, 8, dstStep, (d / 16) % 16), dstB(8, 8, dstStep, (d / 16) % 16);
            pred.fill(rng);
            dstA.fill(rng);
            mirror(dstA, dstB, 8, 8);
            Guarded<Zan16s, 64> src(0x5A5A);
            Zan32s lim = d % 3 == 0 ? 32767 : d % 3 == 1 ? 2048 : 256;
            coefficients(rng, d / 3, 20, src.out(), 64, -lim - (lim == 32767), lim);
            const Guarded<Zan16s, 64> before = src;
            e.rule(inPlace ? dstA.origin() : pred.origin(), inPlace ? dstStep : predStep, src.out(), dstA.origin(), dstStep);
            e.simd(inPlace ? dstB.origin() : pred.origin(), inPlace ? dstStep : predStep, src.out(), dstB.origin(), dstStep);
            ASSERT_TRUE(src == before) << WHERE(e, d) << ": coefficients changed";
            ASSERT_TRUE(dstA.same_as(dstB)) << WHERE(e, d);
        }
    for (const auto& e : kernels().add8x8_32)
        for (int d = 0; d < draws(); ++d) {
            static constexpr Zan32s kDepths[] = {8, 9, 10, 12, 14, 16, 1, 0, 31, 32, 40};
            Zan32s bitDepth = kDepths[d % 11];
            Zan32s predStep = pick_step(steps_for(16, 2), d), dstStep = pick_step(steps_for(16, 2), d / 5);
            bool inPlace = d % 7 == 3;
            Zan32s align = 2 * (d % 8);
            Region pred(16, 8, predStep, align), dstA(16, 8, dstStep, align), dstB(16, 8, dstStep, align);
            pred.fill(rng);
            dstA.fill(rng);
            mirror(dstA, dstB, 16, 8);
            Guarded<Zan32s, 64> src(0x5A5A);
            Zan32s lim = d % 2 ? 0x7FFFFFFF : 1 << 20;
            coefficients(rng, d / 2, 20, src.out(), 64, -lim, lim);
            const Guarded<Zan32s, 64> before = src;
            const Zan16u* pp = inPlace ? dstA.as<Zan16u>() : pred.as<Zan16u>();
            const Zan16u* pq = inPlace ? dstB.as<Zan16u>() : pred.as<Zan16u>();
            Zan32s ps = inPlace ? dstStep : predStep;
            e.rule(pp, ps, src.out(), dstA.as<Zan16u>(), dstStep, bitDepth);
            e.simd(pq, ps, src.out(), dstB.as<Zan16u>(), dstStep, bitDepth);
            ASSERT_TRUE(src == before) << WHERE(e, d) << ": coefficients changed";
            ASSERT_TRUE(dstA.same_as(dstB)) << WHERE(e, d) << " bits " << bitDepth;
        }
}

// Every kernel list the family declares has at least one entry on this path.
TEST(CheckH264Inv, CatalogueComplete) {
    const Kernels& k = kernels();
    EXPECT_FALSE(k.addFlat.empty());
    EXPECT_FALSE(k.residualFlat.empty());
    EXPECT_FALSE(k.add16.empty());
    EXPECT_FALSE(k.add32.empty());
    EXPECT_FALSE(k.inv16.empty());
    EXPECT_FALSE(k.inv32.empty());
    EXPECT_FALSE(k.dc16.empty());
    EXPECT_FALSE(k.dc32.empty());
    EXPECT_FALSE(k.dequant16.empty());
    EXPECT_FALSE(k.dequant32.empty());
    EXPECT_FALSE(k.add8x8_16.empty());
    EXPECT_FALSE(k.add8x8_32.empty());
}

}  // namespace
