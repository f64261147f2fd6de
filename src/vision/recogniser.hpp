// SPDX-License-Identifier: MIT
// A taught pattern and the search for it in camera frames.
#pragma once

#include <cstdint>
#include <vector>

#include <opencv2/features2d.hpp>

#include "vexo.h"
#include "vision/keypoints_detectors.hpp"

// The handle behind the C API's opaque Recogniser.
struct Recogniser {
    std::vector<cv::KeyPoint> pattern_keypoints;
    // Exactly one slot is filled once the pattern has descriptors; none
    // when the reference image could not be read.
    cv::Ptr<cv::Feature2D> sift;
    cv::Ptr<cv::Feature2D> surf;
    cv::Ptr<cv::Feature2D> orb;
    cv::Mat pattern_descriptors; // one row per pattern keypoint
    int32_t origin_x = 0;
    int32_t origin_y = 0;
    uint32_t options = 0;
    uint32_t reserved = 0;
};

namespace vexo {

// Ratio a best match must stay strictly below, against the second best.
constexpr double kMatchRatio = 0.75;

// New recogniser, or NULL (fewer than 3 keypoints, no detector filled).
// May throw (cv::Exception, std::bad_alloc).
Recogniser *create_recogniser(const PatternKeypoint *keypoints, int32_t count, uint32_t options,
                              const ImageBlock *reference, int32_t origin_x, int32_t origin_y);

// Finds the pattern in the frame and fills result (status included).
// May throw (cv::Exception, std::bad_alloc); result->status is then left
// to the caller.
void run_recogniser(const Recogniser &rec, const ImageBlock *frame, RecognitionResult *result);

// Best matches that pass the ratio test; lists with fewer than two
// neighbours or with indices outside the two descriptor sets are skipped.
std::vector<cv::DMatch> ratio_filter(const std::vector<std::vector<cv::DMatch>> &lists,
                                     int query_rows, int train_rows);

} // namespace vexo
