// SPDX-License-Identifier: MIT
// C boundary of the clip family.  Clipper reports a coordinate beyond its
// range by throwing clipperException: that becomes
// VEXO_ERROR_INVALID_PARAMETER, allocation failure VEXO_ERROR_NO_MEMORY.
#include <memory>

#include "clip/clip_handle.hpp"
#include "core/boundary.hpp"

extern "C" {

VEXO_API ClipHandle *vexo_clip_create(const GeomPoint *points, uint32_t count, uint32_t mode) {
    if (!points || count == 0) return nullptr;
    return vexo::guard_value<ClipHandle *>(
        [&]() -> ClipHandle * {
            auto clip = std::make_unique<ClipHandle>();
            if (!vexo::cut_into_paths(points, count, (mode & VEXO_CLIP_2D) != 0, &clip->subject))
                return nullptr;
            return clip.release();
        },
        nullptr);
}

VEXO_API void vexo_clip_release(ClipHandle *clip) {
    delete clip;
}

VEXO_API uint32_t vexo_clip_bool(ClipHandle *clip, const GeomPoint *points, uint32_t count,
                                 uint32_t mode) {
    if (!clip || !points || count == 0) return VEXO_ERROR_INVALID_PARAMETER;
    return vexo::guard_status([&] { return vexo::clip_boolean(clip, points, count, mode); });
}

VEXO_API uint32_t vexo_clip_outline(ClipHandle *clip, uint32_t mode, double distance) {
    if (!clip) return VEXO_ERROR_INVALID_PARAMETER;
    return vexo::guard_status([&] { return vexo::clip_outline(clip, mode, distance); });
}

VEXO_API GeomPoint *vexo_clip_get_result(const ClipHandle *clip, uint32_t *count) {
    if (!count) return nullptr;
    *count = 0;
    if (!clip) return nullptr;
    return vexo::to_point_array(clip->result, clip->subject, count);
}

VEXO_API GeomPoint *vexo_clip_get_subject(const ClipHandle *clip, uint32_t *count) {
    if (!count) return nullptr;
    *count = 0;
    if (!clip) return nullptr;
    return vexo::to_point_array(clip->subject, clip->subject, count);
}

VEXO_API uint32_t vexo_clip_set_solution(ClipHandle *clip) {
    if (!clip || clip->result.empty()) return VEXO_ERROR_INVALID_PARAMETER;
    clip->subject = std::move(clip->result);
    clip->result.clear();
    return VEXO_OK;
}

VEXO_API uint32_t vexo_clip_copy_subject(ClipHandle *clip) {
    if (!clip) return VEXO_ERROR_INVALID_PARAMETER;
    return vexo::guard_status([&] {
        vexo::PathSet copy = clip->subject;
        clip->result = std::move(copy);
        return VEXO_OK;
    });
}

VEXO_API ClipHandle *vexo_clip_copy_solution(const ClipHandle *clip) {
    if (!clip || clip->result.empty()) return nullptr;
    return vexo::guard_value<ClipHandle *>(
        [&] {
            auto copy = std::make_unique<ClipHandle>();
            copy->subject = clip->result;
            return copy.release();
        },
        nullptr);
}

} // extern "C"
