// SPDX-License-Identifier: MIT
#include "corr/file_info.hpp"

#include <cstdlib>
#include <cstring>
#include <vector>

#include "core/byteorder.hpp"
#include "corr/file_io.hpp"
#include "corr/writers.hpp"

namespace vexo {
namespace {

constexpr size_t kShortUcfSize = 16900;
constexpr size_t kCt5HeaderWords = 16;

bool contains(ByteSpan file, const char *text) {
    const size_t n = std::strlen(text);
    for (size_t i = 0; i + n <= file.size; ++i)
        if (std::memcmp(file.data + i, text, n) == 0) return true;
    return false;
}

// ".cor": the integer layout's galvo scale, or the scaled layout's delta
// factors.
void describe_cor(ByteSpan file, CorrFileInfo &info) {
    constexpr size_t kFactorsOffset = 40;
    if (starts_with(file, kCorIntegerMarker) && file.size >= kCorIntegerScaleOffset + 8) {
        info.flags |= VEXO_CORR_INFO_SCALE;
        info.scale = load_le_f64(file.data + kCorIntegerScaleOffset);
    } else if (starts_with(file, kCorScaledMarker) && file.size >= kFactorsOffset + 16) {
        info.flags |= VEXO_CORR_INFO_FACTORS;
        info.factors[0] = load_le_f64(file.data + kFactorsOffset);
        info.factors[1] = load_le_f64(file.data + kFactorsOffset + 8);
    }
}

uint32_t copy_trailer(ByteSpan file, size_t planes, CorrFileInfo &info) noexcept {
    if (file.size <= planes) return VEXO_OK;
    const size_t size = file.size - planes; // below the 64 MiB file limit
    info.trailer = static_cast<uint8_t *>(std::malloc(size));
    if (!info.trailer) return VEXO_ERROR_NO_MEMORY;
    std::memcpy(info.trailer, file.data + planes, size);
    info.trailer_size = static_cast<uint32_t>(size);
    info.flags |= VEXO_CORR_INFO_TRAILER;
    return VEXO_OK;
}

} // namespace

uint32_t describe_corr_file(uint32_t format, ByteSpan file, const CorrHead &head,
                            CorrFileInfo &info) noexcept {
    info.format = format;
    // Formats whose files carry a z plane; the others leave a fill value.
    const bool has_z = format == VEXO_CORR_FORMAT_KXO || format == VEXO_CORR_FORMAT_GCD ||
                       (format == VEXO_CORR_FORMAT_UCF && file.size != kShortUcfSize) ||
                       (format == VEXO_CORR_FORMAT_XML && contains(file, "<z-axis>"));
    if (!has_z) info.flags |= VEXO_CORR_INFO_NO_Z;
    switch (format) {
    case VEXO_CORR_FORMAT_KXO:
        info.flags |= VEXO_CORR_INFO_HEAD;
        info.head = head;
        return VEXO_OK;
    case VEXO_CORR_FORMAT_COR:
        describe_cor(file, info);
        return VEXO_OK;
    case VEXO_CORR_FORMAT_CT5:
        for (size_t i = 0; i < kCt5HeaderWords; ++i) info.params[i] = load_le32(file.data + 4 * i);
        info.flags |= VEXO_CORR_INFO_PARAMS;
        return VEXO_OK;
    case VEXO_CORR_FORMAT_CTB:
        return copy_trailer(file, kCtbFileSize, info);
    default:
        return VEXO_OK;
    }
}

uint32_t save_corr_file(const CorrTable &table, const char *path, uint32_t format,
                        const CorrFileInfo *info) {
    const CorrFileInfo none{};
    const CorrFileInfo &with = info ? *info : none;
    switch (format) {
    case VEXO_CORR_FORMAT_KXO:
        return save_kxo(table, path, with.head);
    case VEXO_CORR_FORMAT_COR:
        return save_cor21(table, path, (with.flags & VEXO_CORR_INFO_SCALE) ? with.scale : 0.0);
    case VEXO_CORR_FORMAT_CTB: {
        const bool trailer = (with.flags & VEXO_CORR_INFO_TRAILER) && with.trailer_size > 0;
        if (!trailer) return save_ctb(table, path);
        if (!with.trailer) return VEXO_ERROR_INVALID_PARAMETER;
        std::vector<uint8_t> bytes(kCtbFileSize + with.trailer_size);
        encode_ctb(table, bytes.data());
        std::memcpy(bytes.data() + kCtbFileSize, with.trailer, with.trailer_size);
        return write_whole_file(path, bytes.data(), bytes.size());
    }
    default:
        return VEXO_ERROR_UNKNOWN_FORMAT;
    }
}

} // namespace vexo
