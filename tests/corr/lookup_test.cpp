// SPDX-License-Identifier: MIT
// Reading a table between its nodes (vexo_corr_apply), forwards and back.
#include <random>

#include "fixtures.hpp"

using namespace vexo_test;

namespace {

CorrBase flat_head() {
    return head(15, 180, 120);
}
CorrBase ftheta_head() {
    return head(15, 180, 110, 163);
}

CorrTable table_of(const CorrBase &h) {
    CorrTable t = neutral_table();
    EXPECT_EQ(vexo_corr_set_base(&t, &h, nullptr), VEXO_OK);
    return t;
}

// Bilinear interpolation written as a + w (b - a), apart from the library.
double lerp(double a, double b, double w) {
    return a + w * (b - a);
}

} // namespace

TEST(CorrApply, NodeReadsBackAsItself) {
    // A field of 64 puts node (r, c) at (c - 32, r - 32) exactly.
    const CorrTable t = table_of(flat_head());
    for (int r = 0; r < 65; ++r) {
        for (int c = 0; c < 65; ++c) {
            GeomPoint p = point(c - 32, r - 32);
            ASSERT_EQ(vexo_corr_apply(&t, &p, 1, 64, 0), VEXO_OK);
            ASSERT_EQ(p.x, at(t, r, c).x) << r << ", " << c;
            ASSERT_EQ(p.y, at(t, r, c).y) << r << ", " << c;
        }
    }
}

TEST(CorrApply, BetweenNodesBlendsTheFourCorners) {
    const CorrTable t = table_of(flat_head());
    std::mt19937_64 rng(5);
    std::uniform_real_distribution<double> pos(-32, 32);
    for (int k = 0; k < 1000; ++k) {
        const double x = pos(rng), y = pos(rng);
        const int c = int(std::floor(x + 32)), r = int(std::floor(y + 32));
        const double f = x + 32 - c, g = y + 32 - r;
        const double want_x = lerp(lerp(at(t, r, c).x, at(t, r, c + 1).x, f),
                                   lerp(at(t, r + 1, c).x, at(t, r + 1, c + 1).x, f), g);
        const double want_y = lerp(lerp(at(t, r, c).y, at(t, r, c + 1).y, f),
                                   lerp(at(t, r + 1, c).y, at(t, r + 1, c + 1).y, f), g);
        GeomPoint p = point(x, y);
        ASSERT_EQ(vexo_corr_apply(&t, &p, 1, 64, 0), VEXO_OK);
        ASSERT_NEAR(p.x, want_x, 1e-9) << x << ", " << y;
        ASSERT_NEAR(p.y, want_y, 1e-9) << x << ", " << y;
    }
}

TEST(CorrApply, BeyondTheEdgeTheEdgeCellContinues) {
    // The neutral table is linear, so its edge cells continue the line:
    // a field of 100 reads 150 as 1.5 * 65535.
    const CorrTable t = neutral_table();
    GeomPoint p[2] = {point(150, -20), point(-75, 250)};
    ASSERT_EQ(vexo_corr_apply(&t, p, 2, 100, 0), VEXO_OK);
    EXPECT_NEAR(p[0].x, 98302.5, 1e-9);
    EXPECT_NEAR(p[0].y, -13107.0, 1e-9);
    EXPECT_NEAR(p[1].x, -49151.25, 1e-9);
    EXPECT_NEAR(p[1].y, 163837.5, 1e-9);
}

TEST(CorrApply, FieldSizeScalesPositions) {
    // The same node in a field of 200: position 50 is node column 48.
    const CorrTable t = table_of(ftheta_head());
    GeomPoint p = point(50, -100);
    ASSERT_EQ(vexo_corr_apply(&t, &p, 1, 200, 0), VEXO_OK);
    EXPECT_EQ(p.x, at(t, 0, 48).x);
    EXPECT_EQ(p.y, at(t, 0, 48).y);
}

class CorrApplyRoundTrip : public ::testing::TestWithParam<CorrBase> {};

TEST_P(CorrApplyRoundTrip, InverseReturnsThePosition) {
    const CorrBase h = GetParam();
    const CorrTable t = table_of(h);
    std::mt19937_64 rng(7);
    std::uniform_real_distribution<double> pos(-h.field_size / 2, h.field_size / 2);
    std::vector<GeomPoint> points, original;
    for (int k = 0; k < 2000; ++k) points.push_back(point(pos(rng), pos(rng)));
    original = points;
    ASSERT_EQ(vexo_corr_apply(&t, points.data(), 2000, h.field_size, 0), VEXO_OK);
    ASSERT_EQ(vexo_corr_apply(&t, points.data(), 2000, h.field_size, VEXO_CORR_APPLY_INVERSE),
              VEXO_OK);
    for (int k = 0; k < 2000; ++k) {
        ASSERT_NEAR(points[k].x, original[k].x, 1e-6) << k;
        ASSERT_NEAR(points[k].y, original[k].y, 1e-6) << k;
    }
}

INSTANTIATE_TEST_SUITE_P(Heads, CorrApplyRoundTrip, ::testing::Values(flat_head(), ftheta_head()));

TEST(CorrApply, InverseOfANodeIsItsPosition) {
    const CorrTable t = table_of(flat_head());
    GeomPoint p = at(t, 10, 57);
    ASSERT_EQ(vexo_corr_apply(&t, &p, 1, 64, VEXO_CORR_APPLY_INVERSE), VEXO_OK);
    EXPECT_NEAR(p.x, 57 - 32, 1e-9);
    EXPECT_NEAR(p.y, 10 - 32, 1e-9);
}

TEST(CorrApply, ZFlagsAndPaddingStay) {
    const CorrTable t = table_of(flat_head());
    GeomPoint p[2];
    std::memset(p, 0x5C, sizeof p);
    p[0].x = p[1].x = 3;
    p[0].y = p[1].y = -4;
    const GeomPoint before = p[0];
    ASSERT_EQ(vexo_corr_apply(&t, &p[0], 1, 64, 0), VEXO_OK);
    ASSERT_EQ(vexo_corr_apply(&t, &p[1], 1, 64, VEXO_CORR_APPLY_INVERSE), VEXO_OK);
    for (const GeomPoint &q : p) {
        EXPECT_TRUE(same_bytes(q.z, before.z));
        EXPECT_EQ(q.flags, before.flags);
        EXPECT_EQ(q.reserved, before.reserved);
    }
}

TEST(CorrApply, CoordinateNotFiniteGivesNan) {
    const CorrTable t = table_of(flat_head());
    for (uint32_t options : {0u, VEXO_CORR_APPLY_INVERSE}) {
        GeomPoint p[2] = {point(NAN, 1), point(1, -INFINITY)};
        ASSERT_EQ(vexo_corr_apply(&t, p, 2, 64, options), VEXO_OK);
        for (const GeomPoint &q : p) {
            EXPECT_TRUE(std::isnan(q.x)) << options << ": " << q.x;
            EXPECT_TRUE(std::isnan(q.y)) << options << ": " << q.y;
        }
    }
}

TEST(CorrApply, InverseOfASingularTableFailsAndChangesNothing) {
    // Every node at the same output: no position gives any other value.
    CorrTable t = neutral_table();
    for (GeomPoint &c : t.cell) c.x = c.y = 100;
    GeomPoint p[2] = {point(100, 100), point(5000, 0)};
    const GeomPoint before[2] = {p[0], p[1]};
    EXPECT_EQ(vexo_corr_apply(&t, p, 2, 64, VEXO_CORR_APPLY_INVERSE), VEXO_ERROR_NUMERIC);
    EXPECT_TRUE(same_bytes(p[0], before[0], 2));
}

TEST(CorrApply, BadArgumentsAreRefused) {
    const CorrTable t = neutral_table();
    GeomPoint p = point(1, 2);
    const GeomPoint before = p;
    EXPECT_EQ(vexo_corr_apply(nullptr, &p, 1, 64, 0), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_corr_apply(&t, nullptr, 1, 64, 0), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_corr_apply(&t, &p, 1, 0, 0), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_corr_apply(&t, &p, 1, -64, 0), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_corr_apply(&t, &p, 1, NAN, 0), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_corr_apply(&t, &p, 1, INFINITY, 0), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_corr_apply(&t, &p, 1, 64, 0x2), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_TRUE(same_bytes(p, before));
}

TEST(CorrApply, NoPointsIsFine) {
    const CorrTable t = neutral_table();
    EXPECT_EQ(vexo_corr_apply(&t, nullptr, 0, 64, VEXO_CORR_APPLY_INVERSE), VEXO_OK);
}
