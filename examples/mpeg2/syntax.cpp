#include "syntax.h"

#include <cstring>

namespace mpeg2 {

std::vector<Zan32u> bytes_to_words(const std::vector<uint8_t>& bytes) {
    std::vector<Zan32u> w((bytes.size() + 3) / 4 + BitReader::kPadWords, 0u);
    if (!bytes.empty()) std::memcpy(w.data(), bytes.data(), bytes.size());
    for (size_t i = 0; i < (bytes.size() + 3) / 4; ++i) w[i] = __builtin_bswap32(w[i]);
    return w;
}

std::vector<uint8_t> BitWriter::bytes() const {
    const size_t n = (pos + 7) >> 3;
    std::vector<uint8_t> out(n);
    for (size_t i = 0; i < n; ++i) out[i] = static_cast<uint8_t>(w[i >> 2] >> (24 - 8 * (i & 3)));
    return out;
}

namespace {

Fault marker(BitReader& r, const char* where) {
    return r.get(1) == 1 ? Fault() : Fault(std::string("missing marker bit in the ") + where);
}

// A weight list as the stream carries it: 64 eight-bit values in zigzag order.
Fault read_weights(BitReader& r, uint8_t* raster) {
    for (int i = 0; i < 64; ++i) {
        const uint32_t v = r.get(8);
        if (v == 0) return "a quantiser weight of 0";
        raster[kZigzag[i]] = static_cast<uint8_t>(v);
    }
    return {};
}

}  // namespace

Fault parse_sequence_header(BitReader& r, Sequence& s) {
    s.width = static_cast<int>(r.get(12));
    s.height = static_cast<int>(r.get(12));
    s.ratioCode = static_cast<int>(r.get(4));
    s.frameRateCode = static_cast<int>(r.get(4));
    r.get(18);  // bit_rate_value
    if (Fault f = marker(r, "sequence header"); !f.empty()) return f;
    r.get(10);  // vbv_buffer_size_value
    r.get(1);   // constrained_parameters_flag
    std::memcpy(s.intraWeights, kDefaultIntra, 64);
    if (r.get(1))
        if (Fault f = read_weights(r, s.intraWeights); !f.empty()) return f;
    if (r.get(1)) r.pos += 64 * 8;  // non-intra weights: intra pictures do not use them
    if (r.overrun()) return "truncated sequence header";
    if (s.width == 0 || s.height == 0) return "picture size of 0 in the sequence header";
    s.haveHeader = true;
    s.haveExtension = false;
    return {};
}

Fault parse_sequence_extension(BitReader& r, Sequence& s) {
    if (!s.haveHeader) return "sequence extension before a sequence header";
    s.profileLevel = static_cast<int>(r.get(8));
    s.progressive = static_cast<int>(r.get(1));
    s.chromaFormat = static_cast<int>(r.get(2));
    s.width |= static_cast<int>(r.get(2)) << 12;
    s.height |= static_cast<int>(r.get(2)) << 12;
    r.get(12);  // bit_rate_extension
    if (Fault f = marker(r, "sequence extension"); !f.empty()) return f;
    r.get(8);   // vbv_buffer_size_extension
    r.get(1);   // low_delay
    r.get(2);   // frame_rate_extension_n
    r.get(5);   // frame_rate_extension_d
    if (r.overrun()) return "truncated sequence extension";
    s.haveExtension = true;
    return {};
}

Fault parse_quant_matrix_extension(BitReader& r, Sequence& s) {
    if (r.get(1))
        if (Fault f = read_weights(r, s.intraWeights); !f.empty()) return f;
    // Non-intra and chroma weights follow; 4:2:0 intra pictures use none of them.
    if (r.overrun()) return "truncated quant matrix extension";
    return {};
}

Fault parse_picture_header(BitReader& r, Picture& p) {
    p = Picture();
    p.temporalReference = static_cast<int>(r.get(10));
    p.codingType = static_cast<int>(r.get(3));
    r.get(16);  // vbv_delay
    if (p.codingType == 2 || p.codingType == 3) r.get(p.codingType == 2 ? 4 : 8);  // full_pel / f_code fields
    while (r.get(1)) {  // extra_information_picture
        r.get(8);
        if (r.overrun()) return "truncated picture header";
    }
    if (r.overrun()) return "truncated picture header";
    return {};
}

Fault parse_picture_coding_extension(BitReader& r, Picture& p) {
    r.get(16);  // f_code[2][2]
    p.dcPrecision = static_cast<int>(r.get(2));
    p.structure = static_cast<int>(r.get(2));
    p.topFieldFirst = static_cast<int>(r.get(1));
    p.framePredFrameDct = static_cast<int>(r.get(1));
    p.concealment = static_cast<int>(r.get(1));
    p.qScaleType = static_cast<int>(r.get(1));
    p.intraVlc = static_cast<int>(r.get(1));
    p.alternateScan = static_cast<int>(r.get(1));
    r.get(1);  // repeat_first_field
    r.get(1);  // chroma_420_type
    p.progressiveFrame = static_cast<int>(r.get(1));
    if (r.get(1)) r.get(20);  // composite display fields
    if (r.overrun()) return "truncated picture coding extension";
    p.haveExtension = true;
    return {};
}

Fault check_supported(const Sequence& s, const Picture& p) {
    if (!s.haveHeader) return "picture before any sequence header";
    if (!s.haveExtension || !p.haveExtension) return "not an MPEG-2 stream (no sequence or picture coding extension)";
    if (s.chromaFormat != 1) return "only 4:2:0 is handled";
    if (p.codingType != 1) return "only intra-coded (I) pictures are handled";
    if (p.structure != 3) return "field pictures are not handled";
    if (p.concealment) return "concealment motion vectors are not handled";
    if (s.width > 4096 || s.height > 2800) return "picture larger than 4096x2800";
    return {};
}

Fault parse_slice_header(BitReader& r, uint32_t startCode, const Sequence& s, SliceHeader& h) {
    h = SliceHeader();
    h.row = static_cast<int>(startCode) - 1;
    if (h.row >= s.mbHeight()) return "slice below the picture";
    h.quantiserScaleCode = static_cast<int>(r.get(5));
    if (h.quantiserScaleCode == 0) return "quantiser_scale_code 0 in a slice header";
    if (r.peek(1)) {
        r.get(1);
        h.hasIntraSliceFields = true;
        h.intraSlice = static_cast<int>(r.get(1));
        r.get(7);  // reserved_bits
        while (r.get(1)) {  // extra_information_slice
            r.get(8);
            if (r.overrun()) return "truncated slice header";
        }
    } else {
        r.get(1);
    }
    if (r.overrun()) return "truncated slice header";
    return {};
}

Fault parse_macroblock_header(BitReader& r, const CodeTables& t, const Picture& p, MacroblockHeader& m) {
    m = MacroblockHeader();
    int increment = 0;
    while (r.peek(11) == 0x008) {  // macroblock_escape: 0000 0001 000
        r.get(11);
        increment += 33;
        if (r.overrun()) return "truncated macroblock address";
    }
    Zan32s offset = 0, value = 0;
    Zan32u* cur = r.cursor(&offset);
    if (zaniDecodeHuffmanOne_1u32s(&cur, &offset, &value, t.mbInc) != zanStsOk) return "bad macroblock_address_increment code";
    r.set_cursor(cur, offset);
    m.increment = increment + value;
    // macroblock_type of an I picture: 1 intra, 01 intra with a new quantiser.
    if (r.get(1)) {
        m.quant = false;
    } else if (r.get(1)) {
        m.quant = true;
    } else {
        return "bad macroblock_type for an intra picture";
    }
    if (p.structure == 3 && !p.framePredFrameDct) m.dctType = static_cast<int>(r.get(1));
    if (m.quant) {
        m.quantiserScaleCode = static_cast<int>(r.get(5));
        if (m.quantiserScaleCode == 0) return "quantiser_scale_code 0 in a macroblock";
    }
    if (r.overrun()) return "truncated macroblock header";
    return {};
}

bool slice_ends(const BitReader& r) { return r.pos + 23 > r.end || r.peek(23) == 0; }

void write_sequence_header(BitWriter& w, const Sequence& s) {
    w.start_code(kSequenceHeader);
    w.put(static_cast<uint32_t>(s.width & 0xFFF), 12);
    w.put(static_cast<uint32_t>(s.height & 0xFFF), 12);
    w.put(static_cast<uint32_t>(s.ratioCode), 4);
    w.put(static_cast<uint32_t>(s.frameRateCode), 4);
    w.put(0x3FFFF, 18);  // bit_rate_value: all ones, no rate given
    w.put(1, 1);         // marker
    w.put(112, 10);      // vbv_buffer_size_value
    w.put(0, 1);         // constrained_parameters_flag
    w.put(0, 1);         // default intra weights
    w.put(0, 1);         // default non-intra weights
}

void write_sequence_extension(BitWriter& w, const Sequence& s) {
    w.start_code(kExtension);
    w.put(kExtSequence, 4);
    w.put(static_cast<uint32_t>(s.profileLevel), 8);
    w.put(1, 1);  // progressive_sequence
    w.put(1, 2);  // chroma_format 4:2:0
    w.put(static_cast<uint32_t>(s.width >> 12), 2);
    w.put(static_cast<uint32_t>(s.height >> 12), 2);
    w.put(0xFFF, 12);  // bit_rate_extension
    w.put(1, 1);       // marker
    w.put(0, 8);       // vbv_buffer_size_extension
    w.put(0, 1);       // low_delay
    w.put(0, 2);       // frame_rate_extension_n
    w.put(0, 5);       // frame_rate_extension_d
}

void write_group_header(BitWriter& w, int pictureNumber, int frameRate) {
    w.start_code(kGroupStart);
    const int secondsTotal = pictureNumber / frameRate;
    w.put(0, 1);  // drop_frame_flag
    w.put(static_cast<uint32_t>((secondsTotal / 3600) % 24), 5);
    w.put(static_cast<uint32_t>((secondsTotal / 60) % 60), 6);
    w.put(1, 1);  // marker
    w.put(static_cast<uint32_t>(secondsTotal % 60), 6);
    w.put(static_cast<uint32_t>(pictureNumber % frameRate), 6);
    w.put(1, 1);  // closed_gop
    w.put(0, 1);  // broken_link
}

void write_picture_header(BitWriter& w, const Picture& p) {
    w.start_code(kPictureStart);
    w.put(static_cast<uint32_t>(p.temporalReference & 1023), 10);
    w.put(static_cast<uint32_t>(p.codingType), 3);
    w.put(0xFFFF, 16);  // vbv_delay
    w.put(0, 1);        // extra_bit_picture
}

void write_picture_coding_extension(BitWriter& w, const Picture& p) {
    w.start_code(kExtension);
    w.put(kExtPictureCoding, 4);
    w.put(0xFFFF, 16);  // f_code: not used in intra pictures
    w.put(static_cast<uint32_t>(p.dcPrecision), 2);
    w.put(static_cast<uint32_t>(p.structure), 2);
    w.put(static_cast<uint32_t>(p.topFieldFirst), 1);
    w.put(static_cast<uint32_t>(p.framePredFrameDct), 1);
    w.put(static_cast<uint32_t>(p.concealment), 1);
    w.put(static_cast<uint32_t>(p.qScaleType), 1);
    w.put(static_cast<uint32_t>(p.intraVlc), 1);
    w.put(static_cast<uint32_t>(p.alternateScan), 1);
    w.put(0, 1);  // repeat_first_field
    w.put(1, 1);  // chroma_420_type (equals progressive_frame)
    w.put(static_cast<uint32_t>(p.progressiveFrame), 1);
    w.put(0, 1);  // composite_display_flag
}

void write_slice_header(BitWriter& w, const SliceHeader& h) {
    w.start_code(static_cast<uint32_t>(h.row + 1));
    w.put(static_cast<uint32_t>(h.quantiserScaleCode), 5);
    if (h.hasIntraSliceFields) {
        w.put(1, 1);
        w.put(static_cast<uint32_t>(h.intraSlice), 1);
        w.put(0, 7);
    }
    w.put(0, 1);  // extra_bit_slice
}

void write_macroblock_header(BitWriter& w, const CodeTables& t, const Picture& p, const MacroblockHeader& m) {
    int increment = m.increment;
    for (; increment > 33; increment -= 33) w.put(0x008, 11);
    w.put(t.mbIncCode[increment], t.mbIncLen[increment]);
    w.put(m.quant ? 1 : 1, m.quant ? 2 : 1);  // 01 or 1
    if (p.structure == 3 && !p.framePredFrameDct) w.put(static_cast<uint32_t>(m.dctType), 1);
    if (m.quant) w.put(static_cast<uint32_t>(m.quantiserScaleCode), 5);
}

}  // namespace mpeg2
