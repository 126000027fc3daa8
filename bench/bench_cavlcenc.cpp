// CAVLC syntax elements: every catalogue entry (rule, u8 kernel, n8 kernel)
// on a typical block (about 6 coefficients, 2 trailing ones) and a dense
// block (every position nonzero), and the exported functions.
#include <array>

#include "bench_util.h"
#include "h264/cavlcenc.h"

namespace {

using namespace zan;
using namespace zan::cavlcenc;

constexpr Zan32s kZigzag4x4[16] = {0, 1, 4, 8, 5, 2, 3, 6, 9, 12, 13, 10, 7, 11, 14, 15};

// Raster 4x4 blocks.  Typical: 6 coefficients over scan 0..9 (7 0 -3 2 0 1
// 0 0 -1 1 ...); dense: no zeros, mixed levels.
template <class T>
struct Blocks {
    std::array<T, 16> typical{}, dense{};
    Blocks() {
        const T scanOrder[16] = {7, 0, -3, 2, 0, 1, 0, 0, -1, 1, 0, 0, 0, 0, 0, 0};
        for (int i = 0; i < 16; ++i) typical[static_cast<size_t>(kZigzag4x4[i])] = scanOrder[i];
        const T d[16] = {21, -9, 4, 5, -3, 2, 2, -1, 3, 1, -2, 1, 1, -1, 1, -1};
        for (int i = 0; i < 16; ++i) dense[static_cast<size_t>(i)] = d[i];
    }
    const T* pick(bool isDense) const { return isDense ? dense.data() : typical.data(); }
};

template <class T>
struct Outs {
    Zan8u t1, signs, n, zeros;
    std::array<T, 16> levels;
    std::array<Zan8u, 16> runs;
};

template <class T, class Fn>
void time_block(benchmark::State& s, Fn fn, bool dense) {
    static const Blocks<T> blocks;
    const T* src = blocks.pick(dense);
    const Zan32s* scan = kZigzag4x4;
    Outs<T> o;
    for (auto _ : s) {
        benchmark::DoNotOptimize(src);
        benchmark::DoNotOptimize(scan);
        fn(src, 0, scan, 15, &o.t1, &o.signs, &o.n, &o.zeros, o.levels.data(), o.runs.data());
        benchmark::ClobberMemory();
    }
}

template <class T, class Fn>
void time_dc(benchmark::State& s, Fn fn, bool dense) {
    // Typical: two coefficients of 8; dense: all eight.
    const T typ[8] = {3, 0, 0, -1, 0, 0, 0, 0};
    const T den[8] = {12, -5, 3, -1, 2, 1, -1, 1};
    const T* src = dense ? den : typ;
    Outs<T> o;
    for (auto _ : s) {
        benchmark::DoNotOptimize(src);
        fn(src, &o.t1, &o.signs, &o.n, &o.zeros, o.levels.data(), o.runs.data());
        benchmark::ClobberMemory();
    }
}

// Registers rule/u8/n8 of every entry of a list twice, typical and dense.
template <class Fn, class Time>
void add_both(KernelList<Fn> u8, KernelList<Fn> n8, Time time) {
    for (const char* kind : {"typical", "dense"}) {
        const bool dense = kind[0] == 'd';
        for (size_t i = 0; i < u8.size(); ++i) {
            const std::string base = std::string("cavlcenc/") + u8[i].name + "_" + kind;
            const Fn rule = u8[i].rule, ku = u8[i].simd, kn = n8[i].simd;
            bench::add(base + "/rule", [=](benchmark::State& s) { time(s, rule, dense); });
            bench::add(base + "/u8", [=](benchmark::State& s) { time(s, ku, dense); });
            bench::add(base + "/n8", [=](benchmark::State& s) { time(s, kn, dense); });
        }
    }
}

}  // namespace

ZAN_BENCH_FAMILY(cavlcenc) {
    const Kernels& ku = u8::cavlcenc::kernels;
    const Kernels& kn = n8::cavlcenc::kernels;
    add_both<Block16Fn>(ku.block16, kn.block16, time_block<Zan16s, Block16Fn>);
    add_both<Block32Fn>(ku.block32, kn.block32, time_block<Zan32s, Block32Fn>);
    add_both<Dc16Fn>(ku.dc16, kn.dc16, time_dc<Zan16s, Dc16Fn>);
    add_both<Dc32Fn>(ku.dc32, kn.dc32, time_dc<Zan32s, Dc32Fn>);
    for (const char* kind : {"typical", "dense"}) {
        const bool dense = kind[0] == 'd';
        const std::string k = kind;
        bench::add("cavlcenc/export/EncodeCoeffsCAVLC_16s_" + k,
                   [=](benchmark::State& s) { time_block<Zan16s>(s, zaniEncodeCoeffsCAVLC_H264_16s, dense); });
        bench::add("cavlcenc/export/EncodeCoeffsCAVLC_32s_" + k,
                   [=](benchmark::State& s) { time_block<Zan32s>(s, zaniEncodeCoeffsCAVLC_H264_32s, dense); });
        bench::add("cavlcenc/export/ChromaDC2x4_16s_" + k, [=](benchmark::State& s) {
            time_dc<Zan16s>(s, zaniEncodeCoeffsCAVLCChromaDC2x4_H264_16s, dense);
        });
    }
}
