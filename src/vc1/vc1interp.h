// VC-1 quarter-sample interpolation and range mapping: kernel signatures and
// the catalogues of kernels that each path offers to the checker and the
// benchmarks.
//
// An interpolation kernel makes one block of fixed size at one quarter-sample
// position (dx, dy), fixed in the kernel; roundControl (0 or 1) is its last
// argument.  Bicubic kernels read one row and column before the block and two
// after; bilinear kernels one after, and nothing beyond the block in a
// direction whose fraction is 0.
#pragma once

#include "common/kernel_pair.h"
#include "zanvc.h"

namespace zan::vc1interp {

// One block at one position.
using InterpFn = void (*)(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep, Zan32s roundControl);
// Range mapping of a region of roi.width x roi.height samples with k in 0..7.
using RangeMapFn = void (*)(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep, ZaniSize roi, Zan32s k);

// The bicubic taps of positions 1, 2, 3 (position 0 is the sample itself);
// the first tap weighs row or column -1.
inline constexpr Zan32s kBicubicTaps[4][4] = {{0, 1, 0, 0}, {-4, 53, 18, -3}, {-1, 9, 9, -1}, {-3, 18, 53, -4}};
// Shift of the one-direction filters by position.
inline constexpr Zan32s kBicubicShift1D[4] = {0, 6, 4, 6};
// Shift of the vertical pass of the two-direction filter, [dx][dy].
inline constexpr Zan32s kBicubicShiftV[4][4] = {{0, 0, 0, 0}, {0, 5, 3, 5}, {0, 3, 1, 3}, {0, 5, 3, 5}};

// Catalogue (vc1interp.cpp).  width: block width in bytes (interleaved forms:
// 2 bytes a pair); height: rows; param: 4 * dx + dy.
//   bicubic:    8x8, 16x8, 16x16 at the 15 positions other than (0, 0)
//   bilinear:   16x16, 8x8, 8x4, 4x4 at the 12 positions with an odd fraction
//               (the even ones are the half-sample copies of the
//               motion-compensation family)
//   bilinearC2: interleaved pairs, 8x8, 8x4, 4x4 pairs, all 16 positions
//   rangeMap:   param 0; the vector kernel needs a width that is a multiple
//               of 8 and steps not below the width
struct Kernels {
    KernelList<InterpFn> bicubic;
    KernelList<InterpFn> bilinear;
    KernelList<InterpFn> bilinearC2;
    KernelList<RangeMapFn> rangeMap;
};

}  // namespace zan::vc1interp

#define ZAN_VC1INTERP_CATALOGUES(P)                       \
    namespace zan::P::vc1interp {                         \
    extern const zan::vc1interp::Kernels kernels;         \
    }
ZAN_VC1INTERP_CATALOGUES(u8)
ZAN_VC1INTERP_CATALOGUES(n8)
#undef ZAN_VC1INTERP_CATALOGUES
