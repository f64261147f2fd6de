// SPDX-License-Identifier: MIT
// Pattern recognition: keypoint record rules, our SURF against analytic
// figures, teaching, and recognition on synthetic scenes with known placements.
#include <cmath>
#include <cstring>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fixtures.hpp"
#include "vision/keypoints.hpp"
#include "vision/recogniser.hpp"
#include "vision/surf.hpp"
#include "vision/surf_internal.hpp"

namespace {

using vexo::DetectorKind;
using vexo::Surf;
using vt::Frame;
using vt::RecogniserPtr;

TEST(PrcgRules, KeypointRecordFootprintChoiceRatioAndAllocation) {
    const PatternKeypoint r =
        vexo::to_pattern_keypoint(cv::KeyPoint(12.3456f, -7.0005f, 9.5f, 271.25f, 0.0125f, 3, 42));
    const PatternKeypoint want{12346, -7001, 9500, 271250, 13, 3, 42};
    EXPECT_EQ(0, std::memcmp(&r, &want, sizeof r));

    // Footprint (diameter = size) in {15, 20, 45, 60}: touching is inside.
    const vexo::PatternRect rect{15, 20, 45, 60};
    const float footprints[][4] = {{20, 30, 10, 1},      {40, 55, 10, 1},     {30, 25, 10, 1},
                                   {19.999f, 30, 10, 0}, {30, 55.01f, 10, 0}, {NAN, 40, 2, 0}};
    for (const auto &f : footprints)
        EXPECT_EQ(f[3] != 0, vexo::footprint_inside(cv::KeyPoint(f[0], f[1], f[2]), rect)) << f[0];

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
    const auto kept = vexo::ratio_filter({{M(0, 4, 0.75f), M(0, 5, 1.0f)},
                                          {M(1, 4, 0.7499f), M(1, 5, 1.0f)},
                                          {M(2, 3, 0.1f)},
                                          {M(3, 9, 0.1f), M(3, 5, 1.0f)},
                                          {M(7, 2, 0.1f), M(7, 1, 8.0f)}},
                                         7, 6);
    ASSERT_EQ(1u, kept.size());
    EXPECT_EQ(kept[0].queryIdx, 1);
    EXPECT_EQ(kept[0].trainIdx, 4);

    const vt::KeypointsPtr zeroed(vexo_prcg_alloc_keypoints(3));
    const PatternKeypoint zero[3] = {};
    EXPECT_TRUE(zeroed);
    EXPECT_EQ(std::memcmp(zeroed.get(), zero, sizeof zero), 0);
    EXPECT_EQ(nullptr, vexo_prcg_alloc_keypoints(0));
    EXPECT_EQ(nullptr, vexo::allocate_keypoints(SIZE_MAX / 8)); // count x 28 overflows
}

// The pattern near the reference's (0, 0), whose image is the reported
// figure; taught 10 pixels inside its edges, away from the background.
constexpr int32_t kOrigin = 10, kSide = 120, kLeft = kOrigin + 10, kRight = kOrigin + kSide - 10;
const cv::Mat kPattern = vt::make_pattern(kSide, kSide, 42);
Frame reference(vt::scene(1, kPattern, vt::placement(kPattern.size(), 0, 1, {70, 70})));

// Keypoints taught in rectangle r; an empty list has come as NULL, count -1.
std::vector<PatternKeypoint> teach(uint32_t *options,
                                   cv::Vec4i r = {kLeft, kLeft, kRight, kRight}) {
    int32_t count = 0;
    const vt::KeypointsPtr k(
        vexo_prcg_gen_keypoints(reference.block(), &count, options, r[0], r[1], r[2], r[3]));
    EXPECT_TRUE(k ? count > 0 : count == -1) << count;
    const std::vector<PatternKeypoint> kps(k.get(), k.get() + (k ? count : 0));
    for (const auto &p : kps) // the whole footprint inside, touching allowed
        EXPECT_GE(
            std::min({p.x - r[0] * 1000, p.y - r[1] * 1000, r[2] * 1000 - p.x, r[3] * 1000 - p.y}),
            p.size / 2 - 1)
            << p.x << "," << p.y;
    return kps;
}
RecogniserPtr create(const std::vector<PatternKeypoint> &kps, int32_t count, uint32_t options,
                     const ImageBlock *ref = reference.block()) {
    return RecogniserPtr(
        vexo_prcg_create_recogniser(kps.data(), count, options, ref, kOrigin, kOrigin));
}

TEST(PrcgTeach, KeepsThePresetOrPicksTheBestScoreAndRefusesNothingToTeachOrFind) {
    std::vector<PatternKeypoint> kps[3];
    for (int k = 0; k < 3; ++k) {
        const uint32_t bit = vexo::detector_bit(DetectorKind(k));
        uint32_t options = bit | RECOGNISER_POSITION | RECOGNISER_FLANN;
        kps[k] = teach(&options);
        EXPECT_GT(kps[k].size(), 10u) << bit;
        EXPECT_EQ(bit | RECOGNISER_POSITION | RECOGNISER_FLANN, options); // 0x200 stays SURF
    }
    uint32_t options = RECOGNISER_ROTATION;
    const size_t chosen = teach(&options).size();
    const DetectorKind best = vexo::choose_detector(kps[0].size(), kps[1].size(), kps[2].size());
    EXPECT_EQ(RECOGNISER_ROTATION | vexo::detector_bit(best), options);
    EXPECT_EQ(kps[int(best)].size(), chosen);

    // Nothing to teach: all detectors excluded (SURF named); bad rectangles
    // (inverted, empty, off the image); no options; no count.
    options = 0x800 | RECOGNISER_POSITION;
    EXPECT_TRUE(teach(&options).empty());
    EXPECT_EQ(RECOGNISER_SURF | RECOGNISER_POSITION, options);
    for (const cv::Vec4i &r : {cv::Vec4i(120, 20, 20, 120), cv::Vec4i(20, 20, 20, 120),
                               cv::Vec4i(5000, 5000, 6000, 6000)})
        EXPECT_TRUE(teach(&options, r).empty());
    EXPECT_TRUE(teach(nullptr).empty());
    EXPECT_EQ(nullptr, vexo_prcg_gen_keypoints(reference.block(), nullptr, &options, 0, 0, 9, 9));

    // No recogniser from two SURF keypoints, fewer, none.
    const std::vector<PatternKeypoint> &surf = kps[1];
    EXPECT_FALSE(create(surf, 2, options));
    EXPECT_FALSE(create(surf, -5, options));
    EXPECT_EQ(nullptr, vexo_prcg_create_recogniser(nullptr, 10, options, reference.block(), 0, 0));
    // Three keypoints (/ 1000, default 64-float extractor): no homography.
    const RecogniserPtr three = create(surf, 3, options);
    ASSERT_TRUE(three);
    ASSERT_EQ(three->pattern_descriptors.size(), cv::Size(64, 3));
    EXPECT_EQ(float(surf[2].y) / 1000.0f, three->pattern_keypoints[2].pt.y);
    const int64_t status = vt::bare_status(three.get(), reference.block());
    EXPECT_THAT(status, testing::AnyOf(int64_t{VEXO_ERROR_INVALID_PARAMETER},
                                       int64_t{VEXO_ERROR_NO_RATIO_MATCH}));
    // A featureless frame: nothing to match, 9, figures 0; then nowhere to report.
    Frame flat(cv::Mat(240, 320, CV_8UC1, cv::Scalar(120)));
    EXPECT_EQ(VEXO_ERROR_NO_HANDLE, vt::bare_status(three.get(), flat.block()));
    vexo_prcg_start_recogniser(three.get(), reference.block(), nullptr);
    // An unreadable reference gives a handle that never finds: 9.
    const RecogniserPtr blind = create(surf, int32_t(surf.size()), options, nullptr);
    EXPECT_TRUE(blind);
    EXPECT_EQ(vt::bare_status(blind.get(), reference.block()), VEXO_ERROR_NO_HANDLE);
}

// Bounds allow for ORB's coarse pyramid levels and for one mismatch tilting
// the least-squares homography; rotation is counter-clockwise on screen.
// A figure not asked for is 0.
TEST(PrcgFind, FindsThePatternForEveryDetectorAndMatcher) {
    constexpr uint32_t at = RECOGNISER_POSITION, turn = RECOGNISER_ROTATION, both = at | turn;
    const uint32_t sift = RECOGNISER_SIFT, surf = RECOGNISER_SURF, flann = RECOGNISER_FLANN;
    const struct {
        uint32_t options;
        double position_px, rotation_deg;
    } setups[] = {
        {sift | both, 2.0, 2.0},           {sift | flann | both, 2.0, 2.0},
        {surf | both, 2.0, 2.0},           {surf | at, 2.0, 2.0},
        {surf | flann | turn, 2.0, 2.0},   {surf | flann | both, 2.0, 2.0},
        {RECOGNISER_ORB | both, 3.0, 5.0}, {flann | both, 3.0, 5.0}}; // ORB: Hamming, no KD-tree
    const struct {
        double angle, scale;
        cv::Point2d centre;
    } placements[] = {{0, 1.0, {170, 120}},  {-40, 1.0, {165, 118}}, {30, 1.0, {165, 118}},
                      {90, 1.0, {160, 120}}, {-10, 0.9, {150, 110}}, {-15, 1.2, {160, 120}}};
    for (const auto &setup : setups) {
        // Taught with the option word's detector, ORB when none.
        uint32_t taught = setup.options & RECOGNISER_DETECTOR_MASK ? setup.options : RECOGNISER_ORB;
        const auto kps = teach(&taught);
        const RecogniserPtr rec = create(kps, int32_t(kps.size()), setup.options);
        ASSERT_NE(nullptr, rec) << setup.options;
        EXPECT_EQ(vexo::detector_kind_of(setup.options), rec->kind) << setup.options;
        const bool x = setup.options & at, r = setup.options & turn;
        for (const auto &p : placements) {
            // Scaled scenes move SURF's coarse-octave keypoints by a few
            // pixels, which a least-squares fit over every match cannot
            // absorb; the robust fit covers them (surf_scenes_test.cpp).
            if ((setup.options & RECOGNISER_SURF) && p.scale != 1.0) continue;
            SCOPED_TRACE(testing::Message() << setup.options << " " << p.angle << " " << p.scale);
            const cv::Matx23d a = vt::placement(kPattern.size(), p.angle, p.scale, p.centre);
            // Where the reference's (0, 0), pattern point -origin, lands, less the origin.
            const cv::Vec2d o(kOrigin, kOrigin), truth = a * cv::Vec3d(-o[0], -o[1], 1) - o;
            RecognitionResult got{};
            vexo_prcg_start_recogniser(rec.get(), Frame(vt::scene(77, kPattern, a)).block(), &got);
            ASSERT_EQ(int32_t(VEXO_OK), got.status);
            EXPECT_NEAR(x * truth[0], got.x, x * setup.position_px);
            EXPECT_NEAR(x * truth[1], got.y, x * setup.position_px);
            EXPECT_NEAR(r * p.angle, got.rotation, r * setup.rotation_deg);
        }
    }
}

TEST(SurfDetect, ExactBoxSumsBlobAtItsCentreNothingToFindMaskThresholdProvidedKeypoints) {
    const cv::Mat noisy = vt::noise(53, 37, 7);
    const vexo::IntegralImage ii(noisy);
    cv::RNG rng(11);
    for (int k = 0; k < 200; ++k) {
        const int r0 = rng.uniform(0, 37), r1 = rng.uniform(r0, 38);
        const int c0 = rng.uniform(0, 53), c1 = rng.uniform(c0, 54);
        ASSERT_EQ(float(cv::sum(noisy(cv::Range(r0, r1), cv::Range(c0, c1)))[0]),
                  ii.box(r0, c0, r1, c1));
    }
    EXPECT_EQ(float(cv::sum(noisy)[0]), ii.box_clamped(-10, -10, 100, 100));
    // The 32-bit running sum wraps past 2^32; boxes up to the side limit stay exact.
    const vexo::IntegralImage white(cv::Mat(4096, 4200, CV_8UC1, cv::Scalar(255)));
    EXPECT_EQ(255.0 * 4096 * 4096, double(white.box(0, 104, 4096, 4200)));
    EXPECT_EQ(255.0 * 96 * 100, double(white.box(4000, 4100, 4096, 4200)));
    const int sizes[3][4] = {{9, 15, 21, 27}, {15, 27, 39, 51}, {27, 51, 75, 99}};
    for (int o = 0; o < 12; ++o)
        EXPECT_EQ(sizes[o / 4][o % 4], vexo::surf_filter_size(o / 4, o % 4)) << o;

    // A Gaussian blob is found at its centre and scale, with the box response.
    const double cx = 60.3, cy = 50.7, sigma = 4.0;
    cv::Mat blob(100, 120, CV_8UC1);
    for (int r = 0; r < blob.rows; ++r)
        for (int c = 0; c < blob.cols; ++c)
            blob.at<uint8_t>(r, c) = cv::saturate_cast<uint8_t>(
                200 - 150 * std::exp(-(std::pow(c - cx, 2) + std::pow(r - cy, 2)) / 32));
    std::vector<cv::KeyPoint> kps;
    Surf::create(400, 4, 2, false, false)->detect(blob, kps);
    ASSERT_FALSE(kps.empty());
    const cv::KeyPoint best = *std::max_element(
        kps.begin(), kps.end(), [](auto &a, auto &b) { return a.response < b.response; });
    EXPECT_NEAR(cx, best.pt.x, 0.5);
    EXPECT_NEAR(cy, best.pt.y, 0.5);
    EXPECT_NEAR(sigma, best.size / 2.0, sigma * 0.3);
    // Independent figure: the 21-box (lobe 7) weights over the blob at its centre,
    // with g(t) = exp(-t^2 / 32), sx = sum(|t| <= 10) (|t| > 3 ? 1 : -2) g(t), sy =
    // sum(|t| <= 6) g(t); each lobe 7 x 13 weighs in by its mean: Dxx = Dyy =
    // 150 sx sy / 91 = 128.91, Dxy = 0, det = 16617.9.
    EXPECT_NEAR(16617.9, best.response, 0.03 * 16617.9);

    // Nothing in a flat image, one smaller than the first octave's largest filter, none.
    auto surf = Surf::create(400, 4, 2, true, false);
    std::vector<cv::KeyPoint> strong;
    cv::Mat desc;
    for (const cv::Mat &img :
         {cv::Mat(120, 160, CV_8UC1, cv::Scalar(90)), vt::make_pattern(20, 20, 3), cv::Mat()}) {
        surf->detectAndCompute(img, cv::noArray(), kps, desc);
        EXPECT_TRUE(kps.empty());
        EXPECT_EQ(desc.rows, 0);
    }
    // Masked to the left half; the threshold bounds the determinant.
    const cv::Mat pattern = vt::make_pattern(200, 160, 21);
    cv::Mat mask(pattern.size(), CV_8UC1, cv::Scalar(0));
    mask.colRange(0, 100).setTo(255);
    surf->detectAndCompute(pattern, mask, kps, desc);
    Surf::create(800, 4, 2, false, false)->detect(pattern, strong, mask);
    EXPECT_GT(kps.size(), strong.size()) << kps.size() << strong.size();
    EXPECT_FALSE(strong.empty()) << kps.size() << strong.size();
    EXPECT_EQ(cv::Size(128, int(kps.size())), desc.size()); // extended
    for (const auto &kp : kps) {
        EXPECT_LT(kp.pt.x, 100) << kp.pt << " " << kp.response;
        EXPECT_GT(kp.response, 400) << kp.pt << " " << kp.response;
    }

    // Provided keypoints all kept, even outside (zero descriptor) or NaN.
    kps = {cv::KeyPoint(60, 50, 6),   cv::KeyPoint(0, 0, 10),  cv::KeyPoint(199, 159, 30),
           cv::KeyPoint(-50, 500, 4), cv::KeyPoint(30, 30, 0), cv::KeyPoint(40, 40, 1e9f),
           cv::KeyPoint(NAN, 10, 4)};
    const auto given = kps;
    Surf::create(100, 4, 3, false, false)->compute(pattern, kps, desc);
    ASSERT_EQ(given.size(), kps.size());
    ASSERT_EQ(desc.size(), cv::Size(64, int(kps.size())));
    for (size_t k = 0; k < kps.size(); ++k) {
        const double norm = cv::norm(desc.row(int(k)));
        // 3 lies outside (zero descriptor); 6 has no position (NaN never equals).
        EXPECT_TRUE(kps[k].pt == given[k].pt || k == 6) << k;
        EXPECT_EQ(kps[k].size, given[k].size) << k;
        EXPECT_TRUE(cv::checkRange(desc.row(int(k)))) << k;
        EXPECT_NEAR(norm, (k == 3 || k == 6 ? 0 : 1), 1e-4) << k;
    }
}

// A ramp rising along theta (from +x towards +y, rows growing downwards):
// the orientation is theta, and in the keypoint's frame every wavelet is
// (g, 0), so each 4x4 cell holds its Gaussian weight W (sigma 3.3 samples)
// in sum dx and sum |dx|, 0 elsewhere: W / sqrt(2 sum W^2) once normalised.
TEST(SurfDescribe, RampGivesItsDirectionAndTheWeightsAsDescriptor) {
    double weight[16] = {}, norm = 0;
    for (int v = 0; v < 20; ++v)
        for (int u = 0; u < 20; ++u)
            weight[v / 5 * 4 + u / 5] +=
                std::exp(-(std::pow(u - 9.5, 2) + std::pow(v - 9.5, 2)) / (2 * 3.3 * 3.3));
    for (double w : weight) norm += 2 * w * w;
    for (double theta : {0.0, 30.0, 90.0, 135.0, 200.0, 315.0}) {
        const double t = theta * CV_PI / 180;
        cv::Mat img(160, 160, CV_8UC1), desc;
        for (int r = 0; r < 160; ++r)
            for (int c = 0; c < 160; ++c)
                img.at<uint8_t>(r, c) = cv::saturate_cast<uint8_t>(128 + (c - 80) * std::cos(t) +
                                                                   (r - 80) * std::sin(t));
        std::vector<cv::KeyPoint> kps{cv::KeyPoint(80, 80, 12)}; // scale 6
        Surf::create(100, 4, 3, false, false)->compute(img, kps, desc);
        EXPECT_NEAR(theta, kps[0].angle, 0.1);
        for (int k = 0; k < 64; ++k)
            EXPECT_NEAR(k % 2 ? 0.0 : weight[k / 4] / std::sqrt(norm), desc.at<float>(k), 0.002)
                << theta << " " << k;
    }
}

} // namespace
