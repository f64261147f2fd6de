// SPDX-License-Identifier: MIT
// C boundary of the circle and spiral generators.
#include "core/figures.hpp"

extern "C" {

VEXO_API GeomPoint *vexo_geom_create_circle(double radius, const GeomPoint *centre, double start,
                                            double end, uint32_t steps, uint32_t *count) {
    if (!centre) {
        if (count) *count = 0;
        return nullptr;
    }
    return vexo::create_circle(radius, *centre, start, end, steps, count);
}

VEXO_API GeomPoint *vexo_geom_create_spiral(double inner, double outer, const GeomPoint *centre,
                                            double start, double pitch, uint32_t steps,
                                            uint8_t reverse, uint8_t outward, uint32_t *count) {
    if (!count) return nullptr;
    if (!centre) {
        *count = 0;
        return nullptr;
    }
    return vexo::create_spiral(inner, outer, *centre, start, pitch, steps, reverse != 0,
                               outward != 0, count);
}

} // extern "C"
