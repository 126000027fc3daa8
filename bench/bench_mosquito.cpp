// Mosquito filter: the frame-difference count (rule, u8, n8), the whole call
// with the rule's count and with each path's vector count, and the export,
// at 720x576 and 1920x1080 (counter MP/s).  The content is blocky with
// edges and ringing-like noise; the previous frame is a slightly different
// copy.
#include <string>

#include "bench_util.h"
#include "picture/mosquito.h"

namespace {

using namespace zan;
using bench::Buffer;

struct Size {
    Zan32s w, h;
};
constexpr Size kSizes[] = {{720, 576}, {1920, 1080}};

struct Pictures {
    Size s;
    Buffer cur, prev, dst, noise{4096};
    ZanDenoiseMosquitoState* state = nullptr;
    explicit Pictures(Size sz)
        : s(sz), cur(static_cast<size_t>(sz.w * sz.h)), prev(static_cast<size_t>(sz.w * sz.h)),
          dst(static_cast<size_t>(sz.w * sz.h)) {
        noise.fill(3);
        for (Zan32s y = 0; y < s.h; ++y)
            for (Zan32s x = 0; x < s.w; ++x) {
                const size_t i = static_cast<size_t>(y * s.w + x);
                const Zan32s base = ((x / 24 + y / 16) % 3) * 80 + 20;
                const Zan8u n = noise.data()[i % noise.size()];
                cur.data()[i] = static_cast<Zan8u>(base + n % 9);
                prev.data()[i] = static_cast<Zan8u>(base + (n >> 4) % 9);
            }
        zaniFilterDenoiseMosquitoInitAlloc_8u_C1(&state, {s.w, s.h});
    }
    ~Pictures() { zaniFilterDenoiseMosquitoFree_8u_C1(state); }
};

void run(benchmark::State& st, mosquito::FrameFn fn, Size s) {
    Pictures p(s);
    const Zan8u* src[2] = {p.prev.data(), p.cur.data()};
    for (auto _ : st) {
        fn(src, s.w, p.dst.data(), s.w, {s.w, s.h}, p.state, {0, 0}, {s.w, s.h});
        benchmark::DoNotOptimize(p.dst.data());
    }
    st.counters["MP/s"] = benchmark::Counter(static_cast<double>(s.w) * s.h * static_cast<double>(st.iterations()) / 1e6,
                                             benchmark::Counter::kIsRate);
}

void time_count(benchmark::State& st, const KernelPair<mosquito::CountFn>&, mosquito::CountFn fn) {
    Buffer a(144), b(144);
    a.fill(1);
    b.fill(2);
    for (auto _ : st) {
        benchmark::DoNotOptimize(a.data());
        benchmark::DoNotOptimize(fn(a.data(), b.data(), 16));
    }
}

std::string size_name(Size s) { return std::to_string(s.w) + "x" + std::to_string(s.h); }

ZanStatus export_call(const Zan8u* const pSrc[2], Zan32s srcStep, Zan8u* pDst, Zan32s dstStep, ZaniSize img,
                      ZanDenoiseMosquitoState* st, ZaniPoint off, ZaniSize roi) {
    const Zan8u* src[2] = {pSrc[0], pSrc[1]};
    return zaniFilterDenoiseMosquito_8u_C1R(src, srcStep, pDst, dstStep, img, st, off, roi);
}

}  // namespace

ZAN_BENCH_FAMILY(mosquito) {
    const mosquito::Kernels& ku = u8::mosquito::kernels;
    const mosquito::Kernels& kn = n8::mosquito::kernels;
    bench::add_pairs<mosquito::CountFn>("mosquito", ku.count, kn.count, time_count);
    for (Size s : kSizes) {
        const auto& e = ku.frame[0];
        const std::string base = std::string("mosquito/") + e.name + "_" + size_name(s);
        bench::add(base + "/rule", [=](benchmark::State& st) { run(st, e.rule, s); });
        bench::add(base + "/u8", [=](benchmark::State& st) { run(st, e.simd, s); });
        bench::add(base + "/n8", [=, &kn](benchmark::State& st) { run(st, kn.frame[0].simd, s); });
        bench::add("mosquito/export/C1R_" + size_name(s), [=](benchmark::State& st) {
            run(st, [](const Zan8u* const a[2], Zan32s b, Zan8u* c, Zan32s d, ZaniSize e2, ZanDenoiseMosquitoState* f,
                       ZaniPoint g, ZaniSize h) { export_call(a, b, c, d, e2, f, g, h); }, s);
        });
    }
}
