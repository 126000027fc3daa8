// MPEG-4 prediction tools: quarter-sample block copies and overlapped-block
// motion compensation.  The warp, the sprite tools and their catalogue entries
// live in mpeg4pred_warp.cpp.
//
// Quarter-sample copy.  The half-sample value between samples i and i + 1 of
// a row (or column) s is
//   h(i) = clamp((20 (s[i] + s[i+1]) - 6 (s[i-1] + s[i+2]) + 3 (s[i-2] + s[i+3])
//                 - (s[i-3] + s[i+4]) + 16 - rounding) >> 5, 0, 255)
// with the indices mirrored at the fetched block's edges (see mpeg4pred.h).
// The quarter value at fraction f of sample i is s[i], (s[i] + h(i) + 1 -
// rounding) >> 1, h(i) or (h(i) + s[i+1] + 1 - rounding) >> 1 for f = 0..3.
// The rows 0..M of the source are first interpolated horizontally by fx, the
// result (M + 1 rows) then vertically by fy.
//
// The vector kernels lay each row (or the column-wise rows) out with its
// mirrored samples in a small buffer and run the eight taps in 16-bit lanes,
// eight outputs at a time; the averages use pavgb, less the odd bit when
// rounding is 1.
#include "h26x_mpeg4/mpeg4pred.h"

#include <cstring>
#include <utility>

#include "blocks/mc.h"
#include "common/simd.h"
#include "frame/bodies.h"

namespace zan::ZAN_PATH::mpeg4pred {

using namespace zan::mpeg4pred;

namespace {

// ================================================================== rules

constexpr Zan32s mirror(Zan32s k, Zan32s n) { return k < 0 ? -1 - k : (k > n ? 2 * n + 1 - k : k); }
constexpr Zan32s clamp255(Zan32s v) { return v < 0 ? 0 : (v > 255 ? 255 : v); }

// Quarter value at index i, fraction f, of a line of n + 1 samples read by get(k).
template <class Get>
Zan32s quarter_at(Get get, Zan32s i, Zan32s n, Zan32s f, Zan32s r) {
    auto s = [&](Zan32s k) { return static_cast<Zan32s>(get(mirror(k, n))); };
    if (f == 0) return s(i);
    Zan32s h = clamp255((20 * (s(i) + s(i + 1)) - 6 * (s(i - 1) + s(i + 2)) + 3 * (s(i - 2) + s(i + 3)) -
                         (s(i - 3) + s(i + 4)) + 16 - r) >> 5);
    if (f == 2) return h;
    return (h + (f == 1 ? s(i) : s(i + 1)) + 1 - r) >> 1;
}

template <int N, int M>
void copy_qp_rule(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep, Zan32s acc, Zan32s rounding) {
    const Zan32s fx = acc & 3, fy = (acc >> 2) & 3, r = rounding & 1;
    const Zan32s rows = fy ? M + 1 : M;
    Zan8u t[M + 1][N];
    for (Zan32s y = 0; y < rows; ++y) {
        const Zan8u* s = simd::row(pSrc, srcStep, y);
        for (Zan32s x = 0; x < N; ++x)
            t[y][x] = static_cast<Zan8u>(quarter_at([&](Zan32s k) { return s[k]; }, x, N, fx, r));
    }
    for (Zan32s y = 0; y < M; ++y) {
        Zan8u* d = simd::row(pDst, dstStep, y);
        for (Zan32s x = 0; x < N; ++x)
            d[x] = static_cast<Zan8u>(quarter_at([&](Zan32s k) { return t[k][x]; }, y, M, fy, r));
    }
}

template <int N>
void sum_obmc_rule(const Zan8u* cur, const Zan8u* leftRight, const Zan8u* aboveBelow, Zan8u* pDst, Zan32s dstStep) {
    const Zan16u* w0 = N == 8 ? kOBMC8x8Weights[0] : kOBMC16x16Weights.w[0];
    const Zan16u* w1 = N == 8 ? kOBMC8x8Weights[1] : kOBMC16x16Weights.w[1];
    const Zan16u* w2 = N == 8 ? kOBMC8x8Weights[2] : kOBMC16x16Weights.w[2];
    for (Zan32s y = 0; y < N; ++y) {
        Zan8u* d = simd::row(pDst, dstStep, y);
        for (Zan32s x = 0; x < N; ++x) {
            Zan32s i = y * N + x;
            Zan32s v = (w0[i] * cur[i] + w1[i] * aboveBelow[i] + w2[i] * leftRight[i] + 4) >> 3;
            d[x] = static_cast<Zan8u>(clamp255(v));
        }
    }
}

// ================================================================ kernels

// The vector copies work in three steps, each instantiated at compile time for
// one (fx, fy) and chosen through a table indexed by acc, so that no loop
// branches on a fraction:
//   1. every source row needed (M + 1 of them when fy is non-zero, else M) is
//      interpolated horizontally by fx, sixteen (or eight) outputs per step,
//      into the rows of a small buffer (or straight to the destination when
//      fy is 0);
//   2. the buffer's three rows above and below are filled with the mirrored
//      rows;
//   3. strips of eight columns are interpolated vertically by fy, with the
//      eight rows that one output row needs kept in registers and advanced
//      by one row per output row.
// The SSSE3 form builds the mirrored taps of a row with pshufb and sums them
// in byte pairs with pmaddubsw (weights (-1, 3), (-6, 20), (20, -6), (3, -1));
// vertically the pairs are two interleaved rows.  The SSE2 form builds the
// mirrored row in a register with byte shifts and works in 16-bit lanes with
// pmullw.  The sums stay within 16 bits: at most 46 * 255 above 0 and 14 *
// 255 below.

// Tap-pair weights of the eight-tap filter, as pmaddubsw takes them.
constexpr signed char kPairWeight[4][2] = {{-1, 3}, {-6, 20}, {20, -6}, {3, -1}};

inline __m128i pair_weights(int j) {
    return _mm_set1_epi16(static_cast<short>((kPairWeight[j][1] << 8) | (kPairWeight[j][0] & 0xff)));
}

struct alignas(16) Mask16 {
    Zan8u b[16];
};
struct PairMasks {
    Mask16 m[4];
};

// Byte-pair shuffle masks of eight horizontal outputs.  Layout 0: outputs
// 0..7 of a 16-wide row held as s[0..15]; layout 1: outputs 8..15 of a
// 16-wide row held as s[1..16]; layout 2: an 8-wide row held as s[0..7],
// s[1..8].  Pair j of output i holds the mirrored taps i - 3 + 2j and
// i - 2 + 2j.
constexpr PairMasks make_masks(int layout) {
    PairMasks t{};
    const int n = layout == 2 ? 8 : 16;
    for (int j = 0; j < 4; ++j)
        for (int i = 0; i < 8; ++i)
            for (int e = 0; e < 2; ++e) {
                const int out = layout == 1 ? i + 8 : i;
                const int m = mirror(out - 3 + 2 * j + e, n);
                const int idx = layout == 0 ? m : (layout == 1 ? m - 1 : (m < 8 ? m : 15));
                t.m[j].b[2 * i + e] = static_cast<Zan8u>(idx);
            }
    return t;
}
alignas(16) constexpr PairMasks kMasks16Lo = make_masks(0);
alignas(16) constexpr PairMasks kMasks16Hi = make_masks(1);
alignas(16) constexpr PairMasks kMasks8 = make_masks(2);

// Filter sums of eight outputs (16-bit, before rounding) from a register
// that holds the row in one of the layouts above.
inline __m128i taps_ssse3(__m128i line, const PairMasks& mk) {
    auto pair = [&](int j) {
        return _mm_maddubs_epi16(_mm_shuffle_epi8(line, simd::load16a(mk.m[j].b)), pair_weights(j));
    };
    return _mm_add_epi16(_mm_add_epi16(pair(0), pair(1)), _mm_add_epi16(pair(2), pair(3)));
}

// Filter sums of eight outputs from the 16-bit taps a .. d: a = t3 + t4,
// b = t2 + t5, c = t1 + t6, d = t0 + t7.
inline __m128i sums_sse2(__m128i a, __m128i b, __m128i c, __m128i d) {
    __m128i v = _mm_mullo_epi16(a, _mm_set1_epi16(20));
    v = _mm_sub_epi16(v, _mm_mullo_epi16(b, _mm_set1_epi16(6)));
    v = _mm_add_epi16(v, _mm_mullo_epi16(c, _mm_set1_epi16(3)));
    return _mm_sub_epi16(v, d);
}

template <int K>
inline __m128i tap(__m128i line) {
    if constexpr (K == 0) return _mm_unpacklo_epi8(line, _mm_setzero_si128());
    return _mm_unpacklo_epi8(_mm_srli_si128(line, K), _mm_setzero_si128());
}

// Filter sums of the eight outputs whose taps are bytes 0..14 of line.
inline __m128i taps_sse2(__m128i line) {
    return sums_sse2(_mm_add_epi16(tap<3>(line), tap<4>(line)), _mm_add_epi16(tap<2>(line), tap<5>(line)),
                     _mm_add_epi16(tap<1>(line), tap<6>(line)), _mm_add_epi16(tap<0>(line), tap<7>(line)));
}

inline Zan32u load_u32(const Zan8u* p) {
    Zan32u v;
    std::memcpy(&v, p, 4);
    return v;
}

// Rounded, shifted and saturated bytes of two groups of eight sums.
inline __m128i round_pack(__m128i lo, __m128i hi, __m128i bias) {
    return _mm_packus_epi16(_mm_srai_epi16(_mm_add_epi16(lo, bias), 5), _mm_srai_epi16(_mm_add_epi16(hi, bias), 5));
}

// (a + b + 1 - r) >> 1 on bytes; odd holds 1 in each byte when r is 1, else 0.
inline __m128i average(__m128i a, __m128i b, __m128i odd) {
    return _mm_sub_epi8(_mm_avg_epu8(a, b), _mm_and_si128(_mm_xor_si128(a, b), odd));
}

// The quarter value at fraction F from the half-sample values h and the
// samples at (s0) and after (s1) each position.
template <int F>
inline __m128i quarter(__m128i h, __m128i s0, __m128i s1, __m128i odd) {
    if constexpr (F == 1) return average(h, s0, odd);
    if constexpr (F == 2) return h;
    if constexpr (F == 3) return average(h, s1, odd);
    return s0;
}

// Horizontal quarter values of one source row s (the row's N + 1 samples):
// N bytes in the low N bytes of the result.
template <bool X, int N, int FX>
inline __m128i row_h(const Zan8u* s, __m128i bias, __m128i odd) {
    if constexpr (N == 16) {
        const __m128i a = simd::load16(s);
        if constexpr (FX == 0) return a;
        const __m128i b = simd::load16(s + 1);
        __m128i h;
        if constexpr (X) {
            h = round_pack(taps_ssse3(a, kMasks16Lo), taps_ssse3(b, kMasks16Hi), bias);
        } else {
            // s[-3..12] and s[5..19], mirrored.
            const __m128i lo = _mm_or_si128(_mm_slli_si128(a, 3),
                                            _mm_cvtsi32_si128(static_cast<int>(__builtin_bswap32(load_u32(s)) >> 8)));
            const __m128i hi = _mm_or_si128(
                _mm_srli_si128(b, 4),
                _mm_slli_si128(_mm_cvtsi32_si128(static_cast<int>(__builtin_bswap32(load_u32(s + 13)))), 12));
            h = round_pack(taps_sse2(lo), taps_sse2(hi), bias);
        }
        return quarter<FX>(h, a, b, odd);
    } else {
        const __m128i a = simd::load8(s);
        if constexpr (FX == 0) return a;
        const __m128i b = simd::load8(s + 1);
        __m128i v;
        if constexpr (X) {
            v = taps_ssse3(_mm_unpacklo_epi64(a, b), kMasks8);
        } else {
            // s[-3..11], mirrored: s2 s1 s0 s0..s8 s8 s7 s6.
            const Zan32u t = __builtin_bswap32(load_u32(s + 5));
            const __m128i line =
                _mm_or_si128(_mm_or_si128(_mm_slli_si128(a, 3), _mm_cvtsi32_si128(static_cast<int>(
                                                                    __builtin_bswap32(load_u32(s)) >> 8))),
                             _mm_slli_si128(_mm_cvtsi32_si128(static_cast<int>((t << 8) | (t & 0xff))), 11));
            v = taps_sse2(line);
        }
        return quarter<FX>(round_pack(v, v, bias), a, b, odd);
    }
}

template <int N>
inline void store_row(Zan8u* d, __m128i v) {
    if constexpr (N == 16)
        simd::store16(d, v);
    else
        simd::store8(d, v);
}

// Vertical quarter values of the eight columns at c of the horizontal
// results: row k (-3 .. M + 3, mirrored) at c + (k + 3) * N.
template <bool X, int N, int M, int FY>
inline void strip_v(const Zan8u* c, Zan8u* d, Zan32s dstStep, __m128i bias, __m128i odd) {
    auto R = [&](int k) { return simd::load8(c + (k + 3) * N); };
    if constexpr (X) {
        // p[j] interleaves rows y - 3 + j and y - 2 + j.
        const __m128i w0 = pair_weights(0), w1 = pair_weights(1), w2 = pair_weights(2), w3 = pair_weights(3);
        __m128i r = R(-3), p0, p1, p2, p3, p4, p5, p6;
        auto next = [&](int k) {
            const __m128i n = R(k + 1);
            const __m128i p = _mm_unpacklo_epi8(r, n);
            r = n;
            return p;
        };
        p0 = next(-3), p1 = next(-2), p2 = next(-1), p3 = next(0), p4 = next(1), p5 = next(2);
        for (int y = 0; y < M; ++y) {
            p6 = next(y + 3);
            const __m128i v = _mm_add_epi16(_mm_add_epi16(_mm_maddubs_epi16(p0, w0), _mm_maddubs_epi16(p2, w1)),
                                            _mm_add_epi16(_mm_maddubs_epi16(p4, w2), _mm_maddubs_epi16(p6, w3)));
            __m128i h = round_pack(v, v, bias);
            if constexpr (FY == 1) h = average(h, R(y), odd);
            if constexpr (FY == 3) h = average(h, R(y + 1), odd);
            simd::store8(simd::row(d, dstStep, y), h);
            p0 = p1, p1 = p2, p2 = p3, p3 = p4, p4 = p5, p5 = p6;
        }
    } else {
        const __m128i z = _mm_setzero_si128();
        auto U = [&](int k) { return _mm_unpacklo_epi8(R(k), z); };
        __m128i r0 = U(-3), r1 = U(-2), r2 = U(-1), r3 = U(0), r4 = U(1), r5 = U(2), r6 = U(3), r7;
        for (int y = 0; y < M; ++y) {
            r7 = U(y + 4);
            const __m128i v = sums_sse2(_mm_add_epi16(r3, r4), _mm_add_epi16(r2, r5), _mm_add_epi16(r1, r6),
                                        _mm_add_epi16(r0, r7));
            __m128i h = round_pack(v, v, bias);
            if constexpr (FY == 1) h = average(h, _mm_packus_epi16(r3, r3), odd);
            if constexpr (FY == 3) h = average(h, _mm_packus_epi16(r4, r4), odd);
            simd::store8(simd::row(d, dstStep, y), h);
            r0 = r1, r1 = r2, r2 = r3, r3 = r4, r4 = r5, r5 = r6, r6 = r7;
        }
    }
}

// The copy at one position (FX, FY); X selects the SSSE3 form.
template <bool X, int N, int M, int FX, int FY>
void copy_qp_at(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep, Zan32s, Zan32s rounding) {
    const Zan32s r = rounding & 1;
    const __m128i bias = _mm_set1_epi16(static_cast<short>(16 - r));
    const __m128i odd = _mm_set1_epi8(static_cast<char>(r));
    if constexpr (FY == 0) {
        for (Zan32s y = 0; y < M; ++y)
            store_row<N>(simd::row(pDst, dstStep, y), row_h<X, N, FX>(simd::row(pSrc, srcStep, y), bias, odd));
    } else {
        // Rows -3 .. M + 3 of the horizontal results.
        alignas(16) Zan8u t[M + 7][N];
        for (Zan32s y = 0; y <= M; ++y)
            store_row<N>(t[y + 3], row_h<X, N, FX>(simd::row(pSrc, srcStep, y), bias, odd));
        for (Zan32s k = 0; k < 3; ++k) {
            if constexpr (N == 16) {
                simd::store16(t[2 - k], simd::load16a(t[3 + k]));
                simd::store16(t[M + 4 + k], simd::load16a(t[M + 3 - k]));
            } else {
                simd::store8(t[2 - k], simd::load8(t[3 + k]));
                simd::store8(t[M + 4 + k], simd::load8(t[M + 3 - k]));
            }
        }
        for (Zan32s x = 0; x < N; x += 8) strip_v<X, N, M, FY>(&t[0][x], pDst + x, dstStep, bias, odd);
    }
}

template <bool X, int N, int M, int... A>
constexpr std::array<CopyQPFn, 16> make_copy_table(std::integer_sequence<int, A...>) {
    return {copy_qp_at<X, N, M, (A & 3), (A >> 2)>...};
}
// Every position's copy, indexed by acc.
template <bool X, int N, int M>
constexpr std::array<CopyQPFn, 16> kCopyQP = make_copy_table<X, N, M>(std::make_integer_sequence<int, 16>{});

template <bool X, int N, int M>
void copy_qp_vec(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep, Zan32s acc, Zan32s rounding) {
    kCopyQP<X, N, M>[acc & 15](pSrc, srcStep, pDst, dstStep, acc, rounding);
}

// The u8 path takes the SSSE3 form, the n8 path (in-order processors, where
// pshufb and pmaddubsw are slow) the SSE2 form.
constexpr bool kPathSsse3 = !ZAN_PATH_IS_N8;

template <int N>
void sum_obmc_sse2(const Zan8u* cur, const Zan8u* leftRight, const Zan8u* aboveBelow, Zan8u* pDst, Zan32s dstStep) {
    const Zan16u* w0 = N == 8 ? kOBMC8x8Weights[0] : kOBMC16x16Weights.w[0];
    const Zan16u* w1 = N == 8 ? kOBMC8x8Weights[1] : kOBMC16x16Weights.w[1];
    const Zan16u* w2 = N == 8 ? kOBMC8x8Weights[2] : kOBMC16x16Weights.w[2];
    const __m128i z = _mm_setzero_si128(), four = _mm_set1_epi16(4);
    for (Zan32s y = 0; y < N; ++y) {
        Zan8u* d = simd::row(pDst, dstStep, y);
        for (Zan32s x = 0; x < N; x += 8) {
            Zan32s i = y * N + x;
            __m128i c = _mm_unpacklo_epi8(simd::load8(cur + i), z);
            __m128i ab = _mm_unpacklo_epi8(simd::load8(aboveBelow + i), z);
            __m128i lr = _mm_unpacklo_epi8(simd::load8(leftRight + i), z);
            __m128i v = _mm_mullo_epi16(c, simd::load16(w0 + i));
            v = _mm_add_epi16(v, _mm_mullo_epi16(ab, simd::load16(w1 + i)));
            v = _mm_add_epi16(v, _mm_mullo_epi16(lr, simd::load16(w2 + i)));
            v = _mm_srli_epi16(_mm_add_epi16(v, four), 3);
            simd::store8(d + x, _mm_packus_epi16(v, v));
        }
    }
}

// ============================================================== catalogue

// The path's own form first, under the plain names, then the other form,
// so that the checker covers both in either build.
constexpr KernelPair<CopyQPFn> kCopyQPPairs[] = {
    {"Copy8x8QP", copy_qp_rule<8, 8>, copy_qp_vec<kPathSsse3, 8, 8>, 8, 8, 0},
    {"Copy16x8QP", copy_qp_rule<16, 8>, copy_qp_vec<kPathSsse3, 16, 8>, 16, 8, 0},
    {"Copy16x16QP", copy_qp_rule<16, 16>, copy_qp_vec<kPathSsse3, 16, 16>, 16, 16, 0},
    {kPathSsse3 ? "Copy8x8QP:sse2" : "Copy8x8QP:ssse3", copy_qp_rule<8, 8>, copy_qp_vec<!kPathSsse3, 8, 8>, 8, 8, 0},
    {kPathSsse3 ? "Copy16x8QP:sse2" : "Copy16x8QP:ssse3", copy_qp_rule<16, 8>, copy_qp_vec<!kPathSsse3, 16, 8>, 16,
     8, 0},
    {kPathSsse3 ? "Copy16x16QP:sse2" : "Copy16x16QP:ssse3", copy_qp_rule<16, 16>, copy_qp_vec<!kPathSsse3, 16, 16>,
     16, 16, 0},
};
constexpr KernelPair<SumOBMCFn> kSumOBMCPairs[] = {
    {"SumPredictOBMC8x8", sum_obmc_rule<8>, sum_obmc_sse2<8>, 8, 8, 0},
    {"SumPredictOBMC16x16", sum_obmc_rule<16>, sum_obmc_sse2<16>, 16, 16, 0},
};

// ================================================================== wrappers

template <int N, int M>
ZanStatus copy_qp(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep, Zan32s acc, Zan32s rounding,
                  const std::array<zan::mc::BlockFn, 8>& plain) {
    if (!pSrc || !pDst) return zanStsNullPtr;
    acc &= 15;
    if (acc == 0)
        plain[0](pSrc, srcStep, pDst, dstStep);
    else
        kCopyQP<kPathSsse3, N, M>[acc](pSrc, srcStep, pDst, dstStep, acc, rounding & 1);
    return zanStsOk;
}

inline bool same_mv(const Zan16s* a, const Zan16s* b) { return a[0] == b[0] && a[1] == b[1]; }

// Copies w x h bytes between packed blocks of row n.
inline void copy_part(const Zan8u* from, Zan8u* to, Zan32s n, Zan32s w, Zan32s h) {
    for (Zan32s y = 0; y < h; ++y) std::memcpy(to + y * n, from + y * n, w);
}

// Half-sample prediction of a w x h part at (px, py) of the block at pSrc
// into the packed block out (row n), with vector mv.
void predict_hp(const Zan8u* pSrc, Zan32s srcStep, const Zan16s* mv, Zan32s rounding, Zan8u* out, Zan32s n,
                Zan32s px, Zan32s py, Zan32s w, Zan32s h) {
    const Zan8u* s = pSrc + (mv[0] >> 1) + static_cast<ptrdiff_t>(mv[1] >> 1) * srcStep + px +
                     static_cast<ptrdiff_t>(py) * srcStep;
    const Zan32s index = (2 * (mv[1] & 1) + (mv[0] & 1)) * 2 + (rounding & 1);
    Zan8u* o = out + py * n + px;
    if (w == 16 && h == 16) return mc::kCopy16x16HP[index](s, srcStep, o, n);
    if (w == 16 && h == 8) return mc::kCopy16x8HP[index](s, srcStep, o, n);
    if (w == 8 && h == 8) return mc::kCopy8x8HP[index](s, srcStep, o, n);
    if (w == 8 && h == 16) {
        mc::kCopy8x8HP[index](s, srcStep, o, n);
        return mc::kCopy8x8HP[index](s + 8 * static_cast<ptrdiff_t>(srcStep), srcStep, o + 8 * n, n);
    }
    if (w == 8 && h == 4) return mc::kCopy8x4HP[index](s, srcStep, o, n);
    // 4 x 8
    mc::kCopy4x4HP[index](s, srcStep, o, n);
    mc::kCopy4x4HP[index](s + 4 * static_cast<ptrdiff_t>(srcStep), srcStep, o + 4 * n, n);
}

// Quarter-sample prediction of the whole 8x8 block with vector mv (the
// neighbours' blocks are interpolated whole, their edges mirrored as any
// block's, and only the part they influence is kept).
void predict_qp(const Zan8u* pSrc, Zan32s srcStep, const Zan16s* mv, Zan32s rounding, Zan8u* out) {
    const Zan8u* s = pSrc + (mv[0] >> 2) + static_cast<ptrdiff_t>(mv[1] >> 2) * srcStep;
    const Zan32s acc = (mv[0] & 3) + 4 * (mv[1] & 3);
    if (acc == 0)
        mc::kCopy8x8HP[0](s, srcStep, out, 8);
    else
        kCopyQP<kPathSsse3, 8, 8>[acc](s, srcStep, out, 8, acc, rounding & 1);
}

template <int N, bool QP>
ZanStatus obmc(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep, const Zan16s* pMVCur,
               const Zan16s* pMVLeft, const Zan16s* pMVRight, const Zan16s* pMVAbove, const Zan16s* pMVBelow,
               Zan32s rounding) {
    if (!pSrc || !pDst) return zanStsNullPtr;
    alignas(16) Zan8u cur[N * N], lr[N * N], ab[N * N], whole[N * N];
    constexpr Zan32s H = N / 2;
    if (QP)
        predict_qp(pSrc, srcStep, pMVCur, rounding, cur);
    else
        predict_hp(pSrc, srcStep, pMVCur, rounding, cur, N, 0, 0, N, N);
    struct Part {
        const Zan16s* mv;
        Zan8u* area;
        Zan32s px, py, w, h;
    };
    const Part parts[4] = {{pMVLeft, lr, 0, 0, H, N},
                           {pMVRight, lr, H, 0, H, N},
                           {pMVAbove, ab, 0, 0, N, H},
                           {pMVBelow, ab, 0, H, N, H}};
    for (const Part& p : parts) {
        const Zan32s at = p.py * N + p.px;
        if (same_mv(p.mv, pMVCur)) {
            copy_part(cur + at, p.area + at, N, p.w, p.h);
        } else if (QP) {
            predict_qp(pSrc, srcStep, p.mv, rounding, whole);
            copy_part(whole + at, p.area + at, N, p.w, p.h);
        } else {
            predict_hp(pSrc, srcStep, p.mv, rounding, p.area, N, p.px, p.py, p.w, p.h);
        }
    }
    sum_obmc_sse2<N>(cur, lr, ab, pDst, dstStep);
    return zanStsOk;
}

}  // namespace

// Defined beside the warp.
extern const KernelPair<WarpFn> kWarpPairs[1];
extern const KernelPair<BrightnessFn> kBrightnessPairs[1];

const Kernels kernels = {kCopyQPPairs, kSumOBMCPairs, kWarpPairs, kBrightnessPairs};

}  // namespace zan::ZAN_PATH::mpeg4pred

// ==================================================================== exports

namespace zan::ZAN_PATH {

using namespace zan::ZAN_PATH::mpeg4pred;

ZanStatus zaniCopy8x8QP_MPEG4_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep, Zan32s acc,
                                     Zan32s rounding) {
    return copy_qp<8, 8>(pSrc, srcStep, pDst, dstStep, acc, rounding, mc::kCopy8x8HP);
}
ZanStatus zaniCopy16x8QP_MPEG4_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep, Zan32s acc,
                                      Zan32s rounding) {
    return copy_qp<16, 8>(pSrc, srcStep, pDst, dstStep, acc, rounding, mc::kCopy16x8HP);
}
ZanStatus zaniCopy16x16QP_MPEG4_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep, Zan32s acc,
                                       Zan32s rounding) {
    return copy_qp<16, 16>(pSrc, srcStep, pDst, dstStep, acc, rounding, mc::kCopy16x16HP);
}

ZanStatus zaniOBMC8x8HP_MPEG4_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep,
                                     const Zan16s* pMVCur, const Zan16s* pMVLeft, const Zan16s* pMVRight,
                                     const Zan16s* pMVAbove, const Zan16s* pMVBelow, Zan32s rounding) {
    return obmc<8, false>(pSrc, srcStep, pDst, dstStep, pMVCur, pMVLeft, pMVRight, pMVAbove, pMVBelow, rounding);
}
ZanStatus zaniOBMC16x16HP_MPEG4_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep,
                                       const Zan16s* pMVCur, const Zan16s* pMVLeft, const Zan16s* pMVRight,
                                       const Zan16s* pMVAbove, const Zan16s* pMVBelow, Zan32s rounding) {
    return obmc<16, false>(pSrc, srcStep, pDst, dstStep, pMVCur, pMVLeft, pMVRight, pMVAbove, pMVBelow, rounding);
}
ZanStatus zaniOBMC8x8QP_MPEG4_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep,
                                     const Zan16s* pMVCur, const Zan16s* pMVLeft, const Zan16s* pMVRight,
                                     const Zan16s* pMVAbove, const Zan16s* pMVBelow, Zan32s rounding) {
    return obmc<8, true>(pSrc, srcStep, pDst, dstStep, pMVCur, pMVLeft, pMVRight, pMVAbove, pMVBelow, rounding);
}

}  // namespace zan::ZAN_PATH
