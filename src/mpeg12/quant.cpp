// MPEG-2 forward and inverse quantisation of one 8x8 block in place.
//
// Forward, with a matrix of reciprocal weights M (single precision, in this
// order): s = 16.0f / QP; f = (x * s) * M[i]; truncate toward zero to 32 bits
// (a value outside the 32-bit range, or NaN, gives -2^31 as the processor's
// conversion does); saturate to 16 bits; clamp to -2047..2047.
// Forward, non-intra without a matrix, QP >= 2: r = (QP / 2 + 65536) / QP;
// each value becomes sign(x) * min(2047, (min(|x|, 32767) * r) >> 16).
//
// Inverse, all in 16-bit lanes (products keep their low 16 bits, additions
// marked "sat" saturate), each followed by mismatch control:
//   intra         p = x * QP; p = p * W[i]; x < 0: p = sat(p + 15); p >> 4;
//                 entry 0 keeps its input
//   non-intra W   wq = W[i] * QP; p = x * wq; h = x != 0 ? wq >> 1 (unsigned) : 0;
//                 p < 0: h = -h; q = sat(p + h); p < 0: q = sat(q + 15); q >> 4
//   non-intra     t = sat(2x + sign(x)); t = t * QP; x < 0: t = sat(t + 1);
//                 t >> 1; clamp to -2048..2047
//   mismatch      eight saturating lane sums (lane j adds entries j, j + 8, ...
//                 in order), the upper four added (saturating) onto the lower
//                 four; when an even number of those four is odd, entry 63
//                 flips its low bit (odd goes down by 1, even up by 1).
#include <cstdint>

#include "common/scalar.h"
#include "common/simd.h"
#include "frame/bodies.h"
#include "mpeg12/mpeg12.h"

namespace zan::ZAN_PATH::mpeg12 {
namespace {

using namespace zan::mpeg12;

// Reciprocals of the default intra weighting matrix of MPEG-2, raster order,
// rounded to six decimals.
alignas(16) constexpr Zan32f kMatrix[64] = {
    0.125000f, 0.062500f, 0.052632f, 0.045455f, 0.038462f, 0.037037f, 0.034483f, 0.029412f,
    0.062500f, 0.062500f, 0.045455f, 0.041667f, 0.037037f, 0.034483f, 0.029412f, 0.027027f,
    0.052632f, 0.045455f, 0.038462f, 0.037037f, 0.034483f, 0.029412f, 0.029412f, 0.026316f,
    0.045455f, 0.045455f, 0.038462f, 0.037037f, 0.034483f, 0.029412f, 0.027027f, 0.025000f,
    0.045455f, 0.038462f, 0.037037f, 0.034483f, 0.031250f, 0.028571f, 0.025000f, 0.020833f,
    0.038462f, 0.037037f, 0.034483f, 0.031250f, 0.028571f, 0.025000f, 0.020833f, 0.017241f,
    0.038462f, 0.037037f, 0.034483f, 0.029412f, 0.026316f, 0.021739f, 0.017857f, 0.014493f,
    0.037037f, 0.034483f, 0.028571f, 0.026316f, 0.021739f, 0.017857f, 0.014493f, 0.012048f};

// ============================================================ scalar rules

inline Zan32s sat16(Zan32s v) { return v < -32768 ? -32768 : v > 32767 ? 32767 : v; }
inline Zan32s clamp(Zan32s v, Zan32s lo, Zan32s hi) { return v < lo ? lo : v > hi ? hi : v; }
inline Zan16s lo16(Zan32s v) { return static_cast<Zan16s>(v); }
// Low 16 bits of a product, as a signed value.
inline Zan16s mul16(Zan32s a, Zan32s b) {
    return static_cast<Zan16s>(static_cast<Zan32u>(a) * static_cast<Zan32u>(b));
}

// Truncation toward zero to 32 bits; out of range or NaN gives -2^31.
inline Zan32s trunc32(Zan32f f) {
    if (f >= -2147483648.0f && f < 2147483648.0f) return static_cast<Zan32s>(f);
    return INT32_MIN;
}

inline Zan16s quant_float(Zan16s x, Zan32f s, Zan32f m) {
    Zan32f f = (static_cast<Zan32f>(x) * s) * m;
    return static_cast<Zan16s>(clamp(sat16(trunc32(f)), -2047, 2047));
}

// Intra: entries 1..63, counted.
Zan32s quant_intra_rule(Zan16s* p, Zan32s QP, const Zan32f* M) {
    const Zan32f s = 16.0f / static_cast<Zan32f>(QP);
    Zan32s count = 0;
    for (int i = 1; i < 64; ++i) {
        p[i] = quant_float(p[i], s, M[i]);
        count += p[i] != 0;
    }
    return count;
}

// Non-intra with a matrix: all 64 entries, counted.
Zan32s quant_inter_rule(Zan16s* p, Zan32s QP, const Zan32f* M) {
    const Zan32f s = 16.0f / static_cast<Zan32f>(QP);
    Zan32s count = 0;
    for (int i = 0; i < 64; ++i) {
        p[i] = quant_float(p[i], s, M[i]);
        count += p[i] != 0;
    }
    return count;
}

// Non-intra without a matrix, QP >= 2.
Zan32s quant_int_rule(Zan16s* p, Zan32s QP, const Zan32f*) {
    const Zan32u r = static_cast<Zan16u>((QP / 2 + 65536) / QP);
    Zan32s count = 0;
    for (int i = 0; i < 64; ++i) {
        const Zan32s x = p[i];
        const Zan32u a = static_cast<Zan32u>(x < -32767 ? 32767 : x < 0 ? -x : x);
        const Zan32s q = static_cast<Zan32s>((a * r) >> 16);
        const Zan32s v = q > 2047 ? 2047 : q;
        p[i] = static_cast<Zan16s>(x < 0 ? -v : x > 0 ? v : 0);
        count += p[i] != 0;
    }
    return count;
}

Zan32s count_rule(const Zan16s* p) {
    Zan32s zeros = 0;
    for (int i = 0; i < 64; ++i) zeros += p[i] == 0;
    return 64 - zeros;
}

void mismatch_rule(Zan16s* p) {
    Zan32s acc[8] = {};
    for (int k = 0; k < 8; ++k)
        for (int j = 0; j < 8; ++j) acc[j] = sat16(acc[j] + p[8 * k + j]);
    Zan32s odd = 0;
    for (int j = 0; j < 4; ++j) odd += sat16(acc[j] + acc[j + 4]) & 1;
    if ((odd & 1) == 0) p[63] = static_cast<Zan16s>(p[63] ^ 1);
}

void inv_intra_rule(Zan16s* p, Zan32s QP, const Zan16s* W) {
    for (int i = 1; i < 64; ++i) {
        const Zan32s x = p[i];
        Zan32s v = mul16(mul16(x, QP), W[i]);
        if (x < 0) v = sat16(v + 15);
        p[i] = static_cast<Zan16s>(v >> 4);
    }
    mismatch_rule(p);
}

void inv_matrix_rule(Zan16s* p, Zan32s QP, const Zan16s* W) {
    for (int i = 0; i < 64; ++i) {
        const Zan32s x = p[i];
        const Zan16s wq = mul16(W[i], QP);
        const Zan32s v = mul16(x, wq);
        Zan32s h = x != 0 ? static_cast<Zan16u>(wq) >> 1 : 0;
        if (v < 0) h = -h;
        Zan32s q = sat16(v + h);
        if (v < 0) q = sat16(q + 15);
        p[i] = static_cast<Zan16s>(q >> 4);
    }
    mismatch_rule(p);
}

void inv_flat_rule(Zan16s* p, Zan32s QP, const Zan16s*) {
    for (int i = 0; i < 64; ++i) {
        const Zan32s x = p[i];
        Zan32s t = sat16(2 * x + (x > 0) - (x < 0));
        t = mul16(t, QP);
        if (x < 0) t = sat16(t + 1);
        p[i] = static_cast<Zan16s>(clamp(t >> 1, -2048, 2047));
    }
    mismatch_rule(p);
}

// ========================================================== vector kernels

template <bool A>
inline __m128i ld(const void* p) {
    if constexpr (A) return simd::load16a(p);
    return simd::load16(p);
}
template <bool A>
inline __m128 ldf(const Zan32f* p) {
    if constexpr (A) return _mm_load_ps(p);
    return _mm_loadu_ps(p);
}
template <bool A>
inline void st(void* p, __m128i v) {
    if constexpr (A) _mm_store_si128(static_cast<__m128i*>(p), v);
    else simd::store16(p, v);
}

// Eight coefficients through the float rule.
template <bool A>
inline __m128i quant8_float(__m128i x, __m128 s, const Zan32f* m) {
    __m128i lo = _mm_srai_epi32(_mm_unpacklo_epi16(x, x), 16);
    __m128i hi = _mm_srai_epi32(_mm_unpackhi_epi16(x, x), 16);
    __m128 flo = _mm_mul_ps(_mm_mul_ps(_mm_cvtepi32_ps(lo), s), ldf<A>(m));
    __m128 fhi = _mm_mul_ps(_mm_mul_ps(_mm_cvtepi32_ps(hi), s), ldf<A>(m + 4));
    __m128i q = _mm_packs_epi32(_mm_cvttps_epi32(flo), _mm_cvttps_epi32(fhi));
    return _mm_max_epi16(_mm_min_epi16(q, _mm_set1_epi16(2047)), _mm_set1_epi16(-2047));
}

// Number of zero lanes of v added to the 16-bit lane counters in zeros
// (as negative counts).
inline __m128i count_zeros(__m128i zeros, __m128i v) {
    return _mm_add_epi16(zeros, _mm_cmpeq_epi16(v, _mm_setzero_si128()));
}
// 64 minus the zero lanes counted (negatively) in zeros.
inline Zan32s nonzero_from(__m128i zeros) {
    __m128i s = _mm_madd_epi16(zeros, _mm_set1_epi16(1));
    return 64 + simd::hsum_epi32(s);
}

template <bool A, bool Intra>
Zan32s quant_float_simd(Zan16s* p, Zan32s QP, const Zan32f* M) {
    const __m128 s = _mm_set1_ps(16.0f / static_cast<Zan32f>(QP));
    const Zan16s x0 = p[0];
    __m128i zeros = _mm_setzero_si128();
    for (int i = 0; i < 64; i += 8) {
        __m128i q = quant8_float<A>(ld<A>(p + i), s, M + i);
        if (Intra && i == 0) q = _mm_insert_epi16(q, x0, 0);
        st<A>(p + i, q);
        zeros = count_zeros(zeros, q);
    }
    return Intra ? nonzero_from(zeros) - (x0 != 0) : nonzero_from(zeros);
}

template <bool A>
Zan32s quant_int_simd(Zan16s* p, Zan32s QP, const Zan32f*) {
    const __m128i r = _mm_set1_epi16(static_cast<Zan16s>((QP / 2 + 65536) / QP));
    const __m128i lim = _mm_set1_epi16(2047), floor = _mm_set1_epi16(-32767);
    __m128i zeros = _mm_setzero_si128();
    for (int i = 0; i < 64; i += 8) {
        __m128i x = ld<A>(p + i);
        __m128i a = _mm_abs_epi16(_mm_max_epi16(x, floor));
        __m128i q = _mm_min_epi16(_mm_mulhi_epu16(a, r), lim);
        q = _mm_sign_epi16(q, x);
        st<A>(p + i, q);
        zeros = count_zeros(zeros, q);
    }
    return nonzero_from(zeros);
}

template <bool A>
Zan32s count_simd(const Zan16s* p) {
    __m128i zeros = _mm_setzero_si128();
    for (int i = 0; i < 64; i += 8) zeros = count_zeros(zeros, ld<A>(p + i));
    return nonzero_from(zeros);
}

// Rows 0..6 of the result are stored as they come, summed into saturating
// lane accumulators; row 7 waits for mismatch control.  row(k, x) gives
// result row k from input row x.
template <bool A, class Row>
inline void rows_with_mismatch(Zan16s* p, Row row) {
    __m128i acc = _mm_setzero_si128(), r = _mm_setzero_si128();
    for (int k = 0; k < 8; ++k) {
        r = row(k, ld<A>(p + 8 * k));
        acc = _mm_adds_epi16(acc, r);
        if (k < 7) st<A>(p + 8 * k, r);
    }
    acc = _mm_adds_epi16(acc, _mm_srli_si128(acc, 8));
    __m128i odd = _mm_and_si128(acc, _mm_set1_epi16(1));
    odd = _mm_xor_si128(odd, _mm_srli_si128(odd, 4));
    odd = _mm_xor_si128(odd, _mm_srli_si128(odd, 2));
    // Lane 0 of odd is the parity of the count of odd lanes; an even count
    // flips the low bit of entry 63.
    const Zan32s flip = (_mm_cvtsi128_si32(odd) & 1) ^ 1;
    st<A>(p + 56, _mm_xor_si128(r, _mm_slli_si128(_mm_cvtsi32_si128(flip), 14)));
}

template <bool A>
void inv_intra_simd(Zan16s* p, Zan32s QP, const Zan16s* W) {
    const __m128i qp = _mm_set1_epi16(static_cast<Zan16s>(QP)), fifteen = _mm_set1_epi16(15);
    const Zan16s x0 = p[0];
    rows_with_mismatch<A>(p, [&](int k, __m128i x) {
        __m128i v = _mm_mullo_epi16(_mm_mullo_epi16(x, qp), ld<A>(W + 8 * k));
        v = _mm_adds_epi16(v, _mm_and_si128(_mm_srai_epi16(x, 15), fifteen));
        v = _mm_srai_epi16(v, 4);
        return k == 0 ? _mm_insert_epi16(v, x0, 0) : v;
    });
}

template <bool A>
void inv_matrix_simd(Zan16s* p, Zan32s QP, const Zan16s* W) {
    const __m128i qp = _mm_set1_epi16(static_cast<Zan16s>(QP)), fifteen = _mm_set1_epi16(15);
    const __m128i zero = _mm_setzero_si128();
    rows_with_mismatch<A>(p, [&](int k, __m128i x) {
        __m128i wq = _mm_mullo_epi16(ld<A>(W + 8 * k), qp);
        __m128i v = _mm_mullo_epi16(x, wq);
        __m128i h = _mm_andnot_si128(_mm_cmpeq_epi16(x, zero), _mm_srli_epi16(wq, 1));
        __m128i neg = _mm_srai_epi16(v, 15);
        h = _mm_sub_epi16(_mm_xor_si128(h, neg), neg);
        __m128i q = _mm_adds_epi16(v, h);
        q = _mm_adds_epi16(q, _mm_and_si128(neg, fifteen));
        return _mm_srai_epi16(q, 4);
    });
}

template <bool A>
void inv_flat_simd(Zan16s* p, Zan32s QP, const Zan16s*) {
    const __m128i qp = _mm_set1_epi16(static_cast<Zan16s>(QP)), one = _mm_set1_epi16(1);
    const __m128i lo = _mm_set1_epi16(-2048), hi = _mm_set1_epi16(2047);
    rows_with_mismatch<A>(p, [&](int, __m128i x) {
        __m128i t = _mm_adds_epi16(_mm_adds_epi16(x, x), _mm_sign_epi16(one, x));
        t = _mm_mullo_epi16(t, qp);
        t = _mm_adds_epi16(t, _mm_and_si128(_mm_srai_epi16(x, 15), one));
        t = _mm_srai_epi16(t, 1);
        return _mm_max_epi16(_mm_min_epi16(t, hi), lo);
    });
}

// ===================================================== kernel tables
// Indexed by 1 when every pointer is 16-byte aligned, else 0.

constexpr QuantFn kQuantIntra[2] = {quant_float_simd<false, true>, quant_float_simd<true, true>};
constexpr QuantFn kQuantInter[2] = {quant_float_simd<false, false>, quant_float_simd<true, false>};
constexpr QuantFn kQuantInt[2] = {quant_int_simd<false>, quant_int_simd<true>};
constexpr CountFn kCount[2] = {count_simd<false>, count_simd<true>};
constexpr InvQuantFn kInvIntra[2] = {inv_intra_simd<false>, inv_intra_simd<true>};
constexpr InvQuantFn kInvMatrix[2] = {inv_matrix_simd<false>, inv_matrix_simd<true>};
constexpr InvQuantFn kInvFlat[2] = {inv_flat_simd<false>, inv_flat_simd<true>};

inline int aligned(const void* a, const void* b) {
    return ((reinterpret_cast<std::uintptr_t>(a) | reinterpret_cast<std::uintptr_t>(b)) & 15) == 0;
}

// ============================================================= catalogue

constexpr KernelPair<QuantFn> kQuantPairs[] = {
    {"quant_intra_mpeg2", quant_intra_rule, quant_float_simd<false, true>, 1, 1, 0},
    {"quant_intra_mpeg2_a16", quant_intra_rule, quant_float_simd<true, true>, 1, 1, 16},
    {"quant_mpeg2", quant_inter_rule, quant_float_simd<false, false>, 0, 1, 0},
    {"quant_mpeg2_a16", quant_inter_rule, quant_float_simd<true, false>, 0, 1, 16},
    {"quant_mpeg2_int", quant_int_rule, quant_int_simd<false>, 0, 0, 0},
    {"quant_mpeg2_int_a16", quant_int_rule, quant_int_simd<true>, 0, 0, 16},
};
constexpr KernelPair<InvQuantFn> kInvPairs[] = {
    {"quantinv_intra_mpeg2", inv_intra_rule, inv_intra_simd<false>, 1, 1, 0},
    {"quantinv_intra_mpeg2_a16", inv_intra_rule, inv_intra_simd<true>, 1, 1, 16},
    {"quantinv_mpeg2", inv_matrix_rule, inv_matrix_simd<false>, 0, 1, 0},
    {"quantinv_mpeg2_a16", inv_matrix_rule, inv_matrix_simd<true>, 0, 1, 16},
    {"quantinv_mpeg2_flat", inv_flat_rule, inv_flat_simd<false>, 0, 0, 0},
    {"quantinv_mpeg2_flat_a16", inv_flat_rule, inv_flat_simd<true>, 0, 0, 16},
};
constexpr KernelPair<CountFn> kCountPairs[] = {
    {"mpeg2_get_number_of_coeffs", count_rule, count_simd<false>, 0, 0, 0},
    {"mpeg2_get_number_of_coeffs_a16", count_rule, count_simd<true>, 0, 0, 16},
};

}  // namespace

const QuantKernels quant_kernels = {kQuantPairs, kInvPairs, kCountPairs};

}  // namespace zan::ZAN_PATH::mpeg12

// =============================================================== exports

namespace zan::ZAN_PATH {

ZanStatus zaniQuantIntra_MPEG2_16s_C1I(Zan16s* pSrcDst, Zan32s QP, const Zan32f* pInvQuantMatrix, Zan32s* pCount) {
    using namespace mpeg12;
    if (!pSrcDst || !pCount) return zanStsNullPtr;
    if (QP == 0) return zanStsDivByZero;
    const Zan32f* M = pInvQuantMatrix ? pInvQuantMatrix : kMatrix;
    *pCount = kQuantIntra[aligned(pSrcDst, M)](pSrcDst, QP, M);
    return zanStsOk;
}

ZanStatus zaniQuant_MPEG2_16s_C1I(Zan16s* pSrcDst, Zan32s QP, const Zan32f* pInvQuantMatrix, Zan32s* pCount) {
    using namespace mpeg12;
    if (!pSrcDst || !pCount) return zanStsNullPtr;
    if (QP == 0) return zanStsDivByZero;
    if (pInvQuantMatrix)
        *pCount = kQuantInter[aligned(pSrcDst, pInvQuantMatrix)](pSrcDst, QP, pInvQuantMatrix);
    else if (QP >= 2)
        *pCount = kQuantInt[aligned(pSrcDst, pSrcDst)](pSrcDst, QP, nullptr);
    else
        *pCount = kCount[aligned(pSrcDst, pSrcDst)](pSrcDst);
    return zanStsOk;
}

ZanStatus zaniQuantInvIntra_MPEG2_16s_C1I(Zan16s* pSrcDst, Zan32s QP, const Zan16s* pQuantMatrix) {
    using namespace mpeg12;
    if (!pSrcDst || !pQuantMatrix) return zanStsNullPtr;
    kInvIntra[aligned(pSrcDst, pQuantMatrix)](pSrcDst, QP, pQuantMatrix);
    return zanStsOk;
}

ZanStatus zaniQuantInv_MPEG2_16s_C1I(Zan16s* pSrcDst, Zan32s QP, const Zan16s* pQuantMatrix) {
    using namespace mpeg12;
    if (!pSrcDst) return zanStsNullPtr;
    if (pQuantMatrix)
        kInvMatrix[aligned(pSrcDst, pQuantMatrix)](pSrcDst, QP, pQuantMatrix);
    else
        kInvFlat[aligned(pSrcDst, pSrcDst)](pSrcDst, QP, nullptr);
    return zanStsOk;
}

}  // namespace zan::ZAN_PATH
