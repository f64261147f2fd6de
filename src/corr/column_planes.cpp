// SPDX-License-Identifier: MIT
#include "corr/column_planes.hpp"

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include "core/byteorder.hpp"
#include "corr/table.hpp"
#include "corr/writers.hpp"

#include "corr/wide_cells.hpp"

namespace vexo {
namespace {

double kxo_value(const uint8_t *p) {
    return load_be_i32(p) / 30000.0 - kCorrHalfRange;
}

[[maybe_unused]] void kxo_cell(const uint8_t *x_plane, size_t k, GeomPoint &cell) {
    set_cell_xyz(cell, kxo_value(x_plane + 4 * k), kxo_value(x_plane + kKxoPlaneBytes + 4 * k),
                 kxo_value(x_plane + 2 * kKxoPlaneBytes + 4 * k));
}

void word_cell(const uint8_t *y_plane, const uint8_t *x_plane, const uint8_t *z_plane, size_t k,
               GeomPoint &cell) {
    const unsigned z_word = z_plane ? load_le16(z_plane + 2 * k) : 0u;
    set_cell_xyz(cell, load_le16(x_plane + 2 * k) - kCorrHalfRange,
                 load_le16(y_plane + 2 * k) - kCorrHalfRange, z_word - kCorrHalfRange);
}

// Index of (row, column) in a plane.
size_t plane_index(int row, int column) {
    return static_cast<size_t>(column) * kCorrSide + static_cast<size_t>(row);
}

} // namespace

// One plane into one coordinate of every cell, rows outer so the table is
// written in memory order.  The divisions dominate; SSE2 does two at once.
void decode_kxo_plane(const uint8_t *plane, CorrTable &table, double GeomPoint::*coordinate) {
    constexpr size_t kColumnStride = 4 * kCorrSide;
    for (int row = 0; row < kCorrSide; ++row) {
        const uint8_t *p = plane + 4 * static_cast<size_t>(row); // column 0
        int column = 0;
#ifdef __SSE2__
        const __m128d divisor = _mm_set1_pd(30000.0);
        const __m128d half_range = _mm_set1_pd(kCorrHalfRange);
        for (; column + 1 < kCorrSide; column += 2, p += 2 * kColumnStride) {
            const __m128d stored = _mm_set_pd(load_be_i32(p + kColumnStride), load_be_i32(p));
            const __m128d value = _mm_sub_pd(_mm_div_pd(stored, divisor), half_range);
            _mm_storel_pd(&(corr_cell(table, row, column).*coordinate), value);
            _mm_storeh_pd(&(corr_cell(table, row, column + 1).*coordinate), value);
        }
#endif
        for (; column < kCorrSide; ++column, p += kColumnStride)
            corr_cell(table, row, column).*coordinate = kxo_value(p);
    }
}

void decode_kxo_planes_portable(const uint8_t *x_plane, CorrTable &table) {
    decode_kxo_plane(x_plane, table, &GeomPoint::x);
    decode_kxo_plane(x_plane + kKxoPlaneBytes, table, &GeomPoint::y);
    decode_kxo_plane(x_plane + 2 * kKxoPlaneBytes, table, &GeomPoint::z);
}

void decode_word_planes_portable(const uint8_t *y_plane, const uint8_t *x_plane,
                                 const uint8_t *z_plane, CorrTable &table) {
    for (int row = 0; row < kCorrSide; ++row)
        for (int column = 0; column < kCorrSide; ++column)
            word_cell(y_plane, x_plane, z_plane, plane_index(row, column),
                      corr_cell(table, row, column));
}

#ifdef VEXO_WIDE_CELLS

namespace {

VEXO_WIDE_TARGET inline __m512d kxo_lanes(const uint8_t *p) {
    const __m256i swap = _mm256_setr_epi8(3, 2, 1, 0, 7, 6, 5, 4, 11, 10, 9, 8, 15, 14, 13, 12, 3,
                                          2, 1, 0, 7, 6, 5, 4, 11, 10, 9, 8, 15, 14, 13, 12);
    const __m256i stored =
        _mm256_shuffle_epi8(_mm256_loadu_si256(reinterpret_cast<const __m256i *>(p)), swap);
    return _mm512_sub_pd(_mm512_div_pd(_mm512_cvtepi32_pd(stored), _mm512_set1_pd(30000.0)),
                         _mm512_set1_pd(kCorrHalfRange));
}

VEXO_WIDE_TARGET inline __m512d word_lanes(const uint8_t *p) {
    const __m256i words =
        _mm256_cvtepu16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i *>(p)));
    return _mm512_sub_pd(_mm512_cvtepi32_pd(words), _mm512_set1_pd(kCorrHalfRange));
}

VEXO_WIDE_TARGET void kxo_wide(const uint8_t *x_plane, CorrTable &table) {
    for (int column = 0; column < kCorrSide; ++column) {
        int row = 0;
        for (; row + kWideCells <= kCorrSide; row += kWideCells) {
            const uint8_t *p = x_plane + 4 * plane_index(row, column);
            store_column_cells(table, row, column, kxo_lanes(p), kxo_lanes(p + kKxoPlaneBytes),
                               kxo_lanes(p + 2 * kKxoPlaneBytes));
        }
        for (; row < kCorrSide; ++row)
            kxo_cell(x_plane, plane_index(row, column), corr_cell(table, row, column));
    }
}

VEXO_WIDE_TARGET void words_wide(const uint8_t *y_plane, const uint8_t *x_plane,
                                 const uint8_t *z_plane, CorrTable &table) {
    const __m512d no_z = _mm512_set1_pd(0.0 - kCorrHalfRange);
    for (int column = 0; column < kCorrSide; ++column) {
        int row = 0;
        for (; row + kWideCells <= kCorrSide; row += kWideCells) {
            const size_t at = 2 * plane_index(row, column);
            store_column_cells(table, row, column, word_lanes(x_plane + at),
                               word_lanes(y_plane + at), z_plane ? word_lanes(z_plane + at) : no_z);
        }
        for (; row < kCorrSide; ++row)
            word_cell(y_plane, x_plane, z_plane, plane_index(row, column),
                      corr_cell(table, row, column));
    }
}

} // namespace

void decode_kxo_planes_wide(const uint8_t *x_plane, CorrTable &table) {
    kxo_wide(x_plane, table);
}

void decode_word_planes_wide(const uint8_t *y_plane, const uint8_t *x_plane, const uint8_t *z_plane,
                             CorrTable &table) {
    words_wide(y_plane, x_plane, z_plane, table);
}

#else

void decode_kxo_planes_wide(const uint8_t *x_plane, CorrTable &table) {
    decode_kxo_planes_portable(x_plane, table);
}

void decode_word_planes_wide(const uint8_t *y_plane, const uint8_t *x_plane, const uint8_t *z_plane,
                             CorrTable &table) {
    decode_word_planes_portable(y_plane, x_plane, z_plane, table);
}

#endif

} // namespace vexo
