// SPDX-License-Identifier: MIT
// Reduction by distance and by angle, and smoothing, over arrays of several polylines.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <tuple>
#include <vector>

#include "geom/wide_reduce.hpp"
#include "line/compact.hpp"
#include "vexo_test_util.hpp"

using namespace vexo_test;

namespace {

using Reducer = GeomPoint *(*)(GeomPoint *, uint32_t *, double);
using Kept = std::tuple<double, double, uint32_t>; // x, y, flags

std::vector<Kept> reduce(Reducer reducer, std::vector<GeomPoint> pts, double limit) {
    uint32_t count = static_cast<uint32_t>(pts.size());
    EXPECT_EQ(reducer(pts.data(), &count, limit), pts.data());
    std::vector<Kept> kept;
    for (uint32_t i = 0; i < count; ++i) kept.emplace_back(pts[i].x, pts[i].y, pts[i].flags);
    return kept;
}

GeomPoint p(double x, double y, uint32_t flags = 0) {
    return point(x, y, 0, flags);
}

// The distance reduction written out plainly, one full pass per step.
uint32_t reduce_step_by_step(GeomPoint *p, uint32_t count, double min_dist, bool with_z) {
    auto close = [&](const GeomPoint &a, const GeomPoint &b) {
        const double dx = a.x - b.x, dy = a.y - b.y, dz = with_z ? a.z - b.z : 0.0;
        return min_dist > std::sqrt(dx * dx + dy * dy + dz * dz);
    };
    for (uint32_t a = 0, i = 1; count > 1 && i < count;) {
        if (p[i].flags & VEXO_POINT_END) {
            ++a, ++i;
        } else if (close(p[a], p[i])) {
            p[a].flags &= ~(VEXO_POINT_END | VEXO_POINT_END_MARK),
                p[i++].flags |= VEXO_POINT_PROCESSED;
        } else {
            while ((p[++a].flags & VEXO_POINT_PROCESSED) && a + 1 < count) continue;
            i = a + 1;
        }
    }
    count = vexo::remove_processed(p, count);
    for (uint32_t k = 2; k < count; ++k)
        if ((p[k - 2].flags & VEXO_POINT_END) && !(p[k - 1].flags & VEXO_POINT_END) &&
            (p[k].flags & VEXO_POINT_END) && close(p[k], p[k - 1]))
            p[k - 1].flags |= VEXO_POINT_PROCESSED, p[k].flags |= VEXO_POINT_PROCESSED;
    return vexo::remove_processed(p, count);
}

} // namespace

TEST(GeomReduce, WorkedCasesQuirksAndMissingArrays) {
    const struct {
        std::vector<GeomPoint> in;
        std::vector<Kept> out;
    } cases[] = {
        // Exactly min_dist away stays (strict test); the anchor then moves.
        {{p(0, 0), p(0.5, 0), p(0.7, 0), p(2, 0, 1)}, {{0, 0, 0}, {0.5, 0, 0}, {2, 0, 1}}},
        // A line starting 0.1 after the previous end is joined to it.
        {{p(0, 0, 0x40), p(1, 0, 0x45), p(1.1, 0), p(2, 0, 1)},
         {{0, 0, 0x40}, {1, 0, 0x40}, {2, 0, 1}}},
        // After an end the anchor steps by one, here onto a dropped point.
        {{p(0, 0), p(0.1, 0), p(1, 0, 1), p(0.15, 0), p(3, 0, 1)},
         {{0, 0, 0}, {1, 0, 1}, {3, 0, 1}}},
        // A short two-point line goes after an end (here a dot's) and at the
        // end of the array, but stays at the start; dots survive however close.
        {{p(0, 0, 1), p(5, 0), p(5.2, 0, 1), p(20, 0), p(25, 0, 1), p(30, 0), p(30.2, 0, 1)},
         {{0, 0, 1}, {20, 0, 0}, {25, 0, 1}}},
        {{p(10, 0), p(10.2, 0, 1), p(0, 0), p(2, 0, 1), p(2.1, 0, 1), p(5, 0), p(6, 0, 1)},
         {{10, 0, 0}, {10.2, 0, 1}, {0, 0, 0}, {2, 0, 1}, {2.1, 0, 1}, {5, 0, 0}, {6, 0, 1}}},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(reduce(vexo_geom_reduce, c.in, 0.5), c.out);
        EXPECT_EQ(reduce(vexo_geom_reduce_2d, c.in, 0.5), c.out);
    }
    for (Reducer r : {vexo_geom_reduce, vexo_geom_reduce_2d, vexo_geom_reduce_by_angle,
                      vexo_geom_reduce_by_angle_2d}) {
        uint32_t count = 5;
        EXPECT_EQ(r(nullptr, &count, 1.0), nullptr);
        EXPECT_EQ(count, 5);
        GeomPoint two[2] = {p(0, 0, 2), p(9, 9, 1)};
        EXPECT_EQ(r(two, nullptr, 1.0), two);
        count = 2; // a point the caller marked processed is compacted away
        EXPECT_EQ(r(two, &count, 1.0), two);
        EXPECT_EQ(count, 1);
        EXPECT_EQ(two[0].x, 9.0);
    }
}

// The library runs the steps as one pipeline with fast lanes; on large random arrays (dense
// ends, caller-marked points, z counted in 3D only, steps in multiples of a third of min_dist
// in the later rounds) it must give the plain passes' bytes, on the wide and the narrow path.
TEST(GeomReduce, MatchesTheStepByStepReductionOnLargeArrays) {
    std::mt19937 rng(11);
    std::uniform_real_distribution<double> step(-0.7, 0.7);
    for (uint32_t round = 0; round < 16; ++round) {
        vexo::allow_wide_reduce(round % 4 < 2);
        const uint32_t n = 3000 + rng() % 20000;
        std::vector<GeomPoint> pts(n);
        double x = 0.0, y = 0.0;
        auto next_step = [&] { return round < 8 ? step(rng) : 0.15 * (int(rng() % 9) - 4); };
        for (uint32_t i = 0; i < n; ++i) {
            x += next_step();
            y += next_step();
            const uint32_t flags = (rng() % (2 + round % 8) == 0 ? VEXO_POINT_END : 0u) |
                                   (rng() % 9 == 0 ? VEXO_POINT_END_MARK : 0u) |
                                   (rng() % 50 == 0 ? VEXO_POINT_PROCESSED : 0u);
            pts[i] = {x, y, step(rng) * 0.1, flags, i};
        }
        std::vector<GeomPoint> expected = pts;
        const uint32_t expected_count = reduce_step_by_step(expected.data(), n, 0.45, round % 2);
        uint32_t count = n;
        (round % 2 ? vexo_geom_reduce : vexo_geom_reduce_2d)(pts.data(), &count, 0.45);
        ASSERT_EQ(count, expected_count) << round;
        ASSERT_TRUE(same_bytes(pts[0], expected[0], count)) << round;
    }
    vexo::allow_wide_reduce(true);
}

TEST(GeomReduceByAngle, BendsDegenerateLegsAndAnchorWalk) {
    const double pi_f = kPiF, right = std::acos(0.0) * 0.5 / pi_f * 360.0;
    auto bend = [](double degrees) {
        const double rad = degrees * std::acos(-1.0) / 180.0;
        return std::vector<GeomPoint>{p(0, 0), p(1, 0), p(1 + std::cos(rad), std::sin(rad), 1)};
    };
    const std::vector<GeomPoint> line = {p(0, 0), p(1, 0), p(2, 0, 1)},
                                 back = {p(0, 0), p(1, 0), p(0, 0, 1)},
                                 twice = {p(0, 0), p(0, 0), p(1, 1, 1)},
                                 tiny_y = {p(0, 0), p(1, 5e-8), p(2, 0, 1)},
                                 tiny_x = {p(0, 0), p(5e-8, 1), p(0, 2, 1)};
    const Reducer deg = vexo_geom_reduce_by_angle, rad = vexo_geom_reduce_by_angle_2d;
    const struct {
        Reducer r;
        std::vector<GeomPoint> in;
        double limit;
        size_t kept;
    } cases[] = {
        {rad, bend(1), 0.0873, 2},
        {deg, bend(1), 0.0873, 3}, // radians in 2D, degrees in 3D
        {deg, bend(90), right, 3},
        {deg, bend(90), 90.0, 2}, // acos(0) in float-pi degrees
        {deg, line, 90.0, 3},
        {rad, line, 1.5, 3}, // collinear: angle 0 is kept
        {deg,
         {point(0, 0, 0), point(1, 0, 0), point(2, 0, 1, VEXO_POINT_END)},
         46,
         2}, // 45 degrees in z
        {deg, back, 180.0, 2},
        {rad, back, pi_f, 3}, // 2D: a reversal is pi_f exactly
        {rad, back, std::nextafter(pi_f, 4.0), 2},
        {deg, twice, 179.0, 3},
        {rad, twice, 1.6, 2}, // a repeated point: NaN; pi/2 in 2D
        {rad, tiny_y, 1.0, 3},
        {deg, tiny_y, 1.0, 2}, // 2D zeroes components below 1e-7
        {rad, tiny_x, 1.0, 3},
    };
    for (size_t i = 0; i < sizeof cases / sizeof cases[0]; ++i)
        EXPECT_EQ(reduce(cases[i].r, cases[i].in, cases[i].limit).size(), cases[i].kept) << i;

    // Turns of 4, 3.4 and 12.9 degrees after a long first leg: the first
    // middle goes; the anchor stays, so the next turn counts from the origin
    // (7 degrees) and that point is kept.
    EXPECT_EQ(reduce(vexo_geom_reduce_by_angle,
                     {p(0, 0), p(10, 0), p(11, 0.07), p(12, 0.2), p(13, 0.57, 1)}, 5.0),
              (std::vector<Kept>{{0, 0, 0}, {11, 0.07, 0}, {12, 0.2, 0}, {13, 0.57, 1}}));
    // A straight line, a dot, a gently bent line: only the bent middle goes.
    std::vector<GeomPoint> pts = {p(0, 0), p(1, 0), p(2, 0, 1),   p(9, 9, 1),
                                  p(3, 5), p(4, 5), p(5, 5.01, 1)};
    const std::vector<Kept> expected = {{0, 0, 0}, {1, 0, 0}, {2, 0, 1},
                                        {9, 9, 1}, {3, 5, 0}, {5, 5.01, 1}};
    EXPECT_EQ(reduce(vexo_geom_reduce_by_angle, pts, 5.0), expected);
    EXPECT_EQ(reduce(vexo_geom_reduce_by_angle_2d, pts, 0.0873), expected);
    // When the first line loses its middle, the anchor trails by two across
    // the ends and the next line's middle is never examined.
    pts[2].y = 0.01;
    EXPECT_EQ(reduce(vexo_geom_reduce_by_angle, pts, 5.0),
              (std::vector<Kept>{
                  {0, 0, 0}, {2, 0.01, 1}, {9, 9, 1}, {3, 5, 0}, {4, 5, 0}, {5, 5.01, 1}}));
}

TEST(GeomSmooth, ThresholdsPassOrderEndsAndDots) {
    // The middle of (x0, 0), (1, 1, 5), (x2, 0) moves to the mean only when both neighbours
    // are closer than max_dist, in 3D with z (sqrt 27 from the origin); z never moves.
    using Smoother = GeomPoint *(*)(GeomPoint *, uint32_t, double, uint32_t *);
    const Smoother s2 = vexo_geom_smoothen_2d, s3 = vexo_geom_smoothen;
    const double r2 = std::sqrt(2.0), r27 = std::sqrt(27.0);
    const struct {
        Smoother f;
        double x0, x2, max_dist;
        bool moved;
    } cases[] = {{s2, 0, 2, r2, false},
                 {s2, 0, 2, std::nextafter(r2, 2.0), true},
                 {s2, 0, 1, r2, false},
                 {s2, 1, 2, r2, false},
                 {s2, 1, 1, r2, true},
                 {s3, 0, 2, r27, false},
                 {s3, 0, 2, std::nextafter(r27, 6.0), true}};
    for (const auto &c : cases) {
        GeomPoint pts[3] = {point(c.x0, 0), point(1, 1, 5), point(c.x2, 0)};
        uint32_t status = 7;
        EXPECT_EQ(c.f(pts, 3, c.max_dist, &status), pts);
        EXPECT_EQ(status, VEXO_OK);
        const Xyz mean = {(1 + c.x0 + c.x2) / 3.0, 1 / 3.0, 5};
        EXPECT_EQ(xyz(pts[1]), c.moved ? mean : (Xyz{1, 1, 5})) << &c - cases;
    }
    // The pass sees the point it just smoothed; each sum runs p1 + p0 + p2.
    GeomPoint zig[4] = {point(0, 0), point(1, 3), point(2, 0), point(3, 3)};
    vexo_geom_smoothen_2d(zig, 4, 10.0, nullptr);
    EXPECT_EQ(zig[2].y, (0.0 + 1.0 + 3.0) / 3.0);                       // not (0 + 3 + 3) / 3
    GeomPoint order[3] = {point(0.1, 0), point(0.7, 0), point(0.3, 0)}; // other orders: 1.1
    vexo_geom_smoothen_2d(order, 3, 1.0, nullptr);
    EXPECT_EQ(order[1].x, (0.7 + 0.1 + 0.3) / 3.0);
    // Line [0..3], a dot, line [5..8]: only points whose triple holds no
    // end flag move (1 and 6), so each line's last inner point stays too.
    std::vector<GeomPoint> pts = {point(0, 0, 1),
                                  point(1, 1, 2),
                                  point(2, 0, 3),
                                  point(3, 1, 4, VEXO_POINT_END),
                                  point(3, 2, 9, VEXO_POINT_END),
                                  point(4, 2, 5),
                                  point(5, 3, 6),
                                  point(6, 2, 7),
                                  point(7, 3, 8, VEXO_POINT_END | VEXO_POINT_END_MARK)};
    const std::vector<GeomPoint> before = pts;
    vexo_geom_smoothen_2d(pts.data(), static_cast<uint32_t>(pts.size()), 10.0, nullptr);
    for (size_t i = 0; i < pts.size(); ++i) {
        EXPECT_EQ((pts[i].y == before[i].y), (i != 1 && i != 6)) << i;
        EXPECT_EQ(pts[i].z, before[i].z) << i;
        EXPECT_EQ(pts[i].flags, before[i].flags) << i;
    }
    // Missing (status still written) or NaN: nothing moves.
    uint32_t status = 7;
    EXPECT_EQ(vexo_geom_smoothen_2d(nullptr, 50, 10.0, &status), nullptr);
    EXPECT_EQ(status, VEXO_OK);
    vexo_geom_smoothen(order, 3, NAN, nullptr);
    EXPECT_EQ(order[1].x, (0.7 + 0.1 + 0.3) / 3.0);
}

// Long stretches where nothing is dropped (far longer than the pipeline's chunks), broken by
// a few close points, caller-marked points and ends, and points exactly min_dist apart or a
// hair closer, where the squares alone cannot decide: the plain passes' bytes again.
TEST(GeomReduce, LongQuietStretchesMatchTheStepByStepReduction) {
    const uint32_t n = 9000;
    const double min_dist = 0.5;
    std::vector<GeomPoint> pts(n);
    double x = 0.0;
    for (uint32_t i = 0; i < n; ++i) {
        double step = 1.0;
        if (i % 2777 == 5) step = 0.1;                           // dropped
        if (i % 1999 == 7) step = min_dist;                      // kept: the test is strict
        if (i % 1999 == 8) step = std::nextafter(min_dist, 0.0); // dropped
        x += step;
        uint32_t flags = i % 4001 == 4000 ? VEXO_POINT_END : 0u;
        if (i % 3001 == 17) flags |= VEXO_POINT_PROCESSED;
        pts[i] = {x, 0.0, 0.0, flags, i};
    }
    std::vector<GeomPoint> expected = pts;
    const uint32_t expected_count = reduce_step_by_step(expected.data(), n, min_dist, true);
    uint32_t count = n;
    vexo_geom_reduce(pts.data(), &count, min_dist);
    ASSERT_EQ(count, expected_count);
    EXPECT_TRUE(same_bytes(pts[0], expected[0], count));
}
