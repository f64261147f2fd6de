// Helpers shared by the clip tests: owning wrappers for handles and returned
// arrays, polygon builders and independent geometry (areas, bounds).
#pragma once

#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

#include "vexo.h"

namespace cliptest {

struct HandleFree {
    void operator()(ClipHandle *h) const { vexo_clip_release(h); }
};
using Handle = std::unique_ptr<ClipHandle, HandleFree>;

inline GeomPoint pt(double x, double y, double z = 0.0, uint32_t flags = 0) {
    GeomPoint p{};
    p.x = x;
    p.y = y;
    p.z = z;
    p.flags = flags;
    return p;
}

// Closed counter-clockwise rectangle: four corners, the first repeated and
// flagged as the end of the path.
inline std::vector<GeomPoint> rect(double x0, double y0, double x1, double y1, double z = 0.0) {
    return {pt(x0, y0, z), pt(x1, y0, z), pt(x1, y1, z), pt(x0, y1, z),
            pt(x0, y0, z, VEXO_POINT_END)};
}

inline std::vector<GeomPoint> join(std::vector<GeomPoint> a, const std::vector<GeomPoint> &b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// A returned array, copied out and freed at once.
inline std::vector<GeomPoint> take(GeomPoint *block, uint32_t count) {
    std::vector<GeomPoint> out(block, block + count);
    vexo_geom_release(block);
    return out;
}

inline std::vector<GeomPoint> result_of(const ClipHandle *h) {
    uint32_t n = 0;
    GeomPoint *block = vexo_clip_get_result(h, &n);
    return take(block, n);
}

inline std::vector<GeomPoint> subject_of(const ClipHandle *h) {
    uint32_t n = 0;
    GeomPoint *block = vexo_clip_get_subject(h, &n);
    return take(block, n);
}

// Splits an array at the end flags (each piece keeps its closing record).
inline std::vector<std::vector<GeomPoint>> paths_of(const std::vector<GeomPoint> &a) {
    std::vector<std::vector<GeomPoint>> paths(1);
    for (const GeomPoint &p : a) {
        paths.back().push_back(p);
        if (p.flags & VEXO_POINT_END)
            paths.emplace_back();
    }
    if (paths.back().empty())
        paths.pop_back();
    return paths;
}

// Shoelace area of one closed path; counter-clockwise is positive.
inline double signed_area(const std::vector<GeomPoint> &path) {
    double twice = 0.0;
    for (size_t i = 0; i + 1 < path.size(); ++i)
        twice += path[i].x * path[i + 1].y - path[i + 1].x * path[i].y;
    return twice / 2.0;
}

// Net area of every path of an array: holes come back clockwise, so they
// subtract themselves.
inline double net_area(const std::vector<GeomPoint> &a) {
    double sum = 0.0;
    for (const auto &path : paths_of(a))
        sum += signed_area(path);
    return sum;
}

struct Bounds {
    double x0 = INFINITY, y0 = INFINITY, x1 = -INFINITY, y1 = -INFINITY;
};

inline Bounds bounds_of(const std::vector<GeomPoint> &a) {
    Bounds b;
    for (const GeomPoint &p : a) {
        b.x0 = std::fmin(b.x0, p.x);
        b.y0 = std::fmin(b.y0, p.y);
        b.x1 = std::fmax(b.x1, p.x);
        b.y1 = std::fmax(b.y1, p.y);
    }
    return b;
}

inline Handle make(const std::vector<GeomPoint> &points, uint32_t mode = 0) {
    return Handle(vexo_clip_create(points.data(), static_cast<uint32_t>(points.size()), mode));
}

inline uint32_t bool_op(ClipHandle *h, const std::vector<GeomPoint> &points, uint32_t mode) {
    return vexo_clip_bool(h, points.data(), static_cast<uint32_t>(points.size()), mode);
}

} // namespace cliptest
