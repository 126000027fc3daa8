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
                // coded order to the 4x2 matrix of clause 8.5.11.1: c0 c2 / c1 c5 / c3 c6 / c4 c7
                const int pos[8] = {0, 2, 1, 5, 3, 6, 4, 7};
                long x[8];
                for (int i = 0; i < 8; ++i) x[i] = c[pos[i]];
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

}  // namespace
