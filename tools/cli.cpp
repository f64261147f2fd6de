// SPDX-License-Identifier: MIT
#include "cli.hpp"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>

namespace cli {

bool Args::wants_help() const {
    for (const std::string &w : words_)
        if (w == "--help" || w == "-h") return true;
    return false;
}

std::string Args::next(const char *what) {
    if (empty() || (peek().size() > 2 && peek().compare(0, 2, "--") == 0))
        throw Failure(std::string("missing ") + what);
    return words_[pos_++];
}

bool Args::flag(const char *name) {
    for (size_t i = pos_; i < words_.size(); ++i)
        if (words_[i] == name) {
            words_.erase(words_.begin() + long(i));
            return true;
        }
    return false;
}

std::vector<std::string> Args::option(const char *name, int count) {
    for (size_t i = pos_; i < words_.size(); ++i) {
        if (words_[i] != name) continue;
        if (i + size_t(count) >= words_.size())
            throw Failure(std::string(name) + " needs " + std::to_string(count) + " value(s)");
        std::vector<std::string> values(words_.begin() + long(i) + 1,
                                        words_.begin() + long(i) + 1 + count);
        words_.erase(words_.begin() + long(i), words_.begin() + long(i) + 1 + count);
        return values;
    }
    return {};
}

std::vector<std::string> Args::take_rest() {
    std::vector<std::string> rest(words_.begin() + long(pos_), words_.end());
    pos_ = words_.size();
    return rest;
}

void Args::finish() const {
    if (!empty()) throw Failure("unexpected argument '" + words_[pos_] + "'");
}

double to_double(const std::string &text, const char *what) {
    errno = 0;
    char *end = nullptr;
    const double v = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0' || errno == ERANGE)
        throw Failure(std::string("bad number for ") + what + ": '" + text + "'");
    return v;
}

long to_long(const std::string &text, const char *what) {
    errno = 0;
    char *end = nullptr;
    const long v = std::strtol(text.c_str(), &end, 10);
    if (text.empty() || *end != '\0' || errno == ERANGE)
        throw Failure(std::string("bad whole number for ") + what + ": '" + text + "'");
    return v;
}

std::string status_name(uint32_t status) {
    const char *name = "unknown status";
    switch (status) {
    case VEXO_OK:
        name = "VEXO_OK";
        break;
    case VEXO_ERROR_NO_RESULT:
        name = "VEXO_ERROR_NO_RESULT";
        break;
    case VEXO_ERROR_INVALID_DATA:
        name = "VEXO_ERROR_INVALID_DATA";
        break;
    case VEXO_ERROR_NO_HANDLE:
        name = "VEXO_ERROR_NO_HANDLE";
        break;
    case VEXO_ERROR_NO_MEMORY:
        name = "VEXO_ERROR_NO_MEMORY";
        break;
    case VEXO_ERROR_INVALID_PARAMETER:
        name = "VEXO_ERROR_INVALID_PARAMETER";
        break;
    case VEXO_ERROR_FILE_ACCESS:
        name = "VEXO_ERROR_FILE_ACCESS";
        break;
    case VEXO_ERROR_OPEN_FILE:
        name = "VEXO_ERROR_OPEN_FILE (cannot open)";
        break;
    case VEXO_ERROR_WRITE_FILE:
        name = "VEXO_ERROR_WRITE_FILE";
        break;
    case VEXO_ERROR_READ_FILE:
        name = "VEXO_ERROR_READ_FILE (file too short or unreadable)";
        break;
    case VEXO_ERROR_NUMERIC:
        name = "VEXO_ERROR_NUMERIC";
        break;
    case VEXO_ERROR_INVALID_HEADER:
        name = "VEXO_ERROR_INVALID_HEADER";
        break;
    case VEXO_ERROR_UNKNOWN_FORMAT:
        name = "VEXO_ERROR_UNKNOWN_FORMAT";
        break;
    case VEXO_ERROR_NO_RATIO_MATCH:
        name = "VEXO_ERROR_NO_RATIO_MATCH";
        break;
    case VEXO_ERROR_NO_POINT_PAIRS:
        name = "VEXO_ERROR_NO_POINT_PAIRS";
        break;
    default:
        break;
    }
    return std::string(name) + " [" + std::to_string(status) + "]";
}

namespace {
struct Extension {
    const char *lower;
    const char *upper;
    uint32_t format;
    const char *label;
};
// The library's search order: ".scor" before ".cor", and so on.
const Extension kExtensions[] = {
    {".scor", ".SCOR", VEXO_CORR_FORMAT_SCOR, "scor"},
    {".cor", ".COR", VEXO_CORR_FORMAT_COR, "cor"},
    {".crt", ".CRT", VEXO_CORR_FORMAT_CRT, "crt"},
    {".ucf", ".UCF", VEXO_CORR_FORMAT_UCF, "ucf"},
    {".ctb", ".CTB", VEXO_CORR_FORMAT_CTB, "ctb"},
    {".ct5", ".CT5", VEXO_CORR_FORMAT_CT5, "ct5"},
    {".gcd", ".GCD", VEXO_CORR_FORMAT_GCD, "gcd"},
    {".kxo", ".KXO", VEXO_CORR_FORMAT_KXO, "kxo"},
    {".xml", ".XML", VEXO_CORR_FORMAT_XML, "xml"},
    {".txt", ".TXT", VEXO_CORR_FORMAT_TXT, "txt"},
    {".fcr", ".FCR", VEXO_CORR_FORMAT_FCR, "fcr"},
};
} // namespace

uint32_t format_from_name(const std::string &path) {
    for (const Extension &e : kExtensions)
        if (path.find(e.lower) != std::string::npos || path.find(e.upper) != std::string::npos)
            return e.format;
    return 0;
}

const char *format_label(uint32_t format) {
    for (const Extension &e : kExtensions)
        if (e.format == format) return e.label;
    return "unknown";
}

std::vector<uint8_t> read_file(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw Failure(path + ": cannot open: " + std::strerror(errno));
    return std::vector<uint8_t>((std::istreambuf_iterator<char>(in)),
                                std::istreambuf_iterator<char>());
}

void write_file(const std::string &path, const std::vector<uint8_t> &bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    if (!out) throw Failure(path + ": cannot create: " + std::strerror(errno));
    out.write(reinterpret_cast<const char *>(bytes.data()), std::streamsize(bytes.size()));
    if (!out) throw Failure(path + ": write failed");
}

} // namespace cli
