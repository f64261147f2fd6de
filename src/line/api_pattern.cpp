// SPDX-License-Identifier: MIT
// C boundary of the line patterns.  Every parameter is checked before
// anything is allocated; the work runs through the guard, so a failure
// anywhere leaves NULL, count 0 and a status.
#include <cmath>
#include <cstdlib>

#include "core/boundary.hpp"
#include "core/constants.hpp"
#include "core/dots.hpp"
#include "line/pattern.hpp"

namespace {

constexpr uint32_t kPatternOptions = VEXO_PATTERN_2D | VEXO_PATTERN_FIT | VEXO_PATTERN_RING;

bool finite_points(const GeomPoint *points, uint32_t count) {
    for (uint32_t i = 0; i < count; ++i)
        if (!std::isfinite(points[i].x) || !std::isfinite(points[i].y) ||
            !std::isfinite(points[i].z))
            return false;
    return true;
}

// The checks every pattern shares: 0 when the input may be walked, else
// the status to report.
uint32_t check_input(const GeomPoint *points, uint32_t count, uint32_t options,
                     const uint32_t *out_count) {
    if (!out_count || (count > 0 && !points)) return VEXO_ERROR_INVALID_PARAMETER;
    if ((options & ~kPatternOptions) != 0) return VEXO_ERROR_INVALID_PARAMETER;
    if (!finite_points(points, count)) return VEXO_ERROR_INVALID_PARAMETER;
    return 0;
}

uint32_t check_dots(double pitch, double phase) {
    if (!(pitch > vexo::kZeroTolerance) || !std::isfinite(pitch))
        return VEXO_ERROR_INVALID_PARAMETER;
    if (!std::isfinite(phase)) return VEXO_ERROR_INVALID_PARAMETER;
    return 0;
}

uint32_t check_dash(const VexoDash *dash) {
    if (!dash || dash->count == 0 || dash->count > VEXO_DASH_MAX)
        return VEXO_ERROR_INVALID_PARAMETER;
    if (!std::isfinite(dash->offset)) return VEXO_ERROR_INVALID_PARAMETER;
    double period = 0.0;
    for (uint32_t i = 0; i < dash->count; ++i) {
        const double e = dash->lengths[i];
        if (!std::isfinite(e) || e < 0.0) return VEXO_ERROR_INVALID_PARAMETER;
        period += e;
    }
    if (!(period > vexo::kZeroTolerance) || !std::isfinite(period))
        return VEXO_ERROR_INVALID_PARAMETER;
    return 0;
}

GeomPoint *refuse(uint32_t why, uint32_t *out_count, uint32_t *status) {
    if (out_count) *out_count = 0;
    if (status) *status = why;
    return nullptr;
}

// Runs `work` (which returns a PatternResult) behind the guard and hands
// out its block, or NULL and count 0 with the status of the failure.
template <class Work> GeomPoint *produce(Work work, uint32_t *out_count, uint32_t *status) {
    GeomPoint *block = nullptr;
    uint32_t n = 0;
    const uint32_t s = vexo::guard_status([&]() -> uint32_t {
        const vexo::PatternResult r = work();
        block = r.points;
        n = r.count;
        return r.status;
    });
    if (s != VEXO_OK) {
        std::free(block);
        block = nullptr;
        n = 0;
    }
    if (out_count) *out_count = n;
    if (status) *status = s;
    return block;
}

GeomPoint *run_dots(const GeomPoint *points, uint32_t count, const vexo::DotPattern &pattern,
                    uint32_t *out_count, uint32_t *status) {
    if (const uint32_t why = check_input(points, count, pattern.options, out_count))
        return refuse(why, out_count, status);
    if (const uint32_t why = check_dots(pattern.pitch, pattern.phase))
        return refuse(why, out_count, status);
    if (count == 0) return refuse(VEXO_ERROR_NO_RESULT, out_count, status);
    return produce([&] { return vexo::dot_pattern(points, count, pattern); }, out_count, status);
}

} // namespace

extern "C" {

VEXO_API GeomPoint *vexo_line_to_pattern(const GeomPoint *points, uint32_t count, double pitch,
                                         double phase, uint32_t options, bool use_shape,
                                         const GeomDotShape *shape, uint32_t *out_count,
                                         uint32_t *status) {
    vexo::DotPattern pattern;
    pattern.pitch = pitch;
    pattern.phase = phase;
    pattern.options = options;
    pattern.shape = use_shape ? shape : nullptr;
    return run_dots(points, count, pattern, out_count, status);
}

VEXO_API GeomPoint *vexo_line_to_pattern2(const GeomPoint *points, uint32_t count, double pitch,
                                          double phase, uint32_t options, bool use_shape,
                                          const void *params, uint32_t *out_count,
                                          uint32_t *status) {
    GeomDotShape shape{};
    if (use_shape && params) shape = vexo::shape_from_params(params);
    vexo::DotPattern pattern;
    pattern.pitch = pitch;
    pattern.phase = phase;
    pattern.options = options;
    pattern.shape = use_shape && params ? &shape : nullptr;
    return run_dots(points, count, pattern, out_count, status);
}

VEXO_API GeomPoint *vexo_line_to_pattern3(const GeomPoint *points, uint32_t count,
                                          const VexoDash *dash, uint32_t *out_count,
                                          uint32_t *status) {
    if (const uint32_t why = check_dash(dash)) return refuse(why, out_count, status);
    if (const uint32_t why = check_input(points, count, dash->options, out_count))
        return refuse(why, out_count, status);
    if (count == 0) return refuse(VEXO_ERROR_NO_RESULT, out_count, status);
    return produce([&] { return vexo::dash_pattern(points, count, vexo::dash_pattern_of(*dash)); },
                   out_count, status);
}

} // extern "C"
