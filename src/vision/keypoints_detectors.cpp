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

void detect_and_describe(DetectorKind kind, cv::Feature2D &detector, const cv::Mat &grey,
                         std::vector<cv::KeyPoint> &keypoints, cv::Mat &descriptors) {
    const cv::Ptr<cv::Feature2D> extractor = make_extractor(kind);
    const auto *surf = dynamic_cast<const Surf *>(&detector);
    const auto *surf_extractor = dynamic_cast<const Surf *>(extractor.get());
    if (surf && surf_extractor) {
        surf->detect_and_describe_as(grey, *surf_extractor, keypoints, descriptors);
        return;
    }
    detector.detect(grey, keypoints);
    extractor->compute(grey, keypoints, descriptors);
}

} // namespace vexo
