// SPDX-License-Identifier: MIT
// Unions and differences checked against the first clip family and against
// areas Clipper computes on the grid.
#include "clip2_support.hpp"

#include <algorithm>
#include <ostream>

using namespace clip2_test;

namespace {

constexpr uint32_t kUnion = VEXO_CLIP_UNION, kDiff = VEXO_CLIP_DIFFERENCE;

// Both results may differ only by snapping: at most two grid units along
// every input edge.
void expect_same_region(const Pts &subject, const Pts &operand, uint32_t mode) {
    const auto inputs = input_paths(subject), more = input_paths(operand);
    const double allowed = 2.0 * (perimeter(inputs) + perimeter(more));
    const auto ours = grid_paths(bool2(subject, operand, mode));
    const auto theirs = grid_paths(bool1(subject, operand, mode));
    EXPECT_LE(xor_area(ours, theirs), allowed) << "mode " << mode;
}

struct Structured {
    const char *name;
    Pts subject, operand;
};

void PrintTo(const Structured &c, std::ostream *os) {
    *os << c.name;
}

class Clip2Structured : public ::testing::TestWithParam<Structured> {};

} // namespace

TEST(Clip2Bool, RandomSelfCrossingRingsAgreeWithClip) {
    std::mt19937 rng(2024);
    for (int trial = 0; trial < 60; ++trial) {
        const Pts subject = random_rings(rng, 1 + trial % 4, 100.0);
        const Pts operand = random_rings(rng, 1 + trial % 3, 100.0);
        SCOPED_TRACE(trial);
        expect_same_region(subject, operand, trial % 2 ? kDiff : kUnion);
    }
}

TEST(Clip2Bool, RandomRectilinearRingsAgreeWithClip) {
    // Axis-parallel paths take the rectilinear scan: random walks turning
    // at every vertex, crossing themselves and each other.
    std::mt19937 rng(99);
    std::uniform_int_distribution<int> at(0, 40);
    const auto walk = [&](int turns) {
        std::vector<double> xy = {double(at(rng)), double(at(rng))};
        for (int i = 1; i < turns; ++i) {
            const bool vertical = i % 2 == 1;
            xy.push_back(vertical ? xy[xy.size() - 2] : double(at(rng)));
            xy.push_back(vertical ? double(at(rng)) : xy[xy.size() - 2]);
        }
        xy.push_back(xy[0]); // back to the first x, then down to the start
        xy.push_back(xy[xy.size() - 2]);
        return ring(xy);
    };
    for (int trial = 0; trial < 60; ++trial) {
        const Pts subject = walk(4 + trial % 9) + walk(3 + trial % 5), operand = walk(5);
        SCOPED_TRACE(trial);
        const uint32_t mode = trial % 2 ? kDiff : kUnion;
        const auto ours = grid_paths(bool2(subject, operand, mode));
        EXPECT_EQ(xor_area(ours, grid_paths(bool1(subject, operand, mode))), 0.0);
    }
}

TEST_P(Clip2Structured, UnionAndDifferenceAgreeWithClip) {
    expect_same_region(GetParam().subject, GetParam().operand, kUnion);
    expect_same_region(GetParam().subject, GetParam().operand, kDiff);
}

INSTANTIATE_TEST_SUITE_P(
    Shapes, Clip2Structured,
    ::testing::Values(
        Structured{"SharedEdge", rect(0, 0, 10, 10), rect(10, 0, 20, 10)},
        Structured{"TouchingCorners", rect(0, 0, 10, 10), rect(10, 10, 20, 20)},
        Structured{"NestedHole", rect(0, 0, 10, 10) + rect(2, 2, 8, 8), rect(4, -1, 6, 11)},
        Structured{"SameOrientationHole", rect(0, 0, 10, 10) + rect(3, 3, 7, 7),
                   rect(5, 5, 15, 15)},
        Structured{"CollinearOverlap", rect(0, 0, 10, 10), rect(5, 0, 15, 10)},
        Structured{"Diamond45", ring({5, 0, 10, 5, 5, 10, 0, 5}), rect(2, 2, 8, 8)},
        Structured{"Identical", rect(0, 0, 10, 10), rect(0, 0, 10, 10)},
        Structured{"SliverWedge", ring({0, 0, 100, 0.003, 100, 0.004}), rect(50, -1, 51, 1)},
        Structured{"Comb", ring({0,  0,  30, 0,  30, 10, 25, 10, 25, 2,  20, 2,
                                 20, 10, 15, 10, 15, 2,  10, 2,  10, 10, 0,  10}),
                   rect(5, 5, 28, 7)}),
    [](const ::testing::TestParamInfo<Structured> &info) { return info.param.name; });

TEST(Clip2Bool, FigureEightKeepsBothLobes) {
    const Pts eight = ring({0, 0, 10, 10, 10, 0, 0, 10}); // crosses itself at (5, 5)
    const Pts out = bool2(eight, rect(20, 20, 21, 21), kUnion);
    EXPECT_EQ(path_areas(out), (std::vector<double>{25e6, 25e6, 1e6}));
}

TEST(Clip2Bool, PentagramCentreIsEmptyAsUnderEvenOdd) {
    // Wound twice round its centre: even-odd leaves the pentagon there open.
    std::vector<double> xy;
    for (int i = 0; i < 5; ++i) {
        const double t = M_PI / 2 + i * 4 * M_PI / 5;
        xy.insert(xy.end(), {100 * std::cos(t), 100 * std::sin(t)});
    }
    const Pts star = ring(xy);
    const auto ours = grid_paths(bool2(star, rect(500, 500, 501, 501), kUnion));
    EXPECT_FALSE(inside(ours, 0.0, 0.0));
    EXPECT_NEAR(area_of(ours), area_of(input_paths(star)) + 1e6, 2.0 * perimeter(ours));
}

TEST(Clip2Bool, KeyholedContoursCoverTheHoledRegion) {
    const Pts frame = rect(0, 0, 30, 10) + rect(2, 2, 8, 8) + rect(12, 2, 18, 8);
    auto holed = make2(frame), keyholed = make2(frame);
    const Pts extra = rect(40, 0, 45, 5);
    ASSERT_EQ(vexo_clip2_bool(holed.get(), extra.data(), 5, kUnion), VEXO_OK);
    ASSERT_EQ(vexo_clip2_bool(keyholed.get(), extra.data(), 5, kUnion | VEXO_CLIP2_KEYHOLE),
              VEXO_OK);
    std::vector<double> with_holes = path_areas(result2(holed));
    std::sort(with_holes.begin(), with_holes.end()); // regions come in the engine's order
    const std::vector<double> keyhole = path_areas(result2(keyholed));
    EXPECT_EQ(with_holes, (std::vector<double>{-36e6, -36e6, 25e6, 300e6}));
    ASSERT_EQ(keyhole.size(), 2u); // one hole-free contour per region
    EXPECT_EQ(keyhole[0] + keyhole[1], 300e6 - 72e6 + 25e6);
}

TEST(Clip2Bool, DifferenceToNothingLeavesAnEmptyResult) {
    auto h = make2(rect(2, 2, 4, 4));
    const Pts cover = rect(0, 0, 10, 10);
    ASSERT_EQ(vexo_clip2_bool(h.get(), cover.data(), 5, kDiff), VEXO_OK);
    uint32_t n = 9;
    EXPECT_EQ(vexo_clip2_get_result(h.get(), &n), nullptr);
    EXPECT_EQ(n, 0u);
    EXPECT_EQ(vexo_clip2_set_solution(h.get()), VEXO_ERROR_INVALID_PARAMETER);
}

TEST(Clip2Bool, NoOperationBitEmptiesTheResult) {
    auto h = make2(rect(0, 0, 10, 10));
    ASSERT_EQ(vexo_clip2_copy_subject(h.get()), VEXO_OK);
    const Pts other = rect(5, 5, 15, 15);
    EXPECT_EQ(vexo_clip2_bool(h.get(), other.data(), 5, VEXO_CLIP_2D), VEXO_OK);
    EXPECT_EQ(result2(h).size(), 0u);
}
