// SPDX-License-Identifier: MIT
// Host image blocks and their conversion to the grey working image that
// calibration and pattern recognition both start from.
#pragma once

#include <cstddef>
#include <cstdint>

#include <opencv2/core.hpp>

#include "vexo.h"

namespace vexo {

// Largest frame accepted, per side and in pixels: far beyond any camera,
// small enough that every size computation stays in range.
constexpr int32_t kMaxImageSide = 32768;
constexpr int64_t kMaxImagePixels = int64_t{1} << 28;

struct ImageGeometry {
    int32_t width;
    int32_t height;
    int32_t bytes_per_pixel;
};

// Width, height (from their big-endian fields) and pixel size of a usable
// block; false for a NULL block, a kind other than 2, an unknown format or
// a size outside the limits above.
bool image_geometry(const ImageBlock *block, ImageGeometry *geometry);

// True for a usable block with more than VEXO_VISION_MAX_PIXELS pixels:
// detection, recognition and calibration refuse it before any work.
bool exceeds_vision_budget(const ImageBlock *block);

// The pixels that follow the 32-byte header.
inline const uint8_t *image_pixels(const ImageBlock *block) {
    return reinterpret_cast<const uint8_t *>(block) + VEXO_IMAGE_HEADER_SIZE;
}
inline uint8_t *image_pixels(ImageBlock *block) {
    return reinterpret_cast<uint8_t *>(block) + VEXO_IMAGE_HEADER_SIZE;
}

// 8-bit grey copy of the block: GREY8 is copied, RGB24 becomes the sum of
// the three bytes taken as SIGNED 8-bit values, divided by 3 and truncated.
// Calibration and recognition results follow from these grey values and
// hosts compare them bit for bit, so the conversion is exactly this one.
// Empty when the block is unusable.
// May throw cv::Exception or std::bad_alloc.
cv::Mat image_block_to_grey(const ImageBlock *block);

// The same into `grey`, whose storage is reused when it already has the
// frame's size (callers that see frame after frame keep one).  False, and
// `grey` unchanged, when the block is unusable.
bool image_block_to_grey(const ImageBlock *block, cv::Mat &grey);

} // namespace vexo
