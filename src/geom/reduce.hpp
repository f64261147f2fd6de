// SPDX-License-Identifier: MIT
// Point reduction: dropping points that add nothing to a polyline, either
// because they lie too close to the last kept point or because the path
// barely turns there.  Dropped points are marked processed and compacted
// away, so every function returns the new count; order is kept.
#pragma once

#include <cstdint>

#include "vexo.h"

namespace vexo {

// Points closer than min_dist to the anchor, then two-point polylines
// shorter than min_dist.  measure_z includes z in the distances.
uint32_t reduce_by_distance(GeomPoint *points, uint32_t count, double min_dist,
                            bool measure_z) noexcept;

// Points where the direction turns by a positive angle below max_degrees
// (x, y and z).
uint32_t reduce_by_angle_3d(GeomPoint *points, uint32_t count, double max_degrees) noexcept;

// Points where the direction turns by a positive angle below max_radians
// (x and y; a full reversal counts as pi and needs no positive test).
uint32_t reduce_by_angle_2d(GeomPoint *points, uint32_t count, double max_radians) noexcept;

} // namespace vexo
