// The SAD catalogues of a shared object of the benchmarks' own.  The
// benchmark program links the kernels statically as well; the copy here sits
// where the dynamic loader puts shared objects, as far from the program's
// code as the library's exports and FFmpeg's functions are, so that a direct
// call of a kernel and a call of an export cross the same distance.
#include "blocks/sad.h"

extern "C" __attribute__((visibility("default"))) const zan::sad::BlockKernels* zan_bench_sad_shared_block_kernels(
    int n8) {
    return n8 ? &zan::n8::sad::block_kernels : &zan::u8::sad::block_kernels;
}
