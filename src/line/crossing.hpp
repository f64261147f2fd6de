// SPDX-License-Identifier: MIT
// Crossing of two lines or segments in the XY plane.
#pragma once

#include <cstdint>

#include "vexo.h"

namespace vexo {

// Round half away from zero to 4 decimals, through a 64-bit truncation.
// Slopes, offsets and bounds of crossings are compared on this grid.
double round4(double v);

// Crossing of line a (a0-a1) and line b (b0-b1); returns a VEXO_CROSSING_
// code.  out.flags is always written; x, y, z as the code describes.  The
// inputs are read before out is written, so out may be one of them.
uint32_t line_crossing(const GeomPoint &a0, const GeomPoint &a1, bool a_unbounded,
                       const GeomPoint &b0, const GeomPoint &b1, bool b_unbounded, GeomPoint *out);

} // namespace vexo
