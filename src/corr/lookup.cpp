// SPDX-License-Identifier: MIT
// Bilinear reading of the 65x65 table and its inversion.
#include "corr/lookup.hpp"

#include <cmath>
#include <limits>

#include "corr/table.hpp"

namespace vexo {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
// Node pitch of the neutral grid in output units.
constexpr double kNeutralPitch = 65535.0 / 64;
// An inverse is accepted when its output lies this close to the target
// (output units; a millionth of a unit is far below one scanner step).
constexpr double kResidualLimit = 1e-6;
constexpr int kMaxSteps = 100;
constexpr int kMaxHalvings = 40;

// The cell whose bilinear form serves grid coordinate v, and v's weight
// inside it (outside 0..1 beyond the edge).
struct CellSpan {
    int lower;
    double weight;
};

CellSpan span_of(double v) {
    // Clamped as a double first: converting a huge value to int would be
    // undefined.
    const double lower = std::fmin(std::fmax(std::floor(v), 0.0), kCorrSide - 2.0);
    return {static_cast<int>(lower), v - lower};
}

// (1 - w) * a + w * b gives a at w = 0 and b at w = 1 exactly, so a node
// reads back as itself.
double blend(double a, double b, double w) {
    return (1 - w) * a + w * b;
}

struct Cell {
    const GeomPoint *c00, *c01, *c10, *c11; // [row][column] corners
    double f;                               // weight along the column
    double g;                               // weight along the row
};

Cell cell_at(const CorrTable &table, GridPoint p) {
    const CellSpan cs = span_of(p.column);
    const CellSpan rs = span_of(p.row);
    return {&corr_cell(table, rs.lower, cs.lower),
            &corr_cell(table, rs.lower, cs.lower + 1),
            &corr_cell(table, rs.lower + 1, cs.lower),
            &corr_cell(table, rs.lower + 1, cs.lower + 1),
            cs.weight,
            rs.weight};
}

OutputValue evaluate(const Cell &c) {
    return {blend(blend(c.c00->x, c.c01->x, c.f), blend(c.c10->x, c.c11->x, c.f), c.g),
            blend(blend(c.c00->y, c.c01->y, c.f), blend(c.c10->y, c.c11->y, c.f), c.g)};
}

double residual(OutputValue at, OutputValue target) {
    return std::fmax(std::fabs(at.x - target.x), std::fabs(at.y - target.y));
}

// Newton step of the cell's bilinear form towards target; false when the
// form is singular there.
bool newton_step(const Cell &c, OutputValue at, OutputValue target, GridPoint &step) {
    const double xf = blend(c.c01->x - c.c00->x, c.c11->x - c.c10->x, c.g);
    const double yf = blend(c.c01->y - c.c00->y, c.c11->y - c.c10->y, c.g);
    const double xg = blend(c.c10->x - c.c00->x, c.c11->x - c.c01->x, c.f);
    const double yg = blend(c.c10->y - c.c00->y, c.c11->y - c.c01->y, c.f);
    const double det = xf * yg - xg * yf;
    if (!std::isfinite(det) || det == 0) return false;
    const double dx = target.x - at.x;
    const double dy = target.y - at.y;
    step = {(dx * yg - xg * dy) / det, (xf * dy - dx * yf) / det};
    return std::isfinite(step.column) && std::isfinite(step.row);
}

} // namespace

OutputValue table_output(const CorrTable &table, GridPoint p) noexcept {
    if (!std::isfinite(p.column) || !std::isfinite(p.row)) return {kNan, kNan};
    return evaluate(cell_at(table, p));
}

double table_focus(const CorrTable &table, GridPoint p) noexcept {
    if (!std::isfinite(p.column) || !std::isfinite(p.row)) return kNan;
    const Cell c = cell_at(table, p);
    return blend(blend(c.c00->z, c.c01->z, c.f), blend(c.c10->z, c.c11->z, c.f), c.g);
}

bool table_position(const CorrTable &table, OutputValue target, GridPoint &found) noexcept {
    if (!std::isfinite(target.x) || !std::isfinite(target.y)) {
        found = {kNan, kNan};
        return true;
    }
    GridPoint p{target.x / kNeutralPitch + 32, target.y / kNeutralPitch + 32};
    double error = residual(table_output(table, p), target);
    for (int n = 0; n < kMaxSteps && !(error <= kResidualLimit * 1e-3); ++n) {
        const Cell c = cell_at(table, p);
        GridPoint step{};
        if (!newton_step(c, evaluate(c), target, step)) break;
        // Halve the step until it helps: across a cell border the next
        // cell's form may differ enough for a full step to overshoot.
        bool improved = false;
        for (int h = 0; h < kMaxHalvings && !improved; ++h) {
            const GridPoint next{p.column + step.column, p.row + step.row};
            const double next_error = residual(table_output(table, next), target);
            if (next_error < error) {
                p = next;
                error = next_error;
                improved = true;
            }
            step.column /= 2;
            step.row /= 2;
        }
        if (!improved) break;
    }
    if (!(error <= kResidualLimit)) return false;
    found = p;
    return true;
}

GridPoint grid_from_field(double x, double y, double field_size) noexcept {
    return {x / field_size * 64 + 32, y / field_size * 64 + 32};
}

void field_from_grid(GridPoint p, double field_size, double &x, double &y) noexcept {
    x = (p.column - 32) / 64 * field_size;
    y = (p.row - 32) / 64 * field_size;
}

} // namespace vexo
