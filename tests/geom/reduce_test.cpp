// Point reduction by distance and by angle over arrays of several polylines.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <tuple>
#include <vector>

#include "line/compact.hpp"
#include "vexo_test_util.hpp"

using vexo_test::point;

namespace {

using Reducer = GeomPoint *(*)(GeomPoint *, uint32_t *, double);
using Kept = std::tuple<double, double, uint32_t>; // x, y, flags

std::vector<Kept> reduce(Reducer reducer, std::vector<GeomPoint> pts, double limit) {
    uint32_t count = static_cast<uint32_t>(pts.size());
    EXPECT_EQ(reducer(pts.data(), &count, limit), pts.data());
    std::vector<Kept> kept;
    for (uint32_t i = 0; i < count; ++i)
        kept.emplace_back(pts[i].x, pts[i].y, pts[i].flags);
    return kept;
}

GeomPoint p(double x, double y, uint32_t flags = 0) { return point(x, y, 0, flags); }

// The distance reduction written out plainly, one full pass per step.
uint32_t reduce_step_by_step(GeomPoint *p, uint32_t count, double min_dist, bool with_z) {
    auto close = [&](const GeomPoint &a, const GeomPoint &b) {
        const double dx = a.x - b.x, dy = a.y - b.y, dz = with_z ? a.z - b.z : 0.0;
        return min_dist > std::sqrt(dx * dx + dy * dy + dz * dz);
    };
    for (uint32_t a = 0, i = 1; count > 1 && i < count;) {
        if (p[i].flags & 1u) {
            ++a, ++i;
        } else if (close(p[a], p[i])) {
            p[a].flags &= ~5u;
            p[i++].flags |= 2u;
        } else {
            while ((p[++a].flags & 2u) && a + 1 < count) {
            }
            i = a + 1;
        }
    }
    count = vexo::remove_processed(p, count);
    for (uint32_t k = 2; k < count; ++k)
        if ((p[k - 2].flags & 1u) && !(p[k - 1].flags & 1u) && (p[k].flags & 1u) &&
            close(p[k], p[k - 1]))
            p[k - 1].flags |= 2u, p[k].flags |= 2u;
    return vexo::remove_processed(p, count);
}

} // namespace

TEST(GeomReduce, WorkedCasesAndQuirks) {
    const struct { std::vector<GeomPoint> in; std::vector<Kept> out; } cases[] = {
        {{p(0, 0), p(0.1, 0), p(1, 0, 1)}, {{0, 0, 0}, {1, 0, 1}}},
        // Exactly min_dist away stays (strict test); the anchor then moves.
        {{p(0, 0), p(0.5, 0), p(0.7, 0), p(2, 0, 1)}, {{0, 0, 0}, {0.5, 0, 0}, {2, 0, 1}}},
        // A line starting 0.1 after the previous end is joined to it.
        {{p(0, 0, 0x40), p(1, 0, 0x45), p(1.1, 0), p(2, 0, 1)},
         {{0, 0, 0x40}, {1, 0, 0x40}, {2, 0, 1}}},
        // After an end the anchor steps by one, here onto a dropped point.
        {{p(0, 0), p(0.1, 0), p(1, 0, 1), p(0.15, 0), p(3, 0, 1)},
         {{0, 0, 0}, {1, 0, 1}, {3, 0, 1}}},
        // A short two-point line goes in the middle and at the end...
        {{p(0, 0), p(5, 0, 1), p(10, 0), p(10.2, 0, 1), p(20, 0), p(25, 0, 1), p(30, 0),
          p(30.2, 0, 1)},
         {{0, 0, 0}, {5, 0, 1}, {20, 0, 0}, {25, 0, 1}}},
        // ...but stays at the start; dots survive however close.
        {{p(10, 0), p(10.2, 0, 1), p(0, 0), p(2, 0, 1), p(2.1, 0, 1), p(5, 0), p(6, 0, 1)},
         {{10, 0, 0}, {10.2, 0, 1}, {0, 0, 0}, {2, 0, 1}, {2.1, 0, 1}, {5, 0, 0}, {6, 0, 1}}},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(reduce(vexo_geom_reduce, c.in, 0.5), c.out);
        EXPECT_EQ(reduce(vexo_geom_reduce_2d, c.in, 0.5), c.out);
    }
    const std::vector<GeomPoint> above = {point(0, 0, 0), point(0, 0, 1), point(1, 0, 0, 1)};
    EXPECT_EQ(reduce(vexo_geom_reduce, above, 0.5).size(), 3u); // z counts only in 3D
    EXPECT_EQ(reduce(vexo_geom_reduce_2d, above, 0.5).size(), 2u);
}

// The library runs the steps as one pipeline; on large random arrays (dense
// ends, caller-marked points) it must give the plain passes' bytes.
TEST(GeomReduce, MatchesTheStepByStepReductionOnLargeArrays) {
    std::mt19937 rng(11);
    std::uniform_real_distribution<double> step(-0.7, 0.7);
    for (uint32_t round = 0; round < 6; ++round) {
        const uint32_t n = 3000 + rng() % 20000;
        std::vector<GeomPoint> pts(n);
        double x = 0.0, y = 0.0;
        for (uint32_t i = 0; i < n; ++i) {
            x += step(rng);
            y += step(rng);
            const uint32_t flags = (rng() % (2 + round) == 0 ? 1u : 0u) |
                                   (rng() % 9 == 0 ? 4u : 0u) | (rng() % 50 == 0 ? 2u : 0u);
            pts[i] = point(x, y, step(rng) * 0.1, flags);
            pts[i].reserved = i;
        }
        std::vector<GeomPoint> expected = pts;
        const uint32_t expected_count = reduce_step_by_step(expected.data(), n, 0.45, round % 2);
        uint32_t count = n;
        (round % 2 ? vexo_geom_reduce : vexo_geom_reduce_2d)(pts.data(), &count, 0.45);
        ASSERT_EQ(count, expected_count) << round;
        ASSERT_TRUE(vexo_test::same_bytes(pts[0], expected[0], count)) << round;
    }
}

TEST(GeomReduce, MissingAndTinyArrays) {
    for (Reducer r : {vexo_geom_reduce, vexo_geom_reduce_2d, vexo_geom_reduce_by_angle,
                      vexo_geom_reduce_by_angle_2d}) {
        uint32_t count = 5;
        EXPECT_EQ(r(nullptr, &count, 1.0), nullptr);
        EXPECT_EQ(count, 5u);
        GeomPoint two[2] = {p(0, 0, 2), p(9, 9, 1)};
        EXPECT_EQ(r(two, nullptr, 1.0), two);
        count = 2; // a point the caller marked processed is compacted away
        EXPECT_EQ(r(two, &count, 1.0), two);
        ASSERT_EQ(count, 1u);
        EXPECT_EQ(two[0].x, 9.0);
    }
}

TEST(GeomReduceByAngle, BendsCollinearAndDegenerateLegs) {
    const double pi_f = vexo_test::kPiF, right = std::acos(0.0) * 0.5 / pi_f * 360.0;
    auto bend = [](double degrees) {
        const double rad = degrees * std::acos(-1.0) / 180.0;
        return std::vector<GeomPoint>{p(0, 0), p(1, 0), p(1 + std::cos(rad), std::sin(rad), 1)};
    };
    const std::vector<GeomPoint> line = {p(0, 0), p(1, 0), p(2, 0, 1)},
                                 back = {p(0, 0), p(1, 0), p(0, 0, 1)},
                                 twice = {p(0, 0), p(0, 0), p(1, 1, 1)},
                                 tiny = {p(0, 0), p(1, 0), p(2, 5e-8, 1)};
    const Reducer deg = vexo_geom_reduce_by_angle, rad = vexo_geom_reduce_by_angle_2d;
    const struct { Reducer r; std::vector<GeomPoint> in; double limit; size_t kept; } cases[] = {
        {deg, bend(1), 5.0, 2},   {rad, bend(1), 0.0873, 2}, {rad, bend(1), 0.01, 3},
        {deg, bend(1), 0.0873, 3}, // degrees in 3D, radians in 2D
        {deg, bend(90), right, 3}, {deg, bend(90), 90.0, 2}, // acos(0) in float-pi degrees
        {deg, line, 90.0, 3},      {rad, line, 1.5, 3},      // collinear: angle 0 is kept
        {deg, {point(0, 0, 0), point(0, 0, 1), point(0, 0, 2, 1)}, 90, 3},
        {deg, back, 180.0, 2},     {rad, back, pi_f, 3}, // 2D: a reversal is pi_f exactly
        {rad, back, std::nextafter(pi_f, 4.0), 2},
        {deg, twice, 179.0, 3},    {rad, twice, 1.6, 2}, // a repeated point: NaN; pi/2 in 2D
        {rad, tiny, 1.0, 3},       {deg, tiny, 1.0, 2},  // 2D zeroes components below 1e-7
    };
    for (size_t i = 0; i < sizeof cases / sizeof cases[0]; ++i)
        EXPECT_EQ(reduce(cases[i].r, cases[i].in, cases[i].limit).size(), cases[i].kept) << i;
}

TEST(GeomReduceByAngle, WalksAcrossLineEnds) {
    // A straight line, a dot, a gently bent line: only the bent middle goes.
    std::vector<GeomPoint> pts = {p(0, 0), p(1, 0), p(2, 0, 1), p(9, 9, 1),
                                  p(3, 5), p(4, 5), p(5, 5.01, 1)};
    const std::vector<Kept> expected = {{0, 0, 0}, {1, 0, 0}, {2, 0, 1},
                                        {9, 9, 1}, {3, 5, 0}, {5, 5.01, 1}};
    EXPECT_EQ(reduce(vexo_geom_reduce_by_angle, pts, 5.0), expected);
    EXPECT_EQ(reduce(vexo_geom_reduce_by_angle_2d, pts, 0.0873), expected);
    // When the first line loses its middle, the anchor trails by two across
    // the ends and the next line's middle is never examined.
    pts[2].y = 0.01;
    EXPECT_EQ(reduce(vexo_geom_reduce_by_angle, pts, 5.0),
              (std::vector<Kept>{{0, 0, 0}, {2, 0.01, 1}, {9, 9, 1}, {3, 5, 0}, {4, 5, 0},
                                 {5, 5.01, 1}}));
}
