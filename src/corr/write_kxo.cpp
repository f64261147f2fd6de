// SPDX-License-Identifier: MIT
// The library's own table format.  Planes are written column by column
// (entry k is row k mod 65, column k div 65), the order scanner cards load.
#include <vector>

#include "core/byteorder.hpp"
#include "corr/file_io.hpp"
#include "corr/rounding.hpp"
#include "corr/table.hpp"
#include "corr/writers.hpp"

namespace vexo {

int32_t kxo_encode(double coordinate) {
    return round_to_i32((coordinate + kCorrHalfRange) * 30000.0);
}

void encode_kxo(const CorrTable &table, const CorrHead &head, uint8_t *out) {
    // version and header size are always the current ones; the reserved
    // bytes are always 0; tag and value are passed through.
    store_be16(out, 1);
    store_be16(out + 2, static_cast<uint16_t>(kKxoHeaderSize));
    out[4] = head.tag;
    out[5] = out[6] = out[7] = 0;
    store_be32(out + 8, head.value);

    uint8_t *x_plane = out + kKxoHeaderSize;
    uint8_t *y_plane = x_plane + kKxoPlaneBytes;
    uint8_t *z_plane = y_plane + kKxoPlaneBytes;
    size_t k = 0;
    for (int column = 0; column < kCorrSide; ++column) {
        for (int row = 0; row < kCorrSide; ++row, ++k) {
            const GeomPoint &cell = corr_cell(table, row, column);
            store_be32(x_plane + 4 * k, static_cast<uint32_t>(kxo_encode(cell.x)));
            store_be32(y_plane + 4 * k, static_cast<uint32_t>(kxo_encode(cell.y)));
            store_be32(z_plane + 4 * k, static_cast<uint32_t>(kxo_encode(cell.z)));
        }
    }
}

uint32_t save_kxo(const CorrTable &table, const char *path, const CorrHead &head) noexcept {
    uint8_t file[kKxoFileSize];
    encode_kxo(table, head, file);
    return write_whole_file(path, file, sizeof file);
}

} // namespace vexo
