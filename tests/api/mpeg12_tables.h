// The DCT coefficient and DC size code tables of ISO/IEC 13818-2 (Tables
// B-12 to B-15) as a caller writes them, and helpers that turn them into the
// library's code lists; a bit writer for test streams.  Shared by
// the known-answer tests and the benchmarks.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "zanvc.h"

namespace zan::mpeg12test {

inline constexpr int kEob = 254, kEsc = 255;

struct CodeRL {
    const char* bits;
    int run, level;
};

// ISO/IEC 13818-2 Table B-14 (DCT coefficients table zero), codes without
// the sign bit s that follows every (run, level) code.
inline const CodeRL kB14[] = {
    {"10", kEob, 0}, {"11", 0, 1}, {"011", 1, 1}, {"0100", 0, 2}, {"0101", 2, 1}, {"00101", 0, 3},
    {"00111", 3, 1}, {"00110", 4, 1}, {"000110", 1, 2}, {"000111", 5, 1}, {"000101", 6, 1},
    {"000100", 7, 1}, {"0000110", 0, 4}, {"0000100", 2, 2}, {"0000111", 8, 1}, {"0000101", 9, 1},
    {"000001", kEsc, 0}, {"00100110", 0, 5}, {"00100001", 0, 6}, {"00100101", 1, 3}, {"00100100", 3, 2},
    {"00100111", 10, 1}, {"00100011", 11, 1}, {"00100010", 12, 1}, {"00100000", 13, 1},
    {"0000001010", 0, 7}, {"0000001100", 1, 4}, {"0000001011", 2, 3}, {"0000001111", 4, 2},
    {"0000001001", 5, 2}, {"0000001110", 14, 1}, {"0000001101", 15, 1}, {"0000001000", 16, 1},
    {"000000011101", 0, 8}, {"000000011000", 0, 9}, {"000000010011", 0, 10}, {"000000010000", 0, 11},
    {"000000011011", 1, 5}, {"000000010100", 2, 4}, {"000000011100", 3, 3}, {"000000010010", 4, 3},
    {"000000011110", 6, 2}, {"000000010101", 7, 2}, {"000000010001", 8, 2}, {"000000011111", 17, 1},
    {"000000011010", 18, 1}, {"000000011001", 19, 1}, {"000000010111", 20, 1}, {"000000010110", 21, 1},
    {"0000000011010", 0, 12}, {"0000000011001", 0, 13}, {"0000000011000", 0, 14}, {"0000000010111", 0, 15},
    {"0000000010110", 1, 6}, {"0000000010101", 1, 7}, {"0000000010100", 2, 5}, {"0000000010011", 3, 4},
    {"0000000010010", 5, 3}, {"0000000010001", 9, 2}, {"0000000010000", 10, 2}, {"0000000011111", 22, 1},
    {"0000000011110", 23, 1}, {"0000000011101", 24, 1}, {"0000000011100", 25, 1}, {"0000000011011", 26, 1},
    {"00000000011111", 0, 16}, {"00000000011110", 0, 17}, {"00000000011101", 0, 18}, {"00000000011100", 0, 19},
    {"00000000011011", 0, 20}, {"00000000011010", 0, 21}, {"00000000011001", 0, 22}, {"00000000011000", 0, 23},
    {"00000000010111", 0, 24}, {"00000000010110", 0, 25}, {"00000000010101", 0, 26}, {"00000000010100", 0, 27},
    {"00000000010011", 0, 28}, {"00000000010010", 0, 29}, {"00000000010001", 0, 30}, {"00000000010000", 0, 31},
    {"000000000011000", 0, 32}, {"000000000010111", 0, 33}, {"000000000010110", 0, 34},
    {"000000000010101", 0, 35}, {"000000000010100", 0, 36}, {"000000000010011", 0, 37},
    {"000000000010010", 0, 38}, {"000000000010001", 0, 39}, {"000000000010000", 0, 40},
    {"000000000011111", 1, 8}, {"000000000011110", 1, 9}, {"000000000011101", 1, 10},
    {"000000000011100", 1, 11}, {"000000000011011", 1, 12}, {"000000000011010", 1, 13},
    {"000000000011001", 1, 14}, {"0000000000010011", 1, 15}, {"0000000000010010", 1, 16},
    {"0000000000010001", 1, 17}, {"0000000000010000", 1, 18}, {"0000000000010100", 6, 3},
    {"0000000000011010", 11, 2}, {"0000000000011001", 12, 2}, {"0000000000011000", 13, 2},
    {"0000000000010111", 14, 2}, {"0000000000010110", 15, 2}, {"0000000000010101", 16, 2},
    {"0000000000011111", 27, 1}, {"0000000000011110", 28, 1}, {"0000000000011101", 29, 1},
    {"0000000000011100", 30, 1}, {"0000000000011011", 31, 1},
};

// ISO/IEC 13818-2 Table B-15 (DCT coefficients table one): the codes that
// differ from Table B-14; all codes of 12 or more bits not listed here and
// not replaced are those of Table B-14.
inline const CodeRL kB15Short[] = {
    {"0110", kEob, 0}, {"10", 0, 1}, {"010", 1, 1}, {"110", 0, 2}, {"00101", 2, 1}, {"0111", 0, 3},
    {"00111", 3, 1}, {"000110", 4, 1}, {"00110", 1, 2}, {"000111", 5, 1}, {"0000110", 6, 1},
    {"0000100", 7, 1}, {"11100", 0, 4}, {"0000111", 2, 2}, {"0000101", 8, 1}, {"1111000", 9, 1},
    {"000001", kEsc, 0}, {"11101", 0, 5}, {"000101", 0, 6}, {"1111001", 1, 3}, {"00100110", 3, 2},
    {"1111010", 10, 1}, {"00100001", 11, 1}, {"00100101", 12, 1}, {"00100100", 13, 1}, {"000100", 0, 7},
    {"00100111", 1, 4}, {"11111100", 2, 3}, {"11111101", 4, 2}, {"000000100", 5, 2}, {"000000101", 14, 1},
    {"000000111", 15, 1}, {"0000001101", 16, 1}, {"1111011", 0, 8}, {"1111100", 0, 9}, {"00100011", 0, 10},
    {"00100010", 0, 11}, {"00100000", 1, 5}, {"0000001100", 2, 4}, {"11111010", 0, 12}, {"11111011", 0, 13},
    {"11111110", 0, 14}, {"11111111", 0, 15},
};

// Table B-12 and B-13: dct_dc_size_luminance and _chrominance, by size 0..11.
inline const char* const kDcLuma[12] = {"100", "00", "01", "101", "110", "1110", "11110", "111110",
                                 "1111110", "11111110", "111111110", "111111111"};
inline const char* const kDcChroma[12] = {"00", "01", "10", "110", "1110", "11110", "111110", "1111110",
                                   "11111110", "111111110", "1111111110", "1111111111"};

// ------------------------------------------------------------ test helpers

// Bits written most significant first into native words, as the caller of a
// word-cursor decoder hands them over.
struct Bits {
    std::vector<Zan32u> w = std::vector<Zan32u>(4, 0);
    int n = 0;  // bits written
    void put(Zan32u v, int len) {
        for (int i = len - 1; i >= 0; --i) {
            if (n / 32 + 2 >= static_cast<int>(w.size())) w.resize(w.size() * 2, 0);
            if ((v >> i) & 1u) w[n / 32] |= 1u << (31 - n % 32);
            ++n;
        }
    }
    void put(const std::string& s) {
        for (char c : s) put(c == '1' ? 1u : 0u, 1);
    }
};

// Bit position of a word cursor relative to base.
inline int pos(const Zan32u* base, const Zan32u* p, Zan32s offset) { return static_cast<int>(p - base) * 32 + 31 - offset; }

inline Zan32s to_code(const std::string& s) {
    Zan32s v = 0;
    for (char c : s) v = 2 * v + (c == '1');
    return v;
}

// A code list: widths, then rows grouped by code length.
struct CodeList {
    std::map<int, std::vector<std::vector<Zan32s>>> byLength;
    std::vector<Zan32s> array(const std::vector<Zan32s>& widths) const {
        std::vector<Zan32s> a = {0, static_cast<Zan32s>(widths.size())};
        a.insert(a.end(), widths.begin(), widths.end());
        int maxLen = byLength.empty() ? 0 : byLength.rbegin()->first;
        for (int L = 1; L <= maxLen; ++L) {
            auto it = byLength.find(L);
            a.push_back(it == byLength.end() ? 0 : static_cast<Zan32s>(it->second.size()));
            if (it != byLength.end())
                for (const auto& row : it->second) a.insert(a.end(), row.begin(), row.end());
        }
        a.push_back(-1);
        return a;
    }
    void add(const std::string& bits, std::vector<Zan32s> rest) {
        rest.insert(rest.begin(), to_code(bits));
        byLength[static_cast<int>(bits.size())].push_back(rest);
    }
};

// A DCT coefficient table as run-level rows, each level with its sign bit.
struct RLTable {
    std::vector<CodeRL> codes;
    std::string code(int run, int level) const {  // "" when not in the table
        for (const auto& c : codes)
            if (c.run == run && c.level == (level < 0 ? -level : level)) return std::string(c.bits) + (level < 0 ? "1" : "0");
        return "";
    }
    std::string marker(int run) const {
        for (const auto& c : codes)
            if (c.run == run) return c.bits;
        return "";
    }
    CodeList list(bool skipOnes = false) const {
        CodeList s;
        for (const auto& c : codes) {
            if (skipOnes && c.bits[0] == '1') continue;
            if (c.run >= kEob) {
                s.add(c.bits, {c.run, 0});
            } else {
                s.add(std::string(c.bits) + "0", {c.run, c.level});
                s.add(std::string(c.bits) + "1", {c.run, -c.level});
            }
        }
        return s;
    }
};

inline RLTable table_zero() { return {std::vector<CodeRL>(std::begin(kB14), std::end(kB14))}; }
inline RLTable table_one() {
    RLTable t{std::vector<CodeRL>(std::begin(kB15Short), std::end(kB15Short))};
    for (const auto& c : kB14) {
        bool replaced = false;
        for (const auto& s : kB15Short) replaced |= s.run == c.run && (c.run >= kEob || s.level == c.level);
        if (!replaced) t.codes.push_back(c);
    }
    return t;
}

inline CodeList dc_list(const char* const (&sizes)[12]) {
    CodeList s;
    for (int i = 0; i < 12; ++i) s.add(sizes[i], {i});
    return s;
}

}  // namespace zan::mpeg12test
