// H.264 macroblock reconstruction: the intra predictors for 16-bit samples
// that the high-bit-depth members use.  The 8-bit members reuse the
// predictors of h264intra.h and the block transforms of h264inv.h.
//
// The 16-bit predictors take the same availability word as h264intra.h
// (bits set when present: 1 row above, 2 left column, 32 corner, 64 row
// above-right), steps in samples, and the bit depth.  Where a neighbour is
// absent, the middle of the sample range, 1 << (bitDepth - 1), stands in
// where the 8-bit predictors use 128, under the same rules.  They are plain
// scalar code: the high-bit-depth members spend their time in the transforms.
#pragma once

#include "zanvc.h"

namespace zan::h264recon {

// A 4x4 block (modes 0..8); returns non-zero when the middle value stood in.
using Pred4x4_16Fn = Zan32s (*)(Zan16u* p, Zan32s step, Zan32s avail, Zan32s bitDepth);
// An 8x8 block (modes 0..8) with the reference smoothing; silent.
using Pred8x8_16Fn = void (*)(Zan16u* p, Zan32s step, Zan32s avail, Zan32s mode, Zan32s bitDepth);
// A 16x16 luma block (16x16 modes) or a chroma block 8 wide and 8 or 16
// high (chroma modes); the caller has checked the edges the mode needs.
using PredBlock16Fn = void (*)(Zan16u* p, Zan32s step, Zan32s mode, Zan32s avail, Zan32s bitDepth);

}  // namespace zan::h264recon

//   pred4x4_16[mode]    4x4 luma, the substitution rules of the 8-bit kernels
//   pred8x8_16          8x8 luma: edge preparation, then the mode
//   pred16x16_16        16x16 luma
//   chroma8x8_16, chroma8x16_16   planar chroma (4:2:0, 4:2:2)
//   chroma_dc_split_16  chroma DC whose lower half takes its left edge from
//                       availBottom (height 8 or 16)
#define ZAN_H264RECON_DECLS(P)                                                                          \
    namespace zan::P::h264recon {                                                                       \
    extern const zan::h264recon::Pred4x4_16Fn pred4x4_16[9];                                            \
    void pred8x8_16(Zan16u* p, Zan32s step, Zan32s avail, Zan32s mode, Zan32s bitDepth);                \
    void pred16x16_16(Zan16u* p, Zan32s step, Zan32s mode, Zan32s avail, Zan32s bitDepth);              \
    void chroma8x8_16(Zan16u* p, Zan32s step, Zan32s mode, Zan32s avail, Zan32s bitDepth);              \
    void chroma8x16_16(Zan16u* p, Zan32s step, Zan32s mode, Zan32s avail, Zan32s bitDepth);             \
    void chroma_dc_split_16(Zan16u* p, Zan32s step, Zan32s height, Zan32s availTop, Zan32s availBottom, \
                            Zan32s bitDepth);                                                           \
    }
ZAN_H264RECON_DECLS(u8)
ZAN_H264RECON_DECLS(n8)
#undef ZAN_H264RECON_DECLS
