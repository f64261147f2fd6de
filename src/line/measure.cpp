// SPDX-License-Identifier: MIT
#include "line/measure.hpp"

#include <cmath>

#include "core/constants.hpp"
#include "line/truncation.hpp"

namespace vexo {

namespace {

bool between(double v, double end0, double end1) {
    return (end0 <= v && v <= end1) || (end1 <= v && v <= end0);
}

} // namespace

double segment_length(const GeomPoint &a, const GeomPoint &b, bool only2d) {
    return only2d ? point_distance<false>(a, b) : point_distance<true>(a, b);
}

uint32_t dot_count(double length, double spacing, double extra) {
    const int64_t dots = truncate_to_int64(std::ceil((length + extra) / spacing));
    return static_cast<uint32_t>(static_cast<uint64_t>(dots));
}

double dot_direction(const GeomPoint &a, const GeomPoint &b, double d[3]) {
    d[0] = b.x - a.x;
    d[1] = b.y - a.y;
    d[2] = b.z - a.z;
    const double len = std::sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
    // Coincident ends leave a zero direction: every dot lands on a.
    if (std::fabs(len) > kZeroTolerance) {
        d[0] /= len;
        d[1] /= len;
        d[2] /= len;
    }
    return len;
}

bool place_dot(const GeomPoint &a, const GeomPoint &b, double spacing, int32_t index, double offset,
               GeomPoint *out) {
    double d[3];
    dot_direction(a, b, d);
    const double dx = d[0], dy = d[1], dz = d[2];
    const double steps = static_cast<double>(index);
    const double x = a.x + dx * spacing * steps + dx * offset;
    const double y = a.y + dy * spacing * steps + dy * offset;
    const double z = a.z + dz * spacing * steps + dz * offset;
    // Decided before writing, so out may be a or b itself.
    const bool inside = between(x, a.x, b.x) && between(y, a.y, b.y) && between(z, a.z, b.z);
    out->x = x;
    out->y = y;
    out->z = z;
    out->flags = 0;
    return inside;
}

void difference_2d(const GeomPoint &a, const GeomPoint &b, double out[2]) {
    out[0] = snap_to_zero(b.x - a.x);
    out[1] = snap_to_zero(b.y - a.y);
}

void difference_3d(const GeomPoint &a, const GeomPoint &b, double out[3]) {
    out[0] = b.x - a.x;
    out[1] = b.y - a.y;
    out[2] = b.z - a.z;
}

} // namespace vexo
