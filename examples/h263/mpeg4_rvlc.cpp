// mpeg4-rvlc IN.m4v OUT.m4v: rewrites a data-partitioned MPEG-4 stream with
// reversible coefficient codes, so that the decoder's reversible path can be
// checked against ffmpeg (whose encoder does not write them).
#include <cstdio>

#include "mpeg4_dec.h"

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: mpeg4-rvlc IN.m4v OUT.m4v\n");
        return 2;
    }
    return mpeg4_rewrite_rvlc(argv[1], argv[2]);
}
