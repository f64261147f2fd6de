// SPDX-License-Identifier: MIT
#include "corr/head_state.hpp"

#include <mutex>

namespace vexo {
namespace {

std::mutex head_mutex;
CorrHead last_head{}; // zero until the first kxo load

} // namespace

CorrHead current_corr_head() noexcept {
    std::lock_guard<std::mutex> lock(head_mutex);
    return last_head;
}

void publish_corr_head(const CorrHead &head) noexcept {
    std::lock_guard<std::mutex> lock(head_mutex);
    last_head = head;
}

void clear_corr_head() noexcept {
    publish_corr_head(CorrHead{});
}

} // namespace vexo
