// Support functions used inside the library: aligned allocation, byte copy
// and fill of rows and regions, the median of three planes and the box
// lowpass filter.  They are not exported; the families call them directly
// and the tests reach both builds' copies through the kernel archive.
//
// Each function is declared once per build, in zan::u8 and zan::n8, with the
// same prototype; a kernel source defines the one of its own build.
#pragma once

#include <cstddef>

#include "zanvc.h"

namespace zan {

// Mask codes of zaniFilterLowpass_8u_C1R: the window is 3x3 or 5x5 samples.
enum : Zan32s { kMask3x3 = 33, kMask5x5 = 55 };

}  // namespace zan

#define ZAN_SUPPORT_DECLARATIONS(P)                                                                   \
    namespace zan::P {                                                                                \
    /* A 64-byte aligned block of length elements from zanMalloc; null for a length of 0 or less,  */ \
    /* when the byte count does not fit in Zan32s, or when memory is short. */                      \
    Zan8u* zansMalloc_8u(Zan32s length);                                                              \
    Zan8s* zansMalloc_8s(Zan32s length);                                                              \
    Zan16u* zansMalloc_16u(Zan32s length);                                                            \
    void zansFree(void* ptr);                                                                         \
    void zaniFree(void* ptr);                                                                         \
                                                                                                      \
    /* Copies and fills; the areas must not overlap. */                                               \
    ZanStatus zansCopy_8u(const Zan8u* pSrc, Zan8u* pDst, Zan32s length);                             \
    ZanStatus zansCopy_16s(const Zan16s* pSrc, Zan16s* pDst, Zan32s length);                          \
    ZanStatus zansSet_8u(Zan8u value, Zan8u* pDst, Zan32s length);                                    \
    ZanStatus zansZero_8u(Zan8u* pDst, Zan32s length);                                                \
    ZanStatus zaniCopy_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep,         \
                              ZaniSize roiSize);                                                      \
    ZanStatus zaniSet_8u_C1R(Zan8u value, Zan8u* pDst, Zan32s dstStep, ZaniSize roiSize);             \
                                                                                                      \
    /* Rounded mean of the 3x3 (mask 33) or 5x5 (mask 55) window centred on each sample; reads   */  \
    /* 1 or 2 samples beyond the region on every side.  Steps must be 1 or more. */                  \
    ZanStatus zaniFilterLowpass_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep, \
                                       ZaniSize roiSize, Zan32s mask);                                \
    /* Median of the three planes' samples at each place; the planes share srcStep. */               \
    ZanStatus zaniMedian_8u_P3C1R(const Zan8u* const pSrc[3], Zan32s srcStep, Zan8u* pDst,            \
                                  Zan32s dstStep, ZaniSize roiSize);                                  \
                                                                                                      \
    /* The byte copy kernel: a length above 131072 bytes asks the processor for its largest cache   */ \
    /* and writes with non-temporal stores (then fences) when the copy exceeds half of it. */        \
    void ownsCopy_8u(const Zan8u* pSrc, Zan8u* pDst, std::ptrdiff_t length);                          \
    /* The fill kernel; with stream set it writes with non-temporal stores and fences after. */      \
    void owniSet_8u_C1_M7(Zan8u value, Zan8u* pDst, std::ptrdiff_t length, bool stream);              \
    }                                                                                                 \
                                                                                                      \
    namespace zan::P::support {                                                                       \
    /* Largest data or unified cache named by one answer of CPUID leaf 2 (EAX, EBX, ECX, EDX):     */ \
    /* its size in bytes, 0 when no descriptor names one, -1 when descriptor 0xFF sends the caller */ \
    /* to leaf 4. */                                                                                  \
    Zan32s cache_from_leaf2(const Zan32u regs[4]);                                                    \
    /* The size from this processor's leaf 2, or 0 when it does not tell that way. */                \
    Zan32s largest_cache_leaf2();                                                                     \
    /* Whether a copy of total bytes in all writes with non-temporal stores. */                      \
    bool copy_streams(std::ptrdiff_t total);                                                          \
    /* The copy and fill kernels without the decision and without the closing fence. */             \
    void copy_run(const Zan8u* pSrc, Zan8u* pDst, std::ptrdiff_t length, bool stream);                \
    void fill_run(Zan8u value, Zan8u* pDst, std::ptrdiff_t length, bool stream);                      \
                                                                                                      \
    /* The plain per-sample rules that fix the results of the vector kernels. */                     \
    void median_rule(const Zan8u* const pSrc[3], Zan32s srcStep, Zan8u* pDst, Zan32s dstStep,         \
                     ZaniSize roiSize);                                                               \
    void lowpass_rule(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep, ZaniSize roiSize, \
                      Zan32s mask);                                                                   \
    }

ZAN_SUPPORT_DECLARATIONS(u8)
ZAN_SUPPORT_DECLARATIONS(n8)
#undef ZAN_SUPPORT_DECLARATIONS
