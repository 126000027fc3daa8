// Variable-length codes that H.263 and MPEG-4 Part 2 share (MCBPC, CBPY and
// the motion vector difference), as the two example decoders read them.
#pragma once

#include <cstdint>

namespace h263codes {

// A variable-length code: value, code bits, length.
struct VlcCode {
    int value;
    std::uint32_t code;
    int len;
};

// MCBPC of I pictures: value = mbtype * 4 + cbpc (mbtype 3 intra, 4 intra
// with DQUANT); -1 is stuffing.
inline constexpr VlcCode kMcbpcIntra[] = {
    {3 * 4 + 0, 0x1, 1},  {3 * 4 + 1, 0x1, 3},  {3 * 4 + 2, 0x2, 3},  {3 * 4 + 3, 0x3, 3},
    {4 * 4 + 0, 0x1, 4},  {4 * 4 + 1, 0x1, 6},  {4 * 4 + 2, 0x2, 6},  {4 * 4 + 3, 0x3, 6},
    {-1, 0x1, 9},
};

// MCBPC of P pictures: mbtype 0 inter, 1 inter with DQUANT, 2 inter with four
// vectors, 3 intra, 4 intra with DQUANT, 5 four vectors with DQUANT (version
// 2); -1 is stuffing.
inline constexpr VlcCode kMcbpcInter[] = {
    {0 * 4 + 0, 0x1, 1}, {0 * 4 + 1, 0x3, 4},  {0 * 4 + 2, 0x2, 4},  {0 * 4 + 3, 0x5, 6},
    {1 * 4 + 0, 0x3, 3}, {1 * 4 + 1, 0x7, 7},  {1 * 4 + 2, 0x6, 7},  {1 * 4 + 3, 0x5, 9},
    {2 * 4 + 0, 0x2, 3}, {2 * 4 + 1, 0x5, 7},  {2 * 4 + 2, 0x4, 7},  {2 * 4 + 3, 0x5, 8},
    {3 * 4 + 0, 0x3, 5}, {3 * 4 + 1, 0x4, 8},  {3 * 4 + 2, 0x3, 8},  {3 * 4 + 3, 0x3, 7},
    {4 * 4 + 0, 0x4, 6}, {4 * 4 + 1, 0x4, 9},  {4 * 4 + 2, 0x3, 9},  {4 * 4 + 3, 0x2, 9},
    {-1, 0x1, 9},        {5 * 4 + 0, 0x2, 11}, {5 * 4 + 1, 0xc, 13}, {5 * 4 + 2, 0xe, 13},
    {5 * 4 + 3, 0xf, 13},
};

// CBPY as coded for intra macroblocks (inter macroblocks invert it).
inline constexpr VlcCode kCbpy[] = {
    {0, 0x3, 4},  {1, 0x5, 5},  {2, 0x4, 5},  {3, 0x9, 4},  {4, 0x3, 5},  {5, 0x7, 4},
    {6, 0x2, 6},  {7, 0xb, 4},  {8, 0x2, 5},  {9, 0x3, 6},  {10, 0x5, 4}, {11, 0xa, 4},
    {12, 0x4, 4}, {13, 0x8, 4}, {14, 0x6, 4}, {15, 0x3, 2},
};

// MVD magnitude in half samples (0..32); a sign bit follows a nonzero one.
inline constexpr VlcCode kMvd[] = {
    {0, 0x1, 1},   {1, 0x1, 2},   {2, 0x1, 3},   {3, 0x1, 4},   {4, 0x3, 6},   {5, 0x5, 7},
    {6, 0x4, 7},   {7, 0x3, 7},   {8, 0xb, 9},   {9, 0xa, 9},   {10, 0x9, 9},  {11, 0x11, 10},
    {12, 0x10, 10}, {13, 0xf, 10}, {14, 0xe, 10}, {15, 0xd, 10}, {16, 0xc, 10}, {17, 0xb, 10},
    {18, 0xa, 10}, {19, 0x9, 10}, {20, 0x8, 10}, {21, 0x7, 10}, {22, 0x6, 10}, {23, 0x5, 10},
    {24, 0x4, 10}, {25, 0x7, 11}, {26, 0x6, 11}, {27, 0x5, 11}, {28, 0x4, 11}, {29, 0x3, 11},
    {30, 0x2, 11}, {31, 0x3, 12}, {32, 0x2, 12},
};

// MPEG-4 has no macroblock type 5: its P-VOP MCBPC table is the entries of
// kMcbpcInter before those of type 5.
inline constexpr int kMcbpcInterWithoutType5 = 21;

}  // namespace h263codes
