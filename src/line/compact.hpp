// SPDX-License-Identifier: MIT
// Removal of points that carry the processed mark.
#pragma once

#include <cstdint>

#include "vexo.h"

namespace vexo {

// Stable in-place compaction: every point flagged VEXO_POINT_PROCESSED goes,
// the rest move down as whole records.  Returns the number kept.
uint32_t remove_processed(GeomPoint *points, uint32_t count) noexcept;

// The same compaction from src[0..n) to dest, for callers that compact an
// array piece by piece.  dest may be src or lie before it in the same
// array.  Returns the number of points written.
uint32_t move_unprocessed(GeomPoint *dest, const GeomPoint *src, uint32_t n) noexcept;

} // namespace vexo
