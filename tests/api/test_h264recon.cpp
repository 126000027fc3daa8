// H.264 macroblock reconstruction through the exported functions, against a
// plain model built from clauses 8.3 (intra prediction) and 8.5 (scaling and
// inverse transforms) of H.264 with wide arithmetic.  Coefficients are drawn
// sparse and small enough that no 16-bit stage of the library wraps or
// saturates, so the model needs no fixed-point detail; the picture, the
// coefficient cursor's final position and the status are compared.  The
// library's own rules are modelled where the standard leaves a choice: the
// middle value (128 at 8 bits, 1 << (bitDepth - 1) above) stands in for an
// absent 4x4 or 8x8 neighbour, and a 4x4 block reports it.
//
// Then the argument checks in their order, outputs untouched on failure,
// the Half forms, the status 11 rule and the bypass rule by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <vector>

#include "zanvc.h"

namespace {

// ------------------------------------------------------------------ random

struct Rand {
    std::uint64_t s;
    explicit Rand(std::uint64_t seed) : s(seed * 0x9E3779B97F4A7C15ull + 1) {}
    std::uint32_t next() {
        s ^= s << 13;
        s ^= s >> 7;
        s ^= s << 17;
        return static_cast<std::uint32_t>(s >> 11);
    }
    int below(int n) { return static_cast<int>(next() % static_cast<std::uint32_t>(n)); }
    int range(int lo, int hi) { return lo + below(hi - lo + 1); }
};

// ------------------------------------------------------------------ scaling model

constexpr int kNorm4[6][3] = {{10, 16, 13}, {11, 18, 14}, {13, 20, 16}, {14, 23, 18}, {16, 25, 20}, {18, 29, 23}};
constexpr int kNorm8[6][6] = {{20, 18, 32, 19, 25, 24}, {22, 19, 35, 21, 28, 26}, {26, 23, 42, 24, 33, 31},
                              {28, 25, 45, 26, 35, 33}, {32, 28, 51, 30, 40, 38}, {36, 32, 58, 34, 46, 43}};

int class4(int i, int j) { return (i % 2 == 0 && j % 2 == 0) ? 0 : (i % 2 == 1 && j % 2 == 1) ? 1 : 2; }
int class8(int i, int j) {
    if (i % 4 == 0 && j % 4 == 0) return 0;
    if (i % 2 == 1 && j % 2 == 1) return 1;
    if (i % 4 == 2 && j % 4 == 2) return 2;
    if ((i % 4 == 0 && j % 2 == 1) || (i % 2 == 1 && j % 4 == 0)) return 3;
    if ((i % 4 == 0 && j % 4 == 2) || (i % 4 == 2 && j % 4 == 0)) return 4;
    return 5;
}

// LevelScale4x4 row for QP % 6 with a weight (16 = flat).
std::vector<Zan16s> level_scale4(int rem, const std::vector<int>& w) {
    std::vector<Zan16s> r(16);
    for (int k = 0; k < 16; ++k) r[k] = static_cast<Zan16s>(w[k] * kNorm4[rem][class4(k / 4, k % 4)]);
    return r;
}
std::vector<Zan16s> level_scale8(int rem, const std::vector<int>& w) {
    std::vector<Zan16s> r(64);
    for (int k = 0; k < 64; ++k) r[k] = static_cast<Zan16s>(w[k] * kNorm8[rem][class8(k / 8, k % 8)]);
    return r;
}

// Clause 8.5.12.1 for 4x4 (qP below 24 rounds), 8.5.13.1 for 8x8.
long dq4(long c, long ls, int qp) {
    int q = qp / 6;
    return qp >= 24 ? (c * ls) << (q - 4) : (c * ls + (1L << (3 - q))) >> (4 - q);
}
long dq8(long c, long ls, int qp) {
    int q = qp / 6;
    return qp >= 36 ? (c * ls) << (q - 6) : (c * ls + (1L << (5 - q))) >> (6 - q);
}

// Clause 8.5.12.2 on 16 values in raster order, then (x + 32) >> 6.
void idct4(const long* d, long* r) {
    long f[16], g[16];
    for (int i = 0; i < 4; ++i) {
        const long* x = d + 4 * i;
        long e0 = x[0] + x[2], e1 = x[0] - x[2], e2 = (x[1] >> 1) - x[3], e3 = x[1] + (x[3] >> 1);
        f[4 * i] = e0 + e3, f[4 * i + 1] = e1 + e2, f[4 * i + 2] = e1 - e2, f[4 * i + 3] = e0 - e3;
    }
    for (int j = 0; j < 4; ++j) {
        long e0 = f[j] + f[8 + j], e1 = f[j] - f[8 + j], e2 = (f[4 + j] >> 1) - f[12 + j],
             e3 = f[4 + j] + (f[12 + j] >> 1);
        g[j] = e0 + e3, g[4 + j] = e1 + e2, g[8 + j] = e1 - e2, g[12 + j] = e0 - e3;
    }
    for (int k = 0; k < 16; ++k) r[k] = (g[k] + 32) >> 6;
}

// Clause 8.5.13.2 on 64 values, then (x + 32) >> 6.
void idct8_line(long* v, int s) {
    long d[8];
    for (int i = 0; i < 8; ++i) d[i] = v[i * s];
    long a0 = d[0] + d[4], a4 = d[0] - d[4], a2 = (d[2] >> 1) - d[6], a6 = d[2] + (d[6] >> 1);
    long b0 = a0 + a6, b2 = a4 + a2, b4 = a4 - a2, b6 = a0 - a6;
    long a1 = -d[3] + d[5] - d[7] - (d[7] >> 1), a3 = d[1] + d[7] - d[3] - (d[3] >> 1);
    long a5 = -d[1] + d[7] + d[5] + (d[5] >> 1), a7 = d[3] + d[5] + d[1] + (d[1] >> 1);
    long b1 = a1 + (a7 >> 2), b7 = a7 - (a1 >> 2), b3 = a3 + (a5 >> 2), b5 = (a3 >> 2) - a5;
    long o[8] = {b0 + b7, b2 + b5, b4 + b3, b6 + b1, b6 - b1, b4 - b3, b2 - b5, b0 - b7};
    for (int i = 0; i < 8; ++i) v[i * s] = o[i];
}
void idct8(const long* d, long* r) {
    long v[64];
    std::copy(d, d + 64, v);
    for (int i = 0; i < 8; ++i) idct8_line(v + 8 * i, 1);
    for (int j = 0; j < 8; ++j) idct8_line(v + j, 8);
    for (int k = 0; k < 64; ++k) r[k] = (v[k] + 32) >> 6;
}

// ------------------------------------------------------------------ picture model

constexpr int kW = 48, kH = 40, kX0 = 8, kY0 = 8;

struct Pic {
    int bd = 8;
    std::vector<int> v = std::vector<int>(kW * kH);
    int& at(int x, int y) { return v[(kY0 + y) * kW + kX0 + x]; }  // relative to the macroblock
    int maxv() const { return (1 << bd) - 1; }
    int mid() const { return 1 << (bd - 1); }
    void add(int x, int y, long r) { at(x, y) = static_cast<int>(std::clamp<long>(at(x, y) + r, 0, maxv())); }
};

// Neighbour availability of one block, by position.
struct Av {
    bool a, l, c, ar;
};

// Coding-order index of the 4x4 block at raster (bx, by) of a macroblock.
int zindex(int bx, int by) { return (by / 2) * 8 + (bx / 2) * 4 + (by % 2) * 2 + (bx % 2); }

// Availability of the 4x4 block (bx, by) from the edge-type word (bits set
// when absent: 1 left, 4 above, 16 above-left, 32 above-right).
Av av4(int bx, int by, int e) {
    Av r;
    r.a = by > 0 || !(e & 4);
    r.l = bx > 0 || !(e & 1);
    r.c = (bx > 0 && by > 0) || (by == 0 && bx > 0 && !(e & 4)) || (bx == 0 && by > 0 && !(e & 1)) ||
          (bx == 0 && by == 0 && !(e & 16));
    if (by == 0) r.ar = bx < 3 ? !(e & 4) : !(e & 32);
    else r.ar = bx < 3 && zindex(bx + 1, by - 1) < zindex(bx, by);
    return r;
}
Av av8(int bx, int by, int e) {
    Av r;
    r.a = by > 0 || !(e & 4);
    r.l = bx > 0 || !(e & 1);
    r.c = (bx > 0 && by > 0) || (by == 0 && bx > 0 && !(e & 4)) || (bx == 0 && by > 0 && !(e & 1)) ||
          (bx == 0 && by == 0 && !(e & 16));
    r.ar = by == 0 ? (bx == 0 ? !(e & 4) : !(e & 32)) : bx == 0;
    return r;
}

// 4x4 (n = 4) and 8x8 (n = 8, filtered) directional prediction, clause 8.3.1.2 / 8.3.2.2.
// P(x, -1) for x = -1..2n-1 and P(-1, y) for y = 0..n-1 are the neighbours.
struct Nbr {
    int top[17];  // top[x + 1]
    int left[8];
    int T(int x) const { return x < 0 ? top[0] : top[x + 1]; }
    int L(int y) const { return y < 0 ? top[0] : left[y]; }
};

int pred_dir(const Nbr& p, int n, int mode, int x, int y, bool A, bool Lf, int mid) {
    switch (mode) {
        case 0: return p.T(x);
        case 1: return p.L(y);
        case 2: {
            int sa = 0, sl = 0;
            for (int i = 0; i < n; ++i) sa += p.T(i), sl += p.L(i);
            int sh = n == 4 ? 3 : 4;
            if (A && Lf) return (sa + sl + n) >> sh;
            if (A) return (sa + n / 2) >> (sh - 1);
            if (Lf) return (sl + n / 2) >> (sh - 1);
            return mid;
        }
        case 3:
            if (x == n - 1 && y == n - 1) return (p.T(2 * n - 2) + 3 * p.T(2 * n - 1) + 2) >> 2;
            return (p.T(x + y) + 2 * p.T(x + y + 1) + p.T(x + y + 2) + 2) >> 2;
        case 4:
            if (x > y) return (p.T(x - y - 2) + 2 * p.T(x - y - 1) + p.T(x - y) + 2) >> 2;
            if (x < y) return (p.L(y - x - 2) + 2 * p.L(y - x - 1) + p.L(y - x) + 2) >> 2;
            return (p.T(0) + 2 * p.T(-1) + p.L(0) + 2) >> 2;
        case 5: {
            int z = 2 * x - y;
            if (z >= 0 && z % 2 == 0) return (p.T(x - (y >> 1) - 1) + p.T(x - (y >> 1)) + 1) >> 1;
            if (z >= 0) return (p.T(x - (y >> 1) - 2) + 2 * p.T(x - (y >> 1) - 1) + p.T(x - (y >> 1)) + 2) >> 2;
            if (z == -1) return (p.L(0) + 2 * p.L(-1) + p.T(0) + 2) >> 2;
            return (p.L(y - 2 * x - 1) + 2 * p.L(y - 2 * x - 2) + p.L(y - 2 * x - 3) + 2) >> 2;
        }
        case 6: {
            int z = 2 * y - x;
            if (z >= 0 && z % 2 == 0) return (p.L(y - (x >> 1) - 1) + p.L(y - (x >> 1)) + 1) >> 1;
            if (z >= 0) return (p.L(y - (x >> 1) - 2) + 2 * p.L(y - (x >> 1) - 1) + p.L(y - (x >> 1)) + 2) >> 2;
            if (z == -1) return (p.L(0) + 2 * p.L(-1) + p.T(0) + 2) >> 2;
            return (p.T(x - 2 * y - 1) + 2 * p.T(x - 2 * y - 2) + p.T(x - 2 * y - 3) + 2) >> 2;
        }
        case 7:
            if (y % 2 == 0) return (p.T(x + (y >> 1)) + p.T(x + (y >> 1) + 1) + 1) >> 1;
            return (p.T(x + (y >> 1)) + 2 * p.T(x + (y >> 1) + 1) + p.T(x + (y >> 1) + 2) + 2) >> 2;
        default: {
            int z = x + 2 * y;
            if (z > 2 * n - 3) return p.L(n - 1);
            if (z == 2 * n - 3) return (p.L(n - 2) + 3 * p.L(n - 1) + 2) >> 2;
            if (z % 2 == 0) return (p.L(y + (x >> 1)) + p.L(y + (x >> 1) + 1) + 1) >> 1;
            return (p.L(y + (x >> 1)) + 2 * p.L(y + (x >> 1) + 1) + p.L(y + (x >> 1) + 2) + 2) >> 2;
        }
    }
}

// 4x4 prediction at (x0, y0) with the library's stand-ins; true when a
// stand-in was used where the standard has no rule for it.
bool predict4(Pic& m, int x0, int y0, int mode, Av av) {
    const int mid = m.mid();
    bool fillMid = false, subst = false;
    Nbr p{};
    for (int x = 0; x < 4; ++x) p.top[1 + x] = av.a ? m.at(x0 + x, y0 - 1) : mid;
    for (int x = 4; x < 8; ++x) p.top[1 + x] = av.ar ? m.at(x0 + x, y0 - 1) : av.a ? p.top[4] : mid;
    for (int y = 0; y < 4; ++y) p.left[y] = av.l ? m.at(x0 - 1, y0 + y) : mid;
    p.top[0] = av.c ? m.at(x0 - 1, y0 - 1) : mid;
    switch (mode) {
        case 0: fillMid = subst = !av.a; break;
        case 1: case 8: fillMid = subst = !av.l; break;
        case 2: break;
        case 3: case 7: fillMid = !av.a && !av.ar; subst = !av.a; break;
        default: subst = !(av.a && av.l && av.c); break;
    }
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 4; ++x) m.at(x0 + x, y0 + y) = fillMid ? mid : pred_dir(p, 4, mode, x, y, av.a, av.l, mid);
    return subst;
}

// 8x8 prediction with the reference sample filtering of clause 8.3.2.2.1.
void predict8(Pic& m, int x0, int y0, int mode, Av av) {
    const int mid = m.mid();
    int ra[16], rl[8], rc;
    for (int x = 0; x < 8; ++x) ra[x] = av.a ? m.at(x0 + x, y0 - 1) : mid;
    for (int x = 8; x < 16; ++x) ra[x] = av.ar ? m.at(x0 + x, y0 - 1) : ra[7];
    for (int y = 0; y < 8; ++y) rl[y] = av.l ? m.at(x0 - 1, y0 + y) : mid;
    rc = av.c ? m.at(x0 - 1, y0 - 1) : mid;
    Nbr p{};
    for (int x = 0; x < 16; ++x) p.top[1 + x] = ra[x];
    for (int y = 0; y < 8; ++y) p.left[y] = rl[y];
    p.top[0] = rc;
    if (av.a) {
        for (int x = 0; x < 16; ++x) {
            int l = x == 0 ? (av.c ? rc : ra[0]) : ra[x - 1];
            int r = x == 15 ? ra[15] : ra[x + 1];
            p.top[1 + x] = (l + 2 * ra[x] + r + 2) >> 2;
        }
    }
    if (av.l) {
        for (int y = 0; y < 8; ++y) {
            int u = y == 0 ? (av.c ? rc : rl[0]) : rl[y - 1];
            int d = y == 7 ? rl[7] : rl[y + 1];
            p.left[y] = (u + 2 * rl[y] + d + 2) >> 2;
        }
    }
    if (av.c) {
        if (av.a && av.l) p.top[0] = (ra[0] + 2 * rc + rl[0] + 2) >> 2;
        else if (av.a) p.top[0] = (3 * rc + ra[0] + 2) >> 2;
        else if (av.l) p.top[0] = (3 * rc + rl[0] + 2) >> 2;
    }
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) m.at(x0 + x, y0 + y) = pred_dir(p, 8, mode, x, y, av.a, av.l, mid);
}

// Clause 8.3.3; edges checked by the caller.
void predict16(Pic& m, int mode, int e) {
    bool A = !(e & 4), L = !(e & 1);
    int out[16][16];
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x) {
            int v = 0;
            if (mode == 0) v = m.at(x, -1);
            else if (mode == 1) v = m.at(-1, y);
            else if (mode == 2) {
                int sa = 0, sl = 0;
                for (int i = 0; i < 16; ++i) sa += m.at(i, -1), sl += m.at(-1, i);
                v = A && L ? (sa + sl + 16) >> 5 : A ? (sa + 8) >> 4 : L ? (sl + 8) >> 4 : m.mid();
            } else {
                int H = 0, V = 0;
                for (int i = 0; i < 8; ++i) {
                    H += (i + 1) * (m.at(8 + i, -1) - m.at(6 - i, -1));
                    V += (i + 1) * (m.at(-1, 8 + i) - m.at(-1, 6 - i));
                }
                int a = 16 * (m.at(-1, 15) + m.at(15, -1)), b = (5 * H + 32) >> 6, c = (5 * V + 32) >> 6;
                v = std::clamp((a + b * (x - 7) + c * (y - 7) + 16) >> 5, 0, m.maxv());
            }
            out[y][x] = v;
        }
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x) m.at(x, y) = out[y][x];
}

// Clause 8.3.4 for an 8 x h chroma block whose samples lie xs apart
// (2 for interleaved) starting at column cx; the left edge of the lower half
// may differ (Half forms).  Modes: 0 DC, 1 horizontal, 2 vertical, 3 plane.
void predict_chroma(Pic& m, int cx, int xs, int h, int mode, bool A, bool Ltop, bool Lbot) {
    auto P = [&](int x, int y) -> int& { return m.at(cx + xs * x, y); };
    auto Lv = [&](int y) { return y < 0 ? m.at(cx - xs, -1) : m.at(cx - xs, y); };
    int out[16][8];
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < 8; ++x) {
            int v = 0;
            if (mode == 0) {
                int x0 = x & ~3, y0 = y & ~3;
                bool L = y0 < h / 2 ? Ltop : Lbot;
                int sa = 0, sl = 0;
                for (int i = 0; i < 4; ++i) sa += A ? P(x0 + i, -1) : 0, sl += L ? Lv(y0 + i) : 0;
                bool both = (x0 == 0 && y0 == 0) || (x0 > 0 && y0 > 0);
                if (both && A && L) v = (sa + sl + 4) >> 3;
                else if (x0 > 0 && y0 == 0) v = A ? (sa + 2) >> 2 : L ? (sl + 2) >> 2 : m.mid();
                else if (x0 == 0 && y0 > 0) v = L ? (sl + 2) >> 2 : A ? (sa + 2) >> 2 : m.mid();
                else v = A ? (sa + 2) >> 2 : L ? (sl + 2) >> 2 : m.mid();
            } else if (mode == 1) v = Lv(y);
            else if (mode == 2) v = P(x, -1);
            else {
                int yCF = h == 16 ? 4 : 0, H = 0, V = 0;
                for (int i = 0; i < 4; ++i) H += (i + 1) * (P(4 + i, -1) - (2 - i < 0 ? Lv(-1) : P(2 - i, -1)));
                for (int i = 0; i < 4 + yCF; ++i) V += (i + 1) * (Lv(4 + yCF + i) - Lv(2 + yCF - i));
                int a = 16 * (Lv(h - 1) + P(7, -1)), b = (34 * H + 32) >> 6;
                int c = ((h == 16 ? 5 : 34) * V + 32) >> 6;
                v = std::clamp((a + b * (x - 3) + c * (y - 3 - yCF) + 16) >> 5, 0, m.maxv());
            }
            out[y][x] = v;
        }
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < 8; ++x) P(x, y) = out[y][x];
}

// ------------------------------------------------------------------ residual model

// One 4x4 block of coefficients c (raster), dequantised with ls at qp, the
// DC replaced when dc is given, transformed and added at (x0, y0) with
// samples xs apart.  bypass adds the values as they stand.
void add4(Pic& m, int x0, int y0, int xs, const long* c, const std::vector<Zan16s>& ls, int qp, const long* dc,
          bool bypass) {
    long d[16], r[16];
    for (int k = 0; k < 16; ++k) d[k] = bypass ? c[k] : dq4(c[k], ls[k], qp);
    if (dc) d[0] = *dc;
    if (bypass) std::copy(d, d + 16, r);
    else idct4(d, r);
    for (int k = 0; k < 16; ++k) m.add(x0 + xs * (k % 4), y0 + k / 4, r[k]);
}

// ------------------------------------------------------------------ coefficient drawing

// Sparse coefficients: up to maxNz non-zero values with |dequantised| at most
// lim.  factor: the largest dequantisation multiplier of the block.
void draw_block(Rand& r, long* c, int n, long factor, long lim, int maxNz, bool skipFirst = false) {
    std::fill(c, c + n, 0);
    long b = std::max<long>(1, lim / std::max<long>(factor, 1));
    int nz = r.range(1, maxNz);
    for (int i = 0; i < nz; ++i) {
        int k = r.below(n);
        if (skipFirst && k == 0) continue;
        c[k] = r.range(static_cast<int>(-b), static_cast<int>(b));
    }
}

// The largest multiplier of a 4x4 row at qp (as dq4 applies it).
long factor4(const std::vector<Zan16s>& ls, int qp) {
    long mx = 0;
    for (Zan16s v : ls) mx = std::max<long>(mx, v);
    int q = qp / 6;
    return qp >= 24 ? mx << (q - 4) : std::max<long>(1, (mx << q) >> 4);
}

// How many non-zero values a block may hold so that no 16-bit stage
// overflows (any count for the 32-bit forms).
int nz_for(long fac, std::size_t sampleSize) {
    return sampleSize == 1 ? static_cast<int>(std::clamp<long>(28000 / std::max<long>(fac, 1), 1, 4)) : 4;
}

template <class T>
struct Buf {
    std::vector<T> v = std::vector<T>(kW * kH);
    T* mb() { return v.data() + kY0 * kW + kX0; }
};

template <class T>
void randomize(Rand& r, Buf<T>& b, Pic& m, int bd) {
    m.bd = bd;
    int base = r.range(0, (1 << bd) - 1), spread = r.range(1, 1 << bd);
    for (int i = 0; i < kW * kH; ++i) {
        int v = std::clamp(base + r.range(-spread / 2, spread / 2), 0, (1 << bd) - 1);
        if (r.below(16) == 0) v = r.below(2) ? 0 : (1 << bd) - 1;
        b.v[i] = static_cast<T>(v);
        m.v[i] = v;
    }
}

template <class T>
void expect_same(Buf<T>& b, Pic& m, const char* what, int iter) {
    for (int i = 0; i < kW * kH; ++i)
        if (static_cast<int>(b.v[i]) != m.v[i]) {
            ADD_FAILURE() << what << " iteration " << iter << ": sample (" << i % kW - kX0 << ", " << i / kW - kY0
                          << ") is " << static_cast<int>(b.v[i]) << ", model " << m.v[i];
            return;
        }
}

std::vector<int> flat_weights(int n) { return std::vector<int>(n, 16); }
std::vector<int> random_weights(Rand& r, int n) {
    std::vector<int> w(n);
    for (int& x : w) x = r.range(8, 24);
    return w;
}

constexpr int kIters = 150;

// ================================================================== luma 4x4 intra

enum class Gen { Baseline, High, Record };

// One random 4x4 intra macroblock, whole or in two Half calls.
template <class T, class C>
void luma4x4_case(Rand& r, Gen gen, bool half, int iter) {
    const int bd = sizeof(T) == 1 ? 8 : r.range(9, 14);
    Buf<T> buf;
    Pic m;
    randomize(r, buf, m, bd);
    int qpMax = gen == Gen::Record ? 6 * bd + 3 : 51;
    bool bypassFlag = gen != Gen::Baseline && r.below(4) == 0;
    int qp = bypassFlag && r.below(2) ? 0 : r.range(0, qpMax);
    std::vector<int> w = gen == Gen::Baseline || r.below(2) ? flat_weights(16) : random_weights(r, 16);
    std::vector<Zan16s> ls = level_scale4(qp % 6, w);
    bool bypass = bypassFlag && qp == 0;
    long fac = factor4(ls, qp);
    long lim = sizeof(T) == 1 ? 6000 : 200000;
    if (bypass) fac = 1, lim = (1 << bd);
    Zan32u modes[16];
    for (Zan32u& x : modes) x = static_cast<Zan32u>(r.below(9));
    Zan32u cbp = r.next() & 0x1fffe;
    int e1 = r.below(64), e2 = r.below(64);  // stray bits ride along
    if (!half) e2 = e1;
    std::vector<C> coef(16 * 16 + 8, C(0x5a5a));
    std::vector<long> mc(256);
    int count = 0;
    for (int n = 0; n < 16; ++n)
        if (cbp & (2u << n)) {
            draw_block(r, &mc[16 * count], 16, fac, lim, nz_for(fac, sizeof(T)));
            for (int k = 0; k < 16; ++k) coef[16 * count + k] = static_cast<C>(mc[16 * count + k]);
            ++count;
        }
    // model
    bool subst = false;
    int used = 0;
    for (int n = 0; n < 16; ++n) {
        int bx = 0, by = 0;
        for (int yy = 0; yy < 4; ++yy)
            for (int xx = 0; xx < 4; ++xx)
                if (zindex(xx, yy) == n) bx = xx, by = yy;
        int e = half && n >= 8 ? e2 : e1;
        Av av = half && n >= 8 ? av4(bx, by - 2, e) : av4(bx, by, e);
        subst |= predict4(m, 4 * bx, 4 * by, static_cast<int>(modes[n]), av);
        if (cbp & (2u << n)) {
            add4(m, 4 * bx, 4 * by, 1, &mc[16 * used], ls, qp, nullptr, bypass);
            ++used;
        }
    }
    // library
    C* cur = coef.data();
    ZanStatus st = zanStsOk;
    auto call = [&](C** pc, T* p, const Zan32u* md, Zan32u cb, Zan8u e) -> ZanStatus {
        if constexpr (sizeof(T) == 1) {
            if (gen == Gen::Baseline)
                return half ? zaniReconstructLumaIntraHalfMB_H264_16s8u_C1R(pc, p, kW, md, cb, qp, e)
                            : zaniReconstructLumaIntraMB_H264_16s8u_C1R(pc, p, kW, md, cb, qp, e);
            return half ? zaniReconstructLumaIntraHalf4x4MB_H264_16s8u_C1R(pc, p, kW, md, cb, qp, e, ls.data(),
                                                                           bypassFlag)
                        : zaniReconstructLumaIntra4x4MB_H264_16s8u_C1R(pc, p, kW, md, cb, qp, e, ls.data(),
                                                                       bypassFlag);
        } else {
            ZanReconstructRecord rec{reinterpret_cast<void**>(pc), p, kW, cb, qp, ls.data(), bypassFlag, bd};
            return half ? zaniReconstructLumaIntraHalf4x4_H264High_32s16u_IP1R(&rec, md, e)
                        : zaniReconstructLumaIntra4x4_H264High_32s16u_IP1R(&rec, md, e);
        }
    };
    if (half) {
        ZanStatus s1 = call(&cur, buf.mb(), modes, cbp & 0x1fe, static_cast<Zan8u>(e1));
        ZanStatus s2 = call(&cur, buf.mb() + 8 * kW, modes + 8, (cbp >> 8) & 0x1fe, static_cast<Zan8u>(e2));
        ASSERT_GE(s1, 0);
        ASSERT_GE(s2, 0);
        st = (s1 == zanStsEdgeSubstituted || s2 == zanStsEdgeSubstituted) ? zanStsEdgeSubstituted : zanStsOk;
    } else {
        st = call(&cur, buf.mb(), modes, cbp, static_cast<Zan8u>(e1));
    }
    EXPECT_EQ(st, subst ? zanStsEdgeSubstituted : zanStsOk) << "iteration " << iter;
    EXPECT_EQ(cur - coef.data(), 16 * count) << "iteration " << iter;
    expect_same(buf, m, "luma 4x4", iter);
}

TEST(H264Recon, LumaIntra4x4MatchesModel) {
    Rand r(1);
    for (int i = 0; i < kIters; ++i) {
        luma4x4_case<Zan8u, Zan16s>(r, Gen::Baseline, false, i);
        luma4x4_case<Zan8u, Zan16s>(r, Gen::Baseline, true, i);
        luma4x4_case<Zan8u, Zan16s>(r, Gen::High, false, i);
        luma4x4_case<Zan8u, Zan16s>(r, Gen::High, true, i);
        luma4x4_case<Zan16u, Zan32s>(r, Gen::Record, false, i);
        luma4x4_case<Zan16u, Zan32s>(r, Gen::Record, true, i);
        if (HasFailure()) return;
    }
}

// ================================================================== luma 8x8 intra and inter

long factor8(const std::vector<Zan16s>& ls, int qp) {
    long mx = 0;
    for (Zan16s v : ls) mx = std::max<long>(mx, v);
    int q = qp / 6;
    return qp >= 36 ? mx << (q - 6) : std::max<long>(1, (mx << q) >> 6);
}

// One random 8x8 macroblock: intra (whole or halves) or inter.
template <class T, class C>
void luma8x8_case(Rand& r, bool intra, bool half, int iter) {
    const bool wide = sizeof(T) == 2;
    const int bd = wide ? r.range(9, 14) : 8;
    Buf<T> buf;
    Pic m;
    randomize(r, buf, m, bd);
    bool bypassFlag = r.below(4) == 0;
    int qp = bypassFlag && r.below(2) ? 0 : r.range(0, wide ? 6 * bd + 3 : 51);
    std::vector<Zan16s> ls = level_scale8(qp % 6, r.below(2) ? flat_weights(64) : random_weights(r, 64));
    bool bypass = bypassFlag && qp == 0;
    long fac = bypass ? 1 : factor8(ls, qp), lim = wide ? 200000 : 8000;
    if (bypass) lim = 1 << bd;
    int maxNz = wide ? 4 : static_cast<int>(std::clamp<long>(8000 / fac, 1, 3));
    Zan32u modes[4];
    for (Zan32u& x : modes) x = static_cast<Zan32u>(r.below(9));
    Zan32u cbp = r.next() & 15;
    int e1 = r.below(64), e2 = half ? r.below(64) : e1;
    std::vector<C> coef(4 * 64 + 8, C(0x1234));
    std::vector<long> mc(256);
    int count = 0;
    for (int b = 0; b < 4; ++b)
        if (cbp & (1u << b)) {
            draw_block(r, &mc[64 * count], 64, fac, lim, maxNz);
            for (int k = 0; k < 64; ++k) coef[64 * count + k] = static_cast<C>(mc[64 * count + k]);
            ++count;
        }
    int used = 0;
    for (int b = 0; b < 4; ++b) {
        int bx = b & 1, by = b >> 1;
        if (intra) predict8(m, 8 * bx, 8 * by, static_cast<int>(modes[b]), half && by ? av8(bx, 0, e2) : av8(bx, by, e1));
        if (cbp & (1u << b)) {
            const long* c = &mc[64 * used++];
            long d[64], res[64];
            for (int k = 0; k < 64; ++k) d[k] = bypass ? c[k] : dq8(c[k], ls[k], qp);
            if (bypass) std::copy(d, d + 64, res);
            else idct8(d, res);
            for (int k = 0; k < 64; ++k) m.add(8 * bx + k % 8, 8 * by + k / 8, res[k]);
        }
    }
    C* cur = coef.data();
    auto call = [&](C** pc, T* p, const Zan32u* md, Zan32u cb, Zan8u e) -> ZanStatus {
        if constexpr (!wide) {
            if (!intra) return zaniReconstructLumaInter8x8MB_H264_16s8u_C1R(pc, p, kW, cb, qp, ls.data(), bypassFlag);
            return half ? zaniReconstructLumaIntraHalf8x8MB_H264_16s8u_C1R(pc, p, kW, md, cb, qp, e, ls.data(),
                                                                           bypassFlag)
                        : zaniReconstructLumaIntra8x8MB_H264_16s8u_C1R(pc, p, kW, md, cb, qp, e, ls.data(),
                                                                       bypassFlag);
        } else {
            ZanReconstructRecord rec{reinterpret_cast<void**>(pc), p, kW, cb, qp, ls.data(), bypassFlag, bd};
            if (!intra) return zaniReconstructLumaInter8x8_H264High_32s16u_IP1R(&rec);
            return half ? zaniReconstructLumaIntraHalf8x8_H264High_32s16u_IP1R(&rec, md, e)
                        : zaniReconstructLumaIntra8x8_H264High_32s16u_IP1R(&rec, md, e);
        }
    };
    if (half) {
        EXPECT_EQ(call(&cur, buf.mb(), modes, cbp & 3, static_cast<Zan8u>(e1)), zanStsOk);
        EXPECT_EQ(call(&cur, buf.mb() + 8 * kW, modes + 2, cbp >> 2, static_cast<Zan8u>(e2)), zanStsOk);
    } else {
        EXPECT_EQ(call(&cur, buf.mb(), modes, cbp, static_cast<Zan8u>(e1)), zanStsOk);
    }
    EXPECT_EQ(cur - coef.data(), 64 * count) << "iteration " << iter;
    expect_same(buf, m, intra ? "luma 8x8" : "inter 8x8", iter);
}

TEST(H264Recon, Luma8x8MatchesModel) {
    Rand r(2);
    for (int i = 0; i < kIters; ++i) {
        luma8x8_case<Zan8u, Zan16s>(r, true, false, i);
        luma8x8_case<Zan8u, Zan16s>(r, true, true, i);
        luma8x8_case<Zan8u, Zan16s>(r, false, false, i);
        luma8x8_case<Zan16u, Zan32s>(r, true, false, i);
        luma8x8_case<Zan16u, Zan32s>(r, true, true, i);
        luma8x8_case<Zan16u, Zan32s>(r, false, false, i);
        if (HasFailure()) return;
    }
}

// ================================================================== luma inter 4x4

template <class T, class C>
void inter4x4_case(Rand& r, Gen gen, int iter) {
    const bool wide = sizeof(T) == 2;
    const int bd = wide ? r.range(9, 14) : 8;
    Buf<T> buf;
    Pic m;
    randomize(r, buf, m, bd);
    bool bypassFlag = gen != Gen::Baseline && r.below(4) == 0;
    int qp = bypassFlag && r.below(2) ? 0 : r.range(0, wide ? 6 * bd + 3 : 51);
    std::vector<Zan16s> ls =
        level_scale4(qp % 6, gen == Gen::Baseline || r.below(2) ? flat_weights(16) : random_weights(r, 16));
    bool bypass = bypassFlag && qp == 0;
    long fac = bypass ? 1 : factor4(ls, qp), lim = bypass ? (1 << bd) : wide ? 200000 : 6000;
    Zan32u cbp = r.next() & (r.below(8) ? 0x1ffff : 1);  // sometimes only the bit that does not count
    std::vector<C> coef(16 * 16 + 8, C(0x2222));
    std::vector<long> mc(256);
    int count = 0;
    for (int n = 0; n < 16; ++n)
        if (cbp & (2u << n)) {
            draw_block(r, &mc[16 * count], 16, fac, lim, nz_for(fac, sizeof(T)));
            for (int k = 0; k < 16; ++k) coef[16 * count + k] = static_cast<C>(mc[16 * count + k]);
            ++count;
        }
    for (int n = 0, used = 0; n < 16; ++n)
        for (int yy = 0; yy < 4; ++yy)
            for (int xx = 0; xx < 4; ++xx)
                if (zindex(xx, yy) == n && (cbp & (2u << n)))
                    add4(m, 4 * xx, 4 * yy, 1, &mc[16 * used++], ls, qp, nullptr, bypass);
    C* cur = coef.data();
    ZanStatus st;
    if constexpr (!wide) {
        st = gen == Gen::Baseline
                 ? zaniReconstructLumaInterMB_H264_16s8u_C1R(&cur, buf.mb(), kW, cbp, qp)
                 : zaniReconstructLumaInter4x4MB_H264_16s8u_C1R(&cur, buf.mb(), kW, cbp, qp, ls.data(), bypassFlag);
    } else {
        ZanReconstructRecord rec{reinterpret_cast<void**>(&cur), buf.mb(), kW, cbp, qp, ls.data(), bypassFlag, bd};
        st = zaniReconstructLumaInter4x4_H264High_32s16u_IP1R(&rec);
    }
    EXPECT_EQ(st, zanStsOk);
    EXPECT_EQ(cur - coef.data(), 16 * count) << "iteration " << iter;
    expect_same(buf, m, "inter 4x4", iter);
}

TEST(H264Recon, LumaInter4x4MatchesModel) {
    Rand r(3);
    for (int i = 0; i < kIters; ++i) {
        inter4x4_case<Zan8u, Zan16s>(r, Gen::Baseline, i);
        inter4x4_case<Zan8u, Zan16s>(r, Gen::High, i);
        inter4x4_case<Zan16u, Zan32s>(r, Gen::Record, i);
        if (HasFailure()) return;
    }
}

// ================================================================== luma 16x16

// A random edge word and a 16x16 mode whose edges are present.
int mode16_for(Rand& r, int e) {
    for (;;) {
        int mode = r.below(4);
        if ((mode == 0 && (e & 4)) || (mode == 1 && (e & 1)) || (mode == 3 && (e & 21))) continue;
        return mode;
    }
}

template <class T, class C>
void luma16x16_case(Rand& r, Gen gen, int iter) {
    const bool wide = sizeof(T) == 2;
    const int bd = wide ? r.range(9, 14) : 8;
    Buf<T> buf;
    Pic m;
    randomize(r, buf, m, bd);
    bool bypassFlag = gen != Gen::Baseline && r.below(4) == 0;
    int qp = bypassFlag && r.below(2) ? 0 : r.range(0, wide ? 6 * bd + 3 : 51);
    std::vector<Zan16s> ls =
        level_scale4(qp % 6, gen == Gen::Baseline || r.below(2) ? flat_weights(16) : random_weights(r, 16));
    bool bypass = bypassFlag && qp == 0;
    int e = r.below(64), mode = mode16_for(r, e);
    Zan32u cbp = r.below(8) ? r.next() & 0x1ffff : 0;
    long fac = bypass ? 1 : factor4(ls, qp);
    long q = qp / 6, fdc = bypass ? 1 : qp >= 36 ? long{ls[0]} << (q - 6) : std::max<long>(1, (long{ls[0]} << q) >> 6);
    long limDc = bypass ? (1 << bd) / 2 : wide ? 100000 : 4000, lim = bypass ? (1 << bd) / 2 : wide ? 100000 : 5000;
    std::vector<C> coef(17 * 16 + 8, C(0x3333));
    std::vector<long> dcIn(16, 0), mc(256);
    C* w = coef.data();
    if (cbp & 1) {
        draw_block(r, dcIn.data(), 16, fdc, limDc, 2);
        for (int k = 0; k < 16; ++k) *w++ = static_cast<C>(dcIn[k]);
    }
    int count = 0;
    for (int n = 0; n < 16; ++n)
        if (cbp & (2u << n)) {
            draw_block(r, &mc[16 * count], 16, fac, lim, wide ? 4 : static_cast<int>(std::clamp<long>(20000 / fac, 1, 4)));
            for (int k = 0; k < 16; ++k) *w++ = static_cast<C>(mc[16 * count + k]);
            ++count;
        }
    const long used = w - coef.data();
    // model: prediction, DC Hadamard (clause 8.5.10), blocks
    predict16(m, mode, e);
    if (cbp & 0x1ffff) {
        long f[16], t[16];
        for (int i = 0; i < 4; ++i) {
            const long* c = &dcIn[4 * i];
            t[4 * i] = c[0] + c[1] + c[2] + c[3], t[4 * i + 1] = c[0] + c[1] - c[2] - c[3];
            t[4 * i + 2] = c[0] - c[1] - c[2] + c[3], t[4 * i + 3] = c[0] - c[1] + c[2] - c[3];
        }
        for (int j = 0; j < 4; ++j) {
            f[j] = t[j] + t[4 + j] + t[8 + j] + t[12 + j], f[4 + j] = t[j] + t[4 + j] - t[8 + j] - t[12 + j];
            f[8 + j] = t[j] - t[4 + j] - t[8 + j] + t[12 + j], f[12 + j] = t[j] - t[4 + j] + t[8 + j] - t[12 + j];
        }
        for (long& v : f) v = bypass ? 0 : dq8(v, ls[0], qp);
        if (bypass) std::copy(dcIn.begin(), dcIn.end(), f);
        for (int n = 0, k = 0; n < 16; ++n)
            for (int yy = 0; yy < 4; ++yy)
                for (int xx = 0; xx < 4; ++xx) {
                    if (zindex(xx, yy) != n) continue;
                    long dc = f[4 * yy + xx];
                    if (cbp & (2u << n)) add4(m, 4 * xx, 4 * yy, 1, &mc[16 * k++], ls, qp, &dc, bypass);
                    else if (bypass) m.add(4 * xx, 4 * yy, dc);
                    else {
                        long z[16] = {};
                        add4(m, 4 * xx, 4 * yy, 1, z, ls, qp, &dc, false);
                    }
                }
    }
    C* cur = coef.data();
    ZanStatus st;
    if constexpr (!wide) {
        st = gen == Gen::Baseline ? zaniReconstructLumaIntra16x16MB_H264_16s8u_C1R(&cur, buf.mb(), kW, mode, cbp, qp,
                                                                                   static_cast<Zan8u>(e))
                                  : zaniReconstructLumaIntra_16x16MB_H264_16s8u_C1R(
                                        &cur, buf.mb(), kW, mode, cbp, qp, static_cast<Zan8u>(e), ls.data(), bypassFlag);
    } else {
        ZanReconstructRecord rec{reinterpret_cast<void**>(&cur), buf.mb(), kW, cbp, qp, ls.data(), bypassFlag, bd};
        st = zaniReconstructLumaIntra16x16_H264High_32s16u_IP1R(&rec, mode, static_cast<Zan8u>(e));
    }
    EXPECT_EQ(st, zanStsOk);
    EXPECT_EQ(cur - coef.data(), (cbp & 0x1ffff) ? used : 0) << "iteration " << iter;
    expect_same(buf, m, "luma 16x16", iter);
}

TEST(H264Recon, LumaIntra16x16MatchesModel) {
    Rand r(4);
    for (int i = 0; i < kIters; ++i) {
        luma16x16_case<Zan8u, Zan16s>(r, Gen::Baseline, i);
        luma16x16_case<Zan8u, Zan16s>(r, Gen::High, i);
        luma16x16_case<Zan16u, Zan32s>(r, Gen::Record, i);
        if (HasFailure()) return;
    }
}

// ================================================================== chroma

enum class ChromaKind {
    Inter,
    Intra,
    Half,
};
enum class Layout { Planar, Interleaved };

struct ChromaCase {
    Gen gen;
    ChromaKind kind;
    Layout layout;
    bool c422;
    bool halvesName;  // call the Halves name instead of Halfs
};

int chroma_mode_for(Rand& r, int e) {
    for (;;) {
        int mode = r.below(4);
        if ((mode == 1 && (e & 1)) || (mode == 2 && (e & 4)) || (mode == 3 && (e & 21))) continue;
        return mode;
    }
}

template <class T, class C>
void chroma_case(Rand& r, const ChromaCase& cc, int iter) {
    const bool wide = sizeof(T) == 2;
    const int blocks = cc.c422 ? 8 : 4, h = cc.c422 ? 16 : 8;
    const bool inter = cc.kind == ChromaKind::Inter, planar = cc.layout == Layout::Planar;
    int bd[2], qp[2];
    Buf<T> buf[2];
    Pic m[2];
    bool bypassFlag = cc.gen != Gen::Baseline && r.below(4) == 0;
    for (int k = 0; k < 2; ++k) {
        bd[k] = wide ? r.range(9, 14) : 8;
        randomize(r, buf[k], m[k], bd[k]);
        qp[k] = bypassFlag && r.below(2) ? 0 : r.range(0, wide ? 6 * bd[k] - 9 : 39);
    }
    if (cc.gen == Gen::Baseline) qp[1] = qp[0];
    if (!planar) bd[1] = bd[0];
    // the interleaved layout keeps both components in buf[0] / m[0]
    std::vector<Zan16s> ls[2];
    Zan16s dcScale[2];
    bool bypass[2];
    for (int k = 0; k < 2; ++k) {
        ls[k] = level_scale4(qp[k] % 6, cc.gen == Gen::Baseline || r.below(2) ? flat_weights(16) : random_weights(r, 16));
        int qd = qp[k] + 3;
        dcScale[k] = static_cast<Zan16s>(16 * kNorm4[qd % 6][0]);
        bypass[k] = bypassFlag && qp[k] == 0;
    }
    // modes and edges
    int eTop = r.below(64), eBot = r.below(64), mode = 0;
    if (cc.kind == ChromaKind::Intra) mode = chroma_mode_for(r, eTop);
    if (cc.kind == ChromaKind::Half) {
        mode = cc.c422 || (eTop & 4) || r.below(2) ? 0 : 2;
    }
    // patterns
    Zan32u pat[2];  // bit 0 DC, bits 1.. AC blocks
    for (Zan32u& p : pat) p = r.below(6) ? r.next() & ((2u << blocks) - 1) : 0;
    // coefficients in stream order
    std::vector<C> coef(2 * 8 + 2 * 8 * 16 + 8, C(0x4444));
    std::vector<long> dcIn[2] = {std::vector<long>(8, 0), std::vector<long>(8, 0)};
    std::vector<long> ac[2] = {std::vector<long>(16 * 8), std::vector<long>(16 * 8)};
    C* w = coef.data();
    for (int k = 0; k < 2; ++k)
        if (pat[k] & 1) {
            long fdc = bypass[k] ? 1 : cc.c422 ? std::max<long>(1, (long{dcScale[k]} << ((qp[k] + 3) / 6)) >> 6)
                                              : std::max<long>(1, (long{ls[k][0]} << (qp[k] / 6)) >> 5);
            draw_block(r, dcIn[k].data(), blocks, fdc, bypass[k] ? (1 << bd[k]) / 2 : wide ? 100000 : 3000, 2);
            for (int i = 0; i < blocks; ++i) *w++ = static_cast<C>(dcIn[k][i]);
        }
    for (int k = 0; k < 2; ++k) {
        long fac = bypass[k] ? 1 : factor4(ls[k], qp[k]);
        for (int b = 0; b < blocks; ++b)
            if (pat[k] & (2u << b)) {
                long* a = &ac[k][16 * b];
                draw_block(r, a, 16, fac, bypass[k] ? (1 << bd[k]) / 2 : wide ? 100000 : 5000,
                           wide ? 4 : static_cast<int>(std::clamp<long>(20000 / fac, 1, 4)));
                for (int i = 0; i < 16; ++i) *w++ = static_cast<C>(a[i]);
            }
    }
    const long used = w - coef.data();
    // model
    auto pic = [&](int k) -> Pic& { return planar ? m[k] : m[0]; };
    auto col = [&](int k) { return planar ? 0 : k; };
    const int xs = planar ? 1 : 2;
    if (!inter)
        for (int k = 0; k < 2; ++k)
            predict_chroma(pic(k), col(k), xs, h, mode, !(eTop & 4), !(eTop & 1),
                           cc.kind == ChromaKind::Half ? !(eBot & 1) : !(eTop & 1));
    bool any = (pat[0] | pat[1]) != 0;
    if (any)
        for (int k = 0; k < 2; ++k) {
            long f[8] = {};
            const std::vector<long>& c = dcIn[k];
            if (!cc.c422) {
                long t[4] = {c[0] + c[1] + c[2] + c[3], c[0] - c[1] + c[2] - c[3], c[0] + c[1] - c[2] - c[3],
                             c[0] - c[1] - c[2] + c[3]};
                for (int i = 0; i < 4; ++i) f[i] = bypass[k] ? c[i] : ((t[i] * ls[k][0]) << (qp[k] / 6)) >> 5;
            } else {
                // the 4x2 matrix of clause 8.5.11.1, given in raster order
                long x[8];
                for (int i = 0; i < 8; ++i) x[i] = c[i];
                const int A[4][4] = {{1, 1, 1, 1}, {1, 1, -1, -1}, {1, -1, -1, 1}, {1, -1, 1, -1}};
                for (int i = 0; i < 4; ++i)
                    for (int j = 0; j < 2; ++j) {
                        long s = 0;
                        for (int kk = 0; kk < 4; ++kk) s += A[i][kk] * (x[2 * kk] + (j ? -x[2 * kk + 1] : x[2 * kk + 1]));
                        f[2 * i + j] = bypass[k] ? x[2 * i + j] : dq8(s, dcScale[k], qp[k] + 3);
                    }
            }
            for (int b = 0; b < blocks; ++b) {
                int x0 = (b & 1) * 4, y0 = (b >> 1) * 4;
                long dc = f[b];
                bool hasAc = pat[k] & (2u << b);
                if (bypass[k] && !hasAc) {
                    pic(k).add(col(k) + xs * x0, y0, dc);
                    continue;
                }
                long z[16] = {};
                add4(pic(k), col(k) + xs * x0, y0, xs, hasAc ? &ac[k][16 * b] : z, ls[k], qp[k], &dc, bypass[k]);
            }
        }
    // library
    C* cur = coef.data();
    ZanStatus st = zanStsOk;
    const Zan8u eT = static_cast<Zan8u>(eTop), eB = static_cast<Zan8u>(eBot);
    if constexpr (!wide) {
        if (!cc.c422) {
            Zan32u cbp = ((pat[0] & 1) << 17) | ((pat[1] & 1) << 18) | ((pat[0] >> 1) << 19) | ((pat[1] >> 1) << 23);
            cbp |= r.next() & 0x1ffff;  // luma bits ride along
            Zan8u* u = buf[0].mb();
            Zan8u* v = planar ? buf[1].mb() : nullptr;
            Zan32u step = kW;
            const Zan16s *qu = ls[0].data(), *qv = ls[1].data();
            if (cc.gen == Gen::Baseline) {
                if (cc.kind == ChromaKind::Inter)
                    st = planar ? zaniReconstructChromaInterMB_H264_16s8u_P2R(&cur, u, v, step, cbp, qp[0])
                                : zaniReconstructChromaInterMB_H264_16s8u_C2R(&cur, u, step, cbp, qp[0]);
                else if (cc.kind == ChromaKind::Intra)
                    st = planar ? zaniReconstructChromaIntraMB_H264_16s8u_P2R(&cur, u, v, step, mode, cbp, qp[0], eT)
                                : zaniReconstructChromaIntraMB_H264_16s8u_C2R(&cur, u, step, mode, cbp, qp[0], eT);
                else if (!planar)
                    st = zaniReconstructChromaIntraHalvesMB_H264_16s8u_C2R(&cur, u, step, mode, cbp, qp[0], eT, eB);
                else
                    st = cc.halvesName
                             ? zaniReconstructChromaIntraHalvesMB_H264_16s8u_P2R(&cur, u, v, step, mode, cbp, qp[0], eT, eB)
                             : zaniReconstructChromaIntraHalfsMB_H264_16s8u_P2R(&cur, u, v, step, mode, cbp, qp[0], eT, eB);
            } else {
                if (cc.kind == ChromaKind::Inter)
                    st = planar ? zaniReconstructChromaInter4x4MB_H264_16s8u_P2R(&cur, u, v, step, cbp, qp[0], qp[1], qu,
                                                                                 qv, bypassFlag)
                                : zaniReconstructChromaInter4x4MB_H264_16s8u_C2R(&cur, u, step, cbp, qp[0], qp[1], qu, qv,
                                                                                 bypassFlag);
                else if (cc.kind == ChromaKind::Intra)
                    st = planar ? zaniReconstructChromaIntra4x4MB_H264_16s8u_P2R(&cur, u, v, step, mode, cbp, qp[0],
                                                                                 qp[1], eT, qu, qv, bypassFlag)
                                : zaniReconstructChromaIntra4x4MB_H264_16s8u_C2R(&cur, u, step, mode, cbp, qp[0], qp[1],
                                                                                 eT, qu, qv, bypassFlag);
                else
                    st = cc.halvesName ? zaniReconstructChromaIntraHalves4x4MB_H264_16s8u_P2R(
                                             &cur, u, v, step, mode, cbp, qp[0], qp[1], eT, eB, qu, qv, bypassFlag)
                                       : zaniReconstructChromaIntraHalfs4x4MB_H264_16s8u_P2R(
                                             &cur, u, v, step, mode, cbp, qp[0], qp[1], eT, eB, qu, qv, bypassFlag);
            }
        } else {
            ZanReconstructRecord rec[2];
            for (int k = 0; k < 2; ++k)
                rec[k] = {reinterpret_cast<void**>(&cur), buf[k].mb(), kW, pat[k], qp[k], ls[k].data(), bypassFlag, 8};
            const ZanReconstructRecord* rr[2] = {&rec[0], &rec[1]};
            if (cc.kind == ChromaKind::Inter)
                st = zaniReconstructChroma422Inter4x4_H264High_16s8u_IP2R(rr, dcScale[0], dcScale[1]);
            else if (cc.kind == ChromaKind::Intra)
                st = zaniReconstructChroma422Intra4x4_H264High_16s8u_IP2R(rr, mode, eT, dcScale[0], dcScale[1]);
            else
                st = zaniReconstructChroma422IntraHalf4x4_H264High_16s8u_IP2R(rr, mode, eT, eB, dcScale[0], dcScale[1]);
        }
    } else {
        ZanReconstructRecord rec[2];
        for (int k = 0; k < 2; ++k)
            rec[k] = {reinterpret_cast<void**>(&cur), buf[k].mb(), kW, pat[k], qp[k], ls[k].data(), bypassFlag, bd[k]};
        const ZanReconstructRecord* rr[2] = {&rec[0], &rec[1]};
        if (!cc.c422) {
            if (cc.kind == ChromaKind::Inter) st = zaniReconstructChromaInter4x4_H264High_32s16u_IP2R(rr);
            else if (cc.kind == ChromaKind::Intra) st = zaniReconstructChromaIntra4x4_H264High_32s16u_IP2R(rr, mode, eT);
            else st = zaniReconstructChromaIntraHalf4x4_H264High_32s16u_IP2R(rr, mode, eT, eB);
        } else {
            if (cc.kind == ChromaKind::Inter)
                st = zaniReconstructChroma422Inter4x4_H264High_32s16u_IP2R(rr, dcScale[0], dcScale[1]);
            else if (cc.kind == ChromaKind::Intra)
                st = zaniReconstructChroma422Intra4x4_H264High_32s16u_IP2R(rr, mode, eT, dcScale[0], dcScale[1]);
            else
                st = zaniReconstructChroma422IntraHalf4x4_H264High_32s16u_IP2R(rr, mode, eT, eB, dcScale[0], dcScale[1]);
        }
    }
    EXPECT_EQ(st, zanStsOk) << "iteration " << iter;
    EXPECT_EQ(cur - coef.data(), used) << "iteration " << iter;
    expect_same(buf[0], m[0], "chroma U", iter);
    if (planar) expect_same(buf[1], m[1], "chroma V", iter);
}

TEST(H264Recon, Chroma420MatchesModel) {
    Rand r(5);
    const ChromaKind kinds[3] = {ChromaKind::Inter, ChromaKind::Intra, ChromaKind::Half};
    for (int i = 0; i < kIters; ++i) {
        for (ChromaKind k : kinds)
            for (Gen g : {Gen::Baseline, Gen::High}) {
                chroma_case<Zan8u, Zan16s>(r, {g, k, Layout::Planar, false, false}, i);
                chroma_case<Zan8u, Zan16s>(r, {g, k, Layout::Planar, false, true}, i);
                if (g == Gen::Baseline || k != ChromaKind::Half)
                    chroma_case<Zan8u, Zan16s>(r, {g, k, Layout::Interleaved, false, false}, i);
            }
        for (ChromaKind k : kinds) chroma_case<Zan16u, Zan32s>(r, {Gen::Record, k, Layout::Planar, false, false}, i);
        if (HasFailure()) return;
    }
}

TEST(H264Recon, Chroma422MatchesModel) {
    Rand r(6);
    for (int i = 0; i < kIters; ++i) {
        for (ChromaKind k : {ChromaKind::Inter, ChromaKind::Intra, ChromaKind::Half}) {
            chroma_case<Zan8u, Zan16s>(r, {Gen::Record, k, Layout::Planar, true, false}, i);
            chroma_case<Zan16u, Zan32s>(r, {Gen::Record, k, Layout::Planar, true, false}, i);
        }
        if (HasFailure()) return;
    }
}


// ================================================================== checks and edge cases

// A picture of one value, a coefficient run, and a snapshot to compare.
struct Scene {
    std::vector<Zan8u> pic = std::vector<Zan8u>(kW * kH, 77);
    std::vector<Zan16s> coef = std::vector<Zan16s>(512, 3);
    Zan16s* cur = coef.data();
    std::vector<Zan8u> pic0 = pic;
    Zan8u* mb() { return pic.data() + kY0 * kW + kX0; }
    bool untouched() const { return pic == pic0 && cur == coef.data(); }
};

const std::vector<Zan16s> kFlat4 = level_scale4(0, flat_weights(16));
const std::vector<Zan16s> kFlat8 = level_scale8(0, flat_weights(64));
const Zan32u kModes[16] = {2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2};

TEST(H264Recon, NullPointersComeFirst) {
    Scene s;
    Zan16s* nullCur = nullptr;
    // a null pointer wins over a bad QP, a bad step and a bad mode
    EXPECT_EQ(zaniReconstructLumaIntraMB_H264_16s8u_C1R(nullptr, s.mb(), kW, kModes, 2, 99, 0), zanStsNullPtr);
    EXPECT_EQ(zaniReconstructLumaIntraMB_H264_16s8u_C1R(&nullCur, s.mb(), kW, kModes, 2, 99, 0), zanStsNullPtr);
    EXPECT_EQ(zaniReconstructLumaIntraMB_H264_16s8u_C1R(&s.cur, s.mb(), kW, nullptr, 2, 99, 0), zanStsNullPtr);
    EXPECT_EQ(zaniReconstructLumaIntraHalfMB_H264_16s8u_C1R(&s.cur, nullptr, 0, kModes, 2, 99, 0), zanStsNullPtr);
    EXPECT_EQ(zaniReconstructLumaIntra16x16MB_H264_16s8u_C1R(&nullCur, s.mb(), kW, 9, 1, 99, 0), zanStsNullPtr);
    EXPECT_EQ(zaniReconstructLumaInterMB_H264_16s8u_C1R(&s.cur, nullptr, kW, 0, 0), zanStsNullPtr);
    EXPECT_EQ(zaniReconstructLumaIntra4x4MB_H264_16s8u_C1R(&s.cur, s.mb(), kW, kModes, 2, 0, 0, nullptr, 0),
              zanStsNullPtr);
    EXPECT_EQ(zaniReconstructLumaInter8x8MB_H264_16s8u_C1R(&s.cur, s.mb(), kW, 0, 0, nullptr, 0), zanStsNullPtr);
    EXPECT_EQ(zaniReconstructLumaIntra_16x16MB_H264_16s8u_C1R(&s.cur, s.mb(), kW, 2, 0, 0, 0, nullptr, 0),
              zanStsNullPtr);
    EXPECT_EQ(zaniReconstructChromaIntraMB_H264_16s8u_P2R(&s.cur, s.mb(), nullptr, kW, 9, 0, 99, 0), zanStsNullPtr);
    EXPECT_EQ(zaniReconstructChromaInterMB_H264_16s8u_C2R(&nullCur, s.mb(), 0, 0, 99), zanStsNullPtr);
    EXPECT_EQ(zaniReconstructChromaInter4x4MB_H264_16s8u_P2R(&s.cur, s.mb(), s.mb(), kW, 0, 0, 0, kFlat4.data(),
                                                              nullptr, 0),
              zanStsNullPtr);
    EXPECT_EQ(zaniReconstructChromaIntraHalfsMB_H264_16s8u_P2R(&s.cur, nullptr, s.mb(), kW, 1, 0, 99, 0, 0),
              zanStsNullPtr);
    // records: the record, its cursor and pointee, plane and scale row; the mode array
    std::vector<Zan16u> p16(kW * kH, 5);
    std::vector<Zan32s> c32(512, 1);
    Zan32s* cur32 = c32.data();
    Zan32s* null32 = nullptr;
    ZanReconstructRecord rec{reinterpret_cast<void**>(&cur32), p16.data() + kY0 * kW + kX0, kW, 0, 99, kFlat4.data(), 0, 10};
    EXPECT_EQ(zaniReconstructLumaInter4x4_H264High_32s16u_IP1R(nullptr), zanStsNullPtr);
    EXPECT_EQ(zaniReconstructLumaIntra4x4_H264High_32s16u_IP1R(&rec, nullptr, 0), zanStsNullPtr);
    ZanReconstructRecord bad = rec;
    bad.ppSrcDstCoeff = reinterpret_cast<void**>(&null32);
    EXPECT_EQ(zaniReconstructLumaInter4x4_H264High_32s16u_IP1R(&bad), zanStsNullPtr);
    bad = rec;
    bad.pQuantTable = nullptr;
    EXPECT_EQ(zaniReconstructLumaIntra16x16_H264High_32s16u_IP1R(&bad, 2, 0), zanStsNullPtr);
    bad = rec;
    bad.pSrcDstPlane = nullptr;
    const ZanReconstructRecord* pair[2] = {&rec, &bad};
    EXPECT_EQ(zaniReconstructChromaInter4x4_H264High_32s16u_IP2R(pair), zanStsNullPtr);
    EXPECT_EQ(zaniReconstructChromaInter4x4_H264High_32s16u_IP2R(nullptr), zanStsNullPtr);
    EXPECT_TRUE(s.untouched());
    EXPECT_EQ(cur32, c32.data());
}

TEST(H264Recon, RangesStepsModesEdgesInOrder) {
    Scene s;
    // QP ranges (as unsigned: -1 is out)
    EXPECT_EQ(zaniReconstructLumaInterMB_H264_16s8u_C1R(&s.cur, s.mb(), kW, 2, 52), zanStsOutOfRange);
    EXPECT_EQ(zaniReconstructLumaInterMB_H264_16s8u_C1R(&s.cur, s.mb(), kW, 2, -1), zanStsOutOfRange);
    EXPECT_EQ(zaniReconstructChromaInterMB_H264_16s8u_P2R(&s.cur, s.mb(), s.mb(), kW, 1u << 17, 40), zanStsOutOfRange);
    EXPECT_EQ(zaniReconstructChromaInter4x4MB_H264_16s8u_P2R(&s.cur, s.mb(), s.mb(), kW, 1u << 17, 39, 40,
                                                              kFlat4.data(), kFlat4.data(), 0),
              zanStsOutOfRange);
    // QP before step, step before mode, mode before edges
    EXPECT_EQ(zaniReconstructLumaIntraHalfMB_H264_16s8u_C1R(&s.cur, s.mb(), 0, kModes, 2, 52, 0), zanStsOutOfRange);
    EXPECT_EQ(zaniReconstructLumaIntraHalfMB_H264_16s8u_C1R(&s.cur, s.mb(), 0, kModes, 2, 51, 0), zanStsStepBad);
    EXPECT_EQ(zaniReconstructChromaInterMB_H264_16s8u_C2R(&s.cur, s.mb(), 0, 1u << 17, 40), zanStsOutOfRange);
    EXPECT_EQ(zaniReconstructChromaInterMB_H264_16s8u_C2R(&s.cur, s.mb(), 0, 1u << 17, 39), zanStsStepBad);
    EXPECT_EQ(zaniReconstructChromaIntraMB_H264_16s8u_C2R(&s.cur, s.mb(), 0, 2, 0, 0, 4), zanStsStepBad);
    EXPECT_EQ(zaniReconstructLumaIntra16x16MB_H264_16s8u_C1R(&s.cur, s.mb(), kW, 4, 1, 0, 0xff), zanStsOutOfRange);
    EXPECT_EQ(zaniReconstructChromaIntraMB_H264_16s8u_P2R(&s.cur, s.mb(), s.mb(), kW, 4, 0, 0, 0xff), zanStsOutOfRange);
    // the edges each mode needs: vertical 4, horizontal 1, plane 1, 4 and 16; DC none
    const struct { Zan32u mode16, modeC; Zan8u edge; } needs[] = {
        {0, 2, 4}, {1, 1, 1}, {3, 3, 1}, {3, 3, 4}, {3, 3, 16}};
    for (auto n : needs) {
        EXPECT_EQ(zaniReconstructLumaIntra16x16MB_H264_16s8u_C1R(&s.cur, s.mb(), kW, n.mode16, 0x1ffff, 0, n.edge),
                  zanStsEdgeUnavailable);
        EXPECT_EQ(zaniReconstructLumaIntra_16x16MB_H264_16s8u_C1R(&s.cur, s.mb(), kW, n.mode16, 0x1ffff, 0, n.edge,
                                                                  kFlat4.data(), 0),
                  zanStsEdgeUnavailable);
        EXPECT_EQ(zaniReconstructChromaIntraMB_H264_16s8u_P2R(&s.cur, s.mb(), s.mb(), kW, n.modeC, 0x7fe0000, 0, n.edge),
                  zanStsEdgeUnavailable);
        EXPECT_EQ(zaniReconstructChromaIntra4x4MB_H264_16s8u_C2R(&s.cur, s.mb(), kW, n.modeC, 0x7fe0000, 0, 0, n.edge,
                                                                 kFlat4.data(), kFlat4.data(), 0),
                  zanStsEdgeUnavailable);
    }
    EXPECT_TRUE(s.untouched());
    // DC needs nothing
    EXPECT_EQ(zaniReconstructLumaIntra16x16MB_H264_16s8u_C1R(&s.cur, s.mb(), kW, 2, 0, 0, 0xff), zanStsOk);
    EXPECT_EQ(s.mb()[0], 128);  // neither edge: the middle value
    // records: the QP limit follows the bit depth; steps below 1
    std::vector<Zan16u> p16(kW * kH, 5);
    std::vector<Zan32s> c32(512, 0);
    Zan32s* cur32 = c32.data();
    ZanReconstructRecord rec{reinterpret_cast<void**>(&cur32), p16.data() + kY0 * kW + kX0, kW, 0, 63, kFlat4.data(), 0, 10};
    EXPECT_EQ(zaniReconstructLumaInter4x4_H264High_32s16u_IP1R(&rec), zanStsOk);
    rec.QP = 64;
    EXPECT_EQ(zaniReconstructLumaInter4x4_H264High_32s16u_IP1R(&rec), zanStsOutOfRange);
    rec.QP = 0;
    rec.srcDstStep = 0;
    EXPECT_EQ(zaniReconstructLumaInter4x4_H264High_32s16u_IP1R(&rec), zanStsStepBad);
    rec.srcDstStep = kW;
    EXPECT_EQ(zaniReconstructLumaIntra16x16_H264High_32s16u_IP1R(&rec, 4, 0), zanStsOutOfRange);
    EXPECT_EQ(zaniReconstructLumaIntra16x16_H264High_32s16u_IP1R(&rec, 0, 4), zanStsEdgeUnavailable);
    ZanReconstructRecord v = rec;
    rec.QP = 51;  // chroma at 10 bits: 0..51
    v.QP = 52;
    const ZanReconstructRecord* pair[2] = {&rec, &v};
    EXPECT_EQ(zaniReconstructChromaInter4x4_H264High_32s16u_IP2R(pair), zanStsOutOfRange);
    v.QP = 51;
    v.srcDstStep = 0;
    EXPECT_EQ(zaniReconstructChromaInter4x4_H264High_32s16u_IP2R(pair), zanStsStepBad);
    v.srcDstStep = kW;
    EXPECT_EQ(zaniReconstructChromaIntra4x4_H264High_32s16u_IP2R(pair, 4, 0), zanStsOutOfRange);
    EXPECT_EQ(zaniReconstructChromaIntra4x4_H264High_32s16u_IP2R(pair, 1, 1), zanStsEdgeUnavailable);
    EXPECT_EQ(zaniReconstructChroma422Inter4x4_H264High_16s8u_IP2R(pair, 16, 16), zanStsOutOfRange);  // 8-bit: 0..39
    EXPECT_EQ(zaniReconstructChroma422IntraHalf4x4_H264High_32s16u_IP2R(pair, 2, 0, 0, 16, 16), zanStsEdgeUnavailable);
    EXPECT_EQ(cur32, c32.data());
    EXPECT_TRUE(std::all_of(p16.begin(), p16.end(), [](Zan16u x) { return x == 5; }));
}

TEST(H264Recon, EmptyPatternsTouchNothing) {
    Scene s;
    // inter: bit 0 does not count for the 4x4 forms, chroma needs bits 17..26
    EXPECT_EQ(zaniReconstructLumaInterMB_H264_16s8u_C1R(&s.cur, s.mb(), kW, 1 | (1u << 17), 30), zanStsOk);
    EXPECT_EQ(zaniReconstructLumaInter4x4MB_H264_16s8u_C1R(&s.cur, s.mb(), kW, 1, 30, kFlat4.data(), 0), zanStsOk);
    EXPECT_EQ(zaniReconstructLumaInter8x8MB_H264_16s8u_C1R(&s.cur, s.mb(), kW, 0x10000, 30, kFlat8.data(), 0), zanStsOk);
    EXPECT_EQ(zaniReconstructChromaInterMB_H264_16s8u_P2R(&s.cur, s.mb(), s.mb(), kW, 0x1ffff, 30), zanStsOk);
    EXPECT_TRUE(s.untouched());
    // intra 16x16 with cbp 0: the prediction is written, the cursor stays
    EXPECT_EQ(zaniReconstructLumaIntra16x16MB_H264_16s8u_C1R(&s.cur, s.mb() + 1, kW, 1, 0, 30, 0), zanStsOk);
    EXPECT_EQ(s.cur, s.coef.data());
    EXPECT_EQ(s.mb()[1 + 5 * kW], 77);
}

TEST(H264Recon, SubstitutionWarningAndMidValue) {
    // vertical at the top of a slice: the block is 128 and the macroblock reports 11
    Scene s;
    Zan32u modes[16] = {};
    for (Zan32u& m : modes) m = 2;
    modes[0] = 0;
    EXPECT_EQ(zaniReconstructLumaIntraMB_H264_16s8u_C1R(&s.cur, s.mb(), kW, modes, 0, 20, 4), zanStsEdgeSubstituted);
    EXPECT_EQ(s.mb()[0], 128);
    EXPECT_EQ(s.mb()[3 + 3 * kW], 128);
    // every other block was reconstructed all the same: block 1 (DC from its left, 128)
    EXPECT_EQ(s.mb()[4], 128);
    // DC with no neighbours at all draws no warning
    Scene t;
    EXPECT_EQ(zaniReconstructLumaIntra4x4MB_H264_16s8u_C1R(&t.cur, t.mb(), kW, kModes, 0, 20, 0x35, kFlat4.data(), 0),
              zanStsOk);
    // high bit depth: 1 << (bitDepth - 1) stands in, and the warning is the same
    std::vector<Zan16u> p16(kW * kH, 5);
    std::vector<Zan32s> c32(16, 0);
    Zan32s* cur32 = c32.data();
    ZanReconstructRecord rec{reinterpret_cast<void**>(&cur32), p16.data() + kY0 * kW + kX0, kW, 0, 20, kFlat4.data(), 0, 12};
    EXPECT_EQ(zaniReconstructLumaIntra4x4_H264High_32s16u_IP1R(&rec, modes, 4), zanStsEdgeSubstituted);
    EXPECT_EQ(p16[kY0 * kW + kX0], 2048);
}

TEST(H264Recon, HalfChromaModes) {
    // mode 1 and 3: -117 with nothing written; vertical needs the row above of edgeTypeTop
    for (Zan32u mode : {1u, 3u}) {
        Scene s;
        EXPECT_EQ(zaniReconstructChromaIntraHalfsMB_H264_16s8u_P2R(&s.cur, s.mb(), s.mb() + 8, kW, mode, 0, 20, 0, 0),
                  zanStsEdgeUnavailable);
        EXPECT_EQ(zaniReconstructChromaIntraHalvesMB_H264_16s8u_C2R(&s.cur, s.mb(), kW, mode, 0, 20, 0, 0),
                  zanStsEdgeUnavailable);
        EXPECT_TRUE(s.untouched());
    }
    Scene s;
    EXPECT_EQ(zaniReconstructChromaIntraHalvesMB_H264_16s8u_P2R(&s.cur, s.mb(), s.mb() + 8, kW, 2, 0, 20, 4, 0),
              zanStsEdgeUnavailable);
    EXPECT_EQ(zaniReconstructChromaIntraHalves4x4MB_H264_16s8u_P2R(&s.cur, s.mb(), s.mb() + 8, kW, 2, 0, 20, 20, 4, 0,
                                                                   kFlat4.data(), kFlat4.data(), 0),
              zanStsEdgeUnavailable);
    EXPECT_TRUE(s.untouched());
    // the lower half's left edge comes from edgeTypeBottom: here the upper
    // half has a left column of 200, the lower half is told it has none
    for (int y = 0; y < 8; ++y) s.mb()[y * kW - 1] = 200;
    s.pic0 = s.pic;
    EXPECT_EQ(zaniReconstructChromaIntraHalfsMB_H264_16s8u_P2R(&s.cur, s.mb(), s.mb() + 24, kW, 0, 0, 20, 4, 1),
              zanStsOk);
    EXPECT_EQ(s.mb()[0], 200);           // left only
    EXPECT_EQ(s.mb()[5 * kW], 128);      // lower half: neither edge
    // QP 45 passes the entry check, the prediction is written, the residual stage refuses
    Scene q;
    EXPECT_EQ(zaniReconstructChromaIntraHalfsMB_H264_16s8u_P2R(&q.cur, q.mb(), q.mb() + 24, kW, 0, 1u << 17, 45, 0x15,
                                                               0x15),
              zanStsOutOfRange);
    EXPECT_EQ(q.mb()[0], 128);
    EXPECT_EQ(q.cur, q.coef.data());
    EXPECT_EQ(zaniReconstructChromaIntraHalfsMB_H264_16s8u_P2R(&q.cur, q.mb(), q.mb() + 24, kW, 0, 0, 52, 0, 0),
              zanStsOutOfRange);
}

TEST(H264Recon, InvalidModeStopsTheWalk) {
    // 8x8: the third block's mode is bad; the first two are done, the cursor stays
    Scene s;
    Zan32u modes[4] = {2, 2, 9, 2};
    EXPECT_EQ(zaniReconstructLumaIntra8x8MB_H264_16s8u_C1R(&s.cur, s.mb(), kW, modes, 0, 20, 0x35, kFlat8.data(), 0),
              zanStsOutOfRange);
    EXPECT_EQ(s.cur, s.coef.data());
    EXPECT_EQ(s.mb()[0], 128);
    EXPECT_EQ(s.mb()[8 * kW], 77);
    // the Half 4x4 forms check as they walk too
    Scene t;
    Zan32u m4[8] = {2, 2, 2, 2, 2, 2, 2, 11};
    EXPECT_EQ(zaniReconstructLumaIntraHalfMB_H264_16s8u_C1R(&t.cur, t.mb(), kW, m4, 0x1fe, 20, 0x35),
              zanStsOutOfRange);
    EXPECT_EQ(t.cur, t.coef.data());
    EXPECT_NE(t.mb()[0], 77);                 // block 0 was reconstructed
    EXPECT_EQ(t.mb()[12 + 4 * kW], 77);       // block 7 was not
}

TEST(H264Recon, BypassRule) {
    // flag set and QP 0: values added as they stand
    Scene s;
    std::fill(s.coef.begin(), s.coef.begin() + 16, 0);
    s.coef[0] = 5;
    s.coef[5] = -100;
    EXPECT_EQ(zaniReconstructLumaInter4x4MB_H264_16s8u_C1R(&s.cur, s.mb(), kW, 2, 0, kFlat4.data(), 1), zanStsOk);
    EXPECT_EQ(s.mb()[0], 82);
    EXPECT_EQ(s.mb()[1 + kW], 0);  // 77 - 100 clamps
    EXPECT_EQ(s.mb()[2], 77);
    EXPECT_EQ(s.cur, s.coef.data() + 16);
    // flag set and QP 1: the transform runs (a lone DC of 16 at scale 176 / 16 spreads evenly)
    Scene t;
    std::fill(t.coef.begin(), t.coef.begin() + 16, 0);
    t.coef[0] = 4;
    const std::vector<Zan16s> ls1 = level_scale4(1, flat_weights(16));
    EXPECT_EQ(zaniReconstructLumaInter4x4MB_H264_16s8u_C1R(&t.cur, t.mb(), kW, 2, 1, ls1.data(), 1), zanStsOk);
    // 4 * 176 = 704, (704 + 8) >> 4 = 44, (44 + 32) >> 6 = 1
    EXPECT_EQ(t.mb()[0], 78);
    EXPECT_EQ(t.mb()[3 + 3 * kW], 78);
    // lossless chroma DC with no AC: only the first sample of each block changes
    Scene c;
    std::fill(c.coef.begin(), c.coef.end(), 0);
    c.coef[0] = 10, c.coef[1] = -20, c.coef[2] = 30, c.coef[3] = 40;
    EXPECT_EQ(zaniReconstructChromaInter4x4MB_H264_16s8u_P2R(&c.cur, c.mb(), c.mb() + 16, kW, 1u << 17, 0, 0,
                                                              kFlat4.data(), kFlat4.data(), 1),
              zanStsOk);
    EXPECT_EQ(c.cur, c.coef.data() + 4);
    EXPECT_EQ(c.mb()[0], 87);
    EXPECT_EQ(c.mb()[4], 57);
    EXPECT_EQ(c.mb()[4 * kW], 107);
    EXPECT_EQ(c.mb()[4 + 4 * kW], 117);
    EXPECT_EQ(c.mb()[1], 77);
    EXPECT_EQ(c.mb()[1 + kW], 77);
}


TEST(H264Recon, UncheckedModesAndStrayBits) {
    // the whole-macroblock 4x4 members and the interleaved chroma members take
    // modes as the caller's charge: a mode out of range is no error
    Scene s;
    Zan32u modes[16];
    std::fill(modes, modes + 16, 2u);
    modes[3] = 40;
    EXPECT_EQ(zaniReconstructLumaIntraMB_H264_16s8u_C1R(&s.cur, s.mb(), kW, modes, 0, 20, 0), zanStsOk);
    EXPECT_EQ(zaniReconstructLumaIntra4x4MB_H264_16s8u_C1R(&s.cur, s.mb(), kW, modes, 0, 20, 0, kFlat4.data(), 0),
              zanStsOk);
    EXPECT_EQ(zaniReconstructChromaIntraMB_H264_16s8u_C2R(&s.cur, s.mb(), kW, 7, 0, 20, 0), zanStsOk);
    // edge bits 2, 8, 64 and 128 mean nothing: vertical 16x16 with all of them set works
    Scene t;
    EXPECT_EQ(zaniReconstructLumaIntra16x16MB_H264_16s8u_C1R(&t.cur, t.mb(), kW, 0, 0, 20, 0xca), zanStsOk);
    // 4x4 walk: with stray bits only, no block substitutes
    Scene u;
    for (Zan32u& m : modes) m = 4;  // diagonal down-right needs above, left and corner
    EXPECT_EQ(zaniReconstructLumaIntraMB_H264_16s8u_C1R(&u.cur, u.mb(), kW, modes, 0, 20, 0xca), zanStsOk);
    EXPECT_EQ(zaniReconstructLumaIntraMB_H264_16s8u_C1R(&u.cur, u.mb(), kW, modes, 0, 20, 16),
              zanStsEdgeSubstituted);
}

TEST(H264Recon, ChromaRecordsShareTheFirstCursor) {
    // U's record carries the cursor; the stream order is U DC, V DC, U AC, V AC
    std::vector<Zan16u> u(kW * kH, 100), v(kW * kH, 100);
    std::vector<Zan32s> c(4 + 4 + 16, 0);
    c[0] = 64;  // U DC: every U block gets the same DC at QP 0 with flat scale 160
    // V: DC block and AC block 0 coded, all zero
    Zan32s* cur = c.data();
    Zan32s* other = nullptr;
    ZanReconstructRecord ru{reinterpret_cast<void**>(&cur), u.data() + kY0 * kW + kX0, kW, 1, 0, kFlat4.data(), 0, 10};
    ZanReconstructRecord rv{reinterpret_cast<void**>(&other), v.data() + kY0 * kW + kX0, kW, 1 | 2, 0, kFlat4.data(), 0, 10};
    const ZanReconstructRecord* rr[2] = {&ru, &rv};
    EXPECT_EQ(zaniReconstructChromaInter4x4_H264High_32s16u_IP2R(rr), zanStsOk);
    EXPECT_EQ(cur, c.data() + 4 + 4 + 16);
    EXPECT_EQ(other, nullptr);
    // f0 = 64, the others 64 too (one coefficient); (64 * 160) >> 5 = 320; (320 + 32) >> 6 = 5
    EXPECT_EQ(u[kY0 * kW + kX0], 105);
    EXPECT_EQ(u[(kY0 + 7) * kW + kX0 + 7], 105);
    EXPECT_EQ(v[kY0 * kW + kX0], 100);
}

}  // namespace
