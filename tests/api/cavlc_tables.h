// The H.264 CAVLC code tables (ITU-T H.264 Tables 9-5, 9-7 to 9-10) as a
// caller writes them, the built tables made from them with the library's
// table builders, and an independent CAVLC block writer that follows the
// standard's encoding rules.  Shared by the known-answer tests, the
// benchmarks and the fuzz target.
#pragma once

#include <string>
#include <vector>

#include "mpeg12_tables.h"
#include "zanvc.h"

namespace zan::cavlctest {

using mpeg12test::Bits;
using mpeg12test::CodeList;

// Table 9-5: coeff_token by [TotalCoeff][TrailingOnes], one column per table:
// 0 <= nC < 2, 2 <= nC < 4, 4 <= nC < 8, nC = -1 (4:2:0 chroma DC, totals to
// 4), nC = -2 (4:2:2 chroma DC, totals to 8).  Null: no such token.
using TokenColumn = const char* [17][4];
inline const TokenColumn kCoeffToken[5] = {
    {{"1", nullptr, nullptr, nullptr},
     {"000101", "01", nullptr, nullptr},
     {"00000111", "000100", "001", nullptr},
     {"000000111", "00000110", "0000101", "00011"},
     {"0000000111", "000000110", "00000101", "000011"},
     {"00000000111", "0000000110", "000000101", "0000100"},
     {"0000000001111", "00000000110", "0000000101", "00000100"},
     {"0000000001011", "0000000001110", "00000000101", "000000100"},
     {"0000000001000", "0000000001010", "0000000001101", "0000000100"},
     {"00000000001111", "00000000001110", "0000000001001", "00000000100"},
     {"00000000001011", "00000000001010", "00000000001101", "0000000001100"},
     {"000000000001111", "000000000001110", "00000000001001", "00000000001100"},
     {"000000000001011", "000000000001010", "000000000001101", "00000000001000"},
     {"0000000000001111", "000000000000001", "000000000001001", "000000000001100"},
     {"0000000000001011", "0000000000001110", "0000000000001101", "000000000001000"},
     {"0000000000000111", "0000000000001010", "0000000000001001", "0000000000001100"},
     {"0000000000000100", "0000000000000110", "0000000000000101", "0000000000001000"}},
    {{"11", nullptr, nullptr, nullptr},
     {"001011", "10", nullptr, nullptr},
     {"000111", "00111", "011", nullptr},
     {"0000111", "001010", "001001", "0101"},
     {"00000111", "000110", "000101", "0100"},
     {"00000100", "0000110", "0000101", "00110"},
     {"000000111", "00000110", "00000101", "001000"},
     {"00000001111", "000000110", "000000101", "000100"},
     {"00000001011", "00000001110", "00000001101", "0000100"},
     {"000000001111", "00000001010", "00000001001", "000000100"},
     {"000000001011", "000000001110", "000000001101", "00000001100"},
     {"000000001000", "000000001010", "000000001001", "00000001000"},
     {"0000000001111", "0000000001110", "0000000001101", "000000001100"},
     {"0000000001011", "0000000001010", "0000000001001", "0000000001100"},
     {"0000000000111", "00000000001011", "0000000000110", "0000000001000"},
     {"00000000001001", "00000000001000", "00000000001010", "0000000000001"},
     {"00000000000111", "00000000000110", "00000000000101", "00000000000100"}},
    {{"1111", nullptr, nullptr, nullptr},
     {"001111", "1110", nullptr, nullptr},
     {"001011", "01111", "1101", nullptr},
     {"001000", "01100", "01110", "1100"},
     {"0001111", "01010", "01011", "1011"},
     {"0001011", "01000", "01001", "1010"},
     {"0001001", "001110", "001101", "1001"},
     {"0001000", "001010", "001001", "1000"},
     {"00001111", "0001110", "0001101", "01101"},
     {"00001011", "00001110", "0001010", "001100"},
     {"000001111", "00001010", "00001101", "0001100"},
     {"000001011", "000001110", "00001001", "00001100"},
     {"000001000", "000001010", "000001101", "00001000"},
     {"0000001101", "000000111", "000001001", "000001100"},
     {"0000001001", "0000001100", "0000001011", "0000001010"},
     {"0000000101", "0000001000", "0000000111", "0000000110"},
     {"0000000001", "0000000100", "0000000011", "0000000010"}},
    {{"01", nullptr, nullptr, nullptr},
     {"000111", "1", nullptr, nullptr},
     {"000100", "000110", "001", nullptr},
     {"000011", "0000011", "0000010", "000101"},
     {"000010", "00000011", "00000010", "0000000"}},
    {{"1", nullptr, nullptr, nullptr},
     {"0001111", "01", nullptr, nullptr},
     {"0001110", "0001101", "001", nullptr},
     {"000000111", "0001100", "0001011", "00001"},
     {"000000110", "000000101", "0001010", "000001"},
     {"0000000111", "0000000110", "000000100", "0001001"},
     {"00000000111", "00000000110", "0000000101", "0001000"},
     {"000000000111", "000000000110", "00000000101", "0000000100"},
     {"0000000000111", "000000000101", "000000000100", "00000000100"}},
};
inline constexpr int kTokenMaxTotal[5] = {16, 16, 16, 4, 8};

// Tables 9-7 and 9-8: total_zeros of 4x4 blocks by tzVlcIndex 1..15, codes
// for total_zeros 0, 1, 2, ...
inline const std::vector<std::vector<const char*>> kTotalZeros4x4 = {
    {},
    {"1", "011", "010", "0011", "0010", "00011", "00010", "000011", "000010", "0000011", "0000010", "00000011",
     "00000010", "000000011", "000000010", "000000001"},
    {"111", "110", "101", "100", "011", "0101", "0100", "0011", "0010", "00011", "00010", "000011", "000010",
     "000001", "000000"},
    {"0101", "111", "110", "101", "0100", "0011", "100", "011", "0010", "00011", "00010", "000001", "00001",
     "000000"},
    {"00011", "111", "0101", "0100", "110", "101", "100", "0011", "011", "0010", "00010", "00001", "00000"},
    {"0101", "0100", "0011", "111", "110", "101", "100", "011", "0010", "00001", "0001", "00000"},
    {"000001", "00001", "111", "110", "101", "100", "011", "010", "0001", "001", "000000"},
    {"000001", "00001", "101", "100", "011", "11", "010", "0001", "001", "000000"},
    {"000001", "0001", "00001", "011", "11", "10", "010", "001", "000000"},
    {"000001", "000000", "0001", "11", "10", "001", "01", "00001"},
    {"00001", "00000", "001", "11", "10", "01", "0001"},
    {"0000", "0001", "001", "010", "1", "011"},
    {"0000", "0001", "01", "1", "001"},
    {"000", "001", "1", "01"},
    {"00", "01", "1"},
    {"0", "1"},
};
// Table 9-9 (a): 4:2:0 chroma DC total_zeros, tzVlcIndex 1..3.
inline const std::vector<std::vector<const char*>> kTotalZeros420 = {
    {}, {"1", "01", "001", "000"}, {"1", "01", "00"}, {"1", "0"}};
// Table 9-9 (b): 4:2:2 chroma DC total_zeros, tzVlcIndex 1..7.
inline const std::vector<std::vector<const char*>> kTotalZeros422 = {
    {},
    {"1", "010", "011", "0010", "0011", "0001", "00001", "00000"},
    {"000", "01", "001", "100", "101", "110", "111"},
    {"000", "001", "01", "10", "110", "111"},
    {"110", "00", "01", "10", "111"},
    {"00", "01", "10", "11"},
    {"00", "01", "1"},
    {"0", "1"}};
// Table 9-10: run_before by zerosLeft 1..6 and > 6 (index 7).
inline const std::vector<std::vector<const char*>> kRunBefore = {
    {},
    {"1", "0"},
    {"1", "01", "00"},
    {"11", "10", "01", "00"},
    {"11", "10", "01", "001", "000"},
    {"11", "10", "011", "010", "001", "000"},
    {"11", "000", "001", "011", "010", "101", "100"},
    {"111", "110", "101", "100", "011", "010", "001", "0001", "00001", "000001", "0000001", "00000001",
     "000000001", "0000000001", "00000000001"}};

inline std::vector<Zan32s> token_list(int column, std::vector<Zan32s> widths) {
    CodeList l;
    for (int total = 0; total <= kTokenMaxTotal[column]; ++total)
        for (int t = 0; t < 4; ++t)
            if (const char* c = kCoeffToken[column][total][t]) l.add(c, {t, total});
    return l.array(widths);
}
inline std::vector<Zan32s> value_list(const std::vector<const char*>& codes, std::vector<Zan32s> widths) {
    CodeList l;
    for (std::size_t v = 0; v < codes.size(); ++v) l.add(codes[v], {static_cast<Zan32s>(v)});
    return l.array(widths);
}

// All built tables, arranged as the decoders take them.  widthSet picks one
// of a few level-width layouts, so that the walk meets one-, two- and
// three-level tables.
struct Tables {
    Zan32u* token[3] = {};
    Zan32u* tokenDc420 = nullptr;
    Zan32u* tokenDc422 = nullptr;
    Zan32u* tz4x4[16] = {};
    Zan32u* tz420[4] = {};
    Zan32u* tz422[8] = {};
    Zan32u* rb[16] = {};  // rows 7..15 share the table for zerosLeft > 6
    std::vector<Zan32u*> owned;
    bool ok = true;

    explicit Tables(int widthSet = 0) {
        const std::vector<Zan32s> tw = widthSet == 0 ? std::vector<Zan32s>{8, 8}
                                       : widthSet == 1 ? std::vector<Zan32s>{4, 4, 4, 4}
                                                       : std::vector<Zan32s>{16};
        const std::vector<Zan32s> vw = widthSet == 0 ? std::vector<Zan32s>{4, 7}
                                       : widthSet == 1 ? std::vector<Zan32s>{2, 2, 2, 2, 3}
                                                       : std::vector<Zan32s>{11};
        for (int k = 0; k < 3; ++k) token[k] = rl(token_list(k, tw));
        tokenDc420 = rl(token_list(3, tw));
        tokenDc422 = rl(token_list(4, tw));
        for (int i = 1; i < 16; ++i) tz4x4[i] = plain(value_list(kTotalZeros4x4[i], vw));
        for (int i = 1; i < 4; ++i) tz420[i] = plain(value_list(kTotalZeros420[i], vw));
        for (int i = 1; i < 8; ++i) tz422[i] = plain(value_list(kTotalZeros422[i], vw));
        for (int i = 1; i < 8; ++i) rb[i] = plain(value_list(kRunBefore[i], vw));
        for (int i = 8; i < 16; ++i) rb[i] = rb[7];
    }
    ~Tables() {
        for (Zan32u* t : owned) zaniHuffmanTableFree_32s(t);
    }
    Tables(const Tables&) = delete;
    Tables& operator=(const Tables&) = delete;

    const Zan32u* const* tokens() const { return token; }

private:
    Zan32u* rl(const std::vector<Zan32s>& a) {
        Zan32u* t = nullptr;
        ok &= zaniHuffmanRunLevelTableInitAlloc_32s(a.data(), &t) == zanStsOk;
        owned.push_back(t);
        return t;
    }
    Zan32u* plain(const std::vector<Zan32s>& a) {
        Zan32u* t = nullptr;
        ok &= zaniHuffmanTableInitAlloc_32s(a.data(), &t) == zanStsOk;
        owned.push_back(t);
        return t;
    }
};

// Which total_zeros table family a block uses.
enum class TzKind { Block4x4, Dc420, Dc422 };

// Writes one block as the standard's encoder does (clause 9.2 read
// backwards).  coeffs: the levels at scan positions 0 .. maxNumCoeff - 1 of
// the coded range.  column: 0..4 a Table 9-5 column, 5 the 6-bit fixed code
// of nC >= 8.  total_zeros is written (when TotalCoeff is below
// coeffs.size()) with tzVlcIndex TotalCoeff + tzOffset of the table family tz
// (offset 0 for ordinary blocks).  Returns false for a level that no code can
// carry.
inline bool write_block(Bits& b, const std::vector<int>& coeffs, int column, TzKind tz,
                        int tzOffset = 0) {
    const int maxNum = static_cast<int>(coeffs.size());
    std::vector<int> levels;  // highest frequency first
    std::vector<int> runs;    // zeros below each level, down to the next level
    int total = 0, last = -1;
    for (int i = maxNum - 1; i >= 0; --i)
        if (coeffs[i]) {
            if (last < 0) last = i;
            ++total;
        }
    int trailing = 0;
    for (int i = maxNum - 1; i >= 0; --i) {
        if (!coeffs[i]) continue;
        levels.push_back(coeffs[i]);
        int r = 0;
        for (int j = i - 1; j >= 0 && !coeffs[j]; --j) ++r;
        runs.push_back(r);
    }
    for (int v : levels) {
        if ((v == 1 || v == -1) && trailing < 3)
            ++trailing;
        else
            break;
    }
    // coeff_token
    if (column == 5) {
        if (total == 0)
            b.put(3, 6);
        else
            b.put(static_cast<Zan32u>(((total - 1) << 2) | trailing), 6);
    } else {
        b.put(kCoeffToken[column][total][trailing]);
    }
    if (total == 0) return true;
    for (int i = 0; i < trailing; ++i) b.put(levels[i] < 0 ? 1u : 0u, 1);
    int suffixLength = (total > 10 && trailing < 3) ? 1 : 0;
    for (int i = trailing; i < total; ++i) {
        const int lv = levels[i];
        long long code = lv > 0 ? 2LL * lv - 2 : -2LL * lv - 1;
        if (i == trailing && trailing < 3) code -= 2;
        if (code < 0) return false;
        int prefix;
        if (suffixLength == 0 && code < 14) {
            b.put(1, static_cast<int>(code) + 1);
        } else if (suffixLength == 0 && code < 30) {
            b.put(1, 15);
            b.put(static_cast<Zan32u>(code - 14), 4);
        } else if (suffixLength > 0 && code < (15LL << suffixLength)) {
            prefix = static_cast<int>(code >> suffixLength);
            b.put(1, prefix + 1);
            b.put(static_cast<Zan32u>(code & ((1 << suffixLength) - 1)), suffixLength);
        } else {
            long long rest = code - (15LL << suffixLength) - (suffixLength == 0 ? 15 : 0);
            if (rest < 4096) {
                b.put(1, 16);  // prefix 15
                b.put(static_cast<Zan32u>(rest), 12);
            } else {
                // prefix p >= 16: rest = 2^(p-3) - 4096 + suffix, suffix < 2^(p-3)
                int p = 16;
                while (rest - ((1LL << (p - 3)) - 4096) >= (1LL << (p - 3))) ++p;
                if (p > 28) return false;
                for (int k = 0; k < p; ++k) b.put(0, 1);
                b.put(1, 1);
                b.put(static_cast<Zan32u>(rest - ((1LL << (p - 3)) - 4096)), p - 3);
            }
        }
        if (suffixLength == 0) suffixLength = 1;
        const long long mag = lv < 0 ? -static_cast<long long>(lv) : lv;
        if (mag > (3LL << (suffixLength - 1)) && suffixLength < 6) ++suffixLength;
    }
    int zerosLeft = last + 1 - total;
    if (total < maxNum) {
        const int idx = total + tzOffset;
        const auto& table = tz == TzKind::Block4x4 ? kTotalZeros4x4 : tz == TzKind::Dc420 ? kTotalZeros420 : kTotalZeros422;
        b.put(table[idx][zerosLeft]);
    }
    for (int i = 0; i < total - 1 && zerosLeft > 0; ++i) {
        b.put(kRunBefore[zerosLeft > 6 ? 7 : zerosLeft][runs[i]]);
        zerosLeft -= runs[i];
    }
    return true;
}

}  // namespace zan::cavlctest
