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

// The shape fields read from a caller's larger parameter record, at
// VEXO_DOT_PARAMS_OFFSET in host byte order.
GeomDotShape shape_from_params(const void *params);

} // namespace vexo
