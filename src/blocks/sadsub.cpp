// The 8x8 difference block with its SAD, and the frame and field activity of
// a 16x16 block measured against itself.
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

Zan32s sub_rule(const Zan8u* c, Zan32s cs, const Zan8u* r, Zan32s rs, Zan16s* pDiff, Zan32s ds) {
    Zan32s sum = 0;
    for (Zan32s y = 0; y < 8; ++y)
        for (Zan32s x = 0; x < 8; ++x) {
            Zan32s d = at(c, cs, x, y) - at(r, rs, x, y);
            scalar::put(pDiff, ds, x, y, static_cast<Zan16s>(d));
            sum += d < 0 ? -d : d;
        }
    return sum;
}

// Row pairs (i, i+1) for i = 0..6 and 8..14 make the frame sum (rows 7 and 8
// are not compared, so both sums have 14 pairs); (i, i+2) for i = 0..13 the
// field sum.  Both keep the low 16 bits.
template <class T>
void field_rule(const T* s, Zan32s step, Zan32s* pFrame, Zan32s* pField) {
    Zan32u frame = 0, field = 0;
    auto diff = [](Zan32s a, Zan32s b) -> Zan32u {
        if constexpr (sizeof(T) == 1) {
            return static_cast<Zan32u>(absdiff(a, b));
        } else {
            // 16-bit wrapping subtraction, the signed larger of a - b and b - a.
            Zan16s d1 = static_cast<Zan16s>(static_cast<Zan16u>(a - b));
            Zan16s d2 = static_cast<Zan16s>(static_cast<Zan16u>(b - a));
            return static_cast<Zan16u>(d1 > d2 ? d1 : d2);
        }
    };
    for (Zan32s i = 0; i < 15; ++i) {
        if (i == 7) continue;
        for (Zan32s x = 0; x < 16; ++x) frame += diff(at(s, step, x, i), at(s, step, x, i + 1));
    }
    for (Zan32s i = 0; i < 14; ++i)
        for (Zan32s x = 0; x < 16; ++x) field += diff(at(s, step, x, i), at(s, step, x, i + 2));
    *pFrame = static_cast<Zan32s>(frame & 0xFFFF);
    *pField = static_cast<Zan32s>(field & 0xFFFF);
}

// ========================================================== vector kernels
// (placeholders: the scalar rule until the vector kernels land)

Zan32s sub_simd(const Zan8u* c, Zan32s cs, const Zan8u* r, Zan32s rs, Zan16s* pDiff, Zan32s ds) {
    return sub_rule(c, cs, r, rs, pDiff, ds);
}
template <class T>
void field_simd(const T* s, Zan32s step, Zan32s* pFrame, Zan32s* pField) {
    field_rule(s, step, pFrame, pField);
}

constexpr KernelPair<SubFn> kSubPairs[] = {{"subsad8x8", sub_rule, sub_simd, 8, 8, 0}};
constexpr KernelPair<Field8Fn> kField8Pairs[] = {
    {"framefield16x16_8u", field_rule<Zan8u>, field_simd<Zan8u>, 16, 16, 0}};
constexpr KernelPair<Field16Fn> kField16Pairs[] = {
    {"framefield16x16_16s", field_rule<Zan16s>, field_simd<Zan16s>, 16, 16, 0}};

}  // namespace

const SubKernels sub_kernels = {kSubPairs, kField8Pairs, kField16Pairs};

}  // namespace zan::ZAN_PATH::sad

// =============================================================== exports

namespace zan::ZAN_PATH {

// pResult is not checked: a null pResult leaves only the difference block.
ZanStatus zaniSubSAD8x8_8u16s_C1R(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, Zan32s refStep,
                                  Zan16s* pDiff, Zan32s diffStep, Zan32s* pResult) {
    if (!pCur || !pRef || !pDiff) return zanStsNullPtr;
    Zan32s sum = sad::sub_simd(pCur, curStep, pRef, refStep, pDiff, diffStep);
    if (pResult) *pResult = sum;
    return zanStsOk;
}

ZanStatus zaniFrameFieldSAD16x16_8u32s_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan32s* pFrameSAD,
                                           Zan32s* pFieldSAD) {
    if (!pSrc || !pFrameSAD || !pFieldSAD) return zanStsNullPtr;
    sad::field_simd<Zan8u>(pSrc, srcStep, pFrameSAD, pFieldSAD);
    return zanStsOk;
}

ZanStatus zaniFrameFieldSAD16x16_16s32s_C1R(const Zan16s* pSrc, Zan32s srcStep, Zan32s* pFrameSAD,
                                            Zan32s* pFieldSAD) {
    if (!pSrc || !pFrameSAD || !pFieldSAD) return zanStsNullPtr;
    sad::field_simd<Zan16s>(pSrc, srcStep, pFrameSAD, pFieldSAD);
    return zanStsOk;
}

}  // namespace zan::ZAN_PATH
