// SPDX-License-Identifier: MIT
#include "vision/keypoints.hpp"

#include <array>
#include <climits>
#include <cmath>
#include <cstdlib>

#include "vision/image_block.hpp"
#include "vision/keypoint_check.hpp"

namespace vexo {

int32_t to_thousandths(float value) {
    const double scaled = std::round(double(value) * 1000.0); // halves away from zero
    if (std::isnan(scaled)) return 0;
    if (scaled >= double(INT32_MAX)) return INT32_MAX;
    if (scaled <= double(INT32_MIN)) return INT32_MIN;
    return int32_t(scaled);
}

PatternKeypoint to_pattern_keypoint(const cv::KeyPoint &kp) {
    PatternKeypoint r;
    r.x = to_thousandths(kp.pt.x);
    r.y = to_thousandths(kp.pt.y);
    r.size = to_thousandths(kp.size);
    r.angle = to_thousandths(kp.angle);
    r.response = to_thousandths(kp.response);
    r.octave = kp.octave;
    r.class_id = kp.class_id;
    return r;
}

cv::KeyPoint from_pattern_keypoint(const PatternKeypoint &r) {
    return cv::KeyPoint(float(r.x) / 1000.0f, float(r.y) / 1000.0f, float(r.size) / 1000.0f,
                        float(r.angle) / 1000.0f, float(r.response) / 1000.0f, r.octave,
                        r.class_id);
}

bool footprint_inside(const cv::KeyPoint &kp, const PatternRect &rect) {
    const double x = kp.pt.x, y = kp.pt.y, half = kp.size / 2.0;
    return rect.left <= x - half && x + half <= rect.right && rect.top <= y - half &&
           y + half <= rect.bottom;
}

DetectorKind choose_detector(size_t sift, size_t surf, size_t orb) {
    if (sift < surf || sift == 0) return surf < orb ? DetectorKind::Orb : DetectorKind::Surf;
    return sift < orb ? DetectorKind::Orb : DetectorKind::Sift;
}

bool detector_allowed(DetectorKind kind, uint32_t options) {
    uint32_t excluding;
    switch (kind) {
    case DetectorKind::Sift:
        excluding = RECOGNISER_SURF | RECOGNISER_ORB | 0x800u;
        break;
    case DetectorKind::Surf:
        excluding = RECOGNISER_SIFT | RECOGNISER_ORB | 0x800u;
        break;
    default:
        excluding = RECOGNISER_SIFT | RECOGNISER_SURF | 0x800u;
    }
    return (options & excluding) == 0;
}

cv::Mat rectangle_mask(cv::Size image, const PatternRect &rect) {
    cv::Mat mask(image, CV_8UC1, cv::Scalar(0));
    // 64-bit so that extreme corners cannot wrap; then cut to the image.
    const int64_t left = std::max<int64_t>(rect.left, 0);
    const int64_t top = std::max<int64_t>(rect.top, 0);
    const int64_t right = std::min<int64_t>(rect.right, image.width);
    const int64_t bottom = std::min<int64_t>(rect.bottom, image.height);
    if (left < right && top < bottom)
        mask(cv::Rect(int(left), int(top), int(right - left), int(bottom - top))).setTo(255);
    return mask;
}

PatternKeypoint *allocate_keypoints(size_t count) {
    if (count == 0) return nullptr;
    return static_cast<PatternKeypoint *>(std::calloc(count, sizeof(PatternKeypoint)));
}

namespace {

size_t footprint_score(const std::vector<cv::KeyPoint> &kps, const PatternRect &rect) {
    size_t score = 0;
    for (const auto &kp : kps) score += footprint_inside(kp, rect);
    return score;
}

} // namespace

PatternKeypoint *generate_keypoints(const ImageBlock *image, int32_t *count, uint32_t *options,
                                    const PatternRect &rect) {
    *count = -1;
    if (exceeds_vision_budget(image)) return nullptr;
    const cv::Mat grey = image_block_to_grey(image);
    if (grey.empty()) return nullptr;
    const cv::Mat mask = rectangle_mask(grey.size(), rect);
    const DetectorKind kinds[3] = {DetectorKind::Sift, DetectorKind::Surf, DetectorKind::Orb};
    std::array<std::vector<cv::KeyPoint>, 3> found;
    std::array<size_t, 3> scores{};
    for (int k = 0; k < 3; ++k) {
        if (!detector_allowed(kinds[k], *options)) continue;
        make_detector(kinds[k])->detect(grey, found[size_t(k)], mask);
        scores[size_t(k)] = footprint_score(found[size_t(k)], rect);
    }
    const DetectorKind choice = choose_detector(scores[0], scores[1], scores[2]);
    *options = (*options & ~RECOGNISER_DETECTOR_MASK) | detector_bit(choice);
    const auto &chosen = found[size_t(choice)];
    if (chosen.empty() || chosen.size() > size_t(INT32_MAX)) return nullptr;
    PatternKeypoint *out = allocate_keypoints(chosen.size());
    if (!out) return nullptr;
    int32_t stored = 0;
    for (const auto &kp : chosen) {
        const PatternKeypoint record = to_pattern_keypoint(kp);
        // Checked as a recogniser will see it, after the round trip through
        // thousandths, so that every taught set creates a recogniser.
        if (footprint_inside(kp, rect) &&
            keypoint_usable(from_pattern_keypoint(record), choice, grey.size()))
            out[stored++] = record;
    }
    *count = stored;
    return out;
}

} // namespace vexo
