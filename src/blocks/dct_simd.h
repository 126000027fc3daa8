// Shared pieces of the DCT kernels: cosine tables, constant matrices built
// from them, and the two building blocks that every transform here is made
// of, each as a plain rule and as a vector kernel:
//   - transpose of an 8x8 block of 16-bit values;
//   - a matrix pass: out[o] = sat16((wrap32(sum_i M[o][i] * in[i]) + round)
//     >> shift), applied to all 8 lanes (columns) at once.  Products are
//     exact 32-bit products; constants may exceed 16 bits (Q16 cosines): the
//     vector kernel splits each into a low 16-bit part for pmaddwd and a
//     multiple of 65536 added as a 16-bit sum shifted up, which gives the same
//     sum modulo 2^32.
// A block in a rule is Zan16s b[8][8]: b[r][lane], register r of the kernel.
// Internal to the kernel sources; everything lives in the path namespace.
#pragma once

#include <emmintrin.h>
#include <tmmintrin.h>

#include <cstdint>

#include "common/path.h"
#include "common/simd.h"
#include "zanvc.h"

namespace zan::ZAN_PATH::dct {

// ---------------------------------------------------------------- constants

// round(2^n cos(k pi / 16)) for k = 0..8 (Q16 is the table g, whose entries
// are as given, some truncated).
inline constexpr Zan32s kCosQ16[9] = {65536, 64276, 60547, 54491, 46340, 36409, 25079, 12785, 0};
// round(65536 cos(k pi / 16)), all rounded to nearest.
inline constexpr Zan32s kCosQ16r[9] = {65536, 64277, 60547, 54491, 46341, 36410, 25080, 12785, 0};
inline constexpr Zan32s kCosQ15[9] = {32768, 32138, 30274, 27246, 23170, 18205, 12540, 6393, 0};
inline constexpr Zan32s kCosQ14[9] = {16384, 16069, 15137, 13623, 11585, 9102, 6270, 3196, 0};

// cos(a pi / 16) from a table of the first quadrant.
constexpr Zan32s cos16(const Zan32s (&c)[9], int a) {
    a %= 32;
    if (a <= 8) return c[a];
    if (a <= 16) return -c[16 - a];
    if (a <= 24) return -c[a - 16];
    return c[32 - a];
}

struct Mat8 {
    Zan32s m[8][8];
};

// 8-point inverse: out[y] = sum_v M[y][v] in[v], M[y][v] = c(v) cos((2y+1) v pi / 16)
// with dc standing for c(0) cos 0.
constexpr Mat8 inverse8(const Zan32s (&c)[9], Zan32s dc) {
    Mat8 r{};
    for (int y = 0; y < 8; ++y)
        for (int v = 0; v < 8; ++v) r.m[y][v] = v == 0 ? dc : cos16(c, (2 * y + 1) * v);
    return r;
}
// 8-point forward: the transpose.
constexpr Mat8 forward8(const Zan32s (&c)[9], Zan32s dc) {
    Mat8 inv = inverse8(c, dc), r{};
    for (int y = 0; y < 8; ++y)
        for (int v = 0; v < 8; ++v) r.m[v][y] = inv.m[y][v];
    return r;
}

constexpr Zan16s lo16(Zan32s m) { return static_cast<Zan16s>(static_cast<Zan16u>(static_cast<Zan32u>(m) & 0xFFFF)); }
constexpr Zan32s hi16(Zan32s m) { return (m - lo16(m)) / 65536; }

// pmaddwd cannot overflow when no low part is -32768, and the corrections
// must be -1, 0 or 1 times an input.
constexpr bool pmaddwd_safe(const Mat8& M) {
    for (const auto& row : M.m)
        for (Zan32s v : row)
            if (lo16(v) == -32768 || hi16(v) < -1 || hi16(v) > 1) return false;
    return true;
}

// ------------------------------------------------------------------ rules

using Block = Zan16s[8][8];

inline Zan16s wrap16(Zan32s v) { return static_cast<Zan16s>(static_cast<Zan16u>(static_cast<Zan32u>(v) & 0xFFFF)); }
inline Zan16s sat16(Zan32s v) { return static_cast<Zan16s>(v < -32768 ? -32768 : v > 32767 ? 32767 : v); }

inline void transpose_rule(Block& b) {
    for (int r = 0; r < 8; ++r)
        for (int c = r + 1; c < 8; ++c) {
            Zan16s t = b[r][c];
            b[r][c] = b[c][r];
            b[c][r] = t;
        }
}

// The matrix pass over the registers (rows) of a block; in and out distinct.
inline void mat_rule(const Mat8& M, const Block& in, Block& out, Zan32s round, int shift) {
    for (int o = 0; o < 8; ++o)
        for (int l = 0; l < 8; ++l) {
            std::int64_t s = 0;
            for (int i = 0; i < 8; ++i) s += static_cast<std::int64_t>(M.m[o][i]) * in[i][l];
            Zan32u w = static_cast<Zan32u>(static_cast<std::uint64_t>(s)) + static_cast<Zan32u>(round);
            out[o][l] = sat16(static_cast<Zan32s>(w) >> shift);
        }
}

// ---------------------------------------------------------- vector kernels

inline __m128i pair_const(Zan32s a, Zan32s b) {
    return _mm_set1_epi32(static_cast<int>((static_cast<Zan32u>(static_cast<Zan16u>(lo16(b))) << 16) |
                                           static_cast<Zan16u>(lo16(a))));
}

inline void transpose8x8(__m128i (&r)[8]) { simd::transpose8x8_epi16(r); }

// Transpose when only lanes 0-3 of the eight registers matter: the first
// four registers of the result are right, the other four are not written.
inline void transpose8x4(__m128i (&r)[8]) {
    __m128i a0 = _mm_unpacklo_epi16(r[0], r[1]), a2 = _mm_unpacklo_epi16(r[2], r[3]);
    __m128i a4 = _mm_unpacklo_epi16(r[4], r[5]), a6 = _mm_unpacklo_epi16(r[6], r[7]);
    __m128i b0 = _mm_unpacklo_epi32(a0, a2), b1 = _mm_unpackhi_epi32(a0, a2);
    __m128i b4 = _mm_unpacklo_epi32(a4, a6), b5 = _mm_unpackhi_epi32(a4, a6);
    r[0] = _mm_unpacklo_epi64(b0, b4);
    r[1] = _mm_unpackhi_epi64(b0, b4);
    r[2] = _mm_unpacklo_epi64(b1, b5);
    r[3] = _mm_unpackhi_epi64(b1, b5);
}

// 16-bit c shifted into the high half of 32-bit lanes, added to lo and hi.
inline void add_high(__m128i& lo, __m128i& hi, __m128i c) {
    const __m128i z = _mm_setzero_si128();
    lo = _mm_add_epi32(lo, _mm_unpacklo_epi16(z, c));
    hi = _mm_add_epi32(hi, _mm_unpackhi_epi16(z, c));
}

// sum_i k_i * in[i] for k_i in -1, 0, 1 (16-bit, wrapping); false if all zero.
template <int N>
inline bool signed_sum(const Zan32s (&k)[N], const __m128i* in, __m128i& out) {
    bool any = false;
    out = _mm_setzero_si128();
    for (int i = 0; i < N; ++i) {
        if (k[i] == 1) out = _mm_add_epi16(out, in[i]), any = true;
        if (k[i] == -1) out = _mm_sub_epi16(out, in[i]), any = true;
    }
    return any;
}

// The matrix pass on the first NI registers (the rest taken as zero),
// writing NO outputs.
template <const Mat8& M, int NO, int NI, int Shift>
__attribute__((always_inline)) inline void mat_pass(const __m128i* in, __m128i* out, Zan32s round) {
    static_assert(pmaddwd_safe(M));
    constexpr int NP = (NI + 1) / 2;
    __m128i plo[NP], phi[NP];
    const __m128i z = _mm_setzero_si128();
#pragma GCC unroll 8
    for (int p = 0; p < NP; ++p) {
        __m128i b = 2 * p + 1 < NI ? in[2 * p + 1] : z;
        plo[p] = _mm_unpacklo_epi16(in[2 * p], b);
        phi[p] = _mm_unpackhi_epi16(in[2 * p], b);
    }
#pragma GCC unroll 8
    for (int o = 0; o < NO; ++o) {
        __m128i lo = _mm_set1_epi32(round), hi = lo;
#pragma GCC unroll 8
        for (int p = 0; p < NP; ++p) {
            Zan32s a = M.m[o][2 * p], b = 2 * p + 1 < NI ? M.m[o][2 * p + 1] : 0;
            if (lo16(a) == 0 && lo16(b) == 0) continue;
            __m128i k = pair_const(a, b);
            lo = _mm_add_epi32(lo, _mm_madd_epi16(plo[p], k));
            hi = _mm_add_epi32(hi, _mm_madd_epi16(phi[p], k));
        }
        Zan32s h[NI] = {};
        for (int i = 0; i < NI; ++i) h[i] = hi16(M.m[o][i]);
        __m128i c;
        if (signed_sum(h, in, c)) add_high(lo, hi, c);
        out[o] = _mm_packs_epi32(_mm_srai_epi32(lo, Shift), _mm_srai_epi32(hi, Shift));
    }
}

// The same pass for an 8-point inverse matrix (M[7-y][v] = (-1)^v M[y][v]),
// by even and odd halves: NI inputs (4 or 8; the rest zero), 8 outputs.
template <const Mat8& M, int NI, int Shift>
__attribute__((always_inline)) inline void inv8_pass(const __m128i* in, __m128i* out, Zan32s round) {
    static_assert(pmaddwd_safe(M));
    static_assert(NI == 4 || NI == 8);
    constexpr int NP = NI / 4;  // pairs per half: (0,2),(4,6) even; (1,3),(5,7) odd
    __m128i elo[NP], ehi[NP], olo[NP], ohi[NP];
#pragma GCC unroll 2
    for (int p = 0; p < NP; ++p) {
        elo[p] = _mm_unpacklo_epi16(in[4 * p], in[4 * p + 2]);
        ehi[p] = _mm_unpackhi_epi16(in[4 * p], in[4 * p + 2]);
        olo[p] = _mm_unpacklo_epi16(in[4 * p + 1], in[4 * p + 3]);
        ohi[p] = _mm_unpackhi_epi16(in[4 * p + 1], in[4 * p + 3]);
    }
    const __m128i r = _mm_set1_epi32(round);
#pragma GCC unroll 4
    for (int y = 0; y < 4; ++y) {
        __m128i el = r, eh = r, ol = _mm_setzero_si128(), oh = _mm_setzero_si128();
#pragma GCC unroll 2
        for (int p = 0; p < NP; ++p) {
            __m128i ke = pair_const(M.m[y][4 * p], M.m[y][4 * p + 2]);
            __m128i ko = pair_const(M.m[y][4 * p + 1], M.m[y][4 * p + 3]);
            el = _mm_add_epi32(el, _mm_madd_epi16(elo[p], ke));
            eh = _mm_add_epi32(eh, _mm_madd_epi16(ehi[p], ke));
            ol = _mm_add_epi32(ol, _mm_madd_epi16(olo[p], ko));
            oh = _mm_add_epi32(oh, _mm_madd_epi16(ohi[p], ko));
        }
        __m128i al = _mm_add_epi32(el, ol), ah = _mm_add_epi32(eh, oh);
        __m128i sl = _mm_sub_epi32(el, ol), sh = _mm_sub_epi32(eh, oh);
        Zan32s he[NI] = {}, ho[NI] = {};
        for (int v = 0; v < NI; ++v) (v % 2 ? ho : he)[v] = hi16(M.m[y][v]);
        __m128i ce, co;
        bool anyE = signed_sum(he, in, ce), anyO = signed_sum(ho, in, co);
        if (anyE || anyO) {
            add_high(al, ah, _mm_add_epi16(ce, co));
            add_high(sl, sh, _mm_sub_epi16(ce, co));
        }
        out[y] = _mm_packs_epi32(_mm_srai_epi32(al, Shift), _mm_srai_epi32(ah, Shift));
        out[7 - y] = _mm_packs_epi32(_mm_srai_epi32(sl, Shift), _mm_srai_epi32(sh, Shift));
    }
}

inline void load_block(const Zan16s* p, __m128i (&r)[8]) {
#pragma GCC unroll 8
    for (int i = 0; i < 8; ++i) r[i] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 8 * i));
}
inline void store_block(Zan16s* p, const __m128i (&r)[8]) {
#pragma GCC unroll 8
    for (int i = 0; i < 8; ++i) _mm_storeu_si128(reinterpret_cast<__m128i*>(p + 8 * i), r[i]);
}

}  // namespace zan::ZAN_PATH::dct
