// Sum of absolute differences of one block against one reference position,
// on one or two interleaved channels, and per sub-block of a 16x16 block.
//
// Reference positions (mcType >> 2): 0 plain, 1 FH (half sample down),
// 2 HF (half sample right), 3 HH (both).  Rounding is always upward and HH is
// one exact sum of four samples with one shift.  Only the reference is
// interpolated.
#include <cstddef>
#include <cstdint>

#include "blocks/sad.h"
#include "common/scalar.h"
#include "common/simd.h"
#include "frame/bodies.h"

namespace zan::ZAN_PATH::sad {
namespace {

using namespace zan::sad;
using scalar::absdiff;
using scalar::at;

enum Pos { kPlain = 0, kFH = 1, kHF = 2, kHH = 3 };

// ============================================================ scalar rules

// Interpolated 8-bit reference sample.  dx is the distance in samples to the
// horizontal neighbour (2 for two interleaved channels).
template <int P, int dx = 1>
Zan32s ref8(const Zan8u* r, Zan32s step, Zan32s x, Zan32s y) {
    Zan32s a = at(r, step, x, y);
    if constexpr (P == kFH) return (a + at(r, step, x, y + 1) + 1) >> 1;
    if constexpr (P == kHF) return (a + at(r, step, x + dx, y) + 1) >> 1;
    if constexpr (P == kHH)
        return (a + at(r, step, x + dx, y) + at(r, step, x, y + 1) + at(r, step, x + dx, y + 1) + 2) >> 2;
    return a;
}

template <int W, int H, int P>
Zan32s sad8_rule(const Zan8u* c, Zan32s cs, const Zan8u* r, Zan32s rs) {
    Zan32s sum = 0;
    for (Zan32s y = 0; y < H; ++y)
        for (Zan32s x = 0; x < W; ++x) sum += absdiff(at(c, cs, x, y), ref8<P>(r, rs, x, y));
    return sum;
}

// 16-bit reference: the rounding constant and each further sample are added
// with saturation at 65535, then shifted.
inline Zan32s adds_u16(Zan32s a, Zan32s b) { return a + b > 65535 ? 65535 : a + b; }

template <int P>
Zan32s ref16(const Zan16u* r, Zan32s step, Zan32s x, Zan32s y) {
    Zan32s a = at(r, step, x, y);
    if constexpr (P == kFH) return adds_u16(adds_u16(a, 1), at(r, step, x, y + 1)) >> 1;
    if constexpr (P == kHF) return adds_u16(adds_u16(a, 1), at(r, step, x + 1, y)) >> 1;
    if constexpr (P == kHH) {
        Zan32s t = adds_u16(a, 2);
        t = adds_u16(t, at(r, step, x + 1, y));
        t = adds_u16(t, at(r, step, x, y + 1));
        t = adds_u16(t, at(r, step, x + 1, y + 1));
        return t >> 2;
    }
    return a;
}

// The exact unsigned difference is summed as a signed 16-bit value.
template <int W, int H, int P>
Zan32s sad16_rule(const Zan16u* c, Zan32s cs, const Zan16u* r, Zan32s rs) {
    Zan32s sum = 0;
    for (Zan32s y = 0; y < H; ++y)
        for (Zan32s x = 0; x < W; ++x)
            sum += static_cast<Zan16s>(absdiff(at(c, cs, x, y), ref16<P>(r, rs, x, y)));
    return sum;
}

template <int P>
ZanStatus c2_rule(const Zan8u* c, Zan32s cs, const Zan8u* r, Zan32s rs, Zan32s* pU, Zan32s* pV) {
    Zan32s sum[2] = {0, 0};
    for (Zan32s y = 0; y < 8; ++y)
        for (Zan32s x = 0; x < 16; ++x) sum[x & 1] += absdiff(at(c, cs, x, y), ref8<P, 2>(r, rs, x, y));
    *pU = sum[0];
    *pV = sum[1];
    return zanStsOk;
}

// B x B sub-blocks of a 16x16 block, results in raster order.
template <int B>
ZanStatus blocks8_rule(const Zan8u* c, Zan32s cs, const Zan8u* r, Zan32s rs, Zan16u* pResult) {
    constexpr int n = 16 / B;
    for (int by = 0; by < n; ++by)
        for (int bx = 0; bx < n; ++bx) {
            Zan32s sum = 0;
            for (int y = by * B; y < by * B + B; ++y)
                for (int x = bx * B; x < bx * B + B; ++x) sum += absdiff(at(c, cs, x, y), at(r, rs, x, y));
            pResult[by * n + bx] = static_cast<Zan16u>(sum);
        }
    return zanStsOk;
}

// The difference is taken modulo 65536 as a signed 16-bit value; its
// magnitude (up to 32768) is added.
template <int B>
ZanStatus blocks16_rule(const Zan16u* c, Zan32s cs, const Zan16u* r, Zan32s rs, Zan32u* pResult) {
    constexpr int n = 16 / B;
    for (int by = 0; by < n; ++by)
        for (int bx = 0; bx < n; ++bx) {
            Zan32u sum = 0;
            for (int y = by * B; y < by * B + B; ++y)
                for (int x = bx * B; x < bx * B + B; ++x) {
                    Zan32s d = static_cast<Zan16s>(static_cast<Zan16u>(at(c, cs, x, y) - at(r, rs, x, y)));
                    sum += static_cast<Zan32u>(d < 0 ? -d : d);
                }
            pResult[by * n + bx] = sum;
        }
    return zanStsOk;
}

// ========================================================== vector kernels

using simd::load16;
using simd::load16a;
using simd::load4;
using simd::load8;
using simd::row;

// 16 bytes of a block W bytes wide starting at row y: one row of 16, two rows
// of 8 or four rows of 4, side by side.
template <int W>
inline __m128i gather(const Zan8u* p, Zan32s step, Zan32s y) {
    if constexpr (W == 16) {
        return load16(row(p, step, y));
    } else if constexpr (W == 8) {
        return _mm_unpacklo_epi64(load8(row(p, step, y)), load8(row(p, step, y + 1)));
    } else {
        __m128i a = _mm_unpacklo_epi32(load4(row(p, step, y)), load4(row(p, step, y + 1)));
        __m128i b = _mm_unpacklo_epi32(load4(row(p, step, y + 2)), load4(row(p, step, y + 3)));
        return _mm_unpacklo_epi64(a, b);
    }
}

// The interpolated reference for the rows that gather<W> covers.
template <int W, int P, int dx = 1>
inline __m128i ref_vec(const Zan8u* r, Zan32s rs, Zan32s y) {
    __m128i a = gather<W>(r, rs, y);
    if constexpr (P == kFH) return _mm_avg_epu8(a, gather<W>(r, rs, y + 1));
    if constexpr (P == kHF) return _mm_avg_epu8(a, gather<W>(r + dx, rs, y));
    if constexpr (P == kHH)
        return simd::avg4_u8(a, gather<W>(r + dx, rs, y), gather<W>(r, rs, y + 1), gather<W>(r + dx, rs, y + 1));
    return a;
}

// Single blocks of 8-bit samples.  Rows go four at a time, at p, p + s,
// p + 2s and p + 3s with 3s computed once, and each of the four feeds its own
// partial sum, so that no add waits for the one before.

// The interpolated reference row of 16 at p (dx: distance to the horizontal
// neighbour).
template <int P, int dx = 1>
inline __m128i ref_row16(const Zan8u* p, ptrdiff_t rs) {
    __m128i a = load16(p);
    if constexpr (P == kFH) return _mm_avg_epu8(a, load16(p + rs));
    if constexpr (P == kHF) return _mm_avg_epu8(a, load16(p + dx));
    if constexpr (P == kHH) return simd::avg4_u8(a, load16(p + dx), load16(p + rs), load16(p + rs + dx));
    return a;
}

// Rows of 8 at p0 and p1 side by side (movq, movhps).
inline __m128i load8x2(const Zan8u* p0, const Zan8u* p1) {
    return _mm_castpd_si128(_mm_loadh_pd(_mm_castsi128_pd(load8(p0)), reinterpret_cast<const double*>(p1)));
}

// The interpolated reference rows of 8 at p0 and p1, side by side.
template <int P>
inline __m128i ref_rows8(const Zan8u* p0, const Zan8u* p1, ptrdiff_t rs) {
    __m128i a = load8x2(p0, p1);
    if constexpr (P == kFH) return _mm_avg_epu8(a, load8x2(p0 + rs, p1 + rs));
    if constexpr (P == kHF) return _mm_avg_epu8(a, load8x2(p0 + 1, p1 + 1));
    if constexpr (P == kHH)
        return simd::avg4_u8(a, load8x2(p0 + 1, p1 + 1), load8x2(p0 + rs, p1 + rs), load8x2(p0 + rs + 1, p1 + rs + 1));
    return a;
}

// Rows of 4 at p0 and p1 side by side in the low half; the high half is zero
// on both sides of psadbw and adds nothing.
inline __m128i load4x2(const Zan8u* p0, const Zan8u* p1) { return _mm_unpacklo_epi32(load4(p0), load4(p1)); }

// Sum of the two 64-bit halves of psadbw sums (pshufd instead of a copy and
// punpckhqdq).
inline Zan32s sum_halves(__m128i v) {
    return _mm_cvtsi128_si32(_mm_add_epi32(v, _mm_shuffle_epi32(v, _MM_SHUFFLE(3, 2, 3, 2))));
}

// The partial sums as they stand after a group of rows.  The empty asm stops
// the compiler from re-associating the adds of the whole block into one tree
// whose leaves (every psadbw result) are all live at once, which runs out of
// registers and spills when the current rows are loaded separately.
template <class... V>
inline void keep_sums(V&... v) {
    (..., [](__m128i& x) { asm("" : "+x"(x)); }(v));
}

// 16 wide.  CurAligned: pCur and curStep are multiples of 16, and the current
// rows are loaded aligned, as psadbw memory operands.
template <int H, int P, bool CurAligned>
inline Zan32s sad_w16(const Zan8u* c, ptrdiff_t cs, const Zan8u* r, ptrdiff_t rs) {
    const ptrdiff_t cs3 = 3 * cs, rs3 = 3 * rs;
    auto cur = [](const Zan8u* p) {
        if constexpr (CurAligned) return load16a(p);
        else return load16(p);
    };
    __m128i s0 = _mm_setzero_si128(), s1 = s0, s2 = s0, s3 = s0;
    for (int y = 0; y < H; y += 4) {
        s0 = _mm_add_epi32(s0, _mm_sad_epu8(ref_row16<P>(r, rs), cur(c)));
        s1 = _mm_add_epi32(s1, _mm_sad_epu8(ref_row16<P>(r + rs, rs), cur(c + cs)));
        s2 = _mm_add_epi32(s2, _mm_sad_epu8(ref_row16<P>(r + 2 * rs, rs), cur(c + 2 * cs)));
        s3 = _mm_add_epi32(s3, _mm_sad_epu8(ref_row16<P>(r + rs3, rs), cur(c + cs3)));
        keep_sums(s0, s1, s2, s3);
        c += 4 * cs;
        r += 4 * rs;
    }
    return sum_halves(_mm_add_epi32(_mm_add_epi32(s0, s1), _mm_add_epi32(s2, s3)));
}

// 8 wide: two rows per register.
template <int H, int P>
inline Zan32s sad_w8(const Zan8u* c, ptrdiff_t cs, const Zan8u* r, ptrdiff_t rs) {
    const ptrdiff_t cs3 = 3 * cs, rs3 = 3 * rs;
    __m128i s0 = _mm_setzero_si128(), s1 = s0;
    for (int y = 0; y < H; y += 4) {
        s0 = _mm_add_epi32(s0, _mm_sad_epu8(ref_rows8<P>(r, r + rs, rs), load8x2(c, c + cs)));
        s1 = _mm_add_epi32(s1, _mm_sad_epu8(ref_rows8<P>(r + 2 * rs, r + rs3, rs), load8x2(c + 2 * cs, c + cs3)));
        keep_sums(s0, s1);
        c += 4 * cs;
        r += 4 * rs;
    }
    return sum_halves(_mm_add_epi32(s0, s1));
}

// 4 wide (full-sample position only): two rows in the low half of a register.
template <int H>
inline Zan32s sad_w4(const Zan8u* c, ptrdiff_t cs, const Zan8u* r, ptrdiff_t rs) {
    const ptrdiff_t cs3 = 3 * cs, rs3 = 3 * rs;
    __m128i s0 = _mm_setzero_si128(), s1 = s0;
    for (int y = 0; y < H; y += 4) {
        s0 = _mm_add_epi32(s0, _mm_sad_epu8(load4x2(r, r + rs), load4x2(c, c + cs)));
        s1 = _mm_add_epi32(s1, _mm_sad_epu8(load4x2(r + 2 * rs, r + rs3), load4x2(c + 2 * cs, c + cs3)));
        keep_sums(s0, s1);
        c += 4 * cs;
        r += 4 * rs;
    }
    return _mm_cvtsi128_si32(_mm_add_epi32(s0, s1));
}

template <int W, int H, int P>
inline __attribute__((always_inline)) Zan32s sad8_core(const Zan8u* c, Zan32s cs, const Zan8u* r, Zan32s rs) {
    static_assert(H % 4 == 0 && (W == 16 || W == 8 || (W == 4 && P == kPlain)));
    if constexpr (W == 16) {
        // Two tests in place, rather than an OR into a scratch register that
        // the compiler has to free first.
        if ((reinterpret_cast<uintptr_t>(c) & 15) == 0) {
            asm volatile("");
            if ((cs & 15) == 0) return sad_w16<H, P, true>(c, cs, r, rs);
        }
        return sad_w16<H, P, false>(c, cs, r, rs);
    } else if constexpr (W == 8) {
        return sad_w8<H, P>(c, cs, r, rs);
    } else {
        return sad_w4<H>(c, cs, r, rs);
    }
}

// Row addresses p + s, p + 2s, p + 3s as addressing modes.  By default the
// compiler rewrites them into a chain of one pointer add per row (straight-
// line strength reduction), 32 adds in a 16x16 block; without that rewrite a
// group of four rows costs two leas.
// (GCC only; clang has no such rewrite to turn off.)
#if defined(__clang__)
#define ZAN_ROW_ADDRESSING
#else
#define ZAN_ROW_ADDRESSING __attribute__((optimize("no-tree-slsr")))
#endif

// The catalogue form: returns the SAD.
template <int W, int H, int P>
ZAN_ROW_ADDRESSING Zan32s sad8_simd(const Zan8u* c, Zan32s cs, const Zan8u* r, Zan32s rs) {
    return sad8_core<W, H, P>(c, cs, r, rs);
}

// The form the exported bodies jump to: the same code, the SAD to *pResult.
template <int W, int H, int P>
ZAN_ROW_ADDRESSING ZanStatus sad8_out(const Zan8u* c, Zan32s cs, const Zan8u* r, Zan32s rs, Zan32s* pResult) {
    *pResult = sad8_core<W, H, P>(c, cs, r, rs);
    return zanStsOk;
}

// Eight 16-bit samples at sample x of row y (W >= 8), or two rows of four.
template <int W>
inline __m128i gather16(const Zan16u* p, Zan32s step, Zan32s x, Zan32s y) {
    const Zan8u* b = reinterpret_cast<const Zan8u*>(p) + 2 * x;
    if constexpr (W >= 8) return load16(row(b, step, y));
    else return _mm_unpacklo_epi64(load8(row(b, step, y)), load8(row(b, step, y + 1)));
}

template <int W, int P>
inline __m128i ref16_vec(const Zan16u* r, Zan32s rs, Zan32s x, Zan32s y) {
    __m128i a = gather16<W>(r, rs, x, y);
    if constexpr (P == kFH)
        return _mm_srli_epi16(_mm_adds_epu16(_mm_adds_epu16(a, _mm_set1_epi16(1)), gather16<W>(r, rs, x, y + 1)), 1);
    if constexpr (P == kHF)
        return _mm_srli_epi16(_mm_adds_epu16(_mm_adds_epu16(a, _mm_set1_epi16(1)), gather16<W>(r, rs, x + 1, y)), 1);
    if constexpr (P == kHH) {
        __m128i t = _mm_adds_epu16(a, _mm_set1_epi16(2));
        t = _mm_adds_epu16(t, gather16<W>(r, rs, x + 1, y));
        t = _mm_adds_epu16(t, gather16<W>(r, rs, x, y + 1));
        t = _mm_adds_epu16(t, gather16<W>(r, rs, x + 1, y + 1));
        return _mm_srli_epi16(t, 2);
    }
    return a;
}

template <int W, int H, int P>
inline __attribute__((always_inline)) Zan32s sad16_core(const Zan16u* c, Zan32s cs, const Zan16u* r, Zan32s rs) {
    constexpr int rows = W >= 8 ? 1 : 2;
    const __m128i ones = _mm_set1_epi16(1);
    __m128i acc = _mm_setzero_si128();
    for (Zan32s y = 0; y < H; y += rows)
        for (Zan32s x = 0; x < W; x += 8) {
            __m128i d = simd::absdiff_u16(gather16<W>(c, cs, x, y), ref16_vec<W, P>(r, rs, x, y));
            acc = _mm_add_epi32(acc, _mm_madd_epi16(d, ones));
        }
    return simd::hsum_epi32(acc);
}

template <int W, int H, int P>
Zan32s sad16_simd(const Zan16u* c, Zan32s cs, const Zan16u* r, Zan32s rs) {
    return sad16_core<W, H, P>(c, cs, r, rs);
}

template <int W, int H, int P>
ZanStatus sad16_out(const Zan16u* c, Zan32s cs, const Zan16u* r, Zan32s rs, Zan32s* pResult) {
    *pResult = sad16_core<W, H, P>(c, cs, r, rs);
    return zanStsOk;
}

// Even bytes to the low half, odd bytes to the high half.
alignas(16) constexpr Zan8u kSplitChannels[16] = {0, 2, 4, 6, 8, 10, 12, 14, 1, 3, 5, 7, 9, 11, 13, 15};

template <int P>
ZanStatus c2_simd(const Zan8u* c, Zan32s cs, const Zan8u* r, Zan32s rs, Zan32s* pU, Zan32s* pV) {
    const __m128i split = simd::load16a(kSplitChannels);
    __m128i acc = _mm_setzero_si128();
    for (Zan32s y = 0; y < 8; ++y) {
        __m128i cv = _mm_shuffle_epi8(gather<16>(c, cs, y), split);
        __m128i rv = _mm_shuffle_epi8(ref_vec<16, P, 2>(r, rs, y), split);
        acc = _mm_add_epi32(acc, _mm_sad_epu8(cv, rv));
    }
    *pU = _mm_cvtsi128_si32(acc);
    *pV = _mm_cvtsi128_si32(_mm_unpackhi_epi64(acc, acc));
    return zanStsOk;
}

ZanStatus blocks8x8_8u_simd(const Zan8u* c, Zan32s cs, const Zan8u* r, Zan32s rs, Zan16u* pResult) {
    for (int half = 0; half < 2; ++half) {
        __m128i acc = _mm_setzero_si128();
        for (Zan32s y = 8 * half; y < 8 * half + 8; ++y)
            acc = _mm_add_epi32(acc, _mm_sad_epu8(gather<16>(c, cs, y), gather<16>(r, rs, y)));
        pResult[2 * half] = static_cast<Zan16u>(_mm_cvtsi128_si32(acc));
        pResult[2 * half + 1] = static_cast<Zan16u>(_mm_cvtsi128_si32(_mm_unpackhi_epi64(acc, acc)));
    }
    return zanStsOk;
}

// Columns 0-3 and 8-11 summed by one psadbw, 4-7 and 12-15 by another.
ZanStatus blocks4x4_8u_simd(const Zan8u* c, Zan32s cs, const Zan8u* r, Zan32s rs, Zan16u* pResult) {
    const __m128i even = _mm_set_epi32(0, -1, 0, -1);
    const __m128i zero = _mm_setzero_si128();
    for (int by = 0; by < 4; ++by) {
        __m128i a02 = zero, a13 = zero;
        for (Zan32s y = 4 * by; y < 4 * by + 4; ++y) {
            __m128i cv = gather<16>(c, cs, y), rv = gather<16>(r, rs, y);
            __m128i d = _mm_or_si128(_mm_subs_epu8(cv, rv), _mm_subs_epu8(rv, cv));
            a02 = _mm_add_epi32(a02, _mm_sad_epu8(_mm_and_si128(d, even), zero));
            a13 = _mm_add_epi32(a13, _mm_sad_epu8(_mm_andnot_si128(even, d), zero));
        }
        // a02 holds blocks 0 and 2 of the row in lanes 0 and 2, a13 blocks 1 and 3.
        __m128i v = _mm_or_si128(a02, _mm_slli_epi64(a13, 32));  // 0, 1, 2, 3 in 32-bit lanes
        v = _mm_packs_epi32(v, v);
        simd::store8(pResult + 4 * by, v);
    }
    return zanStsOk;
}

// Magnitudes of the wrapped 16-bit differences (0..32768), less 16384 so
// that they fit a signed word and pmaddwd can sum them in pairs; the offset
// is added back once per block.
inline __m128i biased_absdiff_wrap16(const Zan16u* c, Zan32s cs, const Zan16u* r, Zan32s rs, Zan32s x, Zan32s y) {
    __m128i d = _mm_abs_epi16(_mm_sub_epi16(gather16<16>(c, cs, x, y), gather16<16>(r, rs, x, y)));
    return _mm_madd_epi16(_mm_sub_epi16(d, _mm_set1_epi16(16384)), _mm_set1_epi16(1));
}

template <int B>
ZanStatus blocks16_simd(const Zan16u* c, Zan32s cs, const Zan16u* r, Zan32s rs, Zan32u* pResult) {
    constexpr int n = 16 / B;
    constexpr Zan32s offset = 16384 * B * B;
    for (int by = 0; by < n; ++by) {
        // acc[k] holds pair sums of columns 8k..8k+7 of the block row.
        __m128i acc[2] = {_mm_setzero_si128(), _mm_setzero_si128()};
        for (Zan32s y = B * by; y < B * by + B; ++y)
            for (int k = 0; k < 2; ++k) acc[k] = _mm_add_epi32(acc[k], biased_absdiff_wrap16(c, cs, r, rs, 8 * k, y));
        if constexpr (B == 8) {
            for (int k = 0; k < 2; ++k) pResult[2 * by + k] = static_cast<Zan32u>(simd::hsum_epi32(acc[k]) + offset);
        } else {
            // Lanes 0, 1 of acc[k] cover columns 8k..8k+3, lanes 2, 3 columns 8k+4..8k+7.
            for (int k = 0; k < 2; ++k) {
                __m128i v = _mm_add_epi32(acc[k], _mm_shuffle_epi32(acc[k], _MM_SHUFFLE(2, 3, 0, 1)));
                pResult[4 * by + 2 * k] = static_cast<Zan32u>(_mm_cvtsi128_si32(v) + offset);
                pResult[4 * by + 2 * k + 1] = static_cast<Zan32u>(_mm_cvtsi128_si32(_mm_unpackhi_epi64(v, v)) + offset);
            }
        }
    }
    return zanStsOk;
}

// ================================================================= tables

#define ZAN_POSITIONS(kernel, ...) \
    {kernel<__VA_ARGS__, kPlain>, kernel<__VA_ARGS__, kFH>, kernel<__VA_ARGS__, kHF>, kernel<__VA_ARGS__, kHH>}

constexpr Sad8OutFn kSad16x16[4] = ZAN_POSITIONS(sad8_out, 16, 16);
constexpr Sad8OutFn kSad16x8[4] = ZAN_POSITIONS(sad8_out, 16, 8);
constexpr Sad8OutFn kSad8x8[4] = ZAN_POSITIONS(sad8_out, 8, 8);
constexpr Sad16OutFn kSad16x16_16u[4] = ZAN_POSITIONS(sad16_out, 16, 16);
constexpr Sad16OutFn kSad8x8_16u[4] = ZAN_POSITIONS(sad16_out, 8, 8);
constexpr Sad16OutFn kSad4x4_16u[4] = ZAN_POSITIONS(sad16_out, 4, 4);
constexpr SadC2Fn kSad8x8C2[4] = {c2_simd<kPlain>, c2_simd<kFH>, c2_simd<kHF>, c2_simd<kHH>};

#undef ZAN_POSITIONS

// ============================================================= catalogue

#define ZAN_PAIRS(name, rule, simd, W, H)                                                   \
    {name, rule<W, H, kPlain>, simd<W, H, kPlain>, W, H, kPlain},                           \
        {name "_FH", rule<W, H, kFH>, simd<W, H, kFH>, W, H, kFH},                          \
        {name "_HF", rule<W, H, kHF>, simd<W, H, kHF>, W, H, kHF},                          \
        {name "_HH", rule<W, H, kHH>, simd<W, H, kHH>, W, H, kHH}

constexpr KernelPair<Sad8Fn> kSad8Pairs[] = {
    ZAN_PAIRS("sad16x16_8u", sad8_rule, sad8_simd, 16, 16),
    ZAN_PAIRS("sad16x8_8u", sad8_rule, sad8_simd, 16, 8),
    ZAN_PAIRS("sad8x8_8u", sad8_rule, sad8_simd, 8, 8),
    {"sad8x16_8u", sad8_rule<8, 16, kPlain>, sad8_simd<8, 16, kPlain>, 8, 16, kPlain},
    {"sad8x4_8u", sad8_rule<8, 4, kPlain>, sad8_simd<8, 4, kPlain>, 8, 4, kPlain},
    {"sad4x8_8u", sad8_rule<4, 8, kPlain>, sad8_simd<4, 8, kPlain>, 4, 8, kPlain},
    {"sad4x4_8u", sad8_rule<4, 4, kPlain>, sad8_simd<4, 4, kPlain>, 4, 4, kPlain},
};
constexpr KernelPair<Sad16Fn> kSad16Pairs[] = {
    ZAN_PAIRS("sad16x16_16u", sad16_rule, sad16_simd, 16, 16),
    ZAN_PAIRS("sad8x8_16u", sad16_rule, sad16_simd, 8, 8),
    ZAN_PAIRS("sad4x4_16u", sad16_rule, sad16_simd, 4, 4),
};
#undef ZAN_PAIRS
constexpr KernelPair<SadC2Fn> kPairPairs[] = {
    {"sad8x8_c2", c2_rule<kPlain>, c2_simd<kPlain>, 8, 8, kPlain},
    {"sad8x8_c2_FH", c2_rule<kFH>, c2_simd<kFH>, 8, 8, kFH},
    {"sad8x8_c2_HF", c2_rule<kHF>, c2_simd<kHF>, 8, 8, kHF},
    {"sad8x8_c2_HH", c2_rule<kHH>, c2_simd<kHH>, 8, 8, kHH},
};
constexpr KernelPair<Blocks8Fn> kBlocks8Pairs[] = {
    {"sad16x16_blocks8x8_8u", blocks8_rule<8>, blocks8x8_8u_simd, 16, 16, 0},
    {"sad16x16_blocks4x4_8u", blocks8_rule<4>, blocks4x4_8u_simd, 16, 16, 0},
};
constexpr KernelPair<Blocks16Fn> kBlocks16Pairs[] = {
    {"sad16x16_blocks8x8_16u", blocks16_rule<8>, blocks16_simd<8>, 16, 16, 0},
    {"sad16x16_blocks4x4_16u", blocks16_rule<4>, blocks16_simd<4>, 16, 16, 0},
};

}  // namespace

const BlockKernels block_kernels = {kSad8Pairs, kSad16Pairs, kPairPairs, kBlocks8Pairs, kBlocks16Pairs};

}  // namespace zan::ZAN_PATH::sad

// =============================================================== exports

namespace zan::ZAN_PATH {

// The single-block bodies start on a 64-byte boundary, so that the short
// ones (the 4x4 body is 112 bytes) span two cache lines rather than three:
// at 16 bytes past a boundary the 4x4 export measured 0.3 ns slower.
#define ZAN_BODY_ALIGN __attribute__((aligned(64)))

// The bodies check their pointers, then run the plain position's kernel in
// place (the position most calls ask for: no jump from body to kernel) or end
// in a jump through the position table to a kernel that writes the result
// and returns zanStsOk.
//
// mcType >> 2 is 0 exactly when mcType is 0..3; other values index the
// position table unchecked: 0..15 is the caller's promise.

#define ZAN_SAD_POSITION(name, T, table, core, W, H)                                                               \
    ZAN_BODY_ALIGN ZAN_ROW_ADDRESSING ZanStatus name(const T* pCur, Zan32s curStep, const T* pRef, Zan32s refStep, \
                                                     Zan32s* pResult, Zan32s mcType) {                             \
        ZAN_SAD_NULL(pCur); ZAN_SAD_NULL(pRef); ZAN_SAD_NULL(pResult);                                             \
        if (static_cast<Zan32u>(mcType) < 4) [[likely]] {                                                          \
            *pResult = sad::core<W, H, sad::kPlain>(pCur, curStep, pRef, refStep);                                 \
            return zanStsOk;                                                                                       \
        }                                                                                                          \
        return sad::table[mcType >> 2](pCur, curStep, pRef, refStep, pResult);                                     \
    }
ZAN_SAD_POSITION(zaniSAD16x16_8u32s, Zan8u, kSad16x16, sad8_core, 16, 16)
ZAN_SAD_POSITION(zaniSAD16x8_8u32s_C1R, Zan8u, kSad16x8, sad8_core, 16, 8)
ZAN_SAD_POSITION(zaniSAD8x8_8u32s_C1R, Zan8u, kSad8x8, sad8_core, 8, 8)
ZAN_SAD_POSITION(zaniSAD16x16_16u32s_C1R, Zan16u, kSad16x16_16u, sad16_core, 16, 16)
ZAN_SAD_POSITION(zaniSAD8x8_16u32s_C1R, Zan16u, kSad8x8_16u, sad16_core, 8, 8)
ZAN_SAD_POSITION(zaniSAD4x4_16u32s_C1R, Zan16u, kSad4x4_16u, sad16_core, 4, 4)
#undef ZAN_SAD_POSITION

// The four forms without mcType carry their kernel inline (built with the
// kernels' own options, so that it can be inlined): checks, then the block.
#define ZAN_SAD_PLAIN(name, W, H)                                                                          \
    ZAN_BODY_ALIGN ZAN_ROW_ADDRESSING ZanStatus name(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, \
                                                     Zan32s refStep, Zan32s* pResult) {                    \
        ZAN_SAD_NULL(pCur); ZAN_SAD_NULL(pRef); ZAN_SAD_NULL(pResult);                                     \
        *pResult = sad::sad8_core<W, H, sad::kPlain>(pCur, curStep, pRef, refStep);                        \
        return zanStsOk;                                                                                   \
    }
ZAN_SAD_PLAIN(zaniSAD8x16_8u32s_C1R, 8, 16)
ZAN_SAD_PLAIN(zaniSAD8x4_8u32s_C1R, 8, 4)
ZAN_SAD_PLAIN(zaniSAD4x8_8u32s_C1R, 4, 8)
ZAN_SAD_PLAIN(zaniSAD4x4_8u32s, 4, 4)
#undef ZAN_SAD_PLAIN
#undef ZAN_BODY_ALIGN

ZanStatus zaniSAD8x8_8u32s_C2R(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, Zan32s refStep,
                               Zan32s* pResultU, Zan32s* pResultV, Zan32s mcType) {
    ZAN_SAD_NULL(pCur); ZAN_SAD_NULL(pRef); ZAN_SAD_NULL(pResultU); ZAN_SAD_NULL(pResultV);
    if (curStep < 1 || refStep < 1) [[unlikely]]
        return zanStsStepBad;
    return sad::kSad8x8C2[mcType >> 2](pCur, curStep, pRef, refStep, pResultU, pResultV);
}

#define ZAN_SAD_BLOCKS(name, T, R, kernel)                                                     \
    ZanStatus name(const T* pCur, Zan32s curStep, const T* pRef, Zan32s refStep, R* pResult) { \
        ZAN_SAD_NULL(pCur); ZAN_SAD_NULL(pRef); ZAN_SAD_NULL(pResult);                         \
        return sad::kernel(pCur, curStep, pRef, refStep, pResult);                             \
    }
ZAN_SAD_BLOCKS(zaniSAD16x16Blocks8x8_8u16u, Zan8u, Zan16u, blocks8x8_8u_simd)
ZAN_SAD_BLOCKS(zaniSAD16x16Blocks4x4_8u16u, Zan8u, Zan16u, blocks4x4_8u_simd)
ZAN_SAD_BLOCKS(zaniSAD16x16Blocks8x8_16u32u_C1R, Zan16u, Zan32u, blocks16_simd<8>)
ZAN_SAD_BLOCKS(zaniSAD16x16Blocks4x4_16u32u_C1R, Zan16u, Zan32u, blocks16_simd<4>)
#undef ZAN_SAD_BLOCKS

}  // namespace zan::ZAN_PATH
