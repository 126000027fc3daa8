// H.264 deblocking: every catalogue entry (rule, u8 kernel, n8 kernel), one
// call per macroblock (all vertical or all horizontal edges of one plane), at
// bS 3 and at bS 4 on every segment, and a few exported functions.
//
// Alpha and beta are at their largest, so every line passes the sample
// tests and is filtered on every call: the worst case, and a steady one
// although the picture is filtered in place again and again.  The
// macroblock lies 16-byte aligned in a plane whose rows are kStep bytes
// apart, with its neighbours above and to the left.
#include <array>
#include <string>

#include "bench_util.h"
#include "h264/h264deblock.h"

namespace {

using namespace zan;
using namespace zan::h264deblock;
using bench::Buffer;

constexpr Zan32s kStep = 128;  // bytes between rows
constexpr Zan32s kRows = 24;   // 4 rows above the macroblock, 16 of it, spare

struct Inputs {
    Buffer plane{kStep * kRows};
    std::array<Zan8u, 16> bs{}, tc0{};
    std::array<Zan8u, 4> alpha{255, 255, 255, 255}, beta{255, 255, 255, 255};
    std::array<Zan16u, 16> tc16{};
    std::array<Zan16u, 4> alpha16{1023, 1023, 1023, 1023}, beta16{1023, 1023, 1023, 1023};
    explicit Inputs(Zan8u strength, bool sixteen = false) {
        if (sixteen)
            plane.fill16(1, 1023);
        else
            plane.fill(1);
        bs.fill(strength);
        tc0.fill(4);
        tc16.fill(16);
    }
    // The macroblock: 4 rows down, 16 bytes in.
    Zan8u* mb() { return plane.data() + 4 * kStep + 16; }
};

template <class T>
inline void escape(T* p) {
    benchmark::DoNotOptimize(p);
}

template <class Fn, class Call>
void add_strengths(const char* what, KernelList<Fn> u8, KernelList<Fn> n8, Call call) {
    for (Zan8u strength : {Zan8u{3}, Zan8u{4}}) {
        const std::string tag = std::string(":bs") + char('0' + strength);
        auto one = [&](const KernelPair<Fn>& e, Fn fn, const char* path) {
            bench::add(std::string("h264deblock/") + e.name + tag + "/" + path, [=](benchmark::State& s) {
                Inputs in(strength, std::string(what) == "16");
                for (auto _ : s) {
                    Inputs* p = &in;
                    escape(p);
                    call(fn, *p);
                    benchmark::ClobberMemory();
                }
            });
        };
        for (const auto& e : u8) {
            one(e, e.rule, "rule");
            one(e, e.simd, "u8");
        }
        for (const auto& e : n8) one(e, e.simd, "n8");
    }
}

template <class Call>
void add_export(const std::string& what, Zan8u strength, bool sixteen, Call call) {
    bench::add("h264deblock/export/" + what, [=](benchmark::State& s) {
        Inputs in(strength, sixteen);
        ZanStatus st = call(in);
        if (st != zanStsOk) {
            s.SkipWithError(("status " + std::to_string(st)).c_str());
            return;
        }
        for (auto _ : s) {
            Inputs* p = &in;
            escape(p);
            st = call(*p);
            benchmark::DoNotOptimize(st);
            benchmark::ClobberMemory();
        }
    });
}

void add_exports() {
    add_export("zaniFilterDeblockingLuma_VerEdge_H264_8u_C1IR:bs3", 3, false, [](Inputs& in) {
        return zaniFilterDeblockingLuma_VerEdge_H264_8u_C1IR(in.mb(), kStep, in.alpha.data(), in.beta.data(),
                                                              in.tc0.data(), in.bs.data());
    });
    add_export("zaniFilterDeblockingLuma_HorEdge_H264_8u_C1IR:bs3", 3, false, [](Inputs& in) {
        return zaniFilterDeblockingLuma_HorEdge_H264_8u_C1IR(in.mb(), kStep, in.alpha.data(), in.beta.data(),
                                                              in.tc0.data(), in.bs.data());
    });
    add_export("zaniFilterDeblockingChroma_HorEdge_H264_8u_C2IR:bs3", 3, false, [](Inputs& in) {
        return zaniFilterDeblockingChroma_HorEdge_H264_8u_C2IR(in.mb(), kStep, in.alpha.data(), in.beta.data(),
                                                                in.tc0.data(), in.bs.data());
    });
    add_export("zaniFilterDeblockingLumaVerEdge_H264_16u_C1IR:bs4", 4, true, [](Inputs& in) {
        ZanDeblockingRecord r{in.mb(), kStep / 2, in.alpha16.data(), in.beta16.data(), in.tc16.data(), in.bs.data(),
                              10};
        return zaniFilterDeblockingLumaVerEdge_H264_16u_C1IR(&r);
    });
    // The early exit: every strength zero.
    add_export("zaniFilterDeblockingLuma_VerEdge_H264_8u_C1IR:bs0", 0, false, [](Inputs& in) {
        return zaniFilterDeblockingLuma_VerEdge_H264_8u_C1IR(in.mb(), kStep, in.alpha.data(), in.beta.data(),
                                                              in.tc0.data(), in.bs.data());
    });
}

}  // namespace

ZAN_BENCH_FAMILY(h264deblock) {
    const Kernels& ku = u8::h264deblock::kernels;
    const Kernels& kn = n8::h264deblock::kernels;
    add_strengths<Edges8Fn>("8", ku.edges8, kn.edges8, [](Edges8Fn f, Inputs& in) {
        f(in.mb(), kStep, in.alpha.data(), in.beta.data(), in.tc0.data(), in.bs.data());
    });
    add_strengths<Mbaff8Fn>("8", ku.mbaff8, kn.mbaff8, [](Mbaff8Fn f, Inputs& in) {
        f(in.mb(), kStep, 255, 255, in.tc0.data(), in.bs.data());
    });
    add_strengths<Edges16Fn>("16", ku.edges16, kn.edges16, [](Edges16Fn f, Inputs& in) {
        f(reinterpret_cast<Zan16u*>(in.mb()), kStep / 2, in.alpha16.data(), in.beta16.data(), in.tc16.data(),
          in.bs.data(), 10);
    });
    add_exports();
}
