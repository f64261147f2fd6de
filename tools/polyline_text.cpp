// SPDX-License-Identifier: MIT
#include "polyline_text.hpp"

#include <charconv>
#include <cmath>
#include <cstring>
#include <system_error>

#include "cli.hpp"

namespace tool {
namespace {

bool is_space(char c) {
    return c == ' ' || c == '\t';
}

// A shown token is cut to this many bytes, so a huge line cannot make a
// huge message.
constexpr size_t kShownToken = 40;

std::string shown(const char *token, size_t length) {
    std::string text(token, length < kShownToken ? length : kShownToken);
    if (length > kShownToken) text += "...";
    for (char &c : text)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) c = '?';
    return "'" + text + "'";
}

[[noreturn]] void bad_line(const std::string &name, size_t line_number, const std::string &cause) {
    throw cli::Failure(name + ": line " + std::to_string(line_number) + ": " + cause);
}

// One number in the C locale's syntax (from_chars takes no locale), with an
// optional '+' that from_chars leaves out.
double parse_number(const char *token, size_t length, const std::string &name, size_t line_number) {
    const char *first = token, *last = token + length;
    if (length > 1 && *first == '+' && first[1] != '-' && first[1] != '+') ++first;
    double v = 0;
    const std::from_chars_result r = std::from_chars(first, last, v);
    if (r.ec == std::errc::result_out_of_range)
        bad_line(name, line_number, shown(token, length) + " is beyond the range of a double");
    if (r.ec != std::errc() || r.ptr != last)
        bad_line(name, line_number, shown(token, length) + " is not a number");
    if (!std::isfinite(v)) bad_line(name, line_number, shown(token, length) + " is not finite");
    return v;
}

} // namespace

size_t parse_line_numbers(const char *text, size_t length, const std::string &name,
                          size_t line_number, double *numbers, size_t capacity,
                          const char *too_many, bool *blank) {
    if (length > 0 && text[length - 1] == '\r') --length;
    size_t found = 0;
    size_t i = 0;
    while (true) {
        while (i < length && is_space(text[i])) ++i;
        if (i == length || text[i] == '#') break;
        const size_t start = i;
        while (i < length && !is_space(text[i]) && text[i] != '#') ++i;
        if (found == capacity) bad_line(name, line_number, too_many);
        numbers[found++] = parse_number(text + start, i - start, name, line_number);
    }
    // Only white space before the end: blank; anything else was a '#'.
    if (blank) *blank = found == 0 && i == length;
    return found;
}

TextLine parse_text_line(const char *text, size_t length, const std::string &name,
                         size_t line_number, GeomPoint *point) {
    double numbers[3] = {0, 0, 0};
    bool blank = false;
    const size_t found = parse_line_numbers(text, length, name, line_number, numbers, 3,
                                            "more than 3 numbers (a point is x y [z])", &blank);
    if (found == 0) return blank ? TextLine::Blank : TextLine::Comment;
    if (found == 1) bad_line(name, line_number, "1 number, a point needs 2 or 3 (x y [z])");
    std::memset(point, 0, sizeof *point);
    point->x = numbers[0];
    point->y = numbers[1];
    point->z = numbers[2];
    return TextLine::Point;
}

void each_line(const uint8_t *data, size_t size,
               const std::function<void(const char *, size_t, size_t)> &visit) {
    const char *text = reinterpret_cast<const char *>(data);
    size_t line_number = 0;
    for (size_t pos = 0; pos < size;) {
        const void *found = std::memchr(text + pos, '\n', size - pos);
        const size_t end = found ? size_t(static_cast<const char *>(found) - text) : size;
        visit(text + pos, end - pos, ++line_number);
        pos = end + 1;
    }
}

std::vector<GeomPoint> parse_polylines(const uint8_t *data, size_t size, const std::string &name) {
    std::vector<GeomPoint> points;
    bool open = false; // the last point read has no end flag yet
    each_line(data, size, [&](const char *text, size_t length, size_t line_number) {
        GeomPoint p;
        const TextLine kind = parse_text_line(text, length, name, line_number, &p);
        if (kind == TextLine::Point) {
            if (points.size() == kMaxPolylinePoints)
                bad_line(name, line_number,
                         "more than " + std::to_string(kMaxPolylinePoints) + " points");
            points.push_back(p);
            open = true;
        } else if (kind == TextLine::Blank && open) {
            points.back().flags = VEXO_POINT_END | VEXO_POINT_END_MARK;
            open = false;
        }
    });
    if (open) points.back().flags = VEXO_POINT_END | VEXO_POINT_END_MARK;
    return points;
}

std::string format_number(double v) {
    char text[32]; // the longest shortest form of a double is 24 characters
    const std::to_chars_result r = std::to_chars(text, text + sizeof text, v);
    return std::string(text, r.ptr);
}

bool write_polylines(std::FILE *out, const GeomPoint *points, size_t count) {
    bool with_z = false;
    for (size_t i = 0; i < count && !with_z; ++i)
        with_z = points[i].z != 0.0 || std::signbit(points[i].z);
    for (size_t i = 0; i < count; ++i) {
        const GeomPoint &p = points[i];
        std::string line = format_number(p.x) + ' ' + format_number(p.y);
        if (with_z) line += ' ' + format_number(p.z);
        line += '\n';
        if ((p.flags & VEXO_POINT_END) && i + 1 < count) line += '\n';
        if (std::fwrite(line.data(), 1, line.size(), out) != line.size()) return false;
    }
    return std::fflush(out) == 0 && !std::ferror(out);
}

} // namespace tool
