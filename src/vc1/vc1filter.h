// VC-1 deblocking and overlap smoothing: kernel signatures and the catalogues
// of kernels that each path offers to the checker and the benchmarks.
//
// A deblocking kernel filters 8 lines across one edge (two segments of 4
// lines); an overlap smoothing kernel smooths 8 lines across one edge.  The
// exported functions put the kernels together for 16-line luma edges, edge
// flags and field-stored neighbours.
#pragma once

#include "common/kernel_pair.h"
#include "zanvc.h"

namespace zan::vc1filter {

// Deblocking of 8 lines in place.  p: the first sample after the edge.
// quant: PQUANT.  mask: a set bit turns a segment of 4 lines off; bit 0
// lines 0-3, bit 1 lines 4-7 (of U in the two-plane kernels), bits 2 and 3
// the same for V in the two-plane kernels.
using DeblockFn = void (*)(Zan8u* p, Zan32s step, Zan32s quant, Zan32u mask);

// Overlap smoothing of 8 lines of one plane.  a: the two lines of the first
// block next to the edge (rows 0 and 1 of an upper block, samples 0 and 1 of
// the rows of a left block), b: the two of the second; dst: the first output
// line after the edge.  kind: the rounding row (0: R = 4, 3, 4, 3, ... by
// line; 1: all 3; 2: all 4).  Steps in bytes.
using SmoothFn = void (*)(const Zan16s* a, Zan32s aStep, const Zan16s* b, Zan32s bStep, Zan8u* dst,
                          Zan32s dstStep, Zan32s kind);
// The same for two planes, U and V, interleaved into dst.
using Smooth2Fn = void (*)(const Zan16s* aU, Zan32s aStepU, const Zan16s* bU, Zan32s bStepU, const Zan16s* aV,
                           Zan32s aStepV, const Zan16s* bV, Zan32s bStepV, Zan8u* dst, Zan32s dstStep,
                           Zan32s kind);

// Bits of KernelPair::param.
enum Shape : Zan32s {
    kVertical = 1,     // a vertical edge (lines are rows), else a horizontal one (lines are columns)
    kTwoChannels = 2,  // interleaved U and V in the 8-bit samples
};

// width, height: 8 lines by the reach across the edge (deblocking: 4 samples
// each side; smoothing: 2 each side), in samples per plane.
struct Kernels {
    KernelList<DeblockFn> deblock;
    KernelList<SmoothFn> smooth;
    KernelList<Smooth2Fn> smooth2;
};

// The rounding values of the smoothing kernels, by kind and line.
inline constexpr Zan16s kRounding[3][8] = {
    {4, 3, 4, 3, 4, 3, 4, 3},
    {3, 3, 3, 3, 3, 3, 3, 3},
    {4, 4, 4, 4, 4, 4, 4, 4},
};

}  // namespace zan::vc1filter

#define ZAN_VC1FILTER_CATALOGUES(P)                  \
    namespace zan::P::vc1filter {                    \
    extern const zan::vc1filter::Kernels kernels;    \
    }
ZAN_VC1FILTER_CATALOGUES(u8)
ZAN_VC1FILTER_CATALOGUES(n8)
#undef ZAN_VC1FILTER_CATALOGUES
