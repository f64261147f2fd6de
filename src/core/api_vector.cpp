// SPDX-License-Identifier: MIT
// C boundary of the vector functions.  Nothing here can throw; a NULL
// vector makes an in/out function do nothing and a value function return
// NaN (no number can be right for a vector that is not there).
#include <limits>

#include "core/vector.hpp"
#include "vexo.h"

namespace {
constexpr double kNoValue = std::numeric_limits<double>::quiet_NaN();
}

extern "C" {

VEXO_API void vexo_vector2d_normalise(double *v) {
    if (v) vexo::normalise2(v);
}

VEXO_API double vexo_vector2d_dotproduct(const double *a, const double *b) {
    return (a && b) ? vexo::dot2(a, b) : kNoValue;
}

VEXO_API double vexo_vector2d_scalar(const double *a, const double *b) {
    return (a && b) ? vexo::dot2(a, b) : kNoValue;
}

VEXO_API double vexo_vector2d_length(const double *v) {
    return v ? vexo::length2(v) : kNoValue;
}

VEXO_API double vexo_vector2d_angle_cos(const double *a, const double *b) {
    return (a && b) ? vexo::angle_cos2(a, b) : kNoValue;
}

VEXO_API double vexo_vector2d_angle(const double *a, const double *b) {
    return (a && b) ? vexo::angle2(a, b) : kNoValue;
}

VEXO_API double vexo_vector2d_angle_directed(double *a, double *b) {
    return (a && b) ? vexo::angle_directed2(a, b) : kNoValue;
}

VEXO_API double vexo_vector2d_is_ccw(const double *a, const double *b) {
    return (a && b) ? vexo::cross2(a, b) : kNoValue;
}

VEXO_API void vexo_vector3d_crossproduct(const double *a, const double *b, double *out) {
    if (a && b && out) vexo::cross3(a, b, out);
}

VEXO_API void vexo_vector3d_rotate_z(double *v, double angle) {
    if (v) vexo::rotate_z3(v, angle);
}

VEXO_API void vexo_vector3d_normalise(double *v) {
    if (v) vexo::normalise3(v);
}

VEXO_API double vexo_vector3d_length(const double *v) {
    return v ? vexo::length3(v) : kNoValue;
}

VEXO_API double vexo_vector3d_angle(const double *a, const double *b) {
    return (a && b) ? vexo::angle3(a, b) : kNoValue;
}

VEXO_API uint8_t vexo_vec_line_to_dot_is_dist(const double *a, const double *b, const double *p,
                                              double tolerance, uint32_t axes) {
    if (!a || !b || !p) return 0;
    return vexo::segment_near_dot(a, b, p, tolerance, axes) ? 1 : 0;
}

} // extern "C"
