// H.264 interpolation: every catalogue entry (rule, u8 kernel, n8 kernel)
// and the exported functions on the paths that matter: 16x16 luma at the
// half and centre positions, 8x8 chroma, a block read through the picture
// boundary, 16-bit luma, the bi-prediction average and plane expansion.
// Chroma is timed at fractions 3 and 5 where the column has them, 16-bit
// samples with 10 bits.
//
// Inputs stay in the L1 cache: one source area of kRows rows kStep bytes
// apart, the block's integer position kMargin rows and columns inside it.
#include <string>
#include <utility>

#include "bench_util.h"
#include "h264/h264interp.h"

namespace {

using namespace zan;
using namespace zan::h264interp;
using bench::Buffer;

constexpr Zan32s kStep = 64;   // bytes between rows of every 8-bit buffer
constexpr Zan32s kRows = 32;   // rows of the source
constexpr Zan32s kMargin = 4;  // rows and columns before the block's integer position

// The output sits 1056 bytes into its buffer, so that its rows do not share
// their low 12 address bits with the source rows read just after (which
// would make loads wait on unrelated stores and time the heap's layout).
struct Inputs {
    Buffer src{kStep * kRows * 2};
    Buffer dstStore{kStep * kRows * 2 + 2048};
    Inputs() { src.fill(7); }
    const Zan8u* at() { return src.data() + kStep * kMargin + kMargin; }
    struct Out {
        Buffer& b;
        Zan8u* data() { return b.data() + 1056; }
        template <class T>
        T* as() { return reinterpret_cast<T*>(data()); }
    } dst{dstStore};
};

template <class... T>
inline void escape(T*... p) {
    (benchmark::DoNotOptimize(p), ...);
}

void time_luma(benchmark::State& s, const KernelPair<Luma8Fn>& e, Luma8Fn fn) {
    Inputs in;
    const Zan8u* src = in.at();
    Zan8u* dst = in.dst.data();
    const Zan32s h = e.width == 4 ? 4 : e.width == 8 ? 8 : 16;
    for (auto _ : s) {
        escape(src, dst);
        fn(src, kStep, dst, kStep, h);
        benchmark::ClobberMemory();
    }
}

// Fractions 3 and 5 where the column has them.
void time_chroma(benchmark::State& s, const KernelPair<Chroma8Fn>& e, Chroma8Fn fn) {
    Inputs in;
    const Zan32s col = e.param >> 2;
    ChromaJob8 job{in.at(), kStep, in.dst.data(), in.dst.data() + 32, kStep, col & 1 ? 3 : 0, col & 2 ? 5 : 0,
                   e.width};
    for (auto _ : s) {
        escape(job.pSrc, job.pDst);
        fn(job);
        benchmark::ClobberMemory();
    }
}

// 16-bit samples of 10 bits; steps of kStep / 2 samples.
void time_16u(benchmark::State& s, const KernelPair<Interp16Fn>& e, Interp16Fn fn) {
    Inputs in;
    in.src.fill16(7, 0x3FF);
    const bool luma = std::string(e.name).rfind("luma", 0) == 0;
    const Zan32s col = e.param >> 2;
    Job16 job{in.src.as<Zan16u>() + kStep / 2 * kMargin + kMargin, kStep / 2, in.dst.as<Zan16u>(), kStep / 2,
              luma ? e.param & 3 : (col & 1 ? 3 : 0), luma ? e.param >> 2 : (col & 2 ? 5 : 0), e.width,
              luma ? (e.width == 4 ? 4 : e.width == 8 ? 8 : 16) : e.width, 1023};
    for (auto _ : s) {
        escape(job.pSrc, job.pDst);
        fn(job);
        benchmark::ClobberMemory();
    }
}

void time_average(benchmark::State& s, const KernelPair<AverageFn>& e, AverageFn fn) {
    Inputs in;
    const Zan32s w = e.width ? e.width : 13, h = e.height ? e.height : 11;
    const Zan8u* a = in.at();
    const Zan8u* b = a + 16 * kStep;
    Zan8u* d = in.dst.data();
    for (auto _ : s) {
        escape(a, b, d);
        fn(a, kStep, b, kStep, d, kStep, w, h);
        benchmark::ClobberMemory();
    }
}

template <class Call>
void add_export(const std::string& what, Call call) {
    bench::add("h264interp/export/" + what, [=](benchmark::State& s) {
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
    for (Zan32s pos : {2, 8, 10}) {
        const char* letter = pos == 2 ? "b" : pos == 8 ? "h" : "j";
        add_export(std::string("zaniInterpolateLuma_H264_8u_C1R:16x16_") + letter, [pos](Inputs& in) {
            return zaniInterpolateLuma_H264_8u_C1R(in.at(), kStep, in.dst.data(), kStep, pos & 3, pos >> 2, {16, 16});
        });
    }
    add_export("zaniInterpolateChroma_H264_8u_C1R:8x8_full", [](Inputs& in) {
        return zaniInterpolateChroma_H264_8u_C1R(in.at(), kStep, in.dst.data(), kStep, 3, 5, {8, 8});
    });
    add_export("zaniInterpolateChroma_H264_8u_C2P2R:8x8_full", [](Inputs& in) {
        return zaniInterpolateChroma_H264_8u_C2P2R(in.at(), kStep, in.dst.data(), in.dst.data() + 32, kStep, 3, 5,
                                                   {8, 8});
    });
    // A 16x16 block at the centre position, inside the frame and across its top-left corner.
    for (bool inside : {true, false})
        add_export(std::string("zaniInterpolateLumaBlock_H264_8u_P1R:16x16_j_") + (inside ? "inside" : "boundary"),
                   [inside](Inputs& in) {
                       ZanInterpolateBlockRecord r{{in.src.data(), nullptr}, kStep, {in.dst.data(), nullptr}, kStep,
                                                   {kStep, kRows}, {16, 16}, {inside ? 8 : 0, inside ? 8 : 0}, {-6, -6}};
                       if (inside) r.pointVector = {2, 2};
                       return zaniInterpolateLumaBlock_H264_8u_P1R(&r);
                   });
    add_export("zaniInterpolateChromaBlock_H264_8u_C2P2R:8x8_boundary", [](Inputs& in) {
        ZanInterpolateBlockRecord r{{in.src.data(), in.src.data()}, kStep, {in.dst.data(), in.dst.data() + 32}, kStep,
                                    {kStep / 2, kRows}, {8, 8}, {0, 0}, {-5, -3}};
        return zaniInterpolateChromaBlock_H264_8u_C2P2R(&r);
    });
    add_export("zaniInterpolateLuma_H264_16u_C1R:16x16_j", [](Inputs& in) {
        ZanInterpolateSampleRecord r{in.src.as<Zan16u>() + 32 * 4 + 4, 32, in.dst.as<Zan16u>(), 32, 2, 2, {16, 16}, 10};
        return zaniInterpolateLuma_H264_16u_C1R(&r);
    });
    add_export("zaniInterpolateBlock_H264_8u_P3P1R:16x16", [](Inputs& in) {
        return zaniInterpolateBlock_H264_8u_P3P1R(in.at(), in.at() + 16 * kStep, in.dst.data(), 16, 16, kStep, kStep,
                                                  kStep);
    });
    add_export("zaniExpandPlane_H264_8u_C1R:32x16_by_8", [](Inputs& in) {
        return zaniExpandPlane_H264_8u_C1R(in.dst.data() + 8 * kStep + 16, 32, 16, kStep, 8, 0);
    });
}

// The boundary read of each path: a 21x21 region (a 16x16 block at the
// centre position) hanging 4 samples over the top-left corner.
void add_boundary_reads() {
    using ReadFn = void (*)(Zan32s, const BoundaryRead<Zan8u>&);
    const std::pair<const char*, ReadFn> reads[] = {{"u8", u8::zaniReadDataBlockThroughBoundary_8u},
                                                    {"n8", n8::zaniReadDataBlockThroughBoundary_8u}};
    for (const auto& [path, fn] : reads) {
        ReadFn read = fn;
        bench::add(std::string("h264interp/boundary_read_21x21/") + path, [read](benchmark::State& s) {
            Inputs in;
            alignas(32) Zan8u buf[21 * 32];
            const BoundaryRead<Zan8u> r{in.src.data(), kStep, {kStep, kRows}, -4, -4, 21, 21, buf, 32};
            for (auto _ : s) {
                escape(buf);
                read(kEdgeLeft | kEdgeTop, r);
                benchmark::ClobberMemory();
            }
        });
    }
}

}  // namespace

ZAN_BENCH_FAMILY(h264interp) {
    using bench::add_pairs;
    const Kernels& ku = u8::h264interp::kernels;
    const Kernels& kn = n8::h264interp::kernels;
    add_pairs<Luma8Fn>("h264interp", ku.luma8, kn.luma8, time_luma);
    add_pairs<Chroma8Fn>("h264interp", ku.chroma8, kn.chroma8, time_chroma);
    add_pairs<AverageFn>("h264interp", ku.average, kn.average, time_average);
    add_pairs<Interp16Fn>("h264interp", ku.luma16, kn.luma16, time_16u);
    add_pairs<Interp16Fn>("h264interp", ku.chroma16, kn.chroma16, time_16u);
    add_exports();
    add_boundary_reads();
}
