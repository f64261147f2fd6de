// SPDX-License-Identifier: MIT
// Dash patterns: stretches worked out by hand on simple paths, and checked
// against the arc-length reference on a long one.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <iterator>
#include <ostream>
#include <vector>

#include "pattern_reference.hpp"

using namespace pattern_test;
using vexo_test::xyz;
using vexo_test::Xyz;

namespace {

using Path = std::vector<Xyz>;

// The output polylines as coordinate lists, for whole-value comparison.
std::vector<Path> paths(const Output &run) {
    std::vector<Path> out;
    for (const auto &line : run.polylines()) {
        out.emplace_back();
        for (const auto &p : line) out.back().push_back(xyz(p));
    }
    return out;
}

const std::vector<GeomPoint> kTen = polyline({point(0, 0), point(10, 0)});

// Square of side 10 from the origin, counter-clockwise, closed (L = 40).
const std::vector<GeomPoint> kSquare =
    polyline({point(0, 0), point(10, 0), point(10, 10), point(0, 10), point(0, 0)});

// Stretches worked out by hand: each case the whole output.
struct Worked {
    const char *name;
    std::vector<GeomPoint> path;
    VexoDash dash;
    std::vector<Path> dashes;
};

void PrintTo(const Worked &c, std::ostream *os) {
    *os << c.name;
}

class DashWorked : public ::testing::TestWithParam<Worked> {};

TEST_P(DashWorked, GivesTheStretchesWorkedOutByHand) {
    const Output run = dashes(GetParam().path, GetParam().dash);
    ASSERT_EQ(run.status, VEXO_OK);
    EXPECT_EQ(paths(run), GetParam().dashes);
}

// Straight dashes on the x axis from pairs of x: {from, to, from, to, ...}.
std::vector<Path> on_x(const std::vector<double> &ends) {
    std::vector<Path> out;
    for (size_t i = 0; i + 1 < ends.size(); i += 2)
        out.push_back({{ends[i], 0, 0}, {ends[i + 1], 0, 0}});
    return out;
}

const std::vector<GeomPoint> kCorner = polyline({point(0, 0), point(3, 0), point(3, 10)});
const std::vector<GeomPoint> kSix = polyline({point(0, 0), point(6, 0)});

INSTANTIATE_TEST_SUITE_P(
    Cases, DashWorked,
    ::testing::Values(
        Worked{"OnOffAlongALine", kTen, dash_of({2, 1}), on_x({0, 2, 3, 5, 6, 8, 9, 10})},
        Worked{"RingLeavesAnOpenPolylineAlone", kTen, dash_of({2, 1}, 0.0, VEXO_PATTERN_RING),
               on_x({0, 2, 3, 5, 6, 8, 9, 10})},
        // The vertex stays inside a dash; a dash ending on it ends exactly there.
        Worked{
            "AcrossAVertex",
            kCorner,
            dash_of({4, 1}),
            {{{0, 0, 0}, {3, 0, 0}, {3, 1, 0}}, {{3, 2, 0}, {3, 6, 0}}, {{3, 7, 0}, {3, 10, 0}}}},
        Worked{"EndingOnAVertex",
               kCorner,
               dash_of({3, 1}),
               {{{0, 0, 0}, {3, 0, 0}},
                {{3, 1, 0}, {3, 4, 0}},
                {{3, 5, 0}, {3, 8, 0}},
                {{3, 9, 0}, {3, 10, 0}}}},
        // {2, 1, 1} walks as 2 on, 1 off, 1 on, 2 off, 1 on, 1 off.
        Worked{"OddCountRepeatsLikeSvg", polyline({point(0, 0), point(8, 0)}), dash_of({2, 1, 1}),
               on_x({0, 2, 3, 4, 6, 7})},
        Worked{"OffsetShiftsTheStart", kSix, dash_of({2, 1}, 1.0), on_x({0, 1, 2, 4, 5, 6})},
        // -1 mod 3 = 2: the walk starts 1 before the end of the off entry.
        Worked{"NegativeOffsetWrapsIntoThePeriod", kSix, dash_of({2, 1}, -1.0), on_x({1, 3, 4, 6})},
        // The third dash would start exactly at the end (s = 6): dropped.
        Worked{"DashCutToNothingAtTheEnd", kSix, dash_of({2, 1}), on_x({0, 2, 3, 5})},
        Worked{"ZeroOnEntryIsADotIncludingTheEnd",
               polyline({point(0, 0), point(4, 0)}),
               dash_of({0, 2}),
               {{{0, 0, 0}}, {{2, 0, 0}}, {{4, 0, 0}}}},
        Worked{"ZeroOffEntryJoinsTheStretches",
               polyline({point(0, 0), point(4, 0), point(4, 4)}),
               dash_of({1, 0}),
               {{{0, 0, 0}, {4, 0, 0}, {4, 4, 0}}}}),
    [](const ::testing::TestParamInfo<Worked> &info) { return info.param.name; });

TEST(DashPattern, DashesRestartOnEachPolyline) {
    const Output run = dashes(kTen + polyline({point(0, 5), point(10, 5)}), dash_of({2, 1}));
    const auto got = paths(run);
    ASSERT_EQ(got.size(), 8u);
    EXPECT_EQ(got[4], (Path{{0, 5, 0}, {2, 5, 0}}));
}

TEST(DashPattern, OnlyTheLastPointOfADashCarriesTheEndFlag) {
    const Output run = dashes(kTen, dash_of({2, 1}));
    ASSERT_EQ(run.points.size(), 8u);
    for (size_t i = 0; i < run.points.size(); ++i)
        EXPECT_EQ(run.points[i].flags, i % 2 == 1 ? VEXO_POINT_END : 0u) << "point " << i;
}

TEST(DashPattern, ZInterpolatedAlongTheSegment) {
    const Output run =
        dashes(polyline({point(0, 0, 0), point(10, 0, 10)}), dash_of({5, 5}, 0.0, VEXO_PATTERN_2D));
    const auto got = paths(run);
    ASSERT_EQ(got.size(), 1u);
    EXPECT_NEAR(got[0][1][0], 5.0, 1e-12);
    EXPECT_NEAR(got[0][1][2], 5.0, 1e-12);
}

TEST(DashPattern, ThreeDimensionalMeasureByDefault) {
    // 3D length 10 * sqrt(2): a dash of 5 ends at x = z = 5 / sqrt(2).
    const Output run = dashes(polyline({point(0, 0, 0), point(10, 0, 10)}), dash_of({5, 5}));
    const auto got = paths(run);
    ASSERT_FALSE(got.empty());
    EXPECT_NEAR(got[0][1][0], 5.0 / std::sqrt(2.0), 1e-12);
    EXPECT_NEAR(got[0][1][2], 5.0 / std::sqrt(2.0), 1e-12);
}

TEST(DashPattern, SeamSplitsTheDashOfAClosedSquareWithoutRing) {
    // Offset 1: the stretch at s = 39..42 runs over the seam.
    const Output run = dashes(kSquare, dash_of({3, 2}, 1.0));
    const auto got = paths(run);
    ASSERT_EQ(got.size(), 9u);
    EXPECT_EQ(got.front(), (Path{{0, 0, 0}, {2, 0, 0}}));
    EXPECT_EQ(got.back(), (Path{{0, 1, 0}, {0, 0, 0}}));
}

TEST(DashPattern, RingJoinsTheDashAcrossTheSeam) {
    const Output run = dashes(kSquare, dash_of({3, 2}, 1.0, VEXO_PATTERN_RING));
    const auto got = paths(run);
    ASSERT_EQ(got.size(), 8u);
    EXPECT_EQ(got.front(), (Path{{4, 0, 0}, {7, 0, 0}}));
    EXPECT_EQ(got.back(), (Path{{0, 1, 0}, {0, 0, 0}, {2, 0, 0}}));
}

TEST(DashPattern, FitStartsAndEndsOnAnOpenPolyline) {
    // round((10 - 2) / 3) = 3 periods plus the first dash: 11 units onto 10.
    const Output run = dashes(kTen, dash_of({2, 1}, 0.0, VEXO_PATTERN_FIT));
    const auto got = paths(run);
    ASSERT_EQ(got.size(), 4u);
    EXPECT_EQ(got.front().front(), (Xyz{0, 0, 0}));
    EXPECT_EQ(got.back().back(), (Xyz{10, 0, 0}));
    EXPECT_NEAR(got.back().front()[0], 9.0 * 10.0 / 11.0, 1e-12);
}

TEST(DashPattern, FitOnARingMakesTheSeamDashWhole) {
    // 40 / 7 = 5.7: six periods of 40/6; offset 1 (scaled) puts a dash on the seam.
    const Output run = dashes(kSquare, dash_of({4, 3}, 1.0, VEXO_PATTERN_FIT | VEXO_PATTERN_RING));
    const auto got = paths(run);
    ASSERT_EQ(got.size(), 6u);
    const double scale = 40.0 / 42.0;
    const auto &seam = got.back();
    ASSERT_EQ(seam.size(), 3u);
    EXPECT_EQ(seam[1], (Xyz{0, 0, 0}));
    // The seam dash is one whole "on" entry long.
    const double before = seam[0][1], after = seam[2][0];
    EXPECT_NEAR(before + after, 4.0 * scale, 1e-12);
}

TEST(DashPattern, EndpointsFollowTheArcLengthReference) {
    const auto path = random_path(5, 30, 20.0);
    const double on = 1.3, off = 0.45, length = path_length(path);
    const Output run = dashes(path, dash_of({on, off}));
    const auto lines = run.polylines();
    ASSERT_EQ(lines.size(), static_cast<size_t>(std::ceil(length / (on + off))));
    for (size_t k = 0; k + 1 < lines.size(); ++k) {
        const double s0 = k * (on + off);
        const GeomPoint want0 = point_at(path, s0), want1 = point_at(path, s0 + on);
        EXPECT_NEAR(lines[k].front().x, want0.x, 1e-9) << "dash " << k;
        EXPECT_NEAR(lines[k].front().z, want0.z, 1e-9) << "dash " << k;
        EXPECT_NEAR(lines[k].back().y, want1.y, 1e-9) << "dash " << k;
        EXPECT_NEAR(lines[k].back().z, want1.z, 1e-9) << "dash " << k;
    }
}

struct BadDash {
    const char *why;
    VexoDash dash;
};

void PrintTo(const BadDash &c, std::ostream *os) {
    *os << c.why;
}

class DashBadInput : public ::testing::TestWithParam<BadDash> {};

TEST_P(DashBadInput, IsInvalidParameterWithNothingReturned) {
    const BadDash c = GetParam();
    const Output run = dashes(kTen, c.dash);
    EXPECT_EQ(run.status, VEXO_ERROR_INVALID_PARAMETER) << c.why;
    EXPECT_TRUE(run.null_result) << c.why;
    EXPECT_EQ(run.count, 0u) << c.why;
}

VexoDash with_count(uint32_t count) {
    VexoDash d = dash_of({1, 1});
    d.count = count;
    return d;
}

INSTANTIATE_TEST_SUITE_P(
    Cases, DashBadInput,
    ::testing::Values(BadDash{"no entry", with_count(0)},
                      BadDash{"too many entries", with_count(VEXO_DASH_MAX + 1)},
                      BadDash{"negative entry", dash_of({2, -1})},
                      BadDash{"NaN entry", dash_of({2, NAN})},
                      BadDash{"infinite entry", dash_of({INFINITY, 1})},
                      BadDash{"period at the tolerance", dash_of({5e-8, 5e-8})},
                      BadDash{"all zero", dash_of({0, 0})},
                      BadDash{"NaN offset", dash_of({1, 1}, NAN)},
                      BadDash{"unknown option", dash_of({1, 1}, 0.0, 0x80)}));

TEST(DashPattern, SixteenEntriesAreAccepted) {
    const Output run = dashes(kTen, with_count(VEXO_DASH_MAX));
    EXPECT_EQ(run.status, VEXO_OK);
}

TEST(DashPattern, NullDashIsRefused) {
    uint32_t count = 7, status = 0;
    EXPECT_EQ(vexo_line_to_pattern3(kTen.data(), 2, nullptr, &count, &status), nullptr);
    EXPECT_EQ(status, VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(count, 0u);
}

// 10^9 periods; 2e308 overflows, and the fitted pattern would be NaN and
// never end.
TEST(DashPattern, ResultBeyondTheLimitIsNoMemory) {
    const Output runs[] = {dashes(polyline({point(0, 0), point(1e3, 0)}), dash_of({1e-6, 1e-6})),
                           dashes(polyline({point(-1e308, 0), point(1e308, 0)}),
                                  dash_of({1, 1}, 0.0, VEXO_PATTERN_FIT))};
    for (size_t i = 0; i < std::size(runs); ++i) {
        EXPECT_EQ(runs[i].status, VEXO_ERROR_NO_MEMORY) << "case " << i;
        EXPECT_TRUE(runs[i].null_result) << "case " << i;
    }
}

TEST(DashPattern, NothingDrawnIsNoResult) {
    // The only dash starts beyond the offset's reach: offset 1 of {1, 10}
    // leaves the whole line in the gap.
    const Output run = dashes(polyline({point(0, 0), point(5, 0)}), dash_of({1, 10}, 1.0));
    EXPECT_EQ(run.status, VEXO_ERROR_NO_RESULT);
    EXPECT_TRUE(run.null_result);
}

} // namespace
