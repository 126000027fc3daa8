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

/* Transposed inverse DCT of one 8x8 block of Zan16s coefficients (64,
 * packed, any alignment).  The block stands transposed: pSrc[8 * u + v] is
 * the coefficient of horizontal frequency u and vertical frequency v, so
 * pSrc[1] is the first vertical frequency.  dstStep is in bytes.
 * count steers the work and is the caller's promise; the coefficients are
 * not looked at:
 *   below 0   all zero: the Zan16s forms write 0 everywhere; the Zan8u
 *             forms treat it as 0;
 *   0         DC only: every sample is pSrc[0] / 8 truncated toward zero,
 *             saturated;
 *   1 to 9    only the 4x4 corner of low frequencies is used (anything
 *             outside it is ignored);
 *   10 up     the whole block.
 * The transform: two fixed-point passes with the Q16 cosines 65536, 64276,
 * 60547, 54491, 46340, 36409, 25079, 12785.  Pass 1 (along the stored
 * columns) scales the coefficients by 4 and rounds every product as
 * (x + 0x8000) >> 16, its sums wrapping at 16 bits; pass 2 sums exactly and
 * rounds with 0x28000 at the 2^18 scale, 2.5 units of 0x10000 rather than a
 * half unit, which lifts every output by 1/8 on average; the rounding is kept
 * as it stands.  The peak error against an exact inverse is 1 for
 * coefficients from samples in -300..300.
 * Results saturate to -256..255 (Zan16s) or 0..255 (Zan8u).
 * Checks: any null pointer zanStsNullPtr, then dstStep below 1 zanStsStepBad.
 * The P2C2R forms transform two blocks (each with its own count) into one
 * interleaved block: row y holds U0 V0 U1 V1 ... U7 V7. */
ZanStatus zaniDCT8x8Inv_AANTransposed_16s_C1R(const Zan16s* pSrc, Zan16s* pDst, Zan32s dstStep, Zan32s count);
ZanStatus zaniDCT8x8Inv_AANTransposed_16s8u_C1R(const Zan16s* pSrc, Zan8u* pDst, Zan32s dstStep, Zan32s count);
ZanStatus zaniDCT8x8Inv_AANTransposed_16s_P2C2R(const Zan16s* pSrcU, const Zan16s* pSrcV, Zan16s* pDst,
                                                Zan32s dstStep, Zan32s countU, Zan32s countV);
ZanStatus zaniDCT8x8Inv_AANTransposed_16s8u_P2C2R(const Zan16s* pSrcU, const Zan16s* pSrcV, Zan8u* pDst,
                                                  Zan32s dstStep, Zan32s countU, Zan32s countV);

/* Inverse DCT or DC fill of two blocks in normal layout (pSrc[8 * v + u]),
 * interleaved into an 8x8 block of pairs (16 bytes a row, dstStep bytes
 * apart).  flag & 3: bit 1 set means the first block (U) is DC only, bit 0
 * the second (V).  A DC-only plane is filled with (DC >> 3) & 255, wrapping,
 * not saturated (DC 2056 gives 1); the other planes get the accurate plain
 * inverse DCT saturated to 0..255.  Checks: any null pointer
 * zanStsNullPtr.  dstStep is not checked. */
ZanStatus zaniDCT8x8InvOrSet_16s8u_P2C2(const Zan16s* pSrcU, const Zan16s* pSrcV, Zan8u* pDst, Zan32s dstStep,
                                        Zan32s flag);

/* Splits an 8x8 block of interleaved pairs (16 bytes a row, srcStep bytes
 * apart) into its two planes and writes the forward DCT of the even bytes to
 * pDstU and of the odd bytes to pDstV (64 coefficients each, normal layout,
 * F = c(u) c(v) / 4 * sum, rounded to nearest; DC = 8 * mean).  Checks: any
 * null pointer zanStsNullPtr.  srcStep is not checked. */
ZanStatus zaniDCT8x8Fwd_8u16s_C2P2(const Zan8u* pSrc, Zan32s srcStep, Zan16s* pDstU, Zan16s* pDstV);

/* DV 2-4-8 transforms of one field-coded block of 64 Zan16s, in place.
 * Rows 0-3 of the coefficient block hold the 4x8 transform of the sums of
 * lines 2z and 2z+1, rows 4-7 that of their differences; the weights are
 * C(k) cos(...), C(0) = 1/(2 sqrt 2), C(k) = 1/2, for the vertical 4-point
 * and the horizontal 8-point transform.  Fixed-point, rounded half up in
 * each pass; within 1 of the exact transform for samples in -256..255.
 * zaniDCT8x4x2To4x4Inv_DV_16s_C1I keeps the sum rows and the four lowest
 * horizontal frequencies and writes the 4x4 block of 2x2 means packed into
 * pSrcDst[0..15] (4 per row); entries 16 to 63 are left as they were.
 * Checks: a null pointer zanStsNullPtr. */
ZanStatus zaniDCT2x4x8Frw_16s_C1I(Zan16s* pSrcDst);
ZanStatus zaniDCT2x4x8Inv_16s_C1I(Zan16s* pSrcDst);
ZanStatus zaniDCT8x4x2To4x4Inv_DV_16s_C1I(Zan16s* pSrcDst);

/* Scans with the table chosen by scan: 1 alternate vertical, 2 alternate
 * horizontal, any other value zigzag.
 * zaniScanFwd_16s_C1: pDst[k] = pSrc[table[k]].  With countNonZero below 20
 * only the first countNonZero non-zero values in scan order are kept (the
 * rest of pDst is zero); from 20 up all 64 are copied.  Checks: null pointer
 * zanStsNullPtr, countNonZero outside 1..64 zanStsOutOfRange.
 * zaniScanInv_16s_C1: pDst is cleared except for pDst[0] = pSrc[0], then
 * pDst[table[k]] = pSrc[k] for k = 1..lastIndex.  Checks: null pointer
 * zanStsNullPtr, lastIndex outside 0..63 zanStsOutOfRange.
 * Source and destination should not overlap; if they do, the result is
 * that of the steps above in their order (ScanInv in place keeps only the
 * DC). */
ZanStatus zaniScanFwd_16s_C1(const Zan16s* pSrc, Zan16s* pDst, Zan32s countNonZero, Zan32s scan);
ZanStatus zaniScanInv_16s_C1(const Zan16s* pSrc, Zan16s* pDst, Zan32s lastIndex, Zan32s scan);

/* ==== end of dct ==== */

/* ==== blockstats: block statistics and transformed differences ==== */

/* ==== end of blockstats ==== */

/* ==== quant263: H.263 and MPEG-4 quantisation ==== */

/* ==== end of quant263 ==== */

/* ==== mpeg12: Huffman tables and MPEG-1/2 block coding ==== */

/* ==== end of mpeg12 ==== */

/* ==== h264inv: H.264 inverse transforms and dequantisation ==== */

/* ==== end of h264inv ==== */

/* ==== h264intra: H.264 intra prediction ==== */

/* ==== end of h264intra ==== */

#ifdef __cplusplus
}
#endif

#endif /* ZANVC_H */
