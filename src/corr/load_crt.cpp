// SPDX-License-Identifier: MIT
// ".crt": from offset 2048, per cell row by row four f32 values, of which
// the first is y and the second x, in units of 1/500 output unit.  The
// remaining two belong to the writing software and are skipped.
#include "core/byteorder.hpp"
#include "corr/loaders.hpp"
#include "corr/table.hpp"

namespace vexo {

uint32_t parse_crt(ByteSpan file, CorrTable &table) {
    constexpr size_t kDataOffset = 2048;
    constexpr size_t kCellBytes = 16;
    if (file.size < kDataOffset + kCellBytes * kCorrCells) return VEXO_ERROR_READ_FILE;
    const uint8_t *p = file.data + kDataOffset;
    for (GeomPoint &cell : table.cell) {
        // No focus values in this format: z is the neutral 0.
        set_cell_xyz(cell, static_cast<double>(load_le_f32(p + 4)) * 500.0,
                     static_cast<double>(load_le_f32(p)) * 500.0, 0.0);
        p += kCellBytes;
    }
    return VEXO_OK;
}

} // namespace vexo
