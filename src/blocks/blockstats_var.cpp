// Squared differences against half-sample references, variances, the
// variance and mean of a difference, and the mean absolute deviation.
//
// Reference positions (mcType >> 2): 0 plain, 1 half down, 2 half right,
// 3 both.  Two samples average as (a + b + 1) >> 1, four as one exact sum
// (a + b + c + d + 2) >> 2.
#include "blocks/blockstats.h"
#include "common/scalar.h"
#include "common/simd.h"
#include "frame/bodies.h"

namespace zan::ZAN_PATH::blockstats {
namespace {

using namespace zan::blockstats;
using scalar::at;

enum Pos { kPlain = 0, kFH = 1, kHF = 2, kHH = 3 };

// The position of a valid mcType (0, 4, 8, 12), or -1.
inline int position_of(Zan32s mcType) {
    return mcType == 0 ? kPlain : mcType == 4 ? kFH : mcType == 8 ? kHF : mcType == 12 ? kHH : -1;
}

// ============================================================ scalar rules

template <int P>
Zan32s ref_at(const Zan8u* r, Zan32s step, Zan32s x, Zan32s y) {
    Zan32s a = at(r, step, x, y);
    if constexpr (P == kFH) return (a + at(r, step, x, y + 1) + 1) >> 1;
    if constexpr (P == kHF) return (a + at(r, step, x + 1, y) + 1) >> 1;
    if constexpr (P == kHH)
        return (a + at(r, step, x + 1, y) + at(r, step, x, y + 1) + at(r, step, x + 1, y + 1) + 2) >> 2;
    return a;
}

template <int W, int H, int P>
Zan32s ssd_rule(const Zan8u* s, Zan32s ss, const Zan8u* r, Zan32s rs) {
    Zan32s sum = 0;
    for (Zan32s y = 0; y < H; ++y)
        for (Zan32s x = 0; x < W; ++x) {
            Zan32s d = at(s, ss, x, y) - ref_at<P>(r, rs, x, y);
            sum += d * d;
        }
    return sum;
}

template <int P1, int P2>
Zan32s sqrdiffb_rule(const Zan8u* s, Zan32s ss, const Zan8u* r1, Zan32s r1s, const Zan8u* r2, Zan32s r2s) {
    Zan32s sum = 0;
    for (Zan32s y = 0; y < 16; ++y)
        for (Zan32s x = 0; x < 16; ++x) {
            Zan32s r = (ref_at<P1>(r1, r1s, x, y) + ref_at<P2>(r2, r2s, x, y) + 1) >> 1;
            Zan32s d = at(s, ss, x, y) - r;
            sum += d * d;
        }
    return sum;
}

// Q - S * S / 256; S * S (at most 65280^2) is formed in 32 unsigned bits.
Zan32s variance16_rule(const Zan8u* p, Zan32s step) {
    Zan32s s = 0, q = 0;
    for (Zan32s y = 0; y < 16; ++y)
        for (Zan32s x = 0; x < 16; ++x) {
            Zan32s v = at(p, step, x, y);
            s += v;
            q += v * v;
        }
    return q - static_cast<Zan32s>(static_cast<Zan32u>(s) * static_cast<Zan32u>(s) / 256u);
}

template <int N>
Zan32s mean_abs_dev_rule(const Zan8u* p, Zan32s step) {
    constexpr int shift = N == 8 ? 6 : 8;
    Zan32s s = 0;
    for (Zan32s y = 0; y < N; ++y)
        for (Zan32s x = 0; x < N; ++x) s += at(p, step, x, y);
    Zan32s mean = (s + (1 << (shift - 1))) >> shift, dev = 0;
    for (Zan32s y = 0; y < N; ++y)
        for (Zan32s x = 0; x < N; ++x) dev += scalar::absdiff(at(p, step, x, y), mean);
    return dev;
}

// The variance of 64 samples from their sum and sum of squares, in 32-bit
// floats and in this order: m = S / 64, v = Q / 64 - m * m, truncated toward
// zero.  Shared by the rules and the kernels: only the sums are vectorised.
inline Zan32s float_variance(Zan32s s, Zan32s q) {
    float m = static_cast<float>(s) / 64.0f;
    float v = static_cast<float>(q) / 64.0f - m * m;
    return static_cast<Zan32s>(v);
}

template <class T>
void varsum_rule(const T* p, Zan32s step, Zan32s* pVar, Zan32s* pSum) {
    Zan32s s = 0;
    Zan32u q = 0;  // modulo 2^32 for 16-bit samples
    for (Zan32s y = 0; y < 8; ++y)
        for (Zan32s x = 0; x < 8; ++x) {
            Zan32s v = at(p, step, x, y);
            s += v;
            q += static_cast<Zan32u>(v * v);
        }
    *pVar = float_variance(s, static_cast<Zan32s>(q));
    *pSum = s;
}

// In 32-bit wrap-around arithmetic (the caller's sums are taken as given).
inline void var_mean_tail(Zan32s srcSum, Zan32s refSum, Zan32s sqErr, Zan32s* pVar, Zan32s* pMean) {
    Zan32s mean = static_cast<Zan32s>(static_cast<Zan32u>(srcSum) - static_cast<Zan32u>(refSum)) / 8;
    Zan32s mm = static_cast<Zan32s>(static_cast<Zan32u>(mean) * static_cast<Zan32u>(mean));
    *pMean = mean;
    *pVar = mm < sqErr ? static_cast<Zan32s>(static_cast<Zan32u>(sqErr) - static_cast<Zan32u>(mm)) / 64 : 0;
}

// The 8x8 blocks in row order: W / 8 across, H / 8 down.
template <int W, int H, int P>
void var_mean_diff_rule(const Zan8u* s, Zan32s ss, const Zan8u* r, Zan32s rs, const Zan32s* pSrcSum,
                        Zan32s* pVar, Zan32s* pMean) {
    for (int b = 0; b < (W / 8) * (H / 8); ++b) {
        Zan32s bx = 8 * (b % (W / 8)), by = 8 * (b / (W / 8));
        Zan32s e = 0, rsum = 0;
        for (Zan32s y = by; y < by + 8; ++y)
            for (Zan32s x = bx; x < bx + 8; ++x) {
                Zan32s rv = ref_at<P>(r, rs, x, y), d = at(s, ss, x, y) - rv;
                e += d * d;
                rsum += rv;
            }
        var_mean_tail(pSrcSum[b], rsum, e, pVar + b, pMean + b);
    }
}

// ========================================================== vector kernels

using simd::load16;
using simd::load4;
using simd::load8;
using simd::row;

// 16 bytes of a block W wide from row y: one row of 16, two of 8, four of 4.
template <int W>
inline __m128i gather(const Zan8u* p, Zan32s step, Zan32s y) {
    if constexpr (W == 16) {
        return load16(row(p, step, y));
    } else if constexpr (W == 8) {
        return _mm_unpacklo_epi64(load8(row(p, step, y)), load8(row(p, step, y + 1)));
    } else {
        __m128i a = _mm_unpacklo_epi32(load4(row(p, step, y)), load4(row(p, step, y + 1)));
        __m128i b = _mm_unpacklo_epi32(load4(row(p, step, y + 2)), load4(row(p, step, y + 3)));
        return _mm_unpacklo_epi64(a, b);
    }
}

template <int W, int P>
inline __m128i ref_vec(const Zan8u* r, Zan32s rs, Zan32s y) {
    __m128i a = gather<W>(r, rs, y);
    if constexpr (P == kFH) return _mm_avg_epu8(a, gather<W>(r, rs, y + 1));
    if constexpr (P == kHF) return _mm_avg_epu8(a, gather<W>(r + 1, rs, y));
    if constexpr (P == kHH)
        return simd::avg4_u8(a, gather<W>(r + 1, rs, y), gather<W>(r, rs, y + 1), gather<W>(r + 1, rs, y + 1));
    return a;
}

// Byte differences a - b of the low or high 8 bytes as 16-bit values: the
// bytes interleaved (a, b) and multiplied-added with (1, -1).
inline __m128i diff_lo(__m128i a, __m128i b) {
    return _mm_maddubs_epi16(_mm_unpacklo_epi8(a, b), _mm_set1_epi16(static_cast<short>(0xFF01)));
}
inline __m128i diff_hi(__m128i a, __m128i b) {
    return _mm_maddubs_epi16(_mm_unpackhi_epi8(a, b), _mm_set1_epi16(static_cast<short>(0xFF01)));
}

// Sum of squares of the 16 byte differences, as four 32-bit partial sums.
inline __m128i sq_err(__m128i a, __m128i b) {
    __m128i lo = diff_lo(a, b), hi = diff_hi(a, b);
    return _mm_add_epi32(_mm_madd_epi16(lo, lo), _mm_madd_epi16(hi, hi));
}

template <int W, int H, int P>
Zan32s ssd_simd(const Zan8u* s, Zan32s ss, const Zan8u* r, Zan32s rs) {
    constexpr int rows = 16 / W;
    __m128i acc = _mm_setzero_si128();
#pragma GCC unroll 16
    for (Zan32s y = 0; y < H; y += rows) acc = _mm_add_epi32(acc, sq_err(gather<W>(s, ss, y), ref_vec<W, P>(r, rs, y)));
    return simd::hsum_epi32(acc);
}

template <int P1, int P2>
Zan32s sqrdiffb_simd(const Zan8u* s, Zan32s ss, const Zan8u* r1, Zan32s r1s, const Zan8u* r2, Zan32s r2s) {
    __m128i acc = _mm_setzero_si128();
#pragma GCC unroll 16
    for (Zan32s y = 0; y < 16; ++y) {
        __m128i r = _mm_avg_epu8(ref_vec<16, P1>(r1, r1s, y), ref_vec<16, P2>(r2, r2s, y));
        acc = _mm_add_epi32(acc, sq_err(load16(row(s, ss, y)), r));
    }
    return simd::hsum_epi32(acc);
}

// Sum (psadbw against zero) and sum of squares of 16 bytes, accumulated.
inline void sums16(__m128i v, __m128i& s, __m128i& q) {
    const __m128i z = _mm_setzero_si128();
    __m128i lo = _mm_unpacklo_epi8(v, z), hi = _mm_unpackhi_epi8(v, z);
    s = _mm_add_epi32(s, _mm_sad_epu8(v, z));
    q = _mm_add_epi32(q, _mm_add_epi32(_mm_madd_epi16(lo, lo), _mm_madd_epi16(hi, hi)));
}

Zan32s variance16_simd(const Zan8u* p, Zan32s step) {
    __m128i s = _mm_setzero_si128(), q = _mm_setzero_si128();
#pragma GCC unroll 16
    for (Zan32s y = 0; y < 16; ++y) sums16(load16(row(p, step, y)), s, q);
    Zan32u sum = static_cast<Zan32u>(simd::hsum_sad(s));
    return simd::hsum_epi32(q) - static_cast<Zan32s>(sum * sum / 256u);
}

template <int N>
Zan32s mean_abs_dev_simd(const Zan8u* p, Zan32s step) {
    constexpr int rows = 16 / N, shift = N == 8 ? 6 : 8;
    const __m128i z = _mm_setzero_si128();
    __m128i v[N / rows];
    __m128i s = z;
#pragma GCC unroll 8
    for (int i = 0; i < N / rows; ++i) {
        v[i] = gather<N>(p, step, i * rows);
        s = _mm_add_epi32(s, _mm_sad_epu8(v[i], z));
    }
    Zan32s mean = (simd::hsum_sad(s) + (1 << (shift - 1))) >> shift;
    const __m128i m = _mm_set1_epi8(static_cast<char>(mean));
    __m128i dev = z;
#pragma GCC unroll 8
    for (int i = 0; i < N / rows; ++i) dev = _mm_add_epi32(dev, _mm_sad_epu8(v[i], m));
    return simd::hsum_sad(dev);
}

void varsum8_simd(const Zan8u* p, Zan32s step, Zan32s* pVar, Zan32s* pSum) {
    __m128i s = _mm_setzero_si128(), q = _mm_setzero_si128();
#pragma GCC unroll 4
    for (Zan32s y = 0; y < 8; y += 2) sums16(gather<8>(p, step, y), s, q);
    Zan32s sum = simd::hsum_sad(s);
    *pVar = float_variance(sum, simd::hsum_epi32(q));
    *pSum = sum;
}

// Sum by pmaddwd with ones; squares by pmaddwd with themselves, wrapping
// modulo 2^32 like the rule.
void varsum16_simd(const Zan16s* p, Zan32s step, Zan32s* pVar, Zan32s* pSum) {
    const __m128i ones = _mm_set1_epi16(1);
    __m128i s = _mm_setzero_si128(), q = _mm_setzero_si128();
#pragma GCC unroll 8
    for (Zan32s y = 0; y < 8; ++y) {
        __m128i v = load16(row(p, step, y));
        s = _mm_add_epi32(s, _mm_madd_epi16(v, ones));
        q = _mm_add_epi32(q, _mm_madd_epi16(v, v));
    }
    Zan32s sum = simd::hsum_epi32(s);
    *pVar = float_variance(sum, simd::hsum_epi32(q));
    *pSum = sum;
}

// Rows of 16: the low 8 bytes belong to the left block, the high 8 to the
// right one, and psadbw sums the two halves apart.
template <int W, int H, int P>
void var_mean_diff_simd(const Zan8u* s, Zan32s ss, const Zan8u* r, Zan32s rs, const Zan32s* pSrcSum,
                        Zan32s* pVar, Zan32s* pMean) {
    static_assert(W == 16);
    const __m128i z = _mm_setzero_si128();
#pragma GCC unroll 2
    for (int by = 0; by < H / 8; ++by) {
        __m128i left = z, right = z, rsum = z;
#pragma GCC unroll 8
        for (Zan32s y = 8 * by; y < 8 * by + 8; ++y) {
            __m128i rv = ref_vec<16, P>(r, rs, y), sv = load16(row(s, ss, y));
            __m128i lo = diff_lo(sv, rv), hi = diff_hi(sv, rv);
            left = _mm_add_epi32(left, _mm_madd_epi16(lo, lo));
            right = _mm_add_epi32(right, _mm_madd_epi16(hi, hi));
            rsum = _mm_add_epi32(rsum, _mm_sad_epu8(rv, z));
        }
        var_mean_tail(pSrcSum[2 * by], _mm_cvtsi128_si32(rsum), simd::hsum_epi32(left), pVar + 2 * by, pMean + 2 * by);
        var_mean_tail(pSrcSum[2 * by + 1], _mm_cvtsi128_si32(_mm_unpackhi_epi64(rsum, rsum)), simd::hsum_epi32(right),
                      pVar + 2 * by + 1, pMean + 2 * by + 1);
    }
}

// ================================================================= tables

#define ZAN_POSITIONS(kernel, ...) \
    {kernel<__VA_ARGS__, kPlain>, kernel<__VA_ARGS__, kFH>, kernel<__VA_ARGS__, kHF>, kernel<__VA_ARGS__, kHH>}

constexpr Pair8Fn kSsd8x8[4] = ZAN_POSITIONS(ssd_simd, 8, 8);
constexpr Pair8Fn kSsd4x4[4] = ZAN_POSITIONS(ssd_simd, 4, 4);
constexpr Pair8Fn kSqrDiff16x16[4] = ZAN_POSITIONS(ssd_simd, 16, 16);
constexpr VarMeanDiffFn kVarMeanDiff16x16[4] = ZAN_POSITIONS(var_mean_diff_simd, 16, 16);
constexpr VarMeanDiffFn kVarMeanDiff16x8[4] = ZAN_POSITIONS(var_mean_diff_simd, 16, 8);
// Indexed by 4 * position of the first reference + position of the second.
#define ZAN_SECOND(P1) \
    sqrdiffb_simd<P1, kPlain>, sqrdiffb_simd<P1, kFH>, sqrdiffb_simd<P1, kHF>, sqrdiffb_simd<P1, kHH>
constexpr SqrDiffBFn kSqrDiffB[16] = {ZAN_SECOND(kPlain), ZAN_SECOND(kFH), ZAN_SECOND(kHF), ZAN_SECOND(kHH)};
#undef ZAN_SECOND

#undef ZAN_POSITIONS

// ============================================================= catalogue

#define ZAN_PAIRS(name, rule, simd, W, H)                                  \
    {name, rule<W, H, kPlain>, simd<W, H, kPlain>, W, H, kPlain},          \
        {name "_FH", rule<W, H, kFH>, simd<W, H, kFH>, W, H, kFH},         \
        {name "_HF", rule<W, H, kHF>, simd<W, H, kHF>, W, H, kHF},         \
        {name "_HH", rule<W, H, kHH>, simd<W, H, kHH>, W, H, kHH}

constexpr KernelPair<Pair8Fn> kSsdPairs[] = {
    ZAN_PAIRS("ssd8x8", ssd_rule, ssd_simd, 8, 8),
    ZAN_PAIRS("ssd4x4", ssd_rule, ssd_simd, 4, 4),
    ZAN_PAIRS("sqrdiff16x16", ssd_rule, ssd_simd, 16, 16),
};
constexpr KernelPair<VarMeanDiffFn> kVarMeanDiffPairs[] = {
    ZAN_PAIRS("varmeandiff16x16", var_mean_diff_rule, var_mean_diff_simd, 16, 16),
    ZAN_PAIRS("varmeandiff16x8", var_mean_diff_rule, var_mean_diff_simd, 16, 8),
};
#undef ZAN_PAIRS

#define ZAN_B(P1, P2, n) {"sqrdiff16x16b_" n, sqrdiffb_rule<P1, P2>, sqrdiffb_simd<P1, P2>, 16, 16, 4 * P1 + P2}
constexpr KernelPair<SqrDiffBFn> kSqrDiffBPairs[] = {
    ZAN_B(kPlain, kPlain, "0_0"), ZAN_B(kPlain, kFH, "0_FH"), ZAN_B(kPlain, kHF, "0_HF"), ZAN_B(kPlain, kHH, "0_HH"),
    ZAN_B(kFH, kPlain, "FH_0"),   ZAN_B(kFH, kFH, "FH_FH"),   ZAN_B(kFH, kHF, "FH_HF"),   ZAN_B(kFH, kHH, "FH_HH"),
    ZAN_B(kHF, kPlain, "HF_0"),   ZAN_B(kHF, kFH, "HF_FH"),   ZAN_B(kHF, kHF, "HF_HF"),   ZAN_B(kHF, kHH, "HF_HH"),
    ZAN_B(kHH, kPlain, "HH_0"),   ZAN_B(kHH, kFH, "HH_FH"),   ZAN_B(kHH, kHF, "HH_HF"),   ZAN_B(kHH, kHH, "HH_HH"),
};
#undef ZAN_B

constexpr KernelPair<Block8Fn> kBlockPairs[] = {
    {"variance16x16", variance16_rule, variance16_simd, 16, 16, 0},
    {"meanabsdev8x8", mean_abs_dev_rule<8>, mean_abs_dev_simd<8>, 8, 8, 0},
    {"meanabsdev16x16", mean_abs_dev_rule<16>, mean_abs_dev_simd<16>, 16, 16, 0},
};
constexpr KernelPair<VarSum8Fn> kVarSum8Pairs[] = {
    {"varsum8x8_8u", varsum_rule<Zan8u>, varsum8_simd, 8, 8, 0},
};
constexpr KernelPair<VarSum16Fn> kVarSum16Pairs[] = {
    {"varsum8x8_16s", varsum_rule<Zan16s>, varsum16_simd, 8, 8, 0},
};

}  // namespace

const VarianceKernels variance_kernels = {kSsdPairs,     kSqrDiffBPairs, kBlockPairs,
                                          kVarSum8Pairs, kVarSum16Pairs, kVarMeanDiffPairs};

}  // namespace zan::ZAN_PATH::blockstats

// =============================================================== exports

namespace zan::ZAN_PATH {

// mcType >> 2 picks the position unchecked; the mask keeps a caller's stray
// value inside the table.
#define ZAN_SSD_EXPORT(name, table)                                                                     \
    ZanStatus name(const Zan8u* pSrc, Zan32s srcStep, const Zan8u* pRef, Zan32s refStep, Zan32s* pResult, \
                   Zan32s mcType) {                                                                     \
        if (!pSrc || !pRef || !pResult) return zanStsNullPtr;                                           \
        *pResult = blockstats::table[(mcType >> 2) & 3](pSrc, srcStep, pRef, refStep);                  \
        return zanStsOk;                                                                                \
    }
ZAN_SSD_EXPORT(zaniSSD8x8_8u32s_C1R, kSsd8x8)
ZAN_SSD_EXPORT(zaniSSD4x4_8u32s_C1R, kSsd4x4)
#undef ZAN_SSD_EXPORT

ZanStatus zaniSqrDiff16x16_8u32s(const Zan8u* pSrc, Zan32s srcStep, const Zan8u* pRef, Zan32s refStep,
                                 Zan32s mcType, Zan32s* pResult) {
    if (!pSrc || !pRef || !pResult) return zanStsNullPtr;
    int pos = blockstats::position_of(mcType);
    if (pos < 0) return zanStsOk;
    *pResult = blockstats::kSqrDiff16x16[pos](pSrc, srcStep, pRef, refStep);
    return zanStsOk;
}

ZanStatus zaniSqrDiff16x16B_8u32s(const Zan8u* pSrc, Zan32s srcStep, const Zan8u* pRef1, Zan32s ref1Step,
                                  Zan32s mcType1, const Zan8u* pRef2, Zan32s ref2Step, Zan32s mcType2,
                                  Zan32s* pResult) {
    if (!pSrc || !pRef1 || !pRef2 || !pResult) return zanStsNullPtr;
    int p1 = blockstats::position_of(mcType1), p2 = blockstats::position_of(mcType2);
    if (p1 < 0 || p2 < 0) return zanStsOk;
    *pResult = blockstats::kSqrDiffB[4 * p1 + p2](pSrc, srcStep, pRef1, ref1Step, pRef2, ref2Step);
    return zanStsOk;
}

ZanStatus zaniVariance16x16_8u32s(const Zan8u* pSrc, Zan32s srcStep, Zan32s* pResult) {
    if (!pSrc || !pResult) return zanStsNullPtr;
    *pResult = blockstats::variance16_simd(pSrc, srcStep);
    return zanStsOk;
}

#define ZAN_VAR_EXPORT(name, T, kernel)                                                  \
    ZanStatus name(const T* pSrc, Zan32s srcStep, Zan32s* pVar, Zan32s* pSecond) {       \
        if (!pSrc || !pVar || !pSecond) return zanStsNullPtr;                            \
        blockstats::kernel(pSrc, srcStep, pVar, pSecond);                                \
        return zanStsOk;                                                                 \
    }
// Both families run the same kernels; the second output is the plain sum.
ZAN_VAR_EXPORT(zaniVarSum8x8_8u32s_C1R, Zan8u, varsum8_simd)
ZAN_VAR_EXPORT(zaniVarSum8x8_16s32s_C1R, Zan16s, varsum16_simd)
ZAN_VAR_EXPORT(zaniVarMean8x8_8u32s_C1R, Zan8u, varsum8_simd)
ZAN_VAR_EXPORT(zaniVarMean8x8_16s32s_C1R, Zan16s, varsum16_simd)
#undef ZAN_VAR_EXPORT

ZanStatus zaniVarMeanDiff16x16_8u32s_C1R(const Zan8u* pSrc, Zan32s srcStep, const Zan8u* pRef, Zan32s refStep,
                                         const Zan32s* pSrcSum, Zan32s* pVar, Zan32s* pMean, Zan32s mcType) {
    if (!pSrc || !pRef || !pSrcSum || !pVar || !pMean) return zanStsNullPtr;
    int pos = blockstats::position_of(mcType);
    if (pos < 0) return zanStsOk;
    blockstats::kVarMeanDiff16x16[pos](pSrc, srcStep, pRef, refStep, pSrcSum, pVar, pMean);
    return zanStsOk;
}

// Any mcType: its bit of value 4 adds the row below, of value 8 the next
// column; the rounding term makes (4A + 2) >> 2 = A and (2A + 2B + 2) >> 2 =
// (A + B + 1) >> 1, so the result depends on those two bits alone.
ZanStatus zaniVarMeanDiff16x8_8u32s_C1R(const Zan8u* pSrc, Zan32s srcStep, const Zan8u* pRef, Zan32s refStep,
                                        const Zan32s* pSrcSum, Zan32s* pVar, Zan32s* pMean, Zan32s mcType) {
    if (!pSrc || !pRef || !pSrcSum || !pVar || !pMean) return zanStsNullPtr;
    blockstats::kVarMeanDiff16x8[(mcType >> 2) & 3](pSrc, srcStep, pRef, refStep, pSrcSum, pVar, pMean);
    return zanStsOk;
}

ZanStatus zaniMeanAbsDev8x8_8u32s_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan32s* pResult) {
    if (!pSrc || !pResult) return zanStsNullPtr;
    *pResult = blockstats::mean_abs_dev_simd<8>(pSrc, srcStep);
    return zanStsOk;
}

ZanStatus zaniMeanAbsDev16x16_8u32s_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan32s* pResult) {
    if (!pSrc || !pResult) return zanStsNullPtr;
    *pResult = blockstats::mean_abs_dev_simd<16>(pSrc, srcStep);
    return zanStsOk;
}

}  // namespace zan::ZAN_PATH
