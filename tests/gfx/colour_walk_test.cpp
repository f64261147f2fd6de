// SPDX-License-Identifier: MIT
// The two table walks against the literal rule: output byte i is the table
// of channel (first + i) % 3 at input byte i.  Random tables, so a lane
// given the wrong channel or the wrong half of a table shows.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

#include "gfx/colour.hpp"

namespace {

struct RandomTables {
    vexo::ChannelTables t;
    explicit RandomTables(unsigned seed) {
        std::mt19937 rng(seed);
        for (auto &channel : t)
            for (auto &entry : channel) entry = static_cast<uint8_t>(rng());
    }
};

// Every byte value in every channel: value v at bytes 3v, 3v+1, 3v+2 of
// the first 768 bytes, then random bytes.
std::vector<uint8_t> every_value_in_every_channel(size_t bytes, unsigned seed) {
    std::vector<uint8_t> src(bytes);
    std::mt19937 rng(seed);
    for (size_t i = 0; i < bytes; ++i)
        src[i] = i < 768 ? static_cast<uint8_t>(i / 3) : static_cast<uint8_t>(rng());
    return src;
}

// Index of the first byte that breaks the rule, or -1.
long first_wrong(const uint8_t *out, const uint8_t *src, size_t bytes, int first,
                 const vexo::ChannelTables &t) {
    for (size_t i = 0; i < bytes; ++i)
        if (out[i] != t[(first + i) % 3][src[i]]) return static_cast<long>(i);
    return -1;
}

TEST(PortableWalk, EveryStartChannelAndLength) {
    const RandomTables tables(11);
    const std::vector<uint8_t> src = every_value_in_every_channel(900, 5);
    for (int first = 0; first < 3; ++first)
        for (size_t bytes :
             {size_t{0}, size_t{1}, size_t{23}, size_t{24}, size_t{25}, size_t{900}}) {
            std::vector<uint8_t> out(bytes + 1, 0xA5);
            vexo::map_bytes_portable(out.data(), src.data(), bytes, first, tables.t);
            EXPECT_EQ(first_wrong(out.data(), src.data(), bytes, first, tables.t), -1)
                << "first channel " << first << ", " << bytes << " bytes";
            EXPECT_EQ(out[bytes], 0xA5) << "wrote past " << bytes << " bytes";
        }
}

class WideWalk : public testing::Test {
protected:
    void SetUp() override {
        if (!vexo::wide_walk_available()) GTEST_SKIP() << "processor lacks 512-bit byte permutes";
    }
};

// Source and destination at every offset within a register, lengths that
// end inside a register: the edges go the portable way, the middle the
// wide way, and both must agree with the rule.
TEST_F(WideWalk, EveryValueChannelAlignmentAndTail) {
    const RandomTables tables(12);
    const std::vector<uint8_t> src = every_value_in_every_channel(64 * 20 + 64, 6);
    std::vector<uint8_t> out(src.size() + 64);
    for (size_t shift = 0; shift < 64; shift += 7)
        for (size_t bytes :
             {size_t{63}, size_t{64}, size_t{65}, size_t{768}, size_t{64 * 20 - 1}}) {
            const uint8_t *from = src.data() + shift;
            std::fill(out.begin(), out.end(), 0x5A);
            uint8_t *to = out.data() + (64 - shift) % 64;
            vexo::map_bytes_wide(to, from, bytes, tables.t);
            EXPECT_EQ(first_wrong(to, from, bytes, 0, tables.t), -1)
                << "shift " << shift << ", " << bytes << " bytes";
            EXPECT_EQ(to[bytes], 0x5A) << "wrote past " << bytes << " bytes";
        }
}

TEST_F(WideWalk, InPlace) {
    const RandomTables tables(13);
    const std::vector<uint8_t> src = every_value_in_every_channel(64 * 9 + 17, 7);
    std::vector<uint8_t> work = src;
    vexo::map_bytes_wide(work.data(), work.data(), work.size(), tables.t);
    EXPECT_EQ(first_wrong(work.data(), src.data(), src.size(), 0, tables.t), -1);
}

// Outputs of kStreamingBytes or more bypass the cache from the first
// aligned byte on; an odd start checks the aligned head is counted in
// whole channels.
TEST_F(WideWalk, StreamedOutputFromAnOddStart) {
    const RandomTables tables(14);
    const size_t bytes = vexo::kStreamingBytes + 3 * 64 + 5;
    const std::vector<uint8_t> src = every_value_in_every_channel(bytes + 1, 8);
    std::vector<uint8_t> out(bytes + 64);
    uint8_t *to = out.data() + 1;
    vexo::map_bytes_wide(to, src.data() + 1, bytes, tables.t);
    EXPECT_EQ(first_wrong(to, src.data() + 1, bytes, 0, tables.t), -1);
}

TEST_F(WideWalk, StreamedInPlace) {
    const RandomTables tables(15);
    const std::vector<uint8_t> src = every_value_in_every_channel(vexo::kStreamingBytes + 3, 9);
    std::vector<uint8_t> work = src;
    vexo::map_bytes_wide(work.data(), work.data(), work.size(), tables.t);
    EXPECT_EQ(first_wrong(work.data(), src.data(), src.size(), 0, tables.t), -1);
}

} // namespace
