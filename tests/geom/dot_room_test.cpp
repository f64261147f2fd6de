// SPDX-License-Identifier: MIT
// Single dots into a buffer that has room: the block stays, exactly one
// slot is written, and the first append past the capacity grows it by the
// headroom rule.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <vector>

#include "vexo.h"

namespace {

constexpr uint32_t kCapacity = 150;
constexpr unsigned char kPattern = 0xA7; // a byte no dot writes

// A block of kCapacity points filled with the pattern, freed at the end.
class DotInRoom : public ::testing::Test {
protected:
    void SetUp() override {
        block = static_cast<GeomPoint *>(std::malloc(kCapacity * sizeof(GeomPoint)));
        std::memset(block, kPattern, kCapacity * sizeof(GeomPoint));
    }
    void TearDown() override { std::free(block); }
    // A plain dot at `at`, the block after `count` points.
    GeomPoint *append(uint32_t count, const GeomPoint &at) {
        this->count = count;
        return vexo_geom_append_dot_fast(block, &this->count, &at, false, nullptr, &capacity);
    }
    GeomPoint *block = nullptr;
    uint32_t count = 0, capacity = kCapacity;
};

TEST_F(DotInRoom, FillsTheNextSlotAndNoOther) {
    const GeomPoint at{1.5, -2.25, 3.0, 0x40u, 9u};
    EXPECT_EQ(append(7, at), block);
    EXPECT_EQ(count, 8u);
    EXPECT_EQ(capacity, kCapacity);
    EXPECT_EQ(block[7].x, 1.5);
    EXPECT_EQ(block[7].y, -2.25);
    EXPECT_EQ(block[7].z, 3.0);
    EXPECT_EQ(block[7].flags, VEXO_POINT_END);
    const std::vector<unsigned char> pattern(kCapacity * sizeof(GeomPoint), kPattern);
    EXPECT_EQ(std::memcmp(block, pattern.data(), 7 * sizeof(GeomPoint)), 0);
    EXPECT_EQ(std::memcmp(block + 8, pattern.data(), (kCapacity - 8) * sizeof(GeomPoint)), 0);
}

// The last free slot is still filled in place.
TEST_F(DotInRoom, LastFreeSlotNeedsNoGrowth) {
    EXPECT_EQ(append(kCapacity - 1, GeomPoint{4, 5, 6, 0, 0}), block);
    EXPECT_EQ(count, kCapacity);
    EXPECT_EQ(capacity, kCapacity);
}

// count == capacity: the block grows to (count + 1) + max((count + 1) / 100, 100).
TEST_F(DotInRoom, FullBlockGrowsByTheHeadroomRule) {
    block = append(kCapacity, GeomPoint{4, 5, 6, 0, 0}); // the grown block, freed at the end
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(count, kCapacity + 1);
    EXPECT_EQ(capacity, kCapacity + 1 + 100);
    EXPECT_EQ(block[kCapacity].y, 5.0);
}

// The point may be the very slot it is written to.
TEST_F(DotInRoom, PointInTheSlotItFills) {
    block[3] = GeomPoint{7, 8, 9, 0x10u, 0};
    append(3, block[3]);
    EXPECT_EQ(block[3].x, 7.0);
    EXPECT_EQ(block[3].z, 9.0);
    EXPECT_EQ(block[3].flags, VEXO_POINT_END);
}

// The record-reading variant takes the same path for a plain dot.
TEST_F(DotInRoom, RecordVariantFillsInPlace) {
    count = 2;
    const GeomPoint at{1, 2, 3, 0, 0};
    EXPECT_EQ(vexo_geom_append_dot_fast2(block, &count, &at, false, nullptr, &capacity), block);
    EXPECT_EQ(count, 3u);
    EXPECT_EQ(block[2].flags, VEXO_POINT_END);
}

} // namespace
