// SPDX-License-Identifier: MIT
// The engine's own sets merge paths by orientation (inside where the count
// is positive).  Even-odd needs the parity of the winding count instead, so
// the combination runs the engine's scan line with a key of our own whose
// membership test reads the count's lowest bit: one pass for both operands,
// true even-odd also for self-crossing paths.
#include "clip2/grid_set.hpp"

#include <algorithm>

namespace vexo {
namespace {

// Which operands cover one side of an edge: subject (property 0), operand
// (property 1).
struct OddCover {
    bool subject = false, operand = false;
    void clear() { subject = operand = false; }
    bool operator!=(const OddCover &o) const {
        return subject != o.subject || operand != o.operand;
    }
};

} // namespace
} // namespace vexo

namespace boost {
namespace polygon {

// The scan line asks its key type which properties cover a side from the
// summed counts; an odd count is inside.
template <>
inline void scanline<int, int, vexo::OddCover>::set_unique_property(vexo::OddCover &cover,
                                                                    const property_map &counts) {
    cover.clear();
    for (const auto &entry : counts) {
        if ((entry.second & 1) == 0) continue;
        (entry.first == 0 ? cover.subject : cover.operand) = true;
    }
}

} // namespace polygon
} // namespace boost

namespace vexo {
namespace {

namespace bp = boost::polygon;
using Base = bp::property_merge<int, int, OddCover>;

class EvenOddMerge : public Base {
public:
    // Every edge of every path with count +1 along its direction (the
    // engine's convention flips the count of an edge stored right to left
    // and of a vertical one).
    void add(const ClipperLib::Paths &paths, int property) {
        for (const auto &path : paths)
            for (size_t i = 0; i < path.size(); ++i) {
                const ClipperLib::IntPoint &a = path[i],
                                           &b = path[i + 1 == path.size() ? 0 : i + 1];
                GridPoint p0(static_cast<int>(a.X), static_cast<int>(a.Y));
                GridPoint p1(static_cast<int>(b.X), static_cast<int>(b.Y));
                if (p0 == p1) continue;
                int count = p0.x() == p1.x() ? -1 : 1;
                if (p1 < p0) {
                    std::swap(p0, p1);
                    count = -count;
                }
                pmd.push_back(vertex_property(half_edge(p0, p1), std::make_pair(property, count)));
            }
    }

    void run(SetOperation operation, GridSet *out) {
        if (pmd.empty()) return;
        property_merge_data split;
        bp::line_intersection<int>::validate_scan(split, pmd.begin(), pmd.end());
        pmd.swap(split);
        sort_property_merge_data();
        bp::scanline<int, int, OddCover> line;
        line.scan(*out, Boundary{operation}, pmd.begin(), pmd.end());
    }

private:
    // Writes an edge where the result's inside changes, with the count sign
    // the engine's own boolean output uses (inside to the left of the stored
    // edge: +1).
    struct Boundary {
        SetOperation operation;

        bool inside(const OddCover &c) const {
            return operation == SetOperation::kUnion ? (c.subject || c.operand)
                                                     : (c.subject && !c.operand);
        }
        void operator()(GridSet &out, const half_edge &edge, const OddCover &left,
                        const OddCover &right) const {
            const bool in_left = inside(left), in_right = inside(right);
            if (in_left == in_right) return;
            std::pair<half_edge, int> element(edge, 1);
            if (edge.second < edge.first) element.second = -element.second;
            if (bp::scanline_base<int>::is_vertical(edge)) element.second = -element.second;
            if (in_right) element.second = -element.second;
            out.insert_clean(element);
        }
    };
};

double twice_area(const ClipperLib::Path &path) {
    double sum = 0.0;
    for (size_t i = 0, j = path.size() - 1; i < path.size(); j = i++)
        sum += (static_cast<double>(path[j].X) + static_cast<double>(path[i].X)) *
               (static_cast<double>(path[i].Y) - static_cast<double>(path[j].Y));
    return sum;
}

// Appends a ring of the engine's output without its repeated first point,
// turned round when its orientation is not the one asked for.
template <class Points> void append_ring(const Points &ring, bool ccw, ClipperLib::Paths *out) {
    ClipperLib::Path path;
    path.reserve(ring.size());
    for (const auto &p : ring) path.emplace_back(p.x(), p.y());
    if (path.size() > 1 && path.front() == path.back()) path.pop_back();
    if (path.size() < 3) return;
    if ((twice_area(path) > 0.0) != ccw) std::reverse(path.begin(), path.end());
    out->push_back(std::move(path));
}

template <class Set> void set_paths(const Set &region, bool keyhole, ClipperLib::Paths *out) {
    out->clear();
    if (keyhole) {
        std::vector<bp::polygon_data<int>> contours;
        region.get(contours);
        for (const auto &c : contours) append_ring(c, true, out);
        return;
    }
    std::vector<bp::polygon_with_holes_data<int>> regions;
    region.get(regions);
    for (const auto &r : regions) {
        append_ring(r, true, out);
        for (auto hole = r.begin_holes(); hole != r.end_holes(); ++hole)
            append_ring(*hole, false, out);
    }
}

bool axis_parallel(const ClipperLib::Paths &paths) {
    for (const auto &path : paths)
        for (size_t i = 0; i < path.size(); ++i) {
            const ClipperLib::IntPoint &a = path[i], &b = path[i + 1 == path.size() ? 0 : i + 1];
            if (a.X != b.X && a.Y != b.Y) return false;
        }
    return true;
}

// The rectilinear scan sums the counts of its vertical edges; parity makes
// the direction of each edge irrelevant, so every one goes in as +1 from
// its first vertex.  Horizontal edges carry nothing the scan reads.
using Manhattan = bp::polygon_90_set_data<int>;

void add_vertical_edges(const ClipperLib::Paths &paths, Manhattan *set) {
    for (const auto &path : paths)
        for (size_t i = 0; i < path.size(); ++i) {
            const ClipperLib::IntPoint &a = path[i], &b = path[i + 1 == path.size() ? 0 : i + 1];
            if (a.X != b.X || a.Y == b.Y) continue;
            const GridPoint p0(static_cast<int>(a.X), static_cast<int>(a.Y));
            const GridPoint p1(static_cast<int>(b.X), static_cast<int>(b.Y));
            set->insert(std::make_pair(std::make_pair(p0, p1), 1));
        }
}

struct OddUnion {
    bool operator()(int subject, int operand) const { return ((subject | operand) & 1) != 0; }
};
struct OddDifference {
    bool operator()(int subject, int operand) const { return (subject & 1) && !(operand & 1); }
};

template <class Inside>
void manhattan_paths(const Manhattan &subject, const Manhattan &operand, bool keyhole,
                     ClipperLib::Paths *out) {
    std::vector<std::pair<int, std::pair<int, int>>> edges;
    bp::boolean_op::applyBooleanBinaryOp(edges, subject.begin(), subject.end(), operand.begin(),
                                         operand.end(), bp::boolean_op::BinaryCount<Inside>());
    set_paths(Manhattan(bp::HORIZONTAL, edges.begin(), edges.end()), keyhole, out);
}

} // namespace

void even_odd_paths(const ClipperLib::Paths &subject, const ClipperLib::Paths &operand,
                    SetOperation operation, bool keyhole, ClipperLib::Paths *out) {
    if (!axis_parallel(subject) || !axis_parallel(operand)) {
        GridSet region;
        even_odd_combine(subject, operand, operation, &region);
        set_paths(region, keyhole, out);
        return;
    }
    Manhattan a, b;
    add_vertical_edges(subject, &a);
    add_vertical_edges(operand, &b);
    a.sort();
    b.sort();
    if (operation == SetOperation::kUnion)
        manhattan_paths<OddUnion>(a, b, keyhole, out);
    else
        manhattan_paths<OddDifference>(a, b, keyhole, out);
}

void even_odd_combine(const ClipperLib::Paths &subject, const ClipperLib::Paths &operand,
                      SetOperation operation, GridSet *out) {
    out->clear();
    EvenOddMerge merge;
    merge.add(subject, 0);
    merge.add(operand, 1);
    merge.run(operation, out);
}

void region_paths(const GridSet &region, bool keyhole, ClipperLib::Paths *out) {
    set_paths(region, keyhole, out);
}

} // namespace vexo
