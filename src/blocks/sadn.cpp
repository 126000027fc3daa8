// SAD of one current block against a row of candidates (xN), and the index of
// the best candidate (xNI).
//
// Candidate i is the block whose top-left sample is pRef + i.  Results come
// in passes of eight; the count is rounded down to a multiple of 8.
#include <cstdint>
#include <type_traits>
#include <utility>

#include "blocks/sad.h"
#include "common/scalar.h"
#include "common/simd.h"
#include "frame/bodies.h"

namespace zan::ZAN_PATH::sad {
namespace {

using namespace zan::sad;
using scalar::absdiff;
using scalar::at;

// ============================================================ scalar rules

template <int B>
ZanStatus cand_rule(const Zan8u* c, Zan32s cs, const Zan8u* r, Zan32s rs, Zan16u* pResult, Zan32s count) {
    for (Zan32s i = 0; i < count; ++i) {
        Zan32s sum = 0;
        for (Zan32s y = 0; y < B; ++y)
            for (Zan32s x = 0; x < B; ++x) sum += absdiff(at(c, cs, x, y), at(r, rs, x + i, y));
        pResult[i] = static_cast<Zan16u>(sum);
    }
    return zanStsOk;
}

// The first index of the smallest result.
Zan32s min_index_rule(const Zan16u* pResult, Zan32s count) {
    Zan32s best = 0;
    for (Zan32s i = 1; i < count; ++i)
        if (pResult[i] < pResult[best]) best = i;
    return best;
}

// ========================================================== vector kernels
//
// Every kernel makes eight candidates per pass.  The any-alignment kernels
// (SSE2) read exactly the bytes of their candidates.  The aligned kernels
// (SSSE3) read whole aligned 16-byte units of the reference, and form each
// candidate with palignr at a compile-time shift: a pass starting S bytes into
// its unit is built for S, and the next pass, 8 bytes on, for (S + 8) & 15.

using simd::load16;
using simd::load16a;
using simd::load4;
using simd::load8;
using simd::row;

// Calls f(std::integral_constant<int, k>) for k = 0..N-1, so that k can set
// an immediate operand.
template <class F, int... K>
inline void unroll_seq(F& f, std::integer_sequence<int, K...>) {
    (f(std::integral_constant<int, K>{}), ...);
}
template <int N, class F>
inline void unroll(F f) {
    unroll_seq(f, std::make_integer_sequence<int, N>{});
}

// Bytes N..N+15 of the 32 bytes lo:hi (N = 0..16): palignr when Ssse3, else
// two SSE2 byte shifts.
template <int N, bool Ssse3>
inline __m128i cat(__m128i lo, __m128i hi) {
    if constexpr (N == 0) return lo;
    else if constexpr (N == 16) return hi;
    else if constexpr (Ssse3) return _mm_alignr_epi8(hi, lo, N);
    else return _mm_or_si128(_mm_srli_si128(lo, N), _mm_slli_si128(hi, 16 - N));
}

// Bytes N..N+15 of the 48 bytes x0:x1:x2 (N = 0..31).
template <int N, bool Ssse3>
inline __m128i slide(__m128i x0, __m128i x1, __m128i x2) {
    if constexpr (N < 16) return cat<N, Ssse3>(x0, x1);
    else return cat<N - 16, Ssse3>(x1, x2);
}

inline __m128i absdiff_u8(__m128i a, __m128i b) { return _mm_or_si128(_mm_subs_epu8(a, b), _mm_subs_epu8(b, a)); }

// Eight psadbw sums, each with its two partial sums (below 32768) in 16-bit
// lanes 0 and 4, to eight 16-bit totals: candidate k in lane k.
inline __attribute__((always_inline)) __m128i pack_sads(const __m128i (&acc)[8]) {
    __m128i a = _mm_or_si128(_mm_or_si128(acc[0], _mm_slli_epi64(acc[1], 16)),
                             _mm_or_si128(_mm_slli_epi64(acc[2], 32), _mm_slli_epi64(acc[3], 48)));
    __m128i b = _mm_or_si128(_mm_or_si128(acc[4], _mm_slli_epi64(acc[5], 16)),
                             _mm_or_si128(_mm_slli_epi64(acc[6], 32), _mm_slli_epi64(acc[7], 48)));
    return _mm_add_epi16(_mm_unpacklo_epi64(a, b), _mm_unpackhi_epi64(a, b));
}

// The current block, loaded once per kernel call in the layout that its
// size's pass compares against; a 16x16 block is read row by row per pass.
// The eight sums as they stand after a row pair.  The empty asm keeps the
// compiler from hoisting the loads of later rows above these adds, which
// leaves more values live than there are registers and spills them.
inline void keep_sums(__m128i (&acc)[8]) {
    asm("" : "+x"(acc[0]), "+x"(acc[1]), "+x"(acc[2]), "+x"(acc[3]));
    asm("" : "+x"(acc[4]), "+x"(acc[5]), "+x"(acc[6]), "+x"(acc[7]));
}

// Rows of 8 at p0 and p1 side by side (movq, movhps).
inline __m128i load8x2(const Zan8u* p0, const Zan8u* p1) {
    return _mm_castpd_si128(_mm_loadh_pd(_mm_castsi128_pd(load8(p0)), reinterpret_cast<const double*>(p1)));
}

template <int B>
struct Current {
    __m128i v[4];
    __m128i w[4];  // 8x8: rows 2j and 2j + 1 side by side, for the any-alignment kernel
    const Zan8u* p;
    Zan32s step;
    __attribute__((always_inline)) Current(const Zan8u* c, Zan32s cs) : v(), w(), p(c), step(cs) {
        if constexpr (B == 2) {
            // Column x as one 16-bit word (row 0 low byte, row 1 high byte),
            // in every lane.
            for (int x = 0; x < 2; ++x)
                v[x] = _mm_set1_epi16(static_cast<short>(c[x] | row(c, cs, 1)[x] << 8));
        } else if constexpr (B == 4) {
            // Columns 0..3, each as the four bytes of rows 0..3.
            v[0] = _mm_unpacklo_epi16(_mm_unpacklo_epi8(load4(c), load4(row(c, cs, 1))),
                                      _mm_unpacklo_epi8(load4(row(c, cs, 2)), load4(row(c, cs, 3))));
        } else if constexpr (B == 8) {
            // Row pairs (2j, 2j + 1), columns 0..7, each column as two bytes.
            for (int j = 0; j < 4; ++j) {
                v[j] = _mm_unpacklo_epi8(load8(row(c, cs, 2 * j)), load8(row(c, cs, 2 * j + 1)));
                w[j] = load8x2(row(c, cs, 2 * j), row(c, cs, 2 * j + 1));
            }
        }
    }
};

// 2x2: rows 0 and 1 interleaved byte by byte put one column in each 16-bit
// lane; candidate k compares columns k and k + 1 with the two current
// columns, and the four byte differences add up in lane k.
inline __attribute__((always_inline)) __m128i pass2x2(const Current<2>& cur, const Zan8u* r, Zan32s rs) {
    const Zan8u* r1 = row(r, rs, 1);
    __m128i d0 = absdiff_u8(_mm_unpacklo_epi8(load8(r), load8(r1)), cur.v[0]);          // columns 0..7
    __m128i d1 = absdiff_u8(_mm_unpacklo_epi8(load8(r + 1), load8(r1 + 1)), cur.v[1]);  // columns 1..8
    const __m128i low = _mm_set1_epi16(0xFF);
    __m128i s = _mm_add_epi16(_mm_and_si128(d0, low), _mm_and_si128(d1, low));
    return _mm_add_epi16(s, _mm_add_epi16(_mm_srli_epi16(d0, 8), _mm_srli_epi16(d1, 8)));
}

// 4x4: rowv(y) holds columns 0..10 of reference row y of the pass at bytes
// 0..10.  Interleaving the four rows gives a stream of 4-byte columns;
// candidate k is the 16 bytes from column k on.
template <bool Ssse3, class RowV>
inline __attribute__((always_inline)) __m128i pass4x4(const Current<4>& cur, RowV rowv) {
    __m128i v0 = rowv(0), v1 = rowv(1), v2 = rowv(2), v3 = rowv(3);
    __m128i l01 = _mm_unpacklo_epi8(v0, v1), l23 = _mm_unpacklo_epi8(v2, v3);
    __m128i t0 = _mm_unpacklo_epi16(l01, l23);  // columns 0..3
    __m128i t1 = _mm_unpackhi_epi16(l01, l23);  // columns 4..7
    __m128i t2 = _mm_unpacklo_epi16(_mm_unpackhi_epi8(v0, v1), _mm_unpackhi_epi8(v2, v3));  // columns 8..11
    __m128i acc[8];
    unroll<8>([&](auto k) { acc[k] = _mm_sad_epu8(slide<4 * decltype(k)::value, Ssse3>(t0, t1, t2), cur.v[0]); });
    return pack_sads(acc);
}

// 8x8, any alignment: candidate k of rows 2j and 2j + 1 as one movq and one
// movhps, against the current row pair laid out the same way.
inline __attribute__((always_inline)) __m128i pass8x8(const Current<8>& cur, const Zan8u* r, Zan32s rs) {
    const __m128i zero = _mm_setzero_si128();
    __m128i acc[8] = {zero, zero, zero, zero, zero, zero, zero, zero};
    for (int j = 0; j < 4; ++j) {
        const Zan8u* p0 = row(r, rs, 2 * j);
        const Zan8u* p1 = row(r, rs, 2 * j + 1);
        unroll<8>([&](auto k) { acc[k] = _mm_add_epi64(acc[k], _mm_sad_epu8(load8x2(p0 + k, p1 + k), cur.w[j])); });
        keep_sums(acc);
    }
    return pack_sads(acc);
}

// 8x8 from aligned units: rowv(y) holds columns 0..14 of reference row y at
// bytes 0..14.  Two rows interleaved give a stream of 2-byte columns;
// candidate k is the 16 bytes from column k on.
template <class RowV>
inline __attribute__((always_inline)) __m128i pass8x8_a(const Current<8>& cur, RowV rowv) {
    const __m128i zero = _mm_setzero_si128();
    __m128i acc[8] = {zero, zero, zero, zero, zero, zero, zero, zero};
    for (int j = 0; j < 4; ++j) {
        __m128i a = rowv(2 * j), b = rowv(2 * j + 1);
        __m128i lo = _mm_unpacklo_epi8(a, b), hi = _mm_unpackhi_epi8(a, b);  // columns 0..7, 8..15
        unroll<8>([&](auto k) {
            __m128i x = cat<2 * decltype(k)::value, true>(lo, hi);
            acc[k] = _mm_add_epi64(acc[k], _mm_sad_epu8(x, cur.v[j]));
        });
        keep_sums(acc);
    }
    return pack_sads(acc);
}

// 16x16: one load of each current row against the eight candidates of the
// reference row; cands(y) gives, for reference row y of the pass, a function
// of the compile-time k that forms candidate k.  The first row's sums start
// the eight totals.
template <class Cands>
inline __attribute__((always_inline)) __m128i pass16x16(const Current<16>& cur, Cands cands) {
    __m128i acc[8];
    {
        __m128i c = load16(cur.p);
        auto candidate = cands(0);
        unroll<8>([&](auto k) { acc[k] = _mm_sad_epu8(candidate(k), c); });
    }
#pragma GCC unroll 5
    for (Zan32s y = 1; y < 16; ++y) {
        __m128i c = load16(row(cur.p, cur.step, y));
        auto candidate = cands(y);
        unroll<8>([&](auto k) { acc[k] = _mm_add_epi64(acc[k], _mm_sad_epu8(candidate(k), c)); });
    }
    return pack_sads(acc);
}

// Any alignment: eight unaligned loads of the reference row.
inline __attribute__((always_inline)) __m128i pass16x16_u(const Current<16>& cur, const Zan8u* r, Zan32s rs) {
    return pass16x16(cur, [&](Zan32s y) {
        const Zan8u* p = row(r, rs, y);
        return [p](auto k) { return load16(p + decltype(k)::value); };
    });
}

// From aligned units: the pass starts P bytes into the unit at base;
// candidate k is bytes P + k .. P + k + 15, which reach a third unit when
// P >= 10.
template <int P>
inline __attribute__((always_inline)) __m128i pass16x16_a(const Current<16>& cur, const Zan8u* base, Zan32s rs) {
    return pass16x16(cur, [&](Zan32s y) {
        const Zan8u* u = row(base, rs, y);
        __m128i u0 = load16a(u), u1 = load16a(u + 16);
        __m128i u2 = P + 22 >= 32 ? load16a(u + 32) : _mm_setzero_si128();
        return [=](auto k) { return slide<P + decltype(k)::value, true>(u0, u1, u2); };
    });
}

// Bytes P..P+15 of a row from the aligned units at u that hold bytes P..Last;
// a unit wholly past Last is not read.
template <int P, int Last>
inline __m128i aligned_row(const Zan8u* u) {
    __m128i u1 = Last >= 16 ? load16a(u + 16) : _mm_setzero_si128();
    return cat<P, true>(load16a(u), u1);
}

// One pass of eight candidates starting at r, any alignment.  Every pass is
// inlined into its kernel (a call per pass cost about 8% on 8x8 rows).
template <int B>
inline __attribute__((always_inline)) __m128i pass_u(const Current<B>& cur, const Zan8u* r, Zan32s rs) {
    if constexpr (B == 2) {
        return pass2x2(cur, r, rs);
    } else if constexpr (B == 4) {
        // Columns 0..7 and 3..10, overlapping at 3..7.
        return pass4x4<false>(cur, [&](int y) {
            const Zan8u* p = row(r, rs, y);
            return _mm_or_si128(load8(p), _mm_slli_si128(load8(p + 3), 3));
        });
    } else if constexpr (B == 8) {
        return pass8x8(cur, r, rs);
    } else {
        return pass16x16_u(cur, r, rs);
    }
}

// One pass of eight candidates starting P bytes into the aligned unit at base.
template <int B, int P>
inline __attribute__((always_inline)) __m128i pass_a(const Current<B>& cur, const Zan8u* base, Zan32s rs) {
    constexpr int last = P + 7 + B - 1;  // the last byte the pass needs, from base
    if constexpr (B == 4)
        return pass4x4<true>(cur, [&](int y) { return aligned_row<P, last>(row(base, rs, y)); });
    else if constexpr (B == 8)
        return pass8x8_a(cur, [&](int y) { return aligned_row<P, last>(row(base, rs, y)); });
    else
        return pass16x16_a<P>(cur, base, rs);
}

// Any alignment of pRef, refStep and pResult.
template <int B>
ZanStatus sad_xn_sse2(const Zan8u* c, Zan32s cs, const Zan8u* r, Zan32s rs, Zan16u* pResult, Zan32s count) {
    const Current<B> cur(c, cs);
    for (Zan32s i = 0; i < count; i += 8) simd::store16(pResult + i, pass_u<B>(cur, r + i, rs));
    return zanStsOk;
}

// pRef & 15 == S, refStep and pResult multiples of 16.  Passes alternate
// between phase S and phase (S + 8) & 15; the aligned base moves on by 16
// bytes every two passes.
template <int B, int S>
ZanStatus sad_xn_a_ssse3(const Zan8u* c, Zan32s cs, const Zan8u* r, Zan32s rs, Zan16u* pResult, Zan32s count) {
    constexpr int S2 = (S + 8) & 15;
    constexpr int next = S2 < S ? 16 : 0;  // the second pass's base, from the first's
    const Current<B> cur(c, cs);
    const Zan8u* base = r - S;  // the aligned unit holding pRef
    for (Zan32s i = 0; i < count; i += 16, base += 16) {
        _mm_store_si128(reinterpret_cast<__m128i*>(pResult + i), pass_a<B, S>(cur, base, rs));
        if (i + 8 < count)
            _mm_store_si128(reinterpret_cast<__m128i*>(pResult + i + 8), pass_a<B, S2>(cur, base + next, rs));
    }
    return zanStsOk;
}

constexpr CandFn sad_2x2xn_8u_sse2 = sad_xn_sse2<2>;
constexpr CandFn sad_4x4xn_8u_sse2 = sad_xn_sse2<4>;
constexpr CandFn sad_8x8xn_8u_sse2 = sad_xn_sse2<8>;
constexpr CandFn sad_16x16xn_8u_sse2 = sad_xn_sse2<16>;

// Index of the first smallest result.  Lane j of the vectors follows results
// j, j + 8, j + 16, ...: a running minimum, from 32767, and its index, from
// j, replaced only by a strictly smaller value.  The eight lanes then merge
// on the 32-bit key minimum << 16 | index, so the lower index wins ties
// across lanes too.  Indices live in 16 bits, so the results are taken in
// chunks of 65536, again keeping the earlier chunk on a tie.  Flip turns
// 0..65535 into signed order by flipping the top bit; without it the results
// must lie in 0..32766.
template <bool Flip, bool Aligned>
inline Zan32s min_key_chunk(const Zan16u* p, Zan32s n) {
    const __m128i flip = _mm_set1_epi16(Flip ? -32768 : 0);
    const __m128i eight = _mm_set1_epi16(8);
    __m128i minv = _mm_set1_epi16(32767);
    __m128i index = _mm_setr_epi16(0, 1, 2, 3, 4, 5, 6, 7);
    __m128i at = index;
    for (Zan32s i = 0; i < n; i += 8) {
        __m128i v;
        if constexpr (Aligned) v = load16a(p + i);
        else v = load16(p + i);
        v = _mm_xor_si128(v, flip);
        __m128i smaller = _mm_cmpgt_epi16(minv, v);
        minv = _mm_min_epi16(minv, v);
        index = _mm_or_si128(_mm_and_si128(smaller, at), _mm_andnot_si128(smaller, index));
        at = _mm_add_epi16(at, eight);
    }
    // Signed 32-bit keys: the minimum above, the unsigned index below.
    __m128i a = _mm_unpacklo_epi16(index, minv), b = _mm_unpackhi_epi16(index, minv);
    auto smaller_key = [](__m128i x, __m128i y) {
        __m128i gt = _mm_cmpgt_epi32(x, y);
        return _mm_or_si128(_mm_and_si128(gt, y), _mm_andnot_si128(gt, x));
    };
    a = smaller_key(a, b);
    a = smaller_key(a, _mm_shuffle_epi32(a, _MM_SHUFFLE(1, 0, 3, 2)));
    a = smaller_key(a, _mm_shuffle_epi32(a, _MM_SHUFFLE(2, 3, 0, 1)));
    return _mm_cvtsi128_si32(a);
}

template <bool Flip>
Zan32s find_min_sad(const Zan16u* pResult, Zan32s count) {
    constexpr Zan32s kChunk = 65536;
    Zan32s best = 0, bestKey = 0;
    const bool aligned = (reinterpret_cast<uintptr_t>(pResult) & 15) == 0;
    for (Zan32s base = 0; base < count; base += kChunk) {
        Zan32s n = count - base < kChunk ? count - base : kChunk;
        Zan32s key = aligned ? min_key_chunk<Flip, true>(pResult + base, n)
                             : min_key_chunk<Flip, false>(pResult + base, n);
        if (base == 0 || (key >> 16) < (bestKey >> 16)) {
            best = base + (key & 0xFFFF);
            bestKey = key;
        }
    }
    return best;
}

// For 4x4 and 8x8, whose SADs stay below 32768.
constexpr MinIndexFn find_min_sad_16u_sse2 = find_min_sad<false>;
// For 16x16: any 16-bit value.
constexpr MinIndexFn find_min_sad_16u_s_sse2 = find_min_sad<true>;

// ================================================================= tables

// The aligned kernels of one size by pRef & 15.
#define ZAN_BY_PHASE(B)                                                                                     \
    {sad_xn_a_ssse3<B, 0>,  sad_xn_a_ssse3<B, 1>,  sad_xn_a_ssse3<B, 2>,  sad_xn_a_ssse3<B, 3>,              \
     sad_xn_a_ssse3<B, 4>,  sad_xn_a_ssse3<B, 5>,  sad_xn_a_ssse3<B, 6>,  sad_xn_a_ssse3<B, 7>,              \
     sad_xn_a_ssse3<B, 8>,  sad_xn_a_ssse3<B, 9>,  sad_xn_a_ssse3<B, 10>, sad_xn_a_ssse3<B, 11>,             \
     sad_xn_a_ssse3<B, 12>, sad_xn_a_ssse3<B, 13>, sad_xn_a_ssse3<B, 14>, sad_xn_a_ssse3<B, 15>}
constexpr CandFn sad_4x4xn_8u_table_ssse3[16] = ZAN_BY_PHASE(4);
constexpr CandFn sad_8x8xn_8u_table_ssse3[16] = ZAN_BY_PHASE(8);
constexpr CandFn sad_16x16xn_8u_table_ssse3[16] = ZAN_BY_PHASE(16);
#undef ZAN_BY_PHASE

// The aligned table where refStep and pResult allow it, else the kernel for
// any alignment.
inline CandFn pick_cand(const CandFn (&table)[16], CandFn any, const Zan8u* pRef, Zan32s refStep,
                        const Zan16u* pResult) {
    if (((refStep | reinterpret_cast<intptr_t>(pResult)) & 15) == 0)
        return table[reinterpret_cast<uintptr_t>(pRef) & 15];
    return any;
}

// ============================================================= catalogue

#define ZAN_ALIGNED(B, hex, S) \
    {"sad_" #B "x" #B "xn_8u_" #hex "_ssse3", cand_rule<B>, sad_xn_a_ssse3<B, S>, B, B, S}
#define ZAN_ALIGNED_ALL(B)                                                                                  \
    ZAN_ALIGNED(B, 0, 0), ZAN_ALIGNED(B, 1, 1), ZAN_ALIGNED(B, 2, 2), ZAN_ALIGNED(B, 3, 3),                 \
        ZAN_ALIGNED(B, 4, 4), ZAN_ALIGNED(B, 5, 5), ZAN_ALIGNED(B, 6, 6), ZAN_ALIGNED(B, 7, 7),             \
        ZAN_ALIGNED(B, 8, 8), ZAN_ALIGNED(B, 9, 9), ZAN_ALIGNED(B, a, 10), ZAN_ALIGNED(B, b, 11),           \
        ZAN_ALIGNED(B, c, 12), ZAN_ALIGNED(B, d, 13), ZAN_ALIGNED(B, e, 14), ZAN_ALIGNED(B, f, 15)

constexpr KernelPair<CandFn> kCandPairs[] = {
    {"sad_2x2xn_8u_sse2", cand_rule<2>, sad_2x2xn_8u_sse2, 2, 2, -1},
    {"sad_4x4xn_8u_sse2", cand_rule<4>, sad_4x4xn_8u_sse2, 4, 4, -1},
    {"sad_8x8xn_8u_sse2", cand_rule<8>, sad_8x8xn_8u_sse2, 8, 8, -1},
    {"sad_16x16xn_8u_sse2", cand_rule<16>, sad_16x16xn_8u_sse2, 16, 16, -1},
    ZAN_ALIGNED_ALL(4),
    ZAN_ALIGNED_ALL(8),
    ZAN_ALIGNED_ALL(16),
};
#undef ZAN_ALIGNED_ALL
#undef ZAN_ALIGNED
constexpr KernelPair<MinIndexFn> kMinPairs[] = {
    {"find_min_sad_16u_sse2", min_index_rule, find_min_sad_16u_sse2, 0, 0, 32766},
    {"find_min_sad_16u_s_sse2", min_index_rule, find_min_sad_16u_s_sse2, 0, 0, 65535},
};

}  // namespace

const CandidateKernels candidate_kernels = {kCandPairs, kMinPairs};

}  // namespace zan::ZAN_PATH::sad

// =============================================================== exports

namespace zan::ZAN_PATH {

// The 2x2 form has one kernel, for any alignment.
ZanStatus zaniSAD2x2xN_8u16u_C1R(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, Zan32s refStep,
                                 Zan16u* pResult, Zan32s numCand) {
    ZAN_SAD_NULL(pCur); ZAN_SAD_NULL(pRef); ZAN_SAD_NULL(pResult);
    Zan32s count = numCand & ~7;
    if (count < 8) [[unlikely]]
        return zanStsSizeBad;
    return sad::sad_2x2xn_8u_sse2(pCur, curStep, pRef, refStep, pResult, count);
}

#define ZAN_SAD_XN(name, B)                                                                                \
    ZanStatus name(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, Zan32s refStep, Zan16u* pResult,  \
                   Zan32s numCand) {                                                                       \
        ZAN_SAD_NULL(pCur); ZAN_SAD_NULL(pRef); ZAN_SAD_NULL(pResult);                                     \
        Zan32s count = numCand & ~7;                                                                       \
        if (count < 8) [[unlikely]]                                                                        \
            return zanStsSizeBad;                                                                          \
        return sad::pick_cand(sad::sad_##B##x##B##xn_8u_table_ssse3, sad::sad_##B##x##B##xn_8u_sse2, pRef, \
                              refStep, pResult)(pCur, curStep, pRef, refStep, pResult, count);             \
    }
ZAN_SAD_XN(zaniSAD4x4xN_8u16u_C1R, 4)
ZAN_SAD_XN(zaniSAD8x8xN_8u16u_C1R, 8)
ZAN_SAD_XN(zaniSAD16x16xN_8u16u_C1R, 16)
#undef ZAN_SAD_XN

#define ZAN_SAD_XNI(name, B, find_min)                                                                       \
    ZanStatus name(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, Zan32s refStep, Zan16u* pResult,    \
                   Zan32s numCand, Zan32s* pMinIndex) {                                                      \
        ZAN_SAD_NULL(pCur); ZAN_SAD_NULL(pRef); ZAN_SAD_NULL(pResult); ZAN_SAD_NULL(pMinIndex);              \
        Zan32s count = numCand & ~7;                                                                         \
        if (count < 8) [[unlikely]]                                                                          \
            return zanStsSizeBad;                                                                            \
        sad::pick_cand(sad::sad_##B##x##B##xn_8u_table_ssse3, sad::sad_##B##x##B##xn_8u_sse2, pRef, refStep, \
                       pResult)(pCur, curStep, pRef, refStep, pResult, count);                               \
        *pMinIndex = sad::find_min(pResult, count);                                                          \
        return zanStsOk;                                                                                     \
    }
ZAN_SAD_XNI(zaniSAD4x4xNI_8u16u_C1R, 4, find_min_sad_16u_sse2)
ZAN_SAD_XNI(zaniSAD8x8xNI_8u16u_C1R, 8, find_min_sad_16u_sse2)
ZAN_SAD_XNI(zaniSAD16x16xNI_8u16u_C1R, 16, find_min_sad_16u_s_sse2)
#undef ZAN_SAD_XNI

}  // namespace zan::ZAN_PATH
