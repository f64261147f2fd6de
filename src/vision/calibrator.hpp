// SPDX-License-Identifier: MIT
// The calibrator: rectifies camera frames through the perspective of a
// calibration record and writes them back, grey, into the caller's block.
#pragma once

#include <cstdint>

#include <opencv2/core.hpp>

#include "vexo.h"

// The opaque handle of the C interface.
struct Calibrator {
    cv::Mat perspective; // 3x3 CV_64F, empty when the record had none
    int32_t width = 0;   // output size; only ever lowered after creation
    int32_t height = 0;
    uint8_t options = 0; // CALIB_OPTION_* from the record
    // Working images kept from frame to frame, so a stream of equally
    // sized frames does not allocate.
    cv::Mat grey;
    cv::Mat warped;
};

namespace vexo {

// Output size limits of a calibrator.
constexpr int32_t kCalibMinWidth = 80;
constexpr int32_t kCalibMinHeight = 60;
constexpr int32_t kCalibMaxSide = 8192;

// A new calibrator for the record.  May throw std::bad_alloc or cv::Exception.
Calibrator *make_calibrator(const CalibrationRecord &record);

// Rectifies one frame in place.  VEXO_OK, or VEXO_ERROR_NO_MEMORY for an
// unusable block, in which case the block is left untouched.  May throw;
// the block is then also untouched, since it is only written at the end.
int32_t run_calibrator(Calibrator &cal, ImageBlock &frame);

} // namespace vexo
