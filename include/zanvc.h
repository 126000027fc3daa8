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

/* ==== end of mpeg12 ==== */

/* ==== h264inv: H.264 inverse transforms and dequantisation ==== */

/* ==== end of h264inv ==== */

/* ==== h264intra: H.264 intra prediction ==== */

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

ZanStatus zaniFilterDeblockingLuma_VerEdge_H264_8u_C1IR(Zan8u* pSrcDst, Zan32s srcDstStep, const Zan8u* pAlpha,
                                                        const Zan8u* pBeta, const Zan8u* pThresholds,
                                                        const Zan8u* pBS);
ZanStatus zaniFilterDeblockingLuma_HorEdge_H264_8u_C1IR(Zan8u* pSrcDst, Zan32s srcDstStep, const Zan8u* pAlpha,
                                                        const Zan8u* pBeta, const Zan8u* pThresholds,
                                                        const Zan8u* pBS);
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
ZanStatus zaniFilterDeblockingChroma_VerEdge_H264_8u_C2I(const ZanDeblockingRecord* pDeblockInfo);
ZanStatus zaniFilterDeblockingChroma_HorEdge_H264_8u_C2I(const ZanDeblockingRecord* pDeblockInfo);
ZanStatus zaniFilterDeblockingChroma422VerEdge_H264_8u_C1IR(const ZanDeblockingRecord* pDeblockInfo);
ZanStatus zaniFilterDeblockingChroma422HorEdge_H264_8u_C1IR(const ZanDeblockingRecord* pDeblockInfo);
ZanStatus zaniFilterDeblockingChroma422VerEdge_H264_16u_C1IR(const ZanDeblockingRecord* pDeblockInfo);
ZanStatus zaniFilterDeblockingChroma422HorEdge_H264_16u_C1IR(const ZanDeblockingRecord* pDeblockInfo);
ZanStatus zaniFilterDeblockingLumaVerEdge_H264_16u_C1IR(const ZanDeblockingRecord* pDeblockInfo);
ZanStatus zaniFilterDeblockingLumaHorEdge_H264_16u_C1IR(const ZanDeblockingRecord* pDeblockInfo);
ZanStatus zaniFilterDeblockingChromaVerEdge_H264_16u_C1IR(const ZanDeblockingRecord* pDeblockInfo);
ZanStatus zaniFilterDeblockingChromaHorEdge_H264_16u_C1IR(const ZanDeblockingRecord* pDeblockInfo);
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

/* ==== end of h264fwd ==== */

/* ==== vc1xform: VC-1 transforms and quantisation ==== */

/* ==== end of vc1xform ==== */

/* ==== coefdec: H.261, H.263 and MPEG-4 coefficient decoding ==== */

/* ==== end of coefdec ==== */

/* ==== coefenc: H.261, H.263 and MPEG-4 coefficient encoding ==== */

/* ==== end of coefenc ==== */

/* ==== cavlcdec: H.264 CAVLC and Exp-Golomb decoding ==== */

/* ==== end of cavlcdec ==== */

/* ==== h264weight: H.264 weighted prediction ==== */

/* ==== end of h264weight ==== */

/* ==== h264interp: H.264 interpolation and picture boundaries ==== */

/* ==== end of h264interp ==== */

#ifdef __cplusplus
}
#endif

#endif /* ZANVC_H */
