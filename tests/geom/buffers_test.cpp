// SPDX-License-Identifier: MIT
// Point buffers: growth rules, whole-record copies and the freeing rule on
// failure (a failure that kept its buffer shows up as a leak under LSan).
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "vexo_test_util.hpp"

using vexo_test::kHugeCount;
using vexo_test::point;

TEST(PointBuffers, ExactAndHeadroomGrowth) {
    GeomPoint *p = vexo_geom_realloc(nullptr, 3);
    ASSERT_NE(p, nullptr);
    p[2] = point(1, 2, 3, VEXO_POINT_END | VEXO_POINT_PROCESSED | VEXO_POINT_END_MARK);
    EXPECT_EQ(vexo_geom_realloc(p, 0), nullptr); // count 0: NULL, block kept
    p = vexo_geom_realloc(p, 5);
    ASSERT_NE(p, nullptr);
    ASSERT_EQ(p[2].flags, 7u);
    EXPECT_EQ(vexo_geom_realloc(p, kHugeCount), nullptr);

    // At least 100 points of headroom, else 1%; a block that fits stays.
    uint32_t cap = 0;
    p = vexo_geom_realloc_fast(nullptr, 0, &cap);
    ASSERT_NE(p, nullptr);
    ASSERT_EQ(cap, 100u);
    EXPECT_EQ(vexo_geom_realloc_fast(p, 100, &cap), p);
    p = vexo_geom_realloc_fast(p, 250, &cap);
    EXPECT_EQ(cap, 350u);
    p = vexo_geom_realloc_fast(p, 20000, &cap);
    ASSERT_NE(p, nullptr);
    ASSERT_EQ(cap, 20200u);
    // A failing growth frees the block, the capacity already updated.
    EXPECT_EQ(vexo_geom_realloc_fast(p, kHugeCount, &cap), nullptr);
    EXPECT_EQ(cap, kHugeCount + kHugeCount / 100);

    // Headroom or a total beyond 32 bits fails instead of wrapping short.
    p = vexo_geom_realloc(nullptr, 10);
    EXPECT_EQ(vexo_geom_realloc_fast(p, 0xFFFFFF00u, &cap), nullptr);
    p = vexo_geom_realloc(nullptr, 1);
    EXPECT_EQ(vexo_geom_append(p, 0xFFFFFFFFu, p, 1, 0, 0, 0), nullptr);
}

TEST(PointBuffers, AppendWithOffsetWithoutOffsetFromItself) {
    // Without an offset whole records are copied; with one (any part not 0)
    // only x, y, z and flags, the offset added.
    GeomPoint src[2] = {point(1, 2, 3, VEXO_POINT_KEEP | VEXO_POINT_END),
                        point(4, 5, 6, VEXO_POINT_END)};
    src[0].reserved = 0xDEADBEEF;
    GeomPoint *p = vexo_geom_append(nullptr, 0, src, 2, 0.0, 0.0, 0.0);
    ASSERT_NE(p, nullptr);
    ASSERT_TRUE(vexo_test::same_bytes(*p, src[0], 2));
    p = vexo_geom_append(p, 2, src, 2, 10.0, 0.0, 0.0);
    p = vexo_geom_append(p, 4, src, 2, 0.0, 20.0, -1.0);
    ASSERT_NE(p, nullptr);
    ASSERT_EQ(vexo_test::xyz(p[3]), (vexo_test::Xyz{14, 5, 6}));
    ASSERT_EQ(vexo_test::xyz(p[4]), (vexo_test::Xyz{1, 22, 2}));
    ASSERT_EQ(p[4].flags, VEXO_POINT_KEEP | VEXO_POINT_END);
    EXPECT_EQ(vexo_geom_append(nullptr, 0, src, 0, 0, 0, 0), nullptr); // nothing at all
    EXPECT_EQ(vexo_geom_append(p, 6, nullptr, 1, 0, 0, 0), nullptr);   // frees p

    // The source lies in the block that moves: the copy must follow it.
    p = vexo_geom_append(nullptr, 0, src, 2, 0, 0, 0);
    for (uint32_t count = 2; count < 4096 && p; count *= 2)
        p = vexo_geom_append(p, count, p, count, 0, 0, 0);
    ASSERT_NE(p, nullptr);
    p = vexo_geom_append(p, 4096, p + 4093, 2, 0, 0, 0); // from inside, not the start
    ASSERT_NE(p, nullptr);
    ASSERT_EQ(p[4094].x, 1);
    ASSERT_EQ(p[4095].x, 4);
    ASSERT_EQ(p[4096].x, 4);
    ASSERT_EQ(p[4097].x, 1);
    vexo_geom_release(p);
}

TEST(PointBuffers, AppendFastKeepsTheBlockWhileTheCapacityLasts) {
    uint32_t cap = 0;
    const GeomPoint dot = point(7, 7, 1, VEXO_POINT_END);
    GeomPoint *q = vexo_geom_append_fast(nullptr, 0, &dot, 1, &cap);
    ASSERT_NE(q, nullptr);
    ASSERT_EQ(cap, 101u);
    GeomPoint *const first = q;
    for (uint32_t count = 1; count < 101; ++count)
        q = vexo_geom_append_fast(q, count, &dot, 1, &cap);
    EXPECT_EQ(q, first);
    q = vexo_geom_append_fast(q, 101, &dot, 1, &cap);
    EXPECT_EQ(cap, 202u); // grown only once the total passes the capacity
    q = vexo_geom_append_fast(q, 102, q, 102, &cap); // from itself, moving: cap 204 + 100
    ASSERT_NE(q, nullptr);
    ASSERT_EQ(cap, 304u);
    ASSERT_EQ(q[203].x, 7.0);
    q = vexo_geom_append_fast(q, 204, q + 1, 101, &cap); // from inside it: cap 305 + 100
    ASSERT_NE(q, nullptr);
    ASSERT_EQ(cap, 405u);
    ASSERT_EQ(q[204].x, 7.0);
    ASSERT_EQ(q[304].x, 7.0);
    EXPECT_EQ(vexo_geom_append_fast(q, 305, &dot, kHugeCount, &cap), nullptr);
}

TEST(PointBuffers, PairArraysKeepTheOldBlockOnFailure) {
    void *pairs = vexo_geom_pair_realloc(nullptr, 4);
    ASSERT_NE(pairs, nullptr);
    std::memset(pairs, 0x5A, 4 * 56);
    EXPECT_EQ(vexo_geom_pair_realloc(pairs, 0), nullptr);
    EXPECT_EQ(vexo_geom_pair_realloc(pairs, 0xFFFFFFFFu), nullptr);
    EXPECT_EQ(static_cast<unsigned char *>(pairs)[4 * 56 - 1], 0x5A); // still ours
    vexo_geom_pair_release(pairs);
}
