// H.261 loop filter, H.263 deblocking and block-boundary filters, MPEG-4
// post-processing deblocking and deringing.
//
// The scalar rules define every result line by line, in the words of the
// standards.  The vector kernels hold one line per 16-bit lane: a horizontal
// edge loads the rows across it directly, a vertical edge transposes the
// samples of 8 rows into lanes, computes as for a horizontal edge and
// transposes back.  Every kernel reads and writes only the samples its rule
// reads and writes.
#include "h26x_mpeg4/filters263.h"

#include <cstddef>
#include <cstring>

#include "common/scalar.h"
#include "common/simd.h"
#include "frame/bodies.h"

namespace zan::ZAN_PATH::filters263 {
namespace {

using namespace zan::filters263;
using namespace zan::ZAN_PATH::simd;

// ============================================================ scalar rules

inline Zan8u clamp255(Zan32s v) { return static_cast<Zan8u>(v < 0 ? 0 : v > 255 ? 255 : v); }
inline Zan32s iabs(Zan32s v) { return v < 0 ? -v : v; }
inline Zan32s sign(Zan32s v) { return v < 0 ? -1 : v > 0 ? 1 : 0; }
inline Zan32s imin(Zan32s a, Zan32s b) { return a < b ? a : b; }
inline Zan32s imax(Zan32s a, Zan32s b) { return a > b ? a : b; }
// Division by 8 rounding to the nearest, halves away from zero.
inline Zan32s round_div8(Zan32s v) { return sign(v) * ((iabs(v) + 4) >> 3); }

// H.261: separable [1 2 1] with unfiltered ends.
void h261_rule(const Zan8u* src, Zan32s srcStep, Zan8u* dst, Zan32s dstStep) {
    Zan32s r[8][8];
    for (Zan32s y = 0; y < 8; ++y)
        for (Zan32s x = 0; x < 8; ++x) {
            const Zan32s c = scalar::at(src, srcStep, x, y);
            r[y][x] = (x == 0 || x == 7) ? 4 * c
                                         : scalar::at(src, srcStep, x - 1, y) + 2 * c + scalar::at(src, srcStep, x + 1, y);
        }
    Zan8u out[8][8];
    for (Zan32s y = 0; y < 8; ++y)
        for (Zan32s x = 0; x < 8; ++x) {
            const Zan32s v = (y == 0 || y == 7) ? 4 * r[y][x] : r[y - 1][x] + 2 * r[y][x] + r[y + 1][x];
            out[y][x] = static_cast<Zan8u>((v + 8) >> 4);
        }
    for (Zan32s y = 0; y < 8; ++y)
        for (Zan32s x = 0; x < 8; ++x) scalar::put(dst, dstStep, x, y, out[y][x]);
}

// Address of sample k (0 = first after the edge) of line `line`.
template <bool V>
inline Zan8u* sample(Zan8u* p, Zan32s step, Zan32s line, Zan32s k) {
    const std::ptrdiff_t s = step;
    return V ? p + s * line + k : p + s * k + line;
}

// H.263 deblocking on Lines lines; Strength: d1 limited by the QP strength.
template <bool V, int Lines, bool Strength>
void h263_rule(Zan8u* p, Zan32s step, Zan32s qp) {
    for (Zan32s l = 0; l < Lines; ++l) {
        Zan8u* a = sample<V>(p, step, l, -2);
        Zan8u* b = sample<V>(p, step, l, -1);
        Zan8u* c = sample<V>(p, step, l, 0);
        Zan8u* d = sample<V>(p, step, l, 1);
        const Zan32s A = *a, B = *b, C = *c, D = *d;
        const Zan32s dd = (A - 4 * B + 4 * C - D) / 8;  // C++ division truncates toward zero
        Zan32s d1 = dd;
        if (Strength) {
            const Zan32s s = kStrength[qp];
            d1 = sign(dd) * imax(0, iabs(dd) - imax(0, 2 * (iabs(dd) - s)));
        }
        *b = clamp255(B + d1);
        *c = clamp255(C - d1);
        const Zan32s lim = iabs(d1) >> 1;
        const Zan32s d2 = imin(imax((A - D) / 4, -lim), lim);
        *a = clamp255(A - d2);
        *d = clamp255(D + d2);
    }
}

// Block-boundary filter over 16 lines.
template <bool V>
void bb_rule(Zan8u* p, Zan32s step, Zan32s) {
    for (Zan32s l = 0; l < 16; ++l) {
        Zan8u* a = sample<V>(p, step, l, -1);
        Zan8u* b = sample<V>(p, step, l, 0);
        const Zan32s A = *a, B = *b;
        *a = static_cast<Zan8u>((3 * A + B + 2) >> 2);
        *b = static_cast<Zan8u>((A + 3 * B + 2) >> 2);
    }
}

// MPEG-4 deblocking of one line: v[0..9], edge between v[4] and v[5].
void mpeg4_line(Zan32s v[10], Zan32s qp, Zan32s thr1, Zan32s thr2) {
    Zan32s eq = 0;
    for (int i = 0; i < 9; ++i) eq += iabs(v[i] - v[i + 1]) <= thr1 ? 1 : 0;
    if (eq >= thr2) {
        Zan32s mx = v[1], mn = v[1];
        for (int i = 2; i <= 8; ++i) mx = imax(mx, v[i]), mn = imin(mn, v[i]);
        if (mx - mn >= 2 * qp) return;
        const Zan32s p0 = iabs(v[0] - v[1]) < qp ? v[0] : v[1];
        const Zan32s p9 = iabs(v[8] - v[9]) < qp ? v[9] : v[8];
        auto P = [&](int m) { return m < 1 ? p0 : m > 8 ? p9 : v[m]; };
        static constexpr Zan32s b[9] = {1, 1, 2, 2, 4, 2, 2, 1, 1};
        Zan32s out[9];
        for (int n = 1; n <= 8; ++n) {
            Zan32s s = 0;
            for (int k = -4; k <= 4; ++k) s += b[k + 4] * P(n + k);
            out[n] = (s + 8) >> 4;
        }
        for (int n = 1; n <= 8; ++n) v[n] = out[n];
        return;
    }
    const Zan32s a30 = round_div8(2 * v[3] - 5 * v[4] + 5 * v[5] - 2 * v[6]);
    if (!(iabs(a30) < qp)) return;
    const Zan32s a31 = round_div8(2 * v[1] - 5 * v[2] + 5 * v[3] - 2 * v[4]);
    const Zan32s a32 = round_div8(2 * v[5] - 5 * v[6] + 5 * v[7] - 2 * v[8]);
    const Zan32s a30p = sign(a30) * imin(iabs(a30), imin(iabs(a31), iabs(a32)));
    const Zan32s q = (v[4] - v[5]) / 2;
    Zan32s d = round_div8(5 * (a30p - a30));
    d = imin(imax(d, imin(0, q)), imax(0, q));
    v[4] -= d;
    v[5] += d;
}

template <bool V>
void mpeg4_rule(Zan8u* p, Zan32s step, Zan32s qp, Zan32s thr1, Zan32s thr2) {
    for (Zan32s l = 0; l < 8; ++l) {
        Zan32s v[10];
        for (int k = 0; k < 10; ++k) v[k] = *sample<V>(p, step, l, k - 5);
        mpeg4_line(v, qp, thr1, thr2);
        for (int k = 1; k <= 8; ++k) *sample<V>(p, step, l, k - 5) = static_cast<Zan8u>(v[k]);
    }
}

// Threshold and range of one 8x8 block.
void block_threshold(const Zan8u* s, Zan32s step, Zan32s& thr, Zan32s& range) {
    Zan32s mx = 0, mn = 255;
    for (Zan32s y = 0; y < 8; ++y)
        for (Zan32s x = 0; x < 8; ++x) {
            const Zan32s v = scalar::at(s, step, x, y);
            mx = imax(mx, v), mn = imin(mn, v);
        }
    thr = (mx + mn + 1) / 2;
    range = mx - mn;
}

// The rearrangement of the luma thresholds, shared by rule and kernel.
void luma_rearrange(Zan32s thr[6], const Zan32s range[4]) {
    int widest = 0;
    for (int k = 1; k < 4; ++k)
        if (range[k] > range[widest]) widest = k;
    const Zan32s t = thr[widest];
    for (int k = 0; k < 4; ++k)
        if (range[k] < 32) thr[k] = t;
}

inline const Zan8u* luma_block(const Zan8u* y, Zan32s step, int k) {
    return y + static_cast<std::ptrdiff_t>(step) * 8 * (k >> 1) + 8 * (k & 1);
}

void threshold_rule(const Zan8u* y, Zan32s yStep, const Zan8u* cb, Zan32s cbStep, const Zan8u* cr, Zan32s crStep,
                    Zan32s* out) {
    Zan32s thr[6], range[6];
    for (int k = 0; k < 4; ++k) block_threshold(luma_block(y, yStep, k), yStep, thr[k], range[k]);
    block_threshold(cb, cbStep, thr[4], range[4]);
    block_threshold(cr, crStep, thr[5], range[5]);
    luma_rearrange(thr, range);
    for (int k = 0; k < 6; ++k) out[k] = thr[k];
}

// Deringing: index, agreement over 3x3, [1 2 1] filter, change limited.
void dering_rule(const Zan8u* src, Zan32s srcStep, Zan8u* dst, Zan32s dstStep, Zan32s qp, Zan32s thr) {
    Zan32s v[10][10];
    for (Zan32s y = 0; y < 10; ++y)
        for (Zan32s x = 0; x < 10; ++x) v[y][x] = scalar::at(src, srcStep, x - 1, y - 1);
    const Zan32s maxDiff = qp / 2;
    Zan8u out[8][8];
    for (Zan32s i = 0; i < 8; ++i)
        for (Zan32s j = 0; j < 8; ++j) {
            int ones = 0;
            Zan32s sum = 0;
            for (int h = -1; h <= 1; ++h)
                for (int w = -1; w <= 1; ++w) {
                    const Zan32s s = v[i + 1 + h][j + 1 + w];
                    ones += s >= thr ? 1 : 0;
                    sum += (h == 0 ? 2 : 1) * (w == 0 ? 2 : 1) * s;
                }
            const Zan32s c = v[i + 1][j + 1];
            Zan32s r = c;
            if (ones == 0 || ones == 9) {
                const Zan32s f = (sum + 8) >> 4;
                r = imin(imax(f, c - maxDiff), c + maxDiff);
            }
            out[i][j] = static_cast<Zan8u>(r);
        }
    for (Zan32s y = 0; y < 8; ++y)
        for (Zan32s x = 0; x < 8; ++x) scalar::put(dst, dstStep, x, y, out[y][x]);
}

// ========================================================= vector kernels

inline __m128i u8to16(__m128i v) { return _mm_unpacklo_epi8(v, _mm_setzero_si128()); }
inline __m128i ld8w(const Zan8u* p) { return u8to16(load8(p)); }
inline void st8w(Zan8u* p, __m128i v) { store8(p, _mm_packus_epi16(v, v)); }
inline Zan8u* at_row(Zan8u* p, Zan32s step, Zan32s k) { return p + static_cast<std::ptrdiff_t>(step) * k; }
inline const Zan8u* at_row(const Zan8u* p, Zan32s step, Zan32s k) {
    return p + static_cast<std::ptrdiff_t>(step) * k;
}

// Signed division by 2^n truncating toward zero on 16-bit lanes.
template <int N>
inline __m128i div_trunc(__m128i x) {
    const __m128i bias = _mm_srli_epi16(_mm_srai_epi16(x, 15), 16 - N);
    return _mm_srai_epi16(_mm_add_epi16(x, bias), N);
}
// Division by 8 rounding halves away from zero.
inline __m128i round_div8_v(__m128i x) {
    const __m128i m = _mm_srli_epi16(_mm_add_epi16(_mm_abs_epi16(x), _mm_set1_epi16(4)), 3);
    return _mm_sign_epi16(m, x);
}
inline __m128i clamp16(__m128i x, __m128i lo, __m128i hi) { return _mm_min_epi16(_mm_max_epi16(x, lo), hi); }
inline __m128i select(__m128i mask, __m128i a, __m128i b) {
    return _mm_or_si128(_mm_and_si128(mask, a), _mm_andnot_si128(mask, b));
}

void h261_simd(const Zan8u* src, Zan32s srcStep, Zan8u* dst, Zan32s dstStep) {
    const __m128i ends = _mm_setr_epi16(-1, 0, 0, 0, 0, 0, 0, -1);
    __m128i r[8];
    for (int y = 0; y < 8; ++y) {
        const __m128i c = ld8w(at_row(src, srcStep, y));
        const __m128i mid = _mm_add_epi16(_mm_add_epi16(_mm_slli_si128(c, 2), _mm_srli_si128(c, 2)),
                                          _mm_slli_epi16(c, 1));
        r[y] = select(ends, _mm_slli_epi16(c, 2), mid);
    }
    const __m128i eight = _mm_set1_epi16(8);
    __m128i out[8];
    out[0] = _mm_srli_epi16(_mm_add_epi16(_mm_slli_epi16(r[0], 2), eight), 4);
    out[7] = _mm_srli_epi16(_mm_add_epi16(_mm_slli_epi16(r[7], 2), eight), 4);
    for (int y = 1; y < 7; ++y) {
        const __m128i s = _mm_add_epi16(_mm_add_epi16(r[y - 1], r[y + 1]), _mm_slli_epi16(r[y], 1));
        out[y] = _mm_srli_epi16(_mm_add_epi16(s, eight), 4);
    }
    for (int y = 0; y < 8; ++y) st8w(at_row(dst, dstStep, y), out[y]);
}

// The H.263 deblocking arithmetic on 8 lines in lanes.  s: the strength
// (a large value for no limit).
inline void h263_core(__m128i& A, __m128i& B, __m128i& C, __m128i& D, __m128i s) {
    const __m128i four = _mm_slli_epi16(_mm_sub_epi16(C, B), 2);
    const __m128i d = div_trunc<3>(_mm_add_epi16(_mm_sub_epi16(A, D), four));
    const __m128i ad = _mm_abs_epi16(d);
    const __m128i zero = _mm_setzero_si128();
    const __m128i over = _mm_max_epi16(zero, _mm_slli_epi16(_mm_sub_epi16(ad, s), 1));
    const __m128i d1 = _mm_sign_epi16(_mm_max_epi16(zero, _mm_sub_epi16(ad, over)), d);
    const __m128i lim = _mm_srli_epi16(_mm_abs_epi16(d1), 1);
    const __m128i d2 = clamp16(div_trunc<2>(_mm_sub_epi16(A, D)), _mm_sub_epi16(zero, lim), lim);
    B = _mm_add_epi16(B, d1);
    C = _mm_sub_epi16(C, d1);
    A = _mm_sub_epi16(A, d2);
    D = _mm_add_epi16(D, d2);
}

inline __m128i strength_of(bool limited, Zan32s qp) {
    return _mm_set1_epi16(static_cast<Zan16s>(limited ? kStrength[qp & 31] : 1000));
}

template <int Lines, bool Strength>
void h263_hor_simd(Zan8u* p, Zan32s step, Zan32s qp) {
    const __m128i s = strength_of(Strength, qp);
    for (int half = 0; half < Lines / 8; ++half) {
        Zan8u* q = p + 8 * half;
        __m128i A = ld8w(at_row(q, step, -2)), B = ld8w(at_row(q, step, -1));
        __m128i C = ld8w(q), D = ld8w(at_row(q, step, 1));
        h263_core(A, B, C, D, s);
        st8w(at_row(q, step, -2), A);
        st8w(at_row(q, step, -1), B);
        st8w(q, C);
        st8w(at_row(q, step, 1), D);
    }
}

template <int Lines, bool Strength>
void h263_ver_simd(Zan8u* p, Zan32s step, Zan32s qp) {
    const __m128i s = strength_of(Strength, qp);
    const __m128i gather = _mm_setr_epi8(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
    for (int half = 0; half < Lines / 8; ++half) {
        Zan8u* q = at_row(p, step, 8 * half) - 2;
        __m128i r[8];
        for (int y = 0; y < 8; ++y) r[y] = load4(at_row(q, step, y));
        // Rows 0-3 and 4-7, 4 bytes each, then grouped by sample.
        const __m128i lo = _mm_shuffle_epi8(
            _mm_unpacklo_epi64(_mm_unpacklo_epi32(r[0], r[1]), _mm_unpacklo_epi32(r[2], r[3])), gather);
        const __m128i hi = _mm_shuffle_epi8(
            _mm_unpacklo_epi64(_mm_unpacklo_epi32(r[4], r[5]), _mm_unpacklo_epi32(r[6], r[7])), gather);
        const __m128i ab = _mm_unpacklo_epi32(lo, hi), cd = _mm_unpackhi_epi32(lo, hi);
        const __m128i zero = _mm_setzero_si128();
        __m128i A = _mm_unpacklo_epi8(ab, zero), B = _mm_unpackhi_epi8(ab, zero);
        __m128i C = _mm_unpacklo_epi8(cd, zero), D = _mm_unpackhi_epi8(cd, zero);
        h263_core(A, B, C, D, s);
        const __m128i AB = _mm_packus_epi16(A, B), CD = _mm_packus_epi16(C, D);
        const __m128i ac = _mm_unpacklo_epi8(AB, CD), bd = _mm_unpackhi_epi8(AB, CD);
        __m128i rows[2] = {_mm_unpacklo_epi8(ac, bd), _mm_unpackhi_epi8(ac, bd)};
        for (int k = 0; k < 2; ++k)
            for (int y = 0; y < 4; ++y) {
                const Zan32s w = _mm_cvtsi128_si32(rows[k]);
                std::memcpy(at_row(q, step, 4 * k + y), &w, 4);
                rows[k] = _mm_srli_si128(rows[k], 4);
            }
    }
}

// (3a + b + 2) >> 2 on 16-bit lanes.
inline __m128i bb_mix(__m128i a, __m128i b) {
    return _mm_srli_epi16(_mm_add_epi16(_mm_add_epi16(_mm_add_epi16(a, _mm_slli_epi16(a, 1)), b), _mm_set1_epi16(2)),
                          2);
}

void bb_hor_simd(Zan8u* p, Zan32s step, Zan32s) {
    Zan8u* up = at_row(p, step, -1);
    const __m128i a = load16(up), b = load16(p), zero = _mm_setzero_si128();
    const __m128i al = _mm_unpacklo_epi8(a, zero), ah = _mm_unpackhi_epi8(a, zero);
    const __m128i bl = _mm_unpacklo_epi8(b, zero), bh = _mm_unpackhi_epi8(b, zero);
    store16(up, _mm_packus_epi16(bb_mix(al, bl), bb_mix(ah, bh)));
    store16(p, _mm_packus_epi16(bb_mix(bl, al), bb_mix(bh, ah)));
}

void bb_ver_simd(Zan8u* p, Zan32s step, Zan32s) {
    // Each row's pair (a, b) as one 16-bit lane: a low byte, b high byte.
    for (int half = 0; half < 2; ++half) {
        Zan8u* q = at_row(p, step, 8 * half) - 1;
        Zan16u w[8];
        for (int y = 0; y < 8; ++y) std::memcpy(&w[y], at_row(q, step, y), 2);
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(w));
        const __m128i a = _mm_and_si128(v, _mm_set1_epi16(0xFF)), b = _mm_srli_epi16(v, 8);
        const __m128i out = _mm_or_si128(bb_mix(a, b), _mm_slli_epi16(bb_mix(b, a), 8));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(w), out);
        for (int y = 0; y < 8; ++y) std::memcpy(at_row(q, step, y), &w[y], 2);
    }
}

// The MPEG-4 deblocking decision and both modes on 8 lines in lanes; v[1..8]
// receive the results.
inline void mpeg4_core(__m128i v[10], Zan32s qp, Zan32s thr1, Zan32s thr2) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i qpv = _mm_set1_epi16(static_cast<Zan16s>(qp));
    // eq_cnt: |diff| <= thr1, as |diff| < thr1 + 1 with thr1 clamped to -1..255.
    const Zan32s t1 = thr1 < -1 ? -1 : thr1 > 255 ? 255 : thr1;
    const __m128i t1v = _mm_set1_epi16(static_cast<Zan16s>(t1 + 1));
    __m128i cnt = zero;
    for (int i = 0; i < 9; ++i)
        cnt = _mm_sub_epi16(cnt, _mm_cmpgt_epi16(t1v, _mm_abs_epi16(_mm_sub_epi16(v[i], v[i + 1]))));
    const Zan32s t2 = thr2 < 0 ? 0 : thr2 > 10 ? 10 : thr2;
    const __m128i dcMode = _mm_cmpgt_epi16(cnt, _mm_set1_epi16(static_cast<Zan16s>(t2 - 1)));

    // DC-offset mode.
    __m128i mx = v[1], mn = v[1];
    for (int i = 2; i <= 8; ++i) mx = _mm_max_epi16(mx, v[i]), mn = _mm_min_epi16(mn, v[i]);
    const __m128i flat = _mm_cmpgt_epi16(_mm_add_epi16(qpv, qpv), _mm_sub_epi16(mx, mn));
    const __m128i p0 = select(_mm_cmpgt_epi16(qpv, _mm_abs_epi16(_mm_sub_epi16(v[0], v[1]))), v[0], v[1]);
    const __m128i p9 = select(_mm_cmpgt_epi16(qpv, _mm_abs_epi16(_mm_sub_epi16(v[8], v[9]))), v[9], v[8]);
    __m128i P[17];  // P[m + 4] = p(m) for m = -4..12
    for (int m = -4; m <= 12; ++m) P[m + 4] = m < 1 ? p0 : m > 8 ? p9 : v[m];
    __m128i dc[9];
    const __m128i eight = _mm_set1_epi16(8);
    for (int n = 1; n <= 8; ++n) {
        const __m128i* q = &P[n];  // q[k + 4] = p(n + k)
        __m128i s = _mm_add_epi16(_mm_add_epi16(q[0], q[1]), _mm_add_epi16(q[7], q[8]));
        s = _mm_add_epi16(s, _mm_slli_epi16(_mm_add_epi16(_mm_add_epi16(q[2], q[3]), _mm_add_epi16(q[5], q[6])), 1));
        s = _mm_add_epi16(s, _mm_slli_epi16(q[4], 2));
        dc[n] = _mm_srli_epi16(_mm_add_epi16(s, eight), 4);
    }

    // Default mode.
    auto a3 = [](__m128i x0, __m128i x1, __m128i x2, __m128i x3) {
        const __m128i t = _mm_add_epi16(_mm_slli_epi16(_mm_sub_epi16(x0, x3), 1),
                                        _mm_mullo_epi16(_mm_sub_epi16(x2, x1), _mm_set1_epi16(5)));
        return round_div8_v(t);
    };
    const __m128i a30 = a3(v[3], v[4], v[5], v[6]);
    const __m128i a31 = a3(v[1], v[2], v[3], v[4]);
    const __m128i a32 = a3(v[5], v[6], v[7], v[8]);
    const __m128i m = _mm_min_epi16(_mm_abs_epi16(a30), _mm_min_epi16(_mm_abs_epi16(a31), _mm_abs_epi16(a32)));
    const __m128i a30p = _mm_sign_epi16(m, a30);
    __m128i d = round_div8_v(_mm_mullo_epi16(_mm_sub_epi16(a30p, a30), _mm_set1_epi16(5)));
    const __m128i q = div_trunc<1>(_mm_sub_epi16(v[4], v[5]));
    d = clamp16(d, _mm_min_epi16(zero, q), _mm_max_epi16(zero, q));
    d = _mm_and_si128(d, _mm_cmpgt_epi16(qpv, _mm_abs_epi16(a30)));

    const __m128i useDc = _mm_and_si128(dcMode, flat);
    const __m128i useDef = _mm_andnot_si128(dcMode, _mm_set1_epi16(-1));
    const __m128i dDef = _mm_and_si128(d, useDef);
    for (int n = 1; n <= 8; ++n) {
        __m128i r = select(useDc, dc[n], v[n]);
        if (n == 4) r = _mm_sub_epi16(r, dDef);
        if (n == 5) r = _mm_add_epi16(r, dDef);
        v[n] = r;
    }
}

// 8x8 byte transpose: rows in the low halves of in[0..7]; out[k] holds
// column 2k in its low half and column 2k + 1 in its high half.
inline void transpose8x8(const __m128i in[8], __m128i out[4]) {
    const __m128i a01 = _mm_unpacklo_epi8(in[0], in[1]), a23 = _mm_unpacklo_epi8(in[2], in[3]);
    const __m128i a45 = _mm_unpacklo_epi8(in[4], in[5]), a67 = _mm_unpacklo_epi8(in[6], in[7]);
    const __m128i b0 = _mm_unpacklo_epi16(a01, a23), b1 = _mm_unpackhi_epi16(a01, a23);
    const __m128i b2 = _mm_unpacklo_epi16(a45, a67), b3 = _mm_unpackhi_epi16(a45, a67);
    out[0] = _mm_unpacklo_epi32(b0, b2);
    out[1] = _mm_unpackhi_epi32(b0, b2);
    out[2] = _mm_unpacklo_epi32(b1, b3);
    out[3] = _mm_unpackhi_epi32(b1, b3);
}

void mpeg4_hor_simd(Zan8u* p, Zan32s step, Zan32s qp, Zan32s thr1, Zan32s thr2) {
    __m128i v[10];
    for (int k = 0; k < 10; ++k) v[k] = ld8w(at_row(p, step, k - 5));
    mpeg4_core(v, qp, thr1, thr2);
    for (int k = 1; k <= 8; ++k) st8w(at_row(p, step, k - 5), v[k]);
}

void mpeg4_ver_simd(Zan8u* p, Zan32s step, Zan32s qp, Zan32s thr1, Zan32s thr2) {
    __m128i rows[8], cols[4];
    Zan16u tail[8];
    for (int y = 0; y < 8; ++y) {
        rows[y] = load8(at_row(p, step, y) - 5);
        std::memcpy(&tail[y], at_row(p, step, y) + 3, 2);
    }
    transpose8x8(rows, cols);
    const __m128i zero = _mm_setzero_si128();
    __m128i v[10];
    for (int k = 0; k < 4; ++k) {
        v[2 * k] = _mm_unpacklo_epi8(cols[k], zero);
        v[2 * k + 1] = _mm_unpackhi_epi8(cols[k], zero);
    }
    const __m128i t = _mm_loadu_si128(reinterpret_cast<const __m128i*>(tail));
    v[8] = _mm_and_si128(t, _mm_set1_epi16(0xFF));
    v[9] = _mm_srli_epi16(t, 8);
    mpeg4_core(v, qp, thr1, thr2);
    __m128i in[8], out[4];
    for (int k = 0; k < 8; ++k) in[k] = _mm_packus_epi16(v[k + 1], v[k + 1]);
    transpose8x8(in, out);
    for (int k = 0; k < 4; ++k) {
        store8(at_row(p, step, 2 * k) - 4, out[k]);
        store8(at_row(p, step, 2 * k + 1) - 4, _mm_unpackhi_epi64(out[k], out[k]));
    }
}

// Minimum and maximum of an 8x8 block.
inline void block_minmax(const Zan8u* s, Zan32s step, Zan32s& mn, Zan32s& mx) {
    __m128i lo = load8(s), hi = lo;
    for (int y = 1; y < 8; ++y) {
        const __m128i r = load8(at_row(s, step, y));
        lo = _mm_min_epu8(lo, r);
        hi = _mm_max_epu8(hi, r);
    }
    // Both in one register: the minimum as is, the maximum inverted.
    __m128i m = _mm_unpacklo_epi64(lo, _mm_xor_si128(hi, _mm_set1_epi8(-1)));
    m = _mm_min_epu8(m, _mm_srli_epi64(m, 32));
    m = _mm_min_epu8(m, _mm_srli_epi64(m, 16));
    m = _mm_min_epu8(m, _mm_srli_epi64(m, 8));
    mn = _mm_cvtsi128_si32(m) & 0xFF;
    mx = 255 - (_mm_cvtsi128_si32(_mm_srli_si128(m, 8)) & 0xFF);
}

void threshold_simd(const Zan8u* y, Zan32s yStep, const Zan8u* cb, Zan32s cbStep, const Zan8u* cr, Zan32s crStep,
                    Zan32s* out) {
    Zan32s thr[6], range[6];
    const Zan8u* blocks[6] = {luma_block(y, yStep, 0), luma_block(y, yStep, 1), luma_block(y, yStep, 2),
                              luma_block(y, yStep, 3), cb, cr};
    const Zan32s steps[6] = {yStep, yStep, yStep, yStep, cbStep, crStep};
    for (int k = 0; k < 6; ++k) {
        Zan32s mn, mx;
        block_minmax(blocks[k], steps[k], mn, mx);
        thr[k] = (mx + mn + 1) / 2;
        range[k] = mx - mn;
    }
    luma_rearrange(thr, range);
    for (int k = 0; k < 6; ++k) out[k] = thr[k];
}

// Per source row (10 rows from src - step - 1): 16-bit samples of the left,
// centre and right neighbours of the 8 outputs, the horizontal [1 2 1] sum,
// and the AND and OR of the three indices.
struct DerRow {
    __m128i c, h, all, any;
};

inline DerRow dering_row(const Zan8u* r, __m128i thrm1) {
    const __m128i l = ld8w(r - 1), c = ld8w(r), rt = ld8w(r + 1);
    const __m128i il = _mm_cmpgt_epi16(l, thrm1), ic = _mm_cmpgt_epi16(c, thrm1), ir = _mm_cmpgt_epi16(rt, thrm1);
    DerRow o;
    o.c = c;
    o.h = _mm_add_epi16(_mm_add_epi16(l, rt), _mm_slli_epi16(c, 1));
    o.all = _mm_and_si128(_mm_and_si128(il, ic), ir);
    o.any = _mm_or_si128(_mm_or_si128(il, ic), ir);
    return o;
}

void dering_simd(const Zan8u* src, Zan32s srcStep, Zan8u* dst, Zan32s dstStep, Zan32s qp, Zan32s thr) {
    // s >= thr as s > thr - 1, thr clamped to 0..256 (samples are 0..255).
    const Zan32s t = thr < 0 ? 0 : thr > 256 ? 256 : thr;
    const __m128i thrm1 = _mm_set1_epi16(static_cast<Zan16s>(t - 1));
    const __m128i md = _mm_set1_epi16(static_cast<Zan16s>(qp / 2));
    const __m128i eight = _mm_set1_epi16(8);
    DerRow a = dering_row(at_row(src, srcStep, -1), thrm1);
    DerRow b = dering_row(src, thrm1);
    for (int y = 0; y < 8; ++y) {
        const DerRow c = dering_row(at_row(src, srcStep, y + 1), thrm1);
        const __m128i all = _mm_and_si128(_mm_and_si128(a.all, b.all), c.all);
        const __m128i any = _mm_or_si128(_mm_or_si128(a.any, b.any), c.any);
        const __m128i agree = _mm_or_si128(all, _mm_andnot_si128(any, _mm_set1_epi16(-1)));
        const __m128i sum = _mm_add_epi16(_mm_add_epi16(a.h, c.h), _mm_slli_epi16(b.h, 1));
        const __m128i f = _mm_srli_epi16(_mm_add_epi16(sum, eight), 4);
        const __m128i lim = clamp16(f, _mm_sub_epi16(b.c, md), _mm_add_epi16(b.c, md));
        st8w(at_row(dst, dstStep, y), select(agree, lim, b.c));
        a = b;
        b = c;
    }
}

// ============================================================= catalogue

constexpr Zan32s kV = kVertical;

const KernelPair<H261Fn> kH261[] = {
    {"h261_8x8", h261_rule, h261_simd, 8, 8, 0},
};

const KernelPair<EdgeFn> kEdge[] = {
    {"h263_8x8_hor", h263_rule<false, 8, true>, h263_hor_simd<8, true>, 8, 2, 0},
    {"h263_8x8_ver", h263_rule<true, 8, true>, h263_ver_simd<8, true>, 8, 2, kV},
    {"h263_16x16_hor", h263_rule<false, 16, false>, h263_hor_simd<16, false>, 16, 2, 0},
    {"h263_16x16_ver", h263_rule<true, 16, false>, h263_ver_simd<16, false>, 16, 2, kV},
    {"bb_hor", bb_rule<false>, bb_hor_simd, 16, 1, 0},
    {"bb_ver", bb_rule<true>, bb_ver_simd, 16, 1, kV},
};

const KernelPair<Mpeg4EdgeFn> kMpeg4[] = {
    {"mpeg4_hor", mpeg4_rule<false>, mpeg4_hor_simd, 8, 5, 0},
    {"mpeg4_ver", mpeg4_rule<true>, mpeg4_ver_simd, 8, 5, kV},
};

const KernelPair<ThresholdFn> kThreshold[] = {
    {"dering_threshold", threshold_rule, threshold_simd, 16, 16, 0},
};

const KernelPair<DeringFn> kDering[] = {
    {"dering_smooth", dering_rule, dering_simd, 8, 8, 0},
};

}  // namespace

const Kernels kernels = {kH261, kEdge, kMpeg4, kThreshold, kDering};

}  // namespace zan::ZAN_PATH::filters263

// =============================================================== exports

namespace zan::ZAN_PATH {

namespace {

using namespace zan::ZAN_PATH::filters263;

inline bool qp_bad(Zan32s qp) { return qp < 1 || qp > 31; }

}  // namespace

ZanStatus zaniFilter8x8_H261_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep) {
    if (!pSrc || !pDst) return zanStsNullPtr;
    h261_simd(pSrc, srcStep, pDst, dstStep);
    return zanStsOk;
}

ZanStatus zaniFilterDeblocking8x8HorEdge_H263_8u_C1IR(Zan8u* pSrcDst, Zan32s srcDstStep, Zan32s QP) {
    if (!pSrcDst) return zanStsNullPtr;
    if (qp_bad(QP)) return zanStsQpBad;
    h263_hor_simd<8, true>(pSrcDst, srcDstStep, QP);
    return zanStsOk;
}

ZanStatus zaniFilterDeblocking8x8VerEdge_H263_8u_C1IR(Zan8u* pSrcDst, Zan32s srcDstStep, Zan32s QP) {
    if (!pSrcDst) return zanStsNullPtr;
    if (qp_bad(QP)) return zanStsQpBad;
    h263_ver_simd<8, true>(pSrcDst, srcDstStep, QP);
    return zanStsOk;
}

ZanStatus zaniFilterDeblocking16x16HorEdge_H263_8u_C1IR(Zan8u* pSrcDst, Zan32s srcDstStep) {
    if (!pSrcDst) return zanStsNullPtr;
    h263_hor_simd<16, false>(pSrcDst, srcDstStep, 0);
    return zanStsOk;
}

ZanStatus zaniFilterDeblocking16x16VerEdge_H263_8u_C1IR(Zan8u* pSrcDst, Zan32s srcDstStep) {
    if (!pSrcDst) return zanStsNullPtr;
    h263_ver_simd<16, false>(pSrcDst, srcDstStep, 0);
    return zanStsOk;
}

ZanStatus zaniFilterBlockBoundaryHorEdge_H263_8u_C1IR(Zan8u* pSrcDst, Zan32s srcDstStep) {
    if (!pSrcDst) return zanStsNullPtr;
    bb_hor_simd(pSrcDst, srcDstStep, 0);
    return zanStsOk;
}

ZanStatus zaniFilterBlockBoundaryVerEdge_H263_8u_C1IR(Zan8u* pSrcDst, Zan32s srcDstStep) {
    if (!pSrcDst) return zanStsNullPtr;
    bb_ver_simd(pSrcDst, srcDstStep, 0);
    return zanStsOk;
}

ZanStatus zaniFilterDeblocking8x8HorEdge_MPEG4_8u_C1IR(Zan8u* pSrcDst, Zan32s srcDstStep, Zan32s QP, Zan32s THR1,
                                                        Zan32s THR2) {
    if (!pSrcDst) return zanStsNullPtr;
    if (qp_bad(QP)) return zanStsQpBad;
    mpeg4_hor_simd(pSrcDst, srcDstStep, QP, THR1, THR2);
    return zanStsOk;
}

ZanStatus zaniFilterDeblocking8x8VerEdge_MPEG4_8u_C1IR(Zan8u* pSrcDst, Zan32s srcDstStep, Zan32s QP, Zan32s THR1,
                                                        Zan32s THR2) {
    if (!pSrcDst) return zanStsNullPtr;
    if (qp_bad(QP)) return zanStsQpBad;
    mpeg4_ver_simd(pSrcDst, srcDstStep, QP, THR1, THR2);
    return zanStsOk;
}

ZanStatus zaniFilterDeringingThreshold_MPEG4_8u_P3R(const Zan8u* pSrcY, Zan32s srcStepY, const Zan8u* pSrcCb,
                                                     Zan32s srcStepCb, const Zan8u* pSrcCr, Zan32s srcStepCr,
                                                     Zan32s* pThreshold) {
    if (!pSrcY || !pSrcCb || !pSrcCr || !pThreshold) return zanStsNullPtr;
    threshold_simd(pSrcY, srcStepY, pSrcCb, srcStepCb, pSrcCr, srcStepCr, pThreshold);
    return zanStsOk;
}

ZanStatus zaniFilterDeringingSmooth8x8_MPEG4_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep,
                                                     Zan32s QP, Zan32s threshold) {
    if (!pSrc || !pDst) return zanStsNullPtr;
    if (qp_bad(QP)) return zanStsQpBad;
    if (QP == 1) {
        // The block as it stands: the whole source first, then the output.
        __m128i r[8];
        for (int y = 0; y < 8; ++y) r[y] = simd::load8(pSrc + static_cast<std::ptrdiff_t>(srcStep) * y);
        for (int y = 0; y < 8; ++y) simd::store8(pDst + static_cast<std::ptrdiff_t>(dstStep) * y, r[y]);
        return zanStsOk;
    }
    dering_simd(pSrc, srcStep, pDst, dstStep, QP, threshold);
    return zanStsOk;
}

}  // namespace zan::ZAN_PATH
