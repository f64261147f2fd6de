// SPDX-License-Identifier: MIT
// Outlines built on the boolean core: a region grown by a width is the
// region united with, for every boundary edge, the quad it sweeps outwards
// and, at every convex corner, the join figure between two such quads; a
// region shrunk by a width is the region less the same figures swept
// inwards (at the concave corners).
#pragma once

#include <polyclipping/clipper.hpp>

#include "clip2/grid_set.hpp"

namespace vexo {

// `rings` bound `region` with the region on their left (region_paths).
// Offsets by `delta` grid units (grows when positive) with `join` into
// `out`.  Every figure point must stay within kClip2GridLimit.
void offset_region(const ClipperLib::Paths &rings, const GridSet &region, ClipperLib::JoinType join,
                   double delta, GridSet *out);

} // namespace vexo
