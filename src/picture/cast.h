// CAST denoising: kernel signature and the catalogue that each path offers
// to the checker and the benchmarks.
#pragma once

#include "common/kernel_pair.h"
#include "zanvc.h"

namespace zan::cast {

// One whole frame: motion decisions, history update, temporal blend and
// spatial filter.  The arguments are those of the export, already checked;
// pParams is never null here.
using FrameFn = void (*)(const Zan8u* pSrcCur, const Zan8u* pSrcPrev, Zan32s srcStep, const Zan8u* pEdgeMap,
                         Zan32s edgeStep, ZaniSize size, Zan8u* pDst, Zan32s dstStep, Zan8u* pHistory,
                         const ZanDenoiseCastParams* pParams);

// param: 1 for the one-plane form, 2 for interleaved 4:2:2.
struct Kernels {
    KernelList<FrameFn> frame;
};

}  // namespace zan::cast

#define ZAN_CAST_CATALOGUES(P)             \
    namespace zan::P::cast {               \
    extern const zan::cast::Kernels kernels; \
    }
ZAN_CAST_CATALOGUES(u8)
ZAN_CAST_CATALOGUES(n8)
#undef ZAN_CAST_CATALOGUES
