// Every H.264 forward-transform and quantisation vector kernel against its
// scalar rule: residuals in the 8-bit range, the whole 16-bit range and
// extremes (+-255, -32768, 32767), every QP, both rounding kinds, random
// and adversarial scale arrays, sparse blocks, in place and out of place,
// every alignment of the block, and guard words around every output.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <numeric>
#include <vector>

#include "check/harness.h"
#include "h264/h264fwd.h"

namespace {

using namespace zan;
using namespace zan::check;
using namespace zan::h264fwd;

const Kernels& kernels() { return for_path(u8::h264fwd::kernels, n8::h264fwd::kernels); }

// A block of N values of type T at a chosen misalignment inside guard words.
template <class T, size_t N>
struct Guarded {
    static constexpr size_t kGuard = 16;
    std::array<Zan8u, (N + 2 * kGuard) * sizeof(T) + 16> bytes;
    size_t offset;
    Guarded(Zan8u fill, size_t align) : offset(kGuard * sizeof(T) + (align % 16 & ~(sizeof(T) - 1))) {
        bytes.fill(fill);
    }
    T* p() { return reinterpret_cast<T*>(bytes.data() + offset); }
    bool operator==(const Guarded& o) const { return bytes == o.bytes && offset == o.offset; }
};

// Fills n values: a quarter of the draws in the residual range -255..255, a
// quarter at the extremes of that range, a quarter over all 16 bits, a
// quarter at the 16-bit extremes; `sparse` draws zero most positions.
void fill_block(Rng& rng, Zan16s* p, int n, int d, bool sparse = false) {
    for (int k = 0; k < n; ++k) {
        Zan32s v;
        switch (d % 4) {
            case 0: v = rng.range(-255, 255); break;
            case 1: v = rng.below(2) ? 255 - rng.range(0, 1) : -255 + rng.range(0, 1); break;
            case 2: v = rng.range(-32768, 32767); break;
            default: v = rng.below(2) ? 32767 - rng.range(0, 1) : -32768 + rng.range(0, 1); break;
        }
        if (sparse && rng.below(8) != 0) v = 0;
        p[k] = static_cast<Zan16s>(v);
    }
}

// A scan matrix: a random permutation of 0..n-1, sometimes with negative or
// large entries (the kernels take any 16-bit values).
std::vector<Zan16s> scan_matrix(Rng& rng, int n, int d) {
    std::vector<Zan16s> s(static_cast<size_t>(n));
    std::iota(s.begin(), s.end(), Zan16s{0});
    for (int i = n - 1; i > 0; --i) std::swap(s[static_cast<size_t>(i)], s[rng.below(static_cast<std::uint32_t>(i + 1))]);
    if (d % 7 == 3)
        for (auto& v : s) v = static_cast<Zan16s>(rng.range(-32768, 32767));
    return s;
}

#define WHERE(e, d) (e).name << " draw " << (d) << " seed " << seed()

TEST(CheckH264fwd, Forward4x4) {
    Rng rng(71);
    for (const auto& e : kernels().fwd4x4)
        for (int d = 0; d < draws(); ++d) {
            Guarded<Zan16s, 16> src(0x5A, static_cast<size_t>(d)), a(0xC3, static_cast<size_t>(d / 3)), b = a;
            fill_block(rng, src.p(), 16, d);
            e.rule(src.p(), a.p());
            e.simd(src.p(), b.p());
            ASSERT_TRUE(a == b) << WHERE(e, d);
            // In place.
            Guarded<Zan16s, 16> c = src, g = src;
            e.rule(c.p(), c.p());
            e.simd(g.p(), g.p());
            ASSERT_TRUE(c == g) << WHERE(e, d) << " in place";
            ASSERT_EQ(0, std::memcmp(c.p(), a.p(), 32)) << WHERE(e, d) << " in place differs";
        }
}

TEST(CheckH264fwd, ForwardPrediction) {
    Rng rng(72);
    for (const auto& e : kernels().fwdPred)
        for (int d = 0; d < draws(); ++d) {
            auto steps = steps_for(4);
            const Zan32s step = steps[static_cast<size_t>(d) % steps.size()];
            Region pic(4, 4, step, d % 64);
            pic.fill(rng);
            Guarded<Zan16s, 16> a(0x11, static_cast<size_t>(d)), b = a;
            e.rule(pic.origin(), step, a.p());
            e.simd(pic.origin(), step, b.p());
            ASSERT_TRUE(a == b) << WHERE(e, d) << " step " << step;
        }
}

TEST(CheckH264fwd, Forward8x8) {
    Rng rng(73);
    for (const auto& e : kernels().fwd8x8)
        for (int d = 0; d < draws(); ++d) {
            Guarded<Zan16s, 64> src(0x5A, static_cast<size_t>(d)), a(0xC3, static_cast<size_t>(d / 5)), b = a;
            fill_block(rng, src.p(), 64, d);
            e.rule(src.p(), a.p());
            e.simd(src.p(), b.p());
            ASSERT_TRUE(a == b) << WHERE(e, d);
            Guarded<Zan16s, 64> c = src, g = src;
            e.rule(c.p(), c.p());
            e.simd(g.p(), g.p());
            ASSERT_TRUE(c == g) << WHERE(e, d) << " in place";
        }
}

// The flat 4x4 transform and quantisation at every QP and both roundings:
// the same status, block, count and last position (outputs start equal and
// must end equal, so a kernel that writes them on failure is caught).
TEST(CheckH264fwd, FlatTransformQuant) {
    Rng rng(74);
    int failures = 0;
    for (const auto& e : kernels().flatQuant)
        for (int d = 0; d < draws(); ++d)
            for (Zan32s qp = 0; qp <= 51; qp += (d % 4 < 2 ? 1 : 5)) {
                const Zan32s intra = (d + qp) & 1;
                Guarded<Zan16s, 16> a(0, static_cast<size_t>(d)), b(0, static_cast<size_t>(d));
                fill_block(rng, a.p(), 16, d, d % 5 == 4);
                b = a;
                const auto scan = scan_matrix(rng, 16, d);
                Zan32s na = -7, nb = -7, la = -9, lb = -9;
                const ZanStatus sa = e.rule(a.p(), qp, intra, scan.data(), &na, &la);
                const ZanStatus sb = e.simd(b.p(), qp, intra, scan.data(), &nb, &lb);
                ASSERT_EQ(sa, sb) << WHERE(e, d) << " QP " << qp;
                ASSERT_TRUE(a == b) << WHERE(e, d) << " QP " << qp;
                ASSERT_EQ(na, nb) << WHERE(e, d) << " QP " << qp;
                ASSERT_EQ(la, lb) << WHERE(e, d) << " QP " << qp;
                failures += sa != zanStsOk;
            }
    EXPECT_GT(failures, 0) << "no draw reached the level limit";
}

TEST(CheckH264fwd, FlatLumaDc) {
    Rng rng(75);
    int failures = 0;
    for (const auto& e : kernels().flatLumaDc)
        for (int d = 0; d < draws(); ++d)
            for (Zan32s qp = 0; qp <= 51; qp += (d % 4 < 2 ? 1 : 7)) {
                Guarded<Zan16s, 16> a(0, static_cast<size_t>(d)), b(0, 0), ta(0x3C, static_cast<size_t>(d / 2)),
                    tb = ta;
                // DC values of transformed residuals lie within +-4080.
                if (d % 3 == 0)
                    for (int k = 0; k < 16; ++k) a.p()[k] = static_cast<Zan16s>(rng.range(-4080, 4080));
                else
                    fill_block(rng, a.p(), 16, d, d % 5 == 4);
                b = a;
                const auto scan = scan_matrix(rng, 16, d);
                Zan32s na = -7, nb = -7, la = -9, lb = -9;
                const ZanStatus sa = e.rule(a.p(), ta.p(), qp, scan.data(), &na, &la);
                const ZanStatus sb = e.simd(b.p(), tb.p(), qp, scan.data(), &nb, &lb);
                ASSERT_EQ(sa, sb) << WHERE(e, d) << " QP " << qp;
                ASSERT_TRUE(a == b && ta == tb) << WHERE(e, d) << " QP " << qp;
                ASSERT_EQ(na, nb) << WHERE(e, d);
                ASSERT_EQ(la, lb) << WHERE(e, d);
                failures += sa != zanStsOk;
            }
    EXPECT_GT(failures, 0);
}

TEST(CheckH264fwd, FlatChromaDc) {
    Rng rng(76);
    for (const auto& e : kernels().flatChromaDc)
        for (int d = 0; d < draws(); ++d)
            for (Zan32s qp = 0; qp <= 39; ++qp) {
                const Zan32s intra = d & 1, need = (d >> 1) & 1 ? 0 : 1;
                Guarded<Zan16s, 4> a(0, static_cast<size_t>(d)), b(0, 0), ta(0x3C, static_cast<size_t>(d / 2)),
                    tb = ta;
                fill_block(rng, a.p(), 4, d / 4);
                b = a;
                Zan32s na = -7, nb = -7;
                const ZanStatus sa = e.rule(a.p(), ta.p(), qp, intra, need, &na);
                const ZanStatus sb = e.simd(b.p(), tb.p(), qp, intra, need, &nb);
                ASSERT_EQ(sa, sb) << WHERE(e, d) << " QP " << qp;
                ASSERT_TRUE(a == b && ta == tb) << WHERE(e, d) << " QP " << qp;
                ASSERT_EQ(na, nb) << WHERE(e, d);
            }
}

// Blocks whose largest level sweeps through the limit of 2063 one fifth of
// a step at a time: a constant block v puts its weight on the DC (16 v in
// the 4x4 transform, 8 v after the halved luma Hadamard, 4 v in the chroma
// transform) and a sweep of d = -60..60 added to the first value moves that
// DC by one per step and every other coefficient by little.  Rule and
// kernel must agree on every block, and both outcomes must occur.
TEST(CheckH264fwd, LevelLimitSweep) {
    for (Zan32s qp : {12, 13, 14, 15}) {  // at QP % 6 = 4 and 5 the DC needed passes 32767
        const Zan32s q = qp / 6, f0 = kQuant4x4[qp % 6][0];
        // DC that meets the limit: 2064 << (15 + q) / f0 in the 4x4 transform,
        // 2064 << (16 + q') / f0 in the DC stages (q' = q - 1 below).
        const Zan32s v4 = static_cast<Zan32s>((Zan64s{2064} << (15 + q)) / f0 / 16);
        const Zan32s vl = static_cast<Zan32s>((Zan64s{2064} << (16 + q - 1)) / f0 / 8);
        const Zan32s vc = static_cast<Zan32s>((Zan64s{2064} << (16 + q - 1)) / f0 / 4);
        for (Zan32s intra = 0; intra < 2; ++intra) {
            int seen[3][2] = {};
            const Zan32s sign = intra ? -1 : 1;
            for (Zan32s d = -60; d <= 60; ++d) {
                std::array<Zan16s, 16> scan;
                std::iota(scan.begin(), scan.end(), Zan16s{0});
                for (const auto& e : kernels().flatQuant) {
                    std::array<Zan16s, 16> a, b;
                    a.fill(static_cast<Zan16s>(sign * v4));
                    a[0] = static_cast<Zan16s>(sign * (v4 + d));
                    b = a;
                    Zan32s na = 0, nb = 0, la = 0, lb = 0;
                    const ZanStatus sa = e.rule(a.data(), qp, intra, scan.data(), &na, &la);
                    const ZanStatus sb = e.simd(b.data(), qp, intra, scan.data(), &nb, &lb);
                    ASSERT_EQ(sa, sb) << e.name << " d " << d << " QP " << qp;
                    ASSERT_EQ(a, b) << e.name << " d " << d;
                    seen[0][sa == zanStsOk]++;
                }
                for (const auto& e : kernels().flatLumaDc) {
                    std::array<Zan16s, 16> a, b, ta{}, tb{};
                    a.fill(static_cast<Zan16s>(sign * vl));
                    a[0] = static_cast<Zan16s>(sign * (vl + d));
                    b = a;
                    Zan32s na = 0, nb = 0, la = 0, lb = 0;
                    const ZanStatus sa = e.rule(a.data(), ta.data(), qp - 6, scan.data(), &na, &la);
                    const ZanStatus sb = e.simd(b.data(), tb.data(), qp - 6, scan.data(), &nb, &lb);
                    ASSERT_EQ(sa, sb) << e.name << " d " << d << " QP " << qp - 6;
                    ASSERT_EQ(a, b) << e.name << " d " << d;
                    ASSERT_EQ(ta, tb) << e.name << " d " << d;
                    seen[1][sa == zanStsOk]++;
                }
                for (const auto& e : kernels().flatChromaDc) {
                    std::array<Zan16s, 4> a, b, ta{}, tb{};
                    a.fill(static_cast<Zan16s>(sign * vc));
                    a[0] = static_cast<Zan16s>(sign * (vc + d));
                    b = a;
                    Zan32s na = 0, nb = 0;
                    const ZanStatus sa = e.rule(a.data(), ta.data(), qp - 6, intra, 1, &na);
                    const ZanStatus sb = e.simd(b.data(), tb.data(), qp - 6, intra, 1, &nb);
                    ASSERT_EQ(sa, sb) << e.name << " d " << d << " QP " << qp - 6;
                    ASSERT_EQ(a, b) << e.name << " d " << d;
                    seen[2][sa == zanStsOk]++;
                }
            }
            for (int k = 0; k < 3; ++k) {
                EXPECT_GT(seen[k][0], 0) << "stage " << k << " QP " << qp << " intra " << intra;
                EXPECT_GT(seen[k][1], 0) << "stage " << k << " QP " << qp << " intra " << intra;
            }
        }
    }
}

// The 16-bit level kernels with every shift and rounding the exported
// functions use (4x4: shift 11..23, 8x8: 12..20, roundings of a third and a
// sixth), with default factors, random positive scales and scales over all
// 16 bits (negative ones included), in place and out of place.
TEST(CheckH264fwd, Levels16) {
    Rng rng(77);
    for (const auto& e : kernels().quant16) {
        const int n = e.width * e.height;
        for (int d = 0; d < draws(); ++d) {
            const Zan32s q = static_cast<Zan32s>(rng.below(e.width == 4 ? 9 : 9));
            const Zan32s base = e.width == 4 ? (d & 2 ? 15 : 11) : 12;
            const Zan32s shift = base + q;
            const Zan32s round = e.width == 4 ? static_cast<Zan32s>((Zan64s{1} << (shift + (d & 1))) / 6)
                                              : (d & 1 ? 682 : 342) << (q + 1);
            std::vector<Zan16s> scale(static_cast<size_t>(n));
            for (int k = 0; k < n; ++k)
                scale[static_cast<size_t>(k)] =
                    d % 3 == 0   ? (n == 16 ? kQuant4x4[q % 6][k] : kQuant8x8[q % 6][k])
                    : d % 3 == 1 ? static_cast<Zan16s>(rng.range(0, 32767))
                                 : static_cast<Zan16s>(rng.range(-32768, 32767));
            const auto scan = scan_matrix(rng, n, d);
            std::vector<Zan8u> raw(static_cast<size_t>(n) * 2 + 64);
            Guarded<Zan16s, 64> src(0, static_cast<size_t>(d)), a(0x77, static_cast<size_t>(d / 3)), b = a;
            fill_block(rng, src.p(), n, d, d % 5 == 4);
            if (d % 8 == 7 && shift <= 15) {
                // Unit scales and magnitudes next to the multiples of 1 << shift
                // less the rounding: the sums land on, just below and just above
                // a rounding boundary.
                for (int k = 0; k < n; ++k) {
                    scale[static_cast<size_t>(k)] = 1;
                    const Zan32s j = rng.range(1, (1 << (15 - shift)));
                    Zan32s v = (j << shift) - round + rng.range(-1, 1);
                    v = std::min(v, 32767);
                    src.p()[k] = static_cast<Zan16s>(rng.below(2) ? v : -v);
                }
            }
            Zan32s la = -9, lb = -9;
            const bool inPlace = d % 6 == 5;
            Guarded<Zan16s, 64> ia = src, ib = src;
            const Zan32s ca = e.rule(src.p(), inPlace ? ia.p() : a.p(), scale.data(), shift, round, scan.data(), &la);
            const Zan32s cb = e.simd(src.p(), inPlace ? ib.p() : b.p(), scale.data(), shift, round, scan.data(), &lb);
            if (inPlace) {
                Zan32s lc = -9, ld = -9;
                e.rule(ia.p(), ia.p(), scale.data(), shift, round, scan.data(), &lc);
                e.simd(ib.p(), ib.p(), scale.data(), shift, round, scan.data(), &ld);
                ASSERT_EQ(lc, ld) << WHERE(e, d);
            }
            ASSERT_EQ(ca, cb) << WHERE(e, d) << " shift " << shift;
            ASSERT_EQ(la, lb) << WHERE(e, d);
            ASSERT_TRUE(a == b && ia == ib) << WHERE(e, d) << " shift " << shift;
        }
    }
}

// The fused 4x4 transform and quantisation export (built-in factors or the
// caller's) against the transform export followed by the level export:
// random blocks of every kind, every QP, both rounding kinds, random scan
// matrices, in place and out of place; then a sweep of single-sample
// blocks (coefficients v, 2v and 4v) over the whole 16-bit range at every
// QP, which reaches every magnitude, -32768 included.
TEST(CheckH264fwd, FusedTransformQuant4x4) {
    Rng rng(4404);
    auto compare = [](const Zan16s* src, Zan32s QP, Zan32s intra, const Zan16s* scan, const Zan16s* scale) {
        Zan16s t[16], want[16], got[16];
        Zan32s nw = -7, lw = -7, ng = -9, lg = -9;
        if (zaniTransformResidual4x4Fwd_H264_16s_C1(src, t) != zanStsOk) return false;
        if (zaniQuantizeResidual4x4Fwd_H264_16s_C1(t, want, &nw, &lw, scale, scan, QP, intra) != zanStsOk) return false;
        if (zaniTransformQuantFwd4x4_H264_16s_C1(src, got, QP, &ng, intra, scan, &lg, scale) != zanStsOk) return false;
        return nw == ng && lw == lg && std::equal(want, want + 16, got);
    };
    for (int d = 0; d < draws(); ++d) {
        Zan16s src[16], scale[16];
        fill_block(rng, src, 16, d, d % 5 == 4);
        for (auto& v : scale) v = static_cast<Zan16s>(d % 3 == 2 ? rng.range(-32768, 32767) : rng.range(0, 32767));
        const auto scan = scan_matrix(rng, 16, d);
        const Zan32s QP = static_cast<Zan32s>(rng.below(52)), intra = d & 1;
        ASSERT_TRUE(compare(src, QP, intra, scan.data(), nullptr)) << "draw " << d << " QP " << QP;
        ASSERT_TRUE(compare(src, QP, intra, scan.data(), scale)) << "draw " << d << " QP " << QP << " scaled";
        Zan16s inPlace[16], t[16], want[16];
        std::copy(src, src + 16, inPlace);
        Zan32s nw = 0, lw = 0, ng = 0, lg = 0;
        ASSERT_EQ(zanStsOk, zaniTransformResidual4x4Fwd_H264_16s_C1(src, t));
        ASSERT_EQ(zanStsOk, zaniQuantizeResidual4x4Fwd_H264_16s_C1(t, want, &nw, &lw, nullptr, scan.data(), QP, intra));
        ASSERT_EQ(zanStsOk,
                  zaniTransformQuantFwd4x4_H264_16s_C1(inPlace, inPlace, QP, &ng, intra, scan.data(), &lg, nullptr));
        ASSERT_TRUE(nw == ng && lw == lg && std::equal(want, want + 16, inPlace)) << "in place, draw " << d;
    }
    Zan16s scan[16];
    std::iota(scan, scan + 16, Zan16s{0});
    for (Zan32s QP = 0; QP < 52; ++QP)
        for (Zan32s v = -32768; v < 32768; v += (v > -32760 && v < 32760 ? 5 : 1)) {
            Zan16s src[16] = {};
            src[0] = static_cast<Zan16s>(v);
            ASSERT_TRUE(compare(src, QP, v & 1, scan, nullptr)) << "v " << v << " QP " << QP;
        }
}

// The zero block gives zero levels, count 0 and last position 0 on every
// kernel, whatever the scan matrix holds.
TEST(CheckH264fwd, ZeroBlock) {
    std::array<Zan16s, 64> scan;
    scan.fill(-5);
    for (const auto& e : kernels().quant16) {
        std::array<Zan16s, 64> z{}, out, scale;
        out.fill(99);
        scale.fill(32767);
        Zan32s last = 77;
        EXPECT_EQ(0, e.simd(z.data(), out.data(), scale.data(), 20, (1 << 20) / 3, scan.data(), &last)) << e.name;
        EXPECT_EQ(0, last);
        for (int k = 0; k < e.width * e.height; ++k) EXPECT_EQ(0, out[static_cast<size_t>(k)]);
    }
}

}  // namespace
