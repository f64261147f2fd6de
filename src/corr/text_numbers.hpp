// SPDX-License-Identifier: MIT
// Numbers in correction text files.  The files are written by machines that
// always use a decimal point, so every conversion here follows C-locale
// rules whatever locale the host process has set, and none of them reads
// past the end of the text it is given (file bytes are not zero-terminated).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vexo {

// Like strtod: leading whitespace, sign, decimal or hex digits, exponent,
// inf and nan.  Returns the number of characters used; 0 when no number
// starts there, and `value` is then 0.  At most 255 characters after the
// leading whitespace are looked at, far more than a file line can hold.
size_t read_double(std::string_view text, double &value) noexcept;

// Like strtof (and scanf's "%f"): the same syntax, rounded straight to
// single precision.
size_t read_float(std::string_view text, float &value) noexcept;

// Like strtol in base 10 (and scanf's "%d"): leading whitespace, optional
// sign, decimal digits.  Saturates at the 32-bit range, as the C runtime of
// the machines that wrote these files does, so a result never depends on the
// host's width of `long`.  Returns the characters used, 0 (value 0) when no
// digit follows.
size_t read_int32(std::string_view text, int32_t &value) noexcept;

} // namespace vexo
