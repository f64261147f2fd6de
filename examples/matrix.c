/* SPDX-License-Identifier: MIT */
/* Matrices: scale, turn and move a point, read the parts back, and undo the
 * whole transformation with the inverse. */
#include <math.h>
#include <stdio.h>

#include "vexo.h"

int main(void) {
    GeomMatrix m;
    vexo_matrix_unify(&m);
    vexo_matrix_scale(&m, 2.0, 2.0, 1.0);
    vexo_matrix_rotate(&m, NULL, 0.0, 0.0, 90.0);
    vexo_matrix_translate(&m, 10.0, 0.0, 0.0);

    const GeomPoint p = {1.0, 0.0, 0.0, 0, 0};
    GeomPoint q;
    vexo_matrix_multiply_point(&m, &p, &q);
    printf("(%.3f, %.3f) -> (%.3f, %.3f)\n", p.x, p.y, q.x, q.y);

    double sx, sy, sz, az, tx, ty, tz;
    vexo_matrix_get_scaling(&m, &sx, &sy, &sz);
    vexo_matrix_get_rotation(&m, NULL, NULL, &az);
    vexo_matrix_get_translation(&m, &tx, &ty, &tz);
    printf("scaling %.3f %.3f %.3f, turn about z %.3f degrees, translation %.3f %.3f %.3f\n", sx,
           sy, sz, az, tx, ty, tz);

    GeomMatrix inverse = m;
    GeomPoint back;
    vexo_matrix_invert(&inverse);
    vexo_matrix_multiply_point(&inverse, &q, &back);
    printf("back: (%.3f, %.3f)\n", back.x, back.y);
    return fabs(back.x - p.x) < 1e-9 && fabs(back.y - p.y) < 1e-9 ? 0 : 1;
}
