// SPDX-License-Identifier: MIT
#include "vision/recogniser.hpp"

#include <algorithm>
#include <memory>

#include <opencv2/calib3d.hpp>

#include "vision/image_block.hpp"
#include "vision/keypoints.hpp"

namespace vexo {
namespace {

cv::Ptr<cv::Feature2D> &slot_of(Recogniser &rec, DetectorKind kind) {
    switch (kind) {
    case DetectorKind::Sift:
        return rec.sift;
    case DetectorKind::Surf:
        return rec.surf;
    default:
        return rec.orb;
    }
}

// The filled slot, if any.
bool stored_detector(const Recogniser &rec, DetectorKind *kind, cv::Ptr<cv::Feature2D> *detector) {
    const std::pair<DetectorKind, const cv::Ptr<cv::Feature2D> *> slots[] = {
        {DetectorKind::Sift, &rec.sift},
        {DetectorKind::Surf, &rec.surf},
        {DetectorKind::Orb, &rec.orb}};
    for (const auto &slot : slots)
        if (!slot.second->empty()) {
            *kind = slot.first;
            *detector = *slot.second;
            return true;
        }
    return false;
}

cv::Ptr<cv::DescriptorMatcher> make_matcher(DetectorKind kind, uint32_t options) {
    if (kind == DetectorKind::Orb) return cv::BFMatcher::create(cv::NORM_HAMMING, false);
    if ((options & RECOGNISER_MATCHER_MASK) == RECOGNISER_FLANN)
        return cv::makePtr<cv::FlannBasedMatcher>(
            cv::makePtr<cv::flann::KDTreeIndexParams>(4),
            cv::makePtr<cv::flann::SearchParams>(32, 0, true));
    return cv::BFMatcher::create(cv::NORM_L2, false);
}

// ORB picks the pyramid level of a provided keypoint from its octave; a
// record from elsewhere must not name a level that does not exist.
void clamp_orb_octaves(std::vector<cv::KeyPoint> &kps) {
    for (auto &kp : kps) kp.octave = std::clamp(kp.octave, 0, kOrbLevels - 1);
}

double rotation_of(const cv::Mat &h, bool *ok) {
    GeomMatrix *m = vexo_matrix_create();
    if (!m) {
        *ok = false;
        return 0.0;
    }
    // H goes in transposed; the decomposition then reads its rotation.
    double *e = reinterpret_cast<double *>(m);
    for (int col = 0; col < 3; ++col)
        for (int row = 0; row < 3; ++row) e[4 * col + row] = h.at<double>(row, col);
    double az = 0.0;
    vexo_matrix_get_rotation(m, nullptr, nullptr, &az);
    vexo_matrix_release(m);
    *ok = true;
    return az;
}

} // namespace

Recogniser *create_recogniser(const PatternKeypoint *keypoints, int32_t count, uint32_t options,
                              const ImageBlock *reference, int32_t origin_x, int32_t origin_y) {
    if (count < 3 || !keypoints) return nullptr;
    std::unique_ptr<Recogniser> rec(new (std::nothrow) Recogniser);
    if (!rec) return nullptr;
    rec->origin_x = origin_x;
    rec->origin_y = origin_y;
    rec->options = options;
    rec->pattern_keypoints.reserve(size_t(count));
    for (int32_t k = 0; k < count; ++k)
        rec->pattern_keypoints.push_back(from_pattern_keypoint(keypoints[k]));
    const cv::Mat grey = image_block_to_grey(reference);
    if (grey.empty()) return rec.release(); // usable handle, but it never finds anything
    const DetectorKind kind = detector_kind_of(options);
    if (kind == DetectorKind::Orb) clamp_orb_octaves(rec->pattern_keypoints);
    make_extractor(kind)->compute(grey, rec->pattern_keypoints, rec->pattern_descriptors);
    slot_of(*rec, kind) = make_detector(kind);
    if (slot_of(*rec, kind).empty()) return nullptr;
    return rec.release();
}

std::vector<cv::DMatch> ratio_filter(const std::vector<std::vector<cv::DMatch>> &lists,
                                     int query_rows, int train_rows) {
    std::vector<cv::DMatch> kept;
    for (const auto &list : lists) {
        if (list.size() < 2) continue;
        const cv::DMatch &best = list[0], &second = list[1];
        if (best.queryIdx < 0 || best.queryIdx >= query_rows || best.trainIdx < 0 ||
            best.trainIdx >= train_rows || second.trainIdx < 0 || second.trainIdx >= train_rows)
            continue;
        if (double(best.distance) < kMatchRatio * double(second.distance)) kept.push_back(best);
    }
    return kept;
}

void run_recogniser(const Recogniser &rec, const ImageBlock *frame, RecognitionResult *result) {
    result->x = result->y = result->rotation = 0.0f;
    const cv::Mat grey = image_block_to_grey(frame);
    if (grey.empty()) {
        result->status = int32_t(VEXO_ERROR_NO_MEMORY);
        return;
    }
    DetectorKind kind;
    cv::Ptr<cv::Feature2D> detector;
    if (!stored_detector(rec, &kind, &detector) || rec.pattern_descriptors.empty()) {
        result->status = int32_t(VEXO_ERROR_NO_HANDLE);
        return;
    }
    std::vector<cv::KeyPoint> frame_keypoints;
    cv::Mat frame_descriptors;
    detector->detect(grey, frame_keypoints);
    make_extractor(kind)->compute(grey, frame_keypoints, frame_descriptors);

    std::vector<std::vector<cv::DMatch>> lists;
    // A frame without descriptors has nothing to match against.
    if (!frame_descriptors.empty())
        make_matcher(kind, rec.options)
            ->knnMatch(rec.pattern_descriptors, frame_descriptors, lists, 2);
    if (lists.empty()) {
        result->status = int32_t(VEXO_ERROR_NO_HANDLE);
        return;
    }
    const std::vector<cv::DMatch> kept =
        ratio_filter(lists, int(rec.pattern_keypoints.size()), int(frame_keypoints.size()));
    if (kept.empty()) {
        result->status = int32_t(VEXO_ERROR_NO_RATIO_MATCH);
        return;
    }
    std::vector<cv::Point2f> pattern_points, frame_points;
    for (const auto &m : kept) {
        pattern_points.push_back(rec.pattern_keypoints[size_t(m.queryIdx)].pt);
        frame_points.push_back(frame_keypoints[size_t(m.trainIdx)].pt);
    }
    if (pattern_points.empty()) {
        result->status = int32_t(VEXO_ERROR_NO_POINT_PAIRS);
        return;
    }
    // Fewer than four pairs cannot fix a homography.
    cv::Mat h;
    if (pattern_points.size() >= 4) h = cv::findHomography(pattern_points, frame_points, 0, 3.0);
    if (h.empty() || h.rows != 3 || h.cols != 3 || h.type() != CV_64F) {
        result->status = int32_t(VEXO_ERROR_INVALID_PARAMETER);
        return;
    }
    const auto H = [&h](int r, int c) { return h.at<double>(r, c); };
    if (rec.options & RECOGNISER_POSITION) {
        // A product with H[2][2], not a division: hosts calibrated their
        // offsets against exactly this figure.
        result->x = float(H(0, 2) * H(2, 2) - rec.origin_x);
        result->y = float(H(1, 2) * H(2, 2) - rec.origin_y);
    }
    if (rec.options & RECOGNISER_ROTATION) {
        bool ok;
        const double az = rotation_of(h, &ok);
        if (!ok) {
            result->x = result->y = 0.0f;
            result->status = int32_t(VEXO_ERROR_NO_MEMORY);
            return;
        }
        result->rotation = float(az);
    }
    result->status = int32_t(VEXO_OK);
}

} // namespace vexo
