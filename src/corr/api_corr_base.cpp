// SPDX-License-Identifier: MIT
// C boundary of the head geometry and of table lookups.  Only the inverse
// lookup allocates (its answers, held until all points are solved); the
// guards turn a failed allocation into VEXO_ERROR_NO_MEMORY.
#include <cmath>
#include <vector>

#include "core/boundary.hpp"
#include "corr/head_geometry.hpp"
#include "corr/lookup.hpp"

namespace {

uint32_t apply_forward(const CorrTable &table, GeomPoint *points, uint32_t count,
                       double field_size) {
    for (uint32_t i = 0; i < count; ++i) {
        const vexo::OutputValue out =
            vexo::table_output(table, vexo::grid_from_field(points[i].x, points[i].y, field_size));
        points[i].x = out.x;
        points[i].y = out.y;
    }
    return VEXO_OK;
}

uint32_t apply_inverse(const CorrTable &table, GeomPoint *points, uint32_t count,
                       double field_size) {
    // Every point is solved before any is written, so a failure leaves the
    // array as it was.
    std::vector<vexo::GridPoint> found(count);
    for (uint32_t i = 0; i < count; ++i) {
        if (!vexo::table_position(table, {points[i].x, points[i].y}, found[i]))
            return VEXO_ERROR_NUMERIC;
    }
    for (uint32_t i = 0; i < count; ++i)
        vexo::field_from_grid(found[i], field_size, points[i].x, points[i].y);
    return VEXO_OK;
}

} // namespace

extern "C" {

VEXO_API uint32_t vexo_corr_set_base(CorrTable *table, const CorrBase *base, double *full_scale) {
    if (!table || !base || !vexo::valid_head(*base)) return VEXO_ERROR_INVALID_PARAMETER;
    return vexo::guard_status([&] { return vexo::fill_base_table(*table, *base, full_scale); });
}

VEXO_API uint32_t vexo_corr_calc_base_angles(const CorrBase *base, double x, double y,
                                             double *angle_x, double *angle_y) {
    if (!base || !angle_x || !angle_y || !vexo::valid_head(*base) || !std::isfinite(x) ||
        !std::isfinite(y))
        return VEXO_ERROR_INVALID_PARAMETER;
    vexo::BeamAngles beam{};
    if (!vexo::angles_for_position(*base, x, y, beam)) return VEXO_ERROR_NUMERIC;
    *angle_x = vexo::mirror_degrees(beam.x);
    *angle_y = vexo::mirror_degrees(beam.y);
    return VEXO_OK;
}

VEXO_API uint32_t vexo_corr_apply(const CorrTable *table, GeomPoint *points, uint32_t count,
                                  double field_size, uint32_t options) {
    if (!table || (!points && count > 0) || !std::isfinite(field_size) || !(field_size > 0) ||
        (options & ~VEXO_CORR_APPLY_INVERSE) != 0)
        return VEXO_ERROR_INVALID_PARAMETER;
    return vexo::guard_status([&] {
        return (options & VEXO_CORR_APPLY_INVERSE)
                   ? apply_inverse(*table, points, count, field_size)
                   : apply_forward(*table, points, count, field_size);
    });
}

} // extern "C"
