// VC-1 quarter-sample interpolation (bicubic and bilinear, plain and
// interleaved chroma), the fetch of a block from a whole reference picture
// with edge replication and intensity compensation, and range mapping.
//
// In this file: the scalar rules, the vector kernels, the kernel tables, the
// catalogue, the fetch, and the exported wrappers.
#include "vc1/vc1interp.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <utility>

#include "blocks/mc.h"
#include "common/path.h"
#include "common/scalar.h"
#include "common/simd.h"

namespace zan::ZAN_PATH::vc1interp {

using namespace zan::vc1interp;

namespace {

using scalar::at;
using scalar::put;
using simd::load16;
using simd::load4;
using simd::load8;
using simd::row;
using simd::store16;
using simd::store8;

inline Zan8u sat8(Zan32s v) { return static_cast<Zan8u>(v < 0 ? 0 : v > 255 ? 255 : v); }

// ================================================================ rules

// Bicubic block of W x H at (DX, DY).  The two-direction case keeps the
// vertical pass in 16-bit values, as the kernels do.
template <int W, int H, int DX, int DY>
void bicubic_rule(const Zan8u* s, Zan32s ss, Zan8u* d, Zan32s ds, Zan32s rc) {
    const Zan32s* tx = kBicubicTaps[DX];
    const Zan32s* ty = kBicubicTaps[DY];
    auto p = [&](Zan32s x, Zan32s y) { return static_cast<Zan32s>(at(s, ss, x, y)); };
    for (Zan32s y = 0; y < H; ++y)
        for (Zan32s x = 0; x < W; ++x) {
            Zan32s v;
            if constexpr (DX == 0 && DY == 0) {
                v = p(x, y);
            } else if constexpr (DX == 0) {
                constexpr Zan32s sh = kBicubicShift1D[DY];
                Zan32s sum = 0;
                for (Zan32s k = 0; k < 4; ++k) sum += ty[k] * p(x, y - 1 + k);
                v = (sum + (1 << (sh - 1)) - 1 + rc) >> sh;
            } else if constexpr (DY == 0) {
                constexpr Zan32s sh = kBicubicShift1D[DX];
                Zan32s sum = 0;
                for (Zan32s k = 0; k < 4; ++k) sum += tx[k] * p(x - 1 + k, y);
                v = (sum + (1 << (sh - 1)) - rc) >> sh;
            } else {
                constexpr Zan32s sh = kBicubicShiftV[DX][DY];
                Zan32s sum = 0;
                for (Zan32s k = 0; k < 4; ++k) {
                    Zan32s c = 0;
                    for (Zan32s j = 0; j < 4; ++j) c += ty[j] * p(x - 1 + k, y - 1 + j);
                    const Zan16s mid = static_cast<Zan16s>((c + (1 << (sh - 1)) - 1 + rc) >> sh);
                    sum += tx[k] * mid;
                }
                v = (sum + 64 - rc) >> 7;
            }
            put(d, ds, x, y, sat8(v));
        }
}

// Bilinear block of WB bytes by H rows at (DX, DY); D is the distance to
// the horizontal neighbour (1 for a plane, 2 for interleaved pairs).
template <int WB, int H, int DX, int DY, int D>
void bilinear_rule(const Zan8u* s, Zan32s ss, Zan8u* d, Zan32s ds, Zan32s rc) {
    auto line = [&](Zan32s x, Zan32s y) {
        Zan32s v = (4 - DX) * at(s, ss, x, y);
        if constexpr (DX != 0) v += DX * at(s, ss, x + D, y);
        return v;
    };
    for (Zan32s y = 0; y < H; ++y)
        for (Zan32s x = 0; x < WB; ++x) {
            Zan32s v = (4 - DY) * line(x, y);
            if constexpr (DY != 0) v += DY * line(x, y + 1);
            put(d, ds, x, y, sat8((v + 8 - rc) >> 4));
        }
}

inline Zan8u range_map(Zan32s p, Zan32s k) { return sat8(((p * (k + 9) - 128 * k - 1148) >> 3) + 128); }

void rangemap_rule(const Zan8u* s, Zan32s ss, Zan8u* d, Zan32s ds, ZaniSize roi, Zan32s k) {
    for (Zan32s y = 0; y < roi.height; ++y)
        for (Zan32s x = 0; x < roi.width; ++x) put(d, ds, x, y, range_map(at(s, ss, x, y), k));
}

// ======================================================== vector kernels

// Two signed byte taps for pmaddubsw over (first row or column, second).
inline __m128i tap_pair(Zan32s first, Zan32s second) {
    return _mm_set1_epi16(static_cast<Zan16s>((second << 8) | (first & 0xFF)));
}

// Columns -1..9 of the row whose column -1 is at p, in bytes 0..10 (the rest
// zero).  Reads exactly those 11 bytes.
inline __m128i load_cols11(const Zan8u* p) { return _mm_unpacklo_epi64(load8(p), _mm_srli_si128(load4(p + 7), 1)); }
// Columns 15..17 of the row whose column -1 is at p, in bytes 0..2.
inline __m128i load_cols15(const Zan8u* p) { return _mm_srli_si128(load4(p + 15), 1); }

// Stores two rows of 8 bytes held in one register.
inline void store_rows8(Zan8u* d, Zan32s ds, Zan32s y, __m128i v) {
    store8(row(d, ds, y), v);
    store8(row(d, ds, y + 1), _mm_srli_si128(v, 8));
}

// ---- bicubic, vertical only (dx = 0): four rows through pmaddubsw pairs.
template <int W, int H, int DY>
void bicubic_v_simd(const Zan8u* s, Zan32s ss, Zan8u* d, Zan32s ds, Zan32s rc) {
    constexpr Zan32s sh = kBicubicShift1D[DY];
    const __m128i t01 = tap_pair(kBicubicTaps[DY][0], kBicubicTaps[DY][1]);
    const __m128i t23 = tap_pair(kBicubicTaps[DY][2], kBicubicTaps[DY][3]);
    const __m128i r = _mm_set1_epi16(static_cast<Zan16s>((1 << (sh - 1)) - 1 + rc));
    auto ld = [&](Zan32s y) { return W == 16 ? load16(row(s, ss, y)) : load8(row(s, ss, y)); };
    // p01: rows y-1, y interleaved; p23: rows y+1, y+2.
    auto half = [&](__m128i p01, __m128i p23) {
        const __m128i v = _mm_add_epi16(_mm_maddubs_epi16(p01, t01), _mm_maddubs_epi16(p23, t23));
        return _mm_srai_epi16(_mm_add_epi16(v, r), sh);
    };
    // Output row y from rows y-1, y, y+1, y+2: columns 0..7, and 8..15.
    auto filt_lo = [&](__m128i a, __m128i b, __m128i c, __m128i e) {
        return half(_mm_unpacklo_epi8(a, b), _mm_unpacklo_epi8(c, e));
    };
    auto filt_hi = [&](__m128i a, __m128i b, __m128i c, __m128i e) {
        return half(_mm_unpackhi_epi8(a, b), _mm_unpackhi_epi8(c, e));
    };
    __m128i a = ld(-1), b = ld(0), c = ld(1);
#pragma GCC unroll 8
    for (Zan32s y = 0; y < H; y += 2) {
        const __m128i e = ld(y + 2), f = ld(y + 3);
        if constexpr (W == 16) {
            store16(row(d, ds, y), _mm_packus_epi16(filt_lo(a, b, c, e), filt_hi(a, b, c, e)));
            store16(row(d, ds, y + 1), _mm_packus_epi16(filt_lo(b, c, e, f), filt_hi(b, c, e, f)));
        } else {
            store_rows8(d, ds, y, _mm_packus_epi16(filt_lo(a, b, c, e), filt_lo(b, c, e, f)));
        }
        a = c;
        b = e;
        c = f;
    }
}

// ---- bicubic, horizontal only (dy = 0): pairs of columns by pshufb.
template <int DX>
inline __m128i bicubic_h8(__m128i cols, __m128i t01, __m128i t23, __m128i r) {
    constexpr Zan32s sh = kBicubicShift1D[DX];
    const __m128i pa = _mm_setr_epi8(0, 1, 1, 2, 2, 3, 3, 4, 4, 5, 5, 6, 6, 7, 7, 8);
    const __m128i pb = _mm_setr_epi8(2, 3, 3, 4, 4, 5, 5, 6, 6, 7, 7, 8, 8, 9, 9, 10);
    const __m128i v = _mm_add_epi16(_mm_maddubs_epi16(_mm_shuffle_epi8(cols, pa), t01),
                                    _mm_maddubs_epi16(_mm_shuffle_epi8(cols, pb), t23));
    return _mm_srai_epi16(_mm_add_epi16(v, r), sh);
}

template <int W, int H, int DX>
void bicubic_h_simd(const Zan8u* s, Zan32s ss, Zan8u* d, Zan32s ds, Zan32s rc) {
    constexpr Zan32s sh = kBicubicShift1D[DX];
    const __m128i t01 = tap_pair(kBicubicTaps[DX][0], kBicubicTaps[DX][1]);
    const __m128i t23 = tap_pair(kBicubicTaps[DX][2], kBicubicTaps[DX][3]);
    const __m128i r = _mm_set1_epi16(static_cast<Zan16s>((1 << (sh - 1)) - rc));
#pragma GCC unroll 8
    for (Zan32s y = 0; y < H; y += 2) {
        const Zan8u* p0 = row(s, ss, y) - 1;
        const Zan8u* p1 = row(s, ss, y + 1) - 1;
        if constexpr (W == 16) {
            const __m128i a0 = load16(p0), a1 = load16(p1);
            const __m128i b0 = _mm_alignr_epi8(load_cols15(p0), a0, 8), b1 = _mm_alignr_epi8(load_cols15(p1), a1, 8);
            store16(row(d, ds, y), _mm_packus_epi16(bicubic_h8<DX>(a0, t01, t23, r), bicubic_h8<DX>(b0, t01, t23, r)));
            store16(row(d, ds, y + 1),
                    _mm_packus_epi16(bicubic_h8<DX>(a1, t01, t23, r), bicubic_h8<DX>(b1, t01, t23, r)));
        } else {
            store_rows8(d, ds, y,
                        _mm_packus_epi16(bicubic_h8<DX>(load_cols11(p0), t01, t23, r),
                                         bicubic_h8<DX>(load_cols11(p1), t01, t23, r)));
        }
    }
}

// ---- bicubic, both directions.
//
// The vertical pass gives 16-bit values over columns -1..W+1.  The
// horizontal pass then sums four taps in 16-bit arithmetic, which wraps: the
// true sum T lies within -9180..41820 for every position (worst case
// dx = dy = 2), so T + 64 - rc + 9216 lies in 0..65535 and its unsigned
// shift by 7, less 72 (9216 = 72 * 128), is exactly (T + 64 - rc) >> 7.
constexpr Zan16s kHvBias = 9216;

template <int DX>
inline __m128i bicubic_hv8(__m128i va, __m128i vb, __m128i r) {
    // va: values of columns c-1..c+6, vb: of columns c+7..c+14.
    const __m128i v1 = _mm_alignr_epi8(vb, va, 2), v2 = _mm_alignr_epi8(vb, va, 4), v3 = _mm_alignr_epi8(vb, va, 6);
    __m128i t;
    if constexpr (DX == 2) {
        const __m128i m = _mm_add_epi16(v1, v2);
        t = _mm_sub_epi16(_mm_add_epi16(_mm_slli_epi16(m, 3), m), _mm_add_epi16(va, v3));
    } else {
        constexpr Zan32s k0 = kBicubicTaps[DX][0], k1 = kBicubicTaps[DX][1], k2 = kBicubicTaps[DX][2],
                         k3 = kBicubicTaps[DX][3];
        t = _mm_add_epi16(_mm_add_epi16(_mm_mullo_epi16(va, _mm_set1_epi16(k0)), _mm_mullo_epi16(v1, _mm_set1_epi16(k1))),
                          _mm_add_epi16(_mm_mullo_epi16(v2, _mm_set1_epi16(k2)), _mm_mullo_epi16(v3, _mm_set1_epi16(k3))));
    }
    return _mm_sub_epi16(_mm_srli_epi16(_mm_add_epi16(t, r), 7), _mm_set1_epi16(kHvBias >> 7));
}

template <int W, int H, int DX, int DY>
void bicubic_hv_simd(const Zan8u* s, Zan32s ss, Zan8u* d, Zan32s ds, Zan32s rc) {
    constexpr Zan32s sh = kBicubicShiftV[DX][DY];
    constexpr int N = W == 16 ? 3 : 2;  // 8-column groups of intermediates
    const __m128i t01 = tap_pair(kBicubicTaps[DY][0], kBicubicTaps[DY][1]);
    const __m128i t23 = tap_pair(kBicubicTaps[DY][2], kBicubicTaps[DY][3]);
    const __m128i rv = _mm_set1_epi16(static_cast<Zan16s>((1 << (sh - 1)) - 1 + rc));
    const __m128i rh = _mm_set1_epi16(static_cast<Zan16s>(64 - rc + kHvBias));
    struct Row {
        __m128i a, b;  // W 8: a = columns -1..9; W 16: a = -1..14, b = 15..17
    };
    auto ld = [&](Zan32s y) {
        const Zan8u* p = row(s, ss, y) - 1;
        if constexpr (W == 16) return Row{load16(p), load_cols15(p)};
        else return Row{load_cols11(p), _mm_setzero_si128()};
    };
    // Rows k-1 and k interleaved, by 8-column group; output row y takes the
    // pairs of rows (y-1, y) with the first two taps and (y+1, y+2) with the
    // last two, so each pair serves two output rows.
    struct Pairs {
        __m128i g[N];
    };
    auto pairs = [&](const Row& p, const Row& q) {
        Pairs u;
        u.g[0] = _mm_unpacklo_epi8(p.a, q.a);
        u.g[1] = _mm_unpackhi_epi8(p.a, q.a);
        if constexpr (N == 3) u.g[2] = _mm_unpacklo_epi8(p.b, q.b);
        return u;
    };
    auto out_row = [&](const Pairs& u01, const Pairs& u23) {
        __m128i v[N];
        for (int g = 0; g < N; ++g) {
            const __m128i t = _mm_add_epi16(_mm_maddubs_epi16(u01.g[g], t01), _mm_maddubs_epi16(u23.g[g], t23));
            v[g] = _mm_srai_epi16(_mm_add_epi16(t, rv), sh);
        }
        const __m128i lo = bicubic_hv8<DX>(v[0], v[1], rh);
        if constexpr (W == 16) return _mm_packus_epi16(lo, bicubic_hv8<DX>(v[1], v[2], rh));
        else return lo;
    };
    const Row r0 = ld(0);
    Row last = ld(1);
    Pairs u0 = pairs(ld(-1), r0), u1 = pairs(r0, last);
#pragma GCC unroll 8
    for (Zan32s y = 0; y < H; y += 2) {
        const Row r2 = ld(y + 2), r3 = ld(y + 3);
        const Pairs u2 = pairs(last, r2), u3 = pairs(r2, r3);
        if constexpr (W == 16) {
            store16(row(d, ds, y), out_row(u0, u2));
            store16(row(d, ds, y + 1), out_row(u1, u3));
        } else {
            store_rows8(d, ds, y, _mm_packus_epi16(out_row(u0, u2), out_row(u1, u3)));
        }
        u0 = u2;
        u1 = u3;
        last = r3;
    }
}

template <int W, int H, int DX, int DY>
void bicubic_simd(const Zan8u* s, Zan32s ss, Zan8u* d, Zan32s ds, Zan32s rc) {
    if constexpr (DX == 0) bicubic_v_simd<W, H, DY>(s, ss, d, ds, rc);
    else if constexpr (DY == 0) bicubic_h_simd<W, H, DX>(s, ss, d, ds, rc);
    else bicubic_hv_simd<W, H, DX, DY>(s, ss, d, ds, rc);
}

// Position (0, 0): the plain copies of the motion-compensation family.
template <int W, int H>
void bicubic_copy(const Zan8u* s, Zan32s ss, Zan8u* d, Zan32s ds, Zan32s) {
    if constexpr (W == 8) zan::ZAN_PATH::mc::kCopy8x8HP[0](s, ss, d, ds);
    else if constexpr (H == 8) zan::ZAN_PATH::mc::kCopy16x8HP[0](s, ss, d, ds);
    else zan::ZAN_PATH::mc::kCopy16x16HP[0](s, ss, d, ds);
}

// ---- bilinear.  Each row gives h = (4 - DX) * P(x) + DX * P(x + D) by
// pmaddubsw on interleaved byte pairs (the second byte zero when DX is 0, so
// nothing right of the block is read); the output is
// ((4 - DY) * h(y) + DY * h(y + 1) + 8 - rc) >> 4, at most 4087.
template <int DY>
inline __m128i bilinear_mix(__m128i h0, __m128i h1, __m128i k) {
    __m128i v;
    if constexpr (DY == 0) v = _mm_slli_epi16(h0, 2);
    else if constexpr (DY == 2) v = _mm_slli_epi16(_mm_add_epi16(h0, h1), 1);
    else if constexpr (DY == 1) v = _mm_add_epi16(_mm_sub_epi16(_mm_slli_epi16(h0, 2), h0), h1);
    else v = _mm_add_epi16(_mm_sub_epi16(_mm_slli_epi16(h1, 2), h1), h0);
    return _mm_srli_epi16(_mm_add_epi16(v, k), 4);
}

template <int WB, int H, int DX, int DY, int D>
void bilinear_simd(const Zan8u* s, Zan32s ss, Zan8u* d, Zan32s ds, Zan32s rc) {
    const __m128i w = tap_pair(4 - DX, DX);
    const __m128i k = _mm_set1_epi16(static_cast<Zan16s>(8 - rc));
    const __m128i z = _mm_setzero_si128();
    // Interleaved pairs (P(x), P(x + D)) of row y.
    auto pairs_lo = [&](Zan32s y, auto load) {
        const Zan8u* p = row(s, ss, y);
        return _mm_unpacklo_epi8(load(p), DX != 0 ? load(p + D) : z);
    };
    auto l4 = [](const Zan8u* p) { return load4(p); };
    auto l8 = [](const Zan8u* p) { return load8(p); };
    auto l16 = [](const Zan8u* p) { return load16(p); };
    if constexpr (WB == 16) {
        auto hrow = [&](Zan32s y, __m128i& lo, __m128i& hi) {
            const Zan8u* p = row(s, ss, y);
            const __m128i a = l16(p), b = DX != 0 ? l16(p + D) : z;
            lo = _mm_maddubs_epi16(_mm_unpacklo_epi8(a, b), w);
            hi = _mm_maddubs_epi16(_mm_unpackhi_epi8(a, b), w);
        };
        __m128i lo0, hi0, lo1 = z, hi1 = z;
        hrow(0, lo0, hi0);
#pragma GCC unroll 4
        for (Zan32s y = 0; y < H; ++y) {
            if constexpr (DY != 0) hrow(y + 1, lo1, hi1);
            store16(row(d, ds, y), _mm_packus_epi16(bilinear_mix<DY>(lo0, lo1, k), bilinear_mix<DY>(hi0, hi1, k)));
            if constexpr (DY != 0) {
                lo0 = lo1;
                hi0 = hi1;
            } else if (y + 1 < H) {
                hrow(y + 1, lo0, hi0);
            }
        }
    } else if constexpr (WB == 8) {
        auto hrow = [&](Zan32s y) { return _mm_maddubs_epi16(pairs_lo(y, l8), w); };
        __m128i h0 = hrow(0);
#pragma GCC unroll 4
        for (Zan32s y = 0; y < H; y += 2) {
            const __m128i h1 = hrow(y + 1);
            const __m128i h2 = DY != 0 || y + 2 < H ? hrow(y + 2) : z;
            store_rows8(d, ds, y, _mm_packus_epi16(bilinear_mix<DY>(h0, h1, k), bilinear_mix<DY>(h1, h2, k)));
            h0 = h2;
        }
    } else {
        // Two rows of four in one register: rows y and y + 1.
        auto hrows = [&](Zan32s y, __m128i prev) {
            return _mm_unpacklo_epi64(prev, pairs_lo(y, l4));
        };
        __m128i p0 = pairs_lo(0, l4);
#pragma GCC unroll 4
        for (Zan32s y = 0; y < H; y += 2) {
            const __m128i p1 = pairs_lo(y + 1, l4);
            const __m128i h01 = _mm_maddubs_epi16(_mm_unpacklo_epi64(p0, p1), w);
            __m128i h12 = z, p2 = z;
            if constexpr (DY != 0) {
                p2 = pairs_lo(y + 2, l4);
                h12 = _mm_maddubs_epi16(hrows(y + 2, p1), w);
            } else if (y + 2 < H) {
                p2 = pairs_lo(y + 2, l4);
            }
            const __m128i v = _mm_packus_epi16(bilinear_mix<DY>(h01, h12, k), z);
            const Zan32s r0 = _mm_cvtsi128_si32(v), r1 = _mm_cvtsi128_si32(_mm_srli_si128(v, 4));
            std::memcpy(row(d, ds, y), &r0, 4);
            std::memcpy(row(d, ds, y + 1), &r1, 4);
            p0 = p2;
        }
    }
}

// ---- range mapping: eight samples as 16-bit values.
inline __m128i range_map8(__m128i p, __m128i mul, __m128i sub) {
    const __m128i v = _mm_srai_epi16(_mm_sub_epi16(_mm_mullo_epi16(p, mul), sub), 3);
    return _mm_add_epi16(v, _mm_set1_epi16(128));
}

void rangemap_simd(const Zan8u* s, Zan32s ss, Zan8u* d, Zan32s ds, ZaniSize roi, Zan32s k) {
    const __m128i mul = _mm_set1_epi16(static_cast<Zan16s>(k + 9));
    const __m128i sub = _mm_set1_epi16(static_cast<Zan16s>(128 * k + 1148));
    const __m128i z = _mm_setzero_si128();
    for (Zan32s y = 0; y < roi.height; ++y) {
        const Zan8u* p = row(s, ss, y);
        Zan8u* q = row(d, ds, y);
        Zan32s x = 0;
        for (; x + 16 <= roi.width; x += 16) {
            const __m128i v = load16(p + x);
            store16(q + x, _mm_packus_epi16(range_map8(_mm_unpacklo_epi8(v, z), mul, sub),
                                            range_map8(_mm_unpackhi_epi8(v, z), mul, sub)));
        }
        if (x < roi.width) {
            const __m128i v = range_map8(_mm_unpacklo_epi8(load8(p + x), z), mul, sub);
            store8(q + x, _mm_packus_epi16(v, v));
        }
    }
}

// ================================================================= tables
//
// Slot 4 * dx + dy of each table.

constexpr int pos_dx(std::size_t i) { return static_cast<int>(i >> 2); }
constexpr int pos_dy(std::size_t i) { return static_cast<int>(i & 3); }
constexpr bool pos_odd(std::size_t i) { return ((pos_dx(i) | pos_dy(i)) & 1) != 0; }

template <int W, int H, std::size_t I>
constexpr InterpFn bicubic_entry() {
    if constexpr (I == 0) return bicubic_copy<W, H>;
    else return bicubic_simd<W, H, pos_dx(I), pos_dy(I)>;
}
template <int W, int H, std::size_t... I>
constexpr std::array<InterpFn, 16> bicubic_table(std::index_sequence<I...>) {
    return {bicubic_entry<W, H, I>()...};
}

// Bilinear tables: the entries of the even positions are null (the wrapper
// takes the half-sample copies there) unless All is set.
template <int WB, int H, int D, bool All, std::size_t I>
constexpr InterpFn bilinear_entry() {
    if constexpr (All || pos_odd(I)) return bilinear_simd<WB, H, pos_dx(I), pos_dy(I), D>;
    else return nullptr;
}
template <int WB, int H, int D, bool All, std::size_t... I>
constexpr std::array<InterpFn, 16> bilinear_table(std::index_sequence<I...>) {
    return {bilinear_entry<WB, H, D, All, I>()...};
}

using Seq16 = std::make_index_sequence<16>;

constexpr auto kBicubic8x8 = bicubic_table<8, 8>(Seq16{});
constexpr auto kBicubic16x8 = bicubic_table<16, 8>(Seq16{});
constexpr auto kBicubic16x16 = bicubic_table<16, 16>(Seq16{});
constexpr auto kBilinear16x16 = bilinear_table<16, 16, 1, false>(Seq16{});
constexpr auto kBilinear8x8 = bilinear_table<8, 8, 1, false>(Seq16{});
constexpr auto kBilinear8x4 = bilinear_table<8, 4, 1, false>(Seq16{});
constexpr auto kBilinear4x4 = bilinear_table<4, 4, 1, false>(Seq16{});
// Interleaved pairs: widths in bytes (8 pairs = 16 bytes).
constexpr auto kBilinearC2_8x8 = bilinear_table<16, 8, 2, true>(Seq16{});
constexpr auto kBilinearC2_8x4 = bilinear_table<16, 4, 2, true>(Seq16{});
constexpr auto kBilinearC2_4x4 = bilinear_table<8, 4, 2, true>(Seq16{});

// ============================================================== catalogue

// Entry names: "<kind><w>x<h>_<dx>_<dy>", sizes in samples (pairs for C2).
template <std::size_t N>
struct Name {
    char s[N]{};
};
template <std::size_t N>
constexpr Name<32> make_name(const char (&kind)[N], int w, int h, int dx, int dy) {
    Name<32> out;
    std::size_t n = 0;
    for (std::size_t i = 0; i + 1 < N; ++i) out.s[n++] = kind[i];
    auto num = [&](int v) {
        if (v >= 10) out.s[n++] = static_cast<char>('0' + v / 10);
        out.s[n++] = static_cast<char>('0' + v % 10);
    };
    num(w);
    out.s[n++] = 'x';
    num(h);
    out.s[n++] = '_';
    num(dx);
    out.s[n++] = '_';
    num(dy);
    return out;
}

template <int W, int H, std::size_t I>
constexpr Name<32> kBicubicName = make_name("bicubic", W, H, pos_dx(I), pos_dy(I));
template <int W, int H, std::size_t I>
constexpr Name<32> kBilinearName = make_name("bilinear", W, H, pos_dx(I), pos_dy(I));
template <int W, int H, std::size_t I>
constexpr Name<32> kBilinearC2Name = make_name("bilinear_c2_", W, H, pos_dx(I), pos_dy(I));

template <int W, int H, std::size_t... I>
constexpr std::array<KernelPair<InterpFn>, 15> bicubic_pairs(std::index_sequence<I...>) {
    // Positions 1..15 (I + 1).
    return {KernelPair<InterpFn>{kBicubicName<W, H, I + 1>.s, bicubic_rule<W, H, pos_dx(I + 1), pos_dy(I + 1)>,
                                 bicubic_simd<W, H, pos_dx(I + 1), pos_dy(I + 1)>, W, H,
                                 static_cast<Zan32s>(I + 1)}...};
}

constexpr std::size_t kOddPositions[12] = {1, 3, 4, 5, 6, 7, 9, 11, 12, 13, 14, 15};

template <int W, int H, std::size_t... I>
constexpr std::array<KernelPair<InterpFn>, 12> bilinear_pairs(std::index_sequence<I...>) {
    return {KernelPair<InterpFn>{kBilinearName<W, H, kOddPositions[I]>.s,
                                 bilinear_rule<W, H, pos_dx(kOddPositions[I]), pos_dy(kOddPositions[I]), 1>,
                                 bilinear_simd<W, H, pos_dx(kOddPositions[I]), pos_dy(kOddPositions[I]), 1>, W, H,
                                 static_cast<Zan32s>(kOddPositions[I])}...};
}

template <int WP, int H, std::size_t... I>
constexpr std::array<KernelPair<InterpFn>, 16> bilinear_c2_pairs(std::index_sequence<I...>) {
    return {KernelPair<InterpFn>{kBilinearC2Name<WP, H, I>.s, bilinear_rule<2 * WP, H, pos_dx(I), pos_dy(I), 2>,
                                 bilinear_simd<2 * WP, H, pos_dx(I), pos_dy(I), 2>, 2 * WP, H,
                                 static_cast<Zan32s>(I)}...};
}

template <class T, std::size_t... N>
constexpr auto join(const std::array<T, N>&... parts) {
    std::array<T, (N + ...)> out{};
    std::size_t n = 0;
    ((std::copy(parts.begin(), parts.end(), out.begin() + static_cast<std::ptrdiff_t>(n)), n += N), ...);
    return out;
}

constexpr auto kBicubicPairs = join(bicubic_pairs<8, 8>(std::make_index_sequence<15>{}),
                                    bicubic_pairs<16, 8>(std::make_index_sequence<15>{}),
                                    bicubic_pairs<16, 16>(std::make_index_sequence<15>{}));
constexpr auto kBilinearPairs = join(bilinear_pairs<16, 16>(std::make_index_sequence<12>{}),
                                     bilinear_pairs<8, 8>(std::make_index_sequence<12>{}),
                                     bilinear_pairs<8, 4>(std::make_index_sequence<12>{}),
                                     bilinear_pairs<4, 4>(std::make_index_sequence<12>{}));
constexpr auto kBilinearC2Pairs = join(bilinear_c2_pairs<8, 8>(Seq16{}), bilinear_c2_pairs<8, 4>(Seq16{}),
                                       bilinear_c2_pairs<4, 4>(Seq16{}));
constexpr KernelPair<RangeMapFn> kRangeMapPairs[] = {{"rangemap", rangemap_rule, rangemap_simd, 0, 0, 0}};

}  // namespace

const Kernels kernels = {kBicubicPairs, kBilinearPairs, kBilinearC2Pairs, kRangeMapPairs};

// ================================================================= fetch

namespace {

// The block size that each primitive's kernels make, from the caller's size.
struct Dims {
    Zan32s w, h;
};
inline Dims bicubic_dims(ZaniSize roi) {
    const Zan32s s = (roi.width >> 4) + (roi.height >> 4);
    return s == 0 ? Dims{8, 8} : s == 1 ? Dims{16, 8} : Dims{16, 16};
}
template <bool C2>
inline Dims bilinear_dims(ZaniSize roi) {
    if (!C2 && roi.width == 16) return {16, 16};
    if (roi.width == 8) return roi.height == 8 ? Dims{8, 8} : Dims{8, 4};
    return {4, 4};
}

void run_bicubic(const Zan8u* s, Zan32s ss, Zan8u* d, Zan32s ds, Zan32s dx, Zan32s dy, ZaniSize roi, Zan32s rc) {
    const Dims k = bicubic_dims(roi);
    const auto& table = k.w == 8 ? kBicubic8x8 : k.h == 8 ? kBicubic16x8 : kBicubic16x16;
    table[static_cast<std::size_t>(((dx & 3) << 2) | (dy & 3))](s, ss, d, ds, rc & 1);
}

void run_bilinear_c1(const Zan8u* s, Zan32s ss, Zan8u* d, Zan32s ds, Zan32s dx, Zan32s dy, ZaniSize roi,
                     Zan32s rc) {
    dx &= 3;
    dy &= 3;
    rc &= 1;
    const Dims k = bilinear_dims<false>(roi);
    if (((dx | dy) & 1) == 0) {
        // Half-sample copies: slot (acc * 2 + rc), acc bit 0 half in x, bit 1 half in y.
        const auto& hp = k.w == 16  ? zan::ZAN_PATH::mc::kCopy16x16HP
                         : k.h == 8 ? zan::ZAN_PATH::mc::kCopy8x8HP
                         : k.w == 8 ? zan::ZAN_PATH::mc::kCopy8x4HP
                                    : zan::ZAN_PATH::mc::kCopy4x4HP;
        hp[static_cast<std::size_t>((((dx >> 1) | (dy & 2)) << 1) | rc)](s, ss, d, ds);
        return;
    }
    const auto& table = k.w == 16 ? kBilinear16x16 : k.h == 8 ? kBilinear8x8 : k.w == 8 ? kBilinear8x4 : kBilinear4x4;
    table[static_cast<std::size_t>((dx << 2) | dy)](s, ss, d, ds, rc);
}

void run_bilinear_c2(const Zan8u* s, Zan32s ss, Zan8u* d, Zan32s ds, Zan32s dx, Zan32s dy, ZaniSize roi,
                     Zan32s rc) {
    const Dims k = bilinear_dims<true>(roi);
    const auto& table = k.w == 4 ? kBilinearC2_4x4 : k.h == 8 ? kBilinearC2_8x8 : kBilinearC2_8x4;
    table[static_cast<std::size_t>(((dx & 3) << 2) | (dy & 3))](s, ss, d, ds, rc & 1);
}

using RunFn = void (*)(const Zan8u*, Zan32s, Zan8u*, Zan32s, Zan32s, Zan32s, ZaniSize, Zan32s);

// The area that a primitive reads around its block, in samples (pairs).
struct Reach {
    Zan32s before, after;
};

constexpr Zan32s kMaxRows = 19;
// Bytes after a work array that the row fills may write.
constexpr Zan32s kWorkSlack = 32;

// Copies n (at most 32) bytes, reading and writing no others.
inline void copy_small(Zan8u* d, const Zan8u* s, std::size_t n) {
    if (n >= 16) {
        const __m128i a = load16(s), b = load16(s + n - 16);
        store16(d, a);
        store16(d + n - 16, b);
    } else if (n >= 8) {
        const __m128i a = load8(s), b = load8(s + n - 8);
        store8(d, a);
        store8(d + n - 8, b);
    } else if (n >= 4) {
        Zan32u a, b;
        std::memcpy(&a, s, 4);
        std::memcpy(&b, s + n - 4, 4);
        std::memcpy(d, &a, 4);
        std::memcpy(d + n - 4, &b, 4);
    } else {
        for (std::size_t i = 0; i < n; ++i) d[i] = s[i];
    }
}  // 16 + 3, the most a fetch makes

inline Zan64s clamp64(Zan64s v, Zan64s lo, Zan64s hi) { return v < lo ? lo : v > hi ? hi : v; }

// Fetches the (kw + before + after) x (kh + before + after) area around the
// block into work (rows workStep bytes apart) and runs the primitive on it;
// or, when no table is given and the area lies inside the picture, runs the
// primitive on the picture itself.  Unit: bytes per sample (2 for pairs).
template <int Unit>
void fetch_and_run(const ZanVC1ICBlockRecord& r, Dims k, Reach reach, Zan8u* work, Zan32s workStep, RunFn run) {
    const bool field = r.fieldPrediction != 0;
    const bool parityPad = r.fieldPadding != 0 && !field;
    const Zan64s W = r.sizeFrame.width < 1 ? 1 : r.sizeFrame.width;
    Zan64s H = field ? r.sizeFrame.height >> 1 : r.sizeFrame.height;
    if (H < 1) H = 1;
    const ptrdiff_t step = static_cast<ptrdiff_t>(r.srcStep) * (field ? 2 : 1);
    const Zan64s x0 = static_cast<Zan64s>(r.pointRefBlockPos.x) - reach.before;
    const Zan64s y0 = static_cast<Zan64s>(r.pointRefBlockPos.y) - reach.before;
    const Zan32s cols = k.w + reach.before + reach.after, rows = k.h + reach.before + reach.after;
    const ZaniSize blockSize = r.sizeBlock;
    const Zan8u* fieldLut = r.bottomField ? r.pLUTBottom : r.pLUTTop;

    if (!r.pLUTTop && !r.pLUTBottom && x0 >= 0 && y0 >= 0 && x0 + cols <= W && y0 + rows <= H) {
        const Zan8u* p = r.pSrc + step * static_cast<ptrdiff_t>(r.pointRefBlockPos.y) +
                         Unit * static_cast<ptrdiff_t>(r.pointRefBlockPos.x);
        run(p, static_cast<Zan32s>(step), r.pDst, r.dstStep, r.dx, r.dy, blockSize, r.roundControl);
        return;
    }

    // Columns [inL, inR) of the area lie inside the picture.
    const Zan64s inL = clamp64(-x0, 0, cols), inR = clamp64(W - x0, inL, cols);
    const std::size_t rowBytes = static_cast<std::size_t>(Unit * cols);  // at most 32
    Zan64s fetched[kMaxRows];  // picture row behind each work row
    for (Zan32s i = 0; i < rows; ++i) {
        const Zan64s pr = y0 + i;
        Zan64s sr;
        if (pr < 0) sr = parityPad ? (pr & 1) : 0;
        else if (pr >= H) sr = parityPad && ((pr - (H - 1)) & 1) ? H - 2 : H - 1;
        else sr = pr;
        sr = clamp64(sr, 0, H - 1);
        fetched[i] = sr;
        Zan8u* out = work + static_cast<ptrdiff_t>(workStep) * i;
        // A row beyond the picture repeats the row fetched one or two rows
        // before (the table depends on the picture row only).
        const Zan32s same = i >= 1 && fetched[i - 1] == sr ? i - 1 : i >= 2 && fetched[i - 2] == sr ? i - 2 : -1;
        if (same >= 0) {
            copy_small(out, work + static_cast<ptrdiff_t>(workStep) * same, rowBytes);
            continue;
        }
        const Zan8u* lut = field ? fieldLut : (sr & 1 ? r.pLUTBottom : r.pLUTTop);
        const Zan8u* src = r.pSrc + step * static_cast<ptrdiff_t>(sr);
        // The edge samples (pairs) of the row, after the table.
        Zan32s left = 0, right = 0;
        for (int b = 0; b < Unit; ++b) {
            const Zan8u l = src[b], e = src[Unit * (W - 1) + b];
            left |= (lut ? lut[l] : l) << (8 * b);
            right |= (lut ? lut[e] : e) << (8 * b);
        }
        const __m128i splatL = Unit == 1 ? _mm_set1_epi8(static_cast<char>(left)) : _mm_set1_epi16(static_cast<Zan16s>(left));
        const __m128i splatR =
            Unit == 1 ? _mm_set1_epi8(static_cast<char>(right)) : _mm_set1_epi16(static_cast<Zan16s>(right));
        // Left fill over the whole row, the inside columns through the table,
        // then the right fill from column inR on (its stores run into the
        // next row, which is written later, or the slack after the array).
        store16(out, splatL);
        store16(out + 16, splatL);
        if (inR > inL) {
            const Zan8u* from = src + Unit * (x0 + inL);
            Zan8u* to = out + Unit * inL;
            const std::size_t n = static_cast<std::size_t>(Unit * (inR - inL));
            if (lut)
                for (std::size_t j = 0; j < n; ++j) to[j] = lut[from[j]];
            else
                copy_small(to, from, n);
        }
        store16(out + Unit * inR, splatR);
        store16(out + Unit * inR + 16, splatR);
    }
    run(work + static_cast<ptrdiff_t>(workStep) * reach.before + Unit * reach.before, workStep, r.pDst, r.dstStep,
        r.dx, r.dy, blockSize, r.roundControl);
}

// Work arrays: bicubic 19 x 19 (16 + 3); bilinear 17 rows of 18 bytes, wide
// enough for 17 samples or 9 pairs.
constexpr Zan32s kBicubicWork = 19;
constexpr Zan32s kBilinearWorkStep = 18, kBilinearWorkRows = 17;

}  // namespace

}  // namespace zan::ZAN_PATH::vc1interp

// ============================================================== wrappers

namespace zan::ZAN_PATH {

using namespace zan::ZAN_PATH::vc1interp;

ZanStatus zaniInterpolateQPBicubic_VC1_8u_C1R(const ZanVC1InterpolateRecord* p) {
    if (!p || !p->pSrc || !p->pDst) return zanStsNullPtr;
    run_bicubic(p->pSrc, p->srcStep, p->pDst, p->dstStep, p->dx, p->dy, p->roiSize, p->roundControl);
    return zanStsOk;
}

ZanStatus zaniInterpolateQPBilinear_VC1_8u_C1R(const ZanVC1InterpolateRecord* p) {
    if (!p || !p->pSrc || !p->pDst) return zanStsNullPtr;
    run_bilinear_c1(p->pSrc, p->srcStep, p->pDst, p->dstStep, p->dx, p->dy, p->roiSize, p->roundControl);
    return zanStsOk;
}

ZanStatus zaniInterpolateQPBilinear_VC1_8u_C2R(const ZanVC1InterpolateRecord* p) {
    if (!p || !p->pSrc || !p->pDst) return zanStsNullPtr;
    run_bilinear_c2(p->pSrc, p->srcStep, p->pDst, p->dstStep, p->dx, p->dy, p->roiSize, p->roundControl);
    return zanStsOk;
}

ZanStatus zaniInterpolateICBicubicBlock_VC1_8u_C1R(const ZanVC1ICBlockRecord* p) {
    if (!p || !p->pSrc || !p->pDst) return zanStsNullPtr;
    alignas(16) Zan8u work[kBicubicWork * kBicubicWork + kWorkSlack];
    fetch_and_run<1>(*p, bicubic_dims(p->sizeBlock), {1, 2}, work, kBicubicWork, run_bicubic);
    return zanStsOk;
}

ZanStatus zaniInterpolateICBilinearBlock_VC1_8u_C1R(const ZanVC1ICBlockRecord* p) {
    if (!p || !p->pSrc || !p->pDst) return zanStsNullPtr;
    alignas(16) Zan8u work[kBilinearWorkStep * kBilinearWorkRows + kWorkSlack];
    fetch_and_run<1>(*p, bilinear_dims<false>(p->sizeBlock), {0, 1}, work, kBilinearWorkStep, run_bilinear_c1);
    return zanStsOk;
}

ZanStatus zaniInterpolateICBilinearBlock_VC1_8u_C2R(const ZanVC1ICBlockRecord* p) {
    if (!p || !p->pSrc || !p->pDst) return zanStsNullPtr;
    alignas(16) Zan8u work[kBilinearWorkStep * kBilinearWorkRows + kWorkSlack];
    fetch_and_run<2>(*p, bilinear_dims<true>(p->sizeBlock), {0, 1}, work, kBilinearWorkStep, run_bilinear_c2);
    return zanStsOk;
}

ZanStatus zaniRangeMapping_VC1_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep,
                                      ZaniSize roiSize, Zan32s rangeMapValue) {
    if (!pSrc || !pDst) return zanStsNullPtr;
    if (static_cast<Zan32u>(rangeMapValue) > 7) return zanStsOutOfRange;
    if (roiSize.width < 1 || roiSize.height < 1) return zanStsOk;
    if (roiSize.width % 8 == 0 && roiSize.width <= srcStep && roiSize.width <= dstStep)
        rangemap_simd(pSrc, srcStep, pDst, dstStep, roiSize, rangeMapValue);
    else
        rangemap_rule(pSrc, srcStep, pDst, dstStep, roiSize, rangeMapValue);
    return zanStsOk;
}

}  // namespace zan::ZAN_PATH
