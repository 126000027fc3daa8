// The three 8x8 scan orders, shared by every family that reads or writes
// coefficients in scan order.  Entry k is the raster position (row * 8 +
// column) of the k-th coefficient in scan order.
//
//   ownvc_Zigzag    the classical zigzag of MPEG-1/2, H.261, H.263, MPEG-4
//   ownvc_AltScanV  the alternate-vertical scan (MPEG-2 alternate scan,
//                   MPEG-4 and H.263 Annex I alternate-vertical)
//   ownvc_AltScanH  the alternate-horizontal scan of MPEG-4 and H.263 Annex I
//
// A `scan` argument selects them as 0 zigzag, 1 alternate vertical,
// 2 alternate horizontal (-1: no scan, raster order).
#pragma once

#include "zanvc.h"

namespace zan {

inline constexpr Zan8u ownvc_Zigzag[64] = {
    0,  1,  8,  16, 9,  2,  3,  10, 17, 24, 32, 25, 18, 11, 4,  5,
    12, 19, 26, 33, 40, 48, 41, 34, 27, 20, 13, 6,  7,  14, 21, 28,
    35, 42, 49, 56, 57, 50, 43, 36, 29, 22, 15, 23, 30, 37, 44, 51,
    58, 59, 52, 45, 38, 31, 39, 46, 53, 60, 61, 54, 47, 55, 62, 63};

inline constexpr Zan8u ownvc_AltScanV[64] = {
    0,  8,  16, 24, 1,  9,  2,  10, 17, 25, 32, 40, 48, 56, 57, 49,
    41, 33, 26, 18, 3,  11, 4,  12, 19, 27, 34, 42, 50, 58, 35, 43,
    51, 59, 20, 28, 5,  13, 6,  14, 21, 29, 36, 44, 52, 60, 37, 45,
    53, 61, 22, 30, 7,  15, 23, 31, 38, 46, 54, 62, 39, 47, 55, 63};

inline constexpr Zan8u ownvc_AltScanH[64] = {
    0,  1,  2,  3,  8,  9,  16, 17, 10, 11, 4,  5,  6,  7,  15, 14,
    13, 12, 19, 18, 24, 25, 32, 33, 26, 27, 20, 21, 22, 23, 28, 29,
    30, 31, 34, 35, 40, 41, 48, 49, 42, 43, 36, 37, 38, 39, 44, 45,
    46, 47, 50, 51, 56, 57, 58, 59, 52, 53, 54, 55, 60, 61, 62, 63};

// The table for a `scan` selector: 1 alternate vertical, 2 alternate
// horizontal, anything else zigzag.
constexpr const Zan8u* scan_table(Zan32s scan) {
    return scan == 1 ? ownvc_AltScanV : scan == 2 ? ownvc_AltScanH : ownvc_Zigzag;
}

namespace detail {
// Each table must name every raster position exactly once.
constexpr bool is_permutation(const Zan8u (&t)[64]) {
    bool seen[64] = {};
    for (Zan8u v : t) {
        if (v >= 64 || seen[v]) return false;
        seen[v] = true;
    }
    return true;
}
static_assert(is_permutation(ownvc_Zigzag));
static_assert(is_permutation(ownvc_AltScanV));
static_assert(is_permutation(ownvc_AltScanH));
}  // namespace detail

}  // namespace zan
