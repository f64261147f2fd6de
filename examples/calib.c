/* SPDX-License-Identifier: MIT */
/* Camera calibration from one picture of a chessboard: the example draws a
 * board of 8 x 6 squares (7 x 5 inner corners) itself, seen at an angle, finds its corners and
 * fills a calibration record, then rectifies the picture with it. */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>

#include "image.h"

enum { WIDTH = 640, HEIGHT = 480, COLUMNS = 8, ROWS = 6 };

/* The board (squares of 30 mm) 600 mm in front of a camera with a focal
 * length of 800 pixels, tilted 25 degrees about the horizontal axis: each
 * pixel's ray is cut with the board's plane and coloured by the square it
 * hits.  One tilted view is what a single-picture calibration needs. */
static void draw_chessboard(uint8_t *pixels) {
    const double focal = 800.0, distance = 600.0, square = 30.0;
    const double tilt = 25.0 * 3.14159265358979 / 180.0, c = cos(tilt), s = sin(tilt);
    for (int y = 0; y < HEIGHT; ++y)
        for (int x = 0; x < WIDTH; ++x) {
            /* Ray (dx, dy, 1); plane through (0, 0, distance) with normal (0, -s, c). */
            const double dx = (x + 0.5 - WIDTH / 2.0) / focal,
                         dy = (y + 0.5 - HEIGHT / 2.0) / focal;
            const double t = c * distance / (c - s * dy);
            const double u = t * dx, v = (t * dy) * c + (t - distance) * s;
            const double column = floor(u / square + COLUMNS / 2.0);
            const double row = floor(v / square + ROWS / 2.0);
            const int on_board = column >= 0 && column < COLUMNS && row >= 0 && row < ROWS;
            pixels[y * WIDTH + x] = on_board && fmod(column + row, 2.0) == 0.0 ? 20 : 235;
        }
}

int main(void) {
    ImageBlock *image = grey_image(WIDTH, HEIGHT);
    if (!image) return 1;
    draw_chessboard(image_pixels(image));

    CalibrationRecord record;
    int32_t found = 0;
    int32_t *corners = vexo_calib_gen_correction(image, 7, 5, &record, &found);
    if (!corners || found != 7 * 5) {
        vexo_calib_release_correction(corners);
        fprintf(stderr, "no chessboard found (%d corners)\n", found);
        free(image);
        return 1;
    }
    printf("found %d corners; first (%d, %d), last (%d, %d)\n", found, corners[0], corners[1],
           corners[2 * 34], corners[2 * 34 + 1]);
    printf("calibration record filled for %d x %d pixels\n", record.width, record.height);
    vexo_calib_release_correction(corners);

    Calibrator *cal = vexo_calib_create_calibrator(&record);
    const int32_t status = cal ? vexo_calib_start_calibrator(cal, image) : 0;
    vexo_calib_release_calibrator(cal);
    free(image);
    if (status != (int32_t)VEXO_OK) {
        fprintf(stderr, "rectifying failed: %s\n", vexo_util_status_name((uint32_t)status));
        return 1;
    }
    printf("picture rectified with the record\n");
    return 0;
}
