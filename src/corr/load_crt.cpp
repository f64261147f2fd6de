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
    const size_t complete = file.size > kDataOffset ? (file.size - kDataOffset) / kCellBytes : 0;
    const int cells = complete < size_t{kCorrCells} ? static_cast<int>(complete) : kCorrCells;
    for (int k = 0; k < cells; ++k) {
        const uint8_t *p = file.data + kDataOffset + kCellBytes * static_cast<size_t>(k);
        GeomPoint &cell = table.cell[k];
        cell.y = static_cast<double>(load_le_f32(p)) * 500.0;
        cell.x = static_cast<double>(load_le_f32(p + 4)) * 500.0;
    }
    return cells == kCorrCells ? VEXO_OK : VEXO_ERROR_READ_FILE;
}

} // namespace vexo
