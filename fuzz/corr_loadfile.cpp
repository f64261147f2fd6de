// The whole file path: bytes go to a temporary file that
// vexo_corr_load_corr65 opens, reads and parses.  The first byte picks the
// format number (0..12, so by-name recognition and unknown numbers run too).
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>

#include "vexo.h"

namespace {

const std::string &scratch_file() {
    static const std::string *path =
        new std::string("/tmp/vexo_fuzz_loadfile_" + std::to_string(::getpid()) + ".kxo");
    return *path;
}

bool allowed(uint32_t status) {
    switch (status) {
    case VEXO_OK:
    case VEXO_ERROR_INVALID_DATA:
    case VEXO_ERROR_NO_MEMORY:
    case VEXO_ERROR_READ_FILE:
    case VEXO_ERROR_INVALID_HEADER:
    case VEXO_ERROR_UNKNOWN_FORMAT: return true;
    default: return false;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size == 0)
        return 0;
    std::FILE *f = std::fopen(scratch_file().c_str(), "wb");
    if (!f)
        return 0;
    std::fwrite(data + 1, 1, size - 1, f);
    std::fclose(f);
    static CorrTable table;
    const uint32_t format = data[0] % 13u;
    const uint32_t status = vexo_corr_load_corr65(&table, scratch_file().c_str(), format);
    std::remove(scratch_file().c_str());
    if (!allowed(status))
        std::abort();
    CorrHead head;
    vexo_corr_get_corr_head(&head);
    const bool kxo = format == VEXO_CORR_FORMAT_KXO || format == VEXO_CORR_FORMAT_AUTO;
    if (!kxo && (head.version | head.header_size | head.tag | head.value) != 0)
        std::abort(); // only a kxo load may leave a header behind
    return 0;
}
