// ".gcd": per cell, row by row, three i16 values Z, X, Y.  X and Y are
// offsets from a grid of exactly 1024 units (not the 1023.984375 pitch of
// the neutral table): that is the pitch the writing software assumes.
#include "core/byteorder.hpp"
#include "corr/loaders.hpp"
#include "corr/table.hpp"

namespace vexo {

uint32_t parse_gcd(ByteSpan file, CorrTable &table) {
    constexpr size_t kCellBytes = 6;
    const size_t complete = file.size / kCellBytes;
    const int cells = complete < size_t{kCorrCells} ? static_cast<int>(complete) : kCorrCells;
    for (int k = 0; k < cells; ++k) {
        const uint8_t *p = file.data + kCellBytes * static_cast<size_t>(k);
        const int row = k / kCorrSide;
        const int column = k % kCorrSide;
        GeomPoint &cell = corr_cell(table, row, column);
        cell.z = load_le_i16(p);
        cell.x = (column * 1024 + load_le_i16(p + 2)) - kCorrHalfRange;
        cell.y = (row * 1024 + load_le_i16(p + 4)) - kCorrHalfRange;
    }
    return cells == kCorrCells ? VEXO_OK : VEXO_ERROR_READ_FILE;
}

} // namespace vexo
