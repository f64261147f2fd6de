// SPDX-License-Identifier: MIT
#include "vision/keypoint_check.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace vexo {
namespace {

// Octave layers of the SIFT detector (see make_detector).
constexpr int kSiftLayers = 3;

bool position_inside(const cv::Point2f &pt, cv::Size image) {
    // NaN fails every comparison, infinities the upper or lower bound.
    return pt.x >= 0.0f && pt.x < float(image.width) && pt.y >= 0.0f && pt.y < float(image.height);
}

bool sift_octave_usable(const cv::KeyPoint &kp, cv::Size image) {
    const SiftOctave o = unpack_sift_octave(kp.octave);
    if (o.octave < -1 || o.octave > sift_max_octave(image)) return false;
    if (o.layer < 1 || o.layer > kSiftLayers) return false;
    const float in_octave = std::ldexp(kp.size, -o.octave);
    if (!(in_octave >= 1.0f && in_octave <= kSiftMaxOctaveSize)) return false;
    // The descriptor bins orientations relative to the keypoint's angle and
    // wraps a bin index by one turn at most; an angle further out indexes
    // past its histogram.
    return kp.angle >= 0.0f && kp.angle <= 360.0f;
}

} // namespace

SiftOctave unpack_sift_octave(int packed) {
    const auto bits = uint32_t(packed);
    return SiftOctave{int(int8_t(uint8_t(bits & 0xFFu))), int((bits >> 8) & 0xFFu)};
}

int sift_max_octave(cv::Size image) {
    const int side = std::min(image.width, image.height);
    if (side < 1) return -2; // nothing fits
    return int(std::lround(std::log2(double(side)))) - 2;
}

bool keypoint_usable(const cv::KeyPoint &kp, DetectorKind kind, cv::Size image) {
    if (!position_inside(kp.pt, image)) return false;
    if (!(std::isfinite(kp.size) && kp.size >= 1.0f)) return false;
    if (!std::isfinite(kp.angle) || !std::isfinite(kp.response)) return false;
    switch (kind) {
    case DetectorKind::Sift:
        return sift_octave_usable(kp, image);
    case DetectorKind::Orb:
        return kp.octave >= 0 && kp.octave < kOrbLevels;
    default:
        return true; // SURF bounds its own scales and ignores the octave
    }
}

bool keypoints_usable(const std::vector<cv::KeyPoint> &kps, DetectorKind kind, cv::Size image) {
    return std::all_of(kps.begin(), kps.end(),
                       [&](const cv::KeyPoint &kp) { return keypoint_usable(kp, kind, image); });
}

} // namespace vexo
