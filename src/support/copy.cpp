// Byte copy of a row or a region.
//
// The kernel picks its loop by length: below 16 bytes a short tail of 8, 4,
// 2 and 1 byte moves; up to 128 bytes 16-byte units; beyond that 128 bytes a
// turn, with aligned stores when the destination sits on a 16-byte boundary
// and unaligned ones otherwise.  A copy of more than 131072 bytes that is
// also larger than half of the processor's largest cache (as CPUID leaf 2
// names it) bypasses the caches: the destination is aligned first, the body
// goes out through non-temporal stores and a store fence closes the copy.
// Whatever the loop, the result is a plain copy.
#include <cpuid.h>

#include <cstdint>

#include "common/simd.h"
#include "support/support.h"

namespace zan::ZAN_PATH::support {
namespace {

using simd::load16;
using simd::store16;

// ===================================================== cache from leaf 2

// Cache descriptors of CPUID leaf 2 that name a data or unified cache, with
// the cache's size in KiB (instruction caches and TLBs are left out: they
// never hold copied data).
struct Descriptor {
    Zan8u code;
    Zan32s kib;
};
constexpr Descriptor kCacheDescriptors[] = {
    {0x0A, 8},     {0x0C, 16},    {0x0D, 16},    {0x0E, 24},    {0x1D, 128},   {0x21, 256},
    {0x22, 512},   {0x23, 1024},  {0x24, 1024},  {0x25, 2048},  {0x29, 4096},  {0x2C, 32},
    {0x41, 128},   {0x42, 256},   {0x43, 512},   {0x44, 1024},  {0x45, 2048},  {0x46, 4096},
    {0x47, 8192},  {0x48, 3072},  {0x49, 4096},  {0x4A, 6144},  {0x4B, 8192},  {0x4C, 12288},
    {0x4D, 16384}, {0x4E, 6144},  {0x60, 16},    {0x66, 8},     {0x67, 16},    {0x68, 32},
    {0x78, 1024},  {0x79, 128},   {0x7A, 256},   {0x7B, 512},   {0x7C, 1024},  {0x7D, 2048},
    {0x7F, 512},   {0x80, 512},   {0x82, 256},   {0x83, 512},   {0x84, 1024},  {0x85, 2048},
    {0x86, 512},   {0x87, 1024},  {0xD0, 512},   {0xD1, 1024},  {0xD2, 2048},  {0xD6, 1024},
    {0xD7, 2048},  {0xD8, 4096},  {0xDC, 1536},  {0xDD, 3072},  {0xDE, 6144},  {0xE2, 2048},
    {0xE3, 4096},  {0xE4, 8192},  {0xEA, 12288}, {0xEB, 18432}, {0xEC, 24576},
};

constexpr Zan8u kUseLeaf4 = 0xFF;

// ================================================================ kernels

// Fewer than 16 bytes.
inline void copy_short(const Zan8u* s, Zan8u* d, std::ptrdiff_t n) {
    if (n & 8) {
        std::memcpy(d, s, 8);
        s += 8;
        d += 8;
    }
    if (n & 4) {
        std::memcpy(d, s, 4);
        s += 4;
        d += 4;
    }
    if (n & 2) {
        std::memcpy(d, s, 2);
        s += 2;
        d += 2;
    }
    if (n & 1) *d = *s;
}

// 16 bytes or more, in 16-byte units; the last unit ends at the last byte
// and may cover bytes already written (with the same values).
inline void copy_units(const Zan8u* s, Zan8u* d, std::ptrdiff_t n) {
    std::ptrdiff_t i = 0;
    for (; i + 16 <= n; i += 16) store16(d + i, load16(s + i));
    if (i < n) store16(d + n - 16, load16(s + n - 16));
}

enum class Store { kUnaligned, kAligned, kStream };

template <Store S>
inline void put16(Zan8u* d, __m128i v) {
    if constexpr (S == Store::kUnaligned) _mm_storeu_si128(reinterpret_cast<__m128i*>(d), v);
    else if constexpr (S == Store::kAligned) _mm_store_si128(reinterpret_cast<__m128i*>(d), v);
    else _mm_stream_si128(reinterpret_cast<__m128i*>(d), v);
}

// 128 bytes a turn while at least 128 are left, then 16-byte units, then a
// last unaligned unit ending at the last byte.  n is at least 16; for the
// aligned and streaming forms d is 16-byte aligned.
template <Store S>
void copy_long(const Zan8u* s, Zan8u* d, std::ptrdiff_t n) {
    std::ptrdiff_t i = 0;
    for (; i + 128 <= n; i += 128) {
        __m128i v0 = load16(s + i), v1 = load16(s + i + 16), v2 = load16(s + i + 32), v3 = load16(s + i + 48);
        __m128i v4 = load16(s + i + 64), v5 = load16(s + i + 80), v6 = load16(s + i + 96), v7 = load16(s + i + 112);
        put16<S>(d + i, v0);
        put16<S>(d + i + 16, v1);
        put16<S>(d + i + 32, v2);
        put16<S>(d + i + 48, v3);
        put16<S>(d + i + 64, v4);
        put16<S>(d + i + 80, v5);
        put16<S>(d + i + 96, v6);
        put16<S>(d + i + 112, v7);
    }
    for (; i + 16 <= n; i += 16) put16<S>(d + i, load16(s + i));
    if (i < n) store16(d + n - 16, load16(s + n - 16));
}

}  // namespace

Zan32s cache_from_leaf2(const Zan32u regs[4]) {
    Zan32s largest = 0;
    for (int r = 0; r < 4; ++r) {
        if (regs[r] & 0x80000000u) continue;  // the register holds no descriptors
        for (int k = r == 0 ? 1 : 0; k < 4; ++k) {  // the low byte of EAX is a call count
            Zan8u code = static_cast<Zan8u>(regs[r] >> (8 * k));
            if (code == kUseLeaf4) return -1;
            for (const Descriptor& e : kCacheDescriptors)
                if (e.code == code && e.kib * 1024 > largest) largest = e.kib * 1024;
        }
    }
    return largest;
}

Zan32s largest_cache_leaf2() {
    unsigned a, b, c, d;
    if (!__get_cpuid(0, &a, &b, &c, &d) || a < 2) return 0;
    // Leaf 2 descriptors are defined by one vendor only: "GenuineIntel".
    if (b != 0x756E6547u || d != 0x49656E69u || c != 0x6C65746Eu) return 0;
    __cpuid(2, a, b, c, d);
    // The low byte of EAX says how many times leaf 2 must be asked to list
    // every descriptor.
    unsigned calls = a & 0xFF;
    Zan32s largest = 0;
    for (unsigned i = 0;; ++i) {
        const Zan32u regs[4] = {a, b, c, d};
        Zan32s size = cache_from_leaf2(regs);
        if (size < 0) return 0;
        if (size > largest) largest = size;
        if (i + 1 >= calls || i >= 15) break;
        __cpuid(2, a, b, c, d);
    }
    return largest;
}

bool copy_streams(std::ptrdiff_t total) {
    if (total <= 131072) return false;
    Zan32s cache = largest_cache_leaf2();
    return cache > 0 && total > cache / 2;
}

void copy_run(const Zan8u* pSrc, Zan8u* pDst, std::ptrdiff_t length, bool stream) {
    if (length < 16) {
        copy_short(pSrc, pDst, length);
    } else if (length <= 128) {
        copy_units(pSrc, pDst, length);
    } else if (stream) {
        // One unaligned unit covers the bytes before the first 16-byte boundary.
        store16(pDst, load16(pSrc));
        std::ptrdiff_t skip = static_cast<std::ptrdiff_t>((16 - (reinterpret_cast<std::uintptr_t>(pDst) & 15)) & 15);
        copy_long<Store::kStream>(pSrc + skip, pDst + skip, length - skip);
    } else if ((reinterpret_cast<std::uintptr_t>(pDst) & 15) == 0) {
        copy_long<Store::kAligned>(pSrc, pDst, length);
    } else {
        copy_long<Store::kUnaligned>(pSrc, pDst, length);
    }
}

}  // namespace zan::ZAN_PATH::support

namespace zan::ZAN_PATH {

void ownsCopy_8u(const Zan8u* pSrc, Zan8u* pDst, std::ptrdiff_t length) {
    bool stream = support::copy_streams(length);
    support::copy_run(pSrc, pDst, length, stream);
    if (stream) _mm_sfence();
}

ZanStatus zansCopy_8u(const Zan8u* pSrc, Zan8u* pDst, Zan32s length) {
    if (!pSrc || !pDst) return zanStsNullPtr;
    if (length <= 0) return zanStsSizeBad;
    ownsCopy_8u(pSrc, pDst, length);
    return zanStsOk;
}

ZanStatus zansCopy_16s(const Zan16s* pSrc, Zan16s* pDst, Zan32s length) {
    if (!pSrc || !pDst) return zanStsNullPtr;
    if (length <= 0) return zanStsSizeBad;
    ownsCopy_8u(reinterpret_cast<const Zan8u*>(pSrc), reinterpret_cast<Zan8u*>(pDst), 2 * std::ptrdiff_t{length});
    return zanStsOk;
}

// Steps are not checked: zero and negative steps are copied row by row as
// given.  The region's total size decides once whether the rows stream.
ZanStatus zaniCopy_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep, ZaniSize roiSize) {
    if (!pSrc || !pDst) return zanStsNullPtr;
    if (roiSize.width < 1 || roiSize.height < 1) return zanStsSizeBad;
    const std::ptrdiff_t total = std::ptrdiff_t{roiSize.width} * roiSize.height;
    const bool stream = support::copy_streams(total);
    if (srcStep == roiSize.width && dstStep == roiSize.width) {
        support::copy_run(pSrc, pDst, total, stream);  // the rows lie end to end
    } else {
        for (Zan32s y = 0; y < roiSize.height; ++y)
            support::copy_run(simd::row(pSrc, srcStep, y), simd::row(pDst, dstStep, y), roiSize.width, stream);
    }
    if (stream) _mm_sfence();
    return zanStsOk;
}

}  // namespace zan::ZAN_PATH
