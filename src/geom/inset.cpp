// SPDX-License-Identifier: MIT
// The inset goes through Clipper: an even-odd union first turns any set of
// rings into outer contours and holes of consistent orientation, which the
// offset needs, and the offset then moves every contour inwards.  Clipper
// works on integers, so coordinates are taken relative to the centre of the
// rings' bounds and scaled by a power of two that puts the largest at about
// 2^30, inside Clipper's fast 64-bit range and exact to ~1e-9 of the size.
#include "geom/inset.hpp"

#include <polyclipping/clipper.hpp>

#include <algorithm>
#include <cmath>

namespace vexo {
namespace {

struct IntegerGrid {
    double cx = 0.0, cy = 0.0, scale = 1.0;

    ClipperLib::IntPoint to_grid(const GeomPoint &p) const {
        return {static_cast<ClipperLib::cInt>(std::llround((p.x - cx) * scale)),
                static_cast<ClipperLib::cInt>(std::llround((p.y - cy) * scale))};
    }
    GeomPoint from_grid(const ClipperLib::IntPoint &q) const {
        GeomPoint p{};
        p.x = cx + static_cast<double>(q.X) / scale;
        p.y = cy + static_cast<double>(q.Y) / scale;
        return p;
    }
};

IntegerGrid grid_for(const GeomPoint *points, const std::vector<Span> &rings) {
    double x0 = INFINITY, x1 = -INFINITY, y0 = INFINITY, y1 = -INFINITY;
    for (const Span &r : rings)
        for (uint32_t i = r.begin; i < r.end; ++i) {
            x0 = std::min(x0, points[i].x);
            x1 = std::max(x1, points[i].x);
            y0 = std::min(y0, points[i].y);
            y1 = std::max(y1, points[i].y);
        }
    IntegerGrid g;
    g.cx = 0.5 * x0 + 0.5 * x1;
    g.cy = 0.5 * y0 + 0.5 * y1;
    const double reach = std::max({x1 - g.cx, g.cx - x0, y1 - g.cy, g.cy - y0});
    g.scale = reach > 0.0 ? std::ldexp(1.0, 30 - std::ilogb(reach) - 1) : 1.0;
    return g;
}

} // namespace

std::vector<GeomPoint> inset_rings(const GeomPoint *points, const std::vector<Span> &rings,
                                   double distance) {
    std::vector<GeomPoint> out;
    const IntegerGrid grid = grid_for(points, rings);
    ClipperLib::Paths paths;
    for (const Span &r : rings) {
        if (r.size() < 3) continue;
        ClipperLib::Path path;
        path.reserve(r.size());
        for (uint32_t i = r.begin; i < r.end; ++i) path.push_back(grid.to_grid(points[i]));
        paths.push_back(std::move(path));
    }
    if (paths.empty()) return out;

    ClipperLib::Clipper union_of_rings;
    union_of_rings.AddPaths(paths, ClipperLib::ptSubject, true);
    ClipperLib::Paths region;
    union_of_rings.Execute(ClipperLib::ctUnion, region, ClipperLib::pftEvenOdd,
                           ClipperLib::pftEvenOdd);

    const double delta = distance * grid.scale;
    // Every ring lies within 2^30 of the centre: a larger inset leaves
    // nothing, and would only push Clipper's intermediate points out of range.
    if (delta > 2147483648.0) return out;
    // About a thousandth of the inset: round corners within 0.1 % of it.
    ClipperLib::ClipperOffset offset(2.0, std::max(0.25, delta / 1000.0));
    offset.AddPaths(region, ClipperLib::jtRound, ClipperLib::etClosedPolygon);
    ClipperLib::Paths shrunk;
    offset.Execute(shrunk, -delta);

    for (const ClipperLib::Path &path : shrunk) {
        if (path.size() < 3) continue;
        for (const ClipperLib::IntPoint &q : path) out.push_back(grid.from_grid(q));
        out.back().flags = VEXO_POINT_END;
    }
    return out;
}

} // namespace vexo
