// Natural cubic splines: hand-solved cases, equal knots, bracket search.
#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <vector>

#include "curves/spline.hpp"
#include "vexo_test_util.hpp"

namespace {

std::vector<GeomPoint> at_x(const std::vector<double> &xs) {
    std::vector<GeomPoint> pts;
    for (double x : xs)
        pts.push_back(vexo_test::point(x, -999.0, 42.0, 5));
    return pts;
}

uint32_t eval(const std::vector<double> &knots, std::vector<GeomPoint> &pts) {
    return vexo_spline_get_curve2d(knots.data(), (int32_t)(knots.size() / 2), pts.data(),
                                   (int32_t)pts.size());
}

} // namespace

TEST(Spline, HandSolvedLinesAndKnots) {
    const struct { std::vector<double> knots, xs, ys; double tolerance; } cases[] = {
        // (0,0) (1,1) (2,0): 4 M1 = 6 (-1 - 1), M1 = -3; the end cubics extrapolate.
        {{0, 0, 1, 1, 2, 0}, {0.5, 1.5, -1, 3}, {0.6875, 0.6875, -1, -1}, 0},
        // (0,0) (1,1) (2,0) (3,1): 4 M1 + M2 = -12, M1 + 4 M2 = 12, so M = (-4, 4).
        {{0, 0, 1, 1, 2, 0, 3, 1}, {0.5, 1.5, 2.5}, {0.75, 0.5, 0.25}, 1e-14},
        // Unequal spacing, (0,0) (1,2) (3,0): 6 M1 = 6 (-1 - 2), M1 = -3.
        {{0, 0, 1, 2, 3, 0}, {2}, {1.75}, 0},
        // Knots come back exactly, in any order: y = 2x + 1 (y2 all 0), curved.
        {{0, 1, 0.5, 2, 2, 5, 3.25, 7.5, 7, 15}, {7, 0, 3.25, 0.5, 2}, {15, 1, 7.5, 2, 5}, 0},
        {{-3, 2, -1, -1, 0.3, 4, 2, 0, 2.5, 9, 6, -2}, {6, -3, 0.3, 2, -1}, {-2, 2, 4, 0, -1}, 0},
        // Between the knots the line comes back to rounding.
        {{0, 1, 0.5, 2, 2, 5, 3.25, 7.5, 7, 15}, {-2, 1, 5.5, 9}, {-3, 3, 12, 19}, 1e-13},
    };
    for (const auto &c : cases) {
        auto pts = at_x(c.xs);
        ASSERT_EQ(eval(c.knots, pts), VEXO_OK);
        for (size_t i = 0; i < pts.size(); ++i) {
            EXPECT_NEAR(pts[i].y, c.ys[i], c.tolerance) << &c - cases << " at " << c.xs[i];
            EXPECT_TRUE(pts[i].x == c.xs[i] && pts[i].z == 42 && pts[i].flags == 5); // y only
        }
    }
}

TEST(Spline, EqualKnotsAndTheWarmStartedBracket) {
    // A point bracketed by two knots of equal x (also when the previous
    // bracket ends at that x): y 0, -2, later points untouched.
    auto pts = at_x({1.5, 2.0, 0.5});
    EXPECT_EQ(eval({0, 0, 1, 1, 2, 2, 2, 5}, pts), VEXO_SPLINE_EQUAL_KNOTS);
    EXPECT_TRUE(pts[0].y != -999.0 && pts[1].y == 0.0 && pts[2].y == -999.0);
    pts = at_x({0.0}); // left of two equal first knots
    EXPECT_EQ(eval({1, 0, 1, 3, 2, 2}, pts), VEXO_SPLINE_EQUAL_KNOTS);
    EXPECT_EQ(pts[0].y, 0.0);

    // One call starts each search from the last bracket, a call per point
    // from the whole range: both agree, with equal pairs of knots (never
    // bracketed inside: lo <= x < hi) and with unordered knots.
    std::mt19937 rng(11);
    for (int trial = 0; trial < 300; ++trial) {
        std::vector<double> knots, where;
        for (int k = 0; k < 2 + trial % 9; ++k)
            knots.insert(knots.end(), {(trial % 7 ? k + rng() % 2 : rng() % 12) / 2.0,
                                       (double)(rng() % 10)});
        for (int j = 0; j < 30; ++j)
            where.push_back((rng() % 26) / 4.0 - 1.0); // on the knots and between them
        auto all = at_x(where);
        const uint32_t status = eval(knots, all);
        bool stopped = false;
        for (size_t j = 0; j < where.size(); ++j) {
            auto one = at_x({where[j]});
            const bool single_stops = eval(knots, one) == VEXO_SPLINE_EQUAL_KNOTS;
            const double want = stopped ? -999.0 : one[0].y; // NaN when knots coincide
            ASSERT_TRUE(vexo_test::same_bytes(all[j].y, want)) << trial << " at " << where[j];
            stopped = stopped || single_stops;
        }
        EXPECT_EQ(status, stopped ? VEXO_SPLINE_EQUAL_KNOTS : VEXO_OK) << trial;
    }
}

static int g_failing_call = -1, g_calls = 0;
static void *failing_allocator(size_t bytes) {
    return g_calls++ == g_failing_call ? nullptr : std::malloc(bytes);
}

TEST(Spline, BadArgumentsAndAllocationFailures) {
    const std::vector<double> knots = {0, 0, 1, 1, 2, 0};
    auto pts = at_x({0.5});
    for (int count : {1, 0, -4})
        EXPECT_EQ(vexo_spline_get_curve2d(knots.data(), count, pts.data(), 1), 16u) << count;
    EXPECT_EQ(vexo_spline_get_curve2d(nullptr, 3, pts.data(), 1), 16u);
    EXPECT_EQ(vexo_spline_get_curve2d(knots.data(), 3, nullptr, 1), 16u);
    EXPECT_EQ(vexo_spline_get_curve2d(knots.data(), 3, pts.data(), -1), 16u);
    EXPECT_EQ(vexo_spline_get_curve2d(knots.data(), 3, nullptr, 0), VEXO_OK);
    // Any of the four work buffers failing: 11, points left alone.
    for (g_failing_call = 0; g_failing_call < 5; ++g_failing_call) {
        const bool fails = g_failing_call < 4;
        g_calls = 0;
        EXPECT_EQ(vexo::evaluate_spline(knots.data(), 3, pts.data(), 1, failing_allocator),
                  fails ? VEXO_ERROR_NO_MEMORY : VEXO_OK);
        EXPECT_EQ(pts[0].y, fails ? -999.0 : 0.6875);
    }
    EXPECT_EQ(g_calls, 4);
}
