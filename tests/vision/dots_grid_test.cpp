// SPDX-License-Identifier: MIT
// Scaling, unrotating and sorting dots, on synthetic positions.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "vexo.h"
#include "vexo_test_util.hpp"

namespace {

using vexo_test::point;

constexpr double kPi = 3.14159265358979323846;

// n x n grid, pitch 10, centred on (0, 0), turned by `degrees` (from +x
// towards +y), row by row.
std::vector<GeomPoint> turned_grid(uint32_t n, double degrees) {
    const double t = degrees * kPi / 180, c = std::cos(t), s = std::sin(t);
    const double mid = (n - 1) / 2.0;
    std::vector<GeomPoint> g;
    for (uint32_t i = 0; i < n; ++i)
        for (uint32_t j = 0; j < n; ++j) {
            const double x = (j - mid) * 10, y = (i - mid) * 10;
            g.push_back(point(x * c - y * s, x * s + y * c, 5, 1));
        }
    return g;
}

std::vector<GeomPoint> shuffled(std::vector<GeomPoint> g) {
    std::shuffle(g.begin(), g.end(), std::mt19937(5));
    return g;
}

TEST(DotsScale, ExplicitOriginScalesEachAxis) {
    std::vector<GeomPoint> d{point(110, 220, 4, 1)};
    const double origin[2] = {100, 200};
    ASSERT_EQ(vexo_prcg_scale_dots(d.data(), 1, 0.5, 0.25, origin, 0), VEXO_OK);
    EXPECT_EQ(vexo_test::xyz(d[0]), (vexo_test::Xyz{5.0, 5.0, 0.5}));
    EXPECT_EQ(d[0].flags, 1u);
}

TEST(DotsScale, FlipNegatesYAfterScaling) {
    std::vector<GeomPoint> d{point(110, 220)};
    const double origin[2] = {100, 200};
    ASSERT_EQ(vexo_prcg_scale_dots(d.data(), 1, 0.5, 0.25, origin, VEXO_PRCG_SCALE_FLIP_Y),
              VEXO_OK);
    EXPECT_EQ(d[0].y, -5.0);
}

TEST(DotsScale, AreaScalesByTheMagnitudeOfBothScales) {
    std::vector<GeomPoint> d{point(0, 0, 8)};
    const double origin[2] = {0, 0};
    ASSERT_EQ(vexo_prcg_scale_dots(d.data(), 1, -0.5, 0.25, origin, 0), VEXO_OK);
    EXPECT_EQ(d[0].z, 1.0);
}

TEST(DotsScale, NoOriginTakesTheDotNearestTheMean) {
    // Mean (4, 1); (3, 0) is nearest.
    std::vector<GeomPoint> d{point(0, 0), point(3, 0), point(9, 3)};
    ASSERT_EQ(vexo_prcg_scale_dots(d.data(), 3, 1, 1, nullptr, 0), VEXO_OK);
    EXPECT_THAT((std::vector<double>{d[0].x, d[1].x, d[2].x, d[2].y}),
                testing::ElementsAre(-3.0, 0.0, 6.0, 3.0));
}

TEST(DotsScale, ZeroScaleIsRefusedAndNothingMoves) {
    std::vector<GeomPoint> d{point(7, 8)};
    EXPECT_EQ(vexo_prcg_scale_dots(d.data(), 1, 0, 1, nullptr, 0), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(d[0].x, 7.0);
}

TEST(DotsScale, UnknownOptionAndNanOriginAreRefused) {
    std::vector<GeomPoint> d{point(7, 8)};
    const double origin[2] = {NAN, 0};
    EXPECT_EQ(vexo_prcg_scale_dots(d.data(), 1, 1, 1, nullptr, 2), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_prcg_scale_dots(d.data(), 1, 1, 1, origin, 0), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_prcg_scale_dots(nullptr, 1, 1, 1, nullptr, 0), VEXO_ERROR_INVALID_PARAMETER);
}

TEST(DotsUnrotate, GivenRotationTurnsBackAboutTheOrigin) {
    std::vector<GeomPoint> d{point(0, 10)};
    double rotation = 90;
    ASSERT_EQ(vexo_prcg_unrotate_dots(d.data(), 1, 0, &rotation, VEXO_PRCG_ROTATION_GIVEN),
              VEXO_OK);
    EXPECT_NEAR(d[0].x, 10, 1e-6);
    EXPECT_NEAR(d[0].y, 0, 1e-6);
    EXPECT_EQ(rotation, 90.0);
}

TEST(DotsUnrotate, EstimatesTheRotationOfAnExactGrid) {
    auto d = turned_grid(6, 3.7);
    double rotation = 0;
    ASSERT_EQ(vexo_prcg_unrotate_dots(d.data(), uint32_t(d.size()), 0, &rotation, 0), VEXO_OK);
    EXPECT_NEAR(rotation, 3.7, 1e-6);
}

TEST(DotsUnrotate, EstimateIsModuloNinetyDegrees) {
    auto d = turned_grid(5, 93.7 - 180);
    double rotation = 0;
    ASSERT_EQ(vexo_prcg_unrotate_dots(d.data(), uint32_t(d.size()), 0, &rotation, 0), VEXO_OK);
    EXPECT_NEAR(rotation, 3.7, 1e-6);
}

TEST(DotsUnrotate, NegativeRotationIsEstimatedWithItsSign) {
    auto d = turned_grid(5, -12);
    double rotation = 0;
    ASSERT_EQ(vexo_prcg_unrotate_dots(d.data(), uint32_t(d.size()), 0, &rotation, 0), VEXO_OK);
    EXPECT_NEAR(rotation, -12, 1e-6);
}

TEST(DotsUnrotate, SortPutsShuffledDotsInGridOrder) {
    const auto truth = turned_grid(7, 0);
    auto d = shuffled(turned_grid(7, -4));
    double rotation = 0;
    ASSERT_EQ(vexo_prcg_unrotate_dots(d.data(), 49, 7, &rotation, VEXO_PRCG_SORT_GRID), VEXO_OK);
    double worst = 0;
    for (size_t k = 0; k < 49; ++k)
        worst = std::max(worst, std::hypot(d[k].x - truth[k].x, d[k].y - truth[k].y));
    EXPECT_LT(worst, 1e-9);
}

TEST(DotsUnrotate, MissingDotIsNoResultAndLeavesEverything) {
    auto d = shuffled(turned_grid(4, 2));
    d.pop_back();
    const auto before = d;
    double rotation = 77;
    EXPECT_EQ(vexo_prcg_unrotate_dots(d.data(), 15, 4, &rotation, VEXO_PRCG_SORT_GRID),
              VEXO_ERROR_NO_RESULT);
    EXPECT_EQ(std::memcmp(d.data(), before.data(), 15 * sizeof(GeomPoint)), 0);
    EXPECT_EQ(rotation, 77.0);
}

TEST(DotsUnrotate, ExtraDotIsInvalidData) {
    auto d = turned_grid(4, 2);
    d.push_back(point(3, 3));
    double rotation = 0;
    EXPECT_EQ(vexo_prcg_unrotate_dots(d.data(), 17, 4, &rotation, VEXO_PRCG_SORT_GRID),
              VEXO_ERROR_INVALID_DATA);
}

TEST(DotsUnrotate, MovedDotThatBreaksTheRowsIsInvalidData) {
    // Sixteen dots, but the last row's last dot sits in a fifth row.
    auto d = turned_grid(4, 0);
    d[15].y += 10;
    double rotation = 0;
    EXPECT_EQ(vexo_prcg_unrotate_dots(d.data(), 16, 4, &rotation, VEXO_PRCG_SORT_GRID),
              VEXO_ERROR_INVALID_DATA);
}

TEST(DotsUnrotate, OneDotCannotBeEstimated) {
    std::vector<GeomPoint> d{point(1, 2)};
    double rotation = 0;
    EXPECT_EQ(vexo_prcg_unrotate_dots(d.data(), 1, 0, &rotation, 0), VEXO_ERROR_NO_RESULT);
}

TEST(DotsUnrotate, BadArgumentsAreRefused) {
    auto d = turned_grid(3, 0);
    double rotation = NAN;
    EXPECT_EQ(vexo_prcg_unrotate_dots(d.data(), 9, 3, nullptr, 0), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_prcg_unrotate_dots(d.data(), 9, 3, &rotation, VEXO_PRCG_ROTATION_GIVEN),
              VEXO_ERROR_INVALID_PARAMETER);
    rotation = 0;
    EXPECT_EQ(vexo_prcg_unrotate_dots(d.data(), 9, 1, &rotation, VEXO_PRCG_SORT_GRID),
              VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_prcg_unrotate_dots(d.data(), 9, 3, &rotation, 4), VEXO_ERROR_INVALID_PARAMETER);
    d[4].x = INFINITY;
    EXPECT_EQ(vexo_prcg_unrotate_dots(d.data(), 9, 3, &rotation, 0), VEXO_ERROR_INVALID_PARAMETER);
}

} // namespace
