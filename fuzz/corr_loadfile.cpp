// SPDX-License-Identifier: MIT
// The whole load: the bytes after the first go to a scratch file, the first
// picks the format number (0..12, so recognition by name and unknown numbers
// run too). Only a kxo load may leave a header behind.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>

#include "fuzz_check.hpp"
#include "vexo.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static const std::string path = "/tmp/vexo_fuzz_loadfile_" + std::to_string(getpid()) + ".kxo";
    static CorrTable table;
    std::FILE *f = size ? std::fopen(path.c_str(), "wb") : nullptr;
    if (!f) return 0;
    std::fwrite(data + 1, 1, size - 1, f);
    std::fclose(f);
    const uint32_t format = data[0] % 13u;
    const uint32_t status = vexo_corr_load_corr65(&table, path.c_str(), format);
    std::remove(path.c_str());
    CorrHead head;
    vexo_corr_get_corr_head(&head);
    const bool kxo = format == VEXO_CORR_FORMAT_KXO || format == VEXO_CORR_FORMAT_AUTO;
    const bool allowed = status == VEXO_OK || status == VEXO_ERROR_INVALID_DATA ||
                         status == VEXO_ERROR_NO_MEMORY || status == VEXO_ERROR_READ_FILE ||
                         status == VEXO_ERROR_INVALID_HEADER || status == VEXO_ERROR_UNKNOWN_FORMAT;
    if (!allowed || (!kxo && (head.version | head.header_size | head.tag | head.value)))
        fuzz_fail("corr_loadfile",
                  allowed ? "header left by a load that is not kxo" : "status not allowed", status);
    return 0;
}
