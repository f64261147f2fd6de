// Double blocks: big-endian IEEE binary64, every bit kept.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "vexo_test_util.hpp"

TEST(DoubleBlock, KnownBytesAndRoundTrips) {
    struct Case {
        double value;
        uint8_t bytes[8];
    };
    const Case cases[] = {
        {1.0, {0x3F, 0xF0, 0, 0, 0, 0, 0, 0}},
        {-2.5, {0xC0, 0x04, 0, 0, 0, 0, 0, 0}},
        {-0.0, {0x80, 0, 0, 0, 0, 0, 0, 0}},
        {0.1, {0x3F, 0xB9, 0x99, 0x99, 0x99, 0x99, 0x99, 0x9A}},
        {std::numeric_limits<double>::denorm_min(), {0, 0, 0, 0, 0, 0, 0, 1}},
        {std::numeric_limits<double>::infinity(), {0x7F, 0xF0, 0, 0, 0, 0, 0, 0}},
    };
    for (const Case &c : cases) {
        uint8_t out[8];
        vexo_util_dbl_to_block(c.value, out);
        EXPECT_EQ(0, std::memcmp(out, c.bytes, 8)) << c.value;
        const double back = vexo_util_block_to_dbl(c.bytes);
        EXPECT_TRUE(vexo_test::same_bytes(back, c.value)) << c.value;
    }
    // NaN keeps its payload; an unaligned block inside a buffer works.
    const double nan = std::nan("0x1234");
    uint8_t buffer[11] = {};
    vexo_util_dbl_to_block(nan, buffer + 3);
    const double back = vexo_util_block_to_dbl(buffer + 3);
    EXPECT_TRUE(vexo_test::same_bytes(back, nan));
    EXPECT_EQ(0, buffer[0] | buffer[1] | buffer[2]);

    vexo_util_dbl_to_block(1.0, nullptr);
    EXPECT_EQ(0.0, vexo_util_block_to_dbl(nullptr));
}
