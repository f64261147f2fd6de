// SPDX-License-Identifier: MIT
// Removal of points that carry the processed mark.
#pragma once

#include <cstdint>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include "vexo.h"

namespace vexo {

// One record moved as two 16-byte halves where SSE2 has them, rather than
// field by field (four loads and four stores).  to may equal &from.
inline void copy_record(GeomPoint *to, const GeomPoint &from) noexcept {
#ifdef __SSE2__
    const auto *halves = reinterpret_cast<const __m128i *>(&from);
    const __m128i low = _mm_loadu_si128(halves);
    const __m128i high = _mm_loadu_si128(halves + 1);
    _mm_storeu_si128(reinterpret_cast<__m128i *>(to), low);
    _mm_storeu_si128(reinterpret_cast<__m128i *>(to) + 1, high);
#else
    *to = from;
#endif
}

// Stable in-place compaction: every point flagged VEXO_POINT_PROCESSED goes,
// the rest move down as whole records.  Returns the number kept.
uint32_t remove_processed(GeomPoint *points, uint32_t count) noexcept;

// The same compaction from src[0..n) to dest, for callers that compact an
// array piece by piece.  dest may be src or lie before it in the same
// array.  Returns the number of points written.
uint32_t move_unprocessed(GeomPoint *dest, const GeomPoint *src, uint32_t n) noexcept;

} // namespace vexo
