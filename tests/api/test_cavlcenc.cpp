// CAVLC syntax elements through the exported functions: a model written from
// the CAVLC residual syntax (H.264 clause 9.2) against every form on random
// blocks, hand-worked known answers, statuses in their order, and outputs
// left alone on failure.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <limits>
#include <random>
#include <vector>

#include "common/scan_tables.h"
#include "zanvc.h"

namespace {

// 4x4 frame (zigzag) and field scans: scan index to raster position.
constexpr Zan32s kZigzag4x4[16] = {0, 1, 4, 8, 5, 2, 3, 6, 9, 12, 13, 10, 7, 11, 14, 15};
constexpr Zan32s kField4x4[16] = {0, 4, 1, 8, 12, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15};

// The syntax elements of one block.  runs holds run_before of every
// coefficient but the lowest one in scan order.
struct Elements {
    int totalCoeff = 0, trailingOnes = 0, signs = 0, totalZeros = 0;
    std::vector<Zan32s> levels;  // the non-trailing-one levels, highest scan index first
    std::vector<int> runs;
    bool operator==(const Elements&) const = default;
};

std::ostream& operator<<(std::ostream& os, const Elements& e) {
    os << "{TotalCoeff " << e.totalCoeff << ", TrailingOnes " << e.trailingOnes << ", signs " << e.signs
       << ", total_zeros " << e.totalZeros << ", levels";
    for (auto v : e.levels) os << ' ' << v;
    os << ", runs";
    for (auto r : e.runs) os << ' ' << r;
    return os << '}';
}

// The model.  coeffs: the block's coefficients in scan order, index 0 the
// lowest.  As an encoder derives them for clause 9.2: the nonzero
// coefficients in scan order; TrailingOnes counts the +-1 values at the high
// end (at most 3), each with trailing_ones_sign_flag; the remaining levels
// are coded from the highest scan index down; total_zeros counts the zeros
// in front of the highest nonzero coefficient; run_before of a coefficient
// is the number of zeros between it and the next lower nonzero coefficient.
Elements model(const std::vector<Zan32s>& coeffs) {
    Elements e;
    std::vector<int> where;  // scan indices of the nonzero coefficients, ascending
    for (int i = 0; i < static_cast<int>(coeffs.size()); ++i)
        if (coeffs[static_cast<size_t>(i)] != 0) where.push_back(i);
    e.totalCoeff = static_cast<int>(where.size());
    if (where.empty()) return e;
    // From the high end down.
    int k = e.totalCoeff - 1;
    while (k >= 0 && e.trailingOnes < 3 && std::abs(static_cast<long long>(coeffs[static_cast<size_t>(where[static_cast<size_t>(k)])])) == 1) {
        e.signs = e.signs * 2 + (coeffs[static_cast<size_t>(where[static_cast<size_t>(k)])] < 0 ? 1 : 0);
        ++e.trailingOnes;
        --k;
    }
    for (; k >= 0; --k) e.levels.push_back(coeffs[static_cast<size_t>(where[static_cast<size_t>(k)])]);
    e.totalZeros = where.back() + 1 - e.totalCoeff;
    for (int j = e.totalCoeff - 1; j > 0; --j)
        e.runs.push_back(where[static_cast<size_t>(j)] - where[static_cast<size_t>(j - 1)] - 1);
    return e;
}

// Output buffers of one call with guards: 16 entries each (more than any
// form needs), all filled with a marker; whatever the call did not write
// keeps it.
template <class L>
struct Out {
    static constexpr Zan8u kMark = 0xC7;
    static constexpr L kLevelMark = static_cast<L>(0x7E5D);
    Zan8u t1 = kMark, signs = kMark, n = kMark, zeros = kMark;
    std::array<L, 16> levels;
    std::array<Zan8u, 16> runs;
    Out() {
        levels.fill(kLevelMark);
        runs.fill(kMark);
    }
    bool untouched() const {
        return t1 == kMark && signs == kMark && n == kMark && zeros == kMark &&
               std::all_of(levels.begin(), levels.end(), [](L v) { return v == kLevelMark; }) &&
               std::all_of(runs.begin(), runs.end(), [](Zan8u v) { return v == kMark; });
    }
    // The elements as written; also checks that nothing past the counts was.
    Elements elements() const {
        Elements e;
        e.totalCoeff = n;
        e.trailingOnes = t1;
        e.signs = signs;
        e.totalZeros = zeros;
        const size_t nLevels = n >= t1 ? size_t{n} - t1 : 0, nRuns = n > 0 ? size_t{n} - 1u : 0;
        for (size_t i = 0; i < nLevels && i < 16; ++i) e.levels.push_back(levels[i]);
        for (size_t i = 0; i < nRuns && i < 16; ++i) e.runs.push_back(runs[i]);
        for (size_t i = nLevels; i < 16; ++i) EXPECT_EQ(levels[i], kLevelMark) << "level " << i << " written";
        for (size_t i = nRuns; i < 16; ++i) EXPECT_EQ(runs[i], kMark) << "run " << i << " written";
        return e;
    }
};

ZanStatus encode(const Zan16s* src, Zan32s first, const Zan32s* scan, Zan32s last, Out<Zan16s>& o) {
    return zaniEncodeCoeffsCAVLC_H264_16s(src, first, scan, last, &o.t1, &o.signs, &o.n, &o.zeros,
                                          o.levels.data(), o.runs.data());
}
ZanStatus encode(const Zan32s* src, Zan32s first, const Zan32s* scan, Zan32s last, Out<Zan32s>& o) {
    return zaniEncodeCoeffsCAVLC_H264_32s(src, first, scan, last, &o.t1, &o.signs, &o.n, &o.zeros,
                                          o.levels.data(), o.runs.data());
}

// The chroma DC forms by shape and type.
ZanStatus encode_dc(int count, const Zan16s* src, Out<Zan16s>& o) {
    auto fn = count == 4 ? zaniEncodeChromaDcCoeffsCAVLC_H264_16s : zaniEncodeCoeffsCAVLCChromaDC2x4_H264_16s;
    return fn(src, &o.t1, &o.signs, &o.n, &o.zeros, o.levels.data(), o.runs.data());
}
ZanStatus encode_dc(int count, const Zan32s* src, Out<Zan32s>& o) {
    auto fn = count == 4 ? zaniEncodeCoeffsCAVLCChromaDC2x2_H264_32s : zaniEncodeCoeffsCAVLCChromaDC2x4_H264_32s;
    return fn(src, &o.t1, &o.signs, &o.n, &o.zeros, o.levels.data(), o.runs.data());
}

// Scan order of the chroma DC blocks: raster for 2x2; for 4:2:2 the coded
// value c[k] sits at raster position 0, 2, 1, 4, 6, 3, 5, 7 of the 2-wide,
// 4-high block (the matrix c0 c2 / c1 c5 / c3 c6 / c4 c7 of H.264's 4:2:2
// chroma DC, clause 8.5.11.1).
constexpr Zan32s kDc2x2Scan[4] = {0, 1, 2, 3};
constexpr Zan32s kDc2x4Scan[8] = {0, 2, 1, 4, 6, 3, 5, 7};

template <class T>
T draw_value(std::mt19937& g, int zeroPercent) {
    if (static_cast<int>(g() % 100) < zeroPercent) return 0;
    switch (g() % 6) {
        case 0: return 1;
        case 1: return -1;
        case 2: return std::numeric_limits<T>::max();
        case 3: return std::numeric_limits<T>::min();
        case 4: return static_cast<T>(static_cast<int>(g() % 9) - 4);
        default: return static_cast<T>(g());
    }
}

// ------------------------------------------------------------ known answers

// The textbook block: raster rows 0 3 -1 0 / 0 -1 1 0 / 1 0 0 0 / 0 0 0 0,
// in zigzag order 0 3 0 1 -1 -1 0 1 then zeros.  Coefficients from the top:
// +1 (index 7), -1 (5), -1 (4) are the trailing ones, signs 0 1 1; then the
// levels 1 (index 3) and 3 (index 1); three zeros lie below index 7 (0, 2,
// 6); the runs after 7, 5, 4, 3 are 1, 0, 0, 1.
template <class T>
void textbook() {
    const T block[16] = {0, 3, -1, 0, 0, -1, 1, 0, 1, 0, 0, 0, 0, 0, 0, 0};
    Out<T> o;
    ASSERT_EQ(encode(block, 0, kZigzag4x4, 15, o), zanStsOk);
    EXPECT_EQ(o.t1, 3);
    EXPECT_EQ(o.signs, 3);
    EXPECT_EQ(o.n, 5);
    EXPECT_EQ(o.zeros, 3);
    EXPECT_EQ(o.levels[0], 1);
    EXPECT_EQ(o.levels[1], 3);
    EXPECT_EQ(o.runs[0], 1);
    EXPECT_EQ(o.runs[1], 0);
    EXPECT_EQ(o.runs[2], 0);
    EXPECT_EQ(o.runs[3], 1);
    EXPECT_EQ(o.levels[2], Out<T>::kLevelMark);
    EXPECT_EQ(o.runs[4], Out<T>::kMark);  // the lowest coefficient's run is not written
    // The same block as an AC block (index 0 left out): index 1 is now the
    // lowest, total zeros counts only index 2 and 6.
    Out<T> ac;
    ASSERT_EQ(encode(block, 1, kZigzag4x4, 15, ac), zanStsOk);
    EXPECT_EQ(ac.n, 5);
    EXPECT_EQ(ac.zeros, 2);
    Elements a = ac.elements(), b = o.elements();
    a.totalZeros = b.totalZeros;  // only total zeros differs
    EXPECT_EQ(a, b);
}

TEST(CavlcEnc, TextbookBlock) {
    textbook<Zan16s>();
    textbook<Zan32s>();
}

TEST(CavlcEnc, EdgeBlocks) {
    Zan16s block[16] = {};
    {  // all zero: every count 0, nothing in the arrays
        Out<Zan16s> o;
        ASSERT_EQ(encode(block, 0, kZigzag4x4, 15, o), zanStsOk);
        EXPECT_EQ(o.t1, 0);
        EXPECT_EQ(o.signs, 0);
        EXPECT_EQ(o.n, 0);
        EXPECT_EQ(o.zeros, 0);
        EXPECT_TRUE(o.elements().levels.empty());
    }
    {  // four +1 at scan 0..3: three trailing ones, the fourth is a level
        for (int i = 0; i < 4; ++i) block[kZigzag4x4[i]] = 1;
        Out<Zan16s> o;
        ASSERT_EQ(encode(block, 0, kZigzag4x4, 15, o), zanStsOk);
        EXPECT_EQ(o.t1, 3);
        EXPECT_EQ(o.signs, 0);
        EXPECT_EQ(o.n, 4);
        EXPECT_EQ(o.zeros, 0);
        EXPECT_EQ(o.levels[0], 1);
        EXPECT_EQ(o.levels[1], Out<Zan16s>::kLevelMark);
        for (int i = 0; i < 3; ++i) EXPECT_EQ(o.runs[i], 0);
    }
    {  // 2 at scan 9 in front of +1 at scan 4: no trailing ones at all
        std::fill(block, block + 16, Zan16s{0});
        block[kZigzag4x4[9]] = 2;
        block[kZigzag4x4[4]] = 1;
        Out<Zan16s> o;
        ASSERT_EQ(encode(block, 0, kZigzag4x4, 15, o), zanStsOk);
        EXPECT_EQ(o.t1, 0);
        EXPECT_EQ(o.n, 2);
        EXPECT_EQ(o.levels[0], 2);
        EXPECT_EQ(o.levels[1], 1);
        EXPECT_EQ(o.runs[0], 4);
        EXPECT_EQ(o.zeros, 8);
    }
    {  // signs: -1 at scan 15 first, then +1 at 10, -1 at 2: 1 0 1 = 5
        std::fill(block, block + 16, Zan16s{0});
        block[kZigzag4x4[15]] = -1;
        block[kZigzag4x4[10]] = 1;
        block[kZigzag4x4[2]] = -1;
        Out<Zan16s> o;
        ASSERT_EQ(encode(block, 0, kZigzag4x4, 15, o), zanStsOk);
        EXPECT_EQ(o.t1, 3);
        EXPECT_EQ(o.signs, 5);
        EXPECT_EQ(o.zeros, 13);
        EXPECT_EQ(o.runs[0], 4);
        EXPECT_EQ(o.runs[1], 7);
        // Two trailing ones only: -1 then +1 gives 2 in the low bits.
        block[kZigzag4x4[2]] = -7;
        Out<Zan16s> p;
        ASSERT_EQ(encode(block, 0, kZigzag4x4, 15, p), zanStsOk);
        EXPECT_EQ(p.t1, 2);
        EXPECT_EQ(p.signs, 2);
        EXPECT_EQ(p.levels[0], -7);
    }
    {  // extreme levels pass unchanged; -1 after them is a level
        Zan32s b32[16] = {};
        b32[kZigzag4x4[5]] = std::numeric_limits<Zan32s>::min();
        b32[kZigzag4x4[3]] = std::numeric_limits<Zan32s>::max();
        b32[kZigzag4x4[0]] = -1;
        Out<Zan32s> o;
        ASSERT_EQ(encode(b32, 0, kZigzag4x4, 15, o), zanStsOk);
        EXPECT_EQ(o.t1, 0);
        EXPECT_EQ(o.levels[0], std::numeric_limits<Zan32s>::min());
        EXPECT_EQ(o.levels[1], std::numeric_limits<Zan32s>::max());
        EXPECT_EQ(o.levels[2], -1);
        EXPECT_EQ(o.runs[0], 1);
        EXPECT_EQ(o.runs[1], 2);
        EXPECT_EQ(o.zeros, 3);
    }
}

TEST(CavlcEnc, ChromaDcOrder) {
    // Distinct levels (no +-1) come out in the visiting order.
    const Zan16s src16[8] = {10, 11, 12, 13, 14, 15, 16, 17};
    const Zan32s src32[8] = {-100000, 11, 12, 13, 14, 15, 16, 70000};
    Out<Zan16s> a;
    ASSERT_EQ(encode_dc(4, src16, a), zanStsOk);
    EXPECT_EQ(a.elements().levels, (std::vector<Zan32s>{13, 12, 11, 10}));
    Out<Zan16s> b;
    ASSERT_EQ(encode_dc(8, src16, b), zanStsOk);
    EXPECT_EQ(b.elements().levels, (std::vector<Zan32s>{17, 15, 13, 16, 14, 11, 12, 10}));
    EXPECT_EQ(b.n, 8);
    EXPECT_EQ(b.zeros, 0);
    Out<Zan32s> c;
    ASSERT_EQ(encode_dc(8, src32, c), zanStsOk);
    EXPECT_EQ(c.elements().levels, (std::vector<Zan32s>{70000, 15, 13, 16, 14, 11, 12, -100000}));
    // 4:2:2: -1 at position 6 is met after 7, 5 and 3 are found empty.
    const Zan32s one[8] = {0, 0, 2, 0, 0, 0, -1, 0};
    Out<Zan32s> d;
    ASSERT_EQ(encode_dc(8, one, d), zanStsOk);
    EXPECT_EQ(d.t1, 1);
    EXPECT_EQ(d.signs, 1);
    EXPECT_EQ(d.n, 2);
    EXPECT_EQ(d.levels[0], 2);
    EXPECT_EQ(d.runs[0], 2);  // positions 4 and 1 between 6 and 2
    EXPECT_EQ(d.zeros, 3);    // and 0 below 2
    Out<Zan32s> e;
    ASSERT_EQ(encode_dc(4, one, e), zanStsOk);  // 2x2: 3 2 1 0
    EXPECT_EQ(e.t1, 0);
    EXPECT_EQ(e.n, 1);
    EXPECT_EQ(e.zeros, 2);
    EXPECT_EQ(e.levels[0], 2);
    EXPECT_EQ(e.runs[0], Out<Zan32s>::kMark);
}

// ------------------------------------------------------------- random model

template <class T>
void random_blocks(unsigned seed) {
    std::mt19937 g(seed);
    for (int d = 0; d < 3000; ++d) {
        const int zeroPercent = static_cast<int>(g() % 101);
        T block[16];
        for (auto& v : block) v = draw_value<T>(g, zeroPercent);
        const Zan32s* scan = d % 2 ? kField4x4 : kZigzag4x4;
        const Zan32s last = d % 3 == 0 ? 15 : static_cast<Zan32s>(g() % 16);
        const Zan32s first = d % 5 == 0 ? 0 : (d % 5 == 1 ? std::min(1, last) : static_cast<Zan32s>(g() % static_cast<unsigned>(last + 1)));
        std::vector<Zan32s> coeffs;
        for (Zan32s i = first; i <= last; ++i) coeffs.push_back(block[scan[i]]);
        Out<T> o;
        ASSERT_EQ(encode(block, first, scan, last, o), zanStsOk);
        ASSERT_EQ(o.elements(), model(coeffs)) << "draw " << d << " range " << first << ".." << last;
    }
}

TEST(CavlcEnc, RandomBlocksAgainstModel) {
    random_blocks<Zan16s>(11);
    random_blocks<Zan32s>(12);
}

template <class T>
void random_dc(unsigned seed) {
    std::mt19937 g(seed);
    for (int d = 0; d < 3000; ++d) {
        const int count = d % 2 ? 8 : 4;
        const Zan32s* scan = count == 4 ? kDc2x2Scan : kDc2x4Scan;
        const int zeroPercent = static_cast<int>(g() % 101);
        T block[8];
        for (auto& v : block) v = draw_value<T>(g, zeroPercent);
        std::vector<Zan32s> coeffs;
        for (int i = 0; i < count; ++i) coeffs.push_back(block[scan[i]]);
        Out<T> o;
        ASSERT_EQ(encode_dc(count, block, o), zanStsOk);
        ASSERT_EQ(o.elements(), model(coeffs)) << "draw " << d << " count " << count;
    }
}

TEST(CavlcEnc, RandomChromaDcAgainstModel) {
    random_dc<Zan16s>(21);
    random_dc<Zan32s>(22);
}

// An 8x8 block coded as four interleaved 4x4 blocks: block i takes the 8x8
// zigzag entries 4k + i, k = 0..15.  The block form reaches them through its
// scan table.
TEST(CavlcEnc, Interleaved8x8ThroughScanTable) {
    std::mt19937 g(31);
    for (int d = 0; d < 200; ++d) {
        const int zeroPercent = static_cast<int>(g() % 101);
        Zan16s block[64];
        for (auto& v : block) v = draw_value<Zan16s>(g, zeroPercent);
        for (int i = 0; i < 4; ++i) {
            Zan32s scan[16];
            std::vector<Zan32s> coeffs;
            for (int k = 0; k < 16; ++k) {
                scan[k] = zan::ownvc_Zigzag[4 * k + i];
                coeffs.push_back(block[scan[k]]);
            }
            Out<Zan16s> o;
            ASSERT_EQ(encode(block, 0, scan, 15, o), zanStsOk);
            ASSERT_EQ(o.elements(), model(coeffs)) << "draw " << d << " block " << i;
        }
    }
}

// ------------------------------------------------------------------ statuses

TEST(CavlcEnc, NullPointersBeforeRange) {
    Zan16s s16[16] = {1};
    Zan32s s32[16] = {1};
    Out<Zan16s> o16;
    Out<Zan32s> o32;
    // Every pointer in turn, with an index range that is also wrong.
    for (int which = 0; which < 8; ++which) {
        auto p = [&](int k, auto* ptr) { return which == k ? nullptr : ptr; };
        EXPECT_EQ(zaniEncodeCoeffsCAVLC_H264_16s(p(0, s16), 5, p(1, kZigzag4x4), 16, p(2, &o16.t1), p(3, &o16.signs),
                                                 p(4, &o16.n), p(5, &o16.zeros), p(6, o16.levels.data()),
                                                 p(7, o16.runs.data())),
                  zanStsNullPtr) << which;
        EXPECT_EQ(zaniEncodeCoeffsCAVLC_H264_32s(p(0, s32), 5, p(1, kZigzag4x4), 16, p(2, &o32.t1), p(3, &o32.signs),
                                                 p(4, &o32.n), p(5, &o32.zeros), p(6, o32.levels.data()),
                                                 p(7, o32.runs.data())),
                  zanStsNullPtr) << which;
    }
    for (int which = 0; which < 7; ++which) {
        auto p = [&](int k, auto* ptr) { return which == k ? nullptr : ptr; };
        EXPECT_EQ(zaniEncodeChromaDcCoeffsCAVLC_H264_16s(p(0, s16), p(1, &o16.t1), p(2, &o16.signs), p(3, &o16.n),
                                                         p(4, &o16.zeros), p(5, o16.levels.data()), p(6, o16.runs.data())),
                  zanStsNullPtr) << which;
        EXPECT_EQ(zaniEncodeCoeffsCAVLCChromaDC2x4_H264_16s(p(0, s16), p(1, &o16.t1), p(2, &o16.signs), p(3, &o16.n),
                                                            p(4, &o16.zeros), p(5, o16.levels.data()), p(6, o16.runs.data())),
                  zanStsNullPtr) << which;
        EXPECT_EQ(zaniEncodeCoeffsCAVLCChromaDC2x2_H264_32s(p(0, s32), p(1, &o32.t1), p(2, &o32.signs), p(3, &o32.n),
                                                            p(4, &o32.zeros), p(5, o32.levels.data()), p(6, o32.runs.data())),
                  zanStsNullPtr) << which;
        EXPECT_EQ(zaniEncodeCoeffsCAVLCChromaDC2x4_H264_32s(p(0, s32), p(1, &o32.t1), p(2, &o32.signs), p(3, &o32.n),
                                                            p(4, &o32.zeros), p(5, o32.levels.data()), p(6, o32.runs.data())),
                  zanStsNullPtr) << which;
    }
    EXPECT_TRUE(o16.untouched());
    EXPECT_TRUE(o32.untouched());
}

TEST(CavlcEnc, IndexRange16sUsesLowByteUnsigned) {
    Zan16s block[16];
    for (int i = 0; i < 16; ++i) block[i] = static_cast<Zan16s>(i + 2);  // all levels
    // Failing ranges: last above 15, last below first, in the low byte.
    const std::pair<Zan32s, Zan32s> bad[] = {{0, 16}, {5, 4}, {0, -1}, {0, 0x110}, {0x20F, 0x10E}, {-1, 15}, {0x80, 3}};
    for (auto [first, last] : bad) {
        Out<Zan16s> o;
        EXPECT_EQ(encode(block, first, kZigzag4x4, last, o), zanStsOutOfRange) << first << ".." << last;
        EXPECT_TRUE(o.untouched());
    }
    // Passing ranges: the low bytes are first 0 and last 15, or 3 and 3.
    const std::pair<Zan32s, Zan32s> good[] = {{0x100, 0x10F}, {-256, 15}, {0x7FFFFF03, -253}};
    for (auto [first, last] : good) {
        Out<Zan16s> o;
        ASSERT_EQ(encode(block, first, kZigzag4x4, last, o), zanStsOk) << first << ".." << last;
        const Zan32s f = first & 0xFF, l = last & 0xFF;
        EXPECT_EQ(o.n, l - f + 1);
        EXPECT_EQ(o.levels[0], block[kZigzag4x4[l]]);
        EXPECT_EQ(o.levels[static_cast<size_t>(l - f)], block[kZigzag4x4[f]]);
    }
}

TEST(CavlcEnc, IndexRange32sIsSigned) {
    Zan32s block[16];
    for (int i = 0; i < 16; ++i) block[i] = i + 2;
    const std::pair<Zan32s, Zan32s> bad[] = {{0, 16}, {5, 4}, {0, -1}, {0x100, 0x10F}, {0, std::numeric_limits<Zan32s>::max()}};
    for (auto [first, last] : bad) {
        Out<Zan32s> o;
        EXPECT_EQ(encode(block, first, kZigzag4x4, last, o), zanStsOutOfRange) << first << ".." << last;
        EXPECT_TRUE(o.untouched());
    }
    // A negative first index passes the signed test; the walk then reads the
    // scan table below index 0, which this caller provides.
    Zan32s scanStore[20] = {5, 0, 0, 0};  // indices -4..-1: raster 5, then 0 three times
    std::copy(kZigzag4x4, kZigzag4x4 + 16, scanStore + 4);
    Zan32s sparse[16] = {};
    sparse[5] = -9;
    sparse[kZigzag4x4[3]] = 1;
    Out<Zan32s> o;
    ASSERT_EQ(encode(sparse, -4, scanStore + 4, 3, o), zanStsOk);
    // Walk 3 (+1), 2, 1, 0, -1, -2, -3 (zeros), -4 (-9).
    EXPECT_EQ(o.n, 2);
    EXPECT_EQ(o.t1, 1);
    EXPECT_EQ(o.signs, 0);
    EXPECT_EQ(o.levels[0], -9);
    EXPECT_EQ(o.runs[0], 6);
    EXPECT_EQ(o.zeros, 6);
}

}  // namespace
