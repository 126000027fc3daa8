// libzancore: processor features and their mask, aligned allocation, cache size.
#include "zancore.h"

#include <cpuid.h>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace {

Zan64u g_detected = 0;
Zan64u g_mask = ~Zan64u{0};
bool g_probed = false;

Zan64u xgetbv0() {
    Zan32u lo, hi;
    __asm__ volatile("xgetbv" : "=a"(lo), "=d"(hi) : "c"(0));
    return (Zan64u{hi} << 32) | lo;
}

Zan64u probe(Zan32u regs[4]) {
    Zan32u a = 0, b = 0, c = 0, d = 0;
    if (!__get_cpuid(1, &a, &b, &c, &d)) return 0;
    if (regs) { regs[0] = a; regs[1] = b; regs[2] = c; regs[3] = d; }
    Zan64u f = 0;
    if (d & bit_MMX) f |= ZAN_CPU_MMX;
    if (d & bit_SSE) f |= ZAN_CPU_SSE;
    if (d & bit_SSE2) f |= ZAN_CPU_SSE2;
    if (c & bit_SSE3) f |= ZAN_CPU_SSE3;
    if (c & bit_SSSE3) f |= ZAN_CPU_SSSE3;
    if (c & bit_MOVBE) f |= ZAN_CPU_MOVBE;
    if (c & bit_SSE4_1) f |= ZAN_CPU_SSE41;
    if (c & bit_SSE4_2) f |= ZAN_CPU_SSE42;
    if (c & bit_POPCNT) f |= ZAN_CPU_POPCNT;
    bool ymm = false, zmm = false;
    if ((c & bit_OSXSAVE) && (c & bit_AVX)) {
        Zan64u xcr0 = xgetbv0();
        ymm = (xcr0 & 0x6) == 0x6;
        zmm = ymm && (xcr0 & 0xE0) == 0xE0;
    }
    if (ymm) f |= ZAN_CPU_AVX;
    Zan32u a7 = 0, b7 = 0, c7 = 0, d7 = 0;
    if (__get_cpuid_count(7, 0, &a7, &b7, &c7, &d7)) {
        if (ymm && (b7 & bit_AVX2)) f |= ZAN_CPU_AVX2;
        if (zmm && (b7 & bit_AVX512F)) f |= ZAN_CPU_AVX512;
    }
    return f;
}

void ensure_probed() {
    if (!g_probed) {
        g_detected = probe(nullptr);
        g_probed = true;
    }
}

// The mask from the environment is read once, when the library loads, so
// that it is in force before any library that depends on this one starts.
__attribute__((constructor)) void read_mask_from_environment() {
    ensure_probed();
    const char* text = std::getenv("ZANCORE_CPU_FEATURES");
    if (!text || !*text) return;
    char* end = nullptr;
    unsigned long long value = std::strtoull(text, &end, 16);
    if (end && *end == '\0') g_mask = value;
}

// Cache size from the deterministic cache parameters (CPUID leaf 4 on Intel,
// 0x8000001D on AMD), falling back to the AMD L2/L3 size leaves.
Zan64u cache_from_leaf(Zan32u leaf) {
    Zan64u largest = 0;
    for (Zan32u i = 0; i < 16; ++i) {
        Zan32u a, b, c, d;
        __cpuid_count(leaf, i, a, b, c, d);
        Zan32u type = a & 0x1F;
        if (type == 0) break;
        if (type == 2) continue;  // instruction cache
        Zan64u ways = ((b >> 22) & 0x3FF) + 1;
        Zan64u parts = ((b >> 12) & 0x3FF) + 1;
        Zan64u line = (b & 0xFFF) + 1;
        Zan64u sets = Zan64u{c} + 1;
        Zan64u size = ways * parts * line * sets;
        if (size > largest) largest = size;
    }
    return largest;
}

}  // namespace

extern "C" {

ZanStatus zanGetCpuFeatures(Zan64u* pFeatures, Zan32u* pCpuidRegs) {
    Zan64u f = probe(pCpuidRegs);
    g_detected = f;
    g_probed = true;
    if (pFeatures) *pFeatures = f;
    return zanStsOk;
}

Zan64u zanGetEnabledCpuFeatures(void) {
    ensure_probed();
    return g_detected & g_mask;
}

ZanStatus zanSetCpuFeatures(Zan64u mask) {
    g_mask = mask;
    return zanStsOk;
}

void* zanMalloc(Zan32s length) {
    if (length <= 0) return nullptr;
    void* p = nullptr;
    if (posix_memalign(&p, 64, static_cast<size_t>(length)) != 0) return nullptr;
    return p;
}

void zanFree(void* ptr) { std::free(ptr); }

void* zanAlignPtr(void* ptr, Zan32s alignment) {
    uintptr_t a = static_cast<uintptr_t>(alignment);
    uintptr_t p = reinterpret_cast<uintptr_t>(ptr);
    return reinterpret_cast<void*>((p + a - 1) & ~(a - 1));
}

ZanStatus zanGetMaxCacheSizeB(Zan32s* pSizeByte) {
    if (!pSizeByte) return zanStsNullPtr;
    Zan32u maxLeaf = __get_cpuid_max(0, nullptr);
    Zan32u maxExt = __get_cpuid_max(0x80000000u, nullptr);
    Zan64u size = 0;
    if (maxLeaf >= 4) size = cache_from_leaf(4);
    if (size == 0 && maxExt >= 0x8000001Du) size = cache_from_leaf(0x8000001Du);
    if (size == 0 && maxExt >= 0x80000006u) {
        Zan32u a, b, c, d;
        __cpuid(0x80000006u, a, b, c, d);
        Zan64u l2 = Zan64u{(c >> 16) & 0xFFFF} * 1024;
        Zan64u l3 = Zan64u{(d >> 18) & 0x3FFF} * 512 * 1024;
        size = l3 > l2 ? l3 : l2;
    }
    if (size == 0) return zanStsErr;
    if (size > 0x7FFFFFFF) size = 0x7FFFFFFF;
    *pSizeByte = static_cast<Zan32s>(size);
    return zanStsOk;
}

Zan32s ownGetNumThreads(void) {
    long n = sysconf(_SC_NPROCESSORS_ONLN);
    return n > 0 ? static_cast<Zan32s>(n) : 1;
}

}  // extern "C"
