// Feeds arbitrary bytes to the xml correction parser: it must never read
// outside the input or the table, whatever the bytes.
#include <cstdint>
#include <cstring>

#include "corr/loaders.hpp"
#include "vexo.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static CorrTable table;
    std::memset(&table, 0, sizeof table);
    vexo_corr_set_neutral(&table);
    vexo::parse_xml(vexo::ByteSpan{data, size}, table);
    return 0;
}
