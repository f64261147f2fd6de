// SPDX-License-Identifier: MIT
// Bezier sampling with the Bernstein basis.
#include "curves/bezier.hpp"

#include <cmath>

namespace vexo {

namespace {

// 0! .. 32! as the doubles nearest the exact values (from 28! on a running
// product would differ in the last bit).
constexpr double kFactorials[kMaxBezierControls + 1] = {
    1.0,
    1.0,
    2.0,
    6.0,
    24.0,
    120.0,
    720.0,
    5040.0,
    40320.0,
    362880.0,
    3628800.0,
    39916800.0,
    479001600.0,
    6227020800.0,
    87178291200.0,
    1307674368000.0,
    20922789888000.0,
    355687428096000.0,
    6402373705728000.0,
    121645100408832000.0,
    2432902008176640000.0,
    51090942171709440000.0,
    1124000727777607680000.0,
    25852016738884976640000.0,
    620448401733239439360000.0,
    15511210043330985984000000.0,
    403291461126605635584000000.0,
    10888869450418352160768000000.0,
    304888344611713860501504000000.0,
    8841761993739701954543616000000.0,
    265252859812191058636308480000000.0,
    8222838654177922817725562880000000.0,
    263130836933693530167218012160000000.0,
};

bool in_table(int n) {
    return n >= 0 && n <= kMaxBezierControls;
}

// Parameter values this close below 1 are taken as exactly 1, so that the
// last sample lands on the last control point despite the summed steps.
constexpr double kEndSnap = 5e-6;

} // namespace

double binomial(int k, int i) {
    if (!in_table(k) || !in_table(i) || !in_table(k - i)) return 0.0;
    return kFactorials[k] / (kFactorials[i] * kFactorials[k - i]);
}

double bernstein(int k, int i, double t) {
    // 0^0 and (1 - 1)^0 are 1 so that the ends reproduce the end control
    // points exactly; spelled out rather than left to pow.
    const double rising = (t == 0.0 && i == 0) ? 1.0 : std::pow(t, static_cast<double>(i));
    const double falling =
        (i == k && t == 1.0) ? 1.0 : std::pow(1.0 - t, static_cast<double>(k - i));
    return binomial(k, i) * rising * falling;
}

void sample_bezier(const double *controls, int count, GeomPoint *out, uint32_t steps) {
    const double dt = steps > 1 ? 1.0 / static_cast<double>(steps - 1) : 0.0;
    const int degree = count - 1;
    double t = 0.0;
    for (uint32_t s = 0; s < steps; ++s) {
        if (1.0 - t < kEndSnap) t = 1.0;
        GeomPoint &p = out[s];
        p.x = 0.0;
        p.y = 0.0;
        p.z = 0.0;
        p.flags = 0;
        for (int i = 0; i < count; ++i) {
            const double b = bernstein(degree, i, t);
            const double *c = controls + 3 * i;
            p.x += b * c[0];
            p.y += b * c[1];
            p.z += b * c[2];
        }
        t += dt;
    }
}

} // namespace vexo
