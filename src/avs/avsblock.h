// AVS block decoding and reconstruction: kernel signatures, the internal
// one-block reconstruction that other code may call, and the catalogue of
// kernels each path offers to the checker and the benchmarks.
#pragma once

#include "common/kernel_pair.h"
#include "zanvc.h"

namespace zan::avsblock {

// Dequantisation, 8x8 inverse transform and addition of one block:
// pSrc holds 64 coefficients in raster order, pDst the prediction (dstStep
// bytes a row), which receives the sum clamped to 0..255.  scale and shift
// are a row of the dequantisation table (scale 32768..65535).
using InvAddFn = void (*)(const Zan16s* pSrc, Zan8u* pDst, Zan32s dstStep, Zan32s scale, Zan32s shift);

// Catalogue for the checker and the benchmarks.  param: 0 the full block,
// 1 the DC-only kernel (only c[0] is read), 2 the kernel for blocks whose
// coefficients lie in the top-left 4x4 (only that quarter is read).
struct Kernels {
    KernelList<InvAddFn> invAdd;
};

// The standard's forward 8x8 transform of one block: pSrc 64 values in
// raster order, pDst the 64 transformed values (pDst may be pSrc).  Rows
// first, H = sum T[k][n] x[n] saturated to 16 bits; then columns,
// (sum T[k][y] H[y] + 16) >> 5 saturated to 16 bits.
using FwdFn = void (*)(const Zan16s* pSrc, Zan16s* pDst);

// Quantisation of a transformed block in place with QP (0..63); returns the
// scan count: 1 + the frame zig-zag index of the last non-zero level, 0 when
// all are zero.
using QuantFn = Zan32s (*)(Zan16s* pSrcDst, Zan32s QP);

// Catalogue of the encoder side.  fwd param: 0 the general SSE2 kernel, 1
// the general SSSE3 kernel, 2 the kernel for residuals (|x| <= 255) that
// hands other blocks to the path's general kernel.  quant param: 1 intra
// rounding, 0 inter.
struct FwdKernels {
    KernelList<FwdFn> fwd;
    KernelList<QuantFn> quant;
};

}  // namespace zan::avsblock

// Internal entry points, per path:
//   zaniTransformQuantAdd8x8Inv_AVS_16s_C1(pSrc, pDst, dstStep, numCoeff, QP)
//       dequantises, inverse-transforms and adds one block with the kernel
//       that numCoeff selects (1: DC only; 2..10: top-left 4x4 only; any
//       other value: the whole block).  No checks; QP must be 0..63.
//   avsblock::kernels      the decoder-side catalogue (rule beside kernel).
//   avsblock::fwd_kernels  the encoder-side catalogue.
#define ZAN_AVSBLOCK_DECLS(P)                                                                          \
    namespace zan::P {                                                                                 \
    void zaniTransformQuantAdd8x8Inv_AVS_16s_C1(const Zan16s* pSrc, Zan8u* pDst, Zan32s dstStep,        \
                                                Zan32s numCoeff, Zan32s QP);                           \
    }                                                                                                  \
    namespace zan::P::avsblock {                                                                       \
    extern const zan::avsblock::Kernels kernels;                                                       \
    extern const zan::avsblock::FwdKernels fwd_kernels;                                                \
    }
ZAN_AVSBLOCK_DECLS(u8)
ZAN_AVSBLOCK_DECLS(n8)
#undef ZAN_AVSBLOCK_DECLS
