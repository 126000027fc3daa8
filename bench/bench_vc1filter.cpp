// VC-1 deblocking and overlap smoothing: every catalogue entry (rule, u8
// kernel, n8 kernel) for one kernel call of 8 lines, and the exported
// functions: one edge each, and the edges of one macroblock in each
// direction (luma at 0 and 8, and the interleaved chroma pair).
//
// Every line of the deblocking inputs passes the filter test with d = 0
// (p1..p8 = 100 100 100 100 98 80 80 98 at PQUANT 31: a0 = 4, a3 = 0,
// clip = 1, d = -2 against the direction of clip), so the whole decision
// runs on every line and the picture stays the same from call to call.
#include <array>
#include <string>

#include "bench_util.h"
#include "vc1/vc1filter.h"

namespace {

using namespace zan;
using namespace zan::vc1filter;
using bench::Buffer;

constexpr Zan32s kStep = 128;  // bytes between rows of the 8-bit plane
constexpr Zan32s kQuant = 31;
constexpr std::array<Zan8u, 8> kLine = {100, 100, 100, 100, 98, 80, 80, 98};

// A plane with the pattern across a vertical edge at byte 32 (sample pairs
// for ch = 2) on every row, or across a horizontal edge at row 8 in every
// column; the edge sample is at row 8, byte 32.
struct Plane {
    Buffer buf{kStep * 32};
    Plane(bool vertical, int ch) {
        buf.fill(3);
        for (int y = 0; y < 32; ++y)
            for (int x = 0; x < kStep; ++x) {
                int k = -1;
                if (vertical && x >= 32 - 4 * ch && x < 32 + 4 * ch) k = (x - (32 - 4 * ch)) / ch;
                if (!vertical && y >= 4 && y < 12) k = y - 4;
                if (k >= 0) buf.data()[y * kStep + x] = kLine[static_cast<size_t>(k)];
            }
    }
    Zan8u* edge() { return buf.data() + 8 * kStep + 32; }
};

// 16-bit sources of 16 x 16 samples in 0..255 and an 8-bit destination.
struct SmoothInputs {
    static constexpr Zan32s kSrcStep = 64;  // bytes: 32 samples
    Buffer a{kSrcStep * 20}, b{kSrcStep * 20}, c{kSrcStep * 20}, d{kSrcStep * 20};
    Buffer dst{kStep * 24};
    SmoothInputs() {
        a.fill16(1, 0xFF);
        b.fill16(2, 0xFF);
        c.fill16(3, 0xFF);
        d.fill16(4, 0xFF);
    }
    const Zan16s* s(Buffer& x) { return x.as<Zan16s>(); }
    Zan8u* out() { return dst.data() + 8 * kStep + 32; }
};

template <class Fn, class Call>
void add_export(const std::string& what, Fn make, Call call) {
    bench::add("vc1filter/export/" + what, [=](benchmark::State& s) {
        auto in = make();
        for (auto _ : s) {
            auto* p = &in;
            benchmark::DoNotOptimize(p);
            ZanStatus st = call(*p);
            benchmark::DoNotOptimize(st);
            benchmark::ClobberMemory();
        }
    });
}

}  // namespace

ZAN_BENCH_FAMILY(vc1filter) {
    const Kernels& ku = u8::vc1filter::kernels;
    const Kernels& kn = n8::vc1filter::kernels;
    bench::add_pairs<DeblockFn>("vc1filter", ku.deblock, kn.deblock,
                                [](benchmark::State& s, const KernelPair<DeblockFn>& e, DeblockFn f) {
                                    Plane pl((e.param & kVertical) != 0, (e.param & kTwoChannels) ? 2 : 1);
                                    for (auto _ : s) {
                                        Zan8u* p = pl.edge();
                                        benchmark::DoNotOptimize(p);
                                        f(p, kStep, kQuant, 0);
                                        benchmark::ClobberMemory();
                                    }
                                });
    bench::add_pairs<SmoothFn>("vc1filter", ku.smooth, kn.smooth,
                               [](benchmark::State& s, const KernelPair<SmoothFn>&, SmoothFn f) {
                                   SmoothInputs in;
                                   for (auto _ : s) {
                                       SmoothInputs* p = &in;
                                       benchmark::DoNotOptimize(p);
                                       f(p->s(p->a), SmoothInputs::kSrcStep, p->s(p->b), SmoothInputs::kSrcStep,
                                         p->out(), kStep, 0);
                                       benchmark::ClobberMemory();
                                   }
                               });
    bench::add_pairs<Smooth2Fn>("vc1filter", ku.smooth2, kn.smooth2,
                                [](benchmark::State& s, const KernelPair<Smooth2Fn>&, Smooth2Fn f) {
                                    SmoothInputs in;
                                    constexpr Zan32s st = SmoothInputs::kSrcStep;
                                    for (auto _ : s) {
                                        SmoothInputs* p = &in;
                                        benchmark::DoNotOptimize(p);
                                        f(p->s(p->a), st, p->s(p->b), st, p->s(p->c), st, p->s(p->d), st, p->out(),
                                          kStep, 0);
                                        benchmark::ClobberMemory();
                                    }
                                });

    auto ver = [] { return Plane(true, 1); };
    auto hor = [] { return Plane(false, 1); };
    auto ver2 = [] { return Plane(true, 2); };
    auto hor2 = [] { return Plane(false, 2); };
    add_export("zaniFilterDeblockingLuma_VerEdge_VC1_8u_C1IR", ver, [](Plane& p) {
        return zaniFilterDeblockingLuma_VerEdge_VC1_8u_C1IR(p.edge(), kQuant, kStep, 0);
    });
    add_export("zaniFilterDeblockingLuma_HorEdge_VC1_8u_C1IR", hor, [](Plane& p) {
        return zaniFilterDeblockingLuma_HorEdge_VC1_8u_C1IR(p.edge(), kQuant, kStep, 0);
    });
    add_export("zaniFilterDeblockingChroma_VerEdge_VC1_8u_C2IR", ver2, [](Plane& p) {
        return zaniFilterDeblockingChroma_VerEdge_VC1_8u_C2IR(p.edge(), kQuant, kStep, 0, 0);
    });
    add_export("zaniFilterDeblockingChroma_HorEdge_VC1_8u_C2IR", hor2, [](Plane& p) {
        return zaniFilterDeblockingChroma_HorEdge_VC1_8u_C2IR(p.edge(), kQuant, kStep, 0, 0);
    });
    // One macroblock's vertical edges: luma at columns 0 and 8 (16 rows
    // each) and the interleaved chroma edge; the same for horizontal edges.
    struct Mb {
        Plane luma, chroma;
    };
    add_export("mb_ver_luma2_chroma_nv12", [] { return Mb{Plane(true, 1), Plane(true, 2)}; }, [](Mb& m) {
        ZanStatus st = zaniFilterDeblockingLuma_VerEdge_VC1_8u_C1IR(m.luma.edge(), kQuant, kStep, 0);
        st |= zaniFilterDeblockingLuma_VerEdge_VC1_8u_C1IR(m.luma.edge() + 8, kQuant, kStep, 0);
        return st | zaniFilterDeblockingChroma_VerEdge_VC1_8u_C2IR(m.chroma.edge(), kQuant, kStep, 0, 0);
    });
    add_export("mb_hor_luma2_chroma_nv12", [] { return Mb{Plane(false, 1), Plane(false, 2)}; }, [](Mb& m) {
        ZanStatus st = zaniFilterDeblockingLuma_HorEdge_VC1_8u_C1IR(m.luma.edge(), kQuant, kStep, 0);
        st |= zaniFilterDeblockingLuma_HorEdge_VC1_8u_C1IR(m.luma.edge() + 8 * kStep, kQuant, kStep, 0);
        return st | zaniFilterDeblockingChroma_HorEdge_VC1_8u_C2IR(m.chroma.edge(), kQuant, kStep, 0, 0);
    });
    constexpr Zan32s st = SmoothInputs::kSrcStep;
    auto sm = [] { return SmoothInputs(); };
    add_export("zaniSmoothingLuma_HorEdge_VC1_16s8u_C1R", sm, [](SmoothInputs& in) {
        return zaniSmoothingLuma_HorEdge_VC1_16s8u_C1R(in.s(in.a), st, in.s(in.b), st, in.out(), kStep, 15);
    });
    add_export("zaniSmoothingLuma_VerEdge_VC1_16s8u_C1R", sm, [](SmoothInputs& in) {
        return zaniSmoothingLuma_VerEdge_VC1_16s8u_C1R(in.s(in.a), st, in.s(in.b), st, in.out(), kStep, 0, 15);
    });
    add_export("zaniSmoothingLuma_VerEdge_VC1_16s8u_C1R:field3", sm, [](SmoothInputs& in) {
        return zaniSmoothingLuma_VerEdge_VC1_16s8u_C1R(in.s(in.a), st, in.s(in.b), st, in.out(), kStep, 3, 15);
    });
    add_export("zaniSmoothingChroma_HorEdge_VC1_16s8u_P2C2R", sm, [](SmoothInputs& in) {
        return zaniSmoothingChroma_HorEdge_VC1_16s8u_P2C2R(in.s(in.a), st, in.s(in.b), st, in.s(in.c), st, in.s(in.d),
                                                           st, in.out(), kStep);
    });
    add_export("zaniSmoothingChroma_VerEdge_VC1_16s8u_P2C2R", sm, [](SmoothInputs& in) {
        return zaniSmoothingChroma_VerEdge_VC1_16s8u_P2C2R(in.s(in.a), st, in.s(in.b), st, in.s(in.c), st, in.s(in.d),
                                                           st, in.out(), kStep);
    });
}
