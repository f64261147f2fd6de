// SPDX-License-Identifier: MIT
// Line-by-line reading of a correction text file held in memory, piece by
// piece exactly as the C runtime's fgets with a fixed buffer hands lines
// out: a line longer than the buffer arrives as several pieces, and the
// loaders' record counting depends on that.
#pragma once

#include <cstddef>
#include <string_view>

#include "corr/loaders.hpp"

namespace vexo {

class TextLineReader {
public:
    // Longest buffer any loader reads with (fgets's size argument).
    static constexpr size_t kMaxBuffer = 128;

    explicit TextLineReader(ByteSpan file) noexcept : file_(file) {}

    // The next piece as fgets(buffer, buffer_size) would read it: at most
    // buffer_size - 1 characters, ending after a '\n' if one comes first.
    // False at end of file with nothing read.  The files come from text-mode
    // readers, so "\r\n" counts as a single '\n'.  The view ends at the
    // first zero byte, where the string functions applied to the buffer stop.
    bool next(size_t buffer_size, std::string_view &piece) noexcept;

private:
    ByteSpan file_;
    size_t pos_ = 0;
    char buffer_[kMaxBuffer];
};

inline bool starts_with(std::string_view text, std::string_view prefix) noexcept {
    return text.substr(0, prefix.size()) == prefix;
}

} // namespace vexo
