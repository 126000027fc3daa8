// MPEG-2 block encoding: the run-level encoding table and the intra and
// non-intra block writers on the put cursor.
//
// Put cursor: *ppBitStream points at a Zan32u, *pBitOffset holds the number
// of free bits in it, 32 (nothing written there yet) down to 1.  Writing n
// bits with f free: n < f ORs them in at bit f - n; n == f ORs them in at
// bit 0 and moves to the next word with 32 free, without touching it; n > f
// ORs the top f bits in, moves on, and assigns the next word the remaining
// bits left-aligned.  So the caller hands over a cleared buffer.
//
// Encoding table (Zan32u words, rows addressed by byte offsets):
//   word 0        R << 20 | (eob code << 4 | eob length) << 10 | (escape code << 4 | escape length)
//   word r + 1    byte offset of the centre word of row r, r = 0..R
//   row r         centre word: the largest |level| of run r, -1 without rows;
//                 centre +L / -L: code << 16 | length of level +L / -L;
//                 count / 2 slots either side (count: the run's rows).
// Bit writing is serial: the scalar code is the implementation.
#include <cstring>

#include "frame/bodies.h"
#include "mpeg12/mpeg12.h"
#include "support/support.h"

namespace zan::ZAN_PATH::mpeg12 {
namespace {

using zan::mpeg12::kRunEob;
using zan::mpeg12::kRunEscape;

struct PutCursor {
    Zan32u* p;
    Zan32s free;

    void put(Zan32u bits, Zan32s n) {
        const Zan64u b = bits;
        if (n < free) {
            *p |= static_cast<Zan32u>(b << (free - n));
            free -= n;
        } else if (n == free) {
            *p |= bits;
            ++p;
            free = 32;
        } else {
            const Zan32s rest = n - free;
            *p |= static_cast<Zan32u>(b >> rest);
            ++p;
            *p = static_cast<Zan32u>(b << (32 - rest));
            free = 32 - rest;
        }
    }
};

// One nonzero level after run zeros: its code from the table, or the escape
// (6-bit 000001, 6 bits of run, low 12 bits of level).
inline void put_level(PutCursor& c, const Zan32u* table, Zan32s run, Zan32s level) {
    const Zan32s R = static_cast<Zan32s>(table[0] >> 20);
    if (run <= R) {
        const Zan32u* centre = table + table[run + 1] / 4;
        const Zan32s largest = static_cast<Zan32s>(*centre);
        const Zan32s mag = level < 0 ? -level : level;
        if (mag <= largest) {
            const Zan32u e = centre[level];
            c.put(e >> 16, static_cast<Zan32s>(e & 0xFFFFu));
            return;
        }
    }
    c.put((1u << 18) | ((static_cast<Zan32u>(run) & 63u) << 12) | (static_cast<Zan32u>(level) & 0xFFFu), 24);
}

// Scan positions from first on: runs of zeros and levels until coeffCount
// levels have been written in all; then the end-of-block code.
inline void put_ac(PutCursor& c, const Zan16s* block, const Zan32u* table, const Zan32s* pScan, Zan32s first,
                   Zan32s run, Zan32s written, Zan32s coeffCount, Zan32s eobLength, Zan32s eobCode) {
    for (Zan32s i = first; i < 64 && written < coeffCount; ++i) {
        const Zan32s level = block[pScan[i]];
        if (level == 0) {
            ++run;
            continue;
        }
        put_level(c, table, run, level);
        ++written;
        run = 0;
    }
    c.put(static_cast<Zan32u>(eobCode), eobLength);
}

inline Zan32s bit_length(Zan32u v) { return v ? 32 - __builtin_clz(v) : 0; }

}  // namespace
}  // namespace zan::ZAN_PATH::mpeg12

// =============================================================== exports

namespace zan::ZAN_PATH {

ZanStatus zaniCreateRLEncodeTable(const Zan32s* pSrcTable, Zan32u** ppDstTable) {
    if (!pSrcTable || !ppDstTable) return zanStsNullPtr;
    const Zan32s* groups = pSrcTable + 2 + pSrcTable[1];

    // Pass 1: the largest run, the rows per run, the escape and end-of-block codes.
    Zan32s counts[254] = {};
    Zan32s R = 0, total = 0;
    Zan32u eob = 0, esc = 0;
    Zan32s L = 1;
    for (const Zan32s* q = groups; *q >= 0; ++L) {
        Zan32s n = *q++;
        for (Zan32s r = 0; r < n; ++r, q += 3) {
            const Zan32s run = q[1];
            const Zan32u packed = (static_cast<Zan32u>(q[0]) << 4) | static_cast<Zan32u>(L);
            if (run == mpeg12::kRunEscape) {
                esc = packed;
            } else if (run == mpeg12::kRunEob) {
                eob = packed;
            } else if (run >= 0 && run < 254) {
                ++counts[run];
                ++total;
                if (run > R) R = run;
            }
        }
    }
    const Zan32s words = 2 * R + total + 3;
    auto* table = reinterpret_cast<Zan32u*>(zansMalloc_8u(words * 4));
    if (!table) return zanStsNoMem;
    std::memset(table, 0, static_cast<size_t>(words) * 4);

    table[0] = (static_cast<Zan32u>(R) << 20) | (eob << 10) | esc;
    Zan32s centre = (counts[0] / 2 + R) * 4 + 8;  // byte offset
    for (Zan32s r = 0; r <= R; ++r) {
        if (r > 0) centre += (counts[r - 1] / 2 + counts[r] / 2) * 4 + 4;
        table[r + 1] = static_cast<Zan32u>(centre);
        table[centre / 4] = static_cast<Zan32u>(-1);
    }

    // Pass 2: the level slots and each row's largest magnitude.
    L = 1;
    for (const Zan32s* q = groups; *q >= 0; ++L) {
        Zan32s n = *q++;
        for (Zan32s r = 0; r < n; ++r, q += 3) {
            const Zan32s run = q[1], level = q[2];
            if (run < 0 || run > R) continue;
            const Zan32s c = static_cast<Zan32s>(table[run + 1] / 4);
            const Zan32s mag = level < 0 ? -level : level;
            if (mag > static_cast<Zan32s>(table[c])) table[c] = static_cast<Zan32u>(mag);
            const Zan32s at = c + level;
            if (level != 0 && at > R + 1 && at < words)
                table[at] = (static_cast<Zan32u>(q[0]) << 16) | static_cast<Zan32u>(L);
        }
    }
    *ppDstTable = table;
    return zanStsOk;
}

ZanStatus zaniPutIntraBlock(Zan32u** ppBitStream, Zan32s* pBitOffset, const Zan16s* pSrcBlock, Zan32s* pDCPred,
                            const Zan32s* pDCTable, const Zan32u* pACTable, const Zan32s* pScan, Zan32s eobLength,
                            Zan32s eobCode, Zan32s coeffCount) {
    if (!ppBitStream || !pBitOffset || !pSrcBlock || !pDCPred || !pDCTable || !pACTable || !pScan)
        return zanStsNullPtr;
    if (!*ppBitStream) return zanStsNullPtr;
    mpeg12::PutCursor c{*ppBitStream, *pBitOffset};

    const Zan32s diff = static_cast<Zan32s>(static_cast<Zan32u>(pSrcBlock[0]) - static_cast<Zan32u>(*pDCPred));
    *pDCPred = pSrcBlock[0];
    const Zan32u mag = diff < 0 ? 0u - static_cast<Zan32u>(diff) : static_cast<Zan32u>(diff);
    const Zan32s size = mpeg12::bit_length(mag);
    c.put(static_cast<Zan32u>(pDCTable[2 * size]), pDCTable[2 * size + 1]);
    if (size > 0) {
        const Zan32u bits = diff > 0 ? static_cast<Zan32u>(diff)
                                     : static_cast<Zan32u>(diff) + static_cast<Zan32u>((Zan64s{1} << size) - 1);
        c.put(bits, size);
    }
    mpeg12::put_ac(c, pSrcBlock, pACTable, pScan, 1, 0, 0, coeffCount, eobLength, eobCode);
    *ppBitStream = c.p;
    *pBitOffset = c.free;
    return zanStsOk;
}

ZanStatus zaniPutNonIntraBlock(Zan32u** ppBitStream, Zan32s* pBitOffset, const Zan16s* pSrcBlock,
                               const Zan32u* pACTable, const Zan32s* pScan, Zan32s eobLength, Zan32s eobCode,
                               Zan32s coeffCount) {
    if (!ppBitStream || !pBitOffset || !pSrcBlock || !pACTable || !pScan) return zanStsNullPtr;
    if (!*ppBitStream) return zanStsNullPtr;
    mpeg12::PutCursor c{*ppBitStream, *pBitOffset};

    // The first coefficient, read at raster position 0: +1 and -1 have the
    // short codes 10 and 11.
    const Zan32s first = pSrcBlock[0];
    Zan32s run = 0, written = 0;
    if (first == 0) {
        run = 1;
    } else {
        if (first == 1 || first == -1)
            c.put(first == 1 ? 2u : 3u, 2);
        else
            mpeg12::put_level(c, pACTable, 0, first);
        written = 1;
    }
    mpeg12::put_ac(c, pSrcBlock, pACTable, pScan, 1, run, written, coeffCount, eobLength, eobCode);
    *ppBitStream = c.p;
    *pBitOffset = c.free;
    return zanStsOk;
}

}  // namespace zan::ZAN_PATH
