// Clipping one segment to an axis-aligned rectangle.
#include <gtest/gtest.h>

#include <cmath>
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

struct ClipCase {
    const char *what;
    GeomPoint a, b;
    GeomPoint first, second; // expected x, y, z, flags
};

const ClipCase kCases[] = {
    {"wholly inside: copies with their own flags", pt(1, 1, 5, 0x44), pt(2, 3, 6, 0x02),
     pt(1, 1, 5, 0x44), pt(2, 3, 6, 0x02)},
    {"on the border counts as inside", pt(0, 0, 0, 1), pt(10, 10), pt(0, 0, 0, 1), pt(10, 10)},
    {"inside to outside: a, then the exit with z along a-b", pt(5, 5, 0, 0x41),
     pt(15, 5, 10, 0x04), pt(5, 5, 0, 0x40), pt(10, 5, 5, 0x01)},
    {"outside to inside: the entry, then b", pt(15, 5, 10), pt(5, 5, 0, 0x40),
     pt(10, 5, 5, 0x00), pt(5, 5, 0, 0x41)},
    {"through, rightward", pt(-5, 5, 0), pt(15, 5, 20), pt(0, 5, 5), pt(10, 5, 15, 1)},
    {"through, leftward", pt(15, 5, 20), pt(-5, 5, 0), pt(10, 5, 15), pt(0, 5, 5, 1)},
    {"through, upward", pt(5, -5), pt(5, 15), pt(5, 0), pt(5, 10, 0, 1)},
    {"through, downward", pt(5, 15), pt(5, -5), pt(5, 10), pt(5, 0, 0, 1)},
    {"corner to corner", pt(-5, 15), pt(15, -5), pt(0, 10), pt(10, 0, 0, 1)},
    // A corner is found on both edges that meet there, which fills both
    // slots: the inside end b is then not used.
    {"entering through the top-left corner", pt(-5, 15), pt(5, 5, 0, 0x40), pt(0, 10),
     pt(0, 10, 0, 1)},
    {"grazing the top-left corner", pt(-5, 5), pt(5, 15), pt(0, 10), pt(0, 10, 0, 1)},
    {"entering through the bottom-right corner", pt(15, -5), pt(5, 5), pt(10, 0),
     pt(10, 0, 0, 1)},
    // The top edge is coincident, not crossed; the side edges meet it.
    {"along the top edge", pt(-5, 10), pt(15, 10), pt(0, 10), pt(10, 10, 0, 1)},
};

TEST(LineInnerPart, WorkedCases) {
    for (const ClipCase &c : kCases) {
        SCOPED_TRACE(c.what);
        Part part = clip(c.a, c.b);
        ASSERT_TRUE(part);
        for (int i = 0; i < 2; ++i) {
            const GeomPoint &got = part.get()[i];
            const GeomPoint &want = i == 0 ? c.first : c.second;
            EXPECT_EQ(got.x, want.x) << i;
            EXPECT_EQ(got.y, want.y) << i;
            EXPECT_EQ(got.z, want.z) << i;
            EXPECT_EQ(got.flags, want.flags) << i;
        }
    }
}

TEST(LineInnerPart, PaddingBytes) {
    GeomPoint a = pt(5, 5), b = pt(6, 6);
    a.reserved = 0xabcdef01;
    Part part = clip(a, b);
    ASSERT_TRUE(part);
    EXPECT_EQ(part.get()[0].reserved, 0xabcdef01u); // whole-record copy
    part = clip(a, pt(15, 5));
    ASSERT_TRUE(part);
    EXPECT_EQ(part.get()[1].reserved, 0u); // crossing in a zero-filled block
}

TEST(LineInnerPart, MissesAndBadArguments) {
    EXPECT_FALSE(clip(pt(-5, 1), pt(-1, 9)));  // both left
    EXPECT_FALSE(clip(pt(11, 1), pt(12, 9)));  // both right
    EXPECT_FALSE(clip(pt(1, 11), pt(9, 12)));  // both above
    EXPECT_FALSE(clip(pt(1, -1), pt(9, -12))); // both below
    EXPECT_FALSE(clip(pt(6, -5), pt(15, 3)));  // passes the bottom-right corner
    EXPECT_FALSE(clip(pt(-5, 4), pt(4, 20)));  // passes the top-left corner
    const GeomPoint a = pt(1, 1), b = pt(2, 2);
    EXPECT_EQ(vexo_line_get_inner_part(nullptr, &b, kRect), nullptr);
    EXPECT_EQ(vexo_line_get_inner_part(&a, nullptr, kRect), nullptr);
    EXPECT_EQ(vexo_line_get_inner_part(&a, &b, nullptr), nullptr);
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
