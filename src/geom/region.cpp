// SPDX-License-Identifier: MIT
#include "geom/region.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include "core/constants.hpp"

namespace vexo {

Frame Frame::turned(double degrees, double ox, double oy) {
    Frame f;
    f.ox = ox;
    f.oy = oy;
    const double radians = degrees_to_radians(degrees);
    f.c = std::cos(radians);
    f.s = std::sin(radians);
    return f;
}

std::vector<Edge> ring_edges(const GeomPoint *points, const std::vector<Span> &rings,
                             const Frame &frame) {
    std::vector<Edge> edges;
    size_t total = 0;
    for (const Span &r : rings)
        if (r.size() >= 3) total += r.size();
    edges.reserve(total);
    for (const Span &r : rings) {
        if (r.size() < 3) continue;
        const GeomPoint *a = &points[r.end - 1];
        for (uint32_t i = r.begin; i < r.end; ++i) {
            const GeomPoint *b = &points[i];
            edges.push_back({frame.u(a->x, a->y), frame.v(a->x, a->y), frame.u(b->x, b->y),
                             frame.v(b->x, b->y)});
            a = b;
        }
    }
    return edges;
}

bool inside_even_odd(const std::vector<Edge> &edges, double u, double v) {
    bool odd = false;
    for (const Edge &e : edges)
        if (crosses_level(e, v) && level_crossing(e, v) > u) odd = !odd;
    return odd;
}

bool inside_even_odd(const Edge *const *edges, size_t n, double u, double v) {
    bool odd = false;
    for (size_t i = 0; i < n; ++i)
        if (crosses_level(*edges[i], v) && level_crossing(*edges[i], v) > u) odd = !odd;
    return odd;
}

namespace {

double distance_to_edge(const Edge &e, double u, double v) {
    const double du = e.bu - e.au, dv = e.bv - e.av;
    const double len2 = du * du + dv * dv;
    double t = len2 > 0.0 ? ((u - e.au) * du + (v - e.av) * dv) / len2 : 0.0;
    t = std::min(1.0, std::max(0.0, t));
    return std::hypot(e.au + t * du - u, e.av + t * dv - v);
}

} // namespace

double distance_to_edges(const Edge *const *edges, size_t n, double u, double v) {
    double best = std::numeric_limits<double>::infinity();
    for (size_t i = 0; i < n; ++i) best = std::min(best, distance_to_edge(*edges[i], u, v));
    return best;
}

} // namespace vexo
