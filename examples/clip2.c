/* SPDX-License-Identifier: MIT */
/* The second clip family: a 20 mm frame around a 10 mm window, shrunk by
 * 1 mm, returned once as an outer path and its hole and once keyholed, as
 * one hole-free contour for scanner cards that cannot mark holes apart. */
#include <stdio.h>

#include "vexo.h"

/* Square from (x, y) with the given side, walked in `dir` (+1 counter-
 * clockwise, -1 clockwise) and closed by a flagged copy of its first corner. */
static void square(GeomPoint *out, double x, double y, double side, int dir) {
    const double c[4][2] = {{0, 0}, {side, 0}, {side, side}, {0, side}};
    for (int i = 0; i < 5; ++i) {
        const int k = dir > 0 ? i % 4 : (4 - i) % 4;
        GeomPoint p = {x + c[k][0], y + c[k][1], 0.0, i == 4 ? VEXO_POINT_END : 0u, 0};
        out[i] = p;
    }
}

static int shrink(const GeomPoint *frame, uint32_t n, uint32_t extra, const char *what) {
    Clip2Handle *clip = vexo_clip2_create(frame, n, VEXO_CLIP_2D);
    if (!clip) return 1;
    const uint32_t status = vexo_clip2_outline(clip, VEXO_CLIP_JOIN_MITER | extra, -1.0);
    uint32_t count = 0;
    GeomPoint *result = status == VEXO_OK ? vexo_clip2_get_result(clip, &count) : NULL;
    vexo_clip2_release(clip);
    if (!result) {
        fprintf(stderr, "outline failed: %s\n", vexo_util_status_name(status));
        return 1;
    }
    uint32_t paths = 0;
    for (uint32_t i = 0; i < count; ++i)
        if (result[i].flags & VEXO_POINT_END) ++paths;
    printf("%s: %u points in %u path(s)\n", what, count, paths);
    vexo_geom_release(result);
    return 0;
}

int main(void) {
    GeomPoint frame[11];
    square(frame, 0.0, 0.0, 20.0, 1);
    square(frame + 5, 5.0, 5.0, 10.0, -1);
    frame[10] = frame[0]; /* the array's last point is never read */
    if (shrink(frame, 11, 0, "outer and hole")) return 1;
    return shrink(frame, 11, VEXO_CLIP2_KEYHOLE, "keyholed");
}
