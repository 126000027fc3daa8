// CAST denoising: per-block still/moving decisions against the previous
// frame, per-block history weights carried by the caller, a temporal blend
// for still blocks and an edge-preserving neighbour mean for moving ones.
//
// The scalar rule walks the blocks one by one.  The vector kernel takes a
// row of blocks at a time: it counts the differing samples of every column
// of the row with SSE2, decides the blocks from those column counts, blends
// the still blocks' samples sixteen at a time with a weight per byte, and
// runs the neighbour mean of moving blocks with SSSE3 over the interior
// sixteen samples at a time.  Both give the same bytes and the same history.
#include "picture/cast.h"

#include <algorithm>
#include <cstddef>

#include "common/scalar.h"
#include "common/simd.h"
#include "frame/bodies.h"

namespace zan::ZAN_PATH::cast {
namespace {

using namespace zan::cast;
using scalar::absdiff;

// One channel of a row: sample i lies at byte first + i * stride, count
// samples per row; limit is the neighbour limit of the channel.
struct Chan {
    Zan32s first, stride, count, limit;
};

struct Frame {
    const Zan8u* cur;
    const Zan8u* prev;
    Zan32s srcStep;
    const Zan8u* edge;
    Zan32s edgeStep;
    Zan32s height;
    Zan8u* dst;
    Zan32s dstStep;
    const ZanDenoiseCastParams* p;
};

inline const Zan8u* row(const Zan8u* base, Zan32s step, Zan32s y) {
    return base + static_cast<ptrdiff_t>(step) * y;
}
inline Zan8u* row(Zan8u* base, Zan32s step, Zan32s y) { return base + static_cast<ptrdiff_t>(step) * y; }

// ============================================================ scalar rules

// The edge-preserving neighbour mean of sample x of row y of a channel.
Zan8u spatial_sample(const Frame& f, const Chan& c, Zan32s x, Zan32s y) {
    const Zan8u* r0 = row(f.cur, f.srcStep, std::max(y - 1, 0));
    const Zan8u* r1 = row(f.cur, f.srcStep, y);
    const Zan8u* r2 = row(f.cur, f.srcStep, std::min(y + 1, f.height - 1));
    const Zan32s xm = std::max(x - 1, 0), xp = std::min(x + 1, c.count - 1);
    auto s = [&](const Zan8u* r, Zan32s i) -> Zan32s { return r[c.first + i * c.stride]; };
    const Zan32s centre = s(r1, x);
    const Zan32s nb[8] = {s(r0, xm), s(r0, x), s(r0, xp), s(r1, xm), s(r1, xp), s(r2, xm), s(r2, x), s(r2, xp)};
    Zan32s sum = 0, k = 0;
    for (Zan32s n : nb)
        if (absdiff(n, centre) < c.limit) {
            sum += n;
            ++k;
        }
    if (k == 0) return static_cast<Zan8u>(centre);
    const Zan32s m = (sum + (k >> 1)) / k;
    const Zan32s a = row(f.edge, f.edgeStep, y)[c.first + x * c.stride] > f.p->edgeLimit ? f.p->edgeWeight
                                                                                           : f.p->flatWeight;
    return static_cast<Zan8u>((centre * a + m * (256 - a) + 128) >> 8);
}

// Differing samples of a block of rw real columns and rh real rows, completed
// to bw by bh: the last real column and the last real row count again for
// each missing one.
Zan32s block_count(const Frame& f, const Chan& c, Zan32s x0, Zan32s rw, Zan32s bw, Zan32s y0, Zan32s rh, Zan32s bh) {
    if (rw <= 0) return 0;
    Zan32s total = 0, rowCount = 0;
    for (Zan32s r = 0; r < rh; ++r) {
        const Zan8u* a = row(f.cur, f.srcStep, y0 + r);
        const Zan8u* b = row(f.prev, f.srcStep, y0 + r);
        rowCount = 0;
        Zan32s flag = 0;
        for (Zan32s i = 0; i < rw; ++i) {
            const Zan32s at = c.first + (x0 + i) * c.stride;
            flag = absdiff(a[at], b[at]) > f.p->temporalDifference ? 1 : 0;
            rowCount += flag;
        }
        rowCount += (bw - rw) * flag;
        total += rowCount;
    }
    return total + (bh - rh) * rowCount;
}

// The still/moving decision and the history update of one block.  Returns
// the blend weight, or -1 when the block takes the spatial filter.
Zan32s decide(const Frame& f, Zan32s count, Zan8u* h) {
    if (!f.prev) return -1;
    const bool moving = count > f.p->motionCount;
    Zan32s w;
    if (h) {
        Zan32s v = *h;
        if (moving) {
            w = v;
            v = v < 128 ? 128 : v >> 1;
        } else {
            v = v >= 128 ? std::min(v + 4, 200) : 128;
            w = v;
        }
        *h = static_cast<Zan8u>(v);
    } else {
        w = f.p->historyWeight;
    }
    return moving || w == 0 ? -1 : w;
}

void block_rule(const Frame& f, const Chan& c, Zan32s x0, Zan32s bw, Zan32s y0, Zan32s bh, Zan8u* h) {
    const Zan32s rw = std::clamp(c.count - x0, 0, bw), rh = std::min(bh, f.height - y0);
    const Zan32s count = f.prev ? block_count(f, c, x0, rw, bw, y0, rh, bh) : 0;
    const Zan32s w = decide(f, count, h);
    for (Zan32s y = y0; y < y0 + rh; ++y) {
        const Zan8u* cr = row(f.cur, f.srcStep, y);
        Zan8u* d = row(f.dst, f.dstStep, y);
        for (Zan32s x = x0; x < x0 + rw; ++x) {
            const Zan32s at = c.first + x * c.stride;
            if (w < 0) {
                d[at] = spatial_sample(f, c, x, y);
            } else {
                const Zan32s cv = cr[at], pv = row(f.prev, f.srcStep, y)[at];
                d[at] = static_cast<Zan8u>(((pv - cv) * w + cv * 256 + 128) >> 8);
            }
        }
    }
}

// Blocks per row of blocks (C1) or groups per row (C2), and rows of blocks.
inline Zan32s ceil_div(Zan32s a, Zan32s b) { return (a + b - 1) / b; }

void fill_history(Zan8u* h, Zan32s n, Zan8u v) {
    for (Zan32s i = 0; i < n; ++i) h[i] = v;
}

template <int L>
void frame_rule(const Zan8u* pCur, const Zan8u* pPrev, Zan32s srcStep, const Zan8u* pEdge, Zan32s edgeStep,
                ZaniSize size, Zan8u* pDst, Zan32s dstStep, Zan8u* pHist, const ZanDenoiseCastParams* p) {
    const Frame f{pCur, pPrev, srcStep, pEdge, edgeStep, size.height, pDst, dstStep, p};
    const Zan32s bw = p->blockWidth, bh = p->blockHeight, W = size.width;
    const Zan32s rows = ceil_div(size.height, bh);
    if constexpr (L == 1) {
        const Zan32s cols = ceil_div(W, bw);
        if (!pPrev && pHist) fill_history(pHist, cols * rows, p->historyWeight);
        const Chan c{0, 1, W, p->neighbourLimitY};
        for (Zan32s by = 0; by < rows; ++by)
            for (Zan32s bx = 0; bx < cols; ++bx)
                block_rule(f, c, bx * bw, bw, by * bh, bh, pHist ? pHist + by * cols + bx : nullptr);
    } else {
        const Zan32s groups = ceil_div(2 * W, 4 * bw);
        if (!pPrev && pHist) fill_history(pHist, 4 * groups * rows, p->historyWeight);
        const Chan y{0, 2, W, p->neighbourLimitY}, cb{1, 4, W / 2, p->neighbourLimitUV},
            cr{3, 4, W / 2, p->neighbourLimitUV};
        for (Zan32s by = 0; by < rows; ++by)
            for (Zan32s g = 0; g < groups; ++g) {
                Zan8u* h = pHist ? pHist + 4 * (by * groups + g) : nullptr;
                block_rule(f, y, 2 * bw * g, bw, by * bh, bh, h);
                block_rule(f, cb, bw * g, bw, by * bh, bh, h ? h + 1 : nullptr);
                block_rule(f, y, 2 * bw * g + bw, bw, by * bh, bh, h ? h + 2 : nullptr);
                block_rule(f, cr, bw * g, bw, by * bh, bh, h ? h + 3 : nullptr);
            }
    }
}

// ========================================================== vector kernel

using namespace zan::ZAN_PATH::simd;

constexpr Zan32s kChunk = 1024;  // bytes of a row handled per pass (a whole number of block columns)

// Per byte of columns [c0, c0 + n) of a row of blocks: how many of the block
// row's samples in that column differ, the last real row counted again for
// each missing row (at most bh, so it fits a byte).
void column_counts(const Frame& f, Zan32s c0, Zan32s n, Zan32s y0, Zan32s rh, Zan32s bh, Zan8u* cnt) {
    const __m128i td = _mm_set1_epi8(static_cast<char>(f.p->temporalDifference));
    const __m128i one = _mm_set1_epi8(1), missing = _mm_set1_epi8(static_cast<char>(bh - rh));
    Zan32s i = 0;
    for (; i + 16 <= n; i += 16) {
        __m128i acc = _mm_setzero_si128(), last = acc;
        for (Zan32s r = 0; r < rh; ++r) {
            const __m128i a = load16(row(f.cur, f.srcStep, y0 + r) + c0 + i);
            const __m128i b = load16(row(f.prev, f.srcStep, y0 + r) + c0 + i);
            const __m128i d = _mm_or_si128(_mm_subs_epu8(a, b), _mm_subs_epu8(b, a));
            // d > td exactly when d - td (saturating) is not zero
            last = _mm_cmpeq_epi8(_mm_subs_epu8(d, td), _mm_setzero_si128());
            acc = _mm_add_epi8(acc, _mm_andnot_si128(last, one));
        }
        acc = _mm_add_epi8(acc, _mm_andnot_si128(last, missing));
        store16(cnt + i, acc);
    }
    for (; i < n; ++i) {
        Zan32s acc = 0, flag = 0;
        for (Zan32s r = 0; r < rh; ++r) {
            flag = absdiff(row(f.cur, f.srcStep, y0 + r)[c0 + i], row(f.prev, f.srcStep, y0 + r)[c0 + i]) >
                           f.p->temporalDifference
                       ? 1
                       : 0;
            acc += flag;
        }
        cnt[i] = static_cast<Zan8u>(acc + flag * (bh - rh));
    }
}

// out = (prev * w + cur * (256 - w) + 128) >> 8 with a weight per byte, over
// bytes [c0, c0 + n) of one row.
void blend_row(const Zan8u* cur, const Zan8u* prev, Zan8u* dst, const Zan8u* wb, Zan32s n) {
    const __m128i zero = _mm_setzero_si128(), k256 = _mm_set1_epi16(256), k128 = _mm_set1_epi16(128);
    Zan32s i = 0;
    for (; i + 16 <= n; i += 16) {
        const __m128i c = load16(cur + i), p = load16(prev + i), w = load16(wb + i);
        const __m128i wl = _mm_unpacklo_epi8(w, zero), wh = _mm_unpackhi_epi8(w, zero);
        __m128i lo = _mm_add_epi16(_mm_mullo_epi16(_mm_unpacklo_epi8(p, zero), wl),
                                   _mm_mullo_epi16(_mm_unpacklo_epi8(c, zero), _mm_sub_epi16(k256, wl)));
        __m128i hi = _mm_add_epi16(_mm_mullo_epi16(_mm_unpackhi_epi8(p, zero), wh),
                                   _mm_mullo_epi16(_mm_unpackhi_epi8(c, zero), _mm_sub_epi16(k256, wh)));
        lo = _mm_srli_epi16(_mm_add_epi16(lo, k128), 8);
        hi = _mm_srli_epi16(_mm_add_epi16(hi, k128), 8);
        store16(dst + i, _mm_packus_epi16(lo, hi));
    }
    for (; i < n; ++i) dst[i] = static_cast<Zan8u>((prev[i] * wb[i] + cur[i] * (256 - wb[i]) + 128) >> 8);
}

// Rounded division (s + k / 2) / k for k in 2..8 and s up to k * 255, as
// (s + k / 2) * recip[k] >> 16, exact over that range (the checker compares
// the whole filter with the division, and a unit test checks the identity
// for every k and s).  k = 1 takes the sum itself.  Low and high bytes of
// recip, for pshufb lookups by k.
alignas(16) constexpr Zan8u kRecipLo[16] = {0, 0, 0, 86, 0, 52, 171, 147, 0, 0, 0, 0, 0, 0, 0, 0};
alignas(16) constexpr Zan8u kRecipHi[16] = {0, 0, 128, 85, 64, 51, 42, 36, 32, 0, 0, 0, 0, 0, 0, 0};

// Neighbour mean of samples [x, x + 8) of one channel row, none of them at
// the channel's first or last sample and with y - 1 and y + 1 clamped by the
// caller.  Works on eight samples in 16-bit lanes.
template <int S>
void spatial8(const Zan8u* r0, const Zan8u* r1, const Zan8u* r2, const Zan8u* e, Zan8u* d, Zan32s first, Zan32s x,
              const ZanDenoiseCastParams* p, Zan32s limit) {
    const __m128i zero = _mm_setzero_si128();
    auto gather = [&](const Zan8u* r, Zan32s i) -> __m128i {
        if constexpr (S == 1) {
            return _mm_unpacklo_epi8(load8(r + first + i), zero);
        } else {
            alignas(16) Zan16u v[8];
            for (int k = 0; k < 8; ++k) v[k] = r[first + (i + k) * S];
            return load16a(v);
        }
    };
    const __m128i c = gather(r1, x);
    const __m128i lim = _mm_set1_epi16(static_cast<short>(limit));
    __m128i sum = zero, cnt = zero;
    const __m128i nb[8] = {gather(r0, x - 1), gather(r0, x), gather(r0, x + 1), gather(r1, x - 1),
                           gather(r1, x + 1), gather(r2, x - 1), gather(r2, x), gather(r2, x + 1)};
    for (const __m128i& n : nb) {
        const __m128i ad = absdiff_u16(n, c);
        const __m128i in = _mm_cmpgt_epi16(lim, ad);  // |n - c| < limit
        sum = _mm_add_epi16(sum, _mm_and_si128(in, n));
        cnt = _mm_sub_epi16(cnt, in);
    }
    // m = (sum + (k >> 1)) * recip[k] >> 16, recip looked up by k with pshufb
    const __m128i rlo = load16a(kRecipLo), rhi = load16a(kRecipHi);
    const __m128i kb = _mm_packus_epi16(cnt, cnt);  // k as bytes, twice
    const __m128i recip = _mm_unpacklo_epi8(_mm_shuffle_epi8(rlo, kb), _mm_shuffle_epi8(rhi, kb));
    const __m128i num = _mm_add_epi16(sum, _mm_srli_epi16(cnt, 1));
    const __m128i k1 = _mm_cmpeq_epi16(cnt, _mm_set1_epi16(1));
    const __m128i m = _mm_or_si128(_mm_and_si128(k1, num), _mm_andnot_si128(k1, _mm_mulhi_epu16(num, recip)));
    // a per lane from the edge map
    alignas(16) Zan16u av[8];
    for (int k = 0; k < 8; ++k) av[k] = e[first + (x + k) * S] > p->edgeLimit ? p->edgeWeight : p->flatWeight;
    const __m128i a = load16a(av);
    // (c * a + m * (256 - a) + 128) >> 8; at most 255 * 256 + 128, unsigned 16-bit
    __m128i out = _mm_add_epi16(_mm_mullo_epi16(c, a), _mm_mullo_epi16(m, _mm_sub_epi16(_mm_set1_epi16(256), a)));
    out = _mm_srli_epi16(_mm_add_epi16(out, _mm_set1_epi16(128)), 8);
    // k = 0 keeps the centre
    const __m128i none = _mm_cmpeq_epi16(cnt, zero);
    out = _mm_or_si128(_mm_and_si128(none, c), _mm_andnot_si128(none, out));
    if constexpr (S == 1) {
        store8(d + first + x, _mm_packus_epi16(out, out));
    } else {
        alignas(16) Zan16u o[8];
        _mm_store_si128(reinterpret_cast<__m128i*>(o), out);
        for (int k = 0; k < 8; ++k) d[first + (x + k) * S] = static_cast<Zan8u>(o[k]);
    }
}

// The spatial filter over real samples [x0, x0 + rw) of rows [y0, y0 + rh)
// of one channel: eight samples at a time away from the channel's ends.
void spatial_block(const Frame& f, const Chan& c, Zan32s x0, Zan32s rw, Zan32s y0, Zan32s rh) {
    for (Zan32s y = y0; y < y0 + rh; ++y) {
        const Zan8u* r0 = row(f.cur, f.srcStep, std::max(y - 1, 0));
        const Zan8u* r1 = row(f.cur, f.srcStep, y);
        const Zan8u* r2 = row(f.cur, f.srcStep, std::min(y + 1, f.height - 1));
        const Zan8u* e = row(f.edge, f.edgeStep, y);
        Zan8u* d = row(f.dst, f.dstStep, y);
        Zan32s x = x0;
        const Zan32s end = x0 + rw;
        for (; x < end && x < 1; ++x) d[c.first + x * c.stride] = spatial_sample(f, c, x, y);
        for (; x + 8 <= end && x + 8 < c.count; x += 8) {
            if (c.stride == 1)
                spatial8<1>(r0, r1, r2, e, d, c.first, x, f.p, c.limit);
            else if (c.stride == 2)
                spatial8<2>(r0, r1, r2, e, d, c.first, x, f.p, c.limit);
            else
                spatial8<4>(r0, r1, r2, e, d, c.first, x, f.p, c.limit);
        }
        for (; x < end; ++x) d[c.first + x * c.stride] = spatial_sample(f, c, x, y);
    }
}

// One block of a row of blocks: its count from the column counts, its
// decision, and either its weights for the blend or its spatial filter.
// Returns true when the block is blended.
bool block_simd(const Frame& f, const Chan& c, Zan32s x0, Zan32s bw, Zan32s y0, Zan32s bh, Zan8u* h,
                const Zan8u* cnt, Zan8u* wb, Zan32s c0) {
    const Zan32s rw = std::clamp(c.count - x0, 0, bw), rh = std::min(bh, f.height - y0);
    Zan32s count = 0;
    if (f.prev && rw > 0) {
        for (Zan32s i = 0; i < rw; ++i) count += cnt[c.first + (x0 + i) * c.stride - c0];
        count += (bw - rw) * cnt[c.first + (x0 + rw - 1) * c.stride - c0];
    }
    const Zan32s w = decide(f, count, h);
    if (w < 0) {
        for (Zan32s i = 0; i < rw; ++i) wb[c.first + (x0 + i) * c.stride - c0] = 0;
        spatial_block(f, c, x0, rw, y0, rh);
        return false;
    }
    for (Zan32s i = 0; i < rw; ++i) wb[c.first + (x0 + i) * c.stride - c0] = static_cast<Zan8u>(w);
    return true;
}

template <int L>
void frame_simd(const Zan8u* pCur, const Zan8u* pPrev, Zan32s srcStep, const Zan8u* pEdge, Zan32s edgeStep,
                ZaniSize size, Zan8u* pDst, Zan32s dstStep, Zan8u* pHist, const ZanDenoiseCastParams* p) {
    const Frame f{pCur, pPrev, srcStep, pEdge, edgeStep, size.height, pDst, dstStep, p};
    const Zan32s bw = p->blockWidth, bh = p->blockHeight, W = size.width;
    const Zan32s rows = ceil_div(size.height, bh);
    const Zan32s unit = L == 1 ? bw : 4 * bw;            // bytes of one block column or group
    const Zan32s chunk = (kChunk / unit) * unit;         // whole block columns per pass
    const Zan32s rowBytes = L == 1 ? W : 2 * W;
    const Zan32s cols = ceil_div(rowBytes, unit);        // block columns or groups per row
    if (!pPrev && pHist) fill_history(pHist, (L == 1 ? 1 : 4) * cols * rows, p->historyWeight);
    alignas(16) Zan8u cnt[kChunk];
    alignas(16) Zan8u wb[kChunk];
    const Chan c1{0, 1, W, p->neighbourLimitY};
    const Chan y{0, 2, W, p->neighbourLimitY}, cb{1, 4, W / 2, p->neighbourLimitUV}, cr{3, 4, W / 2, p->neighbourLimitUV};
    for (Zan32s by = 0; by < rows; ++by) {
        const Zan32s y0 = by * bh, rh = std::min(bh, size.height - y0);
        for (Zan32s c0 = 0; c0 < rowBytes; c0 += chunk) {
            const Zan32s n = std::min(chunk, rowBytes - c0);
            if (pPrev) column_counts(f, c0, n, y0, rh, bh, cnt);
            bool anyBlend = false;
            for (Zan32s g = c0 / unit; g < ceil_div(c0 + n, unit); ++g) {
                if constexpr (L == 1) {
                    anyBlend |= block_simd(f, c1, g * bw, bw, y0, bh, pHist ? pHist + by * cols + g : nullptr, cnt,
                                           wb, c0);
                } else {
                    Zan8u* h = pHist ? pHist + 4 * (by * cols + g) : nullptr;
                    anyBlend |= block_simd(f, y, 2 * bw * g, bw, y0, bh, h, cnt, wb, c0);
                    anyBlend |= block_simd(f, cb, bw * g, bw, y0, bh, h ? h + 1 : nullptr, cnt, wb, c0);
                    anyBlend |= block_simd(f, y, 2 * bw * g + bw, bw, y0, bh, h ? h + 2 : nullptr, cnt, wb, c0);
                    anyBlend |= block_simd(f, cr, bw * g, bw, y0, bh, h ? h + 3 : nullptr, cnt, wb, c0);
                }
            }
            if (!anyBlend) continue;
            // Blend the still blocks' bytes; the moving ones are rewritten by
            // the filter's result, kept aside in their weight-0 bytes.
            for (Zan32s r = 0; r < rh; ++r) {
                const Zan8u* cu = row(pCur, srcStep, y0 + r) + c0;
                const Zan8u* pr = row(pPrev, srcStep, y0 + r) + c0;
                Zan8u* d = row(pDst, dstStep, y0 + r) + c0;
                Zan32s i = 0;
                while (i < n) {
                    // runs of blended bytes between filtered ones
                    while (i < n && wb[i] == 0) ++i;
                    Zan32s j = i;
                    while (j < n && wb[j] != 0) ++j;
                    if (j > i) blend_row(cu + i, pr + i, d + i, wb + i, j - i);
                    i = j;
                }
            }
        }
    }
}

// ============================================================= catalogue

constexpr KernelPair<FrameFn> kFramePairs[] = {
    {"cast_c1", frame_rule<1>, frame_simd<1>, 0, 0, 1},
    {"cast_422", frame_rule<2>, frame_simd<2>, 0, 0, 2},
};

}  // namespace

const Kernels kernels = {kFramePairs};

}  // namespace zan::ZAN_PATH::cast

// =============================================================== exports

namespace zan::ZAN_PATH {

namespace {

constexpr ZanDenoiseCastParams kCastDefaults = {16, 0, 8, 4, 4, 128, 16, 12, 6, 192};

template <int L>
ZanStatus cast_call(const Zan8u* pSrcCur, const Zan8u* pSrcPrev, Zan32s srcStep, const Zan8u* pEdgeMap,
                    Zan32s edgeStep, ZaniSize size, Zan8u* pDst, Zan32s dstStep, Zan8u* pHistory,
                    const ZanDenoiseCastParams* pParams) {
    if (!pSrcCur || !pEdgeMap || !pDst) return zanStsNullPtr;
    if (size.width < 1 || size.height < 1) return zanStsSizeBad;
    if (L == 2 && (size.width & 1)) return zanStsSizeBad;
    ZanDenoiseCastParams local;
    if (!pParams) {
        local = kCastDefaults;
        pParams = &local;
    }
    if (pParams->blockWidth == 0 || pParams->blockHeight == 0) return zanStsOk;
    cast::frame_simd<L>(pSrcCur, pSrcPrev, srcStep, pEdgeMap, edgeStep, size, pDst, dstStep, pHistory, pParams);
    return zanStsOk;
}

}  // namespace

ZanStatus zaniFilterDenoiseCASTInit(ZanDenoiseCastParams* pParams) {
    if (!pParams) return zanStsNullPtr;
    *pParams = kCastDefaults;
    return zanStsOk;
}

ZanStatus zaniFilterDenoiseCAST_8u_C1R(const Zan8u* pSrcCur, const Zan8u* pSrcPrev, Zan32s srcStep,
                                       const Zan8u* pEdgeMap, Zan32s edgeStep, ZaniSize size, Zan8u* pDst,
                                       Zan32s dstStep, Zan8u* pHistory, const ZanDenoiseCastParams* pParams) {
    return cast_call<1>(pSrcCur, pSrcPrev, srcStep, pEdgeMap, edgeStep, size, pDst, dstStep, pHistory, pParams);
}

ZanStatus zaniFilterDenoiseCASTYUV422_8u_C2R(const Zan8u* pSrcCur, const Zan8u* pSrcPrev, Zan32s srcStep,
                                             const Zan8u* pEdgeMap, Zan32s edgeStep, ZaniSize size, Zan8u* pDst,
                                             Zan32s dstStep, Zan8u* pHistory,
                                             const ZanDenoiseCastParams* pParams) {
    return cast_call<2>(pSrcCur, pSrcPrev, srcStep, pEdgeMap, edgeStep, size, pDst, dstStep, pHistory, pParams);
}

}  // namespace zan::ZAN_PATH
