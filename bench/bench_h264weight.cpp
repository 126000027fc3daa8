// H.264 weighted prediction: every catalogue entry (rule, u8 kernel, n8
// kernel) and each exported form on a 16x16 block (8x8 pairs for the
// interleaved forms, which is the same 16 bytes a row).
//
// Inputs live in a few kilobytes reused on every iteration, so they stay in
// the L1 cache.  Rows lie kStep bytes apart; sources start one byte past a
// 16-byte boundary (two bytes for 16-bit samples), the destination on one.
// Parameters are those of a typical explicit weighting: log2wd 5, weights
// 40 and 24, offsets 3 and -2 (which the narrow 8-bit kernels take); 16-bit
// samples have 10 bits.
#include "bench_util.h"
#include "h264/h264weight.h"

namespace {

using namespace zan;
using namespace zan::h264weight;
using bench::Buffer;

constexpr Zan32s kStep = 64;  // bytes between rows, every buffer
constexpr Zan32s kRows = 16;

struct Inputs {
    Buffer a{kStep * kRows + 64};
    Buffer b{kStep * kRows + 64};
    Buffer d{kStep * kRows + 64};
    explicit Inputs(Zan16u mask = 0xFF) {
        a.fill16(1, mask);
        b.fill16(2, mask);
    }
    Zan8u* src1(Zan32s off = 1) { return a.data() + off; }
    Zan8u* src2(Zan32s off = 1) { return b.data() + off; }
    Zan8u* dst() { return d.data(); }
};

template <class... T>
inline void escape(T*... p) {
    (benchmark::DoNotOptimize(p), ...);
}

const Params kBi8 = bi_params(5, 40, 3, 24, -2, 255);
const Params kUni8 = uni_params(5, 40, 3, 255);
const Params kBi16 = bi_params(5, 40, 3, 24, -2, 1023);
const Params kUni16 = uni_params(5, 40, 3, 1023);

void time_uni8(benchmark::State& s, const KernelPair<Uni8Fn>&, Uni8Fn fn) {
    Inputs in;
    const Zan8u* a = in.src1();
    Zan8u* d = in.dst();
    for (auto _ : s) {
        escape(a, d);
        fn(a, kStep, d, kStep, kUni8);
        benchmark::ClobberMemory();
    }
}
void time_bi8(benchmark::State& s, const KernelPair<Bi8Fn>&, Bi8Fn fn) {
    Inputs in;
    const Zan8u *a = in.src1(), *b = in.src2();
    Zan8u* d = in.dst();
    for (auto _ : s) {
        escape(a, b, d);
        fn(a, kStep, b, kStep, d, kStep, kBi8);
        benchmark::ClobberMemory();
    }
}
void time_uni16(benchmark::State& s, const KernelPair<Uni16Fn>&, Uni16Fn fn) {
    Inputs in(0x3FF);
    auto* a = reinterpret_cast<const Zan16u*>(in.src1(2));
    auto* d = reinterpret_cast<Zan16u*>(in.dst());
    for (auto _ : s) {
        escape(a, d);
        fn(a, kStep / 2, d, kStep / 2, kUni16);
        benchmark::ClobberMemory();
    }
}
void time_bi16(benchmark::State& s, const KernelPair<Bi16Fn>&, Bi16Fn fn) {
    Inputs in(0x3FF);
    auto* a = reinterpret_cast<const Zan16u*>(in.src1(2));
    auto* b = reinterpret_cast<const Zan16u*>(in.src2(2));
    auto* d = reinterpret_cast<Zan16u*>(in.dst());
    for (auto _ : s) {
        escape(a, b, d);
        fn(a, kStep / 2, b, kStep / 2, d, kStep / 2, kBi16);
        benchmark::ClobberMemory();
    }
}
void time_avg16(benchmark::State& s, const KernelPair<Avg16Fn>&, Avg16Fn fn) {
    Inputs in(0x3FF);
    auto* a = reinterpret_cast<const Zan16u*>(in.src1(2));
    auto* b = reinterpret_cast<const Zan16u*>(in.src2(2));
    auto* d = reinterpret_cast<Zan16u*>(in.dst());
    for (auto _ : s) {
        escape(a, b, d);
        fn(a, kStep / 2, b, kStep / 2, d, kStep / 2, 16, 1023);
        benchmark::ClobberMemory();
    }
}

// ------------------------------------------------------------- exports

template <class Call>
void add_export(const std::string& what, Zan16u mask, Call call) {
    bench::add("h264weight/export/" + what, [=](benchmark::State& s) {
        Inputs in(mask);
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
    const ZaniSize b16{16, 16};
    add_export("zaniUniDirWeightBlock_H264_8u_C1R", 0xFF, [=](Inputs& in) {
        return zaniUniDirWeightBlock_H264_8u_C1R(in.dst(), kStep, 5, 40, 3, b16);
    });
    add_export("zaniUniDirWeightBlock_H264_8u_C2R:8x8", 0xFF, [](Inputs& in) {
        ZanWeightBlockRecord r{in.src1(), kStep, nullptr, 0, in.dst(), kStep, 8, 8};
        ZanWeightRecord w{5, 40, 24, 3, -2};
        return zaniUniDirWeightBlock_H264_8u_C2R(&r, &w);
    });
    add_export("zaniBiDirWeightBlock_H264_8u_P2P1R", 0xFF, [=](Inputs& in) {
        return zaniBiDirWeightBlock_H264_8u_P2P1R(in.src1(), in.src2(), in.dst(), kStep, kStep, 5, 40, 3, 24, -2, b16);
    });
    add_export("zaniBiDirWeightBlock_H264_8u_P3P1R", 0xFF, [=](Inputs& in) {
        return zaniBiDirWeightBlock_H264_8u_P3P1R(in.src1(), in.src2(), in.dst(), kStep, kStep, kStep, 5, 40, 3, 24,
                                                  -2, b16);
    });
    add_export("zaniBiDirWeightBlock_H264_8u_C2R:8x8", 0xFF, [](Inputs& in) {
        ZanWeightBlockRecord r{in.src1(), kStep, in.src2(), kStep, in.dst(), kStep, 8, 8};
        ZanWeightRecord w0{5, 40, 24, 3, -2}, w1{5, 24, 40, -2, 3};
        return zaniBiDirWeightBlock_H264_8u_C2R(&r, &w0, &w1);
    });
    add_export("zaniBiDirWeightBlockImplicit_H264_8u_P2P1R", 0xFF, [=](Inputs& in) {
        return zaniBiDirWeightBlockImplicit_H264_8u_P2P1R(in.src1(), in.src2(), in.dst(), kStep, kStep, 40, 24, b16);
    });
    add_export("zaniBiDirWeightBlockImplicit_H264_8u_P3P1R", 0xFF, [=](Inputs& in) {
        return zaniBiDirWeightBlockImplicit_H264_8u_P3P1R(in.src1(), in.src2(), in.dst(), kStep, kStep, kStep, 40, 24,
                                                          b16);
    });
    add_export("zaniWeightedAverage_H264_8u_C1IR", 0xFF, [=](Inputs& in) {
        return zaniWeightedAverage_H264_8u_C1IR(in.src1(), in.dst(), kStep, 40, 24, 6, 1, b16);
    });
    add_export("zaniUnidirWeight_H264_16u_IP2P1R", 0x3FF, [=](Inputs& in) {
        return zaniUnidirWeight_H264_16u_IP2P1R(reinterpret_cast<Zan16u*>(in.dst()), kStep / 2, 5, 40, 3, b16, 10);
    });
    add_export("zaniBidirWeight_H264_16u_P2P1R", 0x3FF, [](Inputs& in) {
        ZanBidirRecord r{reinterpret_cast<const Zan16u*>(in.src1(2)), kStep / 2, reinterpret_cast<const Zan16u*>(in.src2(2)),
                         kStep / 2, reinterpret_cast<Zan16u*>(in.dst()), kStep / 2, 10, 16, 16};
        return zaniBidirWeight_H264_16u_P2P1R(&r, 5, 40, 3, 24, -2);
    });
    add_export("zaniBidirWeightImplicit_H264_16u_P2P1R", 0x3FF, [](Inputs& in) {
        ZanBidirRecord r{reinterpret_cast<const Zan16u*>(in.src1(2)), kStep / 2, reinterpret_cast<const Zan16u*>(in.src2(2)),
                         kStep / 2, reinterpret_cast<Zan16u*>(in.dst()), kStep / 2, 10, 16, 16};
        return zaniBidirWeightImplicit_H264_16u_P2P1R(&r, 40, 24);
    });
    add_export("zaniBidir_H264_16u_P2P1R", 0x3FF, [](Inputs& in) {
        ZanBidirRecord r{reinterpret_cast<const Zan16u*>(in.src1(2)), kStep / 2, reinterpret_cast<const Zan16u*>(in.src2(2)),
                         kStep / 2, reinterpret_cast<Zan16u*>(in.dst()), kStep / 2, 10, 16, 16};
        return zaniBidir_H264_16u_P2P1R(&r);
    });
}

}  // namespace

ZAN_BENCH_FAMILY(h264weight) {
    using bench::add_pairs;
    const Kernels& u = u8::h264weight::kernels;
    const Kernels& n = n8::h264weight::kernels;
    add_pairs<Uni8Fn>("h264weight", u.uni8, n.uni8, time_uni8);
    add_pairs<Bi8Fn>("h264weight", u.bi8, n.bi8, time_bi8);
    add_pairs<Uni8Fn>("h264weight", u.uni8Narrow, n.uni8Narrow, time_uni8);
    add_pairs<Bi8Fn>("h264weight", u.bi8Narrow, n.bi8Narrow, time_bi8);
    add_pairs<Uni16Fn>("h264weight", u.uni16, n.uni16, time_uni16);
    add_pairs<Bi16Fn>("h264weight", u.bi16, n.bi16, time_bi16);
    add_pairs<Avg16Fn>("h264weight", u.avg16, n.avg16, time_avg16);
    add_exports();
}
