// SPDX-License-Identifier: MIT
#include "vision/chessboard.hpp"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdlib>

#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>

#include "core/byteorder.hpp"
#include "vision/image_block.hpp"

namespace vexo {
namespace {

constexpr int kSearchWithQuadFilter =
    cv::CALIB_CB_ADAPTIVE_THRESH | cv::CALIB_CB_NORMALIZE_IMAGE | cv::CALIB_CB_FILTER_QUADS;
constexpr int kSearchWithoutQuadFilter =
    cv::CALIB_CB_ADAPTIVE_THRESH | cv::CALIB_CB_NORMALIZE_IMAGE;

// Quad bounds start here, so corners beyond +-1e6 pixels are clamped.
constexpr float kBoundsStart = 1000000.0f;

void write_double(uint8_t *block, double value) {
    store_be_f64(block, value);
}

void refine_corners(const cv::Mat &grey, std::vector<cv::Point2f> &corners) {
    cv::cornerSubPix(grey, corners, cv::Size(11, 11), cv::Size(-1, -1),
                     cv::TermCriteria(cv::TermCriteria::COUNT | cv::TermCriteria::EPS, 30, 0.1f));
}

// Board coordinates of the corners.  The first coordinate is the row as an
// unfloored quotient (corner 10 of a 9-column board sits at 1.111...):
// the camera matrix follows from these coordinates, and hosts compare
// calibration records bit for bit.
std::vector<cv::Point3f> board_points(size_t count, int32_t columns) {
    std::vector<cv::Point3f> points(count);
    for (size_t i = 0; i < count; ++i)
        points[i] =
            cv::Point3f(float(double(i) / double(columns)), float(i % size_t(columns)), 0.0f);
    return points;
}

// Single-view calibration with a fixed aspect ratio and the 4-coefficient
// distortion model, the values rounded to single precision: hosts compare
// the record's values bit for bit, and those are floats widened to doubles.
// OpenCV widens a 4-element distortion vector to 5 and would fit k3 as
// well; fixing k3 at zero keeps the model to the four the record carries.
void calibrate_camera(const std::vector<cv::Point2f> &corners, int32_t columns, cv::Size image_size,
                      CalibrationRecord &record) {
    cv::Mat camera = cv::Mat::eye(3, 3, CV_32F);
    camera.at<float>(1, 1) = float(double(record.height) / double(record.width));
    cv::Mat distortion = cv::Mat::zeros(4, 1, CV_32F);
    std::vector<std::vector<cv::Point3f>> object_points{board_points(corners.size(), columns)};
    std::vector<std::vector<cv::Point2f>> image_points{corners};
    std::vector<cv::Mat> rotations, translations; // not wanted, but required
    cv::calibrateCamera(
        object_points, image_points, image_size, camera, distortion, rotations, translations,
        cv::CALIB_FIX_ASPECT_RATIO | cv::CALIB_FIX_K3,
        cv::TermCriteria(cv::TermCriteria::COUNT | cv::TermCriteria::EPS, 30, DBL_EPSILON));
    camera.convertTo(camera, CV_32F);
    distortion.convertTo(distortion, CV_32F);
    for (int i = 0; i < 9; ++i) write_double(record.camera[i], camera.at<float>(i / 3, i % 3));
    for (int i = 0; i < 4; ++i) write_double(record.distortion[i], distortion.at<float>(i));
    for (auto &block : record.reserved0) write_double(block, 0.0);
}

int32_t *corner_list(const std::vector<cv::Point2f> &corners) {
    auto *list = static_cast<int32_t *>(std::malloc(corners.size() * 2 * sizeof(int32_t)));
    if (!list) return nullptr;
    for (size_t i = 0; i < corners.size(); ++i) {
        list[2 * i] = round_corner_coordinate(corners[i].x);
        list[2 * i + 1] = round_corner_coordinate(corners[i].y);
    }
    return list;
}

// The perspective that moves the four outer corners onto their bounding
// box.  Corner 0 goes to the larger y, turning the board's rows over, which
// the calibrator's bottom-up output turns back.
void write_perspective(const std::vector<cv::Point2f> &corners, int32_t columns, int32_t rows,
                       CalibrationRecord &record) {
    const size_t n = corners.size();
    const cv::Point2f source[4] = {corners[0], corners[size_t(columns) - 1],
                                   corners[size_t(rows - 1) * size_t(columns)], corners[n - 1]};
    float min_x = kBoundsStart, min_y = kBoundsStart;
    float max_x = -kBoundsStart, max_y = -kBoundsStart;
    for (const cv::Point2f &p : source) {
        min_x = std::min(min_x, p.x);
        max_x = std::max(max_x, p.x);
        min_y = std::min(min_y, p.y);
        max_y = std::max(max_y, p.y);
    }
    const cv::Point2f target[4] = {{min_x, max_y}, {max_x, max_y}, {min_x, min_y}, {max_x, min_y}};
    const cv::Mat m = cv::getPerspectiveTransform(source, target);
    for (int i = 0; i < 9; ++i) write_double(record.perspective[i], m.at<double>(i / 3, i % 3));
}

} // namespace

int32_t round_corner_coordinate(float v) {
    const double sign = v >= 0.0f ? 1.0 : -1.0;
    const double shifted = std::trunc(sign * 0.5 + double(v) * 1.0) / 1.0;
    if (!(shifted >= double(INT32_MIN))) return INT32_MIN; // also NaN
    if (shifted > double(INT32_MAX)) return INT32_MAX;
    return int32_t(std::trunc(shifted));
}

int find_board(const cv::Mat &grey, cv::Size pattern, std::vector<cv::Point2f> &corners) {
    const int wanted = pattern.area();
    corners.clear();
    cv::findChessboardCorners(grey, pattern, corners, kSearchWithQuadFilter);
    if (int(corners.size()) != wanted) {
        corners.clear();
        cv::findChessboardCorners(grey, pattern, corners, kSearchWithoutQuadFilter);
    }
    return int(corners.size());
}

int32_t *generate_correction(const ImageBlock *image, int32_t columns, int32_t rows,
                             CalibrationRecord &record, int32_t &found) {
    found = 0;
    // The size goes into the record before anything can fail, read from
    // whatever block the caller passed.
    const auto *header = reinterpret_cast<const uint8_t *>(image);
    record.width = load_be_i32(header + 16);
    record.height = load_be_i32(header + 20);
    if (columns < kBoardMinSide || rows < kBoardMinSide || columns > kBoardMaxSide ||
        rows > kBoardMaxSide || exceeds_vision_budget(image))
        return nullptr;
    const cv::Mat grey = image_block_to_grey(image);
    if (grey.empty()) return nullptr;

    std::vector<cv::Point2f> corners;
    found = find_board(grey, cv::Size(columns, rows), corners);
    if (found != columns * rows) return nullptr;
    refine_corners(grey, corners);
    calibrate_camera(corners, columns, grey.size(), record);
    int32_t *list = corner_list(corners);
    write_perspective(corners, columns, rows, record);
    return list;
}

} // namespace vexo
