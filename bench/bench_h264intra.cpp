// H.264 intra prediction: every catalogue entry (rule, u8 kernel, n8 kernel)
// with all neighbours present, and a few calls through the exported
// functions.  The 8x8 predictors read an edge record prepared once.
//
// The block sits in a small picture of random samples that stays in the L1
// cache; rows lie kStep bytes apart and the block starts 16 bytes into its
// row, so a 16-byte row of the block is aligned and its left neighbour is
// the byte before.  Each iteration predicts the same block again from the
// same neighbours.
#include "bench_util.h"
#include "h264/h264intra.h"

namespace {

using namespace zan;
using namespace zan::h264intra;
using bench::Buffer;

constexpr Zan32s kStep = 64;
constexpr Zan32s kAll = kAbove | kLeft | kCorner | kAboveRight;

struct Picture {
    Buffer buf{kStep * 20};
    Picture() { buf.fill(7); }
    Zan8u* block() { return buf.data() + kStep + 16; }
};

template <class Fn>
void time_block(benchmark::State& s, const KernelPair<Fn>&, Fn fn) {
    Picture pic;
    Zan8u* p = pic.block();
    for (auto _ : s) {
        benchmark::DoNotOptimize(p);
        Zan32s r = fn(p, kStep, kAll);
        benchmark::DoNotOptimize(r);
        benchmark::ClobberMemory();
    }
}

void time_dc_split(benchmark::State& s, const KernelPair<ChromaDcSplitFn>&, ChromaDcSplitFn fn) {
    Picture pic;
    Zan8u* p = pic.block();
    for (auto _ : s) {
        benchmark::DoNotOptimize(p);
        Zan32s r = fn(p, kStep, kAll, kAbove);
        benchmark::DoNotOptimize(r);
        benchmark::ClobberMemory();
    }
}

void time_filter(benchmark::State& s, const KernelPair<EdgeFilterFn>&, EdgeFilterFn fn) {
    Picture pic;
    Edge8x8 e;
    Zan8u* p = pic.block();
    for (auto _ : s) {
        benchmark::DoNotOptimize(p);
        fn(&e, p, kStep, kAll);
        benchmark::DoNotOptimize(e);
        benchmark::ClobberMemory();
    }
}

void time_pred8x8(benchmark::State& s, const KernelPair<Pred8x8Fn>&, Pred8x8Fn fn) {
    Picture pic;
    Edge8x8 e;
    Zan8u* p = pic.block();
    u8::h264intra::filter_edges_8x8(&e, p, kStep, kAll);
    for (auto _ : s) {
        benchmark::DoNotOptimize(p);
        benchmark::DoNotOptimize(e);
        fn(&e, p, kStep);
        benchmark::ClobberMemory();
    }
}

template <class Call>
void add_export(const char* name, Call call) {
    bench::add(std::string("h264intra/export/") + name, [call](benchmark::State& s) {
        Picture pic;
        Zan8u* p = pic.block();
        for (auto _ : s) {
            benchmark::DoNotOptimize(p);
            ZanStatus st = call(p);
            benchmark::DoNotOptimize(st);
            benchmark::ClobberMemory();
        }
    });
}

void add_exports() {
    add_export("pred4x4_dc", [](Zan8u* p) { return zaniPredictIntra_4x4_H264_8u_C1IR(p, kStep, 2, kAll); });
    add_export("pred4x4_diag_down_right",
               [](Zan8u* p) { return zaniPredictIntra_4x4_H264_8u_C1IR(p, kStep, 4, kAll); });
    add_export("pred4x4_vertical_128", [](Zan8u* p) { return zaniPredictIntra_4x4_H264_8u_C1IR(p, kStep, 0, 0); });
    add_export("pred16x16_dc", [](Zan8u* p) { return zaniPredictIntra_16x16_H264_8u_C1IR(p, kStep, 2, kAll); });
    add_export("pred16x16_plane", [](Zan8u* p) { return zaniPredictIntra_16x16_H264_8u_C1IR(p, kStep, 3, kAll); });
    add_export("chroma8x8_dc", [](Zan8u* p) { return zaniPredictIntraChroma8x8_H264_8u_C1IR(p, kStep, 0, kAll); });
    add_export("chroma8x8_plane", [](Zan8u* p) { return zaniPredictIntraChroma8x8_H264_8u_C1IR(p, kStep, 3, kAll); });
}

}  // namespace

ZAN_BENCH_FAMILY(h264intra) {
    using bench::add_pairs;
    const Kernels& ku = u8::h264intra::kernels;
    const Kernels& kn = n8::h264intra::kernels;
    add_pairs<Pred4x4Fn>("h264intra", ku.pred4x4, kn.pred4x4, time_block<Pred4x4Fn>);
    add_pairs<PredBlockFn>("h264intra", ku.pred16x16, kn.pred16x16, time_block<PredBlockFn>);
    add_pairs<PredBlockFn>("h264intra", ku.chroma, kn.chroma, time_block<PredBlockFn>);
    add_pairs<ChromaDcSplitFn>("h264intra", ku.chromaDcSplit, kn.chromaDcSplit, time_dc_split);
    add_pairs<EdgeFilterFn>("h264intra", ku.filter8x8, kn.filter8x8, time_filter);
    add_pairs<Pred8x8Fn>("h264intra", ku.pred8x8, kn.pred8x8, time_pred8x8);
    add_exports();
}
