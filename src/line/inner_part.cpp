// SPDX-License-Identifier: MIT
#include "line/inner_part.hpp"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "core/constants.hpp"
#include "core/point_buffer.hpp"
#include "line/crossing.hpp"

namespace vexo {

namespace {

bool both_outside_one_side(const GeomPoint &a, const GeomPoint &b, const ClipRect &r) {
    return (a.x < r.left && b.x < r.left) || (a.x > r.right && b.x > r.right) ||
           (a.y > r.top && b.y > r.top) || (a.y < r.bottom && b.y < r.bottom);
}

GeomPoint corner(double x, double y) {
    GeomPoint p{};
    p.x = x;
    p.y = y;
    return p;
}

// Crossings of a->b with the rectangle's edges, gathered into the two slots
// of the result.  The edge order is fixed and the last two edges are only
// tried while a slot is free; a segment through a corner meets both edges
// there and fills both slots with the same point.
uint32_t collect_crossings(const GeomPoint &a, const GeomPoint &b, const ClipRect &r,
                           GeomPoint slots[2]) {
    const GeomPoint top_left = corner(r.left, r.top);
    const GeomPoint top_right = corner(r.right, r.top);
    const GeomPoint bottom_right = corner(r.right, r.bottom);
    const GeomPoint bottom_left = corner(r.left, r.bottom);
    const std::pair<const GeomPoint *, const GeomPoint *> edges[] = {
        {&top_left, &top_right},
        {&top_right, &bottom_right},
        {&bottom_right, &bottom_left},
        {&bottom_left, &top_left},
    };
    uint32_t found = 0;
    for (size_t e = 0; e < 4; ++e) {
        if (e >= 2 && found >= 2) break;
        GeomPoint crossing{};
        if (line_crossing(a, b, false, *edges[e].first, *edges[e].second, false, &crossing) ==
                VEXO_CROSSING_FOUND &&
            found < 2)
            slots[found++] = crossing;
    }
    return found;
}

bool runs_against(double along, double result) {
    return (along > 0.0 && result < 0.0) || (along < 0.0 && result > 0.0);
}

// Turns the result round when it runs against a->b.
void orient_like(const GeomPoint &a, const GeomPoint &b, GeomPoint part[2]) {
    const double dx = snap_to_zero(b.x - a.x);
    const double dy = snap_to_zero(b.y - a.y);
    const double ex = snap_to_zero(part[1].x - part[0].x);
    const double ey = snap_to_zero(part[1].y - part[0].y);
    if (runs_against(dx, ex) || runs_against(dy, ey)) std::swap(part[0], part[1]);
}

} // namespace

GeomPoint *inner_part(const GeomPoint &a, const GeomPoint &b, const ClipRect &rect) noexcept {
    if (both_outside_one_side(a, b, rect)) return nullptr;
    GeomPoint *part = resize_points(nullptr, 2);
    if (!part) return nullptr;
    std::memset(part, 0, 2 * sizeof(GeomPoint));

    const bool a_inside = rect.contains(a);
    if (a_inside && rect.contains(b)) {
        part[0] = a;
        part[1] = b;
        return part;
    }
    const uint32_t found = collect_crossings(a, b, rect, part);
    if (found == 0) {
        std::free(part);
        return nullptr;
    }
    if (found == 1) {
        // The end that lies inside completes the piece (b when neither does).
        part[1] = a_inside ? a : b;
        part[0].flags |= VEXO_POINT_END;
    } else {
        part[1].flags |= VEXO_POINT_END;
    }
    orient_like(a, b, part);
    part[0].flags &= ~VEXO_POINT_END;
    part[1].flags |= VEXO_POINT_END;
    return part;
}

} // namespace vexo
