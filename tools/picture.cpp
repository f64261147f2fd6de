// SPDX-License-Identifier: MIT
#include "picture.hpp"

#include <cairo-svg.h>

#include "cli.hpp"

namespace tool {

void write_picture(const std::string &path, bool svg, int width, int height,
                   const std::function<void(cairo_t *)> &draw) {
    cairo_surface_t *surface = svg ? cairo_svg_surface_create(path.c_str(), width, height)
                                   : cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height);
    cairo_t *cr = cairo_create(surface);
    draw(cr);
    cairo_status_t status = cairo_status(cr);
    cairo_destroy(cr);
    if (status == CAIRO_STATUS_SUCCESS && !svg)
        status = cairo_surface_write_to_png(surface, path.c_str());
    cairo_surface_finish(surface);
    if (status == CAIRO_STATUS_SUCCESS) status = cairo_surface_status(surface);
    cairo_surface_destroy(surface);
    if (status != CAIRO_STATUS_SUCCESS)
        throw cli::Failure(std::string("cannot write the picture: ") +
                           cairo_status_to_string(status));
}

} // namespace tool
