// SPDX-License-Identifier: MIT
#include "line/crossing.hpp"

#include <algorithm>
#include <cmath>

#include "line/measure.hpp"
#include "line/truncation.hpp"

namespace vexo {

namespace {

// Line a or b reduced to what the crossing needs, copied so that writing
// the result cannot change an operand still to be read.
struct Segment {
    GeomPoint p0;
    GeomPoint p1;
};

bool within_on_grid(double v, double end0, double end1) {
    const double r = round4(v);
    return round4(std::min(end0, end1)) <= r && r <= round4(std::max(end0, end1));
}

bool contains_on_grid(const Segment &s, double x, double y) {
    return within_on_grid(x, s.p0.x, s.p1.x) && within_on_grid(y, s.p0.y, s.p1.y);
}

double slope(const Segment &s, double dx) {
    return (s.p1.y - s.p0.y) / dx;
}

// z at (x, y) interpolated along segment a by 2D distance from its start.
double z_along(const Segment &a, double x, double y) {
    const double length = segment_length(a.p0, a.p1, true);
    if (!(length > 0.0)) return a.p0.z;
    GeomPoint at = a.p0;
    at.x = x;
    at.y = y;
    return a.p0.z + (segment_length(a.p0, at, true) / length) * (a.p1.z - a.p0.z);
}

} // namespace

double round4(double v) {
    const double scale = std::pow(10.0, 4.0);
    const double sign = v >= 0.0 ? 1.0 : -1.0;
    return static_cast<double>(truncate_to_int64(v * scale + sign * 0.5)) / scale;
}

uint32_t line_crossing(const GeomPoint &a0, const GeomPoint &a1, bool a_unbounded,
                       const GeomPoint &b0, const GeomPoint &b1, bool b_unbounded, GeomPoint *out) {
    const Segment a{a0, a1};
    const Segment b{b0, b1};
    out->flags = a.p0.flags & a.p1.flags & b.p0.flags & b.p1.flags & VEXO_POINT_KEEP;

    // Vertical means exactly vertical: a tolerance here would move the
    // crossings of steep lines, which hosts compare bit for bit.
    const double dxa = a.p1.x - a.p0.x;
    const double dxb = b.p1.x - b.p0.x;
    double x;
    double y;
    if (dxa == 0.0 && dxb == 0.0) {
        return a.p0.x == b.p0.x ? VEXO_CROSSING_COINCIDENT : VEXO_CROSSING_PARALLEL;
    } else if (dxa == 0.0) {
        const double mb = slope(b, dxb);
        x = a.p0.x;
        y = b.p0.y - b.p0.x * mb + a.p0.x * mb;
    } else if (dxb == 0.0) {
        const double ma = slope(a, dxa);
        x = b.p0.x;
        y = a.p0.y - a.p0.x * ma + b.p0.x * ma;
    } else {
        const double ma = slope(a, dxa);
        const double mb = slope(b, dxb);
        const double ca = a.p0.y - a.p0.x * ma;
        const double cb = b.p0.y - b.p0.x * mb;
        if (round4(ma) == round4(mb))
            return round4(ca) == round4(cb) ? VEXO_CROSSING_COINCIDENT : VEXO_CROSSING_PARALLEL;
        x = (cb - ca) / (ma - mb);
        y = x * ma + ca;
    }
    out->x = x;
    out->y = y;
    out->z = 0.0;
    if (!a_unbounded && !contains_on_grid(a, x, y)) return VEXO_CROSSING_OUTSIDE;
    if (!b_unbounded && !contains_on_grid(b, x, y)) return VEXO_CROSSING_OUTSIDE;
    out->z = z_along(a, x, y);
    return VEXO_CROSSING_FOUND;
}

} // namespace vexo
