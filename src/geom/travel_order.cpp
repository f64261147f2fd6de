// SPDX-License-Identifier: MIT
// Travel order of polylines.  Up to kExactPieces pieces the shortest total
// jump is found by dynamic programming over subsets (every order, every way
// in); beyond that each step takes the nearest free way in, found in a 2D
// tree from which taken pieces are removed.  The nearest-first order is the
// plain greedy tour itself, so the result is never longer than it.
#include <cmath>

#include "geom/marking.hpp"
#include "geom/nearest_ends.hpp"
#include "geom/polylines.hpp"

namespace vexo {
namespace {

constexpr size_t kExactPieces = 7;
constexpr size_t kExactEntries = 64;

// One way into a piece: at point `vertex`, walking forward or backward, or
// (closed pieces) round from `vertex` back to it.
struct Entry {
    uint32_t piece;
    uint32_t vertex;
    bool reversed;
    bool rotated;
};

bool is_closed(const GeomPoint *points, const Span &s) {
    const GeomPoint &a = points[s.begin], &b = points[s.end - 1];
    return s.size() >= 3 && a.x == b.x && a.y == b.y;
}

std::vector<Entry> entries_of(const GeomPoint *points, const std::vector<Span> &pieces,
                              uint32_t options) {
    std::vector<Entry> entries;
    for (uint32_t p = 0; p < pieces.size(); ++p) {
        const Span &s = pieces[p];
        entries.push_back({p, s.begin, false, false});
        if (s.size() < 2) continue;
        if (is_closed(points, s)) {
            if (options & VEXO_ORDER_ROTATE_CLOSED)
                for (uint32_t v = s.begin + 1; v + 1 < s.end; ++v)
                    entries.push_back({p, v, false, true});
        } else if (!(options & VEXO_ORDER_KEEP_DIRECTION)) {
            entries.push_back({p, s.end - 1, true, false});
        }
    }
    return entries;
}

const GeomPoint &exit_of(const GeomPoint *points, const std::vector<Span> &pieces, const Entry &e) {
    const Span &s = pieces[e.piece];
    if (e.rotated) return points[e.vertex];
    return e.reversed ? points[s.begin] : points[s.end - 1];
}

double jump(double x0, double y0, const GeomPoint &to) {
    const double dx = to.x - x0, dy = to.y - y0;
    return std::sqrt(dx * dx + dy * dy);
}

std::vector<uint32_t> nearest_first(const GeomPoint *points, const std::vector<Span> &pieces,
                                    const std::vector<Entry> &entries, double x, double y) {
    std::vector<double> ex(entries.size()), ey(entries.size());
    std::vector<std::vector<uint32_t>> of_piece(pieces.size());
    for (uint32_t i = 0; i < entries.size(); ++i) {
        ex[i] = points[entries[i].vertex].x;
        ey[i] = points[entries[i].vertex].y;
        of_piece[entries[i].piece].push_back(i);
    }
    NearestEnds tree(ex, ey);
    std::vector<uint32_t> chosen;
    chosen.reserve(pieces.size());
    for (size_t step = 0; step < pieces.size(); ++step) {
        const uint32_t e = tree.nearest(x, y);
        chosen.push_back(e);
        for (uint32_t other : of_piece[entries[e].piece]) tree.remove(other);
        const GeomPoint &out = exit_of(points, pieces, entries[e]);
        x = out.x;
        y = out.y;
    }
    return chosen;
}

// Shortest total jump over every order and way in (pieces <= kExactPieces).
std::vector<uint32_t> shortest(const GeomPoint *points, const std::vector<Span> &pieces,
                               const std::vector<Entry> &entries, double x, double y) {
    const size_t n = entries.size(), full = (size_t{1} << pieces.size()) - 1;
    const double none = INFINITY;
    std::vector<double> cost((full + 1) * n, none);
    std::vector<uint32_t> from((full + 1) * n, UINT32_MAX);
    for (uint32_t e = 0; e < n; ++e)
        cost[(size_t{1} << entries[e].piece) * n + e] = jump(x, y, points[entries[e].vertex]);
    for (size_t mask = 1; mask <= full; ++mask)
        for (uint32_t e = 0; e < n; ++e) {
            const double c = cost[mask * n + e];
            if (c == none) continue;
            const GeomPoint &out = exit_of(points, pieces, entries[e]);
            for (uint32_t f = 0; f < n; ++f) {
                const size_t bit = size_t{1} << entries[f].piece;
                if (mask & bit) continue;
                const double next = c + jump(out.x, out.y, points[entries[f].vertex]);
                double &slot = cost[(mask | bit) * n + f];
                if (next < slot) {
                    slot = next;
                    from[(mask | bit) * n + f] = e;
                }
            }
        }
    uint32_t last = 0;
    for (uint32_t e = 1; e < n; ++e)
        if (cost[full * n + e] < cost[full * n + last]) last = e;
    std::vector<uint32_t> chosen(pieces.size());
    size_t mask = full;
    for (size_t k = pieces.size(); k-- > 0;) {
        chosen[k] = last;
        const uint32_t prev = from[mask * n + last];
        mask &= ~(size_t{1} << entries[last].piece);
        last = prev;
    }
    return chosen;
}

void write_entry(const GeomPoint *points, const Span &s, const Entry &e,
                 std::vector<GeomPoint> *out) {
    const uint32_t mark = points[s.end - 1].flags & VEXO_POINT_END_MARK;
    if (e.rotated) {
        for (uint32_t i = e.vertex; i + 1 < s.end; ++i) out->push_back(inner_point(points[i]));
        for (uint32_t i = s.begin; i <= e.vertex; ++i) out->push_back(inner_point(points[i]));
    } else if (e.reversed) {
        for (uint32_t i = s.end; i-- > s.begin;) out->push_back(inner_point(points[i]));
    } else {
        for (uint32_t i = s.begin; i < s.end; ++i) out->push_back(inner_point(points[i]));
    }
    out->back().flags |= VEXO_POINT_END | mark;
}

} // namespace

uint32_t order_lines(const GeomPoint *points, uint32_t count, uint32_t options, double start_x,
                     double start_y, std::vector<GeomPoint> *out) {
    const std::vector<Span> pieces = split_polylines(points, count);
    const std::vector<Entry> entries = entries_of(points, pieces, options);
    const bool exact = pieces.size() <= kExactPieces && entries.size() <= kExactEntries;
    const std::vector<uint32_t> chosen =
        exact ? shortest(points, pieces, entries, start_x, start_y)
              : nearest_first(points, pieces, entries, start_x, start_y);
    out->reserve(out->size() + count);
    for (uint32_t e : chosen) write_entry(points, pieces[entries[e].piece], entries[e], out);
    return VEXO_OK;
}

} // namespace vexo
