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

/* Reference positions.  With rc = roundControl & 1 (0 rounds to nearest,
 * 1 toward zero), R the reference and d the distance to the horizontal
 * neighbour of the same channel (1 for a plain plane; 2 for interleaved
 * chroma pairs: the UV forms, zaniMC16x4_8u_C1, zaniMC16x4B_8u_C1 and the
 * P2C2R forms), the prediction P(x,y) is
 *   full/full  R(x,y)
 *   full/half  (R(x,y) + R(x,y+1) + 1 - rc) >> 1                    one more row read
 *   half/full  (R(x,y) + R(x+d,y) + 1 - rc) >> 1                    d more bytes read per row
 *   half/half  (R(x,y) + R(x+d,y) + R(x,y+1) + R(x+d,y+1) + 2 - rc) >> 2
 * The full/full position does not round, so rc has no effect there.
 *
 * mcType: only bits 2 and 3 are read (mcType & 12): 0 full/full, 4 half
 * sample in y, 8 half sample in x, 12 both.  roundControl: only bit 0 is
 * read.  Neither is checked; masked, every value selects a valid position.
 *
 * Residuals are Zan16s blocks; every step, residual steps included, is in
 * bytes.  No step is checked: zero and negative steps are legal.  Output
 * samples are the exact sum saturated to 0..255.
 *
 * Every function returns zanStsNullPtr (-8) if any pointer it takes is
 * null, writing nothing, and otherwise zanStsOk.
 */

/* Forward: pDst = sat(P + residual).  Block sizes in bytes across by rows;
 * zaniMC16x8UV_8u_C1 and zaniMC16x4_8u_C1 are 8 interleaved chroma pairs
 * (16 bytes) across, their horizontal neighbour 2 bytes on; the residual is
 * interleaved the same way (16 values per row). */
ZanStatus zaniMC16x16_8u_C1(const Zan8u* pRef, Zan32s refStep, const Zan16s* pResidual, Zan32s residualStep,
                            Zan8u* pDst, Zan32s dstStep, Zan32s mcType, Zan32s roundControl);
ZanStatus zaniMC16x8_8u_C1(const Zan8u* pRef, Zan32s refStep, const Zan16s* pResidual, Zan32s residualStep,
                           Zan8u* pDst, Zan32s dstStep, Zan32s mcType, Zan32s roundControl);
ZanStatus zaniMC16x4_8u_C1(const Zan8u* pRef, Zan32s refStep, const Zan16s* pResidual, Zan32s residualStep,
                           Zan8u* pDst, Zan32s dstStep, Zan32s mcType, Zan32s roundControl);
ZanStatus zaniMC16x8UV_8u_C1(const Zan8u* pRef, Zan32s refStep, const Zan16s* pResidual, Zan32s residualStep,
                             Zan8u* pDst, Zan32s dstStep, Zan32s mcType, Zan32s roundControl);
ZanStatus zaniMC8x16_8u_C1(const Zan8u* pRef, Zan32s refStep, const Zan16s* pResidual, Zan32s residualStep,
                           Zan8u* pDst, Zan32s dstStep, Zan32s mcType, Zan32s roundControl);
ZanStatus zaniMC8x8_8u_C1(const Zan8u* pRef, Zan32s refStep, const Zan16s* pResidual, Zan32s residualStep,
                          Zan8u* pDst, Zan32s dstStep, Zan32s mcType, Zan32s roundControl);
ZanStatus zaniMC8x4_8u_C1(const Zan8u* pRef, Zan32s refStep, const Zan16s* pResidual, Zan32s residualStep,
                          Zan8u* pDst, Zan32s dstStep, Zan32s mcType, Zan32s roundControl);
ZanStatus zaniMC4x8_8u_C1(const Zan8u* pRef, Zan32s refStep, const Zan16s* pResidual, Zan32s residualStep,
                          Zan8u* pDst, Zan32s dstStep, Zan32s mcType, Zan32s roundControl);
ZanStatus zaniMC4x4_8u_C1(const Zan8u* pRef, Zan32s refStep, const Zan16s* pResidual, Zan32s residualStep,
                          Zan8u* pDst, Zan32s dstStep, Zan32s mcType, Zan32s roundControl);
ZanStatus zaniMC4x2_8u_C1(const Zan8u* pRef, Zan32s refStep, const Zan16s* pResidual, Zan32s residualStep,
                          Zan8u* pDst, Zan32s dstStep, Zan32s mcType, Zan32s roundControl);
ZanStatus zaniMC2x4_8u_C1(const Zan8u* pRef, Zan32s refStep, const Zan16s* pResidual, Zan32s residualStep,
                          Zan8u* pDst, Zan32s dstStep, Zan32s mcType, Zan32s roundControl);
ZanStatus zaniMC2x2_8u_C1(const Zan8u* pRef, Zan32s refStep, const Zan16s* pResidual, Zan32s residualStep,
                          Zan8u* pDst, Zan32s dstStep, Zan32s mcType, Zan32s roundControl);

/* Bidirectional: pDst = sat((PF + PB + 2 * residual + 1) / 2), the division
 * truncating, which equals sat(((PF + PB + 1) >> 1) + residual).  PF is
 * taken at mcTypeF from pRefF, PB at mcTypeB from pRefB, both with the same
 * rc.  Null pRefF, pRefB, pResidual or pDst: zanStsNullPtr. */
ZanStatus zaniMC16x16B_8u_C1(const Zan8u* pRefF, Zan32s refStepF, Zan32s mcTypeF, const Zan8u* pRefB,
                             Zan32s refStepB, Zan32s mcTypeB, const Zan16s* pResidual, Zan32s residualStep,
                             Zan8u* pDst, Zan32s dstStep, Zan32s roundControl);
ZanStatus zaniMC16x8B_8u_C1(const Zan8u* pRefF, Zan32s refStepF, Zan32s mcTypeF, const Zan8u* pRefB,
                            Zan32s refStepB, Zan32s mcTypeB, const Zan16s* pResidual, Zan32s residualStep,
                            Zan8u* pDst, Zan32s dstStep, Zan32s roundControl);
ZanStatus zaniMC16x4B_8u_C1(const Zan8u* pRefF, Zan32s refStepF, Zan32s mcTypeF, const Zan8u* pRefB,
                            Zan32s refStepB, Zan32s mcTypeB, const Zan16s* pResidual, Zan32s residualStep,
                            Zan8u* pDst, Zan32s dstStep, Zan32s roundControl);
ZanStatus zaniMC16x8BUV_8u_C1(const Zan8u* pRefF, Zan32s refStepF, Zan32s mcTypeF, const Zan8u* pRefB,
                              Zan32s refStepB, Zan32s mcTypeB, const Zan16s* pResidual, Zan32s residualStep,
                              Zan8u* pDst, Zan32s dstStep, Zan32s roundControl);
ZanStatus zaniMC8x16B_8u_C1(const Zan8u* pRefF, Zan32s refStepF, Zan32s mcTypeF, const Zan8u* pRefB,
                            Zan32s refStepB, Zan32s mcTypeB, const Zan16s* pResidual, Zan32s residualStep,
                            Zan8u* pDst, Zan32s dstStep, Zan32s roundControl);
ZanStatus zaniMC8x8B_8u_C1(const Zan8u* pRefF, Zan32s refStepF, Zan32s mcTypeF, const Zan8u* pRefB,
                           Zan32s refStepB, Zan32s mcTypeB, const Zan16s* pResidual, Zan32s residualStep,
                           Zan8u* pDst, Zan32s dstStep, Zan32s roundControl);
ZanStatus zaniMC8x4B_8u_C1(const Zan8u* pRefF, Zan32s refStepF, Zan32s mcTypeF, const Zan8u* pRefB,
                           Zan32s refStepB, Zan32s mcTypeB, const Zan16s* pResidual, Zan32s residualStep,
                           Zan8u* pDst, Zan32s dstStep, Zan32s roundControl);
ZanStatus zaniMC4x8B_8u_C1(const Zan8u* pRefF, Zan32s refStepF, Zan32s mcTypeF, const Zan8u* pRefB,
                           Zan32s refStepB, Zan32s mcTypeB, const Zan16s* pResidual, Zan32s residualStep,
                           Zan8u* pDst, Zan32s dstStep, Zan32s roundControl);
ZanStatus zaniMC4x4B_8u_C1(const Zan8u* pRefF, Zan32s refStepF, Zan32s mcTypeF, const Zan8u* pRefB,
                           Zan32s refStepB, Zan32s mcTypeB, const Zan16s* pResidual, Zan32s residualStep,
                           Zan8u* pDst, Zan32s dstStep, Zan32s roundControl);
ZanStatus zaniMC4x2B_8u_C1(const Zan8u* pRefF, Zan32s refStepF, Zan32s mcTypeF, const Zan8u* pRefB,
                           Zan32s refStepB, Zan32s mcTypeB, const Zan16s* pResidual, Zan32s residualStep,
                           Zan8u* pDst, Zan32s dstStep, Zan32s roundControl);
ZanStatus zaniMC2x4B_8u_C1(const Zan8u* pRefF, Zan32s refStepF, Zan32s mcTypeF, const Zan8u* pRefB,
                           Zan32s refStepB, Zan32s mcTypeB, const Zan16s* pResidual, Zan32s residualStep,
                           Zan8u* pDst, Zan32s dstStep, Zan32s roundControl);
ZanStatus zaniMC2x2B_8u_C1(const Zan8u* pRefF, Zan32s refStepF, Zan32s mcTypeF, const Zan8u* pRefB,
                           Zan32s refStepB, Zan32s mcTypeB, const Zan16s* pResidual, Zan32s residualStep,
                           Zan8u* pDst, Zan32s dstStep, Zan32s roundControl);

/* Interleaved chroma, 8 pairs (16 bytes) across by 8 or 4 rows, neighbour 2
 * bytes on; the residual lies in two planes of 8 values per row that share
 * residualStep: output byte 2x takes pResidualU[x], byte 2x+1
 * pResidualV[x].  All pointers are checked for null. */
ZanStatus zaniMC8x8_16s8u_P2C2R(const Zan8u* pRef, Zan32s refStep, const Zan16s* pResidualU,
                                const Zan16s* pResidualV, Zan32s residualStep, Zan8u* pDst, Zan32s dstStep,
                                Zan32s mcType, Zan32s roundControl);
ZanStatus zaniMC8x4_16s8u_P2C2R(const Zan8u* pRef, Zan32s refStep, const Zan16s* pResidualU,
                                const Zan16s* pResidualV, Zan32s residualStep, Zan8u* pDst, Zan32s dstStep,
                                Zan32s mcType, Zan32s roundControl);
ZanStatus zaniMC8x8B_16s8u_P2C2R(const Zan8u* pRefF, Zan32s refStepF, Zan32s mcTypeF, const Zan8u* pRefB,
                                 Zan32s refStepB, Zan32s mcTypeB, const Zan16s* pResidualU,
                                 const Zan16s* pResidualV, Zan32s residualStep, Zan8u* pDst, Zan32s dstStep,
                                 Zan32s roundControl);
ZanStatus zaniMC8x4B_16s8u_P2C2R(const Zan8u* pRefF, Zan32s refStepF, Zan32s mcTypeF, const Zan8u* pRefB,
                                 Zan32s refStepB, Zan32s mcTypeB, const Zan16s* pResidualU,
                                 const Zan16s* pResidualV, Zan32s residualStep, Zan8u* pDst, Zan32s dstStep,
                                 Zan32s roundControl);

/* Plain copies of a 16x16 or 8x8 block. */
ZanStatus zaniCopy16x16_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep);
ZanStatus zaniCopy8x8_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep);

/* acc selects the position of the HP and interpolate-average forms: only
 * its two low bits are read, bit 0 half sample in x, bit 1 half sample in y
 * (1 half/full, 2 full/half, 3 half/half); d is 1.  roundControl as above.
 * HP copies: pDst = P(x,y). */
ZanStatus zaniCopy16x16HP_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep, Zan32s acc,
                                 Zan32s roundControl);
ZanStatus zaniCopy16x8HP_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep, Zan32s acc,
                                Zan32s roundControl);
ZanStatus zaniCopy8x8HP_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep, Zan32s acc,
                               Zan32s roundControl);
ZanStatus zaniCopy8x4HP_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep, Zan32s acc,
                               Zan32s roundControl);

/* pSrcDst = (P(x,y) + pSrcDst + 1) >> 1, P from pSrc at acc, roundControl. */
ZanStatus zaniInterpolateAverage16x16_8u_C1IR(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pSrcDst,
                                              Zan32s srcDstStep, Zan32s acc, Zan32s roundControl);
ZanStatus zaniInterpolateAverage16x8_8u_C1IR(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pSrcDst,
                                             Zan32s srcDstStep, Zan32s acc, Zan32s roundControl);
ZanStatus zaniInterpolateAverage8x8_8u_C1IR(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pSrcDst,
                                            Zan32s srcDstStep, Zan32s acc, Zan32s roundControl);
ZanStatus zaniInterpolateAverage8x4_8u_C1IR(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pSrcDst,
                                            Zan32s srcDstStep, Zan32s acc, Zan32s roundControl);

/* Averages: pDst = (a + b + 1) >> 1; the IR forms average pSrc into pSrcDst. */
ZanStatus zaniAverage16x16_8u_C1R(const Zan8u* pSrc1, Zan32s src1Step, const Zan8u* pSrc2, Zan32s src2Step,
                                  Zan8u* pDst, Zan32s dstStep);
ZanStatus zaniAverage8x8_8u_C1R(const Zan8u* pSrc1, Zan32s src1Step, const Zan8u* pSrc2, Zan32s src2Step,
                                Zan8u* pDst, Zan32s dstStep);
ZanStatus zaniAverage16x16_8u_C1IR(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pSrcDst, Zan32s srcDstStep);
ZanStatus zaniAverage8x8_8u_C1IR(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pSrcDst, Zan32s srcDstStep);

/* 8x8 in place: the sample and the residual are added in wrapping 16-bit
 * arithmetic (255 + 32767 wraps to -32514) and the sum is saturated to
 * 0..255. */
ZanStatus zaniAdd8x8_16s8u_C1IRS(const Zan16s* pResidual, Zan32s residualStep, Zan8u* pSrcDst,
                                 Zan32s srcDstStep);
/* 8x8: pDst = sat(P(x,y) + residual), P from pRef at acc, roundControl. */
ZanStatus zaniAdd8x8HP_16s8u_C1RS(const Zan16s* pResidual, Zan32s residualStep, const Zan8u* pRef,
                                  Zan32s refStep, Zan8u* pDst, Zan32s dstStep, Zan32s acc, Zan32s roundControl);
/* 8x8 in place: every sample becomes sat(sample + value). */
ZanStatus zaniAddC8x8_16s8u_C1IR(Zan16s value, Zan8u* pSrcDst, Zan32s srcDstStep);

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

/* ==== end of h264inv ==== */

/* ==== h264intra: H.264 intra prediction ==== */

/* ==== end of h264intra ==== */

#ifdef __cplusplus
}
#endif

#endif /* ZANVC_H */
