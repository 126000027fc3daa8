// zanvc-h264dec: decodes H.264 (CAVLC) Annex B streams to raw planar
// pictures in display order, using only the public zanvc interface.
#include <cstdio>
#include <string>
#include <vector>

#include "decoder.h"

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: zanvc-h264dec IN.264 OUT.yuv\n");
        return 2;
    }
    std::FILE* in = std::fopen(argv[1], "rb");
    if (!in) {
        std::fprintf(stderr, "zanvc-h264dec: cannot open %s\n", argv[1]);
        return 1;
    }
    std::vector<unsigned char> data;
    unsigned char buf[65536];
    std::size_t n;
    while ((n = std::fread(buf, 1, sizeof buf, in)) > 0) data.insert(data.end(), buf, buf + n);
    std::fclose(in);

    std::FILE* out = std::fopen(argv[2], "wb");
    if (!out) {
        std::fprintf(stderr, "zanvc-h264dec: cannot create %s\n", argv[2]);
        return 1;
    }
    bool write_ok = true;
    std::string err;
    bool ok = h264ex::decode_annexb(data.data(), data.size(), [&](const h264ex::DecodedFrame& f) {
        if (write_ok && std::fwrite(f.data.data(), 1, f.data.size(), out) != f.data.size()) write_ok = false;
    }, err);
    if (std::fclose(out) != 0) write_ok = false;
    if (ok && !write_ok) {
        err = "write error";
        ok = false;
    }
    if (!ok) {
        std::fprintf(stderr, "zanvc-h264dec: %s: %s\n", argv[1], err.c_str());
        return 1;
    }
    return 0;
}
