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

/* ==== frame: types, statuses and the version record ==== */

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

/* A size, width then height.  Passed by value. */
typedef struct { Zan32s width; Zan32s height; } ZaniSize;
/* A rectangle: the top-left corner, then width and height. */
typedef struct { Zan32s x; Zan32s y; Zan32s width; Zan32s height; } ZaniRect;
/* A point: column, then row. */
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

/* What zanvcGetLibVersion returns: the release this library is and the path
 * chosen at load. */
typedef struct {
    Zan32s      major;       /* major version: a change breaks compatibility */
    Zan32s      minor;       /* minor version: additions only */
    Zan32s      update;      /* update: fixes only */
    Zan32s      build;       /* build number */
    char        targetCode[4]; /* "u8" or "n8", padded with zero bytes */
    const char* name;        /* "zanVC SSSE3 (u8)" or "zanVC Pico (n8)" */
    const char* versionText; /* "major.minor.update (rbuild)" */
    const char* buildDate;   /* the release date, "Mmm dd yyyy" */
} ZanLibraryVersion;

/* The record of the path chosen at load.  Constant, valid for the life of
 * the process; not to be freed or changed. */
const ZanLibraryVersion* zanvcGetLibVersion(void);

/* ==== end of frame ==== */

/* ==== sad: sum of absolute differences ==== */

/* Common arguments: pCur, curStep, pRef, refStep.  The steps are not checked
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

/* ==== end of sad ==== */

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

/* Residual of a block against its prediction, for encoders.  Steps are in
 * bytes (also for the Zan16s outputs) and are not checked: zero and
 * negative steps are legal.  The only failure is zanStsNullPtr, for a null
 * among the pointers each function tests; then nothing is written.
 *
 * mcType names the reference position; only its bits 2 and 3 are read
 * (mcType & 12), so any value is safe.  roundControl: only bit 0 (rc) is
 * read.  Predicted sample P(x,y) from the reference R:
 *   mcType & 12 == 0   R(x,y)
 *               == 4   (R(x,y) + R(x,y+1) + 1 - rc) >> 1              one more row read
 *               == 8   (R(x,y) + R(x+1,y) + 1 - rc) >> 1              one more column read
 *               == 12  (R(x,y) + R(x+1,y) + R(x,y+1) + R(x+1,y+1) + 2 - rc) >> 2
 *                                                                      one more row and column
 * The difference is C - P as Zan16s (C the current block).  No byte beyond
 * the block and the extra row or column of its position is read.
 */

/* W x H blocks (16x16, 16x8, 8x16, 8x8, 8x4).  pDiff (diffStep) receives
 * C - P.  pPredictor is optional: when it is not null it receives P
 * (predictorStep), formed in the same pass; it is not tested.  Tested for
 * null: pCur, pRef, pDiff. */
ZanStatus zaniGetDiff16x16_8u16s_C1(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, Zan32s refStep,
                                    Zan16s* pDiff, Zan32s diffStep, Zan16s* pPredictor, Zan32s predictorStep,
                                    Zan32s mcType, Zan32s roundControl);
ZanStatus zaniGetDiff16x8_8u16s_C1(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, Zan32s refStep,
                                   Zan16s* pDiff, Zan32s diffStep, Zan16s* pPredictor, Zan32s predictorStep,
                                   Zan32s mcType, Zan32s roundControl);
ZanStatus zaniGetDiff8x16_8u16s_C1(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, Zan32s refStep,
                                   Zan16s* pDiff, Zan32s diffStep, Zan16s* pPredictor, Zan32s predictorStep,
                                   Zan32s mcType, Zan32s roundControl);
ZanStatus zaniGetDiff8x8_8u16s_C1(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, Zan32s refStep,
                                  Zan16s* pDiff, Zan32s diffStep, Zan16s* pPredictor, Zan32s predictorStep,
                                  Zan32s mcType, Zan32s roundControl);
ZanStatus zaniGetDiff8x4_8u16s_C1(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, Zan32s refStep,
                                  Zan16s* pDiff, Zan32s diffStep, Zan16s* pPredictor, Zan32s predictorStep,
                                  Zan32s mcType, Zan32s roundControl);

/* Bidirectional: P = (P0 + P1 + 1) >> 1, P0 from pRefF at mcTypeF and P1
 * from pRefB at mcTypeB, both with the same rc.  No predictor output.
 * Tested for null: pCur, pRefF, pRefB, pDiff. */
ZanStatus zaniGetDiff16x16B_8u16s_C1(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRefF, Zan32s refStepF,
                                     Zan32s mcTypeF, const Zan8u* pRefB, Zan32s refStepB, Zan32s mcTypeB,
                                     Zan16s* pDiff, Zan32s diffStep, Zan32s roundControl);
ZanStatus zaniGetDiff16x8B_8u16s_C1(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRefF, Zan32s refStepF,
                                    Zan32s mcTypeF, const Zan8u* pRefB, Zan32s refStepB, Zan32s mcTypeB,
                                    Zan16s* pDiff, Zan32s diffStep, Zan32s roundControl);
ZanStatus zaniGetDiff8x16B_8u16s_C1(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRefF, Zan32s refStepF,
                                    Zan32s mcTypeF, const Zan8u* pRefB, Zan32s refStepB, Zan32s mcTypeB,
                                    Zan16s* pDiff, Zan32s diffStep, Zan32s roundControl);
ZanStatus zaniGetDiff8x8B_8u16s_C1(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRefF, Zan32s refStepF,
                                   Zan32s mcTypeF, const Zan8u* pRefB, Zan32s refStepB, Zan32s mcTypeB,
                                   Zan16s* pDiff, Zan32s diffStep, Zan32s roundControl);
ZanStatus zaniGetDiff8x4B_8u16s_C1(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRefF, Zan32s refStepF,
                                   Zan32s mcTypeF, const Zan8u* pRefB, Zan32s refStepB, Zan32s mcTypeB,
                                   Zan16s* pDiff, Zan32s diffStep, Zan32s roundControl);

/* Two interleaved chroma channels: a row is 8 pairs (16 bytes), even bytes
 * U, odd bytes V; 8 or 4 rows.  The half-sample neighbour of the same
 * channel lies 2 bytes on (so HF and HH read 2 more bytes a row).  pDiffU
 * and pDiffV receive the 8 differences of each channel per row.  No
 * predictor output.  Every pointer is tested for null. */
ZanStatus zaniGetDiff8x8_8u16s_C2P2(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, Zan32s refStep,
                                    Zan16s* pDiffU, Zan32s diffStepU, Zan16s* pDiffV, Zan32s diffStepV,
                                    Zan32s mcType, Zan32s roundControl);
ZanStatus zaniGetDiff8x4_8u16s_C2P2(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, Zan32s refStep,
                                    Zan16s* pDiffU, Zan32s diffStepU, Zan16s* pDiffV, Zan32s diffStepV,
                                    Zan32s mcType, Zan32s roundControl);
ZanStatus zaniGetDiff8x8B_8u16s_C2P2(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRefF, Zan32s refStepF,
                                     Zan32s mcTypeF, const Zan8u* pRefB, Zan32s refStepB, Zan32s mcTypeB,
                                     Zan16s* pDiffU, Zan32s diffStepU, Zan16s* pDiffV, Zan32s diffStepV,
                                     Zan32s roundControl);
ZanStatus zaniGetDiff8x4B_8u16s_C2P2(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRefF, Zan32s refStepF,
                                     Zan32s mcTypeF, const Zan8u* pRefB, Zan32s refStepB, Zan32s mcTypeB,
                                     Zan16s* pDiffU, Zan32s diffStepU, Zan16s* pDiffV, Zan32s diffStepV,
                                     Zan32s roundControl);

/* 4x4 plain difference C - R, no position.  Tested for null: all three. */
ZanStatus zaniGetDiff4x4_8u16s_C1(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, Zan32s refStep,
                                  Zan16s* pDiff, Zan32s diffStep);

/* pDst = S1 - S2 as Zan16s, steps in bytes.  The Zan16u forms subtract in
 * 16 bits and wrap: 0 - 65535 gives 1, 40000 - 0 gives -25536.  Tested for
 * null: all three pointers. */
ZanStatus zaniSub16x16_8u16s_C1R(const Zan8u* pSrc1, Zan32s src1Step, const Zan8u* pSrc2, Zan32s src2Step,
                                 Zan16s* pDst, Zan32s dstStep);
ZanStatus zaniSub8x8_8u16s_C1R(const Zan8u* pSrc1, Zan32s src1Step, const Zan8u* pSrc2, Zan32s src2Step,
                               Zan16s* pDst, Zan32s dstStep);
ZanStatus zaniSub4x4_8u16s_C1R(const Zan8u* pSrc1, Zan32s src1Step, const Zan8u* pSrc2, Zan32s src2Step,
                               Zan16s* pDst, Zan32s dstStep);
ZanStatus zaniSub8x8_16u16s_C1R(const Zan16u* pSrc1, Zan32s src1Step, const Zan16u* pSrc2, Zan32s src2Step,
                                Zan16s* pDst, Zan32s dstStep);
ZanStatus zaniSub4x4_16u16s_C1R(const Zan16u* pSrc1, Zan32s src1Step, const Zan16u* pSrc2, Zan32s src2Step,
                                Zan16s* pDst, Zan32s dstStep);

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

/* Common rules.  Every function first returns zanStsNullPtr (-8) if any
 * pointer it takes is null (pDiff, pDiffU and pDiffV may be null); steps and
 * position selectors are not checked, and a zero or negative step is legal.
 * Steps are in bytes, also for 16-bit samples.  Nothing is written on failure.
 *
 * mcType selects a reference position as for the SAD functions:
 *   0  R(x,y)
 *   4  (R(x,y) + R(x,y+1) + 1) >> 1                         one more row read
 *   8  (R(x,y) + R(x+1,y) + 1) >> 1                         one more column read
 *   12 (R(x,y) + R(x+1,y) + R(x,y+1) + R(x+1,y+1) + 2) >> 2  both
 */

/* SATD: the difference pSrc1 - pSrc2 is cut into 4x4 tiles, each goes
 * through an unnormalised 4x4 Hadamard transform, and the absolute
 * coefficients of all tiles are summed, exactly (the result is always even).
 * Reads exactly the block at each pointer. */
ZanStatus zaniSATD4x4_8u32s_C1R(const Zan8u* pSrc1, Zan32s src1Step, const Zan8u* pSrc2, Zan32s src2Step,
                                Zan32s* pResult);
ZanStatus zaniSATD4x8_8u32s_C1R(const Zan8u* pSrc1, Zan32s src1Step, const Zan8u* pSrc2, Zan32s src2Step,
                                Zan32s* pResult);
ZanStatus zaniSATD8x4_8u32s_C1R(const Zan8u* pSrc1, Zan32s src1Step, const Zan8u* pSrc2, Zan32s src2Step,
                                Zan32s* pResult);
ZanStatus zaniSATD8x8_8u32s_C1R(const Zan8u* pSrc1, Zan32s src1Step, const Zan8u* pSrc2, Zan32s src2Step,
                                Zan32s* pResult);
ZanStatus zaniSATD8x16_8u32s_C1R(const Zan8u* pSrc1, Zan32s src1Step, const Zan8u* pSrc2, Zan32s src2Step,
                                 Zan32s* pResult);
ZanStatus zaniSATD16x8_8u32s_C1R(const Zan8u* pSrc1, Zan32s src1Step, const Zan8u* pSrc2, Zan32s src2Step,
                                 Zan32s* pResult);
ZanStatus zaniSATD16x16_8u32s_C1R(const Zan8u* pSrc1, Zan32s src1Step, const Zan8u* pSrc2, Zan32s src2Step,
                                  Zan32s* pResult);

/* SAT8x8D: one 8x8 Hadamard transform of the difference, in signed 16-bit
 * arithmetic that saturates at every step.  d = sat(a - b) with the samples
 * read as signed 16-bit values (so 16-bit samples are defined in 0..32767);
 * three butterfly stages down each column (pairs at distance 1, 2, 4), then
 * two along each row (distance 1, 2); the last row stage is replaced by
 * max(|a|, |b|) of the pair at distance 4 (magnitudes saturate at 32767).
 * With m[k][v] the maximum of pair k (0..3) in row v, the partial sums are
 *   s[v] = ((m[0][v] + m[1][v]) + m[2][v]) + m[3][v]
 * then s[v] + s[v+4] (v < 4), then lanes v and v+2 (v < 2), then lanes 0
 * and 1, each addition saturating at 32767; the result is twice the total.
 * Up to saturation this is the exact sum of the absolute coefficients; an
 * extreme block comes out lower. */
ZanStatus zaniSAT8x8D_8u32s_C1R(const Zan8u* pSrc1, Zan32s src1Step, const Zan8u* pSrc2, Zan32s src2Step,
                                Zan32s* pResult);
ZanStatus zaniSAT8x8D_16u32s_C1R(const Zan16u* pSrc1, Zan32s src1Step, const Zan16u* pSrc2, Zan32s src2Step,
                                 Zan32s* pResult);

/* VC-1 Hadamard sum: the unnormalised 8x8 Hadamard transform of the block
 * (8-bit samples widened first), three butterfly stages down each column and
 * then three along each row (pairs at distance 1, 2, 4, a + b to the lower
 * index and a - b to the higher), each step saturating to 16 bits.  pDst
 * receives the 64 coefficients in row-major natural (Sylvester) order:
 *   pDst[8v + u] = sum over x, y of (-1)^(bits(u & x) + bits(v & y)) p(x, y).
 * *pSum = sum of |pDst[i]| (magnitudes saturate at 32767): for each column u
 * the rows 0..7 are added in order, then columns u and u+4, u and u+2, 0
 * and 1, every addition saturating at 32767. */
ZanStatus zaniHadamard8x8Sum_VC1_8u16s(const Zan8u* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s* pSum);
ZanStatus zaniHadamard8x8Sum_VC1_16s(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s* pSum);

/* Sum of squared differences of pSrc against the reference at mcType
 * (mcType >> 2 selects the position unchecked; the caller keeps mcType in
 * 0..15).  Reads one more row and/or column of the reference as the
 * position needs. */
ZanStatus zaniSSD8x8_8u32s_C1R(const Zan8u* pSrc, Zan32s srcStep, const Zan8u* pRef, Zan32s refStep,
                               Zan32s* pResult, Zan32s mcType);
ZanStatus zaniSSD4x4_8u32s_C1R(const Zan8u* pSrc, Zan32s srcStep, const Zan8u* pRef, Zan32s refStep,
                               Zan32s* pResult, Zan32s mcType);

/* 16x16 sum of squared differences.  mcType outside 0, 4, 8, 12: zanStsOk
 * and nothing written.  The B form averages the two references
 * (r1 + r2 + 1) >> 1; either mcType outside the four values likewise writes
 * nothing and returns zanStsOk. */
ZanStatus zaniSqrDiff16x16_8u32s(const Zan8u* pSrc, Zan32s srcStep, const Zan8u* pRef, Zan32s refStep,
                                 Zan32s mcType, Zan32s* pResult);
ZanStatus zaniSqrDiff16x16B_8u32s(const Zan8u* pSrc, Zan32s srcStep, const Zan8u* pRef1, Zan32s ref1Step,
                                  Zan32s mcType1, const Zan8u* pRef2, Zan32s ref2Step, Zan32s mcType2,
                                  Zan32s* pResult);

/* Q - (S * S) / 256 over the 256 samples (S sum, Q sum of squares; S * S
 * taken without overflow, truncating division).  Not divided by 256. */
ZanStatus zaniVariance16x16_8u32s(const Zan8u* pSrc, Zan32s srcStep, Zan32s* pResult);

/* 8x8 variance and plain sum S (both families write the sum, not a mean).
 * In 32-bit float: m = S / 64, v = Q / 64 - m * m, truncated toward zero.
 * For 16-bit samples Q is the sum of squares modulo 2^32 read as signed. */
ZanStatus zaniVarSum8x8_8u32s_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan32s* pVar, Zan32s* pSum);
ZanStatus zaniVarSum8x8_16s32s_C1R(const Zan16s* pSrc, Zan32s srcStep, Zan32s* pVar, Zan32s* pSum);
ZanStatus zaniVarMean8x8_8u32s_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan32s* pVar, Zan32s* pMean);
ZanStatus zaniVarMean8x8_16s32s_C1R(const Zan16s* pSrc, Zan32s srcStep, Zan32s* pVar, Zan32s* pMean);

/* Variance and mean of the difference, per 8x8 block (16x8: left, right;
 * 16x16: the four in row order).  r is the reference at mcType (its bits of
 * value 4 and 8 add the row below and the next column); E = sum (cur - r)^2,
 * R = sum r; then in 32 bits mean = (pSrcSum[i] - R) / 8 (truncating) and
 * var = mean * mean < E ? (E - mean * mean) / 64 : 0.  The 16x16 form
 * returns zanStsOk with nothing written for mcType outside 0, 4, 8, 12. */
ZanStatus zaniVarMeanDiff16x16_8u32s_C1R(const Zan8u* pSrc, Zan32s srcStep, const Zan8u* pRef, Zan32s refStep,
                                         const Zan32s* pSrcSum, Zan32s* pVar, Zan32s* pMean, Zan32s mcType);
ZanStatus zaniVarMeanDiff16x8_8u32s_C1R(const Zan8u* pSrc, Zan32s srcStep, const Zan8u* pRef, Zan32s refStep,
                                        const Zan32s* pSrcSum, Zan32s* pVar, Zan32s* pMean, Zan32s mcType);

/* Sum of |sample - mean|, mean = (S + 32) >> 6 (8x8) or (S + 128) >> 8. */
ZanStatus zaniMeanAbsDev8x8_8u32s_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan32s* pResult);
ZanStatus zaniMeanAbsDev16x16_8u32s_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan32s* pResult);

/* Sums of pSrc - pPred per 4x4 sub-block in row order (8x8: 4 sums, 16x16:
 * 16).  8-bit forms saturate each sum to Zan16s.  If pDiff is not null the
 * differences go there too, sub-block after sub-block, raster order inside
 * each (pDiff[16k + 4y + x]); 16-bit forms store them modulo 2^16 and sum
 * them exactly.  The C2P2 form reads 8x8 interleaved U, V pairs (16 bytes
 * a row) and treats each plane alike, each pDiff optional. */
ZanStatus zaniSumsDiff8x8Blocks4x4_8u16s_C1(const Zan8u* pSrc, Zan32s srcStep, const Zan8u* pPred,
                                            Zan32s predStep, Zan16s* pSums, Zan16s* pDiff);
ZanStatus zaniSumsDiff16x16Blocks4x4_8u16s_C1(const Zan8u* pSrc, Zan32s srcStep, const Zan8u* pPred,
                                              Zan32s predStep, Zan16s* pSums, Zan16s* pDiff);
ZanStatus zaniSumsDiff8x8Blocks4x4_16u32s_C1R(const Zan16u* pSrc, Zan32s srcStep, const Zan16u* pPred,
                                              Zan32s predStep, Zan32s* pSums, Zan16s* pDiff);
ZanStatus zaniSumsDiff16x16Blocks4x4_16u32s_C1R(const Zan16u* pSrc, Zan32s srcStep, const Zan16u* pPred,
                                                Zan32s predStep, Zan32s* pSums, Zan16s* pDiff);
ZanStatus zaniSumsDiff8x8Blocks4x4_8u16s_C2P2(const Zan8u* pSrc, Zan32s srcStep, const Zan8u* pPredU,
                                              Zan32s predStepU, const Zan8u* pPredV, Zan32s predStepV,
                                              Zan16s* pSumsU, Zan16s* pDiffU, Zan16s* pSumsV, Zan16s* pDiffV);

/* Edge test of a 16x16 block.  For each sample but those of the last row
 * and last column, d1 = |p(x,y) - p(x+1,y)| and d2 = |p(x,y) - p(x,y+1)|;
 * the sample counts if either exceeds edgeDifference.  8-bit form: both are
 * limited to 127 and compared as signed bytes with the low byte of
 * edgeDifference, so 128..255 counts every sample.  Rows are scanned from
 * the top and the scan stops (reading no further row) as soon as the count
 * exceeds edgeCount: *pResult = 1; else 0.  16-bit form: edgeDifference
 * above 65535 or edgeCount above 256 returns zanStsOk with nothing written. */
ZanStatus zaniEdgesDetect16x16_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan32u edgeDifference, Zan32u edgeCount,
                                      Zan8u* pResult);
ZanStatus zaniEdgesDetect16x16_16u_C1R(const Zan16u* pSrc, Zan32s srcStep, Zan32u edgeDifference,
                                       Zan32u edgeCount, Zan8u* pResult);

/* Number of zeros among 64 contiguous values. */
ZanStatus zaniCountZeros8x8_16s_C1(const Zan16s* pSrc, Zan32u* pCount);

/* ==== end of blockstats ==== */

/* ==== quant263: H.263 and MPEG-4 quantisation ==== */

/* One 8x8 block of Zan16s coefficients in raster order, quantised or
 * dequantised in place.  No alignment is needed.
 *
 * H.263 forward quantisers.  Checks, in order: pSrcDst null -8; QP outside
 * 1..31 -192.  pCountNonZero is not checked: when it is null the count is not
 * written, otherwise it receives the number of nonzero levels of the block.
 * A coefficient c of magnitude a becomes, with the sign of c,
 *   inter: ((a - QP/2, at least 0) * (32768/QP + 1)) >> 16
 *   intra: (a * (32768/QP + 1)) >> 16
 * (for QP 1 this is c / 2 rounded toward zero).  The levels are limited to
 * -127..127 when QP is below 8 and modQuantFlag is 0; otherwise they are not
 * limited.  Intra without advIntraFlag: the DC is quantised apart as
 * (dc + 4) >> 3, with a result of 0 stored as 1 and one of 255 as 254.
 * With advIntraFlag all 64 coefficients take the intra rule, limited to
 * -127..127 unless modQuantFlag is set. */
ZanStatus zaniQuantIntra_H263_16s_C1I(Zan16s* pSrcDst, Zan32s QP, Zan32s* pCountNonZero, Zan32s advIntraFlag,
                                      Zan32s modQuantFlag);
ZanStatus zaniQuantInter_H263_16s_C1I(Zan16s* pSrcDst, Zan32s QP, Zan32s* pCountNonZero, Zan32s modQuantFlag);

/* H.263 inverse quantisers.  Checks, in order: pSrcDst null -8; QP outside
 * 1..31 -192; indxLastNonZero negative -11.  Only the groups of 8
 * coefficients from 0 up to the group of indxLastNonZero are touched (all of
 * each such group); an index above 63 counts as 63.  A nonzero level l
 * becomes l * 2 * QP + sign(l) * (QP odd ? QP : QP - 1), limited to
 * -2048..2047; zero stays zero (modQuantFlag selects the same arithmetic).
 * Intra without advIntraFlag: the DC becomes DC * 8 (16-bit wrap), and the
 * AC coefficients are treated only when indxLastNonZero is above 0.
 * Intra with advIntraFlag: every coefficient of the groups, DC included,
 * becomes l * 2 * QP in wrapping 16-bit arithmetic, with no offset and no
 * limit. */
ZanStatus zaniQuantInvIntra_H263_16s_C1I(Zan16s* pSrcDst, Zan32s indxLastNonZero, Zan32s QP, Zan32s advIntraFlag,
                                         Zan32s modQuantFlag);
ZanStatus zaniQuantInvInter_H263_16s_C1I(Zan16s* pSrcDst, Zan32s indxLastNonZero, Zan32s QP, Zan32s modQuantFlag);

/* MPEG-4 quantiser records.  The caller asks GetSize for the size, provides
 * that many bytes at any address, and Init places the record at the first
 * 16-byte boundary inside them; every later call rounds pSpec up the same
 * way.  A record may be shared by threads once built.
 *
 * Identifiers (the 32-bit little-endian word of four characters): */
#define ZAN_QUANT_INV_INTRA_SPEC_ID 0x434D4152u /* "RAMC" */
#define ZAN_QUANT_INV_INTER_SPEC_ID 0x434D4153u /* "SAMC" */
#define ZAN_QUANT_INTRA_SPEC_ID     0x434D4154u /* "TAMC" */
#define ZAN_QUANT_INTER_SPEC_ID     0x434D4155u /* "UAMC" */

/* The record of the inverse quantisers (140 bytes; GetSize reports 156). */
typedef struct {
    Zan16u weights[64];  /* weight matrix as the caller gave it, raster order */
    Zan32s sampleDepth;  /* bits per sample, 4..12 */
    Zan32s useWeights;   /* 1 if a matrix was given, 0 if not */
    Zan32u identifier;   /* ZAN_QUANT_INV_INTRA_SPEC_ID or ZAN_QUANT_INV_INTER_SPEC_ID */
} ZanQuantInvSpec_MPEG4;

/* The record of the forward quantisers (396 bytes; GetSize reports 412). */
typedef struct {
    Zan16u halfWeights[64]; /* weight / 2 for depths up to 8, the weight itself above 8 */
    union {
        struct {
            Zan16u reciprocal[64]; /* 65536 / weight + 1, truncating; 65535 for a weight of 1 */
            Zan16u weight[64];     /* the weight itself */
        } integer;                 /* depths up to 8 */
        Zan32f real[64];           /* 1.0f / weight, depths above 8 */
    } reciprocals;
    Zan32s sampleDepth; /* bits per sample */
    Zan32s useWeights;  /* 1 or 0 */
    Zan32u identifier;  /* ZAN_QUANT_INTRA_SPEC_ID or ZAN_QUANT_INTER_SPEC_ID */
} ZanQuantSpec_MPEG4;

/* *pSize receives 412 (forward) or 156 (inverse).  pSize null: -8. */
ZanStatus zaniQuantIntraGetSize_MPEG4(Zan32s* pSize);
ZanStatus zaniQuantInterGetSize_MPEG4(Zan32s* pSize);
ZanStatus zaniQuantInvIntraGetSize_MPEG4(Zan32s* pSize);
ZanStatus zaniQuantInvInterGetSize_MPEG4(Zan32s* pSize);

/* Builds a record in the caller's buffer pSpec.  pWeights (64 weights in
 * raster order) may be null: then useWeights is 0 and the weight fields keep
 * what they held.  Checks: pSpec null -8; the inverse forms refuse a
 * sampleDepth outside 4..12 with -11 (nothing written); the forward forms
 * store any depth unchecked (a depth outside 4..12 then makes every
 * quantiser call fail with -192).  The identifier and the depth are written
 * first, then the weights one after another; a zero weight stops the copy
 * with -192, leaving useWeights as it was and the weights before it in
 * place.  On success useWeights is 1 when weights were given. */
ZanStatus zaniQuantIntraInit_MPEG4(const Zan8u* pWeights, ZanQuantSpec_MPEG4* pSpec, Zan32s sampleDepth);
ZanStatus zaniQuantInterInit_MPEG4(const Zan8u* pWeights, ZanQuantSpec_MPEG4* pSpec, Zan32s sampleDepth);
ZanStatus zaniQuantInvIntraInit_MPEG4(const Zan8u* pWeights, ZanQuantInvSpec_MPEG4* pSpec, Zan32s sampleDepth);
ZanStatus zaniQuantInvInterInit_MPEG4(const Zan8u* pWeights, ZanQuantInvSpec_MPEG4* pSpec, Zan32s sampleDepth);

/* MPEG-4 quantisers.  Checks, in order: a null pointer -8 (pSrcDst, pSpec,
 * and pCountNonZero in the forward forms); an identifier that is not the
 * function's -17; QP below 1 or above 2^(depth - 3) - 1 (31 for depth 8,
 * 511 for depth 12) -192.  The depth's limits are -2^(depth + 3) and
 * 2^(depth + 3) - 1 (-2048..2047 for depth 8).
 *
 * Intra DC scaler s: 8 for QP below 5; luma: 2 QP up to QP 8, QP + 8 up to
 * 24, 2 QP - 16 above; chroma (chromaFlag nonzero): (QP + 13) >> 1 up to QP
 * 24, QP - 6 above.
 *
 * Forward, all 64 coefficients; *pCountNonZero receives the number of
 * nonzero levels.  Coefficient c of magnitude a, levels with the sign of c,
 * limited to the depth's limits:
 *   without weights, depth up to 8: as the H.263 rule above;
 *   without weights, depth above 8: (int)(t * (0.5000001f / QP)) in single
 *     precision, t = a (intra) or max(a - QP/2, 0) (inter);
 *   with weights w: (16 a + w/2 + d w) / (2 QP w) exactly, d = (3 QP + 2) >> 2
 *     for intra and 0 for inter, which is ((16 a + w/2) / w + d) / (2 QP).
 * Intra DC: s = 8 (QP below 5): (dc + 4) >> 3 for dc of 4 or more,
 * (dc + 3) >> 3 below -3, else 0; otherwise dc >= (s + 1) >> 1 gives
 * (dc + s/2) / s, dc <= -((s + 1) >> 1) gives (dc - s/2) / s, else 0;
 * limited to -2047..2047.
 *
 * Inverse: only the groups of 8 coefficients up to the group of
 * indxLastNonZero are touched (an index above 63 counts as 63, a negative
 * one leaves no group); the index is not checked.  Without weights each
 * level takes the H.263 rule with the depth's limits.  With weights:
 * ((2 l + k) * w * QP) / 16 rounded toward zero, k = 0 for intra and sign(l)
 * for inter, limited to the depth's limits; then, if the sum of the
 * reconstructed coefficients is even, the lowest bit of coefficient 63 is
 * toggled.  Intra DC: level * s, limited to the depth's limits, AC treated
 * only when indxLastNonZero is above 0; with weights the DC joins the sum,
 * and when indxLastNonZero is below 1 an even DC value sets coefficient 63
 * to 1 instead. */
ZanStatus zaniQuantIntra_MPEG4_16s_C1I(Zan16s* pSrcDst, const ZanQuantSpec_MPEG4* pSpec, Zan32s QP,
                                       Zan32s* pCountNonZero, Zan32s chromaFlag);
ZanStatus zaniQuantInter_MPEG4_16s_C1I(Zan16s* pSrcDst, const ZanQuantSpec_MPEG4* pSpec, Zan32s QP,
                                       Zan32s* pCountNonZero);
ZanStatus zaniQuantInvIntra_MPEG4_16s_C1I(Zan16s* pSrcDst, Zan32s indxLastNonZero,
                                          const ZanQuantInvSpec_MPEG4* pSpec, Zan32s QP, Zan32s chromaFlag);
ZanStatus zaniQuantInvInter_MPEG4_16s_C1I(Zan16s* pSrcDst, Zan32s indxLastNonZero,
                                          const ZanQuantInvSpec_MPEG4* pSpec, Zan32s QP);

/* ==== end of quant263 ==== */

/* ==== mpeg12: Huffman tables and MPEG-1/2 block coding ==== */

/* Word cursor (decoders): *ppBitStream points at the native 32-bit word that
 * holds the next bit (the caller has swapped each four stream bytes into a
 * word already), *pBitOffset is that bit's number, 31 (most significant) down
 * to 0.  The offset is not range-checked.  A read touches the current word
 * and, on a crossing, the next one: one readable word must follow the data.
 *
 * Code list (pSrcTable, Zan32s) of the three table builders:
 *   [0] not read; [1] n, the number of levels; [2 .. n+1] the width in bits
 *   of each level; then for each code length L = 1, 2, 3, ...: the count of
 *   codes of that length and that many rows; a negative count ends the array.
 *   A row is (code, value) for zaniHuffmanTableInitAlloc_32s and (code, run,
 *   level) for the run-level builder and zaniCreateRLEncodeTable; the code
 *   holds its L bits right-aligned.  In run-level rows run 255 is the escape
 *   and run 254 the end of block; a level's sign is part of its code.
 *
 * Built decoding table (Zan32u): word 0 the first level's width w, words
 * 1 .. 2^w its entries, sub-tables following (a width word at k, entries from
 * k + 1).  Entry: link (low byte 128, bits 8 up: k); plain leaf (low byte g =
 * look-ahead bits given back, bits 8 up: the value); run-level leaf (low byte
 * g, bits 8..15 run, bits 16..31 signed level); invalid 0x00F0F101 (g = 1,
 * mark 61681 in bits 8 up).  Every word starts invalid.  A code whose bits end
 * g bits before the end of its level fills 2^g consecutive entries.
 *
 * Checks: zanStsNullPtr (-8) for either pointer; zanStsNoMem (-9) when an
 * allocation fails or the code list holds no code, *ppDstTable then
 * untouched.  Tables are read-only after building and may be shared. */
ZanStatus zaniHuffmanTableInitAlloc_32s(const Zan32s* pSrcTable, Zan32u** ppDstTable);
ZanStatus zaniHuffmanRunLevelTableInitAlloc_32s(const Zan32s* pSrcTable, Zan32u** ppDstTable);
/* Releases a table of any of the three builders; zanStsNullPtr for null. */
ZanStatus zaniHuffmanTableFree_32s(Zan32u* pTable);

/* One code of a plain table.  The walk reads the first level's width of bits
 * (a look-ahead), follows links reading each sub-table's width, and ends on a
 * leaf, whose g bits are given back.  The invalid entry: *pDecodedValue =
 * 61681 and zanStsVlcCodeBad (-74), the cursor left where the walk ended
 * (nothing given back).  Otherwise *pDecodedValue = bits 8 and up of the leaf
 * (unsigned).  Checks: -8 for any null pointer, *ppBitStream included. */
ZanStatus zaniDecodeHuffmanOne_1u32s(Zan32u** ppBitStream, Zan32s* pBitOffset, Zan32s* pDecodedValue,
                                     const Zan32u* pTable);
/* One code of a run-level table: *pRun and *pLevel from the leaf.  The
 * invalid entry returns -74 with the cursor as at entry and nothing written. */
ZanStatus zaniDecodeHuffmanPair_1u16s(Zan32u** ppBitStream, Zan32s* pBitOffset, const Zan32u* pTable,
                                      Zan8u* pRun, Zan16s* pLevel);

/* Decode and dequantise one 8x8 block of DCT coefficient codes (run-level
 * tables built by the caller from the standard's Tables B-14/B-15, DC size
 * tables from B-12/B-13).  pScan: 64 raster positions, by scan index.
 * pQuantMatrix: 64 weights in raster order.  pDstBlock: 64 Zan16s, cleared
 * first.  Escapes: MPEG-2 000001 + 6-bit run + 12-bit signed level; MPEG-1
 * 000001 + 6-bit run + 8-bit signed level, where a level of 0 or -128 is
 * followed by 8 more bits (0..255, or -256..-1 after -128).
 *
 * Non-intra forms: the first code is the short code 1s (run 0, level +1 for
 * 10, -1 for 11) when the first bit is 1, else a code of pFirstTable; later
 * codes come from pNextTable.  Values, truncating division toward zero in
 * 32-bit arithmetic, W the weight at the raster position:
 *   MPEG-2 non-intra  W * QP * (2 * level + sign(level)) / 32, kept as 16 bits
 *   MPEG-2 intra AC   W * level * 2 * QP / 32, kept as 16 bits
 *   MPEG-1 non-intra  W * QP * (2 * level + sign(level)) / 16
 *   MPEG-1 intra AC   W * QP * 2 * level / 16
 * MPEG-1 values are kept as 16 bits, then an even value moves one step toward
 * zero, then the value is clamped to -2048..2047.  MPEG-2 ends with mismatch
 * control: when the sum of the 64 stored values is even, entry 63 goes down by
 * one if odd, up by one if even.
 * *pDstSize: the scan index of the last coefficient (MPEG-2 non-intra reports
 * 1 for index 0).  An MPEG-2 non-intra first code continues at index run & 63.
 * A first code with a run of 64 or more (an end of block in pFirstTable)
 * stores nothing; in the MPEG-1 non-intra form it ends the call with
 * *pDstSize = that run and zanStsOk.
 * Intra DC: the DC size s from pDCSizeTable, then s bits b: diff = b when its
 * top bit is set, else b - 2^s + 1 (0 for s = 0).
 *   MPEG-2: *pDCPred += diff (16-bit wrap); entry 0 = *pDCPred << intraDCShift.
 *   MPEG-1: entry 0 = 8 * diff + *pDCPred, which becomes *pDCPred.
 * Checks: -8 for any null pointer (*ppBitStream included; pQuantMatrix may be
 * null in zaniReconstructDCTBlock_MPEG2_32s only, meaning all weights 16).
 * zanStsVlcCodeBad (-74) when a code takes the scan index above 63 (the
 * invalid entry does so, its run being 241), when the DC size code is
 * invalid (MPEG-1) or the DC size is above 32: the block holds what was
 * stored so far, *pDCPred is already updated, *pDstSize and the cursor are
 * as at entry.  QP and the offset are not checked. */
ZanStatus zaniReconstructDCTBlock_MPEG1_32s(Zan32u** ppBitStream, Zan32s* pBitOffset, const Zan32u* pFirstTable,
                                            const Zan32u* pNextTable, const Zan32s* pScan, Zan32s QP,
                                            const Zan16s* pQuantMatrix, Zan16s* pDstBlock, Zan32s* pDstSize);
ZanStatus zaniReconstructDCTBlock_MPEG2_32s(Zan32u** ppBitStream, Zan32s* pBitOffset, const Zan32u* pFirstTable,
                                            const Zan32u* pNextTable, const Zan32s* pScan, Zan32s QP,
                                            const Zan16s* pQuantMatrix, Zan16s* pDstBlock, Zan32s* pDstSize);
ZanStatus zaniReconstructDCTBlockIntra_MPEG1_32s(Zan32u** ppBitStream, Zan32s* pBitOffset,
                                                 const Zan32u* pDCSizeTable, const Zan32u* pACTable,
                                                 const Zan32s* pScan, Zan32s QP, const Zan16s* pQuantMatrix,
                                                 Zan16s* pDCPred, Zan16s* pDstBlock, Zan32s* pDstSize);
ZanStatus zaniReconstructDCTBlockIntra_MPEG2_32s(Zan32u** ppBitStream, Zan32s* pBitOffset,
                                                 const Zan32u* pDCSizeTable, const Zan32u* pACTable,
                                                 const Zan32s* pScan, Zan32s QP, const Zan16s* pQuantMatrix,
                                                 Zan16s* pDCPred, Zan32s intraDCShift, Zan16s* pDstBlock,
                                                 Zan32s* pDstSize);

/* Forward quantisation of 64 Zan16s in place.  With a matrix of reciprocal
 * weights M (raster order), in single precision and this order:
 * s = 16.0f / QP; f = (x * s) * M[i]; truncate toward zero to 32 bits (out of
 * range or NaN: -2^31); saturate to 16 bits; clamp to -2047..2047.
 * The intra form uses the reciprocals of the default intra matrix (rounded to
 * six decimals) when pInvQuantMatrix is null, keeps entry 0 and counts the
 * nonzero results among entries 1..63 into *pCount.  The non-intra form with
 * a matrix treats and counts all 64.  Without a matrix and QP >= 2:
 * r = (QP / 2 + 65536) / QP, each value sign(x) * min(2047, (min(|x|, 32767)
 * * r) >> 16); with QP below 2 the block is left alone; *pCount counts the
 * nonzero entries of all 64.  Checks: -8 for pSrcDst or pCount;
 * zanStsDivByZero (-10) for QP 0.  Any alignment; 16-byte aligned blocks and
 * matrices take a faster kernel with the same result. */
ZanStatus zaniQuantIntra_MPEG2_16s_C1I(Zan16s* pSrcDst, Zan32s QP, const Zan32f* pInvQuantMatrix, Zan32s* pCount);
ZanStatus zaniQuant_MPEG2_16s_C1I(Zan16s* pSrcDst, Zan32s QP, const Zan32f* pInvQuantMatrix, Zan32s* pCount);

/* Inverse quantisation of 64 Zan16s in place, in 16-bit lane arithmetic
 * (products keep their low 16 bits, "sat" additions saturate), W in raster
 * order:
 *   intra:       p = x * QP; p = p * W[i]; x < 0: p = sat(p + 15); p >> 4.
 *                Entry 0 keeps its input.  No clamp.
 *   non-intra W: wq = W[i] * QP; p = x * wq; h = (x != 0) ? wq >> 1 (unsigned)
 *                : 0, negated when p < 0; q = sat(p + h); p < 0: q = sat(q +
 *                15); q >> 4.  No clamp.
 *   non-intra, pQuantMatrix null: t = sat(2x + sign(x)); t = t * QP; x < 0:
 *                t = sat(t + 1); t >> 1; clamp to -2048..2047.
 * Then mismatch control: eight saturating 16-bit lane sums (lane j adds
 * entries j, j+8, ..., j+56 in order), the upper four added, saturating, onto
 * the lower four; when an even number of these four is odd, entry 63 goes
 * down by one if odd, up by one if even.  Checks: -8 for pSrcDst (and for
 * pQuantMatrix in the intra form).  QP is not checked. */
ZanStatus zaniQuantInvIntra_MPEG2_16s_C1I(Zan16s* pSrcDst, Zan32s QP, const Zan16s* pQuantMatrix);
ZanStatus zaniQuantInv_MPEG2_16s_C1I(Zan16s* pSrcDst, Zan32s QP, const Zan16s* pQuantMatrix);

/* Run-level encoding table from a code list of (code, run, level)
 * rows.  Zan32u words: word 0 = R << 20 | (eob code << 4 | eob length) << 10
 * | (escape code << 4 | escape length), R the largest run with a level row;
 * word r + 1 (r = 0..R) the byte offset of row r's centre word; the centre
 * word holds the largest |level| of the run (-1 without rows) and the words
 * L places before and after it the code << 16 | length of levels -L and +L;
 * each row has count / 2 slots either side.  (2R + rows) * 4 + 12 bytes.
 * Free with zaniHuffmanTableFree_32s.  Checks: -8, then -9. */
ZanStatus zaniCreateRLEncodeTable(const Zan32s* pSrcTable, Zan32u** ppDstTable);

/* Put cursor: *ppBitStream points at a Zan32u, *pBitOffset holds its free
 * bits, 32 (nothing written) down to 1 (not checked).  Writing n bits with f
 * free: n < f ORs them in at bit f - n; n == f ORs them in at bit 0 and moves
 * on with 32 free, the next word untouched; n > f ORs in the top f bits,
 * moves on and assigns the next word the rest, left-aligned.  The buffer must
 * be cleared beforehand.
 * zaniPutIntraBlock: diff = pSrcBlock[0] - *pDCPred, *pDCPred = pSrcBlock[0];
 * size = bit length of |diff|; writes pDCTable[2 * size] in
 * pDCTable[2 * size + 1] bits, then (size > 0) size bits of diff, or of
 * diff + 2^size - 1 when negative.  Then scan indices 1 on through pScan
 * until coeffCount nonzero levels are written: a level after run zeros takes
 * its code from pACTable when run <= R and |level| <= the row's centre word,
 * else the escape 000001, 6 bits of run, low 12 bits of level.  Last,
 * eobLength bits of eobCode.
 * zaniPutNonIntraBlock: pSrcBlock[0] (raster 0) first: 0 starts the run at 1;
 * +1 and -1 are written 10 and 11; others from row 0 or escaped; each counts
 * as written.  Then as above from scan index 1.
 * Checks: -8 for any null pointer, *ppBitStream included. */
ZanStatus zaniPutIntraBlock(Zan32u** ppBitStream, Zan32s* pBitOffset, const Zan16s* pSrcBlock, Zan32s* pDCPred,
                            const Zan32s* pDCTable, const Zan32u* pACTable, const Zan32s* pScan, Zan32s eobLength,
                            Zan32s eobCode, Zan32s coeffCount);
ZanStatus zaniPutNonIntraBlock(Zan32u** ppBitStream, Zan32s* pBitOffset, const Zan16s* pSrcBlock,
                               const Zan32u* pACTable, const Zan32s* pScan, Zan32s eobLength, Zan32s eobCode,
                               Zan32s coeffCount);

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

/* Each function predicts one block in place at pSrcDst, as clause 8.3 of
 * H.264 defines the prediction, from neighbours read in the picture itself:
 * the row above at pSrcDst - srcDstStep, the column to the left at
 * pSrcDst + y * srcDstStep - 1, the corner at pSrcDst - srcDstStep - 1, and
 * for the 4x4 diagonal down-left and vertical-left modes the four samples
 * above and to the right.  The block must sit inside its plane with these
 * neighbours around it.  A neighbour whose bit is clear in availability is
 * never read.
 *
 * availability: bit 1 row above, bit 2 column to the left, bit 32 sample
 * above-left, bit 64 row above-right; set when the neighbour may be used.
 * Other bits are ignored.
 *
 * Checks, in order: pSrcDst null: zanStsNullPtr; (chroma only) srcDstStep
 * below 8: zanStsStepBad; mode (as unsigned) outside the table:
 * zanStsOutOfRange; then (16x16 and chroma) a needed neighbour absent:
 * zanStsEdgeUnavailable.  Nothing is written on any failure.  The 4x4 and
 * 16x16 steps are not checked. */

/* 4x4 luma modes, also the numbering of 8x8 luma modes. */
enum {
    zanIntra4x4Vertical = 0, zanIntra4x4Horizontal = 1, zanIntra4x4DC = 2, zanIntra4x4DiagDownLeft = 3,
    zanIntra4x4DiagDownRight = 4, zanIntra4x4VerticalRight = 5, zanIntra4x4HorizontalDown = 6,
    zanIntra4x4VerticalLeft = 7, zanIntra4x4HorizontalUp = 8
};
/* 16x16 luma modes. */
enum { zanIntra16x16Vertical = 0, zanIntra16x16Horizontal = 1, zanIntra16x16DC = 2, zanIntra16x16Plane = 3 };
/* Chroma modes (DC first). */
enum { zanIntraChromaDC = 0, zanIntraChromaHorizontal = 1, zanIntraChromaVertical = 2, zanIntraChromaPlane = 3 };

/* 4x4 luma block, modes 0..8.  Always predicts; availability is masked with
 * 99.  When a neighbour the mode needs is absent, 128 stands in and the
 * status is zanStsEdgeSubstituted (11), with the block written:
 *   vertical (row above), horizontal and horizontal-up (left column): the
 *     block is filled with 128;
 *   DC: the mean of the present edges, (sum of 8 + 4) >> 3 or (sum of 4 +
 *     2) >> 2; 128 with status zanStsOk when neither is present;
 *   diagonal down-left, vertical-left: above-right absent repeats the
 *     fourth sample above (status zanStsOk, as the standard does); row above
 *     absent and above-right present: 128 for the row above, the above-right
 *     samples are read (11); both absent: the block is filled with 128 (11);
 *   diagonal down-right, vertical-right, horizontal-down: an absent corner,
 *     row above or left column is replaced by 128 and the formula runs (11).
 */
ZanStatus zaniPredictIntra_4x4_H264_8u_C1IR(Zan8u* pSrcDst, Zan32s srcDstStep, Zan32s mode, Zan32s availability);

/* 16x16 luma block, modes 0..3 (an unknown mode gives zanStsOutOfRange
 * whatever the availability).  Vertical needs bit 1, horizontal bit 2,
 * plane bits 1, 2 and 32; else zanStsEdgeUnavailable, nothing written.  DC
 * averages the present edges: (sum of 32 + 16) >> 5, (sum of 16 + 8) >> 4,
 * or 128.  Plane samples are clamped to 0..255. */
ZanStatus zaniPredictIntra_16x16_H264_8u_C1IR(Zan8u* pSrcDst, Zan32s srcDstStep, Zan32s mode, Zan32s availability);

/* 8x8 chroma block (one plane), modes 0 DC, 1 horizontal, 2 vertical,
 * 3 plane.  zanStsStepBad if srcDstStep is below 8, even for DC.  Needs as
 * for 16x16.  DC per 4x4 quadrant: top-left and bottom-right average both
 * edges when both are present; top-right prefers the row above, bottom-left
 * the left column; with one edge missing each quadrant uses the other; with
 * neither, 128.  Plane: b = (17 * H + 16) >> 5, c = (17 * V + 16) >> 5,
 * a = 16 * (left[7] + above[7]), sample (a + b * (x - 3) + c * (y - 3) + 16)
 * >> 5 clamped to 0..255. */
ZanStatus zaniPredictIntraChroma8x8_H264_8u_C1IR(Zan8u* pSrcDst, Zan32s srcDstStep, Zan32s mode,
                                                 Zan32s availability);

/* ==== end of h264intra ==== */

/* ==== h264deblock: H.264 deblocking ==== */

/* The H.264 loop filter over the edges of one macroblock, in place.  The
 * caller derives boundary strengths (bS) and the indexed alpha, beta and tc0
 * values; the library applies the sample filters.  One call does every
 * vertical edge (left to right) or every horizontal edge (top to bottom) of
 * one plane of one macroblock; each edge is finished before the next, which
 * reads what it wrote.  The pointer is the macroblock's top-left sample; the
 * filter reads and writes up to 4 luma or 2 chroma samples to the left of or
 * above it (p3..q3 for luma, p1..q1 for chroma) and changes at most p2..q2
 * (luma) or p0..q0 (chroma).  Steps are not checked (any sign); they count
 * bytes in the 8-bit forms and samples in the 16-bit forms.
 *
 * Per edge: the edge's four bS bytes read as one word; zero leaves the edge
 * untouched and unread.  Alpha and beta: element 0 on the macroblock's outer
 * edge (offset 0), element 1 on the inner ones.  Per line of an edge with a
 * non-zero bS: nothing unless |p0-q0| < alpha, |p1-p0| < beta and
 * |q1-q0| < beta.  Normal luma: tc = tc0 + (|p2-p0| < beta) + (|q2-q0| <
 * beta), delta = clamp(-tc, tc, (4(q0-p0) + (p1-q1) + 4) >> 3), p0 += delta
 * and q0 -= delta clamped to the sample range, p1 (q1) += clamp(-tc0, tc0,
 * (p2 + ((p0+q0+1) >> 1) - 2 p1) >> 1) when |p2-p0| < beta (|q2-q0| < beta).
 * Strong luma: on a side whose |p2-p0| (|q2-q0|) is below beta and with
 * |p0-q0| < (alpha >> 2) + 2, the three samples by the long filter of the
 * standard; otherwise only p0 = (2 p1 + p0 + q1 + 2) >> 2 (q0 likewise).
 * Normal chroma: tc = tc0 + 1, only p0 and q0 change.  Strong chroma:
 * p0 = (2 p1 + p0 + q1 + 2) >> 2, q0 = (2 q1 + q0 + p1 + 2) >> 2.  Sample
 * range 0..255, or 0..(1 << bitDepth) - 1 in the 16-bit forms (bitDepth
 * above 16 counts as 16, below 1 as a range of 0..0).
 *
 * Which lines take the strong path:
 *   8-bit luma (not MBAFF): each half edge of 8 lines by its pair of bS:
 *     both 4: strong; otherwise the normal path on every segment with a
 *     non-zero bS (a 4 beside another value is filtered the normal way).
 *   8-bit 4:2:0 chroma (C1IR, C2IR, C2I): all four bS 4: strong over the
 *     edge; otherwise normal on every segment with a non-zero bS.
 *   8-bit 4:2:2 horizontal: the first bS of the edge decides: 4 sends the
 *     whole edge (all 8 columns) the strong way; otherwise normal on every
 *     segment with a non-zero bS.
 *   8-bit 4:2:2 vertical, the MBAFF forms and every 16-bit form: each
 *     segment by itself: bS 4 strong, other non-zero values normal.
 *
 * Layouts.  Luma: 4 edges at 0, 4, 8, 12, 16 lines; bS and tc0 4 per edge at
 * 4 * edge (16 each), one per 4 lines.  4:2:0 chroma: 2 edges at 0 and 4, 8
 * lines; bS at 0..3 and 8..11 (pBS is always 16 bytes), tc0 at 0..3 and
 * 4..7, one per 2 lines.  4:2:2 vertical: 2 edges at 0 and 4, 16 rows; bS at
 * 0..3 and 8..11, tc0 at 0..3 and 4..7, one per 4 rows.  4:2:2 horizontal: 4
 * edges at rows 0, 4, 8, 12, 8 columns; bS and tc0 at 4 * edge, one per 2
 * columns.  Interleaved chroma (C2): U and V alternate in each row, the edges
 * at chroma offsets 0 and 4, so a row of the block is 16 bytes.  C2IR: one
 * set of alpha, beta and tc0 for both.  C2I (the record): pAlpha and pBeta
 * have 4 bytes: U outer, V outer, U inner, V inner; pThresholds 16 bytes:
 * U outer 0..3, U inner 4..7, V outer 8..11, V inner 12..15; pBS shared.
 * 16-bit forms: pAlpha, pBeta and pThresholds are Zan16u arrays already
 * scaled to the bit depth, in the 8-bit layouts; pBS stays bytes.
 *
 * MBAFF left edge (one vertical edge at column 0): luma 8 lines, bS and tc0
 * index line >> 1; chroma 4 lines, bS and tc0 index line.  Alpha and beta
 * serve every line (8-bit: values; 16-bit: element 0 of the record's arrays).
 * Alpha 0 or all four bS zero: return zanStsOk at once, nothing read.
 *
 * Checks: a null pointer, record or any of its five pointers, -8.  Nothing
 * else is checked: alpha, beta, tc0 and bS are taken as given. */

/* pSrcDstPlane and the arrays are Zan8u in the 8-bit forms and Zan16u in the
 * 16-bit forms; bitDepth is read by the 16-bit forms only. */
typedef struct ZanDeblockingRecord {
    void* pSrcDstPlane;
    Zan32s srcDstStep;
    const void* pAlpha;
    const void* pBeta;
    const void* pThresholds;
    const Zan8u* pBS;
    Zan32s bitDepth;
} ZanDeblockingRecord;

/* Luma of an 8-bit macroblock: VerEdge filters its four vertical edges left
 * to right, HorEdge its four horizontal edges top to bottom; 16 lines per
 * edge, bS and tc0 one per 4 lines. */
ZanStatus zaniFilterDeblockingLuma_VerEdge_H264_8u_C1IR(Zan8u* pSrcDst, Zan32s srcDstStep, const Zan8u* pAlpha,
                                                        const Zan8u* pBeta, const Zan8u* pThresholds,
                                                        const Zan8u* pBS);
ZanStatus zaniFilterDeblockingLuma_HorEdge_H264_8u_C1IR(Zan8u* pSrcDst, Zan32s srcDstStep, const Zan8u* pAlpha,
                                                        const Zan8u* pBeta, const Zan8u* pThresholds,
                                                        const Zan8u* pBS);
/* 4:2:0 chroma of an 8-bit macroblock, two edges of 8 lines: one plane
 * (C1IR), or U and V interleaved in one plane with one set of alpha, beta
 * and tc0 for both (C2IR). */
ZanStatus zaniFilterDeblockingChroma_VerEdge_H264_8u_C1IR(Zan8u* pSrcDst, Zan32s srcDstStep, const Zan8u* pAlpha,
                                                          const Zan8u* pBeta, const Zan8u* pThresholds,
                                                          const Zan8u* pBS);
ZanStatus zaniFilterDeblockingChroma_HorEdge_H264_8u_C1IR(Zan8u* pSrcDst, Zan32s srcDstStep, const Zan8u* pAlpha,
                                                          const Zan8u* pBeta, const Zan8u* pThresholds,
                                                          const Zan8u* pBS);
ZanStatus zaniFilterDeblockingChroma_VerEdge_H264_8u_C2IR(Zan8u* pSrcDst, Zan32s srcDstStep, const Zan8u* pAlpha,
                                                          const Zan8u* pBeta, const Zan8u* pThresholds,
                                                          const Zan8u* pBS);
ZanStatus zaniFilterDeblockingChroma_HorEdge_H264_8u_C2IR(Zan8u* pSrcDst, Zan32s srcDstStep, const Zan8u* pAlpha,
                                                          const Zan8u* pBeta, const Zan8u* pThresholds,
                                                          const Zan8u* pBS);
/* 4:2:0 chroma, U and V interleaved, with thresholds of their own from the
 * record (pAlpha and pBeta: U outer, V outer, U inner, V inner; pThresholds:
 * U outer, U inner, V outer, V inner, 4 bytes each; pBS shared). */
ZanStatus zaniFilterDeblockingChroma_VerEdge_H264_8u_C2I(const ZanDeblockingRecord* pDeblockInfo);
ZanStatus zaniFilterDeblockingChroma_HorEdge_H264_8u_C2I(const ZanDeblockingRecord* pDeblockInfo);
/* 4:2:2 chroma of one plane, from the record: VerEdge two vertical edges of
 * 16 rows, HorEdge four horizontal edges of 8 columns; 8-bit samples, or
 * 16-bit samples of bitDepth bits. */
ZanStatus zaniFilterDeblockingChroma422VerEdge_H264_8u_C1IR(const ZanDeblockingRecord* pDeblockInfo);
ZanStatus zaniFilterDeblockingChroma422HorEdge_H264_8u_C1IR(const ZanDeblockingRecord* pDeblockInfo);
ZanStatus zaniFilterDeblockingChroma422VerEdge_H264_16u_C1IR(const ZanDeblockingRecord* pDeblockInfo);
ZanStatus zaniFilterDeblockingChroma422HorEdge_H264_16u_C1IR(const ZanDeblockingRecord* pDeblockInfo);
/* Luma and 4:2:0 chroma with 16-bit samples of bitDepth bits, from the
 * record, in the 8-bit layouts; each segment takes the strong or the normal
 * path by its own bS. */
ZanStatus zaniFilterDeblockingLumaVerEdge_H264_16u_C1IR(const ZanDeblockingRecord* pDeblockInfo);
ZanStatus zaniFilterDeblockingLumaHorEdge_H264_16u_C1IR(const ZanDeblockingRecord* pDeblockInfo);
ZanStatus zaniFilterDeblockingChromaVerEdge_H264_16u_C1IR(const ZanDeblockingRecord* pDeblockInfo);
ZanStatus zaniFilterDeblockingChromaHorEdge_H264_16u_C1IR(const ZanDeblockingRecord* pDeblockInfo);
/* The left edge of an MBAFF macroblock: one vertical edge at column 0, 8
 * luma lines (bS and tc0 by line >> 1) or 4 chroma lines (by line), one
 * alpha and beta for every line; 8-bit values, or the record's 16-bit
 * arrays (element 0 of alpha and beta). */
ZanStatus zaniFilterDeblockingLuma_VerEdge_MBAFF_H264_8u_C1IR(Zan8u* pSrcDst, Zan32s srcDstStep, Zan32u alpha,
                                                              Zan32u beta, const Zan8u* pThresholds,
                                                              const Zan8u* pBS);
ZanStatus zaniFilterDeblockingChroma_VerEdge_MBAFF_H264_8u_C1IR(Zan8u* pSrcDst, Zan32s srcDstStep, Zan32u alpha,
                                                                Zan32u beta, const Zan8u* pThresholds,
                                                                const Zan8u* pBS);
ZanStatus zaniFilterDeblockingLumaVerEdgeMBAFF_H264_16u_C1IR(const ZanDeblockingRecord* pDeblockInfo);
ZanStatus zaniFilterDeblockingChromaVerEdgeMBAFF_H264_16u_C1IR(const ZanDeblockingRecord* pDeblockInfo);

/* ==== end of h264deblock ==== */

/* ==== h264fwd: H.264 forward transforms and quantisation ==== */

/* Common rules.  Blocks are packed, in raster order (row after row): 16
 * values for a 4x4 block, 64 for an 8x8 block, 4 (2x2) or 8 (two wide, four
 * tall) for a chroma DC block.  Every pointer that a function uses is tested
 * first, in one test (zanStsNullPtr, -8); then the quantiser parameter
 * (zanStsOutOfRange, -11, or zanStsQpBad, -192), as an unsigned comparison,
 * so a negative value is out of range.  A failed check writes nothing.
 * `intra` counts as 1 when it is not zero.  q is QP / 6 and QP % 6 picks the
 * row of the factor tables.
 *
 * The forward 4x4 core transform takes each row, then each column, through
 *   y0 = x0 + x1 + x2 + x3,  y1 = 2 x0 + x1 - x2 - 2 x3,
 *   y2 = x0 - x1 - x2 + x3,  y3 = x0 - 2 x1 + 2 x2 - x3,
 * wrapping in the width of the output (16 or 32 bits).
 *
 * Quantisation of a coefficient c with factor F, rounding r and shift s:
 *   level = sign(c) * ((|c| * F + r) >> s),
 * the product exact; the default factors are the standard's forward factors
 * (13107, 8066, 13107, 8066 / 8066, 5243, 8066, 5243 / ... for QP % 6 = 0).
 * *pNumLevels receives the count of non-zero levels; *pLastCoeff the largest
 * pScanMatrix[k] over the positions k of non-zero levels, 0 when there is
 * none.  pScanMatrix maps each raster position to its scan position.
 *
 * Levels of the 16-bit forms of the second generation (everything below but
 * the three flat functions) keep their magnitude saturated to 32767 before
 * the sign is restored; the 32-bit forms keep the low 32 bits.  Their
 * pScaleLevels (a caller's level-scale array, raster order) may be null,
 * except in zaniQuantLuma8x8_*: null selects the default factors. */

/* Forward 4x4 core transform, 16-bit wrap-around arithmetic.  pSrc and pDst
 * may be the same block. */
ZanStatus zaniTransformResidual4x4Fwd_H264_16s_C1(const Zan16s* pSrc, Zan16s* pDst);
/* The same in 32-bit wrap-around arithmetic. */
ZanStatus zaniTransformResidual4x4Fwd_H264_32s_C1(const Zan32s* pSrc, Zan32s* pDst);
/* Forward 4x4 core transform of a 4x4 block of samples whose rows lie
 * srcStep bytes apart (any step, unchecked) into 16 packed values. */
ZanStatus zaniTransformPrediction_H264_8u16s_C1(const Zan8u* pSrc, Zan32s srcStep, Zan16s* pDst);

/* First generation, flat scaling matrix.
 * 4x4 residual in place: the forward core transform (16-bit wrap-around) is
 * stored back into pSrcDst; then each coefficient is quantised with the
 * factor of its position, s = 15 + q, r = (1 << s) / 3 for intra and
 * (1 << s) / 6 otherwise.  If any level has a magnitude above 2063 the
 * function returns zanStsCoefRange (-13) and leaves the transformed
 * coefficients in pSrcDst; *pNumLevels and *pLastCoeff are not written.
 * Else the levels overwrite pSrcDst, and the count and last scan position
 * (as a byte) are stored.
 * Checks: pointers -8; QP above 51 -11. */
ZanStatus zaniTransformQuantResidual_H264_16s_C1I(Zan16s* pSrcDst, Zan32s QP, Zan32s* pNumLevels, Zan32s intra,
                                                  const Zan16s* pScanMatrix, Zan8u* pLastCoeff);
/* Luma DC of a 16x16 intra macroblock in place: the 4x4 Hadamard (rows,
 * then columns, rows (1 1 1 1) (1 1 -1 -1) (1 -1 -1 1) (1 -1 1 -1)) in 32
 * bits, shifted right by 1 arithmetically and kept to its low 16 bits, is
 * stored in pTBlock; then quantised with the position-0 factor,
 * s = 16 + q, r = (1 << s) / 3 whatever intra says.  A level magnitude above
 * 2063: zanStsCoefRange (-13), with pTBlock written and nothing else.
 * Else levels into pSrcDst, count and last scan position (a byte).
 * Checks: pointers -8; QP outside 0..51 -11. */
ZanStatus zaniTransformQuantLumaDC_H264_16s_C1I(Zan16s* pSrcDst, Zan16s* pTBlock, Zan32s QP, Zan32s* pNumLevels,
                                                Zan32s intra, const Zan16s* pScanMatrix, Zan8u* pLastCoeff);
/* Chroma DC (2x2, raster c0 c1 c2 c3) in place: with needTransform not 0,
 * f0 = c0+c1+c2+c3, f1 = c0-c1+c2-c3, f2 = c0+c1-c2-c3, f3 = c0-c1-c2+c3,
 * kept to 16 bits; with needTransform 0 the input stands as it is.  The four
 * values go to pTBlock, then are quantised with the position-0 factor,
 * s = 16 + q, r = (1 << s) / 3 for intra, (1 << s) / 6 otherwise.  A level
 * magnitude above 2063: zanStsCoefRange (-13), pTBlock written, nothing
 * else.  Else levels into pSrcDst and the count into *pNumLevels.
 * Checks: pointers -8; QP outside 0..39 -11. */
ZanStatus zaniTransformQuantChromaDC_H264_16s_C1I(Zan16s* pSrcDst, Zan16s* pTBlock, Zan32s QP, Zan32s* pNumLevels,
                                                  Zan32s intra, Zan32s needTransform);

/* Second generation.  4x4 quantisation of pSrc into pDst (may be the same
 * block).  Without pScaleLevels: default factors of row QP % 6, s = 15 + q,
 * r = (1 << (15 + q + intra)) / 6.  With pScaleLevels: F = pScaleLevels[k],
 * s = 11 + q, r = (1 << (11 + q + intra)) / 6.
 * Checks: pSrc, pDst, pNumLevels, pLastCoeff, pScanMatrix null -8 (not
 * pScaleLevels); QP above 51 -11.  The 16s32s and 32s forms work the same
 * with 64-bit products and keep 32 bits. */
ZanStatus zaniQuantizeResidual4x4Fwd_H264_16s_C1(const Zan16s* pSrc, Zan16s* pDst, Zan32s* pNumLevels,
                                                 Zan32s* pLastCoeff, const Zan16s* pScaleLevels,
                                                 const Zan16s* pScanMatrix, Zan32s QP, Zan32s intra);
ZanStatus zaniQuantizeResidual4x4Fwd_H264_16s32s_C1(const Zan16s* pSrc, Zan32s* pDst, Zan32s* pNumLevels,
                                                    Zan32s* pLastCoeff, const Zan16s* pScaleLevels,
                                                    const Zan16s* pScanMatrix, Zan32s QP, Zan32s intra);
ZanStatus zaniQuantizeResidual4x4Fwd_H264_32s_C1(const Zan32s* pSrc, Zan32s* pDst, Zan32s* pNumLevels,
                                                 Zan32s* pLastCoeff, const Zan16s* pScaleLevels,
                                                 const Zan16s* pScanMatrix, Zan32s QP, Zan32s intra);
/* Forward core transform of pSrc (left untouched; 16-bit wrap-around in the
 * 16s form, 32-bit in the 16s32s form), then the quantisation of
 * zaniQuantizeResidual4x4Fwd_* into pDst.
 * Checks: pointers (not pScaleLevels) -8; QP above 51 (16s) or above 87
 * (16s32s) -11. */
ZanStatus zaniTransformQuantFwd4x4_H264_16s_C1(const Zan16s* pSrc, Zan16s* pDst, Zan32s QP, Zan32s* pNumLevels,
                                               Zan32s intra, const Zan16s* pScanMatrix, Zan32s* pLastCoeff,
                                               const Zan16s* pScaleLevels);
ZanStatus zaniTransformQuantFwd4x4_H264_16s32s_C1(const Zan16s* pSrc, Zan32s* pDst, Zan32s QP, Zan32s* pNumLevels,
                                                  Zan32s intra, const Zan16s* pScanMatrix, Zan32s* pLastCoeff,
                                                  const Zan16s* pScaleLevels);
/* Luma DC in place: the halved Hadamard of zaniTransformQuantLumaDC_* (kept
 * to 16 bits in the 16s form, 32-bit wrap-around in the 32s form) goes to
 * pTBlock; then levels with the position-0 factor of row QP % 6, s = 16 + q,
 * r = (1 << (16 + q + intra)) / 6, or with pScaleLevels[0], s = 12 + q,
 * r = (1 << (12 + q + intra)) / 6; levels into pSrcDst, count and last.
 * Checks: pointers (not pScaleLevels) -8; QP outside 0..51 (16s) or 0..87
 * (32s) -11. */
ZanStatus zaniTransformQuantFwdLumaDC4x4_H264_16s_C1I(Zan16s* pSrcDst, Zan16s* pTBlock, Zan32s QP,
                                                      Zan32s* pNumLevels, Zan32s intra, const Zan16s* pScanMatrix,
                                                      Zan32s* pLastCoeff, const Zan16s* pScaleLevels);
ZanStatus zaniTransformQuantFwdLumaDC4x4_H264_32s_C1I(Zan32s* pSrcDst, Zan32s* pTBlock, Zan32s QP,
                                                      Zan32s* pNumLevels, Zan32s intra, const Zan16s* pScanMatrix,
                                                      Zan32s* pLastCoeff, const Zan16s* pScaleLevels);
/* Chroma DC in place.  2x2: the transform of zaniTransformQuantChromaDC_*
 * (omitted when needTransform is 0); 2x4 (two wide, four tall, raster, for
 * 4:2:2): rows through (1 1) (1 -1), columns through the 4x4 Hadamard rows.
 * The values (16 bits kept in the 16s forms, 32-bit wrap-around in the 32s
 * forms) go to pTBlock, then levels as for the luma DC, except that the 2x4
 * forms take q and QP % 6 from QP + 3.  Levels into pSrcDst, the count into
 * *pNumLevels.
 * Checks: pointers (not pScaleLevels) -8; QP outside 0..39 (16s) or 0..75
 * (32s) -11. */
ZanStatus zaniTransformQuantFwdChromaDC2x2_H264_16s_C1I(Zan16s* pSrcDst, Zan16s* pTBlock, Zan32s QP,
                                                        Zan32s* pNumLevels, Zan32s intra, Zan32s needTransform,
                                                        const Zan16s* pScaleLevels);
ZanStatus zaniTransformQuantFwdChromaDC2x2_H264_32s_C1I(Zan32s* pSrcDst, Zan32s* pTBlock, Zan32s QP,
                                                        Zan32s* pNumLevels, Zan32s intra, Zan32s needTransform,
                                                        const Zan16s* pScaleLevels);
ZanStatus zaniTransformQuantFwdChromaDC2x4_H264_16s_C1I(Zan16s* pSrcDst, Zan16s* pTBlock, Zan32s QP,
                                                        Zan32s* pNumLevels, Zan32s intra, Zan32s needTransform,
                                                        const Zan16s* pScaleLevels);
ZanStatus zaniTransformQuantFwdChromaDC2x4_H264_32s_C1I(Zan32s* pSrcDst, Zan32s* pTBlock, Zan32s QP,
                                                        Zan32s* pNumLevels, Zan32s intra, Zan32s needTransform,
                                                        const Zan16s* pScaleLevels);

/* Forward 8x8 integer transform (the transpose of the standard's inverse
 * 8x8 core, with its halvings and quarterings), each row, then each column.
 * With s07 = x0 + x7, d07 = x0 - x7 and so on, a0 = s07 + s34,
 * a1 = s16 + s25, a2 = s07 - s34, a3 = s16 - s25,
 * a4 = d16 + d25 + d07 + (d07 >> 1), a5 = d07 - d34 - d25 - (d25 >> 1),
 * a6 = d07 + d34 - d16 - (d16 >> 1), a7 = d16 - d25 + d34 + (d34 >> 1):
 * y0 = a0 + a1, y1 = a4 + (a7 >> 2), y2 = a2 + (a3 >> 1), y3 = a5 + (a6 >> 2),
 * y4 = a0 - a1, y5 = a6 - (a5 >> 2), y6 = (a2 >> 1) - a3, y7 = (a4 >> 2) - a7.
 * Every intermediate wraps in 16 bits (16s forms) or 32 bits (16s32s). */
ZanStatus zaniTransformLuma8x8Fwd_H264_16s_C1I(Zan16s* pSrcDst);
ZanStatus zaniTransformFwdLuma8x8_H264_16s_C1(const Zan16s* pSrc, Zan16s* pDst);
ZanStatus zaniTransformFwdLuma8x8_H264_16s32s_C1(const Zan16s* pSrc, Zan32s* pDst);
/* 8x8 quantisation of 64 values with the caller's pScaleLevels (required):
 * s = 12 + Qp6, r = 682 << (Qp6 + 1) for intra, 342 << (Qp6 + 1) otherwise;
 * pScanMatrix has 64 entries.  pSrc and pDst may be the same block.
 * Checks: pointers -8; Qp6 outside 0..8 (16s) or 0..14 (32s): zanStsQpBad
 * (-192). */
ZanStatus zaniQuantLuma8x8_H264_16s_C1(const Zan16s* pSrc, Zan16s* pDst, Zan32s Qp6, Zan32s intra,
                                       const Zan16s* pScanMatrix, const Zan16s* pScaleLevels, Zan32s* pNumLevels,
                                       Zan32s* pLastCoeff);
ZanStatus zaniQuantLuma8x8_H264_32s_C1(const Zan32s* pSrc, Zan32s* pDst, Zan32s Qp6, Zan32s intra,
                                       const Zan16s* pScanMatrix, const Zan16s* pScaleLevels, Zan32s* pNumLevels,
                                       Zan32s* pLastCoeff);

/* Level-scale arrays from a scaling list (raster order; 16 bytes, or 8 rows
 * of 8 bytes srcStep bytes apart for 8x8; srcStep unchecked) for one QP % 6:
 *   inverse[k] = w[k] * normalisation(QpRem, k)   (4x4: 10, 13, 16, ... as
 *     in the standard, e.g. 160 for w = 16; 8x8: 20, 19, 25, 19, ...);
 *   forward[k] = (forward factor(QpRem, k) * 16) / w[k] as an exact integer
 *     division, saturated to 32767; a zero list entry gives 32767.
 * Checks: pointers -8; QpRem above 5: -11 (4x4), zanStsQpBad -192 (8x8). */
ZanStatus zaniGenScaleLevel4x4_H264_8u16s_C1(const Zan8u* pSrcScaling, Zan16s* pDstInvScale, Zan16s* pDstFwdScale,
                                             Zan32s QpRem);
ZanStatus zaniGenScaleLevel8x8_H264_8u16s_D2(const Zan8u* pSrcScaling, Zan32s srcStep, Zan16s* pDstInvScale,
                                             Zan16s* pDstFwdScale, Zan32s QpRem);


/* ==== end of h264fwd ==== */

/* ==== vc1xform: VC-1 transforms and quantisation ==== */

/* Blocks of Zan16s samples; every step is in bytes and is not checked (zero
 * and negative steps are legal).  The 8x4 shape is 8 wide and 4 high, 4x8 is
 * 4 wide and 8 high.  Only the block's own samples are read and written.
 *
 * Inverse transforms (the integer transforms of SMPTE 421M): a row pass
 * E = sat16((D T_W + 4) >> 3), then a column pass
 * R = sat16((T_H' E + C_H + 64) >> 7), where C_H adds 1 to rows 4..7 of an
 * 8-high block; each pass saturates to the 16-bit range.  sizeNZ is the reach
 * of the non-zero coefficients as the inverse quantisers report it:
 * - width and height both below 2: only the coefficient at (0, 0) is read and
 *   every output sample is ((((x * a + 4) >> 3) * b + 64) >> 7), a = 12 for
 *   8-wide and 17 for 4-wide blocks, b = 12 for 8-high and 17 for 4-high ones
 *   (the middle value is not saturated);
 * - else width 2 or less: only columns 0..1 enter the row pass, the others
 *   count as zero; width 4 or less in an 8-wide block: columns 0..3.
 * Checks: a null pointer gives zanStsNullPtr (-8); nothing else is checked.
 * Forward transforms: e = sat16((X T_W' + 4) >> 3) by rows,
 * t = sat16((T_H e + 32) >> 6) by columns, and coefficient (k, l) is
 * (t * q(k, l) + 16384) >> 15 with q(k, l) = round(2^34 / (|T_H row k|^2 *
 * |T_W row l|^2)), the scale at which the inverse transform returns X up to
 * rounding.  Checks: null pointer (-8) only.  In-place forms take one
 * pointer for both. */
ZanStatus zaniTransform8x8Inv_VC1_16s_C1R(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s dstStep,
                                          ZaniSize sizeNZ);
ZanStatus zaniTransform8x4Inv_VC1_16s_C1R(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s dstStep,
                                          ZaniSize sizeNZ);
ZanStatus zaniTransform4x8Inv_VC1_16s_C1R(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s dstStep,
                                          ZaniSize sizeNZ);
ZanStatus zaniTransform4x4Inv_VC1_16s_C1R(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s dstStep,
                                          ZaniSize sizeNZ);
ZanStatus zaniTransform8x8Inv_VC1_16s_C1IR(Zan16s* pSrcDst, Zan32s srcDstStep, ZaniSize sizeNZ);
ZanStatus zaniTransform8x4Inv_VC1_16s_C1IR(Zan16s* pSrcDst, Zan32s srcDstStep, ZaniSize sizeNZ);
ZanStatus zaniTransform4x8Inv_VC1_16s_C1IR(Zan16s* pSrcDst, Zan32s srcDstStep, ZaniSize sizeNZ);
ZanStatus zaniTransform4x4Inv_VC1_16s_C1IR(Zan16s* pSrcDst, Zan32s srcDstStep, ZaniSize sizeNZ);
ZanStatus zaniTransform8x8Fwd_VC1_16s_C1R(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s dstStep);
ZanStatus zaniTransform8x4Fwd_VC1_16s_C1R(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s dstStep);
ZanStatus zaniTransform4x8Fwd_VC1_16s_C1R(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s dstStep);
ZanStatus zaniTransform4x4Fwd_VC1_16s_C1R(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s dstStep);
ZanStatus zaniTransform8x8Fwd_VC1_16s_C1IR(Zan16s* pSrcDst, Zan32s srcDstStep);
ZanStatus zaniTransform8x4Fwd_VC1_16s_C1IR(Zan16s* pSrcDst, Zan32s srcDstStep);
ZanStatus zaniTransform4x8Fwd_VC1_16s_C1IR(Zan16s* pSrcDst, Zan32s srcDstStep);
ZanStatus zaniTransform4x4Fwd_VC1_16s_C1IR(Zan16s* pSrcDst, Zan32s srcDstStep);

/* Forward quantisers, in place.  doubleQuant d (2..62) divides through a
 * reciprocal of one of three kinds, by d:
 *   kind a: (hi(m x) >> s) + (x < 0);  kind b: (sat16(hi(m x) + x) >> s) + (x < 0);
 *   kind c (d a power of two): (x + (x < 0 ? d - 1 : 0)) >> s;
 * hi(v) = v >> 16 (arithmetic).  This equals x / d truncated toward zero for
 * every 16-bit x except for some values when d is 19, 21, 27, 41 or 55, where
 * the reciprocal's result stands.  Uniform forms divide x; non-uniform forms
 * divide x - sign(x) * (d >> 1).  Intra forms treat an 8x8 block and leave
 * the sample at (0, 0) as it is; inter forms treat a roiSize block (width and
 * height each 4 or 8).
 * Checks in order: null pointer (-8); d outside 2..62: zanStsOutOfRange
 * (-11); inter forms: roiSize.height, then roiSize.width, other than 4 or 8:
 * zanStsSizeBad (-6). */
ZanStatus zaniQuantIntraUniform_VC1_16s_C1IR(Zan16s* pSrcDst, Zan32s srcDstStep, Zan32s doubleQuant);
ZanStatus zaniQuantIntraNonuniform_VC1_16s_C1IR(Zan16s* pSrcDst, Zan32s srcDstStep, Zan32s doubleQuant);
ZanStatus zaniQuantInterUniform_VC1_16s_C1IR(Zan16s* pSrcDst, Zan32s srcDstStep, Zan32s doubleQuant,
                                             ZaniSize roiSize);
ZanStatus zaniQuantInterNonuniform_VC1_16s_C1IR(Zan16s* pSrcDst, Zan32s srcDstStep, Zan32s doubleQuant,
                                                ZaniSize roiSize);

/* Inverse quantisers.  Uniform: y = x * d; non-uniform: y = x * d +
 * sign(x) * (d >> 1) (zero stays zero); both kept to their low 16 bits
 * (wrap-around).  d is not checked: any value is used as it stands.  Intra
 * forms treat an 8x8 block and copy the sample at (0, 0) unchanged; inter
 * forms treat a roiSize block.  *pDstSizeNZ receives the reach of the
 * non-zero output samples: width = 1 + the last column holding one, height =
 * 1 + the last row holding one, 0 and 0 when there is none; in the intra
 * forms the sample at (0, 0) does not count.  This is the sizeNZ that the
 * inverse transforms take.
 * Checks in order: any null pointer (-8); inter forms: roiSize.height, then
 * roiSize.width, other than 4 or 8 (-6).  In-place forms take one pointer
 * for both. */
ZanStatus zaniQuantInvIntraUniform_VC1_16s_C1R(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s dstStep,
                                               Zan32s doubleQuant, ZaniSize* pDstSizeNZ);
ZanStatus zaniQuantInvIntraNonuniform_VC1_16s_C1R(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst,
                                                  Zan32s dstStep, Zan32s doubleQuant, ZaniSize* pDstSizeNZ);
ZanStatus zaniQuantInvIntraUniform_VC1_16s_C1IR(Zan16s* pSrcDst, Zan32s srcDstStep, Zan32s doubleQuant,
                                                ZaniSize* pDstSizeNZ);
ZanStatus zaniQuantInvIntraNonuniform_VC1_16s_C1IR(Zan16s* pSrcDst, Zan32s srcDstStep, Zan32s doubleQuant,
                                                   ZaniSize* pDstSizeNZ);
ZanStatus zaniQuantInvInterUniform_VC1_16s_C1R(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s dstStep,
                                               Zan32s doubleQuant, ZaniSize roiSize, ZaniSize* pDstSizeNZ);
ZanStatus zaniQuantInvInterNonuniform_VC1_16s_C1R(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst,
                                                  Zan32s dstStep, Zan32s doubleQuant, ZaniSize roiSize,
                                                  ZaniSize* pDstSizeNZ);
ZanStatus zaniQuantInvInterUniform_VC1_16s_C1IR(Zan16s* pSrcDst, Zan32s srcDstStep, Zan32s doubleQuant,
                                                ZaniSize roiSize, ZaniSize* pDstSizeNZ);
ZanStatus zaniQuantInvInterNonuniform_VC1_16s_C1IR(Zan16s* pSrcDst, Zan32s srcDstStep, Zan32s doubleQuant,
                                                   ZaniSize roiSize, ZaniSize* pDstSizeNZ);

/* ==== end of vc1xform ==== */

/* ==== coefdec: H.261, H.263 and MPEG-4 coefficient decoding ==== */

/* Byte cursor: *ppBitStream points at the byte holding the next bit and
 * *pBitOffset (0..7) counts the bits of that byte already consumed, 0 being
 * the most significant bit.  A decoder may load the 4 bytes starting at the
 * byte of its next bit at any moment, so 4 readable bytes must follow the
 * coded data; the backward reversible decoders read up to 4 bytes below the
 * lowest byte they decode instead.  The cursor is written back only on
 * success (exceptions below); on success the offset is normalised to 0..7.
 *
 * Blocks are 64 Zan16s in raster order, no alignment needed.  Decoders clear
 * the block first (exceptions below) and store through a scan: 0 zigzag,
 * 1 alternate vertical, 2 alternate horizontal, other values (where a
 * function honours them) store at the scan index itself.  *pLastCoeffIndex
 * receives the scan index of the last coefficient stored (-1: none).
 *
 * Checks, in order: -8 for a null ppBitStream, pBitOffset, *ppBitStream,
 * pCoeffs, pLastCoeffIndex or pDC; -193 for *pBitOffset outside 0..7 (tested
 * as unsigned); -192 for QP outside 1..31 in the H.261 and H.263
 * Reconstruct forms; then -191 (zanStsCoefDecodeBad) for any invalid code,
 * forbidden level, clear marker bit or a run past index 63.
 *
 * On -191 the cursor is unmoved and the block holds what was stored, and
 * *pLastCoeffIndex is:
 *   H.261, H.263: the index of the last stored coefficient (that is, the
 *     index before the failing code, for a bad code and for an overflow);
 *   MPEG-4 forward forms: the last stored index for a bad code, the
 *     overflowing index (64 or more) for an overflow;
 *   backward reversible forms: the current position p; the entries stored
 *     from the top end are not moved down;
 *   an invalid DC byte (H.261, H.263): -1, with the block untouched, except
 *     that zaniReconstructCoeffsIntra_H261_1u16s has already cleared it.
 * After a good DC byte, an AC failure in zaniDecodeCoeffsIntra_H261_1u16s and
 * zaniReconstructCoeffsIntra_H263_1u16s leaves the cursor one byte past the
 * DC, with the DC stored.  Dequantised H.263 values: sign(L) * (2 QP |L| +
 * qadd), qadd = QP for odd QP, else QP - 1. */

/* INTRADC: 8 bits at the cursor; 0 and 128 fail, 255 gives 128.  Moves the
 * cursor one byte. */
ZanStatus zaniDecodeDCIntra_H263_1u16s(Zan8u** ppBitStream, Zan32s* pBitOffset, Zan16s* pDC);
/* H.263 intra levels.  advIntraFlag: the Annex I intra table from index 0;
 * otherwise TCOEF from index 1 with pCoeffs[0] kept (also on failure).
 * modQuantFlag: the Annex T escape (level 0 invalid, -128 starts an 11-bit
 * extended level whose low part is formed unmasked from the byte of the next
 * bit); without it escape levels 0 and -128 are invalid. */
ZanStatus zaniDecodeCoeffsIntra_H263_1u16s(Zan8u** ppBitStream, Zan32s* pBitOffset, Zan16s* pCoeffs,
                                           Zan32s* pLastCoeffIndex, Zan32s advIntraFlag, Zan32s modQuantFlag,
                                           Zan32s scan);
/* H.263 inter levels, TCOEF from index 0. */
ZanStatus zaniDecodeCoeffsInter_H263_1u16s(Zan8u** ppBitStream, Zan32s* pBitOffset, Zan16s* pCoeffs,
                                           Zan32s* pLastCoeffIndex, Zan32s modQuantFlag, Zan32s scan);
/* H.263 intra reconstruction.  Without advIntraFlag: INTRADC byte (0 and 128
 * set *pLastCoeffIndex to -1 and fail with nothing written), cursor one byte
 * on; cbp 0 reports index 0 and leaves the 63 AC entries as they were;
 * otherwise TCOEF from index 1, zigzag whatever scan says, dequantised and
 * clamped to -2048..2047 (modQuantFlag: the Annex T escape, no clamp,
 * 16-bit truncation); then pCoeffs[0] = 8 * byte (255: 1024), also after an
 * AC failure.  With advIntraFlag: no INTRADC, cbp ignored, the Annex I table
 * from index 0, scan 2 horizontal, 1 vertical, else zigzag, value level * 2
 * QP with no clamp. */
ZanStatus zaniReconstructCoeffsIntra_H263_1u16s(Zan8u** ppBitStream, Zan32s* pBitOffset, Zan16s* pCoeffs,
                                                Zan32s* pLastCoeffIndex, Zan32s cbp, Zan32s QP, Zan32s advIntraFlag,
                                                Zan32s scan, Zan32s modQuantFlag);
/* H.263 inter reconstruction, zigzag, clamped as above (modQuantFlag: no
 * clamp). */
ZanStatus zaniReconstructCoeffsInter_H263_1u16s(Zan8u** ppBitStream, Zan32s* pBitOffset, Zan16s* pCoeffs,
                                                Zan32s* pLastCoeffIndex, Zan32s QP, Zan32s modQuantFlag);
/* H.261 intra: DC byte (low 7 bits zero: index -1, fail, block untouched),
 * cursor one byte on, AC levels from index 0 up to end of block, then
 * pCoeffs[0] = byte (255: 128), also after an AC failure.  scan -1 stores
 * at the index, anything else through the zigzag. */
ZanStatus zaniDecodeCoeffsIntra_H261_1u16s(Zan8u** ppBitStream, Zan32s* pBitOffset, Zan16s* pCoeffs,
                                           Zan32s* pLastCoeffIndex, Zan32s scan);
/* H.261 inter: a first code 1s gives coefficient 0 = +1 (10) or -1 (11);
 * end of block met at index -1 fails.  A code that carries the index past 63
 * fails, except a sum of exactly 127 or more, which ends the block. */
ZanStatus zaniDecodeCoeffsInter_H261_1u16s(Zan8u** ppBitStream, Zan32s* pBitOffset, Zan16s* pCoeffs,
                                           Zan32s* pLastCoeffIndex, Zan32s scan);
/* H.261 intra reconstruction, zigzag: clears the block before testing the
 * DC byte; DC = 8 * byte (255: 1024); AC dequantised and clamped to
 * -2048..2047; an AC failure leaves the cursor as it was at entry. */
ZanStatus zaniReconstructCoeffsIntra_H261_1u16s(Zan8u** ppBitStream, Zan32s* pBitOffset, Zan16s* pCoeffs,
                                                Zan32s* pLastCoeffIndex, Zan32s QP);
/* H.261 inter reconstruction, zigzag; the first code 1s gives +-3 QP (odd QP)
 * or +-(3 QP - 1) (even QP). */
ZanStatus zaniReconstructCoeffsInter_H261_1u16s(Zan8u** ppBitStream, Zan32s* pBitOffset, Zan16s* pCoeffs,
                                                Zan32s* pLastCoeffIndex, Zan32s QP);
/* MPEG-4 dct_dc_size (chromaFlag: chrominance table) and
 * dct_dc_differential.  A size above 12 fails with nothing written; a size
 * above 8 is followed by a marker bit, and a clear marker fails after *pDC
 * has been written, with the cursor unmoved. */
ZanStatus zaniDecodeDCIntra_MPEG4_1u16s(Zan8u** ppBitStream, Zan32s* pBitOffset, Zan16s* pDC, Zan32s chromaFlag);
/* MPEG-4 intra levels: VLC with escape types 1-3 (a fixed-length level with
 * its low 11 bits zero fails), or forward reversible codes (rvlcFlag).
 * separateDCFlag keeps pCoeffs[0] and starts at index 0; otherwise at -1. */
ZanStatus zaniDecodeCoeffsIntra_MPEG4_1u16s(Zan8u** ppBitStream, Zan32s* pBitOffset, Zan16s* pCoeffs,
                                            Zan32s* pLastCoeffIndex, Zan32s rvlcFlag, Zan32s separateDCFlag,
                                            Zan32s scan);
/* MPEG-4 inter levels: scan 0 zigzag, 1 alternate vertical, anything else
 * (2 included) in scan order.  A fixed-length level of -2048 fails; 0 is
 * accepted. */
ZanStatus zaniDecodeCoeffsInter_MPEG4_1u16s(Zan8u** ppBitStream, Zan32s* pBitOffset, Zan16s* pCoeffs,
                                            Zan32s* pLastCoeffIndex, Zan32s rvlcFlag, Zan32s scan);
/* Backward reversible decoding.  The cursor names the last bit of the block's
 * data, which is read first; bits are read toward lower addresses.  The first
 * code must carry the last flag; the next code with a last flag closes the
 * preceding block and is not consumed: on success the cursor names its last
 * bit, where the next backward call begins.  Output in scan order from the
 * floor f (0 with separateDCFlag, which keeps pCoeffs[0]; -1 otherwise).
 * A run that carries the first coefficient below the floor fails when the
 * closing code is met, as an overflow. */
ZanStatus zaniDecodeCoeffsIntraRVLCBack_MPEG4_1u16s(Zan8u** ppBitStream, Zan32s* pBitOffset, Zan16s* pCoeffs,
                                                    Zan32s* pLastCoeffIndex, Zan32s separateDCFlag);
ZanStatus zaniDecodeCoeffsInterRVLCBack_MPEG4_1u16s(Zan8u** ppBitStream, Zan32s* pBitOffset, Zan16s* pCoeffs,
                                                    Zan32s* pLastCoeffIndex);
/* MPEG-4 inter levels dequantised in one pass; scan 1 alternate vertical,
 * anything else zigzag.  rvlcFlag: forward reversible decoding, then
 * zaniQuantInvInter_MPEG4_16s_C1I over the block with last index 63 (which
 * makes its own checks of the record and QP).  Otherwise, after the cursor
 * checks: -8 for a null pQuantInvInterSpec, -17 for a record that is not an
 * inverse inter record, -192 for QP outside 1..2^(depth-3)-1; then each
 * level L gives L * 2 QP + sign(L) * qadd (no weights) or
 * (2 L + sign(L)) * W[raster position] * QP / 16 truncated toward zero
 * (weights), saturated to 16 bits and clamped to -2^(depth+3)..2^(depth+3)-1;
 * with weights, an even sum of the stored values toggles the lowest bit of
 * coefficient 63 at the end of a good block. */
ZanStatus zaniReconstructCoeffsInter_MPEG4_1u16s(Zan8u** ppBitStream, Zan32s* pBitOffset, Zan16s* pCoeffs,
                                                 Zan32s* pLastCoeffIndex, Zan32s rvlcFlag, Zan32s scan,
                                                 const ZanQuantInvSpec_MPEG4* pQuantInvInterSpec, Zan32s QP);

/* ==== end of coefdec ==== */

/* ==== coefenc: H.261, H.263 and MPEG-4 coefficient encoding ==== */

/* The encoders write run-level codes at the byte cursor: the first byte a
 * code touches keeps its bits above the offset, new byte = (old AND
 * (255 << (8 - offset))) OR new bits; following bytes are assigned and a
 * code's last byte has zeros in its low bits, so the buffer needs no
 * clearing.  A code of up to 32 bits touches up to five bytes.
 *
 * The block is 64 Zan16s in raster order, read through the scan.  Coding
 * counts nonzero levels and the one that reaches countNonZero is coded as the
 * last; a block holding fewer ends at index 64 with no last flag (H.261: the
 * end of block is still written).  Levels are taken as they stand.
 *
 * Checks, in order: -8 for a null pCoeffs, ppBitStream, pBitOffset or
 * *ppBitStream; -193 for *pBitOffset outside 0..7; -11 for countNonZero
 * outside 1..64 (1..63 for the MPEG-4 intra form with separateDCFlag). */

/* INTRADC: 128 is written as 255, anything else by its low 8 bits. */
ZanStatus zaniEncodeDCIntra_H263_16s1u(Zan16s dc, Zan8u** ppBitStream, Zan32s* pBitOffset);
/* H.263 intra: from index 1 with TCOEF, or with advIntraFlag from index 0
 * with the Annex I intra table; scan 0, 1, 2 or (other) none.  A pair not in
 * the table takes the 22-bit escape 0000011, last, run (6), low 8 bits of the
 * level.  modQuantFlag: magnitudes of 128 and more take level 1000 0000 and
 * 11 more bits, bits 0..4 then bits 5..10 of the level. */
ZanStatus zaniEncodeCoeffsIntra_H263_16s1u(const Zan16s* pCoeffs, Zan8u** ppBitStream, Zan32s* pBitOffset,
                                           Zan32s countNonZero, Zan32s advIntraFlag, Zan32s modQuantFlag,
                                           Zan32s scan);
ZanStatus zaniEncodeCoeffsInter_H263_16s1u(const Zan16s* pCoeffs, Zan8u** ppBitStream, Zan32s* pBitOffset,
                                           Zan32s countNonZero, Zan32s modQuantFlag, Zan32s scan);
/* H.261 intra: DC byte as in H.263, then (countNonZero counting the DC) the
 * AC levels and end of block 10.  scan -1 reads in order, else zigzag.
 * Pairs not in the table take the 20-bit escape 000001, run (6), low 8 bits
 * of the level. */
ZanStatus zaniEncodeCoeffsIntra_H261_16s1u(const Zan16s* pCoeffs, Zan8u** ppBitStream, Zan32s* pBitOffset,
                                           Zan32s countNonZero, Zan32s scan);
/* H.261 inter: entry 0 of +1 or -1 is the first code 1s. */
ZanStatus zaniEncodeCoeffsInter_H261_16s1u(const Zan16s* pCoeffs, Zan8u** ppBitStream, Zan32s* pBitOffset,
                                           Zan32s countNonZero, Zan32s scan);
/* MPEG-4 dct_dc_size (luma or chroma table) and the differential; sizes of 9
 * and more close with a marker bit.  Sizes above 12 (|dc| of 4096 and more)
 * have no code and are written as size 12 with the low 12 bits. */
ZanStatus zaniEncodeDCIntra_MPEG4_16s1u(Zan16s dc, Zan8u** ppBitStream, Zan32s* pBitOffset, Zan32s chromaFlag);
/* MPEG-4 intra: VLC with escape types 1, 2 and 3 in that order of
 * preference, or reversible codes with the 30-bit escape (rvlcFlag).
 * separateDCFlag starts at index 1.  scan 0, 1, 2 or (other) none. */
ZanStatus zaniEncodeCoeffsIntra_MPEG4_16s1u(const Zan16s* pCoeffs, Zan8u** ppBitStream, Zan32s* pBitOffset,
                                            Zan32s countNonZero, Zan32s rvlcFlag, Zan32s separateDCFlag,
                                            Zan32s scan);
/* MPEG-4 inter: scan -1 none, 1 alternate vertical, anything else zigzag. */
ZanStatus zaniEncodeCoeffsInter_MPEG4_16s1u(const Zan16s* pCoeffs, Zan8u** ppBitStream, Zan32s* pBitOffset,
                                            Zan32s countNonZero, Zan32s rvlcFlag, Zan32s scan);

/* ==== end of coefenc ==== */

/* ==== cavlcdec: H.264 CAVLC and Exp-Golomb decoding ==== */

/* One residual block of H.264 CAVLC, or one Exp-Golomb value, from the word
 * cursor (ppBitStream: the native 32-bit word holding the next bit; pBitOffset:
 * that bit's number, 31 = most significant, down to 0).  One readable word must
 * follow the coded data.  On success the cursor is left right behind the code.
 *
 * Code tables are the caller's, built with zaniHuffmanRunLevelTableInitAlloc_32s
 * (coefficient token: each row (code, trailing ones, total coefficients)) and
 * zaniHuffmanTableInitAlloc_32s (total zeros, run before: rows (code, value)),
 * from the standard's Tables 9-5, 9-7 to 9-10.  A walk that ends on the invalid
 * entry (mark 61681) is an invalid code.
 *   ppTblCoeffToken  3 token tables: uVLCSelect 0,1 -> [0]; 2,3 -> [1]; 4..7 -> [2];
 *                    8 and above: the 6-bit fixed code (top 4 bits x, low 2 bits
 *                    trailing ones T; x 0 with T 3 is the empty block, otherwise
 *                    total x + 1).
 *   ppTblTotalZeros  total-zeros tables by total coefficients (row 0 unused).
 *   ppTblRunBefore   run-before tables by zeros left.
 *   pScan            raster position within the 16-element block by scan index.
 * Rows are tested for null only when the stream selects them (-8 then, after
 * *pNumCoeff and the block clear may have been written, cursor as at entry).
 *
 * Block decoding: token; *pNumCoeff = total; T trailing-one signs (1 = -1);
 * a block with total 0 writes nothing more, leaves *ppPosCoefbuf alone and
 * returns zanStsOk (cursor behind the token).  Otherwise the output block is
 * cleared, the other levels decoded (suffix length 1 to start when total > 10
 * and T < 3, else 0; +1 on the first level when T < 3; prefix 14/15 escapes;
 * prefix 16 and above: p - 3 suffix bits with 2^(p-3) - 4096 added; the
 * 16-bit forms keep a level's low 16 bits), total zeros read when total is
 * below the limit, runs read while zeros remain and more than one coefficient
 * is left (the last takes all zeros left), and each level stored at its scan
 * index.  *ppPosCoefbuf then moves on one block.  Suffix bits of more than 32
 * (prefix 36 and above, only in damaged streams): the last 32 are the value
 * and 2^(p-3) counts modulo 2^32.
 *
 * Checks, in order: -8 any null argument, then *ppBitStream or *ppPosCoefbuf
 * null; -11 uVLCSelect negative as a signed value or coeffLimit other than 16
 * or 15 (not in the index form); -8 a selected table row that is null.
 * zanStsVlcCodeBad (-74): an invalid token, total zeros or run before; the
 * cursor is then as at entry (index form: as at entry for the token, left where
 * the walk ended for total zeros and run before); *pNumCoeff keeps the count,
 * the block holds what was placed, *ppPosCoefbuf has not moved. */

/* 4x4 block: coeffLimit 16, or 15 for an AC block (scan indices 1..15; slot
 * pScan[0] stays zero).  A level goes to pScan[n + z + 16 - coeffLimit - 1],
 * n the coefficient's rank from 1 (lowest) and z the zeros below it.  Block of
 * 16 elements.  On a damaged AC stream the index can reach 16: pScan should
 * hold 17 entries whose values lie in 0..15. */
ZanStatus zaniDecodeCAVLCCoeffs_H264_1u16s(Zan32u** ppBitStream, Zan32s* pBitOffset, Zan16s* pNumCoeff,
                                           Zan16s** ppPosCoefbuf, Zan32u uVLCSelect, Zan16s coeffLimit,
                                           const Zan32u* const* ppTblCoeffToken,
                                           const Zan32u* const* ppTblTotalZeros,
                                           const Zan32u* const* ppTblRunBefore, const Zan32s* pScan);
/* As above with 32-bit output and levels not truncated (high bit depth). */
ZanStatus zaniDecodeCAVLCCoeffs_H264_1u32s(Zan32u** ppBitStream, Zan32s* pBitOffset, Zan16s* pNumCoeff,
                                           Zan32s** ppPosCoefbuf, Zan32u uVLCSelect, Zan16s coeffLimit,
                                           const Zan32u* const* ppTblCoeffToken,
                                           const Zan32u* const* ppTblTotalZeros,
                                           const Zan32u* const* ppTblRunBefore, const Zan32s* pScan);
/* A block limited to scan indices firstIdx..lastIdx; coeffLimit m is the count
 * of coefficients that may be present (not checked).  With n = lastIdx -
 * firstIdx + 1 (16-bit) below 16 the token is remapped: its rank in the code
 * order of its table (select uVLCSelect, or 7 for the fixed code, which ranks
 * like tables 4..7) picks the rank-th token, counted in the same order, among
 * those with total <= n and T <= min(n, 3); a rank with no such token is an
 * invalid token.  Total zeros are read when total < m, from row total when m
 * is 15 or more, else from row min(total - m + 4, 3) (m < 5), min(total - m +
 * 8, 7) (m 5..8) or min(total - m + 16, 15) (m > 8); the null test looks at row
 * total (which must not be null), and also at the row walked.  A level goes to
 * pScan[n + firstIdx + z - 1].  Block of 16 elements. */
ZanStatus zaniDecodeCAVLCCoeffsIdxs_H264_1u16s(Zan32u** ppBitStream, Zan32s* pBitOffset, Zan16s* pNumCoeff,
                                               Zan16s** ppPosCoefbuf, Zan32u uVLCSelect, Zan16s coeffLimit,
                                               const Zan32u* const* ppTblCoeffToken,
                                               const Zan32u* const* ppTblTotalZeros,
                                               const Zan32u* const* ppTblRunBefore, const Zan32s* pScan,
                                               Zan32s firstIdx, Zan32s lastIdx);
/* Chroma DC 4:2:0: block of 4 elements in plain order, limit 4, tables for
 * nC = -1.  Fast path first, which needs only the cursor and pNumCoeff (tested
 * first, -8): the next 5 bits are peeked.  A first bit 1 is the token (T 1,
 * total 1): ppPosCoefbuf and *ppPosCoefbuf are tested (-8), the second bit is
 * the sign (1 = -1), the last three give the position and the bits used
 * (000: 3, 5; 001: 2, 5; 01x: 1, 4; 1xx: 0, 3), the 4 elements are cleared and
 * the level stored, *pNumCoeff = 1, the block moves on.  Bits 01 are the empty
 * block: *pNumCoeff = 0, cursor + 2 bits.  Otherwise the remaining pointers are
 * tested (-8) and the full decode runs with pTblCoeffToken. */
ZanStatus zaniDecodeCAVLCChromaDcCoeffs_H264_1u16s(Zan32u** ppBitStream, Zan32s* pBitOffset, Zan16s* pNumCoeff,
                                                   Zan16s** ppPosCoefbuf, const Zan32u* pTblCoeffToken,
                                                   const Zan32u* const* ppTblTotalZeros,
                                                   const Zan32u* const* ppTblRunBefore);
ZanStatus zaniDecodeCAVLCChromaDcCoeffs_H264_1u32s(Zan32u** ppBitStream, Zan32s* pBitOffset, Zan16s* pNumCoeff,
                                                   Zan32s** ppPosCoefbuf, const Zan32u* pTblCoeffToken,
                                                   const Zan32u* const* ppTblTotalZeros,
                                                   const Zan32u* const* ppTblRunBefore);
/* Chroma DC 4:2:2: block of 8 elements, limit 8, tables for nC = -2; no fast
 * path, all pointers tested at entry.  Coefficient k of the scan (0..7) goes to
 * element 0, 2, 1, 4, 6, 3, 5, 7. */
ZanStatus zaniDecodeCAVLCChroma422DcCoeffs_H264_1u16s(Zan32u** ppBitStream, Zan32s* pBitOffset,
                                                      Zan16s* pNumCoeff, Zan16s** ppPosCoefbuf,
                                                      const Zan32u* pTblCoeffToken,
                                                      const Zan32u* const* ppTblTotalZeros,
                                                      const Zan32u* const* ppTblRunBefore);
ZanStatus zaniDecodeCAVLCChroma422DcCoeffs_H264_1u32s(Zan32u** ppBitStream, Zan32s* pBitOffset,
                                                      Zan16s* pNumCoeff, Zan32s** ppPosCoefbuf,
                                                      const Zan32u* pTblCoeffToken,
                                                      const Zan32u* const* ppTblTotalZeros,
                                                      const Zan32u* const* ppTblRunBefore);

/* One Exp-Golomb value.  A first bit 1 gives 0.  Otherwise the zeros up to
 * the next 1 are counted (the first bit included) as n, the 1 consumed.  With n
 * below 17 (16-bit form) or 32 (32-bit form) n more bits v give c = 2^n + v:
 * unsigned c - 1; signed c >> 1 when c is even, -(c >> 1) when odd; the 16-bit
 * form keeps the low 16 bits.  A longer code is no error: the cursor moves n
 * bits further, *pDst = 0, zanStsOk.  isSigned: the 16-bit form looks at its
 * low 8 bits only, the 32-bit form at the whole value.
 * Checks: -8 any null pointer, then *ppBitStream null; zanStsBadArg (-5)
 * *pBitOffset above 31 as unsigned. */
ZanStatus zaniDecodeExpGolombOne_H264_1u16s(Zan32u** ppBitStream, Zan32s* pBitOffset, Zan16s* pDst,
                                            Zan32s isSigned);
ZanStatus zaniDecodeExpGolombOne_H264_1u32s(Zan32u** ppBitStream, Zan32s* pBitOffset, Zan32s* pDst,
                                            Zan32s isSigned);

/* ==== end of cavlcdec ==== */

/* ==== h264weight: H.264 weighted prediction ==== */

/* Explicit and implicit weighted sample prediction of H.264 (clause 8.4.2.3)
 * on blocks that interpolation has produced.  The caller gives the weights,
 * offsets and log2 denominator (and works out implicit weights); the library
 * computes the sample formula.  Arithmetic is in 32 bits (two's complement,
 * wrapping), then each result is clamped to 0..255, or in the 16-bit forms
 * to 0..(1 << bitDepth) - 1, and stored.  With a, b the samples of the two
 * sources and s that of the one source:
 *   uni-directional: r = log2wd != 0 ? 1 << (log2wd - 1) : 0;
 *                    out = ((s * w + r) >> log2wd) + o
 *   bi-directional:  out = ((a * w1 + b * w2 + (1 << log2wd)) >> (log2wd + 1))
 *                          + ((o1 + o2 + 1) >> 1)
 *   implicit:        out = (a * w1 + b * w2 + 32) >> 6
 * Shifts are arithmetic.  Weights, offsets and log2wd are not checked; a
 * shift count of 32 or more (or a negative count, seen as unsigned) leaves
 * 0 or -1 by the sign, and 1 << n is 0 for such counts.  In H.264 terms
 * log2wd lies in 0..7 and weights and offsets in -128..127.
 *
 * Block sizes: width and height each 2, 4, 8 or 16 (zanStsSizeBad
 * otherwise).  A step below the block width gives zanStsStepBad (so a
 * negative step does too).  Checks, in order: null pointers
 * (zanStsNullPtr), steps (zanStsStepBad), sizes (zanStsSizeBad).  Nothing is
 * written on failure.  Exactly the block's samples are read and written.
 * A destination either is one of the sources (the in-place forms, or the
 * same pointer and step) or does not overlap them. */

/* Interleaved (two-channel U/V) block: widths count sample pairs, steps are
 * in bytes and are compared with that width value.  pSrc2 and src2Step are
 * not used by the uni-directional form. */
typedef struct {
    const Zan8u* pSrc1;
    Zan32s       src1Step;
    const Zan8u* pSrc2;
    Zan32s       src2Step;
    Zan8u*       pDst;
    Zan32s       dstStep;
    Zan32s       width;   /* sample pairs */
    Zan32s       height;
} ZanWeightBlockRecord;

/* Weights of one reference list for an interleaved block.  Only the low 4
 * bits of log2Denominator are used. */
typedef struct {
    Zan32u log2Denominator;
    Zan8s  weightU;
    Zan8s  weightV;
    Zan8s  offsetU;
    Zan8s  offsetV;
} ZanWeightRecord;

/* 16-bit sample block: steps count samples.  bitDepth sets the clamp
 * 0..(1 << bitDepth) - 1 and is not checked; 1..16 are its meaningful values
 * (others give a deterministic but meaningless clamp). */
typedef struct {
    const Zan16u* pSrc1;
    Zan32s        src1Step;
    const Zan16u* pSrc2;
    Zan32s        src2Step;
    Zan16u*       pDst;
    Zan32s        dstStep;
    Zan32s        bitDepth;
    Zan32s        width;
    Zan32s        height;
} ZanBidirRecord;

/* Uni-directional explicit weighting in place.  Checks: pSrcDst null;
 * srcDstStep below roiSize.width; size.  The C1IR form is the same
 * function. */
ZanStatus zaniUniDirWeightBlock_H264_8u_C1R(Zan8u* pSrcDst, Zan32s srcDstStep, Zan32s log2wd, Zan32s w,
                                            Zan32s o, ZaniSize roiSize);
ZanStatus zaniUniDirWeightBlock_H264_8u_C1IR(Zan8u* pSrcDst, Zan32s srcDstStep, Zan32s log2wd, Zan32s w,
                                             Zan32s o, ZaniSize roiSize);

/* Uni-directional weighting of an interleaved block from pSrc1 to pDst, U
 * (even bytes) with weightU, offsetU and V (odd bytes) with weightV,
 * offsetV; log2wd is log2Denominator & 15.  Checks: pBlock, pWeight, then
 * pBlock->pSrc1, pBlock->pDst null; src1Step or dstStep below width; size. */
ZanStatus zaniUniDirWeightBlock_H264_8u_C2R(const ZanWeightBlockRecord* pBlock, const ZanWeightRecord* pWeight);

/* Bi-directional explicit weighting, pDst from pSrc1 (list 0: w1, o1) and
 * pSrc2 (list 1: w2, o2).  P2P1R: both sources share srcStep.  Checks:
 * pSrc1, pSrc2, pDst null; a source step or dstStep below roiSize.width;
 * size. */
ZanStatus zaniBiDirWeightBlock_H264_8u_P2P1R(const Zan8u* pSrc1, const Zan8u* pSrc2, Zan8u* pDst, Zan32s srcStep,
                                             Zan32s dstStep, Zan32s log2wd, Zan32s w1, Zan32s o1, Zan32s w2,
                                             Zan32s o2, ZaniSize roiSize);
ZanStatus zaniBiDirWeightBlock_H264_8u_P3P1R(const Zan8u* pSrc1, const Zan8u* pSrc2, Zan8u* pDst, Zan32s src1Step,
                                             Zan32s src2Step, Zan32s dstStep, Zan32s log2wd, Zan32s w1, Zan32s o1,
                                             Zan32s w2, Zan32s o2, ZaniSize roiSize);

/* Bi-directional weighting of an interleaved block: pSrc1 with the list-0
 * record, pSrc2 with the list-1 record, each channel with its own weights
 * and offsets; log2wd is pWeight0->log2Denominator & 15 (that of pWeight1 is
 * not used).  Checks: pBlock, pWeight0, pWeight1, then pBlock->pSrc1,
 * pBlock->pSrc2, pBlock->pDst null; src1Step, src2Step or dstStep below
 * width; size. */
ZanStatus zaniBiDirWeightBlock_H264_8u_C2R(const ZanWeightBlockRecord* pBlock, const ZanWeightRecord* pWeight0,
                                           const ZanWeightRecord* pWeight1);

/* Implicit bi-directional weighting, no offsets.  Checks as for the explicit
 * forms. */
ZanStatus zaniBiDirWeightBlockImplicit_H264_8u_P2P1R(const Zan8u* pSrc1, const Zan8u* pSrc2, Zan8u* pDst,
                                                     Zan32s srcStep, Zan32s dstStep, Zan32s w1, Zan32s w2,
                                                     ZaniSize roiSize);
ZanStatus zaniBiDirWeightBlockImplicit_H264_8u_P3P1R(const Zan8u* pSrc1, const Zan8u* pSrc2, Zan8u* pDst,
                                                     Zan32s src1Step, Zan32s src2Step, Zan32s dstStep, Zan32s w1,
                                                     Zan32s w2, ZaniSize roiSize);

/* Weighted average written over the second source:
 *   r = shift >= 1 ? 1 << (shift - 1) : 0;
 *   out = ((a * w1 + r + b * w2) >> shift) + o, clamped to 0..255,
 * a from pSrc1, b from pSrc2Dst, both rows srcDstStep apart.  Checks: pSrc1,
 * pSrc2Dst null; srcDstStep below roiSize.width; size. */
ZanStatus zaniWeightedAverage_H264_8u_C1IR(const Zan8u* pSrc1, Zan8u* pSrc2Dst, Zan32s srcDstStep, Zan32s w1,
                                           Zan32s w2, Zan32s shift, Zan32s o, ZaniSize roiSize);

/* 16-bit uni-directional weighting in place, srcDstStep in samples, clamp to
 * 0..(1 << bitDepth) - 1.  Checks: pSrcDst null; srcDstStep below
 * roiSize.width; size. */
ZanStatus zaniUnidirWeight_H264_16u_IP2P1R(Zan16u* pSrcDst, Zan32s srcDstStep, Zan32s log2wd, Zan32s w, Zan32s o,
                                           ZaniSize roiSize, Zan32s bitDepth);

/* 16-bit bi-directional explicit and implicit weighting.  Checks: pRec, then
 * pRec->pSrc1, pSrc2, pDst null; src1Step, src2Step or dstStep below width;
 * size (2, 4, 8 or 16). */
ZanStatus zaniBidirWeight_H264_16u_P2P1R(const ZanBidirRecord* pRec, Zan32s log2wd, Zan32s w1, Zan32s o1,
                                         Zan32s w2, Zan32s o2);
ZanStatus zaniBidirWeightImplicit_H264_16u_P2P1R(const ZanBidirRecord* pRec, Zan32s w1, Zan32s w2);

/* 16-bit plain average out = (a + b + 1) >> 1, clamped to
 * 0..(1 << bitDepth) - 1 like every 16-bit form.  Checks: pRec, then
 * pRec->pSrc1, pSrc2, pDst null; width or height outside 2..16 (any value in
 * between, odd ones too): zanStsSizeBad.  Steps are not checked. */
ZanStatus zaniBidir_H264_16u_P2P1R(const ZanBidirRecord* pRec);

/* ==== end of h264weight ==== */

/* ==== h264interp: H.264 interpolation and picture boundaries ==== */

/* Quarter-sample luma and eighth-sample chroma prediction as clause
 * 8.4.2.2 of H.264 defines it, 8-bit and high bit depth, planar and
 * interleaved (NV12) chroma, with three levels of interface:
 *   plain: pSrc is the block's integer position, dx and dy the fraction,
 *     and every sample the filter reads exists;
 *   Top and Bottom: as plain, for a block whose rows partly lie outside the
 *     picture above or below (outPixels, see below);
 *   Block: one record with the plane, the block position and the motion
 *     vector; the function finds the fraction and reads through the picture
 *     boundary where the block leaves the plane.
 *
 * Luma (dx, dy in 0..3): the 6-tap filter (1, -5, 20, 20, -5, 1) gives the
 * half samples b, h = Clip((sum + 16) >> 5) and the centre j =
 * Clip((sum of the unrounded horizontal sums + 512) >> 10); the quarter
 * samples are (x + y + 1) >> 1 of their two neighbours, as the standard's
 * table lists them.  A fraction dx reads 2 columns to the left and 3 to the
 * right of the block, dy 2 rows above and 3 below.
 * Chroma (dx, dy in 0..7): ((8 - dx)(8 - dy) A + dx (8 - dy) B +
 * (8 - dx) dy C + dx dy D + 32) >> 6; dx reads one column more, dy one row
 * more.  In the interleaved forms the horizontal neighbour of a sample is 2
 * bytes on and widths count pairs.
 * 8-bit results clamp to 0..255, 16-bit ones to 0..(1 << bitDepth) - 1.
 * Widths made of several of the allowed bits (luma 12 = 8 + 4, chroma 6 =
 * 4 + 2, ...) give exactly the standard's result over the whole width.
 *
 * 8-bit steps count bytes and are not checked (zero and negative steps are
 * legal); 16-bit steps count samples. */

/* One call's arguments for the 16-bit plain, Top and Bottom forms. */
typedef struct {
    const Zan16u* pSrc; /* integer position of the block */
    Zan32s srcStep;     /* samples */
    Zan16u* pDst;
    Zan32s dstStep;     /* samples */
    Zan32s dx;
    Zan32s dy;
    ZaniSize roiSize;
    Zan32s bitDepth;    /* results clamp to 0..(1 << bitDepth) - 1 */
} ZanInterpolateSampleRecord;

/* The block record of the 8-bit Block forms (also used by the AVS
 * interpolation).  The pointers are the base pointers of the planes (first
 * U, then V for planar chroma; the luma and interleaved forms use the first
 * only); the function adds position and vector itself.  sizeFrame,
 * sizeBlock and pointBlockPos count the plane's samples (chroma pairs in the
 * interleaved forms); pointVector is in quarter samples for luma, eighth
 * samples for chroma. */
typedef struct {
    const Zan8u* pSrc[2];
    Zan32s srcStep; /* bytes */
    Zan8u* pDst[2];
    Zan32s dstStep; /* bytes */
    ZaniSize sizeFrame;
    ZaniSize sizeBlock;
    ZaniPoint pointBlockPos;
    ZaniPoint pointVector;
} ZanInterpolateBlockRecord;

/* The same for the 16-bit Block forms; steps count samples. */
typedef struct {
    const Zan16u* pSrc[2];
    Zan32s srcStep;
    Zan16u* pDst[2];
    Zan32s dstStep;
    ZaniSize sizeFrame;
    ZaniSize sizeBlock;
    ZaniPoint pointBlockPos;
    ZaniPoint pointVector;
    Zan32s bitDepth;
} ZanInterpolateBlockRecord_16u;

/* Plain luma, 8-bit.  Checks in order: a pointer null: zanStsNullPtr; dx or
 * dy above 3 (compared as unsigned, so a negative value fails too):
 * zanStsBadArg; roiSize.height not a multiple of 4 or roiSize.width with a
 * bit other than 4, 8, 16 set: zanStsSizeBad.  No step check. */
ZanStatus zaniInterpolateLuma_H264_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep,
                                          Zan32s dx, Zan32s dy, ZaniSize roiSize);

/* Plain chroma, 8-bit, one plane.  Checks: pointers: zanStsNullPtr; dx or dy
 * above 7 (unsigned): zanStsBadArg; height odd or width with a bit other
 * than 2, 4, 8 set: zanStsSizeBad. */
ZanStatus zaniInterpolateChroma_H264_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep,
                                            Zan32s dx, Zan32s dy, ZaniSize roiSize);

/* Plain chroma from an interleaved U/V plane to two planes (dstStep for
 * both); roiSize.width counts pairs.  Checks as the one-plane form. */
ZanStatus zaniInterpolateChroma_H264_8u_C2P2R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDstU, Zan8u* pDstV,
                                              Zan32s dstStep, Zan32s dx, Zan32s dy, ZaniSize roiSize);

/* Plain luma, 16-bit.  Checks in order: record, pSrc or pDst null:
 * zanStsNullPtr; width above srcStep or above dstStep: zanStsStepBad; dx or
 * dy outside 0..3: zanStsBadArg; width or height not 4, 8 or 16, or width +
 * height equal to 20 (16x4, 4x16): zanStsSizeBad.  bitDepth is not checked;
 * the clamp is (1 << (bitDepth & 31)) - 1 computed in 32 bits. */
ZanStatus zaniInterpolateLuma_H264_16u_C1R(const ZanInterpolateSampleRecord* pInfo);

/* Plain chroma, 16-bit.  Checks: null: zanStsNullPtr; srcStep or dstStep
 * below 8: zanStsStepBad; dx or dy outside 0..7: zanStsBadArg; height not
 * 2, 4, 8, 16 or width not 2, 4, 8: zanStsSizeBad. */
ZanStatus zaniInterpolateChroma_H264_16u_C1R(const ZanInterpolateSampleRecord* pInfo);

/* Top and Bottom forms: as the plain forms, checks included, for a block
 * that crosses the picture's top or bottom edge.  Rows are counted from
 * pSrc (the block's first row is 0; the luma filter also reads rows -2, -1
 * and h .. h + 2, the chroma filter row h).
 *   Top: every row above row outPixels reads row outPixels instead.  A
 *     negative outPixels puts the edge above the block, so that only the
 *     filter's margin rows above row outPixels are replaced (for chroma,
 *     which reads no row above the block, nothing is).
 *   Bottom: every row below row h - outPixels - 1 reads that row instead
 *     (h = roiSize.height); a negative outPixels concerns only the rows
 *     below the block.
 * Columns are never replaced. */
ZanStatus zaniInterpolateLumaTop_H264_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep,
                                             Zan32s dx, Zan32s dy, Zan32s outPixels, ZaniSize roiSize);
ZanStatus zaniInterpolateLumaBottom_H264_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep,
                                                Zan32s dx, Zan32s dy, Zan32s outPixels, ZaniSize roiSize);
ZanStatus zaniInterpolateChromaTop_H264_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep,
                                               Zan32s dx, Zan32s dy, Zan32s outPixels, ZaniSize roiSize);
ZanStatus zaniInterpolateChromaBottom_H264_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst,
                                                  Zan32s dstStep, Zan32s dx, Zan32s dy, Zan32s outPixels,
                                                  ZaniSize roiSize);
ZanStatus zaniInterpolateLumaTop_H264_16u_C1R(const ZanInterpolateSampleRecord* pInfo, Zan32s outPixels);
ZanStatus zaniInterpolateLumaBottom_H264_16u_C1R(const ZanInterpolateSampleRecord* pInfo, Zan32s outPixels);
ZanStatus zaniInterpolateChromaTop_H264_16u_C1R(const ZanInterpolateSampleRecord* pInfo, Zan32s outPixels);
ZanStatus zaniInterpolateChromaBottom_H264_16u_C1R(const ZanInterpolateSampleRecord* pInfo, Zan32s outPixels);

/* Block forms.  Luma: dx = vector.x & 3, dy = vector.y & 3, the integer part
 * vector >> 2 (arithmetic); chroma: & 7 and >> 3.  With both vector
 * components 0 the block at pointBlockPos is copied, with no boundary test:
 * it must lie inside the plane.  Otherwise the region the filter reads is
 * x = pos.x + (vector.x >> 2) - (dx ? 2 : 0), width w + (dx ? 5 : 0) (and
 * the same vertically) for luma; x = pos.x + (vector.x >> 3), width
 * w + (dx ? 1 : 0) for chroma.  A region inside the plane is read in place.
 * Otherwise the region is read through the boundary, each position outside
 * the plane taking the nearest plane sample, which equals reading a plane
 * padded without limit; but an axis on which the region crosses both ends
 * of the plane is clamped on one side only: at the start when the region
 * begins before the plane (its far samples are then read past the plane's
 * end), at the end otherwise.  Blocks larger than the plane are therefore
 * not supported.
 *
 * Checks: luma: record, pSrc[0] or pDst[0] null: zanStsNullPtr; height not
 * a multiple of 4 or width with a bit other than 4, 8, 16 set:
 * zanStsSizeBad.  Chroma (all three layouts): record or any of pSrc[0],
 * pSrc[1], pDst[0], pDst[1] null: zanStsNullPtr; height odd or width with a
 * bit other than 2, 4, 8 set: zanStsSizeBad.  C2C2R reads and writes
 * interleaved pairs (pSrc[0], pDst[0]); C2P2R reads interleaved pairs from
 * pSrc[0] and writes U to pDst[0], V to pDst[1]. */
ZanStatus zaniInterpolateLumaBlock_H264_8u_P1R(const ZanInterpolateBlockRecord* pInfo);
ZanStatus zaniInterpolateLumaBlock_H264_16u_P1R(const ZanInterpolateBlockRecord_16u* pInfo);
ZanStatus zaniInterpolateChromaBlock_H264_8u_P2R(const ZanInterpolateBlockRecord* pInfo);
ZanStatus zaniInterpolateChromaBlock_H264_16u_P2R(const ZanInterpolateBlockRecord_16u* pInfo);
ZanStatus zaniInterpolateChromaBlock_H264_8u_C2C2R(const ZanInterpolateBlockRecord* pInfo);
ZanStatus zaniInterpolateChromaBlock_H264_8u_C2P2R(const ZanInterpolateBlockRecord* pInfo);

/* Bi-prediction average: pDst = (a + b + 1) >> 1 per sample over width x
 * height, each 2..16 (any value, odd included).  P2P1R uses pitch for all
 * three arrays, P3P1R one step each.  Checks: a pointer null:
 * zanStsNullPtr; width or height outside 2..16: zanStsSizeBad. */
ZanStatus zaniInterpolateBlock_H264_8u_P2P1R(const Zan8u* pSrc1, const Zan8u* pSrc2, Zan8u* pDst, Zan32u width,
                                             Zan32u height, Zan32s pitch);
ZanStatus zaniInterpolateBlock_H264_8u_P3P1R(const Zan8u* pSrc1, const Zan8u* pSrc2, Zan8u* pDst, Zan32u width,
                                             Zan32u height, Zan32s src1Step, Zan32s src2Step, Zan32s dstStep);

/* Pads a plane in place by expand samples on every side; pSrcDst is sample
 * (0, 0) of the frame, height counts frame rows.  Checks: pSrcDst null:
 * zanStsNullPtr; height odd or below 2, or width 0: zanStsSizeBad; expand 0:
 * zanStsOk with nothing done, whatever structure is; structure other than
 * 0, 1, 2: zanStsBadArg.  In order, bottom margin, sides, top margin (the
 * top copies the already padded corners):
 *   0 frame: row height - 1 is copied to the expand rows below it; each of
 *     rows 0 .. height + expand - 1 gets expand copies of its first sample on
 *     the left and of its last on the right; padded row 0 is copied to the
 *     expand rows above.
 *   1 top field (even rows, step 2 * step): row height - 2 to (expand + 1)
 *     >> 1 field rows below; sides of (height + expand + 1) >> 1 field rows
 *     from row 0; padded row 0 to expand >> 1 field rows above.
 *   2 bottom field (odd rows): row height - 1 to expand >> 1 field rows
 *     below; sides of (height + expand) >> 1 field rows from row 1; padded
 *     row 1 to (expand + 1) >> 1 field rows above.
 * Writes rows -expand .. height + expand - 1, columns -expand ..
 * width + expand - 1. */
ZanStatus zaniExpandPlane_H264_8u_C1R(Zan8u* pSrcDst, Zan32u width, Zan32u height, Zan32s step, Zan32u expand,
                                      Zan32s structure);

/* ==== end of h264interp ==== */

/* ==== h264recon: H.264 macroblock reconstruction ==== */

/* Whole-macroblock reconstruction, in place in the picture, from a run of
 * decoded coefficients.  Intra members predict block by block and add each
 * block's residual before the next block is predicted; inter members add the
 * residual over a prediction the caller has already written.
 *
 * Coefficient cursor (ppSrcDstCoeff): the address of a pointer into the
 * caller's coefficients (Zan16s in the 16s8u members, Zan32s in the 32s16u
 * members).  Only coded blocks are present, one after another, each in
 * raster order of its positions: luma DC (16, Intra 16x16 only), luma 4x4
 * blocks (16 each) or 8x8 blocks (64 each) in coding order, U DC, V DC
 * (4 each for 4:2:0; 8 for 4:2:2 in raster order of four rows by two
 * columns, as zaniDecodeCAVLCChroma422DcCoeffs_H264_* lays them), U AC blocks, V AC blocks
 * (16 each, position 0 unused).  The pointer is moved past what was used, and
 * the array is overwritten with dequantised values and residuals.  It is
 * not moved on any failure.
 *
 * Coded-block pattern (cbp) of the Baseline and High members: bit 0 luma DC
 * of Intra 16x16; bits 1..16 luma 4x4 blocks in coding order; 17 U DC, 18 V
 * DC; 19..22 U AC blocks 0..3, 23..26 V AC blocks 0..3 (raster order, two by
 * two).  The 8x8 members use bits 0..3 for the four 8x8 blocks.
 *
 * Edge-type word (edgeType): bits SET WHEN the neighbouring macroblock is
 * ABSENT: 1 left, 4 above, 16 above-left, 32 above-right.  Each 4x4 or 8x8
 * block's neighbours follow from its place in the macroblock.  Intra 16x16
 * and chroma modes need: vertical bit 4 clear, horizontal bit 1 clear, plane
 * bits 1, 4 and 16 clear; DC nothing.
 *
 * pMBIntraTypes: one Zan32u mode per 4x4 block in coding order (16), or per
 * 8x8 block (4); the Half members read 8 or 2.  Modes: 4x4/8x8 0..8; 16x16
 * 0 vertical, 1 horizontal, 2 DC, 3 plane; chroma 0 DC, 1 horizontal,
 * 2 vertical, 3 plane.  Absent 4x4 neighbours get 128 (the 4x4 members then
 * return zanStsEdgeSubstituted, with every block reconstructed); absent 8x8
 * neighbours get 128 silently.
 *
 * Level-scale arrays (pQuantTable, pQuantU, pQuantV): the row for QP % 6,
 * 16 entries for 4x4 blocks (entry 0 also scales the DC stage), 64 for 8x8.
 * bypass: with the flag set and QP 0 (per plane for chroma) the residual is
 * added untransformed; a chroma or Intra 16x16 block with no AC then changes
 * only its first sample, by its DC.
 *
 * Checks, in order: any null pointer (the cursor's pointee included, and
 * the scale arrays, mode arrays, records and record pointers) -8; QP out of
 * range -11 (luma 0..51; chroma 0..39; the Halfs/Halves P2R chroma members
 * 0..51 at entry, their residual stage 0..39 after the prediction is
 * written); step below 1 -14 where stated; mode out of range -11 where
 * stated; a needed neighbour absent -117.  Nothing is written on failure,
 * except where a member checks modes as it walks (the picture then holds the
 * blocks done so far; the cursor is not moved).  Steps are bytes except in
 * the 32s16u members, where they count samples.  Every neighbour a block
 * may use is read from the picture around the macroblock. */

/* One plane of a Record-generation call.  ppSrcDstCoeff points at a Zan16s*
 * (16s8u members) or a Zan32s* (32s16u members); pSrcDstPlane at Zan8u or
 * Zan16u samples.  srcDstStep must be at least 1 (samples in 32s16u).  cbp:
 * luma as the 4x4 / 8x8 patterns above but with the luma DC at bit 0 and
 * 4x4 block n at bit n + 1; chroma bit 0 DC, bits 1.. the AC blocks.
 * bitDepth (32s16u): results are clamped to 0..(1 << bitDepth) - 1 and an
 * absent neighbour stands as 1 << (bitDepth - 1). */
typedef struct {
    void**        ppSrcDstCoeff;
    void*         pSrcDstPlane;
    Zan32s        srcDstStep;
    Zan32u        cbp;
    Zan32s        QP;
    const Zan16s* pQuantTable;
    Zan8u         bypass;
    Zan32s        bitDepth;
} ZanReconstructRecord;

/* -- Baseline (built-in flat scaling) -- */

/* 16 4x4 intra blocks.  Checks: null -8; QP 0..51 -11.  Modes are not
 * checked (a mode above 8 leaves its block unpredicted).  Returns 11 when a
 * 4x4 prediction substituted 128. */
ZanStatus zaniReconstructLumaIntraMB_H264_16s8u_C1R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstY, Zan32s srcDstStep,
                                                    const Zan32u* pMBIntraTypes, Zan32u cbp, Zan32s QP,
                                                    Zan8u edgeType);
/* Upper half only (blocks 0..7, cbp bits 1..8, 8 modes).  Checks: null -8;
 * QP 0..51 -11; step below 1 -14; a mode above 8, met in the walk, -11. */
ZanStatus zaniReconstructLumaIntraHalfMB_H264_16s8u_C1R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstY, Zan32s srcDstStep,
                                                        const Zan32u* pMBIntraTypes, Zan32u cbp, Zan32s QP,
                                                        Zan8u edgeType);
/* Intra 16x16.  Checks: null -8; QP 0..51 -11; mode above 3 -11; edge -117.
 * Predicts, then returns at once when cbp & 0x1ffff is 0. */
ZanStatus zaniReconstructLumaIntra16x16MB_H264_16s8u_C1R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstY, Zan32s srcDstStep,
                                                         Zan32u mode, Zan32u cbp, Zan32s QP, Zan8u edgeType);
/* 16 4x4 inter blocks.  Checks: null -8; QP 0..51 -11.  cbp & 0x1fffe of 0
 * returns at once. */
ZanStatus zaniReconstructLumaInterMB_H264_16s8u_C1R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstY, Zan32s srcDstStep,
                                                    Zan32u cbp, Zan32s QP);
/* Chroma 4:2:0 intra, two planes of 8x8 sharing one step.  Checks: null -8;
 * QP 0..39 -11; mode above 3 -11; edge -117.  Predicts both planes, then
 * the residual as the inter member. */
ZanStatus zaniReconstructChromaIntraMB_H264_16s8u_P2R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstUPlane,
                                                      Zan8u* pSrcDstVPlane, Zan32u srcDstStep, Zan32u mode,
                                                      Zan32u cbp, Zan32s QP, Zan8u edgeType);
/* Interleaved (U, V in alternate bytes) form.  Checks: null -8; QP 0..39
 * -11; step below 1 -14; edge -117.  Mode not checked (above 3 predicts
 * nothing). */
ZanStatus zaniReconstructChromaIntraMB_H264_16s8u_C2R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstUV, Zan32u srcDstStep,
                                                      Zan32u mode, Zan32u cbp, Zan32s QP, Zan8u edgeType);
/* Halves of a macroblock with their own left neighbours: mode 0 (DC, the
 * upper quadrants' left edge from edgeTypeTop, the lower ones' from
 * edgeTypeBottom, above from edgeTypeTop) or 2 (vertical, edgeTypeTop bit 4
 * clear); any other mode -117.  Checks: null -8; QP 0..51 -11; mode -117;
 * then predicts and runs the inter member, which may return -11 for QP
 * above 39 with the prediction written.  Halves forwards to Halfs. */
ZanStatus zaniReconstructChromaIntraHalfsMB_H264_16s8u_P2R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstUPlane,
                                                           Zan8u* pSrcDstVPlane, Zan32u srcDstStep, Zan32u mode,
                                                           Zan32u cbp, Zan32s QP, Zan8u edgeTypeTop,
                                                           Zan8u edgeTypeBottom);
ZanStatus zaniReconstructChromaIntraHalvesMB_H264_16s8u_P2R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstUPlane,
                                                            Zan8u* pSrcDstVPlane, Zan32u srcDstStep, Zan32u mode,
                                                            Zan32u cbp, Zan32s QP, Zan8u edgeTypeTop,
                                                            Zan8u edgeTypeBottom);
/* Interleaved Halves.  Checks: null -8; QP 0..39 -11; step below 1 -14;
 * mode other than 0 or 2, or vertical without the row above, -117. */
ZanStatus zaniReconstructChromaIntraHalvesMB_H264_16s8u_C2R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstUV,
                                                            Zan32u srcDstStep, Zan32u mode, Zan32u cbp, Zan32s QP,
                                                            Zan8u edgeTypeTop, Zan8u edgeTypeBottom);
/* Chroma 4:2:0 inter.  Checks: null -8; QP 0..39 -11 (C2R: then step below
 * 1 -14).  cbp & 0x7fe0000 of 0 returns at once. */
ZanStatus zaniReconstructChromaInterMB_H264_16s8u_P2R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstUPlane,
                                                      Zan8u* pSrcDstVPlane, Zan32u srcDstStep, Zan32u cbp,
                                                      Zan32s QP);
ZanStatus zaniReconstructChromaInterMB_H264_16s8u_C2R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstUV, Zan32u srcDstStep,
                                                      Zan32u cbp, Zan32s QP);

/* -- High (caller's level-scale rows, bypass) -- */

/* 4x4 and 8x8 intra, whole or upper half.  Checks: null -8; QP 0..51 -11;
 * then, except in Intra4x4MB, a mode above 8 met in the walk -11.  The 4x4
 * members return 11 when 128 stood in. */
ZanStatus zaniReconstructLumaIntra4x4MB_H264_16s8u_C1R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstY, Zan32s srcDstStep,
                                                       const Zan32u* pMBIntraTypes, Zan32u cbp, Zan32s QP,
                                                       Zan8u edgeType, const Zan16s* pQuantTable, Zan8u bypass);
ZanStatus zaniReconstructLumaIntraHalf4x4MB_H264_16s8u_C1R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstY,
                                                           Zan32s srcDstStep, const Zan32u* pMBIntraTypes, Zan32u cbp,
                                                           Zan32s QP, Zan8u edgeType, const Zan16s* pQuantTable,
                                                           Zan8u bypass);
ZanStatus zaniReconstructLumaIntra8x8MB_H264_16s8u_C1R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstY, Zan32s srcDstStep,
                                                       const Zan32u* pMBIntraTypes, Zan32u cbp, Zan32s QP,
                                                       Zan8u edgeType, const Zan16s* pQuantTable, Zan8u bypass);
ZanStatus zaniReconstructLumaIntraHalf8x8MB_H264_16s8u_C1R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstY,
                                                           Zan32s srcDstStep, const Zan32u* pMBIntraTypes, Zan32u cbp,
                                                           Zan32s QP, Zan8u edgeType, const Zan16s* pQuantTable,
                                                           Zan8u bypass);
/* Intra 16x16.  Checks: null -8; QP 0..51 -11; mode above 3 -11; edge -117. */
ZanStatus zaniReconstructLumaIntra_16x16MB_H264_16s8u_C1R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstY,
                                                          Zan32s srcDstStep, Zan32u mode, Zan32u cbp, Zan32s QP,
                                                          Zan8u edgeType, const Zan16s* pQuantTable, Zan8u bypass);
/* Inter 4x4 (cbp bits 1..16) and 8x8 (bits 0..3).  Checks: null -8; QP
 * 0..51 -11. */
ZanStatus zaniReconstructLumaInter4x4MB_H264_16s8u_C1R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstY, Zan32u srcDstStep,
                                                       Zan32u cbp, Zan32s QP, const Zan16s* pQuantTable,
                                                       Zan8u bypass);
ZanStatus zaniReconstructLumaInter8x8MB_H264_16s8u_C1R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstY, Zan32u srcDstStep,
                                                       Zan32u cbp, Zan32s QP, const Zan16s* pQuantTable,
                                                       Zan8u bypass);
/* Chroma 4:2:0 with a QP and a scale row per plane.  Checks: null -8; QPU
 * then QPV 0..39 -11 (the Halfs/Halves: 0..51 at entry); C2R: step below 1
 * -14; the Half members: mode other than 0 or 2 (or vertical without the
 * row above) -117; the others: edge -117.  Modes are not range-checked
 * here (above 3 predicts nothing). */
ZanStatus zaniReconstructChromaIntra4x4MB_H264_16s8u_P2R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstUPlane,
                                                         Zan8u* pSrcDstVPlane, Zan32u srcDstStep, Zan32u mode,
                                                         Zan32u cbp, Zan32s QPU, Zan32s QPV, Zan8u edgeType,
                                                         const Zan16s* pQuantTableU, const Zan16s* pQuantTableV,
                                                         Zan8u bypass);
ZanStatus zaniReconstructChromaIntra4x4MB_H264_16s8u_C2R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstUV, Zan32u srcDstStep,
                                                         Zan32u mode, Zan32u cbp, Zan32s QPU, Zan32s QPV,
                                                         Zan8u edgeType, const Zan16s* pQuantTableU,
                                                         const Zan16s* pQuantTableV, Zan8u bypass);
ZanStatus zaniReconstructChromaIntraHalfs4x4MB_H264_16s8u_P2R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstUPlane,
                                                              Zan8u* pSrcDstVPlane, Zan32u srcDstStep, Zan32u mode,
                                                              Zan32u cbp, Zan32s QPU, Zan32s QPV, Zan8u edgeTypeTop,
                                                              Zan8u edgeTypeBottom, const Zan16s* pQuantTableU,
                                                              const Zan16s* pQuantTableV, Zan8u bypass);
ZanStatus zaniReconstructChromaIntraHalves4x4MB_H264_16s8u_P2R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstUPlane,
                                                               Zan8u* pSrcDstVPlane, Zan32u srcDstStep, Zan32u mode,
                                                               Zan32u cbp, Zan32s QPU, Zan32s QPV, Zan8u edgeTypeTop,
                                                               Zan8u edgeTypeBottom, const Zan16s* pQuantTableU,
                                                               const Zan16s* pQuantTableV, Zan8u bypass);
ZanStatus zaniReconstructChromaInter4x4MB_H264_16s8u_P2R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstUPlane,
                                                         Zan8u* pSrcDstVPlane, Zan32u srcDstStep, Zan32u cbp,
                                                         Zan32s QPU, Zan32s QPV, const Zan16s* pQuantTableU,
                                                         const Zan16s* pQuantTableV, Zan8u bypass);
ZanStatus zaniReconstructChromaInter4x4MB_H264_16s8u_C2R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstUV, Zan32u srcDstStep,
                                                         Zan32u cbp, Zan32s QPU, Zan32s QPV,
                                                         const Zan16s* pQuantTableU, const Zan16s* pQuantTableV,
                                                         Zan8u bypass);

/* -- Record (high bit depth; 4:2:2) -- */

/* Luma, one record.  Checks: null (record, cursor, pointee, plane, scale
 * row, mode array) -8; QP outside 0..6 * bitDepth + 3 (and above 87) -11;
 * step below 1 -14; mode above 8 met in the walk (16x16: above 3) -11;
 * 16x16 edge -117.  The 4x4 intra members return 11 when the middle value
 * stood in. */
ZanStatus zaniReconstructLumaIntra4x4_H264High_32s16u_IP1R(const ZanReconstructRecord* pReconInfo,
                                                           const Zan32u* pMBIntraTypes, Zan8u edgeType);
ZanStatus zaniReconstructLumaIntraHalf4x4_H264High_32s16u_IP1R(const ZanReconstructRecord* pReconInfo,
                                                               const Zan32u* pMBIntraTypes, Zan8u edgeType);
ZanStatus zaniReconstructLumaIntra8x8_H264High_32s16u_IP1R(const ZanReconstructRecord* pReconInfo,
                                                           const Zan32u* pMBIntraTypes, Zan8u edgeType);
ZanStatus zaniReconstructLumaIntraHalf8x8_H264High_32s16u_IP1R(const ZanReconstructRecord* pReconInfo,
                                                               const Zan32u* pMBIntraTypes, Zan8u edgeType);
ZanStatus zaniReconstructLumaIntra16x16_H264High_32s16u_IP1R(const ZanReconstructRecord* pReconInfo, Zan32u mode,
                                                             Zan8u edgeType);
ZanStatus zaniReconstructLumaInter4x4_H264High_32s16u_IP1R(const ZanReconstructRecord* pReconInfo);
ZanStatus zaniReconstructLumaInter8x8_H264High_32s16u_IP1R(const ZanReconstructRecord* pReconInfo);
/* Chroma, pReconInfo[0] U and pReconInfo[1] V, one cursor shared (U's is
 * used and moved).  Checks: null -8; QP of U then V outside 0..6 * bitDepth
 * - 9 (and above 75; 4:2:2 16s8u: 0..39) -11; steps below 1 -14; mode
 * above 3 -11; edge -117 (Half: mode other than 0 or 2, 4:2:2 Half other
 * than 0, or vertical without the row above: -117).  4:2:2: per plane 8 DC
 * values and 8 AC blocks (cbp bits 1..8, raster order two wide); the DC
 * stage scales with levelScaleDC, the level scale of position 0 at QP + 3. */
ZanStatus zaniReconstructChromaIntra4x4_H264High_32s16u_IP2R(const ZanReconstructRecord* const* pReconInfo,
                                                             Zan32u mode, Zan8u edgeType);
ZanStatus zaniReconstructChromaIntraHalf4x4_H264High_32s16u_IP2R(const ZanReconstructRecord* const* pReconInfo,
                                                                 Zan32u mode, Zan8u edgeTypeTop,
                                                                 Zan8u edgeTypeBottom);
ZanStatus zaniReconstructChromaInter4x4_H264High_32s16u_IP2R(const ZanReconstructRecord* const* pReconInfo);
ZanStatus zaniReconstructChroma422Intra4x4_H264High_16s8u_IP2R(const ZanReconstructRecord* const* pReconInfo,
                                                               Zan32u mode, Zan8u edgeType, Zan16s levelScaleDCU,
                                                               Zan16s levelScaleDCV);
ZanStatus zaniReconstructChroma422Intra4x4_H264High_32s16u_IP2R(const ZanReconstructRecord* const* pReconInfo,
                                                                Zan32u mode, Zan8u edgeType, Zan16s levelScaleDCU,
                                                                Zan16s levelScaleDCV);
ZanStatus zaniReconstructChroma422IntraHalf4x4_H264High_16s8u_IP2R(const ZanReconstructRecord* const* pReconInfo,
                                                                   Zan32u mode, Zan8u edgeTypeTop,
                                                                   Zan8u edgeTypeBottom, Zan16s levelScaleDCU,
                                                                   Zan16s levelScaleDCV);
ZanStatus zaniReconstructChroma422IntraHalf4x4_H264High_32s16u_IP2R(const ZanReconstructRecord* const* pReconInfo,
                                                                    Zan32u mode, Zan8u edgeTypeTop,
                                                                    Zan8u edgeTypeBottom, Zan16s levelScaleDCU,
                                                                    Zan16s levelScaleDCV);
ZanStatus zaniReconstructChroma422Inter4x4_H264High_16s8u_IP2R(const ZanReconstructRecord* const* pReconInfo,
                                                               Zan16s levelScaleDCU, Zan16s levelScaleDCV);
ZanStatus zaniReconstructChroma422Inter4x4_H264High_32s16u_IP2R(const ZanReconstructRecord* const* pReconInfo,
                                                                Zan16s levelScaleDCU, Zan16s levelScaleDCV);

/* ==== end of h264recon ==== */

/* ==== cavlcenc: H.264 CAVLC encoding ==== */

/* CAVLC syntax elements of one block of quantised coefficients; no bits are
 * written.  All six functions walk their positions from the highest to the
 * lowest and write:
 *   *pTrailingOnes      trailing ones T, 0..3: the +1 or -1 values met before
 *                       any other nonzero value, at most three
 *   *pTrailingOneSigns  their signs, one bit each (1 = minus), the first met in
 *                       the highest of the T low bits
 *   *pNumOutCoeffs      nonzero coefficients n
 *   *pTotalZeros        zeros below the first coefficient met, within the
 *                       range walked; 0 when n is 0
 *   pLevels[0..n-T-1]   the other nonzero values, in walking order
 *   pRuns[0..n-2]       pRuns[k]: zeros between the k-th and the (k+1)-th
 *                       coefficient met (the zeros below the last one met are
 *                       not written)
 * Nothing else is written: entries of pLevels and pRuns past those counts keep
 * their values.  Buffers of 16 entries (4 and 8 for chroma DC) always do.
 *
 * Block forms: the values pSrc[pScan[lastIdx]], pSrc[pScan[lastIdx - 1]],
 * ..., pSrc[pScan[firstIdx]].  pScan entries are not checked.  Checks: any
 * null pointer: zanStsNullPtr; then zanStsOutOfRange if lastIdx exceeds 15 or
 * is below firstIdx.  The 16-bit form takes only the low 8 bits of firstIdx
 * and lastIdx, as unsigned values, for the test and for the walk; the 32-bit
 * form compares them as signed 32-bit values (a negative firstIdx passes and
 * the walk reads pScan below index 0). */
ZanStatus zaniEncodeCoeffsCAVLC_H264_16s(const Zan16s* pSrc, Zan32s firstIdx, const Zan32s* pScan,
                                         Zan32s lastIdx, Zan8u* pTrailingOnes, Zan8u* pTrailingOneSigns,
                                         Zan8u* pNumOutCoeffs, Zan8u* pTotalZeros, Zan16s* pLevels,
                                         Zan8u* pRuns);
ZanStatus zaniEncodeCoeffsCAVLC_H264_32s(const Zan32s* pSrc, Zan32s firstIdx, const Zan32s* pScan,
                                         Zan32s lastIdx, Zan8u* pTrailingOnes, Zan8u* pTrailingOneSigns,
                                         Zan8u* pNumOutCoeffs, Zan8u* pTotalZeros, Zan32s* pLevels,
                                         Zan8u* pRuns);

/* Chroma DC forms: 2x2 blocks walk positions 3, 2, 1, 0 of pSrc; the 4:2:2
 * blocks of 8 (2 wide, 4 high) walk 7, 5, 3, 6, 4, 1, 2, 0.  Checks: any null
 * pointer: zanStsNullPtr; nothing else can fail. */
ZanStatus zaniEncodeChromaDcCoeffsCAVLC_H264_16s(const Zan16s* pSrc, Zan8u* pTrailingOnes,
                                                 Zan8u* pTrailingOneSigns, Zan8u* pNumOutCoeffs,
                                                 Zan8u* pTotalZeros, Zan16s* pLevels, Zan8u* pRuns);
ZanStatus zaniEncodeCoeffsCAVLCChromaDC2x2_H264_32s(const Zan32s* pSrc, Zan8u* pTrailingOnes,
                                                    Zan8u* pTrailingOneSigns, Zan8u* pNumOutCoeffs,
                                                    Zan8u* pTotalZeros, Zan32s* pLevels, Zan8u* pRuns);
ZanStatus zaniEncodeCoeffsCAVLCChromaDC2x4_H264_16s(const Zan16s* pSrc, Zan8u* pTrailingOnes,
                                                    Zan8u* pTrailingOneSigns, Zan8u* pNumOutCoeffs,
                                                    Zan8u* pTotalZeros, Zan16s* pLevels, Zan8u* pRuns);
ZanStatus zaniEncodeCoeffsCAVLCChromaDC2x4_H264_32s(const Zan32s* pSrc, Zan8u* pTrailingOnes,
                                                    Zan8u* pTrailingOneSigns, Zan8u* pNumOutCoeffs,
                                                    Zan8u* pTotalZeros, Zan32s* pLevels, Zan8u* pRuns);

/* ==== end of cavlcenc ==== */

/* ==== cabac: H.264 CABAC encoder ==== */

/* The CABAC coder record: 504 bytes.  Its fields are private to the library
 * but stable.  The coder writes its stream as 32-bit big-endian words straight
 * into the caller's buffer; the word being filled is stored whole after every
 * bin, its bits not yet final at zero, and a carry out of the low register
 * raises the bytes already written.
 *   pStreamWord     the word of the buffer now being filled
 *   pStreamBase     start of the buffer, as the caller gave it
 *   pStreamEnd      first word that may not be entered: base plus
 *                   (size - 4) rounded up to a multiple of 4
 *   low             low register; its low 10 bits are kept between bins
 *   range           range register, 510 at the start, 256..510 after a bin
 *   bitCount        free bits of currentWord (the next bit goes to bit
 *                   bitCount - 1); 0 when the word is full
 *   currentWord     the word being filled as a number, first bit in bit 31
 *   startBitOffset  the bit offset given at init, for the size report
 *   contexts        one byte per ctxIdx 0..459: bits 0..5 pStateIdx, bit 6
 *                   valMPS, bit 7 zero; byte 276 (end_of_slice) holds 63 */
typedef struct ZanCABACState {
    Zan32u* pStreamWord;
    Zan8u* pStreamBase;
    Zan32u* pStreamEnd;
    Zan32u low;
    Zan32u range;
    Zan32u bitCount;
    Zan32u currentWord;
    Zan32u startBitOffset;
    Zan8u contexts[460];
} ZanCABACState;

/* Stores the size of the record, 504.  zanStsNullPtr if pSize is null. */
ZanStatus zaniCABACGetSize_H264(Zan32u* pSize);

/* Prepares a caller-owned record to encode into pBitStream from bit
 * bitOffset (counted from the first byte's most significant bit) in a buffer
 * of streamSize bytes.  Checks in order: null pointers (-8); cabacInitIdc
 * outside -1..2 (zanStsOutOfRange); streamSize 0 (zanStsSizeBad); pBitStream
 * not a multiple of 4: the POSITIVE status zanStsMisalignedBuf (2), nothing
 * done.  Then: a partial byte at bitOffset gets its remaining low bits set to
 * 1 (cabac_alignment_one_bit); coding starts at the next whole byte.  The
 * word that holds the byte before that one is read (for bitOffset 0 that is
 * the 4 bytes BEFORE pBitStream, which must be readable and writable: the
 * coder stores them back unchanged).  Contexts: sliceQP is clamped to 0..51;
 * cabacInitIdc -1 (I and SI slices) sets ctxIdx 0..10 and 60..459,
 * 0..2 sets 11..459 from that column; the rest stay as they were; ctxIdx 276
 * is always 63. */
ZanStatus zaniCABACInit_H264(ZanCABACState* pCabacState, Zan8u* pBitStream, Zan32u bitOffset,
                             Zan32u streamSize, Zan32s sliceQP, Zan32s cabacInitIdc);

/* As zaniCABACInit_H264 on a record from zanMalloc, stored at *ppCabacState.
 * The arguments are checked as at init before anything is allocated (a
 * misaligned buffer returns 2 with nothing allocated); zanStsAllocFailed (-4)
 * if the allocator returns nothing.  Free with zaniCABACFree_H264. */
ZanStatus zaniCABACInitAlloc_H264(ZanCABACState** ppCabacState, Zan8u* pBitStream, Zan32u bitOffset,
                                  Zan32u streamSize, Zan32s sliceQP, Zan32s cabacInitIdc);

/* Releases a record from zaniCABACInitAlloc_H264 with zanFree.
 * zanStsNullPtr if it is null. */
ZanStatus zaniCABACFree_H264(ZanCABACState* pCabacState);

/* Moves encoding to a larger buffer into which the caller has already copied
 * the bytes written so far (the library moves no data).  Checks: null
 * pointers (-8), streamSize 0 (-6), pBitStream not a multiple of 4 (2).
 * zanStsSizeBad, nothing changed, if the new end word is at or below the new
 * word position or the new buffer is not longer than the old one. */
ZanStatus zaniCABACSetStream_H264(Zan8u* pBitStream, Zan32u streamSize, ZanCABACState* pCabacState);

/* Bits written so far: 32 - bitCount + 8 * (pStreamWord - pStreamBase), or 0
 * when that is -1, and never less than the start offset rounded up to whole
 * bytes.  zanStsNullPtr on null pointers. */
ZanStatus zaniCABACGetStreamSize_H264(Zan32u* pBitCount, const ZanCABACState* pCabacState);

/* Copies count context bytes from firstCtx on to pDst.  Null pointers (-8);
 * firstCtx + count above 460: zanStsOutOfRange. */
ZanStatus zaniCABACGetContexts_H264(const ZanCABACState* pCabacState, Zan32u firstCtx, Zan8u* pDst,
                                    Zan32u count);

/* Encodes one bin with context ctxIdx and adapts the context (ctxIdx 276,
 * the end_of_slice_flag, does not adapt).  Checks: null record (-8); bin
 * above 1 or ctxIdx at 460 or above: zanStsOutOfRange.  zanStsCabacBad (-223)
 * when the bin completes the last word of the buffer: the record is then as
 * before the call, but that word in memory (and any carry into earlier
 * bytes) already holds the new bits. */
ZanStatus zaniCABACEncodeBin_H264(Zan32u ctxIdx, Zan32u bin, ZanCABACState* pCabacState);

/* Encodes one bypass bin.  Null record (-8); bin above 1: zanStsOutOfRange;
 * zanStsCabacBad at the end of the buffer, as for zaniCABACEncodeBin_H264. */
ZanStatus zaniCABACEncodeBinBypass_H264(Zan32u bin, ZanCABACState* pCabacState);

/* Flushes the coder after an end_of_slice_flag of 1 (ctxIdx 276) and closes
 * the stream with the stop bit: *pStreamBytes receives the byte count from
 * the base to the last byte written.  Null pointers (-8).  zanStsNoMem (-9)
 * when the flush needs the next word and that word does not end before the
 * buffer's end word (the current word is already stored).  On success the
 * registers and stream pointers are cleared: init again before further use. */
ZanStatus zaniCABACTerminateSlice_H264(Zan32u* pStreamBytes, ZanCABACState* pCabacState);

/* Encodes the significance map, levels and signs of one residual block:
 * pCoeffs in scan order, lastCoeffIdx the index of its last nonzero element
 * (negative: only the map is coded, and then the call ends), ctxBlockCat
 * 0..5, log2NumC8x8 nonzero only for chroma DC (cat 3: 1 for 4:2:2 gives 8
 * coefficients), frameFlag 1 frame, 0 field contexts.  Checks: null pointers
 * (-8); ctxBlockCat above 5 or frameFlag above 1: zanStsOutOfRange;
 * log2NumC8x8 nonzero with ctxBlockCat other than 3: zanStsBadArg.  When a
 * bin reaches the end of the buffer the whole block is undone (the record is
 * restored, a carry the block sent into earlier bytes taken back) and
 * zanStsCabacBad returned: change buffers and repeat the block. */
ZanStatus zaniCABACEncodeResidualBlock_H264_16s(const Zan16s* pCoeffs, Zan32s lastCoeffIdx, Zan32u ctxBlockCat,
                                                Zan32u log2NumC8x8, Zan32u frameFlag,
                                                ZanCABACState* pCabacState);
ZanStatus zaniCABACEncodeResidualBlock_H264_32s(const Zan32s* pCoeffs, Zan32s lastCoeffIdx, Zan32u ctxBlockCat,
                                                Zan32u log2NumC8x8, Zan32u frameFlag,
                                                ZanCABACState* pCabacState);

/* ==== end of cabac ==== */

/* ==== filters263: H.261, H.263 and MPEG-4 block filters ==== */

/* H.261 loop filter of one 8x8 block, pSrc to pDst.  Separable [1 2 1]: along
 * each row r(x) = p(x-1) + 2 p(x) + p(x+1) for x = 1..6, r(0) = 4 p(0),
 * r(7) = 4 p(7); then the same down each column of r (rows 0 and 7 times 4),
 * and out = (value + 8) >> 4.  Reads and writes only the two 8x8 blocks; the
 * whole source is read before anything is written.  Checks: a null pointer
 * gives zanStsNullPtr (-8); steps are not checked. */
ZanStatus zaniFilter8x8_H261_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep);

/* H.263 deblocking filter, in place.  pSrcDst points at the first sample
 * after the edge: the first row below a horizontal edge (HorEdge, lines are
 * columns), the first column right of a vertical edge (VerEdge, lines are
 * rows).  On each line A, B are the two samples before the edge and C, D the
 * two after it (only these four are read and written):
 *   d  = (A - 4B + 4C - D) / 8, truncated toward zero;
 *   d1 = sign(d) * max(0, |d| - max(0, 2 (|d| - S))), S = strength[QP] with
 *        strength = 0,1,1,2,2,3,3,4,4,4,5,5,6,6,7,7,7,8,8,8,9,9,9,10,10,10,
 *        11,11,11,12,12,12 (index 0..31);
 *   B' = clamp(B + d1), C' = clamp(C - d1) to 0..255;
 *   d2 = (A - D) / 4 truncated toward zero, limited to +-(|d1| >> 1);
 *   A' = clamp(A - d2), D' = clamp(D + d2).
 * The 8x8 forms filter 8 lines; checks: null pSrcDst -8, then QP below 1 or
 * above 31 gives zanStsQpBad (-192).  The 16x16 forms filter 16 lines with
 * d1 = d (no strength limit) and check only the pointer (-8).  Steps are not
 * checked and may be zero or negative. */
ZanStatus zaniFilterDeblocking8x8HorEdge_H263_8u_C1IR(Zan8u* pSrcDst, Zan32s srcDstStep, Zan32s QP);
ZanStatus zaniFilterDeblocking8x8VerEdge_H263_8u_C1IR(Zan8u* pSrcDst, Zan32s srcDstStep, Zan32s QP);
ZanStatus zaniFilterDeblocking16x16HorEdge_H263_8u_C1IR(Zan8u* pSrcDst, Zan32s srcDstStep);
ZanStatus zaniFilterDeblocking16x16VerEdge_H263_8u_C1IR(Zan8u* pSrcDst, Zan32s srcDstStep);

/* H.263 block-boundary filter over 16 lines, in place.  With a the sample
 * before the edge and b = pSrcDst[0] the one after it:
 *   a' = (3a + b + 2) >> 2, b' = (a + 3b + 2) >> 2.
 * Only a and b are read and written.  Checks: null pSrcDst -8. */
ZanStatus zaniFilterBlockBoundaryHorEdge_H263_8u_C1IR(Zan8u* pSrcDst, Zan32s srcDstStep);
ZanStatus zaniFilterBlockBoundaryVerEdge_H263_8u_C1IR(Zan8u* pSrcDst, Zan32s srcDstStep);

/* MPEG-4 post-processing deblocking across an edge of 8 lines, in place.  On
 * each line v0..v9 are ten samples across the edge, v5 = pSrcDst[0]; v0..v9
 * are read, v1..v8 may be written.  eq_cnt counts the nine neighbour pairs
 * with |v(i) - v(i+1)| <= THR1.
 * - eq_cnt >= THR2 (DC-offset mode): only if max(v1..v8) - min(v1..v8) <
 *   2 QP, each of v1..v8 becomes (sum over k = -4..4 of b(k) p(n+k) + 8) >> 4
 *   with b = 1,1,2,2,4,2,2,1,1, p(m) = v(m) for m in 1..8, p(m) for m < 1 is
 *   v0 if |v0 - v1| < QP else v1, p(m) for m > 8 is v9 if |v8 - v9| < QP else
 *   v8; otherwise the line is left as it is.
 * - else (default mode): a0, a1, a2 = (2 -5 5 -2) applied to v3..v6, v1..v4,
 *   v5..v8, each divided by 8 rounding halves away from zero; a0' = sign(a0)
 *   min(|a0|, |a1|, |a2|); d = 5 (a0' - a0) / 8 rounded the same way, limited
 *   to the range between 0 and (v4 - v5) / 2 (truncated toward zero), and 0
 *   unless |a0| < QP; v4 -= d, v5 += d.
 * Checks: null pSrcDst -8, QP below 1 or above 31 -192.  THR1 and THR2 are
 * not checked (any value works as the comparisons say). */
ZanStatus zaniFilterDeblocking8x8HorEdge_MPEG4_8u_C1IR(Zan8u* pSrcDst, Zan32s srcDstStep, Zan32s QP, Zan32s THR1,
                                                        Zan32s THR2);
ZanStatus zaniFilterDeblocking8x8VerEdge_MPEG4_8u_C1IR(Zan8u* pSrcDst, Zan32s srcDstStep, Zan32s QP, Zan32s THR1,
                                                        Zan32s THR2);

/* MPEG-4 deringing thresholds of one macroblock: for each of the six 8x8
 * blocks (luma at (0,0), (8,0), (0,8), (8,8) of pSrcY, then Cb, then Cr)
 * threshold = (max + min + 1) / 2 and range = max - min.  Every luma block
 * whose range is below 32 takes the threshold of the luma block with the
 * largest range (the first in block order at ties); chroma thresholds stand.
 * pThreshold receives 6 values.  Checks: any null pointer -8. */
ZanStatus zaniFilterDeringingThreshold_MPEG4_8u_P3R(const Zan8u* pSrcY, Zan32s srcStepY, const Zan8u* pSrcCb,
                                                     Zan32s srcStepCb, const Zan8u* pSrcCr, Zan32s srcStepCr,
                                                     Zan32s* pThreshold);

/* MPEG-4 deringing of one 8x8 block, pSrc to pDst.  QP 1 copies the block
 * (reads only the 8x8 source).  Otherwise the source is read with one sample
 * around it (10x10, from pSrc - srcStep - 1): a sample's index is 1 when it
 * is >= threshold, else 0; where the nine indices of the 3x3 window around an
 * output sample agree, it becomes f = (sum of [1 2 1; 2 4 2; 1 2 1] weighted
 * samples + 8) >> 4, limited to the source sample +- QP / 2; other samples
 * are copied.  Checks: null pointer -8, QP below 1 or above 31 -192. */
ZanStatus zaniFilterDeringingSmooth8x8_MPEG4_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep,
                                                     Zan32s QP, Zan32s threshold);

/* ==== end of filters263 ==== */

/* ==== resample263: H.263 resampling ==== */

/* 2:1 up- and downsampling, the PB-frame backward prediction.  Steps are
 * byte distances between rows (also for Zan16s samples) and are not checked:
 * zero and negative steps are legal.  A failed check writes nothing.
 *
 * zaniUpsampleFour_H263_8u_C1R: roiSize is the source size; the destination
 * is 2*width by 2*height.  Output (X, Y) takes the source sample a at
 * (X/2, Y/2), its horizontal neighbour b on the side of X (left for even X,
 * right for odd X), its vertical neighbour c on the side of Y and the
 * diagonal d: (9a + 3b + 3c + d + 7 + (rounding & 1)) >> 4.  A neighbour
 * outside the source is the nearest edge sample when fillColor is -1, else
 * the low byte of fillColor.  Reads exactly the source region.
 * Checks: null (-8); width or height below 4 or odd (-6). */
ZanStatus zaniUpsampleFour_H263_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, ZaniSize roiSize, Zan8u* pDst,
                                       Zan32s dstStep, Zan32s rounding, Zan32s fillColor);

/* roiSize is the source size; the destination is width/2 by height/2
 * (truncated: an odd last column or row is not read).  Output (x, y) is
 * (a + b + c + d + 1 + (rounding & 1)) >> 2 over the source square at
 * (2x, 2y).  Checks: null (-8); width or height below 1 (-6). */
ZanStatus zaniDownsampleFour_H263_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, ZaniSize roiSize, Zan8u* pDst,
                                         Zan32s dstStep, Zan32s rounding);

/* roiSize is the source size.  interpType 3: the upsampling above with
 * rounding 1 and edge replication (destination 2*width by 2*height).
 * interpType 2: vertical doubling (width by 2*height): output row 2y is
 * (3 s[y] + s[y-1] + 2) >> 2, row 2y+1 is (3 s[y] + s[y+1] + 2) >> 2, rows
 * beyond the source replicated.  Any other value: the same along rows
 * (2*width by height).  Checks: null (-8); width or height below 4 or odd
 * (-6). */
ZanStatus zaniSpatialInterpolation_H263_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, ZaniSize roiSize,
                                               Zan8u* pDst, Zan32s dstStep, Zan32s interpType);

/* 8x8 Zan16s block to 16x16 with the weights of zaniUpsampleFour_H263_8u_C1R,
 * (9a + 3b + 3c + d + 8) >> 4 (arithmetic shift), neighbours outside the block
 * replicated from its edge.  Checks: null (-8). */
ZanStatus zaniUpsampleFour8x8_H263_16s_C1R(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst, Zan32s dstStep);

/* 16x16 Zan16s block to 8x8: (a + b + c + d + 2) >> 2 in 32 bits (arithmetic
 * shift), saturated to Zan16s.  Checks: null (-8). */
ZanStatus zaniDownsampleFour16x16_H263_16s_C1R(const Zan16s* pSrc, Zan32s srcStep, Zan16s* pDst,
                                               Zan32s dstStep);

/* PB-frame backward prediction, in place on roiSize samples of pSrcDst.
 * position 0: r = s(x, y); 1 (half sample down): (s(x, y) + s(x, y+1) + 1) >> 1;
 * 2 (half sample right): (s(x, y) + s(x+1, y) + 1) >> 1; 3: the four samples
 * (a + b + c + d + 2) >> 2.  Each destination sample d becomes (d + r) >> 1.
 * Reads one extra column and/or row of pSrc at positions 1 to 3.  position is
 * not checked: it must be 0 to 3.  Checks: null (-8); width or height below
 * 1 (-6). */
ZanStatus zaniAddBackPredPB_H263_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, ZaniSize roiSize, Zan8u* pSrcDst,
                                        Zan32s srcDstStep, Zan32s position);

/* ==== end of resample263 ==== */

/* ==== mpeg4pred: MPEG-4 prediction tools ==== */

/* Quarter-sample copies of an 8x8, 16x8 or 16x16 block.  acc is taken modulo
 * 16 and holds fx + 4 * fy, the quarter-sample position in x and y; rounding
 * counts by its low bit (the rounding control).  acc 0 copies the block.
 * Otherwise the eight-tap half-sample filter (-1, 3, -6, 20, 20, -6, 3, -1),
 * with (sum + 16 - rounding) >> 5 clamped to 0..255, runs first along the
 * rows 0..height of the source (one row more than the block when fy is not
 * 0), then down the columns of that result; quarter positions average a
 * half-sample value with its nearer whole (or horizontally interpolated)
 * sample as (a + b + 1 - rounding) >> 1.  Samples beyond the fetched block
 * (columns 0..width, rows 0..height) are mirrored at its edges: column -1 reads
 * 0, -2 reads 1, -3 reads 2; column width + 1 reads width, and so on.  Reads
 * at most (width + 1) x (height + 1) samples from pSrc.  Steps are not
 * checked (any value, also zero or negative).
 * Checks: pSrc or pDst null: zanStsNullPtr. */
ZanStatus zaniCopy8x8QP_MPEG4_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep, Zan32s acc,
                                     Zan32s rounding);
ZanStatus zaniCopy16x8QP_MPEG4_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep, Zan32s acc,
                                      Zan32s rounding);
ZanStatus zaniCopy16x16QP_MPEG4_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep,
                                       Zan32s acc, Zan32s rounding);

/* Overlapped-block motion compensation of the block at pSrc (8x8 or 16x16)
 * into pDst.  A motion vector is two Zan16s, x then y, relative to the block.
 * Half-sample forms: a vector moves the source by (x >> 1) + (y >> 1) rows
 * and columns and the half-sample copy (acc = 2 * (y & 1) + (x & 1), with
 * rounding) predicts.  The quarter-sample form moves by (x >> 2, y >> 2) and
 * predicts each whole 8x8 block with zaniCopy8x8QP_MPEG4_8u_C1R at acc =
 * (x & 3) + 4 * (y & 3).  The left and right neighbours' predictions are used
 * in the left and right halves of the block, the above and below ones' in
 * the top and bottom halves; a neighbour whose vector equals the current
 * one's reuses the current prediction.  Each output sample is
 * (H0 * current + H1 * above-or-below + H2 * left-or-right + 4) >> 3, with the
 * weighting windows of overlapped compensation (each position's weights sum
 * to 8); the 16x16 form doubles every 8x8 weight in both directions.  The
 * reads of each vector's prediction follow the copy it uses.  Steps are not
 * checked.
 * Checks: pSrc or pDst null: zanStsNullPtr; the vector pointers are not
 * checked. */
ZanStatus zaniOBMC8x8HP_MPEG4_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep,
                                     const Zan16s* pMVCur, const Zan16s* pMVLeft, const Zan16s* pMVRight,
                                     const Zan16s* pMVAbove, const Zan16s* pMVBelow, Zan32s rounding);
ZanStatus zaniOBMC16x16HP_MPEG4_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep,
                                       const Zan16s* pMVCur, const Zan16s* pMVLeft, const Zan16s* pMVRight,
                                       const Zan16s* pMVAbove, const Zan16s* pMVBelow, Zan32s rounding);
ZanStatus zaniOBMC8x8QP_MPEG4_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep,
                                     const Zan16s* pMVCur, const Zan16s* pMVLeft, const Zan16s* pMVRight,
                                     const Zan16s* pMVAbove, const Zan16s* pMVBelow, Zan32s rounding);

/* Global motion compensation and sprite warping.  The warp record is opaque:
 * zaniWarpGetSize_MPEG4 gives the size of the caller's block (384 bytes); the
 * record itself starts at the first 16-byte boundary inside that block, and
 * every function that takes pSpec finds it there again.  An initialised
 * record carries the identifier "QAMC" (0x434D4151); it is read only after its
 * init and may be shared between threads.
 *
 * Coordinates.  Warp points (pDU, pDV: du[0..3], dv[0..3]) are in half
 * samples, as coded.  With s = 2 << warpAccuracy, the sprite points are, in
 * 1/s sample units, i'0 = s/2 (2 i0 + du0), i'1 = s/2 (2 (i0 + W) + du0 + du1),
 * i'2 = s/2 (2 i0 + du0 + du2), i'3 = s/2 (2 (i0 + W) + du0 + du1 + du2 + du3)
 * (j' alike with j0, H and dv), where (i0, j0, W, H) is *pVopRect.
 * A destination rectangle (pDstRect) and the macroblock offsets of
 * zaniCalcGlobalMV_MPEG4 count from the picture's origin (i0, j0): luma sample
 * (x, y) of the rectangle is the picture sample i = i0 + x, j = j0 + y;
 * chroma rectangles count chroma samples from the chroma origin (i0/2, j0/2).
 * Source positions are absolute sprite (reference) coordinates.  pSrcY
 * addresses the sample at (spriteRect.x, spriteRect.y); pSrcCb and pSrcCr the
 * sample at (chromaRect.x, chromaRect.y), chromaRect being (x / 2, y / 2,
 * (width + 1) >> 1, (height + 1) >> 1) of spriteRect (C division).  pDstY,
 * pDstCb and pDstCr address the destination rectangle's first sample.
 *
 * Warped positions, F (horizontal) and G (vertical), in 1/s units:
 *  0 points: F = s i (chroma s ic): a plain copy.
 *  1 point: F = i'0 + s (i - i0).  Chroma: Fc = s (ic - i0/2) + c, with c =
 *    (i'0 + 1) >> 1 for spriteType 1 and (i'0 >> 1) | (i'0 & 1) otherwise.
 *  2 and 3 points: the virtual points of the codec, W' = 2^a and H' = 2^b the
 *    smallest powers of two at or above W and H, r = 16 / s, and "//" the
 *    division that rounds half away from zero:
 *      i''1 = 16 (i0 + W') + ((W - W')(r i'0 - 16 i0) + W'(r i'1 - 16 (i0 + W))) // W
 *      j''1 = 16 j0 + ((W - W')(r j'0 - 16 j0) + W'(r j'1 - 16 j0)) // W
 *      i''2 = 16 i0 + ((H - H')(r i'0 - 16 i0) + H'(r i'2 - 16 i0)) // H
 *      j''2 = 16 (j0 + H') + ((H - H')(r j'0 - 16 j0) + H'(r j'2 - 16 (j0 + H))) // H
 *    With p = log2 r, x = i - i0, y = j - j0, A = i''1 - r i'0, B = j''1 - r j'0,
 *    two points: F = (i'0 2^(a+p) + A x - B y + 2^(a+p-1)) >> (a + p) and
 *    G = (j'0 2^(a+p) + B x + A y + 2^(a+p-1)) >> (a + p); chroma, with
 *    X = 4 xc + 1, Y = 4 yc + 1: Fc = (A X - B Y + 2 W' r i'0 - 16 W' +
 *    2^(a+p+1)) >> (a + p + 2), Gc = (B X + A Y + 2 W' r j'0 - 16 W' +
 *    2^(a+p+1)) >> (a + p + 2).  Three points, C = i''2 - r i'0,
 *    D = j''2 - r j'0: F = (i'0 2^(a+b+p) + A H' x + C W' y + 2^(a+b+p-1)) >>
 *    (a + b + p), G likewise with j'0, B and D; chroma
 *    Fc = (A H' X + C W' Y + 2 W' H' r i'0 - 16 W' H' + 2^(a+b+p+1)) >> (a + b + p + 2).
 *    (A rounding term with a negative exponent is 0.)
 *  4 points (static sprites only): the projective form of the codec, in
 *    double precision with the sprite points in 1/s units: F = floor((a x +
 *    b y + c) / (g x + h y + D W H)), G with d, e, f; chroma Fc = floor((2a X +
 *    2b Y + 4c - (g X + h Y + 2 D W H) s) / (4 (g X + h Y + 2 D W H))), where
 *    g = ((i'0 - i'1 - i'2 + i'3)(j'2 - j'3) - (i'2 - i'3)(j'0 - j'1 - j'2 + j'3)) H,
 *    h = ((i'1 - i'3)(j'0 - j'1 - j'2 + j'3) - (i'0 - i'1 - i'2 + i'3)(j'1 - j'3)) W,
 *    D = (i'1 - i'3)(j'2 - j'3) - (i'2 - i'3)(j'1 - j'3), a = D (i'1 - i'0) H + g i'1,
 *    b = D (i'2 - i'0) W + h i'2, c = D i'0 W H, d = D (j'1 - j'0) H + g j'1,
 *    e = D (j'2 - j'0) W + h j'2, f = D j'0 W H.
 *
 * Sample value.  A position F in 1/s units is taken to 1/16 units (F * 16 / s);
 * its integer part X0 and fraction fx (0..15), likewise Y0 and fy, give
 *   ((16 - fy)((16 - fx) P(X0, Y0) + fx P(X0 + 1, Y0))
 *    + fy ((16 - fx) P(X0, Y0 + 1) + fx P(X0 + 1, Y0 + 1)) + R) >> 8,
 * R = 128 - (f << (3 - warpAccuracy)), f = 1 when roundingType is non-zero and
 * spriteType is not 1, else 0.  Every sample coordinate is clamped to the
 * reference rectangle (spriteRect, chromaRect for chroma) before it is read,
 * so that its border repeats; nothing outside the rectangle is read. */
typedef struct ZanWarpSpec ZanWarpSpec;

/* Size in bytes of the caller's block for a warp record: writes 384.
 * Checks: pSize null: zanStsNullPtr. */
ZanStatus zaniWarpGetSize_MPEG4(Zan32s* pSize);

/* Initialises the warp record for one picture.  spriteType 1 is a static
 * sprite, any other value global motion compensation; warpAccuracy 0..3
 * (positions in 1/2 to 1/16 sample); roundingType is the rounding control;
 * quarterSample 1 or 0 is kept for zaniCalcGlobalMV_MPEG4 (any non-zero value
 * counts as 1); fcode 1..7 sets the vector clamp -(16 << fcode) ..
 * (16 << fcode) - 1.  pDU and pDV hold numWarpPoints values each.
 * Checks, in order: pSpec, pSpriteRect or pVopRect null: zanStsNullPtr;
 * numWarpPoints below 0 or above 4: zanStsOutOfRange; numWarpPoints 4 with
 * spriteType other than 1: zanStsOutOfRange; warpAccuracy outside 0..3 or
 * fcode outside 1..7: zanStsOutOfRange; a width or height of either rectangle
 * below 1: zanStsSizeBad.  Then the plain fields are written (and the record
 * marked not initialised); with numWarpPoints non-zero, pDU or pDV null gives
 * zanStsNullPtr at this point, leaving the record not initialised. */
ZanStatus zaniWarpInit_MPEG4(ZanWarpSpec* pSpec, const Zan32s* pDU, const Zan32s* pDV, Zan32s numWarpPoints,
                             Zan32s spriteType, Zan32s warpAccuracy, Zan32s roundingType, Zan32s quarterSample,
                             Zan32s fcode, const ZaniRect* pSpriteRect, const ZaniRect* pVopRect);

/* Warps the luma rectangle pDstRect (width x height samples at pDstY) from
 * the reference at pSrcY, or the two chroma rectangles from pSrcCb and
 * pSrcCr, by the record's warp, with the bilinear sample value above.  A
 * rectangle with a width or height below 1 writes nothing.  Steps are not
 * checked.  Checks: any pointer null: zanStsNullPtr; a record without the
 * "QAMC" identifier: zanStsContextMismatch. */
ZanStatus zaniWarpLuma_MPEG4_8u_C1R(const Zan8u* pSrcY, Zan32s srcStepY, Zan8u* pDstY, Zan32s dstStepY,
                                    const ZaniRect* pDstRect, const ZanWarpSpec* pSpec);
ZanStatus zaniWarpChroma_MPEG4_8u_P2R(const Zan8u* pSrcCb, Zan32s srcStepCb, const Zan8u* pSrcCr,
                                      Zan32s srcStepCr, Zan8u* pDstCb, Zan32s dstStepCb, Zan8u* pDstCr,
                                      Zan32s dstStepCr, const ZaniRect* pDstRect, const ZanWarpSpec* pSpec);

/* Global motion vector of the macroblock at (xOffset, yOffset) (luma samples
 * from the picture's origin), x then y into pGMV, in half samples, or quarter
 * samples when quarterSample was set.  0 points: (0, 0), whatever the
 * offsets.  1 point: the first point's displacement from the picture's
 * origin in 1/16 units, r i'0 - 16 i0 = 8 du0 (and 8 dv0), shifted right by
 * 3 - quarterSample and kept as Zan16s.  2 to 4 points: the sum S of
 * F(i, j) - s i over the 256 samples of the macroblock (G - s j for y),
 * rounded as (S - (S < 0) + (1 << (a + 7 - q))) >> (a + 8 - q), a =
 * warpAccuracy, q = quarterSample.  Both components are then clamped to the
 * record's range -(16 << fcode) .. (16 << fcode) - 1.
 * Checks: pSpec or pGMV null: zanStsNullPtr; a record without the "QAMC"
 * identifier: zanStsContextMismatch. */
ZanStatus zaniCalcGlobalMV_MPEG4(Zan32s xOffset, Zan32s yOffset, Zan16s* pGMV, const ZanWarpSpec* pSpec);

/* Sprite brightness change in place on width x height samples: with b =
 * brightnessChange, W = ((b << 10) + (b < 0 ? -50 : 50)) / 100 + 1024
 * (division truncating toward zero), each sample s becomes
 * clamp((s * W + 520) >> 10, 0, 255) (arithmetic shift).  b 0 returns at
 * once; a width or height below 1 does nothing.  The step is not checked.
 * Checks: pSrcDst null: zanStsNullPtr; brightnessChange below -112 or above
 * 1648: zanStsOutOfRange. */
ZanStatus zaniChangeSpriteBrightness_MPEG4_8u_C1IR(Zan8u* pSrcDst, Zan32s srcDstStep, Zan32s width, Zan32s height,
                                                   Zan32s brightnessChange);

/* ==== end of mpeg4pred ==== */

/* ==== vc1interp: VC-1 interpolation and range mapping ==== */

/* Quarter-sample prediction of one block with the bilinear or bicubic filter
 * of SMPTE 421M.  dx, dy: quarter-sample position 0..3; roundControl: the
 * standard's RND, 0 or 1.  The source samples around pSrc must be readable:
 * bicubic one row and column before the block and two after, bilinear one
 * after (nothing beyond the block in a direction whose fraction is 0). */
typedef struct {
    const Zan8u* pSrc;  /* sample at the block's whole-sample position */
    Zan32s srcStep;     /* bytes between rows */
    Zan8u* pDst;
    Zan32s dstStep;
    Zan32s dx;
    Zan32s dy;
    ZaniSize roiSize;   /* block width and height (C2: width in sample pairs) */
    Zan32s roundControl;
} ZanVC1InterpolateRecord;

/* A block fetched from a whole reference picture, with replication beyond
 * its edges and intensity-compensation tables applied on the way. */
typedef struct {
    const Zan8u* pSrc;         /* origin of the reference picture (of the field, with fieldPrediction) */
    Zan32s srcStep;            /* bytes between picture rows */
    Zan8u* pDst;
    Zan32s dstStep;
    const Zan8u* pLUTTop;      /* 256 entries for top-field rows, or null (samples as they stand) */
    const Zan8u* pLUTBottom;   /* 256 entries for bottom-field rows, or null */
    ZaniSize sizeFrame;        /* picture width (C2: in pairs) and height */
    ZaniSize sizeBlock;        /* block width (C2: in pairs) and height */
    ZaniPoint pointRefBlockPos; /* block position in the picture; may lie outside it */
    Zan32s dx;
    Zan32s dy;
    Zan32s fieldPadding;       /* nonzero: rows beyond top and bottom repeat the nearest row of their parity */
    Zan32s fieldPrediction;    /* nonzero: one field: row step doubled, height halved */
    Zan32s roundControl;
    Zan32s bottomField;        /* with fieldPrediction: 1 takes pLUTBottom for every row, 0 pLUTTop */
} ZanVC1ICBlockRecord;

/* Bicubic: the 4-tap filters -4,53,18,-3 (position 1), -1,9,9,-1 (2),
 * -3,18,53,-4 (3), the first tap on row/column -1.  Block sizes 8x8, 16x8,
 * 16x16, chosen by s = (width >> 4) + (height >> 4): 0 takes 8x8, 1 16x8,
 * more 16x16.  Position (0,0) copies.  dx = 0: vertical filter, rounding
 * (1 << (shift - 1)) - 1 + RND, shift 6 (positions 1, 3) or 4 (position 2).
 * dy = 0: horizontal filter, rounding (1 << (shift - 1)) - RND.  Both
 * nonzero: a vertical pass over columns -1..width+1 into 16-bit values with
 * rounding (1 << (s - 1)) - 1 + RND and shift s = 5, 3, 5 by dy for dx 1 or 3
 * and 3, 1, 3 for dx 2; then a horizontal pass, + 64 - RND, >> 7.  Every
 * result is saturated to 0..255.  dx, dy, roundControl are not checked (the
 * low bits are used).  Checks: null pParams, pSrc or pDst -8; nothing else. */
ZanStatus zaniInterpolateQPBicubic_VC1_8u_C1R(const ZanVC1InterpolateRecord* pParams);
/* Bilinear: ((4 - dy) * ((4 - dx) * P00 + dx * P01) + dy * ((4 - dx) * P10 +
 * dx * P11) + 8 - RND) >> 4.  dx, dy masked to 2 bits, roundControl to 1.
 * Sizes: width 16 makes a 16x16 block, width 8 an 8x8 block when the height
 * is 8 and an 8x4 block otherwise, any other width a 4x4 block.  The C2 form
 * works on interleaved pairs (the neighbour to the right lies 2 bytes on),
 * widths in pairs, 8 or 4, sizes chosen as above without the 16 case.
 * Checks: null pParams, pSrc or pDst -8; nothing else. */
ZanStatus zaniInterpolateQPBilinear_VC1_8u_C1R(const ZanVC1InterpolateRecord* pParams);
ZanStatus zaniInterpolateQPBilinear_VC1_8u_C2R(const ZanVC1InterpolateRecord* pParams);
/* The IC forms fetch the area the filter reads (bicubic: one row and column
 * before the block and two after; bilinear: one after) from the picture of
 * sizeFrame.width x sizeFrame.height (height halved and srcStep doubled with
 * fieldPrediction), then run the plain form on the copy.  Rows inside the
 * picture go through a table: with fieldPrediction the chosen field's for
 * every row, otherwise pLUTTop for even picture rows and pLUTBottom for odd
 * ones; a null table copies.  Columns beyond the left or right edge repeat
 * the edge sample of their row (after its table); rows beyond the top or
 * bottom repeat the edge row, or with fieldPadding (and no fieldPrediction)
 * the nearest row of the same parity.  When both tables are null and the
 * whole area lies inside the picture, the plain form runs on the picture
 * directly.  Checks: null pParams, pSrc or pDst -8; nothing else. */
ZanStatus zaniInterpolateICBicubicBlock_VC1_8u_C1R(const ZanVC1ICBlockRecord* pParams);
ZanStatus zaniInterpolateICBilinearBlock_VC1_8u_C1R(const ZanVC1ICBlockRecord* pParams);
ZanStatus zaniInterpolateICBilinearBlock_VC1_8u_C2R(const ZanVC1ICBlockRecord* pParams);
/* Range mapping, k = rangeMapValue: each sample becomes
 * clamp(((p * (k + 9) - 128 * k - 1148) >> 3) + 128, 0, 255), that is
 * ((p - 128) * (k + 9) + 4) >> 3, plus 128.  pSrc may equal pDst.  Steps are
 * not checked.  Checks: null pSrc or pDst -8; rangeMapValue above 7 (as
 * unsigned, so negative values too) -11; width or height below 1: zanStsOk
 * with nothing written. */
ZanStatus zaniRangeMapping_VC1_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep,
                                      ZaniSize roiSize, Zan32s rangeMapValue);

/* ==== end of vc1interp ==== */

/* ==== vc1filter: VC-1 deblocking and overlap smoothing ==== */

/* In-loop deblocking (the loop filter of SMPTE 421M), in place on 8-bit
 * samples.  pSrcDst points at the first sample after the edge: the first
 * column right of a vertical edge, the first row below a horizontal edge.  On
 * one line across the edge the samples are p1..p8 with p4 = pSrcDst[-1 line
 * across] and p5 = pSrcDst[0]; four samples are read on each side and only p4
 * and p5 are written:
 *   a0 = (2 (p3 - p6) - 5 (p4 - p5) + 4) >> 3, a1 and a2 likewise on p1..p4
 *   and p5..p8 (arithmetic shifts); a3 = min(|a1|, |a2|);
 *   clip = (p4 - p5) / 2 and d = 5 (sign(a0) a3 - a0) / 8, both truncated
 *   toward zero; a d of the other sign than clip becomes 0, else |d| is
 *   limited to |clip|; p4 -= d, p5 += d, saturated to 0..255.
 * A line passes the filter test when |a0| < quant, a3 < |a0| and clip != 0.
 * Lines come in segments of 4; the third line of a segment decides: if it
 * fails, the segment is left as it stands, else every line of the segment
 * that passes its own test is filtered.  quant (PQUANT) is not checked.
 * Edge flags (a set bit turns a segment off):
 * - Luma_VerEdge (16 rows): bit 0 rows 0-3, bit 1 rows 4-7, bit 2 rows 8-11,
 *   bit 3 rows 12-15.  Luma_HorEdge (16 columns): the same bits on columns.
 * - Chroma_VerEdge_C1IR (8 rows): bit 1 rows 0-3, bit 2 rows 4-7 (bits 1
 *   and 2, not 0 and 1).  Chroma_HorEdge_C1IR (8 columns): bit 0 columns 0-3,
 *   bit 1 columns 4-7.
 * - The C2IR forms filter two interleaved planes (U at even bytes, V at odd)
 *   with one quant, U with edgeDisabledFlagU and V with edgeDisabledFlagV,
 *   bit 0 for lines 0-3 and bit 1 for lines 4-7; a vertical edge has 8 rows,
 *   a horizontal one 8 sample pairs (16 bytes).
 * Other flag bits are ignored.  Checks: a null pSrcDst gives zanStsNullPtr
 * (-8); nothing else is checked; steps may be zero or negative. */
ZanStatus zaniFilterDeblockingLuma_VerEdge_VC1_8u_C1IR(Zan8u* pSrcDst, Zan32s pQuant, Zan32s srcDstStep,
                                                       Zan32u edgeDisabledFlag);
ZanStatus zaniFilterDeblockingLuma_HorEdge_VC1_8u_C1IR(Zan8u* pSrcDst, Zan32s pQuant, Zan32s srcDstStep,
                                                       Zan32u edgeDisabledFlag);
ZanStatus zaniFilterDeblockingChroma_VerEdge_VC1_8u_C1IR(Zan8u* pSrcDst, Zan32s pQuant, Zan32s srcDstStep,
                                                         Zan32u edgeDisabledFlag);
ZanStatus zaniFilterDeblockingChroma_HorEdge_VC1_8u_C1IR(Zan8u* pSrcDst, Zan32s pQuant, Zan32s srcDstStep,
                                                         Zan32u edgeDisabledFlag);
ZanStatus zaniFilterDeblockingChroma_VerEdge_VC1_8u_C2IR(Zan8u* pSrcDst, Zan32s pQuant, Zan32s srcDstStep,
                                                         Zan32u edgeDisabledFlagU, Zan32u edgeDisabledFlagV);
ZanStatus zaniFilterDeblockingChroma_HorEdge_VC1_8u_C2IR(Zan8u* pSrcDst, Zan32s pQuant, Zan32s srcDstStep,
                                                         Zan32u edgeDisabledFlagU, Zan32u edgeDisabledFlagV);

/* Overlap smoothing of 16-bit reconstructed block data into 8-bit samples.
 * Across the edge stand x0, x1 (the two lines of the first block next to the
 * edge) and x2, x3 (the two of the second block); with R the rounding value
 * of the line:
 *   y0 = (7 x0 + x3 + R) >> 3
 *   y1 = (7 x1 - x0 + x2 + x3 + (7 - R)) >> 3
 *   y2 = (7 x2 + x0 + x1 - x3 + R) >> 3
 *   y3 = (7 x3 + x0 + (7 - R)) >> 3
 * Each product 7 x is taken modulo 2^16 as a Zan16s, the additions and
 * subtractions saturate to the Zan16s range one at a time from left to right,
 * the shift is arithmetic and the result saturates to 0..255.
 * Source steps are bytes between rows of Zan16s data; no step is checked.
 * HorEdge: x0, x1 are rows 0 and 1 at pSrcUpper, x2, x3 rows 0 and 1 at
 * pSrcBottom; y0..y3 go to the rows pDst - 2 dstStep, pDst - dstStep, pDst
 * and pDst + dstStep.  R is 4 in even columns and 3 in odd ones.
 * VerEdge: x0, x1 are samples 0 and 1 of a row at pSrcLeft, x2, x3 samples 0
 * and 1 of the row at pSrcRight; y0..y3 go to pDst[-2], pDst[-1], pDst[0] and
 * pDst[1] of the row.  R is 4 in even rows and 3 in odd ones, except in the
 * field passes of the luma form.
 * - Luma_HorEdge (16 columns): columns 0-7 are done if edgeDisableFlag & 3
 *   is nonzero, columns 8-15 if edgeDisableFlag & 12 is nonzero (a set bit
 *   turns its eight columns on).
 * - Luma_VerEdge (16 rows): edgeDisableFlag 0 does nothing.  With
 *   fieldNeighbourFlag 0 rows 0-7 are done if edgeDisableFlag & 3 is nonzero
 *   and rows 8-15 if edgeDisableFlag & 12 is.  fieldNeighbourFlag 1 to 3
 *   smooths an edge beside field-stored blocks in two passes of 8 rows with
 *   a doubled dstStep: the even output rows with R = 4, then the odd output
 *   rows (from pDst + dstStep) with R = 3.  A source block that the flag
 *   names as frame-stored (the left one for 1, the right one for 2) is read
 *   with its step doubled, the second pass one row down; the other (both for
 *   3) is read with its own step, the second pass 8 rows down.  Any other
 *   fieldNeighbourFlag does nothing.  The individual flag bits are not
 *   looked at in the field modes.
 * - Chroma C1R: one edge of 8 columns or 8 rows, no flag.
 * - Chroma P2C2R: the U and V sources are smoothed alike and their outputs
 *   interleaved in pDst (U at even bytes): 8 sample pairs per row for
 *   HorEdge, bytes pDst[-4..3] of 8 rows for VerEdge.
 * Checks: any null pointer gives zanStsNullPtr (-8), tested together;
 * nothing else is checked.  Only the four output lines of the edge are
 * written. */
ZanStatus zaniSmoothingLuma_HorEdge_VC1_16s8u_C1R(const Zan16s* pSrcUpper, Zan32s srcUpperStep,
                                                  const Zan16s* pSrcBottom, Zan32s srcBottomStep, Zan8u* pDst,
                                                  Zan32s dstStep, Zan32u edgeDisableFlag);
ZanStatus zaniSmoothingLuma_VerEdge_VC1_16s8u_C1R(const Zan16s* pSrcLeft, Zan32s srcLeftStep,
                                                  const Zan16s* pSrcRight, Zan32s srcRightStep, Zan8u* pDst,
                                                  Zan32s dstStep, Zan32s fieldNeighbourFlag,
                                                  Zan32u edgeDisableFlag);
ZanStatus zaniSmoothingChroma_HorEdge_VC1_16s8u_C1R(const Zan16s* pSrcUpper, Zan32s srcUpperStep,
                                                    const Zan16s* pSrcBottom, Zan32s srcBottomStep, Zan8u* pDst,
                                                    Zan32s dstStep);
ZanStatus zaniSmoothingChroma_VerEdge_VC1_16s8u_C1R(const Zan16s* pSrcLeft, Zan32s srcLeftStep,
                                                    const Zan16s* pSrcRight, Zan32s srcRightStep, Zan8u* pDst,
                                                    Zan32s dstStep);
ZanStatus zaniSmoothingChroma_HorEdge_VC1_16s8u_P2C2R(const Zan16s* pSrcUpperU, Zan32s srcUpperStepU,
                                                      const Zan16s* pSrcBottomU, Zan32s srcBottomStepU,
                                                      const Zan16s* pSrcUpperV, Zan32s srcUpperStepV,
                                                      const Zan16s* pSrcBottomV, Zan32s srcBottomStepV,
                                                      Zan8u* pDst, Zan32s dstStep);
ZanStatus zaniSmoothingChroma_VerEdge_VC1_16s8u_P2C2R(const Zan16s* pSrcLeftU, Zan32s srcLeftStepU,
                                                      const Zan16s* pSrcRightU, Zan32s srcRightStepU,
                                                      const Zan16s* pSrcLeftV, Zan32s srcLeftStepV,
                                                      const Zan16s* pSrcRightV, Zan32s srcRightStepV,
                                                      Zan8u* pDst, Zan32s dstStep);

/* ==== end of vc1filter ==== */

/* ==== avsblock: AVS block decoding and reconstruction ==== */

/* AVS (GB/T 20090.2) 8x8 blocks.  Coefficient blocks are 64 Zan16s in
 * raster order.  Bit-stream cursors are word cursors: *ppBitStream points at
 * a native 32-bit word (the caller has swapped the stream bytes), and
 * *pBitOffset numbers the next bit in it, 31 (most significant) down to 0;
 * one readable word must follow the coded data.  Coefficient cursors
 * (ppSrcDstCoeff) point at a run of coded blocks, 64 entries each, and move
 * on by 64 for every block whose bit is set in cbp.  Edge words (edgeType)
 * have a bit set for each absent neighbour: 1 left, 4 above, 32 above right,
 * 64 below left; the caller gives the macroblock's bits 1, 4 and 32.  Steps
 * are in bytes and are not checked. */

/* Decodes one block coded with the 2-D VLC tables of intra luma, inter luma
 * or chroma: Exp-Golomb codes (order by table: intra 2; inter 3 in the first
 * table, 2 after; chroma 2, 0, 1, 1, 0 by table) give a code number; below
 * 59 it names a (run, level) pair of the current table, from 59 on it is an
 * escape of run (code - 59) >> 1 and sign code & 1 (1 negative) followed by
 * an Exp-Golomb level of order 1 (luma) or 0 (chroma) that is added to the
 * base level of that run (1 past the largest run of the current level
 * limit).  A pair whose run would pass position 63 (also the end-of-block
 * pair, run 64) ends the block and is dropped; so does a code whose prefix
 * holds 32 zero bits (the 32 bits are consumed); at most 65 pairs are read.
 * A kept level above the current limit switches the table.  The block is
 * cleared and the pairs are placed from the last decoded to the first,
 * each at scan position (previous + run + 1), through the frame zig-zag
 * (scan 0) or the field scan (scan 1); levels are stored in 16 bits (low
 * bits).  *pNumCoeff receives the scan positions used (0 for an empty
 * block), or 63 when scanType is not 0.  Luma uses bit 0 of scanType as the
 * scan; chroma takes 0 and 1 (other values act as scanType & 1).  The
 * cursor moves past the last code read.  Checks: a pointer or *ppBitStream
 * null: zanStsNullPtr.  No other status: the stream cannot fail. */
ZanStatus zaniDecodeLumaBlockIntra_AVS_1u16s(Zan32u** ppBitStream, Zan32s* pBitOffset, Zan32s* pNumCoeff,
                                             Zan16s* pDstCoeffs, Zan32s scanType);
ZanStatus zaniDecodeLumaBlockInter_AVS_1u16s(Zan32u** ppBitStream, Zan32s* pBitOffset, Zan32s* pNumCoeff,
                                             Zan16s* pDstCoeffs, Zan32s scanType);
ZanStatus zaniDecodeChromaBlock_AVS_1u16s(Zan32u** ppBitStream, Zan32s* pBitOffset, Zan32s* pNumCoeff,
                                          Zan16s* pDstCoeffs, Zan32s scanType);

/* Luma macroblock (16x16 at pDst) from four 8x8 blocks in raster order.
 * Intra: block b is first predicted in place with mode pPredModes[b] & 7
 * (0 vertical, 1 horizontal, 2 DC, 3 down-left, 4 down-right, 5..7 fill
 * with 128) and its own edge word (block 0: edgeType without 32; block 1:
 * edgeType without 1, with 64; block 2: (edgeType & 1) + 64; block 3: 96);
 * a mode whose neighbours are absent writes nothing and the block keeps its
 * samples.  Vertical and horizontal copy the neighbours; DC, down-left and
 * down-right use the neighbours smoothed with (1, 2, 1) / 4 (the corner is
 * the above-left sample when left is present, else the first above; absent
 * above right or below left repeat the last sample).  Then, if bit b of cbp
 * is set, the next coded block is dequantised (c * scale + 2^(shift-1)) >>
 * shift with the standard's table for QP, saturated to 16 bits,
 * inverse-transformed with the standard's 8x8 integer transform (rows
 * first, (x + 4) >> 3 saturated to 16 bits; then columns, (x + 64) >> 7)
 * and added to the block with the sums clamped to 0..255.  pNumCoeff[b]
 * selects a shortcut: 1 uses only the DC coefficient, 2..10 only the
 * top-left 4x4 coefficients, any other value (0 included) the whole block.
 * Inter: the same without prediction.  Checks: a pointer or *ppSrcDstCoeff
 * null: zanStsNullPtr; QP above 63 (unsigned): zanStsOutOfRange. */
ZanStatus zaniReconstructLumaIntra_AVS_16s8u_C1R(Zan16s** ppSrcDstCoeff, Zan8u* pDst, Zan32s dstStep,
                                                 const Zan32s* pPredModes, const Zan32s* pNumCoeff, Zan32u cbp,
                                                 Zan32s QP, Zan32u edgeType);
ZanStatus zaniReconstructLumaInter_AVS_16s8u_C1R(Zan16s** ppSrcDstCoeff, Zan8u* pDst, Zan32s dstStep,
                                                 const Zan32s* pNumCoeff, Zan32u cbp, Zan32s QP);

/* Chroma 8x8 blocks of U (cbp bit 0, pNumCoeff[0]) then V (bit 1,
 * pNumCoeff[1]), one dstStep for both.  Intra predicts each with mode
 * predMode & 3 (0 DC, 1 horizontal, 2 vertical, 3 plane: clamp((a + (x - 3)
 * b + (y - 3) c + 16) >> 5) with a = 16 (above[7] + left[7]), b = (17 ih +
 * 16) >> 5, c = (17 iv + 16) >> 5) and edge word edgeType | 64; the residual
 * is as for luma.  Checks: a pointer or *ppSrcDstCoeff null: zanStsNullPtr;
 * QP above 51 (unsigned): zanStsOutOfRange. */
ZanStatus zaniReconstructChromaIntra_AVS_16s8u_C1R(Zan16s** ppSrcDstCoeff, Zan8u* pDstU, Zan8u* pDstV,
                                                   Zan32s dstStep, Zan32s predMode, const Zan32s* pNumCoeff,
                                                   Zan32u cbp, Zan32s QP, Zan32u edgeType);
ZanStatus zaniReconstructChromaInter_AVS_16s8u_C1R(Zan16s** ppSrcDstCoeff, Zan8u* pDstU, Zan8u* pDstV,
                                                   Zan32s dstStep, const Zan32s* pNumCoeff, Zan32u cbp, Zan32s QP);

/* Forward transform and quantisation of one 8x8 block for an encoder.
 * pSrc holds 64 values (a residual) in raster order; pDst receives the 64
 * levels in raster order and may be pSrc.  The transform is the standard's
 * 8x8 integer transform, rows first, H[y][k] = sum_n T[k][n] x[y][n]
 * saturated to 16 bits, then columns, F[k][u] = (sum_y T[k][y] H[y][u] +
 * 16) >> 5 saturated to 16 bits (no saturation can occur for residuals of
 * 8-bit samples).  Each F at row v, column u is quantised as in the
 * standard's reference encoder: n = (|F| * N[v & 3][u & 3] + 2^18) >> 19,
 * with the norm factors N = {32768, 37958, 36158, 37958}, {37958, 43969,
 * 41884, 43969}, {36158, 41884, 39898, 41884}, {37958, 43969, 41884, 43969};
 * level = (n * Q[QP] + round) >> 15 with the sign of F restored, where
 * Q[QP] is 32768 at QP 0 and halves every 8 steps (the inverse of the
 * dequantisation table) and round is 10570 (10/31 of 2^15) when intra is
 * not 0, 5285 (10/62 of 2^15) when intra is 0.  *pNumCoeff receives 1 + the
 * frame zig-zag index of the last non-zero level, 0 when all are zero.
 * Checks: pSrc, pDst or pNumCoeff null: zanStsNullPtr; QP above 63
 * (unsigned): zanStsBadArg. */
ZanStatus zaniTransformQuant8x8Fwd_AVS_16s_C1(const Zan16s* pSrc, Zan16s* pDst, Zan32s* pNumCoeff, Zan32s QP,
                                              Zan32s intra);

/* Encoder-side intra luma macroblock: mode decision, transform,
 * quantisation and reconstruction of the four 8x8 blocks in raster order.
 * pSrc (srcStep) is the 16x16 source; pDst (dstStep) the 16x16 macroblock
 * of the reconstructed picture, whose neighbours the predictors read as in
 * zaniReconstructLumaIntra_AVS_16s8u_C1R (same block edge words).  For
 * block b: each mode 0..4 whose neighbours are present predicts into pDst
 * and its residual (source - prediction) and SAD are measured with
 * zaniSubSAD8x8_8u16s_C1R into the 64 entries at *ppDstCoeff; the first
 * mode with the smallest SAD wins (start: mode 2 with the largest unsigned
 * SAD, so ties go to the lowest mode) and goes to pPredModes[b].  The
 * winner predicts again, its residual is transformed and quantised in place
 * as by zaniTransformQuant8x8Fwd_AVS_16s_C1 with intra set; if any level is
 * not 0 the block is dequantised, inverse-transformed and added to the
 * prediction as by the reconstruction (with the zig-zag count as
 * shortcut), bit b of the pattern is set and the coefficient cursor moves
 * on by 64; otherwise the prediction stays in pDst and the 64 entries at
 * the cursor (then all 0) are used again.  *pCbp receives the pattern and
 * *ppDstCoeff the cursor after the last coded block.  The decoder side
 * (zaniReconstructLumaIntra_AVS_16s8u_C1R with these modes, pattern,
 * coefficients and QP on the same neighbours) rebuilds pDst exactly.  The
 * coefficient array needs room for 256 entries.  Checks: pSrc, pDst,
 * ppDstCoeff, pPredModes, pCbp or *ppDstCoeff null: zanStsNullPtr; QP above
 * 63 (unsigned): zanStsOutOfRange. */
ZanStatus zaniDisassembleLumaIntra_AVS_16s8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep,
                                                 Zan16s** ppDstCoeff, Zan32s* pPredModes, Zan32u* pCbp, Zan32s QP,
                                                 Zan32u edgeType);

/* Encoder-side intra 4:2:0 chroma: pSrc[0], pSrc[1] are the U and V 8x8
 * source blocks (srcStep), pDst[0], pDst[1] the U and V blocks of the
 * reconstructed picture (dstStep), read and predicted with the edge word
 * edgeType | 64 as in zaniReconstructChromaIntra_AVS_16s8u_C1R.  One mode
 * serves both components: each chroma mode 0..3 (0 DC, 1 horizontal, 2
 * vertical, 3 plane) whose neighbours are present predicts U and V, and its
 * cost is the SAD of U plus the SAD of V (residuals measured into the
 * entries 0..63 and 64..127 at the cursor); the first mode with the
 * smallest cost wins (start: DC with the largest unsigned cost) and goes to
 * *pPredMode.  Then U (pattern bit 0) and V (bit 1) are each predicted
 * again, transformed, quantised (intra) and, if any level is not 0,
 * reconstructed and kept at the cursor, which moves by 64, as for luma.
 * *pCbp receives the pattern, *ppDstCoeff the cursor.  The coefficient
 * array needs room for 128 entries.  Checks: pSrc, pDst, ppDstCoeff,
 * pPredMode, pCbp, then pSrc[0], pSrc[1], pDst[0], pDst[1], *ppDstCoeff
 * null: zanStsNullPtr; QP above 51 (unsigned): zanStsOutOfRange. */
ZanStatus zaniDisassembleChroma420Intra_AVS_16s8u_C1R(const Zan8u* pSrc[2], Zan32s srcStep, Zan8u* pDst[2],
                                                      Zan32s dstStep, Zan16s** ppDstCoeff, Zan32s* pPredMode,
                                                      Zan32u* pCbp, Zan32s QP, Zan32u edgeType);

/* ==== end of avsblock ==== */

/* ==== avsinter: AVS interpolation, weighting and deblocking ==== */

/* Quarter-sample luma prediction of AVS (GB/T 20090.2) for a block of the
 * record ZanInterpolateBlockRecord (pSrc[0] the reference plane's sample
 * (0, 0), sizeFrame its extent, pointBlockPos and pointVector in quarter
 * samples; pDst[0] the block).  With dx = vector.x & 3, dy = vector.y & 3
 * and the integer part by arithmetic shift: half samples b, h use
 * (-1, 5, 5, -1) with (x + 4) >> 3; quarter samples a, d use (-1, -2, 96,
 * 42, -7) over the samples 2 before to 2 after, c, n the mirror over 1
 * before to 3 after, (x + 64) >> 7; j is (-1, 5, 5, -1) across the
 * unrounded vertical half samples, (x + 32) >> 6; f, q apply the quarter
 * filter (mirror for q) down the unrounded horizontal half samples and i, k
 * across the unrounded vertical ones, (x + 512) >> 10; e, g, p, r are
 * (j unrounded + 64 D + 64) >> 7 with D the integer sample at (0, 0),
 * (1, 0), (0, 1), (1, 1); all clamped to 0..255.  Width 8 runs the 8-wide
 * kernels, a width with bit 16 set the 16-wide ones.  A zero vector copies
 * from pointBlockPos with no boundary test.  Otherwise the region read
 * (2 columns before and 5 more when dx is not 0, the same for rows) is
 * tested against the frame; when it leaves the frame it is read through the
 * boundary (each position outside taking the nearest plane sample, as the
 * H.264 block forms do) and the result equals that of an endlessly padded
 * plane, for any position and vector (computed without 32-bit wrap).  As
 * there, a region that reaches past both ends of one axis of the frame (a
 * frame smaller than the rows or columns read) is clamped at its start
 * only: its samples past the frame's far end are read from the memory that
 * follows.  Checks: record, pSrc[0] or pDst[0] null: zanStsNullPtr; height
 * not a multiple of 8 or width with a bit other than 8 and 16 set:
 * zanStsSizeBad.  A width or height of 0 does nothing. */
ZanStatus zaniInterpolateLumaBlock_AVS_8u_P1R(const ZanInterpolateBlockRecord* pInfo);

/* Weighted prediction: pDst = clamp to 0..255 of (((s * scale + 16) >> 5)
 * + shift), in wrapping 32-bit arithmetic.  A width with bit 16 set writes
 * 16 samples a row, any other (4 and 0 included) 8 samples a row, so the
 * destination must have room for 8; roiSize.height rows.  Checks: pSrc or
 * pDst null: zanStsNullPtr; height not a multiple of 4 or width with a bit
 * other than 4, 8, 16 set: zanStsSizeBad.  Steps are not checked. */
ZanStatus zaniWeightPrediction_AVS_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep,
                                          Zan32s scale, Zan32s shift, ZaniSize roiSize);

/* Loop filter of AVS on one macroblock's edges, in place.  The record is
 * ZanDeblockingRecord without bitDepth: pSrcDstPlane is the macroblock's
 * (luma) or the 8x8 block's (chroma) first sample, srcDstStep its row step
 * in bytes; pAlpha, pBeta and pThresholds are Zan8u pairs (element 0 the
 * outer edge at 0, element 1 the inner edge at 8; chroma reads element 0);
 * pThresholds holds the clip value C of the normal filter.  pBS holds one
 * 4-byte group per edge (bytes 0..3 the outer edge, 4..7 the inner one for
 * luma; bytes 0..3 for chroma): the strength (0, 1, 2) of the first segment
 * (samples 0..7 of a luma edge, 0..3 of a chroma edge) in its byte 0 and of
 * the second (8..15, 4..7) in its byte 2; bytes 1 and 3 are 0.  An edge
 * whose group (read as one 32-bit little-endian word) is 0 is left alone;
 * a group equal to 0x20002 (both strengths 2) takes the strong filter on
 * the whole edge; any other group takes the normal filter on the segments
 * whose strength byte is not 0.  Luma filters the outer edge, then the
 * inner one.  Across the edge the samples are p2 p1 p0 | q0 q1 q2 (q0 the
 * first sample at or after the edge); a line is filtered only when
 * |p0 - q0| < alpha, |p1 - p0| < beta and |q1 - q0| < beta.  Luma strong:
 * with s = p0 + q0 + 2, p0' = (p1 + p0 + s) >> 2 and p1' = (2 p1 + s) >> 2
 * when |p2 - p0| < beta and |p0 - q0| < (alpha >> 2) + 2, otherwise only
 * p0' = (2 p1 + s) >> 2; q the same.  Luma normal: d = clip(-C, C, (3 (q0 -
 * p0) + p1 - q1 + 4) >> 3), p0' = clamp(p0 + d), q0' = clamp(q0 - d); then
 * when |p2 - p0| < beta, p1' = clamp(p1 + clip(-C, C, (3 (p0' - p1) + p2 -
 * q0' + 4) >> 3)), and when |q2 - q0| < beta, q1' = clamp(q1 - clip(-C, C,
 * (3 (q1 - q0') + p0' - q2 + 4) >> 3)).  Chroma strong: p0' = (2 p1 + p0 +
 * q0 + 2) >> 2, q0' = (2 q1 + p0 + q0 + 2) >> 2; chroma normal: p0', q0' as
 * the luma normal filter.  Clamps are to 0..255.  Across an edge the
 * vertical-edge functions read 4 samples on each side (p3..q3) and the
 * horizontal-edge ones 3 rows on each side; only p1..q1 (luma) or p0..q0
 * (chroma) change.  Checks: the record or
 * any of its pointers null: zanStsNullPtr; nothing else. */
ZanStatus zaniFilterDeblockingLuma_VerEdge_AVS_8u_C1IR(const ZanDeblockingRecord* pDeblockInfo);
ZanStatus zaniFilterDeblockingLuma_HorEdge_AVS_8u_C1IR(const ZanDeblockingRecord* pDeblockInfo);
ZanStatus zaniFilterDeblockingChroma_VerEdge_AVS_8u_C1IR(const ZanDeblockingRecord* pDeblockInfo);
ZanStatus zaniFilterDeblockingChroma_HorEdge_AVS_8u_C1IR(const ZanDeblockingRecord* pDeblockInfo);

/* ==== end of avsinter ==== */

/* ==== dvdecode: DV segment decoding and dequantisation ==== */
/* A DV video segment is five DIF blocks of 80 bytes.  Byte 3 of each holds
 * the quantisation number QNO in its low 4 bits.  From byte 4 on follow the
 * DCT blocks: six of 14, 14, 14, 14, 10, 10 bytes (DV 25 and 50 Mb/s, 30 in
 * the segment) or eight of 10, 10, 10, 10, 10, 10, 8, 8 bytes (DV100, 40 in
 * the segment).  A block starts with 9 bits of DC, 1 bit of DCT mode and 2
 * bits of class; its AC codes follow, and a block that needs more bits goes
 * on in the spare bits of the other blocks of its macroblock, then of the
 * segment.  pBlock: 30 (40) blocks of 64 Zan16s, block i the i-th DCT block
 * in stream order, which the caller has zeroed: only coded positions are
 * written.  The DC is stored as the top 16 bits of the block masked with
 * 0xFF80 (the 9-bit DC times 128), AC levels times 64 at the raster
 * position of the scan (zigzag for DCT mode 0; for mode 1 the 2-4-8 scan
 * 0, 32, 1, 33, 8, 40, 2, 34, ..., rows 0-3 holding the sum field and rows
 * 4-7 the difference field).  pBlockParam: one Zan32u per block: bit 0 set
 * when an end-of-block code closed the block, bits 4-5 the class, bit 6 the
 * DCT mode, bits 8-15 the scan position of the last coefficient stored (0
 * for the DC alone), bits 16-19 the QNO of its DIF block.  A position step
 * that passes 63 without an end-of-block code ends the block with bit 0
 * clear; a block whose codes run out of bits stays unfinished, bit 0 clear.
 * The code table and the scans are built in. */

/* Decodes one segment in three passes: each block on its own bits; then,
 * per macroblock, unfinished blocks continue in the spare bits of finished
 * blocks of the same macroblock in stream order; then the blocks still
 * unfinished continue in the spare bits left anywhere in the segment.  A
 * code may straddle two blocks' bits.  Reads the 400 bytes of the segment
 * and nothing beyond.  pZigzagTables and pHuffTable are not read and may be
 * null.  Checks: pStream, pBlock or pBlockParam null zanStsNullPtr.  A
 * damaged stream is no failure: the call returns zanStsOk. */
ZanStatus zaniHuffmanDecodeSegment_DV_8u16s(const Zan8u* pStream, const Zan32u* pZigzagTables,
                                            const Zan32u* pHuffTable, Zan16s* pBlock, Zan32u* pBlockParam);
ZanStatus zaniHuffmanDecodeSegment_DV100_8u16s(const Zan8u* pStream, const Zan32u* pZigzagTables,
                                               const Zan32u* pHuffTable, Zan16s* pBlock, Zan32u* pBlockParam);

/* The first pass alone on a DV (25/50 Mb/s) segment: each block is decoded
 * from its own bits only; a block that does not fit stays unfinished (bit 0
 * clear) with the coefficients that fitted.  Otherwise as
 * zaniHuffmanDecodeSegment_DV_8u16s. */
ZanStatus zaniHuffmanDecodeSegmentOnePass_DV_8u16s(const Zan8u* pStream, const Zan32u* pZigzagTables,
                                                   const Zan32u* pHuffTable, Zan16s* pBlock,
                                                   Zan32u* pBlockParam);

/* Builds a two-level code table for a caller.  pSpec1 and pSpec2 are arrays
 * of Zan32s: word 0 is the width b of the level (0 to 24), words 1 and 2 are
 * not read, and from word 3 on, for each code length L from 1 to b, a count
 * n and then n rows of (code, run + 1, level).  A row fills the 2^(b - L)
 * entries from index (code mod 2^L) << (b - L), each a Zan32u with the
 * length in byte 0 (L for the first level, L + 4 for the second), the step
 * (run + 1, low 8 bits) in byte 1 and level * 64 (low 16 bits) in bytes 2
 * and 3.  Entries no row reaches hold length 255, step 0, level 0.  The
 * table is one block of 2^b1 + 2^b2 entries, the second level after the
 * first, stored at *ppTable.  Checks: any null pointer zanStsNullPtr; a
 * width outside 0..24 or a failed allocation zanStsNoMem (*ppTable left as
 * it was). */
ZanStatus zaniInitAllocHuffmanTable_DV_32u(const Zan32s* pSpec1, const Zan32s* pSpec2, Zan32u** ppTable);

/* Releases a table from zaniInitAllocHuffmanTable_DV_32u.  Checks: null
 * zanStsNullPtr. */
ZanStatus zaniFreeHuffmanTable_DV_32u(Zan32u* pTable);

/* Dequantises 64 coefficients in place, in 16-bit lanes:
 * y = ((x * t) >> 16) << 2, the product signed 32-bit, the left shift
 * wrapping in 16 bits, t = pDequantTable[i].  Checks: any null pointer
 * zanStsNullPtr. */
ZanStatus zaniQuantInv_DV_16s_C1I(Zan16s* pSrcDst, const Zan16s* pDequantTable);

/* Dequantises and weights 64 coefficients in place:
 * y = ((low 16 bits of (x >> 3) * a) * b) >> 16, signed, a from
 * pDequantTable and b from pWeightTable.  Checks: any null pointer
 * zanStsNullPtr. */
ZanStatus zaniQuantWeightBlockInv_DV_16s_C1I(Zan16s* pSrcDst, const Zan16s* pDequantTable,
                                             const Zan16s* pWeightTable);

/* DV100 dequantisation and weighting in place.  DC: y = x >> 5.  Others:
 * z = low 16 bits of (x >> 6) * qp, y = (z * w) >> 5 as a signed 32-bit
 * product, saturated to -32768..32767, w = pWeightTable[i] (entry 0 is not
 * read).  qp is not range checked.  Checks: any null pointer
 * zanStsNullPtr. */
ZanStatus zaniQuantWeightBlockInv_DV100_16s_C1I(Zan16s* pSrcDst, const Zan16s* pWeightTable, Zan32s qp);

/* ==== end of dvdecode ==== */

/* ==== dvoutput: DV macroblock output conversions ==== */
/* Output of DV macroblocks as packed 4:2:2 bytes Y, Cb, Y, Cr (16 bytes
 * for 8 pixels), rows dstStep bytes apart, the first row at the pointer
 * given for the macroblock.  A macroblock is an array of 64-sample Zan16s
 * blocks (128 bytes each, raster order, samples centred on zero): Y0, Y1,
 * Y2, Y3, Cr, Cb, so blocks 4 and 5 are Cr and Cb.  Every sample v is
 * written as v clamped to -128..127 plus 128 (127 and 128 give 255, -128
 * gives 0).  Layouts: 4:1:1, 32x8 pixels, Y0..Y3 side by side, chroma 8
 * samples a row doubled horizontally (position 2i is c[i], 2i + 1 is
 * (c[i] + c[i + 1] saturated to 16 bits) >> 1, arithmetic, the last
 * repeating c[7]); 4:1:1 right-edge macroblock, 16x16, Y0 Y1 above Y2 Y3,
 * chroma columns 0-3 serving rows 0-7 and columns 4-7 rows 8-15, each
 * doubled the same way (the last repeating c[3] or c[7]); 4:2:0, 16x16, Y0
 * Y1 above Y2 Y3, chroma row 2g serving output rows 4g and 4g + 2, row
 * 2g + 1 rows 4g + 1 and 4g + 3, no chroma interpolation; 4:2:2 (the DV50
 * macroblock), 16x8, luma block 0 left and block 2 right (blocks 1 and 3
 * not read), chroma 8 a row, one Cb/Cr pair per two luma samples.
 * Reductions, 4:1:1 and 4:2:0: luma means of 2x2 (ZoomOut2) or 4x4
 * (ZoomOut4) samples with saturating 16-bit sums, rows first then columns,
 * shifted right with the sign kept; chroma means likewise over the box the
 * output pair covers (4:1:1: 1 column by 2 rows or 2 by 4; edge: the same
 * within its half; 4:2:0: 2 columns of row y, or 4 columns of rows 2y and
 * 2y + 1).  4:2:2: 2x2 or 4x4 means of luma and chroma in 32 bits,
 * truncating toward zero.  ZoomOut8 takes the first sample of each block.
 * Pre-reduced forms read a 4x4 block from the first 16 samples of each
 * block (4 a row) and lay it out as the full-size form at half size.  The
 * five-macroblock forms take arrays of five source and five destination
 * pointers; unless stated they return zanStsNullPtr for a null array and
 * stop, with zanStsOk, at the first null entry of either array.  Steps are
 * not checked; every alignment gives the same bytes.  No input is read
 * beyond the blocks named. */

/* 4:1:1 to 32x8 pixels per macroblock (64 bytes a row). */
ZanStatus zaniYCrCb411ToYCbCr422_5MBDV_16s8u_P3C2R(const Zan16s* const pSrc[5], Zan8u* const pDst[5], Zan32s dstStep);
/* 4:1:1 reduced by 2: 16x4 pixels per macroblock. */
ZanStatus zaniYCrCb411ToYCbCr422_ZoomOut2_5MBDV_16s8u_P3C2R(const Zan16s* const pSrc[5], Zan8u* const pDst[5],
                                                            Zan32s dstStep);
/* 4:1:1 reduced by 4: 8x2 pixels per macroblock. */
ZanStatus zaniYCrCb411ToYCbCr422_ZoomOut4_5MBDV_16s8u_P3C2R(const Zan16s* const pSrc[5], Zan8u* const pDst[5],
                                                            Zan32s dstStep);
/* 4:1:1 reduced by 8: one row of 4 pixels (8 bytes) per macroblock: Y from
 * the first samples of blocks 0, 1 (first pair) and 2, 3 (second pair), Cb
 * and Cr the first samples of blocks 5 and 4 in both pairs.  No step. */
ZanStatus zaniYCrCb411ToYCbCr422_ZoomOut8_5MBDV_16s8u_P3C2R(const Zan16s* const pSrc[5], Zan8u* const pDst[5]);
/* One 4:1:1 right-edge macroblock to 16x16 pixels.  Checks: a null pointer
 * zanStsNullPtr. */
ZanStatus zaniYCrCb411ToYCbCr422_EdgeDV_16s8u_P3C2R(const Zan16s* pSrc, Zan8u* pDst, Zan32s dstStep);
/* One 4:1:1 right-edge macroblock reduced by 2 (8x8 pixels), by 4 (4x4)
 * or by 8 (2x2: first samples, Y0 Y1 above Y2 Y3).  Checks: a null pointer
 * zanStsNullPtr. */
ZanStatus zaniYCrCb411ToYCbCr422_ZoomOut2_EdgeDV_16s8u_P3C2R(const Zan16s* pSrc, Zan8u* pDst, Zan32s dstStep);
ZanStatus zaniYCrCb411ToYCbCr422_ZoomOut4_EdgeDV_16s8u_P3C2R(const Zan16s* pSrc, Zan8u* pDst, Zan32s dstStep);
ZanStatus zaniYCrCb411ToYCbCr422_ZoomOut8_EdgeDV_16s8u_P3C2R(const Zan16s* pSrc, Zan8u* pDst, Zan32s dstStep);
/* 4:1:1 pre-reduced macroblocks (4x4 blocks) to 16x4 pixels: four luma
 * blocks side by side, 4 chroma samples a row doubled horizontally. */
ZanStatus zaniYCrCb411ToYCbCr422_16x4x5MB_DV_16s8u_P3C2R(const Zan16s* const pSrc[5], Zan8u* const pDst[5],
                                                         Zan32s dstStep);
/* One pre-reduced 4:1:1 right-edge macroblock to 8x8 pixels: Y0 Y1 above
 * Y2 Y3 (4x4 each), chroma columns 0-1 serving rows 0-3 and 2-3 rows 4-7,
 * doubled horizontally.  Checks: a null pointer zanStsNullPtr. */
ZanStatus zaniYCrCb411ToYCbCr422_8x8MB_DV_16s8u_P3C2R(const Zan16s* pSrc, Zan8u* pDst, Zan32s dstStep);
/* 4:2:0 to 16x16 pixels per macroblock. */
ZanStatus zaniYCrCb420ToYCbCr422_5MBDV_16s8u_P3C2R(const Zan16s* const pSrc[5], Zan8u* const pDst[5], Zan32s dstStep);
/* 4:2:0 reduced by 2 (8x8 pixels), 4 (4x4) or 8 (2x2: first samples, Y0
 * Y1 above Y2 Y3; this form keeps its step since its output has two rows). */
ZanStatus zaniYCrCb420ToYCbCr422_ZoomOut2_5MBDV_16s8u_P3C2R(const Zan16s* const pSrc[5], Zan8u* const pDst[5],
                                                            Zan32s dstStep);
ZanStatus zaniYCrCb420ToYCbCr422_ZoomOut4_5MBDV_16s8u_P3C2R(const Zan16s* const pSrc[5], Zan8u* const pDst[5],
                                                            Zan32s dstStep);
ZanStatus zaniYCrCb420ToYCbCr422_ZoomOut8_5MBDV_16s8u_P3C2R(const Zan16s* const pSrc[5], Zan8u* const pDst[5],
                                                            Zan32s dstStep);
/* 4:2:0 pre-reduced macroblocks (4x4 blocks) to 8x8 pixels, chroma rows by
 * field as at full size. */
ZanStatus zaniYCrCb420ToYCbCr422_8x8x5MB_DV_16s8u_P3C2R(const Zan16s* const pSrc[5], Zan8u* const pDst[5],
                                                        Zan32s dstStep);
/* 4:2:2 to 16x8 pixels per macroblock.  Checks nothing: every pointer
 * must be valid; returns zanStsOk. */
ZanStatus zaniYCrCb422ToYCbCr422_5MBDV_16s8u_P3C2R(const Zan16s* const pSrc[5], Zan8u* const pDst[5], Zan32s dstStep);
/* 4:2:2 reduced by 2 (8x4 pixels) or by 4 (4x2). */
ZanStatus zaniYCrCb422ToYCbCr422_ZoomOut2_5MBDV_16s8u_P3C2R(const Zan16s* const pSrc[5], Zan8u* const pDst[5],
                                                            Zan32s dstStep);
ZanStatus zaniYCrCb422ToYCbCr422_ZoomOut4_5MBDV_16s8u_P3C2R(const Zan16s* const pSrc[5], Zan8u* const pDst[5],
                                                            Zan32s dstStep);
/* 4:2:2 reduced by 8: 4 bytes per macroblock, Y of block 0, Cb of block 5,
 * Y of block 2, Cr of block 4, first samples.  No step.  Checks: a null
 * array zanStsNullPtr; then each entry of both arrays as it goes: a null
 * entry gives zanStsNullPtr after the macroblocks before it were stored. */
ZanStatus zaniYCrCb422ToYCbCr422_ZoomOut8_5MBDV_16s8u_P3C2R(const Zan16s* const pSrc[5], Zan8u* const pDst[5]);
/* 4:2:2 pre-reduced macroblocks (4x4 blocks) to 8x4 pixels: luma blocks 0
 * and 2 side by side, chroma 4 a row. */
ZanStatus zaniYCrCb422ToYCbCr422_8x4x5MB_DV_16s8u_P3C2R(const Zan16s* const pSrc[5], Zan8u* const pDst[5],
                                                        Zan32s dstStep);
/* Ten DV100 half macroblocks, each 16x8 pixels from four consecutive blocks
 * at pSrc[i]: luma left, luma right, Cr, Cb; chroma 8 a row, one pair per
 * two luma samples.  Arrays of ten pointers; a null array zanStsNullPtr,
 * stops with zanStsOk at the first null entry. */
ZanStatus zaniYCrCb422ToYCbCr422_10HalvesMB16x8_DV100_16s8u_P3C2R(const Zan16s* const pSrc[10],
                                                                 Zan8u* const pDst[10], Zan32s dstStep);

/* ==== end of dvoutput ==== */

/* ==== deinterlace: deinterlacing ==== */

/* Deinterlacing of 8-bit pictures.  A frame holds two interleaved fields, the
 * even and the odd rows; each tool keeps the rows of one field and computes
 * the other field's rows (the target rows).  C1 is one plane; C2 is two
 * interleaved channels, a row of width w holding 2w bytes, the horizontal
 * neighbour in the same channel 2 bytes away.  Steps are row steps in bytes
 * and are not checked; sizes are in samples.  Pointer alignment never
 * matters.  A failed check writes nothing.
 *
 * Shared rules: avg(a, b) = (a + b + 1) >> 1.  The spatial predictor of a
 * target sample between row u (above) and row d (below): d1 = |u[x-1] -
 * d[x+1]|, d2 = |u[x+1] - d[x-1]|, d0 = |u[x] - d[x]|; if d1 < d2 it is
 * avg(u[x-1], d[x+1]) when d1 < d0, else avg(u[x], d[x]); otherwise it is
 * avg(u[x+1], d[x-1]) when d2 < d0, else avg(u[x], d[x]).  At the first and
 * last column (C2: the first two and last two bytes) it repeats a sample of
 * the kept field instead.  Thresholds are compared as unsigned bytes: only
 * the low 8 bits of a threshold count. */

/* The prepared weight table of the blend (the same record for C1 and C2).  It
 * takes 1056 bytes: this 32-byte head, then 512 Zan16u.  For motion m in
 * 0..255, pWeights[m] is the spatial weight W(m) in 0..256 and
 * pWeights[256 + m] is 256 - W(m).  Written only by the Init functions. */
typedef struct {
    Zan16u* pWeights;  /* the weight table */
    Zan32s slope;      /* weight gained per unit of motion, 8 fraction bits */
    Zan32s intercept;  /* weight at motion 0, 8 fraction bits */
    Zan32s fullMotion; /* above this motion the weight is 256; negative: every motion */
    Zan32s zeroMotion; /* below this motion the weight is 0; 256 or more: every motion */
    Zan32s memId;      /* 1: the record lies in the caller's memory; 2: allocated by the library */
} ZanDeinterlaceBlendState;

/* Writes 1056, the bytes that Init needs for the record and its table.
 * zanStsNullPtr (-8) for a null pSize. */
ZanStatus zaniDeinterlaceBlendGetSize_8u_C1(Zan32s* pSize);
ZanStatus zaniDeinterlaceBlendGetSize_8u_C2(Zan32s* pSize);

/* Prepares the weight table in the caller's memory pMemState (1056 bytes,
 * 8-byte aligned; the table follows the 32-byte head) and stores the record's
 * address in *ppState (memId 1).  pThresholds holds two motion thresholds,
 * pConstants two weights on a scale where 1.0 is 256; the line through them
 * gives the weight.  Both arrays are changed in place: the thresholds are
 * swapped when pThresholds[0] > pThresholds[1] (t0 <= t1), pConstants[1]
 * becomes min(32767.0, larger) and pConstants[0] max(-32768.0, smaller)
 * (c0, c1).  Then: if t0 == t1 the weight is a step, 0 below t0 and 256 from
 * t0 on (fullMotion t0 - 1, zeroMotion t0, slope and intercept not written).
 * Otherwise, in double precision, s = |(c1 - c0) / (t1 - t0)|, b = c1 - s*t1,
 * B = trunc(256b + 0.5) if b > 0 else trunc(256b - 0.5), S = trunc(256s +
 * 0.5) (a value the 32-bit conversion cannot hold becomes INT32_MIN).  If
 * B >= 257: S = 0, B = 256, fullMotion 255, zeroMotion 0.  Else if S == 0:
 * fullMotion 255, zeroMotion 256 with B set to 0 when B < 0, else 0.  Else
 * with e = min(255S + B, 256): if e < 0 slope and intercept are 0,
 * fullMotion 255, zeroMotion 256 (the table from the unchanged S, B clamps to
 * 0); otherwise, when e - B > 32767, B = e - 32767 and S = trunc((256c1 - B) /
 * t1); fullMotion = (256 - B) / S (truncating, less 1 when 256 - B < 0, at
 * most 255) and zeroMotion = -B / S (truncating, plus 1 when B < 0, at least
 * 0).  The table is W(m) = clamp(B + S*m, 0, 256), or the step.  Should S
 * come out 0 after the 32767 limit, fullMotion is 255 and zeroMotion 0.
 * Checks: ppState or pMemState null: -8; width or height below 3: -6.
 * pThresholds and pConstants are not checked. */
ZanStatus zaniDeinterlaceBlendInit_8u_C1(ZaniSize size, Zan32s* pThresholds, double* pConstants,
                                         ZanDeinterlaceBlendState** ppState, Zan8u* pMemState);
ZanStatus zaniDeinterlaceBlendInit_8u_C2(ZaniSize size, Zan32s* pThresholds, double* pConstants,
                                         ZanDeinterlaceBlendState** ppState, Zan8u* pMemState);

/* As Init, on a 32-byte record and a 512-entry table from zanMalloc, memId 2.
 * Checks: ppState null: -8; width or height below 3: -6; the record's or the
 * table's allocation failing: zanStsNoMem (-9) (when the table fails, the
 * record stays allocated and stored in *ppState).  Release with Free. */
ZanStatus zaniDeinterlaceBlendInitAlloc_8u_C1(ZaniSize size, Zan32s* pThresholds, double* pConstants,
                                              ZanDeinterlaceBlendState** ppState);
ZanStatus zaniDeinterlaceBlendInitAlloc_8u_C2(ZaniSize size, Zan32s* pThresholds, double* pConstants,
                                              ZanDeinterlaceBlendState** ppState);

/* Releases a record from InitAlloc: the table, then the record.  Checks: null:
 * -8; memId other than 2: zanStsContextMismatch (-17). */
ZanStatus zaniDeinterlaceBlendFree_8u_C1(ZanDeinterlaceBlendState* pState);
ZanStatus zaniDeinterlaceBlendFree_8u_C2(ZanDeinterlaceBlendState* pState);

/* Three-frame motion-weighted blend.  P0, P1, P2 are the previous, current
 * and next frame (C1: pSrcPlane[0..2] sharing srcStep; C2: each its own
 * step).  topField non-zero (C2: its bit 0) computes the even rows from the
 * second on, keeping the odd field: row 0 of P1 is copied and, with copyField
 * non-zero, the h/2 odd rows of P1 too.  topField zero computes the odd rows:
 * with copyField non-zero the (h+1)/2 even rows of P1 are copied.  With
 * copyField zero the kept rows of pDst stay as they are.  A target row with
 * no row below (the last row, when (h & 1) equals the topField bit) is copied
 * from P1, last.  For a target sample at (y, x), c = P1, O = P0 when topFirst
 * equals topField (C2: both compared whole), else P2:
 *   a1 = avg(|P0[y-1] - c[y-1]|, |P2[y-1] - c[y-1]|), a2 likewise on row y+1,
 *   m = max(avg(a1, a2), |c[y] - O[y]|);
 *   S = the spatial predictor between c[y-1] and c[y+1] (edge columns repeat
 *       c[y+1] when topField is set, c[y-1] otherwise);
 *   M = median(c[y-1], c[y], c[y+1]);
 *   out = (W(m) * S + (256 - W(m)) * M) >> 8.
 * With fullMotion negative every sample takes S; with zeroMotion 256 or more
 * every sample takes M (the same formula).  Checks (C1): pSrcPlane or pDst
 * null, then P0, P1, P2, then the table: -8; width or height below 3: -6.
 * (C2): the table, pDst, P0, P1, P2 null: -8; width or height below 3: -6.
 * pState itself is not checked.  Reads rows 0..h-1 of the three planes. */
ZanStatus zaniDeinterlaceBlend_8u_C1(const Zan8u* pSrcPlane[3], Zan32s srcStep, Zan8u* pDst, Zan32s dstStep,
                                     ZaniSize size, Zan32s topFirst, Zan32s topField, Zan32s copyField,
                                     ZanDeinterlaceBlendState* pState);
ZanStatus zaniDeinterlaceBlend_8u_C2(const Zan8u* pSrc0, Zan32s src0Step, const Zan8u* pSrc1, Zan32s src1Step,
                                     const Zan8u* pSrc2, Zan32s src2Step, Zan8u* pDst, Zan32s dstStep,
                                     ZaniSize size, Zan32s topFirst, Zan32s topField, Zan32s copyField,
                                     ZanDeinterlaceBlendState* pState);

/* Edge-directed interpolation of one field given as a packed picture (pass
 * twice the frame step to work inside a frame).  f = fieldNum (0 or 1), b = 1
 * when bCopyBorder is non-zero.  With b, the last source row goes to the last
 * destination row (f non-zero) or the first to the first (f zero).  Output
 * rows r = (1-f)*b .. h - f*b - 1 take the spatial predictor between source
 * rows r-1+f (u) and r+f (d) for columns 1..w-2; columns 0 and w-1 copy
 * source row r.  Checks: a null pointer: -8; width or height below 1: -6.
 * Reads source rows -1 (f 0) or h (f 1) when b is 0. */
ZanStatus zaniDeinterlaceEdgeDetect_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep,
                                           ZaniSize size, Zan32s fieldNum, Zan32s bCopyBorder);

/* Vertical median with a dead zone.  fieldNum 1 keeps the even rows (copies
 * the h/2 rows 0, 2, ... at twice both steps); any other value keeps the odd
 * rows, copied the same way from source row 1 to pDst + srcStep (not
 * dstStep: use equal steps).  bCopyBorder non-zero copies srcStep bytes of
 * the first and of the last source row to the first and last destination
 * row.  b = (bCopyBorder != 0); rows from (1 - fieldNum)*2*b + fieldNum in
 * steps of 2, below h - b, are computed: m = median(src[r-1], src[r],
 * src[r+1]); out = src[r] when (threshold & 255) > |m - src[r]|, else m.
 * Checks: a null pointer: -8; width below 1 or height below 2: -6.  With
 * bCopyBorder 0 rows -1 and h may be read. */
ZanStatus zaniDeinterlaceMedianThreshold_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep,
                                                ZaniSize size, Zan32s threshold, Zan32s fieldNum,
                                                Zan32s bCopyBorder);

/* Four-plane motion detector choosing between weave and a two-row average.
 * P0..P3 in time order share srcStep.  Kept rows have the parity of topField
 * (0 or 1; it is used as a row number).  K = P1 when topField equals topFirst,
 * else P2; B is the plane before K.  copyField non-zero copies the h/2 kept
 * rows from row topField of K.  topField 1: row 0 of K is copied, and the last
 * row when h is odd; target rows start at 2.  Otherwise the last row of K is
 * copied when h is even; target rows start at 1.  For a target sample with
 * T = threshold & 255, U = K[r-1], D = K[r+1], v = B[r]: it is static when
 * |K[r] - v|, |P1 - P0|, |P1 - P2|, |P1 - P3|, |P0 - P2|, |P2 - P3| (the last
 * five on rows r+1 and r-1) are all below T.  Static with artifactProtection
 * 0: out = v.  Otherwise d = 30 (static) or 6 (moving), lo = max(v - d, 0),
 * hi = min(v + d, 235): out = avg(U, D) when U and D are both below lo or
 * both above hi, else v.  Checks: pSrcPlane or pDst null, then the four
 * planes: -8; width or height below 1: -6. */
ZanStatus zaniDeinterlaceMotionAdaptive_8u_C1(const Zan8u* pSrcPlane[4], Zan32s srcStep, Zan8u* pDst,
                                              Zan32s dstStep, ZaniSize size, Zan32s threshold, Zan32s topFirst,
                                              Zan32s topField, Zan32s copyField, Zan32s artifactProtection);

/* Vertical three-tap low-pass over a band of rows.  c = min(centerWeight as
 * unsigned, 256), n = (256 - c) >> 1: out[r] = ((src[r-1] + src[r+1]) * n +
 * src[r] * c) >> 8, no rounding (odd c loses brightness).  layout 1 (top
 * band): row 0 copied, rows 1..h-2 filtered, row h-1 not written.  4 (middle
 * band): rows -1..h-2 filtered, row h-1 not written.  16 (bottom band): rows
 * -1..h-2 filtered, row h-1 copied.  Any other value (whole picture): row 0
 * and row h-1 copied, rows 1..h-2 filtered.  Bands 4 and 16 read source rows
 * -2..h-1 and write destination row -1.  Checks: a null pointer: -8; height
 * below 3 or width below 1: -6. */
ZanStatus zaniDeinterlaceFilterTriangle_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep,
                                               ZaniSize roiSize, Zan32u centerWeight, Zan32s layout);

/* Touches nothing and returns layout as its status; no check. */
ZanStatus zaniDeinterlaceFilterTriangle_8u_C2R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep,
                                               ZaniSize roiSize, Zan32u centerWeight, Zan32s layout);

/* ==== end of deinterlace ==== */

/* ==== denoise: adaptive and smoothing denoisers ==== */

/* Two noise filters for 8-bit planes.  The pointers give the picture's
 * origin; the work is a region given as an offset and a size inside a
 * picture of imgSize.  Samples outside the region are read where a window
 * reaches them and are never written.  The picture's own outermost rows and
 * columns are never filtered: when the region touches the picture's first
 * row (roiOffset.y 0), last row, first column or last column, that row or
 * column of the region is copied from the current frame instead.  Steps are
 * row steps in bytes, not checked.  A failed check writes nothing. */

/* The adaptive denoiser's record, from InitAlloc.  The reciprocal table has
 * 3 * (2r + 1)^2 + 1 entries, r the larger radius: entry 0 is 1, entry k is
 * floor(65535.0 / k + 0.5). */
typedef struct {
    ZaniSize maskSize; /* window radii: 2*width+1 columns by 2*height+1 rows */
    ZaniSize roiSize;  /* the region size the record was built for */
    Zan16u* pRecip;    /* reciprocal table */
} ZanDenoiseAdaptiveState;

/* Allocates the record, then its table (through zanMalloc), and stores the
 * record in *ppState.  Checks: ppState null: -8; any dimension below 1, or a
 * radius larger than the region in its direction: -6; either allocation
 * failing: zanStsNoMem (-9), the record staying in *ppState when only the
 * table failed.  Release with zaniFilterDenoiseAdaptiveFree_8u_C1. */
ZanStatus zaniFilterDenoiseAdaptiveInitAlloc_8u_C1(ZanDenoiseAdaptiveState** ppState, ZaniSize roiSize,
                                                   ZaniSize maskSize);

/* Releases the table (when present), then the record.  Null: -8. */
ZanStatus zaniFilterDenoiseAdaptiveFree_8u_C1(ZanDenoiseAdaptiveState* pState);

/* Spatio-temporal mean over a window in three frames (pSrc[0..2]: previous,
 * current, next; one srcStep).  For a filtered sample c at (y, x) with
 * T = threshold: the window is rows y-a..y+b, columns x-e..x+f with
 * a = min(y, mh), b = min(mh, H-1-y), e = min(x, mw), f = min(mw, W-1-x)
 * (cut at the picture's edge, never at the region's).  n counts its samples,
 * Sc sums the current frame's; Sp, cp sum and count the previous frame's
 * samples s with T > |c - s|, Sn, cn the next frame's.  All sums are held in
 * 16 bits (they wrap).  R is the state's table.  cp + cn == 0: out =
 * Sc * R[n] >> 16.  Otherwise by mode, p and q being the centre samples of
 * the previous and next frames: 0: (Sc + p + q) * R[n+2]; 1: (Sc + Sp + q) *
 * R[n+cp+1]; 2: (Sc + p + Sn) * R[n+cn+1]; 3: (Sc + Sp + Sn) * R[n+cp+cn];
 * each >> 16, stored as a byte.  Checks in order: pSrc, pDst or pState null,
 * then each plane null: -8; a picture, region or mask dimension below 1, or
 * the region past the picture: -6; maskSize or roiSize unlike the state's:
 * -6.  A mode outside 0..3 returns zanStsModeUnknown (1) with nothing
 * written, except with both radii 1 and a region at most 1408 wide, where
 * the border copies are done and 0 is returned. */
ZanStatus zaniFilterDenoiseAdaptive_8u_C1R(const Zan8u* pSrc[3], Zan32s srcStep, Zan8u* pDst, Zan32s dstStep,
                                           ZaniSize imgSize, ZaniSize maskSize, ZaniPoint roiOffset,
                                           ZaniSize roiSize, Zan32s threshold, Zan32s mode,
                                           ZanDenoiseAdaptiveState* pState);

/* Edge-preserving spatial mean that never crosses a detected edge.  pBuffer:
 * 2 * (rh + 3) * (rw + 3) bytes (rw, rh the region): an edge mask E, then a
 * 3x3 box low-pass L of the picture around the region, both at row step
 * rw + 3.  E[r][c] is 255 when |L[r][c] - L[r+1][c+1]| or |L[r][c+1] -
 * L[r+1][c]| is at least T (T = threshold, clamped to 1..256), else 0; L is
 * replicated at the picture's edges and E is 255 along the picture's last
 * row and column.  With threshold 0 the first (rh - 2) * rw bytes of E from
 * byte rw are set to 255 and the rest of E keeps what the buffer held.  A
 * filtered sample whose own mask entry is non-zero is copied; otherwise it is
 * the mean of those samples of its 3x3 neighbourhood whose own mask entries
 * are 0: with k of them summing to S, min(S * D[k] >> 16, 255), D = {1,
 * 65535, 32768, 21845, 16384, 13107, 10923, 9362, 8192, 7282}.  Reads one
 * row and column beyond the region, two when the region ends two samples
 * before the picture's edge.  Checks in order: pSrc, pDst, pBuffer null: -8;
 * picture dimension below 1: -6; region height below 3: zanStsErr (-2);
 * region past the picture: -6. */
ZanStatus zaniFilterDenoiseSmooth_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep,
                                         ZaniSize imgSize, Zan32s threshold, ZaniPoint roiOffset,
                                         ZaniSize roiSize, Zan8u* pBuffer);

/* ==== end of denoise ==== */

/* ==== cast: CAST denoising ==== */

/* CAST denoising: a block-adaptive temporal and spatial noise filter.  Each
 * block of the picture is judged still or moving against the previous frame.
 * A still block is blended with the previous frame by a per-block history
 * weight that grows while the block stays still; a moving block is filtered
 * by a neighbour mean that preserves edges.  The caller owns the frames, the
 * edge map and the history.
 *
 * History: an optional caller-owned byte array carried from frame to frame
 * (null: no history).  One byte per block in raster order for the one-plane
 * form: ceil(width / blockWidth) * ceil(height / blockHeight) bytes.  In the
 * 4:2:2 form a group of 4 * blockWidth bytes of a row is one column of blocks
 * with four history bytes, in this order: first luma block, Cb block, second
 * luma block, Cr block; so 4 * ceil(2 * width / (4 * blockWidth)) *
 * ceil(height / blockHeight) bytes.  A history value is a blend weight out of
 * 256.
 *
 * Blocks are visited in raster order; a block cut by the right or bottom
 * border uses its real width and height.
 *   - Motion (with a previous frame): a sample differs when |cur - prev|
 *     exceeds temporalDifference.  In a block cut at the right, the flag of
 *     the last real sample of a row counts again for each missing column; in
 *     a block cut at the bottom, the count of the last real row counts again
 *     for each missing row.  The block is moving when the count exceeds
 *     motionCount.  A 4:2:2 block with no real column (the second luma block
 *     of a last group that holds only one luma block's worth of pixels)
 *     counts 0, so it is still: its history is updated and nothing is
 *     written for it.
 *   - Weight w, with history byte h: moving: w = h, then h = 128 when h is
 *     below 128, else h >> 1.  Still: h = min(h + 4, 200) when h is at least
 *     128, else h = 128; then w = h.  Without history w = historyWeight.
 *   - A still block with w above 0: out = ((prev - cur) * w + cur * 256 +
 *     128) >> 8 per sample.  The edge map plays no part.
 *   - A moving block, a still one with w = 0, and every block when pSrcPrev
 *     is null: each sample c walks its eight neighbours (row above left to
 *     right, left, right, row below left to right), coordinates clamped to
 *     the picture; a neighbour n with |n - c| below the limit
 *     (neighbourLimitY for the plane and for luma, neighbourLimitUV for
 *     chroma) adds to S and k.  k = 0 keeps c; else m = (S + (k >> 1)) / k,
 *     a = edgeWeight where the edge map exceeds edgeLimit, else flatWeight,
 *     and out = (c * a + m * (256 - a) + 128) >> 8.  Neighbours come from
 *     the unfiltered source.
 * When pSrcPrev is null and pHistory is not, the whole history is set to
 * historyWeight first and not touched again in that call.
 *
 * 4:2:2 layout: 2 bytes per pixel, even bytes luma, bytes 1 and 3 of each
 * four the Cb and Cr channels.  Luma neighbours lie 2 bytes apart, chroma
 * neighbours 4 bytes apart, and clamping keeps a channel's own first and last
 * samples.  A group of 4 * blockWidth bytes by blockHeight rows holds four
 * blocks, each decided, weighted and filtered by itself: the first
 * blockWidth luma samples, the second blockWidth luma samples, the group's Cb
 * samples and its Cr samples.  The edge map is read at the byte offset of
 * the sample, so it has the interleaved layout too.
 *
 * Steps are not checked (srcStep serves both frames).  The destination must
 * not overlap the current frame, the previous frame or the edge map.  A
 * blockWidth or blockHeight of 0 is not checked; such a call writes nothing
 * and returns zanStsOk. */

/* The parameter record, ten bytes; the defaults are what
 * zaniFilterDenoiseCASTInit writes. */
typedef struct {
    Zan8u temporalDifference; /* 16: a sample differs when |cur - prev| exceeds this */
    Zan8u motionCount;        /* 0: a block moves when more than this many samples differ */
    Zan8u edgeLimit;          /* 8: an edge sample has an edge map value above this */
    Zan8u blockWidth;         /* 4: block width in samples */
    Zan8u blockHeight;        /* 4: block height in rows */
    Zan8u edgeWeight;         /* 128: share of the unfiltered sample, of 256, at edge samples */
    Zan8u flatWeight;         /* 16: the same elsewhere */
    Zan8u neighbourLimitY;    /* 12: a neighbour joins the mean when it differs by less (luma) */
    Zan8u neighbourLimitUV;   /* 6: the same for chroma */
    Zan8u historyWeight;      /* 192: initial history value; the blend weight without history */
} ZanDenoiseCastParams;

/* Fills the record with the defaults.  Checks: pParams null
 * (zanStsNullPtr). */
ZanStatus zaniFilterDenoiseCASTInit(ZanDenoiseCastParams* pParams);

/* One plane (C1) or interleaved 4:2:2 (C2, size counts pixels).  pSrcPrev
 * null: no previous frame; pHistory null: no history; pParams null: the
 * defaults.  Checks, in order: pSrcCur, pEdgeMap or pDst null
 * (zanStsNullPtr); width or height below 1, and for C2 an odd width
 * (zanStsSizeBad).  Nothing is written on failure.  Reads exactly the
 * picture's samples of both frames and the edge map. */
ZanStatus zaniFilterDenoiseCAST_8u_C1R(const Zan8u* pSrcCur, const Zan8u* pSrcPrev, Zan32s srcStep,
                                       const Zan8u* pEdgeMap, Zan32s edgeStep, ZaniSize size, Zan8u* pDst,
                                       Zan32s dstStep, Zan8u* pHistory, const ZanDenoiseCastParams* pParams);
ZanStatus zaniFilterDenoiseCASTYUV422_8u_C2R(const Zan8u* pSrcCur, const Zan8u* pSrcPrev, Zan32s srcStep,
                                             const Zan8u* pEdgeMap, Zan32s edgeStep, ZaniSize size, Zan8u* pDst,
                                             Zan32s dstStep, Zan8u* pHistory,
                                             const ZanDenoiseCastParams* pParams);

/* ==== end of cast ==== */

/* ==== camera: camera resize, colour conversion and rotation ==== */

/* Camera pipeline tools on 4:2:2 interleaved pictures (each four bytes Cb,
 * Y, Cr, Y for two pixels).  Rotation codes, for a picture of ow by oh
 * pixels, the pixel at row i, column j going to:
 *   0: row i, column j;            1: row ow - 1 - j, column i;
 *   2: row j, column oh - 1 - i;   3: row oh - 1 - i, column ow - 1 - j.
 * For codes 1 and 2 the destination has oh columns and ow rows.  Steps are
 * not checked; zero and negative steps are legal. */

/* Shrinks by zoomFactor z (2, 4 or 8), converts to 16-bit RGB and rotates,
 * in one pass.  ow = width / z, oh = height / z; the rest of the source is
 * not read.  Output pixels go in pairs (2k, 2k + 1) with their source area
 * of z rows by 2z pixels at byte 4zk of the row group, and a single last
 * pixel when ow is odd.  avg(a, b) = (a + b + 1) >> 1.
 *   interpolation 1 (nearest): Y from byte 1 and 1 + 2z of the first row,
 *     shared Cb and Cr from bytes 0 and 2; a single pixel takes bytes 1, 0, 2.
 *   interpolation 2 (mean), a fixed tree of avg:
 *     z 2: Y = avg(avg(r0[1], r0[3]), avg(r1[1], r1[3])), second at 5, 7;
 *          Cb = avg(avg(r0[0], r1[0]), avg(r0[4], r1[4])), Cr at 2, 6.
 *     z 4: per row Y = avg(avg(b1, b5), avg(b3, b7)) (second: 9, 13, 11, 15),
 *          Cb = avg(avg(b0, b4), avg(b8, b12)), Cr at 2, 6, 10, 14; rows join
 *          as avg(avg(R0, R1), avg(R2, R3)).
 *     z 8: A(b) = avg(avg(avg(r0, r1), avg(r2, r3)), avg(avg(r4, r5),
 *          avg(r6, r7))); Y = avg(avg(avg(A1, A9), avg(A5, A13)),
 *          avg(avg(A3, A11), avg(A7, A15))), second at b + 16; Cb =
 *          avg(avg(avg(A0, A8), avg(A4, A12)), avg(avg(A16, A24), avg(A20,
 *          A28))), Cr at b + 2.
 *     single last pixel: z 2: Y as the first of a pair, Cb = avg(r0[0],
 *          r1[0]), Cr = avg(r0[2], r1[2]); z 4: per row Y = (b1 + b3 + b5 +
 *          b7 + 2) >> 2, Cb = avg(b0, b4), Cr = avg(b2, b6), rows joined as
 *          (sum of four + 2) >> 2; z 8: Y as the first of a pair, Cb =
 *          avg(avg(A0, A8), avg(A4, A12)), Cr the same at b + 2.
 * Colour, u = Cb - 128, v = Cr - 128, L = 1192 Y - 19072, arithmetic shifts:
 *   B = clamp((L + 2065 u) >> 13, 0, 31), R = clamp((L + 1634 v) >> 13, 0, 31),
 *   G = L - 401 u - 833 v, then >> 12 clamped to 0..63 for colorFormat 0
 *   (packed B | G << 5 | R << 11), else >> 13 clamped to 0..31 (packed
 *   B | G << 5 | R << 10, bit 15 zero).
 * dstStep is in bytes; the pixel step is dstStep / 2, truncating.
 * Checks, in order: pSrc or pDst null (zanStsNullPtr); width or height below
 * zoomFactor (zanStsSizeBad); zoomFactor not 2, 4 or 8
 * (zanStsResizeFactorBad); interpolation not 1 or 2
 * (zanStsInterpolationBad); rotation not 0..3 (zanStsBadArg).  Nothing is
 * written on failure.  After the work, an odd width or height returns
 * zanStsOddSize (35). */
ZanStatus zaniResizeCCRotate_8u_C2R(const Zan8u* pSrc, Zan32s srcStep, ZaniSize roiSize, Zan16u* pDst,
                                    Zan32s dstStep, Zan32s zoomFactor, Zan32s interpolation, Zan32s colorFormat,
                                    Zan32s rotation);

/* 4:2:2 to planar 4:2:0 with rotation.  w2, h2: width and height with bit 0
 * cleared (an odd last column or row is left out).  Each 2 by 2 block at even
 * (x, y) copies its four Y samples to their rotated places (ow = w2,
 * oh = h2); its chroma is the vertical average avg(row y, row y + 1) of the
 * pair's Cb and of its Cr, stored at the rotated place of (y / 2, x / 2)
 * with ow = w2 / 2, oh = h2 / 2.  pDst[0..2]: Y, Cb, Cr planes with their
 * dstStep.
 * C2P3R reads the interleaved source.  P3R reads pSrc[0] Cb, pSrc[1] Y,
 * pSrc[2] Cr (chroma half width, full height), and crosses the steps of its
 * first two planes on the second row of each pair: Y's row y is at
 * pSrc[1] + y * srcStep[1] and its row y + 1 at that plus srcStep[0]; Cb's
 * row y at pSrc[0] + y * srcStep[0] and row y + 1 at that plus srcStep[1];
 * Cr uses srcStep[2] for both.
 * Checks, in order: pSrc, pDst, the step arrays, then the destination
 * planes, then (P3R) the source planes null (zanStsNullPtr); width or height
 * below 2 (zanStsSizeBad).  A rotation outside 0..3 writes nothing and
 * returns what a valid call returns.  The result is zanStsOddSize (35) when
 * the width or height is odd, else zanStsOk. */
ZanStatus zaniCbYCr422ToYCbCr420_Rotate_8u_C2P3R(const Zan8u* pSrc, Zan32s srcStep, ZaniSize roiSize,
                                                 Zan8u* pDst[3], Zan32s dstStep[3], Zan32s rotation);
ZanStatus zaniCbYCr422ToYCbCr420_Rotate_8u_P3R(const Zan8u* pSrc[3], Zan32s srcStep[3], ZaniSize roiSize,
                                               Zan8u* pDst[3], Zan32s dstStep[3], Zan32s rotation);

/* ==== end of camera ==== */

/* ==== mosquito: mosquito noise filter ==== */

/* Mosquito noise filter: reduces the ringing that block coding leaves around
 * edges.  Per 8 by 8 block it classifies the block from a smoothed gradient
 * field and from the difference to the previous frame, then per sample
 * picks one of four small kernels or leaves the sample alone.
 *
 * Block grid, with (ox, oy) the region offset, (W, H) its size, (iw, ih)
 * the picture size: the first origin xs is 0 when ox is 0, -1 when ox is 1,
 * else -2; the last xe = W - 12, grown by p = 8 - (xe % 8) (truncating
 * remainder) when xe % 8 is not 0 and ox + W + p does not exceed iw; ys, ye
 * likewise.  Blocks lie at xs, xs + 8, ... up to xe (rows likewise); a
 * block reads the 12 by 12 area at its origin and filters the 8 by 8 at
 * (x + 2, y + 2).  Pass 1, in raster order: copy the areas of both frames;
 * changed = more than changedCountLimit samples of the inner 8 by 8 with
 * |cur - prev| above changedDifference; smooth the current copy in place
 * (column outermost, 1 2 1 / 2 4 2 / 1 2 1 >> 4 over the 10 by 10 interior);
 * per inner sample (column outermost) G = |Sobel x| + |Sobel y| of the
 * smoothed copy, counting edges (G above edgeGradient) and flat samples (G
 * below flatGradient) and tracking the maximum; the edge map entry of an
 * edge sample becomes 2, the entries above and left become 1 when 0, the
 * entries right and below become 1 when they lie inside the region; a
 * non-edge sample's entry becomes 0.  edgy = edges above edgeCountLimit,
 * strong = maximum above strongGradient, flat = flat samples above both
 * flatRatio * (64 - edges - flat samples) and flatCountLimit.  The record
 * index is x / 8 + ((y / 8) * W) / 8.
 * Pass 2, in raster order, with a running sum that starts at 0 once per
 * call and the record at x / 8 + (y / 8) * (W / 8): when that record is not
 * edgy, the strong values of the left, right, up-left, up and up-right
 * records (those inside the grid of W / 8 columns) join the sum, which
 * becomes its neighbourSum; the current frame's 12 by 12 area is copied to
 * the destination, cut at the region; when edgy or neighbourSum is non-zero
 * the block is filtered with its pass-1 record: the class map is built
 * and, per sample at least two inside the region's right and bottom edges, with a zero edge map entry: class 0 the 3 by 3
 * weighted mean (8 c + eight neighbours) >> 4; class 1 a median of seven
 * previous/current 3 by 3 part means (not edgy), of nine current 3 by 3
 * medians (changed) or of nine mixed current/previous medians; class 2 is
 * left alone.  Class map: all 0 when the block is not flat, else per sample
 * the sum D of |cur - prev| over the sample and its four direct neighbours
 * gives 2 above motionHigh, 1 above motionLow, and otherwise keeps its
 * previous entry.  Then the rows from the block row after the last to
 * H - 1 are copied from the current frame across the whole width, and the
 * columns right of the last block column's next origin for the rows above.
 * The class map and the edge map are not cleared between calls. */

/* Work record of the state: the block copies, the class map, the per-block
 * records and the edge map. */
typedef struct {
    Zan8u* pPrevBlock;  /* 12 x 12, row step 12 */
    Zan8u* pCurBlock;   /* 12 x 12, row step 12 */
    Zan8u* pClassMap;   /* 8 x 8, row step 8 */
    Zan32s* pBlockInfo; /* (W / 8 + 1) * (H / 8 + 1) records of five Zan32s:
                           changed, flat, edgy, strong, neighbourSum */
    Zan8u* pEdgeMap;    /* (W + 8) x (H + 8) */
    Zan32s edgeMapStep; /* W + 8 */
    Zan32s blockStep;   /* 12 */
} ZanDenoiseMosquitoWork;

/* The filter's state, one zeroed allocation: this control record, then the
 * work record and its areas. */
typedef struct {
    ZaniSize roiSize;        /* region size this state was made for */
    Zan32s blockWidth;       /* 8 */
    Zan32s blockHeight;      /* 8 */
    Zan32s edgeCountLimit;   /* 4: edgy when more samples than this are edges */
    Zan32s edgeGradient;     /* 12: gradient above which a sample is an edge */
    Zan32s strongGradient;   /* 16: block maximum above which the block is strong */
    Zan32s flatGradient;     /* 4: gradient below which a sample is flat */
    Zan32s unusedLimit;      /* 32: stored, not read */
    Zan32s flatRatio;        /* 1 */
    Zan32s flatCountLimit;   /* 32 */
    Zan32s motionHigh;       /* 20: five-point difference above which a sample is left alone */
    Zan32s changedCountLimit; /* 2 */
    Zan32s changedDifference; /* 16 */
    Zan32s motionLow;        /* 6: five-point difference above which the strong kernels run */
    ZanDenoiseMosquitoWork* pWork;
    void* pAllocated;        /* what the free function releases */
} ZanDenoiseMosquitoState;

/* Allocates and zeroes a state for regions of roiSize, with the defaults
 * above.  Checks, in order: ppState null (zanStsNullPtr); width or height
 * below 1 (zanStsSizeBad); allocation failing (zanStsNoMem). */
ZanStatus zaniFilterDenoiseMosquitoInitAlloc_8u_C1(ZanDenoiseMosquitoState** ppState, ZaniSize roiSize);

/* Frees a state.  Checks: pState or its pAllocated null (zanStsNullPtr). */
ZanStatus zaniFilterDenoiseMosquitoFree_8u_C1(ZanDenoiseMosquitoState* pState);

/* Filters the region at roiOffset of size roiSize of a picture of imgSize;
 * pSrc[0] is the previous frame, pSrc[1] the current one; they and pDst
 * point to the picture's origin and share nothing.  The destination receives
 * the whole region.  Checks, in order: pState or pState->pWork null
 * (zanStsNullPtr); the state's width or height below 1, the region beyond
 * the picture (a negative offset, or offset plus size above imgSize), or
 * roiSize different from the state's (zanStsSizeBad); a region too small for
 * one block, that is xe below xs or ye below ys, so that no block origin
 * fits (zanStsErr); a 12 by 12 region at (0, 0) takes one block.  pSrc and pDst are not
 * checked.  Reads the region, up to two samples before it where the offset
 * allows, and up to 7 samples after it where the picture allows. */
ZanStatus zaniFilterDenoiseMosquito_8u_C1R(const Zan8u* pSrc[2], Zan32s srcStep, Zan8u* pDst, Zan32s dstStep,
                                           ZaniSize imgSize, ZanDenoiseMosquitoState* pState, ZaniPoint roiOffset,
                                           ZaniSize roiSize);

/* ==== end of mosquito ==== */

#ifdef __cplusplus
}
#endif

#endif /* ZANVC_H */
