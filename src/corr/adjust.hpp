// SPDX-License-Identifier: MIT
// In-place adjustments of a correction table: field scaling, focus
// compensation, local correction around one mark, trapezoid correction.
// The caller (the C boundary) has checked the arguments named below.
#pragma once

#include <cstdint>

#include "vexo.h"

namespace vexo {

// scale != 0.
void scale_field(CorrTable &table, double scale) noexcept;

// field_size != 0.
void compensate_focus(CorrTable &table, double focal_length, double field_size,
                      double target_size) noexcept;

// from and to are (x, y) pairs in output units; only the low two bits of
// mode count.
void adjust_around(CorrTable &table, const double *from, const double *to, double radius_factor,
                   int32_t mode) noexcept;

// False (table untouched) for a side other than 0..3.
bool scale_side(CorrTable &table, uint8_t side, double factor) noexcept;

} // namespace vexo
