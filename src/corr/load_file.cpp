// SPDX-License-Identifier: MIT
// Opening and reading a correction file whole.  Every loader goes through
// here, so the size limit, the directory check and the Windows wide-name
// fallback exist once.
#include "corr/file_io.hpp"

#include <cstdio>
#include <sys/stat.h>

#ifdef _WIN32
#include <windows.h>
#include <vector>
#endif

namespace vexo {
namespace {

#ifdef _WIN32
// Names that the ANSI code page cannot carry reach us as bytes the narrow
// open rejects; the wide open then sees the same name as Windows stores it.
std::FILE *open_wide(const char *path) {
    int wide_len = MultiByteToWideChar(CP_ACP, 0, path, -1, nullptr, 0);
    if (wide_len <= 0) return nullptr;
    std::vector<wchar_t> wide(static_cast<size_t>(wide_len));
    if (MultiByteToWideChar(CP_ACP, 0, path, -1, wide.data(), wide_len) <= 0) return nullptr;
    return _wfopen(wide.data(), L"rb");
}
#endif

std::FILE *open_for_reading(const char *path) {
    std::FILE *f = std::fopen(path, "rb");
#ifdef _WIN32
    if (!f) f = open_wide(path);
#endif
    return f;
}

// Size of an open regular file; false for directories, devices, pipes.
bool regular_file_size(std::FILE *f, uint64_t &size) {
#ifdef _WIN32
    struct _stat64 info;
    if (_fstat64(_fileno(f), &info) != 0 || (info.st_mode & _S_IFMT) != _S_IFREG) return false;
#else
    struct stat info;
    if (fstat(fileno(f), &info) != 0 || !S_ISREG(info.st_mode)) return false;
#endif
    if (info.st_size < 0) return false;
    size = static_cast<uint64_t>(info.st_size);
    return true;
}

} // namespace

uint32_t read_whole_file(const char *path, FileBytes &out) noexcept {
    std::FILE *raw = open_for_reading(path);
    if (!raw) return VEXO_ERROR_OPEN_FILE;
    uint64_t size = 0;
    if (!regular_file_size(raw, size)) {
        std::fclose(raw);
        return VEXO_ERROR_OPEN_FILE;
    }
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
