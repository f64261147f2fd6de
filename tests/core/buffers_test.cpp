#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "vexo.h"
#include "vexo_test_util.hpp"

using vexo_test::kHugeCount;
using vexo_test::point;

TEST(PointBuffers, ExactReallocAndItsZeroAndFailureRules) {
    GeomPoint *p = vexo_geom_realloc(nullptr, 3);
    ASSERT_NE(p, nullptr);
    p[2] = point(1, 2, 3, 7);
    // Count 0 returns NULL and leaves the block alive.
    EXPECT_EQ(vexo_geom_realloc(p, 0), nullptr);
    EXPECT_EQ(p[2].flags, 7u);
    p = vexo_geom_realloc(p, 5);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(p[2].z, 3.0);
    // Failure frees the old block (ASan/LSan would report a leak otherwise).
    EXPECT_EQ(vexo_geom_realloc(p, kHugeCount), nullptr);
}

TEST(PointBuffers, HeadroomGrowthRule) {
    uint32_t cap = 0;
    GeomPoint *p = vexo_geom_realloc_fast(nullptr, 0, &cap);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(cap, 100u);
    // Within capacity: the same block comes back and the capacity stays.
    EXPECT_EQ(vexo_geom_realloc_fast(p, 100, &cap), p);
    EXPECT_EQ(cap, 100u);
    p = vexo_geom_realloc_fast(p, 250, &cap);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(cap, 350u);
    p = vexo_geom_realloc_fast(p, 20000, &cap);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(cap, 20200u);
    // A failing growth frees the block and has already updated the capacity.
    EXPECT_EQ(vexo_geom_realloc_fast(p, kHugeCount, &cap), nullptr);
    EXPECT_EQ(cap, kHugeCount + kHugeCount / 100);
}

TEST(PointBuffers, HeadroomThatWouldWrapFailsInsteadOfAllocatingShort) {
    uint32_t cap = 10;
    GeomPoint *p = vexo_geom_realloc(nullptr, 10);
    ASSERT_NE(p, nullptr);
    // 0xFFFFFF00 + 0xFFFFFF00/100 does not fit 32 bits: fail, never wrap.
    EXPECT_EQ(vexo_geom_realloc_fast(p, 0xFFFFFF00u, &cap), nullptr);
    GeomPoint one = point(1, 1);
    GeomPoint *q = vexo_geom_realloc(nullptr, 1);
    ASSERT_NE(q, nullptr);
    // count + n beyond 32 bits fails too (q is freed).
    EXPECT_EQ(vexo_geom_append(q, 0xFFFFFFFFu, &one, 1, 0, 0, 0), nullptr);
}

TEST(PointBuffers, AppendCopiesWholeRecordsOnlyWithoutOffset) {
    GeomPoint src[2];
    std::memset(src, 0xAB, sizeof src);
    src[0] = point(1, 2, 3, 0x41);
    src[0].reserved = 0xDEADBEEF;
    src[1] = point(4, 5, 6, 0x01);
    src[1].reserved = 0xCAFEF00D;

    GeomPoint *p = vexo_geom_append(nullptr, 0, src, 2, 0.0, 0.0, 0.0);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(std::memcmp(p, src, sizeof src), 0);

    p = vexo_geom_append(p, 2, src, 2, 10.0, 0.0, -1.0);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(p[2].x, 11.0);
    EXPECT_EQ(p[2].y, 2.0);
    EXPECT_EQ(p[3].z, 5.0);
    EXPECT_EQ(p[2].flags, 0x41u);
    EXPECT_EQ(p[3].flags, 0x01u);
    // Nothing to append and nothing held: NULL, nothing freed.
    EXPECT_EQ(vexo_geom_append(nullptr, 0, src, 0, 0, 0, 0), nullptr);
    // n > 0 without a source is a failure (the buffer goes, as on any failure).
    EXPECT_EQ(vexo_geom_append(p, 4, nullptr, 1, 0, 0, 0), nullptr);
}

TEST(PointBuffers, AppendFromTheBufferItselfSurvivesTheMove) {
    GeomPoint *p = vexo_geom_realloc(nullptr, 2);
    ASSERT_NE(p, nullptr);
    p[0] = point(1, 0);
    p[1] = point(2, 0, 0, 1);
    for (uint32_t count = 2; count < 4096; count *= 2) {
        p = vexo_geom_append(p, count, p, count, 0, 0, 0);
        ASSERT_NE(p, nullptr);
    }
    EXPECT_EQ(p[4095].x, 2.0);
    EXPECT_EQ(p[4094].x, 1.0);
    vexo_geom_release(p);

    uint32_t cap = 0;
    GeomPoint *q = vexo_geom_append_fast(nullptr, 0, nullptr, 0, &cap);
    ASSERT_NE(q, nullptr);
    EXPECT_EQ(cap, 100u);
    q[0] = point(7, 7);
    for (uint32_t count = 1; count < 1024; count *= 2) {
        q = vexo_geom_append_fast(q, count, q, count, &cap);
        ASSERT_NE(q, nullptr);
    }
    EXPECT_EQ(q[1023].x, 7.0);
    EXPECT_EQ(cap, 1024u + 100u);
    vexo_geom_release(q);
}

TEST(PointBuffers, AppendFastKeepsBlockWhileCapacityLasts) {
    uint32_t cap = 0;
    const GeomPoint dot = point(1, 1, 1, 1);
    GeomPoint *p = vexo_geom_append_fast(nullptr, 0, &dot, 1, &cap);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(cap, 101u);
    GeomPoint *first = p;
    for (uint32_t count = 1; count < 101; ++count)
        p = vexo_geom_append_fast(p, count, &dot, 1, &cap);
    EXPECT_EQ(p, first);
    p = vexo_geom_append_fast(p, 101, &dot, 1, &cap);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(cap, 202u);
    EXPECT_EQ(vexo_geom_append_fast(p, 102, &dot, kHugeCount, &cap), nullptr);
}

TEST(PointBuffers, PairArraysKeepTheOldBlockOnFailure) {
    void *pairs = vexo_geom_pair_realloc(nullptr, 4);
    ASSERT_NE(pairs, nullptr);
    std::memset(pairs, 0x5A, 4 * 56);
    EXPECT_EQ(vexo_geom_pair_realloc(pairs, 0), nullptr);
    EXPECT_EQ(vexo_geom_pair_realloc(pairs, 0xFFFFFFFFu), nullptr);
    // Still ours to use and free.
    EXPECT_EQ(static_cast<unsigned char *>(pairs)[4 * 56 - 1], 0x5A);
    vexo_geom_pair_release(pairs);
    vexo_geom_pair_release(nullptr);
    vexo_geom_release(nullptr);
}

TEST(Version, HeaderAndLibraryAgree) {
    EXPECT_EQ(vexo_util_version_number(), VEXO_VERSION_NUMBER);
    EXPECT_STREQ(vexo_util_version_string(), "0.1.0");
}
