// SPDX-License-Identifier: MIT
// Operations that turn outlines into marks: joining pieces, ordering them
// for travel, closing, slicing and the parts inside a region.  Each appends
// its result to `out` (whole polylines, end bits on every last point) and
// returns a status; inputs are checked by the C boundary.
#pragma once

#include <cstdint>
#include <vector>

#include "vexo.h"

namespace vexo {

// Pieces whose ends lie within `tolerance` joined into polylines.
uint32_t merge_lines(const GeomPoint *points, uint32_t count, double tolerance,
                     std::vector<GeomPoint> *out);

// Polylines reordered (and reversed or rotated) to shorten the jumps from
// (start_x, start_y) on.
uint32_t order_lines(const GeomPoint *points, uint32_t count, uint32_t options, double start_x,
                     double start_y, std::vector<GeomPoint> *out);

// The polylines closed (snapped or with a closing point appended), and
// degenerate ones dropped on request; the caller copies the result back.
uint32_t close_polylines(const GeomPoint *points, uint32_t count, double tolerance,
                         uint32_t options, std::vector<GeomPoint> *out);

// Pieces on the kept sides of the line through (x0, y0) and (x1, y1).
uint32_t slice_by_line(const GeomPoint *points, uint32_t count, const double line[4],
                       uint32_t options, std::vector<GeomPoint> *out);

// Pieces whose coordinate along `axis` lies in [lo, hi].
uint32_t slice_slab(const GeomPoint *points, uint32_t count, uint32_t axis, double lo, double hi,
                    std::vector<GeomPoint> *out);

// Pieces inside (or outside) the even-odd region of `rings`.
uint32_t part_in_region(const GeomPoint *points, uint32_t count, const GeomPoint *rings,
                        uint32_t ring_count, bool outside, std::vector<GeomPoint> *out);

// Pieces inside an axis-aligned rectangle {left, top, -, right, bottom, -}.
uint32_t part_in_rect(const GeomPoint *points, uint32_t count, const double rect[6],
                      std::vector<GeomPoint> *out);

} // namespace vexo
