// SPDX-License-Identifier: MIT
// The library's own format (see write_kxo.cpp).  The header is taken even
// from a file too short to hold the planes: cards identify a table by its
// tag and value, and hosts read them back after a failed load.
#include <cstring>

#include "core/byteorder.hpp"
#include "corr/column_planes.hpp"
#include "corr/loaders.hpp"
#include "corr/table.hpp"
#include "corr/writers.hpp"

namespace vexo {
namespace {

// As many header bytes as the file has, the rest zero.
CorrHead decode_head(ByteSpan file) {
    uint8_t raw[kKxoHeaderSize] = {};
    std::memcpy(raw, file.data, file.size < kKxoHeaderSize ? file.size : kKxoHeaderSize);
    CorrHead head{};
    head.version = load_be16(raw);
    head.header_size = load_be16(raw + 2);
    head.tag = raw[4];
    std::memcpy(head.reserved, raw + 5, sizeof head.reserved);
    head.value = load_be32(raw + 8);
    return head;
}

} // namespace

uint32_t parse_kxo(ByteSpan file, CorrTable &table, CorrHead &head) {
    head = file.size > 0 ? decode_head(file) : CorrHead{};
    if (file.size < kKxoFileSize) return VEXO_ERROR_READ_FILE;
    const uint8_t *x_plane = file.data + kKxoHeaderSize;
    if (wide_cells_available())
        decode_kxo_planes_wide(x_plane, table);
    else
        decode_kxo_planes_portable(x_plane, table);
    return VEXO_OK;
}

} // namespace vexo
