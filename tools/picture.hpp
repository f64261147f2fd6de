// SPDX-License-Identifier: MIT
// Pictures the tool draws with cairo, written as PNG or SVG.
#pragma once

#include <functional>
#include <string>

#include <cairo.h>

namespace tool {

// Draws on a width x height surface (pixels; points for SVG) and writes it
// to path, an SVG when `svg`, else a PNG.  Throws cli::Failure with cairo's
// reason when drawing or writing fails.
void write_picture(const std::string &path, bool svg, int width, int height,
                   const std::function<void(cairo_t *)> &draw);

} // namespace tool
