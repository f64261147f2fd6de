// SPDX-License-Identifier: MIT
// Our SURF in recognition: synthetic scenes of known placement, and
// OpenCV's sample pictures of a box alone and in a cluttered scene, read
// from Debian's opencv-doc examples (the test is skipped without them).
#include <cstdio>
#include <string>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include "fixtures.hpp"
#include "vision/keypoints_detectors.hpp"

namespace {

constexpr uint32_t kBoth = RECOGNISER_POSITION | RECOGNISER_ROTATION;

struct Turn {
    double angle, scale;
};

class SurfScaled : public testing::TestWithParam<Turn> {};

TEST_P(SurfScaled, RobustStartFindsPositionRotationAndScale) {
    const vt::TaughtPattern t(RECOGNISER_SURF);
    ASSERT_NE(nullptr, t.rec);
    const Turn p = GetParam();
    const cv::Matx23d a = vt::placement(t.pattern.size(), p.angle, p.scale, {160, 115});
    RecognitionReport r{};
    ASSERT_EQ(VEXO_OK, vexo_prcg_start_recogniser2(t.rec.get(),
                                                   vt::Frame(vt::scene(77, t.pattern, a)).block(),
                                                   VEXO_RECOGNISER_ROBUST, &r));
    EXPECT_NEAR(t.truth(a).x, r.x, 2.0);
    EXPECT_NEAR(t.truth(a).y, r.y, 2.0);
    // Coarse octaves place keypoints to a pixel or two, over a pattern of
    // about 100 pixels: a few degrees.
    EXPECT_NEAR(p.angle, r.rotation, 3.0);
    EXPECT_NEAR(p.scale, r.scale, 0.03);
}

INSTANTIATE_TEST_SUITE_P(Scales, SurfScaled,
                         testing::Values(Turn{-10, 0.9}, Turn{-15, 1.2}, Turn{30, 0.8},
                                         Turn{-45, 1.25}));

// ---- OpenCV's sample pictures ---------------------------------------------

const std::string kSampleFolder = "/usr/share/doc/opencv-doc/examples/data/";

cv::Mat sample(const char *name) {
    return cv::imread(kSampleFolder + name, cv::IMREAD_GRAYSCALE);
}

#define REQUIRE_SAMPLES()                                                                          \
    do {                                                                                           \
        if (sample("box.png").empty() || sample("box_in_scene.png").empty())                       \
            GTEST_SKIP() << "box.png / box_in_scene.png not in " << kSampleFolder                  \
                         << " (install Debian's opencv-doc, scripts/setup.sh does)";               \
    } while (0)

size_t keypoint_count(vexo::DetectorKind kind, const cv::Mat &img) {
    std::vector<cv::KeyPoint> kps;
    vexo::make_detector(kind)->detect(img, kps);
    return kps.size();
}

class SampleCounts : public testing::TestWithParam<const char *> {};

// The stored SURF detector (threshold 400) and SIFT find keypoints of the
// same order: neither finds fewer than half of the other's.
TEST_P(SampleCounts, SurfFindsAsManyKeypointsAsSiftWithinAFactorOfTwo) {
    REQUIRE_SAMPLES();
    const cv::Mat img = sample(GetParam());
    const size_t surf = keypoint_count(vexo::DetectorKind::Surf, img);
    const size_t sift = keypoint_count(vexo::DetectorKind::Sift, img);
    std::printf("%s: SURF %zu, SIFT %zu keypoints\n", GetParam(), surf, sift);
    EXPECT_GE(2 * surf, sift) << "SURF " << surf << ", SIFT " << sift;
    EXPECT_GE(2 * sift, surf) << "SURF " << surf << ", SIFT " << sift;
}

INSTANTIATE_TEST_SUITE_P(Box, SampleCounts, testing::Values("box.png", "box_in_scene.png"));

// The box taught whole, with its origin at its top-left corner; in the
// scene that corner lies at about (119, 161), measured on the picture.
struct BoxScene {
    cv::Mat box = sample("box.png"), scene = sample("box_in_scene.png");
    vt::Frame reference{box}, frame{scene};
    vt::RecogniserPtr taught(uint32_t detector) {
        return vt::taught_recogniser(reference, {0, 0, box.cols, box.rows}, detector | kBoth,
                                     {0, 0});
    }
};

TEST(SampleBox, SurfPlainStartFindsIt) {
    REQUIRE_SAMPLES();
    BoxScene s;
    const vt::RecogniserPtr rec = s.taught(RECOGNISER_SURF);
    ASSERT_NE(nullptr, rec);
    RecognitionResult got{};
    vexo_prcg_start_recogniser(rec.get(), s.frame.block(), &got);
    EXPECT_EQ(int32_t(VEXO_OK), got.status);
}

class SampleBoxRobust : public testing::TestWithParam<uint32_t> {};

TEST_P(SampleBoxRobust, PutsTheBoxCornerWhereItIs) {
    REQUIRE_SAMPLES();
    BoxScene s;
    const vt::RecogniserPtr rec = s.taught(GetParam());
    ASSERT_NE(nullptr, rec);
    RecognitionReport r{};
    ASSERT_EQ(VEXO_OK,
              vexo_prcg_start_recogniser2(rec.get(), s.frame.block(), VEXO_RECOGNISER_ROBUST, &r));
    std::printf("detector 0x%x: (%.1f, %.1f) %.1f deg, scale %.3f, %u matches, %u inliers\n",
                GetParam(), r.x, r.y, r.rotation, r.scale, r.matches, r.inliers);
    EXPECT_NEAR(119.0, r.x, 3.0);
    EXPECT_NEAR(161.0, r.y, 3.0);
    EXPECT_GT(r.inliers, r.matches / 2);
}

INSTANTIATE_TEST_SUITE_P(Detectors, SampleBoxRobust,
                         testing::Values(RECOGNISER_SURF, RECOGNISER_SIFT, RECOGNISER_ORB));

// The least-squares fit over SIFT's matches, mismatches included, turns the
// box over; the report refuses that placement instead of giving a position.
TEST(SampleBox, PlainSiftFitIsRefusedNotReported) {
    REQUIRE_SAMPLES();
    BoxScene s;
    const vt::RecogniserPtr rec = s.taught(RECOGNISER_SIFT);
    ASSERT_NE(nullptr, rec);
    RecognitionReport r{};
    EXPECT_EQ(VEXO_ERROR_NO_RESULT, vexo_prcg_start_recogniser2(rec.get(), s.frame.block(), 0, &r));
    EXPECT_EQ(0.0, r.x);
    EXPECT_GT(r.matches, 0u);
}

} // namespace
