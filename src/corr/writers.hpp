// SPDX-License-Identifier: MIT
// Correction table writers.  Each encodes the whole file into memory (so
// tests, fuzzers and benchmarks reach the encoding without a file) and then
// writes it with one call.
#pragma once

#include <cstddef>
#include <cstdint>

#include "vexo.h"

namespace vexo {

// kxo: 12-byte header, then X, Y, Z planes of big-endian i32, column-major.
constexpr size_t kKxoHeaderSize = 12;
constexpr size_t kKxoPlaneBytes = 4225 * 4;
constexpr size_t kKxoFileSize = kKxoHeaderSize + 3 * kKxoPlaneBytes;
static_assert(kKxoFileSize == VEXO_KXO_FILE_SIZE, "kxo files are 50,712 bytes");

// ctb: Y then X planes of little-endian u16, column-major.
constexpr size_t kCtbPlaneBytes = 4225 * 2;
constexpr size_t kCtbFileSize = 2 * kCtbPlaneBytes;

// ".cor" files begin with a format marker.  The integer layout: marker
// padded to 28 bytes, f64 galvo scale, i32 delta pairs row by row, 4-byte
// zero trailer.  The scaled layout: f64 scale factors at 40 and 48, f64
// delta pairs from 56.  A file with neither marker holds plain f64 pairs.
constexpr char kCorIntegerMarker[] = "JCZ_COR_2_1";
constexpr char kCorScaledMarker[] = "JCZ_COR_3";
constexpr size_t kCorIntegerMarkerBytes = 11;
constexpr size_t kCorIntegerScaleOffset = 28;
constexpr size_t kCorIntegerDataOffset = 36;
constexpr size_t kCorIntegerDataBytes = 4225 * 8;
constexpr size_t kCorIntegerFileSize = kCorIntegerDataOffset + kCorIntegerDataBytes + 4;
static_assert(kCorIntegerFileSize == 33840, "integer-marker .cor files are 33,840 bytes");

// The stored kxo value of one coordinate: distance from the field's lower
// edge in units of 1/30000, saturated and rounded half away from zero.
int32_t kxo_encode(double coordinate);

void encode_kxo(const CorrTable &table, const CorrHead &head, uint8_t *out);
void encode_ctb(const CorrTable &table, uint8_t *out);
void encode_cor21(const CorrTable &table, double scale, uint8_t *out);

uint32_t save_kxo(const CorrTable &table, const char *path, const CorrHead &head) noexcept;
uint32_t save_ctb(const CorrTable &table, const char *path) noexcept;
uint32_t save_cor21(const CorrTable &table, const char *path, double scale) noexcept;

} // namespace vexo
