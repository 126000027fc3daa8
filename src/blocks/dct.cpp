// 8x8 DCTs: the transposed inverse with its count shortcuts, to a plane or
// to interleaved chroma; the plain inverse and forward transforms; the
// inverse-or-fill and split-and-transform forms for interleaved chroma.
// The arithmetic of each transform is described in dct.h.
#include <algorithm>

#include "blocks/dct.h"
#include "blocks/dct_simd.h"
#include "common/scalar.h"
#include "common/simd.h"
#include "frame/bodies.h"

namespace zan::ZAN_PATH::dct {
namespace {

using namespace zan::dct;
using scalar::at;
using scalar::put;

constexpr Mat8 kAanPass2 = inverse8(kCosQ16, kCosQ16[4]);
constexpr Zan32s kAanRound = 0x28000 << 2;  // 0x28000 at 2^18, two fraction bits more
constexpr int kAanShift = 20;
constexpr Mat8 kPlainInv = inverse8(kCosQ16r, kCosQ16r[4]);
constexpr Mat8 kPlainFwd = forward8(kCosQ15, kCosQ15[4]);


enum Class { kZero = 0, kDc = 1, k4x4 = 2, k8x8 = 3 };
inline int count_class(Zan32s count) { return count < 0 ? kZero : count == 0 ? kDc : count <= 9 ? k4x4 : k8x8; }
// The 8-bit forms treat a negative count as 0.
inline int count_class8(Zan32s count) { return std::max(count_class(count), static_cast<int>(kDc)); }

template <class T>
constexpr Zan32s kLow = sizeof(T) == 1 ? 0 : -256;
constexpr Zan32s kHigh = 255;

inline Zan32s clamp(Zan32s v, Zan32s lo, Zan32s hi) { return v < lo ? lo : v > hi ? hi : v; }

// ============================================================ scalar rules

// One rounded product (a g[k] + 0x8000) >> 16 of a = 4 * coefficient and a
// cosine: (b g + 0x4000) >> 15 with b = wrap16(2 * coefficient); for the even
// cosines g1 and g4 it is taken as (a (g / 2) + 0x4000) >> 15 with
// a = wrap16(2 * b), the same value unless a wraps.
inline Zan16s aan_product(Zan16s b, int k) {
    Zan32s g = kCosQ16[k];
    if (g % 2 == 0) return wrap16((wrap16(2 * b) * (g / 2) + 0x4000) >> 15);
    return wrap16((b * g + 0x4000) >> 15);
}

// (s g4 + 0x8000) >> 16 of a pass-1 value s: pmulhrsw with g4 / 2.
inline Zan16s times_g4(Zan16s s) { return wrap16((s * (kCosQ16[4] / 2) + 0x4000) >> 15); }

// The whole transposed inverse of src (all 64 coefficients), before the
// output saturation.
void aan_rule(const Zan16s* src, Block& out) {
    Block t;  // t[x][v] after pass 1
    for (int v = 0; v < 8; ++v) {
        Zan16s b[8];
        for (int u = 0; u < 8; ++u) b[u] = wrap16(2 * src[8 * u + v]);
        Zan32s p0 = aan_product(b[0], 4), p4 = aan_product(b[4], 4);
        Zan32s s = p0 + p4, d = p0 - p4;
        Zan32s m = aan_product(b[2], 2) + aan_product(b[6], 6);
        Zan32s n = aan_product(b[2], 6) - aan_product(b[6], 2);
        const Zan32s e[4] = {s + m, d + n, d - n, s - m};
        // Odd half: two rotations, then the middle pair through g4.
        Zan16s r4 = wrap16(aan_product(b[1], 7) - aan_product(b[7], 1));
        Zan16s r7 = wrap16(aan_product(b[1], 1) + aan_product(b[7], 7));
        Zan16s r5 = wrap16(aan_product(b[5], 3) - aan_product(b[3], 5));
        Zan16s r6 = wrap16(aan_product(b[5], 5) + aan_product(b[3], 3));
        Zan16s pd = wrap16(r7 - r6), qd = wrap16(r4 - r5);
        const Zan32s o[4] = {r7 + r6, times_g4(wrap16(pd + qd)), times_g4(wrap16(pd - qd)), r4 + r5};
        for (int x = 0; x < 4; ++x) {
            t[x][v] = wrap16(e[x] + o[x]);
            t[7 - x][v] = wrap16(e[x] - o[x]);
        }
    }
    transpose_rule(t);
    mat_rule(kAanPass2, t, out, kAanRound, kAanShift);
}

// Output value of every sample for one block and one count, saturated to lo..hi.
void aan_values(const Zan16s* src, int cls, Zan32s lo, Zan32s hi, Zan32s (&v)[8][8]) {
    Block out{};
    if (cls == kDc) {
        for (auto& r : out)
            for (auto& x : r) x = static_cast<Zan16s>(src[0] / 8);
    } else if (cls == k4x4) {
        Zan16s corner[64] = {};
        for (int i = 0; i < 4; ++i)
            for (int j = 0; j < 4; ++j) corner[8 * i + j] = src[8 * i + j];
        aan_rule(corner, out);
    } else if (cls == k8x8) {
        aan_rule(src, out);
    }
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) v[y][x] = clamp(out[y][x], lo, hi);
}

void inv16_rule(const Zan16s* src, Zan16s* dst, Zan32s step, Zan32s count) {
    Zan32s v[8][8];
    aan_values(src, count_class(count), kLow<Zan16s>, kHigh, v);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) put(dst, step, x, y, static_cast<Zan16s>(v[y][x]));
}

void inv8_rule(const Zan16s* src, Zan8u* dst, Zan32s step, Zan32s count) {
    Zan32s v[8][8];
    aan_values(src, count_class8(count), kLow<Zan8u>, kHigh, v);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) put(dst, step, x, y, static_cast<Zan8u>(v[y][x]));
}

template <class T>
void pair_rule(const Zan16s* srcU, const Zan16s* srcV, T* dst, Zan32s step, Zan32s countU, Zan32s countV) {
    constexpr bool u8 = sizeof(T) == 1;
    Zan32s u[8][8], v[8][8];
    aan_values(srcU, u8 ? count_class8(countU) : count_class(countU), kLow<T>, kHigh, u);
    aan_values(srcV, u8 ? count_class8(countV) : count_class(countV), kLow<T>, kHigh, v);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            put(dst, step, 2 * x, y, static_cast<T>(u[y][x]));
            put(dst, step, 2 * x + 1, y, static_cast<T>(v[y][x]));
        }
}

// Plain inverse to samples 0..255 (unsaturated 16-bit values in out).
void plain_inv_values(const Zan16s* src, Block& out) {
    Block in, t;
    for (int i = 0; i < 8; ++i)
        for (int j = 0; j < 8; ++j) in[i][j] = src[8 * i + j];
    transpose_rule(in);  // in[u][v]
    mat_rule(kPlainInv, in, t, 1 << 11, 12);  // t[x][v], 32 times the 1-D values
    transpose_rule(t);
    mat_rule(kPlainInv, t, out, 1 << 21, 22);
}

void plain_inv_rule(const Zan16s* src, Zan8u* dst, Zan32s step) {
    Block out;
    plain_inv_values(src, out);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) put(dst, step, x, y, static_cast<Zan8u>(clamp(out[y][x], 0, 255)));
}

void plain_fwd_rule(const Zan8u* src, Zan32s step, Zan16s* dst) {
    Block f, t, c;
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) f[y][x] = at(src, step, x, y);
    mat_rule(kPlainFwd, f, t, 1 << 11, 12);  // t[v][x], 16 times the 1-D values
    transpose_rule(t);
    mat_rule(kPlainFwd, t, c, 1 << 19, 20);  // c[u][v]
    transpose_rule(c);
    for (int v = 0; v < 8; ++v)
        for (int u = 0; u < 8; ++u) dst[8 * v + u] = c[v][u];
}

// Bit 1 of flag: the first plane is DC only; bit 0: the second.
void inv_or_set_rule(const Zan16s* srcU, const Zan16s* srcV, Zan8u* dst, Zan32s step, Zan32s flag) {
    const Zan16s* src[2] = {srcU, srcV};
    Zan8u plane[2][8][8];
    for (int p = 0; p < 2; ++p) {
        bool dcOnly = (flag >> (1 - p)) & 1;
        if (dcOnly) {
            Zan8u value = static_cast<Zan8u>((src[p][0] >> 3) & 255);
            for (auto& r : plane[p])
                for (auto& x : r) x = value;
        } else {
            plain_inv_rule(src[p], &plane[p][0][0], 8);
        }
    }
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            put(dst, step, 2 * x, y, plane[0][y][x]);
            put(dst, step, 2 * x + 1, y, plane[1][y][x]);
        }
}

void fwd_pair_rule(const Zan8u* src, Zan32s step, Zan16s* dstU, Zan16s* dstV) {
    Zan8u plane[2][64];
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            plane[0][8 * y + x] = at(src, step, 2 * x, y);
            plane[1][8 * y + x] = at(src, step, 2 * x + 1, y);
        }
    plain_fwd_rule(plane[0], 8, dstU);
    plain_fwd_rule(plane[1], 8, dstV);
}

// ========================================================== vector kernels

using simd::row;

template <int N>
__attribute__((always_inline)) inline void aan_pass1(const Zan16s* src, __m128i (&t)[8]) {
    __m128i b[N], bb[N];
#pragma GCC unroll 8
    for (int u = 0; u < N; ++u) {
        __m128i x = N == 8 ? _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + 8 * u))
                           : _mm_loadl_epi64(reinterpret_cast<const __m128i*>(src + 8 * u));
        b[u] = _mm_add_epi16(x, x);
        bb[u] = _mm_add_epi16(b[u], b[u]);
    }
    // (b g + 0x4000) >> 15: pmulhrsw, with g - 65536 and 2b added back for
    // g above 32767; an even g as g / 2 times 2b.
    auto prod = [&](int u, int k) {
        Zan32s g = kCosQ16[k];
        if (g % 2 == 0) return _mm_mulhrs_epi16(bb[u], _mm_set1_epi16(static_cast<short>(g / 2)));
        if (g < 32768) return _mm_mulhrs_epi16(b[u], _mm_set1_epi16(static_cast<short>(g)));
        return _mm_add_epi16(_mm_mulhrs_epi16(b[u], _mm_set1_epi16(static_cast<short>(g - 65536))), bb[u]);
    };
    __m128i s, d, m, n;
    __m128i p0 = prod(0, 4);
    if constexpr (N == 8) {
        __m128i p4 = prod(4, 4);
        s = _mm_add_epi16(p0, p4);
        d = _mm_sub_epi16(p0, p4);
        m = _mm_add_epi16(prod(2, 2), prod(6, 6));
        n = _mm_sub_epi16(prod(2, 6), prod(6, 2));
    } else {
        s = d = p0;
        m = prod(2, 2);
        n = prod(2, 6);
    }
    const __m128i e[4] = {_mm_add_epi16(s, m), _mm_add_epi16(d, n), _mm_sub_epi16(d, n), _mm_sub_epi16(s, m)};
    __m128i r4, r5, r6, r7;
    if constexpr (N == 8) {
        r4 = _mm_sub_epi16(prod(1, 7), prod(7, 1));
        r7 = _mm_add_epi16(prod(1, 1), prod(7, 7));
        r5 = _mm_sub_epi16(prod(5, 3), prod(3, 5));
        r6 = _mm_add_epi16(prod(5, 5), prod(3, 3));
    } else {
        r4 = prod(1, 7);
        r7 = prod(1, 1);
        r5 = _mm_sub_epi16(_mm_setzero_si128(), prod(3, 5));
        r6 = prod(3, 3);
    }
    const __m128i g4 = _mm_set1_epi16(static_cast<short>(kCosQ16[4] / 2));
    __m128i pd = _mm_sub_epi16(r7, r6), qd = _mm_sub_epi16(r4, r5);
    const __m128i o[4] = {_mm_add_epi16(r7, r6), _mm_mulhrs_epi16(_mm_add_epi16(pd, qd), g4),
                          _mm_mulhrs_epi16(_mm_sub_epi16(pd, qd), g4), _mm_add_epi16(r4, r5)};
#pragma GCC unroll 4
    for (int x = 0; x < 4; ++x) {
        t[x] = _mm_add_epi16(e[x], o[x]);
        t[7 - x] = _mm_sub_epi16(e[x], o[x]);
    }
}

// Pass 2 of the transposed inverse: inv8_pass with kAanPass2, arranged for
// these constants: the even part shares p0 +- p4 and m, n, g4 = 2 * 23170
// needs no correction, and the corrections for constants above 32767 are
// added to m, n and each odd sum rather than to every output.  N inputs
// (4 or 8; the rest zero).  Each output row goes to sink(y, row) as soon as
// it is made: row y, then row 7 - y, for y = 0..3.  The row keeps Pre more
// fraction bits: it is sat16(sum >> (20 - Pre)), so that a later >> Pre
// gives the value saturated to -2^(15-Pre) .. 2^(15-Pre) - 1 in one
// instruction (floor shifts compose, and int16 saturation at the finer
// scale lands exactly on those bounds).
template <int N, int Pre, class Sink>
__attribute__((always_inline)) inline void aan_pass2(const __m128i* t, Sink&& sink) {
    constexpr int kShift = kAanShift - Pre;
    const __m128i z = _mm_setzero_si128(), r = _mm_set1_epi32(kAanRound);
    constexpr Zan32s g2 = kCosQ16[2], g6 = kCosQ16[6], c4 = kCosQ16[4] / 2;
    static_assert(kCosQ16[4] % 2 == 0 && g6 < 32768 && hi16(g2) == 1 && hi16(-g2) == -1);
    __m128i t4 = N == 8 ? t[4] : z, t6 = N == 8 ? t[6] : z;
    __m128i p04[2] = {_mm_unpacklo_epi16(t[0], t4), _mm_unpackhi_epi16(t[0], t4)};
    __m128i p26[2] = {_mm_unpacklo_epi16(t[2], t6), _mm_unpackhi_epi16(t[2], t6)};
    __m128i e[4][2];
#pragma GCC unroll 2
    for (int h = 0; h < 2; ++h) {
        __m128i a = _mm_add_epi32(_mm_slli_epi32(_mm_madd_epi16(p04[h], pair_const(c4, c4)), 1), r);
        __m128i b = N == 8 ? _mm_add_epi32(_mm_slli_epi32(_mm_madd_epi16(p04[h], pair_const(c4, -c4)), 1), r) : a;
        __m128i m = _mm_madd_epi16(p26[h], pair_const(g2, g6));   // T2 g2 + T6 g6 - 65536 T2
        __m128i n = _mm_madd_epi16(p26[h], pair_const(g6, -g2));  // T2 g6 - T6 g2 + 65536 T6
        __m128i c2 = h ? _mm_unpackhi_epi16(z, t[2]) : _mm_unpacklo_epi16(z, t[2]);
        m = _mm_add_epi32(m, c2);
        if constexpr (N == 8) n = _mm_sub_epi32(n, h ? _mm_unpackhi_epi16(z, t6) : _mm_unpacklo_epi16(z, t6));
        e[0][h] = _mm_add_epi32(a, m);
        e[3][h] = _mm_sub_epi32(a, m);
        e[1][h] = _mm_add_epi32(b, n);
        e[2][h] = _mm_sub_epi32(b, n);
    }
    __m128i t5 = N == 8 ? t[5] : z, t7 = N == 8 ? t[7] : z;
    __m128i p13[2] = {_mm_unpacklo_epi16(t[1], t[3]), _mm_unpackhi_epi16(t[1], t[3])};
    __m128i p57[2] = {_mm_unpacklo_epi16(t5, t7), _mm_unpackhi_epi16(t5, t7)};
#pragma GCC unroll 4
    for (int y = 0; y < 4; ++y) {
        Zan32s h[N] = {};
        for (int v = 1; v < N; v += 2) h[v] = hi16(kAanPass2.m[y][v]);
        __m128i c;
        bool any = signed_sum(h, t, c);
        __m128i o[2];
#pragma GCC unroll 2
        for (int hh = 0; hh < 2; ++hh) {
            o[hh] = _mm_madd_epi16(p13[hh], pair_const(kAanPass2.m[y][1], kAanPass2.m[y][3]));
            if constexpr (N == 8)
                o[hh] = _mm_add_epi32(o[hh], _mm_madd_epi16(p57[hh], pair_const(kAanPass2.m[y][5], kAanPass2.m[y][7])));
        }
        if (any) add_high(o[0], o[1], c);
        sink(y, _mm_packs_epi32(_mm_srai_epi32(_mm_add_epi32(e[y][0], o[0]), kShift),
                                _mm_srai_epi32(_mm_add_epi32(e[y][1], o[1]), kShift)));
        sink(7 - y, _mm_packs_epi32(_mm_srai_epi32(_mm_sub_epi32(e[y][0], o[0]), kShift),
                                    _mm_srai_epi32(_mm_sub_epi32(e[y][1], o[1]), kShift)));
    }
}

// One block's rows as 16-bit values (saturated to int16 at Pre extra
// fraction bits, see aan_pass2), by class, each handed to sink(y, row).
template <int C, int Pre, class Sink>
__attribute__((always_inline)) inline void aan_block(const Zan16s* src, Sink&& sink) {
    if constexpr (C == kZero) {
#pragma GCC unroll 8
        for (int y = 0; y < 8; ++y) sink(y, _mm_setzero_si128());
    } else if constexpr (C == kDc) {
        __m128i v = _mm_set1_epi16(static_cast<short>(sat16((src[0] / 8) * (1 << Pre))));
#pragma GCC unroll 8
        for (int y = 0; y < 8; ++y) sink(y, v);
    } else {
        __m128i t[8];
        if constexpr (C == k4x4) {
            aan_pass1<4>(src, t);
            transpose8x4(t);
            aan_pass2<4, Pre>(t, sink);
        } else {
            aan_pass1<8>(src, t);
            transpose8x8(t);
            aan_pass2<8, Pre>(t, sink);
        }
    }
}
template <int C, int Pre>
__attribute__((always_inline)) inline void aan_block(const Zan16s* src, __m128i (&o)[8]) {
    aan_block<C, Pre>(src, [&](int y, __m128i r) { o[y] = r; });
}

// The 16-bit outputs: rows made with 7 extra fraction bits (saturated to
// int16 there), then >> 7, which saturates the value to -256..255.
constexpr int kPre16 = 7;
inline __m128i clamp16(__m128i v) { return _mm_srai_epi16(v, kPre16); }

template <int C>
void inv16_block(const Zan16s* src, Zan16s* dst, Zan32s step) {
    aan_block<C, kPre16>(src, [&](int y, __m128i r) { simd::store16(row(dst, step, y), clamp16(r)); });
}

template <int C>
void inv8_block(const Zan16s* src, Zan8u* dst, Zan32s step) {
    aan_block<C, 0>(src, [&](int y, __m128i r) { simd::store8(row(dst, step, y), _mm_packus_epi16(r, r)); });
}

template <int CU, int CV>
void pair16_block(const Zan16s* srcU, const Zan16s* srcV, Zan16s* dst, Zan32s step) {
    __m128i u[8];
    aan_block<CU, kPre16>(srcU, u);
    aan_block<CV, kPre16>(srcV, [&](int y, __m128i r) {
        __m128i a = clamp16(u[y]), b = clamp16(r);
        simd::store16(row(dst, step, y), _mm_unpacklo_epi16(a, b));
        simd::store16(row(dst, step, y) + 16, _mm_unpackhi_epi16(a, b));
    });
}

template <int CU, int CV>
void pair8_block(const Zan16s* srcU, const Zan16s* srcV, Zan8u* dst, Zan32s step) {
    __m128i u[8];
    aan_block<CU, 0>(srcU, u);
    aan_block<CV, 0>(srcV, [&](int y, __m128i r) {
        simd::store16(row(dst, step, y), _mm_unpacklo_epi8(_mm_packus_epi16(u[y], u[y]), _mm_packus_epi16(r, r)));
    });
}

// The plain inverse: 16-bit rows of samples (before the 0..255 saturation).
__attribute__((always_inline)) inline void plain_inv_block(const Zan16s* src, __m128i (&o)[8]) {
    __m128i in[8], t[8];
    load_block(src, in);
    transpose8x8(in);
    inv8_pass<kPlainInv, 8, 12>(in, t, 1 << 11);
    transpose8x8(t);
    inv8_pass<kPlainInv, 8, 22>(t, o, 1 << 21);
}

void plain_inv_simd(const Zan16s* src, Zan8u* dst, Zan32s step) {
    __m128i o[8];
    plain_inv_block(src, o);
#pragma GCC unroll 8
    for (int y = 0; y < 8; ++y) simd::store8(row(dst, step, y), _mm_packus_epi16(o[y], o[y]));
}

// The plain forward of eight rows of 16-bit samples to coefficient rows.
__attribute__((always_inline)) inline void plain_fwd_block(__m128i (&f)[8], Zan16s* dst) {
    __m128i t[8], c[8];
    mat_pass<kPlainFwd, 8, 8, 12>(f, t, 1 << 11);
    transpose8x8(t);
    mat_pass<kPlainFwd, 8, 8, 20>(t, c, 1 << 19);
    transpose8x8(c);
    store_block(dst, c);
}

void plain_fwd_simd(const Zan8u* src, Zan32s step, Zan16s* dst) {
    __m128i f[8];
    const __m128i z = _mm_setzero_si128();
#pragma GCC unroll 8
    for (int y = 0; y < 8; ++y) f[y] = _mm_unpacklo_epi8(simd::load8(row(src, step, y)), z);
    plain_fwd_block(f, dst);
}

template <bool DcU, bool DcV>
void inv_or_set_block(const Zan16s* srcU, const Zan16s* srcV, Zan8u* dst, Zan32s step) {
    __m128i u[8], v[8];
    if constexpr (DcU) {
        for (auto& r : u) r = _mm_set1_epi16(static_cast<short>((srcU[0] >> 3) & 255));
    } else {
        plain_inv_block(srcU, u);
    }
    if constexpr (DcV) {
        for (auto& r : v) r = _mm_set1_epi16(static_cast<short>((srcV[0] >> 3) & 255));
    } else {
        plain_inv_block(srcV, v);
    }
#pragma GCC unroll 8
    for (int y = 0; y < 8; ++y)
        simd::store16(row(dst, step, y), _mm_unpacklo_epi8(_mm_packus_epi16(u[y], u[y]), _mm_packus_epi16(v[y], v[y])));
}

alignas(16) constexpr Zan8u kSplitChannels[16] = {0, 2, 4, 6, 8, 10, 12, 14, 1, 3, 5, 7, 9, 11, 13, 15};

void fwd_pair_simd(const Zan8u* src, Zan32s step, Zan16s* dstU, Zan16s* dstV) {
    const __m128i split = simd::load16a(kSplitChannels), z = _mm_setzero_si128();
    __m128i u[8], v[8];
#pragma GCC unroll 8
    for (int y = 0; y < 8; ++y) {
        __m128i x = _mm_shuffle_epi8(simd::load16(row(src, step, y)), split);
        u[y] = _mm_unpacklo_epi8(x, z);
        v[y] = _mm_unpackhi_epi8(x, z);
    }
    plain_fwd_block(u, dstU);
    plain_fwd_block(v, dstV);
}

// ================================================================= tables

using Block16Fn = void (*)(const Zan16s*, Zan16s*, Zan32s);
using Block8Fn = void (*)(const Zan16s*, Zan8u*, Zan32s);
using Pair16BlockFn = void (*)(const Zan16s*, const Zan16s*, Zan16s*, Zan32s);
using Pair8BlockFn = void (*)(const Zan16s*, const Zan16s*, Zan8u*, Zan32s);

constexpr Block16Fn kInv16[4] = {inv16_block<kZero>, inv16_block<kDc>, inv16_block<k4x4>, inv16_block<k8x8>};
constexpr Block8Fn kInv8[4] = {inv8_block<kDc>, inv8_block<kDc>, inv8_block<k4x4>, inv8_block<k8x8>};

#define ZAN_ROW(f, cu) {f<cu, kZero>, f<cu, kDc>, f<cu, k4x4>, f<cu, k8x8>}
constexpr Pair16BlockFn kPair16[4][4] = {ZAN_ROW(pair16_block, kZero), ZAN_ROW(pair16_block, kDc),
                                         ZAN_ROW(pair16_block, k4x4), ZAN_ROW(pair16_block, k8x8)};
constexpr Pair8BlockFn kPair8[4][4] = {ZAN_ROW(pair8_block, kZero), ZAN_ROW(pair8_block, kDc),
                                       ZAN_ROW(pair8_block, k4x4), ZAN_ROW(pair8_block, k8x8)};
#undef ZAN_ROW

// Index: flag & 3 (bit 1: U DC only, bit 0: V DC only).
constexpr Pair8BlockFn kInvOrSet[4] = {inv_or_set_block<false, false>, inv_or_set_block<false, true>,
                                       inv_or_set_block<true, false>, inv_or_set_block<true, true>};

}  // namespace

// The count-steered kernels as the exports run them.
void inv16_simd(const Zan16s* src, Zan16s* dst, Zan32s step, Zan32s count) {
    kInv16[count_class(count)](src, dst, step);
}
void inv8_simd(const Zan16s* src, Zan8u* dst, Zan32s step, Zan32s count) {
    kInv8[count_class(count)](src, dst, step);
}
void pair16_simd(const Zan16s* srcU, const Zan16s* srcV, Zan16s* dst, Zan32s step, Zan32s countU, Zan32s countV) {
    kPair16[count_class(countU)][count_class(countV)](srcU, srcV, dst, step);
}
void pair8_simd(const Zan16s* srcU, const Zan16s* srcV, Zan8u* dst, Zan32s step, Zan32s countU, Zan32s countV) {
    kPair8[count_class8(countU)][count_class8(countV)](srcU, srcV, dst, step);
}
void inv_or_set_simd(const Zan16s* srcU, const Zan16s* srcV, Zan8u* dst, Zan32s step, Zan32s flag) {
    kInvOrSet[flag & 3](srcU, srcV, dst, step);
}

namespace {

// ============================================================= catalogue

constexpr KernelPair<Inv16Fn> kInv16Pairs[] = {{"idct8x8_aan_16s", inv16_rule, inv16_simd, 8, 8, 0}};
constexpr KernelPair<Inv8Fn> kInv8Pairs[] = {{"idct8x8_aan_8u", inv8_rule, inv8_simd, 8, 8, 0}};
constexpr KernelPair<InvPair16Fn> kPair16Pairs[] = {
    {"idct8x8_aan_16s_c2", pair_rule<Zan16s>, pair16_simd, 16, 8, 0}};
constexpr KernelPair<InvPair8Fn> kPair8Pairs[] = {{"idct8x8_aan_8u_c2", pair_rule<Zan8u>, pair8_simd, 16, 8, 0}};
constexpr KernelPair<InvOrSetFn> kInvOrSetPairs[] = {
    {"idct8x8_or_set_8u_c2", inv_or_set_rule, inv_or_set_simd, 16, 8, 0}};
constexpr KernelPair<PlainInvFn> kPlainInvPairs[] = {{"idct8x8_8u", plain_inv_rule, plain_inv_simd, 8, 8, 0}};
constexpr KernelPair<PlainFwdFn> kPlainFwdPairs[] = {{"fdct8x8_8u", plain_fwd_rule, plain_fwd_simd, 8, 8, 0}};
constexpr KernelPair<FwdPairFn> kFwdPairPairs[] = {{"fdct8x8_8u_c2", fwd_pair_rule, fwd_pair_simd, 16, 8, 0}};

}  // namespace

const TransformKernels transform_kernels = {kInv16Pairs,    kInv8Pairs,     kPair16Pairs,   kPair8Pairs,
                                            kInvOrSetPairs, kPlainInvPairs, kPlainFwdPairs, kFwdPairPairs};

}  // namespace zan::ZAN_PATH::dct

// =============================================================== exports

namespace zan::ZAN_PATH {

ZanStatus zaniDCT8x8Inv_16s8u_C1R(const Zan16s* pSrc, Zan8u* pDst, Zan32s dstStep) {
    if (!pSrc || !pDst) return zanStsNullPtr;
    if (dstStep < 1) return zanStsStepBad;
    dct::plain_inv_simd(pSrc, pDst, dstStep);
    return zanStsOk;
}

ZanStatus zaniDCT8x8Fwd_8u16s_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan16s* pDst) {
    if (!pSrc || !pDst) return zanStsNullPtr;
    if (srcStep < 1) return zanStsStepBad;
    dct::plain_fwd_simd(pSrc, srcStep, pDst);
    return zanStsOk;
}

ZanStatus zaniDCT8x8Inv_AANTransposed_16s_C1R(const Zan16s* pSrc, Zan16s* pDst, Zan32s dstStep, Zan32s count) {
    if (!pSrc || !pDst) return zanStsNullPtr;
    if (dstStep < 1) return zanStsStepBad;
    dct::inv16_simd(pSrc, pDst, dstStep, count);
    return zanStsOk;
}

ZanStatus zaniDCT8x8Inv_AANTransposed_16s8u_C1R(const Zan16s* pSrc, Zan8u* pDst, Zan32s dstStep, Zan32s count) {
    if (!pSrc || !pDst) return zanStsNullPtr;
    if (dstStep < 1) return zanStsStepBad;
    dct::inv8_simd(pSrc, pDst, dstStep, count);
    return zanStsOk;
}

ZanStatus zaniDCT8x8Inv_AANTransposed_16s_P2C2R(const Zan16s* pSrcU, const Zan16s* pSrcV, Zan16s* pDst,
                                                Zan32s dstStep, Zan32s countU, Zan32s countV) {
    if (!pSrcU || !pSrcV || !pDst) return zanStsNullPtr;
    if (dstStep < 1) return zanStsStepBad;
    dct::pair16_simd(pSrcU, pSrcV, pDst, dstStep, countU, countV);
    return zanStsOk;
}

ZanStatus zaniDCT8x8Inv_AANTransposed_16s8u_P2C2R(const Zan16s* pSrcU, const Zan16s* pSrcV, Zan8u* pDst,
                                                  Zan32s dstStep, Zan32s countU, Zan32s countV) {
    if (!pSrcU || !pSrcV || !pDst) return zanStsNullPtr;
    if (dstStep < 1) return zanStsStepBad;
    dct::pair8_simd(pSrcU, pSrcV, pDst, dstStep, countU, countV);
    return zanStsOk;
}

ZanStatus zaniDCT8x8InvOrSet_16s8u_P2C2(const Zan16s* pSrcU, const Zan16s* pSrcV, Zan8u* pDst, Zan32s dstStep,
                                        Zan32s flag) {
    if (!pSrcU || !pSrcV || !pDst) return zanStsNullPtr;
    dct::inv_or_set_simd(pSrcU, pSrcV, pDst, dstStep, flag);
    return zanStsOk;
}

ZanStatus zaniDCT8x8Fwd_8u16s_C2P2(const Zan8u* pSrc, Zan32s srcStep, Zan16s* pDstU, Zan16s* pDstV) {
    if (!pSrc || !pDstU || !pDstV) return zanStsNullPtr;
    dct::fwd_pair_simd(pSrc, srcStep, pDstU, pDstV);
    return zanStsOk;
}

}  // namespace zan::ZAN_PATH
