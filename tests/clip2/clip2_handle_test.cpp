// SPDX-License-Identifier: MIT
// Refused arguments, the coordinate limit, heights and the handle's moves.
#include "clip2_support.hpp"

#include <map>

using namespace clip2_test;

namespace {

constexpr uint32_t kBad = VEXO_ERROR_INVALID_PARAMETER;
constexpr uint32_t kUnion = VEXO_CLIP_UNION, kDiff = VEXO_CLIP_DIFFERENCE;
// x*1000 truncates to the limit itself, and to one past it.
constexpr double kAtLimit = 1073741.8235, kPastLimit = 1073741.8245;

uint32_t bool_op(const Handle2 &h, const Pts &p, uint32_t mode) {
    return vexo_clip2_bool(h.get(), p.data(), uint32_t(p.size()), mode);
}

} // namespace

TEST(Clip2Limit, RandomPolygonsSpanningTheGridLimitAgreeWithClipper) {
    std::mt19937 rng(31);
    std::uniform_real_distribution<double> at(-kAtLimit, kAtLimit);
    for (int trial = 0; trial < 40; ++trial) {
        // Every other polygon has vertices on the limit itself.
        Pts subject, operand;
        for (Pts *p : {&subject, &operand}) {
            std::vector<double> xy;
            for (int i = 0; i < 3 + trial % 6; ++i)
                xy.insert(xy.end(),
                          {trial % 2 ? (i % 2 ? kAtLimit : -kAtLimit) : at(rng), at(rng)});
            *p = ring(xy);
        }
        const uint32_t mode = trial % 4 < 2 ? kUnion : kDiff;
        const auto ours = grid_paths(bool2(subject, operand, mode));
        ClipperLib::Clipper c;
        c.AddPaths(input_paths(subject), ClipperLib::ptSubject, true);
        c.AddPaths(input_paths(operand), ClipperLib::ptClip, true);
        ClipperLib::Paths theirs;
        c.Execute(mode == kUnion ? ClipperLib::ctUnion : ClipperLib::ctDifference, theirs,
                  ClipperLib::pftEvenOdd, ClipperLib::pftEvenOdd);
        const double allowed =
            2.0 * (perimeter(input_paths(subject)) + perimeter(input_paths(operand)));
        EXPECT_LE(xor_area(ours, theirs), allowed) << "trial " << trial;
    }
}

TEST(Clip2Limit, CoordinatesPastTheLimitAreRefused) {
    auto h = make2(rect(0, 0, 10, 10));
    for (const Pts &far : {rect(0, 0, kPastLimit, 1), rect(0, -kPastLimit, 1, 1)}) {
        EXPECT_EQ(make2(far), nullptr);
        EXPECT_EQ(bool_op(h, far, kUnion), kBad);
    }
    EXPECT_NE(make2(rect(-kAtLimit, -kAtLimit, kAtLimit, kAtLimit)), nullptr);
}

TEST(Clip2Limit, OutlineMayNotReachPastTheLimit) {
    // Largest coordinate + 2 widths + 1 grid unit must stay within the limit.
    const double edge = 1073000.0, room = (1073741823.0 - 1073000000.0 - 1.0) / 2.0 / 1000.0;
    auto h = make2(rect(edge - 10, edge - 10, edge, edge));
    EXPECT_EQ(vexo_clip2_outline(h.get(), VEXO_CLIP_JOIN_MITER, room), VEXO_OK);
    EXPECT_EQ(vexo_clip2_outline(h.get(), VEXO_CLIP_JOIN_MITER, room + 0.001), kBad);
    EXPECT_EQ(vexo_clip2_outline(h.get(), VEXO_CLIP_JOIN_MITER, -room - 0.001), kBad);
}

TEST(Clip2Handle, NullAndEmptyArgumentsAreRefused) {
    const Pts sq = rect(0, 0, 10, 10);
    auto h = make2(sq);
    EXPECT_EQ(vexo_clip2_create(nullptr, 5, 0), nullptr);
    EXPECT_EQ(vexo_clip2_create(sq.data(), 0, 0), nullptr);
    const uint32_t statuses[] = {vexo_clip2_bool(nullptr, sq.data(), 5, kUnion),
                                 vexo_clip2_bool(h.get(), nullptr, 5, kUnion),
                                 vexo_clip2_bool(h.get(), sq.data(), 0, kUnion),
                                 vexo_clip2_outline(nullptr, VEXO_CLIP_JOIN_ROUND, 1.0),
                                 vexo_clip2_set_solution(nullptr),
                                 vexo_clip2_copy_subject(nullptr)};
    for (size_t i = 0; i < std::size(statuses); ++i) EXPECT_EQ(statuses[i], kBad) << i;
    uint32_t n = 5;
    EXPECT_EQ(vexo_clip2_get_result(nullptr, &n), nullptr);
    EXPECT_EQ(n, 0u);
    EXPECT_EQ(vexo_clip2_get_subject(h.get(), nullptr), nullptr);
    EXPECT_EQ(vexo_clip2_copy_solution(h.get()), nullptr); // empty result
}

TEST(Clip2Handle, RefusedCallsKeepSubjectAndResult) {
    auto h = make2(rect(0, 0, 10, 10, 2.0));
    ASSERT_EQ(vexo_clip2_copy_subject(h.get()), VEXO_OK);
    const Pts before = result2(h);
    const Pts off_grid = rect(0, 0, NAN, 1), huge = rect(0, 0, 1e300, 1);
    EXPECT_EQ(bool_op(h, off_grid, kUnion), kBad);
    EXPECT_EQ(bool_op(h, huge, kUnion), kBad);
    for (uint32_t mode : {0u, 8u, 0x10u, 0x20u})
        EXPECT_EQ(vexo_clip2_outline(h.get(), mode, 1.0), kBad) << mode;
    for (double d : {double(NAN), double(INFINITY), 1e10})
        EXPECT_EQ(vexo_clip2_outline(h.get(), VEXO_CLIP_JOIN_ROUND, d), kBad) << d;
    const Pts after = result2(h);
    ASSERT_EQ(after.size(), before.size());
    EXPECT_TRUE(vexo_test::same_bytes(after[0], before[0], after.size()));
}

TEST(Clip2Handle, HeightsFollowSubjectPathZeroByIndex) {
    // Past subject path 0's four points, the height the result's first
    // vertex carries: its input vertex's (the subject's first), or 0 at a
    // crossing the engine made.
    const Pts stepped = {point(0, 0, 1), point(10, 0, 2), point(10, 10, 3), point(0, 10, 4),
                         point(0, 0, 1, kEnd)};
    const Pts out = bool2(stepped, rect(5, 5, 15, 15, 9), kUnion);
    ASSERT_EQ(out.size(), 9u); // 8 corners and the closing copy
    const std::map<std::pair<double, double>, double> carried = {
        {{0, 0}, 1},   {{10, 0}, 2}, {{0, 10}, 4}, {{15, 5}, 9},
        {{15, 15}, 9}, {{5, 15}, 9}, {{10, 5}, 0}, {{5, 10}, 0}};
    const double first = carried.at({out[0].x, out[0].y});
    for (size_t i = 0; i < 8; ++i) EXPECT_EQ(out[i].z, i < 4 ? i + 1.0 : first) << i;
    EXPECT_EQ(out[8].z, 1.0);
}

TEST(Clip2Handle, SetSolutionChainsADifferenceOntoAUnion) {
    auto h = make2(rect(0, 0, 10, 10));
    ASSERT_EQ(bool_op(h, rect(10, 0, 20, 10), kUnion), VEXO_OK);
    ASSERT_EQ(vexo_clip2_set_solution(h.get()), VEXO_OK);
    EXPECT_EQ(result2(h).size(), 0u);
    ASSERT_EQ(bool_op(h, rect(5, 2, 15, 8), kDiff), VEXO_OK);
    Handle2 copy(vexo_clip2_copy_solution(h.get()), vexo_clip2_release);
    h.reset(); // the copy outlives its source
    uint32_t n = 0;
    GeomPoint *subject = vexo_clip2_get_subject(copy.get(), &n);
    const Pts taken = take(subject, n);
    EXPECT_EQ(path_areas(taken), (std::vector<double>{200e6, -60e6}));
}
