// The general table-driven VLC decoder: building a multi-level lookup table
// from a caller's code list, walking it on the word cursor, and
// the two single-code decoders.
//
// Code list (Zan32s): [0] unused, [1] n levels, [2 .. n+1] the
// width of each level, then per code length L = 1, 2, ... a count and that
// many rows, a negative count ending the array.  A row is (code, value) for a
// plain table and (code, run, level) for a run-level table; the code holds
// its L bits right-aligned.
//
// Bit-stream parsing has no vector kernel worth writing: the scalar code
// below is the implementation.
#include <cstring>

#include "frame/bodies.h"
#include "mpeg12/mpeg12.h"
#include "support/support.h"

namespace zan::ZAN_PATH::vlc {

using zan::mpeg12::kInvalidEntry;
using zan::mpeg12::kLinkTag;

namespace {

// 2^w + 1 words of a level w bits wide, or -1 when w makes no table that the
// allocator could hold.
Zan64s level_words(Zan32s w) { return w < 0 || w > 28 ? -1 : (Zan64s{1} << w) + 1; }

struct CodeLen {
    Zan32u code;
    Zan32s len;
};

}  // namespace

ZanStatus build_table(const Zan32s* pSrcTable, bool runLevel, Zan32u** ppDstTable) {
    const Zan32s rowWords = runLevel ? 3 : 2;
    const Zan32s levels = pSrcTable[1];
    const Zan32s* widths = pSrcTable + 2;
    const Zan32s* groups = pSrcTable + 2 + levels;

    // Pass 1: count the codes and size the table, keeping each code seen in a
    // scratch list so that a sub-table is counted once per distinct prefix.
    Zan64s codes = 0;
    for (const Zan32s* q = groups; *q >= 0; q += 1 + static_cast<ptrdiff_t>(*q) * rowWords) codes += *q;
    Zan64s listBytes = codes * static_cast<Zan64s>(sizeof(CodeLen));
    if (listBytes > 0x7FFFFFFF) return zanStsNoMem;
    auto* list = reinterpret_cast<CodeLen*>(zansMalloc_8u(static_cast<Zan32s>(listBytes)));
    if (!list) return zanStsNoMem;

    Zan64s size = level_words(widths[0]);
    Zan64s listed = 0;
    Zan32s L = 1;
    for (const Zan32s* q = groups; *q >= 0 && size >= 0; ++L) {
        Zan32s count = *q++;
        for (Zan32s r = 0; r < count; ++r, q += rowWords) {
            const Zan32u code = static_cast<Zan32u>(q[0]);
            Zan32s c = 0;
            for (Zan32s l = 0; l < levels && size >= 0; ++l) {
                c += widths[l];
                if (c >= L) break;
                const Zan32u prefix = code >> (L - c);
                bool seen = false;
                for (Zan64s j = 0; j < listed && !seen; ++j)
                    seen = list[j].len > c && (list[j].code >> (list[j].len - c)) == prefix;
                if (!seen) {
                    Zan64s sub = level_words(widths[l + 1]);
                    size = sub < 0 ? -1 : size + sub;
                }
            }
            list[listed++] = {code, L};
        }
    }
    zansFree(list);
    if (size <= 0 || size * 4 > 0x7FFFFFFF) return zanStsNoMem;

    // Pass 2: every word invalid, then the codes in code list order.
    auto* table = reinterpret_cast<Zan32u*>(zansMalloc_8u(static_cast<Zan32s>(size * 4)));
    if (!table) return zanStsNoMem;
    for (Zan64s i = 0; i < size; ++i) table[i] = kInvalidEntry;
    table[0] = static_cast<Zan32u>(widths[0]);
    Zan64s next = level_words(widths[0]);

    L = 1;
    for (const Zan32s* q = groups; *q >= 0; ++L) {
        Zan32s count = *q++;
        for (Zan32s r = 0; r < count; ++r, q += rowWords) {
            const Zan32u code = static_cast<Zan32u>(q[0]);
            Zan32u leafBits;
            if (runLevel)
                leafBits = (static_cast<Zan32u>(q[2]) << 16) | ((static_cast<Zan32u>(q[1]) & 0xFFu) << 8);
            else
                leafBits = static_cast<Zan32u>(q[1]) << 8;
            Zan64s k = 0;  // position of the current sub-table's width word
            Zan32s c = 0;
            for (Zan32s l = 0; l < levels; ++l) {
                const Zan32s before = c;
                const Zan32s w = widths[l];
                c += w;
                if (c < L) {
                    const Zan64s at = k + 1 + ((code >> (L - c)) & ((Zan32u{1} << w) - 1));
                    if (at >= size) break;
                    if (table[at] == kInvalidEntry) {
                        Zan64s sub = level_words(widths[l + 1]);
                        if (sub < 0 || next + sub > size) break;
                        table[at] = static_cast<Zan32u>(next << 8) | kLinkTag;
                        table[next] = static_cast<Zan32u>(widths[l + 1]);
                        k = next;
                        next += sub;
                    } else if (table[at] & kLinkTag) {
                        k = table[at] >> 8;
                    } else {
                        break;  // a shorter code already ends here: the row has no place
                    }
                } else {
                    const Zan32s g = c - L;
                    const Zan32u rest = (L - before) >= 32 ? code : code & ((Zan32u{1} << (L - before)) - 1);
                    const Zan64s first = k + 1 + (static_cast<Zan64s>(rest) << g);
                    for (Zan64s j = 0; j < (Zan64s{1} << g) && first + j < size; ++j)
                        table[first + j] = leafBits | static_cast<Zan32u>(g);
                    break;
                }
            }
        }
    }
    *ppDstTable = table;
    return zanStsOk;
}

Zan32u walk_at(Zan32u** ppBitStream, Zan32s* pBitOffset, const Zan32u* pTable) {
    WordCursor c(*ppBitStream, *pBitOffset);
    Zan32u e = walk(c, pTable);
    c.store(ppBitStream, pBitOffset);
    return e;
}

}  // namespace zan::ZAN_PATH::vlc

// =============================================================== exports

namespace zan::ZAN_PATH {

ZanStatus zaniHuffmanTableInitAlloc_32s(const Zan32s* pSrcTable, Zan32u** ppDstTable) {
    if (!pSrcTable || !ppDstTable) return zanStsNullPtr;
    return vlc::build_table(pSrcTable, false, ppDstTable);
}

ZanStatus zaniHuffmanRunLevelTableInitAlloc_32s(const Zan32s* pSrcTable, Zan32u** ppDstTable) {
    if (!pSrcTable || !ppDstTable) return zanStsNullPtr;
    return vlc::build_table(pSrcTable, true, ppDstTable);
}

ZanStatus zaniHuffmanTableFree_32s(Zan32u* pTable) {
    if (!pTable) return zanStsNullPtr;
    zansFree(pTable);
    return zanStsOk;
}

ZanStatus zaniDecodeHuffmanOne_1u32s(Zan32u** ppBitStream, Zan32s* pBitOffset, Zan32s* pDecodedValue,
                                     const Zan32u* pTable) {
    if (!ppBitStream || !pBitOffset || !pDecodedValue || !pTable) return zanStsNullPtr;
    if (!*ppBitStream) return zanStsNullPtr;
    WordCursor c(*ppBitStream, *pBitOffset);
    const Zan32u e = vlc::walk_raw(c, pTable);
    if (vlc::is_invalid(e)) {
        // The cursor stays where the walk ended: no give-back.
        *pDecodedValue = static_cast<Zan32s>(zan::mpeg12::kInvalidMark);
        c.store(ppBitStream, pBitOffset);
        return zanStsVlcCodeBad;
    }
    c.give_back(static_cast<Zan32s>(e & 0xFFu));
    *pDecodedValue = vlc::leaf_value(e);
    c.store(ppBitStream, pBitOffset);
    return zanStsOk;
}

ZanStatus zaniDecodeHuffmanPair_1u16s(Zan32u** ppBitStream, Zan32s* pBitOffset, const Zan32u* pTable,
                                      Zan8u* pRun, Zan16s* pLevel) {
    if (!ppBitStream || !pBitOffset || !pTable || !pRun || !pLevel) return zanStsNullPtr;
    if (!*ppBitStream) return zanStsNullPtr;
    WordCursor c(*ppBitStream, *pBitOffset);
    const Zan32u e = vlc::walk(c, pTable);
    if (vlc::is_invalid(e)) return zanStsVlcCodeBad;  // cursor as at entry
    *pRun = static_cast<Zan8u>(vlc::leaf_run(e));
    *pLevel = static_cast<Zan16s>(vlc::leaf_level(e));
    c.store(ppBitStream, pBitOffset);
    return zanStsOk;
}

}  // namespace zan::ZAN_PATH
