// SPDX-License-Identifier: MIT
// The handle calls both clip families share: creation, the two getters and
// the moves between subject and result.  `Handle` is any struct with the
// PathSet members `subject` and `result`.
#pragma once

#include <memory>

#include "clip/path_set.hpp"
#include "core/boundary.hpp"

namespace vexo {

// New handle whose subject holds `points`; NULL when `accept` refuses the
// converted paths, when a coordinate is off the grid or memory runs out.
template <class Handle, class Accept>
Handle *create_handle(const GeomPoint *points, uint32_t count, uint32_t mode, Accept accept) {
    if (!points || count == 0) return nullptr;
    return guard_value<Handle *>(
        [&]() -> Handle * {
            auto clip = std::make_unique<Handle>();
            if (!cut_into_paths(points, count, (mode & VEXO_CLIP_2D) != 0, &clip->subject) ||
                !accept(clip->subject))
                return nullptr;
            return clip.release();
        },
        nullptr);
}

template <class Handle> GeomPoint *handle_paths(const Handle *clip, bool result, uint32_t *count) {
    if (!count) return nullptr;
    *count = 0;
    if (!clip) return nullptr;
    return to_point_array(result ? clip->result : clip->subject, clip->subject, count);
}

template <class Handle> uint32_t set_solution(Handle *clip) {
    if (!clip || clip->result.empty()) return VEXO_ERROR_INVALID_PARAMETER;
    clip->subject = std::move(clip->result);
    clip->result.clear();
    return VEXO_OK;
}

template <class Handle> uint32_t copy_subject(Handle *clip) {
    if (!clip) return VEXO_ERROR_INVALID_PARAMETER;
    return guard_status([&] {
        PathSet copy = clip->subject;
        clip->result = std::move(copy);
        return VEXO_OK;
    });
}

template <class Handle> Handle *copy_solution(const Handle *clip) {
    if (!clip || clip->result.empty()) return nullptr;
    return guard_value<Handle *>(
        [&] {
            auto copy = std::make_unique<Handle>();
            copy->subject = clip->result;
            return copy.release();
        },
        nullptr);
}

} // namespace vexo
