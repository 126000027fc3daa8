// H.264 weighted prediction: the sample formula's parameters, kernel
// signatures and the catalogues of kernels that each path offers to the
// checker and the benchmarks.
//
// Every weighted form reduces to one formula on 32-bit wrapping integers,
//   out = clamp(((a * w1 + b * w2 + round) >> shift) + offset, 0, max),
// with an arithmetic shift that leaves 0 or -1 (by the sign) for a count of
// 32 or more.  The wrappers turn their arguments into a Params record (uni-
// directional forms have no b and w2 = 0).  Index 0 of the two-element
// arrays applies to even samples (U of an interleaved row), index 1 to odd
// samples (V); planar forms give both the same value.
#pragma once

#include "common/kernel_pair.h"
#include "zanvc.h"

namespace zan::h264weight {

struct Params {
    Zan32s w1[2];
    Zan32s w2[2];
    Zan32s offset[2];
    Zan32s round;
    Zan32u shift;
    Zan32s max;  // the clamp's top: 255 for 8-bit samples
};

// 1 << n in 32 bits, 0 when n (as unsigned) is 32 or more.
constexpr Zan32s shl1(Zan32u n) { return n < 32 ? static_cast<Zan32s>(Zan32u{1} << n) : 0; }

// Parameters of each form from the caller's arguments.
constexpr Params uni_params(Zan32s log2wd, Zan32s w, Zan32s o, Zan32s max) {
    Zan32u l = static_cast<Zan32u>(log2wd);
    return {{w, w}, {0, 0}, {o, o}, l != 0 ? shl1(l - 1) : 0, l, max};
}
// (o1 + o2 + 1) >> 1 in 32 bits.
constexpr Zan32s mean_offset(Zan32s o1, Zan32s o2) {
    return static_cast<Zan32s>(static_cast<Zan32u>(o1) + static_cast<Zan32u>(o2) + 1u) >> 1;
}
constexpr Params bi_params(Zan32s log2wd, Zan32s w1, Zan32s o1, Zan32s w2, Zan32s o2, Zan32s max) {
    Zan32u l = static_cast<Zan32u>(log2wd);
    Zan32s o = mean_offset(o1, o2);
    return {{w1, w1}, {w2, w2}, {o, o}, shl1(l), l + 1u, max};
}
constexpr Params implicit_params(Zan32s w1, Zan32s w2, Zan32s max) {
    return {{w1, w1}, {w2, w2}, {0, 0}, 32, 6, max};
}
constexpr Params average_params(Zan32s w1, Zan32s w2, Zan32s shift, Zan32s o) {
    return {{w1, w1}, {w2, w2}, {o, o}, shift >= 1 ? shl1(static_cast<Zan32u>(shift) - 1u) : 0,
            static_cast<Zan32u>(shift), 255};
}
// The clamp's top of a 16-bit form: (1 << bitDepth) - 1 in 32 bits.
constexpr Zan32s depth_max(Zan32s bitDepth) {
    return static_cast<Zan32s>(static_cast<Zan32u>(shl1(static_cast<Zan32u>(bitDepth))) - 1u);
}

// True when the vector kernels take these parameters: every weight fits a
// signed 16-bit lane, and (16-bit samples) the top lies in 0..65535.  The
// wrappers run the scalar rule otherwise.
constexpr bool fits16(Zan32s v) { return v >= -32768 && v <= 32767; }
constexpr bool vector_weights(const Params& p) {
    return fits16(p.w1[0]) && fits16(p.w1[1]) && fits16(p.w2[0]) && fits16(p.w2[1]);
}
constexpr bool vector_params16(const Params& p) { return vector_weights(p) && p.max >= 0 && p.max <= 65535; }

// True when the narrow 8-bit kernels take these parameters: weights fit a
// signed byte, a * w1 + b * w2 + round fits a signed 16-bit lane for every
// pair of 8-bit samples, and the offsets fit one too.  This holds for the
// common H.264 cases (explicit uni-directional weights with log2wd up to 7,
// bi-directional ones whose magnitudes sum to at most 128 with log2wd up to
// 6, implicit weights of 0..64).
constexpr bool narrow8(const Params& p) {
    if (p.round < -32768 || p.round > 32767) return false;
    for (int k = 0; k < 2; ++k) {
        Zan32s a = p.w1[k], b = p.w2[k];
        if (a < -128 || a > 127 || b < -128 || b > 127 || !fits16(p.offset[k])) return false;
        Zan32s pos = 255 * ((a > 0 ? a : 0) + (b > 0 ? b : 0)), neg = 255 * ((a < 0 ? a : 0) + (b < 0 ? b : 0));
        if (pos > 32767 || neg < -32768 || pos + p.round > 32767 || neg + p.round < -32768) return false;
    }
    return true;
}

// One source, written to pDst (pDst == pSrc for the in-place forms).  8-bit
// steps in bytes, 16-bit steps in samples.
using Uni8Fn = void (*)(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep, const Params& p);
using Bi8Fn = void (*)(const Zan8u* pSrc1, Zan32s src1Step, const Zan8u* pSrc2, Zan32s src2Step, Zan8u* pDst,
                       Zan32s dstStep, const Params& p);
using Uni16Fn = void (*)(const Zan16u* pSrc, Zan32s srcStep, Zan16u* pDst, Zan32s dstStep, const Params& p);
using Bi16Fn = void (*)(const Zan16u* pSrc1, Zan32s src1Step, const Zan16u* pSrc2, Zan32s src2Step, Zan16u* pDst,
                        Zan32s dstStep, const Params& p);
// (a + b + 1) >> 1 clamped to 0..max, height rows of the catalogue entry's
// width; steps in samples.
using Avg16Fn = void (*)(const Zan16u* pSrc1, Zan32s src1Step, const Zan16u* pSrc2, Zan32s src2Step, Zan16u* pDst,
                         Zan32s dstStep, Zan32s height, Zan32s max);

// Catalogue (h264weight.cpp).  width: bytes of a row for the 8-bit kernels
// (2, 4, 8, 16, 32: an interleaved block of w pairs uses the 2w-byte kernel),
// samples for the 16-bit ones; height: rows (avg16: 0, any height 1..16).
// param: 1 for the narrow kernels (parameters for which narrow8 holds), 0
// for the others (parameters for which vector_weights, and for 16-bit
// samples vector_params16, holds).
struct Kernels {
    KernelList<Uni8Fn> uni8;
    KernelList<Bi8Fn> bi8;
    KernelList<Uni8Fn> uni8Narrow;
    KernelList<Bi8Fn> bi8Narrow;
    KernelList<Uni16Fn> uni16;
    KernelList<Bi16Fn> bi16;
    KernelList<Avg16Fn> avg16;
};

}  // namespace zan::h264weight

#define ZAN_H264WEIGHT_CATALOGUES(P)                 \
    namespace zan::P::h264weight {                   \
    extern const zan::h264weight::Kernels kernels;   \
    }
ZAN_H264WEIGHT_CATALOGUES(u8)
ZAN_H264WEIGHT_CATALOGUES(n8)
#undef ZAN_H264WEIGHT_CATALOGUES
