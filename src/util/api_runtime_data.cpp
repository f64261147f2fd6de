// SPDX-License-Identifier: MIT
// C boundary of the runtime-data functions.
#include "core/boundary.hpp"
#include "util/runtime_data.hpp"

namespace {

bool arguments_valid(const char *name, const uint8_t *key, uint32_t key_length, const void *bytes,
                     uint32_t size) {
    if (name == nullptr || (key == nullptr && key_length > 0) || (bytes == nullptr && size > 0))
        return false;
    return vexo::runtime_data_name_allowed(name);
}

} // namespace

extern "C" {

VEXO_API uint32_t vexo_util_save_runtime_data(const char *name, const uint8_t *key,
                                              uint32_t key_length, const uint8_t *data,
                                              uint32_t size) {
    if (!arguments_valid(name, key, key_length, data, size)) return VEXO_ERROR_INVALID_PARAMETER;
    return vexo::guard_status([&] {
        return vexo::save_runtime_data(vexo::runtime_data_file_name(name, key, key_length), data,
                                       size);
    });
}

VEXO_API uint32_t vexo_util_load_runtime_data(const char *name, const uint8_t *key,
                                              uint32_t key_length, uint8_t *buffer, uint32_t size) {
    if (!arguments_valid(name, key, key_length, buffer, size)) return VEXO_ERROR_INVALID_PARAMETER;
    return vexo::guard_status([&] {
        return vexo::load_runtime_data(vexo::runtime_data_file_name(name, key, key_length), buffer,
                                       size);
    });
}

} // extern "C"
