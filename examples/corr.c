/* SPDX-License-Identifier: MIT */
/* A correction table's round trip: start neutral, save it as kxo, load the
 * file back, shrink the field by 2 %, set the focus for a 163 mm lens and
 * write the result as a ".cor" file.  Prints how far the corner moved. */
#include <stdio.h>

#include "vexo.h"

static CorrTable table; /* 135 kB: static rather than on the stack */

static int check(uint32_t status, const char *what) {
    if (status == VEXO_OK) return 0;
    fprintf(stderr, "%s: %s (%s)\n", what, vexo_util_status_name(status),
            vexo_util_status_text(status));
    return 1;
}

int main(int argc, char **argv) {
    const char *kxo = argc > 1 ? argv[1] : "example.kxo";
    const char *cor = argc > 2 ? argv[2] : "example.cor";
    CorrHead head = {0};

    if (check(vexo_corr_set_neutral(&table), "neutral")) return 1;
    if (check(vexo_corr_save_kxo(&table, kxo, &head), kxo)) return 1;
    if (check(vexo_corr_load_corr65(&table, kxo, VEXO_CORR_FORMAT_AUTO), kxo)) return 1;
    const GeomPoint before = table.cell[0];

    if (check(vexo_corr_set_scale(&table, 0.98), "scale")) return 1;
    if (check(vexo_corr_set_focal(&table, 163.0, 110.0, 110.0), "focus")) return 1;
    if (check(vexo_corr_save_cor(&table, cor, 0.0), cor)) return 1;

    const GeomPoint after = table.cell[0];
    printf("corner node: (%.1f, %.1f) -> (%.1f, %.1f), focus %.1f\n", before.x, before.y, after.x,
           after.y, after.z);
    printf("saved %s and %s\n", kxo, cor);
    /* A missing file gives a status, never a crash. */
    const uint32_t status = vexo_corr_load_corr65(&table, "no-such-file.kxo", 0);
    printf("loading a missing file: %s\n", vexo_util_status_name(status));
    return status == VEXO_ERROR_OPEN_FILE ? 0 : 1;
}
