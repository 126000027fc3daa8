// Path tables and the load-time choice of path.
//
// zanJumpIndexForMergedDLL is 0 for the u8 build and 1 for the n8 build.  It
// is written once, by the initialiser below, before any export can run, and
// only read afterwards.  Each export has a table of two code addresses,
// <name>_arraddr, that the export stub indexes with it.
#include "zancore.h"
#include "frame/bodies.h"

extern "C" {

__attribute__((visibility("hidden"))) Zan32s zanJumpIndexForMergedDLL = 0;

#define ZAN_EXPORT(family, name)                                                          \
    __attribute__((visibility("hidden"))) extern const void* const name##_arraddr[2];      \
    const void* const name##_arraddr[2] = {reinterpret_cast<const void*>(&zan::u8::name), \
                                           reinterpret_cast<const void*>(&zan::n8::name)};
#include "frame/exports.inc"
#undef ZAN_EXPORT

}  // extern "C"

namespace {

// The n8 path is the build tuned for the in-order low-power processors; the
// MOVBE bit beside SSSE3 marks them.  No code of either path executes MOVBE.
constexpr Zan64u kSsse3 = ZAN_CPU_SSSE3;
constexpr Zan64u kMovbe = ZAN_CPU_MOVBE;

__attribute__((constructor)) void zan_select_path() {
    (void)zanGetCpuFeatures(nullptr, nullptr);
    Zan64u enabled = zanGetEnabledCpuFeatures();
    zanJumpIndexForMergedDLL = ((enabled & kSsse3) && (enabled & kMovbe)) ? 1 : 0;
}

}  // namespace
