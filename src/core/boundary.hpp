// SPDX-License-Identifier: MIT
// The C boundary: every exported function runs its C++ work through one of
// these guards, so no exception ever reaches a C caller.  Allocation
// failure becomes VEXO_ERROR_NO_MEMORY (or the function's NULL); anything
// else becomes the status the caller names.
#pragma once

#include <cstdint>
#include <new>

#include "vexo.h"

namespace vexo {

template <class F>
uint32_t guard_status(F &&work, uint32_t on_other_error = VEXO_ERROR_INVALID_PARAMETER) noexcept {
    try {
        return work();
    } catch (const std::bad_alloc &) {
        return VEXO_ERROR_NO_MEMORY;
    } catch (...) {
        return on_other_error;
    }
}

template <class T, class F> T guard_value(F &&work, T on_error) noexcept {
    try {
        return work();
    } catch (...) {
        return on_error;
    }
}

template <class F> void guard_void(F &&work) noexcept {
    try {
        work();
    } catch (...) {
    }
}

} // namespace vexo
