// SPDX-License-Identifier: MIT
// Reading a correction file whole.  Every loader goes through here, so the
// size limit exists once; opening is the library's shared regular-file
// opener.
#include "corr/file_io.hpp"

#include <cstdio>

#include "core/file_access.hpp"

namespace vexo {

uint32_t read_whole_file(const char *path, FileBytes &out) noexcept {
    uint64_t size = 0;
    std::FILE *raw = open_regular_file(path, false, &size);
    if (!raw) return VEXO_ERROR_OPEN_FILE;
    if (size > kMaxCorrFileSize) {
        std::fclose(raw);
        return VEXO_ERROR_INVALID_DATA;
    }
    // One spare byte so an empty file still gets a block of its own.
    auto *data = static_cast<uint8_t *>(std::malloc(static_cast<size_t>(size) + 1));
    if (!data) {
        std::fclose(raw);
        return VEXO_ERROR_NO_MEMORY;
    }
    const size_t got = std::fread(data, 1, static_cast<size_t>(size), raw);
    const bool failed = std::ferror(raw) != 0;
    std::fclose(raw);
    if (failed) {
        std::free(data);
        return VEXO_ERROR_READ_FILE;
    }
    // A file that shrank since fstat is parsed as what was actually there.
    std::free(out.data_);
    out.data_ = data;
    out.size_ = got;
    return VEXO_OK;
}

} // namespace vexo
