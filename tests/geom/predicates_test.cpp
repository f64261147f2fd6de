// Point against rectangle, polygon and triangle plane.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "vexo_test_util.hpp"

using vexo_test::point;

namespace {

uint32_t in_poly(double x, double y, const std::vector<GeomPoint> &poly) {
    const GeomPoint p = point(x, y);
    return vexo_geom_point_in_polygon(&p, poly.data(), static_cast<int32_t>(poly.size()));
}

} // namespace

TEST(GeomPointInRect, InsideBorderOutside) {
    // x 0..10, y -5..12 (distinct bounds catch swapped arguments).
    const struct { double x, y; uint32_t expected; } cases[] = {
        {5, 20, 0},  {10, 20, 2}, {5, 5, 1},  {5, 11, 1}, {0, 5, 2},   {5, 12, 2}, {-3, -5, 2},
        {11, 5, 0},  {-3, 0, 0},  {-1, -6, 0}, {NAN, 5, 0}, {5, NAN, 0}};
    for (const auto &c : cases) {
        const GeomPoint p = point(c.x, c.y);
        EXPECT_EQ(vexo_geom_point_in_rect(&p, 12, 0, -5, 10), c.expected) << c.x << ", " << c.y;
    }
    EXPECT_EQ(vexo_geom_point_in_rect(nullptr, 12, 0, -5, 10), 0u);
}

TEST(GeomPointInPolygon, EdgesArgumentsAndHalfPlaneCrossCheck) {
    // Right and top edges are outside, left and bottom inside; orientation
    // and an explicit closing point change nothing.
    const std::vector<GeomPoint> square = {point(0, 0), point(10, 0), point(10, 10), point(0, 10)};
    std::vector<GeomPoint> closed(square.rbegin(), square.rend());
    closed.push_back(closed[0]);
    const struct { double x, y; uint32_t expected; } cases[] = {
        {5, 5, 1}, {15, 5, 0}, {10, 5, 0}, {0, 5, 1}, {5, 0, 1}, {5, 10, 0}};
    for (const auto &c : cases) {
        EXPECT_EQ(in_poly(c.x, c.y, square), c.expected) << c.x << ", " << c.y;
        EXPECT_EQ(in_poly(c.x, c.y, closed), c.expected) << c.x << ", " << c.y;
    }
    const GeomPoint p = point(5, 5);
    EXPECT_EQ(vexo_geom_point_in_polygon(&p, square.data(), 2), 0u);
    EXPECT_EQ(vexo_geom_point_in_polygon(&p, square.data(), -4), 0u);
    EXPECT_EQ(vexo_geom_point_in_polygon(&p, nullptr, 4), 0u);
    EXPECT_EQ(vexo_geom_point_in_polygon(nullptr, square.data(), 4), 0u);

    // Convex hexagon: inside iff strictly left of every counter-clockwise
    // edge (the grid avoids the edges).
    const std::vector<GeomPoint> hex = {point(2, 0),  point(8, 1), point(11, 6),
                                        point(7, 11), point(1, 9), point(-1, 4)};
    for (double x = -2.05; x < 12; x += 0.5) {
        for (double y = -1.05; y < 12; y += 0.5) {
            bool left = true;
            for (size_t i = 0; i < hex.size(); ++i) {
                const GeomPoint &a = hex[i], &b = hex[(i + 1) % hex.size()];
                left = left && (b.x - a.x) * (y - a.y) - (b.y - a.y) * (x - a.x) > 0;
            }
            EXPECT_EQ(in_poly(x, y, hex), left ? 1u : 0u) << x << ", " << y;
        }
    }
}

TEST(GeomPointHeight, PlaneVerticesFlatAndMissing) {
    // Plane z = x + 2y, extrapolated outside; within 1e-4 of B in 3D gives
    // B's z, right over B but far off in z does not.
    const GeomPoint tri[3] = {point(0, 0, 0), point(10, 0, 10), point(0, 10, 20)};
    const GeomPoint flat[3] = {point(0, 0, 4.5), point(1, 0, 4.5), point(0, 1, 4.5)};
    const struct { const GeomPoint *triangle; GeomPoint p; double z, tolerance; } cases[] = {
        {tri, point(2, 3), 8.0, 1e-12},   {tri, point(20, 20), 60.0, 1e-12},
        {tri, point(10.00005, 0.00005, 10.00005), 10.0, 0.0},
        {tri, point(10.00005, 0, 500), 10.00005, 1e-9}, {flat, point(1e6, -1e6, 99), 4.5, 0.0}};
    double z = -1;
    for (const auto &c : cases) {
        ASSERT_EQ(vexo_geom_point_height(&c.p, c.triangle, &z), VEXO_OK);
        EXPECT_NEAR(z, c.z, c.tolerance) << c.p.x << ", " << c.p.y << ", " << c.p.z;
    }
    const GeomPoint line[3] = {point(0, 0, 0), point(1, 1, 1), point(2, 2, 5)};
    ASSERT_EQ(vexo_geom_point_height(&tri[1], line, &z), VEXO_OK); // degenerate in XY
    EXPECT_FALSE(std::isfinite(z));
    z = 7;
    EXPECT_EQ(vexo_geom_point_height(nullptr, tri, &z), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_geom_point_height(&tri[0], nullptr, &z), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_geom_point_height(&tri[0], tri, nullptr), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(z, 7.0);
}
