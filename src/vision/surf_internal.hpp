// SPDX-License-Identifier: MIT
// The two halves of SURF, shared by the Feature2D glue and the tests.
#pragma once

#include <vector>

#include <opencv2/core.hpp>

#include "vision/surf.hpp"
#include "vision/surf_integral.hpp"

namespace vexo {

// Scale-space maxima of the box-filter Hessian determinant above the
// threshold, refined to sub-sample position and scale.  Angles are left 0.
std::vector<cv::KeyPoint> surf_find_blobs(const IntegralImage &integral, const SurfParams &params);

// Box-filter Hessian determinant at pixel (x, y) for filter side `size`
// (9, 15, 21, ...): Dxx Dyy - (0.9 Dxy)^2 with every box of the three
// patterns replaced by the mean of its pixels (0..255).  The filter must
// lie inside the image.
float surf_hessian_response(const IntegralImage &integral, int x, int y, int size);

// Dominant orientation of each keypoint (unless upright) and, when
// descriptors is not NULL, its descriptor: one CV_32F row per keypoint.
// No keypoint is dropped: window parts outside the image contribute 0.
void surf_describe(const IntegralImage &integral, const SurfParams &params,
                   std::vector<cv::KeyPoint> &keypoints, cv::Mat *descriptors);

// Scale of a keypoint from its diameter, kept in a range in which every
// box stays small enough for exact sums.
float surf_scale_of(const cv::KeyPoint &keypoint);

// Box filter side of octave o, layer l: 9, 15, 21, 27 in the first octave,
// 15, 27, 39, 51 in the second, the step between layers doubling.
inline int surf_filter_size(int octave, int layer) {
    return 3 * ((2 << octave) * (layer + 1) + 1);
}

} // namespace vexo
