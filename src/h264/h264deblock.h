// H.264 deblocking: kernel signatures and the catalogue of kernels that each
// path offers to the checker and the benchmarks.
//
// A kernel does the whole work of one export (every edge of one plane of one
// macroblock, or the MBAFF part edge) over caller memory and checks nothing.
#pragma once

#include "common/kernel_pair.h"
#include "zanvc.h"

namespace zan::h264deblock {

// 8-bit forms with arrays: luma, 4:2:0 chroma (one plane or interleaved),
// 4:2:2 chroma.  Step in bytes.
using Edges8Fn = void (*)(Zan8u* pSrcDst, Zan32s step, const Zan8u* pAlpha, const Zan8u* pBeta,
                          const Zan8u* pThresholds, const Zan8u* pBS);
// 8-bit MBAFF left edge: alpha and beta as values.
using Mbaff8Fn = void (*)(Zan8u* pSrcDst, Zan32s step, Zan32u alpha, Zan32u beta, const Zan8u* pThresholds,
                          const Zan8u* pBS);
// 16-bit forms (MBAFF included).  Step in samples; bitDepth sets the clamp.
using Edges16Fn = void (*)(Zan16u* pSrcDst, Zan32s step, const Zan16u* pAlpha, const Zan16u* pBeta,
                           const Zan16u* pThresholds, const Zan8u* pBS, Zan32s bitDepth);

// Bits of KernelPair::param: the shape of the area a kernel touches.
enum EdgeShape : Zan32s {
    kVertical = 1,    // vertical edges: the area reaches left of the block, else above it
    kLuma = 2,        // reaches 4 samples across an edge (chroma: 2)
    kTwoChannels = 4, // interleaved U and V: a sample is a pair of bytes
    kOwnThresholds = 8,  // U and V with their own alpha, beta and tc0 (4, 4, 16 bytes)
};

// width, height: the block in samples (per channel) and rows; the area is the
// block widened by the reach across the edges, on the left or on top.
struct Kernels {
    KernelList<Edges8Fn> edges8;
    KernelList<Mbaff8Fn> mbaff8;
    KernelList<Edges16Fn> edges16;
};

}  // namespace zan::h264deblock

#define ZAN_H264DEBLOCK_CATALOGUES(P)                 \
    namespace zan::P::h264deblock {                   \
    extern const zan::h264deblock::Kernels kernels;   \
    }
ZAN_H264DEBLOCK_CATALOGUES(u8)
ZAN_H264DEBLOCK_CATALOGUES(n8)
#undef ZAN_H264DEBLOCK_CATALOGUES
