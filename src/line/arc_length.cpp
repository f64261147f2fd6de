// SPDX-License-Identifier: MIT
#include "line/arc_length.hpp"

#include <cmath>

#include "core/constants.hpp"
#include "line/measure.hpp"

namespace vexo {

uint32_t polyline_end(const GeomPoint *points, uint32_t count, uint32_t first) {
    uint32_t i = first;
    while (i + 1 < count && (points[i].flags & VEXO_POINT_END) == 0) ++i;
    return i;
}

double measured_length(const GeomPoint &a, const GeomPoint &b, bool only2d) {
    return only2d ? point_distance<false>(a, b) : point_distance<true>(a, b);
}

double polyline_length(const GeomPoint *points, uint32_t first, uint32_t last, bool only2d) {
    double length = 0.0;
    for (uint32_t i = first; i < last; ++i)
        length += measured_length(points[i], points[i + 1], only2d);
    return length;
}

bool is_closed_ring(const GeomPoint *points, uint32_t first, uint32_t last, bool only2d) {
    if (last - first < 2) return false;
    const GeomPoint &a = points[first];
    const GeomPoint &b = points[last];
    return a.x == b.x && a.y == b.y && (only2d || a.z == b.z);
}

SegmentFrame::SegmentFrame(const GeomPoint &a, const GeomPoint &b, double measured, double spacing)
    : a_(a) {
    // The direction of vexo_line_get_dot, so that a dot lands on the bit
    // that function would give it.
    double d[3];
    const double len = dot_direction(a, b, d);
    // Distances in the pattern's measure become distances along d: exactly
    // 1 for a 3D measure; a raw (too short to normalise) difference takes
    // fractions of the segment.
    factor_ = std::fabs(len) > kZeroTolerance ? len / measured : 1.0 / measured;
    ux_ = d[0];
    uy_ = d[1];
    uz_ = d[2];
    const double scaled = spacing * factor_;
    step_x_ = ux_ * scaled;
    step_y_ = uy_ * scaled;
    step_z_ = uz_ * scaled;
}

} // namespace vexo
