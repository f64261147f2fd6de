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

// "JCZ_COR_2_1" cor: label padded to 28 bytes, f64 scale, i32 delta pairs
// row by row, 4-byte zero trailer.
constexpr char kCor21Label[] = "JCZ_COR_2_1";
constexpr size_t kCor21LabelBytes = 11;
constexpr size_t kCor21ScaleOffset = 28;
constexpr size_t kCor21DataOffset = 36;
constexpr size_t kCor21DataBytes = 4225 * 8;
constexpr size_t kCor21FileSize = kCor21DataOffset + kCor21DataBytes + 4;
static_assert(kCor21FileSize == 33840, "JCZ_COR_2_1 files are 33,840 bytes");

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
