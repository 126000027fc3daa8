// H.261, H.263 and MPEG-4 coefficient decoding and encoding, per block
// through the exported functions (the family has no vector kernels: its
// work is bit-stream parsing), on blocks of about 12 nonzero levels
// ("typical") and on blocks of 64 ("dense").
//
// Each timing runs over a ring of 64 different blocks, coded once with the
// block encoders, so that the branch predictor does not learn one block.
// Levels are mostly small, as after quantisation, with an occasional escape.
#include <cstring>
#include <functional>
#include <random>
#include <vector>

#include "bench_util.h"

namespace {

using namespace zan;

constexpr int kRing = 64;
constexpr std::size_t kSlot = 512;  // bytes per coded block, slack included

enum class Kind { H263Inter, H263Intra, H261Inter, Mp4Inter, Mp4IntraRvlc, Mp4InterFused, Mp4InterRvlcBack };

struct Ring {
    std::vector<std::array<Zan16s, 64>> blocks;
    std::vector<Zan32s> counts;
    std::vector<Zan8u> stream = std::vector<Zan8u>(kRing * kSlot, 0);
    std::vector<Zan32s> endBits;  // end of each coded block, in bits from its slot
};

ZanStatus encode(Kind k, const Zan16s* b, Zan8u** p, Zan32s* off, Zan32s n) {
    switch (k) {
        case Kind::H263Inter: return zaniEncodeCoeffsInter_H263_16s1u(b, p, off, n, 0, 0);
        case Kind::H263Intra: return zaniEncodeCoeffsIntra_H263_16s1u(b, p, off, n, 1, 0, 0);
        case Kind::H261Inter: return zaniEncodeCoeffsInter_H261_16s1u(b, p, off, n, 0);
        case Kind::Mp4Inter:
        case Kind::Mp4InterFused: return zaniEncodeCoeffsInter_MPEG4_16s1u(b, p, off, n, 0, 0);
        case Kind::Mp4IntraRvlc: return zaniEncodeCoeffsIntra_MPEG4_16s1u(b, p, off, n, 1, 0, 0);
        case Kind::Mp4InterRvlcBack: return zaniEncodeCoeffsInter_MPEG4_16s1u(b, p, off, n, 1, -1);
    }
    return zanStsErr;
}

Ring make_ring(Kind k, int per) {
    Ring r;
    std::mt19937 rng(static_cast<unsigned>(per) * 7 + static_cast<unsigned>(k));
    const int maxMag = (k == Kind::H263Inter || k == Kind::H263Intra || k == Kind::H261Inter) ? 127 : 2047;
    for (int i = 0; i < kRing; ++i) {
        std::array<Zan16s, 64> b{};
        Zan32s n = 0;
        for (int c = 0; c < per; ++c) {
            // Mostly low frequencies for typical blocks.
            const int pos = per == 64 ? c : static_cast<int>(rng() % 24);
            int m = 1 + static_cast<int>(rng() % 4);
            if (rng() % 16 == 0) m = 1 + static_cast<int>(rng() % static_cast<unsigned>(maxMag));
            if (b[pos] == 0) ++n;
            b[pos] = static_cast<Zan16s>((rng() & 1) ? -m : m);
        }
        Zan8u* slot = r.stream.data() + static_cast<std::size_t>(i) * kSlot + 8;  // 8 bytes below for backward reads
        if (k == Kind::Mp4InterRvlcBack) {
            // A closing code of a preceding block first.
            std::array<Zan16s, 64> one{};
            one[0] = 1;
            Zan8u* p = slot;
            Zan32s off = 0;
            encode(k, one.data(), &p, &off, 1);
            encode(k, b.data(), &p, &off, n);
            r.endBits.push_back(static_cast<Zan32s>(p - slot) * 8 + off);
        } else {
            Zan8u* p = slot;
            Zan32s off = 0;
            encode(k, b.data(), &p, &off, n);
            r.endBits.push_back(static_cast<Zan32s>(p - slot) * 8 + off);
        }
        r.blocks.push_back(b);
        r.counts.push_back(n);
    }
    return r;
}

struct InvRec {
    alignas(16) Zan8u bytes[156 + 16];
    ZanQuantInvSpec_MPEG4* get() { return reinterpret_cast<ZanQuantInvSpec_MPEG4*>(bytes); }
};

ZanStatus decode(Kind k, Ring& r, int i, Zan16s* out, const ZanQuantInvSpec_MPEG4* rec) {
    Zan8u* slot = r.stream.data() + static_cast<std::size_t>(i) * kSlot + 8;
    Zan32s last = 0;
    Zan32s off = 0;
    Zan8u* p = slot;
    switch (k) {
        case Kind::H263Inter: return zaniDecodeCoeffsInter_H263_1u16s(&p, &off, out, &last, 0, 0);
        case Kind::H263Intra: return zaniDecodeCoeffsIntra_H263_1u16s(&p, &off, out, &last, 1, 0, 0);
        case Kind::H261Inter: return zaniDecodeCoeffsInter_H261_1u16s(&p, &off, out, &last, 0);
        case Kind::Mp4Inter: return zaniDecodeCoeffsInter_MPEG4_1u16s(&p, &off, out, &last, 0, 0);
        case Kind::Mp4IntraRvlc: return zaniDecodeCoeffsIntra_MPEG4_1u16s(&p, &off, out, &last, 1, 0, 0);
        case Kind::Mp4InterFused: return zaniReconstructCoeffsInter_MPEG4_1u16s(&p, &off, out, &last, 0, 0, rec, 6);
        case Kind::Mp4InterRvlcBack: {
            const Zan32s at = r.endBits[static_cast<std::size_t>(i)] - 1;
            p = slot + (at >> 3);
            off = at & 7;
            return zaniDecodeCoeffsInterRVLCBack_MPEG4_1u16s(&p, &off, out, &last);
        }
    }
    return zanStsErr;
}

void add_benchmarks() {
    struct Case {
        const char* name;
        Kind kind;
        bool encoder;
    };
    const Case cases[] = {
        {"DecodeCoeffsInter_H263", Kind::H263Inter, false},
        {"DecodeCoeffsIntra_H263:advIntra", Kind::H263Intra, false},
        {"DecodeCoeffsInter_H261", Kind::H261Inter, false},
        {"DecodeCoeffsInter_MPEG4", Kind::Mp4Inter, false},
        {"DecodeCoeffsIntra_MPEG4:rvlc", Kind::Mp4IntraRvlc, false},
        {"ReconstructCoeffsInter_MPEG4", Kind::Mp4InterFused, false},
        {"DecodeCoeffsInterRVLCBack_MPEG4", Kind::Mp4InterRvlcBack, false},
        {"EncodeCoeffsInter_H263", Kind::H263Inter, true},
        {"EncodeCoeffsIntra_H263:advIntra", Kind::H263Intra, true},
        {"EncodeCoeffsInter_H261", Kind::H261Inter, true},
        {"EncodeCoeffsInter_MPEG4", Kind::Mp4Inter, true},
        {"EncodeCoeffsIntra_MPEG4:rvlc", Kind::Mp4IntraRvlc, true},
    };
    for (const Case& c : cases)
        for (int per : {12, 64}) {
            const std::string what = std::string(c.name) + (per == 64 ? ":dense" : ":typical");
            bench::add("coef/export/" + what, [c, per](benchmark::State& s) {
                Ring r = make_ring(c.kind, per);
                InvRec rec;
                zaniQuantInvInterInit_MPEG4(nullptr, rec.get(), 8);
                alignas(16) Zan16s out[64];
                if (!c.encoder)
                    for (int k = 0; k < kRing; ++k)
                        if (decode(c.kind, r, k, out, rec.get()) != zanStsOk) {
                            s.SkipWithError("the ring does not decode");
                            return;
                        }
                std::vector<Zan8u> dst(kSlot, 0);
                int k = 0;
                for (auto _ : s) {
                    ZanStatus st;
                    if (c.encoder) {
                        Zan8u* p = dst.data();
                        Zan32s off = 0;
                        st = encode(c.kind, r.blocks[static_cast<std::size_t>(k)].data(), &p, &off,
                                    r.counts[static_cast<std::size_t>(k)]);
                    } else {
                        st = decode(c.kind, r, k, out, rec.get());
                    }
                    benchmark::DoNotOptimize(st);
                    benchmark::ClobberMemory();
                    k = (k + 1) % kRing;
                }
            });
        }
}

}  // namespace

ZAN_BENCH_FAMILY(coef) { add_benchmarks(); }
