// SPDX-License-Identifier: MIT
// Polyline arrays as the marking operations see them: ranges of one array,
// split at the end flag, and results handed to the caller as C-heap blocks.
#pragma once

#include <cstdint>
#include <vector>

#include "vexo.h"

namespace vexo {

// Points [begin, end) of one array.
struct Span {
    uint32_t begin;
    uint32_t end;
    uint32_t size() const { return end - begin; }
};

// The polylines of points[0, count): each ends at a point flagged
// VEXO_POINT_END; points after the last flag form one more polyline.
std::vector<Span> split_polylines(const GeomPoint *points, uint32_t count);

// True when every x and y of points[0, count) is finite.
bool finite_xy(const GeomPoint *points, uint32_t count);

// The end bits a polyline's last point carries.
constexpr uint32_t kEndBits = VEXO_POINT_END | VEXO_POINT_END_MARK;

// Results beyond this many points are refused as memory the caller cannot
// reasonably want (2 GiB of records).
constexpr uint32_t kMaxResultPoints = 1u << 26;

// Copies `points` into a new C-heap block for the caller: VEXO_OK,
// VEXO_ERROR_NO_RESULT for an empty result, VEXO_ERROR_NO_MEMORY beyond
// kMaxResultPoints or when malloc fails.  *block is NULL unless VEXO_OK.
uint32_t hand_out(const std::vector<GeomPoint> &points, GeomPoint **block, uint32_t *count);

// A copy of p with its end bits cleared.
inline GeomPoint inner_point(GeomPoint p) {
    p.flags &= ~kEndBits;
    return p;
}

} // namespace vexo
