// Byte fill of a row or a region.
//
// The kernel aligns the destination to 16 bytes with one unaligned store,
// writes 64 bytes a turn, then 16-byte units, then single bytes; nothing
// outside the row is touched.  A region of more than 524288 bytes that is
// at least as large as the processor's largest cache is written with
// non-temporal stores and closed by a store fence.
#include <cstdint>

#include "common/simd.h"
#include "support/support.h"
#include "zancore.h"

namespace zan::ZAN_PATH::support {
namespace {

template <bool Stream>
inline void put16a(Zan8u* d, __m128i v) {
    if constexpr (Stream) _mm_stream_si128(reinterpret_cast<__m128i*>(d), v);
    else _mm_store_si128(reinterpret_cast<__m128i*>(d), v);
}

// d is 16-byte aligned.
template <bool Stream>
void fill_aligned(Zan8u* d, std::ptrdiff_t n, Zan8u value) {
    const __m128i v = _mm_set1_epi8(static_cast<char>(value));
    std::ptrdiff_t i = 0;
    for (; i + 64 <= n; i += 64) {
        put16a<Stream>(d + i, v);
        put16a<Stream>(d + i + 16, v);
        put16a<Stream>(d + i + 32, v);
        put16a<Stream>(d + i + 48, v);
    }
    for (; i + 16 <= n; i += 16) put16a<Stream>(d + i, v);
    for (; i < n; ++i) d[i] = value;
}

}  // namespace

void fill_run(Zan8u value, Zan8u* pDst, std::ptrdiff_t length, bool stream) {
    if (length < 16) {
        for (std::ptrdiff_t i = 0; i < length; ++i) pDst[i] = value;
        return;
    }
    simd::store16(pDst, _mm_set1_epi8(static_cast<char>(value)));
    std::ptrdiff_t skip = static_cast<std::ptrdiff_t>((16 - (reinterpret_cast<std::uintptr_t>(pDst) & 15)) & 15);
    if (stream) fill_aligned<true>(pDst + skip, length - skip, value);
    else fill_aligned<false>(pDst + skip, length - skip, value);
}

}  // namespace zan::ZAN_PATH::support

namespace zan::ZAN_PATH {

namespace {

// The region after its checks.  Rows that lie end to end are one row.
void set_region(Zan8u value, Zan8u* pDst, Zan32s dstStep, ZaniSize roiSize) {
    const std::ptrdiff_t total = std::ptrdiff_t{roiSize.width} * roiSize.height;
    bool stream = false;
    if (total > 0x80000) {
        Zan32s cache = 0;
        stream = zanGetMaxCacheSizeB(&cache) == zanStsOk && total >= cache;
    }
    if (dstStep == roiSize.width) {
        support::fill_run(value, pDst, total, stream);
    } else {
        for (Zan32s y = 0; y < roiSize.height; ++y)
            support::fill_run(value, simd::row(pDst, dstStep, y), roiSize.width, stream);
    }
    if (stream) _mm_sfence();
}

}  // namespace

void owniSet_8u_C1_M7(Zan8u value, Zan8u* pDst, std::ptrdiff_t length, bool stream) {
    support::fill_run(value, pDst, length, stream);
    if (stream) _mm_sfence();
}

ZanStatus zaniSet_8u_C1R(Zan8u value, Zan8u* pDst, Zan32s dstStep, ZaniSize roiSize) {
    if (!pDst) return zanStsNullPtr;
    if (roiSize.width < 1 || roiSize.height < 1) return zanStsSizeBad;
    set_region(value, pDst, dstStep, roiSize);
    return zanStsOk;
}

// One row of length bytes, under the same size rule as a region.
ZanStatus zansSet_8u(Zan8u value, Zan8u* pDst, Zan32s length) {
    if (!pDst) return zanStsNullPtr;
    if (length <= 0) return zanStsSizeBad;
    set_region(value, pDst, length, ZaniSize{length, 1});
    return zanStsOk;
}

ZanStatus zansZero_8u(Zan8u* pDst, Zan32s length) { return zansSet_8u(0, pDst, length); }

}  // namespace zan::ZAN_PATH
