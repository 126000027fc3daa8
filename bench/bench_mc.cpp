// Motion compensation and block arithmetic: catalogue entries (rule, u8
// kernel, n8 kernel) and a representative set of exported functions.
//
// Table slots that share a kernel are timed once.  Of the bidirectional
// tables only the slots with the same position forward and backward are
// timed (the others cost about the sum of the two positions).  The wide
// 8-across kernels are timed at 8 rows, the interleaved ones at 8, the
// 16-across ones at 16.
//
// Inputs stay in the L1 cache.  Rows lie kStep bytes apart.  References
// start one byte past a 16-byte boundary, residuals and destinations are
// 16-byte aligned.
#include <string>
#include <vector>

#include "bench_util.h"
#include "blocks/mc.h"

namespace {

using namespace zan;
using namespace zan::mc;
using bench::Buffer;

constexpr Zan32s kStep = 64;
constexpr Zan32s kRows = 20;

struct Inputs {
    Buffer ref{64 + kStep * kRows};
    Buffer refB{64 + kStep * kRows};
    Buffer res{kStep * kRows};
    Buffer resV{kStep * kRows};
    Buffer dst{kStep * kRows};
    Inputs() {
        ref.fill(1);
        refB.fill(2);
        res.fill16(3, 0x3F);
        resV.fill16(4, 0x3F);
        dst.fill(5);
    }
    const Zan8u* r() { return ref.data() + 64 + 1; }
    const Zan8u* rb() { return refB.data() + 64 + 1; }
    const Zan16s* q() { return res.as<Zan16s>(); }
    const Zan16s* qv() { return resV.as<Zan16s>(); }
    Zan8u* d() { return dst.data(); }
};

template <class... T>
inline void escape(T*... p) {
    (benchmark::DoNotOptimize(p), ...);
}

Zan32s bench_height(const KernelPair<McFn>& e) { return e.width == 8 ? 8 : e.height; }

void time_fwd(benchmark::State& s, const KernelPair<McFn>& e, McFn fn) {
    Inputs in;
    const Zan32s h = bench_height(e);
    for (auto _ : s) {
        Inputs* p = &in;
        escape(p);
        fn(in.r(), kStep, in.q(), kStep, in.d(), kStep, h);
        benchmark::ClobberMemory();
    }
}

void time_bi(benchmark::State& s, const KernelPair<McBFn>& e, McBFn fn) {
    Inputs in;
    const Zan32s h = e.width == 8 ? 8 : e.height;
    for (auto _ : s) {
        Inputs* p = &in;
        escape(p);
        fn(in.r(), kStep, in.rb(), kStep, in.q(), kStep, in.d(), kStep, h);
        benchmark::ClobberMemory();
    }
}

void time_pair(benchmark::State& s, const KernelPair<McPairFn>& e, McPairFn fn) {
    Inputs in;
    McPairArgs args{in.r(), in.rb(), in.q(), in.qv(), in.d(), kStep, kStep, kStep, kStep, {0, 0}};
    for (auto _ : s) {
        McPairArgs* p = &args;
        escape(p);
        fn(p, e.height);
        benchmark::ClobberMemory();
    }
}

void time_small(benchmark::State& s, const KernelPair<McSmallFn>&, McSmallFn fn) {
    Inputs in;
    for (auto _ : s) {
        Inputs* p = &in;
        escape(p);
        fn(in.r(), kStep, in.q(), kStep, in.d(), kStep, 1);
        benchmark::ClobberMemory();
    }
}

void time_small_bi(benchmark::State& s, const KernelPair<McSmallBFn>&, McSmallBFn fn) {
    Inputs in;
    for (auto _ : s) {
        Inputs* p = &in;
        escape(p);
        fn(in.r(), kStep, in.rb(), kStep, in.q(), kStep, in.d(), kStep, 1);
        benchmark::ClobberMemory();
    }
}

void time_block(benchmark::State& s, const KernelPair<BlockFn>&, BlockFn fn) {
    Inputs in;
    for (auto _ : s) {
        Inputs* p = &in;
        escape(p);
        fn(in.r(), kStep, in.d(), kStep);
        benchmark::ClobberMemory();
    }
}

void time_average(benchmark::State& s, const KernelPair<AverageFn>&, AverageFn fn) {
    Inputs in;
    for (auto _ : s) {
        Inputs* p = &in;
        escape(p);
        fn(in.r(), kStep, in.rb(), kStep, in.d(), kStep);
        benchmark::ClobberMemory();
    }
}

void time_add(benchmark::State& s, const KernelPair<AddFn>&, AddFn fn) {
    Inputs in;
    for (auto _ : s) {
        Inputs* p = &in;
        escape(p);
        fn(in.q(), kStep, in.d(), kStep);
        benchmark::ClobberMemory();
    }
}

void time_add_hp(benchmark::State& s, const KernelPair<AddHPFn>&, AddHPFn fn) {
    Inputs in;
    for (auto _ : s) {
        Inputs* p = &in;
        escape(p);
        fn(in.q(), kStep, in.r(), kStep, in.d(), kStep);
        benchmark::ClobberMemory();
    }
}

void time_add_c(benchmark::State& s, const KernelPair<AddCFn>&, AddCFn fn) {
    Inputs in;
    for (auto _ : s) {
        Inputs* p = &in;
        escape(p);
        fn(17, in.d(), kStep);
        benchmark::ClobberMemory();
    }
}

// The entries worth timing: the first slot of each kernel, and of the
// bidirectional tables (keep returns false) only some.  Kept in static
// storage so that the registered benchmarks may refer to them.
template <class Fn, class Keep>
KernelList<Fn> timed(KernelList<Fn> list, Keep keep) {
    auto* out = new std::vector<KernelPair<Fn>>();  // lives as long as the program
    for (const auto& e : list) {
        bool seen = false;
        for (const auto& o : *out) seen = seen || o.simd == e.simd;
        if (!seen && keep(e)) out->push_back(e);
    }
    return {out->data(), out->size()};
}
template <class Fn>
KernelList<Fn> timed(KernelList<Fn> list) {
    return timed(list, [](const KernelPair<Fn>&) { return true; });
}

// Bidirectional slot with the same position forward and backward.
bool same_positions(Zan32s slot) { return ((slot >> 1) & 3) == (slot >> 3); }

// ------------------------------------------------------------- exports

template <class Call>
void add_export(const std::string& what, Call call) {
    bench::add("mc/export/" + what, [=](benchmark::State& s) {
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
    add_export("zaniMC16x16_8u_C1:HH", [](Inputs& in) {
        return zaniMC16x16_8u_C1(in.r(), kStep, in.q(), kStep, in.d(), kStep, 12, 0);
    });
    add_export("zaniMC16x16_8u_C1:HH_rc1", [](Inputs& in) {
        return zaniMC16x16_8u_C1(in.r(), kStep, in.q(), kStep, in.d(), kStep, 12, 1);
    });
    add_export("zaniMC16x16_8u_C1:FF", [](Inputs& in) {
        return zaniMC16x16_8u_C1(in.r(), kStep, in.q(), kStep, in.d(), kStep, 0, 0);
    });
    add_export("zaniMC8x8_8u_C1:HH", [](Inputs& in) {
        return zaniMC8x8_8u_C1(in.r(), kStep, in.q(), kStep, in.d(), kStep, 12, 0);
    });
    add_export("zaniMC4x4_8u_C1:HH", [](Inputs& in) {
        return zaniMC4x4_8u_C1(in.r(), kStep, in.q(), kStep, in.d(), kStep, 12, 0);
    });
    add_export("zaniMC16x16B_8u_C1:HH_HH", [](Inputs& in) {
        return zaniMC16x16B_8u_C1(in.r(), kStep, 12, in.rb(), kStep, 12, in.q(), kStep, in.d(), kStep, 0);
    });
    add_export("zaniMC8x8_16s8u_P2C2R:HH", [](Inputs& in) {
        return zaniMC8x8_16s8u_P2C2R(in.r(), kStep, in.q(), in.qv(), kStep, in.d(), kStep, 12, 0);
    });
    add_export("zaniCopy16x16HP_8u_C1R:HH", [](Inputs& in) {
        return zaniCopy16x16HP_8u_C1R(in.r(), kStep, in.d(), kStep, 3, 0);
    });
    add_export("zaniInterpolateAverage16x16_8u_C1IR:HH", [](Inputs& in) {
        return zaniInterpolateAverage16x16_8u_C1IR(in.r(), kStep, in.d(), kStep, 3, 0);
    });
    add_export("zaniCopy16x16_8u_C1R", [](Inputs& in) { return zaniCopy16x16_8u_C1R(in.r(), kStep, in.d(), kStep); });
    add_export("zaniAverage16x16_8u_C1R", [](Inputs& in) {
        return zaniAverage16x16_8u_C1R(in.r(), kStep, in.rb(), kStep, in.d(), kStep);
    });
    add_export("zaniAdd8x8_16s8u_C1IRS", [](Inputs& in) {
        return zaniAdd8x8_16s8u_C1IRS(in.q(), kStep, in.d(), kStep);
    });
    add_export("zaniAdd8x8HP_16s8u_C1RS:HH", [](Inputs& in) {
        return zaniAdd8x8HP_16s8u_C1RS(in.q(), kStep, in.r(), kStep, in.d(), kStep, 3, 0);
    });
}

}  // namespace

ZAN_BENCH_FAMILY(mc) {
    using bench::add_pairs;
    const WideKernels& wu = u8::mc::wide_kernels;
    const WideKernels& wn = n8::mc::wide_kernels;
    add_pairs<McFn>("mc", timed(wu.fwd), timed(wn.fwd), time_fwd);
    auto sameB = [](const KernelPair<McBFn>& e) { return same_positions(e.param); };
    add_pairs<McBFn>("mc", timed(wu.bidir, sameB), timed(wn.bidir, sameB), time_bi);
    auto pairKeep = [](const KernelPair<McPairFn>& e) { return e.param < 32 || same_positions(e.param - 32); };
    add_pairs<McPairFn>("mc", timed(wu.pair, pairKeep), timed(wn.pair, pairKeep), time_pair);

    const SmallKernels& su = u8::mc::small_kernels;
    const SmallKernels& sn = n8::mc::small_kernels;
    add_pairs<McSmallFn>("mc", timed(su.fwd), timed(sn.fwd), time_small);
    auto sameSmall = [](const KernelPair<McSmallBFn>& e) { return (e.param & 3) == (e.param >> 2); };
    add_pairs<McSmallBFn>("mc", timed(su.bidir, sameSmall), timed(sn.bidir, sameSmall), time_small_bi);
    add_pairs<BlockFn>("mc", timed(su.copyHP), timed(sn.copyHP), time_block);

    const BlockKernels& bu = u8::mc::block_kernels;
    const BlockKernels& bn = n8::mc::block_kernels;
    add_pairs<BlockFn>("mc", timed(bu.copyHP), timed(bn.copyHP), time_block);
    add_pairs<BlockFn>("mc", timed(bu.interpAvg), timed(bn.interpAvg), time_block);
    add_pairs<BlockFn>("mc", timed(bu.copy), timed(bn.copy), time_block);
    add_pairs<AverageFn>("mc", timed(bu.average), timed(bn.average), time_average);
    add_pairs<AddFn>("mc", timed(bu.add), timed(bn.add), time_add);
    add_pairs<AddHPFn>("mc", timed(bu.addHP), timed(bn.addHP), time_add_hp);
    add_pairs<AddCFn>("mc", timed(bu.addC), timed(bn.addC), time_add_c);

    add_exports();
}
