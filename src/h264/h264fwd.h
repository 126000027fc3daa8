// H.264 forward transforms and quantisation: kernel signatures, the factor
// tables the kernels and the tests share, and the catalogues of kernels that
// each path offers to the checker and the benchmarks.
//
// Blocks are packed in raster order.  The exported contracts are in zanvc.h.
#pragma once

#include "common/kernel_pair.h"
#include "zanvc.h"

namespace zan::h264fwd {

// Forward 4x4 core transform, 16-bit wrap-around; pDst may equal pSrc.
using Fwd4x4Fn = void (*)(const Zan16s* pSrc, Zan16s* pDst);
// Forward 4x4 core transform of 8-bit samples with a byte step.
using FwdPredFn = void (*)(const Zan8u* pSrc, Zan32s srcStep, Zan16s* pDst);
// Forward 8x8 transform, 16-bit wrap-around; pDst may equal pSrc.
using Fwd8x8Fn = void (*)(const Zan16s* pSrc, Zan16s* pDst);
// Flat 4x4 transform and quantisation in place (QP 0..51 trusted); returns
// 0 or zanStsCoefRange.  *pLast is the last scan position (0..65535 before
// the caller narrows it to a byte).
using FlatQuantFn = ZanStatus (*)(Zan16s* pSrcDst, Zan32s QP, Zan32s intra, const Zan16s* pScan,
                                  Zan32s* pNumLevels, Zan32s* pLast);
// Flat luma DC stage (QP 0..51 trusted), as FlatQuantFn with pTBlock.
using FlatLumaDcFn = ZanStatus (*)(Zan16s* pSrcDst, Zan16s* pTBlock, Zan32s QP, const Zan16s* pScan,
                                   Zan32s* pNumLevels, Zan32s* pLast);
// Flat chroma DC stage (QP 0..39 trusted).
using FlatChromaDcFn = ZanStatus (*)(Zan16s* pSrcDst, Zan16s* pTBlock, Zan32s QP, Zan32s intra,
                                     Zan32s needTransform, Zan32s* pNumLevels);
// N levels (16 or 64: the catalogue's width * height) of pSrc into pDst
// (may be the same block): magnitude (|c| * scale[k] + round) >> shift,
// saturated to 32767, sign of c restored; returns the count of non-zero
// levels and stores the largest pScan[k] over them (0 when none) in *pLast.
// shift 0..31 and round below 1 << shift are trusted.
using Quant16Fn = Zan32s (*)(const Zan16s* pSrc, Zan16s* pDst, const Zan16s* pScale, Zan32s shift, Zan32s round,
                             const Zan16s* pScan, Zan32s* pLast);

// ---- factor tables, built at compile time

namespace detail {

// The standard's normalisation of the 4x4 inverse (clause 8.5.9,
// normAdjust4x4): for each QP % 6 the values of position classes 0 (both
// indices even), 1 (both odd) and 2 (mixed).
inline constexpr Zan16s kNormClass4x4[6][3] = {{10, 16, 13}, {11, 18, 14}, {13, 20, 16},
                                               {14, 23, 18}, {16, 25, 20}, {18, 29, 23}};
// Forward 4x4 quantisation factors for the same classes, the factors that
// go with that normalisation in the standard's reference encoder (for each
// QP % 6, factor times normalisation is close to 2^17, 2^17 * 0.64 and
// 2^17 * 0.8 in classes 0, 1 and 2, as the forward rows' norms differ).
inline constexpr Zan16s kQuantClass4x4[6][3] = {{13107, 5243, 8066}, {11916, 4660, 7490}, {10082, 4194, 6554},
                                                {9362, 3647, 5825},   {8192, 3355, 5243},  {7282, 2893, 4559}};
// The standard's 8x8 normalisation (clause 8.5.9, normAdjust8x8), classes:
// 0 both indices multiples of 4, 1 both odd, 2 both 2 mod 4, 3 one a
// multiple of 4 and the other odd, 4 one a multiple of 4 and the other 2
// mod 4, 5 one odd and the other 2 mod 4.
inline constexpr Zan16s kNormClass8x8[6][6] = {{20, 18, 32, 19, 25, 24}, {22, 19, 35, 21, 28, 26},
                                               {26, 23, 42, 24, 33, 31}, {28, 25, 45, 26, 35, 33},
                                               {32, 28, 51, 30, 40, 38}, {36, 32, 58, 34, 46, 43}};

constexpr int class4x4(int k) {
    const int i = k >> 2, j = k & 3;
    return (i & 1) == 0 && (j & 1) == 0 ? 0 : (i & 1) && (j & 1) ? 1 : 2;
}
constexpr int class8x8(int k) {
    const int i = k >> 3, j = k & 7;
    auto kind = [](int x) { return x % 4 == 0 ? 0 : x % 2 == 1 ? 1 : 2; };  // 0: 0 mod 4, 1: odd, 2: 2 mod 4
    const int a = kind(i), b = kind(j);
    if (a == 0 && b == 0) return 0;
    if (a == 1 && b == 1) return 1;
    if (a == 2 && b == 2) return 2;
    if ((a == 0 && b == 1) || (a == 1 && b == 0)) return 3;
    if ((a == 0 && b == 2) || (a == 2 && b == 0)) return 4;
    return 5;
}
// Squared norm, in 32nds, of forward 8x8 row r: 8 for rows 0 and 4, 5 for
// rows 2 and 6, 289/32 for the odd rows (coefficients 12, 10, 6, 3 over 8).
constexpr Zan64s rowNorm8(int r) { return r % 4 == 0 ? 256 : r % 2 == 0 ? 160 : 289; }
// The forward 8x8 factor: 2^24 / (v * n_i * n_j), rounded to nearest, with
// n the squared row norms; this reproduces the reference encoder's table
// (13107, 11428, 20972, 12222, 16777, 15481 for QP % 6 = 0).
constexpr Zan16s quant8x8(int m, int k) {
    const Zan64s den = kNormClass8x8[m][class8x8(k)] * rowNorm8(k >> 3) * rowNorm8(k & 7);
    return static_cast<Zan16s>(((Zan64s{1} << 35) / den + 1) / 2);
}

template <int N, class F>
struct Table6 {
    Zan16s v[6][N];
    constexpr explicit Table6(F f) : v{} {
        for (int m = 0; m < 6; ++m)
            for (int k = 0; k < N; ++k) v[m][k] = f(m, k);
    }
};
template <int N, class F>
constexpr Table6<N, F> table6(F f) { return Table6<N, F>(f); }

inline constexpr auto kQuant4x4 = table6<16>([](int m, int k) { return kQuantClass4x4[m][class4x4(k)]; });
inline constexpr auto kNorm4x4 = table6<16>([](int m, int k) { return kNormClass4x4[m][class4x4(k)]; });
inline constexpr auto kQuant8x8 = table6<64>([](int m, int k) { return quant8x8(m, k); });
inline constexpr auto kNorm8x8 = table6<64>([](int m, int k) { return kNormClass8x8[m][class8x8(k)]; });

static_assert(kQuant4x4.v[0][0] == 13107 && kQuant4x4.v[0][1] == 8066 && kQuant4x4.v[0][5] == 5243);
static_assert(kNorm8x8.v[0][0] == 20 && kNorm8x8.v[0][1] == 19 && kNorm8x8.v[0][2] == 25 && kNorm8x8.v[0][3] == 19 &&
              kNorm8x8.v[0][4] == 20 && kNorm8x8.v[0][9] == 18 && kNorm8x8.v[0][18] == 32);
// Class representatives (positions 0, 9, 18, 1, 2, 10) against the
// reference encoder's table, first and last rows.
static_assert(kQuant8x8.v[0][0] == 13107 && kQuant8x8.v[0][9] == 11428 && kQuant8x8.v[0][18] == 20972 &&
              kQuant8x8.v[0][1] == 12222 && kQuant8x8.v[0][2] == 16777 && kQuant8x8.v[0][10] == 15481);
static_assert(kQuant8x8.v[5][0] == 7282 && kQuant8x8.v[5][9] == 6428 && kQuant8x8.v[5][18] == 11570 &&
              kQuant8x8.v[5][1] == 6830 && kQuant8x8.v[5][2] == 9118 && kQuant8x8.v[5][10] == 8640);

}  // namespace detail

// Forward quantisation factors of the 4x4 and 8x8 blocks for QP % 6, and
// the standard's normalisation values, in raster order.
inline constexpr const Zan16s (&kQuant4x4)[6][16] = detail::kQuant4x4.v;
inline constexpr const Zan16s (&kNorm4x4)[6][16] = detail::kNorm4x4.v;
inline constexpr const Zan16s (&kQuant8x8)[6][64] = detail::kQuant8x8.v;
inline constexpr const Zan16s (&kNorm8x8)[6][64] = detail::kNorm8x8.v;

// Rounding of the second-generation quantisers: entry i is 2^(15+i) / 6 and
// 2^(11+i) / 6 (integer division), so that entry q + 1 is the intra
// rounding (a third) of entry q.
inline constexpr auto kRoundGiven = [] {
    struct { Zan32s v[17]; } t{};
    for (int i = 0; i < 17; ++i) t.v[i] = static_cast<Zan32s>((Zan64s{1} << (15 + i)) / 6);
    return t;
}();
inline constexpr auto kRoundScaled = [] {
    struct { Zan32s v[17]; } t{};
    for (int i = 0; i < 17; ++i) t.v[i] = static_cast<Zan32s>((Zan64s{1} << (11 + i)) / 6);
    return t;
}();
static_assert(kRoundGiven.v[0] == 5461 && kRoundGiven.v[1] == 10922 && kRoundGiven.v[2] == 21845);
static_assert(kRoundScaled.v[0] == 341 && kRoundScaled.v[1] == 682 && kRoundScaled.v[2] == 1365);

// Catalogue.  width x height is the block; param is 0.
struct Kernels {
    KernelList<Fwd4x4Fn> fwd4x4;
    KernelList<FwdPredFn> fwdPred;
    KernelList<Fwd8x8Fn> fwd8x8;
    KernelList<FlatQuantFn> flatQuant;
    KernelList<FlatLumaDcFn> flatLumaDc;
    KernelList<FlatChromaDcFn> flatChromaDc;
    KernelList<Quant16Fn> quant16;
};

}  // namespace zan::h264fwd

// Per path:
//   fwd4x4         the 4x4 core transform on 16-bit values (for encoders that
//                  keep transform and quantisation apart)
//   quant4x4       16 levels of a 4x4 block (Quant16Fn)
//   quant8x8       64 levels of an 8x8 block (Quant16Fn)
//   kernels        the catalogue (rule beside kernel)
#define ZAN_H264FWD_DECLS(P)                                \
    namespace zan::P::h264fwd {                             \
    extern const zan::h264fwd::Fwd4x4Fn fwd4x4;             \
    extern const zan::h264fwd::Quant16Fn quant4x4;          \
    extern const zan::h264fwd::Quant16Fn quant8x8;          \
    extern const zan::h264fwd::Kernels kernels;             \
    }
ZAN_H264FWD_DECLS(u8)
ZAN_H264FWD_DECLS(n8)
#undef ZAN_H264FWD_DECLS
