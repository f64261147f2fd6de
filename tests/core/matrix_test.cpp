// Matrices: layout and pre-multiplication, the fixed rotation order and
// senses, inversion round trips and the decomposition's sign rules.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>

#include "vexo.h"

namespace {

constexpr double kPiF = 3.1415927410125732;
// Typed, so the C++ double[16] overloads do not make the call ambiguous.
GeomMatrix *const kNoMatrix = nullptr;

GeomMatrix identity() {
    GeomMatrix m;
    vexo_matrix_unify(&m);
    return m;
}

GeomPoint map(const GeomMatrix &m, double x, double y, double z) {
    const GeomPoint p = {x, y, z, 0, 0};
    GeomPoint out{};
    vexo_matrix_multiply_point(&m, &p, &out);
    return out;
}

bool same_bits(const GeomMatrix &a, const GeomMatrix &b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

void expect_near_matrix(const GeomMatrix &a, const GeomMatrix &b, double tolerance) {
    for (int i = 0; i < 16; ++i)
        EXPECT_NEAR(a.m[i], b.m[i], tolerance) << "entry " << i;
}

TEST(Matrix, CreateUnifyEqualConvert) {
    GeomMatrix *m = vexo_matrix_create();
    ASSERT_NE(m, nullptr);
    const GeomMatrix id = identity();
    EXPECT_TRUE(vexo_matrix_equal(m, &id));
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(m->m[i], (i % 5 == 0) ? 1.0 : 0.0);
    vexo_matrix_release(m);
    vexo_matrix_release(nullptr);
    vexo_matrix_unify(kNoMatrix);

    GeomMatrix a = id, b = id;
    b.m[1] = -0.0;
    EXPECT_TRUE(vexo_matrix_equal(&a, &b)); // +0 == -0
    b.m[15] = NAN;
    a.m[15] = NAN;
    EXPECT_FALSE(vexo_matrix_equal(&a, &b)); // NaN never equals, not even itself
    EXPECT_FALSE(vexo_matrix_equal(&a, &a));
    EXPECT_FALSE(vexo_matrix_equal(&id, nullptr));
    EXPECT_FALSE(vexo_matrix_equal(kNoMatrix, nullptr));

    GeomMatrix c = id;
    c.m[2] = 0.1;
    c.m[7] = 1e40;
    float f[16];
    vexo_matrix_convert_tof(&c, f);
    EXPECT_EQ(f[0], 1.0f);
    EXPECT_EQ(f[2], 0.1f);
    EXPECT_TRUE(std::isinf(f[7]));
    EXPECT_EQ(f[15], 1.0f);
    vexo_matrix_convert_tof(kNoMatrix, f);
    vexo_matrix_convert_tof(&c, nullptr);
}

TEST(Matrix, MultiplyPointAndCoordinates) {
    GeomMatrix m = identity();
    vexo_matrix_slant(&m, 1, 2, 3, 4, 5, 6);
    vexo_matrix_translate(&m, 10, 20, 30);
    GeomPoint p = {1, 2, 3, 0x45, 0xDEADBEEF};
    GeomPoint out = {0, 0, 0, 0, 0x1234};
    vexo_matrix_multiply_point(&m, &p, &out);
    // Shear by hand: x + 3y + 5z, x + y + 6z, 2x + 4y + z; then the shift.
    EXPECT_EQ(out.x, 1 + 6 + 15 + 10.0);
    EXPECT_EQ(out.y, 1 + 2 + 18 + 20.0);
    EXPECT_EQ(out.z, 2 + 8 + 3 + 30.0);
    EXPECT_EQ(out.flags, 0x45u);
    EXPECT_EQ(out.reserved, 0x1234u); // only the fields are written

    // Mapping in place reads every input before writing.
    vexo_matrix_multiply_point(&m, &p, &p);
    EXPECT_EQ(p.x, out.x);
    EXPECT_EQ(p.z, out.z);

    // No matrix: the whole record, padding included.
    const GeomPoint q = {1.5, -2.5, 3.5, 7, 0xCAFEF00D};
    GeomPoint copy{};
    vexo_matrix_multiply_point(kNoMatrix, &q, &copy);
    EXPECT_EQ(std::memcmp(&q, &copy, sizeof q), 0);
    GeomPoint untouched = {9, 9, 9, 9, 9};
    vexo_matrix_multiply_point(&m, nullptr, &untouched);
    vexo_matrix_multiply_point(&m, &q, nullptr);
    EXPECT_EQ(untouched.x, 9.0);

    // The 2D mapping ignores the z column.
    double x = 0, y = 0;
    vexo_matrix_multiply_2Dcoord(&m, 1, 2, &x, &y);
    EXPECT_EQ(x, 1 + 6 + 10.0);
    EXPECT_EQ(y, 1 + 2 + 20.0);
    vexo_matrix_multiply_2Dcoord(&m, 1, 2, nullptr, &y);
    vexo_matrix_multiply_2Dcoord(kNoMatrix, 1, 2, &x, &y);
    EXPECT_EQ(x, 17.0);
}

TEST(Matrix, ProductAndPreMultiplication) {
    GeomMatrix a, b;
    for (int i = 0; i < 16; ++i) {
        a.m[i] = i + 1;
        b.m[i] = (i % 3) - 1;
    }
    const GeomMatrix a_copy = a;
    GeomMatrix expected;
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) {
            double s = 0;
            for (int k = 0; k < 4; ++k)
                s += a.m[4 * r + k] * b.m[4 * k + c];
            expected.m[4 * r + c] = s;
        }
    // Row 0 of a is (1, 2, 3, 4); column 0 of b is (-1, 0, 1, -1).
    EXPECT_EQ(expected.m[0], -1 + 0 + 3 - 4.0);
    vexo_matrix_multiply_matrix(&a, &b);
    EXPECT_TRUE(same_bits(b, expected));
    // a may be b: the product goes through a temporary.
    GeomMatrix square = a_copy;
    GeomMatrix squared = a_copy;
    GeomMatrix other = a_copy;
    vexo_matrix_multiply_matrix(&other, &squared);
    vexo_matrix_multiply_matrix(&square, &square);
    EXPECT_TRUE(same_bits(square, squared));

    // A builder added later acts later: shift then scale.
    GeomMatrix m = identity();
    vexo_matrix_translate(&m, 1, 0, 0);
    vexo_matrix_scale(&m, 3, 3, 3);
    EXPECT_EQ(map(m, 1, 0, 0).x, 6.0);
    GeomMatrix n = identity();
    vexo_matrix_scale(&n, 3, 3, 3);
    vexo_matrix_translate(&n, 1, 0, 0);
    EXPECT_EQ(map(n, 1, 0, 0).x, 4.0);
}

TEST(Matrix, TranslateZeroSkipsScaleOneMultiplies) {
    GeomMatrix m = identity();
    m.m[0] = INFINITY;
    m.m[1] = -0.0;
    m.m[6] = NAN;
    GeomMatrix before = m;
    vexo_matrix_translate(&m, 0.0, -0.0, 0.0);
    EXPECT_TRUE(same_bits(m, before));

    // Scaling by one still runs the product: -0 picks up +0, and the zero
    // terms multiply the infinity into NaN in the rows below.
    vexo_matrix_scale(&m, 1, 1, 1);
    EXPECT_FALSE(std::signbit(m.m[1]));
    EXPECT_TRUE(std::isinf(m.m[0]));
    EXPECT_TRUE(std::isnan(m.m[4]));
    EXPECT_FALSE(same_bits(m, before));
    vexo_matrix_translate(kNoMatrix, 1, 2, 3);
    vexo_matrix_scale(kNoMatrix, 1, 2, 3);
    vexo_matrix_slant(kNoMatrix, 1, 2, 3, 4, 5, 6);
}

TEST(Matrix, RotationSensesAndOrder) {
    // Worked example: az = 90 sends +X to -Y (clockwise), the float 2pi
    // leaving a trace in x.
    GeomMatrix m = identity();
    vexo_matrix_rotate(&m, nullptr, 0, 0, 90);
    const GeomPoint p = map(m, 1, 0, 0);
    EXPECT_NEAR(p.x, -(kPiF - M_PI) / 2, 1e-16);
    EXPECT_NEAR(p.y, -1.0, 2e-15);
    EXPECT_EQ(p.z, 0.0);
    double v[3] = {1, 0, 0};
    vexo_vector3d_rotate_z(v, 90);
    EXPECT_NEAR(v[1], 1.0, 2e-15); // the vector turn runs the other way

    GeomMatrix rx = identity();
    vexo_matrix_rotate(&rx, nullptr, 90, 0, 0);
    EXPECT_NEAR(map(rx, 0, 1, 0).z, -1.0, 1e-15);
    GeomMatrix ry = identity();
    vexo_matrix_rotate(&ry, nullptr, 0, 90, 0);
    EXPECT_NEAR(map(ry, 0, 0, 1).x, -1.0, 1e-15);

    // X first, then Z, whatever the argument list suggests.
    GeomMatrix both = identity();
    vexo_matrix_rotate(&both, nullptr, 90, 0, 90);
    GeomMatrix x_then_z = identity();
    vexo_matrix_rotate(&x_then_z, nullptr, 90, 0, 0);
    vexo_matrix_rotate(&x_then_z, nullptr, 0, 0, 90);
    GeomMatrix z_then_x = identity();
    vexo_matrix_rotate(&z_then_x, nullptr, 0, 0, 90);
    vexo_matrix_rotate(&z_then_x, nullptr, 90, 0, 0);
    EXPECT_TRUE(same_bits(both, x_then_z));
    EXPECT_FALSE(vexo_matrix_equal(&both, &z_then_x));

    // About a centre: the centre stays, a neighbour swings round it.
    const double centre[3] = {1, 1, 0};
    GeomMatrix c = identity();
    vexo_matrix_rotate(&c, centre, 0, 0, 180);
    EXPECT_NEAR(map(c, 1, 1, 0).x, 1.0, 1e-12);
    EXPECT_NEAR(map(c, 1, 1, 0).y, 1.0, 1e-12);
    EXPECT_NEAR(map(c, 2, 1, 0).x, 0.0, 1e-6);
    EXPECT_NEAR(map(c, 2, 1, 0).y, 1.0, 1e-6);

    GeomMatrix still = identity();
    still.m[1] = -0.0;
    const GeomMatrix before = still;
    vexo_matrix_rotate(&still, nullptr, 0, 0, 0);
    EXPECT_TRUE(same_bits(still, before)); // no angle, no product
    vexo_matrix_rotate(&still, nullptr, NAN, 0, 0);
    EXPECT_TRUE(std::isnan(still.m[5]));
    vexo_matrix_rotate(kNoMatrix, centre, 1, 2, 3);
}

TEST(Matrix, AxisRotationMatchesAxisAngles) {
    const double angles[] = {30, -45, 120, 270, -179.5};
    const double axes[3][3] = {{1, 0, 0}, {0, 2.5, 0}, {0, 0, 7}};
    for (double angle : angles) {
        for (int a = 0; a < 3; ++a) {
            GeomMatrix by_axis = identity();
            vexo_matrix_translate(&by_axis, 1, 2, 3);
            GeomMatrix by_angles = by_axis;
            ASSERT_EQ(vexo_matrix_rotate_vector3d(&by_axis, axes[a], angle), VEXO_OK);
            vexo_matrix_rotate(&by_angles, nullptr, a == 0 ? angle : 0, a == 1 ? angle : 0,
                               a == 2 ? angle : 0);
            SCOPED_TRACE(angle);
            expect_near_matrix(by_axis, by_angles, 1e-15);
        }
    }
    // A diagonal axis: three turns of 120 degrees bring everything back.
    const double diagonal[3] = {1, 1, 1};
    GeomMatrix m = identity();
    for (int i = 0; i < 3; ++i)
        vexo_matrix_rotate_vector3d(&m, diagonal, 120);
    expect_near_matrix(m, identity(), 1e-6);
    GeomMatrix once = identity();
    vexo_matrix_rotate_vector3d(&once, diagonal, 120);
    EXPECT_NEAR(map(once, 1, 0, 0).y, 0.0, 1e-6); // cyclic axis swap
    EXPECT_NEAR(std::fabs(map(once, 1, 0, 0).x), 0.0, 1e-6);

    GeomMatrix unchanged = identity();
    EXPECT_EQ(vexo_matrix_rotate_vector3d(&unchanged, nullptr, 10),
              VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_TRUE(same_bits(unchanged, identity()));
    EXPECT_EQ(vexo_matrix_rotate_vector3d(kNoMatrix, diagonal, 10),
              VEXO_ERROR_INVALID_PARAMETER);
}

TEST(Matrix, FrustumEntriesAtFixedIndices) {
    GeomMatrix m = identity();
    vexo_matrix_frustum(&m, -1, 3, -2, 2, 1, 5);
    const double expected[16] = {0.5, 0, 0, 0, 0, 0.5, 0, 0, 0.5, 0, -1.5, -1, 0, 0, -2.5, 0};
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(m.m[i], expected[i]) << "entry " << i;

    // Pre-multiplied like every builder: F x T.
    GeomMatrix shifted = identity();
    vexo_matrix_translate(&shifted, 4, 0, 0);
    vexo_matrix_frustum(&shifted, -1, 3, -2, 2, 1, 5);
    EXPECT_EQ(shifted.m[3], 0.5 * 4);
    EXPECT_EQ(shifted.m[11], 0.5 * 4 - 1);
    EXPECT_EQ(shifted.m[15], 0.0);
}

TEST(Matrix, InverseRoundTrips) {
    GeomMatrix m = identity();
    vexo_matrix_scale(&m, 2, 4, 8);
    vexo_matrix_translate(&m, 1, -2, 3);
    GeomMatrix inv = m;
    vexo_matrix_invert(&inv);
    // Hand-solved: undo the shift, then the scaling.
    const double expected[16] = {0.5, 0, 0, -0.5, 0, 0.25, 0, 0.5, 0, 0, 0.125, -0.375,
                                 0, 0,   0, 1};
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(inv.m[i], expected[i]) << "entry " << i;

    GeomMatrix general = identity();
    vexo_matrix_slant(&general, 0.2, -0.3, 0.4, 0.1, -0.5, 0.25);
    vexo_matrix_rotate(&general, nullptr, 33, -120, 250);
    vexo_matrix_scale(&general, 1.5, -0.7, 3);
    vexo_matrix_translate(&general, -12, 7.5, 100);
    GeomMatrix product = general;
    GeomMatrix general_inv = general;
    vexo_matrix_invert(&general_inv);
    vexo_matrix_multiply_matrix(&general_inv, &product);
    expect_near_matrix(product, identity(), 1e-13);
    vexo_matrix_invert(&general_inv);
    expect_near_matrix(general_inv, general, 1e-12);
    vexo_matrix_invert(kNoMatrix);
}

TEST(Matrix, SingularAndNaNInverse) {
    GeomMatrix zero_row = identity();
    zero_row.m[4] = zero_row.m[5] = zero_row.m[6] = zero_row.m[7] = 0;
    zero_row.m[2] = 9;
    const GeomMatrix before = zero_row;
    vexo_matrix_invert(&zero_row);
    EXPECT_TRUE(same_bits(zero_row, before));

    GeomMatrix equal_columns = identity();
    equal_columns.m[1] = 1;
    equal_columns.m[5] = 0;
    const GeomMatrix before2 = equal_columns;
    vexo_matrix_invert(&equal_columns);
    EXPECT_TRUE(same_bits(equal_columns, before2));

    GeomMatrix poisoned = identity();
    poisoned.m[0] = NAN;
    vexo_matrix_invert(&poisoned);
    for (double e : poisoned.m)
        EXPECT_TRUE(std::isnan(e));
}

TEST(Matrix, TranslationAndScalingParts) {
    GeomMatrix m = identity();
    vexo_matrix_scale(&m, 2, -3, 4);
    vexo_matrix_translate(&m, 5, 6, 7);
    double x = 0, y = 0, z = 0;
    vexo_matrix_get_translation(&m, &x, &y, &z);
    EXPECT_EQ(x, 5.0);
    EXPECT_EQ(y, 6.0);
    EXPECT_EQ(z, 7.0);
    vexo_matrix_get_translation(&m, nullptr, &y, nullptr);
    vexo_matrix_get_scaling(&m, &x, &y, &z);
    EXPECT_EQ(x, 2.0);
    EXPECT_EQ(y, 3.0);
    EXPECT_EQ(z, 4.0);

    GeomMatrix near_one = identity();
    vexo_matrix_scale(&near_one, 1 + 5e-8, 1 - 5e-8, 1 + 2e-7);
    vexo_matrix_get_scaling(&near_one, &x, &y, &z);
    EXPECT_EQ(x, 1.0);
    EXPECT_EQ(y, 1.0);
    EXPECT_EQ(z, 1 + 2e-7);

    // Rows, not columns: the shear puts 0.75 in row 0, column 1.
    GeomMatrix sheared = identity();
    vexo_matrix_slant(&sheared, 0, 0, 0.75, 0, 0, 0);
    vexo_matrix_get_scaling(&sheared, &x, &y, nullptr);
    EXPECT_EQ(x, 1.25);
    EXPECT_EQ(y, 1.0);
    vexo_matrix_get_scaling(kNoMatrix, &x, &y, &z);
    vexo_matrix_get_translation(kNoMatrix, &x, &y, &z);
    EXPECT_EQ(x, 1.25);
}

TEST(Matrix, RotationDecomposition) {
    // Worked example: az = 90 decomposes to -90; the float pi on the way
    // in and on the way out cancel exactly.
    GeomMatrix m = identity();
    vexo_matrix_rotate(&m, nullptr, 0, 0, 90);
    double ax = 1, ay = 1, az = 1;
    vexo_matrix_get_rotation(&m, &ax, &ay, &az);
    EXPECT_EQ(az, -90.0);
    EXPECT_EQ(ax, 0.0);
    EXPECT_EQ(ay, 0.0);

    // Single-axis rotations come back negated, negative and obtuse angles
    // included, and uniform scaling does not disturb them.
    const double angles[] = {-170, -100, -45, -1, 1, 30, 89, 91, 135, 179};
    for (double angle : angles) {
        for (int axis = 0; axis < 3; ++axis) {
            GeomMatrix r = identity();
            vexo_matrix_scale(&r, 2.5, 2.5, 2.5);
            vexo_matrix_rotate(&r, nullptr, axis == 0 ? angle : 0, axis == 1 ? angle : 0,
                               axis == 2 ? angle : 0);
            double got[3];
            vexo_matrix_get_rotation(&r, &got[0], &got[1], &got[2]);
            SCOPED_TRACE(angle);
            for (int k = 0; k < 3; ++k)
                EXPECT_NEAR(got[k], k == axis ? -angle : 0.0, 1e-9) << "axis " << k;
        }
    }

    // An exact half turn takes the float pi itself: 180, not 180 * pi / pif.
    GeomMatrix half = identity();
    half.m[0] = half.m[5] = -1;
    vexo_matrix_get_rotation(&half, &ax, &ay, &az);
    EXPECT_EQ(az, 180.0);
    EXPECT_EQ(ax, 0.0);

    // Nothing to measure: acos(0) in full precision, a hair under 90.
    GeomMatrix zero{};
    vexo_matrix_get_rotation(&zero, &ax, nullptr, &az);
    EXPECT_NEAR(ax, 89.99999749552191, 1e-12);
    EXPECT_EQ(az, ax);
    vexo_matrix_get_rotation(kNoMatrix, &ax, &ay, &az);
}

TEST(Matrix, CxxArrayOverloads) {
    double m[16];
    vexo_matrix_unify(m);
    vexo_matrix_translate(m, 1, 2, 3);
    double x = 0;
    vexo_matrix_get_translation(m, &x, nullptr, nullptr);
    EXPECT_EQ(x, 1.0);
    EXPECT_EQ(m[11], 3.0);
}

} // namespace
