// SPDX-License-Identifier: MIT
#include "clip/path_set.hpp"

#include <climits>
#include <cstring>

#include "clip/height_table.hpp"
#include "core/point_buffer.hpp"

namespace vexo {

using ClipperLib::cInt;
using ClipperLib::IntPoint;

void PathSet::clear() {
    xy.clear();
    z.clear();
}

bool PathSet::has_height() const {
    for (const auto &path : z)
        for (cInt h : path)
            if (h != 0) return true;
    return false;
}

bool to_grid(double value, cInt *grid) {
    const double scaled = value * kClipScale;
    // -2^63 is representable and in range; 2^63 is the first value beyond.
    if (!(scaled >= -9223372036854775808.0 && scaled < 9223372036854775808.0)) return false;
    *grid = static_cast<cInt>(scaled);
    return true;
}

bool cut_into_paths(const GeomPoint *points, uint32_t count, bool flat, PathSet *out) {
    out->clear();
    out->xy.emplace_back();
    out->z.emplace_back();
    const uint32_t converted = count > 0 ? count - 1 : 0;
    for (uint32_t i = 0; i < converted; ++i) {
        IntPoint vertex;
        cInt height = 0;
        if (!to_grid(points[i].x, &vertex.X) || !to_grid(points[i].y, &vertex.Y)) return false;
        if (!flat && !to_grid(points[i].z, &height)) return false;
        out->xy.back().push_back(vertex);
        out->z.back().push_back(height);
        if (points[i].flags & VEXO_POINT_END) {
            out->xy.emplace_back();
            out->z.emplace_back();
        }
    }
    return true;
}

namespace {

size_t vertex_count(const PathSet &set) {
    size_t n = 0;
    for (const auto &path : set.xy) n += path.size();
    return n;
}

void add_vertices(const PathSet &set, HeightTable *table) {
    for (size_t p = 0; p < set.xy.size(); ++p) table->add_path(set.xy[p], set.z[p]);
}

} // namespace

void flat_heights(PathSet *solution) {
    solution->z.resize(solution->xy.size());
    for (size_t p = 0; p < solution->xy.size(); ++p)
        solution->z[p].assign(solution->xy[p].size(), 0);
}

void carry_heights(const PathSet &first, const PathSet *second, PathSet *solution) {
    const bool second_has = second && second->has_height();
    if (!first.has_height() && !second_has) {
        flat_heights(solution);
        return;
    }
    HeightTable table(vertex_count(first) + (second_has ? vertex_count(*second) : 0));
    add_vertices(first, &table);
    if (second_has) add_vertices(*second, &table);
    solution->z.resize(solution->xy.size());
    for (size_t p = 0; p < solution->xy.size(); ++p)
        table.find_path(solution->xy[p], &solution->z[p]);
}

namespace {

// Where the heights of a converted list come from.
struct HeightSource {
    const std::vector<cInt> *by_index = nullptr; // subject path 0
    cInt fallback = 0;                           // list's first vertex
    cInt closing = 0;                            // z of every closing record

    double at(size_t i) const {
        const cInt h = by_index && i < by_index->size() ? (*by_index)[i] : fallback;
        return static_cast<double>(h) / kClipScale;
    }
};

HeightSource height_source(const PathSet &list, const PathSet &subject) {
    HeightSource source;
    if (!list.z.empty() && !list.z[0].empty()) source.fallback = list.z[0][0];
    source.closing = source.fallback;
    if (!subject.z.empty()) {
        source.by_index = &subject.z[0];
        if (!subject.z[0].empty()) source.closing = subject.z[0][0];
    }
    return source;
}

GeomPoint grid_point(const IntPoint &v, double z, uint32_t flags) {
    GeomPoint p;
    std::memset(&p, 0, sizeof p);
    p.x = static_cast<double>(v.X) / kClipScale;
    p.y = static_cast<double>(v.Y) / kClipScale;
    p.z = z;
    p.flags = flags;
    return p;
}

bool append_path(const ClipperLib::Path &path, const HeightSource &heights, PointSink *sink) {
    for (size_t i = 0; i < path.size(); ++i)
        if (!sink->push(grid_point(path[i], heights.at(i), 0))) return false;
    const double closing_z = static_cast<double>(heights.closing) / kClipScale;
    return sink->push(grid_point(path.front(), closing_z, VEXO_POINT_END));
}

} // namespace

GeomPoint *to_point_array(const PathSet &list, const PathSet &subject, uint32_t *count) noexcept {
    *count = 0;
    const HeightSource heights = height_source(list, subject);
    PointSink sink;
    for (const auto &path : list.xy) {
        if (path.empty()) continue;
        if (!append_path(path, heights, &sink)) return nullptr;
    }
    if (sink.size() == 0) return nullptr;
    return sink.release(count);
}

} // namespace vexo
