// Removal of points that carry the processed mark.
#pragma once

#include <cstdint>

#include "vexo.h"

namespace vexo {

// Stable in-place compaction: every point flagged VEXO_POINT_PROCESSED goes,
// the rest move down as whole records.  Returns the number kept.
uint32_t remove_processed(GeomPoint *points, uint32_t count) noexcept;

} // namespace vexo
