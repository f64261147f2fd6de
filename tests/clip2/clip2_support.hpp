// SPDX-License-Identifier: MIT
// Shapes, handles and Clipper-computed measures for the clip2 tests.  Areas
// and symmetric differences come from Clipper directly on the grid, an
// engine independent of the one under test.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <random>
#include <vector>

#include <polyclipping/clipper.hpp>

#include "vexo_test_util.hpp"

namespace clip2_test {

using vexo_test::point;
using vexo_test::rect;
using vexo_test::ring;
using vexo_test::take;
using vexo_test::operator+;
using Pts = std::vector<GeomPoint>;
using Handle2 = std::unique_ptr<Clip2Handle, decltype(&vexo_clip2_release)>;
using Handle1 = std::unique_ptr<ClipHandle, decltype(&vexo_clip_release)>;
constexpr uint32_t kEnd = VEXO_POINT_END;

inline Handle2 make2(const Pts &p, uint32_t mode = 0) {
    return Handle2(vexo_clip2_create(p.data(), uint32_t(p.size()), mode), vexo_clip2_release);
}
inline Handle1 make1(const Pts &p, uint32_t mode = 0) {
    return Handle1(vexo_clip_create(p.data(), uint32_t(p.size()), mode), vexo_clip_release);
}
inline Pts result2(const Handle2 &h) {
    uint32_t n = 0;
    GeomPoint *p = vexo_clip2_get_result(h.get(), &n);
    return take(p, n);
}
inline Pts result1(const Handle1 &h) {
    uint32_t n = 0;
    GeomPoint *p = vexo_clip_get_result(h.get(), &n);
    return take(p, n);
}
// Both families' result of subject `op` operand.
inline Pts bool2(const Pts &subject, const Pts &operand, uint32_t mode) {
    auto h = make2(subject);
    EXPECT_EQ(vexo_clip2_bool(h.get(), operand.data(), uint32_t(operand.size()), mode), VEXO_OK);
    return result2(h);
}
inline Pts bool1(const Pts &subject, const Pts &operand, uint32_t mode) {
    auto h = make1(subject);
    EXPECT_EQ(vexo_clip_bool(h.get(), operand.data(), uint32_t(operand.size()), mode), VEXO_OK);
    return result1(h);
}

// Returned arrays on the grid, split at each flagged point, closing copies
// dropped.
inline ClipperLib::Paths grid_paths(const Pts &a) {
    ClipperLib::Paths out(1);
    for (const GeomPoint &p : a) {
        if (p.flags & kEnd) {
            out.emplace_back();
            continue;
        }
        out.back().emplace_back(std::llround(p.x * 1000.0), std::llround(p.y * 1000.0));
    }
    out.pop_back();
    return out;
}
// Input arrays as the families read them: the array's last point dropped.
inline ClipperLib::Paths input_paths(Pts a) {
    a.back().flags = kEnd;
    a.push_back(point(0, 0));
    return grid_paths(a);
}

// Even-odd area in grid units squared.
inline double area_of(const ClipperLib::Paths &paths) {
    ClipperLib::Clipper c;
    c.AddPaths(paths, ClipperLib::ptSubject, true);
    ClipperLib::Paths solution;
    c.Execute(ClipperLib::ctUnion, solution, ClipperLib::pftEvenOdd, ClipperLib::pftEvenOdd);
    double sum = 0.0;
    for (const auto &p : solution) sum += ClipperLib::Area(p);
    return sum;
}
inline double xor_area(const ClipperLib::Paths &a, const ClipperLib::Paths &b) {
    ClipperLib::Clipper c;
    c.AddPaths(a, ClipperLib::ptSubject, true);
    c.AddPaths(b, ClipperLib::ptClip, true);
    ClipperLib::Paths solution;
    c.Execute(ClipperLib::ctXor, solution, ClipperLib::pftEvenOdd, ClipperLib::pftEvenOdd);
    double sum = 0.0;
    for (const auto &p : solution) sum += ClipperLib::Area(p); // holes count negative
    return sum;
}
inline double perimeter(const ClipperLib::Paths &paths) {
    double sum = 0.0;
    for (const auto &p : paths)
        for (size_t i = 0; i < p.size(); ++i) {
            const auto &a = p[i], &b = p[(i + 1) % p.size()];
            sum += std::hypot(double(b.X - a.X), double(b.Y - a.Y));
        }
    return sum;
}
// Signed shoelace area, grid units squared, of every returned path.
inline std::vector<double> path_areas(const Pts &a) {
    std::vector<double> out;
    for (const auto &p : grid_paths(a)) out.push_back(ClipperLib::Area(p));
    return out;
}

// Distance from (x, y) to the nearest segment of the paths.
inline double boundary_distance(const ClipperLib::Paths &paths, double x, double y) {
    double best = INFINITY;
    for (const auto &p : paths)
        for (size_t i = 0; i < p.size(); ++i) {
            const double ax = double(p[i].X), ay = double(p[i].Y);
            const double bx = double(p[(i + 1) % p.size()].X), by = double(p[(i + 1) % p.size()].Y);
            const double dx = bx - ax, dy = by - ay, len2 = dx * dx + dy * dy;
            double t = len2 > 0 ? ((x - ax) * dx + (y - ay) * dy) / len2 : 0.0;
            t = std::min(1.0, std::max(0.0, t));
            best = std::min(best, std::hypot(ax + t * dx - x, ay + t * dy - y));
        }
    return best;
}
// Even-odd inside test by counting crossings of a ray to +x.
inline bool inside(const ClipperLib::Paths &paths, double x, double y) {
    bool odd = false;
    for (const auto &p : paths)
        for (size_t i = 0, j = p.size() - 1; i < p.size(); j = i++) {
            const double yi = double(p[i].Y), yj = double(p[j].Y);
            if ((yi > y) == (yj > y)) continue;
            const double xc = double(p[i].X) + (y - yi) / (yj - yi) * double(p[j].X - p[i].X);
            if (x < xc) odd = !odd;
        }
    return odd;
}
// Largest distance from a vertex of either to the other's boundary.
inline double hausdorff(const ClipperLib::Paths &a, const ClipperLib::Paths &b) {
    double worst = 0.0;
    for (const auto &p : a)
        for (const auto &v : p)
            worst = std::max(worst, boundary_distance(b, double(v.X), double(v.Y)));
    for (const auto &p : b)
        for (const auto &v : p)
            worst = std::max(worst, boundary_distance(a, double(v.X), double(v.Y)));
    return worst;
}

// `rings` random polygons of 3 to 9 vertices in [0, span)^2, self-crossing
// more often than not, in one array.
inline Pts random_rings(std::mt19937 &rng, int rings, double span) {
    std::uniform_real_distribution<double> at(0.0, span);
    std::uniform_int_distribution<int> size(3, 9);
    Pts all;
    for (int r = 0; r < rings; ++r) {
        std::vector<double> xy;
        for (int n = size(rng); n > 0; --n) xy.insert(xy.end(), {at(rng), at(rng)});
        all = all + ring(xy);
    }
    return all;
}

} // namespace clip2_test
