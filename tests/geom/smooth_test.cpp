// Smoothing of short zig-zags inside polylines.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "vexo_test_util.hpp"

using vexo_test::point;

TEST(GeomSmooth, WorkedExampleStrictThresholdAndZ) {
    // Both neighbours must be closer than max_dist (sqrt 2 here, sqrt 27 in
    // 3D with the middle at z 5); z is never moved.
    const double root2 = std::sqrt(2.0), root27 = std::sqrt(27.0);
    for (auto smoothen : {vexo_geom_smoothen, vexo_geom_smoothen_2d}) {
        for (double max_dist : {1.4, root2, std::nextafter(root2, 2.0), 2.0, 6.0}) {
            GeomPoint pts[3] = {point(0, 0), point(1, 1, 5), point(2, 0)};
            uint32_t status = 0;
            EXPECT_EQ(smoothen(pts, 3, max_dist, &status), pts);
            EXPECT_EQ(status, VEXO_OK);
            const bool moved = max_dist > (smoothen == vexo_geom_smoothen ? root27 : root2);
            EXPECT_EQ(vexo_test::xyz(pts[1]), (vexo_test::Xyz{1, moved ? 1 / 3.0 : 1, 5}));
        }
    }
}

TEST(GeomSmooth, ForwardPassOrderEndsAndDots) {
    // The pass sees the point it just smoothed; each sum runs p1 + p0 + p2.
    GeomPoint zig[4] = {point(0, 0), point(1, 3), point(2, 0), point(3, 3)};
    vexo_geom_smoothen_2d(zig, 4, 10.0, nullptr);
    EXPECT_EQ(zig[2].y, (0.0 + 1.0 + 3.0) / 3.0); // not (0 + 3 + 3) / 3
    GeomPoint order[3] = {point(0.1, 0), point(0.7, 0), point(0.3, 0)}; // other orders: 1.1
    vexo_geom_smoothen_2d(order, 3, 1.0, nullptr);
    EXPECT_EQ(order[1].x, (0.7 + 0.1 + 0.3) / 3.0);
    // Line [0..3], a dot, line [5..8]: only points whose triple holds no
    // end flag move (1 and 6), so each line's last inner point stays too.
    std::vector<GeomPoint> pts = {point(0, 0, 1),    point(1, 1, 2),    point(2, 0, 3),
                                  point(3, 1, 4, 1), point(3, 2, 9, 1), point(4, 2, 5),
                                  point(5, 3, 6),    point(6, 2, 7),    point(7, 3, 8, 5)};
    const std::vector<GeomPoint> before = pts;
    vexo_geom_smoothen_2d(pts.data(), static_cast<uint32_t>(pts.size()), 10.0, nullptr);
    for (size_t i = 0; i < pts.size(); ++i) {
        EXPECT_EQ(pts[i].y == before[i].y, i != 1 && i != 6) << i;
        EXPECT_TRUE(pts[i].z == before[i].z && pts[i].flags == before[i].flags) << i;
    }
    // Too short, missing (status still written), NaN: nothing moves.
    uint32_t status = 0;
    EXPECT_EQ(vexo_geom_smoothen(zig, 2, 10.0, &status), zig);
    EXPECT_EQ(vexo_geom_smoothen_2d(nullptr, 50, 10.0, &status), nullptr);
    EXPECT_EQ(status, VEXO_OK);
    vexo_geom_smoothen(order, 3, NAN, nullptr);
    EXPECT_EQ(order[1].x, (0.7 + 0.1 + 0.3) / 3.0);
}
