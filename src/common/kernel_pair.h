// A vector kernel beside the scalar rule that fixes its exact result.
//
// Each family lists its kernels as KernelPair tables (a "catalogue") per
// path.  The equivalence checker runs both members on the same random inputs
// and demands identical outputs; the benchmarks time both.
#pragma once

#include <span>

#include "zanvc.h"

namespace zan {

template <class Fn>
struct KernelPair {
    const char* name;  // the kernel's name, for reports
    Fn rule;           // plain C++: the definition of the result
    Fn simd;           // SSE2/SSSE3 kernel that must give the same result
    Zan32s width;      // block width in samples
    Zan32s height;     // block height in rows
    Zan32s param;      // family-specific: see the family's catalogue comment
};

template <class Fn>
using KernelList = std::span<const KernelPair<Fn>>;

}  // namespace zan
