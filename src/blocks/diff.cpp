// Block differencing for encoders: the residual of a block against its
// prediction at a whole- or half-sample reference position (optionally
// handing back the prediction, formed in the same pass), against the average
// of two predictions, on two interleaved chroma channels, and the plain
// differences of two blocks.
//
// Predicted sample P(x, y) for the reference R and the rounding bit rc:
//   FF  R(x, y)
//   FH  (R(x, y) + R(x, y+1) + 1 - rc) >> 1
//   HF  (R(x, y) + R(x+d, y) + 1 - rc) >> 1
//   HH  (R(x, y) + R(x+d, y) + R(x, y+1) + R(x+d, y+1) + 2 - rc) >> 2
// d is 1, or 2 on interleaved channels.  HH is one exact sum with one shift.
// The difference is C - P in 16 bits (it cannot saturate with 8-bit samples).
// A bidirectional prediction is (P0 + P1 + 1) >> 1, both with the same rc.
#include <cstdint>
#include <type_traits>

#include "blocks/diff.h"
#include "common/scalar.h"
#include "common/simd.h"
#include "frame/bodies.h"

namespace zan::ZAN_PATH::diff {
namespace {

using namespace zan::diff;
using scalar::at;
using scalar::put;

// ============================================================ scalar rules

template <int P, int dx = 1>
Zan32s pred_rule(const Zan8u* r, Zan32s rs, Zan32s x, Zan32s y, Zan32s rc) {
    Zan32s a = at(r, rs, x, y);
    if constexpr (P == kFH) return (a + at(r, rs, x, y + 1) + 1 - rc) >> 1;
    if constexpr (P == kHF) return (a + at(r, rs, x + dx, y) + 1 - rc) >> 1;
    if constexpr (P == kHH)
        return (a + at(r, rs, x + dx, y) + at(r, rs, x, y + 1) + at(r, rs, x + dx, y + 1) + 2 - rc) >> 2;
    return a;
}

inline Zan16s sat16(Zan32s v) {
    return static_cast<Zan16s>(v < -32768 ? -32768 : v > 32767 ? 32767 : v);
}

template <int W, int H, int P, bool Pred>
void diff_rule(const Zan8u* r, Zan32s rs, const Zan8u* c, Zan32s cs, Zan16s* d, Zan32s ds, Zan16s* p, Zan32s ps,
               Zan32s rc) {
    for (Zan32s y = 0; y < H; ++y)
        for (Zan32s x = 0; x < W; ++x) {
            Zan32s pv = pred_rule<P>(r, rs, x, y, rc);
            put(d, ds, x, y, sat16(at(c, cs, x, y) - pv));
            if constexpr (Pred) put(p, ps, x, y, static_cast<Zan16s>(pv));
        }
    (void)p;
    (void)ps;
}

template <int W, int H, int PF, int PB>
void bi_rule(const Zan8u* rf, Zan32s rsf, const Zan8u* rb, Zan32s rsb, const Zan8u* c, Zan32s cs, Zan16s* d,
             Zan32s ds, Zan32s rc) {
    for (Zan32s y = 0; y < H; ++y)
        for (Zan32s x = 0; x < W; ++x) {
            Zan32s pv = (pred_rule<PF>(rf, rsf, x, y, rc) + pred_rule<PB>(rb, rsb, x, y, rc) + 1) >> 1;
            put(d, ds, x, y, sat16(at(c, cs, x, y) - pv));
        }
}

// Byte x of an interleaved row belongs to channel x & 1, sample x >> 1.
template <int H, int P>
void c2_rule(const Zan8u* r, Zan32s rs, const Zan8u* c, Zan32s cs, Zan16s* du, Zan32s dsu, Zan16s* dv, Zan32s dsv,
             Zan32s rc) {
    for (Zan32s y = 0; y < H; ++y)
        for (Zan32s x = 0; x < 16; ++x) {
            Zan16s v = sat16(at(c, cs, x, y) - pred_rule<P, 2>(r, rs, x, y, rc));
            if (x & 1) put(dv, dsv, x >> 1, y, v);
            else put(du, dsu, x >> 1, y, v);
        }
}

template <int H, int PF, int PB>
void c2b_rule(const Zan8u* rf, Zan32s rsf, const Zan8u* rb, Zan32s rsb, const Zan8u* c, Zan32s cs, Zan16s* du,
              Zan32s dsu, Zan16s* dv, Zan32s dsv, Zan32s rc) {
    for (Zan32s y = 0; y < H; ++y)
        for (Zan32s x = 0; x < 16; ++x) {
            Zan32s pv = (pred_rule<PF, 2>(rf, rsf, x, y, rc) + pred_rule<PB, 2>(rb, rsb, x, y, rc) + 1) >> 1;
            Zan16s v = sat16(at(c, cs, x, y) - pv);
            if (x & 1) put(dv, dsv, x >> 1, y, v);
            else put(du, dsu, x >> 1, y, v);
        }
}

template <int W, int H>
void sub8_rule(const Zan8u* a, Zan32s as, const Zan8u* b, Zan32s bs, Zan16s* d, Zan32s ds) {
    for (Zan32s y = 0; y < H; ++y)
        for (Zan32s x = 0; x < W; ++x) put(d, ds, x, y, static_cast<Zan16s>(at(a, as, x, y) - at(b, bs, x, y)));
}

// 16-bit subtraction that wraps: the difference modulo 65536 as a signed value.
template <int W, int H>
void sub16_rule(const Zan16u* a, Zan32s as, const Zan16u* b, Zan32s bs, Zan16s* d, Zan32s ds) {
    for (Zan32s y = 0; y < H; ++y)
        for (Zan32s x = 0; x < W; ++x)
            put(d, ds, x, y, static_cast<Zan16s>(static_cast<Zan16u>(at(a, as, x, y) - at(b, bs, x, y))));
}

// ========================================================== vector kernels
//
// A row of W samples (16 or 8) is one load of W bytes.  The current row and
// a prediction held as bytes give their difference with one pmaddubsw per 8
// samples: the bytes interleaved as (C, P) pairs times (1, -1).  The
// two-sample averages stay in bytes: pavgb is (a + b + 1) >> 1, and with
// rc = 1 the odd sums lose the 1 again.  HH is formed in 16 bits from
// horizontal pair sums (pmaddubsw by ones), each row's pair sums serving the
// row above and the row below.

using simd::load16;
using simd::load8;
using simd::row;

template <int W>
inline __m128i load_row(const Zan8u* p) {
    if constexpr (W == 16) return load16(p);
    else return load8(p);
}

template <bool A>
inline void store(Zan8u* p, __m128i v) {
    if constexpr (A) _mm_store_si128(reinterpret_cast<__m128i*>(p), v);
    else _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v);
}

// 16-bit halves of a row: samples 0..7 and 8..15.
struct Wide {
    __m128i lo, hi;
};

// Predictions of successive rows of one reference position.  next<Odd>()
// returns the next row: bytes for FF, FH, HF; 16-bit halves for HH (hi
// unused for W = 8).
template <int P, int W, int dx = 1>
class Predictor {
public:
    Predictor(const Zan8u* r, Zan32s rs, Zan32s rc) : r_(r), rs_(rs) {
        if constexpr (P == kFH || P == kHF) odd_ = _mm_set1_epi8(static_cast<char>(rc));
        if constexpr (P == kFH) prev_ = load_row<W>(r_);
        if constexpr (P == kHH) {
            round_ = _mm_set1_epi16(static_cast<short>(2 - rc));
            sums_ = add(pair_sums(r_), Wide{round_, round_});
        }
    }

    // Odd: the number of the row to predict is odd.  Rows come in order,
    // starting at row 0.
    template <int Odd>
    auto next() {
        if constexpr (P == kFF) {
            __m128i a = load_row<W>(r_);
            r_ += rs_;
            return a;
        } else if constexpr (P == kFH) {
            r_ += rs_;
            __m128i b = load_row<W>(r_);
            __m128i v = average(prev_, b);
            prev_ = b;
            return v;
        } else if constexpr (P == kHF) {
            __m128i v = average(load_row<W>(r_), load_row<W>(r_ + dx));
            r_ += rs_;
            return v;
        } else {
            // The rounding constant rides on the pair sums of the even rows,
            // which serve an even row as its upper and an odd row as its
            // lower neighbour: one add of it per two rows.
            r_ += rs_;
            Wide below = pair_sums(r_);
            if constexpr (Odd != 0) below = add(below, Wide{round_, round_});
            Wide t = add(sums_, below);
            sums_ = below;
            return Wide{_mm_srli_epi16(t.lo, 2), _mm_srli_epi16(t.hi, 2)};
        }
    }

private:
    // (a + b + 1 - rc) >> 1 on bytes.
    __m128i average(__m128i a, __m128i b) const {
        return _mm_sub_epi8(_mm_avg_epu8(a, b), _mm_and_si128(_mm_xor_si128(a, b), odd_));
    }
    static Wide add(Wide a, Wide b) {
        return Wide{_mm_add_epi16(a.lo, b.lo), W == 16 ? _mm_add_epi16(a.hi, b.hi) : a.hi};
    }
    // R(x) + R(x + dx) in 16 bits.
    static Wide pair_sums(const Zan8u* p) {
        const __m128i ones = _mm_set1_epi8(1);
        __m128i a = load_row<W>(p), b = load_row<W>(p + dx);
        Wide s{_mm_maddubs_epi16(_mm_unpacklo_epi8(a, b), ones), _mm_setzero_si128()};
        if constexpr (W == 16) s.hi = _mm_maddubs_epi16(_mm_unpackhi_epi8(a, b), ones);
        return s;
    }

    const Zan8u* r_;
    std::ptrdiff_t rs_;
    __m128i odd_ = _mm_setzero_si128(), prev_ = _mm_setzero_si128(), round_ = _mm_setzero_si128();
    Wide sums_{_mm_setzero_si128(), _mm_setzero_si128()};
};

// Row parities for next<Odd>(); every block height is even.
constexpr std::integral_constant<int, 0> kEven{};
constexpr std::integral_constant<int, 1> kOdd{};

template <int W>
inline __m128i to_bytes(__m128i v) {
    return v;
}
template <int W>
inline __m128i to_bytes(Wide v) {
    return _mm_packus_epi16(v.lo, W == 16 ? v.hi : v.lo);
}

// (C, P) byte pairs times (1, -1): C - P in each 16-bit lane.
inline __m128i minus_pairs() { return _mm_set1_epi16(static_cast<short>(0xFF01)); }

// The row of differences C - P, P in bytes or in 16-bit halves.
template <int W, bool A>
inline void put_diff(Zan8u* d, __m128i c, __m128i p) {
    store<A>(d, _mm_maddubs_epi16(_mm_unpacklo_epi8(c, p), minus_pairs()));
    if constexpr (W == 16) store<A>(d + 16, _mm_maddubs_epi16(_mm_unpackhi_epi8(c, p), minus_pairs()));
}
template <int W, bool A>
inline void put_diff(Zan8u* d, __m128i c, Wide p) {
    const __m128i zero = _mm_setzero_si128();
    store<A>(d, _mm_subs_epi16(_mm_unpacklo_epi8(c, zero), p.lo));
    if constexpr (W == 16) store<A>(d + 16, _mm_subs_epi16(_mm_unpackhi_epi8(c, zero), p.hi));
}

template <int W, bool A>
inline void put_pred(Zan8u* p, __m128i v) {
    const __m128i zero = _mm_setzero_si128();
    store<A>(p, _mm_unpacklo_epi8(v, zero));
    if constexpr (W == 16) store<A>(p + 16, _mm_unpackhi_epi8(v, zero));
}
template <int W, bool A>
inline void put_pred(Zan8u* p, Wide v) {
    store<A>(p, v.lo);
    if constexpr (W == 16) store<A>(p + 16, v.hi);
}

// A: pDiff, diffStep (and pPredictor, predictorStep) are multiples of 16.
template <int W, int H, int P, bool Pred, bool A>
void diff_simd(const Zan8u* r, Zan32s rs, const Zan8u* c, Zan32s cs, Zan16s* d, Zan32s ds, Zan16s* p, Zan32s ps,
               Zan32s rc) {
    Predictor<P, W> pred(r, rs, rc);
    auto one = [&](Zan32s y, auto odd) {
        __m128i cv = load_row<W>(row(c, cs, y));
        auto pv = pred.template next<odd()>();
        put_diff<W, A>(row(d, ds, y), cv, pv);
        if constexpr (Pred) put_pred<W, A>(row(p, ps, y), pv);
    };
    for (Zan32s y = 0; y < H; y += 2) {
        one(y, kEven);
        one(y + 1, kOdd);
    }
    (void)p;
    (void)ps;
}

template <int W, int H, int PF, int PB, bool A>
void bi_simd(const Zan8u* rf, Zan32s rsf, const Zan8u* rb, Zan32s rsb, const Zan8u* c, Zan32s cs, Zan16s* d,
             Zan32s ds, Zan32s rc) {
    Predictor<PF, W> fwd(rf, rsf, rc);
    Predictor<PB, W> bwd(rb, rsb, rc);
    auto one = [&](Zan32s y, auto odd) {
        __m128i cv = load_row<W>(row(c, cs, y));
        __m128i pv = _mm_avg_epu8(to_bytes<W>(fwd.template next<odd()>()), to_bytes<W>(bwd.template next<odd()>()));
        put_diff<W, A>(row(d, ds, y), cv, pv);
    };
    for (Zan32s y = 0; y < H; y += 2) {
        one(y, kEven);
        one(y + 1, kOdd);
    }
}

// Even bytes (U) to the low half, odd bytes (V) to the high half.
alignas(16) constexpr Zan8u kSplitChannels[16] = {0, 2, 4, 6, 8, 10, 12, 14, 1, 3, 5, 7, 9, 11, 13, 15};

// C and P split into channels: U differences from the low halves, V from the high.
template <bool A>
inline void put_diff_c2(Zan8u* du, Zan8u* dv, __m128i c, __m128i p) {
    const __m128i split = simd::load16a(kSplitChannels);
    c = _mm_shuffle_epi8(c, split);
    p = _mm_shuffle_epi8(p, split);
    store<A>(du, _mm_maddubs_epi16(_mm_unpacklo_epi8(c, p), minus_pairs()));
    store<A>(dv, _mm_maddubs_epi16(_mm_unpackhi_epi8(c, p), minus_pairs()));
}

template <int H, int P, bool A>
void c2_simd(const Zan8u* r, Zan32s rs, const Zan8u* c, Zan32s cs, Zan16s* du, Zan32s dsu, Zan16s* dv, Zan32s dsv,
             Zan32s rc) {
    Predictor<P, 16, 2> pred(r, rs, rc);
    auto one = [&](Zan32s y, auto odd) {
        put_diff_c2<A>(row(du, dsu, y), row(dv, dsv, y), load16(row(c, cs, y)),
                       to_bytes<16>(pred.template next<odd()>()));
    };
    for (Zan32s y = 0; y < H; y += 2) {
        one(y, kEven);
        one(y + 1, kOdd);
    }
}

template <int H, int PF, int PB, bool A>
void c2b_simd(const Zan8u* rf, Zan32s rsf, const Zan8u* rb, Zan32s rsb, const Zan8u* c, Zan32s cs, Zan16s* du,
              Zan32s dsu, Zan16s* dv, Zan32s dsv, Zan32s rc) {
    Predictor<PF, 16, 2> fwd(rf, rsf, rc);
    Predictor<PB, 16, 2> bwd(rb, rsb, rc);
    auto one = [&](Zan32s y, auto odd) {
        __m128i pv = _mm_avg_epu8(to_bytes<16>(fwd.template next<odd()>()), to_bytes<16>(bwd.template next<odd()>()));
        put_diff_c2<A>(row(du, dsu, y), row(dv, dsv, y), load16(row(c, cs, y)), pv);
    };
    for (Zan32s y = 0; y < H; y += 2) {
        one(y, kEven);
        one(y + 1, kOdd);
    }
}

// S1 - S2 on 8-bit samples.  Rows of 4 go two to a vector.
template <int W, int H>
void sub8_simd(const Zan8u* a, Zan32s as, const Zan8u* b, Zan32s bs, Zan16s* d, Zan32s ds) {
    if constexpr (W == 4) {
        for (Zan32s y = 0; y < H; y += 2) {
            __m128i av = _mm_unpacklo_epi32(simd::load4(row(a, as, y)), simd::load4(row(a, as, y + 1)));
            __m128i bv = _mm_unpacklo_epi32(simd::load4(row(b, bs, y)), simd::load4(row(b, bs, y + 1)));
            __m128i v = _mm_maddubs_epi16(_mm_unpacklo_epi8(av, bv), minus_pairs());
            simd::store8(row(d, ds, y), v);
            simd::store8(row(d, ds, y + 1), _mm_unpackhi_epi64(v, v));
        }
    } else {
        for (Zan32s y = 0; y < H; ++y) put_diff<W, false>(row(d, ds, y), load_row<W>(row(a, as, y)), load_row<W>(row(b, bs, y)));
    }
}

// S1 - S2 on 16-bit samples, wrapping.  A: aligned loads and stores.
template <int W, int H, bool A>
void sub16_simd(const Zan16u* a, Zan32s as, const Zan16u* b, Zan32s bs, Zan16s* d, Zan32s ds) {
    for (Zan32s y = 0; y < H; ++y) {
        if constexpr (W == 4) {
            simd::store8(row(d, ds, y), _mm_sub_epi16(load8(row(a, as, y)), load8(row(b, bs, y))));
        } else if constexpr (A) {
            store<true>(row(d, ds, y), _mm_sub_epi16(simd::load16a(row(a, as, y)), simd::load16a(row(b, bs, y))));
        } else {
            store<false>(row(d, ds, y), _mm_sub_epi16(load16(row(a, as, y)), load16(row(b, bs, y))));
        }
    }
}

// ================================================================= tables
//
// Forward tables: index (mcType & 12) + 1 if the predictor is wanted; in each
// group of four, entry 0 is the plain kernel, 1 the one that also stores the
// predictor, 2 and 3 repeat the plain kernel.  First index: aligned stores.

#define ZAN_FWD_GROUP(W, H, P, A) \
    diff_simd<W, H, P, false, A>, diff_simd<W, H, P, true, A>, diff_simd<W, H, P, false, A>, diff_simd<W, H, P, false, A>
#define ZAN_FWD_TABLE(W, H, A) \
    {ZAN_FWD_GROUP(W, H, kFF, A), ZAN_FWD_GROUP(W, H, kFH, A), ZAN_FWD_GROUP(W, H, kHF, A), ZAN_FWD_GROUP(W, H, kHH, A)}
#define ZAN_FWD_TABLES(W, H) {ZAN_FWD_TABLE(W, H, false), ZAN_FWD_TABLE(W, H, true)}

constexpr DiffFn kDiff16x16[2][16] = ZAN_FWD_TABLES(16, 16);
constexpr DiffFn kDiff16x8[2][16] = ZAN_FWD_TABLES(16, 8);
constexpr DiffFn kDiff8x16[2][16] = ZAN_FWD_TABLES(8, 16);
constexpr DiffFn kDiff8x8[2][16] = ZAN_FWD_TABLES(8, 8);
constexpr DiffFn kDiff8x4[2][16] = ZAN_FWD_TABLES(8, 4);

#undef ZAN_FWD_TABLES
#undef ZAN_FWD_TABLE
#undef ZAN_FWD_GROUP

// Bidirectional tables: index ((mcTypeF & 12) >> 2) | (mcTypeB & 12), the
// forward position varying fastest.
#define ZAN_BI_ROW(kernel, PB, A, ...) \
    kernel<__VA_ARGS__, kFF, PB, A>, kernel<__VA_ARGS__, kFH, PB, A>, kernel<__VA_ARGS__, kHF, PB, A>, kernel<__VA_ARGS__, kHH, PB, A>
#define ZAN_BI_TABLE(kernel, A, ...)                                                       \
    {ZAN_BI_ROW(kernel, kFF, A, __VA_ARGS__), ZAN_BI_ROW(kernel, kFH, A, __VA_ARGS__),      \
     ZAN_BI_ROW(kernel, kHF, A, __VA_ARGS__), ZAN_BI_ROW(kernel, kHH, A, __VA_ARGS__)}
#define ZAN_BI_TABLES(kernel, ...) {ZAN_BI_TABLE(kernel, false, __VA_ARGS__), ZAN_BI_TABLE(kernel, true, __VA_ARGS__)}

constexpr DiffBFn kDiff16x16B[2][16] = ZAN_BI_TABLES(bi_simd, 16, 16);
constexpr DiffBFn kDiff16x8B[2][16] = ZAN_BI_TABLES(bi_simd, 16, 8);
constexpr DiffBFn kDiff8x16B[2][16] = ZAN_BI_TABLES(bi_simd, 8, 16);
constexpr DiffBFn kDiff8x8B[2][16] = ZAN_BI_TABLES(bi_simd, 8, 8);
constexpr DiffBFn kDiff8x4B[2][16] = ZAN_BI_TABLES(bi_simd, 8, 4);
constexpr DiffC2BFn kDiff8x8BC2[2][16] = ZAN_BI_TABLES(c2b_simd, 8);
constexpr DiffC2BFn kDiff8x4BC2[2][16] = ZAN_BI_TABLES(c2b_simd, 4);

#undef ZAN_BI_TABLES
#undef ZAN_BI_TABLE
#undef ZAN_BI_ROW

// Interleaved forward tables: index (mcType & 12) >> 2.
#define ZAN_C2_TABLE(H, A) {c2_simd<H, kFF, A>, c2_simd<H, kFH, A>, c2_simd<H, kHF, A>, c2_simd<H, kHH, A>}
constexpr DiffC2Fn kDiff8x8C2[2][4] = {ZAN_C2_TABLE(8, false), ZAN_C2_TABLE(8, true)};
constexpr DiffC2Fn kDiff8x4C2[2][4] = {ZAN_C2_TABLE(4, false), ZAN_C2_TABLE(4, true)};
#undef ZAN_C2_TABLE

// Entries 2 and 3 of every forward group are the plain kernel.
constexpr bool repeats_plain(const DiffFn (&t)[2][16]) {
    for (int a = 0; a < 2; ++a)
        for (int g = 0; g < 16; g += 4)
            if (t[a][g + 2] != t[a][g] || t[a][g + 3] != t[a][g]) return false;
    return true;
}
static_assert(repeats_plain(kDiff16x16) && repeats_plain(kDiff16x8) && repeats_plain(kDiff8x16) &&
              repeats_plain(kDiff8x8) && repeats_plain(kDiff8x4));

// ============================================================= catalogue
//
// Built from the tables, so that the checker runs exactly the kernels that
// the exported functions reach.  Names: shape, position(s), _p for the
// predictor, _a for aligned stores.

#define ZAN_FWD_ONE(tbl, W, H, P, PRED, A, tag) \
    {"getdiff" #W "x" #H tag, diff_rule<W, H, P, PRED>, tbl[A][4 * (P) + (PRED)], W, H, (P) + 4 * (PRED) + 16 * (A)}
#define ZAN_FWD_POS(tbl, W, H, P, pos)                                                               \
    ZAN_FWD_ONE(tbl, W, H, P, false, 0, pos), ZAN_FWD_ONE(tbl, W, H, P, true, 0, pos "_p"),            \
        ZAN_FWD_ONE(tbl, W, H, P, false, 1, pos "_a"), ZAN_FWD_ONE(tbl, W, H, P, true, 1, pos "_p_a")
#define ZAN_FWD_SHAPE(tbl, W, H)                                                            \
    ZAN_FWD_POS(tbl, W, H, kFF, "_ff"), ZAN_FWD_POS(tbl, W, H, kFH, "_fh"),                  \
        ZAN_FWD_POS(tbl, W, H, kHF, "_hf"), ZAN_FWD_POS(tbl, W, H, kHH, "_hh")

constexpr KernelPair<DiffFn> kFwdPairs[] = {
    ZAN_FWD_SHAPE(kDiff16x16, 16, 16), ZAN_FWD_SHAPE(kDiff16x8, 16, 8), ZAN_FWD_SHAPE(kDiff8x16, 8, 16),
    ZAN_FWD_SHAPE(kDiff8x8, 8, 8),     ZAN_FWD_SHAPE(kDiff8x4, 8, 4),
};

#undef ZAN_FWD_SHAPE
#undef ZAN_FWD_POS
#undef ZAN_FWD_ONE

// Bidirectional: tag names the forward position first.
#define ZAN_BI_ONE(tbl, rule, name, W, H, PF, PB, A, tag) \
    {name tag, rule, tbl[A][(PF) + 4 * (PB)], W, H, (PF) + 4 * (PB) + 16 * (A)}
#define ZAN_BI_PAIR(tbl, rule, name, W, H, PF, PB, tag) \
    ZAN_BI_ONE(tbl, rule, name, W, H, PF, PB, 0, tag), ZAN_BI_ONE(tbl, rule, name, W, H, PF, PB, 1, tag "_a")
#define ZAN_BI_B(tbl, rule, name, W, H, PB, b)                                                        \
    ZAN_BI_PAIR(tbl, (rule<kFF, PB>), name, W, H, kFF, PB, "_ff" b),                                  \
        ZAN_BI_PAIR(tbl, (rule<kFH, PB>), name, W, H, kFH, PB, "_fh" b),                              \
        ZAN_BI_PAIR(tbl, (rule<kHF, PB>), name, W, H, kHF, PB, "_hf" b),                              \
        ZAN_BI_PAIR(tbl, (rule<kHH, PB>), name, W, H, kHH, PB, "_hh" b)
#define ZAN_BI_ALL(tbl, rule, name, W, H)                                                           \
    ZAN_BI_B(tbl, rule, name, W, H, kFF, "_ff"), ZAN_BI_B(tbl, rule, name, W, H, kFH, "_fh"),       \
        ZAN_BI_B(tbl, rule, name, W, H, kHF, "_hf"), ZAN_BI_B(tbl, rule, name, W, H, kHH, "_hh")

template <int PF, int PB>
constexpr DiffBFn bi16x16 = bi_rule<16, 16, PF, PB>;
template <int PF, int PB>
constexpr DiffBFn bi16x8 = bi_rule<16, 8, PF, PB>;
template <int PF, int PB>
constexpr DiffBFn bi8x16 = bi_rule<8, 16, PF, PB>;
template <int PF, int PB>
constexpr DiffBFn bi8x8 = bi_rule<8, 8, PF, PB>;
template <int PF, int PB>
constexpr DiffBFn bi8x4 = bi_rule<8, 4, PF, PB>;
template <int PF, int PB>
constexpr DiffC2BFn c2b8x8 = c2b_rule<8, PF, PB>;
template <int PF, int PB>
constexpr DiffC2BFn c2b8x4 = c2b_rule<4, PF, PB>;

constexpr KernelPair<DiffBFn> kBiPairs[] = {
    ZAN_BI_ALL(kDiff16x16B, bi16x16, "getdiff16x16b", 16, 16), ZAN_BI_ALL(kDiff16x8B, bi16x8, "getdiff16x8b", 16, 8),
    ZAN_BI_ALL(kDiff8x16B, bi8x16, "getdiff8x16b", 8, 16),     ZAN_BI_ALL(kDiff8x8B, bi8x8, "getdiff8x8b", 8, 8),
    ZAN_BI_ALL(kDiff8x4B, bi8x4, "getdiff8x4b", 8, 4),
};
constexpr KernelPair<DiffC2BFn> kC2BPairs[] = {
    ZAN_BI_ALL(kDiff8x8BC2, c2b8x8, "getdiff8x8b_c2", 8, 8),
    ZAN_BI_ALL(kDiff8x4BC2, c2b8x4, "getdiff8x4b_c2", 8, 4),
};

#undef ZAN_BI_ALL
#undef ZAN_BI_B
#undef ZAN_BI_PAIR
#undef ZAN_BI_ONE

#define ZAN_C2_ONE(tbl, H, P, A, tag) \
    {"getdiff8x" #H "_c2" tag, c2_rule<H, P>, tbl[A][P], 8, H, (P) + 16 * (A)}
#define ZAN_C2_POS(tbl, H, P, pos) ZAN_C2_ONE(tbl, H, P, 0, pos), ZAN_C2_ONE(tbl, H, P, 1, pos "_a")
#define ZAN_C2_ALL(tbl, H) \
    ZAN_C2_POS(tbl, H, kFF, "_ff"), ZAN_C2_POS(tbl, H, kFH, "_fh"), ZAN_C2_POS(tbl, H, kHF, "_hf"), ZAN_C2_POS(tbl, H, kHH, "_hh")

constexpr KernelPair<DiffC2Fn> kC2Pairs[] = {ZAN_C2_ALL(kDiff8x8C2, 8), ZAN_C2_ALL(kDiff8x4C2, 4)};

#undef ZAN_C2_ALL
#undef ZAN_C2_POS
#undef ZAN_C2_ONE

constexpr KernelPair<Sub8Fn> kSub8Pairs[] = {
    {"sub16x16_8u", sub8_rule<16, 16>, sub8_simd<16, 16>, 16, 16, 0},
    {"sub8x8_8u", sub8_rule<8, 8>, sub8_simd<8, 8>, 8, 8, 0},
    {"sub4x4_8u", sub8_rule<4, 4>, sub8_simd<4, 4>, 4, 4, 0},
};
constexpr KernelPair<Sub16Fn> kSub16Pairs[] = {
    {"sub8x8_16u", sub16_rule<8, 8>, sub16_simd<8, 8, false>, 8, 8, 0},
    {"sub8x8_16u_a", sub16_rule<8, 8>, sub16_simd<8, 8, true>, 8, 8, 16},
    {"sub4x4_16u", sub16_rule<4, 4>, sub16_simd<4, 4, false>, 4, 4, 0},
};

}  // namespace

const Kernels kernels = {kFwdPairs, kBiPairs, kC2Pairs, kC2BPairs, kSub8Pairs, kSub16Pairs};

}  // namespace zan::ZAN_PATH::diff

// =============================================================== exports

namespace zan::ZAN_PATH {
namespace {

// A row pointer and its step that are both multiples of 16.
inline bool aligned_rows(const void* p, Zan32s step) {
    return ((reinterpret_cast<std::uintptr_t>(p) | static_cast<std::uintptr_t>(step)) & 15) == 0;
}

}  // namespace

// pPredictor is optional and not tested; mcType and roundControl are masked.
#define ZAN_GETDIFF(name, table)                                                                                   \
    ZanStatus name(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, Zan32s refStep, Zan16s* pDiff,            \
                   Zan32s diffStep, Zan16s* pPredictor, Zan32s predictorStep, Zan32s mcType, Zan32s roundControl) { \
        if (!pCur || !pRef || !pDiff) return zanStsNullPtr;                                                       \
        const int pred = pPredictor != nullptr;                                                                   \
        const bool aligned = aligned_rows(pDiff, diffStep) && (!pred || aligned_rows(pPredictor, predictorStep)); \
        diff::table[aligned][(mcType & 12) + pred](pRef, refStep, pCur, curStep, pDiff, diffStep, pPredictor,      \
                                                   predictorStep, roundControl & 1);                              \
        return zanStsOk;                                                                                          \
    }
ZAN_GETDIFF(zaniGetDiff16x16_8u16s_C1, kDiff16x16)
ZAN_GETDIFF(zaniGetDiff16x8_8u16s_C1, kDiff16x8)
ZAN_GETDIFF(zaniGetDiff8x16_8u16s_C1, kDiff8x16)
ZAN_GETDIFF(zaniGetDiff8x8_8u16s_C1, kDiff8x8)
ZAN_GETDIFF(zaniGetDiff8x4_8u16s_C1, kDiff8x4)
#undef ZAN_GETDIFF

#define ZAN_GETDIFF_B(name, table)                                                                             \
    ZanStatus name(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRefF, Zan32s refStepF, Zan32s mcTypeF,     \
                   const Zan8u* pRefB, Zan32s refStepB, Zan32s mcTypeB, Zan16s* pDiff, Zan32s diffStep,        \
                   Zan32s roundControl) {                                                                     \
        if (!pCur || !pRefF || !pRefB || !pDiff) return zanStsNullPtr;                                        \
        diff::table[aligned_rows(pDiff, diffStep)][((mcTypeF & 12) >> 2) | (mcTypeB & 12)](                   \
            pRefF, refStepF, pRefB, refStepB, pCur, curStep, pDiff, diffStep, roundControl & 1);              \
        return zanStsOk;                                                                                      \
    }
ZAN_GETDIFF_B(zaniGetDiff16x16B_8u16s_C1, kDiff16x16B)
ZAN_GETDIFF_B(zaniGetDiff16x8B_8u16s_C1, kDiff16x8B)
ZAN_GETDIFF_B(zaniGetDiff8x16B_8u16s_C1, kDiff8x16B)
ZAN_GETDIFF_B(zaniGetDiff8x8B_8u16s_C1, kDiff8x8B)
ZAN_GETDIFF_B(zaniGetDiff8x4B_8u16s_C1, kDiff8x4B)
#undef ZAN_GETDIFF_B

#define ZAN_GETDIFF_C2(name, table)                                                                              \
    ZanStatus name(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, Zan32s refStep, Zan16s* pDiffU,         \
                   Zan32s diffStepU, Zan16s* pDiffV, Zan32s diffStepV, Zan32s mcType, Zan32s roundControl) {     \
        if (!pCur || !pRef || !pDiffU || !pDiffV) return zanStsNullPtr;                                         \
        const bool aligned = aligned_rows(pDiffU, diffStepU) && aligned_rows(pDiffV, diffStepV);                \
        diff::table[aligned][(mcType & 12) >> 2](pRef, refStep, pCur, curStep, pDiffU, diffStepU, pDiffV,        \
                                                 diffStepV, roundControl & 1);                                  \
        return zanStsOk;                                                                                        \
    }
ZAN_GETDIFF_C2(zaniGetDiff8x8_8u16s_C2P2, kDiff8x8C2)
ZAN_GETDIFF_C2(zaniGetDiff8x4_8u16s_C2P2, kDiff8x4C2)
#undef ZAN_GETDIFF_C2

#define ZAN_GETDIFF_C2B(name, table)                                                                            \
    ZanStatus name(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRefF, Zan32s refStepF, Zan32s mcTypeF,      \
                   const Zan8u* pRefB, Zan32s refStepB, Zan32s mcTypeB, Zan16s* pDiffU, Zan32s diffStepU,       \
                   Zan16s* pDiffV, Zan32s diffStepV, Zan32s roundControl) {                                    \
        if (!pCur || !pRefF || !pRefB || !pDiffU || !pDiffV) return zanStsNullPtr;                             \
        const bool aligned = aligned_rows(pDiffU, diffStepU) && aligned_rows(pDiffV, diffStepV);               \
        diff::table[aligned][((mcTypeF & 12) >> 2) | (mcTypeB & 12)](pRefF, refStepF, pRefB, refStepB, pCur,    \
                                                                     curStep, pDiffU, diffStepU, pDiffV,        \
                                                                     diffStepV, roundControl & 1);              \
        return zanStsOk;                                                                                       \
    }
ZAN_GETDIFF_C2B(zaniGetDiff8x8B_8u16s_C2P2, kDiff8x8BC2)
ZAN_GETDIFF_C2B(zaniGetDiff8x4B_8u16s_C2P2, kDiff8x4BC2)
#undef ZAN_GETDIFF_C2B

ZanStatus zaniGetDiff4x4_8u16s_C1(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, Zan32s refStep,
                                  Zan16s* pDiff, Zan32s diffStep) {
    if (!pCur || !pRef || !pDiff) return zanStsNullPtr;
    diff::sub8_simd<4, 4>(pCur, curStep, pRef, refStep, pDiff, diffStep);
    return zanStsOk;
}

// The plain differences: S1 - S2, the 16-bit forms wrapping.
ZanStatus zaniSub16x16_8u16s_C1R(const Zan8u* pSrc1, Zan32s src1Step, const Zan8u* pSrc2, Zan32s src2Step,
                                 Zan16s* pDst, Zan32s dstStep) {
    if (!pSrc1 || !pSrc2 || !pDst) return zanStsNullPtr;
    diff::sub8_simd<16, 16>(pSrc1, src1Step, pSrc2, src2Step, pDst, dstStep);
    return zanStsOk;
}

ZanStatus zaniSub8x8_8u16s_C1R(const Zan8u* pSrc1, Zan32s src1Step, const Zan8u* pSrc2, Zan32s src2Step,
                               Zan16s* pDst, Zan32s dstStep) {
    if (!pSrc1 || !pSrc2 || !pDst) return zanStsNullPtr;
    diff::sub8_simd<8, 8>(pSrc1, src1Step, pSrc2, src2Step, pDst, dstStep);
    return zanStsOk;
}

ZanStatus zaniSub4x4_8u16s_C1R(const Zan8u* pSrc1, Zan32s src1Step, const Zan8u* pSrc2, Zan32s src2Step,
                               Zan16s* pDst, Zan32s dstStep) {
    if (!pSrc1 || !pSrc2 || !pDst) return zanStsNullPtr;
    diff::sub8_simd<4, 4>(pSrc1, src1Step, pSrc2, src2Step, pDst, dstStep);
    return zanStsOk;
}

// Aligned loads and stores when both sources, the destination and the three
// steps are multiples of 16.
ZanStatus zaniSub8x8_16u16s_C1R(const Zan16u* pSrc1, Zan32s src1Step, const Zan16u* pSrc2, Zan32s src2Step,
                                Zan16s* pDst, Zan32s dstStep) {
    if (!pSrc1 || !pSrc2 || !pDst) return zanStsNullPtr;
    if (aligned_rows(pSrc1, src1Step) && aligned_rows(pSrc2, src2Step) && aligned_rows(pDst, dstStep))
        diff::sub16_simd<8, 8, true>(pSrc1, src1Step, pSrc2, src2Step, pDst, dstStep);
    else
        diff::sub16_simd<8, 8, false>(pSrc1, src1Step, pSrc2, src2Step, pDst, dstStep);
    return zanStsOk;
}

ZanStatus zaniSub4x4_16u16s_C1R(const Zan16u* pSrc1, Zan32s src1Step, const Zan16u* pSrc2, Zan32s src2Step,
                                Zan16s* pDst, Zan32s dstStep) {
    if (!pSrc1 || !pSrc2 || !pDst) return zanStsNullPtr;
    diff::sub16_simd<4, 4, false>(pSrc1, src1Step, pSrc2, src2Step, pDst, dstStep);
    return zanStsOk;
}

}  // namespace zan::ZAN_PATH
