// SPDX-License-Identifier: MIT
#include "corr/from_grid.hpp"

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include "corr/lookup.hpp"
#include "corr/table.hpp"

namespace vexo {
namespace {

// Nominal nodes may stray this far (times the field size) from the grid's
// axis values: text files round, the grid stays the same.
constexpr double kAxisTolerance = 1e-9;
// The iteration stops when a step moves less than this (grid units, so a
// millionth of a millionth of a node pitch) and gives up after kMaxSteps:
// each step shrinks the distance by the error's slope, so a 0.9 slope
// (marks spaced 1.9 times nominal) still settles in about 260 steps.
constexpr double kSettled = 1e-12;
constexpr double kAccepted = 1e-9;
constexpr int kMaxSteps = 1000;

// The measured grid as an error field over the nominal grid's axes.
struct ErrorField {
    uint32_t n = 0;
    std::vector<double> xs, ys; // nominal axis values, growing
    std::vector<double> ex, ey; // measured - nominal, [i * n + j]
    double field = 0;

    // Interpolated error at field position (x, y); held at the edge value
    // beyond the grid.
    void at(double x, double y, double &out_x, double &out_y) const {
        size_t j;
        double u;
        size_t i;
        double v;
        locate(xs, x, j, u);
        locate(ys, y, i, v);
        out_x = mix(ex, i, j, u, v);
        out_y = mix(ey, i, j, u, v);
    }

private:
    static void locate(const std::vector<double> &axis, double v, size_t &lower, double &w) {
        const double clamped = std::min(std::max(v, axis.front()), axis.back());
        const auto upper = std::upper_bound(axis.begin(), axis.end(), clamped);
        lower = std::min<size_t>(size_t(upper - axis.begin()), axis.size() - 1) - 1;
        w = (clamped - axis[lower]) / (axis[lower + 1] - axis[lower]);
    }
    double mix(const std::vector<double> &e, size_t i, size_t j, double u, double v) const {
        const double low = (1 - u) * e[i * n + j] + u * e[i * n + j + 1];
        const double high = (1 - u) * e[(i + 1) * n + j] + u * e[(i + 1) * n + j + 1];
        return (1 - v) * low + v * high;
    }
};

bool finite_grid(const GeomPoint *g, uint64_t cells) {
    for (uint64_t k = 0; k < cells; ++k)
        if (!std::isfinite(g[k].x) || !std::isfinite(g[k].y)) return false;
    return true;
}

bool strictly_growing(const std::vector<double> &axis) {
    for (size_t k = 1; k < axis.size(); ++k)
        if (!(axis[k] > axis[k - 1])) return false;
    return true;
}

// Axes from the first row and column; false when the nominal grid is not
// rectilinear and growing.
bool build_field(uint32_t n, const GeomPoint *measured, const GeomPoint *nominal, double field,
                 ErrorField &f) {
    f.n = n;
    f.field = field;
    for (uint32_t k = 0; k < n; ++k) {
        f.xs.push_back(nominal[k].x);
        f.ys.push_back(nominal[uint64_t{k} * n].y);
    }
    if (!strictly_growing(f.xs) || !strictly_growing(f.ys)) return false;
    const double slack = kAxisTolerance * field;
    const uint64_t cells = uint64_t{n} * n;
    f.ex.resize(cells);
    f.ey.resize(cells);
    for (uint64_t k = 0; k < cells; ++k) {
        const uint64_t i = k / n, j = k % n;
        if (std::fabs(nominal[k].x - f.xs[j]) > slack || std::fabs(nominal[k].y - f.ys[i]) > slack)
            return false;
        f.ex[k] = measured[k].x - nominal[k].x;
        f.ey[k] = measured[k].y - nominal[k].y;
    }
    return true;
}

// The grid position p (grid units) with p + e(p) = q, by p <- q - e(p):
// a contraction wherever the error changes by less than its own spacing.
bool invert(const ErrorField &f, GridPoint q, GridPoint &p) {
    const double to_grid = 64 / f.field;
    p = q;
    for (int step = 0; step < kMaxSteps; ++step) {
        double x, y, ex, ey;
        field_from_grid(p, f.field, x, y);
        f.at(x, y, ex, ey);
        const GridPoint next{q.column - ex * to_grid, q.row - ey * to_grid};
        const double moved =
            std::fmax(std::fabs(next.column - p.column), std::fabs(next.row - p.row));
        p = next;
        if (!(moved > kSettled)) return moved <= kAccepted;
    }
    return false;
}

// Measured x growing along every row and y along every column: otherwise
// marks swapped places and no table can send each node to its own.
bool unfolded(uint32_t n, const GeomPoint *measured) {
    for (uint64_t i = 0; i < n; ++i)
        for (uint64_t j = 0; j + 1 < n; ++j) {
            if (!(measured[i * n + j + 1].x > measured[i * n + j].x)) return false;
            if (!(measured[(j + 1) * n + i].y > measured[j * n + i].y)) return false;
        }
    return true;
}

} // namespace

uint32_t table_from_grid(uint32_t n, const GeomPoint *measured, const GeomPoint *nominal,
                         double field_size, const CorrTable *base, CorrTable &table) {
    if (n < 2 || !std::isfinite(field_size) || !(field_size > 0))
        return VEXO_ERROR_INVALID_PARAMETER;
    const uint64_t cells = uint64_t{n} * n;
    if (!finite_grid(measured, cells) || !finite_grid(nominal, cells))
        return VEXO_ERROR_INVALID_PARAMETER;
    ErrorField field;
    if (!build_field(n, measured, nominal, field_size, field)) return VEXO_ERROR_INVALID_PARAMETER;
    if (!unfolded(n, measured)) return VEXO_ERROR_INVALID_DATA;

    // The base is copied first: table may be the same record.
    auto source = std::make_unique<CorrTable>();
    if (base)
        *source = *base;
    else
        set_neutral(*source);
    std::vector<GeomPoint> result(kCorrCells);
    for (int r = 0; r < kCorrSide; ++r)
        for (int c = 0; c < kCorrSide; ++c) {
            GridPoint p;
            if (!invert(field, GridPoint{double(c), double(r)}, p)) return VEXO_ERROR_NUMERIC;
            const OutputValue out = table_output(*source, p);
            GeomPoint &cell = result[size_t(r) * kCorrSide + size_t(c)];
            cell.x = out.x;
            cell.y = out.y;
            cell.z = table_focus(*source, p);
        }
    for (int k = 0; k < kCorrCells; ++k) {
        table.cell[k].x = result[size_t(k)].x;
        table.cell[k].y = result[size_t(k)].y;
        table.cell[k].z = result[size_t(k)].z;
    }
    return VEXO_OK;
}

} // namespace vexo
