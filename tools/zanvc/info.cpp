// zanvc info: what the library and the platform layer report about
// themselves and about this processor.
#include <cstdio>

#include "commands.h"
#include "zancore.h"

namespace zanvc_tool {
namespace {

struct FeatureName {
    Zan64u bit;
    const char* name;
};
constexpr FeatureName kFeatures[] = {
    {ZAN_CPU_MMX, "MMX"},     {ZAN_CPU_SSE, "SSE"},     {ZAN_CPU_SSE2, "SSE2"},     {ZAN_CPU_SSE3, "SSE3"},
    {ZAN_CPU_SSSE3, "SSSE3"}, {ZAN_CPU_MOVBE, "MOVBE"}, {ZAN_CPU_SSE41, "SSE4.1"}, {ZAN_CPU_SSE42, "SSE4.2"},
    {ZAN_CPU_POPCNT, "POPCNT"}, {ZAN_CPU_AVX, "AVX"},   {ZAN_CPU_AVX2, "AVX2"},     {ZAN_CPU_AVX512, "AVX-512"},
};

void print_features(const char* label, Zan64u word) {
    std::printf("%-18s %016llx ", label, static_cast<unsigned long long>(word));
    Zan64u known = 0;
    for (const FeatureName& f : kFeatures) {
        known |= f.bit;
        if (word & f.bit) std::printf(" %s", f.name);
    }
    if (word & ~known) std::printf("  (other bits %llx)", static_cast<unsigned long long>(word & ~known));
    std::printf("\n");
}

}  // namespace

int info(int argc, char**) {
    if (argc > 0) {
        std::fprintf(stderr, "zanvc info takes no arguments\n");
        return 2;
    }
    const ZanLibraryVersion* v = zanvcGetLibVersion();
    std::printf("library            %s\n", v->name);
    std::printf("version            %d.%d.%d\n", v->major, v->minor, v->update);
    std::printf("build              %d\n", v->build);
    std::printf("targetCode         %.4s\n", v->targetCode);
    std::printf("versionText        %s\n", v->versionText);
    std::printf("buildDate          %s\n", v->buildDate);
    std::printf("active path        %s (%s)\n", active_path(),
                active_path()[0] == 'n' ? "SSSE3 and MOVBE enabled: the build for in-order low-power processors"
                                        : "the general SSSE3 build");

    Zan64u detected = 0;
    Zan32u regs[4] = {0, 0, 0, 0};
    zanGetCpuFeatures(&detected, regs);
    print_features("detected features", detected);
    print_features("enabled features", zanGetEnabledCpuFeatures());
    std::printf("cpuid leaf 1       eax %08x ebx %08x ecx %08x edx %08x\n", regs[0], regs[1], regs[2], regs[3]);

    Zan32s cache = 0;
    ZanStatus st = zanGetMaxCacheSizeB(&cache);
    if (st == zanStsOk)
        std::printf("largest cache      %d bytes (%d KiB)\n", cache, cache / 1024);
    else
        std::printf("largest cache      not reported (status %d)\n", st);
    std::printf("threads            %d\n", ownGetNumThreads());
    return 0;
}

}  // namespace zanvc_tool
