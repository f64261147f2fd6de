/* SPDX-License-Identifier: MIT */
/* Proves that vexo.h is plain C99: complete record types, bool from
 * <stdbool.h>, and a few calls linked against the shared library.  The
 * record layouts are proved in src/record_layouts.h. */
#include "vexo.h"

#include <stdio.h>
#include <stdlib.h>

static CorrTable table;

int main(void) {
    GeomMatrix m;
    GeomPoint p = {1.0, 2.0, 3.0, 0u, 0u};
    GeomPoint *buf = NULL;
    uint32_t count = 0;
    bool same;

    vexo_matrix_unify(&m);
    same = vexo_matrix_equal(&m, &m);
    buf = vexo_geom_append_dot(buf, &count, &p, false, NULL);
    if (buf == NULL || count != 1 || buf[0].flags != VEXO_POINT_END || !same) {
        fprintf(stderr, "header_c99: unexpected result\n");
        return 1;
    }
    vexo_geom_release(buf);
    if (vexo_corr_set_neutral(&table) != VEXO_OK || table.cell[32 * 65 + 32].x != 0.0) {
        fprintf(stderr, "header_c99: neutral table wrong\n");
        return 1;
    }
    if (vexo_util_version_number() != VEXO_VERSION_NUMBER) {
        fprintf(stderr, "header_c99: header and library versions differ\n");
        return 1;
    }
    return 0;
}
