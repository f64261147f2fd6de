// SPDX-License-Identifier: MIT
// ".ctb" tables: 16-bit scanner words, Y plane first, column-major.  The
// format has no Z; it reads back with the cards' z = -32767.5.
#include "core/byteorder.hpp"
#include "corr/file_io.hpp"
#include "corr/rounding.hpp"
#include "corr/table.hpp"
#include "corr/writers.hpp"

namespace vexo {

void encode_ctb(const CorrTable &table, uint8_t *out) {
    uint8_t *y_plane = out;
    uint8_t *x_plane = out + kCtbPlaneBytes;
    size_t k = 0;
    for (int column = 0; column < kCorrSide; ++column) {
        for (int row = 0; row < kCorrSide; ++row, ++k) {
            const GeomPoint &cell = corr_cell(table, row, column);
            store_le16(y_plane + 2 * k, round_to_u16(cell.y + kCorrHalfRange));
            store_le16(x_plane + 2 * k, round_to_u16(cell.x + kCorrHalfRange));
        }
    }
}

uint32_t save_ctb(const CorrTable &table, const char *path) noexcept {
    uint8_t file[kCtbFileSize];
    encode_ctb(table, file);
    return write_whole_file(path, file, sizeof file);
}

} // namespace vexo
