/* SPDX-License-Identifier: MIT */
/* A host program built against an installed libvexo: C99, one header. */
#include <stdio.h>

#include <vexo.h>

int main(void) {
    static CorrTable table;
    GeomMatrix m;
    GeomPoint p = {1.0, 0.0, 0.0, 0u, 0u}, out;

    vexo_matrix_unify(&m);
    vexo_matrix_translate(&m, 1.0, 2.0, 3.0);
    vexo_matrix_multiply_point(&m, &p, &out);
    if (out.x != 2.0 || out.y != 2.0 || out.z != 3.0) return 1;
    if (vexo_corr_set_neutral(&table) != VEXO_OK) return 1;
    printf("consumer: libvexo %s, node (0, 64) x = %.1f\n", vexo_util_version_string(),
           table.cell[64].x);
    return 0;
}
