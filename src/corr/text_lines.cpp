// SPDX-License-Identifier: MIT
#include "corr/text_lines.hpp"

#include <algorithm>

namespace vexo {

bool TextLineReader::next(size_t buffer_size, std::string_view &piece) noexcept {
    const size_t room = std::min(buffer_size, kMaxBuffer);
    if (room < 2 || pos_ >= file_.size) return false;
    size_t length = 0;
    while (length + 1 < room && pos_ < file_.size) {
        char c = static_cast<char>(file_.data[pos_++]);
        if (c == '\r' && pos_ < file_.size && file_.data[pos_] == '\n')
            c = static_cast<char>(file_.data[pos_++]);
        buffer_[length++] = c;
        if (c == '\n') break;
    }
    piece = std::string_view(buffer_, length);
    piece = piece.substr(0, piece.find('\0'));
    return true;
}

} // namespace vexo
