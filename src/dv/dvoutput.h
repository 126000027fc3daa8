// DV macroblock output conversion: kernel signature and the catalogue that
// each path offers to the checker and the benchmarks.
#pragma once

#include "common/kernel_pair.h"
#include "zanvc.h"

namespace zan::dvoutput {

// One macroblock (or one DV100 half macroblock) of 64-sample Zan16s blocks
// at pSrc to packed Y, Cb, Y, Cr bytes at pDst, rows dstStep bytes apart.
using MbFn = void (*)(const Zan16s* pSrc, Zan8u* pDst, Zan32s dstStep);

// Catalogue (dvoutput.cpp).  width: output bytes per row; height: rows;
// param: the number of 64-sample blocks the kernel reads.
struct Kernels {
    KernelList<MbFn> mb;
};

}  // namespace zan::dvoutput

#define ZAN_DVOUTPUT_CATALOGUES(P)                 \
    namespace zan::P::dvoutput {                   \
    extern const zan::dvoutput::Kernels kernels;   \
    }
ZAN_DVOUTPUT_CATALOGUES(u8)
ZAN_DVOUTPUT_CATALOGUES(n8)
#undef ZAN_DVOUTPUT_CATALOGUES
