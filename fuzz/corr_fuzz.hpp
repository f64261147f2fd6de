// SPDX-License-Identifier: MIT
// Shared body of the correction parser targets: whatever the bytes, the
// parser returns one of the allowed statuses and touches nothing outside the
// input and the table.
#pragma once
#include <initializer_list>

#include "corr/loaders.hpp"
#include "fuzz_check.hpp"

inline int fuzz_parser(uint32_t (*parse)(vexo::ByteSpan, CorrTable &), const uint8_t *data,
                       size_t size, std::initializer_list<uint32_t> allowed) {
    static CorrTable table;
    vexo_corr_set_neutral(&table);
    const uint32_t status = parse(vexo::ByteSpan{data, size}, table);
    for (uint32_t ok : allowed)
        if (status == ok) return 0;
    fuzz_fail("correction parser", "status not allowed", status);
}
