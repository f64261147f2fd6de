// SPDX-License-Identifier: MIT
// In-memory parsers of the correction file formats.  Each takes the whole
// file as bytes and fills a table that the caller has already set neutral;
// opening and reading the file is one shared wrapper (load_file.cpp), so
// fuzzers and tests reach every parser directly.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "vexo.h"

namespace vexo {

struct ByteSpan {
    const uint8_t *data;
    size_t size;
};

// True when the file begins with the bytes of `label` (its terminator not
// included), the test every format marker goes through.
inline bool starts_with(ByteSpan file, const char *label) noexcept {
    const size_t n = std::strlen(label);
    return file.size >= n && std::memcmp(file.data, label, n) == 0;
}

// Binary formats.  Each replaces x, y and z of every cell when it succeeds
// (deltas are applied to the neutral grid it computes itself) and writes no
// cell when it fails, so for them the neutral start is only needed after a
// failure.
uint32_t parse_ucf(ByteSpan file, CorrTable &table);
uint32_t parse_ctb(ByteSpan file, CorrTable &table);
uint32_t parse_ct5(ByteSpan file, CorrTable &table);
uint32_t parse_gcd(ByteSpan file, CorrTable &table);
// Fills `head` from the first bytes even when the file is then too short.
uint32_t parse_kxo(ByteSpan file, CorrTable &table, CorrHead &head);
uint32_t parse_crt(ByteSpan file, CorrTable &table);
uint32_t parse_cor(ByteSpan file, CorrTable &table);
uint32_t parse_fcr(ByteSpan file, CorrTable &table);

// Text formats.
uint32_t parse_xml(ByteSpan file, CorrTable &table);
uint32_t parse_txt(ByteSpan file, CorrTable &table);
uint32_t parse_scor(ByteSpan file, CorrTable &table);

} // namespace vexo
