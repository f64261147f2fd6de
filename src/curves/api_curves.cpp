// SPDX-License-Identifier: MIT
// C boundary of the curve generators.
#include <cstdlib>

#include "core/boundary.hpp"
#include "curves/bezier.hpp"
#include "curves/spline.hpp"

namespace {
void *plain_malloc(size_t bytes) {
    return std::malloc(bytes);
}
} // namespace

extern "C" {

VEXO_API uint32_t vexo_bezier_get_curve3d(const double *controls, int32_t count, GeomPoint *out,
                                          uint32_t steps) {
    if (count > vexo::kMaxBezierControls) return VEXO_ERROR_INVALID_PARAMETER;
    if (steps == 0) return VEXO_OK;
    if (count <= 0 || controls == nullptr || out == nullptr) return VEXO_ERROR_INVALID_PARAMETER;
    vexo::sample_bezier(controls, count, out, steps);
    return VEXO_OK;
}

VEXO_API uint32_t vexo_spline_get_curve2d(const double *knots, int32_t count, GeomPoint *points,
                                          int32_t m) {
    if (knots == nullptr || count < 2 || m < 0 || (points == nullptr && m > 0))
        return VEXO_ERROR_INVALID_PARAMETER;
    return vexo::guard_status(
        [&] { return vexo::evaluate_spline(knots, count, points, m, plain_malloc); });
}

} // extern "C"
