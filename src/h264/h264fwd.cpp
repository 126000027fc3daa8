// H.264 forward transforms and quantisation: the 4x4 core transform, the
// 8x8 forward transform, the luma and chroma DC stages, the flat and the
// scaled quantisers with their count of levels and last scan position, and
// the level-scale generators.
//
// Vector kernels exist for the 16-bit forms that an encoder runs per block
// (the 4x4 and 8x8 transforms, the flat 4x4 transform and quantisation, the
// flat DC stages, the 16-bit level kernels).  The 32-bit forms, the
// second-generation DC stages and the generators run their scalar rule,
// which is the implementation there.
#include "h264/h264fwd.h"

#include <cstring>

#include "common/simd.h"
#include "frame/bodies.h"

namespace zan::ZAN_PATH::h264fwd {
namespace {

using namespace zan::h264fwd;

constexpr Zan32s kLevelLimit = 2063;  // largest level magnitude the flat quantisers accept

// ============================================================ scalar rules

template <class T>
constexpr T wrap(Zan64s v) {
    return static_cast<T>(v);  // modular narrowing
}
template <class T>
constexpr Zan64s mag(T c) {
    return c < 0 ? -Zan64s{c} : Zan64s{c};
}

// One 4x4 core butterfly: (x0..x3) -> (y0..y3), wrapping in T.
template <class T>
void core4(T& x0, T& x1, T& x2, T& x3) {
    const Zan64s a = x0, b = x1, c = x2, d = x3;
    x0 = wrap<T>(a + b + c + d);
    x1 = wrap<T>(2 * a + b - c - 2 * d);
    x2 = wrap<T>(a - b - c + d);
    x3 = wrap<T>(a - 2 * b + 2 * c - d);
}

// The 4x4 core transform of b (raster), rows then columns.
template <class T>
void core4x4(T* b) {
    for (int i = 0; i < 4; ++i) core4(b[4 * i], b[4 * i + 1], b[4 * i + 2], b[4 * i + 3]);
    for (int j = 0; j < 4; ++j) core4(b[j], b[4 + j], b[8 + j], b[12 + j]);
}

template <class In, class T>
void fwd4x4_rule_t(const In* src, T* dst) {
    T b[16];
    for (int k = 0; k < 16; ++k) b[k] = wrap<T>(src[k]);
    core4x4(b);
    std::memcpy(dst, b, sizeof b);
}
void fwd4x4_rule(const Zan16s* src, Zan16s* dst) { fwd4x4_rule_t(src, dst); }

void fwd_pred_rule(const Zan8u* src, Zan32s step, Zan16s* dst) {
    Zan16s b[16];
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j) b[4 * i + j] = src[static_cast<ptrdiff_t>(step) * i + j];
    core4x4(b);
    std::memcpy(dst, b, sizeof b);
}

// One 8x8 forward butterfly over x[0], x[s], ..., x[7s], every intermediate
// wrapping in T (the shifts act on the wrapped values).
template <class T>
void core8(T* x, int s) {
    auto W = [](Zan64s v) { return wrap<T>(v); };
    const T s07 = W(Zan64s{x[0]} + x[7 * s]), s16 = W(Zan64s{x[s]} + x[6 * s]), s25 = W(Zan64s{x[2 * s]} + x[5 * s]),
            s34 = W(Zan64s{x[3 * s]} + x[4 * s]);
    const T d07 = W(Zan64s{x[0]} - x[7 * s]), d16 = W(Zan64s{x[s]} - x[6 * s]), d25 = W(Zan64s{x[2 * s]} - x[5 * s]),
            d34 = W(Zan64s{x[3 * s]} - x[4 * s]);
    const T a0 = W(Zan64s{s07} + s34), a1 = W(Zan64s{s16} + s25), a2 = W(Zan64s{s07} - s34), a3 = W(Zan64s{s16} - s25);
    const T a4 = W(Zan64s{d16} + d25 + d07 + (d07 >> 1));
    const T a5 = W(Zan64s{d07} - d34 - d25 - (d25 >> 1));
    const T a6 = W(Zan64s{d07} + d34 - d16 - (d16 >> 1));
    const T a7 = W(Zan64s{d16} - d25 + d34 + (d34 >> 1));
    x[0] = W(Zan64s{a0} + a1);
    x[s] = W(Zan64s{a4} + (a7 >> 2));
    x[2 * s] = W(Zan64s{a2} + (a3 >> 1));
    x[3 * s] = W(Zan64s{a5} + (a6 >> 2));
    x[4 * s] = W(Zan64s{a0} - a1);
    x[5 * s] = W(Zan64s{a6} - (a5 >> 2));
    x[6 * s] = W(Zan64s{a2 >> 1} - a3);
    x[7 * s] = W(Zan64s{a4 >> 2} - a7);
}

template <class T>
void fwd8x8_rule_t(const Zan16s* src, T* dst) {
    T b[64];
    for (int k = 0; k < 64; ++k) b[k] = src[k];
    for (int i = 0; i < 8; ++i) core8(b + 8 * i, 1);
    for (int j = 0; j < 8; ++j) core8(b + j, 8);
    std::memcpy(dst, b, sizeof b);
}
void fwd8x8_rule(const Zan16s* src, Zan16s* dst) { fwd8x8_rule_t(src, dst); }

// One level: magnitude (|c| * F + r) >> s, exact; then the sign of c.  16-bit
// levels keep the magnitude saturated to -32768..32767 (a negative factor
// gives a negative magnitude) and negate it in 16 bits; 32-bit levels keep
// the low 32 bits.
template <class Out>
Out level_of(Zan64s c, Zan64s factor, Zan32s shift, Zan64s round) {
    const Zan64s m = ((c < 0 ? -c : c) * factor + round) >> shift;
    if constexpr (sizeof(Out) == 2) {
        const Zan64s sat = m > 32767 ? 32767 : m < -32768 ? -32768 : m;
        return c < 0 ? wrap<Zan16s>(-sat) : wrap<Zan16s>(sat);
    } else {
        return c < 0 ? wrap<Zan32s>(-m) : wrap<Zan32s>(m);
    }
}

// n levels of src into dst (may be the same array), factors fac[k] (or
// fac[0] everywhere when oneFactor); returns the count of non-zero levels
// and leaves the largest scan[k] over them (0 when none) in *pLast (when
// scan is given).
template <class In, class Out>
Zan32s quant_block(const In* src, Out* dst, int n, const Zan16s* fac, bool oneFactor, Zan32s shift, Zan64s round,
                   const Zan16s* scan, Zan32s* pLast) {
    Out lev[64];
    Zan32s count = 0, last = 0;
    for (int k = 0; k < n; ++k) {
        lev[k] = level_of<Out>(src[k], fac[oneFactor ? 0 : k], shift, round);
        if (lev[k] != 0) {
            ++count;
            if (scan && scan[k] > last) last = scan[k];
        }
    }
    std::memcpy(dst, lev, sizeof(Out) * static_cast<size_t>(n));
    if (pLast) *pLast = last;
    return count;
}

template <int N>
Zan32s quant16_rule(const Zan16s* src, Zan16s* dst, const Zan16s* scale, Zan32s shift, Zan32s round,
                    const Zan16s* scan, Zan32s* pLast) {
    return quant_block(src, dst, N, scale, false, shift, round, scan, pLast);
}

// True when some level magnitude of the flat quantisers is above the limit.
bool over_limit(const Zan16s* c, int n, Zan64s factor0, const Zan16s* fac, Zan32s shift, Zan64s round) {
    for (int k = 0; k < n; ++k)
        if (((mag(c[k]) * (fac ? fac[k] : factor0) + round) >> shift) > kLevelLimit) return true;
    return false;
}

ZanStatus flat_quant_rule(Zan16s* p, Zan32s QP, Zan32s intra, const Zan16s* scan, Zan32s* pNum, Zan32s* pLast) {
    Zan16s t[16];
    fwd4x4_rule(p, t);
    const Zan32s shift = 15 + QP / 6;
    const Zan64s round = (Zan64s{1} << shift) / (intra ? 3 : 6);
    const Zan16s* fac = kQuant4x4[QP % 6];
    if (over_limit(t, 16, 0, fac, shift, round)) {
        std::memcpy(p, t, sizeof t);
        return zanStsCoefRange;
    }
    *pNum = quant_block(t, p, 16, fac, false, shift, round, scan, pLast);
    return zanStsOk;
}

// 4x4 Hadamard of 32-bit values (rows, then columns), exact in 64 bits.
void hadamard4x4(Zan64s* h) {
    auto bf = [](Zan64s& x0, Zan64s& x1, Zan64s& x2, Zan64s& x3) {
        const Zan64s a = x0 + x1, b = x2 + x3, c = x0 - x1, d = x2 - x3;
        x0 = a + b;
        x1 = a - b;
        x2 = c - d;
        x3 = c + d;
    };
    for (int i = 0; i < 4; ++i) bf(h[4 * i], h[4 * i + 1], h[4 * i + 2], h[4 * i + 3]);
    for (int j = 0; j < 4; ++j) bf(h[j], h[4 + j], h[8 + j], h[12 + j]);
}

// The halved luma DC Hadamard: sums wrap in 32 bits, >> 1, kept in T.
template <class T>
void luma_dc_transform(const T* src, T* dst) {
    Zan64s h[16];
    for (int k = 0; k < 16; ++k) h[k] = src[k];
    hadamard4x4(h);
    for (int k = 0; k < 16; ++k) dst[k] = wrap<T>(wrap<Zan32s>(h[k]) >> 1);
}

// The chroma DC transforms (2x2: four values; 2x4: eight values, two wide
// and four tall), sums wrapping in 32 bits, kept in T.
template <class T>
void chroma_dc_transform(const T* c, T* dst, int n) {
    Zan64s f[8];
    if (n == 4) {
        f[0] = Zan64s{c[0]} + c[1] + c[2] + c[3];
        f[1] = Zan64s{c[0]} - c[1] + c[2] - c[3];
        f[2] = Zan64s{c[0]} + c[1] - c[2] - c[3];
        f[3] = Zan64s{c[0]} - c[1] - c[2] + c[3];
    } else {
        Zan64s g[4][2];
        for (int r = 0; r < 4; ++r) {
            g[r][0] = Zan64s{c[2 * r]} + c[2 * r + 1];
            g[r][1] = Zan64s{c[2 * r]} - c[2 * r + 1];
        }
        for (int j = 0; j < 2; ++j) {
            const Zan64s a = g[0][j] + g[1][j], b = g[2][j] + g[3][j], d = g[0][j] - g[1][j], e = g[2][j] - g[3][j];
            f[j] = a + b;
            f[2 + j] = a - b;
            f[4 + j] = d - e;
            f[6 + j] = d + e;
        }
    }
    for (int k = 0; k < n; ++k) dst[k] = wrap<T>(wrap<Zan32s>(f[k]));
}

ZanStatus flat_luma_dc_rule(Zan16s* p, Zan16s* tb, Zan32s QP, const Zan16s* scan, Zan32s* pNum, Zan32s* pLast) {
    Zan16s t[16];
    luma_dc_transform(p, t);
    std::memcpy(tb, t, sizeof t);
    const Zan32s shift = 16 + QP / 6;
    const Zan64s round = (Zan64s{1} << shift) / 3;  // the luma DC rounds as intra
    const Zan16s* fac = &kQuant4x4[QP % 6][0];
    if (over_limit(t, 16, fac[0], nullptr, shift, round)) return zanStsCoefRange;
    *pNum = quant_block(t, p, 16, fac, true, shift, round, scan, pLast);
    return zanStsOk;
}

ZanStatus flat_chroma_dc_rule(Zan16s* p, Zan16s* tb, Zan32s QP, Zan32s intra, Zan32s needTransform, Zan32s* pNum) {
    Zan16s t[4];
    if (needTransform)
        chroma_dc_transform(p, t, 4);
    else
        std::memcpy(t, p, sizeof t);
    std::memcpy(tb, t, sizeof t);
    const Zan32s shift = 16 + QP / 6;
    const Zan64s round = (Zan64s{1} << shift) / (intra ? 3 : 6);
    const Zan16s* fac = &kQuant4x4[QP % 6][0];
    if (over_limit(t, 4, fac[0], nullptr, shift, round)) return zanStsCoefRange;
    *pNum = quant_block(t, p, 4, fac, true, shift, round, nullptr, nullptr);
    return zanStsOk;
}

// ========================================================== vector kernels

using simd::load16;
using simd::load16a;
using simd::load4;
using simd::load8;
using simd::store16;
using simd::store8;

// 4x4 butterfly on the low four lanes of four registers.
inline void core4_v(__m128i& x0, __m128i& x1, __m128i& x2, __m128i& x3) {
    const __m128i s03 = _mm_add_epi16(x0, x3), d03 = _mm_sub_epi16(x0, x3);
    const __m128i s12 = _mm_add_epi16(x1, x2), d12 = _mm_sub_epi16(x1, x2);
    x0 = _mm_add_epi16(s03, s12);
    x2 = _mm_sub_epi16(s03, s12);
    x1 = _mm_add_epi16(_mm_add_epi16(d03, d03), d12);
    x3 = _mm_sub_epi16(d03, _mm_add_epi16(d12, d12));
}
// Transposes the 4x4 block of 16-bit values held in the low halves.
inline void transpose4_v(__m128i& x0, __m128i& x1, __m128i& x2, __m128i& x3) {
    const __m128i t0 = _mm_unpacklo_epi16(x0, x1), t1 = _mm_unpacklo_epi16(x2, x3);
    x0 = _mm_unpacklo_epi32(t0, t1);
    x2 = _mm_unpackhi_epi32(t0, t1);
    x1 = _mm_unpackhi_epi64(x0, x0);
    x3 = _mm_unpackhi_epi64(x2, x2);
}
// The core transform of four rows; returns rows 0-1 and 2-3.  The
// transform is a ring map mod 2^16, so the order of the passes is free.
inline void core4x4_v(__m128i x0, __m128i x1, __m128i x2, __m128i x3, __m128i& r01, __m128i& r23) {
    core4_v(x0, x1, x2, x3);
    transpose4_v(x0, x1, x2, x3);
    core4_v(x0, x1, x2, x3);
    transpose4_v(x0, x1, x2, x3);
    r01 = _mm_unpacklo_epi64(x0, x1);
    r23 = _mm_unpacklo_epi64(x2, x3);
}

void fwd4x4_sse2(const Zan16s* src, Zan16s* dst) {
    __m128i r01, r23;
    core4x4_v(load8(src), load8(src + 4), load8(src + 8), load8(src + 12), r01, r23);
    store16(dst, r01);
    store16(dst + 8, r23);
}

void fwd_pred_sse2(const Zan8u* src, Zan32s step, Zan16s* dst) {
    const __m128i z = _mm_setzero_si128();
    const ptrdiff_t s = step;
    __m128i r01, r23;
    core4x4_v(_mm_unpacklo_epi8(load4(src), z), _mm_unpacklo_epi8(load4(src + s), z),
              _mm_unpacklo_epi8(load4(src + 2 * s), z), _mm_unpacklo_epi8(load4(src + 3 * s), z), r01, r23);
    store16(dst, r01);
    store16(dst + 8, r23);
}

// Eight registers, one row (or column) of an 8x8 block each.
struct Rows8 {
    __m128i r0, r1, r2, r3, r4, r5, r6, r7;
};

// Transposes an 8x8 block of 16-bit values.
inline Rows8 transpose8_v(const Rows8& r) {
    const __m128i a0 = _mm_unpacklo_epi16(r.r0, r.r1), a1 = _mm_unpackhi_epi16(r.r0, r.r1);
    const __m128i a2 = _mm_unpacklo_epi16(r.r2, r.r3), a3 = _mm_unpackhi_epi16(r.r2, r.r3);
    const __m128i a4 = _mm_unpacklo_epi16(r.r4, r.r5), a5 = _mm_unpackhi_epi16(r.r4, r.r5);
    const __m128i a6 = _mm_unpacklo_epi16(r.r6, r.r7), a7 = _mm_unpackhi_epi16(r.r6, r.r7);
    const __m128i b0 = _mm_unpacklo_epi32(a0, a2), b1 = _mm_unpackhi_epi32(a0, a2);
    const __m128i b2 = _mm_unpacklo_epi32(a1, a3), b3 = _mm_unpackhi_epi32(a1, a3);
    const __m128i b4 = _mm_unpacklo_epi32(a4, a6), b5 = _mm_unpackhi_epi32(a4, a6);
    const __m128i b6 = _mm_unpacklo_epi32(a5, a7), b7 = _mm_unpackhi_epi32(a5, a7);
    return {_mm_unpacklo_epi64(b0, b4), _mm_unpackhi_epi64(b0, b4), _mm_unpacklo_epi64(b1, b5),
            _mm_unpackhi_epi64(b1, b5), _mm_unpacklo_epi64(b2, b6), _mm_unpackhi_epi64(b2, b6),
            _mm_unpacklo_epi64(b3, b7), _mm_unpackhi_epi64(b3, b7)};
}
// The 8x8 butterfly across eight registers (lane by lane): the even half
// first, then the odd half, so that few values are live at once.
inline Rows8 core8_v(const Rows8& x) {
    Rows8 y;
    const __m128i d07 = _mm_sub_epi16(x.r0, x.r7), d16 = _mm_sub_epi16(x.r1, x.r6);
    const __m128i d25 = _mm_sub_epi16(x.r2, x.r5), d34 = _mm_sub_epi16(x.r3, x.r4);
    {
        const __m128i s07 = _mm_add_epi16(x.r0, x.r7), s16 = _mm_add_epi16(x.r1, x.r6);
        const __m128i s25 = _mm_add_epi16(x.r2, x.r5), s34 = _mm_add_epi16(x.r3, x.r4);
        const __m128i a0 = _mm_add_epi16(s07, s34), a1 = _mm_add_epi16(s16, s25);
        const __m128i a2 = _mm_sub_epi16(s07, s34), a3 = _mm_sub_epi16(s16, s25);
        y.r0 = _mm_add_epi16(a0, a1);
        y.r4 = _mm_sub_epi16(a0, a1);
        y.r2 = _mm_add_epi16(a2, _mm_srai_epi16(a3, 1));
        y.r6 = _mm_sub_epi16(_mm_srai_epi16(a2, 1), a3);
    }
    const __m128i a4 = _mm_add_epi16(_mm_add_epi16(d16, d25), _mm_add_epi16(d07, _mm_srai_epi16(d07, 1)));
    const __m128i a5 = _mm_sub_epi16(_mm_sub_epi16(d07, d34), _mm_add_epi16(d25, _mm_srai_epi16(d25, 1)));
    const __m128i a6 = _mm_sub_epi16(_mm_add_epi16(d07, d34), _mm_add_epi16(d16, _mm_srai_epi16(d16, 1)));
    const __m128i a7 = _mm_add_epi16(_mm_sub_epi16(d16, d25), _mm_add_epi16(d34, _mm_srai_epi16(d34, 1)));
    y.r1 = _mm_add_epi16(a4, _mm_srai_epi16(a7, 2));
    y.r3 = _mm_add_epi16(a5, _mm_srai_epi16(a6, 2));
    y.r5 = _mm_sub_epi16(a6, _mm_srai_epi16(a5, 2));
    y.r7 = _mm_sub_epi16(_mm_srai_epi16(a4, 2), a7);
    return y;
}

// Rows first: with the rows transposed into registers the butterfly runs
// along each row; transposed back, it runs down the columns.
void fwd8x8_sse2(const Zan16s* src, Zan16s* dst) {
    const Rows8 in = {load16(src), load16(src + 8),  load16(src + 16), load16(src + 24),
                      load16(src + 32), load16(src + 40), load16(src + 48), load16(src + 56)};
    const Rows8 out = core8_v(transpose8_v(core8_v(transpose8_v(in))));
    store16(dst, out.r0);
    store16(dst + 8, out.r1);
    store16(dst + 16, out.r2);
    store16(dst + 24, out.r3);
    store16(dst + 32, out.r4);
    store16(dst + 40, out.r5);
    store16(dst + 48, out.r6);
    store16(dst + 56, out.r7);
}

// Level magnitudes of eight coefficients: (|c| * f + round) >> shift with
// the exact 32-bit product, packed to 16 bits with saturation.  |c| * f is
// c * f negated where c is negative, so -32768 needs no extra handling.
inline __m128i level_mag_v(__m128i c, __m128i f, __m128i round, __m128i shift) {
    const __m128i lo = _mm_mullo_epi16(c, f), hi = _mm_mulhi_epi16(c, f);
    const __m128i neg = _mm_srai_epi16(c, 15);
    const __m128i n0 = _mm_unpacklo_epi16(neg, neg), n1 = _mm_unpackhi_epi16(neg, neg);
    __m128i p0 = _mm_unpacklo_epi16(lo, hi), p1 = _mm_unpackhi_epi16(lo, hi);
    p0 = _mm_sub_epi32(_mm_xor_si128(p0, n0), n0);
    p1 = _mm_sub_epi32(_mm_xor_si128(p1, n1), n1);
    p0 = _mm_sra_epi32(_mm_add_epi32(p0, round), shift);
    p1 = _mm_sra_epi32(_mm_add_epi32(p1, round), shift);
    return _mm_packs_epi32(p0, p1);
}

// Bits set in a 16-bit mask.
inline Zan32s bits16(Zan32u m) {
    m = m - ((m >> 1) & 0x5555u);
    m = (m & 0x3333u) + ((m >> 2) & 0x3333u);
    m = (m + (m >> 4)) & 0x0F0Fu;
    return static_cast<Zan32s>((m + (m >> 8)) & 0x1Fu);
}

// Count of zero levels (one per lane, summed at the end) and the running
// largest scan position of the non-zero ones.
struct Tally {
    __m128i last = _mm_setzero_si128();
    __m128i zeroLanes = _mm_setzero_si128();
    void add(__m128i lev, __m128i scan) {
        const __m128i z = _mm_cmpeq_epi16(lev, _mm_setzero_si128());
        last = _mm_max_epi16(last, _mm_andnot_si128(z, scan));
        zeroLanes = _mm_sub_epi16(zeroLanes, z);
    }
    Zan32s zeros() const { return simd::hsum_epi32(_mm_madd_epi16(zeroLanes, _mm_set1_epi16(1))); }
    Zan32s largest() const {
        __m128i m = _mm_max_epi16(last, _mm_srli_si128(last, 8));
        m = _mm_max_epi16(m, _mm_srli_si128(m, 4));
        m = _mm_max_epi16(m, _mm_srli_si128(m, 2));
        return static_cast<Zan16s>(_mm_cvtsi128_si32(m));
    }
};

template <int N>
Zan32s quant16_ssse3(const Zan16s* src, Zan16s* dst, const Zan16s* scale, Zan32s shift, Zan32s round,
                     const Zan16s* scan, Zan32s* pLast) {
    const __m128i r = _mm_set1_epi32(round), s = _mm_cvtsi32_si128(shift);
    Tally t;
    for (int i = 0; i < N / 8; ++i) {  // each group is read before it is written: pDst may be pSrc
        const __m128i c = load16(src + 8 * i);
        const __m128i lev = _mm_sign_epi16(level_mag_v(c, load16(scale + 8 * i), r, s), c);
        t.add(lev, load16(scan + 8 * i));
        store16(dst + 8 * i, lev);
    }
    *pLast = t.largest();
    return N - t.zeros();
}

// One pass of the core butterfly down the columns of a 4x4 block held as
// rows 0|1 in a and rows 2|3 in b; leaves rows y0|y1 in a and y2|y3 in b.
inline void core4_cols_v(__m128i& a, __m128i& b) {
    const __m128i k12 = _mm_setr_epi16(1, 1, 1, 1, 2, 2, 2, 2);
    const __m128i b32 = _mm_shuffle_epi32(b, 0x4E);                                // rows 3|2
    const __m128i s = _mm_add_epi16(a, b32), d = _mm_sub_epi16(a, b32);            // s03|s12, d03|d12
    const __m128i lo = _mm_unpacklo_epi64(s, d), hi = _mm_unpackhi_epi64(s, d);  // s03|d03, s12|d12
    a = _mm_add_epi16(_mm_mullo_epi16(lo, k12), hi);                               // s03 + s12 | 2 d03 + d12
    b = _mm_sub_epi16(lo, _mm_mullo_epi16(hi, k12));                               // s03 - s12 | d03 - 2 d12
}
// Transposes a 4x4 block held as rows 0|1 in a and rows 2|3 in b.
inline void transpose4x4_2_v(__m128i& a, __m128i& b) {
    const __m128i t0 = _mm_unpacklo_epi16(a, b), t1 = _mm_unpackhi_epi16(a, b);
    a = _mm_unpacklo_epi16(t0, t1);
    b = _mm_unpackhi_epi16(t0, t1);
}
// The core transform of a 4x4 block in two registers (rows 0|1, rows 2|3):
// columns, transpose, columns again (now the rows), transpose back.
inline void core4x4_2_v(__m128i& a, __m128i& b) {
    core4_cols_v(a, b);
    transpose4x4_2_v(a, b);
    core4_cols_v(a, b);
    transpose4x4_2_v(a, b);
}

// Everything the 4x4 quantiser with the built-in factors needs for one QP
// and rounding kind, in one place: the factor row doubled (at most 26214,
// so it fits an unsigned 16-bit lane), the rounding r of the shift 15 + q
// split as r = rh * 2^15 + rl with rl2 = 2 rl (see level_mag15_v), and q.
// The rounding is (1 << (15 + q)) / 6 for inter and / 3 for intra.
struct Quant15 {
    alignas(16) Zan16u f2[16];
    Zan16u rl2[8];
    Zan16u rh[8];
    Zan64s q;
};
struct Quant15Table {
    Quant15 v[2][52];
};
constexpr Quant15Table kQuant15Table = [] {
    Quant15Table t{};
    for (int intra = 0; intra < 2; ++intra)
        for (int qp = 0; qp < 52; ++qp) {
            Quant15& e = t.v[intra][qp];
            const int q = qp / 6;
            const Zan32s r = (1 << (15 + q)) / (intra ? 3 : 6);
            for (int k = 0; k < 16; ++k) e.f2[k] = static_cast<Zan16u>(2 * kQuant4x4[qp % 6][k]);
            for (int k = 0; k < 8; ++k) {
                e.rl2[k] = static_cast<Zan16u>((r & 0x7FFF) << 1);
                e.rh[k] = static_cast<Zan16u>(r >> 15);
            }
            e.q = q;
        }
    return t;
}();
constexpr const Quant15 (&kQuant15)[2][52] = kQuant15Table.v;
// The second-generation rounding with the built-in factors is the same.
static_assert(kQuant15Table.v[0][51].rh[0] == (kRoundGiven.v[8] >> 15) &&
              kQuant15Table.v[1][51].rh[0] == (kRoundGiven.v[9] >> 15) &&
              kQuant15Table.v[1][0].rl2[0] == ((kRoundGiven.v[1] & 0x7FFF) << 1) &&
              kQuant15Table.v[0][0].rl2[0] == ((kRoundGiven.v[0] & 0x7FFF) << 1));

// Level magnitudes (|c| * f + r) >> (15 + q) of eight coefficients, exact,
// for factors f in 0..32767 and r below 2^(15 + q), all in 16-bit lanes:
// with P = |c| * f, (P + r) >> 15 = (P >> 15) + rh + carry, where the carry
// is that of (P mod 2^15) + rl past 2^15.  f2 = 2 f, so that the unsigned
// high product of |c| (0..32768) and f2 is P >> 15 and the low product is
// 2 (P mod 2^15); the average of two even values is their exact half sum.
inline __m128i level_mag15_v(__m128i c, __m128i f2, __m128i rl2, __m128i rh, __m128i q) {
    const __m128i a = _mm_abs_epi16(c);
    const __m128i hi = _mm_mulhi_epu16(a, f2), lo = _mm_mullo_epi16(a, f2);
    const __m128i carry = _mm_srli_epi16(_mm_avg_epu16(lo, rl2), 15);
    return _mm_srl_epi16(_mm_add_epi16(_mm_add_epi16(hi, rh), carry), q);
}
// The level magnitudes of a 4x4 block (two registers) with the built-in
// factors.
inline void level_mag15_4x4_v(__m128i c01, __m128i c23, const Quant15& k, __m128i& m01, __m128i& m23) {
    const __m128i rl2 = load16a(k.rl2), rh = load16a(k.rh), q = load8(&k.q);
    m01 = level_mag15_v(c01, load16a(k.f2), rl2, rh, q);
    m23 = level_mag15_v(c23, load16a(k.f2 + 8), rl2, rh, q);
}

// Count of non-zero levels of a 4x4 block and the largest scan position
// holding one (at least 0).
// scan01 and scan23 are the scan positions, read before any level is stored.
inline void tally4x4_v(__m128i l01, __m128i l23, __m128i scan01, __m128i scan23, Zan32s* pNum, Zan32s* pLast) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i z01 = _mm_cmpeq_epi16(l01, zero), z23 = _mm_cmpeq_epi16(l23, zero);
    __m128i m = _mm_max_epi16(_mm_andnot_si128(z01, scan01), _mm_andnot_si128(z23, scan23));
    m = _mm_max_epi16(m, _mm_shuffle_epi32(m, 0x4E));
    m = _mm_max_epi16(m, _mm_shufflelo_epi16(m, 0x4E));
    m = _mm_max_epi16(m, _mm_shufflelo_epi16(m, 0xB1));
    const Zan32s last = static_cast<Zan16s>(_mm_cvtsi128_si32(m));
    *pLast = last > 0 ? last : 0;
    *pNum = 16 - bits16(static_cast<Zan32u>(_mm_movemask_epi8(_mm_packs_epi16(z01, z23))));
}

ZanStatus flat_quant_ssse3(Zan16s* p, Zan32s QP, Zan32s intra, const Zan16s* scan, Zan32s* pNum, Zan32s* pLast) {
    __m128i c01 = load16(p), c23 = load16(p + 8);
    core4x4_2_v(c01, c23);
    __m128i m01, m23;
    level_mag15_4x4_v(c01, c23, kQuant15[intra ? 1 : 0][QP], m01, m23);
    const __m128i limit = _mm_set1_epi16(kLevelLimit);
    if (_mm_movemask_epi8(_mm_or_si128(_mm_cmpgt_epi16(m01, limit), _mm_cmpgt_epi16(m23, limit)))) {
        store16(p, c01);
        store16(p + 8, c23);
        return zanStsCoefRange;
    }
    const __m128i l01 = _mm_sign_epi16(m01, c01), l23 = _mm_sign_epi16(m23, c23);
    const __m128i scan01 = load16(scan), scan23 = load16(scan + 8);
    store16(p, l01);
    store16(p + 8, l23);
    tally4x4_v(l01, l23, scan01, scan23, pNum, pLast);
    return zanStsOk;
}

// The core transform and the second-generation levels of a 4x4 block with
// the built-in factors (shift 15 + q, rounding from the given row), src
// kept.  No level can saturate: (32768 * 13107 + r) >> 15 is below 2^14.
Zan32s fwd_quant_given_ssse3(const Zan16s* src, Zan16s* dst, Zan32s QP, Zan32s intra, const Zan16s* scan,
                             Zan32s* pLast) {
    __m128i c01 = load16(src), c23 = load16(src + 8);
    core4x4_2_v(c01, c23);
    __m128i m01, m23;
    level_mag15_4x4_v(c01, c23, kQuant15[intra ? 1 : 0][QP], m01, m23);
    const __m128i l01 = _mm_sign_epi16(m01, c01), l23 = _mm_sign_epi16(m23, c23);
    const __m128i scan01 = load16(scan), scan23 = load16(scan + 8);
    store16(dst, l01);
    store16(dst + 8, l23);
    Zan32s num = 0;
    tally4x4_v(l01, l23, scan01, scan23, &num, pLast);
    return num;
}

// The core transform and the levels of a 4x4 block with the caller's
// factors, src kept.
Zan32s fwd_quant_scaled_ssse3(const Zan16s* src, Zan16s* dst, Zan32s QP, Zan32s intra, const Zan16s* scale,
                              const Zan16s* scan, Zan32s* pLast) {
    __m128i c01 = load16(src), c23 = load16(src + 8);
    core4x4_2_v(c01, c23);
    const Zan32s q = QP / 6;
    const __m128i r = _mm_set1_epi32(kRoundScaled.v[q + (intra ? 1 : 0)]), s = _mm_cvtsi32_si128(11 + q);
    const __m128i l01 = _mm_sign_epi16(level_mag_v(c01, load16(scale), r, s), c01);
    const __m128i l23 = _mm_sign_epi16(level_mag_v(c23, load16(scale + 8), r, s), c23);
    const __m128i scan01 = load16(scan), scan23 = load16(scan + 8);
    store16(dst, l01);
    store16(dst + 8, l23);
    Zan32s num = 0;
    tally4x4_v(l01, l23, scan01, scan23, &num, pLast);
    return num;
}

// 4x4 Hadamard butterfly on 32-bit lanes.
inline void hadamard4_v(__m128i& x0, __m128i& x1, __m128i& x2, __m128i& x3) {
    const __m128i a = _mm_add_epi32(x0, x1), b = _mm_add_epi32(x2, x3);
    const __m128i c = _mm_sub_epi32(x0, x1), d = _mm_sub_epi32(x2, x3);
    x0 = _mm_add_epi32(a, b);
    x1 = _mm_sub_epi32(a, b);
    x2 = _mm_sub_epi32(c, d);
    x3 = _mm_add_epi32(c, d);
}
inline void transpose4x32_v(__m128i& x0, __m128i& x1, __m128i& x2, __m128i& x3) {
    const __m128i t0 = _mm_unpacklo_epi32(x0, x1), t1 = _mm_unpacklo_epi32(x2, x3);
    const __m128i t2 = _mm_unpackhi_epi32(x0, x1), t3 = _mm_unpackhi_epi32(x2, x3);
    x0 = _mm_unpacklo_epi64(t0, t1);
    x1 = _mm_unpackhi_epi64(t0, t1);
    x2 = _mm_unpacklo_epi64(t2, t3);
    x3 = _mm_unpackhi_epi64(t2, t3);
}
inline __m128i widen_lo(__m128i v) { return _mm_srai_epi32(_mm_unpacklo_epi16(v, v), 16); }
inline __m128i widen_hi(__m128i v) { return _mm_srai_epi32(_mm_unpackhi_epi16(v, v), 16); }
// Low 16 bits of each 32-bit lane of a and b, as eight 16-bit lanes.
inline __m128i narrow_wrap(__m128i a, __m128i b) {
    return _mm_packs_epi32(_mm_srai_epi32(_mm_slli_epi32(a, 16), 16), _mm_srai_epi32(_mm_slli_epi32(b, 16), 16));
}

ZanStatus flat_luma_dc_ssse3(Zan16s* p, Zan16s* tb, Zan32s QP, const Zan16s* scan, Zan32s* pNum, Zan32s* pLast) {
    const __m128i x01 = load16(p), x23 = load16(p + 8);
    __m128i r0 = widen_lo(x01), r1 = widen_hi(x01), r2 = widen_lo(x23), r3 = widen_hi(x23);
    hadamard4_v(r0, r1, r2, r3);  // the Hadamard is exact in 32 bits: pass order is free
    transpose4x32_v(r0, r1, r2, r3);
    hadamard4_v(r0, r1, r2, r3);
    transpose4x32_v(r0, r1, r2, r3);
    const __m128i t01 = narrow_wrap(_mm_srai_epi32(r0, 1), _mm_srai_epi32(r1, 1));
    const __m128i t23 = narrow_wrap(_mm_srai_epi32(r2, 1), _mm_srai_epi32(r3, 1));
    store16(tb, t01);
    store16(tb + 8, t23);
    const Zan32s shift = 16 + QP / 6;
    const __m128i r = _mm_set1_epi32((1 << shift) / 3), s = _mm_cvtsi32_si128(shift);
    const __m128i f = _mm_set1_epi16(kQuant4x4[QP % 6][0]);
    const __m128i m01 = level_mag_v(t01, f, r, s), m23 = level_mag_v(t23, f, r, s);
    const __m128i limit = _mm_set1_epi16(kLevelLimit);
    if (_mm_movemask_epi8(_mm_or_si128(_mm_cmpgt_epi16(m01, limit), _mm_cmpgt_epi16(m23, limit))))
        return zanStsCoefRange;
    const __m128i l01 = _mm_sign_epi16(m01, t01), l23 = _mm_sign_epi16(m23, t23);
    Tally t;
    t.add(l01, load16(scan));
    t.add(l23, load16(scan + 8));
    store16(p, l01);
    store16(p + 8, l23);
    *pNum = 16 - t.zeros();
    *pLast = t.largest();
    return zanStsOk;
}

ZanStatus flat_chroma_dc_ssse3(Zan16s* p, Zan16s* tb, Zan32s QP, Zan32s intra, Zan32s needTransform,
                               Zan32s* pNum) {
    __m128i t = load8(p);
    if (needTransform) {
        // f = (c0 + c1, c0 - c1, c0 + c1, c0 - c1) + (c2 + c3, c2 - c3, -c2 - c3, c3 - c2)
        const __m128i a = _mm_madd_epi16(_mm_shuffle_epi32(t, 0x00), _mm_setr_epi16(1, 1, 1, -1, 1, 1, 1, -1));
        const __m128i b = _mm_madd_epi16(_mm_shuffle_epi32(t, 0x55), _mm_setr_epi16(1, 1, 1, -1, -1, -1, -1, 1));
        const __m128i f = _mm_add_epi32(a, b);
        t = narrow_wrap(f, f);
    }
    store8(tb, t);
    const Zan32s shift = 16 + QP / 6;
    const __m128i r = _mm_set1_epi32((1 << shift) / (intra ? 3 : 6)), s = _mm_cvtsi32_si128(shift);
    const __m128i m = level_mag_v(t, _mm_set1_epi16(kQuant4x4[QP % 6][0]), r, s);
    if (_mm_movemask_epi8(_mm_cmpgt_epi16(m, _mm_set1_epi16(kLevelLimit))) & 0xFF) return zanStsCoefRange;
    const __m128i l = _mm_sign_epi16(m, t);
    store8(p, l);
    const Zan32u zeros = static_cast<Zan32u>(_mm_movemask_epi8(_mm_cmpeq_epi16(l, _mm_setzero_si128()))) & 0xFFu;
    *pNum = 4 - (bits16(zeros) >> 1);
    return zanStsOk;
}

// ============================================================= catalogue

constexpr KernelPair<Fwd4x4Fn> kFwd4x4Pairs[] = {{"fwd4x4_16s", fwd4x4_rule, fwd4x4_sse2, 4, 4, 0}};
constexpr KernelPair<FwdPredFn> kFwdPredPairs[] = {{"fwd4x4_8u16s", fwd_pred_rule, fwd_pred_sse2, 4, 4, 0}};
constexpr KernelPair<Fwd8x8Fn> kFwd8x8Pairs[] = {{"fwd8x8_16s", fwd8x8_rule, fwd8x8_sse2, 8, 8, 0}};
constexpr KernelPair<FlatQuantFn> kFlatQuantPairs[] = {
    {"transform_quant4x4_flat", flat_quant_rule, flat_quant_ssse3, 4, 4, 0}};
constexpr KernelPair<FlatLumaDcFn> kFlatLumaDcPairs[] = {
    {"luma_dc_flat", flat_luma_dc_rule, flat_luma_dc_ssse3, 4, 4, 0}};
constexpr KernelPair<FlatChromaDcFn> kFlatChromaDcPairs[] = {
    {"chroma_dc2x2_flat", flat_chroma_dc_rule, flat_chroma_dc_ssse3, 2, 2, 0}};
constexpr KernelPair<Quant16Fn> kQuant16Pairs[] = {
    {"quant4x4_16s", quant16_rule<16>, quant16_ssse3<16>, 4, 4, 0},
    {"quant8x8_16s", quant16_rule<64>, quant16_ssse3<64>, 8, 8, 0},
};

// ======================================================= the other forms

inline Zan64s round_for(Zan32s shift, Zan32s intra) {
    return (Zan64s{1} << (shift + (intra ? 1 : 0))) / 6;
}

// Second-generation 4x4 levels of 16 coefficients.
template <class In, class Out>
Zan32s quant4x4_high(const In* src, Out* dst, Zan32s QP, Zan32s intra, const Zan16s* scale, const Zan16s* scan,
                     Zan32s* pLast) {
    const Zan32s q = QP / 6, i = intra ? 1 : 0;
    if constexpr (sizeof(In) == 2 && sizeof(Out) == 2) {
        if (scale) return quant16_ssse3<16>(src, dst, scale, 11 + q, kRoundScaled.v[q + i], scan, pLast);
        return quant16_ssse3<16>(src, dst, kQuant4x4[QP % 6], 15 + q, kRoundGiven.v[q + i], scan, pLast);
    } else {
        if (scale) return quant_block(src, dst, 16, scale, false, 11 + q, kRoundScaled.v[q + i], scan, pLast);
        return quant_block(src, dst, 16, kQuant4x4[QP % 6], false, 15 + q, kRoundGiven.v[q + i], scan, pLast);
    }
}

// Second-generation DC levels of n values t, factor and shift from QP (the
// caller adds 3 for 4:2:2 chroma).
template <class T>
Zan32s dc_high(const T* t, T* dst, int n, Zan32s QP, Zan32s intra, const Zan16s* scale, const Zan16s* scan,
               Zan32s* pLast) {
    const Zan32s q = QP / 6;
    const Zan32s shift = (scale ? 12 : 16) + q;
    const Zan16s* fac = scale ? scale : &kQuant4x4[QP % 6][0];
    return quant_block(t, dst, n, fac, true, shift, round_for(shift, intra), scan, pLast);
}

template <class T>
ZanStatus luma_dc_high(T* p, T* tb, Zan32s QP, Zan32s* pNum, Zan32s intra, const Zan16s* scan, Zan32s* pLast,
                       const Zan16s* scale) {
    T t[16];
    luma_dc_transform(p, t);
    std::memcpy(tb, t, sizeof t);
    Zan32s last = 0;
    *pNum = dc_high(t, p, 16, QP, intra, scale, scan, &last);
    *pLast = last;
    return zanStsOk;
}

template <class T, int N>
ZanStatus chroma_dc_high(T* p, T* tb, Zan32s QP, Zan32s* pNum, Zan32s intra, Zan32s needTransform,
                         const Zan16s* scale) {
    T t[N];
    if (needTransform)
        chroma_dc_transform(p, t, N);
    else
        std::memcpy(t, p, sizeof t);
    std::memcpy(tb, t, sizeof t);
    *pNum = dc_high(t, p, N, N == 8 ? QP + 3 : QP, intra, scale, nullptr, nullptr);
    return zanStsOk;
}

// Level-scale generator for n positions of one QP % 6.
void gen_scale(const Zan8u* w, Zan32s step, int width, int n, const Zan16s* norm, const Zan16s* fwd, Zan16s* inv,
               Zan16s* out) {
    Zan16s a[64], b[64];
    for (int k = 0; k < n; ++k) {
        const Zan32s wk = w[static_cast<ptrdiff_t>(step) * (k / width) + k % width];
        a[k] = static_cast<Zan16s>(wk * norm[k]);
        const Zan32s f = wk ? (fwd[k] * 16) / wk : 32767;
        b[k] = static_cast<Zan16s>(f > 32767 ? 32767 : f);
    }
    std::memcpy(inv, a, sizeof(Zan16s) * static_cast<size_t>(n));
    std::memcpy(out, b, sizeof(Zan16s) * static_cast<size_t>(n));
}

}  // namespace

const Fwd4x4Fn fwd4x4 = fwd4x4_sse2;
const Quant16Fn quant4x4 = quant16_ssse3<16>;
const Quant16Fn quant8x8 = quant16_ssse3<64>;
const Kernels kernels = {kFwd4x4Pairs,     kFwdPredPairs,      kFwd8x8Pairs, kFlatQuantPairs,
                         kFlatLumaDcPairs, kFlatChromaDcPairs, kQuant16Pairs};

}  // namespace zan::ZAN_PATH::h264fwd

// =============================================================== exports

namespace zan::ZAN_PATH {

namespace fw = h264fwd;

inline bool above(Zan32s v, Zan32u limit) { return static_cast<Zan32u>(v) > limit; }

ZanStatus zaniTransformResidual4x4Fwd_H264_16s_C1(const Zan16s* pSrc, Zan16s* pDst) {
    if (!pSrc || !pDst) return zanStsNullPtr;
    fw::fwd4x4_sse2(pSrc, pDst);
    return zanStsOk;
}

ZanStatus zaniTransformResidual4x4Fwd_H264_32s_C1(const Zan32s* pSrc, Zan32s* pDst) {
    if (!pSrc || !pDst) return zanStsNullPtr;
    fw::fwd4x4_rule_t(pSrc, pDst);
    return zanStsOk;
}

ZanStatus zaniTransformPrediction_H264_8u16s_C1(const Zan8u* pSrc, Zan32s srcStep, Zan16s* pDst) {
    if (!pSrc || !pDst) return zanStsNullPtr;
    fw::fwd_pred_sse2(pSrc, srcStep, pDst);
    return zanStsOk;
}

ZanStatus zaniTransformQuantResidual_H264_16s_C1I(Zan16s* pSrcDst, Zan32s QP, Zan32s* pNumLevels, Zan32s intra,
                                                  const Zan16s* pScanMatrix, Zan8u* pLastCoeff) {
    if (!pSrcDst || !pNumLevels || !pScanMatrix || !pLastCoeff) return zanStsNullPtr;
    if (above(QP, 51)) return zanStsOutOfRange;
    Zan32s num = 0, last = 0;
    const ZanStatus st = fw::flat_quant_ssse3(pSrcDst, QP, intra, pScanMatrix, &num, &last);
    if (st != zanStsOk) return st;
    *pNumLevels = num;
    *pLastCoeff = static_cast<Zan8u>(last);
    return zanStsOk;
}

ZanStatus zaniTransformQuantLumaDC_H264_16s_C1I(Zan16s* pSrcDst, Zan16s* pTBlock, Zan32s QP, Zan32s* pNumLevels,
                                                Zan32s intra, const Zan16s* pScanMatrix, Zan8u* pLastCoeff) {
    (void)intra;
    if (!pSrcDst || !pTBlock || !pNumLevels || !pScanMatrix || !pLastCoeff) return zanStsNullPtr;
    if (above(QP, 51)) return zanStsOutOfRange;
    Zan32s num = 0, last = 0;
    const ZanStatus st = fw::flat_luma_dc_ssse3(pSrcDst, pTBlock, QP, pScanMatrix, &num, &last);
    if (st != zanStsOk) return st;
    *pNumLevels = num;
    *pLastCoeff = static_cast<Zan8u>(last);
    return zanStsOk;
}

ZanStatus zaniTransformQuantChromaDC_H264_16s_C1I(Zan16s* pSrcDst, Zan16s* pTBlock, Zan32s QP, Zan32s* pNumLevels,
                                                  Zan32s intra, Zan32s needTransform) {
    if (!pSrcDst || !pTBlock || !pNumLevels) return zanStsNullPtr;
    if (above(QP, 39)) return zanStsOutOfRange;
    return fw::flat_chroma_dc_ssse3(pSrcDst, pTBlock, QP, intra, needTransform, pNumLevels);
}

#define ZAN_QUANT4X4(name, In, Out)                                                                           \
    ZanStatus name(const In* pSrc, Out* pDst, Zan32s* pNumLevels, Zan32s* pLastCoeff, const Zan16s* pScaleLevels, \
                   const Zan16s* pScanMatrix, Zan32s QP, Zan32s intra) {                                        \
        if (!pSrc || !pDst || !pNumLevels || !pLastCoeff || !pScanMatrix) return zanStsNullPtr;               \
        if (above(QP, 51)) return zanStsOutOfRange;                                                           \
        Zan32s last = 0;                                                                                      \
        *pNumLevels = fw::quant4x4_high(pSrc, pDst, QP, intra, pScaleLevels, pScanMatrix, &last);             \
        *pLastCoeff = last;                                                                                   \
        return zanStsOk;                                                                                      \
    }
ZAN_QUANT4X4(zaniQuantizeResidual4x4Fwd_H264_16s_C1, Zan16s, Zan16s)
ZAN_QUANT4X4(zaniQuantizeResidual4x4Fwd_H264_16s32s_C1, Zan16s, Zan32s)
ZAN_QUANT4X4(zaniQuantizeResidual4x4Fwd_H264_32s_C1, Zan32s, Zan32s)
#undef ZAN_QUANT4X4

ZanStatus zaniTransformQuantFwd4x4_H264_16s_C1(const Zan16s* pSrc, Zan16s* pDst, Zan32s QP, Zan32s* pNumLevels,
                                               Zan32s intra, const Zan16s* pScanMatrix, Zan32s* pLastCoeff,
                                               const Zan16s* pScaleLevels) {
    if (!pSrc || !pDst || !pNumLevels || !pScanMatrix || !pLastCoeff) return zanStsNullPtr;
    if (above(QP, 51)) return zanStsOutOfRange;
    Zan32s last = 0;
    *pNumLevels = pScaleLevels ? fw::fwd_quant_scaled_ssse3(pSrc, pDst, QP, intra, pScaleLevels, pScanMatrix, &last)
                               : fw::fwd_quant_given_ssse3(pSrc, pDst, QP, intra, pScanMatrix, &last);
    *pLastCoeff = last;
    return zanStsOk;
}

ZanStatus zaniTransformQuantFwd4x4_H264_16s32s_C1(const Zan16s* pSrc, Zan32s* pDst, Zan32s QP, Zan32s* pNumLevels,
                                                  Zan32s intra, const Zan16s* pScanMatrix, Zan32s* pLastCoeff,
                                                  const Zan16s* pScaleLevels) {
    if (!pSrc || !pDst || !pNumLevels || !pScanMatrix || !pLastCoeff) return zanStsNullPtr;
    if (above(QP, 87)) return zanStsOutOfRange;
    Zan32s t[16];
    fw::fwd4x4_rule_t(pSrc, t);
    Zan32s last = 0;
    *pNumLevels = fw::quant4x4_high(t, pDst, QP, intra, pScaleLevels, pScanMatrix, &last);
    *pLastCoeff = last;
    return zanStsOk;
}

ZanStatus zaniTransformQuantFwdLumaDC4x4_H264_16s_C1I(Zan16s* pSrcDst, Zan16s* pTBlock, Zan32s QP,
                                                      Zan32s* pNumLevels, Zan32s intra, const Zan16s* pScanMatrix,
                                                      Zan32s* pLastCoeff, const Zan16s* pScaleLevels) {
    if (!pSrcDst || !pTBlock || !pNumLevels || !pScanMatrix || !pLastCoeff) return zanStsNullPtr;
    if (above(QP, 51)) return zanStsOutOfRange;
    return fw::luma_dc_high(pSrcDst, pTBlock, QP, pNumLevels, intra, pScanMatrix, pLastCoeff, pScaleLevels);
}

ZanStatus zaniTransformQuantFwdLumaDC4x4_H264_32s_C1I(Zan32s* pSrcDst, Zan32s* pTBlock, Zan32s QP,
                                                      Zan32s* pNumLevels, Zan32s intra, const Zan16s* pScanMatrix,
                                                      Zan32s* pLastCoeff, const Zan16s* pScaleLevels) {
    if (!pSrcDst || !pTBlock || !pNumLevels || !pScanMatrix || !pLastCoeff) return zanStsNullPtr;
    if (above(QP, 87)) return zanStsOutOfRange;
    return fw::luma_dc_high(pSrcDst, pTBlock, QP, pNumLevels, intra, pScanMatrix, pLastCoeff, pScaleLevels);
}

#define ZAN_CHROMA_DC(name, T, N, maxQP)                                                                      \
    ZanStatus name(T* pSrcDst, T* pTBlock, Zan32s QP, Zan32s* pNumLevels, Zan32s intra, Zan32s needTransform, \
                   const Zan16s* pScaleLevels) {                                                              \
        if (!pSrcDst || !pTBlock || !pNumLevels) return zanStsNullPtr;                                        \
        if (above(QP, maxQP)) return zanStsOutOfRange;                                                        \
        return fw::chroma_dc_high<T, N>(pSrcDst, pTBlock, QP, pNumLevels, intra, needTransform, pScaleLevels); \
    }
ZAN_CHROMA_DC(zaniTransformQuantFwdChromaDC2x2_H264_16s_C1I, Zan16s, 4, 39)
ZAN_CHROMA_DC(zaniTransformQuantFwdChromaDC2x2_H264_32s_C1I, Zan32s, 4, 75)
ZAN_CHROMA_DC(zaniTransformQuantFwdChromaDC2x4_H264_16s_C1I, Zan16s, 8, 39)
ZAN_CHROMA_DC(zaniTransformQuantFwdChromaDC2x4_H264_32s_C1I, Zan32s, 8, 75)
#undef ZAN_CHROMA_DC

ZanStatus zaniTransformLuma8x8Fwd_H264_16s_C1I(Zan16s* pSrcDst) {
    if (!pSrcDst) return zanStsNullPtr;
    fw::fwd8x8_sse2(pSrcDst, pSrcDst);
    return zanStsOk;
}

ZanStatus zaniTransformFwdLuma8x8_H264_16s_C1(const Zan16s* pSrc, Zan16s* pDst) {
    if (!pSrc || !pDst) return zanStsNullPtr;
    fw::fwd8x8_sse2(pSrc, pDst);
    return zanStsOk;
}

ZanStatus zaniTransformFwdLuma8x8_H264_16s32s_C1(const Zan16s* pSrc, Zan32s* pDst) {
    if (!pSrc || !pDst) return zanStsNullPtr;
    fw::fwd8x8_rule_t(pSrc, pDst);
    return zanStsOk;
}

inline Zan32s round8x8(Zan32s Qp6, Zan32s intra) { return (intra ? 682 : 342) << (Qp6 + 1); }

ZanStatus zaniQuantLuma8x8_H264_16s_C1(const Zan16s* pSrc, Zan16s* pDst, Zan32s Qp6, Zan32s intra,
                                       const Zan16s* pScanMatrix, const Zan16s* pScaleLevels, Zan32s* pNumLevels,
                                       Zan32s* pLastCoeff) {
    if (!pSrc || !pDst || !pScanMatrix || !pScaleLevels || !pNumLevels || !pLastCoeff) return zanStsNullPtr;
    if (above(Qp6, 8)) return zanStsQpBad;
    Zan32s last = 0;
    *pNumLevels = fw::quant16_ssse3<64>(pSrc, pDst, pScaleLevels, 12 + Qp6, round8x8(Qp6, intra), pScanMatrix, &last);
    *pLastCoeff = last;
    return zanStsOk;
}

ZanStatus zaniQuantLuma8x8_H264_32s_C1(const Zan32s* pSrc, Zan32s* pDst, Zan32s Qp6, Zan32s intra,
                                       const Zan16s* pScanMatrix, const Zan16s* pScaleLevels, Zan32s* pNumLevels,
                                       Zan32s* pLastCoeff) {
    if (!pSrc || !pDst || !pScanMatrix || !pScaleLevels || !pNumLevels || !pLastCoeff) return zanStsNullPtr;
    if (above(Qp6, 14)) return zanStsQpBad;
    Zan32s last = 0;
    *pNumLevels = fw::quant_block(pSrc, pDst, 64, pScaleLevels, false, 12 + Qp6, round8x8(Qp6, intra), pScanMatrix,
                                  &last);
    *pLastCoeff = last;
    return zanStsOk;
}

ZanStatus zaniGenScaleLevel4x4_H264_8u16s_C1(const Zan8u* pSrcScaling, Zan16s* pDstInvScale, Zan16s* pDstFwdScale,
                                             Zan32s QpRem) {
    if (!pSrcScaling || !pDstInvScale || !pDstFwdScale) return zanStsNullPtr;
    if (above(QpRem, 5)) return zanStsOutOfRange;
    fw::gen_scale(pSrcScaling, 4, 4, 16, zan::h264fwd::kNorm4x4[QpRem], zan::h264fwd::kQuant4x4[QpRem], pDstInvScale,
                  pDstFwdScale);
    return zanStsOk;
}

ZanStatus zaniGenScaleLevel8x8_H264_8u16s_D2(const Zan8u* pSrcScaling, Zan32s srcStep, Zan16s* pDstInvScale,
                                             Zan16s* pDstFwdScale, Zan32s QpRem) {
    if (!pSrcScaling || !pDstInvScale || !pDstFwdScale) return zanStsNullPtr;
    if (above(QpRem, 5)) return zanStsQpBad;
    fw::gen_scale(pSrcScaling, srcStep, 8, 64, zan::h264fwd::kNorm8x8[QpRem], zan::h264fwd::kQuant8x8[QpRem],
                  pDstInvScale, pDstFwdScale);
    return zanStsOk;
}

}  // namespace zan::ZAN_PATH
