// DV segment decoding and dequantisation: kernel signatures and the
// catalogue that each path offers to the checker and the benchmarks.
#pragma once

#include "common/kernel_pair.h"
#include "zanvc.h"

namespace zan::dvdecode {

// Dequantisation of one block of 64 coefficients in place.  a and b: the
// tables of the form (b unused by the one-table form); qp: the DV100 scale.
using DequantFn = void (*)(Zan16s* pSrcDst, const Zan16s* a, const Zan16s* b, Zan32s qp);

// Catalogue (dvdecode.cpp).  param: 0.  The segment decoder itself is
// table-driven scalar code (bit-stream parsing has no vector kernel worth
// writing); it is checked against hand-built segments in the API tests.
struct Kernels {
    KernelList<DequantFn> dequant;
};

}  // namespace zan::dvdecode

#define ZAN_DVDECODE_CATALOGUES(P)                     \
    namespace zan::P::dvdecode {                       \
    extern const zan::dvdecode::Kernels kernels;       \
    }
ZAN_DVDECODE_CATALOGUES(u8)
ZAN_DVDECODE_CATALOGUES(n8)
#undef ZAN_DVDECODE_CATALOGUES
