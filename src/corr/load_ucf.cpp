// SPDX-License-Identifier: MIT
// ".ucf" and ".ctb": planes of 16-bit scanner words, column-major, Y plane
// before X.  The short ".ucf" form and ".ctb" carry no Z plane; a missing
// Z counts as word 0, so those tables come back with z = -32767.5 (word 0
// less the half range), the same z a written file with a zero plane gives.
#include "core/byteorder.hpp"
#include "corr/loaders.hpp"
#include "corr/table.hpp"

namespace vexo {
namespace {

constexpr size_t kPlaneBytes = 4225 * 2;
constexpr size_t kShortUcfSize = 2 * kPlaneBytes; // Y, X without a header
constexpr size_t kUcfHeaderBytes = 4;

// Rows outer, so the table is written in memory order; the planes (25 KB
// at most) are read across, which stays in cache.
void apply_word_planes(CorrTable &table, const uint8_t *y_plane, const uint8_t *x_plane,
                       const uint8_t *z_plane) {
    for (int row = 0; row < kCorrSide; ++row) {
        for (int column = 0; column < kCorrSide; ++column) {
            const size_t k = static_cast<size_t>(column) * kCorrSide + static_cast<size_t>(row);
            const unsigned z_word = z_plane ? load_le16(z_plane + 2 * k) : 0u;
            set_cell_xyz(corr_cell(table, row, column), load_le16(x_plane + 2 * k) - kCorrHalfRange,
                         load_le16(y_plane + 2 * k) - kCorrHalfRange, z_word - kCorrHalfRange);
        }
    }
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
