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
