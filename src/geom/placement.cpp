// Moving and scaling whole point arrays in place.  Only x, y and z change;
// flags and order stay, so the polyline structure survives.
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

// Scaling goes through a full matrix mapping, not three multiplications:
// the zero off-diagonal terms still take part, so an infinite coordinate
// becomes NaN and -0 becomes +0 exactly as a mapped point would.
void scale_points(GeomPoint *points, uint32_t count, double sx, double sy, double sz) {
    double m[kMatrixSize];
    set_identity(m);
    scale(m, sx, sy, sz);
    for (GeomPoint *p = points, *end = points + count; p != end; ++p)
        map_point(m, *p, p);
}

} // namespace
} // namespace vexo

extern "C" {

VEXO_API void vexo_geom_translate(GeomPoint *points, uint32_t count, double dx, double dy,
                                  double dz) {
    if (points && count > 0)
        vexo::translate_points(points, count, dx, dy, dz);
}

VEXO_API void vexo_geom_scale(GeomPoint *points, uint32_t count, double sx, double sy,
                              double sz) {
    if (points && count > 0)
        vexo::scale_points(points, count, sx, sy, sz);
}

} // extern "C"
