/* SPDX-License-Identifier: MIT */
/* Pattern recognition: teach a textured patch from a reference picture, then
 * find it in a second picture where the scene has moved by (37, -21) pixels.
 * The example makes both pictures itself. */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>

#include "image.h"

enum { WIDTH = 320, HEIGHT = 240, SHIFT_X = 37, SHIFT_Y = -21 };

/* A deterministic texture: overlapping rectangles of random grey levels on
 * a flat background, at (dx, dy) in the picture. */
static void draw_scene(uint8_t *pixels, int dx, int dy) {
    uint32_t state = 12345u;
    for (int i = 0; i < WIDTH * HEIGHT; ++i) pixels[i] = 128;
    for (int k = 0; k < 90; ++k) {
        state = state * 1664525u + 1013904223u;
        const int x0 = 90 + (int)(state >> 8) % 110, y0 = 70 + (int)(state >> 16) % 80;
        state = state * 1664525u + 1013904223u;
        const int w = 4 + (int)(state >> 8) % 16, h = 4 + (int)(state >> 20) % 16;
        const uint8_t level = (uint8_t)(state >> 24);
        for (int y = y0 + dy; y < y0 + dy + h; ++y)
            for (int x = x0 + dx; x < x0 + dx + w; ++x)
                if (x >= 0 && y >= 0 && x < WIDTH && y < HEIGHT) pixels[y * WIDTH + x] = level;
    }
}

int main(void) {
    ImageBlock *reference = grey_image(WIDTH, HEIGHT), *frame = grey_image(WIDTH, HEIGHT);
    if (!reference || !frame) return 1;
    draw_scene(image_pixels(reference), 0, 0);
    draw_scene(image_pixels(frame), SHIFT_X, SHIFT_Y);

    uint32_t options = RECOGNISER_SIFT; /* 0 would try every detector */
    int32_t count = 0;
    PatternKeypoint *keys = vexo_prcg_gen_keypoints(reference, &count, &options, 80, 60, 230, 175);
    if (!keys || count < 3) {
        fprintf(stderr, "too few keypoints taught (%d)\n", count);
        return 1;
    }
    printf("taught %d keypoints\n", count);
    options |= RECOGNISER_POSITION | RECOGNISER_ROTATION; /* report both */
    Recogniser *rec = vexo_prcg_create_recogniser(keys, count, options, reference, 0, 0);
    vexo_prcg_release_keypoints(keys);
    if (!rec) return 1;

    RecognitionResult result;
    vexo_prcg_start_recogniser(rec, frame, &result);
    vexo_prcg_release_recogniser(rec);
    free(reference);
    free(frame);
    printf("recognition: %s, pattern at (%.1f, %.1f), turned %.1f degrees (moved by %d, %d)\n",
           vexo_util_status_name((uint32_t)result.status), result.x, result.y, result.rotation,
           SHIFT_X, SHIFT_Y);
    const int on_target = fabs(result.x - SHIFT_X) < 1.0 && fabs(result.y - SHIFT_Y) < 1.0;
    return result.status == (int32_t)VEXO_OK && on_target ? 0 : 1;
}
