/* SPDX-License-Identifier: MIT */
/* Polygon clipping: the union of two overlapping squares, then the outline
 * of that union grown by 1 mm with round joins. */
#include <stdio.h>

#include "vexo.h"

static void square(GeomPoint *out, double x, double y, double side) {
    const double corners[5][2] = {{0, 0}, {side, 0}, {side, side}, {0, side}, {0, 0}};
    for (int i = 0; i < 5; ++i) {
        GeomPoint p = {x + corners[i][0], y + corners[i][1], 0.0, i == 4 ? VEXO_POINT_END : 0u, 0};
        out[i] = p;
    }
}

/* The array's last point closes the outline and is not converted, so each
 * array ends with one extra copy of its first point. */
static void closed_square(GeomPoint *out, double x, double y, double side) {
    square(out, x, y, side);
    out[5] = out[0];
}

static void print_paths(const char *what, const GeomPoint *points, uint32_t count) {
    uint32_t paths = 0;
    double min_x = 0, max_x = 0;
    for (uint32_t i = 0; i < count; ++i) {
        if (points[i].flags & VEXO_POINT_END) ++paths;
        if (i == 0 || points[i].x < min_x) min_x = points[i].x;
        if (i == 0 || points[i].x > max_x) max_x = points[i].x;
    }
    printf("%s: %u points in %u path(s), x %.3f .. %.3f\n", what, count, paths, min_x, max_x);
}

int main(void) {
    GeomPoint a[6], b[6];
    closed_square(a, 0.0, 0.0, 10.0);
    closed_square(b, 5.0, 5.0, 10.0);

    ClipHandle *clip = vexo_clip_create(a, 6, 0);
    if (!clip) return 1;
    uint32_t status = vexo_clip_bool(clip, b, 6, VEXO_CLIP_UNION);
    uint32_t count = 0;
    GeomPoint *result = status == VEXO_OK ? vexo_clip_get_result(clip, &count) : NULL;
    if (!result) {
        fprintf(stderr, "union failed: %s\n", vexo_util_status_name(status));
        vexo_clip_release(clip);
        return 1;
    }
    print_paths("union", result, count);
    vexo_geom_release(result);

    status = vexo_clip_set_solution(clip);
    if (status == VEXO_OK) status = vexo_clip_outline(clip, VEXO_CLIP_JOIN_ROUND, 1.0);
    result = status == VEXO_OK ? vexo_clip_get_result(clip, &count) : NULL;
    vexo_clip_release(clip);
    if (!result) {
        fprintf(stderr, "outline failed: %s\n", vexo_util_status_name(status));
        return 1;
    }
    print_paths("outline +1 mm", result, count);
    vexo_geom_release(result);
    return 0;
}
