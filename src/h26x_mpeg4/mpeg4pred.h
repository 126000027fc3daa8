// MPEG-4 prediction tools: quarter-sample block copies, overlapped-block
// motion compensation (OBMC), global motion compensation and sprite warping,
// and the sprite brightness change.  Kernel signatures, the OBMC weight windows,
// and the catalogues of kernels that each path offers to the checker and the
// benchmarks.
//
// Quarter-sample position of a copy: acc = fx + 4 * fy, fx and fy in 0..3.
// A copy of an N wide, M high block reads the samples (0..N, 0..M) from its
// source (the block and one column and one row beyond it) and nothing else;
// the eight-tap half-sample filter mirrors those samples at their own edges:
// to the left of column 0 it reads columns 0, 1, 2, to the right of column N
// it reads columns N, N - 1, N - 2 (rows alike).
#pragma once

#include <array>

#include "common/kernel_pair.h"
#include "zanvc.h"

namespace zan::mpeg4pred {

// Quarter-sample copy of a fixed block size; acc in 0..15 with fx or fy
// non-zero, rounding 0 or 1.
using CopyQPFn = void (*)(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep, Zan32s acc,
                          Zan32s rounding);
// OBMC mixing of an 8x8 (or 16x16) block: cur, leftRight and aboveBelow are
// packed blocks with a row of 8 (or 16) bytes.  leftRight holds the left
// neighbour's prediction in its left half and the right neighbour's in its
// right half; aboveBelow the above neighbour's in its top half and the
// below one's in its bottom half.
using SumOBMCFn = void (*)(const Zan8u* cur, const Zan8u* leftRight, const Zan8u* aboveBelow, Zan8u* pDst,
                           Zan32s dstStep);

// The three 8x8 weighting windows: current, above/below, left/right.  Each
// position's three weights sum to 8.
inline constexpr Zan16u kOBMC8x8Weights[3][64] = {
    {4, 5, 5, 5, 5, 5, 5, 4,  5, 5, 5, 5, 5, 5, 5, 5,  5, 5, 6, 6, 6, 6, 5, 5,  5, 5, 6, 6, 6, 6, 5, 5,
     5, 5, 6, 6, 6, 6, 5, 5,  5, 5, 6, 6, 6, 6, 5, 5,  5, 5, 5, 5, 5, 5, 5, 5,  4, 5, 5, 5, 5, 5, 5, 4},
    {2, 2, 2, 2, 2, 2, 2, 2,  1, 1, 2, 2, 2, 2, 1, 1,  1, 1, 1, 1, 1, 1, 1, 1,  1, 1, 1, 1, 1, 1, 1, 1,
     1, 1, 1, 1, 1, 1, 1, 1,  1, 1, 1, 1, 1, 1, 1, 1,  1, 1, 2, 2, 2, 2, 1, 1,  2, 2, 2, 2, 2, 2, 2, 2},
    {2, 1, 1, 1, 1, 1, 1, 2,  2, 2, 1, 1, 1, 1, 2, 2,  2, 2, 1, 1, 1, 1, 2, 2,  2, 2, 1, 1, 1, 1, 2, 2,
     2, 2, 1, 1, 1, 1, 2, 2,  2, 2, 1, 1, 1, 1, 2, 2,  2, 2, 1, 1, 1, 1, 2, 2,  2, 1, 1, 1, 1, 1, 1, 2},
};

// The 16x16 windows: every 8x8 weight doubled in both directions.
struct Weights16 {
    Zan16u w[3][256];
};
constexpr Weights16 make_weights16() {
    Weights16 t{};
    for (int k = 0; k < 3; ++k)
        for (int y = 0; y < 16; ++y)
            for (int x = 0; x < 16; ++x) t.w[k][y * 16 + x] = kOBMC8x8Weights[k][(y >> 1) * 8 + (x >> 1)];
    return t;
}
inline constexpr Weights16 kOBMC16x16Weights = make_weights16();

// One plane of an affine (or translational) warp, as the warp kernels take
// it.  Positions of destination sample (x, y) of the rectangle (x, y counted
// from the picture's origin), in 1/s sample units:
//   F = (off[0] + dx[0] * x + dy[0] * y) >> shift,  G = (off[1] + dx[1] * x + dy[1] * y) >> shift
// (arithmetic shift: the rounding term is inside off), clamped to
// +-kPosLimit, then taken to 1/16 units by << rho (rho = 3 - warpAccuracy).
// rect is the readable reference area (x, y, width, height) in absolute
// coordinates; the source pointer addresses its first sample.
struct WarpPlane {
    Zan64s off[2];
    Zan64s dx[2];
    Zan64s dy[2];
    Zan32s shift;
    Zan32s rho;
    Zan32s rect[4];
    Zan32s roundTerm;
};
inline constexpr Zan64s kPosLimit = Zan64s{1} << 26;

// Warps the w x h destination rectangle at (x0, y0) of a plane.
using WarpFn = void (*)(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep, Zan32s x0, Zan32s y0,
                        Zan32s w, Zan32s h, const WarpPlane& plane);
// Sprite brightness gain in place: W is the gain of the exported function
// (-123 .. 17900 for the accepted changes).
using BrightnessFn = void (*)(Zan8u* pSrcDst, Zan32s step, Zan32s width, Zan32s height, Zan32s W);

// Catalogue.  copyQP: width x height blocks, param unused (every acc 0..15
// and both roundings are drawn); the path's own form (SSSE3 for u8, SSE2 for
// n8) under the plain names, then the other form with a ":sse2" or ":ssse3"
// suffix.  sumOBMC: width 8 or 16.  warp: the affine
// warp of a plane, width and height the largest rectangle drawn, param
// unused.  brightness: width and height the largest region drawn.
struct Kernels {
    KernelList<CopyQPFn> copyQP;
    KernelList<SumOBMCFn> sumOBMC;
    KernelList<WarpFn> warp;
    KernelList<BrightnessFn> brightness;
};

}  // namespace zan::mpeg4pred

#define ZAN_MPEG4PRED_DECLS(P)                          \
    namespace zan::P::mpeg4pred {                       \
    extern const zan::mpeg4pred::Kernels kernels;       \
    }
ZAN_MPEG4PRED_DECLS(u8)
ZAN_MPEG4PRED_DECLS(n8)
#undef ZAN_MPEG4PRED_DECLS
