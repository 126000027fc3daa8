// H.263 2:1 resampling and PB-frame backward prediction: kernel signatures
// and the catalogues each path offers to the checker and the benchmarks.
#pragma once

#include "common/kernel_pair.h"
#include "zanvc.h"

namespace zan::resample263 {

// A plane of w x h source samples to its resampled destination.  rounding
// (0 or 1) and fill (-1 replicate, else a sample value 0..255) are used only
// where the kernel's catalogue entry says so.
using PlaneFn = void (*)(const Zan8u* pSrc, Zan32s srcStep, Zan32s w, Zan32s h, Zan8u* pDst, Zan32s dstStep,
                         Zan32s rounding, Zan32s fill);
// A fixed-size block of Zan16s samples; steps in bytes.
using Block16Fn = void (*)(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s dstStep);
// w x h samples of pSrcDst averaged with the prediction from pSrc.
using BackPredFn = void (*)(const Zan8u* pSrc, Zan32s srcStep, Zan32s w, Zan32s h, Zan8u* pSrcDst,
                            Zan32s srcDstStep);

// Plane kernel kinds (the param of a plane entry).
enum PlaneKind { kUp2D = 0, kDown = 1, kUpVer = 2, kUpHor = 3 };

// param of plane: its PlaneKind.  param of block16: 0 upsampling 8x8 to
// 16x16, 1 downsampling 16x16 to 8x8.  param of backPred: the position 0..3.
struct Kernels {
    KernelList<PlaneFn> plane;
    KernelList<Block16Fn> block16;
    KernelList<BackPredFn> backPred;
};

}  // namespace zan::resample263

#define ZAN_RESAMPLE263_CATALOGUES(P)             \
    namespace zan::P::resample263 {               \
    extern const zan::resample263::Kernels kernels; \
    }
ZAN_RESAMPLE263_CATALOGUES(u8)
ZAN_RESAMPLE263_CATALOGUES(n8)
#undef ZAN_RESAMPLE263_CATALOGUES
