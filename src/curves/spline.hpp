// SPDX-License-Identifier: MIT
// Natural cubic splines through 2D knots, evaluated at caller-given x.
#pragma once

#include <cstddef>
#include <cstdint>

#include "vexo.h"

namespace vexo {

// End slopes above this select the natural end condition (y2 = 0).
constexpr double kNaturalEndThreshold = 9.9e29;
// The slope passed for both ends: natural at both.
constexpr double kNaturalEnd = 3e30;

// Second derivatives y2[0..n) of the spline through (xs, ys), n >= 2, with
// the given end slopes; `scratch` holds n - 1 values.
void spline_second_derivatives(const double *xs, const double *ys, int n, double slope_start,
                               double slope_end, double *y2, double *scratch);

// Finds the knot interval [*lo, *lo + 1] for x by bisection.  `lo`/`hi`
// carry the previous bracket as a starting guess (0 and n - 1 at first);
// the result is always the interval a bisection over the whole range finds.
void bracket_knots(const double *xs, int n, bool ascending, double x, int *lo, int *hi);

// True when xs never decreases (the warm start relies on it).
bool knots_ascending(const double *xs, int n);

using WorkAllocator = void *(*)(size_t bytes);

// The whole evaluation: status VEXO_OK, VEXO_ERROR_NO_MEMORY or
// VEXO_SPLINE_EQUAL_KNOTS.  Work buffers come from `allocate` (freed with
// free), so tests can make any of them fail.
uint32_t evaluate_spline(const double *knots, int count, GeomPoint *points, int m,
                         WorkAllocator allocate);

} // namespace vexo
