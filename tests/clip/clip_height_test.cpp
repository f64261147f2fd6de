// Heights: results take z from subject path 0 by index; the handle keeps the
// z of every vertex so chained operations see what a 3D Clipper kept.
#include <gtest/gtest.h>

#include <map>
#include <utility>

#include "clip_support.hpp"

using namespace cliptest;

namespace {

// Subject square with a different height at each corner.
std::vector<GeomPoint> stepped_square() {
    return {pt(0, 0, 1), pt(10, 0, 2), pt(10, 10, 3), pt(0, 10, 4), pt(0, 0, 1, 1)};
}

using Heights = std::map<std::pair<double, double>, double>;

// Expected height of a vertex: the subject's vertex there, else the
// operand's, else 0 (a point Clipper made).
double vertex_height(double x, double y, const Heights &subject, const Heights &operand) {
    const auto key = std::make_pair(x, y);
    if (subject.count(key))
        return subject.at(key);
    if (operand.count(key))
        return operand.at(key);
    return 0.0;
}

} // namespace

TEST(ClipHeight, ResultTakesSubjectPathZeroByIndex) {
    auto h = make(stepped_square());
    ASSERT_EQ(bool_op(h.get(), rect(5, 5, 15, 15, 9.0), VEXO_CLIP_UNION), VEXO_OK);
    const auto out = result_of(h.get());
    ASSERT_EQ(out.size(), 9u); // eight corners of the union and the closing copy

    const Heights subject = {{{0, 0}, 1}, {{10, 0}, 2}, {{10, 10}, 3}, {{0, 10}, 4}};
    const Heights operand = {{{5, 5}, 9}, {{15, 5}, 9}, {{15, 15}, 9}, {{5, 15}, 9}};
    // Beyond index 3 subject path 0 has no point: the height of the result's
    // first vertex is used.
    const double fallback = vertex_height(out[0].x, out[0].y, subject, operand);
    for (size_t i = 0; i < 8; ++i)
        EXPECT_EQ(out[i].z, i < 4 ? double(i + 1) : fallback) << i;
    EXPECT_EQ(out[8].z, 1.0); // closing record: subject path 0, point 0

    // Chained: the union becomes the subject and each vertex shows its own
    // height: subject corners theirs, operand corners 9, crossings 0.
    ASSERT_EQ(vexo_clip_set_solution(h.get()), VEXO_OK);
    const auto chained = subject_of(h.get());
    ASSERT_EQ(chained.size(), 9u);
    size_t crossings = 0;
    for (size_t i = 0; i < 8; ++i) {
        const double want = vertex_height(chained[i].x, chained[i].y, subject, operand);
        EXPECT_EQ(chained[i].z, want) << chained[i].x << "," << chained[i].y;
        crossings += want == 0.0;
    }
    EXPECT_EQ(crossings, 2u); // (10,5) and (5,10)
    EXPECT_EQ(chained[8].z, chained[0].z);
}

TEST(ClipHeight, SubjectWinsASharedVertex) {
    // The triangle touches the square's corner (10,10) with another height.
    auto h = make(rect(0, 0, 10, 10, 1.5));
    const std::vector<GeomPoint> tri = {pt(10, 10, 8), pt(20, 10, 8), pt(10, 20, 8),
                                        pt(10, 10, 8, 1)};
    ASSERT_EQ(bool_op(h.get(), tri, VEXO_CLIP_UNION), VEXO_OK);
    ASSERT_EQ(vexo_clip_set_solution(h.get()), VEXO_OK);
    // Vertices of path 0 show their own heights once it is the subject.
    const auto chained = subject_of(h.get());
    EXPECT_NEAR(net_area(chained), 100.0 + 50.0, 1e-9);
    const auto first = paths_of(chained).front();
    bool seen_corner = false;
    for (size_t i = 0; i + 1 < first.size(); ++i) {
        if (first[i].x == 10 && first[i].y == 10) {
            EXPECT_EQ(first[i].z, 1.5);
            seen_corner = true;
        }
        if (first[i].x == 20 || first[i].y == 20) {
            EXPECT_EQ(first[i].z, 8.0);
        }
    }
    EXPECT_TRUE(seen_corner);
}

TEST(ClipHeight, EmptySubjectPathFallsBackToResult) {
    // A one-point array gives an empty path 0, so every height comes from the
    // result's first vertex, here an operand corner.
    const GeomPoint lone = pt(50, 50, 6);
    auto h = Handle(vexo_clip_create(&lone, 1, 0));
    ASSERT_TRUE(h);
    uint32_t n = 9;
    EXPECT_EQ(vexo_clip_get_subject(h.get(), &n), nullptr);
    EXPECT_EQ(n, 0u);
    ASSERT_EQ(bool_op(h.get(), rect(0, 0, 2, 2, 7.0), VEXO_CLIP_UNION), VEXO_OK);
    const auto out = result_of(h.get());
    ASSERT_EQ(out.size(), 5u);
    for (const GeomPoint &p : out)
        EXPECT_EQ(p.z, 7.0);
}

TEST(ClipHeight, FlatModeAndOutlines) {
    // 2D conversion drops heights everywhere.
    auto flat = make(rect(0, 0, 10, 10, 3.0), VEXO_CLIP_2D);
    ASSERT_EQ(bool_op(flat.get(), rect(5, 5, 15, 15, 4.0), VEXO_CLIP_UNION | VEXO_CLIP_2D),
              VEXO_OK);
    for (const GeomPoint &p : result_of(flat.get()))
        EXPECT_EQ(p.z, 0.0);

    // An outline builds new points at height 0; the result still shows
    // subject path 0's heights by index, and the fallback (the result's own
    // first vertex) is 0.
    auto h = make(rect(0, 0, 10, 10, 3.0));
    ASSERT_EQ(vexo_clip_outline(h.get(), VEXO_CLIP_JOIN_ROUND, 1.0), VEXO_OK);
    const auto out = result_of(h.get());
    ASSERT_GT(out.size(), 8u);
    for (size_t i = 0; i + 1 < out.size(); ++i)
        EXPECT_EQ(out[i].z, i < 4 ? 3.0 : 0.0) << i;
    EXPECT_EQ(out.back().z, 3.0);
    ASSERT_EQ(vexo_clip_set_solution(h.get()), VEXO_OK);
    for (const GeomPoint &p : subject_of(h.get()))
        EXPECT_EQ(p.z, 0.0);

    // A zero offset hands the contour back with its own heights.
    auto same = make(stepped_square());
    ASSERT_EQ(vexo_clip_outline(same.get(), VEXO_CLIP_JOIN_MITER, 0.0), VEXO_OK);
    ASSERT_EQ(vexo_clip_set_solution(same.get()), VEXO_OK);
    const auto back = subject_of(same.get());
    ASSERT_EQ(back.size(), 5u);
    EXPECT_NEAR(net_area(back), 100.0, 1e-9);
    for (const GeomPoint &p : back) {
        const double want = p.x == 0 ? (p.y == 0 ? 1 : 4) : (p.y == 0 ? 2 : 3);
        if (!(p.flags & VEXO_POINT_END)) {
            EXPECT_EQ(p.z, want) << p.x << "," << p.y;
        }
    }
}
