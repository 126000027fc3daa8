// Adaptive spatio-temporal denoiser (a mean over a window in three frames in
// which the other frames' samples count only near the centre sample) and the
// edge-preserving smoothing denoiser (a 3x3 mean that never crosses an edge
// of a mask built from a low-passed copy of the picture).
//
// The adaptive filter's general window is plain scalar code; the 3x3 window
// has a row kernel with an SSE2 form.  The smoothing filter's mask and
// masked mean are row kernels with SSE2/SSSE3 forms.
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "common/scalar.h"
#include "common/simd.h"
#include "frame/bodies.h"
#include "picture/denoise.h"
#include "support/support.h"

namespace zan::ZAN_PATH::denoise {

using namespace zan::denoise;

namespace {

using scalar::absdiff;

inline const Zan8u* rowp(const Zan8u* p, Zan32s step, std::int64_t y) {
    return p + static_cast<std::ptrdiff_t>(step) * y;
}
inline Zan8u* rowp(Zan8u* p, Zan32s step, std::int64_t y) { return p + static_cast<std::ptrdiff_t>(step) * y; }

// Reciprocals of the masked mean: entry k is 65536 / k rounded, entry 0 is 1
// and entry 1 is 65535.
constexpr Zan16u kDenom[10] = {1, 65535, 32768, 21845, 16384, 13107, 10923, 9362, 8192, 7282};

// ============================================================ scalar rules

// One sample of the adaptive filter.  c0 points at the sample in each frame;
// the window reaches a rows up, b down, e columns left, f right.
Zan8u adaptive_sample(const Zan8u* const c0[3], Zan32s step, Zan32s a, Zan32s b, Zan32s e, Zan32s f,
                      Zan32s T, Zan32s mode, const Zan16u* R) {
    const Zan32s c = c0[1][0];
    Zan16u Sc = 0, Sp = 0, Sn = 0;
    Zan32s n = 0, cp = 0, cn = 0;
    for (Zan32s dy = -a; dy <= b; ++dy) {
        const Zan8u *pr = rowp(c0[0], step, dy), *cr = rowp(c0[1], step, dy), *nr = rowp(c0[2], step, dy);
        for (Zan32s dx = -e; dx <= f; ++dx) {
            ++n;
            Sc = static_cast<Zan16u>(Sc + cr[dx]);
            if (T > absdiff(c, pr[dx])) {
                Sp = static_cast<Zan16u>(Sp + pr[dx]);
                ++cp;
            }
            if (T > absdiff(c, nr[dx])) {
                Sn = static_cast<Zan16u>(Sn + nr[dx]);
                ++cn;
            }
        }
    }
    if (cp + cn == 0) return static_cast<Zan8u>((static_cast<Zan32u>(Sc) * R[n]) >> 16);
    const Zan32s p = c0[0][0], q = c0[2][0];
    Zan16u sum;
    Zan32s idx;
    switch (mode) {
        case 0: sum = static_cast<Zan16u>(Sc + p + q); idx = n + 2; break;
        case 1: sum = static_cast<Zan16u>(Sc + Sp + q); idx = n + cp + 1; break;
        case 2: sum = static_cast<Zan16u>(Sc + p + Sn); idx = n + cn + 1; break;
        default: sum = static_cast<Zan16u>(Sc + Sp + Sn); idx = n + cp + cn; break;
    }
    return static_cast<Zan8u>((static_cast<Zan32u>(sum) * R[idx]) >> 16);
}

template <int Mode>
void adaptive3_rule(const Zan8u* const rows[3], Zan32s step, Zan8u* out, Zan32s count, Zan32s T,
                    const Zan16u* R) {
    for (Zan32s x = 0; x < count; ++x) {
        const Zan8u* const c0[3] = {rows[0] + x, rows[1] + x, rows[2] + x};
        out[x] = adaptive_sample(c0, step, 1, 1, 1, 1, T, Mode, R);
    }
}

// The mask's test: (difference - 128) > clamp(T - 129) as signed bytes, that
// is a difference of at least T for T in 1..255.
inline Zan32s mask_limit(Zan32s T) {
    std::int64_t t = static_cast<std::int64_t>(T) - 129;
    return static_cast<Zan32s>(t < -128 ? -128 : t > 127 ? 127 : t);
}
inline Zan8u mask_cell(const Zan8u* l0, const Zan8u* l1, Zan32s c, Zan32s lim) {
    bool edge = absdiff(l0[c], l1[c + 1]) - 128 > lim || absdiff(l0[c + 1], l1[c]) - 128 > lim;
    return edge ? 255 : 0;
}

void mask_rule(const Zan8u* L, Zan32s step, Zan8u* E, Zan32s rows, Zan32s cols, Zan32s T) {
    const Zan32s lim = mask_limit(T);
    for (Zan32s r = 0; r < rows; ++r)
        for (Zan32s c = 0; c < cols; ++c) rowp(E, step, r)[c] = mask_cell(rowp(L, step, r), rowp(L, step, r + 1), c, lim);
}

inline Zan8u average_sample(const Zan8u* src, Zan32s srcStep, const Zan8u* e, Zan32s eStep, Zan32s x) {
    if (e[x] != 0) return src[x];
    Zan32u S = 0, k = 0;
    for (Zan32s dy = -1; dy <= 1; ++dy)
        for (Zan32s dx = -1; dx <= 1; ++dx)
            if (rowp(e, eStep, dy)[x + dx] == 0) {
                S += rowp(src, srcStep, dy)[x + dx];
                ++k;
            }
    Zan32u v = (S * kDenom[k]) >> 16;
    return static_cast<Zan8u>(v > 255 ? 255 : v);
}

void average_rule(const Zan8u* src, Zan32s srcStep, const Zan8u* e, Zan32s eStep, Zan8u* out, Zan32s count) {
    for (Zan32s x = 0; x < count; ++x) out[x] = average_sample(src, srcStep, e, eStep, x);
}

// ========================================================== vector kernels

inline __m128i widen8(const Zan8u* p) { return _mm_unpacklo_epi8(simd::load8(p), _mm_setzero_si128()); }

// The entries 0..27 of a reciprocal table (all that a 3x3 window in three
// frames indexes) as byte-shuffle tables of their low and high bytes.
struct RecipBytes {
    __m128i lo0, lo1, hi0, hi1;
    explicit RecipBytes(const Zan16u* R) {
        alignas(16) Zan8u b[4][16] = {};
        for (int k = 0; k < 28; ++k) {
            b[k >> 4][k & 15] = static_cast<Zan8u>(R[k] & 255);
            b[2 + (k >> 4)][k & 15] = static_cast<Zan8u>(R[k] >> 8);
        }
        lo0 = _mm_load_si128(reinterpret_cast<const __m128i*>(b[0]));
        lo1 = _mm_load_si128(reinterpret_cast<const __m128i*>(b[1]));
        hi0 = _mm_load_si128(reinterpret_cast<const __m128i*>(b[2]));
        hi1 = _mm_load_si128(reinterpret_cast<const __m128i*>(b[3]));
    }
};

// Eight samples of the 3x3 adaptive window at x.
template <int Mode>
inline void adaptive8(const Zan8u* const rows[3], Zan32s step, Zan8u* out, Zan32s x, __m128i t,
                      const RecipBytes& R) {
    const __m128i c = widen8(rows[1] + x);
    __m128i Sc = _mm_setzero_si128(), Sp = Sc, Sn = Sc, cp = Sc, cn = Sc;
    for (Zan32s dy = -1; dy <= 1; ++dy)
        for (Zan32s dx = -1; dx <= 1; ++dx) {
            __m128i s = widen8(rowp(rows[1], step, dy) + x + dx);
            __m128i p = widen8(rowp(rows[0], step, dy) + x + dx);
            __m128i q = widen8(rowp(rows[2], step, dy) + x + dx);
            Sc = _mm_add_epi16(Sc, s);
            __m128i pp = _mm_cmpgt_epi16(t, simd::absdiff_u16(c, p));
            __m128i pq = _mm_cmpgt_epi16(t, simd::absdiff_u16(c, q));
            Sp = _mm_add_epi16(Sp, _mm_and_si128(pp, p));
            Sn = _mm_add_epi16(Sn, _mm_and_si128(pq, q));
            cp = _mm_sub_epi16(cp, pp);
            cn = _mm_sub_epi16(cn, pq);
        }
    const __m128i nine = _mm_set1_epi16(9), one = _mm_set1_epi16(1);
    __m128i sum, idx;
    if constexpr (Mode == 0) {
        sum = _mm_add_epi16(Sc, _mm_add_epi16(widen8(rows[0] + x), widen8(rows[2] + x)));
        idx = _mm_set1_epi16(11);
    } else if constexpr (Mode == 1) {
        sum = _mm_add_epi16(Sc, _mm_add_epi16(Sp, widen8(rows[2] + x)));
        idx = _mm_add_epi16(_mm_add_epi16(nine, one), cp);
    } else if constexpr (Mode == 2) {
        sum = _mm_add_epi16(Sc, _mm_add_epi16(widen8(rows[0] + x), Sn));
        idx = _mm_add_epi16(_mm_add_epi16(nine, one), cn);
    } else {
        sum = _mm_add_epi16(Sc, _mm_add_epi16(Sp, Sn));
        idx = _mm_add_epi16(nine, _mm_add_epi16(cp, cn));
    }
    const __m128i none = _mm_cmpeq_epi16(_mm_add_epi16(cp, cn), _mm_setzero_si128());
    sum = _mm_or_si128(_mm_and_si128(none, Sc), _mm_andnot_si128(none, sum));
    idx = _mm_or_si128(_mm_and_si128(none, nine), _mm_andnot_si128(none, idx));
    // R[idx] for idx in 9..27: byte shuffles of the table's low and high
    // bytes, entries 0..15 and 16..31 picked by idx >= 16.
    const __m128i ib = _mm_packus_epi16(idx, idx);
    const __m128i upper = _mm_cmpgt_epi8(ib, _mm_set1_epi8(15));
    const __m128i lo = _mm_or_si128(_mm_andnot_si128(upper, _mm_shuffle_epi8(R.lo0, ib)),
                                    _mm_and_si128(upper, _mm_shuffle_epi8(R.lo1, ib)));
    const __m128i hi = _mm_or_si128(_mm_andnot_si128(upper, _mm_shuffle_epi8(R.hi0, ib)),
                                    _mm_and_si128(upper, _mm_shuffle_epi8(R.hi1, ib)));
    __m128i res = _mm_mulhi_epu16(sum, _mm_unpacklo_epi8(lo, hi));
    simd::store8(out + x, _mm_packus_epi16(res, res));
}

template <int Mode>
void adaptive3_simd(const Zan8u* const rows[3], Zan32s step, Zan8u* out, Zan32s count, Zan32s T,
                    const Zan16u* R) {
    if (count < 8) {
        adaptive3_rule<Mode>(rows, step, out, count, T, R);
        return;
    }
    // The threshold in the signed 16-bit range: the same test on byte differences.
    const Zan32s t16 = T < -32768 ? -32768 : T > 32767 ? 32767 : T;
    const __m128i t = _mm_set1_epi16(static_cast<short>(t16));
    const RecipBytes rb(R);
    Zan32s x = 0;
    for (; x + 8 <= count; x += 8) adaptive8<Mode>(rows, step, out, x, t, rb);
    if (x < count) adaptive8<Mode>(rows, step, out, count - 8, t, rb);
}

void mask_simd(const Zan8u* L, Zan32s step, Zan8u* E, Zan32s rows, Zan32s cols, Zan32s T) {
    const Zan32s lim = mask_limit(T);
    const __m128i vlim = _mm_set1_epi8(static_cast<char>(lim)), bias = _mm_set1_epi8(static_cast<char>(0x80));
    for (Zan32s r = 0; r < rows; ++r) {
        const Zan8u *l0 = rowp(L, step, r), *l1 = rowp(L, step, r + 1);
        Zan8u* e = rowp(E, step, r);
        Zan32s c = 0;
        for (; c + 16 <= cols; c += 16) {
            __m128i a = simd::load16(l0 + c), a1 = simd::load16(l0 + c + 1);
            __m128i b = simd::load16(l1 + c), b1 = simd::load16(l1 + c + 1);
            __m128i d1 = _mm_or_si128(_mm_subs_epu8(a, b1), _mm_subs_epu8(b1, a));
            __m128i d2 = _mm_or_si128(_mm_subs_epu8(a1, b), _mm_subs_epu8(b, a1));
            __m128i m = _mm_or_si128(_mm_cmpgt_epi8(_mm_xor_si128(d1, bias), vlim),
                                     _mm_cmpgt_epi8(_mm_xor_si128(d2, bias), vlim));
            simd::store16(e + c, m);
        }
        for (; c < cols; ++c) e[c] = mask_cell(l0, l1, c, lim);
    }
}

// Eight samples of the masked mean at x.
inline void average8(const Zan8u* src, Zan32s srcStep, const Zan8u* e, Zan32s eStep, Zan8u* out, Zan32s x,
                     __m128i dlo, __m128i dhi) {
    const __m128i zero = _mm_setzero_si128();
    __m128i S = zero, k = zero;
    for (Zan32s dy = -1; dy <= 1; ++dy)
        for (Zan32s dx = -1; dx <= 1; ++dx) {
            __m128i m8 = _mm_cmpeq_epi8(simd::load8(rowp(e, eStep, dy) + x + dx), zero);
            __m128i m16 = _mm_unpacklo_epi8(m8, m8);
            S = _mm_add_epi16(S, _mm_and_si128(m16, widen8(rowp(src, srcStep, dy) + x + dx)));
            k = _mm_sub_epi16(k, m16);
        }
    __m128i kb = _mm_packus_epi16(k, k);
    __m128i den = _mm_unpacklo_epi8(_mm_shuffle_epi8(dlo, kb), _mm_shuffle_epi8(dhi, kb));
    __m128i mean = _mm_packus_epi16(_mm_mulhi_epu16(S, den), zero);
    __m128i c = simd::load8(src + x);
    __m128i own = _mm_cmpeq_epi8(simd::load8(e + x), zero);
    __m128i r = _mm_or_si128(_mm_and_si128(own, mean), _mm_andnot_si128(own, c));
    simd::store8(out + x, r);
}

void average_simd(const Zan8u* src, Zan32s srcStep, const Zan8u* e, Zan32s eStep, Zan8u* out, Zan32s count) {
    if (count < 8) {
        average_rule(src, srcStep, e, eStep, out, count);
        return;
    }
    alignas(16) Zan8u lo[16] = {}, hi[16] = {};
    for (int i = 0; i < 10; ++i) {
        lo[i] = static_cast<Zan8u>(kDenom[i] & 255);
        hi[i] = static_cast<Zan8u>(kDenom[i] >> 8);
    }
    const __m128i dlo = _mm_load_si128(reinterpret_cast<const __m128i*>(lo));
    const __m128i dhi = _mm_load_si128(reinterpret_cast<const __m128i*>(hi));
    Zan32s x = 0;
    for (; x + 8 <= count; x += 8) average8(src, srcStep, e, eStep, out, x, dlo, dhi);
    if (x < count) average8(src, srcStep, e, eStep, out, count - 8, dlo, dhi);
}

// ============================================================= catalogue

constexpr AdaptiveRowFn kAdaptive3[4] = {adaptive3_simd<0>, adaptive3_simd<1>, adaptive3_simd<2>, adaptive3_simd<3>};

constexpr KernelPair<AdaptiveRowFn> kAdaptivePairs[] = {
    {"adaptive3x3_mode0", adaptive3_rule<0>, adaptive3_simd<0>, 3, 3, 0},
    {"adaptive3x3_mode1", adaptive3_rule<1>, adaptive3_simd<1>, 3, 3, 1},
    {"adaptive3x3_mode2", adaptive3_rule<2>, adaptive3_simd<2>, 3, 3, 2},
    {"adaptive3x3_mode3", adaptive3_rule<3>, adaptive3_simd<3>, 3, 3, 3},
};
constexpr KernelPair<MaskFn> kMaskPairs[] = {{"smooth_mask", mask_rule, mask_simd, 0, 0, 0}};
constexpr KernelPair<AverageRowFn> kAveragePairs[] = {{"smooth_average", average_rule, average_simd, 0, 1, 0}};

// =============================================================== drivers

// The picture-border flags of a region and the copies they call for.
struct Borders {
    bool top, bottom, left, right;
    Borders(ZaniSize img, ZaniPoint off, ZaniSize roi)
        : top(off.y == 0), bottom(off.y + roi.height == img.height), left(off.x == 0),
          right(off.x + roi.width == img.width) {}
    void copy(const Zan8u* src, Zan32s srcStep, Zan8u* dst, Zan32s dstStep, ZaniPoint off, ZaniSize roi) const {
        const Zan8u* s = rowp(src, srcStep, off.y) + off.x;
        Zan8u* d = rowp(dst, dstStep, off.y) + off.x;
        auto column = [&](Zan32s x) {
            for (Zan32s i = 0; i < roi.height; ++i) rowp(d, dstStep, i)[x] = rowp(s, srcStep, i)[x];
        };
        if (top) zansCopy_8u(s, d, roi.width);
        if (left) column(0);
        if (right) column(roi.width - 1);
        if (bottom) zansCopy_8u(rowp(s, srcStep, roi.height - 1), rowp(d, dstStep, roi.height - 1), roi.width);
    }
};

inline bool region_outside(ZaniSize img, ZaniPoint off, ZaniSize roi) {
    return off.x < 0 || off.y < 0 || static_cast<std::int64_t>(off.x) + roi.width > img.width ||
           static_cast<std::int64_t>(off.y) + roi.height > img.height;
}

}  // namespace

const Kernels kernels = {kAdaptivePairs, kMaskPairs, kAveragePairs};

}  // namespace zan::ZAN_PATH::denoise

// =============================================================== exports

namespace zan::ZAN_PATH {

using denoise::rowp;

ZanStatus zaniFilterDenoiseAdaptiveInitAlloc_8u_C1(ZanDenoiseAdaptiveState** ppState, ZaniSize roiSize,
                                                   ZaniSize maskSize) {
    if (!ppState) return zanStsNullPtr;
    if (roiSize.width < 1 || roiSize.height < 1 || maskSize.width < 1 || maskSize.height < 1 ||
        maskSize.width > roiSize.width || maskSize.height > roiSize.height)
        return zanStsSizeBad;
    auto* st = reinterpret_cast<ZanDenoiseAdaptiveState*>(zansMalloc_8u(sizeof(ZanDenoiseAdaptiveState)));
    if (!st) return zanStsNoMem;
    st->maskSize = maskSize;
    st->roiSize = roiSize;
    st->pRecip = nullptr;
    *ppState = st;
    const std::int64_t r = maskSize.width > maskSize.height ? maskSize.width : maskSize.height;
    const std::int64_t count = 3 * (2 * r + 1) * (2 * r + 1) + 1;
    st->pRecip = count > INT_MAX / 2 ? nullptr : zansMalloc_16u(static_cast<Zan32s>(count));
    if (!st->pRecip) return zanStsNoMem;
    st->pRecip[0] = 1;
    for (std::int64_t k = 1; k < count; ++k)
        st->pRecip[k] = static_cast<Zan16u>(std::floor(65535.0 / static_cast<double>(k) + 0.5));
    return zanStsOk;
}

ZanStatus zaniFilterDenoiseAdaptiveFree_8u_C1(ZanDenoiseAdaptiveState* pState) {
    if (!pState) return zanStsNullPtr;
    if (pState->pRecip) zansFree(pState->pRecip);
    zansFree(pState);
    return zanStsOk;
}

ZanStatus zaniFilterDenoiseAdaptive_8u_C1R(const Zan8u* pSrc[3], Zan32s srcStep, Zan8u* pDst, Zan32s dstStep,
                                           ZaniSize imgSize, ZaniSize maskSize, ZaniPoint roiOffset,
                                           ZaniSize roiSize, Zan32s threshold, Zan32s mode,
                                           ZanDenoiseAdaptiveState* pState) {
    if (!pSrc || !pDst || !pState) return zanStsNullPtr;
    if (!pSrc[0] || !pSrc[1] || !pSrc[2]) return zanStsNullPtr;
    if (imgSize.width < 1 || imgSize.height < 1 || roiSize.width < 1 || roiSize.height < 1 || maskSize.width < 1 ||
        maskSize.height < 1 || denoise::region_outside(imgSize, roiOffset, roiSize))
        return zanStsSizeBad;
    if (maskSize.height != pState->maskSize.height || maskSize.width != pState->maskSize.width ||
        roiSize.height != pState->roiSize.height || roiSize.width != pState->roiSize.width)
        return zanStsSizeBad;
    const bool fast = maskSize.width == 1 && maskSize.height == 1 && roiSize.width <= 1408;
    if (!fast && (mode < 0 || mode > 3)) return zanStsModeUnknown;
    const denoise::Borders bd(imgSize, roiOffset, roiSize);
    bd.copy(pSrc[1], srcStep, pDst, dstStep, roiOffset, roiSize);
    if (mode < 0 || mode > 3) return zanStsOk;
    const Zan32s W = imgSize.width, H = imgSize.height;
    const Zan32s y0 = roiOffset.y + bd.top, y1 = roiOffset.y + roiSize.height - bd.bottom;
    const Zan32s x0 = roiOffset.x + bd.left, x1 = roiOffset.x + roiSize.width - bd.right;
    if (x0 >= x1) return zanStsOk;
    for (Zan32s y = y0; y < y1; ++y) {
        const Zan8u* const rows[3] = {rowp(pSrc[0], srcStep, y) + x0, rowp(pSrc[1], srcStep, y) + x0,
                                      rowp(pSrc[2], srcStep, y) + x0};
        Zan8u* out = rowp(pDst, dstStep, y) + x0;
        // Radii of 1: every filtered sample has its whole 3x3 window (the
        // picture's outer rows and columns are never filtered), so the row
        // kernel gives the general rule's result at any region width.  The
        // width limit of 1408 only decides what an unknown mode does.
        if (maskSize.width == 1 && maskSize.height == 1) {
            denoise::kAdaptive3[mode](rows, srcStep, out, x1 - x0, threshold, pState->pRecip);
            continue;
        }
        const Zan32s mh = maskSize.height, mw = maskSize.width;
        const Zan32s a = y < mh ? y : mh, b = mh < H - 1 - y ? mh : H - 1 - y;
        for (Zan32s x = x0; x < x1; ++x) {
            const Zan32s e = x < mw ? x : mw, f = mw < W - 1 - x ? mw : W - 1 - x;
            const Zan8u* const c0[3] = {rows[0] + (x - x0), rows[1] + (x - x0), rows[2] + (x - x0)};
            out[x - x0] = denoise::adaptive_sample(c0, srcStep, a, b, e, f, threshold, mode, pState->pRecip);
        }
    }
    return zanStsOk;
}

ZanStatus zaniFilterDenoiseSmooth_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep,
                                         ZaniSize imgSize, Zan32s threshold, ZaniPoint roiOffset,
                                         ZaniSize roiSize, Zan8u* pBuffer) {
    if (!pSrc || !pDst || !pBuffer) return zanStsNullPtr;
    if (imgSize.width < 1 || imgSize.height < 1) return zanStsSizeBad;
    if (roiSize.height < 3) return zanStsErr;
    if (denoise::region_outside(imgSize, roiOffset, roiSize)) return zanStsSizeBad;
    const Zan32s W = imgSize.width, H = imgSize.height, ox = roiOffset.x, oy = roiOffset.y;
    const Zan32s rw = roiSize.width, rh = roiSize.height, B = rw + 3;
    Zan8u* E = pBuffer;
    Zan8u* Lbase = pBuffer + static_cast<std::ptrdiff_t>(rh + 3) * B;

    // Extent of the low-passed picture, rows then columns.
    Zan32s n = rh, sr = oy, lr = 0;
    if (oy == 0) {
        n = rh - 1;
        sr = 1;
        lr = 1;
    } else if (oy == 1) {
        lr = 1;
    } else {
        n = rh + 1;
        sr = oy - 1;
    }
    if (oy + rh == H) n -= 1;
    else if (oy + rh < H - 1) n += 2;
    Zan32s m = rw, sc = ox, lc = 0;
    if (ox == 0) {
        m = rw - 1;
        sc = 1;
        lc = 1;
    } else if (ox == 1) {
        lc = 1;
    } else {
        m = rw + 1;
        sc = ox - 1;
    }
    if (ox + rw == W) m -= 1;
    else if (ox + rw < W - 1) m += 2;

    Zan8u* L = Lbase + static_cast<std::ptrdiff_t>(lr) * B + lc;
    zaniFilterLowpass_8u_C1R(rowp(pSrc, srcStep, sr) + sc, srcStep, L, B, {m, n}, kMask3x3);

    // Replicate L at the picture's edges.
    if (m > 0) {
        if (oy < 2) {
            std::memcpy(L - B, L, static_cast<size_t>(m));
            L -= B;
            n += 1;
        }
        if (oy + rh >= H - 2 && n > 0) {
            std::memcpy(rowp(L, B, n), rowp(L, B, n - 1), static_cast<size_t>(m));
            n += 1;
        }
    }
    if (n > 0) {
        if (ox < 2) {
            for (Zan32s r = 0; r < n; ++r) rowp(L, B, r)[-1] = rowp(L, B, r)[0];
            L -= 1;
            m += 1;
        }
        if (ox + rw >= W - 2 && m > 0) {
            for (Zan32s r = 0; r < n; ++r) rowp(L, B, r)[m] = rowp(L, B, r)[m - 1];
            m += 1;
        }
    }

    // Edge mask.
    if (threshold != 0) denoise::mask_simd(L, B, E, n - 1, m - 1, threshold);
    else if (rw > 0) std::memset(E + rw, 255, static_cast<size_t>(rh - 2) * static_cast<size_t>(rw));
    if (oy + rh >= H - 1 && n > 0 && m > 0) std::memset(rowp(E, B, n - 1), 255, static_cast<size_t>(m));
    if (ox + rw >= W - 1 && m > 0)
        for (Zan32s r = 0; r < n; ++r) rowp(E, B, r)[m - 1] = 255;

    // Border copies, then the masked mean.
    const denoise::Borders bd(imgSize, roiOffset, roiSize);
    if (rw > 0) bd.copy(pSrc, srcStep, pDst, dstStep, roiOffset, roiSize);
    const Zan32s count = rw - bd.left - bd.right;
    if (count <= 0) return zanStsOk;
    for (Zan32s i = bd.top; i < rh - bd.bottom; ++i) {
        const Zan8u* s = rowp(pSrc, srcStep, oy + i) + ox + bd.left;
        denoise::average_simd(s, srcStep, rowp(E, B, i + 1 - bd.top) + 1, B, rowp(pDst, dstStep, oy + i) + ox + bd.left,
                              count);
    }
    return zanStsOk;
}

}  // namespace zan::ZAN_PATH
