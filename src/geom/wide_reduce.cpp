// SPDX-License-Identifier: MIT
#include "geom/wide_reduce.hpp"

#include <atomic>

namespace vexo {
namespace {

std::atomic<bool> g_wide_allowed{true};

bool processor_has_avx2() {
#ifdef VEXO_WIDE_REDUCE
    return __builtin_cpu_supports("avx2");
#else
    return false;
#endif
}

} // namespace

bool wide_reduce_available() noexcept {
    static const bool present = processor_has_avx2();
    return present && g_wide_allowed.load(std::memory_order_relaxed);
}

void allow_wide_reduce(bool allowed) noexcept {
    g_wide_allowed.store(allowed, std::memory_order_relaxed);
}

} // namespace vexo
