// SPDX-License-Identifier: MIT
#include <cmath>

#include "clip/clip_handle.hpp"
#include "clip/joins.hpp"

namespace vexo {

bool choose_join(uint32_t mode, ClipperLib::JoinType *join) {
    if (mode & VEXO_CLIP_JOIN_MITER)
        *join = ClipperLib::jtMiter;
    else if (mode & VEXO_CLIP_JOIN_ROUND)
        *join = ClipperLib::jtRound;
    else if (mode & VEXO_CLIP_JOIN_SQUARE)
        *join = ClipperLib::jtSquare;
    else
        return false;
    return true;
}

namespace {

// The offset engine does no range test of its own before computing new
// points in doubles and rounding them back to 64 bits, so a vertex beyond
// Clipper's range would overflow there; its clean-up pass then range-tests
// whatever was produced.
bool subject_in_range(const PathSet &subject) {
    for (const auto &path : subject.xy)
        for (const auto &v : path)
            if (v.X > ClipperLib::hiRange || v.X < -ClipperLib::hiRange ||
                v.Y > ClipperLib::hiRange || v.Y < -ClipperLib::hiRange)
                return false;
    return true;
}

} // namespace

uint32_t clip_boolean(ClipHandle *clip, const GeomPoint *points, uint32_t count, uint32_t mode) {
    PathSet operand;
    if (!cut_into_paths(points, count, (mode & VEXO_CLIP_2D) != 0, &operand))
        return VEXO_ERROR_INVALID_PARAMETER;
    ClipperLib::Clipper engine;
    // A coordinate beyond Clipper's range throws clipperException here.
    engine.AddPaths(clip->subject.xy, ClipperLib::ptSubject, true);
    engine.AddPaths(operand.xy, ClipperLib::ptClip, true);
    clip->result.clear();

    ClipperLib::ClipType type;
    if (mode & VEXO_CLIP_UNION)
        type = ClipperLib::ctUnion;
    else if (mode & VEXO_CLIP_DIFFERENCE)
        type = ClipperLib::ctDifference;
    else
        return VEXO_OK;

    PathSet solution;
    // Clipper swallows its own failures (allocation included) and answers
    // false; nothing else makes a closed-path execution fail.
    if (!engine.Execute(type, solution.xy, ClipperLib::pftEvenOdd, ClipperLib::pftEvenOdd))
        return VEXO_ERROR_NO_MEMORY;
    carry_heights(clip->subject, &operand, &solution);
    clip->result = std::move(solution);
    return VEXO_OK;
}

uint32_t clip_outline(ClipHandle *clip, uint32_t mode, double distance) {
    ClipperLib::JoinType join;
    if (!choose_join(mode, &join)) return VEXO_ERROR_INVALID_PARAMETER;
    if (!(std::fabs(distance) <= kMaxOutlineDistance) || !subject_in_range(clip->subject))
        return VEXO_ERROR_INVALID_PARAMETER;

    ClipperLib::ClipperOffset offset(kMiterLimit, kArcTolerance);
    offset.AddPaths(clip->subject.xy, join, ClipperLib::etClosedPolygon);
    clip->result.clear();
    const double delta = distance * kClipScale;
    PathSet solution;
    offset.Execute(solution.xy, delta);
    // A zero offset hands the source contours back through the clean-up
    // pass, so their vertices keep their heights; every other offset builds
    // new points at height 0.
    if (delta > -kOffsetZero && delta < kOffsetZero)
        carry_heights(clip->subject, nullptr, &solution);
    else
        flat_heights(&solution);
    clip->result = std::move(solution);
    return VEXO_OK;
}

} // namespace vexo
