// SPDX-License-Identifier: MIT
// Dashes from a dash array along polylines: every "on" stretch becomes a
// polyline of its own.
#include <algorithm>
#include <vector>

#include "core/constants.hpp"
#include "core/point_buffer.hpp"
#include "line/arc_length.hpp"
#include "line/pattern.hpp"

namespace vexo {

namespace {

// An "on" stretch of one polyline, in arc length; s0 == s1 is a dot.
struct Stretch {
    double s0;
    double s1;
};

// The pattern as laid onto one polyline: entries (fitted when asked),
// where each starts within the period, and the period's position at arc
// length 0.
struct Layout {
    std::vector<double> lengths;
    std::vector<double> starts;
    double period = 0.0;
    double offset = 0.0; // in [0, period)
};

Layout lay_out(const DashPattern &p, double length, bool ring) {
    double period = 0.0;
    for (double e : p.lengths) period += e;
    double factor = 1.0;
    if ((p.options & VEXO_PATTERN_FIT) != 0 && length > kZeroTolerance) {
        const double lead = p.lengths.front();
        const double n = fit_periods(length, period, lead, ring);
        factor = length / (ring ? n * period : n * period + lead);
    }
    Layout layout;
    for (double e : p.lengths) {
        layout.starts.push_back(layout.period);
        layout.lengths.push_back(e * factor);
        layout.period += e * factor;
    }
    layout.offset = wrap_into_period(wrap_into_period(p.offset, period) * factor, layout.period);
    return layout;
}

// The entry that holds the pattern position `offset`; a zero entry that
// starts there holds it (a dot at arc length 0 is drawn).
size_t entry_at(const Layout &layout, double offset) {
    size_t i = 0;
    while (i + 1 < layout.lengths.size()) {
        const double end = layout.starts[i] + layout.lengths[i];
        if (end > offset || (end == offset && layout.lengths[i] == 0.0)) break;
        ++i;
    }
    return i;
}

// The "on" stretches along [0, length], in order.  Stretches separated by
// an "off" entry of zero length are one stretch.  False when they would
// outgrow the result limit.
bool collect_stretches(const Layout &layout, double length, std::vector<Stretch> &out) {
    const size_t entries = layout.lengths.size();
    size_t j = entry_at(layout, layout.offset);
    double periods = 0.0;  // whole periods walked, counted rather than summed
    bool run_open = false; // the last "on" stretch may still be continued
    for (;;) {
        const double s = (periods * layout.period + layout.starts[j]) - layout.offset;
        if (s > length) break;
        const double e = layout.lengths[j];
        if (j % 2 == 1) {
            if (e > 0.0) run_open = false;
        } else {
            const double s0 = std::max(s, 0.0);
            // A stretch that ends within the zero tolerance of the end ends
            // on it: a fitted pattern reaches the end up to rounding.
            const double s1 = s + e > length - kZeroTolerance ? length : s + e;
            const bool drawn = e == 0.0 ? s >= 0.0 : s1 > s0;
            if (drawn && run_open) {
                out.back().s1 = s1;
            } else if (drawn) {
                if (out.size() >= kMaxPatternPoints) return false;
                out.push_back(Stretch{s0, e == 0.0 ? s0 : s1});
            }
            run_open = drawn;
        }
        if (++j == entries) {
            j = 0;
            periods += 1.0;
        }
    }
    return true;
}

// Walks one polyline forward: finds the segment that holds an arc length
// (half-open spans, the last segment holding the end) and the vertices
// passed on the way.
class PolylineCursor {
public:
    PolylineCursor(const GeomPoint *points, uint32_t first, uint32_t last, double length,
                   bool only2d)
        : points_(points), last_(last), length_(length), only2d_(only2d), segment_(first) {
        if (first < last) span_ = measured_length(points[first], points[first + 1], only2d);
    }

    // The point at arc length s: a vertex verbatim when s falls on it.
    GeomPoint at(double s) {
        seek(s);
        const GeomPoint &a = points_[segment_];
        if (s >= length_ && segment_ < last_) return plain(points_[last_]);
        const double offset = s - start_;
        if (offset == 0.0 || span_ == 0.0) return plain(a);
        return SegmentFrame(a, points_[segment_ + 1], span_, 0.0).at(0, offset);
    }

    // Hands `put` every vertex after the current position that lies
    // strictly before arc length s.
    template <class Put> bool vertices_before(double s, Put &&put) {
        while (segment_ + 1 < last_ && start_ + span_ < s) {
            advance();
            if (!put(plain(points_[segment_]))) return false;
        }
        return true;
    }

private:
    static GeomPoint plain(const GeomPoint &p) { return GeomPoint{p.x, p.y, p.z, 0u, 0u}; }

    void seek(double s) {
        while (segment_ + 1 < last_ && s >= start_ + span_) advance();
    }

    void advance() {
        start_ += span_;
        ++segment_;
        span_ = measured_length(points_[segment_], points_[segment_ + 1], only2d_);
    }

    const GeomPoint *points_;
    uint32_t last_;
    double length_;
    bool only2d_;
    uint32_t segment_;
    double start_ = 0.0;
    double span_ = 0.0;
};

// Appends one stretch; with `continued` its first point is left out (it
// repeats the point before it).  The last point gets VEXO_POINT_END when
// `ends` is set.
bool emit(PolylineCursor &cursor, const Stretch &st, bool continued, bool ends, PointSink &sink) {
    auto put = [&sink](const GeomPoint &p) {
        return sink.size() < kMaxPatternPoints && sink.push(p);
    };
    const GeomPoint start = cursor.at(st.s0);
    if (!continued && !put(start)) return false;
    if (st.s1 > st.s0) {
        if (!cursor.vertices_before(st.s1, put)) return false;
        if (!put(cursor.at(st.s1))) return false;
    }
    if (ends && sink.size() > 0) sink.data()[sink.size() - 1].flags |= VEXO_POINT_END;
    return true;
}

// The dashes of one polyline into the sink; a status.
uint32_t dash_polyline(const GeomPoint *points, uint32_t first, uint32_t last,
                       const DashPattern &pattern, PointSink &sink) {
    const bool only2d = (pattern.options & VEXO_PATTERN_2D) != 0;
    const double length = polyline_length(points, first, last, only2d);
    const bool ring =
        (pattern.options & VEXO_PATTERN_RING) != 0 && is_closed_ring(points, first, last, only2d);
    const Layout layout = lay_out(pattern, length, ring);
    // Bounds the walk: a pattern of tiny entries along a long polyline is
    // refused before it starts (also a length that overflowed to infinity).
    const double entries = length / layout.period * static_cast<double>(layout.lengths.size());
    if (!(entries <= kMaxPatternPoints)) return VEXO_ERROR_NO_MEMORY;
    std::vector<Stretch> stretches;
    if (!collect_stretches(layout, length, stretches)) return VEXO_ERROR_NO_MEMORY;

    const size_t n = stretches.size();
    const bool join =
        ring && n >= 2 && stretches.front().s0 == 0.0 && stretches.back().s1 == length;
    PolylineCursor cursor(points, first, last, length, only2d);
    bool ok = true;
    for (size_t i = join ? 1 : 0; ok && i < n; ++i) {
        const bool into_seam = join && i + 1 == n;
        ok = emit(cursor, stretches[i], false, !into_seam, sink);
    }
    if (ok && join) {
        // The stretch that runs into the seam goes on with the one that
        // leaves it, walked from the polyline's start again.
        PolylineCursor from_start(points, first, last, length, only2d);
        ok = emit(from_start, stretches.front(), true, true, sink);
    }
    return ok ? VEXO_OK : VEXO_ERROR_NO_MEMORY;
}

} // namespace

DashPattern dash_pattern_of(const VexoDash &dash) {
    DashPattern pattern;
    pattern.lengths.assign(dash.lengths, dash.lengths + dash.count);
    if (dash.count % 2 == 1)
        pattern.lengths.insert(pattern.lengths.end(), dash.lengths, dash.lengths + dash.count);
    pattern.offset = dash.offset;
    pattern.options = dash.options;
    return pattern;
}

PatternResult dash_pattern(const GeomPoint *points, uint32_t count, const DashPattern &pattern) {
    PatternResult result;
    PointSink sink;
    for (uint32_t first = 0; first < count;) {
        const uint32_t last = polyline_end(points, count, first);
        result.status = dash_polyline(points, first, last, pattern, sink);
        if (result.status != VEXO_OK) return result;
        first = last + 1;
    }
    if (sink.size() == 0) {
        result.status = VEXO_ERROR_NO_RESULT;
        return result;
    }
    result.points = sink.release(&result.count);
    return result;
}

} // namespace vexo
