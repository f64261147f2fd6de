// SPDX-License-Identifier: MIT
// The part of a segment that lies inside an axis-aligned rectangle.
#pragma once

#include "vexo.h"

namespace vexo {

// Clip rectangle as callers pass it: {left, top, unused, right, bottom,
// unused}.  Bounds are inclusive.
struct ClipRect {
    double left;
    double top;
    double right;
    double bottom;

    static ClipRect from_corners(const double corners[6]) {
        return ClipRect{corners[0], corners[1], corners[3], corners[4]};
    }
    bool contains(const GeomPoint &p) const {
        return left <= p.x && p.x <= right && bottom <= p.y && p.y <= top;
    }
};

// A new zero-filled two-point C-heap array running a->b with the end flag on
// its second point, or NULL when the segment misses the rectangle or memory
// runs out.
GeomPoint *inner_part(const GeomPoint &a, const GeomPoint &b, const ClipRect &rect) noexcept;

} // namespace vexo
