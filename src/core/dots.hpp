// SPDX-License-Identifier: MIT
// Dot appenders: a dot is one point with the end flag, or a small circle or
// spiral when the caller asks for a shape.
#pragma once

#include <cstdint>

#include "vexo.h"

namespace vexo {

// Appends one dot at *point behind the *count points of buffer and updates
// *count; with capacity, grows with headroom.  A failed growth returns NULL
// with buffer freed; without count or point, or when the figure cannot be
// drawn, buffer comes back unchanged.
GeomPoint *append_dot(GeomPoint *buffer, uint32_t *count, const GeomPoint *point, bool use_shape,
                      const GeomDotShape *shape, uint32_t *capacity) noexcept;

// The figure a shaped dot at `centre` is drawn as: a new C-heap array of
// *n points, or NULL when the shape yields no point (or memory runs out).
GeomPoint *draw_dot_figure(const GeomPoint &centre, const GeomDotShape &shape,
                           uint32_t *n) noexcept;

// The common case of the appenders, kept inline so that a host's loop of
// single points pays a few instructions per point: a plain dot into a
// buffer with room left.  Returns false, having touched nothing, whenever
// the general path must run (no buffer yet, no room, a shape, a NULL).
inline bool append_dot_in_room(GeomPoint *buffer, uint32_t *count, const GeomPoint *point,
                               bool use_shape, const GeomDotShape *shape, uint32_t *capacity) {
    if (!buffer || !count || !point || !capacity || (use_shape && shape)) return false;
    const uint32_t n = *count;
    if (n >= *capacity) return false;
    GeomPoint &dot = buffer[n];
    dot.x = point->x;
    dot.y = point->y;
    dot.z = point->z;
    dot.flags = VEXO_POINT_END;
    *count = n + 1;
    return true;
}

// The shape fields read from a caller's larger parameter record, at
// VEXO_DOT_PARAMS_OFFSET in host byte order.
GeomDotShape shape_from_params(const void *params);

} // namespace vexo
