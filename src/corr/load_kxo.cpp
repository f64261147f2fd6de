// SPDX-License-Identifier: MIT
// The library's own format (see write_kxo.cpp).  The header is taken even
// from a file too short to hold the planes: cards identify a table by its
// tag and value, and hosts read them back after a failed load.
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include "core/byteorder.hpp"
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

double kxo_decode(const uint8_t *p) {
    return load_be_i32(p) / 30000.0 - kCorrHalfRange;
}

// One plane into one coordinate of every cell, rows outer so the table is
// written in memory order.  The divisions dominate a load; SSE2 does two at
// once with the same IEEE double results as the scalar formula (no
// contraction, the same two operations).
void decode_plane(const uint8_t *plane, CorrTable &table, double GeomPoint::*coordinate) {
    constexpr size_t kColumnStride = 4 * kCorrSide;
    for (int row = 0; row < kCorrSide; ++row) {
        const uint8_t *p = plane + 4 * static_cast<size_t>(row); // column 0
        int column = 0;
#ifdef __SSE2__
        const __m128d divisor = _mm_set1_pd(30000.0);
        const __m128d half_range = _mm_set1_pd(kCorrHalfRange);
        for (; column + 1 < kCorrSide; column += 2, p += 2 * kColumnStride) {
            const __m128d stored = _mm_set_pd(load_be_i32(p + kColumnStride), load_be_i32(p));
            const __m128d value = _mm_sub_pd(_mm_div_pd(stored, divisor), half_range);
            _mm_storel_pd(&(corr_cell(table, row, column).*coordinate), value);
            _mm_storeh_pd(&(corr_cell(table, row, column + 1).*coordinate), value);
        }
#endif
        for (; column < kCorrSide; ++column, p += kColumnStride)
            corr_cell(table, row, column).*coordinate = kxo_decode(p);
    }
}

} // namespace

uint32_t parse_kxo(ByteSpan file, CorrTable &table, CorrHead &head) {
    head = file.size > 0 ? decode_head(file) : CorrHead{};
    if (file.size < kKxoFileSize) return VEXO_ERROR_READ_FILE;
    const uint8_t *x_plane = file.data + kKxoHeaderSize;
    decode_plane(x_plane, table, &GeomPoint::x);
    decode_plane(x_plane + kKxoPlaneBytes, table, &GeomPoint::y);
    decode_plane(x_plane + 2 * kKxoPlaneBytes, table, &GeomPoint::z);
    return VEXO_OK;
}

} // namespace vexo
