// SPDX-License-Identifier: MIT
// Fuzz bytes read as polylines: records of fixed size, each x, y (and z
// when asked) as little-endian int16 hundredths followed by one flags byte
// whose bit 0 ends the polyline.  A target may read more from that byte
// through `more` (called with the point and the byte).  Bytes short of a
// whole record at the end are ignored.  Also the promise every call that
// returns a point array keeps.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "fuzz_check.hpp"
#include "vexo.h"

inline int16_t fuzz_read_i16(const uint8_t *p) {
    return static_cast<int16_t>(uint16_t(p[0]) | uint16_t(p[1]) << 8);
}

template <class More>
std::vector<GeomPoint> fuzz_read_points(const uint8_t *data, size_t size, bool with_z, More more) {
    const size_t record = with_z ? 7 : 5;
    std::vector<GeomPoint> points;
    for (size_t i = 0; i + record <= size; i += record) {
        GeomPoint p;
        std::memset(&p, 0, sizeof p);
        p.x = fuzz_read_i16(data + i) / 100.0;
        p.y = fuzz_read_i16(data + i + 2) / 100.0;
        if (with_z) p.z = fuzz_read_i16(data + i + 4) / 100.0;
        const uint8_t flags = data[i + record - 1];
        p.flags = flags & VEXO_POINT_END;
        more(p, flags);
        points.push_back(p);
    }
    return points;
}

inline std::vector<GeomPoint> fuzz_read_points(const uint8_t *data, size_t size, bool with_z) {
    return fuzz_read_points(data, size, with_z, [](GeomPoint &, uint8_t) {});
}

// One of the statuses such a call may give, a result exactly when the
// status is VEXO_OK, with a count exactly when there is a result, only
// finite points, the last one ending its polyline.
inline void fuzz_check_points(const char *target, const GeomPoint *out, uint32_t n,
                              uint32_t status) {
    if (status != VEXO_OK && status != VEXO_ERROR_NO_RESULT &&
        status != VEXO_ERROR_INVALID_PARAMETER && status != VEXO_ERROR_NO_MEMORY)
        fuzz_fail(target, "status outside the allowed ones", status);
    if ((status == VEXO_OK) != (out != nullptr) || (out == nullptr) != (n == 0))
        fuzz_fail(target, "result and status disagree, point count", n);
    for (uint32_t i = 0; i < n; ++i)
        if (!std::isfinite(out[i].x) || !std::isfinite(out[i].y) || !std::isfinite(out[i].z))
            fuzz_fail(target, "point not finite at index", i);
    if (n > 0 && !(out[n - 1].flags & VEXO_POINT_END))
        fuzz_fail(target, "last point not flagged VEXO_POINT_END, flags", out[n - 1].flags);
}
