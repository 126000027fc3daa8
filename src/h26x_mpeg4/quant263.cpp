// H.263 and MPEG-4 quantisation of one 8x8 block of coefficients, in place.
//
// Forward: a magnitude a is divided by 2 QP (H.263 rule, with a dead zone of
// QP / 2 for inter blocks), or, with an MPEG-4 weight matrix, brought to the
// matrix scale first.  Inverse: the H.263 reconstruction l * 2 QP + sign(l) q,
// its wrapping advanced-intra twin, and the weighted MPEG-4 reconstruction
// whose sum drives the mismatch control of coefficient 63.
//
// The vector kernels take eight coefficients per step.  Where a product can
// leave 16 bits they work on 32-bit lanes or in single precision, on values
// that single precision holds exactly, so every kernel equals its rule for
// every Zan16s input.
#include "h26x_mpeg4/quant263.h"

#include "common/simd.h"
#include "frame/bodies.h"

namespace zan::ZAN_PATH::quant263 {

using namespace zan::quant263;

namespace {

constexpr bool reciprocals_follow_rule() {
    for (Zan32u qp = 1; qp <= 31; ++qp)
        if (kQuantInv[qp - 1] != 32768 / qp + 1) return false;
    return true;
}
static_assert(reciprocals_follow_rule());

inline Zan32s clamp(Zan32s v, Zan32s lo, Zan32s hi) { return v < lo ? lo : v > hi ? hi : v; }
inline Zan32s magnitude(Zan32s v) { return v < 0 ? -v : v; }

// ============================================================ scalar rules

// Integer forward rule: a magnitude reduced by the dead zone, times the
// reciprocal of 2 QP in 16 fractional bits.  For QP 1 this is c / 2 toward
// zero.
template <bool Inter>
Zan32s quant_rule(Zan16s* p, Zan32s QP, Zan32s lo, Zan32s hi) {
    const Zan32s recip = static_cast<Zan32s>(kQuantInv[QP - 1]);
    const Zan32s deadZone = Inter ? QP / 2 : 0;
    Zan32s nonzero = 0;
    for (int i = 0; i < 64; ++i) {
        Zan32s c = p[i];
        Zan32s t = magnitude(c) - deadZone;
        if (t < 0) t = 0;
        Zan32s level = (t * recip) >> 16;
        level = clamp(c < 0 ? -level : level, lo, hi);
        p[i] = static_cast<Zan16s>(level);
        nonzero += level != 0;
    }
    return nonzero;
}

// Single-precision forward rule for depths above 8: the magnitude times
// 0.5000001 / QP, truncated.  The constant lies just above one half so that
// exact multiples of 2 QP do not fall below their quotient.
template <bool Inter>
Zan32s quant_float_rule(Zan16s* p, Zan32s QP, Zan32s lo, Zan32s hi) {
    const float scale = 0.5000001f / static_cast<float>(QP);
    const Zan32s deadZone = Inter ? QP / 2 : 0;
    Zan32s nonzero = 0;
    for (int i = 0; i < 64; ++i) {
        Zan32s c = p[i];
        Zan32s t = magnitude(c) - deadZone;
        if (t < 0) t = 0;
        Zan32s level = static_cast<Zan32s>(static_cast<float>(t) * scale);
        level = clamp(c < 0 ? -level : level, lo, hi);
        p[i] = static_cast<Zan16s>(level);
        nonzero += level != 0;
    }
    return nonzero;
}

// Weighted forward rule: t = (16 a + w / 2) / w on the matrix scale, then
// (t + d) / (2 QP) with d = (3 QP + 2) / 4 for intra and 0 for inter, both
// divisions exact and truncating.  The two steps are one division:
// ((16 a + w / 2) / w + d) / (2 QP) = (16 a + w / 2 + d w) / (2 QP w).
template <bool Intra>
Zan32s quant_weighted_rule(Zan16s* p, const Zan16u* w, Zan32s QP, Zan32s lo, Zan32s hi) {
    const Zan32s d = Intra ? (3 * QP + 2) >> 2 : 0;
    Zan32s nonzero = 0;
    for (int i = 0; i < 64; ++i) {
        Zan32s c = p[i];
        Zan32s t = (16 * magnitude(c) + w[i] / 2) / w[i];
        Zan32s level = (t + d) / (2 * QP);
        level = clamp(c < 0 ? -level : level, lo, hi);
        p[i] = static_cast<Zan16s>(level);
        nonzero += level != 0;
    }
    return nonzero;
}

// H.263 reconstruction: l * 2 QP + sign(l) * q, q = QP for odd QP and QP - 1
// for even QP; zero stays zero.
void quant_inv_rule(Zan16s* p, Zan32s count, Zan32s QP, Zan32s lo, Zan32s hi) {
    const Zan32s q = (QP & 1) ? QP : QP - 1;
    for (Zan32s i = 0; i < count; ++i) {
        Zan32s l = p[i];
        if (l == 0) continue;
        p[i] = static_cast<Zan16s>(clamp(l * 2 * QP + (l < 0 ? -q : q), lo, hi));
    }
}

// Advanced intra: l * 2 QP, kept to its low 16 bits.
void quant_inv_wrap_rule(Zan16s* p, Zan32s count, Zan32s QP) {
    for (Zan32s i = 0; i < count; ++i) p[i] = static_cast<Zan16s>(static_cast<Zan16u>(p[i] * 2 * QP));
}

// Weighted reconstruction: ((2 l + k) * w * QP) / 16 toward zero, k = 0 for
// intra and sign(l) for inter, then limited.  Returns the sum of the results.
template <bool Intra>
Zan32s quant_inv_weighted_rule(Zan16s* p, Zan32s count, const Zan16u* w, Zan32s QP, Zan32s lo, Zan32s hi) {
    Zan32s sum = 0;
    for (Zan32s i = 0; i < count; ++i) {
        Zan64s l = p[i];
        Zan64s k = Intra ? 0 : (l > 0) - (l < 0);
        Zan64s v = (2 * l + k) * w[i] * QP / 16;
        Zan32s r = static_cast<Zan32s>(v < lo ? lo : v > hi ? hi : v);
        p[i] = static_cast<Zan16s>(r);
        sum += r;
    }
    return sum;
}

// ========================================================== vector kernels

using simd::load16;
using simd::store16;

struct Clamp16 {
    __m128i lo, hi;
    Clamp16(Zan32s l, Zan32s h) : lo(_mm_set1_epi16(static_cast<short>(l))), hi(_mm_set1_epi16(static_cast<short>(h))) {}
    __m128i operator()(__m128i v) const { return _mm_max_epi16(_mm_min_epi16(v, hi), lo); }
};

// Counts zero words; the number of nonzero levels is 64 less the result.
inline __m128i count_zeros(__m128i acc, __m128i levels) {
    return _mm_sub_epi16(acc, _mm_cmpeq_epi16(levels, _mm_setzero_si128()));
}
inline Zan32s nonzero_from(__m128i zeros) {
    return 64 - simd::hsum_epi32(_mm_madd_epi16(zeros, _mm_set1_epi16(1)));
}

// Magnitudes are taken as unsigned words (|-32768| = 0x8000), the dead zone
// subtracted with unsigned saturation, and pmulhuw gives (t * recip) >> 16.
template <bool Inter>
Zan32s quant_simd(Zan16s* p, Zan32s QP, Zan32s lo, Zan32s hi) {
    const __m128i recip = _mm_set1_epi16(static_cast<short>(kQuantInv[QP - 1]));
    const __m128i deadZone = _mm_set1_epi16(static_cast<short>(Inter ? QP / 2 : 0));
    const Clamp16 limit(lo, hi);
    __m128i zeros = _mm_setzero_si128();
    for (int k = 0; k < 64; k += 8) {
        __m128i c = load16(p + k);
        __m128i t = _mm_subs_epu16(_mm_abs_epi16(c), deadZone);
        __m128i level = limit(_mm_sign_epi16(_mm_mulhi_epu16(t, recip), c));
        store16(p + k, level);
        zeros = count_zeros(zeros, level);
    }
    return nonzero_from(zeros);
}

template <bool Inter>
Zan32s quant_float_simd(Zan16s* p, Zan32s QP, Zan32s lo, Zan32s hi) {
    const __m128 scale = _mm_set1_ps(0.5000001f / static_cast<float>(QP));
    const __m128i deadZone = _mm_set1_epi16(static_cast<short>(Inter ? QP / 2 : 0));
    const __m128i zero = _mm_setzero_si128();
    const Clamp16 limit(lo, hi);
    __m128i zeros = zero;
    for (int k = 0; k < 64; k += 8) {
        __m128i c = load16(p + k);
        __m128i t = _mm_subs_epu16(_mm_abs_epi16(c), deadZone);
        __m128i l0 = _mm_cvttps_epi32(_mm_mul_ps(_mm_cvtepi32_ps(_mm_unpacklo_epi16(t, zero)), scale));
        __m128i l1 = _mm_cvttps_epi32(_mm_mul_ps(_mm_cvtepi32_ps(_mm_unpackhi_epi16(t, zero)), scale));
        __m128i level = limit(_mm_sign_epi16(_mm_packs_epi32(l0, l1), c));
        store16(p + k, level);
        zeros = count_zeros(zeros, level);
    }
    return nonzero_from(zeros);
}

// The one exact division N / (2 QP w) in single precision: N stays below
// 2^24 (16 * 32768 + 127 + 383 * 255), so N and the divisor are exact and the
// correctly rounded quotient truncates to the exact integer quotient.
template <bool Intra>
inline __m128i weighted_quotient(__m128i a32, __m128i w32, __m128 twoQP, __m128 d) {
    __m128 wf = _mm_cvtepi32_ps(w32);
    __m128i n = _mm_add_epi32(_mm_slli_epi32(a32, 4), _mm_srli_epi32(w32, 1));
    __m128 nf = _mm_cvtepi32_ps(n);
    if constexpr (Intra) nf = _mm_add_ps(nf, _mm_mul_ps(d, wf));
    return _mm_cvttps_epi32(_mm_div_ps(nf, _mm_mul_ps(twoQP, wf)));
}

template <bool Intra>
Zan32s quant_weighted_simd(Zan16s* p, const Zan16u* w, Zan32s QP, Zan32s lo, Zan32s hi) {
    const __m128 twoQP = _mm_set1_ps(static_cast<float>(2 * QP));
    const __m128 d = _mm_set1_ps(static_cast<float>((3 * QP + 2) >> 2));
    const __m128i zero = _mm_setzero_si128();
    const Clamp16 limit(lo, hi);
    __m128i zeros = zero;
    for (int k = 0; k < 64; k += 8) {
        __m128i c = load16(p + k);
        __m128i a = _mm_abs_epi16(c);
        __m128i wv = load16(w + k);
        __m128i q0 = weighted_quotient<Intra>(_mm_unpacklo_epi16(a, zero), _mm_unpacklo_epi16(wv, zero), twoQP, d);
        __m128i q1 = weighted_quotient<Intra>(_mm_unpackhi_epi16(a, zero), _mm_unpackhi_epi16(wv, zero), twoQP, d);
        // Quotients reach 2^18: the sign goes on 32-bit lanes so that packssdw
        // saturates both sides exactly.
        __m128i signs = _mm_srai_epi16(c, 15);
        q0 = _mm_sign_epi32(q0, _mm_unpacklo_epi16(c, signs));
        q1 = _mm_sign_epi32(q1, _mm_unpackhi_epi16(c, signs));
        __m128i level = limit(_mm_packs_epi32(q0, q1));
        store16(p + k, level);
        zeros = count_zeros(zeros, level);
    }
    return nonzero_from(zeros);
}

// l * 2 QP as exact 32-bit products (pmullw and pmulhw interleaved), the
// offset added with the product's sign, then saturated to 16 bits by
// packssdw and limited.
void quant_inv_simd(Zan16s* p, Zan32s count, Zan32s QP, Zan32s lo, Zan32s hi) {
    const __m128i twoQP = _mm_set1_epi16(static_cast<short>(2 * QP));
    const __m128i offset = _mm_set1_epi32((QP & 1) ? QP : QP - 1);
    const Clamp16 limit(lo, hi);
    for (Zan32s k = 0; k < count; k += 8) {
        __m128i l = load16(p + k);
        __m128i low = _mm_mullo_epi16(l, twoQP), high = _mm_mulhi_epi16(l, twoQP);
        __m128i v0 = _mm_unpacklo_epi16(low, high), v1 = _mm_unpackhi_epi16(low, high);
        v0 = _mm_add_epi32(v0, _mm_sign_epi32(offset, v0));
        v1 = _mm_add_epi32(v1, _mm_sign_epi32(offset, v1));
        store16(p + k, limit(_mm_packs_epi32(v0, v1)));
    }
}

void quant_inv_wrap_simd(Zan16s* p, Zan32s count, Zan32s QP) {
    const __m128i twoQP = _mm_set1_epi16(static_cast<short>(2 * QP));
    for (Zan32s k = 0; k < count; k += 8) store16(p + k, _mm_mullo_epi16(load16(p + k), twoQP));
}

// (2 a + k) * w * QP in single precision: exact below 2^24; a product at or
// above 2^24 is rounded but still saturates after the division by 16, and
// stays below 65537 * 255 * 511 < 2^33, so the truncating conversion of its
// sixteenth never overflows.  The sign is applied on 32-bit lanes so that
// packssdw saturates each side exactly.
template <bool Intra>
inline __m128i weighted_value(__m128i l32, __m128i w32, __m128 qp) {
    const __m128i zero = _mm_setzero_si128();
    __m128i a = _mm_sign_epi32(l32, l32);  // |l|
    __m128i m = _mm_slli_epi32(a, 1);
    if constexpr (!Intra) m = _mm_sub_epi32(m, _mm_cmpgt_epi32(a, zero));
    __m128 prod = _mm_mul_ps(_mm_cvtepi32_ps(m), _mm_mul_ps(_mm_cvtepi32_ps(w32), qp));
    __m128i v = _mm_cvttps_epi32(_mm_mul_ps(prod, _mm_set1_ps(1.0f / 16.0f)));
    return _mm_sign_epi32(v, l32);
}

template <bool Intra>
Zan32s quant_inv_weighted_simd(Zan16s* p, Zan32s count, const Zan16u* w, Zan32s QP, Zan32s lo, Zan32s hi) {
    const __m128 qp = _mm_set1_ps(static_cast<float>(QP));
    const __m128i zero = _mm_setzero_si128();
    const Clamp16 limit(lo, hi);
    __m128i sum = zero;
    for (Zan32s k = 0; k < count; k += 8) {
        __m128i l = load16(p + k);
        __m128i signs = _mm_srai_epi16(l, 15);
        __m128i wv = load16(w + k);
        __m128i v0 = weighted_value<Intra>(_mm_unpacklo_epi16(l, signs), _mm_unpacklo_epi16(wv, zero), qp);
        __m128i v1 = weighted_value<Intra>(_mm_unpackhi_epi16(l, signs), _mm_unpackhi_epi16(wv, zero), qp);
        __m128i r = limit(_mm_packs_epi32(v0, v1));
        store16(p + k, r);
        sum = _mm_add_epi32(sum, _mm_madd_epi16(r, _mm_set1_epi16(1)));
    }
    return simd::hsum_epi32(sum);
}

// ================================================================= tables

// [inter]: the integer forward kernels, QP 1..31.
constexpr QuantFn kQuant[2] = {quant_simd<false>, quant_simd<true>};
// [inter]: the single-precision forward kernels of depths above 8.
constexpr QuantFn kQuantFloat[2] = {quant_float_simd<false>, quant_float_simd<true>};
// [intra]: the weighted forward kernels.
constexpr QuantWeightedFn kQuantWeighted[2] = {quant_weighted_simd<false>, quant_weighted_simd<true>};
// [intra]: the weighted inverse kernels.
constexpr QuantInvWeightedFn kInvWeighted[2] = {quant_inv_weighted_simd<false>, quant_inv_weighted_simd<true>};

// ============================================================= catalogue

constexpr KernelPair<QuantFn> kQuantPairs[] = {
    {"quant_intra_16s", quant_rule<false>, quant_simd<false>, 31, 8, 1},
    {"quant_inter_16s", quant_rule<true>, quant_simd<true>, 31, 8, 0},
    {"quant_intra_float_16s", quant_float_rule<false>, quant_float_simd<false>, 511, 8, 1},
    {"quant_inter_float_16s", quant_float_rule<true>, quant_float_simd<true>, 511, 8, 0},
};
constexpr KernelPair<QuantWeightedFn> kQuantWeightedPairs[] = {
    {"quant_intra_weighted_16s", quant_weighted_rule<true>, quant_weighted_simd<true>, 511, 8, 1},
    {"quant_inter_weighted_16s", quant_weighted_rule<false>, quant_weighted_simd<false>, 511, 8, 0},
};
constexpr KernelPair<QuantInvFn> kInvPairs[] = {
    {"quant_inv_16s", quant_inv_rule, quant_inv_simd, 511, 8, 0},
};
constexpr KernelPair<QuantInvWrapFn> kInvWrapPairs[] = {
    {"quant_inv_advintra_16s", quant_inv_wrap_rule, quant_inv_wrap_simd, 31, 8, 1},
};
constexpr KernelPair<QuantInvWeightedFn> kInvWeightedPairs[] = {
    {"quant_inv_intra_weighted_16s", quant_inv_weighted_rule<true>, quant_inv_weighted_simd<true>, 511, 8, 1},
    {"quant_inv_inter_weighted_16s", quant_inv_weighted_rule<false>, quant_inv_weighted_simd<false>, 511, 8, 0},
};

// ============================================================== wrappers

constexpr Limits kH263Clip = {-127, 127};
constexpr Limits kNoClip = {-32768, 32767};
constexpr Limits kH263Recon = {-2048, 2047};

// The coefficients an inverse quantiser touches: whole groups of 8 up to the
// group of the last index.
inline Zan32s inverse_count(Zan32s indxLastNonZero) {
    if (indxLastNonZero < 0) return 0;
    return ((indxLastNonZero > 63 ? 63 : indxLastNonZero) >> 3) * 8 + 8;
}

inline void toggle_lowest_bit(Zan16s& v) { v = static_cast<Zan16s>(v ^ 1); }

inline bool qp_fits(Zan32s depth, Zan32s QP) {
    return depth >= 4 && depth <= 12 && QP >= 1 && QP <= kQuantMax[depth - 4];
}

// MPEG-4 intra DC level for scaler s: rounded to nearest, halves away from
// zero, and limited to -2047..2047.
Zan32s dc_level(Zan32s dc, Zan32s QP, Zan32s s) {
    Zan32s level;
    if (QP < 5) {
        level = dc >= 4 ? (dc + 4) >> 3 : dc < -3 ? (dc + 3) >> 3 : 0;
    } else {
        Zan32s half = (s + 1) >> 1;
        level = dc >= half ? (dc + s / 2) / s : dc <= -half ? (dc - s / 2) / s : 0;
    }
    return clamp(level, -2047, 2047);
}

// Writes the identifier and the depth, then the weights one after another
// through store(i, w); a zero weight stops with -192 before useWeights is
// touched.
template <class Record, class Store>
ZanStatus fill_record(Record* s, Zan32u identifier, Zan32s depth, const Zan8u* pWeights, Store store) {
    s->identifier = identifier;
    s->sampleDepth = depth;
    if (!pWeights) {
        s->useWeights = 0;
        return zanStsOk;
    }
    for (int i = 0; i < 64; ++i) {
        if (pWeights[i] == 0) return zanStsQpBad;
        store(i, static_cast<Zan32s>(pWeights[i]));
    }
    s->useWeights = 1;
    return zanStsOk;
}

template <bool Intra>
ZanStatus init_forward(const Zan8u* pWeights, ZanQuantSpec_MPEG4* pSpec, Zan32s depth) {
    if (!pSpec) return zanStsNullPtr;
    ZanQuantSpec_MPEG4* s = placed(pSpec);
    const Zan32u id = Intra ? ZAN_QUANT_INTRA_SPEC_ID : ZAN_QUANT_INTER_SPEC_ID;
    return fill_record(s, id, depth, pWeights, [s, depth](int i, Zan32s w) {
        if (depth <= 8) {
            s->halfWeights[i] = static_cast<Zan16u>(w / 2);
            s->reciprocals.integer.reciprocal[i] = static_cast<Zan16u>(w == 1 ? 65535 : 65536 / w + 1);
            s->reciprocals.integer.weight[i] = static_cast<Zan16u>(w);
        } else {
            s->halfWeights[i] = static_cast<Zan16u>(w);
            s->reciprocals.real[i] = 1.0f / static_cast<float>(w);
        }
    });
}

template <bool Intra>
ZanStatus init_inverse(const Zan8u* pWeights, ZanQuantInvSpec_MPEG4* pSpec, Zan32s depth) {
    if (!pSpec) return zanStsNullPtr;
    if (depth < 4 || depth > 12) return zanStsOutOfRange;
    ZanQuantInvSpec_MPEG4* s = placed(pSpec);
    const Zan32u id = Intra ? ZAN_QUANT_INV_INTRA_SPEC_ID : ZAN_QUANT_INV_INTER_SPEC_ID;
    return fill_record(s, id, depth, pWeights,
                       [s](int i, Zan32s w) { s->weights[i] = static_cast<Zan16u>(w); });
}

template <bool Intra>
ZanStatus quant_mpeg4(Zan16s* p, const ZanQuantSpec_MPEG4* pSpec, Zan32s QP, Zan32s* pCount, Zan32s chroma) {
    if (!p || !pSpec || !pCount) return zanStsNullPtr;
    const ZanQuantSpec_MPEG4* s = placed(pSpec);
    if (s->identifier != (Intra ? ZAN_QUANT_INTRA_SPEC_ID : ZAN_QUANT_INTER_SPEC_ID)) return zanStsContextMismatch;
    const Zan32s depth = s->sampleDepth;
    if (!qp_fits(depth, QP)) return zanStsQpBad;
    const Limits lim = depth_limits(depth);
    const Zan32s dc = p[0];
    Zan32s nonzero;
    if (s->useWeights) {
        const Zan16u* w = depth <= 8 ? s->reciprocals.integer.weight : s->halfWeights;
        nonzero = kQuantWeighted[Intra](p, w, QP, lim.lo, lim.hi);
    } else {
        nonzero = (depth <= 8 ? kQuant : kQuantFloat)[!Intra](p, QP, lim.lo, lim.hi);
    }
    if (Intra) {
        nonzero -= p[0] != 0;
        Zan32s level = dc_level(dc, QP, dc_scaler(QP, chroma != 0));
        p[0] = static_cast<Zan16s>(level);
        nonzero += level != 0;
    }
    *pCount = nonzero;
    return zanStsOk;
}

template <bool Intra>
ZanStatus quant_inv_mpeg4(Zan16s* p, Zan32s indxLastNonZero, const ZanQuantInvSpec_MPEG4* pSpec, Zan32s QP,
                          Zan32s chroma) {
    if (!p || !pSpec) return zanStsNullPtr;
    const ZanQuantInvSpec_MPEG4* s = placed(pSpec);
    if (s->identifier != (Intra ? ZAN_QUANT_INV_INTRA_SPEC_ID : ZAN_QUANT_INV_INTER_SPEC_ID))
        return zanStsContextMismatch;
    const Zan32s depth = s->sampleDepth;
    if (!qp_fits(depth, QP)) return zanStsQpBad;
    const Limits lim = depth_limits(depth);
    Zan32s count = inverse_count(indxLastNonZero);
    if (!Intra) {
        if (s->useWeights) {
            Zan32s sum = kInvWeighted[0](p, count, s->weights, QP, lim.lo, lim.hi);
            if ((sum & 1) == 0) toggle_lowest_bit(p[63]);
        } else {
            quant_inv_simd(p, count, QP, lim.lo, lim.hi);
        }
        return zanStsOk;
    }
    // The DC is reconstructed apart: the AC kernel's result at position 0 is
    // replaced, and in the weighted sum too.
    const Zan32s dcValue = clamp(p[0] * dc_scaler(QP, chroma != 0), lim.lo, lim.hi);
    if (indxLastNonZero < 1) count = 0;
    if (s->useWeights) {
        Zan32s sum = kInvWeighted[1](p, count, s->weights, QP, lim.lo, lim.hi);
        if (count) sum -= p[0];
        sum += dcValue;
        p[0] = static_cast<Zan16s>(dcValue);
        if (count == 0) {
            if ((dcValue & 1) == 0) p[63] = 1;
        } else if ((sum & 1) == 0) {
            toggle_lowest_bit(p[63]);
        }
    } else {
        quant_inv_simd(p, count, QP, lim.lo, lim.hi);
        p[0] = static_cast<Zan16s>(dcValue);
    }
    return zanStsOk;
}

}  // namespace

const Kernels kernels = {kQuantPairs, kQuantWeightedPairs, kInvPairs, kInvWrapPairs, kInvWeightedPairs};

ZanStatus inv_inter_mpeg4(Zan16s* pSrcDst, Zan32s indxLastNonZero, const ZanQuantInvSpec_MPEG4* pSpec, Zan32s QP) {
    return quant_inv_mpeg4<false>(pSrcDst, indxLastNonZero, pSpec, QP, 0);
}

}  // namespace zan::ZAN_PATH::quant263

// =============================================================== exports

namespace zan::ZAN_PATH {

using namespace zan::quant263;

ZanStatus zaniQuantIntra_H263_16s_C1I(Zan16s* pSrcDst, Zan32s QP, Zan32s* pCountNonZero, Zan32s advIntraFlag,
                                      Zan32s modQuantFlag) {
    if (!pSrcDst) return zanStsNullPtr;
    if (QP < 1 || QP > 31) return zanStsQpBad;
    if (advIntraFlag) {
        const Limits lim = modQuantFlag ? quant263::kNoClip : quant263::kH263Clip;
        Zan32s nonzero = quant263::kQuant[0](pSrcDst, QP, lim.lo, lim.hi);
        if (pCountNonZero) *pCountNonZero = nonzero;
        return zanStsOk;
    }
    const Limits lim = QP < 8 && !modQuantFlag ? quant263::kH263Clip : quant263::kNoClip;
    const Zan32s dc = pSrcDst[0];
    Zan32s nonzero = quant263::kQuant[0](pSrcDst, QP, lim.lo, lim.hi) - (pSrcDst[0] != 0);
    Zan32s level = (dc + 4) >> 3;  // the DC code has no values 0 and 255
    if (level == 0) level = 1;
    else if (level == 255) level = 254;
    pSrcDst[0] = static_cast<Zan16s>(level);
    if (pCountNonZero) *pCountNonZero = nonzero + 1;
    return zanStsOk;
}

ZanStatus zaniQuantInter_H263_16s_C1I(Zan16s* pSrcDst, Zan32s QP, Zan32s* pCountNonZero, Zan32s modQuantFlag) {
    if (!pSrcDst) return zanStsNullPtr;
    if (QP < 1 || QP > 31) return zanStsQpBad;
    const Limits lim = QP < 8 && !modQuantFlag ? quant263::kH263Clip : quant263::kNoClip;
    Zan32s nonzero = quant263::kQuant[1](pSrcDst, QP, lim.lo, lim.hi);
    if (pCountNonZero) *pCountNonZero = nonzero;
    return zanStsOk;
}

ZanStatus zaniQuantInvIntra_H263_16s_C1I(Zan16s* pSrcDst, Zan32s indxLastNonZero, Zan32s QP, Zan32s advIntraFlag,
                                         Zan32s modQuantFlag) {
    if (!pSrcDst) return zanStsNullPtr;
    if (QP < 1 || QP > 31) return zanStsQpBad;
    if (indxLastNonZero < 0) return zanStsOutOfRange;
    (void)modQuantFlag;  // the modified-quantisation reconstruction has the same arithmetic and limits
    const Zan32s count = quant263::inverse_count(indxLastNonZero);
    if (advIntraFlag) {
        quant263::quant_inv_wrap_simd(pSrcDst, count, QP);
        return zanStsOk;
    }
    const Zan32s dc = pSrcDst[0];  // reconstructed apart: the kernel's result at 0 is replaced
    if (indxLastNonZero > 0)
        quant263::quant_inv_simd(pSrcDst, count, QP, quant263::kH263Recon.lo, quant263::kH263Recon.hi);
    pSrcDst[0] = static_cast<Zan16s>(static_cast<Zan16u>(dc * 8));
    return zanStsOk;
}

ZanStatus zaniQuantInvInter_H263_16s_C1I(Zan16s* pSrcDst, Zan32s indxLastNonZero, Zan32s QP, Zan32s modQuantFlag) {
    if (!pSrcDst) return zanStsNullPtr;
    if (QP < 1 || QP > 31) return zanStsQpBad;
    if (indxLastNonZero < 0) return zanStsOutOfRange;
    (void)modQuantFlag;
    quant263::quant_inv_simd(pSrcDst, quant263::inverse_count(indxLastNonZero), QP, quant263::kH263Recon.lo,
                             quant263::kH263Recon.hi);
    return zanStsOk;
}

#define ZAN_QUANT263_GETSIZE(name, size)               \
    ZanStatus name(Zan32s* pSize) {                    \
        if (!pSize) return zanStsNullPtr;              \
        *pSize = size;                                 \
        return zanStsOk;                               \
    }
ZAN_QUANT263_GETSIZE(zaniQuantIntraGetSize_MPEG4, kSpecSize)
ZAN_QUANT263_GETSIZE(zaniQuantInterGetSize_MPEG4, kSpecSize)
ZAN_QUANT263_GETSIZE(zaniQuantInvIntraGetSize_MPEG4, kInvSpecSize)
ZAN_QUANT263_GETSIZE(zaniQuantInvInterGetSize_MPEG4, kInvSpecSize)
#undef ZAN_QUANT263_GETSIZE

ZanStatus zaniQuantIntraInit_MPEG4(const Zan8u* pWeights, ZanQuantSpec_MPEG4* pSpec, Zan32s sampleDepth) {
    return quant263::init_forward<true>(pWeights, pSpec, sampleDepth);
}
ZanStatus zaniQuantInterInit_MPEG4(const Zan8u* pWeights, ZanQuantSpec_MPEG4* pSpec, Zan32s sampleDepth) {
    return quant263::init_forward<false>(pWeights, pSpec, sampleDepth);
}
ZanStatus zaniQuantInvIntraInit_MPEG4(const Zan8u* pWeights, ZanQuantInvSpec_MPEG4* pSpec, Zan32s sampleDepth) {
    return quant263::init_inverse<true>(pWeights, pSpec, sampleDepth);
}
ZanStatus zaniQuantInvInterInit_MPEG4(const Zan8u* pWeights, ZanQuantInvSpec_MPEG4* pSpec, Zan32s sampleDepth) {
    return quant263::init_inverse<false>(pWeights, pSpec, sampleDepth);
}

ZanStatus zaniQuantIntra_MPEG4_16s_C1I(Zan16s* pSrcDst, const ZanQuantSpec_MPEG4* pSpec, Zan32s QP,
                                       Zan32s* pCountNonZero, Zan32s chromaFlag) {
    return quant263::quant_mpeg4<true>(pSrcDst, pSpec, QP, pCountNonZero, chromaFlag);
}
ZanStatus zaniQuantInter_MPEG4_16s_C1I(Zan16s* pSrcDst, const ZanQuantSpec_MPEG4* pSpec, Zan32s QP,
                                       Zan32s* pCountNonZero) {
    return quant263::quant_mpeg4<false>(pSrcDst, pSpec, QP, pCountNonZero, 0);
}
ZanStatus zaniQuantInvIntra_MPEG4_16s_C1I(Zan16s* pSrcDst, Zan32s indxLastNonZero, const ZanQuantInvSpec_MPEG4* pSpec,
                                          Zan32s QP, Zan32s chromaFlag) {
    return quant263::quant_inv_mpeg4<true>(pSrcDst, indxLastNonZero, pSpec, QP, chromaFlag);
}
ZanStatus zaniQuantInvInter_MPEG4_16s_C1I(Zan16s* pSrcDst, Zan32s indxLastNonZero, const ZanQuantInvSpec_MPEG4* pSpec,
                                          Zan32s QP) {
    return quant263::inv_inter_mpeg4(pSrcDst, indxLastNonZero, pSpec, QP);
}

}  // namespace zan::ZAN_PATH
