// Mosquito noise filter.  Pass 1 classifies every 8 by 8 block from a
// smoothed gradient field and from the difference to the previous frame,
// and marks edge samples in the state's edge map; pass 2 copies each block's
// area to the destination and, where the block or its neighbourhood holds
// edges, filters its samples with one of four small kernels chosen by the
// block's class map.  Everything works on 12 by 12 copies of the two frames
// at row step 12.
//
// The per-block frame-difference count has an SSE2 kernel beside its rule;
// the rest is scalar work on the small copies, shared by both whole-call
// forms of the catalogue.
#include "picture/mosquito.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "common/scalar.h"
#include "common/simd.h"
#include "frame/bodies.h"
#include "support/support.h"

namespace zan::ZAN_PATH::mosquito {
namespace {

using namespace zan::mosquito;
using scalar::absdiff;

constexpr Zan32s kB = 12;  // row step of the block copies

// The block grid of a call.
struct Grid {
    Zan32s xs, xe, ys, ye;
};

Zan32s first_origin(Zan32s offset) { return offset == 0 ? 0 : offset == 1 ? -1 : -2; }

Zan32s last_origin(Zan32s offset, Zan32s size, Zan32s picture) {
    Zan32s e = size - 12;
    if (e % 8 != 0) {
        const Zan32s p = 8 - e % 8;
        if (static_cast<std::int64_t>(offset) + size + p <= picture) e += p;
    }
    return e;
}

// Per-block record fields.
enum { kChanged = 0, kFlat = 1, kEdgy = 2, kStrong = 3, kNeighbourSum = 4, kFields = 5 };

// ============================================================ scalar rules

Zan32s count_rule(const Zan8u* cur, const Zan8u* prev, Zan32s limit) {
    Zan32s n = 0;
    for (Zan32s r = 2; r < 10; ++r)
        for (Zan32s c = 2; c < 10; ++c) n += absdiff(cur[r * kB + c], prev[r * kB + c]) > limit ? 1 : 0;
    return n;
}

// In-place 1 2 1 smoothing of the 10 by 10 interior, column outermost.
void smooth(Zan8u* b) {
    for (Zan32s i = 0; i < 10; ++i)
        for (Zan32s j = 0; j < 10; ++j) {
            const Zan8u* t = b + j * kB + i;
            const Zan8u* m = t + kB;
            const Zan8u* d = m + kB;
            b[(j + 1) * kB + i + 1] = static_cast<Zan8u>(
                (t[0] + 2 * t[1] + t[2] + 2 * m[0] + 4 * m[1] + 2 * m[2] + d[0] + 2 * d[1] + d[2]) >> 4);
        }
}

Zan8u median(Zan8u* v, int n) {
    std::sort(v, v + n);
    return v[n / 2];
}

// Median of the 3 by 3 around (r, c) of a block copy.
Zan8u median9(const Zan8u* b, Zan32s r, Zan32s c) {
    Zan8u v[9];
    int n = 0;
    for (Zan32s dr = -1; dr <= 1; ++dr)
        for (Zan32s dc = -1; dc <= 1; ++dc) v[n++] = b[(r + dr) * kB + c + dc];
    return median(v, 9);
}

// Mean of the 3 by 3 around (r, c) without its bottom-right corner.
Zan8u mean8(const Zan8u* b, Zan32s r, Zan32s c) {
    Zan32s s = 0;
    for (Zan32s dr = -1; dr <= 1; ++dr)
        for (Zan32s dc = -1; dc <= 1; ++dc) s += b[(r + dr) * kB + c + dc];
    return static_cast<Zan8u>((s - b[(r + 1) * kB + c + 1]) >> 3);
}

Zan8u filter_adaptive(const Zan8u* cur, Zan32s r, Zan32s c) {
    Zan32s s = 8 * cur[r * kB + c];
    for (Zan32s dr = -1; dr <= 1; ++dr)
        for (Zan32s dc = -1; dc <= 1; ++dc)
            if (dr || dc) s += cur[(r + dr) * kB + c + dc];
    return static_cast<Zan8u>(s >> 4);
}

Zan8u filter_sdlm9(const Zan8u* cur, Zan32s r, Zan32s c) {
    Zan8u v[9];
    int n = 0;
    for (Zan32s dr = -1; dr <= 1; ++dr)
        for (Zan32s dc = -1; dc <= 1; ++dc) v[n++] = median9(cur, r + dr, c + dc);
    return median(v, 9);
}

Zan8u filter_sdlm9x(const Zan8u* cur, const Zan8u* prev, Zan32s r, Zan32s c) {
    Zan8u v[9] = {median9(cur, r - 1, c - 1), median9(cur, r - 1, c + 1), median9(cur, r, c),
                  median9(cur, r + 1, c - 1), median9(cur, r + 1, c + 1), median9(prev, r - 1, c - 1),
                  median9(prev, r - 1, c + 1), median9(prev, r, c - 1),    median9(prev, r, c)};
    return median(v, 9);
}

Zan8u filter_stdl7x_mean(const Zan8u* cur, const Zan8u* prev, Zan32s r, Zan32s c) {
    Zan8u v[7] = {mean8(cur, r - 1, c - 1), mean8(cur, r - 1, c + 1), mean8(cur, r, c),    mean8(cur, r + 1, c - 1),
                  mean8(cur, r + 1, c + 1), mean8(prev, r, c - 1),    mean8(prev, r, c)};
    return median(v, 7);
}

// ========================================================== vector kernel

Zan32s count_sse2(const Zan8u* cur, const Zan8u* prev, Zan32s limit) {
    using namespace zan::ZAN_PATH::simd;
    // |d| <= 255 exceeds limit for every sample when limit < 0 and for none
    // when limit >= 255; clamped, the 16-bit compare gives the same answer.
    const __m128i lim = _mm_set1_epi16(static_cast<short>(std::clamp(limit, -1, 255)));
    const __m128i zero = _mm_setzero_si128();
    __m128i n = zero;
    for (Zan32s r = 2; r < 10; ++r) {
        const __m128i a = _mm_unpacklo_epi8(load8(cur + r * kB + 2), zero);
        const __m128i b = _mm_unpacklo_epi8(load8(prev + r * kB + 2), zero);
        n = _mm_sub_epi16(n, _mm_cmpgt_epi16(absdiff_u16(a, b), lim));
    }
    n = _mm_madd_epi16(n, _mm_set1_epi16(1));
    return hsum_epi32(n);
}

// ======================================================= the whole call

Grid grid_of(ZaniSize img, ZaniPoint off, ZaniSize roi) {
    return {first_origin(off.x), last_origin(off.x, roi.width, img.width), first_origin(off.y),
            last_origin(off.y, roi.height, img.height)};
}

void copy_area(const Zan8u* base, Zan32s step, Zan32s x, Zan32s y, Zan8u* to) {
    zaniCopy_8u_C1R(base + static_cast<ptrdiff_t>(step) * y + x, step, to, kB, ZaniSize{kB, kB});
}

// Copies columns [x0, x1) of rows [y0, y1) of the region, when not empty.
void copy_rect(const Zan8u* src, Zan32s srcStep, Zan8u* dst, Zan32s dstStep, Zan32s x0, Zan32s y0, Zan32s x1,
               Zan32s y1) {
    if (x1 <= x0 || y1 <= y0) return;
    zaniCopy_8u_C1R(src + static_cast<ptrdiff_t>(srcStep) * y0 + x0, srcStep,
                    dst + static_cast<ptrdiff_t>(dstStep) * y0 + x0, dstStep, ZaniSize{x1 - x0, y1 - y0});
}

// Pass 1 on the block at (x, y): its record and its part of the edge map.
template <CountFn Count>
void analyse(const ZanDenoiseMosquitoState& s, Zan32s x, Zan32s y, Zan32s W, Zan32s H) {
    ZanDenoiseMosquitoWork& w = *s.pWork;
    Zan8u* cur = w.pCurBlock;
    Zan32s* rec = w.pBlockInfo + kFields * (x / 8 + ((y / 8) * W) / 8);
    rec[kChanged] = Count(cur, w.pPrevBlock, s.changedDifference) > s.changedCountLimit ? 1 : 0;
    smooth(cur);
    Zan32s maxG = 0, flat = 0, edges = 0;
    const Zan32s ms = w.edgeMapStep;
    for (Zan32s i = 0; i < 8; ++i)
        for (Zan32s j = 0; j < 8; ++j) {
            const Zan8u* t = cur + (j + 1) * kB + i + 1;
            const Zan8u* m = t + kB;
            const Zan8u* d = m + kB;
            const Zan32s sx = -t[0] + t[2] - 2 * m[0] + 2 * m[2] - d[0] + d[2];
            const Zan32s sy = -t[0] - 2 * t[1] - t[2] + d[0] + 2 * d[1] + d[2];
            const Zan32s g = (sx < 0 ? -sx : sx) + (sy < 0 ? -sy : sy);
            maxG = std::max(maxG, g);
            if (g < s.flatGradient) ++flat;
            Zan8u* e = w.pEdgeMap + static_cast<ptrdiff_t>(ms) * (y + j + 4) + (x + i + 4);
            if (g > s.edgeGradient) {
                ++edges;
                e[0] = 2;
                if (e[-ms] == 0) e[-ms] = 1;
                if (e[-1] == 0) e[-1] = 1;
                if (x + 2 + i + 1 < W) e[1] = 1;
                if (y + 2 + j + 1 < H) e[ms] = 1;
            } else {
                e[0] = 0;
            }
        }
    rec[kEdgy] = edges > s.edgeCountLimit ? 1 : 0;
    rec[kStrong] = maxG > s.strongGradient ? 1 : 0;
    rec[kFlat] = flat <= s.flatRatio * (64 - edges - flat) || flat <= s.flatCountLimit ? 0 : 1;
}

// Filters the block at (x, y) into the destination region, with its pass-1
// record.
void filter_block(const ZanDenoiseMosquitoState& s, Zan32s x, Zan32s y, Zan32s W, Zan32s H, Zan8u* dst,
                  Zan32s dstStep) {
    const ZanDenoiseMosquitoWork& w = *s.pWork;
    const Zan8u* cur = w.pCurBlock;
    const Zan8u* prev = w.pPrevBlock;
    const Zan32s* rec = w.pBlockInfo + kFields * (x / 8 + ((y / 8) * W) / 8);
    Zan8u* cm = w.pClassMap;
    if (rec[kFlat] == 0) {
        std::memset(cm, 0, 64);
    } else {
        auto e = [&](Zan32s r, Zan32s c) { return absdiff(cur[r * kB + c], prev[r * kB + c]); };
        for (Zan32s i = 0; i < 8; ++i)
            for (Zan32s j = 0; j < 8; ++j) {
                const Zan32s r = j + 2, c = i + 2;
                const Zan32s d = e(r, c) + e(r - 1, c) + e(r + 1, c) + e(r, c - 1) + e(r, c + 1);
                if (d > s.motionHigh)
                    cm[j * 8 + i] = 2;
                else if (d > s.motionLow)
                    cm[j * 8 + i] = 1;
            }
    }
    const Zan32s ms = w.edgeMapStep;
    for (Zan32s i = 0; i < 8; ++i)
        for (Zan32s j = 0; j < 8; ++j) {
            if (x + 2 + i + 2 >= W || y + 2 + j + 2 >= H) continue;
            if (w.pEdgeMap[static_cast<ptrdiff_t>(ms) * (y + j + 4) + (x + i + 4)] != 0) continue;
            const Zan32s r = j + 2, c = i + 2;
            Zan8u v;
            switch (cm[j * 8 + i]) {
                case 0: v = filter_adaptive(cur, r, c); break;
                case 1:
                    v = rec[kEdgy] == 0      ? filter_stdl7x_mean(cur, prev, r, c)
                        : rec[kChanged] != 0 ? filter_sdlm9(cur, r, c)
                                             : filter_sdlm9x(cur, prev, r, c);
                    break;
                default: continue;
            }
            dst[static_cast<ptrdiff_t>(dstStep) * (y + 2 + j) + (x + 2 + i)] = v;
        }
}

template <CountFn Count>
void frame(const Zan8u* const pSrc[2], Zan32s srcStep, Zan8u* pDst, Zan32s dstStep, ZaniSize imgSize,
           ZanDenoiseMosquitoState* pState, ZaniPoint off, ZaniSize roi) {
    const ZanDenoiseMosquitoState& s = *pState;
    const ZanDenoiseMosquitoWork& w = *s.pWork;
    const Grid g = grid_of(imgSize, off, roi);
    const Zan32s W = roi.width, H = roi.height;
    const ptrdiff_t srcOrigin = static_cast<ptrdiff_t>(srcStep) * off.y + off.x;
    const Zan8u* prev = pSrc[0] + srcOrigin;
    const Zan8u* cur = pSrc[1] + srcOrigin;
    Zan8u* dst = pDst + static_cast<ptrdiff_t>(dstStep) * off.y + off.x;

    for (Zan32s y = g.ys; y <= g.ye; y += 8)
        for (Zan32s x = g.xs; x <= g.xe; x += 8) {
            copy_area(cur, srcStep, x, y, w.pCurBlock);
            copy_area(prev, srcStep, x, y, w.pPrevBlock);
            analyse<Count>(s, x, y, W, H);
        }

    Zan32s sum = 0;
    const Zan32s cols = W / 8;
    for (Zan32s y = g.ys; y <= g.ye; y += 8)
        for (Zan32s x = g.xs; x <= g.xe; x += 8) {
            copy_area(cur, srcStep, x, y, w.pCurBlock);
            copy_area(prev, srcStep, x, y, w.pPrevBlock);
            const Zan32s bx = x / 8, by = y / 8;
            Zan32s* rec = w.pBlockInfo + kFields * (bx + by * cols);
            auto strong = [&](Zan32s cx, Zan32s cy) { return w.pBlockInfo[kFields * (cx + cy * cols) + kStrong]; };
            if (rec[kEdgy] == 0) {
                if (bx > 0) sum += strong(bx - 1, by);
                if (bx + 1 < cols) sum += strong(bx + 1, by);
                if (by > 0) {
                    if (bx > 0) sum += strong(bx - 1, by - 1);
                    if (bx + 1 < cols) sum += strong(bx + 1, by - 1);
                    sum += strong(bx, by - 1);
                }
            }
            rec[kNeighbourSum] = sum;
            copy_rect(cur, srcStep, dst, dstStep, std::max(x, 0), std::max(y, 0), std::min(x + 12, W),
                      std::min(y + 12, H));
            if (rec[kEdgy] != 0 || rec[kNeighbourSum] != 0) filter_block(s, x, y, W, H, dst, dstStep);
        }

    // the origins after the last block row and column actually visited
    const Zan32s nextRow = g.ys + (g.ye - g.ys) / 8 * 8 + 8, nextCol = g.xs + (g.xe - g.xs) / 8 * 8 + 8;
    copy_rect(cur, srcStep, dst, dstStep, 0, nextRow, W, H);
    if (nextRow > 0) copy_rect(cur, srcStep, dst, dstStep, nextCol, 0, W, std::min(nextRow, H));
}

// ============================================================= catalogue

constexpr KernelPair<CountFn> kCountPairs[] = {
    {"mosquito_count8x8", count_rule, count_sse2, 8, 8, 0},
};
constexpr KernelPair<FrameFn> kFramePairs[] = {
    {"mosquito_frame", frame<count_rule>, frame<count_sse2>, 8, 8, 0},
};

}  // namespace

const Kernels kernels = {kCountPairs, kFramePairs};

}  // namespace zan::ZAN_PATH::mosquito

// =============================================================== exports

namespace zan::ZAN_PATH {

namespace {

constexpr std::int64_t round16(std::int64_t n) { return (n + 15) & ~std::int64_t{15}; }
// The control record, the work record and the three 144-byte block areas.
constexpr std::int64_t kFixedBytes =
    round16(sizeof(ZanDenoiseMosquitoState)) + round16(sizeof(ZanDenoiseMosquitoWork)) + 3 * 144;

}  // namespace

ZanStatus zaniFilterDenoiseMosquitoInitAlloc_8u_C1(ZanDenoiseMosquitoState** ppState, ZaniSize roiSize) {
    if (!ppState) return zanStsNullPtr;
    if (roiSize.width < 1 || roiSize.height < 1) return zanStsSizeBad;
    const std::int64_t W = roiSize.width, H = roiSize.height;
    const std::int64_t recBytes = round16((W / 8 + 1) * (H / 8 + 1) * 5 * 4);
    // The edge map keeps a 4-sample margin round the region, and a block whose
    // origin lies near the region's last row or column reaches up to 12 rows
    // and 12 columns beyond it: 16 spare rows (and a spare 16 bytes for the
    // columns of the last row) keep every write inside the map.
    const std::int64_t mapBytes = round16((W + 8) * (H + 8 + 16) + 16);
    const std::int64_t total = kFixedBytes + recBytes + mapBytes;
    if (total > 0x7FFFFFFF) return zanStsNoMem;
    Zan8u* mem = zansMalloc_8u(static_cast<Zan32s>(total));
    if (!mem) return zanStsNoMem;
    std::memset(mem, 0, static_cast<size_t>(total));
    auto* s = reinterpret_cast<ZanDenoiseMosquitoState*>(mem);
    Zan8u* p = mem + round16(sizeof(ZanDenoiseMosquitoState));
    auto* w = reinterpret_cast<ZanDenoiseMosquitoWork*>(p);
    p += round16(sizeof(ZanDenoiseMosquitoWork));
    w->pPrevBlock = p;
    w->pCurBlock = p + 144;
    w->pClassMap = p + 288;
    w->pBlockInfo = reinterpret_cast<Zan32s*>(p + 432);
    w->pEdgeMap = p + 432 + recBytes;
    w->edgeMapStep = roiSize.width + 8;
    w->blockStep = 12;
    *s = ZanDenoiseMosquitoState{roiSize, 8, 8, 4, 12, 16, 4, 32, 1, 32, 20, 2, 16, 6, w, mem};
    *ppState = s;
    return zanStsOk;
}

ZanStatus zaniFilterDenoiseMosquitoFree_8u_C1(ZanDenoiseMosquitoState* pState) {
    if (!pState || !pState->pAllocated) return zanStsNullPtr;
    zansFree(pState->pAllocated);
    return zanStsOk;
}

ZanStatus zaniFilterDenoiseMosquito_8u_C1R(const Zan8u* pSrc[2], Zan32s srcStep, Zan8u* pDst, Zan32s dstStep,
                                           ZaniSize imgSize, ZanDenoiseMosquitoState* pState, ZaniPoint roiOffset,
                                           ZaniSize roiSize) {
    if (!pState || !pState->pWork) return zanStsNullPtr;
    if (pState->roiSize.width < 1 || pState->roiSize.height < 1) return zanStsSizeBad;
    if (roiOffset.x < 0 || roiOffset.y < 0 ||
        static_cast<std::int64_t>(roiOffset.x) + roiSize.width > imgSize.width ||
        static_cast<std::int64_t>(roiOffset.y) + roiSize.height > imgSize.height)
        return zanStsSizeBad;
    if (roiSize.width != pState->roiSize.width || roiSize.height != pState->roiSize.height) return zanStsSizeBad;
    const mosquito::Grid g = mosquito::grid_of(imgSize, roiOffset, roiSize);
    if (g.xe < g.xs || g.ye < g.ys) return zanStsErr;  // no block fits
    mosquito::frame<mosquito::count_sse2>(pSrc, srcStep, pDst, dstStep, imgSize, pState, roiOffset, roiSize);
    return zanStsOk;
}

}  // namespace zan::ZAN_PATH
