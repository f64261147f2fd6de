// SPDX-License-Identifier: MIT
// Natural cubic splines: hand-solved cases, equal knots, bracket search.
#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <utility>
#include <vector>

#include "curves/spline.hpp"
#include "vexo_test_util.hpp"

namespace {
// The flag word the spline must carry through unchanged.
constexpr uint32_t kEndFlags = VEXO_POINT_END | VEXO_POINT_END_MARK;

// One call over points at xs whose y starts at -999: the status and the y
// values. Only y may change: x, z and flags must come back as they went in.
std::pair<uint32_t, std::vector<double>> eval(const std::vector<double> &knots,
                                              std::vector<double> xs) {
    std::vector<GeomPoint> pts;
    for (double x : xs) pts.push_back(vexo_test::point(x, -999.0, 42.0, kEndFlags));
    const uint32_t status = vexo_spline_get_curve2d(knots.data(), (int32_t)(knots.size() / 2),
                                                    pts.data(), (int32_t)pts.size());
    for (size_t i = 0; i < pts.size(); ++i) {
        EXPECT_EQ(pts[i].x, xs[i]);
        EXPECT_EQ(pts[i].z, 42);
        EXPECT_EQ(pts[i].flags, kEndFlags);
        xs[i] = pts[i].y;
    }
    return {status, xs};
}

} // namespace

TEST(Spline, HandSolvedLinesAndKnots) {
    const struct {
        std::vector<double> knots, xs, ys;
        double tolerance;
    } cases[] = {
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
        const auto [status, ys] = eval(c.knots, c.xs);
        ASSERT_EQ(status, VEXO_OK);
        for (size_t i = 0; i < ys.size(); ++i)
            EXPECT_NEAR(ys[i], c.ys[i], c.tolerance) << &c - cases << " at " << c.xs[i];
    }
}

TEST(Spline, EqualKnotsAndTheWarmStartedBracket) {
    // A point on two knots of equal x, the previous bracket ending there: y 0,
    // the point before written, later points untouched.
    const auto [status, ys] = eval({0, 0, 1, 1, 2, 2, 2, 5}, {1.5, 2.0, 0.5});
    EXPECT_EQ(status, VEXO_SPLINE_EQUAL_KNOTS);
    EXPECT_NE(ys[0], -999.0);
    EXPECT_EQ(ys[1], 0.0);
    EXPECT_EQ(ys[2], -999.0);

    // One call starts each search from the last bracket, a call per point
    // from the whole range: both agree, with equal pairs of knots (never
    // bracketed inside: lo <= x < hi) and with unordered knots.
    std::mt19937 rng(11);
    for (int trial = 0; trial < 300; ++trial) {
        std::vector<double> knots, where;
        for (int k = 0; k < 2 + trial % 9; ++k)
            knots.insert(knots.end(),
                         {(trial % 7 ? k + rng() % 2 : rng() % 12) / 2.0, (double)(rng() % 10)});
        for (int j = 0; j < 30; ++j)
            where.push_back((rng() % 26) / 4.0 - 1.0); // on the knots and between them
        const auto all = eval(knots, where);
        bool stopped = false;
        for (size_t j = 0; j < where.size(); ++j) {
            const auto one = eval(knots, {where[j]});
            const double want = stopped ? -999.0 : one.second[0]; // NaN when knots coincide
            ASSERT_TRUE(vexo_test::same_bytes(all.second[j], want)) << trial << " at " << where[j];
            stopped = stopped || one.first == VEXO_SPLINE_EQUAL_KNOTS;
        }
        EXPECT_EQ(all.first, stopped ? VEXO_SPLINE_EQUAL_KNOTS : VEXO_OK) << trial;
    }
}

TEST(Spline, BadArgumentsAndAllocationFailures) {
    const double knots[6] = {0, 0, 1, 1, 2, 0};
    GeomPoint pt = vexo_test::point(0.5, -999.0);
    for (int count : {1, 0, -4})
        EXPECT_EQ(vexo_spline_get_curve2d(knots, count, &pt, 1), VEXO_ERROR_INVALID_PARAMETER)
            << count;
    EXPECT_EQ(vexo_spline_get_curve2d(nullptr, 3, &pt, 1), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_spline_get_curve2d(knots, 3, nullptr, 1), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_spline_get_curve2d(knots, 3, &pt, -1), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_spline_get_curve2d(knots, 3, nullptr, 0), VEXO_OK);
    // Any of the four work buffers failing: 11, the point left alone.
    static int failing, calls;
    auto allocator = [](size_t bytes) { return calls++ == failing ? nullptr : std::malloc(bytes); };
    for (failing = 0; failing < 5; ++failing) {
        calls = 0;
        EXPECT_EQ(vexo::evaluate_spline(knots, 3, &pt, 1, allocator),
                  failing < 4 ? VEXO_ERROR_NO_MEMORY : VEXO_OK);
        EXPECT_EQ(pt.y, failing < 4 ? -999.0 : 0.6875);
    }
    EXPECT_EQ(calls, 4);
}
