// AVS block decoding and reconstruction: every inverse-transform catalogue
// entry (rule, u8 kernel, n8 kernel) on one 8x8 block, and the exported
// decoders and macroblock reconstruction.
//
// Inputs live in a few kilobytes reused on every iteration (L1-resident).
// The prediction is re-read and overwritten in place on every call, which
// is what a decoder does.  The decode benchmark reads a stream of 64 coded
// blocks of mixed density, written once at start-up with short codes.
#include <cstdint>
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

void add_exports() {
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
    add_exports();
}
