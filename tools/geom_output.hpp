// SPDX-License-Identifier: MIT
// What the geom commands share: IN and OUT with --size and --json, reading
// the input polylines, and writing a result by OUT's extension (polyline
// text, or an SVG or PNG picture) with its summary line.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "vexo.h"

namespace tool {

// The help footer that describes the polyline text form and the pictures.
extern const char *const kTextForm;

struct Output {
    std::string in, out;
    int size = 800;
    bool json = false;
};

struct Releaser {
    void operator()(GeomPoint *p) const { vexo_geom_release(p); }
};
using Result = std::unique_ptr<GeomPoint, Releaser>;

// A result with the input it came from, as the picture draws them.
struct Drawing {
    const std::vector<GeomPoint> *input;
    bool input_closed; // hatch contours are rings
    const GeomPoint *result;
    size_t count;
    int size;
};

void add_output_options(CLI::App *cmd, Output &o);
// The polylines of IN; no points is a failure.
std::vector<GeomPoint> read_input_polylines(const Output &o);
// Writes the result by OUT's extension, then reports it.
void finish(const Output &o, const char *command, const Drawing &d);
// Owns a library result; VEXO_ERROR_NO_RESULT and other failures throw
// cli::Failure naming `what`.
Result checked(GeomPoint *result, uint32_t status, const char *what);
uint32_t point_count(const std::vector<GeomPoint> &pts);

// vexo geom pattern (geom_pattern_command.cpp).
void add_pattern(CLI::App *group);

} // namespace tool
