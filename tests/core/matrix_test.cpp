// Matrices: layout and pre-multiplication, the fixed rotation order and
// senses, inversion round trips and the decomposition's sign rules.
#include <gtest/gtest.h>

#include <cmath>
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

TEST(Matrix, CreateEqualConvertAndNull) {
    GeomMatrix *m = vexo_matrix_create();
    ASSERT_NE(m, nullptr);
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(m->m[i], (i % 5 == 0) ? 1.0 : 0.0);
    vexo_matrix_release(m);

    GeomMatrix a = identity(), b = identity();
    b.m[1] = -0.0;
    EXPECT_TRUE(vexo_matrix_equal(&a, &b)); // +0 == -0
    a.m[15] = NAN;
    EXPECT_FALSE(vexo_matrix_equal(&a, &a)); // NaN never equals, not even itself
    EXPECT_FALSE(vexo_matrix_equal(kNoMatrix, nullptr));

    b.m[2] = 0.1;
    b.m[7] = 1e40;
    float f[16];
    vexo_matrix_convert_tof(&b, f);
    EXPECT_EQ(f[2], 0.1f);
    EXPECT_TRUE(std::isinf(f[7]));
    EXPECT_EQ(f[15], 1.0f);

    // A NULL matrix is ignored everywhere; the status function says so.
    const double v[3] = {1, 2, 3};
    double x = 7;
    vexo_matrix_release(nullptr);
    vexo_matrix_unify(kNoMatrix);
    vexo_matrix_translate(kNoMatrix, 1, 2, 3);
    vexo_matrix_rotate(kNoMatrix, v, 1, 2, 3);
    vexo_matrix_invert(kNoMatrix);
    vexo_matrix_get_rotation(kNoMatrix, &x, &x, &x);
    vexo_matrix_get_scaling(kNoMatrix, &x, &x, &x);
    vexo_matrix_multiply_2Dcoord(kNoMatrix, 1, 2, &x, &x);
    EXPECT_EQ(x, 7.0);
    EXPECT_EQ(vexo_matrix_rotate_vector3d(kNoMatrix, v, 10), VEXO_ERROR_INVALID_PARAMETER);
    GeomMatrix kept = identity();
    EXPECT_EQ(vexo_matrix_rotate_vector3d(&kept, nullptr, 10), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_TRUE(same_bits(kept, identity()));
}

TEST(Matrix, MultiplyPointAndCoordinates) {
    GeomMatrix m = identity();
    vexo_matrix_slant(&m, 1, 2, 3, 4, 5, 6);
    vexo_matrix_translate(&m, 10, 20, 30);
    GeomPoint p = {1, 2, 3, 0x45, 0xDEADBEEF};
    GeomPoint out = {0, 0, 0, 0, 0x1234};
    vexo_matrix_multiply_point(&m, &p, &out);
    // Shear by hand: x + 3y + 5z, x + y + 6z, 2x + 4y + z; then the shift.
    EXPECT_EQ(out.x, 32.0);
    EXPECT_EQ(out.y, 41.0);
    EXPECT_EQ(out.z, 43.0);
    EXPECT_EQ(out.flags, 0x45u);
    EXPECT_EQ(out.reserved, 0x1234u); // only the fields are written
    vexo_matrix_multiply_point(&m, &p, &p); // in place: inputs read first
    EXPECT_EQ(p.z, 43.0);

    // No matrix: the whole record, padding included; no point: nothing.
    const GeomPoint q = {1.5, -2.5, 3.5, 7, 0xCAFEF00D};
    GeomPoint copy{};
    vexo_matrix_multiply_point(kNoMatrix, &q, &copy);
    EXPECT_EQ(std::memcmp(&q, &copy, sizeof q), 0);
    vexo_matrix_multiply_point(&m, nullptr, &copy);
    vexo_matrix_multiply_point(&m, &q, nullptr);
    EXPECT_EQ(copy.x, 1.5);

    // The 2D mapping ignores the z column; either output may be NULL.
    double x = 0, y = 0;
    vexo_matrix_multiply_2Dcoord(&m, 1, 2, &x, &y);
    EXPECT_EQ(x, 17.0);
    EXPECT_EQ(y, 23.0);
    vexo_matrix_multiply_2Dcoord(&m, 0, 0, nullptr, &y);
    EXPECT_EQ(y, 20.0);
}

TEST(Matrix, ProductAndPreMultiplication) {
    GeomMatrix a, b;
    for (int i = 0; i < 16; ++i) {
        a.m[i] = i + 1;
        b.m[i] = (i % 3) - 1;
    }
    // Hand-computed rows of a x b.
    const double expected[16] = {-2,  -1, 3,  -2,  -6,  -1, 7,  -6,
                                 -10, -1, 11, -10, -14, -1, 15, -14};
    GeomMatrix product = b;
    vexo_matrix_multiply_matrix(&a, &product);
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(product.m[i], expected[i]) << "entry " << i;
    // a may be b: the product goes through a temporary.
    GeomMatrix squared = a, square = a;
    vexo_matrix_multiply_matrix(&a, &squared);
    vexo_matrix_multiply_matrix(&square, &square);
    EXPECT_TRUE(same_bits(square, squared));

    // A builder added later acts later.
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
    const GeomMatrix before = m;
    vexo_matrix_translate(&m, 0.0, -0.0, 0.0);
    vexo_matrix_rotate(&m, nullptr, 0, 0, 0);
    EXPECT_TRUE(same_bits(m, before));

    // Scaling by one still runs the product: -0 picks up +0, and the zero
    // terms multiply the infinity into NaN in the rows below.
    vexo_matrix_scale(&m, 1, 1, 1);
    EXPECT_FALSE(std::signbit(m.m[1]));
    EXPECT_TRUE(std::isinf(m.m[0]));
    EXPECT_TRUE(std::isnan(m.m[4]));
}

TEST(Matrix, RotationSensesAndOrder) {
    // Worked example: az = 90 sends +X to -Y (clockwise), the float 2pi
    // leaving a trace in x; the vector turn runs the other way.
    GeomMatrix m = identity();
    vexo_matrix_rotate(&m, nullptr, 0, 0, 90);
    const GeomPoint p = map(m, 1, 0, 0);
    EXPECT_NEAR(p.x, -(kPiF - M_PI) / 2, 1e-16);
    EXPECT_NEAR(p.y, -1.0, 2e-15);
    double v[3] = {1, 0, 0};
    vexo_vector3d_rotate_z(v, 90);
    EXPECT_NEAR(v[1], 1.0, 2e-15);

    GeomMatrix rx = identity(), ry = identity();
    vexo_matrix_rotate(&rx, nullptr, 90, 0, 0);
    vexo_matrix_rotate(&ry, nullptr, 0, 90, 0);
    EXPECT_NEAR(map(rx, 0, 1, 0).z, -1.0, 1e-15);
    EXPECT_NEAR(map(ry, 0, 0, 1).x, -1.0, 1e-15);

    // X first, then Z, in one call or two.
    GeomMatrix both = identity(), x_then_z = identity(), z_then_x = identity();
    vexo_matrix_rotate(&both, nullptr, 90, 0, 90);
    vexo_matrix_rotate(&x_then_z, nullptr, 90, 0, 0);
    vexo_matrix_rotate(&x_then_z, nullptr, 0, 0, 90);
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

    GeomMatrix poisoned = identity(); // NaN is "not 0": it rotates
    vexo_matrix_rotate(&poisoned, nullptr, NAN, 0, 0);
    EXPECT_TRUE(std::isnan(poisoned.m[5]));
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
    // About the diagonal, a third of a turn swaps the axes cyclically and
    // three of them come back round.
    const double diagonal[3] = {1, 1, 1};
    GeomMatrix m = identity();
    vexo_matrix_rotate_vector3d(&m, diagonal, 120);
    const GeomPoint x = map(m, 1, 0, 0);
    EXPECT_NEAR(std::fabs(x.y) + std::fabs(x.z), 1.0, 1e-6);
    EXPECT_NEAR(x.x, 0.0, 1e-6);
    vexo_matrix_rotate_vector3d(&m, diagonal, 120);
    vexo_matrix_rotate_vector3d(&m, diagonal, 120);
    expect_near_matrix(m, identity(), 1e-6);
}

TEST(Matrix, FrustumEntriesAtFixedIndices) {
    GeomMatrix m = identity();
    vexo_matrix_translate(&m, 4, 0, 0);
    vexo_matrix_frustum(&m, -1, 3, -2, 2, 1, 5);
    // 2n/(r-l), 2n/(t-b), (l+r)/(r-l), (b+t)/(t-b), -(n+f)/(f-n), -1,
    // -2fn/(f-n) at 0, 5, 8, 9, 10, 11, 14, pre-multiplied onto the shift.
    const double expected[16] = {0.5, 0, 0, 2, 0, 0.5, 0, 0, 0.5, 0, -1.5, 1, 0, 0, -2.5, 0};
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(m.m[i], expected[i]) << "entry " << i;
}

TEST(Matrix, InverseRoundTripsAndSingular) {
    GeomMatrix m = identity();
    vexo_matrix_scale(&m, 2, 4, 8);
    vexo_matrix_translate(&m, 1, -2, 3);
    vexo_matrix_invert(&m);
    // Hand-solved: undo the shift, then the scaling.
    const double expected[16] = {0.5, 0, 0, -0.5, 0, 0.25, 0, 0.5, 0, 0, 0.125, -0.375,
                                 0,   0, 0, 1};
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(m.m[i], expected[i]) << "entry " << i;

    GeomMatrix general = identity();
    vexo_matrix_slant(&general, 0.2, -0.3, 0.4, 0.1, -0.5, 0.25);
    vexo_matrix_rotate(&general, nullptr, 33, -120, 250);
    vexo_matrix_scale(&general, 1.5, -0.7, 3);
    vexo_matrix_translate(&general, -12, 7.5, 100);
    GeomMatrix inverse = general, product = general;
    vexo_matrix_invert(&inverse);
    vexo_matrix_multiply_matrix(&inverse, &product);
    expect_near_matrix(product, identity(), 1e-13);
    vexo_matrix_invert(&inverse);
    expect_near_matrix(inverse, general, 1e-12);

    // Singular (a zero row, two equal columns): left exactly as it was.
    GeomMatrix zero_row = identity();
    zero_row.m[2] = 9;
    zero_row.m[5] = 0;
    GeomMatrix equal_columns = identity();
    equal_columns.m[1] = 1;
    equal_columns.m[5] = 0;
    for (GeomMatrix s : {zero_row, equal_columns}) {
        const GeomMatrix before = s;
        vexo_matrix_invert(&s);
        EXPECT_TRUE(same_bits(s, before));
    }
    // A NaN determinant is not singular: everything becomes NaN.
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
    vexo_matrix_get_translation(&m, &x, nullptr, &z);
    EXPECT_EQ(x, 5.0);
    EXPECT_EQ(z, 7.0);
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
    vexo_matrix_get_rotation(&half, &ax, nullptr, &az);
    EXPECT_EQ(az, 180.0);
    EXPECT_EQ(ax, 0.0);
    // Nothing to measure: acos(0) in full precision, a hair under 90.
    GeomMatrix zero{};
    vexo_matrix_get_rotation(&zero, &ax, nullptr, &az);
    EXPECT_NEAR(ax, 89.99999749552191, 1e-12);
    EXPECT_EQ(az, ax);
}

} // namespace
