// VC-1 transforms and quantisers: every catalogue entry (rule, u8 kernel, n8
// kernel) and a few exported functions, one block per call.
//
// Blocks are 8x8 areas of Zan16s with rows kStep bytes apart, 16-byte
// aligned, in the L1 cache.  Inverse transforms are timed with the full
// reach (no shortcut); the exports add the shortened spans and the DC case.
// Forward quantisers run in place on the same block on every iteration
// (their kernels do not branch on the data).
#include "bench_util.h"
#include "vc1/vc1xform.h"

namespace {

using namespace zan;
using namespace zan::vc1xform;
using bench::Buffer;

constexpr Zan32s kStep = 32;  // bytes between rows

struct Inputs {
    Buffer src{kStep * 8};
    Buffer dst{kStep * 8};
    Inputs() {
        src.fill16(5, 0x0FFF);
        // Coefficients in -2048..2047.
        for (int i = 0; i < kStep * 4; ++i) src.as<Zan16s>()[i] = static_cast<Zan16s>(src.as<Zan16s>()[i] - 2048);
    }
};

template <class... T>
inline void escape(T*... p) {
    (benchmark::DoNotOptimize(p), ...);
}

void time_inv(benchmark::State& s, const KernelPair<InvFn>& e, InvFn fn) {
    Inputs in;
    const Zan16s* a = in.src.as<Zan16s>();
    Zan16s* b = in.dst.as<Zan16s>();
    const ZaniSize full{e.width, e.height};
    for (auto _ : s) {
        escape(a, b);
        fn(a, kStep, b, kStep, full);
        benchmark::ClobberMemory();
    }
}

void time_fwd(benchmark::State& s, const KernelPair<FwdFn>&, FwdFn fn) {
    Inputs in;
    in.src.fill16(6, 0x1FF);
    const Zan16s* a = in.src.as<Zan16s>();
    Zan16s* b = in.dst.as<Zan16s>();
    for (auto _ : s) {
        escape(a, b);
        fn(a, kStep, b, kStep);
        benchmark::ClobberMemory();
    }
}

// A doubleQuant of the entry's kind.
Zan32s quant_of(Zan32s kind) {
    for (Zan32s d = kMinQuant; d <= kMaxQuant; ++d)
        if (reciprocal(d).kind == kind && d > 8) return d;
    return kMinQuant;
}

void time_quant(benchmark::State& s, const KernelPair<QuantFn>& e, QuantFn fn) {
    Inputs in;
    Zan16s* a = in.src.as<Zan16s>();
    const Zan32s d = quant_of(e.param & 3);
    for (auto _ : s) {
        escape(a);
        fn(a, kStep, d);
        benchmark::ClobberMemory();
    }
}

void time_quant_inv(benchmark::State& s, const KernelPair<QuantInvFn>&, QuantInvFn fn) {
    Inputs in;
    in.src.fill16(7, 0x3);
    const Zan16s* a = in.src.as<Zan16s>();
    Zan16s* b = in.dst.as<Zan16s>();
    for (auto _ : s) {
        escape(a, b);
        ZaniSize r = fn(a, kStep, b, kStep, 12);
        benchmark::DoNotOptimize(r);
        benchmark::ClobberMemory();
    }
}

template <class Call>
void add_export(const std::string& what, Call call) {
    bench::add("vc1xform/export/" + what, [=](benchmark::State& s) {
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
    const struct {
        const char* name;
        ZaniSize nz;
    } reaches[] = {{"full", {8, 8}}, {"w4", {4, 8}}, {"w2", {2, 8}}, {"dc", {1, 1}}};
    for (const auto& r : reaches) {
        const ZaniSize nz = r.nz;
        add_export(std::string("zaniTransform8x8Inv_VC1_16s_C1R:") + r.name, [nz](Inputs& in) {
            return zaniTransform8x8Inv_VC1_16s_C1R(in.src.as<Zan16s>(), kStep, in.dst.as<Zan16s>(), kStep, nz);
        });
    }
    add_export("zaniTransform4x4Inv_VC1_16s_C1R", [](Inputs& in) {
        return zaniTransform4x4Inv_VC1_16s_C1R(in.src.as<Zan16s>(), kStep, in.dst.as<Zan16s>(), kStep, ZaniSize{4, 4});
    });
    add_export("zaniTransform8x8Fwd_VC1_16s_C1R", [](Inputs& in) {
        return zaniTransform8x8Fwd_VC1_16s_C1R(in.src.as<Zan16s>(), kStep, in.dst.as<Zan16s>(), kStep);
    });
    add_export("zaniQuantInterUniform_VC1_16s_C1IR", [](Inputs& in) {
        return zaniQuantInterUniform_VC1_16s_C1IR(in.dst.as<Zan16s>(), kStep, 13, ZaniSize{8, 8});
    });
    add_export("zaniQuantIntraNonuniform_VC1_16s_C1IR", [](Inputs& in) {
        return zaniQuantIntraNonuniform_VC1_16s_C1IR(in.dst.as<Zan16s>(), kStep, 13);
    });
    add_export("zaniQuantInvInterNonuniform_VC1_16s_C1R", [](Inputs& in) {
        ZaniSize nz;
        return zaniQuantInvInterNonuniform_VC1_16s_C1R(in.src.as<Zan16s>(), kStep, in.dst.as<Zan16s>(), kStep, 13,
                                                       ZaniSize{8, 8}, &nz);
    });
}

}  // namespace

ZAN_BENCH_FAMILY(vc1xform) {
    const auto& tu = u8::vc1xform::transform_kernels;
    const auto& tn = n8::vc1xform::transform_kernels;
    const auto& qu = u8::vc1xform::quant_kernels;
    const auto& qn = n8::vc1xform::quant_kernels;
    bench::add_pairs<InvFn>("vc1xform", tu.inv, tn.inv, time_inv);
    bench::add_pairs<FwdFn>("vc1xform", tu.fwd, tn.fwd, time_fwd);
    bench::add_pairs<QuantFn>("vc1xform", qu.quant, qn.quant, time_quant);
    bench::add_pairs<QuantInvFn>("vc1xform", qu.quantInv, qn.quantInv, time_quant_inv);
    add_exports();
}
