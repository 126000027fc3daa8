// H.264 intra prediction of 4x4 and 16x16 luma blocks and 8x8 chroma blocks
// (planar and interleaved), in place in the picture, and the 8x8 luma edge
// preparation and predictors that macroblock reconstruction uses.
//
// The predicted values are those of the standard (clause 8.3).  What this
// family adds is the availability word and what happens when a needed
// neighbour is marked absent: the 4x4 predictors carry on with 128 and warn,
// the 16x16 and chroma predictors refuse and write nothing, the 8x8 path
// substitutes 128 silently.
#include "h264/h264intra.h"

#include <cstddef>
#include <cstring>

#include "common/simd.h"
#include "frame/bodies.h"

namespace zan::ZAN_PATH::h264intra {
namespace {

using namespace zan::h264intra;

// Sample x of row y relative to the block origin; x and y may be -1 (or -2).
inline Zan8u& px(Zan8u* p, Zan32s step, Zan32s x, Zan32s y) {
    return p[static_cast<ptrdiff_t>(step) * y + x];
}
inline Zan8u px(const Zan8u* p, Zan32s step, Zan32s x, Zan32s y) {
    return p[static_cast<ptrdiff_t>(step) * y + x];
}

inline Zan32s clip255(Zan32s v) { return v < 0 ? 0 : v > 255 ? 255 : v; }

// ============================================================ scalar rules

// Neighbours of an N x N block: t[0..2N-1] the row above and above right,
// l[0..N-1] the left column, c the corner.  top(-1) and left(-1) are the
// corner, as in the standard's p[-1, -1].
template <int N>
struct Neighbours {
    Zan32s c = 128;
    Zan32s t[2 * N];
    Zan32s l[N];
    Neighbours() {
        for (auto& v : t) v = 128;
        for (auto& v : l) v = 128;
    }
    Zan32s top(int i) const { return i < 0 ? c : t[i]; }
    Zan32s left(int i) const { return i < 0 ? c : l[i]; }
};

// One predicted sample of an N x N block (N = 4 or 8) for the modes that
// depend only on the neighbours (every mode but DC).
template <int N>
Zan32s directional(int mode, const Neighbours<N>& n, int x, int y) {
    switch (mode) {
        case kVertical:
            return n.top(x);
        case kHorizontal:
            return n.left(y);
        case kDiagDownLeft:
            if (x == N - 1 && y == N - 1) return (n.top(2 * N - 2) + 3 * n.top(2 * N - 1) + 2) >> 2;
            return (n.top(x + y) + 2 * n.top(x + y + 1) + n.top(x + y + 2) + 2) >> 2;
        case kDiagDownRight:
            if (x > y) return (n.top(x - y - 2) + 2 * n.top(x - y - 1) + n.top(x - y) + 2) >> 2;
            if (x < y) return (n.left(y - x - 2) + 2 * n.left(y - x - 1) + n.left(y - x) + 2) >> 2;
            return (n.top(0) + 2 * n.c + n.left(0) + 2) >> 2;
        case kVerticalRight: {
            const int z = 2 * x - y, j = x - (y >> 1);
            if (z >= 0 && z % 2 == 0) return (n.top(j - 1) + n.top(j) + 1) >> 1;
            if (z >= 0) return (n.top(j - 2) + 2 * n.top(j - 1) + n.top(j) + 2) >> 2;
            if (z == -1) return (n.left(0) + 2 * n.c + n.top(0) + 2) >> 2;
            return (n.left(y - 2 * x - 1) + 2 * n.left(y - 2 * x - 2) + n.left(y - 2 * x - 3) + 2) >> 2;
        }
        case kHorizontalDown: {
            const int z = 2 * y - x, j = y - (x >> 1);
            if (z >= 0 && z % 2 == 0) return (n.left(j - 1) + n.left(j) + 1) >> 1;
            if (z >= 0) return (n.left(j - 2) + 2 * n.left(j - 1) + n.left(j) + 2) >> 2;
            if (z == -1) return (n.left(0) + 2 * n.c + n.top(0) + 2) >> 2;
            return (n.top(x - 2 * y - 1) + 2 * n.top(x - 2 * y - 2) + n.top(x - 2 * y - 3) + 2) >> 2;
        }
        case kVerticalLeft: {
            const int j = x + (y >> 1);
            if (y % 2 == 0) return (n.top(j) + n.top(j + 1) + 1) >> 1;
            return (n.top(j) + 2 * n.top(j + 1) + n.top(j + 2) + 2) >> 2;
        }
        default: {  // kHorizontalUp
            const int z = x + 2 * y, j = y + (x >> 1);
            if (z < 2 * N - 3 && z % 2 == 0) return (n.left(j) + n.left(j + 1) + 1) >> 1;
            if (z < 2 * N - 3) return (n.left(j) + 2 * n.left(j + 1) + n.left(j + 2) + 2) >> 2;
            if (z == 2 * N - 3) return (n.left(N - 2) + 3 * n.left(N - 1) + 2) >> 2;
            return n.left(N - 1);
        }
    }
}

template <int W, int H>
void fill_rule(Zan8u* p, Zan32s step, Zan32s v) {
    for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; ++x) px(p, step, x, y) = static_cast<Zan8u>(v);
}

// --- 4x4

template <int Mode>
Zan32s pred4x4_rule(Zan8u* p, Zan32s s, Zan32s avail) {
    const bool above = avail & kAbove, left = avail & kLeft, corner = avail & kCorner,
               aboveRight = avail & kAboveRight;
    Neighbours<4> n;
    if constexpr (Mode == kDc) {
        Zan32s sum = 0;
        if (above)
            for (int x = 0; x < 4; ++x) sum += px(p, s, x, -1);
        if (left)
            for (int y = 0; y < 4; ++y) sum += px(p, s, -1, y);
        fill_rule<4, 4>(p, s, above && left ? (sum + 4) >> 3 : above || left ? (sum + 2) >> 2 : 128);
        return 0;
    }
    Zan32s warn = 0;
    if constexpr (Mode == kVertical) {
        if (!above) return fill_rule<4, 4>(p, s, 128), 1;
        for (int x = 0; x < 4; ++x) n.t[x] = px(p, s, x, -1);
    }
    if constexpr (Mode == kHorizontal || Mode == kHorizontalUp) {
        if (!left) return fill_rule<4, 4>(p, s, 128), 1;
        for (int y = 0; y < 4; ++y) n.l[y] = px(p, s, -1, y);
    }
    if constexpr (Mode == kDiagDownLeft || Mode == kVerticalLeft) {
        if (!above && !aboveRight) return fill_rule<4, 4>(p, s, 128), 1;
        if (above)
            for (int x = 0; x < 4; ++x) n.t[x] = px(p, s, x, -1);
        else
            warn = 1;  // the row above stays 128
        for (int x = 4; x < 8; ++x) n.t[x] = aboveRight ? px(p, s, x, -1) : n.t[3];
    }
    if constexpr (Mode == kDiagDownRight || Mode == kVerticalRight || Mode == kHorizontalDown) {
        if (corner) n.c = px(p, s, -1, -1);
        if (above)
            for (int x = 0; x < 4; ++x) n.t[x] = px(p, s, x, -1);
        if (left)
            for (int y = 0; y < 4; ++y) n.l[y] = px(p, s, -1, y);
        warn = !(corner && above && left);
    }
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 4; ++x) px(p, s, x, y) = static_cast<Zan8u>(directional<4>(Mode, n, x, y));
    return warn;
}

// --- 16x16

template <int Mode>
Zan32s pred16_rule(Zan8u* p, Zan32s s, Zan32s avail) {
    const bool above = avail & kAbove, left = avail & kLeft, corner = avail & kCorner;
    if (Mode == k16Vertical && !above) return 1;
    if (Mode == k16Horizontal && !left) return 1;
    if (Mode == k16Plane && !(above && left && corner)) return 1;
    Zan32s t[16] = {}, l[16] = {}, c = 0;
    if (above)
        for (int x = 0; x < 16; ++x) t[x] = px(p, s, x, -1);
    if (left)
        for (int y = 0; y < 16; ++y) l[y] = px(p, s, -1, y);
    if (Mode == k16Plane) c = px(p, s, -1, -1);
    if constexpr (Mode == k16Dc) {
        Zan32s sum = 0;
        for (int i = 0; i < 16; ++i) sum += t[i] + l[i];
        fill_rule<16, 16>(p, s, above && left ? (sum + 16) >> 5 : above || left ? (sum + 8) >> 4 : 128);
        return 0;
    }
    if constexpr (Mode == k16Plane) {
        auto T = [&](int i) { return i < 0 ? c : t[i]; };
        auto L = [&](int i) { return i < 0 ? c : l[i]; };
        Zan32s H = 0, V = 0;
        for (int k = 0; k < 8; ++k) {
            H += (k + 1) * (T(8 + k) - T(6 - k));
            V += (k + 1) * (L(8 + k) - L(6 - k));
        }
        const Zan32s a = 16 * (l[15] + t[15]), b = (5 * H + 32) >> 6, cc = (5 * V + 32) >> 6;
        for (int y = 0; y < 16; ++y)
            for (int x = 0; x < 16; ++x)
                px(p, s, x, y) = static_cast<Zan8u>(clip255((a + b * (x - 7) + cc * (y - 7) + 16) >> 5));
        return 0;
    }
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x) px(p, s, x, y) = static_cast<Zan8u>(Mode == k16Vertical ? t[x] : l[y]);
    return 0;
}

// --- chroma 8x8 (4:2:0) and 8x16 (4:2:2, R = 16 rows); C = 1 planar, C = 2
// interleaved (U in even bytes, V in odd)

// DC of the 4x4 block (qx, qy) from the sums of its above and left samples.
inline Zan32s chroma_dc(int qx, int qy, bool above, bool left, Zan32s sumAbove, Zan32s sumLeft) {
    if ((qx == 0) == (qy == 0)) {  // the first block and those off both edges: both edges when both are there
        if (above && left) return (sumAbove + sumLeft + 4) >> 3;
        if (left) return (sumLeft + 2) >> 2;
        if (above) return (sumAbove + 2) >> 2;
        return 128;
    }
    if (qy == 0) {  // top-right prefers the row above
        if (above) return (sumAbove + 2) >> 2;
        if (left) return (sumLeft + 2) >> 2;
        return 128;
    }
    if (left) return (sumLeft + 2) >> 2;  // bottom-left prefers the left column
    if (above) return (sumAbove + 2) >> 2;
    return 128;
}

// DC of a chroma block whose lower half takes the left column's
// availability from availBottom; the row above and the upper half's left
// column follow availTop.  With the two words equal it is the DC mode.
template <int C, int R = 8>
Zan32s chroma_dc_rule(Zan8u* p, Zan32s s, Zan32s availTop, Zan32s availBottom) {
    const bool above = availTop & kAbove;
    const bool left[2] = {(availTop & kLeft) != 0, (availBottom & kLeft) != 0};
    Zan32s t[C][8] = {}, l[C][R] = {};
    for (int k = 0; k < C; ++k) {
        if (above)
            for (int x = 0; x < 8; ++x) t[k][x] = px(p, s, C * x + k, -1);
        for (int y = 0; y < R; ++y)
            if (left[y / (R / 2)]) l[k][y] = px(p, s, k - C, y);
    }
    for (int k = 0; k < C; ++k)
        for (int qy = 0; qy < R / 4; ++qy)
            for (int qx = 0; qx < 2; ++qx) {
                Zan32s sa = 0, sl = 0;
                for (int i = 0; i < 4; ++i) {
                    sa += t[k][4 * qx + i];
                    sl += l[k][4 * qy + i];
                }
                const Zan32s dc = chroma_dc(qx, qy, above, left[qy / (R / 8)], sa, sl);
                for (int y = 0; y < 4; ++y)
                    for (int x = 0; x < 4; ++x) px(p, s, C * (4 * qx + x) + k, 4 * qy + y) = static_cast<Zan8u>(dc);
            }
    return 0;
}

template <int C, int R = 8>
Zan32s chroma_dc_rule_same(Zan8u* p, Zan32s s, Zan32s avail) {
    return chroma_dc_rule<C, R>(p, s, avail, avail);
}

// Vertical, horizontal and plane; DC is chroma_dc_rule.
template <int Mode, int C, int R = 8>
Zan32s chroma_rule(Zan8u* p, Zan32s s, Zan32s avail) {
    const bool above = avail & kAbove, left = avail & kLeft, corner = avail & kCorner;
    if (Mode == kChromaVertical && !above) return 1;
    if (Mode == kChromaHorizontal && !left) return 1;
    if (Mode == kChromaPlane && !(above && left && corner)) return 1;
    // Every neighbour of both components is read before anything is written.
    Zan32s t[C][8] = {}, l[C][R] = {}, c[C] = {};
    for (int k = 0; k < C; ++k) {
        if (above)
            for (int x = 0; x < 8; ++x) t[k][x] = px(p, s, C * x + k, -1);
        if (left)
            for (int y = 0; y < R; ++y) l[k][y] = px(p, s, k - C, y);
        if (Mode == kChromaPlane) c[k] = px(p, s, k - C, -1);
    }
    for (int k = 0; k < C; ++k) {
        Zan32s pred[R][8];
        if constexpr (Mode == kChromaPlane) {
            auto T = [&](int i) { return i < 0 ? c[k] : t[k][i]; };
            auto L = [&](int i) { return i < 0 ? c[k] : l[k][i]; };
            // 8 rows: b, c = (34 * H + 32) >> 6, written (17 * H + 16) >> 5;
            // 16 rows: the vertical sum runs over 8 pairs and c = (5 * V + 32) >> 6.
            constexpr int yc = R / 2 - 1;
            Zan32s H = 0, V = 0;
            for (int i = 0; i < 4; ++i) H += (i + 1) * (T(4 + i) - T(2 - i));
            for (int i = 0; i <= yc; ++i) V += (i + 1) * (L(yc + 1 + i) - L(yc - 1 - i));
            const Zan32s a = 16 * (l[k][R - 1] + t[k][7]), b = (17 * H + 16) >> 5;
            const Zan32s cc = R == 8 ? (17 * V + 16) >> 5 : (5 * V + 32) >> 6;
            for (int y = 0; y < R; ++y)
                for (int x = 0; x < 8; ++x) pred[y][x] = clip255((a + b * (x - 3) + cc * (y - yc) + 16) >> 5);
        } else {
            for (int y = 0; y < R; ++y)
                for (int x = 0; x < 8; ++x) pred[y][x] = Mode == kChromaVertical ? t[k][x] : l[k][y];
        }
        for (int y = 0; y < R; ++y)
            for (int x = 0; x < 8; ++x) px(p, s, C * x + k, y) = static_cast<Zan8u>(pred[y][x]);
    }
    return 0;
}

// --- 8x8 luma

void filter8x8_rule(Edge8x8* e, const Zan8u* p, Zan32s s, Zan32s avail) {
    const bool above = avail & kAbove, left = avail & kLeft, corner = avail & kCorner,
               aboveRight = avail & kAboveRight;
    Edge8x8::Samples r;
    for (int x = 0; x < 8; ++x) r.above[x] = above ? px(p, s, x, -1) : 128;
    for (int x = 8; x < 16; ++x) r.above[x] = aboveRight ? px(p, s, x, -1) : r.above[7];
    for (int y = 0; y < 8; ++y) r.left[y] = left ? px(p, s, -1, y) : 128;
    r.corner = corner ? px(p, s, -1, -1) : 128;

    Edge8x8::Samples f = r;
    if (above) {
        f.above[0] = static_cast<Zan8u>(corner ? (r.corner + 2 * r.above[0] + r.above[1] + 2) >> 2
                                               : (3 * r.above[0] + r.above[1] + 2) >> 2);
        for (int x = 1; x < 15; ++x) f.above[x] = static_cast<Zan8u>((r.above[x - 1] + 2 * r.above[x] + r.above[x + 1] + 2) >> 2);
        f.above[15] = static_cast<Zan8u>((r.above[14] + 3 * r.above[15] + 2) >> 2);
    }
    if (left) {
        f.left[0] = static_cast<Zan8u>(corner ? (r.corner + 2 * r.left[0] + r.left[1] + 2) >> 2
                                              : (3 * r.left[0] + r.left[1] + 2) >> 2);
        for (int y = 1; y < 7; ++y) f.left[y] = static_cast<Zan8u>((r.left[y - 1] + 2 * r.left[y] + r.left[y + 1] + 2) >> 2);
        f.left[7] = static_cast<Zan8u>((r.left[6] + 3 * r.left[7] + 2) >> 2);
    }
    if (corner) {
        if (above && left) f.corner = static_cast<Zan8u>((r.left[0] + 2 * r.corner + r.above[0] + 2) >> 2);
        else if (above) f.corner = static_cast<Zan8u>((3 * r.corner + r.above[0] + 2) >> 2);
        else if (left) f.corner = static_cast<Zan8u>((3 * r.corner + r.left[0] + 2) >> 2);
    }
    e->avail = avail;
    e->raw = r;
    e->filtered = f;
}

template <int Mode>
void pred8x8_rule(const Edge8x8* e, Zan8u* p, Zan32s s) {
    const Edge8x8::Samples& f = e->filtered;
    if constexpr (Mode == kDc) {
        const bool above = e->avail & kAbove, left = e->avail & kLeft;
        Zan32s sa = 0, sl = 0;
        for (int i = 0; i < 8; ++i) {
            sa += f.above[i];
            sl += f.left[i];
        }
        fill_rule<8, 8>(p, s, above && left ? (sa + sl + 8) >> 4 : above ? (sa + 4) >> 3 : left ? (sl + 4) >> 3 : 128);
    } else {
        Neighbours<8> n;
        n.c = f.corner;
        for (int i = 0; i < 16; ++i) n.t[i] = f.above[i];
        for (int i = 0; i < 8; ++i) n.l[i] = f.left[i];
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 8; ++x) px(p, s, x, y) = static_cast<Zan8u>(directional<8>(Mode, n, x, y));
    }
}

// ========================================================== vector kernels

using simd::load16;
using simd::load8;
using simd::store16;
using simd::store8;

inline Zan32u load32(const Zan8u* p) {
    Zan32u v;
    std::memcpy(&v, p, 4);
    return v;
}
inline Zan64u load64(const Zan8u* p) {
    Zan64u v;
    std::memcpy(&v, p, 8);
    return v;
}
inline void store32(Zan8u* p, Zan32u v) { std::memcpy(p, &v, 4); }
inline Zan8u* row(Zan8u* p, Zan32s s, int y) { return p + static_cast<ptrdiff_t>(s) * y; }
inline const Zan8u* row(const Zan8u* p, Zan32s s, int y) { return p + static_cast<ptrdiff_t>(s) * y; }

// Exact (a + 2 b + c + 2) >> 2 per byte: the floor average of a and c,
// then the upward average with b.
inline __m128i avg3_u8(__m128i a, __m128i b, __m128i c) {
    __m128i ac = _mm_sub_epi8(_mm_avg_epu8(a, c), _mm_and_si128(_mm_xor_si128(a, c), _mm_set1_epi8(1)));
    return _mm_avg_epu8(ac, b);
}

// --- 4x4

inline void store4x4_rows(Zan8u* p, Zan32s s, Zan32u r0, Zan32u r1, Zan32u r2, Zan32u r3) {
    store32(row(p, s, 0), r0);
    store32(row(p, s, 1), r1);
    store32(row(p, s, 2), r2);
    store32(row(p, s, 3), r3);
}
inline Zan32s fill4x4_128(Zan8u* p, Zan32s s) {
    store4x4_rows(p, s, 0x80808080u, 0x80808080u, 0x80808080u, 0x80808080u);
    return 1;
}

Zan32s pred4x4_vertical_sse2(Zan8u* p, Zan32s s, Zan32s avail) {
    if (!(avail & kAbove)) return fill4x4_128(p, s);
    const Zan32u t = load32(row(p, s, -1));
    store4x4_rows(p, s, t, t, t, t);
    return 0;
}

Zan32s pred4x4_horizontal_sse2(Zan8u* p, Zan32s s, Zan32s avail) {
    if (!(avail & kLeft)) return fill4x4_128(p, s);
    const Zan32u l0 = row(p, s, 0)[-1], l1 = row(p, s, 1)[-1], l2 = row(p, s, 2)[-1], l3 = row(p, s, 3)[-1];
    store4x4_rows(p, s, l0 * 0x01010101u, l1 * 0x01010101u, l2 * 0x01010101u, l3 * 0x01010101u);
    return 0;
}

Zan32s pred4x4_dc_sse2(Zan8u* p, Zan32s s, Zan32s avail) {
    const bool above = avail & kAbove, left = avail & kLeft;
    Zan32u sum = 0;
    if (above) sum = static_cast<Zan32u>(_mm_cvtsi128_si32(_mm_sad_epu8(simd::load4(row(p, s, -1)), _mm_setzero_si128())));
    if (left) sum += row(p, s, 0)[-1] + row(p, s, 1)[-1] + row(p, s, 2)[-1] + row(p, s, 3)[-1];
    const Zan32u dc = above && left ? (sum + 4) >> 3 : above || left ? (sum + 2) >> 2 : 128;
    const Zan32u v = dc * 0x01010101u;
    store4x4_rows(p, s, v, v, v, v);
    return 0;
}

// The directional 4x4 modes run on one 16-byte edge vector
//   E = l3 l3 l2 l1 l0 c t0 t1 t2 t3 t4 t5 t6 t7 t7 t7
// (left column bottom up, corner, row above and above right, the ends
// repeated), its three-tap smoothing F[i] = (E[i-1] + 2 E[i] + E[i+1] + 2) >> 2
// and its two-tap average A[i] = (E[i] + E[i+1] + 1) >> 1.  Every predicted
// sample of these modes is one byte of F or of A; a mode is two shuffle
// masks, one into F and one into A, that together pick the 16 samples.
struct Shuffle4x4 {
    alignas(16) Zan8s f[16];
    alignas(16) Zan8s a[16];
};

constexpr Shuffle4x4 shuffle4x4(int mode) {
    Shuffle4x4 m{};
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 4; ++x) {
            int fi = -1, ai = -1;
            if (mode == kDiagDownLeft) {
                fi = 7 + x + y;
            } else if (mode == kDiagDownRight) {
                fi = 5 + x - y;
            } else if (mode == kVerticalRight) {
                const int z = 2 * x - y, j = x - (y >> 1);
                if (z >= 0) (z % 2 == 0 ? ai : fi) = 5 + j;
                else fi = z == -1 ? 5 : 6 - y;
            } else if (mode == kHorizontalDown) {
                const int z = 2 * y - x, j = y - (x >> 1);
                if (z >= 0) (z % 2 == 0 ? ai = 4 - j : fi = 5 - j);
                else fi = z == -1 ? 5 : 4 + x;
            } else if (mode == kVerticalLeft) {
                const int j = x + (y >> 1);
                (y % 2 == 0 ? ai = 6 + j : fi = 7 + j);
            } else {  // kHorizontalUp
                const int z = x + 2 * y, j = y + (x >> 1);
                if (z < 5) (z % 2 == 0 ? ai = 3 - j : fi = 3 - j);
                else if (z == 5) fi = 1;
                else ai = 0;
            }
            m.f[4 * y + x] = static_cast<Zan8s>(fi < 0 ? -128 : fi);
            m.a[4 * y + x] = static_cast<Zan8s>(ai < 0 ? -128 : ai);
        }
    return m;
}

template <int Mode>
inline constexpr Shuffle4x4 kShuffle4x4 = shuffle4x4(Mode);

inline Zan64u left_bytes(const Zan8u* p, Zan32s s) {
    // l3 l3 l2 l1 l0 in bytes 0..4
    const Zan64u l0 = row(p, s, 0)[-1], l1 = row(p, s, 1)[-1], l2 = row(p, s, 2)[-1], l3 = row(p, s, 3)[-1];
    return l3 * 0x0101u | l2 << 16 | l1 << 24 | l0 << 32;
}

template <int Mode>
Zan32s pred4x4_diag_ssse3(Zan8u* p, Zan32s s, Zan32s avail) {
    const bool above = avail & kAbove, left = avail & kLeft, corner = avail & kCorner,
               aboveRight = avail & kAboveRight;
    Zan64u lo = 0, hi = 0;  // bytes 0..7 and 8..15 of E
    Zan32s warn = 0;
    if constexpr (Mode == kDiagDownLeft || Mode == kVerticalLeft) {
        Zan64u t;
        if (above && aboveRight) {
            t = load64(row(p, s, -1));
        } else if (above) {
            const Zan64u t4 = load32(row(p, s, -1));
            t = t4 | ((t4 >> 24) * 0x01010101u) << 32;
        } else if (aboveRight) {
            t = 0x80808080u | static_cast<Zan64u>(load32(row(p, s, -1) + 4)) << 32;
            warn = 1;
        } else {
            return fill4x4_128(p, s);
        }
        lo = t << 48;
        hi = t >> 16 | ((t >> 56) * 0x0101u) << 48;
    } else if constexpr (Mode == kHorizontalUp) {
        if (!left) return fill4x4_128(p, s);
        lo = left_bytes(p, s);
    } else {  // down-right, vertical-right, horizontal-down: corner, above, left
        const Zan64u t = above ? load32(row(p, s, -1)) : 0x80808080u;
        const Zan64u c = corner ? row(p, s, -1)[-1] : 0x80u;
        lo = (left ? left_bytes(p, s) : 0x8080808080u) | c << 40 | t << 48;
        hi = t >> 16;
        warn = !(above && left && corner);
    }
    const __m128i e = _mm_unpacklo_epi64(_mm_cvtsi64_si128(static_cast<long long>(lo)),
                                         _mm_cvtsi64_si128(static_cast<long long>(hi)));
    const __m128i next = _mm_srli_si128(e, 1);
    const __m128i f = avg3_u8(_mm_slli_si128(e, 1), e, next);
    const __m128i a = _mm_avg_epu8(e, next);
    const Shuffle4x4& m = kShuffle4x4<Mode>;
    const __m128i out = _mm_or_si128(_mm_shuffle_epi8(f, simd::load16a(m.f)), _mm_shuffle_epi8(a, simd::load16a(m.a)));
    store32(row(p, s, 0), static_cast<Zan32u>(_mm_cvtsi128_si32(out)));
    store32(row(p, s, 1), static_cast<Zan32u>(_mm_cvtsi128_si32(_mm_srli_si128(out, 4))));
    store32(row(p, s, 2), static_cast<Zan32u>(_mm_cvtsi128_si32(_mm_srli_si128(out, 8))));
    store32(row(p, s, 3), static_cast<Zan32u>(_mm_cvtsi128_si32(_mm_srli_si128(out, 12))));
    return warn;
}

// --- 16x16

template <int W, int H>
inline void fill_rows(Zan8u* p, Zan32s s, __m128i v) {
    for (int y = 0; y < H; ++y) {
        if constexpr (W == 16) store16(row(p, s, y), v);
        else store8(row(p, s, y), v);
    }
}

Zan32s pred16_vertical_sse2(Zan8u* p, Zan32s s, Zan32s avail) {
    if (!(avail & kAbove)) return 1;
    fill_rows<16, 16>(p, s, load16(row(p, s, -1)));
    return 0;
}

Zan32s pred16_horizontal_ssse3(Zan8u* p, Zan32s s, Zan32s avail) {
    if (!(avail & kLeft)) return 1;
    Zan8u l[16];
    for (int y = 0; y < 16; ++y) l[y] = row(p, s, y)[-1];
    const __m128i zero = _mm_setzero_si128();
    for (int y = 0; y < 16; ++y) store16(row(p, s, y), _mm_shuffle_epi8(_mm_cvtsi32_si128(l[y]), zero));
    return 0;
}

Zan32s pred16_dc_sse2(Zan8u* p, Zan32s s, Zan32s avail) {
    const bool above = avail & kAbove, left = avail & kLeft;
    Zan32s sum = 0;
    if (above) sum = simd::hsum_sad(_mm_sad_epu8(load16(row(p, s, -1)), _mm_setzero_si128()));
    if (left)
        for (int y = 0; y < 16; ++y) sum += row(p, s, y)[-1];
    const Zan32s dc = above && left ? (sum + 16) >> 5 : above || left ? (sum + 8) >> 4 : 128;
    fill_rows<16, 16>(p, s, _mm_set1_epi8(static_cast<char>(dc)));
    return 0;
}

// sum over i of w[i] * bytes[i] for 16 unsigned bytes and signed weights.
inline Zan32s weighted_sum16(__m128i bytes, __m128i weights) {
    return simd::hsum_epi32(_mm_madd_epi16(_mm_maddubs_epi16(bytes, weights), _mm_set1_epi16(1)));
}

// Plane: with the corner as sample -1, H is the sum of (i - 7) * above[i]
// over i = -1..15 and V the same down the left column.
Zan32s pred16_plane_sse2(Zan8u* p, Zan32s s, Zan32s avail) {
    if ((avail & (kAbove | kLeft | kCorner)) != (kAbove | kLeft | kCorner)) return 1;
    const __m128i w = _mm_setr_epi8(-8, -7, -6, -5, -4, -3, -2, -1, 0, 1, 2, 3, 4, 5, 6, 7);
    const Zan8u* top = row(p, s, -1);
    const Zan32s H = weighted_sum16(load16(top - 1), w) + 8 * top[15];
    // The left column is read a byte at a time; its weighted sum is formed as
    // it comes, which avoids a 16-byte load of freshly stored bytes.
    Zan32s V = -8 * top[-1];
    for (int y = 0; y < 16; ++y) V += (y - 7) * row(p, s, y)[-1];
    const Zan32s left15 = row(p, s, 15)[-1];
    const Zan32s a = 16 * (left15 + top[15]), b = (5 * H + 32) >> 6, c = (5 * V + 32) >> 6;
    // lanes x = 0..7 and 8..15 of a + b * (x - 7) + c * (y - 7) + 16, in 16 bits
    const __m128i bx = _mm_mullo_epi16(_mm_set1_epi16(static_cast<Zan16s>(b)), _mm_setr_epi16(-7, -6, -5, -4, -3, -2, -1, 0));
    __m128i lo = _mm_add_epi16(bx, _mm_set1_epi16(static_cast<Zan16s>(a - 7 * c + 16)));
    __m128i hi = _mm_add_epi16(lo, _mm_set1_epi16(static_cast<Zan16s>(8 * b)));
    const __m128i dc = _mm_set1_epi16(static_cast<Zan16s>(c));
    for (int y = 0; y < 16; ++y) {
        store16(row(p, s, y), _mm_packus_epi16(_mm_srai_epi16(lo, 5), _mm_srai_epi16(hi, 5)));
        lo = _mm_add_epi16(lo, dc);
        hi = _mm_add_epi16(hi, dc);
    }
    return 0;
}

// --- chroma 8x8, planar

// The four quadrant DCs of one component from its four edge sums.
struct QuadDc {
    Zan32s tl, tr, bl, br;
};
inline QuadDc quad_dc(bool above, bool left, Zan32s a0, Zan32s a1, Zan32s l0, Zan32s l1) {
    QuadDc q;
    if (above && left) {
        q.tl = (a0 + l0 + 4) >> 3;
        q.br = (a1 + l1 + 4) >> 3;
        q.tr = (a1 + 2) >> 2;
        q.bl = (l1 + 2) >> 2;
    } else if (above) {
        q.tl = q.bl = (a0 + 2) >> 2;
        q.tr = q.br = (a1 + 2) >> 2;
    } else if (left) {
        q.tl = q.tr = (l0 + 2) >> 2;
        q.bl = q.br = (l1 + 2) >> 2;
    } else {
        q.tl = q.tr = q.bl = q.br = 128;
    }
    return q;
}

// Sums of bytes 0..3 and 4..7 of an 8-byte row, in lanes 0 and 2.
inline __m128i half_sums8(__m128i v8) { return _mm_sad_epu8(_mm_unpacklo_epi32(v8, _mm_setzero_si128()), _mm_setzero_si128()); }

template <int R>
Zan32s chroma_dc_split_sse2(Zan8u* p, Zan32s s, Zan32s availTop, Zan32s availBottom) {
    const bool above = availTop & kAbove, leftTop = availTop & kLeft, leftBottom = availBottom & kLeft;
    Zan32s a0 = 0, a1 = 0;
    if (above) {
        const __m128i sums = half_sums8(load8(row(p, s, -1)));
        a0 = _mm_cvtsi128_si32(sums);
        a1 = _mm_cvtsi128_si32(_mm_unpackhi_epi64(sums, sums));
    }
    // Left sums of the 4-row bands; the first band is the first row of blocks,
    // the others lie off the top edge.
    Zan32s l[R / 4] = {};
    for (int band = 0; band < R / 4; ++band)
        if (band < R / 8 ? leftTop : leftBottom)
            for (int y = 4 * band; y < 4 * band + 4; ++y) l[band] += row(p, s, y)[-1];
    for (int band = 0; band < R / 4; ++band) {
        const bool left = band < R / 8 ? leftTop : leftBottom;
        const QuadDc q = quad_dc(above, left, a0, a1, l[band], l[band]);
        // band 0 holds the first blocks (tl, tr); later bands follow the rule of the lower blocks (bl, br)
        const Zan32s dl = band == 0 ? q.tl : q.bl, dr = band == 0 ? q.tr : q.br;
        fill_rows<8, 4>(row(p, s, 4 * band), s,
                        _mm_unpacklo_epi32(_mm_set1_epi8(static_cast<char>(dl)), _mm_set1_epi8(static_cast<char>(dr))));
    }
    return 0;
}

template <int R>
Zan32s chroma_dc_sse2(Zan8u* p, Zan32s s, Zan32s avail) { return chroma_dc_split_sse2<R>(p, s, avail, avail); }

template <int R>
Zan32s chroma_vertical_sse2(Zan8u* p, Zan32s s, Zan32s avail) {
    if (!(avail & kAbove)) return 1;
    fill_rows<8, R>(p, s, load8(row(p, s, -1)));
    return 0;
}

template <int R>
Zan32s chroma_horizontal_sse2(Zan8u* p, Zan32s s, Zan32s avail) {
    if (!(avail & kLeft)) return 1;
    Zan64u l[R];
    for (int y = 0; y < R; ++y) l[y] = row(p, s, y)[-1];
    for (int y = 0; y < R; ++y) {
        const Zan64u v = l[y] * 0x0101010101010101ull;
        std::memcpy(row(p, s, y), &v, 8);
    }
    return 0;
}

// Plane: with the corner as sample -1, H is the sum of (i - 3) * above[i]
// over i = -1..7, V the same down the left column.
// With 16 rows (4:2:2) the vertical sum runs over i = -1..15 with weight
// i - 7, c = (5 * V + 32) >> 6 and the rows count from y - 7.
template <int R>
Zan32s chroma_plane_ssse3(Zan8u* p, Zan32s s, Zan32s avail) {
    if ((avail & (kAbove | kLeft | kCorner)) != (kAbove | kLeft | kCorner)) return 1;
    constexpr int yc = R / 2 - 1;
    const Zan8u* top = row(p, s, -1);
    const __m128i w = _mm_setr_epi8(-4, -3, -2, -1, 0, 1, 2, 3, 0, 0, 0, 0, 0, 0, 0, 0);
    const Zan32s H = simd::hsum_epi32(_mm_madd_epi16(_mm_maddubs_epi16(load8(top - 1), w), _mm_set1_epi16(1))) + 4 * top[7];
    Zan32s V = -(yc + 1) * top[-1];
    for (int y = 0; y < R; ++y) V += (y - yc) * row(p, s, y)[-1];
    const Zan32s leftLast = row(p, s, R - 1)[-1];
    const Zan32s a = 16 * (leftLast + top[7]), b = (17 * H + 16) >> 5;
    const Zan32s c = R == 8 ? (17 * V + 16) >> 5 : (5 * V + 32) >> 6;
    __m128i v = _mm_add_epi16(_mm_mullo_epi16(_mm_set1_epi16(static_cast<Zan16s>(b)), _mm_setr_epi16(-3, -2, -1, 0, 1, 2, 3, 4)),
                              _mm_set1_epi16(static_cast<Zan16s>(a - yc * c + 16)));
    const __m128i dc = _mm_set1_epi16(static_cast<Zan16s>(c));
    for (int y = 0; y < R; y += 2) {
        const __m128i v1 = _mm_add_epi16(v, dc);
        const __m128i two = _mm_packus_epi16(_mm_srai_epi16(v, 5), _mm_srai_epi16(v1, 5));
        store8(row(p, s, y), two);
        store8(row(p, s, y + 1), _mm_unpackhi_epi64(two, two));
        v = _mm_add_epi16(v1, dc);
    }
    return 0;
}

// --- chroma 8x8, interleaved: a row is 8 pairs U V, 16 bytes

Zan32s chroma_vertical_nv12_ssse3(Zan8u* p, Zan32s s, Zan32s avail) {
    if (!(avail & kAbove)) return 1;
    fill_rows<16, 8>(p, s, load16(row(p, s, -1)));
    return 0;
}

Zan32s chroma_horizontal_nv12_ssse3(Zan8u* p, Zan32s s, Zan32s avail) {
    if (!(avail & kLeft)) return 1;
    Zan32s pair[8];
    for (int y = 0; y < 8; ++y) {
        Zan16u v;
        std::memcpy(&v, row(p, s, y) - 2, 2);
        pair[y] = v;
    }
    const __m128i spread = _mm_setr_epi8(0, 1, 0, 1, 0, 1, 0, 1, 0, 1, 0, 1, 0, 1, 0, 1);
    for (int y = 0; y < 8; ++y) store16(row(p, s, y), _mm_shuffle_epi8(_mm_cvtsi32_si128(pair[y]), spread));
    return 0;
}

Zan32s chroma_dc_split_nv12_ssse3(Zan8u* p, Zan32s s, Zan32s availTop, Zan32s availBottom) {
    const bool above = availTop & kAbove, leftTop = availTop & kLeft, leftBottom = availBottom & kLeft;
    Zan32s a[2][2] = {}, l[2][2] = {};  // [component][half]
    if (above) {
        // U samples 0..3 | U 4..7 in one register, V likewise, then two psadbw
        const __m128i split = _mm_setr_epi8(0, 2, 4, 6, -1, -1, -1, -1, 8, 10, 12, 14, -1, -1, -1, -1);
        const __m128i t = load16(row(p, s, -1));
        const __m128i zero = _mm_setzero_si128();
        const __m128i su = _mm_sad_epu8(_mm_shuffle_epi8(t, split), zero);
        const __m128i sv = _mm_sad_epu8(_mm_shuffle_epi8(_mm_srli_si128(t, 1), split), zero);
        a[0][0] = _mm_cvtsi128_si32(su);
        a[0][1] = _mm_cvtsi128_si32(_mm_unpackhi_epi64(su, su));
        a[1][0] = _mm_cvtsi128_si32(sv);
        a[1][1] = _mm_cvtsi128_si32(_mm_unpackhi_epi64(sv, sv));
    }
    for (int y = 0; y < 8; ++y)
        if (y < 4 ? leftTop : leftBottom) {
            const Zan8u* r = row(p, s, y);
            l[0][y >> 2] += r[-2];
            l[1][y >> 2] += r[-1];
        }
    const QuadDc u = quad_dc(above, leftTop, a[0][0], a[0][1], l[0][0], l[0][1]);
    const QuadDc v = quad_dc(above, leftTop, a[1][0], a[1][1], l[1][0], l[1][1]);
    const QuadDc ub = quad_dc(above, leftBottom, a[0][0], a[0][1], l[0][0], l[0][1]);
    const QuadDc vb = quad_dc(above, leftBottom, a[1][0], a[1][1], l[1][0], l[1][1]);
    auto pairs = [](Zan32s u0, Zan32s v0, Zan32s u1, Zan32s v1) {
        const __m128i p0 = _mm_set1_epi16(static_cast<Zan16s>(u0 | v0 << 8));
        const __m128i p1 = _mm_set1_epi16(static_cast<Zan16s>(u1 | v1 << 8));
        return _mm_unpacklo_epi64(p0, p1);
    };
    fill_rows<16, 4>(p, s, pairs(u.tl, v.tl, u.tr, v.tr));
    fill_rows<16, 4>(row(p, s, 4), s, pairs(ub.bl, vb.bl, ub.br, vb.br));
    return 0;
}

Zan32s chroma_dc_nv12_ssse3(Zan8u* p, Zan32s s, Zan32s avail) { return chroma_dc_split_nv12_ssse3(p, s, avail, avail); }

Zan32s chroma_plane_nv12_ssse3(Zan8u* p, Zan32s s, Zan32s avail) {
    if ((avail & (kAbove | kLeft | kCorner)) != (kAbove | kLeft | kCorner)) return 1;
    const Zan8u* top = row(p, s, -1);
    // top[-1..6] of U and of V: 16 bytes from the U corner, U V alternating
    const __m128i t = load16(top - 2);
    const Zan8u* r7 = row(p, s, 7);
    const __m128i w = _mm_setr_epi8(-4, 0, -3, 0, -2, 0, -1, 0, 0, 0, 1, 0, 2, 0, 3, 0);
    auto wsum = [&](__m128i bytes) {  // the weighted sum of the even bytes
        return simd::hsum_epi32(_mm_madd_epi16(_mm_maddubs_epi16(bytes, w), _mm_set1_epi16(1)));
    };
    const Zan32s Hu = wsum(t) + 4 * top[14], Hv = wsum(_mm_srli_si128(t, 1)) + 4 * top[15];
    // The left pairs (U, V) of rows 0..7, one 16-bit insert each, weighted by y - 3.
    __m128i lp = _mm_setzero_si128();
    auto pair_at = [&](int y) {
        Zan16u v;
        std::memcpy(&v, row(p, s, y) - 2, 2);
        return static_cast<int>(v);
    };
    lp = _mm_insert_epi16(lp, pair_at(0), 0);
    lp = _mm_insert_epi16(lp, pair_at(1), 1);
    lp = _mm_insert_epi16(lp, pair_at(2), 2);
    lp = _mm_insert_epi16(lp, pair_at(3), 3);
    lp = _mm_insert_epi16(lp, pair_at(4), 4);
    lp = _mm_insert_epi16(lp, pair_at(5), 5);
    lp = _mm_insert_epi16(lp, pair_at(6), 6);
    lp = _mm_insert_epi16(lp, pair_at(7), 7);
    const __m128i wl = _mm_setr_epi8(-3, 0, -2, 0, -1, 0, 0, 0, 1, 0, 2, 0, 3, 0, 4, 0);
    const Zan32s Vu = -4 * top[-2] + simd::hsum_epi32(_mm_madd_epi16(_mm_maddubs_epi16(lp, wl), _mm_set1_epi16(1)));
    const Zan32s Vv = -4 * top[-1] +
                      simd::hsum_epi32(_mm_madd_epi16(_mm_maddubs_epi16(_mm_srli_si128(lp, 1), wl), _mm_set1_epi16(1)));
    const Zan32s au = 16 * (r7[-2] + top[14]), av = 16 * (r7[-1] + top[15]);
    const Zan32s bu = (17 * Hu + 16) >> 5, bv = (17 * Hv + 16) >> 5;
    const Zan32s cu = (17 * Vu + 16) >> 5, cv = (17 * Vv + 16) >> 5;
    // U in the even 16-bit lanes, V in the odd ones
    auto lanes = [](Zan32s u, Zan32s v) {
        return _mm_set1_epi32(static_cast<Zan32s>((static_cast<Zan32u>(u) & 0xffff) | static_cast<Zan32u>(v) << 16));
    };
    const __m128i b = lanes(bu, bv);
    const __m128i base = lanes(au - 3 * cu + 16, av - 3 * cv + 16);
    const __m128i dc = lanes(cu, cv);
    // x - 3 for pairs 0..3 and 4..7
    __m128i lo = _mm_add_epi16(base, _mm_mullo_epi16(b, _mm_setr_epi16(-3, -3, -2, -2, -1, -1, 0, 0)));
    __m128i hi = _mm_add_epi16(base, _mm_mullo_epi16(b, _mm_setr_epi16(1, 1, 2, 2, 3, 3, 4, 4)));
    for (int y = 0; y < 8; ++y) {
        store16(row(p, s, y), _mm_packus_epi16(_mm_srai_epi16(lo, 5), _mm_srai_epi16(hi, 5)));
        lo = _mm_add_epi16(lo, dc);
        hi = _mm_add_epi16(hi, dc);
    }
    return 0;
}

// --- 8x8 luma edge preparation

// The raw samples, then the [1 2 1] smoothing of all of them at once on the
// edge vector E laid out as for the directional 8x8 modes below (its
// repeated ends give the standard's end rules), then the cases the vector
// form does not cover: an absent corner (the first samples use 3 * p[0] +
// p[1]), an absent edge (kept unfiltered), a corner beside one edge or none.
void filter8x8_ssse3(Edge8x8* e, const Zan8u* p, Zan32s s, Zan32s avail) {
    const bool above = avail & kAbove, left = avail & kLeft, corner = avail & kCorner,
               aboveRight = avail & kAboveRight;
    const Zan8u* top = row(p, s, -1);
    const Zan64u t0 = above ? load64(top) : 0x8080808080808080ull;
    const Zan64u t1 = aboveRight ? load64(top + 8) : (t0 >> 56) * 0x0101010101010101ull;
    Zan64u lw = 0x8080808080808080ull;
    if (left) {
        lw = 0;
        for (int y = 7; y >= 0; --y) lw = lw << 8 | row(p, s, y)[-1];
    }
    const Zan32s c = corner ? top[-1] : 128;
    Edge8x8::Samples& r = e->raw;
    std::memcpy(r.above, &t0, 8);
    std::memcpy(r.above + 8, &t1, 8);
    std::memcpy(r.left, &lw, 8);
    r.corner = static_cast<Zan8u>(c);
    e->avail = avail;

    const __m128i l = _mm_cvtsi64_si128(static_cast<long long>(lw));
    const __m128i t = _mm_unpacklo_epi64(_mm_cvtsi64_si128(static_cast<long long>(t0)),
                                         _mm_cvtsi64_si128(static_cast<long long>(t1)));
    const __m128i e0 = _mm_or_si128(
        _mm_or_si128(_mm_shuffle_epi8(l, _mm_setr_epi8(7, 7, 6, 5, 4, 3, 2, 1, 0, -1, -1, -1, -1, -1, -1, -1)),
                     _mm_slli_si128(_mm_cvtsi32_si128(c), 9)),
        _mm_slli_si128(t, 10));
    const __m128i e1 = _mm_shuffle_epi8(t, _mm_setr_epi8(6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 15, 15, 15, 15, 15, 15));
    const __m128i f0 = avg3_u8(_mm_slli_si128(e0, 1), e0, _mm_alignr_epi8(e1, e0, 1));
    const __m128i f1 = avg3_u8(_mm_alignr_epi8(e1, e0, 15), e1, _mm_srli_si128(e1, 1));

    Edge8x8::Samples& f = e->filtered;
    if (above) store16(f.above, _mm_alignr_epi8(f1, f0, 10));
    else std::memcpy(f.above, r.above, 16);
    if (left) store8(f.left, _mm_shuffle_epi8(f0, _mm_setr_epi8(8, 7, 6, 5, 4, 3, 2, 1, -1, -1, -1, -1, -1, -1, -1, -1)));
    else std::memcpy(f.left, r.left, 8);
    f.corner = r.corner;
    if (corner) {
        if (above && left) f.corner = static_cast<Zan8u>(_mm_extract_epi16(f0, 4) >> 8);  // byte 9
        else if (above || left) f.corner = static_cast<Zan8u>((3 * r.corner + (above ? r.above[0] : r.left[0]) + 2) >> 2);
    } else {
        if (above) f.above[0] = static_cast<Zan8u>((3 * r.above[0] + r.above[1] + 2) >> 2);
        if (left) f.left[0] = static_cast<Zan8u>((3 * r.left[0] + r.left[1] + 2) >> 2);
    }
}

// --- 8x8 luma, from the filtered samples of an edge record

void pred8x8_vertical_sse2(const Edge8x8* e, Zan8u* p, Zan32s s) { fill_rows<8, 8>(p, s, load8(e->filtered.above)); }

void pred8x8_horizontal_ssse3(const Edge8x8* e, Zan8u* p, Zan32s s) {
    const __m128i l = load8(e->filtered.left);
    for (int y = 0; y < 8; ++y) store8(row(p, s, y), _mm_shuffle_epi8(l, _mm_set1_epi8(static_cast<char>(y))));
}

void pred8x8_dc_sse2(const Edge8x8* e, Zan8u* p, Zan32s s) {
    const bool above = e->avail & kAbove, left = e->avail & kLeft;
    const __m128i sums = _mm_sad_epu8(_mm_unpacklo_epi64(load8(e->filtered.above), load8(e->filtered.left)),
                                      _mm_setzero_si128());
    const Zan32s sa = _mm_cvtsi128_si32(sums), sl = _mm_cvtsi128_si32(_mm_unpackhi_epi64(sums, sums));
    const Zan32s dc = above && left ? (sa + sl + 8) >> 4 : above ? (sa + 4) >> 3 : left ? (sl + 4) >> 3 : 128;
    fill_rows<8, 8>(p, s, _mm_set1_epi8(static_cast<char>(dc)));
}

// The directional 8x8 modes run as the 4x4 ones do, on a 32-byte edge
//   E = l7 l7 l6 l5 l4 l3 l2 l1 l0 c t0 .. t15 t15 t15 t15 t15 t15 t15
// held in two registers, with F its three-tap smoothing and A its two-tap
// average.  Each pair of rows takes its 16 samples from a 16-byte window of F
// and one of A (the windows start where the pair's smallest index lies).
struct Shuffle8x8 {
    alignas(16) Zan8s f[4][16];
    alignas(16) Zan8s a[4][16];
    int fStart[4], aStart[4];
    bool useA[4];
};

// Index of sample (x, y) in F (isA false) or A (isA true).
constexpr int index8x8(int mode, int x, int y, bool& isA) {
    isA = false;
    if (mode == kDiagDownLeft) return 11 + x + y;
    if (mode == kDiagDownRight) return 9 + x - y;
    if (mode == kVerticalRight) {
        const int z = 2 * x - y, j = x - (y >> 1);
        if (z >= 0) return (isA = z % 2 == 0), 9 + j;
        return z == -1 ? 9 : 10 - y + 2 * x;
    }
    if (mode == kHorizontalDown) {
        const int z = 2 * y - x, j = y - (x >> 1);
        if (z >= 0) return z % 2 == 0 ? (isA = true, 8 - j) : 9 - j;
        return z == -1 ? 9 : 8 + x - 2 * y;
    }
    if (mode == kVerticalLeft) {
        const int j = x + (y >> 1);
        return y % 2 == 0 ? (isA = true, 10 + j) : 11 + j;
    }
    const int z = x + 2 * y, j = y + (x >> 1);  // kHorizontalUp
    if (z < 13) return z % 2 == 0 ? (isA = true, 7 - j) : 7 - j;
    if (z == 13) return 1;
    return isA = true, 0;
}

constexpr Shuffle8x8 shuffle8x8(int mode) {
    Shuffle8x8 m{};
    for (int r = 0; r < 4; ++r) {
        int fMin = 32, aMin = 32;
        for (int i = 0; i < 16; ++i) {
            bool isA = false;
            const int k = index8x8(mode, i % 8, 2 * r + i / 8, isA);
            if (isA) aMin = k < aMin ? k : aMin;
            else fMin = k < fMin ? k : fMin;
        }
        m.fStart[r] = fMin > 16 ? 16 : fMin;
        m.aStart[r] = aMin > 16 ? 16 : aMin;
        m.useA[r] = aMin < 32;
        for (int i = 0; i < 16; ++i) {
            bool isA = false;
            const int k = index8x8(mode, i % 8, 2 * r + i / 8, isA);
            m.f[r][i] = static_cast<Zan8s>(isA ? -128 : k - m.fStart[r]);
            m.a[r][i] = static_cast<Zan8s>(isA ? k - m.aStart[r] : -128);
        }
    }
    return m;
}

template <int Mode>
inline constexpr Shuffle8x8 kShuffle8x8 = shuffle8x8(Mode);

template <int Mode, int R>
inline void pred8x8_row_pair(__m128i f0, __m128i f1, __m128i a0, __m128i a1, Zan8u* p, Zan32s s) {
    constexpr int fStart = kShuffle8x8<Mode>.fStart[R], aStart = kShuffle8x8<Mode>.aStart[R];
    static_assert(fStart >= 0 && aStart >= 0 && fStart <= 16 && aStart <= 16);
    __m128i out = _mm_shuffle_epi8(_mm_alignr_epi8(f1, f0, fStart), simd::load16a(kShuffle8x8<Mode>.f[R]));
    if constexpr (kShuffle8x8<Mode>.useA[R])
        out = _mm_or_si128(out, _mm_shuffle_epi8(_mm_alignr_epi8(a1, a0, aStart), simd::load16a(kShuffle8x8<Mode>.a[R])));
    store8(row(p, s, 2 * R), out);
    store8(row(p, s, 2 * R + 1), _mm_unpackhi_epi64(out, out));
}

template <int Mode>
void pred8x8_diag_ssse3(const Edge8x8* e, Zan8u* p, Zan32s s) {
    const Edge8x8::Samples& f = e->filtered;
    const __m128i l = load8(f.left);        // l0 .. l7
    const __m128i ct = load16(&f.corner);   // c t0 .. t14
    const __m128i e0 = _mm_or_si128(_mm_shuffle_epi8(l, _mm_setr_epi8(7, 7, 6, 5, 4, 3, 2, 1, 0, -1, -1, -1, -1, -1, -1, -1)),
                                    _mm_shuffle_epi8(ct, _mm_setr_epi8(-1, -1, -1, -1, -1, -1, -1, -1, -1, 0, 1, 2, 3, 4, 5, 6)));
    const __m128i e1 = _mm_shuffle_epi8(load16(f.above), _mm_setr_epi8(6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 15, 15, 15, 15, 15, 15));
    const __m128i next0 = _mm_alignr_epi8(e1, e0, 1), next1 = _mm_srli_si128(e1, 1);
    const __m128i f0 = avg3_u8(_mm_slli_si128(e0, 1), e0, next0);
    const __m128i f1 = avg3_u8(_mm_alignr_epi8(e1, e0, 15), e1, next1);
    const __m128i a0 = _mm_avg_epu8(e0, next0), a1 = _mm_avg_epu8(e1, next1);
    pred8x8_row_pair<Mode, 0>(f0, f1, a0, a1, p, s);
    pred8x8_row_pair<Mode, 1>(f0, f1, a0, a1, p, s);
    pred8x8_row_pair<Mode, 2>(f0, f1, a0, a1, p, s);
    pred8x8_row_pair<Mode, 3>(f0, f1, a0, a1, p, s);
}

// ================================================================= tables

constexpr Pred4x4Fn kPred4x4[9] = {
    pred4x4_vertical_sse2,          pred4x4_horizontal_sse2,           pred4x4_dc_sse2,
    pred4x4_diag_ssse3<kDiagDownLeft>, pred4x4_diag_ssse3<kDiagDownRight>, pred4x4_diag_ssse3<kVerticalRight>,
    pred4x4_diag_ssse3<kHorizontalDown>, pred4x4_diag_ssse3<kVerticalLeft>, pred4x4_diag_ssse3<kHorizontalUp>,
};
constexpr PredBlockFn kPred16[4] = {pred16_vertical_sse2, pred16_horizontal_ssse3, pred16_dc_sse2, pred16_plane_sse2};
constexpr PredBlockFn kChroma[4] = {chroma_dc_sse2<8>, chroma_horizontal_sse2<8>, chroma_vertical_sse2<8>,
                                    chroma_plane_ssse3<8>};
constexpr PredBlockFn kChroma422[4] = {chroma_dc_sse2<16>, chroma_horizontal_sse2<16>, chroma_vertical_sse2<16>,
                                       chroma_plane_ssse3<16>};
constexpr PredBlockFn kChromaNv12[4] = {chroma_dc_nv12_ssse3, chroma_horizontal_nv12_ssse3, chroma_vertical_nv12_ssse3,
                                        chroma_plane_nv12_ssse3};
constexpr ChromaDcSplitFn kChromaDcSplit[3] = {chroma_dc_split_sse2<8>, chroma_dc_split_nv12_ssse3,
                                               chroma_dc_split_sse2<16>};
constexpr Pred8x8Fn kPred8x8[9] = {
    pred8x8_vertical_sse2,
    pred8x8_horizontal_ssse3,
    pred8x8_dc_sse2,
    pred8x8_diag_ssse3<kDiagDownLeft>,
    pred8x8_diag_ssse3<kDiagDownRight>,
    pred8x8_diag_ssse3<kVerticalRight>,
    pred8x8_diag_ssse3<kHorizontalDown>,
    pred8x8_diag_ssse3<kVerticalLeft>,
    pred8x8_diag_ssse3<kHorizontalUp>,
};

// ============================================================= catalogue

constexpr KernelPair<Pred4x4Fn> kPred4x4Pairs[] = {
    {"pred4x4_vertical", pred4x4_rule<0>, kPred4x4[0], 4, 4, 0},
    {"pred4x4_horizontal", pred4x4_rule<1>, kPred4x4[1], 4, 4, 1},
    {"pred4x4_dc", pred4x4_rule<2>, kPred4x4[2], 4, 4, 2},
    {"pred4x4_diag_down_left", pred4x4_rule<3>, kPred4x4[3], 4, 4, 3},
    {"pred4x4_diag_down_right", pred4x4_rule<4>, kPred4x4[4], 4, 4, 4},
    {"pred4x4_vertical_right", pred4x4_rule<5>, kPred4x4[5], 4, 4, 5},
    {"pred4x4_horizontal_down", pred4x4_rule<6>, kPred4x4[6], 4, 4, 6},
    {"pred4x4_vertical_left", pred4x4_rule<7>, kPred4x4[7], 4, 4, 7},
    {"pred4x4_horizontal_up", pred4x4_rule<8>, kPred4x4[8], 4, 4, 8},
};
constexpr KernelPair<PredBlockFn> kPred16Pairs[] = {
    {"pred16x16_vertical", pred16_rule<0>, kPred16[0], 16, 16, 0},
    {"pred16x16_horizontal", pred16_rule<1>, kPred16[1], 16, 16, 1},
    {"pred16x16_dc", pred16_rule<2>, kPred16[2], 16, 16, 2},
    {"pred16x16_plane", pred16_rule<3>, kPred16[3], 16, 16, 3},
};
constexpr KernelPair<PredBlockFn> kChromaPairs[] = {
    {"chroma8x8_dc", chroma_dc_rule_same<1>, kChroma[0], 8, 8, 0},
    {"chroma8x8_horizontal", chroma_rule<1, 1>, kChroma[1], 8, 8, 1},
    {"chroma8x8_vertical", chroma_rule<2, 1>, kChroma[2], 8, 8, 2},
    {"chroma8x8_plane", chroma_rule<3, 1>, kChroma[3], 8, 8, 3},
    {"chroma8x8_nv12_dc", chroma_dc_rule_same<2>, kChromaNv12[0], 16, 8, 16},
    {"chroma8x8_nv12_horizontal", chroma_rule<1, 2>, kChromaNv12[1], 16, 8, 17},
    {"chroma8x8_nv12_vertical", chroma_rule<2, 2>, kChromaNv12[2], 16, 8, 18},
    {"chroma8x8_nv12_plane", chroma_rule<3, 2>, kChromaNv12[3], 16, 8, 19},
    {"chroma8x16_dc", chroma_dc_rule_same<1, 16>, kChroma422[0], 8, 16, 32},
    {"chroma8x16_horizontal", chroma_rule<1, 1, 16>, kChroma422[1], 8, 16, 33},
    {"chroma8x16_vertical", chroma_rule<2, 1, 16>, kChroma422[2], 8, 16, 34},
    {"chroma8x16_plane", chroma_rule<3, 1, 16>, kChroma422[3], 8, 16, 35},
};

constexpr KernelPair<ChromaDcSplitFn> kChromaDcSplitPairs[] = {
    {"chroma8x8_dc_split", chroma_dc_rule<1>, kChromaDcSplit[0], 8, 8, 0},
    {"chroma8x8_nv12_dc_split", chroma_dc_rule<2>, kChromaDcSplit[1], 16, 8, 16},
    {"chroma8x16_dc_split", chroma_dc_rule<1, 16>, kChromaDcSplit[2], 8, 16, 32},
};
constexpr KernelPair<EdgeFilterFn> kFilter8x8Pairs[] = {
    {"filter8x8", filter8x8_rule, filter8x8_ssse3, 16, 8, 0},
};
constexpr KernelPair<Pred8x8Fn> kPred8x8Pairs[] = {
    {"pred8x8_vertical", pred8x8_rule<0>, kPred8x8[0], 8, 8, 0},
    {"pred8x8_horizontal", pred8x8_rule<1>, kPred8x8[1], 8, 8, 1},
    {"pred8x8_dc", pred8x8_rule<2>, kPred8x8[2], 8, 8, 2},
    {"pred8x8_diag_down_left", pred8x8_rule<3>, kPred8x8[3], 8, 8, 3},
    {"pred8x8_diag_down_right", pred8x8_rule<4>, kPred8x8[4], 8, 8, 4},
    {"pred8x8_vertical_right", pred8x8_rule<5>, kPred8x8[5], 8, 8, 5},
    {"pred8x8_horizontal_down", pred8x8_rule<6>, kPred8x8[6], 8, 8, 6},
    {"pred8x8_vertical_left", pred8x8_rule<7>, kPred8x8[7], 8, 8, 7},
    {"pred8x8_horizontal_up", pred8x8_rule<8>, kPred8x8[8], 8, 8, 8},
};

}  // namespace

const Pred4x4Fn pred4x4[9] = {kPred4x4[0], kPred4x4[1], kPred4x4[2], kPred4x4[3], kPred4x4[4],
                              kPred4x4[5], kPred4x4[6], kPred4x4[7], kPred4x4[8]};
const PredBlockFn pred16x16[4] = {kPred16[0], kPred16[1], kPred16[2], kPred16[3]};
const PredBlockFn chroma[4] = {kChroma[0], kChroma[1], kChroma[2], kChroma[3]};
const PredBlockFn chroma_nv12[4] = {kChromaNv12[0], kChromaNv12[1], kChromaNv12[2], kChromaNv12[3]};
const EdgeFilterFn filter_edges_8x8 = filter8x8_ssse3;
const Pred8x8Fn pred8x8[9] = {kPred8x8[0], kPred8x8[1], kPred8x8[2], kPred8x8[3], kPred8x8[4],
                              kPred8x8[5], kPred8x8[6], kPred8x8[7], kPred8x8[8]};
const ChromaDcSplitFn chroma_dc_split[3] = {kChromaDcSplit[0], kChromaDcSplit[1], kChromaDcSplit[2]};
const PredBlockFn chroma422[4] = {kChroma422[0], kChroma422[1], kChroma422[2], kChroma422[3]};
const Kernels kernels = {kPred4x4Pairs, kPred16Pairs, kChromaPairs, kChromaDcSplitPairs, kFilter8x8Pairs, kPred8x8Pairs};

}  // namespace zan::ZAN_PATH::h264intra

// =============================================================== exports

namespace zan::ZAN_PATH {

ZanStatus zaniPredictIntra_4x4_H264_8u_C1IR(Zan8u* pSrcDst, Zan32s srcDstStep, Zan32s mode, Zan32s availability) {
    if (!pSrcDst) return zanStsNullPtr;
    if (static_cast<Zan32u>(mode) > 8) return zanStsOutOfRange;
    return h264intra::kPred4x4[mode](pSrcDst, srcDstStep, availability & h264intra::kAvailMask) ? zanStsEdgeSubstituted
                                                                                                : zanStsOk;
}

ZanStatus zaniPredictIntra_16x16_H264_8u_C1IR(Zan8u* pSrcDst, Zan32s srcDstStep, Zan32s mode, Zan32s availability) {
    if (!pSrcDst) return zanStsNullPtr;
    if (static_cast<Zan32u>(mode) > 3) return zanStsOutOfRange;
    return h264intra::kPred16[mode](pSrcDst, srcDstStep, availability) ? zanStsEdgeUnavailable : zanStsOk;
}

ZanStatus zaniPredictIntraChroma8x8_H264_8u_C1IR(Zan8u* pSrcDst, Zan32s srcDstStep, Zan32s mode,
                                                 Zan32s availability) {
    if (!pSrcDst) return zanStsNullPtr;
    if (srcDstStep < 8) return zanStsStepBad;
    if (static_cast<Zan32u>(mode) > 3) return zanStsOutOfRange;
    return h264intra::kChroma[mode](pSrcDst, srcDstStep, availability) ? zanStsEdgeUnavailable : zanStsOk;
}

}  // namespace zan::ZAN_PATH
