// SPDX-License-Identifier: MIT
#include "corr/wide_cells.hpp"

#include <atomic>

namespace vexo {
namespace {

std::atomic<bool> g_wide_allowed{true};

bool processor_has_wide_cells() {
#ifdef VEXO_WIDE_CELLS
    return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("avx512f") &&
           __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512bw");
#else
    return false;
#endif
}

} // namespace

bool wide_cells_available() {
    static const bool present = processor_has_wide_cells();
    return present && g_wide_allowed.load(std::memory_order_relaxed);
}

void allow_wide_cells(bool allowed) {
    g_wide_allowed.store(allowed, std::memory_order_relaxed);
}

} // namespace vexo
