// H.263 2:1 up- and downsampling of planes and blocks, and the PB-frame
// backward prediction.
//
// Upsampling places every output sample a quarter of a source sample away
// from its nearest source sample: the weights are 9 for that sample, 3 for
// its neighbour along the row and along the column on the output sample's
// side, and 1 for the diagonal.  The filter is separable: with
// V = 3 * nearest + vertical neighbour, output = (3 * V(x) + V(x +- 1) + k) >> 4.
// The one-dimensional forms use 3 and 1 with (.. + 2) >> 2.
#include "h26x_mpeg4/resample263.h"

#include "common/simd.h"
#include "frame/bodies.h"

namespace zan::ZAN_PATH::resample263 {
namespace {

using namespace zan::resample263;
using simd::row;

// ============================================================ scalar rules

// Source sample at (x, y); outside the w x h source: the nearest edge sample
// when fill is negative, else fill.
inline Zan32s sample(const Zan8u* s, Zan32s step, Zan32s w, Zan32s h, Zan32s x, Zan32s y, Zan32s fill) {
    if (x < 0 || y < 0 || x >= w || y >= h) {
        if (fill >= 0) return fill;
        x = x < 0 ? 0 : (x >= w ? w - 1 : x);
        y = y < 0 ? 0 : (y >= h ? h - 1 : y);
    }
    return row(s, step, y)[x];
}

// Output (X, Y) of the two-dimensional doubling.
inline Zan8u up2d_at(const Zan8u* s, Zan32s step, Zan32s w, Zan32s h, Zan32s X, Zan32s Y, Zan32s r, Zan32s fill) {
    Zan32s x = X >> 1, y = Y >> 1, sx = (X & 1) ? 1 : -1, sy = (Y & 1) ? 1 : -1;
    Zan32s a = sample(s, step, w, h, x, y, fill), b = sample(s, step, w, h, x + sx, y, fill);
    Zan32s c = sample(s, step, w, h, x, y + sy, fill), d = sample(s, step, w, h, x + sx, y + sy, fill);
    return static_cast<Zan8u>((9 * a + 3 * b + 3 * c + d + 7 + r) >> 4);
}
// Output (x, Y) of the vertical doubling and (X, y) of the horizontal one.
inline Zan8u upver_at(const Zan8u* s, Zan32s step, Zan32s w, Zan32s h, Zan32s x, Zan32s Y) {
    Zan32s y = Y >> 1, sy = (Y & 1) ? 1 : -1;
    return static_cast<Zan8u>((3 * sample(s, step, w, h, x, y, -1) + sample(s, step, w, h, x, y + sy, -1) + 2) >> 2);
}
inline Zan8u uphor_at(const Zan8u* s, Zan32s step, Zan32s w, Zan32s h, Zan32s X, Zan32s y) {
    Zan32s x = X >> 1, sx = (X & 1) ? 1 : -1;
    return static_cast<Zan8u>((3 * sample(s, step, w, h, x, y, -1) + sample(s, step, w, h, x + sx, y, -1) + 2) >> 2);
}
inline Zan8u down_at(const Zan8u* s, Zan32s step, Zan32s x, Zan32s y, Zan32s r) {
    const Zan8u* p = row(s, step, 2 * y) + 2 * x;
    const Zan8u* q = row(s, step, 2 * y + 1) + 2 * x;
    return static_cast<Zan8u>((p[0] + p[1] + q[0] + q[1] + 1 + r) >> 2);
}

template <int K>
void plane_rule(const Zan8u* s, Zan32s ss, Zan32s w, Zan32s h, Zan8u* d, Zan32s ds, Zan32s r, Zan32s fill) {
    if constexpr (K == kUp2D) {
        for (Zan32s Y = 0; Y < 2 * h; ++Y)
            for (Zan32s X = 0; X < 2 * w; ++X) row(d, ds, Y)[X] = up2d_at(s, ss, w, h, X, Y, r, fill);
    } else if constexpr (K == kDown) {
        for (Zan32s y = 0; y < h / 2; ++y)
            for (Zan32s x = 0; x < w / 2; ++x) row(d, ds, y)[x] = down_at(s, ss, x, y, r);
    } else if constexpr (K == kUpVer) {
        for (Zan32s Y = 0; Y < 2 * h; ++Y)
            for (Zan32s x = 0; x < w; ++x) row(d, ds, Y)[x] = upver_at(s, ss, w, h, x, Y);
    } else {
        for (Zan32s y = 0; y < h; ++y)
            for (Zan32s X = 0; X < 2 * w; ++X) row(d, ds, y)[X] = uphor_at(s, ss, w, h, X, y);
    }
}

inline Zan16s at16(const Zan16s* p, Zan32s step, Zan32s x, Zan32s y) {
    x = x < 0 ? 0 : (x > 7 ? 7 : x);
    y = y < 0 ? 0 : (y > 7 ? 7 : y);
    return reinterpret_cast<const Zan16s*>(row(p, step, y))[x];
}
void up16_rule(const Zan16s* s, Zan32s ss, Zan16s* d, Zan32s ds) {
    for (Zan32s Y = 0; Y < 16; ++Y)
        for (Zan32s X = 0; X < 16; ++X) {
            Zan32s x = X >> 1, y = Y >> 1, sx = (X & 1) ? 1 : -1, sy = (Y & 1) ? 1 : -1;
            Zan32s v = 9 * at16(s, ss, x, y) + 3 * at16(s, ss, x + sx, y) + 3 * at16(s, ss, x, y + sy) +
                       at16(s, ss, x + sx, y + sy) + 8;
            reinterpret_cast<Zan16s*>(row(d, ds, Y))[X] = static_cast<Zan16s>(v >> 4);
        }
}
void down16_rule(const Zan16s* s, Zan32s ss, Zan16s* d, Zan32s ds) {
    for (Zan32s y = 0; y < 8; ++y) {
        const Zan16s* p = reinterpret_cast<const Zan16s*>(row(s, ss, 2 * y));
        const Zan16s* q = reinterpret_cast<const Zan16s*>(row(s, ss, 2 * y + 1));
        for (Zan32s x = 0; x < 8; ++x) {
            Zan32s v = (p[2 * x] + p[2 * x + 1] + q[2 * x] + q[2 * x + 1] + 2) >> 2;
            v = v > 32767 ? 32767 : (v < -32768 ? -32768 : v);
            reinterpret_cast<Zan16s*>(row(d, ds, y))[x] = static_cast<Zan16s>(v);
        }
    }
}

// Reference value at position P (0 whole, 1 half down, 2 half right, 3 both).
template <int P>
inline Zan32s pred_at(const Zan8u* s, Zan32s ss, Zan32s x, Zan32s y) {
    const Zan8u* p = row(s, ss, y) + x;
    if constexpr (P == 0) return p[0];
    if constexpr (P == 1) return (p[0] + row(s, ss, y + 1)[x] + 1) >> 1;
    if constexpr (P == 2) return (p[0] + p[1] + 1) >> 1;
    const Zan8u* q = row(s, ss, y + 1) + x;
    return (p[0] + p[1] + q[0] + q[1] + 2) >> 2;
}
template <int P>
void backpred_rule(const Zan8u* s, Zan32s ss, Zan32s w, Zan32s h, Zan8u* d, Zan32s ds) {
    for (Zan32s y = 0; y < h; ++y)
        for (Zan32s x = 0; x < w; ++x) {
            Zan8u* o = row(d, ds, y) + x;
            *o = static_cast<Zan8u>((*o + pred_at<P>(s, ss, x, y)) >> 1);
        }
}

// ========================================================= vector kernels

inline __m128i widen8(const Zan8u* p) { return _mm_unpacklo_epi8(simd::load8(p), _mm_setzero_si128()); }
inline __m128i times3(__m128i v) { return _mm_add_epi16(v, _mm_add_epi16(v, v)); }

// Doubling kernels.  Columns whose neighbours all lie inside the source
// (1 <= x and x + 8 < w) go eight at a time; the edge columns take the
// per-sample rule.
template <int K>
void plane_simd(const Zan8u* s, Zan32s ss, Zan32s w, Zan32s h, Zan8u* d, Zan32s ds, Zan32s r, Zan32s fill) {
    if constexpr (K == kDown) {
        const __m128i ones = _mm_set1_epi8(1), k = _mm_set1_epi16(static_cast<Zan16s>(1 + r));
        const Zan32s ow = w / 2;
        for (Zan32s y = 0; y < h / 2; ++y) {
            const Zan8u* p = row(s, ss, 2 * y);
            const Zan8u* q = row(s, ss, 2 * y + 1);
            Zan8u* o = row(d, ds, y);
            Zan32s x = 0;
            for (; x + 8 <= ow; x += 8) {
                __m128i a = _mm_maddubs_epi16(simd::load16(p + 2 * x), ones);
                __m128i b = _mm_maddubs_epi16(simd::load16(q + 2 * x), ones);
                __m128i v = _mm_srli_epi16(_mm_add_epi16(_mm_add_epi16(a, b), k), 2);
                simd::store8(o + x, _mm_packus_epi16(v, v));
            }
            for (; x < ow; ++x) o[x] = down_at(s, ss, x, y, r);
        }
    } else if constexpr (K == kUpVer) {
        const __m128i two = _mm_set1_epi16(2), z = _mm_setzero_si128();
        for (Zan32s Y = 0; Y < 2 * h; ++Y) {
            Zan32s y = Y >> 1, n = y + ((Y & 1) ? 1 : -1);
            n = n < 0 ? 0 : (n >= h ? h - 1 : n);
            const Zan8u* c = row(s, ss, y);
            const Zan8u* m = row(s, ss, n);
            Zan8u* o = row(d, ds, Y);
            Zan32s x = 0;
            for (; x + 16 <= w; x += 16) {
                __m128i cv = simd::load16(c + x), mv = simd::load16(m + x);
                __m128i lo = _mm_add_epi16(_mm_add_epi16(times3(_mm_unpacklo_epi8(cv, z)), _mm_unpacklo_epi8(mv, z)), two);
                __m128i hi = _mm_add_epi16(_mm_add_epi16(times3(_mm_unpackhi_epi8(cv, z)), _mm_unpackhi_epi8(mv, z)), two);
                simd::store16(o + x, _mm_packus_epi16(_mm_srli_epi16(lo, 2), _mm_srli_epi16(hi, 2)));
            }
            for (; x < w; ++x) o[x] = upver_at(s, ss, w, h, x, Y);
        }
    } else {
        // kUp2D and kUpHor.
        constexpr bool two_d = K == kUp2D;
        const __m128i k = _mm_set1_epi16(static_cast<Zan16s>(two_d ? 7 + r : 2));
        const __m128i fillv = _mm_set1_epi16(static_cast<Zan16s>(fill));
        const Zan32s rows_out = two_d ? 2 * h : h;
        for (Zan32s Y = 0; Y < rows_out; ++Y) {
            Zan32s y = two_d ? Y >> 1 : Y;
            const Zan8u* c = row(s, ss, y);
            const Zan8u* m = nullptr;  // vertical neighbour row, null: the fill value
            if constexpr (two_d) {
                Zan32s n = y + ((Y & 1) ? 1 : -1);
                if (n >= 0 && n < h) m = row(s, ss, n);
                else if (fill < 0) m = c;
            }
            // V at x .. x + 7.
            auto vrow = [&](Zan32s x) {
                __m128i v = widen8(c + x);
                if constexpr (two_d) v = _mm_add_epi16(times3(v), m ? widen8(m + x) : fillv);
                return v;
            };
            Zan8u* o = row(d, ds, Y);
            auto edge = [&](Zan32s X) {
                o[X] = two_d ? up2d_at(s, ss, w, h, X, Y, r, fill) : uphor_at(s, ss, w, h, X, Y);
            };
            edge(0);
            edge(1);
            Zan32s x = 1;
            for (; x + 8 < w; x += 8) {
                __m128i vm = vrow(x - 1), v0 = times3(vrow(x)), vp = vrow(x + 1);
                __m128i e = _mm_add_epi16(_mm_add_epi16(v0, vm), k), od = _mm_add_epi16(_mm_add_epi16(v0, vp), k);
                if constexpr (two_d) {
                    e = _mm_srli_epi16(e, 4);
                    od = _mm_srli_epi16(od, 4);
                } else {
                    e = _mm_srli_epi16(e, 2);
                    od = _mm_srli_epi16(od, 2);
                }
                simd::store16(o + 2 * x, _mm_unpacklo_epi8(_mm_packus_epi16(e, e), _mm_packus_epi16(od, od)));
            }
            for (Zan32s X = 2 * x; X < 2 * w; ++X) edge(X);
        }
    }
}

// 3 * a + b on eight Zan16s pairs, in 32 bits: lanes 0..3 and 4..7.
inline void weigh31(__m128i a, __m128i b, __m128i& lo, __m128i& hi) {
    const __m128i w = _mm_set1_epi32(0x00010003);
    lo = _mm_madd_epi16(_mm_unpacklo_epi16(a, b), w);
    hi = _mm_madd_epi16(_mm_unpackhi_epi16(a, b), w);
}
struct HRow {
    __m128i elo, ehi, olo, ohi;  // horizontal stage for even and odd output columns
};
inline HRow hrow(const Zan16s* p) {
    __m128i c = simd::load16(p);
    __m128i cm = _mm_insert_epi16(_mm_slli_si128(c, 2), _mm_extract_epi16(c, 0), 0);
    __m128i cp = _mm_insert_epi16(_mm_srli_si128(c, 2), _mm_extract_epi16(c, 7), 7);
    HRow h;
    weigh31(c, cm, h.elo, h.ehi);
    weigh31(c, cp, h.olo, h.ohi);
    return h;
}
inline __m128i vmix(__m128i a, __m128i b) {
    const __m128i k = _mm_set1_epi32(8);
    return _mm_srai_epi32(_mm_add_epi32(_mm_add_epi32(_mm_add_epi32(a, _mm_add_epi32(a, a)), b), k), 4);
}
void up16_simd(const Zan16s* s, Zan32s ss, Zan16s* d, Zan32s ds) {
    HRow rows[8];
    for (Zan32s y = 0; y < 8; ++y) rows[y] = hrow(reinterpret_cast<const Zan16s*>(row(s, ss, y)));
    for (Zan32s Y = 0; Y < 16; ++Y) {
        Zan32s y = Y >> 1, n = y + ((Y & 1) ? 1 : -1);
        n = n < 0 ? 0 : (n > 7 ? 7 : n);
        const HRow& a = rows[y];
        const HRow& b = rows[n];
        __m128i elo = vmix(a.elo, b.elo), ehi = vmix(a.ehi, b.ehi), olo = vmix(a.olo, b.olo), ohi = vmix(a.ohi, b.ohi);
        Zan8u* o = row(d, ds, Y);
        simd::store16(o, _mm_packs_epi32(_mm_unpacklo_epi32(elo, olo), _mm_unpackhi_epi32(elo, olo)));
        simd::store16(o + 16, _mm_packs_epi32(_mm_unpacklo_epi32(ehi, ohi), _mm_unpackhi_epi32(ehi, ohi)));
    }
}
void down16_simd(const Zan16s* s, Zan32s ss, Zan16s* d, Zan32s ds) {
    const __m128i ones = _mm_set1_epi16(1), two = _mm_set1_epi32(2);
    for (Zan32s y = 0; y < 8; ++y) {
        const Zan8u* p = row(s, ss, 2 * y);
        const Zan8u* q = row(s, ss, 2 * y + 1);
        __m128i lo = _mm_add_epi32(_mm_madd_epi16(simd::load16(p), ones), _mm_madd_epi16(simd::load16(q), ones));
        __m128i hi = _mm_add_epi32(_mm_madd_epi16(simd::load16(p + 16), ones), _mm_madd_epi16(simd::load16(q + 16), ones));
        lo = _mm_srai_epi32(_mm_add_epi32(lo, two), 2);
        hi = _mm_srai_epi32(_mm_add_epi32(hi, two), 2);
        simd::store16(row(d, ds, y), _mm_packs_epi32(lo, hi));
    }
}

// Eight samples at a time, then the rest singly.  (d + r) >> 1 is the
// upward average less the lost odd bit.
template <int P>
void backpred_simd(const Zan8u* s, Zan32s ss, Zan32s w, Zan32s h, Zan8u* d, Zan32s ds) {
    const __m128i one = _mm_set1_epi8(1);
    for (Zan32s y = 0; y < h; ++y) {
        const Zan8u* p = row(s, ss, y);
        const Zan8u* q = row(s, ss, y + 1);
        Zan8u* o = row(d, ds, y);
        Zan32s x = 0;
        for (; x + 8 <= w; x += 8) {
            __m128i r = simd::load8(p + x);
            if constexpr (P == 1) r = _mm_avg_epu8(r, simd::load8(q + x));
            if constexpr (P == 2) r = _mm_avg_epu8(r, simd::load8(p + x + 1));
            if constexpr (P == 3) r = simd::avg4_u8(r, simd::load8(p + x + 1), simd::load8(q + x), simd::load8(q + x + 1));
            __m128i v = simd::load8(o + x);
            v = _mm_sub_epi8(_mm_avg_epu8(v, r), _mm_and_si128(_mm_xor_si128(v, r), one));
            simd::store8(o + x, v);
        }
        for (; x < w; ++x) o[x] = static_cast<Zan8u>((o[x] + pred_at<P>(s, ss, x, y)) >> 1);
    }
}

// ================================================================= tables

constexpr BackPredFn kBackPred[4] = {backpred_simd<0>, backpred_simd<1>, backpred_simd<2>, backpred_simd<3>};

// ============================================================= catalogue

constexpr KernelPair<PlaneFn> kPlanePairs[] = {
    {"upsample_2d", plane_rule<kUp2D>, plane_simd<kUp2D>, 0, 0, kUp2D},
    {"downsample", plane_rule<kDown>, plane_simd<kDown>, 0, 0, kDown},
    {"upsample_ver", plane_rule<kUpVer>, plane_simd<kUpVer>, 0, 0, kUpVer},
    {"upsample_hor", plane_rule<kUpHor>, plane_simd<kUpHor>, 0, 0, kUpHor},
};
constexpr KernelPair<Block16Fn> kBlock16Pairs[] = {
    {"upsample8x8_16s", up16_rule, up16_simd, 8, 8, 0},
    {"downsample16x16_16s", down16_rule, down16_simd, 16, 16, 1},
};
constexpr KernelPair<BackPredFn> kBackPredPairs[] = {
    {"backpred_FF", backpred_rule<0>, backpred_simd<0>, 0, 0, 0},
    {"backpred_FH", backpred_rule<1>, backpred_simd<1>, 0, 0, 1},
    {"backpred_HF", backpred_rule<2>, backpred_simd<2>, 0, 0, 2},
    {"backpred_HH", backpred_rule<3>, backpred_simd<3>, 0, 0, 3},
};

}  // namespace

const Kernels kernels = {kPlanePairs, kBlock16Pairs, kBackPredPairs};

}  // namespace zan::ZAN_PATH::resample263

// =============================================================== exports

namespace zan::ZAN_PATH {

namespace {
inline bool bad_up_size(ZaniSize s) {
    return s.width < 4 || s.height < 4 || (s.width & 1) || (s.height & 1);
}
}  // namespace

ZanStatus zaniUpsampleFour_H263_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, ZaniSize roiSize, Zan8u* pDst,
                                       Zan32s dstStep, Zan32s rounding, Zan32s fillColor) {
    if (!pSrc || !pDst) return zanStsNullPtr;
    if (bad_up_size(roiSize)) return zanStsSizeBad;
    Zan32s fill = fillColor == -1 ? -1 : (fillColor & 255);
    resample263::plane_simd<resample263::kUp2D>(pSrc, srcStep, roiSize.width, roiSize.height, pDst, dstStep,
                                                rounding & 1, fill);
    return zanStsOk;
}

ZanStatus zaniDownsampleFour_H263_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, ZaniSize roiSize, Zan8u* pDst,
                                         Zan32s dstStep, Zan32s rounding) {
    if (!pSrc || !pDst) return zanStsNullPtr;
    if (roiSize.width < 1 || roiSize.height < 1) return zanStsSizeBad;
    resample263::plane_simd<resample263::kDown>(pSrc, srcStep, roiSize.width, roiSize.height, pDst, dstStep,
                                                rounding & 1, -1);
    return zanStsOk;
}

ZanStatus zaniSpatialInterpolation_H263_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, ZaniSize roiSize,
                                               Zan8u* pDst, Zan32s dstStep, Zan32s interpType) {
    if (!pSrc || !pDst) return zanStsNullPtr;
    if (bad_up_size(roiSize)) return zanStsSizeBad;
    using namespace resample263;
    PlaneFn fn = interpType == 3 ? plane_simd<kUp2D> : interpType == 2 ? plane_simd<kUpVer> : plane_simd<kUpHor>;
    fn(pSrc, srcStep, roiSize.width, roiSize.height, pDst, dstStep, 1, -1);
    return zanStsOk;
}

ZanStatus zaniUpsampleFour8x8_H263_16s_C1R(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s dstStep) {
    if (!pSrc || !pDst) return zanStsNullPtr;
    resample263::up16_simd(pSrc, srcStep, pDst, dstStep);
    return zanStsOk;
}

ZanStatus zaniDownsampleFour16x16_H263_16s_C1R(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst,
                                               Zan32s dstStep) {
    if (!pSrc || !pDst) return zanStsNullPtr;
    resample263::down16_simd(pSrc, srcStep, pDst, dstStep);
    return zanStsOk;
}

ZanStatus zaniAddBackPredPB_H263_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, ZaniSize roiSize, Zan8u* pSrcDst,
                                        Zan32s srcDstStep, Zan32s position) {
    if (!pSrc || !pSrcDst) return zanStsNullPtr;
    if (roiSize.width < 1 || roiSize.height < 1) return zanStsSizeBad;
    resample263::kBackPred[position](pSrc, srcStep, roiSize.width, roiSize.height, pSrcDst, srcDstStep);
    return zanStsOk;
}

}  // namespace zan::ZAN_PATH
