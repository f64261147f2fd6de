// SPDX-License-Identifier: MIT
// Keypoint records from a hostile host: what reaches a detector, what is
// refused, and the frame size budget of detection, recognition and
// calibration.
#include <climits>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "fixtures.hpp"
#include "vision/image_block.hpp"
#include "vision/keypoint_check.hpp"

namespace {

using vexo::DetectorKind;
using vt::Frame;
using vt::RecogniserPtr;

constexpr int kWidth = 160, kHeight = 120;

// A textured reference of kWidth x kHeight.
Frame &reference() {
    static Frame frame(vt::make_pattern(kWidth, kHeight, 11));
    return frame;
}

// Twelve keypoints in a row, as a host would fill them, x and y in pixels;
// a SIFT octave word packs octave -1 .. and layer 1.
std::vector<PatternKeypoint> row_of(int32_t size, int32_t octave, int32_t x = 30000,
                                    int32_t y = 60000) {
    std::vector<PatternKeypoint> kps(12);
    for (int32_t i = 0; i < 12; ++i)
        kps[size_t(i)] = PatternKeypoint{x + 8000 * i, y, size, 45000, 10, octave, -1};
    return kps;
}

constexpr int32_t sift_word(int octave, int layer) {
    return int32_t((uint32_t(uint8_t(int8_t(octave)))) | (uint32_t(layer) << 8));
}

Frame &oversized();

bool creates(const std::vector<PatternKeypoint> &kps, uint32_t options, Frame &ref = reference()) {
    const RecogniserPtr rec(
        vexo_prcg_create_recogniser(kps.data(), int32_t(kps.size()), options, ref.block(), 0, 0));
    return rec != nullptr;
}

TEST(KeypointCheck, ZeroedRecordsAreRefusedBySift) {
    // The records vexo_prcg_alloc_keypoints hands out: size 0 would make
    // SIFT's descriptor code write past its buffer.
    const vt::KeypointsPtr zeroed(vexo_prcg_alloc_keypoints(12));
    const RecogniserPtr rec(
        vexo_prcg_create_recogniser(zeroed.get(), 12, RECOGNISER_SIFT, reference().block(), 0, 0));
    EXPECT_EQ(nullptr, rec.get());
}

TEST(KeypointCheck, MostNegativeFieldsAreRefusedByEveryDetector) {
    std::vector<PatternKeypoint> kps(12, PatternKeypoint{INT32_MIN, INT32_MIN, INT32_MIN, INT32_MIN,
                                                         INT32_MIN, INT32_MIN, INT32_MIN});
    for (uint32_t options : {RECOGNISER_SIFT, RECOGNISER_SURF, RECOGNISER_ORB})
        EXPECT_FALSE(creates(kps, options)) << options;
}

// Sizes and octave words each detector accepts at their limits, a row of
// twelve keypoints at a time.
TEST(KeypointCheck, SizeAndOctaveRangesOfEachDetector) {
    // 160 x 120: log2(120) = 6.91 rounds to 7, so SIFT octaves -1 .. 5 (the
    // doubled image, then 120, 60, 30, 15, 8 and 4 pixels high).
    ASSERT_EQ(5, vexo::sift_max_octave(cv::Size(kWidth, kHeight)));
    constexpr uint32_t sift = RECOGNISER_SIFT, surf = RECOGNISER_SURF, orb = RECOGNISER_ORB;
    const struct {
        const char *why;
        uint32_t detector;
        int32_t size, octave;
        bool accepted;
    } cases[] = {
        // One pixel is the smallest size for every detector.
        {"sift 1 px", sift, 1000, sift_word(0, 1), true},
        {"sift 0.999 px", sift, 999, sift_word(0, 1), false},
        {"sift -1 px", sift, -1000, sift_word(0, 1), false},
        {"surf 1 px", surf, 1000, 0, true},
        {"surf 0.999 px", surf, 999, 0, false},
        {"surf -1 px", surf, -1000, 0, false},
        {"orb 1 px", orb, 1000, 0, true},
        {"orb 0.999 px", orb, 999, 0, false},
        {"orb -1 px", orb, -1000, 0, false},
        // SIFT octaves: 2 px in octave -1 is 4 px there; 100 px in octave 5 is 3.125 px.
        {"sift octave -1", sift, 2000, sift_word(-1, 1), true},
        {"sift octave 5", sift, 100000, sift_word(5, 3), true},
        {"sift octave 6", sift, 100000, sift_word(6, 1), false},
        {"sift octave -2", sift, 2000, sift_word(-2, 1), false},
        // SIFT layers 1 .. 3.
        {"sift layer 0", sift, 4000, sift_word(0, 0), false},
        {"sift layer 3", sift, 4000, sift_word(0, 3), true},
        {"sift layer 4", sift, 4000, sift_word(0, 4), false},
        {"sift layer 255", sift, 4000, sift_word(0, 255), false},
        // SIFT sizes in their own octave: octave 2 divides by 4, so 4 px is 1 px there.
        {"sift octave 2, 4 px", sift, 4000, sift_word(2, 1), true},
        {"sift octave 2, 3.999 px", sift, 3999, sift_word(2, 1), false},
        {"sift octave 2, 256 px", sift, 256000, sift_word(2, 1), true},
        {"sift octave 2, 256.004 px", sift, 256004, sift_word(2, 1), false},
        // ORB names one of its eight levels; SURF ignores the octave.
        {"orb level 7", orb, 31000, 7, true},
        {"orb level 8", orb, 31000, 8, false},
        {"orb level -1", orb, 31000, -1, false},
        {"surf octave min", surf, 4000, INT32_MIN, true},
        {"surf octave max", surf, 4000, INT32_MAX, true},
    };
    for (const auto &c : cases)
        EXPECT_EQ(c.accepted, creates(row_of(c.size, c.octave), c.detector)) << c.why;
}

TEST(KeypointCheck, OneBadKeypointRefusesTheWholeSet) {
    auto kps = row_of(4000, sift_word(0, 1));
    kps[7].size = 0;
    EXPECT_FALSE(creates(kps, RECOGNISER_SURF));
}

TEST(KeypointCheck, PositionMustLieInsideTheReference) {
    // x and y in thousandths: the last pixel column starts at 159000.
    const struct {
        int32_t x, y;
        bool accepted;
    } cases[] = {{0, 0, true},
                 {kWidth * 1000 - 1 - 8000 * 11, 119999, true},
                 {kWidth * 1000 - 8000 * 11, 60000, false},
                 {-1, 60000, false},
                 {30000, kHeight * 1000, false},
                 {30000, -1, false}};
    for (const auto &c : cases)
        EXPECT_EQ(c.accepted, creates(row_of(4000, 0, c.x, c.y), RECOGNISER_SURF))
            << c.x << ", " << c.y;
}

TEST(KeypointCheck, SiftAngleWithinOneTurn) {
    // row_of gives 45 degrees; SIFT's orientation bins wrap by one turn only.
    const auto with_angle = [](int32_t angle) {
        auto kps = row_of(4000, sift_word(0, 1));
        kps[5].angle = angle;
        return kps;
    };
    EXPECT_TRUE(creates(with_angle(0), RECOGNISER_SIFT));
    EXPECT_TRUE(creates(with_angle(360000), RECOGNISER_SIFT));
    EXPECT_FALSE(creates(with_angle(-1), RECOGNISER_SIFT));
    EXPECT_FALSE(creates(with_angle(360001), RECOGNISER_SIFT));
    EXPECT_FALSE(creates(with_angle(654311501), RECOGNISER_SIFT));
}

TEST(KeypointCheck, NonFiniteFieldsAreRefused) {
    const cv::Size image(kWidth, kHeight);
    const cv::KeyPoint good(50.0f, 50.0f, 4.0f, 10.0f, 0.5f, 0);
    ASSERT_TRUE(vexo::keypoint_usable(good, DetectorKind::Surf, image));
    for (int field = 0; field < 5; ++field)
        for (float bad : {NAN, INFINITY, -INFINITY}) {
            cv::KeyPoint kp = good;
            float *fields[] = {&kp.pt.x, &kp.pt.y, &kp.size, &kp.angle, &kp.response};
            *fields[field] = bad;
            EXPECT_FALSE(vexo::keypoint_usable(kp, DetectorKind::Surf, image))
                << "field " << field << " = " << bad;
        }
}

TEST(KeypointCheck, TaughtSetsAlwaysCreateARecogniser) {
    for (uint32_t detector : {RECOGNISER_SIFT, RECOGNISER_SURF, RECOGNISER_ORB}) {
        uint32_t options = detector;
        int32_t count = 0;
        const vt::KeypointsPtr kps(
            vexo_prcg_gen_keypoints(reference().block(), &count, &options, 0, 0, kWidth, kHeight));
        ASSERT_GE(count, 3) << detector;
        const RecogniserPtr rec(
            vexo_prcg_create_recogniser(kps.get(), count, options, reference().block(), 0, 0));
        EXPECT_NE(nullptr, rec.get()) << detector;
    }
}

// Frame budget: one grey frame a column wider than VEXO_VISION_MAX_PIXELS
// allows (4097 x 2048); the pixels are never read.
constexpr int32_t kOverWidth = 4097, kOverHeight = 2048;
static_assert(int64_t{kOverWidth} * kOverHeight > VEXO_VISION_MAX_PIXELS, "over the budget");
static_assert(int64_t{kOverWidth - 1} * kOverHeight == VEXO_VISION_MAX_PIXELS, "at the budget");

Frame &oversized() {
    static Frame frame(cv::Mat(kOverHeight, kOverWidth, CV_8UC1, cv::Scalar(0)));
    return frame;
}

TEST(VisionBudget, BoundaryIsTheMacro) {
    Frame at(cv::Mat(1, 1, CV_8UC1));
    at.set_size(kOverWidth - 1, kOverHeight);
    EXPECT_FALSE(vexo::exceeds_vision_budget(at.block()));
    EXPECT_TRUE(vexo::exceeds_vision_budget(oversized().block()));
}

TEST(VisionBudget, UnusableBlocksAreNotCountedAgainstIt) {
    Frame bad(cv::Mat(1, 1, CV_8UC1));
    bad.set_size(kOverWidth, kOverHeight);
    bad.block()->kind = 1;
    EXPECT_FALSE(vexo::exceeds_vision_budget(bad.block()));
    EXPECT_FALSE(vexo::exceeds_vision_budget(nullptr));
}

// Teaching, creating a recogniser, recognising and chessboard calibration
// all refuse a frame above the budget.
TEST(VisionBudget, EveryEntryRefusesLargerFrames) {
    int32_t count = 5;
    uint32_t options = 0;
    EXPECT_EQ(nullptr,
              vexo_prcg_gen_keypoints(oversized().block(), &count, &options, 0, 0, 100, 100));
    EXPECT_EQ(-1, count);

    const auto kps = row_of(4000, 0);
    EXPECT_FALSE(creates(kps, RECOGNISER_SURF, oversized()));
    const RecogniserPtr rec(
        vexo_prcg_create_recogniser(kps.data(), 12, RECOGNISER_SURF, reference().block(), 0, 0));
    ASSERT_NE(nullptr, rec.get());
    EXPECT_EQ(int64_t(VEXO_ERROR_NO_MEMORY), vt::bare_status(rec.get(), oversized().block()));

    CalibrationRecord record{};
    int32_t found = -1;
    EXPECT_EQ(nullptr, vexo_calib_gen_correction(oversized().block(), 9, 6, &record, &found));
    EXPECT_EQ(0, found);
}

} // namespace
