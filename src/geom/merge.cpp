// SPDX-License-Identifier: MIT
// Joining pieces whose ends meet.  Ends are sorted by the grid cell of side
// `tolerance` they fall in (by their exact coordinates for tolerance 0), so
// each end meets only the ends of its own and the eight neighbouring cells:
// n log n for ends that are spread out, never a comparison of all pairs.
// Candidate joints are then taken shortest first, each end at most once.
#include <algorithm>
#include <cmath>
#include <tuple>

#include "geom/marking.hpp"
#include "geom/polylines.hpp"

namespace vexo {
namespace {

constexpr uint32_t kFree = UINT32_MAX;
// Candidates kept per end: enough for every end in a cluster of pieces
// meeting at one place, bounded so a crowded cell cannot fill memory.
constexpr size_t kCandidatesPerEnd = 16;

struct End {
    double cx, cy; // grid cell (or the coordinates themselves)
    double x, y;
    uint32_t id; // 2 * piece + (0 first point, 1 last point)
};

bool cell_less(const End &a, const End &b) {
    return std::tie(a.cx, a.cy, a.id) < std::tie(b.cx, b.cy, b.id);
}

struct Joint {
    double distance;
    uint32_t a, b; // end ids, a < b
};

std::vector<End> collect_ends(const GeomPoint *points, const std::vector<Span> &pieces,
                              double tolerance) {
    std::vector<End> ends;
    for (uint32_t p = 0; p < pieces.size(); ++p) {
        if (pieces[p].size() < 2) continue; // dots stay dots
        for (uint32_t side = 0; side < 2; ++side) {
            const GeomPoint &q = points[side ? pieces[p].end - 1 : pieces[p].begin];
            const double cx = tolerance > 0.0 ? std::floor(q.x / tolerance) : q.x;
            const double cy = tolerance > 0.0 ? std::floor(q.y / tolerance) : q.y;
            ends.push_back({cx, cy, q.x, q.y, 2 * p + side});
        }
    }
    std::sort(ends.begin(), ends.end(), cell_less);
    return ends;
}

// Joints within tolerance, at most kCandidatesPerEnd nearest per end.
std::vector<Joint> candidate_joints(const std::vector<End> &ends, double tolerance) {
    std::vector<Joint> joints;
    std::vector<Joint> mine;
    const int reach = tolerance > 0.0 ? 1 : 0;
    for (const End &e : ends) {
        mine.clear();
        for (int dx = -reach; dx <= reach; ++dx)
            for (int dy = -reach; dy <= reach; ++dy) {
                const End key{e.cx + dx, e.cy + dy, 0, 0, 0};
                auto it = std::lower_bound(ends.begin(), ends.end(), key, cell_less);
                for (; it != ends.end() && it->cx == key.cx && it->cy == key.cy; ++it) {
                    if (it->id / 2 == e.id / 2) continue; // a piece meeting itself is closed
                    const double d = std::hypot(it->x - e.x, it->y - e.y);
                    if (d <= tolerance)
                        mine.push_back({d, std::min(e.id, it->id), std::max(e.id, it->id)});
                }
            }
        auto by_distance = [](const Joint &a, const Joint &b) {
            return std::tie(a.distance, a.a, a.b) < std::tie(b.distance, b.a, b.b);
        };
        std::sort(mine.begin(), mine.end(), by_distance);
        // Cells next to each other at huge coordinates can be one cell: drop repeats.
        mine.erase(
            std::unique(mine.begin(), mine.end(),
                        [](const Joint &a, const Joint &b) { return a.a == b.a && a.b == b.b; }),
            mine.end());
        if (mine.size() > kCandidatesPerEnd) mine.resize(kCandidatesPerEnd);
        joints.insert(joints.end(), mine.begin(), mine.end());
    }
    std::sort(joints.begin(), joints.end(), [](const Joint &a, const Joint &b) {
        return std::tie(a.distance, a.a, a.b) < std::tie(b.distance, b.a, b.b);
    });
    return joints;
}

std::vector<uint32_t> match_ends(const std::vector<Joint> &joints, size_t piece_count) {
    std::vector<uint32_t> partner(2 * piece_count, kFree);
    for (const Joint &j : joints) {
        if (partner[j.a] != kFree || partner[j.b] != kFree) continue;
        partner[j.a] = j.b;
        partner[j.b] = j.a;
    }
    return partner;
}

// Writes the chain that begins at end `start`; marks its pieces visited.
void write_chain(const GeomPoint *points, const std::vector<Span> &pieces,
                 const std::vector<uint32_t> &partner, uint32_t start, std::vector<char> *visited,
                 std::vector<GeomPoint> *out) {
    uint32_t enter = start;
    bool first_piece = true;
    while (enter != kFree && !(*visited)[enter / 2]) {
        const uint32_t p = enter / 2;
        (*visited)[p] = 1;
        const Span &s = pieces[p];
        const bool reversed = enter % 2 == 1;
        // The joint is the previous piece's end: this piece's own copy goes.
        const uint32_t skip = first_piece ? 0 : 1;
        for (uint32_t k = skip; k < s.size(); ++k)
            out->push_back(inner_point(points[reversed ? s.end - 1 - k : s.begin + k]));
        first_piece = false;
        enter = partner[enter ^ 1u];
    }
    out->back().flags |= kEndBits;
}

} // namespace

uint32_t merge_lines(const GeomPoint *points, uint32_t count, double tolerance,
                     std::vector<GeomPoint> *out) {
    const std::vector<Span> pieces = split_polylines(points, count);
    const std::vector<uint32_t> partner = match_ends(
        candidate_joints(collect_ends(points, pieces, tolerance), tolerance), pieces.size());
    std::vector<char> visited(pieces.size(), 0);
    // Open chains first, each from the lowest-numbered piece at one of its
    // free ends, in piece order; what is left are loops.
    for (uint32_t p = 0; p < pieces.size(); ++p) {
        if (visited[p]) continue;
        if (pieces[p].size() < 2) {
            visited[p] = 1;
            out->push_back(inner_point(points[pieces[p].begin]));
            out->back().flags |= kEndBits;
        } else if (partner[2 * p] == kFree) {
            write_chain(points, pieces, partner, 2 * p, &visited, out);
        } else if (partner[2 * p + 1] == kFree) {
            write_chain(points, pieces, partner, 2 * p + 1, &visited, out);
        }
        if (out->size() > kMaxResultPoints) return VEXO_ERROR_NO_MEMORY;
    }
    for (uint32_t p = 0; p < pieces.size(); ++p)
        if (!visited[p]) write_chain(points, pieces, partner, 2 * p, &visited, out);
    return VEXO_OK;
}

} // namespace vexo
