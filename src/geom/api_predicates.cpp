// SPDX-License-Identifier: MIT
// Tests of one point against a rectangle, a polygon and a triangle's plane.
// Only x and y (and z for the height) are read, flags never.
#include <cmath>

#include "vexo.h"

namespace vexo {
namespace {

constexpr uint32_t kOutside = 0;
constexpr uint32_t kInside = 1;
constexpr uint32_t kOnBorder = 2;

// Closer than this (in 3D) to a vertex, the point takes the vertex's height.
constexpr double kVertexSnap = 0.0001;

uint32_t classify_in_rect(double x, double y, double y_max, double x_min, double y_min,
                          double x_max) {
    if (x_min < x && x < x_max && y_min < y && y < y_max) return kInside;
    // One coordinate on a bound is enough: the border is the whole line.
    if (x == x_min || x == x_max) return kOnBorder;
    if (y == y_min || y == y_max) return kOnBorder;
    return kOutside;
}

// Crossing number along the ray towards +X; the last vertex closes the
// polygon back to the first.
uint32_t classify_in_polygon(double px, double py, const GeomPoint *polygon, int32_t count) {
    bool odd = false;
    const GeomPoint *a = &polygon[count - 1];
    for (int32_t i = 0; i < count; ++i) {
        const GeomPoint *b = &polygon[i];
        if ((a->y > py) != (b->y > py)) {
            const double x = (py - a->y) * (b->x - a->x) / (b->y - a->y) + a->x;
            if (x > px) odd = !odd;
        }
        a = b;
    }
    return odd ? kInside : kOutside;
}

double distance3(const GeomPoint &p, const GeomPoint &k) {
    const double dx = p.x - k.x;
    const double dy = p.y - k.y;
    const double dz = p.z - k.z;
    return std::sqrt(dx * dx + dy * dy + dz * dz);
}

// Plane height through barycentric coordinates in XY (extrapolated
// outside the triangle).
double barycentric_height(const GeomPoint &p, const GeomPoint &a, const GeomPoint &b,
                          const GeomPoint &c) {
    const double e1x = b.x - a.x, e1y = b.y - a.y;
    const double e2x = c.x - a.x, e2y = c.y - a.y;
    const double wx = p.x - a.x, wy = p.y - a.y;
    const double d00 = e1x * e1x + e1y * e1y;
    const double d01 = e1x * e2x + e1y * e2y;
    const double d11 = e2x * e2x + e2y * e2y;
    const double d20 = wx * e1x + wy * e1y;
    const double d21 = wx * e2x + wy * e2y;
    const double denom = d11 * d00 - d01 * d01;
    const double u = (d20 * d11 - d21 * d01) / denom;
    const double v = (d21 * d00 - d20 * d01) / denom;
    return a.z * (1 - u - v) + b.z * u + c.z * v;
}

uint32_t height_on_triangle(const GeomPoint &p, const GeomPoint *tri, double *z) {
    if (tri[0].z == tri[1].z && tri[0].z == tri[2].z) {
        *z = tri[0].z;
        return VEXO_OK;
    }
    // Full 3D distance, the point's own z included: a point high above a
    // vertex does not snap to it.
    for (int k = 0; k < 3; ++k) {
        const double d = distance3(p, tri[k]);
        if (d < 0.0) return VEXO_ERROR_NUMERIC;
        if (d < kVertexSnap) {
            *z = tri[k].z;
            return VEXO_OK;
        }
    }
    *z = barycentric_height(p, tri[0], tri[1], tri[2]);
    return VEXO_OK;
}

} // namespace
} // namespace vexo

extern "C" {

VEXO_API uint32_t vexo_geom_point_in_rect(const GeomPoint *point, double y_max, double x_min,
                                          double y_min, double x_max) {
    if (!point) return vexo::kOutside;
    return vexo::classify_in_rect(point->x, point->y, y_max, x_min, y_min, x_max);
}

VEXO_API uint32_t vexo_geom_point_in_polygon(const GeomPoint *point, const GeomPoint *polygon,
                                             int32_t count) {
    if (!point || !polygon || count < 3) return vexo::kOutside;
    return vexo::classify_in_polygon(point->x, point->y, polygon, count);
}

VEXO_API uint32_t vexo_geom_point_height(const GeomPoint *point, const GeomPoint *triangle,
                                         double *z) {
    if (!point || !triangle || !z) return VEXO_ERROR_INVALID_PARAMETER;
    return vexo::height_on_triangle(*point, triangle, z);
}

} // extern "C"
