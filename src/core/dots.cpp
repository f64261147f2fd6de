// SPDX-License-Identifier: MIT
// Dot appenders: a dot is one point with the end flag, or a small circle or
// spiral when the caller asks for a shape.
#include "core/dots.hpp"

#include <cstdlib>
#include <cstring>

#include "core/point_buffer.hpp"
#include "core/figures.hpp"

namespace vexo {

namespace {

GeomPoint *append_single_dot(GeomPoint *buffer, uint32_t *count, const GeomPoint &point,
                             uint32_t *capacity) {
    if (*count == UINT32_MAX) {
        std::free(buffer);
        return nullptr;
    }
    const uint32_t grown = *count + 1;
    buffer = capacity ? realloc_headroom(buffer, grown, capacity) : realloc_exact(buffer, grown);
    if (!buffer) return nullptr;
    GeomPoint &dot = buffer[*count];
    dot.x = point.x;
    dot.y = point.y;
    dot.z = point.z;
    dot.flags = VEXO_POINT_END;
    *count = grown;
    return buffer;
}

// A buffer that does not exist yet is made to the figure's size (plus
// headroom when the caller keeps a capacity).
GeomPoint *adopt_figure(const GeomPoint *figure, uint32_t m, uint32_t *count, uint32_t *capacity) {
    uint32_t size = m;
    if (capacity && !headroom_capacity(m, &size)) return nullptr;
    GeomPoint *fresh = resize_points(nullptr, size);
    if (!fresh) return nullptr;
    if (capacity) *capacity = size;
    std::memcpy(fresh, figure, size_t{m} * sizeof(GeomPoint));
    *count = m;
    return fresh;
}

} // namespace

GeomPoint *draw_dot_figure(const GeomPoint &centre, const GeomDotShape &shape,
                           uint32_t *n) noexcept {
    const bool reverse = (shape.options & VEXO_DOT_REVERSE) != 0;
    const double radius = shape.radius / 1000.0;
    if (shape.kind == 0)
        return create_circle(radius, centre, reverse ? 360.0 : 0.0, reverse ? 0.0 : 360.0,
                             shape.steps, n);
    return create_spiral(shape.inner_radius / 1000.0, radius, centre, 0.0, shape.pitch / 1000.0,
                         shape.steps, reverse, (shape.options & VEXO_DOT_OUTWARD) != 0, n);
}

GeomPoint *append_dot(GeomPoint *buffer, uint32_t *count, const GeomPoint *point, bool use_shape,
                      const GeomDotShape *shape, uint32_t *capacity) noexcept {
    if (!count || !point) return buffer;
    if (!use_shape || !shape) return append_single_dot(buffer, count, *point, capacity);

    uint32_t m = 0;
    GeomPoint *figure = draw_dot_figure(*point, *shape, &m);
    if (!figure) return buffer;
    GeomPoint *result;
    if (buffer) {
        result = capacity ? append_points_headroom(buffer, *count, figure, m, capacity)
                          : append_points(buffer, *count, figure, m, 0.0, 0.0, 0.0);
        if (result) *count += m;
    } else {
        result = adopt_figure(figure, m, count, capacity);
    }
    std::free(figure);
    return result;
}

// The larger parameter record keeps the shape fields at fixed offsets, in
// host byte order.
GeomDotShape shape_from_params(const void *params) {
    const auto *bytes = static_cast<const uint8_t *>(params) + VEXO_DOT_PARAMS_OFFSET;
    GeomDotShape shape{};
    std::memcpy(&shape.kind, bytes, 2);
    std::memcpy(&shape.options, bytes + 2, 4);
    std::memcpy(&shape.steps, bytes + 6, 4);
    std::memcpy(&shape.radius, bytes + 10, 4);
    std::memcpy(&shape.inner_radius, bytes + 14, 4);
    std::memcpy(&shape.pitch, bytes + 18, 4);
    return shape;
}

} // namespace vexo
