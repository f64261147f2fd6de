// SPDX-License-Identifier: MIT
// Trapezoid (keystone) correction: one side of the field scaled by a
// factor, the opposite side kept, linear in between.
#include "corr/adjust.hpp"
#include "corr/table.hpp"

namespace vexo {
namespace {

constexpr double kStep = 1.0 / 64;

// The three blends below are mathematically alike but round differently;
// each side keeps its own form because hosts compare the adjusted tables
// bit for bit.
double rising(double factor, int k) {
    return factor * kStep * k + (64 - k) * kStep;
}
double falling(double factor, int k) {
    return (64 - k) * (factor * kStep) + k * kStep;
}
double rising_by_column(double factor, int k) {
    return (64 - k) * kStep + k * (factor * kStep);
}

void scale_rows_x(CorrTable &table, double factor, double (*blend)(double, int)) {
    for (int r = 0; r < kCorrSide; ++r) {
        const double m = blend(factor, r);
        for (int c = 0; c < kCorrSide; ++c) corr_cell(table, r, c).x *= m;
    }
}

void scale_columns_y(CorrTable &table, double factor, double (*blend)(double, int)) {
    for (int c = 0; c < kCorrSide; ++c) {
        const double m = blend(factor, c);
        for (int r = 0; r < kCorrSide; ++r) corr_cell(table, r, c).y *= m;
    }
}

} // namespace

bool scale_side(CorrTable &table, uint8_t side, double factor) noexcept {
    switch (side) {
    case 0:
        scale_rows_x(table, factor, rising);
        return true;
    case 1:
        scale_columns_y(table, factor, falling);
        return true;
    case 2:
        scale_columns_y(table, factor, rising_by_column);
        return true;
    case 3:
        scale_rows_x(table, factor, falling);
        return true;
    default:
        return false;
    }
}

} // namespace vexo
