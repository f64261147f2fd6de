// Clipping one segment to an axis-aligned rectangle.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <memory>

#include "vexo.h"

namespace {

GeomPoint pt(double x, double y, double z = 0.0, uint32_t flags = 0) {
    GeomPoint p{};
    p.x = x;
    p.y = y;
    p.z = z;
    p.flags = flags;
    return p;
}

struct Release {
    void operator()(GeomPoint *p) const { vexo_geom_release(p); }
};
using Part = std::unique_ptr<GeomPoint, Release>;

// left 0, top 10, right 10, bottom 0; elements 2 and 5 are never read.
const double kRect[6] = {0.0, 10.0, NAN, 10.0, 0.0, NAN};

Part clip(const GeomPoint &a, const GeomPoint &b, const double *rect = kRect) {
    return Part(vexo_line_get_inner_part(&a, &b, rect));
}

void expect_point(const GeomPoint &p, double x, double y, double z, uint32_t flags) {
    EXPECT_EQ(p.x, x);
    EXPECT_EQ(p.y, y);
    EXPECT_EQ(p.z, z);
    EXPECT_EQ(p.flags, flags);
}

TEST(LineInnerPart, WhollyInsideIsACopyWithOwnFlags) {
    GeomPoint a = pt(1, 1, 5, 0x44);
    GeomPoint b = pt(2, 3, 6, 0x02);
    a.reserved = 0xabcdef01;
    Part part = clip(a, b);
    ASSERT_TRUE(part);
    expect_point(part.get()[0], 1, 1, 5, 0x44);
    expect_point(part.get()[1], 2, 3, 6, 0x02); // no end flag added here
    EXPECT_EQ(part.get()[0].reserved, 0xabcdef01u);
    // On the border counts as inside.
    part = clip(pt(0, 0, 0, 1), pt(10, 10, 0, 0));
    ASSERT_TRUE(part);
    expect_point(part.get()[0], 0, 0, 0, 1);
    expect_point(part.get()[1], 10, 10, 0, 0);
}

TEST(LineInnerPart, InsideToOutsideRunsFromAToTheExit) {
    Part part = clip(pt(5, 5, 0, 0x41), pt(15, 5, 10, 0x04));
    ASSERT_TRUE(part);
    expect_point(part.get()[0], 5, 5, 0, 0x40); // a without its end flag
    expect_point(part.get()[1], 10, 5, 5, 0x01); // crossing: z along a-b
    EXPECT_EQ(part.get()[1].reserved, 0u);       // zero-filled block
}

TEST(LineInnerPart, OutsideToInsideRunsFromTheEntryToB) {
    Part part = clip(pt(15, 5, 10), pt(5, 5, 0, 0x40));
    ASSERT_TRUE(part);
    expect_point(part.get()[0], 10, 5, 5, 0x00);
    expect_point(part.get()[1], 5, 5, 0, 0x41);
}

TEST(LineInnerPart, ThroughTheRectangleInBothDirections) {
    Part part = clip(pt(-5, 5, 0), pt(15, 5, 20));
    ASSERT_TRUE(part);
    expect_point(part.get()[0], 0, 5, 5, 0);
    expect_point(part.get()[1], 10, 5, 15, 1);
    part = clip(pt(15, 5, 20), pt(-5, 5, 0));
    ASSERT_TRUE(part);
    expect_point(part.get()[0], 10, 5, 15, 0);
    expect_point(part.get()[1], 0, 5, 5, 1);
    // Vertical, upward and downward.
    part = clip(pt(5, -5), pt(5, 15));
    ASSERT_TRUE(part);
    expect_point(part.get()[0], 5, 0, 0, 0);
    expect_point(part.get()[1], 5, 10, 0, 1);
    part = clip(pt(5, 15), pt(5, -5));
    ASSERT_TRUE(part);
    expect_point(part.get()[0], 5, 10, 0, 0);
    expect_point(part.get()[1], 5, 0, 0, 1);
    // Diagonal from corner to corner: top-left then bottom-right.
    part = clip(pt(-5, 15), pt(15, -5));
    ASSERT_TRUE(part);
    expect_point(part.get()[0], 0, 10, 0, 0);
    expect_point(part.get()[1], 10, 0, 0, 1);
}

TEST(LineInnerPart, CornerCrossingsCountTwice) {
    // Entering through the top-left corner and ending inside: the corner is
    // found on the top and on the left edge, which fills both slots, so the
    // inside end b is not used.
    Part part = clip(pt(-5, 15), pt(5, 5, 0, 0x40));
    ASSERT_TRUE(part);
    expect_point(part.get()[0], 0, 10, 0, 0);
    expect_point(part.get()[1], 0, 10, 0, 1);
    // Grazing the corner from outside gives the same degenerate piece.
    part = clip(pt(-5, 5), pt(5, 15));
    ASSERT_TRUE(part);
    expect_point(part.get()[0], 0, 10, 0, 0);
    expect_point(part.get()[1], 0, 10, 0, 1);
    // Entering through the bottom-right corner: found on the right edge and
    // then on the bottom edge.
    part = clip(pt(15, -5), pt(5, 5));
    ASSERT_TRUE(part);
    expect_point(part.get()[0], 10, 0, 0, 0);
    expect_point(part.get()[1], 10, 0, 0, 1);
}

TEST(LineInnerPart, AlongAnEdge) {
    // Lying on the top edge: that edge is coincident, not crossed; the side
    // edges are met at the corners.
    Part part = clip(pt(-5, 10), pt(15, 10));
    ASSERT_TRUE(part);
    expect_point(part.get()[0], 0, 10, 0, 0);
    expect_point(part.get()[1], 10, 10, 0, 1);
}

TEST(LineInnerPart, MissesAndBadArguments) {
    EXPECT_FALSE(clip(pt(-5, 1), pt(-1, 9)));   // both left
    EXPECT_FALSE(clip(pt(11, 1), pt(12, 9)));   // both right
    EXPECT_FALSE(clip(pt(1, 11), pt(9, 12)));   // both above
    EXPECT_FALSE(clip(pt(1, -1), pt(9, -12)));  // both below
    EXPECT_FALSE(clip(pt(6, -5), pt(15, 3)));   // passes the bottom-right corner
    EXPECT_FALSE(clip(pt(-5, 4), pt(4, 20)));   // passes the top-left corner
    const GeomPoint a = pt(1, 1), b = pt(2, 2);
    EXPECT_EQ(vexo_line_get_inner_part(nullptr, &b, kRect), nullptr);
    EXPECT_EQ(vexo_line_get_inner_part(&a, nullptr, kRect), nullptr);
    EXPECT_EQ(vexo_line_get_inner_part(&a, &b, nullptr), nullptr);
    // A NaN rectangle matches nothing and does not crash.
    const double nan_rect[6] = {NAN, NAN, NAN, NAN, NAN, NAN};
    EXPECT_FALSE(clip(a, b, nan_rect));
}

TEST(LineInnerPart, CrossingsLieOnTheSegmentAndTheBorder) {
    // Cross-check against the parametric form of a-b for a sloped segment.
    const GeomPoint a = pt(-2, 3, 1), b = pt(12, 8, 8);
    Part part = clip(a, b);
    ASSERT_TRUE(part);
    const GeomPoint &first = part.get()[0];
    const GeomPoint &second = part.get()[1];
    EXPECT_DOUBLE_EQ(first.x, 0.0);
    EXPECT_DOUBLE_EQ(first.y, 3.0 + 5.0 * 2.0 / 14.0);
    EXPECT_DOUBLE_EQ(first.z, 1.0 + 7.0 * 2.0 / 14.0);
    EXPECT_DOUBLE_EQ(second.x, 10.0);
    EXPECT_DOUBLE_EQ(second.y, 3.0 + 5.0 * 12.0 / 14.0);
    EXPECT_DOUBLE_EQ(second.z, 1.0 + 7.0 * 12.0 / 14.0);
    EXPECT_EQ(first.flags, 0u);
    EXPECT_EQ(second.flags, 1u);
}

} // namespace
