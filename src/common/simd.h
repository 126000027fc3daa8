// Small SSE2/SSSE3 helpers shared by the vector kernels.  Inline, inside the
// path's namespace, so that each build keeps its own copy.
#pragma once

#include <emmintrin.h>
#include <tmmintrin.h>

#include <cstddef>
#include <cstring>

#include "common/path.h"
#include "zanvc.h"

namespace zan::ZAN_PATH::simd {

inline const Zan8u* row(const void* base, Zan32s step, Zan32s y) {
    return static_cast<const Zan8u*>(base) + static_cast<ptrdiff_t>(step) * y;
}
inline Zan8u* row(void* base, Zan32s step, Zan32s y) {
    return static_cast<Zan8u*>(base) + static_cast<ptrdiff_t>(step) * y;
}

inline __m128i load16(const void* p) { return _mm_loadu_si128(static_cast<const __m128i*>(p)); }
inline __m128i load16a(const void* p) { return _mm_load_si128(static_cast<const __m128i*>(p)); }
inline __m128i load8(const void* p) { return _mm_loadl_epi64(static_cast<const __m128i*>(p)); }
inline __m128i load4(const void* p) {
    Zan32s v;
    std::memcpy(&v, p, 4);
    return _mm_cvtsi32_si128(v);
}
inline void store16(void* p, __m128i v) { _mm_storeu_si128(static_cast<__m128i*>(p), v); }
inline void store8(void* p, __m128i v) { _mm_storel_epi64(static_cast<__m128i*>(p), v); }

// Sum of the two 64-bit halves of a psadbw result (or of any two 32-bit
// counts held in lanes 0 and 2).
inline Zan32s hsum_sad(__m128i v) {
    return _mm_cvtsi128_si32(_mm_add_epi32(v, _mm_unpackhi_epi64(v, v)));
}

// Sum of the four 32-bit lanes.
inline Zan32s hsum_epi32(__m128i v) {
    v = _mm_add_epi32(v, _mm_shuffle_epi32(v, _MM_SHUFFLE(1, 0, 3, 2)));
    v = _mm_add_epi32(v, _mm_shuffle_epi32(v, _MM_SHUFFLE(2, 3, 0, 1)));
    return _mm_cvtsi128_si32(v);
}

// Exact (a + b + c + d + 2) >> 2 on 16 unsigned bytes.  With x and y the
// upward-rounded averages of a, b and of c, d, the average of x and y is one
// too large exactly when x + y is odd and a + b or c + d was odd.
inline __m128i avg4_u8(__m128i a, __m128i b, __m128i c, __m128i d) {
    __m128i x = _mm_avg_epu8(a, b), y = _mm_avg_epu8(c, d);
    __m128i odd = _mm_and_si128(_mm_xor_si128(x, y), _mm_or_si128(_mm_xor_si128(a, b), _mm_xor_si128(c, d)));
    return _mm_sub_epi8(_mm_avg_epu8(x, y), _mm_and_si128(odd, _mm_set1_epi8(1)));
}

// |a - b| on unsigned 16-bit lanes, exact.
inline __m128i absdiff_u16(__m128i a, __m128i b) {
    return _mm_or_si128(_mm_subs_epu16(a, b), _mm_subs_epu16(b, a));
}

// 8x8 transpose of 16-bit lanes: out[c] holds column c of the rows in[0..7].
inline void transpose8x8_epi16(const __m128i* in, __m128i* out) {
    const __m128i a0 = _mm_unpacklo_epi16(in[0], in[1]), a1 = _mm_unpackhi_epi16(in[0], in[1]);
    const __m128i a2 = _mm_unpacklo_epi16(in[2], in[3]), a3 = _mm_unpackhi_epi16(in[2], in[3]);
    const __m128i a4 = _mm_unpacklo_epi16(in[4], in[5]), a5 = _mm_unpackhi_epi16(in[4], in[5]);
    const __m128i a6 = _mm_unpacklo_epi16(in[6], in[7]), a7 = _mm_unpackhi_epi16(in[6], in[7]);
    const __m128i b0 = _mm_unpacklo_epi32(a0, a2), b1 = _mm_unpackhi_epi32(a0, a2);
    const __m128i b2 = _mm_unpacklo_epi32(a1, a3), b3 = _mm_unpackhi_epi32(a1, a3);
    const __m128i b4 = _mm_unpacklo_epi32(a4, a6), b5 = _mm_unpackhi_epi32(a4, a6);
    const __m128i b6 = _mm_unpacklo_epi32(a5, a7), b7 = _mm_unpackhi_epi32(a5, a7);
    out[0] = _mm_unpacklo_epi64(b0, b4);
    out[1] = _mm_unpackhi_epi64(b0, b4);
    out[2] = _mm_unpacklo_epi64(b1, b5);
    out[3] = _mm_unpackhi_epi64(b1, b5);
    out[4] = _mm_unpacklo_epi64(b2, b6);
    out[5] = _mm_unpackhi_epi64(b2, b6);
    out[6] = _mm_unpacklo_epi64(b3, b7);
    out[7] = _mm_unpackhi_epi64(b3, b7);
}
// The same in place.
inline void transpose8x8_epi16(__m128i* r) { transpose8x8_epi16(r, r); }

}  // namespace zan::ZAN_PATH::simd
