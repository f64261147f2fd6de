// SPDX-License-Identifier: MIT
#include "corr_fuzz.hpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    return fuzz_parser(vexo::parse_ct5, data, size, {VEXO_OK, VEXO_ERROR_READ_FILE});
}
