// SPDX-License-Identifier: MIT
// Summed-area table behind every SURF box filter.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include <opencv2/core.hpp>

namespace vexo {

// Sums are kept in 32-bit unsigned arithmetic that wraps: a box sum taken
// as a difference of four corners is then exact whenever the true sum is
// below 2^32, which holds for every box with sides up to kSurfMaxBoxSide
// (255 * 4096 * 4096 < 2^32), whatever the image size.
constexpr int kSurfMaxBoxSide = 4096;

class IntegralImage {
public:
    explicit IntegralImage(const cv::Mat &grey);

    int width() const { return width_; }
    int height() const { return height_; }

    // Sum over rows [r0, r1) and columns [c0, c1); the box must lie inside.
    float box(int r0, int c0, int r1, int c1) const {
        const uint32_t *top = &sum_[size_t(r0) * stride_];
        const uint32_t *bottom = &sum_[size_t(r1) * stride_];
        return float(bottom[c1] - bottom[c0] - top[c1] + top[c0]);
    }

    // Running sums of row r (0..height): entry c is the sum of rows [0, r)
    // and columns [0, c), modulo 2^32.
    const uint32_t *row(int r) const { return &sum_[size_t(r) * stride_]; }

    // The same with the box cut to the image first (0 when nothing is left).
    float box_clamped(int r0, int c0, int r1, int c1) const {
        r0 = std::clamp(r0, 0, height_);
        r1 = std::clamp(r1, 0, height_);
        c0 = std::clamp(c0, 0, width_);
        c1 = std::clamp(c1, 0, width_);
        if (r1 <= r0 || c1 <= c0) return 0.0f;
        return box(r0, c0, r1, c1);
    }

private:
    int width_;
    int height_;
    size_t stride_;
    std::vector<uint32_t> sum_;
};

} // namespace vexo
