// SPDX-License-Identifier: MIT
// ".fcr": the last 65,536 bytes of the file hold two 128x128 planes of i16
// deltas, X then Y, each row by row.  The 128-grid is folded onto the
// 65-grid two lines per node: line i reaches node (i + 1) / 2, so the outer
// nodes take one line each and the centre node 32 takes both lines beside
// the centre (63 and 64).  Every delta reaching a node is added to it.
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

// A line of zero deltas, read as the second fine line of the two node
// rows that reach only one (rows 0 and 64), so that every row sums two.
alignas(64) const uint8_t kZeroLine[2 * kFineSide] = {};

// The delta in column `column` of a fine line.
int32_t delta(const uint8_t *line, int column) {
    return load_le_i16(line + 2 * column);
}

// The sums of a node row from its two fine lines: node 0 takes column 0,
// node n columns 2n - 1 and 2n, node 64 column 127.  The integer sums are
// exact, so summing pairs first changes nothing.
void fold_lines(const uint8_t *first, const uint8_t *second, int32_t *sums) {
    sums[0] = delta(first, 0) + delta(second, 0);
    int node = 1;
#ifdef __SSE2__
    // Multiplying by ones and adding neighbours sums each column pair
    // into one 32-bit lane: four nodes per 16 bytes.
    const __m128i ones = _mm_set1_epi16(1);
    for (; node + 4 <= kCorrSide - 1; node += 4) {
        const size_t at = 2 * (2 * node - 1);
        const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i *>(first + at));
        const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i *>(second + at));
        _mm_storeu_si128(reinterpret_cast<__m128i *>(sums + node),
                         _mm_add_epi32(_mm_madd_epi16(a, ones), _mm_madd_epi16(b, ones)));
    }
#endif
    for (; node < kCorrSide - 1; ++node)
        sums[node] = (delta(first, 2 * node - 1) + delta(first, 2 * node)) +
                     (delta(second, 2 * node - 1) + delta(second, 2 * node));
    sums[kCorrSide - 1] = delta(first, kFineSide - 1) + delta(second, kFineSide - 1);
}

// One row of cells, each its neutral value plus its sums; SSE2 converts
// and adds two cells at once, the same IEEE operations per lane.
void write_row(CorrTable &table, int row, const NeutralLines &neutral, const int32_t *sum_x,
               const int32_t *sum_y) {
    int column = 0;
#ifdef __SSE2__
    const __m128d row_line = _mm_set1_pd(neutral[row]);
    for (; column + 2 <= kCorrSide; column += 2) {
        const __m128d x = _mm_add_pd(
            _mm_loadu_pd(neutral.line + column),
            _mm_cvtepi32_pd(_mm_loadl_epi64(reinterpret_cast<const __m128i *>(sum_x + column))));
        const __m128d y = _mm_add_pd(
            row_line,
            _mm_cvtepi32_pd(_mm_loadl_epi64(reinterpret_cast<const __m128i *>(sum_y + column))));
        set_cell_xyz(corr_cell(table, row, column), _mm_unpacklo_pd(x, y), 0.0);
        set_cell_xyz(corr_cell(table, row, column + 1), _mm_unpackhi_pd(x, y), 0.0);
    }
#endif
    for (; column < kCorrSide; ++column)
        set_cell_xyz(corr_cell(table, row, column), neutral[column] + sum_x[column],
                     neutral[row] + sum_y[column], 0.0);
}

#ifdef VEXO_WIDE_CELLS
// The column pairs of nodes 16q + 1 .. 16q + 16 of one line (columns
// 32q + 1 .. 32q + 32), summed one pair per 32-bit lane.  For q = 3 the 32nd column lies past
// the line: a masked load reads it as 0, so node 64 takes column 127 alone.
template <int Q> VEXO_WIDE_TARGET inline __m512i column_pairs(const uint8_t *line) {
    const uint8_t *columns = line + 2 * (32 * Q + 1);
    const __m512i words =
        Q < 3 ? _mm512_loadu_si512(columns) : _mm512_maskz_loadu_epi16(0x7FFFFFFF, columns);
    return _mm512_madd_epi16(words, _mm512_set1_epi16(1));
}

// Cells 16q + 1 .. 16q + 16 of a row from its two fine lines per plane,
// folded and written at once: the sums never leave their registers.
template <int Q>
VEXO_WIDE_TARGET inline void fcr_cells_wide(CorrTable &table, int row, const NeutralLines &neutral,
                                            const uint8_t *const x_lines[2],
                                            const uint8_t *const y_lines[2]) {
    const __m512i x = _mm512_add_epi32(column_pairs<Q>(x_lines[0]), column_pairs<Q>(x_lines[1]));
    const __m512i y = _mm512_add_epi32(column_pairs<Q>(y_lines[0]), column_pairs<Q>(y_lines[1]));
    const __m512d row_line = _mm512_set1_pd(neutral[row]);
    const int column = 1 + 16 * Q;
    store_row_cells(table, row, column,
                    _mm512_add_pd(_mm512_loadu_pd(neutral.line + column),
                                  _mm512_cvtepi32_pd(_mm512_castsi512_si256(x))),
                    _mm512_add_pd(row_line, _mm512_cvtepi32_pd(_mm512_castsi512_si256(y))),
                    _mm512_setzero_pd());
    store_row_cells(table, row, column + 8,
                    _mm512_add_pd(_mm512_loadu_pd(neutral.line + column + 8),
                                  _mm512_cvtepi32_pd(_mm512_extracti64x4_epi64(x, 1))),
                    _mm512_add_pd(row_line, _mm512_cvtepi32_pd(_mm512_extracti64x4_epi64(y, 1))),
                    _mm512_setzero_pd());
}

// One row of cells from its two fine lines per plane, the same neutral +
// sum per cell as the portable loop.
VEXO_WIDE_TARGET void fcr_row_wide(CorrTable &table, int row, const NeutralLines &neutral,
                                   const uint8_t *const x_lines[2],
                                   const uint8_t *const y_lines[2]) {
    set_cell_xyz(corr_cell(table, row, 0),
                 neutral[0] + (delta(x_lines[0], 0) + delta(x_lines[1], 0)),
                 neutral[row] + (delta(y_lines[0], 0) + delta(y_lines[1], 0)), 0.0);
    fcr_cells_wide<0>(table, row, neutral, x_lines, y_lines);
    fcr_cells_wide<1>(table, row, neutral, x_lines, y_lines);
    fcr_cells_wide<2>(table, row, neutral, x_lines, y_lines);
    fcr_cells_wide<3>(table, row, neutral, x_lines, y_lines);
}
#endif

// The fine lines of node row `row` in one plane: 2 row - 1 and 2 row, the
// zero line standing in for the one missing at either edge.
void node_row_lines(const uint8_t *plane, int row, const uint8_t *lines[2]) {
    constexpr size_t kLineBytes = 2 * kFineSide;
    const int fine_rows[2] = {2 * row - 1, 2 * row};
    for (int l = 0; l < 2; ++l)
        lines[l] = fine_rows[l] < 0 || fine_rows[l] >= kFineSide
                       ? kZeroLine
                       : plane + kLineBytes * static_cast<size_t>(fine_rows[l]);
}

} // namespace

uint32_t parse_fcr(ByteSpan file, CorrTable &table) {
    if (file.size < kBlockBytes) return VEXO_ERROR_READ_FILE;
    const uint8_t *x_plane = file.data + (file.size - kBlockBytes);
    const uint8_t *y_plane = x_plane + kPlaneBytes;
    // The deltas reaching a node are summed as integers (exact, far inside
    // 32 bits) and added to its neutral value once: every intermediate sum
    // is exact in a double, so this equals adding them one by one.
    const NeutralLines neutral;
    [[maybe_unused]] const bool wide = wide_cells_available();
    for (int row = 0; row < kCorrSide; ++row) {
        const uint8_t *x_lines[2], *y_lines[2];
        node_row_lines(x_plane, row, x_lines);
        node_row_lines(y_plane, row, y_lines);
#ifdef VEXO_WIDE_CELLS
        if (wide) {
            fcr_row_wide(table, row, neutral, x_lines, y_lines);
            continue;
        }
#endif
        int32_t sum_x[kCorrSide], sum_y[kCorrSide];
        fold_lines(x_lines[0], x_lines[1], sum_x);
        fold_lines(y_lines[0], y_lines[1], sum_y);
        write_row(table, row, neutral, sum_x, sum_y);
    }
    return VEXO_OK;
}

} // namespace vexo
