// H.264 CAVLC encoding: one block of quantised coefficients to the syntax
// elements of a CAVLC block (no bits are written).
//
// The walk visits the positions from the highest to the lowest.  A zero
// raises the current zero count z.  A nonzero value v: while trailing ones
// are still being counted (from the start until three are found or another
// value is met) a +1 or -1 raises T and shifts its sign into the sign word
// (1 for minus); any other value goes to pLevels[n - T] and ends the
// counting.  From the second coefficient on, z is the run in front of it:
// pRuns[n - 1] = z, added to the running sum S.  Then n rises and z returns
// to 0.  At the end total zeros is z + S (zeros below the first coefficient
// met, within the range), 0 for a block without coefficients.
//
// The exports run the plain walk: it is the implementation.  Beside it the
// catalogue holds mask kernels that gather the walk's values, find the
// nonzero, +-1 and negative lanes with SSE2 compares and movemask, and visit
// only the nonzero lanes.  Measured on typical (6 of 16) and dense blocks
// they are slower than the walk (the gather through the caller's scan table
// and the mask set-up cost more than the branches they save), so no export
// uses them; the checker keeps them equal to the walk.
#include <bit>

#include "common/simd.h"
#include "frame/bodies.h"
#include "h264/cavlcenc.h"

namespace zan::ZAN_PATH::cavlcenc {
namespace {

using namespace zan::cavlcenc;

// Walking orders of the chroma DC blocks: 2x2 and 4:2:2 (2 wide, 4 high).
constexpr Zan32s kOrder2x2[4] = {3, 2, 1, 0};
constexpr Zan32s kOrder2x4[8] = {7, 5, 3, 6, 4, 1, 2, 0};

// ============================================================ scalar rules

// count positions, pos(k) the k-th visited.
template <class T, class L, class Pos>
void walk_rule(const T* src, Zan64s count, Pos pos, Zan8u* pT1, Zan8u* pSigns, Zan8u* pNum,
               Zan8u* pTotalZeros, L* pLevels, Zan8u* pRuns) {
    Zan32u z = 0, t = 0, n = 0, sum = 0, signs = 0;
    bool counting = true;  // trailing ones still being counted
    for (Zan64s k = 0; k < count; ++k) {
        const T v = src[pos(k)];
        if (v == 0) {
            ++z;
            continue;
        }
        if (counting && (v == 1 || v == -1)) {
            ++t;
            signs = 2 * signs + (v == -1 ? 1u : 0u);
            if (t == 3) counting = false;
        } else {
            pLevels[n - t] = static_cast<L>(v);
            counting = false;
        }
        if (n > 0) {
            pRuns[n - 1] = static_cast<Zan8u>(z);
            sum += z;
        }
        ++n;
        z = 0;
    }
    *pT1 = static_cast<Zan8u>(t);
    *pSigns = static_cast<Zan8u>(signs);
    *pNum = static_cast<Zan8u>(n);
    *pTotalZeros = static_cast<Zan8u>(n > 0 ? z + sum : 0);
}

template <class T, class L>
void block_rule(const T* src, Zan32s first, const Zan32s* scan, Zan32s last, Zan8u* pT1, Zan8u* pSigns,
                Zan8u* pNum, Zan8u* pTotalZeros, L* pLevels, Zan8u* pRuns) {
    const Zan64s count = Zan64s{last} - first + 1;
    walk_rule(src, count, [&](Zan64s k) { return scan[Zan64s{last} - k]; }, pT1, pSigns, pNum, pTotalZeros,
              pLevels, pRuns);
}

template <class T, class L, int N>
void dc_rule(const T* src, Zan8u* pT1, Zan8u* pSigns, Zan8u* pNum, Zan8u* pTotalZeros, L* pLevels,
             Zan8u* pRuns) {
    const Zan32s* order = N == 4 ? kOrder2x2 : kOrder2x4;
    walk_rule(src, N, [&](Zan64s k) { return order[k]; }, pT1, pSigns, pNum, pTotalZeros, pLevels, pRuns);
}

// ========================================================== vector kernels

// Lane masks over 16 values in walk order (bit k: the k-th visited).
struct Masks {
    Zan32u nonzero, ones, negative;
};

inline Zan32u bytes_mask(__m128i lo16, __m128i hi16) {
    return static_cast<Zan32u>(_mm_movemask_epi8(_mm_packs_epi16(lo16, hi16)));
}

inline Masks masks_of(const Zan16s* v) {
    const __m128i zero = _mm_setzero_si128(), one = _mm_set1_epi16(1), minus = _mm_set1_epi16(-1);
    const __m128i a = simd::load16a(v), b = simd::load16a(v + 8);
    auto pm1 = [&](__m128i x) { return _mm_or_si128(_mm_cmpeq_epi16(x, one), _mm_cmpeq_epi16(x, minus)); };
    const Zan32u zeros = bytes_mask(_mm_cmpeq_epi16(a, zero), _mm_cmpeq_epi16(b, zero));
    return {~zeros & 0xFFFFu, bytes_mask(pm1(a), pm1(b)),
            bytes_mask(_mm_cmplt_epi16(a, zero), _mm_cmplt_epi16(b, zero))};
}

inline Masks masks_of(const Zan32s* v) {
    const __m128i zero = _mm_setzero_si128(), one = _mm_set1_epi32(1), minus = _mm_set1_epi32(-1);
    __m128i x[4];
    for (int i = 0; i < 4; ++i) x[i] = simd::load16a(v + 4 * i);
    // Compare results are 0 or -1 in 32 bits; signed packing keeps them.
    auto mask = [&](auto cmp) {
        const __m128i lo = _mm_packs_epi32(cmp(x[0]), cmp(x[1]));
        const __m128i hi = _mm_packs_epi32(cmp(x[2]), cmp(x[3]));
        return bytes_mask(lo, hi);
    };
    const Zan32u zeros = mask([&](__m128i a) { return _mm_cmpeq_epi32(a, zero); });
    const Zan32u ones =
        mask([&](__m128i a) { return _mm_or_si128(_mm_cmpeq_epi32(a, one), _mm_cmpeq_epi32(a, minus)); });
    const Zan32u neg = mask([&](__m128i a) { return _mm_cmplt_epi32(a, zero); });
    return {~zeros & 0xFFFFu, ones, neg};
}

// Set bits of a 16-bit mask (no popcnt instruction on these paths, and no
// call into the compiler's runtime library).
inline Zan32u count16(Zan32u m) {
    m = m - ((m >> 1) & 0x5555u);
    m = (m & 0x3333u) + ((m >> 2) & 0x3333u);
    m = (m + (m >> 4)) & 0x0F0Fu;
    return (m + (m >> 8)) & 0x1Fu;
}

// The outputs from the masks of `count` (at most 16) values in walk order,
// zero-padded to 16.
template <class T, class L>
inline void emit(const T* vals, Zan32u count, Zan8u* pT1, Zan8u* pSigns, Zan8u* pNum, Zan8u* pTotalZeros,
                 L* pLevels, Zan8u* pRuns) {
    const Masks m = masks_of(vals);
    Zan32u rest = m.nonzero;
    if (rest == 0) {
        *pT1 = 0;
        *pSigns = 0;
        *pNum = 0;
        *pTotalZeros = 0;
        return;
    }
    const Zan32u n = count16(rest);
    const Zan32u first = static_cast<Zan32u>(std::countr_zero(rest));
    // Trailing ones: the leading run (at most 3) of +-1 lanes among the nonzero ones.
    Zan32u t = 0, signs = 0;
    while (t < 3 && rest != 0) {
        const Zan32u bit = rest & (0u - rest);
        if ((m.ones & bit) == 0) break;
        signs = 2 * signs + ((m.negative & bit) != 0 ? 1u : 0u);
        ++t;
        rest ^= bit;
    }
    L* level = pLevels;
    while (rest != 0) {
        *level++ = static_cast<L>(vals[std::countr_zero(rest)]);
        rest &= rest - 1;
    }
    // Runs: the gaps between consecutive nonzero lanes.
    Zan32u prev = first;
    Zan8u* run = pRuns;
    for (Zan32u later = m.nonzero & (m.nonzero - 1); later != 0; later &= later - 1) {
        const Zan32u k = static_cast<Zan32u>(std::countr_zero(later));
        *run++ = static_cast<Zan8u>(k - prev - 1);
        prev = k;
    }
    *pT1 = static_cast<Zan8u>(t);
    *pSigns = static_cast<Zan8u>(signs);
    *pNum = static_cast<Zan8u>(n);
    *pTotalZeros = static_cast<Zan8u>(count - first - n);
}

template <class T, class L>
void block_simd(const T* src, Zan32s first, const Zan32s* scan, Zan32s last, Zan8u* pT1, Zan8u* pSigns,
                Zan8u* pNum, Zan8u* pTotalZeros, L* pLevels, Zan8u* pRuns) {
    const Zan64s count = Zan64s{last} - first + 1;
    if (count > 16) {  // only a negative firstIdx of the 32-bit form gets here
        block_rule(src, first, scan, last, pT1, pSigns, pNum, pTotalZeros, pLevels, pRuns);
        return;
    }
    alignas(16) T vals[16] = {};
    const Zan32s* s = scan + last;
    for (Zan32s k = 0; k < count; ++k) vals[k] = src[s[-k]];
    emit(vals, static_cast<Zan32u>(count), pT1, pSigns, pNum, pTotalZeros, pLevels, pRuns);
}

template <class T, class L, int N>
void dc_simd(const T* src, Zan8u* pT1, Zan8u* pSigns, Zan8u* pNum, Zan8u* pTotalZeros, L* pLevels,
             Zan8u* pRuns) {
    const Zan32s* order = N == 4 ? kOrder2x2 : kOrder2x4;
    alignas(16) T vals[16] = {};
    for (int k = 0; k < N; ++k) vals[k] = src[order[k]];
    emit(vals, N, pT1, pSigns, pNum, pTotalZeros, pLevels, pRuns);
}

// ============================================================= catalogue

constexpr KernelPair<Block16Fn> kBlock16[] = {
    {"block_16s", block_rule<Zan16s, Zan16s>, block_simd<Zan16s, Zan16s>, 4, 4, 16},
};
constexpr KernelPair<Block32Fn> kBlock32[] = {
    {"block_32s", block_rule<Zan32s, Zan32s>, block_simd<Zan32s, Zan32s>, 4, 4, 16},
};
constexpr KernelPair<Dc16Fn> kDc16[] = {
    {"dc2x2_16s", dc_rule<Zan16s, Zan16s, 4>, dc_simd<Zan16s, Zan16s, 4>, 2, 2, 4},
    {"dc2x4_16s", dc_rule<Zan16s, Zan16s, 8>, dc_simd<Zan16s, Zan16s, 8>, 2, 4, 8},
};
constexpr KernelPair<Dc32Fn> kDc32[] = {
    {"dc2x2_32s", dc_rule<Zan32s, Zan32s, 4>, dc_simd<Zan32s, Zan32s, 4>, 2, 2, 4},
    {"dc2x4_32s", dc_rule<Zan32s, Zan32s, 8>, dc_simd<Zan32s, Zan32s, 8>, 2, 4, 8},
};

}  // namespace

const Kernels kernels = {kBlock16, kBlock32, kDc16, kDc32};

}  // namespace zan::ZAN_PATH::cavlcenc

// =============================================================== exports

namespace zan::ZAN_PATH {

ZanStatus zaniEncodeCoeffsCAVLC_H264_16s(const Zan16s* pSrc, Zan32s firstIdx, const Zan32s* pScan,
                                         Zan32s lastIdx, Zan8u* pTrailingOnes, Zan8u* pTrailingOneSigns,
                                         Zan8u* pNumOutCoeffs, Zan8u* pTotalZeros, Zan16s* pLevels,
                                         Zan8u* pRuns) {
    if (!pSrc || !pScan || !pTrailingOnes || !pTrailingOneSigns || !pNumOutCoeffs || !pTotalZeros ||
        !pLevels || !pRuns)
        return zanStsNullPtr;
    // The indices count by their low 8 bits, unsigned.
    const Zan32s first = static_cast<Zan8u>(firstIdx), last = static_cast<Zan8u>(lastIdx);
    if (last > 15 || last < first) return zanStsOutOfRange;
    cavlcenc::block_rule<Zan16s, Zan16s>(pSrc, first, pScan, last, pTrailingOnes, pTrailingOneSigns,
                                         pNumOutCoeffs, pTotalZeros, pLevels, pRuns);
    return zanStsOk;
}

ZanStatus zaniEncodeCoeffsCAVLC_H264_32s(const Zan32s* pSrc, Zan32s firstIdx, const Zan32s* pScan,
                                         Zan32s lastIdx, Zan8u* pTrailingOnes, Zan8u* pTrailingOneSigns,
                                         Zan8u* pNumOutCoeffs, Zan8u* pTotalZeros, Zan32s* pLevels,
                                         Zan8u* pRuns) {
    if (!pSrc || !pScan || !pTrailingOnes || !pTrailingOneSigns || !pNumOutCoeffs || !pTotalZeros ||
        !pLevels || !pRuns)
        return zanStsNullPtr;
    if (lastIdx > 15 || lastIdx < firstIdx) return zanStsOutOfRange;
    cavlcenc::block_rule<Zan32s, Zan32s>(pSrc, firstIdx, pScan, lastIdx, pTrailingOnes, pTrailingOneSigns,
                                         pNumOutCoeffs, pTotalZeros, pLevels, pRuns);
    return zanStsOk;
}

#define ZAN_CAVLC_DC(name, T, N)                                                                        \
    ZanStatus name(const T* pSrc, Zan8u* pTrailingOnes, Zan8u* pTrailingOneSigns, Zan8u* pNumOutCoeffs, \
                   Zan8u* pTotalZeros, T* pLevels, Zan8u* pRuns) {                                      \
        if (!pSrc || !pTrailingOnes || !pTrailingOneSigns || !pNumOutCoeffs || !pTotalZeros ||          \
            !pLevels || !pRuns)                                                                         \
            return zanStsNullPtr;                                                                       \
        cavlcenc::dc_rule<T, T, N>(pSrc, pTrailingOnes, pTrailingOneSigns, pNumOutCoeffs, pTotalZeros,  \
                                   pLevels, pRuns);                                                     \
        return zanStsOk;                                                                                \
    }
ZAN_CAVLC_DC(zaniEncodeChromaDcCoeffsCAVLC_H264_16s, Zan16s, 4)
ZAN_CAVLC_DC(zaniEncodeCoeffsCAVLCChromaDC2x2_H264_32s, Zan32s, 4)
ZAN_CAVLC_DC(zaniEncodeCoeffsCAVLCChromaDC2x4_H264_16s, Zan16s, 8)
ZAN_CAVLC_DC(zaniEncodeCoeffsCAVLCChromaDC2x4_H264_32s, Zan32s, 8)
#undef ZAN_CAVLC_DC

}  // namespace zan::ZAN_PATH
