// SPDX-License-Identifier: MIT
// Numeric constants shared across families.
#pragma once

#include <cmath>

namespace vexo {

// pi and 2pi as the doubles nearest the single-precision values.  Hosts
// compare results bit for bit with values computed with these, so they are
// part of every angle conversion; the full-precision M_PI would change the
// last bits.
constexpr double kPiF = 3.1415927410125732;
constexpr double kTwoPiF = 6.2831854820251465;

// Below this a vector component or length counts as zero.
constexpr double kZeroTolerance = 1e-7;

// A difference component below the tolerance becomes exactly 0, so that
// directions of nearly axis-parallel segments compare exactly.
inline double snap_to_zero(double v) {
    return std::fabs(v) < kZeroTolerance ? 0.0 : v;
}

// Degrees to radians: divide by 360, then multiply by 2pi.  Another order
// changes the last bit, and hosts compare angles bit for bit.
inline double degrees_to_radians(double degrees) {
    return degrees / 360.0 * kTwoPiF;
}

// Radians to degrees with the single-precision pi.
inline double radians_to_degrees(double radians) {
    return radians * 0.5 / kPiF * 360.0;
}

} // namespace vexo
