// The stream syntax of MPEG-2 video (ISO/IEC 13818-2, clause 6.2) as far as
// intra-coded progressive 4:2:0 frame pictures need it: sequence header and
// extensions, group of pictures, picture header and coding extension, slice
// and macroblock headers.  Parsing checks what the decoder relies on and
// names the first fault; writing produces the same fields.
#pragma once

#include <cstdint>
#include <string>

#include "bits.h"
#include "tables.h"

namespace mpeg2 {

// Start code values (the byte after 00 00 01).
enum : uint32_t {
    kPictureStart = 0x00, kSliceFirst = 0x01, kSliceLast = 0xAF, kUserData = 0xB2, kSequenceHeader = 0xB3,
    kExtension = 0xB5, kSequenceEnd = 0xB7, kGroupStart = 0xB8
};
enum : uint32_t { kExtSequence = 1, kExtQuantMatrix = 3, kExtPictureCoding = 8 };

struct Sequence {
    int width = 0, height = 0;  // horizontal_size, vertical_size (with the extension's high bits)
    int ratioCode = 1, frameRateCode = 3;  // ratio code 1: square samples
    uint8_t intraWeights[64];   // raster order
    bool haveHeader = false, haveExtension = false;
    int profileLevel = 0x48, progressive = 1, chromaFormat = 1;
    int mbWidth() const { return (width + 15) / 16; }
    // Interlaced sequences count macroblock rows in pairs (whole field rows).
    int mbHeight() const { return progressive ? (height + 15) / 16 : 2 * ((height + 31) / 32); }
};

struct Picture {
    int temporalReference = 0, codingType = 1;
    bool haveExtension = false;
    int dcPrecision = 0, structure = 3, topFieldFirst = 0, framePredFrameDct = 1, concealment = 0;
    int qScaleType = 0, intraVlc = 0, alternateScan = 0, progressiveFrame = 1;
};

struct SliceHeader {
    int row = 0;                  // slice_vertical_position - 1
    int quantiserScaleCode = 1;
    bool hasIntraSliceFields = false;
    int intraSlice = 0;
};

struct MacroblockHeader {
    int increment = 1;           // macroblock_address_increment (escapes included)
    bool quant = false;          // macroblock_quant: a new quantiser_scale_code follows
    int dctType = 0;             // 1: field DCT (only read when the picture allows it)
    int quantiserScaleCode = 0;  // when quant
};

// A parse fault, or empty.
using Fault = std::string;

// Each parser starts after the start code (and, for extensions, reads the
// 4-bit identifier itself).
Fault parse_sequence_header(BitReader& r, Sequence& s);
Fault parse_sequence_extension(BitReader& r, Sequence& s);
Fault parse_quant_matrix_extension(BitReader& r, Sequence& s);
Fault parse_picture_header(BitReader& r, Picture& p);
Fault parse_picture_coding_extension(BitReader& r, Picture& p);
// Checks that the coding tools of the picture are ones this decoder handles.
Fault check_supported(const Sequence& s, const Picture& p);
Fault parse_slice_header(BitReader& r, uint32_t startCode, const Sequence& s, SliceHeader& h);
Fault parse_macroblock_header(BitReader& r, const CodeTables& t, const Picture& p, MacroblockHeader& m);
// True when the slice has no further macroblock: 23 zero bits (the start of
// the next start code or the stuffing before it) or the end of the data.
bool slice_ends(const BitReader& r);

void write_sequence_header(BitWriter& w, const Sequence& s);
void write_sequence_extension(BitWriter& w, const Sequence& s);
void write_group_header(BitWriter& w, int pictureNumber, int frameRate);
void write_picture_header(BitWriter& w, const Picture& p);
void write_picture_coding_extension(BitWriter& w, const Picture& p);
void write_slice_header(BitWriter& w, const SliceHeader& h);
void write_macroblock_header(BitWriter& w, const CodeTables& t, const Picture& p, const MacroblockHeader& m);

}  // namespace mpeg2
