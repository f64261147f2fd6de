// SPDX-License-Identifier: MIT
#include "grid_text.hpp"

#include <algorithm>
#include <cmath>

#include "cli.hpp"
#include "polyline_text.hpp"

namespace tool {
namespace {

struct Mark {
    double nx, ny, mx, my;
    size_t line;
};

std::vector<Mark> read_marks(const uint8_t *data, size_t size, const std::string &name) {
    std::vector<Mark> marks;
    const uint64_t most = uint64_t{kMaxGridSide} * kMaxGridSide;
    each_line(data, size, [&](const char *text, size_t length, size_t line) {
        double v[4];
        const size_t found = parse_line_numbers(
            text, length, name, line, v, 4,
            "more than 4 numbers (a mark is nominal_x nominal_y measured_x measured_y)", nullptr);
        if (found == 0) return;
        if (found != 4)
            throw cli::Failure(name + ": line " + std::to_string(line) + ": " +
                               std::to_string(found) +
                               " numbers, a mark needs 4 (nominal_x nominal_y measured_x "
                               "measured_y)");
        if (marks.size() == most)
            throw cli::Failure(name + ": line " + std::to_string(line) + ": more than " +
                               std::to_string(most) + " marks");
        marks.push_back({v[0], v[1], v[2], v[3], line});
    });
    return marks;
}

std::vector<double> distinct(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    values.erase(std::unique(values.begin(), values.end()), values.end());
    return values;
}

size_t index_of(const std::vector<double> &axis, double v) {
    return size_t(std::lower_bound(axis.begin(), axis.end(), v) - axis.begin());
}

} // namespace

MeasuredGrid parse_measured_grid(const uint8_t *data, size_t size, const std::string &name) {
    const std::vector<Mark> marks = read_marks(data, size, name);
    const auto n = uint32_t(std::lround(std::sqrt(double(marks.size()))));
    if (marks.size() < 4 || uint64_t{n} * n != marks.size())
        throw cli::Failure(name + ": " + std::to_string(marks.size()) +
                           " marks do not make an n x n grid with n >= 2");
    std::vector<double> xs, ys;
    for (const Mark &m : marks) xs.push_back(m.nx), ys.push_back(m.ny);
    xs = distinct(xs);
    ys = distinct(ys);
    if (xs.size() != n || ys.size() != n)
        throw cli::Failure(name + ": the nominal places have " + std::to_string(xs.size()) +
                           " x values and " + std::to_string(ys.size()) + " y values; an " +
                           std::to_string(n) + " x " + std::to_string(n) + " grid has " +
                           std::to_string(n) + " of each");
    MeasuredGrid grid;
    grid.n = n;
    grid.nominal.assign(marks.size(), GeomPoint{});
    grid.measured.assign(marks.size(), GeomPoint{});
    std::vector<size_t> line_of(marks.size(), 0);
    for (const Mark &m : marks) {
        const size_t k = index_of(ys, m.ny) * n + index_of(xs, m.nx);
        if (line_of[k] != 0)
            throw cli::Failure(name + ": line " + std::to_string(m.line) + ": nominal place " +
                               format_number(m.nx) + " " + format_number(m.ny) +
                               " already given on line " + std::to_string(line_of[k]));
        line_of[k] = m.line;
        grid.nominal[k].x = m.nx;
        grid.nominal[k].y = m.ny;
        grid.measured[k].x = m.mx;
        grid.measured[k].y = m.my;
    }
    return grid;
}

std::string measured_grid_text(const MeasuredGrid &grid) {
    std::string text = "# nominal_x nominal_y measured_x measured_y (mm)\n";
    for (size_t k = 0; k < grid.nominal.size(); ++k)
        text += format_number(grid.nominal[k].x) + " " + format_number(grid.nominal[k].y) + " " +
                format_number(grid.measured[k].x) + " " + format_number(grid.measured[k].y) + "\n";
    return text;
}

} // namespace tool
