// SPDX-License-Identifier: MIT
// C boundary of the matrix functions.  A NULL matrix (or vector) makes a
// function do nothing rather than crash; the few functions with a status
// or result say what they give back then.
#include <cstdlib>

#include "core/matrix.hpp"
#include "vexo.h"

extern "C" {

VEXO_API GeomMatrix *vexo_matrix_create(void) {
    auto *m = static_cast<GeomMatrix *>(std::malloc(sizeof(GeomMatrix)));
    if (m) vexo::set_identity(m->m);
    return m;
}

VEXO_API void vexo_matrix_release(GeomMatrix *m) {
    std::free(m);
}

VEXO_API void vexo_matrix_unify(GeomMatrix *m) {
    if (m) vexo::set_identity(m->m);
}

VEXO_API bool vexo_matrix_equal(const GeomMatrix *a, const GeomMatrix *b) {
    return a && b && vexo::matrices_equal(a->m, b->m);
}

VEXO_API void vexo_matrix_convert_tof(const GeomMatrix *m, float *out) {
    if (!m || !out) return;
    for (int i = 0; i < vexo::kMatrixSize; ++i) out[i] = static_cast<float>(m->m[i]);
}

VEXO_API void vexo_matrix_multiply_point(const GeomMatrix *m, const GeomPoint *p, GeomPoint *out) {
    if (!p || !out) return;
    if (!m) {
        *out = *p; // whole record, padding bytes included
        return;
    }
    vexo::map_point(m->m, *p, out);
}

VEXO_API void vexo_matrix_multiply_2Dcoord(const GeomMatrix *m, double x, double y, double *out_x,
                                           double *out_y) {
    if (!m) return;
    const double *e = m->m;
    if (out_x) *out_x = x * e[0] + y * e[1] + e[3];
    if (out_y) *out_y = x * e[4] + y * e[5] + e[7];
}

VEXO_API void vexo_matrix_multiply_matrix(const GeomMatrix *a, GeomMatrix *b) {
    if (a && b) vexo::multiply(a->m, b->m);
}

VEXO_API void vexo_matrix_invert(GeomMatrix *m) {
    if (m) vexo::invert(m->m);
}

VEXO_API void vexo_matrix_translate(GeomMatrix *m, double dx, double dy, double dz) {
    if (m) vexo::translate(m->m, dx, dy, dz);
}

VEXO_API void vexo_matrix_scale(GeomMatrix *m, double sx, double sy, double sz) {
    if (m) vexo::scale(m->m, sx, sy, sz);
}

VEXO_API void vexo_matrix_slant(GeomMatrix *m, double a1, double a2, double a3, double a4,
                                double a5, double a6) {
    if (m) vexo::slant(m->m, a1, a2, a3, a4, a5, a6);
}

VEXO_API void vexo_matrix_rotate(GeomMatrix *m, const double *centre, double ax, double ay,
                                 double az) {
    if (m) vexo::rotate(m->m, centre, ax, ay, az);
}

VEXO_API uint32_t vexo_matrix_rotate_vector3d(GeomMatrix *m, const double *axis, double angle) {
    if (!m || !axis) return VEXO_ERROR_INVALID_PARAMETER;
    vexo::rotate_about_axis(m->m, axis, angle);
    return VEXO_OK;
}

VEXO_API void vexo_matrix_frustum(GeomMatrix *m, double left, double right, double bottom,
                                  double top, double z_near, double z_far) {
    if (m) vexo::frustum(m->m, left, right, bottom, top, z_near, z_far);
}

VEXO_API void vexo_matrix_get_translation(const GeomMatrix *m, double *x, double *y, double *z) {
    if (!m) return;
    if (x) *x = m->m[3];
    if (y) *y = m->m[7];
    if (z) *z = m->m[11];
}

VEXO_API void vexo_matrix_get_scaling(const GeomMatrix *m, double *sx, double *sy, double *sz) {
    if (m) vexo::get_scaling(m->m, sx, sy, sz);
}

VEXO_API void vexo_matrix_get_rotation(const GeomMatrix *m, double *ax, double *ay, double *az) {
    if (m) vexo::get_rotation(m->m, ax, ay, az);
}

} // extern "C"
