// SPDX-License-Identifier: MIT
// An arc-length reference for the pattern tests, written independently of
// the library: positions by linear interpolation of the vertices with the
// fraction s / segment length, and helpers that run a pattern and cut its
// output into polylines.
#pragma once

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "vexo.h"
#include "vexo_test_util.hpp"

namespace pattern_test {

using vexo_test::point;
using vexo_test::operator+;

inline double seg_length(const GeomPoint &a, const GeomPoint &b, bool only2d) {
    const double dz = only2d ? 0.0 : b.z - a.z;
    return std::hypot(std::hypot(b.x - a.x, b.y - a.y), dz);
}

inline double path_length(const std::vector<GeomPoint> &path, bool only2d = false) {
    double total = 0.0;
    for (size_t i = 0; i + 1 < path.size(); ++i) total += seg_length(path[i], path[i + 1], only2d);
    return total;
}

// The point at arc length s of one polyline (s beyond the end: the end).
inline GeomPoint point_at(const std::vector<GeomPoint> &path, double s, bool only2d = false) {
    for (size_t i = 0; i + 1 < path.size(); ++i) {
        const double len = seg_length(path[i], path[i + 1], only2d);
        if (s <= len && len > 0.0) {
            const double t = s / len;
            const GeomPoint &a = path[i], &b = path[i + 1];
            return point(a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t, a.z + (b.z - a.z) * t);
        }
        s -= len;
    }
    return path.back();
}

// A polyline as an input array: flags 0 except VEXO_POINT_END on the last.
inline std::vector<GeomPoint> polyline(std::vector<GeomPoint> pts) {
    for (auto &p : pts) p.flags = 0;
    pts.back().flags = VEXO_POINT_END;
    return pts;
}

// A polyline of n points drawn uniformly from [-extent, extent]^3.
inline std::vector<GeomPoint> random_path(unsigned seed, int n, double extent) {
    std::mt19937 rng(seed);
    std::uniform_real_distribution<double> coord(-extent, extent);
    std::vector<GeomPoint> path;
    for (int i = 0; i < n; ++i) path.push_back(point(coord(rng), coord(rng), coord(rng)));
    return polyline(path);
}

// The output of one pattern call, owned.
struct Output {
    std::vector<GeomPoint> points;
    uint32_t status = 0;
    uint32_t count = 0xDEADu;
    bool null_result = true;

    std::vector<std::vector<GeomPoint>> polylines() const { return vexo_test::polylines(points); }
};

inline Output keep(GeomPoint *block, uint32_t count, uint32_t status) {
    Output run;
    run.status = status;
    run.count = count;
    run.null_result = block == nullptr;
    run.points = vexo_test::take(block, count);
    return run;
}

inline Output dots(const std::vector<GeomPoint> &pts, double pitch, double phase,
                   uint32_t options = 0, const GeomDotShape *shape = nullptr) {
    uint32_t count = 0xDEADu, status = 0;
    GeomPoint *block =
        vexo_line_to_pattern(pts.data(), static_cast<uint32_t>(pts.size()), pitch, phase, options,
                             shape != nullptr, shape, &count, &status);
    return keep(block, count, status);
}

inline VexoDash dash_of(std::vector<double> lengths, double offset = 0.0, uint32_t options = 0) {
    VexoDash d{};
    for (size_t i = 0; i < lengths.size() && i < VEXO_DASH_MAX; ++i) d.lengths[i] = lengths[i];
    d.count = static_cast<uint32_t>(lengths.size());
    d.offset = offset;
    d.options = options;
    return d;
}

inline Output dashes(const std::vector<GeomPoint> &pts, const VexoDash &dash) {
    uint32_t count = 0xDEADu, status = 0;
    GeomPoint *block = vexo_line_to_pattern3(pts.data(), static_cast<uint32_t>(pts.size()), &dash,
                                             &count, &status);
    return keep(block, count, status);
}

} // namespace pattern_test
