// SPDX-License-Identifier: MIT
#include "clip2/outline_figures.hpp"

#include <cmath>
#include <vector>

#include "clip/joins.hpp"

namespace vexo {
namespace {

namespace bp = boost::polygon;
using ClipperLib::IntPoint;

constexpr double kPi = 3.141592653589793;

struct Vec {
    double x, y;
};

// The point `width` along unit `dir` from `v`, rounded half away from zero
// to the grid.  Quads and joins that meet at a corner compute it the same
// way, so their shared edge is exact and leaves no sliver.
GridPoint step(const IntPoint &v, Vec dir, double width) {
    return GridPoint(static_cast<int>(std::lround(static_cast<double>(v.X) + width * dir.x)),
                     static_cast<int>(std::lround(static_cast<double>(v.Y) + width * dir.y)));
}

GridPoint grid(const IntPoint &v) {
    return GridPoint(static_cast<int>(v.X), static_cast<int>(v.Y));
}

void add_figure(const std::vector<GridPoint> &figure, GridSet *figures) {
    double twice = 0.0;
    for (size_t i = 0, j = figure.size() - 1; i < figure.size(); j = i++)
        twice += (static_cast<double>(figure[j].x()) + figure[i].x()) *
                 (static_cast<double>(figure[i].y()) - figure[j].y());
    if (twice == 0.0) return; // a sliver of no area adds nothing
    figures->insert_vertex_sequence(figure.begin(), figure.end(),
                                    twice > 0.0 ? bp::COUNTERCLOCKWISE : bp::CLOCKWISE, false);
}

// How the join at one corner is drawn; `width` is the offset, the corner
// turns left from edge normal n1 to n2 (unit, on the offset side).
class Joins {
public:
    Joins(ClipperLib::JoinType join, double width) : join_(join), width_(width) {
        // Arc steps as the first clip family's offset takes them: chords no
        // further than the tolerance (at most a quarter of the width) from
        // the arc, and no more than pi*width steps per turn.
        const double tolerance = std::min(kArcTolerance, width * 0.25);
        double steps = kPi / std::acos(1.0 - tolerance / width);
        if (steps > width * kPi) steps = width * kPi;
        steps_per_radian_ = steps / (2.0 * kPi);
    }

    void add(const IntPoint &v, Vec n1, Vec n2, GridSet *figures) {
        const double cross = n1.x * n2.y - n1.y * n2.x, dot = n1.x * n2.x + n1.y * n2.y;
        figure_.assign({grid(v), step(v, n1, width_)});
        if (join_ == ClipperLib::jtRound)
            arc(v, n1, std::atan2(cross, dot));
        else if (join_ == ClipperLib::jtMiter && 1.0 + dot >= 2.0 / (kMiterLimit * kMiterLimit))
            figure_.push_back(step(v, Vec{n1.x + n2.x, n1.y + n2.y}, width_ / (1.0 + dot)));
        else
            square(v, n1, n2, std::atan2(cross, dot));
        figure_.push_back(step(v, n2, width_));
        add_figure(figure_, figures);
    }

private:
    void arc(const IntPoint &v, Vec n1, double angle) {
        const long count = std::max(std::lround(steps_per_radian_ * angle), 1L);
        const double a1 = std::atan2(n1.y, n1.x);
        for (long k = 1; k < count; ++k) {
            const double a = a1 + angle * static_cast<double>(k) / static_cast<double>(count);
            figure_.push_back(step(v, Vec{std::cos(a), std::sin(a)}, width_));
        }
    }

    // Cut across the bisector at `width` from the corner: each quad's outer
    // edge goes on by width * tan(angle / 4) before the cut.
    void square(const IntPoint &v, Vec n1, Vec n2, double angle) {
        const double t = std::tan(angle / 4.0);
        const Vec u1{-n1.y, n1.x}, u2{-n2.y, n2.x}; // edge directions
        figure_.push_back(step(v, Vec{n1.x + t * u1.x, n1.y + t * u1.y}, width_));
        figure_.push_back(step(v, Vec{n2.x - t * u2.x, n2.y - t * u2.y}, width_));
    }

    ClipperLib::JoinType join_;
    double width_;
    double steps_per_radian_ = 0.0;
    std::vector<GridPoint> figure_;
};

// Figures of one ring walked so that the offset side is on its right (a
// shrinking offset walks the ring backwards).
void ring_figures(const ClipperLib::Path &ring, bool backwards, double width, Joins *joins,
                  GridSet *figures) {
    const size_t n = ring.size();
    if (n < 2) return;
    const auto at = [&](size_t i) -> const IntPoint & { return ring[backwards ? n - 1 - i : i]; };
    std::vector<Vec> normal(n); // right normal of the edge from vertex i to i + 1
    for (size_t i = 0; i < n; ++i) {
        const IntPoint &a = at(i), &b = at((i + 1) % n);
        const double dx = static_cast<double>(b.X - a.X), dy = static_cast<double>(b.Y - a.Y);
        const double length = std::hypot(dx, dy);
        normal[i] = length > 0.0 ? Vec{dy / length, -dx / length} : Vec{0.0, 0.0};
    }
    std::vector<GridPoint> quad(4);
    for (size_t i = 0; i < n; ++i) {
        const IntPoint &a = at(i), &b = at((i + 1) % n);
        quad = {grid(a), grid(b), step(b, normal[i], width), step(a, normal[i], width)};
        add_figure(quad, figures);
        const Vec n1 = normal[(i + n - 1) % n], n2 = normal[i];
        if (n1.x * n2.y - n1.y * n2.x > 0.0) joins->add(a, n1, n2, figures); // turns left
    }
}

} // namespace

void offset_region(const ClipperLib::Paths &rings, const GridSet &region, ClipperLib::JoinType join,
                   double delta, GridSet *out) {
    using namespace boost::polygon::operators;
    const double width = std::fabs(delta);
    Joins joins(join, width);
    GridSet figures;
    for (const auto &ring : rings) ring_figures(ring, delta < 0.0, width, &joins, &figures);
    *out = region;
    if (delta > 0.0)
        *out += figures;
    else
        *out -= figures;
    out->clean();
}

} // namespace vexo
