// The byte cursor: a bit reader and a bit writer over plain bytes, used by
// every H.261, H.263 and MPEG-4 coefficient decoder and encoder.
//
// A stream position is two values, given by the caller as ppBitStream and
// pBitOffset:
//   p       the byte that holds the next bit;
//   offset  0..7, the number of bits of that byte already consumed; bit
//           offset 0 is the most significant bit of the byte.
// Bits go most significant first, bytes in rising address order.  Moving on
// by n bits sets total = offset + n, adds total / 8 to p and leaves
// total % 8 in the offset.
//
// Reading.  ByteReader keeps the position as a base pointer and a bit count
// from the base's most significant bit.  Every peek loads the four bytes
// starting at the byte that holds the next bit (a big-endian load composed
// from single bytes, so no alignment is needed), which is exactly what the
// decoders' contract allows: four readable bytes must follow the last byte
// of coded data.  A peek therefore sees at most 25 bits (32 minus an offset
// of up to 7).
//
// Writing.  ByteWriter::put writes a code of up to 32 bits: the first byte
// it touches keeps its bits above the offset, new byte =
// (old AND (255 << (8 - offset))) OR new bits; every following byte is
// assigned, and the code's last byte has zeros in its low bits, so the
// caller's buffer needs no clearing.  A 32-bit code at offset 7 touches five
// bytes.
//
// Backward reading (the reversible codes of MPEG-4, read from the end of the
// data toward its start) uses peek_before: the bits that come before a
// position in stream order, loaded from the four bytes that end at the byte
// holding the position's bit.
//
// Nothing here checks anything: offsets and lengths are taken as they come.
#pragma once

#include <cstdint>

#include "common/path.h"
#include "zanvc.h"

namespace zan::ZAN_PATH {

// Four bytes at p as a big-endian word.
inline Zan32u load_be32(const Zan8u* p) {
    return (static_cast<Zan32u>(p[0]) << 24) | (static_cast<Zan32u>(p[1]) << 16) |
           (static_cast<Zan32u>(p[2]) << 8) | static_cast<Zan32u>(p[3]);
}

struct ByteReader {
    const Zan8u* base;  // the byte that held the next bit at entry
    Zan32s pos;         // bits consumed from base's most significant bit; may go negative backward

    ByteReader(const Zan8u* p, Zan32s offset) : base(p), pos(offset) {}

    // The byte holding the next bit and the bit offset inside it.
    const Zan8u* byte() const { return base + (pos >> 3); }
    Zan32s bit() const { return pos & 7; }

    // The 32 bits starting at the next bit; only the top 25 are sure to be
    // stream bits, the rest are zero.
    Zan32u window() const { return load_be32(byte()) << bit(); }

    // The next n bits (1..25) as an unsigned value, without moving.
    Zan32u peek(Zan32s n) const { return window() >> (32 - n); }
    void skip(Zan32s n) { pos += n; }
    Zan32u read(Zan32s n) {
        Zan32u v = peek(n);
        pos += n;
        return v;
    }

    // The n bits (1..24) that come just before the next bit in stream order,
    // as an unsigned value; loads the four bytes ending at the byte holding
    // the next bit.
    Zan32u peek_before(Zan32s n) const {
        Zan32u w = load_be32(byte() - 3);  // the next bit is bit (24 + bit()) from the top
        return (w >> (8 - bit())) & ((1u << n) - 1u);
    }
    // The next bit itself (the bit at pos).
    Zan32u bit_at() const { return (*byte() >> (7 - bit())) & 1u; }

    // Writes the position back as a normalised cursor.
    void store(Zan8u** ppBitStream, Zan32s* pBitOffset) const {
        *ppBitStream = const_cast<Zan8u*>(byte());
        *pBitOffset = bit();
    }
};

struct ByteWriter {
    Zan8u* p;
    Zan32s offset;

    ByteWriter(Zan8u* byte, Zan32s bitOffset) : p(byte), offset(bitOffset) {}

    // Writes the low n bits (1..32) of code, most significant first.
    void put(Zan32u code, Zan32s n) {
        const std::uint64_t v = (static_cast<std::uint64_t>(code) & ((std::uint64_t{1} << n) - 1u))
                                << (64 - offset - n);
        const Zan32s total = offset + n;
        const Zan8u keep = static_cast<Zan8u>(0xFFu << (8 - offset));
        p[0] = static_cast<Zan8u>((p[0] & keep) | static_cast<Zan8u>(v >> 56));
        const Zan32s bytes = (total + 7) >> 3;
        for (Zan32s k = 1; k < bytes; ++k) p[k] = static_cast<Zan8u>(v >> (56 - 8 * k));
        p += total >> 3;
        offset = total & 7;
    }

    void store(Zan8u** ppBitStream, Zan32s* pBitOffset) const {
        *ppBitStream = p;
        *pBitOffset = offset;
    }
};

}  // namespace zan::ZAN_PATH
