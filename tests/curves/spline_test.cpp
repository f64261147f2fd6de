#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

#include "curves/spline.hpp"
#include "vexo.h"

namespace {

std::vector<GeomPoint> at_x(const std::vector<double> &xs) {
    std::vector<GeomPoint> pts(xs.size());
    for (size_t i = 0; i < xs.size(); ++i) {
        std::memset(&pts[i], 0, sizeof(GeomPoint));
        pts[i].x = xs[i];
        pts[i].y = -999.0;
        pts[i].z = 42.0;
        pts[i].flags = 5;
    }
    return pts;
}

uint32_t eval(const std::vector<double> &knots, std::vector<GeomPoint> &pts) {
    return vexo_spline_get_curve2d(knots.data(), (int32_t)(knots.size() / 2), pts.data(),
                                   (int32_t)pts.size());
}

// Plain bisection over the whole range, as a reference for the warm start.
void plain_bracket(const std::vector<double> &xs, double x, int *lo, int *hi) {
    int klo = 0, khi = (int)xs.size() - 1;
    while (khi - klo > 1) {
        const int k = (khi + klo) >> 1;
        if (xs[k] > x)
            khi = k;
        else
            klo = k;
    }
    *lo = klo;
    *hi = khi;
}

} // namespace

TEST(Spline, HandSolvedNaturalSplines) {
    // (0,0) (1,1) (2,0): 4 M1 = 6 (-1 - 1), so M1 = -3.
    std::vector<double> three = {0, 0, 1, 1, 2, 0};
    auto pts = at_x({0.5, 1.5, -1.0, 3.0});
    ASSERT_EQ(eval(three, pts), VEXO_OK);
    EXPECT_EQ(pts[0].y, 0.6875);
    EXPECT_EQ(pts[1].y, 0.6875);
    // Outside the knots the end cubics extrapolate.
    EXPECT_EQ(pts[2].y, -1.0);
    EXPECT_EQ(pts[3].y, -1.0);
    // Only y is written.
    EXPECT_EQ(pts[0].x, 0.5);
    EXPECT_EQ(pts[0].z, 42.0);
    EXPECT_EQ(pts[0].flags, 5u);

    // (0,0) (1,1) (2,0) (3,1): 4 M1 + M2 = -12, M1 + 4 M2 = 12.
    const double xs[4] = {0, 1, 2, 3}, ys[4] = {0, 1, 0, 1};
    double y2[4], scratch[3];
    vexo::spline_second_derivatives(xs, ys, 4, vexo::kNaturalEnd, vexo::kNaturalEnd, y2,
                                    scratch);
    EXPECT_EQ(y2[0], 0.0);
    EXPECT_NEAR(y2[1], -4.0, 1e-14);
    EXPECT_NEAR(y2[2], 4.0, 1e-14);
    EXPECT_EQ(y2[3], 0.0);
    std::vector<double> four = {0, 0, 1, 1, 2, 0, 3, 1};
    pts = at_x({0.5, 1.5, 2.5});
    ASSERT_EQ(eval(four, pts), VEXO_OK);
    EXPECT_NEAR(pts[0].y, 0.75, 1e-14);
    EXPECT_NEAR(pts[1].y, 0.5, 1e-14);
    EXPECT_NEAR(pts[2].y, 0.25, 1e-14);

    // Unequal spacing: (0,0) (1,2) (3,0) gives 6 M1 = 6 (-1 - 2), M1 = -3.
    std::vector<double> uneven = {0, 0, 1, 2, 3, 0};
    pts = at_x({2.0});
    ASSERT_EQ(eval(uneven, pts), VEXO_OK);
    EXPECT_EQ(pts[0].y, 1.75);

    // With a clamped start slope the end row changes (-0.5 / 0.5 rows):
    // two knots of a line with matching slopes give y2 = 0.
    const double lx[2] = {0, 2}, ly[2] = {1, 5};
    double ly2[2], lscratch[1];
    vexo::spline_second_derivatives(lx, ly, 2, 2.0, 2.0, ly2, lscratch);
    EXPECT_EQ(ly2[0], 0.0);
    EXPECT_EQ(ly2[1], 0.0);
}

TEST(Spline, LinesAndKnotsAreReproducedExactly) {
    // y = 2x + 1 on unevenly spaced knots: every y2 is exactly 0, so the
    // line comes back (exactly at the knots, to rounding between them).
    const double kx[5] = {0, 0.5, 2, 3.25, 7};
    std::vector<double> knots;
    for (double x : kx) {
        knots.push_back(x);
        knots.push_back(2 * x + 1);
    }
    double y2[5], scratch[4];
    const double ys[5] = {1, 2, 5, 7.5, 15};
    vexo::spline_second_derivatives(kx, ys, 5, vexo::kNaturalEnd, vexo::kNaturalEnd, y2, scratch);
    for (double v : y2)
        EXPECT_EQ(v, 0.0);
    std::vector<double> xs;
    for (int k = -16; k <= 72; ++k)
        xs.push_back(k / 8.0);
    auto pts = at_x(xs);
    ASSERT_EQ(eval(knots, pts), VEXO_OK);
    for (const GeomPoint &p : pts)
        EXPECT_NEAR(p.y, 2 * p.x + 1, 1e-13) << p.x;
    pts = at_x({0, 0.5, 2, 3.25, 7});
    ASSERT_EQ(eval(knots, pts), VEXO_OK);
    for (const GeomPoint &p : pts)
        EXPECT_EQ(p.y, 2 * p.x + 1) << p.x;

    // A curved spline passes through its knots exactly.
    std::vector<double> wavy = {-3, 2, -1, -1, 0.3, 4, 2, 0, 2.5, 9, 6, -2};
    pts = at_x({6, -3, 0.3, 2.5, -1, 2});
    ASSERT_EQ(eval(wavy, pts), VEXO_OK);
    EXPECT_EQ(pts[0].y, -2.0);
    EXPECT_EQ(pts[1].y, 2.0);
    EXPECT_EQ(pts[2].y, 4.0);
    EXPECT_EQ(pts[3].y, 9.0);
    EXPECT_EQ(pts[4].y, -1.0);
    EXPECT_EQ(pts[5].y, 0.0);
}

TEST(Spline, EqualKnotsStopTheEvaluation) {
    // The last two knots share x: a point there brackets them.
    std::vector<double> knots = {0, 0, 1, 1, 2, 2, 2, 5};
    auto pts = at_x({0.5, 2.0, 1.5});
    EXPECT_EQ(eval(knots, pts), VEXO_SPLINE_EQUAL_KNOTS);
    EXPECT_EQ((int32_t)VEXO_SPLINE_EQUAL_KNOTS, -2);
    EXPECT_NE(pts[0].y, -999.0);
    EXPECT_EQ(pts[1].y, 0.0);
    EXPECT_EQ(pts[2].y, -999.0); // later points untouched
    // Left of two equal first knots.
    std::vector<double> front = {1, 0, 1, 3, 2, 2};
    pts = at_x({0.0});
    EXPECT_EQ(eval(front, pts), VEXO_SPLINE_EQUAL_KNOTS);
    EXPECT_EQ(pts[0].y, 0.0);
    // An inner pair of equal knots is never bracketed (bisection keeps
    // xs[lo] <= x < xs[hi]), so it does not stop the evaluation.
    std::vector<double> step = {0, 0, 1, 1, 1, 3, 2, 0};
    pts = at_x({0.5, 1.0, 0.2, 1.0});
    EXPECT_EQ(eval(step, pts), VEXO_OK);
}

TEST(Spline, WarmStartFindsThePlainBisectionInterval) {
    // At an inner pair of equal knots a point at their x must land right
    // of the pair even when the previous point ended left of it.
    const std::vector<double> step = {0, 1, 1, 2};
    int lo = 0, hi = 3;
    vexo::bracket_knots(step.data(), 4, true, 0.5, &lo, &hi);
    EXPECT_EQ(lo, 0);
    vexo::bracket_knots(step.data(), 4, true, 1.0, &lo, &hi);
    EXPECT_EQ(lo, 2);
    EXPECT_EQ(hi, 3);

    std::mt19937 rng(11);
    std::uniform_real_distribution<double> u(-2.0, 12.0);
    for (int trial = 0; trial < 200; ++trial) {
        const int n = 2 + trial % 9;
        std::vector<double> xs(n);
        for (int k = 0; k < n; ++k)
            xs[k] = k + (trial % 3 == 0 && k == n / 2 ? 0.0 : 0.5 * (rng() % 2));
        // Some trials use unordered knots (caller error): still the plain
        // bisection's interval, never a read outside the knots.
        if (trial % 7 == 0)
            std::shuffle(xs.begin(), xs.end(), rng);
        const bool asc = vexo::knots_ascending(xs.data(), n);
        lo = 0;
        hi = n - 1;
        for (int j = 0; j < 60; ++j) {
            const double x = (j % 5 == 0) ? xs[rng() % n] : u(rng);
            vexo::bracket_knots(xs.data(), n, asc, x, &lo, &hi);
            int plo, phi;
            plain_bracket(xs, x, &plo, &phi);
            ASSERT_EQ(lo, plo) << "trial " << trial << " x " << x;
            ASSERT_EQ(hi, phi) << "trial " << trial << " x " << x;
        }
    }
}

namespace {
int g_failing_call = -1;
int g_calls = 0;
void *failing_allocator(size_t bytes) {
    return g_calls++ == g_failing_call ? nullptr : std::malloc(bytes);
}
} // namespace

TEST(Spline, BadArgumentsAndAllocationFailures) {
    std::vector<double> knots = {0, 0, 1, 1, 2, 0};
    auto pts = at_x({0.5});
    EXPECT_EQ(vexo_spline_get_curve2d(nullptr, 3, pts.data(), 1), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_spline_get_curve2d(knots.data(), 1, pts.data(), 1),
              VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_spline_get_curve2d(knots.data(), 0, pts.data(), 1),
              VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_spline_get_curve2d(knots.data(), -4, pts.data(), 1),
              VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_spline_get_curve2d(knots.data(), 3, nullptr, 1), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_spline_get_curve2d(knots.data(), 3, pts.data(), -1),
              VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(pts[0].y, -999.0);
    EXPECT_EQ(vexo_spline_get_curve2d(knots.data(), 3, nullptr, 0), VEXO_OK);

    // Any of the four work buffers failing gives 11 and leaves the points.
    for (int failing = 0; failing < 4; ++failing) {
        g_failing_call = failing;
        g_calls = 0;
        EXPECT_EQ(vexo::evaluate_spline(knots.data(), 3, pts.data(), 1, failing_allocator),
                  VEXO_ERROR_NO_MEMORY)
            << failing;
        EXPECT_EQ(pts[0].y, -999.0);
    }
    g_failing_call = -1;
    g_calls = 0;
    EXPECT_EQ(vexo::evaluate_spline(knots.data(), 3, pts.data(), 1, failing_allocator), VEXO_OK);
    EXPECT_EQ(g_calls, 4);
    EXPECT_EQ(pts[0].y, 0.6875);
}
