// H.264 interpolation and picture boundaries: kernel signatures, the
// working records of the kernels, the boundary read, and the kernel tables
// and catalogues each path offers to the exported wrappers, to the AVS
// interpolation, to the checker and to the benchmarks.
//
// Luma positions are numbered dy * 4 + dx, which gives the standard's
// letters in the order G a b c d e f g h i j k n p q r.  A luma kernel gets
// its source at the block's integer position and reads 2 columns left and 3
// right of the block when dx is not 0, 2 rows above and 3 below when dy is
// not 0, nothing else.  A chroma kernel reads one column (pair) more when dx
// is not 0 and one row more when dy is not 0.
#pragma once

#include <cstddef>

#include "common/kernel_pair.h"
#include "zanvc.h"

namespace zan::h264interp {

// Edge word of a region read through the picture boundary: set when the
// region's first column lies left of the plane, its last column right of
// it, its first row above, its last row below.
enum Edge : Zan32s { kEdgeLeft = 1, kEdgeRight = 2, kEdgeTop = 4, kEdgeBottom = 8 };

// One 8-bit luma kernel: one fractional position and one width class
// (4, 8, 16 or 24 samples), height rows (a multiple of 4, or any count of
// 0 or more).  Steps in bytes.
using Luma8Fn = void (*)(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep, Zan32s height);

// One chroma call: the fraction selects the weights, the kernel the width
// class and layout.  Planar: width samples a row from pSrc to pDst.
// Interleaved to interleaved: width pairs a row.  Interleaved to planar:
// width pairs from pSrc, U to pDst and V to pDstV.  Steps in bytes.
struct ChromaJob8 {
    const Zan8u* pSrc;
    Zan32s srcStep;
    Zan8u* pDst;
    Zan8u* pDstV;
    Zan32s dstStep;
    Zan32s dx, dy;  // 0..7
    Zan32s height;  // rows (any count of 0 or more)
};
using Chroma8Fn = void (*)(const ChromaJob8& job);

// One 16-bit call (luma or chroma, one plane); steps count samples.
struct Job16 {
    const Zan16u* pSrc;
    Zan32s srcStep;
    Zan16u* pDst;
    Zan32s dstStep;
    Zan32s dx, dy;
    Zan32s width, height;
    Zan32s maxValue;  // (1 << bitDepth) - 1
};
using Interp16Fn = void (*)(const Job16& job);

// Bi-prediction average (a + b + 1) >> 1 of width x height samples.
using AverageFn = void (*)(const Zan8u* pSrc1, Zan32s src1Step, const Zan8u* pSrc2, Zan32s src2Step, Zan8u* pDst,
                           Zan32s dstStep, Zan32s width, Zan32s height);

// A region (x, y, width, height) of a plane to be copied into a buffer
// through the picture boundary.  Positions count samples (pairs for the
// interleaved read); steps count elements (bytes for 8-bit planes).
template <class T>
struct BoundaryRead {
    const T* plane;  // sample (0, 0) of the plane
    Zan32s planeStep;
    ZaniSize frame;  // extent of the plane
    Zan32s x, y, width, height;
    T* buf;
    Zan32s bufStep;
};

// Catalogue for the checker and the benchmarks.
//   luma8: width = the width class (4, 8, 16, 24), param = position dy * 4 + dx.
//   chroma8: width = samples (pairs) of the class, param = 0 planar,
//     1 interleaved in and out, 2 interleaved in and planar out, plus 4 * the
//     column (0 copy, 1 horizontal, 2 vertical, 3 both).
//   average: width and height of a table entry; 0 for the kernel of any size.
//   chroma16: width = samples, param = 4 * the column as for chroma8.
struct Kernels {
    KernelList<Luma8Fn> luma8;
    KernelList<Chroma8Fn> chroma8;
    KernelList<AverageFn> average;
    KernelList<Interp16Fn> chroma16;
    KernelList<Interp16Fn> luma16;  // width 4, 8, 16; param = position; maxValue 0..65535
};

}  // namespace zan::h264interp

// Per-path tables and internal entry points, also used by the AVS
// interpolation:
//   luma_table_8u[((width * 2) & 48) | (dy * 4) | dx]  luma kernels by width
//       class (4, 8, 16, 24) and position; entry 0 of a class copies.
//   chroma_table_8u, chroma_table_nv12_8u, chroma_table_nv12touv_8u
//       [(width & 12) | (dy ? 2 : 0) | (dx ? 1 : 0)]  chroma kernels by width
//       class (2, 4, 8; class 12 repeats 8) and column (copy, horizontal,
//       vertical, both).
//   luma_16u(job)  16-bit luma of any width made of the bits 16, 8, 4.
//   chroma_16u(job)  16-bit chroma of any width made of the bits 8, 4, 2.
//   zaniReadDataBlockThroughBoundary_8u / _16u / _NV12_8u(edge, region)
//       copy the region into region.buf, each position outside the plane
//       taking the nearest plane sample; an axis with both bits set is
//       clamped only at its start when the region begins before the plane,
//       only at its end otherwise.  The NV12 form moves pairs of bytes.
//   average_table[(width >> 2) * 5 + (height >> 2)]  average kernels for
//       sizes 2, 4, 8, 16; average_any for every size.
//   kernels  the catalogue (rule beside kernel).
#define ZAN_H264INTERP_DECLS(P)                                                                            \
    namespace zan::P::h264interp {                                                                         \
    extern const zan::h264interp::Luma8Fn luma_table_8u[64];                                               \
    extern const zan::h264interp::Chroma8Fn chroma_table_8u[16];                                           \
    extern const zan::h264interp::Chroma8Fn chroma_table_nv12_8u[16];                                      \
    extern const zan::h264interp::Chroma8Fn chroma_table_nv12touv_8u[16];                                  \
    extern const zan::h264interp::AverageFn average_table[25];                                             \
    extern const zan::h264interp::AverageFn average_any;                                                   \
    void luma_16u(const zan::h264interp::Job16& job);                                                      \
    void chroma_16u(const zan::h264interp::Job16& job);                                                    \
    extern const zan::h264interp::Kernels kernels;                                                         \
    /* kEdge* bits of the region (x, y, width, height) against the frame. */                               \
    Zan32s edge_word(Zan64s x, Zan64s y, Zan32s width, Zan32s height, ZaniSize frame);                     \
    }                                                                                                      \
    namespace zan::P {                                                                                     \
    void zaniReadDataBlockThroughBoundary_8u(Zan32s edge, const zan::h264interp::BoundaryRead<Zan8u>& r);   \
    void zaniReadDataBlockThroughBoundary_16u(Zan32s edge, const zan::h264interp::BoundaryRead<Zan16u>& r); \
    void zaniReadDataBlockThroughBoundary_NV12_8u(Zan32s edge, const zan::h264interp::BoundaryRead<Zan8u>& r); \
    }
ZAN_H264INTERP_DECLS(u8)
ZAN_H264INTERP_DECLS(n8)
#undef ZAN_H264INTERP_DECLS
