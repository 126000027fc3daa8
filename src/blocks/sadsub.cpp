// The 8x8 difference block with its SAD, and the frame and field activity of
// a 16x16 block measured against itself.
#include <cstdint>

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
ZanStatus field_rule(const T* s, Zan32s step, Zan32s* pFrame, Zan32s* pField) {
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
    return zanStsOk;
}

// ========================================================== vector kernels

using simd::load16;
using simd::load8;
using simd::row;

// Two rows per pass: psadbw of the row pair gives the SAD, the bytes widened
// to 16 bits give the differences.  Aligned stores when pDiff and diffStep
// are multiples of 16.
template <bool AlignedDiff>
inline __attribute__((always_inline)) Zan32s sub_core(const Zan8u* c, Zan32s cs, const Zan8u* r, Zan32s rs,
                                                      Zan16s* pDiff, Zan32s ds) {
    const __m128i zero = _mm_setzero_si128();
    __m128i acc = zero;
    for (Zan32s y = 0; y < 8; y += 2) {
        __m128i cv = _mm_unpacklo_epi64(load8(row(c, cs, y)), load8(row(c, cs, y + 1)));
        __m128i rv = _mm_unpacklo_epi64(load8(row(r, rs, y)), load8(row(r, rs, y + 1)));
        acc = _mm_add_epi32(acc, _mm_sad_epu8(cv, rv));
        __m128i d0 = _mm_sub_epi16(_mm_unpacklo_epi8(cv, zero), _mm_unpacklo_epi8(rv, zero));
        __m128i d1 = _mm_sub_epi16(_mm_unpackhi_epi8(cv, zero), _mm_unpackhi_epi8(rv, zero));
        auto* p0 = reinterpret_cast<__m128i*>(row(pDiff, ds, y));
        auto* p1 = reinterpret_cast<__m128i*>(row(pDiff, ds, y + 1));
        if constexpr (AlignedDiff) {
            _mm_store_si128(p0, d0);
            _mm_store_si128(p1, d1);
        } else {
            _mm_storeu_si128(p0, d0);
            _mm_storeu_si128(p1, d1);
        }
    }
    return simd::hsum_sad(acc);
}

// The catalogue form returns the SAD; the form the exported body jumps to
// stores it where pResult points, if pResult is not null.
template <bool AlignedDiff>
Zan32s sub_simd(const Zan8u* c, Zan32s cs, const Zan8u* r, Zan32s rs, Zan16s* pDiff, Zan32s ds) {
    return sub_core<AlignedDiff>(c, cs, r, rs, pDiff, ds);
}

template <bool AlignedDiff>
ZanStatus sub_out(const Zan8u* c, Zan32s cs, const Zan8u* r, Zan32s rs, Zan16s* pDiff, Zan32s ds, Zan32s* pResult) {
    Zan32s sum = sub_core<AlignedDiff>(c, cs, r, rs, pDiff, ds);
    if (pResult) *pResult = sum;
    return zanStsOk;
}

// 8-bit samples: psadbw of two rows adds their absolute differences into
// 16-bit lanes 0 and 4, where they accumulate.  Each sum is at most
// 14 * 16 * 255 = 57120, so the low 16 bits are all of it.  Rows stream
// through: prev1 and prev2 are the one and two rows above.
ZanStatus field8_simd(const Zan8u* s, Zan32s step, Zan32s* pFrame, Zan32s* pField) {
    __m128i prev2 = load16(row(s, step, 0)), prev1 = load16(row(s, step, 1));
    __m128i frame = _mm_sad_epu8(prev2, prev1), field = _mm_setzero_si128();
    for (Zan32s i = 2; i < 16; ++i) {
        __m128i cur = load16(row(s, step, i));
        if (i != 8) frame = _mm_add_epi16(frame, _mm_sad_epu8(prev1, cur));
        field = _mm_add_epi16(field, _mm_sad_epu8(prev2, cur));
        prev2 = prev1;
        prev1 = cur;
    }
    *pFrame = simd::hsum_sad(frame) & 0xFFFF;
    *pField = simd::hsum_sad(field) & 0xFFFF;
    return zanStsOk;
}

// 16-bit samples: |a - b| is the signed larger of the wrapping a - b and
// b - a; the sums wrap in eight 16-bit lanes and then across them.  A row is
// two vectors (h = 0, 1).
inline __m128i absdiff_wrap16(__m128i a, __m128i b) {
    return _mm_max_epi16(_mm_sub_epi16(a, b), _mm_sub_epi16(b, a));
}

inline Zan32s hsum_low16(__m128i v) {
    return simd::hsum_epi32(_mm_madd_epi16(v, _mm_set1_epi16(1))) & 0xFFFF;
}

ZanStatus field16_simd(const Zan16s* s, Zan32s step, Zan32s* pFrame, Zan32s* pField) {
    __m128i frame = _mm_setzero_si128(), field = frame;
    __m128i prev2[2], prev1[2];
    for (int h = 0; h < 2; ++h) {
        prev2[h] = load16(row(s, step, 0) + 16 * h);
        prev1[h] = load16(row(s, step, 1) + 16 * h);
        frame = _mm_add_epi16(frame, absdiff_wrap16(prev2[h], prev1[h]));
    }
    for (Zan32s i = 2; i < 16; ++i)
        for (int h = 0; h < 2; ++h) {
            __m128i cur = load16(row(s, step, i) + 16 * h);
            if (i != 8) frame = _mm_add_epi16(frame, absdiff_wrap16(prev1[h], cur));
            field = _mm_add_epi16(field, absdiff_wrap16(prev2[h], cur));
            prev2[h] = prev1[h];
            prev1[h] = cur;
        }
    *pFrame = hsum_low16(frame);
    *pField = hsum_low16(field);
    return zanStsOk;
}

// ================================================================= tables

// The difference block by whether pDiff and diffStep are multiples of 16.
using SubOutFn = ZanStatus (*)(const Zan8u*, Zan32s, const Zan8u*, Zan32s, Zan16s*, Zan32s, Zan32s*);
constexpr SubOutFn kSub[2] = {sub_out<false>, sub_out<true>};

// ============================================================= catalogue
// param of sub: 16 for the kernel that needs pDiff and diffStep multiples of
// 16, else 0.

constexpr KernelPair<SubFn> kSubPairs[] = {
    {"subsad8x8", sub_rule, sub_simd<false>, 8, 8, 0},
    {"subsad8x8_a", sub_rule, sub_simd<true>, 8, 8, 16},
};
constexpr KernelPair<Field8Fn> kField8Pairs[] = {
    {"framefield16x16_8u", field_rule<Zan8u>, field8_simd, 16, 16, 0}};
constexpr KernelPair<Field16Fn> kField16Pairs[] = {
    {"framefield16x16_16s", field_rule<Zan16s>, field16_simd, 16, 16, 0}};

}  // namespace

const SubKernels sub_kernels = {kSubPairs, kField8Pairs, kField16Pairs};

}  // namespace zan::ZAN_PATH::sad

// =============================================================== exports

namespace zan::ZAN_PATH {

// pResult is not checked: a null pResult leaves only the difference block.
ZanStatus zaniSubSAD8x8_8u16s_C1R(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, Zan32s refStep,
                                  Zan16s* pDiff, Zan32s diffStep, Zan32s* pResult) {
    ZAN_SAD_NULL(pCur); ZAN_SAD_NULL(pRef); ZAN_SAD_NULL(pDiff);
    bool aligned = ((reinterpret_cast<intptr_t>(pDiff) | diffStep) & 15) == 0;
    return sad::kSub[aligned](pCur, curStep, pRef, refStep, pDiff, diffStep, pResult);
}

ZanStatus zaniFrameFieldSAD16x16_8u32s_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan32s* pFrameSAD,
                                           Zan32s* pFieldSAD) {
    ZAN_SAD_NULL(pSrc); ZAN_SAD_NULL(pFrameSAD); ZAN_SAD_NULL(pFieldSAD);
    return sad::field8_simd(pSrc, srcStep, pFrameSAD, pFieldSAD);
}

ZanStatus zaniFrameFieldSAD16x16_16s32s_C1R(const Zan16s* pSrc, Zan32s srcStep, Zan32s* pFrameSAD,
                                            Zan32s* pFieldSAD) {
    ZAN_SAD_NULL(pSrc); ZAN_SAD_NULL(pFrameSAD); ZAN_SAD_NULL(pFieldSAD);
    return sad::field16_simd(pSrc, srcStep, pFrameSAD, pFieldSAD);
}

}  // namespace zan::ZAN_PATH
