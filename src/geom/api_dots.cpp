// SPDX-License-Identifier: MIT
// C boundary of the dot appenders.
#include "core/dots.hpp"

extern "C" {

VEXO_API GeomPoint *vexo_geom_append_dot_fast(GeomPoint *buffer, uint32_t *count,
                                              const GeomPoint *point, bool use_shape,
                                              const GeomDotShape *shape, uint32_t *capacity) {
    if (vexo::append_dot_in_room(buffer, count, point, use_shape, shape, capacity)) return buffer;
    return vexo::append_dot(buffer, count, point, use_shape, shape, capacity);
}

VEXO_API GeomPoint *vexo_geom_append_dot(GeomPoint *buffer, uint32_t *count, const GeomPoint *point,
                                         bool use_shape, const GeomDotShape *shape) {
    return vexo::append_dot(buffer, count, point, use_shape, shape, nullptr);
}

VEXO_API GeomPoint *vexo_geom_append_dot_fast2(GeomPoint *buffer, uint32_t *count,
                                               const GeomPoint *point, bool use_shape,
                                               const void *params, uint32_t *capacity) {
    if (!use_shape || !params) {
        if (vexo::append_dot_in_room(buffer, count, point, false, nullptr, capacity)) return buffer;
        return vexo::append_dot(buffer, count, point, false, nullptr, capacity);
    }
    const GeomDotShape shape = vexo::shape_from_params(params);
    return vexo::append_dot(buffer, count, point, true, &shape, capacity);
}

VEXO_API GeomPoint *vexo_geom_append_dot2(GeomPoint *buffer, uint32_t *count,
                                          const GeomPoint *point, bool use_shape,
                                          const void *params) {
    return vexo_geom_append_dot_fast2(buffer, count, point, use_shape, params, nullptr);
}

} // extern "C"
