// SPDX-License-Identifier: MIT
#include "vision/surf_integral.hpp"

namespace vexo {

IntegralImage::IntegralImage(const cv::Mat &grey)
    : width_(grey.cols), height_(grey.rows), stride_(size_t(grey.cols) + 1),
      sum_(stride_ * (size_t(grey.rows) + 1), 0u) {
    CV_Assert(grey.type() == CV_8UC1);
    for (int r = 0; r < height_; ++r) {
        const uint8_t *in = grey.ptr<uint8_t>(r);
        const uint32_t *above = &sum_[size_t(r) * stride_];
        uint32_t *out = &sum_[size_t(r + 1) * stride_];
        uint32_t row_sum = 0;
        for (int c = 0; c < width_; ++c) {
            row_sum += in[c];
            out[c + 1] = above[c + 1] + row_sum;
        }
    }
}

} // namespace vexo
