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

// Each axis scaled from the origin, y negated after scaling on request.
TEST(DotsScale, ExplicitOriginScalesEachAxisThenFlips) {
    for (const uint32_t options : {0u, uint32_t(VEXO_PRCG_SCALE_FLIP_Y)}) {
        std::vector<GeomPoint> d{point(110, 220, 4, 1)};
        const double origin[2] = {100, 200};
        ASSERT_EQ(vexo_prcg_scale_dots(d.data(), 1, 0.5, 0.25, origin, options), VEXO_OK);
        EXPECT_EQ(vexo_test::xyz(d[0]), (vexo_test::Xyz{5.0, options ? -5.0 : 5.0, 0.5}));
        EXPECT_EQ(d[0].flags, 1u);
    }
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

// Zero scale, an unknown option, a NaN origin, no dots: refused, nothing moved.
TEST(DotsScale, BadArgumentsAreRefusedAndNothingMoves) {
    std::vector<GeomPoint> d{point(7, 8)};
    const double nan_origin[2] = {NAN, 0};
    const struct {
        GeomPoint *dots;
        double scale_x;
        const double *origin;
        uint32_t options;
    } cases[] = {{d.data(), 0, nullptr, 0},
                 {d.data(), 1, nullptr, 2},
                 {d.data(), 1, nan_origin, 0},
                 {nullptr, 1, nullptr, 0}};
    for (const auto &c : cases) {
        EXPECT_EQ(vexo_prcg_scale_dots(c.dots, 1, c.scale_x, 1, c.origin, c.options),
                  VEXO_ERROR_INVALID_PARAMETER)
            << &c - cases;
        EXPECT_EQ(vexo_test::xyz(d[0]), (vexo_test::Xyz{7, 8, 0})) << &c - cases;
    }
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

// Exact grids turned by `turn`: the estimate is the turn modulo 90 degrees,
// in -45..45, with its sign.
TEST(DotsUnrotate, EstimatesTheRotationOfAnExactGrid) {
    const struct {
        uint32_t n;
        double turn, estimate;
    } cases[] = {{6, 3.7, 3.7}, {5, 93.7 - 180, 3.7}, {5, -12, -12}};
    for (const auto &c : cases) {
        auto d = turned_grid(c.n, c.turn);
        double rotation = 0;
        ASSERT_EQ(vexo_prcg_unrotate_dots(d.data(), uint32_t(d.size()), 0, &rotation, 0), VEXO_OK)
            << c.turn;
        EXPECT_NEAR(rotation, c.estimate, 1e-6) << c.turn;
    }
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

// A 4 x 4 grid sorted with a dot missing, one extra, or the last one moved
// into a fifth row: the status says which, and nothing changes.
TEST(DotsUnrotate, GridThatIsNotNByNIsRefusedAndLeavesEverything) {
    auto missing = shuffled(turned_grid(4, 2)), extra = turned_grid(4, 2),
         moved = turned_grid(4, 0);
    missing.pop_back();
    extra.push_back(point(3, 3));
    moved[15].y += 10;
    const struct {
        const char *name;
        std::vector<GeomPoint> &dots;
        uint32_t status;
    } cases[] = {{"missing", missing, VEXO_ERROR_NO_RESULT},
                 {"extra", extra, VEXO_ERROR_INVALID_DATA},
                 {"moved", moved, VEXO_ERROR_INVALID_DATA}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        const auto before = c.dots;
        double rotation = 77;
        EXPECT_EQ(vexo_prcg_unrotate_dots(c.dots.data(), uint32_t(c.dots.size()), 4, &rotation,
                                          VEXO_PRCG_SORT_GRID),
                  c.status);
        EXPECT_EQ(std::memcmp(c.dots.data(), before.data(), before.size() * sizeof(GeomPoint)), 0);
        EXPECT_EQ(rotation, 77.0);
    }
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
