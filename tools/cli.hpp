// SPDX-License-Identifier: MIT
// Small helpers shared by the vexo tool's commands: argument parsing that
// reports what was wrong, status names, and file-kind detection.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "vexo.h"

namespace cli {

// A user-facing failure: printed as "vexo: <message>", exit code 1.
struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The arguments after the command words, consumed front to back.
class Args {
public:
    Args(std::vector<std::string> words) : words_(std::move(words)) {}
    bool empty() const { return pos_ >= words_.size(); }
    bool wants_help() const;
    const std::string &peek() const { return words_[pos_]; }
    // The next positional argument, named `what` in error messages.
    std::string next(const char *what);
    // Removes "--name" and returns true when present.
    bool flag(const char *name);
    // Removes "--name VALUE..." (count values) and returns the values; empty
    // when absent.  Repeated options are returned one call at a time.
    std::vector<std::string> option(const char *name, int count = 1);
    // All words not consumed yet, in order (the caller interprets them).
    std::vector<std::string> take_rest();
    // Fails when unconsumed words remain.
    void finish() const;

private:
    std::vector<std::string> words_;
    size_t pos_ = 0;
};

double to_double(const std::string &text, const char *what);
long to_long(const std::string &text, const char *what);

// "VEXO_ERROR_OPEN_FILE (19)" and the like.
std::string status_name(uint32_t status);

// Format number by the same extension rules the library applies, or 0.
uint32_t format_from_name(const std::string &path);
const char *format_label(uint32_t format);

std::vector<uint8_t> read_file(const std::string &path);
void write_file(const std::string &path, const std::vector<uint8_t> &bytes);

} // namespace cli
