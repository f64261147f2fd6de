// SPDX-License-Identifier: MIT
// ".gcd": per cell, row by row, three i16 values Z, X, Y.  X and Y are
// offsets from a grid of exactly 1024 units (not the 1023.984375 pitch of
// the neutral table): that is the pitch the writing software assumes.
#include "core/byteorder.hpp"
#include "corr/loaders.hpp"
#include "corr/table.hpp"
#include "corr/wide_cells.hpp"

namespace vexo {

namespace {

constexpr size_t kCellBytes = 6;

void gcd_cell(const uint8_t *p, int row, int column, GeomPoint &cell) {
    set_cell_xyz(cell, (column * 1024 + load_le_i16(p + 2)) - kCorrHalfRange,
                 (row * 1024 + load_le_i16(p + 4)) - kCorrHalfRange, load_le_i16(p));
}

#ifdef VEXO_WIDE_CELLS
// Eight cells (48 bytes) at a time: the words are sorted into z, x and y
// lanes, widened with their sign, offset by the grid as integers and
// converted, the same steps as gcd_cell per lane.  Returns the first
// column left for gcd_cell.
VEXO_WIDE_TARGET int gcd_row_wide(const uint8_t *row_bytes, int row, CorrTable &table) {
    const __m512i sort =
        _mm512_setr_epi32(0 | 3 << 16, 6 | 9 << 16, 12 | 15 << 16, 18 | 21 << 16, 1 | 4 << 16,
                          7 | 10 << 16, 13 | 16 << 16, 19 | 22 << 16, 2 | 5 << 16, 8 | 11 << 16,
                          14 | 17 << 16, 20 | 23 << 16, 0, 0, 0, 0);
    const __m256i steps = _mm256_setr_epi32(0, 1024, 2048, 3072, 4096, 5120, 6144, 7168);
    const __m512d half_range = _mm512_set1_pd(kCorrHalfRange);
    const __m256i row_offset = _mm256_set1_epi32(row * 1024);
    int column = 0;
    for (; column + kWideCells <= kCorrSide; column += kWideCells) {
        const uint8_t *p = row_bytes + kCellBytes * static_cast<size_t>(column);
        const __m512i words = _mm512_inserti64x4(
            _mm512_castsi256_si512(_mm256_loadu_si256(reinterpret_cast<const __m256i *>(p))),
            _mm256_castsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i *>(p + 32))), 1);
        const __m512i sorted = _mm512_permutexvar_epi16(sort, words);
        const __m512i zx = _mm512_cvtepi16_epi32(_mm512_castsi512_si256(sorted));
        const __m256i y_words =
            _mm256_cvtepi16_epi32(_mm256_castsi256_si128(_mm512_extracti64x4_epi64(sorted, 1)));
        const __m256i x_ints =
            _mm256_add_epi32(_mm256_add_epi32(_mm256_set1_epi32(column * 1024), steps),
                             _mm512_extracti64x4_epi64(zx, 1));
        const __m256i y_ints = _mm256_add_epi32(row_offset, y_words);
        store_row_cells(table, row, column, _mm512_sub_pd(_mm512_cvtepi32_pd(x_ints), half_range),
                        _mm512_sub_pd(_mm512_cvtepi32_pd(y_ints), half_range),
                        _mm512_cvtepi32_pd(_mm512_castsi512_si256(zx)));
    }
    return column;
}
#endif

} // namespace

uint32_t parse_gcd(ByteSpan file, CorrTable &table) {
    if (file.size < kCellBytes * kCorrCells) return VEXO_ERROR_READ_FILE;
    [[maybe_unused]] const bool wide = wide_cells_available();
    for (int row = 0; row < kCorrSide; ++row) {
        const uint8_t *row_bytes = file.data + kCellBytes * kCorrSide * static_cast<size_t>(row);
        int column = 0;
#ifdef VEXO_WIDE_CELLS
        if (wide) column = gcd_row_wide(row_bytes, row, table);
#endif
        for (; column < kCorrSide; ++column)
            gcd_cell(row_bytes + kCellBytes * static_cast<size_t>(column), row, column,
                     corr_cell(table, row, column));
    }
    return VEXO_OK;
}

} // namespace vexo
