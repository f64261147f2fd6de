// SPDX-License-Identifier: MIT
// The clip handle behind the C interface's opaque ClipHandle, and the
// operations on it.  Each operation returns a status and never changes the
// subject when it fails; the result may be left empty.
#pragma once

#include <cstdint>

#include "clip/path_set.hpp"

struct ClipHandle {
    vexo::PathSet subject; // always holds at least one (possibly empty) path
    vexo::PathSet result;  // empty until an operation fills it
};

namespace vexo {

// Clipper's own guard: offsets nearer zero than this copy the contours.
constexpr double kOffsetZero = 1.0e-20;

// Largest |distance| (caller units) an outline accepts.  A round join takes
// about pi*sqrt(2*|distance*1000|) points per full turn (1.4e7 here); much
// further and one corner alone would exhaust memory or time.
constexpr double kMaxOutlineDistance = 1.0e10;

// Union (mode & VEXO_CLIP_UNION) or difference (mode & VEXO_CLIP_DIFFERENCE)
// of the subject with the paths of `points`, even-odd filling.
uint32_t clip_boolean(ClipHandle *clip, const GeomPoint *points, uint32_t count, uint32_t mode);

// Offsets every subject path by `distance` with the join chosen by mode.
uint32_t clip_outline(ClipHandle *clip, uint32_t mode, double distance);

} // namespace vexo
