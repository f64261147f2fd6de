// Segment length, dot count and placement, difference vectors and the
// compaction of processed points.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "vexo_test_util.hpp"

using vexo_test::point;
using vexo_test::same_bytes;

TEST(LineMeasure, LengthAndDotCount) {
    const GeomPoint a = point(1, 2, 3), b = point(4, 6, 15), o = point(0, 0), x = point(10, 0);
    EXPECT_EQ(vexo_line_get_length(&a, &b, false), 13.0);
    EXPECT_EQ(vexo_line_get_length(&b, &a, true), 5.0);
    EXPECT_EQ(vexo_line_get_length(nullptr, &b, false), 0.0);
    // ceil((length + extra) / spacing), the low 32 bits of a 64-bit count;
    // a missing point has length 0; spacing 0 or a NaN gives 0, not a trap.
    struct { const GeomPoint *a, *b; double spacing, extra; uint32_t count; } cases[] = {
        {&o, &x, 3, 0, 4},     {&o, &x, 3, 2, 4},       {&o, &x, 2.5, 0, 4},
        {&o, &x, 3, 2.5, 5},   {&a, &b, 1, 0, 13},      {nullptr, &x, 2, 5, 3},
        {&o, nullptr, 2, 0, 0}, {&o, &x, 3, -20, ~2u},  {&o, &x, 1, 4294967293.0, 7},
        {&o, &x, 0, 0, 0},     {&o, &o, 0, 0, 0},       {&o, &x, 1, NAN, 0}};
    for (const auto &c : cases)
        EXPECT_EQ(vexo_line_get_dot_num(c.a, c.b, c.spacing, c.extra), c.count) << &c - cases;
}

TEST(LineMeasure, DotAlongSegment) {
    // a + unit direction * (spacing * index + offset); true only inside the
    // segment's box (inclusive, either direction); a = b or a segment below
    // 1e-7 is not normalised.
    const GeomPoint a = point(0, 0, 0, 0x41), b = point(9, 0, 0), c = point(0, 6, 8),
                    same = point(2, 3, 4, 1), tiny = point(2 + 5e-8, 3, 4);
    const double past_tiny = 2 + 4 * (tiny.x - 2);
    struct { const GeomPoint *a, *b; double spacing; int32_t index; double offset; bool inside;
             vexo_test::Xyz at; } cases[] = {
        {&a, &b, 3, 2, 1, true, {7, 0, 0}},       {&a, &b, 3, 3, 0, true, {9, 0, 0}},
        {&a, &b, 3, 4, 0, false, {12, 0, 0}},     {&a, &b, 3, -1, 0.5, false, {-2.5, 0, 0}},
        {&b, &a, 3, 1, 0, true, {6, 0, 0}},       {&a, &c, 2.5, 2, 0, true, {0, 3, 4}},
        {&same, &same, 5, 3, 2, true, {2, 3, 4}},
        {&same, &tiny, 1, 4, 0, false, {past_tiny, 3, 4}}};
    for (const auto &k : cases) {
        GeomPoint out = point(-1, -1, -1, 0xff);
        EXPECT_EQ(vexo_line_get_dot(k.a, k.b, k.spacing, k.index, &out, k.offset), k.inside);
        EXPECT_TRUE(vexo_test::xyz(out) == k.at && out.flags == 0) << &k - cases;
    }
    GeomPoint start = point(0, 0, 0), out = point(9, 9, 9, 9);
    EXPECT_TRUE(vexo_line_get_dot(&start, &b, 1.0, 4, &start, 0.0)); // out may be an end
    EXPECT_EQ(start.x, 4.0);
    EXPECT_FALSE(vexo_line_get_dot(nullptr, &a, 1.0, 0, &out, 0.0));
    EXPECT_FALSE(vexo_line_get_dot(&a, nullptr, 1.0, 0, &out, 0.0));
    EXPECT_FALSE(vexo_line_get_dot(&a, &a, 1.0, 0, nullptr, 0.0));
    EXPECT_TRUE(same_bytes(out, point(9, 9, 9, 9)));
}

TEST(LineMeasure, VectorsSnapOnlyIn2d) {
    // Below 1e-7 (either sign) 2D components become +0; 1e-7 itself stays.
    const GeomPoint a = point(0, 0, 1), b = point(1e-8, 5, 3), c = point(-5e-8, 1e-7);
    double v2[2], w2[2], v3[3], untouched[3] = {7, 7, 7};
    vexo_line_to_vector2d(&a, &b, v2);
    vexo_line_to_vector2d(&a, &c, w2);
    vexo_line_to_vector3d(&a, &b, v3);
    EXPECT_TRUE(v2[0] == 0.0 && !std::signbit(v2[0]) && v2[1] == 5.0);
    EXPECT_TRUE(w2[0] == 0.0 && w2[1] == 1e-7);
    EXPECT_EQ(vexo_test::xyz(v3), (vexo_test::Xyz{1e-8, 5, 2}));
    vexo_line_to_vector2d(nullptr, &b, untouched);
    vexo_line_to_vector3d(&a, &b, nullptr);
    EXPECT_EQ(untouched[0], 7.0);
}

TEST(LineCompact, RemovesProcessedPointsWhole) {
    GeomPoint pts[4] = {point(0, 0, 0, 2), {1, 1, 1, 0x41, 9}, point(2, 2, 2, 6), point(3, 3)};
    const GeomPoint q = pts[1], s = pts[3];
    uint32_t count = 4;
    EXPECT_EQ(vexo_line_rem_unused_vertices(pts, &count), pts);
    EXPECT_TRUE(count == 2 && same_bytes(pts[0], q) && same_bytes(pts[1], s));
    count = 0;
    EXPECT_EQ(vexo_line_rem_unused_vertices(pts, &count), pts);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(vexo_line_rem_unused_vertices(pts, nullptr), pts);
    count = 5;
    EXPECT_EQ(vexo_line_rem_unused_vertices(nullptr, &count), nullptr);
    EXPECT_EQ(count, 5u);
    // Against a plain stable filter, with runs of either kind.
    std::mt19937 rng(42);
    std::vector<GeomPoint> all(3000), kept;
    for (GeomPoint &p : all) {
        p = point(rng(), 0, 0, (rng() % 4 == 0 ? 2u : 0u) | (rng() % 2));
        if (!(p.flags & 2))
            kept.push_back(p);
    }
    count = static_cast<uint32_t>(all.size());
    vexo_line_rem_unused_vertices(all.data(), &count);
    ASSERT_EQ(count, kept.size());
    EXPECT_TRUE(same_bytes(all[0], kept[0], count));
}
