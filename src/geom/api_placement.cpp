// SPDX-License-Identifier: MIT
// Moving and scaling whole point arrays in place.  Only x, y and z change;
// flags and order stay, so the polyline structure survives.
#include <cmath>

#include "core/matrix.hpp"
#include "vexo.h"

namespace vexo {
namespace {

void translate_points(GeomPoint *points, uint32_t count, double dx, double dy, double dz) {
    for (GeomPoint *p = points, *end = points + count; p != end; ++p) {
        p->x += dx;
        p->y += dy;
        p->z += dz;
    }
}

// True when m has nothing but its diagonal: every other entry of the top
// three rows is +0 (finite factors give exactly that; an infinite or NaN
// factor leaves NaN off the diagonal).
bool is_plain_scaling(const double *m) {
    static const int kOffDiagonal[] = {1, 2, 3, 4, 6, 7, 8, 9, 11};
    for (int i : kOffDiagonal)
        if (!(m[i] == 0.0) || std::signbit(m[i])) return false;
    return true;
}

// Scaling goes through a full matrix mapping, not three multiplications:
// the zero off-diagonal terms still take part, so an infinite coordinate
// makes the others NaN and -0 becomes +0 exactly as a mapped point would.
// For a plain scaling and a finite point those terms are all zeros, and
// m0*x + (+-0) + (+-0) + (+0) is m0*x + 0.0 to the bit, so the common case
// skips the zero products.
void scale_points(GeomPoint *points, uint32_t count, double sx, double sy, double sz) {
    double m[kMatrixSize];
    set_identity(m);
    scale(m, sx, sy, sz);
    const bool plain = is_plain_scaling(m);
    const double fx = m[0], fy = m[5], fz = m[10];
    for (GeomPoint *p = points, *end = points + count; p != end; ++p) {
        if (plain && std::isfinite(p->x) && std::isfinite(p->y) && std::isfinite(p->z)) {
            p->x = fx * p->x + 0.0;
            p->y = fy * p->y + 0.0;
            p->z = fz * p->z + 0.0;
        } else {
            map_point(m, *p, p);
        }
    }
}

} // namespace
} // namespace vexo

extern "C" {

VEXO_API void vexo_geom_translate(GeomPoint *points, uint32_t count, double dx, double dy,
                                  double dz) {
    if (points && count > 0) vexo::translate_points(points, count, dx, dy, dz);
}

VEXO_API void vexo_geom_scale(GeomPoint *points, uint32_t count, double sx, double sy, double sz) {
    if (points && count > 0) vexo::scale_points(points, count, sx, sy, sz);
}

} // extern "C"
