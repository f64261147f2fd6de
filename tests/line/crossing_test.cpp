// Crossings of lines and segments: codes, the 4-decimal comparison grid,
// vertical lines, z along line a and the 0x40 flag.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>

#include "line/crossing.hpp"
#include "vexo.h"

namespace {

GeomPoint pt(double x, double y, double z = 0.0, uint32_t flags = 0) {
    GeomPoint p{};
    p.x = x;
    p.y = y;
    p.z = z;
    p.flags = flags;
    return p;
}

uint32_t cross(const GeomPoint &a0, const GeomPoint &a1, const GeomPoint &b0,
               const GeomPoint &b1, GeomPoint *out, bool a_unbounded = false,
               bool b_unbounded = false) {
    return vexo_line_get_crossing(&a0, &a1, a_unbounded, &b0, &b1, b_unbounded, out);
}

TEST(LineRound4, HalfAwayFromZeroOnTheProductGrid) {
    EXPECT_EQ(vexo::round4(1.25), 1.25);
    EXPECT_EQ(vexo::round4(0.12345), 0.1235); // 1234.5 exactly after scaling
    EXPECT_EQ(vexo::round4(-0.12345), -0.1235);
    EXPECT_EQ(vexo::round4(0.12344), 0.1234);
    // 0.00015 scales to 1.4999999999999998: it rounds down, as the host did.
    EXPECT_EQ(vexo::round4(0.00015), 0.0001);
    EXPECT_EQ(vexo::round4(1.00001), 1.0);
    EXPECT_EQ(vexo::round4(1.00004), 1.0);
    EXPECT_EQ(vexo::round4(1.00006), 1.0001);
    EXPECT_EQ(vexo::round4(-0.00004), 0.0);
    EXPECT_EQ(vexo::round4(0.0), 0.0);
    // Outside the 64-bit range (and NaN) every value lands on one sentinel.
    const double sentinel = static_cast<double>(INT64_MIN) / 10000.0;
    EXPECT_EQ(vexo::round4(1e300), sentinel);
    EXPECT_EQ(vexo::round4(-1e300), sentinel);
    EXPECT_EQ(vexo::round4(NAN), sentinel);
    EXPECT_EQ(vexo::round4(INFINITY), sentinel);
    EXPECT_EQ(vexo::round4(9e14), 9e14);
}

TEST(LineCrossing, SegmentsCrossingInside) {
    GeomPoint out = pt(-1, -1, -1, 0xff);
    EXPECT_EQ(cross(pt(0, 0, 0), pt(2, 2, 4), pt(0, 2, 9), pt(2, 0, 9), &out),
              VEXO_CROSSING_FOUND);
    EXPECT_EQ(out.x, 1.0);
    EXPECT_EQ(out.y, 1.0);
    EXPECT_EQ(out.z, 2.0); // halfway along a; b's z plays no part
    EXPECT_EQ(out.flags, 0u);
    // The same crossing with the operands exchanged takes z from the other.
    EXPECT_EQ(cross(pt(0, 2, 9), pt(2, 0, 9), pt(0, 0, 0), pt(2, 2, 4), &out),
              VEXO_CROSSING_FOUND);
    EXPECT_EQ(out.z, 9.0);
}

TEST(LineCrossing, OutsideABoundedOperand) {
    // y = x from 0 to 1 meets y = 4 - x at (2, 2), the end of b.
    const GeomPoint a0 = pt(0, 0, 0), a1 = pt(1, 1, 1), b0 = pt(4, 0), b1 = pt(2, 2);
    GeomPoint out = pt(-1, -1, -1);
    EXPECT_EQ(cross(a0, a1, b0, b1, &out), VEXO_CROSSING_OUTSIDE);
    EXPECT_EQ(out.x, 2.0);
    EXPECT_EQ(out.y, 2.0);
    EXPECT_EQ(out.z, 0.0);
    // a unbounded: inside b, z extrapolated along a (twice a's length).
    EXPECT_EQ(cross(a0, a1, b0, b1, &out, true, false), VEXO_CROSSING_FOUND);
    EXPECT_EQ(out.z, 2.0);
    // Only b unbounded does not help: the crossing still misses a.
    EXPECT_EQ(cross(a0, a1, b0, b1, &out, false, true), VEXO_CROSSING_OUTSIDE);
    // b made shorter: outside b even with a unbounded.
    EXPECT_EQ(cross(a0, a1, b0, pt(3, 1), &out, true, false), VEXO_CROSSING_OUTSIDE);
    EXPECT_EQ(cross(a0, a1, b0, pt(3, 1), &out, true, true), VEXO_CROSSING_FOUND);
}

TEST(LineCrossing, EndpointsAndTheRoundedBoundsCountAsInside) {
    GeomPoint out;
    // Touching at a shared end point.
    EXPECT_EQ(cross(pt(0, 0), pt(1, 1), pt(1, 1), pt(2, 0), &out), VEXO_CROSSING_FOUND);
    EXPECT_EQ(out.x, 1.0);
    EXPECT_EQ(out.y, 1.0);
    // A vertical line 0.00004 beyond a's end still meets a on the grid...
    EXPECT_EQ(cross(pt(0, 0), pt(1, 0), pt(1.00004, -1), pt(1.00004, 1), &out),
              VEXO_CROSSING_FOUND);
    EXPECT_EQ(out.x, 1.00004);
    // ...0.00006 beyond it does not.
    EXPECT_EQ(cross(pt(0, 0), pt(1, 0), pt(1.00006, -1), pt(1.00006, 1), &out),
              VEXO_CROSSING_OUTSIDE);
    // Below the start, on the negative side of the grid.
    EXPECT_EQ(cross(pt(-1, 0), pt(1, 0), pt(-1.00004, -1), pt(-1.00004, 1), &out),
              VEXO_CROSSING_FOUND);
    EXPECT_EQ(cross(pt(-1, 0), pt(1, 0), pt(-1.00006, -1), pt(-1.00006, 1), &out),
              VEXO_CROSSING_OUTSIDE);
}

TEST(LineCrossing, NearlyParallelSlopesAroundTheGrid) {
    GeomPoint out = pt(5, 6, 7, 0);
    // Slopes 1.00001 and 1.00004 share a grid value: coincident through the
    // origin, parallel when offset; out's coordinates are left alone.
    EXPECT_EQ(cross(pt(0, 0), pt(1, 1.00001), pt(0, 0), pt(1, 1.00004), &out),
              VEXO_CROSSING_COINCIDENT);
    EXPECT_EQ(cross(pt(0, 0), pt(1, 1.00001), pt(0, 1), pt(1, 2.00004), &out),
              VEXO_CROSSING_PARALLEL);
    EXPECT_EQ(out.x, 5.0);
    EXPECT_EQ(out.y, 6.0);
    EXPECT_EQ(out.z, 7.0);
    // Offsets of 0.00004 also share the grid: still coincident.
    EXPECT_EQ(cross(pt(0, 0), pt(1, 1), pt(0, 0.00004), pt(1, 1.00004), &out),
              VEXO_CROSSING_COINCIDENT);
    // 1.00004 and 1.00006 fall on different grid values and do cross, far
    // away: x = (cb - ca) / (ma - mb) with the unrounded slopes.
    const GeomPoint a0 = pt(0, 0), a1 = pt(1, 1.00004), b0 = pt(0, -1), b1 = pt(1, 0.00006);
    EXPECT_EQ(cross(a0, a1, b0, b1, &out), VEXO_CROSSING_OUTSIDE);
    EXPECT_EQ(cross(a0, a1, b0, b1, &out, true, true), VEXO_CROSSING_FOUND);
    const double ma = 1.00004, mb = 0.00006 - (-1.0);
    const double x = (-1.0 - 0.0) / (ma - mb);
    EXPECT_EQ(out.x, x);
    EXPECT_EQ(out.y, x * ma);
    EXPECT_NEAR(out.x, 50000.0, 1.0);
    // Independent check: the point lies on both lines.
    EXPECT_NEAR(out.y, -1.0 + mb * out.x, 1e-6);
}

TEST(LineCrossing, VerticalLinesHaveNoTolerance) {
    GeomPoint out = pt(5, 6, 7);
    EXPECT_EQ(cross(pt(1, 0), pt(1, 4), pt(1, 7), pt(1, 9), &out), VEXO_CROSSING_COINCIDENT);
    EXPECT_EQ(cross(pt(1, 0), pt(1, 4), pt(1 + 1e-9, 7), pt(1 + 1e-9, 9), &out),
              VEXO_CROSSING_PARALLEL);
    EXPECT_EQ(out.x, 5.0);
    // a vertical, b sloped: z interpolated along the vertical a.
    EXPECT_EQ(cross(pt(1, 0, 0), pt(1, 4, 8), pt(0, 0), pt(2, 2), &out), VEXO_CROSSING_FOUND);
    EXPECT_EQ(out.x, 1.0);
    EXPECT_EQ(out.y, 1.0);
    EXPECT_EQ(out.z, 2.0);
    // b vertical, a sloped.
    EXPECT_EQ(cross(pt(0, 0, 0), pt(4, 2, 2), pt(2, -5), pt(2, 5), &out), VEXO_CROSSING_FOUND);
    EXPECT_EQ(out.x, 2.0);
    EXPECT_EQ(out.y, 1.0);
    EXPECT_EQ(out.z, 1.0);
    // Almost vertical is not vertical: a steep a meets the vertical b.
    EXPECT_EQ(cross(pt(1, 0), pt(1 + 1e-9, 4), pt(1, -5), pt(1, 5), &out), VEXO_CROSSING_FOUND);
    EXPECT_EQ(out.x, 1.0);
    EXPECT_NEAR(out.y, 0.0, 1e-6);
}

TEST(LineCrossing, DegenerateSegmentA) {
    // a collapsed to a point on b: a counts as vertical, z is a0.z.
    GeomPoint out;
    EXPECT_EQ(cross(pt(1, 1, 3), pt(1, 1, 9), pt(0, 0), pt(2, 2), &out), VEXO_CROSSING_FOUND);
    EXPECT_EQ(out.x, 1.0);
    EXPECT_EQ(out.y, 1.0);
    EXPECT_EQ(out.z, 3.0);
}

TEST(LineCrossing, KeepFlagNeedsAllFourEnds) {
    GeomPoint out = pt(0, 0, 0, 0xff);
    const GeomPoint k = pt(0, 0, 0, 0x43), l = pt(2, 2, 0, 0x40), m = pt(0, 2, 0, 0x47),
                    n = pt(2, 0, 0, 0x41);
    EXPECT_EQ(vexo_line_get_crossing(&k, &l, false, &m, &n, false, &out), VEXO_CROSSING_FOUND);
    EXPECT_EQ(out.flags, 0x40u);
    const GeomPoint n_plain = pt(2, 0, 0, 0x01);
    vexo_line_get_crossing(&k, &l, false, &m, &n_plain, false, &out);
    EXPECT_EQ(out.flags, 0u);
    // Written even when the lines are parallel.
    out.flags = 0xff;
    EXPECT_EQ(vexo_line_get_crossing(&k, &l, false, &k, &l, false, &out),
              VEXO_CROSSING_COINCIDENT);
    EXPECT_EQ(out.flags, 0x40u);
}

TEST(LineCrossing, OutputMayAliasAnInputAndPointersAreChecked) {
    GeomPoint a0 = pt(0, 0, 0), a1 = pt(2, 2, 4);
    const GeomPoint b0 = pt(0, 2), b1 = pt(2, 0);
    EXPECT_EQ(vexo_line_get_crossing(&a0, &a1, false, &b0, &b1, false, &a0),
              VEXO_CROSSING_FOUND);
    EXPECT_EQ(a0.x, 1.0);
    EXPECT_EQ(a0.y, 1.0);
    EXPECT_EQ(a0.z, 2.0);

    GeomPoint out = pt(3, 3, 3, 3);
    EXPECT_EQ(vexo_line_get_crossing(nullptr, &a1, false, &b0, &b1, false, &out),
              VEXO_CROSSING_MISSING_ARGUMENT);
    EXPECT_EQ(vexo_line_get_crossing(&a0, &a1, false, &b0, nullptr, false, &out),
              VEXO_CROSSING_MISSING_ARGUMENT);
    EXPECT_EQ(vexo_line_get_crossing(&a0, &a1, false, &b0, &b1, false, nullptr),
              VEXO_CROSSING_MISSING_ARGUMENT);
    EXPECT_EQ(out.x, 3.0);
    EXPECT_EQ(out.flags, 3u);
}

TEST(LineCrossing, NonFiniteInputDoesNotTrap) {
    GeomPoint out;
    const uint32_t code =
        cross(pt(0, 0), pt(NAN, 1), pt(0, 1), pt(INFINITY, 0), &out, true, true);
    EXPECT_GE(code, 1u);
    EXPECT_LE(code, 4u);
}

} // namespace
