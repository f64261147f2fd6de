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
    // Empty when the reference image could not be read: the handle then
    // never finds anything.
    cv::Ptr<cv::Feature2D> detector;
    vexo::DetectorKind kind = vexo::DetectorKind::Orb; // of `detector`
    cv::Mat pattern_descriptors;                       // one row per pattern keypoint
    int32_t origin_x = 0;
    int32_t origin_y = 0;
    uint32_t options = 0;
};

namespace vexo {

// Ratio a best match must stay strictly below, against the second best.
constexpr double kMatchRatio = 0.75;

// New recogniser, or NULL (fewer than 3 keypoints, a reference above the
// vision pixel budget, a keypoint the detector cannot use on the reference,
// see keypoint_check.hpp).  May throw (cv::Exception, std::bad_alloc).
Recogniser *create_recogniser(const PatternKeypoint *keypoints, int32_t count, uint32_t options,
                              const ImageBlock *reference, int32_t origin_x, int32_t origin_y);

// Finds the pattern in the frame and fills result (status included; x, y
// and rotation 0 unless VEXO_OK).  May throw (cv::Exception,
// std::bad_alloc); result is then left to the caller.
void run_recogniser(const Recogniser &rec, const ImageBlock *frame, RecognitionResult *result);

// Best matches that pass the ratio test; lists with fewer than two
// neighbours or with indices outside the two descriptor sets are skipped.
std::vector<cv::DMatch> ratio_filter(const std::vector<std::vector<cv::DMatch>> &lists,
                                     int query_rows, int train_rows);

// Pattern points and the frame points matched to them, in match order.
struct MatchedPairs {
    std::vector<cv::Point2f> pattern;
    std::vector<cv::Point2f> frame;
    cv::Size frame_size;
};

// The steps every start shares: grey frame, detection, description,
// matching and the ratio test.  VEXO_OK with at least one pair, or the
// failure status.  May throw (cv::Exception, std::bad_alloc).
uint32_t match_pattern(const Recogniser &rec, const ImageBlock *frame, MatchedPairs *pairs);

// Rotation (degrees) read from a 3x3 CV_64F homography by the matrix
// decomposition; *ok false when no matrix could be made.
double homography_rotation(const cv::Mat &h, bool *ok);

} // namespace vexo
