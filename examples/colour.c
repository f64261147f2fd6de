/* SPDX-License-Identifier: MIT */
/* The colour pipeline: a grey ramp of RGB pixels with more contrast, a
 * little brightness and a red offset. */
#include <stdio.h>

#include "vexo.h"

int main(void) {
    enum { WIDTH = 5 };
    uint8_t pixels[WIDTH * 3], out[WIDTH * 3];
    for (int i = 0; i < WIDTH; ++i)
        pixels[3 * i] = pixels[3 * i + 1] = pixels[3 * i + 2] = (uint8_t)(i * 255 / (WIDTH - 1));

    const uint32_t status = vexo_gfx_process_colours(out, pixels, WIDTH, 1, 10, 50, 0, 20, 0, 0);
    if (status != VEXO_OK) {
        fprintf(stderr, "colours: %s\n", vexo_util_status_name(status));
        return 1;
    }
    for (int i = 0; i < WIDTH; ++i)
        printf("(%3u %3u %3u) -> (%3u %3u %3u)\n", pixels[3 * i], pixels[3 * i + 1],
               pixels[3 * i + 2], out[3 * i], out[3 * i + 1], out[3 * i + 2]);
    return 0;
}
