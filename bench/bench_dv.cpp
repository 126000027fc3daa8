// DV: every catalogue entry (rule, u8 kernel, n8 kernel) of dequantisation
// and output conversion, the segment decoders per form on a segment of
// random codes with overflowing blocks, and the reduced output forms.
// Inputs are small and reused, so they stay in the L1 cache.
#include <random>
#include <string>

#include "bench_util.h"
#include "dv/dvdecode.h"
#include "dv/dvoutput.h"

namespace {

using namespace zan;
using bench::Buffer;

template <class... T>
inline void escape(T*... p) {
    (benchmark::DoNotOptimize(p), ...);
}

void time_dequant(benchmark::State& s, const KernelPair<dvdecode::DequantFn>&, dvdecode::DequantFn fn) {
    Buffer blk(128), a(128), b(128);
    blk.fill(1);
    a.fill(2);
    b.fill(3);
    for (auto _ : s) {
        fn(blk.as<Zan16s>(), a.as<Zan16s>(), b.as<Zan16s>(), 5);
        escape(blk.data());
    }
}

void time_mb(benchmark::State& s, const KernelPair<dvoutput::MbFn>& e, dvoutput::MbFn fn) {
    Buffer src(128 * 6), dst(64 * 16);
    src.fill16(4, 0x1FF);
    for (auto _ : s) {
        fn(src.as<Zan16s>(), dst.data(), 64);
        escape(dst.data());
    }
    (void)e;
}

// A segment of random codes: blocks start and stop mid-code, so some
// overflow into others.
std::vector<Zan8u> random_segment() {
    std::mt19937 rng(5);
    std::string bits;
    while (bits.size() < 3200) {
        const unsigned r = rng() % 8;
        if (r < 4) bits += "00" + std::to_string(rng() % 2);
        else if (r < 6) bits += "010" + std::to_string(rng() % 2);
        else if (r < 7) bits += "0110";
        else bits += "1000" + std::to_string(rng() % 2);
    }
    std::vector<Zan8u> seg(400);
    for (size_t i = 0; i < 400; ++i) seg[i] = Zan8u(std::stoi(bits.substr(8 * i, 8), nullptr, 2));
    return seg;
}

using SegFn = ZanStatus (*)(const Zan8u*, const Zan32u*, const Zan32u*, Zan16s*, Zan32u*);

void add_segment(const char* name, SegFn fn, int blocks) {
    bench::add(std::string("dvdecode/") + name, [=](benchmark::State& s) {
        const std::vector<Zan8u> seg = random_segment();
        Buffer coef(128 * 40), param(4 * 40);
        for (auto _ : s) {
            std::memset(coef.data(), 0, size_t(128 * blocks));
            fn(seg.data(), nullptr, nullptr, coef.as<Zan16s>(), param.as<Zan32u>());
            escape(coef.data(), param.data());
        }
    });
}

using Mb5Fn = ZanStatus (*)(const Zan16s* const*, Zan8u* const*, Zan32s);

void add_5mb(const char* name, Mb5Fn fn) {
    bench::add(std::string("dvoutput/") + name, [=](benchmark::State& s) {
        Buffer src(128 * 6 * 5), dst(64 * 16 * 5);
        src.fill16(6, 0x1FF);
        const Zan16s* in[5];
        Zan8u* out[5];
        for (int i = 0; i < 5; ++i) in[i] = src.as<Zan16s>(size_t(768 * i)), out[i] = dst.data() + 64 * 16 * i;
        for (auto _ : s) {
            fn(in, out, 64);
            escape(dst.data());
        }
    });
}

}  // namespace

ZAN_BENCH_FAMILY(dv) {
    bench::add_pairs<dvdecode::DequantFn>("dvdecode", u8::dvdecode::kernels.dequant, n8::dvdecode::kernels.dequant,
                                          time_dequant);
    bench::add_pairs<dvoutput::MbFn>("dvoutput", u8::dvoutput::kernels.mb, n8::dvoutput::kernels.mb, time_mb);
    add_segment("segment_dv_3pass", zaniHuffmanDecodeSegment_DV_8u16s, 30);
    add_segment("segment_dv_1pass", zaniHuffmanDecodeSegmentOnePass_DV_8u16s, 30);
    add_segment("segment_dv100_3pass", zaniHuffmanDecodeSegment_DV100_8u16s, 40);
    add_5mb("411_5mb_export", zaniYCrCb411ToYCbCr422_5MBDV_16s8u_P3C2R);
    add_5mb("411_zoomout2_5mb_export", zaniYCrCb411ToYCbCr422_ZoomOut2_5MBDV_16s8u_P3C2R);
    add_5mb("420_zoomout2_5mb_export", zaniYCrCb420ToYCbCr422_ZoomOut2_5MBDV_16s8u_P3C2R);
    add_5mb("422_zoomout2_5mb_export", zaniYCrCb422ToYCbCr422_ZoomOut2_5MBDV_16s8u_P3C2R);
}
