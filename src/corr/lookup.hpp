// SPDX-License-Identifier: MIT
// Reading a table between its nodes: the bilinear interpolation a scanner
// card applies, and its inverse.  Positions here are grid coordinates: node
// (r, c) sits at (c, r), so the field's centre is (32, 32).
#pragma once

#include "vexo.h"

namespace vexo {

struct GridPoint {
    double column;
    double row;
};

struct OutputValue {
    double x;
    double y;
};

// Output values at grid position p.  Beyond the edge the nearest edge
// cell's bilinear form continues; a non-finite coordinate gives NaN.
OutputValue table_output(const CorrTable &table, GridPoint p) noexcept;

// The focus value z at grid position p, read the same way.
double table_focus(const CorrTable &table, GridPoint p) noexcept;

// The grid position whose output is `target`, by damped Newton iteration
// from the neutral grid's answer.  false when it does not converge.
bool table_position(const CorrTable &table, OutputValue target, GridPoint &found) noexcept;

// Field position in a field of field_size <-> grid coordinates.
GridPoint grid_from_field(double x, double y, double field_size) noexcept;
void field_from_grid(GridPoint p, double field_size, double &x, double &y) noexcept;

} // namespace vexo
