// SPDX-License-Identifier: MIT
// Polygon clipping checked against area arithmetic, bounds, path counts and heights.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <vector>

#include "vexo_test_util.hpp"

namespace {

using vexo_test::point;
using vexo_test::rect;
using vexo_test::operator+;
using Pts = std::vector<GeomPoint>;
using Box = std::vector<double>; // x0, y0, x1, y1
using Handle = std::unique_ptr<ClipHandle, decltype(&vexo_clip_release)>;
constexpr uint32_t kBad = VEXO_ERROR_INVALID_PARAMETER, kEnd = VEXO_POINT_END;
constexpr uint32_t kUnion = VEXO_CLIP_UNION, kDiff = VEXO_CLIP_DIFFERENCE, k2D = VEXO_CLIP_2D;
constexpr uint32_t kMiter = VEXO_CLIP_JOIN_MITER, kRound = VEXO_CLIP_JOIN_ROUND,
                   kSquare = VEXO_CLIP_JOIN_SQUARE;
constexpr double kNan = NAN, kInf = INFINITY;

Handle make(const Pts &p, uint32_t mode = 0) {
    return Handle(vexo_clip_create(p.data(), uint32_t(p.size()), mode), vexo_clip_release);
}
uint32_t bool_op(const Handle &h, const Pts &p, uint32_t mode) {
    return vexo_clip_bool(h.get(), p.data(), uint32_t(p.size()), mode);
}
Pts fetch(const Handle &h, bool subject = false) { // get_result, or get_subject
    uint32_t n = 0;
    vexo_test::Points block((subject ? vexo_clip_get_subject : vexo_clip_get_result)(h.get(), &n));
    return Pts(block.get(), block.get() + n);
}
bool no_result(const Handle &h) {
    uint32_t n = 7;
    return !vexo_clip_get_result(h.get(), &n) && !n;
}
bool same(const Pts &a, const Pts &b) { // the reserved field is zero on both sides
    return a.size() == b.size() && (a.empty() || vexo_test::same_bytes(a[0], b[0], a.size()));
}
bool all_z(const Pts &a, double z) {
    return std::all_of(a.begin(), a.end(), [z](const GeomPoint &p) { return p.z == z; });
}
// Path count; 99 unless each path closes, after 3+ vertices, with a flagged copy of its start.
size_t paths(const Pts &a) {
    size_t n = 0;
    for (size_t i = 0, start = 0; i < a.size(); ++i)
        if (a[i].flags != 0) {
            const bool closed = a[i].x == a[start].x && a[i].y == a[start].y && i >= start + 3;
            n = closed && a[i].flags == kEnd && n != 99 ? n + 1 : 99, start = i + 1;
        }
    return a.empty() || a.back().flags ? n : 99;
}
double area(const Pts &a) { // shoelace over every path; holes run clockwise
    double twice = 0.0;
    for (size_t i = 0; i + 1 < a.size(); ++i)
        twice += (a[i].flags & kEnd) ? 0.0 : a[i].x * a[i + 1].y - a[i + 1].x * a[i].y;
    return twice / 2.0;
}
Box bounds(const Pts &a) {
    Box b{kInf, kInf, -kInf, -kInf};
    for (const GeomPoint &p : a)
        b = {std::min(b[0], p.x), std::min(b[1], p.y), std::max(b[2], p.x), std::max(b[3], p.y)};
    return b;
}

} // namespace

TEST(ClipConvert, TruncatesTowardZeroAndRefusesOffGridValues) {
    // x, y, z: x1000 truncated toward zero and back, closed; 2D zeroes z; stable.
    const Pts a = {point(1.0009, -1.0009, 2.0009), point(-0.0009, 0.0019, -2.0009),
                   point(123.4567899, -0.9999), point(0, 0, 0, kEnd)};
    const Pts once = fetch(make(a), true);
    EXPECT_TRUE(same(once, {point(1, -1, 2), point(0, 0.001, -2), point(123.456, -0.999),
                            point(1, -1, 2, kEnd)}));
    EXPECT_TRUE(same(fetch(make(once), true), once));
    EXPECT_TRUE(all_z(fetch(make(a, k2D), true), 0.0));
    // x*1000 must lie in int64; the last point is never read.
    auto h = make(rect(0, 0, 10, 10));
    for (double v : {kNan, kInf, -kInf, 1e16, -1e300, 9223372036854775.808})
        for (int axis = 0; axis < 3; ++axis) {
            Pts b = rect(0, 0, 1, 1);
            (axis == 0 ? b[1].x : axis == 1 ? b[1].y : b[1].z) = b[4].x = v;
            const bool flat = axis == 2; // 2D reads no z
            EXPECT_FALSE(make(b)) << v << axis;
            EXPECT_EQ(bool(make(b, k2D)), flat) << v << axis;
            EXPECT_EQ(bool_op(h, b, kUnion), kBad) << v << axis;
            EXPECT_EQ(bool_op(h, b, kUnion | k2D), (flat ? VEXO_OK : kBad)) << v << axis;
        }
}

TEST(ClipHeight, SubjectPathZeroByIndexThenFallback) {
    // Heights a 3D Clipper keeps on the union: (10, 5) is new (0); at (10, 10) the subject wins.
    const std::map<std::pair<double, double>, double> z = {
        {{0, 0}, 1},  {{10, 0}, 2},  {{10, 10}, 3}, {{0, 10}, 4},
        {{15, 5}, 9}, {{15, 15}, 9}, {{10, 5}, 0}};
    const auto at = [&](const GeomPoint &p) { return z.at({p.x, p.y}); };
    const Pts stepped = {point(0, 0, 1), point(10, 0, 2), point(10, 10, 3), point(0, 10, 4),
                         point(0, 0, 1, kEnd)};
    auto h = make(stepped);
    ASSERT_EQ(bool_op(h,
                      {point(5, 5, 9), point(15, 5, 9), point(15, 15, 9), point(10, 10, 9),
                       point(5, 5, 9, kEnd)},
                      kUnion),
              VEXO_OK);
    const Pts out = fetch(h);
    ASSERT_EQ(out.size(), 8u);
    for (size_t i = 0; i < 8; ++i) // path 0 has 4 points; then the result's first vertex
        EXPECT_EQ(out[i].z, i < 4 ? i + 1.0 : i == 7 ? 1.0 : at(out[0])) << i;
    // As the subject (also after a zero offset) each vertex shows its own z.
    auto zero = make(stepped);
    ASSERT_EQ(vexo_clip_outline(zero.get(), kMiter, 0.0), VEXO_OK);
    ASSERT_EQ(vexo_clip_set_solution(zero.get()), VEXO_OK);
    ASSERT_EQ(vexo_clip_set_solution(h.get()), VEXO_OK);
    for (const GeomPoint &p : fetch(h, true) + fetch(zero, true))
        EXPECT_EQ(p.z, at(p)) << p.x << "," << p.y;
}

TEST(ClipBool, AreasPathCountsAndSetSolution) {
    const Pts sq = rect(0, 0, 10, 10), corner = rect(5, 5, 15, 15), hole = rect(3, 3, 7, 7);
    const Pts dots = {point(1, 1), point(2, 2), point(3, 3, 0, kEnd)}; // under 3 vertices
    const Pts lone = {point(50, 50, 6)};                               // an empty path 0
    const struct {
        Pts subject, operand;
        uint32_t mode;
        size_t paths;
        double area;
    } cases[] = {{sq, corner, kUnion, 1, 100 + 100 - 25},
                 {sq, rect(20, 0, 30, 10), kUnion, 2, 200},
                 {sq, rect(2, 2, 4, 4), kUnion, 1, 100},
                 {sq, dots, kUnion, 1, 100},
                 {sq, corner, kDiff, 1, 75},
                 {sq, hole, kDiff, 2, 84},
                 {sq, sq + hole, kDiff, 1, 16},
                 {rect(2, 2, 4, 4), sq, kDiff, 0, 0},
                 {lone, rect(0, 0, 2, 2), kUnion, 1, 4},
                 {rect(0, 0, 9, 4), rect(4, -1, 6, 5), kDiff, 2, 28},
                 {sq, corner, k2D, 0, 0},                          // no op
                 {sq + hole, rect(4, 4, 6, 6), kUnion, 3, 84 + 4}, // even-odd ring: 100 - 16
                 {sq + hole, rect(-1, 4, 11, 6), kDiff, 2, 84 - 12},
                 {sq, corner, kUnion | kDiff, 1, 175}}; // union wins
    for (size_t k = 0; k < std::size(cases); ++k) {
        const auto &c = cases[k];
        auto h = make(c.subject); // the operation runs twice: a result replaces the last
        const Pts subject = fetch(h, true);
        ASSERT_EQ(bool_op(h, c.operand, c.mode), VEXO_OK) << k;
        ASSERT_EQ(bool_op(h, c.operand, c.mode), VEXO_OK) << k;
        const Pts out = fetch(h);
        EXPECT_EQ(paths(out), c.paths) << k;
        EXPECT_NEAR(area(out), c.area, 1e-9) << k;
        EXPECT_TRUE(same(fetch(h, true), subject)) << k; // then the result takes its place
        EXPECT_EQ(vexo_clip_set_solution(h.get()), c.paths ? VEXO_OK : kBad) << k;
        EXPECT_TRUE(same(fetch(h, true), c.paths ? out : subject)) << k;
        EXPECT_TRUE(no_result(h)) << k;
    }
}

TEST(ClipHandle, RefusedArgumentsChangeNothing) {
    const Pts sq = rect(0, 0, 10, 10, 1.0);
    EXPECT_FALSE(vexo_clip_create(nullptr, 5, 0));
    EXPECT_FALSE(vexo_clip_create(sq.data(), 0, 0));
    auto h = make(sq), far = make(rect(0, 0, 4.7e15, 10));
    for (auto get : {vexo_clip_get_result, vexo_clip_get_subject}) {
        uint32_t n = 42;
        EXPECT_FALSE(get(nullptr, &n));
        EXPECT_EQ(n, 0);
        EXPECT_FALSE(get(h.get(), nullptr));
    }
    EXPECT_FALSE(vexo_clip_copy_solution(h.get()));
    EXPECT_FALSE(vexo_clip_copy_solution(nullptr));
    ASSERT_EQ(vexo_clip_copy_subject(h.get()), VEXO_OK); // a result equal to the subject
    const uint32_t statuses[] = {
        vexo_clip_bool(nullptr, sq.data(), 5, kUnion),
        vexo_clip_bool(h.get(), nullptr, 5, kUnion),
        vexo_clip_bool(h.get(), sq.data(), 0, kUnion),
        vexo_clip_outline(nullptr, kMiter, 1.0),
        vexo_clip_set_solution(nullptr),
        vexo_clip_copy_subject(nullptr),
        bool_op(h, rect(0, 0, -4.7e15, 1), kUnion), // beyond Clipper's range, yet in int64
        bool_op(far, sq, kUnion),
        vexo_clip_outline(far.get(), kRound, 1.0)};
    for (size_t i = 0; i < std::size(statuses); ++i) EXPECT_EQ(statuses[i], kBad) << i;
    for (uint32_t mode : {0u, 8u, 0x10u, 0x18u, 0xFFFFFFF8u})
        EXPECT_EQ(vexo_clip_outline(h.get(), mode, 1.0), kBad) << mode;
    for (double d : {kNan, kInf, -kInf, 1.0e11, -2.0e10})
        EXPECT_EQ(vexo_clip_outline(h.get(), kRound, d), kBad) << d;
    EXPECT_TRUE(same(fetch(h, true), sq));
    EXPECT_TRUE(same(fetch(h), sq));
    EXPECT_EQ(vexo_clip_outline(h.get(), kMiter, 1.0e10), VEXO_OK); // the largest distance
    EXPECT_EQ(bounds(fetch(h)), (Box{-1e10, -1e10, 1e10 + 10, 1e10 + 10}));
}

TEST(ClipHandle, CopySubjectAndCopySolution) {
    // Cut at each flag, the last point never read; path 1 outruns path 0: its first z.
    const Pts tri = {point(0, 0, 2), point(4, 0, 2), point(0, 4, 2, kEnd)};
    auto h = make(tri + rect(20, 0, 25, 5, 6, 0));
    ASSERT_EQ(vexo_clip_copy_subject(h.get()), VEXO_OK);
    const Pts copied = fetch(h);
    EXPECT_TRUE(same(copied, fetch(h, true)));
    EXPECT_EQ(copied.size(), 4 + 5);
    EXPECT_TRUE(all_z(copied, 2.0));
    ASSERT_EQ(bool_op(h, rect(-1, -1, 30, 1), kDiff), VEXO_OK);
    Handle copy(vexo_clip_copy_solution(h.get()), vexo_clip_release); // outlives the original
    h.reset();
    const Pts taken = fetch(copy, true);
    EXPECT_EQ(paths(taken), 2);
    EXPECT_TRUE(no_result(copy));
    EXPECT_NEAR(area(taken), 4.5 + 20.0, 1e-9);
}

TEST(ClipOutline, AreasBoundsAndPathCountsPerJoin) {
    const Pts sq = rect(0, 0, 10, 10), tri = {point(0, 0), point(10, 0), point(0, 10), point(0, 0)};
    const double r2 = std::sqrt(2.0), round = 100.0 + 40.0 + M_PI;
    const Box grown = {-1, -1, 11, 11}, shrunk = {1, 1, 9, 9}, none = {kInf, kInf, -kInf, -kInf};
    struct {
        Pts in;
        uint32_t join;
        double by;
        size_t paths;
        double area, tol;
        Box box;
    } rows[] = {
        {sq, kMiter, 1, 1, 144, 0, grown},      // right angles within the miter limit 2
        {sq, kRound, 1, 1, round, 2e-3, grown}, // quarter circles by inscribed chords
        {sq, kSquare, 1, 1, 144 - 4 * (r2 - 1) * (r2 - 1), 2e-3, grown}, // cut on the bisector
        {sq, kMiter | kRound, 1, 1, 144, 0, grown}, // joins tried miter, round, square
        {sq, kRound | kSquare | 0x18u, 1, 1, round, 2e-3, grown},
        {sq, kMiter, -1, 1, 64, 0, shrunk},
        {sq, kRound, -1, 1, 64, 0, shrunk},
        {sq, kSquare, -1, 1, 64, 0, shrunk},
        {sq, kSquare, -6, 0, 0, 0, none},
        // Holes go by orientation: clockwise shrinks, counter-clockwise is swallowed.
        {sq + rect(3, 7, 7, 3), kMiter, 1, 2, 144 - 4, 0, grown},
        {sq + rect(3, 3, 7, 7), kMiter, 1, 1, 144, 0, grown},
        // 45-degree corners: beyond the miter limit 2, cut square at 1 along the bisector.
        {tri, kMiter, 1, 1, 87.8149, 0.02, {-1, -1, 11.18, 11.18}}}; // 11.1796 on the grid
    for (size_t k = 0; k < std::size(rows); ++k) {
        const auto &c = rows[k];
        auto h = make(c.in);
        ASSERT_EQ(vexo_clip_outline(h.get(), c.join, c.by), VEXO_OK) << k;
        const Pts out = fetch(h);
        EXPECT_EQ(paths(out), c.paths) << k;
        EXPECT_LE(std::fabs(area(out) - c.area), c.tol + 1e-9) << k;
        EXPECT_EQ(bounds(out), c.box) << k;
    }
}
