// VC-1 in-loop deblocking and overlap smoothing.
//
// The scalar rules define every result: the deblocking rule follows the loop
// filter of SMPTE 421M line by line (the third line of each 4-line segment
// first, the other three only if it was filtered); the smoothing rule is the
// overlap filter with its 16-bit saturating arithmetic.  The vector kernels
// run the 8 lines of a kernel at once in 16-bit lanes: every line is
// evaluated, then masked with its segment's third-line decision and the
// segment flags.  Vertical edges are transposed into registers once and the
// two changed samples of each row are written back as one 16-bit pair.
#include "vc1/vc1filter.h"

#include <cstddef>
#include <cstring>

#include "common/scalar.h"
#include "common/simd.h"
#include "frame/bodies.h"

namespace zan::ZAN_PATH::vc1filter {
namespace {

using namespace zan::vc1filter;

// ============================================================ scalar rules

inline Zan8u clamp255(Zan32s v) { return static_cast<Zan8u>(v < 0 ? 0 : v > 255 ? 255 : v); }
inline Zan32s iabs(Zan32s v) { return v < 0 ? -v : v; }
inline Zan32s sign(Zan32s v) { return v < 0 ? -1 : v > 0 ? 1 : 0; }

// One line of the loop filter: s points at p5, x is the byte distance from
// one sample to the next across the edge.  Returns whether the line passed
// the filter test (and was filtered, possibly by 0).
bool deblock_line(Zan8u* s, std::ptrdiff_t x, Zan32s quant) {
    auto P = [&](int k) { return static_cast<Zan32s>(s[(k - 5) * x]); };
    const Zan32s a0 = (2 * (P(3) - P(6)) - 5 * (P(4) - P(5)) + 4) >> 3;
    if (!(iabs(a0) < quant)) return false;
    const Zan32s a1 = (2 * (P(1) - P(4)) - 5 * (P(2) - P(3)) + 4) >> 3;
    const Zan32s a2 = (2 * (P(5) - P(8)) - 5 * (P(6) - P(7)) + 4) >> 3;
    const Zan32s a3 = iabs(a1) < iabs(a2) ? iabs(a1) : iabs(a2);
    if (!(a3 < iabs(a0))) return false;
    const Zan32s clip = (P(4) - P(5)) / 2;
    if (clip == 0) return false;
    Zan32s d = 5 * (sign(a0) * a3 - a0) / 8;
    if (clip > 0) {
        if (d < 0) d = 0;
        if (d > clip) d = clip;
    } else {
        if (d > 0) d = 0;
        if (d < clip) d = clip;
    }
    s[-x] = clamp255(P(4) - d);
    s[0] = clamp255(P(5) + d);
    return true;
}

// A segment of 4 lines, line k at s + k * line: the third line decides.
void deblock_segment(Zan8u* s, std::ptrdiff_t line, std::ptrdiff_t x, Zan32s quant) {
    if (!deblock_line(s + 2 * line, x, quant)) return;
    deblock_line(s, x, quant);
    deblock_line(s + line, x, quant);
    deblock_line(s + 3 * line, x, quant);
}

// 8 lines across a vertical (V) or horizontal edge, Ch interleaved planes.
template <bool V, int Ch>
void deblock_rule(Zan8u* p, Zan32s step, Zan32s quant, Zan32u mask) {
    const std::ptrdiff_t line = V ? static_cast<std::ptrdiff_t>(step) : Ch;
    const std::ptrdiff_t x = V ? Ch : static_cast<std::ptrdiff_t>(step);
    for (int c = 0; c < Ch; ++c)
        for (int seg = 0; seg < 2; ++seg)
            if (!((mask >> (2 * c + seg)) & 1)) deblock_segment(p + c + 4 * seg * line, line, x, quant);
}

inline Zan16s sat16(Zan32s v) { return static_cast<Zan16s>(v < -32768 ? -32768 : v > 32767 ? 32767 : v); }
// 7 x modulo 2^16.
inline Zan16s times7(Zan16s v) { return static_cast<Zan16s>(static_cast<Zan16u>(v * 7)); }

// The overlap filter on one line; y receives the four outputs.
void smooth_line(Zan16s x0, Zan16s x1, Zan16s x2, Zan16s x3, Zan16s r, Zan8u y[4]) {
    const Zan16s r7 = static_cast<Zan16s>(7 - r);
    y[0] = clamp255(sat16(sat16(times7(x0) + x3) + r) >> 3);
    y[1] = clamp255(sat16(sat16(sat16(sat16(times7(x1) - x0) + x2) + x3) + r7) >> 3);
    y[2] = clamp255(sat16(sat16(sat16(sat16(times7(x2) + x0) + x1) - x3) + r) >> 3);
    y[3] = clamp255(sat16(sat16(times7(x3) + x0) + r7) >> 3);
}

// One plane's 8 lines; channel c of Ch interleaved planes in dst.
template <bool V, int Ch>
void smooth_plane(const Zan16s* a, Zan32s aStep, const Zan16s* b, Zan32s bStep, Zan8u* dst, Zan32s dstStep,
                  Zan32s kind, int c) {
    using scalar::at;
    using scalar::put;
    for (Zan32s i = 0; i < 8; ++i) {
        Zan8u y[4];
        if (V) {
            smooth_line(at(a, aStep, 0, i), at(a, aStep, 1, i), at(b, bStep, 0, i), at(b, bStep, 1, i),
                        kRounding[kind][i], y);
            for (Zan32s k = 0; k < 4; ++k) put(dst, dstStep, (k - 2) * Ch + c, i, y[k]);
        } else {
            smooth_line(at(a, aStep, i, 0), at(a, aStep, i, 1), at(b, bStep, i, 0), at(b, bStep, i, 1),
                        kRounding[kind][i], y);
            for (Zan32s k = 0; k < 4; ++k) put(dst, dstStep, i * Ch + c, k - 2, y[k]);
        }
    }
}

template <bool V>
void smooth_rule(const Zan16s* a, Zan32s aStep, const Zan16s* b, Zan32s bStep, Zan8u* dst, Zan32s dstStep,
                 Zan32s kind) {
    smooth_plane<V, 1>(a, aStep, b, bStep, dst, dstStep, kind, 0);
}

template <bool V>
void smooth2_rule(const Zan16s* aU, Zan32s aStepU, const Zan16s* bU, Zan32s bStepU, const Zan16s* aV,
                  Zan32s aStepV, const Zan16s* bV, Zan32s bStepV, Zan8u* dst, Zan32s dstStep, Zan32s kind) {
    smooth_plane<V, 2>(aU, aStepU, bU, bStepU, dst, dstStep, kind, 0);
    smooth_plane<V, 2>(aV, aStepV, bV, bStepV, dst, dstStep, kind, 1);
}

// ========================================================= vector kernels

using simd::load16;
using simd::load4;
using simd::load8;
using simd::row;
using simd::store16;
using simd::store8;

// Lanes turned off by a 2-bit segment mask: bit 0 lanes 0-3, bit 1 lanes 4-7.
alignas(16) constexpr Zan16s kLaneOff[4][8] = {
    {0, 0, 0, 0, 0, 0, 0, 0},
    {-1, -1, -1, -1, 0, 0, 0, 0},
    {0, 0, 0, 0, -1, -1, -1, -1},
    {-1, -1, -1, -1, -1, -1, -1, -1},
};
inline __m128i lanes_on(Zan32u mask2) {
    return _mm_xor_si128(_mm_load_si128(reinterpret_cast<const __m128i*>(kLaneOff[mask2 & 3])),
                         _mm_set1_epi16(-1));
}

inline __m128i quant_vec(Zan32s quant) {
    // |a0| is at most 1789, so a larger quant acts as 2047 and a negative one as 0.
    return _mm_set1_epi16(static_cast<Zan16s>(quant < 0 ? 0 : quant > 2047 ? 2047 : quant));
}

// (2 (q1 - q4) - 5 (q2 - q3) + 4) >> 3.
inline __m128i edge_term(__m128i q1, __m128i q2, __m128i q3, __m128i q4) {
    const __m128i t = _mm_sub_epi16(q1, q4), u = _mm_sub_epi16(q2, q3);
    const __m128i v = _mm_sub_epi16(_mm_add_epi16(t, t), _mm_add_epi16(_mm_slli_epi16(u, 2), u));
    return _mm_srai_epi16(_mm_add_epi16(v, _mm_set1_epi16(4)), 3);
}

// The loop filter on 8 lines: P[0..7] hold p1..p8 (16-bit lanes, a line per
// lane); on is all-ones in the lanes of segments turned on.  p4 and p5 come
// back in P[3] and P[4].
inline void filter8(__m128i P[8], __m128i quant, __m128i on) {
    const __m128i a0 = edge_term(P[2], P[3], P[4], P[5]);
    const __m128i a1 = edge_term(P[0], P[1], P[2], P[3]);
    const __m128i a2 = edge_term(P[4], P[5], P[6], P[7]);
    const __m128i abs0 = _mm_abs_epi16(a0);
    const __m128i a3 = _mm_min_epi16(_mm_abs_epi16(a1), _mm_abs_epi16(a2));
    const __m128i diff = _mm_sub_epi16(P[3], P[4]);
    const __m128i clip = _mm_srli_epi16(_mm_abs_epi16(diff), 1);  // |(p4 - p5) / 2|
    __m128i pass = _mm_and_si128(_mm_cmplt_epi16(abs0, quant), _mm_cmplt_epi16(a3, abs0));
    pass = _mm_andnot_si128(_mm_cmpeq_epi16(clip, _mm_setzero_si128()), pass);
    // Each segment follows its third line (lanes 2 and 6).
    const __m128i third = _mm_shufflehi_epi16(_mm_shufflelo_epi16(pass, 0xAA), 0xAA);
    // d moves against a0; it is kept only when that is the direction of clip.
    const __m128i against = _mm_srai_epi16(_mm_xor_si128(a0, diff), 15);
    const __m128i apply = _mm_and_si128(_mm_and_si128(pass, third), _mm_and_si128(on, against));
    const __m128i t = _mm_sub_epi16(abs0, a3);
    __m128i d = _mm_srli_epi16(_mm_add_epi16(_mm_slli_epi16(t, 2), t), 3);  // |d| before the clip
    d = _mm_and_si128(_mm_min_epi16(d, clip), apply);
    const __m128i s = _mm_srai_epi16(diff, 15);
    d = _mm_sub_epi16(_mm_xor_si128(d, s), s);  // the sign of clip
    P[3] = _mm_sub_epi16(P[3], d);
    P[4] = _mm_add_epi16(P[4], d);
}

// 8 rows of 8 bytes (low halves of r[0..7]) into 8 columns of 16-bit lanes.
inline void transpose8x8_to16(const __m128i r[8], __m128i P[8]) {
    const __m128i t01 = _mm_unpacklo_epi8(r[0], r[1]), t23 = _mm_unpacklo_epi8(r[2], r[3]);
    const __m128i t45 = _mm_unpacklo_epi8(r[4], r[5]), t67 = _mm_unpacklo_epi8(r[6], r[7]);
    const __m128i u0 = _mm_unpacklo_epi16(t01, t23), u1 = _mm_unpackhi_epi16(t01, t23);
    const __m128i v0 = _mm_unpacklo_epi16(t45, t67), v1 = _mm_unpackhi_epi16(t45, t67);
    const __m128i w[4] = {_mm_unpacklo_epi32(u0, v0), _mm_unpackhi_epi32(u0, v0), _mm_unpacklo_epi32(u1, v1),
                          _mm_unpackhi_epi32(u1, v1)};
    const __m128i z = _mm_setzero_si128();
    for (int k = 0; k < 4; ++k) {
        P[2 * k] = _mm_unpacklo_epi8(w[k], z);
        P[2 * k + 1] = _mm_unpackhi_epi8(w[k], z);
    }
}

inline void store2(void* p, int v) {
    const Zan16u w = static_cast<Zan16u>(v);
    std::memcpy(p, &w, 2);
}
inline void store4(void* p, __m128i v) {
    const Zan32s w = _mm_cvtsi128_si32(v);
    std::memcpy(p, &w, 4);
}

void deblock_ver_simd(Zan8u* p, Zan32s step, Zan32s quant, Zan32u mask) {
    if ((mask & 3) == 3) return;
    __m128i r[8], P[8];
    for (int i = 0; i < 8; ++i) r[i] = load8(row(p - 4, step, i));
    transpose8x8_to16(r, P);
    filter8(P, quant_vec(quant), lanes_on(mask));
    const __m128i pair = _mm_unpacklo_epi8(_mm_packus_epi16(P[3], P[3]), _mm_packus_epi16(P[4], P[4]));
    store2(row(p - 1, step, 0), _mm_extract_epi16(pair, 0));
    store2(row(p - 1, step, 1), _mm_extract_epi16(pair, 1));
    store2(row(p - 1, step, 2), _mm_extract_epi16(pair, 2));
    store2(row(p - 1, step, 3), _mm_extract_epi16(pair, 3));
    store2(row(p - 1, step, 4), _mm_extract_epi16(pair, 4));
    store2(row(p - 1, step, 5), _mm_extract_epi16(pair, 5));
    store2(row(p - 1, step, 6), _mm_extract_epi16(pair, 6));
    store2(row(p - 1, step, 7), _mm_extract_epi16(pair, 7));
}

void deblock_hor_simd(Zan8u* p, Zan32s step, Zan32s quant, Zan32u mask) {
    if ((mask & 3) == 3) return;
    const __m128i z = _mm_setzero_si128();
    __m128i P[8];
    for (int k = 0; k < 8; ++k) P[k] = _mm_unpacklo_epi8(load8(row(p, step, k - 4)), z);
    filter8(P, quant_vec(quant), lanes_on(mask));
    store8(row(p, step, -1), _mm_packus_epi16(P[3], P[3]));
    store8(p, _mm_packus_epi16(P[4], P[4]));
}

void deblock_ver_nv12_simd(Zan8u* p, Zan32s step, Zan32s quant, Zan32u mask) {
    if ((mask & 15) == 15) return;
    const __m128i split = _mm_setr_epi8(0, 2, 4, 6, 8, 10, 12, 14, 1, 3, 5, 7, 9, 11, 13, 15);
    __m128i ru[8], rv[8], U[8], V[8];
    for (int i = 0; i < 8; ++i) {
        ru[i] = _mm_shuffle_epi8(load16(row(p - 8, step, i)), split);
        rv[i] = _mm_unpackhi_epi64(ru[i], ru[i]);
    }
    transpose8x8_to16(ru, U);
    transpose8x8_to16(rv, V);
    const __m128i q = quant_vec(quant);
    filter8(U, q, lanes_on(mask));
    filter8(V, q, lanes_on(mask >> 2));
    // Per row: U p4, V p4, U p5, V p5.
    const __m128i a = _mm_packus_epi16(U[3], V[3]), b = _mm_packus_epi16(U[4], V[4]);
    const __m128i x = _mm_unpacklo_epi8(a, _mm_unpackhi_epi64(a, a));
    const __m128i y = _mm_unpacklo_epi8(b, _mm_unpackhi_epi64(b, b));
    __m128i lo = _mm_unpacklo_epi16(x, y), hi = _mm_unpackhi_epi16(x, y);
    for (int i = 0; i < 4; ++i) {
        store4(row(p - 2, step, i), lo);
        store4(row(p - 2, step, i + 4), hi);
        lo = _mm_srli_si128(lo, 4);
        hi = _mm_srli_si128(hi, 4);
    }
}

void deblock_hor_nv12_simd(Zan8u* p, Zan32s step, Zan32s quant, Zan32u mask) {
    if ((mask & 15) == 15) return;
    const __m128i low = _mm_set1_epi16(0xFF);
    __m128i U[8], V[8];
    for (int k = 0; k < 8; ++k) {
        const __m128i v = load16(row(p, step, k - 4));
        U[k] = _mm_and_si128(v, low);
        V[k] = _mm_srli_epi16(v, 8);
    }
    const __m128i q = quant_vec(quant);
    filter8(U, q, lanes_on(mask));
    filter8(V, q, lanes_on(mask >> 2));
    store16(row(p, step, -1), _mm_or_si128(U[3], _mm_slli_epi16(V[3], 8)));
    store16(p, _mm_or_si128(U[4], _mm_slli_epi16(V[4], 8)));
}

// The overlap filter on 8 lines in 16-bit lanes; x[0..3] become y0..y3 (not
// yet saturated to 8 bits).
inline void smooth8(__m128i x[4], Zan32s kind) {
    const __m128i r = _mm_loadu_si128(reinterpret_cast<const __m128i*>(kRounding[kind]));
    const __m128i r7 = _mm_sub_epi16(_mm_set1_epi16(7), r);
    const __m128i seven = _mm_set1_epi16(7);
    const __m128i x0 = x[0], x1 = x[1], x2 = x[2], x3 = x[3];
    x[0] = _mm_adds_epi16(_mm_adds_epi16(_mm_mullo_epi16(x0, seven), x3), r);
    x[1] = _mm_adds_epi16(
        _mm_adds_epi16(_mm_adds_epi16(_mm_subs_epi16(_mm_mullo_epi16(x1, seven), x0), x2), x3), r7);
    x[2] = _mm_adds_epi16(
        _mm_subs_epi16(_mm_adds_epi16(_mm_adds_epi16(_mm_mullo_epi16(x2, seven), x0), x1), x3), r);
    x[3] = _mm_adds_epi16(_mm_adds_epi16(_mm_mullo_epi16(x3, seven), x0), r7);
    for (int k = 0; k < 4; ++k) x[k] = _mm_srai_epi16(x[k], 3);
}

// Rows 0 and 1 of a and b (8 samples each) as x0..x3.
inline void load_hor(const Zan16s* a, Zan32s aStep, const Zan16s* b, Zan32s bStep, __m128i x[4]) {
    x[0] = load16(a);
    x[1] = load16(row(a, aStep, 1));
    x[2] = load16(b);
    x[3] = load16(row(b, bStep, 1));
}

// Samples 0 and 1 of 8 rows of a and of b as x0..x3 (a line per lane).
inline void load_ver(const Zan16s* a, Zan32s aStep, const Zan16s* b, Zan32s bStep, __m128i x[4]) {
    __m128i r[8];
    for (int i = 0; i < 8; ++i) r[i] = _mm_unpacklo_epi32(load4(row(a, aStep, i)), load4(row(b, bStep, i)));
    const __m128i A = _mm_unpacklo_epi16(r[0], r[1]), B = _mm_unpacklo_epi16(r[2], r[3]);
    const __m128i C = _mm_unpacklo_epi16(r[4], r[5]), D = _mm_unpacklo_epi16(r[6], r[7]);
    const __m128i E = _mm_unpacklo_epi32(A, B), F = _mm_unpackhi_epi32(A, B);
    const __m128i G = _mm_unpacklo_epi32(C, D), H = _mm_unpackhi_epi32(C, D);
    x[0] = _mm_unpacklo_epi64(E, G);
    x[1] = _mm_unpackhi_epi64(E, G);
    x[2] = _mm_unpacklo_epi64(F, H);
    x[3] = _mm_unpackhi_epi64(F, H);
}

void smooth_hor_simd(const Zan16s* a, Zan32s aStep, const Zan16s* b, Zan32s bStep, Zan8u* dst, Zan32s dstStep,
                     Zan32s kind) {
    __m128i x[4];
    load_hor(a, aStep, b, bStep, x);
    smooth8(x, kind);
    const __m128i y01 = _mm_packus_epi16(x[0], x[1]), y23 = _mm_packus_epi16(x[2], x[3]);
    store8(row(dst, dstStep, -2), y01);
    store8(row(dst, dstStep, -1), _mm_unpackhi_epi64(y01, y01));
    store8(dst, y23);
    store8(row(dst, dstStep, 1), _mm_unpackhi_epi64(y23, y23));
}

void smooth_ver_simd(const Zan16s* a, Zan32s aStep, const Zan16s* b, Zan32s bStep, Zan8u* dst, Zan32s dstStep,
                     Zan32s kind) {
    __m128i x[4];
    load_ver(a, aStep, b, bStep, x);
    smooth8(x, kind);
    const __m128i y01 = _mm_packus_epi16(x[0], x[1]), y23 = _mm_packus_epi16(x[2], x[3]);
    const __m128i p01 = _mm_unpacklo_epi8(y01, _mm_unpackhi_epi64(y01, y01));  // y0 y1 by row
    const __m128i p23 = _mm_unpacklo_epi8(y23, _mm_unpackhi_epi64(y23, y23));
    __m128i lo = _mm_unpacklo_epi16(p01, p23), hi = _mm_unpackhi_epi16(p01, p23);
    for (int i = 0; i < 4; ++i) {
        store4(row(dst - 2, dstStep, i), lo);
        store4(row(dst - 2, dstStep, i + 4), hi);
        lo = _mm_srli_si128(lo, 4);
        hi = _mm_srli_si128(hi, 4);
    }
}

// U and V outputs (16-bit lanes) interleaved into bytes.
inline __m128i interleave_uv(__m128i u, __m128i v) {
    return _mm_unpacklo_epi8(_mm_packus_epi16(u, u), _mm_packus_epi16(v, v));
}

void smooth_hor_nv12_simd(const Zan16s* aU, Zan32s aStepU, const Zan16s* bU, Zan32s bStepU, const Zan16s* aV,
                          Zan32s aStepV, const Zan16s* bV, Zan32s bStepV, Zan8u* dst, Zan32s dstStep,
                          Zan32s kind) {
    __m128i u[4], v[4];
    load_hor(aU, aStepU, bU, bStepU, u);
    load_hor(aV, aStepV, bV, bStepV, v);
    smooth8(u, kind);
    smooth8(v, kind);
    for (int k = 0; k < 4; ++k) store16(row(dst, dstStep, k - 2), interleave_uv(u[k], v[k]));
}

void smooth_ver_nv12_simd(const Zan16s* aU, Zan32s aStepU, const Zan16s* bU, Zan32s bStepU, const Zan16s* aV,
                          Zan32s aStepV, const Zan16s* bV, Zan32s bStepV, Zan8u* dst, Zan32s dstStep,
                          Zan32s kind) {
    __m128i u[4], v[4];
    load_ver(aU, aStepU, bU, bStepU, u);
    load_ver(aV, aStepV, bV, bStepV, v);
    smooth8(u, kind);
    smooth8(v, kind);
    // Per row: U y0, V y0, U y1, V y1, U y2, V y2, U y3, V y3.
    const __m128i q0 = interleave_uv(u[0], v[0]), q1 = interleave_uv(u[1], v[1]);
    const __m128i q2 = interleave_uv(u[2], v[2]), q3 = interleave_uv(u[3], v[3]);
    const __m128i l01 = _mm_unpacklo_epi16(q0, q1), h01 = _mm_unpackhi_epi16(q0, q1);  // rows 0-3, 4-7
    const __m128i l23 = _mm_unpacklo_epi16(q2, q3), h23 = _mm_unpackhi_epi16(q2, q3);
    const __m128i rows[4] = {_mm_unpacklo_epi32(l01, l23), _mm_unpackhi_epi32(l01, l23),
                             _mm_unpacklo_epi32(h01, h23), _mm_unpackhi_epi32(h01, h23)};
    for (int k = 0; k < 4; ++k) {
        store8(row(dst - 4, dstStep, 2 * k), rows[k]);
        store8(row(dst - 4, dstStep, 2 * k + 1), _mm_unpackhi_epi64(rows[k], rows[k]));
    }
}

// ============================================================= catalogue

constexpr Zan32s kV = kVertical, kC2 = kTwoChannels;

const KernelPair<DeblockFn> kDeblock[] = {
    {"deblock_ver", deblock_rule<true, 1>, deblock_ver_simd, 8, 8, kV},
    {"deblock_hor", deblock_rule<false, 1>, deblock_hor_simd, 8, 8, 0},
    {"deblock_ver_nv12", deblock_rule<true, 2>, deblock_ver_nv12_simd, 8, 8, kV | kC2},
    {"deblock_hor_nv12", deblock_rule<false, 2>, deblock_hor_nv12_simd, 8, 8, kC2},
};

const KernelPair<SmoothFn> kSmooth[] = {
    {"smooth_ver", smooth_rule<true>, smooth_ver_simd, 4, 8, kV},
    {"smooth_hor", smooth_rule<false>, smooth_hor_simd, 8, 4, 0},
};

const KernelPair<Smooth2Fn> kSmooth2[] = {
    {"smooth_ver_nv12", smooth2_rule<true>, smooth_ver_nv12_simd, 4, 8, kV | kC2},
    {"smooth_hor_nv12", smooth2_rule<false>, smooth_hor_nv12_simd, 8, 4, kC2},
};

}  // namespace

const Kernels kernels = {kDeblock, kSmooth, kSmooth2};

}  // namespace zan::ZAN_PATH::vc1filter

// =============================================================== exports

namespace zan::ZAN_PATH {

namespace {

using namespace zan::ZAN_PATH::vc1filter;

inline const Zan16s* rows16(const Zan16s* p, Zan32s step, Zan32s n) {
    return reinterpret_cast<const Zan16s*>(reinterpret_cast<const Zan8u*>(p) + static_cast<std::ptrdiff_t>(step) * n);
}
inline Zan8u* rows8(Zan8u* p, Zan32s step, Zan32s n) { return p + static_cast<std::ptrdiff_t>(step) * n; }

}  // namespace

ZanStatus zaniFilterDeblockingLuma_VerEdge_VC1_8u_C1IR(Zan8u* pSrcDst, Zan32s pQuant, Zan32s srcDstStep,
                                                       Zan32u edgeDisabledFlag) {
    if (!pSrcDst) return zanStsNullPtr;
    deblock_ver_simd(pSrcDst, srcDstStep, pQuant, edgeDisabledFlag & 3);
    deblock_ver_simd(rows8(pSrcDst, srcDstStep, 8), srcDstStep, pQuant, (edgeDisabledFlag & 12) >> 2);
    return zanStsOk;
}

ZanStatus zaniFilterDeblockingLuma_HorEdge_VC1_8u_C1IR(Zan8u* pSrcDst, Zan32s pQuant, Zan32s srcDstStep,
                                                       Zan32u edgeDisabledFlag) {
    if (!pSrcDst) return zanStsNullPtr;
    deblock_hor_simd(pSrcDst, srcDstStep, pQuant, edgeDisabledFlag & 3);
    deblock_hor_simd(pSrcDst + 8, srcDstStep, pQuant, (edgeDisabledFlag & 12) >> 2);
    return zanStsOk;
}

ZanStatus zaniFilterDeblockingChroma_VerEdge_VC1_8u_C1IR(Zan8u* pSrcDst, Zan32s pQuant, Zan32s srcDstStep,
                                                         Zan32u edgeDisabledFlag) {
    if (!pSrcDst) return zanStsNullPtr;
    // The chroma vertical edge takes its two segment bits from bits 1 and 2.
    deblock_ver_simd(pSrcDst, srcDstStep, pQuant, (edgeDisabledFlag & 6) >> 1);
    return zanStsOk;
}

ZanStatus zaniFilterDeblockingChroma_HorEdge_VC1_8u_C1IR(Zan8u* pSrcDst, Zan32s pQuant, Zan32s srcDstStep,
                                                         Zan32u edgeDisabledFlag) {
    if (!pSrcDst) return zanStsNullPtr;
    deblock_hor_simd(pSrcDst, srcDstStep, pQuant, edgeDisabledFlag & 3);
    return zanStsOk;
}

ZanStatus zaniFilterDeblockingChroma_VerEdge_VC1_8u_C2IR(Zan8u* pSrcDst, Zan32s pQuant, Zan32s srcDstStep,
                                                         Zan32u edgeDisabledFlagU, Zan32u edgeDisabledFlagV) {
    if (!pSrcDst) return zanStsNullPtr;
    deblock_ver_nv12_simd(pSrcDst, srcDstStep, pQuant, (edgeDisabledFlagU & 3) | ((edgeDisabledFlagV & 3) << 2));
    return zanStsOk;
}

ZanStatus zaniFilterDeblockingChroma_HorEdge_VC1_8u_C2IR(Zan8u* pSrcDst, Zan32s pQuant, Zan32s srcDstStep,
                                                         Zan32u edgeDisabledFlagU, Zan32u edgeDisabledFlagV) {
    if (!pSrcDst) return zanStsNullPtr;
    deblock_hor_nv12_simd(pSrcDst, srcDstStep, pQuant, (edgeDisabledFlagU & 3) | ((edgeDisabledFlagV & 3) << 2));
    return zanStsOk;
}

ZanStatus zaniSmoothingLuma_HorEdge_VC1_16s8u_C1R(const Zan16s* pSrcUpper, Zan32s srcUpperStep,
                                                  const Zan16s* pSrcBottom, Zan32s srcBottomStep, Zan8u* pDst,
                                                  Zan32s dstStep, Zan32u edgeDisableFlag) {
    if (!pSrcUpper || !pSrcBottom || !pDst) return zanStsNullPtr;
    // A set bit in a pair turns its eight columns on.
    if (edgeDisableFlag & 3) smooth_hor_simd(pSrcUpper, srcUpperStep, pSrcBottom, srcBottomStep, pDst, dstStep, 0);
    if (edgeDisableFlag & 12)
        smooth_hor_simd(pSrcUpper + 8, srcUpperStep, pSrcBottom + 8, srcBottomStep, pDst + 8, dstStep, 0);
    return zanStsOk;
}

ZanStatus zaniSmoothingLuma_VerEdge_VC1_16s8u_C1R(const Zan16s* pSrcLeft, Zan32s srcLeftStep,
                                                  const Zan16s* pSrcRight, Zan32s srcRightStep, Zan8u* pDst,
                                                  Zan32s dstStep, Zan32s fieldNeighbourFlag,
                                                  Zan32u edgeDisableFlag) {
    if (!pSrcLeft || !pSrcRight || !pDst) return zanStsNullPtr;
    if (edgeDisableFlag == 0) return zanStsOk;
    if (fieldNeighbourFlag == 0) {
        if (edgeDisableFlag & 3) smooth_ver_simd(pSrcLeft, srcLeftStep, pSrcRight, srcRightStep, pDst, dstStep, 0);
        if (edgeDisableFlag & 12)
            smooth_ver_simd(rows16(pSrcLeft, srcLeftStep, 8), srcLeftStep, rows16(pSrcRight, srcRightStep, 8),
                            srcRightStep, rows8(pDst, dstStep, 8), dstStep, 0);
        return zanStsOk;
    }
    if (fieldNeighbourFlag < 1 || fieldNeighbourFlag > 3) return zanStsOk;
    // A frame-stored block is read by alternate rows; a field-stored one by
    // its first and then its second 8 rows.
    const bool leftFrame = fieldNeighbourFlag == 1, rightFrame = fieldNeighbourFlag == 2;
    const Zan32s ls = leftFrame ? 2 * srcLeftStep : srcLeftStep;
    const Zan32s rs = rightFrame ? 2 * srcRightStep : srcRightStep;
    const Zan16s* l2 = rows16(pSrcLeft, srcLeftStep, leftFrame ? 1 : 8);
    const Zan16s* r2 = rows16(pSrcRight, srcRightStep, rightFrame ? 1 : 8);
    smooth_ver_simd(pSrcLeft, ls, pSrcRight, rs, pDst, 2 * dstStep, 2);
    smooth_ver_simd(l2, ls, r2, rs, rows8(pDst, dstStep, 1), 2 * dstStep, 1);
    return zanStsOk;
}

ZanStatus zaniSmoothingChroma_HorEdge_VC1_16s8u_C1R(const Zan16s* pSrcUpper, Zan32s srcUpperStep,
                                                    const Zan16s* pSrcBottom, Zan32s srcBottomStep, Zan8u* pDst,
                                                    Zan32s dstStep) {
    if (!pSrcUpper || !pSrcBottom || !pDst) return zanStsNullPtr;
    smooth_hor_simd(pSrcUpper, srcUpperStep, pSrcBottom, srcBottomStep, pDst, dstStep, 0);
    return zanStsOk;
}

ZanStatus zaniSmoothingChroma_VerEdge_VC1_16s8u_C1R(const Zan16s* pSrcLeft, Zan32s srcLeftStep,
                                                    const Zan16s* pSrcRight, Zan32s srcRightStep, Zan8u* pDst,
                                                    Zan32s dstStep) {
    if (!pSrcLeft || !pSrcRight || !pDst) return zanStsNullPtr;
    smooth_ver_simd(pSrcLeft, srcLeftStep, pSrcRight, srcRightStep, pDst, dstStep, 0);
    return zanStsOk;
}

ZanStatus zaniSmoothingChroma_HorEdge_VC1_16s8u_P2C2R(const Zan16s* pSrcUpperU, Zan32s srcUpperStepU,
                                                      const Zan16s* pSrcBottomU, Zan32s srcBottomStepU,
                                                      const Zan16s* pSrcUpperV, Zan32s srcUpperStepV,
                                                      const Zan16s* pSrcBottomV, Zan32s srcBottomStepV,
                                                      Zan8u* pDst, Zan32s dstStep) {
    if (!pSrcUpperU || !pSrcBottomU || !pSrcUpperV || !pSrcBottomV || !pDst) return zanStsNullPtr;
    smooth_hor_nv12_simd(pSrcUpperU, srcUpperStepU, pSrcBottomU, srcBottomStepU, pSrcUpperV, srcUpperStepV,
                         pSrcBottomV, srcBottomStepV, pDst, dstStep, 0);
    return zanStsOk;
}

ZanStatus zaniSmoothingChroma_VerEdge_VC1_16s8u_P2C2R(const Zan16s* pSrcLeftU, Zan32s srcLeftStepU,
                                                      const Zan16s* pSrcRightU, Zan32s srcRightStepU,
                                                      const Zan16s* pSrcLeftV, Zan32s srcLeftStepV,
                                                      const Zan16s* pSrcRightV, Zan32s srcRightStepV,
                                                      Zan8u* pDst, Zan32s dstStep) {
    if (!pSrcLeftU || !pSrcRightU || !pSrcLeftV || !pSrcRightV || !pDst) return zanStsNullPtr;
    smooth_ver_nv12_simd(pSrcLeftU, srcLeftStepU, pSrcRightU, srcRightStepU, pSrcLeftV, srcLeftStepV, pSrcRightV,
                         srcRightStepV, pDst, dstStep, 0);
    return zanStsOk;
}

}  // namespace zan::ZAN_PATH
