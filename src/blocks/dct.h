// Block DCT family and scan: kernel signatures, the catalogues that each
// path offers to the checker and the benchmarks, and the two plain 8x8
// transforms that other families call.
//
// Coefficient blocks are 64 Zan16s, packed, row after row.  The kernels load
// them with unaligned loads, so no alignment is required of any block.
//
// The transposed inverse DCT ("AANTransposed").  The block holds the
// coefficients transposed: pSrc[8 * u + v] is the coefficient of horizontal
// frequency u and vertical frequency v.  g[k] = 65536 cos(k pi / 16) as
// the table has it (some entries truncated, not rounded):
// 65536, 64276, 60547, 54491, 46340, 36409, 25079, 12785.
//   Pass 1 runs down each column of the stored block (a horizontal 1-D
//   inverse for each vertical frequency).  Every coefficient is scaled by 4
//   (two fraction bits; b = wrap16(2 * coefficient), a = 2 * b) and every
//   product a * g[k] is rounded by (a * g[k] + 0x8000) >> 16, which equals
//   (b * g[k] + 0x4000) >> 15 and is exactly what pmulhrsw gives (for the
//   even g1 and g4 it is taken as (wrap16(a) * g / 2 + 0x4000) >> 15, the
//   same unless a coefficient of 8192 or more wraps).  The sums wrap at 16
//   bits (paddw).  The butterfly: p0 = a0 g4, p4 = a4 g4,
//   m = a2 g2 + a6 g6, n = a2 g6 - a6 g2, E0,3 = p0 + p4 +- m,
//   E1,2 = p0 - p4 +- n; r4 = a1 g7 - a7 g1, r7 = a1 g1 + a7 g7,
//   r5 = a5 g3 - a3 g5, r6 = a5 g5 + a3 g3, O0 = r7 + r6, O3 = r4 + r5,
//   O1,2 = ((r7 - r6) +- (r4 - r5)) g4, the last two products rounded as
//   (s g4 + 0x8000) >> 16 of the 16-bit sum s; t[x] = Ex + Ox,
//   t[7-x] = Ex - Ox.
//   Pass 2 runs along the other direction: X = sum over v of t_v * G(y, v)
//   with G the same Q16 constants (g4 for v = 0), formed exactly (wrapping at
//   32 bits), and rounded once as (X + 0xA0000) >> 20: the rounding constant
//   0x28000 at the 2^18 scale of the plain two-pass form, carried with the
//   two fraction bits of pass 1.  The constant is 2.5 units of 0x10000, not
//   the half unit 0x20000, so every output is biased up by 1/8.
//   Results saturate: -256..255 for Zan16s output, 0..255 for Zan8u.
// count: below 0 all zero (Zan16s output; the Zan8u forms treat it as 0);
// 0 DC only, every output DC / 8 truncated toward zero and saturated; 1 to 9
// the 4x4 corner only (coefficients outside it are ignored); 10 and above
// the whole block.
//
// The plain 8x8 transforms (normal layout: pSrc[8 * v + u]) keep more
// precision: both passes sum exact 32-bit products of constants
// c(k) cos(...) (pmaddwd; Q16 rounded to nearest in the inverse, Q15 in the
// forward), pass 1 keeps five fraction bits (inverse) or four (forward) of
// the 1-D values in 16 bits, saturating, and each pass rounds half up.
//
// DV 2-4-8 transforms (field blocks): rows 0-3 of the coefficient block hold
// the 4x8 transform of the sums of the two fields' lines (line 2z + line
// 2z+1), rows 4-7 that of their differences; the vertical 4-point and
// horizontal 8-point weights are C(k) cos(...), C(0) = 1/(2 sqrt 2),
// C(k) = 1/2.  Each pass sums exact 32-bit products of the constants
// C(k) cos(...) at Q16 (all below 32768) and rounds half up; the
// intermediate keeps four (forward) or five (inverses) fraction bits in 16
// bits, saturating.
// The reduction to 4x4 keeps the sum rows (the field difference drops out of
// a mean over two lines) and the four lowest horizontal frequencies, and
// runs 4-point inverses scaled so that each result is the mean of a 2x2
// group of the low-passed full-size block: q(x, z) = sum over v, h < 4 of
// C(v) C(h) K(v, h) cos(pi v (2z+1) / 8) cos(pi h (2x+1) / 8).  It writes 16
// samples, 4 per row, over pSrcDst[0..15] and leaves the rest as it was.
#pragma once

#include "common/kernel_pair.h"
#include "zanvc.h"

namespace zan::dct {

// Transposed inverse DCT of one block to a plane; count steers the shortcut.
using Inv16Fn = void (*)(const Zan16s* pSrc, Zan16s* pDst, Zan32s dstStep, Zan32s count);
using Inv8Fn = void (*)(const Zan16s* pSrc, Zan8u* pDst, Zan32s dstStep, Zan32s count);
// Two blocks to one interleaved block (U at even samples, V at odd).
using InvPair16Fn = void (*)(const Zan16s* pSrcU, const Zan16s* pSrcV, Zan16s* pDst, Zan32s dstStep,
                             Zan32s countU, Zan32s countV);
using InvPair8Fn = void (*)(const Zan16s* pSrcU, const Zan16s* pSrcV, Zan8u* pDst, Zan32s dstStep,
                            Zan32s countU, Zan32s countV);
// Plain inverse or DC fill per plane (flag bit 1: U is DC only, bit 0: V).
using InvOrSetFn = void (*)(const Zan16s* pSrcU, const Zan16s* pSrcV, Zan8u* pDst, Zan32s dstStep, Zan32s flag);
// The plain transforms.
using PlainInvFn = void (*)(const Zan16s* pSrc, Zan8u* pDst, Zan32s dstStep);
using PlainFwdFn = void (*)(const Zan8u* pSrc, Zan32s srcStep, Zan16s* pDst);
// Interleaved samples split and transformed.
using FwdPairFn = void (*)(const Zan8u* pSrc, Zan32s srcStep, Zan16s* pDstU, Zan16s* pDstV);
// DV transforms in place.
using InPlaceFn = void (*)(Zan16s* pSrcDst);
// Scans; scan selects the table (1 alternate vertical, 2 alternate
// horizontal, else zigzag).
using ScanFwdFn = void (*)(const Zan16s* pSrc, Zan16s* pDst, Zan32s countNonZero, Zan32s scan);
using ScanInvFn = void (*)(const Zan16s* pSrc, Zan16s* pDst, Zan32s lastIndex, Zan32s scan);

// Catalogue of the 8x8 transforms (dct.cpp).  param: 0.
struct TransformKernels {
    KernelList<Inv16Fn> inv16;
    KernelList<Inv8Fn> inv8;
    KernelList<InvPair16Fn> pair16;
    KernelList<InvPair8Fn> pair8;
    KernelList<InvOrSetFn> invOrSet;
    KernelList<PlainInvFn> plainInv;
    KernelList<PlainFwdFn> plainFwd;
    KernelList<FwdPairFn> fwdPair;
};

// Catalogue of the DV transforms (dct248.cpp).  param: 0.
struct DvKernels {
    KernelList<InPlaceFn> fwd;      // 2-4-8 forward
    KernelList<InPlaceFn> inv;      // 2-4-8 inverse
    KernelList<InPlaceFn> inv4x4;   // 2-4-8 to 4x4
};

// Catalogue of the scans (scan.cpp).  param: 0.
struct ScanKernels {
    KernelList<ScanFwdFn> fwd;
    KernelList<ScanInvFn> inv;
};

}  // namespace zan::dct

// The catalogues, and the plain transforms for the families that decode or
// code 8x8 blocks (MPEG-1/2, H.261, H.263, MPEG-4):
//
//   zaniDCT8x8Inv_16s8u_C1R(pSrc, pDst, dstStep)
//     Inverse DCT of 64 coefficients in normal layout (pSrc[8 * v + u], any
//     alignment) to 8x8 samples saturated to 0..255, rows dstStep bytes
//     apart.  Null pSrc or pDst: zanStsNullPtr; dstStep below 1:
//     zanStsStepBad; nothing written on failure.  Accurate to the IEEE 1180
//     limits for coefficients that come from samples within -300..300
//     (pass 1 holds 1-D values up to 1023 exactly; beyond it saturates).
//   zaniDCT8x8Fwd_8u16s_C1R(pSrc, srcStep, pDst)
//     Forward DCT of 8x8 samples (rows srcStep bytes apart) to 64
//     coefficients in normal layout, F = c(u) c(v) / 4 * sum, rounded to
//     nearest; DC = 8 * mean.  Null pointer: zanStsNullPtr; srcStep below 1:
//     zanStsStepBad.
#define ZAN_DCT_DECLARATIONS(P)                                                         \
    namespace zan::P {                                                                  \
    ZanStatus zaniDCT8x8Inv_16s8u_C1R(const Zan16s* pSrc, Zan8u* pDst, Zan32s dstStep);  \
    ZanStatus zaniDCT8x8Fwd_8u16s_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan16s* pDst);  \
    }                                                                                   \
    namespace zan::P::dct {                                                             \
    extern const zan::dct::TransformKernels transform_kernels;                          \
    extern const zan::dct::DvKernels dv_kernels;                                        \
    extern const zan::dct::ScanKernels scan_kernels;                                    \
    }
ZAN_DCT_DECLARATIONS(u8)
ZAN_DCT_DECLARATIONS(n8)
#undef ZAN_DCT_DECLARATIONS
