// SPDX-License-Identifier: MIT
// Matrices: layout and pre-multiplication, the fixed rotation order and
// senses, inversion and decomposition round trips.
#include <gtest/gtest.h>

#include <cmath>

#include "vexo_test_util.hpp"

using vexo_test::same_bytes;
using vexo_test::Xyz;

namespace {

GeomMatrix *const kNoMatrix = nullptr; // typed: the double[16] overloads make NULL ambiguous
const GeomMatrix kIdentity = {{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}};

// A scale first, then a rotation about one axis (0 = X, 1 = Y, 2 = Z).
GeomMatrix rotation(int axis, double angle, const Xyz &scale = {1, 1, 1}) {
    GeomMatrix m = kIdentity;
    vexo_matrix_scale(&m, scale[0], scale[1], scale[2]);
    vexo_matrix_rotate(&m, nullptr, axis == 0 ? angle : 0, axis == 1 ? angle : 0,
                       axis == 2 ? angle : 0);
    return m;
}

// In place, so every mapping below also needs the inputs read before any is written.
Xyz map(const GeomMatrix &m, double x, double y, double z) {
    GeomPoint p = vexo_test::point(x, y, z);
    return vexo_matrix_multiply_point(&m, &p, &p), vexo_test::xyz(p);
}

Xyz angles(const GeomMatrix &m) {
    Xyz a;
    return vexo_matrix_get_rotation(&m, &a[0], &a[1], &a[2]), a;
}

// Tolerance 0 means exact (all expected entries are finite).
void expect_entries(const GeomMatrix &m, const GeomMatrix &expected, double tolerance = 0.0) {
    for (int i = 0; i < 16; ++i) EXPECT_NEAR(m.m[i], expected.m[i], tolerance) << "entry " << i;
}

} // namespace

TEST(Matrix, CreateCompareConvertAndNull) {
    GeomMatrix *m = vexo_matrix_create();
    ASSERT_TRUE(m);
    ASSERT_TRUE(same_bytes(*m, kIdentity));
    GeomMatrix b = {{2, -0.0}};
    vexo_matrix_unify(&b);
    EXPECT_TRUE(same_bytes(b, kIdentity));
    b.m[1] = -0.0;
    EXPECT_TRUE(vexo_matrix_equal(m, &b)); // +0 == -0
    float f[16];
    vexo_matrix_convert_tof(&b, f);
    EXPECT_TRUE(std::signbit(f[1]));
    EXPECT_EQ(f[5], 1.0f);
    EXPECT_EQ(f[6], 0.0f);
    m->m[15] = NAN;
    EXPECT_FALSE(vexo_matrix_equal(m, m));
    EXPECT_FALSE(vexo_matrix_equal(kNoMatrix, nullptr)); // NaN != NaN
    vexo_matrix_release(m);

    // A NULL matrix is ignored everywhere; only the status function says so.
    double x = 7;
    vexo_matrix_unify(kNoMatrix);
    vexo_matrix_translate(kNoMatrix, 1, 2, 3);
    vexo_matrix_invert(kNoMatrix);
    vexo_matrix_get_rotation(kNoMatrix, &x, &x, &x);
    vexo_matrix_multiply_2Dcoord(kNoMatrix, 1, 2, &x, &x);
    EXPECT_EQ(x, 7.0);
    EXPECT_EQ(vexo_matrix_rotate_vector3d(kNoMatrix, b.m, 10), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_matrix_rotate_vector3d(&b, nullptr, 10), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_TRUE(std::signbit(b.m[1])); // b untouched: any product would give +0
}

TEST(Matrix, MappingProductsAndBuilders) {
    // Shear by hand: x + 3y + 5z, x + y + 6z, 2x + 4y + z; then the shift.
    GeomMatrix m = kIdentity;
    vexo_matrix_slant(&m, 1, 2, 3, 4, 5, 6);
    vexo_matrix_translate(&m, 10, 20, 30);
    GeomPoint p = {1, 2, 3, 0x45, 0xDEADBEEF}, out = {0, 0, 0, 0, 0x1234};
    vexo_matrix_multiply_point(&m, &p, &out);
    EXPECT_EQ(vexo_test::xyz(out), (Xyz{32, 41, 43}));
    EXPECT_EQ(out.flags, 0x45u);
    EXPECT_EQ(out.reserved, 0x1234u);                // padding not written
    vexo_matrix_multiply_point(kNoMatrix, &out, &p); // no matrix: the whole record
    EXPECT_TRUE(same_bytes(p, out));

    GeomMatrix a = {{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}};
    GeomMatrix b = {{-1, 0, 1, -1, 0, 1, -1, 0, 1, -1, 0, 1, -1, 0, 1, -1}};
    vexo_matrix_multiply_matrix(&a, &b);
    expect_entries(b, {{-2, -1, 3, -2, -6, -1, 7, -6, -10, -1, 11, -10, -14, -1, 15, -14}});
    vexo_matrix_multiply_matrix(&a, &a); // aliased: a square through a temporary
    double x = 0, y = 0;
    vexo_matrix_multiply_2Dcoord(&a, 1, 2, &x, &y); // rows 90 100 110 120, 202 228 254 280
    EXPECT_EQ(x, 410.0);
    EXPECT_EQ(y, 938.0); // the z column ignored

    // A zero shift or rotation is skipped; a unit scaling still multiplies:
    // -0 turns +0 and the zero terms spread the infinity as NaN.
    m = {{INFINITY, -0.0, 0, 0, 0, 1, NAN, 0, 0, 0, 1, 0, 0, 0, 0, 1}};
    const GeomMatrix before = m;
    vexo_matrix_translate(&m, 0.0, -0.0, 0.0);
    vexo_matrix_rotate(&m, nullptr, 0, 0, 0);
    EXPECT_TRUE(same_bytes(m, before));
    vexo_matrix_scale(&m, 1, 1, 1);
    EXPECT_FALSE(std::signbit(m.m[1]));
    EXPECT_TRUE(std::isnan(m.m[4]));
}

TEST(Matrix, RotationSensesOrderAndAxes) {
    // az = 90 sends +X to -Y (clockwise), the float 2pi leaving a trace in x; X and Y
    // are held to the same sense by the axis-angle form below and by the decomposition.
    const Xyz p = map(rotation(2, 90), 1, 0, 0);
    EXPECT_NEAR(p[0], -(vexo_test::kPiF - M_PI) / 2, 1e-16);
    EXPECT_NEAR(p[1], -1.0, 2e-15);
    // X before Z within one call; about a centre, the centre stays put.
    GeomMatrix both = kIdentity, x_then_z = rotation(0, 90);
    vexo_matrix_rotate(&both, nullptr, 90, 0, 90);
    vexo_matrix_rotate(&x_then_z, nullptr, 0, 0, 90);
    EXPECT_TRUE(same_bytes(both, x_then_z));
    const double centre[3] = {1, 2, 3};
    GeomMatrix c = kIdentity;
    vexo_matrix_rotate(&c, centre, 0, 0, 180);
    const Xyz q = map(c, 2, 3, 4); // half a turn about Z through the centre: (0, 1, 4)
    EXPECT_LT(std::hypot(q[0], q[1] - 1, q[2] - 4), 1e-6);
    EXPECT_TRUE(std::isnan(rotation(0, NAN).m[5])); // NaN is "not 0": it rotates

    // The axis-angle form turns the same way as the per-axis rotations.
    const double axes[3][3] = {{1, 0, 0}, {0, 2.5, 0}, {0, 0, 7}};
    for (double angle : {30.0, -45.0, 120.0, 270.0, -179.5})
        for (int a = 0; a < 3; ++a) {
            SCOPED_TRACE(angle);
            GeomMatrix by_axis = kIdentity;
            ASSERT_EQ(vexo_matrix_rotate_vector3d(&by_axis, axes[a], angle), VEXO_OK);
            expect_entries(by_axis, rotation(a, angle), 1e-15);
        }
    const double diagonal[3] = {1, 1, 1}; // three thirds of a turn come round
    GeomMatrix m = kIdentity;
    for (int i = 0; i < 3; ++i) vexo_matrix_rotate_vector3d(&m, diagonal, 120);
    expect_entries(m, kIdentity, 1e-6);
}

TEST(Matrix, FrustumAndInverse) {
    GeomMatrix m = kIdentity;
    vexo_matrix_translate(&m, 4, 0, 0);
    vexo_matrix_frustum(&m, -1, 3, -3, 5, 2, 6);
    // Entries 0, 5, 8, 9, 10, 11, 14, pre-multiplied onto the shift.
    expect_entries(m, {{1, 0, 0, 4, 0, 0.5, 0, 0, 0.5, 0.25, -2, 1, 0, 0, -6, 0}});

    m = kIdentity;
    vexo_matrix_scale(&m, 2, 4, 8);
    vexo_matrix_translate(&m, 1, -2, 3);
    vexo_matrix_invert(&m);
    expect_entries(m, {{0.5, 0, 0, -0.5, 0, 0.25, 0, 0.5, 0, 0, 0.125, -0.375, 0, 0, 0, 1}});
    GeomMatrix general = rotation(1, -120, {1.5, 1.5, 1.5});
    vexo_matrix_slant(&general, 0.2, -0.3, 0.4, 0.1, -0.5, 0.25);
    vexo_matrix_translate(&general, -12, 7.5, 100);
    GeomMatrix inverse = general;
    vexo_matrix_invert(&inverse);
    vexo_matrix_multiply_matrix(&inverse, &general);
    expect_entries(general, kIdentity, 1e-13);

    m = {{1, 0, 9, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}}; // row 1 zero: singular, kept
    vexo_matrix_invert(&m); // (dividing by 0 would leave no finite entry)
    EXPECT_EQ(m.m[2], 9.0);
    EXPECT_EQ(m.m[5], 0.0);
    m = {{NAN, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}};
    vexo_matrix_invert(&m); // a NaN determinant is not singular: every entry NaN, the 1s too
    EXPECT_TRUE(std::isnan(m.m[1]));
    EXPECT_TRUE(std::isnan(m.m[5]));
    EXPECT_TRUE(std::isnan(m.m[15]));
}

TEST(Matrix, TranslationScalingAndRotationParts) {
    GeomMatrix m = kIdentity;
    vexo_matrix_scale(&m, 2, -3, 4);
    vexo_matrix_translate(&m, 5, 6, 7);
    vexo_matrix_slant(&m, 0, 0, 0.5, 0, 0, 0); // row 0 += half of row 1
    double x = 0, y = 0, z = 0;
    vexo_matrix_get_translation(&m, &x, nullptr, &z);
    EXPECT_EQ(x, 8.0);
    EXPECT_EQ(z, 7.0);
    vexo_matrix_get_scaling(&m, &x, &y, &z); // row lengths: (2, -1.5, 0) is 2.5
    EXPECT_EQ((Xyz{x, y, z}), (Xyz{2.5, 3, 4}));
    m = kIdentity;
    vexo_matrix_scale(&m, 1 + 5e-8, 1 - 5e-8, 1 + 1.2e-7); // within 1e-7 of 1: exactly 1
    vexo_matrix_get_scaling(&m, &x, &y, &z);
    EXPECT_EQ((Xyz{x, y, z}), (Xyz{1, 1, 1 + 1.2e-7}));

    // az = 90 comes back as -90 exactly: the float pi in and out cancel.
    EXPECT_EQ(angles(rotation(2, 90)), (Xyz{0, 0, -90}));
    // Round trips: negated, negative and obtuse angles, each measured on the
    // longer of two columns (equal under a uniform scale, the first under uneven).
    const Xyz uneven[3] = {{3, 2, 1}, {2, 3, 1}, {2, 1, 3}};
    for (double angle : {-170.0, -100.0, -45.0, -1.0, 1.0, 30.0, 89.0, 91.0, 135.0, 179.0})
        for (int axis = 0; axis < 3; ++axis)
            for (const Xyz &scale : {Xyz{2.5, 2.5, 2.5}, uneven[axis]})
                for (int k = 0; k < 3; ++k)
                    EXPECT_NEAR(angles(rotation(axis, angle, scale))[k], k == axis ? -angle : 0.0,
                                1e-9)
                        << angle << " about " << axis << ", " << scale[0] << " " << k;
    // An exact half turn takes the float pi itself: 180, not 180 * pi / pif.
    EXPECT_EQ(angles({{-1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}}), (Xyz{0, 0, 180}));
    const double none = 89.99999749552191; // nothing to measure: acos(0) in full precision
    EXPECT_EQ(angles(GeomMatrix{}), (Xyz{none, none, none}));
}
