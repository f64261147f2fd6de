// SPDX-License-Identifier: MIT
// Single segments: crossing, clipping, length, dots, vectors; compaction of processed points.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "line/crossing.hpp"
#include "vexo_test_util.hpp"

using namespace vexo_test;

TEST(LineCrossing, Round4GridWorkedCasesKeepFlagAndBadArguments) {
    const double beyond = static_cast<double>(INT64_MIN) / 10000.0; // NaN and outside int64
    const double grid[][2] = {
        {1.25, 1.25},      {0.12345, 0.1235}, {-0.12345, -0.1235}, {0.12344, 0.1234},
        {0.00015, 0.0001}, // scales to 1.4999999999999998: down, as on the hosts
        {1.00001, 1.0},    {1.00004, 1.0},    {1.00006, 1.0001},   {-0.00004, 0.0},
        {9e14, 9e14},      {1e300, beyond},   {-1e300, beyond},    {NAN, beyond}};
    for (const auto &c : grid) EXPECT_EQ(vexo::round4(c[0]), c[1]) << c[0];

    // Slopes 1.00004 and 1.00006 differ on the grid: the lines cross far out.
    const double far_x = -1.0 / (1.00004 - (0.00006 + 1.0)), far_y = far_x * 1.00004;
    const GeomPoint o = point(0, 0);
    struct {
        GeomPoint a0, a1, b0, b1;
        bool a_open, b_open;
        uint32_t code;
        Xyz at;
    } cases[] = {
        // Inside both: z along a only.
        {o, point(2, 2, 4), point(0, 2, 9), point(2, 0, 9), 0, 0, 1, {1, 1, 2}},
        // y = x (0..1) meets y = 4 - x at b's end (2, 2): outside a until a
        // is unbounded (z then extrapolated along a).
        {o, point(1, 1, 1), point(4, 0), point(2, 2), 0, 0, 2, {2, 2, 0}},
        {o, point(1, 1, 1), point(4, 0), point(2, 2), 1, 0, 1, {2, 2, 2}},
        {o, point(1, 1, 1), point(4, 0), point(2, 2), 0, 1, 2, {2, 2, 0}},
        {o, point(1, 1, 1), point(4, 0), point(3, 1), 1, 0, 2, {2, 2, 0}}, // b too short
        {o, point(1, 1.00004), point(0, -1), point(1, 0.00006), 1, 1, 1, {far_x, far_y, 0}},
        // Ends count as inside, on the grid: 0.00004 past an end still does.
        {o, point(-1, 0), point(-1.00004, -1), point(-1.00004, 1), 0, 0, 1, {-1.00004, 0, 0}},
        {o, point(1, 0), point(1.00006, -1), point(1.00006, 1), 0, 0, 2, {1.00006, 0, 0}},
        // Slopes 1.00001 and 1.00004 (or offsets 0.00004 apart) share the grid:
        // coincident through the origin, parallel when offset; out unchanged.
        {o, point(1, 1.00001), o, point(1, 1.00004), 0, 0, 4, {5, 6, 7}},
        {o, point(1, 1.00001), point(0, 1), point(1, 2.00004), 0, 0, 3, {5, 6, 7}},
        {o, point(1, 1), point(0, 0.00004), point(1, 1.00004), 0, 0, 4, {5, 6, 7}},
        // Vertical means dx exactly 0; z still runs along a.
        {point(1, 0), point(1, 4), point(1, 7), point(1, 9), 0, 0, 4, {5, 6, 7}},
        {point(1, 0), point(1, 4), point(1 + 1e-9, 7), point(1 + 1e-9, 9), 0, 0, 3, {5, 6, 7}},
        {point(1, 0, 0), point(1, 4, 8), o, point(2, 2), 0, 0, 1, {1, 1, 2}},
        {o, point(4, 2, 2), point(2, -5), point(2, 5), 0, 0, 1, {2, 1, 1}},
        {point(1, 1, 3), point(1, 1, 9), o, point(2, 2), 0, 0, 1, {1, 1, 3}}, // a is a point
    };
    for (const auto &c : cases) {
        GeomPoint out = point(5, 6, 7, 0xff);
        EXPECT_EQ(vexo_line_get_crossing(&c.a0, &c.a1, c.a_open, &c.b0, &c.b1, c.b_open, &out),
                  c.code)
            << &c - cases;
        EXPECT_EQ(xyz(out), c.at) << &c - cases;
        EXPECT_EQ(out.flags, 0) << &c - cases;
    }

    // 0x40 (and no other bit) only when all four ends carry it, whatever the outcome.
    const GeomPoint k = point(0, 0, 0, 0x43), l = point(2, 2, 0, 0x41), m = point(0, 2, 0, 0x47),
                    n = point(2, 0, 0, 0x41), plain = point(2, 0, 0, 1);
    const struct {
        const GeomPoint *b0, *b1;
        uint32_t code, flags;
    } keep[] = {{&m, &n, 1, 0x40}, {&m, &plain, 1, 0}, {&k, &l, 4, 0x40}};
    GeomPoint out;
    for (const auto &c : keep) {
        EXPECT_EQ(vexo_line_get_crossing(&k, &l, false, c.b0, c.b1, false, &out), c.code)
            << &c - keep;
        EXPECT_EQ(out.flags, c.flags) << &c - keep;
    }
    GeomPoint a0 = point(0, 0, 0), a1 = point(2, 2, 4); // out may be an input
    EXPECT_EQ(vexo_line_get_crossing(&a0, &a1, false, &m, &n, false, &a0), VEXO_CROSSING_FOUND);
    EXPECT_EQ(xyz(a0), (Xyz{1, 1, 2}));
    out = point(3, 3, 3, 3);
    EXPECT_EQ(vexo_line_get_crossing(nullptr, &a1, false, &m, &n, false, &out), 0u);
    EXPECT_EQ(vexo_line_get_crossing(&a0, &a1, false, &m, nullptr, false, &out), 0u);
    EXPECT_EQ(vexo_line_get_crossing(&a0, &a1, false, &m, &n, false, nullptr), 0u);
    EXPECT_TRUE(same_bytes(out, point(3, 3, 3, 3)));
}

TEST(LineInnerPart, WorkedCases) {
    const double rect[6] = {0.0, 10.0, NAN, 10.0, 0.0, NAN}; // left, top, -, right, bottom, -
    const struct {
        GeomPoint a, b, first, second;
    } cases[] = {
        // Inside (border included): whole copies; crossings have zero padding.
        {{1, 1, 5, 0x44, 9}, point(2, 3, 6, 0x02), {1, 1, 5, 0x44, 9}, point(2, 3, 6, 0x02)},
        {point(0, 0, 0, 1), point(10, 10), point(0, 0, 0, 1), point(10, 10)},
        // One end out: ordered a -> b, z along a-b, 0x01 moved to the end.
        {point(5, 5, 0, 0x41), point(15, 5, 10, 4), point(5, 5, 0, 0x40), point(10, 5, 5, 1)},
        {point(5, 5, 0, 0x41), point(-5, 5, 10), point(5, 5, 0, 0x40), point(0, 5, 5, 1)},
        {point(15, 5, 10), point(5, 5, 0, 0x40), point(10, 5, 5, 0), point(5, 5, 0, 0x41)},
        // Through, in all four directions and corner to corner.
        {point(-5, 5, 0), point(15, 5, 20), point(0, 5, 5), point(10, 5, 15, 1)},
        {point(15, 5, 20), point(-5, 5, 0), point(10, 5, 15), point(0, 5, 5, 1)},
        {point(5, -5), point(5, 15), point(5, 0), point(5, 10, 0, 1)},
        {point(5, 15), point(5, -5), point(5, 10), point(5, 0, 0, 1)},
        {point(-5, 15), point(15, -5), point(0, 10), point(10, 0, 0, 1)},
        // A corner is found on both edges meeting there and fills both slots
        // (the inside end is then unused); along an edge, the sides meet it.
        {point(-5, 15), point(5, 5, 0, 0x40), point(0, 10), point(0, 10, 0, 1)},
        {point(15, -5), point(5, 5), point(10, 0), point(10, 0, 0, 1)},
        {point(-5, 10), point(15, 10), point(0, 10), point(10, 10, 0, 1)},
    };
    for (const auto &c : cases) {
        Points part(vexo_line_get_inner_part(&c.a, &c.b, rect));
        ASSERT_TRUE(part) << &c - cases;
        for (const GeomPoint *got = part.get(), *want = &c.first; want <= &c.second;
             ++got, ++want) {
            EXPECT_EQ(xyz(*got), xyz(*want)) << &c - cases;
            EXPECT_EQ(got->flags, want->flags) << &c - cases;
            EXPECT_EQ(got->reserved, want->reserved) << &c - cases;
        }
    }
    // Cross-check against the parametric form of a sloped segment.
    const GeomPoint a = point(-2, 3, 1), b = point(12, 8, 8);
    Points part(vexo_line_get_inner_part(&a, &b, rect));
    ASSERT_TRUE(part);
    for (const double t : {2.0 / 14.0, 12.0 / 14.0}) {
        EXPECT_DOUBLE_EQ(part.get()[t > 0.5].y, 3.0 + 5.0 * t);
        EXPECT_DOUBLE_EQ(part.get()[t > 0.5].z, 1.0 + 7.0 * t);
    }
    // Both ends beyond one side, passing a corner, a NaN rectangle: NULL.
    const GeomPoint misses[][2] = {{point(-5, 1), point(-1, 9)}, {point(11, 1), point(12, 9)},
                                   {point(1, 11), point(9, 12)}, {point(1, -1), point(9, -12)},
                                   {point(6, -5), point(15, 3)}, {point(-5, 4), point(4, 20)}};
    for (const auto &m : misses)
        EXPECT_EQ(vexo_line_get_inner_part(&m[0], &m[1], rect), nullptr) << m[0].x << m[0].y;
    const double nan_rect[6] = {NAN, NAN, NAN, NAN, NAN, NAN};
    EXPECT_EQ(vexo_line_get_inner_part(&a, &b, nan_rect), nullptr);
    EXPECT_EQ(vexo_line_get_inner_part(nullptr, &b, rect), nullptr);
    EXPECT_EQ(vexo_line_get_inner_part(&a, nullptr, rect), nullptr);
    EXPECT_EQ(vexo_line_get_inner_part(&a, &b, nullptr), nullptr);
}

TEST(LineMeasure, LengthDotCountVectorsAndDots) {
    const GeomPoint a = point(1, 2, 3), b = point(4, 6, 15), o = point(0, 0), x = point(10, 0);
    EXPECT_EQ(vexo_line_get_length(&a, &b, false), 13.0);
    EXPECT_EQ(vexo_line_get_length(&b, &a, true), 5.0);
    EXPECT_EQ(vexo_line_get_length(nullptr, &b, false), 0.0);
    // ceil((length + extra) / spacing), the low 32 bits of a 64-bit count;
    // a missing point has length 0; spacing 0 or a NaN gives 0, not a trap.
    struct {
        const GeomPoint *a, *b;
        double spacing, extra;
        uint32_t count;
    } cases[] = {{&o, &x, 3, 0, 4},      {&o, &x, 3, 2, 4},
                 {&o, &x, 3, 2.5, 5},    {&a, &b, 1, 0, 13},
                 {nullptr, &x, 2, 5, 3}, {&o, nullptr, 2, 0, 0},
                 {&o, &x, 3, -20, ~2u},  {&o, &x, 1, 4294967293.0, 7},
                 {&o, &x, 0, 0, 0},      {&o, &o, 0, 0, 0}};
    for (const auto &c : cases)
        EXPECT_EQ(vexo_line_get_dot_num(c.a, c.b, c.spacing, c.extra), c.count) << &c - cases;
    // Below 1e-7 (either sign) 2D components become +0; 1e-7 itself stays.
    const GeomPoint d = point(0, 0, 1), e = point(1e-8, 5, 3), f = point(-5e-8, 1e-7);
    double v2[2], w2[2], v3[3], untouched[3] = {7, 7, 7};
    vexo_line_to_vector2d(&d, &e, v2);
    vexo_line_to_vector2d(&d, &f, w2);
    vexo_line_to_vector3d(&d, &e, v3);
    EXPECT_EQ(v2[0], 0.0);
    EXPECT_FALSE(std::signbit(v2[0]));
    EXPECT_EQ(v2[1], 5.0);
    EXPECT_EQ(w2[0], 0.0);
    EXPECT_FALSE(std::signbit(w2[0]));
    EXPECT_EQ(w2[1], 1e-7);
    EXPECT_EQ(xyz(v3), (Xyz{1e-8, 5, 2}));
    vexo_line_to_vector2d(nullptr, &e, untouched);
    vexo_line_to_vector2d(&d, &e, nullptr);
    vexo_line_to_vector3d(&d, &e, nullptr);
    EXPECT_EQ(untouched[0], 7.0);

    // Dots: a + unit direction * (spacing * index + offset); true only inside the segment's
    // box (inclusive, either direction, z too); a = b or a length below 1e-7 is not normalised.
    const GeomPoint from = point(0, 0, 0, 0x41), to = point(9, 0, 0), c = point(0, 6, 8),
                    up = point(0, 0, 5), same = point(2, 3, 4, 1), tiny = point(2 + 5e-8, 3, 4);
    const double past_tiny = 2 + 4 * (tiny.x - 2);
    struct {
        const GeomPoint *a, *b;
        double spacing;
        int32_t index;
        double offset;
        bool inside;
        Xyz at;
    } dots[] = {{&from, &to, 3, 2, 1, true, {7, 0, 0}},
                {&from, &to, 3, 3, 0, true, {9, 0, 0}},
                {&from, &to, 3, 4, 0, false, {12, 0, 0}},
                {&from, &to, 3, -1, 0.5, false, {-2.5, 0, 0}},
                {&to, &from, 3, 1, 0, true, {6, 0, 0}},
                {&from, &c, 2.5, 2, 0, true, {0, 3, 4}},
                {&from, &up, 2, 3, 0, false, {0, 0, 6}},
                {&same, &same, 5, 3, 2, true, {2, 3, 4}},
                {&same, &tiny, 1, 4, 0, false, {past_tiny, 3, 4}}};
    for (const auto &k : dots) {
        GeomPoint out = point(-1, -1, -1, 0xff);
        EXPECT_EQ(vexo_line_get_dot(k.a, k.b, k.spacing, k.index, &out, k.offset), k.inside);
        EXPECT_EQ(xyz(out), k.at) << &k - dots;
        EXPECT_EQ(out.flags, 0) << &k - dots;
    }
    GeomPoint start = point(0, 0, 0), out = point(9, 9, 9, 9);
    EXPECT_TRUE(vexo_line_get_dot(&start, &to, 1.0, 4, &start, 0.0));
    EXPECT_EQ(start.x, 4.0); // aliasing
    EXPECT_FALSE(vexo_line_get_dot(nullptr, &a, 1.0, 0, &out, 0.0));
    EXPECT_FALSE(vexo_line_get_dot(&a, nullptr, 1.0, 0, &out, 0.0));
    EXPECT_FALSE(vexo_line_get_dot(&a, &a, 1.0, 0, nullptr, 0.0));
    EXPECT_TRUE(same_bytes(out, point(9, 9, 9, 9)));
}

TEST(LineCompact, RemovesProcessedPointsWholeAsAStableFilter) {
    // Runs of either kind, every flag bit and the padding word carried along.
    std::mt19937 rng(42);
    std::vector<GeomPoint> all(3000), kept;
    for (GeomPoint &p : all) {
        p = {double(rng()), 0, 0, uint32_t(rng() & 0x47u), uint32_t(rng())};
        if (!(p.flags & 2)) kept.push_back(p);
    }
    uint32_t count = static_cast<uint32_t>(all.size());
    EXPECT_EQ(vexo_line_rem_unused_vertices(all.data(), &count), all.data());
    ASSERT_EQ(count, kept.size());
    EXPECT_TRUE(same_bytes(all[0], kept[0], count));
    count = 0;
    EXPECT_EQ(vexo_line_rem_unused_vertices(all.data(), &count), all.data());
    EXPECT_EQ(count, 0);
    EXPECT_EQ(vexo_line_rem_unused_vertices(all.data(), nullptr), all.data());
    count = 5;
    EXPECT_EQ(vexo_line_rem_unused_vertices(nullptr, &count), nullptr);
    EXPECT_EQ(count, 5);
}
