// Deinterlacing: kernel signatures and the catalogues of row kernels that
// each path offers to the checker and the benchmarks.
//
// Every tool works one target row at a time; a row kernel gets pointers to
// the row it computes and the steps that reach the rows around it.
#pragma once

#include "common/kernel_pair.h"
#include "zanvc.h"

namespace zan::deinterlace {

// Spatial (edge-directed) predictor of a whole row of `bytes` bytes between
// row u above and row d below.  Edge columns (the first and last sample of
// each channel) repeat d when repeatDown is non-zero, else u.
using SpatialRowFn = void (*)(const Zan8u* u, const Zan8u* d, Zan8u* out, Zan32s bytes, Zan32s repeatDown);
// One target row of the blend.  p0, p1, p2 point at row y of the previous,
// current and next frame; each step reaches rows y-1 and y+1.  oIsP0: the
// row-y motion term compares with P0 (else P2); topField: edge columns repeat
// the row below (else the row above).
using BlendRowFn = void (*)(const Zan8u* p0, Zan32s s0, const Zan8u* p1, Zan32s s1, const Zan8u* p2,
                            Zan32s s2, Zan8u* out, Zan32s bytes, Zan32s oIsP0, Zan32s topField,
                            const ZanDeinterlaceBlendState* st);
// One computed row of the median with dead zone; src points at row r.
using MedianRowFn = void (*)(const Zan8u* src, Zan32s step, Zan8u* out, Zan32s width, Zan32s threshold);
// One target row of the motion-adaptive tool; planes[i] point at row r of
// P0..P3 (one step); k is 1 or 2, the plane whose rows r-1, r+1 are kept.
using MotionRowFn = void (*)(const Zan8u* const planes[4], Zan32s step, Zan8u* out, Zan32s width, Zan32s k,
                             Zan32s threshold, Zan32s artifactProtection);
// One filtered row of the vertical triangle; c is the centre weight 0..256.
using TriangleRowFn = void (*)(const Zan8u* src, Zan32s step, Zan8u* out, Zan32s width, Zan32s c);

// param of every list: the sample distance in bytes (1 for C1, 2 for C2).
// The blend kernels are exact for a record whose table agrees with its
// slope, intercept, fullMotion and zeroMotion (blend_state_vector_ok); the
// wrappers run the rule for any other record.
struct Kernels {
    KernelList<SpatialRowFn> spatial;
    KernelList<BlendRowFn> blend;
    KernelList<MedianRowFn> median;
    KernelList<MotionRowFn> motion;
    KernelList<TriangleRowFn> triangle;
};

}  // namespace zan::deinterlace

#define ZAN_DEINTERLACE_CATALOGUES(P)                                                      \
    namespace zan::P::deinterlace {                                                        \
    extern const zan::deinterlace::Kernels kernels;                                        \
    /* Whether the blend's vector weight (from slope and intercept in 16-bit lanes,  */  \
    /* 256 above fullMotion, 0 below zeroMotion) equals the table for every motion. */    \
    bool blend_state_vector_ok(const ZanDeinterlaceBlendState* st);                        \
    }
ZAN_DEINTERLACE_CATALOGUES(u8)
ZAN_DEINTERLACE_CATALOGUES(n8)
#undef ZAN_DEINTERLACE_CATALOGUES
