// Huffman tables and MPEG-1/2 block coding through the exported functions:
// the standard's code tables written as code lists, known answers,
// invalid codes and the cursor rules, round trips through the block encoders
// and decoders, escapes at the level limits, mismatch control, MPEG-1
// oddification, and statuses in their order.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "api/mpeg12_tables.h"
#include "common/scan_tables.h"
#include "zanvc.h"

namespace {

using namespace zan::mpeg12test;

// A built table that frees itself.
struct Table {
    Zan32u* t = nullptr;
    Table() = default;
    Table(const std::vector<Zan32s>& codes, int kind) {  // 0 plain, 1 run-level, 2 encoding
        ZanStatus st = kind == 0   ? zaniHuffmanTableInitAlloc_32s(codes.data(), &t)
                       : kind == 1 ? zaniHuffmanRunLevelTableInitAlloc_32s(codes.data(), &t)
                                   : zaniCreateRLEncodeTable(codes.data(), &t);
        EXPECT_EQ(st, zanStsOk);
    }
    ~Table() {
        if (t) zaniHuffmanTableFree_32s(t);
    }
    Table(const Table&) = delete;
    Table& operator=(const Table&) = delete;
};

std::vector<Zan32s> scan32(int scan) {
    const Zan8u* s = zan::scan_table(scan);
    return std::vector<Zan32s>(s, s + 64);
}

constexpr Zan16s kDefaultIntra[64] = {8,  16, 19, 22, 26, 27, 29, 34, 16, 16, 22, 24, 27, 29, 34, 37,
                                      19, 22, 26, 27, 29, 34, 34, 38, 22, 22, 26, 27, 29, 34, 37, 40,
                                      22, 26, 27, 29, 32, 35, 40, 48, 26, 27, 29, 32, 35, 40, 48, 58,
                                      26, 27, 29, 34, 38, 46, 56, 69, 27, 29, 35, 38, 46, 56, 69, 83};

}  // namespace

namespace {

// ------------------------------------------------------ tables and the walk

// The standard's tables as written here form prefix codes.
TEST(Mpeg12, StandardTablesArePrefixFree) {
    for (const RLTable& t : {table_zero(), table_one()}) {
        auto list = t.list();
        std::vector<std::string> all;
        for (const auto& [L, rows] : list.byLength)
            for (const auto& r : rows) {
                std::string s;
                for (int i = L - 1; i >= 0; --i) s += ((r[0] >> i) & 1) ? '1' : '0';
                all.push_back(s);
            }
        EXPECT_EQ(all.size(), 2u * 111 + 2);
        for (size_t i = 0; i < all.size(); ++i)
            for (size_t j = 0; j < all.size(); ++j)
                if (i != j) {
                    ASSERT_NE(all[j].rfind(all[i], 0), 0u) << all[i] << " prefixes " << all[j];
                }
    }
}

// A small table whose layout is worked out by hand: two levels of 2 bits;
// "1" (g = 1, two slots), "01" (g = 0), "001" and "0001" under a link.
TEST(Mpeg12, BuiltTableLayout) {
    CodeList s;
    s.add("1", {9});
    s.add("01", {5});
    s.add("001", {3});
    s.add("0001", {4});
    Table t(s.array({2, 2}), 0);
    ASSERT_NE(t.t, nullptr);
    const Zan32u inv = 0x00F0F101u;
    const Zan32u want[10] = {2, (5u << 8) | 128, 5u << 8, (9u << 8) | 1, (9u << 8) | 1,
                             2, inv,             4u << 8, (3u << 8) | 1, (3u << 8) | 1};
    for (int i = 0; i < 10; ++i) EXPECT_EQ(t.t[i], want[i]) << "word " << i;

    // Run-level leaves: run in bits 8..15, signed level in 16..31.
    CodeList r;
    r.add("1", {3, -2});
    r.add("0", {kEob, 0});
    Table rl(r.array({1}), 1);
    EXPECT_EQ(rl.t[0], 1u);
    EXPECT_EQ(rl.t[1], (254u << 8));
    EXPECT_EQ(rl.t[2], (0xFFFEu << 16) | (3u << 8));
}

TEST(Mpeg12, BuildersRefuseNullAndEmpty) {
    Zan32u* t = reinterpret_cast<Zan32u*>(0x1234);
    std::vector<Zan32s> empty = {0, 1, 4, 0, 0, -1};
    EXPECT_EQ(zaniHuffmanTableInitAlloc_32s(nullptr, &t), zanStsNullPtr);
    EXPECT_EQ(zaniHuffmanTableInitAlloc_32s(empty.data(), nullptr), zanStsNullPtr);
    EXPECT_EQ(zaniHuffmanRunLevelTableInitAlloc_32s(nullptr, &t), zanStsNullPtr);
    EXPECT_EQ(zaniCreateRLEncodeTable(empty.data(), nullptr), zanStsNullPtr);
    EXPECT_EQ(zaniHuffmanTableFree_32s(nullptr), zanStsNullPtr);
    // No code at all: the scratch list cannot be had.
    EXPECT_EQ(zaniHuffmanTableInitAlloc_32s(empty.data(), &t), zanStsNoMem);
    EXPECT_EQ(zaniHuffmanRunLevelTableInitAlloc_32s(empty.data(), &t), zanStsNoMem);
    EXPECT_EQ(t, reinterpret_cast<Zan32u*>(0x1234));
}

// DC sizes of Tables B-12 and B-13 decoded one by one under several level
// splits; the cursor stands right behind each code, across word boundaries.
TEST(Mpeg12, DecodeOneDcSizes) {
    std::mt19937 rng(7);
    for (const auto* sizes : {&kDcLuma, &kDcChroma})
        for (const std::vector<Zan32s>& widths : std::vector<std::vector<Zan32s>>{{10}, {3, 3, 4}, {1, 1, 1, 1, 1, 1, 1, 1, 1, 1}, {5, 5}}) {
            Table t(dc_list(*sizes).array(widths), 0);
            Bits b;
            b.put(rng() & 0x1F, 5);  // start off a word boundary
            std::vector<int> want;
            for (int i = 0; i < 200; ++i) {
                int v = static_cast<int>(rng() % 12);
                want.push_back(v);
                b.put((*sizes)[v]);
            }
            Zan32u* p = b.w.data();
            Zan32s off = 26;
            int at = 5;
            for (int v : want) {
                Zan32s got = -1;
                ASSERT_EQ(zaniDecodeHuffmanOne_1u32s(&p, &off, &got, t.t), zanStsOk);
                at += static_cast<int>(std::strlen((*sizes)[v]));
                ASSERT_EQ(got, v);
                ASSERT_EQ(pos(b.w.data(), p, off), at);
            }
        }
}

// Random prefix codes against a bit-by-bit decoder, with random level splits.
TEST(Mpeg12, DecodeRandomCodes) {
    std::mt19937 rng(11);
    for (int round = 0; round < 60; ++round) {
        // A complete prefix code: split leaves at random.
        std::vector<std::string> codes = {"0", "1"};
        int n = 2 + static_cast<int>(rng() % 40);
        while (static_cast<int>(codes.size()) < n) {
            size_t i = rng() % codes.size();
            if (codes[i].size() >= 20) continue;
            std::string c = codes[i];
            codes[i] = c + "0";
            codes.push_back(c + "1");
        }
        // Drop a few codes: their places become invalid.
        std::vector<std::string> kept;
        for (const auto& c : codes)
            if (rng() % 8) kept.push_back(c);
        if (kept.empty()) kept.push_back(codes[0]);
        CodeList s, r;
        for (size_t i = 0; i < kept.size(); ++i) {
            s.add(kept[i], {static_cast<Zan32s>(1000 + i)});
            r.add(kept[i], {static_cast<Zan32s>(i % 200), static_cast<Zan32s>(i) - 20});
        }
        std::vector<Zan32s> widths;
        for (int total = 0; total < 20;) {
            int w = 1 + static_cast<int>(rng() % 8);
            widths.push_back(w);
            total += w;
        }
        Table plain(s.array(widths), 0), pairs(r.array(widths), 1);
        Bits b;
        int lead = static_cast<int>(rng() % 32);
        b.put(0, lead);
        std::vector<size_t> seq;
        for (int i = 0; i < 100; ++i) {
            seq.push_back(rng() % kept.size());
            b.put(kept[seq.back()]);
        }
        Zan32u* p = b.w.data();
        Zan32s off = 31 - lead;
        Zan32u* q = b.w.data();
        Zan32s qoff = 31 - lead;
        int at = lead;
        for (size_t i : seq) {
            Zan32s v;
            Zan8u run;
            Zan16s level;
            ASSERT_EQ(zaniDecodeHuffmanOne_1u32s(&p, &off, &v, plain.t), zanStsOk);
            ASSERT_EQ(zaniDecodeHuffmanPair_1u16s(&q, &qoff, pairs.t, &run, &level), zanStsOk);
            at += static_cast<int>(kept[i].size());
            ASSERT_EQ(v, static_cast<Zan32s>(1000 + i));
            ASSERT_EQ(run, i % 200);
            ASSERT_EQ(level, static_cast<Zan32s>(i) - 20);
            ASSERT_EQ(pos(b.w.data(), p, off), at) << "round " << round;
            ASSERT_EQ(pos(b.w.data(), q, qoff), at);
        }
    }
}

// An invalid code: the single-value decoder stores 61681 and leaves the
// cursor where its walk ended; the pair decoder restores it and writes nothing.
TEST(Mpeg12, InvalidCodeCursorRules) {
    CodeList s, r;
    s.add("1", {5});
    s.add("01", {7});
    r.add("1", {2, 3});
    r.add("01", {4, -1});
    Table plain(s.array({3}), 0), pairs(r.array({3}), 1);
    Bits b;
    b.put("1");
    b.put("0011");  // 00 leads nowhere
    Zan32u* p = b.w.data();
    Zan32s off = 31;
    Zan32s v = 0;
    ASSERT_EQ(zaniDecodeHuffmanOne_1u32s(&p, &off, &v, plain.t), zanStsOk);
    EXPECT_EQ(v, 5);
    EXPECT_EQ(off, 30);
    EXPECT_EQ(zaniDecodeHuffmanOne_1u32s(&p, &off, &v, plain.t), zanStsVlcCodeBad);
    EXPECT_EQ(v, 61681);
    EXPECT_EQ(p, b.w.data());
    EXPECT_EQ(off, 27);  // the 3 look-ahead bits stay consumed

    p = b.w.data();
    off = 30;
    Zan8u run = 77;
    Zan16s level = 77;
    EXPECT_EQ(zaniDecodeHuffmanPair_1u16s(&p, &off, pairs.t, &run, &level), zanStsVlcCodeBad);
    EXPECT_EQ(off, 30);
    EXPECT_EQ(p, b.w.data());
    EXPECT_EQ(run, 77);
    EXPECT_EQ(level, 77);

    // Across a word: the look-ahead starts at bit 1 of word 0.
    Bits c;
    c.put(0, 30);
    c.put("000");
    p = c.w.data();
    off = 1;
    EXPECT_EQ(zaniDecodeHuffmanPair_1u16s(&p, &off, pairs.t, &run, &level), zanStsVlcCodeBad);
    EXPECT_EQ(p, c.w.data());
    EXPECT_EQ(off, 1);
    EXPECT_EQ(zaniDecodeHuffmanOne_1u32s(&p, &off, &v, plain.t), zanStsVlcCodeBad);
    EXPECT_EQ(p, c.w.data() + 1);
    EXPECT_EQ(off, 30);
}

// Leaf fields: a plain value keeps bits 8 and up as they are (no sign),
// the escape and end-of-block rows come back as runs 255 and 254.
TEST(Mpeg12, LeafFields) {
    CodeList s, r;
    s.add("1", {0x00FFFFFF});
    s.add("01", {-1});
    r.add("1", {kEsc, 0});
    r.add("01", {kEob, 0});
    r.add("001", {63, -32768});
    Table plain(s.array({2}), 0), pairs(r.array({2, 1}), 1);
    Bits b;
    b.put("1" "01" "1" "01" "001");
    Zan32u* p = b.w.data();
    Zan32s off = 31, v;
    ASSERT_EQ(zaniDecodeHuffmanOne_1u32s(&p, &off, &v, plain.t), zanStsOk);
    EXPECT_EQ(v, 0x00FFFFFF);
    ASSERT_EQ(zaniDecodeHuffmanOne_1u32s(&p, &off, &v, plain.t), zanStsOk);
    EXPECT_EQ(v, 0x00FFFFFF);  // -1 << 8, read back without sign
    Zan8u run;
    Zan16s level;
    ASSERT_EQ(zaniDecodeHuffmanPair_1u16s(&p, &off, pairs.t, &run, &level), zanStsOk);
    EXPECT_EQ(run, 255);
    ASSERT_EQ(zaniDecodeHuffmanPair_1u16s(&p, &off, pairs.t, &run, &level), zanStsOk);
    EXPECT_EQ(run, 254);
    ASSERT_EQ(zaniDecodeHuffmanPair_1u16s(&p, &off, pairs.t, &run, &level), zanStsOk);
    EXPECT_EQ(run, 63);
    EXPECT_EQ(level, -32768);
    EXPECT_EQ(off, 31 - 9);
}

TEST(Mpeg12, DecodersCheckPointersFirst) {
    CodeList s;
    s.add("1", {5});
    Table t(s.array({1}), 0);
    Zan32u words[2] = {0x80000000u, 0};
    Zan32u* p = words;
    Zan32u* none = nullptr;
    Zan32s off = 31, v = 3;
    Zan8u run = 1;
    Zan16s level = 1;
    EXPECT_EQ(zaniDecodeHuffmanOne_1u32s(nullptr, &off, &v, t.t), zanStsNullPtr);
    EXPECT_EQ(zaniDecodeHuffmanOne_1u32s(&p, nullptr, &v, t.t), zanStsNullPtr);
    EXPECT_EQ(zaniDecodeHuffmanOne_1u32s(&p, &off, nullptr, t.t), zanStsNullPtr);
    EXPECT_EQ(zaniDecodeHuffmanOne_1u32s(&p, &off, &v, nullptr), zanStsNullPtr);
    EXPECT_EQ(zaniDecodeHuffmanOne_1u32s(&none, &off, &v, t.t), zanStsNullPtr);
    EXPECT_EQ(zaniDecodeHuffmanPair_1u16s(&none, &off, t.t, &run, &level), zanStsNullPtr);
    EXPECT_EQ(zaniDecodeHuffmanPair_1u16s(&p, &off, t.t, nullptr, &level), zanStsNullPtr);
    EXPECT_EQ(zaniDecodeHuffmanPair_1u16s(&p, &off, t.t, &run, nullptr), zanStsNullPtr);
    EXPECT_EQ(p, words);
    EXPECT_EQ(off, 31);
    EXPECT_EQ(v, 3);
}

// -------------------------------------------------- expected block values

Zan32s sgn(Zan32s v) { return (v > 0) - (v < 0); }

Zan16s mpeg1_value(Zan32s raw) {
    Zan32s v = static_cast<Zan16s>(raw);
    if (v % 2 == 0) v -= sgn(v);
    return static_cast<Zan16s>(std::clamp(v, -2048, 2047));
}

// The dequantised block the standard gives for a block of levels (raster
// order); mpeg 1 or 2.
std::array<Zan16s, 64> expected(const std::array<Zan16s, 64>& lv, bool intra, int mpeg, Zan32s QP, const Zan16s* W,
                                Zan16s dc) {
    std::array<Zan16s, 64> out{};
    Zan32s sum = 0;
    for (int p = 0; p < 64; ++p) {
        const Zan32s l = lv[p];
        if (intra && p == 0) {
            out[0] = dc;
        } else if (l != 0) {
            if (mpeg == 2)
                out[p] = static_cast<Zan16s>((intra ? 2 * l : 2 * l + sgn(l)) * W[p] * QP / 32);
            else
                out[p] = mpeg1_value((intra ? 2 * l : 2 * l + sgn(l)) * W[p] * QP / 16);
        }
        sum += out[p];
    }
    if (mpeg == 2 && sum % 2 == 0) out[63] = static_cast<Zan16s>(out[63] ^ 1);
    return out;
}

// A random block of levels: a few or many nonzero values, mostly small, some
// needing the escape, some at the escape's limits.
std::array<Zan16s, 64> random_levels(std::mt19937& rng, int maxLevel, bool needOne) {
    std::array<Zan16s, 64> lv{};
    int count = rng() % 3 == 0 ? 64 : static_cast<int>(rng() % 14);
    for (int i = 0; i < count; ++i) {
        int kind = static_cast<int>(rng() % 10);
        int mag = kind < 6 ? 1 + static_cast<int>(rng() % 3)
                  : kind < 8 ? 1 + static_cast<int>(rng() % 45)
                  : kind < 9 ? 1 + static_cast<int>(rng() % maxLevel)
                             : maxLevel;
        lv[rng() % 64] = static_cast<Zan16s>(rng() % 2 ? mag : -mag);
    }
    if (needOne && std::all_of(lv.begin(), lv.end(), [](Zan16s v) { return v == 0; })) lv[rng() % 64] = 1;
    return lv;
}

int last_index(const std::array<Zan16s, 64>& lv, const std::vector<Zan32s>& scan, int from) {
    int last = from == 1 ? 0 : -1;
    for (int i = from; i < 64; ++i)
        if (lv[scan[i]]) last = i;
    return last;
}

}  // namespace

namespace {

// ------------------------------------------------ MPEG-2 round trips

// Encoding tables from the standard's code lists.
struct Mpeg2Tables {
    RLTable zero = table_zero(), one = table_one();
    Table first{zero.list(true).array({5, 4, 4, 4}), 1};
    Table next0{zero.list().array({8, 4, 5}), 1};
    Table next1{one.list().array({4, 4, 4, 5}), 1};
    Table enc0{zero.list().array({8, 9}), 2};
    Table enc1{one.list().array({8, 9}), 2};
    Table dcLuma{dc_list(kDcLuma).array({4, 6}), 0};
    Table dcChroma{dc_list(kDcChroma).array({10}), 0};
    std::vector<Zan32s> dcLumaPairs() const {
        std::vector<Zan32s> v;
        for (const char* c : kDcLuma) v.insert(v.end(), {to_code(c), static_cast<Zan32s>(std::strlen(c))});
        return v;
    }
};

// Random blocks of levels written with the block encoders and read back with
// the MPEG-2 decoders: the dequantised blocks are the standard's, sizes are
// the last scan index, and the decoder's cursor ends where the encoder's
// did, block after block.
TEST(Mpeg12, Mpeg2RoundTrip) {
    Mpeg2Tables T;
    std::mt19937 rng(3);
    const auto dcPairs = T.dcLumaPairs();
    for (int round = 0; round < 300; ++round) {
        const bool intra = round % 2 == 0;
        const bool one = intra && round % 4 == 0;  // intra_vlc_format
        const std::vector<Zan32s> scan = scan32(static_cast<int>(rng() % 2));
        const Zan32s QP = 1 + static_cast<Zan32s>(rng() % 112);
        std::array<Zan16s, 64> W;
        for (auto& w : W) w = static_cast<Zan16s>(1 + rng() % 255);
        const bool flat = !intra && rng() % 3 == 0;
        if (flat) W.fill(16);

        std::vector<Zan32u> buf(64 * 4 * 8 + 8, 0);
        Zan32s free0 = 1 + static_cast<Zan32s>(rng() % 32);
        buf[0] = free0 == 32 ? 0 : static_cast<Zan32u>(rng()) & ~((1u << free0) - 1);  // bits already written
        Zan32u* put = buf.data();
        Zan32s free = free0;
        Zan32s encPred = 1 << (7 + rng() % 3);
        const Zan32s intraDCShift = static_cast<Zan32s>(rng() % 4);
        std::vector<std::array<Zan16s, 64>> blocks;
        std::vector<Zan32u*> ends;
        std::vector<Zan32s> endFree;
        Zan32s startPred = encPred;
        for (int k = 0; k < 4; ++k) {
            auto lv = random_levels(rng, 2047, !intra);
            if (rng() % 16 == 0) lv[scan[1 + rng() % 63]] = -2048;
            if (intra) lv[0] = static_cast<Zan16s>(std::clamp<Zan32s>(encPred + static_cast<Zan32s>(rng() % 4001) - 2000, 0, 2047));
            Zan32s count = 0;
            for (int i = intra ? 1 : 0; i < 64; ++i) count += lv[i] != 0;
            if (intra) {
                ASSERT_EQ(zaniPutIntraBlock(&put, &free, lv.data(), &encPred, dcPairs.data(), one ? T.enc1.t : T.enc0.t,
                                            scan.data(), one ? 4 : 2, one ? 6 : 2, count),
                          zanStsOk);
            } else {
                ASSERT_EQ(zaniPutNonIntraBlock(&put, &free, lv.data(), T.enc0.t, scan.data(), 2, 2, count), zanStsOk);
            }
            if (intra) {
                ASSERT_EQ(encPred, lv[0]);
            }
            blocks.push_back(lv);
            ends.push_back(put);
            endFree.push_back(free);
        }

        Zan32u* p = buf.data();
        Zan32s off = free0 - 1;
        Zan16s decPred = static_cast<Zan16s>(startPred);
        for (int k = 0; k < 4; ++k) {
            std::array<Zan16s, 64> got;
            got.fill(0x5555);
            Zan32s size = -9;
            const auto& lv = blocks[k];
            if (intra) {
                ASSERT_EQ(zaniReconstructDCTBlockIntra_MPEG2_32s(&p, &off, T.dcLuma.t, one ? T.next1.t : T.next0.t,
                                                                 scan.data(), QP, W.data(), &decPred, intraDCShift,
                                                                 got.data(), &size),
                          zanStsOk)
                    << "round " << round << " block " << k;
                EXPECT_EQ(decPred, lv[0]);
            } else {
                ASSERT_EQ(zaniReconstructDCTBlock_MPEG2_32s(&p, &off, T.first.t, T.next0.t, scan.data(), QP,
                                                            flat ? nullptr : W.data(), got.data(), &size),
                          zanStsOk)
                    << "round " << round << " block " << k;
            }
            auto want = expected(lv, intra, 2, QP, W.data(), static_cast<Zan16s>(lv[0] << intraDCShift));
            ASSERT_EQ(got, want) << "round " << round << " block " << k;
            int last = last_index(lv, scan, intra ? 1 : 0);
            ASSERT_EQ(size, intra ? last : std::max(last, 1)) << "round " << round;
            ASSERT_EQ(p, ends[k]);
            ASSERT_EQ(off, endFree[k] - 1);
        }
    }
}

// MPEG-2 intra DC: the predictor wraps at 16 bits, entry 0 is the predictor
// shifted by intraDCShift (kept as 16 bits); size 0 reads no bits.
TEST(Mpeg12, Mpeg2IntraDc) {
    Mpeg2Tables T;
    auto scan = scan32(1);
    std::array<Zan16s, 64> got;
    Zan32s size = -1;
    Bits b;
    b.put(kDcLuma[1]);
    b.put("1");  // +1
    b.put("10");  // end of block (table zero)
    b.put(kDcLuma[0]);
    b.put("10");
    Zan32u* p = b.w.data();
    Zan32s off = 31;
    Zan16s pred = 32767;
    ASSERT_EQ(zaniReconstructDCTBlockIntra_MPEG2_32s(&p, &off, T.dcLuma.t, T.next0.t, scan.data(), 1, kDefaultIntra, &pred, 2,
                                                     got.data(), &size),
              zanStsOk);
    EXPECT_EQ(pred, -32768);
    EXPECT_EQ(got[0], 0);  // -32768 << 2 kept as 16 bits
    EXPECT_EQ(got[63], 1);  // sum 0: even
    EXPECT_EQ(size, 0);
    pred = 300;
    ASSERT_EQ(zaniReconstructDCTBlockIntra_MPEG2_32s(&p, &off, T.dcLuma.t, T.next0.t, scan.data(), 1, kDefaultIntra, &pred, 3,
                                                     got.data(), &size),
              zanStsOk);
    EXPECT_EQ(pred, 300);
    EXPECT_EQ(got[0], 2400);
    EXPECT_EQ(got[63], 1);
    EXPECT_EQ(pos(b.w.data(), p, off), 2 + 1 + 2 + 3 + 2);
}

// ------------------------------------------------ MPEG-1 streams

// Writes an MPEG-1 coefficient: the table's code, or the escape with 8 or 16
// bits of level.
void put_mpeg1(Bits& b, const RLTable& t, int run, int level, bool first) {
    if (first && run == 0 && (level == 1 || level == -1)) {
        b.put(level == 1 ? "10" : "11");
        return;
    }
    std::string c = t.code(run, level);
    if (!c.empty()) {
        b.put(c);
        return;
    }
    b.put(t.marker(kEsc));
    b.put(static_cast<Zan32u>(run), 6);
    if (level > -128 && level < 128) {
        b.put(static_cast<Zan32u>(level) & 0xFF, 8);
    } else if (level > 0) {
        b.put(0, 8);
        b.put(static_cast<Zan32u>(level), 8);
    } else {
        b.put(0x80, 8);
        b.put(static_cast<Zan32u>(level + 256), 8);
    }
}

TEST(Mpeg12, Mpeg1Streams) {
    Mpeg2Tables T;
    std::mt19937 rng(5);
    for (int round = 0; round < 300; ++round) {
        const bool intra = round % 2 == 0;
        const std::vector<Zan32s> scan = scan32(static_cast<int>(rng() % 3));
        const Zan32s QP = 1 + static_cast<Zan32s>(rng() % 31);
        std::array<Zan16s, 64> W;
        for (auto& w : W) w = static_cast<Zan16s>(1 + rng() % 255);
        Bits b;
        int lead = static_cast<int>(rng() % 32);
        b.put(0, lead);
        Zan16s pred = 1024;
        std::vector<std::array<Zan16s, 64>> blocks;
        std::vector<Zan16s> dcs;
        std::vector<int> ends;
        for (int k = 0; k < 3; ++k) {
            auto lv = random_levels(rng, 255, !intra);
            if (intra) {
                // The DC differential of sizes 0..8, in the scaled domain.
                int size = static_cast<int>(rng() % 9);
                int diff = size == 0 ? 0 : static_cast<int>((1 << (size - 1)) + rng() % (1u << (size - 1)));
                if (rng() % 2) diff = -diff;
                b.put(kDcLuma[size]);
                if (size) b.put(static_cast<Zan32u>(diff > 0 ? diff : diff + (1 << size) - 1), size);
                pred = static_cast<Zan16s>(pred + 8 * diff);
                dcs.push_back(pred);
            }
            int run = 0;
            bool first = !intra;
            for (int i = intra ? 1 : 0; i < 64; ++i) {
                if (!lv[scan[i]]) {
                    ++run;
                    continue;
                }
                put_mpeg1(b, T.zero, run, lv[scan[i]], first);
                first = false;
                run = 0;
            }
            b.put("10");
            blocks.push_back(lv);
            ends.push_back(b.n);
        }
        Zan32u* p = b.w.data();
        Zan32s off = 31 - lead;
        Zan16s decPred = 1024;
        for (int k = 0; k < 3; ++k) {
            std::array<Zan16s, 64> got;
            got.fill(0x5555);
            Zan32s size = -9;
            if (intra) {
                ASSERT_EQ(zaniReconstructDCTBlockIntra_MPEG1_32s(&p, &off, T.dcLuma.t, T.next0.t, scan.data(), QP,
                                                                 W.data(), &decPred, got.data(), &size),
                          zanStsOk);
                EXPECT_EQ(decPred, dcs[k]);
            } else {
                ASSERT_EQ(zaniReconstructDCTBlock_MPEG1_32s(&p, &off, T.first.t, T.next0.t, scan.data(), QP, W.data(),
                                                            got.data(), &size),
                          zanStsOk);
            }
            auto want = expected(blocks[k], intra, 1, QP, W.data(), intra ? dcs[k] : 0);
            ASSERT_EQ(got, want) << "round " << round << " block " << k;
            ASSERT_EQ(size, last_index(blocks[k], scan, intra ? 1 : 0));
            ASSERT_EQ(pos(b.w.data(), p, off), ends[k]);
        }
    }
}

// ------------------------------------------------ sharp known answers

// Non-intra MPEG-2: +1 at index 0 then end of block.  W 16, QP 4: 6, an even
// sum, so entry 63 goes from 0 to 1; the size reports 1 for index 0.
TEST(Mpeg12, Mpeg2MismatchAndSizeOfFirstOnly) {
    Mpeg2Tables T;
    Bits b;
    b.put("10");  // first coefficient +1
    b.put("10");  // end of block
    Zan32u* p = b.w.data();
    Zan32s off = 31, size = 0;
    std::array<Zan16s, 64> got;
    got.fill(7);
    auto scan = scan32(0);
    ASSERT_EQ(zaniReconstructDCTBlock_MPEG2_32s(&p, &off, T.first.t, T.next0.t, scan.data(), 4, nullptr, got.data(), &size),
              zanStsOk);
    EXPECT_EQ(got[0], 6);
    EXPECT_EQ(got[63], 1);
    for (int i = 1; i < 63; ++i) EXPECT_EQ(got[i], 0);
    EXPECT_EQ(size, 1);
    EXPECT_EQ(off, 27);
    // QP 2: 3, odd: nothing changes.
    p = b.w.data();
    off = 31;
    ASSERT_EQ(zaniReconstructDCTBlock_MPEG2_32s(&p, &off, T.first.t, T.next0.t, scan.data(), 2, nullptr, got.data(), &size),
              zanStsOk);
    EXPECT_EQ(got[0], 3);
    EXPECT_EQ(got[63], 0);
    // Entry 63 odd and the sum even: it goes down.  -1 at 0 (value -3 with
    // QP 2), then 2 at the last position (run 62, escape): W 16, QP 2: 5.
    Bits c;
    c.put("11");
    c.put("000001");
    c.put(62, 6);
    c.put(1, 12);  // level 1 at index 63: value 3; sum -3 + 3 = 0, even
    c.put("10");
    p = c.w.data();
    off = 31;
    ASSERT_EQ(zaniReconstructDCTBlock_MPEG2_32s(&p, &off, T.first.t, T.next0.t, scan.data(), 2, nullptr, got.data(), &size),
              zanStsOk);
    EXPECT_EQ(got[0], -3);
    EXPECT_EQ(got[63], 2);
    EXPECT_EQ(size, 63);
}

// Escapes at the level limits: MPEG-2 keeps the 16-bit truncation, MPEG-1
// clamps (after making the value odd).
TEST(Mpeg12, EscapesAtTheLimits) {
    Mpeg2Tables T;
    auto scan = scan32(0);
    std::array<Zan16s, 64> W;
    W.fill(16);
    std::array<Zan16s, 64> got;
    Zan32s size;
    {  // MPEG-2 non-intra, level 2047 at index 5, QP 112: 16 * 112 * 4095 / 32 = 229320 -> 32712
        Bits b;
        b.put("000001");
        b.put(5, 6);
        b.put(2047, 12);
        b.put("000001");
        b.put(0, 6);
        b.put(0x800, 12);  // -2048 at index 6: 16 * 112 * -4097 / 32 = -229432, kept as 16 bits
        b.put("10");
        Zan32u* p = b.w.data();
        Zan32s off = 31;
        ASSERT_EQ(zaniReconstructDCTBlock_MPEG2_32s(&p, &off, T.first.t, T.next0.t, scan.data(), 112, W.data(), got.data(), &size),
                  zanStsOk);
        EXPECT_EQ(got[scan[5]], 32712);
        EXPECT_EQ(got[scan[6]], static_cast<Zan16s>(-229432));
        EXPECT_EQ(size, 6);
        EXPECT_EQ(pos(b.w.data(), p, off), 50);
    }
    {  // MPEG-1 non-intra: 255 with QP 31: 16 * 31 * 511 / 16 = 15841 -> 2047; -256: -15903 -> -2048;
       // 100 with W 16 QP 1: 201 stays; 2 with QP 1: 5; 1 with QP 2: 6 -> 5 (odd, toward zero)
        Bits b;
        put_mpeg1(b, T.zero, 0, 255, true);
        b.put("000001");
        b.put(0, 6);
        b.put(0x80, 8);
        b.put(0, 8);  // -256
        b.put("10");
        Zan32u* p = b.w.data();
        Zan32s off = 31;
        ASSERT_EQ(zaniReconstructDCTBlock_MPEG1_32s(&p, &off, T.first.t, T.next0.t, scan.data(), 31, W.data(), got.data(), &size),
                  zanStsOk);
        EXPECT_EQ(got[0], 2047);
        EXPECT_EQ(got[1], -2048);
        EXPECT_EQ(size, 1);
        Bits c;
        c.put("10");  // +1 first
        c.put("0100" "0");  // (0, 2)
        c.put("10");
        p = c.w.data();
        off = 31;
        ASSERT_EQ(zaniReconstructDCTBlock_MPEG1_32s(&p, &off, T.first.t, T.next0.t, scan.data(), 2, W.data(), got.data(), &size),
                  zanStsOk);
        EXPECT_EQ(got[0], 5);   // 3 * 2 = 6, made odd
        EXPECT_EQ(got[1], 9);   // 5 * 2 = 10, made odd
        EXPECT_EQ(got[63], 0);  // no mismatch control
    }
    {  // MPEG-1 intra AC 16-bit wrap before the clamp: W 255, QP 31, level 255:
       // 255 * 31 * 510 / 16 = 251971 -> -10173 as 16 bits, odd -> clamped to -2048
        std::array<Zan16s, 64> W2;
        W2.fill(255);
        Bits b;
        b.put(kDcLuma[0]);
        put_mpeg1(b, T.zero, 0, 255, false);
        b.put("10");
        Zan32u* p = b.w.data();
        Zan32s off = 31;
        Zan16s pred = 1024;
        ASSERT_EQ(zaniReconstructDCTBlockIntra_MPEG1_32s(&p, &off, T.dcLuma.t, T.next0.t, scan.data(), 31, W2.data(), &pred,
                                                         got.data(), &size),
                  zanStsOk);
        EXPECT_EQ(got[0], 1024);
        EXPECT_EQ(got[1], -2048);
        EXPECT_EQ(size, 1);
    }
}

// Coded-data failures: a run past the end of the block and an invalid code
// give -74; the cursor and the size stay as they were.
TEST(Mpeg12, BlockDecodeFailures) {
    Mpeg2Tables T;
    auto scan = scan32(0);
    std::array<Zan16s, 64> got;
    Zan32s size = -5;
    {
        Bits b;
        b.put("10");  // +1 at 0
        b.put("000001");
        b.put(63, 6);  // run 63: index 64
        b.put(1, 12);
        b.put("10");
        Zan32u* p = b.w.data();
        Zan32s off = 31;
        EXPECT_EQ(zaniReconstructDCTBlock_MPEG2_32s(&p, &off, T.first.t, T.next0.t, scan.data(), 2, nullptr, got.data(), &size),
                  zanStsVlcCodeBad);
        EXPECT_EQ(p, b.w.data());
        EXPECT_EQ(off, 31);
        EXPECT_EQ(size, -5);
        EXPECT_EQ(got[0], 3);  // what was stored so far stays
    }
    {
        Bits b;
        b.put(kDcLuma[1]);
        b.put("1");
        b.put("0000000000000000");  // no code of table zero begins so
        Zan32u* p = b.w.data();
        Zan32s off = 31;
        Zan16s pred = 100;
        EXPECT_EQ(zaniReconstructDCTBlockIntra_MPEG2_32s(&p, &off, T.dcLuma.t, T.next0.t, scan.data(), 2, kDefaultIntra, &pred, 1,
                                                         got.data(), &size),
                  zanStsVlcCodeBad);
        EXPECT_EQ(off, 31);
        EXPECT_EQ(size, -5);
        EXPECT_EQ(pred, 101);
        EXPECT_EQ(got[0], 202);
        pred = 100;
        p = b.w.data();
        EXPECT_EQ(zaniReconstructDCTBlockIntra_MPEG1_32s(&p, &off, T.dcLuma.t, T.next0.t, scan.data(), 2, kDefaultIntra, &pred,
                                                         got.data(), &size),
                  zanStsVlcCodeBad);
        EXPECT_EQ(pred, 108);
    }
    {  // MPEG-1 non-intra: an end of block in the first table ends the call
        // with its run as the size.
        Bits b;
        b.put("0");  // the first bit 0 sends the decoder to the first table
        Zan32u* p = b.w.data();
        Zan32s off = 31;
        CodeList e;
        e.add("0", {kEob, 0});
        e.add("1", {0, 1});
        Table eobFirst(e.array({2}), 1);
        ASSERT_EQ(zaniReconstructDCTBlock_MPEG1_32s(&p, &off, eobFirst.t, T.next0.t, scan.data(), 2, kDefaultIntra, got.data(), &size),
                  zanStsOk);
        EXPECT_EQ(size, 254);
        EXPECT_EQ(off, 30);
        for (auto v : got) EXPECT_EQ(v, 0);
    }
}

// ------------------------------------------------ encoding table and put

// A small encoding table laid out by hand: runs 0 (levels 1, 2), 1 (1),
// 2 (none) and 3 (1).
CodeList small_rl() {
    CodeList s;
    s.add("110", {0, 1});
    s.add("111", {0, -1});
    s.add("01000", {0, 2});
    s.add("01001", {0, -2});
    s.add("0110", {1, 1});
    s.add("0111", {1, -1});
    s.add("001110", {3, 1});
    s.add("001111", {3, -1});
    s.add("10", {kEob, 0});
    s.add("000001", {kEsc, 0});
    return s;
}

TEST(Mpeg12, EncodeTableLayout) {
    Table t(small_rl().array({8}), 2);
    ASSERT_NE(t.t, nullptr);
    const Zan32u want[17] = {(3u << 20) | (((2u << 4) | 2) << 10) | ((1u << 4) | 6),
                             28, 44, 52, 60,
                             (9u << 16) | 5, (7u << 16) | 3, 2, (6u << 16) | 3, (8u << 16) | 5,
                             (7u << 16) | 4, 1, (6u << 16) | 4,
                             0xFFFFFFFFu,
                             (15u << 16) | 6, 1, (14u << 16) | 6};
    for (int i = 0; i < 17; ++i) EXPECT_EQ(t.t[i], want[i]) << "word " << i;
}

// The put cursor: an exact fill moves on with 32 free bits and leaves the
// next word alone (the end-of-block code is ORed into it); a crossing
// assigns the next word.
TEST(Mpeg12, PutCursorExactFillAndCrossing) {
    Table t(small_rl().array({8}), 2);
    auto scan = scan32(0);
    std::array<Zan16s, 64> blk{};
    blk[0] = 1;
    Zan32u words[3] = {0xFFFFFFFCu, 0x0000BEEFu, 0x12345678u};
    Zan32u* p = words;
    Zan32s free = 2;
    ASSERT_EQ(zaniPutNonIntraBlock(&p, &free, blk.data(), t.t, scan.data(), 2, 2, 1), zanStsOk);
    EXPECT_EQ(words[0], 0xFFFFFFFEu);
    EXPECT_EQ(words[1], 0x8000BEEFu);
    EXPECT_EQ(p, words + 1);
    EXPECT_EQ(free, 30);

    Zan32u w2[3] = {0xFFFFFFFEu, 0x0000BEEFu, 0x12345678u};
    p = w2;
    free = 1;
    blk[0] = -1;  // 11
    ASSERT_EQ(zaniPutNonIntraBlock(&p, &free, blk.data(), t.t, scan.data(), 2, 2, 1), zanStsOk);
    EXPECT_EQ(w2[0], 0xFFFFFFFFu);
    EXPECT_EQ(w2[1], 0xC0000000u);  // assigned 1 at the top, then 10 ORed in
    EXPECT_EQ(w2[2], 0x12345678u);
    EXPECT_EQ(p, w2 + 1);
    EXPECT_EQ(free, 29);
}

// An intra block written by hand: DC difference 2 (size 2: 01, then 10),
// +2 at run 0, -1 at run 1, -3 at run 6 (beyond the table: escape), +3 at
// run 0 (beyond row 0: escape), end of block.
TEST(Mpeg12, PutIntraKnownBits) {
    Table t(small_rl().array({8}), 2);
    std::vector<Zan32s> dc;
    for (const char* c : kDcLuma) dc.insert(dc.end(), {to_code(c), static_cast<Zan32s>(std::strlen(c))});
    auto scan = scan32(0);
    std::array<Zan16s, 64> blk{};
    blk[0] = 130;
    blk[scan[1]] = 2;
    blk[scan[3]] = -1;
    blk[scan[10]] = -3;
    blk[scan[11]] = 3;
    blk[scan[40]] = 9;  // beyond coeffCount: not written
    Bits want;
    want.put(0x5, 3);  // bits already in the word
    want.put("01" "10" "01000" "0111");
    want.put("000001" "000110");
    want.put(0xFFD, 12);
    want.put("000001" "000000");
    want.put(3, 12);
    want.put("10");
    std::vector<Zan32u> buf(4, 0);
    buf[0] = 0xA0000000u;
    Zan32u* p = buf.data();
    Zan32s free = 29, pred = 128;
    ASSERT_EQ(zaniPutIntraBlock(&p, &free, blk.data(), &pred, dc.data(), t.t, scan.data(), 2, 2, 4), zanStsOk);
    EXPECT_EQ(pred, 130);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(buf[i], want.w[i]) << "word " << i;
    EXPECT_EQ((p - buf.data()) * 32 + 32 - free, want.n);

    // A negative difference: -5 (size 3: 101, then -5 + 7 = 2: 010).
    std::array<Zan16s, 64> dcOnly{};
    dcOnly[0] = 125;
    std::vector<Zan32u> b2(2, 0);
    p = b2.data();
    free = 32;
    ASSERT_EQ(zaniPutIntraBlock(&p, &free, dcOnly.data(), &pred, dc.data(), t.t, scan.data(), 2, 2, 0), zanStsOk);
    EXPECT_EQ(b2[0], 0xA8000000u | (0x2u << 24));  // 101 010 10
    EXPECT_EQ(free, 24);
    EXPECT_EQ(pred, 125);
}

TEST(Mpeg12, BlockFunctionsCheckPointersFirst) {
    Table t(small_rl().array({8}), 2);
    auto scan = scan32(0);
    std::array<Zan16s, 64> blk;
    blk.fill(3);
    Zan32u words[4] = {};
    Zan32u* p = words;
    Zan32u* none = nullptr;
    Zan32s off = 31, size = 77, pred32 = 5;
    Zan16s pred = 5;
    Zan32s dc[24] = {};
    EXPECT_EQ(zaniPutIntraBlock(&p, &off, blk.data(), &pred32, dc, t.t, nullptr, 2, 2, 1), zanStsNullPtr);
    EXPECT_EQ(zaniPutIntraBlock(&p, &off, blk.data(), nullptr, dc, t.t, scan.data(), 2, 2, 1), zanStsNullPtr);
    EXPECT_EQ(zaniPutIntraBlock(&none, &off, blk.data(), &pred32, dc, t.t, scan.data(), 2, 2, 1), zanStsNullPtr);
    EXPECT_EQ(zaniPutIntraBlock(&p, &off, blk.data(), &pred32, nullptr, t.t, scan.data(), 2, 2, 1), zanStsNullPtr);
    EXPECT_EQ(zaniPutNonIntraBlock(&p, &off, nullptr, t.t, scan.data(), 2, 2, 1), zanStsNullPtr);
    EXPECT_EQ(zaniPutNonIntraBlock(&p, &off, blk.data(), nullptr, scan.data(), 2, 2, 1), zanStsNullPtr);
    EXPECT_EQ(zaniPutNonIntraBlock(&p, nullptr, blk.data(), t.t, scan.data(), 2, 2, 1), zanStsNullPtr);
    EXPECT_EQ(zaniReconstructDCTBlock_MPEG2_32s(&p, &off, t.t, t.t, scan.data(), 2, nullptr, blk.data(), nullptr), zanStsNullPtr);
    EXPECT_EQ(zaniReconstructDCTBlock_MPEG2_32s(&none, &off, t.t, t.t, scan.data(), 2, nullptr, blk.data(), &size), zanStsNullPtr);
    EXPECT_EQ(zaniReconstructDCTBlock_MPEG1_32s(&p, &off, t.t, t.t, scan.data(), 2, nullptr, blk.data(), &size), zanStsNullPtr);
    EXPECT_EQ(zaniReconstructDCTBlock_MPEG1_32s(&p, &off, t.t, nullptr, scan.data(), 2, kDefaultIntra, blk.data(), &size),
              zanStsNullPtr);
    EXPECT_EQ(zaniReconstructDCTBlockIntra_MPEG1_32s(&p, &off, t.t, t.t, scan.data(), 2, kDefaultIntra, nullptr, blk.data(), &size),
              zanStsNullPtr);
    EXPECT_EQ(zaniReconstructDCTBlockIntra_MPEG2_32s(&p, &off, t.t, t.t, scan.data(), 2, nullptr, &pred, 0, blk.data(), &size),
              zanStsNullPtr);
    EXPECT_EQ(zaniReconstructDCTBlockIntra_MPEG2_32s(&p, nullptr, t.t, t.t, scan.data(), 2, kDefaultIntra, &pred, 0, blk.data(),
                                                     &size),
              zanStsNullPtr);
    EXPECT_EQ(p, words);
    EXPECT_EQ(off, 31);
    EXPECT_EQ(size, 77);
    EXPECT_EQ(pred, 5);
    EXPECT_EQ(pred32, 5);
    for (auto v : blk) EXPECT_EQ(v, 3);
    for (auto w : words) EXPECT_EQ(w, 0u);
}

// ------------------------------------------------ quantisers

TEST(Mpeg12, ForwardQuantisers) {
    alignas(16) std::array<Zan16s, 72> store{};
    for (int shift : {0, 1}) {  // aligned and not
        Zan16s* b = store.data() + shift;
        Zan32s count = -1;
        std::fill(b, b + 64, 0);
        b[0] = 500;
        b[1] = 100;
        b[2] = -19;
        ASSERT_EQ(zaniQuantIntra_MPEG2_16s_C1I(b, 2, nullptr, &count), zanStsOk);
        EXPECT_EQ(b[0], 500);  // kept, not counted
        EXPECT_EQ(b[1], 50);   // 100 * 8 * 0.0625
        EXPECT_EQ(b[2], -8);   // -19 * 8 * 0.052632 = -8.00006, truncated
        EXPECT_EQ(count, 2);

        // Null matrix and QP 1: left alone, all 64 counted.
        std::fill(b, b + 64, 0);
        b[0] = 9;
        b[63] = -32768;
        ASSERT_EQ(zaniQuant_MPEG2_16s_C1I(b, 1, nullptr, &count), zanStsOk);
        EXPECT_EQ(count, 2);
        EXPECT_EQ(b[0], 9);
        EXPECT_EQ(b[63], -32768);
        // The integer path: QP 2 gives r = 32768; -32768 saturates to 32767
        // before the product, then 2047 bounds it.
        b[1] = 100;
        b[2] = 3;
        b[3] = -1;
        ASSERT_EQ(zaniQuant_MPEG2_16s_C1I(b, 2, nullptr, &count), zanStsOk);
        EXPECT_EQ(b[0], 4);
        EXPECT_EQ(b[1], 50);
        EXPECT_EQ(b[2], 1);
        EXPECT_EQ(b[3], 0);
        EXPECT_EQ(b[63], -2047);
        EXPECT_EQ(count, 4);
        // QP 3: r = 21845, so 3 becomes 0 (65535 >> 16).
        std::fill(b, b + 64, 3);
        b[5] = 6;
        ASSERT_EQ(zaniQuant_MPEG2_16s_C1I(b, 3, nullptr, &count), zanStsOk);
        EXPECT_EQ(b[0], 0);
        EXPECT_EQ(b[5], 1);
        EXPECT_EQ(count, 1);
        // A matrix: all 64 treated and counted; an overflowing product
        // becomes the most negative 32-bit value, so -2047.
        alignas(16) std::array<Zan32f, 68> m;
        m.fill(1e30f);
        std::fill(b, b + 64, 0);
        b[0] = 1;
        b[10] = -1;
        ASSERT_EQ(zaniQuant_MPEG2_16s_C1I(b, 1, m.data() + shift, &count), zanStsOk);
        EXPECT_EQ(b[0], -2047);
        EXPECT_EQ(b[10], -2047);
        EXPECT_EQ(count, 2);
    }
    // Statuses: null first, then QP 0; nothing written.
    std::array<Zan16s, 64> b;
    b.fill(5);
    Zan32s count = 99;
    EXPECT_EQ(zaniQuant_MPEG2_16s_C1I(nullptr, 0, nullptr, &count), zanStsNullPtr);
    EXPECT_EQ(zaniQuantIntra_MPEG2_16s_C1I(b.data(), 0, nullptr, nullptr), zanStsNullPtr);
    EXPECT_EQ(zaniQuant_MPEG2_16s_C1I(b.data(), 0, nullptr, &count), zanStsDivByZero);
    EXPECT_EQ(zaniQuantIntra_MPEG2_16s_C1I(b.data(), 0, nullptr, &count), zanStsDivByZero);
    EXPECT_EQ(count, 99);
    for (auto v : b) EXPECT_EQ(v, 5);
}

TEST(Mpeg12, InverseQuantisers) {
    alignas(16) std::array<Zan16s, 72> store{};
    alignas(16) std::array<Zan16s, 72> wstore;
    wstore.fill(16);
    for (int shift : {0, 1}) {
        Zan16s* b = store.data() + shift;
        const Zan16s* W = wstore.data() + shift;
        // Flat: 1 with QP 4 is 6, an even sum: entry 63 becomes 1; -1 is -6.
        std::fill(b, b + 64, 0);
        b[0] = 1;
        ASSERT_EQ(zaniQuantInv_MPEG2_16s_C1I(b, 4, nullptr), zanStsOk);
        EXPECT_EQ(b[0], 6);
        EXPECT_EQ(b[63], 1);
        std::fill(b, b + 64, 0);
        b[9] = -1;
        b[10] = 3000;  // clamped to 2047 (odd sum with -6: nothing more)
        ASSERT_EQ(zaniQuantInv_MPEG2_16s_C1I(b, 4, nullptr), zanStsOk);
        EXPECT_EQ(b[9], -6);
        EXPECT_EQ(b[10], 2047);
        EXPECT_EQ(b[63], 0);
        // With weights: 1 -> 3, -1 -> -3 (W 16, QP 2); sum 0 is even: 63 flips.
        std::fill(b, b + 64, 0);
        b[1] = 1;
        b[2] = -1;
        ASSERT_EQ(zaniQuantInv_MPEG2_16s_C1I(b, 2, W), zanStsOk);
        EXPECT_EQ(b[1], 3);
        EXPECT_EQ(b[2], -3);
        EXPECT_EQ(b[63], 1);
        // Intra: entry 0 kept; -1 with W 8 rounds toward zero.  Lane 0 sums
        // 32767 + 1 and saturates at 32767, odd: no flip, though the true sum
        // is even.
        std::fill(b, b + 64, 0);
        b[0] = 32767;
        b[8] = 1;
        ASSERT_EQ(zaniQuantInvIntra_MPEG2_16s_C1I(b, 1, W), zanStsOk);
        EXPECT_EQ(b[0], 32767);
        EXPECT_EQ(b[8], 1);
        EXPECT_EQ(b[63], 0);
        std::fill(b, b + 64, 0);
        b[0] = 2;
        b[1] = -1;
        b[2] = -1;
        std::array<Zan16s, 64> w8;
        w8.fill(8);
        ASSERT_EQ(zaniQuantInvIntra_MPEG2_16s_C1I(b, 1, w8.data()), zanStsOk);
        EXPECT_EQ(b[1], 0);  // (-8 + 15) >> 4
        EXPECT_EQ(b[2], 0);
        EXPECT_EQ(b[63], 1);  // sum 2: even
    }
    std::array<Zan16s, 64> b;
    b.fill(5);
    EXPECT_EQ(zaniQuantInv_MPEG2_16s_C1I(nullptr, 2, nullptr), zanStsNullPtr);
    EXPECT_EQ(zaniQuantInvIntra_MPEG2_16s_C1I(b.data(), 2, nullptr), zanStsNullPtr);
    for (auto v : b) EXPECT_EQ(v, 5);
}

}  // namespace
