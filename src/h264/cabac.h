// H.264 CABAC encoder: the coder record of zanvc.h, its context
// initialisation, the bin and bypass-bin coders with word output and carry
// propagation, termination, and whole residual blocks.
//
// The arithmetic coder is inherently serial (every bin depends on the range
// and context that the previous bin left), so there is no vector kernel: the
// scalar code in cabac.cpp is the implementation on both paths, and there is
// no catalogue.  The benchmarks time the two bodies of each export directly.
//
// Tables (cabac_tables.cpp, one copy per path):
//   kRangeTabLPS   [context byte 0..127][qCodIRangeIdx 0..3]: rangeTabLPS of
//                  the standard's Table 9-44, repeated for valMPS 0 and 1 so
//                  that the context byte indexes it without masking.
//   kTransTbl      [bin 0..1][context byte 0..127]: the next context byte,
//                  from transIdxLPS / transIdxMPS of Table 9-45, with the
//                  valMPS flip of the LPS path at pStateIdx 0 built in.
//   kMNIntra, kMNInter   m, n pairs of Tables 9-12 to 9-33 by ctxIdx.
//   significance and level context offsets by ctxBlockCat (Table 9-40), and
//   the 8x8 ctxIdxInc tables of Table 9-43.
#pragma once

#include <array>

#include "common/path.h"
#include "zanvc.h"

namespace zan::ZAN_PATH::cabac {

inline constexpr int kNumContexts = 460;
inline constexpr Zan32u kTerminateCtx = 276;
inline constexpr Zan8u kTerminateByte = 63;

struct MN {
    Zan8s m, n;
};

extern const std::array<std::array<Zan8u, 4>, 128> kRangeTabLPS;
extern const std::array<std::array<Zan8u, 128>, 2> kTransTbl;
extern const MN kMNIntra[kNumContexts];
extern const MN kMNInter[3][kNumContexts];

// Coefficients per block by ctxBlockCat 0..5 (before the chroma DC shift).
extern const Zan32s kMaxNumCoeff[6];
// ctxIdxBlockCatOffset by ctxBlockCat 0..13 (Table 9-40).
extern const Zan32s kCatOffsetCodedBlockFlag[14];
extern const Zan32s kCatOffsetSignificant[14];
extern const Zan32s kCatOffsetLast[14];
extern const Zan32s kCatOffsetAbsLevel[14];
// ctxIdxInc of the 8x8 block (cat 5) by scan position 0..62 (Table 9-43),
// padded with a 0 for position 63.
extern const Zan32s kInc8x8SignificantFrame[64];
extern const Zan32s kInc8x8SignificantField[64];
extern const Zan32s kInc8x8Last[64];

// Context initialisation of the record (internal; the exported init calls
// them): intra writes ctxIdx 0..10 and 60..459, inter ctxIdx 11..459 from
// the column of cabacInitIdc (0..2).  Both set ctxIdx 276 to 63.
void InitIntraContext_H264(ZanCABACState* state, Zan32s sliceQP);
void InitInterContext_H264(ZanCABACState* state, Zan32s sliceQP, Zan32s cabacInitIdc);

// The context byte for (m, n) at the quantiser q already clamped to 0..51.
constexpr Zan8u context_byte(int m, int n, int q) {
    int pre = ((m * q) >> 4) + n;
    pre = pre < 1 ? 1 : (pre > 126 ? 126 : pre);
    return pre <= 63 ? Zan8u(63 - pre) : Zan8u((pre - 64) | 64);
}

}  // namespace zan::ZAN_PATH::cabac
