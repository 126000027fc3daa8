// H.263 resampling: every catalogue entry (rule, u8 kernel, n8 kernel) and
// the exports.  Plane kernels run on one QCIF luma plane (176x144 source for
// upsampling, 352x288 source for downsampling: both touch the QCIF/CIF pair);
// the backward prediction on one 16x16 macroblock; the 16-bit blocks on one
// block.  Rows lie kStep bytes apart.
#include "bench_util.h"
#include "h26x_mpeg4/resample263.h"

namespace {

using namespace zan;
using namespace zan::resample263;
using bench::Buffer;

constexpr Zan32s kStep = 384;  // bytes between rows, every plane buffer
constexpr Zan32s kRows = 300;

template <class... T>
inline void escape(T*... p) {
    (benchmark::DoNotOptimize(p), ...);
}

void time_plane(benchmark::State& s, const KernelPair<PlaneFn>& e, PlaneFn fn) {
    Buffer src(kStep * kRows), dst(kStep * kRows);
    src.fill(1);
    Zan32s w = e.param == kDown ? 352 : 176, h = e.param == kDown ? 288 : 144;
    for (auto _ : s) {
        escape(src.data(), dst.data());
        fn(src.data(), kStep, w, h, dst.data(), kStep, 0, -1);
        benchmark::ClobberMemory();
    }
}

void time_block16(benchmark::State& s, const KernelPair<Block16Fn>&, Block16Fn fn) {
    Buffer src(64 * 16), dst(64 * 16);
    src.fill(2);
    for (auto _ : s) {
        escape(src.data(), dst.data());
        fn(src.as<Zan16s>(), 64, dst.as<Zan16s>(), 64);
        benchmark::ClobberMemory();
    }
}

void time_backpred(benchmark::State& s, const KernelPair<BackPredFn>&, BackPredFn fn) {
    Buffer src(64 * 18), dst(64 * 16);
    src.fill(3);
    dst.fill(4);
    for (auto _ : s) {
        escape(src.data(), dst.data());
        fn(src.data() + 1, 64, 16, 16, dst.data(), 64);
        benchmark::ClobberMemory();
    }
}

template <class Call>
void add_export(const std::string& what, Call call) {
    bench::add("resample263/export/" + what, [=](benchmark::State& s) {
        Buffer src(kStep * kRows), dst(kStep * kRows);
        src.fill(5);
        ZanStatus st = call(src.data(), dst.data());
        if (st != zanStsOk) {
            s.SkipWithError(("status " + std::to_string(st)).c_str());
            return;
        }
        for (auto _ : s) {
            escape(src.data(), dst.data());
            st = call(src.data(), dst.data());
            benchmark::DoNotOptimize(st);
        }
    });
}

}  // namespace

ZAN_BENCH_FAMILY(resample263) {
    using bench::add_pairs;
    const Kernels& ku = u8::resample263::kernels;
    const Kernels& kn = n8::resample263::kernels;
    add_pairs<PlaneFn>("resample263", ku.plane, kn.plane, time_plane);
    add_pairs<Block16Fn>("resample263", ku.block16, kn.block16, time_block16);
    add_pairs<BackPredFn>("resample263", ku.backPred, kn.backPred, time_backpred);
    add_export("UpsampleFour_qcif", [](Zan8u* s, Zan8u* d) {
        return zaniUpsampleFour_H263_8u_C1R(s, kStep, {176, 144}, d, kStep, 0, -1);
    });
    add_export("DownsampleFour_cif", [](Zan8u* s, Zan8u* d) {
        return zaniDownsampleFour_H263_8u_C1R(s, kStep, {352, 288}, d, kStep, 0);
    });
    add_export("AddBackPredPB_16x16_HH", [](Zan8u* s, Zan8u* d) {
        return zaniAddBackPredPB_H263_8u_C1R(s + 1, kStep, {16, 16}, d, kStep, 3);
    });
}
