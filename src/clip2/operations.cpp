// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cmath>

#include "clip/joins.hpp"
#include "clip2/clip2_handle.hpp"
#include "clip2/grid_set.hpp"
#include "clip2/outline_figures.hpp"

namespace vexo {

namespace {

// An outline narrower than this (grid units) rounds every figure onto the
// region's own edges: the region is returned as it is, heights included.
constexpr double kNarrowestOutline = 0.5;

// How far past the largest coordinate an outline can reach, in widths: a
// miter up to the limit 2, a square cut up to sqrt(2), an arc 1; one more
// grid unit for rounding.
constexpr double kFurthestReach = kMiterLimit;

} // namespace

ClipperLib::cInt largest_coordinate(const ClipperLib::Paths &paths) {
    ClipperLib::cInt largest = 0;
    for (const auto &path : paths)
        for (const auto &v : path)
            largest = std::max({largest, v.X < 0 ? -v.X : v.X, v.Y < 0 ? -v.Y : v.Y});
    return largest;
}

uint32_t clip2_boolean(Clip2Handle *clip, const GeomPoint *points, uint32_t count, uint32_t mode) {
    PathSet operand;
    if (!cut_into_paths(points, count, (mode & VEXO_CLIP_2D) != 0, &operand) ||
        largest_coordinate(operand.xy) > kClip2GridLimit)
        return VEXO_ERROR_INVALID_PARAMETER;
    clip->result.clear();
    SetOperation operation;
    if (mode & VEXO_CLIP_UNION)
        operation = SetOperation::kUnion;
    else if (mode & VEXO_CLIP_DIFFERENCE)
        operation = SetOperation::kDifference;
    else
        return VEXO_OK;

    PathSet solution;
    even_odd_paths(clip->subject.xy, operand.xy, operation, (mode & VEXO_CLIP2_KEYHOLE) != 0,
                   &solution.xy);
    carry_heights(clip->subject, &operand, &solution);
    clip->result = std::move(solution);
    return VEXO_OK;
}

uint32_t clip2_outline(Clip2Handle *clip, uint32_t mode, double distance) {
    ClipperLib::JoinType join;
    if (!choose_join(mode, &join)) return VEXO_ERROR_INVALID_PARAMETER;
    const double delta = distance * kClipScale;
    const double reach = static_cast<double>(largest_coordinate(clip->subject.xy)) +
                         kFurthestReach * std::fabs(delta) + 1.0;
    if (!(reach <= static_cast<double>(kClip2GridLimit))) return VEXO_ERROR_INVALID_PARAMETER;
    clip->result.clear();

    GridSet region;
    even_odd_combine(clip->subject.xy, {}, SetOperation::kUnion, &region);
    const bool keyhole = (mode & VEXO_CLIP2_KEYHOLE) != 0;
    PathSet solution;
    if (std::fabs(delta) < kNarrowestOutline) {
        region_paths(region, keyhole, &solution.xy);
        carry_heights(clip->subject, nullptr, &solution);
    } else {
        ClipperLib::Paths rings;
        region_paths(region, false, &rings);
        GridSet outline;
        offset_region(rings, region, join, delta, &outline);
        region_paths(outline, keyhole, &solution.xy);
        flat_heights(&solution);
    }
    clip->result = std::move(solution);
    return VEXO_OK;
}

} // namespace vexo
