// AVS macroblock reconstruction: the intra predictors of 8x8 blocks and the
// exported luma and chroma reconstruction of intra and inter macroblocks.
//
// The predictors are scalar: each writes one 8x8 block once per call and
// the work is dominated by the inverse transform that follows.
#include <cstddef>

#include "avs/avs_tables.h"
#include "avs/avsblock.h"
#include "common/path.h"
#include "frame/bodies.h"

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
// sample; none: 128.
Zan32s predict_dc(Zan8u* p, Zan32s step, Zan32u edge) {
    const bool above = !(edge & kAbove), left = !(edge & kLeft);
    if (!above && !left) {
        fill(p, step, 128);
        return 1;
    }
    const Neighbours n = gather(p, step, edge);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            Zan32s v;
            if (above && left)
                v = (lp(n.r, x + 1) + lp(n.c, y + 1)) >> 1;
            else if (above)
                v = lp(n.r, x + 1);
            else
                v = lp(n.c, y + 1);
            *at(p, step, y, x) = static_cast<Zan8u>(v);
        }
    return 1;
}

// (lp(r, x + y + 2) + lp(c, x + y + 2)) >> 1.
Zan32s predict_down_left(Zan8u* p, Zan32s step, Zan32u edge) {
    if (edge & (kAbove | kLeft)) return 0;
    const Neighbours n = gather(p, step, edge);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x)
            *at(p, step, y, x) = static_cast<Zan8u>((lp(n.r, x + y + 2) + lp(n.c, x + y + 2)) >> 1);
    return 1;
}

// x > y: lp(r, x - y); x < y: lp(c, y - x); x == y: (r[1] + 2 r[0] + c[1] + 2) >> 2.
Zan32s predict_down_right(Zan8u* p, Zan32s step, Zan32u edge) {
    if (edge & (kAbove | kLeft)) return 0;
    const Neighbours n = gather(p, step, edge);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            Zan32s v;
            if (x > y)
                v = lp(n.r, x - y);
            else if (x < y)
                v = lp(n.c, y - x);
            else
                v = (n.r[1] + 2 * n.r[0] + n.c[1] + 2) >> 2;
            *at(p, step, y, x) = static_cast<Zan8u>(v);
        }
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

}  // namespace zan::ZAN_PATH
