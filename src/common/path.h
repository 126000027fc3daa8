// Every kernel source is compiled twice, once per processor path, with
// ZAN_PATH naming the path's namespace: u8 (the general SSSE3 build) or n8
// (the build tuned for in-order low-power processors).  Everything a family
// file defines lives in zan::ZAN_PATH, inline helpers and templates included,
// so the linker never merges a copy tuned for one path into the other.
#pragma once

#if !defined(ZAN_PATH)
#error "ZAN_PATH must be defined (u8 or n8) when compiling a kernel source"
#endif

#define ZAN_STR2(x) #x
#define ZAN_STR(x) ZAN_STR2(x)
#define ZAN_PATH_NAME ZAN_STR(ZAN_PATH)
#define ZAN_PATH_IS_N8 (ZAN_PATH_NAME[0] == 'n')
