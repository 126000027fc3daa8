// Adaptive and smoothing denoisers: kernel signatures and the catalogues of
// row kernels that each path offers to the checker and the benchmarks.
#pragma once

#include "common/kernel_pair.h"
#include "zanvc.h"

namespace zan::denoise {

// One row of the adaptive filter with a full 3x3 window in three frames:
// rows[0..2] point at the first sample of the previous, current and next
// frame's row (one step reaches the rows above and below); count samples;
// recip is the reciprocal table (at least 28 entries).
using AdaptiveRowFn = void (*)(const Zan8u* const rows[3], Zan32s step, Zan8u* out, Zan32s count,
                               Zan32s threshold, const Zan16u* recip);
// Edge mask over rows x cols cells of the low-passed picture L (one step for
// L and E): E[r][c] = 255 when a cross-difference of the 2x2 cell at (r, c)
// reaches the threshold, else 0.
using MaskFn = void (*)(const Zan8u* L, Zan32s step, Zan8u* E, Zan32s rows, Zan32s cols, Zan32s threshold);
// One row of the masked 3x3 mean: src and e point at the first sample and
// its mask entry; count samples.
using AverageRowFn = void (*)(const Zan8u* src, Zan32s srcStep, const Zan8u* e, Zan32s eStep, Zan8u* out,
                              Zan32s count);

// param of adaptive: the mode (0..3); param elsewhere: 0.
struct Kernels {
    KernelList<AdaptiveRowFn> adaptive;
    KernelList<MaskFn> mask;
    KernelList<AverageRowFn> average;
};

}  // namespace zan::denoise

#define ZAN_DENOISE_CATALOGUES(P)                \
    namespace zan::P::denoise {                  \
    extern const zan::denoise::Kernels kernels;  \
    }
ZAN_DENOISE_CATALOGUES(u8)
ZAN_DENOISE_CATALOGUES(n8)
#undef ZAN_DENOISE_CATALOGUES
