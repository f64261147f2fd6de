// Handle life cycle and the status of every call on bad arguments.
#include <gtest/gtest.h>

#include "clip_support.hpp"

using namespace cliptest;

TEST(ClipHandle, MissingHandlesPointersAndCounts) {
    const auto square = rect(0, 0, 10, 10);
    EXPECT_EQ(vexo_clip_create(nullptr, 5, 0), nullptr);
    EXPECT_EQ(vexo_clip_create(square.data(), 0, 0), nullptr);
    vexo_clip_release(nullptr);

    auto h = make(square);
    ASSERT_TRUE(h);
    EXPECT_EQ(vexo_clip_bool(nullptr, square.data(), 5, VEXO_CLIP_UNION),
              VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_clip_bool(h.get(), nullptr, 5, VEXO_CLIP_UNION),
              VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_clip_bool(h.get(), square.data(), 0, VEXO_CLIP_UNION),
              VEXO_ERROR_INVALID_PARAMETER);

    uint32_t n = 42;
    EXPECT_EQ(vexo_clip_get_result(nullptr, &n), nullptr);
    EXPECT_EQ(n, 0u);
    n = 42;
    EXPECT_EQ(vexo_clip_get_subject(nullptr, &n), nullptr);
    EXPECT_EQ(n, 0u);
    EXPECT_EQ(vexo_clip_get_subject(h.get(), nullptr), nullptr);
    EXPECT_EQ(vexo_clip_get_result(h.get(), nullptr), nullptr);

    EXPECT_EQ(vexo_clip_set_solution(nullptr), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_clip_copy_subject(nullptr), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_clip_copy_solution(nullptr), nullptr);
    // A fresh handle has no result to take or copy.
    EXPECT_EQ(vexo_clip_set_solution(h.get()), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_clip_copy_solution(h.get()), nullptr);
    EXPECT_NEAR(net_area(subject_of(h.get())), 100.0, 1e-9);
}

TEST(ClipHandle, CopySubjectAndCopySolution) {
    auto h = make(join(rect(0, 0, 10, 10, 2.0), rect(20, 0, 25, 5, 6.0)));
    ASSERT_EQ(vexo_clip_copy_subject(h.get()), VEXO_OK);
    const auto subject = subject_of(h.get());
    const auto copied = result_of(h.get());
    ASSERT_EQ(subject.size(), copied.size());
    // Path 0 keeps its repeated first point (only the array's very last
    // point is dropped): 5 + closing, then 4 + closing.
    ASSERT_EQ(subject.size(), 11u);
    for (size_t i = 0; i < subject.size(); ++i) {
        EXPECT_EQ(copied[i].x, subject[i].x);
        EXPECT_EQ(copied[i].y, subject[i].y);
        EXPECT_EQ(copied[i].z, 2.0); // path 0's heights, by index
        EXPECT_EQ(copied[i].flags, subject[i].flags);
    }

    // A new handle from the result; the original may go away first.
    ASSERT_EQ(bool_op(h.get(), rect(5, -5, 22, 1, 4.0), VEXO_CLIP_DIFFERENCE), VEXO_OK);
    const auto diff = result_of(h.get());
    Handle copy(vexo_clip_copy_solution(h.get()));
    ASSERT_TRUE(copy);
    h.reset();
    const auto taken = subject_of(copy.get());
    ASSERT_EQ(taken.size(), diff.size());
    for (size_t i = 0; i < diff.size(); ++i) {
        EXPECT_EQ(taken[i].x, diff[i].x);
        EXPECT_EQ(taken[i].y, diff[i].y);
    }
    EXPECT_NEAR(net_area(taken), 100.0 - 5.0 + 25.0 - 2.0, 1e-9);
    // The copy starts with an empty result and works on its own.
    uint32_t n = 1;
    EXPECT_EQ(vexo_clip_get_result(copy.get(), &n), nullptr);
    EXPECT_EQ(n, 0u);
    ASSERT_EQ(vexo_clip_outline(copy.get(), VEXO_CLIP_JOIN_MITER, -0.5), VEXO_OK);
    EXPECT_EQ(paths_of(result_of(copy.get())).size(), 2u);
}

TEST(ClipHandle, FailedOperationKeepsTheSubject) {
    auto h = make(rect(0, 0, 10, 10, 1.0));
    ASSERT_EQ(bool_op(h.get(), rect(0, 0, 5, 5), VEXO_CLIP_UNION), VEXO_OK);
    ASSERT_EQ(vexo_clip_outline(h.get(), 0, 1.0), VEXO_ERROR_INVALID_PARAMETER);
    auto bad = rect(0, 0, 5, 5);
    bad[0].x = std::nan("");
    ASSERT_EQ(bool_op(h.get(), bad, VEXO_CLIP_UNION), VEXO_ERROR_INVALID_PARAMETER);
    const auto subject = subject_of(h.get());
    ASSERT_EQ(subject.size(), 5u);
    EXPECT_NEAR(net_area(subject), 100.0, 1e-9);
    EXPECT_EQ(subject[2].z, 1.0);
    // Refused arguments do not touch the result either.
    EXPECT_NEAR(net_area(result_of(h.get())), 100.0, 1e-9);
}
