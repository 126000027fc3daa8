#include "tables.h"

#include <cstdio>
#include <map>
#include <string>

namespace mpeg2 {

const uint8_t kZigzag[64] = {0,  1,  8,  16, 9,  2,  3,  10, 17, 24, 32, 25, 18, 11, 4,  5,
                             12, 19, 26, 33, 40, 48, 41, 34, 27, 20, 13, 6,  7,  14, 21, 28,
                             35, 42, 49, 56, 57, 50, 43, 36, 29, 22, 15, 23, 30, 37, 44, 51,
                             58, 59, 52, 45, 38, 31, 39, 46, 53, 60, 61, 54, 47, 55, 62, 63};
const uint8_t kAlternate[64] = {0,  8,  16, 24, 1,  9,  2,  10, 17, 25, 32, 40, 48, 56, 57, 49,
                                41, 33, 26, 18, 3,  11, 4,  12, 19, 27, 34, 42, 50, 58, 35, 43,
                                51, 59, 20, 28, 5,  13, 6,  14, 21, 29, 36, 44, 52, 60, 37, 45,
                                53, 61, 22, 30, 7,  15, 23, 31, 38, 46, 54, 62, 39, 47, 55, 63};
const uint8_t kDefaultIntra[64] = {8,  16, 19, 22, 26, 27, 29, 34, 16, 16, 22, 24, 27, 29, 34, 37,
                                   19, 22, 26, 27, 29, 34, 34, 38, 22, 22, 26, 27, 29, 34, 37, 40,
                                   22, 26, 27, 29, 32, 35, 40, 48, 26, 27, 29, 32, 35, 40, 48, 58,
                                   26, 27, 29, 34, 38, 46, 56, 69, 27, 29, 35, 38, 46, 56, 69, 83};
const uint8_t kNonLinearScale[32] = {0,  1,  2,  3,  4,  5,  6,  7,  8,  10, 12, 14, 16, 18, 20,  22,
                                     24, 28, 32, 36, 40, 44, 48, 52, 56, 64, 72, 80, 88, 96, 104, 112};

namespace {

struct RunLevelCode {
    const char* bits;  // without the sign bit that follows every (run, level) code
    int run, level;
};

// Table B-14, DCT coefficients table zero.
const RunLevelCode kTableZero[] = {
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

// Table B-15, DCT coefficients table one: the codes that differ from table
// zero.  Every (run, level) of table zero not listed here keeps its code.
const RunLevelCode kTableOneChanges[] = {
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

// Tables B-12 and B-13 by dct_dc_size 0..11.
const char* const kDcLuma[12] = {"100", "00", "01", "101", "110", "1110", "11110", "111110",
                                 "1111110", "11111110", "111111110", "111111111"};
const char* const kDcChroma[12] = {"00", "01", "10", "110", "1110", "11110", "111110", "1111110",
                                   "11111110", "111111110", "1111111110", "1111111111"};

// Table B-1 by increment 1..33, then the escape (adds 33).
const char* const kMbIncrement[34] = {
    nullptr,       "1",           "011",         "010",         "0011",        "0010",        "00011",
    "00010",       "0000111",     "0000110",     "00001011",    "00001010",    "00001001",    "00001000",
    "00000111",    "00000110",    "0000010111",  "0000010110",  "0000010101",  "0000010100",  "0000010011",
    "0000010010",  "00000100011", "00000100010", "00000100001", "00000100000", "00000011111", "00000011110",
    "00000011101", "00000011100", "00000011011", "00000011010", "00000011001", "00000011000"};

Zan32s to_code(const std::string& s) {
    Zan32s v = 0;
    for (char c : s) v = 2 * v + (c == '1');
    return v;
}

// A code list in the builders' layout: [0] unused, [1] number of levels,
// the width of each level, then per code length 1, 2, ...: the count of
// codes of that length and the rows; -1 ends it.
struct CodeList {
    std::map<int, std::vector<std::vector<Zan32s>>> byLength;
    void add(const std::string& bits, std::vector<Zan32s> rest) {
        rest.insert(rest.begin(), to_code(bits));
        byLength[static_cast<int>(bits.size())].push_back(std::move(rest));
    }
    std::vector<Zan32s> array(const std::vector<Zan32s>& widths) const {
        std::vector<Zan32s> a = {0, static_cast<Zan32s>(widths.size())};
        a.insert(a.end(), widths.begin(), widths.end());
        const int maxLen = byLength.empty() ? 0 : byLength.rbegin()->first;
        for (int len = 1; len <= maxLen; ++len) {
            auto it = byLength.find(len);
            a.push_back(it == byLength.end() ? 0 : static_cast<Zan32s>(it->second.size()));
            if (it != byLength.end())
                for (const auto& row : it->second) a.insert(a.end(), row.begin(), row.end());
        }
        a.push_back(-1);
        return a;
    }
};

std::vector<RunLevelCode> table_one() {
    std::vector<RunLevelCode> t(std::begin(kTableOneChanges), std::end(kTableOneChanges));
    for (const auto& c : kTableZero) {
        bool replaced = false;
        for (const auto& s : kTableOneChanges) replaced |= s.run == c.run && (c.run >= kEob || s.level == c.level);
        if (!replaced) t.push_back(c);
    }
    return t;
}

// Every (run, level) code twice, followed by its sign bit 0 (+) and 1 (-).
CodeList run_level_list(const std::vector<RunLevelCode>& codes) {
    CodeList s;
    for (const auto& c : codes) {
        if (c.run >= kEob) {
            s.add(c.bits, {c.run, 0});
        } else {
            s.add(std::string(c.bits) + "0", {c.run, c.level});
            s.add(std::string(c.bits) + "1", {c.run, -c.level});
        }
    }
    return s;
}

}  // namespace

CodeTables::CodeTables() {
    bool good = true;
    // Increment codes: 11 bits at most, one level.
    CodeList inc;
    for (int i = 1; i <= 33; ++i) {
        inc.add(kMbIncrement[i], {i});
        mbIncCode[i] = static_cast<uint32_t>(to_code(kMbIncrement[i]));
        mbIncLen[i] = static_cast<int>(std::string(kMbIncrement[i]).size());
    }
    good &= zaniHuffmanTableInitAlloc_32s(inc.array({11}).data(), &mbInc) == zanStsOk;

    const char* const* dc[2] = {kDcLuma, kDcChroma};
    for (int c = 0; c < 2; ++c) {
        CodeList s;
        for (int i = 0; i < 12; ++i) {
            s.add(dc[c][i], {i});
            dcPut[c][2 * i] = to_code(dc[c][i]);
            dcPut[c][2 * i + 1] = static_cast<Zan32s>(std::string(dc[c][i]).size());
        }
        good &= zaniHuffmanTableInitAlloc_32s(s.array({c ? 10 : 9}).data(), &dcSize[c]) == zanStsOk;
    }

    const std::vector<RunLevelCode> rl[2] = {std::vector<RunLevelCode>(std::begin(kTableZero), std::end(kTableZero)),
                                             table_one()};
    for (int t = 0; t < 2; ++t) {
        const std::vector<Zan32s> list = run_level_list(rl[t]).array({10, 7});  // codes reach 17 bits with the sign
        good &= zaniHuffmanRunLevelTableInitAlloc_32s(list.data(), &ac[t]) == zanStsOk;
        good &= zaniCreateRLEncodeTable(list.data(), &acPut[t]) == zanStsOk;
        for (const auto& c : rl[t])
            if (c.run == kEob) {
                eobCode[t] = to_code(c.bits);
                eobLen[t] = static_cast<Zan32s>(std::string(c.bits).size());
            }
    }
    ok = good;
    if (!ok) std::fprintf(stderr, "mpeg2: building the code tables failed\n");
}

CodeTables::~CodeTables() {
    if (mbInc) zaniHuffmanTableFree_32s(mbInc);
    for (int i = 0; i < 2; ++i) {
        if (dcSize[i]) zaniHuffmanTableFree_32s(dcSize[i]);
        if (ac[i]) zaniHuffmanTableFree_32s(ac[i]);
        if (acPut[i]) zaniHuffmanTableFree_32s(acPut[i]);
    }
}

}  // namespace mpeg2
