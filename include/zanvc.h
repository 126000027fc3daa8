/*
 * zanvc.h - public interface of libzanvcu8, the zanvc video-coding primitives.
 *
 * Every function takes caller-owned memory, checks its arguments in a fixed
 * order (null pointers first, then steps, then sizes, then value ranges),
 * returns the first failing status with nothing written, and otherwise runs
 * its kernel.  Results are bit-identical on both processor paths.
 *
 * Steps are byte distances between rows unless a comment says otherwise; a
 * step that a function does not check may be zero or negative.
 *
 * This header compiles as C99 and as C++.
 */
#ifndef ZANVC_H
#define ZANVC_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ------------------------------------------------------------------ types */

typedef uint8_t  Zan8u;
typedef int8_t   Zan8s;
typedef uint16_t Zan16u;
typedef int16_t  Zan16s;
typedef uint32_t Zan32u;
typedef int32_t  Zan32s;
typedef int64_t  Zan64s;
typedef uint64_t Zan64u;
typedef float    Zan32f;

/* Width then height. Passed by value. */
typedef struct { Zan32s width; Zan32s height; } ZaniSize;
typedef struct { Zan32s x; Zan32s y; Zan32s width; Zan32s height; } ZaniRect;
typedef struct { Zan32s x; Zan32s y; } ZaniPoint;

/* ----------------------------------------------------------------- status */

/* Zero is success, a negative value a failure (nothing the caller can rely
 * on was written), a positive value a remark.  Two remarks mean that nothing
 * was done: zanStsMisalignedBuf and zanStsModeUnknown.  A caller that only
 * tests for negative values misses them. */
typedef Zan32s ZanStatus;

enum {
    zanStsOddSize          =   35, /* done; the source region has an odd width or height */
    zanStsEdgeSubstituted  =   11, /* done; 128 stood in for a missing intra edge */
    zanStsMisalignedBuf    =    2, /* stream buffer not a multiple of 4; nothing done */
    zanStsModeUnknown      =    1, /* field mode outside 0..3; nothing done */
    zanStsOk               =    0,
    zanStsErr              =   -2, /* the region does not fit the operation */
    zanStsAllocFailed      =   -4, /* the allocator returned nothing */
    zanStsBadArg           =   -5, /* a selector or fraction lies outside its set */
    zanStsSizeBad          =   -6, /* a size or length is below its minimum or outside its set */
    zanStsNullPtr          =   -8, /* a required pointer is null */
    zanStsNoMem            =   -9, /* scratch allocation failed, or no room left in an output buffer */
    zanStsDivByZero        =  -10, /* a divisor argument is zero */
    zanStsOutOfRange       =  -11, /* a numeric argument lies outside its range */
    zanStsRangeCheckFailed =  -13, /* a quantised level exceeds what the stream can carry */
    zanStsCoefRange        =  -13, /* the same value, under the name the forward H.264 quantiser uses */
    zanStsStepBad          =  -14, /* a row step is below 1, below the block width, or below 8 */
    zanStsContextMismatch  =  -17, /* a caller-held record carries the wrong identifier */
    zanStsInterpolationBad =  -22, /* interpolation code other than 1 or 2 */
    zanStsResizeFactorBad  =  -23, /* resize factor other than 2, 4 or 8 */
    zanStsMaskSizeBad      =  -33, /* mask code other than 33 or 55 */
    zanStsVlcCodeBad       =  -74, /* the bits do not form a valid code */
    zanStsEdgeUnavailable  = -117, /* the prediction mode needs an edge marked absent */
    zanStsCoefDecodeBad    = -191, /* invalid coefficient code, or a run past the block end */
    zanStsQpBad            = -192, /* quantiser parameter outside its range */
    zanStsBitOffsetBad     = -193, /* bit offset of a cursor above 7 */
    zanStsCabacBad         = -223  /* the CABAC coder reached the end of its buffer */
};

/* --------------------------------------------------------------- version */

typedef struct {
    Zan32s      major;       /* 7 */
    Zan32s      minor;       /* 1 */
    Zan32s      update;      /* 1 */
    Zan32s      build;       /* 37466 */
    char        targetCode[4]; /* "u8" or "n8", padded with zero bytes */
    const char* name;        /* "zanVC SSSE3 (u8)" or "zanVC Pico (n8)" */
    const char* versionText; /* "7.1.1 (r37466)" */
    const char* buildDate;   /* "Sep 24 2012" */
} ZanLibraryVersion;

/* The record of the path chosen at load.  Constant, valid for the life of
 * the process; not to be freed or changed. */
const ZanLibraryVersion* zanvcGetLibVersion(void);

/* ------------------------------------------------ sum of absolute differences
 *
 * Common arguments: pCur, curStep, pRef, refStep.  The steps are not checked
 * (zero and negative steps are legal) except in zaniSAD8x8_8u32s_C2R.
 *
 * mcType selects the reference position; only mcType >> 2 is used and it is
 * not range-checked (0 to 15 is the caller's promise):
 *   0..3   R(x,y)
 *   4..7   (R(x,y) + R(x,y+1) + 1) >> 1                       one more row read
 *   8..11  (R(x,y) + R(x+1,y) + 1) >> 1                       one more column read
 *   12..15 (R(x,y) + R(x+1,y) + R(x,y+1) + R(x+1,y+1) + 2) >> 2
 * Only the reference is interpolated.
 */
ZanStatus zaniSAD16x16_8u32s(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, Zan32s refStep,
                             Zan32s* pResult, Zan32s mcType);
ZanStatus zaniSAD16x8_8u32s_C1R(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, Zan32s refStep,
                                Zan32s* pResult, Zan32s mcType);
ZanStatus zaniSAD8x8_8u32s_C1R(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, Zan32s refStep,
                               Zan32s* pResult, Zan32s mcType);

/* Zan16u samples, steps in bytes.  Each absolute difference is summed as a
 * signed 16-bit value, so samples are defined in 0..32767 only: a difference
 * above 32767 counts as negative.  In the interpolated positions the sum of
 * the samples and the rounding constant saturates at 65535 before the shift. */
ZanStatus zaniSAD16x16_16u32s_C1R(const Zan16u* pCur, Zan32s curStep, const Zan16u* pRef, Zan32s refStep,
                                  Zan32s* pResult, Zan32s mcType);
ZanStatus zaniSAD8x8_16u32s_C1R(const Zan16u* pCur, Zan32s curStep, const Zan16u* pRef, Zan32s refStep,
                                Zan32s* pResult, Zan32s mcType);
ZanStatus zaniSAD4x4_16u32s_C1R(const Zan16u* pCur, Zan32s curStep, const Zan16u* pRef, Zan32s refStep,
                                Zan32s* pResult, Zan32s mcType);

/* Full-sample position only. */
ZanStatus zaniSAD8x16_8u32s_C1R(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, Zan32s refStep,
                                Zan32s* pResult);
ZanStatus zaniSAD8x4_8u32s_C1R(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, Zan32s refStep,
                               Zan32s* pResult);
ZanStatus zaniSAD4x8_8u32s_C1R(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, Zan32s refStep,
                               Zan32s* pResult);
ZanStatus zaniSAD4x4_8u32s(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, Zan32s refStep,
                           Zan32s* pResult);

/* 8x8 block of two interleaved channels (a row is 8 pairs, 16 bytes): the
 * even bytes give *pResultU, the odd bytes *pResultV.  In the half-sample
 * positions the horizontal neighbour is 2 bytes on.
 * zanStsStepBad if curStep or refStep is below 1. */
ZanStatus zaniSAD8x8_8u32s_C2R(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, Zan32s refStep,
                               Zan32s* pResultU, Zan32s* pResultV, Zan32s mcType);

/* One SAD per sub-block of a 16x16 block, in raster order of the
 * sub-blocks: 4 results for 8x8 quadrants, 16 for 4x4 blocks (index =
 * 4 * block row + block column).  The 16-bit forms take each difference
 * modulo 65536 as a signed 16-bit value and add its magnitude. */
ZanStatus zaniSAD16x16Blocks8x8_8u16u(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, Zan32s refStep,
                                      Zan16u* pResult);
ZanStatus zaniSAD16x16Blocks4x4_8u16u(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, Zan32s refStep,
                                      Zan16u* pResult);
ZanStatus zaniSAD16x16Blocks8x8_16u32u_C1R(const Zan16u* pCur, Zan32s curStep, const Zan16u* pRef,
                                           Zan32s refStep, Zan32u* pResult);
ZanStatus zaniSAD16x16Blocks4x4_16u32u_C1R(const Zan16u* pCur, Zan32s curStep, const Zan16u* pRef,
                                           Zan32s refStep, Zan32u* pResult);

/* Candidates along one row: pResult[i] is the SAD of the block at pCur
 * against the block whose top-left sample is pRef + i, for i below
 * N = numCand rounded down to a multiple of 8 (the remainder is dropped).
 * zanStsSizeBad if N is below 8.  Where refStep and pResult are multiples
 * of 16 the kernel reads whole aligned 16-byte units: up to 15 bytes before
 * pRef and after the last candidate of each row must be readable. */
ZanStatus zaniSAD2x2xN_8u16u_C1R(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, Zan32s refStep,
                                 Zan16u* pResult, Zan32s numCand);
ZanStatus zaniSAD4x4xN_8u16u_C1R(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, Zan32s refStep,
                                 Zan16u* pResult, Zan32s numCand);
ZanStatus zaniSAD8x8xN_8u16u_C1R(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, Zan32s refStep,
                                 Zan16u* pResult, Zan32s numCand);
ZanStatus zaniSAD16x16xN_8u16u_C1R(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, Zan32s refStep,
                                   Zan16u* pResult, Zan32s numCand);

/* As xN, and *pMinIndex receives the index of the smallest result; among
 * equal results the lowest index wins. */
ZanStatus zaniSAD4x4xNI_8u16u_C1R(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, Zan32s refStep,
                                  Zan16u* pResult, Zan32s numCand, Zan32s* pMinIndex);
ZanStatus zaniSAD8x8xNI_8u16u_C1R(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, Zan32s refStep,
                                  Zan16u* pResult, Zan32s numCand, Zan32s* pMinIndex);
ZanStatus zaniSAD16x16xNI_8u16u_C1R(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, Zan32s refStep,
                                    Zan16u* pResult, Zan32s numCand, Zan32s* pMinIndex);

/* pDiff (diffStep in bytes) receives C - R as Zan16s and *pResult the sum of
 * the magnitudes.  pResult is not checked: when it is null only the
 * difference block is written. */
ZanStatus zaniSubSAD8x8_8u16s_C1R(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, Zan32s refStep,
                                  Zan16s* pDiff, Zan32s diffStep, Zan32s* pResult);

/* A 16x16 block against itself: *pFrameSAD sums |row i - row i+1| for
 * i = 0..6 and 8..14 (rows 7 and 8 are not compared), *pFieldSAD sums
 * |row i - row i+2| for i = 0..13.  Both are the low 16 bits of the sum,
 * zero-extended; the Zan16s form takes each difference in wrapping 16-bit
 * arithmetic as max(a - b, b - a). */
ZanStatus zaniFrameFieldSAD16x16_8u32s_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan32s* pFrameSAD,
                                           Zan32s* pFieldSAD);
ZanStatus zaniFrameFieldSAD16x16_16s32s_C1R(const Zan16s* pSrc, Zan32s srcStep, Zan32s* pFrameSAD,
                                            Zan32s* pFieldSAD);

/* ==== mc: half-sample motion compensation and block arithmetic ==== */

/* ==== end of mc ==== */

/* ==== diff: block differencing for encoders ==== */

/* ==== end of diff ==== */

/* ==== dct: block DCT and scan ==== */

/* ==== end of dct ==== */

/* ==== blockstats: block statistics and transformed differences ==== */

/* ==== end of blockstats ==== */

/* ==== quant263: H.263 and MPEG-4 quantisation ==== */

/* ==== end of quant263 ==== */

/* ==== mpeg12: Huffman tables and MPEG-1/2 block coding ==== */

/* ==== end of mpeg12 ==== */

/* ==== h264inv: H.264 inverse transforms and dequantisation ==== */

/* Common rules of this group.
 *
 * Coefficient blocks are in raster order (row after row), contiguous unless
 * a step is given.  Steps are in bytes, are never checked except where a
 * comment says so, and may be zero or negative.  QP and Qp6 are tested as
 * unsigned values, so a negative one is out of range.  pDC and pScaleLevel
 * are optional (null allowed).  A DC value passed through pDC is already
 * dequantised and is used as it stands.  Nothing is read or written beyond
 * the blocks named.
 *
 * Flat tables built in: LevelScale4x4(m, k) = 16 * v(m, class(k)) with the
 * normalisation v = (10,16,13), (11,18,14), (13,20,16), (14,23,18),
 * (16,25,20), (18,29,23) for m = QP % 6 and class 0 (row and column even),
 * 1 (both odd), 2 (mixed); the flat dequantiser multiplies by
 * F(QP, class) = v(QP % 6, class) << (QP / 6).
 *
 * The 4x4 inverse transform is the standard's row-then-column butterfly
 * with the odd inputs halved by an arithmetic shift; it ends in
 * (x + 32) >> 6.  "Saturating transform" below: every addition and
 * subtraction saturates to signed 16 bits, and the 32 is added (saturating)
 * to the two even terms of the column stage before the last butterfly.
 * "Wrapping 16-bit transform": every intermediate, x + 32 included, keeps its
 * low 16 bits.  The 32s forms wrap in 32 bits.
 */

/* Flat dequantisation, saturating 4x4 transform and addition to an 8-bit
 * prediction.  DC = *pDC if pDC is given, else pSrcDst[0] * F(QP, 0)
 * (32 bits).  AC 0: every residual is (Zan16s)(DC + 32) >> 6 and pSrcDst is
 * neither read beyond element 0 nor written (with pDC given it may be null).
 * AC not 0: every coefficient times its F (low 16 bits), element 0
 * replaced by the low 16 bits of DC, saturating transform, residuals stored
 * to pSrcDst.  pDst = clamp(pred + residual, 0, 255).
 * Checks: pPred or pDst null -8; QP outside 0..51 -11; pSrcDst null while
 * pDC is null or AC is not 0: -8. */
ZanStatus zaniDequantTransformResidualAndAdd_H264_16s_C1I(const Zan8u* pPred, Zan16s* pSrcDst, const Zan16s* pDC,
                                                          Zan8u* pDst, Zan32s predStep, Zan32s dstStep, Zan32s QP,
                                                          Zan32s AC);

/* In place, rows of the 4x4 block `step` bytes apart.  A given *pDC is
 * written to element 0 first.  DC = *pDC, or element 0 times F(QP, 0)
 * (32 bits).  AC 0: all 16 elements become (Zan16s)(DC + 32) >> 6.  AC not 0:
 * flat dequantisation (low 16 bits), element 0 = low 16 bits of DC, then the
 * wrapping 16-bit transform; the residuals are stored back.
 * Checks: pSrcDst null -8; QP outside 0..51 -11; step below 8 -14. */
ZanStatus zaniDequantTransformResidual_H264_16s_C1I(Zan16s* pSrcDst, Zan32s step, const Zan16s* pDC, Zan32s AC,
                                                    Zan32s QP);

/* SI/SP 4x4 block: pPredict holds the forward transform of the prediction,
 * pSrcDst the levels; on return pSrcDst holds finished samples 0..255.
 * qd = switching ? qs : qp.  For each position k (class c, A = 16, 25, 20 for
 * c = 0, 1, 2): t = pPredict[k] + ((level * A * F(qd, c)) >> 6) (32-bit wrap;
 * t = pPredict[k] alone for k > 0 when AC is 0);
 * m = (|t| * Q(qs % 6, c) + 2^(14 + qs / 6)) >> (15 + qs / 6) with the forward
 * quantisation factors Q (13107, 5243, 8066 for m = 0, ...); out = m * F(qs, c),
 * negated when t < 1, kept to 16 bits; out[0] = *pDC when pDC is given.  Then the
 * inverse transform (rows wrapping in 16 bits, columns in 32 bits),
 * (x + 32) >> 6 clamped to 0..255.
 * Checks: pSrcDst or pPredict null -8.  qp and qs are not checked; values
 * outside 0..51 give undefined (but memory-safe) results. */
ZanStatus zaniDequantTransformResidual_SISP_H264_16s_C1I(Zan16s* pSrcDst, const Zan16s* pPredict, const Zan16s* pDC,
                                                         Zan32s AC, Zan32s qp, Zan32s qs, Zan32s switching);

/* Luma DC of an Intra 16x16 macroblock, 16 values in raster order of the
 * blocks: 4x4 Hadamard in 32 bits, then (f * s + r) >> r with
 * s = v(QP % 6, 0) for QP < 18, v(QP % 6, 0) << (QP / 6 - 2) above, and r = 2
 * for QP 0..5, 1 for 6..11, 0 from 12; the low 16 bits are kept.
 * Checks: null -8; QP outside 0..51 -11. */
ZanStatus zaniTransformDequantLumaDC_H264_16s_C1I(Zan16s* pSrcDst, Zan32s QP);

/* Chroma DC 2x2 (c0 c1 / c2 c3): f0 = c0+c1+c2+c3, f1 = c0-c1+c2-c3,
 * f2 = c0+c1-c2-c3, f3 = c0-c1-c2+c3 kept in 16 bits (wrap), then
 * (f * F(QP, 0)) >> 1, low 16 bits.
 * Checks: null -8; QP outside 0..51 -11. */
ZanStatus zaniTransformDequantChromaDC_H264_16s_C1I(Zan16s* pSrcDst, Zan32s QP);

/* SI/SP chroma DC: pDCPredict holds the four DC values of the transformed
 * prediction, pSrcDst the four levels.  h = 2x2 transform of pDCPredict in
 * 16 bits; t = h + ((level * (F(qd, 0) << 4)) >> 5);
 * m = (|t| * Q(qs % 6, 0) + 2^(15 + qs / 6)) >> (16 + qs / 6); w = m * F(qs, 0)
 * with the sign of t, in 16 bits; output = 2x2 transform of w (32 bits),
 * each shifted right by 1, low 16 bits.
 * Checks: null -8; qp and qs are not checked (as above). */
ZanStatus zaniTransformDequantChromaDC_SISP_H264_16s_C1I(Zan16s* pSrcDst, const Zan16s* pDCPredict, Zan32s qp,
                                                         Zan32s qs, Zan32s switching);

/* Luma DC with a level scale: s = *pScaleLevel, or 16 * v(QP % 6, 0) when
 * pScaleLevel is null; q = QP / 6.  Hadamard (16s: each addition saturates
 * to 16 bits, rows then columns; 32s: wraps), then for QP >= 36
 * (f * s) << (q - 6) (16s: in 16 bits, wrapping), else
 * (f * s + 2^(5 - q)) >> (6 - q) (16s: saturated to 16 bits).
 * Checks: null -8; QP outside 0..51 (16s) or 0..87 (32s) -11. */
ZanStatus zaniTransformQuantInvLumaDC4x4_H264_16s_C1I(Zan16s* pSrcDst, Zan32s QP, const Zan16s* pScaleLevel);
ZanStatus zaniTransformQuantInvLumaDC4x4_H264_32s_C1I(Zan32s* pSrcDst, Zan32s QP, const Zan16s* pScaleLevel);

/* Chroma DC 2x2 with a level scale (s as for luma DC; f as in
 * zaniTransformDequantChromaDC_H264_16s_C1I but exact in 32 bits):
 * q < 5: (f * s) >> (5 - q), low 16 bits (16s); q >= 5: (f * s) << (q - 5),
 * saturated to 16 bits in the 16s form.  The 32s form wraps in 32 bits.
 * Checks: null -8; QP outside 0..39 (16s) or 0..75 (32s) -11. */
ZanStatus zaniTransformQuantInvChromaDC2x2_H264_16s_C1I(Zan16s* pSrcDst, Zan32s QP, const Zan16s* pScaleLevel);
ZanStatus zaniTransformQuantInvChromaDC2x2_H264_32s_C1I(Zan32s* pSrcDst, Zan32s QP, const Zan16s* pScaleLevel);

/* Chroma DC of 4:2:2, 8 values in raster order of four rows by two columns,
 * transformed by the 4-point Hadamard down the rows and the 2-point one
 * across.  QP' = QP + 3, q = QP' / 6, s = *pScaleLevel or 16 * v(QP' % 6, 0).
 * q >= 6: (f * s) << (q - 6); else (f * s + 2^(5 - q)) >> (6 - q).
 * 16s form: the row sums and differences c0 +- c1 of each row (and their
 * negations for rows 1 and 3) saturate to 16 bits, the rest of the transform
 * wraps in 16 bits; the left-shift branch multiplies and shifts in 16 bits,
 * the rounding branch saturates to 16 bits.  32s form: wraps in 32 bits.
 * Checks: null -8; QP outside 0..39 (16s) or 0..75 (32s) -11. */
ZanStatus zaniTransformQuantInvChromaDC2x4_H264_16s_C1I(Zan16s* pSrcDst, Zan32s QP, const Zan16s* pScaleLevel);
ZanStatus zaniTransformQuantInvChromaDC2x4_H264_32s_C1I(Zan32s* pSrcDst, Zan32s QP, const Zan16s* pScaleLevel);

/* 4x4 dequantisation with a level scale, inverse transform and addition to
 * the prediction.  scale = pScaleLevel (16 entries) or the flat
 * LevelScale4x4 row of QP % 6; q = QP / 6.  Only bit 0 of AC counts.
 * AC set: p = c * scale (32 bits); QP < 24: (p + 2^(3 - q)) >> (4 - q),
 * else p << (q - 4); element 0 replaced by *pDC if given; residuals stored
 * to pSrcDst, then pDst = clamp(pred + residual).
 * AC clear: DC = *pDC, or element 0 dequantised as above; r = (DC + 32) >> 6
 * added to every prediction sample; pSrcDst not written.
 * 16s: dequantised values saturate to 16 bits (AC set only), saturating
 * transform, r kept to 16 bits, clamp to 0..255.  32s: all in 32 bits with
 * wrap-around (r too); pred + residual saturates to signed 16 bits and is
 * clamped to 0..(1 << bitDepth) - 1.
 * Checks 16s: pPred, pDst or pSrcDst null -8; QP outside 0..51 -11.
 * Checks 32s: pPred, pSrcDst or pDst null -8; QP outside 0..87 or bitDepth
 * outside 9..14 -11. */
ZanStatus zaniTransformQuantInvAddPred4x4_H264_16s_C1IR(const Zan8u* pPred, Zan32s predStep, Zan16s* pSrcDst,
                                                        const Zan16s* pDC, Zan8u* pDst, Zan32s dstStep, Zan32s QP,
                                                        Zan32s AC, const Zan16s* pScaleLevel);
ZanStatus zaniTransformQuantInvAddPred4x4_H264_32s_C1IR(const Zan16u* pPred, Zan32s predStep, Zan32s* pSrcDst,
                                                        const Zan32s* pDC, Zan16u* pDst, Zan32s dstStep, Zan32s QP,
                                                        Zan32s AC, Zan32s bitDepth, const Zan16s* pScaleLevel);

/* 4x4 inverse transform of 16 coefficients into 16 residuals: saturating
 * transform (16s), wrapping 32-bit transform (32s).  Checks: null -8. */
ZanStatus zaniTransformResidual4x4Inv_H264_16s_C1(const Zan16s* pSrc, Zan16s* pDst);
ZanStatus zaniTransformResidual4x4Inv_H264_32s_C1(const Zan32s* pSrc, Zan32s* pDst);

/* 8x8 dequantisation in place: pInvLevelScale is the 64-entry row for
 * QP % 6 and Qp6 = QP / 6.  Qp6 >= 6: (c * s) << (Qp6 - 6) (16s: product and
 * shift in 16 bits, wrapping); Qp6 < 6: (c * s + 2^(5 - Qp6)) >> (6 - Qp6)
 * (16s: saturated to 16 bits).  The 32s form wraps in 32 bits.
 * Checks: either pointer null -8; Qp6 outside 0..8 (16s) or 0..14 (32s)
 * zanStsQpBad (-192). */
ZanStatus zaniQuantLuma8x8Inv_H264_16s_C1I(Zan16s* pSrcDst, Zan32s Qp6, const Zan16s* pInvLevelScale);
ZanStatus zaniQuantInvLuma8x8_H264_32s_C1I(Zan32s* pSrcDst, Zan32s Qp6, const Zan16s* pInvLevelScale);

/* 8x8 inverse transform of the standard (rows, then columns) added to the
 * prediction; pSrc (64 coefficients) is only read.  16s8u: every addition
 * and subtraction saturates to 16 bits (multi-term sums left to right), the
 * column stage's output x gives clamp((sat16(pred * 64 + 32 + x)) >> 6, 0,
 * 255).  32s16u: wraps in 32 bits, (x + 32 + (pred << 6)) >> 6 clamped to
 * 0..(1 << bitDepth) - 1 and stored as its low 16 bits; bitDepth is not
 * checked (the shift count is taken modulo 32).  Steps in bytes.
 * Checks: any pointer null -8. */
ZanStatus zaniTransformLuma8x8InvAddPred_H264_16s8u_C1R(const Zan8u* pPred, Zan32s predStep, const Zan16s* pSrc,
                                                        Zan8u* pDst, Zan32s dstStep);
ZanStatus zaniTransformInvAddPredLuma8x8_H264_32s16u_C1R(const Zan16u* pPred, Zan32s predStep, const Zan32s* pSrc,
                                                         Zan16u* pDst, Zan32s dstStep, Zan32s bitDepth);

/* ==== end of h264inv ==== */

/* ==== h264intra: H.264 intra prediction ==== */

/* ==== end of h264intra ==== */

#ifdef __cplusplus
}
#endif

#endif /* ZANVC_H */
