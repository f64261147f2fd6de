// SPDX-License-Identifier: MIT
// ".cor": deltas subtracted from the neutral grid, row by row, x then y.
// Three layouts share the extension, told apart by the marker at the start:
//   kCorScaledMarker   f64 scale factors sx, sy at 40 and 48, f64 pairs
//                      from 56;
//   kCorIntegerMarker  i32 pairs from 36, taken as they are (the f64 at 28
//                      is the galvo scale, not a factor);
//   no marker          unscaled f64 pairs from offset 519.
#include <cstring>

#include "core/byteorder.hpp"
#include "corr/loaders.hpp"
#include "corr/table.hpp"
#include "corr/writers.hpp"

namespace vexo {
namespace {

// The deltas apply to the neutral grid; it is computed here rather than
// read back from the table, which gives the same values.
uint32_t subtract_f64_pairs(ByteSpan file, size_t offset, double sx, double sy, CorrTable &table) {
    if (file.size < offset || file.size - offset < size_t{16} * kCorrCells)
        return VEXO_ERROR_READ_FILE;
    const uint8_t *p = file.data + offset;
    const NeutralLines neutral;
    for (int row = 0; row < kCorrSide; ++row) {
        for (int column = 0; column < kCorrSide; ++column, p += 16) {
            set_cell_xyz(corr_cell(table, row, column), neutral[column] - load_le_f64(p) * sx,
                         neutral[row] - load_le_f64(p + 8) * sy, 0.0);
        }
    }
    return VEXO_OK;
}

uint32_t subtract_i32_pairs(ByteSpan file, size_t offset, CorrTable &table) {
    if (file.size < offset || file.size - offset < size_t{8} * kCorrCells)
        return VEXO_ERROR_READ_FILE;
    const uint8_t *p = file.data + offset;
    const NeutralLines neutral;
    for (int row = 0; row < kCorrSide; ++row) {
        for (int column = 0; column < kCorrSide; ++column, p += 8) {
            set_cell_xyz(corr_cell(table, row, column), neutral[column] - load_le_i32(p),
                         neutral[row] - load_le_i32(p + 4), 0.0);
        }
    }
    return VEXO_OK;
}

} // namespace

uint32_t parse_cor(ByteSpan file, CorrTable &table) {
    constexpr size_t kScaledFactorsOffset = 40;
    constexpr size_t kScaledDataOffset = 56;
    constexpr size_t kPlainDataOffset = 519;
    if (starts_with(file, kCorScaledMarker)) {
        if (file.size < kScaledDataOffset) return VEXO_ERROR_READ_FILE;
        const double sx = load_le_f64(file.data + kScaledFactorsOffset);
        const double sy = load_le_f64(file.data + kScaledFactorsOffset + 8);
        return subtract_f64_pairs(file, kScaledDataOffset, sx, sy, table);
    }
    if (starts_with(file, kCorIntegerMarker))
        return subtract_i32_pairs(file, kCorIntegerDataOffset, table);
    return subtract_f64_pairs(file, kPlainDataOffset, 1.0, 1.0, table);
}

} // namespace vexo
