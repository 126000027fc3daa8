// VC-1 integer transforms of the four block shapes, forward and inverse.
//
// Inverse, for a W x H block D of coefficients:
//   E = sat16((D T_W + 4) >> 3)                      rows, W-point
//   R = sat16((T_H' E + C_H + 64) >> 7)              columns, H-point
// where C_8 adds 1 to the lower four output rows of the 8-point column pass
// and C_4 is zero.  Each pass is exact in 32 bits and saturates its result to
// the 16-bit range.  sizeNZ shortens the work: with both its width and height
// below 2 only the DC counts, and every output sample is
//   sat16((((x * t_W + 4) >> 3) * t_H + 64) >> 7),  t_8 = 12, t_4 = 17,
// computed without saturating the middle value; with a width of 2 or less,
// or 4 or less in the 8-wide forms, the columns beyond 2 or 4 are taken as
// zero.
//
// Forward, for a W x H block X of residuals:
//   e = sat16((X T_W' + 4) >> 3)                     rows
//   t = sat16((T_H e + 32) >> 6)                     columns
//   Y = (t * q + 2^14) >> 15                         q = forward_scale(W, H, k, l)
// which brings the coefficients to the scale that the inverse expects.
//
// The forward kernels hold a block as eight rows of eight 16-bit lanes (4-wide
// blocks use the low half, 4-high blocks the first four rows), transpose it,
// run a pass as pmaddwd on pairs of rows into 32-bit sums, pack with
// saturation, and transpose back for the other pass.  The inverse kernels
// never transpose 16-bit lanes: each row is shuffled into the 32-bit pairs
// that pmaddwd takes, 4x4 transposes of 32-bit lanes line the pairs up across
// rows, and the row pass leaves its packed results already in the pair layout
// of the column pass.  They use the even/odd symmetry of the basis functions
// to form two outputs from each pair of sums.
#include <algorithm>

#include "common/scalar.h"
#include "common/simd.h"
#include "frame/bodies.h"
#include "vc1/vc1xform.h"

namespace zan::ZAN_PATH::vc1xform {

using namespace zan::vc1xform;

namespace {

inline Zan32s sat16(Zan32s v) { return v < -32768 ? -32768 : v > 32767 ? 32767 : v; }

// Columns of the coefficient block that enter the inverse row pass.
template <int W>
inline int span_of(ZaniSize nz) {
    if (nz.width <= 2) return 2;
    if (W == 8 && nz.width <= 4) return 4;
    return W;
}

inline bool dc_only(ZaniSize nz) { return nz.width < 2 && nz.height < 2; }

template <int W, int H>
inline Zan32s dc_value(Zan32s x) {
    constexpr Zan32s tw = W == 8 ? 12 : 17, th = H == 8 ? 12 : 17;
    return sat16((((x * tw + 4) >> 3) * th + 64) >> 7);
}

// ============================================================ scalar rules

template <int W, int H>
void inv_rule(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s dstStep, ZaniSize nz) {
    using scalar::at;
    using scalar::put;
    if (dc_only(nz)) {
        const Zan16s v = static_cast<Zan16s>(dc_value<W, H>(at(pSrc, srcStep, 0, 0)));
        for (int i = 0; i < H; ++i)
            for (int j = 0; j < W; ++j) put(pDst, dstStep, j, i, v);
        return;
    }
    const int span = span_of<W>(nz);
    Zan32s d[H][W], e[H][W];
    for (int i = 0; i < H; ++i)
        for (int j = 0; j < W; ++j) d[i][j] = j < span ? at(pSrc, srcStep, j, i) : 0;
    for (int i = 0; i < H; ++i)
        for (int j = 0; j < W; ++j) {
            Zan32s s = 4;
            for (int k = 0; k < W; ++k) s += d[i][k] * basis(W, k, j);
            e[i][j] = sat16(s >> 3);
        }
    for (int i = 0; i < H; ++i)
        for (int j = 0; j < W; ++j) {
            Zan32s s = 64 + (H == 8 && i >= 4 ? 1 : 0);
            for (int k = 0; k < H; ++k) s += basis(H, k, i) * e[k][j];
            put(pDst, dstStep, j, i, static_cast<Zan16s>(sat16(s >> 7)));
        }
}

template <int W, int H>
void fwd_rule(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s dstStep) {
    using scalar::at;
    Zan32s x[H][W], e[H][W];
    for (int i = 0; i < H; ++i)
        for (int j = 0; j < W; ++j) x[i][j] = at(pSrc, srcStep, j, i);
    for (int i = 0; i < H; ++i)
        for (int l = 0; l < W; ++l) {
            Zan32s s = 4;
            for (int j = 0; j < W; ++j) s += x[i][j] * basis(W, l, j);
            e[i][l] = sat16(s >> 3);
        }
    for (int k = 0; k < H; ++k)
        for (int l = 0; l < W; ++l) {
            Zan32s s = 32;
            for (int i = 0; i < H; ++i) s += basis(H, k, i) * e[i][l];
            const Zan32s t = sat16(s >> 6);
            const Zan32s y = (t * forward_scale(W, H, k, l) + (1 << 14)) >> 15;
            scalar::put(pDst, dstStep, l, k, static_cast<Zan16s>(y));
        }
}

// ========================================================== vector kernels

// An 8x8 matrix of 16-bit factors for one pass: out[o] = sum_i c[o][i] in[i].
struct Mat {
    Zan16s c[8][8];
};
constexpr Mat make_mat(int n, bool transposed) {
    Mat m{};
    for (int o = 0; o < n; ++o)
        for (int i = 0; i < n; ++i) m.c[o][i] = static_cast<Zan16s>(transposed ? basis(n, i, o) : basis(n, o, i));
    return m;
}
constexpr Mat kFwd8 = make_mat(8, false), kFwd4 = make_mat(4, false);  // c[o][i] = T[o][i]
template <int N>
constexpr const Mat& fwd_mat() { return N == 8 ? kFwd8 : kFwd4; }

// Pair (c[o][2p], c[o][2p+1]) as the 32-bit lane pattern of pmaddwd.
constexpr Zan32s pair_of(const Mat& m, int o, int p) {
    return static_cast<Zan32s>(static_cast<Zan32u>(static_cast<Zan16u>(m.c[o][2 * p])) |
                               (static_cast<Zan32u>(static_cast<Zan16u>(m.c[o][2 * p + 1])) << 16));
}

// One pass over NIn input vectors (NIn even) giving NOut outputs:
// out[o] = sat16((sum_i M[o][i] in[i] + Rnd) >> Shift).  The forward passes.
template <const Mat& M, int NIn, int NOut, int Rnd, int Shift>
inline void pass(const __m128i* in, __m128i* out) {
    __m128i lo[4], hi[4];
#pragma GCC unroll 4
    for (int p = 0; p < NIn / 2; ++p) {
        lo[p] = _mm_unpacklo_epi16(in[2 * p], in[2 * p + 1]);
        hi[p] = _mm_unpackhi_epi16(in[2 * p], in[2 * p + 1]);
    }
#pragma GCC unroll 8
    for (int o = 0; o < NOut; ++o) {
        const __m128i r = _mm_set1_epi32(Rnd);
        __m128i a = r, b = r;
#pragma GCC unroll 4
        for (int p = 0; p < NIn / 2; ++p) {
            const __m128i c = _mm_set1_epi32(pair_of(M, o, p));
            a = _mm_add_epi32(a, _mm_madd_epi16(lo[p], c));
            b = _mm_add_epi32(b, _mm_madd_epi16(hi[p], c));
        }
        out[o] = _mm_packs_epi32(_mm_srai_epi32(a, Shift), _mm_srai_epi32(b, Shift));
    }
}

// Basis function k of both matrices is even for even k and odd for odd k:
// T[k][N-1-i] = (-1)^k T[k][i].
constexpr bool symmetric(int n) {
    for (int k = 0; k < n; ++k)
        for (int i = 0; i < n; ++i)
            if (basis(n, k, n - 1 - i) != (k % 2 ? -basis(n, k, i) : basis(n, k, i))) return false;
    return true;
}
static_assert(symmetric(8) && symmetric(4));

// 8x8 transpose of 16-bit lanes.
inline void transpose8(const __m128i* v, __m128i* t) { simd::transpose8x8_epi16(v, t); }

// The block's H rows into v[0..7] (rows beyond H zero, 4-wide rows in the
// low half), and back.
template <int W, int H>
inline void load_block(const Zan16s* p, Zan32s step, __m128i* v) {
    for (int i = 0; i < 8; ++i)
        v[i] = i >= H ? _mm_setzero_si128() : W == 8 ? simd::load16(simd::row(p, step, i)) : simd::load8(simd::row(p, step, i));
}
template <int W, int H>
inline void store_block(Zan16s* p, Zan32s step, const __m128i* v) {
    for (int i = 0; i < H; ++i) {
        if (W == 8)
            simd::store16(simd::row(p, step, i), v[i]);
        else
            simd::store8(simd::row(p, step, i), v[i]);
    }
}

// The 8x8 inverse without full transposes.  Each row is shuffled to the
// 32-bit pairs (d0,d4) (d2,d6) (d1,d3) (d5,d7), columns beyond the span
// zeroed by the same shuffle; a 4x4 transpose of 32-bit lanes over rows
// 0,4,2,6 and another over rows 1,3,5,7 then gives each pair across four
// rows, ready for pmaddwd.  The even part splits once more: with
// ee(o) = T0[o] x0 + T4[o] x4 and eo(o) = T2[o] x2 + T6[o] x6,
// ev(0), ev(3) = ee(0) +- eo(0) and ev(1), ev(2) = ee(1) +- eo(1).  The row
// pass leaves column j of E with its rows in the lane order 0 4 2 6 1 3 5 7,
// which is again the pair layout: two more 4x4 transposes of 32-bit lanes
// feed the column pass, whose results are whole output rows.
constexpr bool even_split_holds() {
    for (int o = 0; o < 2; ++o) {
        const int m = 3 - o;
        if (basis(8, 0, m) != basis(8, 0, o) || basis(8, 4, m) != basis(8, 4, o)) return false;
        if (basis(8, 2, m) != -basis(8, 2, o) || basis(8, 6, m) != -basis(8, 6, o)) return false;
    }
    return true;
}
static_assert(even_split_holds());

constexpr Zan32s pair8(int ka, int kb, int o) {
    return static_cast<Zan32s>(static_cast<Zan32u>(static_cast<Zan16u>(basis(8, ka, o))) |
                               (static_cast<Zan32u>(static_cast<Zan16u>(basis(8, kb, o))) << 16));
}

// 4x4 transpose of 32-bit lanes: out[m] holds lane m of a, b, c, d.
inline void transpose4x4_epi32(__m128i a, __m128i b, __m128i c, __m128i d, __m128i* out) {
    const __m128i t0 = _mm_unpacklo_epi32(a, b), t1 = _mm_unpackhi_epi32(a, b);
    const __m128i t2 = _mm_unpacklo_epi32(c, d), t3 = _mm_unpackhi_epi32(c, d);
    out[0] = _mm_unpacklo_epi64(t0, t2);
    out[1] = _mm_unpackhi_epi64(t0, t2);
    out[2] = _mm_unpacklo_epi64(t1, t3);
    out[3] = _mm_unpackhi_epi64(t1, t3);
}

// The even part of one 8-point pass over four lanes of 32-bit pairs
// v[0] = (x0,x4), v[1] = (x2,x6), v[2] = (x1,x3), v[3] = (x5,x7), the
// rounding included: ev[o] for outputs o and 7 - o.  Span 2 skips the pair
// (x2,x6), which is zero.
template <int Span, int Rnd>
inline void even8(const __m128i* v, __m128i* ev) {
    const __m128i rnd = _mm_set1_epi32(Rnd);
    const __m128i ee0 = _mm_add_epi32(_mm_madd_epi16(v[0], _mm_set1_epi32(pair8(0, 4, 0))), rnd);
    const __m128i ee1 = _mm_add_epi32(_mm_madd_epi16(v[0], _mm_set1_epi32(pair8(0, 4, 1))), rnd);
    if (Span > 2) {
        const __m128i eo0 = _mm_madd_epi16(v[1], _mm_set1_epi32(pair8(2, 6, 0)));
        const __m128i eo1 = _mm_madd_epi16(v[1], _mm_set1_epi32(pair8(2, 6, 1)));
        ev[0] = _mm_add_epi32(ee0, eo0);
        ev[3] = _mm_sub_epi32(ee0, eo0);
        ev[1] = _mm_add_epi32(ee1, eo1);
        ev[2] = _mm_sub_epi32(ee1, eo1);
    } else {
        ev[0] = ev[3] = ee0;
        ev[1] = ev[2] = ee1;
    }
}

// The odd part for output o; Span 4 or less skips the pair (x5,x7).
template <int Span>
inline __m128i odd8(const __m128i* v, int o) {
    __m128i od = _mm_madd_epi16(v[2], _mm_set1_epi32(pair8(1, 3, o)));
    if (Span > 4) od = _mm_add_epi32(od, _mm_madd_epi16(v[3], _mm_set1_epi32(pair8(5, 7, o))));
    return od;
}

// One 8-point pass over one group of four lanes, the 32-bit sums shifted:
// top[o] = (sum + Rnd) >> Shift for output o, bot[o] the same for output
// 7 - o with 1 more added when Extra.
template <int Span, int Rnd, int Shift, bool Extra>
inline void pass8_pairs(const __m128i* v, __m128i* top, __m128i* bot) {
    __m128i ev[4];
    even8<Span, Rnd>(v, ev);
#pragma GCC unroll 4
    for (int o = 0; o < 4; ++o) {
        __m128i od = odd8<Span>(v, o);
        top[o] = _mm_srai_epi32(_mm_add_epi32(ev[o], od), Shift);
        if (Extra) od = _mm_sub_epi32(od, _mm_set1_epi32(1));
        bot[o] = _mm_srai_epi32(_mm_sub_epi32(ev[o], od), Shift);
    }
}

// Byte shuffle of a row to (d0,d4) (d2,d6) (d1,d3) (d5,d7); columns from
// Span on become zero.
struct RowShuffle {
    Zan8s b[16];
};
template <int Span>
constexpr RowShuffle row_pairs() {
    constexpr int order[8] = {0, 4, 2, 6, 1, 3, 5, 7};
    RowShuffle m{};
    for (int i = 0; i < 8; ++i) {
        const int j = order[i];
        m.b[2 * i] = static_cast<Zan8s>(j < Span ? 2 * j : -1);
        m.b[2 * i + 1] = static_cast<Zan8s>(j < Span ? 2 * j + 1 : -1);
    }
    return m;
}
template <int Span>
alignas(16) constexpr RowShuffle kRowPairs = row_pairs<Span>();

template <int Span>
inline void inv8x8_body(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s dstStep) {
    const __m128i shuf = simd::load16a(kRowPairs<Span>.b);
    __m128i r[8];
    for (int i = 0; i < 8; ++i) r[i] = _mm_shuffle_epi8(simd::load16(simd::row(pSrc, srcStep, i)), shuf);
    // Row pass: lanes of group a hold rows 0,4,2,6, of group b rows 1,3,5,7.
    __m128i va[4], vb[4];
    transpose4x4_epi32(r[0], r[4], r[2], r[6], va);
    transpose4x4_epi32(r[1], r[3], r[5], r[7], vb);
    __m128i ta[4], ba[4], tb[4], bb[4];
    pass8_pairs<Span, 4, 3, false>(va, ta, ba);
    pass8_pairs<Span, 4, 3, false>(vb, tb, bb);
    __m128i e[8];  // e[j]: column j of E, rows in lane order 0 4 2 6 1 3 5 7
    for (int o = 0; o < 4; ++o) {
        e[o] = _mm_packs_epi32(ta[o], tb[o]);
        e[7 - o] = _mm_packs_epi32(ba[o], bb[o]);
    }
    // Column pass: lanes of group a hold columns 0..3, of group b 4..7.
    transpose4x4_epi32(e[0], e[1], e[2], e[3], va);
    transpose4x4_epi32(e[4], e[5], e[6], e[7], vb);
    pass8_pairs<8, 64, 7, true>(va, ta, ba);
    pass8_pairs<8, 64, 7, true>(vb, tb, bb);
    for (int o = 0; o < 4; ++o) {
        simd::store16(simd::row(pDst, dstStep, o), _mm_packs_epi32(ta[o], tb[o]));
        simd::store16(simd::row(pDst, dstStep, 7 - o), _mm_packs_epi32(ba[o], bb[o]));
    }
}

// The 8x4 inverse the same way.  Rows 0,2,1,3 in the lanes give the row
// pass; each packed pair of its results holds column o in the low half and
// column 7 - o in the high half, in the pairs (E0,E2) (E1,E3) that the
// 4-point column pass takes, so 32-bit and 64-bit unpacks gather them for
// columns 0..3 and 4..7.
constexpr Zan32s pair4(int ka, int kb, int o) {
    return static_cast<Zan32s>(static_cast<Zan32u>(static_cast<Zan16u>(basis(4, ka, o))) |
                               (static_cast<Zan32u>(static_cast<Zan16u>(basis(4, kb, o))) << 16));
}

// A 4-point pass over the pairs a = (x0,x2) and b = (x1,x3) of four lanes:
// out[o] = (sum + Rnd) >> Shift, 32-bit.
template <int Rnd, int Shift>
inline void pass4_pairs(__m128i a, __m128i b, __m128i* out) {
    const __m128i rnd = _mm_set1_epi32(Rnd);
#pragma GCC unroll 2
    for (int o = 0; o < 2; ++o) {
        const __m128i ev = _mm_add_epi32(_mm_madd_epi16(a, _mm_set1_epi32(pair4(0, 2, o))), rnd);
        const __m128i od = _mm_madd_epi16(b, _mm_set1_epi32(pair4(1, 3, o)));
        out[o] = _mm_srai_epi32(_mm_add_epi32(ev, od), Shift);
        out[3 - o] = _mm_srai_epi32(_mm_sub_epi32(ev, od), Shift);
    }
}

template <int Span>
inline void inv8x4_body(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s dstStep) {
    const __m128i shuf = simd::load16a(kRowPairs<Span>.b);
    __m128i r[4];
    for (int i = 0; i < 4; ++i) r[i] = _mm_shuffle_epi8(simd::load16(simd::row(pSrc, srcStep, i)), shuf);
    __m128i v[4], top[4], bot[4], p[4];
    transpose4x4_epi32(r[0], r[2], r[1], r[3], v);
    pass8_pairs<Span, 4, 3, false>(v, top, bot);
    for (int o = 0; o < 4; ++o) p[o] = _mm_packs_epi32(top[o], bot[o]);
    const __m128i l01 = _mm_unpacklo_epi32(p[0], p[1]), l23 = _mm_unpacklo_epi32(p[2], p[3]);
    const __m128i h32 = _mm_unpackhi_epi32(p[3], p[2]), h10 = _mm_unpackhi_epi32(p[1], p[0]);
    __m128i oa[4], ob[4];
    pass4_pairs<64, 7>(_mm_unpacklo_epi64(l01, l23), _mm_unpackhi_epi64(l01, l23), oa);  // columns 0..3
    pass4_pairs<64, 7>(_mm_unpacklo_epi64(h32, h10), _mm_unpackhi_epi64(h32, h10), ob);  // columns 4..7
    for (int i = 0; i < 4; ++i) simd::store16(simd::row(pDst, dstStep, i), _mm_packs_epi32(oa[i], ob[i]));
}

// The 4x8 inverse: two rows to a register (0 with 2, 4 with 6, 1 with 5,
// 3 with 7), each row shuffled to (d0,d2) (d1,d3), then 32-bit and 64-bit
// unpacks give the row pass its pairs over rows 0,4,2,6 and 1,3,5,7.  Its
// packed results are the columns of E with rows in the lane order
// 0 4 2 6 1 3 5 7, which one 4x4 transpose of 32-bit lanes turns into the
// pairs of the 8-point column pass; each packed pair of that pass holds
// row o in its low half and row 7 - o in its high half.
struct RowShuffle4 {
    Zan8s b[16];
};
template <int Span>
constexpr RowShuffle4 row_pairs4() {
    constexpr int order[4] = {0, 2, 1, 3};
    RowShuffle4 m{};
    for (int h = 0; h < 2; ++h)
        for (int i = 0; i < 4; ++i) {
            const int j = order[i];
            m.b[8 * h + 2 * i] = static_cast<Zan8s>(j < Span ? 8 * h + 2 * j : -1);
            m.b[8 * h + 2 * i + 1] = static_cast<Zan8s>(j < Span ? 8 * h + 2 * j + 1 : -1);
        }
    return m;
}
template <int Span>
alignas(16) constexpr RowShuffle4 kRowPairs4 = row_pairs4<Span>();

// Rows i and k of a 4-wide block in one register, shuffled to pairs.
inline __m128i rows4_pairs(const Zan16s* p, Zan32s step, int i, int k, __m128i shuf) {
    const __m128i lo = simd::load8(simd::row(p, step, i)), hi = simd::load8(simd::row(p, step, k));
    return _mm_shuffle_epi8(_mm_unpacklo_epi64(lo, hi), shuf);
}

template <int Span>
inline void inv4x8_body(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s dstStep) {
    const __m128i shuf = simd::load16a(kRowPairs4<Span>.b);
    const auto two_rows = [&](int i, int k) { return rows4_pairs(pSrc, srcStep, i, k, shuf); };
    // Row pass over rows 0,4,2,6 (a) and 1,3,5,7 (b).
    __m128i ta[4], tb[4];
    {
        const __m128i q0 = two_rows(0, 2), q1 = two_rows(4, 6);
        const __m128i lo = _mm_unpacklo_epi32(q0, q1), hi = _mm_unpackhi_epi32(q0, q1);
        pass4_pairs<4, 3>(_mm_unpacklo_epi64(lo, hi), _mm_unpackhi_epi64(lo, hi), ta);
    }
    {
        const __m128i q0 = two_rows(1, 5), q1 = two_rows(3, 7);
        const __m128i lo = _mm_unpacklo_epi32(q0, q1), hi = _mm_unpackhi_epi32(q0, q1);
        pass4_pairs<4, 3>(_mm_unpacklo_epi64(lo, hi), _mm_unpackhi_epi64(lo, hi), tb);
    }
    __m128i e[4], v[4], top[4], bot[4];
    for (int j = 0; j < 4; ++j) e[j] = _mm_packs_epi32(ta[j], tb[j]);
    transpose4x4_epi32(e[0], e[1], e[2], e[3], v);
    pass8_pairs<8, 64, 7, true>(v, top, bot);
    for (int o = 0; o < 4; ++o) {
        const __m128i p = _mm_packs_epi32(top[o], bot[o]);
        simd::store8(simd::row(pDst, dstStep, o), p);
        simd::store8(simd::row(pDst, dstStep, 7 - o), _mm_unpackhi_epi64(p, p));
    }
}

// The 4x4 inverse: rows 0 with 1 and 2 with 3 in a register, unpacked to
// the pairs of the row pass over rows 0,2,1,3; its packed results hold the
// pairs (E0,E2) (E1,E3) of two columns, which a 32-bit shuffle gathers for
// the column pass.  Each packed pair of that pass holds two output rows.
template <int Span>
inline void inv4x4_body(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s dstStep) {
    const __m128i shuf = simd::load16a(kRowPairs4<Span>.b);
    const __m128i q0 = rows4_pairs(pSrc, srcStep, 0, 1, shuf), q1 = rows4_pairs(pSrc, srcStep, 2, 3, shuf);
    const __m128i lo = _mm_unpacklo_epi32(q0, q1), hi = _mm_unpackhi_epi32(q0, q1);
    __m128i t[4];
    pass4_pairs<4, 3>(_mm_unpacklo_epi64(lo, hi), _mm_unpackhi_epi64(lo, hi), t);
    const __m128 p01 = _mm_castsi128_ps(_mm_packs_epi32(t[0], t[1]));
    const __m128 p23 = _mm_castsi128_ps(_mm_packs_epi32(t[2], t[3]));
    const __m128i a = _mm_castps_si128(_mm_shuffle_ps(p01, p23, _MM_SHUFFLE(2, 0, 2, 0)));
    const __m128i b = _mm_castps_si128(_mm_shuffle_ps(p01, p23, _MM_SHUFFLE(3, 1, 3, 1)));
    __m128i o[4];
    pass4_pairs<64, 7>(a, b, o);
    for (int i = 0; i < 4; i += 2) {
        const __m128i p = _mm_packs_epi32(o[i], o[i + 1]);
        simd::store8(simd::row(pDst, dstStep, i), p);
        simd::store8(simd::row(pDst, dstStep, i + 1), _mm_unpackhi_epi64(p, p));
    }
}

template <int W, int H>
void inv_simd(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s dstStep, ZaniSize nz) {
    if (dc_only(nz)) {
        const __m128i v = _mm_set1_epi16(static_cast<short>(dc_value<W, H>(scalar::at(pSrc, srcStep, 0, 0))));
        for (int i = 0; i < H; ++i) {
            if (W == 8)
                simd::store16(simd::row(pDst, dstStep, i), v);
            else
                simd::store8(simd::row(pDst, dstStep, i), v);
        }
        return;
    }
    // Each shape's body, for the span of columns that enter the row pass.
    const int span = span_of<W>(nz);
    if constexpr (W == 8 && H == 8) {
        if (span == 2)
            inv8x8_body<2>(pSrc, srcStep, pDst, dstStep);
        else if (span == 4)
            inv8x8_body<4>(pSrc, srcStep, pDst, dstStep);
        else
            inv8x8_body<8>(pSrc, srcStep, pDst, dstStep);
    } else if constexpr (W == 8) {
        if (span == 2)
            inv8x4_body<2>(pSrc, srcStep, pDst, dstStep);
        else if (span == 4)
            inv8x4_body<4>(pSrc, srcStep, pDst, dstStep);
        else
            inv8x4_body<8>(pSrc, srcStep, pDst, dstStep);
    } else if constexpr (H == 8) {
        if (span == 2)
            inv4x8_body<2>(pSrc, srcStep, pDst, dstStep);
        else
            inv4x8_body<4>(pSrc, srcStep, pDst, dstStep);
    } else {
        if (span == 2)
            inv4x4_body<2>(pSrc, srcStep, pDst, dstStep);
        else
            inv4x4_body<4>(pSrc, srcStep, pDst, dstStep);
    }
}

// The forward scale factors, one row of eight lanes per coefficient row.
template <int W, int H>
struct ScaleRows {
    Zan16s q[8][8];
    constexpr ScaleRows() : q{} {
        for (int k = 0; k < H; ++k)
            for (int l = 0; l < W; ++l) q[k][l] = static_cast<Zan16s>(forward_scale(W, H, k, l));
    }
};
template <int W, int H>
alignas(16) constexpr ScaleRows<W, H> kScaleRows{};

template <int W, int H>
void fwd_simd(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s dstStep) {
    __m128i v[8], t[8], e[8];
    load_block<W, H>(pSrc, srcStep, v);
    transpose8(v, t);  // t[j]: column j of the residuals
    pass<fwd_mat<W>(), W, W, 4, 3>(t, e);
    for (int j = W; j < 8; ++j) e[j] = _mm_setzero_si128();
    transpose8(e, t);  // t[i]: row i of e
    pass<fwd_mat<H>(), H, H, 32, 6>(t, v);
    for (int k = 0; k < H; ++k) v[k] = _mm_mulhrs_epi16(v[k], simd::load16a(kScaleRows<W, H>.q[k]));
    store_block<W, H>(pDst, dstStep, v);
}

// ============================================================= catalogue

constexpr KernelPair<InvFn> kInvPairs[] = {
    {"inv8x8", inv_rule<8, 8>, inv_simd<8, 8>, 8, 8, 0},
    {"inv8x4", inv_rule<8, 4>, inv_simd<8, 4>, 8, 4, 0},
    {"inv4x8", inv_rule<4, 8>, inv_simd<4, 8>, 4, 8, 0},
    {"inv4x4", inv_rule<4, 4>, inv_simd<4, 4>, 4, 4, 0},
};
constexpr KernelPair<FwdFn> kFwdPairs[] = {
    {"fwd8x8", fwd_rule<8, 8>, fwd_simd<8, 8>, 8, 8, 0},
    {"fwd8x4", fwd_rule<8, 4>, fwd_simd<8, 4>, 8, 4, 0},
    {"fwd4x8", fwd_rule<4, 8>, fwd_simd<4, 8>, 4, 8, 0},
    {"fwd4x4", fwd_rule<4, 4>, fwd_simd<4, 4>, 4, 4, 0},
};

}  // namespace

const TransformKernels transform_kernels = {kInvPairs, kFwdPairs};

}  // namespace zan::ZAN_PATH::vc1xform

// ============================================================== wrappers

namespace zan::ZAN_PATH {

namespace {
template <int W, int H>
inline ZanStatus inverse(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s dstStep, ZaniSize sizeNZ) {
    if (!pSrc || !pDst) return zanStsNullPtr;
    vc1xform::inv_simd<W, H>(pSrc, srcStep, pDst, dstStep, sizeNZ);
    return zanStsOk;
}
template <int W, int H>
inline ZanStatus forward(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s dstStep) {
    if (!pSrc || !pDst) return zanStsNullPtr;
    vc1xform::fwd_simd<W, H>(pSrc, srcStep, pDst, dstStep);
    return zanStsOk;
}
}  // namespace

ZanStatus zaniTransform8x8Inv_VC1_16s_C1R(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s dstStep,
                                          ZaniSize sizeNZ) {
    return inverse<8, 8>(pSrc, srcStep, pDst, dstStep, sizeNZ);
}
ZanStatus zaniTransform8x4Inv_VC1_16s_C1R(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s dstStep,
                                          ZaniSize sizeNZ) {
    return inverse<8, 4>(pSrc, srcStep, pDst, dstStep, sizeNZ);
}
ZanStatus zaniTransform4x8Inv_VC1_16s_C1R(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s dstStep,
                                          ZaniSize sizeNZ) {
    return inverse<4, 8>(pSrc, srcStep, pDst, dstStep, sizeNZ);
}
ZanStatus zaniTransform4x4Inv_VC1_16s_C1R(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s dstStep,
                                          ZaniSize sizeNZ) {
    return inverse<4, 4>(pSrc, srcStep, pDst, dstStep, sizeNZ);
}
ZanStatus zaniTransform8x8Inv_VC1_16s_C1IR(Zan16s* pSrcDst, Zan32s srcDstStep, ZaniSize sizeNZ) {
    return inverse<8, 8>(pSrcDst, srcDstStep, pSrcDst, srcDstStep, sizeNZ);
}
ZanStatus zaniTransform8x4Inv_VC1_16s_C1IR(Zan16s* pSrcDst, Zan32s srcDstStep, ZaniSize sizeNZ) {
    return inverse<8, 4>(pSrcDst, srcDstStep, pSrcDst, srcDstStep, sizeNZ);
}
ZanStatus zaniTransform4x8Inv_VC1_16s_C1IR(Zan16s* pSrcDst, Zan32s srcDstStep, ZaniSize sizeNZ) {
    return inverse<4, 8>(pSrcDst, srcDstStep, pSrcDst, srcDstStep, sizeNZ);
}
ZanStatus zaniTransform4x4Inv_VC1_16s_C1IR(Zan16s* pSrcDst, Zan32s srcDstStep, ZaniSize sizeNZ) {
    return inverse<4, 4>(pSrcDst, srcDstStep, pSrcDst, srcDstStep, sizeNZ);
}

ZanStatus zaniTransform8x8Fwd_VC1_16s_C1R(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s dstStep) {
    return forward<8, 8>(pSrc, srcStep, pDst, dstStep);
}
ZanStatus zaniTransform8x4Fwd_VC1_16s_C1R(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s dstStep) {
    return forward<8, 4>(pSrc, srcStep, pDst, dstStep);
}
ZanStatus zaniTransform4x8Fwd_VC1_16s_C1R(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s dstStep) {
    return forward<4, 8>(pSrc, srcStep, pDst, dstStep);
}
ZanStatus zaniTransform4x4Fwd_VC1_16s_C1R(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s dstStep) {
    return forward<4, 4>(pSrc, srcStep, pDst, dstStep);
}
ZanStatus zaniTransform8x8Fwd_VC1_16s_C1IR(Zan16s* pSrcDst, Zan32s srcDstStep) {
    return forward<8, 8>(pSrcDst, srcDstStep, pSrcDst, srcDstStep);
}
ZanStatus zaniTransform8x4Fwd_VC1_16s_C1IR(Zan16s* pSrcDst, Zan32s srcDstStep) {
    return forward<8, 4>(pSrcDst, srcDstStep, pSrcDst, srcDstStep);
}
ZanStatus zaniTransform4x8Fwd_VC1_16s_C1IR(Zan16s* pSrcDst, Zan32s srcDstStep) {
    return forward<4, 8>(pSrcDst, srcDstStep, pSrcDst, srcDstStep);
}
ZanStatus zaniTransform4x4Fwd_VC1_16s_C1IR(Zan16s* pSrcDst, Zan32s srcDstStep) {
    return forward<4, 4>(pSrcDst, srcDstStep, pSrcDst, srcDstStep);
}

}  // namespace zan::ZAN_PATH
