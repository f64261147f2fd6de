// SPDX-License-Identifier: MIT
// Bezier curves of up to 32 control points sampled at evenly spaced
// parameters.
#pragma once

#include <cstdint>

#include "vexo.h"

namespace vexo {

constexpr int kMaxBezierControls = 32;

// C(k, i) from the factorial table; 0 when k, i or k - i lies outside 0..32.
double binomial(int k, int i);

// Bernstein basis B(k, i, t) = C(k, i) t^i (1 - t)^(k - i).
double bernstein(int k, int i, double t);

// Fills out[0 .. steps) from `count` (1..32) packed x, y, z control points.
void sample_bezier(const double *controls, int count, GeomPoint *out, uint32_t steps);

} // namespace vexo
