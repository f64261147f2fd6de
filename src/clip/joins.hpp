// SPDX-License-Identifier: MIT
// Join kinds and limits of an outline, shared by every outline the library
// builds so that the clip families offset alike.
#pragma once

#include <cstdint>

#include <polyclipping/clipper.hpp>

namespace vexo {

// A miter longer than this many offset widths is squared off instead.
constexpr double kMiterLimit = 2.0;
// Largest gap, in grid units, between a round join and its true arc.
constexpr double kArcTolerance = 0.25;

// The join picked by the VEXO_CLIP_JOIN_* bits, tried miter, round, square;
// false when none is set.
bool choose_join(uint32_t mode, ClipperLib::JoinType *join);

} // namespace vexo
