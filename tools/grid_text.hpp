// SPDX-License-Identifier: MIT
// A measured grid as text, the form `vexo corr from-grid` reads:
//
//   # a comment line (also after the numbers: "0 0 0.01 -0.02 # centre")
//   nominal_x nominal_y measured_x measured_y
//
// one line per mark, in mm, in any order, numbers in the C locale's syntax
// (see polyline_text.hpp).  The nominal places must form a full n x n grid
// (n >= 2): n distinct x values, n distinct y values, each (x, y) pair on
// exactly one line, the values repeated exactly along rows and columns.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "vexo.h"

namespace tool {

// Files larger than this are refused before reading; grids beyond 1024 x
// 1024 marks are refused too (no field is marked that densely).
constexpr size_t kMaxGridBytes = size_t(64) << 20;
constexpr uint32_t kMaxGridSide = 1024;

// Both grids in vexo_corr_from_grid's order: mark (i, j) at i * n + j, row i
// by growing y, column j by growing x.  Only x and y are set.
struct MeasuredGrid {
    uint32_t n = 0;
    std::vector<GeomPoint> nominal, measured;
};

// Parses a whole text; throws cli::Failure "NAME: line N: cause" for a bad
// line and "NAME: cause" for a set of marks that is not a grid.
MeasuredGrid parse_measured_grid(const uint8_t *data, size_t size, const std::string &name);

// The grid as text again, one line per mark in grid order, numbers in
// their shortest exact form: parsing it gives the same grid.
std::string measured_grid_text(const MeasuredGrid &grid);

} // namespace tool
