// SPDX-License-Identifier: MIT
#include "vision/recogniser.hpp"

#include <algorithm>
#include <memory>

#include <opencv2/calib3d.hpp>

#include "vision/image_block.hpp"
#include "vision/keypoint_check.hpp"
#include "vision/keypoints.hpp"

namespace vexo {
namespace {

cv::Ptr<cv::DescriptorMatcher> make_matcher(DetectorKind kind, uint32_t options) {
    if (kind == DetectorKind::Orb) return cv::BFMatcher::create(cv::NORM_HAMMING, false);
    if ((options & RECOGNISER_MATCHER_MASK) == RECOGNISER_FLANN)
        return cv::makePtr<cv::FlannBasedMatcher>(
            cv::makePtr<cv::flann::KDTreeIndexParams>(4),
            cv::makePtr<cv::flann::SearchParams>(32, 0, true));
    return cv::BFMatcher::create(cv::NORM_L2, false);
}

} // namespace

double homography_rotation(const cv::Mat &h, bool *ok) {
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

Recogniser *create_recogniser(const PatternKeypoint *keypoints, int32_t count, uint32_t options,
                              const ImageBlock *reference, int32_t origin_x, int32_t origin_y) {
    if (count < 3 || !keypoints || exceeds_vision_budget(reference)) return nullptr;
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
    rec->kind = detector_kind_of(options);
    if (!keypoints_usable(rec->pattern_keypoints, rec->kind, grey.size())) return nullptr;
    make_extractor(rec->kind)->compute(grey, rec->pattern_keypoints, rec->pattern_descriptors);
    rec->detector = make_detector(rec->kind);
    if (rec->detector.empty()) return nullptr;
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

uint32_t match_pattern(const Recogniser &rec, const ImageBlock *frame, MatchedPairs *pairs) {
    if (exceeds_vision_budget(frame)) return VEXO_ERROR_NO_MEMORY;
    const cv::Mat grey = image_block_to_grey(frame);
    if (grey.empty()) return VEXO_ERROR_NO_MEMORY;
    pairs->frame_size = grey.size();
    if (rec.detector.empty() || rec.pattern_descriptors.empty()) return VEXO_ERROR_NO_HANDLE;
    std::vector<cv::KeyPoint> frame_keypoints;
    cv::Mat frame_descriptors;
    detect_and_describe(rec.kind, *rec.detector, grey, frame_keypoints, frame_descriptors);

    std::vector<std::vector<cv::DMatch>> lists;
    // A frame without descriptors has nothing to match against.
    if (!frame_descriptors.empty())
        make_matcher(rec.kind, rec.options)
            ->knnMatch(rec.pattern_descriptors, frame_descriptors, lists, 2);
    if (lists.empty()) return VEXO_ERROR_NO_HANDLE;
    const std::vector<cv::DMatch> kept =
        ratio_filter(lists, int(rec.pattern_keypoints.size()), int(frame_keypoints.size()));
    // Every kept match gives a point pair, so VEXO_ERROR_NO_POINT_PAIRS
    // cannot follow once a match passed.
    if (kept.empty()) return VEXO_ERROR_NO_RATIO_MATCH;
    for (const auto &m : kept) {
        pairs->pattern.push_back(rec.pattern_keypoints[size_t(m.queryIdx)].pt);
        pairs->frame.push_back(frame_keypoints[size_t(m.trainIdx)].pt);
    }
    return VEXO_OK;
}

namespace {

// The search behind run_recogniser; returns the status and fills x, y and
// rotation as the options ask.
int32_t recognise(const Recogniser &rec, const ImageBlock *frame, RecognitionResult &found) {
    MatchedPairs pairs;
    const uint32_t matched = match_pattern(rec, frame, &pairs);
    if (matched != VEXO_OK) return int32_t(matched);
    // Fewer than four pairs cannot fix a homography.
    cv::Mat h;
    if (pairs.pattern.size() >= 4) h = cv::findHomography(pairs.pattern, pairs.frame, 0, 3.0);
    if (h.empty() || h.rows != 3 || h.cols != 3 || h.type() != CV_64F)
        return int32_t(VEXO_ERROR_INVALID_PARAMETER);
    const auto H = [&h](int r, int c) { return h.at<double>(r, c); };
    if (rec.options & RECOGNISER_POSITION) {
        // A product with H[2][2], not a division: hosts compare these
        // figures bit for bit.
        found.x = float(H(0, 2) * H(2, 2) - rec.origin_x);
        found.y = float(H(1, 2) * H(2, 2) - rec.origin_y);
    }
    if (rec.options & RECOGNISER_ROTATION) {
        bool ok;
        const double az = homography_rotation(h, &ok);
        if (!ok) return int32_t(VEXO_ERROR_NO_MEMORY);
        found.rotation = float(az);
    }
    return int32_t(VEXO_OK);
}

} // namespace

void run_recogniser(const Recogniser &rec, const ImageBlock *frame, RecognitionResult *result) {
    RecognitionResult found{0.0f, 0.0f, 0.0f, 0};
    found.status = recognise(rec, frame, found);
    if (found.status != int32_t(VEXO_OK)) found.x = found.y = found.rotation = 0.0f;
    *result = found;
}

} // namespace vexo
