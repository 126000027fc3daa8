// Intra predictors for 16-bit samples (high bit depth), clause 8.3 of
// H.264, with the substitution rules of the 8-bit predictors: where those
// put 128 for an absent neighbour these put 1 << (bitDepth - 1).
#include <algorithm>

#include "common/path.h"
#include "h264/h264recon.h"

namespace zan::ZAN_PATH::h264recon {
namespace {

enum : Zan32s { kAbove = 1, kLeft = 2, kCorner = 32, kAboveRight = 64 };

inline Zan32s mid(Zan32s bitDepth) { return static_cast<Zan32s>(1u << ((bitDepth - 1) & 31)); }
inline Zan32s clip(Zan32s v, Zan32s bitDepth) {
    Zan32s maxv = static_cast<Zan32s>((1u << (bitDepth & 31)) - 1u);
    return std::clamp(v, 0, maxv);
}

void fill(Zan16u* p, Zan32s step, int w, int h, Zan32s v) {
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) p[y * step + x] = static_cast<Zan16u>(v);
}

// Neighbours of an N x N block: top[0] is the corner p[-1, -1], top[1 + x]
// is p[x, -1] for x = 0..2N-1; left[1 + y] is p[-1, y], left[0] the corner.
// One spare place in front of each array keeps the unused index -2 of the
// formulas inside the buffers.
template <int N>
struct Nb {
    Zan32s tbuf[2 * N + 2] = {};
    Zan32s lbuf[N + 2] = {};
    Zan32s* const top = tbuf + 1;   // top[0] corner, top[1 + x] = p[x, -1]
    Zan32s* const left = lbuf + 1;  // left[0] corner, left[1 + y] = p[-1, y]
    Nb() = default;
    Nb(const Nb&) = delete;
    Zan32s T(int x) const { return top[x + 1]; }   // x from -1
    Zan32s L(int y) const { return left[y + 1]; }  // y from -1
};

// The directional modes 3..8 of the 4x4 and 8x8 predictors, from the
// (already substituted or filtered) neighbours.
template <int N>
void directional(const Nb<N>& n, int mode, Zan16u* p, Zan32s step) {
    auto t3 = [](Zan32s a, Zan32s b, Zan32s c) { return (a + 2 * b + c + 2) >> 2; };
    auto t2 = [](Zan32s a, Zan32s b) { return (a + b + 1) >> 1; };
    for (int y = 0; y < N; ++y)
        for (int x = 0; x < N; ++x) {
            Zan32s v = 0;
            switch (mode) {
                case 3:  // diagonal down-left
                    v = (x == N - 1 && y == N - 1) ? (n.T(2 * N - 2) + 3 * n.T(2 * N - 1) + 2) >> 2
                                                   : t3(n.T(x + y), n.T(x + y + 1), n.T(x + y + 2));
                    break;
                case 4:  // diagonal down-right
                    if (x > y) v = t3(n.T(x - y - 2), n.T(x - y - 1), n.T(x - y));
                    else if (x < y) v = t3(n.L(y - x - 2), n.L(y - x - 1), n.L(y - x));
                    else v = t3(n.T(0), n.T(-1), n.L(0));
                    break;
                case 5: {  // vertical-right
                    int z = 2 * x - y;
                    if (z >= 0 && !(z & 1)) v = t2(n.T(x - (y >> 1) - 1), n.T(x - (y >> 1)));
                    else if (z >= 0) v = t3(n.T(x - (y >> 1) - 2), n.T(x - (y >> 1) - 1), n.T(x - (y >> 1)));
                    else if (z == -1) v = t3(n.L(0), n.L(-1), n.T(0));
                    else v = t3(n.L(y - 2 * x - 1), n.L(y - 2 * x - 2), n.L(y - 2 * x - 3));
                    break;
                }
                case 6: {  // horizontal-down
                    int z = 2 * y - x;
                    if (z >= 0 && !(z & 1)) v = t2(n.L(y - (x >> 1) - 1), n.L(y - (x >> 1)));
                    else if (z >= 0) v = t3(n.L(y - (x >> 1) - 2), n.L(y - (x >> 1) - 1), n.L(y - (x >> 1)));
                    else if (z == -1) v = t3(n.L(0), n.L(-1), n.T(0));
                    else v = t3(n.T(x - 2 * y - 1), n.T(x - 2 * y - 2), n.T(x - 2 * y - 3));
                    break;
                }
                case 7:  // vertical-left
                    v = (y & 1) ? t3(n.T(x + (y >> 1)), n.T(x + (y >> 1) + 1), n.T(x + (y >> 1) + 2))
                                : t2(n.T(x + (y >> 1)), n.T(x + (y >> 1) + 1));
                    break;
                default: {  // horizontal-up
                    int z = x + 2 * y;
                    if (z > 2 * N - 3) v = n.L(N - 1);
                    else if (z == 2 * N - 3) v = (n.L(N - 2) + 3 * n.L(N - 1) + 2) >> 2;
                    else if (z & 1) v = t3(n.L(y + (x >> 1)), n.L(y + (x >> 1) + 1), n.L(y + (x >> 1) + 2));
                    else v = t2(n.L(y + (x >> 1)), n.L(y + (x >> 1) + 1));
                    break;
                }
            }
            p[y * step + x] = static_cast<Zan16u>(v);
        }
}

// ---- 4x4

template <int Mode>
Zan32s pred4x4(Zan16u* p, Zan32s s, Zan32s avail, Zan32s bd) {
    const bool A = avail & kAbove, L = avail & kLeft, C = avail & kCorner, AR = avail & kAboveRight;
    const Zan32s m = mid(bd);
    Nb<4> n;
    auto above = [&](int x) { return static_cast<Zan32s>(p[-s + x]); };
    auto left = [&](int y) { return static_cast<Zan32s>(p[y * s - 1]); };
    if constexpr (Mode == 0) {
        if (!A) return fill(p, s, 4, 4, m), 1;
        for (int y = 0; y < 4; ++y)
            for (int x = 0; x < 4; ++x) p[y * s + x] = static_cast<Zan16u>(above(x));
        return 0;
    } else if constexpr (Mode == 1) {
        if (!L) return fill(p, s, 4, 4, m), 1;
        for (int y = 0; y < 4; ++y) fill(p + y * s, s, 4, 1, left(y));
        return 0;
    } else if constexpr (Mode == 2) {
        Zan32s sa = 0, sl = 0;
        for (int i = 0; i < 4; ++i) {
            if (A) sa += above(i);
            if (L) sl += left(i);
        }
        fill(p, s, 4, 4, A && L ? (sa + sl + 4) >> 3 : A ? (sa + 2) >> 2 : L ? (sl + 2) >> 2 : m);
        return 0;
    } else if constexpr (Mode == 3 || Mode == 7) {
        if (!A && !AR) return fill(p, s, 4, 4, m), 1;
        for (int x = 0; x < 4; ++x) n.top[1 + x] = A ? above(x) : m;
        for (int x = 4; x < 8; ++x) n.top[1 + x] = AR ? above(x) : n.top[4];
        directional(n, Mode, p, s);
        return A ? 0 : 1;
    } else if constexpr (Mode == 8) {
        if (!L) return fill(p, s, 4, 4, m), 1;
        for (int y = 0; y < 4; ++y) n.left[1 + y] = left(y);
        directional(n, Mode, p, s);
        return 0;
    } else {
        n.top[0] = n.left[0] = C ? static_cast<Zan32s>(p[-s - 1]) : m;
        for (int x = 0; x < 4; ++x) n.top[1 + x] = A ? above(x) : m;
        for (int y = 0; y < 4; ++y) n.left[1 + y] = L ? left(y) : m;
        directional(n, Mode, p, s);
        return A && L && C ? 0 : 1;
    }
}

}  // namespace

const ::zan::h264recon::Pred4x4_16Fn pred4x4_16[9] = {pred4x4<0>, pred4x4<1>, pred4x4<2>, pred4x4<3>, pred4x4<4>,
                                    pred4x4<5>, pred4x4<6>, pred4x4<7>, pred4x4<8>};

// ---- 8x8: edge preparation (clause 8.3.2.2.1 with the library's stand-ins), then the mode.

void pred8x8_16(Zan16u* p, Zan32s s, Zan32s avail, Zan32s mode, Zan32s bd) {
    const bool A = avail & kAbove, L = avail & kLeft, C = avail & kCorner, AR = avail & kAboveRight;
    const Zan32s m = mid(bd);
    Zan32s ra[16], rl[8], rc;
    for (int x = 0; x < 8; ++x) ra[x] = A ? p[-s + x] : m;
    for (int x = 8; x < 16; ++x) ra[x] = AR ? p[-s + x] : ra[7];
    for (int y = 0; y < 8; ++y) rl[y] = L ? p[y * s - 1] : m;
    rc = C ? p[-s - 1] : m;
    Nb<8> n;
    for (int x = 0; x < 16; ++x) n.top[1 + x] = ra[x];
    for (int y = 0; y < 8; ++y) n.left[1 + y] = rl[y];
    n.top[0] = rc;
    if (A) {
        n.top[1] = C ? (rc + 2 * ra[0] + ra[1] + 2) >> 2 : (3 * ra[0] + ra[1] + 2) >> 2;
        for (int x = 1; x < 15; ++x) n.top[1 + x] = (ra[x - 1] + 2 * ra[x] + ra[x + 1] + 2) >> 2;
        n.top[16] = (ra[14] + 3 * ra[15] + 2) >> 2;
    }
    if (L) {
        n.left[1] = C ? (rc + 2 * rl[0] + rl[1] + 2) >> 2 : (3 * rl[0] + rl[1] + 2) >> 2;
        for (int y = 1; y < 7; ++y) n.left[1 + y] = (rl[y - 1] + 2 * rl[y] + rl[y + 1] + 2) >> 2;
        n.left[8] = (rl[6] + 3 * rl[7] + 2) >> 2;
    }
    if (C) {
        if (A && L) n.top[0] = (rl[0] + 2 * rc + ra[0] + 2) >> 2;
        else if (A) n.top[0] = (3 * rc + ra[0] + 2) >> 2;
        else if (L) n.top[0] = (3 * rc + rl[0] + 2) >> 2;
    }
    n.left[0] = n.top[0];
    if (mode == 0) {
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 8; ++x) p[y * s + x] = static_cast<Zan16u>(n.T(x));
    } else if (mode == 1) {
        for (int y = 0; y < 8; ++y) fill(p + y * s, s, 8, 1, n.L(y));
    } else if (mode == 2) {
        Zan32s sa = 0, sl = 0;
        for (int i = 0; i < 8; ++i) {
            sa += n.T(i);
            sl += n.L(i);
        }
        fill(p, s, 8, 8, A && L ? (sa + sl + 8) >> 4 : A ? (sa + 4) >> 3 : L ? (sl + 4) >> 3 : m);
    } else {
        directional(n, mode, p, s);
    }
}

// ---- 16x16 (clause 8.3.3)

void pred16x16_16(Zan16u* p, Zan32s s, Zan32s mode, Zan32s avail, Zan32s bd) {
    const bool A = avail & kAbove, L = avail & kLeft;
    auto T = [&](int x) { return static_cast<Zan32s>(p[-s + x]); };  // x from -1
    auto Lf = [&](int y) { return static_cast<Zan32s>(p[y * s - 1]); };
    if (mode == 0) {
        for (int y = 0; y < 16; ++y)
            for (int x = 0; x < 16; ++x) p[y * s + x] = static_cast<Zan16u>(T(x));
    } else if (mode == 1) {
        for (int y = 0; y < 16; ++y) fill(p + y * s, s, 16, 1, Lf(y));
    } else if (mode == 2) {
        Zan32s sa = 0, sl = 0;
        for (int i = 0; i < 16; ++i) {
            if (A) sa += T(i);
            if (L) sl += Lf(i);
        }
        fill(p, s, 16, 16, A && L ? (sa + sl + 16) >> 5 : A ? (sa + 8) >> 4 : L ? (sl + 8) >> 4 : mid(bd));
    } else {
        Zan32s H = 0, V = 0;
        for (int i = 0; i < 8; ++i) {
            H += (i + 1) * (T(8 + i) - T(6 - i));
            V += (i + 1) * (Lf(8 + i) - (6 - i < 0 ? T(-1) : Lf(6 - i)));
        }
        Zan32s a = 16 * (Lf(15) + T(15)), b = (5 * H + 32) >> 6, c = (5 * V + 32) >> 6;
        for (int y = 0; y < 16; ++y)
            for (int x = 0; x < 16; ++x)
                p[y * s + x] = static_cast<Zan16u>(clip((a + b * (x - 7) + c * (y - 7) + 16) >> 5, bd));
    }
}

// ---- chroma (clause 8.3.4), planar, 8 wide and h high

namespace {

// DC of the 4x4 block at (x0, y0) of a chroma block: the standard's choice
// of edges by position; left comes from leftAvail.
Zan32s chroma_dc_value(const Zan16u* p, Zan32s s, int x0, int y0, bool A, bool L, Zan32s bd) {
    Zan32s sa = 0, sl = 0;
    for (int i = 0; i < 4; ++i) {
        if (A) sa += p[-s + x0 + i];
        if (L) sl += p[(y0 + i) * s - 1];
    }
    if ((x0 == 0 && y0 == 0) || (x0 > 0 && y0 > 0)) {
        if (A && L) return (sa + sl + 4) >> 3;
        if (A) return (sa + 2) >> 2;
        if (L) return (sl + 2) >> 2;
    } else if (x0 > 0) {  // top edge: above preferred
        if (A) return (sa + 2) >> 2;
        if (L) return (sl + 2) >> 2;
    } else {  // left edge: left preferred
        if (L) return (sl + 2) >> 2;
        if (A) return (sa + 2) >> 2;
    }
    return mid(bd);
}

void chroma_dc(Zan16u* p, Zan32s s, int h, bool A, bool Ltop, bool Lbottom, Zan32s bd) {
    Zan32s v[4][2];
    for (int by = 0; by < h / 4; ++by)
        for (int bx = 0; bx < 2; ++bx) v[by][bx] = chroma_dc_value(p, s, 4 * bx, 4 * by, A, 4 * by < h / 2 ? Ltop : Lbottom, bd);
    for (int by = 0; by < h / 4; ++by)
        for (int bx = 0; bx < 2; ++bx) fill(p + 4 * by * s + 4 * bx, s, 4, 4, v[by][bx]);
}

void chroma_block(Zan16u* p, Zan32s s, int h, Zan32s mode, Zan32s avail, Zan32s bd) {
    const bool A = avail & kAbove, L = avail & kLeft;
    if (mode == 0) {
        chroma_dc(p, s, h, A, L, L, bd);
    } else if (mode == 1) {
        for (int y = 0; y < h; ++y) fill(p + y * s, s, 8, 1, p[y * s - 1]);
    } else if (mode == 2) {
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < 8; ++x) p[y * s + x] = p[-s + x];
    } else {
        auto T = [&](int x) { return static_cast<Zan32s>(p[-s + x]); };
        auto Lf = [&](int y) { return static_cast<Zan32s>(y < 0 ? p[-s - 1] : p[y * s - 1]); };
        const int yCF = h == 16 ? 4 : 0;
        Zan32s H = 0, V = 0;
        for (int i = 0; i < 4; ++i) H += (i + 1) * (T(4 + i) - T(2 - i));
        for (int i = 0; i < 4 + yCF; ++i) V += (i + 1) * (Lf(4 + yCF + i) - Lf(2 + yCF - i));
        Zan32s a = 16 * (Lf(h - 1) + T(7)), b = (34 * H + 32) >> 6, c = ((h == 16 ? 5 : 34) * V + 32) >> 6;
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < 8; ++x)
                p[y * s + x] = static_cast<Zan16u>(clip((a + b * (x - 3) + c * (y - 3 - yCF) + 16) >> 5, bd));
    }
}

}  // namespace

void chroma8x8_16(Zan16u* p, Zan32s s, Zan32s mode, Zan32s avail, Zan32s bd) { chroma_block(p, s, 8, mode, avail, bd); }
void chroma8x16_16(Zan16u* p, Zan32s s, Zan32s mode, Zan32s avail, Zan32s bd) { chroma_block(p, s, 16, mode, avail, bd); }

void chroma_dc_split_16(Zan16u* p, Zan32s s, Zan32s h, Zan32s availTop, Zan32s availBottom, Zan32s bd) {
    chroma_dc(p, s, h, availTop & kAbove, availTop & kLeft, availBottom & kLeft, bd);
}

}  // namespace zan::ZAN_PATH::h264recon
