// The word cursor: a bit reader over native 32-bit words, shared by the
// MPEG-1/2 Huffman decoders, the H.264 CAVLC and Exp-Golomb decoders and the
// AVS block decoders.
//
// A stream position is two values, given by the caller as ppBitStream and
// pBitOffset:
//   p       the 32-bit word that holds the next bit;
//   offset  the number of that bit inside the word, 31 (most significant)
//           down to 0.
// The caller has already swapped each group of four stream bytes into a
// native word, so bits are read most significant first with plain loads;
// nothing here swaps bytes.
//
// Reading n bits (1..32):
//   o = offset - n
//   o >= 0: offset = o, value = word >> (o + 1)
//   o <  0: offset = o + 32, value = (word << (-o - 1)) + ((next >> (o + 32)) >> 1),
//           and p moves on one word.  The right shift of the next word is done
//           in two steps so that o = -1 works: the next word then contributes
//           nothing, but it is still loaded and p still moves on.
//   the value is masked to n bits.
// A read touches the current word and, on a crossing, the next one, so one
// readable word must follow the coded data.
//
// Giving back n bits (after a fixed-width look-ahead) adds n to the offset;
// above 31, 32 is subtracted and p steps back one word.
//
// Usage in a decoder body:
//   WordCursor c(*ppBitStream, *pBitOffset);   // local copy
//   Zan32u v = c.read(5);
//   ...
//   c.store(ppBitStream, pBitOffset);          // write back on success only
//
// Nothing here checks anything: the offset is taken as it comes.
#pragma once

#include "common/path.h"
#include "zanvc.h"

namespace zan::ZAN_PATH {

// bit_mask[n] = 2^n - 1 for n = 0..32.
inline constexpr Zan32u kBitMask[33] = {
    0x00000000u, 0x00000001u, 0x00000003u, 0x00000007u, 0x0000000Fu, 0x0000001Fu, 0x0000003Fu,
    0x0000007Fu, 0x000000FFu, 0x000001FFu, 0x000003FFu, 0x000007FFu, 0x00000FFFu, 0x00001FFFu,
    0x00003FFFu, 0x00007FFFu, 0x0000FFFFu, 0x0001FFFFu, 0x0003FFFFu, 0x0007FFFFu, 0x000FFFFFu,
    0x001FFFFFu, 0x003FFFFFu, 0x007FFFFFu, 0x00FFFFFFu, 0x01FFFFFFu, 0x03FFFFFFu, 0x07FFFFFFu,
    0x0FFFFFFFu, 0x1FFFFFFFu, 0x3FFFFFFFu, 0x7FFFFFFFu, 0xFFFFFFFFu};

struct WordCursor {
    const Zan32u* p;
    Zan32s offset;

    WordCursor(const Zan32u* word, Zan32s bitOffset) : p(word), offset(bitOffset) {}

    // Reads n bits, 0 <= n <= 32 (0 reads nothing), and moves on.
    Zan32u read(Zan32s n) {
        Zan32s o = offset - n;
        Zan32u v;
        if (o >= 0) {
            v = (p[0] >> 1) >> o;  // word >> (o + 1), in two steps
            offset = o;
        } else {
            v = (p[0] << (-o - 1)) + ((p[1] >> (o + 32)) >> 1);
            offset = o + 32;
            ++p;
        }
        return v & kBitMask[n];
    }

    // The next n bits, without moving (a read on a copy: the same words are
    // touched).
    Zan32u peek(Zan32s n) const {
        WordCursor c = *this;
        return c.read(n);
    }

    // The next bit, without moving.
    Zan32u peek1() const { return (p[0] >> offset) & 1u; }

    // Gives back n bits read before (0 <= n <= 32).
    void give_back(Zan32s n) {
        offset += n;
        if (offset > 31) {
            offset -= 32;
            --p;
        }
    }

    // Writes the cursor back to the caller's two arguments.
    template <class W>
    void store(W** ppBitStream, Zan32s* pBitOffset) const {
        *ppBitStream = const_cast<W*>(p);
        *pBitOffset = offset;
    }
};

}  // namespace zan::ZAN_PATH
