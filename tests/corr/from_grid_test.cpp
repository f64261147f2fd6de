// SPDX-License-Identifier: MIT
// A table from a measured grid: neutral for a perfect measurement, the
// measured correction reproduced, and refused input left alone.
#include <cmath>
#include <cstring>
#include <vector>

#include <gtest/gtest.h>

#include "vexo.h"
#include "vexo_test_util.hpp"

namespace {

using vexo_test::point;

// n x n nominal grid, row i along y, `pitch` apart, centred on (0, 0).
std::vector<GeomPoint> nominal_grid(uint32_t n, double pitch) {
    std::vector<GeomPoint> g;
    const double mid = (n - 1) / 2.0;
    for (uint32_t i = 0; i < n; ++i)
        for (uint32_t j = 0; j < n; ++j) g.push_back(point((j - mid) * pitch, (i - mid) * pitch));
    return g;
}

// Every cell's x, y, z compared exactly; returns the first differing cell
// or -1.
int first_difference(const CorrTable &a, const CorrTable &b) {
    for (int k = 0; k < int(VEXO_CORR_CELLS); ++k)
        if (vexo_test::xyz(a.cell[k]) != vexo_test::xyz(b.cell[k])) return k;
    return -1;
}

TEST(CorrFromGrid, PerfectMeasurementGivesTheNeutralTableExactly) {
    const struct {
        uint32_t n;
        double pitch, field;
    } cases[] = {{7, 13.3, 100}, {2, 40, 60}};
    CorrTable neutral;
    vexo_corr_set_neutral(&neutral);
    for (const auto &c : cases) {
        const auto nominal = nominal_grid(c.n, c.pitch);
        CorrTable table;
        std::memset(&table, 0x5a, sizeof table);
        ASSERT_EQ(
            vexo_corr_from_grid(c.n, nominal.data(), nominal.data(), c.field, nullptr, &table),
            VEXO_OK);
        EXPECT_EQ(first_difference(table, neutral), -1) << c.n;
    }
}

TEST(CorrFromGrid, PerfectMeasurementReturnsTheBaseBitForBit) {
    const CorrBase head{12.0, 250.0, 110.0, 0.0, VEXO_CORR_BASE_FOCUS, 0};
    CorrTable base, table;
    ASSERT_EQ(vexo_corr_set_base(&base, &head, nullptr), VEXO_OK);
    const auto nominal = nominal_grid(9, 12.5);
    ASSERT_EQ(vexo_corr_from_grid(9, nominal.data(), nominal.data(), 110, &base, &table), VEXO_OK);
    EXPECT_EQ(first_difference(table, base), -1);
}

TEST(CorrFromGrid, FlagsStayAsTheTableHadThem) {
    const auto nominal = nominal_grid(3, 30);
    CorrTable table;
    for (auto &c : table.cell) c.flags = 0xabcd;
    ASSERT_EQ(vexo_corr_from_grid(3, nominal.data(), nominal.data(), 100, nullptr, &table),
              VEXO_OK);
    EXPECT_EQ(table.cell[1234].flags, 0xabcdu);
}

// Marks landed at (x, y) * scale + shift: a node is driven to the neutral
// output of where its mark must be aimed (65535 / 100 units a mm).
TEST(CorrFromGrid, KnownDistortionsAreUndoneAtTheirNodes) {
    const struct {
        const char *why;
        uint32_t n;
        double pitch, scale, shift_x, shift_y;
        int row, column;
        double x, y, tolerance; // the node's aim, mm; output units
    } cases[] = {
        // 0.5 mm right, 0.25 mm low: node (28.125, -34.375) aims against it.
        {"uniform shift", 5, 20, 1, 0.5, -0.25, 10, 50, 28.125 - 0.5, -34.375 + 0.25, 1e-7},
        // 2 % further out: inside the grid a node at q aims at q / 1.02.
        {"scaled inside", 6, 18, 1.02, 0, 0, 20, 45, 20.3125 / 1.02, -18.75 / 1.02, 1e-6},
        // The grid spans +-20 mm: the corner node (-50, -50) keeps the error
        // of the grid's corner (-20, -20), -0.4 in each axis.
        {"held beyond the grid", 3, 20, 1.02, 0, 0, 0, 0, -50 + 0.4, -50 + 0.4, 1e-7},
    };
    const double unit = 65535.0 / 100;
    for (const auto &c : cases) {
        SCOPED_TRACE(c.why);
        const auto nominal = nominal_grid(c.n, c.pitch);
        auto measured = nominal;
        for (auto &p : measured) p.x = p.x * c.scale + c.shift_x, p.y = p.y * c.scale + c.shift_y;
        CorrTable table;
        ASSERT_EQ(vexo_corr_from_grid(c.n, measured.data(), nominal.data(), 100, nullptr, &table),
                  VEXO_OK);
        EXPECT_NEAR(table.cell[c.row * 65 + c.column].x, c.x * unit, c.tolerance);
        EXPECT_NEAR(table.cell[c.row * 65 + c.column].y, c.y * unit, c.tolerance);
    }
}

TEST(CorrFromGrid, MeasuredMarksAreDrivenWhereTheirNominalsWere) {
    // Round trip through the table lookup: at each measured position the
    // new table must give (about, by bilinear reading between nodes) the
    // output that was sent to the nominal position.
    const uint32_t n = 9;
    const auto nominal = nominal_grid(n, 11);
    auto measured = nominal;
    for (auto &p : measured) {
        const double r2 = (p.x * p.x + p.y * p.y) / 2500;
        p.x *= 1 + 0.01 * r2, p.y *= 1 + 0.01 * r2; // gentle pincushion
    }
    CorrTable table;
    ASSERT_EQ(vexo_corr_from_grid(n, measured.data(), nominal.data(), 100, nullptr, &table),
              VEXO_OK);
    auto at_measured = measured;
    ASSERT_EQ(vexo_corr_apply(&table, at_measured.data(), n * n, 100, 0), VEXO_OK);
    const double unit = 65535.0 / 100;
    double worst = 0;
    for (uint32_t k = 0; k < n * n; ++k)
        worst = std::max({worst, std::fabs(at_measured[k].x - nominal[k].x * unit),
                          std::fabs(at_measured[k].y - nominal[k].y * unit)});
    // Output units (a node pitch is 1024; the error reaches about 450 at the
    // grid's corners): what remains is the bilinear reading between nodes
    // of a table whose error field bends at every grid line.
    EXPECT_LT(worst, 15.0);
}

TEST(CorrFromGrid, TableMayBeItsOwnBase) {
    const auto nominal = nominal_grid(4, 25);
    auto measured = nominal;
    for (auto &p : measured) p.x += 0.3;
    CorrTable separate, same;
    vexo_corr_set_neutral(&separate);
    vexo_corr_set_neutral(&same);
    CorrTable base = separate;
    ASSERT_EQ(vexo_corr_from_grid(4, measured.data(), nominal.data(), 100, &base, &separate),
              VEXO_OK);
    ASSERT_EQ(vexo_corr_from_grid(4, measured.data(), nominal.data(), 100, &same, &same), VEXO_OK);
    EXPECT_EQ(first_difference(separate, same), -1);
}

// Marks at (fx x, fy y) of their nominal places: mirrored or folded is
// invalid data, beyond twice the spacing does not settle, just below does;
// a refused measurement leaves the table.
TEST(CorrFromGrid, StretchedMeasurementsSettleOnlyBelowTwiceTheSpacing) {
    const struct {
        double fx, fy;
        uint32_t status;
    } cases[] = {{-2, 1, VEXO_ERROR_INVALID_DATA},
                 {1, -0.5, VEXO_ERROR_INVALID_DATA},
                 {2.5, 1, VEXO_ERROR_NUMERIC},
                 {1.9, 1.9, VEXO_OK}};
    const auto nominal = nominal_grid(3, 30);
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << c.fx << " x, " << c.fy << " y");
        auto measured = nominal;
        for (auto &p : measured) p.x *= c.fx, p.y *= c.fy;
        CorrTable table, before;
        vexo_corr_set_neutral(&table);
        before = table;
        EXPECT_EQ(vexo_corr_from_grid(3, measured.data(), nominal.data(), 100, nullptr, &table),
                  c.status);
        if (c.status != VEXO_OK) {
            EXPECT_EQ(std::memcmp(&table, &before, sizeof table), 0);
        }
    }
}

struct BadGrid {
    const char *name;
    uint32_t n;
    double field;
    void (*spoil)(std::vector<GeomPoint> &measured, std::vector<GeomPoint> &nominal);
};

class CorrFromGridBad : public testing::TestWithParam<BadGrid> {};

TEST_P(CorrFromGridBad, IsRefusedAndLeavesTheTable) {
    auto nominal = nominal_grid(4, 20);
    auto measured = nominal;
    GetParam().spoil(measured, nominal);
    CorrTable table, before;
    vexo_corr_set_neutral(&table);
    before = table;
    EXPECT_EQ(vexo_corr_from_grid(GetParam().n, measured.data(), nominal.data(), GetParam().field,
                                  nullptr, &table),
              VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(std::memcmp(&table, &before, sizeof table), 0);
}

using Grid = std::vector<GeomPoint>;
INSTANTIATE_TEST_SUITE_P(
    Each, CorrFromGridBad,
    testing::Values(BadGrid{"one_node", 1, 100, [](Grid &, Grid &) {}},
                    BadGrid{"zero_field", 4, 0, [](Grid &, Grid &) {}},
                    BadGrid{"nan_field", 4, NAN, [](Grid &, Grid &) {}},
                    BadGrid{"nan_measured", 4, 100, [](Grid &m, Grid &) { m[5].y = NAN; }},
                    BadGrid{"infinite_nominal", 4, 100,
                            [](Grid &, Grid &g) { g[15].x = INFINITY; }},
                    BadGrid{"not_rectilinear", 4, 100, [](Grid &, Grid &g) { g[6].x += 0.01; }},
                    BadGrid{"falling_x", 4, 100,
                            [](Grid &, Grid &g) {
                                for (auto &p : g) p.x = -p.x;
                            }},
                    BadGrid{"repeated_y", 4, 100,
                            [](Grid &, Grid &g) {
                                for (int j = 0; j < 4; ++j) g[4 + j].y = g[j].y;
                            }}),
    [](const testing::TestParamInfo<BadGrid> &i) { return std::string(i.param.name); });

TEST(CorrFromGrid, NullPointersAreRefused) {
    const auto g = nominal_grid(2, 10);
    CorrTable table;
    EXPECT_EQ(vexo_corr_from_grid(2, nullptr, g.data(), 100, nullptr, &table),
              VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_corr_from_grid(2, g.data(), nullptr, 100, nullptr, &table),
              VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_corr_from_grid(2, g.data(), g.data(), 100, nullptr, nullptr),
              VEXO_ERROR_INVALID_PARAMETER);
}

} // namespace
