// Outlines checked against the geometry of a grown or shrunk square.
#include <gtest/gtest.h>

#include <cmath>

#include "clip_support.hpp"

using namespace cliptest;

namespace {

// Distance from a point to the axis-aligned box [x0,x1] x [y0,y1].
double distance_to_box(const GeomPoint &p, double x0, double y0, double x1, double y1) {
    const double dx = std::fmax(std::fmax(x0 - p.x, 0.0), p.x - x1);
    const double dy = std::fmax(std::fmax(y0 - p.y, 0.0), p.y - y1);
    return std::hypot(dx, dy);
}

std::vector<GeomPoint> outline_of(const std::vector<GeomPoint> &subject, uint32_t mode,
                                  double distance) {
    auto h = make(subject);
    EXPECT_EQ(vexo_clip_outline(h.get(), mode, distance), VEXO_OK);
    return result_of(h.get());
}

} // namespace

TEST(ClipOutline, GrownSquareBoundsAndAreaPerJoin) {
    const double root2 = std::sqrt(2.0);
    struct Case {
        uint32_t mode;
        double area, tolerance;
    } const cases[] = {
        // Right angles stay within the miter limit of 2: full corners.
        {VEXO_CLIP_JOIN_MITER, 144.0, 1e-9},
        // Quarter circles of radius 1 at the corners, as inscribed chords.
        {VEXO_CLIP_JOIN_ROUND, 100.0 + 40.0 + M_PI, 2e-3},
        // Each corner cut square at distance 1 along its bisector.
        {VEXO_CLIP_JOIN_SQUARE, 144.0 - 4.0 * (root2 - 1) * (root2 - 1), 2e-3},
        // The join bits are tried miter, round, square.
        {VEXO_CLIP_JOIN_MITER | VEXO_CLIP_JOIN_ROUND, 144.0, 1e-9},
        {VEXO_CLIP_JOIN_ROUND | VEXO_CLIP_JOIN_SQUARE | 0x18u, 100.0 + 40.0 + M_PI, 2e-3},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.mode);
        const auto out = outline_of(rect(0, 0, 10, 10), c.mode, 1.0);
        ASSERT_EQ(paths_of(out).size(), 1u);
        const Bounds b = bounds_of(out);
        EXPECT_EQ(b.x0, -1.0);
        EXPECT_EQ(b.y0, -1.0);
        EXPECT_EQ(b.x1, 11.0);
        EXPECT_EQ(b.y1, 11.0);
        EXPECT_NEAR(net_area(out), c.area, c.tolerance);
        if ((c.mode & 3u) == VEXO_CLIP_JOIN_ROUND) {
            EXPECT_LT(net_area(out), c.area); // chords lie inside the arcs
        }
    }
    // Miter gives exactly the four grown corners.
    const auto miter = outline_of(rect(0, 0, 10, 10), VEXO_CLIP_JOIN_MITER, 1.0);
    EXPECT_EQ(miter.size(), 5u);
}

TEST(ClipOutline, RoundCornersStayOnTheArc) {
    // Distance 10 on the 0.001 grid: every point lies 10 from the square,
    // within the arc tolerance (0.25 grid units) and rounding.
    const auto out = outline_of(rect(0, 0, 10, 10), VEXO_CLIP_JOIN_ROUND, 10.0);
    size_t on_arc = 0;
    for (const GeomPoint &p : out) {
        EXPECT_NEAR(distance_to_box(p, 0, 0, 10, 10), 10.0, 1e-3);
        if (std::fabs(p.x - 5) > 5 && std::fabs(p.y - 5) > 5)
            ++on_arc;
    }
    EXPECT_GT(on_arc, 4u * 50u); // a fine arc at every corner
    const double exact = 100.0 + 4 * 100.0 + M_PI * 100.0;
    EXPECT_LT(net_area(out), exact);
    EXPECT_GT(net_area(out), exact - 0.03);
}

TEST(ClipOutline, ShrinkingAndVanishing) {
    for (uint32_t mode : {VEXO_CLIP_JOIN_MITER, VEXO_CLIP_JOIN_ROUND, VEXO_CLIP_JOIN_SQUARE}) {
        SCOPED_TRACE(mode);
        const auto out = outline_of(rect(0, 0, 10, 10), mode, -1.0);
        EXPECT_NEAR(net_area(out), 64.0, 1e-9);
        const Bounds b = bounds_of(out);
        EXPECT_EQ(b.x0, 1.0);
        EXPECT_EQ(b.x1, 9.0);
        // Shrinking past the middle leaves nothing.
        auto h = make(rect(0, 0, 10, 10));
        ASSERT_EQ(vexo_clip_outline(h.get(), mode, -6.0), VEXO_OK);
        uint32_t n = 3;
        EXPECT_EQ(vexo_clip_get_result(h.get(), &n), nullptr);
        EXPECT_EQ(n, 0u);
        EXPECT_EQ(vexo_clip_set_solution(h.get()), VEXO_ERROR_INVALID_PARAMETER);
    }
    // Offsets tell holes by orientation: a clockwise inner path shrinks
    // while the ring grows outward; a counter-clockwise one grows with it
    // and is swallowed.
    const auto hole = rect(3, 7, 7, 3); // corners walked clockwise
    ASSERT_LT(signed_area(hole), 0.0);
    const auto ring = join(rect(0, 0, 10, 10), hole);
    const auto grown = outline_of(ring, VEXO_CLIP_JOIN_MITER, 1.0);
    EXPECT_EQ(paths_of(grown).size(), 2u);
    EXPECT_NEAR(net_area(grown), 144.0 - 4.0, 1e-9);
    const auto islands = outline_of(join(rect(0, 0, 10, 10), rect(3, 3, 7, 7)),
                                    VEXO_CLIP_JOIN_MITER, 1.0);
    EXPECT_EQ(paths_of(islands).size(), 1u);
    EXPECT_NEAR(net_area(islands), 144.0, 1e-9);
}

TEST(ClipOutline, MiterLimitSquaresOffSharpCorners) {
    // The tip at (100, 0) has an angle of about 5.7 degrees: a full miter
    // would reach 20 units out, the limit of 2 cuts it within 2 of the tip.
    const std::vector<GeomPoint> sliver = {pt(0, 0), pt(100, 0), pt(0, 10),
                                           pt(0, 0, 0, VEXO_POINT_END)};
    const auto out = outline_of(sliver, VEXO_CLIP_JOIN_MITER, 1.0);
    const Bounds b = bounds_of(out);
    EXPECT_GT(b.x1, 100.9);
    EXPECT_LE(b.x1, 102.0);
    // The right-angle corner at the origin is mitered in full.
    EXPECT_EQ(b.x0, -1.0);
    EXPECT_EQ(b.y0, -1.0);
}

TEST(ClipOutline, RefusedArguments) {
    auto h = make(rect(0, 0, 10, 10));
    EXPECT_EQ(vexo_clip_outline(nullptr, VEXO_CLIP_JOIN_MITER, 1.0),
              VEXO_ERROR_INVALID_PARAMETER);
    for (uint32_t mode : {0u, 8u, 0x10u, 0x18u, 0xFFFFFFF8u})
        EXPECT_EQ(vexo_clip_outline(h.get(), mode, 1.0), VEXO_ERROR_INVALID_PARAMETER) << mode;
    for (double d : {std::nan(""), double(INFINITY), -double(INFINITY), 1.0e11, -2.0e10})
        EXPECT_EQ(vexo_clip_outline(h.get(), VEXO_CLIP_JOIN_ROUND, d),
                  VEXO_ERROR_INVALID_PARAMETER)
            << d;
    // The largest accepted distance works (a miter needs few points).
    EXPECT_EQ(vexo_clip_outline(h.get(), VEXO_CLIP_JOIN_MITER, 1.0e10), VEXO_OK);
    EXPECT_EQ(bounds_of(result_of(h.get())).x1, 1.0e10 + 10.0);
    // The subject is left as it was.
    EXPECT_NEAR(net_area(subject_of(h.get())), 100.0, 1e-9);
}
