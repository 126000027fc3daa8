// DV segment decoding and dequantisation through the exported functions:
// statuses, known answers worked out by hand, and segments built by a small
// independent encoder (with the overflow of long blocks into the spare bits
// of other blocks) decoded back.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "zanvc.h"

namespace {

constexpr Zan8u kZigzag[64] = {0,  1,  8,  16, 9,  2,  3,  10, 17, 24, 32, 25, 18, 11, 4,  5,
                               12, 19, 26, 33, 40, 48, 41, 34, 27, 20, 13, 6,  7,  14, 21, 28,
                               35, 42, 49, 56, 57, 50, 43, 36, 29, 22, 15, 23, 30, 37, 44, 51,
                               58, 59, 52, 45, 38, 31, 39, 46, 53, 60, 61, 54, 47, 55, 62, 63};

// Raster position of scan position k in DCT mode 1: the sum field (rows
// 0-3) and the difference field (rows 4-7) alternate.
Zan32s scan248(int k) {
    static constexpr Zan8u kInterleaved[64] = {
        0,  8,  1,  9,  16, 24, 2,  10, 17, 25, 32, 40, 48, 56, 33, 41, 18, 26, 3,  11, 4,  12,
        19, 27, 34, 42, 49, 57, 50, 58, 35, 43, 20, 28, 5,  13, 6,  14, 21, 29, 36, 44, 51, 59,
        52, 60, 37, 45, 22, 30, 7,  15, 23, 31, 38, 46, 53, 61, 54, 62, 39, 47, 55, 63};
    const int e = kInterleaved[k], r = e >> 3, c = e & 7;
    return ((r & 1) ? 4 + (r >> 1) : (r >> 1)) * 8 + c;
}

// Bits as a string of '0' and '1'.
std::string bits(Zan32u v, int n) {
    std::string s;
    for (int i = n - 1; i >= 0; --i) s += ((v >> i) & 1) ? '1' : '0';
    return s;
}

// One coded coefficient of a test block.
struct Coef {
    int pos;  // scan position 1..63
    int amp;  // 1..255
    bool neg;
};

// A test block: header fields, coefficients, and whether it ends with the
// end-of-block code (else an overflowing run code ends it).
struct TestBlock {
    int dc = 0;  // -256..255
    int mode = 0, cls = 0;
    std::vector<Coef> coefs;
    bool eob = true;
    bool endShort = false;  // no closing code: the last coefficient's code passes position 63
};

struct Code {
    std::string bits;
    int step;
    bool store;  // writes a coefficient (level or 0) at the new position
    int level;   // times 64
};

// The codes of a block after its 12 header bits, from the DV code table:
// (0,1) 00s, (0,2) 010s, (1,1) 0111s, (0,3) 1000s, (0,4) 1001s, (2,1)
// 10100s, zero runs 1111110 + run (step run + 1), the long code 1111111 +
// 8 magnitude bits + s, end of block 0110.
std::vector<Code> codes_of(const TestBlock& b) {
    std::vector<Code> out;
    int prev = 0;
    for (const Coef& c : b.coefs) {
        int gap = c.pos - prev - 1;
        const std::string s = c.neg ? "1" : "0";
        const int level = (c.neg ? -c.amp : c.amp) * 64;
        if (gap == 1 && c.amp == 1) {
            out.push_back({"0111" + s, 2, true, level});
        } else if (gap == 2 && c.amp == 1) {
            out.push_back({"10100" + s, 3, true, level});
        } else {
            if (gap > 0) out.push_back({"1111110" + bits(Zan32u(gap - 1), 6), gap, true, 0});
            std::string code;
            if (c.amp == 1) code = "00";
            else if (c.amp == 2) code = "010";
            else if (c.amp == 3) code = "1000";
            else if (c.amp == 4) code = "1001";
            else code = "1111111" + bits(Zan32u(c.amp), 8);
            out.push_back({code + s, 1, true, level});
        }
        prev = c.pos;
    }
    if (b.endShort) return out;
    if (b.eob) out.push_back({"0110", 64, false, 0});
    else out.push_back({"1111110" + bits(63, 6), 64, false, 0});
    return out;
}

// Expected decoding of a block given how many of its code bits the decoder
// can reach (all of them, or only those within its own space).
struct Expect {
    std::array<Zan16s, 64> coef{};
    Zan32u param = 0;
};
Expect expect(const TestBlock& b, Zan32u qno, size_t reachable) {
    Expect e;
    e.coef[0] = Zan16s(b.dc * 128);
    const auto codes = codes_of(b);
    size_t used = 0;
    int pos = 0, last = 0;
    bool ended = false, eob = false;
    for (const Code& c : codes) {
        if (used + c.bits.size() > reachable) break;
        used += c.bits.size();
        pos += c.step;
        if (pos >= 64) {
            ended = true;
            eob = c.bits == "0110";
            break;
        }
        last = pos;
        e.coef[size_t(b.mode ? scan248(pos) : kZigzag[pos])] = Zan16s(c.level);
    }
    (void)ended;
    e.param = (eob ? 1u : 0u) | Zan32u(b.cls << 4) | Zan32u(b.mode << 6) | Zan32u(last << 8) | (qno << 16);
    return e;
}

// Builds a segment: each block's bits in its own space, then the overflow
// of a macroblock's blocks, in order, into the free space of the same
// macroblock's blocks, in order, then what is left into the free space left
// anywhere in the segment.  Returns false when the segment cannot hold the
// bits.  own[i] receives the number of block i's code bits in its space.
bool build_segment(const std::vector<TestBlock>& blocks, int bpm, const Zan32u* qno, std::vector<Zan8u>& seg,
                   std::vector<size_t>& own) {
    static constexpr int kLen6[6] = {14, 14, 14, 14, 10, 10};
    static constexpr int kLen8[8] = {10, 10, 10, 10, 10, 10, 8, 8};
    const int* len = bpm == 6 ? kLen6 : kLen8;
    const int n = 5 * bpm;
    std::vector<std::string> space(static_cast<size_t>(n));  // bits placed in each block's space
    std::vector<std::string> over(static_cast<size_t>(n));   // bits still to place
    own.assign(size_t(n), 0);
    for (int i = 0; i < n; ++i) {
        std::string all;
        for (const Code& c : codes_of(blocks[size_t(i)])) all += c.bits;
        const size_t cap = size_t(len[i % bpm] * 8 - 12);
        space[size_t(i)] = all.substr(0, cap);
        own[size_t(i)] = space[size_t(i)].size();
        if (all.size() > cap) over[size_t(i)] = all.substr(cap);
    }
    auto pour = [&](int first, int last) {
        std::string pending;
        for (int i = first; i < last; ++i) pending += over[size_t(i)], over[size_t(i)].clear();
        for (int i = first; i < last && !pending.empty(); ++i) {
            const size_t cap = size_t(len[i % bpm] * 8 - 12);
            const size_t room = cap - space[size_t(i)].size();
            // Only blocks whose own codes fitted have free space.
            bool fits = true;
            std::string all;
            for (const Code& c : codes_of(blocks[size_t(i)])) all += c.bits;
            if (all.size() > cap) fits = false;
            if (!fits || room == 0) continue;
            const size_t take = std::min(room, pending.size());
            space[size_t(i)] += pending.substr(0, take);
            pending.erase(0, take);
        }
        return pending;
    };
    std::vector<std::string> left(5);
    for (int m = 0; m < 5; ++m) left[size_t(m)] = pour(m * bpm, (m + 1) * bpm);
    // Segment pass: the rest, in macroblock order, into any free space.
    std::string pending;
    for (auto& l : left) pending += l;
    for (int i = 0; i < n && !pending.empty(); ++i) {
        std::string all;
        for (const Code& c : codes_of(blocks[size_t(i)])) all += c.bits;
        const size_t cap = size_t(len[i % bpm] * 8 - 12);
        if (all.size() > cap) continue;
        const size_t room = cap - space[size_t(i)].size();
        const size_t take = std::min(room, pending.size());
        space[size_t(i)] += pending.substr(0, take);
        pending.erase(0, take);
    }
    if (!pending.empty()) return false;
    seg.assign(400, 0);
    for (int m = 0; m < 5; ++m) {
        Zan8u* dif = seg.data() + 80 * m;
        dif[0] = 0x90;  // a video DIF block header
        dif[3] = Zan8u(0xA0 | qno[m]);
        int byte = 4;
        for (int j = 0; j < bpm; ++j) {
            const TestBlock& b = blocks[size_t(m * bpm + j)];
            std::string all = bits(Zan32u(b.dc) & 511u, 9) + bits(Zan32u(b.mode), 1) + bits(Zan32u(b.cls), 2) +
                              space[size_t(m * bpm + j)];
            all.resize(size_t(len[j] * 8), '0');
            for (int k = 0; k < len[j]; ++k) dif[byte + k] = Zan8u(std::stoi(all.substr(size_t(8 * k), 8), nullptr, 2));
            byte += len[j];
        }
    }
    return true;
}

TestBlock random_block(std::mt19937& g, int maxCoefs) {
    TestBlock b;
    b.dc = int(g() % 512) - 256;
    b.mode = int(g() % 2);
    b.cls = int(g() % 4);
    const int count = maxCoefs ? int(g() % unsigned(maxCoefs + 1)) : 0;
    int pos = 0;
    for (int k = 0; k < count; ++k) {
        pos += 1 + int(g() % 4);
        if (pos > 63) break;
        const unsigned r = g() % 10;
        const int amp = r < 4 ? 1 : r < 6 ? 2 : r < 7 ? 3 : r < 8 ? 4 : 5 + int(g() % 251);
        b.coefs.push_back({pos, amp, bool(g() % 2)});
    }
    b.eob = g() % 8 != 0;
    return b;
}

// A block of short codes only (steps of 1 to 3, amplitudes 1 to 4), so
// that most codes come two to a look-up; one in six runs past position
// 63 with such a code instead of closing with a code of their own.
TestBlock dense_block(std::mt19937& g, int maxCoefs) {
    TestBlock b;
    b.dc = int(g() % 512) - 256;
    b.mode = int(g() % 2);
    b.cls = int(g() % 4);
    b.endShort = g() % 6 == 0;
    const int count = b.endShort ? 64 : int(g() % unsigned(maxCoefs + 1));
    int pos = b.endShort ? 64 - int(g() % 24) : 0;
    if (b.endShort) {
        // Start far enough that the block is short, then step past 63.
        pos = std::max(0, pos - 3 * maxCoefs);
    }
    for (int k = 0; k < count; ++k) {
        const int step = 1 + int(g() % 3);
        if (pos + step > 63 && !b.endShort) break;
        pos += step;
        // The code that passes 63 must be a single code (amplitude 1 for a
        // step of 2 or 3), else a run code would end the block before it.
        b.coefs.push_back({pos, pos > 63 ? 1 : 1 + int(g() % 4), bool(g() % 2)});
        if (pos > 63) break;
    }
    if (b.endShort && (b.coefs.empty() || b.coefs.back().pos <= 63)) b.endShort = false;
    return b;
}

using DecodeFn = ZanStatus (*)(const Zan8u*, const Zan32u*, const Zan32u*, Zan16s*, Zan32u*);
using BlockFn = TestBlock (*)(std::mt19937&, int);

// Encodes random segments, decodes them, and compares every block.
void round_trip(DecodeFn fn, int bpm, bool onePass, int maxCoefs, unsigned seed, int* overflowing, int* ran,
                BlockFn make = random_block) {
    std::mt19937 g(seed);
    const int n = 5 * bpm;
    for (int trial = 0; trial < 60; ++trial) {
        std::vector<TestBlock> blocks;
        for (int i = 0; i < n; ++i) blocks.push_back(make(g, (i + trial) % 7 == 0 ? maxCoefs * 3 : maxCoefs));
        Zan32u qno[5];
        for (auto& q : qno) q = g() % 16;
        std::vector<Zan8u> seg;
        std::vector<size_t> own;
        if (!build_segment(blocks, bpm, qno, seg, own)) continue;
        ++*ran;
        std::vector<Zan16s> coef(size_t(64 * n), 0);
        std::vector<Zan32u> param(size_t(n), 0xDEADBEEF);
        ASSERT_EQ(zanStsOk, fn(seg.data(), nullptr, nullptr, coef.data(), param.data()));
        for (int i = 0; i < n; ++i) {
            std::string all;
            for (const Code& c : codes_of(blocks[size_t(i)])) all += c.bits;
            if (all.size() > own[size_t(i)]) ++*overflowing;
            const Expect e = expect(blocks[size_t(i)], qno[i / bpm], onePass ? own[size_t(i)] : all.size());
            ASSERT_EQ(e.param, param[size_t(i)]) << "trial " << trial << " block " << i;
            for (int k = 0; k < 64; ++k)
                ASSERT_EQ(e.coef[size_t(k)], coef[size_t(64 * i + k)]) << "trial " << trial << " block " << i << " at " << k;
        }
    }
}

TEST(DvDecode, ThreePassRoundTripWithOverflow) {
    int over = 0, ran = 0;
    round_trip(zaniHuffmanDecodeSegment_DV_8u16s, 6, false, 7, 1, &over, &ran);
    EXPECT_GT(ran, 40);
    EXPECT_GT(over, 20);  // the overflow paths were exercised
}

TEST(DvDecode, Dv100RoundTripWithOverflow) {
    int over = 0, ran = 0;
    round_trip(zaniHuffmanDecodeSegment_DV100_8u16s, 8, false, 5, 2, &over, &ran);
    EXPECT_GT(ran, 40);
    EXPECT_GT(over, 20);
}

// Short codes two to a look-up: blocks ending on the first or the second
// code of a pair, by the end-of-block code or by passing position 63, in
// their own bits and in bits of other blocks.
TEST(DvDecode, DenseShortCodesRoundTrip) {
    int over = 0, ran = 0;
    round_trip(zaniHuffmanDecodeSegment_DV_8u16s, 6, false, 5, 4, &over, &ran, dense_block);
    round_trip(zaniHuffmanDecodeSegment_DV100_8u16s, 8, false, 3, 5, &over, &ran, dense_block);
    round_trip(zaniHuffmanDecodeSegmentOnePass_DV_8u16s, 6, true, 5, 6, &over, &ran, dense_block);
    EXPECT_GT(ran, 90);
    EXPECT_GT(over, 60);
}

TEST(DvDecode, OnePassLeavesOverflowingBlocksShort) {
    int over = 0, ran = 0;
    round_trip(zaniHuffmanDecodeSegmentOnePass_DV_8u16s, 6, true, 7, 3, &over, &ran);
    EXPECT_GT(ran, 40);
    EXPECT_GT(over, 20);
}

// Block 0 of an otherwise empty segment: DC 5, class 2, DCT mode 0, then
// +1 at scan 1 (000), -2 at scan 2 (0101), end of block.
TEST(DvDecode, KnownBlock) {
    std::vector<Zan8u> seg(400, 0);
    for (int m = 0; m < 5; ++m) {
        seg[size_t(80 * m + 3)] = Zan8u(m + 3);
        // Every block: DC 0, mode 0, class 0, end of block right away.
        int byte = 4;
        for (int len : {14, 14, 14, 14, 10, 10}) {
            seg[size_t(80 * m + byte + 1)] = 0x06;  // 0110 right after the 12 header bits
            byte += len;
        }
    }
    // 000000101 0 10 | 000 0101 0110 -> 0000 0010 1010 0000 1010 1100
    seg[4] = 0x02;
    seg[5] = 0xA0;
    seg[6] = 0xAC;
    std::vector<Zan16s> coef(30 * 64, 0);
    std::vector<Zan32u> param(30, 0);
    ASSERT_EQ(zanStsOk, zaniHuffmanDecodeSegment_DV_8u16s(seg.data(), nullptr, nullptr, coef.data(), param.data()));
    EXPECT_EQ(640, coef[0]);
    EXPECT_EQ(64, coef[1]);
    EXPECT_EQ(-128, coef[8]);
    EXPECT_EQ(Zan32u(1 | (2 << 4) | (2 << 8) | (3 << 16)), param[0]);
    EXPECT_EQ(Zan32u(1 | (3 << 16)), param[1]);
    EXPECT_EQ(Zan32u(1 | (7 << 16)), param[29]);
    for (int i = 1; i < 30; ++i)
        for (int k = 0; k < 64; ++k) ASSERT_EQ(0, coef[size_t(64 * i + k)]);
}

// A negative DC: the top 16 bits masked with 0xFF80; the long code's sign;
// a zero-run code that passes position 63 ends the block with bit 0 clear.
TEST(DvDecode, NegativeDcLongCodeAndOverrun) {
    std::vector<Zan8u> seg(400, 0);
    for (int m = 0; m < 5; ++m) {
        int byte = 4;
        for (int len : {14, 14, 14, 14, 10, 10}) {
            seg[size_t(80 * m + byte + 1)] = 0x06;
            byte += len;
        }
    }
    // DC -3 (111111101), mode 1, class 3: 1111 1110 1111 = FE F
    // then long code 1111111 00110010 1 (-50 at scan 1), then 1111110 111111
    // (step 64).  Bits after the header: 1111111001100101 1111110111111
    std::string b = "111111101" "1" "11" "1111111001100101" "1111110111111";
    b.resize(112, '0');
    for (int k = 0; k < 14; ++k) seg[size_t(4 + k)] = Zan8u(std::stoi(b.substr(size_t(8 * k), 8), nullptr, 2));
    std::vector<Zan16s> coef(30 * 64, 0);
    std::vector<Zan32u> param(30, 0);
    ASSERT_EQ(zanStsOk, zaniHuffmanDecodeSegment_DV_8u16s(seg.data(), nullptr, nullptr, coef.data(), param.data()));
    EXPECT_EQ(Zan16s(0xFEF0 & 0xFF80), coef[0]);
    EXPECT_EQ(-3 * 128, coef[0]);
    EXPECT_EQ(-50 * 64, coef[32]);  // scan position 1 of mode 1 is raster 32
    EXPECT_EQ(Zan32u((3 << 4) | (1 << 6) | (1 << 8)), param[0]);
}

// Codes of 10 to 13 bits (the second step of the table look-up): every code
// that does not end the block stores its level, zero-amplitude run codes
// included, and no other position is touched.
TEST(DvDecode, LongerCodesStoreTheirLevels) {
    std::vector<Zan8u> seg(400, 0);
    for (int m = 0; m < 5; ++m) {
        int byte = 4;
        for (int len : {14, 14, 14, 14, 10, 10}) {
            seg[size_t(80 * m + byte + 1)] = 0x06;
            byte += len;
        }
    }
    // Header: DC 0, mode 0, class 1.  Then run 1 amplitude 0 (11 bits,
    // scan 2), run 2 amplitude 11 negative (12 + 1 bits, scan 5), run 1
    // amplitude 9 positive (10 + 1 bits, scan 7), run 6 amplitude 0 (13
    // bits, scan 14), end of block.
    std::string b = "000000000" "0" "01" "11111001111" "111110111100" "1" "1111100100" "0"
                    "1111110000110" "0110";
    b.resize(112, '0');
    for (int k = 0; k < 14; ++k) seg[size_t(4 + k)] = Zan8u(std::stoi(b.substr(size_t(8 * k), 8), nullptr, 2));
    std::vector<Zan16s> coef(30 * 64, 0x1234);
    std::vector<Zan32u> param(30, 0);
    ASSERT_EQ(zanStsOk, zaniHuffmanDecodeSegment_DV_8u16s(seg.data(), nullptr, nullptr, coef.data(), param.data()));
    EXPECT_EQ(0, coef[0]);
    EXPECT_EQ(0, coef[kZigzag[2]]);
    EXPECT_EQ(-11 * 64, coef[kZigzag[5]]);
    EXPECT_EQ(9 * 64, coef[kZigzag[7]]);
    EXPECT_EQ(0, coef[kZigzag[14]]);
    for (int k = 1; k < 64; ++k) {
        if (k != 2 && k != 5 && k != 7 && k != 14) {
            EXPECT_EQ(0x1234, coef[kZigzag[k]]) << k;
        }
    }
    EXPECT_EQ(Zan32u(1 | (1 << 4) | (14 << 8)), param[0]);
}

// An end-of-block code that straddles the end of an unfinished block and
// the spare bits of the next block.
TEST(DvDecode, EndOfBlockAcrossBlocks) {
    std::vector<Zan8u> seg(400, 0);
    for (int m = 0; m < 5; ++m) {
        int byte = 4;
        for (int len : {14, 14, 14, 14, 10, 10}) {
            seg[size_t(80 * m + byte + 1)] = 0x06;
            byte += len;
        }
    }
    // Block 0: 33 codes of (0,1) (99 bits) and the first bit of the end of
    // block fill its 100 bits; block 1 ends at once and holds the other 3.
    std::string b0;
    b0 = "000000000" "0" "00";
    for (int k = 0; k < 33; ++k) b0 += (k % 2) ? "001" : "000";  // 99 bits
    const std::string eob = "0110";
    b0 += eob.substr(0, 1);  // 100 bits: space full, end of block cut after its first bit
    std::string b1 = "000000000" "0" "00" "0110" + eob.substr(1);
    b1.resize(112, '0');
    for (int k = 0; k < 14; ++k) {
        seg[size_t(4 + k)] = Zan8u(std::stoi(b0.substr(size_t(8 * k), 8), nullptr, 2));
        seg[size_t(18 + k)] = Zan8u(std::stoi(b1.substr(size_t(8 * k), 8), nullptr, 2));
    }
    std::vector<Zan16s> coef(30 * 64, 0);
    std::vector<Zan32u> param(30, 0), one(30, 0);
    ASSERT_EQ(zanStsOk, zaniHuffmanDecodeSegment_DV_8u16s(seg.data(), nullptr, nullptr, coef.data(), param.data()));
    EXPECT_EQ(Zan32u(1 | (33 << 8)), param[0]);
    EXPECT_EQ(Zan32u(1), param[1]);
    for (int k = 1; k <= 33; ++k) ASSERT_EQ((k % 2) ? 64 : -64, coef[kZigzag[k]]) << k;
    std::vector<Zan16s> coef1(30 * 64, 0);
    ASSERT_EQ(zanStsOk, zaniHuffmanDecodeSegmentOnePass_DV_8u16s(seg.data(), nullptr, nullptr, coef1.data(), one.data()));
    EXPECT_EQ(Zan32u(33 << 8), one[0]);  // unfinished: bit 0 clear, the same coefficients
    EXPECT_EQ(coef, coef1);
}

TEST(DvDecode, NullPointers) {
    std::vector<Zan8u> seg(400, 0);
    std::vector<Zan16s> coef(40 * 64, 7);
    std::vector<Zan32u> param(40, 7);
    for (DecodeFn fn : {zaniHuffmanDecodeSegment_DV_8u16s, zaniHuffmanDecodeSegmentOnePass_DV_8u16s,
                        zaniHuffmanDecodeSegment_DV100_8u16s}) {
        EXPECT_EQ(zanStsNullPtr, fn(nullptr, nullptr, nullptr, coef.data(), param.data()));
        EXPECT_EQ(zanStsNullPtr, fn(seg.data(), nullptr, nullptr, nullptr, param.data()));
        EXPECT_EQ(zanStsNullPtr, fn(seg.data(), nullptr, nullptr, coef.data(), nullptr));
    }
    for (auto v : coef) ASSERT_EQ(7, v);
    for (auto v : param) ASSERT_EQ(7u, v);
    Zan16s t[64] = {};
    EXPECT_EQ(zanStsNullPtr, zaniQuantInv_DV_16s_C1I(nullptr, t));
    EXPECT_EQ(zanStsNullPtr, zaniQuantInv_DV_16s_C1I(t, nullptr));
    EXPECT_EQ(zanStsNullPtr, zaniQuantWeightBlockInv_DV_16s_C1I(t, t, nullptr));
    EXPECT_EQ(zanStsNullPtr, zaniQuantWeightBlockInv_DV_16s_C1I(nullptr, t, t));
    EXPECT_EQ(zanStsNullPtr, zaniQuantWeightBlockInv_DV100_16s_C1I(t, nullptr, 1));
    EXPECT_EQ(zanStsNullPtr, zaniQuantWeightBlockInv_DV100_16s_C1I(nullptr, t, 1));
    Zan32s desc[8] = {1, 0, 0, 0};
    Zan32u* table = nullptr;
    EXPECT_EQ(zanStsNullPtr, zaniInitAllocHuffmanTable_DV_32u(nullptr, desc, &table));
    EXPECT_EQ(zanStsNullPtr, zaniInitAllocHuffmanTable_DV_32u(desc, desc, nullptr));
    EXPECT_EQ(zanStsNullPtr, zaniFreeHuffmanTable_DV_32u(nullptr));
}

TEST(DvDecode, BuiltTable) {
    // First level b = 3: length 2, code 01, step 2, level -3.
    const Zan32s level1[] = {3, 0, 0, /*L1*/ 0, /*L2*/ 1, 1, 2, -3, /*L3*/ 1, 7, 9, 1};
    // Second level b = 2: length 1, code 1, step 5, level 1.
    const Zan32s level2[] = {2, 0, 0, /*L1*/ 1, 1, 5, 1, /*L2*/ 0};
    Zan32u* t = nullptr;
    ASSERT_EQ(zanStsOk, zaniInitAllocHuffmanTable_DV_32u(level1, level2, &t));
    ASSERT_NE(nullptr, t);
    const Zan32u lvlm3 = Zan32u(Zan16u(-192)) << 16;
    const Zan32u want[12] = {255, 255, 2 | (2 << 8) | lvlm3, 2 | (2 << 8) | lvlm3, 255, 255, 255, 3 | (9 << 8) | (64u << 16),
                             255, 255, 5 | (5 << 8) | (64u << 16), 5 | (5 << 8) | (64u << 16)};
    for (int i = 0; i < 12; ++i) EXPECT_EQ(want[i], t[i]) << i;
    EXPECT_EQ(zanStsOk, zaniFreeHuffmanTable_DV_32u(t));
    const Zan32s bad[] = {40, 0, 0};
    Zan32u* keep = reinterpret_cast<Zan32u*>(&t);
    Zan32u* before = keep;
    EXPECT_EQ(zanStsNoMem, zaniInitAllocHuffmanTable_DV_32u(bad, level2, &keep));
    EXPECT_EQ(before, keep);
}

TEST(DvDecode, DequantKnownAnswers) {
    alignas(16) Zan16s x[64] = {}, t[64], w[64];
    for (int i = 0; i < 64; ++i) t[i] = 1000, w[i] = 10;
    x[0] = 100;
    x[1] = -100;
    x[2] = 32767;
    t[2] = 32767;
    ASSERT_EQ(zanStsOk, zaniQuantInv_DV_16s_C1I(x, t));
    EXPECT_EQ(4, x[0]);       // (100000 >> 16) << 2
    EXPECT_EQ(-8, x[1]);      // -100000 >> 16 = -2
    EXPECT_EQ(-4, x[2]);      // 16383 << 2 wraps to -4
    Zan16s y[64] = {}, a[64], b[64];
    for (int i = 0; i < 64; ++i) a[i] = 3, b[i] = 16384;
    y[0] = 640;   // >> 3 = 80, * 3 = 240, * 16384 >> 16 = 60
    y[1] = -9;    // >> 3 = -2, * 3 = -6, -> -2 (floor of -1.5)
    y[2] = 32767; a[2] = 16;  // 4095 * 16 = 65520 -> low 16 bits -16 -> -4
    ASSERT_EQ(zanStsOk, zaniQuantWeightBlockInv_DV_16s_C1I(y, a, b));
    EXPECT_EQ(60, y[0]);
    EXPECT_EQ(-2, y[1]);
    EXPECT_EQ(-4, y[2]);
    Zan16s z[64] = {};
    z[0] = -33;   // DC >> 5 = -2
    z[1] = 6400;  // 100 * 3 = 300, * 10 >> 5 = 93
    z[2] = 32767; w[2] = 32767;  // 511 * 3 = 1533 * 32767 >> 5 = 1569795 -> 32767
    z[3] = -32768; w[3] = 32767;  // -512 * 3 * 32767 >> 5 -> -32768
    ASSERT_EQ(zanStsOk, zaniQuantWeightBlockInv_DV100_16s_C1I(z, w, 3));
    EXPECT_EQ(-2, z[0]);
    EXPECT_EQ(93, z[1]);
    EXPECT_EQ(32767, z[2]);
    EXPECT_EQ(-32768, z[3]);
    Zan16s q[64] = {};
    q[1] = 64 * 200;  // 200 * 400 = 80000 -> low 16 bits 14464, * 10 >> 5 = 4520
    ASSERT_EQ(zanStsOk, zaniQuantWeightBlockInv_DV100_16s_C1I(q, w, 400));
    EXPECT_EQ(4520, q[1]);
}

}  // namespace
