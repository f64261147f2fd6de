// SPDX-License-Identifier: MIT
// Small opaque blobs kept between runs under a caller's name and key.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace vexo {

// "<name>.<MD5 of key, 32 upper-case hex digits>".
std::string runtime_data_file_name(const char *name, const uint8_t *key, size_t key_length);

// False for names that would leave the runtime-data folder.
bool runtime_data_name_allowed(const char *name);

uint32_t save_runtime_data(const std::string &file_name, const uint8_t *data, size_t size);
uint32_t load_runtime_data(const std::string &file_name, uint8_t *buffer, size_t size);

} // namespace vexo
