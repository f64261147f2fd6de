// SPDX-License-Identifier: MIT
// Local correction around one mark that landed at `from` instead of `to`.
#include <cmath>

#include "corr/adjust.hpp"
#include "corr/table.hpp"

namespace vexo {
namespace {

struct Error {
    double dx, dy; // to - from
    double tx, ty; // to
    double radius; // reach of the correction
};

// Weight of a node at (x, y): falls linearly from 0.95 at `to` to 0 at the
// radius; a node at or beyond the radius gets none (returns false).
bool weight_at(const Error &e, double x, double y, double &weight) {
    const double ex = x - e.tx;
    const double ey = y - e.ty;
    const double rho = std::sqrt(ex * ex + ey * ey);
    if (!(e.radius > rho)) return false;
    weight = (e.radius - rho) / e.radius * 0.95;
    return true;
}

// Both axes: each node moves on its own, judged by its own position only.
void move_nodes(CorrTable &table, const Error &e) {
    for (GeomPoint &cell : table.cell) {
        double a = 0;
        if (!weight_at(e, cell.x, cell.y, a)) continue;
        cell.x -= e.dx * a;
        cell.y -= e.dy * a;
    }
}

// One axis: whole lines move.  The walk is column by column and judges each
// node where earlier moves left it.  The visited node's column picks the row
// that moves in Y, and its row picks the column that moves in X; tables in
// the field were made this way, so the crossing stays.
void move_lines(CorrTable &table, const Error &e, bool rows_in_y, bool columns_in_x) {
    for (int c = 0; c < kCorrSide; ++c) {
        for (int r = 0; r < kCorrSide; ++r) {
            const GeomPoint &node = corr_cell(table, r, c);
            double a = 0;
            if (!weight_at(e, node.x, node.y, a)) continue;
            if (rows_in_y)
                for (int k = 0; k < kCorrSide; ++k) corr_cell(table, c, k).y -= e.dy * a;
            if (columns_in_x)
                for (int k = 0; k < kCorrSide; ++k) corr_cell(table, k, r).x -= e.dx * a;
        }
    }
}

} // namespace

void adjust_around(CorrTable &table, const double *from, const double *to, double radius_factor,
                   int32_t mode) noexcept {
    Error e{};
    e.dx = to[0] - from[0];
    e.dy = to[1] - from[1];
    e.tx = to[0];
    e.ty = to[1];
    e.radius = std::sqrt(e.dx * e.dx + e.dy * e.dy) * radius_factor;
    const bool rows_in_y = (mode & 1) != 0;
    const bool columns_in_x = (mode & 2) != 0;
    if (rows_in_y && columns_in_x)
        move_nodes(table, e);
    else if (rows_in_y || columns_in_x)
        move_lines(table, e, rows_in_y, columns_in_x);
}

} // namespace vexo
