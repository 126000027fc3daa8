// H.264 deblocking of one macroblock's edges, in place.
//
// The scalar rules below define every result: the line filters of the
// standard's loop filter and, per form, which lines take the strong path.
// The vector kernels run 8 lines at a time in 16-bit lanes (8-bit samples)
// or 4 lines at a time in 32-bit lanes (16-bit samples); vertical edges are
// transposed into registers and back.
#include "h264/h264deblock.h"

#include <cstddef>
#include <cstring>

#include "common/simd.h"
#include "frame/bodies.h"

namespace zan::ZAN_PATH::h264deblock {
namespace {

using namespace zan::h264deblock;

enum Mode { kSkip = 0, kNormal = 1, kStrong = 2 };

inline Zan32u word_at(const Zan8u* p) {
    Zan32u w;
    std::memcpy(&w, p, 4);
    return w;
}

// Largest sample value of a bit depth: depths above 16 count as 16, depths
// below 1 leave only 0.
inline Zan32s max_sample(Zan32s bitDepth) {
    if (bitDepth >= 16) return 65535;
    if (bitDepth < 1) return 0;
    return (1 << bitDepth) - 1;
}

// ============================================================ scalar rules

inline Zan32s absdiff(Zan32s a, Zan32s b) { return a > b ? a - b : b - a; }
inline Zan32s clamp3(Zan32s lo, Zan32s hi, Zan32s v) { return v < lo ? lo : v > hi ? hi : v; }

// One line across a luma edge; q points at q0, a is the distance (in
// samples) from one sample to the next across the edge.
template <class T>
void luma_line(T* q, ptrdiff_t a, int mode, Zan64s alpha, Zan64s beta, Zan32s tc0, Zan32s maxv) {
    const Zan32s p0 = q[-a], p1 = q[-2 * a], p2 = q[-3 * a], p3 = q[-4 * a];
    const Zan32s q0 = q[0], q1 = q[a], q2 = q[2 * a], q3 = q[3 * a];
    if (!(absdiff(p0, q0) < alpha && absdiff(p1, p0) < beta && absdiff(q1, q0) < beta)) return;
    const bool ap = absdiff(p2, p0) < beta, aq = absdiff(q2, q0) < beta;
    if (mode == kNormal) {
        const Zan32s tc = tc0 + (ap ? 1 : 0) + (aq ? 1 : 0);
        const Zan32s delta = clamp3(-tc, tc, ((q0 - p0) * 4 + (p1 - q1) + 4) >> 3);
        q[-a] = static_cast<T>(clamp3(0, maxv, p0 + delta));
        q[0] = static_cast<T>(clamp3(0, maxv, q0 - delta));
        const Zan32s avg = (p0 + q0 + 1) >> 1;
        if (ap) q[-2 * a] = static_cast<T>(p1 + clamp3(-tc0, tc0, (p2 + avg - 2 * p1) >> 1));
        if (aq) q[a] = static_cast<T>(q1 + clamp3(-tc0, tc0, (q2 + avg - 2 * q1) >> 1));
        return;
    }
    const bool near = absdiff(p0, q0) < (alpha >> 2) + 2;
    if (ap && near) {
        q[-a] = static_cast<T>((p2 + 2 * p1 + 2 * p0 + 2 * q0 + q1 + 4) >> 3);
        q[-2 * a] = static_cast<T>((p2 + p1 + p0 + q0 + 2) >> 2);
        q[-3 * a] = static_cast<T>((2 * p3 + 3 * p2 + p1 + p0 + q0 + 4) >> 3);
    } else {
        q[-a] = static_cast<T>((2 * p1 + p0 + q1 + 2) >> 2);
    }
    if (aq && near) {
        q[0] = static_cast<T>((p1 + 2 * p0 + 2 * q0 + 2 * q1 + q2 + 4) >> 3);
        q[a] = static_cast<T>((p0 + q0 + q1 + q2 + 2) >> 2);
        q[2 * a] = static_cast<T>((2 * q3 + 3 * q2 + q1 + q0 + p0 + 4) >> 3);
    } else {
        q[0] = static_cast<T>((2 * q1 + q0 + p1 + 2) >> 2);
    }
}

// One line across a chroma edge: only p0 and q0 change.
template <class T>
void chroma_line(T* q, ptrdiff_t a, int mode, Zan64s alpha, Zan64s beta, Zan32s tc0, Zan32s maxv) {
    const Zan32s p0 = q[-a], p1 = q[-2 * a], q0 = q[0], q1 = q[a];
    if (!(absdiff(p0, q0) < alpha && absdiff(p1, p0) < beta && absdiff(q1, q0) < beta)) return;
    if (mode == kNormal) {
        const Zan32s tc = tc0 + 1;
        const Zan32s delta = clamp3(-tc, tc, ((q0 - p0) * 4 + (p1 - q1) + 4) >> 3);
        q[-a] = static_cast<T>(clamp3(0, maxv, p0 + delta));
        q[0] = static_cast<T>(clamp3(0, maxv, q0 - delta));
    } else {
        q[-a] = static_cast<T>((2 * p1 + p0 + q1 + 2) >> 2);
        q[0] = static_cast<T>((2 * q1 + q0 + p1 + 2) >> 2);
    }
}

// The shape of one form's edges.
struct Shape {
    bool vertical;
    int edges;      // edges per call
    int spacing;    // samples between edges
    int lines;      // lines along an edge
    int channels;   // 1, or 2 for interleaved U and V
    int bsStride;   // bytes of pBS between edges
};

// Runs every edge of a form: mode(e, line) says how a line is filtered,
// tc0(e, line, c) and alpha(e, c), beta(e, c) give its values.  An edge whose
// four bS bytes are all zero is not read.
template <class T, bool Luma, class ModeFn, class TcFn, class AlphaFn, class BetaFn>
void rule_edges(T* base, Zan32s step, const Shape& s, const Zan8u* pBS, ModeFn mode, TcFn tc0, AlphaFn alpha,
                BetaFn beta, Zan32s maxv) {
    const ptrdiff_t st = step;
    for (int e = 0; e < s.edges; ++e) {
        if (word_at(pBS + s.bsStride * e) == 0) continue;
        for (int line = 0; line < s.lines; ++line) {
            const int m = mode(e, line);
            if (m == kSkip) continue;
            for (int c = 0; c < s.channels; ++c) {
                const ptrdiff_t off = e * s.spacing;
                T* q = s.vertical ? base + line * st + off * s.channels + c : base + off * st + line * s.channels + c;
                const ptrdiff_t a = s.vertical ? s.channels : st;
                if constexpr (Luma)
                    luma_line(q, a, m, alpha(e, c), beta(e, c), tc0(e, line, c), maxv);
                else
                    chroma_line(q, a, m, alpha(e, c), beta(e, c), tc0(e, line, c), maxv);
            }
        }
    }
}

// Line modes.  Each segment by itself: 4 strong, other non-zero normal.
inline int own_mode(Zan8u bs) { return bs == 4 ? kStrong : bs ? kNormal : kSkip; }
// A group that is all 4 goes strong; otherwise normal wherever bS is non-zero.
inline int group_mode(bool allFour, Zan8u bs) { return allFour ? kStrong : bs ? kNormal : kSkip; }

constexpr Shape kLumaShape(bool v) { return {v, 4, 4, 16, 1, 4}; }
constexpr Shape kChromaShape(bool v, int ch) { return {v, 2, 4, 8, ch, 8}; }
constexpr Shape k422VerShape{true, 2, 4, 16, 1, 8};
constexpr Shape k422HorShape{false, 4, 4, 8, 1, 4};

template <bool V>
void luma8_rule(Zan8u* p, Zan32s step, const Zan8u* pA, const Zan8u* pB, const Zan8u* pT, const Zan8u* pBS) {
    rule_edges<Zan8u, true>(
        p, step, kLumaShape(V), pBS,
        [&](int e, int line) {
            const Zan8u* b = pBS + 4 * e + 2 * (line >> 3);
            return group_mode(b[0] == 4 && b[1] == 4, pBS[4 * e + (line >> 2)]);
        },
        [&](int e, int line, int) { return Zan32s{pT[4 * e + (line >> 2)]}; },
        [&](int e, int) { return Zan64s{pA[e ? 1 : 0]}; }, [&](int e, int) { return Zan64s{pB[e ? 1 : 0]}; }, 255);
}

// 4:2:0 chroma, one plane or two interleaved (same or own thresholds).
template <bool V, int Ch, bool Own>
void chroma8_rule(Zan8u* p, Zan32s step, const Zan8u* pA, const Zan8u* pB, const Zan8u* pT, const Zan8u* pBS) {
    rule_edges<Zan8u, false>(
        p, step, kChromaShape(V, Ch), pBS,
        [&](int e, int line) { return group_mode(word_at(pBS + 8 * e) == 0x04040404u, pBS[8 * e + (line >> 1)]); },
        [&](int e, int line, int c) { return Zan32s{pT[(Own ? 8 * c : 0) + 4 * e + (line >> 1)]}; },
        [&](int e, int c) { return Zan64s{pA[Own ? 2 * e + c : e]}; },
        [&](int e, int c) { return Zan64s{pB[Own ? 2 * e + c : e]}; }, 255);
}

void chroma422ver8_rule(Zan8u* p, Zan32s step, const Zan8u* pA, const Zan8u* pB, const Zan8u* pT,
                        const Zan8u* pBS) {
    rule_edges<Zan8u, false>(
        p, step, k422VerShape, pBS, [&](int e, int line) { return own_mode(pBS[8 * e + (line >> 2)]); },
        [&](int e, int line, int) { return Zan32s{pT[4 * e + (line >> 2)]}; },
        [&](int e, int) { return Zan64s{pA[e]}; }, [&](int e, int) { return Zan64s{pB[e]}; }, 255);
}

// The first bS of an edge decides: 4 sends all 8 columns the strong way.
void chroma422hor8_rule(Zan8u* p, Zan32s step, const Zan8u* pA, const Zan8u* pB, const Zan8u* pT,
                        const Zan8u* pBS) {
    rule_edges<Zan8u, false>(
        p, step, k422HorShape, pBS,
        [&](int e, int line) { return pBS[4 * e] == 4 ? int{kStrong} : pBS[4 * e + (line >> 1)] ? kNormal : kSkip; },
        [&](int e, int line, int) { return Zan32s{pT[4 * e + (line >> 1)]}; },
        [&](int e, int) { return Zan64s{pA[e ? 1 : 0]}; }, [&](int e, int) { return Zan64s{pB[e ? 1 : 0]}; }, 255);
}

// MBAFF left edge: luma 8 lines (bS index line >> 1), chroma 4 (index line).
template <bool Luma>
void mbaff8_rule(Zan8u* p, Zan32s step, Zan32u alpha, Zan32u beta, const Zan8u* pT, const Zan8u* pBS) {
    if (alpha == 0 || word_at(pBS) == 0) return;
    constexpr int sh = Luma ? 1 : 0;
    rule_edges<Zan8u, Luma>(
        p, step, Shape{true, 1, 0, Luma ? 8 : 4, 1, 0}, pBS,
        [&](int, int line) { return own_mode(pBS[line >> sh]); },
        [&](int, int line, int) { return Zan32s{pT[line >> sh]}; }, [&](int, int) { return Zan64s{alpha}; },
        [&](int, int) { return Zan64s{beta}; }, 255);
}

// 16-bit forms: every segment by itself.
template <bool V>
void luma16_rule(Zan16u* p, Zan32s step, const Zan16u* pA, const Zan16u* pB, const Zan16u* pT, const Zan8u* pBS,
                 Zan32s bitDepth) {
    rule_edges<Zan16u, true>(
        p, step, kLumaShape(V), pBS, [&](int e, int line) { return own_mode(pBS[4 * e + (line >> 2)]); },
        [&](int e, int line, int) { return Zan32s{pT[4 * e + (line >> 2)]}; },
        [&](int e, int) { return Zan64s{pA[e ? 1 : 0]}; }, [&](int e, int) { return Zan64s{pB[e ? 1 : 0]}; },
        max_sample(bitDepth));
}

template <bool V>
void chroma16_rule(Zan16u* p, Zan32s step, const Zan16u* pA, const Zan16u* pB, const Zan16u* pT,
                   const Zan8u* pBS, Zan32s bitDepth) {
    rule_edges<Zan16u, false>(
        p, step, kChromaShape(V, 1), pBS, [&](int e, int line) { return own_mode(pBS[8 * e + (line >> 1)]); },
        [&](int e, int line, int) { return Zan32s{pT[4 * e + (line >> 1)]}; },
        [&](int e, int) { return Zan64s{pA[e]}; }, [&](int e, int) { return Zan64s{pB[e]}; }, max_sample(bitDepth));
}

void chroma422ver16_rule(Zan16u* p, Zan32s step, const Zan16u* pA, const Zan16u* pB, const Zan16u* pT,
                         const Zan8u* pBS, Zan32s bitDepth) {
    rule_edges<Zan16u, false>(
        p, step, k422VerShape, pBS, [&](int e, int line) { return own_mode(pBS[8 * e + (line >> 2)]); },
        [&](int e, int line, int) { return Zan32s{pT[4 * e + (line >> 2)]}; },
        [&](int e, int) { return Zan64s{pA[e]}; }, [&](int e, int) { return Zan64s{pB[e]}; }, max_sample(bitDepth));
}

void chroma422hor16_rule(Zan16u* p, Zan32s step, const Zan16u* pA, const Zan16u* pB, const Zan16u* pT,
                         const Zan8u* pBS, Zan32s bitDepth) {
    rule_edges<Zan16u, false>(
        p, step, k422HorShape, pBS, [&](int e, int line) { return own_mode(pBS[4 * e + (line >> 1)]); },
        [&](int e, int line, int) { return Zan32s{pT[4 * e + (line >> 1)]}; },
        [&](int e, int) { return Zan64s{pA[e ? 1 : 0]}; }, [&](int e, int) { return Zan64s{pB[e ? 1 : 0]}; },
        max_sample(bitDepth));
}

template <bool Luma>
void mbaff16_rule(Zan16u* p, Zan32s step, const Zan16u* pA, const Zan16u* pB, const Zan16u* pT, const Zan8u* pBS,
                  Zan32s bitDepth) {
    if (pA[0] == 0 || word_at(pBS) == 0) return;
    constexpr int sh = Luma ? 1 : 0;
    rule_edges<Zan16u, Luma>(
        p, step, Shape{true, 1, 0, Luma ? 8 : 4, 1, 0}, pBS,
        [&](int, int line) { return own_mode(pBS[line >> sh]); },
        [&](int, int line, int) { return Zan32s{pT[line >> sh]}; }, [&](int, int) { return Zan64s{pA[0]}; },
        [&](int, int) { return Zan64s{pB[0]}; }, max_sample(bitDepth));
}

// ========================================================== vector kernels

// Lane arithmetic: W16 holds 8 lines in 16-bit lanes (8-bit samples, whose
// sums stay far inside int16), W32 holds 4 lines in 32-bit lanes (16-bit
// samples).  SSE2 has no 32-bit min and max; they go by compare and select.
inline __m128i sel(__m128i m, __m128i a, __m128i b) { return _mm_or_si128(_mm_and_si128(m, a), _mm_andnot_si128(m, b)); }

struct W16 {
    static __m128i add(__m128i a, __m128i b) { return _mm_add_epi16(a, b); }
    static __m128i sub(__m128i a, __m128i b) { return _mm_sub_epi16(a, b); }
    template <int N> static __m128i sra(__m128i a) { return _mm_srai_epi16(a, N); }
    template <int N> static __m128i sll(__m128i a) { return _mm_slli_epi16(a, N); }
    static __m128i gt(__m128i a, __m128i b) { return _mm_cmpgt_epi16(a, b); }
    static __m128i eq(__m128i a, __m128i b) { return _mm_cmpeq_epi16(a, b); }
    static __m128i min(__m128i a, __m128i b) { return _mm_min_epi16(a, b); }
    static __m128i max(__m128i a, __m128i b) { return _mm_max_epi16(a, b); }
    static __m128i set1(Zan32s v) { return _mm_set1_epi16(static_cast<short>(v)); }
};

struct W32 {
    static __m128i add(__m128i a, __m128i b) { return _mm_add_epi32(a, b); }
    static __m128i sub(__m128i a, __m128i b) { return _mm_sub_epi32(a, b); }
    template <int N> static __m128i sra(__m128i a) { return _mm_srai_epi32(a, N); }
    template <int N> static __m128i sll(__m128i a) { return _mm_slli_epi32(a, N); }
    static __m128i gt(__m128i a, __m128i b) { return _mm_cmpgt_epi32(a, b); }
    static __m128i eq(__m128i a, __m128i b) { return _mm_cmpeq_epi32(a, b); }
    static __m128i min(__m128i a, __m128i b) { return sel(_mm_cmpgt_epi32(a, b), b, a); }
    static __m128i max(__m128i a, __m128i b) { return sel(_mm_cmpgt_epi32(a, b), a, b); }
    static __m128i set1(Zan32s v) { return _mm_set1_epi32(v); }
};

// Per-lane values of one group of lines.  normal and strong are lane masks
// of the lines that take each path (none of a line: it is left alone).
struct Params {
    __m128i alpha, beta, tc0, normal, strong, maxv;
};

template <class W>
inline __m128i absd(__m128i a, __m128i b) {
    return W::max(W::sub(a, b), W::sub(b, a));
}
template <class W>
inline __m128i clip(__m128i v, __m128i lo, __m128i hi) {
    return W::min(W::max(v, lo), hi);
}

// Lines that pass |p0-q0| < alpha, |p1-p0| < beta, |q1-q0| < beta.
template <class W>
inline __m128i pass_mask(__m128i p1, __m128i p0, __m128i q0, __m128i q1, const Params& pr, __m128i ad) {
    return _mm_and_si128(W::gt(pr.alpha, ad),
                         _mm_and_si128(W::gt(pr.beta, absd<W>(p1, p0)), W::gt(pr.beta, absd<W>(q1, q0))));
}

// The normal-path delta, clamped to +-tc.
template <class W>
inline __m128i delta_of(__m128i p1, __m128i p0, __m128i q0, __m128i q1, __m128i tc) {
    __m128i d = W::template sra<3>(W::add(W::add(W::template sll<2>(W::sub(q0, p0)), W::sub(p1, q1)), W::set1(4)));
    return W::min(W::max(d, W::sub(_mm_setzero_si128(), tc)), tc);
}

// Luma line filter on every lane.  Clamp: clamp p0 and q0 of the normal path
// to 0..maxv here (the 8-bit kernels leave it to the saturating pack).  A
// path no lane takes is not computed.
template <class W, bool Clamp>
inline void luma_lanes(__m128i p3, __m128i& p2, __m128i& p1, __m128i& p0, __m128i& q0, __m128i& q1, __m128i& q2,
                       __m128i q3, const Params& pr) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i ad = absd<W>(p0, q0);
    const __m128i pass = pass_mask<W>(p1, p0, q0, q1, pr, ad);
    const __m128i ap = W::gt(pr.beta, absd<W>(p2, p0)), aq = W::gt(pr.beta, absd<W>(q2, q0));
    __m128i o2 = p2, o1 = p1, o0 = p0, r0 = q0, r1 = q1, r2 = q2;

    if (_mm_movemask_epi8(pr.normal)) {
        const __m128i nm = _mm_and_si128(pass, pr.normal);
        const __m128i tc = W::sub(W::sub(pr.tc0, ap), aq);
        const __m128i d = delta_of<W>(p1, p0, q0, q1, tc);
        __m128i np0 = W::add(p0, d), nq0 = W::sub(q0, d);
        if constexpr (Clamp) {
            np0 = clip<W>(np0, zero, pr.maxv);
            nq0 = clip<W>(nq0, zero, pr.maxv);
        }
        const __m128i avg = W::template sra<1>(W::add(W::add(p0, q0), W::set1(1)));
        const __m128i ntc0 = W::sub(zero, pr.tc0);
        const __m128i dp1 =
            clip<W>(W::template sra<1>(W::sub(W::add(p2, avg), W::template sll<1>(p1))), ntc0, pr.tc0);
        const __m128i dq1 =
            clip<W>(W::template sra<1>(W::sub(W::add(q2, avg), W::template sll<1>(q1))), ntc0, pr.tc0);
        o0 = sel(nm, np0, o0);
        r0 = sel(nm, nq0, r0);
        o1 = W::add(o1, _mm_and_si128(dp1, _mm_and_si128(ap, nm)));
        r1 = W::add(r1, _mm_and_si128(dq1, _mm_and_si128(aq, nm)));
    }

    if (_mm_movemask_epi8(pr.strong)) {
        const __m128i sm = _mm_and_si128(pass, pr.strong);
        const __m128i near = W::gt(W::add(W::template sra<2>(pr.alpha), W::set1(2)), ad);
        const __m128i pl = _mm_and_si128(_mm_and_si128(ap, near), sm);
        const __m128i ql = _mm_and_si128(_mm_and_si128(aq, near), sm);
        const __m128i two = W::set1(2), four = W::set1(4);
        const __m128i pq = W::add(p0, q0);
        const __m128i p1pq = W::add(p1, pq), q1pq = W::add(q1, pq);  // p1 + p0 + q0, q1 + p0 + q0
        const __m128i sp1 = W::template sra<2>(W::add(W::add(p2, p1pq), two));
        const __m128i sq1 = W::template sra<2>(W::add(W::add(q2, q1pq), two));
        // p2 + 2 p1 + 2 p0 + 2 q0 + q1 + 4 = p2 + 2 (p1 + p0 + q0) + q1 + 4
        const __m128i sp0 = W::template sra<3>(W::add(W::add(p2, W::template sll<1>(p1pq)), W::add(q1, four)));
        const __m128i sq0 = W::template sra<3>(W::add(W::add(q2, W::template sll<1>(q1pq)), W::add(p1, four)));
        // 2 p3 + 3 p2 + p1 + p0 + q0 + 4
        const __m128i sp2 =
            W::template sra<3>(W::add(W::add(W::template sll<1>(W::add(p3, p2)), p2), W::add(p1pq, four)));
        const __m128i sq2 =
            W::template sra<3>(W::add(W::add(W::template sll<1>(W::add(q3, q2)), q2), W::add(q1pq, four)));
        const __m128i wp0 = W::template sra<2>(W::add(W::add(W::template sll<1>(p1), p0), W::add(q1, two)));
        const __m128i wq0 = W::template sra<2>(W::add(W::add(W::template sll<1>(q1), q0), W::add(p1, two)));
        o0 = sel(sm, sel(pl, sp0, wp0), o0);
        r0 = sel(sm, sel(ql, sq0, wq0), r0);
        o1 = sel(pl, sp1, o1);
        r1 = sel(ql, sq1, r1);
        o2 = sel(pl, sp2, o2);
        r2 = sel(ql, sq2, r2);
    }
    p2 = o2;
    p1 = o1;
    p0 = o0;
    q0 = r0;
    q1 = r1;
    q2 = r2;
}

// Chroma line filter on every lane: only p0 and q0 change.
template <class W, bool Clamp>
inline void chroma_lanes(__m128i p1, __m128i& p0, __m128i& q0, __m128i q1, const Params& pr) {
    const __m128i zero = _mm_setzero_si128(), two = W::set1(2);
    const __m128i pass = pass_mask<W>(p1, p0, q0, q1, pr, absd<W>(p0, q0));
    __m128i o0 = p0, r0 = q0;
    if (_mm_movemask_epi8(pr.normal)) {
        const __m128i nm = _mm_and_si128(pass, pr.normal);
        const __m128i d = delta_of<W>(p1, p0, q0, q1, W::add(pr.tc0, W::set1(1)));
        __m128i np0 = W::add(p0, d), nq0 = W::sub(q0, d);
        if constexpr (Clamp) {
            np0 = clip<W>(np0, zero, pr.maxv);
            nq0 = clip<W>(nq0, zero, pr.maxv);
        }
        o0 = sel(nm, np0, o0);
        r0 = sel(nm, nq0, r0);
    }
    if (_mm_movemask_epi8(pr.strong)) {
        const __m128i sm = _mm_and_si128(pass, pr.strong);
        const __m128i sp0 = W::template sra<2>(W::add(W::add(W::template sll<1>(p1), p0), W::add(q1, two)));
        const __m128i sq0 = W::template sra<2>(W::add(W::add(W::template sll<1>(q1), q0), W::add(p1, two)));
        o0 = sel(sm, sp0, o0);
        r0 = sel(sm, sq0, r0);
    }
    p0 = o0;
    q0 = r0;
}

// ---- lane values from bytes (16-bit lanes)

inline __m128i ones() { return _mm_set1_epi32(-1); }
// Two bytes, each for 4 lanes.
inline __m128i expand4(const Zan8u* b) {
    __m128i v = _mm_cvtsi32_si128(b[0] | (b[1] << 8));
    v = _mm_unpacklo_epi8(v, _mm_setzero_si128());
    v = _mm_unpacklo_epi16(v, v);
    return _mm_unpacklo_epi32(v, v);
}
// Four bytes, each for 2 lanes.
inline __m128i expand2(const Zan8u* b) {
    __m128i v = _mm_unpacklo_epi8(simd::load4(b), _mm_setzero_si128());
    return _mm_unpacklo_epi16(v, v);
}
// Four bytes for lanes 0..3; lanes 4..7 zero.
inline __m128i expand1(const Zan8u* b) { return _mm_unpacklo_epi8(simd::load4(b), _mm_setzero_si128()); }

// Lane masks from per-lane bS: the whole group strong, or normal wherever
// bS is non-zero.
template <class W>
inline void group_masks(Params& pr, bool allStrong, __m128i bs) {
    if (allStrong) {
        pr.strong = ones();
        pr.normal = _mm_setzero_si128();
    } else {
        pr.strong = _mm_setzero_si128();
        pr.normal = _mm_andnot_si128(W::eq(bs, _mm_setzero_si128()), ones());
    }
}
// Each lane by its own bS: 4 strong, other non-zero normal.
template <class W>
inline void own_masks(Params& pr, __m128i bs) {
    pr.strong = W::eq(bs, W::set1(4));
    pr.normal = _mm_andnot_si128(_mm_or_si128(pr.strong, W::eq(bs, _mm_setzero_si128())), ones());
}

inline Params params16(Zan32s alpha, Zan32s beta) {
    Params pr;
    pr.alpha = _mm_set1_epi16(static_cast<short>(alpha));
    pr.beta = _mm_set1_epi16(static_cast<short>(beta));
    pr.maxv = _mm_set1_epi16(255);
    return pr;
}

// ---- 8-bit loads and stores

inline void store_hi8(void* p, __m128i v) { _mm_storeh_pi(static_cast<__m64*>(p), _mm_castsi128_ps(v)); }

// Columns of an 8x8 byte block from four vectors of row pairs (a[k]: rows 2k
// and 2k+1 interleaved byte by byte).  Returns x[k] = column 2k | column 2k+1.
inline void transpose_pairs(__m128i a0, __m128i a1, __m128i a2, __m128i a3, __m128i x[4]) {
    const __m128i b0 = _mm_unpacklo_epi16(a0, a1), b1 = _mm_unpackhi_epi16(a0, a1);
    const __m128i b2 = _mm_unpacklo_epi16(a2, a3), b3 = _mm_unpackhi_epi16(a2, a3);
    x[0] = _mm_unpacklo_epi32(b0, b2);
    x[1] = _mm_unpackhi_epi32(b0, b2);
    x[2] = _mm_unpacklo_epi32(b1, b3);
    x[3] = _mm_unpackhi_epi32(b1, b3);
}

// 8 rows of 8 bytes at p -> 8 columns in 16-bit lanes (lane = row).
inline void load_cols8(const Zan8u* p, ptrdiff_t st, __m128i c[8]) {
    using simd::load8;
    __m128i x[4];
    transpose_pairs(_mm_unpacklo_epi8(load8(p), load8(p + st)), _mm_unpacklo_epi8(load8(p + 2 * st), load8(p + 3 * st)),
                    _mm_unpacklo_epi8(load8(p + 4 * st), load8(p + 5 * st)),
                    _mm_unpacklo_epi8(load8(p + 6 * st), load8(p + 7 * st)), x);
    const __m128i z = _mm_setzero_si128();
    for (int k = 0; k < 4; ++k) {
        c[2 * k] = _mm_unpacklo_epi8(x[k], z);
        c[2 * k + 1] = _mm_unpackhi_epi8(x[k], z);
    }
}

// The inverse: 8 columns (saturated to bytes) back into 8 rows of 8 bytes.
inline void store_cols8(Zan8u* p, ptrdiff_t st, const __m128i c[8]) {
    __m128i a[4];
    for (int k = 0; k < 4; ++k) {
        const __m128i x = _mm_packus_epi16(c[2 * k], c[2 * k + 1]);
        a[k] = _mm_unpacklo_epi8(x, _mm_srli_si128(x, 8));
    }
    __m128i r[4];
    transpose_pairs(a[0], a[1], a[2], a[3], r);
    for (int k = 0; k < 4; ++k) {
        simd::store8(p + 2 * k * st, r[k]);
        store_hi8(p + (2 * k + 1) * st, r[k]);
    }
}

// Rows rows (8, or 4 for the MBAFF chroma edge) of 4 bytes at p -> 4
// columns in 16-bit lanes; lanes past rows are zero and are not stored.
template <int Rows>
inline void load_cols4(const Zan8u* p, ptrdiff_t st, __m128i c[4]) {
    __m128i r[8];
    for (int k = 0; k < 8; ++k) r[k] = k < Rows ? simd::load4(p + k * st) : _mm_setzero_si128();
    const __m128i b0 = _mm_unpacklo_epi16(_mm_unpacklo_epi8(r[0], r[1]), _mm_unpacklo_epi8(r[2], r[3]));
    const __m128i b2 = _mm_unpacklo_epi16(_mm_unpacklo_epi8(r[4], r[5]), _mm_unpacklo_epi8(r[6], r[7]));
    const __m128i x0 = _mm_unpacklo_epi32(b0, b2), x1 = _mm_unpackhi_epi32(b0, b2);
    const __m128i z = _mm_setzero_si128();
    c[0] = _mm_unpacklo_epi8(x0, z);
    c[1] = _mm_unpackhi_epi8(x0, z);
    c[2] = _mm_unpacklo_epi8(x1, z);
    c[3] = _mm_unpackhi_epi8(x1, z);
}

inline void store4(void* p, __m128i v) {
    const Zan32s w = _mm_cvtsi128_si32(v);
    std::memcpy(p, &w, 4);
}

template <int Rows>
inline void store_cols4(Zan8u* p, ptrdiff_t st, const __m128i c[4]) {
    const __m128i x0 = _mm_packus_epi16(c[0], c[1]), x1 = _mm_packus_epi16(c[2], c[3]);
    const __m128i a0 = _mm_unpacklo_epi8(x0, _mm_srli_si128(x0, 8));
    const __m128i a1 = _mm_unpacklo_epi8(x1, _mm_srli_si128(x1, 8));
    __m128i lo = _mm_unpacklo_epi16(a0, a1), hi = _mm_unpackhi_epi16(a0, a1);
    for (int k = 0; k < 4; ++k) {
        store4(p + k * st, lo);
        lo = _mm_srli_si128(lo, 4);
    }
    if constexpr (Rows == 8)
        for (int k = 4; k < 8; ++k) {
            store4(p + k * st, hi);
            hi = _mm_srli_si128(hi, 4);
        }
}

inline __m128i load_row8(const Zan8u* p) { return _mm_unpacklo_epi8(simd::load8(p), _mm_setzero_si128()); }
inline void store_row8(Zan8u* p, __m128i v) { simd::store8(p, _mm_packus_epi16(v, v)); }

// ---- 8-bit kernels

// 8 lines of a luma edge at q (q0 of the first line); a: across, along: the
// distance between lines.
inline void luma8_ver_group(Zan8u* q, ptrdiff_t st, const Params& pr) {
    __m128i c[8];
    load_cols8(q - 4, st, c);
    luma_lanes<W16, false>(c[0], c[1], c[2], c[3], c[4], c[5], c[6], c[7], pr);
    store_cols8(q - 4, st, c);
}

inline void luma8_hor_group(Zan8u* q, ptrdiff_t st, const Params& pr) {
    const __m128i p3 = load_row8(q - 4 * st), q3 = load_row8(q + 3 * st);
    __m128i p2 = load_row8(q - 3 * st), p1 = load_row8(q - 2 * st), p0 = load_row8(q - st);
    __m128i q0 = load_row8(q), q1 = load_row8(q + st), q2 = load_row8(q + 2 * st);
    luma_lanes<W16, false>(p3, p2, p1, p0, q0, q1, q2, q3, pr);
    store_row8(q - 3 * st, p2);
    store_row8(q - 2 * st, p1);
    store_row8(q - st, p0);
    store_row8(q, q0);
    store_row8(q + st, q1);
    store_row8(q + 2 * st, q2);
}

// Each half of a luma edge (8 lines) by its pair of bS: both 4 strong,
// otherwise normal on the segments with a non-zero bS; all in 16-bit lanes.
template <bool V>
void luma8_simd(Zan8u* p, Zan32s step, const Zan8u* pA, const Zan8u* pB, const Zan8u* pT, const Zan8u* pBS) {
    const ptrdiff_t st = step;
    for (int e = 0; e < 4; ++e) {
        const Zan8u* bs = pBS + 4 * e;
        if (word_at(bs) == 0) continue;
        Params pr = params16(pA[e ? 1 : 0], pB[e ? 1 : 0]);
        for (int h = 0; h < 2; ++h) {
            const Zan32s pair = bs[2 * h] | (bs[2 * h + 1] << 8);
            if (pair == 0) continue;
            group_masks<W16>(pr, pair == 0x0404, expand4(bs + 2 * h));
            pr.tc0 = expand4(pT + 4 * e + 2 * h);
            if constexpr (V)
                luma8_ver_group(p + 8 * h * st + 4 * e, st, pr);
            else
                luma8_hor_group(p + 4 * e * st + 8 * h, st, pr);
        }
    }
}

// ---- 8-bit luma on 16 lines in bytes
//
// The normal path of a whole luma edge runs on 16 byte lanes with averages
// and saturating arithmetic, exact for tc0 up to 125 (tc then fits a signed
// byte); with larger tc0, and on the halves that go the strong way, the
// 16-bit lanes above do the work.

inline __m128i absdiff_u8(__m128i a, __m128i b) { return _mm_or_si128(_mm_subs_epu8(a, b), _mm_subs_epu8(b, a)); }
// Lanes where a < t: t - a saturates to zero exactly when a >= t.
inline __m128i below_u8(__m128i a, __m128i t) {
    return _mm_andnot_si128(_mm_cmpeq_epi8(_mm_subs_epu8(t, a), _mm_setzero_si128()), ones());
}
// floor((a + b) / 2).
inline __m128i avg_down_u8(__m128i a, __m128i b) {
    return _mm_sub_epi8(_mm_avg_epu8(a, b), _mm_and_si128(_mm_xor_si128(a, b), _mm_set1_epi8(1)));
}

// The normal luma path on 16 lanes (nm: lanes that pass and take it).
//   delta = floor((4 d + e + 4) / 8), d = q0 - p0, e = p1 - q1,
//         = floor(d / 2) + floor(((d & 1) + floor(e / 4) + 1) / 2),
// held as delta + 128 saturated to a byte, then split into its positive and
// negative parts and clipped to tc.  p1 moves to floor((p2 + avg(p0, q0)) / 2)
// by at most tc0.
inline void luma_normal_u8(__m128i p2, __m128i& p1, __m128i& p0, __m128i& q0, __m128i& q1, __m128i q2, __m128i nm,
                           __m128i ap, __m128i aq, __m128i tc0) {
    const __m128i k80 = _mm_set1_epi8(static_cast<char>(0x80)), k32 = _mm_set1_epi8(32), one = _mm_set1_epi8(1);
    const __m128i tc = _mm_sub_epi8(_mm_sub_epi8(tc0, ap), aq);
    const __m128i half = _mm_avg_epu8(q0, _mm_xor_si128(p0, ones()));       // floor(d / 2) + 128
    const __m128i e2 = _mm_avg_epu8(p1, _mm_xor_si128(q1, ones()));         // floor(e / 2) + 128
    const __m128i e4 = _mm_and_si128(_mm_srli_epi16(e2, 1), _mm_set1_epi8(0x7F));  // floor(e / 4) + 64
    const __m128i k = _mm_avg_epu8(e4, _mm_and_si128(_mm_xor_si128(q0, p0), one));  // second term + 32
    const __m128i biased = _mm_subs_epu8(_mm_adds_epu8(half, _mm_subs_epu8(k, k32)), _mm_subs_epu8(k32, k));
    const __m128i pos = _mm_and_si128(_mm_min_epu8(_mm_subs_epu8(biased, k80), tc), nm);
    const __m128i neg = _mm_and_si128(_mm_min_epu8(_mm_subs_epu8(k80, biased), tc), nm);
    const __m128i m = _mm_avg_epu8(p0, q0);
    const __m128i np1 = _mm_min_epu8(_mm_max_epu8(avg_down_u8(p2, m), _mm_subs_epu8(p1, tc0)), _mm_adds_epu8(p1, tc0));
    const __m128i nq1 = _mm_min_epu8(_mm_max_epu8(avg_down_u8(q2, m), _mm_subs_epu8(q1, tc0)), _mm_adds_epu8(q1, tc0));
    p1 = sel(_mm_and_si128(nm, ap), np1, p1);
    q1 = sel(_mm_and_si128(nm, aq), nq1, q1);
    p0 = _mm_subs_epu8(_mm_adds_epu8(p0, pos), neg);
    q0 = _mm_subs_epu8(_mm_adds_epu8(q0, neg), pos);
}

// True when an edge can take the byte path: no half goes the strong way and
// every tc0 is at most 125.
inline bool bytes_fit(const Zan8u* bs, const Zan8u* tc) {
    if ((bs[0] == 4 && bs[1] == 4) || (bs[2] == 4 && bs[3] == 4)) return false;
    return tc[0] <= 125 && tc[1] <= 125 && tc[2] <= 125 && tc[3] <= 125;
}

// The normal path of one luma edge of 16 lines on bytes, v[0..7] = p3..q3,
// bs and tc the edge's four (no half strong, tc0 up to 125).
[[gnu::always_inline]] inline void luma_edge_u8(__m128i v[8], Zan8u alpha, Zan8u beta, const Zan8u* bs,
                                                const Zan8u* tc) {
    __m128i b = simd::load4(bs);
    b = _mm_unpacklo_epi8(b, b);
    b = _mm_unpacklo_epi16(b, b);
    __m128i t = simd::load4(tc);
    t = _mm_unpacklo_epi8(t, t);
    t = _mm_unpacklo_epi16(t, t);
    const __m128i va = _mm_set1_epi8(static_cast<char>(alpha)), vb = _mm_set1_epi8(static_cast<char>(beta));
    const __m128i p2 = v[1], p0 = v[3], q0 = v[4], q2 = v[6];
    // A lane fails when bS is 0 or any of its three differences is not below its limit.
    const __m128i fail = _mm_cmpeq_epi8(
        _mm_min_epu8(_mm_min_epu8(_mm_subs_epu8(va, absdiff_u8(p0, q0)), _mm_subs_epu8(vb, absdiff_u8(v[2], p0))),
                     _mm_min_epu8(_mm_subs_epu8(vb, absdiff_u8(v[5], q0)), b)),
        _mm_setzero_si128());
    const __m128i nm = _mm_xor_si128(fail, ones());
    luma_normal_u8(p2, v[2], v[3], v[4], v[5], q2, nm, below_u8(absdiff_u8(p2, p0), vb),
                   below_u8(absdiff_u8(q2, q0), vb), t);
}

// 16 rows of 8 bytes at p -> 8 columns of 16 bytes (lane = row), and back.
inline void load_cols16(const Zan8u* p, ptrdiff_t st, __m128i c[8]) {
    using simd::load8;
    __m128i a[4], b[4];
    const Zan8u* r = p;
    transpose_pairs(_mm_unpacklo_epi8(load8(r), load8(r + st)), _mm_unpacklo_epi8(load8(r + 2 * st), load8(r + 3 * st)),
                    _mm_unpacklo_epi8(load8(r + 4 * st), load8(r + 5 * st)),
                    _mm_unpacklo_epi8(load8(r + 6 * st), load8(r + 7 * st)), a);
    r = p + 8 * st;
    transpose_pairs(_mm_unpacklo_epi8(load8(r), load8(r + st)), _mm_unpacklo_epi8(load8(r + 2 * st), load8(r + 3 * st)),
                    _mm_unpacklo_epi8(load8(r + 4 * st), load8(r + 5 * st)),
                    _mm_unpacklo_epi8(load8(r + 6 * st), load8(r + 7 * st)), b);
    for (int k = 0; k < 4; ++k) {
        c[2 * k] = _mm_unpacklo_epi64(a[k], b[k]);
        c[2 * k + 1] = _mm_unpackhi_epi64(a[k], b[k]);
    }
}

inline void store_cols16(Zan8u* p, ptrdiff_t st, const __m128i c[8]) {
    __m128i w[8];  // w[2k]: rows 0..7, w[2k+1]: rows 8..15, each a word of columns 2k, 2k+1
    for (int k = 0; k < 4; ++k) {
        w[2 * k] = _mm_unpacklo_epi8(c[2 * k], c[2 * k + 1]);
        w[2 * k + 1] = _mm_unpackhi_epi8(c[2 * k], c[2 * k + 1]);
    }
    for (int h = 0; h < 2; ++h) {
        const __m128i lo0 = _mm_unpacklo_epi16(w[h], w[2 + h]), hi0 = _mm_unpackhi_epi16(w[h], w[2 + h]);
        const __m128i lo1 = _mm_unpacklo_epi16(w[4 + h], w[6 + h]), hi1 = _mm_unpackhi_epi16(w[4 + h], w[6 + h]);
        const __m128i r[4] = {_mm_unpacklo_epi32(lo0, lo1), _mm_unpackhi_epi32(lo0, lo1), _mm_unpacklo_epi32(hi0, hi1),
                              _mm_unpackhi_epi32(hi0, hi1)};
        Zan8u* q = p + 8 * h * st;
        for (int k = 0; k < 4; ++k) {
            simd::store8(q + 2 * k * st, r[k]);
            store_hi8(q + (2 * k + 1) * st, r[k]);
        }
    }
}

// Edges with a strong half or a tc0 above 125 go through the 16-bit lanes,
// half by half, as luma8_simd does.
template <bool V>
void luma8_bytes_simd(Zan8u* p, Zan32s step, const Zan8u* pA, const Zan8u* pB, const Zan8u* pT,
                      const Zan8u* pBS) {
    const ptrdiff_t st = step;
    for (int e = 0; e < 4; ++e) {
        const Zan8u* bs = pBS + 4 * e;
        if (word_at(bs) == 0) continue;
        const Zan8u* tc = pT + 4 * e;
        const Zan8u alpha = pA[e ? 1 : 0], beta = pB[e ? 1 : 0];
        if (!bytes_fit(bs, tc)) {
            Params pr = params16(alpha, beta);
            for (int h = 0; h < 2; ++h) {
                const Zan32s pair = bs[2 * h] | (bs[2 * h + 1] << 8);
                if (pair == 0) continue;
                group_masks<W16>(pr, pair == 0x0404, expand4(bs + 2 * h));
                pr.tc0 = expand4(tc + 2 * h);
                if constexpr (V)
                    luma8_ver_group(p + 8 * h * st + 4 * e, st, pr);
                else
                    luma8_hor_group(p + 4 * e * st + 8 * h, st, pr);
            }
            continue;
        }
        __m128i v[8];
        if constexpr (V) {
            Zan8u* q = p + 4 * e - 4;
            load_cols16(q, st, v);
            luma_edge_u8(v, alpha, beta, bs, tc);
            store_cols16(q, st, v);
        } else {
            Zan8u* q = p + 4 * e * st;
            for (int k = 0; k < 8; ++k) v[k] = simd::load16(q + (k - 4) * st);
            luma_edge_u8(v, alpha, beta, bs, tc);
            for (int k = 1; k < 7; ++k) simd::store16(q + (k - 4) * st, v[k]);
        }
    }
}

// 4:2:0 chroma, one plane: 8 lines per edge, all four bS 4 strong.
template <bool V>
void chroma8_simd(Zan8u* p, Zan32s step, const Zan8u* pA, const Zan8u* pB, const Zan8u* pT, const Zan8u* pBS) {
    const ptrdiff_t st = step;
    for (int e = 0; e < 2; ++e) {
        const Zan32u w = word_at(pBS + 8 * e);
        if (w == 0) continue;
        Params pr = params16(pA[e], pB[e]);
        group_masks<W16>(pr, w == 0x04040404u, expand2(pBS + 8 * e));
        pr.tc0 = expand2(pT + 4 * e);
        if constexpr (V) {
            Zan8u* q = p + 4 * e - 2;
            __m128i c[4];
            load_cols4<8>(q, st, c);
            chroma_lanes<W16, false>(c[0], c[1], c[2], c[3], pr);
            store_cols4<8>(q, st, c);
        } else {
            Zan8u* q = p + 4 * e * st;
            const __m128i p1 = load_row8(q - 2 * st), q1 = load_row8(q + st);
            __m128i p0 = load_row8(q - st), q0 = load_row8(q);
            chroma_lanes<W16, false>(p1, p0, q0, q1, pr);
            store_row8(q - st, p0);
            store_row8(q, q0);
        }
    }
}

// 4:2:0 chroma, U and V interleaved.  Own: each with its own alpha, beta and
// tc0 (U outer, V outer, U inner, V inner; tc0 of V 8 bytes after U's).
template <bool Own>
inline Params chroma_c2_params(const Zan8u* pA, const Zan8u* pB, const Zan8u* pT, int e, int c) {
    const int i = Own ? 2 * e + c : e;
    Params pr = params16(pA[i], pB[i]);
    pr.tc0 = expand2(pT + (Own ? 8 * c : 0) + 4 * e);
    return pr;
}

template <bool V, bool Own>
void chroma8c2_simd(Zan8u* p, Zan32s step, const Zan8u* pA, const Zan8u* pB, const Zan8u* pT, const Zan8u* pBS) {
    const ptrdiff_t st = step;
    for (int e = 0; e < 2; ++e) {
        const Zan8u* bs = pBS + 8 * e;
        const Zan32u w = word_at(bs);
        if (w == 0) continue;
        const bool strong = w == 0x04040404u;
        if constexpr (V) {
            // Columns: U p1, V p1, U p0, V p0, U q0, V q0, U q1, V q1.
            Params pu = chroma_c2_params<Own>(pA, pB, pT, e, 0);
            group_masks<W16>(pu, strong, expand2(bs));
            Params pv = pu;
            if constexpr (Own) {
                pv = chroma_c2_params<Own>(pA, pB, pT, e, 1);
                pv.strong = pu.strong;
                pv.normal = pu.normal;
            }
            Zan8u* q = p + 8 * e - 4;
            __m128i c[8];
            load_cols8(q, st, c);
            chroma_lanes<W16, false>(c[0], c[2], c[4], c[6], pu);
            chroma_lanes<W16, false>(c[1], c[3], c[5], c[7], pv);
            store_cols8(q, st, c);
        } else {
            // Lanes are bytes of a row: U and V alternate, 4 lanes per segment.
            Zan8u* q = p + 4 * e * st;
            for (int g = 0; g < 2; ++g) {
                Params pr;
                if constexpr (Own) {
                    const int iu = 2 * e, iv = 2 * e + 1;
                    pr = params16(0, 0);
                    pr.alpha = _mm_unpacklo_epi16(_mm_set1_epi16(pA[iu]), _mm_set1_epi16(pA[iv]));
                    pr.beta = _mm_unpacklo_epi16(_mm_set1_epi16(pB[iu]), _mm_set1_epi16(pB[iv]));
                    const Zan8u* tu = pT + 4 * e + 2 * g;
                    const Zan8u* tv = tu + 8;
                    __m128i t = _mm_unpacklo_epi8(_mm_cvtsi32_si128(tu[0] | (tu[1] << 8)),
                                                  _mm_cvtsi32_si128(tv[0] | (tv[1] << 8)));
                    t = _mm_unpacklo_epi8(t, _mm_setzero_si128());
                    pr.tc0 = _mm_unpacklo_epi32(t, t);
                } else {
                    pr = params16(pA[e], pB[e]);
                    pr.tc0 = expand4(pT + 4 * e + 2 * g);
                }
                group_masks<W16>(pr, strong, expand4(bs + 2 * g));
                Zan8u* qg = q + 8 * g;
                const __m128i p1 = load_row8(qg - 2 * st), q1 = load_row8(qg + st);
                __m128i p0 = load_row8(qg - st), q0 = load_row8(qg);
                chroma_lanes<W16, false>(p1, p0, q0, q1, pr);
                store_row8(qg - st, p0);
                store_row8(qg, q0);
            }
        }
    }
}

// 4:2:2 chroma, vertical edges of 16 rows: each segment (4 rows) by its bS.
void chroma422ver8_simd(Zan8u* p, Zan32s step, const Zan8u* pA, const Zan8u* pB, const Zan8u* pT,
                        const Zan8u* pBS) {
    const ptrdiff_t st = step;
    for (int e = 0; e < 2; ++e) {
        const Zan8u* bs = pBS + 8 * e;
        if (word_at(bs) == 0) continue;
        Params pr = params16(pA[e], pB[e]);
        for (int h = 0; h < 2; ++h) {
            if ((bs[2 * h] | bs[2 * h + 1]) == 0) continue;
            own_masks<W16>(pr, expand4(bs + 2 * h));
            pr.tc0 = expand4(pT + 4 * e + 2 * h);
            Zan8u* q = p + 8 * h * st + 4 * e - 2;
            __m128i c[4];
            load_cols4<8>(q, st, c);
            chroma_lanes<W16, false>(c[0], c[1], c[2], c[3], pr);
            store_cols4<8>(q, st, c);
        }
    }
}

// 4:2:2 chroma, horizontal edges of 8 columns: the first bS decides strong.
void chroma422hor8_simd(Zan8u* p, Zan32s step, const Zan8u* pA, const Zan8u* pB, const Zan8u* pT,
                        const Zan8u* pBS) {
    const ptrdiff_t st = step;
    for (int e = 0; e < 4; ++e) {
        const Zan8u* bs = pBS + 4 * e;
        if (word_at(bs) == 0) continue;
        Params pr = params16(pA[e ? 1 : 0], pB[e ? 1 : 0]);
        group_masks<W16>(pr, bs[0] == 4, expand2(bs));
        pr.tc0 = expand2(pT + 4 * e);
        Zan8u* q = p + 4 * e * st;
        const __m128i p1 = load_row8(q - 2 * st), q1 = load_row8(q + st);
        __m128i p0 = load_row8(q - st), q0 = load_row8(q);
        chroma_lanes<W16, false>(p1, p0, q0, q1, pr);
        store_row8(q - st, p0);
        store_row8(q, q0);
    }
}

// MBAFF left edges.  Alpha and beta beyond what 8-bit samples can reach
// are cut to values that decide every comparison the same way.
template <bool Luma>
void mbaff8_simd(Zan8u* p, Zan32s step, Zan32u alpha, Zan32u beta, const Zan8u* pT, const Zan8u* pBS) {
    if (alpha == 0 || word_at(pBS) == 0) return;
    const ptrdiff_t st = step;
    Params pr = params16(static_cast<Zan32s>(alpha > 1023 ? 1023 : alpha), static_cast<Zan32s>(beta > 256 ? 256 : beta));
    if constexpr (Luma) {
        own_masks<W16>(pr, expand2(pBS));
        pr.tc0 = expand2(pT);
        luma8_ver_group(p, st, pr);
    } else {
        own_masks<W16>(pr, expand1(pBS));
        pr.tc0 = expand1(pT);
        __m128i c[4];
        load_cols4<4>(p - 2, st, c);
        chroma_lanes<W16, false>(c[0], c[1], c[2], c[3], pr);
        store_cols4<4>(p - 2, st, c);
    }
}

// ---- 16-bit kernels: 4 lines per group in 32-bit lanes

inline __m128i widen4(const Zan16u* p) { return _mm_unpacklo_epi16(simd::load8(p), _mm_setzero_si128()); }
// Two vectors of values 0..65535 in 32-bit lanes to 8 16-bit lanes.
inline __m128i narrow(__m128i a, __m128i b) {
    a = _mm_srai_epi32(_mm_slli_epi32(a, 16), 16);
    b = _mm_srai_epi32(_mm_slli_epi32(b, 16), 16);
    return _mm_packs_epi32(a, b);
}

// 4 rows of 8 samples at p -> 8 columns in 32-bit lanes.
inline void load_cols8x16(const Zan16u* p, ptrdiff_t st, __m128i c[8]) {
    const __m128i r0 = simd::load16(p), r1 = simd::load16(p + st), r2 = simd::load16(p + 2 * st),
                  r3 = simd::load16(p + 3 * st);
    const __m128i a0 = _mm_unpacklo_epi16(r0, r1), a1 = _mm_unpackhi_epi16(r0, r1);
    const __m128i a2 = _mm_unpacklo_epi16(r2, r3), a3 = _mm_unpackhi_epi16(r2, r3);
    const __m128i x[4] = {_mm_unpacklo_epi32(a0, a2), _mm_unpackhi_epi32(a0, a2), _mm_unpacklo_epi32(a1, a3),
                          _mm_unpackhi_epi32(a1, a3)};
    const __m128i z = _mm_setzero_si128();
    for (int k = 0; k < 4; ++k) {
        c[2 * k] = _mm_unpacklo_epi16(x[k], z);
        c[2 * k + 1] = _mm_unpackhi_epi16(x[k], z);
    }
}

inline void store_cols8x16(Zan16u* p, ptrdiff_t st, const __m128i c[8]) {
    __m128i y[4];
    for (int k = 0; k < 4; ++k) {
        const __m128i x = narrow(c[2 * k], c[2 * k + 1]);
        y[k] = _mm_unpacklo_epi16(x, _mm_srli_si128(x, 8));  // per row: column 2k, 2k+1
    }
    const __m128i z0 = _mm_unpacklo_epi32(y[0], y[1]), z1 = _mm_unpackhi_epi32(y[0], y[1]);
    const __m128i z2 = _mm_unpacklo_epi32(y[2], y[3]), z3 = _mm_unpackhi_epi32(y[2], y[3]);
    simd::store16(p, _mm_unpacklo_epi64(z0, z2));
    simd::store16(p + st, _mm_unpackhi_epi64(z0, z2));
    simd::store16(p + 2 * st, _mm_unpacklo_epi64(z1, z3));
    simd::store16(p + 3 * st, _mm_unpackhi_epi64(z1, z3));
}

// 4 rows of 4 samples at p -> 4 columns in 32-bit lanes.
inline void load_cols4x16(const Zan16u* p, ptrdiff_t st, __m128i c[4]) {
    const __m128i a0 = _mm_unpacklo_epi16(simd::load8(p), simd::load8(p + st));
    const __m128i a1 = _mm_unpacklo_epi16(simd::load8(p + 2 * st), simd::load8(p + 3 * st));
    const __m128i x0 = _mm_unpacklo_epi32(a0, a1), x1 = _mm_unpackhi_epi32(a0, a1);
    const __m128i z = _mm_setzero_si128();
    c[0] = _mm_unpacklo_epi16(x0, z);
    c[1] = _mm_unpackhi_epi16(x0, z);
    c[2] = _mm_unpacklo_epi16(x1, z);
    c[3] = _mm_unpackhi_epi16(x1, z);
}

inline void store_cols4x16(Zan16u* p, ptrdiff_t st, const __m128i c[4]) {
    const __m128i x0 = narrow(c[0], c[1]), x1 = narrow(c[2], c[3]);
    const __m128i y0 = _mm_unpacklo_epi16(x0, _mm_srli_si128(x0, 8));
    const __m128i y1 = _mm_unpacklo_epi16(x1, _mm_srli_si128(x1, 8));
    const __m128i z0 = _mm_unpacklo_epi32(y0, y1), z1 = _mm_unpackhi_epi32(y0, y1);
    simd::store8(p, z0);
    store_hi8(p + st, z0);
    simd::store8(p + 2 * st, z1);
    store_hi8(p + 3 * st, z1);
}

inline void store_row4x16(Zan16u* p, __m128i v) { simd::store8(p, narrow(v, v)); }

inline Params params32(Zan32s alpha, Zan32s beta, Zan32s maxv) {
    Params pr;
    pr.alpha = _mm_set1_epi32(alpha);
    pr.beta = _mm_set1_epi32(beta);
    pr.maxv = _mm_set1_epi32(maxv);
    return pr;
}
// Lane values of a group of 4 lines whose segments are s[0], s[1], s[2], s[3].
inline void lanes32(Params& pr, const Zan8u* bs, const Zan16u* tc, const int s[4]) {
    own_masks<W32>(pr, _mm_setr_epi32(bs[s[0]], bs[s[1]], bs[s[2]], bs[s[3]]));
    pr.tc0 = _mm_setr_epi32(tc[s[0]], tc[s[1]], tc[s[2]], tc[s[3]]);
}
constexpr int kOneSegment[4] = {0, 0, 0, 0};
constexpr int kTwoSegments[2][4] = {{0, 0, 1, 1}, {2, 2, 3, 3}};
constexpr int kFourSegments[4] = {0, 1, 2, 3};

inline void luma16_group(Zan16u* q, ptrdiff_t st, bool vertical, const Params& pr) {
    if (vertical) {
        __m128i c[8];
        load_cols8x16(q - 4, st, c);
        luma_lanes<W32, true>(c[0], c[1], c[2], c[3], c[4], c[5], c[6], c[7], pr);
        store_cols8x16(q - 4, st, c);
    } else {
        const __m128i p3 = widen4(q - 4 * st), q3 = widen4(q + 3 * st);
        __m128i p2 = widen4(q - 3 * st), p1 = widen4(q - 2 * st), p0 = widen4(q - st);
        __m128i q0 = widen4(q), q1 = widen4(q + st), q2 = widen4(q + 2 * st);
        luma_lanes<W32, true>(p3, p2, p1, p0, q0, q1, q2, q3, pr);
        store_row4x16(q - 3 * st, p2);
        store_row4x16(q - 2 * st, p1);
        store_row4x16(q - st, p0);
        store_row4x16(q, q0);
        store_row4x16(q + st, q1);
        store_row4x16(q + 2 * st, q2);
    }
}

inline void chroma16_group(Zan16u* q, ptrdiff_t st, bool vertical, const Params& pr) {
    if (vertical) {
        __m128i c[4];
        load_cols4x16(q - 2, st, c);
        chroma_lanes<W32, true>(c[0], c[1], c[2], c[3], pr);
        store_cols4x16(q - 2, st, c);
    } else {
        const __m128i p1 = widen4(q - 2 * st), q1 = widen4(q + st);
        __m128i p0 = widen4(q - st), q0 = widen4(q);
        chroma_lanes<W32, true>(p1, p0, q0, q1, pr);
        store_row4x16(q - st, p0);
        store_row4x16(q, q0);
    }
}

// ---- 16-bit samples up to 4095: 8 lines in 16-bit lanes
//
// With every sample read below 4096 the sums of the filters stay inside
// int16 (8 * 4095 + 4 at most), so 8 lines go at once.  Alpha, beta and tc0
// are cut to values that decide every comparison and clip the same way for
// such samples: alpha to 16380 ((16380 >> 2) + 2 = 4097), beta and tc0 to
// 4096.  A group with a larger sample goes the 32-bit way instead.

// Transposes an 8x8 block of 16-bit values in place.
inline void transpose8x8_16(__m128i r[8]) { simd::transpose8x8_epi16(r); }

inline Zan32s cut(Zan32s v, Zan32s most) { return v < most ? v : most; }

// Per-lane bS and tc0 of 8 lines whose segments span 4 lines (two
// segments) or 2 lines (four segments).
template <int LinesPerSegment>
inline void lanes16(Params& pr, const Zan8u* bs, const Zan16u* tc) {
    if constexpr (LinesPerSegment == 4) {
        own_masks<W16>(pr, expand4(bs));
        pr.tc0 = _mm_unpacklo_epi64(_mm_set1_epi16(static_cast<short>(cut(tc[0], 4096))),
                                    _mm_set1_epi16(static_cast<short>(cut(tc[1], 4096))));
    } else {
        own_masks<W16>(pr, expand2(bs));
        const short t0 = static_cast<short>(cut(tc[0], 4096)), t1 = static_cast<short>(cut(tc[1], 4096));
        const short t2 = static_cast<short>(cut(tc[2], 4096)), t3 = static_cast<short>(cut(tc[3], 4096));
        pr.tc0 = _mm_setr_epi16(t0, t0, t1, t1, t2, t2, t3, t3);
    }
}

inline Params params16n(Zan32s alpha, Zan32s beta, Zan32s maxv) {
    Params pr;
    pr.alpha = _mm_set1_epi16(static_cast<short>(cut(alpha, 16380)));
    pr.beta = _mm_set1_epi16(static_cast<short>(cut(beta, 4096)));
    pr.maxv = _mm_set1_epi16(static_cast<short>(cut(maxv, 32767)));
    return pr;
}

inline bool all_below_4096(const __m128i* v, int n) {
    __m128i o = v[0];
    for (int k = 1; k < n; ++k) o = _mm_or_si128(o, v[k]);
    return _mm_movemask_epi8(_mm_cmpeq_epi16(_mm_and_si128(o, _mm_set1_epi16(static_cast<short>(0xF000))),
                                             _mm_setzero_si128())) == 0xFFFF;
}

// 8 lines of a luma (Luma) or chroma edge at q; false, with nothing
// written, when a sample is 4096 or more.
template <bool Luma>
inline bool group8_16(Zan16u* q, ptrdiff_t st, bool vertical, const Params& pr) {
    constexpr int n = Luma ? 8 : 4, reach = n / 2;
    __m128i v[8];
    if (vertical) {
        for (int k = 0; k < 8; ++k)
            v[k] = Luma ? simd::load16(q - reach + k * st) : simd::load8(q - reach + k * st);
        transpose8x8_16(v);
    } else {
        for (int k = 0; k < n; ++k) v[k] = simd::load16(q + (k - reach) * st);
    }
    if (!all_below_4096(v, n)) return false;
    if constexpr (Luma)
        luma_lanes<W16, true>(v[0], v[1], v[2], v[3], v[4], v[5], v[6], v[7], pr);
    else
        chroma_lanes<W16, true>(v[0], v[1], v[2], v[3], pr);
    if (vertical) {
        if constexpr (!Luma)
            for (int k = 4; k < 8; ++k) v[k] = _mm_setzero_si128();
        transpose8x8_16(v);
        for (int k = 0; k < 8; ++k) {
            if constexpr (Luma)
                simd::store16(q - reach + k * st, v[k]);
            else
                simd::store8(q - reach + k * st, v[k]);
        }
    } else {
        for (int k = 1; k < (Luma ? 7 : 3); ++k) simd::store16(q + (k - reach) * st, v[k]);
    }
    return true;
}

// Address of line `line` of edge e (its q0): vertical edges step down rows.
inline Zan16u* at16(Zan16u* p, ptrdiff_t st, bool v, int e, int line) {
    return v ? p + line * st + 4 * e : p + 4 * e * st + line;
}

template <bool V>
void luma16_simd(Zan16u* p, Zan32s step, const Zan16u* pA, const Zan16u* pB, const Zan16u* pT, const Zan8u* pBS,
                 Zan32s bitDepth) {
    const ptrdiff_t st = step;
    const Zan32s maxv = max_sample(bitDepth);
    for (int e = 0; e < 4; ++e) {
        const Zan8u* bs = pBS + 4 * e;
        if (word_at(bs) == 0) continue;
        const Zan32s alpha = pA[e ? 1 : 0], beta = pB[e ? 1 : 0];
        Params pn = params16n(alpha, beta, maxv);
        for (int g = 0; g < 2; ++g) {
            if ((bs[2 * g] | bs[2 * g + 1]) == 0) continue;
            lanes16<4>(pn, bs + 2 * g, pT + 4 * e + 2 * g);
            if (group8_16<true>(at16(p, st, V, e, 8 * g), st, V, pn)) continue;
            Params pr = params32(alpha, beta, maxv);
            for (int s = 2 * g; s < 2 * g + 2; ++s) {
                if (bs[s] == 0) continue;
                lanes32(pr, bs + s, pT + 4 * e + s, kOneSegment);
                luma16_group(at16(p, st, V, e, 4 * s), st, V, pr);
            }
        }
    }
}

template <bool V>
void chroma16_simd(Zan16u* p, Zan32s step, const Zan16u* pA, const Zan16u* pB, const Zan16u* pT,
                   const Zan8u* pBS, Zan32s bitDepth) {
    const ptrdiff_t st = step;
    const Zan32s maxv = max_sample(bitDepth);
    for (int e = 0; e < 2; ++e) {
        const Zan8u* bs = pBS + 8 * e;
        if (word_at(bs) == 0) continue;
        Params pn = params16n(pA[e], pB[e], maxv);
        lanes16<2>(pn, bs, pT + 4 * e);
        if (group8_16<false>(at16(p, st, V, e, 0), st, V, pn)) continue;
        Params pr = params32(pA[e], pB[e], maxv);
        for (int g = 0; g < 2; ++g) {
            if ((bs[2 * g] | bs[2 * g + 1]) == 0) continue;
            lanes32(pr, bs, pT + 4 * e, kTwoSegments[g]);
            chroma16_group(at16(p, st, V, e, 4 * g), st, V, pr);
        }
    }
}

void chroma422ver16_simd(Zan16u* p, Zan32s step, const Zan16u* pA, const Zan16u* pB, const Zan16u* pT,
                         const Zan8u* pBS, Zan32s bitDepth) {
    const ptrdiff_t st = step;
    const Zan32s maxv = max_sample(bitDepth);
    for (int e = 0; e < 2; ++e) {
        const Zan8u* bs = pBS + 8 * e;
        if (word_at(bs) == 0) continue;
        Params pn = params16n(pA[e], pB[e], maxv);
        for (int g = 0; g < 2; ++g) {
            if ((bs[2 * g] | bs[2 * g + 1]) == 0) continue;
            lanes16<4>(pn, bs + 2 * g, pT + 4 * e + 2 * g);
            if (group8_16<false>(at16(p, st, true, e, 8 * g), st, true, pn)) continue;
            Params pr = params32(pA[e], pB[e], maxv);
            for (int s = 2 * g; s < 2 * g + 2; ++s) {
                if (bs[s] == 0) continue;
                lanes32(pr, bs + s, pT + 4 * e + s, kOneSegment);
                chroma16_group(at16(p, st, true, e, 4 * s), st, true, pr);
            }
        }
    }
}

void chroma422hor16_simd(Zan16u* p, Zan32s step, const Zan16u* pA, const Zan16u* pB, const Zan16u* pT,
                         const Zan8u* pBS, Zan32s bitDepth) {
    const ptrdiff_t st = step;
    const Zan32s maxv = max_sample(bitDepth);
    for (int e = 0; e < 4; ++e) {
        const Zan8u* bs = pBS + 4 * e;
        if (word_at(bs) == 0) continue;
        const Zan32s alpha = pA[e ? 1 : 0], beta = pB[e ? 1 : 0];
        Params pn = params16n(alpha, beta, maxv);
        lanes16<2>(pn, bs, pT + 4 * e);
        if (group8_16<false>(at16(p, st, false, e, 0), st, false, pn)) continue;
        Params pr = params32(alpha, beta, maxv);
        for (int g = 0; g < 2; ++g) {
            if ((bs[2 * g] | bs[2 * g + 1]) == 0) continue;
            lanes32(pr, bs, pT + 4 * e, kTwoSegments[g]);
            chroma16_group(at16(p, st, false, e, 4 * g), st, false, pr);
        }
    }
}

template <bool Luma>
void mbaff16_simd(Zan16u* p, Zan32s step, const Zan16u* pA, const Zan16u* pB, const Zan16u* pT, const Zan8u* pBS,
                  Zan32s bitDepth) {
    if (pA[0] == 0 || word_at(pBS) == 0) return;
    const ptrdiff_t st = step;
    Params pr = params32(pA[0], pB[0], max_sample(bitDepth));
    if constexpr (Luma) {
        Params pn = params16n(pA[0], pB[0], max_sample(bitDepth));
        lanes16<2>(pn, pBS, pT);
        if (group8_16<true>(p, st, true, pn)) return;
        for (int g = 0; g < 2; ++g) {
            if ((pBS[2 * g] | pBS[2 * g + 1]) == 0) continue;
            lanes32(pr, pBS, pT, kTwoSegments[g]);
            luma16_group(p + 4 * g * st, st, true, pr);
        }
    } else {
        lanes32(pr, pBS, pT, kFourSegments);
        chroma16_group(p, st, true, pr);
    }
}

// ============================================================= catalogue

constexpr Zan32s kV = kVertical, kL = kLuma, kC2 = kTwoChannels, kOwn = kOwnThresholds;

// The _words entries are the all-16-bit-lane luma kernels on which the byte
// kernels fall back for strong halves and large tc0; listed to be checked and
// timed on their own.
const KernelPair<Edges8Fn> kEdges8[] = {
    {"luma_ver_8u", luma8_rule<true>, luma8_bytes_simd<true>, 16, 16, kV | kL},
    {"luma_hor_8u", luma8_rule<false>, luma8_bytes_simd<false>, 16, 16, kL},
    {"luma_ver_8u_words", luma8_rule<true>, luma8_simd<true>, 16, 16, kV | kL},
    {"luma_hor_8u_words", luma8_rule<false>, luma8_simd<false>, 16, 16, kL},
    {"chroma_ver_8u", chroma8_rule<true, 1, false>, chroma8_simd<true>, 8, 8, kV},
    {"chroma_hor_8u", chroma8_rule<false, 1, false>, chroma8_simd<false>, 8, 8, 0},
    {"chroma_ver_nv12", chroma8_rule<true, 2, false>, chroma8c2_simd<true, false>, 8, 8, kV | kC2},
    {"chroma_hor_nv12", chroma8_rule<false, 2, false>, chroma8c2_simd<false, false>, 8, 8, kC2},
    {"chroma_ver_nv12_diff_trshlds", chroma8_rule<true, 2, true>, chroma8c2_simd<true, true>, 8, 8, kV | kC2 | kOwn},
    {"chroma_hor_nv12_diff_trshlds", chroma8_rule<false, 2, true>, chroma8c2_simd<false, true>, 8, 8, kC2 | kOwn},
    {"chroma422_ver_8u", chroma422ver8_rule, chroma422ver8_simd, 8, 16, kV},
    {"chroma422_hor_8u", chroma422hor8_rule, chroma422hor8_simd, 8, 16, 0},
};

const KernelPair<Mbaff8Fn> kMbaff8[] = {
    {"luma_ver_mbaff_8u", mbaff8_rule<true>, mbaff8_simd<true>, 4, 8, kV | kL},
    {"chroma_ver_mbaff_8u", mbaff8_rule<false>, mbaff8_simd<false>, 2, 4, kV},
};

const KernelPair<Edges16Fn> kEdges16[] = {
    {"luma_ver_16u", luma16_rule<true>, luma16_simd<true>, 16, 16, kV | kL},
    {"luma_hor_16u", luma16_rule<false>, luma16_simd<false>, 16, 16, kL},
    {"chroma_ver_16u", chroma16_rule<true>, chroma16_simd<true>, 8, 8, kV},
    {"chroma_hor_16u", chroma16_rule<false>, chroma16_simd<false>, 8, 8, 0},
    {"chroma422_ver_16u", chroma422ver16_rule, chroma422ver16_simd, 8, 16, kV},
    {"chroma422_hor_16u", chroma422hor16_rule, chroma422hor16_simd, 8, 16, 0},
    {"luma_ver_mbaff_16u", mbaff16_rule<true>, mbaff16_simd<true>, 4, 8, kV | kL},
    {"chroma_ver_mbaff_16u", mbaff16_rule<false>, mbaff16_simd<false>, 2, 4, kV},
};

}  // namespace

const Kernels kernels = {kEdges8, kMbaff8, kEdges16};

}  // namespace zan::ZAN_PATH::h264deblock

// =============================================================== exports

namespace zan::ZAN_PATH {

namespace {

using namespace zan::ZAN_PATH::h264deblock;

// A record and its five pointers; -8 if any is null.
inline bool record_ok(const ZanDeblockingRecord* r) {
    if (!r) return false;
    return r->pSrcDstPlane && r->pAlpha && r->pBeta && r->pThresholds && r->pBS;
}

template <Edges8Fn K>
ZanStatus run8(Zan8u* p, Zan32s step, const Zan8u* pA, const Zan8u* pB, const Zan8u* pT, const Zan8u* pBS) {
    if (!p || !pA || !pB || !pT || !pBS) return zanStsNullPtr;
    K(p, step, pA, pB, pT, pBS);
    return zanStsOk;
}

template <Edges8Fn K>
ZanStatus run8(const ZanDeblockingRecord* r) {
    if (!record_ok(r)) return zanStsNullPtr;
    K(static_cast<Zan8u*>(r->pSrcDstPlane), r->srcDstStep, static_cast<const Zan8u*>(r->pAlpha),
      static_cast<const Zan8u*>(r->pBeta), static_cast<const Zan8u*>(r->pThresholds), r->pBS);
    return zanStsOk;
}

template <Edges16Fn K>
ZanStatus run16(const ZanDeblockingRecord* r) {
    if (!record_ok(r)) return zanStsNullPtr;
    K(static_cast<Zan16u*>(r->pSrcDstPlane), r->srcDstStep, static_cast<const Zan16u*>(r->pAlpha),
      static_cast<const Zan16u*>(r->pBeta), static_cast<const Zan16u*>(r->pThresholds), r->pBS, r->bitDepth);
    return zanStsOk;
}

template <Mbaff8Fn K>
ZanStatus run_mbaff8(Zan8u* p, Zan32s step, Zan32u alpha, Zan32u beta, const Zan8u* pT, const Zan8u* pBS) {
    if (!p || !pT || !pBS) return zanStsNullPtr;
    K(p, step, alpha, beta, pT, pBS);
    return zanStsOk;
}

}  // namespace

#define ZAN_DEBLOCK_ARRAYS(name, kernel)                                                                  \
    ZanStatus name(Zan8u* pSrcDst, Zan32s srcDstStep, const Zan8u* pAlpha, const Zan8u* pBeta,            \
                   const Zan8u* pThresholds, const Zan8u* pBS) {                                          \
        return run8<kernel>(pSrcDst, srcDstStep, pAlpha, pBeta, pThresholds, pBS);                        \
    }
ZAN_DEBLOCK_ARRAYS(zaniFilterDeblockingLuma_VerEdge_H264_8u_C1IR, luma8_bytes_simd<true>)
ZAN_DEBLOCK_ARRAYS(zaniFilterDeblockingLuma_HorEdge_H264_8u_C1IR, luma8_bytes_simd<false>)
ZAN_DEBLOCK_ARRAYS(zaniFilterDeblockingChroma_VerEdge_H264_8u_C1IR, chroma8_simd<true>)
ZAN_DEBLOCK_ARRAYS(zaniFilterDeblockingChroma_HorEdge_H264_8u_C1IR, chroma8_simd<false>)
ZAN_DEBLOCK_ARRAYS(zaniFilterDeblockingChroma_VerEdge_H264_8u_C2IR, (chroma8c2_simd<true, false>))
ZAN_DEBLOCK_ARRAYS(zaniFilterDeblockingChroma_HorEdge_H264_8u_C2IR, (chroma8c2_simd<false, false>))
#undef ZAN_DEBLOCK_ARRAYS

#define ZAN_DEBLOCK_RECORD(name, run, kernel) \
    ZanStatus name(const ZanDeblockingRecord* pDeblockInfo) { return run<kernel>(pDeblockInfo); }
ZAN_DEBLOCK_RECORD(zaniFilterDeblockingChroma_VerEdge_H264_8u_C2I, run8, (chroma8c2_simd<true, true>))
ZAN_DEBLOCK_RECORD(zaniFilterDeblockingChroma_HorEdge_H264_8u_C2I, run8, (chroma8c2_simd<false, true>))
ZAN_DEBLOCK_RECORD(zaniFilterDeblockingChroma422VerEdge_H264_8u_C1IR, run8, chroma422ver8_simd)
ZAN_DEBLOCK_RECORD(zaniFilterDeblockingChroma422HorEdge_H264_8u_C1IR, run8, chroma422hor8_simd)
ZAN_DEBLOCK_RECORD(zaniFilterDeblockingChroma422VerEdge_H264_16u_C1IR, run16, chroma422ver16_simd)
ZAN_DEBLOCK_RECORD(zaniFilterDeblockingChroma422HorEdge_H264_16u_C1IR, run16, chroma422hor16_simd)
ZAN_DEBLOCK_RECORD(zaniFilterDeblockingLumaVerEdge_H264_16u_C1IR, run16, luma16_simd<true>)
ZAN_DEBLOCK_RECORD(zaniFilterDeblockingLumaHorEdge_H264_16u_C1IR, run16, luma16_simd<false>)
ZAN_DEBLOCK_RECORD(zaniFilterDeblockingChromaVerEdge_H264_16u_C1IR, run16, chroma16_simd<true>)
ZAN_DEBLOCK_RECORD(zaniFilterDeblockingChromaHorEdge_H264_16u_C1IR, run16, chroma16_simd<false>)
ZAN_DEBLOCK_RECORD(zaniFilterDeblockingLumaVerEdgeMBAFF_H264_16u_C1IR, run16, mbaff16_simd<true>)
ZAN_DEBLOCK_RECORD(zaniFilterDeblockingChromaVerEdgeMBAFF_H264_16u_C1IR, run16, mbaff16_simd<false>)
#undef ZAN_DEBLOCK_RECORD

ZanStatus zaniFilterDeblockingLuma_VerEdge_MBAFF_H264_8u_C1IR(Zan8u* pSrcDst, Zan32s srcDstStep, Zan32u alpha,
                                                              Zan32u beta, const Zan8u* pThresholds,
                                                              const Zan8u* pBS) {
    return run_mbaff8<mbaff8_simd<true>>(pSrcDst, srcDstStep, alpha, beta, pThresholds, pBS);
}

ZanStatus zaniFilterDeblockingChroma_VerEdge_MBAFF_H264_8u_C1IR(Zan8u* pSrcDst, Zan32s srcDstStep, Zan32u alpha,
                                                                Zan32u beta, const Zan8u* pThresholds,
                                                                const Zan8u* pBS) {
    return run_mbaff8<mbaff8_simd<false>>(pSrcDst, srcDstStep, alpha, beta, pThresholds, pBS);
}

}  // namespace zan::ZAN_PATH
