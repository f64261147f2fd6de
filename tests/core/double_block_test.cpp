#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

#include <gtest/gtest.h>

#include "vexo.h"

namespace {

uint64_t bits_of(double v) {
    uint64_t b;
    std::memcpy(&b, &v, sizeof b);
    return b;
}

TEST(DoubleBlock, KnownValuesAreBigEndianBinary64) {
    struct Case {
        double value;
        uint8_t bytes[8];
    };
    const Case cases[] = {
        {1.0, {0x3F, 0xF0, 0, 0, 0, 0, 0, 0}},
        {-2.5, {0xC0, 0x04, 0, 0, 0, 0, 0, 0}},
        {0.0, {0, 0, 0, 0, 0, 0, 0, 0}},
        {-0.0, {0x80, 0, 0, 0, 0, 0, 0, 0}},
        {0.1, {0x3F, 0xB9, 0x99, 0x99, 0x99, 0x99, 0x99, 0x9A}},
        {std::numeric_limits<double>::denorm_min(), {0, 0, 0, 0, 0, 0, 0, 1}},
        {std::numeric_limits<double>::infinity(), {0x7F, 0xF0, 0, 0, 0, 0, 0, 0}},
    };
    for (const Case &c : cases) {
        uint8_t out[8];
        std::memset(out, 0xEE, sizeof out);
        vexo_util_dbl_to_block(c.value, out);
        EXPECT_EQ(0, std::memcmp(out, c.bytes, 8)) << c.value;
        EXPECT_EQ(bits_of(c.value), bits_of(vexo_util_block_to_dbl(c.bytes))) << c.value;
    }
}

TEST(DoubleBlock, RoundTripKeepsEveryBit) {
    const double values[] = {3.1415927410125732, -1e308, 2.220446049250313e-16,
                             std::numeric_limits<double>::quiet_NaN(), -123456.789};
    for (double v : values) {
        uint8_t block[8];
        vexo_util_dbl_to_block(v, block);
        EXPECT_EQ(bits_of(v), bits_of(vexo_util_block_to_dbl(block)));
    }
    // Unaligned blocks inside a larger buffer work as well.
    uint8_t buffer[11] = {};
    vexo_util_dbl_to_block(-7.25, buffer + 3);
    EXPECT_EQ(-7.25, vexo_util_block_to_dbl(buffer + 3));
    EXPECT_EQ(0, buffer[0] | buffer[1] | buffer[2]);
}

TEST(DoubleBlock, NullPointersAreHarmless) {
    vexo_util_dbl_to_block(1.0, nullptr);
    EXPECT_EQ(0.0, vexo_util_block_to_dbl(nullptr));
}

} // namespace
