// SPDX-License-Identifier: MIT
// 2D and 3D vector math on bare double arrays (a GeomPoint's x, y, z work
// as well as a plain vector).  Everything here is allocation-free and keeps
// no state.  Angles in are degrees; 2D angles out are radians, the 3D angle
// is degrees: hosts depend on that mix.
#pragma once

#include <cstdint>

namespace vexo {

void normalise2(double *v);
double dot2(const double *a, const double *b);
double length2(const double *v);
double angle_cos2(const double *a, const double *b);
double angle2(const double *a, const double *b);
double angle_directed2(double *a, double *b);
double cross2(const double *a, const double *b);

void cross3(const double *a, const double *b, double *out);
void rotate_z3(double *v, double degrees);
void normalise3(double *v);
double length3(const double *v);
double angle3(const double *a, const double *b);

// Depth-10 bisection towards the nearer end of segment a-b: true when the
// dot p comes within `tolerance` over the axes selected in `axes`.
bool segment_near_dot(const double *a, const double *b, const double *p, double tolerance,
                      uint32_t axes);

} // namespace vexo
