// Block differencing: every catalogue entry (rule, u8 kernel, n8 kernel) and
// the exported GetDiff16x16 at every position, with and without the
// predictor, plus a few other exports.
//
// Inputs stay in the L1 cache.  Reference and current rows lie kStep bytes
// apart; the current block is 16-byte aligned, the reference starts one byte
// past a 16-byte boundary.  Outputs are packed blocks (step = row bytes):
// 16-byte aligned for the kernels that store aligned rows and for the
// exports, 2 bytes past a boundary for the other kernels (the case the
// wrappers give them).  Kernels run with rc = 0.
#include "bench_util.h"
#include "blocks/diff.h"

namespace {

using namespace zan;
using namespace zan::diff;
using bench::Buffer;

constexpr Zan32s kStep = 128;  // bytes between input rows
constexpr Zan32s kRows = 20;
constexpr Zan32s kMargin = 64;

struct Inputs {
    Buffer cur{kStep * kRows};
    Buffer ref{kMargin + kStep * kRows};
    Buffer refB{kMargin + kStep * kRows};
    Buffer out{4096};
    Inputs() {
        cur.fill(1);
        ref.fill(2);
        refB.fill(3);
    }
    Zan8u* refAt() { return ref.data() + kMargin + 1; }
    Zan8u* refBAt() { return refB.data() + kMargin + 1; }
    // Output block k (of 1024 bytes), aligned or 2 bytes on.
    Zan16s* outAt(int k, bool aligned) { return out.as<Zan16s>(static_cast<std::size_t>(1024 * k + (aligned ? 0 : 2))); }
};

template <class... T>
inline void escape(T*... p) {
    (benchmark::DoNotOptimize(p), ...);
}

void time_fwd(benchmark::State& s, const KernelPair<DiffFn>& e, DiffFn fn) {
    Inputs in;
    const bool aligned = (e.param & 16) != 0;
    const Zan8u* c = in.cur.data();
    const Zan8u* r = in.refAt();
    Zan16s* d = in.outAt(0, aligned);
    Zan16s* p = in.outAt(1, aligned);
    const Zan32s ds = 2 * e.width;
    for (auto _ : s) {
        escape(c, r, d, p);
        fn(r, kStep, c, kStep, d, ds, p, ds, 0);
        benchmark::ClobberMemory();
    }
}

void time_bi(benchmark::State& s, const KernelPair<DiffBFn>& e, DiffBFn fn) {
    Inputs in;
    const bool aligned = (e.param & 16) != 0;
    const Zan8u* c = in.cur.data();
    const Zan8u* f = in.refAt();
    const Zan8u* b = in.refBAt();
    Zan16s* d = in.outAt(0, aligned);
    for (auto _ : s) {
        escape(c, f, b, d);
        fn(f, kStep, b, kStep, c, kStep, d, 2 * e.width, 0);
        benchmark::ClobberMemory();
    }
}

void time_c2(benchmark::State& s, const KernelPair<DiffC2Fn>& e, DiffC2Fn fn) {
    Inputs in;
    const bool aligned = (e.param & 16) != 0;
    const Zan8u* c = in.cur.data();
    const Zan8u* r = in.refAt();
    Zan16s* u = in.outAt(0, aligned);
    Zan16s* v = in.outAt(1, aligned);
    for (auto _ : s) {
        escape(c, r, u, v);
        fn(r, kStep, c, kStep, u, 16, v, 16, 0);
        benchmark::ClobberMemory();
    }
}

void time_c2b(benchmark::State& s, const KernelPair<DiffC2BFn>& e, DiffC2BFn fn) {
    Inputs in;
    const bool aligned = (e.param & 16) != 0;
    const Zan8u* c = in.cur.data();
    const Zan8u* f = in.refAt();
    const Zan8u* b = in.refBAt();
    Zan16s* u = in.outAt(0, aligned);
    Zan16s* v = in.outAt(1, aligned);
    for (auto _ : s) {
        escape(c, f, b, u, v);
        fn(f, kStep, b, kStep, c, kStep, u, 16, v, 16, 0);
        benchmark::ClobberMemory();
    }
}

void time_sub8(benchmark::State& s, const KernelPair<Sub8Fn>& e, Sub8Fn fn) {
    Inputs in;
    const Zan8u* a = in.cur.data();
    const Zan8u* b = in.refAt();
    Zan16s* d = in.outAt(0, true);
    for (auto _ : s) {
        escape(a, b, d);
        fn(a, kStep, b, kStep, d, 2 * e.width);
        benchmark::ClobberMemory();
    }
}

void time_sub16(benchmark::State& s, const KernelPair<Sub16Fn>& e, Sub16Fn fn) {
    Inputs in;
    const bool aligned = e.param == 16;
    const Zan16u* a = in.cur.as<Zan16u>(aligned ? 0 : 2);
    const Zan16u* b = in.ref.as<Zan16u>(static_cast<std::size_t>(kMargin + (aligned ? 0 : 2)));
    Zan16s* d = in.outAt(0, aligned);
    for (auto _ : s) {
        escape(a, b, d);
        fn(a, kStep, b, kStep, d, 2 * e.width);
        benchmark::ClobberMemory();
    }
}

// ------------------------------------------------------------- exports

template <class Call>
void add_export(const std::string& what, Call call) {
    bench::add("diff/export/" + what, [=](benchmark::State& s) {
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
            benchmark::ClobberMemory();
        }
    });
}

void add_exports() {
    const char* positions[4] = {"FF", "FH", "HF", "HH"};
    for (Zan32s pos = 0; pos < 4; ++pos) {
        const Zan32s mc = 4 * pos;
        add_export(std::string("zaniGetDiff16x16_8u16s_C1:") + positions[pos], [mc](Inputs& in) {
            return zaniGetDiff16x16_8u16s_C1(in.cur.data(), kStep, in.refAt(), kStep, in.outAt(0, true), 32, nullptr, 0,
                                             mc, 0);
        });
        add_export(std::string("zaniGetDiff16x16_8u16s_C1:") + positions[pos] + "+pred", [mc](Inputs& in) {
            return zaniGetDiff16x16_8u16s_C1(in.cur.data(), kStep, in.refAt(), kStep, in.outAt(0, true), 32,
                                             in.outAt(1, true), 32, mc, 0);
        });
    }
    add_export("zaniGetDiff16x16_8u16s_C1:HH+rc1", [](Inputs& in) {
        return zaniGetDiff16x16_8u16s_C1(in.cur.data(), kStep, in.refAt(), kStep, in.outAt(0, true), 32, nullptr, 0, 12, 1);
    });
    add_export("zaniGetDiff16x16B_8u16s_C1:FF_FF", [](Inputs& in) {
        return zaniGetDiff16x16B_8u16s_C1(in.cur.data(), kStep, in.refAt(), kStep, 0, in.refBAt(), kStep, 0,
                                          in.outAt(0, true), 32, 0);
    });
    add_export("zaniGetDiff16x16B_8u16s_C1:HH_HH", [](Inputs& in) {
        return zaniGetDiff16x16B_8u16s_C1(in.cur.data(), kStep, in.refAt(), kStep, 12, in.refBAt(), kStep, 12,
                                          in.outAt(0, true), 32, 0);
    });
    add_export("zaniGetDiff8x8_8u16s_C1:HH", [](Inputs& in) {
        return zaniGetDiff8x8_8u16s_C1(in.cur.data(), kStep, in.refAt(), kStep, in.outAt(0, true), 16, nullptr, 0, 12, 0);
    });
    add_export("zaniGetDiff8x8_8u16s_C2P2:HH", [](Inputs& in) {
        return zaniGetDiff8x8_8u16s_C2P2(in.cur.data(), kStep, in.refAt(), kStep, in.outAt(0, true), 16,
                                         in.outAt(1, true), 16, 12, 0);
    });
    add_export("zaniGetDiff4x4_8u16s_C1", [](Inputs& in) {
        return zaniGetDiff4x4_8u16s_C1(in.cur.data(), kStep, in.refAt(), kStep, in.outAt(0, true), 8);
    });
    add_export("zaniSub16x16_8u16s_C1R", [](Inputs& in) {
        return zaniSub16x16_8u16s_C1R(in.cur.data(), kStep, in.refAt(), kStep, in.outAt(0, true), 32);
    });
    add_export("zaniSub8x8_16u16s_C1R", [](Inputs& in) {
        return zaniSub8x8_16u16s_C1R(in.cur.as<Zan16u>(), kStep, in.ref.as<Zan16u>(kMargin), kStep, in.outAt(0, true), 16);
    });
}

}  // namespace

ZAN_BENCH_FAMILY(diff) {
    using bench::add_pairs;
    const Kernels& ku = u8::diff::kernels;
    const Kernels& kn = n8::diff::kernels;
    add_pairs<DiffFn>("diff", ku.fwd, kn.fwd, time_fwd);
    add_pairs<DiffBFn>("diff", ku.bi, kn.bi, time_bi);
    add_pairs<DiffC2Fn>("diff", ku.c2, kn.c2, time_c2);
    add_pairs<DiffC2BFn>("diff", ku.c2b, kn.c2b, time_c2b);
    add_pairs<Sub8Fn>("diff", ku.sub8, kn.sub8, time_sub8);
    add_pairs<Sub16Fn>("diff", ku.sub16, kn.sub16, time_sub16);
    add_exports();
}
