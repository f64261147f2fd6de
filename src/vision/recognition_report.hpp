// SPDX-License-Identifier: MIT
// The richer start of a recogniser: least-squares or robust homography,
// checked for a plausible placement of the pattern before it is reported.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include <opencv2/core.hpp>

#include "vexo.h"

struct Recogniser;

static_assert(sizeof(RecognitionReport) == 120, "RecognitionReport is a 120-byte record");
static_assert(offsetof(RecognitionReport, matches) == 32, "counts follow the four figures");
static_assert(offsetof(RecognitionReport, homography) == 48, "the homography ends the record");

namespace vexo {

// Rectangle around the points (positions that are not finite are left
// out), at least one pixel wide and high so that it always has an area.
cv::Rect2d pattern_box(const std::vector<cv::KeyPoint> &keypoints);

// The four corners of `box` (clockwise on screen, starting top left) mapped
// by the homography h (row-major); false when one lands at or behind the
// horizon (w <= 0) or is not finite.
bool map_box(const std::array<double, 9> &h, const cv::Rect2d &box,
             std::array<cv::Point2d, 4> *corners);

// The mapped box keeps its shape class: convex and turning the same way as
// the box itself (neither folded nor mirrored).
bool keeps_orientation(const std::array<cv::Point2d, 4> &corners);

// sqrt(area of the mapped corners / area of the box).
double linear_scale(const std::array<cv::Point2d, 4> &corners, const cv::Rect2d &box);

// Fits the homography of the matched pairs: least squares over all of
// them, or RANSAC (threshold 3.0) when robust.  Empty when there are fewer
// than four pairs or no fit; *inliers counts the pairs the fit kept.
cv::Mat fit_homography(const std::vector<cv::Point2f> &pattern,
                       const std::vector<cv::Point2f> &frame, bool robust, uint32_t *inliers);

// Checks where h (row-major) puts the recogniser's pattern box in a frame
// of the given size and, when the placement is plausible, fills x, y,
// rotation and scale.  VEXO_OK, VEXO_ERROR_NO_RESULT (folded, mirrored,
// behind the horizon or centred outside the frame) or
// VEXO_ERROR_NO_MEMORY (no matrix for the rotation).
uint32_t place_pattern(const Recogniser &rec, const std::array<double, 9> &h, cv::Size frame,
                       RecognitionReport *report);

// The whole start; report->status holds the outcome.  May throw
// (cv::Exception, std::bad_alloc).
void run_recogniser_report(const Recogniser &rec, const ImageBlock *frame, uint32_t options,
                           RecognitionReport *report);

} // namespace vexo
