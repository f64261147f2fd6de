// SPDX-License-Identifier: MIT
// Cutting polylines into the pieces that lie in a region.  Every segment
// a->b is split into parameter intervals [t0, t1] that lie in the region,
// each labelled with the side it belongs to; a piece runs on into the next
// segment when one interval ends at b and the next starts there on the same
// side.  Cut points take x, y and z along the segment and flags 0; points
// of the input keep their records (end bits moved to each piece's end).
#include "geom/slice.hpp"

#include <algorithm>
#include <cmath>

#include "geom/polylines.hpp"

namespace vexo {
namespace {

GeomPoint point_at(const GeomPoint &a, const GeomPoint &b, double t) {
    if (t <= 0.0) return inner_point(a);
    if (t >= 1.0) return inner_point(b);
    GeomPoint p{};
    p.x = a.x + t * (b.x - a.x);
    p.y = a.y + t * (b.y - a.y);
    p.z = a.z + t * (b.z - a.z);
    return p;
}

void end_piece(std::vector<GeomPoint> *out, size_t piece_start) {
    if (out->size() == piece_start) return;
    if (out->size() - piece_start < 2) { // a lone touching point is no piece
        out->resize(piece_start);
        return;
    }
    out->back().flags |= VEXO_POINT_END;
}

} // namespace

void cut_polylines(const GeomPoint *points, uint32_t count, const SegmentCutter &cut,
                   const PointTest &keep_dot, std::vector<GeomPoint> *out) {
    std::vector<Interval> intervals;
    for (const Span &s : split_polylines(points, count)) {
        if (s.size() == 1) {
            if (keep_dot(points[s.begin])) {
                out->push_back(inner_point(points[s.begin]));
                out->back().flags |= VEXO_POINT_END;
            }
            continue;
        }
        size_t piece_start = out->size();
        bool open = false;
        int open_side = -1;
        for (uint32_t i = s.begin; i + 1 < s.end; ++i) {
            const GeomPoint &a = points[i], &b = points[i + 1];
            intervals.clear();
            cut(a, b, &intervals);
            for (const Interval &iv : intervals) {
                const bool continues = open && iv.t0 <= 0.0 && iv.side == open_side;
                if (!continues) {
                    end_piece(out, piece_start);
                    piece_start = out->size();
                    out->push_back(point_at(a, b, iv.t0));
                }
                out->push_back(point_at(a, b, iv.t1));
                open = iv.t1 >= 1.0;
                open_side = iv.side;
            }
            if (intervals.empty() || intervals.back().t1 < 1.0) open = false;
            if (!open) {
                end_piece(out, piece_start);
                piece_start = out->size();
            }
        }
        end_piece(out, piece_start);
    }
}

} // namespace vexo
