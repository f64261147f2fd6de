// SPDX-License-Identifier: MIT
// C boundary of camera calibration.
#include <cstdlib>

#include "core/boundary.hpp"
#include "vision/calibrator.hpp"
#include "vision/chessboard.hpp"

extern "C" {

VEXO_API Calibrator *vexo_calib_create_calibrator(const CalibrationRecord *record) {
    if (!record) return nullptr;
    return vexo::guard_value<Calibrator *>([&] { return vexo::make_calibrator(*record); }, nullptr);
}

VEXO_API int32_t vexo_calib_start_calibrator(Calibrator *cal, ImageBlock *image) {
    if (!cal) return VEXO_ERROR_NO_HANDLE;
    if (!image) return VEXO_ERROR_NO_MEMORY;
    // Every failure, OpenCV's included, happens before the block is written
    // and is reported as the image that could not be made.
    return vexo::guard_value<int32_t>([&] { return vexo::run_calibrator(*cal, *image); },
                                      VEXO_ERROR_NO_MEMORY);
}

VEXO_API void vexo_calib_release_calibrator(Calibrator *cal) {
    delete cal;
}

VEXO_API int32_t *vexo_calib_gen_correction(const ImageBlock *image, int32_t columns, int32_t rows,
                                            CalibrationRecord *record, int32_t *found) {
    int32_t count = 0;
    int32_t *corners = nullptr;
    if (image && record)
        corners = vexo::guard_value<int32_t *>(
            [&] { return vexo::generate_correction(image, columns, rows, *record, count); },
            nullptr);
    if (found) *found = count;
    return corners;
}

VEXO_API void vexo_calib_release_correction(int32_t *corners) {
    std::free(corners);
}

} // extern "C"
