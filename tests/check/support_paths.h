// The support functions of one build, as a table, so that a test can run the
// same cases on both builds or on the active one.
#pragma once

#include "support/support.h"

namespace zan::check {

struct SupportPath {
    const char* path;
    decltype(&u8::zansMalloc_8u) malloc8u;
    decltype(&u8::zansMalloc_8s) malloc8s;
    decltype(&u8::zansMalloc_16u) malloc16u;
    decltype(&u8::zansFree) sfree;
    decltype(&u8::zaniFree) ifree;
    decltype(&u8::zansCopy_8u) copy8u;
    decltype(&u8::zansCopy_16s) copy16s;
    decltype(&u8::zansSet_8u) set8u;
    decltype(&u8::zansZero_8u) zero8u;
    decltype(&u8::zaniCopy_8u_C1R) copy_region;
    decltype(&u8::zaniSet_8u_C1R) set_region;
    decltype(&u8::zaniFilterLowpass_8u_C1R) lowpass;
    decltype(&u8::zaniMedian_8u_P3C1R) median;
    decltype(&u8::ownsCopy_8u) copy;
    decltype(&u8::owniSet_8u_C1_M7) fill;
    decltype(&u8::support::copy_run) copy_run;
    decltype(&u8::support::fill_run) fill_run;
    decltype(&u8::support::median_rule) median_rule;
    decltype(&u8::support::lowpass_rule) lowpass_rule;
    decltype(&u8::support::cache_from_leaf2) leaf2;
    decltype(&u8::support::largest_cache_leaf2) leaf2_cache;
};

#define ZAN_SUPPORT_PATH(P)                                                                                       \
    SupportPath {                                                                                                 \
        #P, P::zansMalloc_8u, P::zansMalloc_8s, P::zansMalloc_16u, P::zansFree, P::zaniFree, P::zansCopy_8u,     \
            P::zansCopy_16s, P::zansSet_8u, P::zansZero_8u, P::zaniCopy_8u_C1R, P::zaniSet_8u_C1R,               \
            P::zaniFilterLowpass_8u_C1R, P::zaniMedian_8u_P3C1R, P::ownsCopy_8u, P::owniSet_8u_C1_M7,            \
            P::support::copy_run, P::support::fill_run, P::support::median_rule, P::support::lowpass_rule,       \
            P::support::cache_from_leaf2, P::support::largest_cache_leaf2                                        \
    }
inline const SupportPath kSupportPaths[] = {ZAN_SUPPORT_PATH(u8), ZAN_SUPPORT_PATH(n8)};
#undef ZAN_SUPPORT_PATH

}  // namespace zan::check
