// Point against rectangle, polygon and triangle plane: border rules,
// worked examples and an independent half-plane cross-check.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "vexo.h"

namespace {

GeomPoint pt(double x, double y, double z = 0) { return {x, y, z, 0, 0}; }

uint32_t in_rect(double x, double y, double x_min, double y_min, double x_max, double y_max) {
    const GeomPoint p = pt(x, y);
    return vexo_geom_point_in_rect(&p, y_max, x_min, y_min, x_max);
}

uint32_t in_poly(double x, double y, const std::vector<GeomPoint> &poly) {
    const GeomPoint p = pt(x, y);
    return vexo_geom_point_in_polygon(&p, poly.data(), static_cast<int32_t>(poly.size()));
}

TEST(GeomPointInRect, InsideBorderOutside) {
    struct Case {
        double x, y;
        uint32_t expected;
    };
    // Rectangle x 0..10, y 0..10.
    const Case cases[] = {
        {5, 20, 0},  {10, 20, 2}, {5, 5, 1},  {0, 5, 2},  {5, 10, 2}, {10, 10, 2},
        {-3, 0, 2},  {20, 10, 2}, {11, 5, 0}, {-1, -1, 0}, {NAN, 5, 0}, {5, NAN, 0},
    };
    for (const Case &c : cases)
        EXPECT_EQ(in_rect(c.x, c.y, 0, 0, 10, 10), c.expected) << c.x << ", " << c.y;

    // An asymmetric rectangle (x 0..4, y 10..20) catches a swapped argument.
    EXPECT_EQ(in_rect(2, 15, 0, 10, 4, 20), 1u);
    EXPECT_EQ(in_rect(15, 2, 0, 10, 4, 20), 0u);
    const GeomPoint p = pt(2, 15);
    EXPECT_EQ(vexo_geom_point_in_rect(&p, 20, 0, 10, 4), 1u);
    EXPECT_EQ(vexo_geom_point_in_rect(&p, 4, 10, 0, 20), 0u);
    EXPECT_EQ(vexo_geom_point_in_rect(nullptr, 20, 0, 10, 4), 0u);
}

TEST(GeomPointInPolygon, CrossingRulesOnSquare) {
    const std::vector<GeomPoint> square = {pt(0, 0), pt(10, 0), pt(10, 10), pt(0, 10)};
    EXPECT_EQ(in_poly(5, 5, square), 1u);
    EXPECT_EQ(in_poly(15, 5, square), 0u);
    EXPECT_EQ(in_poly(10, 5, square), 0u); // right edge: outside
    EXPECT_EQ(in_poly(0, 5, square), 1u);  // left edge: inside
    EXPECT_EQ(in_poly(5, 0, square), 1u);  // bottom edge: inside
    EXPECT_EQ(in_poly(5, 10, square), 0u); // top edge: outside

    // Orientation and an explicit closing point change nothing.
    const std::vector<GeomPoint> reversed(square.rbegin(), square.rend());
    std::vector<GeomPoint> closed = square;
    closed.push_back(square[0]);
    for (double x : {-1.0, 0.0, 3.0, 9.99, 10.0}) {
        EXPECT_EQ(in_poly(x, 4, reversed), in_poly(x, 4, square));
        EXPECT_EQ(in_poly(x, 4, closed), in_poly(x, 4, square));
    }

    // Concave L shape: the notch is outside.
    const std::vector<GeomPoint> ell = {pt(0, 0), pt(10, 0), pt(10, 4),
                                        pt(4, 4), pt(4, 10), pt(0, 10)};
    EXPECT_EQ(in_poly(2, 8, ell), 1u);
    EXPECT_EQ(in_poly(8, 2, ell), 1u);
    EXPECT_EQ(in_poly(8, 8, ell), 0u);
}

TEST(GeomPointInPolygon, TooFewPointsAndBadArguments) {
    const std::vector<GeomPoint> two = {pt(0, 0), pt(10, 10)};
    EXPECT_EQ(in_poly(5, 5, two), 0u);
    const std::vector<GeomPoint> square = {pt(0, 0), pt(10, 0), pt(10, 10), pt(0, 10)};
    const GeomPoint p = pt(5, 5);
    EXPECT_EQ(vexo_geom_point_in_polygon(&p, square.data(), -4), 0u);
    EXPECT_EQ(vexo_geom_point_in_polygon(&p, nullptr, 4), 0u);
    EXPECT_EQ(vexo_geom_point_in_polygon(nullptr, square.data(), 4), 0u);
    EXPECT_EQ(vexo_geom_point_in_polygon(&p, square.data(), 3), 1u); // first triangle
}

// Independent check on a convex polygon: inside iff strictly left of
// every counter-clockwise edge (grid points avoid the edges).
TEST(GeomPointInPolygon, AgreesWithHalfPlanesOnConvexPolygon) {
    const std::vector<GeomPoint> hexagon = {pt(2, 0),  pt(8, 1),  pt(11, 6),
                                            pt(7, 11), pt(1, 9), pt(-1, 4)};
    int inside = 0;
    for (double x = -2.05; x < 12; x += 0.5) {
        for (double y = -1.05; y < 12; y += 0.5) {
            bool left_of_all = true;
            for (size_t i = 0; i < hexagon.size(); ++i) {
                const GeomPoint &a = hexagon[i];
                const GeomPoint &b = hexagon[(i + 1) % hexagon.size()];
                const double cross = (b.x - a.x) * (y - a.y) - (b.y - a.y) * (x - a.x);
                left_of_all = left_of_all && cross > 0;
            }
            inside += left_of_all;
            EXPECT_EQ(in_poly(x, y, hexagon), left_of_all ? 1u : 0u) << x << ", " << y;
        }
    }
    EXPECT_GT(inside, 100);
}

TEST(GeomPointHeight, PlaneVerticesAndFlatTriangles) {
    // Hand-solved plane z = x + 2y.
    const GeomPoint tri[3] = {pt(0, 0, 0), pt(10, 0, 10), pt(0, 10, 20)};
    double z = -1;
    GeomPoint p = pt(2, 3, 0);
    ASSERT_EQ(vexo_geom_point_height(&p, tri, &z), VEXO_OK);
    EXPECT_NEAR(z, 8.0, 1e-12);
    p = pt(20, 20, 0); // outside: extrapolated
    ASSERT_EQ(vexo_geom_point_height(&p, tri, &z), VEXO_OK);
    EXPECT_NEAR(z, 60.0, 1e-12);

    // Within 0.0001 of B in 3D: B's z exactly.
    p = pt(10.00005, 0.00005, 10.00005);
    ASSERT_EQ(vexo_geom_point_height(&p, tri, &z), VEXO_OK);
    EXPECT_EQ(z, 10.0);
    // Over B in XY but far off in z: the plane, not the snap.
    p = pt(10.00005, 0, 500);
    ASSERT_EQ(vexo_geom_point_height(&p, tri, &z), VEXO_OK);
    EXPECT_NEAR(z, 10.00005, 1e-9);
    EXPECT_NE(z, 10.0);

    // All three heights equal: that height, wherever the point is.
    const GeomPoint flat[3] = {pt(0, 0, 4.5), pt(1, 0, 4.5), pt(0, 1, 4.5)};
    p = pt(1e6, -1e6, 99);
    ASSERT_EQ(vexo_geom_point_height(&p, flat, &z), VEXO_OK);
    EXPECT_EQ(z, 4.5);

    // Degenerate in XY with different heights: no number, still VEXO_OK.
    const GeomPoint line[3] = {pt(0, 0, 0), pt(1, 1, 1), pt(2, 2, 5)};
    p = pt(5, 0, 0);
    ASSERT_EQ(vexo_geom_point_height(&p, line, &z), VEXO_OK);
    EXPECT_FALSE(std::isfinite(z));
}

TEST(GeomPointHeight, MissingArguments) {
    const GeomPoint tri[3] = {pt(0, 0, 0), pt(10, 0, 10), pt(0, 10, 20)};
    const GeomPoint p = pt(1, 1, 0);
    double z = 7;
    EXPECT_EQ(vexo_geom_point_height(nullptr, tri, &z), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_geom_point_height(&p, nullptr, &z), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_geom_point_height(&p, tri, nullptr), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(z, 7.0);
}

} // namespace
