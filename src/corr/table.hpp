// SPDX-License-Identifier: MIT
// The 65x65 correction table: the identity (neutral) grid and cell access
// by row and column, shared by every loader, writer and adjustment.
#pragma once

#include <cstddef>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

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

// neutral_coordinate of every grid line, computed once per use: the
// loaders that add deltas to the neutral grid read it per cell.
struct NeutralLines {
    double line[kCorrSide];
    NeutralLines() {
        for (int i = 0; i < kCorrSide; ++i) line[i] = neutral_coordinate(i);
    }
    double operator[](int i) const { return line[i]; }
};

// Sets x, y and z of a cell and leaves its flags.  Loading a table is
// bound by its stores, so x and y go in one 16-byte store where SSE2 has
// one: two stores per cell instead of three, the same bytes.
#ifdef __SSE2__
inline void set_cell_xyz(GeomPoint &cell, __m128d xy, double z) {
    _mm_storeu_pd(&cell.x, xy);
    cell.z = z;
}
inline void set_cell_xyz(GeomPoint &cell, double x, double y, double z) {
    set_cell_xyz(cell, _mm_set_pd(y, x), z);
}
#else
inline void set_cell_xyz(GeomPoint &cell, double x, double y, double z) {
    cell.x = x;
    cell.y = y;
    cell.z = z;
}
#endif

// x, y from the identity grid, z = 0; flags are left as the caller had them.
void set_neutral(CorrTable &table) noexcept;

} // namespace vexo
