// The version record of this build and its query.  Compiled once per path.
#include "common/path.h"
#include "frame/bodies.h"
#include "zanvc_release.h"

namespace zan::ZAN_PATH {

namespace {

constexpr ZanLibraryVersion kVersion = {
    ZANVC_RELEASE_MAJOR, ZANVC_RELEASE_MINOR, ZANVC_RELEASE_UPDATE, ZANVC_RELEASE_BUILD,
    {ZAN_PATH_NAME[0], ZAN_PATH_NAME[1], 0, 0},
    ZAN_PATH_IS_N8 ? "zanVC Pico (n8)" : "zanVC SSSE3 (u8)",
    ZANVC_RELEASE_TEXT,
    ZANVC_RELEASE_DATE,
};

}  // namespace

const ZanLibraryVersion* zanvcGetLibVersion() { return &kVersion; }

}  // namespace zan::ZAN_PATH
