// SPDX-License-Identifier: MIT
#include "vision/dots_find.hpp"

#include <algorithm>
#include <cmath>

#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>

#include "core/byteorder.hpp"
#include "vision/image_block.hpp"

namespace vexo {
namespace {

constexpr uint32_t kKnownOptions = VEXO_PRCG_DOTS_DARK | VEXO_PRCG_DOTS_NO_BORDER |
                                   VEXO_PRCG_DOTS_UNDISTORT | VEXO_PRCG_DOTS_PERSPECTIVE;
constexpr uint32_t kRecordOptions = VEXO_PRCG_DOTS_UNDISTORT | VEXO_PRCG_DOTS_PERSPECTIVE;
// Level 255 would leave no pixel brighter than it: no dot could exist.
constexpr uint32_t kHighestLevel = 254;

cv::Matx33d record_matrix(const uint8_t (*blocks)[8]) {
    cv::Matx33d m;
    for (int i = 0; i < 9; ++i) m(i / 3, i % 3) = load_be_f64(blocks[i]);
    return m;
}

cv::Vec4d record_distortion(const CalibrationRecord &record) {
    cv::Vec4d d;
    for (int i = 0; i < 4; ++i) d[i] = load_be_f64(record.distortion[i]);
    return d;
}

bool all_finite(const double *v, int count) {
    return std::all_of(v, v + count, [](double x) { return std::isfinite(x); });
}

// fx and fy above 0 and every camera and distortion value finite: the lens
// model cannot be inverted otherwise.
bool usable_camera(const CalibrationRecord &record) {
    const cv::Matx33d k = record_matrix(record.camera);
    const cv::Vec4d d = record_distortion(record);
    return all_finite(k.val, 9) && all_finite(d.val, 4) && k(0, 0) > 0 && k(1, 1) > 0;
}

bool usable_limits(const PrcgDotParams &p) {
    const bool finite =
        std::isfinite(p.min_area) && std::isfinite(p.max_area) && std::isfinite(p.min_circularity);
    return finite && p.min_area >= 0 && p.max_area >= 0 &&
           (p.max_area == 0 || p.max_area >= p.min_area) && p.min_circularity >= 0 &&
           p.min_circularity <= 1;
}

// The grey image read as ink (dots bright, the inverse for dark dots)
// without making an inverted copy of the frame: the threshold and the
// weights below flip the grey values themselves.
struct Ink {
    const cv::Mat &grey;
    bool dark;
    int level; // on the ink scale: a dot pixel's ink is above it

    // max(0, ink - level) of grey value g.
    int weight(int g) const {
        const int ink = dark ? 255 - g : g;
        return ink > level ? ink - level : 0;
    }
};

// The binary image of dot pixels and the ink level.  For dark dots, ink >
// L is grey <= 254 - L, and Otsu's split of the grey image at t gives the
// ink level 254 - t.
int threshold_ink(const cv::Mat &grey, const PrcgDotParams &params, cv::Mat &binary) {
    const bool dark = params.options & VEXO_PRCG_DOTS_DARK;
    const int kind = dark ? cv::THRESH_BINARY_INV : cv::THRESH_BINARY;
    if (params.threshold_kind == VEXO_PRCG_THRESHOLD_OTSU) {
        const int t = int(cv::threshold(grey, binary, 0, 255, kind | cv::THRESH_OTSU));
        return dark ? 254 - t : t;
    }
    const int level = int(params.threshold);
    cv::threshold(grey, binary, dark ? 254 - level : level, 255, kind);
    return level;
}

bool touches_border(const cv::Rect &box, const cv::Size &size) {
    return box.x == 0 || box.y == 0 || box.x + box.width == size.width ||
           box.y + box.height == size.height;
}

bool passes_shape(const std::vector<cv::Point> &contour, double area, const PrcgDotParams &params) {
    if (area < params.min_area) return false;
    if (params.max_area > 0 && area > params.max_area) return false;
    if (params.min_circularity <= 0) return true;
    const double perimeter = cv::arcLength(contour, true);
    if (!(perimeter > 0)) return false;
    const double circularity = 4 * CV_PI * area / (perimeter * perimeter);
    return circularity >= params.min_circularity;
}

// Centroid of (ink - level) inside the contour, filled into a mask the
// size of its bounding box: a full-frame mask per dot would cost a frame's
// worth of memory traffic for every dot.  fillPoly draws the same pixels as
// drawContours filled would, without the sequence header drawContours
// builds for every contour up to the one it draws.  Pixels at or below the
// level weigh nothing, so the rim's exact outline adds no noise to the
// centre.  The moments are integer sums (exact, in any order); OpenCV's
// masked subtraction and moments cost more in call overhead than the
// arithmetic on a few hundred pixels.
bool weighted_centre(const Ink &ink, const std::vector<std::vector<cv::Point>> &contours, int index,
                     const cv::Rect &box, FoundDot &dot) {
    cv::Mat mask = cv::Mat::zeros(box.size(), CV_8UC1);
    const cv::Point *points = contours[size_t(index)].data();
    const int count = int(contours[size_t(index)].size());
    cv::fillPoly(mask, &points, &count, 1, cv::Scalar(255), cv::LINE_8, 0, -box.tl());
    uint64_t m00 = 0, m10 = 0, m01 = 0;
    for (int r = 0; r < box.height; ++r) {
        const uint8_t *inside = mask.ptr<uint8_t>(r);
        const uint8_t *grey = ink.grey.ptr<uint8_t>(box.y + r) + box.x;
        uint64_t row = 0, row_x = 0;
        for (int c = 0; c < box.width; ++c) {
            if (!inside[c]) continue;
            const auto w = uint64_t(ink.weight(grey[c]));
            row += w;
            row_x += w * uint64_t(c);
        }
        m00 += row;
        m10 += row_x;
        m01 += row * uint64_t(r);
    }
    if (m00 == 0) return false;
    dot.x = box.x + double(m10) / double(m00);
    dot.y = box.y + double(m01) / double(m00);
    return true;
}

} // namespace

uint32_t check_dot_params(const PrcgDotParams &p) noexcept {
    const bool kind_ok = p.threshold_kind == VEXO_PRCG_THRESHOLD_FIXED ||
                         p.threshold_kind == VEXO_PRCG_THRESHOLD_OTSU;
    const bool level_ok =
        p.threshold_kind != VEXO_PRCG_THRESHOLD_FIXED || p.threshold <= kHighestLevel;
    if (!kind_ok || !level_ok || (p.options & ~kKnownOptions) || p.reserved != 0 ||
        !usable_limits(p))
        return VEXO_ERROR_INVALID_PARAMETER;
    if ((p.options & kRecordOptions) && !p.record) return VEXO_ERROR_INVALID_PARAMETER;
    if ((p.options & VEXO_PRCG_DOTS_UNDISTORT) && !usable_camera(*p.record))
        return VEXO_ERROR_INVALID_PARAMETER;
    if ((p.options & VEXO_PRCG_DOTS_PERSPECTIVE) &&
        !all_finite(record_matrix(p.record->perspective).val, 9))
        return VEXO_ERROR_INVALID_PARAMETER;
    return VEXO_OK;
}

std::vector<FoundDot> find_dots_in_grey(const cv::Mat &grey, const PrcgDotParams &params) {
    cv::Mat binary;
    const Ink ink{grey, bool(params.options & VEXO_PRCG_DOTS_DARK),
                  threshold_ink(grey, params, binary)};
    std::vector<std::vector<cv::Point>> contours;
    cv::findContours(binary, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_SIMPLE);
    std::vector<FoundDot> dots;
    const bool no_border = params.options & VEXO_PRCG_DOTS_NO_BORDER;
    for (size_t i = 0; i < contours.size(); ++i) {
        const std::vector<cv::Point> &contour = contours[i];
        const cv::Rect box = cv::boundingRect(contour);
        if (no_border && touches_border(box, grey.size())) continue;
        const double area = cv::contourArea(contour);
        if (!passes_shape(contour, area, params)) continue;
        FoundDot dot{0, 0, area};
        if (weighted_centre(ink, contours, int(i), box, dot)) dots.push_back(dot);
    }
    std::sort(dots.begin(), dots.end(), [](const FoundDot &a, const FoundDot &b) {
        return a.y != b.y ? a.y < b.y : a.x < b.x;
    });
    return dots;
}

void map_dot_centres(std::vector<FoundDot> &dots, const PrcgDotParams &params) {
    if (dots.empty() || !(params.options & kRecordOptions)) return;
    std::vector<cv::Point2d> points;
    points.reserve(dots.size());
    for (const FoundDot &d : dots) points.emplace_back(d.x, d.y);
    const CalibrationRecord &record = *params.record;
    if (params.options & VEXO_PRCG_DOTS_UNDISTORT) {
        const cv::Matx33d camera = record_matrix(record.camera);
        // Iterate the inverse of the lens model well past OpenCV's default
        // five steps: the default leaves hundredths of a pixel at the rim.
        const cv::TermCriteria until(cv::TermCriteria::COUNT + cv::TermCriteria::EPS, 100, 1e-12);
        cv::undistortPoints(points, points, camera, record_distortion(record), cv::noArray(),
                            camera, until);
    }
    const cv::Matx33d perspective = record_matrix(record.perspective);
    const bool has_perspective =
        std::any_of(perspective.val, perspective.val + 9, [](double v) { return v != 0.0; });
    if ((params.options & VEXO_PRCG_DOTS_PERSPECTIVE) && has_perspective)
        cv::perspectiveTransform(points, points, perspective);
    for (size_t i = 0; i < dots.size(); ++i) {
        dots[i].x = points[i].x;
        dots[i].y = points[i].y;
    }
}

uint32_t find_dots(const ImageBlock *image, const PrcgDotParams &params,
                   std::vector<FoundDot> &dots) {
    const uint32_t checked = check_dot_params(params);
    if (checked != VEXO_OK) return checked;
    ImageGeometry g;
    if (!image_geometry(image, &g) || exceeds_vision_budget(image)) return VEXO_ERROR_NO_MEMORY;
    // A grey block is read in place (nothing here writes to it); a colour
    // one is converted as the calibrator converts it.
    cv::Mat grey;
    if (g.bytes_per_pixel == 1)
        grey = cv::Mat(g.height, g.width, CV_8UC1, const_cast<uint8_t *>(image_pixels(image)));
    else if (!image_block_to_grey(image, grey))
        return VEXO_ERROR_NO_MEMORY;
    dots = find_dots_in_grey(grey, params);
    map_dot_centres(dots, params);
    return dots.empty() ? VEXO_ERROR_NO_RESULT : VEXO_OK;
}

} // namespace vexo
