// SPDX-License-Identifier: MIT
#include "formats.hpp"

#include <cstring>

#include "cli.hpp"
#include "vexo.h"

namespace tool {
namespace {

// kxo stores (w + 32767.5) * 30000 in an int32; ctb a 16-bit word; cor an
// int32 delta from the neutral grid (bounded here by what a double table
// can sensibly hold, the deltas never reach the int32 limit before that).
constexpr double kHalf = 32767.5;
constexpr double kKxoLo = -kHalf - 2147483648.0 / 30000.0;
constexpr double kKxoHi = -kHalf + 2147483647.0 / 30000.0;
constexpr double kCorLimit = 2147483647.0 - 2 * kHalf;

const std::vector<FormatSpec> kFormats = {
    {VEXO_CORR_FORMAT_UCF, "ucf", false, true, 0, 0, "16-bit word planes Y, X (and Z)"},
    {VEXO_CORR_FORMAT_CTB, "ctb", true, false, -kHalf, kHalf, "16-bit word planes Y, X; no z"},
    {VEXO_CORR_FORMAT_CT5, "ct5", false, false, 0, 0, "257x257 planes at 1/16 unit; no z"},
    {VEXO_CORR_FORMAT_GCD, "gcd", false, true, 0, 0, "16-bit z, x, y offsets per node"},
    {VEXO_CORR_FORMAT_KXO, "kxo", true, true, kKxoLo, kKxoHi,
     "the library's own big-endian format"},
    {VEXO_CORR_FORMAT_XML, "xml", false, true, 0, 0, "XML lists <x-axis>, <y-axis>, <z-axis>"},
    {VEXO_CORR_FORMAT_TXT, "txt", false, false, 0, 0, "text, SIZE: and a 5x5 grid; no z"},
    {VEXO_CORR_FORMAT_CRT, "crt", false, false, 0, 0, "f32 quadruples from offset 2048; no z"},
    {VEXO_CORR_FORMAT_COR, "cor", true, false, -kCorLimit, kCorLimit,
     "delta pairs, labelled layouts carry a scale; no z"},
    {VEXO_CORR_FORMAT_FCR, "fcr", false, false, 0, 0, "128x128 16-bit deltas at the end; no z"},
    {VEXO_CORR_FORMAT_SCOR, "scor", false, false, 0, 0, "text key file of a measured grid; no z"},
};

bool starts_with(const std::vector<uint8_t> &b, const char *label) {
    const size_t n = std::strlen(label);
    return b.size() >= n && std::memcmp(b.data(), label, n) == 0;
}

bool contains(const std::vector<uint8_t> &b, const char *text) {
    const std::string s(b.begin(), b.end());
    return s.find(text) != std::string::npos;
}

std::string bytes_text(size_t n) {
    return std::to_string(n) + " bytes";
}

// The two labels a .cor file may start with.
bool cor_label(const std::vector<uint8_t> &b) {
    return starts_with(b, "JCZ_COR_3") || starts_with(b, "JCZ_COR_2_1");
}

bool kxo_header(const std::vector<uint8_t> &b) {
    return b.size() >= 4 && b[0] == 0 && b[1] == 1 && b[2] == 0 && b[3] == 12;
}

} // namespace

const std::vector<FormatSpec> &formats() {
    return kFormats;
}

const FormatSpec &format_named(const std::string &name) {
    std::string names;
    for (const FormatSpec &f : kFormats) {
        if (name == f.name || name == std::to_string(f.number)) return f;
        names += std::string(names.empty() ? "" : ", ") + f.name;
    }
    throw cli::Usage("unknown format '" + name + "' (one of " + names + "; see vexo corr formats)");
}

const FormatSpec &format_number(uint32_t number) {
    for (const FormatSpec &f : kFormats)
        if (f.number == number) return f;
    throw cli::Failure("unknown format number " + std::to_string(number));
}

const FormatSpec *format_of_path(const std::string &path) {
    const std::string ext = cli::final_extension(path);
    for (const FormatSpec &f : kFormats)
        if (ext == f.name) return &f;
    return nullptr;
}

std::string content_mismatch(const FormatSpec &f, const std::vector<uint8_t> &b) {
    const size_t n = b.size();
    switch (f.number) {
    case VEXO_CORR_FORMAT_KXO:
        if (!kxo_header(b)) return "no kxo header (version 1, header size 12)";
        if (n != VEXO_KXO_FILE_SIZE)
            return bytes_text(n) + " where a kxo file has " + bytes_text(VEXO_KXO_FILE_SIZE);
        return "";
    case VEXO_CORR_FORMAT_CTB:
        if (kxo_header(b) || cor_label(b)) return "labelled as another format";
        return n >= 16900 ? "" : bytes_text(n) + " where a ctb file has at least 16900";
    case VEXO_CORR_FORMAT_UCF:
        return n == 16900 || n >= 25354 ? "" : bytes_text(n) + ": neither 16900 nor 25354 or more";
    case VEXO_CORR_FORMAT_CT5:
        return n >= 528456 ? "" : bytes_text(n) + " where a ct5 file has at least 528456";
    case VEXO_CORR_FORMAT_GCD:
        return n >= 25350 ? "" : bytes_text(n) + " where a gcd file has at least 25350";
    case VEXO_CORR_FORMAT_CRT:
        return n >= 2048 + 67600 ? "" : bytes_text(n) + " where a crt file has at least 69648";
    case VEXO_CORR_FORMAT_FCR:
        return n >= 65536 ? "" : bytes_text(n) + " where an fcr file has at least 65536";
    case VEXO_CORR_FORMAT_COR:
        if (cor_label(b)) return "";
        if (kxo_header(b)) return "a kxo header";
        return n >= 519 + 67600 ? "" : bytes_text(n) + " and no .cor label";
    case VEXO_CORR_FORMAT_XML:
        return contains(b, "<Data") ? "" : "no <Data element";
    case VEXO_CORR_FORMAT_TXT:
        return starts_with(b, "SIZE:") ? "" : "no SIZE: line at the start";
    case VEXO_CORR_FORMAT_SCOR:
        return starts_with(b, "[LMCorrectData]") ? "" : "no [LMCorrectData] line at the start";
    default:
        return "unknown format";
    }
}

const FormatSpec *format_of_content(const std::vector<uint8_t> &b) {
    uint32_t number = 0;
    if (kxo_header(b) && b.size() == VEXO_KXO_FILE_SIZE)
        number = VEXO_CORR_FORMAT_KXO;
    else if (cor_label(b))
        number = VEXO_CORR_FORMAT_COR;
    else if (starts_with(b, "[LMCorrectData]"))
        number = VEXO_CORR_FORMAT_SCOR;
    else if (starts_with(b, "SIZE:"))
        number = VEXO_CORR_FORMAT_TXT;
    else if (contains(b, "<Data"))
        number = VEXO_CORR_FORMAT_XML;
    return number ? &format_number(number) : nullptr;
}

} // namespace tool
