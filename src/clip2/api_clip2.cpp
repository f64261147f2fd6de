// SPDX-License-Identifier: MIT
// C boundary of the clip2 family.  Range and argument checks come before
// the result is touched; allocation failure becomes VEXO_ERROR_NO_MEMORY.
#include "clip/handle_calls.hpp"
#include "clip2/clip2_handle.hpp"

extern "C" {

VEXO_API Clip2Handle *vexo_clip2_create(const GeomPoint *points, uint32_t count, uint32_t mode) {
    return vexo::create_handle<Clip2Handle>(points, count, mode, [](const vexo::PathSet &s) {
        return vexo::largest_coordinate(s.xy) <= vexo::kClip2GridLimit;
    });
}

VEXO_API void vexo_clip2_release(Clip2Handle *clip) {
    delete clip;
}

VEXO_API uint32_t vexo_clip2_bool(Clip2Handle *clip, const GeomPoint *points, uint32_t count,
                                  uint32_t mode) {
    if (!clip || !points || count == 0) return VEXO_ERROR_INVALID_PARAMETER;
    return vexo::guard_status([&] { return vexo::clip2_boolean(clip, points, count, mode); });
}

VEXO_API uint32_t vexo_clip2_outline(Clip2Handle *clip, uint32_t mode, double distance) {
    if (!clip) return VEXO_ERROR_INVALID_PARAMETER;
    return vexo::guard_status([&] { return vexo::clip2_outline(clip, mode, distance); });
}

VEXO_API GeomPoint *vexo_clip2_get_result(const Clip2Handle *clip, uint32_t *count) {
    return vexo::handle_paths(clip, true, count);
}

VEXO_API GeomPoint *vexo_clip2_get_subject(const Clip2Handle *clip, uint32_t *count) {
    return vexo::handle_paths(clip, false, count);
}

VEXO_API uint32_t vexo_clip2_set_solution(Clip2Handle *clip) {
    return vexo::set_solution(clip);
}

VEXO_API uint32_t vexo_clip2_copy_subject(Clip2Handle *clip) {
    return vexo::copy_subject(clip);
}

VEXO_API Clip2Handle *vexo_clip2_copy_solution(const Clip2Handle *clip) {
    return vexo::copy_solution(clip);
}

} // extern "C"
