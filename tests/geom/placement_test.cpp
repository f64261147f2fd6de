// Translating and scaling point arrays in place.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "vexo_test_util.hpp"

using vexo_test::same_bytes;

TEST(GeomPlacement, TranslateMovesOnlyCoordinatesOfCountPoints) {
    const std::vector<GeomPoint> orig = {{1, 2, 3, VEXO_POINT_END, 0xAAAA5555},
                                         {-0.0, 0.5, -4, 0x40, 0x12345678}};
    std::vector<GeomPoint> pts = orig;
    vexo_geom_translate(pts.data(), 1, 10, -1, 0.5);
    EXPECT_TRUE(same_bytes(pts[0], GeomPoint{11, 1, 3.5, VEXO_POINT_END, 0xAAAA5555}));
    EXPECT_TRUE(same_bytes(pts[1], orig[1]));
    vexo_geom_translate(pts.data(), 2, 0, 0, 0); // by zero: only -0 changes, to +0
    EXPECT_TRUE(same_bytes(pts[1], GeomPoint{0.0, 0.5, -4, 0x40, 0x12345678}));
    vexo_geom_translate(pts.data(), 0, 1, 1, 1);
    vexo_geom_translate(nullptr, 5, 1, 1, 1);
    EXPECT_EQ(pts[0].x, 11.0);
}

// Finite points under a plain scaling take a shortcut; every combination of
// awkward coordinates and factors must still give the matrix mapping's bits
// (flags and padding kept, -0 made +0, (1, 1, 1) and mirroring among them).
TEST(GeomPlacement, ScaleIsBitIdenticalToTheMatrixMapping) {
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
                ASSERT_TRUE(same_bytes(mapped, scaled[i]))
                    << sx << ", " << sy << " on " << points[i].x << ", " << points[i].y;
            }
            ASSERT_TRUE(same_bytes(scaled.back(), points.back())); // beyond count
        }
    }
    const GeomPoint one = {2, 3, 4, 1, 0};
    GeomPoint mirrored = one;
    vexo_geom_scale(&mirrored, 1, -1, 1, 1);
    EXPECT_TRUE(same_bytes(mirrored, GeomPoint{-2, 3, 4, 1, 0}));
    vexo_geom_scale(nullptr, 3, 2, 2, 2);
    vexo_geom_scale(&mirrored, 0, 2, 2, 2);
    EXPECT_EQ(mirrored.x, -2.0);
}
