// SPDX-License-Identifier: MIT
// Natural cubic spline: tridiagonal solve for the second derivatives, then
// per-point evaluation of the bracketing cubic.
#include "curves/spline.hpp"

#include <cstdlib>
#include <memory>

namespace vexo {

void spline_second_derivatives(const double *xs, const double *ys, int n, double slope_start,
                               double slope_end, double *y2, double *scratch) {
    double *u = scratch;
    if (slope_start > kNaturalEndThreshold) {
        y2[0] = 0.0;
        u[0] = 0.0;
    } else {
        y2[0] = -0.5;
        u[0] = (3.0 / (xs[1] - xs[0])) * ((ys[1] - ys[0]) / (xs[1] - xs[0]) - slope_start);
    }
    // Forward sweep of the tridiagonal system.
    for (int i = 1; i < n - 1; ++i) {
        const double sig = (xs[i] - xs[i - 1]) / (xs[i + 1] - xs[i - 1]);
        const double p = sig * y2[i - 1] + 2.0;
        y2[i] = (sig - 1.0) / p;
        const double slope_change =
            (ys[i + 1] - ys[i]) / (xs[i + 1] - xs[i]) - (ys[i] - ys[i - 1]) / (xs[i] - xs[i - 1]);
        u[i] = (6.0 * slope_change / (xs[i + 1] - xs[i - 1]) - sig * u[i - 1]) / p;
    }
    double qn = 0.0;
    double un = 0.0;
    if (!(slope_end > kNaturalEndThreshold)) {
        qn = 0.5;
        const double h = xs[n - 1] - xs[n - 2];
        un = (3.0 / h) * (slope_end - (ys[n - 1] - ys[n - 2]) / h);
    }
    y2[n - 1] = (un - qn * u[n - 2]) / (qn * y2[n - 2] + 1.0);
    // Back substitution.
    for (int k = n - 2; k >= 0; --k) y2[k] = y2[k] * y2[k + 1] + u[k];
}

bool knots_ascending(const double *xs, int n) {
    for (int k = 1; k < n; ++k)
        if (!(xs[k] >= xs[k - 1])) return false;
    return true;
}

void bracket_knots(const double *xs, int n, bool ascending, double x, int *lo, int *hi) {
    int klo = *lo;
    int khi = *hi;
    // The previous bracket is kept only where it provably contains the
    // interval a full bisection would find: over ascending knots, from a
    // lower knot at or left of x and an upper knot strictly right of it.
    // Anything else (including unordered knots) starts from the full range.
    if (!ascending || !(xs[klo] <= x)) klo = 0;
    if (!ascending || !(x < xs[khi])) khi = n - 1;
    while (khi - klo > 1) {
        const int k = (khi + klo) >> 1;
        if (xs[k] > x)
            khi = k;
        else
            klo = k;
    }
    *lo = klo;
    *hi = khi;
}

namespace {

struct FreeDeleter {
    void operator()(double *p) const { std::free(p); }
};
using WorkBuffer = std::unique_ptr<double, FreeDeleter>;

WorkBuffer allocate_doubles(WorkAllocator allocate, size_t n) {
    return WorkBuffer(static_cast<double *>(allocate(n * sizeof(double))));
}

double cubic_at(const double *xs, const double *ys, const double *y2, int klo, int khi, double x,
                double h) {
    const double a = (xs[khi] - x) / h;
    const double b = (x - xs[klo]) / h;
    return a * ys[klo] + b * ys[khi] +
           ((a * a * a - a) * y2[klo] + (b * b * b - b) * y2[khi]) * (h * h) / 6.0;
}

} // namespace

uint32_t evaluate_spline(const double *knots, int count, GeomPoint *points, int m,
                         WorkAllocator allocate) {
    const size_t n = static_cast<size_t>(count);
    WorkBuffer xs = allocate_doubles(allocate, n);
    WorkBuffer ys = allocate_doubles(allocate, n);
    WorkBuffer y2 = allocate_doubles(allocate, n);
    WorkBuffer scratch = allocate_doubles(allocate, n - 1);
    if (!xs || !ys || !y2 || !scratch) return VEXO_ERROR_NO_MEMORY;
    for (size_t k = 0; k < n; ++k) {
        xs.get()[k] = knots[2 * k];
        ys.get()[k] = knots[2 * k + 1];
    }
    spline_second_derivatives(xs.get(), ys.get(), count, kNaturalEnd, kNaturalEnd, y2.get(),
                              scratch.get());

    const bool ascending = knots_ascending(xs.get(), count);
    int klo = 0;
    int khi = count - 1;
    for (int j = 0; j < m; ++j) {
        const double x = points[j].x;
        bracket_knots(xs.get(), count, ascending, x, &klo, &khi);
        const double h = xs.get()[khi] - xs.get()[klo];
        if (h == 0.0) {
            points[j].y = 0.0;
            return VEXO_SPLINE_EQUAL_KNOTS;
        }
        points[j].y = cubic_at(xs.get(), ys.get(), y2.get(), klo, khi, x, h);
    }
    return VEXO_OK;
}

} // namespace vexo
