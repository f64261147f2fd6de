// Union and difference, checked by area arithmetic and path counts.
#include <gtest/gtest.h>

#include "clip_support.hpp"

using namespace cliptest;

namespace {

struct BoolCase {
    const char *name;
    std::vector<GeomPoint> subject;
    std::vector<GeomPoint> operand;
    uint32_t mode;
    size_t paths;
    double area;
};

} // namespace

TEST(ClipBool, AreasAndPathCountsMatchArithmetic) {
    const auto ring = join(rect(0, 0, 10, 10), rect(3, 3, 7, 7)); // even-odd: 100 - 16
    const BoolCase cases[] = {
        {"overlapping union", rect(0, 0, 10, 10), rect(5, 5, 15, 15), VEXO_CLIP_UNION, 1,
         100 + 100 - 25},
        {"disjoint union", rect(0, 0, 10, 10), rect(20, 0, 30, 10), VEXO_CLIP_UNION, 2, 200},
        {"contained union", rect(0, 0, 10, 10), rect(2, 2, 4, 4), VEXO_CLIP_UNION, 1, 100},
        {"corner difference", rect(0, 0, 10, 10), rect(5, 5, 15, 15), VEXO_CLIP_DIFFERENCE,
         1, 75},
        {"hole difference", rect(0, 0, 10, 10), rect(3, 3, 7, 7), VEXO_CLIP_DIFFERENCE, 2,
         84},
        {"difference removes all", rect(2, 2, 4, 4), rect(0, 0, 10, 10),
         VEXO_CLIP_DIFFERENCE, 0, 0},
        {"split in two", rect(0, 0, 10, 4), rect(4, -1, 6, 5), VEXO_CLIP_DIFFERENCE, 2, 32},
        {"ring subject union", ring, rect(4, 4, 6, 6), VEXO_CLIP_UNION, 3, 84 + 4},
        {"ring minus bar", ring, rect(-1, 4, 11, 6), VEXO_CLIP_DIFFERENCE, 2, 84 - 2 * 3 * 2},
        {"ring operand", rect(0, 0, 10, 10), ring, VEXO_CLIP_DIFFERENCE, 1, 16},
        {"union beats difference", rect(0, 0, 10, 10), rect(5, 5, 15, 15),
         VEXO_CLIP_UNION | VEXO_CLIP_DIFFERENCE, 1, 175},
        {"height flag only", rect(0, 0, 10, 10), rect(5, 5, 15, 15), VEXO_CLIP_2D, 0, 0},
    };
    for (const BoolCase &c : cases) {
        SCOPED_TRACE(c.name);
        auto h = make(c.subject);
        ASSERT_TRUE(h);
        ASSERT_EQ(bool_op(h.get(), c.operand, c.mode), VEXO_OK);
        const auto out = result_of(h.get());
        EXPECT_EQ(paths_of(out).size(), c.paths);
        EXPECT_NEAR(net_area(out), c.area, 1e-9);
        // Every path closed by a flagged copy of its first point, nothing
        // else flagged.
        for (const auto &path : paths_of(out)) {
            ASSERT_GE(path.size(), 4u);
            for (size_t i = 0; i + 1 < path.size(); ++i)
                EXPECT_EQ(path[i].flags, 0u);
            EXPECT_EQ(path.back().flags, VEXO_POINT_END);
            EXPECT_EQ(path.back().x, path.front().x);
            EXPECT_EQ(path.back().y, path.front().y);
        }
    }
}

TEST(ClipBool, EmptyOutcomesAndSubjectKept) {
    auto h = make(rect(0, 0, 10, 10));
    // No operation bit: success and an empty result.
    ASSERT_EQ(bool_op(h.get(), rect(1, 1, 2, 2), 0), VEXO_OK);
    uint32_t n = 77;
    EXPECT_EQ(vexo_clip_get_result(h.get(), &n), nullptr);
    EXPECT_EQ(n, 0u);

    // A fresh operation replaces the previous result rather than adding.
    ASSERT_EQ(bool_op(h.get(), rect(20, 20, 21, 21), VEXO_CLIP_UNION), VEXO_OK);
    ASSERT_EQ(bool_op(h.get(), rect(5, 0, 10, 10), VEXO_CLIP_DIFFERENCE), VEXO_OK);
    EXPECT_NEAR(net_area(result_of(h.get())), 50.0, 1e-9);
    // The subject is never changed by an operation.
    EXPECT_NEAR(net_area(subject_of(h.get())), 100.0, 1e-9);

    // Degenerate operands (fewer than three vertices) are simply ignored.
    ASSERT_EQ(bool_op(h.get(), {pt(1, 1), pt(2, 2), pt(3, 3, 0, 1)}, VEXO_CLIP_UNION),
              VEXO_OK);
    EXPECT_NEAR(net_area(result_of(h.get())), 100.0, 1e-9);
}

TEST(ClipBool, ChainedOperationsThroughSetSolution) {
    // ((A u B) - C) built step by step, checked against inclusion-exclusion.
    auto h = make(rect(0, 0, 10, 10));
    ASSERT_EQ(bool_op(h.get(), rect(10, 0, 20, 10), VEXO_CLIP_UNION), VEXO_OK);
    const auto united = result_of(h.get());
    ASSERT_EQ(vexo_clip_set_solution(h.get()), VEXO_OK);
    const auto subject = subject_of(h.get());
    ASSERT_EQ(subject.size(), united.size());
    for (size_t i = 0; i < united.size(); ++i) {
        EXPECT_EQ(subject[i].x, united[i].x);
        EXPECT_EQ(subject[i].y, united[i].y);
        EXPECT_EQ(subject[i].flags, united[i].flags);
    }
    uint32_t n = 5;
    EXPECT_EQ(vexo_clip_get_result(h.get(), &n), nullptr);
    EXPECT_EQ(n, 0u);

    ASSERT_EQ(bool_op(h.get(), rect(5, 2, 15, 8), VEXO_CLIP_DIFFERENCE), VEXO_OK);
    const auto out = result_of(h.get());
    EXPECT_NEAR(net_area(out), 200.0 - 60.0, 1e-9);
    EXPECT_EQ(paths_of(out).size(), 2u); // the bar leaves a hole
    const Bounds b = bounds_of(out);
    EXPECT_EQ(b.x0, 0.0);
    EXPECT_EQ(b.x1, 20.0);
    EXPECT_EQ(b.y0, 0.0);
    EXPECT_EQ(b.y1, 10.0);
}

TEST(ClipBool, CoordinatesBeyondClipperRange) {
    // 4.7e15 * 1000 fits int64 but lies beyond Clipper's range: the handle
    // is created, operations on it fail with 16 and leave it intact.
    auto far = make(rect(0, 0, 4.7e15, 10));
    ASSERT_TRUE(far);
    const auto before = subject_of(far.get());
    EXPECT_EQ(bool_op(far.get(), rect(0, 0, 1, 1), VEXO_CLIP_UNION),
              VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_clip_outline(far.get(), VEXO_CLIP_JOIN_ROUND, 1.0),
              VEXO_ERROR_INVALID_PARAMETER);
    const auto after = subject_of(far.get());
    ASSERT_EQ(before.size(), after.size());
    EXPECT_EQ(after[1].x, 4.7e15);

    // The same through the operand; a NaN operand never reaches Clipper.
    auto h = make(rect(0, 0, 10, 10));
    EXPECT_EQ(bool_op(h.get(), rect(0, 0, -4.7e15, 1), VEXO_CLIP_UNION),
              VEXO_ERROR_INVALID_PARAMETER);
    auto nan_operand = rect(0, 0, 1, 1);
    nan_operand[2].y = std::nan("");
    EXPECT_EQ(bool_op(h.get(), nan_operand, VEXO_CLIP_UNION), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_NEAR(net_area(subject_of(h.get())), 100.0, 1e-9);

    // Just inside the range still works.
    auto edge = make(rect(0, 0, 4.6e15, 10));
    EXPECT_EQ(bool_op(edge.get(), rect(0, 0, 1, 1), VEXO_CLIP_UNION), VEXO_OK);
}
