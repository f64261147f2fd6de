// SPDX-License-Identifier: MIT
// ".ucf" and ".ctb" share a target: the first byte picks one.
#include "corr_fuzz.hpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    return size == 0 ? 0
                     : fuzz_parser(data[0] & 1 ? vexo::parse_ctb : vexo::parse_ucf, data + 1,
                                   size - 1, {VEXO_OK, VEXO_ERROR_READ_FILE});
}
