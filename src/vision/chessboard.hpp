// SPDX-License-Identifier: MIT
// Calibration from one image of a flat chessboard: the camera model, the
// perspective that squares the board up, and the corners as whole pixels.
#pragma once

#include <cstdint>
#include <vector>

#include <opencv2/core.hpp>

#include "vexo.h"

namespace vexo {

// Inner corners per side that a board search accepts.  Fewer than 3 cannot
// be searched for; more than this is no real board and would only ask for
// absurd working storage.
constexpr int32_t kBoardMinSide = 3;
constexpr int32_t kBoardMaxSide = 1024;

// v rounded half away from zero to a whole pixel (12.5 -> 13, -12.5 -> -13),
// saturated to the int32 range.
int32_t round_corner_coordinate(float v);

// Searches `grey` for a board of pattern.width x pattern.height inner
// corners, first with quad filtering, then once more without.  Returns the
// number of corners the last attempt reported; `corners` holds them.
int find_board(const cv::Mat &grey, cv::Size pattern, std::vector<cv::Point2f> &corners);

// Fills the record and returns the malloc'ed corner list (NULL when the
// board is not found or the list cannot be allocated); *found receives the
// number of corners found.  May throw cv::Exception or std::bad_alloc.
int32_t *generate_correction(const ImageBlock *image, int32_t columns, int32_t rows,
                             CalibrationRecord &record, int32_t &found);

} // namespace vexo
