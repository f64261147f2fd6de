// SPDX-License-Identifier: MIT
// ".fcr": the last 65,536 bytes of the file hold two 128x128 planes of i16
// deltas, X then Y, each row by row.  The 128-grid is folded onto the
// 65-grid two lines per node: line i reaches node (i + 1) / 2, so the outer
// nodes take one line each and the centre node 32 takes both lines beside
// the centre (63 and 64).  Every delta reaching a node is added to it.
#include <initializer_list>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include "core/byteorder.hpp"
#include "corr/loaders.hpp"
#include "corr/table.hpp"

namespace vexo {
namespace {

constexpr int kFineSide = 128;
constexpr size_t kPlaneBytes = size_t{kFineSide} * kFineSide * 2;
constexpr size_t kBlockBytes = 2 * kPlaneBytes;

// Adds one fine line's deltas onto the 65 nodes of a node row: node 0
// takes column 0, node n columns 2n - 1 and 2n, node 64 column 127.  The
// integer sums are exact, so summing pairs first changes nothing.
void fold_line(const uint8_t *line, int32_t *sums) {
    sums[0] += load_le_i16(line);
    int node = 1;
#ifdef __SSE2__
    // Multiplying by ones and adding neighbours sums each column pair
    // into one 32-bit lane: four nodes per 16 bytes.
    const __m128i ones = _mm_set1_epi16(1);
    for (; node + 4 <= kCorrSide - 1; node += 4) {
        const __m128i columns =
            _mm_loadu_si128(reinterpret_cast<const __m128i *>(line + 2 * (2 * node - 1)));
        auto *at = reinterpret_cast<__m128i *>(sums + node);
        _mm_storeu_si128(at, _mm_add_epi32(_mm_loadu_si128(at), _mm_madd_epi16(columns, ones)));
    }
#endif
    for (; node < kCorrSide - 1; ++node)
        sums[node] += load_le_i16(line + 2 * (2 * node - 1)) + load_le_i16(line + 2 * (2 * node));
    sums[kCorrSide - 1] += load_le_i16(line + 2 * (kFineSide - 1));
}

} // namespace

uint32_t parse_fcr(ByteSpan file, CorrTable &table) {
    if (file.size < kBlockBytes) return VEXO_ERROR_READ_FILE;
    const uint8_t *x_plane = file.data + (file.size - kBlockBytes);
    const uint8_t *y_plane = x_plane + kPlaneBytes;
    constexpr size_t kLineBytes = 2 * kFineSide;
    // The deltas reaching a node are summed as integers (exact, far inside
    // 32 bits) and added to its neutral value once: every intermediate sum
    // is exact in a double, so this equals adding them one by one.
    const NeutralLines neutral;
    // Cleared once here, then by the cell loop as it takes each sum.
    int32_t sum_x[kCorrSide] = {};
    int32_t sum_y[kCorrSide] = {};
    for (int row = 0; row < kCorrSide; ++row) {
        for (int fine_row : {2 * row - 1, 2 * row}) {
            if (fine_row < 0 || fine_row >= kFineSide) continue;
            fold_line(x_plane + kLineBytes * static_cast<size_t>(fine_row), sum_x);
            fold_line(y_plane + kLineBytes * static_cast<size_t>(fine_row), sum_y);
        }
        for (int column = 0; column < kCorrSide; ++column) {
            set_cell_xyz(corr_cell(table, row, column), neutral[column] + sum_x[column],
                         neutral[row] + sum_y[column], 0.0);
            sum_x[column] = 0;
            sum_y[column] = 0;
        }
    }
    return VEXO_OK;
}

} // namespace vexo
