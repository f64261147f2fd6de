// SPDX-License-Identifier: MIT
// Hatch fill: scan lines across the even-odd region of a set of rings.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "geom/region.hpp"
#include "vexo.h"

namespace vexo {

// Passes above this are refused: 64 already turns the lines by every
// 2.8 degrees of a half turn.
constexpr uint32_t kMaxHatchPasses = 64;
// Scan lines per pass above this are refused before anything is allocated.
constexpr double kMaxScanLines = 16777216.0;

// The covered intervals of the levels v = k * spacing, k = first_k ...
struct ScanLines {
    int64_t first_k = 0;
    double spacing = 1.0;
    std::vector<size_t> offsets;                     // per level, into segments; one extra
    std::vector<std::pair<double, double>> segments; // (u0, u1), u0 < u1, sorted per level

    size_t levels() const { return offsets.empty() ? 0 : offsets.size() - 1; }
    double level(size_t i) const { return static_cast<double>(first_k + int64_t(i)) * spacing; }
};

// Cuts every level with the region of `edges` (even-odd pairs of the sorted
// crossings; empty pairs dropped).  VEXO_ERROR_INVALID_PARAMETER when the
// levels would be more than kMaxScanLines or beyond exact integers,
// VEXO_ERROR_NO_MEMORY when the crossings alone pass kMaxResultPoints.
uint32_t scan_region(const std::vector<Edge> &edges, double spacing, ScanLines *out);

// The whole fill (inset, passes, runs, connectors, trims, contours),
// appended to `out`.  Parameters are checked by the caller.
uint32_t cover(const GeomPoint *rings, uint32_t count, const VexoHatch &params,
               std::vector<GeomPoint> *out);

// Whether params holds values cover() accepts.
bool valid_hatch(const VexoHatch &params);

} // namespace vexo
