// Every MPEG-2 quantiser kernel against its scalar rule: forward (float and
// integer paths), inverse (intra, weighted, flat) with mismatch control, and
// the nonzero count.  Blocks sit inside guard bands at every alignment the
// kernel accepts; outputs, guards and returned counts must agree exactly.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <limits>

#include "check/harness.h"
#include "mpeg12/mpeg12.h"

namespace {

using namespace zan;
using namespace zan::check;

const mpeg12::QuantKernels& kernels() {
    return for_path(u8::mpeg12::quant_kernels, n8::mpeg12::quant_kernels);
}

constexpr int kGuard = 16;  // elements before and after the block

// A block of 64 Zan16s inside guards; offset in elements from a 16-byte
// boundary (0 for the aligned kernels).
struct Block16 {
    alignas(16) std::array<Zan16s, 64 + 2 * kGuard + 8> a;
    int offset;
    Zan16s* p() { return a.data() + kGuard + offset; }
};

template <class T>
struct Matrix {
    alignas(16) std::array<T, 64 + 24> a;
    int offset;
    T* p() { return a.data() + 16 / sizeof(T) + offset; }
};

// Coefficients: extremes, small values, and forward-quantiser-sized values.
void fill_block(Rng& rng, Block16& b, int draw) {
    rng.fill16(b.a.data(), b.a.size(), -32768, 32767);
    Zan16s* p = b.p();
    switch (draw % 4) {
        case 0:
            break;  // anything, extremes favoured
        case 1:
            for (int i = 0; i < 64; ++i) p[i] = static_cast<Zan16s>(rng.range(-2048, 2047));
            break;
        case 2:  // sparse small levels, as after quantisation
            for (int i = 0; i < 64; ++i) p[i] = static_cast<Zan16s>(rng.below(4) ? 0 : rng.range(-5, 5));
            break;
        default:
            for (int i = 0; i < 64; ++i) p[i] = static_cast<Zan16s>(rng.below(2) ? rng.range(-32768, -32000) : rng.range(32000, 32767));
    }
}

void fill_float_matrix(Rng& rng, Matrix<Zan32f>& m, int draw) {
    for (auto& v : m.a) v = 1.0f / static_cast<Zan32f>(rng.range(1, 255));
    if (draw % 5 == 4) {  // odd values: zero, negative, huge, infinite, NaN, tiny
        const Zan32f odd[] = {0.0f, -0.0625f, 1e30f, -1e30f, std::numeric_limits<Zan32f>::infinity(),
                              std::numeric_limits<Zan32f>::quiet_NaN(), 1e-30f, 65535.0f};
        for (auto& v : m.a)
            if (rng.below(3) == 0) v = odd[rng.below(8)];
    }
}

Zan32s draw_qp(Rng& rng, int draw, bool integer) {
    if (integer) return draw % 7 == 0 ? rng.range(2, 1 << 20) : rng.range(2, 112);
    switch (draw % 6) {
        case 0:
            return rng.range(-300, -1);
        case 1:
            return rng.range(1, 1 << 24);
        default:
            return rng.range(1, 112);
    }
}

int offset_for(const KernelPair<mpeg12::QuantFn>& e, int draw) { return e.param == 16 ? 0 : draw % 8; }

TEST(CheckMpeg12, ForwardQuantisers) {
    Rng rng(31);
    for (const auto& e : kernels().quant)
        for (int d = 0; d < draws(); ++d) {
            Block16 want, got;
            want.offset = got.offset = offset_for(e, d);
            fill_block(rng, want, d);
            got.a = want.a;
            Matrix<Zan32f> m;
            m.offset = e.param == 16 ? 0 : d % 4;
            fill_float_matrix(rng, m, d);
            const bool integer = e.height == 0;
            const Zan32s QP = draw_qp(rng, d, integer);
            Zan32s cw = e.rule(want.p(), QP, m.p());
            Zan32s cg = e.simd(got.p(), QP, m.p());
            ASSERT_EQ(cw, cg) << e.name << " draw " << d << " QP " << QP << " seed " << seed();
            ASSERT_TRUE(want.a == got.a) << e.name << " draw " << d << " QP " << QP << " seed " << seed();
        }
}

TEST(CheckMpeg12, InverseQuantisers) {
    Rng rng(32);
    for (const auto& e : kernels().invQuant)
        for (int d = 0; d < draws(); ++d) {
            Block16 want, got;
            want.offset = got.offset = e.param == 16 ? 0 : d % 8;
            fill_block(rng, want, d);
            got.a = want.a;
            Matrix<Zan16s> W;
            W.offset = e.param == 16 ? 0 : (d / 2) % 8;
            if (d % 3 == 0)
                rng.fill16(W.a.data(), W.a.size(), -32768, 32767);
            else
                for (auto& w : W.a) w = static_cast<Zan16s>(rng.range(1, 255));
            // Small and typical scales, and any 32-bit value (only its low 16 bits count).
            Zan32s QP = d % 4 == 3 ? static_cast<Zan32s>(rng.next()) : rng.range(1, 112);
            e.rule(want.p(), QP, W.p());
            e.simd(got.p(), QP, W.p());
            ASSERT_TRUE(want.a == got.a) << e.name << " draw " << d << " QP " << QP << " seed " << seed();
        }
}

// Mismatch control hinges on parity and saturation: blocks of values that
// all push the lane sums against the limits, and blocks whose sums are odd
// or even by one entry.
TEST(CheckMpeg12, MismatchSaturation) {
    Rng rng(33);
    for (const auto& e : kernels().invQuant)
        for (int d = 0; d < draws(); ++d) {
            Block16 want, got;
            want.offset = got.offset = e.param == 16 ? 0 : d % 8;
            rng.fill16(want.a.data(), want.a.size(), -32768, 32767);
            Zan16s* p = want.p();
            const Zan16s big = static_cast<Zan16s>(d % 2 ? 32767 : -32768);
            for (int i = 0; i < 64; ++i) p[i] = rng.below(4) ? big : static_cast<Zan16s>(rng.range(-3, 3));
            got.a = want.a;
            Matrix<Zan16s> W;
            W.offset = 0;
            for (auto& w : W.a) w = static_cast<Zan16s>(rng.range(1, 4));
            const Zan32s QP = rng.range(1, 3);
            e.rule(want.p(), QP, W.p());
            e.simd(got.p(), QP, W.p());
            ASSERT_TRUE(want.a == got.a) << e.name << " draw " << d << " seed " << seed();
        }
}

TEST(CheckMpeg12, NonzeroCount) {
    Rng rng(34);
    for (const auto& e : kernels().count)
        for (int d = 0; d < draws(); ++d) {
            Block16 b;
            b.offset = e.param == 16 ? 0 : d % 8;
            fill_block(rng, b, d);
            if (d % 5 == 0) std::memset(b.p(), 0, 128);
            ASSERT_EQ(e.rule(b.p()), e.simd(b.p())) << e.name << " draw " << d << " seed " << seed();
        }
}

}  // namespace
