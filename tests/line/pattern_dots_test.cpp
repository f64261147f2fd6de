// SPDX-License-Identifier: MIT
// Dot patterns checked against the arc-length reference of
// pattern_reference.hpp and against the dot appenders.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <iterator>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "line/arc_length.hpp"
#include "pattern_reference.hpp"

using namespace pattern_test;
using vexo_test::same_bytes;
using vexo_test::xyz;
using vexo_test::Xyz;

namespace {

const std::vector<GeomPoint> kBent = polyline({point(0, 0), point(3, 4), point(3, 10)}); // L = 11

// An open square of side 10 ending back on its start (L = 40).
const std::vector<GeomPoint> kSquare =
    polyline({point(0, 0), point(10, 0), point(10, 10), point(0, 10), point(0, 0)});

void expect_near_point(const GeomPoint &got, const GeomPoint &want, double tol, size_t index) {
    EXPECT_NEAR(got.x, want.x, tol) << "dot " << index;
    EXPECT_NEAR(got.y, want.y, tol) << "dot " << index;
    EXPECT_NEAR(got.z, want.z, tol) << "dot " << index;
}

struct CountCase {
    const char *name;
    std::vector<GeomPoint> path;
    double pitch, phase;
    uint32_t count; // floor((length - phase) / pitch) + 1, worked out by hand
};

void PrintTo(const CountCase &c, std::ostream *os) {
    *os << c.name;
}

class DotCount : public ::testing::TestWithParam<CountCase> {};

TEST_P(DotCount, IsFloorOfLengthLessPhaseOverPitchPlusOne) {
    const CountCase c = GetParam();
    const Output run = dots(c.path, c.pitch, c.phase);
    EXPECT_EQ(run.status, VEXO_OK);
    EXPECT_EQ(run.count, c.count) << "pitch " << c.pitch << " phase " << c.phase;
}

// 11 / 2.75 and 11 / 1.1 land exactly on the end: the end dot must be there.
// The length is measured in 3D; the array's end ends a polyline without the
// flag; a pitch just above the tolerance (1e-7) is accepted.
INSTANTIATE_TEST_SUITE_P(
    Pitches, DotCount,
    ::testing::Values(CountCase{"Pitch2", kBent, 2.0, 0.0, 6},
                      CountCase{"Pitch2Phase05", kBent, 2.0, 0.5, 6},
                      CountCase{"Pitch275OnTheEnd", kBent, 2.75, 0.0, 5},
                      CountCase{"Pitch11OnTheEnd", kBent, 1.1, 0.0, 11},
                      CountCase{"Pitch3Phase2", kBent, 3.0, 2.0, 4},
                      CountCase{"Pitch037Phase01", kBent, 0.37, 0.1, 30},
                      CountCase{"PitchBeyondTheLength", kBent, 20.0, 0.0, 1},
                      CountCase{"LengthIn3D", polyline({point(0, 0, 0), point(3, 4, 12)}), 1.0, 0.0,
                                14},
                      CountCase{"ArrayEndWithoutFlag", {point(0, 0), point(4, 0)}, 1.0, 0.0, 5},
                      CountCase{"PitchJustAboveTheTolerance",
                                polyline({point(0, 0), point(1e-6, 0)}), 1.1e-7, 0.0, 10}),
    [](const ::testing::TestParamInfo<CountCase> &info) { return std::string(info.param.name); });

TEST(DotPattern, PositionsFollowTheArcLengthReference) {
    const auto path = random_path(7, 40, 50.0);
    const double pitch = 0.731, phase = 0.25;
    const Output run = dots(path, pitch, phase);
    ASSERT_EQ(run.status, VEXO_OK);
    ASSERT_EQ(run.count,
              static_cast<uint32_t>(std::floor((path_length(path) - phase) / pitch) + 1.0));
    for (size_t k = 0; k < run.points.size(); ++k)
        expect_near_point(run.points[k], point_at(path, phase + k * pitch), 1e-9, k);
}

TEST(DotPattern, EveryDotIsOnePointWithTheEndFlagAndZeroedPadding) {
    const Output run = dots(kBent, 1.0, 0.0);
    ASSERT_EQ(run.points.size(), 12u);
    for (const auto &p : run.points) {
        EXPECT_EQ(p.flags, VEXO_POINT_END);
        EXPECT_EQ(p.reserved, 0u);
    }
}

TEST(DotPattern, VertexDotAppearsOnce) {
    // Pitch 2.5 puts dots on every corner of the square.
    const Output run = dots(kSquare, 2.5, 0.0);
    ASSERT_EQ(run.count, 17u);
    for (size_t k = 1; k < run.points.size(); ++k)
        EXPECT_NEAR(std::hypot(run.points[k].x - run.points[k - 1].x,
                               run.points[k].y - run.points[k - 1].y),
                    2.5, 1e-9)
            << "dots " << k - 1 << " and " << k;
}

TEST(DotPattern, VertexDotSitsExactlyOnTheVertex) {
    // Legs of 3.5 and 2.5 at skew angles: dot 7 falls on the corner, where
    // only the segment that leaves the corner yields its exact coordinates.
    const double cx = -4.26 + 0.6 * 3.5, cy = -0.8 + 0.8 * 3.5;
    const auto path = polyline({point(-4.26, -0.8), point(cx, cy), point(cx + 2.0, cy - 1.5)});
    const Output run = dots(path, 0.5, 0.0);
    ASSERT_EQ(run.count, 13u);
    EXPECT_EQ(xyz(run.points[7]), xyz(path[1]));
}

TEST(DotPattern, PhaseRunsOnAcrossVertices) {
    // (0,0)->(3,0)->(3,10): s = 4 lies 1 past the corner, not 0 or 2.
    const Output run = dots(polyline({point(0, 0), point(3, 0), point(3, 10)}), 2.0, 0.0);
    ASSERT_GE(run.points.size(), 3u);
    expect_near_point(run.points[2], point(3, 1), 1e-12, 2);
}

TEST(DotPattern, PhaseRestartsOnEachPolyline) {
    const auto first = polyline({point(0, 0), point(5, 0)});
    const auto second = polyline({point(0, 3), point(5, 3)});
    const Output run = dots(first + second, 2.0, 0.5);
    ASSERT_EQ(run.count, 6u); // 0.5, 2.5, 4.5 on each
    expect_near_point(run.points[3], point(0.5, 3), 1e-12, 3);
}

TEST(DotPattern, PhaseIsTakenModuloPitch) {
    const Output wrapped = dots(kBent, 2.0, -1.5); // -1.5 mod 2 = 0.5
    const Output plain = dots(kBent, 2.0, 0.5);
    ASSERT_EQ(wrapped.count, plain.count);
    for (size_t k = 0; k < plain.points.size(); ++k)
        expect_near_point(wrapped.points[k], plain.points[k], 1e-12, k);
}

TEST(DotPattern, LonePointIsOneDotAtPhaseZero) {
    const Output run = dots(polyline({point(2, 3, 4)}), 1.0, 0.0);
    ASSERT_EQ(run.count, 1u);
    EXPECT_EQ(xyz(run.points[0]), (Xyz{2, 3, 4}));
}

TEST(DotPattern, FitHitsBothEnds) {
    const auto line = polyline({point(0, 0), point(4, 3), point(4, 8)}); // L = 10
    const Output run = dots(line, 3.0, 0.0, VEXO_PATTERN_FIT);
    ASSERT_EQ(run.count, 4u); // round(10 / 3) = 3 periods of 10/3
    expect_near_point(run.points.front(), point(0, 0), 1e-9, 0);
    expect_near_point(run.points[1], point_at(line, 10.0 / 3.0), 1e-9, 1);
    expect_near_point(run.points.back(), point(4, 8), 1e-9, 3);
}

TEST(DotPattern, FitRoundsThePeriodCountUp) {
    // 10 / 2.7 = 3.7: four periods of 2.5.
    const Output run = dots(polyline({point(0, 0), point(10, 0)}), 2.7, 0.0, VEXO_PATTERN_FIT);
    ASSERT_EQ(run.count, 5u);
    EXPECT_NEAR(run.points[1].x, 2.5, 1e-12);
}

// Open, the square takes 17 dots at this pitch (VertexDotAppearsOnce).
TEST(DotPattern, RingPutsOneDotOnTheSeam) {
    EXPECT_EQ(dots(kSquare, 2.5, 0.0, VEXO_PATTERN_RING).count, 16u);
}

TEST(DotPattern, RingWithFitGetsWholePeriods) {
    const Output run = dots(kSquare, 3.0, 0.0, VEXO_PATTERN_RING | VEXO_PATTERN_FIT);
    ASSERT_EQ(run.count, 13u); // round(40 / 3) = 13, none twice on the seam
    expect_near_point(run.points.back(), point_at(kSquare, 12 * 40.0 / 13.0), 1e-9, 12);
}

TEST(DotPattern, TwoDimensionalOptionMeasuresWithoutZ) {
    // 2D length 5, 3D length 13: pitch 1 gives 6 dots, z interpolated.
    const Output run = dots(polyline({point(0, 0, 0), point(3, 4, 12)}), 1.0, 0.0, VEXO_PATTERN_2D);
    ASSERT_EQ(run.count, 6u);
    expect_near_point(run.points[2], point(1.2, 1.6, 4.8), 1e-12, 2);
}

TEST(DotPattern, SegmentFrameMatchesGetDotBitForBit) {
    std::mt19937 rng(11);
    std::uniform_real_distribution<double> coord(-1e3, 1e3);
    std::uniform_real_distribution<double> spacing(1e-3, 10.0);
    for (int trial = 0; trial < 2000; ++trial) {
        const GeomPoint a = point(coord(rng), coord(rng), coord(rng));
        // Every fifth segment is about 1e-6 long.
        const double scale = trial % 5 == 0 ? 1e-9 : 1.0;
        const GeomPoint b =
            point(a.x + coord(rng) * scale, a.y + coord(rng) * scale, a.z + coord(rng) * scale);
        const double pitch = spacing(rng), offset = spacing(rng);
        const int32_t index = trial % 37;
        GeomPoint want{};
        vexo_line_get_dot(&a, &b, pitch, index, &want, offset);
        const double len = std::sqrt((b.x - a.x) * (b.x - a.x) + (b.y - a.y) * (b.y - a.y) +
                                     (b.z - a.z) * (b.z - a.z));
        if (len <= 1e-7) continue; // the frame is only built on measurable segments
        const GeomPoint got =
            vexo::SegmentFrame(a, b, vexo_line_get_length(&a, &b, false), pitch).at(index, offset);
        EXPECT_TRUE(same_bytes(got, want))
            << "trial " << trial << ": (" << got.x << ", " << got.y << ", " << got.z << ") vs ("
            << want.x << ", " << want.y << ", " << want.z << ")";
    }
}

// Shapes drawn at the pattern's dot positions by the appender.
std::vector<GeomPoint> appended_figures(const std::vector<GeomPoint> &centres,
                                        const GeomDotShape &shape) {
    GeomPoint *buffer = nullptr;
    uint32_t count = 0;
    for (const auto &c : centres) buffer = vexo_geom_append_dot(buffer, &count, &c, true, &shape);
    std::vector<GeomPoint> out(buffer, buffer + count);
    vexo_geom_release(buffer);
    return out;
}

// kind, unused, options, steps, radius, inner radius, pitch.
GeomDotShape circle_shape(uint32_t options) {
    return {0, 0, options, 12, 250, 0, 0};
}

GeomDotShape spiral_shape() {
    return {1, 0, VEXO_DOT_OUTWARD, 16, 400, 50, 100};
}

const std::vector<GeomPoint> kShapePath =
    polyline({point(-3.25, 12.5, -0.5), point(7.125, -1e-3, 2.0), point(1e-9, 6.0, 0.0)});

struct NamedShape {
    const char *name;
    GeomDotShape shape;
};

void PrintTo(const NamedShape &c, std::ostream *os) {
    *os << c.name;
}

class DotShapes : public ::testing::TestWithParam<NamedShape> {};

TEST_P(DotShapes, EqualTheAppendersBytes) {
    const GeomDotShape &shape = GetParam().shape;
    const Output centres = dots(kShapePath, 0.7, 0.2);
    const Output shaped = dots(kShapePath, 0.7, 0.2, 0, &shape);
    const std::vector<GeomPoint> want = appended_figures(centres.points, shape);
    ASSERT_EQ(shaped.status, VEXO_OK);
    ASSERT_EQ(shaped.points.size(), want.size());
    for (size_t i = 0; i < want.size(); ++i)
        ASSERT_TRUE(same_bytes(shaped.points[i], want[i]))
            << "point " << i << ": (" << shaped.points[i].x << ", " << shaped.points[i].y << ", "
            << shaped.points[i].z << ", " << shaped.points[i].flags << ") vs (" << want[i].x << ", "
            << want[i].y << ", " << want[i].z << ", " << want[i].flags << ")";
}

INSTANTIATE_TEST_SUITE_P(
    Shapes, DotShapes,
    ::testing::Values(NamedShape{"Circle", circle_shape(0)},
                      NamedShape{"ReversedCircle", circle_shape(VEXO_DOT_REVERSE)},
                      NamedShape{"Spiral", spiral_shape()}),
    [](const ::testing::TestParamInfo<NamedShape> &info) { return std::string(info.param.name); });

TEST(DotPattern, ShapeAtNegativeZeroCentreKeepsTheSignOfZero) {
    const GeomDotShape shape = circle_shape(0);
    const auto lone = polyline({point(-0.0, -0.0, -0.0)});
    const Output shaped = dots(lone, 1.0, 0.0, 0, &shape);
    const std::vector<GeomPoint> want = appended_figures({lone[0]}, shape);
    ASSERT_EQ(shaped.points.size(), want.size());
    EXPECT_TRUE(same_bytes(shaped.points[0], want[0], want.size()));
}

TEST(DotPattern, ShapeThatDrawsNothingLeavesNoResult) {
    GeomDotShape shape = spiral_shape();
    shape.options = 0;        // inward
    shape.inner_radius = 900; // beyond the outer radius: no point
    const Output run = dots(kBent, 1.0, 0.0, 0, &shape);
    EXPECT_EQ(run.status, VEXO_ERROR_NO_RESULT);
    EXPECT_TRUE(run.null_result);
}

TEST(DotPattern, Pattern2ReadsTheShapeFromTheParameterRecord) {
    const GeomDotShape shape = spiral_shape();
    unsigned char record[VEXO_DOT_PARAMS_SIZE];
    std::memset(record, 0xA5, sizeof record); // the other bytes are not read
    unsigned char *at = record + VEXO_DOT_PARAMS_OFFSET;
    std::memcpy(at, &shape.kind, 2);
    std::memcpy(at + 2, &shape.options, 4);
    std::memcpy(at + 6, &shape.steps, 4);
    std::memcpy(at + 10, &shape.radius, 4);
    std::memcpy(at + 14, &shape.inner_radius, 4);
    std::memcpy(at + 18, &shape.pitch, 4);
    uint32_t count = 0, status = 0;
    GeomPoint *block =
        vexo_line_to_pattern2(kBent.data(), 3, 1.5, 0.0, 0, true, record, &count, &status);
    const Output got = keep(block, count, status);
    const Output want = dots(kBent, 1.5, 0.0, 0, &shape);
    ASSERT_EQ(got.points.size(), want.points.size());
    EXPECT_TRUE(same_bytes(got.points[0], want.points[0], want.points.size()));
}

TEST(DotPattern, EmptyInputIsNoResult) {
    uint32_t count = 7, status = 0;
    EXPECT_EQ(vexo_line_to_pattern(nullptr, 0, 1.0, 0.0, 0, false, nullptr, &count, &status),
              nullptr);
    EXPECT_EQ(status, VEXO_ERROR_NO_RESULT);
    EXPECT_EQ(count, 0u);
}

TEST(DotPattern, PhaseBeyondTheLengthIsNoResult) {
    const Output run = dots(polyline({point(0, 0), point(1, 0)}), 5.0, 2.0);
    EXPECT_EQ(run.status, VEXO_ERROR_NO_RESULT);
}

struct BadDots {
    const char *why;
    double pitch;
    double phase;
    uint32_t options;
    GeomPoint corrupt; // replaces the middle point
};

void PrintTo(const BadDots &c, std::ostream *os) {
    *os << c.why;
}

class DotBadInput : public ::testing::TestWithParam<BadDots> {};

TEST_P(DotBadInput, IsInvalidParameterWithNothingReturned) {
    const BadDots c = GetParam();
    auto path = kBent;
    path[1] = c.corrupt;
    const Output run = dots(path, c.pitch, c.phase, c.options);
    EXPECT_EQ(run.status, VEXO_ERROR_INVALID_PARAMETER) << c.why;
    EXPECT_TRUE(run.null_result) << c.why;
    EXPECT_EQ(run.count, 0u) << c.why;
}

const GeomPoint kFine = point(3, 4);

INSTANTIATE_TEST_SUITE_P(Cases, DotBadInput,
                         ::testing::Values(BadDots{"zero pitch", 0.0, 0.0, 0, kFine},
                                           BadDots{"pitch at the tolerance", 1e-7, 0.0, 0, kFine},
                                           BadDots{"negative pitch", -1.0, 0.0, 0, kFine},
                                           BadDots{"NaN pitch", NAN, 0.0, 0, kFine},
                                           BadDots{"infinite pitch", INFINITY, 0.0, 0, kFine},
                                           BadDots{"NaN phase", 1.0, NAN, 0, kFine},
                                           BadDots{"infinite phase", 1.0, -INFINITY, 0, kFine},
                                           BadDots{"unknown option", 1.0, 0.0, 0x100, kFine},
                                           BadDots{"NaN x", 1.0, 0.0, 0, point(NAN, 4)},
                                           BadDots{"infinite z", 1.0, 0.0, 0,
                                                   point(3, 4, INFINITY)}));

// No points with a count, or no place for the count.
TEST(DotPattern, MissingArraysAreRefused) {
    uint32_t count = 7, status = 0;
    EXPECT_EQ(vexo_line_to_pattern(nullptr, 3, 1.0, 0.0, 0, false, nullptr, &count, &status),
              nullptr);
    EXPECT_EQ(status, VEXO_ERROR_INVALID_PARAMETER);
    status = 0;
    EXPECT_EQ(vexo_line_to_pattern(kBent.data(), 3, 1.0, 0.0, 0, false, nullptr, nullptr, &status),
              nullptr);
    EXPECT_EQ(status, VEXO_ERROR_INVALID_PARAMETER);
}

// 10^12 dots; a length that overflows to infinity; 6 * 10^6 dots that fit,
// but not as circles of 13 points each (past 2^26).
TEST(DotPattern, ResultBeyondTheLimitIsNoMemory) {
    const GeomDotShape circle = circle_shape(0);
    const Output runs[] = {
        dots(polyline({point(0, 0), point(1e6, 0)}), 1e-6, 0.0),
        dots(polyline({point(-1e308, 0), point(1e308, 0)}), 1.0, 0.0, VEXO_PATTERN_FIT),
        dots(polyline({point(0, 0), point(6e6 - 1, 0)}), 1.0, 0.0, 0, &circle)};
    for (size_t i = 0; i < std::size(runs); ++i) {
        EXPECT_EQ(runs[i].status, VEXO_ERROR_NO_MEMORY) << "case " << i;
        EXPECT_TRUE(runs[i].null_result) << "case " << i;
    }
}

} // namespace
