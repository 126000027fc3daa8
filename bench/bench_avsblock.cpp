// AVS block decoding and reconstruction: every inverse-transform catalogue
// entry (rule, u8 kernel, n8 kernel) on one 8x8 block, and the exported
// decoders and macroblock reconstruction.  The encoder side: every forward
// transform and quantiser entry on one block, the exported transform and
// quantisation, and the two mode-decision passes on one macroblock.
//
// Inputs live in a few kilobytes reused on every iteration (L1-resident).
// The prediction is re-read and overwritten in place on every call, which
// is what a decoder does.  The decode benchmark reads a stream of 64 coded
// blocks of mixed density, written once at start-up with short codes.
#include <cstdint>
#include <cstring>
#include <vector>

#include "avs/avsblock.h"
#include "bench_util.h"

namespace {

using namespace zan;
using namespace zan::avsblock;
using bench::Buffer;

constexpr Zan32s kStep = 32;

template <class... T>
inline void escape(T*... p) {
    (benchmark::DoNotOptimize(p), ...);
}

void time_inv(benchmark::State& s, const KernelPair<InvAddFn>& e, InvAddFn fn) {
    Buffer coeffs(128), pic(kStep * 8 + 64);
    pic.fill(3);
    Zan16s* c = coeffs.as<Zan16s>();
    for (int i = 0; i < 64; ++i) c[i] = static_cast<Zan16s>((e.param == 2 && ((i & 7) > 3 || i > 31)) ? 0 : (i * 37) % 61 - 30);
    Zan8u* d = pic.data();
    for (auto _ : s) {
        escape(c, d);
        fn(c, d, kStep, 42495, 11);
        benchmark::ClobberMemory();
    }
}

// A stream of intra luma blocks: each block a few (0, +-1) pairs coded as
// "100"/"101" (order 2, code 0 or 1 of the first table) and the end of
// block of the table reached, written with a plain bit packer.
std::vector<Zan32u> intra_stream(int blocks) {
    std::vector<Zan32u> w(1, 0);
    int bits = 0;
    auto put = [&](Zan32u v, int n) {
        for (int i = n - 1; i >= 0; --i) {
            if (bits == 32) {
                w.push_back(0);
                bits = 0;
            }
            if ((v >> i) & 1) w.back() |= 1u << (31 - bits);
            ++bits;
        }
    };
    for (int b = 0; b < blocks; ++b) {
        // (0, 1) in VLC0_Intra is code 0: "100"; then VLC1_Intra: (0, 1) is
        // code 0 again, end of block code 8: "01100".
        const int n = 1 + b % 12;
        for (int k = 0; k < n; ++k) put(4 + (k & 1), 3);
        put(12, 5);
    }
    w.push_back(0);
    w.push_back(0);
    return w;
}

// A residual of a textured block (values within -60..60).
void residual(Zan16s* x) {
    for (int i = 0; i < 64; ++i) x[i] = static_cast<Zan16s>((i * 37) % 121 - 60);
}

void time_fwd(benchmark::State& s, const KernelPair<FwdFn>&, FwdFn fn) {
    alignas(16) Zan16s x[64], out[64];
    residual(x);
    for (auto _ : s) {
        escape(x, out);
        fn(x, out);
        benchmark::ClobberMemory();
    }
}

// The quantiser works in place: each iteration restores the transformed
// block first (a 128-byte copy, part of the time).
void time_quant(benchmark::State& s, const KernelPair<QuantFn>&, QuantFn fn) {
    alignas(16) Zan16s x[64], f[64], work[64];
    residual(x);
    u8::avsblock::fwd_kernels.fwd[0].rule(x, f);
    for (auto _ : s) {
        std::memcpy(work, f, sizeof f);
        escape(work);
        benchmark::DoNotOptimize(fn(work, 24));
        benchmark::ClobberMemory();
    }
}

// A 48x48 picture with a textured 16x16 source; the macroblock at (16, 16)
// has all its neighbours.
struct MbScene {
    alignas(16) Zan8u pic[48 * 48];
    alignas(16) Zan8u src[16 * 16];
    MbScene() {
        for (int i = 0; i < 48 * 48; ++i) pic[i] = static_cast<Zan8u>(90 + (i % 48) + (i / 48) / 2);
        for (int i = 0; i < 256; ++i) src[i] = static_cast<Zan8u>(100 + (i % 16) * 3 + ((i * 29) % 23));
    }
};

void add_exports() {
    bench::add("avsblock/export/TransformQuant8x8Fwd", [](benchmark::State& s) {
        alignas(16) Zan16s x[64], out[64];
        residual(x);
        Zan32s num = 0;
        for (auto _ : s) {
            escape(x, out, &num);
            zaniTransformQuant8x8Fwd_AVS_16s_C1(x, out, &num, 24, 1);
            benchmark::ClobberMemory();
        }
    });
    bench::add("avsblock/export/DisassembleLumaIntra_QP24", [](benchmark::State& s) {
        MbScene sc;
        alignas(16) Zan16s coeffs[256];
        Zan32s modes[4];
        Zan32u cbp;
        for (auto _ : s) {
            Zan16s* cur = coeffs;
            escape(sc.pic, sc.src, cur);
            zaniDisassembleLumaIntra_AVS_16s8u_C1R(sc.src, 16, sc.pic + 16 * 48 + 16, 48, &cur, modes, &cbp, 24, 0);
            benchmark::ClobberMemory();
        }
    });
    bench::add("avsblock/export/DisassembleChroma420Intra_QP24", [](benchmark::State& s) {
        MbScene u, v;
        alignas(16) Zan16s coeffs[128];
        Zan32s mode;
        Zan32u cbp;
        const Zan8u* srcs[2] = {u.src, v.src};
        Zan8u* dsts[2] = {u.pic + 16 * 48 + 16, v.pic + 16 * 48 + 16};
        for (auto _ : s) {
            Zan16s* cur = coeffs;
            escape(u.pic, v.pic, cur);
            zaniDisassembleChroma420Intra_AVS_16s8u_C1R(srcs, 16, dsts, 48, &cur, &mode, &cbp, 24, 0);
            benchmark::ClobberMemory();
        }
    });
    bench::add("avsblock/export/DecodeLumaBlockIntra_64blocks", [](benchmark::State& s) {
        const std::vector<Zan32u> stream = intra_stream(64);
        Zan16s out[64];
        Zan32s num;
        for (auto _ : s) {
            Zan32u* p = const_cast<Zan32u*>(stream.data());
            Zan32s off = 31;
            for (int b = 0; b < 64; ++b) zaniDecodeLumaBlockIntra_AVS_1u16s(&p, &off, &num, out, 0);
            escape(out, &num);
            benchmark::ClobberMemory();
        }
    });
    bench::add("avsblock/export/ReconstructLumaInter_4blocks", [](benchmark::State& s) {
        Buffer coeffs(4 * 128), pic(kStep * 16 + 64);
        pic.fill(5);
        Zan16s* c = coeffs.as<Zan16s>();
        for (int i = 0; i < 256; ++i) c[i] = static_cast<Zan16s>((i * 29) % 41 - 20);
        const Zan32s num[4] = {0, 5, 1, 64};
        for (auto _ : s) {
            Zan16s* cur = c;
            escape(cur, pic.data());
            zaniReconstructLumaInter_AVS_16s8u_C1R(&cur, pic.data(), kStep, num, 15, 30);
            benchmark::ClobberMemory();
        }
    });
    bench::add("avsblock/export/ReconstructLumaIntra_DC_4blocks", [](benchmark::State& s) {
        Buffer coeffs(4 * 128), pic(kStep * 20 + 64);
        pic.fill(6);
        Zan16s* c = coeffs.as<Zan16s>();
        for (int i = 0; i < 256; ++i) c[i] = static_cast<Zan16s>((i * 29) % 41 - 20);
        const Zan32s num[4] = {0, 5, 1, 64}, modes[4] = {2, 4, 3, 0};
        Zan8u* mb = pic.data() + 2 * kStep + 16;
        for (auto _ : s) {
            Zan16s* cur = c;
            escape(cur, mb);
            zaniReconstructLumaIntra_AVS_16s8u_C1R(&cur, mb, kStep, modes, num, 15, 30, 0);
            benchmark::ClobberMemory();
        }
    });
}

}  // namespace

ZAN_BENCH_FAMILY(avsblock) {
    bench::add_pairs<InvAddFn>("avsblock", u8::avsblock::kernels.invAdd, n8::avsblock::kernels.invAdd, time_inv);
    bench::add_pairs<FwdFn>("avsblock", u8::avsblock::fwd_kernels.fwd, n8::avsblock::fwd_kernels.fwd, time_fwd);
    bench::add_pairs<QuantFn>("avsblock", u8::avsblock::fwd_kernels.quant, n8::avsblock::fwd_kernels.quant,
                              time_quant);
    add_exports();
}
