// zanvc-mpeg2dec: decodes an MPEG-2 video elementary stream of intra-coded
// frame pictures to raw planar 4:2:0 (yuv420p), or with --reencode writes
// the stream again from its decoded levels: headers other than slices are
// copied, slices are rewritten field by field and block by block.
//
//   zanvc-mpeg2dec IN.m2v OUT.yuv
//   zanvc-mpeg2dec --reencode IN.m2v OUT.m2v
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include <zanvc.h>

#include "bits.h"
#include "pipeline.h"
#include "syntax.h"
#include "tables.h"

namespace {

using namespace mpeg2;

struct Decoder {
    const CodeTables& t;
    bool reencode;
    std::FILE* out;
    Sequence seq;
    Picture pic;
    BlockContext ctx;
    Frame frame;
    BitWriter writer;  // re-encode output
    bool inPicture = false, ctxReady = false;
    long pictures = 0;

    bool flush() {
        if (!inPicture) return true;
        inPicture = false;
        ++pictures;
        if (reencode) return true;
        return frame.write(out);
    }

    Fault slice(BitReader& r, uint32_t code, size_t tailBytes) {
        if (!inPicture) return "slice outside a picture";
        if (!ctxReady) {
            if (Fault f = check_supported(seq, pic); !f.empty()) return f;
            if (frame.width != seq.width || frame.height != seq.height || frame.mbHeight != seq.mbHeight())
                frame.allocate(seq.width, seq.height, seq.mbHeight());
            ctx.set(seq.intraWeights, pic.alternateScan, pic.intraVlc, pic.dcPrecision);
            ctxReady = true;
        }
        SliceHeader h;
        if (Fault f = parse_slice_header(r, code, seq, h); !f.empty()) return f;
        if (reencode) write_slice_header(writer, h);
        int qcode = h.quantiserScaleCode;
        Zan16s pred[3] = {static_cast<Zan16s>(ctx.dcReset), static_cast<Zan16s>(ctx.dcReset),
                          static_cast<Zan16s>(ctx.dcReset)};
        Zan32s putPred[3] = {ctx.dcReset, ctx.dcReset, ctx.dcReset};
        const int mbCount = seq.mbWidth() * seq.mbHeight();
        int address = h.row * seq.mbWidth() - 1;
        bool first = true;
        alignas(16) MacroblockLevels levels;
        do {
            MacroblockHeader m;
            if (Fault f = parse_macroblock_header(r, t, pic, m); !f.empty()) return f;
            if (!first && m.increment != 1) return "skipped macroblock in an intra picture";
            address += m.increment;
            first = false;
            if (address >= mbCount) return "macroblock address beyond the picture";
            if (m.quant) qcode = m.quantiserScaleCode;
            const int mbx = address % seq.mbWidth(), mby = address / seq.mbWidth();
            if (reencode) {
                write_macroblock_header(writer, t, pic, m);
                if (!read_macroblock_levels(r, t, ctx, pred, levels)) return "bad block data";
                if (!write_macroblock_levels(writer, t, ctx, levels, putPred)) return "writing a block failed";
            } else if (!decode_macroblock(r, t, ctx, quantiser_scale(qcode, pic.qScaleType), m.dctType != 0, pred,
                                          frame, mbx, mby)) {
                return "bad block data";
            }
        } while (!slice_ends(r));
        if (r.overrun()) return "truncated slice";
        if (reencode) {
            writer.align();
            // Zero bytes that stood between the slice data and the next start code.
            r.align();
            const size_t used = r.pos / 8;
            for (size_t i = used; i < tailBytes; ++i) writer.put(0, 8);
        }
        return {};
    }

    // One start-code unit: bytes [begin, end) of the stream, begin at 00 00 01.
    Fault unit(std::vector<Zan32u>& words, const std::vector<uint8_t>& bytes, size_t begin, size_t end) {
        const uint32_t code = bytes[begin + 3];
        BitReader r;
        r.w = words.data();
        r.pos = (begin + 4) * 8;
        r.end = end * 8;
        if (reencode && !(code >= kSliceFirst && code <= kSliceLast)) {
            writer.align();
            for (size_t i = begin; i < end; ++i) writer.put(bytes[i], 8);
        }
        if (code >= kSliceFirst && code <= kSliceLast) {
            if (reencode) writer.align();
            return slice(r, code, end);
        }
        switch (code) {
        case kSequenceHeader:
            if (!flush()) return "writing the output failed";
            ctxReady = false;
            return parse_sequence_header(r, seq);
        case kExtension: {
            const uint32_t id = r.get(4);
            if (id == kExtSequence) return parse_sequence_extension(r, seq);
            if (id == kExtQuantMatrix) {
                ctxReady = false;
                return parse_quant_matrix_extension(r, seq);
            }
            if (id == kExtPictureCoding) {
                if (!inPicture) return "picture coding extension outside a picture";
                ctxReady = false;
                return parse_picture_coding_extension(r, pic);
            }
            return {};
        }
        case kPictureStart:
            if (!flush()) return "writing the output failed";
            inPicture = true;
            ctxReady = false;
            return parse_picture_header(r, pic);
        case kSequenceEnd:
            if (!flush()) return "writing the output failed";
            return {};
        default:
            if (code > kSliceLast && code != kUserData && code != kGroupStart && code != 0xB4)
                return "unknown start code";
            return {};
        }
    }
};

bool read_file(const char* path, std::vector<uint8_t>& bytes) {
    std::FILE* f = std::fopen(path, "rb");
    if (!f) return false;
    bool ok = std::fseek(f, 0, SEEK_END) == 0;
    const long size = ok ? std::ftell(f) : -1;
    ok = ok && size >= 0 && std::fseek(f, 0, SEEK_SET) == 0;
    if (ok) {
        bytes.resize(static_cast<size_t>(size));
        ok = std::fread(bytes.data(), 1, bytes.size(), f) == bytes.size();
    }
    std::fclose(f);
    return ok;
}

// Byte positions of the start codes 00 00 01 xx.
std::vector<size_t> find_start_codes(const std::vector<uint8_t>& b) {
    std::vector<size_t> starts;
    for (size_t i = 0; i + 3 < b.size();) {
        if (b[i + 2] > 1) {
            i += 3;  // no start code can begin at i, i + 1 or i + 2
        } else if (b[i + 2] == 0) {
            ++i;
        } else {
            if (b[i] == 0 && b[i + 1] == 0) starts.push_back(i);
            i += 3;
        }
    }
    return starts;
}

}  // namespace

int main(int argc, char** argv) {
    bool reencode = false;
    std::vector<const char*> files;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--reencode") == 0)
            reencode = true;
        else
            files.push_back(argv[i]);
    }
    if (files.size() != 2) {
        std::fprintf(stderr, "usage: zanvc-mpeg2dec [--reencode] IN.m2v OUT.yuv|OUT.m2v\n");
        return 2;
    }
    std::vector<uint8_t> bytes;
    if (!read_file(files[0], bytes)) {
        std::fprintf(stderr, "zanvc-mpeg2dec: cannot read %s\n", files[0]);
        return 1;
    }
    CodeTables tables;
    if (!tables.ok) return 1;
    std::FILE* out = std::fopen(files[1], "wb");
    if (!out) {
        std::fprintf(stderr, "zanvc-mpeg2dec: cannot write %s\n", files[1]);
        return 1;
    }
    std::vector<Zan32u> words = bytes_to_words(bytes);
    Decoder d{tables, reencode, out, {}, {}, {}, {}, {}, false, false, 0};

    const std::vector<size_t> starts = find_start_codes(bytes);
    int status = 0;
    if (starts.empty() || starts[0] != 0) {
        std::fprintf(stderr, "zanvc-mpeg2dec: %s: %s\n", files[0],
                     starts.empty() ? "no start code found" : "data before the first start code");
        status = 1;
    }
    for (size_t k = 0; status == 0 && k < starts.size(); ++k) {
        const size_t end = k + 1 < starts.size() ? starts[k + 1] : bytes.size();
        if (Fault f = d.unit(words, bytes, starts[k], end); !f.empty()) {
            std::fprintf(stderr, "zanvc-mpeg2dec: %s: %s (start code 0x%02X at byte %zu, picture %ld)\n", files[0],
                         f.c_str(), bytes[starts[k] + 3], starts[k], d.pictures);
            status = 1;
        }
    }
    if (status == 0 && !d.flush()) {
        std::fprintf(stderr, "zanvc-mpeg2dec: writing %s failed\n", files[1]);
        status = 1;
    }
    if (status == 0 && reencode) {
        d.writer.align();
        const std::vector<uint8_t> outBytes = d.writer.bytes();
        if (std::fwrite(outBytes.data(), 1, outBytes.size(), out) != outBytes.size()) status = 1;
    }
    if (std::fclose(out) != 0) status = 1;
    if (status == 0) std::fprintf(stderr, "zanvc-mpeg2dec: %ld pictures\n", d.pictures);
    return status;
}
