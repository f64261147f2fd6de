// SPDX-License-Identifier: MIT
// C boundary of the marking operations: hatch fill, merging and travel
// order, closing, slicing and inner parts.  Arguments are checked here, the
// work runs through the guard, and the result is copied into one C-heap
// block, so a failure at any point leaves NULL, count 0 and a status.
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "core/boundary.hpp"
#include "geom/hatch.hpp"
#include "geom/marking.hpp"
#include "geom/polylines.hpp"

namespace {

void report(uint32_t *status, uint32_t value) {
    if (status) *status = value;
}

// Runs `work` (which fills a vector) and hands its result out.
template <class Work> GeomPoint *produce(uint32_t *out_count, uint32_t *status, Work work) {
    GeomPoint *block = nullptr;
    uint32_t n = 0;
    const uint32_t s = vexo::guard_status([&]() -> uint32_t {
        std::vector<GeomPoint> result;
        const uint32_t w = work(&result);
        if (w != VEXO_OK) return w;
        return vexo::hand_out(result, &block, &n);
    });
    if (s != VEXO_OK) {
        std::free(block);
        block = nullptr;
        n = 0;
    }
    if (out_count) *out_count = n;
    report(status, s);
    return block;
}

GeomPoint *refuse(uint32_t *out_count, uint32_t *status, uint32_t why) {
    if (out_count) *out_count = 0;
    report(status, why);
    return nullptr;
}

// The common checks: an output count, points for a non-zero count, finite
// x and y.  0 when the input is acceptable, else the status to report.
uint32_t check_points(const GeomPoint *points, uint32_t count, const uint32_t *out_count) {
    if (!out_count || (count > 0 && !points)) return VEXO_ERROR_INVALID_PARAMETER;
    if (!vexo::finite_xy(points, count)) return VEXO_ERROR_INVALID_PARAMETER;
    if (count == 0) return VEXO_ERROR_NO_RESULT;
    return 0;
}

bool finite_all(const double *v, size_t n) {
    for (size_t i = 0; i < n; ++i)
        if (!std::isfinite(v[i])) return false;
    return true;
}

} // namespace

extern "C" {

VEXO_API GeomPoint *vexo_geom_cover(const GeomPoint *rings, uint32_t count, const VexoHatch *params,
                                    uint32_t *out_count, uint32_t *status) {
    if (const uint32_t bad = check_points(rings, count, out_count))
        return refuse(out_count, status, bad);
    if (!params || !vexo::valid_hatch(*params))
        return refuse(out_count, status, VEXO_ERROR_INVALID_PARAMETER);
    const VexoHatch p = *params;
    return produce(out_count, status,
                   [&](std::vector<GeomPoint> *out) { return vexo::cover(rings, count, p, out); });
}

VEXO_API GeomPoint *vexo_geom_merge_lines(const GeomPoint *points, uint32_t count, double tolerance,
                                          uint32_t options, const GeomPoint *start,
                                          uint32_t *out_count, uint32_t *status) {
    if (const uint32_t bad = check_points(points, count, out_count))
        return refuse(out_count, status, bad);
    if (!(tolerance >= 0.0) || !std::isfinite(tolerance) || (start && !vexo::finite_xy(start, 1)))
        return refuse(out_count, status, VEXO_ERROR_INVALID_PARAMETER);
    const double sx = start ? start->x : 0.0, sy = start ? start->y : 0.0;
    return produce(out_count, status, [&](std::vector<GeomPoint> *out) {
        if (!(options & VEXO_MERGE_ORDER)) return vexo::merge_lines(points, count, tolerance, out);
        std::vector<GeomPoint> merged;
        const uint32_t s = vexo::merge_lines(points, count, tolerance, &merged);
        if (s != VEXO_OK) return s;
        return vexo::order_lines(merged.data(), static_cast<uint32_t>(merged.size()), options, sx,
                                 sy, out);
    });
}

VEXO_API GeomPoint *vexo_geom_order_lines(const GeomPoint *points, uint32_t count, uint32_t options,
                                          const GeomPoint *start, uint32_t *out_count,
                                          uint32_t *status) {
    if (const uint32_t bad = check_points(points, count, out_count))
        return refuse(out_count, status, bad);
    if (start && !vexo::finite_xy(start, 1))
        return refuse(out_count, status, VEXO_ERROR_INVALID_PARAMETER);
    const double sx = start ? start->x : 0.0, sy = start ? start->y : 0.0;
    return produce(out_count, status, [&](std::vector<GeomPoint> *out) {
        return vexo::order_lines(points, count, options, sx, sy, out);
    });
}

VEXO_API GeomPoint *vexo_geom_close_polygons(GeomPoint *points, uint32_t *count, double tolerance,
                                             uint32_t options, uint32_t *status) {
    if (!count) {
        report(status, VEXO_ERROR_INVALID_PARAMETER);
        return points;
    }
    uint32_t n = 0;
    const uint32_t bad = check_points(points, *count, &n);
    if (bad == VEXO_ERROR_NO_RESULT) {
        report(status, bad);
        return points;
    }
    if (bad || std::isnan(tolerance)) {
        // Refused input stays with the caller, untouched.
        report(status, VEXO_ERROR_INVALID_PARAMETER);
        return points;
    }
    GeomPoint *closed = produce(&n, status, [&](std::vector<GeomPoint> *out) {
        return vexo::close_polylines(points, *count, tolerance, options, out);
    });
    std::free(points);
    *count = n;
    return closed;
}

VEXO_API GeomPoint *vexo_geom_slice_line(const GeomPoint *points, uint32_t count,
                                         const double *line, uint32_t options, uint32_t *out_count,
                                         uint32_t *status) {
    if (const uint32_t bad = check_points(points, count, out_count))
        return refuse(out_count, status, bad);
    if (!line || !finite_all(line, 4) || (line[0] == line[2] && line[1] == line[3]) ||
        !(options & (VEXO_SLICE_LEFT | VEXO_SLICE_RIGHT)))
        return refuse(out_count, status, VEXO_ERROR_INVALID_PARAMETER);
    return produce(out_count, status, [&](std::vector<GeomPoint> *out) {
        return vexo::slice_by_line(points, count, line, options, out);
    });
}

VEXO_API GeomPoint *vexo_geom_slice_band(const GeomPoint *points, uint32_t count, uint32_t axis,
                                         double origin, double width, double overlap, int32_t band,
                                         uint32_t *out_count, uint32_t *status) {
    if (const uint32_t bad = check_points(points, count, out_count))
        return refuse(out_count, status, bad);
    const double values[] = {origin, width, overlap};
    if (axis > VEXO_BAND_Y || !finite_all(values, 3) || !(width > 0.0) || !(overlap >= 0.0))
        return refuse(out_count, status, VEXO_ERROR_INVALID_PARAMETER);
    const double k = static_cast<double>(band);
    const double lo = origin + k * width - overlap, hi = origin + (k + 1.0) * width + overlap;
    if (!std::isfinite(lo) || !std::isfinite(hi))
        return refuse(out_count, status, VEXO_ERROR_INVALID_PARAMETER);
    return produce(out_count, status, [&](std::vector<GeomPoint> *out) {
        return vexo::slice_slab(points, count, axis, lo, hi, out);
    });
}

VEXO_API GeomPoint *vexo_geom_inner_part(const GeomPoint *points, uint32_t count,
                                         const GeomPoint *rings, uint32_t ring_count,
                                         uint32_t options, uint32_t *out_count, uint32_t *status) {
    if (const uint32_t bad = check_points(points, count, out_count))
        return refuse(out_count, status, bad);
    if ((ring_count > 0 && !rings) || !vexo::finite_xy(rings, ring_count))
        return refuse(out_count, status, VEXO_ERROR_INVALID_PARAMETER);
    const bool outside = options & VEXO_PART_OUTSIDE;
    return produce(out_count, status, [&](std::vector<GeomPoint> *out) {
        return vexo::part_in_region(points, count, rings, ring_count, outside, out);
    });
}

VEXO_API GeomPoint *vexo_geom_inner_part_rect(const GeomPoint *points, uint32_t count,
                                              const double *rect, uint32_t *out_count,
                                              uint32_t *status) {
    if (const uint32_t bad = check_points(points, count, out_count))
        return refuse(out_count, status, bad);
    if (!rect || !std::isfinite(rect[0]) || !std::isfinite(rect[1]) || !std::isfinite(rect[3]) ||
        !std::isfinite(rect[4]))
        return refuse(out_count, status, VEXO_ERROR_INVALID_PARAMETER);
    return produce(out_count, status, [&](std::vector<GeomPoint> *out) {
        return vexo::part_in_rect(points, count, rect, out);
    });
}

} // extern "C"
