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

}  // namespace
