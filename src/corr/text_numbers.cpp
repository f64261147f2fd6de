// SPDX-License-Identifier: MIT
#include "corr/text_numbers.hpp"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <locale.h>

#ifdef _WIN32
using c_locale_handle = _locale_t;
#else
using c_locale_handle = locale_t;
#endif

namespace vexo {
namespace {

constexpr size_t kMaxNumberChars = 255;

// The classic "C" locale, created once; null only if the system could not
// create it, in which case no float conversion succeeds.
c_locale_handle c_locale() noexcept {
#ifdef _WIN32
    static const c_locale_handle handle = _create_locale(LC_ALL, "C");
#else
    static const c_locale_handle handle = newlocale(LC_ALL_MASK, "C", c_locale_handle{});
#endif
    return handle;
}

// isspace() of the C locale; the host's locale may classify more bytes.
bool is_c_space(char c) noexcept {
    return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

size_t skip_space(std::string_view text) noexcept {
    size_t i = 0;
    while (i < text.size() && is_c_space(text[i])) ++i;
    return i;
}

// Copies what may be the number into a terminated local buffer, runs the C
// conversion on it and reports how many characters of `text` it used.
template <class T, class Convert>
size_t convert_bounded(std::string_view text, T &value, Convert convert) noexcept {
    value = T{};
    const c_locale_handle locale = c_locale();
    if (!locale) return 0;
    const size_t lead = skip_space(text);
    char token[kMaxNumberChars + 1];
    const size_t length = std::min(text.size() - lead, kMaxNumberChars);
    std::memcpy(token, text.data() + lead, length);
    token[length] = '\0';
    char *end = token;
    const T converted = convert(token, &end, locale);
    if (end == token) return 0;
    value = converted;
    return lead + static_cast<size_t>(end - token);
}

} // namespace

size_t read_double(std::string_view text, double &value) noexcept {
    return convert_bounded(text, value, [](const char *s, char **end, c_locale_handle loc) {
#ifdef _WIN32
        return _strtod_l(s, end, loc);
#else
        return strtod_l(s, end, loc);
#endif
    });
}

size_t read_float(std::string_view text, float &value) noexcept {
    return convert_bounded(text, value, [](const char *s, char **end, c_locale_handle loc) {
#ifdef _WIN32
        return _strtof_l(s, end, loc);
#else
        return strtof_l(s, end, loc);
#endif
    });
}

size_t read_int32(std::string_view text, int32_t &value) noexcept {
    value = 0;
    size_t i = skip_space(text);
    bool negative = false;
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) {
        negative = text[i] == '-';
        ++i;
    }
    const size_t first_digit = i;
    // Accumulated as a magnitude that stops growing past the 32-bit range,
    // so any number of digits is consumed without overflow.
    constexpr int64_t kCap = int64_t{INT32_MAX} + 1;
    int64_t magnitude = 0;
    while (i < text.size() && text[i] >= '0' && text[i] <= '9') {
        if (magnitude <= kCap) magnitude = magnitude * 10 + (text[i] - '0');
        ++i;
    }
    if (i == first_digit) return 0;
    if (negative)
        value = magnitude >= kCap ? INT32_MIN : static_cast<int32_t>(-magnitude);
    else
        value = magnitude > INT32_MAX ? INT32_MAX : static_cast<int32_t>(magnitude);
    return i;
}

} // namespace vexo
