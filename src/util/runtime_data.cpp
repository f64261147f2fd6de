// SPDX-License-Identifier: MIT
// Runtime-data files: the caller's bytes, nothing else, in the per-user
// runtime-data folder.
#include "util/runtime_data.hpp"

#include <cstdio>
#include <cstring>

#include "core/file_access.hpp"
#include "util/data_folder.hpp"
#include "util/md5.hpp"
#include "vexo.h"

namespace vexo {

std::string runtime_data_file_name(const char *name, const uint8_t *key, size_t key_length) {
    return std::string(name) + '.' + md5_hex_upper(md5(key, key_length));
}

bool runtime_data_name_allowed(const char *name) {
    // Both separators on every platform, so a name behaves the same on all.
    return std::strchr(name, '/') == nullptr && std::strchr(name, '\\') == nullptr;
}

// Text mode is kept on purpose: on platforms that translate line ends,
// hosts that read these files themselves see the same translation.
constexpr bool kTextMode = true;

uint32_t save_runtime_data(const std::string &file_name, const uint8_t *data, size_t size) {
    const std::string folder = runtime_data_folder(true);
    if (folder.empty()) return VEXO_ERROR_FILE_ACCESS;
    switch (replace_file((folder + file_name).c_str(), data, size, kTextMode)) {
    case WriteOutcome::Written:
        return VEXO_OK;
    case WriteOutcome::CannotCreate:
        return VEXO_ERROR_FILE_ACCESS;
    default:
        return VEXO_ERROR_WRITE_FILE;
    }
}

uint32_t load_runtime_data(const std::string &file_name, uint8_t *buffer, size_t size) {
    const std::string folder = runtime_data_folder(false);
    if (folder.empty()) return VEXO_ERROR_FILE_ACCESS;
    uint64_t file_size = 0;
    std::FILE *file = open_regular_file((folder + file_name).c_str(), kTextMode, &file_size);
    if (file == nullptr) return VEXO_ERROR_FILE_ACCESS;
    const size_t read = size > 0 ? std::fread(buffer, 1, size, file) : 0;
    std::fclose(file);
    return read == size ? VEXO_OK : VEXO_ERROR_READ_FILE;
}

} // namespace vexo
