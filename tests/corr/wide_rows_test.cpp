// SPDX-License-Identifier: MIT
// gcd and fcr, whose cells lie row by row, loaded the wide way and the
// portable way, each against the literal formula: gcd over every i16 in
// every field, fcr over deltas up to the i16 extremes.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "corr/loaders.hpp"
#include "corr/table.hpp"
#include "corr/wide_cells.hpp"

namespace {

void put_i16(std::vector<uint8_t> &bytes, size_t at, int16_t v) {
    bytes[at] = uint8_t(uint16_t(v));
    bytes[at + 1] = uint8_t(uint16_t(v) >> 8);
}

// Value of field f (0 z, 1 x, 2 y) of cell k in file n: the files hold every i16 in every field.
int16_t gcd_field(uint32_t n, int f, uint32_t k) {
    return int16_t(uint16_t(n * 4225u + k + uint32_t(f) * 21845u));
}

// Index of the first cell whose x, y or z differ in any bit from the formula, or -1.
long first_wrong_gcd(const CorrTable &t, uint32_t n) {
    for (int row = 0; row < 65; ++row)
        for (int column = 0; column < 65; ++column) {
            const uint32_t k = uint32_t(row * 65 + column);
            const double want[3] = {(column * 1024 + gcd_field(n, 1, k)) - 32767.5,
                                    (row * 1024 + gcd_field(n, 2, k)) - 32767.5,
                                    double(gcd_field(n, 0, k))};
            if (std::memcmp(&t.cell[k].x, want, sizeof want) != 0) return long(k);
        }
    return -1;
}

double neutral_line(int i) {
    return (i - 32) * 0.015625 * 65535.0;
}

int16_t fcr_delta(int plane, int fine_row, int fine_column) {
    const uint32_t h = uint32_t(plane * 16384 + fine_row * 128 + fine_column) * 2654435761u;
    if ((fine_row + fine_column) % 5 == 0) return (h >> 7) % 2 ? INT16_MAX : INT16_MIN;
    return int16_t(h >> 16);
}

// Each delta added one by one, in double, to the neutral value of its node.
double fcr_expected(int plane, int row, int column) {
    double v = neutral_line(plane == 0 ? column : row);
    for (int fr = 2 * row - 1; fr <= 2 * row; ++fr)
        for (int fc = 2 * column - 1; fc <= 2 * column; ++fc)
            if (fr >= 0 && fr < 128 && fc >= 0 && fc < 128) v += fcr_delta(plane, fr, fc);
    return v;
}

class RowLoaders : public testing::TestWithParam<bool> {
protected:
    void SetUp() override {
        if (GetParam() && !vexo::wide_cells_available())
            GTEST_SKIP() << "processor lacks 512-bit registers";
        vexo::allow_wide_cells(GetParam());
    }
    void TearDown() override { vexo::allow_wide_cells(true); }
};

TEST_P(RowLoaders, GcdMatchesTheFormulaForEveryI16) {
    for (uint32_t n = 0; n * 4225 < 65536; ++n) {
        std::vector<uint8_t> file(6 * 4225);
        for (uint32_t k = 0; k < 4225; ++k)
            for (int f = 0; f < 3; ++f) put_i16(file, 6 * k + 2 * f, gcd_field(n, f, k));
        CorrTable t;
        std::memset(&t, 0x5C, sizeof t);
        ASSERT_EQ(vexo::parse_gcd({file.data(), file.size()}, t), VEXO_OK);
        ASSERT_EQ(first_wrong_gcd(t, n), -1) << "file " << n;
    }
}

// An fcr file: `prefix` bytes of 0x7F (a header the loader must skip), then
// the two planes of fcr_delta.
std::vector<uint8_t> fcr_file(size_t prefix) {
    std::vector<uint8_t> file(prefix + 65536, 0x7F);
    for (int plane = 0; plane < 2; ++plane)
        for (int fr = 0; fr < 128; ++fr)
            for (int fc = 0; fc < 128; ++fc)
                put_i16(file, prefix + size_t(plane * 32768 + fr * 256 + fc * 2),
                        fcr_delta(plane, fr, fc));
    return file;
}

void expect_fcr_formula(const std::vector<uint8_t> &file) {
    CorrTable t;
    std::memset(&t, 0x5C, sizeof t);
    ASSERT_EQ(vexo::parse_fcr({file.data(), file.size()}, t), VEXO_OK);
    for (int row = 0; row < 65; ++row)
        for (int column = 0; column < 65; ++column) {
            const GeomPoint &cell = t.cell[row * 65 + column];
            ASSERT_EQ(cell.x, fcr_expected(0, row, column)) << row << ", " << column;
            ASSERT_EQ(cell.y, fcr_expected(1, row, column)) << row << ", " << column;
            ASSERT_EQ(cell.z, 0.0) << row << ", " << column;
        }
}

TEST_P(RowLoaders, FcrMatchesTheFormulaUpToTheI16Extremes) {
    expect_fcr_formula(fcr_file(0));
}

// The planes are the last 65,536 bytes wherever they start: an odd header
// leaves every line off any alignment the wide loads could rely on.
TEST_P(RowLoaders, FcrReadsTheLastBlockAfterAnOddHeader) {
    expect_fcr_formula(fcr_file(1001));
}

INSTANTIATE_TEST_SUITE_P(Paths, RowLoaders, testing::Values(false, true),
                         [](const auto &info) { return info.param ? "Wide" : "Portable"; });

} // namespace
