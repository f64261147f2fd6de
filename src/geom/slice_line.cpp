// SPDX-License-Identifier: MIT
// Slicing by a straight line and into bands.
#include <algorithm>

#include "geom/marking.hpp"
#include "geom/slice.hpp"

namespace vexo {
namespace {

constexpr int kLeft = 0;
constexpr int kRight = 1;

struct Line {
    double x0, y0, dx, dy;
    // > 0 left of the directed line, < 0 right, 0 on it.
    double side(const GeomPoint &p) const { return dx * (p.y - y0) - dy * (p.x - x0); }
};

void add(std::vector<Interval> *out, uint32_t keep, double t0, double t1, int side) {
    const uint32_t wanted = side == kLeft ? VEXO_SLICE_LEFT : VEXO_SLICE_RIGHT;
    if ((keep & wanted) && t0 < t1) out->push_back({t0, t1, side});
}

// Points on the line belong to both sides where a segment leaves it, and a
// segment along the line belongs to the right.
void cut_by_line(const Line &line, uint32_t keep, const GeomPoint &a, const GeomPoint &b,
                 std::vector<Interval> *out) {
    const double sa = line.side(a), sb = line.side(b);
    if (sa == 0.0 && sb == 0.0) {
        add(out, keep, 0.0, 1.0, kRight);
    } else if (sa >= 0.0 && sb >= 0.0) {
        add(out, keep, 0.0, 1.0, kLeft);
    } else if (sa <= 0.0 && sb <= 0.0) {
        add(out, keep, 0.0, 1.0, kRight);
    } else {
        const double t = sa / (sa - sb);
        add(out, keep, 0.0, t, sa > 0.0 ? kLeft : kRight);
        add(out, keep, t, 1.0, sa > 0.0 ? kRight : kLeft);
    }
}

double along(const GeomPoint &p, uint32_t axis) {
    return axis == VEXO_BAND_Y ? p.y : p.x;
}

void cut_to_slab(uint32_t axis, double lo, double hi, const GeomPoint &a, const GeomPoint &b,
                 std::vector<Interval> *out) {
    const double ca = along(a, axis), cb = along(b, axis);
    if (ca == cb) {
        if (lo <= ca && ca <= hi) out->push_back({0.0, 1.0, 0});
        return;
    }
    const double ta = (lo - ca) / (cb - ca), tb = (hi - ca) / (cb - ca);
    const double t0 = std::max(0.0, std::min(ta, tb)), t1 = std::min(1.0, std::max(ta, tb));
    if (t0 < t1) out->push_back({t0, t1, 0});
}

} // namespace

uint32_t slice_by_line(const GeomPoint *points, uint32_t count, const double line[4],
                       uint32_t options, std::vector<GeomPoint> *out) {
    const Line l{line[0], line[1], line[2] - line[0], line[3] - line[1]};
    cut_polylines(
        points, count,
        [&](const GeomPoint &a, const GeomPoint &b, std::vector<Interval> *iv) {
            cut_by_line(l, options, a, b, iv);
        },
        [&](const GeomPoint &p) {
            return (options & (l.side(p) > 0.0 ? VEXO_SLICE_LEFT : VEXO_SLICE_RIGHT)) != 0;
        },
        out);
    return VEXO_OK;
}

uint32_t slice_slab(const GeomPoint *points, uint32_t count, uint32_t axis, double lo, double hi,
                    std::vector<GeomPoint> *out) {
    cut_polylines(
        points, count,
        [&](const GeomPoint &a, const GeomPoint &b, std::vector<Interval> *iv) {
            cut_to_slab(axis, lo, hi, a, b, iv);
        },
        [&](const GeomPoint &p) { return lo <= along(p, axis) && along(p, axis) <= hi; }, out);
    return VEXO_OK;
}

} // namespace vexo
