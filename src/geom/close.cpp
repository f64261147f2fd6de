// SPDX-License-Identifier: MIT
// Closing polylines whose ends nearly meet.
#include <cmath>

#include "geom/marking.hpp"
#include "geom/polylines.hpp"

namespace vexo {
namespace {

bool same_place(const GeomPoint &a, const GeomPoint &b) {
    return a.x == b.x && a.y == b.y && a.z == b.z;
}

// Points of the polyline without a closing copy of the first.
uint32_t distinct_points(const GeomPoint *points, const Span &s) {
    if (s.size() >= 2 && same_place(points[s.begin], points[s.end - 1])) return s.size() - 1;
    return s.size();
}

} // namespace

uint32_t close_polylines(const GeomPoint *points, uint32_t count, double tolerance,
                         uint32_t options, std::vector<GeomPoint> *out) {
    for (const Span &s : split_polylines(points, count)) {
        if ((options & VEXO_CLOSE_DROP_DEGENERATE) && distinct_points(points, s) < 3) continue;
        const GeomPoint &first = points[s.begin], &last = points[s.end - 1];
        const double gap = std::hypot(last.x - first.x, last.y - first.y);
        const bool closes = s.size() >= 2 && gap <= tolerance && !same_place(first, last);
        out->insert(out->end(), points + s.begin, points + s.end);
        if (!closes) continue;
        GeomPoint &end = out->back();
        if (options & VEXO_CLOSE_SNAP) {
            end.x = first.x;
            end.y = first.y;
            end.z = first.z;
        } else {
            GeomPoint closing = first;
            closing.flags = end.flags;
            end.flags &= ~kEndBits;
            out->push_back(closing);
        }
    }
    return VEXO_OK;
}

} // namespace vexo
