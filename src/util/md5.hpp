// SPDX-License-Identifier: MIT
// MD5 message digest (RFC 1321), used to turn runtime-data keys into file
// names.  Not for anything security-related.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace vexo {

using Md5Digest = std::array<uint8_t, 16>;

class Md5 {
public:
    Md5();
    void update(const uint8_t *data, size_t length);
    Md5Digest finish();

private:
    void process_block(const uint8_t *block);

    uint32_t state_[4];
    uint64_t total_bytes_ = 0;
    uint8_t pending_[64];
    size_t pending_bytes_ = 0;
};

Md5Digest md5(const uint8_t *data, size_t length);

// The 32 upper-case hexadecimal digits of a digest, byte 0 first.
std::string md5_hex_upper(const Md5Digest &digest);

} // namespace vexo
