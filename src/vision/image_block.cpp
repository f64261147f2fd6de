// SPDX-License-Identifier: MIT
#include "vision/image_block.hpp"

#include <algorithm>
#include <cstring>

#include "core/byteorder.hpp"

namespace vexo {

bool image_geometry(const ImageBlock *block, ImageGeometry *geometry) {
    if (!block || block->kind != VEXO_IMAGE_KIND) return false;
    int32_t bytes_per_pixel;
    if (block->format == IMAGE_FORMAT_RGB24)
        bytes_per_pixel = 3;
    else if (block->format == IMAGE_FORMAT_GREY8)
        bytes_per_pixel = 1;
    else
        return false;
    const auto *header = reinterpret_cast<const uint8_t *>(block);
    const int32_t width = load_be_i32(header + 16);
    const int32_t height = load_be_i32(header + 20);
    if (width <= 0 || height <= 0 || width > kMaxImageSide || height > kMaxImageSide ||
        int64_t{width} * height > kMaxImagePixels)
        return false;
    *geometry = ImageGeometry{width, height, bytes_per_pixel};
    return true;
}

bool exceeds_vision_budget(const ImageBlock *block) {
    ImageGeometry g;
    return image_geometry(block, &g) && int64_t{g.width} * g.height > VEXO_VISION_MAX_PIXELS;
}

namespace {

// Grey value of every possible signed channel sum (-384 .. 381): the sum
// divided by 3, truncated toward zero, kept as its low byte.
struct SumToGrey {
    static constexpr int kOffset = 384;
    uint8_t grey[766];
    constexpr SumToGrey() : grey() {
        for (int sum = -kOffset; sum <= 381; ++sum)
            grey[sum + kOffset] = static_cast<uint8_t>(sum / 3);
    }
};
constexpr SumToGrey kSumToGrey;

void colour_rows_to_grey(const uint8_t *src, int32_t width, cv::Mat &grey, const cv::Range &rows) {
    for (int row = rows.start; row < rows.end; ++row) {
        const uint8_t *in = src + size_t(row) * size_t(width) * 3;
        uint8_t *out = grey.ptr<uint8_t>(row);
        for (int32_t col = 0; col < width; ++col, in += 3) {
            const int sum = int(int8_t(in[0])) + int(int8_t(in[1])) + int(int8_t(in[2]));
            out[col] = kSumToGrey.grey[sum + SumToGrey::kOffset];
        }
    }
}

} // namespace

bool image_block_to_grey(const ImageBlock *block, cv::Mat &grey) {
    ImageGeometry g;
    if (!image_geometry(block, &g)) return false;
    grey.create(g.height, g.width, CV_8UC1);
    const uint8_t *src = image_pixels(block);
    if (g.bytes_per_pixel == 1) {
        for (int32_t row = 0; row < g.height; ++row)
            std::memcpy(grey.ptr<uint8_t>(row), src + size_t(row) * g.width, size_t(g.width));
        return true;
    }
    // Frames are converted on OpenCV's worker threads, as the warp that
    // follows is; stripes of about 64 rows keep the hand-out cheap.
    cv::parallel_for_(
        cv::Range(0, g.height),
        [&](const cv::Range &rows) { colour_rows_to_grey(src, g.width, grey, rows); },
        std::max(1.0, g.height / 64.0));
    return true;
}

cv::Mat image_block_to_grey(const ImageBlock *block) {
    cv::Mat grey;
    if (!image_block_to_grey(block, grey)) return cv::Mat();
    return grey;
}

} // namespace vexo
