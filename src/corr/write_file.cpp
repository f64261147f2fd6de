// SPDX-License-Identifier: MIT
// Writing a finished correction file: the whole image is built in memory
// first, then replaces the file in one step or leaves it as it was.
#include "corr/file_io.hpp"

#include "core/file_access.hpp"

namespace vexo {

uint32_t write_whole_file(const char *path, const uint8_t *data, size_t size) noexcept {
    switch (replace_file(path, data, size, false)) {
    case WriteOutcome::Written:
        return VEXO_OK;
    case WriteOutcome::CannotCreate:
        return VEXO_ERROR_OPEN_FILE;
    default:
        return VEXO_ERROR_WRITE_FILE;
    }
}

} // namespace vexo
