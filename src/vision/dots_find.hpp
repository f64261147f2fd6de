// SPDX-License-Identifier: MIT
// Finding marked dots in a photo: threshold, outer contours, shape limits
// and a grey-weighted centroid per dot.
#pragma once

#include <cstdint>
#include <vector>

#include <opencv2/core.hpp>

#include "vexo.h"

namespace vexo {

struct FoundDot {
    double x; // centroid, pixels, y down
    double y;
    double area; // contour area, pixels
};

// VEXO_OK, or the status vexo_prcg_find_dots documents for bad parameters.
uint32_t check_dot_params(const PrcgDotParams &params) noexcept;

// The dots of a grey image under checked parameters, before any lens or
// perspective mapping, sorted by y then x.  May throw cv::Exception or
// std::bad_alloc.
std::vector<FoundDot> find_dots_in_grey(const cv::Mat &grey, const PrcgDotParams &params);

// Moves the centres through the record's lens model and/or perspective as
// params.options asks.  May throw.
void map_dot_centres(std::vector<FoundDot> &dots, const PrcgDotParams &params);

// Whole operation behind vexo_prcg_find_dots: status and the dots.
uint32_t find_dots(const ImageBlock *image, const PrcgDotParams &params,
                   std::vector<FoundDot> &dots);

} // namespace vexo
