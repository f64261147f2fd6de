// SPDX-License-Identifier: MIT
// ".gcd": per cell, row by row, three i16 values Z, X, Y.  X and Y are
// offsets from a grid of exactly 1024 units (not the 1023.984375 pitch of
// the neutral table): that is the pitch the writing software assumes.
#include "core/byteorder.hpp"
#include "corr/loaders.hpp"
#include "corr/table.hpp"

namespace vexo {

uint32_t parse_gcd(ByteSpan file, CorrTable &table) {
    constexpr size_t kCellBytes = 6;
    if (file.size < kCellBytes * kCorrCells) return VEXO_ERROR_READ_FILE;
    const uint8_t *p = file.data;
    for (int row = 0; row < kCorrSide; ++row) {
        for (int column = 0; column < kCorrSide; ++column, p += kCellBytes) {
            set_cell_xyz(corr_cell(table, row, column),
                         (column * 1024 + load_le_i16(p + 2)) - kCorrHalfRange,
                         (row * 1024 + load_le_i16(p + 4)) - kCorrHalfRange, load_le_i16(p));
        }
    }
    return VEXO_OK;
}

} // namespace vexo
