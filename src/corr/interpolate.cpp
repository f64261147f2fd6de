// SPDX-License-Identifier: MIT
// Pre-distortion of a measured grid and its bilinear resampling onto the
// 65x65 table.  The operation order is the one the scanner cards' own
// tooling uses; tables must come out identical to the last bit.
#include "corr/interpolate.hpp"

#include <cmath>
#include <cstdlib>
#include <cstring>

#include "corr/table.hpp"

namespace vexo {
namespace {

// Half the 16-bit output word plus a quarter unit: the largest pre-distorted
// coordinate lands here.  Not 32767.5 (kept for identical tables).
constexpr double kOutputSpan = 65535.5;

// Work blocks for one call, released on every path.
struct WorkBlocks {
    GeomPoint *grid = nullptr;      // n x n pre-distorted nodes
    GeomPoint *resampled = nullptr; // 65 x n, first grid index resampled
    ~WorkBlocks() {
        std::free(grid);
        std::free(resampled);
    }
};

bool allocate(uint64_t cells, GeomPoint *&block) noexcept {
    if (cells == 0 || cells > SIZE_MAX / sizeof(GeomPoint)) return false;
    block = static_cast<GeomPoint *>(std::malloc(static_cast<size_t>(cells) * sizeof(GeomPoint)));
    return block != nullptr;
}

// 2 * nominal - measured for every node; returns the largest coordinate
// magnitude, never below range / 2.
double predistort(uint64_t cells, const GeomPoint *measured, const GeomPoint *nominal, double range,
                  GeomPoint *grid) noexcept {
    double largest = range / 2;
    for (uint64_t k = 0; k < cells; ++k) {
        grid[k].x = 2 * nominal[k].x - measured[k].x;
        grid[k].y = 2 * nominal[k].y - measured[k].y;
        if (std::fabs(grid[k].x) > largest) largest = std::fabs(grid[k].x);
        if (std::fabs(grid[k].y) > largest) largest = std::fabs(grid[k].y);
    }
    return largest;
}

// Position of table line p on the grid: lower grid line and the weight of
// the upper one.  The step divides by 65, not 64, so the last table line
// stays below grid line n - 1 (kept for identical tables).
struct Sample {
    uint32_t lower;
    uint32_t upper;
    double weight;
};

Sample sample_at(int p, double step, uint32_t n) {
    const double q = p * step;
    const double whole = std::trunc(q);
    const auto lower = static_cast<uint32_t>(whole);
    // Only a one-node grid has no upper neighbour; its weight is 0 there.
    const uint32_t upper = lower + 1 < n ? lower + 1 : lower;
    return {lower, upper, q - whole};
}

GeomPoint blend(const GeomPoint &a, const GeomPoint &b, double f) {
    GeomPoint out{};
    out.x = (1 - f) * a.x + f * b.x;
    out.y = (1 - f) * a.y + f * b.y;
    return out;
}

void resample(uint32_t n, const GeomPoint *grid, GeomPoint *resampled, CorrTable &table) {
    const double step = static_cast<double>(n - 1) / 65;
    // First pass along the grid's first index: it becomes the table column.
    for (int p = 0; p < kCorrSide; ++p) {
        const Sample s = sample_at(p, step, n);
        for (uint32_t b = 0; b < n; ++b)
            resampled[uint64_t{static_cast<uint32_t>(p)} * n + b] =
                blend(grid[uint64_t{s.lower} * n + b], grid[uint64_t{s.upper} * n + b], s.weight);
    }
    // Second pass along the second index: it becomes the table row.
    for (int p = 0; p < kCorrSide; ++p) {
        const GeomPoint *line = resampled + uint64_t{static_cast<uint32_t>(p)} * n;
        for (int r = 0; r < kCorrSide; ++r) {
            const Sample s = sample_at(r, step, n);
            const GeomPoint v = blend(line[s.lower], line[s.upper], s.weight);
            GeomPoint &cell = corr_cell(table, r, p);
            cell.x = v.x;
            cell.y = v.y;
        }
    }
}

} // namespace

uint32_t interpolate_grid(uint32_t n, const GeomPoint *measured, const GeomPoint *nominal,
                          double range, CorrTable &table) noexcept {
    const uint64_t cells = uint64_t{n} * n;
    WorkBlocks work;
    if (!allocate(cells, work.grid) || !allocate(uint64_t{n} * kCorrSide, work.resampled))
        return VEXO_ERROR_NO_MEMORY;

    std::memset(&table, 0, sizeof table);
    const double largest = predistort(cells, measured, nominal, range, work.grid);
    const double scale = ((range * 0.5) / largest) / range * kOutputSpan;
    for (uint64_t k = 0; k < cells; ++k) {
        work.grid[k].x *= scale;
        work.grid[k].y *= scale;
    }
    resample(n, work.grid, work.resampled, table);
    return VEXO_OK;
}

} // namespace vexo
