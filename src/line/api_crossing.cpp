// SPDX-License-Identifier: MIT
// C boundary of line crossings and of clipping a segment to a rectangle.
#include "line/crossing.hpp"
#include "line/inner_part.hpp"

extern "C" {

VEXO_API uint32_t vexo_line_get_crossing(const GeomPoint *a0, const GeomPoint *a1, bool a_unbounded,
                                         const GeomPoint *b0, const GeomPoint *b1, bool b_unbounded,
                                         GeomPoint *out) {
    if (!a0 || !a1 || !b0 || !b1 || !out) return VEXO_CROSSING_MISSING_ARGUMENT;
    return vexo::line_crossing(*a0, *a1, a_unbounded, *b0, *b1, b_unbounded, out);
}

VEXO_API GeomPoint *vexo_line_get_inner_part(const GeomPoint *a, const GeomPoint *b,
                                             const double *rect) {
    if (!a || !b || !rect) return nullptr;
    return vexo::inner_part(*a, *b, vexo::ClipRect::from_corners(rect));
}

} // extern "C"
