// Conversion between caller arrays and the 0.001 integer grid.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "clip/path_set.hpp"
#include "clip_support.hpp"

using namespace cliptest;

TEST(ClipConvert, ClosedSquareBecomesFourVertexPath) {
    vexo::PathSet set;
    const auto square = rect(0, 0, 10, 10);
    ASSERT_TRUE(vexo::cut_into_paths(square.data(), 5, false, &set));
    ASSERT_EQ(set.xy.size(), 1u);
    ASSERT_EQ(set.xy[0].size(), 4u);
    EXPECT_EQ(set.xy[0][2].X, 10000);
    EXPECT_EQ(set.xy[0][2].Y, 10000);
    ASSERT_EQ(set.z.size(), 1u);
    EXPECT_EQ(set.z[0].size(), 4u);

    // Returned: the four corners and a closing copy of the first, flagged.
    auto h = make(square);
    ASSERT_TRUE(h);
    const auto out = subject_of(h.get());
    ASSERT_EQ(out.size(), 5u);
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(out[i].x, square[i].x);
        EXPECT_EQ(out[i].y, square[i].y);
        EXPECT_EQ(out[i].flags, 0u);
    }
    EXPECT_EQ(out[4].x, 0.0);
    EXPECT_EQ(out[4].y, 0.0);
    EXPECT_EQ(out[4].flags, VEXO_POINT_END);
}

TEST(ClipConvert, PathCountFollowsEndFlags) {
    struct Case {
        std::vector<uint32_t> flags;
        std::vector<size_t> sizes; // vertices per path
    };
    const Case cases[] = {
        {{0}, {0}},                       // one point: never converted
        {{1}, {0}},                       // a lone flagged point
        {{0, 0, 0}, {2}},                 // no flag at all: one path
        {{0, 1, 0, 0, 1}, {2, 2}},        // two paths, last flagged
        {{0, 1, 0, 0, 0}, {2, 2}},        // last unflagged adds the open path
        {{0, 0, 1, 1}, {3, 0}},           // flag on the next-to-last point
        {{1, 1, 1, 0}, {1, 1, 1, 0}},     // dots
    };
    for (const Case &c : cases) {
        std::vector<GeomPoint> a;
        for (size_t i = 0; i < c.flags.size(); ++i)
            a.push_back(pt(double(i), 0.0, 0.0, c.flags[i]));
        vexo::PathSet set;
        ASSERT_TRUE(vexo::cut_into_paths(a.data(), uint32_t(a.size()), false, &set));
        ASSERT_EQ(set.xy.size(), c.sizes.size()) << "array of " << a.size();
        size_t flagged = 0;
        for (uint32_t f : c.flags)
            flagged += f & 1u;
        EXPECT_EQ(set.xy.size(), flagged + ((c.flags.back() & 1u) ? 0 : 1));
        for (size_t p = 0; p < c.sizes.size(); ++p)
            EXPECT_EQ(set.xy[p].size(), c.sizes[p]);
    }
}

TEST(ClipConvert, TruncatesTowardZero) {
    const GeomPoint a[] = {pt(1.0009, -1.0009, 2.0009), pt(-0.0009, 0.0019, -2.0009),
                           pt(123.4567899, -0.9999, 0.0), pt(0, 0, 0, VEXO_POINT_END)};
    vexo::PathSet set;
    ASSERT_TRUE(vexo::cut_into_paths(a, 4, false, &set));
    EXPECT_EQ(set.xy[0][0].X, 1000);
    EXPECT_EQ(set.xy[0][0].Y, -1000);
    EXPECT_EQ(set.z[0][0], 2000);
    EXPECT_EQ(set.xy[0][1].X, 0);
    EXPECT_EQ(set.xy[0][1].Y, 1);
    EXPECT_EQ(set.z[0][1], -2000);
    EXPECT_EQ(set.xy[0][2].X, 123456);
    EXPECT_EQ(set.xy[0][2].Y, -999);

    auto h = make(std::vector<GeomPoint>(a, a + 4));
    const auto out = subject_of(h.get());
    ASSERT_EQ(out.size(), 4u);
    EXPECT_EQ(out[0].x, 1.0);
    EXPECT_EQ(out[0].y, -1.0);
    EXPECT_EQ(out[0].z, 2.0);
    EXPECT_EQ(out[1].y, 0.001);

    // The 2D flag drops every height.
    ASSERT_TRUE(vexo::cut_into_paths(a, 4, true, &set));
    for (auto z : set.z[0])
        EXPECT_EQ(z, 0);
}

TEST(ClipConvert, OffGridCoordinatesAreRefused) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    // x*1000 must stay below 2^63; -2^63 itself is still representable.
    const double bad[] = {nan, inf, -inf, 1e16, -1e300, 9223372036854775.808};
    for (double v : bad) {
        for (int axis = 0; axis < 3; ++axis) {
            std::vector<GeomPoint> a = rect(0, 0, 1, 1);
            double *field = axis == 0 ? &a[1].x : axis == 1 ? &a[1].y : &a[1].z;
            *field = v;
            EXPECT_FALSE(make(a)) << v << " on axis " << axis;
            vexo::PathSet set;
            EXPECT_FALSE(vexo::cut_into_paths(a.data(), 5, false, &set));
            // A bad height does not matter when heights are dropped.
            EXPECT_EQ(bool(make(a, VEXO_CLIP_2D)), axis == 2);
        }
    }
    ClipperLib::cInt g = 0;
    EXPECT_TRUE(vexo::to_grid(-9223372036854775.808, &g));
    EXPECT_EQ(g, std::numeric_limits<int64_t>::min());

    // The last point is never converted, so its value is irrelevant.
    std::vector<GeomPoint> a = rect(0, 0, 1, 1);
    a[4].x = nan;
    EXPECT_TRUE(make(a));
}

TEST(ClipConvert, SubjectRoundTrip) {
    // One path comes back exactly as it went in.
    const auto tri = std::vector<GeomPoint>{pt(1.5, 2.25, 3.0), pt(7.125, 2.0, 3.0),
                                            pt(4.0, 9.5, 3.0), pt(1.5, 2.25, 3.0, 1)};
    auto h = make(tri);
    const auto once = subject_of(h.get());
    auto again = make(once);
    const auto twice = subject_of(again.get());
    ASSERT_EQ(once.size(), twice.size());
    for (size_t i = 0; i < once.size(); ++i) {
        EXPECT_EQ(once[i].x, twice[i].x);
        EXPECT_EQ(once[i].y, twice[i].y);
        EXPECT_EQ(once[i].z, twice[i].z);
        EXPECT_EQ(once[i].flags, twice[i].flags);
    }
    // Several paths keep their count and their geometry; only the very last
    // closing record is dropped, the inner ones stay as duplicate vertices.
    const auto two = join(rect(0, 0, 4, 4), rect(10, 0, 13, 2));
    auto h2 = make(two);
    const auto out = subject_of(h2.get());
    auto h3 = make(out);
    const auto back = subject_of(h3.get());
    EXPECT_EQ(paths_of(back).size(), 2u);
    EXPECT_DOUBLE_EQ(net_area(back), 16.0 + 6.0);
    EXPECT_DOUBLE_EQ(net_area(out), 16.0 + 6.0);
}
