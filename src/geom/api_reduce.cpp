// SPDX-License-Identifier: MIT
// C boundary of smoothing and point reduction.  All six run in place and
// never allocate, so the only failure is a missing pointer: the array comes
// back as given and the caller's count is left alone.
#include "geom/reduce.hpp"
#include "geom/smooth.hpp"

namespace {

template <class Reduce>
GeomPoint *reduce_in_place(GeomPoint *points, uint32_t *count, Reduce reduce) {
    if (!count) return points;
    if (!points) return *count == 0 ? points : nullptr;
    *count = reduce(points, *count);
    return points;
}

} // namespace

extern "C" {

VEXO_API GeomPoint *vexo_geom_smoothen(GeomPoint *points, uint32_t count, double max_dist,
                                       uint32_t *status) {
    if (status) *status = VEXO_OK;
    if (points) vexo::smoothen(points, count, max_dist, true);
    return points;
}

VEXO_API GeomPoint *vexo_geom_smoothen_2d(GeomPoint *points, uint32_t count, double max_dist,
                                          uint32_t *status) {
    if (status) *status = VEXO_OK;
    if (points) vexo::smoothen(points, count, max_dist, false);
    return points;
}

VEXO_API GeomPoint *vexo_geom_reduce(GeomPoint *points, uint32_t *count, double min_dist) {
    return reduce_in_place(points, count, [min_dist](GeomPoint *p, uint32_t n) {
        return vexo::reduce_by_distance(p, n, min_dist, true);
    });
}

VEXO_API GeomPoint *vexo_geom_reduce_2d(GeomPoint *points, uint32_t *count, double min_dist) {
    return reduce_in_place(points, count, [min_dist](GeomPoint *p, uint32_t n) {
        return vexo::reduce_by_distance(p, n, min_dist, false);
    });
}

VEXO_API GeomPoint *vexo_geom_reduce_by_angle(GeomPoint *points, uint32_t *count,
                                              double max_angle) {
    return reduce_in_place(points, count, [max_angle](GeomPoint *p, uint32_t n) {
        return vexo::reduce_by_angle_3d(p, n, max_angle);
    });
}

VEXO_API GeomPoint *vexo_geom_reduce_by_angle_2d(GeomPoint *points, uint32_t *count,
                                                 double max_angle) {
    return reduce_in_place(points, count, [max_angle](GeomPoint *p, uint32_t n) {
        return vexo::reduce_by_angle_2d(p, n, max_angle);
    });
}

} // extern "C"
