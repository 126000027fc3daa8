/*
 * zancore.h - libzancore, the platform layer under libzanvcu8: processor
 * features and the mask over them, aligned allocation, cache size.
 *
 * The enabled feature word is the detected word ANDed with a caller's mask.
 * The mask comes from the environment variable ZANCORE_CPU_FEATURES (a hex
 * number, read once when libzancore loads) or from zanSetCpuFeatures().
 * libzanvcu8 reads the enabled word once, when it loads; a later change does
 * not move it to another path.
 */
#ifndef ZANCORE_H
#define ZANCORE_H

#include "zanvc.h"

#ifdef __cplusplus
extern "C" {
#endif

#if defined(__GNUC__)
#define ZANCORE_API __attribute__((visibility("default")))
#else
#define ZANCORE_API
#endif

/* ==== zancore: the platform layer (processor features, allocation, cache size) ==== */

/* Feature bits of the detected and enabled words. */
#define ZAN_CPU_MMX    (1ull << 0)
#define ZAN_CPU_SSE    (1ull << 1)
#define ZAN_CPU_SSE2   (1ull << 2)
#define ZAN_CPU_SSE3   (1ull << 3)
#define ZAN_CPU_SSSE3  (1ull << 4)
#define ZAN_CPU_MOVBE  (1ull << 5)
#define ZAN_CPU_SSE41  (1ull << 6)
#define ZAN_CPU_SSE42  (1ull << 7)
#define ZAN_CPU_POPCNT (1ull << 8)
#define ZAN_CPU_AVX    (1ull << 9)  /* with operating-system support for the YMM state */
#define ZAN_CPU_AVX2   (1ull << 10)
#define ZAN_CPU_AVX512 (1ull << 11) /* AVX-512 F, with operating-system support */

/* Probes the processor.  Either argument may be null.  *pFeatures receives
 * the detected word; pCpuidRegs (4 words) receives EAX, EBX, ECX, EDX of
 * CPUID leaf 1.  Returns zanStsOk. */
ZANCORE_API ZanStatus zanGetCpuFeatures(Zan64u* pFeatures, Zan32u* pCpuidRegs);

/* The detected word ANDed with the current mask. */
ZANCORE_API Zan64u zanGetEnabledCpuFeatures(void);

/* Sets the mask (all ones enables everything detected).  Call it before
 * libzanvcu8 is loaded for it to steer the path.  Returns zanStsOk. */
ZANCORE_API ZanStatus zanSetCpuFeatures(Zan64u mask);

/* A block of at least length bytes, 64-byte aligned; null for a length of 0
 * or less, or when memory is short.  Free it with zanFree. */
ZANCORE_API void* zanMalloc(Zan32s length);
ZANCORE_API void zanFree(void* ptr);

/* ptr rounded up to the next multiple of alignment (a power of two). */
ZANCORE_API void* zanAlignPtr(void* ptr, Zan32s alignment);

/* Writes the size of the largest cache in bytes.  zanStsOk on success,
 * zanStsNullPtr for a null argument, zanStsErr when the processor does not
 * tell. */
ZANCORE_API ZanStatus zanGetMaxCacheSizeB(Zan32s* pSizeByte);

/* How many threads the libraries may use: the online processor count. */
ZANCORE_API Zan32s ownGetNumThreads(void);

/* ==== end of zancore ==== */

#ifdef __cplusplus
}
#endif

#endif /* ZANCORE_H */
