/* SPDX-License-Identifier: MIT */
/* Lines: a segment's length and dot count, where two segments cross, and the
 * part of a segment inside a rectangle. */
#include <stdio.h>

#include "vexo.h"

int main(void) {
    const GeomPoint a = {0, 0, 0, 0, 0}, b = {30, 40, 0, 0, 0};
    printf("length %.1f, dots every 2 mm: %u\n", vexo_line_get_length(&a, &b, true),
           vexo_line_get_dot_num(&a, &b, 2.0, 0.0));

    const GeomPoint c = {0, 40, 0, 0, 0}, d = {30, 0, 0, 0, 0};
    GeomPoint at;
    const uint32_t crossing = vexo_line_get_crossing(&a, &b, false, &c, &d, false, &at);
    if (crossing != VEXO_CROSSING_FOUND) {
        fprintf(stderr, "expected a crossing, got code %u\n", crossing);
        return 1;
    }
    printf("crossing at (%.1f, %.1f)\n", at.x, at.y);

    const double rect[6] = {5.0, 5.0, 0.0, 20.0, 20.0, 0.0}; /* left, top, -, right, bottom */
    GeomPoint *inner = vexo_line_get_inner_part(&a, &b, rect);
    if (!inner) {
        fprintf(stderr, "the segment should cross the rectangle\n");
        return 1;
    }
    printf("inside the rectangle: (%.3f, %.3f) .. (%.3f, %.3f)\n", inner[0].x, inner[0].y,
           inner[1].x, inner[1].y);
    vexo_geom_release(inner);
    return 0;
}
