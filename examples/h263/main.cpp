// zanvc-h263dec: decodes an H.263 or MPEG-4 Part 2 (.m4v) stream to raw
// yuv420p pictures, using only the public zanvc interface. The H.263 decoder
// is in h263_decoder.cpp, the MPEG-4 decoder in mpeg4_dec.cpp; a stream that
// starts with an MPEG-4 start code goes to the second.
#include <cstdio>

#include "h263_decoder.h"
#include "mpeg4_dec.h"

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: zanvc-h263dec IN.h263|IN.m4v OUT.yuv\n");
        return 2;
    }
    if (int r = mpeg4_try_main(argv[1], argv[2]); r >= 0) return r;  // MPEG-4 visual stream
    return h263_decode_file(argv[1], argv[2]);
}
