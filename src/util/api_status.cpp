// SPDX-License-Identifier: MIT
// Status codes as text: the macro name a host can search the header for, and
// a short description for messages shown to people.
#include "vexo.h"

namespace {

struct StatusText {
    uint32_t status;
    const char *name;
    const char *text;
};

// One row per status macro in vexo.h; a status added there gets its row here.
constexpr StatusText kStatuses[] = {
    {VEXO_OK, "VEXO_OK", "success"},
    {VEXO_ERROR_NO_RESULT, "VEXO_ERROR_NO_RESULT", "the operation produced no output"},
    {VEXO_ERROR_INVALID_DATA, "VEXO_ERROR_INVALID_DATA", "file content not understood"},
    {VEXO_ERROR_NO_HANDLE, "VEXO_ERROR_NO_HANDLE", "handle missing or matching produced nothing"},
    {VEXO_ERROR_NO_MEMORY, "VEXO_ERROR_NO_MEMORY", "an allocation failed"},
    {VEXO_ERROR_INVALID_PARAMETER, "VEXO_ERROR_INVALID_PARAMETER",
     "missing pointer, count or argument out of range"},
    {VEXO_ERROR_FILE_ACCESS, "VEXO_ERROR_FILE_ACCESS", "runtime-data file could not be opened"},
    {VEXO_ERROR_OPEN_FILE, "VEXO_ERROR_OPEN_FILE", "data file could not be opened"},
    {VEXO_ERROR_WRITE_FILE, "VEXO_ERROR_WRITE_FILE", "fewer bytes written than requested"},
    {VEXO_ERROR_READ_FILE, "VEXO_ERROR_READ_FILE", "file too short or a value unreadable"},
    {VEXO_ERROR_NUMERIC, "VEXO_ERROR_NUMERIC", "a computed distance is not a number"},
    {VEXO_ERROR_INVALID_HEADER, "VEXO_ERROR_INVALID_HEADER", "required header line missing"},
    {VEXO_ERROR_UNKNOWN_FORMAT, "VEXO_ERROR_UNKNOWN_FORMAT", "file type not supported"},
    {VEXO_ERROR_NO_RATIO_MATCH, "VEXO_ERROR_NO_RATIO_MATCH", "no match passed the ratio test"},
    {VEXO_ERROR_NO_POINT_PAIRS, "VEXO_ERROR_NO_POINT_PAIRS", "no point pairs to fit"},
};

const StatusText *find_status(uint32_t status) noexcept {
    for (const StatusText &row : kStatuses)
        if (row.status == status) return &row;
    return nullptr;
}

} // namespace

extern "C" {

VEXO_API const char *vexo_util_status_name(uint32_t status) {
    const StatusText *row = find_status(status);
    return row != nullptr ? row->name : "VEXO_STATUS_UNKNOWN";
}

VEXO_API const char *vexo_util_status_text(uint32_t status) {
    const StatusText *row = find_status(status);
    return row != nullptr ? row->text : "unknown status";
}

} // extern "C"
