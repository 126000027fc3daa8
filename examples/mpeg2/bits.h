// Bit reading and writing over the word layout the library's block coders
// use: the stream as native 32-bit words, each holding four stream bytes
// most significant first.  The reader and writer keep a plain bit position
// and hand the library its word cursor for each block.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <zanvc.h>

namespace mpeg2 {

// Reads from words that hold the stream and at least kPadWords zero words
// after it, so that a look-ahead past the end reads zeros.
struct BitReader {
    static constexpr size_t kPadWords = 64;
    Zan32u* w = nullptr;
    size_t pos = 0;  // bit position
    size_t end = 0;  // first bit past the data this reader may use

    uint32_t peek(int n) const {  // 1 <= n <= 32
        const size_t i = pos >> 5;
        const uint64_t x = (static_cast<uint64_t>(w[i]) << 32) | w[i + 1];
        return static_cast<uint32_t>((x << (pos & 31)) >> (64 - n));
    }
    uint32_t get(int n) {
        const uint32_t v = peek(n);
        pos += static_cast<size_t>(n);
        return v;
    }
    bool overrun() const { return pos > end; }
    void align() { pos = (pos + 7) & ~static_cast<size_t>(7); }
    // The library's word cursor: word pointer and bit number 31..0.
    Zan32u* cursor(Zan32s* offset) const {
        *offset = static_cast<Zan32s>(31 - (pos & 31));
        return w + (pos >> 5);
    }
    void set_cursor(const Zan32u* p, Zan32s offset) {
        pos = static_cast<size_t>(p - w) * 32 + static_cast<size_t>(31 - offset);
    }
};

// The file's bytes as words (four bytes each, most significant first), padded.
std::vector<Zan32u> bytes_to_words(const std::vector<uint8_t>& bytes);

// Writes into cleared words; the library's put cursor is the word pointer and
// the number of free bits 32..1 in it.
struct BitWriter {
    std::vector<Zan32u> w = std::vector<Zan32u>(1024, 0);
    size_t pos = 0;

    void reserve(size_t bits) {
        const size_t need = ((pos + bits) >> 5) + 4;
        if (need > w.size()) w.resize(need * 2, 0);
    }
    void put(uint32_t v, int n) {  // 1 <= n <= 32
        reserve(static_cast<size_t>(n));
        const size_t i = pos >> 5;
        const int sh = static_cast<int>(pos & 31);
        const uint64_t masked = n == 32 ? v : (v & ((1u << n) - 1));
        const uint64_t x = masked << (64 - n - sh);
        w[i] |= static_cast<Zan32u>(x >> 32);
        w[i + 1] |= static_cast<Zan32u>(x);
        pos += static_cast<size_t>(n);
    }
    void align() {  // zero bits up to the next byte
        reserve(8);
        pos = (pos + 7) & ~static_cast<size_t>(7);
    }
    void start_code(uint32_t code) {
        align();
        put(0x000001, 24);
        put(code, 8);
    }
    Zan32u* cursor(Zan32s* freeBits) {
        reserve(64 * 32);  // one block: at most 64 escapes of 24 bits and the DC
        *freeBits = static_cast<Zan32s>(32 - (pos & 31));
        return w.data() + (pos >> 5);
    }
    void set_cursor(const Zan32u* p, Zan32s freeBits) {
        pos = static_cast<size_t>(p - w.data()) * 32 + static_cast<size_t>(32 - freeBits);
    }
    // The bytes written so far (a partial last byte padded with zeros).
    std::vector<uint8_t> bytes() const;
};

}  // namespace mpeg2
