// The version record of this build and its query.  Compiled once per path.
#include "common/path.h"
#include "frame/bodies.h"

namespace zan::ZAN_PATH {

namespace {

constexpr ZanLibraryVersion kVersion = {
    7, 1, 1, 37466,
    {ZAN_PATH_NAME[0], ZAN_PATH_NAME[1], 0, 0},
    ZAN_PATH_IS_N8 ? "zanVC Pico (n8)" : "zanVC SSSE3 (u8)",
    "7.1.1 (r37466)",
    "Sep 24 2012",
};

}  // namespace

const ZanLibraryVersion* zanvcGetLibVersion() { return &kVersion; }

}  // namespace zan::ZAN_PATH
