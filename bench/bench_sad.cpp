// Sum of absolute differences: every catalogue entry (rule, u8 kernel, n8
// kernel) and a representative set of exported functions.
//
// Single-block exports are timed three ways in one harness, so that the
// figures differ only in what is called:
//   sad/export/<name>   the exported function (stub, checks, kernel)
//   sad/direct/<name>   the active path's catalogue kernel of the same
//                       block, called straight through a pointer, from a
//                       shared object of the benchmarks' own
//                       (sad_shared.cpp), so that the call crosses the same
//                       distance as a call into the library
//   sad/direct-in-program/<name>
//                       the same kernel linked into this program: a call
//                       within the program, which on the AMD EPYC machine
//                       of the benchmarks costs up to about 0.8 ns less
//                       (on the shortest kernels) than a call to code more
//                       than 4 GiB away, where the loader puts shared
//                       objects
//   sad/peer/<name>     FFmpeg's libavutil pixelutils SAD of the same size
//                       (8x8 and 16x16 only), capped at SSE2, when the
//                       program was built with libavutil
//
// Inputs live in a few kilobytes reused on every iteration, so they stay in
// the L1 cache.  Rows lie kStep bytes apart, a multiple of 16.  The current
// block is 16-byte aligned; the reference starts one byte past a 16-byte
// boundary, as a motion search mostly meets it, except for candidate kernels
// built for one alignment of pRef, which get exactly that alignment (and an
// aligned result array).  Candidate rows are timed with kCandidates
// candidates per call.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <type_traits>

#include "bench_util.h"
#include "blocks/sad.h"

// The catalogues of the benchmarks' shared object (sad_shared.cpp).
extern "C" const zan::sad::BlockKernels* zan_bench_sad_shared_block_kernels(int n8);

#if ZANVC_BENCH_AVUTIL
extern "C" {
#include <libavutil/cpu.h>
#include <libavutil/pixelutils.h>
}
#endif

namespace {

using namespace zan;
using namespace zan::sad;
using bench::Buffer;

constexpr Zan32s kStep = 128;       // bytes between rows, every buffer
constexpr Zan32s kRows = 20;        // rows of every buffer (16 + extra rows read)
constexpr Zan32s kMargin = 64;      // bytes before a reference origin
constexpr Zan32s kCandidates = 32;  // candidates per call of a candidate-row kernel

// One current block and one reference area with kMargin readable bytes
// before it and the rest of the row after it.
struct Inputs {
    Buffer cur{kStep * kRows};
    Buffer ref{kMargin + kStep * kRows};
    Buffer out{1024};
    Inputs() {
        cur.fill(1);
        ref.fill(2);
    }
    explicit Inputs(Zan16u mask) {  // 16-bit samples in 0..mask
        cur.fill16(1, mask);
        ref.fill16(2, mask);
    }
    // Reference origin: refAlign bytes past a 16-byte boundary.
    Zan8u* refAt(Zan32s refAlign) { return ref.data() + kMargin + refAlign; }
};

// The inputs escape on every iteration, so no call can be hoisted or folded.
template <class... T>
inline void escape(T*... p) {
    (benchmark::DoNotOptimize(p), ...);
}

void time_sad8(benchmark::State& s, const KernelPair<Sad8Fn>&, Sad8Fn fn) {
    Inputs in;
    const Zan8u* c = in.cur.data();
    const Zan8u* r = in.refAt(1);
    for (auto _ : s) {
        escape(c, r);
        Zan32s sum = fn(c, kStep, r, kStep);
        benchmark::DoNotOptimize(sum);
    }
}

void time_sad16(benchmark::State& s, const KernelPair<Sad16Fn>&, Sad16Fn fn) {
    Inputs in(0x7FFF);
    const Zan16u* c = in.cur.as<Zan16u>();
    const Zan16u* r = reinterpret_cast<const Zan16u*>(in.refAt(2));
    for (auto _ : s) {
        escape(c, r);
        Zan32s sum = fn(c, kStep, r, kStep);
        benchmark::DoNotOptimize(sum);
    }
}

void time_pair(benchmark::State& s, const KernelPair<SadC2Fn>&, SadC2Fn fn) {
    Inputs in;
    const Zan8u* c = in.cur.data();
    const Zan8u* r = in.refAt(1);
    Zan32s* u = in.out.as<Zan32s>();
    for (auto _ : s) {
        escape(c, r, u);
        fn(c, kStep, r, kStep, u, u + 1);
        benchmark::ClobberMemory();
    }
}

void time_blocks8(benchmark::State& s, const KernelPair<Blocks8Fn>&, Blocks8Fn fn) {
    Inputs in;
    const Zan8u* c = in.cur.data();
    const Zan8u* r = in.refAt(1);
    Zan16u* o = in.out.as<Zan16u>();
    for (auto _ : s) {
        escape(c, r, o);
        fn(c, kStep, r, kStep, o);
        benchmark::ClobberMemory();
    }
}

void time_blocks16(benchmark::State& s, const KernelPair<Blocks16Fn>&, Blocks16Fn fn) {
    Inputs in(0xFFFF);
    const Zan16u* c = in.cur.as<Zan16u>();
    const Zan16u* r = reinterpret_cast<const Zan16u*>(in.refAt(2));
    Zan32u* o = in.out.as<Zan32u>();
    for (auto _ : s) {
        escape(c, r, o);
        fn(c, kStep, r, kStep, o);
        benchmark::ClobberMemory();
    }
}

// param -1: any alignment, given an odd pRef and an odd result address;
// param 0..15: pRef that many bytes past a 16-byte boundary, result aligned.
void time_cand(benchmark::State& s, const KernelPair<CandFn>& e, CandFn fn) {
    Inputs in;
    const Zan8u* c = in.cur.data();
    const Zan8u* r = in.refAt(e.param >= 0 ? e.param : 1);
    Zan16u* o = in.out.as<Zan16u>(e.param >= 0 ? 0 : 2);
    for (auto _ : s) {
        escape(c, r, o);
        fn(c, kStep, r, kStep, o, kCandidates);
        benchmark::ClobberMemory();
    }
}

// Results spread over 0..param, the largest value the kernel accepts.
void time_min_index(benchmark::State& s, const KernelPair<MinIndexFn>& e, MinIndexFn fn) {
    Buffer values(2 * kCandidates);
    values.fill(3);
    Zan16u* v = values.as<Zan16u>();
    for (Zan32s i = 0; i < kCandidates; ++i) v[i] = static_cast<Zan16u>(v[i] % (e.param + 1));
    for (auto _ : s) {
        escape(v);
        Zan32s index = fn(v, kCandidates);
        benchmark::DoNotOptimize(index);
    }
}

void time_sub(benchmark::State& s, const KernelPair<SubFn>&, SubFn fn) {
    Inputs in;
    const Zan8u* c = in.cur.data();
    const Zan8u* r = in.refAt(1);
    Zan16s* d = in.out.as<Zan16s>();
    for (auto _ : s) {
        escape(c, r, d);
        Zan32s sum = fn(c, kStep, r, kStep, d, 16);
        benchmark::DoNotOptimize(sum);
    }
}

template <class T, class Fn>
void time_field(benchmark::State& s, const KernelPair<Fn>&, Fn fn) {
    Inputs in(0xFFFF);
    const T* src = in.cur.as<T>();
    Zan32s* o = in.out.as<Zan32s>();
    for (auto _ : s) {
        escape(src, o);
        fn(src, kStep, o, o + 1);
        benchmark::ClobberMemory();
    }
}

// ------------------------------------------------------------- exports

// Times call(inputs) under the name sad/<kind>/<what>; a failing status skips
// the benchmark with the status in its message.
template <class Call>
void add_timed(const std::string& kind, const std::string& what, Call call) {
    bench::add("sad/" + kind + "/" + what, [=](benchmark::State& s) {
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

template <class Call>
void add_export(const std::string& what, Call call) {
    add_timed("export", what, call);
}

// The catalogue entry of the active path (the path the exports run) by name.
bool n8_active() { return zanvcGetLibVersion()->targetCode[0] == 'n'; }

template <class Fn>
Fn active_kernel(KernelList<Fn> u8, KernelList<Fn> n8, const char* name) {
    for (const auto& e : n8_active() ? n8 : u8)
        if (std::strcmp(e.name, name) == 0) return e.simd;
    std::fprintf(stderr, "bench_sad: no catalogue entry %s\n", name);
    std::abort();
}

// Reference origins in the export timings: one byte past a 16-byte boundary
// (refAt(1)); 16-bit samples two bytes past it.
const Zan16u* ref16(Inputs& in) { return reinterpret_cast<const Zan16u*>(in.refAt(2)); }

// The single-block catalogues of the active path: the copy in the
// benchmarks' shared object, and the one linked into this program.
const BlockKernels& shared_block_kernels() { return *zan_bench_sad_shared_block_kernels(n8_active() ? 1 : 0); }
const BlockKernels& program_block_kernels() {
    return n8_active() ? n8::sad::block_kernels : u8::sad::block_kernels;
}

// Times a direct call of kernel k (from the shared copy of the catalogue, and
// from this program's) under sad/direct/<what> and
// sad/direct-in-program/<what>.
template <class Fn, class Call>
void add_direct(const std::string& what, KernelList<Fn> shared, KernelList<Fn> program, const char* kernel,
                Call call) {
    Fn far = active_kernel<Fn>(shared, shared, kernel);
    Fn near = active_kernel<Fn>(program, program, kernel);
    add_timed("direct", what, [=](Inputs& in) { return call(far, in); });
    add_timed("direct-in-program", what, [=](Inputs& in) { return call(near, in); });
}

// One single-block export of 8-bit samples and its own kernel.  mc: the
// export's mcType, or -1 for the forms without one.
template <class ExportFn>
void add_sad8(const std::string& what, ExportFn exp, Zan32s mc, const char* kernel) {
    add_export(what, [=](Inputs& in) {
        if constexpr (std::is_invocable_v<ExportFn, const Zan8u*, Zan32s, const Zan8u*, Zan32s, Zan32s*, Zan32s>)
            return exp(in.cur.data(), kStep, in.refAt(1), kStep, in.out.as<Zan32s>(), mc);
        else
            return exp(in.cur.data(), kStep, in.refAt(1), kStep, in.out.as<Zan32s>());
    });
    add_direct<Sad8Fn>(what, shared_block_kernels().sad8, program_block_kernels().sad8, kernel,
                       [](Sad8Fn k, Inputs& in) {
                           *in.out.as<Zan32s>() = k(in.cur.data(), kStep, in.refAt(1), kStep);
                           return zanStsOk;
                       });
}

template <class ExportFn>
void add_sad16(const std::string& what, ExportFn exp, const char* kernel) {
    add_export(what, [=](Inputs& in) {
        return exp(in.cur.as<Zan16u>(), kStep, ref16(in), kStep, in.out.as<Zan32s>(), 0);
    });
    add_direct<Sad16Fn>(what, shared_block_kernels().sad16, program_block_kernels().sad16, kernel,
                        [](Sad16Fn k, Inputs& in) {
                            *in.out.as<Zan32s>() = k(in.cur.as<Zan16u>(), kStep, ref16(in), kStep);
                            return zanStsOk;
                        });
}

#if ZANVC_BENCH_AVUTIL
// FFmpeg's SAD of 2^bits x 2^bits samples with its processor flags capped at
// SSE2 (MMX, MMXEXT, SSE, SSE2 and CMOV: the 8x8 function is an MMXEXT one,
// so SSE2 alone would leave only the C code).  aligned = 1: src1, the current
// block, is aligned, as in every timing here; src2, the reference, is not.
void add_peer(const std::string& what, int bits) {
    const int cap = AV_CPU_FLAG_MMX | AV_CPU_FLAG_MMXEXT | AV_CPU_FLAG_SSE | AV_CPU_FLAG_SSE2 | AV_CPU_FLAG_CMOV;
    av_force_cpu_flags(cap);
    const int flags = av_get_cpu_flags();
    av_pixelutils_sad_fn fn = av_pixelutils_get_sad_fn(bits, bits, 1, nullptr);
    av_force_cpu_flags(-1);
    if (!fn || flags != cap) {
        std::fprintf(stderr, "bench_sad: FFmpeg peer %s not available (flags %#x)\n", what.c_str(), flags);
        return;
    }
    static bool contextAdded = false;
    if (!contextAdded) {
        char text[32];
        std::snprintf(text, sizeof text, "%#x", flags);
        benchmark::AddCustomContext("ffmpeg_cpu_flags", text);
        contextAdded = true;
    }
    add_timed("peer", what, [=](Inputs& in) {
        *in.out.as<Zan32s>() = fn(in.cur.data(), kStep, in.refAt(1), kStep);
        return zanStsOk;
    });
}
#else
void add_peer(const std::string& what, int) {
    std::fprintf(stderr, "bench_sad: built without libavutil, FFmpeg peer %s skipped\n", what.c_str());
}
#endif

// One candidate-row call with eight candidates against eight single-block
// calls at offsets 0..7, for one block size.
template <class RowFn, class OneFn>
void add_row_against_singles(const std::string& size, RowFn row, OneFn one) {
    add_export(size + "xN_8cand", [=](Inputs& in) {
        return row(in.cur.data(), kStep, in.refAt(1), kStep, in.out.as<Zan16u>(), 8);
    });
    add_export(size + "_x8", [=](Inputs& in) {
        ZanStatus st = zanStsOk;
        Zan32s* o = in.out.as<Zan32s>();
        for (Zan32s i = 0; i < 8; ++i) st |= one(in.cur.data(), kStep, in.refAt(1) + i, kStep, o + i);
        return st;
    });
}

// A candidate row of kCandidates through the export: with an aligned result
// array (the wrapper takes the aligned kernel for pRef & 15) and with an odd
// one (the kernel for any alignment).
template <class RowFn>
void add_rows(const std::string& what, RowFn row) {
    add_export(what, [=](Inputs& in) {
        return row(in.cur.data(), kStep, in.refAt(1), kStep, in.out.as<Zan16u>(), kCandidates);
    });
    add_export(what + ":any", [=](Inputs& in) {
        return row(in.cur.data(), kStep, in.refAt(1), kStep, in.out.as<Zan16u>(2), kCandidates);
    });
}

void add_exports() {
    add_sad8("zaniSAD16x16_8u32s", zaniSAD16x16_8u32s, 0, "sad16x16_8u");
    add_peer("zaniSAD16x16_8u32s", 4);
    add_sad8("zaniSAD16x16_8u32s:HH", zaniSAD16x16_8u32s, 12, "sad16x16_8u_HH");
    add_sad8("zaniSAD16x8_8u32s_C1R", zaniSAD16x8_8u32s_C1R, 0, "sad16x8_8u");
    add_sad8("zaniSAD8x8_8u32s_C1R", zaniSAD8x8_8u32s_C1R, 0, "sad8x8_8u");
    add_peer("zaniSAD8x8_8u32s_C1R", 3);
    add_sad8("zaniSAD8x16_8u32s_C1R", zaniSAD8x16_8u32s_C1R, -1, "sad8x16_8u");
    add_sad8("zaniSAD8x4_8u32s_C1R", zaniSAD8x4_8u32s_C1R, -1, "sad8x4_8u");
    add_sad8("zaniSAD4x8_8u32s_C1R", zaniSAD4x8_8u32s_C1R, -1, "sad4x8_8u");
    add_sad8("zaniSAD4x4_8u32s", zaniSAD4x4_8u32s, -1, "sad4x4_8u");
    add_sad16("zaniSAD16x16_16u32s_C1R", zaniSAD16x16_16u32s_C1R, "sad16x16_16u");
    add_sad16("zaniSAD8x8_16u32s_C1R", zaniSAD8x8_16u32s_C1R, "sad8x8_16u");
    add_sad16("zaniSAD4x4_16u32s_C1R", zaniSAD4x4_16u32s_C1R, "sad4x4_16u");
    add_export("zaniSAD8x8_8u32s_C2R", [](Inputs& in) {
        Zan32s* o = in.out.as<Zan32s>();
        return zaniSAD8x8_8u32s_C2R(in.cur.data(), kStep, in.refAt(1), kStep, o, o + 1, 0);
    });
    add_export("zaniSAD16x16Blocks4x4_8u16u", [](Inputs& in) {
        return zaniSAD16x16Blocks4x4_8u16u(in.cur.data(), kStep, in.refAt(1), kStep, in.out.as<Zan16u>());
    });
    add_rows("zaniSAD16x16xN_8u16u_C1R", zaniSAD16x16xN_8u16u_C1R);
    add_rows("zaniSAD8x8xN_8u16u_C1R", zaniSAD8x8xN_8u16u_C1R);
    add_rows("zaniSAD4x4xN_8u16u_C1R", zaniSAD4x4xN_8u16u_C1R);
    add_export("zaniSAD16x16xNI_8u16u_C1R", [](Inputs& in) {
        Zan32s* index = in.out.as<Zan32s>(512);
        return zaniSAD16x16xNI_8u16u_C1R(in.cur.data(), kStep, in.refAt(1), kStep, in.out.as<Zan16u>(), kCandidates,
                                         index);
    });
    add_export("zaniSubSAD8x8_8u16s_C1R", [](Inputs& in) {
        return zaniSubSAD8x8_8u16s_C1R(in.cur.data(), kStep, in.refAt(1), kStep, in.out.as<Zan16s>(), 16,
                                       in.out.as<Zan32s>(512));
    });
    add_export("zaniFrameFieldSAD16x16_8u32s_C1R", [](Inputs& in) {
        Zan32s* o = in.out.as<Zan32s>();
        return zaniFrameFieldSAD16x16_8u32s_C1R(in.cur.data(), kStep, o, o + 1);
    });

    add_row_against_singles("16x16", zaniSAD16x16xN_8u16u_C1R,
                            [](const Zan8u* c, Zan32s cs, const Zan8u* r, Zan32s rs, Zan32s* o) {
                                return zaniSAD16x16_8u32s(c, cs, r, rs, o, 0);
                            });
    add_row_against_singles("8x8", zaniSAD8x8xN_8u16u_C1R,
                            [](const Zan8u* c, Zan32s cs, const Zan8u* r, Zan32s rs, Zan32s* o) {
                                return zaniSAD8x8_8u32s_C1R(c, cs, r, rs, o, 0);
                            });
    add_row_against_singles("4x4", zaniSAD4x4xN_8u16u_C1R, zaniSAD4x4_8u32s);
}

}  // namespace

ZAN_BENCH_FAMILY(sad) {
    using bench::add_pairs;
    const BlockKernels& bu = u8::sad::block_kernels;
    const BlockKernels& bn = n8::sad::block_kernels;
    add_pairs<Sad8Fn>("sad", bu.sad8, bn.sad8, time_sad8);
    add_pairs<Sad16Fn>("sad", bu.sad16, bn.sad16, time_sad16);
    add_pairs<SadC2Fn>("sad", bu.pair, bn.pair, time_pair);
    add_pairs<Blocks8Fn>("sad", bu.blocks8, bn.blocks8, time_blocks8);
    add_pairs<Blocks16Fn>("sad", bu.blocks16, bn.blocks16, time_blocks16);

    const CandidateKernels& cu = u8::sad::candidate_kernels;
    const CandidateKernels& cn = n8::sad::candidate_kernels;
    add_pairs<CandFn>("sad", cu.cand, cn.cand, time_cand);
    add_pairs<MinIndexFn>("sad", cu.minIndex, cn.minIndex, time_min_index);

    const SubKernels& su = u8::sad::sub_kernels;
    const SubKernels& sn = n8::sad::sub_kernels;
    add_pairs<SubFn>("sad", su.sub, sn.sub, time_sub);
    add_pairs<Field8Fn>("sad", su.field8, sn.field8, time_field<Zan8u, Field8Fn>);
    add_pairs<Field16Fn>("sad", su.field16, sn.field16, time_field<Zan16s, Field16Fn>);

    add_exports();
}
