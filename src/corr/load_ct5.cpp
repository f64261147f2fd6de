// SPDX-License-Identifier: MIT
// ".ct5": a 257x257 grid at 1/16 output unit, of which the table takes
// every fourth line and every fourth entry.  Y plane first, then X.
#include "core/byteorder.hpp"
#include "corr/loaders.hpp"
#include "corr/table.hpp"

namespace vexo {
namespace {

constexpr size_t kHeaderBytes = 64;
constexpr size_t kLine = 257;
constexpr size_t kPlaneBytes = kLine * kLine * 4;

// Table column c is plane line 4c; table row r is entry 4r of that line.
double fine_value(const uint8_t *plane, int row, int column) {
    const size_t entry = static_cast<size_t>(4 * column) * kLine + static_cast<size_t>(4 * row);
    return load_le32(plane + 4 * entry) * 0.0625 - kCorrHalfRange;
}

} // namespace

uint32_t parse_ct5(ByteSpan file, CorrTable &table) {
    if (file.size < kHeaderBytes + 2 * kPlaneBytes) return VEXO_ERROR_READ_FILE;
    const uint8_t *y_plane = file.data + kHeaderBytes;
    const uint8_t *x_plane = y_plane + kPlaneBytes;
    for (int row = 0; row < kCorrSide; ++row) {
        for (int column = 0; column < kCorrSide; ++column) {
            set_cell_xyz(corr_cell(table, row, column), fine_value(x_plane, row, column),
                         fine_value(y_plane, row, column), 0.0);
        }
    }
    return VEXO_OK;
}

} // namespace vexo
