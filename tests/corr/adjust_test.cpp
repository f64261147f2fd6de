// Field scaling, focus compensation, local adjustment and trapezoid
// correction on known tables.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>

#include "vexo.h"

namespace {

constexpr double kPitch = 1023.984375; // 65535 / 64

std::unique_ptr<CorrTable> neutral_table() {
    auto table = std::make_unique<CorrTable>();
    std::memset(table.get(), 0, sizeof(CorrTable));
    vexo_corr_set_neutral(table.get());
    for (int k = 0; k < 4225; ++k)
        table->cell[k].flags = 0x5A5Au + static_cast<uint32_t>(k);
    return table;
}

GeomPoint &at(CorrTable &t, int row, int column) { return t.cell[row * 65 + column]; }

bool same(const CorrTable &a, const CorrTable &b) {
    return std::memcmp(&a, &b, sizeof(CorrTable)) == 0;
}

int changed_cells(const CorrTable &a, const CorrTable &b) {
    int n = 0;
    for (int k = 0; k < 4225; ++k)
        n += std::memcmp(&a.cell[k], &b.cell[k], sizeof(GeomPoint)) != 0;
    return n;
}

TEST(CorrSetScale, RimStaysCentreShrinksAndWorkedNodes) {
    auto t = neutral_table();
    ASSERT_EQ(at(*t, 32, 16).x, -16383.75);
    ASSERT_EQ(vexo_corr_set_scale(t.get(), 0.5), VEXO_OK);
    EXPECT_EQ(at(*t, 32, 32).x, 0.0);
    EXPECT_EQ(at(*t, 32, 32).y, 0.0);
    // Radius 32767.5 * 0.5 is the fixed rim; twice that collapses to 0.
    EXPECT_EQ(at(*t, 32, 16).x, -16383.75);
    EXPECT_EQ(at(*t, 32, 16).y, 0.0);
    EXPECT_EQ(at(*t, 32, 0).x, 0.0);
    EXPECT_EQ(at(*t, 16, 32).y, -16383.75);
    EXPECT_EQ(at(*t, 7, 9).flags, 0x5A5Au + 7 * 65 + 9);
    EXPECT_EQ(at(*t, 7, 9).z, 0.0);

    // Scale 2, node (32, 16): x' = -8191.875, d = 0.25, k = 1.25.
    t = neutral_table();
    ASSERT_EQ(vexo_corr_set_scale(t.get(), 2), VEXO_OK);
    EXPECT_EQ(at(*t, 32, 16).x, -10239.84375);

    // Scale 1 changes nothing beyond rounding.
    t = neutral_table();
    auto before = neutral_table();
    ASSERT_EQ(vexo_corr_set_scale(t.get(), 1), VEXO_OK);
    for (int k = 0; k < 4225; ++k) {
        ASSERT_NEAR(t->cell[k].x, before->cell[k].x, 1e-9);
        ASSERT_NEAR(t->cell[k].y, before->cell[k].y, 1e-9);
    }
}

TEST(CorrSetScale, ZeroScaleAndNullAreRefused) {
    auto t = neutral_table();
    auto before = neutral_table();
    EXPECT_EQ(vexo_corr_set_scale(t.get(), 0), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_corr_set_scale(t.get(), -0.0), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_TRUE(same(*t, *before));
    EXPECT_EQ(vexo_corr_set_scale(nullptr, 1), VEXO_ERROR_INVALID_PARAMETER);
}

TEST(CorrSetFocal, FlatFieldFocusPlane) {
    auto t = neutral_table();
    for (GeomPoint &cell : t->cell)
        cell.z = 123; // discarded
    // Field 65535 puts node (32, 64) at X = 32767.5; with f = 4/3 of that the
    // slanted beam is 5/3 of it (a 3-4-5 triangle): z = -(54612.5 - 43690).
    ASSERT_EQ(vexo_corr_set_focal(t.get(), 43690, 65535, 65535), VEXO_OK);
    EXPECT_DOUBLE_EQ(at(*t, 32, 64).z, -10922.5);
    EXPECT_DOUBLE_EQ(at(*t, 64, 32).z, -10922.5);
    EXPECT_EQ(at(*t, 32, 32).z, 0.0);
    auto neutral = neutral_table();
    for (int k = 0; k < 4225; ++k) {
        ASSERT_LE(t->cell[k].z, 0.0);
        ASSERT_EQ(t->cell[k].x, neutral->cell[k].x);
        ASSERT_EQ(t->cell[k].y, neutral->cell[k].y);
        ASSERT_EQ(t->cell[k].flags, neutral->cell[k].flags);
    }
    // Farther from the centre means more pull-in.
    EXPECT_LT(at(*t, 0, 0).z, at(*t, 0, 32).z);
}

TEST(CorrSetFocal, TargetSizeRescalesAndZeroFieldIsRefused) {
    auto once = neutral_table();
    auto twice = neutral_table();
    ASSERT_EQ(vexo_corr_set_focal(once.get(), 160, 110, 110), VEXO_OK);
    ASSERT_EQ(vexo_corr_set_focal(twice.get(), 160, 110, 220), VEXO_OK);
    for (int k = 0; k < 4225; ++k)
        ASSERT_EQ(twice->cell[k].z, 2 * once->cell[k].z);
    EXPECT_LT(once->cell[0].z, 0.0);

    EXPECT_EQ(vexo_corr_set_focal(once.get(), 160, 0, 110), VEXO_ERROR_INVALID_PARAMETER);
    auto after_refusal = neutral_table();
    ASSERT_EQ(vexo_corr_set_focal(after_refusal.get(), 160, 110, 110), VEXO_OK);
    EXPECT_TRUE(same(*once, *after_refusal));
    EXPECT_EQ(vexo_corr_set_focal(nullptr, 160, 110, 110), VEXO_ERROR_INVALID_PARAMETER);
}

TEST(CorrAdjustSingle, NoErrorNoChangeInEveryMode) {
    const double p[2] = {1000.5, -2000.25};
    for (int32_t mode : {0, 1, 2, 3, 7, -1}) {
        auto t = neutral_table();
        auto before = neutral_table();
        EXPECT_EQ(vexo_corr_adjust_single(t.get(), p, p, 50, mode), VEXO_OK);
        EXPECT_TRUE(same(*t, *before)) << "mode " << mode;
    }
    // Mode 0 with a real error does nothing either.
    const double from[2] = {0, 0}, to[2] = {100, 100};
    auto t = neutral_table();
    auto before = neutral_table();
    EXPECT_EQ(vexo_corr_adjust_single(t.get(), from, to, 30, 0), VEXO_OK);
    EXPECT_TRUE(same(*t, *before));
}

TEST(CorrAdjustSingle, BothAxesMoveSingleNodesInsideTheRadius) {
    // to = centre node, error one pitch along x, radius one pitch: the
    // neighbour at exactly that distance stays, the centre moves 0.95 of it.
    const double from[2] = {-kPitch, 0}, to[2] = {0, 0};
    auto t = neutral_table();
    auto before = neutral_table();
    ASSERT_EQ(vexo_corr_adjust_single(t.get(), from, to, 1, 3), VEXO_OK);
    EXPECT_EQ(at(*t, 32, 32).x, -972.78515625);
    EXPECT_EQ(at(*t, 32, 32).y, 0.0);
    EXPECT_EQ(changed_cells(*t, *before), 1);

    // Wider radius: every node is judged from where it was, whatever its
    // neighbours did; the high bits of mode do not count.
    const double from2[2] = {300, -200}, to2[2] = {500, 100};
    const double dx = 200, dy = 300, radius = std::sqrt(dx * dx + dy * dy) * 6;
    t = neutral_table();
    ASSERT_EQ(vexo_corr_adjust_single(t.get(), from2, to2, 6, 3 | 8), VEXO_OK);
    int moved = 0;
    for (int k = 0; k < 4225; ++k) {
        const GeomPoint &was = before->cell[k];
        const double rho = std::hypot(was.x - 500, was.y - 100);
        const double a = rho < radius ? (radius - rho) / radius * 0.95 : 0;
        moved += a > 0;
        ASSERT_NEAR(t->cell[k].x, was.x - dx * a, 1e-9);
        ASSERT_NEAR(t->cell[k].y, was.y - dy * a, 1e-9);
        ASSERT_EQ(t->cell[k].z, 0.0);
        ASSERT_EQ(t->cell[k].flags, before->cell[k].flags);
    }
    EXPECT_GT(moved, 4);
}

TEST(CorrAdjustSingle, LineModesCrossRowsAndColumns) {
    // Error observed at node (row 10, column 20), radius small enough that
    // only that node is in reach.
    const double tx = 20 * kPitch - 32767.5, ty = 10 * kPitch - 32767.5;
    const double to[2] = {tx, ty}, from_y[2] = {tx, ty - 100}, from_x[2] = {tx - 100, ty};

    auto t = neutral_table();
    auto before = neutral_table();
    ASSERT_EQ(vexo_corr_adjust_single(t.get(), from_y, to, 1, 1), VEXO_OK);
    for (int r = 0; r < 65; ++r)
        for (int c = 0; c < 65; ++c) {
            const double shift = r == 20 ? 100 * 0.95 : 0;
            ASSERT_EQ(at(*t, r, c).y, at(*before, r, c).y - shift) << r << "," << c;
            ASSERT_EQ(at(*t, r, c).x, at(*before, r, c).x);
        }

    t = neutral_table();
    ASSERT_EQ(vexo_corr_adjust_single(t.get(), from_x, to, 1, 2), VEXO_OK);
    for (int r = 0; r < 65; ++r)
        for (int c = 0; c < 65; ++c) {
            const double shift = c == 10 ? 100 * 0.95 : 0;
            ASSERT_EQ(at(*t, r, c).x, at(*before, r, c).x - shift) << r << "," << c;
            ASSERT_EQ(at(*t, r, c).y, at(*before, r, c).y);
        }
}

TEST(CorrAdjustSingle, RowModeJudgesNodesWhereEarlierMovesLeftThem) {
    // to = node (5, 5), error 800 in y, radius 1280: nodes (5, 4), (4, 5),
    // (5, 5), (6, 5), (5, 6) are in reach at the start.  Worked through in
    // visiting order (column by column):
    const double p = kPitch, R = 1280, dy = 800;
    const double ty = 5 * p - 32767.5, tx = ty;
    const double to[2] = {tx, ty}, from[2] = {tx, ty - dy};
    auto weight = [&](double rho) { return rho < R ? (R - rho) / R * 0.95 : 0.0; };
    // (5, 4): distance p; moves row 4, which holds (4, 5), away from `to`.
    const double a1 = weight(p);
    // (4, 5): now p + dy * a1 away; moves row 5.
    const double a2 = weight(p + dy * a1);
    // (5, 5): row 5 has moved by dy * a2.
    const double a3 = weight(dy * a2);
    // (6, 5): row 6 untouched, distance p; moves row 5 again.
    const double a4 = weight(p);
    // (5, 6): in row 5, moved by all three, which took it out of reach, so
    // row 6 stays although (5, 6) started inside the radius.
    const double s5 = dy * (a2 + a3 + a4);
    const double a5 = weight(std::hypot(p, s5));
    ASSERT_EQ(a5, 0.0);

    auto t = neutral_table();
    auto before = neutral_table();
    ASSERT_EQ(vexo_corr_adjust_single(t.get(), from, to, 1.6, 1), VEXO_OK);
    EXPECT_NEAR(at(*t, 4, 40).y, at(*before, 4, 40).y - dy * a1, 1e-9);
    EXPECT_EQ(at(*t, 6, 40).y, at(*before, 6, 40).y);
    EXPECT_NEAR(at(*t, 5, 40).y, at(*before, 5, 40).y - s5, 1e-9);
    EXPECT_LT(a2, a4); // the earlier move took (4, 5) partly out of reach
    for (int r : {0, 3, 7, 64})
        EXPECT_EQ(at(*t, r, 40).y, at(*before, r, 40).y);
}

TEST(CorrAdjustSingle, NullPointersAreRefused) {
    auto t = neutral_table();
    const double p[2] = {0, 0};
    EXPECT_EQ(vexo_corr_adjust_single(nullptr, p, p, 1, 3), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_corr_adjust_single(t.get(), nullptr, p, 1, 3), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_corr_adjust_single(t.get(), p, nullptr, 1, 3), VEXO_ERROR_INVALID_PARAMETER);
}

TEST(CorrSetSpatial, EachSideScalesItsEdgeAndKeepsTheOpposite) {
    auto before = neutral_table();
    for (uint8_t side = 0; side < 4; ++side) {
        auto t = neutral_table();
        ASSERT_EQ(vexo_corr_set_spatial(t.get(), side, 1), VEXO_OK);
        EXPECT_TRUE(same(*t, *before)) << "side " << int(side);
    }

    auto t = neutral_table();
    ASSERT_EQ(vexo_corr_set_spatial(t.get(), 0, 2), VEXO_OK);
    for (int c = 0; c < 65; ++c) {
        ASSERT_EQ(at(*t, 0, c).x, at(*before, 0, c).x);
        ASSERT_EQ(at(*t, 64, c).x, 2 * at(*before, 64, c).x);
        ASSERT_EQ(at(*t, 32, c).x, 1.5 * at(*before, 32, c).x);
        ASSERT_EQ(at(*t, 64, c).y, at(*before, 64, c).y);
    }

    // Side 3, factor 3, row 16: 48 * 3/64 + 16/64 = 2.5.
    t = neutral_table();
    ASSERT_EQ(vexo_corr_set_spatial(t.get(), 3, 3), VEXO_OK);
    EXPECT_EQ(at(*t, 16, 0).x, 2.5 * at(*before, 16, 0).x);
    EXPECT_EQ(at(*t, 0, 0).x, 3 * at(*before, 0, 0).x);
    EXPECT_EQ(at(*t, 64, 0).x, at(*before, 64, 0).x);

    // Sides 1 and 2 scale y by column: first or last column gets the factor.
    t = neutral_table();
    ASSERT_EQ(vexo_corr_set_spatial(t.get(), 1, 0.5), VEXO_OK);
    EXPECT_EQ(at(*t, 0, 0).y, 0.5 * at(*before, 0, 0).y);
    EXPECT_EQ(at(*t, 0, 64).y, at(*before, 0, 64).y);
    EXPECT_EQ(at(*t, 0, 32).y, 0.75 * at(*before, 0, 32).y);
    EXPECT_EQ(at(*t, 0, 0).x, at(*before, 0, 0).x);
    t = neutral_table();
    ASSERT_EQ(vexo_corr_set_spatial(t.get(), 2, 0.5), VEXO_OK);
    EXPECT_EQ(at(*t, 0, 64).y, 0.5 * at(*before, 0, 64).y);
    EXPECT_EQ(at(*t, 0, 0).y, at(*before, 0, 0).y);
    EXPECT_EQ(at(*t, 10, 16).y, 0.875 * at(*before, 10, 16).y);
}

TEST(CorrSetSpatial, BadSideOrNullIsRefusedUnchanged) {
    auto t = neutral_table();
    auto before = neutral_table();
    EXPECT_EQ(vexo_corr_set_spatial(t.get(), 4, 2), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_corr_set_spatial(t.get(), 255, 2), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_TRUE(same(*t, *before));
    EXPECT_EQ(vexo_corr_set_spatial(nullptr, 0, 2), VEXO_ERROR_INVALID_PARAMETER);
}

} // namespace
