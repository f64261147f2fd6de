// SPDX-License-Identifier: MIT
// Field scaling about the centre and the focus (z) plane of a flat field.
#include <cmath>

#include "corr/adjust.hpp"
#include "corr/table.hpp"

namespace vexo {

void scale_field(CorrTable &table, double scale) noexcept {
    for (GeomPoint &cell : table.cell) {
        const double x = cell.x / scale;
        const double y = cell.y / scale;
        // Radius after the division, as a fraction of the half output range:
        // the blend undoes the division completely at that rim.
        const double d = std::sqrt(x * x + y * y) / kCorrHalfRange;
        const double k = 1 - d + d * scale;
        cell.x = x * k;
        cell.y = y * k;
    }
}

void compensate_focus(CorrTable &table, double focal_length, double field_size,
                      double target_size) noexcept {
    for (GeomPoint &cell : table.cell) {
        const double x = cell.x / 65535.0 * field_size;
        const double y = cell.y / 65535.0 * field_size;
        const double r = std::sqrt(x * x + y * y);
        // How much longer the slanted beam is than the axial one, in output
        // units; the focus must be pulled in by that much.
        const double beam = std::sqrt(r * r + focal_length * focal_length);
        cell.z = -((beam - focal_length) / field_size) * 65535.0;
    }
    if (target_size == field_size) return;
    for (GeomPoint &cell : table.cell) cell.z *= target_size / field_size;
}

} // namespace vexo
