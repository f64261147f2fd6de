// SPDX-License-Identifier: MIT
// Arc length along the polylines of a point array: where each polyline
// ends, how long it is, and where a position at arc length s lies.
#pragma once

#include <cstdint>

#include "vexo.h"

namespace vexo {

// Index of the last point of the polyline that starts at `first`: the
// first point flagged VEXO_POINT_END, or the array's last point.
uint32_t polyline_end(const GeomPoint *points, uint32_t count, uint32_t first);

// Length of segment a-b in the measure of the pattern (3D, or 2D).
double measured_length(const GeomPoint &a, const GeomPoint &b, bool only2d);

// Sum of the segment lengths of points[first..last], added from the start.
double polyline_length(const GeomPoint *points, uint32_t first, uint32_t last, bool only2d);

// A polyline of at least 3 points whose last point repeats its first
// (x and y, and z unless only2d).
bool is_closed_ring(const GeomPoint *points, uint32_t first, uint32_t last, bool only2d);

// Places positions on one segment with the arithmetic of
// vexo_line_get_dot: a + u*spacing*index + u*offset, with u the segment's
// unit direction (its raw difference when it is shorter than the zero
// tolerance).  Distances are given in the pattern's measure and converted
// here, so that in 2D a dot lands at its 2D distance with z interpolated;
// for a 3D measure the conversion factor is exactly 1.
class SegmentFrame {
public:
    // `measured` is the segment's length in the pattern's measure (> 0).
    SegmentFrame(const GeomPoint &a, const GeomPoint &b, double measured, double spacing);

    // The position spacing*index + offset (pattern measure) from a.
    GeomPoint at(int32_t index, double offset) const {
        const double steps = static_cast<double>(index);
        const double along = offset * factor_;
        GeomPoint p{};
        p.x = a_.x + step_x_ * steps + ux_ * along;
        p.y = a_.y + step_y_ * steps + uy_ * along;
        p.z = a_.z + step_z_ * steps + uz_ * along;
        return p;
    }

private:
    GeomPoint a_;
    double ux_, uy_, uz_;             // direction as vexo_line_get_dot forms it
    double factor_;                   // pattern measure -> distance along u
    double step_x_, step_y_, step_z_; // u * (spacing * factor), grouped as there
};

} // namespace vexo
