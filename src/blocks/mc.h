// Half-sample motion compensation and block arithmetic: kernel signatures,
// the kernel tables that the wrappers index by selector, and the catalogues
// of kernels that each path offers to the checker and the benchmarks.
//
// Positions.  The reference sample at (x, y), with rc the rounding bit
// (0 rounds to nearest, 1 toward zero) and d the distance to the horizontal
// neighbour of the same channel (1 for a plain plane, 2 for interleaved
// chroma pairs):
//   FF  R(x, y)
//   FH  (R(x, y) + R(x, y+1) + 1 - rc) >> 1                       half sample down
//   HF  (R(x, y) + R(x+d, y) + 1 - rc) >> 1                       half sample right
//   HH  (R(x, y) + R(x+d, y) + R(x, y+1) + R(x+d, y+1) + 2 - rc) >> 2
//
// Other families (MPEG-4 prediction tools, VC-1 interpolation) call these
// tables directly; each build calls its own copy (zan::u8::mc::..., or
// zan::n8::mc::...).  How each table is indexed is stated beside it.
#pragma once

#include <array>

#include "common/kernel_pair.h"
#include "zanvc.h"

namespace zan::mc {

// Position codes, in the order of mcType >> 2.
enum Pos : int { kFF = 0, kFH = 1, kHF = 2, kHH = 3 };

// ---------------------------------------------------------------- signatures

// Wide forward prediction with residual, height rows (a multiple of 4):
// dst = sat(P + residual).  Residual steps are in bytes.
using McFn = void (*)(const Zan8u* pRef, Zan32s refStep, const Zan16s* pResidual, Zan32s residualStep,
                      Zan8u* pDst, Zan32s dstStep, Zan32s height);
// Wide bidirectional: dst = sat(((PF + PB + 1) >> 1) + residual).
using McBFn = void (*)(const Zan8u* pRefF, Zan32s refStepF, const Zan8u* pRefB, Zan32s refStepB,
                       const Zan16s* pResidual, Zan32s residualStep, Zan8u* pDst, Zan32s dstStep, Zan32s height);

// Arguments of the interleaved-chroma forms whose residual lies in two
// planes.  The wrapper clears the record (64 bytes) and fills it; the kernel
// reads pRefB and refStepB only in the bidirectional forms.
struct McPairArgs {
    const Zan8u* pRef;
    const Zan8u* pRefB;
    const Zan16s* pResidualU;
    const Zan16s* pResidualV;
    Zan8u* pDst;
    Zan32s refStep;
    Zan32s refStepB;
    Zan32s residualStep;
    Zan32s dstStep;
    Zan32s reserved[2];
};
static_assert(sizeof(McPairArgs) == 64, "the record is cleared as 64 bytes");
// 8 interleaved pairs (16 bytes) by height rows (4 or 8).  Output byte 2x
// takes residual U[x], byte 2x+1 residual V[x].
using McPairFn = void (*)(const McPairArgs* args, Zan32s height);

// Narrow blocks (2 and 4 wide): the kernel reads bit 0 of roundControl.
using McSmallFn = void (*)(const Zan8u* pRef, Zan32s refStep, const Zan16s* pResidual, Zan32s residualStep,
                           Zan8u* pDst, Zan32s dstStep, Zan32s roundControl);
using McSmallBFn = void (*)(const Zan8u* pRefF, Zan32s refStepF, const Zan8u* pRefB, Zan32s refStepB,
                            const Zan16s* pResidual, Zan32s residualStep, Zan8u* pDst, Zan32s dstStep,
                            Zan32s roundControl);

// Fixed-size block from src to dst: the HP copies (dst = P), the
// interpolate-average forms (dst = (P + dst + 1) >> 1), and the plain copy.
using BlockFn = void (*)(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep);
// dst = (a + b + 1) >> 1.
using AverageFn = void (*)(const Zan8u* pSrc1, Zan32s src1Step, const Zan8u* pSrc2, Zan32s src2Step, Zan8u* pDst,
                           Zan32s dstStep);
// 8x8 in place: dst = sat8(dst + residual), the sum wrapping in 16 bits.
using AddFn = void (*)(const Zan16s* pResidual, Zan32s residualStep, Zan8u* pSrcDst, Zan32s srcDstStep);
// 8x8: dst = sat(P + residual).
using AddHPFn = void (*)(const Zan16s* pResidual, Zan32s residualStep, const Zan8u* pRef, Zan32s refStep,
                         Zan8u* pDst, Zan32s dstStep);
// 8x8 in place: dst = sat(dst + value).
using AddCFn = void (*)(Zan16s value, Zan8u* pSrcDst, Zan32s srcDstStep);

// ---------------------------------------------------------------- catalogues
//
// Every entry of every kernel table appears once, so the checker covers each
// table slot (the slots that share a kernel included).  width: block width
// in bytes (interleaved forms: 16); height: the largest height the kernel
// serves (the wide kernels take any multiple of 4 up to it); param: the
// table index, or as stated.

struct WideKernels {
    KernelList<McFn> fwd;         // 16xH, 16xH interleaved, 8xH tables (param: index 0..7)
    KernelList<McBFn> bidir;      // their bidirectional tables (param: index 0..31)
    KernelList<McPairFn> pair;    // two-plane residual, forward (param 0..7) then bidirectional (param 32 + index)
};

struct SmallKernels {
    KernelList<McSmallFn> fwd;    // 4x8, 4x4, 4x2, 2x4, 2x2 (param: index 0..15)
    KernelList<McSmallBFn> bidir; // their bidirectional tables (param: index 0..15)
    KernelList<BlockFn> copyHP;   // HP copy 4x4 (param: index 0..7)
};

struct BlockKernels {
    KernelList<BlockFn> copyHP;       // HP copies 16x16, 16x8, 8x8, 8x4 (param: index 0..7)
    KernelList<BlockFn> interpAvg;    // interpolate-average 16x16, 16x8, 8x8, 8x4 (param: index 0..7)
    KernelList<BlockFn> copy;         // plain copies 16x16, 8x8
    KernelList<AverageFn> average;    // 16x16, 8x8
    KernelList<AddFn> add;            // param 16: loads the residual aligned (pResidual, residualStep
                                      // multiples of 16); 0: any alignment
    KernelList<AddHPFn> addHP;        // param: index 0..7
    KernelList<AddCFn> addC;
};

}  // namespace zan::mc

// Tables and catalogues of each build.
//
// Wide forward tables (8 entries): index = ((mcType & 12) >> 1) + (roundControl & 1); the order is
// FF, FF, FH rc0, FH rc1, HF rc0, HF rc1, HH rc0, HH rc1 (both FF slots hold the same kernel).
// Wide bidirectional tables (32): index = ((mcTypeF & 12) >> 1) + (mcTypeB & 12) * 2 + (roundControl & 1);
// the forward position varies fastest.
// Narrow forward tables (16): index = mcType & 12 (four slots per position); the kernel takes
// roundControl.  Narrow bidirectional tables (16): index = ((mcTypeF & 12) >> 2) | (mcTypeB & 12).
// HP copy, interpolate-average and add-HP tables (8): index = (acc & 3) * 2 + (roundControl & 1),
// acc bit 0 half sample in x, bit 1 in y: FF, FF, HF rc0, HF rc1, FH rc0, FH rc1, HH rc0, HH rc1.
// In the interpolate-average tables the FF slots are the plain average.  A caller that holds a
// position as even quarter-sample offsets (dx, dy in 0, 2) takes acc = (dx >> 1) | (dy & 2).
#define ZAN_MC_DECLARATIONS(P)                                                                                        \
    namespace zan::P::mc {                                                                                            \
    extern const std::array<zan::mc::McFn, 8> kMC16xH;          /* 16 wide, neighbour 1 byte on */                    \
    extern const std::array<zan::mc::McBFn, 32> kMC16xHB;                                                             \
    extern const std::array<zan::mc::McFn, 8> kMC16xHUV;        /* 8 interleaved pairs, neighbour 2 bytes on */       \
    extern const std::array<zan::mc::McBFn, 32> kMC16xHUVB;                                                           \
    extern const std::array<zan::mc::McFn, 8> kMC8xH;                                                                 \
    extern const std::array<zan::mc::McBFn, 32> kMC8xHB;                                                              \
    extern const std::array<zan::mc::McPairFn, 8> kMC8xHNV12;   /* residual in two planes */                          \
    extern const std::array<zan::mc::McPairFn, 32> kMC8xHNV12B;                                                       \
    extern const std::array<zan::mc::McSmallFn, 16> kMC4x8;                                                           \
    extern const std::array<zan::mc::McSmallFn, 16> kMC4x4;                                                           \
    extern const std::array<zan::mc::McSmallFn, 16> kMC4x2;                                                           \
    extern const std::array<zan::mc::McSmallFn, 16> kMC2x4;                                                           \
    extern const std::array<zan::mc::McSmallFn, 16> kMC2x2;                                                           \
    extern const std::array<zan::mc::McSmallBFn, 16> kMC4x8B;                                                         \
    extern const std::array<zan::mc::McSmallBFn, 16> kMC4x4B;                                                         \
    extern const std::array<zan::mc::McSmallBFn, 16> kMC4x2B;                                                         \
    extern const std::array<zan::mc::McSmallBFn, 16> kMC2x4B;                                                         \
    extern const std::array<zan::mc::McSmallBFn, 16> kMC2x2B;                                                         \
    extern const std::array<zan::mc::BlockFn, 8> kCopy16x16HP;                                                        \
    extern const std::array<zan::mc::BlockFn, 8> kCopy16x8HP;                                                         \
    extern const std::array<zan::mc::BlockFn, 8> kCopy8x8HP;                                                          \
    extern const std::array<zan::mc::BlockFn, 8> kCopy8x4HP;                                                          \
    extern const std::array<zan::mc::BlockFn, 8> kCopy4x4HP;    /* internal only: no export of this size */           \
    extern const std::array<zan::mc::BlockFn, 8> kInterpolateAverage16x16;                                            \
    extern const std::array<zan::mc::BlockFn, 8> kInterpolateAverage16x8;                                             \
    extern const std::array<zan::mc::BlockFn, 8> kInterpolateAverage8x8;                                              \
    extern const std::array<zan::mc::BlockFn, 8> kInterpolateAverage8x4;                                              \
    extern const std::array<zan::mc::AddHPFn, 8> kAdd8x8HP;                                                           \
    extern const zan::mc::WideKernels wide_kernels;                                                                   \
    extern const zan::mc::SmallKernels small_kernels;                                                                 \
    extern const zan::mc::BlockKernels block_kernels;                                                                 \
    }
ZAN_MC_DECLARATIONS(u8)
ZAN_MC_DECLARATIONS(n8)
#undef ZAN_MC_DECLARATIONS
