#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "curves/bezier.hpp"
#include "vexo.h"

namespace {

GeomPoint sentinel() {
    GeomPoint p;
    std::memset(&p, 0, sizeof p);
    p.x = p.y = p.z = -777.0;
    p.flags = 0xDEAD;
    return p;
}

// Independent evaluation by repeated linear interpolation.
void de_casteljau(const std::vector<double> &c, double t, double out[3]) {
    std::vector<double> work = c;
    const size_t n = c.size() / 3;
    for (size_t level = n - 1; level > 0; --level)
        for (size_t i = 0; i < level; ++i)
            for (int d = 0; d < 3; ++d)
                work[3 * i + d] = (1 - t) * work[3 * i + d] + t * work[3 * (i + 1) + d];
    for (int d = 0; d < 3; ++d)
        out[d] = work[d];
}

} // namespace

TEST(Bezier, BinomialsFromTheFactorialTable) {
    EXPECT_EQ(vexo::binomial(0, 0), 1.0);
    EXPECT_EQ(vexo::binomial(3, 1), 3.0);
    EXPECT_EQ(vexo::binomial(10, 5), 252.0);
    EXPECT_EQ(vexo::binomial(20, 10), 184756.0);
    EXPECT_NEAR(vexo::binomial(32, 16), 601080390.0, 1e-6);
    EXPECT_EQ(vexo::binomial(31, 0), 1.0);
    // Outside 0..32 the coefficient is 0, never a table overrun.
    EXPECT_EQ(vexo::binomial(5, 6), 0.0);
    EXPECT_EQ(vexo::binomial(5, -1), 0.0);
    EXPECT_EQ(vexo::binomial(33, 1), 0.0);
    EXPECT_EQ(vexo::binomial(-1, 0), 0.0);
    // The ends of the parameter range are exact, even for degree 31.
    EXPECT_EQ(vexo::bernstein(31, 0, 0.0), 1.0);
    EXPECT_EQ(vexo::bernstein(31, 31, 1.0), 1.0);
    EXPECT_EQ(vexo::bernstein(31, 5, 0.0), 0.0);
    EXPECT_EQ(vexo::bernstein(31, 5, 1.0), 0.0);
    // The basis sums to 1 (partition of unity).
    for (double t : {0.1, 0.25, 0.5, 0.77, 0.999}) {
        double sum = 0;
        for (int i = 0; i <= 31; ++i)
            sum += vexo::bernstein(31, i, t);
        EXPECT_NEAR(sum, 1.0, 1e-12) << t;
    }
}

TEST(Bezier, WorkedExamples) {
    const double line[6] = {0, 0, 0, 2, 4, 6};
    GeomPoint out[3] = {sentinel(), sentinel(), sentinel()};
    ASSERT_EQ(vexo_bezier_get_curve3d(line, 2, out, 3), VEXO_OK);
    EXPECT_EQ(out[0].x, 0.0);
    EXPECT_EQ(out[1].x, 1.0);
    EXPECT_EQ(out[1].y, 2.0);
    EXPECT_EQ(out[1].z, 3.0);
    EXPECT_EQ(out[2].x, 2.0);
    EXPECT_EQ(out[2].z, 6.0);
    for (const GeomPoint &p : out)
        EXPECT_EQ(p.flags, 0u);

    // One control point: every sample is that point.
    const double one[3] = {1.5, -2.5, 3.25};
    GeomPoint copies[4];
    ASSERT_EQ(vexo_bezier_get_curve3d(one, 1, copies, 4), VEXO_OK);
    for (const GeomPoint &p : copies) {
        EXPECT_EQ(p.x, 1.5);
        EXPECT_EQ(p.y, -2.5);
        EXPECT_EQ(p.z, 3.25);
    }

    // One step: the single record is at t = 0.
    GeomPoint single[2] = {sentinel(), sentinel()};
    ASSERT_EQ(vexo_bezier_get_curve3d(line, 2, single, 1), VEXO_OK);
    EXPECT_EQ(single[0].x, 0.0);
    EXPECT_EQ(single[0].flags, 0u);
    EXPECT_EQ(single[1].x, -777.0);
}

TEST(Bezier, EndPointsExactForManyStepsAndAllDegrees) {
    std::vector<double> controls;
    for (int i = 0; i < 32; ++i) {
        controls.push_back(std::sin(i * 0.7) * 10.0 + 0.1);
        controls.push_back(std::cos(i * 1.3) * 3.0 - 0.3);
        controls.push_back(i * 0.37);
    }
    for (int count : {2, 3, 4, 17, 31, 32}) {
        for (uint32_t steps : {2u, 3u, 10u, 9973u, 200001u}) {
            std::vector<GeomPoint> out(steps);
            ASSERT_EQ(vexo_bezier_get_curve3d(controls.data(), count, out.data(), steps),
                      VEXO_OK);
            const double *last = &controls[3 * (count - 1)];
            EXPECT_EQ(out.front().x, controls[0]);
            EXPECT_EQ(out.front().y, controls[1]);
            EXPECT_EQ(out.front().z, controls[2]);
            EXPECT_EQ(out.back().x, last[0]) << count << " " << steps;
            EXPECT_EQ(out.back().y, last[1]) << count << " " << steps;
            EXPECT_EQ(out.back().z, last[2]) << count << " " << steps;
        }
    }
}

TEST(Bezier, CubicAgreesWithDeCasteljau) {
    const std::vector<double> c = {0, 0, 0, 1, 3, -1, 4, 3, 2, 5, 0, 7};
    const uint32_t steps = 101;
    std::vector<GeomPoint> out(steps);
    ASSERT_EQ(vexo_bezier_get_curve3d(c.data(), 4, out.data(), steps), VEXO_OK);
    double t = 0.0;
    const double dt = 1.0 / (steps - 1);
    for (uint32_t s = 0; s < steps; ++s, t += dt) {
        double ref[3];
        de_casteljau(c, t < 1.0 ? t : 1.0, ref);
        EXPECT_NEAR(out[s].x, ref[0], 1e-12) << s;
        EXPECT_NEAR(out[s].y, ref[1], 1e-12) << s;
        EXPECT_NEAR(out[s].z, ref[2], 1e-12) << s;
    }
    // The curve at t = 0.5 by hand: (1/8)(P0 + 3 P1 + 3 P2 + P3).
    GeomPoint mid[3];
    ASSERT_EQ(vexo_bezier_get_curve3d(c.data(), 4, mid, 3), VEXO_OK);
    EXPECT_EQ(mid[1].x, (0 + 3 * 1 + 3 * 4 + 5) / 8.0);
    EXPECT_EQ(mid[1].y, (0 + 3 * 3 + 3 * 3 + 0) / 8.0);
    EXPECT_EQ(mid[1].z, (0 - 3 + 6 + 7) / 8.0);
}

TEST(Bezier, BadArgumentsWriteNothing) {
    std::vector<double> controls(3 * 40, 1.0);
    GeomPoint out[2] = {sentinel(), sentinel()};
    EXPECT_EQ(vexo_bezier_get_curve3d(controls.data(), 33, out, 2), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_bezier_get_curve3d(controls.data(), 33, out, 0), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_bezier_get_curve3d(controls.data(), 0, out, 2), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_bezier_get_curve3d(controls.data(), -3, out, 2), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_bezier_get_curve3d(nullptr, 2, out, 2), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_bezier_get_curve3d(controls.data(), 2, nullptr, 2),
              VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(out[0].flags, 0xDEADu);
    EXPECT_EQ(out[1].x, -777.0);
    // No steps: success with nothing written, whatever else is passed.
    EXPECT_EQ(vexo_bezier_get_curve3d(nullptr, 0, nullptr, 0), VEXO_OK);
    EXPECT_EQ(vexo_bezier_get_curve3d(controls.data(), 32, out, 0), VEXO_OK);
    EXPECT_EQ(out[0].flags, 0xDEADu);
}
