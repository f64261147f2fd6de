// ".ucf" and ".ctb" parsers on arbitrary bytes; the first byte picks one.
#include <cstdint>
#include <cstdlib>

#include "corr/loaders.hpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size == 0)
        return 0;
    static CorrTable table;
    vexo_corr_set_neutral(&table);
    const vexo::ByteSpan file{data + 1, size - 1};
    const uint32_t status =
        data[0] & 1 ? vexo::parse_ctb(file, table) : vexo::parse_ucf(file, table);
    if (status != VEXO_OK && status != VEXO_ERROR_READ_FILE)
        std::abort();
    return 0;
}
