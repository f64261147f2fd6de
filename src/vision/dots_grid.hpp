// SPDX-License-Identifier: MIT
// Found dots towards a measured grid: pixels to field units, the grid's
// rotation removed, and the dots put in row-by-row grid order.
#pragma once

#include <cstdint>
#include <vector>

#include "vexo.h"

namespace vexo {

// vexo_prcg_scale_dots behind its argument checks.
uint32_t scale_dots(GeomPoint *dots, uint32_t count, double scale_x, double scale_y,
                    const double *origin, uint32_t options) noexcept;

// Median distance from each dot to its nearest neighbour (0 below 2 dots).
// May throw std::bad_alloc.
double median_neighbour_distance(const GeomPoint *dots, uint32_t count);

// Rotation of the grid in radians, -pi/4..pi/4, from the directions of
// neighbouring pairs modulo 90 degrees; false below 2 dots.  May throw.
bool estimate_grid_rotation(const GeomPoint *dots, uint32_t count, double &radians);

// The order that puts dots (already unrotated) row by row into an n x n
// grid, or the status that says why it cannot.  May throw.
uint32_t grid_order(const GeomPoint *dots, uint32_t count, uint32_t n,
                    std::vector<uint32_t> &order);

// vexo_prcg_unrotate_dots.  May throw std::bad_alloc.
uint32_t unrotate_dots(GeomPoint *dots, uint32_t count, uint32_t n, double *rotation,
                       uint32_t options);

} // namespace vexo
