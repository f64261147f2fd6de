// SPDX-License-Identifier: MIT
// Writing a finished correction file: the whole image is built in memory
// first, so a file is either written in one go or reported as failed.
#include "corr/file_io.hpp"

#include <cstdio>

namespace vexo {

uint32_t write_whole_file(const char *path, const uint8_t *data, size_t size) noexcept {
    std::FILE *f = std::fopen(path, "wb");
    if (!f) return VEXO_ERROR_OPEN_FILE;
    const size_t written = std::fwrite(data, 1, size, f);
    // fclose flushes the stdio buffer; a full disk often shows only here.
    const bool closed = std::fclose(f) == 0;
    return written == size && closed ? VEXO_OK : VEXO_ERROR_WRITE_FILE;
}

} // namespace vexo
