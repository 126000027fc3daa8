// AVS quarter-sample luma interpolation and weighted prediction: scalar
// rules, SSE2/SSSE3 kernels, kernel tables, catalogue and the exported
// wrappers.
//
// Luma positions are numbered dy * 4 + dx: G a b c d e f g h i j k n p q r.
// With A the integer samples, the standard's filters are
//   half:     F2 = (-1, 5, 5, -1) over A[-1..2]           b, h: (F2 + 4) >> 3
//   quarter:  F4 = (-1, -2, 96, 42, -7) over A[-2..2]     a, d: (F4 + 64) >> 7
//             its mirror (-7, 42, 96, -2, -1) over A[-1..3] c, n
//   j:  F2 across of F2 down                               (x + 32) >> 6
//   f, q:  F4 (mirror for q) down of the unrounded b        (x + 512) >> 10
//   i, k:  F4 (mirror for k) across of the unrounded h      (x + 512) >> 10
//   e, g, p, r:  (j unrounded + 64 * the nearest integer sample + 64) >> 7,
//                the sample at (0,0), (1,0), (0,1), (1,1) respectively
// each clamped to 0..255.  All sums are exact (no rounding between the
// passes), so the two-dimensional positions are separable sums.
#include <emmintrin.h>
#include <tmmintrin.h>

#include <cstddef>

#include "avs/avsinter.h"
#include "common/path.h"
#include "frame/bodies.h"
#include "h264/h264interp.h"

namespace zan::ZAN_PATH::avsinter {

using zan::avsinter::LumaFn;
using zan::avsinter::WeightFn;

namespace {

inline Zan8u clamp255(Zan32s v) { return static_cast<Zan8u>(v < 0 ? 0 : (v > 255 ? 255 : v)); }
inline const Zan8u* at(const Zan8u* p, Zan32s step, Zan32s y, Zan32s x) {
    return p + static_cast<std::ptrdiff_t>(step) * y + x;
}

constexpr Zan32s kF2[4] = {-1, 5, 5, -1};           // over offsets -1..2
constexpr Zan32s kF4[5] = {-1, -2, 96, 42, -7};     // over offsets -2..2
constexpr Zan32s kF4m[5] = {-7, 42, 96, -2, -1};    // over offsets -1..3

// ------------------------------------------------------------------ rules

// One sample of a position at (x, y) of the source.
Zan32s sample(const Zan8u* s, Zan32s st, Zan32s pos, Zan32s y, Zan32s x) {
    auto A = [&](Zan32s yy, Zan32s xx) { return static_cast<Zan32s>(*at(s, st, yy, xx)); };
    auto b1 = [&](Zan32s yy, Zan32s xx) {  // unrounded horizontal half sample right of (yy, xx)
        Zan32s v = 0;
        for (int k = 0; k < 4; ++k) v += kF2[k] * A(yy, xx - 1 + k);
        return v;
    };
    auto h1 = [&](Zan32s yy, Zan32s xx) {  // unrounded vertical half sample below (yy, xx)
        Zan32s v = 0;
        for (int k = 0; k < 4; ++k) v += kF2[k] * A(yy - 1 + k, xx);
        return v;
    };
    auto j1 = [&](Zan32s yy, Zan32s xx) {
        Zan32s v = 0;
        for (int k = 0; k < 4; ++k) v += kF2[k] * h1(yy, xx - 1 + k);
        return v;
    };
    Zan32s v = 0;
    switch (pos) {
        case 0: return A(y, x);
        case 1: for (int k = 0; k < 5; ++k) v += kF4[k] * A(y, x - 2 + k); return clamp255((v + 64) >> 7);
        case 2: return clamp255((b1(y, x) + 4) >> 3);
        case 3: for (int k = 0; k < 5; ++k) v += kF4m[k] * A(y, x - 1 + k); return clamp255((v + 64) >> 7);
        case 4: for (int k = 0; k < 5; ++k) v += kF4[k] * A(y - 2 + k, x); return clamp255((v + 64) >> 7);
        case 8: return clamp255((h1(y, x) + 4) >> 3);
        case 12: for (int k = 0; k < 5; ++k) v += kF4m[k] * A(y - 1 + k, x); return clamp255((v + 64) >> 7);
        case 10: return clamp255((j1(y, x) + 32) >> 6);
        case 6: for (int k = 0; k < 5; ++k) v += kF4[k] * b1(y - 2 + k, x); return clamp255((v + 512) >> 10);
        case 14: for (int k = 0; k < 5; ++k) v += kF4m[k] * b1(y - 1 + k, x); return clamp255((v + 512) >> 10);
        case 9: for (int k = 0; k < 5; ++k) v += kF4[k] * h1(y, x - 2 + k); return clamp255((v + 512) >> 10);
        case 11: for (int k = 0; k < 5; ++k) v += kF4m[k] * h1(y, x - 1 + k); return clamp255((v + 512) >> 10);
        case 5: return clamp255((j1(y, x) + 64 * A(y, x) + 64) >> 7);
        case 7: return clamp255((j1(y, x) + 64 * A(y, x + 1) + 64) >> 7);
        case 13: return clamp255((j1(y, x) + 64 * A(y + 1, x) + 64) >> 7);
        default: return clamp255((j1(y, x) + 64 * A(y + 1, x + 1) + 64) >> 7);
    }
}

template <int W, int POS>
void luma_rule(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep, Zan32s height) {
    for (Zan32s y = 0; y < height; ++y)
        for (Zan32s x = 0; x < W; ++x)
            pDst[static_cast<std::ptrdiff_t>(dstStep) * y + x] = static_cast<Zan8u>(sample(pSrc, srcStep, POS, y, x));
}

// ---------------------------------------------------------------- kernels

inline __m128i load8u16(const Zan8u* p) {
    return _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)), _mm_setzero_si128());
}
inline __m128i loadu16(const Zan16s* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
inline void store8(Zan8u* p, __m128i v16) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_packus_epi16(v16, v16));
}
inline __m128i mul(__m128i v, Zan32s t) { return _mm_mullo_epi16(v, _mm_set1_epi16(static_cast<Zan16s>(t))); }

// F2 over four 16-bit vectors (offsets -1..2): -a + 5 (b + c) - d.
inline __m128i f2(__m128i a, __m128i b, __m128i c, __m128i d) {
    return _mm_sub_epi16(mul(_mm_add_epi16(b, c), 5), _mm_add_epi16(a, d));
}

// F4 over five vectors of 8-bit samples widened to 16 bits (offsets -2..2
// or, mirrored, -1..3), rounded (x + 64) >> 7 and clamped: the sum lies in
// -2550..35190, so it is offset by 2560 into the unsigned range, shifted
// logically and the offset's 20 taken back with a floor at 0.
inline __m128i f4_round7(__m128i m2, __m128i m1, __m128i c0, __m128i p1, __m128i p2) {
    __m128i s = _mm_add_epi16(mul(c0, 96), mul(p1, 42));
    s = _mm_sub_epi16(s, _mm_add_epi16(_mm_add_epi16(m2, _mm_add_epi16(m1, m1)), mul(p2, 7)));
    s = _mm_srli_epi16(_mm_add_epi16(s, _mm_set1_epi16(2560 + 64)), 7);
    return _mm_subs_epu16(s, _mm_set1_epi16(20));
}

// F4 of five 16-bit vectors in 32 bits (pairs through pmaddwd), rounded
// (x + 512) >> 10, packed with saturation.
inline __m128i f4_round10(__m128i m2, __m128i m1, __m128i c0, __m128i p1, __m128i p2, bool mirror) {
    const __m128i t01 = mirror ? _mm_set_epi16(42, -7, 42, -7, 42, -7, 42, -7) : _mm_set_epi16(-2, -1, -2, -1, -2, -1, -2, -1);
    const __m128i t23 = mirror ? _mm_set_epi16(-2, 96, -2, 96, -2, 96, -2, 96) : _mm_set_epi16(42, 96, 42, 96, 42, 96, 42, 96);
    const __m128i t4 = mirror ? _mm_set_epi16(0, -1, 0, -1, 0, -1, 0, -1) : _mm_set_epi16(0, -7, 0, -7, 0, -7, 0, -7);
    const __m128i zero = _mm_setzero_si128(), rnd = _mm_set1_epi32(512);
    __m128i lo = _mm_madd_epi16(_mm_unpacklo_epi16(m2, m1), t01);
    __m128i hi = _mm_madd_epi16(_mm_unpackhi_epi16(m2, m1), t01);
    lo = _mm_add_epi32(lo, _mm_madd_epi16(_mm_unpacklo_epi16(c0, p1), t23));
    hi = _mm_add_epi32(hi, _mm_madd_epi16(_mm_unpackhi_epi16(c0, p1), t23));
    lo = _mm_add_epi32(lo, _mm_madd_epi16(_mm_unpacklo_epi16(p2, zero), t4));
    hi = _mm_add_epi32(hi, _mm_madd_epi16(_mm_unpackhi_epi16(p2, zero), t4));
    lo = _mm_srai_epi32(_mm_add_epi32(lo, rnd), 10);
    hi = _mm_srai_epi32(_mm_add_epi32(hi, rnd), 10);
    return _mm_packs_epi32(lo, hi);
}

// Unrounded vertical half samples (F2 down) of 8 columns from x of row y.
inline __m128i hcol(const Zan8u* s, Zan32s st, Zan32s y, Zan32s x) {
    return f2(load8u16(at(s, st, y - 1, x)), load8u16(at(s, st, y, x)), load8u16(at(s, st, y + 1, x)),
              load8u16(at(s, st, y + 2, x)));
}
// Unrounded horizontal half samples (F2 across) of 8 columns from x of row y.
inline __m128i brow(const Zan8u* s, Zan32s st, Zan32s y, Zan32s x) {
    return f2(load8u16(at(s, st, y, x - 1)), load8u16(at(s, st, y, x)), load8u16(at(s, st, y, x + 1)),
              load8u16(at(s, st, y, x + 2)));
}

// Eight output samples of a one-dimensional position POS; A(dy, dx) gives
// the eight source samples at that offset as 16-bit lanes.
template <int POS, class Loader>
inline __m128i one_d(Loader A) {
    static_assert(POS == 1 || POS == 2 || POS == 3 || POS == 4 || POS == 8 || POS == 12);
    if constexpr (POS == 1) return f4_round7(A(0, -2), A(0, -1), A(0, 0), A(0, 1), A(0, 2));
    if constexpr (POS == 3) return f4_round7(A(0, 3), A(0, 2), A(0, 1), A(0, 0), A(0, -1));
    if constexpr (POS == 4) return f4_round7(A(-2, 0), A(-1, 0), A(0, 0), A(1, 0), A(2, 0));
    if constexpr (POS == 12) return f4_round7(A(3, 0), A(2, 0), A(1, 0), A(0, 0), A(-1, 0));
    if constexpr (POS == 2)
        return _mm_srai_epi16(_mm_add_epi16(f2(A(0, -1), A(0, 0), A(0, 1), A(0, 2)), _mm_set1_epi16(4)), 3);
    if constexpr (POS == 8)
        return _mm_srai_epi16(_mm_add_epi16(f2(A(-1, 0), A(0, 0), A(1, 0), A(2, 0)), _mm_set1_epi16(4)), 3);
    return _mm_setzero_si128();
}

// Positions that filter across the unrounded vertical half samples (i, j,
// k and the diagonal quarters) compute two vectors of them per 8 outputs
// and align the rest from those (SSSE3 palignr); f and q keep the five unrounded horizontal half-sample rows they
// filter down as a rolling window.  The rest work straight from the source.
constexpr bool across_h(int pos) { return pos == 5 || pos == 7 || pos == 9 || pos == 10 || pos == 11 || pos == 13 || pos == 15; }

template <int W, int POS>
void luma_sse2(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep, Zan32s height) {
    if constexpr (across_h(POS)) {
        for (Zan32s y = 0; y < height; ++y) {
            Zan8u* d = pDst + static_cast<std::ptrdiff_t>(dstStep) * y;
            for (Zan32s x0 = 0; x0 < W; x0 += 8) {
                // Unrounded vertical half samples of columns x0 - 2 .. x0 + 5
                // and x0 + 3 .. x0 + 10; the columns between come from a byte
                // alignment of the two (no column past x0 + 10 is read).
                const __m128i h0 = hcol(pSrc, srcStep, y, x0 - 2), h1 = hcol(pSrc, srcStep, y, x0 + 3);
                const __m128i hn = _mm_srli_si128(h1, 6);  // columns x0 + 6 .. x0 + 10
                const __m128i hm1 = _mm_alignr_epi8(hn, h0, 2), hz = _mm_alignr_epi8(hn, h0, 4);
                const __m128i hp1 = _mm_alignr_epi8(hn, h0, 6), hp2 = _mm_alignr_epi8(hn, h0, 8);
                __m128i out;
                if constexpr (POS == 9) {
                    out = f4_round10(h0, hm1, hz, hp1, hp2, false);
                } else if constexpr (POS == 11) {
                    out = f4_round10(hm1, hz, hp1, hp2, h1, true);
                } else {
                    const __m128i j = f2(hm1, hz, hp1, hp2);
                    if constexpr (POS == 10) {
                        out = _mm_srai_epi16(_mm_add_epi16(j, _mm_set1_epi16(32)), 6);
                    } else {
                        constexpr Zan32s ddx = (POS == 7 || POS == 15) ? 1 : 0, ddy = (POS == 13 || POS == 15) ? 1 : 0;
                        __m128i v = _mm_add_epi16(j, _mm_slli_epi16(load8u16(at(pSrc, srcStep, y + ddy, x0 + ddx)), 6));
                        v = _mm_srli_epi16(_mm_add_epi16(v, _mm_set1_epi16(10240 + 64)), 7);
                        out = _mm_subs_epu16(v, _mm_set1_epi16(80));
                    }
                }
                store8(d + x0, out);
            }
        }
    } else if constexpr (POS == 6 || POS == 14) {
        constexpr Zan32s first = POS == 6 ? -2 : -1;  // first row of the window
        for (Zan32s x0 = 0; x0 < W; x0 += 8) {
            __m128i b[5];
            for (int k = 0; k < 4; ++k) b[k + 1] = brow(pSrc, srcStep, first + k, x0);
            for (Zan32s y = 0; y < height; ++y) {
                for (int k = 0; k < 4; ++k) b[k] = b[k + 1];
                b[4] = brow(pSrc, srcStep, y + first + 4, x0);
                store8(pDst + static_cast<std::ptrdiff_t>(dstStep) * y + x0,
                       f4_round10(b[0], b[1], b[2], b[3], b[4], POS == 14));
            }
        }
    } else if constexpr (W == 16) {
        // 16 columns from 16-byte loads (the widest reaches column 18, the
        // last the filter may read), widened in two halves.
        const __m128i zero = _mm_setzero_si128();
        for (Zan32s y = 0; y < height; ++y) {
            auto lo = [&](Zan32s dy, Zan32s dx) {
                return _mm_unpacklo_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(at(pSrc, srcStep, y + dy, dx))), zero);
            };
            auto hi = [&](Zan32s dy, Zan32s dx) {
                return _mm_unpackhi_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(at(pSrc, srcStep, y + dy, dx))), zero);
            };
            _mm_storeu_si128(reinterpret_cast<__m128i*>(pDst + static_cast<std::ptrdiff_t>(dstStep) * y),
                             _mm_packus_epi16(one_d<POS>(lo), one_d<POS>(hi)));
        }
    } else {
        for (Zan32s y = 0; y < height; ++y) {
            auto A = [&](Zan32s dy, Zan32s dx) { return load8u16(at(pSrc, srcStep, y + dy, dx)); };
            store8(pDst + static_cast<std::ptrdiff_t>(dstStep) * y, one_d<POS>(A));
        }
    }
}

// Integer position: the H.264 copy kernels of the width class.
void copy8(const Zan8u* s, Zan32s ss, Zan8u* d, Zan32s ds, Zan32s h) {
    h264interp::luma_table_8u[16](s, ss, d, ds, h);
}
void copy16(const Zan8u* s, Zan32s ss, Zan8u* d, Zan32s ds, Zan32s h) {
    h264interp::luma_table_8u[32](s, ss, d, ds, h);
}

#define ZAN_AVS_LUMA_ROW(W)                                                                                       \
    {"avs_interpolate_luma_type_0_width_" #W, luma_rule<W, 0>, W == 8 ? copy8 : copy16, W, 0, 0},                 \
        {"avs_interpolate_luma_type_a_width_" #W, luma_rule<W, 1>, luma_sse2<W, 1>, W, 0, 1},                     \
        {"avs_interpolate_luma_type_b_width_" #W, luma_rule<W, 2>, luma_sse2<W, 2>, W, 0, 2},                     \
        {"avs_interpolate_luma_type_c_width_" #W, luma_rule<W, 3>, luma_sse2<W, 3>, W, 0, 3},                     \
        {"avs_interpolate_luma_type_d_width_" #W, luma_rule<W, 4>, luma_sse2<W, 4>, W, 0, 4},                     \
        {"avs_interpolate_luma_type_e_width_" #W, luma_rule<W, 5>, luma_sse2<W, 5>, W, 0, 5},                     \
        {"avs_interpolate_luma_type_f_width_" #W, luma_rule<W, 6>, luma_sse2<W, 6>, W, 0, 6},                     \
        {"avs_interpolate_luma_type_g_width_" #W, luma_rule<W, 7>, luma_sse2<W, 7>, W, 0, 7},                     \
        {"avs_interpolate_luma_type_h_width_" #W, luma_rule<W, 8>, luma_sse2<W, 8>, W, 0, 8},                     \
        {"avs_interpolate_luma_type_i_width_" #W, luma_rule<W, 9>, luma_sse2<W, 9>, W, 0, 9},                     \
        {"avs_interpolate_luma_type_j_width_" #W, luma_rule<W, 10>, luma_sse2<W, 10>, W, 0, 10},                  \
        {"avs_interpolate_luma_type_k_width_" #W, luma_rule<W, 11>, luma_sse2<W, 11>, W, 0, 11},                  \
        {"avs_interpolate_luma_type_n_width_" #W, luma_rule<W, 12>, luma_sse2<W, 12>, W, 0, 12},                  \
        {"avs_interpolate_luma_type_p_width_" #W, luma_rule<W, 13>, luma_sse2<W, 13>, W, 0, 13},                  \
        {"avs_interpolate_luma_type_q_width_" #W, luma_rule<W, 14>, luma_sse2<W, 14>, W, 0, 14},                  \
        {"avs_interpolate_luma_type_r_width_" #W, luma_rule<W, 15>, luma_sse2<W, 15>, W, 0, 15}

constexpr KernelPair<LumaFn> kLuma[32] = {ZAN_AVS_LUMA_ROW(8), ZAN_AVS_LUMA_ROW(16)};
#undef ZAN_AVS_LUMA_ROW

// ---------------------------------------------------------------- weighting

// out = clamp(((s * scale + 16) >> 5) + shift), in wrapping 32-bit
// arithmetic.
template <int W>
void weight_rule(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep, Zan32s scale, Zan32s shift,
                 Zan32s height) {
    for (Zan32s y = 0; y < height; ++y)
        for (Zan32s x = 0; x < W; ++x) {
            const Zan32u prod = static_cast<Zan32u>(*at(pSrc, srcStep, y, x)) * static_cast<Zan32u>(scale) + 16u;
            const Zan32s v = static_cast<Zan32s>(static_cast<Zan32u>(static_cast<Zan32s>(prod) >> 5) +
                                                 static_cast<Zan32u>(shift));
            pDst[static_cast<std::ptrdiff_t>(dstStep) * y + x] = clamp255(v);
        }
}

// The product s * scale modulo 2^32 from 16-bit multiplies: s times the
// signed low half of scale, plus s times the high half shifted up 16.
template <int W>
void weight_sse2(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep, Zan32s scale, Zan32s shift,
                 Zan32s height) {
    const Zan16s lo16 = static_cast<Zan16s>(static_cast<Zan16u>(static_cast<Zan32u>(scale)));
    const Zan16s hi16 = static_cast<Zan16s>(static_cast<Zan16u>((static_cast<Zan32u>(scale) - static_cast<Zan32u>(static_cast<Zan32s>(lo16))) >> 16));
    const __m128i vlo = _mm_set1_epi16(lo16), vhi = _mm_set1_epi16(hi16);
    const __m128i rnd = _mm_set1_epi32(16), add = _mm_set1_epi32(shift), zero = _mm_setzero_si128();
    for (Zan32s y = 0; y < height; ++y) {
        const Zan8u* s = at(pSrc, srcStep, y, 0);
        Zan8u* d = pDst + static_cast<std::ptrdiff_t>(dstStep) * y;
        for (int x0 = 0; x0 < W; x0 += 8) {
            const __m128i v = load8u16(s + x0);
            const __m128i pl = _mm_mullo_epi16(v, vlo), ph = _mm_mulhi_epi16(v, vlo);
            const __m128i up = _mm_mullo_epi16(v, vhi);
            __m128i a = _mm_add_epi32(_mm_unpacklo_epi16(pl, ph), _mm_unpacklo_epi16(zero, up));
            __m128i b = _mm_add_epi32(_mm_unpackhi_epi16(pl, ph), _mm_unpackhi_epi16(zero, up));
            a = _mm_add_epi32(_mm_srai_epi32(_mm_add_epi32(a, rnd), 5), add);
            b = _mm_add_epi32(_mm_srai_epi32(_mm_add_epi32(b, rnd), 5), add);
            store8(d + x0, _mm_packs_epi32(a, b));
        }
    }
}

constexpr KernelPair<WeightFn> kWeight[] = {
    {"avs_weight_prediction_width8", weight_rule<8>, weight_sse2<8>, 8, 0, 0},
    {"avs_weight_prediction_width16", weight_rule<16>, weight_sse2<16>, 16, 0, 0},
};

}  // namespace

extern const KernelPair<zan::avsinter::DeblockFn> kDeblock[4];
const zan::avsinter::Kernels kernels{kLuma, kWeight, kDeblock};

namespace {

// Kernel table: (width & 16) | (dy * 4) | dx.
struct LumaTable {
    LumaFn f[32];
};
constexpr LumaTable make_table() {
    LumaTable t{};
    for (int i = 0; i < 32; ++i) t.f[i] = kLuma[i].simd;
    return t;
}
constexpr LumaTable kLumaTable = make_table();

constexpr Zan32s kBand = 16;

// One axis of the region read for a block (64-bit, so that no position
// wraps): a region wholly before the plane reads the plane's first sample
// throughout and one wholly beyond it the last, so a start further out than
// one region length before the plane or beyond its end reads the same as
// that bound; it is drawn in to it so that it fits the 32 bits of the read.
Zan32s drawn_in(Zan64s pos, Zan32s n, Zan32s size) {
    const Zan64s lo = -Zan64s{n} - 1, hi = size > lo ? Zan64s{size} : lo;
    return static_cast<Zan32s>(pos < lo ? lo : pos > hi ? hi : pos);
}

void luma_block(const ZanInterpolateBlockRecord& r) {
    const Zan32s w = r.sizeBlock.width, h = r.sizeBlock.height;
    const Zan32s cls = w & 16;
    const Zan8u* plane = r.pSrc[0];
    if (r.pointVector.x == 0 && r.pointVector.y == 0) {
        kLumaTable.f[cls](at(plane, r.srcStep, r.pointBlockPos.y, r.pointBlockPos.x), r.srcStep, r.pDst[0],
                          r.dstStep, h);
        return;
    }
    const Zan32s dx = r.pointVector.x & 3, dy = r.pointVector.y & 3;
    const LumaFn kernel = kLumaTable.f[cls | (dy * 4) | dx];
    const Zan32s mx = dx ? 2 : 0, my = dy ? 2 : 0;
    const Zan64s x64 = Zan64s{r.pointBlockPos.x} + (r.pointVector.x >> 2) - mx;
    const Zan64s y64 = Zan64s{r.pointBlockPos.y} + (r.pointVector.y >> 2) - my;
    const Zan32s w2 = w + (dx ? 5 : 0), h2 = h + (dy ? 5 : 0);
    const Zan32s edge = h264interp::edge_word(x64, y64, w2, h2, r.sizeFrame);
    if (edge == 0) {
        kernel(plane + static_cast<std::ptrdiff_t>(r.srcStep) * (y64 + my) + (x64 + mx), r.srcStep, r.pDst[0],
               r.dstStep, h);
        return;
    }
    // Through the boundary, in bands of rows: each band's rows of the region
    // are read into the buffer with every position outside the plane taking
    // the nearest plane sample.  A region that starts above the plane and
    // ends below it is clamped at its top only (its rows below the plane are
    // read from the memory that follows it, as for the region read whole),
    // so the bands of such a region never clamp at the bottom.
    const Zan32s x = drawn_in(x64, w2, r.sizeFrame.width), y = drawn_in(y64, h2, r.sizeFrame.height);
    const Zan32s bothRows = zan::h264interp::kEdgeTop | zan::h264interp::kEdgeBottom;
    const Zan32s keep = (edge & bothRows) == bothRows ? ~zan::h264interp::kEdgeBottom : ~0;
    const Zan32s bufStep = (w2 + 15) & ~15;
    alignas(32) Zan8u buf[(kBand + 5) * 48];
    for (Zan32s r0 = 0; r0 < h; r0 += kBand) {
        const Zan32s n = h - r0 < kBand ? h - r0 : kBand;
        const Zan32s hb = n + (dy ? 5 : 0);
        const zan::h264interp::BoundaryRead<Zan8u> region{plane, r.srcStep, r.sizeFrame, x, y + r0, w2, hb, buf, bufStep};
        zaniReadDataBlockThroughBoundary_8u(h264interp::edge_word(x, Zan64s{y} + r0, w2, hb, r.sizeFrame) & keep, region);
        kernel(buf + my * bufStep + mx, bufStep, r.pDst[0] + static_cast<std::ptrdiff_t>(r.dstStep) * r0, r.dstStep, n);
    }
}

}  // namespace
}  // namespace zan::ZAN_PATH::avsinter

namespace zan::ZAN_PATH {

ZanStatus zaniInterpolateLumaBlock_AVS_8u_P1R(const ZanInterpolateBlockRecord* pInfo) {
    if (!pInfo || !pInfo->pSrc[0] || !pInfo->pDst[0]) return zanStsNullPtr;
    if ((pInfo->sizeBlock.height & 7) != 0 || (pInfo->sizeBlock.width & ~24) != 0) return zanStsSizeBad;
    if (pInfo->sizeBlock.width <= 0 || pInfo->sizeBlock.height <= 0) return zanStsOk;
    avsinter::luma_block(*pInfo);
    return zanStsOk;
}

ZanStatus zaniWeightPrediction_AVS_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep,
                                          Zan32s scale, Zan32s shift, ZaniSize roiSize) {
    if (!pSrc || !pDst) return zanStsNullPtr;
    if ((roiSize.height & 3) != 0 || (roiSize.width & ~28) != 0) return zanStsSizeBad;
    avsinter::kWeight[(roiSize.width & 16) ? 1 : 0].simd(pSrc, srcStep, pDst, dstStep, scale, shift, roiSize.height);
    return zanStsOk;
}

}  // namespace zan::ZAN_PATH
