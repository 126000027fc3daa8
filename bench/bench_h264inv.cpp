// H.264 inverse transforms and dequantisation: every catalogue entry (rule,
// u8 kernel, n8 kernel) per block, and a set of exported functions.
//
// One block per call.  Predictions and destinations are 16-byte aligned with
// rows kStep bytes apart.  The in-place forms cycle through eight coefficient
// blocks, so that one call does not wait for the previous call's stores, and
// are not restored between calls (the kernels have no data-dependent
// branches: AC is 1 and QP fixed, so the time does not depend on the
// values).  QP 28 (or Qp6 4) takes the rounding branch of the dequantisers.
#include "bench_util.h"
#include "h264/h264inv.h"

namespace {

using namespace zan;
using namespace zan::h264inv;
using bench::Buffer;

constexpr Zan32s kStep = 64;

struct Inputs {
    Buffer pred{kStep * 8};
    Buffer dst{kStep * 8};
    Buffer coef{8 * 256};
    Inputs() {
        pred.fill(1);
        dst.fill(2);
        coef.fill16(3, 0x003F);  // small levels 0..63
    }
    // Coefficient block k of 0..7 (256 bytes apart), as T.
    template <class T>
    T* block(unsigned k) {
        return coef.as<T>(256 * (k & 7));
    }
};

template <class... T>
inline void escape(T*... p) {
    (benchmark::DoNotOptimize(p), ...);
}

void time_add_flat(benchmark::State& s, const KernelPair<AddFlatFn>&, AddFlatFn fn) {
    Inputs in;
    unsigned k = 0;
    for (auto _ : s) {
        escape(in.pred.data(), in.dst.data(), in.coef.data());
        fn(in.pred.data(), kStep, in.block<Zan16s>(k++), nullptr, in.dst.data(), kStep, 28, 1);
        benchmark::ClobberMemory();
    }
}

void time_residual_flat(benchmark::State& s, const KernelPair<ResidualFlatFn>&, ResidualFlatFn fn) {
    Inputs in;
    unsigned k = 0;
    for (auto _ : s) {
        escape(in.coef.data());
        fn(in.block<Zan16s>(k++), 8, nullptr, 1, 28);
        benchmark::ClobberMemory();
    }
}

void time_add16(benchmark::State& s, const KernelPair<Add16Fn>&, Add16Fn fn) {
    Inputs in;
    unsigned k = 0;
    for (auto _ : s) {
        escape(in.pred.data(), in.dst.data(), in.coef.data());
        fn(in.pred.data(), kStep, in.block<Zan16s>(k++), nullptr, in.dst.data(), kStep, 28, 1, nullptr);
        benchmark::ClobberMemory();
    }
}

void time_add32(benchmark::State& s, const KernelPair<Add32Fn>&, Add32Fn fn) {
    Inputs in;
    unsigned k = 0;
    for (auto _ : s) {
        escape(in.pred.data(), in.dst.data(), in.coef.data());
        fn(in.pred.as<Zan16u>(), kStep, in.block<Zan32s>(k++), nullptr, in.dst.as<Zan16u>(), kStep, 40, 1, 10, nullptr);
        benchmark::ClobberMemory();
    }
}

void time_inv16(benchmark::State& s, const KernelPair<Inv16Fn>&, Inv16Fn fn) {
    Inputs in;
    for (auto _ : s) {
        escape(in.coef.data(), in.dst.data());
        fn(in.coef.as<Zan16s>(), in.dst.as<Zan16s>());
        benchmark::ClobberMemory();
    }
}

void time_inv32(benchmark::State& s, const KernelPair<Inv32Fn>&, Inv32Fn fn) {
    Inputs in;
    for (auto _ : s) {
        escape(in.coef.data(), in.dst.data());
        fn(in.coef.as<Zan32s>(), in.dst.as<Zan32s>());
        benchmark::ClobberMemory();
    }
}

void time_dc16(benchmark::State& s, const KernelPair<Dc16Fn>&, Dc16Fn fn) {
    Inputs in;
    unsigned k = 0;
    for (auto _ : s) {
        escape(in.coef.data());
        fn(in.block<Zan16s>(k++), 28, nullptr);
        benchmark::ClobberMemory();
    }
}

void time_dc32(benchmark::State& s, const KernelPair<Dc32Fn>&, Dc32Fn fn) {
    Inputs in;
    unsigned k = 0;
    for (auto _ : s) {
        escape(in.coef.data());
        fn(in.block<Zan32s>(k++), 28, nullptr);
        benchmark::ClobberMemory();
    }
}

void time_dequant16(benchmark::State& s, const KernelPair<Dequant8x8_16Fn>&, Dequant8x8_16Fn fn) {
    Inputs in;
    const Zan16s* scale = kNorm8x8Raster[2].v;
    unsigned k = 0;
    for (auto _ : s) {
        escape(in.coef.data());
        fn(in.block<Zan16s>(k++), 4, scale);
        benchmark::ClobberMemory();
    }
}

void time_dequant32(benchmark::State& s, const KernelPair<Dequant8x8_32Fn>&, Dequant8x8_32Fn fn) {
    Inputs in;
    const Zan16s* scale = kNorm8x8Raster[2].v;
    unsigned k = 0;
    for (auto _ : s) {
        escape(in.coef.data());
        fn(in.block<Zan32s>(k++), 4, scale);
        benchmark::ClobberMemory();
    }
}

void time_add8x8_16(benchmark::State& s, const KernelPair<Add8x8_16Fn>&, Add8x8_16Fn fn) {
    Inputs in;
    for (auto _ : s) {
        escape(in.pred.data(), in.dst.data(), in.coef.data());
        fn(in.pred.data(), kStep, in.coef.as<Zan16s>(), in.dst.data(), kStep);
        benchmark::ClobberMemory();
    }
}

void time_add8x8_32(benchmark::State& s, const KernelPair<Add8x8_32Fn>&, Add8x8_32Fn fn) {
    Inputs in;
    for (auto _ : s) {
        escape(in.pred.data(), in.dst.data(), in.coef.data());
        fn(in.pred.as<Zan16u>(), kStep, in.coef.as<Zan32s>(), in.dst.as<Zan16u>(), kStep, 10);
        benchmark::ClobberMemory();
    }
}

// ------------------------------------------------------------- exports

template <class Call>
void add_export(const std::string& what, Call call) {
    bench::add("h264inv/export/" + what, [=](benchmark::State& s) {
        Inputs in;
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
        }
    });
}

void add_exports() {
    add_export("zaniDequantTransformResidualAndAdd_H264_16s_C1I", [](Inputs& in) {
        return zaniDequantTransformResidualAndAdd_H264_16s_C1I(in.pred.data(), in.coef.as<Zan16s>(), nullptr,
                                                               in.dst.data(), kStep, kStep, 28, 1);
    });
    add_export("zaniDequantTransformResidualAndAdd_H264_16s_C1I:DC", [](Inputs& in) {
        static const Zan16s dc = 640;
        return zaniDequantTransformResidualAndAdd_H264_16s_C1I(in.pred.data(), nullptr, &dc, in.dst.data(), kStep,
                                                               kStep, 28, 0);
    });
    add_export("zaniTransformQuantInvAddPred4x4_H264_16s_C1IR", [](Inputs& in) {
        return zaniTransformQuantInvAddPred4x4_H264_16s_C1IR(in.pred.data(), kStep, in.coef.as<Zan16s>(), nullptr,
                                                             in.dst.data(), kStep, 28, 1, nullptr);
    });
    add_export("zaniTransformQuantInvAddPred4x4_H264_32s_C1IR", [](Inputs& in) {
        return zaniTransformQuantInvAddPred4x4_H264_32s_C1IR(in.pred.as<Zan16u>(), kStep, in.coef.as<Zan32s>(),
                                                             nullptr, in.dst.as<Zan16u>(), kStep, 40, 1, 10, nullptr);
    });
    add_export("zaniTransformLuma8x8InvAddPred_H264_16s8u_C1R", [](Inputs& in) {
        return zaniTransformLuma8x8InvAddPred_H264_16s8u_C1R(in.pred.data(), kStep, in.coef.as<Zan16s>(),
                                                             in.dst.data(), kStep);
    });
    add_export("zaniQuantLuma8x8Inv_H264_16s_C1I", [](Inputs& in) {
        return zaniQuantLuma8x8Inv_H264_16s_C1I(in.coef.as<Zan16s>(), 4, kNorm8x8Raster[2].v);
    });
    add_export("zaniTransformDequantLumaDC_H264_16s_C1I", [](Inputs& in) {
        return zaniTransformDequantLumaDC_H264_16s_C1I(in.coef.as<Zan16s>(), 28);
    });
    add_export("zaniTransformQuantInvLumaDC4x4_H264_16s_C1I", [](Inputs& in) {
        return zaniTransformQuantInvLumaDC4x4_H264_16s_C1I(in.coef.as<Zan16s>(), 28, nullptr);
    });
    add_export("zaniTransformQuantInvLumaDC4x4_H264_32s_C1I", [](Inputs& in) {
        return zaniTransformQuantInvLumaDC4x4_H264_32s_C1I(in.coef.as<Zan32s>(), 28, nullptr);
    });
    add_export("zaniTransformDequantChromaDC_H264_16s_C1I", [](Inputs& in) {
        return zaniTransformDequantChromaDC_H264_16s_C1I(in.coef.as<Zan16s>(), 28);
    });
    add_export("zaniTransformQuantInvChromaDC2x2_H264_16s_C1I", [](Inputs& in) {
        return zaniTransformQuantInvChromaDC2x2_H264_16s_C1I(in.coef.as<Zan16s>(), 28, nullptr);
    });
    add_export("zaniTransformQuantInvChromaDC2x4_H264_16s_C1I", [](Inputs& in) {
        return zaniTransformQuantInvChromaDC2x4_H264_16s_C1I(in.coef.as<Zan16s>(), 28, nullptr);
    });
    add_export("zaniTransformQuantInvChromaDC2x4_H264_32s_C1I", [](Inputs& in) {
        return zaniTransformQuantInvChromaDC2x4_H264_32s_C1I(in.coef.as<Zan32s>(), 28, nullptr);
    });
    add_export("zaniDequantTransformResidual_SISP_H264_16s_C1I", [](Inputs& in) {
        return zaniDequantTransformResidual_SISP_H264_16s_C1I(in.coef.as<Zan16s>(), in.coef.as<Zan16s>(64), nullptr,
                                                              1, 28, 28, 0);
    });
}

}  // namespace

ZAN_BENCH_FAMILY(h264inv) {
    using bench::add_pairs;
    const Kernels& ku = u8::h264inv::kernels;
    const Kernels& kn = n8::h264inv::kernels;
    add_pairs<AddFlatFn>("h264inv", ku.addFlat, kn.addFlat, time_add_flat);
    add_pairs<ResidualFlatFn>("h264inv", ku.residualFlat, kn.residualFlat, time_residual_flat);
    add_pairs<Add16Fn>("h264inv", ku.add16, kn.add16, time_add16);
    add_pairs<Add32Fn>("h264inv", ku.add32, kn.add32, time_add32);
    add_pairs<Inv16Fn>("h264inv", ku.inv16, kn.inv16, time_inv16);
    add_pairs<Inv32Fn>("h264inv", ku.inv32, kn.inv32, time_inv32);
    add_pairs<Dc16Fn>("h264inv", ku.dc16, kn.dc16, time_dc16);
    add_pairs<Dc32Fn>("h264inv", ku.dc32, kn.dc32, time_dc32);
    add_pairs<Dequant8x8_16Fn>("h264inv", ku.dequant16, kn.dequant16, time_dequant16);
    add_pairs<Dequant8x8_32Fn>("h264inv", ku.dequant32, kn.dequant32, time_dequant32);
    add_pairs<Add8x8_16Fn>("h264inv", ku.add8x8_16, kn.add8x8_16, time_add8x8_16);
    add_pairs<Add8x8_32Fn>("h264inv", ku.add8x8_32, kn.add8x8_32, time_add8x8_32);
    add_exports();
}
