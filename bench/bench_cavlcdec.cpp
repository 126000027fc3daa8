// H.264 CAVLC and Exp-Golomb decoding.  Parsing has no vector kernel, so
// there is no catalogue: each timing runs the body of one path directly
// (<family>/<what>/u8 and /n8) and through the export (<family>/export/<what>).
//
// Block timings run over a ring of 64 different blocks, written once by the
// test writer, so that the branch predictor does not learn one block.
//   typical  4x4 blocks of about 6 coefficients, small levels clustered at
//            low frequencies, table classes 0..2
//   dense    16 coefficients with larger levels
//   dc420    4:2:0 chroma DC blocks, half of them single +-1 (fast path)
//   dc422    4:2:2 chroma DC blocks of 1..8 coefficients
//   ue, se   Exp-Golomb values of 1 to 11 bits
#include <random>

#include "../tests/api/cavlc_tables.h"
#include "bench_util.h"
#include "frame/bodies.h"

namespace {

using namespace zan;
using namespace zan::cavlctest;

constexpr int kRing = 64;
const Zan32s kZigzag4x4[17] = {0, 1, 4, 8, 5, 2, 3, 6, 9, 12, 13, 10, 7, 11, 14, 15, 0};

struct Ring {
    Tables t;
    Bits bits;
    std::vector<int> startBit;
    std::vector<Zan32u> sel;
};

Ring& ring(const std::string& kind) {
    static std::map<std::string, Ring*> rings;
    Ring*& r = rings[kind];
    if (r) return *r;
    r = new Ring;
    std::mt19937 rng(7);
    for (int k = 0; k < kRing; ++k) {
        r->startBit.push_back(r->bits.n);
        if (kind == "typical" || kind == "dense") {
            const bool dense = kind == "dense";
            std::vector<int> c(16, 0);
            const int count = dense ? 16 : 4 + static_cast<int>(rng() % 5u);
            for (int i = 0; i < count; ++i) {
                int idx = dense ? i : static_cast<int>(rng() % 10u);
                while (c[static_cast<std::size_t>(idx)]) idx = (idx + 1) % 16;
                int mag = dense ? 1 + static_cast<int>(rng() % 40u) : (rng() % 4 ? 1 : 2 + static_cast<int>(rng() % 4u));
                c[static_cast<std::size_t>(idx)] = rng() % 2 ? mag : -mag;
            }
            const Zan32u s = dense ? 4 + rng() % 4u : rng() % 6u;
            r->sel.push_back(s);
            write_block(r->bits, c, s < 2 ? 0 : s < 4 ? 1 : 2, TzKind::Block4x4);
        } else if (kind == "dc420" || kind == "dc422") {
            const int n = kind == "dc420" ? 4 : 8;
            std::vector<int> c(static_cast<std::size_t>(n), 0);
            const int count = k % 2 && n == 4 ? 1 : 1 + static_cast<int>(rng() % static_cast<unsigned>(n));
            for (int i = 0; i < count; ++i) {
                int idx = static_cast<int>(rng() % static_cast<unsigned>(n));
                while (c[static_cast<std::size_t>(idx)]) idx = (idx + 1) % n;
                const int mag = count == 1 && n == 4 ? 1 : 1 + static_cast<int>(rng() % 6u);
                c[static_cast<std::size_t>(idx)] = rng() % 2 ? mag : -mag;
            }
            r->sel.push_back(0);
            write_block(r->bits, c, n == 4 ? 3 : 4, n == 4 ? TzKind::Dc420 : TzKind::Dc422);
        } else {  // Exp-Golomb codes of values 0..62
            const Zan32u v = rng() % 63u;
            int len = 0;
            while (((v + 1) >> (len + 1)) != 0) ++len;
            r->bits.put(0, len);
            r->bits.put(v + 1, len + 1);
            r->sel.push_back(0);
        }
    }
    r->bits.put(0xFFFFFFFFu, 32);
    return *r;
}

using Coeffs16 = decltype(&::zaniDecodeCAVLCCoeffs_H264_1u16s);
using Coeffs32 = decltype(&::zaniDecodeCAVLCCoeffs_H264_1u32s);
using Dc16 = decltype(&::zaniDecodeCAVLCChromaDcCoeffs_H264_1u16s);
using Dc32 = decltype(&::zaniDecodeCAVLCChromaDcCoeffs_H264_1u32s);
using Eg16 = decltype(&::zaniDecodeExpGolombOne_H264_1u16s);
using Eg32 = decltype(&::zaniDecodeExpGolombOne_H264_1u32s);

// Cursor at the head of block k.
inline void head(Ring& r, int k, Zan32u** p, Zan32s* off) {
    *p = r.bits.w.data() + r.startBit[static_cast<std::size_t>(k)] / 32;
    *off = 31 - r.startBit[static_cast<std::size_t>(k)] % 32;
}

template <class OutT, class Fn>
void time_coeffs(benchmark::State& s, const std::string& kind, Fn fn) {
    Ring& r = ring(kind);
    alignas(16) OutT out[16];
    int k = 0;
    for (auto _ : s) {
        Zan32u* p;
        Zan32s off;
        head(r, k, &p, &off);
        Zan16s num;
        OutT* o = out;
        ZanStatus st = fn(&p, &off, &num, &o, r.sel[static_cast<std::size_t>(k)], 16, r.t.token, r.t.tz4x4, r.t.rb, kZigzag4x4);
        benchmark::DoNotOptimize(st);
        benchmark::ClobberMemory();
        k = (k + 1) & (kRing - 1);
    }
}

template <class OutT, class Fn>
void time_dc(benchmark::State& s, bool is422, Fn fn) {
    Ring& r = ring(is422 ? "dc422" : "dc420");
    alignas(16) OutT out[8];
    int k = 0;
    for (auto _ : s) {
        Zan32u* p;
        Zan32s off;
        head(r, k, &p, &off);
        Zan16s num;
        OutT* o = out;
        ZanStatus st = fn(&p, &off, &num, &o, is422 ? r.t.tokenDc422 : r.t.tokenDc420, is422 ? r.t.tz422 : r.t.tz420, r.t.rb);
        benchmark::DoNotOptimize(st);
        benchmark::ClobberMemory();
        k = (k + 1) & (kRing - 1);
    }
}

template <class OutT, class Fn>
void time_eg(benchmark::State& s, Zan32s isSigned, Fn fn) {
    Ring& r = ring("eg");
    int k = 0;
    for (auto _ : s) {
        Zan32u* p;
        Zan32s off;
        head(r, k, &p, &off);
        OutT v;
        ZanStatus st = fn(&p, &off, &v, isSigned);
        benchmark::DoNotOptimize(st);
        benchmark::DoNotOptimize(v);
        k = (k + 1) & (kRing - 1);
    }
}

// Registers the u8 body, the n8 body and the export of one function.
template <class Fn, class Time>
void add3(const std::string& what, Fn u8fn, Fn n8fn, Fn exported, Time time) {
    bench::add("cavlcdec/" + what + "/u8", [=](benchmark::State& s) { time(s, u8fn); });
    bench::add("cavlcdec/" + what + "/n8", [=](benchmark::State& s) { time(s, n8fn); });
    bench::add("cavlcdec/export/" + what, [=](benchmark::State& s) { time(s, exported); });
}

}  // namespace

ZAN_BENCH_FAMILY(cavlcdec) {
    for (const char* kind : {"typical", "dense"}) {
        const std::string k = kind;
        add3<Coeffs16>(std::string("DecodeCAVLCCoeffs_1u16s:") + kind, &u8::zaniDecodeCAVLCCoeffs_H264_1u16s,
                       &n8::zaniDecodeCAVLCCoeffs_H264_1u16s, &::zaniDecodeCAVLCCoeffs_H264_1u16s,
                       [k](benchmark::State& s, Coeffs16 fn) { time_coeffs<Zan16s>(s, k, fn); });
        add3<Coeffs32>(std::string("DecodeCAVLCCoeffs_1u32s:") + kind, &u8::zaniDecodeCAVLCCoeffs_H264_1u32s,
                       &n8::zaniDecodeCAVLCCoeffs_H264_1u32s, &::zaniDecodeCAVLCCoeffs_H264_1u32s,
                       [k](benchmark::State& s, Coeffs32 fn) { time_coeffs<Zan32s>(s, k, fn); });
    }
    add3<Dc16>("DecodeCAVLCChromaDcCoeffs_1u16s", &u8::zaniDecodeCAVLCChromaDcCoeffs_H264_1u16s,
               &n8::zaniDecodeCAVLCChromaDcCoeffs_H264_1u16s, &::zaniDecodeCAVLCChromaDcCoeffs_H264_1u16s,
               [](benchmark::State& s, Dc16 fn) { time_dc<Zan16s>(s, false, fn); });
    add3<Dc32>("DecodeCAVLCChroma422DcCoeffs_1u32s", &u8::zaniDecodeCAVLCChroma422DcCoeffs_H264_1u32s,
               &n8::zaniDecodeCAVLCChroma422DcCoeffs_H264_1u32s, &::zaniDecodeCAVLCChroma422DcCoeffs_H264_1u32s,
               [](benchmark::State& s, Dc32 fn) { time_dc<Zan32s>(s, true, fn); });
    add3<Eg16>("DecodeExpGolombOne_1u16s:ue", &u8::zaniDecodeExpGolombOne_H264_1u16s,
               &n8::zaniDecodeExpGolombOne_H264_1u16s, &::zaniDecodeExpGolombOne_H264_1u16s,
               [](benchmark::State& s, Eg16 fn) { time_eg<Zan16s>(s, 0, fn); });
    add3<Eg32>("DecodeExpGolombOne_1u32s:se", &u8::zaniDecodeExpGolombOne_H264_1u32s,
               &n8::zaniDecodeExpGolombOne_H264_1u32s, &::zaniDecodeExpGolombOne_H264_1u32s,
               [](benchmark::State& s, Eg32 fn) { time_eg<Zan32s>(s, 1, fn); });
}
