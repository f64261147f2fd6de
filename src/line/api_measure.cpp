// SPDX-License-Identifier: MIT
// C boundary of segment measurement and of the processed-point compaction.
// None of these can fail except through a missing pointer, which is
// answered with a neutral result instead of a crash.
#include "line/compact.hpp"
#include "line/measure.hpp"

extern "C" {

VEXO_API double vexo_line_get_length(const GeomPoint *a, const GeomPoint *b, bool only2d) {
    if (!a || !b) return 0.0;
    return vexo::segment_length(*a, *b, only2d);
}

VEXO_API uint32_t vexo_line_get_dot_num(const GeomPoint *a, const GeomPoint *b, double spacing,
                                        double extra) {
    const double length = (a && b) ? vexo::segment_length(*a, *b, false) : 0.0;
    return vexo::dot_count(length, spacing, extra);
}

VEXO_API bool vexo_line_get_dot(const GeomPoint *a, const GeomPoint *b, double spacing,
                                int32_t index, GeomPoint *out, double offset) {
    if (!a || !b || !out) return false;
    return vexo::place_dot(*a, *b, spacing, index, offset, out);
}

VEXO_API void vexo_line_to_vector2d(const GeomPoint *a, const GeomPoint *b, double *out) {
    if (a && b && out) vexo::difference_2d(*a, *b, out);
}

VEXO_API void vexo_line_to_vector3d(const GeomPoint *a, const GeomPoint *b, double *out) {
    if (a && b && out) vexo::difference_3d(*a, *b, out);
}

VEXO_API GeomPoint *vexo_line_rem_unused_vertices(GeomPoint *points, uint32_t *count) {
    if (!count) return points;
    if (*count == 0) return points;
    if (!points) return nullptr;
    *count = vexo::remove_processed(points, *count);
    return points;
}

} // extern "C"
