// zanvc-h263dec: decodes an H.263 stream to raw yuv420p pictures, using only
// the public zanvc interface (the decoder is in h263_decoder.cpp).
#include <cstdio>

#include "h263_decoder.h"

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: zanvc-h263dec IN.h263 OUT.yuv\n");
        return 2;
    }
    return h263_decode_file(argv[1], argv[2]);
}
