// SPDX-License-Identifier: MIT
// Dots every pitch along polylines, each a point or a drawn figure.
#include <cmath>
#include <cstdlib>
#include <memory>
#include <vector>

#include "core/constants.hpp"
#include "core/dots.hpp"
#include "line/arc_length.hpp"
#include "line/pattern.hpp"

namespace vexo {

namespace {

// Where the dots of one polyline go: at phase + k * pitch, k < count.
struct DotLayout {
    double pitch;
    double phase;
    double count; // whole number; a double until it is known to fit
};

DotLayout fitted_layout(double length, double phase, const DotPattern &p, bool ring) {
    const double n = fit_periods(length, p.pitch, 0.0, ring);
    const double pitch = length / n;
    DotLayout d{pitch, phase / p.pitch * pitch, n};
    // An open polyline gets its end dot too, unless the phase moved the
    // first dot off the start (then the dot after the last lies beyond).
    if (!ring && d.phase == 0.0) d.count += 1.0;
    return d;
}

DotLayout layout_dots(const GeomPoint *points, uint32_t first, uint32_t last, const DotPattern &p) {
    const bool only2d = (p.options & VEXO_PATTERN_2D) != 0;
    const double length = polyline_length(points, first, last, only2d);
    const bool ring =
        (p.options & VEXO_PATTERN_RING) != 0 && is_closed_ring(points, first, last, only2d);
    const double phase = wrap_into_period(p.phase, p.pitch);
    if ((p.options & VEXO_PATTERN_FIT) != 0 && length > kZeroTolerance)
        return fitted_layout(length, phase, p, ring);
    DotLayout d{p.pitch, phase, 0.0};
    if (length < phase) return d;
    d.count = std::floor((length - phase) / p.pitch) + 1.0;
    if (ring && d.count >= 2.0) {
        // Along the ring the last dot runs on into the first one.
        const double last_dot = phase + (d.count - 1.0) * p.pitch;
        if (length - last_dot + phase < kZeroTolerance) d.count -= 1.0;
    }
    return d;
}

// Writes dots into a block sized for them: one point each, or the figure
// drawn once around the centre (-0, -0, -0) and moved.  -0 + v is v for
// every v, and c + v = v + c, so each moved point has the bits that
// drawing the figure at its own centre gives.
class DotWriter {
public:
    DotWriter(GeomPoint *out, const GeomPoint *figure, uint32_t figure_count)
        : out_(out), figure_(figure), figure_count_(figure_count) {}

    void put(const GeomPoint &c) {
        if (!figure_) {
            *out_++ = GeomPoint{c.x, c.y, c.z, VEXO_POINT_END, 0u};
            return;
        }
        for (uint32_t i = 0; i < figure_count_; ++i) {
            const GeomPoint &t = figure_[i];
            *out_++ = GeomPoint{c.x + t.x, c.y + t.y, c.z + t.z, t.flags, t.reserved};
        }
    }

private:
    GeomPoint *out_;
    const GeomPoint *figure_;
    uint32_t figure_count_;
};

// The dots of one polyline, each on the segment whose [start, end) holds
// it (the last segment holds its end as well).
void place_dots(const GeomPoint *points, uint32_t first, uint32_t last, const DotLayout &d,
                bool only2d, DotWriter &writer) {
    const auto count = static_cast<uint32_t>(d.count);
    uint32_t k = 0;
    if (first == last) {
        for (; k < count; ++k) writer.put(points[first]);
        return;
    }
    double start = 0.0;
    for (uint32_t i = first; i < last && k < count; ++i) {
        const GeomPoint &a = points[i];
        const GeomPoint &b = points[i + 1];
        const double length = measured_length(a, b, only2d);
        const double end = start + length;
        const bool final = i + 1 == last;
        double s = d.phase + static_cast<double>(k) * d.pitch;
        if (final && length == 0.0) {
            for (; k < count; ++k) writer.put(a);
        } else if (final || s < end) {
            const SegmentFrame frame(a, b, length, d.pitch);
            const double offset = s - start;
            int32_t j = 0;
            do {
                writer.put(frame.at(j++, offset));
                s = d.phase + static_cast<double>(++k) * d.pitch;
            } while (k < count && (final || s < end));
        }
        start = end;
    }
}

} // namespace

PatternResult dot_pattern(const GeomPoint *points, uint32_t count, const DotPattern &pattern) {
    PatternResult result;
    uint32_t figure_count = 1;
    std::unique_ptr<GeomPoint, decltype(&std::free)> figure(nullptr, &std::free);
    if (pattern.shape) {
        const GeomPoint origin{-0.0, -0.0, -0.0, 0u, 0u};
        figure.reset(draw_dot_figure(origin, *pattern.shape, &figure_count));
        if (!figure) {
            result.status = VEXO_ERROR_NO_RESULT;
            return result;
        }
    }

    std::vector<DotLayout> layouts;
    double total = 0.0;
    for (uint32_t first = 0; first < count;) {
        const uint32_t last = polyline_end(points, count, first);
        layouts.push_back(layout_dots(points, first, last, pattern));
        total += layouts.back().count * figure_count;
        if (total > kMaxPatternPoints) {
            result.status = VEXO_ERROR_NO_MEMORY;
            return result;
        }
        first = last + 1;
    }
    if (total == 0.0) {
        result.status = VEXO_ERROR_NO_RESULT;
        return result;
    }

    const auto size = static_cast<uint32_t>(total);
    auto *out = static_cast<GeomPoint *>(std::malloc(size_t{size} * sizeof(GeomPoint)));
    if (!out) {
        result.status = VEXO_ERROR_NO_MEMORY;
        return result;
    }
    DotWriter writer(out, figure.get(), figure_count);
    const bool only2d = (pattern.options & VEXO_PATTERN_2D) != 0;
    size_t polyline = 0;
    for (uint32_t first = 0; first < count; ++polyline) {
        const uint32_t last = polyline_end(points, count, first);
        place_dots(points, first, last, layouts[polyline], only2d, writer);
        first = last + 1;
    }
    result.points = out;
    result.count = size;
    return result;
}

} // namespace vexo
