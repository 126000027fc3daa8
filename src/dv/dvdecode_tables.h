// Built-in tables of the DV segment decoder: the AC code table of the DV
// format (IEC 61834-2, SMPTE 314M) in its two-step indexed form, and the
// scan of the 2-4-8 (field) DCT mode.
#pragma once

#include "common/path.h"
#include "zanvc.h"

namespace zan::ZAN_PATH::dv {

// One row of the code table: code length in bits (sign bit included), the
// position step (run + 1; 64 for the end-of-block code) and the level times
// 64 with its sign.  Rows that no code reaches hold length 255.
struct CodeRow {
    Zan8u len;
    Zan8u step;
    Zan16s level;
};

// The AC codes of the DV format without their sign bit and without the two
// regular families (the 13-bit zero-run codes 1111110 + run and the 16-bit
// long code 1111111 + magnitude + sign): length, code, run, amplitude.  A
// code with a non-zero amplitude is followed by a sign bit (1: negative).
struct SourceCode {
    Zan8u len;
    Zan16u code;
    Zan8u run;
    Zan8u amp;
};
inline constexpr SourceCode kSourceCodes[] = {
    { 2, 0x0000,  0,  1},
    { 3, 0x0002,  0,  2},
    { 4, 0x0007,  1,  1},
    { 4, 0x0008,  0,  3},
    { 4, 0x0009,  0,  4},
    { 5, 0x0014,  2,  1},
    { 5, 0x0015,  1,  2},
    { 5, 0x0016,  0,  5},
    { 5, 0x0017,  0,  6},
    { 6, 0x0030,  3,  1},
    { 6, 0x0031,  4,  1},
    { 6, 0x0032,  0,  7},
    { 6, 0x0033,  0,  8},
    { 7, 0x0068,  5,  1},
    { 7, 0x0069,  6,  1},
    { 7, 0x006a,  2,  2},
    { 7, 0x006b,  1,  3},
    { 7, 0x006c,  1,  4},
    { 7, 0x006d,  0,  9},
    { 7, 0x006e,  0, 10},
    { 7, 0x006f,  0, 11},
    { 8, 0x00e0,  7,  1},
    { 8, 0x00e1,  8,  1},
    { 8, 0x00e2,  9,  1},
    { 8, 0x00e3, 10,  1},
    { 8, 0x00e4,  3,  2},
    { 8, 0x00e5,  4,  2},
    { 8, 0x00e6,  2,  3},
    { 8, 0x00e7,  1,  5},
    { 8, 0x00e8,  1,  6},
    { 8, 0x00e9,  1,  7},
    { 8, 0x00ea,  0, 12},
    { 8, 0x00eb,  0, 13},
    { 8, 0x00ec,  0, 14},
    { 8, 0x00ed,  0, 15},
    { 8, 0x00ee,  0, 16},
    { 8, 0x00ef,  0, 17},
    { 9, 0x01e0, 11,  1},
    { 9, 0x01e1, 12,  1},
    { 9, 0x01e2, 13,  1},
    { 9, 0x01e3, 14,  1},
    { 9, 0x01e4,  5,  2},
    { 9, 0x01e5,  6,  2},
    { 9, 0x01e6,  3,  3},
    { 9, 0x01e7,  4,  3},
    { 9, 0x01e8,  2,  4},
    { 9, 0x01e9,  2,  5},
    { 9, 0x01ea,  1,  8},
    { 9, 0x01eb,  0, 18},
    { 9, 0x01ec,  0, 19},
    { 9, 0x01ed,  0, 20},
    { 9, 0x01ee,  0, 21},
    { 9, 0x01ef,  0, 22},
    {10, 0x03e0,  5,  3},
    {10, 0x03e1,  3,  4},
    {10, 0x03e2,  3,  5},
    {10, 0x03e3,  2,  6},
    {10, 0x03e4,  1,  9},
    {10, 0x03e5,  1, 10},
    {10, 0x03e6,  1, 11},
    {11, 0x07ce,  0,  0},
    {11, 0x07cf,  1,  0},
    {11, 0x07d0,  6,  3},
    {11, 0x07d1,  4,  4},
    {11, 0x07d2,  3,  6},
    {11, 0x07d3,  1, 12},
    {11, 0x07d4,  1, 13},
    {11, 0x07d5,  1, 14},
    {12, 0x0fac,  2,  0},
    {12, 0x0fad,  3,  0},
    {12, 0x0fae,  4,  0},
    {12, 0x0faf,  5,  0},
    {12, 0x0fb0,  7,  2},
    {12, 0x0fb1,  8,  2},
    {12, 0x0fb2,  9,  2},
    {12, 0x0fb3, 10,  2},
    {12, 0x0fb4,  7,  3},
    {12, 0x0fb5,  8,  3},
    {12, 0x0fb6,  4,  5},
    {12, 0x0fb7,  3,  7},
    {12, 0x0fb8,  2,  7},
    {12, 0x0fb9,  2,  8},
    {12, 0x0fba,  2,  9},
    {12, 0x0fbb,  2, 10},
    {12, 0x0fbc,  2, 11},
    {12, 0x0fbd,  1, 15},
    {12, 0x0fbe,  1, 16},
    {12, 0x0fbf,  1, 17},
};

// Table index: with w the next 9 bits, rows 0..479 are reached directly by w
// (codes of up to 9 bits that do not start with 1111); from 480 to 507 the
// next 13 bits are read and their low 10 bits (512..1023) are the row.
// w >= 508 is the long code, decoded by formula.  Rows 480..511 and
// 960..1023 (where the long code would fall) stay unused.
struct CodeTable {
    CodeRow row[1024];
};

constexpr void fill_code(CodeTable& t, Zan32u code, Zan32s len, Zan32s step, Zan32s level) {
    if (len <= 9) {
        const Zan32u first = code << (9 - len), count = 1u << (9 - len);
        for (Zan32u i = 0; i < count; ++i) t.row[first + i] = {Zan8u(len), Zan8u(step), Zan16s(level)};
    } else {
        const Zan32u first = (code << (13 - len)) & 1023u, count = 1u << (13 - len);
        for (Zan32u i = 0; i < count; ++i) t.row[first + i] = {Zan8u(len), Zan8u(step), Zan16s(level)};
    }
}

constexpr CodeTable make_code_table() {
    CodeTable t{};
    for (auto& r : t.row) r = {255, 0, 0};
    for (const SourceCode& c : kSourceCodes) {
        if (c.amp == 0) {
            fill_code(t, c.code, c.len, c.run + 1, 0);
        } else {
            fill_code(t, Zan32u(c.code) << 1, c.len + 1, c.run + 1, c.amp * 64);
            fill_code(t, (Zan32u(c.code) << 1) | 1u, c.len + 1, c.run + 1, -c.amp * 64);
        }
    }
    for (Zan32u run = 0; run < 64; ++run) fill_code(t, 0x1F80u | run, 13, Zan32s(run) + 1, 0);
    fill_code(t, 0x6u, 4, 64, 0);  // end of block 0110
    return t;
}

inline constexpr CodeTable kCodeTable = make_code_table();

// Two codes per look-up, indexed by the next 10 bits.  The first code is
// the one at the top when its row is reached by the first step (w below
// 480, so at most 9 bits), else len1 is 0 and the caller decodes that code
// alone.  The second is the code right behind the first when it too lies
// wholly within the 10 bits; otherwise len2 and step2 are 0 and level2
// repeats level1, so that a caller may apply the second code without a
// test (it rewrites the first coefficient).  Among codes of 9 bits or
// fewer only the end-of-block code has step 64, so a step of 64 tells it.
struct PairRow {
    Zan8u len1;
    Zan8u step1;
    Zan8u len2;
    Zan8u step2;
    Zan16s level1;
    Zan16s level2;
};

struct PairTable {
    PairRow row[1024];
};

constexpr PairTable make_pair_table() {
    PairTable t{};
    for (Zan32u w = 0; w < 1024; ++w) {
        PairRow r{0, 0, 0, 0, 0, 0};
        const Zan32u w9 = w >> 1;
        if (w9 < 480) {
            const CodeRow& a = kCodeTable.row[w9];
            r.len1 = a.len;
            r.step1 = a.step;
            r.level1 = a.level;
            const Zan32u rest = 10u - a.len;
            const Zan32u w2 = ((w << a.len) & 1023u) >> 1;
            if (w2 < 480 && kCodeTable.row[w2].len <= rest) {
                r.len2 = kCodeTable.row[w2].len;
                r.step2 = kCodeTable.row[w2].step;
                r.level2 = kCodeTable.row[w2].level;
            } else {
                r.level2 = a.level;  // no second code: storing it again changes nothing
            }
        }
        t.row[w] = r;
    }
    return t;
}

inline constexpr PairTable kPairTable = make_pair_table();

constexpr bool step64_is_end_of_block() {
    for (Zan32u w9 = 0; w9 < 480; ++w9)
        if ((kCodeTable.row[w9].step == 64) != ((w9 >> 5) == 6u)) return false;
    return true;
}
static_assert(step64_is_end_of_block(), "a step of 64 among the short codes marks the end-of-block code");

// Scan of DCT mode 1 (2-4-8): rows 0-3 of the block hold the sum field
// coefficients, rows 4-7 the difference field; the two halves alternate.
inline constexpr Zan8u kScan248[64] = {
    0,  32, 1,  33, 8,  40, 2,  34, 9,  41, 16, 48, 24, 56, 17, 49, 10, 42, 3,  35, 4,  36,
    11, 43, 18, 50, 25, 57, 26, 58, 19, 51, 12, 44, 5,  37, 6,  38, 13, 45, 20, 52, 27, 59,
    28, 60, 21, 53, 14, 46, 7,  39, 15, 47, 22, 54, 29, 61, 30, 62, 23, 55, 31, 63,
};

}  // namespace zan::ZAN_PATH::dv
