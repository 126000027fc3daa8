// H.264 quarter-sample luma and eighth-sample chroma interpolation kernels
// (8-bit planar, interleaved and interleaved-to-planar chroma; 16-bit luma
// and chroma), and the bi-prediction average.
//
// The scalar rules are the standard's formulas written out sample by
// sample.  The 8-bit vector kernels form the horizontal and vertical 6-tap
// sums with pmaddubsw on byte pairs (each pair sum and the total stay within
// -2550..10710, so 16 bits hold them).  The centre position's second stage
// (-214200..475320 before the shift) is taken apart by floor identities
// into 16-bit steps, one of them saturating where saturation cannot change
// the clipped result (see centre8).  The 16-bit kernels are SSE2 on samples
// biased into signed words, with sums in 32 bits.
#include <cstddef>
#include <cstring>

#include "common/simd.h"
#include "frame/bodies.h"
#include "h264/h264interp.h"

namespace zan::ZAN_PATH::h264interp {
namespace {

using namespace zan::h264interp;
using std::ptrdiff_t;

// ============================================================ scalar rules

inline Zan32s clamp_to(Zan32s v, Zan32s maxValue) { return v < 0 ? 0 : v > maxValue ? maxValue : v; }

// (1, -5, 20, 20, -5, 1) over the six samples p[-2d] .. p[3d].
template <class T>
inline Zan32s tap6(const T* p, ptrdiff_t d) {
    return p[-2 * d] - 5 * p[-d] + 20 * p[0] + 20 * p[d] - 5 * p[2 * d] + p[3 * d];
}

inline Zan32s avg2(Zan32s a, Zan32s b) { return (a + b + 1) >> 1; }

// One luma sample at fraction (dx, dy) from the integer sample g, steps in
// elements.  G, H = G(1, 0), M = G(0, 1); b the half sample between G and H,
// s the one below it; h between G and M, m the one right of it; j the centre.
template <class T>
Zan32s luma_sample(const T* g, ptrdiff_t s, Zan32s dx, Zan32s dy, Zan32s maxValue) {
    auto G = [&](int cx, int cy) -> Zan32s { return g[cy * s + cx]; };
    auto b = [&](int cy) { return clamp_to((tap6(g + cy * s, 1) + 16) >> 5, maxValue); };
    auto h = [&](int cx) { return clamp_to((tap6(g + cx, s) + 16) >> 5, maxValue); };
    auto j = [&]() {
        Zan32s t[6];
        for (int k = 0; k < 6; ++k) t[k] = tap6(g + (k - 2) * s, 1);
        Zan32s j1 = t[0] - 5 * t[1] + 20 * t[2] + 20 * t[3] - 5 * t[4] + t[5];
        return clamp_to((j1 + 512) >> 10, maxValue);
    };
    switch (dy * 4 + dx) {
        case 0: return G(0, 0);
        case 1: return avg2(G(0, 0), b(0));   // a
        case 2: return b(0);                  // b
        case 3: return avg2(b(0), G(1, 0));   // c
        case 4: return avg2(G(0, 0), h(0));   // d
        case 5: return avg2(b(0), h(0));      // e
        case 6: return avg2(b(0), j());       // f
        case 7: return avg2(b(0), h(1));      // g
        case 8: return h(0);                  // h
        case 9: return avg2(h(0), j());       // i
        case 10: return j();                  // j
        case 11: return avg2(j(), h(1));      // k
        case 12: return avg2(G(0, 1), h(0));  // n
        case 13: return avg2(h(0), b(1));     // p
        case 14: return avg2(j(), b(1));      // q
        default: return avg2(h(1), b(1));     // r
    }
}

template <int W, int P>
void luma8_rule(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep, Zan32s height) {
    for (Zan32s y = 0; y < height; ++y)
        for (Zan32s x = 0; x < W; ++x)
            pDst[static_cast<ptrdiff_t>(dstStep) * y + x] = static_cast<Zan8u>(
                luma_sample(pSrc + static_cast<ptrdiff_t>(srcStep) * y + x, srcStep, P & 3, P >> 2, 255));
}

// One chroma sample; d is the distance to the horizontal neighbour (1, or 2
// in an interleaved row).  A neighbour with weight 0 is not read.
template <class T>
Zan32s chroma_sample(const T* p, ptrdiff_t s, ptrdiff_t d, Zan32s dx, Zan32s dy) {
    Zan32s a = p[0], b = dx ? p[d] : 0, c = dy ? p[s] : 0, e = dx && dy ? p[s + d] : 0;
    return ((8 - dx) * (8 - dy) * a + dx * (8 - dy) * b + (8 - dx) * dy * c + dx * dy * e + 32) >> 6;
}

enum Layout { kPlanar = 0, kNv12 = 1, kNv12ToUv = 2 };

// N samples (pairs) a row.
template <int N, int L>
void chroma8_rule(const ChromaJob8& j) {
    for (Zan32s y = 0; y < j.height; ++y) {
        const Zan8u* s = j.pSrc + static_cast<ptrdiff_t>(j.srcStep) * y;
        Zan8u* d = j.pDst + static_cast<ptrdiff_t>(j.dstStep) * y;
        if constexpr (L == kPlanar) {
            for (int x = 0; x < N; ++x) d[x] = static_cast<Zan8u>(chroma_sample(s + x, j.srcStep, 1, j.dx, j.dy));
        } else if constexpr (L == kNv12) {
            for (int x = 0; x < 2 * N; ++x) d[x] = static_cast<Zan8u>(chroma_sample(s + x, j.srcStep, 2, j.dx, j.dy));
        } else {
            Zan8u* v = j.pDstV + static_cast<ptrdiff_t>(j.dstStep) * y;
            for (int x = 0; x < N; ++x) {
                d[x] = static_cast<Zan8u>(chroma_sample(s + 2 * x, j.srcStep, 2, j.dx, j.dy));
                v[x] = static_cast<Zan8u>(chroma_sample(s + 2 * x + 1, j.srcStep, 2, j.dx, j.dy));
            }
        }
    }
}

// 16-bit chroma, N samples a row.
template <int N>
void chroma16_rule(const Job16& j) {
    for (Zan32s y = 0; y < j.height; ++y)
        for (Zan32s x = 0; x < N; ++x)
            j.pDst[static_cast<ptrdiff_t>(j.dstStep) * y + x] = static_cast<Zan16u>(
                chroma_sample(j.pSrc + static_cast<ptrdiff_t>(j.srcStep) * y + x, j.srcStep, 1, j.dx, j.dy));
}

void average_rule(const Zan8u* a, Zan32s as, const Zan8u* b, Zan32s bs, Zan8u* d, Zan32s ds, Zan32s w, Zan32s h) {
    for (Zan32s y = 0; y < h; ++y)
        for (Zan32s x = 0; x < w; ++x)
            d[static_cast<ptrdiff_t>(ds) * y + x] = static_cast<Zan8u>(
                avg2(a[static_cast<ptrdiff_t>(as) * y + x], b[static_cast<ptrdiff_t>(bs) * y + x]));
}

// 16-bit luma at one position: the plain loop is the implementation.
template <int P>
void luma16_at(const Job16& j) {
    for (Zan32s y = 0; y < j.height; ++y)
        for (Zan32s x = 0; x < j.width; ++x)
            j.pDst[static_cast<ptrdiff_t>(j.dstStep) * y + x] = static_cast<Zan16u>(
                luma_sample(j.pSrc + static_cast<ptrdiff_t>(j.srcStep) * y + x, j.srcStep, P & 3, P >> 2, j.maxValue));
}

// The same over a fixed width W, for the catalogue.
template <int W, int P>
void luma16_rule(const Job16& j) {
    Job16 k = j;
    k.width = W;
    luma16_at<P>(k);
}

constexpr Interp16Fn kLuma16[16] = {luma16_at<0>,  luma16_at<1>,  luma16_at<2>,  luma16_at<3>,
                                    luma16_at<4>,  luma16_at<5>,  luma16_at<6>,  luma16_at<7>,
                                    luma16_at<8>,  luma16_at<9>,  luma16_at<10>, luma16_at<11>,
                                    luma16_at<12>, luma16_at<13>, luma16_at<14>, luma16_at<15>};

// ========================================================== vector kernels

using simd::load16;
using simd::load4;
using simd::load8;
using simd::store16;
using simd::store8;

inline __m128i load2(const void* p) {
    Zan16u v;
    std::memcpy(&v, p, 2);
    return _mm_cvtsi32_si128(v);
}
inline void store4(void* p, __m128i v) {
    Zan32s x = _mm_cvtsi128_si32(v);
    std::memcpy(p, &x, 4);
}
inline void store2(void* p, __m128i v) {
    Zan16u x = static_cast<Zan16u>(_mm_cvtsi128_si32(v));
    std::memcpy(p, &x, 2);
}

// N bytes (2, 4, 8 or 16) into the low bytes of a register, and back.
template <int N>
inline __m128i loadN(const Zan8u* p) {
    if constexpr (N == 16) return load16(p);
    else if constexpr (N == 8) return load8(p);
    else if constexpr (N == 4) return load4(p);
    else return load2(p);
}
template <int N>
inline void storeN(Zan8u* p, __m128i v) {
    if constexpr (N == 16) store16(p, v);
    else if constexpr (N == 8) store8(p, v);
    else if constexpr (N == 4) store4(p, v);
    else store2(p, v);
}

// Byte pairs (x, y) times the signed byte coefficients (cx, cy).
inline __m128i coef_pair(int cx, int cy) { return _mm_set1_epi16(static_cast<short>((cy & 0xFF) << 8 | (cx & 0xFF))); }
inline __m128i word_pair(int cx, int cy) { return _mm_set1_epi32(static_cast<int>(static_cast<unsigned>(cy) << 16 | (cx & 0xFFFF))); }

// Byte pairs (s[k], s[k + 1]) for 8 consecutive k out of a register holding
// s[-2 .. 10] from byte `first` on: k from -2, 0 and 2.
template <int first>
struct PairShuffles {
    alignas(16) static constexpr Zan8u at0[16] = {first + 0, first + 1, first + 1, first + 2, first + 2, first + 3,
                                                  first + 3, first + 4, first + 4, first + 5, first + 5, first + 6,
                                                  first + 6, first + 7, first + 7, first + 8};
    alignas(16) static constexpr Zan8u at2[16] = {first + 2, first + 3, first + 3, first + 4, first + 4,  first + 5,
                                                  first + 5, first + 6, first + 6, first + 7, first + 7,  first + 8,
                                                  first + 8, first + 9, first + 9, first + 10};
    alignas(16) static constexpr Zan8u at4[16] = {first + 4,  first + 5,  first + 5,  first + 6,  first + 6,  first + 7,
                                                  first + 7,  first + 8,  first + 8,  first + 9,  first + 9,  first + 10,
                                                  first + 10, first + 11, first + 11, first + 12};
};

// The six-tap sum of 8 outputs from the three pair registers.
inline __m128i taps(__m128i p0, __m128i mid, __m128i p2) {
    return _mm_add_epi16(_mm_add_epi16(_mm_maddubs_epi16(p0, coef_pair(1, -5)), _mm_maddubs_epi16(mid, coef_pair(20, 20))),
                         _mm_maddubs_epi16(p2, coef_pair(-5, 1)));
}
template <int first>
inline __m128i taps_from(__m128i v) {
    using S = PairShuffles<first>;
    return taps(_mm_shuffle_epi8(v, simd::load16a(S::at0)), _mm_shuffle_epi8(v, simd::load16a(S::at2)),
                _mm_shuffle_epi8(v, simd::load16a(S::at4)));
}

// Unrounded 6-tap sums of N = 4, 8 or 16 outputs in 16-bit lanes, one
// register per 8 outputs (N = 4 uses the low half).
template <int N>
struct Sums {
    __m128i v[N == 16 ? 2 : 1];
};

template <int N>
inline Sums<N> hsum_narrow(const Zan8u* p) {
    Sums<N> r;
    if constexpr (N == 8) {
        // s[-2 .. 5] and s[3 .. 10] joined into s[-2 .. 10].
        r.v[0] = taps_from<0>(_mm_unpacklo_epi64(load8(p - 2), _mm_srli_si128(load8(p + 3), 3)));
    } else {
        const __m128i p0 = _mm_unpacklo_epi8(load8(p - 2), load8(p - 1));  // pairs k = -2 .. 5
        r.v[0] = taps(p0, _mm_srli_si128(p0, 4), _mm_srli_si128(p0, 8));
    }
    return r;
}

// Horizontal sums of 16 outputs kept as even outputs (0, 2, .. 14) and odd
// ones: a 16-byte load at p - 2 already holds the pairs (s[k], s[k + 1]) of
// every even k, so six plain loads give all taps without a shuffle.
struct Split {
    __m128i even, odd;
};

// Horizontal sums at p; reads p - 2 .. p + N + 2 and nothing beyond.
template <int N>
inline auto hsum(const Zan8u* p) {
    if constexpr (N == 16) {
        return Split{taps(load16(p - 2), load16(p), load16(p + 2)), taps(load16(p - 1), load16(p + 1), load16(p + 3))};
    } else {
        return hsum_narrow<N>(p);
    }
}

// Vertical sums of N columns at p (rows -2 .. 3).
template <int N>
inline Sums<N> vsum(const Zan8u* p, ptrdiff_t s) {
    Sums<N> r;
    if constexpr (N == 16) {
        __m128i row[6];
        for (int k = 0; k < 6; ++k) row[k] = load16(p + (k - 2) * s);
        r.v[0] = taps(_mm_unpacklo_epi8(row[0], row[1]), _mm_unpacklo_epi8(row[2], row[3]), _mm_unpacklo_epi8(row[4], row[5]));
        r.v[1] = taps(_mm_unpackhi_epi8(row[0], row[1]), _mm_unpackhi_epi8(row[2], row[3]), _mm_unpackhi_epi8(row[4], row[5]));
    } else {
        auto pair = [&](int k) { return _mm_unpacklo_epi8(loadN<N>(p + k * s), loadN<N>(p + (k + 1) * s)); };
        r.v[0] = taps(pair(-2), pair(0), pair(2));
    }
    return r;
}

// Clip((sum + 16) >> 5) as N bytes in the low bytes of a register.
// (v + 2^(m-1)) >> m in one pmulhrsw by 2^(15-m): the instruction forms
// ((v * 2^(15-m) >> 14) + 1) >> 1 = (floor(v / 2^(m-1)) + 1) >> 1, which is
// floor((v + 2^(m-1)) / 2^m) for every 16-bit v, without a 16-bit overflow.
template <int m>
inline __m128i round_shift(__m128i v) {
    return _mm_mulhrs_epi16(v, _mm_set1_epi16(static_cast<short>(1 << (15 - m))));
}

template <int N>
inline __m128i round5(const Sums<N>& t) {
    const __m128i lo = round_shift<5>(t.v[0]);
    if constexpr (N == 16) return _mm_packus_epi16(lo, round_shift<5>(t.v[1]));
    else return _mm_packus_epi16(lo, lo);
}

// The centre of 8 columns: Clip((t0 - 5 t1 + 20 t2 + 20 t3 - 5 t4 + t5 +
// 512) >> 10) of six rows of unrounded horizontal sums, in 16 bits.  With
// x = t0 + t5, y = t1 + t4, z = t2 + t3 (each within -5100 .. 21420) and
// Q = x - 5 y + 20 z, floor identities give
//   floor(Q / 16) = floor(w / 4) + z,  w = floor((x - y) / 4) - y + z,
//   (Q + 512) >> 10 = (floor(Q / 16) + 32) >> 6.
// Every term fits 16 bits except w, which reaches -33150 .. 33150; it is
// formed with a saturating add.  w saturates only when z is so large (at
// least 21037) that the result clips to 255 either way, or so small (at
// most -4718) that it clips to 0 either way, so the result stays exact.
// Result in 16-bit lanes.
inline __m128i centre8(__m128i t0, __m128i t1, __m128i t2, __m128i t3, __m128i t4, __m128i t5) {
    const __m128i x = _mm_add_epi16(t0, t5), y = _mm_add_epi16(t1, t4), z = _mm_add_epi16(t2, t3);
    __m128i w = _mm_sub_epi16(_mm_srai_epi16(_mm_sub_epi16(x, y), 2), y);
    w = _mm_adds_epi16(w, z);
    const __m128i q16 = _mm_add_epi16(_mm_srai_epi16(w, 2), z);
    return round_shift<6>(q16);
}

// Even and odd results (16-bit lanes) to 16 bytes in order.
inline __m128i interleave(__m128i even, __m128i odd) {
    const __m128i packed = _mm_packus_epi16(even, odd);  // e0 .. e7, o0 .. o7
    return _mm_unpacklo_epi8(packed, _mm_srli_si128(packed, 8));
}

inline __m128i round5(const Split& t) { return interleave(round_shift<5>(t.even), round_shift<5>(t.odd)); }

inline __m128i centre(const Split& t0, const Split& t1, const Split& t2, const Split& t3, const Split& t4,
                      const Split& t5) {
    return interleave(centre8(t0.even, t1.even, t2.even, t3.even, t4.even, t5.even),
                      centre8(t0.odd, t1.odd, t2.odd, t3.odd, t4.odd, t5.odd));
}

template <int N>
inline __m128i centre(const Sums<N>& t0, const Sums<N>& t1, const Sums<N>& t2, const Sums<N>& t3, const Sums<N>& t4,
                      const Sums<N>& t5) {
    const __m128i lo = centre8(t0.v[0], t1.v[0], t2.v[0], t3.v[0], t4.v[0], t5.v[0]);
    if constexpr (N == 16) return _mm_packus_epi16(lo, centre8(t0.v[1], t1.v[1], t2.v[1], t3.v[1], t4.v[1], t5.v[1]));
    else return _mm_packus_epi16(lo, lo);
}

// One strip of N = 4, 8 or 16 columns at position P.
template <int N, int P>
void luma_strip(const Zan8u* s, ptrdiff_t ss, Zan8u* d, ptrdiff_t ds, Zan32s h) {
    constexpr int dx = P & 3, dy = P >> 2;
    if constexpr (P == 0) {
        for (Zan32s y = 0; y < h; ++y, s += ss, d += ds) storeN<N>(d, loadN<N>(s));
    } else if constexpr (dy == 0) {  // a b c
        for (Zan32s y = 0; y < h; ++y, s += ss, d += ds) {
            __m128i v = round5(hsum<N>(s));
            if constexpr (dx == 1) v = _mm_avg_epu8(v, loadN<N>(s));
            if constexpr (dx == 3) v = _mm_avg_epu8(v, loadN<N>(s + 1));
            storeN<N>(d, v);
        }
    } else if constexpr (dx == 0) {  // d h n
        for (Zan32s y = 0; y < h; ++y, s += ss, d += ds) {
            __m128i v = round5(vsum<N>(s, ss));
            if constexpr (dy == 1) v = _mm_avg_epu8(v, loadN<N>(s));
            if constexpr (dy == 3) v = _mm_avg_epu8(v, loadN<N>(s + ss));
            storeN<N>(d, v);
        }
    } else if constexpr (dx != 2 && dy != 2) {  // e g p r
        for (Zan32s y = 0; y < h; ++y, s += ss, d += ds) {
            __m128i b = round5(hsum<N>(dy == 3 ? s + ss : s));
            __m128i v = round5(vsum<N>(dx == 3 ? s + 1 : s, ss));
            storeN<N>(d, _mm_avg_epu8(b, v));
        }
    } else {  // f i j k q: a window of six rows of horizontal sums
        auto t0 = hsum<N>(s - 2 * ss), t1 = hsum<N>(s - ss), t2 = hsum<N>(s), t3 = hsum<N>(s + ss),
             t4 = hsum<N>(s + 2 * ss);
        for (Zan32s y = 0; y < h; ++y, s += ss, d += ds) {
            const auto t5 = hsum<N>(s + 3 * ss);
            __m128i v = centre(t0, t1, t2, t3, t4, t5);
            if constexpr (P == 6) v = _mm_avg_epu8(v, round5(t2));                   // f
            if constexpr (P == 14) v = _mm_avg_epu8(v, round5(t3));                  // q
            if constexpr (P == 9) v = _mm_avg_epu8(v, round5(vsum<N>(s, ss)));      // i
            if constexpr (P == 11) v = _mm_avg_epu8(v, round5(vsum<N>(s + 1, ss)));  // k
            storeN<N>(d, v);
            t0 = t1;
            t1 = t2;
            t2 = t3;
            t3 = t4;
            t4 = t5;
        }
    }
}

template <int W, int P>
void luma8_simd(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep, Zan32s height) {
    if constexpr (W == 24) {
        luma_strip<16, P>(pSrc, srcStep, pDst, dstStep, height);
        luma_strip<8, P>(pSrc + 16, srcStep, pDst + 16, dstStep, height);
    } else {
        luma_strip<W, P>(pSrc, srcStep, pDst, dstStep, height);
    }
}

// Chroma.  B bytes a row (N samples planar, 2N bytes interleaved), D the
// distance to the horizontal neighbour, Col the column of the table (0
// copy, 1 horizontal, 2 vertical, 3 both), Split for interleaved in and
// planar out.  Weighted byte pairs are summed with pmaddubsw: every weight
// is at most 64 and every sum at most 64 * 255.
template <int B>
struct Pairs {
    __m128i lo, hi;
};
template <int B>
inline Pairs<B> pairs_of(__m128i a, __m128i b) {
    Pairs<B> p;
    p.lo = _mm_unpacklo_epi8(a, b);
    p.hi = B == 16 ? _mm_unpackhi_epi8(a, b) : _mm_setzero_si128();
    return p;
}
template <int B>
inline __m128i weigh(const Pairs<B>& p, __m128i w) {
    return _mm_maddubs_epi16(p.lo, w);
}
template <int B>
inline __m128i weigh_hi(const Pairs<B>& p, __m128i w) {
    return _mm_maddubs_epi16(p.hi, w);
}

alignas(16) constexpr Zan8u kSplit[16] = {0, 2, 4, 6, 8, 10, 12, 14, 1, 3, 5, 7, 9, 11, 13, 15};

template <int B, bool Split>
inline void put_row(Zan8u* d, Zan8u* v, __m128i bytes) {
    if constexpr (Split) {
        bytes = _mm_shuffle_epi8(bytes, simd::load16a(kSplit));
        storeN<B / 2>(d, bytes);
        storeN<B / 2>(v, _mm_srli_si128(bytes, 8));
    } else {
        storeN<B>(d, bytes);
    }
}

template <int B, int D, int Col, bool Split>
void chroma8_simd(const ChromaJob8& j) {
    const Zan8u* s = j.pSrc;
    Zan8u* d = j.pDst;
    Zan8u* v = j.pDstV;
    const ptrdiff_t ss = j.srcStep, ds = j.dstStep;
    if constexpr (Col == 0) {
        for (Zan32s y = 0; y < j.height; ++y, s += ss, d += ds, v = Split ? v + ds : v) put_row<B, Split>(d, v, loadN<B>(s));
    } else if constexpr (Col == 1 || Col == 2) {
        const int f = Col == 1 ? j.dx : j.dy;
        const __m128i w = coef_pair(8 - f, f), r = _mm_set1_epi16(4);
        const ptrdiff_t off = Col == 1 ? D : ss;
        for (Zan32s y = 0; y < j.height; ++y, s += ss, d += ds, v = Split ? v + ds : v) {
            Pairs<B> p = pairs_of<B>(loadN<B>(s), loadN<B>(s + off));
            __m128i lo = _mm_srli_epi16(_mm_add_epi16(weigh(p, w), r), 3);
            __m128i hi = B == 16 ? _mm_srli_epi16(_mm_add_epi16(weigh_hi(p, w), r), 3) : lo;
            put_row<B, Split>(d, v, _mm_packus_epi16(lo, hi));
        }
    } else {
        const __m128i ab = coef_pair((8 - j.dx) * (8 - j.dy), j.dx * (8 - j.dy));
        const __m128i cd = coef_pair((8 - j.dx) * j.dy, j.dx * j.dy);
        const __m128i r = _mm_set1_epi16(32);
        Pairs<B> top = pairs_of<B>(loadN<B>(s), loadN<B>(s + D));
        for (Zan32s y = 0; y < j.height; ++y, s += ss, d += ds, v = Split ? v + ds : v) {
            Pairs<B> bottom = pairs_of<B>(loadN<B>(s + ss), loadN<B>(s + ss + D));
            __m128i lo = _mm_srli_epi16(_mm_add_epi16(_mm_add_epi16(weigh(top, ab), weigh(bottom, cd)), r), 6);
            __m128i hi = lo;
            if constexpr (B == 16)
                hi = _mm_srli_epi16(_mm_add_epi16(_mm_add_epi16(weigh_hi(top, ab), weigh_hi(bottom, cd)), r), 6);
            put_row<B, Split>(d, v, _mm_packus_epi16(lo, hi));
            top = bottom;
        }
    }
}

// 16-bit chroma, N = 2, 4 or 8 samples a row.  pmaddwd multiplies signed
// words, so the samples are biased by -32768 and the weights' total times
// 32768 is added back before the rounding: the sum is exact in 32 bits.
template <int N>
inline __m128i load_samples(const Zan16u* p) {
    const __m128i bias = _mm_set1_epi16(static_cast<short>(0x8000));
    if constexpr (N == 8) return _mm_xor_si128(load16(p), bias);
    else if constexpr (N == 4) return _mm_xor_si128(load8(p), bias);
    else return _mm_xor_si128(load4(p), bias);
}

// (sum + add) >> shift of 32-bit lanes lo, hi (results 0..65535) stored as
// N 16-bit samples.
template <int N, int shift>
inline void store_samples(Zan16u* d, __m128i lo, __m128i hi, __m128i add) {
    const __m128i unbias = _mm_set1_epi32(32768);
    lo = _mm_sub_epi32(_mm_srai_epi32(_mm_add_epi32(lo, add), shift), unbias);
    hi = _mm_sub_epi32(_mm_srai_epi32(_mm_add_epi32(hi, add), shift), unbias);
    const __m128i v = _mm_xor_si128(_mm_packs_epi32(lo, hi), _mm_set1_epi16(static_cast<short>(0x8000)));
    if constexpr (N == 8) store16(d, v);
    else if constexpr (N == 4) store8(d, v);
    else store4(d, v);
}

template <int N, int Col>
void chroma16_simd(const Job16& j) {
    const Zan16u* s = j.pSrc;
    Zan16u* d = j.pDst;
    const ptrdiff_t ss = j.srcStep, ds = j.dstStep;
    if constexpr (Col == 0) {
        for (Zan32s y = 0; y < j.height; ++y, s += ss, d += ds) std::memcpy(d, s, 2 * N);
    } else if constexpr (Col == 1 || Col == 2) {
        const int f = Col == 1 ? j.dx : j.dy;
        const __m128i w = word_pair(8 - f, f), add = _mm_set1_epi32(8 * 32768 + 4);
        const ptrdiff_t off = Col == 1 ? 1 : ss;
        for (Zan32s y = 0; y < j.height; ++y, s += ss, d += ds) {
            const __m128i a = load_samples<N>(s), b = load_samples<N>(s + off);
            store_samples<N, 3>(d, _mm_madd_epi16(_mm_unpacklo_epi16(a, b), w), _mm_madd_epi16(_mm_unpackhi_epi16(a, b), w), add);
        }
    } else {
        const __m128i ab = word_pair((8 - j.dx) * (8 - j.dy), j.dx * (8 - j.dy));
        const __m128i cd = word_pair((8 - j.dx) * j.dy, j.dx * j.dy);
        const __m128i add = _mm_set1_epi32(64 * 32768 + 32);
        __m128i a = load_samples<N>(s), b = load_samples<N>(s + 1);
        for (Zan32s y = 0; y < j.height; ++y, s += ss, d += ds) {
            const __m128i c = load_samples<N>(s + ss), e = load_samples<N>(s + ss + 1);
            const __m128i lo = _mm_add_epi32(_mm_madd_epi16(_mm_unpacklo_epi16(a, b), ab), _mm_madd_epi16(_mm_unpacklo_epi16(c, e), cd));
            const __m128i hi = _mm_add_epi32(_mm_madd_epi16(_mm_unpackhi_epi16(a, b), ab), _mm_madd_epi16(_mm_unpackhi_epi16(c, e), cd));
            store_samples<N, 6>(d, lo, hi, add);
            a = c;
            b = e;
        }
    }
}

// 16-bit luma, strips of N = 4 or 8 outputs.  Sums are formed in 32 bits:
// samples biased by -32768 go through pmaddwd with the tap pairs (1, -5),
// (20, 20), (-5, 1), and 32 * 32768 is added back, so each horizontal or
// vertical sum is exact (-655350 .. 2752470); the centre's second stage
// (up to about 1.2e8) uses shifts and adds.  Results are clamped through a
// signed saturating pack of (v - 32768), then pminsw with maxValue - 32768;
// maxValue must lie in 0..65535.
struct Sums16 {
    __m128i lo, hi;  // outputs 0..3 and 4..7 (N = 4: lo only)
};

template <int N>
inline __m128i load_biased(const Zan16u* p) {
    const __m128i bias = _mm_set1_epi16(static_cast<short>(0x8000));
    if constexpr (N == 8) return _mm_xor_si128(load16(p), bias);
    else return _mm_xor_si128(load8(p), bias);
}

template <int N>
inline Sums16 taps16(const __m128i (&v)[6]) {
    const __m128i c01 = word_pair(1, -5), c23 = word_pair(20, 20), c45 = word_pair(-5, 1);
    const __m128i back = _mm_set1_epi32(32 * 32768);
    Sums16 r;
    r.lo = _mm_add_epi32(_mm_add_epi32(_mm_madd_epi16(_mm_unpacklo_epi16(v[0], v[1]), c01),
                                       _mm_madd_epi16(_mm_unpacklo_epi16(v[2], v[3]), c23)),
                         _mm_add_epi32(_mm_madd_epi16(_mm_unpacklo_epi16(v[4], v[5]), c45), back));
    if constexpr (N == 8)
        r.hi = _mm_add_epi32(_mm_add_epi32(_mm_madd_epi16(_mm_unpackhi_epi16(v[0], v[1]), c01),
                                           _mm_madd_epi16(_mm_unpackhi_epi16(v[2], v[3]), c23)),
                             _mm_add_epi32(_mm_madd_epi16(_mm_unpackhi_epi16(v[4], v[5]), c45), back));
    else
        r.hi = r.lo;
    return r;
}

// Horizontal sums at p (reads p - 2 .. p + N + 2), vertical sums of column p.
template <int N>
inline Sums16 hsum16(const Zan16u* p) {
    __m128i v[6];
    for (int k = 0; k < 6; ++k) v[k] = load_biased<N>(p + k - 2);
    return taps16<N>(v);
}
template <int N>
inline Sums16 vsum16(const Zan16u* p, ptrdiff_t s) {
    __m128i v[6];
    for (int k = 0; k < 6; ++k) v[k] = load_biased<N>(p + (k - 2) * s);
    return taps16<N>(v);
}

// Clip((v + round) >> shift) to 0..maxValue as 8 samples.
template <int shift>
inline __m128i clip16(const Sums16& t, __m128i maxBiased) {
    const __m128i r = _mm_set1_epi32(1 << (shift - 1)), unbias = _mm_set1_epi32(32768);
    const __m128i lo = _mm_sub_epi32(_mm_srai_epi32(_mm_add_epi32(t.lo, r), shift), unbias);
    const __m128i hi = _mm_sub_epi32(_mm_srai_epi32(_mm_add_epi32(t.hi, r), shift), unbias);
    return _mm_xor_si128(_mm_min_epi16(_mm_packs_epi32(lo, hi), maxBiased), _mm_set1_epi16(static_cast<short>(0x8000)));
}

// x - 5 y + 20 z of x = t0 + t5, y = t1 + t4, z = t2 + t3, in 32 bits.
inline __m128i centre16_part(__m128i t0, __m128i t1, __m128i t2, __m128i t3, __m128i t4, __m128i t5) {
    const __m128i x = _mm_add_epi32(t0, t5), y = _mm_add_epi32(t1, t4), z = _mm_add_epi32(t2, t3);
    const __m128i y5 = _mm_add_epi32(_mm_slli_epi32(y, 2), y), z20 = _mm_add_epi32(_mm_slli_epi32(z, 4), _mm_slli_epi32(z, 2));
    return _mm_add_epi32(_mm_sub_epi32(x, y5), z20);
}

template <int N>
inline void store16N(Zan16u* d, __m128i v) {
    if constexpr (N == 8) store16(d, v);
    else store8(d, v);
}
template <int N>
inline __m128i load16N(const Zan16u* p) {
    if constexpr (N == 8) return load16(p);
    else return load8(p);
}

template <int N, int P>
void luma16_strip(const Zan16u* s, ptrdiff_t ss, Zan16u* d, ptrdiff_t ds, Zan32s h, __m128i maxBiased) {
    constexpr int dx = P & 3, dy = P >> 2;
    if constexpr (P == 0) {
        for (Zan32s y = 0; y < h; ++y, s += ss, d += ds) store16N<N>(d, load16N<N>(s));
    } else if constexpr (dy == 0) {
        for (Zan32s y = 0; y < h; ++y, s += ss, d += ds) {
            __m128i v = clip16<5>(hsum16<N>(s), maxBiased);
            if constexpr (dx == 1) v = _mm_avg_epu16(v, load16N<N>(s));
            if constexpr (dx == 3) v = _mm_avg_epu16(v, load16N<N>(s + 1));
            store16N<N>(d, v);
        }
    } else if constexpr (dx == 0) {
        for (Zan32s y = 0; y < h; ++y, s += ss, d += ds) {
            __m128i v = clip16<5>(vsum16<N>(s, ss), maxBiased);
            if constexpr (dy == 1) v = _mm_avg_epu16(v, load16N<N>(s));
            if constexpr (dy == 3) v = _mm_avg_epu16(v, load16N<N>(s + ss));
            store16N<N>(d, v);
        }
    } else if constexpr (dx != 2 && dy != 2) {
        for (Zan32s y = 0; y < h; ++y, s += ss, d += ds) {
            const __m128i b = clip16<5>(hsum16<N>(dy == 3 ? s + ss : s), maxBiased);
            const __m128i v = clip16<5>(vsum16<N>(dx == 3 ? s + 1 : s, ss), maxBiased);
            store16N<N>(d, _mm_avg_epu16(b, v));
        }
    } else {
        Sums16 t0 = hsum16<N>(s - 2 * ss), t1 = hsum16<N>(s - ss), t2 = hsum16<N>(s), t3 = hsum16<N>(s + ss),
               t4 = hsum16<N>(s + 2 * ss);
        for (Zan32s y = 0; y < h; ++y, s += ss, d += ds) {
            const Sums16 t5 = hsum16<N>(s + 3 * ss);
            const Sums16 j1{centre16_part(t0.lo, t1.lo, t2.lo, t3.lo, t4.lo, t5.lo),
                            N == 8 ? centre16_part(t0.hi, t1.hi, t2.hi, t3.hi, t4.hi, t5.hi) : _mm_setzero_si128()};
            __m128i v = clip16<10>(j1, maxBiased);
            if constexpr (P == 6) v = _mm_avg_epu16(v, clip16<5>(t2, maxBiased));                  // f
            if constexpr (P == 14) v = _mm_avg_epu16(v, clip16<5>(t3, maxBiased));                 // q
            if constexpr (P == 9) v = _mm_avg_epu16(v, clip16<5>(vsum16<N>(s, ss), maxBiased));     // i
            if constexpr (P == 11) v = _mm_avg_epu16(v, clip16<5>(vsum16<N>(s + 1, ss), maxBiased)); // k
            store16N<N>(d, v);
            t0 = t1;
            t1 = t2;
            t2 = t3;
            t3 = t4;
            t4 = t5;
        }
    }
}

// W = 4, 8 or 16 columns; job.maxValue in 0..65535.
template <int W, int P>
void luma16_simd(const Job16& j) {
    const __m128i maxBiased = _mm_set1_epi16(static_cast<short>(j.maxValue - 32768));
    if constexpr (W == 4) {
        luma16_strip<4, P>(j.pSrc, j.srcStep, j.pDst, j.dstStep, j.height, maxBiased);
    } else {
        for (int x = 0; x < W; x += 8) luma16_strip<8, P>(j.pSrc + x, j.srcStep, j.pDst + x, j.dstStep, j.height, maxBiased);
    }
}

// Bi-prediction average.
template <int W>
inline void average_row(const Zan8u* a, const Zan8u* b, Zan8u* d) {
    storeN<W>(d, _mm_avg_epu8(loadN<W>(a), loadN<W>(b)));
}

template <int W, int H>
void average_simd(const Zan8u* a, Zan32s as, const Zan8u* b, Zan32s bs, Zan8u* d, Zan32s ds, Zan32s, Zan32s) {
    for (int y = 0; y < H; ++y, a += as, b += bs, d += ds) average_row<W>(a, b, d);
}

// Any width and height: the row in pieces of 16, 8, 4, 2 and 1.
void average_any_simd(const Zan8u* a, Zan32s as, const Zan8u* b, Zan32s bs, Zan8u* d, Zan32s ds, Zan32s w,
                      Zan32s h) {
    for (Zan32s y = 0; y < h; ++y, a += as, b += bs, d += ds) {
        Zan32s x = 0;
        for (; w - x >= 16; x += 16) average_row<16>(a + x, b + x, d + x);
        if (w - x >= 8) average_row<8>(a + x, b + x, d + x), x += 8;
        if (w - x >= 4) average_row<4>(a + x, b + x, d + x), x += 4;
        if (w - x >= 2) average_row<2>(a + x, b + x, d + x), x += 2;
        if (w - x >= 1) d[x] = static_cast<Zan8u>(avg2(a[x], b[x]));
    }
}

// ================================================================= tables

#define ZAN_LUMA_CLASS(W)                                                                                      \
    luma8_simd<W, 0>, luma8_simd<W, 1>, luma8_simd<W, 2>, luma8_simd<W, 3>, luma8_simd<W, 4>, luma8_simd<W, 5>, \
        luma8_simd<W, 6>, luma8_simd<W, 7>, luma8_simd<W, 8>, luma8_simd<W, 9>, luma8_simd<W, 10>,              \
        luma8_simd<W, 11>, luma8_simd<W, 12>, luma8_simd<W, 13>, luma8_simd<W, 14>, luma8_simd<W, 15>

#define ZAN_CHROMA_CLASS(N, B, D, Split) \
    chroma8_simd<B, D, 0, Split>, chroma8_simd<B, D, 1, Split>, chroma8_simd<B, D, 2, Split>, chroma8_simd<B, D, 3, Split>

// ============================================================= catalogue

#define ZAN_LUMA_PAIR(W, P, letter) {"luma_w" #W "_" letter, luma8_rule<W, P>, luma8_simd<W, P>, W, 0, P}
#define ZAN_LUMA_PAIRS(W)                                                                                   \
    ZAN_LUMA_PAIR(W, 0, "G"), ZAN_LUMA_PAIR(W, 1, "a"), ZAN_LUMA_PAIR(W, 2, "b"), ZAN_LUMA_PAIR(W, 3, "c"),   \
        ZAN_LUMA_PAIR(W, 4, "d"), ZAN_LUMA_PAIR(W, 5, "e"), ZAN_LUMA_PAIR(W, 6, "f"), ZAN_LUMA_PAIR(W, 7, "g"), \
        ZAN_LUMA_PAIR(W, 8, "h"), ZAN_LUMA_PAIR(W, 9, "i"), ZAN_LUMA_PAIR(W, 10, "j"),                        \
        ZAN_LUMA_PAIR(W, 11, "k"), ZAN_LUMA_PAIR(W, 12, "n"), ZAN_LUMA_PAIR(W, 13, "p"),                      \
        ZAN_LUMA_PAIR(W, 14, "q"), ZAN_LUMA_PAIR(W, 15, "r")

constexpr KernelPair<Luma8Fn> kLumaPairs[] = {ZAN_LUMA_PAIRS(4), ZAN_LUMA_PAIRS(8), ZAN_LUMA_PAIRS(16),
                                              ZAN_LUMA_PAIRS(24)};

#define ZAN_CHROMA_PAIR(name, N, L, B, D, Col, Split, col) \
    {name #N "_" col, chroma8_rule<N, L>, chroma8_simd<B, D, Col, Split>, N, 0, (L) + 4 * (Col)}
#define ZAN_CHROMA_PAIRS(name, N, L, B, D, Split)                                                       \
    ZAN_CHROMA_PAIR(name, N, L, B, D, 0, Split, "copy"), ZAN_CHROMA_PAIR(name, N, L, B, D, 1, Split, "horz"), \
        ZAN_CHROMA_PAIR(name, N, L, B, D, 2, Split, "vert"), ZAN_CHROMA_PAIR(name, N, L, B, D, 3, Split, "full")

constexpr KernelPair<Chroma8Fn> kChromaPairs[] = {
    ZAN_CHROMA_PAIRS("chroma_w", 2, kPlanar, 2, 1, false),
    ZAN_CHROMA_PAIRS("chroma_w", 4, kPlanar, 4, 1, false),
    ZAN_CHROMA_PAIRS("chroma_w", 8, kPlanar, 8, 1, false),
    ZAN_CHROMA_PAIRS("chroma_nv12_w", 2, kNv12, 4, 2, false),
    ZAN_CHROMA_PAIRS("chroma_nv12_w", 4, kNv12, 8, 2, false),
    ZAN_CHROMA_PAIRS("chroma_nv12_w", 8, kNv12, 16, 2, false),
    ZAN_CHROMA_PAIRS("chroma_nv12touv_w", 2, kNv12ToUv, 4, 2, true),
    ZAN_CHROMA_PAIRS("chroma_nv12touv_w", 4, kNv12ToUv, 8, 2, true),
    ZAN_CHROMA_PAIRS("chroma_nv12touv_w", 8, kNv12ToUv, 16, 2, true),
};

#define ZAN_CHROMA16_PAIRS(N)                                                                  \
    {"chroma16_w" #N "_copy", chroma16_rule<N>, chroma16_simd<N, 0>, N, 0, 0},                   \
        {"chroma16_w" #N "_horz", chroma16_rule<N>, chroma16_simd<N, 1>, N, 0, 4},               \
        {"chroma16_w" #N "_vert", chroma16_rule<N>, chroma16_simd<N, 2>, N, 0, 8},               \
        {"chroma16_w" #N "_full", chroma16_rule<N>, chroma16_simd<N, 3>, N, 0, 12}
constexpr KernelPair<Interp16Fn> kChroma16Pairs[] = {ZAN_CHROMA16_PAIRS(2), ZAN_CHROMA16_PAIRS(4), ZAN_CHROMA16_PAIRS(8)};
#undef ZAN_CHROMA16_PAIRS

#define ZAN_LUMA16_PAIR(W, P, letter) {"luma16_w" #W "_" letter, luma16_rule<W, P>, luma16_simd<W, P>, W, 0, P}
#define ZAN_LUMA16_PAIRS(W)                                                                                          \
    ZAN_LUMA16_PAIR(W, 0, "G"), ZAN_LUMA16_PAIR(W, 1, "a"), ZAN_LUMA16_PAIR(W, 2, "b"), ZAN_LUMA16_PAIR(W, 3, "c"),   \
        ZAN_LUMA16_PAIR(W, 4, "d"), ZAN_LUMA16_PAIR(W, 5, "e"), ZAN_LUMA16_PAIR(W, 6, "f"), ZAN_LUMA16_PAIR(W, 7, "g"), \
        ZAN_LUMA16_PAIR(W, 8, "h"), ZAN_LUMA16_PAIR(W, 9, "i"), ZAN_LUMA16_PAIR(W, 10, "j"),                        \
        ZAN_LUMA16_PAIR(W, 11, "k"), ZAN_LUMA16_PAIR(W, 12, "n"), ZAN_LUMA16_PAIR(W, 13, "p"),                      \
        ZAN_LUMA16_PAIR(W, 14, "q"), ZAN_LUMA16_PAIR(W, 15, "r")
constexpr KernelPair<Interp16Fn> kLuma16Pairs[] = {ZAN_LUMA16_PAIRS(4), ZAN_LUMA16_PAIRS(8), ZAN_LUMA16_PAIRS(16)};

#define ZAN_LUMA16_CLASS(W)                                                                                        \
    luma16_simd<W, 0>, luma16_simd<W, 1>, luma16_simd<W, 2>, luma16_simd<W, 3>, luma16_simd<W, 4>,                 \
        luma16_simd<W, 5>, luma16_simd<W, 6>, luma16_simd<W, 7>, luma16_simd<W, 8>, luma16_simd<W, 9>,             \
        luma16_simd<W, 10>, luma16_simd<W, 11>, luma16_simd<W, 12>, luma16_simd<W, 13>, luma16_simd<W, 14>,        \
        luma16_simd<W, 15>
// By ((width * 2) & 48) | (dy * 4) | dx for widths 4, 8, 16.
constexpr Interp16Fn kLuma16Simd[48] = {ZAN_LUMA16_CLASS(4), ZAN_LUMA16_CLASS(8), ZAN_LUMA16_CLASS(16)};

// By (width & 12) | (dy ? 2 : 0) | (dx ? 1 : 0), as the 8-bit tables.
constexpr Interp16Fn kChroma16[16] = {
    chroma16_simd<2, 0>, chroma16_simd<2, 1>, chroma16_simd<2, 2>, chroma16_simd<2, 3>,
    chroma16_simd<4, 0>, chroma16_simd<4, 1>, chroma16_simd<4, 2>, chroma16_simd<4, 3>,
    chroma16_simd<8, 0>, chroma16_simd<8, 1>, chroma16_simd<8, 2>, chroma16_simd<8, 3>,
    chroma16_simd<8, 0>, chroma16_simd<8, 1>, chroma16_simd<8, 2>, chroma16_simd<8, 3>,
};

#define ZAN_AVERAGE_PAIR(W, H) {"average_" #W "x" #H, average_rule, average_simd<W, H>, W, H, 0}
constexpr KernelPair<AverageFn> kAveragePairs[] = {
    ZAN_AVERAGE_PAIR(16, 16), ZAN_AVERAGE_PAIR(16, 8), ZAN_AVERAGE_PAIR(8, 16), ZAN_AVERAGE_PAIR(8, 8),
    ZAN_AVERAGE_PAIR(8, 4),   ZAN_AVERAGE_PAIR(4, 8),  ZAN_AVERAGE_PAIR(4, 4),  ZAN_AVERAGE_PAIR(4, 2),
    ZAN_AVERAGE_PAIR(2, 4),   ZAN_AVERAGE_PAIR(2, 2),  ZAN_AVERAGE_PAIR(16, 2), ZAN_AVERAGE_PAIR(2, 16),
    {"average_any", average_rule, average_any_simd, 0, 0, 0},
};

}  // namespace

const Luma8Fn luma_table_8u[64] = {ZAN_LUMA_CLASS(4), ZAN_LUMA_CLASS(8), ZAN_LUMA_CLASS(16), ZAN_LUMA_CLASS(24)};

const Chroma8Fn chroma_table_8u[16] = {ZAN_CHROMA_CLASS(2, 2, 1, false), ZAN_CHROMA_CLASS(4, 4, 1, false),
                                       ZAN_CHROMA_CLASS(8, 8, 1, false), ZAN_CHROMA_CLASS(8, 8, 1, false)};
const Chroma8Fn chroma_table_nv12_8u[16] = {ZAN_CHROMA_CLASS(2, 4, 2, false), ZAN_CHROMA_CLASS(4, 8, 2, false),
                                            ZAN_CHROMA_CLASS(8, 16, 2, false), ZAN_CHROMA_CLASS(8, 16, 2, false)};
const Chroma8Fn chroma_table_nv12touv_8u[16] = {ZAN_CHROMA_CLASS(2, 4, 2, true), ZAN_CHROMA_CLASS(4, 8, 2, true),
                                                ZAN_CHROMA_CLASS(8, 16, 2, true), ZAN_CHROMA_CLASS(8, 16, 2, true)};

// (width >> 2) * 5 + (height >> 2) for sizes 2, 4, 8, 16; the kernel of any
// size at every other index.
#define A average_any_simd
const AverageFn average_table[25] = {
    average_simd<2, 2>,  average_simd<2, 4>,  average_simd<2, 8>,  A, average_simd<2, 16>,
    average_simd<4, 2>,  average_simd<4, 4>,  average_simd<4, 8>,  A, average_simd<4, 16>,
    average_simd<8, 2>,  average_simd<8, 4>,  average_simd<8, 8>,  A, average_simd<8, 16>,
    A,                   A,                   A,                   A, A,
    average_simd<16, 2>, average_simd<16, 4>, average_simd<16, 8>, A, average_simd<16, 16>,
};
#undef A
const AverageFn average_any = average_any_simd;

// Any width made of the bits 16, 8 and 4, side by side; a clamp above
// 65535 (bit depths above 16) takes the plain loops.
void luma_16u(const Job16& j) {
    const Zan32s pos = j.dy * 4 + j.dx;
    if (j.maxValue < 0 || j.maxValue > 65535) {
        kLuma16[pos](j);
        return;
    }
    Zan32s off = 0;
    for (Zan32s bit : {16, 8, 4})
        if (j.width & bit) {
            const Job16 k{j.pSrc + off, j.srcStep, j.pDst + off, j.dstStep, j.dx, j.dy, bit, j.height, j.maxValue};
            kLuma16Simd[((bit * 2) & 48) | pos](k);
            off += bit;
        }
}

// Any width made of the bits 8, 4 and 2, side by side.
void chroma_16u(const Job16& j) {
    const Zan32s col = (j.dy ? 2 : 0) | (j.dx ? 1 : 0);
    Zan32s off = 0;
    for (Zan32s bit : {8, 4, 2})
        if (j.width & bit) {
            const Job16 k{j.pSrc + off, j.srcStep, j.pDst + off, j.dstStep, j.dx, j.dy, bit, j.height, j.maxValue};
            kChroma16[(bit & 12) | col](k);
            off += bit;
        }
}

const Kernels kernels = {kLumaPairs, kChromaPairs, kAveragePairs, kChroma16Pairs, kLuma16Pairs};

}  // namespace zan::ZAN_PATH::h264interp
