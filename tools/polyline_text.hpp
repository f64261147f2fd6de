// SPDX-License-Identifier: MIT
// Polylines as plain text, the form the tool reads and writes them in:
//
//   # a comment line (also after the numbers of a point: "1 2 # corner")
//   x y [z]        one point per line, numbers separated by spaces or tabs
//                  (blank line: the polyline ends; z is 0 when left out)
//
// Numbers use the C locale's syntax whatever the host's locale ("1.5", "-2e3");
// NaN and infinities are refused.  A polyline may be a single point (a dot).
// Read points carry VEXO_POINT_END | VEXO_POINT_END_MARK on the last point of
// each polyline, as the library's own results do, and flags 0 elsewhere.  The
// writer prints the shortest decimal form that reads back to the same double,
// so write -> read gives the same bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "cli.hpp"
#include "vexo.h"

namespace tool {

// Files larger than this are refused before reading (the text of 2^24
// points at full precision).
constexpr size_t kMaxPolylineBytes = size_t(256) << 20;
// Points beyond this are refused: 2^24 points are 512 MiB as GeomPoint.
constexpr size_t kMaxPolylinePoints = size_t(1) << 24;

// What one line of text holds.
enum class TextLine { Blank, Comment, Point };

// Reads one line (without its line break; a trailing '\r' is ignored).
// For a point line, stores x, y and z (0 when missing) in *point, flags 0.
// A line that is not blank, a comment or 2 or 3 finite numbers throws
// cli::Failure "NAME: line N: cause".
TextLine parse_text_line(const char *text, size_t length, const std::string &name,
                         size_t line_number, GeomPoint *point);

// The numbers of one line (a trailing '\r' ignored, '#' starts a comment),
// at most `capacity` of them, into numbers; returns how many.  More than
// capacity throws cli::Failure "NAME: line N: " + too_many; a token that is
// not a finite number throws as parse_text_line does.  *blank (may be NULL)
// says, when none is found, whether the line was blank rather than a
// comment.
size_t parse_line_numbers(const char *text, size_t length, const std::string &name,
                          size_t line_number, double *numbers, size_t capacity,
                          const char *too_many, bool *blank);

// Calls visit(text, length, line_number) for each line of data (numbered
// from 1, without its '\n'); a final line break ends the last line.
void each_line(const uint8_t *data, size_t size,
               const std::function<void(const char *, size_t, size_t)> &visit);

// Parses a whole text (see above); throws cli::Failure "NAME: line N:
// cause" at the first bad line, or "NAME: more than ... points".
std::vector<GeomPoint> parse_polylines(const uint8_t *data, size_t size, const std::string &name);

// Reads path ("-": standard input) through cli::read_input with the size
// limit, then parses it; messages name the file ("standard input" for "-").
// Inline, so that users of the parser alone (the fuzz target) need not link
// the library functions cli.cpp calls.
inline std::vector<GeomPoint> read_polylines(const std::string &path) {
    const std::vector<uint8_t> bytes = cli::read_input(path, kMaxPolylineBytes);
    return parse_polylines(bytes.data(), bytes.size(), path == "-" ? "standard input" : path);
}

// The shortest text that reads back as exactly v ("-0" for negative zero).
std::string format_number(double v);

// Writes points as text: a blank line after each point flagged
// VEXO_POINT_END (and none after the last), z only when some point's z is
// not +0.0.  Returns false when the stream reports a write error.
bool write_polylines(std::FILE *out, const GeomPoint *points, size_t count);

} // namespace tool
