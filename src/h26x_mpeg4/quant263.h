// H.263 and MPEG-4 quantisation: kernel signatures, the shared tables, the
// record placement, and the catalogues of kernels that each path offers to
// the checker and the benchmarks.
//
// Every kernel works on one 8x8 block of Zan16s coefficients in raster
// order, in place.  Limits lo..hi are inclusive and lie within Zan16s.
#pragma once

#include <cstdint>

#include "common/kernel_pair.h"
#include "zanvc.h"

namespace zan::quant263 {

// Highest QP by sample depth 4..12: 2^(depth - 3) - 1.
inline constexpr Zan32s kQuantMax[9] = {1, 3, 7, 15, 31, 63, 127, 255, 511};

// Reconstruction and level limits by depth: -2^(depth + 3) .. 2^(depth + 3) - 1.
struct Limits {
    Zan32s lo, hi;
};
constexpr Limits depth_limits(Zan32s depth) { return {-(1 << (depth + 3)), (1 << (depth + 3)) - 1}; }

// Entry QP - 1: 32768 / QP + 1, truncating.  Multiplying a magnitude by it
// and shifting right by 16 divides by 2 QP.
inline constexpr Zan32u kQuantInv[31] = {
    32769, 16385, 10923, 8193, 6554, 5462, 4682, 4097, 3641, 3277, 2979, 2731, 2521, 2341, 2185, 2049,
    1928,  1821,  1725,  1639, 1561, 1490, 1425, 1366, 1311, 1261, 1214, 1171, 1130, 1093, 1058};

// The intra DC scaler for a QP and a block kind.
constexpr Zan32s dc_scaler(Zan32s QP, bool chroma) {
    if (QP < 5) return 8;
    if (chroma) return QP <= 24 ? (QP + 13) >> 1 : QP - 6;
    return QP <= 8 ? 2 * QP : QP <= 24 ? QP + 8 : 2 * QP - 16;
}

// A record lies at the first 16-byte boundary of the caller's buffer.
template <class T>
inline T* placed(T* buffer) {
    auto a = (reinterpret_cast<std::uintptr_t>(buffer) + 15) & ~std::uintptr_t{15};
    return reinterpret_cast<T*>(a);
}

// Sizes that GetSize reports: the record plus the slack for its placement.
inline constexpr Zan32s kInvSpecSize = 156;
inline constexpr Zan32s kSpecSize = 412;
static_assert(sizeof(ZanQuantInvSpec_MPEG4) + 16 == kInvSpecSize);
static_assert(sizeof(ZanQuantSpec_MPEG4) + 16 == kSpecSize);

// ---------------------------------------------------------- kernel signatures

// Forward: all 64 coefficients; returns the number of nonzero levels.
// Without weights: QP 1..31 for the integer kernels (reciprocal table),
// 1..511 for the single-precision ones.
using QuantFn = Zan32s (*)(Zan16s* pSrcDst, Zan32s QP, Zan32s lo, Zan32s hi);
// Forward with weights (each 1..255), QP 1..511.
using QuantWeightedFn = Zan32s (*)(Zan16s* pSrcDst, const Zan16u* pWeights, Zan32s QP, Zan32s lo, Zan32s hi);
// Inverse over the first `count` coefficients (a multiple of 8, 0..64).
// The H.263 rule with limits, QP 1..511.
using QuantInvFn = void (*)(Zan16s* pSrcDst, Zan32s count, Zan32s QP, Zan32s lo, Zan32s hi);
// level * 2 * QP in wrapping 16-bit arithmetic, QP 1..31.
using QuantInvWrapFn = void (*)(Zan16s* pSrcDst, Zan32s count, Zan32s QP);
// Weighted inverse, QP 1..511, weights 1..255; returns the sum of the
// reconstructed coefficients it wrote.
using QuantInvWeightedFn = Zan32s (*)(Zan16s* pSrcDst, Zan32s count, const Zan16u* pWeights, Zan32s QP,
                                      Zan32s lo, Zan32s hi);

// Catalogue (quant263.cpp).  param: 1 for intra kernels, 0 for inter; for
// quant the integer kernels take QP up to 31 only (width 31), the
// single-precision ones up to 511 (width 511).  width elsewhere: the highest
// QP the kernel takes.
struct Kernels {
    KernelList<QuantFn> quant;
    KernelList<QuantWeightedFn> quantWeighted;
    KernelList<QuantInvFn> inv;
    KernelList<QuantInvWrapFn> invWrap;
    KernelList<QuantInvWeightedFn> invWeighted;
};

}  // namespace zan::quant263

// Internal entry for the MPEG-4 coefficient decoder: the inverse inter
// quantiser with all its checks (the body of zaniQuantInvInter_MPEG4_16s_C1I),
// and the weighted inverse kernel of the path.
#define ZAN_QUANT263_DECLS(P)                                                                        \
    namespace zan::P::quant263 {                                                                     \
    extern const zan::quant263::Kernels kernels;                                                     \
    ZanStatus inv_inter_mpeg4(Zan16s* pSrcDst, Zan32s indxLastNonZero, const ZanQuantInvSpec_MPEG4* pSpec, \
                              Zan32s QP);                                                            \
    }
ZAN_QUANT263_DECLS(u8)
ZAN_QUANT263_DECLS(n8)
#undef ZAN_QUANT263_DECLS
