// SPDX-License-Identifier: MIT
#include "core/point_buffer.hpp"

#include <cstdlib>
#include <cstring>
#include <functional>

namespace vexo {

bool headroom_capacity(uint32_t count, uint32_t *capacity) {
    const uint32_t headroom = count / 100u > 100u ? count / 100u : 100u;
    const uint64_t wanted = uint64_t{count} + headroom;
    if (wanted > UINT32_MAX) return false;
    *capacity = static_cast<uint32_t>(wanted);
    return true;
}

GeomPoint *resize_points(GeomPoint *buffer, uint64_t count) noexcept {
    if (count == 0 || count > SIZE_MAX / sizeof(GeomPoint)) {
        std::free(buffer);
        return nullptr;
    }
    void *moved = std::realloc(buffer, static_cast<size_t>(count) * sizeof(GeomPoint));
    if (!moved) {
        std::free(buffer);
        return nullptr;
    }
    return static_cast<GeomPoint *>(moved);
}

GeomPoint *realloc_exact(GeomPoint *buffer, uint32_t count) noexcept {
    if (count == 0) return nullptr;
    return resize_points(buffer, count);
}

GeomPoint *realloc_headroom(GeomPoint *buffer, uint32_t count, uint32_t *capacity) noexcept {
    if (!capacity) // no capacity to keep: grow exactly, as the dot appenders do
        return realloc_exact(buffer, count);
    if (buffer && count <= *capacity) return buffer;
    if (!headroom_capacity(count, capacity)) {
        std::free(buffer);
        return nullptr;
    }
    return resize_points(buffer, *capacity);
}

namespace {

// Index of `source` inside the old block, or -1: a caller may append part of
// its own array, and the block may move before the copy.
int64_t index_within(const GeomPoint *block, uint32_t count, const GeomPoint *source) {
    std::less<const GeomPoint *> before;
    if (!block || before(source, block) || !before(source, block + count)) return -1;
    return source - block;
}

void copy_offset(GeomPoint *dst, const GeomPoint *src, uint32_t n, double dx, double dy,
                 double dz) {
    for (uint32_t i = 0; i < n; ++i) {
        dst[i].x = src[i].x + dx;
        dst[i].y = src[i].y + dy;
        dst[i].z = src[i].z + dz;
        dst[i].flags = src[i].flags;
    }
}

} // namespace

GeomPoint *append_points(GeomPoint *buffer, uint32_t count, const GeomPoint *source, uint32_t n,
                         double dx, double dy, double dz) noexcept {
    const uint64_t total = uint64_t{count} + n;
    if (total == 0) return nullptr;
    if (total > UINT32_MAX || (n > 0 && !source)) {
        std::free(buffer);
        return nullptr;
    }
    const int64_t inside = n > 0 ? index_within(buffer, count, source) : -1;
    GeomPoint *grown = resize_points(buffer, total);
    if (!grown) return nullptr;
    if (inside >= 0) source = grown + inside;
    if (dx == 0.0 && dy == 0.0 && dz == 0.0) {
        if (n > 0) std::memmove(grown + count, source, size_t{n} * sizeof(GeomPoint));
    } else {
        copy_offset(grown + count, source, n, dx, dy, dz);
    }
    return grown;
}

GeomPoint *append_points_headroom(GeomPoint *buffer, uint32_t count, const GeomPoint *source,
                                  uint32_t n, uint32_t *capacity) noexcept {
    if (!capacity) return append_points(buffer, count, source, n, 0.0, 0.0, 0.0);
    const uint64_t total = uint64_t{count} + n;
    if (total > UINT32_MAX || (n > 0 && !source)) {
        std::free(buffer);
        return nullptr;
    }
    GeomPoint *target = buffer;
    if (!buffer || total > *capacity) {
        const int64_t inside = n > 0 ? index_within(buffer, count, source) : -1;
        if (!headroom_capacity(static_cast<uint32_t>(total), capacity)) {
            std::free(buffer);
            return nullptr;
        }
        target = resize_points(buffer, *capacity);
        if (!target) return nullptr;
        if (inside >= 0) source = target + inside;
    }
    if (n > 0) std::memmove(target + count, source, size_t{n} * sizeof(GeomPoint));
    return target;
}

PointSink::~PointSink() {
    std::free(points_);
}

bool PointSink::push(const GeomPoint &p) noexcept {
    if (count_ == capacity_) {
        points_ = realloc_headroom(points_, count_ + 1, &capacity_);
        if (!points_) {
            count_ = capacity_ = 0;
            return false;
        }
    }
    std::memcpy(&points_[count_++], &p, sizeof p);
    return true;
}

GeomPoint *PointSink::release(uint32_t *count) noexcept {
    GeomPoint *out = points_;
    if (count) *count = count_;
    points_ = nullptr;
    count_ = capacity_ = 0;
    return out;
}

} // namespace vexo
