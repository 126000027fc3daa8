// Sums of differences per 4x4 sub-block (with the differences themselves on
// request), the edge test of a 16x16 block, and the zero count.
#include <cstdint>

#include "blocks/blockstats.h"
#include "common/scalar.h"
#include "common/simd.h"
#include "frame/bodies.h"

namespace zan::ZAN_PATH::blockstats {
namespace {

using namespace zan::blockstats;
using scalar::at;

// ============================================================ scalar rules

inline Zan16s sat16(Zan32s v) { return static_cast<Zan16s>(v > 32767 ? 32767 : v < -32768 ? -32768 : v); }

// Sub-block k of an N x N block lies at column 4 * (k % (N / 4)), row
// 4 * (k / (N / 4)).  8-bit sums saturate to Zan16s (they cannot reach it).
template <int N, bool D>
void sums8_rule(const Zan8u* s, Zan32s ss, const Zan8u* p, Zan32s ps, Zan16s* pSums, Zan16s* pDiff) {
    for (int k = 0; k < (N / 4) * (N / 4); ++k) {
        Zan32s bx = 4 * (k % (N / 4)), by = 4 * (k / (N / 4)), sum = 0;
        for (Zan32s y = 0; y < 4; ++y)
            for (Zan32s x = 0; x < 4; ++x) {
                Zan32s d = at(s, ss, bx + x, by + y) - at(p, ps, bx + x, by + y);
                sum += d;
                if constexpr (D) pDiff[16 * k + 4 * y + x] = static_cast<Zan16s>(d);
            }
        pSums[k] = sat16(sum);
    }
}

// 16-bit samples: the sums are exact, the stored differences wrap to 16 bits.
template <int N, bool D>
void sums16_rule(const Zan16u* s, Zan32s ss, const Zan16u* p, Zan32s ps, Zan32s* pSums, Zan16s* pDiff) {
    for (int k = 0; k < (N / 4) * (N / 4); ++k) {
        Zan32s bx = 4 * (k % (N / 4)), by = 4 * (k / (N / 4)), sum = 0;
        for (Zan32s y = 0; y < 4; ++y)
            for (Zan32s x = 0; x < 4; ++x) {
                Zan32s d = at(s, ss, bx + x, by + y) - at(p, ps, bx + x, by + y);
                sum += d;
                if constexpr (D) pDiff[16 * k + 4 * y + x] = static_cast<Zan16s>(static_cast<Zan16u>(d & 0xFFFF));
            }
        pSums[k] = sum;
    }
}

// Interleaved U, V source: U at even bytes, V at odd bytes.
template <bool DU, bool DV>
void sums_c2_rule(const Zan8u* s, Zan32s ss, const Zan8u* pu, Zan32s pus, const Zan8u* pv, Zan32s pvs,
                  Zan16s* sumsU, Zan16s* diffU, Zan16s* sumsV, Zan16s* diffV) {
    for (int c = 0; c < 2; ++c) {
        const Zan8u* pred = c ? pv : pu;
        Zan32s ps = c ? pvs : pus;
        Zan16s* sums = c ? sumsV : sumsU;
        Zan16s* diff = c ? diffV : diffU;
        bool store = c ? DV : DU;
        for (int k = 0; k < 4; ++k) {
            Zan32s bx = 4 * (k % 2), by = 4 * (k / 2), sum = 0;
            for (Zan32s y = 0; y < 4; ++y)
                for (Zan32s x = 0; x < 4; ++x) {
                    Zan32s d = at(s, ss, 2 * (bx + x) + c, by + y) - at(pred, ps, bx + x, by + y);
                    sum += d;
                    if (store) diff[16 * k + 4 * y + x] = static_cast<Zan16s>(d);
                }
            sums[k] = sat16(sum);
        }
    }
}

// Rows are scanned from the top; after each row the count is compared and
// the scan ends once it exceeds edgeCount, reading no further row.
Zan8u edges8_rule(const Zan8u* p, Zan32s step, Zan32u edgeDifference, Zan32u edgeCount) {
    const Zan32s thr = static_cast<Zan8s>(static_cast<Zan8u>(edgeDifference & 0xFF));
    Zan32u n = 0;
    for (Zan32s y = 0; y < 15; ++y) {
        for (Zan32s x = 0; x < 15; ++x) {
            Zan32s d1 = scalar::absdiff(at(p, step, x, y), at(p, step, x + 1, y));
            Zan32s d2 = scalar::absdiff(at(p, step, x, y), at(p, step, x, y + 1));
            d1 = d1 > 127 ? 127 : d1;
            d2 = d2 > 127 ? 127 : d2;
            if (d1 > thr || d2 > thr) ++n;
        }
        if (n > edgeCount) return 1;
    }
    return 0;
}

Zan8u edges16_rule(const Zan16u* p, Zan32s step, Zan32u edgeDifference, Zan32u edgeCount) {
    Zan32u n = 0;
    for (Zan32s y = 0; y < 15; ++y) {
        for (Zan32s x = 0; x < 15; ++x) {
            Zan32u d1 = static_cast<Zan32u>(scalar::absdiff(at(p, step, x, y), at(p, step, x + 1, y)));
            Zan32u d2 = static_cast<Zan32u>(scalar::absdiff(at(p, step, x, y), at(p, step, x, y + 1)));
            if (d1 > edgeDifference || d2 > edgeDifference) ++n;
        }
        if (n > edgeCount) return 1;
    }
    return 0;
}

Zan32u count_zeros_rule(const Zan16s* p) {
    Zan32u n = 0;
    for (int i = 0; i < 64; ++i) n += p[i] == 0;
    return n;
}

// ========================================================== vector kernels

using simd::load16;
using simd::load16a;
using simd::load8;
using simd::row;

// Sums of lanes 0..3 and 4..7 of a vector of 16-bit values, as two 32-bit
// values in lanes 0 and 2.
inline __m128i halves_sum(__m128i acc) {
    __m128i v = _mm_madd_epi16(acc, _mm_set1_epi16(1));
    return _mm_add_epi32(v, _mm_shuffle_epi32(v, _MM_SHUFFLE(2, 3, 0, 1)));
}

// Two sub-blocks side by side: 8 columns (as 16-bit differences, one row per
// call of `row_diff`) by 4 rows.  Sums go to pSums[k], pSums[k + 1].
template <bool D, class RowDiff>
inline void pair8x4(RowDiff row_diff, int y0, int k, Zan16s* pSums, Zan16s* pDiff) {
    __m128i acc = _mm_setzero_si128();
#pragma GCC unroll 4
    for (int y = 0; y < 4; ++y) {
        __m128i d = row_diff(y0 + y);
        acc = _mm_add_epi16(acc, d);
        if constexpr (D) {
            simd::store8(pDiff + 16 * k + 4 * y, d);
            simd::store8(pDiff + 16 * (k + 1) + 4 * y, _mm_unpackhi_epi64(d, d));
        }
    }
    __m128i s = halves_sum(acc);
    s = _mm_packs_epi32(_mm_unpacklo_epi32(s, _mm_unpackhi_epi64(s, s)), s);  // sums in words 0 and 1
    Zan32s both = _mm_cvtsi128_si32(s);
    std::memcpy(pSums + k, &both, 4);
}

template <int N, bool D>
void sums8_simd(const Zan8u* s, Zan32s ss, const Zan8u* p, Zan32s ps, Zan16s* pSums, Zan16s* pDiff) {
    const __m128i z = _mm_setzero_si128();
#pragma GCC unroll 4
    for (int by = 0; by < N / 4; ++by)
#pragma GCC unroll 2
        for (int bx = 0; bx < N / 4; bx += 2) {
            auto row_diff = [&](int y) {
                return _mm_sub_epi16(_mm_unpacklo_epi8(load8(row(s, ss, y) + 4 * bx), z),
                                     _mm_unpacklo_epi8(load8(row(p, ps, y) + 4 * bx), z));
            };
            pair8x4<D>(row_diff, 4 * by, by * (N / 4) + bx, pSums, pDiff);
        }
}

// Differences wrap in 16 bits for the store and are summed exactly in 32.
template <int N, bool D>
void sums16_simd(const Zan16u* s, Zan32s ss, const Zan16u* p, Zan32s ps, Zan32s* pSums, Zan16s* pDiff) {
    const __m128i z = _mm_setzero_si128();
#pragma GCC unroll 4
    for (int by = 0; by < N / 4; ++by)
#pragma GCC unroll 2
        for (int bx = 0; bx < N / 4; bx += 2) {
            int k = by * (N / 4) + bx;
            __m128i left = z, right = z;
#pragma GCC unroll 4
            for (int y = 4 * by; y < 4 * by + 4; ++y) {
                __m128i a = load16(row(s, ss, y) + 8 * bx), b = load16(row(p, ps, y) + 8 * bx);
                left = _mm_add_epi32(left, _mm_sub_epi32(_mm_unpacklo_epi16(a, z), _mm_unpacklo_epi16(b, z)));
                right = _mm_add_epi32(right, _mm_sub_epi32(_mm_unpackhi_epi16(a, z), _mm_unpackhi_epi16(b, z)));
                if constexpr (D) {
                    __m128i d = _mm_sub_epi16(a, b);
                    simd::store8(pDiff + 16 * k + 4 * (y - 4 * by), d);
                    simd::store8(pDiff + 16 * (k + 1) + 4 * (y - 4 * by), _mm_unpackhi_epi64(d, d));
                }
            }
            pSums[k] = simd::hsum_epi32(left);
            pSums[k + 1] = simd::hsum_epi32(right);
        }
}

// Even bytes (U) to the low half, odd bytes (V) to the high half.
template <bool DU, bool DV>
void sums_c2_simd(const Zan8u* s, Zan32s ss, const Zan8u* pu, Zan32s pus, const Zan8u* pv, Zan32s pvs,
                  Zan16s* sumsU, Zan16s* diffU, Zan16s* sumsV, Zan16s* diffV) {
    const __m128i split = _mm_setr_epi8(0, 2, 4, 6, 8, 10, 12, 14, 1, 3, 5, 7, 9, 11, 13, 15);
    const __m128i z = _mm_setzero_si128();
#pragma GCC unroll 2
    for (int by = 0; by < 2; ++by) {
        auto u_diff = [&](int y) {
            __m128i src = _mm_shuffle_epi8(load16(row(s, ss, y)), split);
            return _mm_sub_epi16(_mm_unpacklo_epi8(src, z), _mm_unpacklo_epi8(load8(row(pu, pus, y)), z));
        };
        auto v_diff = [&](int y) {
            __m128i src = _mm_shuffle_epi8(load16(row(s, ss, y)), split);
            return _mm_sub_epi16(_mm_unpackhi_epi8(src, z), _mm_unpacklo_epi8(load8(row(pv, pvs, y)), z));
        };
        pair8x4<DU>(u_diff, 4 * by, 2 * by, sumsU, diffU);
        pair8x4<DV>(v_diff, 4 * by, 2 * by, sumsV, diffV);
    }
}

inline __m128i absdiff_u8(__m128i a, __m128i b) { return _mm_or_si128(_mm_subs_epu8(a, b), _mm_subs_epu8(b, a)); }

// Number of nonzero bytes among the 0/1 bytes of v.
inline Zan32u count_ones(__m128i v) { return static_cast<Zan32u>(simd::hsum_sad(_mm_sad_epu8(v, _mm_setzero_si128()))); }

template <bool Aligned>
inline __m128i load_row(const void* p) {
    if constexpr (Aligned) return load16a(p);
    else return load16(p);
}

// Column 15 has no right neighbour and is left out.
template <bool Aligned>
Zan8u edges8_simd(const Zan8u* p, Zan32s step, Zan32u edgeDifference, Zan32u edgeCount) {
    const __m128i thr = _mm_set1_epi8(static_cast<char>(edgeDifference & 0xFF));
    const __m128i lim = _mm_set1_epi8(127);
    const __m128i one15 = _mm_setr_epi8(1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 0);
    __m128i cur = load_row<Aligned>(p);
    Zan32u n = 0;
    for (Zan32s y = 0; y < 15; ++y) {
        __m128i next = load_row<Aligned>(row(p, step, y + 1));
        __m128i d1 = _mm_min_epu8(absdiff_u8(cur, _mm_srli_si128(cur, 1)), lim);
        __m128i d2 = _mm_min_epu8(absdiff_u8(cur, next), lim);
        __m128i hit = _mm_or_si128(_mm_cmpgt_epi8(d1, thr), _mm_cmpgt_epi8(d2, thr));
        n += count_ones(_mm_and_si128(hit, one15));
        if (n > edgeCount) return 1;
        cur = next;
    }
    return 0;
}

// d > t on unsigned words: the saturating difference is nonzero.
inline __m128i above_u16(__m128i d, __m128i t) {
    return _mm_xor_si128(_mm_cmpeq_epi16(_mm_subs_epu16(d, t), _mm_setzero_si128()), _mm_set1_epi16(-1));
}

Zan8u edges16_simd(const Zan16u* p, Zan32s step, Zan32u edgeDifference, Zan32u edgeCount) {
    const __m128i thr = _mm_set1_epi16(static_cast<short>(edgeDifference));
    const __m128i one15 = _mm_setr_epi8(1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 0);
    __m128i lo = load16(p), hi = load16(reinterpret_cast<const Zan8u*>(p) + 16);
    Zan32u n = 0;
    for (Zan32s y = 0; y < 15; ++y) {
        const Zan8u* r = row(p, step, y + 1);
        __m128i nlo = load16(r), nhi = load16(r + 16);
        __m128i rlo = _mm_alignr_epi8(hi, lo, 2), rhi = _mm_srli_si128(hi, 2);
        __m128i hlo = _mm_or_si128(above_u16(simd::absdiff_u16(lo, rlo), thr), above_u16(simd::absdiff_u16(lo, nlo), thr));
        __m128i hhi = _mm_or_si128(above_u16(simd::absdiff_u16(hi, rhi), thr), above_u16(simd::absdiff_u16(hi, nhi), thr));
        n += count_ones(_mm_and_si128(_mm_packs_epi16(hlo, hhi), one15));
        if (n > edgeCount) return 1;
        lo = nlo;
        hi = nhi;
    }
    return 0;
}

// Each zero lane subtracts -1 from its counter.
Zan32u count_zeros_simd(const Zan16s* p) {
    const __m128i z = _mm_setzero_si128();
    __m128i acc = z;
#pragma GCC unroll 8
    for (int i = 0; i < 8; ++i) acc = _mm_sub_epi16(acc, _mm_cmpeq_epi16(load16(p + 8 * i), z));
    return static_cast<Zan32u>(simd::hsum_epi32(_mm_madd_epi16(acc, _mm_set1_epi16(1))));
}

// ================================================================= tables

// Indexed by 1 when the differences are written, 0 for NoDiff.
constexpr SumsDiff8Fn kSums8x8[2] = {sums8_simd<8, false>, sums8_simd<8, true>};
constexpr SumsDiff8Fn kSums16x16[2] = {sums8_simd<16, false>, sums8_simd<16, true>};
constexpr SumsDiff16Fn kSums8x8_16u[2] = {sums16_simd<8, false>, sums16_simd<8, true>};
constexpr SumsDiff16Fn kSums16x16_16u[2] = {sums16_simd<16, false>, sums16_simd<16, true>};
// Bit 0: U differences written, bit 1: V differences written.
constexpr SumsDiffC2Fn kSumsC2[4] = {sums_c2_simd<false, false>, sums_c2_simd<true, false>,
                                     sums_c2_simd<false, true>, sums_c2_simd<true, true>};
// Indexed by 1 for pSrc and srcStep multiples of 16.
constexpr Edges8Fn kEdges8[2] = {edges8_simd<false>, edges8_simd<true>};

// ============================================================= catalogue

constexpr KernelPair<SumsDiff8Fn> kSums8Pairs[] = {
    {"sumsdiff8x8_8u", sums8_rule<8, true>, sums8_simd<8, true>, 8, 8, 1},
    {"sumsdiff8x8_8u_nodiff", sums8_rule<8, false>, sums8_simd<8, false>, 8, 8, 0},
    {"sumsdiff16x16_8u", sums8_rule<16, true>, sums8_simd<16, true>, 16, 16, 1},
    {"sumsdiff16x16_8u_nodiff", sums8_rule<16, false>, sums8_simd<16, false>, 16, 16, 0},
};
constexpr KernelPair<SumsDiff16Fn> kSums16Pairs[] = {
    {"sumsdiff8x8_16u", sums16_rule<8, true>, sums16_simd<8, true>, 8, 8, 1},
    {"sumsdiff8x8_16u_nodiff", sums16_rule<8, false>, sums16_simd<8, false>, 8, 8, 0},
    {"sumsdiff16x16_16u", sums16_rule<16, true>, sums16_simd<16, true>, 16, 16, 1},
    {"sumsdiff16x16_16u_nodiff", sums16_rule<16, false>, sums16_simd<16, false>, 16, 16, 0},
};
constexpr KernelPair<SumsDiffC2Fn> kSumsC2Pairs[] = {
    {"sumsdiff8x8_c2_nodiff", sums_c2_rule<false, false>, sums_c2_simd<false, false>, 8, 8, 0},
    {"sumsdiff8x8_c2_udiff", sums_c2_rule<true, false>, sums_c2_simd<true, false>, 8, 8, 1},
    {"sumsdiff8x8_c2_vdiff", sums_c2_rule<false, true>, sums_c2_simd<false, true>, 8, 8, 2},
    {"sumsdiff8x8_c2", sums_c2_rule<true, true>, sums_c2_simd<true, true>, 8, 8, 3},
};
constexpr KernelPair<Edges8Fn> kEdges8Pairs[] = {
    {"edges16x16_8u", edges8_rule, edges8_simd<false>, 16, 16, 0},
    {"edges16x16_8u_aligned", edges8_rule, edges8_simd<true>, 16, 16, 1},
};
constexpr KernelPair<Edges16Fn> kEdges16Pairs[] = {
    {"edges16x16_16u", edges16_rule, edges16_simd, 16, 16, 0},
};
constexpr KernelPair<CountFn> kCountPairs[] = {
    {"countzeros8x8", count_zeros_rule, count_zeros_simd, 8, 8, 0},
};

}  // namespace

const MiscKernels misc_kernels = {kSums8Pairs,   kSums16Pairs,  kSumsC2Pairs,
                                  kEdges8Pairs,  kEdges16Pairs, kCountPairs};

}  // namespace zan::ZAN_PATH::blockstats

// =============================================================== exports

namespace zan::ZAN_PATH {

// A null pDiff selects the NoDiff kernel.
#define ZAN_SUMS_EXPORT(name, T, S, table)                                                         \
    ZanStatus name(const T* pSrc, Zan32s srcStep, const T* pPred, Zan32s predStep, S* pSums,       \
                   Zan16s* pDiff) {                                                                \
        if (!pSrc || !pPred || !pSums) return zanStsNullPtr;                                       \
        blockstats::table[pDiff != nullptr](pSrc, srcStep, pPred, predStep, pSums, pDiff);         \
        return zanStsOk;                                                                           \
    }
ZAN_SUMS_EXPORT(zaniSumsDiff8x8Blocks4x4_8u16s_C1, Zan8u, Zan16s, kSums8x8)
ZAN_SUMS_EXPORT(zaniSumsDiff16x16Blocks4x4_8u16s_C1, Zan8u, Zan16s, kSums16x16)
ZAN_SUMS_EXPORT(zaniSumsDiff8x8Blocks4x4_16u32s_C1R, Zan16u, Zan32s, kSums8x8_16u)
ZAN_SUMS_EXPORT(zaniSumsDiff16x16Blocks4x4_16u32s_C1R, Zan16u, Zan32s, kSums16x16_16u)
#undef ZAN_SUMS_EXPORT

ZanStatus zaniSumsDiff8x8Blocks4x4_8u16s_C2P2(const Zan8u* pSrc, Zan32s srcStep, const Zan8u* pPredU,
                                              Zan32s predStepU, const Zan8u* pPredV, Zan32s predStepV,
                                              Zan16s* pSumsU, Zan16s* pDiffU, Zan16s* pSumsV, Zan16s* pDiffV) {
    if (!pSrc || !pPredU || !pPredV || !pSumsU || !pSumsV) return zanStsNullPtr;
    int which = (pDiffU != nullptr) | (pDiffV != nullptr) << 1;
    blockstats::kSumsC2[which](pSrc, srcStep, pPredU, predStepU, pPredV, predStepV, pSumsU, pDiffU, pSumsV, pDiffV);
    return zanStsOk;
}

ZanStatus zaniEdgesDetect16x16_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan32u edgeDifference, Zan32u edgeCount,
                                      Zan8u* pResult) {
    if (!pSrc || !pResult) return zanStsNullPtr;
    bool aligned = ((reinterpret_cast<std::uintptr_t>(pSrc) | static_cast<Zan32u>(srcStep)) & 15) == 0;
    *pResult = blockstats::kEdges8[aligned](pSrc, srcStep, edgeDifference, edgeCount);
    return zanStsOk;
}

ZanStatus zaniEdgesDetect16x16_16u_C1R(const Zan16u* pSrc, Zan32s srcStep, Zan32u edgeDifference,
                                       Zan32u edgeCount, Zan8u* pResult) {
    if (!pSrc || !pResult) return zanStsNullPtr;
    if (edgeDifference > 65535 || edgeCount > 256) return zanStsOk;
    *pResult = blockstats::edges16_simd(pSrc, srcStep, edgeDifference, edgeCount);
    return zanStsOk;
}

ZanStatus zaniCountZeros8x8_16s_C1(const Zan16s* pSrc, Zan32u* pCount) {
    if (!pSrc || !pCount) return zanStsNullPtr;
    *pCount = blockstats::count_zeros_simd(pSrc);
    return zanStsOk;
}

}  // namespace zan::ZAN_PATH
