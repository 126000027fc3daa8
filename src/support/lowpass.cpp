// Box lowpass filter: each output sample is the rounded mean of the 3x3
// (mask 33) or 5x5 (mask 55) window centred on it, (sum + 4) / 9 or
// (sum + 12) / 25 with the quotient rounded down.
//
// The windows reach 1 or 2 samples beyond the region on every side; the
// caller provides that margin.  The filter goes row by row through one
// scratch row of 16-bit column sums that spans the window's width: a column
// pass sums 3 or 5 source rows per column, a row pass sums 3 or 5 adjacent
// column sums and divides.  The 3x3 form sums its three rows anew for every
// output row; the 5x5 form keeps its column sums running, taking away the
// row that leaves the window and adding the one that enters it.
//
// The divisions are multiplications by a 16-bit reciprocal keeping the high
// half (pmulhuw), exact over every possible window sum:
//   (sum + 4) / 9   == ((sum + 5) * 0x1C71) >> 16            sum in 0..2295
//   (sum + 12) / 25 == (((sum + 13) * 0x28F5) >> 16) >> 2     sum in 0..6375
#include <climits>

#include "common/simd.h"
#include "support/support.h"

namespace zan::ZAN_PATH::support {
namespace {

constexpr Zan32s kBias3 = 5, kScale3 = 0x1C71;
constexpr Zan32s kBias5 = 13, kScale5 = 0x28F5;

inline Zan8u divide3(Zan32s sum) { return static_cast<Zan8u>(((sum + kBias3) * kScale3) >> 16); }
inline Zan8u divide5(Zan32s sum) { return static_cast<Zan8u>((((sum + kBias5) * kScale5) >> 16) >> 2); }

inline __m128i widen_lo(__m128i v) { return _mm_unpacklo_epi8(v, _mm_setzero_si128()); }
inline __m128i widen_hi(__m128i v) { return _mm_unpackhi_epi8(v, _mm_setzero_si128()); }

// sums[i] = sum of the R rows' byte i, for i in 0..n-1.  sums is 16-byte
// aligned.
template <int R>
void column_sums(const Zan8u* const rows[R], Zan16u* sums, std::ptrdiff_t n) {
    std::ptrdiff_t i = 0;
    for (; i + 16 <= n; i += 16) {
        __m128i lo = _mm_setzero_si128(), hi = _mm_setzero_si128();
        for (int k = 0; k < R; ++k) {
            __m128i v = simd::load16(rows[k] + i);
            lo = _mm_add_epi16(lo, widen_lo(v));
            hi = _mm_add_epi16(hi, widen_hi(v));
        }
        _mm_store_si128(reinterpret_cast<__m128i*>(sums + i), lo);
        _mm_store_si128(reinterpret_cast<__m128i*>(sums + i + 8), hi);
    }
    for (; i < n; ++i) {
        Zan32s s = 0;
        for (int k = 0; k < R; ++k) s += rows[k][i];
        sums[i] = static_cast<Zan16u>(s);
    }
}

// sums[i] += enter[i] - leave[i], for i in 0..n-1.
void column_slide(const Zan8u* enter, const Zan8u* leave, Zan16u* sums, std::ptrdiff_t n) {
    std::ptrdiff_t i = 0;
    for (; i + 16 <= n; i += 16) {
        __m128i in = simd::load16(enter + i), out = simd::load16(leave + i);
        auto* p = reinterpret_cast<__m128i*>(sums + i);
        _mm_store_si128(p, _mm_sub_epi16(_mm_add_epi16(_mm_load_si128(p), widen_lo(in)), widen_lo(out)));
        _mm_store_si128(p + 1, _mm_sub_epi16(_mm_add_epi16(_mm_load_si128(p + 1), widen_hi(in)), widen_hi(out)));
    }
    for (; i < n; ++i) sums[i] = static_cast<Zan16u>(sums[i] + enter[i] - leave[i]);
}

// Eight window sums from the column sums at sums[0..7+R-1].
template <int R>
inline __m128i window8(const Zan16u* sums) {
    __m128i s = simd::load16(sums);
    for (int j = 1; j < R; ++j) s = _mm_add_epi16(s, simd::load16(sums + j));
    return s;
}

template <int R>
inline __m128i divide8(__m128i sum) {
    if constexpr (R == 3)
        return _mm_mulhi_epu16(_mm_add_epi16(sum, _mm_set1_epi16(kBias3)), _mm_set1_epi16(kScale3));
    else
        return _mm_srli_epi16(
            _mm_mulhi_epu16(_mm_add_epi16(sum, _mm_set1_epi16(kBias5)), _mm_set1_epi16(kScale5)),
            2);
}

// One output row of width samples from width + R - 1 column sums.
template <int R>
void row_pass(const Zan16u* sums, Zan8u* d, std::ptrdiff_t width) {
    std::ptrdiff_t x = 0;
    for (; x + 16 <= width; x += 16) {
        __m128i lo = divide8<R>(window8<R>(sums + x)), hi = divide8<R>(window8<R>(sums + x + 8));
        simd::store16(d + x, _mm_packus_epi16(lo, hi));
    }
    for (; x < width; ++x) {
        Zan32s s = 0;
        for (int j = 0; j < R; ++j) s += sums[x + j];
        d[x] = R == 3 ? divide3(s) : divide5(s);
    }
}

// The filter proper.  sums holds at least width + R - 1 values.
template <int R>
void lowpass(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep, ZaniSize roi, Zan16u* sums) {
    constexpr int r = R / 2;
    const std::ptrdiff_t span = std::ptrdiff_t{roi.width} + R - 1;
    // Row y of the source, starting at the window's left edge.
    auto src = [&](Zan32s y) { return simd::row(pSrc, srcStep, y) - r; };
    for (Zan32s y = 0; y < roi.height; ++y) {
        if (R == 3 || y == 0) {
            const Zan8u* rows[R];
            for (int k = 0; k < R; ++k) rows[k] = src(y - r + k);
            column_sums<R>(rows, sums, span);
        } else {
            column_slide(src(y + r), src(y - r - 1), sums, span);
        }
        row_pass<R>(sums, simd::row(pDst, dstStep, y), roi.width);
    }
}

}  // namespace

void lowpass_rule(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep, ZaniSize roiSize, Zan32s mask) {
    const Zan32s r = mask == kMask3x3 ? 1 : 2;
    const Zan32s area = (2 * r + 1) * (2 * r + 1);
    for (Zan32s y = 0; y < roiSize.height; ++y)
        for (Zan32s x = 0; x < roiSize.width; ++x) {
            Zan32s sum = 0;
            for (Zan32s j = -r; j <= r; ++j) {
                const Zan8u* line = pSrc + std::ptrdiff_t{srcStep} * (y + j) + x;
                for (Zan32s i = -r; i <= r; ++i) sum += line[i];
            }
            pDst[std::ptrdiff_t{dstStep} * y + x] = static_cast<Zan8u>((sum + area / 2) / area);
        }
}

}  // namespace zan::ZAN_PATH::support

namespace zan::ZAN_PATH {

ZanStatus zaniFilterLowpass_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep, ZaniSize roiSize,
                                   Zan32s mask) {
    if (!pSrc || !pDst) return zanStsNullPtr;
    if (roiSize.width < 1 || roiSize.height < 1) return zanStsSizeBad;
    if (srcStep < 1 || dstStep < 1) return zanStsStepBad;
    if (mask != kMask3x3 && mask != kMask5x5) return zanStsMaskSizeBad;

    // Scratch: a 16-bit sum for every column of the window span, the span
    // rounded up to a multiple of 64 samples.
    const Zan64s span = Zan64s{roiSize.width} + (mask == kMask3x3 ? 2 : 4);
    const Zan64s bytes = 2 * ((span + 63) & ~Zan64s{63});
    if (bytes > INT_MAX) return zanStsNoMem;
    auto* sums = reinterpret_cast<Zan16u*>(zansMalloc_8u(static_cast<Zan32s>(bytes)));
    if (!sums) return zanStsNoMem;
    if (mask == kMask3x3) support::lowpass<3>(pSrc, srcStep, pDst, dstStep, roiSize, sums);
    else support::lowpass<5>(pSrc, srcStep, pDst, dstStep, roiSize, sums);
    zansFree(sums);
    return zanStsOk;
}

}  // namespace zan::ZAN_PATH
