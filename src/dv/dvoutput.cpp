// DV macroblock output conversion: blocks of signed 16-bit samples centred
// on zero to packed Y, Cb, Y, Cr bytes, at full size and reduced by 2, 4
// and 8, for 4:1:1 (with its right-edge macroblock), 4:2:0, 4:2:2 (the DV50
// macroblock: luma in blocks 0 and 2) and the DV100 half macroblock.
//
// Sample conversion everywhere: v clamped to -128..127, plus 128.
// Block b of a macroblock is the 64 samples at pSrc + 64 b, raster order;
// blocks 4 and 5 are Cr and Cb.  Pre-reduced blocks hold a 4x4 block in
// their first 16 samples, 4 per row.
#include "common/scalar.h"
#include "common/simd.h"
#include "dv/dvoutput.h"
#include "frame/bodies.h"

namespace zan::ZAN_PATH::dvoutput {
namespace {

using namespace zan::dvoutput;

// ============================================================ scalar rules

inline Zan8u cv(Zan32s v) { return Zan8u((v < -128 ? -128 : v > 127 ? 127 : v) + 128); }
inline Zan32s sat16(Zan32s v) { return v < -32768 ? -32768 : v > 32767 ? 32767 : v; }

// Sample (x, y) of block b, for a block of `stride` samples a row.
inline Zan32s at(const Zan16s* s, int b, int x, int y, int stride = 8) { return s[64 * b + y * stride + x]; }

// Writes pixel pair k of a row: Y0, Cb, Y1, Cr.
inline void put_pair(Zan8u* row, int k, Zan32s y0, Zan32s cb, Zan32s y1, Zan32s cr) {
    row[4 * k] = cv(y0);
    row[4 * k + 1] = cv(cb);
    row[4 * k + 2] = cv(y1);
    row[4 * k + 3] = cv(cr);
}

// Chroma doubled horizontally: position 2i is c[i], 2i + 1 is
// (sat16(c[i] + c[i + 1])) >> 1, the last repeating c[n - 1].
inline Zan32s up(const Zan32s* c, int n, int x) {
    const int i = x >> 1;
    if ((x & 1) == 0) return c[i];
    return sat16(c[i] + c[i + 1 < n ? i + 1 : n - 1]) >> 1;
}

// Mean of a w x h box of block b from (x0, y0) with saturating 16-bit sums,
// rows added first, then columns, shifted with the sign kept.
inline Zan32s box_sat(const Zan16s* s, int b, int x0, int y0, int w, int h, int shift) {
    Zan32s total = 0;
    for (int x = 0; x < w; ++x) {
        Zan32s col = 0;
        for (int y = 0; y < h; ++y) col = sat16(col + at(s, b, x0 + x, y0 + y));
        total = sat16(total + col);
    }
    return total >> shift;
}

// Mean of a w x h box in 32 bits, truncating toward zero.
inline Zan32s box_trunc(const Zan16s* s, int b, int x0, int y0, int w, int h, int shift) {
    Zan32s total = 0;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) total += at(s, b, x0 + x, y0 + y);
    if (total < 0) total += (1 << shift) - 1;
    return total >> shift;
}

// ---- 4:1:1, 32 x 8 pixels: Y0 Y1 Y2 Y3 side by side.
void r411_full(const Zan16s* s, Zan8u* d, Zan32s step) {
    for (int r = 0; r < 8; ++r) {
        Zan8u* row = simd::row(d, step, r);
        Zan32s cr[8], cb[8];
        for (int i = 0; i < 8; ++i) cr[i] = at(s, 4, i, r), cb[i] = at(s, 5, i, r);
        for (int k = 0; k < 16; ++k)
            put_pair(row, k, at(s, k / 4, (2 * k) % 8, r), up(cb, 8, k), at(s, k / 4, (2 * k + 1) % 8, r), up(cr, 8, k));
    }
}

// ZoomOut2 and ZoomOut4 of 4:1:1: luma F x F means, chroma means over F rows
// and F / 2 columns (the output keeps the 4:2:2 pair count).
template <int F>
void r411_zoom(const Zan16s* s, Zan8u* d, Zan32s step) {
    constexpr int kRows = 8 / F, kPairs = 16 / F, kYPerBlock = 8 / F;
    constexpr int kShiftY = F == 2 ? 2 : 4, kShiftC = F == 2 ? 1 : 3;
    for (int r = 0; r < kRows; ++r) {
        Zan8u* row = simd::row(d, step, r);
        for (int k = 0; k < kPairs; ++k) {
            const int x0 = 2 * k, x1 = 2 * k + 1;
            const Zan32s y0 = box_sat(s, x0 / kYPerBlock, (x0 % kYPerBlock) * F, r * F, F, F, kShiftY);
            const Zan32s y1 = box_sat(s, x1 / kYPerBlock, (x1 % kYPerBlock) * F, r * F, F, F, kShiftY);
            const Zan32s cb = box_sat(s, 5, k * (F / 2), r * F, F / 2, F, kShiftC);
            const Zan32s cr = box_sat(s, 4, k * (F / 2), r * F, F / 2, F, kShiftC);
            put_pair(row, k, y0, cb, y1, cr);
        }
    }
}

// ZoomOut8 of 4:1:1: 4 pixels from the first sample of each block.
void r411_zoom8(const Zan16s* s, Zan8u* d, Zan32s) {
    put_pair(d, 0, at(s, 0, 0, 0), at(s, 5, 0, 0), at(s, 1, 0, 0), at(s, 4, 0, 0));
    put_pair(d, 1, at(s, 2, 0, 0), at(s, 5, 0, 0), at(s, 3, 0, 0), at(s, 4, 0, 0));
}

// ---- 4:1:1 right-edge macroblock, 16 x 16: Y0 Y1 over Y2 Y3; chroma
// columns 0-3 serve the top half, columns 4-7 the bottom half.
void redge_full(const Zan16s* s, Zan8u* d, Zan32s step) {
    for (int r = 0; r < 16; ++r) {
        Zan8u* row = simd::row(d, step, r);
        const int half = r >> 3, yr = r & 7, b = 2 * half;
        Zan32s cr[4], cb[4];
        for (int i = 0; i < 4; ++i) cr[i] = at(s, 4, 4 * half + i, yr), cb[i] = at(s, 5, 4 * half + i, yr);
        for (int k = 0; k < 8; ++k)
            put_pair(row, k, at(s, b + k / 4, (2 * k) % 8, yr), up(cb, 4, k), at(s, b + k / 4, (2 * k + 1) % 8, yr),
                     up(cr, 4, k));
    }
}

template <int F>
void redge_zoom(const Zan16s* s, Zan8u* d, Zan32s step) {
    constexpr int kRowsHalf = 8 / F, kPairs = 8 / F, kYPerBlock = 8 / F;
    constexpr int kShiftY = F == 2 ? 2 : 4, kShiftC = F == 2 ? 1 : 3;
    for (int r = 0; r < 2 * kRowsHalf; ++r) {
        Zan8u* row = simd::row(d, step, r);
        const int half = r / kRowsHalf, hr = r % kRowsHalf, b = 2 * half;
        for (int k = 0; k < kPairs; ++k) {
            const int x0 = 2 * k, x1 = 2 * k + 1;
            const Zan32s y0 = box_sat(s, b + x0 / kYPerBlock, (x0 % kYPerBlock) * F, hr * F, F, F, kShiftY);
            const Zan32s y1 = box_sat(s, b + x1 / kYPerBlock, (x1 % kYPerBlock) * F, hr * F, F, F, kShiftY);
            const Zan32s cb = box_sat(s, 5, 4 * half + k * (F / 2), hr * F, F / 2, F, kShiftC);
            const Zan32s cr = box_sat(s, 4, 4 * half + k * (F / 2), hr * F, F / 2, F, kShiftC);
            put_pair(row, k, y0, cb, y1, cr);
        }
    }
}

void redge_zoom8(const Zan16s* s, Zan8u* d, Zan32s step) {
    put_pair(d, 0, at(s, 0, 0, 0), at(s, 5, 0, 0), at(s, 1, 0, 0), at(s, 4, 0, 0));
    put_pair(simd::row(d, step, 1), 0, at(s, 2, 0, 0), at(s, 5, 0, 0), at(s, 3, 0, 0), at(s, 4, 0, 0));
}

// ---- 4:1:1 pre-reduced, 16 x 4: four 4x4 luma blocks side by side, 4x4
// chroma doubled horizontally.
void r411_pre16x4(const Zan16s* s, Zan8u* d, Zan32s step) {
    for (int r = 0; r < 4; ++r) {
        Zan8u* row = simd::row(d, step, r);
        Zan32s cr[4], cb[4];
        for (int i = 0; i < 4; ++i) cr[i] = at(s, 4, i, r, 4), cb[i] = at(s, 5, i, r, 4);
        for (int k = 0; k < 8; ++k)
            put_pair(row, k, at(s, k / 2, (2 * k) % 4, r, 4), up(cb, 4, k), at(s, k / 2, (2 * k + 1) % 4, r, 4),
                     up(cr, 4, k));
    }
}

// ---- 4:1:1 pre-reduced right-edge macroblock, 8 x 8: Y0 Y1 over Y2 Y3
// (4x4 each); chroma columns 0-1 serve the top half, 2-3 the bottom.
void redge_pre8x8(const Zan16s* s, Zan8u* d, Zan32s step) {
    for (int r = 0; r < 8; ++r) {
        Zan8u* row = simd::row(d, step, r);
        const int half = r >> 2, yr = r & 3, b = 2 * half;
        Zan32s cr[2], cb[2];
        for (int i = 0; i < 2; ++i) cr[i] = at(s, 4, 2 * half + i, yr, 4), cb[i] = at(s, 5, 2 * half + i, yr, 4);
        for (int k = 0; k < 4; ++k)
            put_pair(row, k, at(s, b + k / 2, (2 * k) % 4, yr, 4), up(cb, 2, k), at(s, b + k / 2, (2 * k + 1) % 4, yr, 4),
                     up(cr, 2, k));
    }
}

// ---- 4:2:0, 16 x 16: Y0 Y1 over Y2 Y3; chroma row 2g serves output rows
// 4g and 4g + 2, row 2g + 1 rows 4g + 1 and 4g + 3.
inline int chroma_row420(int y) { return 2 * (y >> 2) + (y & 1); }

void r420_full(const Zan16s* s, Zan8u* d, Zan32s step) {
    for (int y = 0; y < 16; ++y) {
        Zan8u* row = simd::row(d, step, y);
        const int b = 2 * (y >> 3), yr = y & 7, c = chroma_row420(y);
        for (int k = 0; k < 8; ++k)
            put_pair(row, k, at(s, b + k / 4, (2 * k) % 8, yr), at(s, 5, k, c), at(s, b + k / 4, (2 * k + 1) % 8, yr),
                     at(s, 4, k, c));
    }
}

// ZoomOut2 and ZoomOut4 of 4:2:0: luma F x F means; chroma row y (F 2) or
// rows 2y, 2y + 1 (F 4), means over F columns.
template <int F>
void r420_zoom(const Zan16s* s, Zan8u* d, Zan32s step) {
    constexpr int kOut = 16 / F, kYPerBlock = 8 / F, kCRows = F / 2;
    constexpr int kShiftY = F == 2 ? 2 : 4, kShiftC = F == 2 ? 1 : 3;
    for (int y = 0; y < kOut; ++y) {
        Zan8u* row = simd::row(d, step, y);
        const int b = 2 * (y / kYPerBlock), yr = y % kYPerBlock;
        for (int k = 0; k < kOut / 2; ++k) {
            const int x0 = 2 * k, x1 = 2 * k + 1;
            const Zan32s y0 = box_sat(s, b + x0 / kYPerBlock, (x0 % kYPerBlock) * F, yr * F, F, F, kShiftY);
            const Zan32s y1 = box_sat(s, b + x1 / kYPerBlock, (x1 % kYPerBlock) * F, yr * F, F, F, kShiftY);
            const Zan32s cb = box_sat(s, 5, k * F, y * kCRows, F, kCRows, kShiftC);
            const Zan32s cr = box_sat(s, 4, k * F, y * kCRows, F, kCRows, kShiftC);
            put_pair(row, k, y0, cb, y1, cr);
        }
    }
}

void r420_zoom8(const Zan16s* s, Zan8u* d, Zan32s step) { redge_zoom8(s, d, step); }

// ---- 4:2:0 pre-reduced, 8 x 8: Y0 Y1 over Y2 Y3 (4x4 each); 4x4 chroma
// rows by field as at full size.
void r420_pre8x8(const Zan16s* s, Zan8u* d, Zan32s step) {
    for (int y = 0; y < 8; ++y) {
        Zan8u* row = simd::row(d, step, y);
        const int b = 2 * (y >> 2), yr = y & 3, c = chroma_row420(y);
        for (int k = 0; k < 4; ++k)
            put_pair(row, k, at(s, b + k / 2, (2 * k) % 4, yr, 4), at(s, 5, k, c, 4), at(s, b + k / 2, (2 * k + 1) % 4, yr, 4),
                     at(s, 4, k, c, 4));
    }
}

// ---- 4:2:2 (DV50 macroblock), 16 x 8: luma block 0 left, block 2 right;
// Cr block 4, Cb block 5, one chroma pair per two luma samples.
inline int luma422(int x) { return x < 8 ? 0 : 2; }

void r422_full(const Zan16s* s, Zan8u* d, Zan32s step) {
    for (int r = 0; r < 8; ++r) {
        Zan8u* row = simd::row(d, step, r);
        for (int k = 0; k < 8; ++k)
            put_pair(row, k, at(s, luma422(2 * k), (2 * k) % 8, r), at(s, 5, k, r), at(s, luma422(2 * k + 1), (2 * k + 1) % 8, r),
                     at(s, 4, k, r));
    }
}

// ZoomOut2 and ZoomOut4 of 4:2:2: F x F means of luma and chroma in 32 bits,
// truncating toward zero.
template <int F>
void r422_zoom(const Zan16s* s, Zan8u* d, Zan32s step) {
    constexpr int kRows = 8 / F, kPairs = 8 / F, kPer = 8 / F, kShift = F == 2 ? 2 : 4;
    for (int r = 0; r < kRows; ++r) {
        Zan8u* row = simd::row(d, step, r);
        for (int k = 0; k < kPairs; ++k) {
            const int x0 = 2 * k, x1 = 2 * k + 1;
            const Zan32s y0 = box_trunc(s, x0 < kPer ? 0 : 2, (x0 % kPer) * F, r * F, F, F, kShift);
            const Zan32s y1 = box_trunc(s, x1 < kPer ? 0 : 2, (x1 % kPer) * F, r * F, F, F, kShift);
            const Zan32s cb = box_trunc(s, 5, k * F, r * F, F, F, kShift);
            const Zan32s cr = box_trunc(s, 4, k * F, r * F, F, F, kShift);
            put_pair(row, k, y0, cb, y1, cr);
        }
    }
}

// ZoomOut8 of 4:2:2: Y block 0, Cb block 5, Y block 2, Cr block 4, first samples.
void r422_zoom8(const Zan16s* s, Zan8u* d, Zan32s) {
    put_pair(d, 0, at(s, 0, 0, 0), at(s, 5, 0, 0), at(s, 2, 0, 0), at(s, 4, 0, 0));
}

// ---- 4:2:2 pre-reduced, 8 x 4: luma blocks 0 and 2 (4x4), chroma 4x4.
void r422_pre8x4(const Zan16s* s, Zan8u* d, Zan32s step) {
    for (int r = 0; r < 4; ++r) {
        Zan8u* row = simd::row(d, step, r);
        for (int k = 0; k < 4; ++k)
            put_pair(row, k, at(s, k < 2 ? 0 : 2, (2 * k) % 4, r, 4), at(s, 5, k, r, 4), at(s, k < 2 ? 0 : 2, (2 * k + 1) % 4, r, 4),
                     at(s, 4, k, r, 4));
    }
}

// ---- DV100 half macroblock, 16 x 8: blocks Y left, Y right, Cr, Cb.
void rdv100_half(const Zan16s* s, Zan8u* d, Zan32s step) {
    for (int r = 0; r < 8; ++r) {
        Zan8u* row = simd::row(d, step, r);
        for (int k = 0; k < 8; ++k)
            put_pair(row, k, at(s, k / 4, (2 * k) % 8, r), at(s, 3, k, r), at(s, k / 4, (2 * k + 1) % 8, r), at(s, 2, k, r));
    }
}

// ============================================================ vector kernels

// 16 luma (two vectors of 8), 8 Cb and 8 Cr samples to 32 output bytes.
inline void store_pairs16(Zan8u* dst, __m128i ya, __m128i yb, __m128i cb, __m128i cr) {
    const __m128i bias = _mm_set1_epi8(static_cast<char>(0x80));
    const __m128i y = _mm_xor_si128(_mm_packs_epi16(ya, yb), bias);
    const __m128i c = _mm_xor_si128(_mm_packs_epi16(_mm_unpacklo_epi16(cb, cr), _mm_unpackhi_epi16(cb, cr)), bias);
    // c now holds Cb0 Cr0 Cb1 Cr1 ... as bytes.
    simd::store16(dst, _mm_unpacklo_epi8(y, c));
    simd::store16(dst + 16, _mm_unpackhi_epi8(y, c));
}

inline __m128i row8(const Zan16s* s, int b, int r) { return simd::load16(s + 64 * b + 8 * r); }

// 8 chroma samples doubled to 16: (lo, hi) = c0 o0 c1 o1 ... c7 o7, with
// o_i = (sat(c_i + c_{i+1})) >> 1 and c_8 = c_7.
inline void up8(__m128i c, __m128i& lo, __m128i& hi) {
    const __m128i next = _mm_or_si128(_mm_srli_si128(c, 2), _mm_slli_si128(_mm_srli_si128(c, 14), 14));
    const __m128i odd = _mm_srai_epi16(_mm_adds_epi16(c, next), 1);
    lo = _mm_unpacklo_epi16(c, odd);
    hi = _mm_unpackhi_epi16(c, odd);
}

// The same for 4 chroma samples (lanes 0-3): c0 o0 .. c3 o3 with c_4 = c_3.
inline __m128i up4(__m128i c) {
    const __m128i next = _mm_shufflelo_epi16(c, _MM_SHUFFLE(3, 3, 2, 1));
    const __m128i odd = _mm_srai_epi16(_mm_adds_epi16(c, next), 1);
    return _mm_unpacklo_epi16(c, odd);
}

void s411_full(const Zan16s* s, Zan8u* d, Zan32s step) {
    for (int r = 0; r < 8; ++r) {
        Zan8u* row = simd::row(d, step, r);
        __m128i cbl, cbh, crl, crh;
        up8(row8(s, 5, r), cbl, cbh);
        up8(row8(s, 4, r), crl, crh);
        store_pairs16(row, row8(s, 0, r), row8(s, 1, r), cbl, crl);
        store_pairs16(row + 32, row8(s, 2, r), row8(s, 3, r), cbh, crh);
    }
}

void sedge_full(const Zan16s* s, Zan8u* d, Zan32s step) {
    for (int r = 0; r < 16; ++r) {
        Zan8u* row = simd::row(d, step, r);
        const int half = r >> 3, yr = r & 7;
        __m128i cb = row8(s, 5, yr), cr = row8(s, 4, yr);
        if (half) cb = _mm_srli_si128(cb, 8), cr = _mm_srli_si128(cr, 8);
        store_pairs16(row, row8(s, 2 * half, yr), row8(s, 2 * half + 1, yr), up4(cb), up4(cr));
    }
}

void s420_full(const Zan16s* s, Zan8u* d, Zan32s step) {
    for (int y = 0; y < 16; ++y) {
        const int b = 2 * (y >> 3), yr = y & 7, c = chroma_row420(y);
        store_pairs16(simd::row(d, step, y), row8(s, b, yr), row8(s, b + 1, yr), row8(s, 5, c), row8(s, 4, c));
    }
}

void s422_full(const Zan16s* s, Zan8u* d, Zan32s step) {
    for (int r = 0; r < 8; ++r)
        store_pairs16(simd::row(d, step, r), row8(s, 0, r), row8(s, 2, r), row8(s, 5, r), row8(s, 4, r));
}

void sdv100_half(const Zan16s* s, Zan8u* d, Zan32s step) {
    for (int r = 0; r < 8; ++r)
        store_pairs16(simd::row(d, step, r), row8(s, 0, r), row8(s, 1, r), row8(s, 3, r), row8(s, 2, r));
}

// 8 luma, 4 Cb and 4 Cr samples (lanes 0-3) to 16 output bytes.
inline void store_pairs8(Zan8u* dst, __m128i y8, __m128i cb, __m128i cr) {
    const __m128i bias = _mm_set1_epi8(static_cast<char>(0x80));
    const __m128i y = _mm_packs_epi16(y8, y8);
    const __m128i c = _mm_packs_epi16(_mm_unpacklo_epi16(cb, cr), _mm_unpacklo_epi16(cb, cr));
    simd::store16(dst, _mm_xor_si128(_mm_unpacklo_epi8(y, c), bias));
}

// Saturated sums of adjacent lanes: lanes 0-3 = sat(v0 + v1), ..., sat(v6 + v7).
inline __m128i pair_sums_sat(__m128i v) {
    const __m128i s = _mm_madd_epi16(v, _mm_set1_epi16(1));
    return _mm_packs_epi32(s, s);
}

// 2x2 means of rows r and r + 1 of block b, saturating 16-bit sums: lanes 0-3.
inline __m128i box2_sat(const Zan16s* s, int b, int r) {
    return _mm_srai_epi16(pair_sums_sat(_mm_adds_epi16(row8(s, b, r), row8(s, b, r + 1))), 2);
}

void s411_zoom2(const Zan16s* s, Zan8u* d, Zan32s step) {
    for (int r = 0; r < 4; ++r) {
        const __m128i ya = _mm_unpacklo_epi64(box2_sat(s, 0, 2 * r), box2_sat(s, 1, 2 * r));
        const __m128i yb = _mm_unpacklo_epi64(box2_sat(s, 2, 2 * r), box2_sat(s, 3, 2 * r));
        const __m128i cb = _mm_srai_epi16(_mm_adds_epi16(row8(s, 5, 2 * r), row8(s, 5, 2 * r + 1)), 1);
        const __m128i cr = _mm_srai_epi16(_mm_adds_epi16(row8(s, 4, 2 * r), row8(s, 4, 2 * r + 1)), 1);
        store_pairs16(simd::row(d, step, r), ya, yb, cb, cr);
    }
}

void s420_zoom2(const Zan16s* s, Zan8u* d, Zan32s step) {
    for (int y = 0; y < 8; ++y) {
        const int b = 2 * (y >> 2), yr = 2 * (y & 3);
        const __m128i y8 = _mm_unpacklo_epi64(box2_sat(s, b, yr), box2_sat(s, b + 1, yr));
        const __m128i cb = _mm_srai_epi16(pair_sums_sat(row8(s, 5, y)), 1);
        const __m128i cr = _mm_srai_epi16(pair_sums_sat(row8(s, 4, y)), 1);
        store_pairs8(simd::row(d, step, y), y8, cb, cr);
    }
}

// 2x2 means in 32 bits, truncating toward zero: lanes 0-3 (16-bit).
inline __m128i box2_trunc(const Zan16s* s, int b, int r) {
    const __m128i ones = _mm_set1_epi16(1);
    __m128i t = _mm_add_epi32(_mm_madd_epi16(row8(s, b, r), ones), _mm_madd_epi16(row8(s, b, r + 1), ones));
    t = _mm_srai_epi32(_mm_add_epi32(t, _mm_and_si128(_mm_srai_epi32(t, 31), _mm_set1_epi32(3))), 2);
    return _mm_packs_epi32(t, t);
}

void s422_zoom2(const Zan16s* s, Zan8u* d, Zan32s step) {
    for (int r = 0; r < 4; ++r) {
        const __m128i y8 = _mm_unpacklo_epi64(box2_trunc(s, 0, 2 * r), box2_trunc(s, 2, 2 * r));
        store_pairs8(simd::row(d, step, r), y8, box2_trunc(s, 5, 2 * r), box2_trunc(s, 4, 2 * r));
    }
}

constexpr KernelPair<MbFn> kMb[] = {
    {"ycrcb411_5mb", r411_full, s411_full, 64, 8, 6},
    {"ycrcb411_edge", redge_full, sedge_full, 32, 16, 6},
    {"ycrcb420_5mb", r420_full, s420_full, 32, 16, 6},
    {"ycrcb422_5mb", r422_full, s422_full, 32, 8, 6},
    {"ycrcb422_dv100_half", rdv100_half, sdv100_half, 32, 8, 4},
    {"ycrcb411_zoomout2_5mb", r411_zoom<2>, s411_zoom2, 32, 4, 6},
    {"ycrcb420_zoomout2_5mb", r420_zoom<2>, s420_zoom2, 16, 8, 6},
    {"ycrcb422_zoomout2_5mb", r422_zoom<2>, s422_zoom2, 16, 4, 6},
};

}  // namespace

const Kernels kernels = {kMb};

}  // namespace zan::ZAN_PATH::dvoutput

// =============================================================== exports

namespace zan::ZAN_PATH {

namespace {
// The 4:1:1, 4:2:0 and most 4:2:2 five-macroblock forms: stop at the first
// null entry and report success for what was done.
template <dvoutput::MbFn K, int N = 5>
ZanStatus run_mbs(const Zan16s* const* pSrc, Zan8u* const* pDst, Zan32s step) {
    if (!pSrc || !pDst) return zanStsNullPtr;
    for (int i = 0; i < N; ++i) {
        if (!pSrc[i] || !pDst[i]) break;
        K(pSrc[i], pDst[i], step);
    }
    return zanStsOk;
}
template <dvoutput::MbFn K>
ZanStatus run_one(const Zan16s* pSrc, Zan8u* pDst, Zan32s step) {
    if (!pSrc || !pDst) return zanStsNullPtr;
    K(pSrc, pDst, step);
    return zanStsOk;
}
}  // namespace

using namespace dvoutput;

#define ZAN_DV_5MB(name, kernel)                                                                     \
    ZanStatus name(const Zan16s* const pSrc[5], Zan8u* const pDst[5], Zan32s dstStep) {               \
        return run_mbs<kernel>(pSrc, pDst, dstStep);                                                 \
    }
ZAN_DV_5MB(zaniYCrCb411ToYCbCr422_5MBDV_16s8u_P3C2R, s411_full)
ZAN_DV_5MB(zaniYCrCb411ToYCbCr422_ZoomOut2_5MBDV_16s8u_P3C2R, s411_zoom2)
ZAN_DV_5MB(zaniYCrCb411ToYCbCr422_ZoomOut4_5MBDV_16s8u_P3C2R, r411_zoom<4>)
ZAN_DV_5MB(zaniYCrCb411ToYCbCr422_16x4x5MB_DV_16s8u_P3C2R, r411_pre16x4)
ZAN_DV_5MB(zaniYCrCb420ToYCbCr422_5MBDV_16s8u_P3C2R, s420_full)
ZAN_DV_5MB(zaniYCrCb420ToYCbCr422_ZoomOut2_5MBDV_16s8u_P3C2R, s420_zoom2)
ZAN_DV_5MB(zaniYCrCb420ToYCbCr422_ZoomOut4_5MBDV_16s8u_P3C2R, r420_zoom<4>)
ZAN_DV_5MB(zaniYCrCb420ToYCbCr422_ZoomOut8_5MBDV_16s8u_P3C2R, r420_zoom8)
ZAN_DV_5MB(zaniYCrCb420ToYCbCr422_8x8x5MB_DV_16s8u_P3C2R, r420_pre8x8)
ZAN_DV_5MB(zaniYCrCb422ToYCbCr422_ZoomOut2_5MBDV_16s8u_P3C2R, s422_zoom2)
ZAN_DV_5MB(zaniYCrCb422ToYCbCr422_ZoomOut4_5MBDV_16s8u_P3C2R, r422_zoom<4>)
ZAN_DV_5MB(zaniYCrCb422ToYCbCr422_8x4x5MB_DV_16s8u_P3C2R, r422_pre8x4)
#undef ZAN_DV_5MB

ZanStatus zaniYCrCb411ToYCbCr422_ZoomOut8_5MBDV_16s8u_P3C2R(const Zan16s* const pSrc[5], Zan8u* const pDst[5]) {
    return run_mbs<r411_zoom8>(pSrc, pDst, 0);
}

ZanStatus zaniYCrCb422ToYCbCr422_5MBDV_16s8u_P3C2R(const Zan16s* const pSrc[5], Zan8u* const pDst[5],
                                                   Zan32s dstStep) {
    for (int i = 0; i < 5; ++i) s422_full(pSrc[i], pDst[i], dstStep);
    return zanStsOk;
}

ZanStatus zaniYCrCb422ToYCbCr422_ZoomOut8_5MBDV_16s8u_P3C2R(const Zan16s* const pSrc[5], Zan8u* const pDst[5]) {
    if (!pSrc || !pDst) return zanStsNullPtr;
    for (int i = 0; i < 5; ++i) {
        if (!pSrc[i] || !pDst[i]) return zanStsNullPtr;
        r422_zoom8(pSrc[i], pDst[i], 0);
    }
    return zanStsOk;
}

ZanStatus zaniYCrCb422ToYCbCr422_10HalvesMB16x8_DV100_16s8u_P3C2R(const Zan16s* const pSrc[10],
                                                                 Zan8u* const pDst[10], Zan32s dstStep) {
    return run_mbs<sdv100_half, 10>(pSrc, pDst, dstStep);
}

#define ZAN_DV_ONE(name, kernel)                                               \
    ZanStatus name(const Zan16s* pSrc, Zan8u* pDst, Zan32s dstStep) {            \
        return run_one<kernel>(pSrc, pDst, dstStep);                           \
    }
ZAN_DV_ONE(zaniYCrCb411ToYCbCr422_EdgeDV_16s8u_P3C2R, sedge_full)
ZAN_DV_ONE(zaniYCrCb411ToYCbCr422_ZoomOut2_EdgeDV_16s8u_P3C2R, redge_zoom<2>)
ZAN_DV_ONE(zaniYCrCb411ToYCbCr422_ZoomOut4_EdgeDV_16s8u_P3C2R, redge_zoom<4>)
ZAN_DV_ONE(zaniYCrCb411ToYCbCr422_ZoomOut8_EdgeDV_16s8u_P3C2R, redge_zoom8)
ZAN_DV_ONE(zaniYCrCb411ToYCbCr422_8x8MB_DV_16s8u_P3C2R, redge_pre8x8)
#undef ZAN_DV_ONE

}  // namespace zan::ZAN_PATH
