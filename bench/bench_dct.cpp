// DCT family and scans: every catalogue entry (rule, u8 kernel, n8 kernel)
// and the transposed inverse through its export.
//
// The transposed inverse is timed on each path of its count shortcut:
// <entry>_full (count 64), <entry>_4x4 (count 5) and <entry>_dc (count 0).
// Coefficient blocks are forward transforms of random residuals in -64..63
// (what a decoder meets), 16-byte aligned; outputs go to a 16-byte aligned
// block with a row step of 32 bytes.  Scans take a block with 12 non-zero
// coefficients (the sparse path) and a dense one.
#include <cmath>
#include <string>

#include "bench_util.h"
#include "blocks/dct.h"

namespace {

using namespace zan;
using namespace zan::dct;
using bench::Buffer;

constexpr Zan32s kStep = 32;

// A realistic coefficient block: the forward transform of a random residual.
void residual_coeffs(Zan16s* c, unsigned seed) {
    double f[64];
    unsigned s = seed * 2654435761u + 1;
    for (double& x : f) {
        s = s * 1103515245u + 12345u;
        x = static_cast<double>((s >> 16) % 128) - 64;
    }
    for (int v = 0; v < 8; ++v)
        for (int u = 0; u < 8; ++u) {
            double sum = 0;
            for (int y = 0; y < 8; ++y)
                for (int x = 0; x < 8; ++x)
                    sum += f[8 * y + x] * std::cos((2 * x + 1) * u * M_PI / 16) * std::cos((2 * y + 1) * v * M_PI / 16);
            sum *= (u ? 1 : 1 / std::sqrt(2.0)) * (v ? 1 : 1 / std::sqrt(2.0)) / 4;
            c[8 * v + u] = static_cast<Zan16s>(std::lround(sum));
        }
}

struct Inputs {
    Buffer coef{4 * 128};
    Buffer out{8 * kStep + 64};
    Buffer px{8 * kStep};
    Inputs() {
        residual_coeffs(coef.as<Zan16s>(), 1);
        residual_coeffs(coef.as<Zan16s>(128), 2);
        px.fill(3);
    }
    Zan16s* u() { return coef.as<Zan16s>(); }
    Zan16s* v() { return coef.as<Zan16s>(128); }
    Zan16s* scratch() { return coef.as<Zan16s>(256); }
};

template <class... T>
inline void escape(T*... p) {
    (benchmark::DoNotOptimize(p), ...);
}

// Registers rule/u8/n8 of the matching entries of both paths under one suffix.
template <class Fn, class Time>
void add_both(KernelList<Fn> u8list, KernelList<Fn> n8list, const std::string& suffix, Time time) {
    for (size_t i = 0; i < u8list.size(); ++i) {
        const KernelPair<Fn> a = u8list[i], b = n8list[i];
        const std::string name = std::string("dct/") + a.name + suffix;
        bench::add(name + "/rule", [=](benchmark::State& s) { time(s, a.rule); });
        bench::add(name + "/u8", [=](benchmark::State& s) { time(s, a.simd); });
        bench::add(name + "/n8", [=](benchmark::State& s) { time(s, b.simd); });
    }
}

}  // namespace

ZAN_BENCH_FAMILY(dct) {
    const auto& tu = u8::dct::transform_kernels;
    const auto& tn = n8::dct::transform_kernels;
    const std::pair<const char*, Zan32s> counts[] = {{"_full", 64}, {"_4x4", 5}, {"_dc", 0}};
    for (const auto& [suffix, count] : counts) {
        const Zan32s n = count;
        add_both<Inv16Fn>(tu.inv16, tn.inv16, suffix, [n](benchmark::State& s, Inv16Fn fn) {
            Inputs in;
            Zan16s *src = in.u(), *dst = in.out.as<Zan16s>();
            for (auto _ : s) {
                escape(src, dst);
                fn(src, dst, kStep, n);
                benchmark::ClobberMemory();
            }
        });
        add_both<Inv8Fn>(tu.inv8, tn.inv8, suffix, [n](benchmark::State& s, Inv8Fn fn) {
            Inputs in;
            Zan16s* src = in.u();
            Zan8u* dst = in.out.data();
            for (auto _ : s) {
                escape(src, dst);
                fn(src, dst, kStep, n);
                benchmark::ClobberMemory();
            }
        });
    }
    add_both<InvPair8Fn>(tu.pair8, tn.pair8, "_full", [](benchmark::State& s, InvPair8Fn fn) {
        Inputs in;
        Zan16s *u = in.u(), *v = in.v();
        Zan8u* dst = in.out.data();
        for (auto _ : s) {
            escape(u, v, dst);
            fn(u, v, dst, kStep, 64, 64);
            benchmark::ClobberMemory();
        }
    });
    add_both<InvPair16Fn>(tu.pair16, tn.pair16, "_full", [](benchmark::State& s, InvPair16Fn fn) {
        Inputs in;
        Zan16s *u = in.u(), *v = in.v(), *dst = in.out.as<Zan16s>();
        for (auto _ : s) {
            escape(u, v, dst);
            fn(u, v, dst, kStep, 64, 64);
            benchmark::ClobberMemory();
        }
    });
    add_both<InvOrSetFn>(tu.invOrSet, tn.invOrSet, "", [](benchmark::State& s, InvOrSetFn fn) {
        Inputs in;
        Zan16s *u = in.u(), *v = in.v();
        Zan8u* dst = in.out.data();
        for (auto _ : s) {
            escape(u, v, dst);
            fn(u, v, dst, kStep, 0);
            benchmark::ClobberMemory();
        }
    });
    add_both<PlainInvFn>(tu.plainInv, tn.plainInv, "", [](benchmark::State& s, PlainInvFn fn) {
        Inputs in;
        Zan16s* src = in.u();
        Zan8u* dst = in.out.data();
        for (auto _ : s) {
            escape(src, dst);
            fn(src, dst, kStep);
            benchmark::ClobberMemory();
        }
    });
    add_both<PlainFwdFn>(tu.plainFwd, tn.plainFwd, "", [](benchmark::State& s, PlainFwdFn fn) {
        Inputs in;
        Zan8u* src = in.px.data();
        Zan16s* dst = in.scratch();
        for (auto _ : s) {
            escape(src, dst);
            fn(src, kStep, dst);
            benchmark::ClobberMemory();
        }
    });
    add_both<FwdPairFn>(tu.fwdPair, tn.fwdPair, "", [](benchmark::State& s, FwdPairFn fn) {
        Inputs in;
        Zan8u* src = in.px.data();
        Zan16s *u = in.scratch(), *v = in.scratch() + 64;
        for (auto _ : s) {
            escape(src, u, v);
            fn(src, kStep, u, v);
            benchmark::ClobberMemory();
        }
    });
    const KernelList<InPlaceFn> dvu[3] = {u8::dct::dv_kernels.fwd, u8::dct::dv_kernels.inv, u8::dct::dv_kernels.inv4x4};
    const KernelList<InPlaceFn> dvn[3] = {n8::dct::dv_kernels.fwd, n8::dct::dv_kernels.inv, n8::dct::dv_kernels.inv4x4};
    for (int k = 0; k < 3; ++k)
        add_both<InPlaceFn>(dvu[k], dvn[k], "", [](benchmark::State& s, InPlaceFn fn) {
            Inputs in;
            Zan16s* p = in.scratch();
            for (auto _ : s) {
                // The same block each time: copy it in (a few ns, counted).
                std::memcpy(p, in.u(), 128);
                escape(p);
                fn(p);
                benchmark::ClobberMemory();
            }
        });
    const std::pair<const char*, Zan32s> scanCounts[] = {{"_sparse", 12}, {"_dense", 64}};
    for (const auto& [suffix, count] : scanCounts) {
        const Zan32s n = count;
        add_both<ScanFwdFn>(u8::dct::scan_kernels.fwd, n8::dct::scan_kernels.fwd, suffix,
                            [n](benchmark::State& s, ScanFwdFn fn) {
                                Inputs in;
                                Zan16s *src = in.u(), *dst = in.scratch();
                                if (n < 20)
                                    for (int i = 0; i < 64; ++i) src[i] = static_cast<Zan16s>(i % 5 == 0 && i < 60 ? i + 1 : 0);
                                for (auto _ : s) {
                                    escape(src, dst);
                                    fn(src, dst, n, 0);
                                    benchmark::ClobberMemory();
                                }
                            });
        add_both<ScanInvFn>(u8::dct::scan_kernels.inv, n8::dct::scan_kernels.inv, suffix,
                            [n](benchmark::State& s, ScanInvFn fn) {
                                Inputs in;
                                Zan16s *src = in.u(), *dst = in.scratch();
                                for (auto _ : s) {
                                    escape(src, dst);
                                    fn(src, dst, n < 20 ? 12 : 63, 1);
                                    benchmark::ClobberMemory();
                                }
                            });
    }
    // Through the export (the path chosen at load).
    bench::add("dct/export/zaniDCT8x8Inv_AANTransposed_16s8u_C1R", [](benchmark::State& s) {
        Inputs in;
        Zan16s* src = in.u();
        Zan8u* dst = in.out.data();
        for (auto _ : s) {
            escape(src, dst);
            benchmark::DoNotOptimize(zaniDCT8x8Inv_AANTransposed_16s8u_C1R(src, dst, kStep, 64));
            benchmark::ClobberMemory();
        }
    });
    bench::add("dct/export/zaniScanInv_16s_C1", [](benchmark::State& s) {
        Inputs in;
        Zan16s *src = in.u(), *dst = in.scratch();
        for (auto _ : s) {
            escape(src, dst);
            benchmark::DoNotOptimize(zaniScanInv_16s_C1(src, dst, 63, 0));
            benchmark::ClobberMemory();
        }
    });
}
