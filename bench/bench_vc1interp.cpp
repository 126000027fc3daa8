// VC-1 interpolation and range mapping: every catalogue entry (rule, u8
// kernel, n8 kernel) and a few exported functions.
//
// Sources are random planes with rows kStep bytes apart, 64-byte aligned, in
// the L1 cache; each interpolation call makes one block with rounding
// control 0.  Range mapping works on a 64 x 16 region.
#include "bench_util.h"
#include "vc1/vc1interp.h"

namespace {

using namespace zan;
using namespace zan::vc1interp;
using bench::Buffer;

constexpr Zan32s kStep = 64;

struct Inputs {
    Buffer src{kStep * 40};
    Buffer dst{kStep * 20};
    std::array<Zan8u, 256> lut{};
    Inputs() {
        src.fill(21);
        for (int i = 0; i < 256; ++i) lut[static_cast<size_t>(i)] = static_cast<Zan8u>((i * 3) / 4 + 20);
    }
    const Zan8u* at(Zan32s x, Zan32s y) { return src.data() + y * kStep + x; }
};

template <class... T>
inline void escape(T*... p) {
    (benchmark::DoNotOptimize(p), ...);
}

void time_interp(benchmark::State& s, const KernelPair<InterpFn>&, InterpFn fn) {
    Inputs in;
    const Zan8u* a = in.at(8, 4);
    Zan8u* b = in.dst.data();
    for (auto _ : s) {
        escape(a, b);
        fn(a, kStep, b, kStep, 0);
        benchmark::ClobberMemory();
    }
}

void time_rangemap(benchmark::State& s, const KernelPair<RangeMapFn>&, RangeMapFn fn) {
    Inputs in;
    const Zan8u* a = in.src.data();
    Zan8u* b = in.dst.data();
    for (auto _ : s) {
        escape(a, b);
        fn(a, kStep, b, kStep, ZaniSize{64, 16}, 5);
        benchmark::ClobberMemory();
    }
}

template <class Call>
void add_export(const std::string& what, Call call) {
    bench::add("vc1interp/export/" + what, [=](benchmark::State& s) {
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

ZanVC1InterpolateRecord plain(Inputs& in, Zan32s dx, Zan32s dy, ZaniSize roi) {
    return {in.at(8, 4), kStep, in.dst.data(), kStep, dx, dy, roi, 0};
}

// A 48 x 32 picture in the source buffer; the block at (x, y).
ZanVC1ICBlockRecord ic(Inputs& in, Zan32s x, Zan32s y, ZaniSize block, bool tables) {
    ZanVC1ICBlockRecord r{};
    r.pSrc = in.src.data();
    r.srcStep = kStep;
    r.pDst = in.dst.data();
    r.dstStep = kStep;
    r.pLUTTop = tables ? in.lut.data() : nullptr;
    r.pLUTBottom = tables ? in.lut.data() : nullptr;
    r.sizeFrame = {48, 32};
    r.sizeBlock = block;
    r.pointRefBlockPos = {x, y};
    r.dx = 2;
    r.dy = 2;
    return r;
}

void add_exports() {
    add_export("zaniInterpolateQPBicubic_VC1_8u_C1R:8x8_2_2", [](Inputs& in) {
        auto r = plain(in, 2, 2, {8, 8});
        return zaniInterpolateQPBicubic_VC1_8u_C1R(&r);
    });
    add_export("zaniInterpolateQPBicubic_VC1_8u_C1R:16x16_2_2", [](Inputs& in) {
        auto r = plain(in, 2, 2, {16, 16});
        return zaniInterpolateQPBicubic_VC1_8u_C1R(&r);
    });
    add_export("zaniInterpolateQPBicubic_VC1_8u_C1R:8x8_1_3", [](Inputs& in) {
        auto r = plain(in, 1, 3, {8, 8});
        return zaniInterpolateQPBicubic_VC1_8u_C1R(&r);
    });
    add_export("zaniInterpolateQPBilinear_VC1_8u_C1R:16x16_1_1", [](Inputs& in) {
        auto r = plain(in, 1, 1, {16, 16});
        return zaniInterpolateQPBilinear_VC1_8u_C1R(&r);
    });
    add_export("zaniInterpolateQPBilinear_VC1_8u_C2R:8x8_1_3", [](Inputs& in) {
        auto r = plain(in, 1, 3, {8, 8});
        return zaniInterpolateQPBilinear_VC1_8u_C2R(&r);
    });
    add_export("zaniInterpolateQPBilinear_VC1_8u_C2R:4x4_3_1", [](Inputs& in) {
        auto r = plain(in, 3, 1, {4, 4});
        return zaniInterpolateQPBilinear_VC1_8u_C2R(&r);
    });
    add_export("zaniInterpolateICBicubicBlock_VC1_8u_C1R:16x16_inside", [](Inputs& in) {
        auto r = ic(in, 8, 8, {16, 16}, false);
        return zaniInterpolateICBicubicBlock_VC1_8u_C1R(&r);
    });
    add_export("zaniInterpolateICBicubicBlock_VC1_8u_C1R:16x16_corner", [](Inputs& in) {
        auto r = ic(in, -5, -3, {16, 16}, false);
        return zaniInterpolateICBicubicBlock_VC1_8u_C1R(&r);
    });
    add_export("zaniInterpolateICBicubicBlock_VC1_8u_C1R:16x16_tables", [](Inputs& in) {
        auto r = ic(in, 8, 8, {16, 16}, true);
        return zaniInterpolateICBicubicBlock_VC1_8u_C1R(&r);
    });
    add_export("zaniInterpolateICBicubicBlock_VC1_8u_C1R:8x8_tables", [](Inputs& in) {
        auto r = ic(in, 8, 8, {8, 8}, true);
        return zaniInterpolateICBicubicBlock_VC1_8u_C1R(&r);
    });
    add_export("zaniInterpolateICBilinearBlock_VC1_8u_C2R:8x8_corner", [](Inputs& in) {
        auto r = ic(in, 20, 28, {8, 8}, false);
        r.dx = 1;
        return zaniInterpolateICBilinearBlock_VC1_8u_C2R(&r);
    });
    add_export("zaniRangeMapping_VC1_8u_C1R:64x16", [](Inputs& in) {
        return zaniRangeMapping_VC1_8u_C1R(in.src.data(), kStep, in.dst.data(), kStep, {64, 16}, 5);
    });
}

}  // namespace

ZAN_BENCH_FAMILY(vc1interp) {
    bench::add_pairs<InterpFn>("vc1interp", u8::vc1interp::kernels.bicubic, n8::vc1interp::kernels.bicubic,
                               time_interp);
    bench::add_pairs<InterpFn>("vc1interp", u8::vc1interp::kernels.bilinear, n8::vc1interp::kernels.bilinear,
                               time_interp);
    bench::add_pairs<InterpFn>("vc1interp", u8::vc1interp::kernels.bilinearC2, n8::vc1interp::kernels.bilinearC2,
                               time_interp);
    bench::add_pairs<RangeMapFn>("vc1interp", u8::vc1interp::kernels.rangeMap, n8::vc1interp::kernels.rangeMap,
                                 time_rangemap);
    add_exports();
}
