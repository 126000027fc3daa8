// AVS reconstruction: dequantisation, the 8x8 inverse transform and
// addition (scalar rules and SSE2 kernels), the intra predictors, and the
// macroblock reconstruction wrappers.
#include <emmintrin.h>

#include <cstdint>

#include "avs/avs_tables.h"
#include "avs/avsblock.h"
#include "common/path.h"
#include "common/simd.h"
#include "frame/bodies.h"

namespace zan::ZAN_PATH::avsblock {

using zan::avsblock::InvAddFn;

namespace {

inline Zan32s sat16(Zan32s v) { return v < -32768 ? -32768 : (v > 32767 ? 32767 : v); }
inline Zan8u clamp255(Zan32s v) { return static_cast<Zan8u>(v < 0 ? 0 : (v > 255 ? 255 : v)); }

// ------------------------------------------------------------------ rules

// Dequantised coefficient: (c * scale + 2^(shift-1)) >> shift, saturated to
// 16 bits.
inline Zan32s dequant(Zan32s c, Zan32s scale, Zan32s shift) {
    return sat16((c * scale + (1 << (shift - 1))) >> shift);
}

// The whole block (coefficients at rows and columns below n only: n = 8
// for the full kernel, 4 for the top-left kernel).  Horizontal pass
// H[v][j] = sum_u d[v][u] * T[u][j], kept as (H + 4) >> 3 saturated to 16
// bits; vertical pass R[i][j] = sum_v T[v][i] * H[v][j], residual
// (R + 64) >> 7; output clamp(pred + residual) to 0..255.
template <int N>
void inv_add_rule(const Zan16s* pSrc, Zan8u* pDst, Zan32s dstStep, Zan32s scale, Zan32s shift) {
    Zan32s d[8][8] = {};
    for (int v = 0; v < N; ++v)
        for (int u = 0; u < N; ++u) d[v][u] = dequant(pSrc[v * 8 + u], scale, shift);
    Zan32s h[8][8];
    for (int v = 0; v < 8; ++v)
        for (int j = 0; j < 8; ++j) {
            Zan32s s = 0;
            for (int u = 0; u < 8; ++u) s += d[v][u] * zan::avs::kT8[u][j];
            h[v][j] = sat16((s + 4) >> 3);
        }
    for (int i = 0; i < 8; ++i) {
        Zan8u* row = pDst + static_cast<std::ptrdiff_t>(dstStep) * i;
        for (int j = 0; j < 8; ++j) {
            Zan32s s = 0;
            for (int v = 0; v < 8; ++v) s += zan::avs::kT8[v][i] * h[v][j];
            row[j] = clamp255(row[j] + ((s + 64) >> 7));
        }
    }
}

// DC only: d = dequantised c[0]; residual sat16(8 d + 64) >> 7 for every
// sample.
void inv_add_dc_rule(const Zan16s* pSrc, Zan8u* pDst, Zan32s dstStep, Zan32s scale, Zan32s shift) {
    const Zan32s d = dequant(pSrc[0], scale, shift);
    const Zan32s r = sat16(d * 8 + 64) >> 7;
    for (int i = 0; i < 8; ++i) {
        Zan8u* row = pDst + static_cast<std::ptrdiff_t>(dstStep) * i;
        for (int j = 0; j < 8; ++j) row[j] = clamp255(row[j] + r);
    }
}

// ---------------------------------------------------------------- kernels

// Pair constants (T[m][k], T[m+1][k]) for pmaddwd, m even.
struct PairTable {
    alignas(16) Zan16s v[4][8][8];  // [m/2][k][lane]
};
constexpr PairTable make_pairs() {
    PairTable t{};
    for (int m2 = 0; m2 < 4; ++m2)
        for (int k = 0; k < 8; ++k)
            for (int l = 0; l < 8; l += 2) {
                t.v[m2][k][l] = static_cast<Zan16s>(zan::avs::kT8[2 * m2][k]);
                t.v[m2][k][l + 1] = static_cast<Zan16s>(zan::avs::kT8[2 * m2 + 1][k]);
            }
    return t;
}
constexpr PairTable kPairs = make_pairs();

inline __m128i pair(int m2, int k) { return _mm_load_si128(reinterpret_cast<const __m128i*>(kPairs.v[m2][k])); }

// out[k] = pack16((sum_m T[m][k] * in[m] + round) >> bits), m < N.
template <int N>
inline void pass(const __m128i* in, __m128i* out, __m128i round, int bits) {
    __m128i lo[4], hi[4];
    for (int m2 = 0; m2 < N / 2; ++m2) {
        lo[m2] = _mm_unpacklo_epi16(in[2 * m2], in[2 * m2 + 1]);
        hi[m2] = _mm_unpackhi_epi16(in[2 * m2], in[2 * m2 + 1]);
    }
    const __m128i cnt = _mm_cvtsi32_si128(bits);
    for (int k = 0; k < 8; ++k) {
        __m128i a = _mm_madd_epi16(lo[0], pair(0, k));
        __m128i b = _mm_madd_epi16(hi[0], pair(0, k));
        for (int m2 = 1; m2 < N / 2; ++m2) {
            const __m128i p = pair(m2, k);
            a = _mm_add_epi32(a, _mm_madd_epi16(lo[m2], p));
            b = _mm_add_epi32(b, _mm_madd_epi16(hi[m2], p));
        }
        a = _mm_sra_epi32(_mm_add_epi32(a, round), cnt);
        b = _mm_sra_epi32(_mm_add_epi32(b, round), cnt);
        out[k] = _mm_packs_epi32(a, b);
    }
}

inline void transpose8(const __m128i* in, __m128i* out) { simd::transpose8x8_epi16(in, out); }

// Eight 16-bit coefficients dequantised: the product c * scale in 32 bits
// (scale, 32768..65535 as in every row of the table, is taken as
// scale - 65536 with c added to the high half), rounded, shifted and packed
// with saturation.
inline __m128i dequant8(__m128i c, __m128i scaleLo, __m128i round, __m128i cnt) {
    const __m128i lo = _mm_mullo_epi16(c, scaleLo);
    const __m128i hi = _mm_add_epi16(_mm_mulhi_epi16(c, scaleLo), c);
    const __m128i p0 = _mm_sra_epi32(_mm_add_epi32(_mm_unpacklo_epi16(lo, hi), round), cnt);
    const __m128i p1 = _mm_sra_epi32(_mm_add_epi32(_mm_unpackhi_epi16(lo, hi), round), cnt);
    return _mm_packs_epi32(p0, p1);
}

template <int N>
void inv_add_sse2(const Zan16s* pSrc, Zan8u* pDst, Zan32s dstStep, Zan32s scale, Zan32s shift) {
    const __m128i scaleLo = _mm_set1_epi16(static_cast<Zan16s>(static_cast<Zan16u>(scale)));
    const __m128i round = _mm_set1_epi32(1 << (shift - 1));
    const __m128i cnt = _mm_cvtsi32_si128(shift);
    __m128i rows[8], cols[8];
    for (int v = 0; v < 8; ++v) rows[v] = _mm_setzero_si128();
    for (int v = 0; v < N; ++v) {
        const __m128i c = N == 8 ? _mm_loadu_si128(reinterpret_cast<const __m128i*>(pSrc + v * 8))
                                 : _mm_loadl_epi64(reinterpret_cast<const __m128i*>(pSrc + v * 8));
        rows[v] = dequant8(c, scaleLo, round, cnt);
    }
    transpose8(rows, cols);  // cols[u]: d[.][u]
    __m128i hcol[8], hrow[8], res[8];
    pass<N>(cols, hcol, _mm_set1_epi32(4), 3);  // hcol[j]: H[.][j]
    transpose8(hcol, hrow);                     // hrow[v]: H[v][.]
    pass<N>(hrow, res, _mm_set1_epi32(64), 7);  // res[i]: R[i][.]
    const __m128i zero = _mm_setzero_si128();
    for (int i = 0; i < 8; ++i) {
        Zan8u* row = pDst + static_cast<std::ptrdiff_t>(dstStep) * i;
        const __m128i p = _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(row)), zero);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(row), _mm_packus_epi16(_mm_adds_epi16(p, res[i]), zero));
    }
}

void inv_add_dc_sse2(const Zan16s* pSrc, Zan8u* pDst, Zan32s dstStep, Zan32s scale, Zan32s shift) {
    const Zan32s d = dequant(pSrc[0], scale, shift);
    const Zan32s r = sat16(d * 8 + 64) >> 7;  // -256..255
    const __m128i zero = _mm_setzero_si128();
    const __m128i add = _mm_set1_epi16(static_cast<Zan16s>(r));
    for (int i = 0; i < 8; ++i) {
        Zan8u* row = pDst + static_cast<std::ptrdiff_t>(dstStep) * i;
        const __m128i p = _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(row)), zero);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(row), _mm_packus_epi16(_mm_add_epi16(p, add), zero));
    }
}

constexpr KernelPair<InvAddFn> kInvAdd[] = {
    {"avs_dequant_transform_add_8x8_2", inv_add_rule<8>, inv_add_sse2<8>, 8, 8, 0},
    {"avs_dequant_transform_add_8x8_0", inv_add_dc_rule, inv_add_dc_sse2, 8, 8, 1},
    {"avs_dequant_transform_add_8x8_1", inv_add_rule<4>, inv_add_sse2<4>, 8, 8, 2},
};

}  // namespace

const zan::avsblock::Kernels kernels{kInvAdd};

}  // namespace zan::ZAN_PATH::avsblock

namespace zan::ZAN_PATH {

void zaniTransformQuantAdd8x8Inv_AVS_16s_C1(const Zan16s* pSrc, Zan8u* pDst, Zan32s dstStep, Zan32s numCoeff,
                                            Zan32s QP) {
    const Zan32s scale = zan::avs::kDequant[QP][0], shift = zan::avs::kDequant[QP][1];
    if (numCoeff == 1)
        avsblock::inv_add_dc_sse2(pSrc, pDst, dstStep, scale, shift);
    else if (numCoeff >= 2 && numCoeff <= 10)
        avsblock::inv_add_sse2<4>(pSrc, pDst, dstStep, scale, shift);
    else
        avsblock::inv_add_sse2<8>(pSrc, pDst, dstStep, scale, shift);
}

}  // namespace zan::ZAN_PATH
