// SPDX-License-Identifier: MIT
// Writing eight table cells at once from 512-bit registers holding their
// x, y and z: the loaders' wide paths, which run only where
// wide_cells_available().  Cells are 32 bytes (x, y, z, then the flags and
// a reserved word that a load must keep), so x, y and z of two cells are
// brought together in one register and written with masked stores that
// leave the last eight bytes of each cell alone.
#pragma once

#include "corr/table.hpp"

#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))
#include <immintrin.h>
#define VEXO_WIDE_CELLS 1
#endif

namespace vexo {

// True when this processor has the 512-bit registers and byte shuffles
// the wide paths use (checked once), unless allow_wide_cells(false) was
// called: tests run every loader both ways.
bool wide_cells_available();
void allow_wide_cells(bool allowed);

#ifdef VEXO_WIDE_CELLS

// GCC 12's 512-bit conversion intrinsics start from an undefined register
// on purpose, which its own uninitialised-use warning then reports.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#define VEXO_WIDE_TARGET __attribute__((target("avx2,avx512f,avx512vl,avx512bw")))
constexpr int kWideCells = 8;

// (x, y, z, -) of cells 2p and 2p + 1 from x, y and z of eight cells.
// Spelled out per p: an array of registers is kept on the stack by GCC.
template <int P> VEXO_WIDE_TARGET inline __m512d cell_pair(__m512d x, __m512d y, __m512d z) {
    constexpr int c = 2 * P; // first cell of the pair
    const __m512d xy = _mm512_permutex2var_pd(
        x, _mm512_setr_epi64(c, 8 + c, c + 1, 9 + c, 0, 0, 0, 0), y); // x, y, x', y'
    return _mm512_permutex2var_pd(xy, _mm512_setr_epi64(0, 1, 8 + c, 0, 2, 3, 9 + c, 0), z);
}

template <int P>
VEXO_WIDE_TARGET inline void store_column_pair(CorrTable &table, int row, int column, __m512d x,
                                               __m512d y, __m512d z) {
    const __m512d pair = cell_pair<P>(x, y, z);
    _mm256_mask_storeu_pd(&corr_cell(table, row + 2 * P, column).x, 0x7,
                          _mm512_castpd512_pd256(pair));
    _mm256_mask_storeu_pd(&corr_cell(table, row + 2 * P + 1, column).x, 0x7,
                          _mm512_extractf64x4_pd(pair, 1));
}

// Cells (row + j, column), j = 0..7: one masked 256-bit store per cell.
VEXO_WIDE_TARGET inline void store_column_cells(CorrTable &table, int row, int column, __m512d x,
                                                __m512d y, __m512d z) {
    store_column_pair<0>(table, row, column, x, y, z);
    store_column_pair<1>(table, row, column, x, y, z);
    store_column_pair<2>(table, row, column, x, y, z);
    store_column_pair<3>(table, row, column, x, y, z);
}

// Cells (row, column + j), j = 0..7, which lie side by side: one masked
// 512-bit store per two cells.
VEXO_WIDE_TARGET inline void store_row_cells(CorrTable &table, int row, int column, __m512d x,
                                             __m512d y, __m512d z) {
    GeomPoint *cells = &corr_cell(table, row, column);
    _mm512_mask_storeu_pd(&cells[0].x, 0x77, cell_pair<0>(x, y, z));
    _mm512_mask_storeu_pd(&cells[2].x, 0x77, cell_pair<1>(x, y, z));
    _mm512_mask_storeu_pd(&cells[4].x, 0x77, cell_pair<2>(x, y, z));
    _mm512_mask_storeu_pd(&cells[6].x, 0x77, cell_pair<3>(x, y, z));
}

#endif

} // namespace vexo
