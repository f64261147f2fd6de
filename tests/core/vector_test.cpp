// SPDX-License-Identifier: MIT
// Vector math: exact results with the single-precision pi, the deliberate
// absence of clamping, in-place side effects and the bisection's reach.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "vexo_test_util.hpp"

using vexo_test::kPiF;
using Values = std::vector<double>; // several results compared in one assertion

TEST(Vector2d, NormaliseProductsAndAngles) {
    double v[2] = {3, 4}, at[2] = {1e-7, 0}, above[2] = {1.01e-7, 0};
    EXPECT_EQ(vexo_vector2d_length(v), 5.0);
    for (double *w : {v, at, above}) vexo_vector2d_normalise(w);
    // A length of 1e-7 is not above the threshold: left as it is.
    EXPECT_EQ((Values{v[0], v[1], at[0], above[0]}), (Values{0.6, 0.8, 1e-7, 1.0}));
    // is_ccw gives the signed value, not a truth value.
    const double a[2] = {2, -3}, b[2] = {5, 7};
    EXPECT_EQ((Values{vexo_vector2d_dotproduct(a, b), vexo_vector2d_scalar(a, b),
                      vexo_vector2d_is_ccw(a, b), vexo_vector2d_is_ccw(b, a)}),
              (Values{-11, -11, 29, -29}));

    // Opposite vectors give the float pi; a cosine of 0 the full-precision acos.
    const double x[2] = {1, 0}, minus_x[2] = {-1, 0}, zero[2] = {0, 0};
    EXPECT_EQ((Values{vexo_vector2d_angle(x, minus_x), vexo_vector2d_angle(zero, x)}),
              (Values{kPiF, M_PI / 2}));
    EXPECT_NEAR(vexo_vector2d_angle(x, b), std::atan2(7, 5), 1e-15);
    // This vector's cosine with itself rounds to just above 1: NaN, not 0.
    const double u[2] = {-0.58495735019535289, -8.511499198576665};
    EXPECT_GT(vexo_vector2d_angle_cos(u, u), 1.0);
    EXPECT_TRUE(std::isnan(vexo_vector2d_angle(u, u)));
    // Directed: from +Y towards +X, both inputs normalised in place.
    double c[2] = {3, 0}, d[2] = {0, 0.5}, down[2] = {0, -1}, up[2] = {0, 1};
    EXPECT_EQ((Values{vexo_vector2d_angle_directed(c, d), c[0] + d[1],
                      vexo_vector2d_angle_directed(d, c), vexo_vector2d_angle_directed(down, up)}),
              (Values{M_PI / 2, 2.0, -M_PI / 2 + vexo_test::kTwoPiF, M_PI}));
}

TEST(Vector3d, CrossRotateNormaliseAndAngle) {
    const double a[3] = {2, -3, 5}, b[3] = {-7, 11, 13};
    double ab[3] = {};
    vexo_vector3d_crossproduct(a, b, ab);
    EXPECT_EQ(vexo_test::xyz(ab), (vexo_test::Xyz{-94, -61, 1}));

    // Counter-clockwise, the float 2pi's error visible in x.
    double v[3] = {1, 0, 5};
    vexo_vector3d_rotate_z(v, 90);
    EXPECT_NEAR(v[0], -(kPiF - M_PI) / 2, 1e-16); // not cos(pi / 2), about 6e-17
    EXPECT_EQ((Values{v[1], v[2]}), (Values{std::sin(vexo_test::kTwoPiF / 4), 5.0}));
    double w[3] = {2, 3, 6}, at[3] = {0, 0, 1e-7}; // a length not above 1e-7: left as it is
    EXPECT_EQ(vexo_vector3d_length(w), 7.0);
    vexo_vector3d_normalise(w);
    vexo_vector3d_normalise(at);
    EXPECT_EQ((Values{w[2], at[2]}), (Values{6.0 / 7, 1e-7}));

    // Degrees with the float pi run short: 80.8748263 for a and b (cosine
    // 18 / sqrt(38 * 339), 80.8748285 exactly). The cosine is clamped from above
    // only: u with itself rounds above 1 (0), against -u below -1 (NaN).
    EXPECT_NEAR(vexo_vector3d_angle(a, b), 80.87482629915277, 1e-12);
    // Radians to degrees as r * 0.5 / pi * 360; r * 180 / pi ends in ...227.
    const double e1[3] = {1, 0, 0}, e34[3] = {3, 4, 0};
    EXPECT_EQ(vexo_vector3d_angle(e1, e34), 53.130100875676234);
    const double u[3] = {-0.50812388628872895, -4.6012099168103902, -4.2791636929363763};
    const double minus_u[3] = {-u[0], -u[1], -u[2]}, zero[3] = {0, 0, 0};
    EXPECT_EQ(vexo_vector3d_angle(u, u), 0.0);
    EXPECT_TRUE(std::isnan(vexo_vector3d_angle(u, minus_u)));
    EXPECT_TRUE(std::isnan(vexo_vector3d_angle(zero, u)));
}

TEST(VectorSegmentDot, BisectionAxesAndNaN) {
    const uint32_t xy = VEXO_AXIS_X | VEXO_AXIS_Y, xyz = xy | VEXO_AXIS_Z;
    const double o[3] = {0, 0, 0}, x1024[3] = {1024, 0, 0}, x10[3] = {10, 0, 0};
    const double from[3] = {1, 2, 3}, to[3] = {1, 10, 9}; // a 3D segment of length 10
    const struct {
        const double *a, *b, p[3], tolerance;
        uint32_t axes, expected;
    } cases[] = {
        {o, x1024, {1024.2, 0, 0}, 0.25, xyz, 1},
        {o, x1024, {300, 40, 0}, 39.9, xy, 0},
        {o, x1024, {300, 40, 0}, 40.5, xy, 1},
        {o, x1024, {341, 0, 0}, 0.3, xy, 0}, // on it, but the search ends on 340.5
        {o, x1024, {341, 0, 0}, 0.5, xy, 1},
        {o, x10, {5, 100, 7}, 0.5, VEXO_AXIS_X, 1},
        {o, x10, {5, 100, 7}, 0.5, xy, 0},
        {o, x10, {5, 100, 7}, 7.1, VEXO_AXIS_X | VEXO_AXIS_Z, 1},
        {o, x10, {5, 100, 7}, 0.0, 0, 1}, // no axis: every distance is 0
        {o, x10, {5, 100, 7}, -1.0, 0, 0},
        {o, x10, {5, NAN, 0}, 0.5, xy, 0},
        {o, x10, {5, 100, 7}, NAN, VEXO_AXIS_X, 0},
        {from, to, {1, 6, 6}, 0.0, xyz, 1}, // the first midpoint, exactly
    };
    for (const auto &c : cases)
        EXPECT_EQ(vexo_vec_line_to_dot_is_dist(c.a, c.b, c.p, c.tolerance, c.axes), c.expected)
            << c.p[0] << ", " << c.p[1] << " within " << c.tolerance << " axes " << c.axes;
}

TEST(VectorNullArguments, IgnoredOrNaN) {
    const double v[3] = {1, 2, 3};
    double out[3] = {7, 7, 7};
    vexo_vector2d_normalise(nullptr);
    vexo_vector3d_rotate_z(nullptr, 30);
    vexo_vector3d_crossproduct(v, nullptr, out);
    vexo_vector3d_crossproduct(v, v, nullptr);
    EXPECT_EQ(out[0], 7.0);
    for (double r : {vexo_vector2d_length(nullptr), vexo_vector2d_dotproduct(v, nullptr),
                     vexo_vector2d_angle(v, nullptr), vexo_vector2d_angle_directed(nullptr, out),
                     vexo_vector2d_is_ccw(nullptr, v), vexo_vector3d_angle(v, nullptr)})
        EXPECT_TRUE(std::isnan(r));
    EXPECT_EQ(vexo_vec_line_to_dot_is_dist(nullptr, v, v, 1, 7), 0);
}
