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

// Eight half-sample values from taps p[0], p[step], ..., p[7 * step] (eight
// bytes each), as 16-bit lanes clamped to 0..255 and packed to bytes.
inline __m128i filter8(const Zan8u* p, ptrdiff_t step, __m128i bias) {
    const __m128i z = _mm_setzero_si128();
    auto tap = [&](int k) { return _mm_unpacklo_epi8(simd::load8(p + k * step), z); };
    __m128i a = _mm_add_epi16(tap(3), tap(4));
    __m128i b = _mm_add_epi16(tap(2), tap(5));
    __m128i c = _mm_add_epi16(tap(1), tap(6));
    __m128i d = _mm_add_epi16(tap(0), tap(7));
    __m128i v = _mm_mullo_epi16(a, _mm_set1_epi16(20));
    v = _mm_sub_epi16(v, _mm_mullo_epi16(b, _mm_set1_epi16(6)));
    v = _mm_add_epi16(v, _mm_mullo_epi16(c, _mm_set1_epi16(3)));
    v = _mm_sub_epi16(v, d);
    v = _mm_srai_epi16(_mm_add_epi16(v, bias), 5);
    return _mm_packus_epi16(v, v);
}

// (a + b + 1 - r) >> 1 on bytes; odd holds 1 in each byte when r is 1, else 0.
inline __m128i average(__m128i a, __m128i b, __m128i odd) {
    return _mm_sub_epi8(_mm_avg_epu8(a, b), _mm_and_si128(_mm_xor_si128(a, b), odd));
}

// Quarter values of eight outputs from a laid-out line: p points at the
// mirrored sample of index i - 3, step between taps.
inline __m128i quarter8(const Zan8u* p, ptrdiff_t step, Zan32s f, __m128i bias, __m128i odd) {
    if (f == 0) return simd::load8(p + 3 * step);
    __m128i h = filter8(p, step, bias);
    if (f == 2) return h;
    return average(h, simd::load8(p + (f == 1 ? 3 : 4) * step), odd);
}

template <int N, int M>
void copy_qp_sse2(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep, Zan32s acc, Zan32s rounding) {
    const Zan32s fx = acc & 3, fy = (acc >> 2) & 3, r = rounding & 1;
    const __m128i bias = _mm_set1_epi16(static_cast<short>(16 - r));
    const __m128i odd = _mm_set1_epi8(static_cast<char>(r));
    const Zan32s rows = fy ? M + 1 : M;
    // The horizontal results, rows -3..M+4 (mirrored), N bytes each.
    alignas(16) Zan8u t[M + 8][N];
    alignas(16) Zan8u line[N + 16];
    for (Zan32s y = 0; y < rows; ++y) {
        const Zan8u* s = simd::row(pSrc, srcStep, y);
        Zan8u* o = t[y + 3];
        if (fx == 0) {
            std::memcpy(o, s, N);
            continue;
        }
        std::memcpy(line + 3, s, N + 1);
        line[0] = s[2];
        line[1] = s[1];
        line[2] = s[0];
        line[N + 4] = s[N];
        line[N + 5] = s[N - 1];
        line[N + 6] = s[N - 2];
        line[N + 7] = 0;
        for (Zan32s x = 0; x < N; x += 8) simd::store8(o + x, quarter8(line + x, 1, fx, bias, odd));
    }
    if (fy == 0) {
        for (Zan32s y = 0; y < M; ++y) std::memcpy(simd::row(pDst, dstStep, y), t[y + 3], N);
        return;
    }
    for (Zan32s k = 0; k < 3; ++k) {
        std::memcpy(t[2 - k], t[3 + k], N);
        std::memcpy(t[M + 4 + k], t[M + 3 - k], N);
    }
    for (Zan32s y = 0; y < M; ++y) {
        Zan8u* d = simd::row(pDst, dstStep, y);
        for (Zan32s x = 0; x < N; x += 8) simd::store8(d + x, quarter8(&t[y][x], N, fy, bias, odd));
    }
}

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

constexpr KernelPair<CopyQPFn> kCopyQPPairs[] = {
    {"Copy8x8QP", copy_qp_rule<8, 8>, copy_qp_sse2<8, 8>, 8, 8, 0},
    {"Copy16x8QP", copy_qp_rule<16, 8>, copy_qp_sse2<16, 8>, 16, 8, 0},
    {"Copy16x16QP", copy_qp_rule<16, 16>, copy_qp_sse2<16, 16>, 16, 16, 0},
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
        copy_qp_sse2<N, M>(pSrc, srcStep, pDst, dstStep, acc, rounding & 1);
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
        copy_qp_sse2<8, 8>(s, srcStep, out, 8, acc, rounding & 1);
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
