// SPDX-License-Identifier: MIT
// Bezier sampling: worked examples, exact end points, de Casteljau, bad input.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "vexo_test_util.hpp"

namespace {
// A flag word the curve must leave as the caller wrote it.
constexpr uint32_t kAllEndFlags = VEXO_POINT_END | VEXO_POINT_PROCESSED | VEXO_POINT_END_MARK;
} // namespace

using vexo_test::xyz;
using vexo_test::Xyz;

TEST(Bezier, WorkedExamplesAndBadArguments) {
    const double line[6] = {0, 0, 0, 2, 4, 6}, one[3] = {1.5, -2.5, 3.25};
    GeomPoint out[4];
    ASSERT_EQ(vexo_bezier_get_curve3d(line, 2, out, 3), VEXO_OK);
    EXPECT_EQ(xyz(out[1]), (Xyz{1, 2, 3})); // the midpoint exactly (the ends: below)
    ASSERT_EQ(vexo_bezier_get_curve3d(one, 1, out, 4), VEXO_OK); // copies of the one point
    for (const GeomPoint &p : out) {
        EXPECT_EQ(xyz(p), xyz(one));
        EXPECT_EQ(p.flags, 0);
    }
    out[1].flags = kAllEndFlags;
    ASSERT_EQ(vexo_bezier_get_curve3d(line, 2, out, 1), VEXO_OK); // one step: t = 0 only
    EXPECT_EQ(xyz(out[0]), (Xyz{0, 0, 0}));
    EXPECT_EQ(out[1].flags, kAllEndFlags);
    // 33 points are refused before the step count is looked at; no steps
    // need nothing else; otherwise no points or no arrays are refused.
    for (int count : {33, 0, -3})
        EXPECT_EQ(vexo_bezier_get_curve3d(line, count, out, count == 33 ? 0 : 2),
                  VEXO_ERROR_INVALID_PARAMETER)
            << count;
    EXPECT_EQ(vexo_bezier_get_curve3d(nullptr, 2, out, 2), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_bezier_get_curve3d(line, 2, nullptr, 2), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_bezier_get_curve3d(nullptr, 0, nullptr, 0), VEXO_OK);
    EXPECT_EQ(xyz(out[0]), (Xyz{0, 0, 0}));
    EXPECT_EQ(out[1].flags, kAllEndFlags);
}

TEST(Bezier, ExactEndsAndDeCasteljauUpToDegree31) {
    // The last sample is the last point exactly, t having drifted below 1
    // (100000 steps) or above it (150001); 6.7e-6 short of 1 is not snapped.
    std::vector<double> c;
    for (int i = 0; i < 32; ++i)
        c.insert(c.end(), {std::sin(i * 0.7) * 10 + 0.1, std::cos(i * 1.3) * 3 - 0.3, i * 0.37});
    for (int count : {2, 4, 17, 32})
        for (uint32_t steps : {100000u, 150001u, 101u}) {
            std::vector<GeomPoint> out(steps);
            ASSERT_EQ(vexo_bezier_get_curve3d(c.data(), count, out.data(), steps), VEXO_OK);
            EXPECT_EQ(xyz(out[0]), xyz(c.data())) << count << " " << steps;
            EXPECT_NE(xyz(out[steps - 2]), xyz(out.back())) << count << " " << steps;
            EXPECT_EQ(xyz(out.back()), xyz(&c[3 * (count - 1)])) << count << " " << steps;
            for (uint32_t s = 0; steps == 101 && s < steps; ++s) {
                std::vector<double> w(c.begin(), c.begin() + 3 * count);
                for (int level = count - 1; level > 0; --level)
                    for (int i = 0; i < 3 * level; ++i)
                        w[i] = (1 - s / 100.0) * w[i] + s / 100.0 * w[i + 3];
                for (int d = 0; d < 3; ++d)
                    EXPECT_NEAR(xyz(out[s])[d], w[d], 1e-11) << count << " at " << s;
            }
        }
}
