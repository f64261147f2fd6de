// SPDX-License-Identifier: MIT
// The three feature detectors of pattern recognition and the parameters
// every teaching and matching call uses with them.
#pragma once

#include <cstdint>
#include <vector>

#include <opencv2/features2d.hpp>

namespace vexo {

enum class DetectorKind { Sift, Surf, Orb };

// Detector named by the option word's 0x0F00 bits: 0x100 SIFT, 0x200
// SURF, anything else ORB.
DetectorKind detector_kind_of(uint32_t options);

// The option bit that names a kind (0x100, 0x200 or 0x400).
uint32_t detector_bit(DetectorKind kind);

// Detector used for teaching and for finding keypoints in frames.
cv::Ptr<cv::Feature2D> make_detector(DetectorKind kind);

// Extractor for descriptors: the detector's own parameters, except SURF,
// which describes with its default parameters (64-float descriptors).
cv::Ptr<cv::Feature2D> make_extractor(DetectorKind kind);

// Keypoints of a frame found by `detector` (made by make_detector(kind))
// and their descriptors from make_extractor(kind), as detect() then
// compute() give them; SURF finds and describes in one pass.
void detect_and_describe(DetectorKind kind, cv::Feature2D &detector, const cv::Mat &grey,
                         std::vector<cv::KeyPoint> &keypoints, cv::Mat &descriptors);

// Pyramid levels of the ORB detector; provided keypoints must name one.
constexpr int kOrbLevels = 8;

} // namespace vexo
