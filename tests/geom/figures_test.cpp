// SPDX-License-Identifier: MIT
// Circles, spirals and the dots drawn with them.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "vexo_test_util.hpp"

using namespace vexo_test;

TEST(Figures, CircleTurnsArcsAndRefusals) {
    // Clockwise from +Y, closed exactly; 360 down to 0 the other way (radius <= 0: 0.0001).
    const GeomPoint c = point(10, 20, 3);
    uint32_t n = 0, back_n = 0;
    Points fwd(vexo_geom_create_circle(2.0, &c, 0, 360, 4, &n));
    Points back(vexo_geom_create_circle(-2.0, &c, 360, 0, 4, &back_n));
    ASSERT_EQ(n, 5);
    ASSERT_EQ(back_n, 5);
    const double xs[5] = {10, 12, 10, 8, 10}, ys[5] = {22, 20, 18, 20, 22};
    for (uint32_t i = 0; i < 5; ++i) {
        const GeomPoint &f = fwd.get()[i], &b = back.get()[i];
        EXPECT_NEAR(f.x, xs[i], 1e-6) << i;
        EXPECT_NEAR(f.y, ys[i], 1e-6) << i;
        EXPECT_NEAR(b.x - 10, (10 - xs[i]) / 20000, 1e-9);
        EXPECT_EQ(f.z, 3) << i;
        EXPECT_EQ(f.flags, (i == 4 ? VEXO_POINT_END : 0u)) << i;
        EXPECT_EQ(b.flags, f.flags) << i;
    }
    EXPECT_EQ(fwd.get()[4].x, fwd.get()[0].x);
    EXPECT_EQ(fwd.get()[4].y, fwd.get()[0].y);
    Points two(vexo_geom_create_circle(1.0, &c, 0, 360, 2, &n)); // drawn as three
    Points three(vexo_geom_create_circle(1.0, &c, 0, 360, 3, nullptr));
    EXPECT_EQ(n, 4);
    EXPECT_TRUE(same_bytes(*two, *three, n));
    // A quarter at 8 steps per turn from 90 degrees: 2 points, open; angles
    // in float pi (cos of the float half pi is -4.4e-8, not 6e-17).
    const GeomPoint o = point(0, 0);
    Points arc(vexo_geom_create_circle(1.0, &o, 90, 180, 8, &n));
    ASSERT_EQ(n, 2u);
    EXPECT_EQ(arc.get()[0].y, std::cos(kPiF / 2));
    EXPECT_EQ(arc.get()[1].x, std::sin(kPiF / 2 + kTwoPiF / 8));
    EXPECT_EQ(arc.get()[0].flags, 0);
    EXPECT_EQ(arc.get()[1].flags, VEXO_POINT_END);
    Points twice(vexo_geom_create_circle(1.0, &c, -720, 0, 4, &n)); // whole turns: closed
    EXPECT_EQ(n, 9);
    EXPECT_EQ(twice.get()[8].flags, VEXO_POINT_END);
    // Shorter than a step, empty, NaN, absurdly long, no centre: nothing.
    for (double end : {55.0, 45.0, double(NAN), 1e300}) {
        EXPECT_EQ(vexo_geom_create_circle(1.0, &c, 45, end, 8, &n), nullptr) << end;
        EXPECT_EQ(n, 0) << end;
    }
    EXPECT_EQ(vexo_geom_create_circle(1.0, nullptr, 0, 360, 8, nullptr), nullptr);
}

TEST(Figures, SpiralDirectionsAndRefusals) {
    const GeomPoint c = point(1, 1, 2);
    uint32_t n = 0, rev_n = 0;
    Points in(vexo_geom_create_spiral(0.2, 1.0, &c, 0, 0.1, 36, 0, 0, &n));
    Points rev(vexo_geom_create_spiral(0.2, 1.0, &c, 0, 0.1, 36, 1, 0, &rev_n));
    ASSERT_GT(n, 10);
    ASSERT_EQ(rev_n, n);
    EXPECT_EQ(xyz(*in), (Xyz{1, 2, 2})); // outer radius, above
    EXPECT_GT(in.get()[1].x, 1.0);
    EXPECT_LT(rev.get()[1].x, 1.0); // clockwise unless reversed
    for (uint32_t i = 0; i < n; ++i) EXPECT_EQ(in.get()[i].flags, i + 1 == n ? VEXO_POINT_END : 0u);
    // Outward from the centre: the next radius step is infinite, one point;
    // inward with an outer radius <= 0, one point at 0.0001.
    Points one(vexo_geom_create_spiral(0.0, 1.0, &c, 0, 0.1, 36, 0, 1, &n));
    EXPECT_EQ(n, 1);
    EXPECT_TRUE(same_bytes(*one, point(1, 1, 2, VEXO_POINT_END)));
    Points least(vexo_geom_create_spiral(0.0, -1.0, &c, 0, 0.1, 36, 0, 0, &n));
    EXPECT_EQ(n, 1);
    EXPECT_TRUE(same_bytes(*least, point(1, 1.0001, 2, VEXO_POINT_END)));
    // Inner >= outer inward; a pitch that never ends, or ends too late.
    EXPECT_EQ(vexo_geom_create_spiral(2.0, 1.0, &c, 0, 0.1, 36, 0, 0, &n), nullptr);
    EXPECT_EQ(n, 0);
    for (double pitch : {0.0, double(NAN), 1e-12})
        EXPECT_EQ(vexo_geom_create_spiral(0.0, 1.0, &c, 0, pitch, 36, 0, 0, &n), nullptr);
    EXPECT_EQ(vexo_geom_create_spiral(0.2, 1.0, &c, 0, 0.1, 36, 0, 0, nullptr), nullptr);
}

TEST(Figures, PlainAndShapedDots) {
    const GeomPoint at = point(5, 5, 3, 0xF0);
    const GeomDotShape circle = {0, 0, VEXO_DOT_REVERSE, 4, 2000, 0, 0},
                       none = {1, 0, 0, 12, 1000, 2000, 100}; // inner > outer: no points
    uint32_t count = 0, cap = 0;
    // Into no buffer: the figure plus headroom; reversed, the second point lies left.
    GeomPoint *p = vexo_geom_append_dot_fast(nullptr, &count, &at, true, &circle, &cap);
    ASSERT_EQ(count, 5);
    ASSERT_EQ(cap, 105);
    EXPECT_NEAR(p[1].x, 3.0, 1e-12);
    // Unshaped with a shape or shaped without one: the end-flagged point alone; the figure
    // again, with and without a capacity.
    p = vexo_geom_append_dot_fast(p, &count, &at, false, &circle, &cap);
    p = vexo_geom_append_dot_fast(p, &count, &at, true, nullptr, &cap);
    p = vexo_geom_append_dot_fast(p, &count, &at, true, &circle, &cap);
    p = vexo_geom_append_dot(p, &count, &at, true, &circle);
    ASSERT_EQ(count, 17u);
    for (int i : {5, 6}) {
        EXPECT_EQ(xyz(p[i]), xyz(at)) << i;
        EXPECT_EQ(p[i].flags, VEXO_POINT_END) << i;
    }
    EXPECT_TRUE(same_bytes(p[7], p[0], 5));
    EXPECT_TRUE(same_bytes(p[12], p[0], 5));
    // No figure points, no count or no point: buffer and count unchanged.
    EXPECT_EQ(vexo_geom_append_dot_fast(p, &count, &at, true, &none, &cap), p);
    EXPECT_EQ(vexo_geom_append_dot(p, nullptr, &at, false, nullptr), p);
    EXPECT_EQ(vexo_geom_append_dot(p, &count, nullptr, false, nullptr), p);
    EXPECT_EQ(count, 17u);
    count = UINT32_MAX; // one more would wrap: refused, the buffer freed
    EXPECT_EQ(vexo_geom_append_dot(p, &count, &at, false, nullptr), nullptr);

    // Without a capacity: exactly the spiral the generator draws; the
    // larger record holds kind at byte 258 and the u32 fields from 260.
    const GeomDotShape spiral = {1, 0, VEXO_DOT_REVERSE | VEXO_DOT_OUTWARD, 12, 1000, 200, 100};
    unsigned char params[VEXO_DOT_PARAMS_SIZE];
    std::memset(params, 0xEE, sizeof params);
    std::memcpy(params + 258, &spiral.kind, 2);
    std::memcpy(params + 260, &spiral.options, 20);
    uint32_t a = 0, b = 0, n = 0, one = 0;
    Points direct(vexo_geom_create_spiral(0.2, 1.0, &at, 0, 0.1, 12, 1, 1, &n));
    Points from_shape(vexo_geom_append_dot(nullptr, &a, &at, true, &spiral));
    Points from_record(vexo_geom_append_dot2(nullptr, &b, &at, true, params));
    ASSERT_EQ(a, n);
    ASSERT_EQ(b, n);
    EXPECT_TRUE(same_bytes(*from_shape, *direct, n));
    EXPECT_TRUE(same_bytes(*from_record, *direct, n));
    Points unshaped(vexo_geom_append_dot2(nullptr, &one, &at, false, params));
    EXPECT_EQ(one, 1);
    EXPECT_EQ(unshaped.get()[0].flags, VEXO_POINT_END);
}
