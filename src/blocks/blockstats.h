// Block statistics and transformed differences: kernel signatures and the
// catalogues of kernels that each path offers to the checker and the
// benchmarks.
#pragma once

#include "common/kernel_pair.h"
#include "zanvc.h"

namespace zan::blockstats {

// Two 8-bit blocks in, one metric out (SATD, SAT8x8D, SSD, SqrDiff).
using Pair8Fn = Zan32s (*)(const Zan8u* pSrc1, Zan32s src1Step, const Zan8u* pSrc2, Zan32s src2Step);
using Pair16Fn = Zan32s (*)(const Zan16u* pSrc1, Zan32s src1Step, const Zan16u* pSrc2, Zan32s src2Step);
// 8x8 Hadamard block to pDst (64 values), returns the saturated sum of |pDst|.
using Hadamard8Fn = Zan32s (*)(const Zan8u* pSrc, Zan32s srcStep, Zan16s* pDst);
using Hadamard16Fn = Zan32s (*)(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst);
// Squared differences against the average of two interpolated references.
using SqrDiffBFn = Zan32s (*)(const Zan8u* pSrc, Zan32s srcStep, const Zan8u* pRef1, Zan32s ref1Step,
                              const Zan8u* pRef2, Zan32s ref2Step);
// One metric of one 8-bit block (Variance16x16, MeanAbsDev).
using Block8Fn = Zan32s (*)(const Zan8u* pSrc, Zan32s srcStep);
// Variance and sum of an 8x8 block.
using VarSum8Fn = void (*)(const Zan8u* pSrc, Zan32s srcStep, Zan32s* pVar, Zan32s* pSum);
using VarSum16Fn = void (*)(const Zan16s* pSrc, Zan32s srcStep, Zan32s* pVar, Zan32s* pSum);
// Variance and mean of the difference against an interpolated reference, one
// entry per 8x8 block.
using VarMeanDiffFn = void (*)(const Zan8u* pSrc, Zan32s srcStep, const Zan8u* pRef, Zan32s refStep,
                               const Zan32s* pSrcSum, Zan32s* pVar, Zan32s* pMean);
// Sums of differences per 4x4 sub-block; pDiff is ignored by the NoDiff kernels.
using SumsDiff8Fn = void (*)(const Zan8u* pSrc, Zan32s srcStep, const Zan8u* pPred, Zan32s predStep,
                             Zan16s* pSums, Zan16s* pDiff);
using SumsDiff16Fn = void (*)(const Zan16u* pSrc, Zan32s srcStep, const Zan16u* pPred, Zan32s predStep,
                              Zan32s* pSums, Zan16s* pDiff);
using SumsDiffC2Fn = void (*)(const Zan8u* pSrc, Zan32s srcStep, const Zan8u* pPredU, Zan32s predStepU,
                              const Zan8u* pPredV, Zan32s predStepV, Zan16s* pSumsU, Zan16s* pDiffU,
                              Zan16s* pSumsV, Zan16s* pDiffV);
// 1 if the 16x16 block has more than edgeCount edge samples, else 0.
using Edges8Fn = Zan8u (*)(const Zan8u* pSrc, Zan32s srcStep, Zan32u edgeDifference, Zan32u edgeCount);
using Edges16Fn = Zan8u (*)(const Zan16u* pSrc, Zan32s srcStep, Zan32u edgeDifference, Zan32u edgeCount);
// Number of zeros among 64 contiguous values.
using CountFn = Zan32u (*)(const Zan16s* pSrc);

// Catalogue of the transform kernels (blockstats_satd.cpp).  param: 0.
struct TransformKernels {
    KernelList<Pair8Fn> satd;        // SATD at every size, and SAT8x8D on 8-bit samples
    KernelList<Pair16Fn> satd16;     // SAT8x8D on 16-bit samples
    KernelList<Hadamard8Fn> hadamard8;
    KernelList<Hadamard16Fn> hadamard16;
};

// Catalogue of the squared-difference and variance kernels
// (blockstats_var.cpp).  param of ssd and varMeanDiff: the reference
// position (mcType >> 2, 0 plain, 1 half down, 2 half right, 3 both); of
// sqrDiffB: 4 * position of the first reference + position of the second;
// elsewhere 0.
struct VarianceKernels {
    KernelList<Pair8Fn> ssd;
    KernelList<SqrDiffBFn> sqrDiffB;
    KernelList<Block8Fn> block;      // Variance16x16, MeanAbsDev8x8, MeanAbsDev16x16
    KernelList<VarSum8Fn> varSum8;
    KernelList<VarSum16Fn> varSum16;
    KernelList<VarMeanDiffFn> varMeanDiff;
};

// Catalogue of the remaining kernels (blockstats_misc.cpp).  param of the
// sums: 1 for a kernel that writes the differences, 0 for NoDiff; of sumsC2:
// bit 0 writes U differences, bit 1 V differences; of edges8: 1 for the
// aligned-load kernel (pSrc and srcStep multiples of 16), else 0.
struct MiscKernels {
    KernelList<SumsDiff8Fn> sums8;
    KernelList<SumsDiff16Fn> sums16;
    KernelList<SumsDiffC2Fn> sumsC2;
    KernelList<Edges8Fn> edges8;
    KernelList<Edges16Fn> edges16;
    KernelList<CountFn> countZeros;
};

}  // namespace zan::blockstats

#define ZAN_BLOCKSTATS_CATALOGUES(P)                                   \
    namespace zan::P::blockstats {                                     \
    extern const zan::blockstats::TransformKernels transform_kernels;  \
    extern const zan::blockstats::VarianceKernels variance_kernels;    \
    extern const zan::blockstats::MiscKernels misc_kernels;            \
    }
ZAN_BLOCKSTATS_CATALOGUES(u8)
ZAN_BLOCKSTATS_CATALOGUES(n8)
#undef ZAN_BLOCKSTATS_CATALOGUES
