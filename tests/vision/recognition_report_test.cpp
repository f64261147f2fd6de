// SPDX-License-Identifier: MIT
// The richer recogniser start: robust fit, counts, scale, and the refusal of
// placements no camera can see.
#include <array>
#include <cmath>
#include <cstring>

#include <gtest/gtest.h>

#include "fixtures.hpp"
#include "vision/recogniser.hpp"
#include "vision/recognition_report.hpp"

namespace {

using Corners = std::array<cv::Point2d, 4>;
using H = std::array<double, 9>;

// Homography of a turn by angle_deg (counter-clockwise on screen) and a
// scale about (0, 0), then a shift by (tx, ty).
H similarity(double angle_deg, double scale, double tx, double ty) {
    const double a = angle_deg * CV_PI / 180, c = scale * std::cos(a), s = scale * std::sin(a);
    return {c, s, tx, -s, c, ty, 0, 0, 1};
}

cv::Point2d map_by(const H &h, cv::Point2d p) {
    const double w = h[6] * p.x + h[7] * p.y + h[8];
    return {(h[0] * p.x + h[1] * p.y + h[2]) / w, (h[3] * p.x + h[4] * p.y + h[5]) / w};
}

// A recogniser holding only its pattern keypoints and origin.
Recogniser bare_recogniser(std::vector<cv::Point2f> points, int32_t ox, int32_t oy) {
    Recogniser rec;
    for (const auto &p : points) rec.pattern_keypoints.emplace_back(p, 4.0f);
    rec.origin_x = ox;
    rec.origin_y = oy;
    return rec;
}

// The box spans the finite positions only; one keypoint gives a one-pixel
// square around it.
TEST(PatternBox, SpansTheFinitePositionsOrOnePixel) {
    const Recogniser several =
        bare_recogniser({{10, 20}, {50, 5}, {NAN, 900}, {30, INFINITY}}, 0, 0);
    EXPECT_EQ(cv::Rect2d(10, 5, 40, 15), vexo::pattern_box(several.pattern_keypoints));
    const Recogniser one = bare_recogniser({{7, 9}}, 0, 0);
    EXPECT_EQ(cv::Rect2d(6.5, 8.5, 1, 1), vexo::pattern_box(one.pattern_keypoints));
}

TEST(MapBox, CornersClockwiseFromTopLeft) {
    Corners q;
    ASSERT_TRUE(vexo::map_box(similarity(0, 2, 5, 6), cv::Rect2d(1, 2, 3, 4), &q));
    EXPECT_EQ(cv::Point2d(7, 10), q[0]);
    EXPECT_EQ(cv::Point2d(13, 10), q[1]);
    EXPECT_EQ(cv::Point2d(13, 18), q[2]);
    EXPECT_EQ(cv::Point2d(7, 18), q[3]);
}

TEST(MapBox, RefusesACornerBeyondTheHorizon) {
    // w = 1 - x / 3 reaches 0 at the box's right edge.
    const H h{1, 0, 0, 0, 1, 0, -1.0 / 3, 0, 1};
    Corners q;
    EXPECT_FALSE(vexo::map_box(h, cv::Rect2d(0, 0, 3, 1), &q));
    EXPECT_TRUE(vexo::map_box(h, cv::Rect2d(0, 0, 2.9, 1), &q));
}

TEST(KeepsOrientation, TurnedAndTaperedBoxesPass) {
    for (double angle : {0.0, 30.0, -45.0, 179.0}) {
        Corners q;
        ASSERT_TRUE(vexo::map_box(similarity(angle, 0.5, 100, 80), cv::Rect2d(0, 0, 40, 30), &q));
        EXPECT_TRUE(vexo::keeps_orientation(q)) << angle;
    }
    const Corners tapered{{{0, 0}, {10, 2}, {10, 8}, {0, 10}}};
    EXPECT_TRUE(vexo::keeps_orientation(tapered));
}

TEST(KeepsOrientation, MirroredFoldedOrCollapsedBoxFails) {
    const std::pair<const char *, Corners> cases[] = {
        {"mirrored", {{{10, 0}, {0, 0}, {0, 10}, {10, 10}}}},
        {"bow tie", {{{0, 0}, {10, 0}, {0, 10}, {10, 10}}}},
        {"dented", {{{0, 0}, {10, 0}, {3, 3}, {0, 10}}}},
        {"collapsed", {{{0, 0}, {10, 0}, {20, 0}, {5, 0}}}}};
    for (const auto &[name, corners] : cases)
        EXPECT_FALSE(vexo::keeps_orientation(corners)) << name;
}

// The side ratio of a similarity; the geometric mean of unequal stretches.
TEST(LinearScale, IsTheGeometricMeanOfTheStretches) {
    const struct {
        H h;
        cv::Rect2d box;
        double scale;
    } cases[] = {{similarity(37, 1.75, -20, 300), {3, 4, 40, 25}, 1.75},
                 {{2, 0, 0, 0, 8, 0, 0, 0, 1}, {0, 0, 10, 10}, 4.0}};
    for (const auto &c : cases) {
        Corners q;
        ASSERT_TRUE(vexo::map_box(c.h, c.box, &q));
        EXPECT_NEAR(c.scale, vexo::linear_scale(q, c.box), 1e-12);
    }
}

// Pairs related by a known homography, and every fifth frame point thrown far off.
struct Pairs {
    std::vector<cv::Point2f> pattern, frame;
    size_t outliers = 0;
};
Pairs pairs_with_outliers(const H &h, int count) {
    Pairs p;
    cv::RNG rng(5);
    for (int k = 0; k < count; ++k) {
        const cv::Point2f a(rng.uniform(0.f, 200.f), rng.uniform(0.f, 150.f));
        cv::Point2f b = cv::Point2f(map_by(h, a));
        if (k % 5 == 4) {
            b += cv::Point2f(rng.uniform(40.f, 120.f), rng.uniform(-120.f, -40.f));
            ++p.outliers;
        }
        p.pattern.push_back(a);
        p.frame.push_back(b);
    }
    return p;
}

TEST(FitHomography, RobustFitKeepsExactlyTheConsistentPairs) {
    const H truth{0.9, -0.2, 40, 0.25, 1.1, -15, 1e-4, -2e-4, 1};
    const Pairs p = pairs_with_outliers(truth, 60);
    uint32_t inliers = 0;
    const cv::Mat h = vexo::fit_homography(p.pattern, p.frame, true, &inliers);
    ASSERT_FALSE(h.empty());
    EXPECT_EQ(uint32_t(60 - p.outliers), inliers);
    for (int k = 0; k < 9; ++k)
        EXPECT_NEAR(truth[size_t(k)], h.at<double>(k / 3, k % 3) / h.at<double>(2, 2),
                    1e-4 * std::max(1.0, std::fabs(truth[size_t(k)])))
            << k;
}

TEST(FitHomography, PlainFitCountsEveryPairAndIsPulledByOutliers) {
    const H truth = similarity(10, 1, 30, 40);
    const Pairs p = pairs_with_outliers(truth, 60);
    uint32_t inliers = 0;
    const cv::Mat h = vexo::fit_homography(p.pattern, p.frame, false, &inliers);
    ASSERT_FALSE(h.empty());
    EXPECT_EQ(60u, inliers);
    EXPECT_GT(std::fabs(h.at<double>(0, 2) / h.at<double>(2, 2) - 30), 1.0);
}

TEST(FitHomography, FewerThanFourPairsGiveNothing) {
    const std::vector<cv::Point2f> three{{0, 0}, {1, 0}, {0, 1}};
    uint32_t inliers = 7;
    EXPECT_TRUE(vexo::fit_homography(three, three, true, &inliers).empty());
    EXPECT_EQ(0u, inliers);
}

// Pattern box (20, 10)-(120, 70), reference origin (5, 5).
const Recogniser kPatternRec = bare_recogniser({{20, 10}, {120, 70}, {60, 40}}, 5, 5);

TEST(PlacePattern, ReportsOriginTurnAndScale) {
    RecognitionReport r{};
    const H h = similarity(30, 0.8, 150, 90);
    ASSERT_EQ(VEXO_OK, vexo::place_pattern(kPatternRec, h, {320, 240}, &r));
    EXPECT_DOUBLE_EQ(150 - 5, r.x);
    EXPECT_DOUBLE_EQ(90 - 5, r.y);
    EXPECT_NEAR(30.0, r.rotation, 1e-4);
    EXPECT_NEAR(0.8, r.scale, 1e-12);
}

TEST(PlacePattern, DividesThePositionByW) {
    RecognitionReport r{};
    H h = similarity(0, 1, 100, 60);
    for (double &e : h) e *= 2.0; // the same mapping
    ASSERT_EQ(VEXO_OK, vexo::place_pattern(kPatternRec, h, {320, 240}, &r));
    EXPECT_DOUBLE_EQ(95.0, r.x);
    EXPECT_DOUBLE_EQ(55.0, r.y);
}

// Placements no camera sees: mirrored; across the horizon (w = 1 - x / 70
// inside the box, so the far side folds back over the near one); the box
// centre (70, 40), landing at (70 + tx, 40 + ty), outside the frame.
TEST(PlacePattern, RefusesPlacementsNoCameraSees) {
    const struct {
        const char *name;
        H h;
        uint32_t status;
    } cases[] = {{"mirrored", {-1, 0, 200, 0, 1, 50, 0, 0, 1}, VEXO_ERROR_NO_RESULT},
                 {"horizon", {1, 0, 0, 0, 1, 0, -1.0 / 70, 0, 1}, VEXO_ERROR_NO_RESULT},
                 {"centre at the right edge", similarity(0, 1, 250, 0), VEXO_OK},
                 {"centre past the right edge", similarity(0, 1, 251, 0), VEXO_ERROR_NO_RESULT},
                 {"centre above the top", similarity(0, 1, 0, -41), VEXO_ERROR_NO_RESULT}};
    for (const auto &c : cases) {
        RecognitionReport r{};
        EXPECT_EQ(c.status, vexo::place_pattern(kPatternRec, c.h, {320, 240}, &r)) << c.name;
    }
}

TEST(StartRecogniser2, NullReportIsRefused) {
    EXPECT_EQ(VEXO_ERROR_INVALID_PARAMETER,
              vexo_prcg_start_recogniser2(nullptr, nullptr, 0, nullptr));
}

TEST(StartRecogniser2, NullRecogniserGivesNineAndAZeroReport) {
    RecognitionReport r;
    std::memset(&r, 0xAB, sizeof r);
    EXPECT_EQ(VEXO_ERROR_NO_HANDLE, vexo_prcg_start_recogniser2(nullptr, nullptr, 0, &r));
    EXPECT_EQ(VEXO_ERROR_NO_HANDLE, r.status);
    EXPECT_EQ(0.0, r.x);
    EXPECT_EQ(0u, r.matches);
    EXPECT_EQ(0.0, r.homography[8]);
}

TEST(StartRecogniser2, UnreadableFrameGivesElevenWithNothingReached) {
    vt::TaughtPattern t(RECOGNISER_SIFT);
    ASSERT_NE(nullptr, t.rec);
    RecognitionReport r{};
    EXPECT_EQ(VEXO_ERROR_NO_MEMORY, vexo_prcg_start_recogniser2(t.rec.get(), nullptr, 0, &r));
    EXPECT_EQ(0u, r.matches);
}

// The robust report on a turned, scaled pattern: where the reference's
// (0, 0) lands less the origin, the turn, the scale, and its own homography.
TEST(StartRecogniser2, RobustReportMatchesTheKnownPlacement) {
    vt::TaughtPattern t(RECOGNISER_SIFT);
    ASSERT_NE(nullptr, t.rec);
    const cv::Matx23d a = vt::placement(t.pattern.size(), -30, 1.1, {160, 120});
    vt::Frame frame(vt::scene(77, t.pattern, a));
    RecognitionReport r{};
    ASSERT_EQ(VEXO_OK,
              vexo_prcg_start_recogniser2(t.rec.get(), frame.block(), VEXO_RECOGNISER_ROBUST, &r));
    // The pattern sits at (10, 10) of the reference, so the reference's (0, 0)
    // is the pattern's (-10, -10).
    const cv::Vec2d truth = a * cv::Vec3d(-10, -10, 1);
    EXPECT_NEAR(truth[0] - 10, r.x, 1.5);
    EXPECT_NEAR(truth[1] - 10, r.y, 1.5);
    EXPECT_NEAR(-30.0, r.rotation, 1.0);
    EXPECT_NEAR(1.1, r.scale, 0.02);
    EXPECT_EQ(VEXO_OK, r.status);
    EXPECT_EQ(0u, r.reserved);
    EXPECT_GE(r.matches, r.inliers);
    EXPECT_GE(r.inliers, 10u);
    EXPECT_NEAR(r.x + 10, r.homography[2] / r.homography[8], 1e-9);
}

TEST(StartRecogniser2, PlainReportAgreesWithStartRecogniser) {
    vt::TaughtPattern t(RECOGNISER_SIFT | RECOGNISER_POSITION | RECOGNISER_ROTATION);
    ASSERT_NE(nullptr, t.rec);
    vt::Frame frame(vt::scene(77, t.pattern, vt::placement(t.pattern.size(), 20, 1, {170, 120})));
    RecognitionResult plain{};
    vexo_prcg_start_recogniser(t.rec.get(), frame.block(), &plain);
    RecognitionReport r{};
    ASSERT_EQ(VEXO_OK, vexo_prcg_start_recogniser2(t.rec.get(), frame.block(), 0, &r));
    ASSERT_EQ(int32_t(VEXO_OK), plain.status);
    EXPECT_EQ(r.matches, r.inliers);
    EXPECT_NEAR(plain.x, r.x, 1e-3);
    EXPECT_NEAR(plain.y, r.y, 1e-3);
    EXPECT_NEAR(plain.rotation, r.rotation, 1e-3);
}

TEST(StartRecogniser2, RobustBitOfTheRecogniserItselfIsHonoured) {
    vt::TaughtPattern own(RECOGNISER_SIFT | VEXO_RECOGNISER_ROBUST);
    ASSERT_NE(nullptr, own.rec);
    vt::Frame frame(
        vt::scene(77, own.pattern, vt::placement(own.pattern.size(), 0, 1, {150, 110})));
    RecognitionReport robust{}, asked{};
    ASSERT_EQ(VEXO_OK, vexo_prcg_start_recogniser2(own.rec.get(), frame.block(), 0, &robust));
    ASSERT_EQ(VEXO_OK, vexo_prcg_start_recogniser2(own.rec.get(), frame.block(),
                                                   VEXO_RECOGNISER_ROBUST, &asked));
    EXPECT_EQ(0, std::memcmp(&robust, &asked, sizeof robust));
}

} // namespace
