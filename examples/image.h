/* SPDX-License-Identifier: MIT */
/* A grey host image for the vision examples: the 32-byte ImageBlock header
 * (width and height big-endian) followed by one byte per pixel. */
#ifndef VEXO_EXAMPLE_IMAGE_H
#define VEXO_EXAMPLE_IMAGE_H

#include <stdlib.h>
#include <string.h>

#include "vexo.h"

static ImageBlock *grey_image(int32_t width, int32_t height) {
    const size_t pixels = (size_t)width * (size_t)height;
    ImageBlock *image = (ImageBlock *)calloc(1, VEXO_IMAGE_HEADER_SIZE + pixels);
    if (!image) return NULL;
    uint8_t *header = (uint8_t *)image;
    for (int k = 0; k < 4; ++k) {
        header[16 + k] = (uint8_t)((uint32_t)width >> (24 - 8 * k));
        header[20 + k] = (uint8_t)((uint32_t)height >> (24 - 8 * k));
    }
    image->kind = VEXO_IMAGE_KIND;
    image->format = IMAGE_FORMAT_GREY8;
    image->bits = 8;
    image->data_size = (uint32_t)pixels;
    return image;
}

static uint8_t *image_pixels(ImageBlock *image) {
    return (uint8_t *)image + VEXO_IMAGE_HEADER_SIZE;
}

#endif
