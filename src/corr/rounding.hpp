// SPDX-License-Identifier: MIT
// Integer encodings used by the correction writers: round half away from
// zero after saturating to the target range, the integers the file formats
// store; hosts compare written files byte for byte.  NaN has no honest
// integer; it is written as 0.
#pragma once

#include <cmath>
#include <cstdint>

namespace vexo {

// Clamp to [lowest, highest], then add +-0.5 and truncate toward zero.
inline int64_t round_saturated(double v, double lowest, double highest) {
    if (std::isnan(v)) return 0;
    if (v < lowest) v = lowest;
    if (v > highest) v = highest;
    v = v >= 0.0 ? v + 0.5 : v - 0.5;
    return static_cast<int64_t>(v);
}

inline int32_t round_to_i32(double v) {
    return static_cast<int32_t>(round_saturated(v, -2147483648.0, 2147483647.0));
}

inline uint16_t round_to_u16(double v) {
    return static_cast<uint16_t>(round_saturated(v, 0.0, 65535.0));
}

} // namespace vexo
