// SPDX-License-Identifier: MIT
// Opening a caller's file for reading and replacing a file whole: the only
// two ways the library touches named files, shared by correction tables and
// runtime data so that both refuse the same things and fail the same way.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace vexo {

// An existing regular file opened for reading ("rb", or "r" with `text`),
// with its size; NULL when it cannot be opened or is not a regular file.
// The check comes before anything can block: a FIFO without a writer, a
// terminal or a device is refused at once instead of waiting for data.
// Windows retries a name the narrow open rejects with the wide open.
std::FILE *open_regular_file(const char *path, bool text, uint64_t *size) noexcept;

enum class ReadOutcome {
    Read,
    CannotOpen, // missing, unreadable, or not a regular file
    TooLarge,   // larger than the caller's limit; nothing was read
    NoMemory,
    ReadError,
};

// Reads an existing regular file whole into a new malloc'd block (one
// spare byte, so an empty file still gets a block of its own) that the
// caller frees; *size is what was read, less than the file's size when it
// shrank meanwhile.  Refuses what open_regular_file refuses, before
// anything can block.  A descriptor, one fstat and one read for a file
// that stays as it is: no stream and no stream buffer.
ReadOutcome read_regular_file(const char *path, size_t max_size, uint8_t **data,
                              size_t *size) noexcept;

enum class WriteOutcome {
    Written,
    CannotCreate, // no temporary next to the target, or the target is not a regular file
    ShortWrite,   // writing, flushing, closing or the final rename failed
};

// Replaces `path` with `size` bytes, or leaves it as it was.  The bytes go
// to a new file in the target's folder, which is flushed to the disk and
// then renamed over the target; on any failure the new file is removed and
// the target, if there was one, is untouched.  A symbolic link is followed
// to the file it names; an existing target keeps its permission bits.
WriteOutcome replace_file(const char *path, const uint8_t *data, size_t size, bool text) noexcept;

} // namespace vexo
