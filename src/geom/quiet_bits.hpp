// SPDX-License-Identifier: MIT
// The distance reduction's fast lane: which points of a stretch its first
// step can step over without a full test, 64 at a time as bits.  A point
// qualifies when it is not processed and either ends its line or lies
// surely farther than the minimum distance from its predecessor, decided
// on squared distances against a bound with a margin (see CloserThan in
// reduce.cpp).  The bits are identical on every path; the 256-bit one runs
// only where wide_reduce_available().
#pragma once

#include <cstdint>

#include "vexo.h"

namespace vexo {

// Bit j - base for each j in [first, end), where 1 <= first, base <= first
// and end - base <= 64: set where points[j] is not processed and is a line
// end or has a squared distance to points[j - 1] (x and y, plus z when
// WithZ) above surely_above.  NaN anywhere clears the bit.
template <bool WithZ>
uint64_t quiet_bits(const GeomPoint *points, uint32_t base, uint32_t first, uint32_t end,
                    double surely_above) noexcept;

} // namespace vexo
