// Mosquito noise filter: kernel signatures and the catalogue that each path
// offers to the checker and the benchmarks.
#pragma once

#include "common/kernel_pair.h"
#include "zanvc.h"

namespace zan::mosquito {

// Samples of the inner 8 by 8 (at row 2, column 2) of two 12 by 12 block
// copies (row step 12) whose absolute difference exceeds limit.
using CountFn = Zan32s (*)(const Zan8u* pCur, const Zan8u* pPrev, Zan32s limit);

// One whole call after its checks: both passes and the remainders, on the
// state's work areas.
using FrameFn = void (*)(const Zan8u* const pSrc[2], Zan32s srcStep, Zan8u* pDst, Zan32s dstStep, ZaniSize imgSize,
                         ZanDenoiseMosquitoState* pState, ZaniPoint roiOffset, ZaniSize roiSize);

// param: 0.
struct Kernels {
    KernelList<CountFn> count;
    KernelList<FrameFn> frame;
};

}  // namespace zan::mosquito

#define ZAN_MOSQUITO_CATALOGUES(P)             \
    namespace zan::P::mosquito {               \
    extern const zan::mosquito::Kernels kernels; \
    }
ZAN_MOSQUITO_CATALOGUES(u8)
ZAN_MOSQUITO_CATALOGUES(n8)
#undef ZAN_MOSQUITO_CATALOGUES
