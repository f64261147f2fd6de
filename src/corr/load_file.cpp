// SPDX-License-Identifier: MIT
// Reading a correction file whole.  Every loader goes through here, so the
// size limit exists once; reading is the library's shared regular-file
// reader.
#include "corr/file_io.hpp"

#include <cstdlib>

#include "core/file_access.hpp"

namespace vexo {

uint32_t read_whole_file(const char *path, FileBytes &out) noexcept {
    uint8_t *data = nullptr;
    size_t size = 0;
    switch (read_regular_file(path, kMaxCorrFileSize, &data, &size)) {
    case ReadOutcome::Read:
        break;
    case ReadOutcome::CannotOpen:
        return VEXO_ERROR_OPEN_FILE;
    case ReadOutcome::TooLarge:
        return VEXO_ERROR_INVALID_DATA;
    case ReadOutcome::NoMemory:
        return VEXO_ERROR_NO_MEMORY;
    case ReadOutcome::ReadError:
        return VEXO_ERROR_READ_FILE;
    }
    // A file that shrank since it was measured is parsed as what was
    // actually there.
    std::free(out.data_);
    out.data_ = data;
    out.size_ = size;
    return VEXO_OK;
}

} // namespace vexo
