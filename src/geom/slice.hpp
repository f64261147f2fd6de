// SPDX-License-Identifier: MIT
// Cutting polylines into the pieces that lie in a region.
#pragma once

#include <functional>
#include <vector>

#include "vexo.h"

namespace vexo {

// Part t0..t1 (0 <= t0 < t1 <= 1) of a segment, on side `side` of the cut.
struct Interval {
    double t0, t1;
    int side;
};

// Fills the intervals of a->b that are kept, in increasing t.
using SegmentCutter =
    std::function<void(const GeomPoint &a, const GeomPoint &b, std::vector<Interval> *)>;
using PointTest = std::function<bool(const GeomPoint &)>;

// The kept pieces of every polyline; one-point polylines (dots) are kept
// whole when keep_dot says so.
void cut_polylines(const GeomPoint *points, uint32_t count, const SegmentCutter &cut,
                   const PointTest &keep_dot, std::vector<GeomPoint> *out);

} // namespace vexo
