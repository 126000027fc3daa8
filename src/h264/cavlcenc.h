// H.264 CAVLC encoding: from one block of quantised coefficients to the
// syntax elements that a CAVLC writer codes (trailing ones and their signs,
// the coefficient count, total zeros, the other levels and the runs).  No
// bits are written here.
//
// Every kernel walks its positions from the highest to the lowest and writes
// the same outputs; the wrappers have checked the arguments already.
#pragma once

#include "common/kernel_pair.h"
#include "zanvc.h"

namespace zan::cavlcenc {

// Outputs of every form, in argument order:
//   pTrailingOnes      count of trailing ones, 0..3
//   pTrailingOneSigns  their signs, first met in the highest used bit, 1 = minus
//   pNumOutCoeffs      count of nonzero coefficients n
//   pTotalZeros        zeros below the first coefficient met, within the range
//   pLevels            the n - T other levels, highest position first
//   pRuns              n - 1 runs of zeros between consecutive coefficients
//
// Block forms: positions pScan[lastIdx], pScan[lastIdx - 1], ..., pScan[firstIdx].
using Block16Fn = void (*)(const Zan16s* pSrc, Zan32s firstIdx, const Zan32s* pScan, Zan32s lastIdx,
                           Zan8u* pTrailingOnes, Zan8u* pTrailingOneSigns, Zan8u* pNumOutCoeffs,
                           Zan8u* pTotalZeros, Zan16s* pLevels, Zan8u* pRuns);
using Block32Fn = void (*)(const Zan32s* pSrc, Zan32s firstIdx, const Zan32s* pScan, Zan32s lastIdx,
                           Zan8u* pTrailingOnes, Zan8u* pTrailingOneSigns, Zan8u* pNumOutCoeffs,
                           Zan8u* pTotalZeros, Zan32s* pLevels, Zan8u* pRuns);
// Chroma DC forms: fixed positions, 3 2 1 0 (2x2) or 7 5 3 6 4 1 2 0 (2x4).
using Dc16Fn = void (*)(const Zan16s* pSrc, Zan8u* pTrailingOnes, Zan8u* pTrailingOneSigns,
                        Zan8u* pNumOutCoeffs, Zan8u* pTotalZeros, Zan16s* pLevels, Zan8u* pRuns);
using Dc32Fn = void (*)(const Zan32s* pSrc, Zan8u* pTrailingOnes, Zan8u* pTrailingOneSigns,
                        Zan8u* pNumOutCoeffs, Zan8u* pTotalZeros, Zan32s* pLevels, Zan8u* pRuns);

// Catalogue (cavlcenc.cpp).  width x height: the block's shape (4x4, 2x2,
// 2x4); param: the number of positions visited at most (16, 4, 8).  The
// block kernels accept any range the wrappers let through; ranges longer
// than 16 positions (only the 32-bit form can get them, with a negative
// firstIdx) run the scalar walk.
struct Kernels {
    KernelList<Block16Fn> block16;
    KernelList<Block32Fn> block32;
    KernelList<Dc16Fn> dc16;
    KernelList<Dc32Fn> dc32;
};

}  // namespace zan::cavlcenc

#define ZAN_CAVLCENC_CATALOGUES(P)               \
    namespace zan::P::cavlcenc {                 \
    extern const zan::cavlcenc::Kernels kernels; \
    }
ZAN_CAVLCENC_CATALOGUES(u8)
ZAN_CAVLCENC_CATALOGUES(n8)
#undef ZAN_CAVLCENC_CATALOGUES
