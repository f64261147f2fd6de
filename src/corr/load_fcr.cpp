// ".fcr": the last 65,536 bytes of the file hold two 128x128 planes of i16
// deltas, X then Y, each row by row.  The 128-grid is folded onto the
// 65-grid two lines per node: line i reaches node (i + 1) / 2, so the outer
// nodes take one line each and the centre node 32 takes both lines beside
// the centre (63 and 64).  Every delta reaching a node is added to it.
#include "core/byteorder.hpp"
#include "corr/loaders.hpp"
#include "corr/table.hpp"

namespace vexo {
namespace {

constexpr int kFineSide = 128;
constexpr size_t kPlaneBytes = size_t{kFineSide} * kFineSide * 2;
constexpr size_t kBlockBytes = 2 * kPlaneBytes;

// Node rows reach back to their fine lines as 2n - 1 and 2n.
int node_of_line(int line) { return (line + 1) / 2; }

} // namespace

uint32_t parse_fcr(ByteSpan file, CorrTable &table) {
    if (file.size < kBlockBytes)
        return VEXO_ERROR_READ_FILE;
    const uint8_t *x_plane = file.data + (file.size - kBlockBytes);
    const uint8_t *y_plane = x_plane + kPlaneBytes;
    // The deltas of one node row are summed as integers first (exact, far
    // inside 32 bits) and added to the table once per node.
    for (int node_row = 0; node_row < kCorrSide; ++node_row) {
        int32_t sum_x[kCorrSide] = {};
        int32_t sum_y[kCorrSide] = {};
        for (int fine_row = 2 * node_row - 1; fine_row <= 2 * node_row; ++fine_row) {
            if (fine_row < 0 || fine_row >= kFineSide)
                continue;
            const size_t line = static_cast<size_t>(fine_row) * kFineSide;
            for (int fine_column = 0; fine_column < kFineSide; ++fine_column) {
                const size_t k = line + static_cast<size_t>(fine_column);
                sum_x[node_of_line(fine_column)] += load_le_i16(x_plane + 2 * k);
                sum_y[node_of_line(fine_column)] += load_le_i16(y_plane + 2 * k);
            }
        }
        for (int column = 0; column < kCorrSide; ++column) {
            GeomPoint &cell = corr_cell(table, node_row, column);
            cell.x += sum_x[column];
            cell.y += sum_y[column];
            cell.z = 0.0;
        }
    }
    return VEXO_OK;
}

} // namespace vexo
