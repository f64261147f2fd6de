// Point reduction by distance and by angle over arrays of several polylines.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "core/constants.hpp"
#include "line/compact.hpp"
#include "vexo.h"

namespace {

GeomPoint pt(double x, double y, double z = 0.0, uint32_t flags = 0) {
    GeomPoint p{};
    p.x = x;
    p.y = y;
    p.z = z;
    p.flags = flags;
    return p;
}

using Reducer = GeomPoint *(*)(GeomPoint *, uint32_t *, double);

struct Xy {
    double x;
    double y;
    uint32_t flags;
};

// Runs a reducer over a copy and returns what is left.
std::vector<Xy> reduce(Reducer reducer, std::vector<GeomPoint> pts, double limit) {
    uint32_t count = static_cast<uint32_t>(pts.size());
    EXPECT_EQ(reducer(pts.data(), &count, limit), pts.data());
    std::vector<Xy> kept;
    for (uint32_t i = 0; i < count; ++i)
        kept.push_back(Xy{pts[i].x, pts[i].y, pts[i].flags});
    return kept;
}

void expect_kept(const std::vector<Xy> &kept, const std::vector<Xy> &expected) {
    ASSERT_EQ(kept.size(), expected.size());
    for (size_t i = 0; i < kept.size(); ++i) {
        EXPECT_EQ(kept[i].x, expected[i].x) << i;
        EXPECT_EQ(kept[i].y, expected[i].y) << i;
        EXPECT_EQ(kept[i].flags, expected[i].flags) << i;
    }
}

TEST(GeomReduce, DropsPointsCloserThanTheMinimum) {
    for (Reducer r : {vexo_geom_reduce, vexo_geom_reduce_2d}) {
        expect_kept(reduce(r, {pt(0, 0), pt(0.1, 0), pt(1, 0, 0, 1)}, 0.5),
                    {{0, 0, 0}, {1, 0, 1}});
        // Exactly min_dist away is kept (strict test); the anchor then moves.
        expect_kept(reduce(r, {pt(0, 0), pt(0.5, 0), pt(0.7, 0), pt(2, 0, 0, 1)}, 0.5),
                    {{0, 0, 0}, {0.5, 0, 0}, {2, 0, 1}});
        // Several close points in a row are all measured against the anchor.
        expect_kept(reduce(r, {pt(0, 0), pt(0.2, 0), pt(0.4, 0), pt(0.6, 0), pt(0.8, 0),
                               pt(3, 0, 0, 1)},
                           0.5),
                    {{0, 0, 0}, {0.6, 0, 0}, {3, 0, 1}});
    }
}

TEST(GeomReduce, ZCountsOnlyIn3d) {
    const std::vector<GeomPoint> pts = {pt(0, 0, 0), pt(0, 0, 1), pt(1, 0, 0, 1)};
    EXPECT_EQ(reduce(vexo_geom_reduce, pts, 0.5).size(), 3u);
    EXPECT_EQ(reduce(vexo_geom_reduce_2d, pts, 0.5).size(), 2u);
}

TEST(GeomReduce, NearlyTouchingPolylinesAreJoined) {
    // The second line starts 0.1 after the first ends: its first point goes
    // and the first line's end loses its end flags (0x01 and 0x04).
    const std::vector<GeomPoint> pts = {pt(0, 0, 0, 0x40), pt(1, 0, 0, 0x45), pt(1.1, 0),
                                        pt(2, 0, 0, 1)};
    expect_kept(reduce(vexo_geom_reduce, pts, 0.5),
                {{0, 0, 0x40}, {1, 0, 0x40}, {2, 0, 1}});
    // Farther apart, both lines stay as they are.
    const std::vector<GeomPoint> apart = {pt(0, 0), pt(1, 0, 0, 5), pt(1.6, 0), pt(3, 0, 0, 1)};
    expect_kept(reduce(vexo_geom_reduce, apart, 0.5),
                {{0, 0, 0}, {1, 0, 5}, {1.6, 0, 0}, {3, 0, 1}});
}

TEST(GeomReduce, AnchorMovesByOneAfterALineEnd) {
    // After the end at (1,0) the anchor steps onto the dropped (0.1,0), so
    // the next line's start is measured against that point, not the end: it
    // goes, the end keeps its flag and the rest of that line is a dot.
    const std::vector<GeomPoint> pts = {pt(0, 0), pt(0.1, 0), pt(1, 0, 0, 1), pt(0.15, 0),
                                        pt(3, 0, 0, 1)};
    expect_kept(reduce(vexo_geom_reduce, pts, 0.5), {{0, 0, 0}, {1, 0, 1}, {3, 0, 1}});
}

TEST(GeomReduce, ShortTwoPointLinesGoExceptAtTheStart) {
    const std::vector<GeomPoint> middle = {pt(0, 0),    pt(5, 0, 0, 1), pt(10, 0),
                                           pt(10.2, 0, 0, 1), pt(20, 0), pt(25, 0, 0, 1)};
    expect_kept(reduce(vexo_geom_reduce, middle, 0.5),
                {{0, 0, 0}, {5, 0, 1}, {20, 0, 0}, {25, 0, 1}});
    const std::vector<GeomPoint> start = {pt(10, 0), pt(10.2, 0, 0, 1), pt(0, 0),
                                          pt(5, 0, 0, 1)};
    expect_kept(reduce(vexo_geom_reduce, start, 0.5),
                {{10, 0, 0}, {10.2, 0, 1}, {0, 0, 0}, {5, 0, 1}});
    // The last line of the array is examined too.
    const std::vector<GeomPoint> last = {pt(0, 0), pt(5, 0, 0, 1), pt(10, 0),
                                         pt(10.2, 0, 0, 1)};
    expect_kept(reduce(vexo_geom_reduce, last, 0.5), {{0, 0, 0}, {5, 0, 1}});
}

TEST(GeomReduce, DotsSurviveEvenWhenClose) {
    const std::vector<GeomPoint> pts = {pt(0, 0),         pt(1, 0),  pt(2, 0, 0, 1),
                                        pt(2.1, 0, 0, 1), pt(2.2, 0, 0, 1), pt(5, 0),
                                        pt(6, 0, 0, 1)};
    expect_kept(reduce(vexo_geom_reduce, pts, 0.5),
                {{0, 0, 0}, {1, 0, 0}, {2, 0, 1}, {2.1, 0, 1}, {2.2, 0, 1}, {5, 0, 0},
                 {6, 0, 1}});
}

TEST(GeomReduce, KeepsOrderAndWholeRecordsOnRandomPolylines) {
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> step(0.0, 1.0);
    for (Reducer r : {vexo_geom_reduce, vexo_geom_reduce_2d}) {
        std::vector<GeomPoint> pts;
        double x = 0.0;
        for (int i = 0; i < 5000; ++i) {
            x += step(rng);
            GeomPoint p = pt(x, step(rng), step(rng), rng() % 7 == 0 ? 1u : 0u);
            p.reserved = static_cast<uint32_t>(i);
            pts.push_back(p);
        }
        std::vector<GeomPoint> work = pts;
        uint32_t count = static_cast<uint32_t>(work.size());
        r(work.data(), &count, 0.6);
        ASSERT_GT(count, 0u);
        ASSERT_LT(count, pts.size());
        // Survivors keep their order (reserved holds the original index)
        // and their coordinates; only end flags may have been cleared.
        for (uint32_t i = 0; i < count; ++i) {
            const GeomPoint &orig = pts[work[i].reserved];
            EXPECT_EQ(work[i].x, orig.x);
            EXPECT_EQ(work[i].z, orig.z);
            EXPECT_EQ(work[i].flags & ~1u, orig.flags & ~1u);
            EXPECT_EQ(work[i].flags & 2u, 0u);
            if (i > 0) {
                EXPECT_GT(work[i].reserved, work[i - 1].reserved);
            }
        }
    }
}

// The reduction written out step by step, one full pass each, as the
// plain reading of the algorithm: the library's pipelined version must
// give the same array to the last bit.
uint32_t reduce_step_by_step(GeomPoint *p, uint32_t count, double min_dist) {
    auto dist = [](const GeomPoint &a, const GeomPoint &b) {
        const double dx = a.x - b.x, dy = a.y - b.y, dz = a.z - b.z;
        return std::sqrt(dx * dx + dy * dy + dz * dz);
    };
    if (count > 1) {
        uint32_t a = 0, i = 1;
        while (i < count) {
            if (p[i].flags & 1u) {
                ++a;
                ++i;
            } else if (min_dist > dist(p[a], p[i])) {
                p[a].flags &= ~5u;
                p[i].flags |= 2u;
                ++i;
            } else {
                do {
                    ++a;
                } while ((p[a].flags & 2u) && a + 1 < count);
                i = a + 1;
            }
        }
    }
    count = vexo::remove_processed(p, count);
    for (uint32_t k = 2; k < count; ++k)
        if ((p[k - 2].flags & 1u) && !(p[k - 1].flags & 1u) && (p[k].flags & 1u) &&
            min_dist > dist(p[k], p[k - 1])) {
            p[k - 1].flags |= 2u;
            p[k].flags |= 2u;
        }
    return vexo::remove_processed(p, count);
}

TEST(GeomReduce, MatchesTheStepByStepReductionOnLargeArrays) {
    std::mt19937 rng(11);
    std::uniform_real_distribution<double> step(-0.7, 0.7);
    for (int round = 0; round < 12; ++round) {
        // Dense line ends and caller-marked points in some rounds, so joins,
        // dots, short pairs and lagging anchors occur across many chunks.
        const uint32_t n = 3000 + rng() % 20000;
        const uint32_t end_every = 2 + round % 6;
        std::vector<GeomPoint> pts(n);
        double x = 0.0, y = 0.0;
        for (uint32_t i = 0; i < n; ++i) {
            x += step(rng);
            y += step(rng);
            uint32_t flags = rng() % end_every == 0 ? 1u : 0u;
            if (round % 3 == 2 && rng() % 50 == 0)
                flags |= 2u;
            if (rng() % 9 == 0)
                flags |= 4u;
            pts[i] = pt(x, y, step(rng) * 0.1, flags);
            pts[i].reserved = i;
        }
        std::vector<GeomPoint> expected = pts;
        const uint32_t expected_count = reduce_step_by_step(expected.data(), n, 0.45);
        uint32_t count = n;
        vexo_geom_reduce(pts.data(), &count, 0.45);
        ASSERT_EQ(count, expected_count) << round;
        ASSERT_EQ(0, std::memcmp(pts.data(), expected.data(), count * sizeof(GeomPoint)))
            << round;
    }
}

TEST(GeomReduce, MissingAndTinyArrays) {
    for (Reducer r : {vexo_geom_reduce, vexo_geom_reduce_2d, vexo_geom_reduce_by_angle,
                      vexo_geom_reduce_by_angle_2d}) {
        uint32_t count = 5;
        EXPECT_EQ(r(nullptr, &count, 1.0), nullptr);
        EXPECT_EQ(count, 5u);
        GeomPoint one[1] = {pt(1, 2, 3, 1)};
        EXPECT_EQ(r(one, nullptr, 1.0), one);
        count = 0;
        EXPECT_EQ(r(one, &count, 1.0), one);
        EXPECT_EQ(count, 0u);
        count = 1;
        r(one, &count, 1.0);
        EXPECT_EQ(count, 1u);
        // Points already marked processed by the caller are compacted away.
        GeomPoint marked[2] = {pt(0, 0, 0, 2), pt(9, 9, 0, 1)};
        count = 2;
        r(marked, &count, 1.0);
        ASSERT_EQ(count, 1u);
        EXPECT_EQ(marked[0].x, 9.0);
    }
}

std::vector<GeomPoint> bend(double degrees, uint32_t last_flags = 1) {
    const double rad = degrees * std::acos(-1.0) / 180.0;
    return {pt(0, 0), pt(1, 0), pt(1 + std::cos(rad), std::sin(rad), 0, last_flags)};
}

TEST(GeomReduceByAngle, SmallBendsGoCollinearPointsStay) {
    // A 1 degree bend: degrees in 3D, radians in 2D.
    EXPECT_EQ(reduce(vexo_geom_reduce_by_angle, bend(1), 5.0).size(), 2u);
    EXPECT_EQ(reduce(vexo_geom_reduce_by_angle_2d, bend(1), 0.0873).size(), 2u);
    EXPECT_EQ(reduce(vexo_geom_reduce_by_angle_2d, bend(1), 0.01).size(), 3u);
    EXPECT_EQ(reduce(vexo_geom_reduce_by_angle, bend(1), 0.0873).size(), 3u);
    EXPECT_EQ(reduce(vexo_geom_reduce_by_angle, bend(10), 5.0).size(), 3u);
    // Collinear, axis-aligned: angle 0 is never below the limit.
    const std::vector<GeomPoint> straight = {pt(0, 0), pt(1, 0), pt(2, 0, 0, 1)};
    EXPECT_EQ(reduce(vexo_geom_reduce_by_angle, straight, 90.0).size(), 3u);
    EXPECT_EQ(reduce(vexo_geom_reduce_by_angle_2d, straight, 1.5).size(), 3u);
    const std::vector<GeomPoint> vertical = {pt(0, 0, 0), pt(0, 0, 1), pt(0, 0, 2, 1)};
    EXPECT_EQ(reduce(vexo_geom_reduce_by_angle, vertical, 90.0).size(), 3u);
}

TEST(GeomReduceByAngle, AngleScaleUsesSinglePrecisionPi) {
    // A right angle measures acos(0) * 0.5 / pi_f * 360, a hair under 90.
    const double right = std::acos(0.0) * 0.5 / vexo::kPiF * 360.0;
    ASSERT_LT(right, 90.0);
    EXPECT_EQ(reduce(vexo_geom_reduce_by_angle, bend(90), right).size(), 3u);
    EXPECT_EQ(reduce(vexo_geom_reduce_by_angle, bend(90), 90.0).size(), 2u);
    // A full reversal: 3D measures acos(-1) in degrees, just under 180.
    const std::vector<GeomPoint> back = {pt(0, 0), pt(1, 0), pt(0, 0, 0, 1)};
    EXPECT_EQ(reduce(vexo_geom_reduce_by_angle, back, 180.0).size(), 2u);
    // 2D takes a reversal as pi_f exactly, with no positive-angle test.
    EXPECT_EQ(reduce(vexo_geom_reduce_by_angle_2d, back, vexo::kPiF).size(), 3u);
    EXPECT_EQ(reduce(vexo_geom_reduce_by_angle_2d, back, std::nextafter(vexo::kPiF, 4.0)).size(),
              2u);
}

TEST(GeomReduceByAngle, DegenerateLegsDifferBetweenVariants) {
    // A repeated point: undefined in 3D (kept), a right angle in 2D.
    const std::vector<GeomPoint> repeated = {pt(0, 0), pt(0, 0), pt(1, 1, 0, 1)};
    EXPECT_EQ(reduce(vexo_geom_reduce_by_angle, repeated, 179.0).size(), 3u);
    EXPECT_EQ(reduce(vexo_geom_reduce_by_angle_2d, repeated, 1.5).size(), 3u);
    EXPECT_EQ(reduce(vexo_geom_reduce_by_angle_2d, repeated, 1.6).size(), 2u);
    // Components below 1e-7 vanish in 2D: a bend of 5e-8 is straight there,
    // while 3D sees a tiny positive angle and drops the point.
    const std::vector<GeomPoint> tiny = {pt(0, 0), pt(1, 0), pt(2, 5e-8, 0, 1)};
    EXPECT_EQ(reduce(vexo_geom_reduce_by_angle_2d, tiny, 1.0).size(), 3u);
    EXPECT_EQ(reduce(vexo_geom_reduce_by_angle, tiny, 1.0).size(), 2u);
}

TEST(GeomReduceByAngle, WalksAcrossLineEndsAndDots) {
    // A straight line, a dot, a gently bent line: only the bent line's
    // middle goes; ends and the dot stay, order is kept.
    const std::vector<GeomPoint> pts = {pt(0, 0),       pt(1, 0), pt(2, 0, 0, 1),
                                        pt(9, 9, 0, 1), pt(3, 5), pt(4, 5),
                                        pt(5, 5.01, 0, 1)};
    const std::vector<Xy> expected = {{0, 0, 0}, {1, 0, 0},    {2, 0, 1},   {9, 9, 1},
                                      {3, 5, 0}, {5, 5.01, 1}};
    expect_kept(reduce(vexo_geom_reduce_by_angle, pts, 5.0), expected);
    expect_kept(reduce(vexo_geom_reduce_by_angle_2d, pts, 0.0873), expected);

    // When the first line loses a point, the anchor trails its middle by
    // two and the walk crosses the ends with that gap: the next line's
    // middle is never looked at and stays.
    std::vector<GeomPoint> both_bent = pts;
    both_bent[2].y = 0.01;
    expect_kept(reduce(vexo_geom_reduce_by_angle, both_bent, 5.0),
                {{0, 0, 0}, {2, 0.01, 1}, {9, 9, 1}, {3, 5, 0}, {4, 5, 0}, {5, 5.01, 1}});
}

TEST(GeomReduceByAngle, AnchorStaysWhileTheTurnAccumulates) {
    // An arc of 1 degree steps: the anchor stays on the last kept point, so
    // turns add up until they reach the limit and a point is kept.
    std::vector<GeomPoint> arc;
    double heading = 0.0, x = 0.0, y = 0.0;
    for (int i = 0; i < 40; ++i) {
        arc.push_back(pt(x, y));
        x += std::cos(heading);
        y += std::sin(heading);
        heading += std::acos(-1.0) / 180.0;
    }
    arc.back().flags = 1;
    const std::vector<Xy> kept = reduce(vexo_geom_reduce_by_angle, arc, 5.0);
    EXPECT_GT(kept.size(), 4u);
    EXPECT_LT(kept.size(), 20u);
    EXPECT_EQ(kept.front().x, 0.0);
    EXPECT_EQ(kept.back().x, arc.back().x);
    EXPECT_EQ(kept.back().flags, 1u);
    for (size_t i = 1; i < kept.size(); ++i)
        EXPECT_GT(kept[i].x, kept[i - 1].x);
}

} // namespace
