// SPDX-License-Identifier: MIT
// XML-like correction files: three tag-introduced lists of 4225 integers
// (x, y, z offsets) in row-major order.  The files are not real XML; the
// reader looks for its tags by plain text search.
#include <cstring>
#include <string_view>

#include "corr/loaders.hpp"
#include "corr/table.hpp"
#include "corr/text_numbers.hpp"

namespace vexo {
namespace {

// The foreign offsets sit on a grid of exactly 1024 units per node.
constexpr double kForeignPitch = 1024;

// Cursor over one comma-separated integer list.  Past the last comma every
// further value reads as 0, as the conversion does at the end of a string.
class IntegerList {
public:
    IntegerList(std::string_view text, size_t start) : text_(text), pos_(start) {}

    // The next value truncated to 16 bits, then the cursor moves past the
    // following comma (or to the end of the text when none is left).
    int16_t next() {
        const std::string_view rest = text_.substr(pos_);
        int32_t value = 0;
        read_int32(rest, value);
        const size_t comma = rest.find(',');
        pos_ = comma == std::string_view::npos ? text_.size() : pos_ + comma + 1;
        return static_cast<int16_t>(static_cast<uint16_t>(static_cast<uint32_t>(value)));
    }

private:
    std::string_view text_;
    size_t pos_;
};

enum class Axis { x, y, z };

void read_axis(std::string_view text, size_t list_start, Axis axis, CorrTable &table) {
    IntegerList list(text, list_start);
    for (int r = 0; r < kCorrSide; ++r) {
        for (int c = 0; c < kCorrSide; ++c) {
            const int16_t v = list.next();
            GeomPoint &cell = corr_cell(table, r, c);
            if (axis == Axis::x)
                cell.x = v + c * kForeignPitch - kCorrHalfRange;
            else if (axis == Axis::y)
                cell.y = v + r * kForeignPitch - kCorrHalfRange;
            else
                cell.z = v;
        }
    }
}

// Start of the list after `tag`, searched from `from`; npos when missing.
size_t find_list(std::string_view text, size_t from, std::string_view tag) {
    const size_t at = text.find(tag, from);
    return at == std::string_view::npos ? at : at + tag.size();
}

} // namespace

uint32_t parse_xml(ByteSpan file, CorrTable &table) {
    // The writers zero-terminate nothing; a stray zero byte ends the text,
    // as it does for every reader that treats the file as one C string.
    const char *bytes = reinterpret_cast<const char *>(file.data);
    std::string_view text(bytes, file.size);
    text = text.substr(0, text.find('\0'));

    const size_t data = text.find("<Data");
    // The tags are searched from one character past "<Data", all three from
    // that same place, so their order in the file does not matter.
    const size_t from = data == std::string_view::npos ? data : data + 6;
    if (from == std::string_view::npos || from > text.size()) return VEXO_ERROR_INVALID_DATA;

    const size_t x_list = find_list(text, from, "<x-axis>");
    if (x_list == std::string_view::npos) return VEXO_ERROR_INVALID_DATA;
    read_axis(text, x_list, Axis::x, table);

    const size_t y_list = find_list(text, from, "<y-axis>");
    if (y_list == std::string_view::npos) return VEXO_ERROR_INVALID_DATA;
    read_axis(text, y_list, Axis::y, table);

    const size_t z_list = find_list(text, from, "<z-axis>");
    if (z_list != std::string_view::npos) read_axis(text, z_list, Axis::z, table);
    return VEXO_OK;
}

} // namespace vexo
