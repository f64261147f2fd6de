// SPDX-License-Identifier: MIT
// Double to 64-bit integer by truncation, defined for every input.
#pragma once

#include <cstdint>

namespace vexo {

// Values outside the int64 range and NaN give INT64_MIN, the "integer
// indefinite" that the x86 truncating conversion produces: results that
// hosts have long compared against were made with that conversion, and a
// plain cast would be undefined behaviour here.
inline int64_t truncate_to_int64(double v) {
    constexpr double kLimit = 9223372036854775808.0; // 2^63
    if (!(v >= -kLimit && v < kLimit)) return INT64_MIN;
    return static_cast<int64_t>(v);
}

} // namespace vexo
