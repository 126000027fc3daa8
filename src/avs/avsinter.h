// AVS interpolation, weighting and deblocking: kernel signatures and the
// catalogue of kernels each path offers to the checker and the benchmarks.
#pragma once

#include "common/kernel_pair.h"
#include "zanvc.h"

namespace zan::avsinter {

// One luma kernel: one quarter-sample position and one width class (8 or
// 16), height rows (any count).  The source is the block's integer
// position; a kernel reads 2 columns left and 3 right of the block when dx
// is not 0, 2 rows above and 3 below when dy is not 0.  Steps in bytes.
using LumaFn = void (*)(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep, Zan32s height);

// Weighted prediction of height rows of 8 (or 16) samples.
using WeightFn = void (*)(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep, Zan32s scale,
                          Zan32s shift, Zan32s height);

// Loop filter of one macroblock's edges (luma) or one 8x8 block's edge
// (chroma), in place: alpha, beta, C are pairs (outer, inner edge), bs the
// strength groups.  Step in bytes.
using DeblockFn = void (*)(Zan8u* pSrcDst, Zan32s step, const Zan8u* pAlpha, const Zan8u* pBeta, const Zan8u* pC,
                           const Zan8u* pBS);

// Catalogue.  luma: width = the class, param = position dy * 4 + dx.
// weight: width = samples written per row.  deblock: width x height the
// area filtered, param 0 luma vertical, 1 luma horizontal, 2 chroma
// vertical, 3 chroma horizontal edge.
struct Kernels {
    KernelList<LumaFn> luma;
    KernelList<WeightFn> weight;
    KernelList<DeblockFn> deblock;
};

}  // namespace zan::avsinter

#define ZAN_AVSINTER_DECLS(P)                                   \
    namespace zan::P::avsinter {                                \
    extern const zan::avsinter::Kernels kernels;                \
    }
ZAN_AVSINTER_DECLS(u8)
ZAN_AVSINTER_DECLS(n8)
#undef ZAN_AVSINTER_DECLS
