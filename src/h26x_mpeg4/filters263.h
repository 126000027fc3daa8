// H.261, H.263 and MPEG-4 block filters: kernel signatures and the catalogues
// of kernels that each path offers to the checker and the benchmarks.
#pragma once

#include "common/kernel_pair.h"
#include "zanvc.h"

namespace zan::filters263 {

// H.261 loop filter of one 8x8 block.
using H261Fn = void (*)(const Zan8u* src, Zan32s srcStep, Zan8u* dst, Zan32s dstStep);
// An H.263 edge filter in place; p: the first sample after the edge.  qp is
// used by the strength-limited deblocking only (trusted to be 1..31).
using EdgeFn = void (*)(Zan8u* p, Zan32s step, Zan32s qp);
// MPEG-4 deblocking of 8 lines in place; p: v5 of every line.
using Mpeg4EdgeFn = void (*)(Zan8u* p, Zan32s step, Zan32s qp, Zan32s thr1, Zan32s thr2);
// Deringing thresholds of one macroblock (6 values).
using ThresholdFn = void (*)(const Zan8u* y, Zan32s yStep, const Zan8u* cb, Zan32s cbStep, const Zan8u* cr,
                             Zan32s crStep, Zan32s* thr);
// Deringing smooth of one 8x8 block; reads one sample around the block.
// qp: 1..31 (at 1 the result equals the source).
using DeringFn = void (*)(const Zan8u* src, Zan32s srcStep, Zan8u* dst, Zan32s dstStep, Zan32s qp, Zan32s thr);

// Bits of KernelPair::param for edge kernels.
enum Shape : Zan32s {
    kVertical = 1,  // a vertical edge (lines are rows), else a horizontal one (lines are columns)
};

// Edge kernels: width = lines along the edge, height = samples read on each
// side of it.
struct Kernels {
    KernelList<H261Fn> h261;
    KernelList<EdgeFn> edge;
    KernelList<Mpeg4EdgeFn> mpeg4;
    KernelList<ThresholdFn> threshold;
    KernelList<DeringFn> dering;
};

// Filter strength by QP (0..31) of the H.263 deblocking filter.
inline constexpr Zan32s kStrength[32] = {0, 1, 1, 2, 2,  3,  3,  4,  4,  4,  5,  5,  6,  6,  7,  7,
                                         7, 8, 8, 8, 9, 9, 9, 10, 10, 10, 11, 11, 11, 12, 12, 12};

}  // namespace zan::filters263

#define ZAN_FILTERS263_CATALOGUES(P)                 \
    namespace zan::P::filters263 {                   \
    extern const zan::filters263::Kernels kernels;   \
    }
ZAN_FILTERS263_CATALOGUES(u8)
ZAN_FILTERS263_CATALOGUES(n8)
#undef ZAN_FILTERS263_CATALOGUES
