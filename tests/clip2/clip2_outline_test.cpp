// SPDX-License-Identifier: MIT
// Outlines checked against Clipper's offset of the same grid paths.
#include "clip2_support.hpp"

#include <ostream>

using namespace clip2_test;

namespace {

constexpr uint32_t kMiter = VEXO_CLIP_JOIN_MITER, kRound = VEXO_CLIP_JOIN_ROUND,
                   kSquare = VEXO_CLIP_JOIN_SQUARE;
constexpr double kArcTolerance = 0.25; // grid units, as both families use

ClipperLib::Paths clipper_offset(const Pts &subject, ClipperLib::JoinType join, double delta) {
    ClipperLib::ClipperOffset offset(2.0, kArcTolerance);
    offset.AddPaths(input_paths(subject), join, ClipperLib::etClosedPolygon);
    ClipperLib::Paths out;
    offset.Execute(out, delta);
    return out;
}

ClipperLib::Paths outline2(const Pts &subject, uint32_t mode, double distance) {
    auto h = make2(subject);
    EXPECT_EQ(vexo_clip2_outline(h.get(), mode, distance), VEXO_OK);
    return grid_paths(result2(h));
}

struct Shape {
    const char *name;
    Pts path;
};

void PrintTo(const Shape &c, std::ostream *os) {
    *os << c.name;
}

class Clip2OutlineShapes : public ::testing::TestWithParam<Shape> {};

const Pts kEll = ring({0, 0, 20, 0, 20, 5, 5, 5, 5, 20, 0, 20});

} // namespace

TEST_P(Clip2OutlineShapes, RoundJoinsMatchClipperWithinArcTolerance) {
    for (double distance : {1.5, -1.5, 0.2, -0.2}) {
        const double h =
            hausdorff(outline2(GetParam().path, kRound, distance),
                      clipper_offset(GetParam().path, ClipperLib::jtRound, distance * 1000.0));
        EXPECT_LE(h, kArcTolerance + 2.0) << "distance " << distance;
    }
}

TEST_P(Clip2OutlineShapes, MiterAndSquareJoinsMatchClipper) {
    const std::pair<uint32_t, ClipperLib::JoinType> joins[] = {{kMiter, ClipperLib::jtMiter},
                                                               {kSquare, ClipperLib::jtSquare}};
    for (const auto &join : joins)
        for (double distance : {1.0, -1.0}) {
            const double h =
                hausdorff(outline2(GetParam().path, join.first, distance),
                          clipper_offset(GetParam().path, join.second, distance * 1000.0));
            EXPECT_LE(h, 2.0) << "join " << join.first << " distance " << distance;
        }
}

INSTANTIATE_TEST_SUITE_P(
    Shapes, Clip2OutlineShapes,
    ::testing::Values(Shape{"Square", rect(0, 0, 10, 10)}, Shape{"Ell", kEll},
                      Shape{"Triangle", ring({0, 0, 10, 0, 0, 10})},
                      Shape{"Clockwise", ring({0, 0, 0, 10, 10, 10, 10, 0})},
                      Shape{"Holed", rect(0, 0, 20, 20) + ring({5, 5, 5, 15, 15, 15, 15, 5})},
                      Shape{"Zigzag", ring({0, 0, 4, 6, 8, 0, 12, 6, 16, 0, 16, 10, 0, 10})}),
    [](const ::testing::TestParamInfo<Shape> &info) { return info.param.name; });

TEST(Clip2Outline, HoleOfEitherOrientationShrinksAsAHole) {
    // Even-odd nesting, not orientation, tells the hole: the same area both ways.
    for (const Pts &hole : {rect(5, 5, 15, 15), ring({5, 5, 5, 15, 15, 15, 15, 5})}) {
        const double area = area_of(outline2(rect(0, 0, 20, 20) + hole, kMiter, 1.0));
        EXPECT_EQ(area, (22.0 * 22.0 - 8.0 * 8.0) * 1e6);
    }
}

TEST(Clip2Outline, KeyholedOutlineKeepsTheArea) {
    const Pts frame = rect(0, 0, 20, 20) + rect(5, 5, 15, 15);
    auto holed = make2(frame), keyholed = make2(frame);
    ASSERT_EQ(vexo_clip2_outline(holed.get(), kSquare, -1.0), VEXO_OK);
    ASSERT_EQ(vexo_clip2_outline(keyholed.get(), kSquare | VEXO_CLIP2_KEYHOLE, -1.0), VEXO_OK);
    const std::vector<double> holes = path_areas(result2(holed));
    const std::vector<double> keyhole = path_areas(result2(keyholed));
    ASSERT_EQ(holes.size(), 2u);
    ASSERT_EQ(keyhole.size(), 1u);
    EXPECT_EQ(keyhole[0], holes[0] + holes[1]);
    // The hole grows with its corners cut square at 1 along the bisector.
    const double cut = 4.0 * (std::sqrt(2.0) - 1.0) * (std::sqrt(2.0) - 1.0);
    EXPECT_NEAR(holes[1], -(144.0 - cut) * 1e6, 2.0 * 48e3);
}

TEST(Clip2Outline, ShrinkingPastTheMiddleLeavesNothing) {
    auto h = make2(rect(0, 0, 10, 10));
    ASSERT_EQ(vexo_clip2_outline(h.get(), kRound, -6.0), VEXO_OK);
    EXPECT_EQ(result2(h).size(), 0u);
}

TEST(Clip2Outline, OverlappingSubjectPathsOutlineTheirRegion) {
    // Two overlapping squares: one even-odd region with a hole where both lie.
    const double area = area_of(outline2(rect(0, 0, 10, 10) + rect(5, 5, 15, 15), kMiter, 0.5));
    EXPECT_EQ(area, (11.0 * 11.0 * 2 - 6.0 * 6.0 - 4.0 * 4.0) * 1e6);
}

TEST(Clip2Outline, UnderHalfAGridUnitReturnsTheRegion) {
    auto h = make2(rect(0, 0, 10, 10) + rect(2, 2, 4, 4));
    ASSERT_EQ(vexo_clip2_outline(h.get(), kRound, 0.0004), VEXO_OK);
    EXPECT_EQ(path_areas(result2(h)), (std::vector<double>{100e6, -4e6}));
}
