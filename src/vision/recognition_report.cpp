// SPDX-License-Identifier: MIT
#include "vision/recognition_report.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include <opencv2/calib3d.hpp>

#include "vision/recogniser.hpp"

namespace vexo {
namespace {

constexpr double kReprojectionThreshold = 3.0;

double cross(const cv::Point2d &a, const cv::Point2d &b) {
    return a.x * b.y - a.y * b.x;
}

// Shoelace area, positive for corners clockwise on screen (rows down).
double quad_area(const std::array<cv::Point2d, 4> &q) {
    double twice = 0;
    for (size_t k = 0; k < 4; ++k) twice += cross(q[k], q[(k + 1) % 4]);
    return twice / 2.0;
}

bool map_point(const std::array<double, 9> &h, cv::Point2d p, cv::Point2d *out) {
    const double w = h[6] * p.x + h[7] * p.y + h[8];
    if (!(w > 0.0)) return false;
    *out = {(h[0] * p.x + h[1] * p.y + h[2]) / w, (h[3] * p.x + h[4] * p.y + h[5]) / w};
    return std::isfinite(out->x) && std::isfinite(out->y);
}

// Resets every figure and count; the status is set by the caller.
void clear_report(RecognitionReport *report) {
    *report = RecognitionReport{};
}

void clear_figures(RecognitionReport *report) {
    report->x = report->y = report->rotation = report->scale = 0.0;
}

} // namespace

cv::Rect2d pattern_box(const std::vector<cv::KeyPoint> &keypoints) {
    double x0 = std::numeric_limits<double>::max(), y0 = x0, x1 = -x0, y1 = -x0;
    for (const auto &kp : keypoints) {
        if (!std::isfinite(kp.pt.x) || !std::isfinite(kp.pt.y)) continue;
        x0 = std::min(x0, double(kp.pt.x));
        x1 = std::max(x1, double(kp.pt.x));
        y0 = std::min(y0, double(kp.pt.y));
        y1 = std::max(y1, double(kp.pt.y));
    }
    if (x0 > x1) x0 = x1 = y0 = y1 = 0.0; // no finite position at all
    const double cx = (x0 + x1) / 2.0, cy = (y0 + y1) / 2.0;
    const double w = std::max(x1 - x0, 1.0), h = std::max(y1 - y0, 1.0);
    return {cx - w / 2.0, cy - h / 2.0, w, h};
}

bool map_box(const std::array<double, 9> &h, const cv::Rect2d &box,
             std::array<cv::Point2d, 4> *corners) {
    const cv::Point2d source[4] = {
        box.tl(), {box.x + box.width, box.y}, box.br(), {box.x, box.y + box.height}};
    for (size_t k = 0; k < 4; ++k)
        if (!map_point(h, source[k], &(*corners)[k])) return false;
    return true;
}

bool keeps_orientation(const std::array<cv::Point2d, 4> &q) {
    // Every turn the same way as the box's own (clockwise on screen): four
    // turns of one sense, each under 180 degrees, close only a convex loop.
    for (size_t k = 0; k < 4; ++k) {
        const cv::Point2d in = q[(k + 1) % 4] - q[k], out = q[(k + 2) % 4] - q[(k + 1) % 4];
        if (!(cross(in, out) > 0.0)) return false;
    }
    return true;
}

double linear_scale(const std::array<cv::Point2d, 4> &corners, const cv::Rect2d &box) {
    return std::sqrt(std::fabs(quad_area(corners)) / (box.width * box.height));
}

cv::Mat fit_homography(const std::vector<cv::Point2f> &pattern,
                       const std::vector<cv::Point2f> &frame, bool robust, uint32_t *inliers) {
    *inliers = 0;
    if (pattern.size() < 4 || pattern.size() != frame.size()) return cv::Mat();
    if (!robust) {
        cv::Mat h = cv::findHomography(pattern, frame, 0, kReprojectionThreshold);
        if (!h.empty()) *inliers = uint32_t(pattern.size());
        return h;
    }
    cv::Mat kept;
    cv::Mat h = cv::findHomography(pattern, frame, cv::RANSAC, kReprojectionThreshold, kept);
    if (!h.empty() && !kept.empty()) *inliers = uint32_t(cv::countNonZero(kept));
    return h;
}

uint32_t place_pattern(const Recogniser &rec, const std::array<double, 9> &h, cv::Size frame,
                       RecognitionReport *report) {
    const cv::Rect2d box = pattern_box(rec.pattern_keypoints);
    std::array<cv::Point2d, 4> corners;
    cv::Point2d centre;
    if (!map_box(h, box, &corners) || !keeps_orientation(corners) ||
        !map_point(h, (box.tl() + box.br()) / 2.0, &centre))
        return VEXO_ERROR_NO_RESULT;
    if (!(centre.x >= 0.0 && centre.x <= frame.width && centre.y >= 0.0 &&
          centre.y <= frame.height))
        return VEXO_ERROR_NO_RESULT;
    // The reference's (0, 0) may lie outside the pattern box; it only has to
    // land somewhere finite.
    const double x = h[2] / h[8] - rec.origin_x, y = h[5] / h[8] - rec.origin_y;
    if (!std::isfinite(x) || !std::isfinite(y)) return VEXO_ERROR_NO_RESULT;
    bool ok;
    const double rotation =
        homography_rotation(cv::Mat(3, 3, CV_64F, const_cast<double *>(h.data())), &ok);
    if (!ok) return VEXO_ERROR_NO_MEMORY;
    report->x = x;
    report->y = y;
    report->rotation = rotation;
    report->scale = linear_scale(corners, box);
    return VEXO_OK;
}

void run_recogniser_report(const Recogniser &rec, const ImageBlock *frame, uint32_t options,
                           RecognitionReport *report) {
    clear_report(report);
    MatchedPairs pairs;
    report->status = match_pattern(rec, frame, &pairs);
    if (report->status != VEXO_OK) return;
    report->matches = uint32_t(pairs.pattern.size());
    const bool robust = ((rec.options | options) & VEXO_RECOGNISER_ROBUST) != 0;
    const cv::Mat h = fit_homography(pairs.pattern, pairs.frame, robust, &report->inliers);
    if (h.empty() || h.rows != 3 || h.cols != 3 || h.type() != CV_64F) {
        report->inliers = 0;
        report->status = VEXO_ERROR_INVALID_PARAMETER;
        return;
    }
    std::array<double, 9> hm;
    for (int k = 0; k < 9; ++k) hm[size_t(k)] = h.at<double>(k / 3, k % 3);
    std::copy(hm.begin(), hm.end(), report->homography);
    report->status = place_pattern(rec, hm, pairs.frame_size, report);
    if (report->status != VEXO_OK) clear_figures(report);
}

} // namespace vexo
