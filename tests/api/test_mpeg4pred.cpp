// MPEG-4 prediction tools through the exported functions: statuses and their
// order, outputs untouched on failure, masked selectors, known answers
// worked out by hand, and plain models of quarter-sample interpolation and
// overlapped compensation written from the codec's formulas.
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <random>
#include <vector>

#include "zanvc.h"

namespace {

// ------------------------------------------------------------------ models

// The eight-tap half-sample filter of MPEG-4 quarter-sample interpolation.
constexpr int kTaps[8] = {-1, 3, -6, 20, 20, -6, 3, -1};

int clip(int v) { return v < 0 ? 0 : v > 255 ? 255 : v; }

// One line of n + 1 samples (0..n) extended to -3..n+4 by reflection about
// its end samples (which are repeated), then interpolated at quarter
// fraction f for the outputs 0..n-1.
std::vector<int> interpolate_line(const std::vector<int>& line, int f, int r) {
    const int n = static_cast<int>(line.size()) - 1;
    std::vector<int> ext(line.size() + 7);
    for (int k = -3; k <= n + 4; ++k) {
        int m = k;
        if (m < 0) m = -m - 1;          // -1 -> 0, -2 -> 1, -3 -> 2
        if (m > n) m = n - (m - n - 1); // n+1 -> n, n+2 -> n-1
        ext[static_cast<size_t>(k + 3)] = line[static_cast<size_t>(m)];
    }
    std::vector<int> out(static_cast<size_t>(n));
    for (int i = 0; i < n; ++i) {
        int sum = 0;
        for (int t = 0; t < 8; ++t) sum += kTaps[t] * ext[static_cast<size_t>(i + t)];
        const int half = clip((sum + 16 - r) >> 5);
        const int whole = line[static_cast<size_t>(i)], next = line[static_cast<size_t>(i + 1)];
        switch (f) {
            case 0: out[static_cast<size_t>(i)] = whole; break;
            case 1: out[static_cast<size_t>(i)] = (whole + half + 1 - r) >> 1; break;
            case 2: out[static_cast<size_t>(i)] = half; break;
            default: out[static_cast<size_t>(i)] = (half + next + 1 - r) >> 1; break;
        }
    }
    return out;
}

// Quarter-sample prediction of a w x h block: rows first (h + 1 of them),
// then columns.  Returns w * h samples, row by row.
std::vector<int> model_qp(const Zan8u* src, int step, int w, int h, int acc, int rounding) {
    const int fx = acc & 3, fy = (acc >> 2) & 3, r = rounding & 1;
    std::vector<std::vector<int>> rows;
    for (int y = 0; y <= h; ++y) {
        std::vector<int> line(static_cast<size_t>(w + 1));
        for (int x = 0; x <= w; ++x) line[static_cast<size_t>(x)] = src[y * step + x];
        rows.push_back(interpolate_line(line, fx, r));
    }
    std::vector<int> out(static_cast<size_t>(w * h));
    for (int x = 0; x < w; ++x) {
        std::vector<int> col(static_cast<size_t>(h + 1));
        for (int y = 0; y <= h; ++y) col[static_cast<size_t>(y)] = rows[static_cast<size_t>(y)][static_cast<size_t>(x)];
        auto v = interpolate_line(col, fy, r);
        for (int y = 0; y < h; ++y) out[static_cast<size_t>(y * w + x)] = v[static_cast<size_t>(y)];
    }
    return out;
}

// Half-sample prediction of a w x h block with a vector in half samples.
std::vector<int> model_hp(const Zan8u* src, int step, int w, int h, int mvx, int mvy, int rounding) {
    const Zan8u* s = src + (mvx >> 1) + (mvy >> 1) * step;
    const int hx = mvx & 1, hy = mvy & 1, r = rounding & 1;
    std::vector<int> out(static_cast<size_t>(w * h));
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            auto at = [&](int dx, int dy) { return int{s[(y + dy) * step + x + dx]}; };
            int v;
            if (hx && hy) v = (at(0, 0) + at(1, 0) + at(0, 1) + at(1, 1) + 2 - r) >> 2;
            else if (hx) v = (at(0, 0) + at(1, 0) + 1 - r) >> 1;
            else if (hy) v = (at(0, 0) + at(0, 1) + 1 - r) >> 1;
            else v = at(0, 0);
            out[static_cast<size_t>(y * w + x)] = v;
        }
    return out;
}

// Weighting windows of overlapped compensation (H.263 Annex F): current,
// above/below, left/right.
constexpr int kH0[8][8] = {{4, 5, 5, 5, 5, 5, 5, 4}, {5, 5, 5, 5, 5, 5, 5, 5}, {5, 5, 6, 6, 6, 6, 5, 5},
                           {5, 5, 6, 6, 6, 6, 5, 5}, {5, 5, 6, 6, 6, 6, 5, 5}, {5, 5, 6, 6, 6, 6, 5, 5},
                           {5, 5, 5, 5, 5, 5, 5, 5}, {4, 5, 5, 5, 5, 5, 5, 4}};
constexpr int kH1[8][8] = {{2, 2, 2, 2, 2, 2, 2, 2}, {1, 1, 2, 2, 2, 2, 1, 1}, {1, 1, 1, 1, 1, 1, 1, 1},
                           {1, 1, 1, 1, 1, 1, 1, 1}, {1, 1, 1, 1, 1, 1, 1, 1}, {1, 1, 1, 1, 1, 1, 1, 1},
                           {1, 1, 2, 2, 2, 2, 1, 1}, {2, 2, 2, 2, 2, 2, 2, 2}};
constexpr int kH2[8][8] = {{2, 1, 1, 1, 1, 1, 1, 2}, {2, 2, 1, 1, 1, 1, 2, 2}, {2, 2, 1, 1, 1, 1, 2, 2},
                           {2, 2, 1, 1, 1, 1, 2, 2}, {2, 2, 1, 1, 1, 1, 2, 2}, {2, 2, 1, 1, 1, 1, 2, 2},
                           {2, 2, 1, 1, 1, 1, 2, 2}, {2, 1, 1, 1, 1, 1, 1, 2}};

// Overlapped compensation of an n x n block (n 8 or 16; weights by 2x2 cells
// for 16): predict(mv) gives the whole n x n prediction of a vector.
template <class Predict>
std::vector<int> model_obmc(int n, const Zan16s* mv[5], Predict predict) {
    auto cur = predict(mv[0]);
    auto left = predict(mv[1]), right = predict(mv[2]), above = predict(mv[3]), below = predict(mv[4]);
    std::vector<int> out(static_cast<size_t>(n * n));
    const int sh = n == 16 ? 1 : 0;
    for (int y = 0; y < n; ++y)
        for (int x = 0; x < n; ++x) {
            const size_t i = static_cast<size_t>(y * n + x);
            const int v = y < n / 2 ? above[i] : below[i];
            const int h = x < n / 2 ? left[i] : right[i];
            out[i] = (kH0[y >> sh][x >> sh] * cur[i] + kH1[y >> sh][x >> sh] * v + kH2[y >> sh][x >> sh] * h + 4) >> 3;
        }
    return out;
}

std::vector<int> read_block(const Zan8u* p, int step, int w, int h) {
    std::vector<int> v(static_cast<size_t>(w * h));
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) v[static_cast<size_t>(y * w + x)] = p[y * step + x];
    return v;
}

// A picture with room around the block for vectors up to +-10 samples.
struct Picture {
    static constexpr int kStep = 64;
    std::vector<Zan8u> s = std::vector<Zan8u>(kStep * 64);
    Zan8u* block() { return s.data() + 24 * kStep + 24; }
    void random(std::mt19937& g) {
        for (auto& b : s) b = static_cast<Zan8u>(g() % 4 == 0 ? (g() & 1) * 255 : g() & 255);
    }
};

using CopyFn = ZanStatus (*)(const Zan8u*, Zan32s, Zan8u*, Zan32s, Zan32s, Zan32s);
struct CopyForm {
    CopyFn fn;
    int w, h;
};
const CopyForm kCopies[] = {{zaniCopy8x8QP_MPEG4_8u_C1R, 8, 8},
                            {zaniCopy16x8QP_MPEG4_8u_C1R, 16, 8},
                            {zaniCopy16x16QP_MPEG4_8u_C1R, 16, 16}};

using ObmcFn = ZanStatus (*)(const Zan8u*, Zan32s, Zan8u*, Zan32s, const Zan16s*, const Zan16s*, const Zan16s*,
                             const Zan16s*, const Zan16s*, Zan32s);

// ----------------------------------------------------------- quarter sample

TEST(Mpeg4pred, CopyQPNullPointers) {
    std::vector<Zan8u> src(32 * 20, 7), dst(32 * 16, 0xAB);
    for (const auto& c : kCopies) {
        EXPECT_EQ(c.fn(nullptr, 32, dst.data(), 32, 5, 0), zanStsNullPtr);
        EXPECT_EQ(c.fn(src.data(), 32, nullptr, 32, 5, 0), zanStsNullPtr);
        // A null pointer beats everything, also a zero step.
        EXPECT_EQ(c.fn(nullptr, 0, dst.data(), 0, 0, 0), zanStsNullPtr);
        for (auto b : dst) ASSERT_EQ(b, 0xAB);
    }
}

TEST(Mpeg4pred, CopyQPAgreesWithModel) {
    std::mt19937 g(42);
    Picture pic;
    for (const auto& c : kCopies)
        for (int iter = 0; iter < 40; ++iter) {
            pic.random(g);
            for (int acc = 0; acc < 16; ++acc)
                for (int rounding = 0; rounding < 2; ++rounding) {
                    std::vector<Zan8u> dst(16 * 16, 0xCD);
                    ASSERT_EQ(c.fn(pic.block(), Picture::kStep, dst.data(), 16, acc, rounding), zanStsOk);
                    auto want = model_qp(pic.block(), Picture::kStep, c.w, c.h, acc, rounding);
                    ASSERT_EQ(read_block(dst.data(), 16, c.w, c.h), want)
                        << c.w << "x" << c.h << " acc " << acc << " rounding " << rounding;
                    // Nothing beyond the block's rows is written.
                    for (size_t i = static_cast<size_t>(16 * c.h); i < dst.size(); ++i) ASSERT_EQ(dst[i], 0xCD);
                }
        }
}

TEST(Mpeg4pred, CopyQPMasksSelectors) {
    std::mt19937 g(7);
    Picture pic;
    pic.random(g);
    for (const auto& c : kCopies)
        for (int acc = 0; acc < 16; ++acc) {
            std::vector<Zan8u> a(256), b(256), d(256);
            c.fn(pic.block(), Picture::kStep, a.data(), 16, acc, 1);
            c.fn(pic.block(), Picture::kStep, b.data(), 16, acc + 16 * 5, 3);   // acc modulo 16, odd rounding
            c.fn(pic.block(), Picture::kStep, d.data(), 16, acc - 32, 0x7FFFFFFF);
            EXPECT_EQ(a, b) << acc;
            EXPECT_EQ(a, d) << acc;
        }
    // acc 16 is a plain copy.
    std::vector<Zan8u> out(256);
    zaniCopy16x16QP_MPEG4_8u_C1R(pic.block(), Picture::kStep, out.data(), 16, 16, 0);
    EXPECT_EQ(read_block(out.data(), 16, 16, 16), read_block(pic.block(), Picture::kStep, 16, 16));
}

TEST(Mpeg4pred, CopyQPKnownAnswers) {
    // Rows 0 0 0 0 255 0 0 0 0: the half sample between 0 and 255 is
    // (20 * 255 + 16) >> 5 = 159; two away the -6 tap clamps to 0, three away
    // the 3 tap gives (765 + 16) >> 5 = 24.
    std::vector<Zan8u> src(16 * 9, 0), dst(64);
    for (int y = 0; y < 9; ++y) src[static_cast<size_t>(y * 16 + 4)] = 255;
    zaniCopy8x8QP_MPEG4_8u_C1R(src.data(), 16, dst.data(), 8, 2, 0);
    EXPECT_EQ(read_block(dst.data(), 8, 8, 1), (std::vector<int>{0, 24, 0, 159, 159, 0, 24, 0}));
    // A quarter position averages with the nearer whole sample: (0 + 159 + 1) >> 1 = 80 and
    // (255 + 159 + 1) >> 1 = 207; rounding 1 drops the + 1: 79, 207.
    zaniCopy8x8QP_MPEG4_8u_C1R(src.data(), 16, dst.data(), 8, 1, 0);
    EXPECT_EQ(read_block(dst.data(), 8, 8, 1), (std::vector<int>{0, 12, 0, 80, 207, 0, 12, 0}));
    zaniCopy8x8QP_MPEG4_8u_C1R(src.data(), 16, dst.data(), 8, 1, 1);
    EXPECT_EQ(read_block(dst.data(), 8, 8, 1), (std::vector<int>{0, 12, 0, 79, 207, 0, 12, 0}));
    // fx 3 averages with the sample to the right: (0 + 159 + 1) >> 1 at 4 - 1, (159 + 255 + 1) >> 1 at 3.
    zaniCopy8x8QP_MPEG4_8u_C1R(src.data(), 16, dst.data(), 8, 3, 0);
    EXPECT_EQ(read_block(dst.data(), 8, 8, 1), (std::vector<int>{0, 12, 0, 207, 80, 0, 12, 0}));

    // Mirroring at the block edge: 255 in column 0 only.  The taps left of
    // column 0 read columns 0, 1, 2: 20 * 255 - 6 * 255 = 3570, (3570 + 16) >> 5 = 112
    // (a repeated edge would give 128); between 1 and 2 the 3 tap reads column 0
    // twice over (-1 reads 0): 3 * 255 - 255 = 510, (510 + 16) >> 5 = 16.
    std::fill(src.begin(), src.end(), 0);
    for (int y = 0; y < 9; ++y) src[static_cast<size_t>(y * 16)] = 255;
    zaniCopy8x8QP_MPEG4_8u_C1R(src.data(), 16, dst.data(), 8, 2, 0);
    EXPECT_EQ(read_block(dst.data(), 8, 8, 1), (std::vector<int>{112, 0, 16, 0, 0, 0, 0, 0}));
    // The same down a column (fy 2), rows instead of columns.
    std::fill(src.begin(), src.end(), 0);
    for (int x = 0; x < 9; ++x) src[static_cast<size_t>(x)] = 255;
    zaniCopy8x8QP_MPEG4_8u_C1R(src.data(), 16, dst.data(), 8, 8, 0);
    for (int y = 0; y < 8; ++y) EXPECT_EQ(dst[static_cast<size_t>(y * 8 + 3)], (std::array<int, 8>{112, 0, 16, 0, 0, 0, 0, 0}[static_cast<size_t>(y)]));

    // A flat block stays flat at every position (the taps sum to 32).
    std::fill(src.begin(), src.end(), 201);
    for (int acc = 0; acc < 16; ++acc) {
        zaniCopy8x8QP_MPEG4_8u_C1R(src.data(), 16, dst.data(), 8, acc, acc & 1);
        for (auto b : dst) ASSERT_EQ(b, 201) << acc;
    }
}

TEST(Mpeg4pred, CopyQPNegativeStep) {
    std::mt19937 g(3);
    Picture pic;
    pic.random(g);
    // The source read bottom up and the destination written bottom up.
    std::vector<Zan8u> a(256), b(256);
    const Zan8u* last = pic.block() + 16 * Picture::kStep;
    zaniCopy16x16QP_MPEG4_8u_C1R(last, -Picture::kStep, b.data() + 15 * 16, -16, 6, 0);
    auto want = model_qp(last, -Picture::kStep, 16, 16, 6, 0);
    std::vector<int> got(256);
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x) got[static_cast<size_t>(y * 16 + x)] = b[static_cast<size_t>((15 - y) * 16 + x)];
    EXPECT_EQ(got, want);
    (void)a;
}

// ------------------------------------------------------------------- OBMC

TEST(Mpeg4pred, OBMCNullPointers) {
    std::vector<Zan8u> src(64 * 64, 9), dst(16 * 16, 0xEE);
    Zan16s mv[2] = {0, 0};
    for (ObmcFn f : {zaniOBMC8x8HP_MPEG4_8u_C1R, zaniOBMC16x16HP_MPEG4_8u_C1R, zaniOBMC8x8QP_MPEG4_8u_C1R}) {
        EXPECT_EQ(f(nullptr, 64, dst.data(), 16, mv, mv, mv, mv, mv, 0), zanStsNullPtr);
        EXPECT_EQ(f(src.data() + 1000, 64, nullptr, 16, mv, mv, mv, mv, mv, 0), zanStsNullPtr);
        for (auto b : dst) ASSERT_EQ(b, 0xEE);
    }
}

TEST(Mpeg4pred, OBMCAgreesWithModel) {
    std::mt19937 g(11);
    Picture pic;
    const int forms = 3;
    for (int form = 0; form < forms; ++form)
        for (int iter = 0; iter < 300; ++iter) {
            pic.random(g);
            const int n = form == 1 ? 16 : 8;
            const int rounding = static_cast<int>(g() % 4);  // odd values count by their low bit
            Zan16s mvs[5][2];
            for (auto& m : mvs) {
                const int range = form == 2 ? 33 : 17;  // +-16 quarter or +-8 half samples
                m[0] = static_cast<Zan16s>(static_cast<int>(g() % range) - range / 2);
                m[1] = static_cast<Zan16s>(static_cast<int>(g() % range) - range / 2);
            }
            // Neighbours that share the current vector, often.
            for (int k = 1; k < 5; ++k)
                if (g() % 3 == 0) mvs[k][0] = mvs[0][0], mvs[k][1] = mvs[0][1];
            const Zan16s* mv[5] = {mvs[0], mvs[1], mvs[2], mvs[3], mvs[4]};
            std::vector<Zan8u> dst(16 * 16 + 16, 0x77);
            ObmcFn f = form == 0 ? zaniOBMC8x8HP_MPEG4_8u_C1R
                                 : form == 1 ? zaniOBMC16x16HP_MPEG4_8u_C1R : zaniOBMC8x8QP_MPEG4_8u_C1R;
            ASSERT_EQ(f(pic.block(), Picture::kStep, dst.data(), n, mv[0], mv[1], mv[2], mv[3], mv[4], rounding),
                      zanStsOk);
            std::vector<int> want;
            if (form == 2)
                want = model_obmc(8, mv, [&](const Zan16s* m) {
                    return model_qp(pic.block() + (m[0] >> 2) + (m[1] >> 2) * Picture::kStep, Picture::kStep, 8, 8,
                                    (m[0] & 3) + 4 * (m[1] & 3), rounding);
                });
            else
                want = model_obmc(n, mv, [&](const Zan16s* m) {
                    return model_hp(pic.block(), Picture::kStep, n, n, m[0], m[1], rounding);
                });
            ASSERT_EQ(read_block(dst.data(), n, n, n), want) << "form " << form << " iter " << iter;
            for (size_t i = static_cast<size_t>(n * n); i < dst.size(); ++i) ASSERT_EQ(dst[i], 0x77);
        }
}

TEST(Mpeg4pred, OBMCKnownAnswers) {
    // The current vector sees a flat 64, every neighbour a flat 0: the output
    // is 64 * H0 / 8 = 8 * H0 (corners 32, edges 40, centre 48).
    std::vector<Zan8u> pic(64 * 64, 0);
    for (int y = 0; y < 40; ++y)
        for (int x = 0; x < 24; ++x) pic[static_cast<size_t>(y * 64 + x)] = 64;
    const Zan8u* block = pic.data() + 8 * 64 + 4;
    const Zan16s cur[2] = {0, 0}, away[2] = {2 * 24, 0}, awayQ[2] = {4 * 24, 0};
    std::vector<Zan8u> dst(64);
    ASSERT_EQ(zaniOBMC8x8HP_MPEG4_8u_C1R(block, 64, dst.data(), 8, cur, away, away, away, away, 0), zanStsOk);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) EXPECT_EQ(dst[static_cast<size_t>(y * 8 + x)], 8 * kH0[y][x]) << y << "," << x;
    ASSERT_EQ(zaniOBMC8x8QP_MPEG4_8u_C1R(block, 64, dst.data(), 8, cur, awayQ, awayQ, awayQ, awayQ, 1), zanStsOk);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) EXPECT_EQ(dst[static_cast<size_t>(y * 8 + x)], 8 * kH0[y][x]) << y << "," << x;
    // Above and below share the current vector: 8 * (H0 + H1).
    ASSERT_EQ(zaniOBMC8x8HP_MPEG4_8u_C1R(block, 64, dst.data(), 8, cur, away, away, cur, cur, 0), zanStsOk);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x)
            EXPECT_EQ(dst[static_cast<size_t>(y * 8 + x)], 8 * (kH0[y][x] + kH1[y][x])) << y << "," << x;
    // 16x16: each weight covers a 2x2 cell.
    std::vector<Zan8u> big(256);
    const Zan8u* block16 = pic.data() + 4 * 64 + 4;
    ASSERT_EQ(zaniOBMC16x16HP_MPEG4_8u_C1R(block16, 64, big.data(), 16, cur, away, cur, away, cur, 0), zanStsOk);
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x) {
            const int w = kH0[y / 2][x / 2] + (x >= 8 ? kH2[y / 2][x / 2] : 0) + (y >= 8 ? kH1[y / 2][x / 2] : 0);
            EXPECT_EQ(big[static_cast<size_t>(y * 16 + x)], 8 * w) << y << "," << x;
        }
    // All from 255: no overflow, the weights sum to 8.
    std::vector<Zan8u> white(64 * 64, 255);
    ASSERT_EQ(zaniOBMC16x16HP_MPEG4_8u_C1R(white.data() + 20 * 64 + 20, 64, big.data(), 16, cur, away, cur, away,
                                           cur, 1),
              zanStsOk);
    for (auto b : big) ASSERT_EQ(b, 255);
}

}  // namespace
