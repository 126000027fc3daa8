// Helpers of the coefficient coding tests: a stream buffer with slack, a
// bit-string writer for hand-made streams, and cursor positions in bits.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "zanvc.h"

namespace coeftest {

using Block = std::array<Zan16s, 64>;

// A stream of `size` bytes filled with `fill`, with `pre` bytes before the
// origin that the tests start cursors at.
struct Stream {
    std::vector<Zan8u> bytes;
    Zan32s pre;
    explicit Stream(size_t size = 1024, Zan8u fill = 0, Zan32s before = 16)
        : bytes(size + before, fill), pre(before) {}
    Zan8u* origin() { return bytes.data() + pre; }
    // Bit position of a cursor relative to the origin.
    Zan32s pos(const Zan8u* p, Zan32s off) { return static_cast<Zan32s>(p - origin()) * 8 + off; }
};

// Writes a string of '0' and '1' (other characters ignored) at bit position
// `at` from `base`, assigning each bit.
inline Zan32s put_bits(Zan8u* base, Zan32s at, const std::string& s) {
    for (char ch : s) {
        if (ch != '0' && ch != '1') continue;
        Zan8u& b = base[at >> 3];
        const Zan8u m = static_cast<Zan8u>(0x80u >> (at & 7));
        b = static_cast<Zan8u>(ch == '1' ? (b | m) : (b & ~m));
        ++at;
    }
    return at;
}

// The n-bit binary form of v.
inline std::string bin(Zan32u v, int n) {
    std::string s;
    for (int k = n - 1; k >= 0; --k) s += ((v >> k) & 1) ? '1' : '0';
    return s;
}

inline Block filled(Zan16s v) {
    Block b;
    b.fill(v);
    return b;
}

}  // namespace coeftest
