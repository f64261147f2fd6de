/* SPDX-License-Identifier: MIT */
/* Curves: eight samples of a cubic Bezier curve, and y read off a natural
 * spline through four knots. */
#include <stdio.h>

#include "vexo.h"

int main(void) {
    const double controls[4 * 3] = {0, 0, 0, 10, 20, 0, 30, 20, 0, 40, 0, 0};
    GeomPoint samples[8];
    uint32_t status = vexo_bezier_get_curve3d(controls, 4, samples, 8);
    if (status != VEXO_OK) {
        fprintf(stderr, "bezier: %s\n", vexo_util_status_name(status));
        return 1;
    }
    printf("bezier:");
    for (int i = 0; i < 8; ++i) printf(" (%.2f, %.2f)", samples[i].x, samples[i].y);
    printf("\n");

    const double knots[4 * 2] = {0, 0, 1, 1, 2, 0, 3, 1};
    GeomPoint points[5] = {{0.5, 0, 0, 0, 0},
                           {1.0, 0, 0, 0, 0},
                           {1.5, 0, 0, 0, 0},
                           {2.5, 0, 0, 0, 0},
                           {3.5, 0, 0, 0, 0}};
    status = vexo_spline_get_curve2d(knots, 4, points, 5);
    if (status != VEXO_OK) {
        fprintf(stderr, "spline: %s\n", vexo_util_status_name(status));
        return 1;
    }
    printf("spline:");
    for (int i = 0; i < 5; ++i) printf(" y(%.1f) = %.4f", points[i].x, points[i].y);
    printf("\n");
    return 0;
}
