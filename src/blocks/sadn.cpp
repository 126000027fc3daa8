// SAD of one current block against a row of candidates (xN), and the index of
// the best candidate (xNI).
//
// Candidate i is the block whose top-left sample is pRef + i.  Results come
// in passes of eight; the count is rounded down to a multiple of 8.
#include "blocks/sad.h"
#include "common/scalar.h"
#include "common/simd.h"
#include "frame/bodies.h"

namespace zan::ZAN_PATH::sad {
namespace {

using namespace zan::sad;
using scalar::absdiff;
using scalar::at;

// ============================================================ scalar rules

template <int B>
void cand_rule(const Zan8u* c, Zan32s cs, const Zan8u* r, Zan32s rs, Zan16u* pResult, Zan32s count) {
    for (Zan32s i = 0; i < count; ++i) {
        Zan32s sum = 0;
        for (Zan32s y = 0; y < B; ++y)
            for (Zan32s x = 0; x < B; ++x) sum += absdiff(at(c, cs, x, y), at(r, rs, x + i, y));
        pResult[i] = static_cast<Zan16u>(sum);
    }
}

// The first index of the smallest result.
Zan32s min_index_rule(const Zan16u* pResult, Zan32s count) {
    Zan32s best = 0;
    for (Zan32s i = 1; i < count; ++i)
        if (pResult[i] < pResult[best]) best = i;
    return best;
}

// ========================================================== vector kernels
// (placeholders: the scalar rule until the vector kernels land)

template <int B>
void cand_simd(const Zan8u* c, Zan32s cs, const Zan8u* r, Zan32s rs, Zan16u* pResult, Zan32s count) {
    cand_rule<B>(c, cs, r, rs, pResult, count);
}

Zan32s min_index_simd(const Zan16u* pResult, Zan32s count) { return min_index_rule(pResult, count); }

constexpr KernelPair<CandFn> kCandPairs[] = {
    {"sad2x2xn", cand_rule<2>, cand_simd<2>, 2, 2, -1},
    {"sad4x4xn", cand_rule<4>, cand_simd<4>, 4, 4, -1},
    {"sad8x8xn", cand_rule<8>, cand_simd<8>, 8, 8, -1},
    {"sad16x16xn", cand_rule<16>, cand_simd<16>, 16, 16, -1},
};
constexpr KernelPair<MinIndexFn> kMinPairs[] = {
    {"find_min_sad_16u", min_index_rule, min_index_simd, 0, 0, 32766},
    {"find_min_sad_16u_s", min_index_rule, min_index_simd, 0, 0, 65535},
};

}  // namespace

const CandidateKernels candidate_kernels = {kCandPairs, kMinPairs};

}  // namespace zan::ZAN_PATH::sad

// =============================================================== exports

namespace zan::ZAN_PATH {

#define ZAN_SAD_XN(name, B)                                                                     \
    ZanStatus name(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, Zan32s refStep,       \
                   Zan16u* pResult, Zan32s numCand) {                                           \
        if (!pCur || !pRef || !pResult) return zanStsNullPtr;                                   \
        Zan32s count = numCand & ~7;                                                            \
        if (count < 8) return zanStsSizeBad;                                                    \
        sad::cand_simd<B>(pCur, curStep, pRef, refStep, pResult, count);                        \
        return zanStsOk;                                                                        \
    }
ZAN_SAD_XN(zaniSAD2x2xN_8u16u_C1R, 2)
ZAN_SAD_XN(zaniSAD4x4xN_8u16u_C1R, 4)
ZAN_SAD_XN(zaniSAD8x8xN_8u16u_C1R, 8)
ZAN_SAD_XN(zaniSAD16x16xN_8u16u_C1R, 16)
#undef ZAN_SAD_XN

#define ZAN_SAD_XNI(name, B)                                                                    \
    ZanStatus name(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, Zan32s refStep,       \
                   Zan16u* pResult, Zan32s numCand, Zan32s* pMinIndex) {                        \
        if (!pCur || !pRef || !pResult || !pMinIndex) return zanStsNullPtr;                     \
        Zan32s count = numCand & ~7;                                                            \
        if (count < 8) return zanStsSizeBad;                                                    \
        sad::cand_simd<B>(pCur, curStep, pRef, refStep, pResult, count);                        \
        *pMinIndex = sad::min_index_simd(pResult, count);                                       \
        return zanStsOk;                                                                        \
    }
ZAN_SAD_XNI(zaniSAD4x4xNI_8u16u_C1R, 4)
ZAN_SAD_XNI(zaniSAD8x8xNI_8u16u_C1R, 8)
ZAN_SAD_XNI(zaniSAD16x16xNI_8u16u_C1R, 16)
#undef ZAN_SAD_XNI

}  // namespace zan::ZAN_PATH
