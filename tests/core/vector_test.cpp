// Vector math: exact results with the single-precision pi, the deliberate
// absence of clamping, in-place side effects and the bisection's reach.
#include <gtest/gtest.h>

#include <cmath>

#include "vexo_test_util.hpp"

using vexo_test::kPiF;

TEST(Vector2d, NormaliseProductsAndAngles) {
    double v[2] = {3, 4}, tiny[2] = {1e-8, 0}, at[2] = {1e-7, 0}, above[2] = {2e-7, 0};
    EXPECT_EQ(vexo_vector2d_length(v), 5.0);
    for (double *w : {v, tiny, at, above})
        vexo_vector2d_normalise(w);
    EXPECT_EQ(v[0], 0.6);
    EXPECT_EQ(v[1], 0.8);
    EXPECT_EQ(tiny[0], 1e-8); // not above the threshold: untouched
    EXPECT_EQ(at[0], 1e-7);
    EXPECT_EQ(above[0], 1.0);
    const double a[2] = {2, -3}, b[2] = {5, 7};
    EXPECT_EQ(vexo_vector2d_dotproduct(a, b), -11.0);
    EXPECT_EQ(vexo_vector2d_scalar(a, b), -11.0);
    EXPECT_EQ(vexo_vector2d_is_ccw(a, b), 29.0); // the signed value, not a truth value
    EXPECT_EQ(vexo_vector2d_is_ccw(b, a), -29.0);

    const double x[2] = {1, 0}, minus_x[2] = {-1, 0}, zero[2] = {0, 0};
    EXPECT_EQ(vexo_vector2d_angle(x, minus_x), kPiF);
    EXPECT_EQ(vexo_vector2d_angle(zero, x), M_PI / 2); // cosine 0: acos in full precision
    EXPECT_NEAR(vexo_vector2d_angle(x, b), std::atan2(7, 5), 1e-15);
    // This vector's cosine with itself rounds to just above 1: NaN, not 0.
    const double u[2] = {-0.58495735019535289, -8.511499198576665};
    EXPECT_GT(vexo_vector2d_angle_cos(u, u), 1.0);
    EXPECT_TRUE(std::isnan(vexo_vector2d_angle(u, u)));
    // Directed: from +Y towards +X, both inputs normalised in place.
    double c[2] = {3, 0}, d[2] = {0, 0.5}, down[2] = {0, -1}, up[2] = {0, 1};
    EXPECT_EQ(vexo_vector2d_angle_directed(c, d), M_PI / 2);
    EXPECT_EQ(c[0] + d[1], 2.0);
    EXPECT_EQ(vexo_vector2d_angle_directed(d, c), -M_PI / 2 + vexo_test::kTwoPiF);
    EXPECT_EQ(vexo_vector2d_angle_directed(down, up), M_PI);
}

TEST(Vector3d, CrossRotateNormaliseAndAngle) {
    const double a[3] = {2, -3, 5}, b[3] = {-7, 11, 13};
    double ab[3];
    vexo_vector3d_crossproduct(a, b, ab);
    EXPECT_EQ(vexo_test::xyz(ab), (vexo_test::Xyz{-94, -61, 1}));
    EXPECT_EQ(ab[0] * b[0] + ab[1] * b[1] + ab[2] * b[2], 0.0); // perpendicular to b

    // Counter-clockwise, the float 2pi's error visible in x.
    double v[3] = {1, 0, 5};
    vexo_vector3d_rotate_z(v, 90);
    EXPECT_NEAR(v[0], -(kPiF - M_PI) / 2, 1e-16); // not cos(pi / 2), about 6e-17
    EXPECT_EQ(v[2], 5.0);
    double w[3] = {2, 3, 6}, tiny[3] = {5e-8, 5e-8, 5e-8};
    EXPECT_EQ(vexo_vector3d_length(w), 7.0);
    vexo_vector3d_normalise(w);
    vexo_vector3d_normalise(tiny);
    EXPECT_EQ(w[2], 6.0 / 7);
    EXPECT_EQ(tiny[0], 5e-8);

    // Degrees with the float pi: a right angle is a hair under 90. The
    // cosine is clamped from above only: u with itself rounds above 1 (0),
    // against its negation below -1 (NaN).
    const double x[3] = {1, 0, 0}, y[3] = {0, 1, 0}, zero[3] = {0, 0, 0};
    EXPECT_NEAR(vexo_vector3d_angle(x, y), 89.99999749552191, 1e-12);
    const double u[3] = {-0.50812388628872895, -4.6012099168103902, -4.2791636929363763};
    const double minus_u[3] = {-u[0], -u[1], -u[2]};
    EXPECT_EQ(vexo_vector3d_angle(u, u), 0.0);
    EXPECT_TRUE(std::isnan(vexo_vector3d_angle(u, minus_u)));
    EXPECT_TRUE(std::isnan(vexo_vector3d_angle(zero, x)));
}

TEST(VectorSegmentDot, BisectionAxesAndNaN) {
    struct Case {
        double end_x, p[3], tolerance;
        uint32_t axes;
        uint8_t expected;
    };
    const uint32_t xy = VEXO_AXIS_X | VEXO_AXIS_Y;
    const Case cases[] = {
        {1024, {1024.2, 0, 0}, 0.25, xy | VEXO_AXIS_Z, 1},
        {1024, {512, 0.1, 0}, 0.2, xy, 1},
        {1024, {300, 40, 0}, 39.9, xy, 0},
        {1024, {300, 40, 0}, 40.5, xy, 1},
        {1024, {341, 0, 0}, 0.3, xy, 0}, // on it, but the search ends on 340.5
        {1024, {341, 0, 0}, 0.5, xy, 1},
        {10, {5, 100, 7}, 0.5, VEXO_AXIS_X, 1},
        {10, {5, 100, 7}, 0.5, xy, 0},
        {10, {5, 100, 7}, 7.1, VEXO_AXIS_X | VEXO_AXIS_Z, 1},
        {10, {5, 100, 7}, 0.0, 0, 1}, // no axis: every distance is 0
        {10, {5, 100, 7}, -1.0, 0, 0},
        {10, {5, NAN, 0}, 0.5, xy, 0},
        {10, {5, 100, 7}, NAN, VEXO_AXIS_X, 0},
    };
    for (const Case &c : cases) {
        const double a[3] = {0, 0, 0}, b[3] = {c.end_x, 0, 0};
        EXPECT_EQ(vexo_vec_line_to_dot_is_dist(a, b, c.p, c.tolerance, c.axes), c.expected)
            << c.p[0] << ", " << c.p[1] << " within " << c.tolerance << " axes " << c.axes;
    }
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
