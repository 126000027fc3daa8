// VC-1 uniform and non-uniform quantisers and their inverses.
//
// Forward: x / d by the reciprocal rule of d's kind (see vc1xform.h), on x
// itself (uniform) or on x moved toward zero by half a step,
// x - sign(x) * (d >> 1) (non-uniform).  Intra blocks keep the sample at
// (0, 0).  The three kinds have their own kernels, chosen by a table of d, so
// the inner loop is one high multiply, an optional add, one shift and one add
// of the sign bit per sample.
//
// Inverse: y = x * d (uniform) or x * d + sign(x) * (d >> 1) (non-uniform),
// both kept to 16 bits with wrap-around; intra blocks keep (0, 0).  The
// kernels also report the reach of the non-zero output samples: width = 1 +
// the last column holding one, height = 1 + the last such row, 0 for none.
// In intra blocks the sample at (0, 0) does not count.
#include "common/scalar.h"
#include "common/simd.h"
#include "frame/bodies.h"
#include "vc1/vc1xform.h"

namespace zan::ZAN_PATH::vc1xform {

using namespace zan::vc1xform;

namespace {

inline Zan32s sign_of(Zan32s v) { return (v > 0) - (v < 0); }

// 1 + the index of the highest set bit of a column or row mask; 0 for none.
constexpr struct ReachTable {
    Zan8u n[256];
    constexpr ReachTable() : n{} {
        for (int m = 1; m < 256; ++m)
            for (int b = 0; b < 8; ++b)
                if (m & (1 << b)) n[m] = static_cast<Zan8u>(b + 1);
    }
} kReach{};

// ============================================================ scalar rules

template <int W, int H, bool Intra, bool Nonuniform>
void quant_rule(Zan16s* p, Zan32s step, Zan32s d) {
    for (int i = 0; i < H; ++i)
        for (int j = 0; j < W; ++j) {
            if (Intra && i == 0 && j == 0) continue;
            Zan32s x = scalar::at(p, step, j, i);
            if (Nonuniform) x -= sign_of(x) * (d >> 1);
            scalar::put(p, step, j, i, static_cast<Zan16s>(divide(x, d)));
        }
}

template <int W, int H, bool Intra, bool Nonuniform>
ZaniSize quant_inv_rule(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s dstStep, Zan32s d) {
    ZaniSize reach{0, 0};
    for (int i = 0; i < H; ++i)
        for (int j = 0; j < W; ++j) {
            const Zan32s x = scalar::at(pSrc, srcStep, j, i);
            if (Intra && i == 0 && j == 0) {
                scalar::put(pDst, dstStep, 0, 0, static_cast<Zan16s>(x));
                continue;
            }
            Zan32u y = static_cast<Zan32u>(x) * static_cast<Zan32u>(d);
            if (Nonuniform) y += static_cast<Zan32u>(sign_of(x) * (d >> 1));
            const Zan16s out = static_cast<Zan16s>(static_cast<Zan16u>(y));
            scalar::put(pDst, dstStep, j, i, out);
            if (out != 0) {
                if (j + 1 > reach.width) reach.width = j + 1;
                reach.height = i + 1;
            }
        }
    return reach;
}

// ========================================================== vector kernels

template <int W>
inline __m128i load_row(const void* p) {
    return W == 8 ? simd::load16(p) : simd::load8(p);
}
template <int W>
inline void store_row(void* p, __m128i v) {
    if (W == 8)
        simd::store16(p, v);
    else
        simd::store8(p, v);
}

template <int Kind, bool Nonuniform>
struct Divider {
    __m128i m, half, dm1, shift;
    explicit Divider(Zan32s d) {
        const Reciprocal& r = reciprocal(d);
        m = _mm_set1_epi16(static_cast<short>(r.m));
        half = _mm_set1_epi16(static_cast<short>(d >> 1));
        dm1 = _mm_set1_epi16(static_cast<short>(d - 1));
        shift = _mm_cvtsi32_si128(r.s);
    }
    __m128i operator()(__m128i x) const {
        if (Nonuniform) x = _mm_sub_epi16(x, _mm_sign_epi16(half, x));
        const __m128i neg = _mm_srai_epi16(x, 15);  // -1 for negative samples
        if (Kind == kKindC) return _mm_sra_epi16(_mm_add_epi16(x, _mm_and_si128(neg, dm1)), shift);
        __m128i h = _mm_mulhi_epi16(x, m);
        if (Kind == kKindB) h = _mm_adds_epi16(h, x);
        return _mm_sub_epi16(_mm_sra_epi16(h, shift), neg);
    }
};

// y with its lane 0 taken from x: the intra blocks' sample at (0, 0).
inline __m128i keep_first(__m128i y, __m128i x) {
    const __m128i first = _mm_cvtsi32_si128(0xFFFF);
    return _mm_or_si128(_mm_andnot_si128(first, y), _mm_and_si128(first, x));
}

template <int W, int H, bool Intra, bool Nonuniform, int Kind>
void quant_simd(Zan16s* p, Zan32s step, Zan32s d) {
    const Divider<Kind, Nonuniform> div(d);
    for (int i = 0; i < H; ++i) {
        Zan8u* r = simd::row(p, step, i);
        const __m128i x = load_row<W>(r);
        __m128i y = div(x);
        if (Intra && i == 0) y = keep_first(y, x);
        store_row<W>(r, y);
    }
}

template <int W, int H, bool Intra, bool Nonuniform>
ZaniSize quant_inv_simd(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s dstStep, Zan32s d) {
    const __m128i dq = _mm_set1_epi16(static_cast<short>(d));
    const __m128i half = _mm_set1_epi16(static_cast<short>(d >> 1));
    const __m128i zero = _mm_setzero_si128();
    constexpr int kLanes = (1 << W) - 1;
    int columns = 0, lastRow = -1;
    for (int i = 0; i < H; ++i) {
        const __m128i x = load_row<W>(simd::row(pSrc, srcStep, i));
        __m128i y = _mm_mullo_epi16(x, dq);
        if (Nonuniform) y = _mm_add_epi16(y, _mm_sign_epi16(half, x));
        // One bit per lane, set where the output is not zero.
        int mask = ~_mm_movemask_epi8(_mm_packs_epi16(_mm_cmpeq_epi16(y, zero), zero)) & kLanes;
        if (Intra && i == 0) {
            y = keep_first(y, x);
            mask &= ~1;
        }
        store_row<W>(simd::row(pDst, dstStep, i), y);
        columns |= mask;
        if (mask) lastRow = i;
    }
    return ZaniSize{kReach.n[columns], lastRow + 1};
}

// ================================================================= tables

// Forward kernels by kind: [non-uniform][kind].
template <int W, int H, bool Intra, bool Nonuniform>
constexpr QuantFn kinds_of[3] = {quant_simd<W, H, Intra, Nonuniform, kKindA>,
                                 quant_simd<W, H, Intra, Nonuniform, kKindB>,
                                 quant_simd<W, H, Intra, Nonuniform, kKindC>};

// Intra, by [non-uniform][kind].
constexpr QuantFn kQuantIntra[2][3] = {
    {kinds_of<8, 8, true, false>[0], kinds_of<8, 8, true, false>[1], kinds_of<8, 8, true, false>[2]},
    {kinds_of<8, 8, true, true>[0], kinds_of<8, 8, true, true>[1], kinds_of<8, 8, true, true>[2]},
};

// Inter, by [non-uniform][4 * shape + kind], shapes 4x4, 4x8, 8x4, 8x8
// (width x height); the fourth entry of each row is empty.
#define ZAN_VC1_ROW(W, H, N) \
    kinds_of<W, H, false, N>[0], kinds_of<W, H, false, N>[1], kinds_of<W, H, false, N>[2], nullptr
constexpr QuantFn kQuantInter[2][16] = {
    {ZAN_VC1_ROW(4, 4, false), ZAN_VC1_ROW(4, 8, false), ZAN_VC1_ROW(8, 4, false), ZAN_VC1_ROW(8, 8, false)},
    {ZAN_VC1_ROW(4, 4, true), ZAN_VC1_ROW(4, 8, true), ZAN_VC1_ROW(8, 4, true), ZAN_VC1_ROW(8, 8, true)},
};
#undef ZAN_VC1_ROW

// Inverse inter kernels, one per shape: [non-uniform][shape].
constexpr QuantInvFn kQuantInvInter[2][4] = {
    {quant_inv_simd<4, 4, false, false>, quant_inv_simd<4, 8, false, false>, quant_inv_simd<8, 4, false, false>,
     quant_inv_simd<8, 8, false, false>},
    {quant_inv_simd<4, 4, false, true>, quant_inv_simd<4, 8, false, true>, quant_inv_simd<8, 4, false, true>,
     quant_inv_simd<8, 8, false, true>},
};
constexpr QuantInvFn kQuantInvIntra[2] = {quant_inv_simd<8, 8, true, false>, quant_inv_simd<8, 8, true, true>};

// ============================================================= catalogue

#define ZAN_VC1_Q(NAME, W, H, I, N)                                                                     \
    {NAME "_a", quant_rule<W, H, I, N>, quant_simd<W, H, I, N, kKindA>, W, H, kKindA + 4 * I + 8 * N}, \
    {NAME "_b", quant_rule<W, H, I, N>, quant_simd<W, H, I, N, kKindB>, W, H, kKindB + 4 * I + 8 * N}, \
    {NAME "_c", quant_rule<W, H, I, N>, quant_simd<W, H, I, N, kKindC>, W, H, kKindC + 4 * I + 8 * N}
constexpr KernelPair<QuantFn> kQuantPairs[] = {
    ZAN_VC1_Q("quant_intra_uniform", 8, 8, true, false),
    ZAN_VC1_Q("quant_intra_nonuniform", 8, 8, true, true),
    ZAN_VC1_Q("quant_inter_uniform_4x4", 4, 4, false, false),
    ZAN_VC1_Q("quant_inter_uniform_4x8", 4, 8, false, false),
    ZAN_VC1_Q("quant_inter_uniform_8x4", 8, 4, false, false),
    ZAN_VC1_Q("quant_inter_uniform_8x8", 8, 8, false, false),
    ZAN_VC1_Q("quant_inter_nonuniform_4x4", 4, 4, false, true),
    ZAN_VC1_Q("quant_inter_nonuniform_4x8", 4, 8, false, true),
    ZAN_VC1_Q("quant_inter_nonuniform_8x4", 8, 4, false, true),
    ZAN_VC1_Q("quant_inter_nonuniform_8x8", 8, 8, false, true),
};
#undef ZAN_VC1_Q

#define ZAN_VC1_QI(NAME, W, H, I, N) \
    {NAME, quant_inv_rule<W, H, I, N>, quant_inv_simd<W, H, I, N>, W, H, (I ? 1 : 0) + (N ? 2 : 0)}
constexpr KernelPair<QuantInvFn> kQuantInvPairs[] = {
    ZAN_VC1_QI("quant_inv_intra_uniform", 8, 8, true, false),
    ZAN_VC1_QI("quant_inv_intra_nonuniform", 8, 8, true, true),
    ZAN_VC1_QI("quant_inv_inter_uniform_4x4", 4, 4, false, false),
    ZAN_VC1_QI("quant_inv_inter_uniform_4x8", 4, 8, false, false),
    ZAN_VC1_QI("quant_inv_inter_uniform_8x4", 8, 4, false, false),
    ZAN_VC1_QI("quant_inv_inter_uniform_8x8", 8, 8, false, false),
    ZAN_VC1_QI("quant_inv_inter_nonuniform_4x4", 4, 4, false, true),
    ZAN_VC1_QI("quant_inv_inter_nonuniform_4x8", 4, 8, false, true),
    ZAN_VC1_QI("quant_inv_inter_nonuniform_8x4", 8, 4, false, true),
    ZAN_VC1_QI("quant_inv_inter_nonuniform_8x8", 8, 8, false, true),
};
#undef ZAN_VC1_QI

// ============================================================== wrappers

inline bool quant_fits(Zan32s d) { return d >= kMinQuant && d <= kMaxQuant; }
inline bool side_fits(Zan32s v) { return v == 4 || v == 8; }
inline int shape_of(ZaniSize s) { return (s.width >> 3) * 2 + (s.height >> 3); }

template <bool Nonuniform>
ZanStatus quant_intra(Zan16s* p, Zan32s step, Zan32s d) {
    if (!p) return zanStsNullPtr;
    if (!quant_fits(d)) return zanStsOutOfRange;
    kQuantIntra[Nonuniform][reciprocal(d).kind](p, step, d);
    return zanStsOk;
}

template <bool Nonuniform>
ZanStatus quant_inter(Zan16s* p, Zan32s step, Zan32s d, ZaniSize roi) {
    if (!p) return zanStsNullPtr;
    if (!quant_fits(d)) return zanStsOutOfRange;
    if (!side_fits(roi.height) || !side_fits(roi.width)) return zanStsSizeBad;
    kQuantInter[Nonuniform][4 * shape_of(roi) + reciprocal(d).kind](p, step, d);
    return zanStsOk;
}

template <bool Nonuniform>
ZanStatus quant_inv_intra(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s dstStep, Zan32s d,
                          ZaniSize* pReach) {
    if (!pSrc || !pDst || !pReach) return zanStsNullPtr;
    *pReach = kQuantInvIntra[Nonuniform](pSrc, srcStep, pDst, dstStep, d);
    return zanStsOk;
}

template <bool Nonuniform>
ZanStatus quant_inv_inter(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s dstStep, Zan32s d,
                          ZaniSize roi, ZaniSize* pReach) {
    if (!pSrc || !pDst || !pReach) return zanStsNullPtr;
    if (!side_fits(roi.height) || !side_fits(roi.width)) return zanStsSizeBad;
    *pReach = kQuantInvInter[Nonuniform][shape_of(roi)](pSrc, srcStep, pDst, dstStep, d);
    return zanStsOk;
}

}  // namespace

const QuantKernels quant_kernels = {kQuantPairs, kQuantInvPairs};

}  // namespace zan::ZAN_PATH::vc1xform

namespace zan::ZAN_PATH {

using vc1xform::quant_intra;
using vc1xform::quant_inter;
using vc1xform::quant_inv_intra;
using vc1xform::quant_inv_inter;

ZanStatus zaniQuantIntraUniform_VC1_16s_C1IR(Zan16s* pSrcDst, Zan32s srcDstStep, Zan32s doubleQuant) {
    return quant_intra<false>(pSrcDst, srcDstStep, doubleQuant);
}
ZanStatus zaniQuantIntraNonuniform_VC1_16s_C1IR(Zan16s* pSrcDst, Zan32s srcDstStep, Zan32s doubleQuant) {
    return quant_intra<true>(pSrcDst, srcDstStep, doubleQuant);
}
ZanStatus zaniQuantInterUniform_VC1_16s_C1IR(Zan16s* pSrcDst, Zan32s srcDstStep, Zan32s doubleQuant,
                                             ZaniSize roiSize) {
    return quant_inter<false>(pSrcDst, srcDstStep, doubleQuant, roiSize);
}
ZanStatus zaniQuantInterNonuniform_VC1_16s_C1IR(Zan16s* pSrcDst, Zan32s srcDstStep, Zan32s doubleQuant,
                                                ZaniSize roiSize) {
    return quant_inter<true>(pSrcDst, srcDstStep, doubleQuant, roiSize);
}

ZanStatus zaniQuantInvIntraUniform_VC1_16s_C1R(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s dstStep,
                                               Zan32s doubleQuant, ZaniSize* pDstSizeNZ) {
    return quant_inv_intra<false>(pSrc, srcStep, pDst, dstStep, doubleQuant, pDstSizeNZ);
}
ZanStatus zaniQuantInvIntraNonuniform_VC1_16s_C1R(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst,
                                                  Zan32s dstStep, Zan32s doubleQuant, ZaniSize* pDstSizeNZ) {
    return quant_inv_intra<true>(pSrc, srcStep, pDst, dstStep, doubleQuant, pDstSizeNZ);
}
ZanStatus zaniQuantInvIntraUniform_VC1_16s_C1IR(Zan16s* pSrcDst, Zan32s srcDstStep, Zan32s doubleQuant,
                                                ZaniSize* pDstSizeNZ) {
    return quant_inv_intra<false>(pSrcDst, srcDstStep, pSrcDst, srcDstStep, doubleQuant, pDstSizeNZ);
}
ZanStatus zaniQuantInvIntraNonuniform_VC1_16s_C1IR(Zan16s* pSrcDst, Zan32s srcDstStep, Zan32s doubleQuant,
                                                   ZaniSize* pDstSizeNZ) {
    return quant_inv_intra<true>(pSrcDst, srcDstStep, pSrcDst, srcDstStep, doubleQuant, pDstSizeNZ);
}
ZanStatus zaniQuantInvInterUniform_VC1_16s_C1R(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s dstStep,
                                               Zan32s doubleQuant, ZaniSize roiSize, ZaniSize* pDstSizeNZ) {
    return quant_inv_inter<false>(pSrc, srcStep, pDst, dstStep, doubleQuant, roiSize, pDstSizeNZ);
}
ZanStatus zaniQuantInvInterNonuniform_VC1_16s_C1R(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst,
                                                  Zan32s dstStep, Zan32s doubleQuant, ZaniSize roiSize,
                                                  ZaniSize* pDstSizeNZ) {
    return quant_inv_inter<true>(pSrc, srcStep, pDst, dstStep, doubleQuant, roiSize, pDstSizeNZ);
}
ZanStatus zaniQuantInvInterUniform_VC1_16s_C1IR(Zan16s* pSrcDst, Zan32s srcDstStep, Zan32s doubleQuant,
                                                ZaniSize roiSize, ZaniSize* pDstSizeNZ) {
    return quant_inv_inter<false>(pSrcDst, srcDstStep, pSrcDst, srcDstStep, doubleQuant, roiSize, pDstSizeNZ);
}
ZanStatus zaniQuantInvInterNonuniform_VC1_16s_C1IR(Zan16s* pSrcDst, Zan32s srcDstStep, Zan32s doubleQuant,
                                                   ZaniSize roiSize, ZaniSize* pDstSizeNZ) {
    return quant_inv_inter<true>(pSrcDst, srcDstStep, pSrcDst, srcDstStep, doubleQuant, roiSize, pDstSizeNZ);
}

}  // namespace zan::ZAN_PATH
