// SPDX-License-Identifier: MIT
// Interpolation of a measured grid onto the table, field scaling, focus
// compensation, trapezoid correction and local adjustment on known tables.
#include "fixtures.hpp"

using namespace vexo_test;

namespace {

constexpr double kPitch = 1023.984375; // 65535 / 64
constexpr double kScale100 = 655.355;  // 65535.5 / range, while no node exceeds range / 2
constexpr double f = 64.0 / 65;        // the last table line samples at 64/65 of the grid

// Neutral, with flags that no adjustment may touch.
CorrTable flagged_table() {
    CorrTable t = neutral_table();
    for (int k = 0; k < 4225; ++k) t.cell[k].flags = 0x5A5Au + uint32_t(k);
    return t;
}

bool near(double a, double b) {
    return std::fabs(a - b) <= 4e-15 * std::fabs(b);
}

} // namespace

TEST(CorrInterpolate, HandSolvedGridsAndRefusedSizes) {
    CorrTable t, filled;
    std::memset(&filled, 0x7F, sizeof filled);
    t = filled;
    // n * n of 0, or n * n * 32 bytes beyond any address space (at 2^30 the
    // byte count wraps to 0): refused before a grid cell is read.
    const GeomPoint measured1 = point(10, -5), nominal1 = point(20, 5);
    for (uint32_t n : {0u, 1u << 20, 1u << 30, 0xFFFFFFFFu})
        EXPECT_EQ(vexo_corr_interpolate(n, &measured1, &nominal1, 100, &t), VEXO_ERROR_NO_MEMORY)
            << n;
    ASSERT_TRUE(same(t, filled));
    // One node fills the table with its pre-distorted (30, 15), z and flags cleared.
    ASSERT_EQ(vexo_corr_interpolate(1, &measured1, &nominal1, 100, &t), VEXO_OK);
    for (const GeomPoint &c : t.cell) {
        ASSERT_EQ(xyz(c), (Xyz{30 * kScale100, 15 * kScale100, 0}));
        ASSERT_FALSE(c.flags);
    }
    // Identical 3 x 3 grids on -40, 0, 40 (first index along X) give the
    // linear field, sampled at p * 2/65 so the far edge stops short of +40.
    std::vector<GeomPoint> grid;
    for (int k = 0; k < 9; ++k) grid.push_back(point(k / 3 * 40.0 - 40, k % 3 * 40.0 - 40));
    ASSERT_EQ(vexo_corr_interpolate(3, grid.data(), grid.data(), 100, &t), VEXO_OK);
    auto line = [](int p) { return (p * 2.0 / 65 * 40 - 40) * kScale100; };
    for (int k = 0; k < 4225; ++k) {
        ASSERT_TRUE(near(t.cell[k].x, line(k % 65))) << k;
        ASSERT_TRUE(near(t.cell[k].y, line(k / 65))) << k;
    }
    // 2 x 2, only node (1, 0) off zero: nominal (10, 4), measured (8, 6),
    // pre-distorted (12, 2); the second grid index runs along the rows.
    std::vector<GeomPoint> nominal(4, point(0, 0)), measured(4, point(0, 0));
    nominal[2] = point(10, 4);
    measured[2] = point(8, 6);
    ASSERT_EQ(vexo_corr_interpolate(2, measured.data(), nominal.data(), 100, &t), VEXO_OK);
    for (int k = 0; k < 4225; ++k) { // cell (r, c) weighs the node by c/65 * (1 - r/65)
        const double w = k % 65 / 65.0 * (1 - k / 65 / 65.0) * kScale100;
        ASSERT_TRUE(near(t.cell[k].x, 12 * w)) << k;
        ASSERT_TRUE(near(t.cell[k].y, 2 * w)) << k;
    }
    // Node (1, 1) pre-distorted to 80 > range / 2, in x and then in -y: the
    // scale becomes 32767.75 / 80, and a negative error counts by its size.
    nominal[2] = measured[2] = point(0, 0);
    for (int axis : {0, 1}) {
        nominal[3] = axis ? point(0, -60) : point(60, 0);
        measured[3] = axis ? point(0, -40) : point(40, 0);
        ASSERT_EQ(vexo_corr_interpolate(2, measured.data(), nominal.data(), 100, &t), VEXO_OK);
        EXPECT_DOUBLE_EQ(axis ? at(t, 64, 64).y : at(t, 64, 64).x, (axis ? -f : f) * f * 32767.75);
    }
}

TEST(CorrScaleFocusSpatial, WorkedValuesAndRefusals) {
    const CorrTable before = flagged_table();
    CorrTable t = before, u = before, twice = before;
    // Scale 0.5: radius 32767.5 * 0.5 is the fixed rim, twice that goes to 0.
    ASSERT_EQ(vexo_corr_set_scale(&t, 0.5), VEXO_OK);
    EXPECT_EQ(at(t, 32, 0).x, 0);
    EXPECT_EQ(at(t, 32, 16).x, -16383.75);
    EXPECT_EQ(at(t, 32, 16).y, 0);
    EXPECT_EQ(at(t, 16, 32).y, -16383.75);
    EXPECT_EQ(at(t, 16, 32).x, 0);
    EXPECT_EQ(at(t, 7, 9).flags, at(before, 7, 9).flags);
    EXPECT_EQ(at(t, 7, 9).z, 0);
    ASSERT_EQ(vexo_corr_set_scale(&u, 2), VEXO_OK); // x' = -8191.875, d = 0.25, k = 1.25
    EXPECT_EQ(at(u, 32, 16).x, -10239.84375);
    EXPECT_EQ(at(u, 16, 32).y, -10239.84375);

    // Field 65535 puts node (32, 64) at X = 32767.5; with f = 4/3 of that the
    // slanted beam is 5/3 of it (a 3-4-5 triangle): z = -(54612.5 - 43690).
    t = before;
    ASSERT_EQ(vexo_corr_set_focal(&t, 43690, 65535, 65535), VEXO_OK);
    EXPECT_EQ(at(t, 32, 32).z, 0);
    EXPECT_LT(at(t, 0, 0).z, at(t, 0, 32).z);
    EXPECT_DOUBLE_EQ(at(t, 32, 64).z, -10922.5);
    EXPECT_DOUBLE_EQ(at(t, 64, 32).z, -10922.5);
    for (GeomPoint &cell : t.cell) cell.z = 0;
    EXPECT_TRUE(same(t, before)); // x, y and flags untouched
    u = before;
    ASSERT_EQ(vexo_corr_set_focal(&u, 160, 110, 110), VEXO_OK);
    ASSERT_EQ(vexo_corr_set_focal(&twice, 160, 110, 220), VEXO_OK);
    for (int k = 0; k < 4225; ++k) ASSERT_EQ(twice.cell[k].z, 2 * u.cell[k].z);

    t = u;
    for (double scale : {0.0, -0.0})
        EXPECT_EQ(vexo_corr_set_scale(&t, scale), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_corr_set_focal(&t, 160, 0, 110), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_TRUE(same(t, u));

    // Sides 0 and 3 scale x row by row, sides 1 and 2 y column by column.
    const struct {
        uint8_t side;
        double factor;
        int line;
        double multiplier;
    } cases[] = {{0, 2, 0, 1},       {0, 2, 64, 2},  {0, 2, 32, 1.5},   {3, 3, 16, 2.5},
                 {3, 3, 0, 3},       {3, 3, 64, 1},  {1, 0.5, 0, 0.5},  {1, 0.5, 64, 1},
                 {1, 0.5, 32, 0.75}, {2, 0.5, 0, 1}, {2, 0.5, 64, 0.5}, {2, 0.5, 16, 0.875}};
    for (const auto &c : cases) {
        t = before;
        ASSERT_EQ(vexo_corr_set_spatial(&t, c.side, c.factor), VEXO_OK);
        const bool rows = c.side == 0 || c.side == 3;
        for (int i = 0; i < 65; ++i) {
            const GeomPoint &got = rows ? at(t, c.line, i) : at(t, i, c.line);
            const GeomPoint &was = rows ? at(before, c.line, i) : at(before, i, c.line);
            ASSERT_EQ(rows ? got.x : got.y, c.multiplier * (rows ? was.x : was.y)) << int(c.side);
            ASSERT_EQ(rows ? got.y : got.x, rows ? was.y : was.x);
        }
    }
    for (uint8_t side : {0, 1, 2, 3, 4, 255}) { // factor 1 changes nothing; side 4 on is refused
        t = before;
        EXPECT_EQ(vexo_corr_set_spatial(&t, side, side < 4 ? 1 : 2),
                  side < 4 ? VEXO_OK : VEXO_ERROR_INVALID_PARAMETER);
        EXPECT_TRUE(same(t, before)) << int(side);
    }
}

TEST(CorrAdjustSingle, BothBitsMoveEachNodeOneBitCrossesLinesInVisitingOrder) {
    const CorrTable before = flagged_table();
    auto weight = [](double rho, double R) { return rho < R ? (R - rho) / R * 0.95 : 0.0; };
    // No error at a node gives a radius of 0, which reaches no node, not even
    // that one; only the two low mode bits count, and without them nothing moves.
    const double node[2] = {kPitch, -2 * kPitch}, from0[2] = {0, 0}, to0[2] = {100, 100};
    for (int32_t mode : {0, 1, 2, 3, 7, -1}) {
        CorrTable t = before;
        EXPECT_EQ(vexo_corr_adjust_single(&t, node, node, 50, mode), VEXO_OK);
        EXPECT_EQ(vexo_corr_adjust_single(&t, from0, to0, 30, mode & ~3), VEXO_OK);
        EXPECT_TRUE(same(t, before)) << mode;
    }
    // Both bits, to = centre node, error one pitch along x, radius one pitch:
    // the neighbours at exactly that distance stay, the centre moves 0.95 of it.
    const double from[2] = {-kPitch, 0}, to[2] = {0, 0};
    CorrTable t = before;
    ASSERT_EQ(vexo_corr_adjust_single(&t, from, to, 1, 3), VEXO_OK);
    EXPECT_EQ(at(t, 32, 32).x, -972.78515625);
    at(t, 32, 32).x = 0;
    EXPECT_TRUE(same(t, before));
    const double from2[2] = {300, -200}, to2[2] = {500, 100}, radius = std::hypot(200, 300) * 6;
    t = before;
    ASSERT_EQ(vexo_corr_adjust_single(&t, from2, to2, 6, 3 | 8), VEXO_OK);
    for (int k = 0; k < 4225; ++k) {
        const double a = weight(std::hypot(before.cell[k].x - 500, before.cell[k].y - 100), radius);
        ASSERT_NEAR(t.cell[k].x, before.cell[k].x - 200 * a, 1e-9);
        ASSERT_NEAR(t.cell[k].y, before.cell[k].y - 300 * a, 1e-9);
    }
    // An error at node (row 10, column 20), in reach of that node only:
    // mode 1 moves y along row 20, mode 2 moves x along column 10.
    const double tx = 20 * kPitch - 32767.5, ty = 10 * kPitch - 32767.5, to20[2] = {tx, ty};
    for (int mode : {1, 2}) {
        const double from20[2] = {mode == 2 ? tx - 100 : tx, mode == 1 ? ty - 100 : ty};
        t = before;
        ASSERT_EQ(vexo_corr_adjust_single(&t, from20, to20, 1, mode), VEXO_OK);
        for (int k = 0; k < 4225; ++k) {
            const double shift = (mode == 1 ? k / 65 == 20 : k % 65 == 10) ? 100 * 0.95 : 0;
            ASSERT_EQ(t.cell[k].y, before.cell[k].y - (mode == 1 ? shift : 0)) << k;
            ASSERT_EQ(t.cell[k].x, before.cell[k].x - (mode == 2 ? shift : 0)) << k;
        }
    }
    // to = node (5, 5), error 800 in y, radius 1280: nodes (5, 4), (4, 5),
    // (5, 5), (6, 5) and (5, 6) start in reach. Visited column by column,
    // each is judged where the earlier moves left it.
    const double p = kPitch, R = 1280, dy = 800, t5 = 5 * p - 32767.5;
    const double to5[2] = {t5, t5}, from5[2] = {t5, t5 - dy};
    const double a1 = weight(p, R);                  // (5, 4) moves row 4, which holds (4, 5)
    const double a2 = weight(p + dy * a1, R);        // (4, 5), now farther, moves row 5
    const double a3 = weight(dy * a2, R);            // (5, 5)
    const double s5 = dy * (a2 + a3 + weight(p, R)); // and (6, 5): row 5 moved three times,
    ASSERT_EQ(weight(std::hypot(p, s5), R), 0.0);    // which takes (5, 6) out of reach
    t = before;
    ASSERT_EQ(vexo_corr_adjust_single(&t, from5, to5, 1.6, 1), VEXO_OK);
    EXPECT_NEAR(at(t, 4, 40).y, at(before, 4, 40).y - dy * a1, 1e-9);
    EXPECT_NEAR(at(t, 5, 40).y, at(before, 5, 40).y - s5, 1e-9);
    for (int r : {0, 3, 6, 7, 64}) EXPECT_EQ(at(t, r, 40).y, at(before, r, 40).y);
}
