// Plain helpers for the scalar rules: row addressing with byte steps and
// unaligned sample reads, so that a rule reads exactly what it says.
#pragma once

#include <cstddef>
#include <cstring>

#include "common/path.h"
#include "zanvc.h"

namespace zan::ZAN_PATH::scalar {

// Sample x of row y of a region whose rows lie step bytes apart.
template <class T>
inline T at(const T* base, Zan32s step, Zan32s x, Zan32s y) {
    T v;
    std::memcpy(&v, reinterpret_cast<const Zan8u*>(base) + static_cast<ptrdiff_t>(step) * y + sizeof(T) * x,
                sizeof(T));
    return v;
}

template <class T>
inline void put(T* base, Zan32s step, Zan32s x, Zan32s y, T v) {
    std::memcpy(reinterpret_cast<Zan8u*>(base) + static_cast<ptrdiff_t>(step) * y + sizeof(T) * x, &v,
                sizeof(T));
}

inline Zan32s absdiff(Zan32s a, Zan32s b) { return a > b ? a - b : b - a; }

}  // namespace zan::ZAN_PATH::scalar
