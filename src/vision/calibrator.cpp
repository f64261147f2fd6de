// SPDX-License-Identifier: MIT
#include "vision/calibrator.hpp"

#include <algorithm>
#include <cstring>
#include <memory>

#include <opencv2/imgproc.hpp>

#include "core/byteorder.hpp"
#include "vision/image_block.hpp"

namespace vexo {
namespace {

int32_t clamp_side(int32_t value, int32_t minimum) {
    return std::min(std::max(value, minimum), kCalibMaxSide);
}

// The record's perspective, or an empty matrix when all nine values are
// exactly zero (the record's way of saying "no perspective").
cv::Mat record_perspective(const CalibrationRecord &record) {
    cv::Mat m = cv::Mat::zeros(3, 3, CV_64F);
    bool any_set = false;
    for (int i = 0; i < 9; ++i) {
        const double v = load_be_f64(record.perspective[i]);
        m.at<double>(i / 3, i % 3) = v;
        any_set = any_set || v != 0.0;
    }
    return any_set ? m : cv::Mat();
}

// Writes `grey` into the block's pixel area as a tightly packed
// width x height image, bottom row first unless the frame is top-down.
void write_output(const cv::Mat &grey, const Calibrator &cal, ImageBlock &frame) {
    uint8_t *out = image_pixels(&frame);
    const size_t row_bytes = size_t(cal.width);
    const bool top_down = (cal.options & CALIB_OPTION_TOP_DOWN) != 0;
    for (int32_t r = 0; r < cal.height; ++r) {
        const int32_t source_row = top_down ? r : cal.height - r - 1;
        std::memcpy(out + size_t(r) * row_bytes, grey.ptr<uint8_t>(source_row), row_bytes);
    }
}

} // namespace

Calibrator *make_calibrator(const CalibrationRecord &record) {
    auto cal = std::make_unique<Calibrator>();
    cal->options = record.options;
    // The camera matrix and distortion are carried by the record for the
    // host; frames are not undistorted, so they are not read here.
    cal->perspective = record_perspective(record);
    cal->width = clamp_side(record.width, kCalibMinWidth);
    cal->height = clamp_side(record.height, kCalibMinHeight);
    return cal.release();
}

int32_t run_calibrator(Calibrator &cal, ImageBlock &frame) {
    ImageGeometry geometry;
    if (!image_geometry(&frame, &geometry) || !image_block_to_grey(&frame, cal.grey))
        return VEXO_ERROR_NO_MEMORY;
    const cv::Mat *rectified = &cal.grey;
    if (!cal.perspective.empty()) {
        cv::warpPerspective(cal.grey, cal.warped, cal.perspective, cv::Size(), cv::INTER_LINEAR,
                            cv::BORDER_CONSTANT, cv::Scalar(0));
        rectified = &cal.warped;
    }

    // Nothing below can fail: the block is rewritten only from here on.
    frame.format = IMAGE_FORMAT_GREY8;
    frame.bits = 8;
    // A smaller frame shrinks the calibrator for good, so the output always
    // fits the pixel area the caller handed in.
    cal.width = std::min(cal.width, geometry.width);
    cal.height = std::min(cal.height, geometry.height);
    frame.data_size = uint32_t(cal.width) * uint32_t(cal.height);
    write_output(*rectified, cal, frame);
    return VEXO_OK;
}

} // namespace vexo
