// SPDX-License-Identifier: MIT
// Whether the distance reduction's 256-bit paths run: where the processor
// has AVX2 (checked once) and tests have not switched them off to run the
// narrow paths, which give the same bits.
#pragma once

#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))
#include <immintrin.h>
#define VEXO_WIDE_REDUCE 1
#define VEXO_WIDE_REDUCE_TARGET __attribute__((target("avx2")))
#endif

namespace vexo {

bool wide_reduce_available() noexcept;
void allow_wide_reduce(bool allowed) noexcept;

} // namespace vexo
