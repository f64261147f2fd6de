// SPDX-License-Identifier: MIT
// Smoothing of short zig-zags inside polylines.
#pragma once

#include <cstdint>

#include "vexo.h"

namespace vexo {

// One forward pass: each inner point whose neighbours both lie closer than
// max_dist becomes the mean of the three in x and y.  z is never moved; with
// measure_z the closeness tests include it.
void smoothen(GeomPoint *points, uint32_t count, double max_dist, bool measure_z) noexcept;

} // namespace vexo
