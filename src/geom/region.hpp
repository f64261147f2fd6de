// SPDX-License-Identifier: MIT
// The even-odd region of a set of rings, as edges in a turned frame.  The
// crossing rule is the one of the point-in-polygon test: an edge from a
// (the previous vertex) to b counts for the level v when (a.v > v) differs
// from (b.v > v), at u = (v - a.v) * (b.u - a.u) / (b.v - a.v) + a.u.  A
// level through a vertex therefore meets exactly one of its two edges, and
// an edge along the level meets it not at all, so parity never flips there.
#pragma once

#include <cstdint>
#include <vector>

#include "geom/polylines.hpp"
#include "vexo.h"

namespace vexo {

// A rotation by `degrees` about (ox, oy): frame coordinates u along the
// turned x axis, v across it.  Degrees become radians with the
// single-precision pi, as everywhere in the library.
struct Frame {
    double ox = 0.0, oy = 0.0;
    double c = 1.0, s = 0.0;

    static Frame turned(double degrees, double ox, double oy);
    double u(double x, double y) const { return (x - ox) * c + (y - oy) * s; }
    double v(double x, double y) const { return (y - oy) * c - (x - ox) * s; }
    double x(double u, double v) const { return ox + u * c - v * s; }
    double y(double u, double v) const { return oy + u * s + v * c; }
};

struct Edge {
    double au, av; // previous vertex
    double bu, bv; // this vertex
};

// The edges of every ring with at least 3 points, each ring closed from its
// last point back to its first, in frame coordinates.
std::vector<Edge> ring_edges(const GeomPoint *points, const std::vector<Span> &rings,
                             const Frame &frame);

// Whether the edge counts for level v, and where it meets it.
inline bool crosses_level(const Edge &e, double v) {
    return (e.av > v) != (e.bv > v);
}
inline double level_crossing(const Edge &e, double v) {
    return (v - e.av) * (e.bu - e.au) / (e.bv - e.av) + e.au;
}

// Parity of crossings to the right of (u, v) over `edges`: true inside.
bool inside_even_odd(const std::vector<Edge> &edges, double u, double v);
bool inside_even_odd(const Edge *const *edges, size_t n, double u, double v);

// Distance from (u, v) to the nearest of the edges (infinity for none).
double distance_to_edges(const Edge *const *edges, size_t n, double u, double v);

} // namespace vexo
