// AVS interpolation, weighting and loop filter: every catalogue entry
// (rule, u8 kernel, n8 kernel) on one block (interpolation: 16 rows of the
// width class; weighting: 16 rows; loop filter: one macroblock's edges,
// strong for the loop-filter entries' both segments), and the exported
// block interpolation inside and across the frame.
#include "avs/avsinter.h"
#include "bench_util.h"

namespace {

using namespace zan;
using namespace zan::avsinter;
using bench::Buffer;

constexpr Zan32s kStep = 64;

template <class... T>
inline void escape(T*... p) {
    (benchmark::DoNotOptimize(p), ...);
}

void time_luma(benchmark::State& s, const KernelPair<LumaFn>&, LumaFn fn) {
    Buffer src(kStep * 24 + 64), dst(kStep * 16 + 64);
    src.fill(1);
    const Zan8u* a = src.data() + 2 * kStep + 3;
    Zan8u* d = dst.data();
    for (auto _ : s) {
        escape(a, d);
        fn(a, kStep, d, kStep, 16);
        benchmark::ClobberMemory();
    }
}

void time_weight(benchmark::State& s, const KernelPair<WeightFn>&, WeightFn fn) {
    Buffer src(kStep * 16 + 64), dst(kStep * 16 + 64);
    src.fill(2);
    for (auto _ : s) {
        escape(src.data(), dst.data());
        fn(src.data() + 1, kStep, dst.data(), kStep, 40, -3, 16);
        benchmark::ClobberMemory();
    }
}

void time_deblock(benchmark::State& s, const KernelPair<DeblockFn>&, DeblockFn fn) {
    Buffer pic(kStep * 32 + 64);
    Zan8u* p = pic.data();
    for (int i = 0; i < kStep * 32; ++i) p[i] = static_cast<Zan8u>(100 + (i % 7) + ((i % kStep) >= 24 ? 6 : 0));
    const Zan8u alpha[2] = {30, 30}, beta[2] = {8, 8}, c[2] = {3, 3};
    const Zan8u bs[8] = {2, 0, 2, 0, 1, 0, 1, 0};
    Zan8u* mb = p + 8 * kStep + 16;
    for (auto _ : s) {
        escape(mb);
        fn(mb, kStep, alpha, beta, c, bs);
        benchmark::ClobberMemory();
    }
}

void add_exports() {
    for (int pos : {0, 2, 5, 10, 15}) {
        for (int inside : {1, 0}) {
            bench::add(std::string("avsinter/export/InterpolateLumaBlock_16x16_pos") + std::to_string(pos) +
                           (inside ? "_inside" : "_edge"),
                       [=](benchmark::State& s) {
                           Buffer plane(kStep * 48 + 64), dst(kStep * 16 + 64);
                           plane.fill(4);
                           ZanInterpolateBlockRecord r{};
                           r.pSrc[0] = plane.data();
                           r.srcStep = kStep;
                           r.pDst[0] = dst.data();
                           r.dstStep = kStep;
                           r.sizeFrame = {64, 48};
                           r.sizeBlock = {16, 16};
                           r.pointBlockPos = {16, 16};
                           r.pointVector = {(inside ? 4 : -80) + (pos & 3), (inside ? 4 : -80) + (pos >> 2)};
                           for (auto _ : s) {
                               escape(dst.data());
                               zaniInterpolateLumaBlock_AVS_8u_P1R(&r);
                               benchmark::ClobberMemory();
                           }
                       });
        }
    }
}

}  // namespace

ZAN_BENCH_FAMILY(avsinter) {
    const Kernels& u = u8::avsinter::kernels;
    const Kernels& n = n8::avsinter::kernels;
    bench::add_pairs<LumaFn>("avsinter", u.luma, n.luma, time_luma);
    bench::add_pairs<WeightFn>("avsinter", u.weight, n.weight, time_weight);
    bench::add_pairs<DeblockFn>("avsinter", u.deblock, n.deblock, time_deblock);
    add_exports();
}
