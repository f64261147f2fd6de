// Smoothing of short zig-zags inside polylines.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

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

using Smoothen = GeomPoint *(*)(GeomPoint *, uint32_t, double, uint32_t *);

TEST(GeomSmooth, WorkedExampleAndTheStrictThreshold) {
    for (Smoothen smoothen : {vexo_geom_smoothen, vexo_geom_smoothen_2d}) {
        GeomPoint pts[3] = {pt(0, 0), pt(1, 1), pt(2, 0)};
        uint32_t status = 0;
        EXPECT_EQ(smoothen(pts, 3, 2.0, &status), pts);
        EXPECT_EQ(status, VEXO_OK);
        EXPECT_EQ(pts[1].x, 1.0);
        EXPECT_EQ(pts[1].y, 1.0 / 3.0);
        EXPECT_EQ(pts[0].y, 0.0);
        EXPECT_EQ(pts[2].x, 2.0);

        // sqrt(2) is not below 1.4, nor below itself; just above it is.
        GeomPoint again[3] = {pt(0, 0), pt(1, 1), pt(2, 0)};
        smoothen(again, 3, 1.4, nullptr);
        EXPECT_EQ(again[1].y, 1.0);
        smoothen(again, 3, std::sqrt(2.0), nullptr);
        EXPECT_EQ(again[1].y, 1.0);
        smoothen(again, 3, std::nextafter(std::sqrt(2.0), 2.0), nullptr);
        EXPECT_EQ(again[1].y, 1.0 / 3.0);
    }
}

TEST(GeomSmooth, ZIsMeasuredIn3dButNeverMoved) {
    GeomPoint flat[3] = {pt(0, 0, 0), pt(1, 1, 5), pt(2, 0, 0)};
    vexo_geom_smoothen_2d(flat, 3, 2.0, nullptr);
    EXPECT_EQ(flat[1].y, 1.0 / 3.0);
    EXPECT_EQ(flat[1].z, 5.0);

    GeomPoint deep[3] = {pt(0, 0, 0), pt(1, 1, 5), pt(2, 0, 0)};
    vexo_geom_smoothen(deep, 3, 2.0, nullptr);
    EXPECT_EQ(deep[1].y, 1.0); // 3D neighbours are sqrt(27) away
    vexo_geom_smoothen(deep, 3, 6.0, nullptr);
    EXPECT_EQ(deep[1].x, 1.0);
    EXPECT_EQ(deep[1].y, 1.0 / 3.0);
    EXPECT_EQ(deep[1].z, 5.0);
}

TEST(GeomSmooth, ForwardPassSeesTheSmoothedPoint) {
    GeomPoint pts[4] = {pt(0, 0), pt(1, 3), pt(2, 0), pt(3, 3)};
    vexo_geom_smoothen_2d(pts, 4, 10.0, nullptr);
    EXPECT_EQ(pts[1].x, 1.0);
    EXPECT_EQ(pts[1].y, 1.0);
    EXPECT_EQ(pts[2].x, 2.0);
    EXPECT_EQ(pts[2].y, (0.0 + 1.0 + 3.0) / 3.0); // not (0 + 3 + 3) / 3
    EXPECT_EQ(pts[3].y, 3.0);
    // The sum runs p1 + p0 + p2, in that order.
    GeomPoint order[3] = {pt(0.1, 0), pt(0.2, 0), pt(0.3, 0)};
    vexo_geom_smoothen_2d(order, 3, 1.0, nullptr);
    EXPECT_EQ(order[1].x, (0.2 + 0.1 + 0.3) / 3.0);
}

TEST(GeomSmooth, EndsAndDotsAreNeverTouched) {
    // Line [0..3], a dot, line [5..8]: only points whose triple holds no end
    // flag move, so the last inner point of each line stays as well.
    std::vector<GeomPoint> pts = {pt(0, 0, 1),    pt(1, 1, 2),    pt(2, 0, 3),
                                  pt(3, 1, 4, 1), pt(3, 2, 9, 1), pt(4, 2, 5),
                                  pt(5, 3, 6),    pt(6, 2, 7),    pt(7, 3, 8, 5)};
    const std::vector<GeomPoint> before = pts;
    vexo_geom_smoothen_2d(pts.data(), static_cast<uint32_t>(pts.size()), 10.0, nullptr);
    EXPECT_EQ(pts[1].y, 1.0 / 3.0); // (1 + 0 + 0) / 3
    for (size_t i : {size_t{0}, size_t{2}, size_t{3}, size_t{4}, size_t{5}, size_t{7},
                     size_t{8}}) {
        EXPECT_EQ(pts[i].x, before[i].x) << i;
        EXPECT_EQ(pts[i].y, before[i].y) << i;
    }
    EXPECT_NE(pts[6].y, before[6].y);
    for (size_t i = 0; i < pts.size(); ++i) {
        EXPECT_EQ(pts[i].z, before[i].z) << i;
        EXPECT_EQ(pts[i].flags, before[i].flags) << i;
    }
}

TEST(GeomSmooth, ShortAndMissingArrays) {
    GeomPoint two[2] = {pt(0, 0), pt(1, 1)};
    uint32_t status = 0;
    EXPECT_EQ(vexo_geom_smoothen(two, 2, 10.0, &status), two);
    EXPECT_EQ(status, VEXO_OK);
    EXPECT_EQ(two[1].y, 1.0);
    status = 0;
    EXPECT_EQ(vexo_geom_smoothen(nullptr, 50, 10.0, &status), nullptr);
    EXPECT_EQ(status, VEXO_OK);
    status = 0;
    EXPECT_EQ(vexo_geom_smoothen_2d(nullptr, 0, 10.0, &status), nullptr);
    EXPECT_EQ(status, VEXO_OK);
    // A NaN distance smooths nothing.
    GeomPoint three[3] = {pt(0, 0), pt(1, 1), pt(2, 0)};
    vexo_geom_smoothen(three, 3, NAN, nullptr);
    EXPECT_EQ(three[1].y, 1.0);
}

} // namespace
