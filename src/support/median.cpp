// Median of three planes: each output sample is the middle one of the three
// planes' samples at the same place, min(max(min(a, b), c), max(a, b)).
//
// A row runs sample by sample up to the first 16-byte boundary of the
// destination, then 16 samples a turn with aligned stores (and aligned loads
// when all three sources sit on a boundary there too), then sample by sample
// to its end.
#include <cstdint>

#include "common/scalar.h"
#include "common/simd.h"
#include "support/support.h"

namespace zan::ZAN_PATH::support {
namespace {

inline Zan8u med3(Zan8u a, Zan8u b, Zan8u c) {
    Zan8u lo = a < b ? a : b, hi = a < b ? b : a;
    Zan8u m = lo > c ? lo : c;
    return m < hi ? m : hi;
}

inline __m128i med3(__m128i a, __m128i b, __m128i c) {
    return _mm_min_epu8(_mm_max_epu8(_mm_min_epu8(a, b), c), _mm_max_epu8(a, b));
}

// Samples x0..x1-1 of one row, 16 a turn; d + x0 is 16-byte aligned and so,
// when Aligned, are a + x0, b + x0 and c + x0.
template <bool Aligned>
std::ptrdiff_t median_units(const Zan8u* a, const Zan8u* b, const Zan8u* c, Zan8u* d, std::ptrdiff_t x,
                            std::ptrdiff_t end) {
    for (; x + 16 <= end; x += 16) {
        __m128i v = Aligned ? med3(simd::load16a(a + x), simd::load16a(b + x), simd::load16a(c + x))
                            : med3(simd::load16(a + x), simd::load16(b + x), simd::load16(c + x));
        _mm_store_si128(reinterpret_cast<__m128i*>(d + x), v);
    }
    return x;
}

inline bool aligned16(const Zan8u* p) { return (reinterpret_cast<std::uintptr_t>(p) & 15) == 0; }

void median_row(const Zan8u* a, const Zan8u* b, const Zan8u* c, Zan8u* d, std::ptrdiff_t width) {
    std::ptrdiff_t head = static_cast<std::ptrdiff_t>((16 - (reinterpret_cast<std::uintptr_t>(d) & 15)) & 15);
    if (head > width) head = width;
    std::ptrdiff_t x = 0;
    for (; x < head; ++x) d[x] = med3(a[x], b[x], c[x]);
    if (aligned16(a + x) && aligned16(b + x) && aligned16(c + x))
        x = median_units<true>(a, b, c, d, x, width);
    else
        x = median_units<false>(a, b, c, d, x, width);
    for (; x < width; ++x) d[x] = med3(a[x], b[x], c[x]);
}

}  // namespace

void median_rule(const Zan8u* const pSrc[3], Zan32s srcStep, Zan8u* pDst, Zan32s dstStep, ZaniSize roiSize) {
    using scalar::at;
    for (Zan32s y = 0; y < roiSize.height; ++y)
        for (Zan32s x = 0; x < roiSize.width; ++x) {
            Zan32s a = at(pSrc[0], srcStep, x, y), b = at(pSrc[1], srcStep, x, y), c = at(pSrc[2], srcStep, x, y);
            Zan32s lo = a < b ? a : b, hi = a < b ? b : a;
            Zan32s m = lo > c ? lo : c;
            scalar::put(pDst, dstStep, x, y, static_cast<Zan8u>(m < hi ? m : hi));
        }
}

}  // namespace zan::ZAN_PATH::support

namespace zan::ZAN_PATH {

ZanStatus zaniMedian_8u_P3C1R(const Zan8u* const pSrc[3], Zan32s srcStep, Zan8u* pDst, Zan32s dstStep,
                              ZaniSize roiSize) {
    if (!pSrc) return zanStsNullPtr;
    if (!pSrc[0] || !pSrc[1] || !pSrc[2] || !pDst) return zanStsNullPtr;
    if (roiSize.width < 1 || roiSize.height < 1) return zanStsSizeBad;
    for (Zan32s y = 0; y < roiSize.height; ++y)
        support::median_row(simd::row(pSrc[0], srcStep, y), simd::row(pSrc[1], srcStep, y),
                            simd::row(pSrc[2], srcStep, y), simd::row(pDst, dstStep, y), roiSize.width);
    return zanStsOk;
}

}  // namespace zan::ZAN_PATH
