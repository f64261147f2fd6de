// SPDX-License-Identifier: MIT
#include "corr_fuzz.hpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    return fuzz_parser(vexo::parse_scor, data, size,
                       {VEXO_OK, VEXO_ERROR_INVALID_DATA, VEXO_ERROR_READ_FILE,
                        VEXO_ERROR_INVALID_HEADER, VEXO_ERROR_NO_MEMORY});
}
