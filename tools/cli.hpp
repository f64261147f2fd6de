// SPDX-License-Identifier: MIT
// What every command of the vexo tool shares: the two kinds of failure
// (exit 1 and exit 2), status wording from the library, number checks, and
// file reading and writing that never hangs on a pipe and never leaves half
// a file.
#pragma once

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "vexo.h"

namespace cli {

// A failure of the work: printed as "vexo GROUP COMMAND: <message>", exit 1.
struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// A usage error found after parsing (a value out of its range): exit 2.
struct Usage : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Options every command understands.
struct Global {
    bool quiet = false; // -q: no progress lines ("written to ..."), results still
    bool force = false; // --force: overwrite outputs, write tables that fail checks
};
Global &global();

// Prints a progress line to stdout unless -q was given.
void say(const char *format, ...) __attribute__((format(printf, 1, 2)));

// "file could not be opened (VEXO_ERROR_OPEN_FILE, 19)".
std::string status_text(uint32_t status);

// A number that must lie in lo..hi (NaN never does); `what` names the option.
double number_in(const std::string &text, double lo, double hi, const char *what);

// Reads a whole file (or standard input for "-") of at most `limit` bytes.
// Refuses anything that is not a regular file before reading from it, so a
// pipe without a writer cannot block the tool.
std::vector<uint8_t> read_input(const std::string &path, size_t limit);
// Fails unless path names a regular file (checked without blocking).
void require_regular_file(const std::string &path);

// Writes an output: for "-" the writer fills a temporary file whose bytes go
// to standard output; otherwise into a temporary file beside the target,
// renamed over it only when complete.  An existing target needs --force.
void write_output(const std::string &path,
                  const std::function<void(const std::string &tmp)> &writer);

// Lower-case extension after the last dot of the last path component ("" if none).
std::string final_extension(const std::string &path);

} // namespace cli
