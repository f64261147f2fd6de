// SPDX-License-Identifier: MIT
// Point buffers: C-heap arrays of GeomPoint that callers and the library
// grow, fill and free.  Every function here follows the library's buffer
// rule: on failure the buffer it was given is freed and NULL returned.
#pragma once

#include <cstddef>
#include <cstdint>

#include "vexo.h"

namespace vexo {

// The headroom rule: count + max(count / 100, 100).  False when the result
// does not fit the 32-bit capacity (the caller must then fail, not wrap).
bool headroom_capacity(uint32_t count, uint32_t *capacity);

// Exact reallocation to `count` points (count > 0); frees buffer on failure.
GeomPoint *resize_points(GeomPoint *buffer, uint64_t count) noexcept;

GeomPoint *realloc_exact(GeomPoint *buffer, uint32_t count) noexcept;
GeomPoint *realloc_headroom(GeomPoint *buffer, uint32_t count, uint32_t *capacity) noexcept;
GeomPoint *append_points(GeomPoint *buffer, uint32_t count, const GeomPoint *source, uint32_t n,
                         double dx, double dy, double dz) noexcept;
GeomPoint *append_points_headroom(GeomPoint *buffer, uint32_t count, const GeomPoint *source,
                                  uint32_t n, uint32_t *capacity) noexcept;

// Growable output array for code that builds results point by point and
// hands them to the caller as a C-heap block (growth by the headroom rule).
class PointSink {
public:
    PointSink() = default;
    PointSink(const PointSink &) = delete;
    PointSink &operator=(const PointSink &) = delete;
    ~PointSink();

    // false when memory runs out (the sink then holds nothing).
    bool push(const GeomPoint &p) noexcept;
    uint32_t size() const { return count_; }
    GeomPoint *data() { return points_; }
    // Hands the block to the caller; the sink is empty afterwards.
    GeomPoint *release(uint32_t *count) noexcept;

private:
    GeomPoint *points_ = nullptr;
    uint32_t count_ = 0;
    uint32_t capacity_ = 0;
};

} // namespace vexo
