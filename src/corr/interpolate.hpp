// SPDX-License-Identifier: MIT
// Building a correction table from a coarse grid of measured marks.
#pragma once

#include <cstdint>

#include "vexo.h"

namespace vexo {

// n x n grids, cell (a, b) at a * n + b; only x and y are read.  Overwrites
// the whole table (z and flags end 0).  VEXO_OK, or VEXO_ERROR_NO_MEMORY
// when n * n is 0 or the work buffers cannot be had (the table is then
// untouched).
uint32_t interpolate_grid(uint32_t n, const GeomPoint *measured, const GeomPoint *nominal,
                          double range, CorrTable &table) noexcept;

} // namespace vexo
