// Block statistics: every catalogue entry (rule, u8 kernel, n8 kernel) and a
// few exported functions.
//
// Inputs live in a few kilobytes reused on every iteration, so they stay in
// the L1 cache.  Rows lie kStep bytes apart.  The first block is 16-byte
// aligned; the second (the reference) starts one byte past a boundary, as a
// motion search mostly meets it.
#include "bench_util.h"
#include "blocks/blockstats.h"

namespace {

using namespace zan;
using namespace zan::blockstats;
using bench::Buffer;

constexpr Zan32s kStep = 128;
constexpr Zan32s kRows = 20;
constexpr Zan32s kMargin = 64;

struct Inputs {
    Buffer a{kStep * kRows};
    Buffer b{kMargin + kStep * kRows};
    Buffer c{kMargin + kStep * kRows};
    Buffer out{2048};
    Inputs() {
        a.fill(1);
        b.fill(2);
        c.fill(3);
    }
    explicit Inputs(Zan16u mask) {
        a.fill16(1, mask);
        b.fill16(2, mask);
        c.fill16(3, mask);
    }
    Zan8u* ref(Zan32s align = 1) { return b.data() + kMargin + align; }
    Zan8u* ref2(Zan32s align = 1) { return c.data() + kMargin + align; }
};

template <class... T>
inline void escape(T*... p) {
    (benchmark::DoNotOptimize(p), ...);
}

void time_pair8(benchmark::State& s, const KernelPair<Pair8Fn>&, Pair8Fn fn) {
    Inputs in;
    const Zan8u* x = in.a.data();
    const Zan8u* y = in.ref();
    for (auto _ : s) {
        escape(x, y);
        Zan32s r = fn(x, kStep, y, kStep);
        benchmark::DoNotOptimize(r);
    }
}

void time_pair16(benchmark::State& s, const KernelPair<Pair16Fn>&, Pair16Fn fn) {
    Inputs in(0x7FFF);
    const Zan16u* x = in.a.as<Zan16u>();
    const Zan16u* y = reinterpret_cast<const Zan16u*>(in.ref(2));
    for (auto _ : s) {
        escape(x, y);
        Zan32s r = fn(x, kStep, y, kStep);
        benchmark::DoNotOptimize(r);
    }
}

template <class T, class Fn>
void time_hadamard(benchmark::State& s, const KernelPair<Fn>&, Fn fn) {
    Inputs in(0x3FF);
    const T* x = in.a.as<T>();
    Zan16s* o = in.out.as<Zan16s>();
    for (auto _ : s) {
        escape(x, o);
        Zan32s r = fn(x, kStep, o);
        benchmark::DoNotOptimize(r);
    }
}

void time_sqrdiffb(benchmark::State& s, const KernelPair<SqrDiffBFn>&, SqrDiffBFn fn) {
    Inputs in;
    const Zan8u* x = in.a.data();
    const Zan8u* y = in.ref();
    const Zan8u* z = in.ref2(3);
    for (auto _ : s) {
        escape(x, y, z);
        Zan32s r = fn(x, kStep, y, kStep, z, kStep);
        benchmark::DoNotOptimize(r);
    }
}

void time_block(benchmark::State& s, const KernelPair<Block8Fn>&, Block8Fn fn) {
    Inputs in;
    const Zan8u* x = in.a.data();
    for (auto _ : s) {
        escape(x);
        Zan32s r = fn(x, kStep);
        benchmark::DoNotOptimize(r);
    }
}

template <class T, class Fn>
void time_varsum(benchmark::State& s, const KernelPair<Fn>&, Fn fn) {
    Inputs in(0x3FF);
    const T* x = in.a.as<T>();
    Zan32s* o = in.out.as<Zan32s>();
    for (auto _ : s) {
        escape(x, o);
        fn(x, kStep, o, o + 1);
        benchmark::ClobberMemory();
    }
}

void time_varmeandiff(benchmark::State& s, const KernelPair<VarMeanDiffFn>&, VarMeanDiffFn fn) {
    Inputs in;
    const Zan8u* x = in.a.data();
    const Zan8u* y = in.ref();
    Zan32s* o = in.out.as<Zan32s>();
    for (Zan32s i = 0; i < 4; ++i) o[i] = 8000;
    for (auto _ : s) {
        escape(x, y, o);
        fn(x, kStep, y, kStep, o, o + 4, o + 8);
        benchmark::ClobberMemory();
    }
}

void time_sums8(benchmark::State& s, const KernelPair<SumsDiff8Fn>&, SumsDiff8Fn fn) {
    Inputs in;
    const Zan8u* x = in.a.data();
    const Zan8u* y = in.ref();
    Zan16s* o = in.out.as<Zan16s>();
    for (auto _ : s) {
        escape(x, y, o);
        fn(x, kStep, y, kStep, o, o + 16);
        benchmark::ClobberMemory();
    }
}

void time_sums16(benchmark::State& s, const KernelPair<SumsDiff16Fn>&, SumsDiff16Fn fn) {
    Inputs in(0x3FF);
    const Zan16u* x = in.a.as<Zan16u>();
    const Zan16u* y = reinterpret_cast<const Zan16u*>(in.ref(2));
    Zan32s* o = in.out.as<Zan32s>();
    for (auto _ : s) {
        escape(x, y, o);
        fn(x, kStep, y, kStep, o, in.out.as<Zan16s>(64));
        benchmark::ClobberMemory();
    }
}

void time_sumsc2(benchmark::State& s, const KernelPair<SumsDiffC2Fn>&, SumsDiffC2Fn fn) {
    Inputs in;
    const Zan8u* x = in.a.data();
    const Zan8u* u = in.ref();
    const Zan8u* v = in.ref2();
    Zan16s* o = in.out.as<Zan16s>();
    for (auto _ : s) {
        escape(x, u, v, o);
        fn(x, kStep, u, kStep, v, kStep, o, o + 16, o + 8, o + 96);
        benchmark::ClobberMemory();
    }
}

// Smooth data that never passes the count: the whole block is scanned.
void time_edges8(benchmark::State& s, const KernelPair<Edges8Fn>&, Edges8Fn fn) {
    Inputs in;
    for (Zan32s i = 0; i < kStep * kRows; ++i) in.a.data()[i] = static_cast<Zan8u>(i % kStep + (in.a.data()[i] & 3));
    const Zan8u* x = in.a.data();
    for (auto _ : s) {
        escape(x);
        Zan8u r = fn(x, kStep, 8, 200);
        benchmark::DoNotOptimize(r);
    }
}

void time_edges16(benchmark::State& s, const KernelPair<Edges16Fn>&, Edges16Fn fn) {
    Inputs in(0x3);
    const Zan16u* x = in.a.as<Zan16u>();
    for (auto _ : s) {
        escape(x);
        Zan8u r = fn(x, kStep, 8, 200);
        benchmark::DoNotOptimize(r);
    }
}

void time_count(benchmark::State& s, const KernelPair<CountFn>&, CountFn fn) {
    Inputs in(0x3);
    const Zan16s* x = in.a.as<Zan16s>();
    for (auto _ : s) {
        escape(x);
        Zan32u r = fn(x);
        benchmark::DoNotOptimize(r);
    }
}

template <class Call>
void add_export(const std::string& what, Call call) {
    bench::add("blockstats/export/" + what, [=](benchmark::State& s) {
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
    add_export("zaniSATD4x4_8u32s_C1R", [](Inputs& in) {
        return zaniSATD4x4_8u32s_C1R(in.a.data(), kStep, in.ref(), kStep, in.out.as<Zan32s>());
    });
    add_export("zaniSATD8x8_8u32s_C1R", [](Inputs& in) {
        return zaniSATD8x8_8u32s_C1R(in.a.data(), kStep, in.ref(), kStep, in.out.as<Zan32s>());
    });
    add_export("zaniSATD16x16_8u32s_C1R", [](Inputs& in) {
        return zaniSATD16x16_8u32s_C1R(in.a.data(), kStep, in.ref(), kStep, in.out.as<Zan32s>());
    });
    add_export("zaniSSD8x8_8u32s_C1R:HH", [](Inputs& in) {
        return zaniSSD8x8_8u32s_C1R(in.a.data(), kStep, in.ref(), kStep, in.out.as<Zan32s>(), 12);
    });
    add_export("zaniSqrDiff16x16_8u32s", [](Inputs& in) {
        return zaniSqrDiff16x16_8u32s(in.a.data(), kStep, in.ref(), kStep, 0, in.out.as<Zan32s>());
    });
    add_export("zaniVariance16x16_8u32s", [](Inputs& in) {
        return zaniVariance16x16_8u32s(in.a.data(), kStep, in.out.as<Zan32s>());
    });
    add_export("zaniVarMean8x8_8u32s_C1R", [](Inputs& in) {
        Zan32s* o = in.out.as<Zan32s>();
        return zaniVarMean8x8_8u32s_C1R(in.a.data(), kStep, o, o + 1);
    });
    add_export("zaniEdgesDetect16x16_8u_C1R", [](Inputs& in) {
        return zaniEdgesDetect16x16_8u_C1R(in.a.data(), kStep, 200, 200, in.out.data());
    });
}

}  // namespace

ZAN_BENCH_FAMILY(blockstats) {
    using bench::add_pairs;
    const TransformKernels& tu = u8::blockstats::transform_kernels;
    const TransformKernels& tn = n8::blockstats::transform_kernels;
    const VarianceKernels& vu = u8::blockstats::variance_kernels;
    const VarianceKernels& vn = n8::blockstats::variance_kernels;
    const MiscKernels& mu = u8::blockstats::misc_kernels;
    const MiscKernels& mn = n8::blockstats::misc_kernels;
    add_pairs<Pair8Fn>("blockstats", tu.satd, tn.satd, time_pair8);
    add_pairs<Pair16Fn>("blockstats", tu.satd16, tn.satd16, time_pair16);
    add_pairs<Hadamard8Fn>("blockstats", tu.hadamard8, tn.hadamard8, time_hadamard<Zan8u, Hadamard8Fn>);
    add_pairs<Hadamard16Fn>("blockstats", tu.hadamard16, tn.hadamard16, time_hadamard<Zan16s, Hadamard16Fn>);
    add_pairs<Pair8Fn>("blockstats", vu.ssd, vn.ssd, time_pair8);
    add_pairs<SqrDiffBFn>("blockstats", vu.sqrDiffB, vn.sqrDiffB, time_sqrdiffb);
    add_pairs<Block8Fn>("blockstats", vu.block, vn.block, time_block);
    add_pairs<VarSum8Fn>("blockstats", vu.varSum8, vn.varSum8, time_varsum<Zan8u, VarSum8Fn>);
    add_pairs<VarSum16Fn>("blockstats", vu.varSum16, vn.varSum16, time_varsum<Zan16s, VarSum16Fn>);
    add_pairs<VarMeanDiffFn>("blockstats", vu.varMeanDiff, vn.varMeanDiff, time_varmeandiff);
    add_pairs<SumsDiff8Fn>("blockstats", mu.sums8, mn.sums8, time_sums8);
    add_pairs<SumsDiff16Fn>("blockstats", mu.sums16, mn.sums16, time_sums16);
    add_pairs<SumsDiffC2Fn>("blockstats", mu.sumsC2, mn.sumsC2, time_sumsc2);
    add_pairs<Edges8Fn>("blockstats", mu.edges8, mn.edges8, time_edges8);
    add_pairs<Edges16Fn>("blockstats", mu.edges16, mn.edges16, time_edges16);
    add_pairs<CountFn>("blockstats", mu.countZeros, mn.countZeros, time_count);
    add_exports();
}
