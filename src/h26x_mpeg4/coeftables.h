// Code tables of the H.261, H.263 and MPEG-4 coefficient decoders and
// encoders.
//
// The rows come from the standards: each list below is one table of a
// standard, as (last, run, level, code, length) with the code written
// without its sign bit.  Everything else is derived from these lists at
// compile time:
//
//   * the decoders' peek tables, cut so that one peek of the stream indexes
//     straight into a row (see the layouts at each builder);
//   * the MPEG-4 escape maxima LMAX (largest level by last and run) and RMAX
//     (largest run by last and level, stored plus 1);
//   * the reversible-code index tables for forward and backward reading;
//   * the encoders' row starts by last flag and run.
//
// static_asserts at the end compare every peek table with a direct search of
// its list over every possible peek value.
#pragma once

#include <cstdint>

#include "common/path.h"
#include "zanvc.h"

namespace zan::ZAN_PATH::coef {

struct Code {
    Zan8u last, run, level;
    Zan16u code;  // without the sign bit
    Zan8u len;    // bits of code
};

// ------------------------------------------------------------ source lists

// H.263 Table 16 (TCOEF); the same rows form ISO/IEC 14496-2 Table B-17 (inter)
inline constexpr Code kH263Tcoef[102] = {
    {0,  0,  1, 0x0002,  2}, {0,  0,  2, 0x000F,  4}, {0,  0,  3, 0x0015,  6}, {0,  0,  4, 0x0017,  7},
    {0,  0,  5, 0x001F,  8}, {0,  0,  6, 0x0025,  9}, {0,  0,  7, 0x0024,  9}, {0,  0,  8, 0x0021, 10},
    {0,  0,  9, 0x0020, 10}, {0,  0, 10, 0x0007, 11}, {0,  0, 11, 0x0006, 11}, {0,  0, 12, 0x0020, 11},
    {0,  1,  1, 0x0006,  3}, {0,  1,  2, 0x0014,  6}, {0,  1,  3, 0x001E,  8}, {0,  1,  4, 0x000F, 10},
    {0,  1,  5, 0x0021, 11}, {0,  1,  6, 0x0050, 12}, {0,  2,  1, 0x000E,  4}, {0,  2,  2, 0x001D,  8},
    {0,  2,  3, 0x000E, 10}, {0,  2,  4, 0x0051, 12}, {0,  3,  1, 0x000D,  5}, {0,  3,  2, 0x0023,  9},
    {0,  3,  3, 0x000D, 10}, {0,  4,  1, 0x000C,  5}, {0,  4,  2, 0x0022,  9}, {0,  4,  3, 0x0052, 12},
    {0,  5,  1, 0x000B,  5}, {0,  5,  2, 0x000C, 10}, {0,  5,  3, 0x0053, 12}, {0,  6,  1, 0x0013,  6},
    {0,  6,  2, 0x000B, 10}, {0,  6,  3, 0x0054, 12}, {0,  7,  1, 0x0012,  6}, {0,  7,  2, 0x000A, 10},
    {0,  8,  1, 0x0011,  6}, {0,  8,  2, 0x0009, 10}, {0,  9,  1, 0x0010,  6}, {0,  9,  2, 0x0008, 10},
    {0, 10,  1, 0x0016,  7}, {0, 10,  2, 0x0055, 12}, {0, 11,  1, 0x0015,  7}, {0, 12,  1, 0x0014,  7},
    {0, 13,  1, 0x001C,  8}, {0, 14,  1, 0x001B,  8}, {0, 15,  1, 0x0021,  9}, {0, 16,  1, 0x0020,  9},
    {0, 17,  1, 0x001F,  9}, {0, 18,  1, 0x001E,  9}, {0, 19,  1, 0x001D,  9}, {0, 20,  1, 0x001C,  9},
    {0, 21,  1, 0x001B,  9}, {0, 22,  1, 0x001A,  9}, {0, 23,  1, 0x0022, 11}, {0, 24,  1, 0x0023, 11},
    {0, 25,  1, 0x0056, 12}, {0, 26,  1, 0x0057, 12}, {1,  0,  1, 0x0007,  4}, {1,  0,  2, 0x0019,  9},
    {1,  0,  3, 0x0005, 11}, {1,  1,  1, 0x000F,  6}, {1,  1,  2, 0x0004, 11}, {1,  2,  1, 0x000E,  6},
    {1,  3,  1, 0x000D,  6}, {1,  4,  1, 0x000C,  6}, {1,  5,  1, 0x0013,  7}, {1,  6,  1, 0x0012,  7},
    {1,  7,  1, 0x0011,  7}, {1,  8,  1, 0x0010,  7}, {1,  9,  1, 0x001A,  8}, {1, 10,  1, 0x0019,  8},
    {1, 11,  1, 0x0018,  8}, {1, 12,  1, 0x0017,  8}, {1, 13,  1, 0x0016,  8}, {1, 14,  1, 0x0015,  8},
    {1, 15,  1, 0x0014,  8}, {1, 16,  1, 0x0013,  8}, {1, 17,  1, 0x0018,  9}, {1, 18,  1, 0x0017,  9},
    {1, 19,  1, 0x0016,  9}, {1, 20,  1, 0x0015,  9}, {1, 21,  1, 0x0014,  9}, {1, 22,  1, 0x0013,  9},
    {1, 23,  1, 0x0012,  9}, {1, 24,  1, 0x0011,  9}, {1, 25,  1, 0x0007, 10}, {1, 26,  1, 0x0006, 10},
    {1, 27,  1, 0x0005, 10}, {1, 28,  1, 0x0004, 10}, {1, 29,  1, 0x0024, 11}, {1, 30,  1, 0x0025, 11},
    {1, 31,  1, 0x0026, 11}, {1, 32,  1, 0x0027, 11}, {1, 33,  1, 0x0058, 12}, {1, 34,  1, 0x0059, 12},
    {1, 35,  1, 0x005A, 12}, {1, 36,  1, 0x005B, 12}, {1, 37,  1, 0x005C, 12}, {1, 38,  1, 0x005D, 12},
    {1, 39,  1, 0x005E, 12}, {1, 40,  1, 0x005F, 12},
};

// H.263 Annex I, Table I.2 (intra TCOEF of the advanced intra mode)
inline constexpr Code kH263AdvIntra[102] = {
    {0,  0,  1, 0x0002,  2}, {0,  0,  2, 0x0006,  3}, {0,  0,  3, 0x000E,  4}, {0,  0,  4, 0x000C,  5},
    {0,  0,  5, 0x000D,  5}, {0,  0,  6, 0x0010,  6}, {0,  0,  7, 0x0011,  6}, {0,  0,  8, 0x0012,  6},
    {0,  0,  9, 0x0016,  7}, {0,  0, 10, 0x001B,  8}, {0,  0, 11, 0x0020,  9}, {0,  0, 12, 0x0021,  9},
    {0,  0, 13, 0x001A,  9}, {0,  0, 14, 0x001B,  9}, {0,  0, 15, 0x001C,  9}, {0,  0, 16, 0x001D,  9},
    {0,  0, 17, 0x001E,  9}, {0,  0, 18, 0x001F,  9}, {0,  0, 19, 0x0023, 11}, {0,  0, 20, 0x0022, 11},
    {0,  0, 21, 0x0057, 12}, {0,  0, 22, 0x0056, 12}, {0,  0, 23, 0x0055, 12}, {0,  0, 24, 0x0054, 12},
    {0,  0, 25, 0x0053, 12}, {0,  1,  1, 0x000F,  4}, {0,  1,  2, 0x0014,  6}, {0,  1,  3, 0x0014,  7},
    {0,  1,  4, 0x001E,  8}, {0,  1,  5, 0x000F, 10}, {0,  1,  6, 0x0021, 11}, {0,  1,  7, 0x0050, 12},
    {0,  2,  1, 0x000B,  5}, {0,  2,  2, 0x0015,  7}, {0,  2,  3, 0x000E, 10}, {0,  2,  4, 0x0009, 10},
    {0,  3,  1, 0x0015,  6}, {0,  3,  2, 0x001D,  8}, {0,  3,  3, 0x000D, 10}, {0,  3,  4, 0x0051, 12},
    {0,  4,  1, 0x0013,  6}, {0,  4,  2, 0x0023,  9}, {0,  4,  3, 0x0007, 11}, {0,  5,  1, 0x0017,  7},
    {0,  5,  2, 0x0022,  9}, {0,  5,  3, 0x0052, 12}, {0,  6,  1, 0x001C,  8}, {0,  6,  2, 0x000C, 10},
    {0,  7,  1, 0x001F,  8}, {0,  7,  2, 0x000B, 10}, {0,  8,  1, 0x0025,  9}, {0,  8,  2, 0x000A, 10},
    {0,  9,  1, 0x0024,  9}, {0,  9,  2, 0x0006, 11}, {0, 10,  1, 0x0021, 10}, {0, 11,  1, 0x0020, 10},
    {0, 12,  1, 0x0008, 10}, {0, 13,  1, 0x0020, 11}, {1,  0,  1, 0x0007,  4}, {1,  0,  2, 0x000C,  6},
    {1,  0,  3, 0x0010,  7}, {1,  0,  4, 0x0013,  8}, {1,  0,  5, 0x0011,  9}, {1,  0,  6, 0x0012,  9},
    {1,  0,  7, 0x0004, 10}, {1,  0,  8, 0x0027, 11}, {1,  0,  9, 0x0026, 11}, {1,  0, 10, 0x005F, 12},
    {1,  1,  1, 0x000F,  6}, {1,  1,  2, 0x0013,  9}, {1,  1,  3, 0x0005, 10}, {1,  1,  4, 0x0025, 11},
    {1,  2,  1, 0x000E,  6}, {1,  2,  2, 0x0014,  9}, {1,  2,  3, 0x0024, 11}, {1,  3,  1, 0x000D,  6},
    {1,  3,  2, 0x0006, 10}, {1,  3,  3, 0x005E, 12}, {1,  4,  1, 0x0011,  7}, {1,  4,  2, 0x0007, 10},
    {1,  5,  1, 0x0013,  7}, {1,  5,  2, 0x005D, 12}, {1,  6,  1, 0x0012,  7}, {1,  6,  2, 0x005C, 12},
    {1,  7,  1, 0x0014,  8}, {1,  7,  2, 0x005B, 12}, {1,  8,  1, 0x0015,  8}, {1,  9,  1, 0x001A,  8},
    {1, 10,  1, 0x0019,  8}, {1, 11,  1, 0x0018,  8}, {1, 12,  1, 0x0017,  8}, {1, 13,  1, 0x0016,  8},
    {1, 14,  1, 0x0019,  9}, {1, 15,  1, 0x0015,  9}, {1, 16,  1, 0x0016,  9}, {1, 17,  1, 0x0018,  9},
    {1, 18,  1, 0x0017,  9}, {1, 19,  1, 0x0004, 11}, {1, 20,  1, 0x0005, 11}, {1, 21,  1, 0x0058, 12},
    {1, 22,  1, 0x0059, 12}, {1, 23,  1, 0x005A, 12},
};

// ISO/IEC 14496-2 Table B-16 (intra TCOEF)
inline constexpr Code kMpeg4Intra[102] = {
    {0,  0,  1, 0x0002,  2}, {0,  0,  2, 0x0006,  3}, {0,  0,  3, 0x000F,  4}, {0,  0,  4, 0x000D,  5},
    {0,  0,  5, 0x000C,  5}, {0,  0,  6, 0x0015,  6}, {0,  0,  7, 0x0013,  6}, {0,  0,  8, 0x0012,  6},
    {0,  0,  9, 0x0017,  7}, {0,  0, 10, 0x001F,  8}, {0,  0, 11, 0x001E,  8}, {0,  0, 12, 0x001D,  8},
    {0,  0, 13, 0x0025,  9}, {0,  0, 14, 0x0024,  9}, {0,  0, 15, 0x0023,  9}, {0,  0, 16, 0x0021,  9},
    {0,  0, 17, 0x0021, 10}, {0,  0, 18, 0x0020, 10}, {0,  0, 19, 0x000F, 10}, {0,  0, 20, 0x000E, 10},
    {0,  0, 21, 0x0007, 11}, {0,  0, 22, 0x0006, 11}, {0,  0, 23, 0x0020, 11}, {0,  0, 24, 0x0021, 11},
    {0,  0, 25, 0x0050, 12}, {0,  0, 26, 0x0051, 12}, {0,  0, 27, 0x0052, 12}, {0,  1,  1, 0x000E,  4},
    {0,  1,  2, 0x0014,  6}, {0,  1,  3, 0x0016,  7}, {0,  1,  4, 0x001C,  8}, {0,  1,  5, 0x0020,  9},
    {0,  1,  6, 0x001F,  9}, {0,  1,  7, 0x000D, 10}, {0,  1,  8, 0x0022, 11}, {0,  1,  9, 0x0053, 12},
    {0,  1, 10, 0x0055, 12}, {0,  2,  1, 0x000B,  5}, {0,  2,  2, 0x0015,  7}, {0,  2,  3, 0x001E,  9},
    {0,  2,  4, 0x000C, 10}, {0,  2,  5, 0x0056, 12}, {0,  3,  1, 0x0011,  6}, {0,  3,  2, 0x001B,  8},
    {0,  3,  3, 0x001D,  9}, {0,  3,  4, 0x000B, 10}, {0,  4,  1, 0x0010,  6}, {0,  4,  2, 0x0022,  9},
    {0,  4,  3, 0x000A, 10}, {0,  5,  1, 0x000D,  6}, {0,  5,  2, 0x001C,  9}, {0,  5,  3, 0x0008, 10},
    {0,  6,  1, 0x0012,  7}, {0,  6,  2, 0x001B,  9}, {0,  6,  3, 0x0054, 12}, {0,  7,  1, 0x0014,  7},
    {0,  7,  2, 0x001A,  9}, {0,  7,  3, 0x0057, 12}, {0,  8,  1, 0x0019,  8}, {0,  8,  2, 0x0009, 10},
    {0,  9,  1, 0x0018,  8}, {0,  9,  2, 0x0023, 11}, {0, 10,  1, 0x0017,  8}, {0, 11,  1, 0x0019,  9},
    {0, 12,  1, 0x0018,  9}, {0, 13,  1, 0x0007, 10}, {0, 14,  1, 0x0058, 12}, {1,  0,  1, 0x0007,  4},
    {1,  0,  2, 0x000C,  6}, {1,  0,  3, 0x0016,  8}, {1,  0,  4, 0x0017,  9}, {1,  0,  5, 0x0006, 10},
    {1,  0,  6, 0x0005, 11}, {1,  0,  7, 0x0004, 11}, {1,  0,  8, 0x0059, 12}, {1,  1,  1, 0x000F,  6},
    {1,  1,  2, 0x0016,  9}, {1,  1,  3, 0x0005, 10}, {1,  2,  1, 0x000E,  6}, {1,  2,  2, 0x0004, 10},
    {1,  3,  1, 0x0011,  7}, {1,  3,  2, 0x0024, 11}, {1,  4,  1, 0x0010,  7}, {1,  4,  2, 0x0025, 11},
    {1,  5,  1, 0x0013,  7}, {1,  5,  2, 0x005A, 12}, {1,  6,  1, 0x0015,  8}, {1,  6,  2, 0x005B, 12},
    {1,  7,  1, 0x0014,  8}, {1,  8,  1, 0x0013,  8}, {1,  9,  1, 0x001A,  8}, {1, 10,  1, 0x0015,  9},
    {1, 11,  1, 0x0014,  9}, {1, 12,  1, 0x0013,  9}, {1, 13,  1, 0x0012,  9}, {1, 14,  1, 0x0011,  9},
    {1, 15,  1, 0x0026, 11}, {1, 16,  1, 0x0027, 11}, {1, 17,  1, 0x005C, 12}, {1, 18,  1, 0x005D, 12},
    {1, 19,  1, 0x005E, 12}, {1, 20,  1, 0x005F, 12},
};

// ISO/IEC 14496-2 Table B-23 (RVLC), intra columns
inline constexpr Code kRvlcIntra[169] = {
    {0,  0,  1, 0x0006,  3}, {0,  0,  2, 0x0007,  3}, {0,  0,  3, 0x000A,  4}, {0,  0,  4, 0x0009,  5},
    {0,  0,  5, 0x0014,  6}, {0,  0,  6, 0x0015,  6}, {0,  0,  7, 0x0034,  7}, {0,  0,  8, 0x0074,  8},
    {0,  0,  9, 0x0075,  8}, {0,  0, 10, 0x00DD,  9}, {0,  0, 11, 0x00EC,  9}, {0,  0, 12, 0x01EC, 10},
    {0,  0, 13, 0x01ED, 10}, {0,  0, 14, 0x01F4, 10}, {0,  0, 15, 0x03EC, 11}, {0,  0, 16, 0x03ED, 11},
    {0,  0, 17, 0x03F4, 11}, {0,  0, 18, 0x077D, 12}, {0,  0, 19, 0x07BC, 12}, {0,  0, 20, 0x0FBD, 13},
    {0,  0, 21, 0x0FDC, 13}, {0,  0, 22, 0x07BD, 12}, {0,  0, 23, 0x0FDD, 13}, {0,  0, 24, 0x1FBD, 14},
    {0,  0, 25, 0x1FDC, 14}, {0,  0, 26, 0x1FDD, 14}, {0,  0, 27, 0x1FFC, 15}, {0,  1,  1, 0x0001,  4},
    {0,  1,  2, 0x0008,  5}, {0,  1,  3, 0x002D,  7}, {0,  1,  4, 0x006C,  8}, {0,  1,  5, 0x006D,  8},
    {0,  1,  6, 0x00DC,  9}, {0,  1,  7, 0x01DD, 10}, {0,  1,  8, 0x03DC, 11}, {0,  1,  9, 0x03DD, 11},
    {0,  1, 10, 0x077C, 12}, {0,  1, 11, 0x0FBC, 13}, {0,  1, 12, 0x1F7D, 14}, {0,  1, 13, 0x1FBC, 14},
    {0,  2,  1, 0x0004,  5}, {0,  2,  2, 0x002C,  7}, {0,  2,  3, 0x00BC,  9}, {0,  2,  4, 0x01DC, 10},
    {0,  2,  5, 0x03BC, 11}, {0,  2,  6, 0x03BD, 11}, {0,  2,  7, 0x0EFD, 13}, {0,  2,  8, 0x0F7C, 13},
    {0,  2,  9, 0x0F7D, 13}, {0,  2, 10, 0x1EFD, 14}, {0,  2, 11, 0x1F7C, 14}, {0,  3,  1, 0x0005,  5},
    {0,  3,  2, 0x005C,  8}, {0,  3,  3, 0x00BD,  9}, {0,  3,  4, 0x037D, 11}, {0,  3,  5, 0x06FC, 12},
    {0,  3,  6, 0x0EFC, 13}, {0,  3,  7, 0x1DFD, 14}, {0,  3,  8, 0x1EFC, 14}, {0,  3,  9, 0x1FFD, 15},
    {0,  4,  1, 0x000C,  6}, {0,  4,  2, 0x005D,  8}, {0,  4,  3, 0x01BD, 10}, {0,  4,  4, 0x03FD, 12},
    {0,  4,  5, 0x06FD, 12}, {0,  4,  6, 0x1BFD, 14}, {0,  5,  1, 0x000D,  6}, {0,  5,  2, 0x007D,  9},
    {0,  5,  3, 0x02FC, 11}, {0,  5,  4, 0x05FC, 12}, {0,  5,  5, 0x1BFC, 14}, {0,  5,  6, 0x1DFC, 14},
    {0,  6,  1, 0x001C,  7}, {0,  6,  2, 0x017C, 10}, {0,  6,  3, 0x02FD, 11}, {0,  6,  4, 0x05FD, 12},
    {0,  6,  5, 0x2FFC, 15}, {0,  7,  1, 0x001D,  7}, {0,  7,  2, 0x017D, 10}, {0,  7,  3, 0x037C, 11},
    {0,  7,  4, 0x0DFD, 13}, {0,  7,  5, 0x2FFD, 15}, {0,  8,  1, 0x003C,  8}, {0,  8,  2, 0x01BC, 10},
    {0,  8,  3, 0x0BFD, 13}, {0,  8,  4, 0x17FD, 14}, {0,  9,  1, 0x003D,  8}, {0,  9,  2, 0x01FD, 11},
    {0,  9,  3, 0x0DFC, 13}, {0,  9,  4, 0x37FC, 15}, {0, 10,  1, 0x007C,  9}, {0, 10,  2, 0x03FC, 12},
    {0, 11,  1, 0x00FC, 10}, {0, 11,  2, 0x0BFC, 13}, {0, 12,  1, 0x00FD, 10}, {0, 12,  2, 0x37FD, 15},
    {0, 13,  1, 0x01FC, 11}, {0, 14,  1, 0x07FC, 13}, {0, 15,  1, 0x07FD, 13}, {0, 16,  1, 0x0FFC, 14},
    {0, 17,  1, 0x0FFD, 14}, {0, 18,  1, 0x17FC, 14}, {0, 19,  1, 0x3BFC, 15}, {1,  0,  1, 0x000B,  4},
    {1,  0,  2, 0x0078,  8}, {1,  0,  3, 0x03F5, 11}, {1,  0,  4, 0x0FEC, 13}, {1,  0,  5, 0x1FEC, 14},
    {1,  1,  1, 0x0012,  5}, {1,  1,  2, 0x00ED,  9}, {1,  1,  3, 0x07DC, 12}, {1,  1,  4, 0x1FED, 14},
    {1,  1,  5, 0x3BFD, 15}, {1,  2,  1, 0x0013,  5}, {1,  2,  2, 0x03F8, 11}, {1,  2,  3, 0x3DFC, 15},
    {1,  3,  1, 0x0018,  6}, {1,  3,  2, 0x07DD, 12}, {1,  4,  1, 0x0019,  6}, {1,  4,  2, 0x07EC, 12},
    {1,  5,  1, 0x0022,  6}, {1,  5,  2, 0x0FED, 13}, {1,  6,  1, 0x0023,  6}, {1,  6,  2, 0x0FF4, 13},
    {1,  7,  1, 0x0035,  7}, {1,  7,  2, 0x0FF5, 13}, {1,  8,  1, 0x0038,  7}, {1,  8,  2, 0x0FF8, 13},
    {1,  9,  1, 0x0039,  7}, {1,  9,  2, 0x0FF9, 13}, {1, 10,  1, 0x0042,  7}, {1, 10,  2, 0x1FF4, 14},
    {1, 11,  1, 0x0043,  7}, {1, 11,  2, 0x1FF5, 14}, {1, 12,  1, 0x0079,  8}, {1, 12,  2, 0x1FF8, 14},
    {1, 13,  1, 0x0082,  8}, {1, 13,  2, 0x3DFD, 15}, {1, 14,  1, 0x0083,  8}, {1, 15,  1, 0x00F4,  9},
    {1, 16,  1, 0x00F5,  9}, {1, 17,  1, 0x00F8,  9}, {1, 18,  1, 0x00F9,  9}, {1, 19,  1, 0x0102,  9},
    {1, 20,  1, 0x0103,  9}, {1, 21,  1, 0x01F5, 10}, {1, 22,  1, 0x01F8, 10}, {1, 23,  1, 0x01F9, 10},
    {1, 24,  1, 0x0202, 10}, {1, 25,  1, 0x0203, 10}, {1, 26,  1, 0x03F9, 11}, {1, 27,  1, 0x0402, 11},
    {1, 28,  1, 0x0403, 11}, {1, 29,  1, 0x07ED, 12}, {1, 30,  1, 0x07F4, 12}, {1, 31,  1, 0x07F5, 12},
    {1, 32,  1, 0x07F8, 12}, {1, 33,  1, 0x07F9, 12}, {1, 34,  1, 0x0802, 12}, {1, 35,  1, 0x0803, 12},
    {1, 36,  1, 0x1002, 13}, {1, 37,  1, 0x1003, 13}, {1, 38,  1, 0x1FF9, 14}, {1, 39,  1, 0x2002, 14},
    {1, 40,  1, 0x2003, 14}, {1, 41,  1, 0x3EFC, 15}, {1, 42,  1, 0x3EFD, 15}, {1, 43,  1, 0x3F7C, 15},
    {1, 44,  1, 0x3F7D, 15},
};

// ISO/IEC 14496-2 Table B-23 (RVLC), inter columns
inline constexpr Code kRvlcInter[169] = {
    {0,  0,  1, 0x0006,  3}, {0,  0,  2, 0x0001,  4}, {0,  0,  3, 0x0004,  5}, {0,  0,  4, 0x001C,  7},
    {0,  0,  5, 0x003C,  8}, {0,  0,  6, 0x003D,  8}, {0,  0,  7, 0x007C,  9}, {0,  0,  8, 0x00FC, 10},
    {0,  0,  9, 0x00FD, 10}, {0,  0, 10, 0x01FC, 11}, {0,  0, 11, 0x01FD, 11}, {0,  0, 12, 0x03FC, 12},
    {0,  0, 13, 0x07FC, 13}, {0,  0, 14, 0x07FD, 13}, {0,  0, 15, 0x0BFC, 13}, {0,  0, 16, 0x0BFD, 13},
    {0,  0, 17, 0x0FFC, 14}, {0,  0, 18, 0x0FFD, 14}, {0,  0, 19, 0x1FFC, 15}, {0,  1,  1, 0x0007,  3},
    {0,  1,  2, 0x000C,  6}, {0,  1,  3, 0x005C,  8}, {0,  1,  4, 0x007D,  9}, {0,  1,  5, 0x017C, 10},
    {0,  1,  6, 0x02FC, 11}, {0,  1,  7, 0x03FD, 12}, {0,  1,  8, 0x0DFC, 13}, {0,  1,  9, 0x17FC, 14},
    {0,  1, 10, 0x17FD, 14}, {0,  2,  1, 0x000A,  4}, {0,  2,  2, 0x001D,  7}, {0,  2,  3, 0x00BC,  9},
    {0,  2,  4, 0x02FD, 11}, {0,  2,  5, 0x05FC, 12}, {0,  2,  6, 0x1BFC, 14}, {0,  2,  7, 0x1BFD, 14},
    {0,  3,  1, 0x0005,  5}, {0,  3,  2, 0x005D,  8}, {0,  3,  3, 0x017D, 10}, {0,  3,  4, 0x05FD, 12},
    {0,  3,  5, 0x0DFD, 13}, {0,  3,  6, 0x1DFC, 14}, {0,  3,  7, 0x1FFD, 15}, {0,  4,  1, 0x0008,  5},
    {0,  4,  2, 0x006C,  8}, {0,  4,  3, 0x037C, 11}, {0,  4,  4, 0x0EFC, 13}, {0,  4,  5, 0x2FFC, 15},
    {0,  5,  1, 0x0009,  5}, {0,  5,  2, 0x00BD,  9}, {0,  5,  3, 0x037D, 11}, {0,  5,  4, 0x0EFD, 13},
    {0,  6,  1, 0x000D,  6}, {0,  6,  2, 0x01BC, 10}, {0,  6,  3, 0x06FC, 12}, {0,  6,  4, 0x1DFD, 14},
    {0,  7,  1, 0x0014,  6}, {0,  7,  2, 0x01BD, 10}, {0,  7,  3, 0x06FD, 12}, {0,  7,  4, 0x2FFD, 15},
    {0,  8,  1, 0x0015,  6}, {0,  8,  2, 0x01DC, 10}, {0,  8,  3, 0x0F7C, 13}, {0,  9,  1, 0x002C,  7},
    {0,  9,  2, 0x01DD, 10}, {0,  9,  3, 0x1EFC, 14}, {0, 10,  1, 0x002D,  7}, {0, 10,  2, 0x03BC, 11},
    {0, 11,  1, 0x0034,  7}, {0, 11,  2, 0x077C, 12}, {0, 12,  1, 0x006D,  8}, {0, 12,  2, 0x0F7D, 13},
    {0, 13,  1, 0x0074,  8}, {0, 13,  2, 0x1EFD, 14}, {0, 14,  1, 0x0075,  8}, {0, 14,  2, 0x1F7C, 14},
    {0, 15,  1, 0x00DC,  9}, {0, 15,  2, 0x1F7D, 14}, {0, 16,  1, 0x00DD,  9}, {0, 16,  2, 0x1FBC, 14},
    {0, 17,  1, 0x00EC,  9}, {0, 17,  2, 0x37FC, 15}, {0, 18,  1, 0x01EC, 10}, {0, 19,  1, 0x01ED, 10},
    {0, 20,  1, 0x01F4, 10}, {0, 21,  1, 0x03BD, 11}, {0, 22,  1, 0x03DC, 11}, {0, 23,  1, 0x03DD, 11},
    {0, 24,  1, 0x03EC, 11}, {0, 25,  1, 0x03ED, 11}, {0, 26,  1, 0x03F4, 11}, {0, 27,  1, 0x077D, 12},
    {0, 28,  1, 0x07BC, 12}, {0, 29,  1, 0x07BD, 12}, {0, 30,  1, 0x0FBC, 13}, {0, 31,  1, 0x0FBD, 13},
    {0, 32,  1, 0x0FDC, 13}, {0, 33,  1, 0x0FDD, 13}, {0, 34,  1, 0x1FBD, 14}, {0, 35,  1, 0x1FDC, 14},
    {0, 36,  1, 0x1FDD, 14}, {0, 37,  1, 0x37FD, 15}, {0, 38,  1, 0x3BFC, 15}, {1,  0,  1, 0x000B,  4},
    {1,  0,  2, 0x0078,  8}, {1,  0,  3, 0x03F5, 11}, {1,  0,  4, 0x0FEC, 13}, {1,  0,  5, 0x1FEC, 14},
    {1,  1,  1, 0x0012,  5}, {1,  1,  2, 0x00ED,  9}, {1,  1,  3, 0x07DC, 12}, {1,  1,  4, 0x1FED, 14},
    {1,  1,  5, 0x3BFD, 15}, {1,  2,  1, 0x0013,  5}, {1,  2,  2, 0x03F8, 11}, {1,  2,  3, 0x3DFC, 15},
    {1,  3,  1, 0x0018,  6}, {1,  3,  2, 0x07DD, 12}, {1,  4,  1, 0x0019,  6}, {1,  4,  2, 0x07EC, 12},
    {1,  5,  1, 0x0022,  6}, {1,  5,  2, 0x0FED, 13}, {1,  6,  1, 0x0023,  6}, {1,  6,  2, 0x0FF4, 13},
    {1,  7,  1, 0x0035,  7}, {1,  7,  2, 0x0FF5, 13}, {1,  8,  1, 0x0038,  7}, {1,  8,  2, 0x0FF8, 13},
    {1,  9,  1, 0x0039,  7}, {1,  9,  2, 0x0FF9, 13}, {1, 10,  1, 0x0042,  7}, {1, 10,  2, 0x1FF4, 14},
    {1, 11,  1, 0x0043,  7}, {1, 11,  2, 0x1FF5, 14}, {1, 12,  1, 0x0079,  8}, {1, 12,  2, 0x1FF8, 14},
    {1, 13,  1, 0x0082,  8}, {1, 13,  2, 0x3DFD, 15}, {1, 14,  1, 0x0083,  8}, {1, 15,  1, 0x00F4,  9},
    {1, 16,  1, 0x00F5,  9}, {1, 17,  1, 0x00F8,  9}, {1, 18,  1, 0x00F9,  9}, {1, 19,  1, 0x0102,  9},
    {1, 20,  1, 0x0103,  9}, {1, 21,  1, 0x01F5, 10}, {1, 22,  1, 0x01F8, 10}, {1, 23,  1, 0x01F9, 10},
    {1, 24,  1, 0x0202, 10}, {1, 25,  1, 0x0203, 10}, {1, 26,  1, 0x03F9, 11}, {1, 27,  1, 0x0402, 11},
    {1, 28,  1, 0x0403, 11}, {1, 29,  1, 0x07ED, 12}, {1, 30,  1, 0x07F4, 12}, {1, 31,  1, 0x07F5, 12},
    {1, 32,  1, 0x07F8, 12}, {1, 33,  1, 0x07F9, 12}, {1, 34,  1, 0x0802, 12}, {1, 35,  1, 0x0803, 12},
    {1, 36,  1, 0x1002, 13}, {1, 37,  1, 0x1003, 13}, {1, 38,  1, 0x1FF9, 14}, {1, 39,  1, 0x2002, 14},
    {1, 40,  1, 0x2003, 14}, {1, 41,  1, 0x3EFC, 15}, {1, 42,  1, 0x3EFD, 15}, {1, 43,  1, 0x3F7C, 15},
    {1, 44,  1, 0x3F7D, 15},
};

// H.261 Table 5 (TCOEF), without end of block and escape
inline constexpr Code kH261Tcoef[63] = {
    {0,  0,  1, 0x0003,  2}, {0,  0,  2, 0x0004,  4}, {0,  0,  3, 0x0005,  5}, {0,  0,  4, 0x0006,  7},
    {0,  0,  5, 0x0026,  8}, {0,  0,  6, 0x0021,  8}, {0,  0,  7, 0x000A, 10}, {0,  0,  8, 0x001D, 12},
    {0,  0,  9, 0x0018, 12}, {0,  0, 10, 0x0013, 12}, {0,  0, 11, 0x0010, 12}, {0,  0, 12, 0x001A, 13},
    {0,  0, 13, 0x0019, 13}, {0,  0, 14, 0x0018, 13}, {0,  0, 15, 0x0017, 13}, {0,  1,  1, 0x0003,  3},
    {0,  1,  2, 0x0006,  6}, {0,  1,  3, 0x0025,  8}, {0,  1,  4, 0x000C, 10}, {0,  1,  5, 0x001B, 12},
    {0,  1,  6, 0x0016, 13}, {0,  1,  7, 0x0015, 13}, {0,  2,  1, 0x0005,  4}, {0,  2,  2, 0x0004,  7},
    {0,  2,  3, 0x000B, 10}, {0,  2,  4, 0x0014, 12}, {0,  2,  5, 0x0014, 13}, {0,  3,  1, 0x0007,  5},
    {0,  3,  2, 0x0024,  8}, {0,  3,  3, 0x001C, 12}, {0,  3,  4, 0x0013, 13}, {0,  4,  1, 0x0006,  5},
    {0,  4,  2, 0x000F, 10}, {0,  4,  3, 0x0012, 12}, {0,  5,  1, 0x0007,  6}, {0,  5,  2, 0x0009, 10},
    {0,  5,  3, 0x0012, 13}, {0,  6,  1, 0x0005,  6}, {0,  6,  2, 0x001E, 12}, {0,  7,  1, 0x0004,  6},
    {0,  7,  2, 0x0015, 12}, {0,  8,  1, 0x0007,  7}, {0,  8,  2, 0x0011, 12}, {0,  9,  1, 0x0005,  7},
    {0,  9,  2, 0x0011, 13}, {0, 10,  1, 0x0027,  8}, {0, 10,  2, 0x0010, 13}, {0, 11,  1, 0x0023,  8},
    {0, 12,  1, 0x0022,  8}, {0, 13,  1, 0x0020,  8}, {0, 14,  1, 0x000E, 10}, {0, 15,  1, 0x000D, 10},
    {0, 16,  1, 0x0008, 10}, {0, 17,  1, 0x001F, 12}, {0, 18,  1, 0x001A, 12}, {0, 19,  1, 0x0019, 12},
    {0, 20,  1, 0x0017, 12}, {0, 21,  1, 0x0016, 12}, {0, 22,  1, 0x001F, 13}, {0, 23,  1, 0x001E, 13},
    {0, 24,  1, 0x001D, 13}, {0, 25,  1, 0x001C, 13}, {0, 26,  1, 0x001B, 13},
};

// dct_dc_size codes of ISO/IEC 14496-2, by size 0..12, as (code, length):
// Table B-13 (luminance) and Table B-14 (chrominance).
struct DcCode {
    Zan8u code, len;
};
inline constexpr DcCode kDcSizeLuma[13] = {{3, 3}, {3, 2}, {2, 2}, {2, 3}, {1, 3},  {1, 4},  {1, 5},
                                           {1, 6}, {1, 7}, {1, 8}, {1, 9}, {1, 10}, {1, 11}};
inline constexpr DcCode kDcSizeChroma[13] = {{3, 2}, {2, 2}, {1, 2}, {1, 3},  {1, 4},  {1, 5}, {1, 6},
                                             {1, 7}, {1, 8}, {1, 9}, {1, 10}, {1, 11}, {1, 12}};

template <int N>
constexpr int size_of(const Code (&)[N]) {
    return N;
}

// The row of a list whose code is a prefix of the `bits`-bit value w, or -1.
template <int N>
constexpr int find_code(const Code (&list)[N], Zan32u w, int bits) {
    for (int k = 0; k < N; ++k) {
        const int n = list[k].len;
        if (n <= bits && (w >> (bits - n)) == list[k].code) return k;
    }
    return -1;
}

// -------------------------------------------------- H.263 peek tables
//
// 13-bit peek w:
//   w >= 1024        tab0 row (w >> 6) - 16, 112 rows
//   256 <= w < 1024  tab1 row (w >> 3) - 32,  96 rows
//   192 <= w < 256   the escape prefix 0000011
//   16 <= w < 192    tab2 row (w >> 1) - 8,   88 rows
//   w < 16           no code
// A row: last flag, run + 1, level magnitude, length including the sign bit
// (0: no code).  The sign is bit (13 - length) of the peek.
struct Row263 {
    Zan8u last, runp1, level, len;
};
struct Tables263 {
    Row263 tab0[112], tab1[96], tab2[88];
};

template <int N>
constexpr Row263 row263(const Code (&list)[N], Zan32u w, int known) {
    const int k = find_code(list, w, 13);
    if (k < 0 || list[k].len > known) return {0, 0, 0, 0};
    return {list[k].last, static_cast<Zan8u>(list[k].run + 1), list[k].level, static_cast<Zan8u>(list[k].len + 1)};
}

template <int N>
constexpr Tables263 make263(const Code (&list)[N]) {
    Tables263 t{};
    for (int r = 0; r < 112; ++r) t.tab0[r] = row263(list, static_cast<Zan32u>((r + 16) << 6), 7);
    for (int r = 0; r < 96; ++r) t.tab1[r] = row263(list, static_cast<Zan32u>((r + 32) << 3), 10);
    for (int r = 0; r < 88; ++r) t.tab2[r] = row263(list, static_cast<Zan32u>((r + 8) << 1), 12);
    return t;
}

inline constexpr Tables263 h263_coefTab = make263(kH263Tcoef);
inline constexpr Tables263 h263_advCoefTab = make263(kH263AdvIntra);

// The row of a 13-bit peek that is neither the escape nor below 16.
inline const Row263& lookup263(const Tables263& t, Zan32u w) {
    if (w >= 1024) return t.tab0[(w >> 6) - 16];
    if (w >= 256) return t.tab1[(w >> 3) - 32];
    return t.tab2[(w >> 1) - 8];
}

// -------------------------------------------------- H.261 peek tables
//
// 14-bit peek w:
//   w >= 2560         tab0 row (w >> 9) - 5,  27 rows
//   512 <= w < 2560   tab1 row (w >> 6) - 8,  32 rows
//   256 <= w < 512    the escape prefix 000001
//   32 <= w < 256     tab2 row (w >> 1) - 16, 112 rows
//   w < 32            no code
// A row: run + 1 (127 for end of block), level magnitude, length including
// the sign bit (end of block: 2, no sign; 0: no code).  The sign is bit
// (14 - length) of the peek.
struct Row261 {
    Zan8u runp1, level, len;
};
struct Tables261 {
    Row261 tab0[27], tab1[32], tab2[112];
};
inline constexpr Zan8u kEob261 = 127;

constexpr Row261 row261(Zan32u w, int known) {
    if ((w >> 12) == 2) return {kEob261, 0, 2};  // end of block: 10
    const int k = find_code(kH261Tcoef, w, 14);
    if (k < 0 || kH261Tcoef[k].len > known) return {0, 0, 0};
    return {static_cast<Zan8u>(kH261Tcoef[k].run + 1), kH261Tcoef[k].level, static_cast<Zan8u>(kH261Tcoef[k].len + 1)};
}

constexpr Tables261 make261() {
    Tables261 t{};
    for (int r = 0; r < 27; ++r) t.tab0[r] = row261(static_cast<Zan32u>((r + 5) << 9), 5);
    for (int r = 0; r < 32; ++r) t.tab1[r] = row261(static_cast<Zan32u>((r + 8) << 6), 8);
    for (int r = 0; r < 112; ++r) t.tab2[r] = row261(static_cast<Zan32u>((r + 16) << 1), 13);
    return t;
}
inline constexpr Tables261 h261_coefTab = make261();

inline const Row261& lookup261(Zan32u w) {
    if (w >= 2560) return h261_coefTab.tab0[(w >> 9) - 5];
    if (w >= 512) return h261_coefTab.tab1[(w >> 6) - 8];
    return h261_coefTab.tab2[(w >> 1) - 16];
}

// -------------------------------------------------- MPEG-4 peek tables
//
// 12-bit peek w:
//   w >= 512         t512 row (w - 512) >> 5, 112 rows
//   128 <= w < 512   t128 row (w - 128) >> 2,  96 rows
//   8 <= w < 128     t8 row w - 8,            120 rows
//   w < 8            no code
// A row: last flag, run, level magnitude (255: the escape code 0000011, with
// last 0 and run 0), length without the sign bit (0: no code).  The sign is
// the bit after the code.
struct RowMp4 {
    Zan8u last, run, level, len;
};
struct TablesMp4 {
    RowMp4 t512[112], t128[96], t8[120];
};
inline constexpr Zan8u kEscapeLevel = 255;

template <int N>
constexpr RowMp4 rowMp4(const Code (&list)[N], Zan32u w, int known) {
    if ((w >> 5) == 3) return {0, 0, kEscapeLevel, 7};
    const int k = find_code(list, w, 12);
    if (k < 0 || list[k].len > known) return {0, 0, 0, 0};
    return {list[k].last, list[k].run, list[k].level, list[k].len};
}

template <int N>
constexpr TablesMp4 makeMp4(const Code (&list)[N]) {
    TablesMp4 t{};
    for (int r = 0; r < 112; ++r) t.t512[r] = rowMp4(list, static_cast<Zan32u>(512 + (r << 5)), 7);
    for (int r = 0; r < 96; ++r) t.t128[r] = rowMp4(list, static_cast<Zan32u>(128 + (r << 2)), 10);
    for (int r = 0; r < 120; ++r) t.t8[r] = rowMp4(list, static_cast<Zan32u>(8 + r), 12);
    return t;
}
inline constexpr TablesMp4 tableB16 = makeMp4(kMpeg4Intra);
inline constexpr TablesMp4 tableB17 = makeMp4(kH263Tcoef);

inline const RowMp4& lookupMp4(const TablesMp4& t, Zan32u w) {
    if (w >= 512) return t.t512[(w - 512) >> 5];
    if (w >= 128) return t.t128[(w - 128) >> 2];
    return t.t8[w - 8];
}

// -------------------------------------------------- escape maxima
//
// lmax[last][run]: the largest level of the run in the list (0 beyond it);
// rmax[last][level]: the largest run of the level, plus 1 (entry 0 is 0;
// 0 beyond the largest level).
struct Maxima {
    Zan8u lmax[2][64];
    Zan8u rmax[2][64];
    Zan8u maxRun[2];    // largest run by last flag
    Zan8u maxLevel[2];  // largest level by last flag
};
template <int N>
constexpr Maxima make_maxima(const Code (&list)[N]) {
    Maxima m{};
    for (const Code& c : list) {
        if (c.level > m.lmax[c.last][c.run]) m.lmax[c.last][c.run] = c.level;
        if (c.run + 1 > m.rmax[c.last][c.level]) m.rmax[c.last][c.level] = static_cast<Zan8u>(c.run + 1);
        if (c.run > m.maxRun[c.last]) m.maxRun[c.last] = c.run;
        if (c.level > m.maxLevel[c.last]) m.maxLevel[c.last] = c.level;
    }
    return m;
}
inline constexpr Maxima kMaxIntra = make_maxima(kMpeg4Intra);
inline constexpr Maxima kMaxInter = make_maxima(kH263Tcoef);

// -------------------------------------------------- reversible codes
//
// The intra and inter columns of the reversible table hold the same 169
// codes in different orders.  The index tables map a 15-bit peek (forward:
// the next 15 bits; backward: the 15 bits before the sign, in reverse order,
// nearest bit first) to the number of the code in the intra list, 255 for
// no code.  The row tables give, by that number, each class's row.
struct RowRvlc {
    Zan8u last, run, level, len;  // len: bits of the code without the sign
};
struct RvlcIndex {
    Zan8u fwd[32768];
    Zan8u bwd[32768];
};
constexpr Zan32u reverse_bits(Zan32u v, int n) {
    Zan32u r = 0;
    for (int k = 0; k < n; ++k) r |= ((v >> k) & 1u) << (n - 1 - k);
    return r;
}
constexpr RvlcIndex make_rvlc_index() {
    RvlcIndex t{};
    for (int i = 0; i < 32768; ++i) t.fwd[i] = t.bwd[i] = 255;
    for (int k = 0; k < size_of(kRvlcIntra); ++k) {
        const int n = kRvlcIntra[k].len;
        const Zan32u f = kRvlcIntra[k].code, b = reverse_bits(f, n);
        for (Zan32u j = 0; j < (1u << (15 - n)); ++j) {
            t.fwd[(f << (15 - n)) | j] = static_cast<Zan8u>(k);
            t.bwd[(b << (15 - n)) | j] = static_cast<Zan8u>(k);
        }
    }
    return t;
}
inline constexpr RvlcIndex kRvlcIndex = make_rvlc_index();

template <int N>
constexpr const Code& same_code(const Code (&list)[N], const Code& c) {
    int k = 0;
    while (k < N - 1 && !(list[k].code == c.code && list[k].len == c.len)) ++k;
    return list[k];
}
struct RvlcRows {
    RowRvlc row[169];
};
template <int N>
constexpr RvlcRows make_rvlc_rows(const Code (&list)[N]) {
    RvlcRows t{};
    for (int k = 0; k < size_of(kRvlcIntra); ++k) {
        const Code& c = same_code(list, kRvlcIntra[k]);
        t.row[k] = {c.last, c.run, c.level, c.len};
    }
    return t;
}
inline constexpr RvlcRows tableB23_Intra = make_rvlc_rows(kRvlcIntra);
inline constexpr RvlcRows tableB23_Inter = make_rvlc_rows(kRvlcInter);

// -------------------------------------------------- encoder row starts
//
// For a list sorted by (last, run, level) with the levels of each run
// contiguous from 1: start[last][run] is the first row of (last, run), and
// the rows of the run end at start[last][run + 1].  A pair (run, m) exists
// when run <= maxRun[last] and m <= start[last][run + 1] - start[last][run].
struct EncIndex {
    Zan16u start[2][66];
    Zan8u maxRun[2];
};
template <int N>
constexpr EncIndex make_enc(const Code (&list)[N]) {
    EncIndex e{};
    for (int l = 0; l < 2; ++l) {
        int k = 0;
        while (k < N && list[k].last < l) ++k;
        for (int r = 0; r < 66; ++r) {
            while (k < N && list[k].last == l && list[k].run < r) ++k;
            e.start[l][r] = static_cast<Zan16u>(k);
        }
    }
    for (const Code& c : list)
        if (c.run > e.maxRun[c.last]) e.maxRun[c.last] = c.run;
    return e;
}
inline constexpr EncIndex h263_VLCParams = make_enc(kH263Tcoef);
inline constexpr EncIndex h263_advVLCParams = make_enc(kH263AdvIntra);
inline constexpr EncIndex mVLC_TB16 = make_enc(kMpeg4Intra);
inline constexpr EncIndex mVLC_TB23a = make_enc(kRvlcIntra);
inline constexpr EncIndex mVLC_TB23b = make_enc(kRvlcInter);
inline constexpr EncIndex h261_VLCParams = make_enc(kH261Tcoef);

// The row of (last, run, m), m >= 1, or -1.
inline int enc_row(const EncIndex& e, int last, int run, Zan32u m) {
    if (run > e.maxRun[last]) return -1;
    const Zan32u row = e.start[last][run] + m - 1;
    return row < e.start[last][run + 1] ? static_cast<int>(row) : -1;
}

// -------------------------------------------------- compile-time checks

namespace check {
template <int N>
constexpr bool peek263_ok(const Tables263& t, const Code (&list)[N]) {
    for (Zan32u w = 16; w < 8192; ++w) {
        if (w >= 192 && w < 256) continue;
        const int k = find_code(list, w, 13);
        const Row263& r = w >= 1024 ? t.tab0[(w >> 6) - 16] : w >= 256 ? t.tab1[(w >> 3) - 32] : t.tab2[(w >> 1) - 8];
        if (k < 0 ? r.len != 0
                  : (r.len != list[k].len + 1 || r.level != list[k].level || r.runp1 != list[k].run + 1 ||
                     r.last != list[k].last))
            return false;
    }
    return true;
}
constexpr bool peek261_ok() {
    for (Zan32u w = 32; w < 16384; ++w) {
        if (w >= 256 && w < 512) continue;
        const Row261& r = w >= 2560 ? h261_coefTab.tab0[(w >> 9) - 5]
                          : w >= 512 ? h261_coefTab.tab1[(w >> 6) - 8]
                                     : h261_coefTab.tab2[(w >> 1) - 16];
        if ((w >> 12) == 2) {
            if (r.runp1 != kEob261 || r.len != 2) return false;
            continue;
        }
        const int k = find_code(kH261Tcoef, w, 14);
        if (k < 0 ? r.len != 0 : (r.len != kH261Tcoef[k].len + 1 || r.level != kH261Tcoef[k].level ||
                                   r.runp1 != kH261Tcoef[k].run + 1))
            return false;
    }
    return true;
}
template <int N>
constexpr bool peekMp4_ok(const TablesMp4& t, const Code (&list)[N]) {
    for (Zan32u w = 8; w < 4096; ++w) {
        const RowMp4& r = w >= 512 ? t.t512[(w - 512) >> 5] : w >= 128 ? t.t128[(w - 128) >> 2] : t.t8[w - 8];
        if ((w >> 5) == 3) {
            if (r.level != kEscapeLevel || r.len != 7) return false;
            continue;
        }
        const int k = find_code(list, w, 12);
        if (k < 0 ? r.len != 0
                  : (r.len != list[k].len || r.level != list[k].level || r.run != list[k].run ||
                     r.last != list[k].last))
            return false;
    }
    return true;
}
}  // namespace check

static_assert(check::peek263_ok(h263_coefTab, kH263Tcoef));
static_assert(check::peek263_ok(h263_advCoefTab, kH263AdvIntra));
static_assert(check::peek261_ok());
static_assert(check::peekMp4_ok(tableB16, kMpeg4Intra));
static_assert(check::peekMp4_ok(tableB17, kH263Tcoef));
// The sizes of the maxima that the escape forms rely on.
static_assert(kMaxIntra.maxRun[0] == 14 && kMaxIntra.maxRun[1] == 20 && kMaxInter.maxRun[0] == 26 &&
              kMaxInter.maxRun[1] == 40);
static_assert(kMaxIntra.maxLevel[0] == 27 && kMaxIntra.maxLevel[1] == 8 && kMaxInter.maxLevel[0] == 12 &&
              kMaxInter.maxLevel[1] == 3);
static_assert(h263_VLCParams.start[0][1] == 12 && h263_VLCParams.start[0][5] == 28 &&
              h263_VLCParams.start[1][0] == 58 && h263_VLCParams.start[1][5] == 66);

}  // namespace zan::ZAN_PATH::coef
