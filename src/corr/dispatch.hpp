// SPDX-License-Identifier: MIT
// Choosing a correction format by number or by file name, and running the
// whole load (header reset, neutral start, read, parse, header publish).
#pragma once

#include <cstdint>

#include "corr/file_io.hpp"
#include "corr/loaders.hpp"

namespace vexo {

// The format number whose extension the name contains, 0 for none.
// Extensions are found anywhere in the name (a folder called "x.cor" counts)
// in a fixed order, each in lower then upper case; mixed case never matches.
uint32_t format_from_path(const char *path) noexcept;

// Runs format's parser over the bytes; `head` is filled by the kxo parser
// only.  VEXO_ERROR_UNKNOWN_FORMAT for a number outside 1..11.
uint32_t parse_corr_bytes(uint32_t format, ByteSpan file, CorrTable &table, CorrHead &head);

// Resolves format (0: by name; the number used is written back), reads the
// file into `file` and parses it; `head` is filled by the kxo parser only.
// The library-wide header is not touched.
uint32_t read_corr_file(CorrTable &table, const char *path, uint32_t &format, CorrHead &head,
                        FileBytes &file);

// The complete load behind vexo_corr_load_corr65 (arguments already checked).
uint32_t load_corr_file(CorrTable &table, const char *path, uint32_t format);

} // namespace vexo
