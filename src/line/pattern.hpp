// SPDX-License-Identifier: MIT
// Line patterns: dots every pitch, or dashes from a dash array, along the
// polylines of a point array.  Parameters are checked by the callers (the
// C boundary); these functions assume finite input and a valid pattern.
#pragma once

#include <cstdint>
#include <vector>

#include "vexo.h"

namespace vexo {

// The largest result a pattern builds (2 GiB of points), and the most
// dash entries it walks along one polyline: beyond either the answer is
// VEXO_ERROR_NO_MEMORY (for dots decided before the result is allocated).
constexpr uint32_t kMaxPatternPoints = 1u << 26;

struct PatternResult {
    GeomPoint *points = nullptr; // C-heap block owned by the caller
    uint32_t count = 0;
    uint32_t status = VEXO_OK;
};

struct DotPattern {
    double pitch = 0.0;                  // > 1e-7
    double phase = 0.0;                  // any finite value, taken modulo pitch
    uint32_t options = 0;                // VEXO_PATTERN_ bits
    const GeomDotShape *shape = nullptr; // NULL: one point per dot
};

// One dot per pitch along each polyline (see vexo_line_to_pattern).
PatternResult dot_pattern(const GeomPoint *points, uint32_t count, const DotPattern &pattern);

struct DashPattern {
    std::vector<double> lengths; // on, off, ... (even count, sum > 1e-7)
    double offset = 0.0;         // any finite value, taken modulo the period
    uint32_t options = 0;        // VEXO_PATTERN_ bits
};

// The dash array of `dash` as walked: an odd count repeated once.
DashPattern dash_pattern_of(const VexoDash &dash);

// Dashes along each polyline (see vexo_line_to_pattern3).
PatternResult dash_pattern(const GeomPoint *points, uint32_t count, const DashPattern &pattern);

// `value` modulo `period` in [0, period).
double wrap_into_period(double value, double period);

// The number of whole periods a fitted pattern gets on a polyline of
// `length`: round(length / period) on a ring, round((length - lead) /
// period) on an open polyline, where `lead` is the first entry (the open
// polyline ends with it too); at least 1 on a ring or when lead is 0.
double fit_periods(double length, double period, double lead, bool ring);

} // namespace vexo
