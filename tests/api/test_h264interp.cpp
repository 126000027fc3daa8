// H.264 interpolation through the exported functions: statuses in their
// order, outputs untouched on failure, results against a plain model of the
// standard's luma (8.4.2.2.1) and chroma (8.4.2.2.2) sample processes,
// reads through the picture boundary against a padded plane (and the
// one-sided clamp of regions wider than the plane), the Top and Bottom row
// replacement, the bi-prediction average and the plane expansion.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <vector>

#include "zanvc.h"

namespace {

struct Rand {
    std::uint64_t s;
    explicit Rand(std::uint64_t seed) : s(seed * 0x9E3779B97F4A7C15ull + 1) {}
    std::uint32_t next() {
        s ^= s << 13;
        s ^= s >> 7;
        s ^= s << 17;
        return static_cast<std::uint32_t>(s >> 11);
    }
    Zan32s range(Zan32s lo, Zan32s hi) { return lo + static_cast<Zan32s>(next() % static_cast<std::uint32_t>(hi - lo + 1)); }
};

// A plane of samples with a readable margin on every side.
template <class T>
struct Plane {
    Zan32s w, h, m, step;
    std::vector<T> px;
    Plane(Zan32s width, Zan32s height, Zan32s margin)
        : w(width), h(height), m(margin), step(width + 2 * margin),
          px(static_cast<size_t>(step) * static_cast<size_t>(height + 2 * margin)) {}
    T* at(Zan32s x, Zan32s y) { return px.data() + static_cast<std::ptrdiff_t>(y + m) * step + x + m; }
    T get(Zan32s x, Zan32s y) const { return px[static_cast<size_t>((y + m) * step + x + m)]; }
    void fill(Rand& r, Zan32s maxValue) {
        for (auto& v : px) {
            Zan32s k = r.range(0, 9);
            v = static_cast<T>(k == 0 ? 0 : k == 1 ? maxValue : r.range(0, maxValue));
        }
    }
};

// ------------------------------------------------------------------ models

// Luma sample at integer (x, y) and fraction (xf, yf), by the standard's
// equations: half samples from the 6-tap filter on full samples, j from the
// vertical filter over the intermediate h1 values of the columns, quarter
// samples as the average of the two nearest full or half samples.
Zan32s model_luma(const std::function<Zan32s(Zan32s, Zan32s)>& S, Zan32s x, Zan32s y, Zan32s xf, Zan32s yf,
                  Zan32s maxValue) {
    auto tap = [](Zan32s e, Zan32s f, Zan32s g, Zan32s h, Zan32s i, Zan32s j) {
        return e - 5 * f + 20 * g + 20 * h - 5 * i + j;
    };
    auto clip = [&](Zan32s v) { return std::clamp(v, 0, maxValue); };
    auto row1 = [&](Zan32s yy) { return tap(S(x - 2, yy), S(x - 1, yy), S(x, yy), S(x + 1, yy), S(x + 2, yy), S(x + 3, yy)); };
    auto col1 = [&](Zan32s xx) { return tap(S(xx, y - 2), S(xx, y - 1), S(xx, y), S(xx, y + 1), S(xx, y + 2), S(xx, y + 3)); };
    const Zan32s G = S(x, y), H = S(x + 1, y), M = S(x, y + 1);
    const Zan32s b = clip((row1(y) + 16) >> 5), s = clip((row1(y + 1) + 16) >> 5);
    const Zan32s h = clip((col1(x) + 16) >> 5), m = clip((col1(x + 1) + 16) >> 5);
    const Zan32s j1 = tap(col1(x - 2), col1(x - 1), col1(x), col1(x + 1), col1(x + 2), col1(x + 3));
    const Zan32s j = clip((j1 + 512) >> 10);
    auto avg = [](Zan32s p, Zan32s q) { return (p + q + 1) >> 1; };
    const Zan32s table[4][4] = {
        {G, avg(G, b), b, avg(b, H)},            // yf 0: G a b c
        {avg(G, h), avg(b, h), avg(b, j), avg(b, m)},  // yf 1: d e f g
        {h, avg(h, j), j, avg(j, m)},            // yf 2: h i j k
        {avg(M, h), avg(h, s), avg(j, s), avg(m, s)},  // yf 3: n p q r
    };
    return table[yf][xf];
}

Zan32s model_chroma(Zan32s A, Zan32s B, Zan32s C, Zan32s D, Zan32s xf, Zan32s yf) {
    return ((8 - xf) * (8 - yf) * A + xf * (8 - yf) * B + (8 - xf) * yf * C + xf * yf * D + 32) >> 6;
}

constexpr ZaniSize kLumaSizes[] = {{4, 4}, {8, 8}, {16, 16}, {8, 4}, {4, 8}, {16, 8}, {8, 16}, {12, 8}, {24, 4}, {28, 4}, {20, 12}};
constexpr ZaniSize kChromaSizes[] = {{2, 2}, {4, 4}, {8, 8}, {2, 4}, {4, 2}, {8, 4}, {4, 8}, {6, 2}, {14, 4}, {8, 16}, {12, 6}};

// ------------------------------------------------------------ known answers

TEST(H264Interp, LumaMatchesTheStandardAtEveryPosition) {
    Rand r(1);
    Plane<Zan8u> p(48, 40, 8);
    for (int round = 0; round < 3; ++round) {
        p.fill(r, 255);
        auto S = [&](Zan32s x, Zan32s y) -> Zan32s { return p.get(x, y); };
        for (ZaniSize sz : kLumaSizes)
            for (Zan32s pos = 0; pos < 16; ++pos) {
                const Zan32s dx = pos & 3, dy = pos >> 2, x0 = r.range(0, 48 - sz.width), y0 = r.range(0, 40 - sz.height);
                std::vector<Zan8u> out(static_cast<size_t>(sz.width * sz.height) + 8, 0xAB);
                ASSERT_EQ(zaniInterpolateLuma_H264_8u_C1R(p.at(x0, y0), p.step, out.data(), sz.width, dx, dy, sz), zanStsOk);
                for (Zan32s y = 0; y < sz.height; ++y)
                    for (Zan32s x = 0; x < sz.width; ++x)
                        ASSERT_EQ(out[static_cast<size_t>(y * sz.width + x)], model_luma(S, x0 + x, y0 + y, dx, dy, 255))
                            << sz.width << "x" << sz.height << " position " << pos << " at " << x << "," << y;
                for (size_t k = static_cast<size_t>(sz.width * sz.height); k < out.size(); ++k) ASSERT_EQ(out[k], 0xAB);
            }
    }
}

// Worked by hand: one sample of 255 in a plane of zeros.
TEST(H264Interp, LumaImpulseByHand) {
    Plane<Zan8u> p(16, 16, 8);
    *p.at(4, 4) = 255;
    Zan8u out[16];
    auto one = [&](Zan32s x, Zan32s y, Zan32s dx, Zan32s dy) {
        std::fill(std::begin(out), std::end(out), 0xEE);
        EXPECT_EQ(zaniInterpolateLuma_H264_8u_C1R(p.at(x, y), p.step, out, 4, dx, dy, {4, 4}), zanStsOk);
        return Zan32s{out[0]};
    };
    EXPECT_EQ(one(4, 4, 2, 0), 159);  // b: (20 * 255 + 16) >> 5 = 159
    EXPECT_EQ(one(3, 4, 2, 0), 159);  // the other tap of weight 20
    EXPECT_EQ(one(5, 4, 2, 0), 0);    // -5 * 255: (-1275 + 16) >> 5 = -40, clipped to 0
    EXPECT_EQ(one(4, 4, 1, 0), 207);  // a: (255 + 159 + 1) >> 1
    EXPECT_EQ(one(4, 4, 3, 0), 80);   // c: (159 + 0 + 1) >> 1
    EXPECT_EQ(one(4, 4, 0, 2), 159);  // h
    EXPECT_EQ(one(4, 4, 2, 2), 100);  // j: (20 * 20 * 255 + 512) >> 10 = 100
    EXPECT_EQ(one(4, 4, 2, 3), 50);   // q: (100 + s = 0 + 1) >> 1
    EXPECT_EQ(one(4, 4, 2, 1), 130);  // f: (159 + 100 + 1) >> 1
    EXPECT_EQ(one(4, 4, 1, 1), 159);  // e: (159 + 159 + 1) >> 1
    EXPECT_EQ(one(4, 5, 2, 2), 0);    // j one row below the impulse: 20 * -5 * 255 -> negative, 0
    EXPECT_EQ(one(4, 6, 2, 2), 5);    // j, impulse two rows up: (20 * 255 + 512) >> 10 = 5
}

// Samples of only 0 and 255 that drive the centre's second stage to its
// largest sum: rows of horizontal sums 10710 where the weight is positive,
// -2550 where it is negative.
TEST(H264Interp, LumaCentreExtremesClampWithoutWrap) {
    Plane<Zan8u> p(16, 16, 8);
    // Horizontal pattern giving 10710 = 255 * 42: samples E G H J = 255, F I = 0.
    // Its opposite (F I = 255, E G H J = 0) gives -2550.
    const Zan8u hi[6] = {255, 0, 255, 255, 0, 255}, lo[6] = {0, 255, 0, 0, 255, 0};
    const bool rowHigh[6] = {true, false, true, true, false, true};
    for (int r = 0; r < 6; ++r)
        for (int c = 0; c < 6; ++c) *p.at(c, r) = rowHigh[r] ? hi[c] : lo[c];
    Zan8u out[16];
    ASSERT_EQ(zaniInterpolateLuma_H264_8u_C1R(p.at(2, 2), p.step, out, 4, 2, 2, {4, 4}), zanStsOk);
    EXPECT_EQ(out[0], 255);  // (475320 + 512) >> 10 = 464, clipped
    for (int r = 0; r < 6; ++r)
        for (int c = 0; c < 6; ++c) *p.at(c, r) = rowHigh[r] ? lo[c] : hi[c];
    ASSERT_EQ(zaniInterpolateLuma_H264_8u_C1R(p.at(2, 2), p.step, out, 4, 2, 2, {4, 4}), zanStsOk);
    EXPECT_EQ(out[0], 0);  // (-214200 + 512) >> 10 = -209, clipped
}

TEST(H264Interp, ChromaMatchesTheStandard) {
    Rand r(2);
    Plane<Zan8u> p(40, 40, 4), nv(80, 40, 4);
    p.fill(r, 255);
    nv.fill(r, 255);
    for (ZaniSize sz : kChromaSizes)
        for (Zan32s dy = 0; dy < 8; ++dy)
            for (Zan32s dx = 0; dx < 8; ++dx) {
                const Zan32s x0 = r.range(0, 30), y0 = r.range(0, 20);
                std::vector<Zan8u> out(static_cast<size_t>(sz.width * sz.height) + 4, 0xAB), u(out), v(out);
                ASSERT_EQ(zaniInterpolateChroma_H264_8u_C1R(p.at(x0, y0), p.step, out.data(), sz.width, dx, dy, sz), zanStsOk);
                ASSERT_EQ(zaniInterpolateChroma_H264_8u_C2P2R(nv.at(2 * x0, y0), nv.step, u.data(), v.data(), sz.width,
                                                              dx, dy, sz),
                          zanStsOk);
                for (Zan32s y = 0; y < sz.height; ++y)
                    for (Zan32s x = 0; x < sz.width; ++x) {
                        const size_t k = static_cast<size_t>(y * sz.width + x);
                        const Zan32s X = x0 + x, Y = y0 + y;
                        ASSERT_EQ(out[k], model_chroma(p.get(X, Y), p.get(X + 1, Y), p.get(X, Y + 1), p.get(X + 1, Y + 1), dx, dy));
                        for (Zan32s c = 0; c < 2; ++c) {
                            const Zan32s want = model_chroma(nv.get(2 * X + c, Y), nv.get(2 * X + 2 + c, Y),
                                                             nv.get(2 * X + c, Y + 1), nv.get(2 * X + 2 + c, Y + 1), dx, dy);
                            ASSERT_EQ((c ? v : u)[k], want) << "interleaved " << sz.width << "x" << sz.height;
                        }
                    }
                for (size_t k = static_cast<size_t>(sz.width * sz.height); k < out.size(); ++k)
                    ASSERT_TRUE(out[k] == 0xAB && u[k] == 0xAB && v[k] == 0xAB);
            }
}

TEST(H264Interp, ChromaByHand) {
    Plane<Zan8u> p(8, 8, 2);
    *p.at(0, 0) = 10;
    *p.at(1, 0) = 20;
    *p.at(0, 1) = 30;
    *p.at(1, 1) = 40;
    Zan8u out[4] = {};
    ASSERT_EQ(zaniInterpolateChroma_H264_8u_C1R(p.at(0, 0), p.step, out, 2, 3, 5, {2, 2}), zanStsOk);
    EXPECT_EQ(out[0], 26);  // (150 + 180 + 750 + 600 + 32) >> 6 = 1712 >> 6
    ASSERT_EQ(zaniInterpolateChroma_H264_8u_C1R(p.at(0, 0), p.step, out, 2, 4, 0, {2, 2}), zanStsOk);
    EXPECT_EQ(out[0], 15);  // (4 * 10 + 4 * 20 + 4) >> 3
    EXPECT_EQ(out[1], 10);  // (4 * 20 + 4 * 0 + 4) >> 3
    ASSERT_EQ(zaniInterpolateChroma_H264_8u_C1R(p.at(0, 0), p.step, out, 2, 0, 7, {2, 2}), zanStsOk);
    EXPECT_EQ(out[0], 28);  // (10 + 7 * 30 + 4) >> 3 = 224 >> 3
}

// The same models with 16-bit samples and the bit depth's clamp.
TEST(H264Interp, SixteenBitMatchesTheStandard) {
    Rand r(3);
    for (Zan32s depth : {9, 10, 12, 14}) {
        const Zan32s maxValue = (1 << depth) - 1;
        Plane<Zan16u> p(40, 40, 8);
        p.fill(r, maxValue);
        auto S = [&](Zan32s x, Zan32s y) -> Zan32s { return p.get(x, y); };
        for (Zan32s pos = 0; pos < 16; ++pos)
            for (ZaniSize sz : {ZaniSize{4, 4}, ZaniSize{8, 16}, ZaniSize{16, 16}, ZaniSize{4, 8}}) {
                const Zan32s x0 = r.range(0, 40 - sz.width), y0 = r.range(0, 40 - sz.height);
                std::vector<Zan16u> out(static_cast<size_t>(16 * sz.height), 0xABCD);
                ZanInterpolateSampleRecord rec{p.at(x0, y0), p.step, out.data(), 16, pos & 3, pos >> 2, sz, depth};
                ASSERT_EQ(zaniInterpolateLuma_H264_16u_C1R(&rec), zanStsOk);
                for (Zan32s y = 0; y < sz.height; ++y)
                    for (Zan32s x = 0; x < 16; ++x)
                        ASSERT_EQ(out[static_cast<size_t>(16 * y + x)],
                                  x < sz.width ? model_luma(S, x0 + x, y0 + y, pos & 3, pos >> 2, maxValue) : 0xABCD)
                            << "depth " << depth << " position " << pos;
            }
        for (Zan32s dy = 0; dy < 8; ++dy)
            for (Zan32s dx = 0; dx < 8; ++dx) {
                std::vector<Zan16u> out(8 * 8, 0xABCD);
                ZanInterpolateSampleRecord rec{p.at(3, 5), p.step, out.data(), 8, dx, dy, {4, 8}, depth};
                ASSERT_EQ(zaniInterpolateChroma_H264_16u_C1R(&rec), zanStsOk);
                for (Zan32s y = 0; y < 8; ++y)
                    for (Zan32s x = 0; x < 8; ++x) {
                        const Zan32s X = 3 + x, Y = 5 + y;
                        ASSERT_EQ(out[static_cast<size_t>(8 * y + x)],
                                  x < 4 ? model_chroma(S(X, Y), S(X + 1, Y), S(X, Y + 1), S(X + 1, Y + 1), dx, dy) : 0xABCD);
                    }
            }
    }
}

TEST(H264Interp, FourteenBitMaximalSamplesClampTo16383) {
    Plane<Zan16u> p(24, 24, 8);
    std::fill(p.px.begin(), p.px.end(), Zan16u{16383});
    // A bright centre line under dark neighbours pushes every half sample above the range.
    for (Zan32s x = -8; x < 32; ++x) *p.at(x, 2) = 0, *p.at(x, 5) = 0;
    for (Zan32s y = -8; y < 32; ++y) *p.at(2, y) = 0, *p.at(5, y) = 0;
    Zan16u out[16 * 4];
    for (Zan32s pos : {2, 8, 10}) {
        ZanInterpolateSampleRecord rec{p.at(1, 1), p.step, out, 16, pos & 3, pos >> 2, {4, 4}, 14};
        ASSERT_EQ(zaniInterpolateLuma_H264_16u_C1R(&rec), zanStsOk);
        auto S = [&](Zan32s x, Zan32s y) -> Zan32s { return p.get(x, y); };
        for (Zan32s y = 0; y < 4; ++y)
            for (Zan32s x = 0; x < 4; ++x) ASSERT_EQ(out[16 * y + x], model_luma(S, 1 + x, 1 + y, pos & 3, pos >> 2, 16383));
        EXPECT_EQ(out[16 * 2 + 2], 16383);  // column 3 between the two bright columns: clamped, not wrapped
    }
}

// ------------------------------------------------------------ Block forms

// A frame inside a larger buffer whose margin holds other values, and the
// same frame padded by repetition of its edges.
template <class T>
struct Framed {
    Plane<T> raw, padded;
    Framed(Zan32s w, Zan32s h, Zan32s margin, Rand& r, Zan32s maxValue) : raw(w, h, margin), padded(w, h, margin) {
        raw.fill(r, maxValue);
        for (Zan32s y = -margin; y < h + margin; ++y)
            for (Zan32s x = -margin; x < w + margin; ++x)
                *padded.at(x, y) = raw.get(std::clamp(x, 0, w - 1), std::clamp(y, 0, h - 1));
    }
};

TEST(H264Interp, LumaBlockReadsLikeAPaddedPlane) {
    Rand r(4);
    Framed<Zan8u> f(32, 24, 48, r, 255);
    auto S = [&](Zan32s x, Zan32s y) -> Zan32s { return f.padded.get(x, y); };
    for (int i = 0; i < 1500; ++i) {
        const ZaniSize sz = kLumaSizes[r.range(0, 6)];
        const ZaniPoint pos{r.range(0, 32 - sz.width), r.range(0, 24 - sz.height)};
        const ZaniPoint mv{r.range(-4 * 26, 4 * 26), r.range(-4 * 26, 4 * 26)};
        std::vector<Zan8u> out(static_cast<size_t>(16 * sz.height) + 16, 0x5A);
        ZanInterpolateBlockRecord rec{{f.raw.at(0, 0), nullptr}, f.raw.step, {out.data(), nullptr}, 16, {32, 24}, sz, pos, mv};
        ASSERT_EQ(zaniInterpolateLumaBlock_H264_8u_P1R(&rec), zanStsOk);
        for (Zan32s y = 0; y < sz.height; ++y)
            for (Zan32s x = 0; x < 16; ++x)
                ASSERT_EQ(out[static_cast<size_t>(16 * y + x)],
                          x < sz.width ? model_luma(S, pos.x + (mv.x >> 2) + x, pos.y + (mv.y >> 2) + y, mv.x & 3, mv.y & 3, 255) : 0x5A)
                    << "block " << sz.width << "x" << sz.height << " at " << pos.x << "," << pos.y << " mv " << mv.x
                    << "," << mv.y;
    }
}

TEST(H264Interp, SixteenBitLumaBlockReadsLikeAPaddedPlane) {
    Rand r(5);
    Framed<Zan16u> f(32, 24, 48, r, 1023);
    auto S = [&](Zan32s x, Zan32s y) -> Zan32s { return f.padded.get(x, y); };
    for (int i = 0; i < 600; ++i) {
        const ZaniSize sz = kLumaSizes[r.range(0, 6)];
        const ZaniPoint pos{r.range(0, 32 - sz.width), r.range(0, 24 - sz.height)};
        const ZaniPoint mv{r.range(-4 * 26, 4 * 26), r.range(-4 * 26, 4 * 26)};
        std::vector<Zan16u> out(static_cast<size_t>(16 * sz.height), 0x5A5A);
        ZanInterpolateBlockRecord_16u rec{{f.raw.at(0, 0), nullptr}, f.raw.step, {out.data(), nullptr}, 16, {32, 24}, sz, pos, mv, 10};
        ASSERT_EQ(zaniInterpolateLumaBlock_H264_16u_P1R(&rec), zanStsOk);
        for (Zan32s y = 0; y < sz.height; ++y)
            for (Zan32s x = 0; x < 16; ++x)
                ASSERT_EQ(out[static_cast<size_t>(16 * y + x)],
                          x < sz.width ? model_luma(S, pos.x + (mv.x >> 2) + x, pos.y + (mv.y >> 2) + y, mv.x & 3, mv.y & 3, 1023) : 0x5A5A);
    }
}

TEST(H264Interp, ChromaBlocksReadLikeAPaddedPlane) {
    Rand r(6);
    Framed<Zan8u> u(16, 12, 40, r, 255), v(16, 12, 40, r, 255), nv(32, 12, 80, r, 255);
    Framed<Zan16u> u16(16, 12, 40, r, 4095), v16(16, 12, 40, r, 4095);
    // The interleaved frame padded by pairs.
    for (Zan32s y = -40; y < 52; ++y)
        for (Zan32s x = -80; x < 112; ++x)
            *nv.padded.at(x, y) = nv.raw.get(2 * std::clamp(x >> 1, 0, 15) + (x & 1), std::clamp(y, 0, 11));
    for (int i = 0; i < 1500; ++i) {
        const ZaniSize sz = kChromaSizes[r.range(0, 5)];
        const ZaniPoint pos{r.range(0, 16 - sz.width), r.range(0, 12 - sz.height)};
        const ZaniPoint mv{r.range(-8 * 20, 8 * 20), r.range(-8 * 16, 8 * 16)};
        const Zan32s dx = mv.x & 7, dy = mv.y & 7, X = pos.x + (mv.x >> 3), Y = pos.y + (mv.y >> 3);
        std::vector<Zan8u> o0(16 * 8 + 8, 0x5A), o1(o0), n0(o0), n1(o0), c0(o0);
        std::vector<Zan16u> w0(16 * 8, 0x5A5A), w1(w0);
        ZanInterpolateBlockRecord planar{{u.raw.at(0, 0), v.raw.at(0, 0)}, u.raw.step, {o0.data(), o1.data()}, 16, {16, 12}, sz, pos, mv};
        ZanInterpolateBlockRecord inter{{nv.raw.at(0, 0), nv.raw.at(0, 0)}, nv.raw.step, {n0.data(), n1.data()}, 16, {16, 12}, sz, pos, mv};
        ZanInterpolateBlockRecord inter2 = inter;
        inter2.pDst[0] = c0.data();
        ZanInterpolateBlockRecord_16u deep{{u16.raw.at(0, 0), v16.raw.at(0, 0)}, u16.raw.step, {w0.data(), w1.data()}, 16, {16, 12}, sz, pos, mv, 12};
        ASSERT_EQ(zaniInterpolateChromaBlock_H264_8u_P2R(&planar), zanStsOk);
        ASSERT_EQ(zaniInterpolateChromaBlock_H264_8u_C2P2R(&inter), zanStsOk);
        ASSERT_EQ(zaniInterpolateChromaBlock_H264_8u_C2C2R(&inter2), zanStsOk);
        ASSERT_EQ(zaniInterpolateChromaBlock_H264_16u_P2R(&deep), zanStsOk);
        auto model = [&](const Plane<Zan8u>& p, Zan32s x, Zan32s y, Zan32s d) {
            return model_chroma(p.get(x, y), p.get(x + d, y), p.get(x, y + 1), p.get(x + d, y + 1), dx, dy);
        };
        auto model16 = [&](const Plane<Zan16u>& p, Zan32s x, Zan32s y) {
            return model_chroma(p.get(x, y), p.get(x + 1, y), p.get(x, y + 1), p.get(x + 1, y + 1), dx, dy);
        };
        for (Zan32s y = 0; y < sz.height; ++y)
            for (Zan32s x = 0; x < 16; ++x) {
                const size_t k = static_cast<size_t>(16 * y + x);
                const bool in = x < sz.width;
                ASSERT_EQ(o0[k], in ? model(u.padded, X + x, Y + y, 1) : 0x5A) << "mv " << mv.x << "," << mv.y;
                ASSERT_EQ(o1[k], in ? model(v.padded, X + x, Y + y, 1) : 0x5A);
                ASSERT_EQ(n0[k], in ? model(nv.padded, 2 * (X + x), Y + y, 2) : 0x5A);
                ASSERT_EQ(n1[k], in ? model(nv.padded, 2 * (X + x) + 1, Y + y, 2) : 0x5A);
                ASSERT_EQ(w0[k], in ? model16(u16.padded, X + x, Y + y) : 0x5A5A);
                ASSERT_EQ(w1[k], in ? model16(v16.padded, X + x, Y + y) : 0x5A5A);
                // Interleaved out: 2 * width bytes a row.
                ASSERT_EQ(c0[k], x < 2 * sz.width ? model(nv.padded, 2 * X + x, Y + y, 2) : 0x5A);
            }
    }
}

// Interleaved blocks whose width is made of several bits (6, 10, 12, 14
// pairs), both outputs, through the boundary.
TEST(H264Interp, InterleavedBlocksOfCompositeWidths) {
    Rand r(14);
    Framed<Zan8u> nv(40, 16, 80, r, 255);
    for (Zan32s y = -80; y < 96; ++y)
        for (Zan32s x = -80; x < 120; ++x)
            *nv.padded.at(x, y) = nv.raw.get(2 * std::clamp(x >> 1, 0, 19) + (x & 1), std::clamp(y, 0, 15));
    const Zan32s widths[4] = {6, 10, 12, 14};
    for (int i = 0; i < 400; ++i) {
        const ZaniSize sz{widths[i % 4], 2 * r.range(1, 8)};
        const ZaniPoint pos{r.range(0, 20 - sz.width), r.range(0, 16 - sz.height)};
        const ZaniPoint mv{r.range(-8 * 24, 8 * 24), r.range(-8 * 20, 8 * 20)};
        const Zan32s dx = mv.x & 7, dy = mv.y & 7, X = pos.x + (mv.x >> 3), Y = pos.y + (mv.y >> 3);
        std::vector<Zan8u> c(32 * 16, 0x5A), u(c), v(c);
        ZanInterpolateBlockRecord both{{nv.raw.at(0, 0), nv.raw.at(0, 0)}, nv.raw.step, {c.data(), c.data()}, 32, {20, 16}, sz, pos, mv};
        ZanInterpolateBlockRecord split = both;
        split.pDst[0] = u.data();
        split.pDst[1] = v.data();
        ASSERT_EQ(zaniInterpolateChromaBlock_H264_8u_C2C2R(&both), zanStsOk);
        ASSERT_EQ(zaniInterpolateChromaBlock_H264_8u_C2P2R(&split), zanStsOk);
        auto model = [&](Zan32s x, Zan32s y) {
            const Plane<Zan8u>& p = nv.padded;
            return model_chroma(p.get(x, y), p.get(x + 2, y), p.get(x, y + 1), p.get(x + 2, y + 1), dx, dy);
        };
        for (Zan32s y = 0; y < 16; ++y)
            for (Zan32s x = 0; x < 32; ++x) {
                const size_t k = static_cast<size_t>(32 * y + x);
                const bool row = y < sz.height;
                ASSERT_EQ(c[k], row && x < 2 * sz.width ? model(2 * X + x, Y + y) : 0x5A) << sz.width << " pairs, mv " << mv.x << "," << mv.y;
                ASSERT_EQ(u[k], row && x < sz.width ? model(2 * (X + x), Y + y) : 0x5A);
                ASSERT_EQ(v[k], row && x < sz.width ? model(2 * (X + x) + 1, Y + y) : 0x5A);
            }
    }
}

// Blocks taller than 16 rows and wider than 16 columns cross the boundary in
// several bands of the stack buffer.
TEST(H264Interp, TallAndWideBlocksThroughTheBoundary) {
    Rand r(13);
    Framed<Zan8u> f(40, 40, 64, r, 255), u(20, 40, 40, r, 255), v(20, 40, 40, r, 255);
    Framed<Zan16u> g(40, 40, 64, r, 4095), u16(20, 40, 40, r, 1023), v16(20, 40, 40, r, 1023);
    auto S = [&](Zan32s x, Zan32s y) -> Zan32s { return f.padded.get(x, y); };
    auto S16 = [&](Zan32s x, Zan32s y) -> Zan32s { return g.padded.get(x, y); };
    for (int i = 0; i < 300; ++i) {
        const ZaniSize sz{i % 2 ? 28 : 12, 4 * r.range(5, 9)};
        const ZaniPoint pos{r.range(0, 40 - sz.width), r.range(0, 40 - sz.height)};
        const ZaniPoint mv{r.range(-4 * 30, 4 * 30), r.range(-4 * 30, 4 * 30)};
        std::vector<Zan8u> out(static_cast<size_t>(32 * sz.height), 0x5A);
        std::vector<Zan16u> out16(out.size(), 0x5A5A);
        ZanInterpolateBlockRecord rec{{f.raw.at(0, 0), nullptr}, f.raw.step, {out.data(), nullptr}, 32, {40, 40}, sz, pos, mv};
        ASSERT_EQ(zaniInterpolateLumaBlock_H264_8u_P1R(&rec), zanStsOk);
        ZanInterpolateBlockRecord_16u rec16{{g.raw.at(0, 0), nullptr}, g.raw.step, {out16.data(), nullptr}, 32, {40, 40}, sz, pos, mv, 12};
        ASSERT_EQ(zaniInterpolateLumaBlock_H264_16u_P1R(&rec16), zanStsOk);
        for (Zan32s y = 0; y < sz.height; ++y)
            for (Zan32s x = 0; x < 32; ++x) {
                const Zan32s X = pos.x + (mv.x >> 2) + x, Y = pos.y + (mv.y >> 2) + y;
                ASSERT_EQ(out[static_cast<size_t>(32 * y + x)], x < sz.width ? model_luma(S, X, Y, mv.x & 3, mv.y & 3, 255) : 0x5A)
                    << sz.width << "x" << sz.height << " mv " << mv.x << "," << mv.y;
                ASSERT_EQ(out16[static_cast<size_t>(32 * y + x)], x < sz.width ? model_luma(S16, X, Y, mv.x & 3, mv.y & 3, 4095) : 0x5A5A);
            }
        // Chroma: 14 wide (8 + 4 + 2), 18 to 34 rows.
        const ZaniSize cs{14, 2 * r.range(9, 17)};
        const ZaniPoint cpos{r.range(0, 6), r.range(0, 40 - cs.height)};
        const ZaniPoint cmv{r.range(-8 * 20, 8 * 20), r.range(-8 * 30, 8 * 30)};
        std::vector<Zan8u> o0(static_cast<size_t>(16 * cs.height), 0x5A), o1(o0);
        ZanInterpolateBlockRecord c{{u.raw.at(0, 0), v.raw.at(0, 0)}, u.raw.step, {o0.data(), o1.data()}, 16, {20, 40}, cs, cpos, cmv};
        ASSERT_EQ(zaniInterpolateChromaBlock_H264_8u_P2R(&c), zanStsOk);
        std::vector<Zan16u> w0(static_cast<size_t>(16 * cs.height), 0x5A5A), w1(w0);
        ZanInterpolateBlockRecord_16u c16{{u16.raw.at(0, 0), v16.raw.at(0, 0)}, u16.raw.step, {w0.data(), w1.data()}, 16, {20, 40}, cs, cpos, cmv, 10};
        ASSERT_EQ(zaniInterpolateChromaBlock_H264_16u_P2R(&c16), zanStsOk);
        const Zan32s dx = cmv.x & 7, dy = cmv.y & 7;
        for (Zan32s y = 0; y < cs.height; ++y)
            for (Zan32s x = 0; x < 16; ++x) {
                const Zan32s X = cpos.x + (cmv.x >> 3) + x, Y = cpos.y + (cmv.y >> 3) + y;
                for (int p = 0; p < 2; ++p) {
                    const Plane<Zan8u>& pl = p ? v.padded : u.padded;
                    const Zan32s want = model_chroma(pl.get(X, Y), pl.get(X + 1, Y), pl.get(X, Y + 1), pl.get(X + 1, Y + 1), dx, dy);
                    ASSERT_EQ((p ? o1 : o0)[static_cast<size_t>(16 * y + x)], x < cs.width ? want : 0x5A)
                        << "chroma " << cs.height << " rows, mv " << cmv.x << "," << cmv.y;
                    const Plane<Zan16u>& ql = p ? v16.padded : u16.padded;
                    const Zan32s want16 = model_chroma(ql.get(X, Y), ql.get(X + 1, Y), ql.get(X, Y + 1), ql.get(X + 1, Y + 1), dx, dy);
                    ASSERT_EQ((p ? w1 : w0)[static_cast<size_t>(16 * y + x)], x < cs.width ? want16 : 0x5A5A);
                }
            }
    }
}

TEST(H264Interp, BlockFarOutsideReadsTheCornerSample) {
    Rand r(7);
    Framed<Zan8u> f(20, 20, 4, r, 255);
    std::array<Zan8u, 16 * 16> out;
    ZanInterpolateBlockRecord rec{{f.raw.at(0, 0), nullptr}, f.raw.step, {out.data(), nullptr}, 16, {20, 20}, {16, 16}, {0, 0}, {-4000 + 2, -4000 + 1}};
    ASSERT_EQ(zaniInterpolateLumaBlock_H264_8u_P1R(&rec), zanStsOk);
    for (auto v : out) ASSERT_EQ(v, f.raw.get(0, 0));
    rec.pointVector = {4000 + 3, 4000 + 2};
    ASSERT_EQ(zaniInterpolateLumaBlock_H264_8u_P1R(&rec), zanStsOk);
    for (auto v : out) ASSERT_EQ(v, f.raw.get(19, 19));
}

// A zero vector copies the block as it lies, inside the plane or not.
TEST(H264Interp, ZeroVectorCopiesWithoutBoundaryHandling) {
    Rand r(8);
    Framed<Zan8u> f(20, 20, 8, r, 255);
    std::array<Zan8u, 8 * 8> out;
    ZanInterpolateBlockRecord rec{{f.raw.at(0, 0), nullptr}, f.raw.step, {out.data(), nullptr}, 8, {20, 20}, {8, 8}, {-3, 15}, {0, 0}};
    ASSERT_EQ(zaniInterpolateLumaBlock_H264_8u_P1R(&rec), zanStsOk);
    for (Zan32s y = 0; y < 8; ++y)
        for (Zan32s x = 0; x < 8; ++x) ASSERT_EQ(out[static_cast<size_t>(8 * y + x)], f.raw.get(x - 3, y + 15));
    std::array<Zan8u, 8 * 8> u, v;
    Framed<Zan8u> g(20, 20, 8, r, 255);
    ZanInterpolateBlockRecord c{{f.raw.at(0, 0), g.raw.at(0, 0)}, f.raw.step, {u.data(), v.data()}, 8, {10, 10}, {8, 8}, {-2, 6}, {0, 0}};
    ASSERT_EQ(zaniInterpolateChromaBlock_H264_8u_P2R(&c), zanStsOk);
    for (Zan32s y = 0; y < 8; ++y)
        for (Zan32s x = 0; x < 8; ++x) {
            ASSERT_EQ(u[static_cast<size_t>(8 * y + x)], f.raw.get(x - 2, y + 6));
            ASSERT_EQ(v[static_cast<size_t>(8 * y + x)], g.raw.get(x - 2, y + 6));
        }
}

// At the right edge: dx 0 reads the block in place; dx 1 reads 3 columns
// further and so goes through the boundary.
TEST(H264Interp, RightEdgeBoundaryOnlyWhenTheFilterCrossesIt) {
    Rand r(9);
    Framed<Zan8u> f(24, 24, 8, r, 255);
    auto S = [&](Zan32s x, Zan32s y) -> Zan32s { return f.padded.get(x, y); };
    auto R = [&](Zan32s x, Zan32s y) -> Zan32s { return f.raw.get(x, y); };
    std::array<Zan8u, 8 * 8> out;
    ZanInterpolateBlockRecord rec{{f.raw.at(0, 0), nullptr}, f.raw.step, {out.data(), nullptr}, 8, {24, 24}, {8, 8}, {16, 4}, {0, 6}};
    ASSERT_EQ(zaniInterpolateLumaBlock_H264_8u_P1R(&rec), zanStsOk);  // dx 0, dy 2: rows 3 .. 17
    for (Zan32s y = 0; y < 8; ++y)
        for (Zan32s x = 0; x < 8; ++x) ASSERT_EQ(out[static_cast<size_t>(8 * y + x)], model_luma(R, 16 + x, 5 + y, 0, 2, 255));
    rec.pointVector = {1, 6};
    ASSERT_EQ(zaniInterpolateLumaBlock_H264_8u_P1R(&rec), zanStsOk);
    bool differs = false;
    for (Zan32s y = 0; y < 8; ++y)
        for (Zan32s x = 0; x < 8; ++x) {
            ASSERT_EQ(out[static_cast<size_t>(8 * y + x)], model_luma(S, 16 + x, 5 + y, 1, 2, 255));
            differs |= out[static_cast<size_t>(8 * y + x)] != model_luma(R, 16 + x, 5 + y, 1, 2, 255);
        }
    EXPECT_TRUE(differs);  // the margin's own samples would have given another result
}

// A region wider than the plane that starts left of it is clamped on the
// left only: its columns past the plane's end are read from memory.  The
// same with rows.
TEST(H264Interp, WideRegionIsClampedOnOneSideOnly) {
    Rand r(10);
    Plane<Zan8u> p(6, 6, 16);
    p.fill(r, 255);
    std::array<Zan8u, 8 * 4> out;
    // Vector (0, 4): one row down, no fraction; the block starts one column left of the plane.
    ZanInterpolateBlockRecord rec{{p.at(0, 0), nullptr}, p.step, {out.data(), nullptr}, 8, {6, 6}, {8, 4}, {-1, 0}, {0, 4}};
    ASSERT_EQ(zaniInterpolateLumaBlock_H264_8u_P1R(&rec), zanStsOk);
    for (Zan32s y = 0; y < 4; ++y)
        for (Zan32s x = 0; x < 8; ++x) ASSERT_EQ(out[static_cast<size_t>(8 * y + x)], p.get(std::max(x - 1, 0), y + 1));
    // Rows: 8 rows from row -1 of a 6-row plane, no fraction.
    std::array<Zan8u, 4 * 8> col;
    ZanInterpolateBlockRecord rows{{p.at(0, 0), nullptr}, p.step, {col.data(), nullptr}, 4, {6, 6}, {4, 8}, {0, -1}, {4, 0}};
    ASSERT_EQ(zaniInterpolateLumaBlock_H264_8u_P1R(&rows), zanStsOk);
    for (Zan32s y = 0; y < 8; ++y)
        for (Zan32s x = 0; x < 4; ++x) ASSERT_EQ(col[static_cast<size_t>(4 * y + x)], p.get(x + 1, std::max(y - 1, 0)));
}

// ------------------------------------------------------ Top and Bottom forms

TEST(H264Interp, TopAndBottomReplaceRowsBeyondTheEdge) {
    Rand r(11);
    Plane<Zan8u> p(40, 48, 8);
    Plane<Zan16u> q(40, 48, 8);
    p.fill(r, 255);
    q.fill(r, 1023);
    for (ZaniSize sz : {ZaniSize{16, 16}, ZaniSize{8, 4}, ZaniSize{4, 8}, ZaniSize{12, 32}})
        for (Zan32s out : {-4, -3, -2, -1, 0, 1, 2, 3, 7, 15})
            for (Zan32s pos = 0; pos < 16; ++pos)
                for (bool top : {true, false}) {
                    const Zan32s dx = pos & 3, dy = pos >> 2, x0 = 10, y0 = 8;
                    // Row yy (relative to the block) reads this row instead.
                    auto map = [&](Zan32s yy) {
                        return top ? std::max(yy, out) : std::min(yy, sz.height - out - 1);
                    };
                    auto S = [&](Zan32s x, Zan32s y) -> Zan32s { return p.get(x, y0 + map(y - y0)); };
                    auto S16 = [&](Zan32s x, Zan32s y) -> Zan32s { return q.get(x, y0 + map(y - y0)); };
                    std::vector<Zan8u> o(static_cast<size_t>(sz.width * sz.height), 0x5A);
                    auto f = top ? zaniInterpolateLumaTop_H264_8u_C1R : zaniInterpolateLumaBottom_H264_8u_C1R;
                    ASSERT_EQ(f(p.at(x0, y0), p.step, o.data(), sz.width, dx, dy, out, sz), zanStsOk);
                    for (Zan32s y = 0; y < sz.height; ++y)
                        for (Zan32s x = 0; x < sz.width; ++x)
                            ASSERT_EQ(o[static_cast<size_t>(sz.width * y + x)], model_luma(S, x0 + x, y0 + y, dx, dy, 255))
                                << (top ? "top" : "bottom") << " out " << out << " position " << pos << " size "
                                << sz.width << "x" << sz.height;
                    if (sz.width == 12) continue;  // not a 16-bit size
                    std::vector<Zan16u> o16(static_cast<size_t>(sz.width * sz.height), 0x5A5A);
                    ZanInterpolateSampleRecord rec{q.at(x0, y0), q.step, o16.data(), sz.width, dx, dy, sz, 10};
                    auto f16 = top ? zaniInterpolateLumaTop_H264_16u_C1R : zaniInterpolateLumaBottom_H264_16u_C1R;
                    ASSERT_EQ(f16(&rec, out), zanStsOk);
                    for (Zan32s y = 0; y < sz.height; ++y)
                        for (Zan32s x = 0; x < sz.width; ++x)
                            ASSERT_EQ(o16[static_cast<size_t>(sz.width * y + x)], model_luma(S16, x0 + x, y0 + y, dx, dy, 1023));
                }
    for (ZaniSize sz : {ZaniSize{8, 8}, ZaniSize{2, 2}, ZaniSize{4, 16}, ZaniSize{6, 20}})
        for (Zan32s out : {-2, -1, 0, 1, 2, 5})
            for (Zan32s dy = 0; dy < 8; dy += 3)
                for (Zan32s dx = 0; dx < 8; dx += 3)
                    for (bool top : {true, false}) {
                        const Zan32s x0 = 4, y0 = 6;
                        auto map = [&](Zan32s yy) { return top ? std::max(yy, out) : std::min(yy, sz.height - out - 1); };
                        auto model = [&](auto& pl, Zan32s x, Zan32s y) {
                            auto g = [&](Zan32s xx, Zan32s yy) -> Zan32s { return pl.get(x0 + xx, y0 + map(yy)); };
                            return model_chroma(g(x, y), g(x + 1, y), g(x, y + 1), g(x + 1, y + 1), dx, dy);
                        };
                        std::vector<Zan8u> o(static_cast<size_t>(sz.width * sz.height), 0x5A);
                        auto f = top ? zaniInterpolateChromaTop_H264_8u_C1R : zaniInterpolateChromaBottom_H264_8u_C1R;
                        ASSERT_EQ(f(p.at(x0, y0), p.step, o.data(), sz.width, dx, dy, out, sz), zanStsOk);
                        for (Zan32s y = 0; y < sz.height; ++y)
                            for (Zan32s x = 0; x < sz.width; ++x)
                                ASSERT_EQ(o[static_cast<size_t>(sz.width * y + x)], model(p, x, y))
                                    << (top ? "top" : "bottom") << " out " << out << " dx " << dx << " dy " << dy;
                        if (sz.width == 6 || sz.height > 16) continue;
                        std::vector<Zan16u> o16(static_cast<size_t>(8 * sz.height), 0x5A5A);
                        ZanInterpolateSampleRecord rec{q.at(x0, y0), q.step, o16.data(), 8, dx, dy, sz, 10};
                        auto f16 = top ? zaniInterpolateChromaTop_H264_16u_C1R : zaniInterpolateChromaBottom_H264_16u_C1R;
                        ASSERT_EQ(f16(&rec, out), zanStsOk);
                        for (Zan32s y = 0; y < sz.height; ++y)
                            for (Zan32s x = 0; x < sz.width; ++x)
                                ASSERT_EQ(o16[static_cast<size_t>(8 * y + x)], model(q, x, y));
                    }
}

// ----------------------------------------------------- average and expand

TEST(H264Interp, BiPredictionAverageRoundsUp) {
    std::array<Zan8u, 20 * 20> a, b, d;
    for (size_t i = 0; i < a.size(); ++i) a[i] = static_cast<Zan8u>(i * 7), b[i] = static_cast<Zan8u>(255 - i * 3);
    for (Zan32u w = 2; w <= 16; ++w)
        for (Zan32u h = 2; h <= 16; h += 3) {
            d.fill(0xEE);
            ASSERT_EQ(zaniInterpolateBlock_H264_8u_P2P1R(a.data(), b.data(), d.data(), w, h, 20), zanStsOk);
            for (Zan32u y = 0; y < 20; ++y)
                for (Zan32u x = 0; x < 20; ++x) {
                    const size_t k = 20 * y + x;
                    ASSERT_EQ(d[k], x < w && y < h ? (a[k] + b[k] + 1) >> 1 : 0xEE) << w << "x" << h;
                }
            d.fill(0xEE);
            ASSERT_EQ(zaniInterpolateBlock_H264_8u_P3P1R(a.data(), b.data() + 1, d.data(), w, h, 20, 19, 18), zanStsOk);
            for (Zan32u y = 0; y < h; ++y)
                for (Zan32u x = 0; x < w; ++x) ASSERT_EQ(d[18 * y + x], (a[20 * y + x] + b[19 * y + x + 1] + 1) >> 1);
        }
    Zan8u one[2] = {0, 255}, two[2] = {1, 254}, out[2];
    ASSERT_EQ(zaniInterpolateBlock_H264_8u_P3P1R(one, two, out, 2, 2, 0, 0, 0), zanStsOk);
    EXPECT_EQ(out[0], 1);    // (0 + 1 + 1) >> 1
    EXPECT_EQ(out[1], 255);  // (255 + 254 + 1) >> 1
}

// Model of the expansion: each of the structure's rows, in order bottom,
// sides, top.
void expand_model(std::vector<Zan8u>& buf, Zan32s origin, Zan32s step, Zan32s w, Zan32s h, Zan32s e, Zan32s structure) {
    auto at = [&](Zan32s x, Zan32s y) -> Zan8u& { return buf[static_cast<size_t>(origin + y * step + x)]; };
    const Zan32s first = structure == 2 ? 1 : 0, inc = structure == 0 ? 1 : 2;
    const Zan32s last = structure == 1 ? h - 2 : h - 1;
    const Zan32s below = structure == 0 ? e : structure == 1 ? (e + 1) / 2 : e / 2;
    const Zan32s above = structure == 0 ? e : structure == 1 ? e / 2 : (e + 1) / 2;
    for (Zan32s k = 1; k <= below; ++k)
        for (Zan32s x = 0; x < w; ++x) at(x, last + k * inc) = at(x, last);
    for (Zan32s y = first; y <= last + below * inc; y += inc)
        for (Zan32s k = 1; k <= e; ++k) at(-k, y) = at(0, y), at(w - 1 + k, y) = at(w - 1, y);
    for (Zan32s k = 1; k <= above; ++k)
        for (Zan32s x = -e; x < w + e; ++x) at(x, first - k * inc) = at(x, first);
}

TEST(H264Interp, ExpandPlaneFramesAndFields) {
    Rand r(12);
    for (Zan32s structure = 0; structure < 3; ++structure)
        for (Zan32s e : {1, 2, 3, 5, 8})
            for (Zan32s h : {2, 4, 10}) {
                const Zan32s w = 7, step = 7 + 2 * 8 + 3, origin = 10 * step + 9;
                std::vector<Zan8u> buf(static_cast<size_t>(step * (h + 20))), want;
                for (auto& v : buf) v = static_cast<Zan8u>(r.next());
                want = buf;
                expand_model(want, origin, step, w, h, e, structure);
                ASSERT_EQ(zaniExpandPlane_H264_8u_C1R(buf.data() + origin, w, static_cast<Zan32u>(h), step,
                                                      static_cast<Zan32u>(e), structure),
                          zanStsOk);
                ASSERT_EQ(buf, want) << "structure " << structure << " expand " << e << " height " << h;
            }
    // By hand: a 2x2 frame expanded by 1.
    std::array<Zan8u, 16> f{};
    f[5] = 1, f[6] = 2, f[9] = 3, f[10] = 4;
    ASSERT_EQ(zaniExpandPlane_H264_8u_C1R(f.data() + 5, 2, 2, 4, 1, 0), zanStsOk);
    EXPECT_EQ(f, (std::array<Zan8u, 16>{1, 1, 2, 2, 1, 1, 2, 2, 3, 3, 4, 4, 3, 3, 4, 4}));
}

// ------------------------------------------------------------- statuses

TEST(H264Interp, StatusesInTheirOrder) {
    std::array<Zan8u, 64 * 64> src{};
    std::array<Zan8u, 32 * 32> dst;
    dst.fill(0x11);
    const Zan8u* s = src.data() + 64 * 8 + 8;
    Zan8u* d = dst.data();
    // Plain 8-bit: null, then fraction, then size; no step test.
    EXPECT_EQ(zaniInterpolateLuma_H264_8u_C1R(nullptr, 64, d, 32, 9, 9, {5, 5}), zanStsNullPtr);
    EXPECT_EQ(zaniInterpolateLuma_H264_8u_C1R(s, 64, nullptr, 32, 9, 9, {5, 5}), zanStsNullPtr);
    EXPECT_EQ(zaniInterpolateLuma_H264_8u_C1R(s, 64, d, 32, 4, 0, {5, 5}), zanStsBadArg);
    EXPECT_EQ(zaniInterpolateLuma_H264_8u_C1R(s, 64, d, 32, 0, -1, {5, 5}), zanStsBadArg);
    EXPECT_EQ(zaniInterpolateLuma_H264_8u_C1R(s, 64, d, 32, 3, 3, {5, 4}), zanStsSizeBad);
    EXPECT_EQ(zaniInterpolateLuma_H264_8u_C1R(s, 64, d, 32, 3, 3, {4, 6}), zanStsSizeBad);
    EXPECT_EQ(zaniInterpolateLuma_H264_8u_C1R(s, 64, d, 32, 3, 3, {32, 4}), zanStsSizeBad);
    EXPECT_EQ(zaniInterpolateLumaTop_H264_8u_C1R(s, 0, d, 0, 0, 4, 0, {2, 4}), zanStsBadArg);
    EXPECT_EQ(zaniInterpolateLumaBottom_H264_8u_C1R(s, 0, d, 0, 0, 0, 0, {2, 4}), zanStsSizeBad);
    EXPECT_EQ(zaniInterpolateChroma_H264_8u_C1R(s, 64, d, 32, 8, 0, {3, 3}), zanStsBadArg);
    EXPECT_EQ(zaniInterpolateChroma_H264_8u_C1R(s, 64, d, 32, 7, 7, {2, 3}), zanStsSizeBad);
    EXPECT_EQ(zaniInterpolateChroma_H264_8u_C1R(s, 64, d, 32, 7, 7, {1, 2}), zanStsSizeBad);
    EXPECT_EQ(zaniInterpolateChroma_H264_8u_C1R(s, 64, d, 32, 7, 7, {16, 2}), zanStsSizeBad);
    EXPECT_EQ(zaniInterpolateChroma_H264_8u_C2P2R(s, 64, d, nullptr, 32, 8, 8, {3, 3}), zanStsNullPtr);
    EXPECT_EQ(zaniInterpolateChroma_H264_8u_C2P2R(s, 64, d, d + 8, 32, 0, 8, {3, 3}), zanStsBadArg);
    EXPECT_EQ(zaniInterpolateChromaTop_H264_8u_C1R(nullptr, 64, d, 32, 8, 0, 0, {3, 3}), zanStsNullPtr);
    EXPECT_EQ(zaniInterpolateChromaBottom_H264_8u_C1R(s, 64, d, 32, 1, 1, 0, {4, 5}), zanStsSizeBad);

    // 16-bit: null, step, fraction, size.
    std::array<Zan16u, 40 * 40> s16{};
    std::array<Zan16u, 16 * 16> d16;
    d16.fill(0x2222);
    const Zan16u* ps = s16.data() + 40 * 4 + 4;
    ZanInterpolateSampleRecord rec{ps, 40, d16.data(), 16, 5, 5, {16, 4}, 10};
    EXPECT_EQ(zaniInterpolateLuma_H264_16u_C1R(nullptr), zanStsNullPtr);
    rec.pDst = nullptr;
    EXPECT_EQ(zaniInterpolateLuma_H264_16u_C1R(&rec), zanStsNullPtr);
    rec.pDst = d16.data();
    rec.dstStep = 15;
    EXPECT_EQ(zaniInterpolateLuma_H264_16u_C1R(&rec), zanStsStepBad);
    EXPECT_EQ(zaniInterpolateLumaTop_H264_16u_C1R(&rec, 0), zanStsStepBad);
    rec.dstStep = 16;
    EXPECT_EQ(zaniInterpolateLuma_H264_16u_C1R(&rec), zanStsBadArg);
    rec.dx = -1;
    rec.dy = 0;
    EXPECT_EQ(zaniInterpolateLumaBottom_H264_16u_C1R(&rec, 0), zanStsBadArg);
    rec.dx = 3;
    EXPECT_EQ(zaniInterpolateLuma_H264_16u_C1R(&rec), zanStsSizeBad);  // 16x4
    rec.roiSize = {4, 16};
    EXPECT_EQ(zaniInterpolateLuma_H264_16u_C1R(&rec), zanStsSizeBad);
    rec.roiSize = {12, 8};
    EXPECT_EQ(zaniInterpolateLuma_H264_16u_C1R(&rec), zanStsSizeBad);
    for (auto v : d16) ASSERT_EQ(v, 0x2222);
    rec.roiSize = {16, 8};
    EXPECT_EQ(zaniInterpolateLuma_H264_16u_C1R(&rec), zanStsOk);
    ZanInterpolateSampleRecord c16{ps, 7, d16.data(), 16, 8, 8, {3, 3}, 10};
    EXPECT_EQ(zaniInterpolateChroma_H264_16u_C1R(&c16), zanStsStepBad);
    c16.srcStep = 8;
    EXPECT_EQ(zaniInterpolateChromaTop_H264_16u_C1R(&c16, 1), zanStsBadArg);
    c16.dx = c16.dy = 7;
    EXPECT_EQ(zaniInterpolateChromaBottom_H264_16u_C1R(&c16, 1), zanStsSizeBad);
    c16.roiSize = {8, 6};
    EXPECT_EQ(zaniInterpolateChroma_H264_16u_C1R(&c16), zanStsSizeBad);
    c16.roiSize = {16, 2};
    EXPECT_EQ(zaniInterpolateChroma_H264_16u_C1R(&c16), zanStsSizeBad);
    c16.roiSize = {2, 16};
    EXPECT_EQ(zaniInterpolateChroma_H264_16u_C1R(&c16), zanStsOk);

    // Block forms: null pointers in the record, then size.
    ZanInterpolateBlockRecord b{{s, s}, 64, {d, d + 16}, 32, {40, 40}, {6, 4}, {0, 0}, {1, 1}};
    EXPECT_EQ(zaniInterpolateLumaBlock_H264_8u_P1R(nullptr), zanStsNullPtr);
    EXPECT_EQ(zaniInterpolateLumaBlock_H264_8u_P1R(&b), zanStsSizeBad);
    b.pSrc[1] = nullptr;  // luma reads the first plane only
    EXPECT_EQ(zaniInterpolateLumaBlock_H264_8u_P1R(&b), zanStsSizeBad);
    EXPECT_EQ(zaniInterpolateChromaBlock_H264_8u_P2R(&b), zanStsNullPtr);
    EXPECT_EQ(zaniInterpolateChromaBlock_H264_8u_C2C2R(&b), zanStsNullPtr);
    EXPECT_EQ(zaniInterpolateChromaBlock_H264_8u_C2P2R(&b), zanStsNullPtr);
    b.pSrc[1] = s;
    b.pDst[0] = nullptr;
    EXPECT_EQ(zaniInterpolateLumaBlock_H264_8u_P1R(&b), zanStsNullPtr);
    b.pDst[0] = d;
    b.sizeBlock = {6, 3};
    EXPECT_EQ(zaniInterpolateChromaBlock_H264_8u_P2R(&b), zanStsSizeBad);
    b.sizeBlock = {16, 2};
    EXPECT_EQ(zaniInterpolateChromaBlock_H264_8u_C2P2R(&b), zanStsSizeBad);
    ZanInterpolateBlockRecord_16u b16{{ps, ps}, 40, {d16.data(), nullptr}, 16, {30, 30}, {8, 8}, {0, 0}, {1, 1}, 10};
    EXPECT_EQ(zaniInterpolateChromaBlock_H264_16u_P2R(&b16), zanStsNullPtr);
    b16.sizeBlock = {8, 6};
    EXPECT_EQ(zaniInterpolateLumaBlock_H264_16u_P1R(&b16), zanStsSizeBad);
    for (auto v : dst) ASSERT_EQ(v, 0x11);

    // Average: null, then sizes 2..16.
    EXPECT_EQ(zaniInterpolateBlock_H264_8u_P2P1R(s, nullptr, d, 1, 40, 32), zanStsNullPtr);
    EXPECT_EQ(zaniInterpolateBlock_H264_8u_P2P1R(s, s, d, 1, 8, 32), zanStsSizeBad);
    EXPECT_EQ(zaniInterpolateBlock_H264_8u_P2P1R(s, s, d, 8, 17, 32), zanStsSizeBad);
    EXPECT_EQ(zaniInterpolateBlock_H264_8u_P3P1R(s, s, d, 0, 8, 32, 32, 32), zanStsSizeBad);
    EXPECT_EQ(zaniInterpolateBlock_H264_8u_P3P1R(nullptr, s, d, 0, 8, 32, 32, 32), zanStsNullPtr);
    for (auto v : dst) ASSERT_EQ(v, 0x11);

    // Expansion: null, sizes, expand 0 before the structure, structure.
    Zan8u* plane = dst.data() + 32 * 8 + 8;
    EXPECT_EQ(zaniExpandPlane_H264_8u_C1R(nullptr, 0, 3, 32, 4, 9), zanStsNullPtr);
    EXPECT_EQ(zaniExpandPlane_H264_8u_C1R(plane, 8, 3, 32, 4, 9), zanStsSizeBad);
    EXPECT_EQ(zaniExpandPlane_H264_8u_C1R(plane, 8, 0, 32, 4, 9), zanStsSizeBad);
    EXPECT_EQ(zaniExpandPlane_H264_8u_C1R(plane, 0, 8, 32, 4, 9), zanStsSizeBad);
    EXPECT_EQ(zaniExpandPlane_H264_8u_C1R(plane, 8, 8, 32, 0, 9), zanStsOk);
    EXPECT_EQ(zaniExpandPlane_H264_8u_C1R(plane, 8, 8, 32, 4, 3), zanStsBadArg);
    EXPECT_EQ(zaniExpandPlane_H264_8u_C1R(plane, 8, 8, 32, 4, -1), zanStsBadArg);
    for (auto v : dst) ASSERT_EQ(v, 0x11);
}

}  // namespace
