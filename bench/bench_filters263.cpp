// H.261, H.263 and MPEG-4 block filters: every catalogue entry (rule, u8
// kernel, n8 kernel) for one kernel call, and the exported functions: the
// edges of one macroblock in each direction (two 8-sample luma edges per
// 16-sample edge for the 8x8 forms, one call for the 16-line forms) and the
// deringing of one 8x8 block.
//
// The picture is smooth with a step of 6 across every 8th row and column, so
// the H.263 ramp and both MPEG-4 modes are exercised.  In-place filters run
// over the same picture again and again; their results change the picture
// only in the first rounds.
#include <string>

#include "bench_util.h"
#include "h26x_mpeg4/filters263.h"

namespace {

using namespace zan;
using namespace zan::filters263;
using bench::Buffer;

constexpr Zan32s kStep = 128;
constexpr Zan32s kQp = 12;

struct Plane {
    Buffer buf{kStep * 48};
    Plane() {
        for (int y = 0; y < 48; ++y)
            for (int x = 0; x < kStep; ++x)
                buf.data()[y * kStep + x] = static_cast<Zan8u>(90 + ((x / 8 + y / 8) & 1) * 6 + ((x * 7 + y * 3) % 5));
    }
    // The block at row 16, byte 32: a corner of the 8x8 grid.
    Zan8u* at() { return buf.data() + 16 * kStep + 32; }
};

template <class Fn, class Call>
void add_export(const std::string& what, Call call) {
    bench::add("filters263/export/" + what, [=](benchmark::State& s) {
        Plane pl;
        Buffer out{kStep * 16};
        for (auto _ : s) {
            Plane* p = &pl;
            benchmark::DoNotOptimize(p);
            ZanStatus st = call(*p, out.data());
            benchmark::DoNotOptimize(st);
            benchmark::ClobberMemory();
        }
    });
}

}  // namespace

ZAN_BENCH_FAMILY(filters263) {
    const Kernels& ku = u8::filters263::kernels;
    const Kernels& kn = n8::filters263::kernels;
    bench::add_pairs<H261Fn>("filters263", ku.h261, kn.h261, [](benchmark::State& s, const KernelPair<H261Fn>&, H261Fn f) {
        Plane pl;
        Buffer out{kStep * 8};
        for (auto _ : s) {
            Zan8u* p = pl.at();
            benchmark::DoNotOptimize(p);
            f(p, kStep, out.data(), kStep);
            benchmark::ClobberMemory();
        }
    });
    bench::add_pairs<EdgeFn>("filters263", ku.edge, kn.edge, [](benchmark::State& s, const KernelPair<EdgeFn>&, EdgeFn f) {
        Plane pl;
        for (auto _ : s) {
            Zan8u* p = pl.at();
            benchmark::DoNotOptimize(p);
            f(p, kStep, kQp);
            benchmark::ClobberMemory();
        }
    });
    bench::add_pairs<Mpeg4EdgeFn>("filters263", ku.mpeg4, kn.mpeg4,
                                  [](benchmark::State& s, const KernelPair<Mpeg4EdgeFn>&, Mpeg4EdgeFn f) {
                                      Plane pl;
                                      for (auto _ : s) {
                                          Zan8u* p = pl.at();
                                          benchmark::DoNotOptimize(p);
                                          f(p, kStep, kQp, 2, 6);
                                          benchmark::ClobberMemory();
                                      }
                                  });
    bench::add_pairs<ThresholdFn>("filters263", ku.threshold, kn.threshold,
                                  [](benchmark::State& s, const KernelPair<ThresholdFn>&, ThresholdFn f) {
                                      Plane pl;
                                      Zan32s thr[6];
                                      for (auto _ : s) {
                                          Zan8u* p = pl.at();
                                          benchmark::DoNotOptimize(p);
                                          f(p, kStep, p + 16, kStep, p + 24, kStep, thr);
                                          benchmark::DoNotOptimize(thr);
                                      }
                                  });
    bench::add_pairs<DeringFn>("filters263", ku.dering, kn.dering,
                               [](benchmark::State& s, const KernelPair<DeringFn>&, DeringFn f) {
                                   Plane pl;
                                   Buffer out{kStep * 8};
                                   for (auto _ : s) {
                                       Zan8u* p = pl.at();
                                       benchmark::DoNotOptimize(p);
                                       f(p, kStep, out.data(), kStep, kQp, 96);
                                       benchmark::ClobberMemory();
                                   }
                               });

    // Per macroblock: the 16-sample vertical edge (two 8x8 calls or one
    // 16-line call) and the horizontal one.
    add_export<int>("mb_deblocking8x8_H263_ver_hor", [](Plane& p, Zan8u*) {
        ZanStatus st = zaniFilterDeblocking8x8VerEdge_H263_8u_C1IR(p.at(), kStep, kQp);
        st |= zaniFilterDeblocking8x8VerEdge_H263_8u_C1IR(p.at() + 8 * kStep, kStep, kQp);
        st |= zaniFilterDeblocking8x8HorEdge_H263_8u_C1IR(p.at(), kStep, kQp);
        return st | zaniFilterDeblocking8x8HorEdge_H263_8u_C1IR(p.at() + 8, kStep, kQp);
    });
    add_export<int>("mb_deblocking16x16_H263_ver_hor", [](Plane& p, Zan8u*) {
        ZanStatus st = zaniFilterDeblocking16x16VerEdge_H263_8u_C1IR(p.at(), kStep);
        return st | zaniFilterDeblocking16x16HorEdge_H263_8u_C1IR(p.at(), kStep);
    });
    add_export<int>("mb_blockboundary_H263_ver_hor", [](Plane& p, Zan8u*) {
        ZanStatus st = zaniFilterBlockBoundaryVerEdge_H263_8u_C1IR(p.at(), kStep);
        return st | zaniFilterBlockBoundaryHorEdge_H263_8u_C1IR(p.at(), kStep);
    });
    add_export<int>("mb_deblocking_MPEG4_ver_hor", [](Plane& p, Zan8u*) {
        ZanStatus st = zaniFilterDeblocking8x8VerEdge_MPEG4_8u_C1IR(p.at(), kStep, kQp, 2, 6);
        st |= zaniFilterDeblocking8x8VerEdge_MPEG4_8u_C1IR(p.at() + 8 * kStep, kStep, kQp, 2, 6);
        st |= zaniFilterDeblocking8x8HorEdge_MPEG4_8u_C1IR(p.at(), kStep, kQp, 2, 6);
        return st | zaniFilterDeblocking8x8HorEdge_MPEG4_8u_C1IR(p.at() + 8, kStep, kQp, 2, 6);
    });
    add_export<int>("zaniFilter8x8_H261_8u_C1R", [](Plane& p, Zan8u* out) {
        return zaniFilter8x8_H261_8u_C1R(p.at(), kStep, out, kStep);
    });
    add_export<int>("zaniFilterDeringingThreshold_MPEG4_8u_P3R", [](Plane& p, Zan8u* out) {
        return zaniFilterDeringingThreshold_MPEG4_8u_P3R(p.at(), kStep, p.at() + 16, kStep, p.at() + 24, kStep,
                                                         reinterpret_cast<Zan32s*>(out));
    });
    add_export<int>("zaniFilterDeringingSmooth8x8_MPEG4_8u_C1R", [](Plane& p, Zan8u* out) {
        return zaniFilterDeringingSmooth8x8_MPEG4_8u_C1R(p.at(), kStep, out, kStep, kQp, 96);
    });
}
