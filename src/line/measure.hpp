// SPDX-License-Identifier: MIT
// Single-segment measurement: length, dot spacing along a segment and the
// difference vector of its end points.
#pragma once

#include <cmath>
#include <cstdint>

#include "vexo.h"

namespace vexo {

// |a - b|^2 with the z term chosen at compile time, for the hot loops of the
// point-list passes.  Differences are taken a - b and summed x, y, z: every
// distance in the library is the root of exactly this sum.
template <bool WithZ> inline double squared_distance(const GeomPoint &a, const GeomPoint &b) {
    const double dx = a.x - b.x;
    const double dy = a.y - b.y;
    if constexpr (WithZ) {
        const double dz = a.z - b.z;
        return dx * dx + dy * dy + dz * dz;
    } else {
        return dx * dx + dy * dy;
    }
}

// |a - b|, the root of squared_distance.
template <bool WithZ> inline double point_distance(const GeomPoint &a, const GeomPoint &b) {
    return std::sqrt(squared_distance<WithZ>(a, b));
}

// |a - b| over x, y and z, or over x and y when only2d.
double segment_length(const GeomPoint &a, const GeomPoint &b, bool only2d);

// ceil((length + extra) / spacing) as the low 32 bits of a 64-bit integer.
uint32_t dot_count(double length, double spacing, double extra);

// The direction vexo_line_get_dot places along: b - a divided by its 3D
// length when that exceeds the zero tolerance, the raw difference
// otherwise.  Returns the length.
double dot_direction(const GeomPoint &a, const GeomPoint &b, double d[3]);

// The dot spacing * index + offset along a->b; true when it lies inside the
// segment's bounding box (bounds inclusive).
bool place_dot(const GeomPoint &a, const GeomPoint &b, double spacing, int32_t index, double offset,
               GeomPoint *out);

// b - a in x and y, components below the zero tolerance snapped to 0.
void difference_2d(const GeomPoint &a, const GeomPoint &b, double out[2]);

// b - a in x, y and z, unsnapped.
void difference_3d(const GeomPoint &a, const GeomPoint &b, double out[3]);

} // namespace vexo
