#include "vision/image_block.hpp"

#include <cstring>

#include "core/byteorder.hpp"

namespace vexo {

bool image_geometry(const ImageBlock *block, ImageGeometry *geometry) {
    if (!block || block->kind != VEXO_IMAGE_KIND)
        return false;
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

cv::Mat image_block_to_grey(const ImageBlock *block) {
    ImageGeometry g;
    if (!image_geometry(block, &g))
        return cv::Mat();
    cv::Mat grey(g.height, g.width, CV_8UC1);
    const uint8_t *src = image_pixels(block);
    if (g.bytes_per_pixel == 1) {
        for (int32_t row = 0; row < g.height; ++row)
            std::memcpy(grey.ptr<uint8_t>(row), src + size_t(row) * g.width, size_t(g.width));
        return grey;
    }
    for (int32_t row = 0; row < g.height; ++row) {
        const uint8_t *in = src + size_t(row) * g.width * 3;
        uint8_t *out = grey.ptr<uint8_t>(row);
        for (int32_t col = 0; col < g.width; ++col, in += 3) {
            const int sum = int(int8_t(in[0])) + int(int8_t(in[1])) + int(int8_t(in[2]));
            out[col] = static_cast<uint8_t>(sum / 3);
        }
    }
    return grey;
}

} // namespace vexo
