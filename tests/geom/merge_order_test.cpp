// SPDX-License-Identifier: MIT
// Joining pieces and ordering polylines for travel: the segments survive as
// a multiset, no free ends are left within tolerance, and the order is
// checked against brute force (small) and a plain nearest-first tour.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>
#include <tuple>
#include <vector>

#include "vexo_test_util.hpp"

using namespace vexo_test;

namespace {

using Line = std::vector<GeomPoint>;

std::vector<GeomPoint> flatten(const std::vector<Line> &lines) {
    std::vector<GeomPoint> pts;
    for (const Line &l : lines) {
        pts.insert(pts.end(), l.begin(), l.end());
        pts.back().flags |= VEXO_POINT_END;
    }
    return pts;
}

struct Out {
    uint32_t status;
    std::vector<Line> lines;
    std::vector<GeomPoint> points;
};

Out merge(const std::vector<Line> &in, double tol, uint32_t options = 0,
          const GeomPoint *start = nullptr) {
    const std::vector<GeomPoint> pts = flatten(in);
    uint32_t n = 0, status = 0;
    GeomPoint *block =
        vexo_geom_merge_lines(pts.data(), uint32_t(pts.size()), tol, options, start, &n, &status);
    const std::vector<GeomPoint> out = take(block, n);
    return {status, polylines(out), out};
}

Out order(const std::vector<Line> &in, uint32_t options, const GeomPoint *start) {
    const std::vector<GeomPoint> pts = flatten(in);
    uint32_t n = 0, status = 0;
    GeomPoint *block =
        vexo_geom_order_lines(pts.data(), uint32_t(pts.size()), options, start, &n, &status);
    const std::vector<GeomPoint> out = take(block, n);
    return {status, polylines(out), out};
}

using Segment = std::tuple<double, double, double, double>;

std::vector<Segment> segments(const std::vector<Line> &lines) {
    std::vector<Segment> s;
    for (const Line &l : lines)
        for (size_t i = 0; i + 1 < l.size(); ++i) {
            Segment a{l[i].x, l[i].y, l[i + 1].x, l[i + 1].y};
            Segment b{l[i + 1].x, l[i + 1].y, l[i].x, l[i].y};
            s.push_back(std::min(a, b));
        }
    std::sort(s.begin(), s.end());
    return s;
}

// Random open paths, cut into pieces that are shuffled and some reversed.
std::vector<Line> broken_paths(std::mt19937 &rng, int paths, int pieces_per_path) {
    std::uniform_real_distribution<double> coord(-100, 100), step(-1, 1);
    std::vector<Line> pieces;
    for (int p = 0; p < paths; ++p) {
        GeomPoint q = point(coord(rng), coord(rng));
        for (int k = 0; k < pieces_per_path; ++k) {
            Line piece{q};
            const int n = 1 + int(rng() % 3);
            for (int i = 0; i < n; ++i) {
                q = point(q.x + step(rng), q.y + step(rng));
                piece.push_back(q);
            }
            if (rng() % 2) std::reverse(piece.begin(), piece.end());
            pieces.push_back(piece);
        }
    }
    std::shuffle(pieces.begin(), pieces.end(), rng);
    return pieces;
}

double jumps(const std::vector<Line> &lines, double x, double y) {
    double total = 0.0;
    for (const Line &l : lines) {
        total += std::hypot(l.front().x - x, l.front().y - y);
        x = l.back().x;
        y = l.back().y;
    }
    return total;
}

TEST(Merge, KeepsTheMultisetOfSegments) {
    std::mt19937 rng(7);
    const std::vector<Line> pieces = broken_paths(rng, 40, 6);
    const Out out = merge(pieces, 0.0);
    ASSERT_EQ(out.status, VEXO_OK);
    EXPECT_EQ(segments(out.lines), segments(pieces));
    EXPECT_EQ(out.lines.size(), 40u);
}

TEST(Merge, LeavesNoFreeEndsWithinTolerance) {
    std::mt19937 rng(11);
    std::vector<Line> pieces = broken_paths(rng, 30, 8);
    std::normal_distribution<double> jitter(0.0, 2e-4);
    for (Line &l : pieces) // ends that almost meet
        for (GeomPoint &p : l) p.x += jitter(rng), p.y += jitter(rng);
    const double tol = 5e-3;
    const Out out = merge(pieces, tol);
    ASSERT_EQ(out.status, VEXO_OK);
    std::vector<GeomPoint> ends;
    for (const Line &l : out.lines) ends.push_back(l.front()), ends.push_back(l.back());
    for (size_t i = 0; i < ends.size(); ++i)
        for (size_t j = i + 1; j < ends.size(); ++j)
            if (i / 2 != j / 2) {
                EXPECT_GT(std::hypot(ends[i].x - ends[j].x, ends[i].y - ends[j].y), tol)
                    << "ends " << i << " and " << j;
            }
    EXPECT_EQ(out.lines.size(), 30u);
}

TEST(Merge, JoinsWithinToleranceOnly) {
    const std::vector<Line> pieces = {{point(0, 0), point(1, 0)}, {point(2, 0), point(1.0001, 0)}};
    const Out joined = merge(pieces, 1e-3);
    ASSERT_EQ(joined.lines.size(), 1u);
    // The joint is the first piece's end; the second piece runs reversed.
    EXPECT_EQ(coords(joined.lines[0]), (std::vector<Xyz>{{0, 0, 0}, {1, 0, 0}, {2, 0, 0}}));
    EXPECT_EQ(merge(pieces, 9e-5).lines.size(), 2u);
}

TEST(Merge, EndFlagsMarkEachLastPointOnly) {
    std::vector<Line> pieces = {
        {point(0, 0, 0, 0x40), point(1, 0, 0, 0x44)}, {point(1, 0), point(2, 0)}, {point(5, 5)}};
    EXPECT_EQ(flags_of(merge(pieces, 0.0).points), (std::vector<uint32_t>{0x40, 0x40, 5, 5}));
}

TEST(Merge, ClosesLoopsAndKeepsDots) {
    const std::vector<Line> pieces = {{point(0, 0), point(1, 0)},
                                      {point(1, 1), point(0, 1)},
                                      {point(7, 7)},
                                      {point(1, 0), point(1, 1)},
                                      {point(0, 0), point(0, 1)}};
    const Out out = merge(pieces, 0.0);
    ASSERT_EQ(out.lines.size(), 2u);
    EXPECT_EQ(xyz(out.lines[0][0]), (Xyz{7, 7, 0})); // loops come after open lines and dots
    EXPECT_EQ(coords(out.lines[1]),
              (std::vector<Xyz>{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0, 0, 0}}));
}

TEST(Merge, BadInputGivesAStatus) {
    const std::vector<GeomPoint> pts = flatten({{point(0, 0), point(1, 0)}});
    uint32_t n = 9, status = 0;
    EXPECT_EQ(vexo_geom_merge_lines(pts.data(), 2, -1.0, 0, nullptr, &n, &status), nullptr);
    EXPECT_EQ(status, VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_geom_merge_lines(pts.data(), 2, NAN, 0, nullptr, &n, &status), nullptr);
    EXPECT_EQ(status, VEXO_ERROR_INVALID_PARAMETER);
    const GeomPoint bad = point(NAN, 0);
    EXPECT_EQ(vexo_geom_merge_lines(pts.data(), 2, 0.0, VEXO_MERGE_ORDER, &bad, &n, &status),
              nullptr);
    EXPECT_EQ(status, VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_geom_merge_lines(nullptr, 2, 0.0, 0, nullptr, &n, &status), nullptr);
    EXPECT_EQ(status, VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(n, 0u);
    EXPECT_EQ(vexo_geom_order_lines(pts.data(), 2, 0, nullptr, nullptr, &status), nullptr);
    EXPECT_EQ(status, VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_geom_order_lines(pts.data(), 0, 0, nullptr, &n, &status), nullptr);
    EXPECT_EQ(status, VEXO_ERROR_NO_RESULT);
}

// Shortest total jump over every order and direction, written out.
double brute_force(const std::vector<Line> &lines, double x0, double y0) {
    std::vector<int> idx(lines.size());
    std::iota(idx.begin(), idx.end(), 0);
    double best = INFINITY;
    do {
        for (unsigned dirs = 0; dirs < (1u << lines.size()); ++dirs) {
            double x = x0, y = y0, total = 0.0;
            for (size_t k = 0; k < idx.size(); ++k) {
                const Line &l = lines[idx[k]];
                const bool rev = dirs >> k & 1;
                const GeomPoint &in = rev ? l.back() : l.front(), &out = rev ? l.front() : l.back();
                total += std::hypot(in.x - x, in.y - y);
                x = out.x;
                y = out.y;
            }
            best = std::min(best, total);
        }
    } while (std::next_permutation(idx.begin(), idx.end()));
    return best;
}

TEST(Order, SevenPiecesAreOrderedOptimally) {
    std::mt19937 rng(3);
    std::uniform_real_distribution<double> c(0, 50);
    for (int trial = 0; trial < 3; ++trial) {
        std::vector<Line> lines;
        for (int i = 0; i < 7; ++i) lines.push_back({point(c(rng), c(rng)), point(c(rng), c(rng))});
        const GeomPoint start = point(c(rng), c(rng));
        const Out out = order(lines, 0, &start);
        ASSERT_EQ(out.status, VEXO_OK);
        EXPECT_NEAR(jumps(out.lines, start.x, start.y), brute_force(lines, start.x, start.y), 1e-9)
            << "trial " << trial;
        EXPECT_EQ(segments(out.lines), segments(lines));
    }
}

// The plain greedy tour: nearest free end first, ties to the lower number
// (first ends before last ends of the same piece), reversing where entered.
double nearest_first(std::vector<Line> lines, double x, double y) {
    std::vector<char> used(lines.size(), 0);
    double total = 0.0;
    for (size_t step = 0; step < lines.size(); ++step) {
        double best = INFINITY;
        size_t bi = 0;
        bool rev = false;
        for (size_t i = 0; i < lines.size(); ++i) {
            if (used[i]) continue;
            for (int r = 0; r < 2; ++r) {
                const GeomPoint &e = r ? lines[i].back() : lines[i].front();
                const double d = (e.x - x) * (e.x - x) + (e.y - y) * (e.y - y);
                if (d < best) best = d, bi = i, rev = r;
            }
        }
        used[bi] = 1;
        const GeomPoint &in = rev ? lines[bi].back() : lines[bi].front();
        const GeomPoint &out = rev ? lines[bi].front() : lines[bi].back();
        total += std::hypot(in.x - x, in.y - y);
        x = out.x;
        y = out.y;
    }
    return total;
}

TEST(Order, NeverLongerThanNearestFirst) {
    std::mt19937 rng(5);
    std::uniform_real_distribution<double> c(0, 100), d(-2, 2);
    std::vector<Line> lines;
    for (int i = 0; i < 400; ++i) {
        const GeomPoint a = point(c(rng), c(rng));
        lines.push_back({a, point(a.x + d(rng), a.y + d(rng))});
    }
    const GeomPoint start = point(50, 50);
    const Out out = order(lines, 0, &start);
    ASSERT_EQ(out.status, VEXO_OK);
    EXPECT_EQ(segments(out.lines), segments(lines));
    EXPECT_LE(jumps(out.lines, 50, 50), nearest_first(lines, 50, 50) + 1e-9);
}

TEST(Order, ClosedLinesStartAtTheNearestVertexWhenAllowed) {
    const Line ring = {point(10, 10), point(20, 10), point(20, 20), point(10, 20), point(10, 10)};
    const GeomPoint start = point(21, 21);
    Out out = order({ring}, VEXO_ORDER_ROTATE_CLOSED, &start);
    EXPECT_EQ(coords(out.points),
              (std::vector<Xyz>{{20, 20, 0}, {10, 20, 0}, {10, 10, 0}, {20, 10, 0}, {20, 20, 0}}));
    out = order({ring}, 0, &start);
    EXPECT_EQ(xyz(out.points[0]), (Xyz{10, 10, 0}));
}

TEST(Order, KeepDirectionNeverReverses) {
    const std::vector<Line> lines = {{point(0, 0), point(10, 0)}, {point(20, 0), point(11, 0)}};
    const GeomPoint start = point(-1, 0);
    const Out out = order(lines, VEXO_ORDER_KEEP_DIRECTION, &start);
    ASSERT_EQ(out.lines.size(), 2u);
    EXPECT_EQ(xyz(out.lines[1][0]), (Xyz{20, 0, 0}));
    const Out free = order(lines, 0, &start);
    EXPECT_EQ(xyz(free.lines[1][0]), (Xyz{11, 0, 0}));
}

TEST(Order, MergeThenOrderStartsAtThePen) {
    const std::vector<Line> pieces = {
        {point(0, 0), point(1, 0)}, {point(5, 0), point(6, 0)}, {point(1, 0), point(2, 0)}};
    const GeomPoint start = point(7, 0);
    const Out out = merge(pieces, 0.0, VEXO_MERGE_ORDER, &start);
    EXPECT_EQ(coords(out.points),
              (std::vector<Xyz>{{6, 0, 0}, {5, 0, 0}, {2, 0, 0}, {1, 0, 0}, {0, 0, 0}}));
}

// Larger than the exact limit: the nearest-first tour with its tie rule.
TEST(Order, EqualDistancesGoToTheEarlierPiece) {
    std::vector<Line> lines;
    for (int i = 0; i < 9; ++i)
        lines.push_back({point(i % 2 ? 1 : -1, 100 * i), point(i % 2 ? 1 : -1, 100 * i)});
    lines[0] = {point(-3, 0), point(-3, 1)};
    lines[1] = {point(3, 0), point(3, 1)};
    const GeomPoint start = point(0, 0.5);
    const Out out = order(lines, 0, &start);
    EXPECT_EQ(xyz(out.points[0]), (Xyz{-3, 0, 0}));
}

} // namespace
