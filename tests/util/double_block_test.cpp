// SPDX-License-Identifier: MIT
// Double blocks: big-endian IEEE binary64, every bit kept.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "vexo_test_util.hpp"

TEST(DoubleBlock, KnownBytesAndRoundTrips) {
    const struct {
        double value;
        uint8_t bytes[8];
    } cases[] = {
        {1.0, {0x3F, 0xF0}},
        {-2.5, {0xC0, 0x04}},
        {-0.0, {0x80}},
        {0.1, {0x3F, 0xB9, 0x99, 0x99, 0x99, 0x99, 0x99, 0x9A}},
        {std::numeric_limits<double>::denorm_min(), {0, 0, 0, 0, 0, 0, 0, 1}},
        {INFINITY, {0x7F, 0xF0}},
        {std::nan("0x1234"), {0x7F, 0xF8, 0, 0, 0, 0, 0x12, 0x34}}, // the payload kept
    };
    for (const auto &c : cases) {
        uint8_t buffer[11] = {}; // the block at an odd address: no alignment needed
        vexo_util_dbl_to_block(c.value, buffer + 3);
        EXPECT_EQ(std::memcmp(buffer + 3, c.bytes, 8), 0) << c.value;
        EXPECT_TRUE(!(buffer[0] | buffer[1] | buffer[2])) << c.value;
        EXPECT_TRUE(vexo_test::same_bytes(vexo_util_block_to_dbl(buffer + 3), c.value)) << c.value;
    }
    vexo_util_dbl_to_block(1.0, nullptr);
    EXPECT_EQ(0.0, vexo_util_block_to_dbl(nullptr));
}
