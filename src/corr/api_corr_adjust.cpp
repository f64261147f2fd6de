// SPDX-License-Identifier: MIT
// C boundary of table interpolation and the in-place adjustments.  None of
// the work below can throw but the table from a grid's, which runs in a
// guard; the checks here are the whole of the argument validation.
#include "core/boundary.hpp"
#include "corr/adjust.hpp"
#include "corr/from_grid.hpp"
#include "corr/interpolate.hpp"

extern "C" {

VEXO_API uint32_t vexo_corr_interpolate(uint32_t n, const GeomPoint *measured,
                                        const GeomPoint *nominal, double range, CorrTable *table) {
    if (!table || !measured || !nominal) return VEXO_ERROR_INVALID_PARAMETER;
    return vexo::interpolate_grid(n, measured, nominal, range, *table);
}

VEXO_API uint32_t vexo_corr_from_grid(uint32_t n, const GeomPoint *measured,
                                      const GeomPoint *nominal, double field_size,
                                      const CorrTable *base, CorrTable *table) {
    if (!table || !measured || !nominal) return VEXO_ERROR_INVALID_PARAMETER;
    return vexo::guard_status(
        [&] { return vexo::table_from_grid(n, measured, nominal, field_size, base, *table); });
}

VEXO_API uint32_t vexo_corr_set_scale(CorrTable *table, double scale) {
    // A scale of 0 would turn every cell into NaN.
    if (!table || scale == 0) return VEXO_ERROR_INVALID_PARAMETER;
    vexo::scale_field(*table, scale);
    return VEXO_OK;
}

VEXO_API uint32_t vexo_corr_set_focal(CorrTable *table, double focal_length, double field_size,
                                      double target_size) {
    if (!table || field_size == 0) return VEXO_ERROR_INVALID_PARAMETER;
    vexo::compensate_focus(*table, focal_length, field_size, target_size);
    return VEXO_OK;
}

VEXO_API uint32_t vexo_corr_adjust_single(CorrTable *table, const double *from, const double *to,
                                          double radius_factor, int32_t mode) {
    if (!table || !from || !to) return VEXO_ERROR_INVALID_PARAMETER;
    vexo::adjust_around(*table, from, to, radius_factor, mode);
    return VEXO_OK;
}

VEXO_API uint32_t vexo_corr_set_spatial(CorrTable *table, uint8_t side, double factor) {
    if (!table) return VEXO_ERROR_INVALID_PARAMETER;
    return vexo::scale_side(*table, side, factor) ? VEXO_OK : VEXO_ERROR_INVALID_PARAMETER;
}

} // extern "C"
