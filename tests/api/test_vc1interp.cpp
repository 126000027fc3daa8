// VC-1 interpolation and range mapping through the exported functions:
// plain models of the standard's bicubic and bilinear filters, written here
// from the standard's formulas, against the library on random pictures; the
// block fetch against a model of the padded, intensity-compensated reference
// picture; statuses in order; outputs untouched on failure; masked
// selectors; and hand-worked answers.
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <functional>
#include <random>
#include <vector>

#include "zanvc.h"

namespace {

using Sample = std::function<Zan32s(Zan32s x, Zan32s y)>;

Zan32s clip255(Zan32s v) { return v < 0 ? 0 : v > 255 ? 255 : v; }

// ---- models (SMPTE 421M, the bicubic filters of quarter-sample motion
// compensation and the bilinear filter)

constexpr Zan32s kF[4][4] = {{0, 0, 0, 0}, {-4, 53, 18, -3}, {-1, 9, 9, -1}, {-3, 18, 53, -4}};

// One predicted sample at (x, y) + (dx, dy) / 4.
Zan32s model_bicubic(const Sample& p, Zan32s x, Zan32s y, Zan32s dx, Zan32s dy, Zan32s rnd) {
    if (dx == 0 && dy == 0) return p(x, y);
    if (dx != 0 && dy != 0) {
        // Vertical first, to 16-bit intermediates, then horizontal with 7 bits.
        auto s = [](Zan32s f) { return f == 2 ? 1 : 5; };
        const Zan32s shift = (s(dx) + s(dy)) >> 1;
        const Zan32s r = (1 << (shift - 1)) + rnd - 1;
        Zan32s sum = 0;
        for (Zan32s i = -1; i <= 2; ++i) {
            Zan32s v = 0;
            for (Zan32s j = -1; j <= 2; ++j) v += kF[dy][j + 1] * p(x + i, y + j);
            sum += kF[dx][i + 1] * ((v + r) >> shift);
        }
        return clip255((sum + 64 - rnd) >> 7);
    }
    const Zan32s f = dx ? dx : dy;
    const Zan32s shift = f == 2 ? 4 : 6;
    const Zan32s r = dx ? rnd : 1 - rnd;  // horizontal: RND; vertical: 1 - RND
    Zan32s sum = 0;
    for (Zan32s k = -1; k <= 2; ++k) sum += kF[f][k + 1] * (dx ? p(x + k, y) : p(x, y + k));
    return clip255((sum + (1 << (shift - 1)) - r) >> shift);
}

// Bilinear; n: distance to the right neighbour in samples of the accessor.
Zan32s model_bilinear(const Sample& p, Zan32s x, Zan32s y, Zan32s dx, Zan32s dy, Zan32s rnd, Zan32s n = 1) {
    return ((4 - dx) * (4 - dy) * p(x, y) + dx * (4 - dy) * p(x + n, y) + (4 - dx) * dy * p(x, y + 1) +
            dx * dy * p(x + n, y + 1) + 8 - rnd) >>
           4;
}

// A picture with guard bands, filled at random.
struct Picture {
    Zan32s w, h, step, margin;
    std::vector<Zan8u> data;
    Picture(Zan32s width, Zan32s height, Zan32s m, std::mt19937& g)
        : w(width), h(height), step(width + 2 * m), margin(m), data(static_cast<size_t>(step * (height + 2 * m))) {
        for (auto& b : data) b = static_cast<Zan8u>(g());
    }
    Zan8u* at(Zan32s x, Zan32s y) { return data.data() + static_cast<ptrdiff_t>(y + margin) * step + x + margin; }
    Sample sampler() {
        return [this](Zan32s x, Zan32s y) { return static_cast<Zan32s>(*at(x, y)); };
    }
};

struct Block {
    Zan32s step = 40;
    std::vector<Zan8u> data = std::vector<Zan8u>(40 * 24, 0xA5);
    Zan8u* p() { return data.data() + 2 * step + 4; }  // 2 guard rows, 4 guard columns
    Zan8u get(Zan32s x, Zan32s y) { return p()[y * step + x]; }
};

// Expects the block of w x h to equal want(x, y) and everything else to hold 0xA5.
void expect_block(Block& b, Zan32s w, Zan32s h, const std::function<Zan32s(Zan32s, Zan32s)>& want, const char* what) {
    for (Zan32s y = -2; y < 22; ++y)
        for (Zan32s x = -4; x < 36; ++x) {
            const Zan32s got = b.get(x, y);
            const Zan32s exp = (x >= 0 && x < w && y >= 0 && y < h) ? want(x, y) : 0xA5;
            ASSERT_EQ(got, exp) << what << " at " << x << "," << y;
        }
}

ZanVC1InterpolateRecord plain(const Zan8u* src, Zan32s ss, Block& b, Zan32s dx, Zan32s dy, ZaniSize roi, Zan32s rc) {
    return ZanVC1InterpolateRecord{src, ss, b.p(), b.step, dx, dy, roi, rc};
}

TEST(Vc1interp, BicubicAgreesWithTheStandardsFilters) {
    std::mt19937 g(421);
    Picture pic(48, 48, 8, g);
    const ZaniSize sizes[] = {{8, 8}, {16, 8}, {16, 16}};
    for (int draw = 0; draw < 6; ++draw) {
        if (draw % 3 == 2)
            for (auto& v : pic.data) v = (g() & 1) ? 255 : 0;
        for (const auto& sz : sizes)
            for (Zan32s pos = 0; pos < 16; ++pos)
                for (Zan32s rc = 0; rc < 2; ++rc) {
                    const Zan32s x = 1 + static_cast<Zan32s>(g() % 28), y = 1 + static_cast<Zan32s>(g() % 28);
                    const Zan32s dx = pos >> 2, dy = pos & 3;
                    Block b;
                    auto r = plain(pic.at(x, y), pic.step, b, dx, dy, sz, rc);
                    ASSERT_EQ(zaniInterpolateQPBicubic_VC1_8u_C1R(&r), zanStsOk);
                    const Sample s = pic.sampler();
                    expect_block(
                        b, sz.width, sz.height,
                        [&](Zan32s i, Zan32s j) { return model_bicubic(s, x + i, y + j, dx, dy, rc); }, "bicubic");
                }
    }
}

TEST(Vc1interp, BilinearAgreesWithTheStandardsFilter) {
    std::mt19937 g(422);
    Picture pic(48, 48, 8, g);
    const ZaniSize c1[] = {{16, 16}, {8, 8}, {8, 4}, {4, 4}};
    const ZaniSize c2[] = {{8, 8}, {8, 4}, {4, 4}};
    for (int draw = 0; draw < 4; ++draw)
        for (Zan32s pos = 0; pos < 16; ++pos)
            for (Zan32s rc = 0; rc < 2; ++rc) {
                const Zan32s dx = pos >> 2, dy = pos & 3;
                const Sample s = pic.sampler();
                for (const auto& sz : c1) {
                    const Zan32s x = static_cast<Zan32s>(g() % 30), y = static_cast<Zan32s>(g() % 30);
                    Block b;
                    auto r = plain(pic.at(x, y), pic.step, b, dx, dy, sz, rc);
                    ASSERT_EQ(zaniInterpolateQPBilinear_VC1_8u_C1R(&r), zanStsOk);
                    expect_block(
                        b, sz.width, sz.height,
                        [&](Zan32s i, Zan32s j) { return model_bilinear(s, x + i, y + j, dx, dy, rc); }, "bilinear");
                }
                for (const auto& sz : c2) {
                    const Zan32s x = 2 * static_cast<Zan32s>(g() % 15), y = static_cast<Zan32s>(g() % 30);
                    Block b;
                    auto r = plain(pic.at(x, y), pic.step, b, dx, dy, sz, rc);
                    ASSERT_EQ(zaniInterpolateQPBilinear_VC1_8u_C2R(&r), zanStsOk);
                    expect_block(
                        b, 2 * sz.width, sz.height,
                        [&](Zan32s i, Zan32s j) { return model_bilinear(s, x + i, y + j, dx, dy, rc, 2); },
                        "bilinear C2");
                }
            }
}

// ---- the block fetch

// Intensity-compensation table of the standard from LUMSCALE and LUMSHIFT
// (each 0..63).
std::array<Zan8u, 256> ic_table(Zan32s lumscale, Zan32s lumshift) {
    Zan32s scale, shift;
    if (lumscale == 0) {
        scale = -64;
        shift = (255 - lumshift * 2) * 64;
        if (lumshift > 31) shift += 128 * 64;
    } else {
        scale = lumscale + 32;
        shift = lumshift > 31 ? (lumshift - 64) * 64 : lumshift * 64;
    }
    std::array<Zan8u, 256> t{};
    for (Zan32s i = 0; i < 256; ++i) t[static_cast<size_t>(i)] = static_cast<Zan8u>(clip255((scale * i + shift + 32) >> 6));
    return t;
}

// The reference as the prediction sees it: intensity-compensated picture
// rows, extended without end by repeating edge samples.
Sample padded(Picture& pic, Zan32s W, Zan32s H, const Zan8u* top, const Zan8u* bottom, bool fieldPadding,
              bool fieldPrediction, bool bottomField) {
    return [=, &pic](Zan32s x, Zan32s y) {
        Zan32s sy;
        if (y < 0) sy = (fieldPadding && !fieldPrediction) ? (y & 1) : 0;
        else if (y >= H) sy = (fieldPadding && !fieldPrediction) ? (((y - H + 1) & 1) ? H - 2 : H - 1) : H - 1;
        else sy = y;
        const Zan32s sx = x < 0 ? 0 : x >= W ? W - 1 : x;
        // A field is every second picture row, the bottom one starting at row 1.
        const Zan32s py = fieldPrediction ? 2 * sy + (bottomField ? 1 : 0) : sy;
        const Zan8u* lut = fieldPrediction ? (bottomField ? bottom : top) : ((sy & 1) ? bottom : top);
        const Zan8u v = *pic.at(sx, py);
        return static_cast<Zan32s>(lut ? lut[v] : v);
    };
}

enum class Kind { Bicubic, Bilinear, BilinearC2 };

void check_fetch(Kind kind, std::mt19937& g) {
    const Zan32s W = 40, H = 32;  // in samples (pairs for C2)
    const Zan32s unit = kind == Kind::BilinearC2 ? 2 : 1;
    Picture pic(W * unit, H, 24, g);
    const auto t1 = ic_table(0, 63), t2 = ic_table(63, 0), t3 = ic_table(1, 32), t4 = ic_table(40, 31);
    const std::array<Zan8u, 256>* tables[][2] = {{nullptr, nullptr}, {&t1, &t2}, {&t3, nullptr}, {nullptr, &t4}};
    const ZaniSize sizes[] = {{8, 8}, {16, 8}, {16, 16}, {4, 4}, {8, 4}};
    const Zan32s xs[] = {-30, -3, -1, 0, 1, 2, 13, W - 18, W - 17, W - 9, W - 8, W - 4, W - 1, W, W + 9};
    const Zan32s ys[] = {-25, -2, -1, 0, 1, 11, H - 18, H - 17, H - 10, H - 9, H - 4, H - 1, H, H + 7};
    for (const auto& sz : sizes) {
        if (kind == Kind::Bicubic && (sz.width < 8 || sz.height < 8)) continue;
        if (kind != Kind::Bicubic && sz.width == 16 && sz.height != 16) continue;
        if (kind == Kind::BilinearC2 && sz.width == 16) continue;
        for (Zan32s x : xs)
            for (Zan32s y : ys)
                for (int mode = 0; mode < 4; ++mode) {
                    const Zan32s dx = static_cast<Zan32s>(g() % 4), dy = static_cast<Zan32s>(g() % 4),
                                 rc = static_cast<Zan32s>(g() % 2);
                    const auto& tt = tables[g() % 4];
                    const Zan8u* top = tt[0] ? tt[0]->data() : nullptr;
                    const Zan8u* bottom = tt[1] ? tt[1]->data() : nullptr;
                    const bool fieldPadding = mode & 1, fieldPrediction = mode == 2, bottomField = (g() & 1) != 0;
                    const Zan32s fieldH = fieldPrediction ? H / 2 : H;
                    const Zan32s px = x * W / 40, py = fieldPrediction ? y / 2 : y;
                    ZanVC1ICBlockRecord r{};
                    r.pSrc = pic.at(0, fieldPrediction && bottomField ? 1 : 0);
                    r.srcStep = pic.step;
                    Block b;
                    r.pDst = b.p();
                    r.dstStep = b.step;
                    r.pLUTTop = top;
                    r.pLUTBottom = bottom;
                    r.sizeFrame = {W, H};
                    r.sizeBlock = sz;
                    r.pointRefBlockPos = {px, py};
                    r.dx = dx;
                    r.dy = dy;
                    r.fieldPadding = fieldPadding;
                    r.fieldPrediction = fieldPrediction;
                    r.roundControl = rc;
                    r.bottomField = bottomField;
                    const Sample ref = padded(pic, W * unit, fieldH, top, bottom, fieldPadding, fieldPrediction, bottomField);
                    ZanStatus st;
                    std::function<Zan32s(Zan32s, Zan32s)> want;
                    Zan32s outW = sz.width;
                    if (kind == Kind::Bicubic) {
                        st = zaniInterpolateICBicubicBlock_VC1_8u_C1R(&r);
                        want = [&](Zan32s i, Zan32s j) { return model_bicubic(ref, px + i, py + j, dx, dy, rc); };
                    } else if (kind == Kind::Bilinear) {
                        st = zaniInterpolateICBilinearBlock_VC1_8u_C1R(&r);
                        want = [&](Zan32s i, Zan32s j) { return model_bilinear(ref, px + i, py + j, dx, dy, rc); };
                    } else {
                        st = zaniInterpolateICBilinearBlock_VC1_8u_C2R(&r);
                        outW = 2 * sz.width;
                        // Byte i of a row is channel i & 1 of pair px + i / 2.
                        want = [&](Zan32s i, Zan32s j) {
                            const Sample ch = [&](Zan32s pxx, Zan32s yy) {
                                const Zan32s c = pxx & 1, pair = pxx >> 1;
                                // Replicate the pair, then pick the channel.
                                const Zan32s sp = pair < 0 ? 0 : pair >= W ? W - 1 : pair;
                                return ref(2 * sp + c, yy);
                            };
                            return model_bilinear(ch, 2 * px + i, py + j, dx, dy, rc, 2);
                        };
                    }
                    ASSERT_EQ(st, zanStsOk);
                    expect_block(b, outW, sz.height, want, "fetch");
                    if (::testing::Test::HasFatalFailure()) {
                        ADD_FAILURE() << "kind " << static_cast<int>(kind) << " size " << sz.width << "x" << sz.height
                                      << " pos " << px << "," << py << " d " << dx << "," << dy << " rc " << rc
                                      << " mode " << mode << " bottom " << bottomField << " tables " << (top != nullptr)
                                      << (bottom != nullptr);
                        return;
                    }
                }
    }
}

TEST(Vc1interp, BicubicBlockFetchReplicatesAndCompensates) {
    std::mt19937 g(11);
    check_fetch(Kind::Bicubic, g);
}
TEST(Vc1interp, BilinearBlockFetchReplicatesAndCompensates) {
    std::mt19937 g(12);
    check_fetch(Kind::Bilinear, g);
}
TEST(Vc1interp, InterleavedBilinearBlockFetchReplicatesAndCompensates) {
    std::mt19937 g(13);
    check_fetch(Kind::BilinearC2, g);
}

// ---- statuses, masks, quirks, known answers

TEST(Vc1interp, NullPointersAreRefusedAndNothingIsWritten) {
    std::vector<Zan8u> src(64 * 64, 7);
    const Zan8u* s = src.data() + 2 * 64 + 2;
    using PlainFn = ZanStatus (*)(const ZanVC1InterpolateRecord*);
    for (PlainFn f : {PlainFn{zaniInterpolateQPBicubic_VC1_8u_C1R}, PlainFn{zaniInterpolateQPBilinear_VC1_8u_C1R},
                      PlainFn{zaniInterpolateQPBilinear_VC1_8u_C2R}}) {
        Block b;
        EXPECT_EQ(f(nullptr), zanStsNullPtr);
        auto r = plain(nullptr, 64, b, 1, 1, {8, 8}, 0);
        EXPECT_EQ(f(&r), zanStsNullPtr);
        r = plain(s, 64, b, 1, 1, {8, 8}, 0);
        r.pDst = nullptr;
        EXPECT_EQ(f(&r), zanStsNullPtr);
        expect_block(b, 0, 0, [](Zan32s, Zan32s) { return 0; }, "untouched");
    }
    using IcFn = ZanStatus (*)(const ZanVC1ICBlockRecord*);
    for (IcFn f : {IcFn{zaniInterpolateICBicubicBlock_VC1_8u_C1R}, IcFn{zaniInterpolateICBilinearBlock_VC1_8u_C1R},
                   IcFn{zaniInterpolateICBilinearBlock_VC1_8u_C2R}}) {
        Block b;
        ZanVC1ICBlockRecord r{};
        r.pSrc = src.data();
        r.srcStep = 64;
        r.pDst = b.p();
        r.dstStep = b.step;
        r.sizeFrame = {16, 16};
        r.sizeBlock = {8, 8};
        EXPECT_EQ(f(nullptr), zanStsNullPtr);
        r.pSrc = nullptr;
        EXPECT_EQ(f(&r), zanStsNullPtr);
        r.pSrc = src.data();
        r.pDst = nullptr;
        EXPECT_EQ(f(&r), zanStsNullPtr);
        expect_block(b, 0, 0, [](Zan32s, Zan32s) { return 0; }, "untouched");
        r.pDst = b.p();  // null tables are allowed
        EXPECT_EQ(f(&r), zanStsOk);
    }
}

TEST(Vc1interp, RangeMappingChecksInOrder) {
    std::vector<Zan8u> src(64, 100), dst(64, 0xA5);
    // A null pointer beats a bad value; a bad value beats an empty size.
    EXPECT_EQ(zaniRangeMapping_VC1_8u_C1R(nullptr, 8, dst.data(), 8, {8, 8}, 99), zanStsNullPtr);
    EXPECT_EQ(zaniRangeMapping_VC1_8u_C1R(src.data(), 8, nullptr, 8, {0, 0}, 99), zanStsNullPtr);
    EXPECT_EQ(zaniRangeMapping_VC1_8u_C1R(src.data(), 8, dst.data(), 8, {0, 0}, 8), zanStsOutOfRange);
    EXPECT_EQ(zaniRangeMapping_VC1_8u_C1R(src.data(), 8, dst.data(), 8, {8, 8}, -1), zanStsOutOfRange);
    EXPECT_EQ(zaniRangeMapping_VC1_8u_C1R(src.data(), 8, dst.data(), 8, {0, 8}, 7), zanStsOk);
    EXPECT_EQ(zaniRangeMapping_VC1_8u_C1R(src.data(), 8, dst.data(), 8, {8, -1}, 0), zanStsOk);
    for (Zan8u v : dst) ASSERT_EQ(v, 0xA5);
}

TEST(Vc1interp, RangeMappingValues) {
    // Every input and every value, on the vector path (width 256) and the
    // scalar one (width 255), against the standard's ((p - 128) * (k + 9) + 4) >> 3, plus 128.
    std::vector<Zan8u> src(256), dst(256), dst2(256);
    for (int i = 0; i < 256; ++i) src[static_cast<size_t>(i)] = static_cast<Zan8u>(i);
    for (Zan32s k = 0; k < 8; ++k) {
        ASSERT_EQ(zaniRangeMapping_VC1_8u_C1R(src.data(), 256, dst.data(), 256, {256, 1}, k), zanStsOk);
        std::fill(dst2.begin(), dst2.end(), 0xEE);
        ASSERT_EQ(zaniRangeMapping_VC1_8u_C1R(src.data(), 256, dst2.data(), 256, {255, 1}, k), zanStsOk);
        for (Zan32s p = 0; p < 256; ++p) {
            const Zan32s want = clip255((((p - 128) * (k + 9) + 4) >> 3) + 128);
            ASSERT_EQ(dst[static_cast<size_t>(p)], want) << "k " << k << " p " << p;
            ASSERT_EQ(dst2[static_cast<size_t>(p)], p < 255 ? want : 0xEE) << "k " << k << " p " << p;
        }
    }
    // k = 7 keeps the extremes; k = 0 maps 0 to 0 (clamped), 200 to 209.
    Zan8u in[8] = {0, 255, 128, 200, 0, 255, 128, 200}, out[8];
    ASSERT_EQ(zaniRangeMapping_VC1_8u_C1R(in, 4, out, 4, {4, 2}, 7), zanStsOk);
    EXPECT_EQ(out[0], 0);
    EXPECT_EQ(out[1], 255);
    EXPECT_EQ(out[2], 128);
    ASSERT_EQ(zaniRangeMapping_VC1_8u_C1R(in, 4, out, 4, {4, 2}, 0), zanStsOk);
    EXPECT_EQ(out[0], 0);
    EXPECT_EQ(out[3], 209);
    EXPECT_EQ(out[6], 128);
    // In place, odd step.
    std::vector<Zan8u> plane(13 * 3, 200);
    ASSERT_EQ(zaniRangeMapping_VC1_8u_C1R(plane.data(), 13, plane.data(), 13, {11, 3}, 0), zanStsOk);
    for (int i = 0; i < 13 * 3; ++i) EXPECT_EQ(plane[static_cast<size_t>(i)], i % 13 < 11 ? 209 : 200);
}

// A plane of 48 x 48 whose rows or columns step from 0 to 255 between
// coordinate 20 and 21.
struct Edge {
    std::vector<Zan8u> v = std::vector<Zan8u>(48 * 48);
    Edge(bool vertical) {
        for (int y = 0; y < 48; ++y)
            for (int x = 0; x < 48; ++x) v[static_cast<size_t>(y * 48 + x)] = ((vertical ? y : x) >= 21) ? 255 : 0;
    }
    const Zan8u* at(int x, int y) const { return v.data() + y * 48 + x; }
};

TEST(Vc1interp, BicubicKnownAnswers) {
    const Edge across(false), down(true);
    // Half position across the edge 0, 0 | 255, 255: (9 * 255 - 255 + 8 - RND) >> 4:
    // 128 with RND 0, 127 with RND 1.  Down the same edge the rounding is
    // 8 - 1 + RND: 127 and 128; the two directions are not alike.
    for (Zan32s rc = 0; rc < 2; ++rc) {
        Block b;
        auto r = plain(across.at(20, 4), 48, b, 2, 0, {8, 8}, rc);
        ASSERT_EQ(zaniInterpolateQPBicubic_VC1_8u_C1R(&r), zanStsOk);
        EXPECT_EQ(b.get(0, 0), rc ? 127 : 128);
        EXPECT_EQ(b.get(1, 3), 255);  // 255 everywhere to the right
        Block c;
        r = plain(down.at(4, 20), 48, c, 0, 2, {8, 8}, rc);
        ASSERT_EQ(zaniInterpolateQPBicubic_VC1_8u_C1R(&r), zanStsOk);
        EXPECT_EQ(c.get(5, 0), rc ? 128 : 127);
        // Centre (2, 2) on the vertical edge: the vertical pass with shift 1
        // gives (2040 + RND) >> 1 = 1020, then (16 * 1020 + 64 - RND) >> 7.
        Block d;
        r = plain(down.at(4, 20), 48, d, 2, 2, {8, 8}, rc);
        ASSERT_EQ(zaniInterpolateQPBicubic_VC1_8u_C1R(&r), zanStsOk);
        EXPECT_EQ(d.get(3, 0), rc ? 127 : 128);
    }
    // Saturation: position 1 on 255 | 0, 0, 255 goes below 0; on 0 | 255, 255,
    // 0 it reaches (71 * 255 + 32) >> 6 = 283, above 255.
    std::vector<Zan8u> line = {0, 255, 0, 0, 255, 0, 0, 255, 255, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    std::vector<Zan8u> plane(20 * 12);
    for (int y = 0; y < 12; ++y) std::memcpy(plane.data() + y * 20, line.data(), 20);
    Block b;
    auto r = plain(plane.data() + 20 + 2, 20, b, 1, 0, {8, 8}, 0);
    ASSERT_EQ(zaniInterpolateQPBicubic_VC1_8u_C1R(&r), zanStsOk);
    EXPECT_EQ(b.get(0, 0), 0);    // columns 1..4: 255, 0, 0, 255
    EXPECT_EQ(b.get(5, 0), 255);  // columns 6..9: 0, 255, 255, 0
    // A constant plane stays constant at every position.
    std::vector<Zan8u> flat(32 * 32, 77);
    for (Zan32s pos = 0; pos < 16; ++pos) {
        Block f;
        r = plain(flat.data() + 2 * 32 + 2, 32, f, pos >> 2, pos & 3, {16, 16}, pos & 1);
        ASSERT_EQ(zaniInterpolateQPBicubic_VC1_8u_C1R(&r), zanStsOk);
        expect_block(f, 16, 16, [](Zan32s, Zan32s) { return 77; }, "flat");
    }
}

TEST(Vc1interp, BicubicBlockSizeFromTheSizeSum) {
    std::vector<Zan8u> flat(40 * 40, 9);
    // 8 wide by 16 high counts as 16x8: 16 columns, 8 rows written.
    Block b;
    auto r = plain(flat.data() + 2 * 40 + 2, 40, b, 1, 2, {8, 16}, 0);
    ASSERT_EQ(zaniInterpolateQPBicubic_VC1_8u_C1R(&r), zanStsOk);
    expect_block(b, 16, 8, [](Zan32s, Zan32s) { return 9; }, "8x16");
    // 4x4 counts as 8x8.
    Block c;
    r = plain(flat.data() + 2 * 40 + 2, 40, c, 3, 0, {4, 4}, 1);
    ASSERT_EQ(zaniInterpolateQPBicubic_VC1_8u_C1R(&r), zanStsOk);
    expect_block(c, 8, 8, [](Zan32s, Zan32s) { return 9; }, "4x4");
}

TEST(Vc1interp, BilinearMasksAndKnownAnswers) {
    std::mt19937 g(5);
    Picture pic(40, 40, 4, g);
    const Sample s = pic.sampler();
    // Stray bits: dx 5 is 1, dy 6 is 2, roundControl 3 is 1.
    Block a, b;
    auto r = plain(pic.at(3, 3), pic.step, a, 5, 6, {8, 8}, 3);
    ASSERT_EQ(zaniInterpolateQPBilinear_VC1_8u_C1R(&r), zanStsOk);
    r = plain(pic.at(3, 3), pic.step, b, 1, 2, {8, 8}, 1);
    ASSERT_EQ(zaniInterpolateQPBilinear_VC1_8u_C1R(&r), zanStsOk);
    EXPECT_EQ(a.data, b.data);
    // (0, 0) with roundControl 1 copies.
    Block c;
    r = plain(pic.at(3, 3), pic.step, c, 0, 0, {4, 4}, 1);
    ASSERT_EQ(zaniInterpolateQPBilinear_VC1_8u_C1R(&r), zanStsOk);
    expect_block(c, 4, 4, [&](Zan32s x, Zan32s y) { return s(3 + x, 3 + y); }, "copy");
    // (2, 2): (a + b + c + d + 2 - RND) >> 2, through the half-sample copies.
    for (Zan32s rc = 0; rc < 2; ++rc) {
        Block d;
        r = plain(pic.at(5, 6), pic.step, d, 2, 2, {8, 4}, rc);
        ASSERT_EQ(zaniInterpolateQPBilinear_VC1_8u_C1R(&r), zanStsOk);
        expect_block(
            d, 8, 4,
            [&](Zan32s x, Zan32s y) {
                return (s(5 + x, 6 + y) + s(6 + x, 6 + y) + s(5 + x, 7 + y) + s(6 + x, 7 + y) + 2 - rc) >> 2;
            },
            "HH");
    }
    // Width 16 makes a 16x16 block whatever the height.
    Block e;
    r = plain(pic.at(1, 1), pic.step, e, 1, 1, {16, 8}, 0);
    ASSERT_EQ(zaniInterpolateQPBilinear_VC1_8u_C1R(&r), zanStsOk);
    expect_block(e, 16, 16, [&](Zan32s x, Zan32s y) { return model_bilinear(s, 1 + x, 1 + y, 1, 1, 0); }, "16x8");
    // Quarter position by hand: 0 | 255 with dx 1: (3 * 4 * 0 + 1 * 4 * 255 + 8 - RND) >> 4 = 64 (RND 0), 64 (RND 1);
    // dx 3 (RND 1): (4 * 3 * 255 + 7) >> 4 = 191.
    const Edge across(false);
    Block f;
    r = plain(across.at(20, 0), 48, f, 3, 0, {4, 4}, 1);
    ASSERT_EQ(zaniInterpolateQPBilinear_VC1_8u_C1R(&r), zanStsOk);
    EXPECT_EQ(f.get(0, 0), 191);
    r = plain(across.at(20, 0), 48, f, 1, 0, {4, 4}, 0);
    ASSERT_EQ(zaniInterpolateQPBilinear_VC1_8u_C1R(&r), zanStsOk);
    EXPECT_EQ(f.get(0, 0), 64);
}

TEST(Vc1interp, BlockFetchEdgeCases) {
    // A 6 x 6 picture whose sample is 10 * row + column, tables off.
    std::vector<Zan8u> pic(6 * 6);
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 6; ++x) pic[static_cast<size_t>(y * 6 + x)] = static_cast<Zan8u>(10 * y + x);
    ZanVC1ICBlockRecord r{};
    r.pSrc = pic.data();
    r.srcStep = 6;
    r.sizeFrame = {6, 6};
    r.sizeBlock = {8, 8};
    // Wholly beyond the bottom-right corner: every sample is the corner's.
    Block a;
    r.pDst = a.p();
    r.dstStep = a.step;
    r.pointRefBlockPos = {20, 30};
    ASSERT_EQ(zaniInterpolateICBicubicBlock_VC1_8u_C1R(&r), zanStsOk);
    expect_block(a, 8, 8, [](Zan32s, Zan32s) { return 55; }, "bottom right");
    // Beyond the top-left corner at a quarter position: still the corner's sample.
    Block b;
    r.pDst = b.p();
    r.pointRefBlockPos = {-40, -9};
    r.dx = 1;
    r.dy = 3;
    ASSERT_EQ(zaniInterpolateICBicubicBlock_VC1_8u_C1R(&r), zanStsOk);
    expect_block(b, 8, 8, [](Zan32s, Zan32s) { return 0; }, "top left");
    // Above the top-right corner, whole position: row 0 for the rows above,
    // the last column for the columns right.
    Block c;
    r.pDst = c.p();
    r.pointRefBlockPos = {3, -4};
    r.dx = r.dy = 0;
    ASSERT_EQ(zaniInterpolateICBilinearBlock_VC1_8u_C1R(&r), zanStsOk);
    expect_block(c, 8, 8, [](Zan32s x, Zan32s y) { return 10 * (y < 4 ? 0 : y - 4 > 5 ? 5 : y - 4) + (3 + x > 5 ? 5 : 3 + x); }, "top right");
    // Field padding below the bottom-left corner: rows 6, 7, 8, 9 repeat rows
    // 4, 5, 4, 5 (same parity); without it they repeat row 5.
    for (int fp = 0; fp < 2; ++fp) {
        Block d;
        r.pDst = d.p();
        r.pointRefBlockPos = {-2, 4};
        r.fieldPadding = fp;
        ASSERT_EQ(zaniInterpolateICBilinearBlock_VC1_8u_C1R(&r), zanStsOk);
        expect_block(
            d, 8, 8,
            [&](Zan32s x, Zan32s y) {
                const Zan32s py = 4 + y, row = py < 6 ? py : fp ? 4 + (py & 1) : 5;
                return 10 * row + (x - 2 < 0 ? 0 : x - 2 > 5 ? 5 : x - 2);
            },
            "field padding");
    }
    // Tables by row parity: top rows (even) through one table, bottom rows
    // (odd) through the other; with fieldPrediction one table for all.
    std::array<Zan8u, 256> plus{}, minus{};
    for (int i = 0; i < 256; ++i) {
        plus[static_cast<size_t>(i)] = static_cast<Zan8u>(i + 100);
        minus[static_cast<size_t>(i)] = static_cast<Zan8u>(255 - i);
    }
    r.fieldPadding = 0;
    r.pLUTTop = plus.data();
    r.pLUTBottom = minus.data();
    r.pointRefBlockPos = {0, 0};
    r.sizeBlock = {4, 4};
    Block e;
    r.pDst = e.p();
    ASSERT_EQ(zaniInterpolateICBilinearBlock_VC1_8u_C1R(&r), zanStsOk);
    expect_block(e, 4, 4, [](Zan32s x, Zan32s y) { return y & 1 ? 255 - (10 * y + x) : 10 * y + x + 100; }, "parity");
    r.fieldPrediction = 1;
    r.bottomField = 1;
    r.pSrc = pic.data() + 6;  // the bottom field: rows 1, 3, 5
    Block f;
    r.pDst = f.p();
    r.pointRefBlockPos = {1, 1};
    ASSERT_EQ(zaniInterpolateICBilinearBlock_VC1_8u_C1R(&r), zanStsOk);
    // Field rows 1, 2, then beyond the field's 3 rows: repeat field row 2 (picture row 5).
    expect_block(
        f, 4, 4, [](Zan32s x, Zan32s y) { return 255 - (10 * (2 * (1 + y > 2 ? 2 : 1 + y) + 1) + (1 + x > 5 ? 5 : 1 + x)); },
        "field prediction");
}

}  // namespace
