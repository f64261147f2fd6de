// Interpolation of a measured grid onto the 65x65 table, checked against
// hand-solved grids.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <vector>

#include "vexo.h"

namespace {

GeomPoint xy(double x, double y) {
    GeomPoint p{};
    p.x = x;
    p.y = y;
    return p;
}

std::unique_ptr<CorrTable> filled_table(double value) {
    auto table = std::make_unique<CorrTable>();
    for (GeomPoint &cell : table->cell) {
        cell.x = cell.y = cell.z = value;
        cell.flags = 0xABCDu;
    }
    return table;
}

const GeomPoint &at(const CorrTable &t, int row, int column) { return t.cell[row * 65 + column]; }

// 65535.5 / range: the scale when no pre-distorted node exceeds range / 2.
constexpr double kScale100 = 655.355;

TEST(CorrInterpolate, SingleNodeFillsTheWholeTableAndClearsZAndFlags) {
    const GeomPoint measured = xy(10, -5);
    const GeomPoint nominal = xy(20, 5);
    auto table = filled_table(777);
    ASSERT_EQ(vexo_corr_interpolate(1, &measured, &nominal, 100, table.get()), VEXO_OK);
    // Pre-distorted node (30, 15), inside range / 2.
    for (const GeomPoint &cell : table->cell) {
        ASSERT_DOUBLE_EQ(cell.x, 30 * kScale100);
        ASSERT_DOUBLE_EQ(cell.y, 15 * kScale100);
        ASSERT_EQ(cell.z, 0.0);
        ASSERT_EQ(cell.flags, 0u);
    }
    EXPECT_EQ(table->cell[0].x, table->cell[4224].x);
}

TEST(CorrInterpolate, IdenticalLinearGridsResampleToTheLinearField) {
    // 3 x 3 grid on -40, 0, 40: first index along X, second along Y.
    std::vector<GeomPoint> grid;
    for (int a = 0; a < 3; ++a)
        for (int b = 0; b < 3; ++b)
            grid.push_back(xy(a * 40.0 - 40, b * 40.0 - 40));
    auto table = filled_table(0);
    ASSERT_EQ(vexo_corr_interpolate(3, grid.data(), grid.data(), 100, table.get()), VEXO_OK);
    EXPECT_DOUBLE_EQ(at(*table, 0, 0).x, -40 * kScale100);
    EXPECT_DOUBLE_EQ(at(*table, 0, 0).y, -40 * kScale100);
    // Table line p samples the grid at p * 2/65, so the far edge stops short
    // of +40.
    for (int r = 0; r < 65; ++r)
        for (int c = 0; c < 65; ++c) {
            ASSERT_NEAR(at(*table, r, c).x, (c * 2.0 / 65 * 40 - 40) * kScale100, 1e-8);
            ASSERT_NEAR(at(*table, r, c).y, (r * 2.0 / 65 * 40 - 40) * kScale100, 1e-8);
        }
    EXPECT_LT(at(*table, 64, 64).x, 40 * kScale100);
}

TEST(CorrInterpolate, TwoByTwoGridByHand) {
    // Only node (1, 0) is off zero: nominal (10, 4), measured (8, 6), so the
    // pre-distorted node is (12, 2).
    std::vector<GeomPoint> nominal(4, xy(0, 0)), measured(4, xy(0, 0));
    nominal[1 * 2 + 0] = xy(10, 4);
    measured[1 * 2 + 0] = xy(8, 6);
    auto table = filled_table(0);
    ASSERT_EQ(vexo_corr_interpolate(2, measured.data(), nominal.data(), 100, table.get()),
              VEXO_OK);
    const double f = 64.0 / 65;
    // The first grid index runs along the columns, the second along the rows.
    EXPECT_DOUBLE_EQ(at(*table, 0, 64).x, f * 12 * kScale100);
    EXPECT_DOUBLE_EQ(at(*table, 0, 64).y, f * 2 * kScale100);
    EXPECT_DOUBLE_EQ(at(*table, 64, 64).x, (1 - f) * f * 12 * kScale100);
    EXPECT_EQ(at(*table, 64, 0).x, 0.0);
    EXPECT_EQ(at(*table, 0, 0).x, 0.0);
    EXPECT_DOUBLE_EQ(at(*table, 32, 32).x, (32.0 / 65) * (1 - 32.0 / 65) * 12 * kScale100);
}

TEST(CorrInterpolate, LargeErrorsAreNormalisedToTheOutputRange) {
    // Pre-distorted x of node (1, 1) is 2 * 60 - 40 = 80 > range / 2, so the
    // scale becomes 32767.75 / 80 and that node maps to 32767.75.
    std::vector<GeomPoint> nominal(4, xy(0, 0)), measured(4, xy(0, 0));
    nominal[3] = xy(60, 0);
    measured[3] = xy(40, 0);
    auto table = filled_table(0);
    ASSERT_EQ(vexo_corr_interpolate(2, measured.data(), nominal.data(), 100, table.get()),
              VEXO_OK);
    const double f = 64.0 / 65;
    EXPECT_DOUBLE_EQ(at(*table, 64, 64).x, f * f * 32767.75);
    for (const GeomPoint &cell : table->cell)
        ASSERT_LT(cell.x, 32767.75);
    // A negative error counts by its magnitude.
    nominal[3] = xy(0, -60);
    measured[3] = xy(0, -40);
    ASSERT_EQ(vexo_corr_interpolate(2, measured.data(), nominal.data(), 100, table.get()),
              VEXO_OK);
    EXPECT_DOUBLE_EQ(at(*table, 64, 64).y, f * f * -32767.75);
}

TEST(CorrInterpolate, BadArgumentsLeaveTheTableAlone) {
    const GeomPoint node = xy(1, 1);
    auto table = filled_table(5);
    auto before = filled_table(5);
    EXPECT_EQ(vexo_corr_interpolate(1, &node, &node, 100, nullptr),
              VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_corr_interpolate(1, nullptr, &node, 100, table.get()),
              VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_corr_interpolate(1, &node, nullptr, 100, table.get()),
              VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_corr_interpolate(0, &node, &node, 100, table.get()), VEXO_ERROR_NO_MEMORY);
    // n * n * 32 bytes does not fit any address space: refused before any
    // grid cell is read.
    EXPECT_EQ(vexo_corr_interpolate(0xFFFFFFFFu, &node, &node, 100, table.get()),
              VEXO_ERROR_NO_MEMORY);
    EXPECT_EQ(vexo_corr_interpolate(1u << 20, &node, &node, 100, table.get()),
              VEXO_ERROR_NO_MEMORY);
    EXPECT_EQ(std::memcmp(table.get(), before.get(), sizeof(CorrTable)), 0);
}

} // namespace
