// MPEG-1/2 coding: every quantiser catalogue entry (rule, u8 kernel, n8
// kernel), and block decode and encode per block through the exported
// functions, on blocks of about 12 coefficients ("typical") and on dense
// blocks of 64 ("dense").
//
// Block timings run over a ring of 64 different blocks, coded once with the
// block encoders, so that the branch predictor does not learn one block.
#include <random>

#include "../tests/api/mpeg12_tables.h"
#include "bench_util.h"
#include "common/scan_tables.h"
#include "mpeg12/mpeg12.h"

namespace {

using namespace zan;
using namespace zan::mpeg12test;
using bench::Buffer;

template <class... T>
inline void escape(T*... p) {
    (benchmark::DoNotOptimize(p), ...);
}

// ------------------------------------------------------ catalogue entries

void time_quant(benchmark::State& s, const KernelPair<mpeg12::QuantFn>& e, mpeg12::QuantFn fn) {
    Buffer blk(128), src(128), m(256);
    src.fill(1);
    for (int i = 0; i < 64; ++i) src.as<Zan16s>()[i] = static_cast<Zan16s>(src.as<Zan16s>()[i] % 2048);
    for (int i = 0; i < 64; ++i) m.as<Zan32f>()[i] = 1.0f / static_cast<Zan32f>(8 + i);
    for (auto _ : s) {
        std::memcpy(blk.data(), src.data(), 128);  // the kernels work in place
        escape(blk.data(), m.data());
        Zan32s c = fn(blk.as<Zan16s>(), e.height == 0 ? 6 : 5, m.as<Zan32f>());
        benchmark::DoNotOptimize(c);
    }
}

void time_inv(benchmark::State& s, const KernelPair<mpeg12::InvQuantFn>&, mpeg12::InvQuantFn fn) {
    Buffer blk(128), src(128), w(128);
    src.fill(2);
    for (int i = 0; i < 64; ++i) src.as<Zan16s>()[i] = static_cast<Zan16s>(src.as<Zan16s>()[i] % 64);
    for (int i = 0; i < 64; ++i) w.as<Zan16s>()[i] = static_cast<Zan16s>(16 + i);
    for (auto _ : s) {
        std::memcpy(blk.data(), src.data(), 128);
        escape(blk.data(), w.data());
        fn(blk.as<Zan16s>(), 7, w.as<Zan16s>());
        benchmark::ClobberMemory();
    }
}

void time_count(benchmark::State& s, const KernelPair<mpeg12::CountFn>&, mpeg12::CountFn fn) {
    Buffer blk(128);
    blk.fill(3);
    for (auto _ : s) {
        escape(blk.data());
        Zan32s c = fn(blk.as<Zan16s>());
        benchmark::DoNotOptimize(c);
    }
}

// ------------------------------------------------------ block coding

constexpr int kRing = 64;

// Tables, a ring of level blocks and the stream the encoders make of them.
struct Blocks {
    RLTable zero = table_zero(), one = table_one();
    Zan32u *first = nullptr, *next = nullptr, *enc = nullptr, *dc = nullptr;
    std::vector<Zan32s> dcPairs, scan;
    std::vector<std::array<Zan16s, 64>> levels;
    std::vector<Zan32s> counts;
    std::vector<Zan32u> stream;
    std::vector<std::pair<Zan32u*, Zan32s>> starts;  // cursor at the head of each block
    std::array<Zan16s, 64> W;
    bool intra;

    // mpeg1: levels that the table holds at their runs, since the block
    // encoders write MPEG-2 escapes.
    Blocks(bool intraBlocks, int perBlock, bool mpeg1) : intra(intraBlocks) {
        zaniHuffmanRunLevelTableInitAlloc_32s(zero.list(true).array({8, 4, 5}).data(), &first);
        zaniHuffmanRunLevelTableInitAlloc_32s(zero.list().array({8, 4, 5}).data(), &next);
        zaniCreateRLEncodeTable(zero.list().array({8}).data(), &enc);
        zaniHuffmanTableInitAlloc_32s(dc_list(kDcLuma).array({9}).data(), &dc);
        for (const char* c : kDcLuma) dcPairs.insert(dcPairs.end(), {to_code(c), static_cast<Zan32s>(std::strlen(c))});
        scan.assign(ownvc_Zigzag, ownvc_Zigzag + 64);
        for (int i = 0; i < 64; ++i) W[i] = static_cast<Zan16s>(16 + i % 20);
        std::mt19937 rng(9);
        for (int k = 0; k < kRing; ++k) {
            std::array<Zan16s, 64> lv{};
            int n = perBlock >= 64 ? 64 : perBlock;
            // Typical blocks: the coefficients cluster at the low scan indices.
            for (int i = 0; i < n; ++i) {
                int idx = perBlock >= 64 ? i : static_cast<int>(rng() % 24);
                int mag = rng() % 8 ? 1 + static_cast<int>(rng() % 3) : 1 + static_cast<int>(rng() % 60);
                if (mpeg1) mag = perBlock >= 64 ? 1 + static_cast<int>(rng() % 40) : 1;
                lv[scan[idx]] = static_cast<Zan16s>(rng() % 2 ? mag : -mag);
            }
            if (intra) lv[0] = static_cast<Zan16s>(100 + rng() % 50);
            if (!intra && lv[0] == 0 && perBlock < 64) lv[0] = 1;
            Zan32s c = 0;
            for (int i = intra ? 1 : 0; i < 64; ++i) c += lv[i] != 0;
            levels.push_back(lv);
            counts.push_back(c);
        }
        stream.assign(kRing * 64 * 2 + 8, 0);
        Zan32u* p = stream.data();
        Zan32s free = 32, pred = 128;
        for (int k = 0; k < kRing; ++k) {
            starts.push_back({p, free - 1});
            put(k, &p, &free, &pred);
        }
    }
    ~Blocks() {
        for (Zan32u* t : {first, next, enc, dc}) zaniHuffmanTableFree_32s(t);
    }
    ZanStatus put(int k, Zan32u** p, Zan32s* free, Zan32s* pred) {
        if (intra)
            return zaniPutIntraBlock(p, free, levels[k].data(), pred, dcPairs.data(), enc, scan.data(), 2, 2, counts[k]);
        return zaniPutNonIntraBlock(p, free, levels[k].data(), enc, scan.data(), 2, 2, counts[k]);
    }
};

// Decodes block k of the ring with one of the four decoders.
enum Form { kMpeg2Inter, kMpeg2Intra, kMpeg1Inter, kMpeg1Intra };

ZanStatus decode(Blocks& b, Form f, int k, Zan16s* out) {
    Zan32u* p = b.starts[k].first;
    Zan32s off = b.starts[k].second, size;
    Zan16s pred = 128;
    switch (f) {
        case kMpeg2Inter:
            return zaniReconstructDCTBlock_MPEG2_32s(&p, &off, b.first, b.next, b.scan.data(), 8, b.W.data(), out, &size);
        case kMpeg2Intra:
            return zaniReconstructDCTBlockIntra_MPEG2_32s(&p, &off, b.dc, b.next, b.scan.data(), 8, b.W.data(), &pred, 0,
                                                          out, &size);
        case kMpeg1Inter:
            return zaniReconstructDCTBlock_MPEG1_32s(&p, &off, b.first, b.next, b.scan.data(), 8, b.W.data(), out, &size);
        default:
            return zaniReconstructDCTBlockIntra_MPEG1_32s(&p, &off, b.dc, b.next, b.scan.data(), 8, b.W.data(), &pred, out,
                                                          &size);
    }
}

void add_block_benchmarks() {
    struct Case {
        const char* name;
        Form form;
        bool intra;
    };
    const Case cases[] = {{"ReconstructDCTBlock_MPEG2", kMpeg2Inter, false},
                          {"ReconstructDCTBlockIntra_MPEG2", kMpeg2Intra, true},
                          {"ReconstructDCTBlock_MPEG1", kMpeg1Inter, false},
                          {"ReconstructDCTBlockIntra_MPEG1", kMpeg1Intra, true}};
    for (const Case& c : cases)
        for (int per : {12, 64}) {
            const std::string what = std::string(c.name) + (per == 64 ? ":dense" : ":typical");
            bench::add("mpeg12/export/" + what, [c, per](benchmark::State& s) {
                Blocks b(c.intra, per, c.form >= kMpeg1Inter);
                alignas(16) Zan16s out[64];
                for (int k = 0; k < kRing; ++k)
                    if (decode(b, c.form, k, out) != zanStsOk) {
                        s.SkipWithError("the ring does not decode");
                        return;
                    }
                int k = 0;
                for (auto _ : s) {
                    ZanStatus st = decode(b, c.form, k, out);
                    benchmark::DoNotOptimize(st);
                    benchmark::ClobberMemory();
                    k = (k + 1) % kRing;
                }
            });
        }
    for (bool intra : {false, true})
        for (int per : {12, 64}) {
            const std::string what = std::string(intra ? "PutIntraBlock" : "PutNonIntraBlock") + (per == 64 ? ":dense" : ":typical");
            bench::add("mpeg12/export/" + what, [intra, per](benchmark::State& s) {
                Blocks b(intra, per, false);
                std::vector<Zan32u> out(64 * 4, 0);
                int k = 0;
                Zan32s pred = 128;
                for (auto _ : s) {
                    // Each block into a cleared area; the clearing is part of
                    // what a caller pays.
                    std::memset(out.data(), 0, 64 * 4);
                    Zan32u* p = out.data();
                    Zan32s free = 32;
                    ZanStatus st = b.put(k, &p, &free, &pred);
                    benchmark::DoNotOptimize(st);
                    benchmark::ClobberMemory();
                    k = (k + 1) % kRing;
                }
            });
        }
    // The quantisers through the exports (the kernels chosen at run time).
    bench::add("mpeg12/export/QuantIntra_MPEG2:default", [](benchmark::State& s) {
        alignas(16) Zan16s blk[64], src[64];
        for (int i = 0; i < 64; ++i) src[i] = static_cast<Zan16s>((i * 37) % 900 - 300);
        Zan32s count;
        for (auto _ : s) {
            std::memcpy(blk, src, sizeof blk);
            escape(blk);
            zaniQuantIntra_MPEG2_16s_C1I(blk, 5, nullptr, &count);
            benchmark::DoNotOptimize(count);
        }
    });
    bench::add("mpeg12/export/QuantInv_MPEG2:flat", [](benchmark::State& s) {
        alignas(16) Zan16s blk[64], src[64];
        for (int i = 0; i < 64; ++i) src[i] = static_cast<Zan16s>((i * 7) % 20 - 10);
        for (auto _ : s) {
            std::memcpy(blk, src, sizeof blk);
            escape(blk);
            zaniQuantInv_MPEG2_16s_C1I(blk, 5, nullptr);
            benchmark::ClobberMemory();
        }
    });
}

}  // namespace

ZAN_BENCH_FAMILY(mpeg12) {
    bench::add_pairs<mpeg12::QuantFn>("mpeg12", u8::mpeg12::quant_kernels.quant, n8::mpeg12::quant_kernels.quant,
                                      time_quant);
    bench::add_pairs<mpeg12::InvQuantFn>("mpeg12", u8::mpeg12::quant_kernels.invQuant,
                                         n8::mpeg12::quant_kernels.invQuant, time_inv);
    bench::add_pairs<mpeg12::CountFn>("mpeg12", u8::mpeg12::quant_kernels.count, n8::mpeg12::quant_kernels.count,
                                      time_count);
    add_block_benchmarks();
}
