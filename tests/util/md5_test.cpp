#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "util/md5.hpp"

namespace {
std::string hex_of(const std::string &message) {
    return vexo::md5_hex_upper(
        vexo::md5(reinterpret_cast<const uint8_t *>(message.data()), message.size()));
}
} // namespace

TEST(Md5, ReferenceSuite) {
    EXPECT_EQ(hex_of(""), "D41D8CD98F00B204E9800998ECF8427E");
    EXPECT_EQ(hex_of("a"), "0CC175B9C0F1B6A831C399E269772661");
    EXPECT_EQ(hex_of("abc"), "900150983CD24FB0D6963F7D28E17F72");
    EXPECT_EQ(hex_of("message digest"), "F96B697D7CB7938D525A2F31AAF161D0");
    EXPECT_EQ(hex_of("abcdefghijklmnopqrstuvwxyz"), "C3FCD3D76192E4007DFB496CCA67E13B");
    EXPECT_EQ(hex_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"),
              "D174AB98D277D9F5A5611C2C9F419D9F");
    EXPECT_EQ(hex_of("1234567890123456789012345678901234567890123456789012345678901234567890"
                     "1234567890"),
              "57EDF4A22BE3C955AC49DA2E2107B67A");
    // Well-known digest of a pangram.
    EXPECT_EQ(hex_of("The quick brown fox jumps over the lazy dog"),
              "9E107D9D372BB6826BD81D3542A419D6");
}

TEST(Md5, PaddingBoundariesAndIncrementalUpdates) {
    // Lengths around the 56-byte padding limit and the 64-byte block must
    // give the same digest however the message is fed in.
    std::vector<uint8_t> message(300);
    for (size_t i = 0; i < message.size(); ++i)
        message[i] = static_cast<uint8_t>(i * 31 + 7);
    for (size_t length : {0u, 1u, 55u, 56u, 57u, 63u, 64u, 65u, 119u, 120u, 128u, 300u}) {
        const vexo::Md5Digest whole = vexo::md5(message.data(), length);
        for (size_t chunk : {1u, 3u, 17u, 64u}) {
            vexo::Md5 h;
            for (size_t at = 0; at < length; at += chunk)
                h.update(message.data() + at, std::min(chunk, length - at));
            EXPECT_EQ(h.finish(), whole) << length << " by " << chunk;
        }
    }
    // 56 and 64 bytes of 'a' (padding spills into a second block).
    EXPECT_EQ(hex_of(std::string(56, 'a')), "3B0C8AC703F828B04C6C197006D17218");
    EXPECT_EQ(hex_of(std::string(64, 'a')), "014842D480B571495A4A0363793F7367");
}
