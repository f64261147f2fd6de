// SPDX-License-Identifier: MIT
// Closing, slicing by a line and into bands, and the parts of polylines in a
// region (judged by GEOS) or a rectangle.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

#include "geos_oracle.hpp"
#include "vexo_test_util.hpp"

using namespace vexo_test;

namespace {

GeomPoint *heap_copy(const std::vector<GeomPoint> &pts) {
    auto *p = static_cast<GeomPoint *>(std::malloc(pts.size() * sizeof(GeomPoint)));
    std::memcpy(p, pts.data(), pts.size() * sizeof(GeomPoint));
    return p;
}

// Drawn length of polylines in XY (no jump after a line end).
double drawn_length(const std::vector<GeomPoint> &pts) {
    double sum = 0;
    for (size_t i = 0; i + 1 < pts.size(); ++i)
        if (!(pts[i].flags & VEXO_POINT_END))
            sum += std::hypot(pts[i + 1].x - pts[i].x, pts[i + 1].y - pts[i].y);
    return sum;
}

// A call's status and the points it returned.
struct Cut {
    uint32_t status;
    std::vector<GeomPoint> points;
};

Cut close(const std::vector<GeomPoint> &in, double tol, uint32_t options) {
    uint32_t count = uint32_t(in.size()), status = 0;
    GeomPoint *out = vexo_geom_close_polygons(heap_copy(in), &count, tol, options, &status);
    return {status, take(out, count)};
}

const std::vector<GeomPoint> kOpenSquare = {
    point(0, 0, 1), point(10, 0), point(10, 10),
    point(0.05, 0, 3, VEXO_POINT_END | VEXO_POINT_END_MARK)};

// Closing copy, snap, a gap beyond the tolerance, a line already closed.
TEST(Close, ClosesWithinTheToleranceOnly) {
    std::vector<GeomPoint> closed = kOpenSquare;
    closed[3] = point(0, 0, 1, VEXO_POINT_END);
    const struct {
        const char *name;
        std::vector<GeomPoint> in;
        double tolerance;
        uint32_t options;
        std::vector<Xyz> coords;
        std::vector<uint32_t> flags;
    } cases[] = {
        {"copy",
         kOpenSquare,
         0.1,
         0,
         {{0, 0, 1}, {10, 0, 0}, {10, 10, 0}, {0.05, 0, 3}, {0, 0, 1}},
         {0, 0, 0, 0, 5}},
        {"snap",
         kOpenSquare,
         0.1,
         VEXO_CLOSE_SNAP,
         {{0, 0, 1}, {10, 0, 0}, {10, 10, 0}, {0, 0, 1}},
         {0, 0, 0, 5}},
        {"gap", kOpenSquare, 0.0499, 0, coords(kOpenSquare), {0, 0, 0, 5}},
        {"closed", closed, 1.0, 0, coords(closed), {0, 0, 0, 1}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        const Cut out = close(c.in, c.tolerance, c.options);
        ASSERT_EQ(out.status, VEXO_OK);
        EXPECT_EQ(coords(out.points), c.coords);
        EXPECT_EQ(flags_of(out.points), c.flags);
    }
}

TEST(Close, DegenerateLinesAreDroppedOnRequest) {
    std::vector<GeomPoint> in = {point(5, 5, 0, VEXO_POINT_END), point(1, 1), point(2, 2),
                                 point(1, 1, 0, VEXO_POINT_END)};
    in.insert(in.end(), kOpenSquare.begin(), kOpenSquare.end());
    EXPECT_EQ(close(in, 0.1, VEXO_CLOSE_DROP_DEGENERATE).points.size(), 5u);
    EXPECT_EQ(close(in, 0.1, 0).points.size(), 9u);
    const Cut none = close({point(5, 5, 0, VEXO_POINT_END)}, 0.1, VEXO_CLOSE_DROP_DEGENERATE);
    EXPECT_EQ(none.status, VEXO_ERROR_NO_RESULT);
}

TEST(Close, BadInputKeepsTheArray) {
    std::vector<GeomPoint> in = kOpenSquare;
    uint32_t count = 4, status = 0;
    EXPECT_EQ(vexo_geom_close_polygons(in.data(), nullptr, 0.1, 0, &status), in.data());
    EXPECT_EQ(status, VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_geom_close_polygons(in.data(), &count, NAN, 0, &status), in.data());
    EXPECT_EQ(status, VEXO_ERROR_INVALID_PARAMETER);
    in[1].x = NAN;
    EXPECT_EQ(vexo_geom_close_polygons(in.data(), &count, 0.1, 0, &status), in.data());
    EXPECT_EQ(status, VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(count, 4u);
}

Cut slice(const std::vector<GeomPoint> &in, const double line[4], uint32_t options) {
    uint32_t n = 0, status = 0;
    GeomPoint *out =
        vexo_geom_slice_line(in.data(), uint32_t(in.size()), line, options, &n, &status);
    return {status, take(out, n)};
}

const std::vector<GeomPoint> kZigzag = {point(0, 0, 0), point(10, 0, 10), point(10, 4, 20),
                                        point(0, 4, 30, VEXO_POINT_END)};

TEST(SliceLine, KeepsTheLeftSideWithHeightsAtTheCuts) {
    const double line[4] = {4, -1, 4, 5}; // upwards: left is x < 4
    const Cut c = slice(kZigzag, line, VEXO_SLICE_LEFT);
    ASSERT_EQ(c.status, VEXO_OK);
    EXPECT_EQ(coords(c.points), (std::vector<Xyz>{{0, 0, 0}, {4, 0, 4}, {4, 4, 26}, {0, 4, 30}}));
    EXPECT_EQ(flags_of(c.points), (std::vector<uint32_t>{0, 1, 0, 1}));
}

TEST(SliceLine, BothSidesCutEveryLineAtTheLine) {
    const double line[4] = {4, -1, 4, 5};
    const Cut c = slice(kZigzag, line, VEXO_SLICE_LEFT | VEXO_SLICE_RIGHT);
    EXPECT_EQ(coords(c.points), (std::vector<Xyz>{{0, 0, 0},
                                                  {4, 0, 4},
                                                  {4, 0, 4},
                                                  {10, 0, 10},
                                                  {10, 4, 20},
                                                  {4, 4, 26},
                                                  {4, 4, 26},
                                                  {0, 4, 30}}));
    EXPECT_EQ(flags_of(c.points), (std::vector<uint32_t>{0, 1, 0, 0, 0, 1, 0, 1}));
}

TEST(SliceLine, SegmentsOnTheLineBelongToTheRight) {
    const double line[4] = {0, 0, 1, 0};
    const std::vector<GeomPoint> along = {point(0, 0), point(5, 0, 0, VEXO_POINT_END)};
    EXPECT_EQ(slice(along, line, VEXO_SLICE_LEFT).status, VEXO_ERROR_NO_RESULT);
    EXPECT_EQ(slice(along, line, VEXO_SLICE_RIGHT).points.size(), 2u);
}

// Left and right pieces of random polylines add up to the whole, and each
// lies on its side (GEOS measures the lengths).
TEST(SliceLine, SidesPartitionTheLength) {
    std::mt19937 rng(9);
    std::uniform_real_distribution<double> c(-10, 10);
    std::vector<GeomPoint> in;
    for (int i = 0; i < 300; ++i)
        in.push_back(point(c(rng), c(rng), c(rng), i % 30 == 29 ? 1u : 0u));
    const double line[4] = {-3, -7, 4, 9};
    const Cut left = slice(in, line, VEXO_SLICE_LEFT), right = slice(in, line, VEXO_SLICE_RIGHT);
    EXPECT_NEAR(drawn_length(left.points) + drawn_length(right.points), drawn_length(in), 1e-9);
    for (const GeomPoint &p : left.points) EXPECT_GE(7 * (p.y + 7) - 16 * (p.x + 3), -1e-9);
    for (const GeomPoint &p : right.points) EXPECT_LE(7 * (p.y + 7) - 16 * (p.x + 3), 1e-9);
}

TEST(SliceLine, BadLineGivesAStatus) {
    const double point_line[4] = {1, 1, 1, 1}, nan_line[4] = {0, 0, NAN, 1}, ok[4] = {0, 0, 1, 1};
    EXPECT_EQ(slice(kZigzag, point_line, VEXO_SLICE_LEFT).status, VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(slice(kZigzag, nan_line, VEXO_SLICE_LEFT).status, VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(slice(kZigzag, ok, 0).status, VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(slice(kZigzag, nullptr, VEXO_SLICE_LEFT).status, VEXO_ERROR_INVALID_PARAMETER);
}

Cut band(const std::vector<GeomPoint> &in, uint32_t axis, double origin, double width,
         double overlap, int32_t k) {
    uint32_t n = 0, status = 0;
    GeomPoint *out = vexo_geom_slice_band(in.data(), uint32_t(in.size()), axis, origin, width,
                                          overlap, k, &n, &status);
    return {status, take(out, n)};
}

TEST(SliceBand, BandsOverlapAtTheSeams) {
    const std::vector<GeomPoint> in = {point(0, 0, 0), point(10, 0, 10, VEXO_POINT_END)};
    EXPECT_EQ(coords(band(in, VEXO_BAND_X, 1.0, 3.0, 0.5, 1).points),
              (std::vector<Xyz>{{3.5, 0, 3.5}, {7.5, 0, 7.5}}));
    EXPECT_EQ(coords(band(in, VEXO_BAND_X, 1.0, 3.0, 0.0, -1).points),
              (std::vector<Xyz>{{0, 0, 0}, {1, 0, 1}}));
    EXPECT_EQ(band(in, VEXO_BAND_Y, 1.0, 3.0, 0.0, 1).status, VEXO_ERROR_NO_RESULT);
}

TEST(SliceBand, BadBandGivesAStatus) {
    EXPECT_EQ(band(kZigzag, 2, 0, 1, 0, 0).status, VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(band(kZigzag, VEXO_BAND_X, 0, 0, 0, 0).status, VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(band(kZigzag, VEXO_BAND_X, 0, 1, -1, 0).status, VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(band(kZigzag, VEXO_BAND_X, NAN, 1, 0, 0).status, VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(band(kZigzag, VEXO_BAND_X, 0, 1e308, 0, 2000000000).status,
              VEXO_ERROR_INVALID_PARAMETER);
}

std::vector<GeomPoint> nested_squares() {
    std::vector<GeomPoint> rings;
    for (double d : {0.0, 2.0, 4.0}) {
        rings.push_back(point(d, d));
        rings.push_back(point(12 - d, d));
        rings.push_back(point(12 - d, 12 - d));
        rings.push_back(point(d, 12 - d, 0, VEXO_POINT_END));
    }
    return rings;
}

Cut part(const std::vector<GeomPoint> &in, const std::vector<GeomPoint> &rings, uint32_t options) {
    uint32_t n = 0, status = 0;
    GeomPoint *out = vexo_geom_inner_part(in.data(), uint32_t(in.size()), rings.data(),
                                          uint32_t(rings.size()), options, &n, &status);
    return {status, take(out, n)};
}

// The inside pieces of random polylines match GEOS's intersection with the
// even-odd region in length; inside and outside add up to the whole.
TEST(InnerPart, MatchesGeosIntersection) {
    std::mt19937 rng(4);
    std::uniform_real_distribution<double> c(-2, 14);
    std::vector<GeomPoint> in;
    for (int i = 0; i < 200; ++i) in.push_back(point(c(rng), c(rng), 0, i % 20 == 19 ? 1u : 0u));
    const std::vector<GeomPoint> rings = nested_squares();
    geos_oracle::Context ctx;
    std::vector<std::vector<geos_oracle::XY>> xy(3);
    for (size_t i = 0; i < rings.size(); ++i) xy[i / 4].push_back({rings[i].x, rings[i].y});
    const geos_oracle::Geom region = geos_oracle::even_odd_region(ctx, xy);
    double expected = 0.0, total = 0.0;
    for (size_t s = 0; s < in.size(); s += 20) {
        std::vector<geos_oracle::XY> line;
        for (size_t i = s; i < s + 20; ++i) line.push_back({in[i].x, in[i].y});
        const geos_oracle::Geom l = geos_oracle::line(ctx, line);
        const geos_oracle::Geom cut(ctx.get(), GEOSIntersection_r(ctx.get(), region.g, l.g));
        expected += geos_oracle::length(ctx, cut);
        total += geos_oracle::length(ctx, l);
    }
    EXPECT_NEAR(drawn_length(part(in, rings, 0).points), expected, 1e-7);
    EXPECT_NEAR(drawn_length(part(in, rings, VEXO_PART_OUTSIDE).points), total - expected, 1e-7);
}

TEST(InnerPart, CutsTakeInterpolatedHeights) {
    const std::vector<GeomPoint> in = {point(-1, 1, 0), point(13, 1, 14, VEXO_POINT_END)};
    const Cut c = part(in, nested_squares(), 0);
    EXPECT_EQ(coords(c.points), (std::vector<Xyz>{{0, 1, 1}, {12, 1, 13}}));
    EXPECT_EQ(flags_of(c.points), (std::vector<uint32_t>{0, 1}));
}

TEST(InnerPart, BadRingsGiveAStatus) {
    std::vector<GeomPoint> rings = nested_squares();
    rings[5].y = NAN;
    EXPECT_EQ(part(kZigzag, rings, 0).status, VEXO_ERROR_INVALID_PARAMETER);
    uint32_t n = 0, status = 0;
    EXPECT_EQ(vexo_geom_inner_part(kZigzag.data(), 4, nullptr, 4, 0, &n, &status), nullptr);
    EXPECT_EQ(status, VEXO_ERROR_INVALID_PARAMETER);
}

TEST(InnerPartRect, ConsecutiveCutsContinueOnePolyline) {
    const double rect[6] = {0, 10, 0, 10, 0, 0};
    const std::vector<GeomPoint> in = {point(-5, 5, 0), point(5, 5, 10), point(5, 8, 13),
                                       point(15, 8, 23, VEXO_POINT_END),
                                       point(3, 3, 0, VEXO_POINT_END)};
    uint32_t n = 0, status = 0;
    GeomPoint *out = vexo_geom_inner_part_rect(in.data(), uint32_t(in.size()), rect, &n, &status);
    ASSERT_EQ(status, VEXO_OK);
    const std::vector<GeomPoint> got = take(out, n);
    EXPECT_EQ(coords(got),
              (std::vector<Xyz>{{0, 5, 5}, {5, 5, 10}, {5, 8, 13}, {10, 8, 18}, {3, 3, 0}}));
    EXPECT_EQ(flags_of(got), (std::vector<uint32_t>{0, 0, 0, 1, 1}));
}

TEST(InnerPartRect, BadRectangleGivesAStatus) {
    const double rect[6] = {0, NAN, 0, 10, 0, 0};
    uint32_t n = 3, status = 0;
    EXPECT_EQ(vexo_geom_inner_part_rect(kZigzag.data(), 4, rect, &n, &status), nullptr);
    EXPECT_EQ(status, VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_geom_inner_part_rect(kZigzag.data(), 4, nullptr, &n, &status), nullptr);
    EXPECT_EQ(status, VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(n, 0u);
}

} // namespace
