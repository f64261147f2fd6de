// SPDX-License-Identifier: MIT
// MD5 after RFC 1321: 64-byte blocks, four rounds of sixteen steps.
#include "util/md5.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "core/byteorder.hpp"

namespace vexo {

namespace {

// T[i] = floor(2^32 * |sin(i + 1)|), as the RFC defines the table.
struct SineTable {
    uint32_t t[64];
    SineTable() {
        for (int i = 0; i < 64; ++i)
            t[i] = static_cast<uint32_t>(std::floor(4294967296.0 * std::fabs(std::sin(i + 1.0))));
    }
};

const SineTable &sine_table() {
    static const SineTable table;
    return table;
}

// Left-rotation amounts, four per round.
constexpr int kShifts[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};

inline uint32_t rotate_left(uint32_t v, int s) {
    return (v << s) | (v >> (32 - s));
}

} // namespace

Md5::Md5() : state_{0x67452301u, 0xEFCDAB89u, 0x98BADCFEu, 0x10325476u}, pending_{} {}

void Md5::process_block(const uint8_t *block) {
    uint32_t x[16];
    for (int i = 0; i < 16; ++i) x[i] = load_le32(block + 4 * i);
    const uint32_t *t = sine_table().t;
    uint32_t a = state_[0], b = state_[1], c = state_[2], d = state_[3];
    for (int i = 0; i < 64; ++i) {
        const int round = i / 16;
        uint32_t f;
        int word;
        switch (round) {
        case 0:
            f = (b & c) | (~b & d);
            word = i;
            break;
        case 1:
            f = (b & d) | (c & ~d);
            word = (5 * i + 1) % 16;
            break;
        case 2:
            f = b ^ c ^ d;
            word = (3 * i + 5) % 16;
            break;
        default:
            f = c ^ (b | ~d);
            word = (7 * i) % 16;
            break;
        }
        const uint32_t rotated = rotate_left(a + f + x[word] + t[i], kShifts[round][i % 4]);
        a = d;
        d = c;
        c = b;
        b = b + rotated;
    }
    state_[0] += a;
    state_[1] += b;
    state_[2] += c;
    state_[3] += d;
}

void Md5::update(const uint8_t *data, size_t length) {
    total_bytes_ += length;
    if (pending_bytes_ > 0) {
        const size_t take = std::min(length, sizeof pending_ - pending_bytes_);
        std::memcpy(pending_ + pending_bytes_, data, take);
        pending_bytes_ += take;
        data += take;
        length -= take;
        if (pending_bytes_ < sizeof pending_) return;
        process_block(pending_);
        pending_bytes_ = 0;
    }
    for (; length >= 64; data += 64, length -= 64) process_block(data);
    if (length > 0) std::memcpy(pending_, data, length);
    pending_bytes_ = length;
}

Md5Digest Md5::finish() {
    // Padding: 0x80, zeros up to 56 mod 64, then the bit length (mod 2^64)
    // as a little-endian 64-bit value.
    const uint64_t bit_length = total_bytes_ * 8;
    uint8_t tail[72] = {0x80};
    const size_t zeros = (pending_bytes_ < 56 ? 56 : 120) - pending_bytes_;
    uint8_t length_bytes[8];
    store_le64(length_bytes, bit_length);
    update(tail, zeros);
    update(length_bytes, 8);
    Md5Digest digest;
    for (int i = 0; i < 4; ++i) store_le32(digest.data() + 4 * i, state_[i]);
    return digest;
}

Md5Digest md5(const uint8_t *data, size_t length) {
    Md5 h;
    if (length > 0) h.update(data, length);
    return h.finish();
}

std::string md5_hex_upper(const Md5Digest &digest) {
    static const char kDigits[] = "0123456789ABCDEF";
    std::string hex;
    hex.reserve(32);
    for (uint8_t byte : digest) {
        hex.push_back(kDigits[byte >> 4]);
        hex.push_back(kDigits[byte & 0x0F]);
    }
    return hex;
}

} // namespace vexo
