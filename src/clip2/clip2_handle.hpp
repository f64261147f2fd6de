// SPDX-License-Identifier: MIT
// The handle behind the C interface's opaque Clip2Handle and its two
// operations.  Paths live on the same grid, in the same PathSet, as the
// first clip family's, so conversion and heights are shared; only the
// geometry runs through the integer scan-line engine.
#pragma once

#include <cstdint>

#include "clip/path_set.hpp"

struct Clip2Handle {
    vexo::PathSet subject; // always holds at least one (possibly empty) path
    vexo::PathSet result;  // empty until an operation fills it
};

namespace vexo {

// Largest |x| or |y| on the grid the engine handles: its scan-line formation
// overflows 32-bit sums at 2^30 (measured by the limit tests).
constexpr ClipperLib::cInt kClip2GridLimit = VEXO_CLIP2_GRID_LIMIT;

// Largest |x| or |y| of the paths (0 when there are none).
ClipperLib::cInt largest_coordinate(const ClipperLib::Paths &paths);

// Union (VEXO_CLIP_UNION) or difference (VEXO_CLIP_DIFFERENCE) of the
// subject with the paths of `points`, both even-odd.
uint32_t clip2_boolean(Clip2Handle *clip, const GeomPoint *points, uint32_t count, uint32_t mode);

// Offsets the subject's even-odd region by `distance` with the join chosen
// by mode.
uint32_t clip2_outline(Clip2Handle *clip, uint32_t mode, double distance);

} // namespace vexo
