/* SPDX-License-Identifier: MIT */
/* Builds one point array the way a marking host does: a polyline appended
 * with an offset, then dots drawn as a plain point, a circle and a spiral.
 * Prints a summary of what ended up in the array. */
#include <stdio.h>
#include <stdlib.h>

#include "vexo.h"

static void summarise(const GeomPoint *points, uint32_t count) {
    uint32_t polylines = 0, dots = 0, start = 0;
    double min_x = 0, max_x = 0, min_y = 0, max_y = 0;
    for (uint32_t i = 0; i < count; ++i) {
        const GeomPoint *p = &points[i];
        if (i == 0 || p->x < min_x) min_x = p->x;
        if (i == 0 || p->x > max_x) max_x = p->x;
        if (i == 0 || p->y < min_y) min_y = p->y;
        if (i == 0 || p->y > max_y) max_y = p->y;
        if (p->flags & VEXO_POINT_END) {
            if (i == start)
                ++dots;
            else
                ++polylines;
            start = i + 1;
        }
    }
    printf("points: %u, polylines: %u, single dots: %u\n", count, polylines, dots);
    printf("extent: x %.3f .. %.3f, y %.3f .. %.3f\n", min_x, max_x, min_y, max_y);
}

int main(void) {
    const GeomPoint square[5] = {{0.0, 0.0, 0.0, 0, 0},
                                 {10.0, 0.0, 0.0, 0, 0},
                                 {10.0, 10.0, 0.0, 0, 0},
                                 {0.0, 10.0, 0.0, 0, 0},
                                 {0.0, 0.0, 0.0, VEXO_POINT_END, 0}};
    GeomPoint *points = NULL;
    uint32_t count = 0, capacity = 0;

    /* The square twice: once in place, once shifted 20 mm to the right. */
    points = vexo_geom_append(points, count, square, 5, 0.0, 0.0, 0.0);
    if (!points) return 1;
    count += 5;
    points = vexo_geom_append(points, count, square, 5, 20.0, 0.0, 0.0);
    if (!points) return 1;
    count += 5;

    /* A row of dots: plain, circle of radius 0.5 mm, spiral 0.5 .. 0.1 mm. */
    GeomDotShape circle = {0, 0, 0, 24, 500, 0, 0};
    GeomDotShape spiral = {1, 0, 0, 24, 500, 100, 50};
    for (int i = 0; i < 3; ++i) {
        GeomPoint at = {5.0 + 10.0 * i, 20.0, 0.0, 0, 0};
        points = vexo_geom_append_dot_fast(points, &count, &at, false, NULL, &capacity);
        at.y = 25.0;
        points = vexo_geom_append_dot_fast(points, &count, &at, true, &circle, &capacity);
        at.y = 30.0;
        points = vexo_geom_append_dot_fast(points, &count, &at, true, &spiral, &capacity);
        if (!points) {
            fprintf(stderr, "out of memory\n");
            return 1;
        }
    }

    printf("libvexo %s: one array of marks\n", vexo_util_version_string());
    summarise(points, count);
    vexo_geom_release(points);
    return 0;
}
