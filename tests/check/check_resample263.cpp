// Every resampling and backward-prediction vector kernel against its scalar
// rule, and the scalar rules against models written from the filters'
// formulas.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "check/harness.h"
#include "h26x_mpeg4/resample263.h"

namespace {

using namespace zan;
using namespace zan::check;
using namespace zan::resample263;

const Kernels& kernels() { return for_path(u8::resample263::kernels, n8::resample263::kernels); }

// Destination size of a plane kernel for a w x h source.
void out_size(int kind, Zan32s w, Zan32s h, Zan32s& ow, Zan32s& oh) {
    ow = kind == kDown ? w / 2 : kind == kUpVer ? w : 2 * w;
    oh = kind == kDown ? h / 2 : kind == kUpHor ? h : 2 * h;
}

// Bytes either all 0/255 (every fourth draw) or random with extremes favoured.
void fill_src(Region& r, Rng& rng, int d) {
    r.fill(rng);
    if (d % 4 == 3)
        for (auto& b : r.storage()) b = (b & 1) ? 255 : 0;
}

TEST(CheckResample263, PlaneKernelsMatchRules) {
    Rng rng(11);
    for (const auto& e : kernels().plane)
        for (int d = 0; d < draws(); ++d) {
            bool up = e.param != kDown;
            Zan32s w = up ? 2 * rng.range(2, 24) : rng.range(1, 60);
            Zan32s h = up ? 2 * rng.range(2, 6) : rng.range(1, 12);
            if (d % 7 == 0) w = up ? 4 : 1;
            Zan32s ow, oh;
            out_size(e.param, w, h, ow, oh);
            auto ss = steps_for(w), ds = steps_for(ow < 1 ? 1 : ow);
            Zan32s sStep = ss[static_cast<size_t>(d) % ss.size()], dStep = ds[static_cast<size_t>(d / 3) % ds.size()];
            Region src(w, h, sStep, d % 64);
            fill_src(src, rng, d);
            Region want(ow < 1 ? 1 : ow, oh < 1 ? 1 : oh, dStep, (d * 7) % 64),
                got(ow < 1 ? 1 : ow, oh < 1 ? 1 : oh, dStep, (d * 7) % 64);
            want.set(0x5A);
            got.set(0x5A);
            Zan32s r = d & 1, fill = (d % 3 == 0) ? -1 : rng.range(0, 255);
            e.rule(src.origin(), sStep, w, h, want.origin(), dStep, r, fill);
            e.simd(src.origin(), sStep, w, h, got.origin(), dStep, r, fill);
            ASSERT_TRUE(got.same_as(want)) << e.name << " draw " << d << " " << w << "x" << h << " steps " << sStep
                                           << "/" << dStep << " r " << r << " fill " << fill << " seed " << seed();
        }
}

TEST(CheckResample263, Block16KernelsMatchRules) {
    Rng rng(12);
    for (const auto& e : kernels().block16)
        for (int d = 0; d < draws(); ++d) {
            Zan32s sw = e.param == 0 ? 8 : 16, dw = e.param == 0 ? 16 : 8;
            auto ss = steps_for(2 * sw, 2), ds = steps_for(2 * dw, 2);
            Zan32s sStep = ss[static_cast<size_t>(d) % ss.size()], dStep = ds[static_cast<size_t>(d / 3) % ds.size()];
            Region src(2 * sw, sw, sStep, (d % 32) * 2);
            if (d % 4 == 3) {
                src.fill(rng);
                for (size_t i = 0; i + 1 < src.storage().size(); i += 2) {  // only -32768 and 32767
                    bool hi = src.storage()[i] & 1;
                    src.storage()[i] = hi ? 0xFF : 0x00;
                    src.storage()[i + 1] = hi ? 0x7F : 0x80;
                }
            } else {
                src.fill16(rng, -32768, 32767);
            }
            Region want(2 * dw, dw, dStep, ((d / 32) % 32) * 2), got(2 * dw, dw, dStep, ((d / 32) % 32) * 2);
            want.set(0xA5);
            got.set(0xA5);
            e.rule(src.as<Zan16s>(), sStep, want.as<Zan16s>(), dStep);
            e.simd(src.as<Zan16s>(), sStep, got.as<Zan16s>(), dStep);
            ASSERT_TRUE(got.same_as(want)) << e.name << " draw " << d << " steps " << sStep << "/" << dStep
                                           << " seed " << seed();
        }
}

TEST(CheckResample263, BackPredKernelsMatchRules) {
    Rng rng(13);
    for (const auto& e : kernels().backPred)
        for (int d = 0; d < draws(); ++d) {
            Zan32s w = rng.range(1, 40), h = rng.range(1, 17);
            if (d % 5 == 0) w = 8 * rng.range(1, 3);
            auto ss = steps_for(w + 1), ds = steps_for(w);
            Zan32s sStep = ss[static_cast<size_t>(d) % ss.size()], dStep = ds[static_cast<size_t>(d / 3) % ds.size()];
            Region src(w + 1, h + 1, sStep, d % 64);
            fill_src(src, rng, d);
            // Both destinations: the same guard bytes and the same random region.
            Region want(w, h, dStep, (d * 5) % 64), got(w, h, dStep, (d * 5) % 64);
            want.set(0x3C);
            got.set(0x3C);
            std::vector<Zan8u> rowBytes(static_cast<size_t>(w));
            for (Zan32s y = 0; y < h; ++y) {
                rng.fill(rowBytes.data(), rowBytes.size());
                if (d % 4 == 3)
                    for (auto& b : rowBytes) b = (b & 1) ? 255 : 0;
                std::memcpy(want.origin() + static_cast<ptrdiff_t>(dStep) * y, rowBytes.data(), rowBytes.size());
                std::memcpy(got.origin() + static_cast<ptrdiff_t>(dStep) * y, rowBytes.data(), rowBytes.size());
            }
            e.rule(src.origin(), sStep, w, h, want.origin(), dStep);
            e.simd(src.origin(), sStep, w, h, got.origin(), dStep);
            ASSERT_TRUE(got.same_as(want)) << e.name << " draw " << d << " " << w << "x" << h << " steps " << sStep
                                           << "/" << dStep << " seed " << seed();
        }
}

// ---- models written from the filters' formulas, independent of the rules.

// Two-dimensional doubling: the output sample at (X, Y) lies at source
// position ((X - 0.5) / 2, (Y - 0.5) / 2); bilinear weights 3/4 and 1/4 in
// each direction give 9, 3, 3, 1 sixteenths.
int model_up2d(const std::vector<int>& s, int w, int h, int X, int Y, int r, int fill) {
    auto px = [&](int x, int y) {
        if (x < 0 || y < 0 || x >= w || y >= h) {
            if (fill >= 0) return fill;
            x = std::min(std::max(x, 0), w - 1);
            y = std::min(std::max(y, 0), h - 1);
        }
        return s[static_cast<size_t>(y * w + x)];
    };
    int x0 = (X - 1) / 2 - ((X - 1) < 0), y0 = (Y - 1) / 2 - ((Y - 1) < 0);  // floor((X - 1) / 2)
    int fx = (X % 2 == 0) ? 3 : 1, fy = (Y % 2 == 0) ? 3 : 1;                // weight of x0 + 1 in quarters
    int acc = (4 - fx) * (4 - fy) * px(x0, y0) + fx * (4 - fy) * px(x0 + 1, y0) + (4 - fx) * fy * px(x0, y0 + 1) +
              fx * fy * px(x0 + 1, y0 + 1);
    return (acc + 7 + r) / 16;
}

TEST(CheckResample263, RulesAgreeWithFormulaModels) {
    Rng rng(14);
    const auto& e = kernels().plane;
    for (int d = 0; d < 40; ++d) {
        int w = 2 * rng.range(2, 12), h = 2 * rng.range(2, 8), r = d & 1, fill = (d % 3) ? -1 : rng.range(0, 255);
        std::vector<int> s(static_cast<size_t>(w * h));
        std::vector<Zan8u> src(s.size()), up(static_cast<size_t>(4 * w * h)), ver(static_cast<size_t>(2 * w * h)),
            hor(ver.size()), down(static_cast<size_t>(w * h / 4));
        for (size_t i = 0; i < s.size(); ++i) src[i] = static_cast<Zan8u>(s[i] = rng.range(0, 255));
        for (const auto& k : e) {
            Zan8u* out = k.param == kUp2D ? up.data() : k.param == kDown ? down.data() : k.param == kUpVer ? ver.data() : hor.data();
            Zan32s ow = k.param == kDown ? w / 2 : k.param == kUpVer ? w : 2 * w;
            k.rule(src.data(), w, w, h, out, ow, r, fill);
        }
        auto at = [&](int x, int y) { return s[static_cast<size_t>(std::min(std::max(y, 0), h - 1) * w + std::min(std::max(x, 0), w - 1))]; };
        for (int Y = 0; Y < 2 * h; ++Y)
            for (int X = 0; X < 2 * w; ++X)
                ASSERT_EQ(up[static_cast<size_t>(Y * 2 * w + X)], model_up2d(s, w, h, X, Y, r, fill)) << X << "," << Y;
        for (int y = 0; y < h / 2; ++y)
            for (int x = 0; x < w / 2; ++x)
                ASSERT_EQ(down[static_cast<size_t>(y * (w / 2) + x)],
                          (at(2 * x, 2 * y) + at(2 * x + 1, 2 * y) + at(2 * x, 2 * y + 1) + at(2 * x + 1, 2 * y + 1) + 1 + r) / 4);
        for (int Y = 0; Y < 2 * h; ++Y)
            for (int x = 0; x < w; ++x) {
                int y0 = (Y - 1 < 0) ? -1 : (Y - 1) / 2, fy = (Y % 2 == 0) ? 3 : 1;
                ASSERT_EQ(ver[static_cast<size_t>(Y * w + x)], ((4 - fy) * at(x, y0) + fy * at(x, y0 + 1) + 2) / 4);
            }
        for (int y = 0; y < h; ++y)
            for (int X = 0; X < 2 * w; ++X) {
                int x0 = (X - 1 < 0) ? -1 : (X - 1) / 2, fx = (X % 2 == 0) ? 3 : 1;
                ASSERT_EQ(hor[static_cast<size_t>(y * 2 * w + X)], ((4 - fx) * at(x0, y) + fx * at(x0 + 1, y) + 2) / 4);
            }
    }
}

TEST(CheckResample263, BlockRulesAgreeWithFormulaModels) {
    Rng rng(15);
    for (int d = 0; d < 40; ++d) {
        Zan16s s8[64], s16[256], up[256], down[64];
        for (auto& v : s8) v = static_cast<Zan16s>(rng.range(-32768, 32767));
        for (auto& v : s16) v = static_cast<Zan16s>(rng.range(-32768, 32767));
        for (const auto& k : kernels().block16) {
            if (k.param == 0) k.rule(s8, 16, up, 32);
            else k.rule(s16, 32, down, 16);
        }
        auto at = [&](int x, int y) { return int{s8[std::min(std::max(y, 0), 7) * 8 + std::min(std::max(x, 0), 7)]}; };
        auto floordiv = [](int a, int b) { return a >= 0 ? a / b : -((-a + b - 1) / b); };
        for (int Y = 0; Y < 16; ++Y)
            for (int X = 0; X < 16; ++X) {
                int x0 = floordiv(X - 1, 2), y0 = floordiv(Y - 1, 2), fx = (X % 2 == 0) ? 3 : 1, fy = (Y % 2 == 0) ? 3 : 1;
                int acc = (4 - fx) * (4 - fy) * at(x0, y0) + fx * (4 - fy) * at(x0 + 1, y0) +
                          (4 - fx) * fy * at(x0, y0 + 1) + fx * fy * at(x0 + 1, y0 + 1);
                ASSERT_EQ(up[Y * 16 + X], floordiv(acc + 8, 16)) << X << "," << Y;
            }
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 8; ++x) {
                int sum = s16[2 * y * 16 + 2 * x] + s16[2 * y * 16 + 2 * x + 1] + s16[(2 * y + 1) * 16 + 2 * x] +
                          s16[(2 * y + 1) * 16 + 2 * x + 1];
                ASSERT_EQ(down[y * 8 + x], floordiv(sum + 2, 4));
            }
    }
}

}  // namespace
