// SPDX-License-Identifier: MIT
#include "vision/keypoints_detectors.hpp"

#include "vexo.h"
#include "vision/surf.hpp"

namespace vexo {

DetectorKind detector_kind_of(uint32_t options) {
    switch (options & RECOGNISER_DETECTOR_MASK) {
    case RECOGNISER_SIFT:
        return DetectorKind::Sift;
    case RECOGNISER_SURF:
        return DetectorKind::Surf;
    default:
        return DetectorKind::Orb;
    }
}

uint32_t detector_bit(DetectorKind kind) {
    switch (kind) {
    case DetectorKind::Sift:
        return RECOGNISER_SIFT;
    case DetectorKind::Surf:
        return RECOGNISER_SURF;
    default:
        return RECOGNISER_ORB;
    }
}

cv::Ptr<cv::Feature2D> make_detector(DetectorKind kind) {
    switch (kind) {
    case DetectorKind::Sift:
        return cv::SIFT::create(0, 3, 0.04, 10, 1.6);
    case DetectorKind::Surf:
        return Surf::create(400, 4, 2, true, false);
    default:
        return cv::ORB::create(500, 1.2f, kOrbLevels, 31, 0, 2, cv::ORB::HARRIS_SCORE, 31);
    }
}

cv::Ptr<cv::Feature2D> make_extractor(DetectorKind kind) {
    if (kind == DetectorKind::Surf) return Surf::create(100, 4, 3, false, false);
    return make_detector(kind);
}

} // namespace vexo
