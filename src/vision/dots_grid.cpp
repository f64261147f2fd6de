// SPDX-License-Identifier: MIT
#include "vision/dots_grid.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "core/constants.hpp"

namespace vexo {
namespace {

constexpr uint32_t kUnrotateOptions = VEXO_PRCG_ROTATION_GIVEN | VEXO_PRCG_SORT_GRID;
// Pairs closer than this many median spacings are neighbours.  Diagonal
// pairs (1.41 spacings) must stay out: taken four times over, their
// direction points the opposite way to the rows' and columns'.
constexpr double kNeighbourReach = 1.2;

bool finite_points(const GeomPoint *dots, uint32_t count) {
    for (uint32_t i = 0; i < count; ++i)
        if (!std::isfinite(dots[i].x) || !std::isfinite(dots[i].y)) return false;
    return true;
}

// Dot indices by growing x: the neighbour searches below stop scanning once
// the x distance alone is too large.
std::vector<uint32_t> by_x(const GeomPoint *dots, uint32_t count) {
    std::vector<uint32_t> order(count);
    std::iota(order.begin(), order.end(), 0u);
    std::sort(order.begin(), order.end(),
              [&](uint32_t a, uint32_t b) { return dots[a].x < dots[b].x; });
    return order;
}

double nearest_distance(const GeomPoint *dots, const std::vector<uint32_t> &order, size_t k) {
    const GeomPoint &p = dots[order[k]];
    double best = std::numeric_limits<double>::infinity();
    for (size_t j = k + 1; j < order.size() && dots[order[j]].x - p.x < best; ++j)
        best = std::min(best, std::hypot(dots[order[j]].x - p.x, dots[order[j]].y - p.y));
    for (size_t j = k; j-- > 0 && p.x - dots[order[j]].x < best;)
        best = std::min(best, std::hypot(dots[order[j]].x - p.x, dots[order[j]].y - p.y));
    return best;
}

void rotate_all(GeomPoint *dots, uint32_t count, double radians) {
    const double c = std::cos(radians), s = std::sin(radians);
    for (uint32_t i = 0; i < count; ++i) {
        const double x = dots[i].x, y = dots[i].y;
        dots[i].x = x * c + y * s;
        dots[i].y = y * c - x * s;
    }
}

// Indices in growing y, cut into rows wherever the next y is more than
// half a spacing further on.
std::vector<std::vector<uint32_t>> split_rows(const GeomPoint *dots, uint32_t count,
                                              double spacing) {
    std::vector<uint32_t> order(count);
    std::iota(order.begin(), order.end(), 0u);
    std::sort(order.begin(), order.end(), [&](uint32_t a, uint32_t b) {
        return dots[a].y != dots[b].y ? dots[a].y < dots[b].y : a < b;
    });
    std::vector<std::vector<uint32_t>> rows;
    for (size_t k = 0; k < order.size(); ++k) {
        if (k == 0 || dots[order[k]].y - dots[order[k - 1]].y > spacing / 2) rows.emplace_back();
        rows.back().push_back(order[k]);
    }
    return rows;
}

} // namespace

uint32_t scale_dots(GeomPoint *dots, uint32_t count, double scale_x, double scale_y,
                    const double *origin, uint32_t options) noexcept {
    const bool scales_ok =
        std::isfinite(scale_x) && std::isfinite(scale_y) && scale_x != 0 && scale_y != 0;
    if ((count > 0 && !dots) || !scales_ok || (options & ~VEXO_PRCG_SCALE_FLIP_Y) ||
        (origin && (!std::isfinite(origin[0]) || !std::isfinite(origin[1]))))
        return VEXO_ERROR_INVALID_PARAMETER;
    if (count == 0) return VEXO_OK;
    double ox = 0, oy = 0;
    if (origin) {
        ox = origin[0];
        oy = origin[1];
    } else {
        double mx = 0, my = 0;
        for (uint32_t i = 0; i < count; ++i) {
            mx += dots[i].x;
            my += dots[i].y;
        }
        mx /= count;
        my /= count;
        uint32_t nearest = 0;
        double best = std::numeric_limits<double>::infinity();
        for (uint32_t i = 0; i < count; ++i) {
            const double d = std::hypot(dots[i].x - mx, dots[i].y - my);
            if (d < best) best = d, nearest = i;
        }
        ox = dots[nearest].x;
        oy = dots[nearest].y;
    }
    const double area_scale = std::fabs(scale_x * scale_y);
    const bool flip = options & VEXO_PRCG_SCALE_FLIP_Y;
    for (uint32_t i = 0; i < count; ++i) {
        dots[i].x = (dots[i].x - ox) * scale_x;
        const double y = (dots[i].y - oy) * scale_y;
        dots[i].y = flip ? -y : y;
        dots[i].z *= area_scale;
    }
    return VEXO_OK;
}

double median_neighbour_distance(const GeomPoint *dots, uint32_t count) {
    if (count < 2) return 0;
    const std::vector<uint32_t> order = by_x(dots, count);
    std::vector<double> nearest(count);
    for (size_t k = 0; k < order.size(); ++k) nearest[k] = nearest_distance(dots, order, k);
    std::nth_element(nearest.begin(), nearest.begin() + count / 2, nearest.end());
    return nearest[count / 2];
}

bool estimate_grid_rotation(const GeomPoint *dots, uint32_t count, double &radians) {
    if (count < 2) return false;
    const double reach = kNeighbourReach * median_neighbour_distance(dots, count);
    const std::vector<uint32_t> order = by_x(dots, count);
    // Each pair's direction taken four times over: directions 90 degrees
    // apart (the grid's rows and columns, both ways) then agree, and the
    // mean of these unit vectors gives the rotation modulo 90 degrees.
    double c = 0, s = 0;
    for (size_t k = 0; k < order.size(); ++k) {
        const GeomPoint &p = dots[order[k]];
        for (size_t j = k + 1; j < order.size() && dots[order[j]].x - p.x <= reach; ++j) {
            const double dx = dots[order[j]].x - p.x, dy = dots[order[j]].y - p.y;
            const double length = std::hypot(dx, dy);
            if (!(length > 0) || length > reach) continue;
            const double angle = 4 * std::atan2(dy, dx);
            c += std::cos(angle);
            s += std::sin(angle);
        }
    }
    radians = std::atan2(s, c) / 4;
    return true;
}

uint32_t grid_order(const GeomPoint *dots, uint32_t count, uint32_t n,
                    std::vector<uint32_t> &order) {
    const uint64_t cells = uint64_t{n} * n;
    if (count < cells) return VEXO_ERROR_NO_RESULT;
    if (count > cells) return VEXO_ERROR_INVALID_DATA;
    const double spacing = median_neighbour_distance(dots, count);
    const auto rows = split_rows(dots, count, spacing);
    if (rows.size() != n) return VEXO_ERROR_INVALID_DATA;
    order.clear();
    for (auto row : rows) {
        if (row.size() != n) return VEXO_ERROR_INVALID_DATA;
        std::sort(row.begin(), row.end(), [&](uint32_t a, uint32_t b) {
            return dots[a].x != dots[b].x ? dots[a].x < dots[b].x : a < b;
        });
        order.insert(order.end(), row.begin(), row.end());
    }
    return VEXO_OK;
}

uint32_t unrotate_dots(GeomPoint *dots, uint32_t count, uint32_t n, double *rotation,
                       uint32_t options) {
    const bool given = options & VEXO_PRCG_ROTATION_GIVEN;
    const bool sort = options & VEXO_PRCG_SORT_GRID;
    if ((count > 0 && !dots) || !rotation || (options & ~kUnrotateOptions) ||
        (given && !std::isfinite(*rotation)) || (sort && n < 2) || !finite_points(dots, count))
        return VEXO_ERROR_INVALID_PARAMETER;
    double radians = 0;
    if (given)
        radians = degrees_to_radians(*rotation);
    else if (!estimate_grid_rotation(dots, count, radians))
        return VEXO_ERROR_NO_RESULT;
    // Work on a copy: on failure the caller's dots stay as they were.
    std::vector<GeomPoint> turned(dots, dots + count);
    rotate_all(turned.data(), count, radians);
    if (sort) {
        std::vector<uint32_t> order;
        const uint32_t status = grid_order(turned.data(), count, n, order);
        if (status != VEXO_OK) return status;
        for (uint32_t k = 0; k < count; ++k) dots[k] = turned[order[k]];
    } else {
        std::copy(turned.begin(), turned.end(), dots);
    }
    if (!given) *rotation = radians_to_degrees(radians);
    return VEXO_OK;
}

} // namespace vexo
