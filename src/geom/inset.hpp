// SPDX-License-Identifier: MIT
// Shrinking the even-odd region of a set of rings by a distance.
#pragma once

#include <vector>

#include "geom/polylines.hpp"
#include "vexo.h"

namespace vexo {

// The rings of the region shrunk by `distance` (> 0), each closed
// implicitly and ended by VEXO_POINT_END, z 0.  Empty when nothing is left.
std::vector<GeomPoint> inset_rings(const GeomPoint *points, const std::vector<Span> &rings,
                                   double distance);

} // namespace vexo
