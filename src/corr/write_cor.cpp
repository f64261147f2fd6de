// SPDX-License-Identifier: MIT
// "JCZ_COR_2_1" ".cor" tables, the layout EZCAD-class marking software
// writes: integer deltas that the loader subtracts from the neutral grid.
#include <cstring>

#include "core/byteorder.hpp"
#include "corr/file_io.hpp"
#include "corr/rounding.hpp"
#include "corr/table.hpp"
#include "corr/writers.hpp"

namespace vexo {

void encode_cor21(const CorrTable &table, double scale, uint8_t *out) {
    std::memset(out, 0, kCor21FileSize);
    std::memcpy(out, kCor21Label, kCor21LabelBytes);
    store_le_f64(out + kCor21ScaleOffset, scale);
    uint8_t *pair = out + kCor21DataOffset;
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
    uint8_t file[kCor21FileSize];
    encode_cor21(table, scale, file);
    return write_whole_file(path, file, sizeof file);
}

} // namespace vexo
