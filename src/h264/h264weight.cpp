// H.264 weighted prediction: explicit uni- and bi-directional, implicit,
// the weighted average, interleaved U/V blocks and 16-bit samples.
//
// One formula serves every weighted form (see h264weight.h):
//   out = clamp(((a * w1 + b * w2 + round) >> shift) + offset, 0, max)
// in wrapping 32-bit arithmetic.  The vector kernels form a * w1 + b * w2
// with pmaddwd on interleaved (a, b) pairs, so they take weights that fit a
// signed 16-bit lane; the wrappers run the scalar rule for wider weights.
// For 8-bit samples, parameters whose sums fit 16 bits (the common H.264
// cases) take the narrow kernels instead: one pmaddubsw per eight samples.
#include "h264/h264weight.h"

#include <bit>
#include <cstring>
#include <utility>

#include "common/scalar.h"
#include "common/simd.h"
#include "frame/bodies.h"

namespace zan::ZAN_PATH::h264weight {
namespace {

using namespace zan::h264weight;
using scalar::at;
using scalar::put;

// ============================================================ scalar rules

// Arithmetic shift right; a count of 32 or more leaves the sign.
inline Zan32s sar(Zan32s x, Zan32u n) { return n < 32 ? x >> n : (x < 0 ? -1 : 0); }

// The formula for one sample; k = 0 for even samples (U), 1 for odd (V).
inline Zan32s weigh(Zan32s a, Zan32s b, int k, const Params& p) {
    Zan32u t = static_cast<Zan32u>(a) * static_cast<Zan32u>(p.w1[k]) +
               static_cast<Zan32u>(b) * static_cast<Zan32u>(p.w2[k]) + static_cast<Zan32u>(p.round);
    Zan32s v = static_cast<Zan32s>(static_cast<Zan32u>(sar(static_cast<Zan32s>(t), p.shift)) +
                                   static_cast<Zan32u>(p.offset[k]));
    return v < 0 ? 0 : (v > p.max ? p.max : v);
}

// 8-bit samples: WB bytes a row (samples, or U/V bytes of WB / 2 pairs).
template <int WB, int H>
void uni8_rule(const Zan8u* s, Zan32s ss, Zan8u* d, Zan32s ds, const Params& p) {
    for (Zan32s y = 0; y < H; ++y)
        for (Zan32s x = 0; x < WB; ++x)
            put(d, ds, x, y, static_cast<Zan8u>(weigh(at(s, ss, x, y), 0, x & 1, p)));
}

template <int WB, int H>
void bi8_rule(const Zan8u* a, Zan32s as, const Zan8u* b, Zan32s bs, Zan8u* d, Zan32s ds, const Params& p) {
    for (Zan32s y = 0; y < H; ++y)
        for (Zan32s x = 0; x < WB; ++x)
            put(d, ds, x, y, static_cast<Zan8u>(weigh(at(a, as, x, y), at(b, bs, x, y), x & 1, p)));
}

// 16-bit samples, steps in samples; the clamped value's low 16 bits are stored.
template <int W, int H>
void uni16_rule(const Zan16u* s, Zan32s ss, Zan16u* d, Zan32s ds, const Params& p) {
    for (Zan32s y = 0; y < H; ++y)
        for (Zan32s x = 0; x < W; ++x)
            put(d, 2 * ds, x, y, static_cast<Zan16u>(weigh(at(s, 2 * ss, x, y), 0, x & 1, p)));
}

template <int W, int H>
void bi16_rule(const Zan16u* a, Zan32s as, const Zan16u* b, Zan32s bs, Zan16u* d, Zan32s ds, const Params& p) {
    for (Zan32s y = 0; y < H; ++y)
        for (Zan32s x = 0; x < W; ++x)
            put(d, 2 * ds, x, y, static_cast<Zan16u>(weigh(at(a, 2 * as, x, y), at(b, 2 * bs, x, y), x & 1, p)));
}

template <int W>
void avg16_rule(const Zan16u* a, Zan32s as, const Zan16u* b, Zan32s bs, Zan16u* d, Zan32s ds, Zan32s height,
                Zan32s max) {
    for (Zan32s y = 0; y < height; ++y)
        for (Zan32s x = 0; x < W; ++x) {
            Zan32s v = (at(a, 2 * as, x, y) + at(b, 2 * bs, x, y) + 1) >> 1;
            put(d, 2 * ds, x, y, static_cast<Zan16u>(v > max ? max : v));
        }
}

// ========================================================== vector kernels

using simd::row;

// N bytes (2, 4, 8 or 16) into the low bytes of a register, and back.
template <int N>
inline __m128i loadn(const Zan8u* p) {
    if constexpr (N == 16) return simd::load16(p);
    else if constexpr (N == 8) return simd::load8(p);
    else if constexpr (N == 4) return simd::load4(p);
    else {
        Zan16u v;
        std::memcpy(&v, p, 2);
        return _mm_cvtsi32_si128(v);
    }
}
template <int N>
inline void storen(Zan8u* p, __m128i v) {
    if constexpr (N == 16) {
        simd::store16(p, v);
    } else if constexpr (N == 8) {
        simd::store8(p, v);
    } else {
        Zan32s x = _mm_cvtsi128_si32(v);
        std::memcpy(p, &x, N);
    }
}

// R rows of N bytes each, side by side in the low R * N bytes.
template <int N, int R>
inline __m128i gather(const Zan8u* p, Zan32s step) {
    if constexpr (R == 1) {
        return loadn<N>(p);
    } else {
        constexpr int half = R / 2;
        __m128i lo = gather<N, half>(p, step), hi = gather<N, half>(row(p, step, half), step);
        constexpr int unit = N * half;
        if constexpr (unit == 2) return _mm_unpacklo_epi16(lo, hi);
        else if constexpr (unit == 4) return _mm_unpacklo_epi32(lo, hi);
        else return _mm_unpacklo_epi64(lo, hi);
    }
}
template <int N, int R>
inline void scatter(Zan8u* p, Zan32s step, __m128i v) {
    [&]<int... I>(std::integer_sequence<int, I...>) {
        (storen<N>(row(p, step, I), _mm_srli_si128(v, I * N)), ...);
    }(std::make_integer_sequence<int, R>{});
}

// The parameters in vector form.  Lane pairs of w hold (w1, w2) of even
// samples, then of odd samples; offset holds the even, odd, even, odd offsets.
// round16 is the rounding term of the 16-bit kernels, which see samples
// less 32768: it adds back 32768 * (w1 + w2) for each lane's parity.
struct Vec {
    __m128i w, round, round16, shift, offset, top;
};
inline Vec vec(const Params& p) {
    Vec v;
    v.w = _mm_setr_epi16(static_cast<Zan16s>(p.w1[0]), static_cast<Zan16s>(p.w2[0]), static_cast<Zan16s>(p.w1[1]),
                         static_cast<Zan16s>(p.w2[1]), static_cast<Zan16s>(p.w1[0]), static_cast<Zan16s>(p.w2[0]),
                         static_cast<Zan16s>(p.w1[1]), static_cast<Zan16s>(p.w2[1]));
    v.round = _mm_set1_epi32(p.round);
    auto r16 = [&](int k) {
        return static_cast<Zan32s>(static_cast<Zan32u>(p.round) +
                                   32768u * static_cast<Zan32u>(p.w1[k] + p.w2[k]));
    };
    v.round16 = _mm_setr_epi32(r16(0), r16(1), r16(0), r16(1));
    v.shift = _mm_cvtsi32_si128(static_cast<Zan32s>(p.shift));  // as unsigned: 32 or more fills with the sign
    v.offset = _mm_setr_epi32(p.offset[0], p.offset[1], p.offset[0], p.offset[1]);
    v.top = _mm_set1_epi16(static_cast<Zan16s>(p.max - 32768));
    return v;
}

// Four sums of products (32-bit) plus a rounding term to the shifted,
// offset result.
inline __m128i finish(__m128i sum, __m128i round, const Vec& v) {
    return _mm_add_epi32(_mm_sra_epi32(_mm_add_epi32(sum, round), v.shift), v.offset);
}
inline __m128i finish(__m128i sum, const Vec& v) { return finish(sum, v.round, v); }

// 8-bit samples: the first N (4, 8 or 16) bytes of a and b weighed and
// clamped to 0..255.  For one source b is zero and w2 is zero.
template <int N>
inline __m128i weigh8(__m128i a, __m128i b, const Vec& v) {
    const __m128i z = _mm_setzero_si128();
    __m128i ab = _mm_unpacklo_epi8(a, b);  // a0 b0 a1 b1 ... a7 b7
    __m128i r0 = finish(_mm_madd_epi16(_mm_unpacklo_epi8(ab, z), v.w), v);
    if constexpr (N == 4) {
        return _mm_packus_epi16(_mm_packs_epi32(r0, r0), z);
    } else {
        __m128i r1 = finish(_mm_madd_epi16(_mm_unpackhi_epi8(ab, z), v.w), v);
        __m128i lo = _mm_packs_epi32(r0, r1);
        if constexpr (N == 8) {
            return _mm_packus_epi16(lo, z);
        } else {
            __m128i cd = _mm_unpackhi_epi8(a, b);
            __m128i r2 = finish(_mm_madd_epi16(_mm_unpacklo_epi8(cd, z), v.w), v);
            __m128i r3 = finish(_mm_madd_epi16(_mm_unpackhi_epi8(cd, z), v.w), v);
            return _mm_packus_epi16(lo, _mm_packs_epi32(r2, r3));
        }
    }
}

// The narrow form (parameters for which narrow8 holds): pmaddubsw forms
// a * w1 + b * w2 of eight byte pairs in 16-bit lanes without saturating;
// adding round keeps it in range; the shift counts as in the wide form; the
// saturating offset add can only saturate where the clamp to 0..255 gives
// the same answer.
struct Narrow {
    __m128i w, round, shift, offset;
};
inline Narrow narrow(const Params& p) {
    Narrow v;
    auto b = [](Zan32s x) { return static_cast<Zan8s>(x); };
    v.w = _mm_setr_epi8(b(p.w1[0]), b(p.w2[0]), b(p.w1[1]), b(p.w2[1]), b(p.w1[0]), b(p.w2[0]), b(p.w1[1]),
                        b(p.w2[1]), b(p.w1[0]), b(p.w2[0]), b(p.w1[1]), b(p.w2[1]), b(p.w1[0]), b(p.w2[0]),
                        b(p.w1[1]), b(p.w2[1]));
    v.round = _mm_set1_epi16(static_cast<Zan16s>(p.round));
    v.shift = _mm_cvtsi32_si128(static_cast<Zan32s>(p.shift));
    auto h = [](Zan32s x) { return static_cast<Zan16s>(x); };
    v.offset = _mm_setr_epi16(h(p.offset[0]), h(p.offset[1]), h(p.offset[0]), h(p.offset[1]), h(p.offset[0]),
                              h(p.offset[1]), h(p.offset[0]), h(p.offset[1]));
    return v;
}
inline __m128i finish_narrow(__m128i ab, const Narrow& v) {
    __m128i sum = _mm_maddubs_epi16(ab, v.w);
    return _mm_adds_epi16(_mm_sra_epi16(_mm_add_epi16(sum, v.round), v.shift), v.offset);
}
template <int N>
inline __m128i weigh8_narrow(__m128i a, __m128i b, const Narrow& v) {
    __m128i lo = finish_narrow(_mm_unpacklo_epi8(a, b), v);
    if constexpr (N <= 8) return _mm_packus_epi16(lo, lo);
    else return _mm_packus_epi16(lo, finish_narrow(_mm_unpackhi_epi8(a, b), v));
}

// (a - 32768) * w1 + (b - 32768) * w2 of four unsigned 16-bit pairs (a, b
// interleaved): flipping the top bit makes them signed for pmaddwd.  The
// one sum that overflows (both -32768 times -32768) wraps to the right value
// modulo 2^32, which is all the formula keeps.
inline __m128i madd_biased(__m128i ab, __m128i w) {
    return _mm_madd_epi16(_mm_xor_si128(ab, _mm_set1_epi16(-32768)), w);
}

// Four 32-bit results clamped below at 0 and biased by -32768, ready for a
// saturating pack that then maps 0..65535 onto the signed range.
inline __m128i bias16(__m128i r) {
    r = _mm_andnot_si128(_mm_srai_epi32(r, 31), r);
    return _mm_sub_epi32(r, _mm_set1_epi32(32768));
}

// 16-bit samples: the first N (4, 8 or 16) bytes of a and b weighed and
// clamped to 0..max (max at most 65535).
template <int N>
inline __m128i weigh16(__m128i a, __m128i b, const Vec& v) {
    __m128i r0 = bias16(finish(madd_biased(_mm_unpacklo_epi16(a, b), v.w), v.round16, v));
    __m128i r1 = N == 16 ? bias16(finish(madd_biased(_mm_unpackhi_epi16(a, b), v.w), v.round16, v)) : r0;
    __m128i s = _mm_min_epi16(_mm_packs_epi32(r0, r1), v.top);
    return _mm_xor_si128(s, _mm_set1_epi16(-32768));
}

// A block of WB bytes by H rows, in chunks of up to 16 bytes: rows narrower
// than 16 bytes are gathered several to a register.  With one source the
// second operand is zero.
template <int WB, int H, bool Two, class Op>
inline void blocks(const Zan8u* a, Zan32s as, const Zan8u* b, Zan32s bs, Zan8u* d, Zan32s ds, Op op) {
    if constexpr (WB >= 16) {
        for (Zan32s y = 0; y < H; ++y)
            for (int x = 0; x < WB; x += 16) {
                __m128i va = simd::load16(row(a, as, y) + x);
                __m128i vb = Two ? simd::load16(row(b, bs, y) + x) : _mm_setzero_si128();
                simd::store16(row(d, ds, y) + x, op.template operator()<16>(va, vb));
            }
    } else {
        constexpr int R = 16 / WB < H ? 16 / WB : H;  // rows per register
        for (Zan32s y = 0; y < H; y += R) {
            __m128i va = gather<WB, R>(row(a, as, y), as);
            __m128i vb = Two ? gather<WB, R>(row(b, bs, y), bs) : _mm_setzero_si128();
            scatter<WB, R>(row(d, ds, y), ds, op.template operator()<WB * R>(va, vb));
        }
    }
}

struct Weigh8 {
    Vec v;
    template <int N>
    __m128i operator()(__m128i a, __m128i b) const { return weigh8<N>(a, b, v); }
};
struct Weigh8Narrow {
    Narrow v;
    template <int N>
    __m128i operator()(__m128i a, __m128i b) const { return weigh8_narrow<N>(a, b, v); }
};
struct Weigh16 {
    Vec v;
    template <int N>
    __m128i operator()(__m128i a, __m128i b) const { return weigh16<N>(a, b, v); }
};

template <int WB, int H>
void uni8_simd(const Zan8u* s, Zan32s ss, Zan8u* d, Zan32s ds, const Params& p) {
    blocks<WB, H, false>(s, ss, s, 0, d, ds, Weigh8{vec(p)});
}
template <int WB, int H>
void bi8_simd(const Zan8u* a, Zan32s as, const Zan8u* b, Zan32s bs, Zan8u* d, Zan32s ds, const Params& p) {
    blocks<WB, H, true>(a, as, b, bs, d, ds, Weigh8{vec(p)});
}

template <int WB, int H>
void uni8_narrow(const Zan8u* s, Zan32s ss, Zan8u* d, Zan32s ds, const Params& p) {
    blocks<WB, H, false>(s, ss, s, 0, d, ds, Weigh8Narrow{narrow(p)});
}
template <int WB, int H>
void bi8_narrow(const Zan8u* a, Zan32s as, const Zan8u* b, Zan32s bs, Zan8u* d, Zan32s ds, const Params& p) {
    blocks<WB, H, true>(a, as, b, bs, d, ds, Weigh8Narrow{narrow(p)});
}

inline const Zan8u* bytes(const Zan16u* p) { return reinterpret_cast<const Zan8u*>(p); }
inline Zan8u* bytes(Zan16u* p) { return reinterpret_cast<Zan8u*>(p); }

template <int W, int H>
void uni16_simd(const Zan16u* s, Zan32s ss, Zan16u* d, Zan32s ds, const Params& p) {
    blocks<2 * W, H, false>(bytes(s), 2 * ss, bytes(s), 0, bytes(d), 2 * ds, Weigh16{vec(p)});
}
template <int W, int H>
void bi16_simd(const Zan16u* a, Zan32s as, const Zan16u* b, Zan32s bs, Zan16u* d, Zan32s ds, const Params& p) {
    blocks<2 * W, H, true>(bytes(a), 2 * as, bytes(b), 2 * bs, bytes(d), 2 * ds, Weigh16{vec(p)});
}

// pavgw is (a + b + 1) >> 1 exactly; the top is applied as v - (v -sat top).
// A row of W samples is split into parts of 8, 4, 2 and 1 samples.
template <int W>
void avg16_simd(const Zan16u* a, Zan32s as, const Zan16u* b, Zan32s bs, Zan16u* d, Zan32s ds, Zan32s height,
                Zan32s max) {
    const __m128i top = _mm_set1_epi16(static_cast<Zan16s>(max > 65535 ? 65535 : max));
    auto part = [&]<int N>(Zan32s y, int x) {
        __m128i v = _mm_avg_epu16(loadn<N>(row(bytes(a), 2 * as, y) + x), loadn<N>(row(bytes(b), 2 * bs, y) + x));
        storen<N>(row(bytes(d), 2 * ds, y) + x, _mm_sub_epi16(v, _mm_subs_epu16(v, top)));
    };
    for (Zan32s y = 0; y < height; ++y) {
        int x = 0;
        for (int i = 0; i < W / 8; ++i, x += 16) part.template operator()<16>(y, x);
        if constexpr (W & 4) { part.template operator()<8>(y, x); x += 8; }
        if constexpr (W & 2) { part.template operator()<4>(y, x); x += 4; }
        if constexpr (W & 1) part.template operator()<2>(y, x);
    }
}

// ================================================================= tables

// [width class][height class]: 8-bit row bytes 2, 4, 8, 16, 32 (classes
// 0..4), 16-bit row samples 2, 4, 8, 16; heights 2, 4, 8, 16.
#define ZAN_ROW(k, WB) {k<WB, 2>, k<WB, 4>, k<WB, 8>, k<WB, 16>}
constexpr Uni8Fn kUni8[5][4] = {ZAN_ROW(uni8_simd, 2), ZAN_ROW(uni8_simd, 4), ZAN_ROW(uni8_simd, 8),
                                ZAN_ROW(uni8_simd, 16), ZAN_ROW(uni8_simd, 32)};
constexpr Uni8Fn kUni8Rule[5][4] = {ZAN_ROW(uni8_rule, 2), ZAN_ROW(uni8_rule, 4), ZAN_ROW(uni8_rule, 8),
                                    ZAN_ROW(uni8_rule, 16), ZAN_ROW(uni8_rule, 32)};
constexpr Bi8Fn kBi8[5][4] = {ZAN_ROW(bi8_simd, 2), ZAN_ROW(bi8_simd, 4), ZAN_ROW(bi8_simd, 8),
                              ZAN_ROW(bi8_simd, 16), ZAN_ROW(bi8_simd, 32)};
constexpr Bi8Fn kBi8Rule[5][4] = {ZAN_ROW(bi8_rule, 2), ZAN_ROW(bi8_rule, 4), ZAN_ROW(bi8_rule, 8),
                                  ZAN_ROW(bi8_rule, 16), ZAN_ROW(bi8_rule, 32)};
constexpr Uni8Fn kUni8Narrow[5][4] = {ZAN_ROW(uni8_narrow, 2), ZAN_ROW(uni8_narrow, 4), ZAN_ROW(uni8_narrow, 8),
                                      ZAN_ROW(uni8_narrow, 16), ZAN_ROW(uni8_narrow, 32)};
constexpr Bi8Fn kBi8Narrow[5][4] = {ZAN_ROW(bi8_narrow, 2), ZAN_ROW(bi8_narrow, 4), ZAN_ROW(bi8_narrow, 8),
                                    ZAN_ROW(bi8_narrow, 16), ZAN_ROW(bi8_narrow, 32)};
constexpr Uni16Fn kUni16[4][4] = {ZAN_ROW(uni16_simd, 2), ZAN_ROW(uni16_simd, 4), ZAN_ROW(uni16_simd, 8),
                                  ZAN_ROW(uni16_simd, 16)};
constexpr Uni16Fn kUni16Rule[4][4] = {ZAN_ROW(uni16_rule, 2), ZAN_ROW(uni16_rule, 4), ZAN_ROW(uni16_rule, 8),
                                      ZAN_ROW(uni16_rule, 16)};
constexpr Bi16Fn kBi16[4][4] = {ZAN_ROW(bi16_simd, 2), ZAN_ROW(bi16_simd, 4), ZAN_ROW(bi16_simd, 8),
                                ZAN_ROW(bi16_simd, 16)};
constexpr Bi16Fn kBi16Rule[4][4] = {ZAN_ROW(bi16_rule, 2), ZAN_ROW(bi16_rule, 4), ZAN_ROW(bi16_rule, 8),
                                    ZAN_ROW(bi16_rule, 16)};
#undef ZAN_ROW

// [width - 2], widths 2..16.
#define ZAN_WIDTHS(k) \
    {k<2>, k<3>, k<4>, k<5>, k<6>, k<7>, k<8>, k<9>, k<10>, k<11>, k<12>, k<13>, k<14>, k<15>, k<16>}
constexpr Avg16Fn kAvg16[15] = ZAN_WIDTHS(avg16_simd);
constexpr Avg16Fn kAvg16Rule[15] = ZAN_WIDTHS(avg16_rule);
#undef ZAN_WIDTHS

// ============================================================= catalogue

#define ZAN_SIZES_P(prefix, rule, simd, W, P)                                                          \
    {prefix #W "x2", rule<W, 2>, simd<W, 2>, W, 2, P}, {prefix #W "x4", rule<W, 4>, simd<W, 4>, W, 4, P},         \
        {prefix #W "x8", rule<W, 8>, simd<W, 8>, W, 8, P}, {prefix #W "x16", rule<W, 16>, simd<W, 16>, W, 16, P}
#define ZAN_SIZES(prefix, rule, simd, W) ZAN_SIZES_P(prefix, rule, simd, W, 0)

constexpr KernelPair<Uni8Fn> kUni8Pairs[] = {
    ZAN_SIZES("unidir_8u_", uni8_rule, uni8_simd, 2),  ZAN_SIZES("unidir_8u_", uni8_rule, uni8_simd, 4),
    ZAN_SIZES("unidir_8u_", uni8_rule, uni8_simd, 8),  ZAN_SIZES("unidir_8u_", uni8_rule, uni8_simd, 16),
    ZAN_SIZES("unidir_8u_", uni8_rule, uni8_simd, 32),
};
constexpr KernelPair<Bi8Fn> kBi8Pairs[] = {
    ZAN_SIZES("bidir_8u_", bi8_rule, bi8_simd, 2),  ZAN_SIZES("bidir_8u_", bi8_rule, bi8_simd, 4),
    ZAN_SIZES("bidir_8u_", bi8_rule, bi8_simd, 8),  ZAN_SIZES("bidir_8u_", bi8_rule, bi8_simd, 16),
    ZAN_SIZES("bidir_8u_", bi8_rule, bi8_simd, 32),
};
constexpr KernelPair<Uni8Fn> kUni8NarrowPairs[] = {
    ZAN_SIZES_P("unidir_8u_narrow_", uni8_rule, uni8_narrow, 2, 1),
    ZAN_SIZES_P("unidir_8u_narrow_", uni8_rule, uni8_narrow, 4, 1),
    ZAN_SIZES_P("unidir_8u_narrow_", uni8_rule, uni8_narrow, 8, 1),
    ZAN_SIZES_P("unidir_8u_narrow_", uni8_rule, uni8_narrow, 16, 1),
    ZAN_SIZES_P("unidir_8u_narrow_", uni8_rule, uni8_narrow, 32, 1),
};
constexpr KernelPair<Bi8Fn> kBi8NarrowPairs[] = {
    ZAN_SIZES_P("bidir_8u_narrow_", bi8_rule, bi8_narrow, 2, 1),
    ZAN_SIZES_P("bidir_8u_narrow_", bi8_rule, bi8_narrow, 4, 1),
    ZAN_SIZES_P("bidir_8u_narrow_", bi8_rule, bi8_narrow, 8, 1),
    ZAN_SIZES_P("bidir_8u_narrow_", bi8_rule, bi8_narrow, 16, 1),
    ZAN_SIZES_P("bidir_8u_narrow_", bi8_rule, bi8_narrow, 32, 1),
};
constexpr KernelPair<Uni16Fn> kUni16Pairs[] = {
    ZAN_SIZES("unidir_16u_", uni16_rule, uni16_simd, 2), ZAN_SIZES("unidir_16u_", uni16_rule, uni16_simd, 4),
    ZAN_SIZES("unidir_16u_", uni16_rule, uni16_simd, 8), ZAN_SIZES("unidir_16u_", uni16_rule, uni16_simd, 16),
};
constexpr KernelPair<Bi16Fn> kBi16Pairs[] = {
    ZAN_SIZES("bidir_16u_", bi16_rule, bi16_simd, 2), ZAN_SIZES("bidir_16u_", bi16_rule, bi16_simd, 4),
    ZAN_SIZES("bidir_16u_", bi16_rule, bi16_simd, 8), ZAN_SIZES("bidir_16u_", bi16_rule, bi16_simd, 16),
};
#undef ZAN_SIZES
#undef ZAN_SIZES_P

#define ZAN_AVG(W) {"average_16u_w" #W, avg16_rule<W>, avg16_simd<W>, W, 0, 0}
constexpr KernelPair<Avg16Fn> kAvg16Pairs[] = {
    ZAN_AVG(2),  ZAN_AVG(3),  ZAN_AVG(4),  ZAN_AVG(5),  ZAN_AVG(6),  ZAN_AVG(7),  ZAN_AVG(8), ZAN_AVG(9),
    ZAN_AVG(10), ZAN_AVG(11), ZAN_AVG(12), ZAN_AVG(13), ZAN_AVG(14), ZAN_AVG(15), ZAN_AVG(16),
};
#undef ZAN_AVG

}  // namespace

const Kernels kernels = {kUni8Pairs, kBi8Pairs, kUni8NarrowPairs, kBi8NarrowPairs, kUni16Pairs, kBi16Pairs, kAvg16Pairs};

// ========================================================= wrapper helpers

namespace {

constexpr bool size_ok(Zan32s v) { return v == 2 || v == 4 || v == 8 || v == 16; }
// 2, 4, 8, 16 to 0, 1, 2, 3.
inline int size_class(Zan32s v) { return std::countr_zero(static_cast<Zan32u>(v)) - 1; }

// wc: class of the row's bytes (0..4), hc: class of the height.
inline void uni8(const Zan8u* s, Zan32s ss, Zan8u* d, Zan32s ds, const Params& p, int wc, int hc) {
    (narrow8(p) ? kUni8Narrow : vector_weights(p) ? kUni8 : kUni8Rule)[wc][hc](s, ss, d, ds, p);
}
inline void bi8(const Zan8u* a, Zan32s as, const Zan8u* b, Zan32s bs, Zan8u* d, Zan32s ds, const Params& p, int wc,
                int hc) {
    (narrow8(p) ? kBi8Narrow : vector_weights(p) ? kBi8 : kBi8Rule)[wc][hc](a, as, b, bs, d, ds, p);
}

// Checks of a 16-bit record: pointers, steps, sizes.
inline ZanStatus check16(const ZanBidirRecord* r) {
    if (!r) return zanStsNullPtr;
    if (!r->pSrc1 || !r->pSrc2 || !r->pDst) return zanStsNullPtr;
    if (r->src1Step < r->width || r->src2Step < r->width || r->dstStep < r->width) return zanStsStepBad;
    if (!size_ok(r->width) || !size_ok(r->height)) return zanStsSizeBad;
    return zanStsOk;
}
inline void bi16(const ZanBidirRecord& r, const Params& p) {
    int wc = size_class(r.width), hc = size_class(r.height);
    (vector_params16(p) ? kBi16 : kBi16Rule)[wc][hc](r.pSrc1, r.src1Step, r.pSrc2, r.src2Step, r.pDst, r.dstStep, p);
}

}  // namespace
}  // namespace zan::ZAN_PATH::h264weight

// =============================================================== exports

namespace zan::ZAN_PATH {

using namespace h264weight;
using namespace zan::h264weight;

ZanStatus zaniUniDirWeightBlock_H264_8u_C1R(Zan8u* pSrcDst, Zan32s srcDstStep, Zan32s log2wd, Zan32s w, Zan32s o,
                                            ZaniSize roiSize) {
    if (!pSrcDst) return zanStsNullPtr;
    if (srcDstStep < roiSize.width) return zanStsStepBad;
    if (!size_ok(roiSize.width) || !size_ok(roiSize.height)) return zanStsSizeBad;
    uni8(pSrcDst, srcDstStep, pSrcDst, srcDstStep, uni_params(log2wd, w, o, 255), size_class(roiSize.width),
         size_class(roiSize.height));
    return zanStsOk;
}

ZanStatus zaniUniDirWeightBlock_H264_8u_C1IR(Zan8u* pSrcDst, Zan32s srcDstStep, Zan32s log2wd, Zan32s w, Zan32s o,
                                             ZaniSize roiSize) {
    return ZAN_PATH::zaniUniDirWeightBlock_H264_8u_C1R(pSrcDst, srcDstStep, log2wd, w, o, roiSize);
}

ZanStatus zaniUniDirWeightBlock_H264_8u_C2R(const ZanWeightBlockRecord* pBlock, const ZanWeightRecord* pWeight) {
    if (!pBlock || !pWeight) return zanStsNullPtr;
    const ZanWeightBlockRecord& b = *pBlock;
    if (!b.pSrc1 || !b.pDst) return zanStsNullPtr;
    if (b.src1Step < b.width || b.dstStep < b.width) return zanStsStepBad;
    if (!size_ok(b.width) || !size_ok(b.height)) return zanStsSizeBad;
    const ZanWeightRecord& r = *pWeight;
    Params p = uni_params(static_cast<Zan32s>(r.log2Denominator & 15), r.weightU, r.offsetU, 255);
    p.w1[1] = r.weightV;
    p.offset[1] = r.offsetV;
    uni8(b.pSrc1, b.src1Step, b.pDst, b.dstStep, p, size_class(b.width) + 1, size_class(b.height));
    return zanStsOk;
}

ZanStatus zaniBiDirWeightBlock_H264_8u_P3P1R(const Zan8u* pSrc1, const Zan8u* pSrc2, Zan8u* pDst, Zan32s src1Step,
                                             Zan32s src2Step, Zan32s dstStep, Zan32s log2wd, Zan32s w1, Zan32s o1,
                                             Zan32s w2, Zan32s o2, ZaniSize roiSize) {
    if (!pSrc1 || !pSrc2 || !pDst) return zanStsNullPtr;
    if (src1Step < roiSize.width || src2Step < roiSize.width || dstStep < roiSize.width) return zanStsStepBad;
    if (!size_ok(roiSize.width) || !size_ok(roiSize.height)) return zanStsSizeBad;
    bi8(pSrc1, src1Step, pSrc2, src2Step, pDst, dstStep, bi_params(log2wd, w1, o1, w2, o2, 255),
        size_class(roiSize.width), size_class(roiSize.height));
    return zanStsOk;
}

ZanStatus zaniBiDirWeightBlock_H264_8u_P2P1R(const Zan8u* pSrc1, const Zan8u* pSrc2, Zan8u* pDst, Zan32s srcStep,
                                             Zan32s dstStep, Zan32s log2wd, Zan32s w1, Zan32s o1, Zan32s w2,
                                             Zan32s o2, ZaniSize roiSize) {
    return ZAN_PATH::zaniBiDirWeightBlock_H264_8u_P3P1R(pSrc1, pSrc2, pDst, srcStep, srcStep, dstStep, log2wd, w1, o1, w2, o2,
                                              roiSize);
}

ZanStatus zaniBiDirWeightBlock_H264_8u_C2R(const ZanWeightBlockRecord* pBlock, const ZanWeightRecord* pWeight0,
                                           const ZanWeightRecord* pWeight1) {
    if (!pBlock || !pWeight0 || !pWeight1) return zanStsNullPtr;
    const ZanWeightBlockRecord& b = *pBlock;
    if (!b.pSrc1 || !b.pSrc2 || !b.pDst) return zanStsNullPtr;
    if (b.src1Step < b.width || b.src2Step < b.width || b.dstStep < b.width) return zanStsStepBad;
    if (!size_ok(b.width) || !size_ok(b.height)) return zanStsSizeBad;
    const ZanWeightRecord &r0 = *pWeight0, &r1 = *pWeight1;
    Params p = bi_params(static_cast<Zan32s>(r0.log2Denominator & 15), r0.weightU, r0.offsetU, r1.weightU,
                         r1.offsetU, 255);
    p.w1[1] = r0.weightV;
    p.w2[1] = r1.weightV;
    p.offset[1] = mean_offset(r0.offsetV, r1.offsetV);
    bi8(b.pSrc1, b.src1Step, b.pSrc2, b.src2Step, b.pDst, b.dstStep, p, size_class(b.width) + 1,
        size_class(b.height));
    return zanStsOk;
}

ZanStatus zaniBiDirWeightBlockImplicit_H264_8u_P3P1R(const Zan8u* pSrc1, const Zan8u* pSrc2, Zan8u* pDst,
                                                     Zan32s src1Step, Zan32s src2Step, Zan32s dstStep, Zan32s w1,
                                                     Zan32s w2, ZaniSize roiSize) {
    if (!pSrc1 || !pSrc2 || !pDst) return zanStsNullPtr;
    if (src1Step < roiSize.width || src2Step < roiSize.width || dstStep < roiSize.width) return zanStsStepBad;
    if (!size_ok(roiSize.width) || !size_ok(roiSize.height)) return zanStsSizeBad;
    bi8(pSrc1, src1Step, pSrc2, src2Step, pDst, dstStep, implicit_params(w1, w2, 255), size_class(roiSize.width),
        size_class(roiSize.height));
    return zanStsOk;
}

ZanStatus zaniBiDirWeightBlockImplicit_H264_8u_P2P1R(const Zan8u* pSrc1, const Zan8u* pSrc2, Zan8u* pDst,
                                                     Zan32s srcStep, Zan32s dstStep, Zan32s w1, Zan32s w2,
                                                     ZaniSize roiSize) {
    return ZAN_PATH::zaniBiDirWeightBlockImplicit_H264_8u_P3P1R(pSrc1, pSrc2, pDst, srcStep, srcStep, dstStep, w1, w2,
                                                      roiSize);
}

ZanStatus zaniWeightedAverage_H264_8u_C1IR(const Zan8u* pSrc1, Zan8u* pSrc2Dst, Zan32s srcDstStep, Zan32s w1,
                                           Zan32s w2, Zan32s shift, Zan32s o, ZaniSize roiSize) {
    if (!pSrc1 || !pSrc2Dst) return zanStsNullPtr;
    if (srcDstStep < roiSize.width) return zanStsStepBad;
    if (!size_ok(roiSize.width) || !size_ok(roiSize.height)) return zanStsSizeBad;
    bi8(pSrc1, srcDstStep, pSrc2Dst, srcDstStep, pSrc2Dst, srcDstStep, average_params(w1, w2, shift, o),
        size_class(roiSize.width), size_class(roiSize.height));
    return zanStsOk;
}

ZanStatus zaniUnidirWeight_H264_16u_IP2P1R(Zan16u* pSrcDst, Zan32s srcDstStep, Zan32s log2wd, Zan32s w, Zan32s o,
                                           ZaniSize roiSize, Zan32s bitDepth) {
    if (!pSrcDst) return zanStsNullPtr;
    if (srcDstStep < roiSize.width) return zanStsStepBad;
    if (!size_ok(roiSize.width) || !size_ok(roiSize.height)) return zanStsSizeBad;
    Params p = uni_params(log2wd, w, o, depth_max(bitDepth));
    int wc = size_class(roiSize.width), hc = size_class(roiSize.height);
    (vector_params16(p) ? kUni16 : kUni16Rule)[wc][hc](pSrcDst, srcDstStep, pSrcDst, srcDstStep, p);
    return zanStsOk;
}

ZanStatus zaniBidirWeight_H264_16u_P2P1R(const ZanBidirRecord* pRec, Zan32s log2wd, Zan32s w1, Zan32s o1,
                                         Zan32s w2, Zan32s o2) {
    if (ZanStatus st = check16(pRec); st != zanStsOk) return st;
    bi16(*pRec, bi_params(log2wd, w1, o1, w2, o2, depth_max(pRec->bitDepth)));
    return zanStsOk;
}

ZanStatus zaniBidirWeightImplicit_H264_16u_P2P1R(const ZanBidirRecord* pRec, Zan32s w1, Zan32s w2) {
    if (ZanStatus st = check16(pRec); st != zanStsOk) return st;
    bi16(*pRec, implicit_params(w1, w2, depth_max(pRec->bitDepth)));
    return zanStsOk;
}

ZanStatus zaniBidir_H264_16u_P2P1R(const ZanBidirRecord* pRec) {
    if (!pRec) return zanStsNullPtr;
    const ZanBidirRecord& r = *pRec;
    if (!r.pSrc1 || !r.pSrc2 || !r.pDst) return zanStsNullPtr;
    if (r.width < 2 || r.width > 16 || r.height < 2 || r.height > 16) return zanStsSizeBad;
    Zan32s max = depth_max(r.bitDepth);
    (max >= 0 ? kAvg16 : kAvg16Rule)[r.width - 2](r.pSrc1, r.src1Step, r.pSrc2, r.src2Step, r.pDst, r.dstStep,
                                                   r.height, max);
    return zanStsOk;
}

}  // namespace zan::ZAN_PATH
