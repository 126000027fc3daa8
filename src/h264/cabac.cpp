// H.264 CABAC encoder: record life, context initialisation, bins, bypass
// bins, termination and residual blocks.  Scalar code on both paths (see
// cabac.h).
#include "h264/cabac.h"

#include <cstdint>
#include <cstring>

#include "zancore.h"

namespace zan::ZAN_PATH {

namespace cabac {

namespace {

constexpr Zan32u kRecordSize = 504;
static_assert(sizeof(ZanCABACState) == kRecordSize, "the record is 504 bytes");

inline Zan32u load_be(const void* p) {
    Zan32u v;
    std::memcpy(&v, p, 4);
    return __builtin_bswap32(v);
}
inline void store_be(void* p, Zan32u v) {
    v = __builtin_bswap32(v);
    std::memcpy(p, &v, 4);
}

// First word position that may not be entered: base + (size - 4) rounded up
// to a multiple of 4.
inline Zan32u* stream_end(Zan8u* base, Zan32u size) {
    return static_cast<Zan32u*>(zanAlignPtr(base + (static_cast<std::intptr_t>(size) - 4), 4));
}

// Adds the emitted bits e, whose lowest bit lands at acc bit `shift`, to the
// current word; stores the word's new value and raises the bytes before it
// when the sum carried out of 64 bits.  Returns the sum.
inline std::uint64_t put_bits(ZanCABACState* st, Zan32u e, unsigned shift) {
    const std::uint64_t old = static_cast<std::uint64_t>(st->currentWord) << 32;
    const std::uint64_t acc = old + (static_cast<std::uint64_t>(e) << (shift & 63));
    store_be(st->pStreamWord, static_cast<Zan32u>(acc >> 32));
    if (acc < old) {
        Zan8u* p = reinterpret_cast<Zan8u*>(st->pStreamWord);
        do {
            --p;
            ++*p;
        } while (*p == 0);
    }
    return acc;
}

// The ordinary bin; the record is left unchanged on zanStsCabacBad.
inline ZanStatus encode_bin(ZanCABACState* st, Zan32u ctxIdx, Zan32u bin) {
    const Zan8u c = st->contexts[ctxIdx];
    const Zan32u rLPS = kRangeTabLPS[c][(st->range >> 6) & 3];
    Zan32u r, l;
    if (bin == static_cast<Zan32u>(c >> 6)) {
        r = st->range - rLPS;
        l = st->low;
    } else {
        r = rLPS;
        l = st->low + st->range - rLPS;
    }
    const int s = r >= 256 ? 0 : 8 - (31 - __builtin_clz(r));
    const Zan32u L = l << s;
    const int d = static_cast<int>(st->bitCount) - s;
    const std::uint64_t acc = put_bits(st, L >> 10, static_cast<unsigned>(d + 32));
    Zan32u* word = st->pStreamWord;
    Zan32u cw;
    if (d < 0) {
        ++word;
        if (word >= st->pStreamEnd) return zanStsCabacBad;
        cw = static_cast<Zan32u>(acc);
    } else {
        cw = static_cast<Zan32u>(acc >> 32);
    }
    st->range = r << s;
    st->low = L & 1023;
    st->bitCount = static_cast<Zan32u>(d + 32) & 31;
    st->currentWord = cw;
    st->pStreamWord = word;
    st->contexts[ctxIdx] = kTransTbl[bin][c];
    return zanStsOk;
}

inline ZanStatus encode_bypass(ZanCABACState* st, Zan32u bin) {
    const Zan32u L = 2 * st->low + (bin == 1 ? st->range : 0);
    const std::uint64_t acc = put_bits(st, L >> 10, st->bitCount + 31);
    Zan32u* word = st->pStreamWord;
    Zan32u cw;
    if (st->bitCount == 0) {
        ++word;
        if (word >= st->pStreamEnd) return zanStsCabacBad;
        cw = static_cast<Zan32u>(acc);
    } else {
        cw = static_cast<Zan32u>(acc >> 32);
    }
    st->low = L & 1023;
    st->bitCount = (st->bitCount + 31) & 31;
    st->currentWord = cw;
    st->pStreamWord = word;
    return zanStsOk;
}

inline bool init_args_bad(Zan32s cabacInitIdc) { return cabacInitIdc < -1 || cabacInitIdc > 2; }

inline bool misaligned(Zan8u* p) { return zanAlignPtr(p, 4) != static_cast<void*>(p); }

void init_record(ZanCABACState* st, Zan8u* base, Zan32u bitOffset, Zan32u streamSize, Zan32s sliceQP,
                 Zan32s cabacInitIdc) {
    st->low = 0;
    st->range = 510;
    st->pStreamBase = base;
    st->pStreamEnd = stream_end(base, streamSize);
    st->startBitOffset = bitOffset;
    if (bitOffset & 7) base[bitOffset >> 3] |= static_cast<Zan8u>(255u >> (bitOffset & 7));
    Zan8u* A = base + ((static_cast<std::uint64_t>(bitOffset) + 7) >> 3);
    const unsigned a = static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(A) & 3);
    static constexpr Zan32u kBitCount[4] = {1, 25, 17, 9};
    static constexpr Zan32u kKeep[4] = {0xFFFFFFFFu, 0xFF000000u, 0xFFFF0000u, 0xFFFFFF00u};
    Zan8u* w = A - (a == 0 ? 4 : a);
    st->pStreamWord = reinterpret_cast<Zan32u*>(w);
    st->bitCount = kBitCount[a];
    st->currentWord = load_be(w) & kKeep[a];
    if (cabacInitIdc != -1)
        InitInterContext_H264(st, sliceQP, cabacInitIdc);
    else
        InitIntraContext_H264(st, sliceQP);
}

inline int clamp_qp(Zan32s q) { return q < 0 ? 0 : (q > 51 ? 51 : q); }

// The significance map, levels and signs of one block; any failing bin's
// status is returned at once.
template <class T>
ZanStatus encode_block(const T* pCoeffs, Zan32s lastCoeffIdx, Zan32u cat, Zan32u log2NumC8x8, Zan32u frameFlag,
                       ZanCABACState* st) {
    const Zan32s n = static_cast<Zan32s>(static_cast<Zan32u>(kMaxNumCoeff[cat]) << (log2NumC8x8 & 31));
    const Zan32s mapLen = lastCoeffIdx == n - 1 ? n - 1 : n;
    const bool frame = frameFlag == 1;
    Zan32u sigBase, lastBase;
    if (cat == 5) {
        sigBase = frame ? 402 : 436;
        lastBase = frame ? 417 : 451;
    } else {
        sigBase = (frame ? 105 : 277) + kCatOffsetSignificant[cat];
        lastBase = (frame ? 166 : 338) + kCatOffsetLast[cat];
    }
    const Zan32s* sigInc8x8 = frame ? kInc8x8SignificantFrame : kInc8x8SignificantField;
    ZanStatus sts;
    for (Zan32s i = 0; i < mapLen; ++i) {
        Zan32u sigInc, lastInc;
        if (cat == 5) {
            sigInc = static_cast<Zan32u>(sigInc8x8[i]);
            lastInc = static_cast<Zan32u>(kInc8x8Last[i]);
        } else if (cat == 3) {
            const Zan32u k = static_cast<Zan32u>(i) >> (log2NumC8x8 & 31);
            sigInc = lastInc = k < 2 ? k : 2;
        } else {
            sigInc = lastInc = static_cast<Zan32u>(i);
        }
        const Zan32u sig = pCoeffs[i] != 0;
        if ((sts = encode_bin(st, sigBase + sigInc, sig)) != zanStsOk) return sts;
        if (sig) {
            const Zan32u last = i == lastCoeffIdx;
            if ((sts = encode_bin(st, lastBase + lastInc, last)) != zanStsOk) return sts;
            if (last) break;
        }
    }
    if (lastCoeffIdx < 0) return zanStsOk;

    const Zan32u base = (cat == 5 ? 426u : 227u) + static_cast<Zan32u>(kCatOffsetAbsLevel[cat]);
    const Zan32u gt1Max = cat == 3 ? 3 : 4;
    Zan32u eq1 = 0, gt1 = 0;
    for (Zan32s i = lastCoeffIdx; i >= 0; --i) {
        const Zan32s v = static_cast<Zan32s>(pCoeffs[i]);
        if (v == 0) continue;
        const Zan32u a = v < 0 ? 0u - static_cast<Zan32u>(v) : static_cast<Zan32u>(v);
        const Zan32u ctx1 = base + (gt1 > 0 ? 0 : (eq1 + 1 < 4 ? eq1 + 1 : 4));
        if ((sts = encode_bin(st, ctx1, a != 1)) != zanStsOk) return sts;
        if (a > 1) {
            const Zan32u ctx2 = base + 5 + (gt1 < gt1Max ? gt1 : gt1Max);
            if (a < 15) {
                for (Zan32u k = 2; k < a; ++k)
                    if ((sts = encode_bin(st, ctx2, 1)) != zanStsOk) return sts;
                if ((sts = encode_bin(st, ctx2, 0)) != zanStsOk) return sts;
            } else {
                for (int k = 0; k < 13; ++k)
                    if ((sts = encode_bin(st, ctx2, 1)) != zanStsOk) return sts;
                // Exp-Golomb suffix of order 0 on a - 15.
                Zan32u rest = a - 15;
                unsigned k = 0;
                while (k < 32 && rest >= (1u << k)) {
                    if ((sts = encode_bypass(st, 1)) != zanStsOk) return sts;
                    rest -= 1u << k;
                    ++k;
                }
                if ((sts = encode_bypass(st, 0)) != zanStsOk) return sts;
                while (k-- > 0)
                    if ((sts = encode_bypass(st, (rest >> k) & 1)) != zanStsOk) return sts;
            }
            ++gt1;
        } else {
            ++eq1;
        }
        if ((sts = encode_bypass(st, v < 0 ? 1 : 0)) != zanStsOk) return sts;
    }
    return zanStsOk;
}

template <class T>
ZanStatus residual_block(const T* pCoeffs, Zan32s lastCoeffIdx, Zan32u ctxBlockCat, Zan32u log2NumC8x8,
                         Zan32u frameFlag, ZanCABACState* st) {
    if (!pCoeffs || !st) return zanStsNullPtr;
    if (ctxBlockCat > 5 || frameFlag > 1) return zanStsOutOfRange;
    if (log2NumC8x8 != 0 && ctxBlockCat != 3) return zanStsBadArg;
    ZanCABACState saved;
    std::memcpy(&saved, st, sizeof saved);
    const ZanStatus sts = encode_block(pCoeffs, lastCoeffIdx, ctxBlockCat, log2NumC8x8, frameFlag, st);
    if (sts == zanStsOk) return sts;
    // Undo: first a carry that the block sent into the bytes before the
    // saved word, then the record.
    bool carried;
    if (st->pStreamWord == saved.pStreamWord) {
        carried = st->currentWord < saved.currentWord;
    } else {
        Zan32u inMemory;  // as it lies in memory, not swapped
        std::memcpy(&inMemory, saved.pStreamWord, 4);
        carried = inMemory < saved.currentWord;
    }
    if (carried) {
        Zan8u* p = reinterpret_cast<Zan8u*>(st->pStreamWord);
        do {
            --p;
            --*p;
        } while (*p == 0xFF);
    }
    std::memcpy(st, &saved, sizeof saved);
    return sts;
}

}  // namespace

void InitIntraContext_H264(ZanCABACState* st, Zan32s sliceQP) {
    const int q = clamp_qp(sliceQP);
    for (int i = 0; i < kNumContexts; ++i) {
        if (i >= 11 && i < 60) continue;
        st->contexts[i] = context_byte(kMNIntra[i].m, kMNIntra[i].n, q);
    }
    st->contexts[kTerminateCtx] = kTerminateByte;
}

void InitInterContext_H264(ZanCABACState* st, Zan32s sliceQP, Zan32s cabacInitIdc) {
    const int q = clamp_qp(sliceQP);
    const MN* mn = kMNInter[cabacInitIdc];
    for (int i = 11; i < kNumContexts; ++i) st->contexts[i] = context_byte(mn[i].m, mn[i].n, q);
    st->contexts[kTerminateCtx] = kTerminateByte;
}

}  // namespace cabac

using namespace cabac;

ZanStatus zaniCABACGetSize_H264(Zan32u* pSize) {
    if (!pSize) return zanStsNullPtr;
    *pSize = kRecordSize;
    return zanStsOk;
}

ZanStatus zaniCABACInit_H264(ZanCABACState* pCabacState, Zan8u* pBitStream, Zan32u bitOffset, Zan32u streamSize,
                             Zan32s sliceQP, Zan32s cabacInitIdc) {
    if (!pCabacState || !pBitStream) return zanStsNullPtr;
    if (init_args_bad(cabacInitIdc)) return zanStsOutOfRange;
    if (streamSize == 0) return zanStsSizeBad;
    if (misaligned(pBitStream)) return zanStsMisalignedBuf;
    init_record(pCabacState, pBitStream, bitOffset, streamSize, sliceQP, cabacInitIdc);
    return zanStsOk;
}

ZanStatus zaniCABACInitAlloc_H264(ZanCABACState** ppCabacState, Zan8u* pBitStream, Zan32u bitOffset,
                                  Zan32u streamSize, Zan32s sliceQP, Zan32s cabacInitIdc) {
    if (!ppCabacState || !pBitStream) return zanStsNullPtr;
    if (init_args_bad(cabacInitIdc)) return zanStsOutOfRange;
    if (streamSize == 0) return zanStsSizeBad;
    if (misaligned(pBitStream)) return zanStsMisalignedBuf;
    auto* st = static_cast<ZanCABACState*>(zanMalloc(static_cast<Zan32s>(kRecordSize)));
    if (!st) return zanStsAllocFailed;
    init_record(st, pBitStream, bitOffset, streamSize, sliceQP, cabacInitIdc);
    *ppCabacState = st;
    return zanStsOk;
}

ZanStatus zaniCABACFree_H264(ZanCABACState* pCabacState) {
    if (!pCabacState) return zanStsNullPtr;
    zanFree(pCabacState);
    return zanStsOk;
}

ZanStatus zaniCABACSetStream_H264(Zan8u* pBitStream, Zan32u streamSize, ZanCABACState* pCabacState) {
    if (!pBitStream || !pCabacState) return zanStsNullPtr;
    if (streamSize == 0) return zanStsSizeBad;
    if (misaligned(pBitStream)) return zanStsMisalignedBuf;
    ZanCABACState* st = pCabacState;
    const std::ptrdiff_t wordOffset = reinterpret_cast<Zan8u*>(st->pStreamWord) - st->pStreamBase;
    const std::ptrdiff_t oldLength = reinterpret_cast<Zan8u*>(st->pStreamEnd) - st->pStreamBase;
    Zan32u* newWord = reinterpret_cast<Zan32u*>(pBitStream + wordOffset);
    Zan32u* newEnd = stream_end(pBitStream, streamSize);
    const std::ptrdiff_t newLength = reinterpret_cast<Zan8u*>(newEnd) - pBitStream;
    if (newEnd <= newWord || newLength <= oldLength) return zanStsSizeBad;
    st->pStreamWord = newWord;
    st->pStreamBase = pBitStream;
    st->pStreamEnd = newEnd;
    return zanStsOk;
}

ZanStatus zaniCABACGetStreamSize_H264(Zan32u* pBitCount, const ZanCABACState* pCabacState) {
    if (!pBitCount || !pCabacState) return zanStsNullPtr;
    const ZanCABACState* st = pCabacState;
    const std::ptrdiff_t bytes = reinterpret_cast<const Zan8u*>(st->pStreamWord) - st->pStreamBase;
    const Zan32u bits = 32u - st->bitCount + 8u * static_cast<Zan32u>(bytes);
    if (bits == 0xFFFFFFFFu) {
        *pBitCount = 0;
        return zanStsOk;
    }
    const Zan32u start = (st->startBitOffset + 7) & ~7u;
    *pBitCount = bits > start ? bits : start;
    return zanStsOk;
}

ZanStatus zaniCABACGetContexts_H264(const ZanCABACState* pCabacState, Zan32u firstCtx, Zan8u* pDst, Zan32u count) {
    if (!pCabacState || !pDst) return zanStsNullPtr;
    if (static_cast<std::uint64_t>(firstCtx) + count > static_cast<std::uint64_t>(kNumContexts))
        return zanStsOutOfRange;
    std::memcpy(pDst, pCabacState->contexts + firstCtx, count);
    return zanStsOk;
}

ZanStatus zaniCABACEncodeBin_H264(Zan32u ctxIdx, Zan32u bin, ZanCABACState* pCabacState) {
    if (!pCabacState) return zanStsNullPtr;
    if (bin > 1 || ctxIdx >= static_cast<Zan32u>(kNumContexts)) return zanStsOutOfRange;
    return encode_bin(pCabacState, ctxIdx, bin);
}

ZanStatus zaniCABACEncodeBinBypass_H264(Zan32u bin, ZanCABACState* pCabacState) {
    if (!pCabacState) return zanStsNullPtr;
    if (bin > 1) return zanStsOutOfRange;
    return encode_bypass(pCabacState, bin);
}

ZanStatus zaniCABACTerminateSlice_H264(Zan32u* pStreamBytes, ZanCABACState* pCabacState) {
    if (!pStreamBytes || !pCabacState) return zanStsNullPtr;
    ZanCABACState* st = pCabacState;
    const Zan32u t = st->bitCount + 29;
    const std::uint64_t acc = ((static_cast<std::uint64_t>((st->low >> 7) | 1)) << t) +
                              (static_cast<std::uint64_t>(st->currentWord) << 32);
    store_be(st->pStreamWord, static_cast<Zan32u>(acc >> 32));
    if (t < 32) {
        Zan32u* next = st->pStreamWord + 1;
        if (reinterpret_cast<Zan8u*>(next) + 4 >= reinterpret_cast<Zan8u*>(st->pStreamEnd)) return zanStsNoMem;
        store_be(next, static_cast<Zan32u>(acc));
    }
    const std::ptrdiff_t bytes = reinterpret_cast<Zan8u*>(st->pStreamWord) - st->pStreamBase;
    *pStreamBytes = (71 - t) / 8 + static_cast<Zan32u>(bytes);
    st->low = st->range = st->bitCount = st->currentWord = 0;
    st->pStreamWord = nullptr;
    st->pStreamBase = nullptr;
    st->pStreamEnd = nullptr;
    return zanStsOk;
}

ZanStatus zaniCABACEncodeResidualBlock_H264_16s(const Zan16s* pCoeffs, Zan32s lastCoeffIdx, Zan32u ctxBlockCat,
                                                Zan32u log2NumC8x8, Zan32u frameFlag, ZanCABACState* pCabacState) {
    return residual_block(pCoeffs, lastCoeffIdx, ctxBlockCat, log2NumC8x8, frameFlag, pCabacState);
}

ZanStatus zaniCABACEncodeResidualBlock_H264_32s(const Zan32s* pCoeffs, Zan32s lastCoeffIdx, Zan32u ctxBlockCat,
                                                Zan32u log2NumC8x8, Zan32u frameFlag, ZanCABACState* pCabacState) {
    return residual_block(pCoeffs, lastCoeffIdx, ctxBlockCat, log2NumC8x8, frameFlag, pCabacState);
}

}  // namespace zan::ZAN_PATH
