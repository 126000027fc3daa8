// H.264 inverse transforms and dequantisation: the built-in scale tables,
// the kernel signatures, the catalogues of kernels per path, and the
// unchecked entry points that macroblock reconstruction calls block by block.
//
// Two generations of interface stand side by side.  The flat one takes QP in
// 0..51 and scales with the built-in tables of the flat scaling matrix; the
// level-scale one takes a caller's level-scale row (scaling list times
// normalisation) and comes in a 16-bit form for 8-bit video and a 32-bit form
// for high bit depth.
#pragma once

#include <array>

#include "common/kernel_pair.h"
#include "zanvc.h"

namespace zan::h264inv {

// ------------------------------------------------------------------ tables
//
// All derived tables are built here from the standard's own numbers, so
// that no long hand-typed list can drift.

// normAdjust4x4 of H.264 clause 8.5.9: v(m, class) for
// m = QP % 6; class 0 = row and column even, 1 = both odd, 2 = mixed.
inline constexpr Zan32s kNorm4x4[6][3] = {{10, 16, 13}, {11, 18, 14}, {13, 20, 16},
                                          {14, 23, 18}, {16, 25, 20}, {18, 29, 23}};

// Position class of each raster position of a 4x4 block.
inline constexpr Zan32s kClass4x4[16] = {0, 2, 0, 2, 2, 1, 2, 1, 0, 2, 0, 2, 2, 1, 2, 1};

// normAdjust8x8 of clause 8.5.9: v(m, n) for n = 0..5.
inline constexpr Zan32s kNorm8x8[6][6] = {{20, 18, 32, 19, 25, 24}, {22, 19, 35, 21, 28, 26},
                                          {26, 23, 42, 24, 33, 31}, {28, 25, 45, 26, 35, 33},
                                          {32, 28, 51, 30, 40, 38}, {36, 32, 58, 34, 46, 43}};

// The forward quantisation factors of the SI/SP re-quantisation (clause
// 8.6.1, the quantisation counterpart of normAdjust): 13107, 5243, 8066 for
// m = 0 and classes 0, 1, 2, and so on.
inline constexpr Zan32s kQuantCoefClass[6][3] = {{13107, 5243, 8066}, {11916, 4660, 7490}, {10082, 4194, 6554},
                                                 {9362, 3647, 5825},   {8192, 3355, 5243},  {7282, 2893, 4559}};

// QP / 6 and QP % 6 for QP 0..89 (the 4:2:2 chroma DC reads at QP + 3).
struct QpSplit {
    Zan8u div[90];
    Zan8u rem[90];
};
inline constexpr QpSplit kQp = [] {
    QpSplit t{};
    for (int i = 0; i < 90; ++i) {
        t.div[i] = static_cast<Zan8u>(i / 6);
        t.rem[i] = static_cast<Zan8u>(i % 6);
    }
    return t;
}();

// Flat dequantisation factor per QP and class: v(QP % 6, class) << (QP / 6).
// Row 51 is (3584, 5888, 4608).
inline constexpr std::array<std::array<Zan32s, 3>, 52> kInvQuant = [] {
    std::array<std::array<Zan32s, 3>, 52> t{};
    for (int qp = 0; qp < 52; ++qp)
        for (int c = 0; c < 3; ++c) t[qp][c] = kNorm4x4[qp % 6][c] << (qp / 6);
    return t;
}();

// The same factors spread to the 16 raster positions, as 16-bit values that
// the vector kernels multiply with directly.
struct alignas(16) Row16 {
    Zan16s v[16];
};
inline constexpr std::array<Row16, 52> kInvQuantRaster = [] {
    std::array<Row16, 52> t{};
    for (int qp = 0; qp < 52; ++qp)
        for (int k = 0; k < 16; ++k) t[qp].v[k] = static_cast<Zan16s>(kInvQuant[qp][kClass4x4[k]]);
    return t;
}();

// Luma DC factor of the flat interface: v(QP % 6, 0) for QP below 18,
// v(QP % 6, 0) << (QP / 6 - 2) from 18 (the two low shifts are done by the
// rounding step of the code).  Last entry 896.
inline constexpr std::array<Zan32s, 52> kLumaDcFlat = [] {
    std::array<Zan32s, 52> t{};
    for (int qp = 0; qp < 52; ++qp) t[qp] = qp < 18 ? kNorm4x4[qp % 6][0] : kNorm4x4[qp % 6][0] << (qp / 6 - 2);
    return t;
}();

// LevelScale4x4 of clause 8.5.9 for the flat scaling matrix (weight 16):
// 16 * v(m, class) per raster position.  Row 0 starts 160, 208, 160, 208.
inline constexpr std::array<Row16, 6> kLevelScale4x4 = [] {
    std::array<Row16, 6> t{};
    for (int m = 0; m < 6; ++m)
        for (int k = 0; k < 16; ++k) t[m].v[k] = static_cast<Zan16s>(16 * kNorm4x4[m][kClass4x4[k]]);
    return t;
}();

// The 8x8 normalisation per raster position without the weight of 16
// (row 0 starts 20, 19, 25, 19, 20, 19, 25, 19): the position rule of
// clause 8.5.9 picks v(m, n) by the row and column indices modulo 4 and 2.
constexpr int norm8x8_index(int i, int j) {
    if (i % 4 == 0 && j % 4 == 0) return 0;
    if (i % 2 == 1 && j % 2 == 1) return 1;
    if (i % 4 == 2 && j % 4 == 2) return 2;
    if ((i % 4 == 0 && j % 2 == 1) || (i % 2 == 1 && j % 4 == 0)) return 3;
    if ((i % 4 == 0 && j % 4 == 2) || (i % 4 == 2 && j % 4 == 0)) return 4;
    return 5;
}
struct alignas(16) Row64 {
    Zan16s v[64];
};
inline constexpr std::array<Row64, 6> kNorm8x8Raster = [] {
    std::array<Row64, 6> t{};
    for (int m = 0; m < 6; ++m)
        for (int k = 0; k < 64; ++k) t[m].v[k] = static_cast<Zan16s>(kNorm8x8[m][norm8x8_index(k / 8, k % 8)]);
    return t;
}();

// ------------------------------------------------------ kernel signatures

// Flat 4x4: dequantise, saturating transform, add to an 8-bit prediction.
// Arguments as zaniDequantTransformResidualAndAdd_H264_16s_C1I.
using AddFlatFn = void (*)(const Zan8u* pPred, Zan32s predStep, Zan16s* pSrcDst, const Zan16s* pDC, Zan8u* pDst,
                           Zan32s dstStep, Zan32s QP, Zan32s AC);
// Flat 4x4 in place through a row step, wrapping transform.
using ResidualFlatFn = void (*)(Zan16s* pSrcDst, Zan32s step, const Zan16s* pDC, Zan32s AC, Zan32s QP);
// Level-scale 4x4 with prediction, 8-bit and high bit depth.
using Add16Fn = void (*)(const Zan8u* pPred, Zan32s predStep, Zan16s* pSrcDst, const Zan16s* pDC, Zan8u* pDst,
                         Zan32s dstStep, Zan32s QP, Zan32s AC, const Zan16s* pScaleLevel);
using Add32Fn = void (*)(const Zan16u* pPred, Zan32s predStep, Zan32s* pSrcDst, const Zan32s* pDC, Zan16u* pDst,
                         Zan32s dstStep, Zan32s QP, Zan32s AC, Zan32s bitDepth, const Zan16s* pScaleLevel);
// Plain 4x4 inverse transform.
using Inv16Fn = void (*)(const Zan16s* pSrc, Zan16s* pDst);
using Inv32Fn = void (*)(const Zan32s* pSrc, Zan32s* pDst);
// DC stages in place (the flat ones ignore pScaleLevel).
using Dc16Fn = void (*)(Zan16s* pSrcDst, Zan32s QP, const Zan16s* pScaleLevel);
using Dc32Fn = void (*)(Zan32s* pSrcDst, Zan32s QP, const Zan16s* pScaleLevel);
// 8x8 dequantisation in place.
using Dequant8x8_16Fn = void (*)(Zan16s* pSrcDst, Zan32s Qp6, const Zan16s* pInvLevelScale);
using Dequant8x8_32Fn = void (*)(Zan32s* pSrcDst, Zan32s Qp6, const Zan16s* pInvLevelScale);
// 8x8 inverse transform added to the prediction.
using Add8x8_16Fn = void (*)(const Zan8u* pPred, Zan32s predStep, const Zan16s* pSrc, Zan8u* pDst, Zan32s dstStep);
using Add8x8_32Fn = void (*)(const Zan16u* pPred, Zan32s predStep, const Zan32s* pSrc, Zan16u* pDst, Zan32s dstStep,
                             Zan32s bitDepth);

// Catalogue of the family's kernels, rule beside vector kernel.  param: the
// largest QP (or Qp6) the entry accepts; the checker draws within 0..param.
// The chroma 2x2 DC stages (four values), the 32-bit 4:2:2 DC stage and the
// SI/SP functions have no vector kernel: there the scalar code is the
// implementation.
struct Kernels {
    KernelList<AddFlatFn> addFlat;
    KernelList<ResidualFlatFn> residualFlat;
    KernelList<Add16Fn> add16;
    KernelList<Add32Fn> add32;
    KernelList<Inv16Fn> inv16;
    KernelList<Inv32Fn> inv32;
    KernelList<Dc16Fn> dc16;
    KernelList<Dc32Fn> dc32;
    KernelList<Dequant8x8_16Fn> dequant16;
    KernelList<Dequant8x8_32Fn> dequant32;
    KernelList<Add8x8_16Fn> add8x8_16;
    KernelList<Add8x8_32Fn> add8x8_32;
};

}  // namespace zan::h264inv

// The entry points other families call, per path: the exports' work without
// their argument checks (the caller guarantees the pointers and ranges that
// the exports test).  Each follows the contract of the export named beside
// it in zanvc.h, bit for bit.
//   add4x4_flat            zaniDequantTransformResidualAndAdd_H264_16s_C1I
//   residual4x4_flat       zaniDequantTransformResidual_H264_16s_C1I
//   add4x4_16s / _32s      zaniTransformQuantInvAddPred4x4_H264_16s_C1IR / _32s_C1IR
//   inv4x4_16s / _32s      zaniTransformResidual4x4Inv_H264_16s_C1 / _32s_C1
//   luma_dc_flat           zaniTransformDequantLumaDC_H264_16s_C1I (pScaleLevel ignored)
//   chroma_dc_flat         zaniTransformDequantChromaDC_H264_16s_C1I (pScaleLevel ignored)
//   luma_dc_16s / _32s     zaniTransformQuantInvLumaDC4x4_H264_16s_C1I / _32s_C1I
//   chroma_dc2x2_16s / _32s, chroma_dc2x4_16s / _32s: the ChromaDC2x2 / 2x4 exports
//   dequant8x8_16s / _32s  zaniQuantLuma8x8Inv_H264_16s_C1I / zaniQuantInvLuma8x8_H264_32s_C1I
//   add8x8_16s / _32s      zaniTransformLuma8x8InvAddPred_H264_16s8u_C1R /
//                          zaniTransformInvAddPredLuma8x8_H264_32s16u_C1R
// The DC entries keep their input ranges: QP 0..51 (flat, luma 16s), 0..87
// (luma 32s), 0..39 (chroma 16s), 0..75 (chroma 32s).
#define ZAN_H264INV_DECLS(P)                                                                                 \
    namespace zan::P::h264inv {                                                                              \
    extern const zan::h264inv::Kernels kernels;                                                              \
    void add4x4_flat(const Zan8u* pPred, Zan32s predStep, Zan16s* pSrcDst, const Zan16s* pDC, Zan8u* pDst,   \
                     Zan32s dstStep, Zan32s QP, Zan32s AC);                                                  \
    void residual4x4_flat(Zan16s* pSrcDst, Zan32s step, const Zan16s* pDC, Zan32s AC, Zan32s QP);            \
    void add4x4_16s(const Zan8u* pPred, Zan32s predStep, Zan16s* pSrcDst, const Zan16s* pDC, Zan8u* pDst,    \
                    Zan32s dstStep, Zan32s QP, Zan32s AC, const Zan16s* pScaleLevel);                        \
    void add4x4_32s(const Zan16u* pPred, Zan32s predStep, Zan32s* pSrcDst, const Zan32s* pDC, Zan16u* pDst,  \
                    Zan32s dstStep, Zan32s QP, Zan32s AC, Zan32s bitDepth, const Zan16s* pScaleLevel);       \
    void inv4x4_16s(const Zan16s* pSrc, Zan16s* pDst);                                                       \
    void inv4x4_32s(const Zan32s* pSrc, Zan32s* pDst);                                                       \
    void luma_dc_flat(Zan16s* pSrcDst, Zan32s QP, const Zan16s* pScaleLevel);                                \
    void chroma_dc_flat(Zan16s* pSrcDst, Zan32s QP, const Zan16s* pScaleLevel);                              \
    void luma_dc_16s(Zan16s* pSrcDst, Zan32s QP, const Zan16s* pScaleLevel);                                 \
    void luma_dc_32s(Zan32s* pSrcDst, Zan32s QP, const Zan16s* pScaleLevel);                                 \
    void chroma_dc2x2_16s(Zan16s* pSrcDst, Zan32s QP, const Zan16s* pScaleLevel);                            \
    void chroma_dc2x2_32s(Zan32s* pSrcDst, Zan32s QP, const Zan16s* pScaleLevel);                            \
    void chroma_dc2x4_16s(Zan16s* pSrcDst, Zan32s QP, const Zan16s* pScaleLevel);                            \
    void chroma_dc2x4_32s(Zan32s* pSrcDst, Zan32s QP, const Zan16s* pScaleLevel);                            \
    void dequant8x8_16s(Zan16s* pSrcDst, Zan32s Qp6, const Zan16s* pInvLevelScale);                          \
    void dequant8x8_32s(Zan32s* pSrcDst, Zan32s Qp6, const Zan16s* pInvLevelScale);                          \
    void add8x8_16s(const Zan8u* pPred, Zan32s predStep, const Zan16s* pSrc, Zan8u* pDst, Zan32s dstStep);   \
    void add8x8_32s(const Zan16u* pPred, Zan32s predStep, const Zan32s* pSrc, Zan16u* pDst, Zan32s dstStep,  \
                    Zan32s bitDepth);                                                                        \
    }
ZAN_H264INV_DECLS(u8)
ZAN_H264INV_DECLS(n8)
#undef ZAN_H264INV_DECLS
