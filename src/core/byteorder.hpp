// SPDX-License-Identifier: MIT
// Byte-order helpers: values are assembled byte by byte, never by casting
// pointers into a buffer, so they work on any alignment and any host.
#pragma once

#include <cstdint>
#include <cstring>

namespace vexo {

inline uint16_t load_be16(const uint8_t *p) {
    return static_cast<uint16_t>((p[0] << 8) | p[1]);
}
inline uint32_t load_be32(const uint8_t *p) {
    return (uint32_t{p[0]} << 24) | (uint32_t{p[1]} << 16) | (uint32_t{p[2]} << 8) | uint32_t{p[3]};
}
inline uint64_t load_be64(const uint8_t *p) {
    return (uint64_t{load_be32(p)} << 32) | load_be32(p + 4);
}
inline uint16_t load_le16(const uint8_t *p) {
    return static_cast<uint16_t>(p[0] | (p[1] << 8));
}
inline uint32_t load_le32(const uint8_t *p) {
    return uint32_t{p[0]} | (uint32_t{p[1]} << 8) | (uint32_t{p[2]} << 16) | (uint32_t{p[3]} << 24);
}
inline uint64_t load_le64(const uint8_t *p) {
    return uint64_t{load_le32(p)} | (uint64_t{load_le32(p + 4)} << 32);
}
inline int16_t load_le_i16(const uint8_t *p) {
    return static_cast<int16_t>(load_le16(p));
}
inline int32_t load_le_i32(const uint8_t *p) {
    return static_cast<int32_t>(load_le32(p));
}
inline int32_t load_be_i32(const uint8_t *p) {
    return static_cast<int32_t>(load_be32(p));
}
inline float load_le_f32(const uint8_t *p) {
    uint32_t bits = load_le32(p);
    float v;
    std::memcpy(&v, &bits, sizeof v);
    return v;
}
inline double load_le_f64(const uint8_t *p) {
    uint64_t bits = load_le64(p);
    double v;
    std::memcpy(&v, &bits, sizeof v);
    return v;
}
inline double load_be_f64(const uint8_t *p) {
    uint64_t bits = load_be64(p);
    double v;
    std::memcpy(&v, &bits, sizeof v);
    return v;
}

inline void store_be16(uint8_t *p, uint16_t v) {
    p[0] = static_cast<uint8_t>(v >> 8);
    p[1] = static_cast<uint8_t>(v);
}
inline void store_be32(uint8_t *p, uint32_t v) {
    p[0] = static_cast<uint8_t>(v >> 24);
    p[1] = static_cast<uint8_t>(v >> 16);
    p[2] = static_cast<uint8_t>(v >> 8);
    p[3] = static_cast<uint8_t>(v);
}
inline void store_be64(uint8_t *p, uint64_t v) {
    store_be32(p, static_cast<uint32_t>(v >> 32));
    store_be32(p + 4, static_cast<uint32_t>(v));
}
inline void store_le16(uint8_t *p, uint16_t v) {
    p[0] = static_cast<uint8_t>(v);
    p[1] = static_cast<uint8_t>(v >> 8);
}
inline void store_le32(uint8_t *p, uint32_t v) {
    p[0] = static_cast<uint8_t>(v);
    p[1] = static_cast<uint8_t>(v >> 8);
    p[2] = static_cast<uint8_t>(v >> 16);
    p[3] = static_cast<uint8_t>(v >> 24);
}
inline void store_le64(uint8_t *p, uint64_t v) {
    store_le32(p, static_cast<uint32_t>(v));
    store_le32(p + 4, static_cast<uint32_t>(v >> 32));
}
inline void store_le_f64(uint8_t *p, double v) {
    uint64_t bits;
    std::memcpy(&bits, &v, sizeof bits);
    store_le64(p, bits);
}
inline void store_be_f64(uint8_t *p, double v) {
    uint64_t bits;
    std::memcpy(&bits, &v, sizeof bits);
    store_be64(p, bits);
}

} // namespace vexo
