// The recogniser end to end on synthetic scenes with known placements, and
// its refusals.
#include <cmath>
#include <iterator>
#include <memory>

#include <gtest/gtest.h>

#include "scene.hpp"
#include "vision/recogniser.hpp"

namespace {

// The pattern sits near the reference's top-left corner, so that the
// reported figure (where the reference's (0, 0) lands) is not extrapolated
// far from the matched points; it is taught from a rectangle 10 pixels
// inside its edges, whose keypoints never see the background.
constexpr int32_t kOriginX = 10, kOriginY = 10;
constexpr int kPatternSide = 120, kInset = 10;

struct RecogniserDeleter {
    void operator()(Recogniser *r) const { vexo_prcg_release_recogniser(r); }
};
using RecogniserPtr = std::unique_ptr<Recogniser, RecogniserDeleter>;

// Reference image: the pattern upright with its top-left corner at the
// origin; it is taught from the rectangle it covers.
class PrcgRecogniser : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        pattern_ = new cv::Mat(scene::make_pattern(kPatternSide, kPatternSide, 42));
        const cv::Mat reference =
            scene::paste(scene::make_background(320, 240, 1), *pattern_,
                         scene::placement(pattern_->size(), 0, 1,
                                          {kOriginX + kPatternSide / 2.0, kOriginY + kPatternSide / 2.0}));
        reference_ = new scene::Block(reference);
    }
    static void TearDownTestSuite() {
        delete pattern_;
        delete reference_;
    }

    static std::vector<PatternKeypoint> teach(uint32_t *options) {
        int32_t count = 0;
        PatternKeypoint *k = vexo_prcg_gen_keypoints(
            reference_->get(), &count, options, kOriginX + kInset, kOriginY + kInset,
            kOriginX + kPatternSide - kInset, kOriginY + kPatternSide - kInset);
        std::vector<PatternKeypoint> out;
        if (k)
            out.assign(k, k + count);
        vexo_prcg_release_keypoints(k);
        return out;
    }

    static RecogniserPtr make(uint32_t options) {
        const auto kps = teach(&options);
        return RecogniserPtr(vexo_prcg_create_recogniser(kps.data(), int32_t(kps.size()), options,
                                                         reference_->get(), kOriginX, kOriginY));
    }

    static inline cv::Mat *pattern_ = nullptr;
    static inline scene::Block *reference_ = nullptr;
};

struct Placement {
    double angle, scale;
    cv::Point2d centre;
};

// Runs one placement; returns the result and the true position.
RecognitionResult find(Recogniser *rec, const cv::Mat &pattern, const Placement &p,
                       cv::Point2d *truth) {
    const cv::Matx23d a = scene::placement(pattern.size(), p.angle, p.scale, p.centre);
    // Where the reference image's (0, 0) lands, i.e. pattern point -origin.
    truth->x = a(0, 0) * -kOriginX + a(0, 1) * -kOriginY + a(0, 2) - kOriginX;
    truth->y = a(1, 0) * -kOriginX + a(1, 1) * -kOriginY + a(1, 2) - kOriginY;
    const scene::Block frame(scene::paste(scene::make_background(320, 240, 77), pattern, a));
    RecognitionResult r{};
    vexo_prcg_start_recogniser(rec, frame.get(), &r);
    return r;
}

const Placement kPlacements[] = {
    {0, 1.0, {170, 120}},  {15, 1.0, {150, 125}},  {-40, 1.0, {165, 118}},
    {90, 1.0, {160, 120}}, {-40, 0.8, {150, 110}}, {15, 1.25, {160, 120}},
};

// The homography is a plain least-squares fit over every pair that passed
// the ratio test, so a single mismatch tilts it a little: the bounds are
// per detector.  ORB's coarse pyramid levels place keypoints to a few
// pixels, hence its wider bounds.  `skip` lists placements (bit i for
// kPlacements[i]) where one mismatch takes the fit beyond the bounds.
struct MatchSetup {
    uint32_t options;
    double position_px, rotation_deg;
    unsigned skip;
};
const MatchSetup kSetups[] = {
    {RECOGNISER_SIFT, 2.0, 2.0, 0},
    {RECOGNISER_SIFT | RECOGNISER_FLANN, 2.0, 2.0, 0},
    {RECOGNISER_SURF, 2.0, 2.5, 1u << 5},
    {RECOGNISER_SURF | RECOGNISER_FLANN, 2.0, 2.5, 1u << 5},
    {RECOGNISER_ORB, 3.0, 5.0, 1u << 4},
};

TEST_F(PrcgRecogniser, FindsThePatternForEveryDetectorAndMatcher) {
    const uint32_t report = RECOGNISER_POSITION | RECOGNISER_ROTATION;
    for (const MatchSetup &setup : kSetups) {
        RecogniserPtr rec = make(setup.options | report);
        ASSERT_NE(rec, nullptr) << setup.options;
        for (size_t i = 0; i < std::size(kPlacements); ++i) {
            if (setup.skip & (1u << i))
                continue;
            const Placement &p = kPlacements[i];
            cv::Point2d truth;
            const RecognitionResult r = find(rec.get(), *pattern_, p, &truth);
            SCOPED_TRACE(::testing::Message() << "options " << std::hex << setup.options
                                              << std::dec << " angle " << p.angle << " scale "
                                              << p.scale);
            ASSERT_EQ(r.status, int32_t(VEXO_OK));
            EXPECT_NEAR(r.x, truth.x, setup.position_px);
            EXPECT_NEAR(r.y, truth.y, setup.position_px);
            EXPECT_NEAR(r.rotation, p.angle, setup.rotation_deg);
        }
    }
}

TEST_F(PrcgRecogniser, ReportsOnlyWhatIsAskedFor) {
    const Placement p{15, 1.0, {150, 125}};
    cv::Point2d truth;
    RecogniserPtr position_only = make(RECOGNISER_SURF | RECOGNISER_POSITION);
    RecognitionResult r = find(position_only.get(), *pattern_, p, &truth);
    ASSERT_EQ(r.status, int32_t(VEXO_OK));
    EXPECT_NEAR(r.x, truth.x, 2.0);
    EXPECT_EQ(r.rotation, 0.0f);
    RecogniserPtr rotation_only = make(RECOGNISER_SURF | RECOGNISER_ROTATION);
    r = find(rotation_only.get(), *pattern_, p, &truth);
    ASSERT_EQ(r.status, int32_t(VEXO_OK));
    EXPECT_EQ(r.x, 0.0f);
    EXPECT_EQ(r.y, 0.0f);
    EXPECT_NEAR(r.rotation, 15.0, 1.0);
}

TEST_F(PrcgRecogniser, OrbMatchesByHammingWhateverTheMatcherBits) {
    // No detector bits and the FLANN bit: ORB, whose binary descriptors a
    // KD-tree could not take; success shows the Hamming brute force ran.
    uint32_t options = RECOGNISER_FLANN | RECOGNISER_POSITION;
    const auto kps = teach(&options);
    ASSERT_GE(kps.size(), 3u);
    RecogniserPtr rec(vexo_prcg_create_recogniser(kps.data(), int32_t(kps.size()),
                                                  RECOGNISER_FLANN | RECOGNISER_POSITION,
                                                  reference_->get(), kOriginX, kOriginY));
    ASSERT_NE(rec, nullptr);
    EXPECT_FALSE(rec->orb.empty());
    EXPECT_TRUE(rec->sift.empty() && rec->surf.empty());
    cv::Point2d truth;
    const RecognitionResult r = find(rec.get(), *pattern_, {0, 1.0, {170, 120}}, &truth);
    ASSERT_EQ(r.status, int32_t(VEXO_OK));
    EXPECT_NEAR(r.x, truth.x, 2.0);
    EXPECT_NEAR(r.y, truth.y, 2.0);
}

TEST_F(PrcgRecogniser, CreationRefusals) {
    uint32_t options = RECOGNISER_SURF;
    const auto kps = teach(&options);
    ASSERT_GE(kps.size(), 3u);
    EXPECT_EQ(vexo_prcg_create_recogniser(kps.data(), 2, options, reference_->get(), 0, 0),
              nullptr);
    EXPECT_EQ(vexo_prcg_create_recogniser(kps.data(), -5, options, reference_->get(), 0, 0),
              nullptr);
    EXPECT_EQ(vexo_prcg_create_recogniser(nullptr, 10, options, reference_->get(), 0, 0),
              nullptr);
    RecogniserPtr three(
        vexo_prcg_create_recogniser(kps.data(), 3, options, reference_->get(), 0, 0));
    ASSERT_NE(three, nullptr);
    EXPECT_EQ(three->pattern_keypoints.size(), 3u);
    EXPECT_EQ(three->pattern_descriptors.rows, 3);
    EXPECT_EQ(three->pattern_descriptors.cols, 64); // described with the default extractor
    EXPECT_EQ(three->pattern_keypoints[0].pt.x, float(kps[0].x) / 1000.0f);
    vexo_prcg_release_recogniser(nullptr);
}

TEST_F(PrcgRecogniser, StatusesWhenNothingCanBeFound) {
    RecogniserPtr rec = make(RECOGNISER_SURF | RECOGNISER_POSITION | RECOGNISER_ROTATION);
    ASSERT_NE(rec, nullptr);
    RecognitionResult r{1, 2, 3, 0};
    vexo_prcg_start_recogniser(nullptr, reference_->get(), &r);
    EXPECT_EQ(r.status, int32_t(VEXO_ERROR_NO_HANDLE));

    scene::Block bad(cv::Mat(50, 50, CV_8UC1, cv::Scalar(9)));
    bad.get()->format = 5;
    vexo_prcg_start_recogniser(rec.get(), bad.get(), &r);
    EXPECT_EQ(r.status, int32_t(VEXO_ERROR_NO_MEMORY));
    vexo_prcg_start_recogniser(rec.get(), nullptr, &r);
    EXPECT_EQ(r.status, int32_t(VEXO_ERROR_NO_MEMORY));
    vexo_prcg_start_recogniser(rec.get(), reference_->get(), nullptr); // nowhere to report

    // A flat frame has no keypoints, hence nothing to match against.
    const scene::Block flat(cv::Mat(240, 320, CV_8UC1, cv::Scalar(120)));
    vexo_prcg_start_recogniser(rec.get(), flat.get(), &r);
    EXPECT_EQ(r.status, int32_t(VEXO_ERROR_NO_HANDLE));
    EXPECT_EQ(r.x, 0.0f);

    // Only background: whatever little matches never yields a crash, and a
    // failure status leaves the figures at 0.
    const scene::Block empty_scene(scene::make_background(320, 240, 5));
    vexo_prcg_start_recogniser(rec.get(), empty_scene.get(), &r);
    if (r.status != int32_t(VEXO_OK)) {
        EXPECT_TRUE(r.status == int32_t(VEXO_ERROR_NO_HANDLE) ||
                    r.status == int32_t(VEXO_ERROR_NO_RATIO_MATCH) ||
                    r.status == int32_t(VEXO_ERROR_INVALID_PARAMETER))
            << r.status;
        EXPECT_EQ(r.x, 0.0f);
    }

    // A reference that cannot be read gives a handle that never finds.
    scene::Block unreadable(cv::Mat(20, 20, CV_8UC1, cv::Scalar(0)));
    unreadable.get()->kind = 0;
    uint32_t options = RECOGNISER_SURF;
    const auto kps = teach(&options);
    RecogniserPtr blind(vexo_prcg_create_recogniser(kps.data(), int32_t(kps.size()), options,
                                                    unreadable.get(), 0, 0));
    ASSERT_NE(blind, nullptr);
    vexo_prcg_start_recogniser(blind.get(), reference_->get(), &r);
    EXPECT_EQ(r.status, int32_t(VEXO_ERROR_NO_HANDLE));
}

TEST_F(PrcgRecogniser, ThreeKeypointsCannotFixAHomography) {
    uint32_t options = RECOGNISER_SURF | RECOGNISER_POSITION;
    const auto kps = teach(&options);
    ASSERT_GE(kps.size(), 3u);
    RecogniserPtr rec(
        vexo_prcg_create_recogniser(kps.data(), 3, options, reference_->get(), 0, 0));
    RecognitionResult r{};
    vexo_prcg_start_recogniser(rec.get(), reference_->get(), &r);
    EXPECT_TRUE(r.status == int32_t(VEXO_ERROR_INVALID_PARAMETER) ||
                r.status == int32_t(VEXO_ERROR_NO_RATIO_MATCH))
        << r.status;
}

TEST(PrcgRatioTest, StrictlyBelowThreeQuartersAndOnlyFullValidLists) {
    using M = cv::DMatch;
    const std::vector<std::vector<M>> lists = {
        {M(0, 4, 0.75f), M(0, 5, 1.0f)},   // exactly 0.75: rejected
        {M(1, 4, 0.7499f), M(1, 5, 1.0f)}, // kept
        {M(2, 3, 0.1f)},                   // one neighbour only: skipped
        {},                                // none
        {M(4, 9, 0.1f), M(4, 5, 1.0f)},    // train index beyond the frame's
        {M(5, -1, 0.1f), M(5, 5, 1.0f)},   // invalid index
        {M(6, 1, 0.0f), M(6, 2, 0.0f)},    // 0 < 0 is false
        {M(7, 2, 3.0f), M(7, 1, 8.0f)},    // kept
    };
    const auto kept = vexo::ratio_filter(lists, 8, 6);
    ASSERT_EQ(kept.size(), 2u);
    EXPECT_EQ(kept[0].queryIdx, 1);
    EXPECT_EQ(kept[0].trainIdx, 4);
    EXPECT_EQ(kept[1].queryIdx, 7);
    EXPECT_EQ(vexo::ratio_filter(lists, 7, 6).size(), 1u); // query 7 out of range
}

} // namespace
