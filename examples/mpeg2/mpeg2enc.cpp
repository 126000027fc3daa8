// zanvc-mpeg2enc: a small MPEG-2 intra-only encoder.  Raw planar 4:2:0
// (yuv420p) in, an elementary stream of I frames out: sequence header and
// extension, then per picture a group of pictures header, picture header,
// picture coding extension and one slice per macroblock row, every
// macroblock intra-coded at one quantiser.
//
//   zanvc-mpeg2enc IN.yuv WIDTH HEIGHT OUT.m2v [--qscale N] [--intra-vlc]
//                  [--alternate-scan] [--dc-precision P] [--recon RECON.yuv]
//
// --qscale N is the quantiser_scale_code 1..31 (linear: quantiser scale 2N).
// The luma PSNR of the reconstruction against the input is printed.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <zanvc.h>

#include "bits.h"
#include "pipeline.h"
#include "syntax.h"
#include "tables.h"

using namespace mpeg2;

namespace {

int usage() {
    std::fprintf(stderr,
                 "usage: zanvc-mpeg2enc IN.yuv WIDTH HEIGHT OUT.m2v [--qscale N] [--intra-vlc] [--alternate-scan]\n"
                 "                      [--dc-precision 0..3] [--recon RECON.yuv]\n");
    return 2;
}

bool parse_int(const char* s, int lo, int hi, int& v) {
    char* end = nullptr;
    const long x = std::strtol(s, &end, 10);
    if (!end || *end || x < lo || x > hi) return false;
    v = static_cast<int>(x);
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 5) return usage();
    int width = 0, height = 0, qcode = 4, dcPrecision = 0;
    bool intraVlc = false, altScan = false;
    const char* reconPath = nullptr;
    if (!parse_int(argv[2], 16, 4096, width) || !parse_int(argv[3], 16, 2800, height)) {
        std::fprintf(stderr, "zanvc-mpeg2enc: size must be 16..4096 x 16..2800\n");
        return 2;
    }
    for (int i = 5; i < argc; ++i) {
        if (std::strcmp(argv[i], "--qscale") == 0 && i + 1 < argc) {
            if (!parse_int(argv[++i], 1, 31, qcode)) return usage();
        } else if (std::strcmp(argv[i], "--dc-precision") == 0 && i + 1 < argc) {
            if (!parse_int(argv[++i], 0, 3, dcPrecision)) return usage();
        } else if (std::strcmp(argv[i], "--intra-vlc") == 0) {
            intraVlc = true;
        } else if (std::strcmp(argv[i], "--alternate-scan") == 0) {
            altScan = true;
        } else if (std::strcmp(argv[i], "--recon") == 0 && i + 1 < argc) {
            reconPath = argv[++i];
        } else {
            return usage();
        }
    }
    std::FILE* in = std::fopen(argv[1], "rb");
    if (!in) {
        std::fprintf(stderr, "zanvc-mpeg2enc: cannot read %s\n", argv[1]);
        return 1;
    }
    std::FILE* recon = reconPath ? std::fopen(reconPath, "wb") : nullptr;
    if (reconPath && !recon) {
        std::fprintf(stderr, "zanvc-mpeg2enc: cannot write %s\n", reconPath);
        return 1;
    }
    CodeTables tables;
    if (!tables.ok) return 1;

    Sequence seq;
    seq.width = width;
    seq.height = height;
    seq.profileLevel = width > 720 || height > 576 ? 0x44 : 0x48;  // main profile, high / main level
    std::memcpy(seq.intraWeights, kDefaultIntra, 64);
    Picture pic;
    pic.dcPrecision = dcPrecision;
    pic.intraVlc = intraVlc;
    pic.alternateScan = altScan;
    BlockContext ctx;
    ctx.set(seq.intraWeights, pic.alternateScan, pic.intraVlc, pic.dcPrecision);
    const int quantiserScale = quantiser_scale(qcode, 0);

    Frame src, rec;
    src.allocate(width, height, seq.mbHeight());
    rec.allocate(width, height, seq.mbHeight());
    BitWriter w;
    write_sequence_header(w, seq);
    write_sequence_extension(w, seq);
    alignas(16) MacroblockLevels levels;
    double sse = 0;
    long pictures = 0;
    int status = 0;
    while (status == 0 && src.read(in)) {
        write_group_header(w, static_cast<int>(pictures), 25);
        pic.temporalReference = 0;
        write_picture_header(w, pic);
        write_picture_coding_extension(w, pic);
        for (int mby = 0; mby < src.mbHeight && status == 0; ++mby) {
            SliceHeader h;
            h.row = mby;
            h.quantiserScaleCode = qcode;
            write_slice_header(w, h);
            Zan32s pred[3] = {ctx.dcReset, ctx.dcReset, ctx.dcReset};
            for (int mbx = 0; mbx < src.mbWidth; ++mbx) {
                MacroblockHeader m;  // increment 1, intra, no new quantiser
                write_macroblock_header(w, tables, pic, m);
                if (!encode_macroblock(src, mbx, mby, ctx, quantiserScale, levels, rec) ||
                    !write_macroblock_levels(w, tables, ctx, levels, pred)) {
                    std::fprintf(stderr, "zanvc-mpeg2enc: a library call failed at macroblock (%d, %d)\n", mbx, mby);
                    status = 1;
                    break;
                }
            }
        }
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                const double d = src.y[static_cast<size_t>(y) * src.lumaStride + x] -
                                 rec.y[static_cast<size_t>(y) * rec.lumaStride + x];
                sse += d * d;
            }
        if (recon && !rec.write(recon)) status = 1;
        ++pictures;
    }
    std::fclose(in);
    if (recon && std::fclose(recon) != 0) status = 1;
    w.start_code(kSequenceEnd);
    const std::vector<uint8_t> bytes = w.bytes();
    std::FILE* out = std::fopen(argv[4], "wb");
    if (!out || std::fwrite(bytes.data(), 1, bytes.size(), out) != bytes.size() || std::fclose(out) != 0) {
        std::fprintf(stderr, "zanvc-mpeg2enc: cannot write %s\n", argv[4]);
        return 1;
    }
    if (pictures == 0) {
        std::fprintf(stderr, "zanvc-mpeg2enc: no complete picture in %s\n", argv[1]);
        return 1;
    }
    const double mse = sse / (static_cast<double>(pictures) * width * height);
    std::printf("pictures %ld  bytes %zu  luma PSNR %.2f dB\n", pictures, bytes.size(),
                mse > 0 ? 10 * std::log10(255.0 * 255.0 / mse) : 99.0);
    return status;
}
