// Vector math: exact results with the single-precision pi, the deliberate
// absence of clamping, in-place side effects and the bisection's reach.
#include <gtest/gtest.h>

#include <cmath>

#include "vexo.h"

namespace {

constexpr double kPiF = 3.1415927410125732;
constexpr double kTwoPiF = 6.2831854820251465;
// Twice the gap between single- and double-precision pi is what a quarter
// turn is off by when degrees go through the float constant.
const double kQuarterTurnError = (kPiF - M_PI) / 2;

TEST(Vector2d, NormaliseLengthAndProducts) {
    double v[2] = {3, 4};
    EXPECT_EQ(vexo_vector2d_length(v), 5.0);
    vexo_vector2d_normalise(v);
    EXPECT_EQ(v[0], 0.6);
    EXPECT_EQ(v[1], 0.8);

    double tiny[2] = {1e-8, 0};
    vexo_vector2d_normalise(tiny);
    EXPECT_EQ(tiny[0], 1e-8); // not above the zero threshold: untouched
    double at_threshold[2] = {1e-7, 0};
    vexo_vector2d_normalise(at_threshold);
    EXPECT_EQ(at_threshold[0], 1e-7);
    double above[2] = {2e-7, 0};
    vexo_vector2d_normalise(above);
    EXPECT_EQ(above[0], 1.0);

    const double a[2] = {2, -3}, b[2] = {5, 7};
    EXPECT_EQ(vexo_vector2d_dotproduct(a, b), -11.0);
    EXPECT_EQ(vexo_vector2d_scalar(a, b), vexo_vector2d_dotproduct(a, b));
    // Sign of the 2D cross product: b turns counter-clockwise from a.
    const double x[2] = {1, 0}, y[2] = {0, 1}, x2[2] = {-4, 0};
    EXPECT_EQ(vexo_vector2d_is_ccw(x, y), 1.0);
    EXPECT_EQ(vexo_vector2d_is_ccw(y, x), -1.0);
    EXPECT_EQ(vexo_vector2d_is_ccw(x, x2), 0.0);
    EXPECT_EQ(vexo_vector2d_is_ccw(a, b), 29.0);
}

TEST(Vector2d, AnglesUseFloatPiAndNoClamping) {
    const double x[2] = {1, 0}, minus_x[2] = {-1, 0}, zero[2] = {0, 0};
    EXPECT_EQ(vexo_vector2d_angle(x, minus_x), kPiF);
    EXPECT_NE(vexo_vector2d_angle(x, minus_x), M_PI);
    // A zero vector gives cosine 0 and so a full-precision right angle.
    EXPECT_EQ(vexo_vector2d_angle_cos(x, zero), 0.0);
    EXPECT_EQ(vexo_vector2d_angle(zero, x), M_PI / 2);

    const double d[2] = {1, 1}, e[2] = {0, 2};
    EXPECT_NEAR(vexo_vector2d_angle_cos(d, e), std::sqrt(0.5), 1e-15);
    EXPECT_NEAR(vexo_vector2d_angle(d, e), M_PI / 4, 1e-15);

    // This vector's cosine with itself rounds to just above 1: NaN, not 0.
    const double v[2] = {-0.58495735019535289, -8.511499198576665};
    EXPECT_GT(vexo_vector2d_angle_cos(v, v), 1.0);
    EXPECT_TRUE(std::isnan(vexo_vector2d_angle(v, v)));
}

TEST(Vector2d, DirectedAngleNormalisesInPlace) {
    double a[2] = {3, 0}, b[2] = {0, 0.5};
    EXPECT_EQ(vexo_vector2d_angle_directed(a, b), M_PI / 2);
    EXPECT_EQ(a[0], 1.0);
    EXPECT_EQ(b[1], 1.0);
    EXPECT_EQ(vexo_vector2d_angle_directed(b, a), -M_PI / 2 + kTwoPiF);
    double c[2] = {2, 2}, d[2] = {1, 1};
    EXPECT_EQ(vexo_vector2d_angle_directed(c, d), 0.0);
    // Measured from +Y towards +X: -Y is half a turn from +Y.
    double down[2] = {0, -1}, up[2] = {0, 1};
    EXPECT_EQ(vexo_vector2d_angle_directed(down, up), M_PI);
}

TEST(Vector3d, CrossRotateNormaliseLength) {
    const double x[3] = {1, 0, 0}, y[3] = {0, 1, 0};
    double out[3];
    vexo_vector3d_crossproduct(x, y, out);
    EXPECT_EQ(out[0], 0.0);
    EXPECT_EQ(out[1], 0.0);
    EXPECT_EQ(out[2], 1.0);
    // Independent check: the cross product is perpendicular to both and
    // anti-commutes.
    const double a[3] = {2, -3, 5}, b[3] = {-7, 11, 13};
    double ab[3], ba[3];
    vexo_vector3d_crossproduct(a, b, ab);
    vexo_vector3d_crossproduct(b, a, ba);
    EXPECT_EQ(ab[0], -94.0);
    EXPECT_EQ(ab[1], -61.0);
    EXPECT_EQ(ab[2], 1.0);
    EXPECT_EQ(ab[0] * a[0] + ab[1] * a[1] + ab[2] * a[2], 0.0);
    EXPECT_EQ(ab[0] * b[0] + ab[1] * b[1] + ab[2] * b[2], 0.0);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(ab[i], -ba[i]);

    // Counter-clockwise, with the float 2pi's error visible in x.
    double v[3] = {1, 0, 5};
    vexo_vector3d_rotate_z(v, 90);
    EXPECT_NEAR(v[0], -kQuarterTurnError, 1e-16);
    EXPECT_NE(v[0], std::cos(M_PI / 2));
    EXPECT_NEAR(v[1], 1 - kQuarterTurnError * kQuarterTurnError / 2, 2e-16);
    EXPECT_LT(v[1], 1.0);
    EXPECT_EQ(v[2], 5.0);
    vexo_vector3d_rotate_z(v, -90);
    EXPECT_NEAR(v[0], 1.0, 1e-15);
    EXPECT_NEAR(v[1], 0.0, 1e-15);

    double w[3] = {2, 3, 6};
    EXPECT_EQ(vexo_vector3d_length(w), 7.0);
    vexo_vector3d_normalise(w);
    EXPECT_EQ(w[0], 2.0 / 7);
    EXPECT_EQ(w[2], 6.0 / 7);
    double tiny[3] = {5e-8, 5e-8, 5e-8};
    vexo_vector3d_normalise(tiny);
    EXPECT_EQ(tiny[0], 5e-8);
}

TEST(Vector3d, AngleClampsOnlyFromAbove) {
    const double x[3] = {1, 0, 0}, y[3] = {0, 1, 0};
    // Degrees with the float pi: a right angle is a little under 90.
    EXPECT_NEAR(vexo_vector3d_angle(x, y), 89.99999749552191, 1e-12);
    EXPECT_NE(vexo_vector3d_angle(x, y), 90.0);
    const double minus_x[3] = {-2, 0, 0};
    EXPECT_NEAR(vexo_vector3d_angle(x, minus_x), 180.0 * M_PI / kPiF, 1e-12);

    // Cosine rounds above 1 for this vector with itself (clamped: exactly
    // 0) and below -1 against its negation (not clamped: NaN).
    const double v[3] = {-0.50812388628872895, -4.6012099168103902, -4.2791636929363763};
    const double minus_v[3] = {-v[0], -v[1], -v[2]};
    EXPECT_EQ(vexo_vector3d_angle(v, v), 0.0);
    EXPECT_TRUE(std::isnan(vexo_vector3d_angle(v, minus_v)));
    const double zero[3] = {0, 0, 0};
    EXPECT_TRUE(std::isnan(vexo_vector3d_angle(zero, x)));
}

TEST(VectorSegmentDot, BisectionFollowsNearerEnd) {
    const double a[3] = {0, 0, 0}, b[3] = {1024, 0, 0};
    const uint32_t all = VEXO_AXIS_X | VEXO_AXIS_Y | VEXO_AXIS_Z;
    const double at_end[3] = {1024.2, 0, 0};
    EXPECT_EQ(vexo_vec_line_to_dot_is_dist(a, b, at_end, 0.25, all), 1);
    const double middle[3] = {512, 0.1, 0};
    EXPECT_EQ(vexo_vec_line_to_dot_is_dist(a, b, middle, 0.2, all), 1);
    const double far_off[3] = {300, 40, 0};
    EXPECT_EQ(vexo_vec_line_to_dot_is_dist(a, b, far_off, 39.9, all), 0);
    EXPECT_EQ(vexo_vec_line_to_dot_is_dist(a, b, far_off, 40.5, all), 1);

    // 341 lies on the segment, but the search ties at 340..342 and keeps
    // the lower half, ending on the midpoint 340.5.
    const double on_segment[3] = {341, 0, 0};
    EXPECT_EQ(vexo_vec_line_to_dot_is_dist(a, b, on_segment, 0.3, all), 0);
    EXPECT_EQ(vexo_vec_line_to_dot_is_dist(a, b, on_segment, 0.5, all), 1);
}

TEST(VectorSegmentDot, AxisSelectionAndNaN) {
    const double a[3] = {0, 0, 0}, b[3] = {10, 0, 0};
    const double above[3] = {5, 100, 7};
    EXPECT_EQ(vexo_vec_line_to_dot_is_dist(a, b, above, 0.5, VEXO_AXIS_X), 1);
    EXPECT_EQ(vexo_vec_line_to_dot_is_dist(a, b, above, 0.5, VEXO_AXIS_X | VEXO_AXIS_Y), 0);
    EXPECT_EQ(vexo_vec_line_to_dot_is_dist(a, b, above, 7.1, VEXO_AXIS_X | VEXO_AXIS_Z), 1);
    // No axis selected: every distance is 0.
    EXPECT_EQ(vexo_vec_line_to_dot_is_dist(a, b, above, 0.0, 0), 1);
    EXPECT_EQ(vexo_vec_line_to_dot_is_dist(a, b, above, -1.0, 0), 0);

    const double nan_y[3] = {5, NAN, 0};
    EXPECT_EQ(vexo_vec_line_to_dot_is_dist(a, b, nan_y, 0.5, VEXO_AXIS_X), 1);
    EXPECT_EQ(vexo_vec_line_to_dot_is_dist(a, b, nan_y, 0.5, VEXO_AXIS_X | VEXO_AXIS_Y), 0);
    EXPECT_EQ(vexo_vec_line_to_dot_is_dist(a, b, above, NAN, VEXO_AXIS_X), 0);
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
    EXPECT_EQ(vexo_vec_line_to_dot_is_dist(v, v, nullptr, 1, 7), 0);
}

} // namespace
