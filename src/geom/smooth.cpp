// SPDX-License-Identifier: MIT
#include "geom/smooth.hpp"

#include "line/measure.hpp"

namespace vexo {

namespace {

bool inside_one_line(const GeomPoint &p0, const GeomPoint &p1, const GeomPoint &p2) {
    return ((p0.flags | p1.flags | p2.flags) & VEXO_POINT_END) == 0;
}

template <bool WithZ> void smoothen_pass(GeomPoint *points, uint32_t count, double max_dist) {
    if (count < 3) return;
    // In place and forward: each triple sees its first point already smoothed.
    for (uint32_t i = 0; i + 2 < count; ++i) {
        const GeomPoint &p0 = points[i];
        GeomPoint &p1 = points[i + 1];
        const GeomPoint &p2 = points[i + 2];
        if (!inside_one_line(p0, p1, p2)) continue;
        if (!(max_dist > point_distance<WithZ>(p0, p1))) continue;
        if (!(max_dist > point_distance<WithZ>(p2, p1))) continue;
        p1.x = (p1.x + p0.x + p2.x) / 3.0;
        p1.y = (p1.y + p0.y + p2.y) / 3.0;
    }
}

} // namespace

void smoothen(GeomPoint *points, uint32_t count, double max_dist, bool measure_z) noexcept {
    if (measure_z)
        smoothen_pass<true>(points, count, max_dist);
    else
        smoothen_pass<false>(points, count, max_dist);
}

} // namespace vexo
