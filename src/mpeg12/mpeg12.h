// MPEG-1/2 coding: the general table-driven VLC decoder (built tables and
// their walk), block decode with inverse quantisation, block encode, and the
// stand-alone quantisers.
//
// Built decoding table (an array of Zan32u, made by
// zaniHuffmanTableInitAlloc_32s or zaniHuffmanRunLevelTableInitAlloc_32s):
//   word 0 holds the width w of the first level, words 1 .. 2^w its entries;
//   further sub-tables follow, each a width word at some position k and
//   2^width entries from k + 1.  An entry is
//     a link       low byte 128, bits 8 and up: position k of the sub-table;
//     a plain leaf low byte g (look-ahead bits to give back), value in bits 8 up;
//     a run-level leaf  low byte g, run in bits 8..15, signed level in 16..31;
//     the invalid entry 0x00F0F101 (g = 1, mark 0xF0F1 in bits 8 and up).
//
// The walk (vlc::walk below) is shared with the H.264 CAVLC decoders.
#pragma once

#include "common/kernel_pair.h"
#include "zanvc.h"

namespace zan::mpeg12 {

// The invalid entry of a built decoding table and its mark (bits 8 and up).
inline constexpr Zan32u kInvalidEntry = 0x00F0F101u;
inline constexpr Zan32u kInvalidMark = 0xF0F1u;  // 61681
inline constexpr Zan32u kLinkTag = 128;
// Runs with a meaning of their own in run-level tables.
inline constexpr Zan32s kRunEscape = 255;
inline constexpr Zan32s kRunEob = 254;

// Forward quantisation of 64 coefficients in place; returns the count of
// nonzero results the form counts.  The matrix argument is ignored by the
// integer forms.
using QuantFn = Zan32s (*)(Zan16s* pSrcDst, Zan32s QP, const Zan32f* pInvMatrix);
// Inverse quantisation of 64 coefficients in place, with mismatch control.
// The matrix argument is ignored by the form without a matrix.
using InvQuantFn = void (*)(Zan16s* pSrcDst, Zan32s QP, const Zan16s* pMatrix);
// Count of nonzero entries among 64.
using CountFn = Zan32s (*)(const Zan16s* pSrc);

// Catalogue of the quantiser kernels (quant.cpp).  param: 16 for a kernel
// with aligned loads and stores, which needs pSrcDst and the matrix on 16-byte
// boundaries; 0 for any alignment.  width: 1 for an intra form (entry 0 kept,
// not counted), 0 otherwise; height: 1 for a form that takes a matrix.
struct QuantKernels {
    KernelList<QuantFn> quant;
    KernelList<InvQuantFn> invQuant;
    KernelList<CountFn> count;
};

}  // namespace zan::mpeg12

// Internal functions of both builds, for the other families' decoders and
// for the tests.
#define ZAN_MPEG12_DECLARATIONS(P)                                                                     \
    namespace zan::P::mpeg12 {                                                                         \
    extern const zan::mpeg12::QuantKernels quant_kernels;                                              \
    }                                                                                                  \
    namespace zan::P::vlc {                                                                            \
    /* Builds a decoding table from a caller's code list (rows of 2 words with        */   \
    /* runLevel false, 3 words with runLevel true).  zanStsNoMem when an allocation fails or     */   \
    /* the code list holds no code; *ppDstTable is then left alone. */                            \
    ZanStatus build_table(const Zan32s* pSrcTable, bool runLevel, Zan32u** ppDstTable);              \
    /* One walk of a built table at the cursor: returns the leaf (or the invalid entry) and      */   \
    /* leaves the cursor behind the code, the look-ahead bits given back. */                          \
    Zan32u walk_at(Zan32u** ppBitStream, Zan32s* pBitOffset, const Zan32u* pTable);                 \
    }
ZAN_MPEG12_DECLARATIONS(u8)
ZAN_MPEG12_DECLARATIONS(n8)
#undef ZAN_MPEG12_DECLARATIONS

// The inline walk, for kernel sources (compiled with ZAN_PATH).
#if defined(ZAN_PATH)
#include "common/wordcursor.h"

namespace zan::ZAN_PATH::vlc {

// Walks a built table from the cursor: reads the first level's width of bits,
// follows links (reading each sub-table's width of bits), and returns the
// entry it ends on, cursor still behind all bits read.  The caller gives back
// the entry's low byte (give_back(entry & 0xFF)) when it wants the cursor
// right behind the code; the invalid entry has a low byte of 1.  Any reader
// with read(n) and give_back(n) of the word cursor's meaning will do.
template <class Cursor>
inline Zan32u walk_raw(Cursor& c, const Zan32u* table) {
    Zan32u e = table[c.read(static_cast<Zan32s>(table[0])) + 1];
    while (e & 0x80u) {
        Zan32u k = e >> 8;
        e = table[k + c.read(static_cast<Zan32s>(table[k])) + 1];
    }
    return e;
}

// walk_raw followed by the give-back: the cursor ends right behind the code.
template <class Cursor>
inline Zan32u walk(Cursor& c, const Zan32u* table) {
    Zan32u e = walk_raw(c, table);
    c.give_back(static_cast<Zan32s>(e & 0xFFu));
    return e;
}

// Fields of a leaf.
inline bool is_invalid(Zan32u e) { return (e >> 8) == zan::mpeg12::kInvalidMark; }
inline Zan32s leaf_value(Zan32u e) { return static_cast<Zan32s>(e >> 8); }
inline Zan32s leaf_run(Zan32u e) { return static_cast<Zan32s>((e >> 8) & 0xFFu); }
inline Zan32s leaf_level(Zan32u e) { return static_cast<Zan16s>(e >> 16); }

}  // namespace zan::ZAN_PATH::vlc
#endif
