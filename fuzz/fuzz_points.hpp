// SPDX-License-Identifier: MIT
// Fuzz bytes read as polylines: records of fixed size, each x, y (and z
// when asked) as little-endian int16 hundredths followed by one flags byte
// whose bit 0 ends the polyline.  A target may read more from that byte
// through `more` (called with the point and the byte).  Bytes short of a
// whole record at the end are ignored.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "vexo.h"

inline int16_t fuzz_read_i16(const uint8_t *p) {
    return static_cast<int16_t>(uint16_t(p[0]) | uint16_t(p[1]) << 8);
}

template <class More>
std::vector<GeomPoint> fuzz_read_points(const uint8_t *data, size_t size, bool with_z,
                                        More more) {
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
