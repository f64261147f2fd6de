// Synthetic scenes for the recognition tests: a textured pattern drawn
// from a fixed seed, pasted into noisy frames at known placements.
#pragma once

#include <cstdint>
#include <vector>

#include <opencv2/core.hpp>

#include "vexo.h"

namespace scene {

// Grey pattern of blobs, boxes, lines and text, reproducible from seed.
cv::Mat make_pattern(int width, int height, uint64_t seed);

// Low-contrast, smooth background with a little pixel noise.
cv::Mat make_background(int width, int height, uint64_t seed);

// Maps pattern coordinates into a frame: scaled by `scale` and turned by
// `angle_deg` (OpenCV sense: positive is counter-clockwise on screen)
// about the pattern centre, which lands on `centre`.
cv::Matx23d placement(cv::Size pattern, double angle_deg, double scale, cv::Point2d centre);

// background with the pattern warped in through `pattern_to_frame`.
cv::Mat paste(const cv::Mat &background, const cv::Mat &pattern,
              const cv::Matx23d &pattern_to_frame);

// Image block bytes of a grey image, as GREY8 or RGB24 (grey repeated).
class Block {
public:
    explicit Block(const cv::Mat &grey, uint8_t format = IMAGE_FORMAT_GREY8);
    const ImageBlock *get() const { return reinterpret_cast<const ImageBlock *>(bytes_.data()); }
    ImageBlock *get() { return reinterpret_cast<ImageBlock *>(bytes_.data()); }

private:
    std::vector<uint32_t> bytes_; // uint32 storage keeps the header aligned
};

} // namespace scene
