// SPDX-License-Identifier: MIT
// The parts of polylines inside (or outside) a region of rings, and inside
// a rectangle.
#include <algorithm>
#include <cstdlib>

#include "geom/marking.hpp"
#include "geom/polylines.hpp"
#include "geom/region.hpp"
#include "geom/slice.hpp"
#include "line/inner_part.hpp"

namespace vexo {
namespace {

// Parameters t in (0, 1) where a->b crosses an edge (parallel edges give
// none: the midpoint test below decides pieces along them).
void edge_crossings(const std::vector<Edge> &edges, const GeomPoint &a, const GeomPoint &b,
                    std::vector<double> *ts) {
    const double rx = b.x - a.x, ry = b.y - a.y;
    for (const Edge &e : edges) {
        const double ex = e.bu - e.au, ey = e.bv - e.av;
        const double denom = rx * ey - ry * ex;
        if (denom == 0.0) continue;
        const double cx = e.au - a.x, cy = e.av - a.y;
        const double t = (cx * ey - cy * ex) / denom;
        const double u = (cx * ry - cy * rx) / denom;
        if (u >= 0.0 && u <= 1.0 && t > 0.0 && t < 1.0) ts->push_back(t);
    }
}

void cut_by_region(const std::vector<Edge> &edges, bool outside, const GeomPoint &a,
                   const GeomPoint &b, std::vector<Interval> *out) {
    std::vector<double> ts{0.0};
    edge_crossings(edges, a, b, &ts);
    ts.push_back(1.0);
    std::sort(ts.begin(), ts.end());
    ts.erase(std::unique(ts.begin(), ts.end()), ts.end());
    for (size_t i = 0; i + 1 < ts.size(); ++i) {
        const double tm = 0.5 * (ts[i] + ts[i + 1]);
        const double x = a.x + tm * (b.x - a.x), y = a.y + tm * (b.y - a.y);
        if (inside_even_odd(edges, x, y) == outside) continue;
        if (!out->empty() && out->back().t1 == ts[i])
            out->back().t1 = ts[i + 1]; // the same piece goes on
        else
            out->push_back({ts[i], ts[i + 1], 0});
    }
}

bool same_place(const GeomPoint &a, const GeomPoint &b) {
    return a.x == b.x && a.y == b.y && a.z == b.z;
}

struct Piece {
    std::vector<GeomPoint> *out;
    size_t start;
    void end() {
        if (out->size() - start >= 2)
            out->back().flags |= VEXO_POINT_END;
        else
            out->resize(start);
        start = out->size();
    }
};

} // namespace

uint32_t part_in_region(const GeomPoint *points, uint32_t count, const GeomPoint *rings,
                        uint32_t ring_count, bool outside, std::vector<GeomPoint> *out) {
    const std::vector<Edge> edges = ring_edges(rings, split_polylines(rings, ring_count), Frame{});
    cut_polylines(
        points, count,
        [&](const GeomPoint &a, const GeomPoint &b, std::vector<Interval> *iv) {
            cut_by_region(edges, outside, a, b, iv);
        },
        [&](const GeomPoint &p) { return inside_even_odd(edges, p.x, p.y) != outside; }, out);
    return VEXO_OK;
}

uint32_t part_in_rect(const GeomPoint *points, uint32_t count, const double rect[6],
                      std::vector<GeomPoint> *out) {
    const ClipRect r = ClipRect::from_corners(rect);
    for (const Span &s : split_polylines(points, count)) {
        if (s.size() == 1) {
            if (r.contains(points[s.begin])) {
                out->push_back(inner_point(points[s.begin]));
                out->back().flags |= VEXO_POINT_END;
            }
            continue;
        }
        Piece piece{out, out->size()};
        for (uint32_t i = s.begin; i + 1 < s.end; ++i) {
            GeomPoint *part = inner_part(points[i], points[i + 1], r);
            if (!part) {
                piece.end();
                continue;
            }
            const GeomPoint first = inner_point(part[0]), second = inner_point(part[1]);
            std::free(part);
            if (out->size() == piece.start || !same_place(out->back(), first)) {
                piece.end();
                out->push_back(first);
            }
            out->push_back(second);
            if (!same_place(second, points[i + 1])) piece.end(); // it left the rectangle
        }
        piece.end();
    }
    return VEXO_OK;
}

} // namespace vexo
