// SPDX-License-Identifier: MIT
// The correction formats as the tool names them: number, name, whether the
// library can write them, and the content check that confirms a file is
// what its extension claims.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tool {

struct FormatSpec {
    uint32_t number;     // VEXO_CORR_FORMAT_
    const char *name;    // also the extension
    bool writable;       // vexo_corr_save_ex can write it
    bool has_z;          // the file can hold z (".ucf" and XML only sometimes)
    double lo, hi;       // the range the writer stores x, y (and z) in, output units
    const char *content; // one line on what the file holds
};

const std::vector<FormatSpec> &formats();
// By name ("ctb") or number ("2"); throws cli::Usage listing the names.
const FormatSpec &format_named(const std::string &name);
const FormatSpec &format_number(uint32_t number);
// By the final extension of path; nullptr when none matches.
const FormatSpec *format_of_path(const std::string &path);
// Empty when the bytes look like the format, else what does not fit.
std::string content_mismatch(const FormatSpec &format, const std::vector<uint8_t> &bytes);
// The format the bytes identify by their own labels (kxo header, ".cor"
// labels, XML, text headers); nullptr when they carry none.
const FormatSpec *format_of_content(const std::vector<uint8_t> &bytes);

} // namespace tool
