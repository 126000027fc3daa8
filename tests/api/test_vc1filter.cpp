// VC-1 deblocking and overlap smoothing through the exported functions:
// plain models of the loop filter and the overlap filter written from SMPTE
// 421M's pseudo-code and matrix, agreement with them on random pictures for
// every export (edge flags and field-stored neighbours included), early
// exits, saturation, and statuses with outputs untouched on failure.
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <random>
#include <vector>

#include "zanvc.h"

namespace {

// ------------------------------------------------------------ loop filter

// A plane of 8-bit samples with room on every side of an edge at (16, 16).
struct Plane {
    static constexpr int S = 48;
    std::array<Zan8u, S * S> px{};
    Zan8u& at(int x, int y) { return px[static_cast<size_t>(y * S + x)]; }
    Zan8u* edge() { return &at(16, 16); }
};

// The standard's filter on one line of 8 samples p[1..8] (p[0] unused);
// returns filter_other_3_pixels.
bool model_line(int* p, int pquant) {
    const int a0 = (2 * (p[3] - p[6]) - 5 * (p[4] - p[5]) + 4) >> 3;
    if (std::abs(a0) >= pquant) return false;
    const int a1 = (2 * (p[1] - p[4]) - 5 * (p[2] - p[3]) + 4) >> 3;
    const int a2 = (2 * (p[5] - p[8]) - 5 * (p[6] - p[7]) + 4) >> 3;
    const int a3 = std::min(std::abs(a1), std::abs(a2));
    if (a3 >= std::abs(a0)) return false;
    const int sgn = a0 > 0 ? 1 : -1;
    int d = 5 * ((sgn * a3) - a0) / 8;
    const int clip = (p[4] - p[5]) / 2;
    if (clip == 0) return false;
    if (clip > 0) {
        d = std::clamp(d, 0, clip);
    } else {
        d = std::clamp(d, clip, 0);
    }
    p[4] -= d;
    p[5] += d;
    return true;
}

// Filters `lines` lines of the plane across an edge at (x0, y0), plane
// sample distance `ch` (1, or 2 for interleaved chroma, channel c); vertical
// edges run down the rows.  off(seg) says whether segment seg is turned off.
void model_edge(Plane& pl, bool vertical, int lines, int ch, int c, int pquant, const std::function<bool(int)>& off) {
    auto ref = [&](int line, int k) -> Zan8u& {  // sample p_k of a line, k = 1..8
        return vertical ? pl.at(16 + (k - 5) * ch + c, 16 + line) : pl.at(16 + line * ch + c, 16 + k - 5);
    };
    auto run = [&](int line) {
        int p[9];
        for (int k = 1; k <= 8; ++k) p[k] = ref(line, k);
        const bool r = model_line(p, pquant);
        ref(line, 4) = static_cast<Zan8u>(p[4]);
        ref(line, 5) = static_cast<Zan8u>(p[5]);
        return r;
    };
    for (int seg = 0; seg < lines / 4; ++seg) {
        if (off(seg)) continue;
        if (run(4 * seg + 2)) {  // the third pixel pair decides
            run(4 * seg);
            run(4 * seg + 1);
            run(4 * seg + 3);
        }
    }
}

// Random samples around a base with a step across the edge that varies by line.
void fill_plane(Plane& pl, std::mt19937& g) {
    const int base = static_cast<int>(g() % 256);
    const int spread = static_cast<int>(g() % 4 == 0 ? g() % 40 : g() % 4);
    std::vector<int> jump(Plane::S);
    for (auto& j : jump) j = g() % 3 == 0 ? 0 : static_cast<int>(g() % 61) - 30;
    for (int y = 0; y < Plane::S; ++y)
        for (int x = 0; x < Plane::S; ++x) {
            const bool far = g() % 2 ? x >= 16 : y >= 16;
            const int v = base + static_cast<int>(g() % (2 * spread + 1)) - spread + (far ? jump[(x + y) % Plane::S] : 0);
            pl.at(x, y) = static_cast<Zan8u>(std::clamp(v, 0, 255));
        }
}

TEST(Vc1Filter, DeblockingMatchesTheStandardsLoopFilter) {
    std::mt19937 g(7);
    int changed = 0;
    for (int draw = 0; draw < 3000; ++draw) {
        Plane in;
        fill_plane(in, g);
        const int pq = draw % 7 == 0 ? static_cast<int>(g() % 64) : 1 + static_cast<int>(g() % 31);
        const Zan32u f = g() % 3 == 0 ? g() : g() % 16, fv = g() % 4 == 0 ? g() : g() % 4;
        const int form = draw % 6;
        Plane got = in, want = in;
        ZanStatus st = zanStsOk;
        switch (form) {
            case 0:
                st = zaniFilterDeblockingLuma_VerEdge_VC1_8u_C1IR(got.edge(), pq, Plane::S, f);
                model_edge(want, true, 16, 1, 0, pq, [&](int s) { return (f >> s) & 1; });
                break;
            case 1:
                st = zaniFilterDeblockingLuma_HorEdge_VC1_8u_C1IR(got.edge(), pq, Plane::S, f);
                model_edge(want, false, 16, 1, 0, pq, [&](int s) { return (f >> s) & 1; });
                break;
            case 2:
                st = zaniFilterDeblockingChroma_VerEdge_VC1_8u_C1IR(got.edge(), pq, Plane::S, f);
                model_edge(want, true, 8, 1, 0, pq, [&](int s) { return (f >> (s + 1)) & 1; });
                break;
            case 3:
                st = zaniFilterDeblockingChroma_HorEdge_VC1_8u_C1IR(got.edge(), pq, Plane::S, f);
                model_edge(want, false, 8, 1, 0, pq, [&](int s) { return (f >> s) & 1; });
                break;
            case 4:
                st = zaniFilterDeblockingChroma_VerEdge_VC1_8u_C2IR(got.edge(), pq, Plane::S, f, fv);
                model_edge(want, true, 8, 2, 0, pq, [&](int s) { return (f >> s) & 1; });
                model_edge(want, true, 8, 2, 1, pq, [&](int s) { return (fv >> s) & 1; });
                break;
            default:
                st = zaniFilterDeblockingChroma_HorEdge_VC1_8u_C2IR(got.edge(), pq, Plane::S, f, fv);
                model_edge(want, false, 8, 2, 0, pq, [&](int s) { return (f >> s) & 1; });
                model_edge(want, false, 8, 2, 1, pq, [&](int s) { return (fv >> s) & 1; });
                break;
        }
        ASSERT_EQ(st, zanStsOk);
        ASSERT_EQ(want.px, got.px) << "form " << form << " draw " << draw << " pquant " << pq << " flags " << f << " "
                                   << fv;
        changed += want.px != in.px;
    }
    EXPECT_GT(changed, 1000);  // the draws reach the filter, not only its exits
}

// Lines of 8 samples p1..p8 across a vertical edge, one row per line.
void set_rows(Plane& pl, int first, int count, std::array<int, 8> v) {
    for (int y = first; y < first + count; ++y)
        for (int k = 0; k < 8; ++k) pl.at(12 + k, 16 + y) = static_cast<Zan8u>(v[static_cast<size_t>(k)]);
}
std::array<int, 2> p45(Plane& pl, int line) { return {pl.at(15, 16 + line), pl.at(16, 16 + line)}; }

TEST(Vc1Filter, DeblockingEarlyExitsAndKnownAnswers) {
    // 100 | 90: a0 = (2*10 - 5*10 + 4) >> 3 = -4, a1 = a2 = 0, clip = 5,
    // d = 5*4/8 = 2: p4 98, p5 92 -- if |a0| = 4 < PQUANT.
    const std::array<int, 8> step10 = {100, 100, 100, 100, 90, 90, 90, 90};
    const std::array<int, 8> flat = {100, 100, 100, 100, 100, 100, 100, 100};
    {
        Plane pl;
        set_rows(pl, 0, 16, step10);
        ASSERT_EQ(zaniFilterDeblockingLuma_VerEdge_VC1_8u_C1IR(pl.edge(), 5, Plane::S, 0), zanStsOk);
        for (int y = 0; y < 16; ++y) EXPECT_EQ(p45(pl, y), (std::array<int, 2>{98, 92})) << y;
    }
    {  // |a0| >= PQUANT stops every line
        Plane pl;
        set_rows(pl, 0, 16, step10);
        const auto before = pl.px;
        zaniFilterDeblockingLuma_VerEdge_VC1_8u_C1IR(pl.edge(), 4, Plane::S, 0);
        EXPECT_EQ(pl.px, before);
    }
    {  // a flat third line (a3 = |a0| = 0) leaves its whole segment alone
        Plane pl;
        set_rows(pl, 0, 16, step10);
        set_rows(pl, 2, 1, flat);
        zaniFilterDeblockingLuma_VerEdge_VC1_8u_C1IR(pl.edge(), 5, Plane::S, 0);
        for (int y = 0; y < 4; ++y) EXPECT_EQ(p45(pl, y), (std::array<int, 2>{y == 2 ? 100 : 100, y == 2 ? 100 : 90}));
        for (int y = 4; y < 16; ++y) EXPECT_EQ(p45(pl, y), (std::array<int, 2>{98, 92})) << y;
    }
    {  // a third line that passes does not filter a line that fails its own test
        Plane pl;
        set_rows(pl, 0, 4, step10);
        set_rows(pl, 0, 1, flat);
        zaniFilterDeblockingChroma_HorEdge_VC1_8u_C1IR(&pl.at(16, 16), 5, Plane::S, 0);  // other direction: no-op
        zaniFilterDeblockingChroma_VerEdge_VC1_8u_C1IR(pl.edge(), 5, Plane::S, 0);
        EXPECT_EQ(p45(pl, 0), (std::array<int, 2>{100, 100}));
        for (int y = 1; y < 4; ++y) EXPECT_EQ(p45(pl, y), (std::array<int, 2>{98, 92})) << y;
    }
    {  // clip == 0 on the third line (p4 - p5 = 1) stops the segment although
       // a0 = 4 and a3 = 0 pass
        Plane pl;
        set_rows(pl, 0, 8, step10);
        set_rows(pl, 2, 1, {100, 100, 100, 100, 99, 80, 80, 99});
        zaniFilterDeblockingChroma_VerEdge_VC1_8u_C1IR(pl.edge(), 10, Plane::S, 0);
        for (int y = 0; y < 4; ++y) EXPECT_EQ(p45(pl, y), (std::array<int, 2>{100, y == 2 ? 99 : 90})) << y;
        for (int y = 4; y < 8; ++y) EXPECT_EQ(p45(pl, y), (std::array<int, 2>{98, 92})) << y;
    }
    {  // d against the direction of clip becomes 0: the third line passes
       // unchanged (a0 = 34 >> 3 = 4, d = -20/8 = -2, clip = 1) and the
       // segment's other lines are filtered
        Plane pl;
        set_rows(pl, 0, 4, step10);
        set_rows(pl, 2, 1, {100, 100, 100, 100, 98, 80, 80, 98});
        zaniFilterDeblockingChroma_VerEdge_VC1_8u_C1IR(pl.edge(), 10, Plane::S, 0);
        EXPECT_EQ(p45(pl, 2), (std::array<int, 2>{100, 98}));
        for (int y : {0, 1, 3}) EXPECT_EQ(p45(pl, y), (std::array<int, 2>{98, 92})) << y;
    }
}

TEST(Vc1Filter, DeblockingEdgeFlags) {
    const std::array<int, 8> step10 = {100, 100, 100, 100, 90, 90, 90, 90};
    auto filtered_rows = [&](const std::function<void(Plane&)>& call, int rows) {
        Plane pl;
        set_rows(pl, 0, rows, step10);
        call(pl);
        std::vector<int> out;
        for (int y = 0; y < rows; ++y) out.push_back(p45(pl, y)[0] == 98);
        return out;
    };
    using V = std::vector<int>;
    // Luma: 15 leaves everything; each bit a quarter (0x16: bits 1 and 2,
    // rows 4-11; bit 4 is not a segment).
    EXPECT_EQ(filtered_rows([](Plane& p) { zaniFilterDeblockingLuma_VerEdge_VC1_8u_C1IR(p.edge(), 5, Plane::S, 15); }, 16),
              V(16, 0));
    EXPECT_EQ(filtered_rows([](Plane& p) { zaniFilterDeblockingLuma_VerEdge_VC1_8u_C1IR(p.edge(), 5, Plane::S, 0x16); }, 16),
              (V{1, 1, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1}));
    // Chroma vertical: bit 1 turns off rows 0-3, bit 2 rows 4-7, bit 0 nothing.
    EXPECT_EQ(filtered_rows([](Plane& p) { zaniFilterDeblockingChroma_VerEdge_VC1_8u_C1IR(p.edge(), 5, Plane::S, 2); }, 8),
              (V{0, 0, 0, 0, 1, 1, 1, 1}));
    EXPECT_EQ(filtered_rows([](Plane& p) { zaniFilterDeblockingChroma_VerEdge_VC1_8u_C1IR(p.edge(), 5, Plane::S, 4); }, 8),
              (V{1, 1, 1, 1, 0, 0, 0, 0}));
    EXPECT_EQ(filtered_rows([](Plane& p) { zaniFilterDeblockingChroma_VerEdge_VC1_8u_C1IR(p.edge(), 5, Plane::S, 1); }, 8),
              V(8, 1));
    // Luma horizontal edge: bits over the columns.
    Plane pl;
    for (int x = 0; x < 16; ++x)
        for (int k = 0; k < 8; ++k) pl.at(16 + x, 12 + k) = static_cast<Zan8u>(step10[static_cast<size_t>(k)]);
    zaniFilterDeblockingLuma_HorEdge_VC1_8u_C1IR(pl.edge(), 5, Plane::S, 9);
    for (int x = 0; x < 16; ++x) EXPECT_EQ(pl.at(16 + x, 15), (x < 4 || x >= 12) ? 100 : 98) << x;
}

TEST(Vc1Filter, DeblockingStatuses) {
    EXPECT_EQ(zaniFilterDeblockingLuma_VerEdge_VC1_8u_C1IR(nullptr, 5, 16, 0), zanStsNullPtr);
    EXPECT_EQ(zaniFilterDeblockingLuma_HorEdge_VC1_8u_C1IR(nullptr, 5, 16, 0), zanStsNullPtr);
    EXPECT_EQ(zaniFilterDeblockingChroma_VerEdge_VC1_8u_C1IR(nullptr, 5, 16, 0), zanStsNullPtr);
    EXPECT_EQ(zaniFilterDeblockingChroma_HorEdge_VC1_8u_C1IR(nullptr, 5, 16, 0), zanStsNullPtr);
    EXPECT_EQ(zaniFilterDeblockingChroma_VerEdge_VC1_8u_C2IR(nullptr, 5, 16, 0, 0), zanStsNullPtr);
    EXPECT_EQ(zaniFilterDeblockingChroma_HorEdge_VC1_8u_C2IR(nullptr, 5, 16, 0, 0), zanStsNullPtr);
    // Nothing else is checked: any PQUANT, a negative step.
    Plane pl;
    const std::array<int, 8> step10 = {100, 100, 100, 100, 90, 90, 90, 90};
    set_rows(pl, 0, 16, step10);
    EXPECT_EQ(zaniFilterDeblockingLuma_VerEdge_VC1_8u_C1IR(&pl.at(16, 31), 0x7FFFFFFF, -Plane::S, 0), zanStsOk);
    for (int y = 0; y < 16; ++y) EXPECT_EQ(p45(pl, y), (std::array<int, 2>{98, 92})) << y;
    EXPECT_EQ(zaniFilterDeblockingLuma_VerEdge_VC1_8u_C1IR(pl.edge(), -3, Plane::S, 0), zanStsOk);
    for (int y = 0; y < 16; ++y) EXPECT_EQ(p45(pl, y), (std::array<int, 2>{98, 92})) << y;
}

// ------------------------------------------------------- overlap smoothing

// The overlap filter as a matrix: ([7 0 0 1; -1 7 1 1; 1 1 7 -1; 1 0 0 7] x
// + [r0 r1 r0 r1]) >> 3, clamped to 8 bits, in plain integers (the inputs
// of these draws stay where no 16-bit intermediate saturates).
void model_smooth(const int x[4], int r0, int r1, int y[4]) {
    static constexpr int M[4][4] = {{7, 0, 0, 1}, {-1, 7, 1, 1}, {1, 1, 7, -1}, {1, 0, 0, 7}};
    const int r[4] = {r0, r1, r0, r1};
    for (int i = 0; i < 4; ++i) {
        int s = r[i];
        for (int j = 0; j < 4; ++j) s += M[i][j] * x[j];
        y[i] = std::clamp(s >> 3, 0, 255);
    }
}

// 16-bit blocks (32 rows by 32 samples) and an 8-bit picture.
struct Smooth {
    static constexpr int W = 32, DS = 48;
    std::vector<Zan16s> a = std::vector<Zan16s>(W * W), b = std::vector<Zan16s>(W * W);
    std::vector<Zan16s> a2 = std::vector<Zan16s>(W * W), b2 = std::vector<Zan16s>(W * W);
    std::vector<Zan8u> dst = std::vector<Zan8u>(DS * DS);
    static constexpr int SB = W * 2;  // source step in bytes
    Zan8u& d(int x, int y) { return dst[static_cast<size_t>((16 + y) * DS + 16 + x)]; }
    Zan8u* edge() { return &d(0, 0); }
    void fill(std::mt19937& g, int lo, int hi) {
        for (auto* v : {&a, &b, &a2, &b2})
            for (auto& s : *v) s = static_cast<Zan16s>(lo + static_cast<int>(g() % static_cast<unsigned>(hi - lo + 1)));
        for (auto& s : dst) s = static_cast<Zan8u>(g());
    }
};
int s16(const std::vector<Zan16s>& v, int x, int y) { return v[static_cast<size_t>(y * Smooth::W + x)]; }

// Rounding of a line by its position: r0 = 4, r1 = 3 on even lines, swapped on odd ones.
void smooth_line(Smooth& m, bool vertical, int line, int outLine, const int x[4], int r0, int r1, int ch = 1,
                 int c = 0) {
    int y[4];
    model_smooth(x, r0, r1, y);
    for (int k = 0; k < 4; ++k) {
        if (vertical)
            m.d((k - 2) * ch + c, outLine) = static_cast<Zan8u>(y[k]);
        else
            m.d(line * ch + c, k - 2) = static_cast<Zan8u>(y[k]);
    }
}

TEST(Vc1Filter, SmoothingMatchesTheStandardsOverlapFilter) {
    std::mt19937 g(11);
    for (int draw = 0; draw < 1200; ++draw) {
        Smooth got;
        got.fill(g, -1000, 1300);
        Smooth want = got;
        const int form = draw % 6;
        const Zan32u flag = g() % 2 ? g() % 16 : g();
        ZanStatus st = zanStsOk;
        auto alt = [](int i, int& r0, int& r1) { r0 = i % 2 ? 3 : 4, r1 = 7 - r0; };
        // Sources start at row 4, column 4 of the blocks.
        const Zan16s* A = &got.a[4 * Smooth::W + 4];
        const Zan16s* B = &got.b[4 * Smooth::W + 4];
        const Zan16s* A2 = &got.a2[4 * Smooth::W + 4];
        const Zan16s* B2 = &got.b2[4 * Smooth::W + 4];
        switch (form) {
            case 0:  // luma horizontal edge
                st = zaniSmoothingLuma_HorEdge_VC1_16s8u_C1R(A, Smooth::SB, B, Smooth::SB, got.edge(), Smooth::DS, flag);
                for (int i = 0; i < 16; ++i) {
                    if (!(flag & (i < 8 ? 3u : 12u))) continue;
                    const int x[4] = {s16(want.a, 4 + i, 4), s16(want.a, 4 + i, 5), s16(want.b, 4 + i, 4),
                                      s16(want.b, 4 + i, 5)};
                    int r0, r1;
                    alt(i, r0, r1);
                    smooth_line(want, false, i, 0, x, r0, r1);
                }
                break;
            case 1: {  // luma vertical edge, frame or field neighbours
                const Zan32s field = static_cast<Zan32s>(g() % 6) - 1;
                st = zaniSmoothingLuma_VerEdge_VC1_16s8u_C1R(A, Smooth::SB, B, Smooth::SB, got.edge(), Smooth::DS,
                                                             field, flag);
                if (flag == 0) break;
                for (int i = 0; i < 16; ++i) {
                    // Output row i; the source rows that meet on it.
                    int la = i, rb = i, r0, r1;
                    if (field == 0) {
                        if (!(flag & (i < 8 ? 3u : 12u))) continue;
                        alt(i, r0, r1);
                    } else if (field >= 1 && field <= 3) {
                        // Even output rows take the first field (rounding 4),
                        // odd ones the second (rounding 3).
                        const int half = i % 2, n = i / 2;
                        r0 = half ? 3 : 4;
                        r1 = 7 - r0;
                        la = field == 1 ? i : n + 8 * half;
                        rb = field == 2 ? i : n + 8 * half;
                    } else {
                        continue;
                    }
                    const int x[4] = {s16(want.a, 4, 4 + la), s16(want.a, 5, 4 + la), s16(want.b, 4, 4 + rb),
                                      s16(want.b, 5, 4 + rb)};
                    smooth_line(want, true, i, i, x, r0, r1);
                }
                break;
            }
            case 2:
                st = zaniSmoothingChroma_HorEdge_VC1_16s8u_C1R(A, Smooth::SB, B, Smooth::SB, got.edge(), Smooth::DS);
                for (int i = 0; i < 8; ++i) {
                    const int x[4] = {s16(want.a, 4 + i, 4), s16(want.a, 4 + i, 5), s16(want.b, 4 + i, 4),
                                      s16(want.b, 4 + i, 5)};
                    int r0, r1;
                    alt(i, r0, r1);
                    smooth_line(want, false, i, 0, x, r0, r1);
                }
                break;
            case 3:
                st = zaniSmoothingChroma_VerEdge_VC1_16s8u_C1R(A, Smooth::SB, B, Smooth::SB, got.edge(), Smooth::DS);
                for (int i = 0; i < 8; ++i) {
                    const int x[4] = {s16(want.a, 4, 4 + i), s16(want.a, 5, 4 + i), s16(want.b, 4, 4 + i),
                                      s16(want.b, 5, 4 + i)};
                    int r0, r1;
                    alt(i, r0, r1);
                    smooth_line(want, true, i, i, x, r0, r1);
                }
                break;
            case 4:
                st = zaniSmoothingChroma_HorEdge_VC1_16s8u_P2C2R(A, Smooth::SB, B, Smooth::SB, A2, Smooth::SB, B2,
                                                                 Smooth::SB, got.edge(), Smooth::DS);
                for (int c = 0; c < 2; ++c)
                    for (int i = 0; i < 8; ++i) {
                        const auto& ua = c ? want.a2 : want.a;
                        const auto& ub = c ? want.b2 : want.b;
                        const int x[4] = {s16(ua, 4 + i, 4), s16(ua, 4 + i, 5), s16(ub, 4 + i, 4), s16(ub, 4 + i, 5)};
                        int r0, r1;
                        alt(i, r0, r1);
                        smooth_line(want, false, i, 0, x, r0, r1, 2, c);
                    }
                break;
            default:
                st = zaniSmoothingChroma_VerEdge_VC1_16s8u_P2C2R(A, Smooth::SB, B, Smooth::SB, A2, Smooth::SB, B2,
                                                                 Smooth::SB, got.edge(), Smooth::DS);
                for (int c = 0; c < 2; ++c)
                    for (int i = 0; i < 8; ++i) {
                        const auto& ua = c ? want.a2 : want.a;
                        const auto& ub = c ? want.b2 : want.b;
                        const int x[4] = {s16(ua, 4, 4 + i), s16(ua, 5, 4 + i), s16(ub, 4, 4 + i), s16(ub, 5, 4 + i)};
                        int r0, r1;
                        alt(i, r0, r1);
                        smooth_line(want, true, i, i, x, r0, r1, 2, c);
                    }
                break;
        }
        ASSERT_EQ(st, zanStsOk);
        ASSERT_EQ(want.dst, got.dst) << "form " << form << " draw " << draw << " flag " << flag;
    }
}

// One chroma vertical edge of equal samples x per line.
std::array<int, 4> smooth_row(int x0, int x1, int x2, int x3, int row) {
    std::vector<Zan16s> l(16), r(16);
    for (int i = 0; i < 8; ++i) {
        l[static_cast<size_t>(2 * i)] = static_cast<Zan16s>(x0);
        l[static_cast<size_t>(2 * i + 1)] = static_cast<Zan16s>(x1);
        r[static_cast<size_t>(2 * i)] = static_cast<Zan16s>(x2);
        r[static_cast<size_t>(2 * i + 1)] = static_cast<Zan16s>(x3);
    }
    std::array<Zan8u, 8 * 8> d{};
    EXPECT_EQ(zaniSmoothingChroma_VerEdge_VC1_16s8u_C1R(l.data(), 4, r.data(), 4, d.data() + 4, 8), zanStsOk);
    const Zan8u* o = d.data() + 8 * row + 2;
    return {o[0], o[1], o[2], o[3]};
}

TEST(Vc1Filter, SmoothingKnownAnswers) {
    // Equal samples come back unchanged for both roundings.
    for (int v : {0, 1, 77, 128, 254, 255}) {
        EXPECT_EQ(smooth_row(v, v, v, v, 0), (std::array<int, 4>{v, v, v, v}));
        EXPECT_EQ(smooth_row(v, v, v, v, 1), (std::array<int, 4>{v, v, v, v}));
    }
    // Saturation into 0..255.
    EXPECT_EQ(smooth_row(300, 300, 300, 300, 0), (std::array<int, 4>{255, 255, 255, 255}));
    EXPECT_EQ(smooth_row(-5, -5, -5, -5, 1), (std::array<int, 4>{0, 0, 0, 0}));
    // 0 0 | 80 80: (80 + R) >> 3 = 10, (160 + 7 - R) >> 3 = 20, (480 + R) >> 3 = 60, (560 + 7 - R) >> 3 = 70.
    EXPECT_EQ(smooth_row(0, 0, 80, 80, 0), (std::array<int, 4>{10, 20, 60, 70}));
    // The rounding alternates: x3 = 4 gives y0 = (4 + R) >> 3, y1 = (4 + 7 - R) >> 3,
    // y2 = (-4 + R) >> 3 and y3 = (28 + 7 - R) >> 3: 1, 0, 0, 3 on even rows (R = 4)
    // and 0, 1, 0, 4 on odd ones (R = 3).
    EXPECT_EQ(smooth_row(0, 0, 0, 4, 0), (std::array<int, 4>{1, 0, 0, 3}));
    EXPECT_EQ(smooth_row(0, 0, 0, 4, 1), (std::array<int, 4>{0, 1, 0, 4}));
    // 16-bit arithmetic: 7 * 5000 wraps to -30536, so y0 is 0 although the
    // true sum is positive; y3 = (5000 + 3) >> 3 saturates to 255.
    EXPECT_EQ(smooth_row(5000, 0, 0, 0, 0), (std::array<int, 4>{0, 0, 255, 255}));
    // Saturating additions: 7 * 4000 + 4000 stops at 32767, (32767 + 4) stays 32767.
    EXPECT_EQ(smooth_row(4000, 0, 0, 4000, 0)[0], 255);
    EXPECT_EQ(smooth_row(-4000, 0, 0, -4000, 0)[0], 0);
}

TEST(Vc1Filter, SmoothingFlags) {
    std::vector<Zan16s> a(64, 200), b(64, 200);
    auto written = [](const std::vector<Zan8u>& d) {
        int n = 0;
        for (Zan8u v : d) n += v == 200;
        return n;
    };
    // Horizontal luma: 0 writes nothing, 5 all sixteen columns, 1 the first eight.
    for (Zan32u flag : {0u, 5u, 1u, 8u, 16u}) {
        std::vector<Zan8u> d(16 * 8, 0);
        EXPECT_EQ(zaniSmoothingLuma_HorEdge_VC1_16s8u_C1R(a.data(), 32, b.data(), 32, d.data() + 32, 16, flag), zanStsOk);
        EXPECT_EQ(written(d), flag == 0 || flag == 16 ? 0 : flag == 5 ? 64 : 32) << flag;
    }
    // Vertical luma: flag 0 or an unknown field flag writes nothing; field
    // modes write all 16 rows whatever the bits.
    struct Case {
        Zan32s field;
        Zan32u flag;
        int rows;
    };
    for (Case c : {Case{0, 0, 0}, Case{1, 0, 0}, Case{0, 4, 8}, Case{0, 3, 8}, Case{0, 16, 0}, Case{1, 16, 16},
                   Case{3, 1, 16}, Case{4, 15, 0}, Case{-1, 15, 0}}) {
        std::vector<Zan8u> d(8 * 20, 0);
        EXPECT_EQ(zaniSmoothingLuma_VerEdge_VC1_16s8u_C1R(a.data(), 4, b.data(), 4, d.data() + 4, 8, c.field, c.flag),
                  zanStsOk);
        EXPECT_EQ(written(d), 4 * c.rows) << c.field << " " << c.flag;
    }
}

TEST(Vc1Filter, SmoothingStatuses) {
    std::vector<Zan16s> s(64, 50);
    const Zan16s* p = s.data();
    std::vector<Zan8u> d(16 * 20, 9);
    const auto before = d;
    Zan8u* o = d.data() + 64;
    EXPECT_EQ(zaniSmoothingLuma_HorEdge_VC1_16s8u_C1R(nullptr, 32, p, 32, o, 16, 15), zanStsNullPtr);
    EXPECT_EQ(zaniSmoothingLuma_HorEdge_VC1_16s8u_C1R(p, 32, nullptr, 32, o, 16, 15), zanStsNullPtr);
    EXPECT_EQ(zaniSmoothingLuma_HorEdge_VC1_16s8u_C1R(p, 32, p, 32, nullptr, 16, 15), zanStsNullPtr);
    // A null pointer beats a flag that does nothing.
    EXPECT_EQ(zaniSmoothingLuma_HorEdge_VC1_16s8u_C1R(nullptr, 32, p, 32, o, 16, 0), zanStsNullPtr);
    EXPECT_EQ(zaniSmoothingLuma_VerEdge_VC1_16s8u_C1R(nullptr, 4, p, 4, o, 16, 0, 15), zanStsNullPtr);
    EXPECT_EQ(zaniSmoothingLuma_VerEdge_VC1_16s8u_C1R(p, 4, nullptr, 4, o, 16, 0, 0), zanStsNullPtr);
    EXPECT_EQ(zaniSmoothingLuma_VerEdge_VC1_16s8u_C1R(p, 4, p, 4, nullptr, 16, 7, 15), zanStsNullPtr);
    EXPECT_EQ(zaniSmoothingChroma_HorEdge_VC1_16s8u_C1R(nullptr, 16, p, 16, o, 16), zanStsNullPtr);
    EXPECT_EQ(zaniSmoothingChroma_HorEdge_VC1_16s8u_C1R(p, 16, p, 16, nullptr, 16), zanStsNullPtr);
    EXPECT_EQ(zaniSmoothingChroma_VerEdge_VC1_16s8u_C1R(p, 4, nullptr, 4, o, 16), zanStsNullPtr);
    EXPECT_EQ(zaniSmoothingChroma_VerEdge_VC1_16s8u_C1R(p, 4, p, 4, nullptr, 16), zanStsNullPtr);
    for (int k = 0; k < 5; ++k) {
        const Zan16s* q[4] = {p, p, p, p};
        Zan8u* out = o;
        if (k < 4)
            q[k] = nullptr;
        else
            out = nullptr;
        EXPECT_EQ(zaniSmoothingChroma_HorEdge_VC1_16s8u_P2C2R(q[0], 16, q[1], 16, q[2], 16, q[3], 16, out, 16),
                  zanStsNullPtr)
            << k;
        EXPECT_EQ(zaniSmoothingChroma_VerEdge_VC1_16s8u_P2C2R(q[0], 4, q[1], 4, q[2], 4, q[3], 4, out, 16),
                  zanStsNullPtr)
            << k;
    }
    EXPECT_EQ(d, before);
    // Steps are not checked: zero steps repeat one source row.
    EXPECT_EQ(zaniSmoothingChroma_HorEdge_VC1_16s8u_C1R(p, 0, p, 0, o, 16), zanStsOk);
    for (int k = -2; k < 2; ++k)
        for (int x = 0; x < 8; ++x) EXPECT_EQ(o[16 * k + x], 50);
}

}  // namespace
