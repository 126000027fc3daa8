// VC-1 transforms and quantisation: kernel signatures, the reciprocal table
// of the quantisers, the transform matrices, and the catalogues of kernels
// that each path offers to the checker and the benchmarks.
//
// Blocks are Zan16s samples with rows a byte step apart.  A block is W
// samples wide and H rows high; the 8x4 shape is 8 wide and 4 high.
#pragma once

#include "common/kernel_pair.h"
#include "zanvc.h"

namespace zan::vc1xform {

// ------------------------------------------------------------ reciprocals

// How a sample is divided by a doubleQuant d (2..62).
enum Kind : Zan32s {
    kKindA = 0,  // (hi(m x) >> s) + (x < 0)
    kKindB = 1,  // (sat16(hi(m x) + x) >> s) + (x < 0); m is the reciprocal less 65536
    kKindC = 2,  // d a power of two: (x + (x < 0 ? d - 1 : 0)) >> s
};

struct Reciprocal {
    Zan32s kind;  // Kind
    Zan32s m;     // multiplier (unused for kind c)
    Zan32s s;     // shift
};

inline constexpr Zan32s kMinQuant = 2, kMaxQuant = 62;

// Entry d - 2 for d = 2..62.
inline constexpr Reciprocal kReciprocal[61] = {
    {2, 0, 1}, {0, 21846, 0}, {2, 0, 2}, {0, 26215, 1}, {0, 10923, 0}, {1, -28086, 2},
    {2, 0, 3}, {0, 14564, 1}, {0, 26215, 2}, {0, 11916, 1}, {0, 10923, 1}, {0, 20165, 2},
    {0, 18725, 2}, {1, -30583, 3}, {2, 0, 4}, {0, 30841, 3}, {0, 3641, 0}, {0, 13797, 2},
    {0, 26215, 3}, {0, 12483, 2}, {0, 2979, 0}, {1, -19945, 4}, {0, 10923, 2}, {0, 20972, 3},
    {0, 20165, 3}, {0, 19418, 3}, {0, 18725, 3}, {1, -29378, 4}, {1, -30583, 4}, {1, -31710, 4},
    {2, 0, 5}, {0, 15888, 3}, {0, 30841, 4}, {1, -5617, 5}, {0, 3641, 1}, {1, -8856, 5},
    {1, -10347, 5}, {1, -11762, 5}, {0, 26215, 4}, {0, 25575, 4}, {1, -15603, 5}, {0, 12193, 3},
    {0, 2979, 1}, {1, -18932, 5}, {1, -19945, 5}, {1, -20915, 5}, {0, 10923, 3}, {0, 21400, 4},
    {0, 5243, 2}, {1, -24415, 5}, {0, 20165, 4}, {0, 19785, 4}, {1, -26699, 5}, {0, 2383, 1},
    {0, 18725, 4}, {1, -28743, 5}, {0, 18079, 4}, {0, 17773, 4}, {1, -30583, 5}, {0, 17190, 4},
    {0, 16913, 4},
};

inline constexpr const Reciprocal& reciprocal(Zan32s d) { return kReciprocal[d - kMinQuant]; }

// x / d by the reciprocal rule of d's kind (d in 2..62, x a Zan16s value).
// Equal to x / d truncated toward zero except for d = 19, 21, 27, 41, 55.
constexpr Zan32s divide(Zan32s x, Zan32s d) {
    const Reciprocal& r = reciprocal(d);
    const Zan32s neg = x < 0 ? 1 : 0;
    if (r.kind == kKindC) return (x + (neg ? d - 1 : 0)) >> r.s;
    Zan32s hi = (r.m * x) >> 16;
    if (r.kind == kKindA) return (hi >> r.s) + neg;
    Zan32s v = hi + x;
    v = v < -32768 ? -32768 : v > 32767 ? 32767 : v;
    return (v >> r.s) + neg;
}

// ------------------------------------------------------------ transforms

// The 1-D transform matrices of the standard: row k holds basis function k.
inline constexpr Zan32s kT8[8][8] = {
    {12, 12, 12, 12, 12, 12, 12, 12},     {16, 15, 9, 4, -4, -9, -15, -16},
    {16, 6, -6, -16, -16, -6, 6, 16},     {15, -4, -16, -9, 9, 16, 4, -15},
    {12, -12, -12, 12, 12, -12, -12, 12}, {9, -16, 4, 15, -15, -4, 16, -9},
    {6, -16, 16, -6, -6, 16, -16, 6},     {4, -9, 15, -16, 16, -15, 9, -4},
};
inline constexpr Zan32s kT4[4][4] = {
    {17, 17, 17, 17},
    {22, 10, -10, -22},
    {17, -17, -17, 17},
    {10, -22, 22, -10},
};

// Entry (k, j) of the N-point matrix.
constexpr Zan32s basis(Zan32s n, Zan32s k, Zan32s j) { return n == 8 ? kT8[k][j] : kT4[k][j]; }

// Squared norm of basis function k of the N-point matrix.
constexpr Zan32s norm2(Zan32s n, Zan32s k) {
    Zan32s s = 0;
    for (Zan32s j = 0; j < n; ++j) s += basis(n, k, j) * basis(n, k, j);
    return s;
}

// The forward transform's final scale of coefficient (row k, column l) of a
// W x H block, as a Q15 factor: 2^15 * 2^19 / (|T_H row k|^2 |T_W row l|^2).
// With the two passes' shifts (3 and 6) this makes the forward transform the
// inverse of the inverse transform up to rounding.
constexpr Zan32s forward_scale(Zan32s w, Zan32s h, Zan32s k, Zan32s l) {
    const Zan64s den = static_cast<Zan64s>(norm2(h, k)) * norm2(w, l);
    return static_cast<Zan32s>(((Zan64s{1} << 34) + den / 2) / den);
}

// ---------------------------------------------------- kernel signatures

// Inverse transform of a W x H block.  sizeNZ: the reach of the non-zero
// coefficients (both below 2: DC only; width 2 or less, or 4 or less: the
// columns beyond are taken as zero).  pSrc may equal pDst.
using InvFn = void (*)(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s dstStep, ZaniSize sizeNZ);
// Forward transform of a W x H block; pSrc may equal pDst.
using FwdFn = void (*)(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s dstStep);
// Forward quantiser of one block in place, for one doubleQuant (2..62) of
// the kernel's kind.
using QuantFn = void (*)(Zan16s* pSrcDst, Zan32s step, Zan32s doubleQuant);
// Inverse quantiser of one block (pSrc may equal pDst), any doubleQuant;
// returns the reach of the non-zero output samples.
using QuantInvFn = ZaniSize (*)(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s dstStep,
                                Zan32s doubleQuant);

// Catalogue of the transforms (vc1xform_transform.cpp); param 0.
struct TransformKernels {
    KernelList<InvFn> inv;
    KernelList<FwdFn> fwd;
};

// Catalogue of the quantisers (vc1xform_quant.cpp).  param of quant: the
// kind (Kind) plus 4 for an intra kernel plus 8 for a non-uniform one.
// param of quantInv: 1 for intra plus 2 for non-uniform.
struct QuantKernels {
    KernelList<QuantFn> quant;
    KernelList<QuantInvFn> quantInv;
};

}  // namespace zan::vc1xform

#define ZAN_VC1XFORM_CATALOGUES(P)                                        \
    namespace zan::P::vc1xform {                                          \
    extern const zan::vc1xform::TransformKernels transform_kernels;       \
    extern const zan::vc1xform::QuantKernels quant_kernels;               \
    }
ZAN_VC1XFORM_CATALOGUES(u8)
ZAN_VC1XFORM_CATALOGUES(n8)
#undef ZAN_VC1XFORM_CATALOGUES
