// SPDX-License-Identifier: MIT
// Whole-file reading and writing for the correction formats.  Parsers work
// on memory (see loaders.hpp); these are the only places that touch files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "corr/loaders.hpp"

namespace vexo {

// Correction files are at most a few hundred KiB; anything above this is
// not one, and is refused before it is read into memory.
constexpr size_t kMaxCorrFileSize = size_t{64} << 20;

// A malloc'd copy of a file's bytes, freed with the object.
class FileBytes {
public:
    FileBytes() = default;
    FileBytes(const FileBytes &) = delete;
    FileBytes &operator=(const FileBytes &) = delete;
    ~FileBytes() { std::free(data_); }

    ByteSpan span() const { return ByteSpan{data_, size_}; }

private:
    friend uint32_t read_whole_file(const char *path, FileBytes &out) noexcept;
    uint8_t *data_ = nullptr;
    size_t size_ = 0;
};

// VEXO_OK; 19 when the path cannot be opened or is not a regular file (a
// directory or a FIFO, say, refused without waiting); 7 when it is larger
// than kMaxCorrFileSize; 11 when the copy cannot be allocated; 21 on a
// read error.
uint32_t read_whole_file(const char *path, FileBytes &out) noexcept;

// Replaces path with the block, or leaves it untouched (replace_file).
// VEXO_OK; 19 when no file can be made beside it or it is not a writable
// regular file; 20 when writing, flushing or renaming fails.
uint32_t write_whole_file(const char *path, const uint8_t *data, size_t size) noexcept;

} // namespace vexo
