// SPDX-License-Identifier: MIT
#include "geom/polylines.hpp"

#include <cmath>
#include <cstdlib>
#include <cstring>

#include "core/point_flags.hpp"

namespace vexo {

std::vector<Span> split_polylines(const GeomPoint *points, uint32_t count) {
    std::vector<Span> spans;
    uint32_t begin = 0;
    for (uint32_t i = 0; i < count; ++i) {
        if (is_end(points[i])) {
            spans.push_back({begin, i + 1});
            begin = i + 1;
        }
    }
    if (begin < count) spans.push_back({begin, count});
    return spans;
}

bool finite_xy(const GeomPoint *points, uint32_t count) {
    for (uint32_t i = 0; i < count; ++i)
        if (!std::isfinite(points[i].x) || !std::isfinite(points[i].y)) return false;
    return true;
}

uint32_t hand_out(const std::vector<GeomPoint> &points, GeomPoint **block, uint32_t *count) {
    *block = nullptr;
    *count = 0;
    if (points.empty()) return VEXO_ERROR_NO_RESULT;
    if (points.size() > kMaxResultPoints) return VEXO_ERROR_NO_MEMORY;
    void *copy = std::malloc(points.size() * sizeof(GeomPoint));
    if (!copy) return VEXO_ERROR_NO_MEMORY;
    std::memcpy(copy, points.data(), points.size() * sizeof(GeomPoint));
    *block = static_cast<GeomPoint *>(copy);
    *count = static_cast<uint32_t>(points.size());
    return VEXO_OK;
}

} // namespace vexo
