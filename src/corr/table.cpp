// SPDX-License-Identifier: MIT
// The identity correction: every node drives the scanner to its own ideal
// position.
#include "corr/table.hpp"

namespace vexo {

void set_neutral(CorrTable &table) noexcept {
    for (int row = 0; row < kCorrSide; ++row) {
        const double y = neutral_coordinate(row);
        for (int column = 0; column < kCorrSide; ++column) {
            GeomPoint &cell = corr_cell(table, row, column);
            cell.x = neutral_coordinate(column);
            cell.y = y;
            cell.z = 0.0;
        }
    }
}

} // namespace vexo
