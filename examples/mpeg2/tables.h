// Code tables of MPEG-2 video (ISO/IEC 13818-2): macroblock_address_increment
// (Table B-1), dct_dc_size_luminance / _chrominance (Tables B-12, B-13), DCT
// coefficient tables zero and one (Tables B-14, B-15), the zigzag and
// alternate scans, the default intra weights and the non-linear quantiser
// scale.  The code tables are written as bit strings and turned into the
// code lists that the library's table builders take.
#pragma once

#include <cstdint>
#include <vector>

#include <zanvc.h>

namespace mpeg2 {

inline constexpr int kEob = 254, kEsc = 255;  // run values the builders treat as end of block / escape

// Zigzag (scan 0) and alternate (scan 1): raster position by scan index.
extern const uint8_t kZigzag[64];
extern const uint8_t kAlternate[64];
// Default intra weights, raster order.
extern const uint8_t kDefaultIntra[64];
// quantiser_scale by quantiser_scale_code for q_scale_type 1.
extern const uint8_t kNonLinearScale[32];

inline int quantiser_scale(int code, int qScaleType) { return qScaleType ? kNonLinearScale[code & 31] : 2 * (code & 31); }

// Library tables built once from the code lists below; freed by the destructor.
struct CodeTables {
    Zan32u* mbInc = nullptr;        // Table B-1: value = increment 1..33
    Zan32u* dcSize[2] = {};         // [0] luma (B-12), [1] chroma (B-13): value = dct_dc_size
    Zan32u* ac[2] = {};             // [0] table zero (B-14), [1] table one (B-15): run-level, sign included
    Zan32u* acPut[2] = {};          // encoding tables for zaniPutIntraBlock
    Zan32s dcPut[2][24] = {};       // (code, length) by size 0..11 for zaniPutIntraBlock
    Zan32s eobCode[2] = {}, eobLen[2] = {};
    uint32_t mbIncCode[34] = {};    // Table B-1 for writing: code and length by increment
    int mbIncLen[34] = {};
    bool ok = false;
    CodeTables();
    ~CodeTables();
    CodeTables(const CodeTables&) = delete;
    CodeTables& operator=(const CodeTables&) = delete;
};

}  // namespace mpeg2
