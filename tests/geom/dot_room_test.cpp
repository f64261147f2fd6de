// SPDX-License-Identifier: MIT
// Single dots into a buffer that has room: the block stays, exactly one
// slot is written, and the first append past the capacity grows it by the
// headroom rule.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

#include "vexo.h"

namespace {

constexpr uint32_t kCapacity = 150;

// A block of kCapacity points filled with a pattern no dot writes.
GeomPoint *patterned_block() {
    auto *block = static_cast<GeomPoint *>(std::malloc(kCapacity * sizeof(GeomPoint)));
    std::memset(block, 0xA7, kCapacity * sizeof(GeomPoint));
    return block;
}

TEST(DotInRoom, KeepsTheBlockAndFillsTheNextSlot) {
    GeomPoint *block = patterned_block();
    uint32_t count = 7, capacity = kCapacity;
    const GeomPoint at{1.5, -2.25, 3.0, 0x40u, 9u};
    GeomPoint *back = vexo_geom_append_dot_fast(block, &count, &at, false, nullptr, &capacity);
    EXPECT_EQ(back, block);
    EXPECT_EQ(count, 8u);
    EXPECT_EQ(capacity, kCapacity);
    EXPECT_EQ(block[7].x, 1.5);
    EXPECT_EQ(block[7].y, -2.25);
    EXPECT_EQ(block[7].z, 3.0);
    EXPECT_EQ(block[7].flags, VEXO_POINT_END);
    std::free(back);
}

TEST(DotInRoom, WritesNoOtherSlot) {
    GeomPoint *block = patterned_block();
    const GeomPoint *pattern = patterned_block();
    uint32_t count = 7, capacity = kCapacity;
    const GeomPoint at{1.5, -2.25, 3.0, 0, 0};
    vexo_geom_append_dot_fast(block, &count, &at, false, nullptr, &capacity);
    EXPECT_EQ(std::memcmp(block, pattern, 7 * sizeof(GeomPoint)), 0);
    EXPECT_EQ(std::memcmp(block + 8, pattern + 8, (kCapacity - 8) * sizeof(GeomPoint)), 0);
    std::free(block);
    std::free(const_cast<GeomPoint *>(pattern));
}

// The last free slot is still filled in place.
TEST(DotInRoom, LastFreeSlotNeedsNoGrowth) {
    GeomPoint *block = patterned_block();
    uint32_t count = kCapacity - 1, capacity = kCapacity;
    const GeomPoint at{4, 5, 6, 0, 0};
    EXPECT_EQ(vexo_geom_append_dot_fast(block, &count, &at, false, nullptr, &capacity), block);
    EXPECT_EQ(count, kCapacity);
    EXPECT_EQ(capacity, kCapacity);
    std::free(block);
}

// count == capacity: the block grows to (count + 1) + max((count + 1) / 100, 100).
TEST(DotInRoom, FullBlockGrowsByTheHeadroomRule) {
    GeomPoint *block = patterned_block();
    uint32_t count = kCapacity, capacity = kCapacity;
    const GeomPoint at{4, 5, 6, 0, 0};
    GeomPoint *grown = vexo_geom_append_dot_fast(block, &count, &at, false, nullptr, &capacity);
    ASSERT_NE(grown, nullptr);
    EXPECT_EQ(count, kCapacity + 1);
    EXPECT_EQ(capacity, kCapacity + 1 + 100);
    EXPECT_EQ(grown[kCapacity].y, 5.0);
    std::free(grown);
}

// The point may be the very slot it is written to.
TEST(DotInRoom, PointInTheSlotItFills) {
    GeomPoint *block = patterned_block();
    block[3] = GeomPoint{7, 8, 9, 0x10u, 0};
    uint32_t count = 3, capacity = kCapacity;
    vexo_geom_append_dot_fast(block, &count, &block[3], false, nullptr, &capacity);
    EXPECT_EQ(block[3].x, 7.0);
    EXPECT_EQ(block[3].z, 9.0);
    EXPECT_EQ(block[3].flags, VEXO_POINT_END);
    std::free(block);
}

// The record-reading variant takes the same path for a plain dot.
TEST(DotInRoom, RecordVariantFillsInPlace) {
    GeomPoint *block = patterned_block();
    uint32_t count = 2, capacity = kCapacity;
    const GeomPoint at{1, 2, 3, 0, 0};
    EXPECT_EQ(vexo_geom_append_dot_fast2(block, &count, &at, false, nullptr, &capacity), block);
    EXPECT_EQ(count, 3u);
    EXPECT_EQ(block[2].flags, VEXO_POINT_END);
    std::free(block);
}

// A shape with room left still draws the figure, not a single dot.
TEST(DotInRoom, ShapeTakesTheFigurePath) {
    GeomPoint *block = patterned_block();
    uint32_t count = 0, capacity = kCapacity;
    const GeomPoint at{0, 0, 0, 0, 0};
    const GeomDotShape circle = {0, 0, 0, 4, 2000, 0, 0};
    block = vexo_geom_append_dot_fast(block, &count, &at, true, &circle, &capacity);
    EXPECT_EQ(count, 5u);
    std::free(block);
}

} // namespace
