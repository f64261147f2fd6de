// SPDX-License-Identifier: MIT
// kxo bytes the parser accepts must survive re-encoding bit for bit: planes,
// tag and value.
#include <cstring>

#include "corr/writers.hpp"
#include "corr_fuzz.hpp"
#include "fuzz_check.hpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static CorrTable table;
    static uint8_t encoded[vexo::kKxoFileSize];
    CorrHead head{};
    const uint32_t status = vexo::parse_kxo(vexo::ByteSpan{data, size}, table, head);
    if (status != VEXO_OK && status != VEXO_ERROR_READ_FILE)
        fuzz_fail("corr_kxo", "status not allowed", status);
    if (status != VEXO_OK) return 0;
    vexo::encode_kxo(table, head, encoded);
    const size_t n = vexo::kKxoFileSize - 8;
    if (std::memcmp(encoded + 8, data + 8, n) != 0 || encoded[4] != data[4])
        fuzz_fail("corr_kxo", "re-encoding differs from the input", status);
    return 0;
}
