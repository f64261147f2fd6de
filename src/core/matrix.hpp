// SPDX-License-Identifier: MIT
// 4x4 affine transformations on 16 doubles, row-major, points as column
// vectors (translation in entries 3, 7, 11).  Every builder pre-multiplies,
// so a transformation added later acts after the earlier ones.  Angles are
// degrees.
#pragma once

#include "vexo.h"

namespace vexo {

constexpr int kMatrixSize = 16;

void set_identity(double *m);
bool matrices_equal(const double *a, const double *b);
// out = m * p (x, y, z) with p's flags; out may be p.
void map_point(const double *m, const GeomPoint &p, GeomPoint *out);
// b = a * b; a may be b.
void multiply(const double *a, double *b);
// Adjugate inverse; a determinant of exactly 0 leaves m as it is.
void invert(double *m);

void translate(double *m, double dx, double dy, double dz);
void scale(double *m, double sx, double sy, double sz);
void slant(double *m, double a1, double a2, double a3, double a4, double a5, double a6);
void rotate(double *m, const double *centre, double ax, double ay, double az);
void rotate_about_axis(double *m, const double *axis, double degrees);
void frustum(double *m, double left, double right, double bottom, double top, double z_near,
             double z_far);

void get_scaling(const double *m, double *sx, double *sy, double *sz);
void get_rotation(const double *m, double *ax, double *ay, double *az);

} // namespace vexo
