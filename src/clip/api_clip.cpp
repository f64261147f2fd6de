// SPDX-License-Identifier: MIT
// C boundary of the clip family.  Clipper reports a coordinate beyond its
// range by throwing clipperException: that becomes
// VEXO_ERROR_INVALID_PARAMETER, allocation failure VEXO_ERROR_NO_MEMORY.
#include "clip/clip_handle.hpp"
#include "clip/handle_calls.hpp"

extern "C" {

VEXO_API ClipHandle *vexo_clip_create(const GeomPoint *points, uint32_t count, uint32_t mode) {
    return vexo::create_handle<ClipHandle>(points, count, mode,
                                           [](const vexo::PathSet &) { return true; });
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
    return vexo::handle_paths(clip, true, count);
}

VEXO_API GeomPoint *vexo_clip_get_subject(const ClipHandle *clip, uint32_t *count) {
    return vexo::handle_paths(clip, false, count);
}

VEXO_API uint32_t vexo_clip_set_solution(ClipHandle *clip) {
    return vexo::set_solution(clip);
}

VEXO_API uint32_t vexo_clip_copy_subject(ClipHandle *clip) {
    return vexo::copy_subject(clip);
}

VEXO_API ClipHandle *vexo_clip_copy_solution(const ClipHandle *clip) {
    return vexo::copy_solution(clip);
}

} // extern "C"
