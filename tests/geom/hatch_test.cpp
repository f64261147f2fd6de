// SPDX-License-Identifier: MIT
// Hatch fill, judged by GEOS (scan lines cut by the even-odd region), by the
// point-in-polygon test (parity at vertices and along edges), and by
// coverage, inset and connector checks.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <map>
#include <ostream>
#include <vector>

#include "geos_oracle.hpp"
#include "vexo_test_util.hpp"

using namespace vexo_test;
using geos_oracle::XY;
using Rings = std::vector<std::vector<XY>>;

namespace {

std::vector<GeomPoint> to_array(const Rings &rings) {
    std::vector<GeomPoint> pts;
    for (const auto &r : rings) {
        for (const XY &p : r) pts.push_back(point(p.first, p.second));
        pts.back().flags = VEXO_POINT_END;
    }
    return pts;
}

VexoHatch hatch(double spacing, double angle = 0.0) {
    VexoHatch h;
    std::memset(&h, 0, sizeof h);
    h.spacing = spacing;
    h.angle = angle;
    h.passes = 1;
    return h;
}

struct Result {
    uint32_t status;
    std::vector<GeomPoint> points;
};

Result cover(const Rings &rings, const VexoHatch &h) {
    const std::vector<GeomPoint> in = to_array(rings);
    uint32_t n = 12345, status = 0;
    GeomPoint *out = vexo_geom_cover(in.data(), static_cast<uint32_t>(in.size()), &h, &n, &status);
    return {status, take(out, n)};
}

// The two-point hatch lines as one GEOS multi-line.
geos_oracle::Geom hatch_lines(const geos_oracle::Context &ctx, const std::vector<GeomPoint> &pts) {
    std::vector<GEOSGeometry *> parts;
    for (const auto &l : polylines(pts)) {
        geos_oracle::Geom g = geos_oracle::line(ctx, {{l[0].x, l[0].y}, {l[1].x, l[1].y}});
        parts.push_back(g.g);
        g.g = nullptr;
    }
    return geos_oracle::Geom(ctx.get(),
                             GEOSGeom_createCollection_r(ctx.get(), GEOS_MULTILINESTRING,
                                                         parts.data(), unsigned(parts.size())));
}

std::vector<XY> square(double x0, double y0, double x1, double y1) {
    return {{x0, y0}, {x1, y0}, {x1, y1}, {x0, y1}};
}

// A rippled outline with a hole, its island, and many edges, like a glyph.
Rings glyph() {
    Rings rings(3);
    for (int i = 0; i < 1200; ++i) {
        const double t = 2 * M_PI * i / 1200;
        const double r = 10 + 1.5 * std::sin(7 * t);
        rings[0].push_back({r * std::cos(t), r * std::sin(t)});
    }
    for (int i = 0; i < 600; ++i) { // the hole runs the same way as the outline
        const double t = 2 * M_PI * i / 600;
        rings[1].push_back({1 + 5 * std::cos(t), 3 * std::sin(t)});
    }
    rings[2] = {{0, -1}, {2.5, -1.5}, {3, 1}, {0.5, 1.6}};
    return rings;
}

struct Fixture {
    const char *name;
    Rings rings;
    double spacing, angle, ox, oy;
};

void PrintTo(const Fixture &f, std::ostream *os) {
    *os << f.name;
}

std::vector<Fixture> fixtures() {
    const Rings nested = {square(0, 0, 10, 10), square(2, 2, 8, 8), square(3, 3, 7, 7),
                          square(4, 4, 6, 6)};
    const Rings eight = {{{0, 0}, {10, 10}, {10, 0}, {0, 10}}};
    return {
        {"nested_squares", nested, 0.3, 0.0, 0.0, 0.05},
        {"nested_squares_turned", nested, 0.3, 37.0, 0.1, 0.2},
        {"figure_eight", eight, 0.25, 0.0, 0.0, 0.1},
        {"figure_eight_steep", eight, 0.25, 71.0, 0.0, 0.0},
        {"glyph", glyph(), 0.37, 23.0, 0.0, 0.0},
    };
}

class HatchVersusGeos : public ::testing::TestWithParam<Fixture> {};

// Every scan line of the region, cut by GEOS, matches the hatch lines on it.
TEST_P(HatchVersusGeos, EveryScanLineMatches) {
    const Fixture &f = GetParam();
    VexoHatch h = hatch(f.spacing, f.angle);
    h.origin_x = f.ox;
    h.origin_y = f.oy;
    const Result r = cover(f.rings, h);
    ASSERT_EQ(r.status, VEXO_OK);

    const double a = f.angle / 360.0 * kTwoPiF, c = std::cos(a), s = std::sin(a);
    auto u_of = [&](const XY &p) { return (p.first - f.ox) * c + (p.second - f.oy) * s; };
    auto v_of = [&](const XY &p) { return (p.second - f.oy) * c - (p.first - f.ox) * s; };
    std::map<long, std::vector<std::pair<double, double>>> ours, theirs;
    for (const auto &line : polylines(r.points)) {
        ASSERT_EQ(line.size(), 2u);
        const XY p0{line[0].x, line[0].y}, p1{line[1].x, line[1].y};
        ours[std::lround(v_of(p0) / f.spacing)].emplace_back(u_of(p0), u_of(p1));
    }
    geos_oracle::Context ctx;
    const geos_oracle::Geom region = geos_oracle::even_odd_region(ctx, f.rings);
    double vmin = 1e300, vmax = -1e300;
    for (const auto &ring : f.rings)
        for (const XY &p : ring) vmin = std::min(vmin, v_of(p)), vmax = std::max(vmax, v_of(p));
    const long k0 = std::lround(std::floor(vmin / f.spacing)),
               k1 = std::lround(std::ceil(vmax / f.spacing));
    for (long k = k0; k <= k1; ++k) {
        const double v = k * f.spacing, far = 1000.0;
        const XY from{f.ox - far * c - v * s, f.oy - far * s + v * c};
        const XY to{f.ox + far * c - v * s, f.oy + far * s + v * c};
        for (const auto &piece : geos_oracle::clip_line(ctx, region, from, to)) {
            double u0 = u_of(piece.front()), u1 = u_of(piece.back());
            theirs[k].emplace_back(std::min(u0, u1), std::max(u0, u1));
        }
    }
    for (auto &entry : theirs) std::sort(entry.second.begin(), entry.second.end());
    for (auto &entry : ours) std::sort(entry.second.begin(), entry.second.end());
    ASSERT_EQ(ours.size(), theirs.size()) << f.name;
    for (const auto &entry : theirs) {
        const auto &mine = ours[entry.first];
        ASSERT_EQ(mine.size(), entry.second.size()) << f.name << " line " << entry.first;
        for (size_t i = 0; i < mine.size(); ++i) {
            EXPECT_NEAR(mine[i].first, entry.second[i].first, 1e-7)
                << f.name << " line " << entry.first;
            EXPECT_NEAR(mine[i].second, entry.second[i].second, 1e-7)
                << f.name << " line " << entry.first;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Fixtures, HatchVersusGeos, ::testing::ValuesIn(fixtures()),
                         [](const ::testing::TestParamInfo<Fixture> &i) { return i.param.name; });

// Along every scan line, a point is covered exactly when the crossing-number
// test of every ring, combined by parity, says inside: at vertices on the
// line and along edges that lie on it as well.
TEST(Hatch, CoverageIsThePointInPolygonParity) {
    const Rings rings = {
        {{0, 0},
         {4, 0},
         {4, 2},
         {6, 2},
         {6, 0},
         {9, 0},
         {9, 5},
         {7, 3},
         {5, 5},
         {3, 3},
         {1, 5},
         {0, 3}},
        {{1, 1}, {2, 1}, {2, 2}, {1, 2}},
        {{7, 1}, {8, 2}, {7, 3}, {6, 2}},
    };
    const Result r = cover(rings, hatch(1.0));
    ASSERT_EQ(r.status, VEXO_OK);
    std::vector<std::vector<GeomPoint>> ring_points;
    for (const auto &ring : rings) {
        ring_points.emplace_back();
        for (const XY &p : ring) ring_points.back().push_back(point(p.first, p.second));
    }
    for (int y = -1; y <= 6; ++y)
        for (double x = -1.0; x <= 10.0; x += 0.125) {
            const GeomPoint q = point(x, y);
            bool pip = false;
            for (const auto &rp : ring_points)
                pip ^= vexo_geom_point_in_polygon(&q, rp.data(), int32_t(rp.size())) == 1;
            bool covered = false;
            for (const auto &line : polylines(r.points))
                if (line[0].y == y && line[0].x <= x && x < line[1].x) covered = true;
            EXPECT_EQ(covered, pip) << "at (" << x << ", " << y << ")";
        }
}

// The bottom edge lies on a scan line and is hatched; the top edge is not.
TEST(Hatch, LinesAlongEdgesFollowTheHalfOpenRule) {
    const Result r = cover({square(0, 0, 10, 10)}, hatch(1.0));
    ASSERT_EQ(r.status, VEXO_OK);
    std::vector<Xyz> expected;
    for (int y = 0; y < 10; ++y)
        expected.push_back({0, double(y), 0}), expected.push_back({10, double(y), 0});
    EXPECT_EQ(coords(r.points), expected);
}

// With an inset every hatch point keeps the distance from the contours
// (within the round joins' tolerance), and the shrunk region stays covered.
TEST(Hatch, InsetKeepsAwayFromContoursAndCovers) {
    const Rings rings = glyph();
    VexoHatch h = hatch(0.3, 10.0);
    h.inset = 0.4;
    const Result r = cover(rings, h);
    ASSERT_EQ(r.status, VEXO_OK);
    geos_oracle::Context ctx;
    const geos_oracle::Geom region = geos_oracle::even_odd_region(ctx, rings);
    const geos_oracle::Geom edge = geos_oracle::boundary(ctx, region);
    for (const GeomPoint &p : r.points) {
        const geos_oracle::Geom q = geos_oracle::point(ctx, p.x, p.y);
        EXPECT_GE(geos_oracle::distance(ctx, q, edge), 0.4 * (1 - 2e-3)) << p.x << ", " << p.y;
        EXPECT_TRUE(geos_oracle::contains(ctx, region, p.x, p.y)) << p.x << ", " << p.y;
    }
    const geos_oracle::Geom all = hatch_lines(ctx, r.points);
    for (double x = -11.5; x <= 11.5; x += 0.41)
        for (double y = -11.5; y <= 11.5; y += 0.43) {
            if (!geos_oracle::contains(ctx, region, x, y)) continue;
            const geos_oracle::Geom p = geos_oracle::point(ctx, x, y);
            if (geos_oracle::distance(ctx, p, edge) < 0.4 + 0.3) continue;
            EXPECT_LE(geos_oracle::distance(ctx, p, all), 0.15 + 1e-9) << x << ", " << y;
        }
}

// A "U": serpentine connectors join lines inside each arm but never jump
// across the gap between the arms.
TEST(Hatch, ConnectorsStayInsideTheRegion) {
    const Rings rings = {{{0, 0}, {10, 0}, {10, 10}, {7, 10}, {7, 3}, {3, 3}, {3, 10}, {0, 10}}};
    VexoHatch h = hatch(0.45, 90.0);
    h.options = VEXO_HATCH_BIDIRECTIONAL | VEXO_HATCH_CONNECT;
    h.connect_distance = 100.0;
    const Result r = cover(rings, h);
    ASSERT_EQ(r.status, VEXO_OK);
    geos_oracle::Context ctx;
    const geos_oracle::Geom region = geos_oracle::even_odd_region(ctx, rings);
    const geos_oracle::Geom grown(ctx.get(), GEOSBuffer_r(ctx.get(), region.g, 1e-7, 8));
    size_t lines = 0, connectors = 0;
    for (const auto &l : polylines(r.points)) {
        ASSERT_EQ(l.size() % 2, 0u);
        lines += l.size() / 2;
        for (size_t i = 1; i + 1 < l.size(); i += 2) {
            ++connectors;
            const geos_oracle::Geom c =
                geos_oracle::line(ctx, {{l[i].x, l[i].y}, {l[i + 1].x, l[i + 1].y}});
            EXPECT_EQ(GEOSCovers_r(ctx.get(), grown.g, c.g), 1)
                << "(" << l[i].x << ", " << l[i].y << ") -> (" << l[i + 1].x << ", " << l[i + 1].y
                << ")";
        }
    }
    EXPECT_GT(connectors, lines / 2) << "lines " << lines;
}

// Bidirectional lines alternate; connected (the connector is 1 long), they
// form one serpentine.
TEST(Hatch, BidirectionalLinesAlternateAndConnect) {
    const struct {
        uint32_t options;
        double connect_distance;
        std::vector<uint32_t> flags;
    } cases[] = {{0, 0.0, {0, 5, 0, 5}},
                 {VEXO_HATCH_CONNECT, 1.0, {0, 0, 0, 5}},
                 {VEXO_HATCH_CONNECT, 0.99, {0, 5, 0, 5}}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.connect_distance);
        VexoHatch h = hatch(1.0);
        h.options = VEXO_HATCH_BIDIRECTIONAL | c.options;
        h.connect_distance = c.connect_distance;
        const Result r = cover({square(0, 0, 10, 2)}, h);
        EXPECT_EQ(coords(r.points),
                  (std::vector<Xyz>{{0, 0, 0}, {10, 0, 0}, {10, 1, 0}, {0, 1, 0}}));
        EXPECT_EQ(flags_of(r.points), c.flags);
    }
}

// Trims shorten each line at its own start and end; short lines go.
TEST(Hatch, TrimsFollowTheDirectionOfTravel) {
    VexoHatch h = hatch(1.0);
    h.options = VEXO_HATCH_BIDIRECTIONAL;
    h.start_trim = 1.0;
    h.end_trim = 2.0;
    const Result r = cover({square(0, 0, 10, 2)}, h);
    EXPECT_EQ(coords(r.points), (std::vector<Xyz>{{1, 0, 0}, {8, 0, 0}, {9, 1, 0}, {2, 1, 0}}));
}

TEST(Hatch, LinesBelowTheMinimumLengthAreDropped) {
    VexoHatch h = hatch(1.0);
    h.start_trim = 1.0;
    h.end_trim = 2.0;
    h.min_length = 7.0; // exactly 7 long: kept
    EXPECT_EQ(cover({square(0, 0, 10, 2)}, h).points.size(), 4u);
    h.min_length = 7.000001;
    const Result r = cover({square(0, 0, 10, 2)}, h);
    EXPECT_EQ(r.status, VEXO_ERROR_NO_RESULT);
    EXPECT_EQ(r.points.size(), 0u);
}

// Each cross-hatch pass is the single pass at its own angle.
TEST(Hatch, CrossHatchPassesAreTurnedSinglePasses) {
    const Rings rings = {square(0, 0, 10, 6), {{2, 2}, {5, 4}, {3, 5}}};
    VexoHatch h = hatch(0.7, 15.0);
    h.passes = 3;
    h.angle_step = 60.0;
    const Result all = cover(rings, h);
    std::vector<GeomPoint> expected;
    for (double angle : {15.0, 75.0, 135.0}) {
        const Result one = cover(rings, hatch(0.7, angle));
        expected.insert(expected.end(), one.points.begin(), one.points.end());
    }
    ASSERT_EQ(all.points.size(), expected.size());
    EXPECT_TRUE(same_bytes(all.points[0], expected[0], expected.size()));
}

TEST(Hatch, ContoursComeClosedBeforeOrAfter) {
    VexoHatch h = hatch(5.0);
    h.options = VEXO_HATCH_CONTOUR_BEFORE | VEXO_HATCH_CONTOUR_AFTER;
    const Result r = cover({square(0, 0, 10, 10)}, h);
    const std::vector<Xyz> contour = {{0, 0, 0}, {10, 0, 0}, {10, 10, 0}, {0, 10, 0}, {0, 0, 0}};
    std::vector<Xyz> expected = contour;
    expected.insert(expected.end(), {{0, 0, 0}, {10, 0, 0}, {0, 5, 0}, {10, 5, 0}});
    expected.insert(expected.end(), contour.begin(), contour.end());
    EXPECT_EQ(coords(r.points), expected);
    EXPECT_EQ(flags_of(r.points),
              (std::vector<uint32_t>{0, 0, 0, 0, 5, 0, 5, 0, 5, 0, 0, 0, 0, 5}));
}

TEST(Hatch, SameInputSameBytes) {
    VexoHatch h = hatch(0.2, 33.0);
    h.inset = 0.1;
    h.passes = 2;
    h.angle_step = 45.0;
    h.options = VEXO_HATCH_BIDIRECTIONAL | VEXO_HATCH_CONNECT;
    h.connect_distance = 1.0;
    const Result a = cover(glyph(), h), b = cover(glyph(), h);
    ASSERT_EQ(a.points.size(), b.points.size());
    EXPECT_TRUE(same_bytes(a.points[0], b.points[0], a.points.size()));
}

TEST(Hatch, InsetWiderThanTheShapeLeavesNothing) {
    VexoHatch h = hatch(0.1);
    h.inset = 5.0;
    EXPECT_EQ(cover({square(0, 0, 10, 9.9)}, h).status, VEXO_ERROR_NO_RESULT);
    h.inset = 1e30;
    EXPECT_EQ(cover({square(0, 0, 10, 9.9)}, h).status, VEXO_ERROR_NO_RESULT);
}

struct BadHatch {
    const char *name;
    void (*spoil)(VexoHatch &, std::vector<GeomPoint> &);
};

// Bad parameters and points give a status, NULL and a zero count.
TEST(Hatch, BadInputGivesAStatus) {
    const BadHatch cases[] = {
        {"spacing 0", [](VexoHatch &h, std::vector<GeomPoint> &) { h.spacing = 0; }},
        {"negative spacing", [](VexoHatch &h, std::vector<GeomPoint> &) { h.spacing = -1; }},
        {"NaN spacing", [](VexoHatch &h, std::vector<GeomPoint> &) { h.spacing = NAN; }},
        {"infinite angle", [](VexoHatch &h, std::vector<GeomPoint> &) { h.angle = INFINITY; }},
        {"no pass", [](VexoHatch &h, std::vector<GeomPoint> &) { h.passes = 0; }},
        {"65 passes", [](VexoHatch &h, std::vector<GeomPoint> &) { h.passes = 65; }},
        {"negative inset", [](VexoHatch &h, std::vector<GeomPoint> &) { h.inset = -0.1; }},
        {"negative min length", [](VexoHatch &h, std::vector<GeomPoint> &) { h.min_length = -1; }},
        {"NaN trim", [](VexoHatch &h, std::vector<GeomPoint> &) { h.end_trim = NAN; }},
        {"NaN point", [](VexoHatch &, std::vector<GeomPoint> &p) { p[2].y = NAN; }},
        {"infinite point", [](VexoHatch &, std::vector<GeomPoint> &p) { p[1].x = -INFINITY; }},
        {"10^10 scan lines", [](VexoHatch &h, std::vector<GeomPoint> &) { h.spacing = 1e-9; }},
    };
    for (const BadHatch &c : cases) {
        VexoHatch h = hatch(1.0);
        std::vector<GeomPoint> pts = to_array({square(0, 0, 10, 10)});
        c.spoil(h, pts);
        uint32_t n = 77, status = 0;
        EXPECT_EQ(vexo_geom_cover(pts.data(), uint32_t(pts.size()), &h, &n, &status), nullptr)
            << c.name;
        EXPECT_EQ(status, VEXO_ERROR_INVALID_PARAMETER) << c.name;
        EXPECT_EQ(n, 0u) << c.name;
    }
}

TEST(Hatch, MissingPointersGiveAStatus) {
    const VexoHatch h = hatch(1.0);
    const std::vector<GeomPoint> pts = to_array({square(0, 0, 10, 10)});
    uint32_t n = 77, status = 0;
    EXPECT_EQ(vexo_geom_cover(pts.data(), 4, nullptr, &n, &status), nullptr);
    EXPECT_EQ(status, VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_geom_cover(nullptr, 4, &h, &n, &status), nullptr);
    EXPECT_EQ(status, VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_geom_cover(pts.data(), 4, &h, nullptr, &status), nullptr);
    EXPECT_EQ(status, VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_geom_cover(nullptr, 0, &h, &n, &status), nullptr);
    EXPECT_EQ(status, VEXO_ERROR_NO_RESULT);
    Points out(vexo_geom_cover(pts.data(), 4, &h, &n, nullptr)); // status may be NULL
    EXPECT_EQ(n, 20u);
}

// Rings of fewer than 3 points enclose nothing.
TEST(Hatch, ShortRingsAreSkipped) {
    EXPECT_EQ(cover({{{0, 0}, {10, 10}}, {{5, 5}}}, hatch(0.5)).status, VEXO_ERROR_NO_RESULT);
}

// A result that could not be held is refused before it is built.
TEST(Hatch, OversizedResultIsRefused) {
    std::vector<XY> comb;
    for (int i = 0; i < 4000; ++i) comb.push_back({i, 0}), comb.push_back({i + 0.5, 100});
    comb.push_back({4000, -1});
    comb.push_back({0, -1});
    const Result r = cover({comb}, hatch(0.01));
    EXPECT_EQ(r.status, VEXO_ERROR_NO_MEMORY);
    EXPECT_EQ(r.points.size(), 0u);
}

} // namespace
