// SPDX-License-Identifier: MIT
// Small helpers shared by the test programs.
#pragma once

#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "vexo.h"

namespace vexo_test {

// Owns a point array returned by the library.
struct PointsDeleter {
    void operator()(GeomPoint *p) const { vexo_geom_release(p); }
};
using Points = std::unique_ptr<GeomPoint, PointsDeleter>;

inline GeomPoint point(double x, double y, double z = 0.0, uint32_t flags = 0) {
    GeomPoint p;
    std::memset(&p, 0, sizeof p);
    p.x = x;
    p.y = y;
    p.z = z;
    p.flags = flags;
    return p;
}

// Coordinates of a point, compared exactly in one assertion.
using Xyz = std::array<double, 3>;
inline Xyz xyz(const GeomPoint &p) {
    return {p.x, p.y, p.z};
}
inline Xyz xyz(const double *v) {
    return {v[0], v[1], v[2]};
}

// The coordinates, or the flags, of every point.
inline std::vector<Xyz> coords(const std::vector<GeomPoint> &points) {
    std::vector<Xyz> out;
    for (const GeomPoint &p : points) out.push_back(xyz(p));
    return out;
}
inline std::vector<uint32_t> flags_of(const std::vector<GeomPoint> &points) {
    std::vector<uint32_t> out;
    for (const GeomPoint &p : points) out.push_back(p.flags);
    return out;
}

// Points cut into polylines after each point flagged VEXO_POINT_END (a
// last polyline without the flag is kept).
inline std::vector<std::vector<GeomPoint>> polylines(const std::vector<GeomPoint> &points) {
    std::vector<std::vector<GeomPoint>> out(1);
    for (const GeomPoint &p : points) {
        out.back().push_back(p);
        if (p.flags & VEXO_POINT_END) out.emplace_back();
    }
    if (out.back().empty()) out.pop_back();
    return out;
}

// A counter-clockwise rectangle closed by a copy of its first corner, which
// carries `end`.
inline std::vector<GeomPoint> rect(double x0, double y0, double x1, double y1, double z = 0.0,
                                   uint32_t end = VEXO_POINT_END) {
    return {point(x0, y0, z), point(x1, y0, z), point(x1, y1, z), point(x0, y1, z),
            point(x0, y0, z, end)};
}
// A path through `xy` (pairs of coordinates) closed by a flagged copy of its start.
inline std::vector<GeomPoint> ring(const std::vector<double> &xy) {
    std::vector<GeomPoint> p;
    for (size_t i = 0; i + 1 < xy.size(); i += 2) p.push_back(point(xy[i], xy[i + 1]));
    p.push_back(point(xy[0], xy[1], 0.0, VEXO_POINT_END));
    return p;
}
// Two point lists one after the other.
inline std::vector<GeomPoint> operator+(std::vector<GeomPoint> a, const std::vector<GeomPoint> &b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// A block the library returned, copied and released (NULL: no points).
inline std::vector<GeomPoint> take(GeomPoint *block, uint32_t count) {
    const Points owned(block);
    return block ? std::vector<GeomPoint>(block, block + count) : std::vector<GeomPoint>{};
}

// A count whose byte size no machine can allocate (about 128 GiB).
constexpr uint32_t kHugeCount = 0xF0000000u;

// The f64 values of the nearest f32 to pi and 2pi, which the library's angle
// conversions use instead of the full-precision constants.
constexpr double kPiF = 3.1415927410125732;
constexpr double kTwoPiF = 6.2831854820251465;

// Bit-for-bit equality of n records (padding, signed zeros and NaNs included).
template <class T> bool same_bytes(const T &a, const T &b, size_t n = 1) {
    return std::memcmp(&a, &b, n * sizeof(T)) == 0;
}

} // namespace vexo_test
