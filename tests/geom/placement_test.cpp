// Translating and scaling point arrays in place.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "vexo.h"

namespace {

std::vector<GeomPoint> sample_points() {
    return {{1, 2, 3, VEXO_POINT_END, 0xAAAA5555},
            {-0.0, 0.5, -4, 0, 0x12345678},
            {1e300, -7.25, 0.0, VEXO_POINT_PROCESSED | 0x40, 0}};
}

TEST(GeomPlacement, TranslateMovesEveryPoint) {
    auto pts = sample_points();
    vexo_geom_translate(pts.data(), 3, 10, -1, 0.5);
    EXPECT_EQ(pts[0].x, 11.0);
    EXPECT_EQ(pts[0].y, 1.0);
    EXPECT_EQ(pts[0].z, 3.5);
    EXPECT_EQ(pts[1].x, 10.0);
    EXPECT_EQ(pts[2].y, -8.25);
    const auto orig = sample_points();
    for (size_t i = 0; i < pts.size(); ++i) {
        EXPECT_EQ(pts[i].flags, orig[i].flags);
        EXPECT_EQ(pts[i].reserved, orig[i].reserved);
    }

    // By zero: unchanged except that -0 becomes +0.
    auto same = sample_points();
    vexo_geom_translate(same.data(), 3, 0, 0, 0);
    EXPECT_FALSE(std::signbit(same[1].x));
    same[1].x = -0.0;
    EXPECT_EQ(std::memcmp(same.data(), orig.data(), sizeof(GeomPoint) * 3), 0);

    // Only the first `count` points move; count 0 and NULL do nothing.
    auto partial = sample_points();
    vexo_geom_translate(partial.data(), 1, 1, 1, 1);
    EXPECT_EQ(partial[0].x, 2.0);
    EXPECT_EQ(partial[1].y, 0.5);
    vexo_geom_translate(partial.data(), 0, 1, 1, 1);
    EXPECT_EQ(partial[0].x, 2.0);
    vexo_geom_translate(nullptr, 5, 1, 1, 1);
}

TEST(GeomPlacement, ScaleMatchesMatrixMapping) {
    auto pts = sample_points();
    vexo_geom_scale(pts.data(), 3, 2, -3, 0.5);
    EXPECT_EQ(pts[0].x, 2.0);
    EXPECT_EQ(pts[0].y, -6.0);
    EXPECT_EQ(pts[0].z, 1.5);
    EXPECT_EQ(pts[2].y, 21.75);
    EXPECT_EQ(pts[2].x, 2e300);

    // Cross-check against an explicit matrix built and applied through the
    // matrix functions: the same bits, flags and padding included.
    GeomMatrix m;
    vexo_matrix_unify(&m);
    vexo_matrix_scale(&m, 2, -3, 0.5);
    const auto orig = sample_points();
    for (size_t i = 0; i < orig.size(); ++i) {
        GeomPoint mapped = orig[i];
        vexo_matrix_multiply_point(&m, &orig[i], &mapped);
        EXPECT_EQ(std::memcmp(&mapped, &pts[i], sizeof mapped), 0) << "point " << i;
    }
}

// Finite points under a plain scaling take a shortcut; every combination of
// awkward coordinates and factors must still give the matrix mapping's bits.
TEST(GeomPlacement, ScaleShortcutIsBitIdenticalToMapping) {
    const double values[] = {0.0, -0.0, 1.0, -2.5, 1e308, -1e-310, INFINITY, -INFINITY, NAN};
    const double factors[] = {2.0, -1.0, 0.0, -0.0, 1e300, INFINITY, NAN};
    const double heights[] = {0.0, -0.0, 3.0, NAN};
    const double y_factors[] = {1.0, -0.0, INFINITY};
    std::vector<GeomPoint> points;
    for (double x : values)
        for (double y : values)
            for (double z : heights)
                points.push_back(GeomPoint{x, y, z, 0x41, 0});
    for (double sx : factors) {
        for (double sy : y_factors) {
            GeomMatrix m;
            vexo_matrix_unify(&m);
            vexo_matrix_scale(&m, sx, sy, 0.5);
            std::vector<GeomPoint> scaled = points;
            vexo_geom_scale(scaled.data(), static_cast<uint32_t>(scaled.size()), sx, sy, 0.5);
            for (size_t i = 0; i < points.size(); ++i) {
                GeomPoint mapped = points[i];
                vexo_matrix_multiply_point(&m, &points[i], &mapped);
                ASSERT_EQ(std::memcmp(&mapped, &scaled[i], sizeof mapped), 0)
                    << "factors " << sx << ", " << sy << " point " << points[i].x << ", "
                    << points[i].y << ", " << points[i].z;
            }
        }
    }
}

TEST(GeomPlacement, ScaleIdentityMirrorAndSpecialValues) {
    auto pts = sample_points();
    vexo_geom_scale(pts.data(), 3, 1, 1, 1);
    const auto orig = sample_points();
    for (size_t i = 0; i < pts.size(); ++i) {
        EXPECT_EQ(pts[i].x, orig[i].x);
        EXPECT_EQ(pts[i].y, orig[i].y);
        EXPECT_EQ(pts[i].z, orig[i].z);
    }
    EXPECT_FALSE(std::signbit(pts[1].x)); // -0 picks up the +0 terms

    auto mirrored = sample_points();
    vexo_geom_scale(mirrored.data(), 2, -1, 1, 1);
    EXPECT_EQ(mirrored[0].x, -1.0);
    EXPECT_EQ(mirrored[0].y, 2.0);
    EXPECT_EQ(mirrored[0].flags, VEXO_POINT_END);
    EXPECT_EQ(mirrored[2].x, 1e300); // beyond count: untouched

    // The zero off-diagonal terms still multiply: an infinite x makes y and
    // z NaN, as mapping through the matrix does.
    GeomPoint far = {INFINITY, 1, 1, 0, 0};
    vexo_geom_scale(&far, 1, 2, 2, 2);
    EXPECT_TRUE(std::isinf(far.x));
    EXPECT_TRUE(std::isnan(far.y));
    EXPECT_TRUE(std::isnan(far.z));

    vexo_geom_scale(nullptr, 3, 2, 2, 2);
    vexo_geom_scale(pts.data(), 0, 2, 2, 2);
    EXPECT_EQ(pts[0].x, 1.0);
}

} // namespace
