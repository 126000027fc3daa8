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

#ifdef __cplusplus
}
#endif

#endif /* ZANVC_H */
