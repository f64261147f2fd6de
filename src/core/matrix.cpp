// SPDX-License-Identifier: MIT
// Matrix building, products, inversion and decomposition.  Every builder
// goes through the one full product below, so a builder's result is always
// the same bits as multiplying its matrix in by hand.
#include "core/matrix.hpp"

#include <cmath>
#include <cstring>

#include "core/constants.hpp"
#include "core/vector.hpp"

namespace vexo {

void set_identity(double *m) {
    for (int i = 0; i < kMatrixSize; ++i) m[i] = (i % 5 == 0) ? 1.0 : 0.0;
}

bool matrices_equal(const double *a, const double *b) {
    for (int i = 0; i < kMatrixSize; ++i)
        if (!(a[i] == b[i])) return false;
    return true;
}

void map_point(const double *m, const GeomPoint &p, GeomPoint *out) {
    const double x = m[0] * p.x + m[1] * p.y + m[2] * p.z + m[3];
    const double y = m[4] * p.x + m[5] * p.y + m[6] * p.z + m[7];
    const double z = m[8] * p.x + m[9] * p.y + m[10] * p.z + m[11];
    const uint32_t flags = p.flags;
    out->x = x;
    out->y = y;
    out->z = z;
    out->flags = flags;
}

void multiply(const double *a, double *b) {
    double product[kMatrixSize];
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j) {
            double sum = 0.0;
            for (int k = 0; k < 4; ++k) sum += a[4 * i + k] * b[4 * k + j];
            product[4 * i + j] = sum;
        }
    }
    std::memcpy(b, product, sizeof product);
}

namespace {

// Determinant of the 3x3 matrix left when row `row` and column `col` are
// struck out of m.
double minor3(const double *m, int row, int col) {
    double r[9];
    int n = 0;
    for (int i = 0; i < 4; ++i) {
        if (i == row) continue;
        for (int j = 0; j < 4; ++j)
            if (j != col) r[n++] = m[4 * i + j];
    }
    return r[0] * (r[4] * r[8] - r[5] * r[7]) - r[1] * (r[3] * r[8] - r[5] * r[6]) +
           r[2] * (r[3] * r[7] - r[4] * r[6]);
}

double cofactor(const double *m, int row, int col) {
    const double minor = minor3(m, row, col);
    return ((row + col) % 2 == 0) ? minor : -minor;
}

// Expanded along the first column.
double determinant(const double *m) {
    double det = 0.0;
    for (int row = 0; row < 4; ++row) det += m[4 * row] * cofactor(m, row, 0);
    return det;
}

} // namespace

void invert(double *m) {
    const double det = determinant(m);
    if (det == 0.0) return; // singular: callers keep their matrix, nothing is reported
    double copy[kMatrixSize];
    std::memcpy(copy, m, sizeof copy);
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j) m[4 * i + j] = cofactor(copy, j, i) / det;
}

void translate(double *m, double dx, double dy, double dz) {
    if (dx == 0.0 && dy == 0.0 && dz == 0.0) return;
    double t[kMatrixSize];
    set_identity(t);
    t[3] = dx;
    t[7] = dy;
    t[11] = dz;
    multiply(t, m);
}

void scale(double *m, double sx, double sy, double sz) {
    double s[kMatrixSize];
    set_identity(s);
    s[0] = sx;
    s[5] = sy;
    s[10] = sz;
    multiply(s, m);
}

void slant(double *m, double a1, double a2, double a3, double a4, double a5, double a6) {
    double h[kMatrixSize];
    set_identity(h);
    h[1] = a3;
    h[2] = a5;
    h[4] = a1;
    h[6] = a6;
    h[8] = a2;
    h[9] = a4;
    multiply(h, m);
}

namespace {

enum class Axis { X, Y, Z };

// Elementary rotations turn clockwise looking down the axis towards the
// origin, the opposite of rotate_z3; hosts' placements depend on it.
void rotate_elementary(double *m, Axis axis, double degrees) {
    const double r = degrees_to_radians(degrees);
    const double c = std::cos(r);
    const double s = std::sin(r);
    double rot[kMatrixSize];
    set_identity(rot);
    switch (axis) {
    case Axis::X:
        rot[5] = c, rot[6] = s, rot[9] = -s, rot[10] = c;
        break;
    case Axis::Y: // the sine sits transposed compared with X and Z
        rot[0] = c, rot[2] = -s, rot[8] = s, rot[10] = c;
        break;
    case Axis::Z:
        rot[0] = c, rot[1] = s, rot[4] = -s, rot[5] = c;
        break;
    }
    multiply(rot, m);
}

} // namespace

void rotate(double *m, const double *centre, double ax, double ay, double az) {
    if (centre) translate(m, -centre[0], -centre[1], -centre[2]);
    // Fixed order X, Y, Z; a NaN angle is "not 0" and poisons the matrix.
    if (ax != 0.0) rotate_elementary(m, Axis::X, ax);
    if (ay != 0.0) rotate_elementary(m, Axis::Y, ay);
    if (az != 0.0) rotate_elementary(m, Axis::Z, az);
    if (centre) translate(m, centre[0], centre[1], centre[2]);
}

void rotate_about_axis(double *m, const double *axis, double degrees) {
    // The axis-angle matrix for the negated angle, laid out so that a
    // positive angle turns the same way as rotate() does about X, Y and Z
    // (clockwise looking down the axis); hosts mix the two freely.
    const double theta = -degrees / 360.0 * kTwoPiF;
    const double c = std::cos(theta);
    const double s = std::sin(theta);
    const double t = 1 - c;
    double u[3] = {axis[0], axis[1], axis[2]};
    normalise3(u);
    const double x = u[0], y = u[1], z = u[2];
    const double r[kMatrixSize] = {
        x * x * t + c,
        x * y * t - z * s,
        x * z * t + y * s,
        0.0,
        x * y * t + z * s,
        y * y * t + c,
        y * z * t - x * s,
        0.0,
        x * z * t - y * s,
        y * z * t + x * s,
        z * z * t + c,
        0.0,
        0.0,
        0.0,
        0.0,
        1.0,
    };
    multiply(r, m);
}

void frustum(double *m, double left, double right, double bottom, double top, double z_near,
             double z_far) {
    // Stored at the classic column-major indices (8, 9 and 14 rather than
    // their transposes); the header documents this layout and hosts read
    // the entries by index.
    double f[kMatrixSize] = {};
    f[0] = 2 * z_near / (right - left);
    f[5] = 2 * z_near / (top - bottom);
    f[8] = (left + right) / (right - left);
    f[9] = (bottom + top) / (top - bottom);
    f[10] = -(z_near + z_far) / (z_far - z_near);
    f[11] = -1.0;
    f[14] = -(2 * z_far * z_near) / (z_far - z_near);
    multiply(f, m);
}

namespace {

double snapped_row_length(const double *row) {
    const double len = length3(row);
    return (std::fabs(len - 1.0) <= kZeroTolerance) ? 1.0 : len;
}

// One decomposed angle: u and v are the two candidate 2D vectors; the
// longer one (v on a tie) gives the cosine against unit X.  negate_u and
// negate_v say whether the sign source asks for a negative angle.
struct AngleCandidates {
    double u0, u1, v0, v1;
    bool negate_u, negate_v;
};

double decomposed_degrees(const AngleCandidates &k) {
    const double lu = std::sqrt(k.u0 * k.u0 + k.u1 * k.u1);
    const double lv = std::sqrt(k.v0 * k.v0 + k.v1 * k.v1);
    const bool use_u = lu > lv;
    const double len = use_u ? lu : lv;
    double angle;
    if (len == 0.0) {
        angle = std::acos(0.0);
    } else {
        const double cosine = use_u ? k.u0 / lu : k.v1 / lv;
        angle = (cosine == -1.0) ? kPiF : std::acos(cosine);
    }
    if (use_u ? k.negate_u : k.negate_v) angle = -angle;
    return radians_to_degrees(angle);
}

} // namespace

void get_scaling(const double *m, double *sx, double *sy, double *sz) {
    if (sx) *sx = snapped_row_length(m);
    if (sy) *sy = snapped_row_length(m + 4);
    if (sz) *sz = snapped_row_length(m + 8);
}

void get_rotation(const double *m, double *ax, double *ay, double *az) {
    if (ax) *ax = decomposed_degrees({m[5], m[9], m[6], m[10], m[9]<0.0, m[6]> 0.0});
    // Y's signs are the other way round, matching its transposed sine.
    if (ay) *ay = decomposed_degrees({m[0], m[8], m[2], m[10], m[8] > 0.0, m[2] < 0.0});
    if (az) *az = decomposed_degrees({m[0], m[4], m[1], m[5], m[4]<0.0, m[1]> 0.0});
}

} // namespace vexo
