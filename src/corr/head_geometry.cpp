// SPDX-License-Identifier: MIT
// The ideal two-mirror head.  Unfolded, the X mirror turns the beam by ax
// about an axis across the beam; the beam then meets the Y mirror on its
// axis (both lie in the plane of the undeflected beam), which turns it by ay
// about an axis parallel to x.  The beam's direction is then
//   u = (sin ax, cos ax sin ay, cos ax cos ay),
// it leaves the Y axis at x = e tan ax, and a flat field at distance d gives
//   y = d tan ay,  x = e tan ax + d tan ax / cos ay.
// An ideal f-theta objective maps the direction u to f * theta along u's
// azimuth, theta = angle(u, axis).
#include "corr/head_geometry.hpp"

#include <cmath>

#include "core/constants.hpp"
#include "corr/table.hpp"

namespace vexo {
namespace {

bool finite_at_least(double value, double lowest) {
    return std::isfinite(value) && value >= lowest;
}
bool finite_positive(double value) {
    return std::isfinite(value) && value > 0;
}
bool has_objective(const CorrBase &head) {
    return head.focal_length != 0;
}

bool angles_flat(const CorrBase &head, double x, double y, BeamAngles &angles) {
    // hypot keeps d^2 + y^2 from overflowing for sizes far beyond a real head.
    angles.y = std::atan2(y, head.distance);
    angles.x = std::atan2(x, head.mirror_gap + std::hypot(head.distance, y));
    return true;
}

bool angles_ftheta(const CorrBase &head, double x, double y, BeamAngles &angles) {
    const double r = std::hypot(x, y);
    if (r == 0) {
        angles = {0.0, 0.0};
        return true;
    }
    const double theta = r / head.focal_length;
    const double along = std::cos(theta);
    // At 90 degrees or more the beam would have to leave away from the field.
    if (!(along > 0)) return false;
    const double across = std::sin(theta) / r;
    const double ux = x * across;
    const double uy = y * across;
    angles.x = std::atan2(ux, std::hypot(uy, along));
    angles.y = std::atan2(uy, along);
    return true;
}

// 1 - cos(a) without the cancellation near 0.
double one_minus_cos(double a) {
    const double s = std::sin(a / 2);
    return 2 * s * s;
}

} // namespace

bool valid_head(const CorrBase &head) noexcept {
    const bool objective = has_objective(head);
    return finite_at_least(head.mirror_gap, 0) && finite_positive(head.field_size) &&
           (objective ? finite_positive(head.focal_length) && finite_at_least(head.distance, 0)
                      : finite_positive(head.distance)) &&
           (head.options & ~VEXO_CORR_BASE_FOCUS) == 0 && head.reserved == 0;
}

bool angles_for_position(const CorrBase &head, double x, double y, BeamAngles &angles) noexcept {
    BeamAngles found{};
    const bool reached =
        has_objective(head) ? angles_ftheta(head, x, y, found) : angles_flat(head, x, y, found);
    if (!reached || !std::isfinite(found.x) || !std::isfinite(found.y)) return false;
    angles = found;
    return true;
}

FieldPosition position_for_angles(const CorrBase &head, const BeamAngles &angles) noexcept {
    if (!has_objective(head)) {
        const double tan_x = std::tan(angles.x);
        return {head.mirror_gap * tan_x + head.distance * tan_x / std::cos(angles.y),
                head.distance * std::tan(angles.y)};
    }
    const double ux = std::sin(angles.x);
    const double uy = std::cos(angles.x) * std::sin(angles.y);
    const double uz = std::cos(angles.x) * std::cos(angles.y);
    const double across = std::hypot(ux, uy);
    if (across == 0) return {0.0, 0.0};
    const double radius = head.focal_length * std::atan2(across, uz);
    return {radius * ux / across, radius * uy / across};
}

double extra_path(const CorrBase &head, const BeamAngles &angles) noexcept {
    if (has_objective(head)) return 0.0;
    // Path: e / cos ax between the mirrors, d / (cos ax cos ay) to the field.
    // Written with 1 - cos so that nodes near the centre keep their digits.
    const double cx = std::cos(angles.x);
    const double cy = std::cos(angles.y);
    const double gap_part = head.mirror_gap * one_minus_cos(angles.x) / cx;
    const double field_part =
        head.distance * (one_minus_cos(angles.x) + cx * one_minus_cos(angles.y)) / (cx * cy);
    return gap_part + field_part;
}

double mirror_degrees(double beam_radians) noexcept {
    return radians_to_degrees(beam_radians / 2);
}

double beam_radians(double mirror_degrees) noexcept {
    return 2 * degrees_to_radians(mirror_degrees);
}

namespace {

// Field position of grid line i: the neutral grid scaled to the field, in
// the conversion vexo_corr_set_focal uses.
double node_position(int line, double field_size) {
    return neutral_coordinate(line) / 65535.0 * field_size;
}

bool node_angles(const CorrBase &head, int row, int column, BeamAngles &angles) {
    return angles_for_position(head, node_position(column, head.field_size),
                               node_position(row, head.field_size), angles);
}

} // namespace

uint32_t fill_base_table(CorrTable &table, const CorrBase &head, double *full_scale) noexcept {
    // First pass: every node must be reachable, and the largest angle sets
    // the scale; the table is written only once both are known.
    double largest = 0;
    for (int row = 0; row < kCorrSide; ++row) {
        for (int column = 0; column < kCorrSide; ++column) {
            BeamAngles a{};
            if (!node_angles(head, row, column, a)) return VEXO_ERROR_NUMERIC;
            largest = std::fmax(largest, std::fmax(std::fabs(a.x), std::fabs(a.y)));
        }
    }
    // Angles that underflow to 0 leave nothing to scale by.
    if (!(largest > 0)) return VEXO_ERROR_NUMERIC;
    const bool focus = (head.options & VEXO_CORR_BASE_FOCUS) != 0;
    for (int row = 0; row < kCorrSide; ++row) {
        for (int column = 0; column < kCorrSide; ++column) {
            BeamAngles a{};
            node_angles(head, row, column, a);
            GeomPoint &cell = corr_cell(table, row, column);
            // angle / largest lies in [-1, 1], so no node leaves the range.
            cell.x = a.x / largest * kCorrHalfRange;
            cell.y = a.y / largest * kCorrHalfRange;
            if (focus) cell.z = -(extra_path(head, a) / head.field_size) * 65535.0;
        }
    }
    if (full_scale) *full_scale = mirror_degrees(largest);
    return VEXO_OK;
}

} // namespace vexo
