// The kxo parser on arbitrary bytes, and for every file it accepts a
// write -> read round trip: re-encoding the loaded table must give back
// the same planes bit for bit, and the same tag and value.
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "corr/loaders.hpp"
#include "corr/writers.hpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static CorrTable table;
    static uint8_t encoded[vexo::kKxoFileSize];
    vexo_corr_set_neutral(&table);
    CorrHead head{};
    const uint32_t status = vexo::parse_kxo(vexo::ByteSpan{data, size}, table, head);
    if (status == VEXO_ERROR_READ_FILE)
        return 0;
    if (status != VEXO_OK)
        std::abort();
    vexo::encode_kxo(table, head, encoded);
    if (std::memcmp(encoded + vexo::kKxoHeaderSize, data + vexo::kKxoHeaderSize,
                    vexo::kKxoFileSize - vexo::kKxoHeaderSize) != 0)
        std::abort();
    if (encoded[4] != data[4] || std::memcmp(encoded + 8, data + 8, 4) != 0)
        std::abort();
    return 0;
}
