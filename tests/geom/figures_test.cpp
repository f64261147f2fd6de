#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "vexo.h"
#include "vexo_test_util.hpp"

using vexo_test::point;
using vexo_test::Points;

namespace {

void expect_near_point(const GeomPoint &p, double x, double y, double z, uint32_t flags) {
    EXPECT_NEAR(p.x, x, 1e-6);
    EXPECT_NEAR(p.y, y, 1e-6);
    EXPECT_EQ(p.z, z);
    EXPECT_EQ(p.flags, flags);
}

} // namespace

TEST(Circle, FullTurnIsClosedExactlyAndRunsClockwiseFromPlusY) {
    const GeomPoint c = point(10, 20, 3);
    uint32_t n = 0;
    Points pts(vexo_geom_create_circle(2.0, &c, 0, 360, 4, &n));
    ASSERT_TRUE(pts);
    ASSERT_EQ(n, 5u);
    expect_near_point(pts.get()[0], 10, 22, 3, 0);
    expect_near_point(pts.get()[1], 12, 20, 3, 0);
    expect_near_point(pts.get()[2], 10, 18, 3, 0);
    expect_near_point(pts.get()[3], 8, 20, 3, 0);
    EXPECT_EQ(pts.get()[4].x, pts.get()[0].x);
    EXPECT_EQ(pts.get()[4].y, pts.get()[0].y);
    EXPECT_EQ(pts.get()[4].flags, 1u);

    // From 360 down to 0 the same points come counter-clockwise.
    Points back(vexo_geom_create_circle(2.0, &c, 360, 0, 4, &n));
    ASSERT_EQ(n, 5u);
    expect_near_point(back.get()[1], 8, 20, 3, 0);
    expect_near_point(back.get()[3], 12, 20, 3, 0);
    EXPECT_EQ(back.get()[4].flags, 1u);
}

TEST(Circle, StepsRadiusAndArcRules) {
    const GeomPoint c = point(0, 0);
    uint32_t n2 = 0, n3 = 0;
    Points two(vexo_geom_create_circle(1.0, &c, 0, 360, 2, &n2));
    Points three(vexo_geom_create_circle(1.0, &c, 0, 360, 3, &n3));
    ASSERT_EQ(n2, n3);
    EXPECT_EQ(std::memcmp(two.get(), three.get(), n3 * sizeof(GeomPoint)), 0);

    // A radius <= 0 becomes 0.0001.
    uint32_t n = 0;
    Points tiny(vexo_geom_create_circle(-5.0, &c, 0, 360, 4, &n));
    ASSERT_TRUE(tiny);
    EXPECT_NEAR(tiny.get()[0].y, 0.0001, 1e-12);

    // A quarter arc with 8 steps per turn: 2 points written, the last ends it.
    Points arc(vexo_geom_create_circle(1.0, &c, 0, 90, 8, &n));
    ASSERT_EQ(n, 2u);
    EXPECT_EQ(arc.get()[0].flags, 0u);
    EXPECT_EQ(arc.get()[1].flags, 1u);
    // The single-precision pi shows: sin(pi_f / 4) differs from sqrt(0.5).
    const double step = 6.2831854820251465 / 8;
    EXPECT_EQ(arc.get()[1].x, std::sin(step));
    EXPECT_NE(arc.get()[1].x, std::sqrt(0.5));

    // Arcs shorter than a step, or empty, give nothing; the count may be NULL.
    EXPECT_EQ(vexo_geom_create_circle(1.0, &c, 0, 10, 8, &n), nullptr);
    EXPECT_EQ(n, 0u);
    EXPECT_EQ(vexo_geom_create_circle(1.0, &c, 45, 45, 8, nullptr), nullptr);
    EXPECT_EQ(vexo_geom_create_circle(1.0, &c, 0, NAN, 8, &n), nullptr);
    EXPECT_EQ(vexo_geom_create_circle(1.0, &c, 0, 1e300, 8, &n), nullptr);
    EXPECT_EQ(vexo_geom_create_circle(1.0, nullptr, 0, 360, 8, &n), nullptr);
    Points full(vexo_geom_create_circle(1.0, &c, -720, 0, 4, nullptr));
    EXPECT_TRUE(full);
}

TEST(Spiral, InwardOutwardAndDegenerateCases) {
    const GeomPoint c = point(1, 1, 2);
    uint32_t n = 0;
    Points in(vexo_geom_create_spiral(0.2, 1.0, &c, 0, 0.1, 36, 0, 0, &n));
    ASSERT_TRUE(in);
    ASSERT_GT(n, 10u);
    // Starts on the outer radius straight above the centre.
    expect_near_point(in.get()[0], 1, 2, 2, 0);
    for (uint32_t i = 0; i + 1 < n; ++i)
        EXPECT_EQ(in.get()[i].flags, 0u);
    EXPECT_EQ(in.get()[n - 1].flags, 1u);
    // The spacing along the curve stays close to the outer turn's.
    const double first_gap = std::hypot(in.get()[1].x - in.get()[0].x, in.get()[1].y - in.get()[0].y);
    const double last_gap = std::hypot(in.get()[n - 1].x - in.get()[n - 2].x,
                                       in.get()[n - 1].y - in.get()[n - 2].y);
    EXPECT_NEAR(last_gap / first_gap, 1.0, 0.35);

    // Inner >= outer running inward: nothing.
    EXPECT_EQ(vexo_geom_create_spiral(2.0, 1.0, &c, 0, 0.1, 36, 0, 0, &n), nullptr);
    EXPECT_EQ(n, 0u);
    // Outward from the centre: the next radius step is infinite, one point.
    Points one(vexo_geom_create_spiral(0.0, 1.0, &c, 0, 0.1, 36, 0, 1, &n));
    ASSERT_EQ(n, 1u);
    expect_near_point(one.get()[0], 1, 1, 2, 1);
    // Reverse turns the other way: the second point lies left of +Y.
    Points rev(vexo_geom_create_spiral(0.2, 1.0, &c, 0, 0.1, 36, 1, 0, &n));
    ASSERT_TRUE(rev);
    EXPECT_LT(rev.get()[1].x, 1.0);
    EXPECT_GT(in.get()[1].x, 1.0);
    // A pitch that never moves the radius would never end.
    EXPECT_EQ(vexo_geom_create_spiral(0.2, 1.0, &c, 0, 0.0, 36, 0, 0, &n), nullptr);
    EXPECT_EQ(vexo_geom_create_spiral(0.2, 1.0, &c, 0, NAN, 36, 0, 0, &n), nullptr);
    // A pitch so fine the figure would be enormous fails instead.
    EXPECT_EQ(vexo_geom_create_spiral(0.0, 1.0, &c, 0, 1e-12, 36, 0, 0, &n), nullptr);
    EXPECT_EQ(vexo_geom_create_spiral(0.2, 1.0, &c, 0, 0.1, 36, 0, 0, nullptr), nullptr);
}

TEST(Dots, PlainDotsAlwaysCarryOnlyTheEndFlag) {
    GeomPoint at = point(1, 2, 3, 0xF0);
    uint32_t count = 0, cap = 0;
    GeomPoint *p = vexo_geom_append_dot_fast(nullptr, &count, &at, false, nullptr, &cap);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(count, 1u);
    EXPECT_EQ(cap, 101u);
    expect_near_point(p[0], 1, 2, 3, 1);
    p = vexo_geom_append_dot(p, &count, &at, false, nullptr);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(count, 2u);
    EXPECT_EQ(p[1].flags, 1u);
    // A shaped dot without a shape is drawn as a plain dot.
    p = vexo_geom_append_dot(p, &count, &at, true, nullptr);
    EXPECT_EQ(count, 3u);
    // Missing count or point: nothing happens.
    EXPECT_EQ(vexo_geom_append_dot(p, nullptr, &at, false, nullptr), p);
    EXPECT_EQ(vexo_geom_append_dot(p, &count, nullptr, false, nullptr), p);
    EXPECT_EQ(count, 3u);
    vexo_geom_release(p);
}

TEST(Dots, ShapedDotsAppendTheirFigure) {
    const GeomPoint at = point(5, 5);
    GeomDotShape circle = {0, 0, 0, 4, 2000, 0, 0};
    uint32_t count = 0, cap = 0;
    // Into an empty buffer: made to the figure's size plus headroom.
    GeomPoint *p = vexo_geom_append_dot_fast(nullptr, &count, &at, true, &circle, &cap);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(count, 5u);
    EXPECT_EQ(cap, 105u);
    expect_near_point(p[0], 5, 7, 0, 0);
    expect_near_point(p[1], 7, 5, 0, 0);
    // Reverse runs 360 -> 0.
    circle.options = VEXO_DOT_REVERSE;
    p = vexo_geom_append_dot_fast(p, &count, &at, true, &circle, &cap);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(count, 10u);
    expect_near_point(p[6], 3, 5, 0, 0);
    EXPECT_EQ(p[9].flags, 1u);

    // A figure that yields no points leaves buffer and count alone.
    GeomDotShape bad_spiral = {1, 0, 0, 12, 1000, 2000, 100};
    EXPECT_EQ(vexo_geom_append_dot_fast(p, &count, &at, true, &bad_spiral, &cap), p);
    EXPECT_EQ(count, 10u);
    vexo_geom_release(p);

    // Without a capacity the growth is exact.
    count = 0;
    GeomDotShape spiral = {1, 0, 0, 12, 1000, 200, 100};
    GeomPoint *q = vexo_geom_append_dot(nullptr, &count, &at, true, &spiral);
    ASSERT_NE(q, nullptr);
    uint32_t expected = 0;
    Points direct(vexo_geom_create_spiral(0.2, 1.0, &at, 0, 0.1, 12, 0, 0, &expected));
    ASSERT_EQ(count, expected);
    EXPECT_EQ(std::memcmp(q, direct.get(), expected * sizeof(GeomPoint)), 0);
    vexo_geom_release(q);
}

TEST(Dots, LargerParameterRecordIsReadAtItsOffsets) {
    unsigned char params[VEXO_DOT_PARAMS_SIZE];
    std::memset(params, 0xEE, sizeof params);
    const uint16_t kind = 0;
    const uint32_t fields[5] = {VEXO_DOT_REVERSE, 4, 2000, 0, 0};
    std::memcpy(params + 258, &kind, 2);
    std::memcpy(params + 260, fields, sizeof fields);

    const GeomPoint at = point(5, 5);
    GeomDotShape shape = {0, 0, VEXO_DOT_REVERSE, 4, 2000, 0, 0};
    uint32_t a = 0, b = 0, cap = 0;
    GeomPoint *from_record = vexo_geom_append_dot2(nullptr, &a, &at, true, params);
    GeomPoint *from_shape = vexo_geom_append_dot(nullptr, &b, &at, true, &shape);
    ASSERT_NE(from_record, nullptr);
    ASSERT_EQ(a, b);
    EXPECT_EQ(std::memcmp(from_record, from_shape, a * sizeof(GeomPoint)), 0);
    from_record = vexo_geom_append_dot_fast2(from_record, &a, &at, false, params, &cap);
    EXPECT_EQ(a, b + 1);
    vexo_geom_release(from_record);
    vexo_geom_release(from_shape);
}
