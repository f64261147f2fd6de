// SPDX-License-Identifier: MIT
#include "core/file_access.hpp"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <string>

#include <sys/stat.h>

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#include <process.h>
#include <vector>
#include <windows.h>
#else
#include <fcntl.h>
#include <unistd.h>
#endif

namespace vexo {
namespace {

#ifdef _WIN32

// Names that the ANSI code page cannot carry reach us as bytes the narrow
// open rejects; the wide open then sees the same name as Windows stores it.
std::FILE *open_wide(const char *path, const wchar_t *mode) {
    int wide_len = MultiByteToWideChar(CP_ACP, 0, path, -1, nullptr, 0);
    if (wide_len <= 0) return nullptr;
    std::vector<wchar_t> wide(static_cast<size_t>(wide_len));
    if (MultiByteToWideChar(CP_ACP, 0, path, -1, wide.data(), wide_len) <= 0) return nullptr;
    return _wfopen(wide.data(), mode);
}

std::FILE *open_for_reading(const char *path, bool text) {
    std::FILE *f = std::fopen(path, text ? "r" : "rb");
    if (!f) f = open_wide(path, text ? L"r" : L"rb");
    if (!f) return nullptr;
    struct _stat64 info;
    if (_fstat64(_fileno(f), &info) != 0 || (info.st_mode & _S_IFMT) != _S_IFREG) {
        std::fclose(f);
        return nullptr;
    }
    return f;
}

bool file_size(std::FILE *f, uint64_t *size) {
    struct _stat64 info;
    if (_fstat64(_fileno(f), &info) != 0 || info.st_size < 0) return false;
    *size = static_cast<uint64_t>(info.st_size);
    return true;
}

#else

// Opened without blocking (a FIFO with no writer would otherwise wait for
// one), checked, and only then turned into a blocking stream.
std::FILE *open_for_reading(const char *path, bool text) {
    const int fd = ::open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (fd < 0) return nullptr;
    struct stat info;
    const int flags = ::fcntl(fd, F_GETFL);
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode) || flags < 0 ||
        ::fcntl(fd, F_SETFL, flags & ~O_NONBLOCK) != 0) {
        ::close(fd);
        return nullptr;
    }
    std::FILE *f = ::fdopen(fd, text ? "r" : "rb");
    if (!f) ::close(fd);
    return f;
}

bool file_size(std::FILE *f, uint64_t *size) {
    struct stat info;
    if (::fstat(fileno(f), &info) != 0 || info.st_size < 0) return false;
    *size = static_cast<uint64_t>(info.st_size);
    return true;
}

#endif

// Where the bytes finally go: a link is followed to the file it names, so
// that the rename replaces that file and not the link.
std::string final_target(const char *path) {
#ifndef _WIN32
    struct stat info;
    if (::lstat(path, &info) == 0 && S_ISLNK(info.st_mode)) {
        char *resolved = ::realpath(path, nullptr);
        if (resolved) {
            std::string target(resolved);
            std::free(resolved);
            return target;
        }
    }
#endif
    return path;
}

std::string folder_of(const std::string &path) {
#ifdef _WIN32
    const size_t cut = path.find_last_of("/\\");
#else
    const size_t cut = path.find_last_of('/');
#endif
    return cut == std::string::npos ? std::string() : path.substr(0, cut + 1);
}

long process_id() {
#ifdef _WIN32
    return long(_getpid());
#else
    return long(::getpid());
#endif
}

// A temporary file of our own (created exclusively) next to the target,
// or NULL.  Its name goes to `temp`.
std::FILE *create_temporary(const std::string &target, bool text, std::string &temp) {
    static std::atomic<unsigned> sequence{0};
    const std::string folder = folder_of(target);
    for (int attempt = 0; attempt < 100; ++attempt) {
        temp = folder + ".vexo-" + std::to_string(process_id()) + "-" +
               std::to_string(sequence.fetch_add(1)) + ".tmp";
#ifdef _WIN32
        const int fd =
            _open(temp.c_str(), _O_CREAT | _O_EXCL | _O_WRONLY | (text ? _O_TEXT : _O_BINARY),
                  _S_IREAD | _S_IWRITE);
#else
        (void)text;
        const int fd = ::open(temp.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0666);
#endif
        if (fd < 0) {
            if (errno == EEXIST) continue;
            return nullptr;
        }
#ifdef _WIN32
        std::FILE *f = _fdopen(fd, text ? "w" : "wb");
        if (!f) _close(fd);
#else
        std::FILE *f = ::fdopen(fd, "wb");
        if (!f) ::close(fd);
#endif
        if (!f) std::remove(temp.c_str());
        return f;
    }
    return nullptr;
}

// False when the target exists but is not a regular file, or is one we may
// not write (the rename alone would replace a read-only file); otherwise
// its permission bits (when it exists) go to the temporary.
bool adopt_target_mode(const std::string &target, std::FILE *temp_file) {
#ifdef _WIN32
    struct _stat64 info;
    if (_stat64(target.c_str(), &info) != 0) return true;
    (void)temp_file;
    return (info.st_mode & _S_IFMT) == _S_IFREG && _access(target.c_str(), 2) == 0;
#else
    struct stat info;
    if (::stat(target.c_str(), &info) != 0) return true;
    if (!S_ISREG(info.st_mode) || ::access(target.c_str(), W_OK) != 0) return false;
    return ::fchmod(fileno(temp_file), info.st_mode & 07777) == 0;
#endif
}

bool write_and_close(std::FILE *f, const uint8_t *data, size_t size) {
    bool ok = size == 0 || std::fwrite(data, 1, size, f) == size;
    // A full disk often shows only when the buffer is flushed or synced.
    ok = std::fflush(f) == 0 && ok;
#ifdef _WIN32
    ok = _commit(_fileno(f)) == 0 && ok;
#else
    ok = ::fsync(fileno(f)) == 0 && ok;
#endif
    return std::fclose(f) == 0 && ok;
}

bool rename_over(const std::string &from, const std::string &to) {
#ifdef _WIN32
    return MoveFileExA(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING) != 0;
#else
    return std::rename(from.c_str(), to.c_str()) == 0;
#endif
}

} // namespace

std::FILE *open_regular_file(const char *path, bool text, uint64_t *size) noexcept {
    std::FILE *f = open_for_reading(path, text);
    if (f && !file_size(f, size)) {
        std::fclose(f);
        return nullptr;
    }
    return f;
}

namespace {

#ifdef _WIN32

ReadOutcome read_open_file(const char *path, size_t max_size, uint8_t **data, size_t *size) {
    uint64_t file_bytes = 0;
    std::FILE *f = open_regular_file(path, false, &file_bytes);
    if (!f) return ReadOutcome::CannotOpen;
    ReadOutcome outcome = ReadOutcome::Read;
    uint8_t *block = nullptr;
    if (file_bytes > max_size) {
        outcome = ReadOutcome::TooLarge;
    } else if (!(block = static_cast<uint8_t *>(std::malloc(size_t(file_bytes) + 1)))) {
        outcome = ReadOutcome::NoMemory;
    } else {
        *size = std::fread(block, 1, size_t(file_bytes), f);
        if (std::ferror(f)) outcome = ReadOutcome::ReadError;
    }
    std::fclose(f);
    if (outcome != ReadOutcome::Read)
        std::free(block);
    else
        *data = block;
    return outcome;
}

#else

// Fills block[0..wanted) from fd; returns the bytes read (fewer at end of
// file) or -1.  The descriptor was opened non-blocking so that opening a
// FIFO cannot wait; a regular file's reads ignore that on most file
// systems, and where one does not, the flag is cleared and the read
// repeated.
ssize_t read_all(int fd, uint8_t *block, size_t wanted) {
    size_t got = 0;
    while (got < wanted) {
        const ssize_t n = ::read(fd, block + got, wanted - got);
        if (n > 0) {
            got += size_t(n);
        } else if (n == 0) {
            break;
        } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
            const int flags = ::fcntl(fd, F_GETFL);
            if (flags < 0 || ::fcntl(fd, F_SETFL, flags & ~O_NONBLOCK) != 0) return -1;
        } else if (errno != EINTR) {
            return -1;
        }
    }
    return ssize_t(got);
}

ReadOutcome read_descriptor(int fd, size_t max_size, uint8_t **data, size_t *size) {
    struct stat info;
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode) || info.st_size < 0)
        return ReadOutcome::CannotOpen;
    if (uint64_t(info.st_size) > max_size) return ReadOutcome::TooLarge;
    const size_t wanted = size_t(info.st_size);
    auto *block = static_cast<uint8_t *>(std::malloc(wanted + 1));
    if (!block) return ReadOutcome::NoMemory;
    const ssize_t got = read_all(fd, block, wanted);
    if (got < 0) {
        std::free(block);
        return ReadOutcome::ReadError;
    }
    *data = block;
    *size = size_t(got);
    return ReadOutcome::Read;
}

ReadOutcome read_open_file(const char *path, size_t max_size, uint8_t **data, size_t *size) {
    const int fd = ::open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (fd < 0) return ReadOutcome::CannotOpen;
    const ReadOutcome outcome = read_descriptor(fd, max_size, data, size);
    ::close(fd);
    return outcome;
}

#endif

} // namespace

ReadOutcome read_regular_file(const char *path, size_t max_size, uint8_t **data,
                              size_t *size) noexcept {
    return read_open_file(path, max_size, data, size);
}

WriteOutcome replace_file(const char *path, const uint8_t *data, size_t size, bool text) noexcept {
    try {
        const std::string target = final_target(path);
        std::string temp;
        std::FILE *f = create_temporary(target, text, temp);
        if (!f) return WriteOutcome::CannotCreate;
        if (!adopt_target_mode(target, f)) {
            std::fclose(f);
            std::remove(temp.c_str());
            return WriteOutcome::CannotCreate;
        }
        if (!write_and_close(f, data, size) || !rename_over(temp, target)) {
            std::remove(temp.c_str());
            return WriteOutcome::ShortWrite;
        }
        return WriteOutcome::Written;
    } catch (...) { // std::bad_alloc from the names
        return WriteOutcome::CannotCreate;
    }
}

} // namespace vexo
