// Decode and dequantise one whole 8x8 MPEG-1 or MPEG-2 block in one pass:
// DCT coefficient codes through the caller's built run-level tables, escapes,
// DC prediction, dequantisation, MPEG-1 oddification and MPEG-2 mismatch
// control.
//
// The block decoders are bit-stream parsers: the scalar code is the
// implementation (no vector kernel).  The cursor is worked on in a local copy
// and written back only on success, so a failing call leaves it as it was.
#include <cstring>

#include "frame/bodies.h"
#include "mpeg12/mpeg12.h"

namespace zan::ZAN_PATH::mpeg12 {
namespace {

using zan::mpeg12::kRunEob;
using zan::mpeg12::kRunEscape;

// The flat weighting matrix used when an MPEG-2 non-intra call has none.
constexpr Zan16s kQmatrix[64] = {16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16,
                                 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16,
                                 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16,
                                 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16};

inline Zan32s sign(Zan32s v) { return (v > 0) - (v < 0); }

// a * b * c in wrapping 32-bit arithmetic.
inline Zan32s mul3(Zan32s a, Zan32s b, Zan32s c) {
    return static_cast<Zan32s>(static_cast<Zan32u>(a) * static_cast<Zan32u>(b) * static_cast<Zan32u>(c));
}

// One (run, level) pair.
struct Pair {
    Zan32s run, level;
};

inline Pair leaf_pair(Zan32u e) { return {vlc::leaf_run(e), vlc::leaf_level(e)}; }

// MPEG-2 escape: 6 bits of run, 12 bits of signed level.
inline Pair escape_mpeg2(WordCursor& c) {
    Zan32u b = c.read(18);
    return {static_cast<Zan32s>(b >> 12), static_cast<Zan32s>(b << 20) >> 20};
}

// MPEG-1 escape: 6 bits of run, 8 bits of signed level; a level of 0 or -128
// is followed by 8 more bits that give 0..255 or, after -128, -256..-1.
inline Pair escape_mpeg1(WordCursor& c) {
    Zan32s run = static_cast<Zan32s>(c.read(6));
    Zan32s level = static_cast<Zan8s>(c.read(8));
    if ((level & 0x7F) == 0) {
        Zan32s more = static_cast<Zan32s>(c.read(8));
        level = level == -128 ? more - 256 : more;
    }
    return {run, level};
}

// A code of a run-level table with its escape.
template <bool Mpeg1>
inline Pair next_pair(WordCursor& c, const Zan32u* table) {
    Pair v = leaf_pair(vlc::walk(c, table));
    if (v.run == kRunEscape) v = Mpeg1 ? escape_mpeg1(c) : escape_mpeg2(c);
    return v;
}

// The first code of a non-intra block: a leading 1 bit is the short code of
// run 0, level +1 (1 then 0) or -1 (1 then 1); otherwise the first table.
template <bool Mpeg1>
inline Pair first_pair(WordCursor& c, const Zan32u* table) {
    if (c.peek1()) {
        Zan32u b = c.read(2);
        return {0, (b & 1u) ? -1 : 1};
    }
    return next_pair<Mpeg1>(c, table);
}

// MPEG-1 reconstruction of a value already divided: stored as 16 bits, made
// odd by one step toward zero, clamped to -2048..2047.
inline Zan16s oddify(Zan32s divided) {
    Zan32s v = static_cast<Zan16s>(divided);
    if ((v & 1) == 0 && v != 0) v -= sign(v);
    return static_cast<Zan16s>(v < -2048 ? -2048 : v > 2047 ? 2047 : v);
}

inline Zan16s value_mpeg1_inter(Zan32s w, Zan32s qp, Zan32s level) {
    return oddify(mul3(w, qp, 2 * level + sign(level)) / 16);
}
inline Zan16s value_mpeg1_intra(Zan32s w, Zan32s qp, Zan32s level) {
    return oddify(mul3(w, qp, 2 * level) / 16);
}
inline Zan16s value_mpeg2_inter(Zan32s w, Zan32s qp, Zan32s level) {
    return static_cast<Zan16s>(mul3(w, qp, 2 * level + sign(level)) / 32);
}
inline Zan16s value_mpeg2_intra(Zan32s w, Zan32s qp, Zan32s level) {
    return static_cast<Zan16s>(mul3(w, level * 2, qp) / 32);
}

// Mismatch control: with an even sum the last entry moves by one (odd down,
// even up), which is a flip of its low bit.
inline void mismatch(Zan16s* block, Zan32s sum) {
    if ((sum & 1) == 0) block[63] = static_cast<Zan16s>(block[63] ^ 1);
}

// The DC differential of an intra block: a size from the DC table, then that
// many bits.  False when the size is no readable count (above 32, which is
// what the invalid entry's value gives).
inline bool dc_differential(Zan32s size, WordCursor& c, Zan32s* diff) {
    if (size < 0 || size > 32) return false;
    if (size == 0) {
        *diff = 0;
        return true;
    }
    const Zan32u bits = c.read(size);
    if ((bits >> (size - 1)) & 1u)
        *diff = static_cast<Zan32s>(bits);
    else
        *diff = static_cast<Zan32s>(static_cast<Zan64s>(bits) - (Zan64s{1} << size) + 1);
    return true;
}

// The AC codes of a block after its first coefficient: index is the scan
// index of the last one stored.  Returns false when a code takes the index
// above 63 (the invalid entry does so through its run of 241).
template <bool Mpeg1, class Value>
inline bool ac_codes(WordCursor& c, const Zan32u* table, const Zan32s* pScan, const Zan16s* W, Zan32s QP,
                     Zan16s* block, Zan32s& index, Zan32s& sum, Value value) {
    for (;;) {
        Pair v = leaf_pair(vlc::walk(c, table));
        if (v.run == kRunEob) return true;
        if (v.run == kRunEscape) v = Mpeg1 ? escape_mpeg1(c) : escape_mpeg2(c);
        index += v.run + 1;
        if (index > 63) return false;
        const Zan32s p = pScan[index];
        const Zan16s x = value(W[p], QP, v.level);
        block[p] = x;
        sum += x;
    }
}

}  // namespace
}  // namespace zan::ZAN_PATH::mpeg12

// =============================================================== exports

namespace zan::ZAN_PATH {

ZanStatus zaniReconstructDCTBlock_MPEG2_32s(Zan32u** ppBitStream, Zan32s* pBitOffset, const Zan32u* pFirstTable,
                                            const Zan32u* pNextTable, const Zan32s* pScan, Zan32s QP,
                                            const Zan16s* pQuantMatrix, Zan16s* pDstBlock, Zan32s* pDstSize) {
    using namespace mpeg12;
    if (!ppBitStream || !pBitOffset || !pFirstTable || !pNextTable || !pScan || !pDstBlock || !pDstSize)
        return zanStsNullPtr;
    if (!*ppBitStream) return zanStsNullPtr;
    const Zan16s* W = pQuantMatrix ? pQuantMatrix : kQmatrix;
    std::memset(pDstBlock, 0, 64 * sizeof(Zan16s));
    WordCursor c(*ppBitStream, *pBitOffset);

    Pair v = first_pair<false>(c, pFirstTable);
    Zan32s sum = 0;
    if (v.run < 64) {  // only a run the scan table has a position for is stored
        const Zan32s p = pScan[v.run];
        pDstBlock[p] = value_mpeg2_inter(W[p], QP, v.level);
        sum = pDstBlock[p];
    }
    Zan32s index = v.run & 63;
    if (!ac_codes<false>(c, pNextTable, pScan, W, QP, pDstBlock, index, sum, value_mpeg2_inter))
        return zanStsVlcCodeBad;
    *pDstSize = index == 0 ? 1 : index;
    mismatch(pDstBlock, sum);
    c.store(ppBitStream, pBitOffset);
    return zanStsOk;
}

ZanStatus zaniReconstructDCTBlockIntra_MPEG2_32s(Zan32u** ppBitStream, Zan32s* pBitOffset,
                                                 const Zan32u* pDCSizeTable, const Zan32u* pACTable,
                                                 const Zan32s* pScan, Zan32s QP, const Zan16s* pQuantMatrix,
                                                 Zan16s* pDCPred, Zan32s intraDCShift, Zan16s* pDstBlock,
                                                 Zan32s* pDstSize) {
    using namespace mpeg12;
    if (!ppBitStream || !pBitOffset || !pDCSizeTable || !pACTable || !pScan || !pQuantMatrix || !pDCPred ||
        !pDstBlock || !pDstSize)
        return zanStsNullPtr;
    if (!*ppBitStream) return zanStsNullPtr;
    std::memset(pDstBlock, 0, 64 * sizeof(Zan16s));
    WordCursor c(*ppBitStream, *pBitOffset);

    Zan32s diff;
    if (!dc_differential(vlc::leaf_value(vlc::walk(c, pDCSizeTable)), c, &diff)) return zanStsVlcCodeBad;
    const Zan16s pred = static_cast<Zan16s>(static_cast<Zan32u>(*pDCPred) + static_cast<Zan32u>(diff));
    *pDCPred = pred;
    pDstBlock[0] = static_cast<Zan16s>(static_cast<Zan32u>(pred) << (intraDCShift & 31));
    Zan32s sum = pDstBlock[0];
    Zan32s index = 0;
    if (!ac_codes<false>(c, pACTable, pScan, pQuantMatrix, QP, pDstBlock, index, sum, value_mpeg2_intra))
        return zanStsVlcCodeBad;
    *pDstSize = index;
    mismatch(pDstBlock, sum);
    c.store(ppBitStream, pBitOffset);
    return zanStsOk;
}

ZanStatus zaniReconstructDCTBlock_MPEG1_32s(Zan32u** ppBitStream, Zan32s* pBitOffset, const Zan32u* pFirstTable,
                                            const Zan32u* pNextTable, const Zan32s* pScan, Zan32s QP,
                                            const Zan16s* pQuantMatrix, Zan16s* pDstBlock, Zan32s* pDstSize) {
    using namespace mpeg12;
    if (!ppBitStream || !pBitOffset || !pFirstTable || !pNextTable || !pScan || !pQuantMatrix || !pDstBlock ||
        !pDstSize)
        return zanStsNullPtr;
    if (!*ppBitStream) return zanStsNullPtr;
    std::memset(pDstBlock, 0, 64 * sizeof(Zan16s));
    WordCursor c(*ppBitStream, *pBitOffset);

    Pair v = first_pair<true>(c, pFirstTable);
    if (v.run >= 64) {
        // A first code with a run the block cannot hold (an end of block in
        // the first table) ends the call: the run is reported, nothing stored.
        *pDstSize = v.run;
        c.store(ppBitStream, pBitOffset);
        return zanStsOk;
    }
    const Zan32s p = pScan[v.run];
    pDstBlock[p] = value_mpeg1_inter(pQuantMatrix[p], QP, v.level);
    Zan32s index = v.run, sum = 0;
    if (!ac_codes<true>(c, pNextTable, pScan, pQuantMatrix, QP, pDstBlock, index, sum, value_mpeg1_inter))
        return zanStsVlcCodeBad;
    *pDstSize = index;
    c.store(ppBitStream, pBitOffset);
    return zanStsOk;
}

ZanStatus zaniReconstructDCTBlockIntra_MPEG1_32s(Zan32u** ppBitStream, Zan32s* pBitOffset,
                                                 const Zan32u* pDCSizeTable, const Zan32u* pACTable,
                                                 const Zan32s* pScan, Zan32s QP, const Zan16s* pQuantMatrix,
                                                 Zan16s* pDCPred, Zan16s* pDstBlock, Zan32s* pDstSize) {
    using namespace mpeg12;
    if (!ppBitStream || !pBitOffset || !pDCSizeTable || !pACTable || !pScan || !pQuantMatrix || !pDCPred ||
        !pDstBlock || !pDstSize)
        return zanStsNullPtr;
    if (!*ppBitStream) return zanStsNullPtr;
    std::memset(pDstBlock, 0, 64 * sizeof(Zan16s));
    WordCursor c(*ppBitStream, *pBitOffset);

    // The DC size as the single-value decoder reads it: the invalid code fails.
    const Zan32u e = vlc::walk_raw(c, pDCSizeTable);
    if (vlc::is_invalid(e)) return zanStsVlcCodeBad;
    c.give_back(static_cast<Zan32s>(e & 0xFFu));
    Zan32s diff;
    if (!dc_differential(vlc::leaf_value(e), c, &diff)) return zanStsVlcCodeBad;
    pDstBlock[0] = static_cast<Zan16s>(8u * static_cast<Zan32u>(diff) + static_cast<Zan32u>(*pDCPred));
    *pDCPred = pDstBlock[0];
    Zan32s index = 0, sum = 0;
    if (!ac_codes<true>(c, pACTable, pScan, pQuantMatrix, QP, pDstBlock, index, sum, value_mpeg1_intra))
        return zanStsVlcCodeBad;
    *pDstSize = index;
    c.store(ppBitStream, pBitOffset);
    return zanStsOk;
}

}  // namespace zan::ZAN_PATH
