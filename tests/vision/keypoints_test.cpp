// Keypoint sets: record rounding, footprint rule, detector choice, masks,
// allocation and the teaching call end to end.
#include <cmath>
#include <cstring>
#include <limits>

#include <gtest/gtest.h>

#include "scene.hpp"
#include "vision/keypoints.hpp"

namespace {

using vexo::DetectorKind;

TEST(PrcgKeypointRecord, ThousandthsRoundHalfAwayFromZeroAndSaturate) {
    EXPECT_EQ(vexo::to_thousandths(10.0004f), 10000);
    EXPECT_EQ(vexo::to_thousandths(-0.0005f), -1);
    EXPECT_EQ(vexo::to_thousandths(0.0005f), 1);
    EXPECT_EQ(vexo::to_thousandths(0.00049f), 0);
    EXPECT_EQ(vexo::to_thousandths(-2.5f), -2500);
    EXPECT_EQ(vexo::to_thousandths(std::numeric_limits<float>::quiet_NaN()), 0);
    EXPECT_EQ(vexo::to_thousandths(1e10f), INT32_MAX);
    EXPECT_EQ(vexo::to_thousandths(-1e10f), INT32_MIN);

    const cv::KeyPoint kp(12.3456f, -7.0005f, 9.5f, 271.25f, 0.0125f, 3, 42);
    const PatternKeypoint r = vexo::to_pattern_keypoint(kp);
    EXPECT_EQ(r.x, 12346);
    EXPECT_EQ(r.y, -7001);
    EXPECT_EQ(r.size, 9500);
    EXPECT_EQ(r.angle, 271250);
    EXPECT_EQ(r.response, 13);
    EXPECT_EQ(r.octave, 3);
    EXPECT_EQ(r.class_id, 42);
    const cv::KeyPoint back = vexo::from_pattern_keypoint(r);
    EXPECT_EQ(back.pt.x, 12.346f);
    EXPECT_EQ(back.pt.y, -7.001f);
    EXPECT_EQ(back.size, 9.5f);
    EXPECT_EQ(back.angle, 271.25f);
    EXPECT_EQ(back.octave, 3);
    EXPECT_EQ(back.class_id, 42);
    static_assert(sizeof(PatternKeypoint) == 28, "record is 28 bytes");
}

TEST(PrcgKeypointRecord, FootprintTouchingTheBorderIsInside) {
    const vexo::PatternRect rect{15, 20, 45, 60};
    EXPECT_TRUE(vexo::footprint_inside(cv::KeyPoint(20, 30, 10), rect));  // touches left
    EXPECT_TRUE(vexo::footprint_inside(cv::KeyPoint(40, 55, 10), rect));  // right, bottom
    EXPECT_TRUE(vexo::footprint_inside(cv::KeyPoint(30, 25, 10), rect));  // top
    EXPECT_FALSE(vexo::footprint_inside(cv::KeyPoint(19.999f, 30, 10), rect));
    EXPECT_FALSE(vexo::footprint_inside(cv::KeyPoint(40.001f, 30, 10), rect));
    EXPECT_FALSE(vexo::footprint_inside(cv::KeyPoint(30, 24.99f, 10), rect));
    EXPECT_FALSE(vexo::footprint_inside(cv::KeyPoint(30, 55.01f, 10), rect));
    EXPECT_FALSE(vexo::footprint_inside(cv::KeyPoint(30, 40, 31), rect)); // wider than it
    EXPECT_FALSE(vexo::footprint_inside(cv::KeyPoint(NAN, 40, 2), rect));
}

TEST(PrcgKeypointChoice, ScoresPickTheDetectorWithTiesToSiftThenSurf) {
    struct Case {
        size_t sift, surf, orb;
        DetectorKind expected;
    };
    const Case cases[] = {
        {0, 0, 0, DetectorKind::Surf}, {5, 5, 5, DetectorKind::Sift},
        {0, 5, 5, DetectorKind::Surf}, {0, 5, 6, DetectorKind::Orb},
        {5, 3, 5, DetectorKind::Sift}, {5, 3, 6, DetectorKind::Orb},
        {3, 5, 4, DetectorKind::Surf}, {3, 5, 6, DetectorKind::Orb},
        {5, 0, 0, DetectorKind::Sift}, {0, 0, 1, DetectorKind::Orb},
    };
    for (const auto &c : cases)
        EXPECT_EQ(vexo::choose_detector(c.sift, c.surf, c.orb), c.expected)
            << c.sift << " " << c.surf << " " << c.orb;

    const uint32_t sift = RECOGNISER_SIFT, surf = RECOGNISER_SURF, orb = RECOGNISER_ORB;
    struct Allowed {
        uint32_t options;
        bool sift, surf, orb;
    };
    const Allowed allowed[] = {{0, true, true, true},           {sift, true, false, false},
                               {surf, false, true, false},      {orb, false, false, true},
                               {0x800, false, false, false},    {sift | surf, false, false, false},
                               {0x3F, true, true, true}};
    for (const auto &a : allowed) {
        EXPECT_EQ(vexo::detector_allowed(DetectorKind::Sift, a.options), a.sift) << a.options;
        EXPECT_EQ(vexo::detector_allowed(DetectorKind::Surf, a.options), a.surf) << a.options;
        EXPECT_EQ(vexo::detector_allowed(DetectorKind::Orb, a.options), a.orb) << a.options;
    }
    EXPECT_EQ(vexo::detector_kind_of(0x100), DetectorKind::Sift);
    EXPECT_EQ(vexo::detector_kind_of(0x231), DetectorKind::Surf);
    EXPECT_EQ(vexo::detector_kind_of(0x300), DetectorKind::Orb);
    EXPECT_EQ(vexo::detector_kind_of(0x001), DetectorKind::Orb);
}

TEST(PrcgKeypointMask, RectangleIsCutToTheImage) {
    const cv::Size size(40, 30);
    auto lit = [&](vexo::PatternRect r) { return cv::countNonZero(vexo::rectangle_mask(size, r)); };
    EXPECT_EQ(lit({5, 6, 15, 10}), 10 * 4);
    EXPECT_EQ(lit({-10, -10, 5, 5}), 25);
    EXPECT_EQ(lit({30, 20, 1000, 1000}), 10 * 10);
    EXPECT_EQ(lit({INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX}), 40 * 30);
    EXPECT_EQ(lit({15, 10, 5, 20}), 0);  // inverted
    EXPECT_EQ(lit({5, 5, 5, 20}), 0);    // empty
    EXPECT_EQ(lit({50, 5, 60, 20}), 0);  // wholly outside
    const cv::Mat m = vexo::rectangle_mask(size, {5, 6, 15, 10});
    EXPECT_EQ(m.at<uint8_t>(6, 5), 255);
    EXPECT_EQ(m.at<uint8_t>(9, 14), 255);
    EXPECT_EQ(m.at<uint8_t>(10, 14), 0);
    EXPECT_EQ(m.at<uint8_t>(9, 15), 0);
}

TEST(PrcgKeypointAlloc, ZeroedArraysAndRefusedSizes) {
    PatternKeypoint *k = vexo_prcg_alloc_keypoints(3);
    ASSERT_NE(k, nullptr);
    const PatternKeypoint zero{};
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(std::memcmp(&k[i], &zero, sizeof zero), 0);
    vexo_prcg_release_keypoints(k);
    EXPECT_EQ(vexo_prcg_alloc_keypoints(0), nullptr);
    EXPECT_EQ(vexo::allocate_keypoints(SIZE_MAX / 8), nullptr); // count x 28 overflows
    vexo_prcg_release_keypoints(nullptr);
}

class PrcgTeach : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        cv::Mat reference = scene::make_background(320, 240, 1);
        const cv::Mat pattern = scene::make_pattern(110, 110, 42);
        reference = scene::paste(reference, pattern,
                                 scene::placement(pattern.size(), 0, 1, {155, 115}));
        block_ = new scene::Block(reference);
    }
    static void TearDownTestSuite() { delete block_; }
    static const ImageBlock *image() { return block_->get(); }
    static inline scene::Block *block_ = nullptr;
    static constexpr int32_t kLeft = 100, kTop = 60, kRight = 210, kBottom = 170;

    static size_t teach(uint32_t *options, std::vector<PatternKeypoint> *out = nullptr) {
        int32_t count = 0;
        PatternKeypoint *k =
            vexo_prcg_gen_keypoints(image(), &count, options, kLeft, kTop, kRight, kBottom);
        if (!k) {
            EXPECT_EQ(count, -1);
            return 0;
        }
        EXPECT_GE(count, 0);
        if (out)
            out->assign(k, k + count);
        vexo_prcg_release_keypoints(k);
        return size_t(count);
    }
};

TEST_F(PrcgTeach, PresetDetectorIsKeptAndEveryStoredKeypointFits) {
    for (uint32_t bit : {RECOGNISER_SIFT, RECOGNISER_SURF, RECOGNISER_ORB}) {
        uint32_t options = bit | RECOGNISER_POSITION | RECOGNISER_FLANN;
        std::vector<PatternKeypoint> kps;
        EXPECT_GT(teach(&options, &kps), 10u) << bit;
        EXPECT_EQ(options, bit | RECOGNISER_POSITION | RECOGNISER_FLANN);
        for (const auto &k : kps) {
            const double half = k.size / 2000.0;
            EXPECT_GE(k.x / 1000.0 - half, kLeft - 0.001);
            EXPECT_LE(k.x / 1000.0 + half, kRight + 0.001);
            EXPECT_GE(k.y / 1000.0 - half, kTop - 0.001);
            EXPECT_LE(k.y / 1000.0 + half, kBottom + 0.001);
        }
    }
}

TEST_F(PrcgTeach, NoPresetRunsAllThreeAndKeepsTheBestScore) {
    uint32_t sift = RECOGNISER_SIFT, surf = RECOGNISER_SURF, orb = RECOGNISER_ORB;
    const size_t s = teach(&sift), u = teach(&surf), o = teach(&orb);
    uint32_t options = RECOGNISER_ROTATION;
    const size_t chosen = teach(&options);
    const DetectorKind expected = vexo::choose_detector(s, u, o);
    EXPECT_EQ(options, RECOGNISER_ROTATION | vexo::detector_bit(expected));
    EXPECT_EQ(chosen, expected == DetectorKind::Sift ? s : expected == DetectorKind::Surf ? u : o);
}

TEST_F(PrcgTeach, NothingToTeachGivesNullAndMinusOne) {
    // Every detector excluded: scores 0 name SURF, whose list is empty.
    uint32_t options = 0x800 | RECOGNISER_POSITION;
    EXPECT_EQ(teach(&options), 0u);
    EXPECT_EQ(options, RECOGNISER_SURF | RECOGNISER_POSITION);

    int32_t count = 5;
    options = RECOGNISER_SURF;
    EXPECT_EQ(vexo_prcg_gen_keypoints(image(), &count, &options, 210, 60, 100, 170), nullptr);
    EXPECT_EQ(count, -1);
    count = 5;
    EXPECT_EQ(vexo_prcg_gen_keypoints(image(), &count, &options, 100, 60, 100, 170), nullptr);
    EXPECT_EQ(count, -1);
    count = 5;
    EXPECT_EQ(vexo_prcg_gen_keypoints(image(), &count, &options, 5000, 5000, 6000, 6000),
              nullptr);
    EXPECT_EQ(count, -1);

    // Unusable image: options untouched.
    scene::Block bad(cv::Mat(10, 10, CV_8UC1, cv::Scalar(0)));
    bad.get()->kind = 3;
    options = 0x31;
    count = 5;
    EXPECT_EQ(vexo_prcg_gen_keypoints(bad.get(), &count, &options, 0, 0, 10, 10), nullptr);
    EXPECT_EQ(count, -1);
    EXPECT_EQ(options, 0x31u);

    count = 5;
    EXPECT_EQ(vexo_prcg_gen_keypoints(nullptr, &count, &options, 0, 0, 10, 10), nullptr);
    EXPECT_EQ(count, -1);
    EXPECT_EQ(vexo_prcg_gen_keypoints(image(), &count, nullptr, 0, 0, 10, 10), nullptr);
    EXPECT_EQ(vexo_prcg_gen_keypoints(image(), nullptr, &options, 0, 0, 10, 10), nullptr);
}

TEST_F(PrcgTeach, ColourBlockTeachesTheSameKeypoints) {
    cv::Mat grey(240, 320, CV_8UC1);
    // Round-trip the grey block's pixels through an RGB24 block.
    std::memcpy(grey.data, reinterpret_cast<const uint8_t *>(image()) + VEXO_IMAGE_HEADER_SIZE,
                grey.total());
    scene::Block colour(grey, IMAGE_FORMAT_RGB24);
    uint32_t a = RECOGNISER_SURF, b = RECOGNISER_SURF;
    std::vector<PatternKeypoint> from_grey, from_colour;
    int32_t count;
    PatternKeypoint *k = vexo_prcg_gen_keypoints(colour.get(), &count, &b, kLeft, kTop, kRight,
                                                 kBottom);
    ASSERT_NE(k, nullptr);
    from_colour.assign(k, k + count);
    vexo_prcg_release_keypoints(k);
    teach(&a, &from_grey);
    ASSERT_EQ(from_grey.size(), from_colour.size());
    EXPECT_EQ(std::memcmp(from_grey.data(), from_colour.data(),
                          from_grey.size() * sizeof(PatternKeypoint)),
              0);
}

} // namespace
