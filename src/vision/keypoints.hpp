// SPDX-License-Identifier: MIT
// Keypoint sets: teaching a pattern as an array of PatternKeypoint records
// chosen from whichever detector finds the most keypoints inside the
// pattern rectangle.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <opencv2/core.hpp>

#include "vexo.h"
#include "vision/keypoints_detectors.hpp"

namespace vexo {

struct PatternRect {
    int32_t left, top, right, bottom;
};

// Record value of a pixel quantity: times 1000, rounded half away from
// zero; NaN gives 0 and values beyond the i32 range saturate.
int32_t to_thousandths(float value);

PatternKeypoint to_pattern_keypoint(const cv::KeyPoint &kp);
cv::KeyPoint from_pattern_keypoint(const PatternKeypoint &record);

// The keypoint's circle (diameter = size) lies wholly in the rectangle;
// touching the border counts as inside.
bool footprint_inside(const cv::KeyPoint &kp, const PatternRect &rect);

// Detector with the best footprint score; ties go to SIFT, then SURF.
DetectorKind choose_detector(size_t sift, size_t surf, size_t orb);

// Which detectors the option word lets run: preselecting one detector bit
// excludes the others; no bits runs all three.
bool detector_allowed(DetectorKind kind, uint32_t options);

// 255 inside the rectangle cut to the image, 0 elsewhere (all 0 for an
// empty or inverted rectangle).
cv::Mat rectangle_mask(cv::Size image, const PatternRect &rect);

// Keypoint arrays handed to callers: count x 28 zeroed bytes from the C
// heap, NULL for 0, overflow or allocation failure.
PatternKeypoint *allocate_keypoints(size_t count);

// The whole teaching step; *count is -1 unless an array is returned.
// May throw (cv::Exception, std::bad_alloc).
PatternKeypoint *generate_keypoints(const ImageBlock *image, int32_t *count, uint32_t *options,
                                    const PatternRect &rect);

} // namespace vexo
