// Interpolation of a measured grid onto the table, against hand-solved grids.
#include "fixtures.hpp"

using namespace vexo_test;

namespace {

constexpr double kScale100 = 655.355; // 65535.5 / range, while no node exceeds range / 2
constexpr double f = 64.0 / 65;       // the last table line samples at 64/65 of the grid

CorrTable filled_table(double value) {
    CorrTable t;
    for (GeomPoint &cell : t.cell)
        cell = point(value, value, value, 0xABCDu);
    return t;
}

} // namespace

TEST(CorrInterpolate, OneNodeFillsTheTableAndClearsZAndFlags) {
    const GeomPoint measured = point(10, -5), nominal = point(20, 5);
    CorrTable t = filled_table(777);
    ASSERT_EQ(vexo_corr_interpolate(1, &measured, &nominal, 100, &t), VEXO_OK);
    for (const GeomPoint &cell : t.cell) { // pre-distorted node (30, 15)
        ASSERT_DOUBLE_EQ(cell.x, 30 * kScale100);
        ASSERT_DOUBLE_EQ(cell.y, 15 * kScale100);
        ASSERT_TRUE(cell.z == 0 && cell.flags == 0);
    }
}

TEST(CorrInterpolate, HandSolvedGrids) {
    // Identical 3 x 3 grids on -40, 0, 40 (first index along X) give the
    // linear field, sampled at p * 2/65 so the far edge stops short of +40.
    std::vector<GeomPoint> grid;
    for (int k = 0; k < 9; ++k)
        grid.push_back(point(k / 3 * 40.0 - 40, k % 3 * 40.0 - 40));
    CorrTable t = filled_table(0);
    ASSERT_EQ(vexo_corr_interpolate(3, grid.data(), grid.data(), 100, &t), VEXO_OK);
    for (int k = 0; k < 4225; ++k) {
        ASSERT_NEAR(t.cell[k].x, (k % 65 * 2.0 / 65 * 40 - 40) * kScale100, 1e-8);
        ASSERT_NEAR(t.cell[k].y, (k / 65 * 2.0 / 65 * 40 - 40) * kScale100, 1e-8);
    }
    // 2 x 2, only node (1, 0) off zero: nominal (10, 4), measured (8, 6),
    // pre-distorted (12, 2); the second grid index runs along the rows.
    std::vector<GeomPoint> nominal(4, point(0, 0)), measured(4, point(0, 0));
    nominal[2] = point(10, 4);
    measured[2] = point(8, 6);
    ASSERT_EQ(vexo_corr_interpolate(2, measured.data(), nominal.data(), 100, &t), VEXO_OK);
    EXPECT_DOUBLE_EQ(at(t, 0, 64).x, f * 12 * kScale100);
    EXPECT_DOUBLE_EQ(at(t, 0, 64).y, f * 2 * kScale100);
    EXPECT_DOUBLE_EQ(at(t, 64, 64).x, (1 - f) * f * 12 * kScale100);
    EXPECT_DOUBLE_EQ(at(t, 32, 32).x, (32.0 / 65) * (1 - 32.0 / 65) * 12 * kScale100);
    EXPECT_TRUE(at(t, 64, 0).x == 0 && at(t, 0, 0).x == 0);
    // Node (1, 1) pre-distorted to 80 > range / 2, in x and then in -y: the
    // scale becomes 32767.75 / 80, and a negative error counts by its size.
    for (int axis : {0, 1}) {
        nominal.assign(4, point(0, 0));
        measured.assign(4, point(0, 0));
        nominal[3] = axis ? point(0, -60) : point(60, 0);
        measured[3] = axis ? point(0, -40) : point(40, 0);
        ASSERT_EQ(vexo_corr_interpolate(2, measured.data(), nominal.data(), 100, &t), VEXO_OK);
        EXPECT_DOUBLE_EQ(axis ? at(t, 64, 64).y : at(t, 64, 64).x, (axis ? -f : f) * f * 32767.75);
    }
}

TEST(CorrInterpolate, BadArgumentsLeaveTheTableAlone) {
    const GeomPoint node = point(1, 1);
    CorrTable t = filled_table(5);
    EXPECT_EQ(vexo_corr_interpolate(1, &node, &node, 100, nullptr), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_corr_interpolate(1, nullptr, &node, 100, &t), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_corr_interpolate(1, &node, nullptr, 100, &t), VEXO_ERROR_INVALID_PARAMETER);
    // n * n of 0, or n * n * 32 bytes beyond any address space: refused
    // before a grid cell is read.
    for (uint32_t n : {0u, 1u << 20, 0xFFFFFFFFu})
        EXPECT_EQ(vexo_corr_interpolate(n, &node, &node, 100, &t), VEXO_ERROR_NO_MEMORY) << n;
    EXPECT_TRUE(same(t, filled_table(5)));
}
