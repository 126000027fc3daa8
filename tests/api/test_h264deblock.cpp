// H.264 deblocking through the exported functions: the one status, outputs
// untouched on failure, early exits, and known answers worked out by hand
// from the filter rules.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <functional>
#include <vector>

#include "zanvc.h"

namespace {

// A plane with a macroblock at (8, 8) and room around it.
template <class T>
struct Pic {
    static constexpr Zan32s S = 40;  // samples per row
    std::array<T, S * 40> px;
    explicit Pic(T v = 0) { px.fill(v); }
    T* mb() { return px.data() + 8 * S + 8; }
    T& at(int x, int y) { return px[static_cast<size_t>((8 + y) * S + 8 + x)]; }
    // Samples p3..q3 (or from p(n/2-1)) across an edge at offset `edge`,
    // on line `line`; vertical edges run down the rows.
    void set_line(bool vertical, int edge, int line, std::initializer_list<int> v, int channels = 1, int c = 0) {
        const int n = static_cast<int>(v.size());
        int k = 0;
        for (int s : v) {
            const int off = edge - n / 2 + k++;
            if (vertical)
                at(off * channels + c, line) = static_cast<T>(s);
            else
                at(line * channels + c, off) = static_cast<T>(s);
        }
    }
    std::vector<int> line(bool vertical, int edge, int line, int n, int channels = 1, int c = 0) {
        std::vector<int> out;
        for (int k = 0; k < n; ++k) {
            const int off = edge - n / 2 + k;
            out.push_back(vertical ? at(off * channels + c, line) : at(line * channels + c, off));
        }
        return out;
    }
};
using V = std::vector<int>;

ZanDeblockingRecord record(void* p, Zan32s step, const void* a, const void* b, const void* t, const Zan8u* bs,
                           Zan32s depth = 0) {
    return ZanDeblockingRecord{p, step, a, b, t, bs, depth};
}

TEST(H264Deblock, NullPointerIsTheOnlyStatus) {
    Pic<Zan8u> pic(77);
    Pic<Zan16u> pic16(77);
    const Pic<Zan8u> pic0 = pic;
    const Pic<Zan16u> pic160 = pic16;
    std::array<Zan8u, 16> a{}, b{}, t{}, bs;
    std::array<Zan16u, 16> a16{}, b16{}, t16{};
    bs.fill(4);
    a.fill(255);
    b.fill(255);
    a16.fill(1000);
    b16.fill(1000);
    constexpr Zan32s S = Pic<Zan8u>::S;
    using F8 = ZanStatus (*)(Zan8u*, Zan32s, const Zan8u*, const Zan8u*, const Zan8u*, const Zan8u*);
    const F8 arrays[] = {zaniFilterDeblockingLuma_VerEdge_H264_8u_C1IR,   zaniFilterDeblockingLuma_HorEdge_H264_8u_C1IR,
                         zaniFilterDeblockingChroma_VerEdge_H264_8u_C1IR, zaniFilterDeblockingChroma_HorEdge_H264_8u_C1IR,
                         zaniFilterDeblockingChroma_VerEdge_H264_8u_C2IR, zaniFilterDeblockingChroma_HorEdge_H264_8u_C2IR};
    using FR = ZanStatus (*)(const ZanDeblockingRecord*);
    const FR rec8[] = {zaniFilterDeblockingChroma_VerEdge_H264_8u_C2I, zaniFilterDeblockingChroma_HorEdge_H264_8u_C2I,
                       zaniFilterDeblockingChroma422VerEdge_H264_8u_C1IR,
                       zaniFilterDeblockingChroma422HorEdge_H264_8u_C1IR};
    const FR rec16[] = {zaniFilterDeblockingChroma422VerEdge_H264_16u_C1IR,
                        zaniFilterDeblockingChroma422HorEdge_H264_16u_C1IR,
                        zaniFilterDeblockingLumaVerEdge_H264_16u_C1IR,
                        zaniFilterDeblockingLumaHorEdge_H264_16u_C1IR,
                        zaniFilterDeblockingChromaVerEdge_H264_16u_C1IR,
                        zaniFilterDeblockingChromaHorEdge_H264_16u_C1IR,
                        zaniFilterDeblockingLumaVerEdgeMBAFF_H264_16u_C1IR,
                        zaniFilterDeblockingChromaVerEdgeMBAFF_H264_16u_C1IR};
    Zan8u* p = pic.mb();
    int n = 0;
    for (F8 f : arrays) {
        // Each pointer in turn, with a nonsense step beside it.
        EXPECT_EQ(f(nullptr, S, a.data(), b.data(), t.data(), bs.data()), zanStsNullPtr) << n;
        EXPECT_EQ(f(p, -123456, nullptr, b.data(), t.data(), bs.data()), zanStsNullPtr) << n;
        EXPECT_EQ(f(p, 0, a.data(), nullptr, t.data(), bs.data()), zanStsNullPtr) << n;
        EXPECT_EQ(f(p, S, a.data(), b.data(), nullptr, bs.data()), zanStsNullPtr) << n;
        EXPECT_EQ(f(p, S, a.data(), b.data(), t.data(), nullptr), zanStsNullPtr) << n++;
    }
    for (auto f : {zaniFilterDeblockingLuma_VerEdge_MBAFF_H264_8u_C1IR,
                   zaniFilterDeblockingChroma_VerEdge_MBAFF_H264_8u_C1IR}) {
        EXPECT_EQ(f(nullptr, S, 255, 255, t.data(), bs.data()), zanStsNullPtr);
        EXPECT_EQ(f(p, S, 0, 255, nullptr, bs.data()), zanStsNullPtr);  // null beats the alpha exit
        EXPECT_EQ(f(p, S, 255, 255, t.data(), nullptr), zanStsNullPtr);
    }
    auto each_record = [&](void* plane, const void* pa, const void* pb, const void* pt, auto&& call) {
        EXPECT_EQ(call(nullptr), zanStsNullPtr);
        ZanDeblockingRecord r = record(plane, S, pa, pb, pt, bs.data(), 8);
        for (int k = 0; k < 5; ++k) {
            ZanDeblockingRecord bad = r;
            bad.srcDstStep = -99999;
            if (k == 0) bad.pSrcDstPlane = nullptr;
            if (k == 1) bad.pAlpha = nullptr;
            if (k == 2) bad.pBeta = nullptr;
            if (k == 3) bad.pThresholds = nullptr;
            if (k == 4) bad.pBS = nullptr;
            EXPECT_EQ(call(&bad), zanStsNullPtr) << k;
        }
    };
    for (FR f : rec8) each_record(p, a.data(), b.data(), t.data(), f);
    for (FR f : rec16) each_record(pic16.mb(), a16.data(), b16.data(), t16.data(), f);
    EXPECT_EQ(pic.px, pic0.px);
    EXPECT_EQ(pic16.px, pic160.px);

    // And with every pointer present the flat picture passes every test and
    // the call succeeds.
    for (F8 f : arrays) EXPECT_EQ(f(p, S, a.data(), b.data(), t.data(), bs.data()), zanStsOk);
    ZanDeblockingRecord r8 = record(p, S, a.data(), b.data(), t.data(), bs.data());
    for (FR f : rec8) EXPECT_EQ(f(&r8), zanStsOk);
    ZanDeblockingRecord r16 = record(pic16.mb(), S, a16.data(), b16.data(), t16.data(), bs.data(), 10);
    for (FR f : rec16) EXPECT_EQ(f(&r16), zanStsOk);
}

// p3..q3 = 10 12 14 16 | 30 32 34 36, beta 10, bS 4.  With alpha 60 both
// sides pass |p0-q0| = 14 < (60 >> 2) + 2 = 17 and take the long filter:
//   p0 = (12 + 28 + 32 + 60 + 32 + 4) >> 3 = 21, p1 = (12+14+16+30+2) >> 2 = 18,
//   p2 = (20 + 36 + 14 + 16 + 30 + 4) >> 3 = 15, q0 = (14+32+60+64+34+4) >> 3 = 26,
//   q1 = (16+30+32+34+2) >> 2 = 28, q2 = (72 + 102 + 32 + 30 + 16 + 4) >> 3 = 32.
// With alpha 40, 14 is not below 12: only p0 = (28+16+32+2) >> 2 = 19 and
// q0 = (64+30+14+2) >> 2 = 27.
const V kStrongIn = {10, 12, 14, 16, 30, 32, 34, 36};
const V kStrongLong = {10, 15, 18, 21, 26, 28, 32, 36};
const V kStrongShort = {10, 12, 14, 19, 27, 32, 34, 36};

TEST(H264Deblock, StrongLumaEdgeByHand) {
    for (bool vertical : {true, false})
        for (Zan8u alpha : {Zan8u{60}, Zan8u{40}}) {
            Pic<Zan8u> pic(100);
            for (int line = 0; line < 16; ++line)
                pic.set_line(vertical, 0, line, {10, 12, 14, 16, 30, 32, 34, 36});
            const Zan8u a[2] = {alpha, 0}, b[2] = {10, 0}, t[16] = {};
            Zan8u bs[16] = {4, 4, 4, 4};
            auto f = vertical ? zaniFilterDeblockingLuma_VerEdge_H264_8u_C1IR : zaniFilterDeblockingLuma_HorEdge_H264_8u_C1IR;
            ASSERT_EQ(f(pic.mb(), Pic<Zan8u>::S, a, b, t, bs), zanStsOk);
            for (int line = 0; line < 16; ++line)
                EXPECT_EQ(pic.line(vertical, 0, line, 8), alpha == 60 ? kStrongLong : kStrongShort) << line;
            // Nothing beyond p3 and q3 changed: offsets -8..-5 and 4..7.
            for (int line = 0; line < 16; ++line) {
                const V wide = pic.line(vertical, 0, line, 16);
                EXPECT_EQ(V(wide.begin(), wide.begin() + 4), (V{100, 100, 100, 100})) << line;
                EXPECT_EQ(V(wide.begin() + 12, wide.end()), (V{100, 100, 100, 100})) << line;
            }
        }
}

TEST(H264Deblock, StrongLumaEdgeAtDepth14) {
    // The same edge scaled by 64: the taps' sums are multiples of 64, so the
    // rounding constants drop out: p0 = 64 * 164 / 8 = 1312, p1 = 64 * 72 / 4
    // = 1152, p2 = 64 * 116 / 8 = 928, q0 = 64 * 204 / 8 = 1632, q1 = 64 * 112
    // / 4 = 1792, q2 = 64 * 252 / 8 = 2016.
    for (bool vertical : {true, false}) {
        Pic<Zan16u> pic(6400);
        for (int line = 0; line < 16; ++line)
            pic.set_line(vertical, 0, line, {640, 768, 896, 1024, 1920, 2048, 2176, 2304});
        const Zan16u a[2] = {60 * 64, 0}, b[2] = {10 * 64, 0}, t[16] = {};
        const Zan8u bs[16] = {4, 4, 4, 4};
        ZanDeblockingRecord r = record(pic.mb(), Pic<Zan16u>::S, a, b, t, bs, 14);
        auto f = vertical ? zaniFilterDeblockingLumaVerEdge_H264_16u_C1IR : zaniFilterDeblockingLumaHorEdge_H264_16u_C1IR;
        ASSERT_EQ(f(&r), zanStsOk);
        const V want = {640, 928, 1152, 1312, 1632, 1792, 2016, 2304};
        for (int line = 0; line < 16; ++line) EXPECT_EQ(pic.line(vertical, 0, line, 8), want) << line;
    }
}

// p3..q3 = 18 20 22 24 | 40 41 43 44, alpha 30, beta 6, tc0 2, bS 3.
// |p2-p0| = 4 and |q2-q0| = 3 are below beta, so tc = 4.  delta =
// (64 - 19 + 4) >> 3 = 6, clipped to 4: p0 = 28, q0 = 36.  avg = 32:
// p1 += clip(+-2, (20 + 32 - 44) >> 1 = 4) = 2 -> 24; q1 += clip(+-2,
// (43 + 32 - 82) >> 1 = -4) = -2 -> 39.
TEST(H264Deblock, NormalLumaEdgeClipsByTc) {
    for (bool vertical : {true, false}) {
        Pic<Zan8u> pic(50);
        for (int line = 0; line < 16; ++line) pic.set_line(vertical, 8, line, {18, 20, 22, 24, 40, 41, 43, 44});
        const Zan8u a[2] = {0, 30}, b[2] = {0, 6};
        Zan8u t[16] = {}, bs[16] = {};
        for (int k = 8; k < 12; ++k) {
            t[k] = 2;
            bs[k] = 3;
        }
        auto f = vertical ? zaniFilterDeblockingLuma_VerEdge_H264_8u_C1IR : zaniFilterDeblockingLuma_HorEdge_H264_8u_C1IR;
        ASSERT_EQ(f(pic.mb(), Pic<Zan8u>::S, a, b, t, bs), zanStsOk);
        for (int line = 0; line < 16; ++line)
            EXPECT_EQ(pic.line(vertical, 8, line, 8), (V{18, 20, 24, 28, 36, 39, 43, 44})) << line;
    }
}

// Raw delta 0 leaves p0 and q0 while p1 and q1 still move:
// p2..q2 = 4 10 12 | 12 14 20, beta 10: (0 - 4 + 4) >> 3 = 0;
// p1 += clip(+-3, (4 + 12 - 20) >> 1 = -2) -> 8, q1 += (20 + 12 - 28) >> 1 = 2 -> 16.
TEST(H264Deblock, ZeroDeltaStillMovesP1AndQ1) {
    Pic<Zan8u> pic(12);
    for (int line = 0; line < 16; ++line) pic.set_line(false, 4, line, {0, 4, 10, 12, 12, 14, 20, 30});
    const Zan8u a[2] = {0, 20}, b[2] = {0, 10};
    Zan8u t[16] = {}, bs[16] = {};
    for (int k = 4; k < 8; ++k) {
        t[k] = 3;
        bs[k] = 2;
    }
    ASSERT_EQ(zaniFilterDeblockingLuma_HorEdge_H264_8u_C1IR(pic.mb(), Pic<Zan8u>::S, a, b, t, bs), zanStsOk);
    for (int line = 0; line < 16; ++line) EXPECT_EQ(pic.line(false, 4, line, 8), (V{0, 4, 8, 12, 12, 16, 20, 30}));
}

// 8-bit luma decides strong per half edge: bS 4 beside 3 in one half sends
// both segments the normal way; the 16-bit form takes each segment by itself.
TEST(H264Deblock, LumaHalfEdgeWithFourBesideThree) {
    const Zan8u bs[16] = {4, 3, 4, 4};
    Pic<Zan8u> pic(100);
    for (int line = 0; line < 16; ++line) pic.set_line(true, 0, line, {10, 12, 14, 16, 30, 32, 34, 36});
    const Zan8u a[2] = {60, 0}, b[2] = {10, 0}, t[16] = {1, 1, 1, 1};
    ASSERT_EQ(zaniFilterDeblockingLuma_VerEdge_H264_8u_C1IR(pic.mb(), Pic<Zan8u>::S, a, b, t, bs), zanStsOk);
    // Normal path, tc0 1, tc 3: delta = (56 - 18 + 4) >> 3 = 5 -> 3; avg 23:
    // p1 += clip(+-1, (12 + 23 - 28) >> 1 = 3) -> 15; q1 += (34 + 23 - 64) >> 1 = -4 -> 31.
    const V normal = {10, 12, 15, 19, 27, 31, 34, 36};
    for (int line = 0; line < 8; ++line) EXPECT_EQ(pic.line(true, 0, line, 8), normal) << line;
    for (int line = 8; line < 16; ++line) EXPECT_EQ(pic.line(true, 0, line, 8), kStrongLong) << line;

    Pic<Zan16u> pic16(100);
    for (int line = 0; line < 16; ++line) pic16.set_line(true, 0, line, {10, 12, 14, 16, 30, 32, 34, 36});
    const Zan16u a16[2] = {60, 0}, b16[2] = {10, 0}, t16[16] = {1, 1, 1, 1};
    ZanDeblockingRecord r = record(pic16.mb(), Pic<Zan16u>::S, a16, b16, t16, bs, 8);
    ASSERT_EQ(zaniFilterDeblockingLumaVerEdge_H264_16u_C1IR(&r), zanStsOk);
    for (int line = 0; line < 16; ++line)
        EXPECT_EQ(pic16.line(true, 0, line, 8), line >= 4 && line < 8 ? normal : kStrongLong) << line;
}

// Normal chroma at depth 14: p1 p0 | q0 q1 = 16383 16380 | 16383 16300,
// alpha 100, beta 100, tc0 20: delta = (12 + 83 + 4) >> 3 = 12, p0 = 16392
// clamps to 16383, q0 = 16371.  At depth 16 p0 stays 16392.
TEST(H264Deblock, HighBitDepthClampsAtTheDepthsMaximum) {
    for (Zan32s depth : {14, 16}) {
        Pic<Zan16u> pic(16000);
        for (int line = 0; line < 8; ++line) pic.set_line(false, 0, line, {16383, 16380, 16383, 16300});
        const Zan16u a[2] = {100, 0}, b[2] = {100, 0}, t[8] = {20, 20, 20, 20};
        const Zan8u bs[16] = {3, 3, 3, 3};
        ZanDeblockingRecord r = record(pic.mb(), Pic<Zan16u>::S, a, b, t, bs, depth);
        ASSERT_EQ(zaniFilterDeblockingChromaHorEdge_H264_16u_C1IR(&r), zanStsOk);
        for (int line = 0; line < 8; ++line)
            EXPECT_EQ(pic.line(false, 0, line, 4), (V{16383, depth == 14 ? 16383 : 16392, 16371, 16300})) << line;
    }
}

// Alpha 0 or beta 0: the edge runs, and no line passes.  Small steps that
// would pass with alpha and beta at 255.
TEST(H264Deblock, ZeroAlphaOrBetaFiltersNothing) {
    for (int zero = 0; zero < 3; ++zero) {
        Pic<Zan8u> pic(0);
        for (size_t i = 0; i < pic.px.size(); ++i) pic.px[i] = static_cast<Zan8u>(100 + (i * 7) % 5);
        const Pic<Zan8u> before = pic;
        const Zan8u a[2] = {static_cast<Zan8u>(zero == 0 ? 0 : 255), static_cast<Zan8u>(zero == 0 ? 0 : 255)};
        const Zan8u b[2] = {static_cast<Zan8u>(zero == 1 ? 0 : 255), static_cast<Zan8u>(zero == 1 ? 0 : 255)};
        Zan8u t[16], bs[16];
        std::memset(t, 5, 16);
        std::memset(bs, zero == 2 ? 2 : 4, 16);
        zaniFilterDeblockingLuma_VerEdge_H264_8u_C1IR(pic.mb(), Pic<Zan8u>::S, a, b, t, bs);
        zaniFilterDeblockingLuma_HorEdge_H264_8u_C1IR(pic.mb(), Pic<Zan8u>::S, a, b, t, bs);
        zaniFilterDeblockingChroma_VerEdge_H264_8u_C1IR(pic.mb(), Pic<Zan8u>::S, a, b, t, bs);
        zaniFilterDeblockingChroma_HorEdge_H264_8u_C2IR(pic.mb(), Pic<Zan8u>::S, a, b, t, bs);
        zaniFilterDeblockingLuma_VerEdge_MBAFF_H264_8u_C1IR(pic.mb(), Pic<Zan8u>::S, a[0], b[0], t, bs);
        if (zero == 2)
            EXPECT_NE(pic.px, before.px);  // the same picture with both at 255 does change
        else
            EXPECT_EQ(pic.px, before.px) << (zero == 0 ? "alpha 0" : "beta 0");
    }
}

// Strength words of zero, and alpha 0 in the MBAFF forms, read no sample:
// the plane pointer lies in a page that may not be touched.
TEST(H264Deblock, EarlyExitsReadNoSample) {
    const long page = sysconf(_SC_PAGESIZE);
    void* mem = mmap(nullptr, static_cast<size_t>(3 * page), PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(mem, MAP_FAILED);
    Zan8u* p = static_cast<Zan8u*>(mem) + page + page / 2;
    auto* p16 = reinterpret_cast<Zan16u*>(p);
    const Zan8u a[4] = {255, 255, 255, 255}, b[4] = {255, 255, 255, 255}, t[16] = {};
    const Zan16u a16[4] = {1, 1, 1, 1}, b16[4] = {1, 1, 1, 1}, t16[16] = {};
    const Zan8u zero[16] = {};
    const Zan8u four[16] = {4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4};
    const Zan16u a16zero[4] = {0, 1, 1, 1};
    constexpr Zan32s S = 64;
    EXPECT_EQ(zaniFilterDeblockingLuma_VerEdge_H264_8u_C1IR(p, S, a, b, t, zero), zanStsOk);
    EXPECT_EQ(zaniFilterDeblockingLuma_HorEdge_H264_8u_C1IR(p, S, a, b, t, zero), zanStsOk);
    EXPECT_EQ(zaniFilterDeblockingChroma_VerEdge_H264_8u_C1IR(p, S, a, b, t, zero), zanStsOk);
    EXPECT_EQ(zaniFilterDeblockingChroma_HorEdge_H264_8u_C1IR(p, S, a, b, t, zero), zanStsOk);
    EXPECT_EQ(zaniFilterDeblockingChroma_VerEdge_H264_8u_C2IR(p, S, a, b, t, zero), zanStsOk);
    EXPECT_EQ(zaniFilterDeblockingChroma_HorEdge_H264_8u_C2IR(p, S, a, b, t, zero), zanStsOk);
    EXPECT_EQ(zaniFilterDeblockingLuma_VerEdge_MBAFF_H264_8u_C1IR(p, S, 255, 255, t, zero), zanStsOk);
    EXPECT_EQ(zaniFilterDeblockingChroma_VerEdge_MBAFF_H264_8u_C1IR(p, S, 255, 255, t, zero), zanStsOk);
    EXPECT_EQ(zaniFilterDeblockingLuma_VerEdge_MBAFF_H264_8u_C1IR(p, S, 0, 255, t, four), zanStsOk);
    EXPECT_EQ(zaniFilterDeblockingChroma_VerEdge_MBAFF_H264_8u_C1IR(p, S, 0, 255, t, four), zanStsOk);
    ZanDeblockingRecord r8 = record(p, S, a, b, t, zero);
    for (auto f : {zaniFilterDeblockingChroma_VerEdge_H264_8u_C2I, zaniFilterDeblockingChroma_HorEdge_H264_8u_C2I,
                   zaniFilterDeblockingChroma422VerEdge_H264_8u_C1IR, zaniFilterDeblockingChroma422HorEdge_H264_8u_C1IR})
        EXPECT_EQ(f(&r8), zanStsOk);
    ZanDeblockingRecord r16 = record(p16, S, a16, b16, t16, zero, 10);
    for (auto f : {zaniFilterDeblockingChroma422VerEdge_H264_16u_C1IR, zaniFilterDeblockingChroma422HorEdge_H264_16u_C1IR,
                   zaniFilterDeblockingLumaVerEdge_H264_16u_C1IR, zaniFilterDeblockingLumaHorEdge_H264_16u_C1IR,
                   zaniFilterDeblockingChromaVerEdge_H264_16u_C1IR, zaniFilterDeblockingChromaHorEdge_H264_16u_C1IR,
                   zaniFilterDeblockingLumaVerEdgeMBAFF_H264_16u_C1IR,
                   zaniFilterDeblockingChromaVerEdgeMBAFF_H264_16u_C1IR})
        EXPECT_EQ(f(&r16), zanStsOk);
    ZanDeblockingRecord r16a = record(p16, S, a16zero, b16, t16, four, 10);
    EXPECT_EQ(zaniFilterDeblockingLumaVerEdgeMBAFF_H264_16u_C1IR(&r16a), zanStsOk);
    EXPECT_EQ(zaniFilterDeblockingChromaVerEdgeMBAFF_H264_16u_C1IR(&r16a), zanStsOk);
    munmap(mem, static_cast<size_t>(3 * page));
}

// Chroma lines p1 p0 | q0 q1 = 20 24 | 40 44, alpha 30, beta 10, tc0 1:
// normal: delta = (64 - 24 + 4) >> 3 = 5 -> tc 2: 26 | 38;
// strong: p0 = (40 + 24 + 44 + 2) >> 2 = 27, q0 = (88 + 40 + 20 + 2) >> 2 = 37.
const V kChromaIn = {20, 24, 40, 44};
const V kChromaNormal = {20, 26, 38, 44};
const V kChromaStrong = {20, 27, 37, 44};

TEST(H264Deblock, Chroma420StrongOnlyWhenAllFourAreFour) {
    for (bool vertical : {true, false})
        for (Zan8u last : {Zan8u{4}, Zan8u{3}}) {
            Pic<Zan8u> pic(90);
            for (int line = 0; line < 8; ++line) pic.set_line(vertical, 4, line, {20, 24, 40, 44});
            const Zan8u a[2] = {0, 30}, b[2] = {0, 10}, t[8] = {0, 0, 0, 0, 1, 1, 1, 1};
            const Zan8u bs[16] = {0, 0, 0, 0, 0, 0, 0, 0, 4, 4, 4, last};
            auto f = vertical ? zaniFilterDeblockingChroma_VerEdge_H264_8u_C1IR
                              : zaniFilterDeblockingChroma_HorEdge_H264_8u_C1IR;
            ASSERT_EQ(f(pic.mb(), Pic<Zan8u>::S, a, b, t, bs), zanStsOk);
            for (int line = 0; line < 8; ++line)
                EXPECT_EQ(pic.line(vertical, 4, line, 4), last == 4 ? kChromaStrong : kChromaNormal) << line;
        }
}

TEST(H264Deblock, Chroma422HorizontalFirstStrengthDecidesVerticalEachSegment) {
    const Zan8u a[2] = {30, 30}, b[2] = {10, 10};
    const Zan8u t[16] = {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
    {  // horizontal: bS 4 3 3 3 on the edge at row 8 -> all 8 columns strong
        Pic<Zan8u> pic(90);
        for (int line = 0; line < 8; ++line) pic.set_line(false, 8, line, {20, 24, 40, 44});
        const Zan8u bs[16] = {0, 0, 0, 0, 0, 0, 0, 0, 4, 3, 3, 3};
        ZanDeblockingRecord r = record(pic.mb(), Pic<Zan8u>::S, a, b, t, bs);
        ASSERT_EQ(zaniFilterDeblockingChroma422HorEdge_H264_8u_C1IR(&r), zanStsOk);
        for (int line = 0; line < 8; ++line) EXPECT_EQ(pic.line(false, 8, line, 4), kChromaStrong) << line;
    }
    {  // the same with 3 first: all normal, even where bS is 4
        Pic<Zan8u> pic(90);
        for (int line = 0; line < 8; ++line) pic.set_line(false, 8, line, {20, 24, 40, 44});
        const Zan8u bs[16] = {0, 0, 0, 0, 0, 0, 0, 0, 3, 4, 4, 4};
        ZanDeblockingRecord r = record(pic.mb(), Pic<Zan8u>::S, a, b, t, bs);
        ASSERT_EQ(zaniFilterDeblockingChroma422HorEdge_H264_8u_C1IR(&r), zanStsOk);
        for (int line = 0; line < 8; ++line) EXPECT_EQ(pic.line(false, 8, line, 4), kChromaNormal) << line;
    }
    {  // vertical, 16 rows, bS 4 3 0 4 per 4 rows on the edge at column 4
        Pic<Zan8u> pic(90);
        for (int line = 0; line < 16; ++line) pic.set_line(true, 4, line, {20, 24, 40, 44});
        const Zan8u bs[16] = {0, 0, 0, 0, 0, 0, 0, 0, 4, 3, 0, 4};
        ZanDeblockingRecord r = record(pic.mb(), Pic<Zan8u>::S, a, b, t, bs);
        ASSERT_EQ(zaniFilterDeblockingChroma422VerEdge_H264_8u_C1IR(&r), zanStsOk);
        const V want[4] = {kChromaStrong, kChromaNormal, kChromaIn, kChromaStrong};
        for (int line = 0; line < 16; ++line) EXPECT_EQ(pic.line(true, 4, line, 4), want[line / 4]) << line;
    }
}

// Interleaved chroma: C2IR filters U and V alike; C2I gives U alpha 0
// (nothing passes) and V its own alpha and tc0.
TEST(H264Deblock, InterleavedChromaSameAndOwnThresholds) {
    for (bool vertical : {true, false}) {
        Pic<Zan8u> same(90), own(90);
        for (int line = 0; line < 8; ++line)
            for (int c = 0; c < 2; ++c) {
                same.set_line(vertical, 0, line, {20, 24, 40, 44}, 2, c);
                own.set_line(vertical, 0, line, {20, 24, 40, 44}, 2, c);
            }
        const Zan8u bs[16] = {2, 2, 2, 2};
        const Zan8u a[2] = {30, 0}, b[2] = {10, 0}, t[8] = {1, 1, 1, 1};
        auto f = vertical ? zaniFilterDeblockingChroma_VerEdge_H264_8u_C2IR : zaniFilterDeblockingChroma_HorEdge_H264_8u_C2IR;
        ASSERT_EQ(f(same.mb(), Pic<Zan8u>::S, a, b, t, bs), zanStsOk);
        for (int line = 0; line < 8; ++line)
            for (int c = 0; c < 2; ++c) EXPECT_EQ(same.line(vertical, 0, line, 4, 2, c), kChromaNormal);

        // U outer, V outer, U inner, V inner; tc0: U at 0..7, V at 8..15.
        const Zan8u a4[4] = {0, 30, 0, 0}, b4[4] = {10, 10, 0, 0};
        const Zan8u t16[16] = {9, 9, 9, 9, 9, 9, 9, 9, 0, 0, 0, 0, 0, 0, 0, 0};
        ZanDeblockingRecord r = record(own.mb(), Pic<Zan8u>::S, a4, b4, t16, bs);
        auto g = vertical ? zaniFilterDeblockingChroma_VerEdge_H264_8u_C2I : zaniFilterDeblockingChroma_HorEdge_H264_8u_C2I;
        ASSERT_EQ(g(&r), zanStsOk);
        // V with tc0 0 -> tc 1: 25 | 39.
        for (int line = 0; line < 8; ++line) {
            EXPECT_EQ(own.line(vertical, 0, line, 4, 2, 0), kChromaIn);
            EXPECT_EQ(own.line(vertical, 0, line, 4, 2, 1), (V{20, 25, 39, 44}));
        }
    }
}

// MBAFF left edges: luma takes bS and tc0 by line >> 1, chroma by line.
TEST(H264Deblock, MbaffLeftEdges) {
    Pic<Zan8u> luma(100);
    for (int line = 0; line < 8; ++line) luma.set_line(true, 0, line, {10, 12, 14, 16, 30, 32, 34, 36});
    const Zan8u bsl[4] = {4, 0, 1, 4}, tl[4] = {0, 0, 1, 0};
    ASSERT_EQ(zaniFilterDeblockingLuma_VerEdge_MBAFF_H264_8u_C1IR(luma.mb(), Pic<Zan8u>::S, 60, 10, tl, bsl), zanStsOk);
    const V normal = {10, 12, 15, 19, 27, 31, 34, 36};  // as in the half-edge test
    const V wantl[4] = {kStrongLong, kStrongIn, normal, kStrongLong};
    for (int line = 0; line < 8; ++line) EXPECT_EQ(luma.line(true, 0, line, 8), wantl[line >> 1]) << line;

    Pic<Zan8u> chroma(90);
    for (int line = 0; line < 4; ++line) chroma.set_line(true, 0, line, {20, 24, 40, 44});
    const Zan8u bsc[4] = {4, 1, 0, 4}, tc[4] = {1, 1, 1, 1};
    ASSERT_EQ(zaniFilterDeblockingChroma_VerEdge_MBAFF_H264_8u_C1IR(chroma.mb(), Pic<Zan8u>::S, 30, 10, tc, bsc),
              zanStsOk);
    const V wantc[4] = {kChromaStrong, kChromaNormal, kChromaIn, kChromaStrong};
    for (int line = 0; line < 4; ++line) EXPECT_EQ(chroma.line(true, 0, line, 4), wantc[line]) << line;
    EXPECT_EQ(chroma.line(true, 0, 4, 4), (V{90, 90, 90, 90}));  // line 4 is not part of the edge

    Pic<Zan16u> c16(90);
    for (int line = 0; line < 4; ++line) c16.set_line(true, 0, line, {20, 24, 40, 44});
    const Zan16u a16[1] = {30}, b16[1] = {10}, t16[4] = {1, 1, 1, 1};
    ZanDeblockingRecord r = record(c16.mb(), Pic<Zan16u>::S, a16, b16, t16, bsc, 8);
    ASSERT_EQ(zaniFilterDeblockingChromaVerEdgeMBAFF_H264_16u_C1IR(&r), zanStsOk);
    for (int line = 0; line < 4; ++line) EXPECT_EQ(c16.line(true, 0, line, 4), wantc[line]) << line;
}

}  // namespace
