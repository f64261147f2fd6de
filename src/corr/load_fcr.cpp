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
#include "corr/wide_cells.hpp"

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

#ifdef VEXO_WIDE_CELLS
// Node sums of one node row kept in registers: node 0 alone, nodes 1..64
// sixteen to a register.
struct WideSums {
    int32_t first = 0;
    __m512i rest[4];
};

// fold_line sixteen nodes per 512-bit register: nodes 1..48 in three,
// then 49..64 from the line's last 31 columns (a masked load; the missing
// 32nd column reads as 0, so node 64 takes column 127 alone, as it must).
VEXO_WIDE_TARGET inline void fold_line_wide(const uint8_t *line, WideSums &sums) {
    sums.first += load_le_i16(line);
    const __m512i ones = _mm512_set1_epi16(1);
    for (int q = 0; q < 4; ++q) {
        const uint8_t *columns = line + 2 * (32 * q + 1); // column 2n - 1 of node n = 16q + 1
        const __m512i words =
            q < 3 ? _mm512_loadu_si512(columns) : _mm512_maskz_loadu_epi16(0x7FFFFFFF, columns);
        sums.rest[q] = _mm512_add_epi32(sums.rest[q], _mm512_madd_epi16(words, ones));
    }
}

// One row of cells from its fine lines (one or two per plane), the same
// neutral + sum per cell as the portable loop.
VEXO_WIDE_TARGET void fcr_row_wide(CorrTable &table, int row, const NeutralLines &neutral,
                                   const uint8_t *const x_lines[2], const uint8_t *const y_lines[2],
                                   int lines) {
    WideSums x, y;
    for (int q = 0; q < 4; ++q) x.rest[q] = y.rest[q] = _mm512_setzero_si512();
    for (int l = 0; l < lines; ++l) {
        fold_line_wide(x_lines[l], x);
        fold_line_wide(y_lines[l], y);
    }
    set_cell_xyz(corr_cell(table, row, 0), neutral[0] + x.first, neutral[row] + y.first, 0.0);
    const __m512d row_line = _mm512_set1_pd(neutral[row]);
    for (int q = 0; q < 4; ++q) {
        const __m256i x_halves[2] = {_mm512_castsi512_si256(x.rest[q]),
                                     _mm512_extracti64x4_epi64(x.rest[q], 1)};
        const __m256i y_halves[2] = {_mm512_castsi512_si256(y.rest[q]),
                                     _mm512_extracti64x4_epi64(y.rest[q], 1)};
        for (int h = 0; h < 2; ++h) {
            const int column = 1 + 16 * q + 8 * h;
            store_row_cells(table, row, column,
                            _mm512_add_pd(_mm512_loadu_pd(neutral.line + column),
                                          _mm512_cvtepi32_pd(x_halves[h])),
                            _mm512_add_pd(row_line, _mm512_cvtepi32_pd(y_halves[h])),
                            _mm512_setzero_pd());
        }
    }
}
#endif

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
    [[maybe_unused]] const bool wide = wide_cells_available();
    // Cleared once here, then by the cell loop as it takes each sum.
    int32_t sum_x[kCorrSide] = {};
    int32_t sum_y[kCorrSide] = {};
    for (int row = 0; row < kCorrSide; ++row) {
        const uint8_t *x_lines[2], *y_lines[2];
        int lines = 0;
        for (int fine_row : {2 * row - 1, 2 * row}) {
            if (fine_row < 0 || fine_row >= kFineSide) continue;
            x_lines[lines] = x_plane + kLineBytes * static_cast<size_t>(fine_row);
            y_lines[lines++] = y_plane + kLineBytes * static_cast<size_t>(fine_row);
        }
#ifdef VEXO_WIDE_CELLS
        if (wide) {
            fcr_row_wide(table, row, neutral, x_lines, y_lines, lines);
            continue;
        }
#endif
        for (int l = 0; l < lines; ++l) {
            fold_line(x_lines[l], sum_x);
            fold_line(y_lines[l], sum_y);
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
