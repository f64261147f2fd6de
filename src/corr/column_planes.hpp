// SPDX-License-Identifier: MIT
// Planes stored column by column (kxo, ucf, ctb): each plane holds one
// coordinate of all 4225 cells, column 0 rows 0..64 first.  Decoded either
// portably, or eight rows of a column at a time on 512-bit registers where
// the processor has them; both give the same doubles, because the wide
// path does the same IEEE operations lane by lane (exact conversions, one
// division or subtraction each, no contraction).
#pragma once

#include <cstddef>
#include <cstdint>

#include "corr/wide_cells.hpp"

namespace vexo {

// kxo: three planes of big-endian i32, x then y then z; value / 30000 less
// the half range.
void decode_kxo_planes_portable(const uint8_t *x_plane, CorrTable &table);
void decode_kxo_planes_wide(const uint8_t *x_plane, CorrTable &table);

// ucf and ctb: planes of little-endian u16 words, y then x (then z, or
// none: word 0); word less the half range.
void decode_word_planes_portable(const uint8_t *y_plane, const uint8_t *x_plane,
                                 const uint8_t *z_plane, CorrTable &table);
void decode_word_planes_wide(const uint8_t *y_plane, const uint8_t *x_plane, const uint8_t *z_plane,
                             CorrTable &table);

} // namespace vexo
