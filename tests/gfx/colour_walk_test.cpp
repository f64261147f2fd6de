// SPDX-License-Identifier: MIT
// The table walks against the literal rule: output byte i is the table
// of channel (first + i) % 3 at input byte i.  Random tables, so a lane
// given the wrong channel or the wrong half of a table shows.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
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

// Each walk through map_pixels, the call the pipeline makes; a walk this
// processor lacks is skipped.
class EachWalk : public testing::TestWithParam<vexo::ColourWalk> {
protected:
    void SetUp() override {
        vexo::limit_colour_walk(GetParam());
        if (vexo::colour_walk() != GetParam()) GTEST_SKIP() << "processor lacks this walk";
    }
    void TearDown() override { vexo::limit_colour_walk(vexo::ColourWalk::Wide); }
};

// Source and destination at every offset within a register, lengths that
// end inside a register or a block: the edges go the portable way, the
// middle the walk's own way, and all must agree with the rule.
TEST_P(EachWalk, EveryValueChannelAlignmentAndTail) {
    const RandomTables tables(12);
    const std::vector<uint8_t> src = every_value_in_every_channel(64 * 24 + 64, 6);
    std::vector<uint8_t> out(src.size() + 65);
    for (size_t shift = 0; shift < 64; shift += 5)
        for (size_t pixels : {1, 21, 22, 31, 32, 33, 63, 64, 65, 256, 512 - 1}) {
            const size_t bytes = 3 * pixels;
            const uint8_t *from = src.data() + shift;
            std::fill(out.begin(), out.end(), 0x5A);
            uint8_t *to = out.data() + 1 + (64 - shift) % 64;
            vexo::map_pixels(to, from, pixels, tables.t);
            EXPECT_EQ(first_wrong(to, from, bytes, 0, tables.t), -1)
                << "shift " << shift << ", " << pixels << " pixels";
            EXPECT_EQ(to[-1], 0x5A) << "wrote before dst, shift " << shift;
            EXPECT_EQ(to[bytes], 0x5A) << "wrote past " << pixels << " pixels";
        }
}

TEST_P(EachWalk, InPlace) {
    const RandomTables tables(13);
    const std::vector<uint8_t> src = every_value_in_every_channel(3 * 300, 7);
    std::vector<uint8_t> work = src;
    vexo::map_pixels(work.data(), work.data(), work.size() / 3, tables.t);
    EXPECT_EQ(first_wrong(work.data(), src.data(), src.size(), 0, tables.t), -1);
}

// Outputs of kStreamingBytes or more bypass the cache from the first
// aligned byte on; an odd start checks the aligned head is counted in
// whole channels.
TEST_P(EachWalk, StreamedOutputFromAnOddStart) {
    const RandomTables tables(14);
    const size_t pixels = vexo::kStreamingBytes / 3 + 70;
    const std::vector<uint8_t> src = every_value_in_every_channel(3 * pixels + 1, 8);
    std::vector<uint8_t> out(3 * pixels + 64);
    uint8_t *to = out.data() + 1;
    vexo::map_pixels(to, src.data() + 1, pixels, tables.t);
    EXPECT_EQ(first_wrong(to, src.data() + 1, 3 * pixels, 0, tables.t), -1);
}

TEST_P(EachWalk, StreamedInPlace) {
    const RandomTables tables(15);
    const std::vector<uint8_t> src =
        every_value_in_every_channel(3 * (vexo::kStreamingBytes / 3 + 1), 9);
    std::vector<uint8_t> work = src;
    vexo::map_pixels(work.data(), work.data(), work.size() / 3, tables.t);
    EXPECT_EQ(first_wrong(work.data(), src.data(), src.size(), 0, tables.t), -1);
}

// The pipeline's own tables against the per-byte formula written out
// here: gamma 1 (entry k is the 16-bit level of (k + 1) / 256), then
// contrast, brightness and each channel's offset in f32.
TEST_P(EachWalk, MatchesThePerByteFormula) {
    vexo::GammaTable gamma;
    vexo::build_gamma_table(1.0f, gamma);
    vexo::ColourLevels levels;
    levels.brightness = 12;
    levels.contrast = 25;
    levels.offsets[0] = 3;
    levels.offsets[1] = -4;
    levels.offsets[2] = 5;
    vexo::ChannelTables tables;
    vexo::build_channel_tables(gamma, levels, tables);
    const std::vector<uint8_t> src = every_value_in_every_channel(3 * 1000, 10);
    std::vector<uint8_t> out(src.size());
    vexo::map_pixels(out.data(), src.data(), src.size() / 3, tables);
    for (size_t i = 0; i < src.size(); ++i) {
        const float curve = (float)(uint16_t)((float)(src[i] + 1) / 256.0f * 65535.0f + 0.5f);
        float r = ((curve / 65535.0f - 0.5f) * 1.5625f + 0.5f) * 255.0f + 12.0f;
        r = r + (float)levels.offsets[i % 3];
        const int want = r > 255.0f ? 255 : r > 0.0f ? (int)r : 0;
        ASSERT_EQ(out[i], want) << "byte " << i << ", input " << int(src[i]);
    }
}

// A limit is never exceeded, and the portable walk is always there.
TEST(ColourWalkLimit, NeverPicksAFasterWalk) {
    for (auto limit :
         {vexo::ColourWalk::Portable, vexo::ColourWalk::Shuffle, vexo::ColourWalk::Wide}) {
        vexo::limit_colour_walk(limit);
        EXPECT_LE(static_cast<int>(vexo::colour_walk()), static_cast<int>(limit))
            << "limit " << static_cast<int>(limit);
    }
    vexo::limit_colour_walk(vexo::ColourWalk::Portable);
    EXPECT_EQ(vexo::colour_walk(), vexo::ColourWalk::Portable);
    vexo::limit_colour_walk(vexo::ColourWalk::Wide);
}

std::string walk_name(const testing::TestParamInfo<vexo::ColourWalk> &info) {
    switch (info.param) {
    case vexo::ColourWalk::Portable:
        return "Portable";
    case vexo::ColourWalk::Shuffle:
        return "Shuffle";
    case vexo::ColourWalk::Wide:
        return "Wide";
    }
    return "Unknown";
}

INSTANTIATE_TEST_SUITE_P(Walks, EachWalk,
                         testing::Values(vexo::ColourWalk::Portable, vexo::ColourWalk::Shuffle,
                                         vexo::ColourWalk::Wide),
                         walk_name);

} // namespace
