// SPDX-License-Identifier: MIT
// Path lists on Clipper's 0.001 integer grid, with the z of every vertex kept
// beside them: the Clipper we link has 2D points only, so the heights that a
// 3D build would carry inside its points live in a parallel list here.
#pragma once

#include <cstdint>
#include <vector>

#include <polyclipping/clipper.hpp>

#include "vexo.h"

namespace vexo {

// Grid units per caller unit.
constexpr double kClipScale = 1000.0;

struct PathSet {
    ClipperLib::Paths xy;
    std::vector<std::vector<ClipperLib::cInt>> z; // same shape as xy

    bool empty() const { return xy.empty(); }
    void clear();
    // True when some vertex has a non-zero z.
    bool has_height() const;
};

// Caller coordinate to grid: times 1000, truncated toward zero.  False when
// the product is NaN, infinite or outside int64 (converting it would be
// undefined behaviour).
bool to_grid(double value, ClipperLib::cInt *grid);

// Cuts an array into paths after every point flagged VEXO_POINT_END.  The
// array's last point is never converted: callers end their arrays with the
// point that closes the outline.  `flat` (VEXO_CLIP_2D) gives every vertex
// z = 0.  False when a converted coordinate is off the grid.
bool cut_into_paths(const GeomPoint *points, uint32_t count, bool flat, PathSet *out);

// Gives every point of `solution` the z of the input vertex at the same x,y
// (vertices of `first` win over those of `second`, which may be NULL), or 0
// for points Clipper created.  This is what a 3D Clipper without a fill
// callback would have kept.
void carry_heights(const PathSet &first, const PathSet *second, PathSet *solution);

// Every point of `solution` at z = 0.
void flat_heights(PathSet *solution);

// The paths of `list` as one caller array, each path closed by a copy of its
// first point flagged VEXO_POINT_END.  Heights come from `subject` path 0 by
// point index; a point beyond that path (or an empty path 0) takes the first
// vertex of `list`.  NULL with *count = 0 when nothing is produced or memory
// runs out.
GeomPoint *to_point_array(const PathSet &list, const PathSet &subject, uint32_t *count) noexcept;

} // namespace vexo
