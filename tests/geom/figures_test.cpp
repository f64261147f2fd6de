// Circles, spirals and the dots drawn with them.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "vexo_test_util.hpp"

using vexo_test::point;
using vexo_test::Points;
using vexo_test::same_bytes;

TEST(Figures, CircleTurnsArcsAndRefusals) {
    // Clockwise from +Y, closed exactly; from 360 down to 0 the other way
    // (here with a radius <= 0, which becomes 0.0001).
    const GeomPoint c = point(10, 20, 3);
    uint32_t n = 0, back_n = 0;
    Points fwd(vexo_geom_create_circle(2.0, &c, 0, 360, 4, &n));
    Points back(vexo_geom_create_circle(-2.0, &c, 360, 0, 4, &back_n));
    ASSERT_EQ(n + back_n, 10u);
    const double xs[5] = {10, 12, 10, 8, 10}, ys[5] = {22, 20, 18, 20, 22};
    for (uint32_t i = 0; i < 5; ++i) {
        const GeomPoint &f = fwd.get()[i], &b = back.get()[i];
        EXPECT_NEAR(f.x, xs[i], 1e-6);
        EXPECT_NEAR(f.y, ys[i], 1e-6);
        EXPECT_NEAR(b.x - 10, (10 - xs[i]) / 20000, 1e-9);
        EXPECT_TRUE(f.z == 3 && f.flags == (i == 4 ? 1u : 0u) && b.flags == f.flags) << i;
    }
    EXPECT_TRUE(fwd.get()[4].x == fwd.get()[0].x && fwd.get()[4].y == fwd.get()[0].y);
    Points two(vexo_geom_create_circle(1.0, &c, 0, 360, 2, &n)); // drawn as three
    Points three(vexo_geom_create_circle(1.0, &c, 0, 360, 3, nullptr));
    ASSERT_EQ(n, 4u);
    EXPECT_TRUE(same_bytes(*two, *three, n));
    // A quarter at 8 steps per turn: 2 points, sin of the float pi showing.
    const GeomPoint o = point(0, 0);
    Points arc(vexo_geom_create_circle(1.0, &o, 0, 90, 8, &n));
    ASSERT_EQ(n, 2u);
    EXPECT_EQ(arc.get()[1].x, std::sin(vexo_test::kTwoPiF / 8));
    EXPECT_NE(arc.get()[1].x, std::sqrt(0.5));
    EXPECT_TRUE(arc.get()[0].flags == 0 && arc.get()[1].flags == 1);
    EXPECT_TRUE(Points(vexo_geom_create_circle(1.0, &c, -720, 0, 4, nullptr)));
    // Shorter than a step, empty, NaN, absurdly long, no centre: nothing.
    EXPECT_EQ(vexo_geom_create_circle(1.0, &c, 0, 10, 8, &n), nullptr);
    EXPECT_EQ(n, 0u);
    for (double end : {45.0, double(NAN), 1e300})
        EXPECT_EQ(vexo_geom_create_circle(1.0, &c, 45, end, 8, nullptr), nullptr);
    EXPECT_EQ(vexo_geom_create_circle(1.0, nullptr, 0, 360, 8, &n), nullptr);
}

TEST(Figures, SpiralDirectionsAndRefusals) {
    const GeomPoint c = point(1, 1, 2);
    uint32_t n = 0, rev_n = 0;
    Points in(vexo_geom_create_spiral(0.2, 1.0, &c, 0, 0.1, 36, 0, 0, &n));
    Points rev(vexo_geom_create_spiral(0.2, 1.0, &c, 0, 0.1, 36, 1, 0, &rev_n));
    ASSERT_GT(n, 10u);
    EXPECT_EQ(vexo_test::xyz(*in), (vexo_test::Xyz{1, 2, 2})); // outer radius, above
    EXPECT_TRUE(in.get()[1].x > 1.0 && rev.get()[1].x < 1.0);  // clockwise unless reversed
    for (uint32_t i = 0; i < n; ++i)
        EXPECT_EQ(in.get()[i].flags, i + 1 == n ? 1u : 0u);
    // Outward from the centre: the next radius step is infinite, one point.
    Points one(vexo_geom_create_spiral(0.0, 1.0, &c, 0, 0.1, 36, 0, 1, &n));
    ASSERT_EQ(n, 1u);
    EXPECT_TRUE(same_bytes(*one, point(1, 1, 2, 1)));
    // Inner >= outer inward; a pitch that never ends, or ends too late.
    EXPECT_EQ(vexo_geom_create_spiral(2.0, 1.0, &c, 0, 0.1, 36, 0, 0, &n), nullptr);
    EXPECT_EQ(n, 0u);
    for (double pitch : {0.0, double(NAN), 1e-12})
        EXPECT_EQ(vexo_geom_create_spiral(0.0, 1.0, &c, 0, pitch, 36, 0, 0, &n), nullptr);
    EXPECT_EQ(vexo_geom_create_spiral(0.2, 1.0, &c, 0, 0.1, 36, 0, 0, nullptr), nullptr);
}

TEST(Figures, PlainAndShapedDots) {
    const GeomPoint at = point(5, 5, 3, 0xF0);
    const GeomDotShape circle = {0, 0, VEXO_DOT_REVERSE, 4, 2000, 0, 0},
                       none = {1, 0, 0, 12, 1000, 2000, 100}; // inner > outer: no points
    uint32_t count = 0, cap = 0;
    // Into no buffer: the figure plus headroom; reversed, the second point
    // lies on the left.
    GeomPoint *p = vexo_geom_append_dot_fast(nullptr, &count, &at, true, &circle, &cap);
    ASSERT_TRUE(count == 5 && cap == 105);
    EXPECT_NEAR(p[1].x, 3.0, 1e-12);
    // Plain, or shaped without a shape: the point with the end flag alone.
    p = vexo_geom_append_dot_fast(p, &count, &at, false, nullptr, &cap);
    p = vexo_geom_append_dot_fast(p, &count, &at, true, nullptr, &cap);
    ASSERT_EQ(count, 7u);
    for (int i : {5, 6})
        EXPECT_TRUE(vexo_test::xyz(p[i]) == vexo_test::xyz(at) && p[i].flags == 1) << i;
    // No figure points, no count or no point: buffer and count unchanged.
    EXPECT_EQ(vexo_geom_append_dot_fast(p, &count, &at, true, &none, &cap), p);
    EXPECT_EQ(vexo_geom_append_dot(p, nullptr, &at, false, nullptr), p);
    EXPECT_EQ(vexo_geom_append_dot(p, &count, nullptr, false, nullptr), p);
    EXPECT_EQ(count, 7u);
    vexo_geom_release(p);

    // Without a capacity: exactly the spiral the generator draws; the
    // larger record holds kind at byte 258 and the u32 fields from 260.
    const GeomDotShape spiral = {1, 0, VEXO_DOT_REVERSE, 12, 1000, 200, 100};
    unsigned char params[VEXO_DOT_PARAMS_SIZE];
    std::memset(params, 0xEE, sizeof params);
    std::memcpy(params + 258, &spiral.kind, 2);
    std::memcpy(params + 260, &spiral.options, 20);
    uint32_t a = 0, b = 0, n = 0;
    Points direct(vexo_geom_create_spiral(0.2, 1.0, &at, 0, 0.1, 12, 1, 0, &n));
    Points from_shape(vexo_geom_append_dot(nullptr, &a, &at, true, &spiral));
    Points from_record(vexo_geom_append_dot2(nullptr, &b, &at, true, params));
    ASSERT_TRUE(a == n && b == n);
    EXPECT_TRUE(same_bytes(*from_shape, *direct, n) && same_bytes(*from_record, *direct, n));
}
