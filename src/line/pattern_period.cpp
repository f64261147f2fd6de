// SPDX-License-Identifier: MIT
// Period arithmetic shared by the dot and dash patterns.
#include <cmath>

#include "line/pattern.hpp"

namespace vexo {

double wrap_into_period(double value, double period) {
    // fmod is exact; only adding the period to a negative remainder rounds,
    // and a sum that rounds up to the period is the period's start.
    double r = std::fmod(value, period);
    if (r < 0.0) r += period;
    return r < period ? r : 0.0;
}

double fit_periods(double length, double period, double lead, bool ring) {
    const double room = ring ? length : length - lead;
    double n = std::round(room / period);
    if (n < 1.0 && (ring || lead == 0.0)) n = 1.0;
    return n < 0.0 ? 0.0 : n;
}

} // namespace vexo
