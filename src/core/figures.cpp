// SPDX-License-Identifier: MIT
#include "core/figures.hpp"

#include <cmath>
#include <cstdlib>

#include "core/constants.hpp"
#include "core/point_buffer.hpp"

namespace vexo {

namespace {

// Figures measure angles from +Y towards +X and turn degrees into radians
// as two halves of the turn times the single-precision pi; another order
// changes the last bit of the points hosts compare.
double figure_radians(double degrees) {
    return (degrees / 360.0 + degrees / 360.0) * kPiF;
}

GeomPoint on_circle(const GeomPoint &centre, double radius, double angle) {
    return GeomPoint{centre.x + radius * std::sin(angle), centre.y + radius * std::cos(angle),
                     centre.z, 0u, 0u};
}

// Brings an angle into [0, 360) by whole turns.  Only equality of the two
// results matters; far-out values are reduced with fmod first so that the
// walk stays short.
double normalise_degrees(double a) {
    if (std::fabs(a) > 1e6) a = std::fmod(a, 360.0);
    while (a < 0.0) a += 360.0;
    while (a >= 360.0) a -= 360.0;
    return a;
}

// Going inward, each step takes at most 2sR off r squared, and the walk ends
// once r is at the inner radius or has crossed zero (r squared below sR).
// A spiral far beyond the point limit is thereby refused without first
// building sixteen million points.
double inward_steps_at_least(double inner, double R, double radius_step) {
    const double floor = inner > 0.0 ? inner * inner : 0.0;
    return (R * R - floor - radius_step * R) / (2.0 * radius_step * R);
}

// Radii for which the walk can reach its end.  Outward, r grows by a step
// stretched by R / r, which is negative below zero, so from a negative inner
// radius r runs away from R until the point limit.  Inward, r gets below
// zero only by a jump through the centre, which lands within -R only by
// chance; an inner radius beyond -R (or not finite) leaves the walk circling
// the centre until the point limit, so both are refused before any point.
bool spiral_can_end(double inner, double outer, bool outward) {
    if (!std::isfinite(inner) || !std::isfinite(outer)) return false;
    const double R = outer > 0.0001 ? outer : 0.0001;
    return outward ? inner >= 0.0 : inner >= -R;
}

} // namespace

GeomPoint *create_circle(double radius, const GeomPoint &centre, double start, double end,
                         uint32_t steps, uint32_t *count) noexcept {
    if (count) *count = 0;
    if (!(radius > 0.0)) radius = 0.0001;
    if (steps < 3) steps = 3;
    const double n = std::fabs(end - start) / 360.0 * steps;
    // NaN, or more points than a 32-bit count can hold: nothing to draw.
    if (!(n + 1.0 < 4294967296.0)) return nullptr;
    const uint32_t allocated = static_cast<uint32_t>(std::trunc(n + 1.0));
    const uint32_t written = static_cast<uint32_t>(std::trunc(n));
    // An arc shorter than one step has no valid last point.
    if (written == 0) return nullptr;
    GeomPoint *points = resize_points(nullptr, allocated);
    if (!points) return nullptr;

    const double step = kTwoPiF / steps;
    double angle = figure_radians(start);
    for (uint32_t i = 0; i < written; ++i) {
        points[i] = on_circle(centre, radius, angle);
        angle = end > start ? angle + step : angle - step;
    }

    uint32_t produced = written;
    if (normalise_degrees(start) == normalise_degrees(end) && allocated > written) {
        points[written] = GeomPoint{points[0].x, points[0].y, points[0].z, VEXO_POINT_END, 0u};
        produced = written + 1;
    } else {
        points[written - 1].flags = VEXO_POINT_END;
    }
    if (count) *count = produced;
    return points;
}

GeomPoint *create_spiral(double inner, double outer, const GeomPoint &centre, double start,
                         double pitch, uint32_t steps, bool reverse, bool outward,
                         uint32_t *count) noexcept {
    *count = 0;
    if (!spiral_can_end(inner, outer, outward)) return nullptr;
    const double R = outer > 0.0001 ? outer : 0.0001;
    const double angle_step = kTwoPiF / steps;
    const double radius_step = pitch / steps;
    // A radius that never moves would spin forever.
    if (!(radius_step > 0.0)) return nullptr;
    if (!outward && inward_steps_at_least(inner, R, radius_step) > 2.0 * kMaxFigurePoints)
        return nullptr;

    PointSink sink;
    double r = outward ? inner : R;
    double angle = figure_radians(start);
    while (outward ? r < R : r > inner) {
        const uint32_t written = sink.size();
        if (written >= kMaxFigurePoints || !sink.push(on_circle(centre, r, angle))) {
            *count = written;
            return nullptr;
        }
        const double stretch = R / r;
        r = outward ? r + radius_step * stretch : r - radius_step * stretch;
        angle = reverse ? angle - angle_step * stretch : angle + angle_step * stretch;
    }
    if (sink.size() == 0) return nullptr;
    sink.data()[sink.size() - 1].flags |= VEXO_POINT_END;
    return sink.release(count);
}

} // namespace vexo
