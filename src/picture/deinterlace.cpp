// Deinterlacing of 8-bit pictures: the three-frame blend with its weight
// table, edge-directed interpolation, the median with a dead zone, the
// four-plane motion-adaptive tool and the vertical triangle filter.
//
// Each tool is a driver (row copies, which rows are computed) around a row
// kernel.  The row kernels have a scalar rule, the definition of the result,
// and an SSE2 kernel working on 16 samples at a time.
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "common/scalar.h"
#include "common/simd.h"
#include "frame/bodies.h"
#include "picture/deinterlace.h"
#include "support/support.h"

namespace zan::ZAN_PATH::deinterlace {

using namespace zan::deinterlace;

namespace {

using scalar::absdiff;
using simd::load16;
using simd::store16;

inline const Zan8u* rowp(const Zan8u* p, Zan32s step, std::int64_t y) {
    return p + static_cast<std::ptrdiff_t>(step) * y;
}
inline Zan8u* rowp(Zan8u* p, Zan32s step, std::int64_t y) { return p + static_cast<std::ptrdiff_t>(step) * y; }

// ============================================================ scalar rules

inline Zan32s avg(Zan32s a, Zan32s b) { return (a + b + 1) >> 1; }
inline Zan32s med3(Zan32s a, Zan32s b, Zan32s c) {
    Zan32s lo = a < b ? a : b, hi = a < b ? b : a;
    Zan32s m = lo > c ? lo : c;
    return m < hi ? m : hi;
}

// Edge-directed predictor at an inner byte x; dx is the neighbour distance.
inline Zan32s spatial_at(const Zan8u* u, const Zan8u* d, Zan32s x, Zan32s dx) {
    Zan32s d1 = absdiff(u[x - dx], d[x + dx]);
    Zan32s d2 = absdiff(u[x + dx], d[x - dx]);
    Zan32s d0 = absdiff(u[x], d[x]);
    if (d1 < d2) return d1 < d0 ? avg(u[x - dx], d[x + dx]) : avg(u[x], d[x]);
    return d2 < d0 ? avg(u[x + dx], d[x - dx]) : avg(u[x], d[x]);
}

inline bool edge_byte(Zan32s x, Zan32s bytes, Zan32s dx) { return x < dx || x >= bytes - dx; }

template <int DX>
void spatial_rule(const Zan8u* u, const Zan8u* d, Zan8u* out, Zan32s bytes, Zan32s repeatDown) {
    for (Zan32s x = 0; x < bytes; ++x)
        out[x] = static_cast<Zan8u>(edge_byte(x, bytes, DX) ? (repeatDown ? d[x] : u[x]) : spatial_at(u, d, x, DX));
}

// Motion measure of the blend at byte x of row y.
inline Zan32s blend_motion(const Zan8u* p0, Zan32s s0, const Zan8u* p1, Zan32s s1, const Zan8u* p2, Zan32s s2,
                           Zan32s x, Zan32s oIsP0) {
    const Zan8u *cu = rowp(p1, s1, -1), *cd = rowp(p1, s1, 1);
    Zan32s a1 = avg(absdiff(rowp(p0, s0, -1)[x], cu[x]), absdiff(rowp(p2, s2, -1)[x], cu[x]));
    Zan32s a2 = avg(absdiff(rowp(p0, s0, 1)[x], cd[x]), absdiff(rowp(p2, s2, 1)[x], cd[x]));
    Zan32s o = oIsP0 ? p0[x] : p2[x];
    Zan32s t = absdiff(p1[x], o), a = avg(a1, a2);
    return a > t ? a : t;
}

// One blended sample, the weight taken from the record's table.
inline Zan8u blend_at(const Zan8u* p0, Zan32s s0, const Zan8u* p1, Zan32s s1, const Zan8u* p2, Zan32s s2,
                      Zan32s x, Zan32s bytes, Zan32s dx, Zan32s oIsP0, Zan32s topField,
                      const ZanDeinterlaceBlendState* st) {
    const Zan8u *u = rowp(p1, s1, -1), *d = rowp(p1, s1, 1);
    Zan32s m = blend_motion(p0, s0, p1, s1, p2, s2, x, oIsP0);
    Zan32s S = edge_byte(x, bytes, dx) ? (topField ? d[x] : u[x]) : spatial_at(u, d, x, dx);
    Zan32s M = med3(u[x], p1[x], d[x]);
    return static_cast<Zan8u>((st->pWeights[m] * S + st->pWeights[256 + m] * M) >> 8);
}

template <int DX>
void blend_rule(const Zan8u* p0, Zan32s s0, const Zan8u* p1, Zan32s s1, const Zan8u* p2, Zan32s s2, Zan8u* out,
                Zan32s bytes, Zan32s oIsP0, Zan32s topField, const ZanDeinterlaceBlendState* st) {
    for (Zan32s x = 0; x < bytes; ++x) out[x] = blend_at(p0, s0, p1, s1, p2, s2, x, bytes, DX, oIsP0, topField, st);
}

inline Zan32s low8(Zan32s t) { return t & 255; }

void median_rule(const Zan8u* src, Zan32s step, Zan8u* out, Zan32s width, Zan32s threshold) {
    const Zan8u *u = rowp(src, step, -1), *d = rowp(src, step, 1);
    Zan32s t = low8(threshold);
    for (Zan32s x = 0; x < width; ++x) {
        Zan32s m = med3(u[x], src[x], d[x]);
        out[x] = static_cast<Zan8u>(t > absdiff(m, src[x]) ? src[x] : m);
    }
}

void motion_rule(const Zan8u* const pl[4], Zan32s step, Zan8u* out, Zan32s width, Zan32s k, Zan32s threshold,
                 Zan32s ap) {
    const Zan8u* K = pl[k];
    const Zan8u* Bp = pl[k - 1];
    Zan32s T = low8(threshold);
    auto up = [&](int i, Zan32s x) { return static_cast<Zan32s>(rowp(pl[i], step, -1)[x]); };
    auto dn = [&](int i, Zan32s x) { return static_cast<Zan32s>(rowp(pl[i], step, 1)[x]); };
    for (Zan32s x = 0; x < width; ++x) {
        Zan32s U = rowp(K, step, -1)[x], D = rowp(K, step, 1)[x], v = Bp[x];
        bool still = absdiff(K[x], v) < T && absdiff(dn(1, x), dn(0, x)) < T && absdiff(up(1, x), up(0, x)) < T &&
                     absdiff(dn(1, x), dn(2, x)) < T && absdiff(up(1, x), up(2, x)) < T &&
                     absdiff(dn(1, x), dn(3, x)) < T && absdiff(up(1, x), up(3, x)) < T &&
                     absdiff(dn(0, x), dn(2, x)) < T && absdiff(up(0, x), up(2, x)) < T &&
                     absdiff(dn(2, x), dn(3, x)) < T && absdiff(up(2, x), up(3, x)) < T;
        if (still && ap == 0) {
            out[x] = static_cast<Zan8u>(v);
            continue;
        }
        Zan32s band = still ? 30 : 6;
        Zan32s lo = v - band < 0 ? 0 : v - band, hi = v + band > 235 ? 235 : v + band;
        bool outside = (U < lo && D < lo) || (U > hi && D > hi);
        out[x] = static_cast<Zan8u>(outside ? avg(U, D) : v);
    }
}

void triangle_rule(const Zan8u* src, Zan32s step, Zan8u* out, Zan32s width, Zan32s c) {
    const Zan8u *u = rowp(src, step, -1), *d = rowp(src, step, 1);
    Zan32s n = (256 - c) >> 1;
    for (Zan32s x = 0; x < width; ++x) out[x] = static_cast<Zan8u>(((u[x] + d[x]) * n + src[x] * c) >> 8);
}

// ========================================================== vector kernels

inline __m128i absd(__m128i a, __m128i b) { return _mm_or_si128(_mm_subs_epu8(a, b), _mm_subs_epu8(b, a)); }
inline __m128i sel(__m128i mask, __m128i a, __m128i b) {
    return _mm_or_si128(_mm_and_si128(mask, a), _mm_andnot_si128(mask, b));
}
// All ones where a < b (unsigned bytes).
inline __m128i lt_u8(__m128i a, __m128i b) {
    return _mm_xor_si128(_mm_cmpeq_epi8(_mm_subs_epu8(b, a), _mm_setzero_si128()), _mm_set1_epi8(-1));
}
inline __m128i med3(__m128i a, __m128i b, __m128i c) {
    return _mm_min_epu8(_mm_max_epu8(_mm_min_epu8(a, b), c), _mm_max_epu8(a, b));
}

// Spatial predictor of 16 bytes at x (inner bytes only).
template <int DX>
inline __m128i spatial16(const Zan8u* u, const Zan8u* d, Zan32s x) {
    __m128i ul = load16(u + x - DX), uc = load16(u + x), ur = load16(u + x + DX);
    __m128i dl = load16(d + x - DX), dc = load16(d + x), dr = load16(d + x + DX);
    __m128i d1 = absd(ul, dr), d2 = absd(ur, dl), d0 = absd(uc, dc);
    __m128i v = _mm_avg_epu8(uc, dc);
    __m128i t1 = sel(lt_u8(d1, d0), _mm_avg_epu8(ul, dr), v);
    __m128i t2 = sel(lt_u8(d2, d0), _mm_avg_epu8(ur, dl), v);
    return sel(lt_u8(d1, d2), t1, t2);
}

// Runs body(x) on groups of 16 covering inner bytes [DX, bytes - DX), the last
// group placed to end at bytes - DX; returns false when the row is too short.
template <int DX, class Body>
inline bool inner_groups(Zan32s bytes, Body body) {
    Zan32s end = bytes - DX;
    if (end - DX < 16) return false;
    Zan32s x = DX;
    for (; x + 16 <= end; x += 16) body(x);
    if (x < end) body(end - 16);
    return true;
}

template <int DX>
void spatial_simd(const Zan8u* u, const Zan8u* d, Zan8u* out, Zan32s bytes, Zan32s repeatDown) {
    bool vec = inner_groups<DX>(bytes, [&](Zan32s x) { store16(out + x, spatial16<DX>(u, d, x)); });
    const Zan8u* e = repeatDown ? d : u;
    if (!vec) {
        for (Zan32s x = 0; x < bytes; ++x) out[x] = edge_byte(x, bytes, DX) ? e[x] : static_cast<Zan8u>(spatial_at(u, d, x, DX));
        return;
    }
    for (Zan32s x = 0; x < DX && x < bytes; ++x) out[x] = e[x];
    for (Zan32s x = bytes - DX > 0 ? bytes - DX : 0; x < bytes; ++x) out[x] = e[x];
}

// 16-bit weight lanes for 8 motions: 256 above fullMotion, 0 below zeroMotion,
// clamp(m * slope + intercept, 0, 256) in 16-bit lanes between.
struct WeightConsts {
    __m128i full, zero, slope, icpt, w256;
    explicit WeightConsts(const ZanDeinterlaceBlendState* st)
        : full(_mm_set1_epi16(static_cast<short>(st->fullMotion))),
          zero(_mm_set1_epi16(static_cast<short>(st->zeroMotion))),
          slope(_mm_set1_epi16(static_cast<short>(st->slope))),
          icpt(_mm_set1_epi16(static_cast<short>(st->intercept))),
          w256(_mm_set1_epi16(256)) {}
    __m128i weight(__m128i m16) const {
        __m128i w = _mm_add_epi16(_mm_mullo_epi16(m16, slope), icpt);
        w = _mm_min_epi16(_mm_max_epi16(w, _mm_setzero_si128()), w256);
        w = sel(_mm_cmpgt_epi16(m16, full), w256, w);
        return _mm_andnot_si128(_mm_cmplt_epi16(m16, zero), w);
    }
};

template <int DX>
void blend_simd(const Zan8u* p0, Zan32s s0, const Zan8u* p1, Zan32s s1, const Zan8u* p2, Zan32s s2, Zan8u* out,
                Zan32s bytes, Zan32s oIsP0, Zan32s topField, const ZanDeinterlaceBlendState* st) {
    const Zan8u *u = rowp(p1, s1, -1), *d = rowp(p1, s1, 1);
    const Zan8u *p0u = rowp(p0, s0, -1), *p0d = rowp(p0, s0, 1), *p2u = rowp(p2, s2, -1), *p2d = rowp(p2, s2, 1);
    const Zan8u* o = oIsP0 ? p0 : p2;
    const WeightConsts wc(st);
    const __m128i zero = _mm_setzero_si128(), w256 = _mm_set1_epi16(256);
    auto group = [&](Zan32s x) {
        __m128i cu = load16(u + x), cc = load16(p1 + x), cd = load16(d + x);
        __m128i a1 = _mm_avg_epu8(absd(load16(p0u + x), cu), absd(load16(p2u + x), cu));
        __m128i a2 = _mm_avg_epu8(absd(load16(p0d + x), cd), absd(load16(p2d + x), cd));
        __m128i m = _mm_max_epu8(_mm_avg_epu8(a1, a2), absd(cc, load16(o + x)));
        __m128i S = spatial16<DX>(u, d, x), M = med3(cu, cc, cd);
        __m128i wl = wc.weight(_mm_unpacklo_epi8(m, zero)), wh = wc.weight(_mm_unpackhi_epi8(m, zero));
        __m128i lo = _mm_add_epi16(_mm_mullo_epi16(wl, _mm_unpacklo_epi8(S, zero)),
                                   _mm_mullo_epi16(_mm_sub_epi16(w256, wl), _mm_unpacklo_epi8(M, zero)));
        __m128i hi = _mm_add_epi16(_mm_mullo_epi16(wh, _mm_unpackhi_epi8(S, zero)),
                                   _mm_mullo_epi16(_mm_sub_epi16(w256, wh), _mm_unpackhi_epi8(M, zero)));
        store16(out + x, _mm_packus_epi16(_mm_srli_epi16(lo, 8), _mm_srli_epi16(hi, 8)));
    };
    if (!inner_groups<DX>(bytes, group)) {
        blend_rule<DX>(p0, s0, p1, s1, p2, s2, out, bytes, oIsP0, topField, st);
        return;
    }
    for (Zan32s x = 0; x < DX; ++x) out[x] = blend_at(p0, s0, p1, s1, p2, s2, x, bytes, DX, oIsP0, topField, st);
    for (Zan32s x = bytes - DX; x < bytes; ++x)
        out[x] = blend_at(p0, s0, p1, s1, p2, s2, x, bytes, DX, oIsP0, topField, st);
}

// Runs body(x) on groups of 16 over [0, width), the last group placed to end
// at width; the columns of a row shorter than 16 go to tail(x) one by one.
template <class Body, class Tail>
inline void full_groups(Zan32s width, Body body, Tail tail) {
    if (width < 16) {
        for (Zan32s x = 0; x < width; ++x) tail(x);
        return;
    }
    Zan32s x = 0;
    for (; x + 16 <= width; x += 16) body(x);
    if (x < width) body(width - 16);
}

void median_simd(const Zan8u* src, Zan32s step, Zan8u* out, Zan32s width, Zan32s threshold) {
    const Zan8u *u = rowp(src, step, -1), *d = rowp(src, step, 1);
    const __m128i t = _mm_set1_epi8(static_cast<char>(threshold));
    full_groups(
        width,
        [&](Zan32s x) {
            __m128i c = load16(src + x), m = med3(load16(u + x), c, load16(d + x));
            __m128i keep = lt_u8(absd(m, c), t);
            store16(out + x, sel(keep, c, m));
        },
        [&](Zan32s x) {
            Zan32s m = med3(u[x], src[x], d[x]);
            out[x] = static_cast<Zan8u>(low8(threshold) > absdiff(m, src[x]) ? src[x] : m);
        });
}

template <bool Aligned>
inline __m128i ld(const Zan8u* p) {
    if constexpr (Aligned) return simd::load16a(p);
    return load16(p);
}

// 16 target samples at x.  Aligned: every plane row and the step are
// multiples of 16 (a choice of loads only; the result is the same).
template <bool Aligned>
inline void motion16(const Zan8u* const pl[4], Zan32s step, Zan8u* out, Zan32s x, Zan32s k, __m128i t,
                     __m128i apMask) {
    const __m128i b30 = _mm_set1_epi8(30), b6 = _mm_set1_epi8(6), c235 = _mm_set1_epi8(static_cast<char>(235));
    const Zan8u* K = pl[k];
    const Zan8u* Bp = pl[k - 1];
    __m128i up[4], dn[4];
    for (int i = 0; i < 4; ++i) {
        up[i] = ld<Aligned>(rowp(pl[i], step, -1) + x);
        dn[i] = ld<Aligned>(rowp(pl[i], step, 1) + x);
    }
    __m128i v = ld<Aligned>(Bp + x), kc = ld<Aligned>(K + x);
    __m128i U = up[k], D = dn[k];
    __m128i big = absd(kc, v);
    auto acc = [&](__m128i a, __m128i b) { big = _mm_max_epu8(big, absd(a, b)); };
    acc(dn[1], dn[0]); acc(up[1], up[0]); acc(dn[1], dn[2]); acc(up[1], up[2]);
    acc(dn[1], dn[3]); acc(up[1], up[3]); acc(dn[0], dn[2]); acc(up[0], up[2]);
    acc(dn[2], dn[3]); acc(up[2], up[3]);
    __m128i still = lt_u8(big, t);
    __m128i band = sel(still, b30, b6);
    __m128i lo = _mm_subs_epu8(v, band), hi = _mm_min_epu8(_mm_adds_epu8(v, band), c235);
    __m128i below = _mm_and_si128(lt_u8(U, lo), lt_u8(D, lo));
    __m128i above = _mm_and_si128(lt_u8(hi, U), lt_u8(hi, D));
    __m128i r = sel(_mm_or_si128(below, above), _mm_avg_epu8(U, D), v);
    store16(out + x, sel(_mm_and_si128(still, apMask), v, r));
}

template <bool Aligned>
void motion_simd(const Zan8u* const pl[4], Zan32s step, Zan8u* out, Zan32s width, Zan32s k, Zan32s threshold,
                 Zan32s ap) {
    if (width < 16) {
        motion_rule(pl, step, out, width, k, threshold, ap);
        return;
    }
    const __m128i t = _mm_set1_epi8(static_cast<char>(threshold));
    const __m128i apMask = ap == 0 ? _mm_set1_epi8(-1) : _mm_setzero_si128();
    Zan32s x = 0;
    for (; x + 16 <= width; x += 16) motion16<Aligned>(pl, step, out, x, k, t, apMask);
    if (x < width) motion16<false>(pl, step, out, width - 16, k, t, apMask);  // ends at the row's end
}

void triangle_simd(const Zan8u* src, Zan32s step, Zan8u* out, Zan32s width, Zan32s c) {
    const Zan8u *u = rowp(src, step, -1), *d = rowp(src, step, 1);
    const __m128i zero = _mm_setzero_si128(), vn = _mm_set1_epi16(static_cast<short>((256 - c) >> 1)),
                  vc = _mm_set1_epi16(static_cast<short>(c));
    full_groups(
        width,
        [&](Zan32s x) {
            __m128i a = load16(u + x), b = load16(d + x), m = load16(src + x);
            auto half = [&](__m128i a16, __m128i b16, __m128i m16) {
                __m128i s = _mm_mullo_epi16(_mm_add_epi16(a16, b16), vn);
                return _mm_srli_epi16(_mm_add_epi16(s, _mm_mullo_epi16(m16, vc)), 8);
            };
            __m128i lo = half(_mm_unpacklo_epi8(a, zero), _mm_unpacklo_epi8(b, zero), _mm_unpacklo_epi8(m, zero));
            __m128i hi = half(_mm_unpackhi_epi8(a, zero), _mm_unpackhi_epi8(b, zero), _mm_unpackhi_epi8(m, zero));
            store16(out + x, _mm_packus_epi16(lo, hi));
        },
        [&](Zan32s x) { out[x] = static_cast<Zan8u>(((u[x] + d[x]) * ((256 - c) >> 1) + src[x] * c) >> 8); });
}

// ============================================================= catalogue

constexpr KernelPair<SpatialRowFn> kSpatial[] = {
    {"spatial_c1", spatial_rule<1>, spatial_simd<1>, 0, 1, 1},
    {"spatial_c2", spatial_rule<2>, spatial_simd<2>, 0, 1, 2},
};
constexpr KernelPair<BlendRowFn> kBlend[] = {
    {"blend_c1", blend_rule<1>, blend_simd<1>, 0, 1, 1},
    {"blend_c2", blend_rule<2>, blend_simd<2>, 0, 1, 2},
};
constexpr KernelPair<MedianRowFn> kMedian[] = {{"median_threshold", median_rule, median_simd, 0, 1, 1}};
constexpr KernelPair<MotionRowFn> kMotion[] = {
    {"motion_adaptive", motion_rule, motion_simd<false>, 0, 1, 1},
    {"motion_adaptive_aligned", motion_rule, motion_simd<true>, 0, 1, 1},
};
constexpr KernelPair<TriangleRowFn> kTriangle[] = {{"triangle", triangle_rule, triangle_simd, 0, 1, 1}};

// ========================================================= weight table

// The processor's truncating conversion: a value out of the 32-bit range (or
// not a number) becomes INT32_MIN.
inline Zan32s trunc32(double v) { return _mm_cvttsd_si32(_mm_set_sd(v)); }

inline Zan32s clamp_w(std::int64_t v) { return v < 0 ? 0 : v > 256 ? 256 : static_cast<Zan32s>(v); }

void prepare_table(Zan32s* pT, double* pC, ZanDeinterlaceBlendState* st) {
    if (pT[0] > pT[1]) {
        Zan32s t = pT[0];
        pT[0] = pT[1];
        pT[1] = t;
    }
    const Zan32s t0 = pT[0], t1 = pT[1];
    double hiC = pC[0] > pC[1] ? pC[0] : pC[1], loC = pC[0] > pC[1] ? pC[1] : pC[0];
    pC[1] = hiC < 32767.0 ? hiC : 32767.0;
    pC[0] = loC > -32768.0 ? loC : -32768.0;
    const double c0 = pC[0], c1 = pC[1];
    Zan16u* w = st->pWeights;
    if (t0 == t1) {
        for (Zan32s m = 0; m < 256; ++m) {
            w[m] = static_cast<Zan16u>(m < t0 ? 0 : 256);
            w[256 + m] = static_cast<Zan16u>(256 - w[m]);
        }
        st->fullMotion = static_cast<Zan32s>(static_cast<Zan32u>(t0) - 1u);
        st->zeroMotion = t0;
        return;
    }
    double s = std::fabs((c1 - c0) / (static_cast<double>(t1) - static_cast<double>(t0)));
    double b = c1 - s * t1;
    Zan32s B = b > 0 ? trunc32(256.0 * b + 0.5) : trunc32(256.0 * b - 0.5);
    Zan32s S = trunc32(256.0 * s + 0.5);
    if (B >= 257) {
        S = 0;
        B = 256;
        st->slope = S;
        st->intercept = B;
        st->fullMotion = 255;
        st->zeroMotion = 0;
    } else if (S == 0) {
        st->fullMotion = 255;
        if (B < 0) {
            st->zeroMotion = 256;
            B = 0;
        } else {
            st->zeroMotion = 0;
        }
        st->slope = S;
        st->intercept = B;
    } else {
        std::int64_t e = 255 * static_cast<std::int64_t>(S) + B;
        if (e > 256) e = 256;
        if (e < 0) {
            st->slope = 0;
            st->intercept = 0;
            st->fullMotion = 255;
            st->zeroMotion = 256;
        } else {
            if (e - B > 32767) {
                B = static_cast<Zan32s>(e - 32767);
                S = trunc32((256.0 * c1 - B) / t1);
            }
            st->slope = S;
            st->intercept = B;
            if (S == 0) {
                st->fullMotion = 255;
                st->zeroMotion = 0;
            } else {
                std::int64_t num = 256 - static_cast<std::int64_t>(B);
                std::int64_t full = num / S - (num < 0 ? 1 : 0);
                std::int64_t zero = -static_cast<std::int64_t>(B) / S + (B < 0 ? 1 : 0);
                st->fullMotion = static_cast<Zan32s>(full > 255 ? 255 : full);
                st->zeroMotion = static_cast<Zan32s>(zero < 0 ? 0 : zero);
            }
        }
    }
    for (Zan32s m = 0; m < 256; ++m) {
        Zan32s v = clamp_w(static_cast<std::int64_t>(B) + static_cast<std::int64_t>(S) * m);
        w[m] = static_cast<Zan16u>(v);
        w[256 + m] = static_cast<Zan16u>(256 - v);
    }
}

}  // namespace

const Kernels kernels = {kSpatial, kBlend, kMedian, kMotion, kTriangle};

bool blend_state_vector_ok(const ZanDeinterlaceBlendState* st) {
    for (Zan32s m = 0; m < 256; ++m) {
        Zan32s v;
        if (m > static_cast<Zan16s>(st->fullMotion)) {
            v = 256;
        } else if (m < static_cast<Zan16s>(st->zeroMotion)) {
            v = 0;
        } else {
            auto prod = static_cast<Zan16s>(static_cast<Zan16u>(m * static_cast<Zan16u>(st->slope)) +
                                            static_cast<Zan16u>(st->intercept));
            v = clamp_w(prod);
        }
        if (st->pWeights[m] != v || st->pWeights[256 + m] != 256 - v) return false;
    }
    return true;
}

namespace {

// =============================================================== drivers

inline void copy_rows(const Zan8u* src, Zan32s srcStep, Zan8u* dst, Zan32s dstStep, Zan32s bytes, Zan32s rows) {
    if (rows > 0) zaniCopy_8u_C1R(src, srcStep, dst, dstStep, {bytes, rows});
}

// The blend over the picture; bytes per row, dx 1 (C1) or 2 (C2).
template <int DX>
void blend_picture(const Zan8u* p0, Zan32s s0, const Zan8u* p1, Zan32s s1, const Zan8u* p2, Zan32s s2, Zan8u* dst,
                   Zan32s dstStep, Zan32s w, Zan32s h, Zan32s topFirst, Zan32s topField, Zan32s copyField,
                   const ZanDeinterlaceBlendState* st) {
    const Zan32s bytes = w * DX;
    const Zan32s tf = DX == 1 ? (topField != 0) : (topField & 1);
    const Zan32s oIsP0 = topFirst == topField;
    Zan32s first;
    if (tf) {
        zansCopy_8u(p1, dst, bytes);
        if (copyField) copy_rows(rowp(p1, s1, 1), 2 * s1, rowp(dst, dstStep, 1), 2 * dstStep, bytes, h / 2);
        first = 2;
    } else {
        if (copyField) copy_rows(p1, 2 * s1, dst, 2 * dstStep, bytes, (h + 1) / 2);
        first = 1;
    }
    const Zan32s bound = h + ((h & 1) ^ tf) - 2;
    if (st->fullMotion < 0) {
        if constexpr (DX == 1) {
            Zan32s kept = tf ? h / 2 : (h + 1) / 2;
            zaniDeinterlaceEdgeDetect_8u_C1R(rowp(p1, s1, tf ? 3 : 0), 2 * s1, rowp(dst, dstStep, first),
                                             2 * dstStep, {w, kept - 1}, !tf, 0);
        } else {
            for (Zan32s y = first; y <= bound; y += 2)
                spatial_simd<2>(rowp(p1, s1, y - 1), rowp(p1, s1, y + 1), rowp(dst, dstStep, y), bytes, tf);
        }
    } else if (st->zeroMotion >= 256) {
        if (first <= bound) {
            const Zan8u* planes[3] = {rowp(p1, s1, first - 1), rowp(p1, s1, first), rowp(p1, s1, first + 1)};
            zaniMedian_8u_P3C1R(planes, 2 * s1, rowp(dst, dstStep, first), 2 * dstStep,
                                {bytes, (bound - first) / 2 + 1});
        }
    } else {
        BlendRowFn row = blend_state_vector_ok(st) ? blend_simd<DX> : blend_rule<DX>;
        for (Zan32s y = first; y <= bound; y += 2)
            row(rowp(p0, s0, y), s0, rowp(p1, s1, y), s1, rowp(p2, s2, y), s2, rowp(dst, dstStep, y), bytes, oIsP0,
                tf, st);
    }
    if ((h & 1) == tf) zansCopy_8u(rowp(p1, s1, h - 1), rowp(dst, dstStep, h - 1), bytes);
}

ZanStatus blend_init(ZaniSize size, Zan32s* pT, double* pC, ZanDeinterlaceBlendState** ppState, Zan8u* pMem) {
    if (!ppState || !pMem) return zanStsNullPtr;
    if (size.width < 3 || size.height < 3) return zanStsSizeBad;
    auto* st = reinterpret_cast<ZanDeinterlaceBlendState*>(pMem);
    st->pWeights = reinterpret_cast<Zan16u*>(pMem + 32);
    st->memId = 1;
    prepare_table(pT, pC, st);
    *ppState = st;
    return zanStsOk;
}

ZanStatus blend_init_alloc(ZaniSize size, Zan32s* pT, double* pC, ZanDeinterlaceBlendState** ppState) {
    if (!ppState) return zanStsNullPtr;
    if (size.width < 3 || size.height < 3) return zanStsSizeBad;
    auto* st = reinterpret_cast<ZanDeinterlaceBlendState*>(zansMalloc_8u(32));
    if (!st) return zanStsNoMem;
    std::memset(static_cast<void*>(st), 0, 32);
    st->memId = 2;  // so that Free takes the record back even when the table fails
    *ppState = st;
    st->pWeights = zansMalloc_16u(512);
    if (!st->pWeights) return zanStsNoMem;
    prepare_table(pT, pC, st);
    return zanStsOk;
}

ZanStatus blend_free(ZanDeinterlaceBlendState* st) {
    if (!st) return zanStsNullPtr;
    if (st->memId != 2) return zanStsContextMismatch;
    zansFree(st->pWeights);
    zansFree(st);
    return zanStsOk;
}

}  // namespace
}  // namespace zan::ZAN_PATH::deinterlace

// =============================================================== exports

namespace zan::ZAN_PATH {

using deinterlace::rowp;

ZanStatus zaniDeinterlaceBlendGetSize_8u_C1(Zan32s* pSize) {
    if (!pSize) return zanStsNullPtr;
    *pSize = 1056;
    return zanStsOk;
}
ZanStatus zaniDeinterlaceBlendGetSize_8u_C2(Zan32s* pSize) { return zaniDeinterlaceBlendGetSize_8u_C1(pSize); }

ZanStatus zaniDeinterlaceBlendInit_8u_C1(ZaniSize size, Zan32s* pThresholds, double* pConstants,
                                         ZanDeinterlaceBlendState** ppState, Zan8u* pMemState) {
    return deinterlace::blend_init(size, pThresholds, pConstants, ppState, pMemState);
}
ZanStatus zaniDeinterlaceBlendInit_8u_C2(ZaniSize size, Zan32s* pThresholds, double* pConstants,
                                         ZanDeinterlaceBlendState** ppState, Zan8u* pMemState) {
    return deinterlace::blend_init(size, pThresholds, pConstants, ppState, pMemState);
}
ZanStatus zaniDeinterlaceBlendInitAlloc_8u_C1(ZaniSize size, Zan32s* pThresholds, double* pConstants,
                                              ZanDeinterlaceBlendState** ppState) {
    return deinterlace::blend_init_alloc(size, pThresholds, pConstants, ppState);
}
ZanStatus zaniDeinterlaceBlendInitAlloc_8u_C2(ZaniSize size, Zan32s* pThresholds, double* pConstants,
                                              ZanDeinterlaceBlendState** ppState) {
    return deinterlace::blend_init_alloc(size, pThresholds, pConstants, ppState);
}
ZanStatus zaniDeinterlaceBlendFree_8u_C1(ZanDeinterlaceBlendState* pState) { return deinterlace::blend_free(pState); }
ZanStatus zaniDeinterlaceBlendFree_8u_C2(ZanDeinterlaceBlendState* pState) { return deinterlace::blend_free(pState); }

ZanStatus zaniDeinterlaceBlend_8u_C1(const Zan8u* pSrcPlane[3], Zan32s srcStep, Zan8u* pDst, Zan32s dstStep,
                                     ZaniSize size, Zan32s topFirst, Zan32s topField, Zan32s copyField,
                                     ZanDeinterlaceBlendState* pState) {
    if (!pSrcPlane || !pDst) return zanStsNullPtr;
    if (!pSrcPlane[0] || !pSrcPlane[1] || !pSrcPlane[2] || !pState->pWeights) return zanStsNullPtr;
    if (size.width < 3 || size.height < 3) return zanStsSizeBad;
    deinterlace::blend_picture<1>(pSrcPlane[0], srcStep, pSrcPlane[1], srcStep, pSrcPlane[2], srcStep, pDst, dstStep,
                                  size.width, size.height, topFirst, topField, copyField, pState);
    return zanStsOk;
}

ZanStatus zaniDeinterlaceBlend_8u_C2(const Zan8u* pSrc0, Zan32s src0Step, const Zan8u* pSrc1, Zan32s src1Step,
                                     const Zan8u* pSrc2, Zan32s src2Step, Zan8u* pDst, Zan32s dstStep,
                                     ZaniSize size, Zan32s topFirst, Zan32s topField, Zan32s copyField,
                                     ZanDeinterlaceBlendState* pState) {
    if (!pState->pWeights || !pDst || !pSrc0 || !pSrc1 || !pSrc2) return zanStsNullPtr;
    if (size.width < 3 || size.height < 3) return zanStsSizeBad;
    deinterlace::blend_picture<2>(pSrc0, src0Step, pSrc1, src1Step, pSrc2, src2Step, pDst, dstStep, size.width,
                                  size.height, topFirst, topField, copyField, pState);
    return zanStsOk;
}

ZanStatus zaniDeinterlaceEdgeDetect_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep,
                                           ZaniSize size, Zan32s fieldNum, Zan32s bCopyBorder) {
    if (!pSrc || !pDst) return zanStsNullPtr;
    const Zan32s w = size.width, h = size.height;
    if (w < 1 || h < 1) return zanStsSizeBad;
    const Zan32s f = fieldNum, b = bCopyBorder != 0;
    if (b) {
        if (f) zansCopy_8u(rowp(pSrc, srcStep, h - 1), rowp(pDst, dstStep, h - 1), w);
        else zansCopy_8u(pSrc, pDst, w);
    }
    const std::int64_t r0 = static_cast<std::int64_t>(1 - f) * b, r1 = h - static_cast<std::int64_t>(f) * b - 1;
    // Columns 0 and w-1 repeat source row r: u when f is 1, d when f is 0;
    // f other than 0 or 1 keeps that repeat of row r.
    for (std::int64_t r = r0; r <= r1; ++r) {
        const Zan8u *u = rowp(pSrc, srcStep, r - 1 + f), *d = rowp(pSrc, srcStep, r + f);
        Zan8u* out = rowp(pDst, dstStep, r);
        const Zan8u* same = rowp(pSrc, srcStep, r);
        if (f == 0 || f == 1) {
            deinterlace::spatial_simd<1>(u, d, out, w, f == 0);
        } else {
            deinterlace::spatial_simd<1>(u, d, out, w, 0);
            out[0] = same[0];
            out[w - 1] = same[w - 1];
        }
    }
    return zanStsOk;
}

ZanStatus zaniDeinterlaceMedianThreshold_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep,
                                                ZaniSize size, Zan32s threshold, Zan32s fieldNum,
                                                Zan32s bCopyBorder) {
    if (!pSrc || !pDst) return zanStsNullPtr;
    const Zan32s w = size.width, h = size.height;
    if (w < 1 || h < 2) return zanStsSizeBad;
    if (fieldNum == 1) deinterlace::copy_rows(pSrc, 2 * srcStep, pDst, 2 * dstStep, w, h / 2);
    else deinterlace::copy_rows(rowp(pSrc, srcStep, 1), 2 * srcStep, rowp(pDst, srcStep, 1), 2 * dstStep, w, h / 2);
    const Zan32s b = bCopyBorder != 0;
    if (b) {
        zansCopy_8u(pSrc, pDst, srcStep);
        zansCopy_8u(rowp(pSrc, srcStep, h - 1), rowp(pDst, dstStep, h - 1), srcStep);
    }
    const std::int64_t start = (1 - static_cast<std::int64_t>(fieldNum)) * 2 * b + fieldNum;
    for (std::int64_t r = start; r < h - b; r += 2)
        deinterlace::median_simd(rowp(pSrc, srcStep, r), srcStep, rowp(pDst, dstStep, r), w, threshold);
    return zanStsOk;
}

ZanStatus zaniDeinterlaceMotionAdaptive_8u_C1(const Zan8u* pSrcPlane[4], Zan32s srcStep, Zan8u* pDst,
                                              Zan32s dstStep, ZaniSize size, Zan32s threshold, Zan32s topFirst,
                                              Zan32s topField, Zan32s copyField, Zan32s artifactProtection) {
    if (!pSrcPlane || !pDst) return zanStsNullPtr;
    if (!pSrcPlane[0] || !pSrcPlane[1] || !pSrcPlane[2] || !pSrcPlane[3]) return zanStsNullPtr;
    const Zan32s w = size.width, h = size.height;
    if (w < 1 || h < 1) return zanStsSizeBad;
    const Zan32s k = topField == topFirst ? 1 : 2;
    const Zan8u* K = pSrcPlane[k];
    if (copyField)
        deinterlace::copy_rows(rowp(K, srcStep, topField), 2 * srcStep, rowp(pDst, dstStep, topField), 2 * dstStep, w,
                               h / 2);
    Zan32s first;
    if (topField == 1) {
        zansCopy_8u(K, pDst, w);
        if (h & 1) zansCopy_8u(rowp(K, srcStep, h - 1), rowp(pDst, dstStep, h - 1), w);
        first = 2;
    } else {
        if (!(h & 1)) zansCopy_8u(rowp(K, srcStep, h - 1), rowp(pDst, dstStep, h - 1), w);
        first = 1;
    }
    if (first >= h - 1) return zanStsOk;
    const bool aligned = ((reinterpret_cast<std::uintptr_t>(pSrcPlane[0]) | reinterpret_cast<std::uintptr_t>(pSrcPlane[1]) |
                           reinterpret_cast<std::uintptr_t>(pSrcPlane[2]) | reinterpret_cast<std::uintptr_t>(pSrcPlane[3]) |
                           static_cast<std::uintptr_t>(static_cast<Zan32u>(srcStep))) & 15) == 0;
    const deinterlace::MotionRowFn row = aligned ? deinterlace::motion_simd<true> : deinterlace::motion_simd<false>;
    const Zan32s rows = (h - first) / 2;
    for (Zan32s i = 0; i < rows; ++i) {
        const Zan32s r = first + 2 * i;
        const Zan8u* const planes[4] = {rowp(pSrcPlane[0], srcStep, r), rowp(pSrcPlane[1], srcStep, r),
                                        rowp(pSrcPlane[2], srcStep, r), rowp(pSrcPlane[3], srcStep, r)};
        row(planes, srcStep, rowp(pDst, dstStep, r), w, k, threshold, artifactProtection);
    }
    return zanStsOk;
}

ZanStatus zaniDeinterlaceFilterTriangle_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep,
                                               ZaniSize roiSize, Zan32u centerWeight, Zan32s layout) {
    if (!pSrc || !pDst) return zanStsNullPtr;
    const Zan32s w = roiSize.width, h = roiSize.height;
    if (h < 3 || w < 1) return zanStsSizeBad;
    const Zan32s c = centerWeight > 256 ? 256 : static_cast<Zan32s>(centerWeight);
    const bool band = layout == 4 || layout == 16;
    if (!band) zansCopy_8u(pSrc, pDst, w);
    for (Zan32s r = band ? -1 : 1; r <= h - 2; ++r)
        deinterlace::triangle_simd(rowp(pSrc, srcStep, r), srcStep, rowp(pDst, dstStep, r), w, c);
    if (layout != 1 && layout != 4) zansCopy_8u(rowp(pSrc, srcStep, h - 1), rowp(pDst, dstStep, h - 1), w);
    return zanStsOk;
}

ZanStatus zaniDeinterlaceFilterTriangle_8u_C2R(const Zan8u*, Zan32s, Zan8u*, Zan32s, ZaniSize, Zan32u,
                                               Zan32s layout) {
    return layout;
}

}  // namespace zan::ZAN_PATH
