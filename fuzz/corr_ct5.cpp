// The ".ct5" parser on arbitrary bytes.
#include <cstdint>
#include <cstdlib>

#include "corr/loaders.hpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static CorrTable table;
    vexo_corr_set_neutral(&table);
    const uint32_t status = vexo::parse_ct5(vexo::ByteSpan{data, size}, table);
    if (status != VEXO_OK && status != VEXO_ERROR_READ_FILE)
        std::abort();
    return 0;
}
