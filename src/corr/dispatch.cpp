// SPDX-License-Identifier: MIT
#include "corr/dispatch.hpp"

#include <cstring>

#include "corr/file_io.hpp"
#include "corr/head_state.hpp"
#include "corr/table.hpp"

namespace vexo {
namespace {

struct Extension {
    const char *lower;
    const char *upper;
    uint32_t format;
};

// Search order matters: ".scor" contains ".cor", and a folder name may hold
// one extension while the file has another; the first entry found wins.
constexpr Extension kExtensions[] = {
    {".scor", ".SCOR", VEXO_CORR_FORMAT_SCOR}, {".cor", ".COR", VEXO_CORR_FORMAT_COR},
    {".crt", ".CRT", VEXO_CORR_FORMAT_CRT},    {".ucf", ".UCF", VEXO_CORR_FORMAT_UCF},
    {".ctb", ".CTB", VEXO_CORR_FORMAT_CTB},    {".ct5", ".CT5", VEXO_CORR_FORMAT_CT5},
    {".gcd", ".GCD", VEXO_CORR_FORMAT_GCD},    {".kxo", ".KXO", VEXO_CORR_FORMAT_KXO},
    {".xml", ".XML", VEXO_CORR_FORMAT_XML},    {".txt", ".TXT", VEXO_CORR_FORMAT_TXT},
    {".fcr", ".FCR", VEXO_CORR_FORMAT_FCR},
};

// The binary parsers replace x, y and z of every cell when they succeed
// and write no cell when they fail (see loaders.hpp); the text parsers
// build on a neutral table.
bool replaces_whole_table(uint32_t format) {
    return format != VEXO_CORR_FORMAT_XML && format != VEXO_CORR_FORMAT_TXT &&
           format != VEXO_CORR_FORMAT_SCOR;
}

} // namespace

uint32_t format_from_path(const char *path) noexcept {
    for (const Extension &ext : kExtensions)
        if (std::strstr(path, ext.lower) || std::strstr(path, ext.upper)) return ext.format;
    return 0;
}

uint32_t parse_corr_bytes(uint32_t format, ByteSpan file, CorrTable &table, CorrHead &head) {
    switch (format) {
    case VEXO_CORR_FORMAT_UCF:
        return parse_ucf(file, table);
    case VEXO_CORR_FORMAT_CTB:
        return parse_ctb(file, table);
    case VEXO_CORR_FORMAT_CT5:
        return parse_ct5(file, table);
    case VEXO_CORR_FORMAT_GCD:
        return parse_gcd(file, table);
    case VEXO_CORR_FORMAT_KXO:
        return parse_kxo(file, table, head);
    case VEXO_CORR_FORMAT_XML:
        return parse_xml(file, table);
    case VEXO_CORR_FORMAT_TXT:
        return parse_txt(file, table);
    case VEXO_CORR_FORMAT_CRT:
        return parse_crt(file, table);
    case VEXO_CORR_FORMAT_COR:
        return parse_cor(file, table);
    case VEXO_CORR_FORMAT_FCR:
        return parse_fcr(file, table);
    case VEXO_CORR_FORMAT_SCOR:
        return parse_scor(file, table);
    default:
        return VEXO_ERROR_UNKNOWN_FORMAT;
    }
}

uint32_t read_corr_file(CorrTable &table, const char *path, uint32_t &format, CorrHead &head,
                        FileBytes &file) {
    if (format == VEXO_CORR_FORMAT_AUTO) format = format_from_path(path);
    if (format < VEXO_CORR_FORMAT_UCF || format > VEXO_CORR_FORMAT_SCOR) {
        set_neutral(table);
        return VEXO_ERROR_UNKNOWN_FORMAT;
    }
    const uint32_t read_status = read_whole_file(path, file);
    if (read_status != VEXO_OK) {
        set_neutral(table);
        return read_status;
    }
    // For the binary formats the neutral fill would be a wasted pass over
    // 135 KB when they succeed; the table ends the same either way.
    const bool whole = replaces_whole_table(format);
    if (!whole) set_neutral(table);
    const uint32_t status = parse_corr_bytes(format, file.span(), table, head);
    if (whole && status != VEXO_OK) set_neutral(table);
    return status;
}

uint32_t load_corr_file(CorrTable &table, const char *path, uint32_t format) {
    // Only a kxo file carries a header; every other load leaves it zero.
    CorrHead head{};
    FileBytes file;
    const uint32_t status = read_corr_file(table, path, format, head, file);
    if (format == VEXO_CORR_FORMAT_KXO) publish_corr_head(head);
    return status;
}

} // namespace vexo
