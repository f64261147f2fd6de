// SPDX-License-Identifier: MIT
// Union, difference and outline through vexo_clip2_* on arbitrary paths:
// every call returns an allowed status and every returned array is a list
// of closed paths, each ending with a copy of its first point flagged
// VEXO_POINT_END.
#include <cstdint>
#include <cstring>
#include <vector>

#include "fuzz_check.hpp"
#include "fuzz_points.hpp"
#include "vexo.h"

namespace {

constexpr const char *kTarget = "clip2_ops";

// Five bytes a point (fuzz_points.hpp); bit 7 of the flags byte moves the
// point a million times further out (past the grid limit), bits 0..3 are z.
std::vector<GeomPoint> read_points(const uint8_t *data, size_t size) {
    return fuzz_read_points(data, size, false, [](GeomPoint &p, uint8_t flags) {
        if (flags & 0x80) p.x *= 1.0e6;
        p.z = flags & 0x0F;
    });
}

// Result paths have at least three vertices; the subject keeps the caller's
// paths, however short.
void check_closed(GeomPoint *out, uint32_t n, uint32_t fewest) {
    for (uint32_t i = 0, start = 0; i < n; ++i) {
        if (!out[i].flags) continue;
        if (out[i].flags != VEXO_POINT_END)
            fuzz_fail(kTarget, "path end with flags other than VEXO_POINT_END", out[i].flags);
        if (i < start + fewest)
            fuzz_fail(kTarget, "path shorter than allowed, vertices", i - start + 1);
        if (out[i].x != out[start].x || out[i].y != out[start].y)
            fuzz_fail(kTarget, "path does not end on its first point, at index", i);
        start = i + 1;
    }
    if (n && out[n - 1].flags != VEXO_POINT_END)
        fuzz_fail(kTarget, "last point not flagged VEXO_POINT_END, flags", out[n - 1].flags);
    vexo_geom_release(out);
}

void check_result(const Clip2Handle *clip) {
    uint32_t n = 0;
    check_closed(vexo_clip2_get_result(clip, &n), n, 3);
}

void expect(uint32_t status, bool refusable) {
    if (status == VEXO_OK || status == VEXO_ERROR_NO_MEMORY) return;
    if (status == VEXO_ERROR_INVALID_PARAMETER && refusable) return;
    fuzz_fail(kTarget, "status outside the allowed ones", status);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size < 3) return 0;
    const uint8_t mode = data[0];
    const double distance = static_cast<int8_t>(data[1]) / 16.0;
    const size_t split = 2 + (size - 2) / 2;
    const std::vector<GeomPoint> subject = read_points(data + 2, split - 2);
    const std::vector<GeomPoint> operand = read_points(data + split, size - split);
    if (subject.empty() || operand.empty()) return 0;

    Clip2Handle *clip = vexo_clip2_create(subject.data(), uint32_t(subject.size()), mode & 0x10);
    if (!clip) return 0; // a point past the limit
    const uint32_t keyhole = mode & VEXO_CLIP2_KEYHOLE;
    expect(
        vexo_clip2_bool(clip, operand.data(), uint32_t(operand.size()), VEXO_CLIP_UNION | keyhole),
        true);
    check_result(clip);
    if (vexo_clip2_set_solution(clip) == VEXO_OK) {
        expect(vexo_clip2_bool(clip, subject.data(), uint32_t(subject.size()),
                               VEXO_CLIP_DIFFERENCE | keyhole),
               false);
        check_result(clip);
    }
    const uint32_t join = mode & 0x07;
    expect(vexo_clip2_outline(clip, join | keyhole, distance), join == 0);
    check_result(clip);
    uint32_t n = 0;
    check_closed(vexo_clip2_get_subject(clip, &n), n, 1);
    vexo_clip2_release(clip);
    return 0;
}
