// The library frame: version record, the load-time choice of path, and the
// export list as the loader sees it.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "frame/bodies.h"
#include "zancore.h"
#include "zanvc.h"
#include "zanvc_release.h"

namespace {

bool expect_n8(Zan64u enabled) { return (enabled & ZAN_CPU_SSSE3) && (enabled & ZAN_CPU_MOVBE); }

TEST(Frame, VersionRecordOfTheActivePath) {
    const ZanLibraryVersion* v = zanvcGetLibVersion();
    ASSERT_NE(v, nullptr);
    // The release values come from the build's one version setting.
    EXPECT_EQ(v->major, ZANVC_RELEASE_MAJOR);
    EXPECT_EQ(v->minor, ZANVC_RELEASE_MINOR);
    EXPECT_EQ(v->update, ZANVC_RELEASE_UPDATE);
    EXPECT_EQ(v->build, ZANVC_RELEASE_BUILD);
    EXPECT_STREQ(v->versionText, ZANVC_RELEASE_TEXT);
    EXPECT_STREQ(v->buildDate, ZANVC_RELEASE_DATE);
    char text[64];
    std::snprintf(text, sizeof text, "%d.%d.%d (r%d)", v->major, v->minor, v->update, v->build);
    EXPECT_STREQ(v->versionText, text);
    EXPECT_EQ(std::strlen(v->buildDate), 11u);  // "Mmm dd yyyy"
    EXPECT_EQ(v->targetCode[2], 0);
    EXPECT_EQ(v->targetCode[3], 0);
    bool n8 = expect_n8(zanGetEnabledCpuFeatures());
    EXPECT_STREQ(v->targetCode, n8 ? "n8" : "u8");
    EXPECT_STREQ(v->name, n8 ? "zanVC Pico (n8)" : "zanVC SSSE3 (u8)");
    // Each build carries its own record.
    EXPECT_STREQ(zan::n8::zanvcGetLibVersion()->name, "zanVC Pico (n8)");
    EXPECT_STREQ(zan::u8::zanvcGetLibVersion()->name, "zanVC SSSE3 (u8)");
    EXPECT_STREQ(zan::u8::zanvcGetLibVersion()->targetCode, "u8");
}

TEST(Frame, SuiteRunsOnTheRequestedPath) {
    const char* want = std::getenv("ZANVC_EXPECT_PATH");
    if (!want) GTEST_SKIP() << "run outside ctest";
    Zan64u detected = 0;
    zanGetCpuFeatures(&detected, nullptr);
    if (std::strcmp(want, "n8") == 0 && !expect_n8(detected)) GTEST_SKIP() << "this processor has no MOVBE";
    EXPECT_STREQ(zanvcGetLibVersion()->targetCode, want);
}

std::string run(const std::string& command) {
    std::string out;
    FILE* p = popen(command.c_str(), "r");
    if (!p) return out;
    char buf[256];
    while (std::fgets(buf, sizeof buf, p)) out += buf;
    pclose(p);
    return out;
}

// SSSE3 and MOVBE together select n8; either bit masked selects u8; a change
// of mask after the load does not move the path.
TEST(Frame, PathChoiceFollowsTheEnabledWordAtLoad) {
    Zan64u detected = 0;
    zanGetCpuFeatures(&detected, nullptr);
    const std::string probe = ZANVC_PATH_PROBE, lib = ZANVC_LIBRARY_FILE;
    struct Case { const char* mask; Zan64u bits; };
    const Case cases[] = {
        {"ffffffffffffffff", ~Zan64u{0}},
        {"ffffffffffffffdf", ~ZAN_CPU_MOVBE},
        {"ffffffffffffffef", ~ZAN_CPU_SSSE3},
        {"30", ZAN_CPU_SSSE3 | ZAN_CPU_MOVBE},
        {"0", 0},
    };
    for (const Case& c : cases) {
        const char* want = expect_n8(detected & c.bits) ? "n8 n8\n" : "u8 u8\n";
        EXPECT_EQ(run("ZANCORE_CPU_FEATURES=" + std::string(c.mask) + " " + probe + " " + lib), want)
            << "environment mask " << c.mask;
        EXPECT_EQ(run("env -u ZANCORE_CPU_FEATURES " + probe + " " + lib + " " + c.mask), want)
            << "zanSetCpuFeatures mask " << c.mask;
    }
}

TEST(Frame, CoreMaskAndAllocation) {
    Zan64u detected = 0;
    Zan32u regs[4] = {0, 0, 0, 0};
    EXPECT_EQ(zanGetCpuFeatures(&detected, regs), zanStsOk);
    EXPECT_NE(detected & ZAN_CPU_SSE2, 0u);  // every x86-64 processor
    EXPECT_NE(regs[3], 0u);
    EXPECT_EQ(zanGetEnabledCpuFeatures() & ~detected, 0u);

    EXPECT_EQ(zanMalloc(0), nullptr);
    EXPECT_EQ(zanMalloc(-5), nullptr);
    for (Zan32s n : {1, 63, 64, 1000, 1 << 20}) {
        void* p = zanMalloc(n);
        ASSERT_NE(p, nullptr);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(p) % 64, 0u);
        std::memset(p, 0xAB, static_cast<size_t>(n));
        zanFree(p);
    }
    char buf[64];
    EXPECT_EQ(zanAlignPtr(buf + 1, 16), reinterpret_cast<void*>((reinterpret_cast<uintptr_t>(buf + 1) + 15) & ~uintptr_t{15}));
    EXPECT_EQ(zanAlignPtr(nullptr, 64), nullptr);

    Zan32s cache = 0;
    EXPECT_EQ(zanGetMaxCacheSizeB(nullptr), zanStsNullPtr);
    ZanStatus st = zanGetMaxCacheSizeB(&cache);
    if (st == zanStsOk) EXPECT_GE(cache, 32 * 1024);
    else EXPECT_EQ(st, zanStsErr);
    EXPECT_GE(ownGetNumThreads(), 1);
}

std::vector<std::string> export_list() {
    std::vector<std::string> names;
#define ZAN_EXPORT(family, name) names.push_back(#name);
#include "frame/exports.inc"
#undef ZAN_EXPORT
    return names;
}

TEST(Frame, EveryListedExportResolves) {
    void* lib = dlopen(ZANVC_LIBRARY_FILE, RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(lib, nullptr);
    for (const auto& name : export_list()) EXPECT_NE(dlsym(lib, name.c_str()), nullptr) << name;
    // Internal names stay inside.
    for (const char* hidden : {"zanJumpIndexForMergedDLL", "zanvcGetLibVersion_arraddr", "zansMalloc_8u"})
        EXPECT_EQ(dlsym(lib, hidden), nullptr) << hidden;
    dlclose(lib);
}

}  // namespace
