// SPDX-License-Identifier: MIT
// ".cor" tables in the integer-marker layout (kCorIntegerMarker): integer
// deltas that the loader subtracts from the neutral grid.
#include <cstring>

#include "core/byteorder.hpp"
#include "corr/file_io.hpp"
#include "corr/rounding.hpp"
#include "corr/table.hpp"
#include "corr/writers.hpp"

namespace vexo {

void encode_cor21(const CorrTable &table, double scale, uint8_t *out) {
    std::memset(out, 0, kCorIntegerFileSize);
    std::memcpy(out, kCorIntegerMarker, kCorIntegerMarkerBytes);
    store_le_f64(out + kCorIntegerScaleOffset, scale);
    uint8_t *pair = out + kCorIntegerDataOffset;
    for (int row = 0; row < kCorrSide; ++row) {
        for (int column = 0; column < kCorrSide; ++column, pair += 8) {
            const GeomPoint &cell = corr_cell(table, row, column);
            const double dx = neutral_coordinate(column) - cell.x;
            const double dy = neutral_coordinate(row) - cell.y;
            store_le32(pair, static_cast<uint32_t>(round_to_i32(dx)));
            store_le32(pair + 4, static_cast<uint32_t>(round_to_i32(dy)));
        }
    }
    // The trailing four bytes stay zero.
}

uint32_t save_cor21(const CorrTable &table, const char *path, double scale) noexcept {
    uint8_t file[kCorIntegerFileSize];
    encode_cor21(table, scale, file);
    return write_whole_file(path, file, sizeof file);
}

} // namespace vexo
