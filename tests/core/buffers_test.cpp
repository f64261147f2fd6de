// Point buffers: growth rules, whole-record copies and the freeing rule on
// failure (a failure that kept its buffer shows up as a leak under LSan).
#include <gtest/gtest.h>

#include <cstring>

#include "vexo_test_util.hpp"

using vexo_test::kHugeCount;
using vexo_test::point;

TEST(PointBuffers, ExactAndHeadroomGrowth) {
    GeomPoint *p = vexo_geom_realloc(nullptr, 3);
    ASSERT_NE(p, nullptr);
    p[2] = point(1, 2, 3, 7);
    EXPECT_EQ(vexo_geom_realloc(p, 0), nullptr); // count 0: NULL, block kept
    p = vexo_geom_realloc(p, 5);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(p[2].flags, 7u);
    EXPECT_EQ(vexo_geom_realloc(p, kHugeCount), nullptr);

    uint32_t cap = 0;
    p = vexo_geom_realloc_fast(nullptr, 0, &cap);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(cap, 100u);
    EXPECT_EQ(vexo_geom_realloc_fast(p, 100, &cap), p); // fits: same block
    p = vexo_geom_realloc_fast(p, 250, &cap);
    EXPECT_EQ(cap, 350u);
    p = vexo_geom_realloc_fast(p, 20000, &cap);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(cap, 20200u);
    // A failing growth frees the block, the capacity already updated.
    EXPECT_EQ(vexo_geom_realloc_fast(p, kHugeCount, &cap), nullptr);
    EXPECT_EQ(cap, kHugeCount + kHugeCount / 100);

    // Headroom or a total beyond 32 bits fails instead of wrapping short.
    p = vexo_geom_realloc(nullptr, 10);
    EXPECT_EQ(vexo_geom_realloc_fast(p, 0xFFFFFF00u, &cap), nullptr);
    const GeomPoint one = point(1, 1);
    p = vexo_geom_realloc(nullptr, 1);
    EXPECT_EQ(vexo_geom_append(p, 0xFFFFFFFFu, &one, 1, 0, 0, 0), nullptr);
}

TEST(PointBuffers, AppendCopiesWholeRecordsOnlyWithoutOffset) {
    GeomPoint src[2] = {point(1, 2, 3, 0x41), point(4, 5, 6, 0x01)};
    src[0].reserved = 0xDEADBEEF;
    src[1].reserved = 0xCAFEF00D;
    GeomPoint *p = vexo_geom_append(nullptr, 0, src, 2, 0.0, 0.0, 0.0);
    ASSERT_NE(p, nullptr);
    EXPECT_TRUE(vexo_test::same_bytes(*p, src[0], 2));
    p = vexo_geom_append(p, 2, src, 2, 10.0, 0.0, -1.0);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(vexo_test::xyz(p[2]), (vexo_test::Xyz{11, 2, 2}));
    EXPECT_EQ(p[2].flags, 0x41u);
    EXPECT_EQ(vexo_geom_append(nullptr, 0, src, 0, 0, 0, 0), nullptr); // nothing at all
    EXPECT_EQ(vexo_geom_append(p, 4, nullptr, 1, 0, 0, 0), nullptr);  // frees p
}

TEST(PointBuffers, AppendFromTheBufferItselfAndFastCapacity) {
    // The source lies in the block that moves: the copy must follow it.
    GeomPoint *p = vexo_geom_realloc(nullptr, 2);
    ASSERT_NE(p, nullptr);
    p[0] = point(1, 0);
    p[1] = point(2, 0, 0, 1);
    for (uint32_t count = 2; count < 4096 && p; count *= 2)
        p = vexo_geom_append(p, count, p, count, 0, 0, 0);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(p[4094].x, 1.0);
    EXPECT_EQ(p[4095].x, 2.0);
    vexo_geom_release(p);

    uint32_t cap = 0;
    const GeomPoint dot = point(7, 7, 1, 1);
    GeomPoint *q = vexo_geom_append_fast(nullptr, 0, &dot, 1, &cap);
    ASSERT_NE(q, nullptr);
    EXPECT_EQ(cap, 101u);
    GeomPoint *const first = q;
    for (uint32_t count = 1; count < 101; ++count)
        q = vexo_geom_append_fast(q, count, &dot, 1, &cap);
    EXPECT_EQ(q, first); // no reallocation while the capacity lasts
    q = vexo_geom_append_fast(q, 101, &dot, 1, &cap);
    EXPECT_EQ(cap, 202u);
    q = vexo_geom_append_fast(q, 102, q, 102, &cap); // from itself, moving: cap 204 + 100
    ASSERT_TRUE(q && cap == 304u);
    EXPECT_EQ(q[203].x, 7.0);
    EXPECT_EQ(vexo_geom_append_fast(q, 204, &dot, kHugeCount, &cap), nullptr);
}

TEST(PointBuffers, PairArraysKeepTheOldBlockOnFailure) {
    void *pairs = vexo_geom_pair_realloc(nullptr, 4);
    ASSERT_NE(pairs, nullptr);
    std::memset(pairs, 0x5A, 4 * 56);
    EXPECT_EQ(vexo_geom_pair_realloc(pairs, 0), nullptr);
    EXPECT_EQ(vexo_geom_pair_realloc(pairs, 0xFFFFFFFFu), nullptr);
    EXPECT_EQ(static_cast<unsigned char *>(pairs)[4 * 56 - 1], 0x5A); // still ours
    vexo_geom_pair_release(pairs);
    vexo_geom_pair_release(nullptr);
    vexo_geom_release(nullptr);
}

TEST(Version, HeaderAndLibraryAgree) {
    EXPECT_EQ(vexo_util_version_number(), VEXO_VERSION_NUMBER);
    EXPECT_STREQ(vexo_util_version_string(), "0.1.0");
}
