// Hadamard-transformed differences: SATD over 4x4 tiles at every block size,
// the 8x8 SAT8x8D with its saturating partial sums, and the VC-1 8x8
// Hadamard block with the sum of its magnitudes.
//
// Butterfly stages pair the values at distance h (1, 2, 4): a + b goes to the
// lower index, a - b to the higher, which leaves the coefficients in natural
// order.  The last stage of a metric is replaced by |a + b| + |a - b| =
// 2 * max(|a|, |b|): the maxima are summed and the total is doubled.
#include "blocks/blockstats.h"
#include "common/scalar.h"
#include "common/simd.h"
#include "frame/bodies.h"

namespace zan::ZAN_PATH::blockstats {
namespace {

using namespace zan::blockstats;
using scalar::at;

// ============================================================ scalar rules

// SATD: exact.  For 8-bit samples no stage can leave 16 bits.
template <int W, int H>
Zan32s satd_rule(const Zan8u* a, Zan32s as, const Zan8u* b, Zan32s bs) {
    Zan32s maxima = 0;
    for (int ty = 0; ty < H; ty += 4)
        for (int tx = 0; tx < W; tx += 4) {
            Zan32s d[4][4];
            for (int y = 0; y < 4; ++y)
                for (int x = 0; x < 4; ++x) d[y][x] = at(a, as, tx + x, ty + y) - at(b, bs, tx + x, ty + y);
            for (int h = 1; h <= 2; h *= 2)  // down each column
                for (int y = 0; y < 4; ++y)
                    if (!(y & h))
                        for (int x = 0; x < 4; ++x) {
                            Zan32s p = d[y][x], q = d[y + h][x];
                            d[y][x] = p + q;
                            d[y + h][x] = p - q;
                        }
            for (int y = 0; y < 4; ++y) {  // along each row: one stage, then the maxima
                Zan32s r[4] = {d[y][0] + d[y][1], d[y][0] - d[y][1], d[y][2] + d[y][3], d[y][2] - d[y][3]};
                for (int x = 0; x < 2; ++x) {
                    Zan32s p = r[x] < 0 ? -r[x] : r[x], q = r[x + 2] < 0 ? -r[x + 2] : r[x + 2];
                    maxima += p > q ? p : q;
                }
            }
        }
    return 2 * maxima;
}

// Signed 16-bit saturating arithmetic, as the vector kernels do it.
inline Zan32s sat16(Zan32s v) { return v > 32767 ? 32767 : v < -32768 ? -32768 : v; }
inline Zan32s mag16(Zan32s v) { return sat16(v < 0 ? -v : v); }  // |v|, at most 32767

// Saturating butterfly stages at distances 1, 2 (and 4) over v[0..7].
template <int Stages>
inline void wht8(Zan32s* v) {
    for (int h = 1; h < (1 << Stages); h *= 2)
        for (int i = 0; i < 8; ++i)
            if (!(i & h)) {
                Zan32s p = v[i], q = v[i + h];
                v[i] = sat16(p + q);
                v[i + h] = sat16(p - q);
            }
}

// The stages down each column of c, then along each row.
template <int RowStages>
inline void wht8x8(Zan32s (&c)[8][8]) {
    for (int x = 0; x < 8; ++x) {
        Zan32s col[8];
        for (int y = 0; y < 8; ++y) col[y] = c[y][x];
        wht8<3>(col);
        for (int y = 0; y < 8; ++y) c[y][x] = col[y];
    }
    for (int y = 0; y < 8; ++y) wht8<RowStages>(c[y]);
}

// Samples read as signed 16-bit values, differences saturate.
template <class T>
Zan32s sat8x8d_rule(const T* a, Zan32s as, const T* b, Zan32s bs) {
    Zan32s d[8][8];
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x)
            d[y][x] = sat16(static_cast<Zan16s>(at(a, as, x, y)) - static_cast<Zan16s>(at(b, bs, x, y)));
    wht8x8<2>(d);  // the last row stage follows as maxima
    Zan32s s[8];
    for (int v = 0; v < 8; ++v) {
        s[v] = 0;
        for (int k = 0; k < 4; ++k) {
            Zan32s p = mag16(d[v][k]), q = mag16(d[v][k + 4]);
            s[v] = sat16(s[v] + (p > q ? p : q));
        }
    }
    for (int h = 4; h >= 1; h /= 2)
        for (int v = 0; v < h; ++v) s[v] = sat16(s[v] + s[v + h]);
    return 2 * s[0];
}

template <class T>
Zan32s hadamard_rule(const T* p, Zan32s step, Zan16s* pDst) {
    Zan32s c[8][8];
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) c[y][x] = at(p, step, x, y);
    wht8x8<3>(c);
    Zan32s s[8];
    for (int u = 0; u < 8; ++u) {
        s[u] = 0;
        for (int v = 0; v < 8; ++v) s[u] = sat16(s[u] + mag16(c[v][u]));
    }
    for (int h = 4; h >= 1; h /= 2)
        for (int u = 0; u < h; ++u) s[u] = sat16(s[u] + s[u + h]);
    for (int v = 0; v < 8; ++v)
        for (int u = 0; u < 8; ++u) pDst[8 * v + u] = static_cast<Zan16s>(c[v][u]);
    return s[0];
}

// ========================================================== vector kernels

using simd::load4;
using simd::load8;
using simd::load16;
using simd::row;

// One byte row of 8 (or two rows of 4) as [s0+s1, s2+s3, s4+s5, s6+s7,
// s0-s1, s2-s3, s4-s5, s6-s7]: the first horizontal stage on bytes.
inline __m128i hstage1(__m128i bytes8) {
    const __m128i k = _mm_setr_epi8(1, 1, 1, 1, 1, 1, 1, 1, 1, -1, 1, -1, 1, -1, 1, -1);
    return _mm_maddubs_epi16(_mm_unpacklo_epi64(bytes8, bytes8), k);
}

// Second horizontal stage on adjacent lanes: (v0 + v1, v0 - v1, ...).
inline __m128i hstage2(__m128i v) {
    const __m128i swap = _mm_setr_epi8(2, 3, 0, 1, 6, 7, 4, 5, 10, 11, 8, 9, 14, 15, 12, 13);
    const __m128i sign = _mm_setr_epi16(1, -1, 1, -1, 1, -1, 1, -1);
    return _mm_add_epi16(_mm_shuffle_epi8(v, swap), _mm_sign_epi16(v, sign));
}

inline __m128i diff_row8(const Zan8u* a, Zan32s as, const Zan8u* b, Zan32s bs, int y) {
    return _mm_sub_epi16(hstage1(load8(row(a, as, y))), hstage1(load8(row(b, bs, y))));
}

// 8 columns by 4 rows: two tiles.  Returns the 8 maxima of each of the two
// last-stage pairs, added.
inline __m128i tiles8x4(const Zan8u* a, Zan32s as, const Zan8u* b, Zan32s bs, int y) {
    __m128i e0 = hstage2(diff_row8(a, as, b, bs, y)), e1 = hstage2(diff_row8(a, as, b, bs, y + 1));
    __m128i e2 = hstage2(diff_row8(a, as, b, bs, y + 2)), e3 = hstage2(diff_row8(a, as, b, bs, y + 3));
    __m128i a0 = _mm_add_epi16(e0, e1), a1 = _mm_sub_epi16(e0, e1);
    __m128i a2 = _mm_add_epi16(e2, e3), a3 = _mm_sub_epi16(e2, e3);
    __m128i m0 = _mm_max_epi16(_mm_abs_epi16(a0), _mm_abs_epi16(a2));
    __m128i m1 = _mm_max_epi16(_mm_abs_epi16(a1), _mm_abs_epi16(a3));
    return _mm_add_epi16(m0, m1);
}

inline __m128i diff_rows4(const Zan8u* a, Zan32s as, const Zan8u* b, Zan32s bs, int y) {
    __m128i pa = _mm_unpacklo_epi32(load4(row(a, as, y)), load4(row(a, as, y + 1)));
    __m128i pb = _mm_unpacklo_epi32(load4(row(b, bs, y)), load4(row(b, bs, y + 1)));
    return _mm_sub_epi16(hstage1(pa), hstage1(pb));
}

// 4 columns by 4 rows: one tile.  Rows y, y+1 share a vector; the last
// stage pairs lanes 0,1 with 2,3 and 4,5 with 6,7, and each maximum lands in
// both lanes, so the returned lanes add up to twice the maxima.
inline __m128i tile4x4(const Zan8u* a, Zan32s as, const Zan8u* b, Zan32s bs, int y) {
    __m128i v01 = diff_rows4(a, as, b, bs, y), v23 = diff_rows4(a, as, b, bs, y + 2);
    __m128i s = _mm_abs_epi16(hstage2(_mm_add_epi16(v01, v23)));
    __m128i d = _mm_abs_epi16(hstage2(_mm_sub_epi16(v01, v23)));
    s = _mm_max_epi16(s, _mm_shuffle_epi32(s, _MM_SHUFFLE(2, 3, 0, 1)));
    d = _mm_max_epi16(d, _mm_shuffle_epi32(d, _MM_SHUFFLE(2, 3, 0, 1)));
    return _mm_add_epi16(s, d);
}

// Lanes stay below 32768: a maximum is at most 8 * 255 and a 16x16 block
// adds 16 of them per lane.
template <int W, int H>
Zan32s satd_simd(const Zan8u* a, Zan32s as, const Zan8u* b, Zan32s bs) {
    __m128i acc = _mm_setzero_si128();
    if constexpr (W == 4) {
#pragma GCC unroll 4
        for (int y = 0; y < H; y += 4) acc = _mm_add_epi16(acc, tile4x4(a, as, b, bs, y));
        return simd::hsum_epi32(_mm_madd_epi16(acc, _mm_set1_epi16(1)));
    } else {
#pragma GCC unroll 4
        for (int x = 0; x < W; x += 8)
#pragma GCC unroll 4
            for (int y = 0; y < H; y += 4) acc = _mm_add_epi16(acc, tiles8x4(a + x, as, b + x, bs, y));
        return 2 * simd::hsum_epi32(_mm_madd_epi16(acc, _mm_set1_epi16(1)));
    }
}

// |v| saturating at 32767 (abs of -32768 would stay negative).
inline __m128i mag_epi16(__m128i v) { return _mm_max_epi16(v, _mm_subs_epi16(_mm_setzero_si128(), v)); }

// Saturating butterflies between vectors r[0], r[1], ... r[7], distances 1, 2, 4.
template <int Stages>
inline void wht8_vec(__m128i (&r)[8]) {
    for (int h = 1; h < (1 << Stages); h *= 2)
        for (int i = 0; i < 8; ++i)
            if (!(i & h)) {
                __m128i p = r[i], q = r[i + h];
                r[i] = _mm_adds_epi16(p, q);
                r[i + h] = _mm_subs_epi16(p, q);
            }
}

inline void transpose8x8(__m128i (&r)[8]) { simd::transpose8x8_epi16(r); }

// Lanes 0 and 4, 0 and 2, 0 and 1 added with saturation: the total in lane 0.
inline Zan32s fold_adds(__m128i s) {
    s = _mm_adds_epi16(s, _mm_srli_si128(s, 8));
    s = _mm_adds_epi16(s, _mm_srli_si128(s, 4));
    s = _mm_adds_epi16(s, _mm_srli_si128(s, 2));
    return static_cast<Zan16s>(_mm_cvtsi128_si32(s));
}

// One row of 8 samples as signed words.
inline __m128i words8(const Zan8u* p, Zan32s step, int y) {
    return _mm_unpacklo_epi8(load8(row(p, step, y)), _mm_setzero_si128());
}
inline __m128i words8(const Zan16u* p, Zan32s step, int y) { return load16(row(p, step, y)); }
inline __m128i words8(const Zan16s* p, Zan32s step, int y) { return load16(row(p, step, y)); }

template <class T>
Zan32s sat8x8d_simd(const T* a, Zan32s as, const T* b, Zan32s bs) {
    __m128i r[8];
#pragma GCC unroll 8
    for (int y = 0; y < 8; ++y) r[y] = _mm_subs_epi16(words8(a, as, y), words8(b, bs, y));
    wht8_vec<3>(r);
    transpose8x8(r);  // r[x], lane v
    wht8_vec<2>(r);
    __m128i s = _mm_max_epi16(mag_epi16(r[0]), mag_epi16(r[4]));
#pragma GCC unroll 3
    for (int k = 1; k < 4; ++k) s = _mm_adds_epi16(s, _mm_max_epi16(mag_epi16(r[k]), mag_epi16(r[k + 4])));
    return 2 * fold_adds(s);
}

template <class T>
Zan32s hadamard_simd(const T* p, Zan32s step, Zan16s* pDst) {
    __m128i r[8];
#pragma GCC unroll 8
    for (int y = 0; y < 8; ++y) r[y] = words8(p, step, y);
    wht8_vec<3>(r);
    transpose8x8(r);
    wht8_vec<3>(r);
    transpose8x8(r);  // r[v], lane u
    __m128i s = _mm_setzero_si128();
#pragma GCC unroll 8
    for (int v = 0; v < 8; ++v) {
        simd::store16(pDst + 8 * v, r[v]);
        s = _mm_adds_epi16(s, mag_epi16(r[v]));
    }
    return fold_adds(s);
}

// ============================================================= catalogue

#define ZAN_SATD(W, H) {"satd" #W "x" #H, satd_rule<W, H>, satd_simd<W, H>, W, H, 0}
constexpr KernelPair<Pair8Fn> kSatdPairs[] = {
    ZAN_SATD(4, 4),  ZAN_SATD(4, 8),  ZAN_SATD(8, 4),   ZAN_SATD(8, 8),
    ZAN_SATD(8, 16), ZAN_SATD(16, 8), ZAN_SATD(16, 16),
    {"sat8x8d_8u", sat8x8d_rule<Zan8u>, sat8x8d_simd<Zan8u>, 8, 8, 0},
};
#undef ZAN_SATD
constexpr KernelPair<Pair16Fn> kSatd16Pairs[] = {
    {"sat8x8d_16u", sat8x8d_rule<Zan16u>, sat8x8d_simd<Zan16u>, 8, 8, 0},
};
constexpr KernelPair<Hadamard8Fn> kHadamard8Pairs[] = {
    {"hadamard8x8_vc1_8u", hadamard_rule<Zan8u>, hadamard_simd<Zan8u>, 8, 8, 0},
};
constexpr KernelPair<Hadamard16Fn> kHadamard16Pairs[] = {
    {"hadamard8x8_vc1_16s", hadamard_rule<Zan16s>, hadamard_simd<Zan16s>, 8, 8, 0},
};

}  // namespace

const TransformKernels transform_kernels = {kSatdPairs, kSatd16Pairs, kHadamard8Pairs, kHadamard16Pairs};

}  // namespace zan::ZAN_PATH::blockstats

// =============================================================== exports

namespace zan::ZAN_PATH {

#define ZAN_SATD_EXPORT(name, W, H)                                                                   \
    ZanStatus name(const Zan8u* pSrc1, Zan32s src1Step, const Zan8u* pSrc2, Zan32s src2Step, Zan32s* pResult) { \
        if (!pSrc1 || !pSrc2 || !pResult) return zanStsNullPtr;                                        \
        *pResult = blockstats::satd_simd<W, H>(pSrc1, src1Step, pSrc2, src2Step);                      \
        return zanStsOk;                                                                               \
    }
ZAN_SATD_EXPORT(zaniSATD4x4_8u32s_C1R, 4, 4)
ZAN_SATD_EXPORT(zaniSATD4x8_8u32s_C1R, 4, 8)
ZAN_SATD_EXPORT(zaniSATD8x4_8u32s_C1R, 8, 4)
ZAN_SATD_EXPORT(zaniSATD8x8_8u32s_C1R, 8, 8)
ZAN_SATD_EXPORT(zaniSATD8x16_8u32s_C1R, 8, 16)
ZAN_SATD_EXPORT(zaniSATD16x8_8u32s_C1R, 16, 8)
ZAN_SATD_EXPORT(zaniSATD16x16_8u32s_C1R, 16, 16)
#undef ZAN_SATD_EXPORT

ZanStatus zaniSAT8x8D_8u32s_C1R(const Zan8u* pSrc1, Zan32s src1Step, const Zan8u* pSrc2, Zan32s src2Step,
                                Zan32s* pResult) {
    if (!pSrc1 || !pSrc2 || !pResult) return zanStsNullPtr;
    *pResult = blockstats::sat8x8d_simd(pSrc1, src1Step, pSrc2, src2Step);
    return zanStsOk;
}

ZanStatus zaniSAT8x8D_16u32s_C1R(const Zan16u* pSrc1, Zan32s src1Step, const Zan16u* pSrc2, Zan32s src2Step,
                                 Zan32s* pResult) {
    if (!pSrc1 || !pSrc2 || !pResult) return zanStsNullPtr;
    *pResult = blockstats::sat8x8d_simd(pSrc1, src1Step, pSrc2, src2Step);
    return zanStsOk;
}

ZanStatus zaniHadamard8x8Sum_VC1_8u16s(const Zan8u* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s* pSum) {
    if (!pSrc || !pDst || !pSum) return zanStsNullPtr;
    *pSum = blockstats::hadamard_simd(pSrc, srcStep, pDst);
    return zanStsOk;
}

ZanStatus zaniHadamard8x8Sum_VC1_16s(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s* pSum) {
    if (!pSrc || !pDst || !pSum) return zanStsNullPtr;
    *pSum = blockstats::hadamard_simd(pSrc, srcStep, pDst);
    return zanStsOk;
}

}  // namespace zan::ZAN_PATH
