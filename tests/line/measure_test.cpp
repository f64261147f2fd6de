// Segment length, dot placement, difference vectors and the compaction of
// processed points.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "line/compact.hpp"
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

TEST(LineMeasure, LengthIn3dAnd2d) {
    const GeomPoint a = pt(1, 2, 3);
    const GeomPoint b = pt(4, 6, 15);
    EXPECT_EQ(vexo_line_get_length(&a, &b, false), 13.0);
    EXPECT_EQ(vexo_line_get_length(&a, &b, true), 5.0);
    EXPECT_EQ(vexo_line_get_length(&b, &a, false), 13.0);
    EXPECT_EQ(vexo_line_get_length(&a, &a, false), 0.0);
    EXPECT_EQ(vexo_line_get_length(nullptr, &b, false), 0.0);
    EXPECT_EQ(vexo_line_get_length(&a, nullptr, true), 0.0);
}

TEST(LineMeasure, DotNumberIsCeilingOfLengthOverSpacing) {
    const GeomPoint a = pt(0, 0, 0);
    const GeomPoint b = pt(10, 0, 0);
    EXPECT_EQ(vexo_line_get_dot_num(&a, &b, 3.0, 0.0), 4u);
    EXPECT_EQ(vexo_line_get_dot_num(&a, &b, 3.0, 2.0), 4u); // ceil(12 / 3)
    EXPECT_EQ(vexo_line_get_dot_num(&a, &b, 2.5, 0.0), 4u); // exact multiple
    EXPECT_EQ(vexo_line_get_dot_num(&a, &b, 3.0, 2.5), 5u);
    // z counts: (0,0,0)-(0,3,4) is 5 long.
    const GeomPoint c = pt(0, 3, 4);
    EXPECT_EQ(vexo_line_get_dot_num(&a, &c, 1.0, 0.0), 5u);
    // A missing point makes the length 0.
    EXPECT_EQ(vexo_line_get_dot_num(nullptr, &b, 2.0, 5.0), 3u);
    EXPECT_EQ(vexo_line_get_dot_num(&a, nullptr, 2.0, 0.0), 0u);
    // Negative totals keep the low 32 bits of the 64-bit result.
    EXPECT_EQ(vexo_line_get_dot_num(&a, &b, 3.0, -20.0), static_cast<uint32_t>(-3));
    // Results beyond 32 bits keep their low bits too: 2^32 + 7.
    EXPECT_EQ(vexo_line_get_dot_num(&a, &b, 1.0, 4294967297.0 - 10.0 + 6.0), 7u);
    // Infinite or undefined counts (spacing 0) come out as 0, not as a trap.
    EXPECT_EQ(vexo_line_get_dot_num(&a, &b, 0.0, 0.0), 0u);
    EXPECT_EQ(vexo_line_get_dot_num(&a, &a, 0.0, 0.0), 0u);
    EXPECT_EQ(vexo_line_get_dot_num(&a, &b, 1.0, NAN), 0u);
}

TEST(LineMeasure, DotAlongSegment) {
    const GeomPoint a = pt(0, 0, 0, 0x41);
    const GeomPoint b = pt(9, 0, 0);
    GeomPoint out = pt(-1, -1, -1, 0xff);
    EXPECT_TRUE(vexo_line_get_dot(&a, &b, 3.0, 2, &out, 1.0));
    EXPECT_EQ(out.x, 7.0);
    EXPECT_EQ(out.y, 0.0);
    EXPECT_EQ(out.z, 0.0);
    EXPECT_EQ(out.flags, 0u);
    // The far end itself is inside (inclusive).
    EXPECT_TRUE(vexo_line_get_dot(&a, &b, 3.0, 3, &out, 0.0));
    EXPECT_EQ(out.x, 9.0);
    // Beyond either end: written, but reported outside.
    EXPECT_FALSE(vexo_line_get_dot(&a, &b, 3.0, 4, &out, 0.0));
    EXPECT_EQ(out.x, 12.0);
    EXPECT_FALSE(vexo_line_get_dot(&a, &b, 3.0, -1, &out, 0.5));
    EXPECT_EQ(out.x, -2.5);
    // Running b->a: the box test accepts either order.
    EXPECT_TRUE(vexo_line_get_dot(&b, &a, 3.0, 1, &out, 0.0));
    EXPECT_EQ(out.x, 6.0);
    // A 3-4-5 direction in space, with z.
    const GeomPoint c = pt(0, 0, 0);
    const GeomPoint d = pt(0, 6, 8);
    EXPECT_TRUE(vexo_line_get_dot(&c, &d, 2.5, 2, &out, 0.0));
    EXPECT_DOUBLE_EQ(out.y, 3.0);
    EXPECT_DOUBLE_EQ(out.z, 4.0);
}

TEST(LineMeasure, DotOnCoincidentEndsAndBadPointers) {
    const GeomPoint a = pt(2, 3, 4, 1);
    GeomPoint out = pt(0, 0, 0, 7);
    EXPECT_TRUE(vexo_line_get_dot(&a, &a, 5.0, 3, &out, 2.0));
    EXPECT_EQ(out.x, 2.0);
    EXPECT_EQ(out.y, 3.0);
    EXPECT_EQ(out.z, 4.0);
    EXPECT_EQ(out.flags, 0u);
    // A tiny segment (below the zero tolerance) is not normalised.
    const GeomPoint tiny = pt(2 + 5e-8, 3, 4);
    EXPECT_FALSE(vexo_line_get_dot(&a, &tiny, 1.0, 4, &out, 0.0));
    EXPECT_DOUBLE_EQ(out.x, 2.0 + 4 * 5e-8);
    // out may be one of the ends.
    GeomPoint start = pt(0, 0, 0);
    const GeomPoint end = pt(10, 0, 0);
    EXPECT_TRUE(vexo_line_get_dot(&start, &end, 1.0, 4, &start, 0.0));
    EXPECT_EQ(start.x, 4.0);
    // Missing pointers: false and nothing written.
    out = pt(9, 9, 9, 9);
    EXPECT_FALSE(vexo_line_get_dot(nullptr, &a, 1.0, 0, &out, 0.0));
    EXPECT_FALSE(vexo_line_get_dot(&a, nullptr, 1.0, 0, &out, 0.0));
    EXPECT_FALSE(vexo_line_get_dot(&a, &a, 1.0, 0, nullptr, 0.0));
    EXPECT_EQ(out.x, 9.0);
    EXPECT_EQ(out.flags, 9u);
}

TEST(LineMeasure, VectorsSnapOnlyIn2d) {
    const GeomPoint a = pt(0, 0, 1);
    const GeomPoint b = pt(1e-8, 5, 3);
    double v2[2] = {-1, -1};
    double v3[3] = {-1, -1, -1};
    vexo_line_to_vector2d(&a, &b, v2);
    vexo_line_to_vector3d(&a, &b, v3);
    EXPECT_EQ(v2[0], 0.0);
    EXPECT_FALSE(std::signbit(v2[0]));
    EXPECT_EQ(v2[1], 5.0);
    EXPECT_EQ(v3[0], 1e-8);
    EXPECT_EQ(v3[1], 5.0);
    EXPECT_EQ(v3[2], 2.0);
    // Negative tiny values snap too; the tolerance itself does not.
    const GeomPoint c = pt(-5e-8, 1e-7, 0);
    vexo_line_to_vector2d(&a, &c, v2);
    EXPECT_EQ(v2[0], 0.0);
    EXPECT_EQ(v2[1], 1e-7);
    // Missing pointers write nothing.
    double untouched[3] = {7, 7, 7};
    vexo_line_to_vector2d(nullptr, &b, untouched);
    vexo_line_to_vector3d(&a, nullptr, untouched);
    vexo_line_to_vector2d(&a, &b, nullptr);
    vexo_line_to_vector3d(&a, &b, nullptr);
    EXPECT_EQ(untouched[0], 7.0);
}

TEST(LineCompact, RemovesProcessedPointsWhole) {
    GeomPoint pts[4] = {pt(0, 0, 0, 2), pt(1, 1, 1, 0x41), pt(2, 2, 2, 0x06), pt(3, 3, 3, 1)};
    pts[1].reserved = 0xdeadbeef;
    pts[3].reserved = 0x12345678;
    uint32_t count = 4;
    EXPECT_EQ(vexo_line_rem_unused_vertices(pts, &count), pts);
    ASSERT_EQ(count, 2u);
    EXPECT_EQ(pts[0].x, 1.0);
    EXPECT_EQ(pts[0].flags, 0x41u);
    EXPECT_EQ(pts[0].reserved, 0xdeadbeefu);
    EXPECT_EQ(pts[1].z, 3.0);
    EXPECT_EQ(pts[1].flags, 1u);
    EXPECT_EQ(pts[1].reserved, 0x12345678u);

    GeomPoint all[3] = {pt(0, 0, 0, 2), pt(1, 0, 0, 3), pt(2, 0, 0, 0xff)};
    count = 3;
    vexo_line_rem_unused_vertices(all, &count);
    EXPECT_EQ(count, 0u);

    GeomPoint none[2] = {pt(0, 0), pt(1, 0, 0, 1)};
    count = 2;
    vexo_line_rem_unused_vertices(none, &count);
    EXPECT_EQ(count, 2u);
    EXPECT_EQ(none[1].x, 1.0);
}

TEST(LineCompact, MissingArgumentsAndEmptyArrays) {
    GeomPoint p[1] = {pt(0, 0, 0, 2)};
    uint32_t count = 0;
    EXPECT_EQ(vexo_line_rem_unused_vertices(p, &count), p);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(p[0].flags, 2u);
    EXPECT_EQ(vexo_line_rem_unused_vertices(p, nullptr), p);
    count = 5;
    EXPECT_EQ(vexo_line_rem_unused_vertices(nullptr, &count), nullptr);
    EXPECT_EQ(count, 5u);
    count = 0;
    EXPECT_EQ(vexo_line_rem_unused_vertices(nullptr, &count), nullptr);
    EXPECT_EQ(count, 0u);
}

TEST(LineCompact, MatchesAStableFilterOnRandomArrays) {
    std::mt19937 rng(42);
    for (int round = 0; round < 50; ++round) {
        const uint32_t n = rng() % 300;
        std::vector<GeomPoint> pts(n);
        std::vector<GeomPoint> expected;
        for (uint32_t i = 0; i < n; ++i) {
            // Runs of either kind, so block moves of every length occur.
            pts[i] = pt(i, 0, 0, (rng() % 4 == 0 ? 2u : 0u) | (rng() % 2));
            pts[i].reserved = rng();
            if (!(pts[i].flags & 2))
                expected.push_back(pts[i]);
        }
        uint32_t count = n;
        vexo_line_rem_unused_vertices(pts.data(), &count);
        ASSERT_EQ(count, expected.size());
        ASSERT_EQ(0, std::memcmp(pts.data(), expected.data(), count * sizeof(GeomPoint)));
        // The core entry point agrees and leaves a compacted array alone.
        EXPECT_EQ(vexo::remove_processed(pts.data(), count), count);
    }
}

} // namespace
