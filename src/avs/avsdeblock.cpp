// AVS loop filter: scalar rules and SSE2 kernels for the luma and chroma
// macroblock edges, their catalogue and the exported wrappers.
//
// Each kernel filters the lines across one edge (vertical edge: one line a
// row; horizontal edge: one line a column).  A line is p3 p2 p1 p0 | q0 q1
// q2 q3; the rules read p2..q2 and the vector kernels load p3..q3 as well.
#include <emmintrin.h>

#include <cstddef>
#include <cstring>

#include "avs/avsinter.h"
#include "common/path.h"
#include "frame/bodies.h"

namespace zan::ZAN_PATH::avsinter {

using zan::avsinter::DeblockFn;

namespace {

inline Zan32s iabs(Zan32s v) { return v < 0 ? -v : v; }
inline Zan32s clip3(Zan32s lo, Zan32s hi, Zan32s v) { return v < lo ? lo : (v > hi ? hi : v); }
inline Zan8u clamp255(Zan32s v) { return static_cast<Zan8u>(clip3(0, 255, v)); }

// The 32-bit strength word of an edge's group (little-endian bytes).
inline Zan32u group_word(const Zan8u* g) {
    return static_cast<Zan32u>(g[0]) | static_cast<Zan32u>(g[1]) << 8 | static_cast<Zan32u>(g[2]) << 16 |
           static_cast<Zan32u>(g[3]) << 24;
}
constexpr Zan32u kStrongWord = 0x20002;

// ------------------------------------------------------------------ rules

// One line: s points at q0, d is the distance between samples across the
// edge.  mode 2 strong, 1 normal.
void line_rule(Zan8u* s, std::ptrdiff_t d, Zan32s alpha, Zan32s beta, Zan32s C, int mode, bool luma) {
    const Zan32s p2 = s[-3 * d], p1 = s[-2 * d], p0 = s[-d], q0 = s[0], q1 = s[d], q2 = s[2 * d];
    if (!(iabs(p0 - q0) < alpha && iabs(p1 - p0) < beta && iabs(q1 - q0) < beta)) return;
    if (mode == 2) {
        const Zan32s sum = p0 + q0 + 2;
        if (!luma) {
            s[-d] = static_cast<Zan8u>((2 * p1 + sum) >> 2);
            s[0] = static_cast<Zan8u>((2 * q1 + sum) >> 2);
            return;
        }
        const Zan32s a2 = (alpha >> 2) + 2;
        if (iabs(p2 - p0) < beta && iabs(p0 - q0) < a2) {
            s[-d] = static_cast<Zan8u>((p1 + p0 + sum) >> 2);
            s[-2 * d] = static_cast<Zan8u>((2 * p1 + sum) >> 2);
        } else {
            s[-d] = static_cast<Zan8u>((2 * p1 + sum) >> 2);
        }
        if (iabs(q2 - q0) < beta && iabs(q0 - p0) < a2) {
            s[0] = static_cast<Zan8u>((q1 + q0 + sum) >> 2);
            s[d] = static_cast<Zan8u>((2 * q1 + sum) >> 2);
        } else {
            s[0] = static_cast<Zan8u>((2 * q1 + sum) >> 2);
        }
        return;
    }
    const Zan32s delta = clip3(-C, C, (3 * (q0 - p0) + p1 - q1 + 4) >> 3);
    const Zan32s np0 = clamp255(p0 + delta), nq0 = clamp255(q0 - delta);
    s[-d] = static_cast<Zan8u>(np0);
    s[0] = static_cast<Zan8u>(nq0);
    if (!luma) return;
    if (iabs(p2 - p0) < beta) s[-2 * d] = clamp255(p1 + clip3(-C, C, (3 * (np0 - p1) + p2 - nq0 + 4) >> 3));
    if (iabs(q2 - q0) < beta) s[d] = clamp255(q1 - clip3(-C, C, (3 * (q1 - nq0) + np0 - q2 + 4) >> 3));
}

// One edge of `len` lines (two segments of len / 2) starting at s (q0 of
// the first line); `along` steps from line to line, `across` over the edge.
void edge_rule(Zan8u* s, std::ptrdiff_t along, std::ptrdiff_t across, Zan32s len, const Zan8u* group, Zan32s alpha,
               Zan32s beta, Zan32s C, bool luma) {
    const Zan32u word = group_word(group);
    if (word == 0) return;
    for (Zan32s i = 0; i < len; ++i) {
        const int seg = i < len / 2 ? 0 : 1;
        const int mode = word == kStrongWord ? 2 : (group[2 * seg] != 0 ? 1 : 0);
        if (mode) line_rule(s + along * i, across, alpha, beta, C, mode, luma);
    }
}

void luma_ver_rule(Zan8u* p, Zan32s step, const Zan8u* a, const Zan8u* b, const Zan8u* c, const Zan8u* bs) {
    for (int e = 0; e < 2; ++e) edge_rule(p + 8 * e, step, 1, 16, bs + 4 * e, a[e], b[e], c[e], true);
}
void luma_hor_rule(Zan8u* p, Zan32s step, const Zan8u* a, const Zan8u* b, const Zan8u* c, const Zan8u* bs) {
    for (int e = 0; e < 2; ++e)
        edge_rule(p + static_cast<std::ptrdiff_t>(step) * 8 * e, 1, step, 16, bs + 4 * e, a[e], b[e], c[e], true);
}
void chroma_ver_rule(Zan8u* p, Zan32s step, const Zan8u* a, const Zan8u* b, const Zan8u* c, const Zan8u* bs) {
    edge_rule(p, step, 1, 8, bs, a[0], b[0], c[0], false);
}
void chroma_hor_rule(Zan8u* p, Zan32s step, const Zan8u* a, const Zan8u* b, const Zan8u* c, const Zan8u* bs) {
    edge_rule(p, 1, step, 8, bs, a[0], b[0], c[0], false);
}

// ---------------------------------------------------------------- kernels

inline __m128i absdiff16(__m128i a, __m128i b) { return _mm_max_epi16(_mm_sub_epi16(a, b), _mm_sub_epi16(b, a)); }
inline __m128i sel(__m128i m, __m128i a, __m128i b) { return _mm_or_si128(_mm_and_si128(m, a), _mm_andnot_si128(m, b)); }
inline __m128i clamp16_255(__m128i v) {
    return _mm_min_epi16(_mm_max_epi16(v, _mm_setzero_si128()), _mm_set1_epi16(255));
}

// Eight lines as 16-bit lanes: v[0..5] = p2 p1 p0 q0 q1 q2, filtered in
// place.  strong / normal: lane masks of the two modes.
template <bool LUMA>
void lines8(__m128i* v, Zan32s alpha, Zan32s beta, Zan32s C, __m128i strong, __m128i normal) {
    const __m128i p2 = v[0], p1 = v[1], p0 = v[2], q0 = v[3], q1 = v[4], q2 = v[5];
    const __m128i va = _mm_set1_epi16(static_cast<Zan16s>(alpha)), vb = _mm_set1_epi16(static_cast<Zan16s>(beta));
    const __m128i d0 = absdiff16(p0, q0);
    const __m128i on = _mm_and_si128(_mm_cmpgt_epi16(va, d0),
                                     _mm_and_si128(_mm_cmpgt_epi16(vb, absdiff16(p1, p0)), _mm_cmpgt_epi16(vb, absdiff16(q1, q0))));
    const __m128i ms = _mm_and_si128(on, strong), mn = _mm_and_si128(on, normal);
    const __m128i two = _mm_set1_epi16(2);
    const __m128i sum = _mm_add_epi16(_mm_add_epi16(p0, q0), two);
    // strong
    const __m128i sp0b = _mm_srai_epi16(_mm_add_epi16(_mm_add_epi16(p1, p1), sum), 2);
    const __m128i sq0b = _mm_srai_epi16(_mm_add_epi16(_mm_add_epi16(q1, q1), sum), 2);
    __m128i sp0 = sp0b, sq0 = sq0b, sp1 = p1, sq1 = q1;
    if constexpr (LUMA) {
        const __m128i a2 = _mm_set1_epi16(static_cast<Zan16s>((alpha >> 2) + 2));
        const __m128i near0 = _mm_cmpgt_epi16(a2, d0);
        const __m128i cp = _mm_and_si128(_mm_cmpgt_epi16(vb, absdiff16(p2, p0)), near0);
        const __m128i cq = _mm_and_si128(_mm_cmpgt_epi16(vb, absdiff16(q2, q0)), near0);
        sp0 = sel(cp, _mm_srai_epi16(_mm_add_epi16(_mm_add_epi16(p1, p0), sum), 2), sp0b);
        sp1 = sel(cp, sp0b, p1);
        sq0 = sel(cq, _mm_srai_epi16(_mm_add_epi16(_mm_add_epi16(q1, q0), sum), 2), sq0b);
        sq1 = sel(cq, sq0b, q1);
    }
    // normal
    const __m128i vc = _mm_set1_epi16(static_cast<Zan16s>(C)), nvc = _mm_sub_epi16(_mm_setzero_si128(), vc);
    const __m128i four = _mm_set1_epi16(4);
    auto clipc = [&](__m128i x) { return _mm_min_epi16(_mm_max_epi16(x, nvc), vc); };
    auto times3 = [](__m128i x) { return _mm_add_epi16(_mm_add_epi16(x, x), x); };
    const __m128i delta =
        clipc(_mm_srai_epi16(_mm_add_epi16(_mm_add_epi16(times3(_mm_sub_epi16(q0, p0)), _mm_sub_epi16(p1, q1)), four), 3));
    const __m128i np0 = clamp16_255(_mm_add_epi16(p0, delta)), nq0 = clamp16_255(_mm_sub_epi16(q0, delta));
    __m128i np1 = p1, nq1 = q1;
    if constexpr (LUMA) {
        const __m128i dp = clipc(_mm_srai_epi16(
            _mm_add_epi16(_mm_add_epi16(times3(_mm_sub_epi16(np0, p1)), _mm_sub_epi16(p2, nq0)), four), 3));
        const __m128i dq = clipc(_mm_srai_epi16(
            _mm_add_epi16(_mm_add_epi16(times3(_mm_sub_epi16(q1, nq0)), _mm_sub_epi16(np0, q2)), four), 3));
        np1 = sel(_mm_cmpgt_epi16(vb, absdiff16(p2, p0)), clamp16_255(_mm_add_epi16(p1, dp)), p1);
        nq1 = sel(_mm_cmpgt_epi16(vb, absdiff16(q2, q0)), clamp16_255(_mm_sub_epi16(q1, dq)), q1);
    }
    v[1] = sel(ms, sp1, sel(mn, np1, p1));
    v[2] = sel(ms, sp0, sel(mn, np0, p0));
    v[3] = sel(ms, sq0, sel(mn, nq0, q0));
    v[4] = sel(ms, sq1, sel(mn, nq1, q1));
}

// Lane masks of a group for a segment of `half` lanes... built per call.
inline __m128i mask_if(bool b) { return b ? _mm_set1_epi16(-1) : _mm_setzero_si128(); }

// 8x8 byte transpose of the low 8 bytes of in[0..7].
inline void tr8x8(const __m128i* in, __m128i* out) {
    const __m128i a0 = _mm_unpacklo_epi8(in[0], in[1]), a1 = _mm_unpacklo_epi8(in[2], in[3]);
    const __m128i a2 = _mm_unpacklo_epi8(in[4], in[5]), a3 = _mm_unpacklo_epi8(in[6], in[7]);
    const __m128i b0 = _mm_unpacklo_epi16(a0, a1), b1 = _mm_unpackhi_epi16(a0, a1);
    const __m128i b2 = _mm_unpacklo_epi16(a2, a3), b3 = _mm_unpackhi_epi16(a2, a3);
    const __m128i c[4] = {_mm_unpacklo_epi32(b0, b2), _mm_unpackhi_epi32(b0, b2), _mm_unpacklo_epi32(b1, b3),
                          _mm_unpackhi_epi32(b1, b3)};
    for (int m = 0; m < 4; ++m) {
        out[2 * m] = c[m];
        out[2 * m + 1] = _mm_unpackhi_epi64(c[m], c[m]);
    }
}

inline __m128i loadl(const Zan8u* p) { return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)); }
inline void storel(Zan8u* p, __m128i v) { _mm_storel_epi64(reinterpret_cast<__m128i*>(p), v); }

// A luma edge whose lines are the 16 lanes of col[0..7] (p3..q3 as bytes):
// lanes 0..7 the first segment, 8..15 the second.
void luma_edge_cols(__m128i* col, const Zan8u* group, Zan32s alpha, Zan32s beta, Zan32s C) {
    const Zan32u word = group_word(group);
    const bool strong = word == kStrongWord;
    const __m128i zero = _mm_setzero_si128();
    __m128i lo[6], hi[6];
    for (int k = 0; k < 6; ++k) {
        lo[k] = _mm_unpacklo_epi8(col[k + 1], zero);
        hi[k] = _mm_unpackhi_epi8(col[k + 1], zero);
    }
    lines8<true>(lo, alpha, beta, C, mask_if(strong), mask_if(!strong && group[0] != 0));
    lines8<true>(hi, alpha, beta, C, mask_if(strong), mask_if(!strong && group[2] != 0));
    for (int k = 1; k < 5; ++k) col[k + 1] = _mm_packus_epi16(lo[k], hi[k]);
}

void luma_ver_sse2(Zan8u* p, Zan32s step, const Zan8u* a, const Zan8u* b, const Zan8u* c, const Zan8u* bs) {
    for (int e = 0; e < 2; ++e) {
        if (group_word(bs + 4 * e) == 0) continue;
        Zan8u* s = p + 8 * e - 4;
        __m128i rows[16], tl[8], th[8], col[8];
        for (int i = 0; i < 16; ++i) rows[i] = loadl(s + static_cast<std::ptrdiff_t>(step) * i);
        tr8x8(rows, tl);
        tr8x8(rows + 8, th);
        for (int k = 0; k < 8; ++k) col[k] = _mm_unpacklo_epi64(tl[k], th[k]);
        luma_edge_cols(col, bs + 4 * e, a[e], b[e], c[e]);
        __m128i hiCols[8];
        for (int k = 0; k < 8; ++k) hiCols[k] = _mm_unpackhi_epi64(col[k], col[k]);
        tr8x8(col, rows);
        tr8x8(hiCols, rows + 8);
        for (int i = 0; i < 16; ++i) storel(s + static_cast<std::ptrdiff_t>(step) * i, rows[i]);
    }
}

void luma_hor_sse2(Zan8u* p, Zan32s step, const Zan8u* a, const Zan8u* b, const Zan8u* c, const Zan8u* bs) {
    for (int e = 0; e < 2; ++e) {
        if (group_word(bs + 4 * e) == 0) continue;
        Zan8u* s = p + static_cast<std::ptrdiff_t>(step) * (8 * e);
        __m128i col[8];
        for (int k = 0; k < 6; ++k)
            col[k + 1] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + static_cast<std::ptrdiff_t>(step) * (k - 3)));
        luma_edge_cols(col, bs + 4 * e, a[e], b[e], c[e]);
        for (int k = 1; k < 5; ++k)
            _mm_storeu_si128(reinterpret_cast<__m128i*>(s + static_cast<std::ptrdiff_t>(step) * (k - 3)), col[k + 1]);
    }
}

// A chroma edge: lines in the 8 lanes of v (p2..q2 as 16 bits): lanes 0..3
// the first segment, 4..7 the second.
void chroma_lines(__m128i* v, const Zan8u* group, Zan32s alpha, Zan32s beta, Zan32s C) {
    const Zan32u word = group_word(group);
    const bool strong = word == kStrongWord;
    const Zan16s n0 = (!strong && group[0] != 0) ? -1 : 0, n1 = (!strong && group[2] != 0) ? -1 : 0;
    lines8<false>(v, alpha, beta, C, mask_if(strong), _mm_set_epi16(n1, n1, n1, n1, n0, n0, n0, n0));
}

void chroma_ver_sse2(Zan8u* p, Zan32s step, const Zan8u* a, const Zan8u* b, const Zan8u* c, const Zan8u* bs) {
    if (group_word(bs) == 0) return;
    Zan8u* s = p - 4;
    __m128i rows[8], col[8], v[6];
    for (int i = 0; i < 8; ++i) rows[i] = loadl(s + static_cast<std::ptrdiff_t>(step) * i);
    tr8x8(rows, col);
    for (int k = 0; k < 6; ++k) v[k] = _mm_unpacklo_epi8(col[k + 1], _mm_setzero_si128());
    chroma_lines(v, bs, a[0], b[0], c[0]);
    for (int k = 1; k < 5; ++k) col[k + 1] = _mm_packus_epi16(v[k], v[k]);
    tr8x8(col, rows);
    for (int i = 0; i < 8; ++i) storel(s + static_cast<std::ptrdiff_t>(step) * i, rows[i]);
}

void chroma_hor_sse2(Zan8u* p, Zan32s step, const Zan8u* a, const Zan8u* b, const Zan8u* c, const Zan8u* bs) {
    if (group_word(bs) == 0) return;
    __m128i v[6];
    for (int k = 0; k < 6; ++k)
        v[k] = _mm_unpacklo_epi8(loadl(p + static_cast<std::ptrdiff_t>(step) * (k - 3)), _mm_setzero_si128());
    chroma_lines(v, bs, a[0], b[0], c[0]);
    for (int k = 2; k < 4; ++k) storel(p + static_cast<std::ptrdiff_t>(step) * (k - 3), _mm_packus_epi16(v[k], v[k]));
}

}  // namespace

extern const KernelPair<DeblockFn> kDeblock[4];
const KernelPair<DeblockFn> kDeblock[4] = {
    {"avs_deblock_luma_ver", luma_ver_rule, luma_ver_sse2, 16, 16, 0},
    {"avs_deblock_luma_hor", luma_hor_rule, luma_hor_sse2, 16, 16, 1},
    {"avs_deblock_chroma_ver", chroma_ver_rule, chroma_ver_sse2, 8, 8, 2},
    {"avs_deblock_chroma_hor", chroma_hor_rule, chroma_hor_sse2, 8, 8, 3},
};

}  // namespace zan::ZAN_PATH::avsinter

namespace zan::ZAN_PATH {

namespace {
ZanStatus deblock(const ZanDeblockingRecord* r, int which) {
    if (!r || !r->pSrcDstPlane || !r->pAlpha || !r->pBeta || !r->pThresholds || !r->pBS) return zanStsNullPtr;
    avsinter::kDeblock[which].simd(static_cast<Zan8u*>(r->pSrcDstPlane), r->srcDstStep,
                                   static_cast<const Zan8u*>(r->pAlpha), static_cast<const Zan8u*>(r->pBeta),
                                   static_cast<const Zan8u*>(r->pThresholds), r->pBS);
    return zanStsOk;
}
}  // namespace

ZanStatus zaniFilterDeblockingLuma_VerEdge_AVS_8u_C1IR(const ZanDeblockingRecord* pDeblockInfo) {
    return deblock(pDeblockInfo, 0);
}
ZanStatus zaniFilterDeblockingLuma_HorEdge_AVS_8u_C1IR(const ZanDeblockingRecord* pDeblockInfo) {
    return deblock(pDeblockInfo, 1);
}
ZanStatus zaniFilterDeblockingChroma_VerEdge_AVS_8u_C1IR(const ZanDeblockingRecord* pDeblockInfo) {
    return deblock(pDeblockInfo, 2);
}
ZanStatus zaniFilterDeblockingChroma_HorEdge_AVS_8u_C1IR(const ZanDeblockingRecord* pDeblockInfo) {
    return deblock(pDeblockInfo, 3);
}

}  // namespace zan::ZAN_PATH
