// CABAC encoder: the u8 and n8 bodies and the export of the bin coder (1000
// random context-coded bins per iteration), the bypass coder (1000 bins) and
// the residual block coder (a typical 4x4 block of 7 nonzero levels).  The
// record is initialised again outside the timing when its buffer fills.
#include <random>
#include <vector>

#include "bench_util.h"
#include "frame/bodies.h"

namespace {

using namespace zan;

constexpr Zan32u kBufSize = 1 << 20;

struct Coder {
    std::vector<Zan8u> mem = std::vector<Zan8u>(kBufSize + 64);
    Zan8u* base = mem.data() + 16 + (16 - reinterpret_cast<uintptr_t>(mem.data()) % 16) % 16;
    ZanCABACState st{};
    void reset() { zaniCABACInit_H264(&st, base, 0, kBufSize, 28, 0); }
    bool nearly_full() const { return reinterpret_cast<const Zan8u*>(st.pStreamWord) - base > kBufSize - 4096; }
};

using BinFn = decltype(&::zaniCABACEncodeBin_H264);
using BypassFn = decltype(&::zaniCABACEncodeBinBypass_H264);
using BlockFn = decltype(&::zaniCABACEncodeResidualBlock_H264_16s);

void time_bins(benchmark::State& s, BinFn fn) {
    Coder c;
    c.reset();
    std::mt19937 rng(1);
    std::vector<Zan32u> ctx(1000), bin(1000);
    for (int i = 0; i < 1000; ++i) {
        ctx[size_t(i)] = 105 + rng() % 120;
        bin[size_t(i)] = rng() % 4 == 0;
    }
    for (auto _ : s) {
        for (int i = 0; i < 1000; ++i) fn(ctx[size_t(i)], bin[size_t(i)], &c.st);
        if (c.nearly_full()) c.reset();
    }
    s.SetItemsProcessed(s.iterations() * 1000);
}

void time_bypass(benchmark::State& s, BypassFn fn) {
    Coder c;
    c.reset();
    std::mt19937 rng(2);
    std::vector<Zan32u> bin(1000);
    for (auto& b : bin) b = rng() & 1;
    for (auto _ : s) {
        for (int i = 0; i < 1000; ++i) fn(bin[size_t(i)], &c.st);
        if (c.nearly_full()) c.reset();
    }
    s.SetItemsProcessed(s.iterations() * 1000);
}

void time_block(benchmark::State& s, BlockFn fn) {
    Coder c;
    c.reset();
    const Zan16s coeffs[16] = {9, -3, 2, 1, 0, -1, 1, 0, 0, 1, 0, 0, 0, 0, 0, 0};
    for (auto _ : s) {
        fn(coeffs, 9, 2, 0, 1, &c.st);
        if (c.nearly_full()) c.reset();
    }
}

}  // namespace

ZAN_BENCH_FAMILY(cabac) {
    bench::add("cabac/EncodeBin_x1000/u8", [](benchmark::State& s) { time_bins(s, &u8::zaniCABACEncodeBin_H264); });
    bench::add("cabac/EncodeBin_x1000/n8", [](benchmark::State& s) { time_bins(s, &n8::zaniCABACEncodeBin_H264); });
    bench::add("cabac/export/EncodeBin_x1000", [](benchmark::State& s) { time_bins(s, &::zaniCABACEncodeBin_H264); });
    bench::add("cabac/EncodeBinBypass_x1000/u8",
               [](benchmark::State& s) { time_bypass(s, &u8::zaniCABACEncodeBinBypass_H264); });
    bench::add("cabac/EncodeBinBypass_x1000/n8",
               [](benchmark::State& s) { time_bypass(s, &n8::zaniCABACEncodeBinBypass_H264); });
    bench::add("cabac/export/EncodeBinBypass_x1000",
               [](benchmark::State& s) { time_bypass(s, &::zaniCABACEncodeBinBypass_H264); });
    bench::add("cabac/EncodeResidualBlock_16s:4x4/u8",
               [](benchmark::State& s) { time_block(s, &u8::zaniCABACEncodeResidualBlock_H264_16s); });
    bench::add("cabac/EncodeResidualBlock_16s:4x4/n8",
               [](benchmark::State& s) { time_block(s, &n8::zaniCABACEncodeResidualBlock_H264_16s); });
    bench::add("cabac/export/EncodeResidualBlock_16s:4x4",
               [](benchmark::State& s) { time_block(s, &::zaniCABACEncodeResidualBlock_H264_16s); });
}
