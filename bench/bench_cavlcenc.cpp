// CAVLC syntax elements: every catalogue entry (rule, u8 kernel, n8 kernel)
// on typical blocks (6 coefficients; half of the 8 or all 4 positions for
// chroma DC) and dense blocks (every position nonzero), and the exported
// functions.
#include <array>
#include <cstdint>

#include "bench_util.h"
#include "h264/cavlcenc.h"

namespace {

using namespace zan;
using namespace zan::cavlcenc;

constexpr Zan32s kZigzag4x4[16] = {0, 1, 4, 8, 5, 2, 3, 6, 9, 12, 13, 10, 7, 11, 14, 15};

// kSets raster 4x4 blocks per kind, visited in turn so that the branch
// predictor cannot learn one block.  Typical: 6 coefficients among the first
// 10 scan positions, small levels with +-1 at the high end; dense: no zeros.
constexpr int kSets = 64;

std::uint64_t mix(std::uint64_t& s) {
    std::uint64_t z = (s += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
}

template <class T, int N>
struct Blocks {
    std::array<std::array<T, 16>, kSets> typical{}, dense{};
    Blocks() {
        std::uint64_t s = 7;
        const T small[8] = {1, -1, 1, -1, 2, -2, 3, -5};
        for (auto& b : typical) {
            int placed = 0;
            while (placed < (N == 16 ? 6 : N / 2)) {
                const int i = static_cast<int>(mix(s) % (N == 16 ? 10 : N));
                T& v = b[static_cast<size_t>(N == 16 ? kZigzag4x4[i] : i)];
                if (v != 0) continue;
                v = small[mix(s) % 8];
                ++placed;
            }
        }
        for (auto& b : dense)
            for (int i = 0; i < N; ++i) {
                const T v = static_cast<T>(static_cast<int>(mix(s) % 41) - 20);
                b[static_cast<size_t>(i)] = v == 0 ? T{1} : v;
            }
    }
    const T* pick(bool isDense, int k) const { return (isDense ? dense : typical)[static_cast<size_t>(k)].data(); }
};

template <class T>
struct Outs {
    Zan8u t1, signs, n, zeros;
    std::array<T, 16> levels;
    std::array<Zan8u, 16> runs;
};

template <class T, class Fn>
void time_block(benchmark::State& s, Fn fn, bool dense) {
    static const Blocks<T, 16> blocks;
    const Zan32s* scan = kZigzag4x4;
    Outs<T> o;
    int k = 0;
    for (auto _ : s) {
        const T* src = blocks.pick(dense, k);
        k = (k + 1) & (kSets - 1);
        benchmark::DoNotOptimize(src);
        benchmark::DoNotOptimize(scan);
        fn(src, 0, scan, 15, &o.t1, &o.signs, &o.n, &o.zeros, o.levels.data(), o.runs.data());
        benchmark::ClobberMemory();
    }
}

template <class T, class Fn>
void time_dc(benchmark::State& s, Fn fn, bool dense) {
    static const Blocks<T, 8> blocks;  // the 2x2 forms read the first 4 of each
    Outs<T> o;
    int k = 0;
    for (auto _ : s) {
        const T* src = blocks.pick(dense, k);
        k = (k + 1) & (kSets - 1);
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
