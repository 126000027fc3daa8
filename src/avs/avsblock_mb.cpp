// AVS macroblock reconstruction: the intra predictors of 8x8 blocks, the
// exported luma and chroma reconstruction of intra and inter macroblocks,
// and the encoder-side passes (mode decision, transform-quantise,
// reconstruction) for intra luma and 4:2:0 chroma.
//
// The predictors are scalar: each writes one 8x8 block once per call and
// the work is dominated by the transforms around them.  The encoder-side
// passes call the vector kernels of the difference with SAD, the forward
// transform and quantiser, and the one-block reconstruction; their own code
// is the decision, with no loop worth a kernel.
#include <cstddef>
#include <cstring>

#include "avs/avs_tables.h"
#include "avs/avsblock.h"
#include "common/path.h"
#include "frame/bodies.h"
#include "zanvc.h"

namespace zan::ZAN_PATH::avsblock {
namespace {

// Edge word bits, set when the neighbour is absent.
constexpr Zan32u kLeft = 1, kAbove = 4, kAboveRight = 32, kBelowLeft = 64;

inline Zan8u* at(Zan8u* p, Zan32s step, Zan32s y, Zan32s x) { return p + static_cast<std::ptrdiff_t>(step) * y + x; }

// The neighbours of a block: r[0] the corner, r[1..8] above, r[9..16]
// above right, r[17] = r[16]; c[0] the corner, c[1..8] left, c[9..16]
// below left, c[17] = c[16].  The corner is the above-left sample when the
// left neighbour is present, otherwise the first sample above.  Absent above
// right repeats r[8]; absent below left repeats c[8].  Only the sides that
// are present are read.
struct Neighbours {
    Zan32s r[18];
    Zan32s c[18];
};

Neighbours gather(Zan8u* p, Zan32s step, Zan32u edge) {
    Neighbours n{};
    const bool above = !(edge & kAbove), left = !(edge & kLeft);
    if (above) {
        for (int x = 0; x < 8; ++x) n.r[1 + x] = *at(p, step, -1, x);
        for (int x = 0; x < 8; ++x) n.r[9 + x] = (edge & kAboveRight) ? n.r[8] : *at(p, step, -1, 8 + x);
        n.r[17] = n.r[16];
    }
    if (left) {
        for (int y = 0; y < 8; ++y) n.c[1 + y] = *at(p, step, y, -1);
        for (int y = 0; y < 8; ++y) n.c[9 + y] = (edge & kBelowLeft) ? n.c[8] : *at(p, step, 8 + y, -1);
        n.c[17] = n.c[16];
    }
    const Zan32s corner = left ? *at(p, step, -1, -1) : n.r[1];
    n.r[0] = corner;
    n.c[0] = corner;
    return n;
}

// Three-tap smoothing of a neighbour line at index i (1..16).
inline Zan32s lp(const Zan32s* a, int i) { return (a[i - 1] + 2 * a[i] + a[i + 1] + 2) >> 2; }

void fill(Zan8u* p, Zan32s step, Zan32s v) {
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) *at(p, step, y, x) = static_cast<Zan8u>(v);
}

using PredictFn = Zan32s (*)(Zan8u* p, Zan32s step, Zan32u edge);

// pred[y][x] = the sample above column x.
Zan32s predict_vertical(Zan8u* p, Zan32s step, Zan32u edge) {
    if (edge & kAbove) return 0;
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) *at(p, step, y, x) = *at(p, step, -1, x);
    return 1;
}

// pred[y][x] = the sample left of row y.
Zan32s predict_horizontal(Zan8u* p, Zan32s step, Zan32u edge) {
    if (edge & kLeft) return 0;
    for (int y = 0; y < 8; ++y) {
        const Zan8u v = *at(p, step, y, -1);
        for (int x = 0; x < 8; ++x) *at(p, step, y, x) = v;
    }
    return 1;
}

// Both sides: (lp(r, x + 1) + lp(c, y + 1)) >> 1; one side: its smoothed
// sample; none: 128.  The smoothed lines are made once, then the rows.
Zan32s predict_dc(Zan8u* p, Zan32s step, Zan32u edge) {
    const bool above = !(edge & kAbove), left = !(edge & kLeft);
    if (!above && !left) {
        fill(p, step, 128);
        return 1;
    }
    const Neighbours n = gather(p, step, edge);
    Zan32s top[8], side[8];
    for (int i = 0; i < 8; ++i) {
        top[i] = above ? lp(n.r, i + 1) : 0;
        side[i] = left ? lp(n.c, i + 1) : 0;
    }
    for (int y = 0; y < 8; ++y) {
        Zan8u row[8];
        for (int x = 0; x < 8; ++x)
            row[x] = static_cast<Zan8u>(above && left ? (top[x] + side[y]) >> 1 : (above ? top[x] : side[y]));
        std::memcpy(at(p, step, y, 0), row, 8);
    }
    return 1;
}

// (lp(r, x + y + 2) + lp(c, x + y + 2)) >> 1: one line of 15 values
// d[i] = (lp(r, i + 2) + lp(c, i + 2)) >> 1, row y being d[y .. y + 7].
Zan32s predict_down_left(Zan8u* p, Zan32s step, Zan32u edge) {
    if (edge & (kAbove | kLeft)) return 0;
    const Neighbours n = gather(p, step, edge);
    Zan8u d[15];
    for (int i = 0; i < 15; ++i) d[i] = static_cast<Zan8u>((lp(n.r, i + 2) + lp(n.c, i + 2)) >> 1);
    for (int y = 0; y < 8; ++y) std::memcpy(at(p, step, y, 0), d + y, 8);
    return 1;
}

// x > y: lp(r, x - y); x < y: lp(c, y - x); x == y: (r[1] + 2 r[0] + c[1] +
// 2) >> 2.  One line of 15 values by x - y (index 7 + x - y), row y being
// line[7 - y .. 14 - y].
Zan32s predict_down_right(Zan8u* p, Zan32s step, Zan32u edge) {
    if (edge & (kAbove | kLeft)) return 0;
    const Neighbours n = gather(p, step, edge);
    Zan8u line[15];
    for (int d = 1; d < 8; ++d) {
        line[7 + d] = static_cast<Zan8u>(lp(n.r, d));
        line[7 - d] = static_cast<Zan8u>(lp(n.c, d));
    }
    line[7] = static_cast<Zan8u>((n.r[1] + 2 * n.r[0] + n.c[1] + 2) >> 2);
    for (int y = 0; y < 8; ++y) std::memcpy(at(p, step, y, 0), line + 7 - y, 8);
    return 1;
}

// Plane: ih = sum (i + 1)(r[5 + i] - r[3 - i]), iv likewise on c, i = 0..3;
// a = (r[8] + c[8]) << 4, b = (17 ih + 16) >> 5, c = (17 iv + 16) >> 5;
// pred = clamp((a + (x - 3) b + (y - 3) c + 16) >> 5).
Zan32s predict_plane(Zan8u* p, Zan32s step, Zan32u edge) {
    if (edge & (kAbove | kLeft)) return 0;
    const Neighbours n = gather(p, step, edge);
    Zan32s ih = 0, iv = 0;
    for (int i = 0; i < 4; ++i) {
        ih += (i + 1) * (n.r[5 + i] - n.r[3 - i]);
        iv += (i + 1) * (n.c[5 + i] - n.c[3 - i]);
    }
    const Zan32s a = (n.r[8] + n.c[8]) << 4, b = (17 * ih + 16) >> 5, c = (17 * iv + 16) >> 5;
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            const Zan32s v = (a + (x - 3) * b + (y - 3) * c + 16) >> 5;
            *at(p, step, y, x) = static_cast<Zan8u>(v < 0 ? 0 : (v > 255 ? 255 : v));
        }
    return 1;
}

// 128 everywhere.
Zan32s predict_fill(Zan8u* p, Zan32s step, Zan32u) {
    fill(p, step, 128);
    return 1;
}

const PredictFn intra_luma_pred[8] = {predict_vertical,   predict_horizontal, predict_dc,   predict_down_left,
                                      predict_down_right, predict_fill,       predict_fill, predict_fill};
const PredictFn intra_chroma_pred[4] = {predict_dc, predict_horizontal, predict_vertical, predict_plane};

// The edge word of luma block b from the macroblock's.
Zan32u luma_block_edge(Zan32u edge, Zan32s b) {
    switch (b) {
        case 0: return edge & ~kAboveRight;
        case 1: return (edge & ~kLeft) | kBelowLeft;
        case 2: return (edge & kLeft) + kBelowLeft;
        default: return kAboveRight | kBelowLeft;
    }
}

inline Zan8u* luma_block(Zan8u* p, Zan32s step, Zan32s b) { return at(p, step, (b >> 1) * 8, (b & 1) * 8); }

}  // namespace
}  // namespace zan::ZAN_PATH::avsblock

namespace zan::ZAN_PATH {

namespace ab = avsblock;

ZanStatus zaniReconstructLumaIntra_AVS_16s8u_C1R(Zan16s** ppSrcDstCoeff, Zan8u* pDst, Zan32s dstStep,
                                                 const Zan32s* pPredModes, const Zan32s* pNumCoeff, Zan32u cbp,
                                                 Zan32s QP, Zan32u edgeType) {
    if (!ppSrcDstCoeff || !pDst || !pPredModes || !pNumCoeff || !*ppSrcDstCoeff) return zanStsNullPtr;
    if (static_cast<Zan32u>(QP) > 63) return zanStsOutOfRange;
    Zan16s* c = *ppSrcDstCoeff;
    for (Zan32s b = 0; b < 4; ++b) {
        Zan8u* blk = ab::luma_block(pDst, dstStep, b);
        ab::intra_luma_pred[pPredModes[b] & 7](blk, dstStep, ab::luma_block_edge(edgeType, b));
        if (cbp & (1u << b)) {
            zaniTransformQuantAdd8x8Inv_AVS_16s_C1(c, blk, dstStep, pNumCoeff[b], QP);
            c += 64;
        }
    }
    *ppSrcDstCoeff = c;
    return zanStsOk;
}

ZanStatus zaniReconstructLumaInter_AVS_16s8u_C1R(Zan16s** ppSrcDstCoeff, Zan8u* pDst, Zan32s dstStep,
                                                 const Zan32s* pNumCoeff, Zan32u cbp, Zan32s QP) {
    if (!ppSrcDstCoeff || !pDst || !pNumCoeff || !*ppSrcDstCoeff) return zanStsNullPtr;
    if (static_cast<Zan32u>(QP) > 63) return zanStsOutOfRange;
    Zan16s* c = *ppSrcDstCoeff;
    for (Zan32s b = 0; b < 4; ++b) {
        if (cbp & (1u << b)) {
            zaniTransformQuantAdd8x8Inv_AVS_16s_C1(c, ab::luma_block(pDst, dstStep, b), dstStep, pNumCoeff[b], QP);
            c += 64;
        }
    }
    *ppSrcDstCoeff = c;
    return zanStsOk;
}

ZanStatus zaniReconstructChromaIntra_AVS_16s8u_C1R(Zan16s** ppSrcDstCoeff, Zan8u* pDstU, Zan8u* pDstV,
                                                   Zan32s dstStep, Zan32s predMode, const Zan32s* pNumCoeff,
                                                   Zan32u cbp, Zan32s QP, Zan32u edgeType) {
    if (!ppSrcDstCoeff || !pDstU || !pDstV || !pNumCoeff || !*ppSrcDstCoeff) return zanStsNullPtr;
    if (static_cast<Zan32u>(QP) > 51) return zanStsOutOfRange;
    Zan16s* c = *ppSrcDstCoeff;
    const Zan32u edge = edgeType | ab::kBelowLeft;
    Zan8u* planes[2] = {pDstU, pDstV};
    for (Zan32s k = 0; k < 2; ++k) {
        ab::intra_chroma_pred[predMode & 3](planes[k], dstStep, edge);
        if (cbp & (1u << k)) {
            zaniTransformQuantAdd8x8Inv_AVS_16s_C1(c, planes[k], dstStep, pNumCoeff[k], QP);
            c += 64;
        }
    }
    *ppSrcDstCoeff = c;
    return zanStsOk;
}

ZanStatus zaniReconstructChromaInter_AVS_16s8u_C1R(Zan16s** ppSrcDstCoeff, Zan8u* pDstU, Zan8u* pDstV,
                                                   Zan32s dstStep, const Zan32s* pNumCoeff, Zan32u cbp, Zan32s QP) {
    if (!ppSrcDstCoeff || !pDstU || !pDstV || !pNumCoeff || !*ppSrcDstCoeff) return zanStsNullPtr;
    if (static_cast<Zan32u>(QP) > 51) return zanStsOutOfRange;
    Zan16s* c = *ppSrcDstCoeff;
    Zan8u* planes[2] = {pDstU, pDstV};
    for (Zan32s k = 0; k < 2; ++k) {
        if (cbp & (1u << k)) {
            zaniTransformQuantAdd8x8Inv_AVS_16s_C1(c, planes[k], dstStep, pNumCoeff[k], QP);
            c += 64;
        }
    }
    *ppSrcDstCoeff = c;
    return zanStsOk;
}

// ------------------------------------------------------- encoder side

namespace {

// One block of the encoder side after its mode is known: predict again,
// residual into c, transform and quantise in place (intra), and when a
// level survives, reconstruct into blk.  Returns the zig-zag count.
Zan32s code_block(const Zan8u* src, Zan32s srcStep, Zan8u* blk, Zan32s dstStep, Zan16s* c,
                  ab::PredictFn predict, Zan32u edge, Zan32s QP) {
    predict(blk, dstStep, edge);
    zaniSubSAD8x8_8u16s_C1R(src, srcStep, blk, dstStep, c, 16, nullptr);
    Zan32s num = 0;
    zaniTransformQuant8x8Fwd_AVS_16s_C1(c, c, &num, QP, 1);
    if (num != 0) zaniTransformQuantAdd8x8Inv_AVS_16s_C1(c, blk, dstStep, num, QP);
    return num;
}

}  // namespace

ZanStatus zaniDisassembleLumaIntra_AVS_16s8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep,
                                                 Zan16s** ppDstCoeff, Zan32s* pPredModes, Zan32u* pCbp, Zan32s QP,
                                                 Zan32u edgeType) {
    if (!pSrc || !pDst || !ppDstCoeff || !pPredModes || !pCbp || !*ppDstCoeff) return zanStsNullPtr;
    if (static_cast<Zan32u>(QP) > 63) return zanStsOutOfRange;
    Zan16s* c = *ppDstCoeff;
    Zan32u cbp = 0;
    for (Zan32s b = 0; b < 4; ++b) {
        Zan8u* blk = ab::luma_block(pDst, dstStep, b);
        const Zan8u* src = pSrc + static_cast<std::ptrdiff_t>(srcStep) * ((b >> 1) * 8) + (b & 1) * 8;
        const Zan32u edge = ab::luma_block_edge(edgeType, b);
        Zan32s best = 2;
        Zan32u bestSad = 0xFFFFFFFFu;
        for (Zan32s mode = 0; mode < 5; ++mode) {
            if (!ab::intra_luma_pred[mode](blk, dstStep, edge)) continue;
            Zan32s sad = 0;
            zaniSubSAD8x8_8u16s_C1R(src, srcStep, blk, dstStep, c, 16, &sad);
            if (static_cast<Zan32u>(sad) < bestSad) {
                bestSad = static_cast<Zan32u>(sad);
                best = mode;
            }
        }
        pPredModes[b] = best;
        if (code_block(src, srcStep, blk, dstStep, c, ab::intra_luma_pred[best], edge, QP) != 0) {
            cbp |= 1u << b;
            c += 64;
        }
    }
    *pCbp = cbp;
    *ppDstCoeff = c;
    return zanStsOk;
}

ZanStatus zaniDisassembleChroma420Intra_AVS_16s8u_C1R(const Zan8u* pSrc[2], Zan32s srcStep, Zan8u* pDst[2],
                                                      Zan32s dstStep, Zan16s** ppDstCoeff, Zan32s* pPredMode,
                                                      Zan32u* pCbp, Zan32s QP, Zan32u edgeType) {
    if (!pSrc || !pDst || !ppDstCoeff || !pPredMode || !pCbp) return zanStsNullPtr;
    if (!pSrc[0] || !pSrc[1] || !pDst[0] || !pDst[1] || !*ppDstCoeff) return zanStsNullPtr;
    if (static_cast<Zan32u>(QP) > 51) return zanStsOutOfRange;
    Zan16s* c = *ppDstCoeff;
    const Zan32u edge = edgeType | ab::kBelowLeft;
    Zan32s best = 0;
    Zan32u bestSad = 0xFFFFFFFFu;
    for (Zan32s mode = 0; mode < 4; ++mode) {
        Zan32u sum = 0;
        bool ran = true;
        for (Zan32s k = 0; k < 2 && ran; ++k) {
            ran = ab::intra_chroma_pred[mode](pDst[k], dstStep, edge) != 0;
            Zan32s sad = 0;
            if (ran) zaniSubSAD8x8_8u16s_C1R(pSrc[k], srcStep, pDst[k], dstStep, c + 64 * k, 16, &sad);
            sum += static_cast<Zan32u>(sad);
        }
        if (ran && sum < bestSad) {
            bestSad = sum;
            best = mode;
        }
    }
    *pPredMode = best;
    Zan32u cbp = 0;
    for (Zan32s k = 0; k < 2; ++k) {
        if (code_block(pSrc[k], srcStep, pDst[k], dstStep, c, ab::intra_chroma_pred[best], edge, QP) != 0) {
            cbp |= 1u << k;
            c += 64;
        }
    }
    *pCbp = cbp;
    *ppDstCoeff = c;
    return zanStsOk;
}

}  // namespace zan::ZAN_PATH
