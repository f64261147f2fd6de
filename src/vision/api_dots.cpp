// SPDX-License-Identifier: MIT
// C boundary of dot finding: dots in a photo, to field units, in grid order.
#include <cstdlib>
#include <cstring>

#include "core/boundary.hpp"
#include "vexo.h"
#include "vision/dots_find.hpp"
#include "vision/dots_grid.hpp"

namespace {

// The dots as a C-heap GeomPoint array, each flagged as a dot.
GeomPoint *to_points(const std::vector<vexo::FoundDot> &dots) {
    auto *out = static_cast<GeomPoint *>(std::malloc(dots.size() * sizeof(GeomPoint)));
    if (!out) return nullptr;
    std::memset(out, 0, dots.size() * sizeof(GeomPoint));
    for (size_t i = 0; i < dots.size(); ++i) {
        out[i].x = dots[i].x;
        out[i].y = dots[i].y;
        out[i].z = dots[i].area;
        out[i].flags = 0x01u;
    }
    return out;
}

} // namespace

extern "C" {

VEXO_API GeomPoint *vexo_prcg_find_dots(const ImageBlock *image, const PrcgDotParams *params,
                                        uint32_t *count, uint32_t *status) {
    uint32_t result = VEXO_ERROR_INVALID_PARAMETER;
    GeomPoint *out = nullptr;
    if (count) *count = 0;
    if (count && params) {
        std::vector<vexo::FoundDot> dots;
        result = vexo::guard_status([&] { return vexo::find_dots(image, *params, dots); },
                                    VEXO_ERROR_NO_MEMORY);
        if (result == VEXO_OK && dots.size() > UINT32_MAX) result = VEXO_ERROR_NO_MEMORY;
        if (result == VEXO_OK) {
            out = to_points(dots);
            if (out)
                *count = uint32_t(dots.size());
            else
                result = VEXO_ERROR_NO_MEMORY;
        }
    }
    if (status) *status = result;
    return out;
}

VEXO_API uint32_t vexo_prcg_scale_dots(GeomPoint *dots, uint32_t count, double scale_x,
                                       double scale_y, const double *origin, uint32_t options) {
    return vexo::scale_dots(dots, count, scale_x, scale_y, origin, options);
}

VEXO_API uint32_t vexo_prcg_unrotate_dots(GeomPoint *dots, uint32_t count, uint32_t n,
                                          double *rotation, uint32_t options) {
    return vexo::guard_status(
        [&] { return vexo::unrotate_dots(dots, count, n, rotation, options); });
}

} // extern "C"
