// Half-sample motion compensation of wide blocks (16 and 8 bytes across):
// forward and bidirectional prediction with a residual, the interleaved
// chroma forms, the HP copies, the interpolate-average forms and the 8x8
// prediction with residual of the HP family.
//
// Every position and rounding is a kernel of its own, picked from a constant
// table by the wrapper, so no loop branches on a selector.  The kernels work
// on four rows at a time: all loads of the four rows come before their
// stores, so rows shared by neighbouring outputs are loaded once.
//
// Byte arithmetic.  pavgb gives (a + b + 1) >> 1 exactly.  Rounding toward
// zero is the same average on complemented bytes, complemented back:
// (a + b) >> 1 = 255 - ((255 - a) + (255 - b) + 1) >> 1.  Four samples are
// averaged exactly from the two row averages and parities (avg4_tail).
// The residual is added to the prediction widened to 16 bits with a
// saturating add, then packed with unsigned saturation: a saturated sum lies
// outside 0..255 exactly when the exact sum does, so the result is the
// exact sum clamped to 0..255.
#include <cstdint>
#include <initializer_list>
#include <utility>

#include "blocks/mc.h"
#include "common/scalar.h"
#include "common/simd.h"
#include "frame/bodies.h"
#include "support/support.h"

namespace zan::ZAN_PATH::mc {
namespace {

using namespace zan::mc;
using scalar::at;
using scalar::put;

// ============================================================ scalar rules

// The reference at position P with rounding bit rc; d is the distance to
// the horizontal neighbour of the same channel.
template <int P, int D>
Zan32s pos_rule(const Zan8u* r, Zan32s s, Zan32s x, Zan32s y, Zan32s rc) {
    Zan32s a = at(r, s, x, y);
    if constexpr (P == kFH) return (a + at(r, s, x, y + 1) + 1 - rc) >> 1;
    if constexpr (P == kHF) return (a + at(r, s, x + D, y) + 1 - rc) >> 1;
    if constexpr (P == kHH)
        return (a + at(r, s, x + D, y) + at(r, s, x, y + 1) + at(r, s, x + D, y + 1) + 2 - rc) >> 2;
    return a;
}

Zan8u sat8(Zan32s v) { return static_cast<Zan8u>(v < 0 ? 0 : v > 255 ? 255 : v); }

// dst = sat(P + residual), W bytes across.
template <int W, int P, int RC, int D>
void mc_rule(const Zan8u* r, Zan32s rs, const Zan16s* res, Zan32s ress, Zan8u* dst, Zan32s ds, Zan32s h) {
    for (Zan32s y = 0; y < h; ++y)
        for (Zan32s x = 0; x < W; ++x) put(dst, ds, x, y, sat8(pos_rule<P, D>(r, rs, x, y, RC) + at(res, ress, x, y)));
}

// dst = sat((PF + PB + 2 residual + 1) / 2), the division truncating.
template <int W, int PF, int PB, int RC, int D>
void mcb_rule(const Zan8u* rf, Zan32s rfs, const Zan8u* rb, Zan32s rbs, const Zan16s* res, Zan32s ress, Zan8u* dst,
              Zan32s ds, Zan32s h) {
    for (Zan32s y = 0; y < h; ++y)
        for (Zan32s x = 0; x < W; ++x) {
            Zan32s pf = pos_rule<PF, D>(rf, rfs, x, y, RC), pb = pos_rule<PB, D>(rb, rbs, x, y, RC);
            put(dst, ds, x, y, sat8((pf + pb + 2 * at(res, ress, x, y) + 1) / 2));
        }
}

// Interleaved pairs with the residual in two planes: byte 2x takes U[x],
// byte 2x+1 takes V[x].  PB < 0: forward only.
template <int PF, int PB, int RC>
void pair_rule(const McPairArgs* a, Zan32s h) {
    for (Zan32s y = 0; y < h; ++y)
        for (Zan32s x = 0; x < 16; ++x) {
            Zan32s res = at(x % 2 ? a->pResidualV : a->pResidualU, a->residualStep, x / 2, y);
            Zan32s pf = pos_rule<PF, 2>(a->pRef, a->refStep, x, y, RC);
            Zan32s v;
            if constexpr (PB < 0) v = pf + res;
            else v = (pf + pos_rule<PB, 2>(a->pRefB, a->refStepB, x, y, RC) + 2 * res + 1) / 2;
            put(a->pDst, a->dstStep, x, y, sat8(v));
        }
}

template <int W, int H, int P, int RC>
void copy_hp_rule(const Zan8u* s, Zan32s ss, Zan8u* d, Zan32s ds) {
    for (Zan32s y = 0; y < H; ++y)
        for (Zan32s x = 0; x < W; ++x) put(d, ds, x, y, static_cast<Zan8u>(pos_rule<P, 1>(s, ss, x, y, RC)));
}

template <int W, int H, int P, int RC>
void interp_avg_rule(const Zan8u* s, Zan32s ss, Zan8u* d, Zan32s ds) {
    for (Zan32s y = 0; y < H; ++y)
        for (Zan32s x = 0; x < W; ++x)
            put(d, ds, x, y, static_cast<Zan8u>((pos_rule<P, 1>(s, ss, x, y, RC) + at(d, ds, x, y) + 1) >> 1));
}

template <int P, int RC>
void add_hp_rule(const Zan16s* res, Zan32s ress, const Zan8u* r, Zan32s rs, Zan8u* d, Zan32s ds) {
    for (Zan32s y = 0; y < 8; ++y)
        for (Zan32s x = 0; x < 8; ++x) put(d, ds, x, y, sat8(pos_rule<P, 1>(r, rs, x, y, RC) + at(res, ress, x, y)));
}

// Plain block arithmetic.
template <int N>
void copy_rule(const Zan8u* s, Zan32s ss, Zan8u* d, Zan32s ds) {
    for (Zan32s y = 0; y < N; ++y)
        for (Zan32s x = 0; x < N; ++x) put(d, ds, x, y, at(s, ss, x, y));
}

template <int N>
void average_rule(const Zan8u* a, Zan32s as, const Zan8u* b, Zan32s bs, Zan8u* d, Zan32s ds) {
    for (Zan32s y = 0; y < N; ++y)
        for (Zan32s x = 0; x < N; ++x)
            put(d, ds, x, y, static_cast<Zan8u>((at(a, as, x, y) + at(b, bs, x, y) + 1) >> 1));
}

// The sum wraps in 16 bits before it is saturated to 8 bits.
void add_rule(const Zan16s* res, Zan32s rs, Zan8u* d, Zan32s ds) {
    for (Zan32s y = 0; y < 8; ++y)
        for (Zan32s x = 0; x < 8; ++x)
            put(d, ds, x, y, sat8(static_cast<Zan16s>(static_cast<Zan16u>(at(d, ds, x, y) + at(res, rs, x, y)))));
}

void add_const_rule(Zan16s value, Zan8u* d, Zan32s ds) {
    for (Zan32s y = 0; y < 8; ++y)
        for (Zan32s x = 0; x < 8; ++x) put(d, ds, x, y, sat8(at(d, ds, x, y) + value));
}

// ========================================================== vector kernels

using simd::load16;
using simd::load8;
using simd::row;
using simd::store16;
using simd::store8;

// A line is 16 bytes: one row of a 16-wide block, or rows y and y+1 of an
// 8-wide block side by side.
template <int W>
inline __m128i line(const Zan8u* p, Zan32s step, Zan32s y) {
    if constexpr (W == 16) return load16(row(p, step, y));
    else return _mm_unpacklo_epi64(load8(row(p, step, y)), load8(row(p, step, y + 1)));
}
template <int W>
inline void store_line(Zan8u* p, Zan32s step, Zan32s y, __m128i v) {
    if constexpr (W == 16) {
        store16(row(p, step, y), v);
    } else {
        store8(row(p, step, y), v);
        store8(row(p, step, y + 1), _mm_unpackhi_epi64(v, v));
    }
}

// Complement for the rounding-toward-zero kernels, nothing otherwise.
template <int RC>
inline __m128i flip(__m128i v) {
    if constexpr (RC) return _mm_xor_si128(v, _mm_set1_epi8(-1));
    else return v;
}


// The exact four-sample average from the row averages x = (a + b + 1) >> 1,
// y = (c + d + 1) >> 1 and the parities e = a ^ b, f = c ^ d (bit 0 counts).
// With t = x + y, the sum is 2t - e - f.  Rounding to nearest:
// (sum + 2) >> 2 = ((t + 1) >> 1) - 1 where t is odd and e or f is set.
// Toward zero: (sum + 1) >> 2 = ((t + 1) >> 1) - 1 where t is odd, or where
// t is even and both e and f are set (the two cases exclude each other).
template <int RC>
inline __m128i avg4_tail(__m128i x, __m128i y, __m128i e, __m128i f) {
    const __m128i t = _mm_xor_si128(x, y);
    const __m128i fix = RC ? _mm_or_si128(t, _mm_and_si128(e, f)) : _mm_and_si128(t, _mm_or_si128(e, f));
    return _mm_sub_epi8(_mm_avg_epu8(x, y), _mm_and_si128(fix, _mm_set1_epi8(1)));
}
template <int RC>
inline __m128i avg4(__m128i a, __m128i b, __m128i c, __m128i d) {
    return avg4_tail<RC>(_mm_avg_epu8(a, b), _mm_avg_epu8(c, d), _mm_xor_si128(a, b), _mm_xor_si128(c, d));
}

// 16-wide blocks: the prediction row by row, each reference row loaded once.
// The state carried from row y to row y+1 is the row itself (FH) or its
// horizontal averages and parities (HH).
template <int P, int RC, int D>
struct Rows16 {
    const Zan8u* r;
    Zan32s s;
    __m128i x = _mm_setzero_si128(), e = _mm_setzero_si128();

    Rows16(const Zan8u* ref, Zan32s step) : r(ref), s(step) {
        if constexpr (P == kFH) x = flip<RC>(load16(r));
        if constexpr (P == kHH) {
            const __m128i a = load16(r), b = load16(r + D);
            x = _mm_avg_epu8(a, b);
            e = _mm_xor_si128(a, b);
        }
    }
    // The prediction of row y; called for y = 0, 1, 2 ... in turn.
    __m128i next(Zan32s y) {
        if constexpr (P == kFF) {
            return load16(row(r, s, y));
        } else if constexpr (P == kHF) {
            const Zan8u* p = row(r, s, y);
            return flip<RC>(_mm_avg_epu8(flip<RC>(load16(p)), flip<RC>(load16(p + D))));
        } else if constexpr (P == kFH) {
            const __m128i n = flip<RC>(load16(row(r, s, y + 1)));
            const __m128i out = flip<RC>(_mm_avg_epu8(x, n));
            x = n;
            return out;
        } else {
            const Zan8u* p = row(r, s, y + 1);
            const __m128i a = load16(p), b = load16(p + D);
            const __m128i xn = _mm_avg_epu8(a, b), en = _mm_xor_si128(a, b);
            const __m128i out = avg4_tail<RC>(x, xn, e, en);
            x = xn;
            e = en;
            return out;
        }
    }
};

// 8-wide blocks: the predictions of rows y..y+3 as two lines of two rows.
// All loads of the four rows come before any store, so the rows shared by
// neighbouring lines are loaded once.
template <int P, int RC, int D, int N = 2>
inline void predict4x8(const Zan8u* r, Zan32s s, Zan32s y, __m128i* out) {
    for (int i = 0; i < N; ++i) {
        const Zan32s yy = y + 2 * i;
        if constexpr (P == kFF) {
            out[i] = line<8>(r, s, yy);
        } else if constexpr (P == kFH) {
            out[i] = flip<RC>(_mm_avg_epu8(flip<RC>(line<8>(r, s, yy)), flip<RC>(line<8>(r, s, yy + 1))));
        } else if constexpr (P == kHF) {
            out[i] = flip<RC>(_mm_avg_epu8(flip<RC>(line<8>(r, s, yy)), flip<RC>(line<8>(r + D, s, yy))));
        } else {
            out[i] = avg4<RC>(line<8>(r, s, yy), line<8>(r + D, s, yy), line<8>(r, s, yy + 1), line<8>(r + D, s, yy + 1));
        }
    }
}

// sat(pred + residual) for one line; lo and hi are the residuals of its
// first and last eight bytes.
inline __m128i add_residual(__m128i pred, __m128i lo, __m128i hi) {
    const __m128i z = _mm_setzero_si128();
    return _mm_packus_epi16(_mm_adds_epi16(_mm_unpacklo_epi8(pred, z), lo),
                            _mm_adds_epi16(_mm_unpackhi_epi8(pred, z), hi));
}

template <int W>
inline __m128i add_residual_line(__m128i pred, const Zan16s* res, Zan32s rs, Zan32s y) {
    if constexpr (W == 16) return add_residual(pred, load16(row(res, rs, y)), load16(row(res, rs, y) + 16));
    else return add_residual(pred, load16(row(res, rs, y)), load16(row(res, rs, y + 1)));
}

// Runs out(y, pred) over the rows (W 16) or line pairs (W 8) of a block of
// h rows predicted at position P.
template <int W, int P, int RC, int D, class Out>
inline void for_each_line(const Zan8u* r, Zan32s rs, Zan32s h, Out out) {
    if constexpr (W == 16) {
        Rows16<P, RC, D> rows(r, rs);
#pragma GCC unroll 4
        for (Zan32s y = 0; y < h; ++y) out(y, rows.next(y));
    } else {
        for (Zan32s y = 0; y < h; y += 4) {
            __m128i p[2];
            predict4x8<P, RC, D>(r, rs, y, p);
            out(y, p[0]);
            out(y + 2, p[1]);
        }
    }
}

// The same for the average of two predictions.
template <int W, int PF, int PB, int RC, int D, class Out>
inline void for_each_line2(const Zan8u* rf, Zan32s rfs, const Zan8u* rb, Zan32s rbs, Zan32s h, Out out) {
    if constexpr (W == 16) {
        Rows16<PF, RC, D> f(rf, rfs);
        Rows16<PB, RC, D> b(rb, rbs);
#pragma GCC unroll 4
        for (Zan32s y = 0; y < h; ++y) out(y, _mm_avg_epu8(f.next(y), b.next(y)));
    } else {
        // One line (two rows) at a time: two references' rows in flight at
        // once would not fit the registers.
        for (Zan32s y = 0; y < h; y += 2) {
            __m128i pf, pb;
            predict4x8<PF, RC, D, 1>(rf, rfs, y, &pf);
            predict4x8<PB, RC, D, 1>(rb, rbs, y, &pb);
            out(y, _mm_avg_epu8(pf, pb));
        }
    }
}

template <int W, int P, int RC, int D>
void mc_simd(const Zan8u* r, Zan32s rs, const Zan16s* res, Zan32s ress, Zan8u* dst, Zan32s ds, Zan32s h) {
    for_each_line<W, P, RC, D>(r, rs, h, [&](Zan32s y, __m128i p) {
        store_line<W>(dst, ds, y, add_residual_line<W>(p, res, ress, y));
    });
}

template <int W, int PF, int PB, int RC, int D>
void mcb_simd(const Zan8u* rf, Zan32s rfs, const Zan8u* rb, Zan32s rbs, const Zan16s* res, Zan32s ress, Zan8u* dst,
              Zan32s ds, Zan32s h) {
    for_each_line2<W, PF, PB, RC, D>(rf, rfs, rb, rbs, h, [&](Zan32s y, __m128i p) {
        store_line<W>(dst, ds, y, add_residual_line<W>(p, res, ress, y));
    });
}

// Residual U[x] to byte 2x, V[x] to byte 2x+1.
inline __m128i add_pair_residual(__m128i p, const McPairArgs* a, Zan32s y) {
    const __m128i u = load16(row(a->pResidualU, a->residualStep, y)), v = load16(row(a->pResidualV, a->residualStep, y));
    return add_residual(p, _mm_unpacklo_epi16(u, v), _mm_unpackhi_epi16(u, v));
}

template <int PF, int PB, int RC>
void pair_simd(const McPairArgs* a, Zan32s h) {
    Zan8u* dst = a->pDst;
    const Zan32s ds = a->dstStep;
    auto out = [&](Zan32s y, __m128i p) { store16(row(dst, ds, y), add_pair_residual(p, a, y)); };
    if constexpr (PB < 0) for_each_line<16, PF, RC, 2>(a->pRef, a->refStep, h, out);
    else for_each_line2<16, PF, PB, RC, 2>(a->pRef, a->refStep, a->pRefB, a->refStepB, h, out);
}

template <int W, int H, int P, int RC>
void copy_hp_simd(const Zan8u* s, Zan32s ss, Zan8u* d, Zan32s ds) {
    for_each_line<W, P, RC, 1>(s, ss, H, [&](Zan32s y, __m128i p) { store_line<W>(d, ds, y, p); });
}

template <int W, int H, int P, int RC>
void interp_avg_simd(const Zan8u* s, Zan32s ss, Zan8u* d, Zan32s ds) {
    for_each_line<W, P, RC, 1>(s, ss, H, [&](Zan32s y, __m128i p) {
        store_line<W>(d, ds, y, _mm_avg_epu8(p, line<W>(d, ds, y)));
    });
}

template <int P, int RC>
void add_hp_simd(const Zan16s* res, Zan32s ress, const Zan8u* r, Zan32s rs, Zan8u* d, Zan32s ds) {
    for_each_line<8, P, RC, 1>(r, rs, 8, [&](Zan32s y, __m128i p) {
        store_line<8>(d, ds, y, add_residual_line<8>(p, res, ress, y));
    });
}

template <int N>
void copy_simd(const Zan8u* s, Zan32s ss, Zan8u* d, Zan32s ds) {
    constexpr int R = 16 / N;
    for (Zan32s y = 0; y < N; y += 4) {
        __m128i v[4];
        for (int i = 0; i < 4 / R; ++i) v[i] = line<N>(s, ss, y + R * i);
        for (int i = 0; i < 4 / R; ++i) store_line<N>(d, ds, y + R * i, v[i]);
    }
}

// Also serves the in-place form with b = d: each line is loaded before it
// is stored.
template <int N>
void average_simd(const Zan8u* a, Zan32s as, const Zan8u* b, Zan32s bs, Zan8u* d, Zan32s ds) {
    constexpr int R = 16 / N;
    for (Zan32s y = 0; y < N; y += R) store_line<N>(d, ds, y, _mm_avg_epu8(line<N>(a, as, y), line<N>(b, bs, y)));
}

template <bool Aligned>
void add_simd(const Zan16s* res, Zan32s rs, Zan8u* d, Zan32s ds) {
    const __m128i z = _mm_setzero_si128();
    for (Zan32s y = 0; y < 8; y += 2) {
        const Zan8u* r0 = row(res, rs, y);
        const Zan8u* r1 = row(res, rs, y + 1);
        __m128i lo = Aligned ? simd::load16a(r0) : load16(r0), hi = Aligned ? simd::load16a(r1) : load16(r1);
        __m128i p = line<8>(d, ds, y);
        p = _mm_packus_epi16(_mm_add_epi16(_mm_unpacklo_epi8(p, z), lo), _mm_add_epi16(_mm_unpackhi_epi8(p, z), hi));
        store_line<8>(d, ds, y, p);
    }
}

void add_const_simd(Zan16s value, Zan8u* d, Zan32s ds) {
    const __m128i v = _mm_set1_epi16(value);
    for (Zan32s y = 0; y < 8; y += 2) store_line<8>(d, ds, y, add_residual(line<8>(d, ds, y), v, v));
}

// ================================================================= tables

// Slot i of a forward table: position i >> 1, rounding i & 1 (none at FF).
constexpr int fwd_pos(std::size_t i) { return static_cast<int>(i >> 1); }
constexpr int fwd_rc(std::size_t i) { return fwd_pos(i) == kFF ? 0 : static_cast<int>(i & 1); }
// Slot i of a bidirectional table: forward position (i >> 1) & 3, backward i >> 3, rounding i & 1.
constexpr int bi_pf(std::size_t i) { return static_cast<int>((i >> 1) & 3); }
constexpr int bi_pb(std::size_t i) { return static_cast<int>(i >> 3); }
constexpr int bi_rc(std::size_t i) { return static_cast<int>(i & 1); }
// Slot i of an HP table: acc = i >> 1 (bit 0 half in x, bit 1 half in y), rounding i & 1.
constexpr int hp_pos(std::size_t i) {
    constexpr int byAcc[4] = {kFF, kHF, kFH, kHH};
    return byAcc[i >> 1];
}
constexpr int hp_rc(std::size_t i) { return hp_pos(i) == kFF ? 0 : static_cast<int>(i & 1); }

template <int W, int D, bool Rule, std::size_t... I>
constexpr std::array<McFn, sizeof...(I)> fwd_table(std::index_sequence<I...>) {
    if constexpr (Rule) return {mc_rule<W, fwd_pos(I), fwd_rc(I), D>...};
    else return {mc_simd<W, fwd_pos(I), fwd_rc(I), D>...};
}
template <int W, int D, bool Rule, std::size_t... I>
constexpr std::array<McBFn, sizeof...(I)> bi_table(std::index_sequence<I...>) {
    if constexpr (Rule) return {mcb_rule<W, bi_pf(I), bi_pb(I), bi_rc(I), D>...};
    else return {mcb_simd<W, bi_pf(I), bi_pb(I), bi_rc(I), D>...};
}
template <bool Rule, std::size_t... I>
constexpr std::array<McPairFn, sizeof...(I)> pair_fwd_table(std::index_sequence<I...>) {
    if constexpr (Rule) return {pair_rule<fwd_pos(I), -1, fwd_rc(I)>...};
    else return {pair_simd<fwd_pos(I), -1, fwd_rc(I)>...};
}
template <bool Rule, std::size_t... I>
constexpr std::array<McPairFn, sizeof...(I)> pair_bi_table(std::index_sequence<I...>) {
    if constexpr (Rule) return {pair_rule<bi_pf(I), bi_pb(I), bi_rc(I)>...};
    else return {pair_simd<bi_pf(I), bi_pb(I), bi_rc(I)>...};
}
template <int W, int H, bool Rule, std::size_t... I>
constexpr std::array<BlockFn, sizeof...(I)> copy_hp_table(std::index_sequence<I...>) {
    if constexpr (Rule) return {copy_hp_rule<W, H, hp_pos(I), hp_rc(I)>...};
    else return {copy_hp_simd<W, H, hp_pos(I), hp_rc(I)>...};
}
template <int W, int H, bool Rule, std::size_t... I>
constexpr std::array<BlockFn, sizeof...(I)> interp_avg_table(std::index_sequence<I...>) {
    if constexpr (Rule) return {interp_avg_rule<W, H, hp_pos(I), hp_rc(I)>...};
    else return {interp_avg_simd<W, H, hp_pos(I), hp_rc(I)>...};
}
template <bool Rule, std::size_t... I>
constexpr std::array<AddHPFn, sizeof...(I)> add_hp_table(std::index_sequence<I...>) {
    if constexpr (Rule) return {add_hp_rule<hp_pos(I), hp_rc(I)>...};
    else return {add_hp_simd<hp_pos(I), hp_rc(I)>...};
}

using Seq8 = std::make_index_sequence<8>;
using Seq32 = std::make_index_sequence<32>;

}  // namespace

const std::array<McFn, 8> kMC16xH = fwd_table<16, 1, false>(Seq8{});
const std::array<McBFn, 32> kMC16xHB = bi_table<16, 1, false>(Seq32{});
const std::array<McFn, 8> kMC16xHUV = fwd_table<16, 2, false>(Seq8{});
const std::array<McBFn, 32> kMC16xHUVB = bi_table<16, 2, false>(Seq32{});
const std::array<McFn, 8> kMC8xH = fwd_table<8, 1, false>(Seq8{});
const std::array<McBFn, 32> kMC8xHB = bi_table<8, 1, false>(Seq32{});
const std::array<McPairFn, 8> kMC8xHNV12 = pair_fwd_table<false>(Seq8{});
const std::array<McPairFn, 32> kMC8xHNV12B = pair_bi_table<false>(Seq32{});
const std::array<BlockFn, 8> kCopy16x16HP = copy_hp_table<16, 16, false>(Seq8{});
const std::array<BlockFn, 8> kCopy16x8HP = copy_hp_table<16, 8, false>(Seq8{});
const std::array<BlockFn, 8> kCopy8x8HP = copy_hp_table<8, 8, false>(Seq8{});
const std::array<BlockFn, 8> kCopy8x4HP = copy_hp_table<8, 4, false>(Seq8{});
const std::array<BlockFn, 8> kInterpolateAverage16x16 = interp_avg_table<16, 16, false>(Seq8{});
const std::array<BlockFn, 8> kInterpolateAverage16x8 = interp_avg_table<16, 8, false>(Seq8{});
const std::array<BlockFn, 8> kInterpolateAverage8x8 = interp_avg_table<8, 8, false>(Seq8{});
const std::array<BlockFn, 8> kInterpolateAverage8x4 = interp_avg_table<8, 4, false>(Seq8{});
const std::array<AddHPFn, 8> kAdd8x8HP = add_hp_table<false>(Seq8{});

// ============================================================= catalogue

namespace {

// Names of catalogue entries: "<table>[<slot>]_<positions><rounding>".
struct Label {
    char s[48];
};
constexpr const char* kPosName[4] = {"ff", "fh", "hf", "hh"};
constexpr const char* kRcName[2] = {"_to_near", "_to_zero"};

constexpr Label label(const char* table, int slot, const char* p1, const char* p2, const char* rc) {
    Label l{};
    int n = 0;
    for (const char* p = table; *p;) l.s[n++] = *p++;
    l.s[n++] = '[';
    if (slot >= 10) l.s[n++] = static_cast<char>('0' + slot / 10);
    l.s[n++] = static_cast<char>('0' + slot % 10);
    l.s[n++] = ']';
    l.s[n++] = '_';
    for (const char* part : {p1, p2, rc})
        for (const char* p = part; *p;) l.s[n++] = *p++;
    return l;
}

template <std::size_t N>
constexpr std::array<Label, N> fwd_labels(const char* table) {
    std::array<Label, N> out{};
    for (std::size_t i = 0; i < N; ++i) out[i] = label(table, static_cast<int>(i), kPosName[fwd_pos(i)], "", kRcName[i & 1]);
    return out;
}
template <std::size_t N>
constexpr std::array<Label, N> bi_labels(const char* table) {
    std::array<Label, N> out{};
    for (std::size_t i = 0; i < N; ++i)
        out[i] = label(table, static_cast<int>(i), kPosName[bi_pf(i)], kPosName[bi_pb(i)], kRcName[bi_rc(i)]);
    return out;
}
constexpr std::array<Label, 8> hp_labels(const char* table) {
    std::array<Label, 8> out{};
    for (std::size_t i = 0; i < 8; ++i) out[i] = label(table, static_cast<int>(i), kPosName[hp_pos(i)], "", kRcName[i & 1]);
    return out;
}

constexpr auto kL16 = fwd_labels<8>("mc16xH");
constexpr auto kL16UV = fwd_labels<8>("mc16xHUV");
constexpr auto kL8 = fwd_labels<8>("mc8xH");
constexpr auto kL16B = bi_labels<32>("mc16xHB");
constexpr auto kL16UVB = bi_labels<32>("mc16xHUVB");
constexpr auto kL8B = bi_labels<32>("mc8xHB");
constexpr auto kLPair = fwd_labels<8>("mc8xHNV12");
constexpr auto kLPairB = bi_labels<32>("mc8xHNV12B");
constexpr auto kLCopy16x16 = hp_labels("copy16x16HP");
constexpr auto kLCopy16x8 = hp_labels("copy16x8HP");
constexpr auto kLCopy8x8 = hp_labels("copy8x8HP");
constexpr auto kLCopy8x4 = hp_labels("copy8x4HP");
constexpr auto kLAvg16x16 = hp_labels("interpolateAverage16x16");
constexpr auto kLAvg16x8 = hp_labels("interpolateAverage16x8");
constexpr auto kLAvg8x8 = hp_labels("interpolateAverage8x8");
constexpr auto kLAvg8x4 = hp_labels("interpolateAverage8x4");
constexpr auto kLAddHP = hp_labels("add8x8HP");

// Appends one table's entries (rule beside kernel) to a catalogue.
template <class Fn, std::size_t N, std::size_t M>
constexpr void append(std::array<KernelPair<Fn>, M>& out, std::size_t& n, const std::array<Label, N>& names,
                      const std::array<Fn, N>& rules, const std::array<Fn, N>& kernels, Zan32s w, Zan32s h,
                      Zan32s paramBase = 0) {
    for (std::size_t i = 0; i < N; ++i)
        out[n++] = {names[i].s, rules[i], kernels[i], w, h, paramBase + static_cast<Zan32s>(i)};
}

constexpr std::array<KernelPair<McFn>, 24> fwd_pairs() {
    std::array<KernelPair<McFn>, 24> out{};
    std::size_t n = 0;
    append(out, n, kL16, fwd_table<16, 1, true>(Seq8{}), fwd_table<16, 1, false>(Seq8{}), 16, 16);
    append(out, n, kL16UV, fwd_table<16, 2, true>(Seq8{}), fwd_table<16, 2, false>(Seq8{}), 16, 8);
    append(out, n, kL8, fwd_table<8, 1, true>(Seq8{}), fwd_table<8, 1, false>(Seq8{}), 8, 16);
    return out;
}
constexpr std::array<KernelPair<McBFn>, 96> bi_pairs() {
    std::array<KernelPair<McBFn>, 96> out{};
    std::size_t n = 0;
    append(out, n, kL16B, bi_table<16, 1, true>(Seq32{}), bi_table<16, 1, false>(Seq32{}), 16, 16);
    append(out, n, kL16UVB, bi_table<16, 2, true>(Seq32{}), bi_table<16, 2, false>(Seq32{}), 16, 8);
    append(out, n, kL8B, bi_table<8, 1, true>(Seq32{}), bi_table<8, 1, false>(Seq32{}), 8, 16);
    return out;
}
constexpr std::array<KernelPair<McPairFn>, 40> pair_pairs() {
    std::array<KernelPair<McPairFn>, 40> out{};
    std::size_t n = 0;
    append(out, n, kLPair, pair_fwd_table<true>(Seq8{}), pair_fwd_table<false>(Seq8{}), 16, 8);
    append(out, n, kLPairB, pair_bi_table<true>(Seq32{}), pair_bi_table<false>(Seq32{}), 16, 8, 32);
    return out;
}
constexpr std::array<KernelPair<BlockFn>, 32> copy_hp_pairs() {
    std::array<KernelPair<BlockFn>, 32> out{};
    std::size_t n = 0;
    append(out, n, kLCopy16x16, copy_hp_table<16, 16, true>(Seq8{}), copy_hp_table<16, 16, false>(Seq8{}), 16, 16);
    append(out, n, kLCopy16x8, copy_hp_table<16, 8, true>(Seq8{}), copy_hp_table<16, 8, false>(Seq8{}), 16, 8);
    append(out, n, kLCopy8x8, copy_hp_table<8, 8, true>(Seq8{}), copy_hp_table<8, 8, false>(Seq8{}), 8, 8);
    append(out, n, kLCopy8x4, copy_hp_table<8, 4, true>(Seq8{}), copy_hp_table<8, 4, false>(Seq8{}), 8, 4);
    return out;
}
constexpr std::array<KernelPair<BlockFn>, 32> interp_avg_pairs() {
    std::array<KernelPair<BlockFn>, 32> out{};
    std::size_t n = 0;
    append(out, n, kLAvg16x16, interp_avg_table<16, 16, true>(Seq8{}), interp_avg_table<16, 16, false>(Seq8{}), 16, 16);
    append(out, n, kLAvg16x8, interp_avg_table<16, 8, true>(Seq8{}), interp_avg_table<16, 8, false>(Seq8{}), 16, 8);
    append(out, n, kLAvg8x8, interp_avg_table<8, 8, true>(Seq8{}), interp_avg_table<8, 8, false>(Seq8{}), 8, 8);
    append(out, n, kLAvg8x4, interp_avg_table<8, 4, true>(Seq8{}), interp_avg_table<8, 4, false>(Seq8{}), 8, 4);
    return out;
}
constexpr std::array<KernelPair<AddHPFn>, 8> add_hp_pairs() {
    std::array<KernelPair<AddHPFn>, 8> out{};
    std::size_t n = 0;
    append(out, n, kLAddHP, add_hp_table<true>(Seq8{}), add_hp_table<false>(Seq8{}), 8, 8);
    return out;
}

constexpr auto kFwdPairs = fwd_pairs();
constexpr auto kBiPairs = bi_pairs();
constexpr auto kPairPairs = pair_pairs();
constexpr auto kCopyHPPairs = copy_hp_pairs();
constexpr auto kInterpAvgPairs = interp_avg_pairs();
constexpr auto kAddHPPairs = add_hp_pairs();

constexpr KernelPair<BlockFn> kCopyPairs[] = {
    {"copy16x16", copy_rule<16>, copy_simd<16>, 16, 16, 0},
    {"copy8x8", copy_rule<8>, copy_simd<8>, 8, 8, 0},
};
constexpr KernelPair<AverageFn> kAveragePairs[] = {
    {"average16x16", average_rule<16>, average_simd<16>, 16, 16, 0},
    {"average8x8", average_rule<8>, average_simd<8>, 8, 8, 0},
};
constexpr KernelPair<AddFn> kAddPairs[] = {
    {"add8x8", add_rule, add_simd<false>, 8, 8, 0},
    {"add8x8_aligned", add_rule, add_simd<true>, 8, 8, 16},
};
constexpr KernelPair<AddCFn> kAddCPairs[] = {
    {"addC8x8", add_const_rule, add_const_simd, 8, 8, 0},
};

}  // namespace

const WideKernels wide_kernels = {kFwdPairs, kBiPairs, kPairPairs};
const BlockKernels block_kernels = {kCopyHPPairs, kInterpAvgPairs, kCopyPairs, kAveragePairs,
                                    kAddPairs,    kAddHPPairs,     kAddCPairs};

}  // namespace zan::ZAN_PATH::mc

// =============================================================== exports

namespace zan::ZAN_PATH {

// Selectors are masked before they index a table, so no value reaches
// outside it; nothing but the pointers is checked.
#define ZAN_MC_FWD(name, table, height)                                                                   \
    ZanStatus name(const Zan8u* pRef, Zan32s refStep, const Zan16s* pResidual, Zan32s residualStep,        \
                   Zan8u* pDst, Zan32s dstStep, Zan32s mcType, Zan32s roundControl) {                      \
        if (!pRef || !pResidual || !pDst) return zanStsNullPtr;                                            \
        mc::table[static_cast<Zan32u>(((mcType & 12) >> 1) + (roundControl & 1))](pRef, refStep, pResidual, \
                                                                                  residualStep, pDst,      \
                                                                                  dstStep, height);        \
        return zanStsOk;                                                                                   \
    }
ZAN_MC_FWD(zaniMC16x16_8u_C1, kMC16xH, 16)
ZAN_MC_FWD(zaniMC16x8_8u_C1, kMC16xH, 8)
ZAN_MC_FWD(zaniMC16x4_8u_C1, kMC16xHUV, 4)
ZAN_MC_FWD(zaniMC16x8UV_8u_C1, kMC16xHUV, 8)
ZAN_MC_FWD(zaniMC8x16_8u_C1, kMC8xH, 16)
ZAN_MC_FWD(zaniMC8x8_8u_C1, kMC8xH, 8)
ZAN_MC_FWD(zaniMC8x4_8u_C1, kMC8xH, 4)
#undef ZAN_MC_FWD

namespace {
Zan32u mc_bi_index(Zan32s mcTypeF, Zan32s mcTypeB, Zan32s roundControl) {
    return static_cast<Zan32u>(((mcTypeF & 12) >> 1) + (mcTypeB & 12) * 2 + (roundControl & 1));
}

}  // namespace

#define ZAN_MC_BI(name, table, height)                                                                      \
    ZanStatus name(const Zan8u* pRefF, Zan32s refStepF, Zan32s mcTypeF, const Zan8u* pRefB, Zan32s refStepB, \
                   Zan32s mcTypeB, const Zan16s* pResidual, Zan32s residualStep, Zan8u* pDst, Zan32s dstStep, \
                   Zan32s roundControl) {                                                                    \
        if (!pRefF || !pRefB || !pResidual || !pDst) return zanStsNullPtr;                                   \
        mc::table[mc_bi_index(mcTypeF, mcTypeB, roundControl)](pRefF, refStepF, pRefB, refStepB, pResidual,  \
                                                               residualStep, pDst, dstStep, height);        \
        return zanStsOk;                                                                                     \
    }
ZAN_MC_BI(zaniMC16x16B_8u_C1, kMC16xHB, 16)
ZAN_MC_BI(zaniMC16x8B_8u_C1, kMC16xHB, 8)
ZAN_MC_BI(zaniMC16x4B_8u_C1, kMC16xHUVB, 4)
ZAN_MC_BI(zaniMC16x8BUV_8u_C1, kMC16xHUVB, 8)
ZAN_MC_BI(zaniMC8x16B_8u_C1, kMC8xHB, 16)
ZAN_MC_BI(zaniMC8x8B_8u_C1, kMC8xHB, 8)
ZAN_MC_BI(zaniMC8x4B_8u_C1, kMC8xHB, 4)
#undef ZAN_MC_BI

// The two-plane residual forms hand the kernel one record, cleared first.
#define ZAN_MC_PAIR(name, height)                                                                            \
    ZanStatus name(const Zan8u* pRef, Zan32s refStep, const Zan16s* pResidualU, const Zan16s* pResidualV,      \
                   Zan32s residualStep, Zan8u* pDst, Zan32s dstStep, Zan32s mcType, Zan32s roundControl) {     \
        if (!pRef || !pResidualU || !pResidualV || !pDst) return zanStsNullPtr;                                \
        mc::McPairArgs args;                                                                                   \
        zansSet_8u(0, reinterpret_cast<Zan8u*>(&args), static_cast<Zan32s>(sizeof args));                      \
        args.pRef = pRef;                                                                                      \
        args.refStep = refStep;                                                                                \
        args.pResidualU = pResidualU;                                                                          \
        args.pResidualV = pResidualV;                                                                          \
        args.residualStep = residualStep;                                                                      \
        args.pDst = pDst;                                                                                      \
        args.dstStep = dstStep;                                                                                \
        mc::kMC8xHNV12[static_cast<Zan32u>(((mcType & 12) >> 1) + (roundControl & 1))](&args, height);         \
        return zanStsOk;                                                                                       \
    }
ZAN_MC_PAIR(zaniMC8x8_16s8u_P2C2R, 8)
ZAN_MC_PAIR(zaniMC8x4_16s8u_P2C2R, 4)
#undef ZAN_MC_PAIR

#define ZAN_MC_PAIR_BI(name, height)                                                                          \
    ZanStatus name(const Zan8u* pRefF, Zan32s refStepF, Zan32s mcTypeF, const Zan8u* pRefB, Zan32s refStepB,  \
                   Zan32s mcTypeB, const Zan16s* pResidualU, const Zan16s* pResidualV, Zan32s residualStep,   \
                   Zan8u* pDst, Zan32s dstStep, Zan32s roundControl) {                                        \
        if (!pRefF || !pRefB || !pResidualU || !pResidualV || !pDst) return zanStsNullPtr;                    \
        mc::McPairArgs args;                                                                                  \
        zansSet_8u(0, reinterpret_cast<Zan8u*>(&args), static_cast<Zan32s>(sizeof args));                     \
        args.pRef = pRefF;                                                                                    \
        args.refStep = refStepF;                                                                              \
        args.pRefB = pRefB;                                                                                   \
        args.refStepB = refStepB;                                                                             \
        args.pResidualU = pResidualU;                                                                         \
        args.pResidualV = pResidualV;                                                                         \
        args.residualStep = residualStep;                                                                     \
        args.pDst = pDst;                                                                                     \
        args.dstStep = dstStep;                                                                               \
        mc::kMC8xHNV12B[mc_bi_index(mcTypeF, mcTypeB, roundControl)](&args, height);                          \
        return zanStsOk;                                                                                      \
    }
ZAN_MC_PAIR_BI(zaniMC8x8B_16s8u_P2C2R, 8)
ZAN_MC_PAIR_BI(zaniMC8x4B_16s8u_P2C2R, 4)
#undef ZAN_MC_PAIR_BI

namespace {
Zan32u hp_index(Zan32s acc, Zan32s roundControl) { return static_cast<Zan32u>((acc & 3) * 2 + (roundControl & 1)); }
}  // namespace

#define ZAN_COPY_HP(name, table)                                                                       \
    ZanStatus name(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep, Zan32s acc,          \
                   Zan32s roundControl) {                                                               \
        if (!pSrc || !pDst) return zanStsNullPtr;                                                       \
        mc::table[hp_index(acc, roundControl)](pSrc, srcStep, pDst, dstStep);                           \
        return zanStsOk;                                                                                \
    }
ZAN_COPY_HP(zaniCopy16x16HP_8u_C1R, kCopy16x16HP)
ZAN_COPY_HP(zaniCopy16x8HP_8u_C1R, kCopy16x8HP)
ZAN_COPY_HP(zaniCopy8x8HP_8u_C1R, kCopy8x8HP)
ZAN_COPY_HP(zaniCopy8x4HP_8u_C1R, kCopy8x4HP)
#undef ZAN_COPY_HP

#define ZAN_INTERP_AVG(name, table)                                                                    \
    ZanStatus name(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pSrcDst, Zan32s srcDstStep, Zan32s acc,    \
                   Zan32s roundControl) {                                                               \
        if (!pSrc || !pSrcDst) return zanStsNullPtr;                                                    \
        mc::table[hp_index(acc, roundControl)](pSrc, srcStep, pSrcDst, srcDstStep);                     \
        return zanStsOk;                                                                                \
    }
ZAN_INTERP_AVG(zaniInterpolateAverage16x16_8u_C1IR, kInterpolateAverage16x16)
ZAN_INTERP_AVG(zaniInterpolateAverage16x8_8u_C1IR, kInterpolateAverage16x8)
ZAN_INTERP_AVG(zaniInterpolateAverage8x8_8u_C1IR, kInterpolateAverage8x8)
ZAN_INTERP_AVG(zaniInterpolateAverage8x4_8u_C1IR, kInterpolateAverage8x4)
#undef ZAN_INTERP_AVG

ZanStatus zaniAdd8x8HP_16s8u_C1RS(const Zan16s* pResidual, Zan32s residualStep, const Zan8u* pRef, Zan32s refStep,
                                  Zan8u* pDst, Zan32s dstStep, Zan32s acc, Zan32s roundControl) {
    if (!pResidual || !pRef || !pDst) return zanStsNullPtr;
    mc::kAdd8x8HP[hp_index(acc, roundControl)](pResidual, residualStep, pRef, refStep, pDst, dstStep);
    return zanStsOk;
}

ZanStatus zaniCopy16x16_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep) {
    if (!pSrc || !pDst) return zanStsNullPtr;
    mc::copy_simd<16>(pSrc, srcStep, pDst, dstStep);
    return zanStsOk;
}
ZanStatus zaniCopy8x8_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep) {
    if (!pSrc || !pDst) return zanStsNullPtr;
    mc::copy_simd<8>(pSrc, srcStep, pDst, dstStep);
    return zanStsOk;
}

ZanStatus zaniAverage16x16_8u_C1R(const Zan8u* pSrc1, Zan32s src1Step, const Zan8u* pSrc2, Zan32s src2Step,
                                  Zan8u* pDst, Zan32s dstStep) {
    if (!pSrc1 || !pSrc2 || !pDst) return zanStsNullPtr;
    mc::average_simd<16>(pSrc1, src1Step, pSrc2, src2Step, pDst, dstStep);
    return zanStsOk;
}
ZanStatus zaniAverage8x8_8u_C1R(const Zan8u* pSrc1, Zan32s src1Step, const Zan8u* pSrc2, Zan32s src2Step,
                                Zan8u* pDst, Zan32s dstStep) {
    if (!pSrc1 || !pSrc2 || !pDst) return zanStsNullPtr;
    mc::average_simd<8>(pSrc1, src1Step, pSrc2, src2Step, pDst, dstStep);
    return zanStsOk;
}
ZanStatus zaniAverage16x16_8u_C1IR(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pSrcDst, Zan32s srcDstStep) {
    if (!pSrc || !pSrcDst) return zanStsNullPtr;
    mc::average_simd<16>(pSrc, srcStep, pSrcDst, srcDstStep, pSrcDst, srcDstStep);
    return zanStsOk;
}
ZanStatus zaniAverage8x8_8u_C1IR(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pSrcDst, Zan32s srcDstStep) {
    if (!pSrc || !pSrcDst) return zanStsNullPtr;
    mc::average_simd<8>(pSrc, srcStep, pSrcDst, srcDstStep, pSrcDst, srcDstStep);
    return zanStsOk;
}

// The aligned kernel loads the residual with aligned loads; the result is the same.
ZanStatus zaniAdd8x8_16s8u_C1IRS(const Zan16s* pResidual, Zan32s residualStep, Zan8u* pSrcDst, Zan32s srcDstStep) {
    if (!pResidual || !pSrcDst) return zanStsNullPtr;
    if (((reinterpret_cast<std::uintptr_t>(pResidual) | static_cast<std::uintptr_t>(residualStep)) & 15) == 0)
        mc::add_simd<true>(pResidual, residualStep, pSrcDst, srcDstStep);
    else
        mc::add_simd<false>(pResidual, residualStep, pSrcDst, srcDstStep);
    return zanStsOk;
}

ZanStatus zaniAddC8x8_16s8u_C1IR(Zan16s value, Zan8u* pSrcDst, Zan32s srcDstStep) {
    if (!pSrcDst) return zanStsNullPtr;
    mc::add_const_simd(value, pSrcDst, srcDstStep);
    return zanStsOk;
}

}  // namespace zan::ZAN_PATH
