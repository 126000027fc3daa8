// H.263 and MPEG-4 quantisation: every catalogue entry (rule, u8 kernel, n8
// kernel) per 64-coefficient block, and the exported quantisers.
//
// The quantisers work in place, so every iteration first copies a fresh
// block (128 bytes) from a source that stays in the L1 cache; the copy is
// part of every figure.  Forward inputs are transform-range coefficients
// (-2048..2047), inverse inputs small levels (-24..24, about half zero);
// QP 12 (intra, inter and H.263 forms) and weights 8..255.  Inverse kernels
// run over all 64 coefficients.
#include <cstring>

#include "bench_util.h"
#include "h26x_mpeg4/quant263.h"

namespace {

using namespace zan;
using namespace zan::quant263;
using bench::Buffer;

constexpr Zan32s kQP = 12;

struct Inputs {
    Buffer src{128}, levels{128}, weights{128}, work{128};
    Buffer record{512};
    Inputs() {
        src.fill(1);
        levels.fill(2);
        weights.fill(3);
        for (int i = 0; i < 64; ++i) {
            Zan16s* s = src.as<Zan16s>();
            s[i] = static_cast<Zan16s>((static_cast<Zan16u>(s[i]) % 4096) - 2048);
            Zan16s* l = levels.as<Zan16s>();
            Zan32s v = static_cast<Zan16u>(l[i]) % 98;
            l[i] = static_cast<Zan16s>(v >= 49 ? 0 : v - 24);
            Zan16u* w = weights.as<Zan16u>();
            w[i] = static_cast<Zan16u>(8 + w[i] % 248);
        }
    }
    Zan16s* fresh(Buffer& from) {
        std::memcpy(work.data(), from.data(), 128);
        return work.as<Zan16s>();
    }
};

template <class... T>
inline void escape(T*... p) {
    (benchmark::DoNotOptimize(p), ...);
}

void time_quant(benchmark::State& s, const KernelPair<QuantFn>&, QuantFn fn) {
    Inputs in;
    for (auto _ : s) {
        Zan16s* p = in.fresh(in.src);
        escape(p);
        Zan32s n = fn(p, kQP, -2048, 2047);
        benchmark::DoNotOptimize(n);
        benchmark::ClobberMemory();
    }
}

void time_quant_weighted(benchmark::State& s, const KernelPair<QuantWeightedFn>&, QuantWeightedFn fn) {
    Inputs in;
    const Zan16u* w = in.weights.as<Zan16u>();
    for (auto _ : s) {
        Zan16s* p = in.fresh(in.src);
        escape(p, w);
        Zan32s n = fn(p, w, kQP, -2048, 2047);
        benchmark::DoNotOptimize(n);
        benchmark::ClobberMemory();
    }
}

void time_inv(benchmark::State& s, const KernelPair<QuantInvFn>&, QuantInvFn fn) {
    Inputs in;
    for (auto _ : s) {
        Zan16s* p = in.fresh(in.levels);
        escape(p);
        fn(p, 64, kQP, -2048, 2047);
        benchmark::ClobberMemory();
    }
}

void time_inv_wrap(benchmark::State& s, const KernelPair<QuantInvWrapFn>&, QuantInvWrapFn fn) {
    Inputs in;
    for (auto _ : s) {
        Zan16s* p = in.fresh(in.levels);
        escape(p);
        fn(p, 64, kQP);
        benchmark::ClobberMemory();
    }
}

void time_inv_weighted(benchmark::State& s, const KernelPair<QuantInvWeightedFn>&, QuantInvWeightedFn fn) {
    Inputs in;
    const Zan16u* w = in.weights.as<Zan16u>();
    for (auto _ : s) {
        Zan16s* p = in.fresh(in.levels);
        escape(p, w);
        Zan32s sum = fn(p, 64, w, kQP, -2048, 2047);
        benchmark::DoNotOptimize(sum);
        benchmark::ClobberMemory();
    }
}

// ------------------------------------------------------------- exports

// prepare(inputs) builds any record once; call(inputs, block) runs the export
// on a fresh copy of the forward or the inverse input.
template <class Prepare, class Call>
void add_export(const std::string& what, bool inverse, Prepare prepare, Call call) {
    bench::add("quant263/export/" + what, [=](benchmark::State& s) {
        Inputs in;
        prepare(in);
        Buffer& from = inverse ? in.levels : in.src;
        ZanStatus st = call(in, in.fresh(from));
        if (st != zanStsOk) {
            s.SkipWithError(("status " + std::to_string(st)).c_str());
            return;
        }
        for (auto _ : s) {
            Zan16s* p = in.fresh(from);
            escape(p);
            st = call(in, p);
            benchmark::DoNotOptimize(st);
            benchmark::ClobberMemory();
        }
    });
}

Zan8u* weights8(Inputs& in) {
    static Zan8u w[64];
    for (int i = 0; i < 64; ++i) w[i] = static_cast<Zan8u>(in.weights.as<Zan16u>()[i]);
    return w;
}

void add_exports() {
    auto none = [](Inputs&) {};
    add_export("zaniQuantInter_H263_16s_C1I", false, none, [](Inputs& in, Zan16s* p) {
        Zan32s n;
        (void)in;
        return zaniQuantInter_H263_16s_C1I(p, kQP, &n, 0);
    });
    add_export("zaniQuantIntra_H263_16s_C1I", false, none, [](Inputs&, Zan16s* p) {
        Zan32s n;
        return zaniQuantIntra_H263_16s_C1I(p, kQP, &n, 0, 0);
    });
    add_export("zaniQuantInvInter_H263_16s_C1I", true, none,
               [](Inputs&, Zan16s* p) { return zaniQuantInvInter_H263_16s_C1I(p, 63, kQP, 0); });
    add_export("zaniQuantInvIntra_H263_16s_C1I", true, none,
               [](Inputs&, Zan16s* p) { return zaniQuantInvIntra_H263_16s_C1I(p, 63, kQP, 0, 0); });
    auto fwd = [](bool intra, bool weighted, Zan32s depth) {
        return [=](Inputs& in) {
            auto* record = in.record.as<ZanQuantSpec_MPEG4>();
            const Zan8u* w = weighted ? weights8(in) : nullptr;
            if (intra) zaniQuantIntraInit_MPEG4(w, record, depth);
            else zaniQuantInterInit_MPEG4(w, record, depth);
        };
    };
    auto inv = [](bool weighted) {
        return [=](Inputs& in) {
            zaniQuantInvInterInit_MPEG4(weighted ? weights8(in) : nullptr, in.record.as<ZanQuantInvSpec_MPEG4>(), 8);
        };
    };
    auto inter = [](Inputs& in, Zan16s* p) {
        Zan32s n;
        return zaniQuantInter_MPEG4_16s_C1I(p, in.record.as<ZanQuantSpec_MPEG4>(), kQP, &n);
    };
    auto intra = [](Inputs& in, Zan16s* p) {
        Zan32s n;
        return zaniQuantIntra_MPEG4_16s_C1I(p, in.record.as<ZanQuantSpec_MPEG4>(), kQP, &n, 0);
    };
    auto invInter = [](Inputs& in, Zan16s* p) {
        return zaniQuantInvInter_MPEG4_16s_C1I(p, 63, in.record.as<ZanQuantInvSpec_MPEG4>(), kQP);
    };
    add_export("zaniQuantInter_MPEG4_16s_C1I:plain", false, fwd(false, false, 8), inter);
    add_export("zaniQuantInter_MPEG4_16s_C1I:plain12", false, fwd(false, false, 12), inter);
    add_export("zaniQuantInter_MPEG4_16s_C1I:weighted", false, fwd(false, true, 8), inter);
    add_export("zaniQuantIntra_MPEG4_16s_C1I:weighted", false, fwd(true, true, 8), intra);
    add_export("zaniQuantInvInter_MPEG4_16s_C1I:plain", true, inv(false), invInter);
    add_export("zaniQuantInvInter_MPEG4_16s_C1I:weighted", true, inv(true), invInter);
}

}  // namespace

ZAN_BENCH_FAMILY(quant263) {
    const Kernels& u = u8::quant263::kernels;
    const Kernels& n = n8::quant263::kernels;
    bench::add_pairs<QuantFn>("quant263", u.quant, n.quant, time_quant);
    bench::add_pairs<QuantWeightedFn>("quant263", u.quantWeighted, n.quantWeighted, time_quant_weighted);
    bench::add_pairs<QuantInvFn>("quant263", u.inv, n.inv, time_inv);
    bench::add_pairs<QuantInvWrapFn>("quant263", u.invWrap, n.invWrap, time_inv_wrap);
    bench::add_pairs<QuantInvWeightedFn>("quant263", u.invWeighted, n.invWeighted, time_inv_weighted);
    add_exports();
}
