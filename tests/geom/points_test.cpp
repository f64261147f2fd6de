// SPDX-License-Identifier: MIT
// Moving and scaling point arrays in place; a point against rectangle, polygon, triangle.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "vexo_test_util.hpp"

using namespace vexo_test;

// Finite points under a plain scaling take a shortcut; every combination of
// awkward coordinates and factors must still give the matrix mapping's bits
// (flags and padding kept, -0 made +0, (1, 1, 1) and mirroring among them).
TEST(GeomPlacement, TranslateAndScaleMoveOnlyCoordinatesOfCountPoints) {
    std::vector<GeomPoint> pts = {{1, 2, 3, VEXO_POINT_END, 0xAAAA5555},
                                  {-0.0, 0.5, -4, 0x40, 0x12345678}};
    vexo_geom_translate(pts.data(), 1, 10, -1, 0.5);
    vexo_geom_translate(pts.data(), 0, 1, 1, 1);
    vexo_geom_translate(nullptr, 5, 1, 1, 1);
    vexo_geom_scale(pts.data(), 0, 2, 2, 2);
    vexo_geom_scale(nullptr, 3, 2, 2, 2);
    EXPECT_TRUE(same_bytes(pts[0], GeomPoint{11, 1, 3.5, VEXO_POINT_END, 0xAAAA5555}));
    vexo_geom_translate(pts.data(), 2, 0, 0, 0); // by zero: only -0 changes, to +0
    EXPECT_TRUE(same_bytes(pts[1], GeomPoint{0.0, 0.5, -4, 0x40, 0x12345678}));

    const double inf = INFINITY, nan = NAN;
    const double values[] = {0.0, -0.0, 1.0, -2.5, 1e308, -1e-310, inf, -inf, nan};
    std::vector<GeomPoint> points;
    for (double x : values)
        for (double y : values)
            for (double z : {0.0, -0.0, 3.0, nan})
                points.push_back(GeomPoint{x, y, z, 0x41, static_cast<uint32_t>(points.size())});
    for (double sx : {2.0, 1.0, -1.0, 0.0, -0.0, 1e300, inf, nan}) {
        for (double sy : {1.0, -0.0, inf}) {
            const double sz = sy == 1.0 ? 1.0 : 0.5;
            GeomMatrix m;
            vexo_matrix_unify(&m);
            vexo_matrix_scale(&m, sx, sy, sz);
            std::vector<GeomPoint> scaled = points;
            vexo_geom_scale(scaled.data(), static_cast<uint32_t>(scaled.size()) - 1, sx, sy, sz);
            for (size_t i = 0; i + 1 < points.size(); ++i) {
                GeomPoint mapped = points[i];
                vexo_matrix_multiply_point(&m, &points[i], &mapped);
                ASSERT_TRUE(same_bytes(mapped, scaled[i])) << sx << ", " << sy << " on " << i;
            }
            ASSERT_TRUE(same_bytes(scaled.back(), points.back())); // beyond count
        }
    }
}

TEST(GeomPointIn, RectAndPolygon) {
    // Rectangle x 0..10, y -5..12 (distinct bounds catch swapped arguments);
    // 2 is the border, a single coordinate on a bound being enough.
    const struct {
        double x, y;
        uint32_t expected;
    } in_rect[] = {{5, 20, 0},  {10, 20, 2}, {5, 5, 1},  {5, 11, 1},  {0, 5, 2},   {5, 12, 2},
                   {-3, -5, 2}, {11, 5, 0},  {-3, 0, 0}, {-1, -6, 0}, {NAN, 5, 0}, {5, NAN, 0}};
    for (const auto &c : in_rect) {
        const GeomPoint p = point(c.x, c.y);
        EXPECT_EQ(vexo_geom_point_in_rect(&p, 12, 0, -5, 10), c.expected) << c.x << ", " << c.y;
    }
    EXPECT_EQ(vexo_geom_point_in_rect(nullptr, 12, 0, -5, 10), 0u);

    // Polygon: right and top edges are outside, left and bottom inside.
    auto in_poly = [](double x, double y, const std::vector<GeomPoint> &poly) {
        const GeomPoint p = point(x, y);
        return vexo_geom_point_in_polygon(&p, poly.data(), static_cast<int32_t>(poly.size()));
    };
    const std::vector<GeomPoint> square = {point(0, 0), point(10, 0), point(10, 10), point(0, 10)};
    const Xyz on_square[] = {{5, 5, 1}, {15, 5, 0}, {10, 5, 0}, {0, 5, 1}, {5, 0, 1}, {5, 10, 0}};
    for (const Xyz &c : on_square)
        EXPECT_EQ(in_poly(c[0], c[1], square), c[2]) << c[0] << ", " << c[1];
    const GeomPoint p = point(5, 5); // under three points, or missing: outside
    for (int32_t n : {2, -4}) EXPECT_EQ(vexo_geom_point_in_polygon(&p, square.data(), n), 0u) << n;
    EXPECT_EQ(vexo_geom_point_in_polygon(&p, nullptr, 4), 0u);
    EXPECT_EQ(vexo_geom_point_in_polygon(nullptr, square.data(), 4), 0u);
    // Convex hexagon: inside iff strictly left of every edge (the grid avoids the edges).
    const std::vector<GeomPoint> hex = {point(2, 0),  point(8, 1), point(11, 6),
                                        point(7, 11), point(1, 9), point(-1, 4)};
    for (double x = -2.05; x < 12; x += 0.5)
        for (double y = -1.05; y < 12; y += 0.5) {
            bool left = true;
            for (size_t i = 0; i < 6; ++i) {
                const GeomPoint &a = hex[i], &b = hex[(i + 1) % 6];
                left = left && (b.x - a.x) * (y - a.y) - (b.y - a.y) * (x - a.x) > 0;
            }
            EXPECT_EQ(in_poly(x, y, hex), left ? 1u : 0u) << x << ", " << y;
        }
}

TEST(GeomPointHeight, PlaneVerticesFlatAndMissing) {
    // Plane z = x + 2y, extrapolated outside; within 1e-4 of B in 3D gives
    // B's z, 2e-4 away or right over B but far off in z does not.  Flat only
    // when all three heights agree.
    const GeomPoint tri[3] = {point(0, 0, 0), point(10, 0, 10), point(0, 10, 20)};
    const GeomPoint flat[3] = {point(0, 0, 4.5), point(1, 0, 4.5), point(0, 1, 4.5)};
    const GeomPoint tilt[3] = {point(0, 0, 0), point(1, 0, 0), point(0, 1, 4)};
    const struct {
        const GeomPoint *triangle;
        GeomPoint p;
        double z, tolerance;
    } cases[] = {{tri, point(2, 3), 8.0, 1e-12},
                 {tri, point(20, 20), 60.0, 1e-12},
                 {tri, point(10.00005, 0.00005, 10.00005), 10.0, 0.0},
                 {tri, point(10.0002, 0, 10), 10.0002, 1e-9},
                 {tri, point(10.00005, 0, 500), 10.00005, 1e-9},
                 {flat, point(1e6, -1e6, 99), 4.5, 0.0},
                 {tilt, point(0.25, 0.25), 1.0, 1e-12}};
    double z = -1;
    for (const auto &c : cases) {
        ASSERT_EQ(vexo_geom_point_height(&c.p, c.triangle, &z), VEXO_OK);
        EXPECT_NEAR(z, c.z, c.tolerance) << c.p.x << ", " << c.p.y << ", " << c.p.z;
    }
    const GeomPoint line[3] = {point(0, 0, 0), point(1, 1, 1), point(2, 2, 5)}; // flat in XY
    EXPECT_EQ(vexo_geom_point_height(&tri[1], line, &z), VEXO_OK);
    EXPECT_FALSE(std::isfinite(z));
    z = 7;
    EXPECT_EQ(vexo_geom_point_height(nullptr, tri, &z), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_geom_point_height(&tri[0], nullptr, &z), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_geom_point_height(&tri[0], tri, nullptr), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(z, 7.0);
}
