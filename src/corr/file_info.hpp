// SPDX-License-Identifier: MIT
// What a correction file holds beside its grid (the per-call record of
// vexo_corr_load_ex / vexo_corr_save_ex): found in the bytes a parser has
// accepted, and written back by the writers that can carry it.
#pragma once

#include <cstdint>

#include "corr/loaders.hpp"

namespace vexo {

// Fills info's flags and fields for `format` from the file's bytes (which
// the format's parser has accepted) and the kxo header the parser decoded.
// VEXO_OK; 11 when the trailer copy cannot be allocated.
uint32_t describe_corr_file(uint32_t format, ByteSpan file, const CorrHead &head,
                            CorrFileInfo &info) noexcept;

// Writes table as format (kxo, ctb or cor) with what info carries; info may
// be NULL.  34 for any other format; 16 for a trailer size without bytes.
uint32_t save_corr_file(const CorrTable &table, const char *path, uint32_t format,
                        const CorrFileInfo *info);

} // namespace vexo
