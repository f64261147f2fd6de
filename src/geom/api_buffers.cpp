// SPDX-License-Identifier: MIT
// C boundary of the point-buffer functions.
#include <cstdlib>

#include "core/point_buffer.hpp"

namespace {
constexpr size_t kPairRecordSize = 56;
}

extern "C" {

VEXO_API GeomPoint *vexo_geom_realloc(GeomPoint *buffer, uint32_t count) {
    return vexo::realloc_exact(buffer, count);
}

VEXO_API GeomPoint *vexo_geom_realloc_fast(GeomPoint *buffer, uint32_t count, uint32_t *capacity) {
    return vexo::realloc_headroom(buffer, count, capacity);
}

VEXO_API void vexo_geom_release(GeomPoint *buffer) {
    std::free(buffer);
}

VEXO_API void *vexo_geom_pair_realloc(void *buffer, uint32_t count) {
    if (count == 0) return nullptr;
    if (sizeof(size_t) < 8 && uint64_t{count} * kPairRecordSize > SIZE_MAX) return nullptr;
    return std::realloc(buffer, size_t{count} * kPairRecordSize);
}

VEXO_API void vexo_geom_pair_release(void *buffer) {
    std::free(buffer);
}

VEXO_API GeomPoint *vexo_geom_append(GeomPoint *buffer, uint32_t count, const GeomPoint *source,
                                     uint32_t n, double dx, double dy, double dz) {
    return vexo::append_points(buffer, count, source, n, dx, dy, dz);
}

VEXO_API GeomPoint *vexo_geom_append_fast(GeomPoint *buffer, uint32_t count,
                                          const GeomPoint *source, uint32_t n, uint32_t *capacity) {
    return vexo::append_points_headroom(buffer, count, source, n, capacity);
}

} // extern "C"
