// Keypoint sets and the recogniser: record rules, teaching, and recognition
// on synthetic scenes with known placements.
#include <cmath>
#include <cstring>

#include <gtest/gtest.h>

#include "fixtures.hpp"
#include "vision/keypoints.hpp"
#include "vision/recogniser.hpp"

namespace {

using vexo::DetectorKind;
using vt::Frame;
using vt::RecogniserPtr;

TEST(PrcgRules, ThousandthsFootprintChoiceRatioAndAllocation) {
    const std::pair<float, int32_t> thousandths[] = {
        {10.0004f, 10000}, {-0.0005f, -1}, {0.0005f, 1},       {0.00049f, 0},
        {-2.5f, -2500},    {NAN, 0},       {1e10f, INT32_MAX}, {-1e10f, INT32_MIN}};
    for (const auto &[v, want] : thousandths)
        EXPECT_EQ(want, vexo::to_thousandths(v)) << v;
    const PatternKeypoint r =
        vexo::to_pattern_keypoint(cv::KeyPoint(12.3456f, -7.0005f, 9.5f, 271.25f, 0.0125f, 3, 42));
    const PatternKeypoint want{12346, -7001, 9500, 271250, 13, 3, 42};
    EXPECT_EQ(0, std::memcmp(&r, &want, sizeof r));

    // Footprint (diameter = size) in {15, 20, 45, 60}: touching is inside.
    const vexo::PatternRect rect{15, 20, 45, 60};
    const float footprints[][4] = {{20, 30, 10, 1},      {40, 55, 10, 1},     {30, 25, 10, 1},
                                   {19.999f, 30, 10, 0}, {30, 55.01f, 10, 0}, {NAN, 40, 2, 0}};
    for (const auto &f : footprints)
        EXPECT_EQ(f[3] != 0, vexo::footprint_inside(cv::KeyPoint(f[0], f[1], f[2]), rect))
            << f[0] << "," << f[1];

    // Scores (SIFT, SURF, ORB): ties go to SIFT, then SURF; all 0 is SURF.
    using K = DetectorKind;
    const std::tuple<size_t, size_t, size_t, K> choices[] = {
        {0, 0, 0, K::Surf}, {5, 5, 5, K::Sift}, {0, 5, 5, K::Surf},
        {0, 5, 6, K::Orb},  {5, 3, 5, K::Sift}, {3, 5, 4, K::Surf}};
    for (const auto &[s, u, o, best] : choices)
        EXPECT_EQ(best, vexo::choose_detector(s, u, o)) << s << " " << u << " " << o;

    // Ratio test: kept strictly below 0.75 only, from full lists of valid
    // indices (one neighbour; train index 9 of 6; query index 7 of 7).
    using M = cv::DMatch;
    const auto kept = vexo::ratio_filter(
        {{M(0, 4, 0.75f), M(0, 5, 1.0f)}, {M(1, 4, 0.7499f), M(1, 5, 1.0f)}, {M(2, 3, 0.1f)},
         {M(3, 9, 0.1f), M(3, 5, 1.0f)}, {M(7, 2, 0.1f), M(7, 1, 8.0f)}},
        7, 6);
    ASSERT_EQ(1u, kept.size());
    EXPECT_TRUE(kept[0].queryIdx == 1 && kept[0].trainIdx == 4);

    const vt::KeypointsPtr zeroed(vexo_prcg_alloc_keypoints(3));
    const PatternKeypoint zero[3] = {};
    EXPECT_TRUE(zeroed && std::memcmp(zeroed.get(), zero, sizeof zero) == 0);
    EXPECT_EQ(nullptr, vexo_prcg_alloc_keypoints(0));
    EXPECT_EQ(nullptr, vexo::allocate_keypoints(SIZE_MAX / 8)); // count x 28 overflows
}

// The pattern near the reference's (0, 0), whose image is the reported
// figure; taught 10 pixels inside its edges, away from the background.
constexpr int32_t kOrigin = 10, kSide = 120, kLeft = kOrigin + 10, kRight = kOrigin + kSide - 10;

class PrcgScene : public ::testing::Test {
protected:
    static void SetUpTestSuite() { pattern_ = vt::make_pattern(kSide, kSide, 42); }
    static inline cv::Mat pattern_;
    Frame reference_{vt::scene(1, pattern_, vt::placement(pattern_.size(), 0, 1, {70, 70}))};

    std::vector<PatternKeypoint> teach(uint32_t *options) {
        int32_t count = 0;
        const vt::KeypointsPtr k(vexo_prcg_gen_keypoints(reference_.block(), &count, options,
                                                         kLeft, kLeft, kRight, kRight));
        EXPECT_EQ(k ? count : -1, count);
        return std::vector<PatternKeypoint>(k.get(), k.get() + (k ? count : 0));
    }
    RecogniserPtr create(const std::vector<PatternKeypoint> &kps, int32_t count, uint32_t options,
                         Frame *reference = nullptr) {
        return RecogniserPtr(vexo_prcg_create_recogniser(
            kps.data(), count, options, (reference ? reference : &reference_)->block(), kOrigin,
            kOrigin));
    }
    // Taught with the option word's detector (ORB when none).
    RecogniserPtr make(uint32_t options) {
        uint32_t taught = options & RECOGNISER_DETECTOR_MASK ? options : RECOGNISER_ORB;
        const auto kps = teach(&taught);
        return create(kps, int32_t(kps.size()), options);
    }
    // `truth`: where the reference's (0, 0), pattern point -origin, lands.
    static RecognitionResult find(Recogniser *rec, double angle, double scale, cv::Point2d centre,
                                  cv::Point2d *truth = nullptr) {
        const cv::Matx23d a = vt::placement(pattern_.size(), angle, scale, centre);
        if (truth)
            *truth = cv::Point2d(a * cv::Vec3d(-kOrigin, -kOrigin, 1)) -
                     cv::Point2d(kOrigin, kOrigin);
        Frame frame(vt::scene(77, pattern_, a));
        RecognitionResult r{1, 2, 3, 0};
        vexo_prcg_start_recogniser(rec, frame.block(), &r);
        return r;
    }
};

TEST_F(PrcgScene, TeachingKeepsThePresetOrPicksTheBestScore) {
    size_t scores[3];
    for (int k = 0; k < 3; ++k) {
        const uint32_t bit = vexo::detector_bit(DetectorKind(k));
        uint32_t options = bit | RECOGNISER_POSITION | RECOGNISER_FLANN;
        const auto kps = teach(&options);
        scores[k] = kps.size();
        EXPECT_GT(kps.size(), 10u) << bit;
        EXPECT_EQ(bit | RECOGNISER_POSITION | RECOGNISER_FLANN, options); // 0x200 stays SURF
        for (const auto &p : kps) // the whole footprint inside, touching allowed
            EXPECT_TRUE(std::min({p.x - kLeft * 1000, p.y - kLeft * 1000, kRight * 1000 - p.x,
                                  kRight * 1000 - p.y}) >= p.size / 2 - 1)
                << p.x << "," << p.y << " " << p.size;
    }
    uint32_t options = RECOGNISER_ROTATION;
    const size_t chosen = teach(&options).size();
    const DetectorKind best = vexo::choose_detector(scores[0], scores[1], scores[2]);
    EXPECT_EQ(RECOGNISER_ROTATION | vexo::detector_bit(best), options);
    EXPECT_EQ(scores[int(best)], chosen);

    // Nothing to teach: all detectors excluded (SURF named); bad rectangles.
    options = 0x800 | RECOGNISER_POSITION;
    EXPECT_TRUE(teach(&options).empty());
    EXPECT_EQ(RECOGNISER_SURF | RECOGNISER_POSITION, options);
    const int32_t rects[][4] = {{120, 20, 20, 120}, {20, 20, 20, 120}, {5000, 5000, 6000, 6000}};
    for (const auto &r : rects) {
        int32_t count = 5;
        EXPECT_EQ(nullptr, vexo_prcg_gen_keypoints(reference_.block(), &count, &options, r[0],
                                                   r[1], r[2], r[3]));
        EXPECT_EQ(-1, count);
    }
    int32_t count = 5;
    EXPECT_EQ(nullptr, vexo_prcg_gen_keypoints(reference_.block(), &count, nullptr, 0, 0, 9, 9));
    EXPECT_EQ(-1, count);
    EXPECT_EQ(nullptr, vexo_prcg_gen_keypoints(reference_.block(), nullptr, &options, 0, 0, 9, 9));
}

// Bounds allow for ORB's coarse pyramid levels and for one mismatch tilting
// the least-squares homography; rotation is counter-clockwise on screen.
TEST_F(PrcgScene, FindsThePatternForEveryDetectorAndMatcher) {
    const struct {
        uint32_t options;
        double position_px, rotation_deg;
    } setups[] = {{RECOGNISER_SIFT, 2.0, 2.0}, {RECOGNISER_SIFT | RECOGNISER_FLANN, 2.0, 2.0},
                  {RECOGNISER_SURF, 2.0, 2.5}, {RECOGNISER_SURF | RECOGNISER_FLANN, 2.0, 2.5},
                  {RECOGNISER_ORB, 3.0, 5.0},
                  {RECOGNISER_FLANN, 3.0, 5.0}}; // ORB: Hamming, never a KD-tree
    const struct {
        double angle, scale;
        cv::Point2d centre;
    } placements[] = {{0, 1.0, {170, 120}},   {-40, 1.0, {165, 118}}, {90, 1.0, {160, 120}},
                      {-10, 0.9, {150, 110}}, {-15, 1.2, {160, 120}}};
    for (const auto &setup : setups) {
        RecogniserPtr rec = make(setup.options | RECOGNISER_POSITION | RECOGNISER_ROTATION);
        ASSERT_NE(nullptr, rec) << setup.options;
        if (!(setup.options & RECOGNISER_DETECTOR_MASK)) {
            EXPECT_TRUE(!rec->orb.empty() && rec->sift.empty() && rec->surf.empty());
        }
        for (const auto &p : placements) {
            SCOPED_TRACE(::testing::Message() << "options 0x" << std::hex << setup.options
                                              << std::dec << " at " << p.angle << ", " << p.scale);
            cv::Point2d truth;
            const RecognitionResult r = find(rec.get(), p.angle, p.scale, p.centre, &truth);
            ASSERT_EQ(int32_t(VEXO_OK), r.status);
            EXPECT_NEAR(truth.x, r.x, setup.position_px);
            EXPECT_NEAR(truth.y, r.y, setup.position_px);
            EXPECT_NEAR(p.angle, r.rotation, setup.rotation_deg);
        }
    }
    // What is not asked for is reported as 0.
    const cv::Point2d centre(160, 120);
    RecognitionResult r = find(make(RECOGNISER_SURF | RECOGNISER_POSITION).get(), 90, 1, centre);
    EXPECT_TRUE(r.status == int32_t(VEXO_OK) && r.x != 0.0f && r.rotation == 0.0f);
    r = find(make(RECOGNISER_SURF | RECOGNISER_ROTATION).get(), 90, 1, centre);
    EXPECT_TRUE(r.status == int32_t(VEXO_OK) && r.x == 0.0f && r.y == 0.0f);
    EXPECT_NEAR(90.0, r.rotation, 1.0);
}

TEST_F(PrcgScene, RefusalsAndStatusesWhenNothingCanBeFound) {
    uint32_t options = RECOGNISER_SURF | RECOGNISER_POSITION;
    const auto kps = teach(&options);
    ASSERT_GE(kps.size(), 4u);
    EXPECT_EQ(nullptr, create(kps, 2, options)); // two keypoints
    EXPECT_EQ(nullptr, create(kps, -5, options));
    EXPECT_EQ(nullptr, vexo_prcg_create_recogniser(nullptr, 10, options, reference_.block(), 0, 0));

    // Three keypoints (/ 1000, default 64-float extractor): no homography.
    const RecogniserPtr three = create(kps, 3, options);
    ASSERT_NE(nullptr, three);
    EXPECT_EQ(cv::Size(64, 3), three->pattern_descriptors.size());
    EXPECT_EQ(float(kps[2].y) / 1000.0f, three->pattern_keypoints[2].pt.y);
    RecognitionResult r{};
    vexo_prcg_start_recogniser(three.get(), reference_.block(), &r);
    EXPECT_TRUE(r.status == int32_t(VEXO_ERROR_INVALID_PARAMETER) ||
                r.status == int32_t(VEXO_ERROR_NO_RATIO_MATCH))
        << r.status;

    // A featureless frame: nothing to match, 9, figures 0.
    const RecogniserPtr rec = make(options | RECOGNISER_ROTATION);
    Frame flat(cv::Mat(240, 320, CV_8UC1, cv::Scalar(120)));
    r = {1, 2, 3, 0};
    vexo_prcg_start_recogniser(rec.get(), flat.block(), &r);
    EXPECT_EQ(int32_t(VEXO_ERROR_NO_HANDLE), r.status);
    EXPECT_TRUE(r.x == 0.0f && r.y == 0.0f && r.rotation == 0.0f);
    vexo_prcg_start_recogniser(rec.get(), reference_.block(), nullptr); // nowhere to report

    // An unreadable reference gives a handle that never finds: 9.
    Frame unreadable(cv::Mat(20, 20, CV_8UC1, cv::Scalar(0)));
    unreadable.block()->kind = 0;
    const RecogniserPtr blind = create(kps, int32_t(kps.size()), options, &unreadable);
    ASSERT_NE(nullptr, blind);
    vexo_prcg_start_recogniser(blind.get(), reference_.block(), &r);
    EXPECT_EQ(int32_t(VEXO_ERROR_NO_HANDLE), r.status);
}

} // namespace
