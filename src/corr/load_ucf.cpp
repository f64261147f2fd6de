// SPDX-License-Identifier: MIT
// ".ucf" and ".ctb": planes of 16-bit scanner words, column-major, Y plane
// before X.  The short ".ucf" form and ".ctb" carry no Z plane; a missing
// Z counts as word 0, so those tables come back with z = -32767.5 (word 0
// less the half range), the same z a written file with a zero plane gives.
#include "corr/column_planes.hpp"
#include "corr/loaders.hpp"
#include "corr/table.hpp"

namespace vexo {
namespace {

constexpr size_t kPlaneBytes = 4225 * 2;
constexpr size_t kShortUcfSize = 2 * kPlaneBytes; // Y, X without a header
constexpr size_t kUcfHeaderBytes = 4;

void apply_word_planes(CorrTable &table, const uint8_t *y_plane, const uint8_t *x_plane,
                       const uint8_t *z_plane) {
    if (wide_cells_available())
        decode_word_planes_wide(y_plane, x_plane, z_plane, table);
    else
        decode_word_planes_portable(y_plane, x_plane, z_plane, table);
}

} // namespace

uint32_t parse_ucf(ByteSpan file, CorrTable &table) {
    if (file.size == kShortUcfSize) {
        apply_word_planes(table, file.data, file.data + kPlaneBytes, nullptr);
        return VEXO_OK;
    }
    if (file.size < kUcfHeaderBytes + 3 * kPlaneBytes) return VEXO_ERROR_READ_FILE;
    const uint8_t *planes = file.data + kUcfHeaderBytes;
    apply_word_planes(table, planes, planes + kPlaneBytes, planes + 2 * kPlaneBytes);
    return VEXO_OK;
}

uint32_t parse_ctb(ByteSpan file, CorrTable &table) {
    if (file.size < 2 * kPlaneBytes) return VEXO_ERROR_READ_FILE;
    apply_word_planes(table, file.data, file.data + kPlaneBytes, nullptr);
    return VEXO_OK;
}

} // namespace vexo
