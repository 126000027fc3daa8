// AVS encoder side, one block: the standard's forward 8x8 integer transform
// and the forward quantisation of its reference encoder (scalar rules, SSE2
// and SSSE3 kernels), and the exported zaniTransformQuant8x8Fwd_AVS_16s_C1.
#include <emmintrin.h>
#include <tmmintrin.h>

#include <cstddef>

#include "avs/avs_tables.h"
#include "avs/avsblock.h"
#include "common/path.h"
#include "common/simd.h"
#include "frame/bodies.h"

namespace zan::ZAN_PATH::avsblock {

using zan::avsblock::FwdFn;
using zan::avsblock::QuantFn;

namespace {

inline Zan32s sat16(Zan32s v) { return v < -32768 ? -32768 : (v > 32767 ? 32767 : v); }

// ------------------------------------------------------------------ rules

// Rows first: H[y][k] = sum_n T[k][n] x[y][n], saturated to 16 bits; then
// columns: F[k][u] = (sum_y T[k][y] H[y][u] + 16) >> 5, saturated to 16
// bits.  For residuals (|x| <= 255) neither saturation is ever reached.
void fwd_rule(const Zan16s* pSrc, Zan16s* pDst) {
    Zan32s h[8][8];
    for (int y = 0; y < 8; ++y)
        for (int k = 0; k < 8; ++k) {
            Zan32s s = 0;
            for (int n = 0; n < 8; ++n) s += zan::avs::kT8[k][n] * pSrc[y * 8 + n];
            h[y][k] = sat16(s);
        }
    for (int k = 0; k < 8; ++k)
        for (int u = 0; u < 8; ++u) {
            Zan32s s = 0;
            for (int y = 0; y < 8; ++y) s += zan::avs::kT8[k][y] * h[y][u];
            pDst[k * 8 + u] = static_cast<Zan16s>(sat16((s + 16) >> 5));
        }
}

// Level of F at row v, column u: sign(F) * ((((|F| * norm + 2^18) >> 19) *
// kQuant[QP] + round) >> 15), round 10570 (intra) or 5285 (inter).
template <int Intra>
Zan32s quant_rule(Zan16s* p, Zan32s QP) {
    const Zan32s q = zan::avs::kQuant[QP], round = zan::avs::kQuantRound[Intra];
    for (int v = 0; v < 8; ++v)
        for (int u = 0; u < 8; ++u) {
            const Zan32s f = p[v * 8 + u];
            const Zan32s m = f < 0 ? -f : f;
            const Zan32s n = (m * zan::avs::kQuantNorm[v & 3][u & 3] + (1 << 18)) >> 19;
            const Zan32s level = (n * q + round) >> 15;
            p[v * 8 + u] = static_cast<Zan16s>(f < 0 ? -level : level);
        }
    for (int i = 63; i >= 0; --i)
        if (p[zan::avs::kAvsScan[0][i]] != 0) return i + 1;
    return 0;
}

// ---------------------------------------------------------------- kernels

// Pair constants for pmaddwd: kFwdPairs.v[m/2][k] holds (T[k][m], T[k][m+1])
// four times, m even.
struct FwdPairTable {
    alignas(16) Zan16s v[4][8][8];
};
constexpr FwdPairTable make_fwd_pairs() {
    FwdPairTable t{};
    for (int m2 = 0; m2 < 4; ++m2)
        for (int k = 0; k < 8; ++k)
            for (int l = 0; l < 8; l += 2) {
                t.v[m2][k][l] = static_cast<Zan16s>(zan::avs::kT8[k][2 * m2]);
                t.v[m2][k][l + 1] = static_cast<Zan16s>(zan::avs::kT8[k][2 * m2 + 1]);
            }
    return t;
}
constexpr FwdPairTable kFwdPairs = make_fwd_pairs();

inline __m128i fwd_pair(int m2, int k) {
    return _mm_load_si128(reinterpret_cast<const __m128i*>(kFwdPairs.v[m2][k]));
}

// out[k] = pack16((sum_m T[k][m] * in[m] + round) >> Bits): eight vectors
// in, eight out, lane by lane.
template <int Bits>
inline void fwd_pass(const __m128i* in, __m128i* out) {
    __m128i lo[4], hi[4];
    for (int m2 = 0; m2 < 4; ++m2) {
        lo[m2] = _mm_unpacklo_epi16(in[2 * m2], in[2 * m2 + 1]);
        hi[m2] = _mm_unpackhi_epi16(in[2 * m2], in[2 * m2 + 1]);
    }
    for (int k = 0; k < 8; ++k) {
        __m128i a = _mm_madd_epi16(lo[0], fwd_pair(0, k));
        __m128i b = _mm_madd_epi16(hi[0], fwd_pair(0, k));
        for (int m2 = 1; m2 < 4; ++m2) {
            const __m128i p = fwd_pair(m2, k);
            a = _mm_add_epi32(a, _mm_madd_epi16(lo[m2], p));
            b = _mm_add_epi32(b, _mm_madd_epi16(hi[m2], p));
        }
        if constexpr (Bits > 0) {
            const __m128i round = _mm_set1_epi32(1 << (Bits - 1));
            a = _mm_srai_epi32(_mm_add_epi32(a, round), Bits);
            b = _mm_srai_epi32(_mm_add_epi32(b, round), Bits);
        }
        out[k] = _mm_packs_epi32(a, b);
    }
}

inline void transpose8x8_16(const __m128i* in, __m128i* out) { simd::transpose8x8_epi16(in, out); }

// SSE2: transpose so that each vector holds one column, the row pass as
// eight linear combinations of columns (pmaddwd on column pairs), transpose
// back, the column pass the same way on rows.  All inputs are loaded before
// the first store, so pDst may be pSrc.
void fwd_sse2(const Zan16s* pSrc, Zan16s* pDst) {
    __m128i rows[8], cols[8], hcol[8], hrow[8], out[8];
    for (int y = 0; y < 8; ++y) rows[y] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pSrc + 8 * y));
    transpose8x8_16(rows, cols);  // cols[n]: x[.][n]
    fwd_pass<0>(cols, hcol);      // hcol[k]: H[.][k]
    transpose8x8_16(hcol, hrow);  // hrow[y]: H[y][.]
    fwd_pass<5>(hrow, out);       // out[k]: F[k][.]
    for (int k = 0; k < 8; ++k) _mm_storeu_si128(reinterpret_cast<__m128i*>(pDst + 8 * k), out[k]);
}

// Basis functions as rows of eight words, for the SSSE3 row pass.
struct BasisTable {
    alignas(16) Zan16s v[8][8];
};
constexpr BasisTable make_basis() {
    BasisTable t{};
    for (int k = 0; k < 8; ++k)
        for (int n = 0; n < 8; ++n) t.v[k][n] = static_cast<Zan16s>(zan::avs::kT8[k][n]);
    return t;
}
constexpr BasisTable kBasis = make_basis();

// SSSE3: the row pass without transposes: for each row, pmaddwd against the
// eight basis rows and two rounds of phaddd give H[y][0..7] in place; the
// column pass is the linear combination of rows of the SSE2 kernel.
void fwd_ssse3(const Zan16s* pSrc, Zan16s* pDst) {
    __m128i t[8];
    for (int k = 0; k < 8; ++k) t[k] = _mm_load_si128(reinterpret_cast<const __m128i*>(kBasis.v[k]));
    __m128i hrow[8], out[8];
    for (int y = 0; y < 8; ++y) {
        const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pSrc + 8 * y));
        const __m128i s01 = _mm_hadd_epi32(_mm_madd_epi16(x, t[0]), _mm_madd_epi16(x, t[1]));
        const __m128i s23 = _mm_hadd_epi32(_mm_madd_epi16(x, t[2]), _mm_madd_epi16(x, t[3]));
        const __m128i s45 = _mm_hadd_epi32(_mm_madd_epi16(x, t[4]), _mm_madd_epi16(x, t[5]));
        const __m128i s67 = _mm_hadd_epi32(_mm_madd_epi16(x, t[6]), _mm_madd_epi16(x, t[7]));
        hrow[y] = _mm_packs_epi32(_mm_hadd_epi32(s01, s23), _mm_hadd_epi32(s45, s67));
    }
    fwd_pass<5>(hrow, out);
    for (int k = 0; k < 8; ++k) _mm_storeu_si128(reinterpret_cast<__m128i*>(pDst + 8 * k), out[k]);
}

// Residuals of 8-bit samples (every |x| <= 255) keep the row pass in 16
// bits and let both passes fold the symmetric halves of the basis:
// e[n] = x[n] + x[7-n], o[n] = x[n] - x[7-n] (|.| <= 510); the even rows of
// T act on e, the odd rows on o, every partial sum below 16320 in
// magnitude, with pmullw.  After the transpose, E[y] = H[y] + H[7-y] and
// O[y] = H[y] - H[7-y] still fit 16 bits (|H| <= 16320), and the column
// pass needs two pmaddwd per half instead of four.  Other blocks take the
// general kernel, so the result is that of the rule for every input.
inline __m128i mul(__m128i a, Zan16s c) { return _mm_mullo_epi16(a, _mm_set1_epi16(c)); }

// out = pack16((T[k][0] a0 + T[k][1] a1 + T[k][2] a2 + T[k][3] a3 + 16) >> 5)
// with (a0, a1) and (a2, a3) given interleaved, low and high halves.
inline __m128i fold_out(const __m128i* p01, const __m128i* p23, int k) {
    const __m128i c01 = _mm_set1_epi32(static_cast<Zan32s>(static_cast<Zan16u>(zan::avs::kT8[k][0])) |
                                       static_cast<Zan32s>(static_cast<Zan32u>(static_cast<Zan16u>(zan::avs::kT8[k][1])) << 16));
    const __m128i c23 = _mm_set1_epi32(static_cast<Zan32s>(static_cast<Zan16u>(zan::avs::kT8[k][2])) |
                                       static_cast<Zan32s>(static_cast<Zan32u>(static_cast<Zan16u>(zan::avs::kT8[k][3])) << 16));
    const __m128i r = _mm_set1_epi32(16);
    const __m128i a = _mm_add_epi32(_mm_add_epi32(_mm_madd_epi16(p01[0], c01), _mm_madd_epi16(p23[0], c23)), r);
    const __m128i b = _mm_add_epi32(_mm_add_epi32(_mm_madd_epi16(p01[1], c01), _mm_madd_epi16(p23[1], c23)), r);
    return _mm_packs_epi32(_mm_srai_epi32(a, 5), _mm_srai_epi32(b, 5));
}

template <FwdFn General>
void fwd_residual_sse2(const Zan16s* pSrc, Zan16s* pDst) {
    __m128i rows[8];
    for (int y = 0; y < 8; ++y) rows[y] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pSrc + 8 * y));
    __m128i hi = _mm_max_epi16(_mm_max_epi16(_mm_max_epi16(rows[0], rows[1]), _mm_max_epi16(rows[2], rows[3])),
                               _mm_max_epi16(_mm_max_epi16(rows[4], rows[5]), _mm_max_epi16(rows[6], rows[7])));
    __m128i lo = _mm_min_epi16(_mm_min_epi16(_mm_min_epi16(rows[0], rows[1]), _mm_min_epi16(rows[2], rows[3])),
                               _mm_min_epi16(_mm_min_epi16(rows[4], rows[5]), _mm_min_epi16(rows[6], rows[7])));
    const __m128i out = _mm_or_si128(_mm_cmpgt_epi16(hi, _mm_set1_epi16(255)), _mm_cmplt_epi16(lo, _mm_set1_epi16(-255)));
    if (_mm_movemask_epi8(out) != 0) {
        General(pSrc, pDst);
        return;
    }
    __m128i c[8], h[8], hr[8];
    transpose8x8_16(rows, c);  // c[n]: x[.][n]
    const __m128i e0 = _mm_add_epi16(c[0], c[7]), e1 = _mm_add_epi16(c[1], c[6]);
    const __m128i e2 = _mm_add_epi16(c[2], c[5]), e3 = _mm_add_epi16(c[3], c[4]);
    const __m128i o0 = _mm_sub_epi16(c[0], c[7]), o1 = _mm_sub_epi16(c[1], c[6]);
    const __m128i o2 = _mm_sub_epi16(c[2], c[5]), o3 = _mm_sub_epi16(c[3], c[4]);
    const __m128i s03 = _mm_add_epi16(e0, e3), s12 = _mm_add_epi16(e1, e2);
    const __m128i d03 = _mm_sub_epi16(e0, e3), d12 = _mm_sub_epi16(e1, e2);
    h[0] = _mm_slli_epi16(_mm_add_epi16(s03, s12), 3);
    h[4] = _mm_slli_epi16(_mm_sub_epi16(s03, s12), 3);
    h[2] = _mm_add_epi16(mul(d03, 10), _mm_slli_epi16(d12, 2));
    h[6] = _mm_sub_epi16(_mm_slli_epi16(d03, 2), mul(d12, 10));
    for (int k = 1; k < 8; k += 2)
        h[k] = _mm_add_epi16(_mm_add_epi16(mul(o0, static_cast<Zan16s>(zan::avs::kT8[k][0])),
                                           mul(o1, static_cast<Zan16s>(zan::avs::kT8[k][1]))),
                             _mm_add_epi16(mul(o2, static_cast<Zan16s>(zan::avs::kT8[k][2])),
                                           mul(o3, static_cast<Zan16s>(zan::avs::kT8[k][3]))));
    transpose8x8_16(h, hr);  // hr[y]: H[y][.]
    __m128i E01[2], E23[2], O01[2], O23[2];
    {
        const __m128i E0 = _mm_add_epi16(hr[0], hr[7]), E1 = _mm_add_epi16(hr[1], hr[6]);
        const __m128i E2 = _mm_add_epi16(hr[2], hr[5]), E3 = _mm_add_epi16(hr[3], hr[4]);
        const __m128i O0 = _mm_sub_epi16(hr[0], hr[7]), O1 = _mm_sub_epi16(hr[1], hr[6]);
        const __m128i O2 = _mm_sub_epi16(hr[2], hr[5]), O3 = _mm_sub_epi16(hr[3], hr[4]);
        E01[0] = _mm_unpacklo_epi16(E0, E1);
        E01[1] = _mm_unpackhi_epi16(E0, E1);
        E23[0] = _mm_unpacklo_epi16(E2, E3);
        E23[1] = _mm_unpackhi_epi16(E2, E3);
        O01[0] = _mm_unpacklo_epi16(O0, O1);
        O01[1] = _mm_unpackhi_epi16(O0, O1);
        O23[0] = _mm_unpacklo_epi16(O2, O3);
        O23[1] = _mm_unpackhi_epi16(O2, O3);
    }
    for (int k = 0; k < 8; k += 2) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(pDst + 8 * k), fold_out(E01, E23, k));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(pDst + 8 * (k + 1)), fold_out(O01, O23, k + 1));
    }
}

// Norm factors by row class (v & 3), the four of a row repeated twice.
struct NormTable {
    alignas(16) Zan16u v[4][8];
};
constexpr NormTable make_norms() {
    NormTable t{};
    for (int r = 0; r < 4; ++r)
        for (int u = 0; u < 8; ++u) t.v[r][u] = static_cast<Zan16u>(zan::avs::kQuantNorm[r][u & 3]);
    return t;
}
constexpr NormTable kNorms = make_norms();

// Raster position to (frame zig-zag index + 1), as bytes.
struct ScanRankTable {
    alignas(16) Zan8u v[64];
};
constexpr ScanRankTable make_scan_rank() {
    ScanRankTable t{};
    for (int i = 0; i < 64; ++i) t.v[zan::avs::kAvsScan[0][i]] = static_cast<Zan8u>(i + 1);
    return t;
}
constexpr ScanRankTable kScanRank = make_scan_rank();

// SSSE3 quantiser, all in 16-bit lanes.  |F| (pabsw; -32768 gives 0x8000,
// read unsigned) times the norm factor: (|F| * norm + 2^18) >> 19 is
// exactly (high half of the product + 4) >> 3, since 2^18 adds 4 to the
// high half and the low half cannot carry into bit 19.  That value n (at
// most 2748) times kQuant[QP] is hi * 2^16 + lo, and (n * Q + round) >> 15
// is 2 hi + ((lo + round) >> 15), where (lo + round) >> 1, a 17-bit sum
// halved, is pavgw(lo, round - 1).  psignw restores the sign.  The count:
// the zero test of the levels packed to bytes masks the rank table; the
// largest rank left is the count.
template <int Intra>
Zan32s quant_ssse3(Zan16s* p, Zan32s QP) {
    const __m128i q = _mm_set1_epi16(static_cast<Zan16s>(static_cast<Zan16u>(zan::avs::kQuant[QP])));
    const __m128i roundLess1 = _mm_set1_epi16(static_cast<Zan16s>(zan::avs::kQuantRound[Intra] - 1));
    const __m128i four = _mm_set1_epi16(4);
    const __m128i zero = _mm_setzero_si128();
    __m128i rank = zero;
    __m128i zeroMask[2];
    for (int v = 0; v < 8; ++v) {
        __m128i* row = reinterpret_cast<__m128i*>(p + 8 * v);
        const __m128i f = _mm_loadu_si128(row);
        const __m128i norm = _mm_load_si128(reinterpret_cast<const __m128i*>(kNorms.v[v & 3]));
        const __m128i n = _mm_srli_epi16(_mm_add_epi16(_mm_mulhi_epu16(_mm_abs_epi16(f), norm), four), 3);
        const __m128i lo = _mm_mullo_epi16(n, q), hi = _mm_mulhi_epu16(n, q);
        const __m128i carry = _mm_srli_epi16(_mm_avg_epu16(lo, roundLess1), 14);
        const __m128i level = _mm_sign_epi16(_mm_add_epi16(_mm_add_epi16(hi, hi), carry), f);
        _mm_storeu_si128(row, level);
        zeroMask[v & 1] = _mm_cmpeq_epi16(level, zero);
        if (v & 1) {
            const __m128i z = _mm_packs_epi16(zeroMask[0], zeroMask[1]);
            const __m128i r = _mm_load_si128(reinterpret_cast<const __m128i*>(kScanRank.v + 8 * (v - 1)));
            rank = _mm_max_epu8(rank, _mm_andnot_si128(z, r));
        }
    }
    rank = _mm_max_epu8(rank, _mm_srli_si128(rank, 8));
    rank = _mm_max_epu8(rank, _mm_srli_si128(rank, 4));
    rank = _mm_max_epu8(rank, _mm_srli_si128(rank, 2));
    rank = _mm_max_epu8(rank, _mm_srli_si128(rank, 1));
    return _mm_cvtsi128_si32(rank) & 0xFF;
}

constexpr KernelPair<FwdFn> kFwd[] = {
    {"avs_transform_8x8_fwd_sse2", fwd_rule, fwd_sse2, 8, 8, 0},
    {"avs_transform_8x8_fwd_ssse3", fwd_rule, fwd_ssse3, 8, 8, 1},
    {"avs_transform_8x8_fwd_residual_sse2", fwd_rule, fwd_residual_sse2<ZAN_PATH_IS_N8 ? fwd_sse2 : fwd_ssse3>, 8,
     8, 2},
};

constexpr KernelPair<QuantFn> kQuantPairs[] = {
    {"avs_quant_8x8_inter_ssse3", quant_rule<0>, quant_ssse3<0>, 8, 8, 0},
    {"avs_quant_8x8_intra_ssse3", quant_rule<1>, quant_ssse3<1>, 8, 8, 1},
};

// The quantiser by the intra flag (0 inter, 1 intra).
constexpr QuantFn kQuantByIntra[2] = {quant_ssse3<0>, quant_ssse3<1>};

// The transform of each path: the folded kernel for residuals, and for other
// blocks the row pass with phaddd on u8; n8, tuned for in-order cores where
// phaddd is slow, falls back to the transposing SSE2 kernel.
constexpr FwdFn kFwdOfPath = fwd_residual_sse2<ZAN_PATH_IS_N8 ? fwd_sse2 : fwd_ssse3>;

}  // namespace

const zan::avsblock::FwdKernels fwd_kernels{kFwd, kQuantPairs};

}  // namespace zan::ZAN_PATH::avsblock

namespace zan::ZAN_PATH {

ZanStatus zaniTransformQuant8x8Fwd_AVS_16s_C1(const Zan16s* pSrc, Zan16s* pDst, Zan32s* pNumCoeff, Zan32s QP,
                                              Zan32s intra) {
    if (!pSrc || !pDst || !pNumCoeff) return zanStsNullPtr;
    if (static_cast<Zan32u>(QP) > 63) return zanStsBadArg;
    avsblock::kFwdOfPath(pSrc, pDst);
    *pNumCoeff = avsblock::kQuantByIntra[intra != 0](pDst, QP);
    return zanStsOk;
}

}  // namespace zan::ZAN_PATH
