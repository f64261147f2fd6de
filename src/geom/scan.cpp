// SPDX-License-Identifier: MIT
// Scan lines across a region: every edge is visited once and its crossings
// are dropped into the buckets of the levels it spans (a counting pass, then
// a filling pass), so the cost is edges + crossings + sorting each level.
#include <algorithm>
#include <cmath>

#include "geom/hatch.hpp"

namespace vexo {
namespace {

// Smallest k with k * spacing >= v (the levels' own rounding decides).
int64_t first_level_at_or_above(double v, double spacing) {
    int64_t k = static_cast<int64_t>(std::ceil(v / spacing));
    while (static_cast<double>(k - 1) * spacing >= v) --k;
    while (static_cast<double>(k) * spacing < v) ++k;
    return k;
}

// Levels [k0, k1) that the edge counts for: min(av, bv) <= level < max.
std::pair<int64_t, int64_t> edge_levels(const Edge &e, double spacing) {
    const double lo = std::min(e.av, e.bv), hi = std::max(e.av, e.bv);
    return {first_level_at_or_above(lo, spacing), first_level_at_or_above(hi, spacing)};
}

} // namespace

uint32_t scan_region(const std::vector<Edge> &edges, double spacing, ScanLines *out) {
    out->spacing = spacing;
    out->offsets.clear();
    out->segments.clear();
    if (edges.empty()) return VEXO_OK;
    double vmin = edges[0].av, vmax = edges[0].av;
    for (const Edge &e : edges) {
        vmin = std::min(vmin, e.bv);
        vmax = std::max(vmax, e.bv);
    }
    const double exact_limit = 4503599627370496.0; // 2^52: k stays an exact integer
    if (!(std::fabs(vmin / spacing) < exact_limit && std::fabs(vmax / spacing) < exact_limit) ||
        !((vmax - vmin) / spacing < kMaxScanLines))
        return VEXO_ERROR_INVALID_PARAMETER;

    const int64_t k0 = first_level_at_or_above(vmin, spacing);
    const int64_t k1 = first_level_at_or_above(vmax, spacing); // vmax itself is never inside
    out->first_k = k0;
    const size_t levels = k1 > k0 ? static_cast<size_t>(k1 - k0) : 0;
    std::vector<size_t> fill(levels + 1, 0);
    for (const Edge &e : edges) {
        const auto range = edge_levels(e, spacing);
        for (int64_t k = range.first; k < range.second; ++k) ++fill[size_t(k - k0) + 1];
    }
    for (size_t i = 1; i <= levels; ++i) fill[i] += fill[i - 1];
    // Every crossing ends up as one hatch point.
    if (fill[levels] > kMaxResultPoints) return VEXO_ERROR_NO_MEMORY;
    std::vector<double> crossings(fill[levels]);
    std::vector<size_t> next(fill.begin(), fill.end() - 1);
    for (const Edge &e : edges) {
        const auto range = edge_levels(e, spacing);
        for (int64_t k = range.first; k < range.second; ++k) {
            const double v = static_cast<double>(k) * spacing;
            crossings[next[size_t(k - k0)]++] = level_crossing(e, v);
        }
    }

    out->offsets.assign(levels + 1, 0);
    out->segments.reserve(crossings.size() / 2);
    for (size_t i = 0; i < levels; ++i) {
        // Indices, not pointers: with no crossings at all the vector holds
        // no storage, and pointer steps from its null data() are undefined.
        const size_t first = fill[i], last = fill[i + 1];
        std::sort(crossings.begin() + first, crossings.begin() + last);
        // Each ring crosses a level an even number of times under the
        // half-open rule, so the sorted list pairs up completely.
        for (size_t j = first; j + 1 < last; j += 2)
            if (crossings[j] < crossings[j + 1])
                out->segments.emplace_back(crossings[j], crossings[j + 1]);
        out->offsets[i + 1] = out->segments.size();
    }
    return VEXO_OK;
}

} // namespace vexo
