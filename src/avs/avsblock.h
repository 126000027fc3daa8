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

}  // namespace zan::avsblock

// Internal entry points, per path:
//   zaniTransformQuantAdd8x8Inv_AVS_16s_C1(pSrc, pDst, dstStep, numCoeff, QP)
//       dequantises, inverse-transforms and adds one block with the kernel
//       that numCoeff selects (1: DC only; 2..10: top-left 4x4 only; any
//       other value: the whole block).  No checks; QP must be 0..63.
//   avsblock::kernels  the catalogue (rule beside kernel).
#define ZAN_AVSBLOCK_DECLS(P)                                                                          \
    namespace zan::P {                                                                                 \
    void zaniTransformQuantAdd8x8Inv_AVS_16s_C1(const Zan16s* pSrc, Zan8u* pDst, Zan32s dstStep,        \
                                                Zan32s numCoeff, Zan32s QP);                           \
    }                                                                                                  \
    namespace zan::P::avsblock {                                                                       \
    extern const zan::avsblock::Kernels kernels;                                                       \
    }
ZAN_AVSBLOCK_DECLS(u8)
ZAN_AVSBLOCK_DECLS(n8)
#undef ZAN_AVSBLOCK_DECLS
