// H.264 forward transforms and quantisation: every catalogue entry (rule,
// u8 kernel, n8 kernel) and the exported per-block calls of an encoder.
//
// Inputs are residuals in -255..255 (DC stages: DC values of such blocks),
// kept in a small buffer that stays in the L1 cache; the in-place kernels
// get a fresh copy of the block each iteration, which is timed with them
// (a 32-byte or 128-byte copy).  QP 28, inter, zigzag scan.
#include <array>
#include <numeric>

#include "bench_util.h"
#include "h264/h264fwd.h"

namespace {

using namespace zan;
using namespace zan::h264fwd;
using bench::Buffer;

constexpr Zan32s kQP = 28;

struct Inputs {
    std::array<Zan16s, 64> residual{}, scale{}, scan{};
    std::array<Zan16s, 64> work{}, out{};
    std::array<Zan8u, 64> pred{};
    Inputs() {
        Buffer b(256);
        b.fill(7);
        for (int k = 0; k < 64; ++k) {
            residual[static_cast<size_t>(k)] = static_cast<Zan16s>(b.data()[k] - b.data()[k + 64]);
            pred[static_cast<size_t>(k)] = b.data()[k + 128];
            scale[static_cast<size_t>(k)] = static_cast<Zan16s>(kQuant8x8[kQP % 6][k] >> 4);
        }
        std::iota(scan.begin(), scan.end(), Zan16s{0});
    }
};

template <class... T>
inline void escape(T*... p) {
    (benchmark::DoNotOptimize(p), ...);
}

void time_fwd4x4(benchmark::State& s, const KernelPair<Fwd4x4Fn>&, Fwd4x4Fn fn) {
    Inputs in;
    for (auto _ : s) {
        escape(in.residual.data(), in.out.data());
        fn(in.residual.data(), in.out.data());
        benchmark::ClobberMemory();
    }
}
void time_fwd_pred(benchmark::State& s, const KernelPair<FwdPredFn>&, FwdPredFn fn) {
    Inputs in;
    for (auto _ : s) {
        escape(in.pred.data(), in.out.data());
        fn(in.pred.data(), 16, in.out.data());
        benchmark::ClobberMemory();
    }
}
void time_fwd8x8(benchmark::State& s, const KernelPair<Fwd8x8Fn>&, Fwd8x8Fn fn) {
    Inputs in;
    for (auto _ : s) {
        escape(in.residual.data(), in.out.data());
        fn(in.residual.data(), in.out.data());
        benchmark::ClobberMemory();
    }
}
void time_flat(benchmark::State& s, const KernelPair<FlatQuantFn>&, FlatQuantFn fn) {
    Inputs in;
    Zan32s num = 0, last = 0;
    for (auto _ : s) {
        in.work = in.residual;
        escape(in.work.data(), in.scan.data());
        ZanStatus st = fn(in.work.data(), kQP, 0, in.scan.data(), &num, &last);
        benchmark::DoNotOptimize(st);
        benchmark::ClobberMemory();
    }
}
void time_luma_dc(benchmark::State& s, const KernelPair<FlatLumaDcFn>&, FlatLumaDcFn fn) {
    Inputs in;
    Zan32s num = 0, last = 0;
    for (auto _ : s) {
        in.work = in.residual;
        escape(in.work.data(), in.out.data());
        ZanStatus st = fn(in.work.data(), in.out.data(), kQP, in.scan.data(), &num, &last);
        benchmark::DoNotOptimize(st);
        benchmark::ClobberMemory();
    }
}
void time_chroma_dc(benchmark::State& s, const KernelPair<FlatChromaDcFn>&, FlatChromaDcFn fn) {
    Inputs in;
    Zan32s num = 0;
    for (auto _ : s) {
        in.work = in.residual;
        escape(in.work.data(), in.out.data());
        ZanStatus st = fn(in.work.data(), in.out.data(), kQP, 0, 1, &num);
        benchmark::DoNotOptimize(st);
        benchmark::ClobberMemory();
    }
}
void time_quant16(benchmark::State& s, const KernelPair<Quant16Fn>& e, Quant16Fn fn) {
    Inputs in;
    Zan32s last = 0;
    const Zan32s shift = e.width == 4 ? 11 + kQP / 6 : 12 + kQP / 6;
    const Zan32s round = e.width == 4 ? (1 << shift) / 6 : 342 << (kQP / 6 + 1);
    for (auto _ : s) {
        escape(in.residual.data(), in.out.data());
        Zan32s n = fn(in.residual.data(), in.out.data(), in.scale.data(), shift, round, in.scan.data(), &last);
        benchmark::DoNotOptimize(n);
        benchmark::ClobberMemory();
    }
}

template <class Call>
void add_export(const char* name, Call call) {
    bench::add(std::string("h264fwd/export/") + name, [call](benchmark::State& s) {
        Inputs in;
        for (auto _ : s) {
            in.work = in.residual;
            escape(in.work.data(), in.out.data());
            ZanStatus st = call(in);
            benchmark::DoNotOptimize(st);
            benchmark::ClobberMemory();
        }
    });
}

void add_exports() {
    add_export("transform_quant_residual", [](Inputs& in) {
        Zan32s n;
        Zan8u l;
        return zaniTransformQuantResidual_H264_16s_C1I(in.work.data(), kQP, &n, 0, in.scan.data(), &l);
    });
    add_export("transform_quant_fwd4x4", [](Inputs& in) {
        Zan32s n, l;
        return zaniTransformQuantFwd4x4_H264_16s_C1(in.work.data(), in.out.data(), kQP, &n, 0, in.scan.data(), &l,
                                                    nullptr);
    });
    add_export("transform_quant_fwd4x4_32s", [](Inputs& in) {
        Zan32s n, l, d[16];
        return zaniTransformQuantFwd4x4_H264_16s32s_C1(in.work.data(), d, kQP, &n, 0, in.scan.data(), &l, nullptr);
    });
    add_export("transform8x8_then_quant8x8", [](Inputs& in) {
        Zan32s n, l;
        zaniTransformLuma8x8Fwd_H264_16s_C1I(in.work.data());
        return zaniQuantLuma8x8_H264_16s_C1(in.work.data(), in.out.data(), kQP / 6, 0, in.scan.data(),
                                            in.scale.data(), &n, &l);
    });
    add_export("transform8x8_16s32s", [](Inputs& in) {
        Zan32s d[64];
        ZanStatus st = zaniTransformFwdLuma8x8_H264_16s32s_C1(in.work.data(), d);
        benchmark::DoNotOptimize(d);
        return st;
    });
    add_export("luma_dc_flat", [](Inputs& in) {
        Zan32s n;
        Zan8u l;
        return zaniTransformQuantLumaDC_H264_16s_C1I(in.work.data(), in.out.data(), kQP, &n, 1, in.scan.data(), &l);
    });
    add_export("luma_dc_high", [](Inputs& in) {
        Zan32s n, l;
        return zaniTransformQuantFwdLumaDC4x4_H264_16s_C1I(in.work.data(), in.out.data(), kQP, &n, 1,
                                                          in.scan.data(), &l, nullptr);
    });
    add_export("chroma_dc_flat", [](Inputs& in) {
        Zan32s n;
        return zaniTransformQuantChromaDC_H264_16s_C1I(in.work.data(), in.out.data(), kQP, &n, 0, 1);
    });
    add_export("chroma_dc2x2_high", [](Inputs& in) {
        Zan32s n;
        return zaniTransformQuantFwdChromaDC2x2_H264_16s_C1I(in.work.data(), in.out.data(), kQP, &n, 0, 1, nullptr);
    });
    add_export("chroma_dc2x4_high", [](Inputs& in) {
        Zan32s n;
        return zaniTransformQuantFwdChromaDC2x4_H264_16s_C1I(in.work.data(), in.out.data(), kQP, &n, 0, 1, nullptr);
    });
}

}  // namespace

ZAN_BENCH_FAMILY(h264fwd) {
    using bench::add_pairs;
    const Kernels& ku = u8::h264fwd::kernels;
    const Kernels& kn = n8::h264fwd::kernels;
    add_pairs<Fwd4x4Fn>("h264fwd", ku.fwd4x4, kn.fwd4x4, time_fwd4x4);
    add_pairs<FwdPredFn>("h264fwd", ku.fwdPred, kn.fwdPred, time_fwd_pred);
    add_pairs<Fwd8x8Fn>("h264fwd", ku.fwd8x8, kn.fwd8x8, time_fwd8x8);
    add_pairs<FlatQuantFn>("h264fwd", ku.flatQuant, kn.flatQuant, time_flat);
    add_pairs<FlatLumaDcFn>("h264fwd", ku.flatLumaDc, kn.flatLumaDc, time_luma_dc);
    add_pairs<FlatChromaDcFn>("h264fwd", ku.flatChromaDc, kn.flatChromaDc, time_chroma_dc);
    add_pairs<Quant16Fn>("h264fwd", ku.quant16, kn.quant16, time_quant16);
    add_exports();
}
