// SPDX-License-Identifier: MIT
// ".txt" correction files: a "SIZE:" line giving the field size, then up to
// 25 five-line records (index, row position, column position, y, x) for
// the 5 x 5 nodes on every 16th line; the rest of the table is filled in
// linearly between them.
#include <cmath>
#include <string_view>

#include "corr/loaders.hpp"
#include "corr/table.hpp"
#include "corr/text_lines.hpp"
#include "corr/text_numbers.hpp"

namespace vexo {
namespace {

constexpr size_t kLineBuffer = 100;
constexpr int kMaxRecords = 25;
constexpr int kNodeSpacing = 16;

// atof: the number at the start of the line, 0 when there is none.
double number_in(std::string_view line) {
    double value = 0;
    read_double(line, value);
    return value;
}

// Grid line of a position in the field; false when it falls off the table.
bool node_line(double position, double field, int &line) {
    const double at = std::trunc(((position + field / 2) / field) * 64);
    if (!(at >= 0 && at <= 64)) return false;
    line = static_cast<int>(at);
    return true;
}

double mix(double a, double b, int k) {
    return (1 - k / 16.0) * a + (k / 16.0) * b;
}

// Columns 0, 16, .., 64 first, down their rows; then every row across.
void fill_between_nodes(CorrTable &table) {
    for (int c = 0; c < kCorrSide; c += kNodeSpacing)
        for (int top = 0; top < 64; top += kNodeSpacing)
            for (int k = 1; k < kNodeSpacing; ++k) {
                const GeomPoint &a = corr_cell(table, top, c);
                const GeomPoint &b = corr_cell(table, top + kNodeSpacing, c);
                GeomPoint &cell = corr_cell(table, top + k, c);
                cell.x = mix(a.x, b.x, k);
                cell.y = mix(a.y, b.y, k);
            }
    for (int r = 0; r < kCorrSide; ++r)
        for (int left = 0; left < 64; left += kNodeSpacing)
            for (int k = 1; k < kNodeSpacing; ++k) {
                const GeomPoint &a = corr_cell(table, r, left);
                const GeomPoint &b = corr_cell(table, r, left + kNodeSpacing);
                GeomPoint &cell = corr_cell(table, r, left + k);
                cell.x = mix(a.x, b.x, k);
                cell.y = mix(a.y, b.y, k);
            }
}

} // namespace

uint32_t parse_txt(ByteSpan file, CorrTable &table) {
    TextLineReader lines(file);
    std::string_view line;
    if (!lines.next(kLineBuffer, line) || line.find("SIZE:") == std::string_view::npos)
        return VEXO_ERROR_INVALID_HEADER;
    // The number is read from the sixth character on: the line is meant to
    // begin with the tag.
    const double field = number_in(line.substr(5));
    if (field == 0 || !std::isfinite(field)) return VEXO_ERROR_INVALID_DATA;

    for (int record = 0; record < kMaxRecords; ++record) {
        double values[4];
        bool complete = lines.next(kLineBuffer, line); // index, not used
        for (double &value : values) {
            complete = complete && lines.next(kLineBuffer, line);
            value = complete ? number_in(line) : 0;
        }
        if (!complete) break;
        int row = 0;
        int column = 0;
        if (!node_line(values[0], field, row) || !node_line(values[1], field, column))
            return VEXO_ERROR_INVALID_DATA;
        // The fourth line of a record is the y deflection, the fifth the x.
        GeomPoint &cell = corr_cell(table, row, column);
        cell.y = values[2] * 65535 / field;
        cell.x = values[3] * 65535 / field;
    }
    fill_between_nodes(table);
    return VEXO_OK;
}

} // namespace vexo
