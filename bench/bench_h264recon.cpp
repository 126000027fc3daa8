// H.264 macroblock reconstruction: whole macroblocks through the exported
// functions (the path the library chose at load; run once per path with
// ZANCORE_CPU_FEATURES).  The family has no vector kernels of its own: its
// time is that of the predictors and block transforms it calls.
//
// The macroblock sits in a small picture that stays in the L1 cache.  The
// coefficients are overwritten by each call (dequantised values and
// residuals), so every iteration first copies a fresh run of them into
// place: a copy of at most 1 KB, included in the figures.  Typical
// coefficients: a few small levels per coded block, as at QP 28.
#include <cstring>

#include "bench_util.h"

namespace {

using zan::bench::Buffer;

constexpr Zan32s kStep = 64;

struct Scene {
    Buffer pic{kStep * 40};
    Buffer coefBuf{2048};
    std::vector<Zan16s> fresh;
    Scene() { pic.fill(11); }
    Zan8u* mb() { return pic.data() + kStep * 8 + 16; }
    Zan16s* coef() { return coefBuf.as<Zan16s>(); }
    void reset() { std::memcpy(coef(), fresh.data(), fresh.size() * sizeof(Zan16s)); }
    // A coded 4x4 block of n levels.
    void block(int n) {
        Zan16s b[16] = {};
        static const int pos[6] = {0, 1, 4, 5, 8, 2};
        for (int i = 0; i < n && i < 6; ++i) b[pos[i]] = static_cast<Zan16s>((i & 1) ? -2 - i : 3 + i);
        fresh.insert(fresh.end(), b, b + 16);
    }
};

const Zan16s* flat_scale() {
    static Zan16s s[16];
    static const int cls[16] = {0, 2, 0, 2, 2, 1, 2, 1, 0, 2, 0, 2, 2, 1, 2, 1};
    static const int v[3] = {10, 16, 13};
    for (int k = 0; k < 16; ++k) s[k] = static_cast<Zan16s>(16 * v[cls[k]]);
    return s;
}

template <class Call>
void add(const char* name, Scene* scene, Call call) {
    zan::bench::add(std::string("h264recon/export/") + name, [scene, call](benchmark::State& st) {
        for (auto _ : st) {
            scene->reset();
            Zan16s* cur = scene->coef();
            ZanStatus r = call(*scene, &cur);
            benchmark::DoNotOptimize(r);
            benchmark::DoNotOptimize(cur);
            benchmark::ClobberMemory();
        }
    });
}

constexpr Zan32u kLumaCbp = 0x1fffe & 0x0f0f6;  // 8 of the 16 blocks coded
constexpr Zan32u kModes[16] = {2, 0, 1, 4, 2, 5, 6, 3, 7, 8, 2, 0, 1, 2, 4, 2};

}  // namespace

ZAN_BENCH_FAMILY(h264recon) {
    // Intra 16x16: DC block and 6 AC blocks
    static Scene s16;
    s16.block(4);
    for (int n = 0; n < 6; ++n) s16.block(3);
    const Zan32u cbp16 = 1 | (0x3f << 1);
    add("intra16x16_baseline", &s16, [cbp16](Scene& s, Zan16s** c) {
        return zaniReconstructLumaIntra16x16MB_H264_16s8u_C1R(c, s.mb(), kStep, 2, cbp16, 28, 0);
    });
    add("intra16x16_high", &s16, [cbp16](Scene& s, Zan16s** c) {
        return zaniReconstructLumaIntra_16x16MB_H264_16s8u_C1R(c, s.mb(), kStep, 2, cbp16, 28, 0, flat_scale(), 0);
    });
    // Intra 4x4: mixed modes, 8 coded blocks
    static Scene s4;
    for (int n = 0; n < 8; ++n) s4.block(3);
    add("intra4x4_baseline", &s4, [](Scene& s, Zan16s** c) {
        return zaniReconstructLumaIntraMB_H264_16s8u_C1R(c, s.mb(), kStep, kModes, kLumaCbp, 28, 0);
    });
    add("intra4x4_high", &s4, [](Scene& s, Zan16s** c) {
        return zaniReconstructLumaIntra4x4MB_H264_16s8u_C1R(c, s.mb(), kStep, kModes, kLumaCbp, 28, 0, flat_scale(),
                                                            0);
    });
    add("inter4x4_baseline", &s4, [](Scene& s, Zan16s** c) {
        return zaniReconstructLumaInterMB_H264_16s8u_C1R(c, s.mb(), kStep, kLumaCbp, 28);
    });
    // Chroma 4:2:0: both DC blocks and two AC blocks per plane
    static Scene sc;
    Zan16s dc[8] = {5, -2, 1, 0, -4, 1, 0, 2};
    sc.fresh.assign(dc, dc + 8);
    for (int n = 0; n < 4; ++n) sc.block(2);
    const Zan32u cbpC = (3u << 17) | (0x3u << 19) | (0x9u << 23);
    add("chroma420_inter_p2r", &sc, [cbpC](Scene& s, Zan16s** c) {
        return zaniReconstructChromaInterMB_H264_16s8u_P2R(c, s.mb(), s.mb() + 24, kStep, cbpC, 28);
    });
    add("chroma420_intra_dc_p2r", &sc, [cbpC](Scene& s, Zan16s** c) {
        return zaniReconstructChromaIntraMB_H264_16s8u_P2R(c, s.mb(), s.mb() + 24, kStep, 0, cbpC, 28, 0);
    });
    add("chroma420_inter_c2r", &sc, [cbpC](Scene& s, Zan16s** c) {
        return zaniReconstructChromaInterMB_H264_16s8u_C2R(c, s.mb(), kStep, cbpC, 28);
    });
    add("chroma420_inter_high_p2r", &sc, [cbpC](Scene& s, Zan16s** c) {
        return zaniReconstructChromaInter4x4MB_H264_16s8u_P2R(c, s.mb(), s.mb() + 24, kStep, cbpC, 28, 28,
                                                              flat_scale(), flat_scale(), 0);
    });
}
