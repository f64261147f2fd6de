// SPDX-License-Identifier: MIT
// Hatch fill of a region: per pass, the covered intervals of the scan lines
// are linked into runs (an interval follows the first free interval of the
// line before that it overlaps), each run is drawn line after line, and
// with connectors its lines become one serpentine polyline wherever the
// step from one line to the next stays inside the region.
#include "geom/hatch.hpp"

#include <algorithm>
#include <cmath>

#include "geom/inset.hpp"

namespace vexo {
namespace {

constexpr uint32_t kNone = UINT32_MAX;

// next[s]: the interval that follows s in its run; heads in creation order.
struct Runs {
    std::vector<uint32_t> next;
    std::vector<uint32_t> heads;
    std::vector<uint32_t> level_of; // scan line index of every interval
};

Runs link_runs(const ScanLines &scan) {
    Runs runs;
    const size_t n = scan.segments.size();
    runs.next.assign(n, kNone);
    runs.level_of.resize(n);
    for (size_t i = 0; i < scan.levels(); ++i) {
        const size_t begin = scan.offsets[i], end = scan.offsets[i + 1];
        size_t tail = i > 0 ? scan.offsets[i - 1] : begin;
        const size_t tails_end = begin;
        for (size_t s = begin; s < end; ++s) {
            runs.level_of[s] = static_cast<uint32_t>(i);
            const auto &cur = scan.segments[s];
            while (tail < tails_end && scan.segments[tail].second <= cur.first) ++tail;
            if (tail < tails_end && scan.segments[tail].first < cur.second) {
                runs.next[tail] = static_cast<uint32_t>(s);
                ++tail;
            } else {
                runs.heads.push_back(static_cast<uint32_t>(s));
            }
        }
    }
    return runs;
}

// Edges grouped by the gap between two neighbouring scan lines they touch
// (gap i lies between line i - 1 and line i); what a connector there can meet.
struct GapEdges {
    std::vector<size_t> offsets;
    std::vector<const Edge *> edges;
};

size_t line_index_at_or_above(const ScanLines &scan, double v) {
    size_t lo = 0, hi = scan.levels();
    while (lo < hi) {
        const size_t mid = (lo + hi) / 2;
        if (scan.level(mid) >= v)
            hi = mid;
        else
            lo = mid + 1;
    }
    return lo;
}

std::pair<size_t, size_t> gaps_of(const ScanLines &scan, const Edge &e) {
    const double lo = std::min(e.av, e.bv), hi = std::max(e.av, e.bv);
    const size_t first = std::max<size_t>(1, line_index_at_or_above(scan, lo));
    // Gaps up to the one above the first line at or above hi (a superset
    // costs a little time, never a missed edge).
    const size_t last = std::min(line_index_at_or_above(scan, hi) + 1, scan.levels() - 1);
    return {first, last + 1};
}

GapEdges group_by_gap(const ScanLines &scan, const std::vector<Edge> &edges) {
    GapEdges g;
    const size_t gaps = scan.levels();
    g.offsets.assign(gaps + 1, 0);
    if (gaps < 2) return g;
    for (const Edge &e : edges) {
        const auto r = gaps_of(scan, e);
        for (size_t i = r.first; i < r.second; ++i) ++g.offsets[i + 1];
    }
    for (size_t i = 1; i <= gaps; ++i) g.offsets[i] += g.offsets[i - 1];
    g.edges.resize(g.offsets[gaps]);
    std::vector<size_t> next(g.offsets.begin(), g.offsets.end() - 1);
    for (const Edge &e : edges) {
        const auto r = gaps_of(scan, e);
        for (size_t i = r.first; i < r.second; ++i) g.edges[next[i]++] = &e;
    }
    return g;
}

double side(double pu, double pv, double qu, double qv, double ru, double rv) {
    return (qu - pu) * (rv - pv) - (qv - pv) * (ru - pu);
}

bool opposite(double a, double b, double eps) {
    return (a > eps && b < -eps) || (a < -eps && b > eps);
}

// The connector p-q stays inside (or on the border of) the region: it
// properly crosses no edge, and its quarter points are inside or on an edge.
// Distances within eps count as touching, so ends that lie on the border
// (the hatch lines end there) are not crossings.
bool connector_inside(const Edge *const *edges, size_t n, double pu, double pv, double qu,
                      double qv, double eps) {
    const double len = std::hypot(qu - pu, qv - pv);
    for (size_t i = 0; i < n; ++i) {
        const Edge &e = *edges[i];
        const double elen = std::hypot(e.bu - e.au, e.bv - e.av);
        if (len == 0.0 || elen == 0.0) continue;
        const double d1 = side(pu, pv, qu, qv, e.au, e.av) / len;
        const double d2 = side(pu, pv, qu, qv, e.bu, e.bv) / len;
        const double d3 = side(e.au, e.av, e.bu, e.bv, pu, pv) / elen;
        const double d4 = side(e.au, e.av, e.bu, e.bv, qu, qv) / elen;
        if (opposite(d1, d2, eps) && opposite(d3, d4, eps)) return false;
    }
    for (double t : {0.25, 0.5, 0.75}) {
        const double u = pu + t * (qu - pu), v = pv + t * (qv - pv);
        if (!inside_even_odd(edges, n, u, v) && distance_to_edges(edges, n, u, v) > eps)
            return false;
    }
    return true;
}

struct PassWriter {
    const VexoHatch &params;
    const Frame &frame;
    std::vector<GeomPoint> *out;
    bool open = false; // the last point written ends a polyline still open

    void point(double u, double v) {
        GeomPoint p{};
        p.x = frame.x(u, v);
        p.y = frame.y(u, v);
        out->push_back(p);
    }
    void close() {
        if (open) out->back().flags = kEndBits;
        open = false;
    }
};

double extent_of(const std::vector<Edge> &edges) {
    double m = 0.0;
    for (const Edge &e : edges)
        m = std::max({m, std::fabs(e.au), std::fabs(e.av), std::fabs(e.bu), std::fabs(e.bv)});
    return m;
}

uint32_t hatch_pass(const GeomPoint *rings, const std::vector<Span> &spans, const Frame &frame,
                    const VexoHatch &params, std::vector<GeomPoint> *out) {
    const std::vector<Edge> edges = ring_edges(rings, spans, frame);
    ScanLines scan;
    const uint32_t status = scan_region(edges, params.spacing, &scan);
    if (status != VEXO_OK) return status;
    const Runs runs = link_runs(scan);
    const bool bidirectional = params.options & VEXO_HATCH_BIDIRECTIONAL;
    const bool connect = bidirectional && (params.options & VEXO_HATCH_CONNECT);
    GapEdges gaps;
    if (connect) gaps = group_by_gap(scan, edges);
    const double eps = 1e-9 * (1.0 + extent_of(edges));

    PassWriter writer{params, frame, out};
    for (uint32_t head : runs.heads) {
        bool have_previous = false; // the run's previous line was written
        double pu = 0.0, pv = 0.0;  // and ended here
        size_t position = 0;
        for (uint32_t s = head; s != kNone; s = runs.next[s], ++position) {
            const auto &seg = scan.segments[s];
            const double v = scan.level(runs.level_of[s]);
            const bool forward = !(bidirectional && position % 2 == 1);
            const double su =
                forward ? seg.first + params.start_trim : seg.second - params.start_trim;
            const double eu = forward ? seg.second - params.end_trim : seg.first + params.end_trim;
            const double length = (seg.second - seg.first) - params.start_trim - params.end_trim;
            if (!(length > 0.0) || length < params.min_length) {
                writer.close();
                have_previous = false;
                continue;
            }
            bool joined = false;
            if (connect && have_previous &&
                std::hypot(su - pu, v - pv) <= params.connect_distance) {
                const size_t gap = runs.level_of[s];
                const size_t b = gaps.offsets[gap], e = gaps.offsets[gap + 1];
                joined = connector_inside(gaps.edges.data() + b, e - b, pu, pv, su, v, eps);
            }
            if (!joined) writer.close();
            writer.point(su, v);
            writer.point(eu, v);
            writer.open = true;
            if (out->size() > kMaxResultPoints) return VEXO_ERROR_NO_MEMORY;
            have_previous = true;
            pu = eu;
            pv = v;
        }
        writer.close();
    }
    return VEXO_OK;
}

void append_contours(const GeomPoint *rings, const std::vector<Span> &spans,
                     std::vector<GeomPoint> *out) {
    for (const Span &r : spans) {
        if (r.size() < 3) continue;
        for (uint32_t i = r.begin; i < r.end; ++i) out->push_back(inner_point(rings[i]));
        const GeomPoint &first = rings[r.begin], &last = rings[r.end - 1];
        if (first.x != last.x || first.y != last.y || first.z != last.z)
            out->push_back(inner_point(first));
        out->back().flags |= kEndBits;
    }
}

} // namespace

bool valid_hatch(const VexoHatch &p) {
    const double values[] = {p.spacing,          p.angle,      p.inset,    p.start_trim,
                             p.end_trim,         p.min_length, p.origin_x, p.origin_y,
                             p.connect_distance, p.angle_step};
    for (double v : values)
        if (!std::isfinite(v)) return false;
    return p.spacing > 0.0 && p.inset >= 0.0 && p.min_length >= 0.0 && p.connect_distance >= 0.0 &&
           p.passes >= 1 && p.passes <= kMaxHatchPasses;
}

uint32_t cover(const GeomPoint *rings, uint32_t count, const VexoHatch &params,
               std::vector<GeomPoint> *out) {
    const std::vector<Span> spans = split_polylines(rings, count);
    std::vector<GeomPoint> shrunk;
    const GeomPoint *region = rings;
    std::vector<Span> region_spans = spans;
    if (params.inset > 0.0) {
        shrunk = inset_rings(rings, spans, params.inset);
        region = shrunk.data();
        region_spans = split_polylines(shrunk.data(), static_cast<uint32_t>(shrunk.size()));
    }
    if (params.options & VEXO_HATCH_CONTOUR_BEFORE) append_contours(rings, spans, out);
    for (uint32_t pass = 0; pass < params.passes; ++pass) {
        const double angle = params.angle + static_cast<double>(pass) * params.angle_step;
        const Frame frame = Frame::turned(angle, params.origin_x, params.origin_y);
        const uint32_t status = hatch_pass(region, region_spans, frame, params, out);
        if (status != VEXO_OK) return status;
    }
    if (params.options & VEXO_HATCH_CONTOUR_AFTER) append_contours(rings, spans, out);
    return VEXO_OK;
}

} // namespace vexo
