// SPDX-License-Identifier: MIT
// Regions on the integer grid as the scan-line engine's polygon sets, and
// the conversions between them and grid paths.
#pragma once

#include <boost/polygon/polygon.hpp>

#include "clip/path_set.hpp"

namespace vexo {

using GridSet = boost::polygon::polygon_set_data<int>;
using GridPoint = boost::polygon::point_data<int>;

enum class SetOperation { kUnion, kDifference };

// The region of `subject` combined with that of `operand`, each read by the
// even-odd rule: a point is inside a path list when the paths wind round it
// an odd number of times in total.  Every coordinate must lie within
// kClip2GridLimit.
void even_odd_combine(const ClipperLib::Paths &subject, const ClipperLib::Paths &operand,
                      SetOperation operation, GridSet *out);

// even_odd_combine straight to paths (see region_paths).  Paths whose
// edges are all axis-parallel take the engine's rectilinear scan, several
// times faster on such input.
void even_odd_paths(const ClipperLib::Paths &subject, const ClipperLib::Paths &operand,
                    SetOperation operation, bool keyhole, ClipperLib::Paths *out);

// The region as closed paths (no repeated closing point).  `keyhole`: one
// hole-free contour per region, counter-clockwise; otherwise every outer
// boundary counter-clockwise followed directly by its holes clockwise, so
// the region always lies to the left of each path.
void region_paths(const GridSet &region, bool keyhole, ClipperLib::Paths *out);

} // namespace vexo
