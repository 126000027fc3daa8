// Camera pipeline tools: fused resize, colour conversion to 16-bit RGB and
// rotation, and 4:2:2 to 4:2:0 conversion with rotation.  Plain code,
// instantiated per factor, interpolation, colour format and rotation by
// templates, so that no test stands inside the pixel loops; each processor
// path compiles its own copy.  There is no vector kernel here, so there is
// no catalogue: the tests hold the exports to a double-precision model and
// to the rotation's index arithmetic.
#pragma once

#include "zanvc.h"
