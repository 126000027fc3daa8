// H.264 intra prediction: kernel signatures, the 8x8 edge record, the
// position tables of the 4x4 walk, and the kernel tables and catalogues that
// each path offers to the exported wrappers, to macroblock reconstruction,
// to the checker and to the benchmarks.
//
// Neighbours are always read from the picture around the block: the row
// above at p - step, the column to the left at p + y * step - 1 (- 2 and - 1
// for the two components of an interleaved chroma row), the corner at
// p - step - 1.  A neighbour whose availability bit is clear is never read.
//
// Availability word (bits set when the neighbour may be read):
//   1 row above, 2 column to the left, 32 sample above-left, 64 row above-right.
// Other bits are ignored.
#pragma once

#include "common/kernel_pair.h"
#include "zanvc.h"

namespace zan::h264intra {

enum Avail : Zan32s { kAbove = 1, kLeft = 2, kCorner = 32, kAboveRight = 64, kAvailMask = 99 };

// 4x4 and 8x8 luma modes.
enum Mode4x4 : Zan32s {
    kVertical = 0,
    kHorizontal = 1,
    kDc = 2,
    kDiagDownLeft = 3,
    kDiagDownRight = 4,
    kVerticalRight = 5,
    kHorizontalDown = 6,
    kVerticalLeft = 7,
    kHorizontalUp = 8,
};
// 16x16 luma modes.
enum Mode16x16 : Zan32s { k16Vertical = 0, k16Horizontal = 1, k16Dc = 2, k16Plane = 3 };
// Chroma 8x8 modes (note the order: DC first).
enum ModeChroma : Zan32s { kChromaDc = 0, kChromaHorizontal = 1, kChromaVertical = 2, kChromaPlane = 3 };

// Predicts one 4x4 luma block in place.  Returns 0 when every neighbour the
// mode needs was present (or, for DC, when the standard itself allows its
// absence), and 1 when 128 stood in for a missing neighbour; the block is
// written in both cases:
//   vertical, horizontal, horizontal-up: the needed edge absent fills the block with 128;
//   DC: averages the present edges, 128 when neither (returns 0);
//   diagonal down-left, vertical-left: above-right absent repeats above[3]
//     (returns 0); above absent with above-right present puts 128 for the
//     above row and reads above-right; both absent fill with 128;
//   diagonal down-right, vertical-right, horizontal-down: each absent corner,
//     above row or left column is replaced by 128 and the formula runs.
using Pred4x4Fn = Zan32s (*)(Zan8u* pSrcDst, Zan32s step, Zan32s avail);

// Predicts a 16x16 luma block, an 8x8 chroma block (planar, 8 samples a
// row; or interleaved, 8 U/V pairs a row) or an 8x16 chroma block of a 4:2:2
// picture (planar) in place.  Returns 0 when done;
// returns 1 and writes nothing when the mode needs an absent edge: vertical
// the row above, horizontal the left column, plane above, left and corner.
// DC needs nothing.  The sample results are clamped to 0..255.
// Chroma DC works on 4x4 blocks: the first block and those off both edges
// average both edges when both are present; those on the top edge prefer the
// row above, those on the left edge the left column; with one edge missing
// each uses the other; with neither, 128.  The 8x16 plane mode takes
// c = (5 * V + 32) >> 6 with V summed over 8 pairs of the left column and
// rows counted from y - 7.
using PredBlockFn = Zan32s (*)(Zan8u* pSrcDst, Zan32s step, Zan32s avail);

// The DC mode of a chroma block (8x8 planar or interleaved, 8x16 planar) for
// a macroblock whose two halves have their own left neighbours: the 4x4
// blocks of the upper half take the left column's availability from
// availTop, those of the lower half from availBottom; the row above follows
// availTop.  Each 4x4 block's rule is that of the DC mode.  Always
// predicts; returns 0.
using ChromaDcSplitFn = Zan32s (*)(Zan8u* pSrcDst, Zan32s step, Zan32s availTop, Zan32s availBottom);

// Neighbours of an 8x8 luma block, raw and after the reference smoothing.
// above[0..7] is the row above, above[8..15] the row above-right.
struct Edge8x8 {
    Zan32s avail;  // the availability word the record was built with
    struct Samples {
        Zan8u corner;
        Zan8u above[16];
        Zan8u left[8];
    } raw, filtered;
};

// Fills *edge from the picture around the 8x8 block at p:
//   absent row above: eight 128; absent above-right: above[7] repeated (128
//   when the row above is absent too); absent left column: eight 128; absent
//   corner: 128.  The raw values are kept; then a present row above is
//   smoothed with [1 2 1] / 4 along its 16 samples (the first sample uses the
//   corner when it is present, else 3 * above[0] + above[1]; the last
//   above[14] + 3 * above[15]); a present left column the same way over 8;
//   a present corner becomes (left[0] + 2 * corner + above[0] + 2) >> 2 with
//   both edges, (3 * corner + that edge's first sample + 2) >> 2 with one,
//   and keeps its value with none.  Absent values stay 128.
using EdgeFilterFn = void (*)(Edge8x8* edge, const Zan8u* p, Zan32s step, Zan32s avail);

// Predicts an 8x8 luma block from the filtered samples of an edge record
// (any mode 0..8, the standard's formulas; DC averages the edges present by
// edge->avail: both (sum of 16 + 8) >> 4, one (sum of 8 + 4) >> 3, neither
// 128).  Writes nothing outside the block and returns nothing: substitution
// on this path is silent.
using Pred8x8Fn = void (*)(const Edge8x8* edge, Zan8u* pDst, Zan32s step);

// Raster position of the 4x4 block n in coding order.
inline constexpr Zan8u kBlockSubblockMapping[16] = {0, 1, 4, 5, 2, 3, 6, 7, 8, 9, 12, 13, 10, 11, 14, 15};
// 1 where the above-right neighbour of the 4x4 block n (coding order) lies in
// what is decoded before it.
inline constexpr Zan8u kAboveRightAvail4x4[16] = {1, 1, 1, 0, 1, 1, 1, 0, 1, 1, 1, 0, 1, 0, 1, 0};

// Catalogue for the checker and the benchmarks.  param: the mode number of
// the entry (4x4 and 8x8 numbering, 16x16 numbering, chroma numbering); for
// chroma entries plus 16 for the interleaved layout, plus 32 for the 8x16
// (4:2:2) block.  width is in bytes.
struct Kernels {
    KernelList<Pred4x4Fn> pred4x4;
    KernelList<PredBlockFn> pred16x16;
    KernelList<PredBlockFn> chroma;
    KernelList<ChromaDcSplitFn> chromaDcSplit;
    KernelList<EdgeFilterFn> filter8x8;
    KernelList<Pred8x8Fn> pred8x8;
};

}  // namespace zan::h264intra

// Per-path tables, for macroblock reconstruction (which calls the predictors
// block by block) and for the tests:
//   pred4x4[mode]          4x4 kernels, modes 0..8 (the caller checks the mode)
//   pred16x16[mode]        16x16 kernels, modes 0..3
//   chroma[mode]           planar chroma 8x8 kernels, chroma modes 0..3
//   chroma_nv12[mode]      interleaved chroma kernels (16 bytes a row)
//   chroma422[mode]        planar chroma 8x16 (4:2:2) kernels, chroma modes 0..3
//   chroma_dc_split[k]     chroma DC with separate left availability per half,
//                          k = 0 planar 8x8, 1 interleaved 8x8, 2 planar 8x16
//   filter_edges_8x8       the 8x8 edge preparation
//   pred8x8[mode]          8x8 predictors, modes 0..8
//   kernels                the catalogue (rule beside kernel)
#define ZAN_H264INTRA_DECLS(P)                                                  \
    namespace zan::P::h264intra {                                               \
    extern const zan::h264intra::Pred4x4Fn pred4x4[9];                          \
    extern const zan::h264intra::PredBlockFn pred16x16[4];                      \
    extern const zan::h264intra::PredBlockFn chroma[4];                         \
    extern const zan::h264intra::PredBlockFn chroma_nv12[4];                    \
    extern const zan::h264intra::PredBlockFn chroma422[4];                      \
    extern const zan::h264intra::ChromaDcSplitFn chroma_dc_split[3];            \
    extern const zan::h264intra::EdgeFilterFn filter_edges_8x8;                 \
    extern const zan::h264intra::Pred8x8Fn pred8x8[9];                          \
    extern const zan::h264intra::Kernels kernels;                               \
    }
ZAN_H264INTRA_DECLS(u8)
ZAN_H264INTRA_DECLS(n8)
#undef ZAN_H264INTRA_DECLS
