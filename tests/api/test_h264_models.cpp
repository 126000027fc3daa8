// H.264 intra prediction and inverse transforms against plain models written
// from the formulas of the H.264 standard (clauses 8.3.1.2, 8.3.3, 8.3.4 for
// intra prediction; 8.5.10 to 8.5.13 for scaling and inverse transforms).
// The models below are deliberately naive: one formula per sample, 64-bit
// arithmetic, the standard's tables written out here.  They share nothing
// with the library's code.
//
// Intra: every mode under every availability pattern the standard defines it
// for must match exactly with status zanStsOk.  Patterns the standard does
// not define are the library's own behaviour: the 4x4 predictor runs the
// same formulas with 128 standing for each absent edge and warns (11); the
// 16x16 and chroma predictors refuse (-117) and write nothing.  Those are
// tested separately.
//
// Inverse transforms: random levels and QPs, shrunk until every value the
// standard's computation produces (dequantised coefficients, every butterfly
// term, the rounding constant and, for the 8x8 form, the prediction folded in
// at 64 times its value) provably fits the arithmetic width of the export.
// In that region wrapping and saturating forms must equal the exact model.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <vector>

#include "zanvc.h"

namespace {

using i64 = long long;

// ---------------------------------------------------------------- random

struct Rand {
    std::mt19937_64 g;
    explicit Rand(std::uint64_t seed) : g(seed) {}
    i64 range(i64 lo, i64 hi) { return lo + static_cast<i64>(g() % static_cast<std::uint64_t>(hi - lo + 1)); }
    bool coin(int percent) { return range(0, 99) < percent; }
    // A level: often zero, magnitudes spread over every power of two up to 2^bits.
    i64 level(int bits) {
        if (coin(35)) return 0;
        i64 cap = i64{1} << range(0, bits);
        i64 m = coin(20) ? cap : range(1, cap);
        return coin(50) ? -m : m;
    }
};

// Halves the largest-magnitude entry (toward zero) until fits() holds.  The
// all-zero block always fits, so this ends.
template <class Fits>
void shrink(i64* c, int n, Fits fits) {
    while (!fits()) {
        int k = 0;
        for (int i = 1; i < n; ++i)
            if (std::llabs(c[i]) > std::llabs(c[k])) k = i;
        c[k] /= 2;
    }
}

i64 clip(i64 v, i64 lo, i64 hi) { return v < lo ? lo : (v > hi ? hi : v); }

// ========================================================== intra models

// Neighbours as the standard names them: p[x, -1] for x = -1..15 (x = -1 is
// the corner) and p[-1, y] for y = 0..15.
struct Nb {
    i64 top[16] = {};
    i64 left[16] = {};
    i64 corner = 0;
    i64 p(int x, int y) const {
        if (y == -1) return x == -1 ? corner : top[x];
        return left[y];  // x == -1
    }
};

// Intra 4x4 (clause 8.3.1.2).  top[4..7] already hold the above-right
// samples or their substitute p[3, -1].  hasTop/hasLeft only matter for DC.
std::array<i64, 16> model4x4(int mode, const Nb& n, bool hasTop, bool hasLeft) {
    std::array<i64, 16> o{};
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 4; ++x) {
            auto P = [&](int px, int py) { return n.p(px, py); };
            i64 v = 0;
            switch (mode) {
            case 0: v = P(x, -1); break;
            case 1: v = P(-1, y); break;
            case 2: {
                i64 st = 0, sl = 0;
                for (int i = 0; i < 4; ++i) st += P(i, -1), sl += P(-1, i);
                if (hasTop && hasLeft) v = (st + sl + 4) >> 3;
                else if (hasLeft) v = (sl + 2) >> 2;
                else if (hasTop) v = (st + 2) >> 2;
                else v = 128;
                break;
            }
            case 3:
                if (x == 3 && y == 3) v = (P(6, -1) + 3 * P(7, -1) + 2) >> 2;
                else v = (P(x + y, -1) + 2 * P(x + y + 1, -1) + P(x + y + 2, -1) + 2) >> 2;
                break;
            case 4:
                if (x > y) v = (P(x - y - 2, -1) + 2 * P(x - y - 1, -1) + P(x - y, -1) + 2) >> 2;
                else if (x < y) v = (P(-1, y - x - 2) + 2 * P(-1, y - x - 1) + P(-1, y - x) + 2) >> 2;
                else v = (P(0, -1) + 2 * P(-1, -1) + P(-1, 0) + 2) >> 2;
                break;
            case 5: {
                int z = 2 * x - y;
                if (z >= 0 && z % 2 == 0) v = (P(x - (y >> 1) - 1, -1) + P(x - (y >> 1), -1) + 1) >> 1;
                else if (z > 0) v = (P(x - (y >> 1) - 2, -1) + 2 * P(x - (y >> 1) - 1, -1) + P(x - (y >> 1), -1) + 2) >> 2;
                else if (z == -1) v = (P(-1, 0) + 2 * P(-1, -1) + P(0, -1) + 2) >> 2;
                else v = (P(-1, y - 1) + 2 * P(-1, y - 2) + P(-1, y - 3) + 2) >> 2;
                break;
            }
            case 6: {
                int z = 2 * y - x;
                if (z >= 0 && z % 2 == 0) v = (P(-1, y - (x >> 1) - 1) + P(-1, y - (x >> 1)) + 1) >> 1;
                else if (z > 0) v = (P(-1, y - (x >> 1) - 2) + 2 * P(-1, y - (x >> 1) - 1) + P(-1, y - (x >> 1)) + 2) >> 2;
                else if (z == -1) v = (P(-1, 0) + 2 * P(-1, -1) + P(0, -1) + 2) >> 2;
                else v = (P(x - 1, -1) + 2 * P(x - 2, -1) + P(x - 3, -1) + 2) >> 2;
                break;
            }
            case 7:
                if (y == 0 || y == 2) v = (P(x + (y >> 1), -1) + P(x + (y >> 1) + 1, -1) + 1) >> 1;
                else v = (P(x + (y >> 1), -1) + 2 * P(x + (y >> 1) + 1, -1) + P(x + (y >> 1) + 2, -1) + 2) >> 2;
                break;
            case 8: {
                int z = x + 2 * y;
                if (z < 5 && z % 2 == 0) v = (P(-1, y + (x >> 1)) + P(-1, y + (x >> 1) + 1) + 1) >> 1;
                else if (z < 5) v = (P(-1, y + (x >> 1)) + 2 * P(-1, y + (x >> 1) + 1) + P(-1, y + (x >> 1) + 2) + 2) >> 2;
                else if (z == 5) v = (P(-1, 2) + 3 * P(-1, 3) + 2) >> 2;
                else v = P(-1, 3);
                break;
            }
            }
            o[static_cast<size_t>(y * 4 + x)] = v;
        }
    return o;
}

// Intra 16x16 (clause 8.3.3), modes 0..3.
std::array<i64, 256> model16x16(int mode, const Nb& n, bool hasTop, bool hasLeft) {
    std::array<i64, 256> o{};
    i64 st = 0, sl = 0;
    for (int i = 0; i < 16; ++i) st += n.p(i, -1), sl += n.p(-1, i);
    i64 H = 0, V = 0;
    for (int k = 0; k <= 7; ++k) {
        H += (k + 1) * (n.p(8 + k, -1) - n.p(6 - k, -1));
        V += (k + 1) * (n.p(-1, 8 + k) - n.p(-1, 6 - k));
    }
    i64 a = 16 * (n.p(-1, 15) + n.p(15, -1)), b = (5 * H + 32) >> 6, c = (5 * V + 32) >> 6;
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x) {
            i64 v = 0;
            if (mode == 0) v = n.p(x, -1);
            else if (mode == 1) v = n.p(-1, y);
            else if (mode == 2) {
                if (hasTop && hasLeft) v = (st + sl + 16) >> 5;
                else if (hasLeft) v = (sl + 8) >> 4;
                else if (hasTop) v = (st + 8) >> 4;
                else v = 128;
            } else v = clip((a + b * (x - 7) + c * (y - 7) + 16) >> 5, 0, 255);
            o[static_cast<size_t>(y * 16 + x)] = v;
        }
    return o;
}

// Intra chroma for 4:2:0 (clause 8.3.4), library mode numbers 0 DC,
// 1 horizontal, 2 vertical, 3 plane.
std::array<i64, 64> modelChroma(int mode, const Nb& n, bool hasTop, bool hasLeft) {
    std::array<i64, 64> o{};
    const int xCF = 0, yCF = 0;  // 4:2:0
    i64 H = 0, V = 0;
    for (int k = 0; k <= 3 + xCF; ++k) H += (k + 1) * (n.p(4 + xCF + k, -1) - n.p(2 + xCF - k, -1));
    for (int k = 0; k <= 3 + yCF; ++k) V += (k + 1) * (n.p(-1, 4 + yCF + k) - n.p(-1, 2 + yCF - k));
    i64 a = 16 * (n.p(-1, 7) + n.p(7, -1));
    i64 b = (34 * H + 32) >> 6, c = (34 * V + 32) >> 6;
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            i64 v = 0;
            if (mode == 0) {
                int xO = x & 4, yO = y & 4;
                i64 st = 0, sl = 0;
                for (int k = 0; k < 4; ++k) st += n.p(k + xO, -1), sl += n.p(-1, k + yO);
                i64 both = (st + sl + 4) >> 3, top = (st + 2) >> 2, left = (sl + 2) >> 2;
                if ((xO == 0 && yO == 0) || (xO > 0 && yO > 0))
                    v = hasTop && hasLeft ? both : hasLeft ? left : hasTop ? top : 128;
                else if (xO > 0)  // yO == 0
                    v = hasTop ? top : hasLeft ? left : 128;
                else  // xO == 0, yO > 0
                    v = hasLeft ? left : hasTop ? top : 128;
            } else if (mode == 1) v = n.p(-1, y);
            else if (mode == 2) v = n.p(x, -1);
            else v = clip((a + b * (x - 3 - xCF) + c * (y - 3 - yCF) + 16) >> 5, 0, 255);
            o[static_cast<size_t>(y * 8 + x)] = v;
        }
    return o;
}

// The four availability bits of the library's word.
constexpr Zan32s kTop = 1, kLeft = 2, kCorner = 32, kAboveRight = 64;
Zan32s availWord(int pattern) {
    return ((pattern & 1) ? kTop : 0) | ((pattern & 2) ? kLeft : 0) | ((pattern & 4) ? kCorner : 0) |
           ((pattern & 8) ? kAboveRight : 0);
}

// A picture of random samples with a block at (ox, oy); neighbours are read
// from it, absent ones hold random values that must never matter.
struct Pic {
    Zan32s step, ox = 2, oy = 1;
    std::vector<Zan8u> px;
    Pic(Rand& r, Zan32s minStep, Zan32s rows) : step(static_cast<Zan32s>(r.range(minStep, minStep + 24))) {
        px.resize(static_cast<size_t>(step * (rows + 2)));
        bool smooth = r.coin(25);  // sometimes a narrow range, so plane sums stay small
        i64 base = r.range(0, 255);
        for (auto& v : px)
            v = static_cast<Zan8u>(smooth ? clip(base + r.range(-6, 6), 0, 255)
                                          : (r.coin(10) ? (r.coin(50) ? 0 : 255) : r.range(0, 255)));
    }
    Zan8u* block() { return px.data() + oy * step + ox; }
    i64 at(int x, int y) { return block()[y * step + x]; }
};

// Checks the block against want and every other sample against before.
template <size_t N>
void expectPicture(Pic& pic, const std::vector<Zan8u>& before, int w, const std::array<i64, N>& want,
                   const char* what, int mode, Zan32s avail) {
    int bad = 0;
    for (int y = -pic.oy; y < static_cast<int>(pic.px.size() / static_cast<size_t>(pic.step)) - pic.oy; ++y)
        for (int x = -pic.ox; x < pic.step - pic.ox; ++x) {
            size_t i = static_cast<size_t>((y + pic.oy) * pic.step + x + pic.ox);
            bool inBlock = x >= 0 && x < w && y >= 0 && y < static_cast<int>(N) / w;
            i64 expect = inBlock ? want[static_cast<size_t>(y * w + x)] : before[i];
            if (pic.px[i] != expect && bad++ < 3)
                ADD_FAILURE() << what << " mode " << mode << " availability " << avail << " at (" << x << ", "
                              << y << "): got " << int(pic.px[i]) << ", expected " << expect;
        }
}

// Builds the neighbours of an n-wide block as the standard sees them.
Nb readNeighbours(Pic& pic, int n, Zan32s avail, bool aboveRightSubst) {
    Nb nb;
    for (int i = 0; i < n; ++i) nb.top[i] = pic.at(i, -1), nb.left[i] = pic.at(-1, i);
    if (aboveRightSubst)
        for (int i = 4; i < 8; ++i) nb.top[i] = (avail & kAboveRight) ? pic.at(i, -1) : nb.top[3];
    nb.corner = pic.at(-1, -1);
    return nb;
}

// Which neighbours each 4x4 mode needs in the standard.
bool defined4x4(int mode, Zan32s a) {
    bool t = a & kTop, l = a & kLeft, c = a & kCorner;
    switch (mode) {
    case 0: case 3: case 7: return t;
    case 1: case 8: return l;
    case 2: return true;
    default: return t && l && c;
    }
}

Zan32s strayBits(Rand& r) { return r.coin(50) ? static_cast<Zan32s>(r.g() & 0x7fffff9c) : 0; }

TEST(H264Model, Intra4x4EveryModeEveryDefinedPatternMatchesTheStandard) {
    Rand r(0x4a4a01);
    int checked = 0;
    for (int rep = 0; rep < 40; ++rep)
        for (int mode = 0; mode < 9; ++mode)
            for (int pat = 0; pat < 16; ++pat) {
                Zan32s avail = availWord(pat);
                if (!defined4x4(mode, avail)) continue;
                Pic pic(r, 10, 4);
                Nb nb = readNeighbours(pic, 4, avail, true);
                auto want = model4x4(mode, nb, avail & kTop, avail & kLeft);
                std::vector<Zan8u> before = pic.px;
                ASSERT_EQ(zaniPredictIntra_4x4_H264_8u_C1IR(pic.block(), pic.step, mode, avail | strayBits(r)),
                          zanStsOk)
                    << "mode " << mode << " availability " << avail;
                expectPicture(pic, before, 4, want, "4x4", mode, avail);
                ++checked;
            }
    EXPECT_GT(checked, 9 * 40);
}

// Where the standard leaves a 4x4 mode undefined (a needed edge absent) the
// library substitutes 128 for each absent edge (four samples above, four to
// the left, one corner), still repeats p[3, -1] for an absent above-right,
// runs the same formula and returns the warning 11.
TEST(H264Model, Intra4x4UndefinedPatternsUse128AndWarn) {
    Rand r(0x4a4a02);
    int checked = 0;
    for (int rep = 0; rep < 40; ++rep)
        for (int mode = 0; mode < 9; ++mode)
            for (int pat = 0; pat < 16; ++pat) {
                Zan32s avail = availWord(pat);
                if (defined4x4(mode, avail)) continue;
                Pic pic(r, 10, 4);
                Nb nb;
                for (int i = 0; i < 4; ++i) {
                    nb.top[i] = (avail & kTop) ? pic.at(i, -1) : 128;
                    nb.left[i] = (avail & kLeft) ? pic.at(-1, i) : 128;
                }
                for (int i = 4; i < 8; ++i) nb.top[i] = (avail & kAboveRight) ? pic.at(i, -1) : nb.top[3];
                nb.corner = (avail & kCorner) ? pic.at(-1, -1) : 128;
                auto want = model4x4(mode, nb, avail & kTop, avail & kLeft);
                std::vector<Zan8u> before = pic.px;
                ASSERT_EQ(zaniPredictIntra_4x4_H264_8u_C1IR(pic.block(), pic.step, mode, avail | strayBits(r)),
                          zanStsEdgeSubstituted)
                    << "mode " << mode << " availability " << avail;
                expectPicture(pic, before, 4, want, "4x4 substituted", mode, avail);
                ++checked;
            }
    EXPECT_GT(checked, 40);
}

bool definedBig(int mode, Zan32s a, bool chroma) {
    bool t = a & kTop, l = a & kLeft, c = a & kCorner;
    int vert = chroma ? 2 : 0, dc = chroma ? 0 : 2;
    if (mode == vert) return t;
    if (mode == 1) return l;
    if (mode == dc) return true;
    return t && l && c;  // plane
}

TEST(H264Model, Intra16x16EveryModeEveryPatternMatchesTheStandardOrRefuses) {
    Rand r(0x161601);
    int defined = 0, refused = 0;
    for (int rep = 0; rep < 25; ++rep)
        for (int mode = 0; mode < 4; ++mode)
            for (int pat = 0; pat < 16; ++pat) {
                Zan32s avail = availWord(pat);
                Pic pic(r, 18, 16);
                std::vector<Zan8u> before = pic.px;
                ZanStatus st = zaniPredictIntra_16x16_H264_8u_C1IR(pic.block(), pic.step, mode, avail | strayBits(r));
                if (definedBig(mode, avail, false)) {
                    ASSERT_EQ(st, zanStsOk) << "mode " << mode << " availability " << avail;
                    auto want = model16x16(mode, readNeighbours(pic, 16, avail, false), avail & kTop, avail & kLeft);
                    expectPicture(pic, before, 16, want, "16x16", mode, avail);
                    ++defined;
                } else {
                    // The library's choice where the standard has no prediction.
                    ASSERT_EQ(st, zanStsEdgeUnavailable) << "mode " << mode << " availability " << avail;
                    ASSERT_TRUE(pic.px == before) << "written on refusal, mode " << mode;
                    ++refused;
                }
            }
    EXPECT_GT(defined, 0);
    EXPECT_GT(refused, 0);
}

TEST(H264Model, IntraChromaEveryModeEveryPatternMatchesTheStandardOrRefuses) {
    Rand r(0xc4c401);
    int defined = 0, refused = 0;
    for (int rep = 0; rep < 40; ++rep)
        for (int mode = 0; mode < 4; ++mode)
            for (int pat = 0; pat < 16; ++pat) {
                Zan32s avail = availWord(pat);
                Pic pic(r, 10, 8);
                std::vector<Zan8u> before = pic.px;
                ZanStatus st =
                    zaniPredictIntraChroma8x8_H264_8u_C1IR(pic.block(), pic.step, mode, avail | strayBits(r));
                if (definedBig(mode, avail, true)) {
                    ASSERT_EQ(st, zanStsOk) << "mode " << mode << " availability " << avail;
                    auto want = modelChroma(mode, readNeighbours(pic, 8, avail, false), avail & kTop, avail & kLeft);
                    expectPicture(pic, before, 8, want, "chroma", mode, avail);
                    ++defined;
                } else {
                    ASSERT_EQ(st, zanStsEdgeUnavailable) << "mode " << mode << " availability " << avail;
                    ASSERT_TRUE(pic.px == before) << "written on refusal, mode " << mode;
                    ++refused;
                }
            }
    EXPECT_GT(defined, 0);
    EXPECT_GT(refused, 0);
}

// Plane prediction driven to both clamps: steep ramps in the neighbours.
TEST(H264Model, IntraPlaneRampsClampLikeTheStandard) {
    Rand r(0x91a4e);
    for (int rep = 0; rep < 200; ++rep) {
        int sx = r.coin(50) ? 1 : -1, sy = r.coin(50) ? 1 : -1;
        for (int big = 0; big < 2; ++big) {
            int w = big ? 16 : 8;
            Pic pic(r, w + 2, w);
            i64 base = r.range(0, 255), gx = r.range(0, 40), gy = r.range(0, 40);
            for (int i = -1; i < w; ++i) {
                pic.block()[-pic.step + i] = static_cast<Zan8u>(clip(base + sx * gx * i, 0, 255));
                pic.block()[i * pic.step - 1] = static_cast<Zan8u>(clip(base + sy * gy * i, 0, 255));
            }
            std::vector<Zan8u> before = pic.px;
            Zan32s all = kTop | kLeft | kCorner;
            if (big) {
                ASSERT_EQ(zaniPredictIntra_16x16_H264_8u_C1IR(pic.block(), pic.step, 3, all), zanStsOk);
                expectPicture(pic, before, 16, model16x16(3, readNeighbours(pic, 16, all, false), true, true),
                              "16x16 plane", 3, all);
            } else {
                ASSERT_EQ(zaniPredictIntraChroma8x8_H264_8u_C1IR(pic.block(), pic.step, 3, all), zanStsOk);
                expectPicture(pic, before, 8, modelChroma(3, readNeighbours(pic, 8, all, false), true, true),
                              "chroma plane", 3, all);
            }
        }
    }
}

// ================================================= scaling and transforms

// normAdjust4x4(m, i, j): v[m][0] both even, v[m][1] both odd, v[m][2] mixed.
constexpr int kNorm4[6][3] = {{10, 16, 13}, {11, 18, 14}, {13, 20, 16}, {14, 23, 18}, {16, 25, 20}, {18, 29, 23}};
int norm4(int m, int i, int j) {
    if (i % 2 == 0 && j % 2 == 0) return kNorm4[m][0];
    if (i % 2 == 1 && j % 2 == 1) return kNorm4[m][1];
    return kNorm4[m][2];
}
// normAdjust8x8(m, i, j) from the six values per m.
constexpr int kNorm8[6][6] = {{20, 18, 32, 19, 25, 24}, {22, 19, 35, 21, 28, 26}, {26, 23, 42, 24, 33, 31},
                              {28, 25, 45, 26, 35, 33}, {32, 28, 51, 30, 40, 38}, {36, 32, 58, 34, 46, 43}};
int norm8(int m, int i, int j) {
    const int* v = kNorm8[m];
    if (i % 4 == 0 && j % 4 == 0) return v[0];
    if (i % 2 == 1 && j % 2 == 1) return v[1];
    if (i % 4 == 2 && j % 4 == 2) return v[2];
    if ((i % 4 == 0 && j % 2 == 1) || (i % 2 == 1 && j % 4 == 0)) return v[3];
    if ((i % 4 == 0 && j % 4 == 2) || (i % 4 == 2 && j % 4 == 0)) return v[4];
    return v[5];
}

// 4x4 scaling: d = (c * LS) << (qP/6 - 4) for qP >= 24, else rounded down-shift.
i64 scale4x4(i64 c, i64 ls, int qP) {
    int q = qP / 6;
    if (qP >= 24) return (c * ls) << (q - 4);
    return (c * ls + (i64{1} << (3 - q))) >> (4 - q);
}
// 8x8 scaling and the luma DC scaling share this form (qP >= 36 shifts left).
i64 scale36(i64 c, i64 ls, int qP) {
    int q = qP / 6;
    if (qP >= 36) return (c * ls) << (q - 6);
    return (c * ls + (i64{1} << (5 - q))) >> (6 - q);
}

// A magnitude bound: + and - add bounds, >> rounds the bound up.  Running a
// transform on bounds of its inputs bounds every term it computes; since each
// butterfly output bounds the terms it was built from, the outputs' bounds
// bound the whole computation.
struct Mag {
    i64 v;
};
Mag operator+(Mag a, Mag b) { return {a.v + b.v}; }
Mag operator-(Mag a, Mag b) { return {a.v + b.v}; }
Mag operator-(Mag a) { return a; }
Mag operator>>(Mag a, int k) { return {(a.v + (i64{1} << k) - 1) >> k}; }
Mag magOf(i64 v) { return {std::llabs(v)}; }

// One 4-point inverse transform of clause 8.5.12.2.
template <class T>
void idct4(T& d0, T& d1, T& d2, T& d3) {
    T e = d0 + d2, f = d0 - d2, g = (d1 >> 1) - d3, h = d1 + (d3 >> 1);
    d0 = e + h, d1 = f + g, d2 = f - g, d3 = e - h;
}
// Rows, then columns, in place on 16 raster values (no final rounding).
template <class T>
void idct4x4(T* b) {
    for (int i = 0; i < 4; ++i) idct4(b[i * 4 + 0], b[i * 4 + 1], b[i * 4 + 2], b[i * 4 + 3]);
    for (int j = 0; j < 4; ++j) idct4(b[0 + j], b[4 + j], b[8 + j], b[12 + j]);
}
// One 8-point inverse transform of clause 8.5.13.2.
template <class T>
void idct8(T* d, int s) {
    auto D = [&](int k) -> T& { return d[k * s]; };
    T a0 = D(0) + D(4), a4 = D(0) - D(4), a2 = (D(2) >> 1) - D(6), a6 = D(2) + (D(6) >> 1);
    T b0 = a0 + a6, b2 = a4 + a2, b4 = a4 - a2, b6 = a0 - a6;
    T a1 = -D(3) + D(5) - D(7) - (D(7) >> 1);
    T a3 = D(1) + D(7) - D(3) - (D(3) >> 1);
    T a5 = -D(1) + D(7) + D(5) + (D(5) >> 1);
    T a7 = D(3) + D(5) + D(1) + (D(1) >> 1);
    T b1 = a1 + (a7 >> 2), b7 = a7 - (a1 >> 2), b3 = a3 + (a5 >> 2), b5 = (a3 >> 2) - a5;
    D(0) = b0 + b7, D(1) = b2 + b5, D(2) = b4 + b3, D(3) = b6 + b1;
    D(4) = b6 - b1, D(5) = b4 - b3, D(6) = b2 - b5, D(7) = b0 - b7;
}
template <class T>
void idct8x8(T* b) {
    for (int i = 0; i < 8; ++i) idct8(b + i * 8, 1);
    for (int j = 0; j < 8; ++j) idct8(b + j, 8);
}
// Bound of every term of a transform of d, plus an added constant.
template <int N, class F>
i64 transformBound(const i64* d, F transform) {
    std::array<Mag, N> m;
    for (int k = 0; k < N; ++k) m[static_cast<size_t>(k)] = magOf(d[k]);
    transform(m.data());
    i64 peak = 0;
    for (auto& v : m) peak = std::max(peak, v.v);
    for (int k = 0; k < N; ++k) peak = std::max(peak, std::llabs(d[k]));
    return peak;
}

// The luma DC / 4:2:2 chroma DC 4-point Hadamard matrix of clauses 8.5.10 and 8.5.11.1.
constexpr int kHad4[4][4] = {{1, 1, 1, 1}, {1, 1, -1, -1}, {1, -1, -1, 1}, {1, -1, 1, -1}};
constexpr int kHad2[2][2] = {{1, 1}, {1, -1}};

// f = A * c * B for an r x s block (A r x r, B s x s).
template <int R, int S>
std::array<i64, R * S> hadamard(const i64* c, const int (&A)[R][R], const int (&B)[S][S]) {
    std::array<i64, R * S> f{};
    for (int i = 0; i < R; ++i)
        for (int j = 0; j < S; ++j) {
            i64 s = 0;
            for (int k = 0; k < R; ++k)
                for (int l = 0; l < S; ++l) s += A[i][k] * c[k * S + l] * B[l][j];
            f[static_cast<size_t>(i * S + j)] = s;
        }
    return f;
}
i64 sumAbs(const i64* c, int n) {
    i64 s = 0;
    for (int k = 0; k < n; ++k) s += std::llabs(c[k]);
    return s;
}

constexpr i64 kMax16 = 32767;
constexpr i64 kMax32 = 2147483647;

// ---- 4x4 inverse transform alone

TEST(H264Model, Residual4x4InverseMatchesTheStandard) {
    Rand r(0x44a1);
    for (int rep = 0; rep < 3000; ++rep) {
        bool wide = rep % 2;
        std::array<i64, 16> d;
        for (auto& v : d) v = r.level(wide ? 26 : 15);
        // Every term of the transform plus the 32 stays inside the form's width.
        i64 limit = wide ? kMax32 : kMax16;
        shrink(d.data(), 16, [&] { return transformBound<16>(d.data(), idct4x4<Mag>) + 32 <= limit; });
        std::array<i64, 16> want = d;
        idct4x4(want.data());
        for (auto& v : want) v = (v + 32) >> 6;
        if (wide) {
            std::array<Zan32s, 16> src, dst;
            for (int k = 0; k < 16; ++k) src[k] = static_cast<Zan32s>(d[k]);
            ASSERT_EQ(zaniTransformResidual4x4Inv_H264_32s_C1(src.data(), dst.data()), zanStsOk);
            for (int k = 0; k < 16; ++k) ASSERT_EQ(dst[k], want[k]) << "32s rep " << rep << " k " << k;
        } else {
            std::array<Zan16s, 16> src, dst;
            for (int k = 0; k < 16; ++k) src[k] = static_cast<Zan16s>(d[k]);
            ASSERT_EQ(zaniTransformResidual4x4Inv_H264_16s_C1(src.data(), dst.data()), zanStsOk);
            for (int k = 0; k < 16; ++k) ASSERT_EQ(dst[k], want[k]) << "16s rep " << rep << " k " << k;
        }
    }
}

// ---- 4x4 scaling, transform and prediction

// Standard reconstruction of one 4x4 block: scaled coefficients d (d[0] from
// the DC path when dcGiven), transform, rounding, prediction added and clipped.
struct Block4 {
    std::array<i64, 16> d, res;
};
Block4 reconstruct4(const std::array<i64, 16>& c, const std::array<i64, 16>& ls, int qP, bool dcGiven, i64 dc,
                    bool ac) {
    Block4 b;
    for (int k = 0; k < 16; ++k) b.d[static_cast<size_t>(k)] = ac || k == 0 ? scale4x4(c[k], ls[k], qP) : 0;
    if (dcGiven) b.d[0] = dc;
    b.res = b.d;
    idct4x4(b.res.data());
    for (auto& v : b.res) v = (v + 32) >> 6;
    return b;
}
std::array<i64, 16> flatLevelScale4(int m) {
    std::array<i64, 16> ls;
    for (int k = 0; k < 16; ++k) ls[static_cast<size_t>(k)] = 16 * norm4(m, k / 4, k % 4);
    return ls;
}

// Draws levels for one 4x4 block and shrinks them until the scaled values and
// every transform term (plus 32) fit in `limit`.
void drawLevels4(Rand& r, std::array<i64, 16>& c, i64& dc, const std::array<i64, 16>& ls, int qP, bool dcGiven,
                 bool ac, i64 limit) {
    for (auto& v : c) v = r.level(15);
    if (!ac)
        for (int k = 1; k < 16; ++k) c[k] = 0;
    dc = r.level(15);
    std::array<i64, 17> all;  // c then dc, shrunk together
    std::copy(c.begin(), c.end(), all.begin());
    all[16] = dc;
    shrink(all.data(), 17, [&] {
        std::array<i64, 16> cc;
        std::copy(all.begin(), all.begin() + 16, cc.begin());
        // The raw products c * LS are 32-bit; the scaled values themselves are
        // bounded with the transform terms below.
        for (int k = 0; k < 16; ++k)
            if (std::llabs(cc[k] * ls[k]) > kMax32 - 16) return false;
        Block4 b = reconstruct4(cc, ls, qP, dcGiven, all[16], true);
        return transformBound<16>(b.d.data(), idct4x4<Mag>) + 32 <= limit;
    });
    std::copy(all.begin(), all.begin() + 16, c.begin());
    dc = all[16];
}

TEST(H264Model, DequantTransformAddFlatMatchesTheStandard) {
    Rand r(0xd7a1);
    for (int rep = 0; rep < 3000; ++rep) {
        int qP = static_cast<int>(r.range(0, 51));
        bool dcGiven = r.coin(50), ac = r.coin(70);
        auto ls = flatLevelScale4(qP % 6);
        std::array<i64, 16> c;
        i64 dc;
        drawLevels4(r, c, dc, ls, qP, dcGiven, ac, kMax16);
        Block4 b = reconstruct4(c, ls, qP, dcGiven, dc, ac);

        Zan32s predStep = static_cast<Zan32s>(r.range(4, 24)), dstStep = static_cast<Zan32s>(r.range(4, 24));
        std::vector<Zan8u> pred(static_cast<size_t>(predStep * 4)), dst(static_cast<size_t>(dstStep * 4));
        for (auto& v : pred) v = static_cast<Zan8u>(r.coin(10) ? (r.coin(50) ? 0 : 255) : r.range(0, 255));
        for (auto& v : dst) v = static_cast<Zan8u>(r.range(0, 255));
        std::vector<Zan8u> dstBefore = dst;
        std::array<Zan16s, 16> coef;
        for (int k = 0; k < 16; ++k) coef[k] = static_cast<Zan16s>(c[k]);
        if (dcGiven && ac) coef[0] = static_cast<Zan16s>(r.range(-3, 3));  // replaced by the given DC
        std::array<Zan16s, 16> coefBefore = coef;
        Zan16s dc16 = static_cast<Zan16s>(dc);
        // With no AC and the DC given the coefficient block is not needed at all.
        bool noBlock = dcGiven && !ac && r.coin(50);
        ASSERT_EQ(zaniDequantTransformResidualAndAdd_H264_16s_C1I(pred.data(), noBlock ? nullptr : coef.data(),
                                                                  dcGiven ? &dc16 : nullptr,
                                                                  dst.data(), predStep, dstStep, qP, ac ? 1 : 0),
                  zanStsOk);
        for (int y = 0; y < 4; ++y)
            for (int x = 0; x < dstStep; ++x) {
                size_t i = static_cast<size_t>(y * dstStep + x);
                i64 want = x < 4 ? clip(pred[static_cast<size_t>(y * predStep + x)] + b.res[y * 4 + x], 0, 255)
                                 : dstBefore[i];
                ASSERT_EQ(dst[i], want) << "rep " << rep << " QP " << qP << " (" << x << ", " << y << ")";
            }
        for (int k = 0; k < 16; ++k)
            ASSERT_EQ(coef[k], ac ? b.res[k] : coefBefore[k]) << "residual store, rep " << rep << " k " << k;
    }
}

TEST(H264Model, DequantTransformInPlaceFlatMatchesTheStandard) {
    Rand r(0xd7a2);
    for (int rep = 0; rep < 3000; ++rep) {
        int qP = static_cast<int>(r.range(0, 51));
        bool dcGiven = r.coin(50), ac = r.coin(70);
        auto ls = flatLevelScale4(qP % 6);
        std::array<i64, 16> c;
        i64 dc;
        drawLevels4(r, c, dc, ls, qP, dcGiven, ac, kMax16);
        Block4 b = reconstruct4(c, ls, qP, dcGiven, dc, ac);
        Zan32s stepElems = static_cast<Zan32s>(r.range(4, 12));
        std::vector<Zan16s> buf(static_cast<size_t>(stepElems * 4));
        for (auto& v : buf) v = static_cast<Zan16s>(r.range(-32768, 32767));
        for (int k = 0; k < 16; ++k) buf[static_cast<size_t>(k / 4 * stepElems + k % 4)] = static_cast<Zan16s>(c[k]);
        std::vector<Zan16s> before = buf;
        Zan16s dc16 = static_cast<Zan16s>(dc);
        ASSERT_EQ(zaniDequantTransformResidual_H264_16s_C1I(buf.data(), stepElems * 2, dcGiven ? &dc16 : nullptr,
                                                           ac ? 1 : 0, qP),
                  zanStsOk);
        for (size_t i = 0; i < buf.size(); ++i) {
            int y = static_cast<int>(i) / stepElems, x = static_cast<int>(i) % stepElems;
            i64 want = x < 4 ? b.res[y * 4 + x] : before[i];
            ASSERT_EQ(buf[i], want) << "rep " << rep << " QP " << qP << " (" << x << ", " << y << ")";
        }
    }
}

// With a scaling matrix: LevelScale4x4 = weightScale * normAdjust, weights 1..255.
TEST(H264Model, QuantInvAddPred4x4WithLevelScaleMatchesTheStandard) {
    Rand r(0xd7a3);
    for (int rep = 0; rep < 4000; ++rep) {
        bool wide = rep % 2;
        int bitDepth = wide ? static_cast<int>(r.range(9, 14)) : 8;
        int qP = static_cast<int>(r.range(0, 51 + 6 * (bitDepth - 8)));
        bool dcGiven = r.coin(50), ac = r.coin(70), flat = r.coin(30);
        std::array<i64, 16> ls = flatLevelScale4(qP % 6);
        std::array<Zan16s, 16> ls16;
        if (!flat)
            for (int k = 0; k < 16; ++k) ls[static_cast<size_t>(k)] = r.range(1, 255) * norm4(qP % 6, k / 4, k % 4);
        for (int k = 0; k < 16; ++k) ls16[k] = static_cast<Zan16s>(ls[k]);
        std::array<i64, 16> c;
        i64 dc;
        // 16s: everything fits 16 bits.  32s: the residual stays well inside
        // 16 bits plus the sample range, so the 16-bit saturated sum with the
        // prediction cannot differ from the exact one after clipping.
        drawLevels4(r, c, dc, ls, qP, dcGiven, ac, wide ? (i64{1} << 20) : kMax16);
        Block4 b = reconstruct4(c, ls, qP, dcGiven, dc, ac);
        i64 maxSample = (i64{1} << bitDepth) - 1;
        Zan32s predStep = static_cast<Zan32s>(r.range(4, 20)), dstStep = static_cast<Zan32s>(r.range(4, 20));
        Zan32s acWord = ac ? static_cast<Zan32s>(r.range(0, 1000) * 2 + 1) : static_cast<Zan32s>(r.range(0, 1000) * 2);
        std::vector<i64> pred(static_cast<size_t>(predStep * 4));
        for (auto& v : pred) v = r.coin(10) ? (r.coin(50) ? 0 : maxSample) : r.range(0, maxSample);
        auto want = [&](int x, int y) { return clip(pred[static_cast<size_t>(y * predStep + x)] + b.res[y * 4 + x], 0, maxSample); };
        if (!wide) {
            std::vector<Zan8u> p8(pred.begin(), pred.end()), dst(static_cast<size_t>(dstStep * 4), 0x5a);
            std::array<Zan16s, 16> coef;
            for (int k = 0; k < 16; ++k) coef[k] = static_cast<Zan16s>(c[k]);
            std::array<Zan16s, 16> coefBefore = coef;
            Zan16s dc16 = static_cast<Zan16s>(dc);
            ASSERT_EQ(zaniTransformQuantInvAddPred4x4_H264_16s_C1IR(p8.data(), predStep, coef.data(),
                                                                    dcGiven ? &dc16 : nullptr, dst.data(), dstStep,
                                                                    qP, acWord, flat ? nullptr : ls16.data()),
                      zanStsOk);
            for (int y = 0; y < 4; ++y)
                for (int x = 0; x < dstStep; ++x)
                    ASSERT_EQ(dst[static_cast<size_t>(y * dstStep + x)], x < 4 ? want(x, y) : 0x5a)
                        << "16s rep " << rep << " QP " << qP << " (" << x << ", " << y << ")";
            for (int k = 0; k < 16; ++k) ASSERT_EQ(coef[k], ac ? b.res[k] : coefBefore[k]) << "16s residual k " << k;
        } else {
            std::vector<Zan16u> p16(pred.begin(), pred.end()), dst(static_cast<size_t>(dstStep * 4), 0x5a5a);
            std::array<Zan32s, 16> coef;
            for (int k = 0; k < 16; ++k) coef[k] = static_cast<Zan32s>(c[k]);
            std::array<Zan32s, 16> coefBefore = coef;
            Zan32s dc32 = static_cast<Zan32s>(dc);
            ASSERT_EQ(zaniTransformQuantInvAddPred4x4_H264_32s_C1IR(p16.data(), predStep * 2, coef.data(),
                                                                    dcGiven ? &dc32 : nullptr, dst.data(),
                                                                    dstStep * 2, qP, acWord, bitDepth,
                                                                    flat ? nullptr : ls16.data()),
                      zanStsOk);
            for (int y = 0; y < 4; ++y)
                for (int x = 0; x < dstStep; ++x)
                    ASSERT_EQ(dst[static_cast<size_t>(y * dstStep + x)], x < 4 ? want(x, y) : 0x5a5a)
                        << "32s rep " << rep << " QP " << qP << " depth " << bitDepth << " (" << x << ", " << y << ")";
            for (int k = 0; k < 16; ++k) ASSERT_EQ(coef[k], ac ? b.res[k] : coefBefore[k]) << "32s residual k " << k;
        }
    }
}

// ---- DC stages

// Luma DC of Intra 16x16 (clause 8.5.10): Hadamard both ways, then scaling
// with LevelScale4x4(qP % 6, 0, 0).
std::array<i64, 16> lumaDC(const i64* c, i64 ls, int qP) {
    auto f = hadamard<4, 4>(c, kHad4, kHad4);
    for (auto& v : f) v = scale36(v, ls, qP);
    return f;
}
// Chroma DC (clause 8.5.11.2) for 4:2:0: ((f * LS) << (qP / 6)) >> 5.
std::array<i64, 4> chromaDC420(const i64* c, i64 ls, int qP) {
    auto f = hadamard<2, 2>(c, kHad2, kHad2);
    for (auto& v : f) v = ((v * ls) << (qP / 6)) >> 5;
    return f;
}
// Chroma DC for 4:2:2: four rows by two columns, qP,DC = qP + 3.
std::array<i64, 8> chromaDC422(const i64* c, i64 ls, int qPdc) {
    auto f = hadamard<4, 2>(c, kHad4, kHad2);
    for (auto& v : f) v = scale36(v, ls, qPdc);
    return f;
}

// A DC stage fits its form when the Hadamard terms (bounded by the sum of
// magnitudes), every product f * LS (with room for the rounding constant) and
// every output stay inside the form's width.  A left shift of the product
// only makes it larger, so the output bounds the shifted product too.
template <size_t N>
bool dcFits(const i64* c, const std::array<i64, N>& f, i64 ls, const std::array<i64, N>& out, i64 limit) {
    if (sumAbs(c, static_cast<int>(N)) > limit) return false;
    for (size_t i = 0; i < N; ++i)
        if (std::llabs(f[i] * ls) > kMax32 - 64 || std::llabs(out[i]) > limit) return false;
    return true;
}

TEST(H264Model, LumaDCMatchesTheStandard) {
    Rand r(0xdc01);
    for (int rep = 0; rep < 3000; ++rep) {
        int form = rep % 3;  // 0 first generation, 1 level scale 16s, 2 level scale 32s
        int qP = static_cast<int>(r.range(0, form == 2 ? 87 : 51));
        bool flat = form == 0 || r.coin(30);
        i64 ls = flat ? 16 * kNorm4[qP % 6][0] : r.range(1, 255) * kNorm4[qP % 6][0];
        i64 limit = form == 2 ? kMax32 : kMax16;
        std::array<i64, 16> c;
        for (auto& v : c) v = r.level(form == 2 ? 24 : 15);
        shrink(c.data(), 16, [&] {
            return dcFits(c.data(), hadamard<4, 4>(c.data(), kHad4, kHad4), ls, lumaDC(c.data(), ls, qP), limit);
        });
        auto want = lumaDC(c.data(), ls, qP);
        Zan16s ls16 = static_cast<Zan16s>(ls);
        if (form == 2) {
            std::array<Zan32s, 16> b;
            for (int k = 0; k < 16; ++k) b[k] = static_cast<Zan32s>(c[k]);
            ASSERT_EQ(zaniTransformQuantInvLumaDC4x4_H264_32s_C1I(b.data(), qP, flat ? nullptr : &ls16), zanStsOk);
            for (int k = 0; k < 16; ++k) ASSERT_EQ(b[k], want[k]) << "32s rep " << rep << " QP " << qP << " k " << k;
        } else {
            std::array<Zan16s, 16> b;
            for (int k = 0; k < 16; ++k) b[k] = static_cast<Zan16s>(c[k]);
            ASSERT_EQ(form == 0 ? zaniTransformDequantLumaDC_H264_16s_C1I(b.data(), qP)
                                : zaniTransformQuantInvLumaDC4x4_H264_16s_C1I(b.data(), qP, flat ? nullptr : &ls16),
                      zanStsOk);
            for (int k = 0; k < 16; ++k)
                ASSERT_EQ(b[k], want[k]) << "form " << form << " rep " << rep << " QP " << qP << " k " << k;
        }
    }
}

TEST(H264Model, ChromaDC420MatchesTheStandard) {
    Rand r(0xdc02);
    for (int rep = 0; rep < 3000; ++rep) {
        int form = rep % 3;  // 0 first generation (QP 0..51), 1 level scale 16s (0..39), 2 level scale 32s (0..75)
        int qP = static_cast<int>(r.range(0, form == 0 ? 51 : form == 1 ? 39 : 75));
        bool flat = form == 0 || r.coin(30);
        i64 ls = flat ? 16 * kNorm4[qP % 6][0] : r.range(1, 255) * kNorm4[qP % 6][0];
        i64 limit = form == 2 ? kMax32 : kMax16;
        std::array<i64, 4> c;
        for (auto& v : c) v = r.level(form == 2 ? 24 : 15);
        shrink(c.data(), 4, [&] {
            return dcFits(c.data(), hadamard<2, 2>(c.data(), kHad2, kHad2), ls, chromaDC420(c.data(), ls, qP), limit);
        });
        auto want = chromaDC420(c.data(), ls, qP);
        Zan16s ls16 = static_cast<Zan16s>(ls);
        if (form == 2) {
            std::array<Zan32s, 4> b;
            for (int k = 0; k < 4; ++k) b[k] = static_cast<Zan32s>(c[k]);
            ASSERT_EQ(zaniTransformQuantInvChromaDC2x2_H264_32s_C1I(b.data(), qP, flat ? nullptr : &ls16), zanStsOk);
            for (int k = 0; k < 4; ++k) ASSERT_EQ(b[k], want[k]) << "32s rep " << rep << " QP " << qP << " k " << k;
        } else {
            std::array<Zan16s, 4> b;
            for (int k = 0; k < 4; ++k) b[k] = static_cast<Zan16s>(c[k]);
            ASSERT_EQ(form == 0 ? zaniTransformDequantChromaDC_H264_16s_C1I(b.data(), qP)
                                : zaniTransformQuantInvChromaDC2x2_H264_16s_C1I(b.data(), qP, flat ? nullptr : &ls16),
                      zanStsOk);
            for (int k = 0; k < 4; ++k)
                ASSERT_EQ(b[k], want[k]) << "form " << form << " rep " << rep << " QP " << qP << " k " << k;
        }
    }
}

TEST(H264Model, ChromaDC422MatchesTheStandard) {
    Rand r(0xdc03);
    for (int rep = 0; rep < 3000; ++rep) {
        bool wide = rep % 2;
        int qP = static_cast<int>(r.range(0, wide ? 75 : 39));
        int qPdc = qP + 3;
        bool flat = r.coin(30);
        i64 ls = flat ? 16 * kNorm4[qPdc % 6][0] : r.range(1, 255) * kNorm4[qPdc % 6][0];
        i64 limit = wide ? kMax32 : kMax16;
        std::array<i64, 8> c;
        for (auto& v : c) v = r.level(wide ? 24 : 15);
        shrink(c.data(), 8, [&] {
            return dcFits(c.data(), hadamard<4, 2>(c.data(), kHad4, kHad2), ls, chromaDC422(c.data(), ls, qPdc), limit);
        });
        auto want = chromaDC422(c.data(), ls, qPdc);
        Zan16s ls16 = static_cast<Zan16s>(ls);
        if (wide) {
            std::array<Zan32s, 8> b;
            for (int k = 0; k < 8; ++k) b[k] = static_cast<Zan32s>(c[k]);
            ASSERT_EQ(zaniTransformQuantInvChromaDC2x4_H264_32s_C1I(b.data(), qP, flat ? nullptr : &ls16), zanStsOk);
            for (int k = 0; k < 8; ++k) ASSERT_EQ(b[k], want[k]) << "32s rep " << rep << " QP " << qP << " k " << k;
        } else {
            std::array<Zan16s, 8> b;
            for (int k = 0; k < 8; ++k) b[k] = static_cast<Zan16s>(c[k]);
            ASSERT_EQ(zaniTransformQuantInvChromaDC2x4_H264_16s_C1I(b.data(), qP, flat ? nullptr : &ls16), zanStsOk);
            for (int k = 0; k < 8; ++k) ASSERT_EQ(b[k], want[k]) << "16s rep " << rep << " QP " << qP << " k " << k;
        }
    }
}

// ---- 8x8

// One 8x8 coefficient fits its form: for qP >= 36 the product and its left
// shift (done in the form's width) stay inside limit; below, the 32-bit
// product and the rounded result do.
bool fits8(i64 c, i64 ls, int qP, i64 limit) {
    i64 p = std::llabs(c * ls);
    if (qP >= 36) return (p << (qP / 6 - 6)) <= limit;
    return p <= kMax32 - 64 && std::llabs(scale36(c, ls, qP)) <= limit;
}

// LevelScale8x8 row for qP % 6 with weights 1..255 (or 16 everywhere).
std::array<i64, 64> levelScale8(Rand& r, int m, bool flat) {
    std::array<i64, 64> ls;
    for (int k = 0; k < 64; ++k)
        ls[static_cast<size_t>(k)] = (flat ? 16 : r.range(1, 255)) * norm8(m, k / 8, k % 8);
    return ls;
}

TEST(H264Model, Luma8x8ScalingMatchesTheStandard) {
    Rand r(0x8801);
    for (int rep = 0; rep < 2000; ++rep) {
        bool wide = rep % 2;
        int q = static_cast<int>(r.range(0, wide ? 14 : 8));
        int qP = q * 6 + static_cast<int>(r.range(0, 5));
        auto ls = levelScale8(r, qP % 6, r.coin(30));
        i64 limit = wide ? kMax32 : kMax16;
        std::array<i64, 64> c;
        for (auto& v : c) v = r.level(wide ? 24 : 15);
        shrink(c.data(), 64, [&] {
            for (int k = 0; k < 64; ++k)
                if (!fits8(c[k], ls[k], qP, limit)) return false;
            return true;
        });
        std::array<Zan16s, 64> ls16;
        for (int k = 0; k < 64; ++k) ls16[k] = static_cast<Zan16s>(ls[k]);
        if (wide) {
            std::array<Zan32s, 64> b;
            for (int k = 0; k < 64; ++k) b[k] = static_cast<Zan32s>(c[k]);
            ASSERT_EQ(zaniQuantInvLuma8x8_H264_32s_C1I(b.data(), q, ls16.data()), zanStsOk);
            for (int k = 0; k < 64; ++k)
                ASSERT_EQ(b[k], scale36(c[k], ls[k], qP)) << "32s rep " << rep << " qP " << qP << " k " << k;
        } else {
            std::array<Zan16s, 64> b;
            for (int k = 0; k < 64; ++k) b[k] = static_cast<Zan16s>(c[k]);
            ASSERT_EQ(zaniQuantLuma8x8Inv_H264_16s_C1I(b.data(), q, ls16.data()), zanStsOk);
            for (int k = 0; k < 64; ++k)
                ASSERT_EQ(b[k], scale36(c[k], ls[k], qP)) << "16s rep " << rep << " qP " << qP << " k " << k;
        }
    }
}

TEST(H264Model, Luma8x8InverseAddPredMatchesTheStandard) {
    Rand r(0x8802);
    for (int rep = 0; rep < 2000; ++rep) {
        bool wide = rep % 2;
        int bitDepth = wide ? static_cast<int>(r.range(8, 14)) : 8;
        i64 maxSample = (i64{1} << bitDepth) - 1;
        std::array<i64, 64> d;
        for (auto& v : d) v = r.level(wide ? 22 : 13);
        // 16s8u folds the prediction in as pred * 64 + 32 before adding the
        // transform output, so every transform term must stay within
        // 32767 - 255 * 64 - 32; the 32s form has room to 2^31 - 1.
        i64 limit = wide ? kMax32 - (maxSample << 6) - 32 : kMax16 - 255 * 64 - 32;
        shrink(d.data(), 64, [&] { return transformBound<64>(d.data(), idct8x8<Mag>) <= limit; });
        std::array<i64, 64> res = d;
        idct8x8(res.data());
        for (auto& v : res) v = (v + 32) >> 6;
        Zan32s predStep = static_cast<Zan32s>(r.range(8, 24)), dstStep = static_cast<Zan32s>(r.range(8, 24));
        std::vector<i64> pred(static_cast<size_t>(predStep * 8));
        for (auto& v : pred) v = r.coin(10) ? (r.coin(50) ? 0 : maxSample) : r.range(0, maxSample);
        auto want = [&](int x, int y) { return clip(pred[static_cast<size_t>(y * predStep + x)] + res[y * 8 + x], 0, maxSample); };
        if (wide) {
            std::vector<Zan16u> p16(pred.begin(), pred.end()), dst(static_cast<size_t>(dstStep * 8), 0x5a5a);
            std::array<Zan32s, 64> src;
            for (int k = 0; k < 64; ++k) src[k] = static_cast<Zan32s>(d[k]);
            ASSERT_EQ(zaniTransformInvAddPredLuma8x8_H264_32s16u_C1R(p16.data(), predStep * 2, src.data(), dst.data(),
                                                                     dstStep * 2, bitDepth),
                      zanStsOk);
            for (int y = 0; y < 8; ++y)
                for (int x = 0; x < dstStep; ++x)
                    ASSERT_EQ(dst[static_cast<size_t>(y * dstStep + x)], x < 8 ? want(x, y) : 0x5a5a)
                        << "32s16u rep " << rep << " depth " << bitDepth << " (" << x << ", " << y << ")";
        } else {
            std::vector<Zan8u> p8(pred.begin(), pred.end()), dst(static_cast<size_t>(dstStep * 8), 0x5a);
            std::array<Zan16s, 64> src;
            for (int k = 0; k < 64; ++k) src[k] = static_cast<Zan16s>(d[k]);
            std::array<Zan16s, 64> srcBefore = src;
            ASSERT_EQ(zaniTransformLuma8x8InvAddPred_H264_16s8u_C1R(p8.data(), predStep, src.data(), dst.data(), dstStep),
                      zanStsOk);
            for (int y = 0; y < 8; ++y)
                for (int x = 0; x < dstStep; ++x)
                    ASSERT_EQ(dst[static_cast<size_t>(y * dstStep + x)], x < 8 ? want(x, y) : 0x5a)
                        << "16s8u rep " << rep << " (" << x << ", " << y << ")";
            ASSERT_TRUE(src == srcBefore);
        }
    }
}

// The whole 8x8 path of the standard: scaling with a scaling matrix, then the
// transform added to the prediction, through both exports in sequence.
TEST(H264Model, Luma8x8ScalingThenInverseMatchesTheStandard) {
    Rand r(0x8803);
    for (int rep = 0; rep < 500; ++rep) {
        int qP = static_cast<int>(r.range(0, 51));
        auto ls = levelScale8(r, qP % 6, r.coin(30));
        std::array<i64, 64> c, d;
        for (auto& v : c) v = r.level(10);
        auto scaleAll = [&] {
            for (int k = 0; k < 64; ++k) d[static_cast<size_t>(k)] = scale36(c[k], ls[k], qP);
        };
        shrink(c.data(), 64, [&] {
            for (int k = 0; k < 64; ++k)
                if (!fits8(c[k], ls[k], qP, kMax16)) return false;
            scaleAll();
            return transformBound<64>(d.data(), idct8x8<Mag>) <= kMax16 - 255 * 64 - 32;
        });
        scaleAll();
        std::array<i64, 64> res = d;
        idct8x8(res.data());
        std::array<Zan16s, 64> b, ls16;
        std::array<Zan8u, 64> pred, dst;
        for (int k = 0; k < 64; ++k) {
            b[k] = static_cast<Zan16s>(c[k]);
            ls16[k] = static_cast<Zan16s>(ls[k]);
            pred[k] = static_cast<Zan8u>(r.range(0, 255));
        }
        ASSERT_EQ(zaniQuantLuma8x8Inv_H264_16s_C1I(b.data(), qP / 6, ls16.data()), zanStsOk);
        ASSERT_EQ(zaniTransformLuma8x8InvAddPred_H264_16s8u_C1R(pred.data(), 8, b.data(), dst.data(), 8), zanStsOk);
        for (int k = 0; k < 64; ++k)
            ASSERT_EQ(dst[k], clip(pred[k] + ((res[k] + 32) >> 6), 0, 255)) << "rep " << rep << " qP " << qP << " k " << k;
    }
}

}  // namespace
