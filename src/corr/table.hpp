// SPDX-License-Identifier: MIT
// The 65x65 correction table: the identity (neutral) grid and cell access
// by row and column, shared by every loader, writer and adjustment.
#pragma once

#include <cstddef>

#include "vexo.h"

namespace vexo {

constexpr int kCorrSide = 65;
constexpr int kCorrCells = kCorrSide * kCorrSide;
// Distance of the output range's lower edge from 0: the 0..65535 scanner
// word shifted so that the field is centred.
constexpr double kCorrHalfRange = 32767.5;

inline GeomPoint &corr_cell(CorrTable &table, int row, int column) {
    return table.cell[static_cast<size_t>(row) * kCorrSide + static_cast<size_t>(column)];
}
inline const GeomPoint &corr_cell(const CorrTable &table, int row, int column) {
    return table.cell[static_cast<size_t>(row) * kCorrSide + static_cast<size_t>(column)];
}

// Neutral deflection of grid line i (row or column).  The operation order
// is fixed: hosts compare neutral tables bit for bit, and the writers'
// files start from exactly these values.
inline double neutral_coordinate(int line) {
    return (line - 32) * 0.015625 * 65535.0;
}

// x, y from the identity grid, z = 0; flags are left as the caller had them.
void set_neutral(CorrTable &table) noexcept;

} // namespace vexo
