// Block differencing for encoders: kernel signatures and the catalogues of
// kernels that each path offers to the checker and the benchmarks.
//
// The GetDiff kernels take the reference first and the current block second
// (the exported functions take them the other way round and swap them).  rc
// is the rounding bit, 0 or 1: a two-sample average adds 1 - rc before its
// shift, the four-sample average 2 - rc.
#pragma once

#include "common/kernel_pair.h"
#include "zanvc.h"

namespace zan::diff {

// Reference positions, the value of (mcType & 12) >> 2.
enum Pos { kFF = 0, kFH = 1, kHF = 2, kHH = 3 };

// One block against one reference position: pDiff = C - P, and in the
// kernels that store it, pPredictor = P.  Steps in bytes.
using DiffFn = void (*)(const Zan8u* pRef, Zan32s refStep, const Zan8u* pCur, Zan32s curStep, Zan16s* pDiff,
                        Zan32s diffStep, Zan16s* pPredictor, Zan32s predictorStep, Zan32s rc);
// One block against the average of two predictions.
using DiffBFn = void (*)(const Zan8u* pRefF, Zan32s refStepF, const Zan8u* pRefB, Zan32s refStepB,
                         const Zan8u* pCur, Zan32s curStep, Zan16s* pDiff, Zan32s diffStep, Zan32s rc);
// Two interleaved channels (8 pairs a row) to two difference planes.
using DiffC2Fn = void (*)(const Zan8u* pRef, Zan32s refStep, const Zan8u* pCur, Zan32s curStep, Zan16s* pDiffU,
                          Zan32s diffStepU, Zan16s* pDiffV, Zan32s diffStepV, Zan32s rc);
using DiffC2BFn = void (*)(const Zan8u* pRefF, Zan32s refStepF, const Zan8u* pRefB, Zan32s refStepB,
                           const Zan8u* pCur, Zan32s curStep, Zan16s* pDiffU, Zan32s diffStepU, Zan16s* pDiffV,
                           Zan32s diffStepV, Zan32s rc);
// Plain differences S1 - S2 of 8-bit or 16-bit samples (the 4x4 GetDiff
// kernel has this form too, with the current block as S1).
using Sub8Fn = void (*)(const Zan8u* pSrc1, Zan32s src1Step, const Zan8u* pSrc2, Zan32s src2Step, Zan16s* pDst,
                        Zan32s dstStep);
using Sub16Fn = void (*)(const Zan16u* pSrc1, Zan32s src1Step, const Zan16u* pSrc2, Zan32s src2Step, Zan16s* pDst,
                         Zan32s dstStep);

// Catalogue of the family.  width and height count samples of one channel.
// param:
//   fwd    position (0..3) + 4 if the kernel stores the predictor
//          + 16 if it stores aligned rows (pDiff, diffStep, pPredictor and
//          predictorStep multiples of 16);
//   bi     forward position + 4 * backward position, + 16 if aligned stores
//          (pDiff and diffStep multiples of 16);
//   c2     position, + 16 if aligned stores (both planes and steps);
//   c2b    as bi, + 16 if aligned stores (both planes and steps);
//   sub8   0;
//   sub16  16 for the kernel with aligned loads and stores (every pointer
//          and step a multiple of 16), else 0.
struct Kernels {
    KernelList<DiffFn> fwd;
    KernelList<DiffBFn> bi;
    KernelList<DiffC2Fn> c2;
    KernelList<DiffC2BFn> c2b;
    KernelList<Sub8Fn> sub8;
    KernelList<Sub16Fn> sub16;
};

}  // namespace zan::diff

#define ZAN_DIFF_CATALOGUES(P)                 \
    namespace zan::P::diff {                   \
    extern const zan::diff::Kernels kernels;   \
    }
ZAN_DIFF_CATALOGUES(u8)
ZAN_DIFF_CATALOGUES(n8)
#undef ZAN_DIFF_CATALOGUES
