// Every DCT and scan kernel against its scalar rule.
//
// Transform inputs are mostly real coefficient blocks: random residuals run
// through an exact forward DCT, so that the inverse kernels meet the values
// and the spread of a decoder's blocks; beside them sparse and dense blocks
// of +-2048, and blocks of any 16-bit values, where the wrapping and
// saturation of the fixed-point passes must agree too.  Outputs are compared
// with guard bands around them.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "blocks/dct.h"
#include "check/harness.h"

namespace {

using namespace zan;
using namespace zan::check;

const dct::TransformKernels& transforms() {
    return for_path(u8::dct::transform_kernels, n8::dct::transform_kernels);
}
const dct::DvKernels& dvs() { return for_path(u8::dct::dv_kernels, n8::dct::dv_kernels); }
const dct::ScanKernels& scans() { return for_path(u8::dct::scan_kernels, n8::dct::scan_kernels); }

// Exact 8x8 forward DCT, F[v][u] = c(u) c(v) / 4 sum f cos cos.
void fdct_exact(const double (&f)[64], double (&F)[64]) {
    double t[64];
    for (int v = 0; v < 8; ++v)
        for (int x = 0; x < 8; ++x) {
            double s = 0;
            for (int y = 0; y < 8; ++y) s += f[8 * y + x] * std::cos((2 * y + 1) * v * M_PI / 16);
            t[8 * v + x] = s * (v ? 0.5 : 0.5 / std::sqrt(2.0));
        }
    for (int v = 0; v < 8; ++v)
        for (int u = 0; u < 8; ++u) {
            double s = 0;
            for (int x = 0; x < 8; ++x) s += t[8 * v + x] * std::cos((2 * x + 1) * u * M_PI / 16);
            F[8 * v + u] = s * (u ? 0.5 : 0.5 / std::sqrt(2.0));
        }
}

// A coefficient block in normal layout (c[8 * v + u]), by kind:
// 0-2 forward-transformed residuals (-256..255, 0..255 or small), 3 the same
// with only the 4x4 corner, 4 a few +-2048 coefficients, 5 all +-2048,
// 6 any 16-bit values.
void make_coeffs(Rng& rng, int kind, Zan16s (&c)[64]) {
    if (kind <= 3) {
        double f[64], F[64];
        Zan32s lo = kind == 1 ? 0 : kind == 2 ? -12 : -256, hi = kind == 2 ? 12 : 255;
        bool extremes = rng.below(4) == 0;
        for (double& x : f) x = extremes ? (rng.below(2) ? lo : hi) : rng.range(lo, hi);
        fdct_exact(f, F);
        for (int i = 0; i < 64; ++i) {
            long v = std::lround(F[i]);
            c[i] = static_cast<Zan16s>(v < -2048 ? -2048 : v > 2047 ? 2047 : v);
            if (kind == 3 && (i % 8 >= 4 || i / 8 >= 4)) c[i] = 0;
        }
    } else if (kind == 4) {
        for (auto& x : c) x = 0;
        for (int n = rng.range(1, 6); n > 0; --n)
            c[rng.below(64)] = static_cast<Zan16s>(rng.below(2) ? 2048 - static_cast<int>(rng.below(2)) : -2048);
    } else if (kind == 5) {
        for (auto& x : c) x = static_cast<Zan16s>(rng.below(2) ? 2048 : -2048);
    } else {
        for (auto& x : c) x = static_cast<Zan16s>(rng.next());
    }
}

void transpose(Zan16s (&c)[64]) {
    for (int i = 0; i < 8; ++i)
        for (int j = i + 1; j < 8; ++j) std::swap(c[8 * i + j], c[8 * j + i]);
}

// A coefficient block at any 2-byte offset inside a buffer.
struct Coeffs {
    std::array<Zan16s, 64 + 16> store{};
    Zan16s* p;
    explicit Coeffs(int draw) : p(store.data() + draw % 8) {}
    void set(const Zan16s (&c)[64]) { std::copy(c, c + 64, p); }
};

// Counts that reach every branch, and the edges between them.
Zan32s count_for(Rng& rng, int draw) {
    static const Zan32s edges[] = {-100, -1, 0, 1, 5, 9, 10, 11, 63, 64, 1000};
    return draw % 2 ? edges[(draw / 2) % 11] : rng.range(-3, 70);
}

// Output layout for a draw: step (positive: the exports check it) and alignment.
struct Out {
    Zan32s step, align;
};
Out out_for(int draw, Zan32s widthBytes) {
    std::vector<Zan32s> steps;
    for (Zan32s s : steps_for(widthBytes, 2))
        if (s >= widthBytes) steps.push_back(s);
    return {steps[static_cast<size_t>(draw) % steps.size()], ((draw / 3) % 16) & ~1};
}

#define WHERE(name, d) name << " draw " << (d) << " seed " << seed()

TEST(CheckDct, TransposedInverseToPlane) {
    Rng rng(21);
    for (const auto& e : transforms().inv16)
        for (int d = 0; d < draws(); ++d) {
            Zan16s c[64];
            make_coeffs(rng, d % 7, c);
            transpose(c);
            Coeffs src(d);
            src.set(c);
            Zan32s count = count_for(rng, d);
            Out o = out_for(d, 16);
            Region want(16, 8, o.step, o.align), got(16, 8, o.step, o.align);
            want.set(0xA5);
            got.set(0xA5);
            e.rule(src.p, want.as<Zan16s>(), o.step, count);
            e.simd(src.p, got.as<Zan16s>(), o.step, count);
            ASSERT_TRUE(want.same_as(got)) << WHERE(e.name, d) << " count " << count << " kind " << d % 7;
        }
    for (const auto& e : transforms().inv8)
        for (int d = 0; d < draws(); ++d) {
            Zan16s c[64];
            make_coeffs(rng, d % 7, c);
            transpose(c);
            Coeffs src(d);
            src.set(c);
            Zan32s count = count_for(rng, d);
            Out o = out_for(d, 8);
            Region want(8, 8, o.step, o.align), got(8, 8, o.step, o.align);
            want.set(0xA5);
            got.set(0xA5);
            e.rule(src.p, want.origin(), o.step, count);
            e.simd(src.p, got.origin(), o.step, count);
            ASSERT_TRUE(want.same_as(got)) << WHERE(e.name, d) << " count " << count << " kind " << d % 7;
        }
}

// Every count from -2 to 66 on every kind of block, for the plane forms and
// for the interleaved forms with the two counts running opposite ways.
TEST(CheckDct, TransposedInverseEveryCount) {
    Rng rng(28);
    const auto& t = transforms();
    for (int kind = 0; kind < 7; ++kind)
        for (Zan32s count = -2; count <= 66; ++count) {
            Zan16s c[64], d[64];
            make_coeffs(rng, kind, c);
            make_coeffs(rng, (kind + 3) % 7, d);
            alignas(16) Zan16s w16[2][8 * 16], w8u[2][64];
            alignas(16) Zan8u b8[2][8 * 16], b8u[2][64];
            for (int p = 0; p < 2; ++p) {
                std::fill(w16[p], w16[p] + 128, Zan16s{0x3C3C});
                std::fill(w8u[p], w8u[p] + 64, Zan16s{0x3C3C});
                std::fill(b8[p], b8[p] + 128, Zan8u{0x3C});
                std::fill(b8u[p], b8u[p] + 64, Zan8u{0x3C});
            }
            for (const auto& e : t.inv16) {
                e.rule(c, w8u[0], 16, count);
                e.simd(c, w8u[1], 16, count);
                ASSERT_TRUE(std::equal(w8u[0], w8u[0] + 64, w8u[1])) << e.name << " kind " << kind << " count " << count;
            }
            for (const auto& e : t.inv8) {
                e.rule(c, b8u[0], 8, count);
                e.simd(c, b8u[1], 8, count);
                ASSERT_TRUE(std::equal(b8u[0], b8u[0] + 64, b8u[1])) << e.name << " kind " << kind << " count " << count;
            }
            for (const auto& e : t.pair16) {
                e.rule(c, d, w16[0], 32, count, 64 - count);
                e.simd(c, d, w16[1], 32, count, 64 - count);
                ASSERT_TRUE(std::equal(w16[0], w16[0] + 128, w16[1])) << e.name << " kind " << kind << " count " << count;
            }
            for (const auto& e : t.pair8) {
                e.rule(c, d, b8[0], 16, count, 64 - count);
                e.simd(c, d, b8[1], 16, count, 64 - count);
                ASSERT_TRUE(std::equal(b8[0], b8[0] + 128, b8[1])) << e.name << " kind " << kind << " count " << count;
            }
        }
}

TEST(CheckDct, TransposedInverseInterleaved) {
    Rng rng(22);
    auto run = [&](const auto& e, int d, auto* tag) {
        using T = std::remove_pointer_t<decltype(tag)>;
        Zan16s cu[64], cv[64];
        make_coeffs(rng, d % 7, cu);
        make_coeffs(rng, (d / 7) % 7, cv);
        transpose(cu);
        transpose(cv);
        Coeffs su(d), sv(d + 3);
        su.set(cu);
        sv.set(cv);
        Zan32s countU = count_for(rng, d), countV = count_for(rng, d / 2 + 1);
        Zan32s width = 16 * static_cast<Zan32s>(sizeof(T));
        Out o = out_for(d, width);
        Region want(width, 8, o.step, o.align), got(width, 8, o.step, o.align);
        want.set(0xA5);
        got.set(0xA5);
        e.rule(su.p, sv.p, want.template as<T>(), o.step, countU, countV);
        e.simd(su.p, sv.p, got.template as<T>(), o.step, countU, countV);
        return testing::AssertionResult(want.same_as(got))
               << WHERE(e.name, d) << " counts " << countU << "/" << countV;
    };
    for (const auto& e : transforms().pair16)
        for (int d = 0; d < draws(); ++d) ASSERT_TRUE(run(e, d, static_cast<Zan16s*>(nullptr)));
    for (const auto& e : transforms().pair8)
        for (int d = 0; d < draws(); ++d) ASSERT_TRUE(run(e, d, static_cast<Zan8u*>(nullptr)));
}

TEST(CheckDct, PlainInverseAndInverseOrSet) {
    Rng rng(23);
    for (const auto& e : transforms().plainInv)
        for (int d = 0; d < draws(); ++d) {
            Zan16s c[64];
            make_coeffs(rng, d % 7, c);
            if (d % 5 == 0) c[0] = static_cast<Zan16s>(c[0] + 1024);  // samples around 128
            Coeffs src(d);
            src.set(c);
            Out o = out_for(d, 8);
            Region want(8, 8, o.step, o.align), got(8, 8, o.step, o.align);
            want.set(0xA5);
            got.set(0xA5);
            e.rule(src.p, want.origin(), o.step);
            e.simd(src.p, got.origin(), o.step);
            ASSERT_TRUE(want.same_as(got)) << WHERE(e.name, d) << " kind " << d % 7;
        }
    for (const auto& e : transforms().invOrSet)
        for (int d = 0; d < draws(); ++d) {
            Zan16s cu[64], cv[64];
            make_coeffs(rng, d % 7, cu);
            make_coeffs(rng, (d / 7) % 7, cv);
            Coeffs su(d), sv(d + 5);
            su.set(cu);
            sv.set(cv);
            // Every flag, with stray bits above the two that count.
            Zan32s flag = (d % 4) | (d % 3 == 0 ? static_cast<Zan32s>(rng.next() & ~3u) : 0);
            Out o = out_for(d, 16);
            Region want(16, 8, o.step, o.align), got(16, 8, o.step, o.align);
            want.set(0xA5);
            got.set(0xA5);
            e.rule(su.p, sv.p, want.origin(), o.step, flag);
            e.simd(su.p, sv.p, got.origin(), o.step, flag);
            ASSERT_TRUE(want.same_as(got)) << WHERE(e.name, d) << " flag " << flag;
        }
}

TEST(CheckDct, ForwardTransforms) {
    Rng rng(24);
    for (const auto& e : transforms().plainFwd)
        for (int d = 0; d < draws(); ++d) {
            auto steps = steps_for(8);
            Zan32s step = steps[static_cast<size_t>(d) % steps.size()];
            Region src(8, 8, step, d % 16);
            src.fill(rng);
            std::array<Zan16s, 64 + 16> want, got;
            want.fill(0x5A5A);
            got.fill(0x5A5A);
            e.rule(src.origin(), step, want.data() + 8);
            e.simd(src.origin(), step, got.data() + 8);
            ASSERT_TRUE(want == got) << WHERE(e.name, d) << " step " << step;
        }
    for (const auto& e : transforms().fwdPair)
        for (int d = 0; d < draws(); ++d) {
            auto steps = steps_for(16);
            Zan32s step = steps[static_cast<size_t>(d) % steps.size()];
            Region src(16, 8, step, d % 16);
            src.fill(rng);
            std::array<Zan16s, 2 * 64 + 32> want, got;
            want.fill(0x5A5A);
            got.fill(0x5A5A);
            e.rule(src.origin(), step, want.data() + 8, want.data() + 88);
            e.simd(src.origin(), step, got.data() + 8, got.data() + 88);
            ASSERT_TRUE(want == got) << WHERE(e.name, d) << " step " << step;
        }
}

// DV blocks in place: samples for the forward transform, coefficients of
// samples for the inverses, and any 16-bit values.
TEST(CheckDct, DvInPlace) {
    Rng rng(25);
    auto block = [&](int d, bool samples, Zan16s (&b)[64]) {
        int kind = d % 4;
        if (kind == 3) {
            for (auto& x : b) x = static_cast<Zan16s>(rng.next());
        } else if (samples || kind == 2) {
            Zan32s lo = kind == 1 ? 0 : -256, hi = 255;
            for (auto& x : b) x = static_cast<Zan16s>(rng.range(lo, hi));
            if (kind == 2 && !samples) dvs().fwd[0].rule(b);  // coefficients of real samples
        } else {
            make_coeffs(rng, d % 7, b);
        }
    };
    const KernelList<dct::InPlaceFn> lists[3] = {dvs().fwd, dvs().inv, dvs().inv4x4};
    for (int l = 0; l < 3; ++l)
        for (const auto& e : lists[l])
            for (int d = 0; d < draws(); ++d) {
                Zan16s b[64];
                block(d, l == 0, b);
                std::array<Zan16s, 64 + 16> want, got;
                want.fill(0x1234);
                std::copy(b, b + 64, want.data() + d % 8);
                got = want;
                e.rule(want.data() + d % 8);
                e.simd(got.data() + d % 8);
                ASSERT_TRUE(want == got) << WHERE(e.name, d);
            }
}

TEST(CheckDct, Scans) {
    Rng rng(26);
    auto block = [&](int d, Zan16s (&b)[64]) {
        // From very sparse to dense.
        Zan32u density = static_cast<Zan32u>(d % 9) + 1;
        for (auto& x : b) x = rng.below(9) < density ? static_cast<Zan16s>(rng.range(-2048, 2047)) : 0;
        if (d % 11 == 0)
            for (auto& x : b) x = static_cast<Zan16s>(rng.next());
    };
    const Zan32s scanSel[] = {-1, 0, 1, 2, 3, 7, -100};
    for (const auto& e : scans().fwd)
        for (int d = 0; d < 2 * draws(); ++d) {
            Zan16s b[64];
            block(d, b);
            Zan32s count = d % 3 == 0 ? 19 + d % 2 : rng.range(1, 64);
            Zan32s scan = scanSel[d % 7];
            std::array<Zan16s, 64 + 16> want, got;
            want.fill(0x7777);
            got.fill(0x7777);
            e.rule(b, want.data() + 8, count, scan);
            e.simd(b, got.data() + 8, count, scan);
            ASSERT_TRUE(want == got) << WHERE(e.name, d) << " count " << count << " scan " << scan;
        }
    for (const auto& e : scans().inv)
        for (int d = 0; d < 2 * draws(); ++d) {
            Zan16s b[64];
            block(d, b);
            Zan32s last = d % 5 == 0 ? (d / 5) % 64 : rng.range(0, 63);
            Zan32s scan = scanSel[d % 7];
            std::array<Zan16s, 64 + 16> want, got;
            want.fill(0x7777);
            got.fill(0x7777);
            e.rule(b, want.data() + 8, last, scan);
            e.simd(b, got.data() + 8, last, scan);
            ASSERT_TRUE(want == got) << WHERE(e.name, d) << " last " << last << " scan " << scan;
        }
}

// Source and destination in the same memory: the kernels follow the steps
// of the rule in their order.
TEST(CheckDct, ScansInPlace) {
    Rng rng(27);
    for (int d = 0; d < 64; ++d) {
        std::array<Zan16s, 64 + 16> base;
        for (auto& x : base) x = static_cast<Zan16s>(rng.range(-50, 50));
        Zan32s shift = d % 3 == 0 ? 0 : (d % 2 ? 5 : -5);
        for (const auto& e : scans().inv) {
            auto want = base, got = base;
            e.rule(want.data() + 8, want.data() + 8 + shift, d, d % 3);
            e.simd(got.data() + 8, got.data() + 8 + shift, d, d % 3);
            ASSERT_TRUE(want == got) << e.name << " draw " << d;
        }
        for (const auto& e : scans().fwd) {
            auto want = base, got = base;
            e.rule(want.data() + 8, want.data() + 8 + shift, 1 + d % 40, d % 3);
            e.simd(got.data() + 8, got.data() + 8 + shift, 1 + d % 40, d % 3);
            ASSERT_TRUE(want == got) << e.name << " draw " << d;
        }
    }
}

}  // namespace
