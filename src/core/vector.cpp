// SPDX-License-Identifier: MIT
// Vector math.  Operation orders are kept exactly as hosts' stored results
// were produced with them; reordering a sum changes the last bits.
#include "core/vector.hpp"

#include <cmath>

#include "core/constants.hpp"
#include "vexo.h"

namespace vexo {

void normalise2(double *v) {
    const double len = length2(v);
    if (len > kZeroTolerance) {
        v[0] /= len;
        v[1] /= len;
    }
}

double dot2(const double *a, const double *b) {
    return a[1] * b[1] + a[0] * b[0];
}

double length2(const double *v) {
    return std::sqrt(v[0] * v[0] + v[1] * v[1]);
}

double angle_cos2(const double *a, const double *b) {
    const double lengths = length2(a) * length2(b);
    if (lengths == 0.0) return 0.0;
    // Deliberately unclamped: callers see rounding past +-1 as it is.
    return (a[0] * b[0] + a[1] * b[1]) / lengths;
}

double angle2(const double *a, const double *b) {
    const double c = angle_cos2(a, b);
    if (c == -1.0) return kPiF;
    return std::acos(c);
}

double angle_directed2(double *a, double *b) {
    // Normalising the caller's vectors in place is long-standing behaviour.
    normalise2(a);
    normalise2(b);
    // atan2(x, y): angles run from +Y towards +X.
    double d = std::atan2(a[0], a[1]) - std::atan2(b[0], b[1]);
    if (d < 0.0) d += kTwoPiF;
    return d;
}

double cross2(const double *a, const double *b) {
    return b[1] * a[0] - a[1] * b[0];
}

void cross3(const double *a, const double *b, double *out) {
    // Written component by component, so even an aliased `out` gets a
    // result fixed by this order (callers are told not to alias).
    out[0] = b[2] * a[1] - a[2] * b[1];
    out[1] = a[2] * b[0] - a[0] * b[2];
    out[2] = a[0] * b[1] - b[0] * a[1];
}

void rotate_z3(double *v, double degrees) {
    const double r = degrees_to_radians(degrees);
    const double c = std::cos(r);
    const double s = std::sin(r);
    const double x = v[0];
    const double y = v[1];
    v[0] = x * c - y * s;
    v[1] = y * c + x * s;
}

void normalise3(double *v) {
    const double len = length3(v);
    if (len > kZeroTolerance) {
        v[0] /= len;
        v[1] /= len;
        v[2] /= len;
    }
}

double length3(const double *v) {
    return std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
}

double angle3(const double *a, const double *b) {
    double c = (a[0] * b[0] + a[1] * b[1] + a[2] * b[2]) / (length3(a) * length3(b));
    // Only the upper bound is clamped, so parallel vectors give exactly 0;
    // below -1 the result stays NaN.
    if (c > 1.0) c = 1.0;
    return radians_to_degrees(std::acos(c));
}

namespace {

constexpr int kBisectionDepth = 10;

double axis_term(const double *u, const double *p, uint32_t axes, uint32_t bit, int index) {
    return (axes & bit) ? std::pow(u[index] - p[index], 2.0) : 0.0;
}

double selected_distance(const double *u, const double *p, uint32_t axes) {
    return std::sqrt(axis_term(u, p, axes, VEXO_AXIS_X, 0) + axis_term(u, p, axes, VEXO_AXIS_Y, 1) +
                     axis_term(u, p, axes, VEXO_AXIS_Z, 2));
}

} // namespace

bool segment_near_dot(const double *a, const double *b, const double *p, double tolerance,
                      uint32_t axes) {
    double s[3] = {a[0], a[1], a[2]};
    double e[3] = {b[0], b[1], b[2]};
    for (int depth = kBisectionDepth;; --depth) {
        const double m[3] = {(s[0] + e[0]) * 0.5, (s[1] + e[1]) * 0.5, (s[2] + e[2]) * 0.5};
        if (depth == 0) return selected_distance(m, p, axes) <= tolerance;
        const double ds = selected_distance(s, p, axes);
        const double de = selected_distance(e, p, axes);
        if (ds <= tolerance || de <= tolerance) return true;
        if (ds <= de) {
            // keep s, the nearer end; the midpoint becomes the far end
        } else if (de < ds) {
            // the nearer end leads the next half
            for (int i = 0; i < 3; ++i) s[i] = e[i];
        } else {
            return selected_distance(m, p, axes) <= tolerance; // a NaN distance
        }
        for (int i = 0; i < 3; ++i) e[i] = m[i];
    }
}

} // namespace vexo
