// SPDX-License-Identifier: MIT
// Circle and spiral generators, also the figures drawn for a shaped dot.
#pragma once

#include <cstdint>

#include "vexo.h"

namespace vexo {

// Spirals grow point by point; a pitch tiny against the radius would ask for
// an unbounded array, so a figure stops being a figure beyond this many
// points and the generator fails instead.
constexpr uint32_t kMaxFigurePoints = 1u << 24;

GeomPoint *create_circle(double radius, const GeomPoint &centre, double start, double end,
                         uint32_t steps, uint32_t *count) noexcept;

GeomPoint *create_spiral(double inner, double outer, const GeomPoint &centre, double start,
                         double pitch, uint32_t steps, bool reverse, bool outward,
                         uint32_t *count) noexcept;

} // namespace vexo
