// Aligned allocation through the platform layer, counted in elements.
#include <climits>

#include "common/path.h"
#include "support/support.h"
#include "zancore.h"

namespace zan::ZAN_PATH {

namespace {

// length elements of size bytes each, or null when there are none or their
// byte count does not fit the allocator's argument.
void* allocate(Zan32s length, Zan32s size) {
    if (length <= 0 || length > INT_MAX / size) return nullptr;
    return zanMalloc(length * size);
}

}  // namespace

Zan8u* zansMalloc_8u(Zan32s length) { return static_cast<Zan8u*>(allocate(length, 1)); }
Zan8s* zansMalloc_8s(Zan32s length) { return static_cast<Zan8s*>(allocate(length, 1)); }
Zan16u* zansMalloc_16u(Zan32s length) { return static_cast<Zan16u*>(allocate(length, 2)); }

void zansFree(void* ptr) { zanFree(ptr); }
void zaniFree(void* ptr) { zanFree(ptr); }

}  // namespace zan::ZAN_PATH
