// Declares the two bodies of every export, zan::u8::<name> and
// zan::n8::<name>, with the prototype of the export in zanvc.h.  A body whose
// definition does not match its prototype is left undefined, and the library
// does not link.
#pragma once

#include "zanvc.h"

#define ZAN_EXPORT(family, name)            \
    namespace zan::u8 { decltype(::name) name; } \
    namespace zan::n8 { decltype(::name) name; }
#include "frame/exports.inc"
#undef ZAN_EXPORT
