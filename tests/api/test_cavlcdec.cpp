// H.264 CAVLC and Exp-Golomb decoding through the exported functions.
//
// An independent writer (api/cavlc_tables.h, the standard's encoding rules
// and code tables) codes random blocks of every shape and table class; the
// decoders must give each block back and leave the cursor where the writer
// ended.  Known answers cover Exp-Golomb values and long codes, the level
// escapes at their limits, invalid codes with the cursor rules of each form,
// the chroma DC fast path and the statuses in their order.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "api/cavlc_tables.h"
#include "zanvc.h"

namespace {

using namespace zan::cavlctest;
using zan::mpeg12test::pos;

// 4x4 zigzag positions by scan index, with a 17th entry for damaged AC
// streams (never reached here).
const Zan32s kZigzag4x4[17] = {0, 1, 4, 8, 5, 2, 3, 6, 9, 12, 13, 10, 7, 11, 14, 15, 0};
// 4x4 field scan.
const Zan32s kField4x4[17] = {0, 4, 1, 8, 12, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15, 0};

// A random level: mostly small, sometimes large.
int random_level(std::mt19937& rng, int maxMag) {
    int mag;
    switch (rng() % 8) {
        case 0: mag = 1 + static_cast<int>(rng() % static_cast<unsigned>(maxMag)); break;
        case 1: mag = 1 + static_cast<int>(rng() % 64u); break;
        case 2: mag = 4 + static_cast<int>(rng() % 8u); break;
        default: mag = 1 + static_cast<int>(rng() % 3u); break;
    }
    if (mag > maxMag) mag = maxMag;
    return rng() % 2 ? mag : -mag;
}

// count levels at random places among n scan positions.
std::vector<int> random_coeffs(std::mt19937& rng, int n, int count, int maxMag) {
    std::vector<int> c(static_cast<std::size_t>(n), 0);
    std::vector<int> idx(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) idx[static_cast<std::size_t>(i)] = i;
    std::shuffle(idx.begin(), idx.end(), rng);
    for (int i = 0; i < count; ++i) c[static_cast<std::size_t>(idx[static_cast<std::size_t>(i)])] = random_level(rng, maxMag);
    return c;
}

// A count of coefficients: empty, sparse, typical or dense.
int random_count(std::mt19937& rng, int n) {
    switch (rng() % 5) {
        case 0: return 0;
        case 1: return n;
        case 2: {
            const int c = 1 + static_cast<int>(rng() % 2u);
            return c > n ? n : c;
        }
        default: return static_cast<int>(rng() % static_cast<unsigned>(n + 1));
    }
}

// The table column of a uVLCSelect value: 0..2 the classes, 5 the fixed code.
int column_of(Zan32u sel) { return sel < 2 ? 0 : sel < 4 ? 1 : sel < 8 ? 2 : 5; }

// ------------------------------------------------------------ the tables

TEST(CavlcTables, CodeListsArePrefixFreeAndBuild) {
    auto check = [](const std::vector<std::string>& codes, const char* what, int i) {
        double kraft = 0;
        for (std::size_t a = 0; a < codes.size(); ++a) {
            kraft += 1.0 / static_cast<double>(1u << codes[a].size());
            for (std::size_t b = 0; b < codes.size(); ++b)
                if (a != b) {
                    EXPECT_NE(codes[b].rfind(codes[a], 0), 0u) << what << " " << i << ": " << codes[a] << " prefixes " << codes[b];
                }
        }
        EXPECT_LE(kraft, 1.0) << what << " " << i;
    };
    for (int col = 0; col < 5; ++col) {
        std::vector<std::string> codes;
        for (int total = 0; total <= kTokenMaxTotal[col]; ++total)
            for (int t = 0; t < 4; ++t)
                if (const char* c = kCoeffToken[col][total][t]) {
                    codes.push_back(c);
                    EXPECT_LE(t, total);
                }
        EXPECT_EQ(codes.size(), col == 3 ? 14u : col == 4 ? 30u : 62u);
        check(codes, "coeff_token column", col);
    }
    for (const auto* fam : {&kTotalZeros4x4, &kTotalZeros420, &kTotalZeros422, &kRunBefore})
        for (std::size_t i = 1; i < fam->size(); ++i) {
            std::vector<std::string> codes((*fam)[i].begin(), (*fam)[i].end());
            check(codes, "value table", static_cast<int>(i));
        }
    for (int w = 0; w < 3; ++w) {
        Tables t(w);
        EXPECT_TRUE(t.ok);
    }
}

// ------------------------------------------------------------ round trips

template <class OutT>
ZanStatus decode4x4(Zan32u** p, Zan32s* off, Zan16s* num, OutT** out, Zan32u sel, Zan16s limit, const Tables& t,
                    const Zan32s* scan) {
    if constexpr (sizeof(OutT) == 2)
        return zaniDecodeCAVLCCoeffs_H264_1u16s(p, off, num, out, sel, limit, t.token, t.tz4x4, t.rb, scan);
    else
        return zaniDecodeCAVLCCoeffs_H264_1u32s(p, off, num, out, sel, limit, t.token, t.tz4x4, t.rb, scan);
}

template <class OutT>
void round_trip_4x4(int widthSet, unsigned seed) {
    std::mt19937 rng(seed);
    Tables t(widthSet);
    ASSERT_TRUE(t.ok);
    const int maxMag = sizeof(OutT) == 2 ? 32767 : (1 << 22);
    for (int round = 0; round < 60; ++round) {
        struct Blk {
            std::vector<int> coeffs;
            Zan32u sel;
            Zan16s limit;
            const Zan32s* scan;
        };
        std::vector<Blk> blocks;
        Bits b;
        const int lead = static_cast<int>(rng() % 32u);  // start anywhere in a word
        b.put(0, lead);
        for (int k = 0; k < 24; ++k) {
            Blk blk;
            const Zan32u sels[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 200};
            blk.sel = sels[rng() % 11u];
            blk.limit = rng() % 3 ? 16 : 15;
            blk.scan = rng() % 2 ? kZigzag4x4 : kField4x4;
            blk.coeffs = random_coeffs(rng, blk.limit, random_count(rng, blk.limit), maxMag);
            ASSERT_TRUE(write_block(b, blk.coeffs, column_of(blk.sel), TzKind::Block4x4));
            blocks.push_back(blk);
        }
        const int endBit = b.n;
        std::vector<OutT> out(16 * blocks.size() + 16, static_cast<OutT>(0x5A5A));
        Zan32u* p = b.w.data();
        Zan32s off = 31 - lead;
        OutT* o = out.data();
        for (const Blk& blk : blocks) {
            Zan16s num = -1;
            OutT* const before = o;
            ASSERT_EQ(decode4x4(&p, &off, &num, &o, blk.sel, blk.limit, t, blk.scan), zanStsOk)
                << "sel " << blk.sel << " limit " << blk.limit << " coeffs " << ::testing::PrintToString(blk.coeffs);
            const int total = static_cast<int>(std::count_if(blk.coeffs.begin(), blk.coeffs.end(), [](int v) { return v != 0; }));
            ASSERT_EQ(num, total);
            if (total == 0) {
                ASSERT_EQ(o, before);
                ASSERT_EQ(before[0], static_cast<OutT>(0x5A5A));  // nothing written
                continue;
            }
            ASSERT_EQ(o, before + 16);
            OutT expect[16] = {};
            const int base = 16 - blk.limit;
            for (int i = 0; i < blk.limit; ++i) expect[blk.scan[i + base]] = static_cast<OutT>(blk.coeffs[static_cast<std::size_t>(i)]);
            for (int i = 0; i < 16; ++i) ASSERT_EQ(before[i], expect[i]) << "element " << i << " limit " << blk.limit << " sel " << blk.sel;
        }
        EXPECT_EQ(pos(b.w.data(), p, off), endBit);
    }
}

TEST(Cavlc, RoundTrip4x4Blocks16) {
    for (int w = 0; w < 3; ++w) round_trip_4x4<Zan16s>(w, 11u + static_cast<unsigned>(w));
}
TEST(Cavlc, RoundTrip4x4Blocks32) {
    for (int w = 0; w < 3; ++w) round_trip_4x4<Zan32s>(w, 21u + static_cast<unsigned>(w));
}

template <class OutT>
ZanStatus decode_dc(bool is422, Zan32u** p, Zan32s* off, Zan16s* num, OutT** out, const Tables& t) {
    if constexpr (sizeof(OutT) == 2) {
        return is422 ? zaniDecodeCAVLCChroma422DcCoeffs_H264_1u16s(p, off, num, out, t.tokenDc422, t.tz422, t.rb)
                     : zaniDecodeCAVLCChromaDcCoeffs_H264_1u16s(p, off, num, out, t.tokenDc420, t.tz420, t.rb);
    } else {
        return is422 ? zaniDecodeCAVLCChroma422DcCoeffs_H264_1u32s(p, off, num, out, t.tokenDc422, t.tz422, t.rb)
                     : zaniDecodeCAVLCChromaDcCoeffs_H264_1u32s(p, off, num, out, t.tokenDc420, t.tz420, t.rb);
    }
}

template <class OutT>
void round_trip_dc(bool is422, unsigned seed) {
    std::mt19937 rng(seed);
    Tables t(static_cast<int>(seed % 3));
    ASSERT_TRUE(t.ok);
    const int n = is422 ? 8 : 4;
    const int maxMag = sizeof(OutT) == 2 ? 32767 : (1 << 22);
    // Raster element of scan position k.
    const int raster422[8] = {0, 2, 1, 4, 6, 3, 5, 7};
    for (int round = 0; round < 80; ++round) {
        std::vector<std::vector<int>> blocks;
        Bits b;
        const int lead = static_cast<int>(rng() % 32u);
        b.put(0, lead);
        for (int k = 0; k < 32; ++k) {
            // Many single +-1 blocks, so that the fast path is met often.
            std::vector<int> c = rng() % 3 == 0 ? random_coeffs(rng, n, 1, 1) : random_coeffs(rng, n, random_count(rng, n), maxMag);
            ASSERT_TRUE(write_block(b, c, is422 ? 4 : 3, is422 ? TzKind::Dc422 : TzKind::Dc420));
            blocks.push_back(c);
        }
        const int endBit = b.n;
        std::vector<OutT> out(static_cast<std::size_t>(n) * blocks.size() + 8, static_cast<OutT>(0x3C3C));
        Zan32u* p = b.w.data();
        Zan32s off = 31 - lead;
        OutT* o = out.data();
        for (const auto& c : blocks) {
            Zan16s num = -1;
            OutT* const before = o;
            ASSERT_EQ(decode_dc(is422, &p, &off, &num, &o, t), zanStsOk);
            const int total = static_cast<int>(std::count_if(c.begin(), c.end(), [](int v) { return v != 0; }));
            ASSERT_EQ(num, total);
            if (total == 0) {
                ASSERT_EQ(o, before);
                ASSERT_EQ(before[0], static_cast<OutT>(0x3C3C));
                continue;
            }
            ASSERT_EQ(o, before + n);
            for (int k = 0; k < n; ++k)
                ASSERT_EQ(before[is422 ? raster422[k] : k], static_cast<OutT>(c[static_cast<std::size_t>(k)])) << "scan " << k;
        }
        EXPECT_EQ(pos(b.w.data(), p, off), endBit);
    }
}

TEST(Cavlc, RoundTripChromaDc420) {
    round_trip_dc<Zan16s>(false, 31);
    round_trip_dc<Zan32s>(false, 32);
}
TEST(Cavlc, RoundTripChromaDc422) {
    round_trip_dc<Zan16s>(true, 41);
    round_trip_dc<Zan32s>(true, 42);
}

// The index form's token remap, seen from the writer: the tokens of a class
// ordered by their codes as bit strings (1 before 01 before 001 ...), and
// the code a token of a range of n positions is sent with.
std::string remapped_code(int column, int n, int total, int t) {
    const int tableCol = column == 5 ? 2 : column;  // the fixed code ranks like tables 4..7
    struct Tok {
        std::string code;
        int total, t;
    };
    std::vector<Tok> all;
    for (int tot = 0; tot <= 16; ++tot)
        for (int tt = 0; tt < 4; ++tt)
            if (const char* c = kCoeffToken[tableCol][tot][tt]) all.push_back({c, tot, tt});
    std::stable_sort(all.begin(), all.end(), [](const Tok& a, const Tok& b) {
        std::string x = a.code, y = b.code;
        x.resize(16, '0');
        y.resize(16, '0');
        return x > y;
    });
    int rank = -1, count = 0;
    for (const Tok& k : all) {
        if (k.total <= n && k.t <= std::min(n, 3)) {
            if (k.total == total && k.t == t) rank = count;
            ++count;
        }
    }
    EXPECT_GE(rank, 0);
    const Tok& sent = all[static_cast<std::size_t>(rank)];
    if (column == 5) {
        std::string s;
        const int v = sent.total == 0 ? 3 : ((sent.total - 1) << 2) | sent.t;
        for (int i = 5; i >= 0; --i) s += ((v >> i) & 1) ? '1' : '0';
        return s;
    }
    return sent.code;
}

TEST(Cavlc, RoundTripIndexForm) {
    std::mt19937 rng(51);
    Tables t(1);
    ASSERT_TRUE(t.ok);
    for (int round = 0; round < 2000; ++round) {
        const int first = static_cast<int>(rng() % 16u);
        const int last = first + static_cast<int>(rng() % static_cast<unsigned>(16 - first));
        const int n = last - first + 1;
        const Zan32u sels[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 33};
        const Zan32u sel = sels[rng() % 10u];
        const int col = column_of(sel);
        std::vector<int> coeffs = random_coeffs(rng, n, random_count(rng, n), 3000);
        const int total = static_cast<int>(std::count_if(coeffs.begin(), coeffs.end(), [](int v) { return v != 0; }));
        // The writer with the remapped token: write the block to learn T and
        // the rest, then splice in the token code of the range.
        Bits plain;
        ASSERT_TRUE(write_block(plain, coeffs, col == 5 ? 5 : col, n < 5 ? TzKind::Dc420 : n <= 8 ? TzKind::Dc422 : TzKind::Block4x4,
                                n < 5 ? 4 - n : n <= 8 ? 8 - n : n < 15 ? 16 - n : 0));
        int trailing = 0;
        for (int i = n - 1; i >= 0 && trailing < 3; --i) {
            if (!coeffs[static_cast<std::size_t>(i)]) continue;
            if (coeffs[static_cast<std::size_t>(i)] == 1 || coeffs[static_cast<std::size_t>(i)] == -1)
                ++trailing;
            else
                break;
        }
        std::string tokenCode;
        if (col == 5) {
            const int v = total == 0 ? 3 : ((total - 1) << 2) | trailing;
            for (int i = 5; i >= 0; --i) tokenCode += ((v >> i) & 1) ? '1' : '0';
        } else {
            tokenCode = kCoeffToken[col][total][trailing];
        }
        std::string rest;
        for (int i = static_cast<int>(tokenCode.size()); i < plain.n; ++i)
            rest += ((plain.w[static_cast<std::size_t>(i / 32)] >> (31 - i % 32)) & 1u) ? '1' : '0';
        Bits b;
        b.put(n < 16 ? remapped_code(col, n, total, trailing) : tokenCode);
        b.put(rest);
        b.put(0x5, 3);  // bits after the block

        const Zan32u* const* tz = n < 5 ? t.tz420 : n <= 8 ? t.tz422 : t.tz4x4;
        // The null test of the total-zeros rows looks at row total: lend the
        // chroma arrays the 4x4 rows they lack.
        Zan32u* rows[17] = {};
        for (int i = 1; i < 16; ++i) rows[i] = const_cast<Zan32u*>(i < (n < 5 ? 4 : n <= 8 ? 8 : 16) ? tz[i] : t.tz4x4[i]);
        Zan16s out[17];
        std::fill(out, out + 17, static_cast<Zan16s>(0x7777));
        Zan16s* o = out;
        Zan32u* p = b.w.data();
        Zan32s off = 31;
        Zan16s num = -1;
        ASSERT_EQ(zaniDecodeCAVLCCoeffsIdxs_H264_1u16s(&p, &off, &num, &o, sel, static_cast<Zan16s>(n), t.token, rows, t.rb,
                                                      kZigzag4x4, first, last),
                  zanStsOk)
            << "range " << first << ".." << last << " sel " << sel;
        ASSERT_EQ(num, total) << "range " << first << ".." << last << " sel " << sel << " coeffs " << ::testing::PrintToString(coeffs);
        ASSERT_EQ(pos(b.w.data(), p, off), b.n - 3) << "range " << first << ".." << last << " sel " << sel << " coeffs " << ::testing::PrintToString(coeffs);
        if (total == 0) {
            ASSERT_EQ(o, out);
            continue;
        }
        ASSERT_EQ(o, out + 16);
        Zan16s expect[16] = {};
        for (int i = 0; i < n; ++i) expect[kZigzag4x4[first + i]] = static_cast<Zan16s>(coeffs[static_cast<std::size_t>(i)]);
        for (int i = 0; i < 16; ++i) ASSERT_EQ(out[i], expect[i]) << "range " << first << ".." << last;
    }
}

// ------------------------------------------------------------ known answers

// Decodes one 4x4 block (16-bit) from a bit string; returns the status.
struct One {
    Bits b;
    Zan32u* p;
    Zan32s off = 31;
    Zan16s num = -1;
    Zan16s out[17];
    Zan16s* o = out;
    explicit One(const std::string& bits) {
        b.put(bits);
        p = b.w.data();
        std::fill(out, out + 17, static_cast<Zan16s>(0x1111));
    }
    int bitpos() const { return pos(b.w.data(), p, off); }
};

TEST(Cavlc, FixedCodeEmptyBlockAndKnownLevels) {
    Tables t;
    {
        One d("000011" "1");
        ASSERT_EQ(zaniDecodeCAVLCCoeffs_H264_1u16s(&d.p, &d.off, &d.num, &d.o, 8, 16, t.token, t.tz4x4, t.rb, kZigzag4x4), zanStsOk);
        EXPECT_EQ(d.num, 0);
        EXPECT_EQ(d.o, d.out);
        EXPECT_EQ(d.out[0], 0x1111);
        EXPECT_EQ(d.bitpos(), 6);
    }
    {
        // uVLCSelect 8: 000000 is total 1, T 0; level prefix 0 with +1 (T < 3)
        // gives +2; total zeros for 1 at limit 16: "1" = 0.
        One d("000000" "1" "1");
        ASSERT_EQ(zaniDecodeCAVLCCoeffs_H264_1u16s(&d.p, &d.off, &d.num, &d.o, 8, 16, t.token, t.tz4x4, t.rb, kZigzag4x4), zanStsOk);
        EXPECT_EQ(d.num, 1);
        EXPECT_EQ(d.out[0], 2);
        for (int i = 1; i < 16; ++i) EXPECT_EQ(d.out[i], 0);
        EXPECT_EQ(d.bitpos(), 8);
    }
    {
        // coeffLimit 15 with total 15 (fixed code 111010 = total 15, T 2):
        // no total zeros; scan indices 1..15 all filled, slot pScan[0] zero.
        std::string s = "111010" "00";  // two +1 trailing ones
        // 13 levels, suffix length 1 from the start (total > 10, T < 3):
        // first level +1 adjusted: code 0 -> prefix 0, suffix 0 -> +2.
        s += "1" "0";
        for (int i = 0; i < 12; ++i) s += "1" "1";  // prefix 0, suffix 1: -1
        One d(s);
        ASSERT_EQ(zaniDecodeCAVLCCoeffs_H264_1u16s(&d.p, &d.off, &d.num, &d.o, 9, 15, t.token, t.tz4x4, t.rb, kZigzag4x4), zanStsOk);
        EXPECT_EQ(d.num, 15);
        EXPECT_EQ(d.bitpos(), static_cast<int>(s.size()));
        EXPECT_EQ(d.out[kZigzag4x4[0]], 0);
        EXPECT_EQ(d.out[kZigzag4x4[15]], 1);
        EXPECT_EQ(d.out[kZigzag4x4[14]], 1);
        EXPECT_EQ(d.out[kZigzag4x4[13]], 2);
        for (int k = 1; k <= 12; ++k) EXPECT_EQ(d.out[kZigzag4x4[k]], -1) << k;
    }
}

TEST(Cavlc, LevelEscapesAtTheirLimits) {
    Tables t;
    // Token (T 3, total 4) in table 0: "000011"; three trailing ones "000";
    // the fourth level with suffix length 0 and no +1 (T = 3); total zeros
    // for 4: "00011" = 0 (table 4 row 0).
    auto run = [&](const std::string& level, Zan32s expect, int lenExpect) {
        const std::string s = "000011" "000" + level + "00011";
        One d(s);
        ASSERT_EQ(zaniDecodeCAVLCCoeffs_H264_1u16s(&d.p, &d.off, &d.num, &d.o, 0, 16, t.token, t.tz4x4, t.rb, kZigzag4x4), zanStsOk)
            << level;
        EXPECT_EQ(d.num, 4);
        EXPECT_EQ(d.out[kZigzag4x4[0]], static_cast<Zan16s>(expect)) << level;
        EXPECT_EQ(d.bitpos(), 14 + lenExpect);
        Zan32s out32[16];
        Zan32s* o32 = out32;
        Zan32u* p = d.b.w.data();
        Zan32s off = 31;
        Zan16s num;
        ASSERT_EQ(zaniDecodeCAVLCCoeffs_H264_1u32s(&p, &off, &num, &o32, 0, 16, t.token, t.tz4x4, t.rb, kZigzag4x4), zanStsOk);
        EXPECT_EQ(out32[kZigzag4x4[0]], expect) << level;
    };
    // Prefix 13, suffix length 0: code 13 -> -7.
    run("00000000000001", -7, 14);
    // Prefix 14: 4 bits; 1111 -> offset 8 + 7 = 15, odd: -15.
    run(std::string(14, '0') + "1" "1111", -15, 19);
    // Prefix 15, suffix length 0: 12 bits, offset 16: 000000000000 -> +16,
    // 111111111111 -> -(2047 + 16) = -2063.
    run(std::string(15, '0') + "1" "000000000000", 16, 28);
    run(std::string(15, '0') + "1" "111111111111", -2063, 28);
    // Prefix 16: 13 bits, 2^13 in the code: L = 15 + 8192 + 15 + r - 4096.
    // r = 0: L = 4126, even: level (4126 + 2) >> 1 = 2064.
    run(std::string(16, '0') + "1" + std::string(13, '0'), 2064, 30);
    // r = 8191: L = 12317, odd: level -6159.
    run(std::string(16, '0') + "1" + std::string(13, '1'), -6159, 30);
    // Prefix 18: 15 bits, r = 32767: L = 15 + 32768 + 15 + 32767 - 4096
    // = 61469, odd: -30735 (fits 16 bits).
    run(std::string(18, '0') + "1" + std::string(15, '1'), -30735, 34);
    // Prefix 40 (damaged streams only): 37 suffix bits, of which the last 32
    // are the value, and 2^37 counts as 0: r = 4096 gives L = 15 + 15 = 30,
    // level 16; all 37 bits are consumed.
    run(std::string(40, '0') + "1" + "11111" + "00000000000000000001000000000000", 16, 78);
}

TEST(Cavlc, SixteenBitFormKeepsLowBitsOfHugeLevels) {
    Tables t;
    // Prefix 20: 17 bits, r = 0: L = 15 + 131072 + 15 - 4096 = 127006, even:
    // level 63504; the 16-bit form keeps 63504 - 65536 = -2032.
    const std::string s = "000011" "000" + std::string(20, '0') + "1" + std::string(17, '0') + "00011";
    One d(s);
    ASSERT_EQ(zaniDecodeCAVLCCoeffs_H264_1u16s(&d.p, &d.off, &d.num, &d.o, 0, 16, t.token, t.tz4x4, t.rb, kZigzag4x4), zanStsOk);
    EXPECT_EQ(d.out[0], -2032);
    Zan32s out32[16];
    Zan32s* o32 = out32;
    Zan32u* p = d.b.w.data();
    Zan32s off = 31;
    Zan16s num;
    ASSERT_EQ(zaniDecodeCAVLCCoeffs_H264_1u32s(&p, &off, &num, &o32, 0, 16, t.token, t.tz4x4, t.rb, kZigzag4x4), zanStsOk);
    EXPECT_EQ(out32[0], 63504);
}

TEST(Cavlc, IndexFormRemapCountsOnlyTokensThatFit) {
    Tables t;
    // Table 0 in code order: 1 (0,0), 01 (1,1), 001 (2,2), 00011 (3,3),
    // 000101 (1 coefficient, T 0), ...  With a range of 2 positions the token
    // 00011 (rank 3) stands for the fourth token that fits: total 1, T 0.
    // Then the level: prefix 0 -> +2 (T < 3); total zeros with m = 2:
    // row min(1 - 2 + 4, 3) = 3 of the given array, whose "1" is 0.
    const std::string s = "00011" "1" "1";
    One d(s);
    ASSERT_EQ(zaniDecodeCAVLCCoeffsIdxs_H264_1u16s(&d.p, &d.off, &d.num, &d.o, 0, 2, t.token, t.tz420, t.rb, kZigzag4x4, 5, 6),
              zanStsOk);
    EXPECT_EQ(d.num, 1);
    EXPECT_EQ(d.bitpos(), 7);
    for (int i = 0; i < 16; ++i) EXPECT_EQ(d.out[i], i == kZigzag4x4[5] ? 2 : 0) << i;
}

// ------------------------------------------------------------ invalid codes

TEST(Cavlc, InvalidCodesAndTheCursorRules) {
    Tables t;
    const std::string badToken(16, '0');  // no token of table 0 starts with 15 zeros
    for (int form = 0; form < 3; ++form) {
        auto call = [&](One& d) {
            if (form == 0) return zaniDecodeCAVLCCoeffs_H264_1u16s(&d.p, &d.off, &d.num, &d.o, 0, 16, t.token, t.tz4x4, t.rb, kZigzag4x4);
            if (form == 1) {
                Zan32s o32[16];
                Zan32s* po = o32;
                Zan32s* const start = po;
                ZanStatus st = zaniDecodeCAVLCCoeffs_H264_1u32s(&d.p, &d.off, &d.num, &po, 0, 16, t.token, t.tz4x4, t.rb, kZigzag4x4);
                EXPECT_EQ(po, start);
                return st;
            }
            return zaniDecodeCAVLCCoeffsIdxs_H264_1u16s(&d.p, &d.off, &d.num, &d.o, 0, 16, t.token, t.tz4x4, t.rb, kZigzag4x4, 0, 15);
        };
        {
            One d(badToken + "1111");
            d.off = 31;
            EXPECT_EQ(call(d), zanStsVlcCodeBad);
            EXPECT_EQ(d.bitpos(), 0);  // restored in every form
            EXPECT_EQ(d.num, -1);
            EXPECT_EQ(d.o, d.out);
            EXPECT_EQ(d.out[0], 0x1111);
        }
        {
            // Token 01 (T 1, total 1), sign 0, total zeros for 1: 9 zeros is
            // no code (the walk reads 4 + 7 bits and ends on the invalid entry).
            One d("01" "0" "000000000" "111");
            EXPECT_EQ(call(d), zanStsVlcCodeBad);
            EXPECT_EQ(d.num, 1);
            EXPECT_EQ(d.o, d.out);
            if (form != 1) {
                EXPECT_EQ(d.out[0], 0);  // the block was cleared
            }
            EXPECT_EQ(d.bitpos(), form == 2 ? 3 + 11 : 0);
        }
        {
            // Token 001 (T 2, total 2), signs 00, total zeros for 2 at 9:
            // "00011"; run before with 9 zeros left: 11 zeros is no code.
            One d("001" "00" "00011" "00000000000" "1");
            EXPECT_EQ(call(d), zanStsVlcCodeBad);
            EXPECT_EQ(d.num, 2);
            EXPECT_EQ(d.o, d.out);
            // The run is read before its level is placed: nothing placed.
            if (form != 1) {
                for (int i = 0; i < 16; ++i) EXPECT_EQ(d.out[i], 0);
            }
            // The run-before walk reads 4 + 7 bits before the invalid entry.
            EXPECT_EQ(d.bitpos(), form == 2 ? 10 + 11 : 0);
        }
    }
    // Chroma DC forms restore the cursor on invalid codes.
    {
        // The standard's 4:2:0 tables are complete codes: a partial token
        // table (only 001, two trailing ones) makes 0001 invalid.
        CodeList l;
        l.add("001", {2, 2});
        Zan32u* partial = nullptr;
        ASSERT_EQ(zaniHuffmanRunLevelTableInitAlloc_32s(l.array({3, 3}).data(), &partial), zanStsOk);
        One d("0001" "1");
        Zan16s blk[4] = {9, 9, 9, 9};
        Zan16s* o = blk;
        EXPECT_EQ(zaniDecodeCAVLCChromaDcCoeffs_H264_1u16s(&d.p, &d.off, &d.num, &o, partial, t.tz420, t.rb), zanStsVlcCodeBad);
        zaniHuffmanTableFree_32s(partial);
        EXPECT_EQ(d.bitpos(), 0);
        EXPECT_EQ(o, blk);
        EXPECT_EQ(blk[0], 9);
    }
    {
        One d("000000000000" "0" "1");  // no 4:2:2 chroma DC token has 12 leading zeros
        Zan32s blk[8] = {};
        Zan32s* o = blk;
        EXPECT_EQ(zaniDecodeCAVLCChroma422DcCoeffs_H264_1u32s(&d.p, &d.off, &d.num, &o, t.tokenDc422, t.tz422, t.rb), zanStsVlcCodeBad);
        EXPECT_EQ(d.bitpos(), 0);
    }
}

// ------------------------------------------------------------ chroma fast path

TEST(Cavlc, ChromaDcFastPathNeedsOnlyTheCursor) {
    // "01": the empty block, tables and output may be null.
    {
        One d("01" "1");
        EXPECT_EQ(zaniDecodeCAVLCChromaDcCoeffs_H264_1u16s(&d.p, &d.off, &d.num, nullptr, nullptr, nullptr, nullptr), zanStsOk);
        EXPECT_EQ(d.num, 0);
        EXPECT_EQ(d.bitpos(), 2);
    }
    // "1": one trailing one; the output is needed, the tables are not.
    const struct {
        const char* bits;
        int pos, len;
        Zan16s level;
    } cases[] = {{"10" "1", 0, 3, 1}, {"11" "01", 1, 4, -1}, {"10" "001", 2, 5, 1}, {"11" "000", 3, 5, -1}};
    for (const auto& c : cases) {
        One d(c.bits);
        Zan16s blk[4] = {7, 7, 7, 7};
        Zan16s* o = blk;
        EXPECT_EQ(zaniDecodeCAVLCChromaDcCoeffs_H264_1u16s(&d.p, &d.off, &d.num, nullptr, nullptr, nullptr, nullptr), zanStsNullPtr);
        EXPECT_EQ(d.bitpos(), 0);
        ASSERT_EQ(zaniDecodeCAVLCChromaDcCoeffs_H264_1u16s(&d.p, &d.off, &d.num, &o, nullptr, nullptr, nullptr), zanStsOk);
        EXPECT_EQ(d.num, 1);
        EXPECT_EQ(o, blk + 4);
        EXPECT_EQ(d.bitpos(), c.len);
        for (int i = 0; i < 4; ++i) EXPECT_EQ(blk[i], i == c.pos ? c.level : 0) << c.bits;
    }
    // The peek crosses into the next word: token at bit 29 of the stream.
    {
        Bits b;
        b.put(0, 29);
        b.put("11000");
        Zan32u* p = b.w.data();
        Zan32s off = 2;
        Zan16s num;
        Zan32s blk[4];
        Zan32s* o = blk;
        ASSERT_EQ(zaniDecodeCAVLCChromaDcCoeffs_H264_1u32s(&p, &off, &num, &o, nullptr, nullptr, nullptr), zanStsOk);
        EXPECT_EQ(blk[3], -1);
        EXPECT_EQ(pos(b.w.data(), p, off), 34);
    }
    // Other tokens need everything.
    {
        Tables t;
        One d("001" "000");
        Zan16s blk[4];
        Zan16s* o = blk;
        EXPECT_EQ(zaniDecodeCAVLCChromaDcCoeffs_H264_1u16s(&d.p, &d.off, &d.num, &o, t.tokenDc420, nullptr, t.rb), zanStsNullPtr);
        EXPECT_EQ(d.num, -1);
        EXPECT_EQ(d.bitpos(), 0);
    }
}

// ------------------------------------------------------------ statuses

TEST(Cavlc, StatusesInOrder) {
    Tables t;
    One d("1" "1");
    Zan32u* const p0 = d.p;
    Zan16s* const o0 = d.o;
    // A null pointer beats a bad coeffLimit and a negative select.
    EXPECT_EQ(zaniDecodeCAVLCCoeffs_H264_1u16s(&d.p, &d.off, &d.num, &d.o, 0x80000000u, 3, t.token, t.tz4x4, t.rb, nullptr), zanStsNullPtr);
    EXPECT_EQ(zaniDecodeCAVLCCoeffs_H264_1u16s(nullptr, &d.off, &d.num, &d.o, 0, 16, t.token, t.tz4x4, t.rb, kZigzag4x4), zanStsNullPtr);
    EXPECT_EQ(zaniDecodeCAVLCCoeffs_H264_1u16s(&d.p, &d.off, nullptr, &d.o, 0, 16, t.token, t.tz4x4, t.rb, kZigzag4x4), zanStsNullPtr);
    Zan16s* nullOut = nullptr;
    EXPECT_EQ(zaniDecodeCAVLCCoeffs_H264_1u16s(&d.p, &d.off, &d.num, &nullOut, 0, 3, t.token, t.tz4x4, t.rb, kZigzag4x4), zanStsNullPtr);
    Zan32u* nullStream = nullptr;
    EXPECT_EQ(zaniDecodeCAVLCCoeffs_H264_1u16s(&nullStream, &d.off, &d.num, &d.o, 0, 3, t.token, t.tz4x4, t.rb, kZigzag4x4), zanStsNullPtr);
    // Ranges.
    EXPECT_EQ(zaniDecodeCAVLCCoeffs_H264_1u16s(&d.p, &d.off, &d.num, &d.o, 0, 14, t.token, t.tz4x4, t.rb, kZigzag4x4), zanStsOutOfRange);
    EXPECT_EQ(zaniDecodeCAVLCCoeffs_H264_1u16s(&d.p, &d.off, &d.num, &d.o, 0, 4, t.token, t.tz4x4, t.rb, kZigzag4x4), zanStsOutOfRange);
    EXPECT_EQ(zaniDecodeCAVLCCoeffs_H264_1u16s(&d.p, &d.off, &d.num, &d.o, 0xFFFFFFFFu, 16, t.token, t.tz4x4, t.rb, kZigzag4x4), zanStsOutOfRange);
    Zan32s* o32 = reinterpret_cast<Zan32s*>(d.out);
    EXPECT_EQ(zaniDecodeCAVLCCoeffs_H264_1u32s(&d.p, &d.off, &d.num, &o32, 0, 17, t.token, t.tz4x4, t.rb, kZigzag4x4), zanStsOutOfRange);
    // The index form does not check coeffLimit, only the select.
    EXPECT_EQ(zaniDecodeCAVLCCoeffsIdxs_H264_1u16s(&d.p, &d.off, &d.num, &d.o, 0x80000001u, 16, t.token, t.tz4x4, t.rb, kZigzag4x4, 0, 15),
              zanStsOutOfRange);
    EXPECT_EQ(d.p, p0);
    EXPECT_EQ(d.off, 31);
    EXPECT_EQ(d.o, o0);
    EXPECT_EQ(d.num, -1);
    EXPECT_EQ(d.out[0], 0x1111);

    // Rows are tested only when selected.
    const Zan32u* tokens[3] = {t.token[0], nullptr, nullptr};
    EXPECT_EQ(zaniDecodeCAVLCCoeffs_H264_1u16s(&d.p, &d.off, &d.num, &d.o, 2, 16, tokens, t.tz4x4, t.rb, kZigzag4x4), zanStsNullPtr);
    EXPECT_EQ(d.num, -1);
    const Zan32u* noRows[16] = {};
    // "1" in table 0 is the empty block: no total-zeros or run row is used.
    ASSERT_EQ(zaniDecodeCAVLCCoeffs_H264_1u16s(&d.p, &d.off, &d.num, &d.o, 1, 16, tokens, noRows, noRows, kZigzag4x4), zanStsOk);
    EXPECT_EQ(d.num, 0);
    EXPECT_EQ(d.bitpos(), 1);
    // A needed total-zeros row that is null: -8 after the count was stored,
    // cursor as at entry.
    One e("01" "0" "1");
    EXPECT_EQ(zaniDecodeCAVLCCoeffs_H264_1u16s(&e.p, &e.off, &e.num, &e.o, 0, 16, t.token, noRows, t.rb, kZigzag4x4), zanStsNullPtr);
    EXPECT_EQ(e.num, 1);
    EXPECT_EQ(e.bitpos(), 0);
    EXPECT_EQ(e.o, e.out);
    // Index form: the row tested is row total, even when another is walked.
    Zan32u* rows[16] = {};
    rows[3] = t.tz420[3];  // m = 2, total 1: row 3 is walked
    EXPECT_EQ(zaniDecodeCAVLCCoeffsIdxs_H264_1u16s(&e.p, &e.off, &e.num, &e.o, 0, 2, t.token, rows, t.rb, kZigzag4x4, 0, 1), zanStsNullPtr);
    rows[1] = t.tz4x4[1];
    EXPECT_EQ(zaniDecodeCAVLCCoeffsIdxs_H264_1u16s(&e.p, &e.off, &e.num, &e.o, 0, 2, t.token, rows, t.rb, kZigzag4x4, 0, 1), zanStsOk);
    EXPECT_EQ(e.out[0], 1);
    EXPECT_EQ(e.bitpos(), 4);

    // Chroma 4:2:2 tests every pointer at entry.
    One f("1");
    Zan16s blk[8];
    Zan16s* o = blk;
    EXPECT_EQ(zaniDecodeCAVLCChroma422DcCoeffs_H264_1u16s(&f.p, &f.off, &f.num, &o, t.tokenDc422, t.tz422, nullptr), zanStsNullPtr);
    ASSERT_EQ(zaniDecodeCAVLCChroma422DcCoeffs_H264_1u16s(&f.p, &f.off, &f.num, &o, t.tokenDc422, t.tz422, t.rb), zanStsOk);
    EXPECT_EQ(f.num, 0);
    EXPECT_EQ(o, blk);
}

// ------------------------------------------------------------ Exp-Golomb

struct Eg {
    Bits b;
    Zan32u* p;
    Zan32s off;
    Eg(const std::string& bits, int lead = 0) {
        for (int i = 0; i < lead; ++i) b.put(0, 1);
        b.put(bits);
        b.put(0xFFFFFFFFu, 32);
        p = b.w.data();
        off = 31 - lead % 32;
        p += lead / 32;
    }
    int bitpos() const { return pos(b.w.data(), p, off); }
};

std::string ue_code(Zan64s v) {  // v >= 0
    const Zan64s c = v + 1;
    int n = 0;
    while ((c >> (n + 1)) != 0) ++n;
    std::string s(static_cast<std::size_t>(n), '0');
    for (int i = n; i >= 0; --i) s += ((c >> i) & 1) ? '1' : '0';
    return s;
}

TEST(Cavlc, ExpGolombKnownValues) {
    std::mt19937 rng(61);
    for (int i = 0; i < 3000; ++i) {
        const int bitsLen = static_cast<int>(rng() % 31u);
        const Zan64s v = static_cast<Zan64s>(rng() & ((1u << bitsLen) - 1u)) + (bitsLen ? 0 : static_cast<Zan64s>(rng() % 4u));
        const int lead = static_cast<int>(rng() % 64u);
        const std::string code = ue_code(v);
        const int n = static_cast<int>(code.size() / 2);
        // Unsigned.
        {
            Eg e(code, lead);
            Zan32s out = -99;
            ASSERT_EQ(zaniDecodeExpGolombOne_H264_1u32s(&e.p, &e.off, &out, 0), zanStsOk);
            if (n < 32) {
                EXPECT_EQ(out, static_cast<Zan32s>(v)) << code;
                EXPECT_EQ(e.bitpos(), lead + static_cast<int>(code.size()));
            }
        }
        {
            Eg e(code, lead);
            Zan16s out = -99;
            ASSERT_EQ(zaniDecodeExpGolombOne_H264_1u16s(&e.p, &e.off, &out, 0x100), zanStsOk);  // low 8 bits: unsigned
            if (n < 17) {
                EXPECT_EQ(out, static_cast<Zan16s>(v)) << code;
                EXPECT_EQ(e.bitpos(), lead + static_cast<int>(code.size()));
            } else {
                EXPECT_EQ(out, 0);
                EXPECT_EQ(e.bitpos(), lead + static_cast<int>(code.size()));
            }
        }
        // Signed: codeNum k maps to (-1)^(k+1) * ceil(k / 2).
        {
            Eg e(code, lead);
            Zan32s out = -99;
            ASSERT_EQ(zaniDecodeExpGolombOne_H264_1u32s(&e.p, &e.off, &out, 0x100), zanStsOk);
            const Zan64s se = (v % 2) ? (v + 1) / 2 : -(v / 2);
            EXPECT_EQ(out, static_cast<Zan32s>(se)) << code;
        }
    }
    // Hand-worked codes.
    const struct {
        const char* bits;
        Zan32s u, s;
    } known[] = {{"1", 0, 0}, {"010", 1, 1}, {"011", 2, -1}, {"00100", 3, 2}, {"00111", 6, -3}, {"0001000", 7, 4}};
    for (const auto& k : known) {
        Eg e(k.bits);
        Zan16s out;
        ASSERT_EQ(zaniDecodeExpGolombOne_H264_1u16s(&e.p, &e.off, &out, 0), zanStsOk);
        EXPECT_EQ(out, k.u);
        EXPECT_EQ(e.bitpos(), static_cast<int>(std::strlen(k.bits)));
        Eg f(k.bits);
        ASSERT_EQ(zaniDecodeExpGolombOne_H264_1u16s(&f.p, &f.off, &out, 1), zanStsOk);
        EXPECT_EQ(out, k.s);
    }
}

TEST(Cavlc, ExpGolombLongCodesAndWordCrossing) {
    // 8 leading zeros across a word boundary: 00000000 1 xxxxxxxx.
    {
        Eg e("000000001" "10101010", 27);
        Zan32s out;
        ASSERT_EQ(zaniDecodeExpGolombOne_H264_1u32s(&e.p, &e.off, &out, 0), zanStsOk);
        EXPECT_EQ(out, 256 + 0xAA - 1);
        EXPECT_EQ(e.bitpos(), 27 + 17);
    }
    // 16 zeros: the 16-bit form still decodes (n 16 < 17), keeping 16 bits.
    {
        Eg e(std::string(16, '0') + "1" + std::string(16, '1'));
        Zan16s out;
        ASSERT_EQ(zaniDecodeExpGolombOne_H264_1u16s(&e.p, &e.off, &out, 0), zanStsOk);
        EXPECT_EQ(out, static_cast<Zan16s>(131070));
        EXPECT_EQ(e.bitpos(), 33);
    }
    // 17 zeros: too long for the 16-bit form: 0, the cursor behind prefix, 1
    // and 17 more bits; the 32-bit form decodes it.
    {
        const std::string code = std::string(17, '0') + "1" + std::string(17, '1');
        Eg e(code, 5);
        Zan16s out = 5;
        ASSERT_EQ(zaniDecodeExpGolombOne_H264_1u16s(&e.p, &e.off, &out, 0), zanStsOk);
        EXPECT_EQ(out, 0);
        EXPECT_EQ(e.bitpos(), 5 + 35);
        Eg f(code, 5);
        Zan32s out32;
        ASSERT_EQ(zaniDecodeExpGolombOne_H264_1u32s(&f.p, &f.off, &out32, 1), zanStsOk);
        EXPECT_EQ(out32, -131071);
    }
    // 31 zeros: the 32-bit form's longest; 32 zeros is too long and skips
    // 32 more bits, whole words at a time.
    {
        Eg e(std::string(31, '0') + "1" + std::string(31, '1'));
        Zan32s out;
        ASSERT_EQ(zaniDecodeExpGolombOne_H264_1u32s(&e.p, &e.off, &out, 0), zanStsOk);
        EXPECT_EQ(out, static_cast<Zan32s>(0xFFFFFFFEu));
        EXPECT_EQ(e.bitpos(), 63);
        Eg f(std::string(40, '0') + "1" + std::string(40, '1'), 3);
        out = 7;
        ASSERT_EQ(zaniDecodeExpGolombOne_H264_1u32s(&f.p, &f.off, &out, 0), zanStsOk);
        EXPECT_EQ(out, 0);
        EXPECT_EQ(f.bitpos(), 3 + 81);
    }
}

TEST(Cavlc, ExpGolombStatuses) {
    Eg e("1");
    Zan16s out = 3;
    Zan32s out32 = 3;
    EXPECT_EQ(zaniDecodeExpGolombOne_H264_1u16s(&e.p, &e.off, nullptr, 0), zanStsNullPtr);
    EXPECT_EQ(zaniDecodeExpGolombOne_H264_1u32s(nullptr, &e.off, &out32, 0), zanStsNullPtr);
    Zan32u* nullStream = nullptr;
    Zan32s bad = 32;
    EXPECT_EQ(zaniDecodeExpGolombOne_H264_1u16s(&nullStream, &bad, &out, 0), zanStsNullPtr);  // -8 before -5
    EXPECT_EQ(zaniDecodeExpGolombOne_H264_1u16s(&e.p, &bad, &out, 0), zanStsBadArg);
    bad = -1;
    EXPECT_EQ(zaniDecodeExpGolombOne_H264_1u32s(&e.p, &bad, &out32, 0), zanStsBadArg);
    EXPECT_EQ(out, 3);
    EXPECT_EQ(out32, 3);
    EXPECT_EQ(e.bitpos(), 0);
    // Offset 0: the one bit is the last of the word.
    Bits b;
    b.put(0, 31);
    b.put("1");
    b.put("1");
    Zan32u* p = b.w.data();
    Zan32s off = 0;
    ASSERT_EQ(zaniDecodeExpGolombOne_H264_1u32s(&p, &off, &out32, 0), zanStsOk);
    EXPECT_EQ(out32, 0);
    EXPECT_EQ(p, b.w.data() + 1);
    EXPECT_EQ(off, 31);
}

}  // namespace
