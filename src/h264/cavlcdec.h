// H.264 CAVLC and Exp-Golomb decoding: one residual block or one value from
// the word cursor (common/wordcursor.h), with the caller's code tables walked
// by the built-table walk of the MPEG-1/2 family (mpeg12/mpeg12.h).
//
// Bit-stream parsing has no vector kernel worth writing: the scalar code in
// cavlcdec.cpp is the implementation on both paths (the one vector use is
// the clear of the output block).  There is therefore no catalogue; the
// benchmarks time the two bodies of each export directly.  Block decoding
// reads through a 64-bit bit window over the cursor (a word is loaded only
// when a read needs its bits) and counts level prefixes with one leading-zero
// count per window, not bit by bit.
//
// The library's own constant tables, shared by both paths:
//   level decoding  bits to read and offset to add by suffix length (0..6)
//                   and level prefix (0..15); the suffix-length thresholds
//                   0, 3, 6, 12, 24, 48; the long-escape addend (15 for
//                   suffix length 0, else 0).
//   chroma DC       the 4:2:0 fast path's (position, bits used) by the three
//                   bits after the sign; the 4:2:2 raster order 0 2 1 4 6 3 5 7.
//   token remap     for the index form: each token's rank in the code order
//                   of its table (coefficient-token classes 0 <= nC < 2,
//                   2 <= nC < 4, 4 <= nC < 8), and the tokens in that order.
#pragma once

#include "zanvc.h"

namespace zan::cavlc {

// Largest element count of a block (4x4) and the chroma DC block sizes.
inline constexpr int kBlock4x4 = 16;
inline constexpr int kBlockDc420 = 4;
inline constexpr int kBlockDc422 = 8;

// Raster element of coefficient k (scan order) in a 4:2:2 chroma DC block.
inline constexpr Zan32s kChromaDc422Raster[8] = {0, 2, 1, 4, 6, 3, 5, 7};

}  // namespace zan::cavlc
